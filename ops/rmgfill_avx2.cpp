// Fill kernels, AVX2 form: 32-byte vectors.
#include "core/rmgvec.h"

#if RMG_CPU_X86
#include "ops/rmgfill.h"
#include "ops/rmgfill_impl.h"

namespace rmg {
namespace {

struct Avx2 : Avx2Vec {
    static constexpr size_t kStringStoreBytes = kStringStoreWide;
    // Below 32 bytes: two overlapping 16-byte stores, or the short stores.
    static void fillShort(unsigned char *p, size_t bytes, uint32_t word) {
        if (bytes < 16) {
            fillBelow16(p, bytes, word);
            return;
        }
        const Sse2Vec::Vec v = Sse2Vec::splat32(word);
        Sse2Vec::storeu(p, v);
        Sse2Vec::storeu(p + bytes - 16, v);
    }
};

}  // namespace

constexpr FillForms kFillAvx2 = vectorFillForms<Avx2>();

}  // namespace rmg

#endif
