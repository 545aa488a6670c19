// Logical kernels, AVX-512 form: 64-byte vectors.
#include "core/rmgcpu.h"

#if RMG_CPU_X86
#include "core/rmgvec.h"
#include "ops/ownand.h"
#include "ops/ownand_impl.h"

namespace rmg {

constexpr AndForms kAndAvx512 = vectorAndForms<Avx512Vec>();

}  // namespace rmg

#endif
