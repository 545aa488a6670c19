// Logical kernels, SSE2 form: 16-byte vectors.
#include "core/rmgcpu.h"

#if RMG_CPU_X86
#include "core/rmgvec.h"
#include "ops/ownand.h"
#include "ops/ownand_impl.h"

namespace rmg {

constexpr AndForms kAndSse2 = vectorAndForms<Sse2Vec>();

}  // namespace rmg

#endif
