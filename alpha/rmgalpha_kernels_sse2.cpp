// Composition pixel rows, SSE2 form: 16-byte vectors.
#include "core/rmgvec.h"

#if RMG_CPU_X86
#include "alpha/rmgalpha_kernels.h"
#include "alpha/rmgalpha_kernels_impl.h"

namespace rmg {
namespace {

struct Sse2Composite : Sse2Vec {
    using Count = __m128i;
    static Count count(int bits) { return _mm_cvtsi32_si128(bits); }
    static Vec sub8(Vec a, Vec b) { return _mm_sub_epi8(a, b); }
    static Vec sll16(Vec a, Count n) { return _mm_sll_epi16(a, n); }
    static Vec srl16(Vec a, Count n) { return _mm_srl_epi16(a, n); }
    static Vec sll32(Vec a, Count n) { return _mm_sll_epi32(a, n); }
    static Vec srl32(Vec a, Count n) { return _mm_srl_epi32(a, n); }
    static Vec sll64(Vec a, Count n) { return _mm_sll_epi64(a, n); }
    static Vec srl64(Vec a, Count n) { return _mm_srl_epi64(a, n); }
};

}  // namespace

constexpr CompositeForms kCompositeSse2 = vectorCompositeForms<Sse2Composite>();

}  // namespace rmg

#endif
