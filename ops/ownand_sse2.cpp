// Logical kernels, SSE2 form: 16-byte vectors.
#include "core/rmgcpu.h"

#if RMG_CPU_X86
#include <emmintrin.h>

#include "ops/ownand.h"
#include "ops/ownand_impl.h"

namespace rmg {
namespace {

struct Sse2 {
    using Vec = __m128i;
    static constexpr size_t kBytes = 16;

    static Vec splat64(uint64_t word) { return _mm_set1_epi64x(static_cast<long long>(word)); }
    static Vec loadu(const unsigned char *p) {
        return _mm_loadu_si128(reinterpret_cast<const __m128i *>(p));
    }
    static void storeu(unsigned char *p, Vec v) {
        _mm_storeu_si128(reinterpret_cast<__m128i *>(p), v);
    }
    static void store(unsigned char *p, Vec v) {
        _mm_store_si128(reinterpret_cast<__m128i *>(p), v);
    }
    static void stream(unsigned char *p, Vec v) {
        _mm_stream_si128(reinterpret_cast<__m128i *>(p), v);
    }
    static void fence() { _mm_sfence(); }
    static Vec and_(Vec a, Vec b) { return _mm_and_si128(a, b); }
    static Vec or_(Vec a, Vec b) { return _mm_or_si128(a, b); }
    static Vec xor_(Vec a, Vec b) { return _mm_xor_si128(a, b); }
    static Vec andNot(Vec a, Vec b) { return _mm_andnot_si128(a, b); }
};

}  // namespace

constexpr AndForms kAndSse2 = vectorAndForms<Sse2>();

}  // namespace rmg

#endif
