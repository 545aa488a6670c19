// Zoom kernels: the resampling loops that ownZoomRect runs on one plain
// source rectangle and one plain destination rectangle, one kernel for
// each interpolation, depth and data order. Internal to the library (C++
// linkage, not exported).
//
// All kernels are separable in the same order: a source row is resampled
// along x first, then rows are combined along y. Nearest neighbour and
// linear work in 14-bit fixed point (1.0 is 16384); cubic works in double
// with a ring of four float rows.
//
// Every kernel gets: the source pointer at the first pixel and channel of
// the region, the destination pointer likewise, xScale and yScale (source
// pixels per destination pixel, 1.0 at most), the source and destination
// row strides in elements, the columns and rows to write, and xFrac and
// yFrac (where the first destination pixel lies inside its source pixel).
// Pixel-order kernels then get the channels to move and both images'
// nChannels; plane-order kernels the planes and both plane strides in
// elements; the 1-bit kernel the bit positions of the first pixels.
// Column and row counts of 0 or below write nothing.
//
// The kernels don't test any edge: the caller (ownZoomRect) has cut the
// columns and rows so that every element read and written lies inside the
// buffers it was given.
#ifndef RMG_GEOMETRY_OWNZOOM_H
#define RMG_GEOMETRY_OWNZOOM_H

#include <climits>
#include <cmath>
#include <cstddef>
#include <cstdint>

namespace rmg {

// The processor's default conversion of a double to a 32-bit integer: to
// nearest, ties to even. NaN and values outside the int32 range give the
// x86 "integer indefinite" value, INT_MIN.
inline int32_t zoomRound(double v) {
    const double r = std::nearbyint(v);
    if (!(r >= -2147483648.0 && r <= 2147483647.0)) return INT32_MIN;
    return static_cast<int32_t>(r);
}

// The step and start of nearest neighbour: the product rounded down,
// unless it lies within 0.00001 of the next integer.
inline int32_t zoomNearestFixed(double v) { return zoomRound(v * 16384.0 + 0.00001 - 0.5); }
// Those of linear: the product rounded to nearest.
inline int32_t zoomLinearFixed(double v) { return zoomRound(v * 16384.0); }

// The arithmetic of one 16-bit packed multiply-add lane: two products of
// signed 16-bit operands, summed in a wrapping 32-bit word.
inline int32_t zoomMadd(int32_t w0, int32_t a, int32_t w1, int32_t b) {
    const auto s = [](int32_t v) { return static_cast<int32_t>(static_cast<int16_t>(v)); };
    const uint32_t p0 = static_cast<uint32_t>(s(w0) * s(a));
    const uint32_t p1 = static_cast<uint32_t>(s(w1) * s(b));
    return static_cast<int32_t>(p0 + p1);
}

// The linear column rule: the source column of position x (a logical
// shift), one back when it is lastCol, and the weight of the right
// neighbour (16384 on lastCol itself).
struct ZoomLinearColumn {
    int32_t i;
    int32_t f;
};
inline ZoomLinearColumn zoomLinearColumn(uint32_t x, int32_t lastCol) {
    int32_t i = static_cast<int32_t>(x >> 14);
    if (i == lastCol) i = i - 1;
    const int32_t f = static_cast<int32_t>(x - static_cast<uint32_t>(i) * 16384u);
    return {i, f};
}

// The cubic index rule for position p (in source pixels from the region's
// origin) of an axis with origin offset o and image size n: the node i and
// the distance t = p - i, kept so that nodes i-1 to i+2 lie inside an
// image of at least four pixels.
struct ZoomCubicNode {
    int32_t i;
    double t;
};
inline ZoomCubicNode zoomCubicNode(double p, int32_t o, int32_t n) {
    int32_t i = zoomRound(p + 0.00001 - 0.5);
    const int64_t at = static_cast<int64_t>(o) + i;
    if (at == 0)
        i = i + 1;
    else if (at == static_cast<int64_t>(n) - 1)
        i = i - 2;
    else if (at == static_cast<int64_t>(n) - 2)
        i = i - 1;
    return {i, p - static_cast<double>(i)};
}

// The coefficients of the forward-difference cubic for distance t.
struct ZoomCubicWeights {
    double a, b, c;
};
inline ZoomCubicWeights zoomCubicWeights(double t) {
    const double a = 1.0 + t;
    const double b = t * (1.0 + t) * 0.5;
    const double c = (t - 1.0) * b * 0.3333333333333333;
    return {a, b, c};
}

}  // namespace rmg

// ---------------------------------------------------------------------------
// Nearest neighbour
// ---------------------------------------------------------------------------

// 1-bit: the source bit of column c is the bit at srcBit + (position >> 14)
// of the row, the destination bit at dstBit + c; bits count from the most
// significant bit of a byte. Only that one bit of a destination byte is
// changed.
void ownZoomNearest1(const uint8_t *src, uint8_t *dst, double xScale, double yScale,
                     int srcStride, int dstStride, int cols, int rows, double xFrac, double yFrac,
                     int srcBit, int dstBit);
void ownZoomNearest8Pixel(const uint8_t *src, uint8_t *dst, double xScale, double yScale,
                          int srcStride, int dstStride, int cols, int rows, double xFrac,
                          double yFrac, int channels, int srcChannels, int dstChannels);
void ownZoomNearest8Plane(const uint8_t *src, uint8_t *dst, double xScale, double yScale,
                          int srcStride, int dstStride, int cols, int rows, double xFrac,
                          double yFrac, int planes, int srcPlaneStride, int dstPlaneStride);
void ownZoomNearest16Pixel(const uint16_t *src, uint16_t *dst, double xScale, double yScale,
                           int srcStride, int dstStride, int cols, int rows, double xFrac,
                           double yFrac, int channels, int srcChannels, int dstChannels);
void ownZoomNearest16Plane(const uint16_t *src, uint16_t *dst, double xScale, double yScale,
                           int srcStride, int dstStride, int cols, int rows, double xFrac,
                           double yFrac, int planes, int srcPlaneStride, int dstPlaneStride);

// ---------------------------------------------------------------------------
// Linear
// ---------------------------------------------------------------------------

// lastCol and lastRow are the image's last column and row relative to the
// region's origin; bufA and bufB hold cols * channels (pixel order) or cols
// (plane order) 16-bit values each.
void ownZoomLinear8Pixel(const uint8_t *src, uint8_t *dst, double xScale, double yScale,
                         int srcStride, int dstStride, int cols, int rows, double xFrac,
                         double yFrac, int channels, int srcChannels, int dstChannels,
                         int lastCol, int lastRow, int16_t *bufA, int16_t *bufB);
void ownZoomLinear8Plane(const uint8_t *src, uint8_t *dst, double xScale, double yScale,
                         int srcStride, int dstStride, int cols, int rows, double xFrac,
                         double yFrac, int planes, int srcPlaneStride, int dstPlaneStride,
                         int lastCol, int lastRow, int16_t *bufA, int16_t *bufB);
void ownZoomLinear16Pixel(const uint16_t *src, uint16_t *dst, double xScale, double yScale,
                          int srcStride, int dstStride, int cols, int rows, double xFrac,
                          double yFrac, int channels, int srcChannels, int dstChannels,
                          int lastCol, int lastRow, int16_t *bufA, int16_t *bufB);
void ownZoomLinear16Plane(const uint16_t *src, uint16_t *dst, double xScale, double yScale,
                          int srcStride, int dstStride, int cols, int rows, double xFrac,
                          double yFrac, int planes, int srcPlaneStride, int dstPlaneStride,
                          int lastCol, int lastRow, int16_t *bufA, int16_t *bufB);

// The row routines: one source row resampled along x into `buf`, columns
// from x0 by xStep (fixed point). Values: 8-bit (w0 * p[i] + w1 * p[i+1])
// >> 8; 16-bit (w0 * (p[i] >> 1) + w1 * (p[i+1] >> 1)) >> 14; kept as 16
// bits.
void ownZoomLinearRow8Pixel(const uint8_t *row, int16_t *buf, int cols, int x0, int xStep,
                            int lastCol, int channels, int srcChannels);
void ownZoomLinearRow8Plane(const uint8_t *row, int16_t *buf, int cols, int x0, int xStep,
                            int lastCol);
void ownZoomLinearRow16Pixel(const uint16_t *row, int16_t *buf, int cols, int x0, int xStep,
                             int lastCol, int channels, int srcChannels);
void ownZoomLinearRow16Plane(const uint16_t *row, int16_t *buf, int cols, int x0, int xStep,
                             int lastCol);

// The blends: upper and lower buffer with the weight f of the lower into a
// destination row. 8-bit: (w0 * a + w1 * b) >> 20, low 8 bits; 16-bit:
// >> 13, low 16 bits.
void ownZoomLinearBlend8Pixel(const int16_t *upper, const int16_t *lower, uint8_t *dst, int cols,
                              int f, int channels, int dstChannels);
void ownZoomLinearBlend8Plane(const int16_t *upper, const int16_t *lower, uint8_t *dst, int cols,
                              int f);
void ownZoomLinearBlend16Pixel(const int16_t *upper, const int16_t *lower, uint16_t *dst,
                               int cols, int f, int channels, int dstChannels);
void ownZoomLinearBlend16Plane(const int16_t *upper, const int16_t *lower, uint16_t *dst,
                               int cols, int f);

// ---------------------------------------------------------------------------
// Cubic
// ---------------------------------------------------------------------------

// xOffset, yOffset, width and height are the source region's origin and the
// source image's size, for the index rule; rings hold cols * channels
// (pixel order) or cols (plane order) floats each.
void ownZoomCubic8Pixel(const uint8_t *src, uint8_t *dst, double xScale, double yScale,
                        int srcStride, int dstStride, int cols, int rows, double xFrac,
                        double yFrac, int channels, int srcChannels, int dstChannels, int xOffset,
                        int yOffset, int width, int height, float *r0, float *r1, float *r2,
                        float *r3);
void ownZoomCubic8Plane(const uint8_t *src, uint8_t *dst, double xScale, double yScale,
                        int srcStride, int dstStride, int cols, int rows, double xFrac,
                        double yFrac, int planes, int srcPlaneStride, int dstPlaneStride,
                        int xOffset, int yOffset, int width, int height, float *r0, float *r1,
                        float *r2, float *r3);
void ownZoomCubic16Pixel(const uint16_t *src, uint16_t *dst, double xScale, double yScale,
                         int srcStride, int dstStride, int cols, int rows, double xFrac,
                         double yFrac, int channels, int srcChannels, int dstChannels,
                         int xOffset, int yOffset, int width, int height, float *r0, float *r1,
                         float *r2, float *r3);
void ownZoomCubic16Plane(const uint16_t *src, uint16_t *dst, double xScale, double yScale,
                         int srcStride, int dstStride, int cols, int rows, double xFrac,
                         double yFrac, int planes, int srcPlaneStride, int dstPlaneStride,
                         int xOffset, int yOffset, int width, int height, float *r0, float *r1,
                         float *r2, float *r3);

namespace rmg {

// The vector forms. Nearest neighbour runs whole (a pixel kernel with
// `planes` 1 and strides 0, or a plane kernel with `channels` equal to both
// channel counts... see the forms' files); the linear rows and blends run
// one row each. Every form gives the bytes of the scalar form.
struct ZoomForms {
    void (*nearest8)(const uint8_t *src, uint8_t *dst, int32_t x0, int32_t xStep, int32_t y0,
                     int32_t yStep, ptrdiff_t srcStride, ptrdiff_t dstStride, int cols, int rows,
                     int channels, int srcChannels, int dstChannels);
    void (*nearest16)(const uint16_t *src, uint16_t *dst, int32_t x0, int32_t xStep, int32_t y0,
                      int32_t yStep, ptrdiff_t srcStride, ptrdiff_t dstStride, int cols, int rows,
                      int channels, int srcChannels, int dstChannels);
    void (*linearRow8)(const uint8_t *row, int16_t *buf, int cols, int32_t x0, int32_t xStep,
                       int32_t lastCol, int channels, int srcChannels);
    void (*linearRow16)(const uint16_t *row, int16_t *buf, int cols, int32_t x0, int32_t xStep,
                        int32_t lastCol, int channels, int srcChannels);
    void (*blend8)(const int16_t *upper, const int16_t *lower, uint8_t *dst, int cols, int32_t f,
                   int channels, int dstChannels);
    void (*blend16)(const int16_t *upper, const int16_t *lower, uint16_t *dst, int cols,
                    int32_t f, int channels, int dstChannels);
};
extern const ZoomForms kZoomScalar;
extern const ZoomForms kZoomSse2;
extern const ZoomForms kZoomAvx2;

}  // namespace rmg

#endif
