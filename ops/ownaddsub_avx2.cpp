// Element kernels of scalar add and subtract, AVX2 form: 32-byte vectors.
// The unpack and pack steps of the widened 8u arithmetic work within each
// 16-byte half, so that their pairing keeps the elements in order.
#include "core/rmgvec.h"

#if RMG_CPU_X86
#include "ops/ownaddsub.h"
#include "ops/ownaddsub_impl.h"

namespace rmg {
namespace {

struct Avx2 : Avx2Vec {
    // Four lanes at a time in double precision (see the SSE2 form).
    static __m128i subHalf(__m128i x, __m256d v, int reversed) {
        const __m256d e = _mm256_cvtepi32_pd(x);
        __m256d d = reversed ? _mm256_sub_pd(v, e) : _mm256_sub_pd(e, v);
        d = _mm256_min_pd(_mm256_max_pd(d, _mm256_set1_pd(-2147483648.0)),
                          _mm256_set1_pd(2147483647.0));
        return _mm256_cvttpd_epi32(d);
    }
    static Vec subDouble32(Vec x, Vec v, int reversed) {
        const __m256d vd = _mm256_cvtepi32_pd(_mm256_castsi256_si128(v));
        const __m128i low = subHalf(_mm256_castsi256_si128(x), vd, reversed);
        const __m128i high = subHalf(_mm256_extracti128_si256(x, 1), vd, reversed);
        return _mm256_inserti128_si256(_mm256_castsi128_si256(low), high, 1);
    }
};

}  // namespace

void elemRunAvx2(int family, const unsigned char *src, unsigned char *dst, size_t n, int64_t v) {
    elemRunVector<Avx2>(family, src, dst, n, v);
}

void elemChannelAvx2(int family, const unsigned char *src, unsigned char *dst, size_t pixels,
                    int channels, int channel, int64_t v) {
    elemChannelVector<Avx2>(family, src, dst, pixels, channels, channel, v);
}

}  // namespace rmg

#endif
