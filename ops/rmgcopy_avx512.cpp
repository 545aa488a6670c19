// Copy and swap kernels, AVX-512 form: 64-byte vectors; a run of fewer
// than 64 bytes is one load and one store under a byte mask. The gathers
// and scatters of a channel use the 16-byte lanes of the AVX2 form.
#include "core/rmgvec.h"

#if RMG_CPU_X86
#include "ops/rmgcopy.h"
#include "ops/rmgcopy_impl.h"

namespace rmg {
namespace {

struct Avx512 : Avx512Vec {
    // Only the bytes under the mask are written.
    static void storeMasked(unsigned char *p, Vec mask, Vec v) {
        _mm512_mask_storeu_epi8(p, _mm512_movepi8_mask(mask), v);
    }
    static __mmask64 run(size_t bytes) { return (__mmask64{1} << bytes) - 1; }
    static void copyShort(const unsigned char *src, unsigned char *dst, size_t bytes) {
        const __mmask64 m = run(bytes);
        _mm512_mask_storeu_epi8(dst, m, _mm512_maskz_loadu_epi8(m, src));
    }
    static void swapShort(unsigned char *first, unsigned char *second, size_t bytes) {
        const __mmask64 m = run(bytes);
        const Vec a = _mm512_maskz_loadu_epi8(m, first);
        const Vec b = _mm512_maskz_loadu_epi8(m, second);
        _mm512_mask_storeu_epi8(first, m, b);
        _mm512_mask_storeu_epi8(second, m, a);
    }
};

}  // namespace

constexpr CopyForms kCopyAvx512 = vectorCopyForms<Avx512, Lanes256>();

}  // namespace rmg

#endif
