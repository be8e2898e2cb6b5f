# 32-bit ARM with hardware floating point; programs are run by qemu-user.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR arm)
set(triple arm-linux-gnueabihf)
set(qemu qemu-arm)
include(${CMAKE_CURRENT_LIST_DIR}/cross.cmake)
