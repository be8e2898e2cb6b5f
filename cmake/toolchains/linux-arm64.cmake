# 64-bit ARM; programs are run by qemu-user.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(triple aarch64-linux-gnu)
set(qemu qemu-aarch64)
include(${CMAKE_CURRENT_LIST_DIR}/cross.cmake)
