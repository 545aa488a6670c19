// Bit reduction kernels: the plain reduction of one piece, the reduction
// with noise, the dither stage, and the noise tables. Internal to the
// library (C++ linkage, not exported).
//
// Memory: each piece comes with the bytes usable from its pointers on. An
// element that doesn't lie wholly inside them is neither read nor written
// (a row is cut to its elements that do; a neighbour outside the buffer
// receives no error).
#ifndef RMG_COLOR_OWNREDUCE_H
#define RMG_COLOR_OWNREDUCE_H

#include <cstdint>

#include "rmg.h"

// The noise tables, filled by rmgFillJitterTables from the runtime's rand.
extern double jitterNoise[1024];
extern double jitterSpare[1024];
extern int32_t jitterIndex[1024];
void rmgFillJitterTables();

// The nearest multiple of q to v (v above 65535 gives 65535).
int rmgQuantize(int v, int q);

// One piece: `height` rows of `width` pixels of src (rows srcStep apart)
// into dst (rows dstStep apart). Raise "errInOutDepth" or "errOutDepth".
void ownReduceBits(const RmgImage *src, const RmgImage *dst, const unsigned char *srcData,
                   unsigned char *dstData, int srcStep, int height, int width, int dstStep,
                   int64_t srcBytes, int64_t dstBytes);
// The same with the noise of jitterType, changing srcData in place first.
void ownjitter_rect(const RmgImage *src, const RmgImage *dst, unsigned char *srcData,
                    unsigned char *dstData, int srcStep, int height, int width, int dstStep,
                    int jitterType, int64_t srcBytes, int64_t dstBytes);
// The dither stage over one piece of `image`, in place.
void own_dither_rect(const RmgImage *image, int dither, unsigned char *data, int width,
                     int height, int rowStep, int levelShift, int lastRow, int lastColumn,
                     int64_t bytes);

namespace rmg {

// The word reduction rows: n elements from src to dst.
using ReduceRowFn = void (*)(const unsigned char *src, unsigned char *dst, int n);
struct ReduceForms {
    ReduceRowFn row32s16u, row32s8u, row16u8u;
};
extern const ReduceForms kReduceScalar;
extern const ReduceForms kReduceSse2;
extern const ReduceForms kReduceAvx2;
const ReduceForms &reduceForms();

}  // namespace rmg

#endif
