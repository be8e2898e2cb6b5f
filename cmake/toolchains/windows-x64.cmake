# 64-bit Windows by MinGW-w64; programs are run by Wine.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR AMD64)
set(triple x86_64-w64-mingw32)
set(wine /usr/lib/wine/wine64)
include(${CMAKE_CURRENT_LIST_DIR}/cross.cmake)
