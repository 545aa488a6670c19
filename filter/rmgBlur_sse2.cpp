// Blur row kernels, SSE2 form: four 32-bit lanes. SSE2 has no sign or zero
// extension of packed elements: bytes and words are unpacked against zero
// or against themselves and shifted back arithmetically.
#include "core/rmgvec.h"

#if RMG_CPU_X86
#include "filter/rmgBlur.h"
#include "filter/rmgBlur_impl.h"

namespace rmg {
namespace {

struct Sse2 : Sse2Vec {
    static constexpr int kLanes = 4;

    static Vec widen(const unsigned char *p, int kind) {
        if (kind <= kBlur8s) {
            int32_t word;
            std::memcpy(&word, p, 4);
            const Vec b = _mm_cvtsi32_si128(word);
            if (kind == kBlur8u)
                return _mm_unpacklo_epi16(_mm_unpacklo_epi8(b, _mm_setzero_si128()),
                                          _mm_setzero_si128());
            const Vec w = _mm_unpacklo_epi8(b, b);
            return _mm_srai_epi32(_mm_unpacklo_epi16(w, w), 24);
        }
        const Vec w = _mm_loadl_epi64(reinterpret_cast<const __m128i *>(p));
        if (kind == kBlur16u) return _mm_unpacklo_epi16(w, _mm_setzero_si128());
        return _mm_srai_epi32(_mm_unpacklo_epi16(w, w), 16);
    }
    static Vec reverse32(Vec v) { return _mm_shuffle_epi32(v, 0x1B); }
    static Vec sub32(Vec a, Vec b) { return _mm_sub_epi32(a, b); }
    static Vec prefix32(Vec v) {
        v = _mm_add_epi32(v, _mm_slli_si128(v, 4));
        return _mm_add_epi32(v, _mm_slli_si128(v, 8));
    }
    static Vec scale(Vec v, double s) {
        const __m128d f = _mm_set1_pd(s);
        const __m128i a = _mm_cvttpd_epi32(_mm_mul_pd(_mm_cvtepi32_pd(v), f));
        const __m128i b = _mm_cvttpd_epi32(_mm_mul_pd(_mm_cvtepi32_pd(_mm_srli_si128(v, 8)), f));
        return _mm_unpacklo_epi64(a, b);
    }
    // Low bytes: masked to 0..255, which both packs keep as they are.
    static void store8(unsigned char *p, Vec v) {
        const Vec w = _mm_packs_epi32(_mm_and_si128(v, _mm_set1_epi32(0xFF)), _mm_setzero_si128());
        const int32_t word = _mm_cvtsi128_si32(_mm_packus_epi16(w, w));
        std::memcpy(p, &word, 4);
    }
    // Low halves, sign-extended first so that the signed pack keeps them.
    static void store16(unsigned char *p, Vec v) {
        const Vec h = _mm_srai_epi32(_mm_slli_epi32(v, 16), 16);
        _mm_storel_epi64(reinterpret_cast<__m128i *>(p), _mm_packs_epi32(h, h));
    }
};

}  // namespace

constexpr BlurForms kBlurSse2 = {blurColumnsForm<Sse2>, blurRowForm<Sse2>};

}  // namespace rmg

#endif
