# ARM64 Linux programs, cross-built with Debian's g++-aarch64-linux-gnu and run by qemu-user.
include(${CMAKE_CURRENT_LIST_DIR}/debian_cross.cmake)
use_cross_compiler(Linux aarch64-linux-gnu)
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-aarch64 -L /usr/aarch64-linux-gnu)
