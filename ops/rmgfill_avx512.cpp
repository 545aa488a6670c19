// Fill kernels, AVX-512 form: 64-byte vectors. A run of fewer than 64 bytes
// is one store under a byte mask.
#include "core/rmgvec.h"

#if RMG_CPU_X86
#include "ops/rmgfill.h"
#include "ops/rmgfill_impl.h"

namespace rmg {
namespace {

struct Avx512 : Avx512Vec {
    static constexpr size_t kStringStoreBytes = kStringStoreWide;
    static void fillShort(unsigned char *p, size_t bytes, uint32_t word) {
        const __mmask64 run = (__mmask64{1} << bytes) - 1;
        _mm512_mask_storeu_epi8(p, run, splat32(word));
    }
};

}  // namespace

constexpr FillForms kFillAvx512 = vectorFillForms<Avx512>();

}  // namespace rmg

#endif
