// Copy and swap kernels, SSE2 form: 16-byte vectors. SSE2 has no byte
// shuffle, so the gathers and scatters of a channel take the element loop.
#include "core/rmgvec.h"

#if RMG_CPU_X86
#include "ops/rmgcopy.h"
#include "ops/rmgcopy_impl.h"

namespace rmg {
namespace {

struct Sse2 : Sse2Vec {
    static void storeMasked(unsigned char *p, Vec mask, Vec v) {
        storeu(p, blend(loadu(p), v, mask));
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
