// Copy and swap kernels, SSE2 form: 16-byte vectors. SSE2 has no byte
// shuffle, so the gathers and scatters of a channel take the element loop.
#include "core/rmgcpu.h"

#if RMG_CPU_X86
#include <emmintrin.h>

#include "ops/rmgcopy.h"
#include "ops/rmgcopy_impl.h"

namespace rmg {
namespace {

struct Sse2 {
    using Vec = __m128i;
    static constexpr size_t kBytes = 16;

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
    static void storeMasked(unsigned char *p, Vec mask, Vec v) {
        storeu(p, _mm_or_si128(_mm_andnot_si128(mask, loadu(p)), _mm_and_si128(mask, v)));
    }
    static void copyShort(const unsigned char *src, unsigned char *dst, size_t bytes) {
        copyBelow16(src, dst, bytes);
    }
    static void swapShort(unsigned char *first, unsigned char *second, size_t bytes) {
        swapBelow16(first, second, bytes);
    }
};

}  // namespace

constexpr CopyForms kCopySse2 = vectorCopyForms<Sse2, void>();

}  // namespace rmg

#endif
