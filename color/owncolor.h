// Gray conversion kernels: the conversion of one piece in each direction,
// and the row kernels they run. Internal to the library (C++ linkage, not
// exported).
//
// Memory: each piece comes with the number of bytes that may be used from
// its source and destination pointers on. A row whose elements would reach
// outside those bytes is cut to the elements that lie inside (the channel
// addresses only grow along a row, so these are the row's first ones): the
// others are neither read nor written, and the destination keeps what it
// held there.
#ifndef RMG_COLOR_OWNCOLOR_H
#define RMG_COLOR_OWNCOLOR_H

#include <cstddef>
#include <cstdint>

#include "rmg.h"

// The colour weights of one rmgGrayToColor call: 16-bit integers with
// their shift for integer destinations, floats for 32-bit ones.
struct RmgGrayCoefs {
    uint16_t coefR, coefG, coefB;
    uint16_t coefShift;
    float fcoefR, fcoefG, fcoefB;
};

// The weights for a destination depth: truncation towards zero of
// 32768 * fract (16u, shift 15) or 256 * fract (8u and others, shift 8),
// kept to 16 bits; three zeros select the luminance defaults. For 32s the
// floats themselves, or the default floats when the 32768 scale gives
// three zeros at 16 bits.
RmgGrayCoefs ownGrayCoefs(unsigned int dstDepth, float fractR, float fractG, float fractB);

// One piece of rmgColorToGray: `height` rows of `width` pixels from srcData
// (rows srcStep apart) into dstData (rows dstStep apart). srcBytes and
// dstBytes are the bytes usable from each pointer on. Raises "errInOutDepth"
// for a depth pair that has no kernel.
void ownColorToGray(const RmgImage *src, const RmgImage *dst, const unsigned char *srcData,
                    unsigned char *dstData, int srcStep, int height, int width, int dstStep,
                    int64_t srcBytes, int64_t dstBytes);

// One piece of rmgGrayToColor, with the same arguments and the caller's
// fractions.
void ownGrayToColor(const RmgImage *src, const RmgImage *dst, float fractR, float fractG,
                    float fractB, const unsigned char *srcData, unsigned char *dstData,
                    int srcStep, int height, int width, int dstStep, int64_t srcBytes,
                    int64_t dstBytes);

namespace rmg {

// Row kernels. Gray rows: three channel rows a, b, c (elements `step`
// apart) give n gray elements at dst, from the last to the first. Spread
// rows: n gray elements give three outputs each at o1, o2, o3 (elements
// `step` apart), with the weights w and the shift.
using GrayRowFn = void (*)(const unsigned char *a, const unsigned char *b, const unsigned char *c,
                           int step, unsigned char *dst, int n);
using SpreadRowFn = void (*)(const unsigned char *g, unsigned char *o1, unsigned char *o2,
                             unsigned char *o3, int step, int n, const uint16_t *w, int shift);

// The kernels that have vector forms. Those forms take step 1 in vectors
// and any other step through the scalar form; they are used only where the
// rows read and written share no byte.
struct ColorForms {
    GrayRowFn gray8u8u, gray8u16u, gray16u16u, gray16u8uPixel, gray16u8uPlane;
    SpreadRowFn spread8u, spread16u;
};
extern const ColorForms kColorScalar;
extern const ColorForms kColorSse2;
extern const ColorForms kColorAvx2;

// The forms this processor runs now.
const ColorForms &colorForms();

}  // namespace rmg

#endif
