// Gray conversion rows, SSE2 form: 16-byte vectors.
#include "core/rmgcpu.h"

#if RMG_CPU_X86
#include "color/owncolor.h"
#include "color/owncolor_vec.h"

namespace rmg {

constexpr ColorForms kColorSse2 = vectorColorForms<ColorSse2>();

}  // namespace rmg

#endif
