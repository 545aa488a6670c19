// Test support for the blur: a per-element model of the operation on plain
// images, and small helpers to make and read test images.
#ifndef RMG_TESTS_FILTER_BLURTEST_H
#define RMG_TESTS_FILTER_BLURTEST_H

#include <cstdint>
#include <vector>

#include "geometry/mirrortest.h"
#include "rmg.h"

namespace blurtest {

using Bytes = std::vector<unsigned char>;
using mirrortest::Kind;

struct Box {
    int nRows, nCols, anchorX, anchorY;
};

// The expected bytes of dst's buffer after rmgBlur(src, dst, box) on plain
// images, dst's buffer holding `dstBefore` before the call (src is read as
// it stands, so for one record pass the same image and its bytes): each
// element of the common rectangle is the wrapped 32-bit sum of its box in
// the source read through the border rules, times the float 1 / (nRows *
// nCols) in double, truncated (INT_MIN where undefined), low bits stored;
// elements outside dst's imageSize and everything else as it was. For
// 32-bit elements it is exact only where the float column sums are.
Bytes modelBlur(const RmgImage *src, const RmgImage *dst, const Bytes &dstBefore, const Box &box);

// The float scale of a box.
float scaleOf(int nRows, int nCols);

// A plain 1-channel image of `depth` whose elements are all `value`.
RmgImage *evenImage(unsigned int depth, int height, int width, int value);

// Element (x, y) of channel 1 of a plain 1-channel image, sign extended
// for the signed depths.
int32_t elementAt(const RmgImage *image, int x, int y);
void setElement(RmgImage *image, int x, int y, int32_t value);

}  // namespace blurtest

#endif
