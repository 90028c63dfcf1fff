find_program(CCACHE_PROGRAM ccache)
if(CCACHE_PROGRAM)
  set(CMAKE_CXX_COMPILER_LAUNCHER ${CCACHE_PROGRAM})
endif()

# Objects depend on what the sanitizer is told not to watch; neither the cache nor Ninja looks into that file.
if(CMAKE_CXX_FLAGS MATCHES "-fsanitize-ignorelist=([^ ]+)")
  set(unwatched "${CMAKE_MATCH_1}")
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${unwatched}")
  file(SHA256 "${unwatched}" unwatched_digest)
  add_compile_options("-frandom-seed=${unwatched_digest}") # without any effect here but to tell two builds apart
endif()
