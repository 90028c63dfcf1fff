# What goes into the telephone is protected against the errors of its neighbours and its own. Sanitizers bring their
# own checks and do not mix with these.
function(orvane_harden target)
  target_compile_options(${target} PRIVATE -fstack-protector-strong)
  if(CMAKE_CXX_FLAGS MATCHES "-fsanitize")
    return()
  endif()
  if(NOT CMAKE_CXX_COMPILER_ID STREQUAL "Clang" OR CMAKE_SYSTEM_PROCESSOR MATCHES "x86_64|AMD64")
    target_compile_options(${target} PRIVATE -fstack-clash-protection)
  endif()
  # Fortified functions exist in optimised code only.
  target_compile_options(${target} PRIVATE "$<$<NOT:$<CONFIG:Debug>>:-U_FORTIFY_SOURCE;-D_FORTIFY_SOURCE=2>")
endfunction()
