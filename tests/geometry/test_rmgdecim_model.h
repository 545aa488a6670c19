// Test support for decimation: a per-element model of rmgDecimate on plain
// images, written from the rules again (positions, kernel choice, the
// copies at position 0 and the fixed-point formulas), and a tiled image
// cut from a plain grid that can refuse tiles beyond the grid.
#ifndef RMG_TESTS_GEOMETRY_TEST_RMGDECIM_MODEL_H
#define RMG_TESTS_GEOMETRY_TEST_RMGDECIM_MODEL_H

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <map>
#include <utility>
#include <vector>

#include "geometry/mirrortest.h"
#include "rmg.h"

namespace decimtest {

using Bytes = std::vector<unsigned char>;
using mirrortest::Kind;

// 32-bit wrap of a 64-bit value, as the library's arithmetic words.
inline int32_t w32(int64_t v) { return int32_t(uint32_t(uint64_t(v))); }

// The cubic polynomial times 6 through nodes -1, 0, 1, 2 at fraction f.
inline int32_t poly(int32_t p0, int32_t p1, int32_t p2, int32_t p3, int32_t f) {
    const int64_t a = 3LL * p1 - p0 - 3LL * p2 + p3;
    const int64_t b = 3LL * p0 - 6LL * p1 + 3LL * p2;
    const int64_t c = -2LL * p0 - 3LL * p1 + 6LL * p2 - p3;
    const int64_t f2 = (f * f) >> 8, f3 = (int64_t(f) * f * f) >> 16;
    const int32_t t = w32(c * f + f3 * a + f2 * b);
    return w32(int64_t(t >> 8) + 6LL * p1);
}
inline int32_t cut(int32_t v, int32_t hi) { return std::max(0, std::min(v, hi)); }
inline int32_t lin1(int32_t a, int32_t b, int32_t f) {
    return ((((256 - f) * a + f * b) >> 7) + 1) >> 1;
}

// One destination index along an axis: the source index, the fraction, and
// whether it is a plain sample (nearest, or the copy at position 0).
struct Tap {
    int64_t i;
    int32_t f;
    bool plain;
};

// mode 0 nearest, 1 linear, 2 cubic.
inline std::vector<Tap> taps(int mode, int start, int end, int step) {
    std::vector<Tap> t;
    if (mode == 0) {
        for (int64_t p = start; p < end; p += step) t.push_back({p >> 8, 0, true});
        return t;
    }
    int64_t k = start - 1LL;
    if (start == 0) {
        t.push_back({0, 0, true});
        k = step - 1LL;
    }
    for (; k < end - 1LL; k += step) t.push_back({k >> 8, int32_t(k & 255), false});
    return t;
}

inline int regionCount(int size, const RmgROI *roi, bool rowsAxis) {
    if (roi == nullptr) return size;
    const int off = rowsAxis ? roi->yOffset : roi->xOffset, n = rowsAxis ? roi->height : roi->width;
    return off + n >= size ? size - off : n;
}

// Where the source's elements are read from when that is not the image's
// own buffer (a gathered block): its bytes and row and plane strides in
// elements.
struct SrcData {
    const Bytes *bytes;
    int64_t row, plane;
};

// The bytes of dst's buffer after rmgDecimate(src, dst, ...) on plain
// images whose buffers held srcBytes and dstBytes: reads outside the source
// buffer give 0, writes outside the destination buffer are left out. With
// `data` the elements come from that block instead (positions and sizes
// still from src), and `guard` false leaves out the cubic end guard of a
// plain source.
inline Bytes modelDecimate(const RmgImage *src, const Bytes &srcBytes, const RmgImage *dst,
                           const Bytes &dstBytes, int xU, int xL, int yU, int yL, int interp,
                           const SrcData *data = nullptr, bool guard = true) {
    Bytes out = dstBytes;
    const unsigned depth = src->depth;
    const int eb = depth == RMG_DEPTH_16U ? 2 : 1;
    const Bytes &sb = data ? *data->bytes : srcBytes;
    const int64_t srcN = int64_t(sb.size()) / eb, dstN = int64_t(out.size()) / eb;
    auto rd = [&](int64_t i) -> int32_t {
        if (i < 0 || i >= srcN) return 0;
        return eb == 2 ? int32_t(sb[2 * i] | (sb[2 * i + 1] << 8)) : sb[i];
    };
    auto wr = [&](int64_t i, int32_t v) {
        if (i < 0 || i >= dstN) return;
        if (eb == 2) {
            out[2 * i] = uint8_t(v);
            out[2 * i + 1] = uint8_t(v >> 8);
        } else {
            out[i] = uint8_t(v);
        }
    };
    const int xStep = (xL * 256) / xU, yStep = (yL * 256) / yU;
    const bool xWhole = xL % xU == 0, yWhole = yL % yU == 0;
    if (src->width < 4 || src->height < 4 || (xWhole && yWhole)) interp = RMG_INTER_NN;
    const RmgROI *sr = src->roi, *dr = dst->roi;
    auto channels = [](const RmgImage *im) {
        if (im->roi && im->roi->coi) return im->roi->coi <= im->nChannels ? 1 : -1;
        return im->nChannels;
    };
    const int nch = std::min(channels(src), channels(dst));
    const int sch = sr && sr->coi ? sr->coi - 1 : 0, dch = dr && dr->coi ? dr->coi - 1 : 0;
    const int sx = sr ? sr->xOffset : 0, sy = sr ? sr->yOffset : 0;
    const int dx = dr ? dr->xOffset : 0, dy = dr ? dr->yOffset : 0;
    const int cols = std::min(xU * regionCount(src->width, sr, false) / xL,
                              regionCount(dst->width, dr, false));
    const int rows = std::min(yU * regionCount(src->height, sr, true) / yL,
                              regionCount(dst->height, dr, true));
    int y0 = sy * 256, x0 = sx * 256;
    if (interp == RMG_INTER_NN) {
        if (!yWhole) y0 += 128;
        if (!xWhole) x0 += 128;
    }
    int yEnd = y0 + yStep * rows, xEnd = x0 + xStep * cols;
    if (guard && interp == RMG_INTER_CUBIC) {
        if (!yWhole && yEnd + 1 > (src->height - 1) * 256) yEnd -= yStep;
        if (!xWhole && xEnd + 1 > (src->width - 1) * 256) xEnd -= yStep;  // the row step
    }
    const bool plane = src->dataOrder == RMG_DATA_PLANE;
    auto rowElems = [&](const RmgImage *im) -> int64_t {
        return depth == RMG_DEPTH_1U ? im->widthStep * 8LL : im->widthStep / eb;
    };
    const int64_t sRow = data ? data->row : rowElems(src), dRow = rowElems(dst);
    const int64_t sPlane = data ? data->plane : plane ? sRow * src->height : 1, dPlane = plane ? dRow * dst->height : 1;
    const int64_t sPix = plane ? 1 : src->nChannels, dPix = plane ? 1 : dst->nChannels;

    if (depth == RMG_DEPTH_1U) {
        const int64_t bit0 = int64_t(dx % 8) * dPlane;
        const int64_t base = ((dy * dRow) >> 3) + ((dx * dPix) >> 3);
        int64_t r = 0;
        for (int64_t py = y0; py < yEnd; py += yStep, ++r) {
            int64_t c = 0;
            for (int64_t px = x0; px < xEnd; px += xStep, ++c) {
                const int64_t col = px >> 8, si = (py >> 8) * src->widthStep + (col >> 3);
                const int v = si >= 0 && si < srcN ? (sb[si] >> (7 - (col & 7))) & 1 : 0;
                const int64_t bit = bit0 + c, di = base + r * dst->widthStep + (bit >> 3);
                if (di < 0 || di >= dstN) continue;
                const int sh = 7 - int(bit & 7);
                out[di] = uint8_t((out[di] & ~(1 << sh)) | (v << sh));
            }
        }
        return out;
    }
    int ym = 0, xm = 0;
    if (interp != RMG_INTER_NN) {
        if (yWhole) xm = interp;
        else if (xWhole) ym = interp;
        else ym = xm = interp;
    }
    const std::vector<Tap> ty = taps(ym, y0, yEnd, yStep), tx = taps(xm, x0, xEnd, xStep);
    const int32_t hi = eb == 2 ? 65535 : 255;
    const int64_t dOff = dy * dRow + dx * dPix;
    for (int j = 0; j < nch; ++j) {
        const int64_t sc = (sch + j) * sPlane, dc = (dch + j) * dPlane;
        auto S = [&](int64_t r, int64_t c) { return rd(sc + r * sRow + c * sPix); };
        auto alongX = [&](int64_t r, const Tap &t) -> int32_t {
            if (xm == 1) return lin1(S(r, t.i), S(r, t.i + 1), t.f);
            return poly(S(r, t.i - 1), S(r, t.i), S(r, t.i + 1), S(r, t.i + 2), t.f);
        };
        auto alongY = [&](const Tap &t, int64_t c) -> int32_t {
            if (ym == 1) return lin1(S(t.i, c), S(t.i + 1, c), t.f);
            return poly(S(t.i - 1, c), S(t.i, c), S(t.i + 1, c), S(t.i + 2, c), t.f);
        };
        for (size_t r = 0; r < ty.size(); ++r)
            for (size_t c = 0; c < tx.size(); ++c) {
                const Tap &a = ty[r], &b = tx[c];
                int32_t v;
                if (a.plain && b.plain) {
                    v = S(a.i, b.i);
                } else if (a.plain) {
                    v = xm == 1 ? alongX(a.i, b) : cut(alongX(a.i, b) / 6, hi);
                } else if (b.plain) {
                    v = ym == 1 ? alongY(a, b.i) : cut(alongY(a, b.i) / 6, hi);
                } else if (xm == 1) {
                    const int64_t top = (256 - b.f) * S(a.i, b.i) + b.f * S(a.i, b.i + 1);
                    const int64_t bot = (256 - b.f) * S(a.i + 1, b.i) + b.f * S(a.i + 1, b.i + 1);
                    const int32_t s = w32(top * (256 - a.f) + bot * a.f);
                    v = ((s >> 15) + 1) >> 1;
                } else {
                    int32_t q[4];
                    for (int k = 0; k < 4; ++k) q[k] = alongX(a.i - 1 + k, b);
                    v = cut(poly(q[0], q[1], q[2], q[3], a.f) / 36, hi);
                }
                wr(dOff + dc + int64_t(r) * dRow + int64_t(c) * dPix, v);
            }
    }
    return out;
}

// A tiled image whose tiles are cut from `grid` (a plain image of whole
// tiles) and written back at release; tiles outside the grid are refused
// (null) when `refuseOutside`, and served as 0x00 blocks otherwise. Every
// call is logged.
class Tiled {
  public:
    Tiled(const Kind &kind, int height, int width, int tw, int th, uint32_t seed, int gridCols = 0,
          int gridRows = 0)
        : kind_(kind) {
        gridCols_ = gridCols ? gridCols : (width + tw - 1) / tw;
        gridRows_ = gridRows ? gridRows : (height + th - 1) / th;
        grid = mirrortest::makeImage(kind, gridRows_ * th, gridCols_ * tw, seed);
        rmgSetTileInfo(&tiles, callBack, this, tw, th);
        image = rmgCreateImageHeader(kind.nChannels, 0, kind.depth, "RGB", "BGR", kind.dataOrder,
                                     RMG_ORIGIN_TL, kind.align, height, width, nullptr, nullptr,
                                     &tiles);
    }
    ~Tiled() {
        rmgDeallocate(image, RMG_DEALLOC_HEADER | RMG_DEALLOC_ROI);
        mirrortest::freeImage(grid);
    }
    Tiled(const Tiled &) = delete;
    Tiled &operator=(const Tiled &) = delete;

    RmgImage *image;
    RmgImage *grid;
    RmgTileInfo tiles;
    std::vector<mirrortest::Call> calls;
    bool refuseOutside = true;
    int failAtWrite = -1;  // 0-based number of the write request that gets null
    int writes = 0;

  private:
    Kind kind_;
    int gridCols_, gridRows_;
    std::map<std::pair<int, int>, std::pair<int, Bytes>> given_;

    int planes() const { return kind_.dataOrder == RMG_DATA_PLANE ? kind_.nChannels : 1; }
    int rowBytes() const {
        if (kind_.depth == RMG_DEPTH_1U) return tiles.width / 8;
        const int eb = kind_.depth == RMG_DEPTH_16U ? 2 : 1;
        return tiles.width * eb * (kind_.dataOrder == RMG_DATA_PLANE ? 1 : kind_.nChannels);
    }
    void move(int xi, int yi, unsigned char *tile, bool toTile) {
        const int step = rmgTileWidthStep(image);
        for (int p = 0; p < planes(); ++p)
            for (int r = 0; r < tiles.height; ++r) {
                unsigned char *g = grid->imageData + int64_t(p) * grid->height * grid->widthStep +
                                   int64_t(yi * tiles.height + r) * grid->widthStep +
                                   int64_t(xi) * rowBytes();
                unsigned char *t = tile + int64_t(p) * step * tiles.height + int64_t(r) * step;
                if (toTile) std::memcpy(t, g, size_t(rowBytes()));
                else std::memcpy(g, t, size_t(rowBytes()));
            }
    }
    static void callBack(const RmgImage *image, int xi, int yi, int mode) {
        auto *self = static_cast<Tiled *>(image->tileInfo->id);
        self->calls.push_back({xi, yi, mode});
        const auto key = std::make_pair(xi, yi);
        const bool inGrid = xi >= 0 && yi >= 0 && xi < self->gridCols_ && yi < self->gridRows_;
        if (mode == RMG_TILE_RELEASE) {
            auto it = self->given_.find(key);
            if (it == self->given_.end()) return;
            if (it->second.first == RMG_TILE_WRITE && inGrid)
                self->move(xi, yi, it->second.second.data(), false);
            self->given_.erase(it);
            return;
        }
        if (mode == RMG_TILE_WRITE && self->writes++ == self->failAtWrite) {
            self->tiles.tileData = nullptr;
            return;
        }
        if (!inGrid && self->refuseOutside) {
            self->tiles.tileData = nullptr;
            return;
        }
        const size_t bytes = size_t(rmgTileWidthStep(image)) * self->tiles.height * self->planes();
        auto &entry = self->given_[key];
        entry.first = mode;
        entry.second.assign(bytes, 0);
        if (inGrid) self->move(xi, yi, entry.second.data(), true);
        self->tiles.tileData = entry.second.data();
    }
};

}  // namespace decimtest

#endif
