# 32-bit x86 Linux on a 64-bit x86 Linux host (Debian: g++-multilib).
# The build stays native, so its programs and tests run directly. Double
# arithmetic goes through SSE2, never the x87 stack, so that results match
# the 64-bit builds to the bit.
set(CMAKE_C_COMPILER gcc)
set(CMAKE_CXX_COMPILER g++)
set(RMG_I686_FLAGS "-m32 -msse2 -mfpmath=sse")
set(CMAKE_C_FLAGS_INIT "${RMG_I686_FLAGS}")
set(CMAKE_CXX_FLAGS_INIT "${RMG_I686_FLAGS}")
set(CMAKE_EXE_LINKER_FLAGS_INIT "-m32")
set(CMAKE_SHARED_LINKER_FLAGS_INIT "-m32")
set(CMAKE_MODULE_LINKER_FLAGS_INIT "-m32")
