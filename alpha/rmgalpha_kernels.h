// The vector forms of the integer composition kernels on pixel-order
// images: rows in which every pixel holds `channels` samples side by side
// in each colour image, worked a whole pixel at a time. The kernels of
// alpha/rmgalpha_kernels.cpp take these rows only where the order of their
// own loop can't be told from the result (see planPixelRows there);
// elsewhere, and in the scalar form, they run their own loop.
//
// Results, whatever form runs: the bytes of the integer kernels' formulas,
// sample by sample. The lane `skip` of a pixel keeps its value, or gets
// the destination alpha where `dstAlpha` is kDstAlphaLane.
#ifndef RMG_ALPHA_RMGALPHA_KERNELS_H
#define RMG_ALPHA_RMGALPHA_KERNELS_H

#include <cstddef>
#include <cstdint>

#include "core/rmgcpu.h"

namespace rmg {

// Where the alpha of a pixel comes from.
enum CompositeAlphaKind : int {
    kAlphaConst = 0,       // `value` in every pixel
    kAlphaLane = 1,        // lane `lane` of a pixel laid out as the colour pixels
    kAlphaGather = 2,      // one sample per pixel, `step` bytes apart
    kAlphaComplement = 3,  // M - a (the alpha of B only)
};

struct CompositeAlpha {
    int kind = kAlphaConst;
    int lane = 0;
    uint32_t value = 0;
    int64_t step = 0;
};

// Where the destination alpha goes.
enum CompositeDstAlphaKind : int {
    kDstAlphaNone = 0,
    kDstAlphaLane = 1,     // into the lane `skip` of the destination's pixels
    kDstAlphaScatter = 2,  // one sample per pixel, `dstAlphaStep` bytes apart
};

// What stays the same over a call.
struct CompositeShape {
    int channels = 0;  // samples of a pixel: 1, 2 or 4
    int skip = -1;     // the lane left as it is, or -1
    CompositeAlpha a, b;
    int dstAlpha = kDstAlphaNone;
    int64_t dstAlphaStep = 0;
};

// One row: the first pixel of each image (kAlphaLane: the first sample of
// the alpha image's pixel; kAlphaGather and the scattered destination
// alpha: the first pixel's sample; null where not used).
struct CompositeRow {
    const unsigned char *A;
    const unsigned char *B;
    unsigned char *dst;
    const unsigned char *a;
    const unsigned char *b;
    unsigned char *alpha;
};

using CompositeRowFn = void (*)(const CompositeShape &shape, const CompositeRow &row,
                                size_t pixels);

// The rows of one form: [depth 0 8u, 1 16u][compositeType][premulAlpha].
// The scalar form has none (all null): the kernels then keep their loop.
struct CompositeForms {
    CompositeRowFn row[2][6][2];
};
extern const CompositeForms kCompositeScalar;
extern const CompositeForms kCompositeSse2;
extern const CompositeForms kCompositeAvx2;

// The record of the form this processor runs (or a test forces).
const CompositeForms &compositeForms();

}  // namespace rmg

#endif
