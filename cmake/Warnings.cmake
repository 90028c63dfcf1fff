# Warnings are errors everywhere; what goes into the telephone is held to the strictest set.
function(orvane_warnings target)
  target_compile_options(${target} PRIVATE -Wall -Wextra -Werror)
endfunction()

function(orvane_strict_warnings target)
  target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Werror)
endfunction()
