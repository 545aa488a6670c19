// Test support for the zoom kernels: per-element models of the three
// interpolations written from their formulas (closed-form positions for
// the fixed-point kernels, the accumulated double positions of cubic), over
// one plane of elements in a plain vector.
#ifndef RMG_TESTS_GEOMETRY_ZOOMTEST_H
#define RMG_TESTS_GEOMETRY_ZOOMTEST_H

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <random>
#include <vector>

namespace zoomtest {

// round() of the kernels: to nearest, ties to even.
inline int64_t roundEven(double v) { return static_cast<int64_t>(std::nearbyint(v)); }

// A source is anything with at(x, y, ch) in the region's coordinates.
// A plane of elements: element (x, y, ch) at y * stride + x * nChannels + ch
// from `origin` (the region's first element).
template <typename T>
struct Plane {
    const T *data;
    ptrdiff_t origin, stride;
    int nChannels;
    T at(int64_t x, int64_t y, int ch) const {
        return data[origin + y * stride + x * nChannels + ch];
    }
};

// What a kernel is asked: scales, fractions, counts and the image edges.
struct Ask {
    double xScale, yScale, xFrac, yFrac;
    int cols, rows, channels;
    int lastCol, lastRow;                  // linear
    int xOffset, yOffset, width, height;  // cubic
};

// Nearest neighbour: column (x0 + c * xStep) >> 14 with the steps rounded
// down unless within 0.00001 of the next integer.
inline int64_t nearestFixed(double v) { return roundEven(v * 16384 + 0.00001 - 0.5); }

template <typename T, typename S>
T modelNearest(const S &src, const Ask &a, int c, int r, int ch) {
    const int64_t x = nearestFixed(a.xFrac) + c * nearestFixed(a.xScale);
    const int64_t y = nearestFixed(a.yFrac) + r * nearestFixed(a.yScale);
    return src.at(x >> 14, y >> 14, ch);
}

// Linear: the row value of source row `row` at destination column c.
template <typename T, typename S>
int64_t modelLinearRow(const S &src, const Ask &a, int64_t row, int c, int ch) {
    const int64_t x = roundEven(a.xFrac * 16384) + c * roundEven(a.xScale * 16384);
    int64_t i = x >> 14;
    if (i == a.lastCol) --i;
    const int64_t f = x - i * 16384;
    int64_t p0 = src.at(i, row, ch), p1 = src.at(i + 1, row, ch);
    if (sizeof(T) == 2) {
        p0 >>= 1;
        p1 >>= 1;
    }
    const int64_t v = ((16384 - f) * p0 + f * p1) >> (sizeof(T) == 1 ? 8 : 14);
    return static_cast<int16_t>(v);
}

template <typename T, typename S>
T modelLinear(const S &src, const Ask &a, int c, int r, int ch) {
    const int64_t y = roundEven(a.yFrac * 16384) + r * roundEven(a.yScale * 16384);
    int64_t j = y >> 14;
    if (j == a.lastRow) --j;
    const int64_t f = y - j * 16384;
    const int64_t up = modelLinearRow<T>(src, a, j, c, ch);
    const int64_t low = modelLinearRow<T>(src, a, j + 1, c, ch);
    const int64_t v = ((16384 - f) * up + f * low) >> (sizeof(T) == 1 ? 20 : 13);
    return static_cast<T>(v);
}

// Cubic: the index rule, the coefficients and Newton's forward differences.
inline void cubicNode(double p, int o, int n, int64_t *i, double *t) {
    *i = roundEven(p + 0.00001 - 0.5);
    if (o + *i == 0)
        *i += 1;
    else if (o + *i == n - 1)
        *i -= 2;
    else if (o + *i == n - 2)
        *i -= 1;
    *t = p - static_cast<double>(*i);
}

template <typename T, typename S>
float modelCubicRow(const S &src, const Ask &a, int64_t row, int c, int ch) {
    double x = a.xFrac;
    for (int k = 0; k < c; ++k) x += a.xScale;
    int64_t i;
    double t;
    cubicNode(x, a.xOffset, a.width, &i, &t);
    const double ca = 1 + t, cb = t * (1 + t) * 0.5, cc = (t - 1) * cb * 0.3333333333333333;
    const int64_t p0 = src.at(i - 1, row, ch), p1 = src.at(i, row, ch), p2 = src.at(i + 1, row, ch),
                  p3 = src.at(i + 2, row, ch);
    const int64_t d1 = p1 - p0, d2 = (p2 - p1) - d1, d3 = (p3 - 2 * p2 + p1) - d2;
    const double v = ca * static_cast<double>(d1) + static_cast<double>(d2) * cb +
                     static_cast<double>(d3) * cc + static_cast<double>(p0);
    return static_cast<float>(v);
}

template <typename T, typename S>
T modelCubic(const S &src, const Ask &a, int c, int r, int ch) {
    double y = a.yFrac;
    for (int k = 0; k < r; ++k) y += a.yScale;
    int64_t j;
    double t;
    cubicNode(y, a.yOffset, a.height, &j, &t);
    const double ca = 1 + t, cb = t * (1 + t) * 0.5, cc = (t - 1) * cb * 0.3333333333333333;
    const double q0 = modelCubicRow<T>(src, a, j - 1, c, ch), q1 = modelCubicRow<T>(src, a, j, c, ch),
                 q2 = modelCubicRow<T>(src, a, j + 1, c, ch), q3 = modelCubicRow<T>(src, a, j + 2, c, ch);
    const double d1 = q1 - q0, d2 = (q2 - q1) - d1, d3 = ((q3 - q2 - q2) + q1) - d2;
    const double v = d3 * cc + ((ca * d1 + q0) + d2 * cb);
    const int64_t maxValue = sizeof(T) == 1 ? 255 : 65535;
    return static_cast<T>(std::clamp<int64_t>(roundEven(v + 0.00001 - 0.5), 0, maxValue));
}

template <typename T>
std::vector<T> randomElements(size_t n, uint32_t seed) {
    std::mt19937 rng(seed);
    std::vector<T> v(n);
    for (auto &e : v) e = static_cast<T>(rng());
    return v;
}

}  // namespace zoomtest

#endif
