# What all cross compilers of Debian have in common. The including file sets `triple` and, for Linux, `qemu`.
set(CMAKE_FIND_ROOT_PATH /usr/${triple})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

if(CMAKE_SYSTEM_NAME STREQUAL "Windows")
  set(CMAKE_C_COMPILER ${triple}-gcc-posix) # GoogleTest's build asks for one
  set(CMAKE_CXX_COMPILER ${triple}-g++-posix)
  set(CMAKE_RC_COMPILER ${triple}-windres)
  set(CMAKE_CROSSCOMPILING_EMULATOR env WINEDEBUG=-all ${wine})
  # Windows looks for libraries beside the program: the compiler's own go there too.
  get_property(probing GLOBAL PROPERTY IN_TRY_COMPILE)
  foreach(library IN ITEMS libstdc++-6.dll libgcc_s_seh-1.dll libgcc_s_dw2-1.dll libwinpthread-1.dll)
    execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=${library}
      OUTPUT_VARIABLE path OUTPUT_STRIP_TRAILING_WHITESPACE)
    if(NOT probing AND IS_ABSOLUTE "${path}")
      file(COPY ${path} DESTINATION ${CMAKE_BINARY_DIR}/bin FOLLOW_SYMLINK_CHAIN)
    endif()
  endforeach()
else()
  set(CMAKE_C_COMPILER ${triple}-gcc)
  set(CMAKE_CXX_COMPILER ${triple}-g++)
  set(CMAKE_CROSSCOMPILING_EMULATOR ${qemu} -L /usr/${triple})
endif()
