// Blur: the box average of rmgBlur, its region and piece routines and its
// row kernels. Internal to the library (C++ linkage, not exported).
#ifndef RMG_FILTER_RMGBLUR_H
#define RMG_FILTER_RMGBLUR_H

#include <cstddef>
#include <cstdint>

#include "rmg.h"

// The working words of rmgBlur, written by the operation for each piece and
// read by ownBlurRect: the piece's columns and rows, the first and last
// channel filtered (1-based, inclusive) and 1 / (nRows * nCols) held as a
// 32-bit float. They make the operation non-re-entrant.
extern int32_t blurCols;
extern int32_t blurRows;
extern int32_t blurFirstChannel;
extern int32_t blurLastChannel;
extern float blurScale;

// The rectangle of an image and its channels: without a ROI 0, 0, width,
// height and channels 1 to nChannels; with one its offsets, its width and
// height cut so as not to pass the image, and both channels its coi when
// that is not 0.
void ownBlurRegion(const RmgImage *image, int *x, int *y, int *cols, int *rows,
                   int *firstChannel, int *lastChannel);

// Filters one piece: blurRows by blurCols pixels of dst from its ROI's
// origin, channels blurFirstChannel to blurLastChannel, each the average of
// the nRows by nCols box of `src` below and to the right of the pixel's own
// place in `src` (src is the piece's read area, blurRows + nRows rows of
// blurCols + nCols columns from its origin). Both images are in memory.
//
// Memory: `src` is read only inside its rows of widthStep bytes; elements of
// dst whose bytes would lie outside imageData .. imageData + imageSize (a
// widthStep or imageSize the application changed) are not written.
void ownBlurRect(const RmgImage *src, RmgImage *dst, int nRows, int nCols, int anchorX,
                 int anchorY);

namespace rmg {

// Element kinds of the integer kernels.
enum BlurKind : int { kBlur8u = 0, kBlur8s = 1, kBlur16u = 2, kBlur16s = 3 };

// sum[count - 1 - c] += add[c] - sub[c] for c from 0 to count - 1 (with a
// null `sub`: += add[c]), elements of `kind` `stride` elements apart,
// arithmetic of wrapping 32-bit words.
using BlurColumnsFn = void (*)(int32_t *sum, const unsigned char *add, const unsigned char *sub,
                               int count, ptrdiff_t stride, int kind);

// One destination row from the column sums (cols + nCols of them): acc
// starts as sum[cols + nCols - 1] + ... + sum[cols]; for the columns o from
// 0 to count - 1 the element trunc(acc * scale) is stored (low 8 or 16
// bits) at dst + o * stride elements, then acc += sum[cols - 1 - o] -
// sum[cols - 1 - o + nCols]. count is at most cols.
using BlurRowFn = void (*)(const int32_t *sum, int cols, int nCols, float scale,
                           unsigned char *dst, ptrdiff_t stride, int count, int kind);

struct BlurForms {
    BlurColumnsFn columns;
    BlurRowFn row;
};
extern const BlurForms kBlurScalar;
extern const BlurForms kBlurSse2;
extern const BlurForms kBlurAvx2;

}  // namespace rmg

#endif
