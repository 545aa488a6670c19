// Copy and swap kernels, AVX2 form: 32-byte vectors, and byte shuffles in
// 16-byte lanes for the gathers and scatters of a channel.
#include "core/rmgvec.h"

#if RMG_CPU_X86
#include "ops/rmgcopy.h"
#include "ops/rmgcopy_impl.h"

namespace rmg {
namespace {

struct Avx2 : Avx2Vec {
    static void storeMasked(unsigned char *p, Vec mask, Vec v) {
        storeu(p, blend(loadu(p), v, mask));
    }
    // Below 32 bytes: two overlapping 16-byte vectors, or the short moves.
    static void copyShort(const unsigned char *src, unsigned char *dst, size_t bytes) {
        if (bytes < 16) {
            copyBelow16(src, dst, bytes);
            return;
        }
        const Sse2Vec::Vec a = Sse2Vec::loadu(src);
        const Sse2Vec::Vec b = Sse2Vec::loadu(src + bytes - 16);
        Sse2Vec::storeu(dst, a);
        Sse2Vec::storeu(dst + bytes - 16, b);
    }
    static void swapShort(unsigned char *first, unsigned char *second, size_t bytes) {
        if (bytes >= 16) {
            const Sse2Vec::Vec a = Sse2Vec::loadu(first);
            const Sse2Vec::Vec b = Sse2Vec::loadu(second);
            Sse2Vec::storeu(first, b);
            Sse2Vec::storeu(second, a);
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
