// Logical kernels, AVX2 form: 32-byte vectors.
#include "core/rmgcpu.h"

#if RMG_CPU_X86
#include <immintrin.h>

#include "ops/ownand.h"
#include "ops/ownand_impl.h"

namespace rmg {
namespace {

struct Avx2 {
    using Vec = __m256i;
    static constexpr size_t kBytes = 32;

    static Vec splat64(uint64_t word) { return _mm256_set1_epi64x(static_cast<long long>(word)); }
    static Vec loadu(const unsigned char *p) {
        return _mm256_loadu_si256(reinterpret_cast<const __m256i *>(p));
    }
    static void storeu(unsigned char *p, Vec v) {
        _mm256_storeu_si256(reinterpret_cast<__m256i *>(p), v);
    }
    static void store(unsigned char *p, Vec v) {
        _mm256_store_si256(reinterpret_cast<__m256i *>(p), v);
    }
    static void stream(unsigned char *p, Vec v) {
        _mm256_stream_si256(reinterpret_cast<__m256i *>(p), v);
    }
    static void fence() { _mm_sfence(); }
    static Vec and_(Vec a, Vec b) { return _mm256_and_si256(a, b); }
    static Vec or_(Vec a, Vec b) { return _mm256_or_si256(a, b); }
    static Vec xor_(Vec a, Vec b) { return _mm256_xor_si256(a, b); }
    static Vec andNot(Vec a, Vec b) { return _mm256_andnot_si256(a, b); }
};

}  // namespace

constexpr AndForms kAndAvx2 = vectorAndForms<Avx2>();

}  // namespace rmg

#endif
