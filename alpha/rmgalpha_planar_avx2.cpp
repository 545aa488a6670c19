// Planar rows, AVX2 form: 32-byte vectors.
#include "core/rmgvec.h"

#if RMG_CPU_X86
#include "alpha/rmgalpha_planar.h"
#include "alpha/rmgalpha_planar_impl.h"

namespace rmg {

constexpr PlanarForms kPlanarAvx2 = vectorPlanarForms<Avx2Vec>();

}  // namespace rmg

#endif
