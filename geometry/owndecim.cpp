// Decimate kernels.
//
// Every kernel samples the source at positions with 8 fractional bits, one
// element at a time, for both data orders at once: the order is carried by
// the strides alone. Each axis is sampled in one of three modes: nearest
// (the pixel under the position), linear or cubic (the position minus 1,
// so that only position 0 is an exact copy and a position on a pixel
// boundary takes 1/256 of the pixel before). The loops are templates on
// the element type, the mode of each axis and whether indices are tested:
// a call whose whole footprint lies inside its buffers runs the untested
// form, any other call the tested form, which reads 0 outside the source
// and leaves out writes outside the destination.
#include "geometry/owndecim.h"

#include <algorithm>
#include <cstdint>
#include <vector>

namespace {

enum Mode { kNear = 0, kLin = 1, kCub = 2 };

using i64 = long long;

template <typename T, bool Checked>
struct Mem {
    const T *s;
    T *d;
    std::ptrdiff_t sn, dn;
    int32_t read(i64 i) const {
        if (Checked && (i < 0 || i >= sn)) return 0;
        return static_cast<int32_t>(s[i]);
    }
    void write(i64 i, int32_t v) const {
        if (Checked && (i < 0 || i >= dn)) return;
        d[i] = static_cast<T>(v);
    }
};

template <typename T>
constexpr int32_t maxOf() {
    return sizeof(T) == 1 ? 255 : 65535;
}

// Arithmetic shift of a 32-bit word (two's complement, as the kernels use).
inline int32_t sar(int32_t v, int n) { return v >> n; }

// The polynomial S of a cubic step along one axis, times 6, in 32-bit
// wrapping arithmetic: nodes p0..p3 at -1, 0, 1, 2, fraction f with
// f2 = f*f >> 8 and f3 = f*f*f >> 16.
inline int32_t cubicS(int32_t p0, int32_t p1, int32_t p2, int32_t p3, int32_t f, int32_t f2,
                      int32_t f3) {
    const uint32_t a = 3u * uint32_t(p1) - uint32_t(p0) - 3u * uint32_t(p2) + uint32_t(p3);
    const uint32_t b = 3u * uint32_t(p0) - 6u * uint32_t(p1) + 3u * uint32_t(p2);
    const uint32_t c = 0u - 2u * uint32_t(p0) - 3u * uint32_t(p1) + 6u * uint32_t(p2) - uint32_t(p3);
    const uint32_t sum = c * uint32_t(f) + uint32_t(f3) * a + uint32_t(f2) * b;
    return int32_t(uint32_t(sar(int32_t(sum), 8)) + 6u * uint32_t(p1));
}

inline int32_t clampTo(int32_t v, int32_t hi) { return v < 0 ? 0 : (v > hi ? hi : v); }

inline int32_t lerp(int32_t a, int32_t b, int32_t f) {
    return ((((256 - f) * a + f * b) >> 7) + 1) >> 1;
}

// The first position at or past `end` in start, start+step, ...; start
// itself when it is already there.
inline int stopOf(int start, int end, int step) {
    if (start >= end) return start;
    const i64 n = (i64(end) - start + step - 1) / step;
    return int(start + n * step);
}

// One interpolating line: positions from `start` below `end` by `step`
// along a source stride, written along a destination stride. Returns the
// stop position (the last k plus 1).
template <typename T, bool Checked, int M>
int interpLine(const Mem<T, Checked> &m, i64 sBase, i64 sStride, i64 dBase, i64 dStride,
               int start, int end, int step) {
    i64 di = dBase;
    i64 k;
    if (start == 0) {
        m.write(di, m.read(sBase));
        k = i64(step) - 1;
        di += dStride;
    } else {
        k = i64(start) - 1;
    }
    const i64 last = i64(end) - 1;
    for (; k < last; k += step, di += dStride) {
        const int32_t f = int32_t(k & 255);
        const i64 idx = sBase + (k >> 8) * sStride;
        if (M == kLin) {
            m.write(di, lerp(m.read(idx), m.read(idx + sStride), f));
        } else {
            const int32_t f2 = (f * f) >> 8, f3 = (f * f * f) >> 16;
            const int32_t s = cubicS(m.read(idx - sStride), m.read(idx), m.read(idx + sStride),
                                     m.read(idx + 2 * sStride), f, f2, f3);
            m.write(di, clampTo(s / 6, maxOf<T>()));
        }
    }
    return int(k + 1);
}

struct Args {
    int channelStart, dstChannelStart, channelEnd, srcPlane, srcRow, srcPixel, dstPlane, dstRow,
        dstPixel, yStep, xStep, yEnd, xEnd;
    int *y, *x;
};

// True when the two buffers share no byte.
template <typename T, bool Checked>
bool apart(const Mem<T, Checked> &m) {
    const auto s = reinterpret_cast<std::uintptr_t>(m.s), d = reinterpret_cast<std::uintptr_t>(m.d);
    return s + std::uintptr_t(m.sn) * sizeof(T) <= d || d + std::uintptr_t(m.dn) * sizeof(T) <= s;
}

template <typename T, bool Checked>
void nearest(const Mem<T, Checked> &m, i64 d0, const Args &a) {
    const int y0 = *a.y, x0 = *a.x;
    if (!Checked && a.srcPixel != 1 && apart(m)) {
        // Pixel order into another buffer: the order of the loops can't
        // show, so whole pixels go at once, from a table of the columns'
        // source offsets.
        const i64 cols = x0 < a.xEnd ? (i64(a.xEnd) - 1 - x0) / a.xStep + 1 : 0;
        std::vector<i64> from(size_t(std::max<i64>(cols, 0)));
        for (i64 j = 0; j < cols; ++j) from[size_t(j)] = ((x0 + j * a.xStep) >> 8) * a.srcPixel;
        i64 drow = d0 + a.dstChannelStart;
        for (i64 y = y0; y < a.yEnd; y += a.yStep, drow += a.dstRow) {
            const T *srow = m.s + (y >> 8) * a.srcRow;
            T *d = m.d + drow;
            for (i64 j = 0; j < cols; ++j, d += a.dstPixel) {
                const T *sp = srow + from[size_t(j)];
                i64 dc = 0;
                for (i64 c = a.channelStart; c < a.channelEnd; c += a.srcPlane, dc += a.dstPlane)
                    d[dc] = sp[c];
            }
        }
    } else if (a.srcPixel != 1) {
        i64 drow = d0;
        for (i64 y = y0; y < a.yEnd; y += a.yStep, drow += a.dstRow) {
            const i64 srow = (y >> 8) * a.srcRow;
            i64 dc = a.dstChannelStart;
            for (i64 c = a.channelStart; c < a.channelEnd; c += a.srcPlane, dc += a.dstPlane) {
                i64 di = drow + dc;
                for (i64 x = x0; x < a.xEnd; x += a.xStep, di += a.dstPixel)
                    m.write(di, m.read(srow + (x >> 8) * a.srcPixel + c));
            }
        }
    } else {
        i64 dc = a.dstChannelStart;
        for (i64 c = a.channelStart; c < a.channelEnd; c += a.srcPlane, dc += a.dstPlane) {
            i64 drow = d0 + dc;
            for (i64 y = y0; y < a.yEnd; y += a.yStep, drow += a.dstRow) {
                const i64 srow = (y >> 8) * a.srcRow + c;
                i64 di = drow;
                for (i64 x = x0; x < a.xEnd; x += a.xStep, di += a.dstPixel)
                    m.write(di, m.read(srow + (x >> 8)));
            }
        }
    }
    *a.y = stopOf(y0, a.yEnd, a.yStep);
    *a.x = stopOf(x0, a.xEnd, a.xStep);
}

// The one-axis kernels: YAxis true interpolates along y (the nearest axis
// x is the outer loop), false along x.
template <typename T, bool Checked, int M, bool YAxis>
void oneAxis(const Mem<T, Checked> &m, i64 d0, const Args &a) {
    const int outerStart = YAxis ? *a.x : *a.y, outerEnd = YAxis ? a.xEnd : a.yEnd;
    const int outerStep = YAxis ? a.xStep : a.yStep;
    const i64 outerSrc = YAxis ? a.srcPixel : a.srcRow, outerDst = YAxis ? a.dstPixel : a.dstRow;
    const i64 innerSrc = YAxis ? a.srcRow : a.srcPixel, innerDst = YAxis ? a.dstRow : a.dstPixel;
    const int innerStart = YAxis ? *a.y : *a.x, innerEnd = YAxis ? a.yEnd : a.xEnd;
    const int innerStep = YAxis ? a.yStep : a.xStep;
    int innerStop = innerStart;
    i64 dc = a.dstChannelStart;
    for (i64 c = a.channelStart; c < a.channelEnd; c += a.srcPlane, dc += a.dstPlane) {
        i64 dOuter = d0 + dc;
        for (i64 p = outerStart; p < outerEnd; p += outerStep, dOuter += outerDst)
            innerStop = interpLine<T, Checked, M>(m, c + (p >> 8) * outerSrc, innerSrc, dOuter,
                                                  innerDst, innerStart, innerEnd, innerStep);
    }
    const int outerStop = stopOf(outerStart, outerEnd, outerStep);
    *(YAxis ? a.x : a.y) = outerStop;
    *(YAxis ? a.y : a.x) = innerStop;
}

template <typename T, bool Checked, int M>
void twoAxis(const Mem<T, Checked> &m, i64 d0, const Args &a) {
    if (*a.y == 0) {
        Args first = a;
        int py = 0, px = *a.x;
        first.y = &py;
        first.x = &px;
        first.yEnd = 1;
        oneAxis<T, Checked, M, false>(m, d0, first);
        *a.y += a.yStep;
        d0 += a.dstRow;
    }
    if (*a.x == 0) {
        Args first = a;
        int py = *a.y, px = 0;
        first.y = &py;
        first.x = &px;
        first.xEnd = 1;
        oneAxis<T, Checked, M, true>(m, d0, first);
        *a.x += a.xStep;
        d0 += a.dstPixel;
    }
    const i64 yLast = i64(a.yEnd) - 1, xLast = i64(a.xEnd) - 1;
    const i64 ky0 = i64(*a.y) - 1, kx0 = i64(*a.x) - 1;
    const i64 sr = a.srcRow, sp = a.srcPixel;
    i64 dc = a.dstChannelStart;
    for (i64 c = a.channelStart; c < a.channelEnd; c += a.srcPlane, dc += a.dstPlane) {
        i64 drow = d0 + dc;
        for (i64 ky = ky0; ky < yLast; ky += a.yStep, drow += a.dstRow) {
            const int32_t fy = int32_t(ky & 255);
            const i64 row = c + (ky >> 8) * sr;
            if (M == kLin) {
                i64 di = drow;
                for (i64 kx = kx0; kx < xLast; kx += a.xStep, di += a.dstPixel) {
                    const int32_t fx = int32_t(kx & 255);
                    const i64 idx = row + (kx >> 8) * sp;
                    const uint32_t top =
                        uint32_t((256 - fx) * m.read(idx) + fx * m.read(idx + sp));
                    const uint32_t bottom =
                        uint32_t((256 - fx) * m.read(idx + sr) + fx * m.read(idx + sr + sp));
                    // At depth 16 the sum may pass 31 bits: it wraps, and the
                    // low 16 bits of the result stay right.
                    const int32_t s = int32_t(top * uint32_t(256 - fy) + bottom * uint32_t(fy));
                    m.write(di, sar(sar(s, 15) + 1, 1));
                }
            } else {
                const int32_t f2y = (fy * fy) >> 8, f3y = (fy * fy * fy) >> 16;
                i64 di = drow;
                for (i64 kx = kx0; kx < xLast; kx += a.xStep, di += a.dstPixel) {
                    const int32_t fx = int32_t(kx & 255);
                    const int32_t f2x = (fx * fx) >> 8, f3x = (fx * fx * fx) >> 16;
                    int32_t s[4];
                    for (int r = 0; r < 4; ++r) {
                        const i64 idx = row + (r - 1) * sr + (kx >> 8) * sp;
                        s[r] = cubicS(m.read(idx - sp), m.read(idx), m.read(idx + sp),
                                      m.read(idx + 2 * sp), fx, f2x, f3x);
                    }
                    m.write(di, clampTo(cubicS(s[0], s[1], s[2], s[3], fy, f2y, f3y) / 36,
                                        maxOf<T>()));
                }
            }
        }
    }
    // Stop values of ky and kx, plus 1.
    auto stopK = [](i64 k0, i64 last, int step) {
        if (k0 >= last) return int(k0 + 1);
        const i64 n = (last - k0 + step - 1) / step;
        return int(k0 + n * step + 1);
    };
    *a.y = stopK(ky0, yLast, a.yStep);
    *a.x = stopK(kx0, xLast, a.xStep);
}

// Rows (or columns) of the source a mode reads along one axis, as a range
// that holds them all; empty when hi < lo.
struct Span {
    i64 lo, hi;
};

Span srcSpan(int mode, int start, int end, int step) {
    if (mode == kNear) return {i64(start) >> 8, (i64(end) - 1) >> 8};
    // Position 0 is a copy of pixel 0; then k runs from k0 by step while
    // below end - 1, and pixel (k >> 8) + 1 is read beside (k >> 8).
    // Cubic reads one pixel more on each side.
    const i64 k0 = start == 0 ? i64(step) - 1 : i64(start) - 1;
    const i64 last = i64(end) - 1, reach = mode == kCub ? 1 : 0;
    Span span{0, 0};
    bool any = start == 0;
    if (k0 < last) {
        const i64 kMax = k0 + (last - 1 - k0) / step * step;
        const Span run{(k0 >> 8) - reach, (kMax >> 8) + 1 + reach};
        span = any ? Span{std::min<i64>(0, run.lo), std::max<i64>(0, run.hi)} : run;
        any = true;
    }
    // Nothing read at all: an empty span.
    return any ? span : Span{0, -1};
}

// Destination rows (or columns) written along one axis.
i64 dstCount(int mode, int start, int end, int step) {
    const i64 s = start, e = end;
    if (mode == kNear) return s < e ? (e - 1 - s) / step + 1 : 0;
    if (start == 0) return std::max<i64>(1, (e + step - 1) / step);
    return e > s ? (e - s + step - 1) / step : 0;
}

// Lowest and highest of stride times an index of the span.
Span scaled(Span s, i64 stride) {
    const i64 a = s.lo * stride, b = s.hi * stride;
    return {std::min(a, b), std::max(a, b)};
}

bool inside(int ym, int xm, const Args &a, const OwnDecimateLimits &lim) {
    if (a.channelStart >= a.channelEnd) return true;
    const Span rows = srcSpan(ym, *a.y, a.yEnd, a.yStep), cols = srcSpan(xm, *a.x, a.xEnd, a.xStep);
    // An axis with nothing read: the kernel reads and writes nothing (an
    // interpolating axis that is empty in a one-axis kernel leaves its
    // lines empty too).
    if (rows.hi < rows.lo || cols.hi < cols.lo) return true;
    const Span r = scaled(rows, a.srcRow), c = scaled(cols, a.srcPixel);
    const i64 sLo = a.channelStart + r.lo + c.lo, sHi = i64(a.channelEnd) - 1 + r.hi + c.hi;
    if (sLo < 0 || sHi >= lim.srcCount) return false;
    const i64 nch = (i64(a.channelEnd) - a.channelStart + a.srcPlane - 1) / a.srcPlane;
    const i64 nr = dstCount(ym, *a.y, a.yEnd, a.yStep), nc = dstCount(xm, *a.x, a.xEnd, a.xStep);
    if (nr == 0 || nc == 0) return true;
    const Span dch = scaled({0, nch - 1}, a.dstPlane), dr = scaled({0, nr - 1}, a.dstRow),
               dp = scaled({0, nc - 1}, a.dstPixel);
    const i64 dLo = lim.dstOffset + a.dstChannelStart + dch.lo + dr.lo + dp.lo;
    const i64 dHi = lim.dstOffset + a.dstChannelStart + dch.hi + dr.hi + dp.hi;
    return dLo >= 0 && dHi < lim.dstCount;
}

template <typename T, bool Checked, int YM, int XM>
void body(const void *src, void *dst, const Args &a, const OwnDecimateLimits &lim) {
    const Mem<T, Checked> m{static_cast<const T *>(src), static_cast<T *>(dst), lim.srcCount,
                            lim.dstCount};
    if (YM == kNear && XM == kNear)
        nearest<T, Checked>(m, lim.dstOffset, a);
    else if (XM == kNear)
        oneAxis<T, Checked, YM, true>(m, lim.dstOffset, a);
    else if (YM == kNear)
        oneAxis<T, Checked, XM, false>(m, lim.dstOffset, a);
    else
        twoAxis<T, Checked, YM>(m, lim.dstOffset, a);
}

template <typename T, int YM, int XM>
int run(const void *src, void *dst, const Args &a, const OwnDecimateLimits &lim) {
    // Steps are at least 256 for every ratio the operation lets through; a
    // step that is not positive (or a plane stride that is not, with
    // channels to do) would never end a loop, so such a call does nothing.
    if (a.yStep <= 0 || a.xStep <= 0) return 1;
    if (a.channelStart < a.channelEnd && a.srcPlane <= 0) return 1;
    if (inside(YM, XM, a, lim))
        body<T, false, YM, XM>(src, dst, a, lim);
    else
        body<T, true, YM, XM>(src, dst, a, lim);
    return 1;
}

}  // namespace

#define RMG_DECIMATE_ARGS                                                                     \
    Args a{channelStart, dstChannelStart, channelEnd, srcPlane, srcRow, srcPixel, dstPlane,   \
           dstRow,       dstPixel,        yStep,      xStep,    yEnd,   xEnd,     y,        x}

#define RMG_DECIMATE_DEFINE(name, T, YM, XM) \
    RMG_DECIMATE_KERNEL(name) {              \
        RMG_DECIMATE_ARGS;                   \
        return run<T, YM, XM>(src, dst, a, limits); \
    }

RMG_DECIMATE_DEFINE(ownDecimateNearest8, uint8_t, kNear, kNear)
RMG_DECIMATE_DEFINE(ownDecimateNearest16, uint16_t, kNear, kNear)
RMG_DECIMATE_DEFINE(ownDecimateLinearX8, uint8_t, kNear, kLin)
RMG_DECIMATE_DEFINE(ownDecimateLinearX16, uint16_t, kNear, kLin)
RMG_DECIMATE_DEFINE(ownDecimateLinearY8, uint8_t, kLin, kNear)
RMG_DECIMATE_DEFINE(ownDecimateLinearY16, uint16_t, kLin, kNear)
RMG_DECIMATE_DEFINE(ownDecimateLinear8, uint8_t, kLin, kLin)
RMG_DECIMATE_DEFINE(ownDecimateLinear16, uint16_t, kLin, kLin)
RMG_DECIMATE_DEFINE(ownDecimateCubicX8, uint8_t, kNear, kCub)
RMG_DECIMATE_DEFINE(ownDecimateCubicX16, uint16_t, kNear, kCub)
RMG_DECIMATE_DEFINE(ownDecimateCubicY8, uint8_t, kCub, kNear)
RMG_DECIMATE_DEFINE(ownDecimateCubicY16, uint16_t, kCub, kNear)
RMG_DECIMATE_DEFINE(ownDecimateCubic8, uint8_t, kCub, kCub)
RMG_DECIMATE_DEFINE(ownDecimateCubic16, uint16_t, kCub, kCub)

// One plane of bits, most significant bit first. Rows are strides in bits
// (a whole number of bytes); the destination bit position starts at
// dstChannelStart and rises by 1 a column. The source's channel offsets
// play no part. Every byte index is tested against the buffers.
RMG_DECIMATE_KERNEL(ownDecimateNearest1) {
    (void)channelStart;
    (void)channelEnd;
    (void)srcPlane;
    (void)srcPixel;
    (void)dstPlane;
    (void)dstPixel;
    const int y0 = *y, x0 = *x;
    if (yStep > 0 && xStep > 0) {
        const auto *s = static_cast<const uint8_t *>(src);
        auto *d = static_cast<uint8_t *>(dst);
        const i64 srcRowBytes = srcRow / 8, dstRowBytes = dstRow / 8;
        i64 drow = limits.dstOffset;
        for (i64 py = y0; py < yEnd; py += yStep, drow += dstRowBytes) {
            const i64 srow = (py >> 8) * srcRowBytes;
            i64 bit = dstChannelStart;
            for (i64 px = x0; px < xEnd; px += xStep, ++bit) {
                const i64 col = px >> 8;
                const i64 si = srow + (col >> 3);
                const int v = (si >= 0 && si < limits.srcCount) ? (s[si] >> (7 - (col & 7))) & 1 : 0;
                const i64 di = drow + (bit >> 3);
                if (di < 0 || di >= limits.dstCount) continue;
                const int shift = 7 - int(bit & 7);
                d[di] = uint8_t((d[di] & ~(1 << shift)) | (v << shift));
            }
        }
    }
    *y = stopOf(y0, yEnd, yStep > 0 ? yStep : 1);
    *x = stopOf(x0, xEnd, xStep > 0 ? xStep : 1);
    return 1;
}
