# 32-bit Windows, cross-built with MinGW-w64 (Debian: g++-mingw-w64-i686);
# the tests run under the 32-bit wine loader when it is installed (Debian:
# wine32, an i386 package).
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR i686)
set(RMG_MINGW_TRIPLET i686-w64-mingw32)
set(RMG_WINE_NAMES wine)
set(RMG_WINE_ARCH win32)
include(${CMAKE_CURRENT_LIST_DIR}/mingw-w64-common.cmake)
