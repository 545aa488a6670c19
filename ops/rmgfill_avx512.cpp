// Fill kernels, AVX-512 form: 64-byte vectors. A run of fewer than 64 bytes
// is one store under a byte mask.
#include "core/rmgcpu.h"

#if RMG_CPU_X86
#include <immintrin.h>

#include "ops/rmgfill.h"
#include "ops/rmgfill_impl.h"

namespace rmg {
namespace {

struct Avx512 {
    using Vec = __m512i;
    static constexpr size_t kBytes = 64;
    static constexpr size_t kStringStoreBytes = kStringStoreWide;

    static Vec splat(uint32_t word) { return _mm512_set1_epi32(static_cast<int>(word)); }
    static Vec loadu(const unsigned char *p) { return _mm512_loadu_si512(p); }
    static Vec load(const unsigned char *p) { return _mm512_load_si512(p); }
    static void storeu(unsigned char *p, Vec v) { _mm512_storeu_si512(p, v); }
    static void store(unsigned char *p, Vec v) { _mm512_store_si512(p, v); }
    static Vec select(Vec mask, Vec v) { return _mm512_and_si512(mask, v); }
    // Bitwise mask ? pattern : old.
    static Vec blend(Vec old, Vec mask, Vec pattern) {
        return _mm512_ternarylogic_epi32(mask, old, pattern, 0xAC);
    }
    static void fillShort(unsigned char *p, size_t bytes, uint32_t word) {
        const __mmask64 run = (__mmask64{1} << bytes) - 1;
        _mm512_mask_storeu_epi8(p, run, splat(word));
    }
};

}  // namespace

constexpr FillForms kFillAvx512 = vectorFillForms<Avx512>();

}  // namespace rmg

#endif
