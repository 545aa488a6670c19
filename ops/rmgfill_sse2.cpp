// Fill kernels, SSE2 form: 16-byte vectors.
#include "core/rmgvec.h"

#if RMG_CPU_X86
#include "ops/rmgfill.h"
#include "ops/rmgfill_impl.h"

namespace rmg {
namespace {

struct Sse2 : Sse2Vec {
    static constexpr size_t kStringStoreBytes = kStringStoreNarrow;
    static void fillShort(unsigned char *p, size_t bytes, uint32_t word) {
        fillBelow16(p, bytes, word);
    }
};

}  // namespace

constexpr FillForms kFillSse2 = vectorFillForms<Sse2>();

}  // namespace rmg

#endif
