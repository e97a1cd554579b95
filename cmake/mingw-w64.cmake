# 64-bit Windows programs, cross-built with Debian's g++-mingw-w64-x86-64-posix and run under Wine.
include(${CMAKE_CURRENT_LIST_DIR}/debian_cross.cmake)
use_cross_compiler(Windows x86_64-w64-mingw32)
