# The part of the two MinGW-w64 toolchain files that they share; they set
# RMG_MINGW_TRIPLET, RMG_WINE_NAMES and RMG_WINE_ARCH before including it.

# The compilers with the posix thread model come first: GoogleTest needs
# std::mutex, which the win32 model of GCC 12 lacks. Everything is linked
# statically, so no threading DLL comes with the programs or tqzk5.dll.
find_program(CMAKE_C_COMPILER NAMES ${RMG_MINGW_TRIPLET}-gcc-posix ${RMG_MINGW_TRIPLET}-gcc
             REQUIRED)
find_program(CMAKE_CXX_COMPILER NAMES ${RMG_MINGW_TRIPLET}-g++-posix ${RMG_MINGW_TRIPLET}-g++
             REQUIRED)
find_program(CMAKE_RC_COMPILER NAMES ${RMG_MINGW_TRIPLET}-windres)

set(CMAKE_FIND_ROOT_PATH /usr/${RMG_MINGW_TRIPLET})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# Wine runs the test programs. Distributions keep the loaders in different
# places (Debian: /usr/lib/wine, outside PATH), so those folders are
# searched before PATH. RMG_WINE on the command line names one directly.
find_program(RMG_WINE NAMES ${RMG_WINE_NAMES}
             HINTS /usr/lib/wine /usr/lib64/wine /usr/lib/x86_64-linux-gnu/wine
                   /usr/lib/i386-linux-gnu/wine /opt/wine-stable/bin /opt/wine-devel/bin
                   /opt/wine-staging/bin
             NO_CMAKE_FIND_ROOT_PATH)
if(RMG_WINE)
  # Quiet and reproducible runs: no debug channels, a prefix of the build's
  # own, no display (so no window can ever open), and no offer to install
  # Mono or Gecko when the prefix is made.
  set(CMAKE_CROSSCOMPILING_EMULATOR
      ${CMAKE_COMMAND} -E env --unset=DISPLAY --unset=WAYLAND_DISPLAY
      WINEDEBUG=-all WINEARCH=${RMG_WINE_ARCH} WINEPREFIX=${CMAKE_BINARY_DIR}/wineprefix
      WINEDLLOVERRIDES=mscoree,mshtml=
      ${RMG_WINE})
endif()
