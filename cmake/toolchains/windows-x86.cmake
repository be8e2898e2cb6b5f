# 32-bit Windows by MinGW-w64; programs are run by scripts/wine32, which finds or makes a 32-bit Wine.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86)
set(triple i686-w64-mingw32)
set(wine ${CMAKE_CURRENT_LIST_DIR}/../../scripts/wine32)
include(${CMAKE_CURRENT_LIST_DIR}/cross.cmake)
