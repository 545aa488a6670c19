// Element kernels of scalar add and subtract, SSE2 form: 16-byte vectors.
#include "core/rmgvec.h"

#if RMG_CPU_X86
#include "ops/ownaddsub.h"
#include "ops/ownaddsub_impl.h"

namespace rmg {
namespace {

struct Sse2 : Sse2Vec {
    // Two lanes at a time in double precision: the difference of two 32-bit
    // integers is exact there, and limiting it before the truncating
    // conversion gives the 32-bit range's ends.
    static __m128i subHalf(__m128i x, __m128d v, int reversed) {
        const __m128d e = _mm_cvtepi32_pd(x);
        __m128d d = reversed ? _mm_sub_pd(v, e) : _mm_sub_pd(e, v);
        d = _mm_min_pd(_mm_max_pd(d, _mm_set1_pd(-2147483648.0)), _mm_set1_pd(2147483647.0));
        return _mm_cvttpd_epi32(d);
    }
    static Vec subDouble32(Vec x, Vec v, int reversed) {
        const __m128d vd = _mm_cvtepi32_pd(v);
        const __m128i low = subHalf(x, vd, reversed);
        const __m128i high = subHalf(_mm_shuffle_epi32(x, 0x4E), vd, reversed);
        return _mm_unpacklo_epi64(low, high);
    }
};

}  // namespace

void elemRunSse2(int family, const unsigned char *src, unsigned char *dst, size_t n, int64_t v) {
    elemRunVector<Sse2>(family, src, dst, n, v);
}

void elemChannelSse2(int family, const unsigned char *src, unsigned char *dst, size_t pixels,
                    int channels, int channel, int64_t v) {
    elemChannelVector<Sse2>(family, src, dst, pixels, channels, channel, v);
}

}  // namespace rmg

#endif
