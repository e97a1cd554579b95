# 32-bit x86 Linux programs, cross-built with Debian's g++-i686-linux-gnu. They run natively,
# with the loader and the libraries that came with the cross-compiler.
include(${CMAKE_CURRENT_LIST_DIR}/debian_cross.cmake)
use_cross_compiler(Linux i686-linux-gnu)
set(CMAKE_CROSSCOMPILING_EMULATOR
  /usr/i686-linux-gnu/lib/ld-linux.so.2 --library-path /usr/i686-linux-gnu/lib)
