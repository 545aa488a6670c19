// Zoom kernels: the scalar forms, the drivers of the linear and cubic
// kernels, and the entries that pick a form for the processor.
//
// Arithmetic: the fixed-point positions are 32-bit words that wrap; the
// linear sums are those of a 16-bit packed multiply-add (zoomMadd); the
// cubic arithmetic is IEEE double, each operation rounded on its own (the
// library is built in ISO mode, which leaves floating-point contraction
// off, and without FMA instructions), with stores to float that round to
// nearest.
#include "geometry/ownZoom.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <utility>

#include "core/rmgcpu.h"
#include "geometry/ownZoom_impl.h"

namespace rmg {

constexpr ZoomForms kZoomScalar = scalarZoomForms();

namespace {

constexpr FormTable<const ZoomForms *> kZoom = formTable<const ZoomForms *>(
    &kZoomScalar, nullptr, nullptr, nullptr);

template <typename T>
using NearestFn = void (*)(const T *, T *, int32_t, int32_t, int32_t, int32_t, ptrdiff_t,
                           ptrdiff_t, int, int, int, int, int);
template <typename T>
using RowFn = void (*)(const T *, int16_t *, int, int32_t, int32_t, int32_t, int, int);
template <typename T>
using BlendFn = void (*)(const int16_t *, const int16_t *, T *, int, int32_t, int, int);

NearestFn<uint8_t> nearestOf(const ZoomForms *f, const uint8_t *) { return f->nearest8; }
NearestFn<uint16_t> nearestOf(const ZoomForms *f, const uint16_t *) { return f->nearest16; }
RowFn<uint8_t> rowOf(const ZoomForms *f, const uint8_t *) { return f->linearRow8; }
RowFn<uint16_t> rowOf(const ZoomForms *f, const uint16_t *) { return f->linearRow16; }
BlendFn<uint8_t> blendOf(const ZoomForms *f, const uint8_t *) { return f->blend8; }
BlendFn<uint16_t> blendOf(const ZoomForms *f, const uint16_t *) { return f->blend16; }

// Nearest neighbour over `planes` planes (pixel order: one plane).
template <typename T>
void nearestPlanes(const T *src, T *dst, double xScale, double yScale, int srcStride,
                   int dstStride, int cols, int rows, double xFrac, double yFrac, int planes,
                   ptrdiff_t srcPlaneStride, ptrdiff_t dstPlaneStride, int channels,
                   int srcChannels, int dstChannels) {
    if (cols <= 0 || rows <= 0) return;
    const int32_t xStep = zoomNearestFixed(xScale);
    const int32_t yStep = zoomNearestFixed(yScale);
    const int32_t x0 = zoomNearestFixed(xFrac);
    const int32_t y0 = zoomNearestFixed(yFrac);
    const NearestFn<T> run = nearestOf(kZoom.get(), src);
    for (int p = 0; p < planes; ++p)
        run(src + p * srcPlaneStride, dst + p * dstPlaneStride, x0, xStep, y0, yStep, srcStride,
            dstStride, cols, rows, channels, srcChannels, dstChannels);
}

// Linear over one plane (or once for pixel order): each source row
// resampled once into a buffer, two buffers blended into each destination
// row. Relies on a scale of 1.0 at most, so that the row rises by at most
// one a destination row.
template <typename T>
void linearPlane(const T *src, T *dst, int32_t x0, int32_t xStep, int32_t y0, int32_t yStep,
                 ptrdiff_t srcStride, ptrdiff_t dstStride, int cols, int rows, int channels,
                 int srcChannels, int dstChannels, int32_t lastCol, int32_t lastRow,
                 int16_t *bufA, int16_t *bufB) {
    const ZoomForms *forms = kZoom.get();
    const RowFn<T> row = rowOf(forms, src);
    const BlendFn<T> blend = blendOf(forms, src);
    int16_t *upper = bufA;
    int16_t *lower = bufB;
    int32_t prev = -1;
    row(src, lower, cols, x0, xStep, lastCol, channels, srcChannels);
    uint32_t y = static_cast<uint32_t>(y0);
    for (int r = 0; r < rows; ++r, y += static_cast<uint32_t>(yStep)) {
        int32_t at = static_cast<int32_t>(y) >> 14;
        if (at == lastRow) at = at - 1;
        const auto f = static_cast<int32_t>(y - static_cast<uint32_t>(at) * 16384u);
        if (at != prev) {
            prev = at;
            std::swap(upper, lower);
            row(src + (static_cast<ptrdiff_t>(at) + 1) * srcStride, lower, cols, x0, xStep,
                lastCol, channels, srcChannels);
        }
        blend(upper, lower, dst + r * dstStride, cols, f, channels, dstChannels);
    }
}

template <typename T>
void linearPlanes(const T *src, T *dst, double xScale, double yScale, int srcStride,
                  int dstStride, int cols, int rows, double xFrac, double yFrac, int planes,
                  ptrdiff_t srcPlaneStride, ptrdiff_t dstPlaneStride, int channels,
                  int srcChannels, int dstChannels, int lastCol, int lastRow, int16_t *bufA,
                  int16_t *bufB) {
    if (cols <= 0 || rows <= 0) return;
    const int32_t xStep = zoomLinearFixed(xScale);
    const int32_t yStep = zoomLinearFixed(yScale);
    const int32_t x0 = zoomLinearFixed(xFrac);
    const int32_t y0 = zoomLinearFixed(yFrac);
    for (int p = 0; p < planes; ++p)
        linearPlane(src + p * srcPlaneStride, dst + p * dstPlaneStride, x0, xStep, y0, yStep,
                    srcStride, dstStride, cols, rows, channels, srcChannels, dstChannels, lastCol,
                    lastRow, bufA, bufB);
}

// One source row resampled along x into a float row of the cubic ring.
template <typename T>
void cubicRow(const T *row, float *buf, int cols, double xFrac, double xScale, int32_t xOffset,
              int32_t width, int channels, int srcChannels) {
    double x = xFrac;
    for (int c = 0; c < cols; ++c, x += xScale) {
        const ZoomCubicNode node = zoomCubicNode(x, xOffset, width);
        const ZoomCubicWeights w = zoomCubicWeights(node.t);
        const T *at = row + static_cast<ptrdiff_t>(node.i) * srcChannels;
        for (int ch = 0; ch < channels; ++ch) {
            const int32_t p0 = at[ch - srcChannels];
            const int32_t p1 = at[ch];
            const int32_t p2 = at[ch + srcChannels];
            const int32_t p3 = at[ch + 2 * srcChannels];
            const int32_t d1 = p1 - p0;
            const int32_t d2 = (p2 - p1) - d1;
            const int32_t d3 = (p3 - 2 * p2 + p1) - d2;
            const double v = w.a * d1 + d2 * w.b + d3 * w.c + p0;
            buf[c * channels + ch] = static_cast<float>(v);
        }
    }
}

template <typename T>
void cubicPlane(const T *src, T *dst, double xScale, double yScale, ptrdiff_t srcStride,
                ptrdiff_t dstStride, int cols, int rows, double xFrac, double yFrac, int channels,
                int srcChannels, int dstChannels, int xOffset, int yOffset, int width, int height,
                float *const rings[4]) {
    constexpr int32_t kMax = sizeof(T) == 1 ? 255 : 65535;
    float *ring[4] = {rings[0], rings[1], rings[2], rings[3]};
    auto resample = [&](int32_t j, float *into) {
        cubicRow(src + static_cast<ptrdiff_t>(j) * srcStride, into, cols, xFrac, xScale, xOffset,
                 width, channels, srcChannels);
    };
    const int32_t first = zoomCubicNode(yFrac, yOffset, height).i;
    resample(first - 1, ring[0]);
    resample(first, ring[1]);
    resample(first + 1, ring[2]);
    // prev starts at -1 like a row index: when the first row's node is -1
    // (a region that starts on the image's second-last row), no row is
    // resampled for it and the fourth buffer keeps what it held.
    int32_t prev = -1;
    double y = yFrac;
    for (int r = 0; r < rows; ++r, y += yScale) {
        const ZoomCubicNode node = zoomCubicNode(y, yOffset, height);
        const ZoomCubicWeights w = zoomCubicWeights(node.t);
        if (node.i != prev) {
            prev = node.i;
            // On the first row the new row goes into the fourth buffer;
            // later the ring turns by one and it goes into the oldest.
            if (r > 0) std::rotate(ring, ring + 1, ring + 4);
            resample(node.i + 2, ring[3]);
        }
        T *out = dst + r * dstStride;
        for (int c = 0; c < cols; ++c) {
            for (int ch = 0; ch < channels; ++ch) {
                const int k = c * channels + ch;
                const double q0 = ring[0][k], q1 = ring[1][k], q2 = ring[2][k], q3 = ring[3][k];
                const double d1 = q1 - q0;
                const double d2 = (q2 - q1) - d1;
                const double d3 = ((q3 - q2 - q2) + q1) - d2;
                const double v = d3 * w.c + ((w.a * d1 + q0) + d2 * w.b);
                const int32_t value = std::clamp(zoomRound(v + 0.00001 - 0.5), 0, kMax);
                out[c * dstChannels + ch] = static_cast<T>(value);
            }
        }
    }
}

template <typename T>
void cubicPlanes(const T *src, T *dst, double xScale, double yScale, int srcStride,
                 int dstStride, int cols, int rows, double xFrac, double yFrac, int planes,
                 ptrdiff_t srcPlaneStride, ptrdiff_t dstPlaneStride, int channels,
                 int srcChannels, int dstChannels, int xOffset, int yOffset, int width,
                 int height, float *r0, float *r1, float *r2, float *r3) {
    if (cols <= 0 || rows <= 0) return;
    float *const rings[4] = {r0, r1, r2, r3};
    for (int p = 0; p < planes; ++p)
        cubicPlane(src + p * srcPlaneStride, dst + p * dstPlaneStride, xScale, yScale, srcStride,
                   dstStride, cols, rows, xFrac, yFrac, channels, srcChannels, dstChannels,
                   xOffset, yOffset, width, height, rings);
}

}  // namespace
}  // namespace rmg

using rmg::cubicPlanes;
using rmg::linearPlanes;
using rmg::nearestPlanes;

// ---------------------------------------------------------------------------
// Nearest neighbour
// ---------------------------------------------------------------------------

void ownZoomNearest1(const uint8_t *src, uint8_t *dst, double xScale, double yScale,
                     int srcStride, int dstStride, int cols, int rows, double xFrac, double yFrac,
                     int srcBit, int dstBit) {
    if (cols <= 0 || rows <= 0) return;
    const auto xStep = static_cast<uint32_t>(rmg::zoomNearestFixed(xScale));
    const auto yStep = static_cast<uint32_t>(rmg::zoomNearestFixed(yScale));
    const auto x0 = static_cast<uint32_t>(rmg::zoomNearestFixed(xFrac));
    uint32_t y = static_cast<uint32_t>(rmg::zoomNearestFixed(yFrac));
    for (int r = 0; r < rows; ++r, y += yStep) {
        const uint8_t *from =
            src + static_cast<ptrdiff_t>(static_cast<int32_t>(y) >> 14) * srcStride;
        uint8_t *to = dst + static_cast<ptrdiff_t>(r) * dstStride;
        uint32_t x = x0;
        for (int c = 0; c < cols; ++c, x += xStep) {
            const int64_t s = static_cast<int64_t>(srcBit) + (static_cast<int32_t>(x) >> 14);
            const int64_t d = static_cast<int64_t>(dstBit) + c;
            const int bit = (from[s >> 3] >> (7 - (s & 7))) & 1;
            const auto mask = static_cast<uint8_t>(0x80u >> (d & 7));
            uint8_t &byte = to[d >> 3];
            byte = static_cast<uint8_t>(bit ? byte | mask : byte & ~mask);
        }
    }
}

void ownZoomNearest8Pixel(const uint8_t *src, uint8_t *dst, double xScale, double yScale,
                          int srcStride, int dstStride, int cols, int rows, double xFrac,
                          double yFrac, int channels, int srcChannels, int dstChannels) {
    nearestPlanes(src, dst, xScale, yScale, srcStride, dstStride, cols, rows, xFrac, yFrac, 1, 0,
                  0, channels, srcChannels, dstChannels);
}

void ownZoomNearest8Plane(const uint8_t *src, uint8_t *dst, double xScale, double yScale,
                          int srcStride, int dstStride, int cols, int rows, double xFrac,
                          double yFrac, int planes, int srcPlaneStride, int dstPlaneStride) {
    nearestPlanes(src, dst, xScale, yScale, srcStride, dstStride, cols, rows, xFrac, yFrac, planes,
                  srcPlaneStride, dstPlaneStride, 1, 1, 1);
}

void ownZoomNearest16Pixel(const uint16_t *src, uint16_t *dst, double xScale, double yScale,
                           int srcStride, int dstStride, int cols, int rows, double xFrac,
                           double yFrac, int channels, int srcChannels, int dstChannels) {
    nearestPlanes(src, dst, xScale, yScale, srcStride, dstStride, cols, rows, xFrac, yFrac, 1, 0,
                  0, channels, srcChannels, dstChannels);
}

void ownZoomNearest16Plane(const uint16_t *src, uint16_t *dst, double xScale, double yScale,
                           int srcStride, int dstStride, int cols, int rows, double xFrac,
                           double yFrac, int planes, int srcPlaneStride, int dstPlaneStride) {
    nearestPlanes(src, dst, xScale, yScale, srcStride, dstStride, cols, rows, xFrac, yFrac, planes,
                  srcPlaneStride, dstPlaneStride, 1, 1, 1);
}

// ---------------------------------------------------------------------------
// Linear
// ---------------------------------------------------------------------------

void ownZoomLinear8Pixel(const uint8_t *src, uint8_t *dst, double xScale, double yScale,
                         int srcStride, int dstStride, int cols, int rows, double xFrac,
                         double yFrac, int channels, int srcChannels, int dstChannels,
                         int lastCol, int lastRow, int16_t *bufA, int16_t *bufB) {
    linearPlanes(src, dst, xScale, yScale, srcStride, dstStride, cols, rows, xFrac, yFrac, 1, 0, 0,
                 channels, srcChannels, dstChannels, lastCol, lastRow, bufA, bufB);
}

void ownZoomLinear8Plane(const uint8_t *src, uint8_t *dst, double xScale, double yScale,
                         int srcStride, int dstStride, int cols, int rows, double xFrac,
                         double yFrac, int planes, int srcPlaneStride, int dstPlaneStride,
                         int lastCol, int lastRow, int16_t *bufA, int16_t *bufB) {
    linearPlanes(src, dst, xScale, yScale, srcStride, dstStride, cols, rows, xFrac, yFrac, planes,
                 srcPlaneStride, dstPlaneStride, 1, 1, 1, lastCol, lastRow, bufA, bufB);
}

void ownZoomLinear16Pixel(const uint16_t *src, uint16_t *dst, double xScale, double yScale,
                          int srcStride, int dstStride, int cols, int rows, double xFrac,
                          double yFrac, int channels, int srcChannels, int dstChannels,
                          int lastCol, int lastRow, int16_t *bufA, int16_t *bufB) {
    linearPlanes(src, dst, xScale, yScale, srcStride, dstStride, cols, rows, xFrac, yFrac, 1, 0, 0,
                 channels, srcChannels, dstChannels, lastCol, lastRow, bufA, bufB);
}

void ownZoomLinear16Plane(const uint16_t *src, uint16_t *dst, double xScale, double yScale,
                          int srcStride, int dstStride, int cols, int rows, double xFrac,
                          double yFrac, int planes, int srcPlaneStride, int dstPlaneStride,
                          int lastCol, int lastRow, int16_t *bufA, int16_t *bufB) {
    linearPlanes(src, dst, xScale, yScale, srcStride, dstStride, cols, rows, xFrac, yFrac, planes,
                 srcPlaneStride, dstPlaneStride, 1, 1, 1, lastCol, lastRow, bufA, bufB);
}

void ownZoomLinearRow8Pixel(const uint8_t *row, int16_t *buf, int cols, int x0, int xStep,
                            int lastCol, int channels, int srcChannels) {
    rmg::kZoom.get()->linearRow8(row, buf, cols, x0, xStep, lastCol, channels, srcChannels);
}
void ownZoomLinearRow8Plane(const uint8_t *row, int16_t *buf, int cols, int x0, int xStep,
                            int lastCol) {
    rmg::kZoom.get()->linearRow8(row, buf, cols, x0, xStep, lastCol, 1, 1);
}
void ownZoomLinearRow16Pixel(const uint16_t *row, int16_t *buf, int cols, int x0, int xStep,
                             int lastCol, int channels, int srcChannels) {
    rmg::kZoom.get()->linearRow16(row, buf, cols, x0, xStep, lastCol, channels, srcChannels);
}
void ownZoomLinearRow16Plane(const uint16_t *row, int16_t *buf, int cols, int x0, int xStep,
                             int lastCol) {
    rmg::kZoom.get()->linearRow16(row, buf, cols, x0, xStep, lastCol, 1, 1);
}

void ownZoomLinearBlend8Pixel(const int16_t *upper, const int16_t *lower, uint8_t *dst, int cols,
                              int f, int channels, int dstChannels) {
    rmg::kZoom.get()->blend8(upper, lower, dst, cols, f, channels, dstChannels);
}
void ownZoomLinearBlend8Plane(const int16_t *upper, const int16_t *lower, uint8_t *dst, int cols,
                              int f) {
    rmg::kZoom.get()->blend8(upper, lower, dst, cols, f, 1, 1);
}
void ownZoomLinearBlend16Pixel(const int16_t *upper, const int16_t *lower, uint16_t *dst,
                               int cols, int f, int channels, int dstChannels) {
    rmg::kZoom.get()->blend16(upper, lower, dst, cols, f, channels, dstChannels);
}
void ownZoomLinearBlend16Plane(const int16_t *upper, const int16_t *lower, uint16_t *dst,
                               int cols, int f) {
    rmg::kZoom.get()->blend16(upper, lower, dst, cols, f, 1, 1);
}

// ---------------------------------------------------------------------------
// Cubic
// ---------------------------------------------------------------------------

void ownZoomCubic8Pixel(const uint8_t *src, uint8_t *dst, double xScale, double yScale,
                        int srcStride, int dstStride, int cols, int rows, double xFrac,
                        double yFrac, int channels, int srcChannels, int dstChannels, int xOffset,
                        int yOffset, int width, int height, float *r0, float *r1, float *r2,
                        float *r3) {
    cubicPlanes(src, dst, xScale, yScale, srcStride, dstStride, cols, rows, xFrac, yFrac, 1, 0, 0,
                channels, srcChannels, dstChannels, xOffset, yOffset, width, height, r0, r1, r2,
                r3);
}

void ownZoomCubic8Plane(const uint8_t *src, uint8_t *dst, double xScale, double yScale,
                        int srcStride, int dstStride, int cols, int rows, double xFrac,
                        double yFrac, int planes, int srcPlaneStride, int dstPlaneStride,
                        int xOffset, int yOffset, int width, int height, float *r0, float *r1,
                        float *r2, float *r3) {
    cubicPlanes(src, dst, xScale, yScale, srcStride, dstStride, cols, rows, xFrac, yFrac, planes,
                srcPlaneStride, dstPlaneStride, 1, 1, 1, xOffset, yOffset, width, height, r0, r1,
                r2, r3);
}

void ownZoomCubic16Pixel(const uint16_t *src, uint16_t *dst, double xScale, double yScale,
                         int srcStride, int dstStride, int cols, int rows, double xFrac,
                         double yFrac, int channels, int srcChannels, int dstChannels,
                         int xOffset, int yOffset, int width, int height, float *r0, float *r1,
                         float *r2, float *r3) {
    cubicPlanes(src, dst, xScale, yScale, srcStride, dstStride, cols, rows, xFrac, yFrac, 1, 0, 0,
                channels, srcChannels, dstChannels, xOffset, yOffset, width, height, r0, r1, r2,
                r3);
}

void ownZoomCubic16Plane(const uint16_t *src, uint16_t *dst, double xScale, double yScale,
                         int srcStride, int dstStride, int cols, int rows, double xFrac,
                         double yFrac, int planes, int srcPlaneStride, int dstPlaneStride,
                         int xOffset, int yOffset, int width, int height, float *r0, float *r1,
                         float *r2, float *r3) {
    cubicPlanes(src, dst, xScale, yScale, srcStride, dstStride, cols, rows, xFrac, yFrac, planes,
                srcPlaneStride, dstPlaneStride, 1, 1, 1, xOffset, yOffset, width, height, r0, r1,
                r2, r3);
}
