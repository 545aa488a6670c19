// Planar rows, SSE2 form: 16-byte vectors.
#include "core/rmgvec.h"

#if RMG_CPU_X86
#include "alpha/rmgalpha_planar.h"
#include "alpha/rmgalpha_planar_impl.h"

namespace rmg {

constexpr PlanarForms kPlanarSse2 = vectorPlanarForms<Sse2Vec>();

}  // namespace rmg

#endif
