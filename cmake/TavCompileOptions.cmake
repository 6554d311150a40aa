# Warnings and sanitizers belong to targets, not to the directory: every target of the project
# calls both functions, so a target added later cannot silently miss them, and a consumer that
# adds this project as a subdirectory does not inherit our flags.

option(TAV_WARNINGS_AS_ERRORS "Treat compiler warnings as errors (every CI build turns this on)" OFF)
set(TAV_SANITIZE "" CACHE STRING "Sanitizers to build with (address,undefined or thread)")

# -Wall -Wextra -Wpedantic on the target's own sources; -Werror as well with TAV_WARNINGS_AS_ERRORS.
function(tav_enable_warnings target)
  target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic)
  if(TAV_WARNINGS_AS_ERRORS)
    target_compile_options(${target} PRIVATE -Werror)
  endif()
endfunction()

# The sanitizers named in TAV_SANITIZE, at compile and link time. Any report ends the program
# with a failure (no recovery), so a test cannot pass over one.
function(tav_enable_sanitizers target)
  if(TAV_SANITIZE)
    target_compile_options(${target} PRIVATE
      -fsanitize=${TAV_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
    target_link_options(${target} PRIVATE -fsanitize=${TAV_SANITIZE})
  endif()
endfunction()

