# IBM Z, the big-endian one; programs are run by qemu-user.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR s390x)
set(triple s390x-linux-gnu)
set(qemu qemu-s390x)
include(${CMAKE_CURRENT_LIST_DIR}/cross.cmake)
