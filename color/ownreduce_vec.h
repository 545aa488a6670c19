// The vector forms of the word reduction rows, for the files compiled for
// one instruction set: 8 or 16 elements a pass, the rest through the
// scalar rows; results are those of the scalar rows to the bit.
#ifndef RMG_COLOR_OWNREDUCE_VEC_H
#define RMG_COLOR_OWNREDUCE_VEC_H

#include <immintrin.h>

#include "color/ownreduce.h"
#include "color/ownreduce_impl.h"

namespace rmg {
namespace {

#if defined(__AVX2__)
using RVec = __m256i;
constexpr int kRBytes = 32;
inline RVec rload(const unsigned char *p) { return _mm256_loadu_si256(reinterpret_cast<const __m256i *>(p)); }
inline void rstore(unsigned char *p, RVec v) { _mm256_storeu_si256(reinterpret_cast<__m256i *>(p), v); }
// Packs whose results come back in element order (the packs work per lane).
inline RVec rpacks32(RVec a, RVec b) { return _mm256_permute4x64_epi64(_mm256_packs_epi32(a, b), 0xD8); }
inline RVec rpacku16(RVec a, RVec b) { return _mm256_permute4x64_epi64(_mm256_packus_epi16(a, b), 0xD8); }
inline RVec rsrai32(RVec a, int n) { return _mm256_sra_epi32(a, _mm_cvtsi32_si128(n)); }
inline RVec rslli16(RVec a, int n) { return _mm256_sll_epi16(a, _mm_cvtsi32_si128(n)); }
inline RVec rsrli16(RVec a, int n) { return _mm256_srl_epi16(a, _mm_cvtsi32_si128(n)); }
#else
using RVec = __m128i;
constexpr int kRBytes = 16;
inline RVec rload(const unsigned char *p) { return _mm_loadu_si128(reinterpret_cast<const __m128i *>(p)); }
inline void rstore(unsigned char *p, RVec v) { _mm_storeu_si128(reinterpret_cast<__m128i *>(p), v); }
inline RVec rpacks32(RVec a, RVec b) { return _mm_packs_epi32(a, b); }
inline RVec rpacku16(RVec a, RVec b) { return _mm_packus_epi16(a, b); }
inline RVec rsrai32(RVec a, int n) { return _mm_sra_epi32(a, _mm_cvtsi32_si128(n)); }
inline RVec rslli16(RVec a, int n) { return _mm_sll_epi16(a, _mm_cvtsi32_si128(n)); }
inline RVec rsrli16(RVec a, int n) { return _mm_srl_epi16(a, _mm_cvtsi32_si128(n)); }
#endif

// Elements per pass: those of one vector of 16-bit results.
constexpr int kRWords = kRBytes / 2;

// e >> 16 fits 16 signed bits, so the signed pack keeps it; the shift by
// one then wraps in 16 bits like the scalar row.
void reduceRow32s16uVec(const unsigned char *src, unsigned char *dst, int n) {
    int i = 0;
    for (; i + kRWords <= n; i += kRWords) {
        const RVec a = rsrai32(rload(src + 4 * i), 16);
        const RVec b = rsrai32(rload(src + 4 * i + kRBytes), 16);
        rstore(dst + 2 * i, rslli16(rpacks32(a, b), 1));
    }
    reduceRow32s16uScalar(src + 4 * i, dst + 2 * i, n - i);
}
// e >> 23 lies in -256..255: the signed pack keeps it, the unsigned pack
// turns the negatives into 0.
void reduceRow32s8uVec(const unsigned char *src, unsigned char *dst, int n) {
    int i = 0;
    for (; i + 2 * kRWords <= n; i += 2 * kRWords) {
        const unsigned char *s = src + 4 * i;
        const RVec a = rpacks32(rsrai32(rload(s), 23), rsrai32(rload(s + kRBytes), 23));
        const RVec b = rpacks32(rsrai32(rload(s + 2 * kRBytes), 23), rsrai32(rload(s + 3 * kRBytes), 23));
        rstore(dst + i, rpacku16(a, b));
    }
    reduceRow32s8uScalar(src + 4 * i, dst + i, n - i);
}
void reduceRow16u8uVec(const unsigned char *src, unsigned char *dst, int n) {
    int i = 0;
    for (; i + 2 * kRWords <= n; i += 2 * kRWords) {
        const RVec a = rsrli16(rload(src + 2 * i), 8);
        const RVec b = rsrli16(rload(src + 2 * i + kRBytes), 8);
        rstore(dst + i, rpacku16(a, b));
    }
    reduceRow16u8uScalar(src + 2 * i, dst + i, n - i);
}

}  // namespace
}  // namespace rmg

#endif
