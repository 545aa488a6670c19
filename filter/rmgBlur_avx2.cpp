// Blur row kernels, AVX2 form: eight 32-bit lanes, elements widened with
// the sign and zero extensions, the conversion in two halves of four
// doubles.
#include "core/rmgvec.h"

#if RMG_CPU_X86
#include "filter/rmgBlur.h"
#include "filter/rmgBlur_impl.h"

namespace rmg {
namespace {

struct Avx2 : Avx2Vec {
    static constexpr int kLanes = 8;

    static Vec widen(const unsigned char *p, int kind) {
        if (kind <= kBlur8s) {
            const __m128i b = _mm_loadl_epi64(reinterpret_cast<const __m128i *>(p));
            return kind == kBlur8u ? _mm256_cvtepu8_epi32(b) : _mm256_cvtepi8_epi32(b);
        }
        const __m128i w = _mm_loadu_si128(reinterpret_cast<const __m128i *>(p));
        return kind == kBlur16u ? _mm256_cvtepu16_epi32(w) : _mm256_cvtepi16_epi32(w);
    }
    static Vec reverse32(Vec v) {
        return _mm256_permutevar8x32_epi32(v, _mm256_setr_epi32(7, 6, 5, 4, 3, 2, 1, 0));
    }
    static Vec sub32(Vec a, Vec b) { return _mm256_sub_epi32(a, b); }
    static Vec prefix32(Vec v) {
        v = _mm256_add_epi32(v, _mm256_slli_si256(v, 4));
        v = _mm256_add_epi32(v, _mm256_slli_si256(v, 8));
        // The low lane's total carried into every lane of the high one.
        const __m256i low = _mm256_permute2x128_si256(v, v, 0x08);
        return _mm256_add_epi32(v, _mm256_shuffle_epi32(low, 0xFF));
    }
    static Vec scale(Vec v, double s) {
        const __m256d f = _mm256_set1_pd(s);
        const __m128i a =
            _mm256_cvttpd_epi32(_mm256_mul_pd(_mm256_cvtepi32_pd(_mm256_castsi256_si128(v)), f));
        const __m128i b = _mm256_cvttpd_epi32(
            _mm256_mul_pd(_mm256_cvtepi32_pd(_mm256_extracti128_si256(v, 1)), f));
        return _mm256_set_m128i(b, a);
    }
    static void store8(unsigned char *p, Vec v) {
        const __m256i m = _mm256_and_si256(v, _mm256_set1_epi32(0xFF));
        const __m128i w = _mm_packs_epi32(_mm256_castsi256_si128(m), _mm256_extracti128_si256(m, 1));
        _mm_storel_epi64(reinterpret_cast<__m128i *>(p), _mm_packus_epi16(w, w));
    }
    static void store16(unsigned char *p, Vec v) {
        const __m256i h = _mm256_srai_epi32(_mm256_slli_epi32(v, 16), 16);
        _mm_storeu_si128(reinterpret_cast<__m128i *>(p),
                         _mm_packs_epi32(_mm256_castsi256_si128(h), _mm256_extracti128_si256(h, 1)));
    }
};

}  // namespace

constexpr BlurForms kBlurAvx2 = {blurColumnsForm<Avx2>, blurRowForm<Avx2>};

}  // namespace rmg

#endif
