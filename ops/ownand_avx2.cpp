// Logical kernels, AVX2 form: 32-byte vectors.
#include "core/rmgcpu.h"

#if RMG_CPU_X86
#include "core/rmgvec.h"
#include "ops/ownand.h"
#include "ops/ownand_impl.h"

namespace rmg {

constexpr AndForms kAndAvx2 = vectorAndForms<Avx2Vec>();

}  // namespace rmg

#endif
