# Settings for Gentra's own targets. A host that uses Gentra as a subproject never gets here.

option(GENTRA_HOST_LIBRARIES "Use test libraries of the machine's own architecture" ON)

# Gives a target the project's warnings.
function(gentra_development_target target)
  if(NOT CMAKE_CXX_COMPILER_ID MATCHES "GNU|Clang")
    return()
  endif()
  target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wshadow -Wconversion)
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # gcc 12 warns of std::string's own operator+ (its bug 105651).
    target_compile_options(${target} PRIVATE -Wno-restrict)
  endif()
  if(GENTRA_WARNINGS_AS_ERRORS)
    target_compile_options(${target} PRIVATE -Werror)
  endif()
endfunction()
