// Reading the processor's features and choosing the form of the vector
// kernels. The two words below are constant-initialised and are written at
// the first call that needs them; loading the library runs no code.
#include "core/rmgcpu.h"

#if RMG_CPU_X86
#include <cpuid.h>
#endif

namespace rmg {

namespace {

// detail::gFeatures before the processor has been read.
constexpr uint32_t kNotRead = 0x80000000u;

#if RMG_CPU_X86

// XCR0: which register state the operating system saves. Bits 1 and 2 (SSE
// and AVX state) are needed for AVX; bits 5 to 7 (opmask, upper halves of
// ZMM0-15, ZMM16-31) for AVX-512. Only called when cpuid reports OSXSAVE.
uint64_t readXcr0() {
    uint32_t low = 0;
    uint32_t high = 0;
    // The instruction's bytes, so that no assembler option is needed.
    __asm__ volatile(".byte 0x0f, 0x01, 0xd0" : "=a"(low), "=d"(high) : "c"(0u));
    return (static_cast<uint64_t>(high) << 32) | low;
}

uint32_t readFeatures() {
    unsigned int eax = 0;
    unsigned int ebx = 0;
    unsigned int ecx = 0;
    unsigned int edx = 0;
    uint32_t features = 0;
    if (__get_cpuid(1, &eax, &ebx, &ecx, &edx) == 0) return 0;
    if (edx & (1u << 26)) features |= kCpuSse2;
    const bool osxsave = (ecx & (1u << 27)) != 0;
    const bool avx = (ecx & (1u << 28)) != 0;
    const uint64_t xcr0 = osxsave ? readXcr0() : 0;
    const bool osAvx = (xcr0 & 0x06u) == 0x06u;
    const bool osAvx512 = (xcr0 & 0xE6u) == 0xE6u;
    if (avx && osAvx) features |= kCpuAvx;

    unsigned int leaf7b = 0;
    if (__get_cpuid_count(7, 0, &eax, &leaf7b, &ecx, &edx) == 0) leaf7b = 0;
    if (leaf7b & (1u << 8)) features |= kCpuBmi2;
    if (leaf7b & (1u << 9)) features |= kCpuErms;
    if ((features & kCpuAvx) && (leaf7b & (1u << 5))) features |= kCpuAvx2;
    if ((features & kCpuAvx) && osAvx512) {
        if (leaf7b & (1u << 16)) features |= kCpuAvx512F;
        if (leaf7b & (1u << 30)) features |= kCpuAvx512BW;
        if (leaf7b & (1u << 31)) features |= kCpuAvx512VL;
    }
    return features;
}

#else

uint32_t readFeatures() { return 0; }

#endif

// The widest form whose files' compiler options the features cover: the
// AVX2 files are built with -mavx2 -mbmi2, the AVX-512 files with F, BW, VL,
// AVX2 and BMI2.
int bestFormOf(uint32_t features) {
    const uint32_t avx2 = kCpuAvx2 | kCpuBmi2;
    const uint32_t avx512 = avx2 | kCpuAvx512F | kCpuAvx512BW | kCpuAvx512VL;
    if ((features & avx512) == avx512) return kFormAvx512;
    if ((features & avx2) == avx2) return kFormAvx2;
    if (features & kCpuSse2) return kFormSse2;
    return kFormScalar;
}

}  // namespace

namespace detail {

int gActiveForm = -1;
uint32_t gFeatures = kNotRead;

int detectActiveForm() {
    gActiveForm = cpuBestForm();
    return gActiveForm;
}

}  // namespace detail

uint32_t cpuFeatures() {
    if (detail::gFeatures == kNotRead) detail::gFeatures = readFeatures();
    return detail::gFeatures;
}

int cpuBestForm() { return bestFormOf(cpuFeatures()); }

const char *cpuFormName(int form) {
    switch (form) {
    case kFormScalar:
        return "scalar";
    case kFormSse2:
        return "sse2";
    case kFormAvx2:
        return "avx2";
    case kFormAvx512:
        return "avx512";
    default:
        return "?";
    }
}

bool cpuForceForm(int form) {
    if (form < kFormScalar || form > cpuBestForm()) return false;
    detail::gActiveForm = form;
    return true;
}

void cpuReleaseForm() { detail::gActiveForm = cpuBestForm(); }

}  // namespace rmg
