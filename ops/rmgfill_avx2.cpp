// Fill kernels, AVX2 form: 32-byte vectors.
#include "core/rmgcpu.h"

#if RMG_CPU_X86
#include <immintrin.h>

#include "ops/rmgfill.h"
#include "ops/rmgfill_impl.h"

namespace rmg {
namespace {

struct Avx2 {
    using Vec = __m256i;
    static constexpr size_t kBytes = 32;
    static constexpr size_t kStringStoreBytes = kStringStoreWide;

    static Vec splat(uint32_t word) { return _mm256_set1_epi32(static_cast<int>(word)); }
    static Vec loadu(const unsigned char *p) {
        return _mm256_loadu_si256(reinterpret_cast<const __m256i *>(p));
    }
    static Vec load(const unsigned char *p) {
        return _mm256_load_si256(reinterpret_cast<const __m256i *>(p));
    }
    static void storeu(unsigned char *p, Vec v) {
        _mm256_storeu_si256(reinterpret_cast<__m256i *>(p), v);
    }
    static void store(unsigned char *p, Vec v) {
        _mm256_store_si256(reinterpret_cast<__m256i *>(p), v);
    }
    static Vec select(Vec mask, Vec v) { return _mm256_and_si256(mask, v); }
    static Vec blend(Vec old, Vec mask, Vec pattern) { return _mm256_blendv_epi8(old, pattern, mask); }
    // Below 32 bytes: two overlapping 16-byte stores, or the short stores.
    static void fillShort(unsigned char *p, size_t bytes, uint32_t word) {
        if (bytes < 16) {
            fillBelow16(p, bytes, word);
            return;
        }
        const __m128i v = _mm_set1_epi32(static_cast<int>(word));
        _mm_storeu_si128(reinterpret_cast<__m128i *>(p), v);
        _mm_storeu_si128(reinterpret_cast<__m128i *>(p + bytes - 16), v);
    }
};

}  // namespace

constexpr FillForms kFillAvx2 = vectorFillForms<Avx2>();

}  // namespace rmg

#endif
