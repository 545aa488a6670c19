# 64-bit Windows, cross-built with MinGW-w64 (Debian: g++-mingw-w64-x86-64);
# the tests run under wine64 (Debian: wine64).
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(RMG_MINGW_TRIPLET x86_64-w64-mingw32)
set(RMG_WINE_NAMES wine64 wine)
set(RMG_WINE_ARCH win64)
include(${CMAKE_CURRENT_LIST_DIR}/mingw-w64-common.cmake)
