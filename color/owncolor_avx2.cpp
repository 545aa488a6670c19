// Gray conversion rows, AVX2 form: 32-byte vectors.
#include "core/rmgcpu.h"

#if RMG_CPU_X86
#include "color/owncolor.h"
#include "color/owncolor_vec.h"

namespace rmg {

namespace {
// The AVX2 rows, with the pixel-order 8u rows that byte shuffles allow.
constexpr ColorForms avx2Forms() {
    ColorForms forms = vectorColorForms<ColorAvx2>();
    forms.gray8u8u = grayRow8u8uPixels;
    forms.spread8u = spreadRow8uPixels;
    return forms;
}
}  // namespace

constexpr ColorForms kColorAvx2 = avx2Forms();

}  // namespace rmg

#endif
