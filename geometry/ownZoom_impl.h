// The zoom kernels' code shared by their forms: the scalar row loops that
// every form falls back on, and the vector templates. Included by
// geometry/ownZoom.cpp and by the files compiled for one instruction set;
// everything here lives in an anonymous namespace so that each of those
// files keeps its own copy, compiled with its own options (see
// core/rmgcpu.h).
#ifndef RMG_GEOMETRY_OWNZOOM_IMPL_H
#define RMG_GEOMETRY_OWNZOOM_IMPL_H

#include <cstddef>
#include <cstdint>

#include "geometry/ownZoom.h"

namespace rmg {
namespace {

// Nearest neighbour over one plane: destination element c * dstChannels +
// ch of row r from source element column * srcChannels + ch of source row
// y >> 14, the positions accumulated in wrapping 32-bit words.
template <typename T>
void nearestScalar(const T *src, T *dst, int32_t x0, int32_t xStep, int32_t y0, int32_t yStep,
                   ptrdiff_t srcStride, ptrdiff_t dstStride, int cols, int rows, int channels,
                   int srcChannels, int dstChannels) {
    uint32_t y = static_cast<uint32_t>(y0);
    for (int r = 0; r < rows; ++r, y += static_cast<uint32_t>(yStep)) {
        const T *from = src + (static_cast<int32_t>(y) >> 14) * srcStride;
        T *to = dst + r * dstStride;
        uint32_t x = static_cast<uint32_t>(x0);
        for (int c = 0; c < cols; ++c, x += static_cast<uint32_t>(xStep)) {
            const T *pixel = from + static_cast<ptrdiff_t>(static_cast<int32_t>(x) >> 14) * srcChannels;
            T *out = to + static_cast<ptrdiff_t>(c) * dstChannels;
            for (int ch = 0; ch < channels; ++ch) out[ch] = pixel[ch];
        }
    }
}

// The value a linear row keeps of a source element: the byte, or the
// 16-bit element halved so that it fits a signed 16-bit operand.
inline int32_t linearSample(uint8_t v) { return v; }
inline int32_t linearSample(uint16_t v) { return v >> 1; }
template <typename T>
constexpr int kLinearRowShift = sizeof(T) == 1 ? 8 : 14;
template <typename T>
constexpr int kLinearBlendShift = sizeof(T) == 1 ? 20 : 13;

// Columns from `from` to `cols` of a linear row routine.
template <typename T>
void linearRowFrom(const T *row, int16_t *buf, int from, int cols, int32_t x0, int32_t xStep,
                   int32_t lastCol, int channels, int srcChannels) {
    uint32_t x = static_cast<uint32_t>(x0) + static_cast<uint32_t>(from) * static_cast<uint32_t>(xStep);
    for (int c = from; c < cols; ++c, x += static_cast<uint32_t>(xStep)) {
        const ZoomLinearColumn col = zoomLinearColumn(x, lastCol);
        const T *p = row + static_cast<ptrdiff_t>(col.i) * srcChannels;
        for (int ch = 0; ch < channels; ++ch) {
            const int32_t v = zoomMadd(16384 - col.f, linearSample(p[ch]), col.f,
                                       linearSample(p[ch + srcChannels]));
            buf[c * channels + ch] = static_cast<int16_t>(v >> kLinearRowShift<T>);
        }
    }
}

template <typename T>
void linearRowScalar(const T *row, int16_t *buf, int cols, int32_t x0, int32_t xStep,
                     int32_t lastCol, int channels, int srcChannels) {
    linearRowFrom(row, buf, 0, cols, x0, xStep, lastCol, channels, srcChannels);
}

// Elements from `from` to `count` of a blend whose buffer elements and
// destination elements are in one-to-one order (channels == dstChannels,
// count = cols * channels).
template <typename T>
void blendRunFrom(const int16_t *upper, const int16_t *lower, T *dst, int from, int count,
                  int32_t f) {
    for (int k = from; k < count; ++k)
        dst[k] = static_cast<T>(zoomMadd(16384 - f, upper[k], f, lower[k]) >> kLinearBlendShift<T>);
}

template <typename T>
void blendScalar(const int16_t *upper, const int16_t *lower, T *dst, int cols, int32_t f,
                 int channels, int dstChannels) {
    for (int c = 0; c < cols; ++c)
        for (int ch = 0; ch < channels; ++ch) {
            const int k = c * channels + ch;
            dst[static_cast<ptrdiff_t>(c) * dstChannels + ch] = static_cast<T>(
                zoomMadd(16384 - f, upper[k], f, lower[k]) >> kLinearBlendShift<T>);
        }
}

constexpr ZoomForms scalarZoomForms() {
    return ZoomForms{nearestScalar<uint8_t>, nearestScalar<uint16_t>, linearRowScalar<uint8_t>,
                     linearRowScalar<uint16_t>, blendScalar<uint8_t>, blendScalar<uint16_t>};
}

}  // namespace
}  // namespace rmg

#endif
