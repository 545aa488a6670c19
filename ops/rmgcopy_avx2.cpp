// Copy and swap kernels, AVX2 form: 32-byte vectors, and byte shuffles in
// 16-byte lanes for the gathers and scatters of a channel.
#include "core/rmgcpu.h"

#if RMG_CPU_X86
#include <immintrin.h>

#include "ops/rmgcopy.h"
#include "ops/rmgcopy_impl.h"

namespace rmg {
namespace {

struct Avx2 {
    using Vec = __m256i;
    static constexpr size_t kBytes = 32;

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
    static void storeMasked(unsigned char *p, Vec mask, Vec v) {
        storeu(p, _mm256_blendv_epi8(loadu(p), v, mask));
    }
    // Below 32 bytes: two overlapping 16-byte vectors, or the short moves.
    static void copyShort(const unsigned char *src, unsigned char *dst, size_t bytes) {
        if (bytes < 16) {
            copyBelow16(src, dst, bytes);
            return;
        }
        const __m128i a = _mm_loadu_si128(reinterpret_cast<const __m128i *>(src));
        const __m128i b = _mm_loadu_si128(reinterpret_cast<const __m128i *>(src + bytes - 16));
        _mm_storeu_si128(reinterpret_cast<__m128i *>(dst), a);
        _mm_storeu_si128(reinterpret_cast<__m128i *>(dst + bytes - 16), b);
    }
    static void swapShort(unsigned char *first, unsigned char *second, size_t bytes) {
        if (bytes >= 16) {
            const __m128i a = _mm_loadu_si128(reinterpret_cast<const __m128i *>(first));
            const __m128i b = _mm_loadu_si128(reinterpret_cast<const __m128i *>(second));
            _mm_storeu_si128(reinterpret_cast<__m128i *>(first), b);
            _mm_storeu_si128(reinterpret_cast<__m128i *>(second), a);
            first += 16;
            second += 16;
            bytes -= 16;
        }
        swapBelow16(first, second, bytes);
    }
};

}  // namespace

constexpr CopyForms kCopyAvx2 = vectorCopyForms<Avx2, Lanes256>();

}  // namespace rmg

#endif
