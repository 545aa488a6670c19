// Fill kernels, SSE2 form: 16-byte vectors.
#include "core/rmgcpu.h"

#if RMG_CPU_X86
#include <emmintrin.h>

#include "ops/rmgfill.h"
#include "ops/rmgfill_impl.h"

namespace rmg {
namespace {

struct Sse2 {
    using Vec = __m128i;
    static constexpr size_t kBytes = 16;
    static constexpr size_t kStringStoreBytes = kStringStoreNarrow;

    static Vec splat(uint32_t word) { return _mm_set1_epi32(static_cast<int>(word)); }
    static Vec loadu(const unsigned char *p) {
        return _mm_loadu_si128(reinterpret_cast<const __m128i *>(p));
    }
    static Vec load(const unsigned char *p) {
        return _mm_load_si128(reinterpret_cast<const __m128i *>(p));
    }
    static void storeu(unsigned char *p, Vec v) { _mm_storeu_si128(reinterpret_cast<__m128i *>(p), v); }
    static void store(unsigned char *p, Vec v) { _mm_store_si128(reinterpret_cast<__m128i *>(p), v); }
    static Vec select(Vec mask, Vec v) { return _mm_and_si128(mask, v); }
    static Vec blend(Vec old, Vec mask, Vec pattern) {
        return _mm_or_si128(_mm_andnot_si128(mask, old), pattern);
    }
    static void fillShort(unsigned char *p, size_t bytes, uint32_t word) {
        fillBelow16(p, bytes, word);
    }
};

}  // namespace

constexpr FillForms kFillSse2 = vectorFillForms<Sse2>();

}  // namespace rmg

#endif
