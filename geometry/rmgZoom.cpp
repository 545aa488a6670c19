// Zoom: rmgZoom with its checks, the rectangles of ownZoomRect and the
// three walks over tiled images.
//
// Every route ends in ownZoomRect on plain images: a tiled destination is
// written tile by tile through a temporary header of one tile, a tiled
// source is read piece by piece through ownGetExtendedRect with the margin
// the interpolation needs. Each piece starts at its own source position,
// found in fixed point without the bias of the nearest neighbour step, so a
// tiled zoom may differ from a plain one by a pixel at tile seams.
#include "geometry/rmgZoom.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "access/owntile.h"
#include "core/rmgint.h"
#include "core/rmgvalid.h"
#include "geometry/ownZoom.h"
#include "ops/rmgSCE_copy.h"
#include "rmg.h"

using rmg::add32;
using rmg::mul32;
using rmg::sub32;

namespace {

constexpr char kModule[] = "rmgZoom";
constexpr char kFunc[] = "rmgZoom";

// ---------------------------------------------------------------------------
// ownZoomRect
// ---------------------------------------------------------------------------

// Step 2 of the rectangles: the count of destination columns (rows) cut to
// what srcCount source columns can feed at `scale`.
int feedable(int count, int srcCount, double scale) {
    if (rmg::zoomRound((count - 1) * scale + 0.00001 - 0.5) > srcCount - 1) {
        const double t = srcCount / scale;
        count = rmg::zoomRound(t + 0.00001 - 0.5);
        if (static_cast<double>(count) == t) count = count - 1;
    }
    return count;
}

// The rectangle, channels and addresses of one image for ownZoomRect.
struct Side {
    int x, y, cols, rows;  // origin and size (cut to the image)
    int firstChannel, count;
    int64_t offset;        // bytes from imageData to the first element (1-bit: row start)
    int64_t rowBytes, planeBytes;
};

Side sideOf(const RmgImage *image, int elementBytes, int countWithoutRoi) {
    Side s{};
    const RmgROI *roi = image->roi;
    if (roi == nullptr) {
        s.cols = image->width;
        s.rows = image->height;
        s.count = countWithoutRoi;
    } else {
        s.x = roi->xOffset;
        s.y = roi->yOffset;
        s.cols = std::min(roi->width, sub32(image->width, s.x));
        s.rows = std::min(roi->height, sub32(image->height, s.y));
        s.firstChannel = roi->coi > 0 ? roi->coi - 1 : 0;
        s.count = roi->coi > 0 ? 1 : image->nChannels;
    }
    s.rowBytes = image->widthStep;
    if (elementBytes == 2) s.rowBytes = static_cast<int64_t>(image->widthStep >> 1) * 2;
    s.planeBytes = s.rowBytes * image->height;
    s.offset = static_cast<int64_t>(s.y) * s.rowBytes;
    if (elementBytes == 0) return s;
    if (image->dataOrder == RMG_DATA_PLANE)
        s.offset += s.firstChannel * s.planeBytes + static_cast<int64_t>(s.x) * elementBytes;
    else
        s.offset += (static_cast<int64_t>(s.x) * image->nChannels + s.firstChannel) * elementBytes;
    return s;
}

// A span of source columns or rows, in the region's coordinates.
struct Span {
    int64_t lo = INT64_MAX, hi = INT64_MIN;
    void add(int64_t v) {
        lo = std::min(lo, v);
        hi = std::max(hi, v);
    }
};

// The source columns and rows a kernel reads, by the same position rules.
struct Reads {
    Span cols, rows;
};

Reads readsOf(int interpolation, double xScale, double yScale, double xFrac, double yFrac,
              int cols, int rows, int lastCol, int lastRow, int xOffset, int yOffset, int width,
              int height) {
    Reads reads;
    if (interpolation == RMG_INTER_NN) {
        const auto xStep = static_cast<uint32_t>(rmg::zoomNearestFixed(xScale));
        const auto yStep = static_cast<uint32_t>(rmg::zoomNearestFixed(yScale));
        auto x = static_cast<uint32_t>(rmg::zoomNearestFixed(xFrac));
        auto y = static_cast<uint32_t>(rmg::zoomNearestFixed(yFrac));
        for (int c = 0; c < cols; ++c, x += xStep) reads.cols.add(static_cast<int32_t>(x) >> 14);
        for (int r = 0; r < rows; ++r, y += yStep) reads.rows.add(static_cast<int32_t>(y) >> 14);
    } else if (interpolation == RMG_INTER_LINEAR) {
        const auto xStep = static_cast<uint32_t>(rmg::zoomLinearFixed(xScale));
        const auto yStep = static_cast<uint32_t>(rmg::zoomLinearFixed(yScale));
        auto x = static_cast<uint32_t>(rmg::zoomLinearFixed(xFrac));
        auto y = static_cast<uint32_t>(rmg::zoomLinearFixed(yFrac));
        for (int c = 0; c < cols; ++c, x += xStep) {
            const rmg::ZoomLinearColumn col = rmg::zoomLinearColumn(x, lastCol);
            reads.cols.add(col.i);
            reads.cols.add(static_cast<int64_t>(col.i) + 1);
        }
        reads.rows.add(0);
        for (int r = 0; r < rows; ++r, y += yStep) {
            int32_t at = static_cast<int32_t>(y) >> 14;
            if (at == lastRow) at = at - 1;
            reads.rows.add(static_cast<int64_t>(at) + 1);
        }
    } else {
        double x = xFrac;
        for (int c = 0; c < cols; ++c, x += xScale) {
            const int64_t i = rmg::zoomCubicNode(x, xOffset, width).i;
            reads.cols.add(i - 1);
            reads.cols.add(i + 2);
        }
        const int64_t first = rmg::zoomCubicNode(yFrac, yOffset, height).i;
        reads.rows.add(first - 1);
        reads.rows.add(first + 1);
        double y = yFrac;
        for (int r = 0; r < rows; ++r, y += yScale)
            reads.rows.add(static_cast<int64_t>(rmg::zoomCubicNode(y, yOffset, height).i) + 2);
    }
    return reads;
}

// What the kernel is given of the source: the first element's address and
// the strides in bytes, either in the image or in a scratch block.
struct Source {
    const unsigned char *origin;
    int64_t rowBytes, planeBytes;
    unsigned char *scratch;  // to give back, or null
};

// The source as the kernel sees it. When every byte the kernel reads lies
// inside [base, base + size), the image itself; otherwise a scratch copy of
// the bytes read (rows rows, bytes [lo, hi) of each row relative to the
// first element, planes), with 0 for each byte outside the image's buffer.
Source sourceFor(const unsigned char *base, int64_t size, const Side &s, const Span &rows,
                 int64_t lo, int64_t hi, int planes) {
    const int64_t first = s.offset + rows.lo * s.rowBytes + lo;
    const int64_t end = s.offset + (planes - 1) * s.planeBytes + rows.hi * s.rowBytes + hi;
    if (first >= 0 && end <= size) return {base + s.offset, s.rowBytes, s.planeBytes, nullptr};

    // The box includes the first element itself, so that the kernel's
    // pointer lies inside the block.
    const int64_t r0 = std::min<int64_t>(rows.lo, 0), r1 = std::max<int64_t>(rows.hi, 0);
    const int64_t b0 = std::min<int64_t>(lo, 0), b1 = std::max<int64_t>(hi, 2);
    const int64_t rowBytes = (b1 - b0 + 1) & ~int64_t{1};
    const int64_t planeBytes = rowBytes * (r1 - r0 + 1);
    const int64_t total = planeBytes * planes;
    if (total > INT32_MAX - 64) return {nullptr, 0, 0, nullptr};
    auto *scratch = static_cast<unsigned char *>(rmgAlloc8(static_cast<int>(total)));
    if (scratch == nullptr) return {nullptr, 0, 0, nullptr};
    for (int p = 0; p < planes; ++p)
        for (int64_t r = r0; r <= r1; ++r)
            for (int64_t b = b0; b < b0 + rowBytes; ++b) {
                const int64_t at = s.offset + p * s.planeBytes + r * s.rowBytes + b;
                scratch[p * planeBytes + (r - r0) * rowBytes + (b - b0)] =
                    at >= 0 && at < size ? base[at] : 0;
            }
    return {scratch - r0 * rowBytes - b0, rowBytes, planeBytes, scratch};
}

// Bytes [lo, hi) of a row that `count` elements of `cols` columns cover,
// relative to the first element (1-bit: to the row's start, from bit
// position `bit`).
void rowBytesOf(const RmgImage *image, int elementBytes, int64_t c0, int64_t c1, int count,
                int bit, int64_t *lo, int64_t *hi) {
    if (elementBytes == 0) {
        *lo = (bit + c0) >> 3;
        *hi = ((bit + c1) >> 3) + 1;
    } else if (image->dataOrder == RMG_DATA_PLANE) {
        *lo = c0 * elementBytes;
        *hi = (c1 + 1) * elementBytes;
    } else {
        *lo = c0 * image->nChannels * elementBytes;
        *hi = (c1 * image->nChannels + count) * elementBytes;
    }
}

template <typename T>
T *at(const unsigned char *p) {
    return reinterpret_cast<T *>(const_cast<unsigned char *>(p));
}

}  // namespace

void ownZoomRect(const RmgImage *src, const RmgImage *dst, double xScale, double yScale,
                 int interpolation, double xFrac, double yFrac) {
    const int bits = rmg::depthBits(src->depth);
    if (src->depth != RMG_DEPTH_1U && src->depth != RMG_DEPTH_8U && src->depth != RMG_DEPTH_16U)
        return;
    if (bits == 1 && interpolation != RMG_INTER_NN) return;
    const int e = bits >> 3;
    const bool plane = src->dataOrder == RMG_DATA_PLANE;

    // The rectangles. Interpolation stops at the image's last column and
    // row, whatever the region's size.
    const Side s = sideOf(src, e, src->nChannels);
    Side d = sideOf(dst, e, src->nChannels);
    const int lastCol = sub32(sub32(src->width, s.x), 1);
    const int lastRow = sub32(sub32(src->height, s.y), 1);
    int cols = feedable(d.cols, s.cols, xScale);
    int rows = feedable(d.rows, s.rows, yScale);
    if (s.firstChannel == 0 && d.firstChannel == 0) {
        if (s.count != d.count) return;
    } else if (s.count != 1 || d.count != 1) {
        return;
    }
    const int count = s.count;
    if (cols <= 0 || rows <= 0 || count <= 0) return;

    // Destination rows (planes) that would reach past its buffer are left
    // out.
    const int srcBit = s.x, dstBit = d.x;
    int planes = plane && bits != 1 ? count : 1;
    int64_t dLo, dHi;
    rowBytesOf(dst, e, 0, cols - 1, count, dstBit, &dLo, &dHi);
    if (plane && bits != 1) dHi = static_cast<int64_t>(cols) * e;
    if (d.offset + dLo < 0) return;
    while (planes > 0 && d.offset + (planes - 1) * d.planeBytes + dHi > dst->imageSize) --planes;
    if (planes == 0 || d.rowBytes <= 0) return;
    const int64_t fit =
        (dst->imageSize - d.offset - (planes - 1) * d.planeBytes - dHi) / d.rowBytes + 1;
    rows = static_cast<int>(std::min<int64_t>(rows, fit));

    // The source elements read, and where the kernel finds them.
    const int srcX = s.x, srcY = s.y;
    const Reads reads = readsOf(interpolation, xScale, yScale, xFrac, yFrac, cols, rows, lastCol,
                                lastRow, srcX, srcY, src->width, src->height);
    int64_t sLo, sHi;
    rowBytesOf(src, e, reads.cols.lo, reads.cols.hi, plane ? 1 : count, srcBit, &sLo, &sHi);
    const Source from = sourceFor(src->imageData, src->imageSize, s, reads.rows, sLo, sHi, planes);
    if (from.origin == nullptr) return;
    unsigned char *const to = dst->imageData + d.offset;
    const int eb = e == 0 ? 1 : e;
    const auto sStride = static_cast<int>(from.rowBytes / eb);
    const auto dStride = static_cast<int>(d.rowBytes / eb);
    const auto sPlane = static_cast<int>(from.planeBytes / eb);
    const auto dPlane = static_cast<int>(d.planeBytes / eb);
    const int sN = src->nChannels, dN = dst->nChannels;

    if (interpolation == RMG_INTER_NN) {
        if (bits == 1)
            ownZoomNearest1(from.origin, to, xScale, yScale, sStride, dStride, cols, rows, xFrac,
                            yFrac, srcBit, dstBit);
        else if (e == 1 && plane)
            ownZoomNearest8Plane(from.origin, to, xScale, yScale, sStride, dStride, cols, rows,
                                 xFrac, yFrac, planes, sPlane, dPlane);
        else if (e == 1)
            ownZoomNearest8Pixel(from.origin, to, xScale, yScale, sStride, dStride, cols, rows,
                                 xFrac, yFrac, count, sN, dN);
        else if (plane)
            ownZoomNearest16Plane(at<uint16_t>(from.origin), at<uint16_t>(to), xScale, yScale,
                                  sStride, dStride, cols, rows, xFrac, yFrac, planes, sPlane,
                                  dPlane);
        else
            ownZoomNearest16Pixel(at<uint16_t>(from.origin), at<uint16_t>(to), xScale, yScale,
                                  sStride, dStride, cols, rows, xFrac, yFrac, count, sN, dN);
        rmgFree(from.scratch);
        return;
    }

    // Row buffers, each asked for and checked against the status on its
    // own. A buffer that can't be had isn't reported (no status is raised
    // for it); the call then writes nothing rather than use a null block.
    const int perRow = plane ? 1 : count;
    const int n = interpolation == RMG_INTER_LINEAR ? 2 : 4;
    const int64_t bytes = interpolation == RMG_INTER_LINEAR ? (2 * static_cast<int64_t>(cols) + 2) * perRow
                                                          : 4 * static_cast<int64_t>(cols) * perRow;
    void *buf[4] = {nullptr, nullptr, nullptr, nullptr};
    bool ok = bytes <= INT32_MAX - 64;
    for (int k = 0; k < n && ok; ++k) {
        buf[k] = rmgAlloc8(static_cast<int>(bytes));
        if (rmgGetErrStatus() < 0 || buf[k] == nullptr) ok = false;
    }
    if (ok && interpolation == RMG_INTER_LINEAR) {
        auto *a = static_cast<int16_t *>(buf[0]);
        auto *b = static_cast<int16_t *>(buf[1]);
        // The buffers start cleared: with lastRow 0 the upper buffer is
        // blended without ever having been given a row.
        std::memset(a, 0, static_cast<size_t>(bytes));
        std::memset(b, 0, static_cast<size_t>(bytes));
        if (e == 1 && plane)
            ownZoomLinear8Plane(from.origin, to, xScale, yScale, sStride, dStride, cols, rows,
                                xFrac, yFrac, planes, sPlane, dPlane, lastCol, lastRow, a, b);
        else if (e == 1)
            ownZoomLinear8Pixel(from.origin, to, xScale, yScale, sStride, dStride, cols, rows,
                                xFrac, yFrac, count, sN, dN, lastCol, lastRow, a, b);
        else if (plane)
            ownZoomLinear16Plane(at<uint16_t>(from.origin), at<uint16_t>(to), xScale, yScale,
                                 sStride, dStride, cols, rows, xFrac, yFrac, planes, sPlane,
                                 dPlane, lastCol, lastRow, a, b);
        else
            ownZoomLinear16Pixel(at<uint16_t>(from.origin), at<uint16_t>(to), xScale, yScale,
                                 sStride, dStride, cols, rows, xFrac, yFrac, count, sN, dN,
                                 lastCol, lastRow, a, b);
    } else if (ok) {
        // The rings start cleared too: a region that starts on the image's
        // second-last row blends a fourth row that was never resampled.
        float *r[4];
        for (int k = 0; k < 4; ++k) {
            r[k] = static_cast<float *>(buf[k]);
            std::memset(r[k], 0, static_cast<size_t>(bytes));
        }
        if (e == 1 && plane)
            ownZoomCubic8Plane(from.origin, to, xScale, yScale, sStride, dStride, cols, rows,
                               xFrac, yFrac, planes, sPlane, dPlane, srcX, srcY, src->width,
                               src->height, r[0], r[1], r[2], r[3]);
        else if (e == 1)
            ownZoomCubic8Pixel(from.origin, to, xScale, yScale, sStride, dStride, cols, rows,
                               xFrac, yFrac, count, sN, dN, srcX, srcY, src->width, src->height,
                               r[0], r[1], r[2], r[3]);
        else if (plane)
            ownZoomCubic16Plane(at<uint16_t>(from.origin), at<uint16_t>(to), xScale, yScale,
                                sStride, dStride, cols, rows, xFrac, yFrac, planes, sPlane, dPlane,
                                srcX, srcY, src->width, src->height, r[0], r[1], r[2], r[3]);
        else
            ownZoomCubic16Pixel(at<uint16_t>(from.origin), at<uint16_t>(to), xScale, yScale,
                                sStride, dStride, cols, rows, xFrac, yFrac, count, sN, dN, srcX,
                                srcY, src->width, src->height, r[0], r[1], r[2], r[3]);
    }
    for (void *b : buf) rmgFree(b);
    rmgFree(from.scratch);
}

int ownZoomTileGrid(const RmgImage *src, const RmgImage *dst, double xScale, double yScale,
                    RmgZoomGrid *g) {
    const RmgROI *dr = dst->roi;
    const RmgROI *sr = src->roi;
    const int xOffset = dr != nullptr ? dr->xOffset : 0;
    const int yOffset = dr != nullptr ? dr->yOffset : 0;
    g->cols = feedable(dr != nullptr ? dr->width : dst->width, sr != nullptr ? sr->width : src->width,
                       xScale);
    g->rows = feedable(dr != nullptr ? dr->height : dst->height,
                       sr != nullptr ? sr->height : src->height, yScale);
    if (g->cols <= 0 || g->rows <= 0) return 0;
    g->tw = dst->tileInfo->width;
    g->th = dst->tileInfo->height;
    g->firstTileCol = xOffset / g->tw;
    g->xStart = xOffset % g->tw;
    g->firstTileRow = yOffset / g->th;
    g->yStart = sub32(yOffset, mul32(g->th, g->firstTileRow));
    g->tileCols = (g->cols + xOffset - 1) / g->tw - g->firstTileCol + 1;
    g->tileRows = (g->rows + yOffset - 1) / g->th - g->firstTileRow + 1;
    return 1;
}

namespace {

// One piece of a walk along one axis: where it starts in its cell, its
// extent, the source column (row) it starts at and the fraction there.
struct Piece {
    int start, size, srcPos;
    double frac;
};

// The pieces along one axis of a grid: the first from `start` in its cell
// over `firstSize`, the last over `lastSize`, the others whole cells; the
// source position of each from the fixed-point step without bias.
struct Axis {
    int start, count, cell, firstSize, lastSize, srcOrigin;
    int32_t step;

    Axis(int start_, int extent, int count_, int cell_, int srcOrigin_, double scale)
        : start(start_), count(count_), cell(cell_), srcOrigin(srcOrigin_),
          step(rmg::zoomLinearFixed(scale)) {
        firstSize = count == 1 ? extent : cell - start;
        lastSize = (add32(extent - 1, start) % cell) + 1;
    }

    Piece piece(int k) const {
        if (k == 0) return {start, firstSize, srcOrigin, 0.0};
        const int size = k == count - 1 ? lastSize : cell;
        const int32_t pos =
            add32(mul32(srcOrigin, 16384), mul32(add32(mul32(cell, k - 1), firstSize), step));
        const int32_t srcPos = pos >> 14;
        return {0, size, srcPos, pos * (1.0 / 16384) - srcPos};
    }
};

int planesOf(const RmgImage *image) {
    return image->dataOrder == RMG_DATA_PLANE ? image->nChannels : 1;
}

// A plain header of one tile of a tiled destination, with a ROI of its own
// (the destination's coi). Its imageSize is the tile's bytes.
struct TileTarget {
    RmgImage header;
    RmgROI roi;
    explicit TileTarget(const RmgImage *dst, const RmgZoomGrid &g) : header(*dst) {
        roi = {dst->roi != nullptr ? dst->roi->coi : 0, 0, 0, 0, 0};
        header.tileInfo = nullptr;
        header.imageData = nullptr;
        header.roi = &roi;
        header.height = g.th;
        header.width = g.tw;
        header.widthStep = rmgTileWidthStep(dst);
        header.imageSize = mul32(mul32(header.widthStep, g.th), planesOf(dst));
    }

    // Asks for tile (tx, ty) of dst to write the piece into; on a null tile
    // reports it and gives false.
    bool take(const RmgImage *dst, int tx, int ty, const Piece &px, const Piece &py) {
        roi.xOffset = px.start;
        roi.yOffset = py.start;
        roi.height = py.size;
        roi.width = px.size;
        dst->tileInfo->callBack(dst, tx, ty, RMG_TILE_WRITE);
        header.imageData = dst->tileInfo->tileData;
        if (header.imageData != nullptr) return true;
        rmgError(RMG_StsError, kFunc, "Error get tile to write", kModule, __LINE__);
        return false;
    }
};

// A plain header over a block read from a tiled source, with a ROI of its
// own (the source's coi).
struct BlockSource {
    RmgImage header;
    RmgROI roi;
    explicit BlockSource(const RmgImage *src) : header(*src) {
        roi = {src->roi != nullptr ? src->roi->coi : 0, 0, 0, 0, 0};
        header.tileInfo = nullptr;
        header.imageData = nullptr;
        header.roi = &roi;
    }

    // Reads the source rectangle that a piece needs (sx, sy and its size,
    // with the margin of the interpolation) into a block; false when the
    // read fails or the status is negative.
    unsigned char *read(const RmgImage *src, int interpolation, const Piece &px, const Piece &py) {
        int w = px.size, h = py.size, sx = px.srcPos, sy = py.srcPos;
        roi.xOffset = roi.yOffset = 0;
        if (interpolation != RMG_INTER_NN) {
            if (add32(sx, w) < src->width) ++w;
            if (add32(sy, h) < src->height) ++h;
        }
        if (interpolation == RMG_INTER_CUBIC) {
            if (add32(sx, w) < src->width) ++w;
            if (add32(sy, h) < src->height) ++h;
            if (sx > 0) {
                ++w;
                --sx;
                roi.xOffset = 1;
            }
            if (sy > 0) {
                ++h;
                --sy;
                roi.yOffset = 1;
            }
        }
        int rowStep = 0;
        unsigned char *block = ownGetExtendedRect(src, sx, sy, w, h, &rowStep);
        if (block == nullptr || rmgGetErrStatus() < 0) {
            ownReleaseExtendedRect(block);
            return nullptr;
        }
        header.imageData = block;
        header.widthStep = rowStep;
        header.width = w;
        header.height = h;
        header.imageSize = mul32(mul32(rowStep, h), planesOf(src));
        roi.width = px.size;
        roi.height = py.size;
        return block;
    }
};

// The tilePoint rule of the walks over a tiled destination: outside the
// grid nothing is walked; inside, one cell is, starting at the cell of the
// given column and, as the walk over a plain source forms it, the row from
// `rowValue`.
bool restrictTo(const int *tilePoint, int rowValue, RmgZoomGrid *g, int *firstCol,
                int *firstRow) {
    *firstCol = 0;
    *firstRow = 0;
    if (tilePoint == nullptr) return true;
    const int px = tilePoint[0], py = tilePoint[1];
    if (px < g->firstTileCol || px >= g->firstTileCol + g->tileCols || py < g->firstTileRow ||
        py >= g->firstTileRow + g->tileRows)
        return false;
    g->tileCols = 1;
    g->tileRows = 1;
    *firstCol = px - g->firstTileCol;
    *firstRow = rowValue - g->firstTileRow;
    return true;
}

// Walk A: plain source, tiled destination.
void walkPlainToTiled(RmgImage *src, RmgImage *dst, double xScale, double yScale, int inter,
                      const int *tilePoint) {
    const RmgCallBack callBack = dst->tileInfo->callBack;
    if (callBack == nullptr) {
        rmgError(RMG_StsBadArg, kFunc, "dstImage->tileInfo->callBack == ((void*)(0))", kModule,
                 __LINE__);
        return;
    }
    RmgZoomGrid g;
    if (ownZoomTileGrid(src, dst, xScale, yScale, &g) == 0) return;
    const RmgROI *own = src->roi;
    RmgROI srcRoi{own != nullptr ? own->coi : 0, 0, 0, own != nullptr ? own->height : src->height,
                  own != nullptr ? own->width : src->width};
    const int srcX0 = own != nullptr ? own->xOffset : 0;
    const int srcY0 = own != nullptr ? own->yOffset : 0;
    // The source's own ROI comes back when the walk ends, also on a failed
    // tile, where the walk would leave the source pointing at this call's
    // record, which ends with the call: no header keeps a pointer into a
    // finished call.
    rmg::RoiStandIn standIn(src, &srcRoi);
    TileTarget tile(dst, g);
    int i0, j0;
    if (!restrictTo(tilePoint, tilePoint != nullptr ? tilePoint[0] : 0, &g, &i0, &j0)) return;
    const Axis ax(g.xStart, g.cols, g.tileCols, g.tw, srcX0, xScale);
    const Axis ay(g.yStart, g.rows, g.tileRows, g.th, srcY0, yScale);
    for (int j = j0; j < g.tileRows; ++j)
        for (int i = i0; i < g.tileCols; ++i) {
            const Piece px = ax.piece(i), py = ay.piece(j);
            srcRoi.xOffset = px.srcPos;
            srcRoi.yOffset = py.srcPos;
            const int tx = g.firstTileCol + i, ty = g.firstTileRow + j;
            if (!tile.take(dst, tx, ty, px, py)) return;
            ownZoomRect(src, &tile.header, xScale, yScale, inter, px.frac, py.frac);
            callBack(dst, tx, ty, RMG_TILE_RELEASE);
        }
}

// Walk C: both tiled.
void walkTiledToTiled(RmgImage *src, RmgImage *dst, double xScale, double yScale, int inter,
                      const int *tilePoint) {
    if (src->tileInfo->callBack == nullptr) {
        rmgError(RMG_StsBadArg, kFunc, "srcImage->tileInfo->callBack == ((void*)(0))", kModule,
                 __LINE__);
        return;
    }
    const RmgCallBack callBack = dst->tileInfo->callBack;
    if (callBack == nullptr) {
        rmgError(RMG_StsBadArg, kFunc, "dstImage->tileInfo->callBack == ((void*)(0))", kModule,
                 __LINE__);
        return;
    }
    RmgZoomGrid g;
    if (ownZoomTileGrid(src, dst, xScale, yScale, &g) == 0) return;
    TileTarget tile(dst, g);
    BlockSource block(src);
    int i0, j0;
    if (!restrictTo(tilePoint, tilePoint != nullptr ? tilePoint[1] : 0, &g, &i0, &j0)) return;
    const Axis ax(g.xStart, g.cols, g.tileCols, g.tw, src->roi != nullptr ? src->roi->xOffset : 0,
                  xScale);
    const Axis ay(g.yStart, g.rows, g.tileRows, g.th, src->roi != nullptr ? src->roi->yOffset : 0,
                  yScale);
    for (int j = j0; j < g.tileRows; ++j)
        for (int i = i0; i < g.tileCols; ++i) {
            const Piece px = ax.piece(i), py = ay.piece(j);
            const int tx = g.firstTileCol + i, ty = g.firstTileRow + j;
            if (!tile.take(dst, tx, ty, px, py)) return;
            // A failed read ends the walk without a word, the tile not
            // released.
            unsigned char *pixels = block.read(src, inter, px, py);
            if (pixels == nullptr) return;
            ownZoomRect(&block.header, &tile.header, xScale, yScale, inter, px.frac, py.frac);
            callBack(dst, tx, ty, RMG_TILE_RELEASE);
            ownReleaseExtendedRect(pixels);
        }
}

// Walk B: tiled source, plain destination, in blocks of 128 x 128.
void walkTiledToPlain(RmgImage *src, RmgImage *dst, double xScale, double yScale, int inter) {
    if (src->tileInfo->callBack == nullptr) {
        rmgError(RMG_StsBadArg, kFunc, "srcImage->tileInfo->callBack == ((void*)(0))", kModule,
                 __LINE__);
        return;
    }
    RmgTileInfo blocks{nullptr, nullptr, nullptr, 128, 128};
    dst->tileInfo = &blocks;
    RmgZoomGrid g;
    const int fed = ownZoomTileGrid(src, dst, xScale, yScale, &g);
    dst->tileInfo = nullptr;
    if (fed == 0) return;
    const RmgROI *own = dst->roi;
    if (own != nullptr) {
        // The region's own offsets, not their remainders: beyond 128 the
        // first block's size goes negative, and nothing is written there.
        g.xStart = own->xOffset;
        g.yStart = own->yOffset;
    }
    BlockSource block(src);
    RmgROI part{own != nullptr ? own->coi : 0, 0, 0, 0, 0};
    rmg::RoiStandIn standIn(dst, &part);
    const Axis ax(g.xStart, g.cols, g.tileCols, 128, src->roi != nullptr ? src->roi->xOffset : 0,
                  xScale);
    const Axis ay(g.yStart, g.rows, g.tileRows, 128, src->roi != nullptr ? src->roi->yOffset : 0,
                  yScale);
    for (int j = 0; j < g.tileRows; ++j)
        for (int i = 0; i < g.tileCols; ++i) {
            const Piece px = ax.piece(i), py = ay.piece(j);
            part.xOffset = i == 0 ? g.xStart : mul32(128, i);
            part.yOffset = j == 0 ? g.yStart : mul32(128, j);
            part.width = px.size;
            part.height = py.size;
            unsigned char *pixels = block.read(src, inter, px, py);
            if (pixels == nullptr) return;
            ownZoomRect(&block.header, dst, xScale, yScale, inter, px.frac, py.frac);
            ownReleaseExtendedRect(pixels);
        }
}

// Step 1 and 2 of the checks: a header that is there and bad.
bool badHeader(const RmgImage *image, int line) {
    if (image == nullptr || rmgBadImageHeader(image) == 0) return false;
    char *text = rmgBadHeaderText(rmgBadImageHeader(image));
    rmgError(RMG_StsBadArg, kFunc, text, kModule, line);
    if (!rmg::isConstantHeaderText(text)) rmgFree(text);
    return true;
}

}  // namespace

extern "C" void rmgZoom(RmgImage *srcImage, RmgImage *dstImage, int xU, int xL, int yU, int yL,
                        int interpolate, const int *tilePoint) {
    if (badHeader(srcImage, __LINE__)) return;
    if (badHeader(dstImage, __LINE__)) return;
    if (srcImage == nullptr) rmgError(RMG_StsBadArg, kFunc, "srcImage==0", kModule, __LINE__);
    if (dstImage == nullptr) rmgError(RMG_StsBadArg, kFunc, "dstImage==0", kModule, __LINE__);
    // The status is sticky: a failure of an earlier call stops this one too.
    if (rmgGetErrStatus() < 0) return;
    // The library raises no status 0, so both images are there from here on.
    if (srcImage == nullptr || dstImage == nullptr) return;

    const bool srcData = srcImage->imageData != nullptr, srcTiles = srcImage->tileInfo != nullptr;
    const bool dstData = dstImage->imageData != nullptr, dstTiles = dstImage->tileInfo != nullptr;
    if (!srcData && !srcTiles) {
        rmgError(RMG_StsBadArg, kFunc,
                 "srcImage->imageData == ((void*)(0)) && srcImage->tileInfo == ((void*)(0))",
                 kModule, __LINE__);
        return;
    }
    if (srcData && srcTiles) {
        rmgError(RMG_StsBadArg, kFunc,
                 "srcImage->imageData != ((void*)(0)) && srcImage->tileInfo != ((void*)(0))",
                 kModule, __LINE__);
        return;
    }
    if (!dstData && !dstTiles) {
        rmgError(RMG_StsBadArg, kFunc,
                 "dstImage->imageData == ((void*)(0)) && dstImage->tileInfo == ((void*)(0))",
                 kModule, __LINE__);
        return;
    }
    if (dstData && dstTiles) {
        rmgError(RMG_StsBadArg, kFunc,
                 "dstImage->imageData != ((void*)(0)) && dstImage->tileInfo != ((void*)(0))",
                 kModule, __LINE__);
        return;
    }
    if (interpolate != RMG_INTER_NN && interpolate != RMG_INTER_LINEAR &&
        interpolate != RMG_INTER_CUBIC)
        rmgError(RMG_StsBadArg, kFunc,
                 "interpolate != RMG_INTER_NN && interpolate != RMG_INTER_LINEAR && interpolate "
                 "!= RMG_INTER_CUBIC",
                 kModule, __LINE__);
    if (srcImage->depth != dstImage->depth)
        rmgError(RMG_StsBadArg, kFunc, "srcImage->depth != dstImage->depth", kModule, __LINE__);
    if (srcImage->dataOrder != dstImage->dataOrder)
        rmgError(RMG_StsBadArg, kFunc, "srcImage->dataOrder != dstImage->dataOrder", kModule,
                 __LINE__);
    if (xU <= 0 || xL <= 0)
        rmgError(RMG_StsBadArg, kFunc, "xU <= 0 || xL <= 0", kModule, __LINE__);
    if (yU <= 0 || yL <= 0)
        rmgError(RMG_StsBadArg, kFunc, "yU <= 0 || yL <= 0", kModule, __LINE__);
    if (xU < xL || yU < yL)
        rmgError(RMG_StsBadArg, kFunc, "xU < xL || yU < yL", kModule, __LINE__);
    if (rmgGetErrStatus() < 0) return;

    // The interpolation, by the whole source image.
    int inter = interpolate;
    if (srcImage->depth == RMG_DEPTH_1U || srcImage->width < 2 || srcImage->height < 2)
        inter = RMG_INTER_NN;
    else if ((srcImage->width < 4 || srcImage->height < 4) && inter == RMG_INTER_CUBIC)
        inter = RMG_INTER_LINEAR;

    const double xScale = static_cast<double>(xL) / xU;
    const double yScale = static_cast<double>(yL) / yU;
    if (!srcTiles && !dstTiles)
        ownZoomRect(srcImage, dstImage, xScale, yScale, inter, 0.0, 0.0);
    else if (!srcTiles)
        walkPlainToTiled(srcImage, dstImage, xScale, yScale, inter, tilePoint);
    else if (!dstTiles)
        walkTiledToPlain(srcImage, dstImage, xScale, yScale, inter);
    else
        walkTiledToTiled(srcImage, dstImage, xScale, yScale, inter, tilePoint);
}
