# 32-bit Windows programs, cross-built with Debian's g++-mingw-w64-i686-posix.
include(${CMAKE_CURRENT_LIST_DIR}/debian_cross.cmake)
use_cross_compiler(Windows i686-w64-mingw32)
