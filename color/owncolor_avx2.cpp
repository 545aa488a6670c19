// Gray conversion rows, AVX2 form: 32-byte vectors.
#include "core/rmgcpu.h"

#if RMG_CPU_X86
#include "color/owncolor.h"
#include "color/owncolor_vec.h"

namespace rmg {

constexpr ColorForms kColorAvx2 = vectorColorForms<ColorAvx2>();

}  // namespace rmg

#endif
