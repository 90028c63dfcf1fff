# The form in which the library goes into a telephone: what is not reached is left out, symbols and debug information
# stand in a file of their own, which the stripped library names by its build id and a link.
option(ORVANE_SPLIT_DEBUG "Strip the library, with its debug information in a file beside it" OFF)

function(orvane_collect_sections target)
  target_compile_options(${target} PRIVATE -ffunction-sections -fdata-sections)
endfunction()

function(orvane_ship target)
  target_link_options(${target} PRIVATE -Wl,--gc-sections -Wl,--build-id)
  if(NOT ORVANE_SPLIT_DEBUG)
    return()
  endif()
  add_custom_command(TARGET ${target} POST_BUILD
    COMMAND ${CMAKE_OBJCOPY} --only-keep-debug $<TARGET_FILE:${target}> $<TARGET_FILE:${target}>.debug
    COMMAND ${CMAKE_STRIP} --strip-unneeded $<TARGET_FILE:${target}>
    COMMAND ${CMAKE_OBJCOPY} --add-gnu-debuglink=$<TARGET_FILE:${target}>.debug $<TARGET_FILE:${target}>
    VERBATIM)
  # Where debuggers look for it without being told.
  install(FILES $<TARGET_FILE:${target}>.debug DESTINATION ${CMAKE_INSTALL_LIBDIR}/.debug)
endfunction()
