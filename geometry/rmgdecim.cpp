// Decimate: rmgDecimate with its checks, the accessors that turn an image
// record into strides, the choice of kernel and the tile walks.
//
// A destination pixel is computed from one source position (8 fractional
// bits) and at most 4 by 4 neighbours: a sampler, not an area filter. The
// kernels (owndecim) step through positions; the walks here give them a
// plain source (the image, one tile, or tiles gathered into one buffer)
// and a destination address, each with the bounds of the memory the call
// was given, outside which a kernel neither reads nor writes.
#include "geometry/rmgdecim.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "core/rmgint.h"
#include "core/rmgvalid.h"
#include "geometry/owndecim.h"
#include "rmg.h"

using rmg::add32;
using rmg::mul32;
using rmg::sub32;

namespace {

constexpr char kModule[] = "rmgdecim";
constexpr char kFunc[] = "rmgDecimate";
constexpr char kSrcCrash[] = "srcImage->tileInfo->callBack crash";
constexpr char kDstCrash[] = "dstImage->tileInfo->callBack crash";

using i64 = long long;

// What a walker needs besides the kernel and the source.
struct Walk {
    OwnDecimateKernel kernel;
    int interpolation;
    const RmgImage *src;
    void *dst;               // first byte of the destination buffer
    OwnDecimateLimits lim;   // srcCount is filled in by the walker
    int channelStart, dstChannelStart, channelEnd;
    int srcPlane, srcRow, srcPixel, dstPlane, dstRow, dstPixel;
    int yStart, xStart, yEnd, xEnd, yStep, xStep;
};

int callKernel(const Walk &w, const void *src, int channelStart, int channelEnd, int srcPlane,
               int srcRow, const OwnDecimateLimits &lim, int dstChannelStart, int yEnd, int xEnd,
               int *y, int *x) {
    return w.kernel(src, w.dst, channelStart, dstChannelStart, channelEnd, srcPlane, srcRow,
                    w.srcPixel, w.dstPlane, w.dstRow, w.dstPixel, w.yStep, w.xStep, yEnd, xEnd,
                    y, x, lim);
}

// Elements of one tile of the source (bytes for depth 1).
i64 tileCount(const RmgImage *image) {
    const i64 n = i64(image->nChannels) * ownDecimateTileRowElements(image) *
                  image->tileInfo->height;
    return image->depth == RMG_DEPTH_1U ? n / 8 : n;
}

// Elements of a plain image's buffer (bytes for depth 1).
i64 plainCount(const RmgImage *image) {
    return image->depth == RMG_DEPTH_16U ? image->imageSize / 2 : image->imageSize;
}

// The element index that a byte offset of ownDecimateElemBytes names.
i64 elementsOf(i64 bytes, unsigned int depth) { return depth == RMG_DEPTH_16U ? bytes / 2 : bytes; }

int ownDecimatePlain(const Walk &w) {
    OwnDecimateLimits lim = w.lim;
    lim.srcCount = plainCount(w.src);
    int y = w.yStart, x = w.xStart;
    return callKernel(w, w.src->imageData, w.channelStart, w.channelEnd, w.srcPlane, w.srcRow,
                      lim, w.dstChannelStart, w.yEnd, w.xEnd, &y, &x);
}

int ownDecimateTileNearest(const Walk &w) {
    const RmgImage *src = w.src;
    RmgTileInfo *tiles = src->tileInfo;
    const int th256 = mul32(tiles->height, 256), tw256 = mul32(tiles->width, 256);
    const int firstRow = w.yStart / th256, firstCol = w.xStart / tw256;
    int y = sub32(w.yStart, mul32(firstRow, th256));
    const int x0 = sub32(w.xStart, mul32(firstCol, tw256));
    const int lastRow = sub32(w.yEnd, 255) / th256, lastCol = sub32(w.xEnd, 255) / tw256;
    const int yEndLast = sub32(w.yEnd, mul32(lastRow, th256));
    const int xEndLast = sub32(w.xEnd, mul32(lastCol, tw256));
    const bool bits = src->depth == RMG_DEPTH_1U;
    OwnDecimateLimits lim = w.lim;
    lim.srcCount = tileCount(src);
    i64 rowOffset = w.lim.dstOffset;
    for (int row = firstRow; row <= lastRow; ++row) {
        const int yLimit = row == lastRow ? yEndLast : th256;
        int x = x0, yStop = y;
        i64 done = 0;
        for (int col = firstCol; col <= lastCol; ++col) {
            const int xLimit = col == lastCol ? xEndLast : tw256;
            tiles->callBack(src, col, row, RMG_TILE_READ);
            const unsigned char *data = tiles->tileData;
            if (data == nullptr) return 0;
            int yy = y, xx = x;
            // Depth 1: the running column (the first pixel's bit position
            // plus the columns done) gives the byte and the bit.
            int bit = w.dstChannelStart;
            if (bits) {
                const i64 running = w.dstChannelStart + done;
                lim.dstOffset = rowOffset + (running >> 3);
                bit = int(running & 7);
            } else {
                lim.dstOffset = rowOffset + done * w.dstPixel;
            }
            const int ok = callKernel(w, data, w.channelStart, w.channelEnd, w.srcPlane, w.srcRow,
                                      lim, bit, yLimit, xLimit, &yy, &xx);
            tiles->callBack(src, col, row, RMG_TILE_RELEASE);
            if (!ok) return 0;
            done += (i64(xx) - x) / w.xStep;
            x = sub32(xx, tw256);
            yStop = yy;
        }
        const i64 rowsDone = (i64(yStop) - y) / w.yStep;
        rowOffset += bits ? rowsDone * (w.dstRow / 8) : rowsDone * w.dstRow;
        y = sub32(yStop, th256);
    }
    return 1;
}

// Copies `bytes` bytes of tile row data from `from` (which holds `avail`
// bytes from `fromBase`) to `to`; bytes the tile does not hold stay as
// they are (0).
void copyClipped(unsigned char *to, const unsigned char *fromBase, i64 at, i64 bytes, i64 avail) {
    const i64 n = std::min(bytes, avail - at);
    if (at < 0 || n <= 0) return;
    std::memcpy(to, fromBase + at, size_t(n));
}

// Tiles [firstRow, rowEnd) x [firstCol, colEnd) of a tiled source in one
// buffer from malloc, or null (raising RMG_StsNoMem for no memory).
unsigned char *ownDecimateGather(const RmgImage *src, int firstRow, int rowEnd, int firstCol,
                                 int colEnd, int interpolation) {
    RmgTileInfo *tiles = src->tileInfo;
    const int th = tiles->height, tw = tiles->width;
    const i64 rowsTotal = i64(th) * (rowEnd - firstRow), colsTotal = i64(tw) * (colEnd - firstCol);
    // An element is 2 bytes at depth 16 and one byte otherwise (also at
    // depth 1, where this arithmetic counts one byte a pixel).
    const i64 eb = src->depth == RMG_DEPTH_16U ? 2 : 1;
    const bool plane = src->dataOrder == RMG_DATA_PLANE;
    const i64 pixel = (plane ? 1 : src->nChannels) * eb;
    const i64 size = i64(src->nChannels) * rowsTotal * colsTotal * eb;
    unsigned char *buffer = nullptr;
    if (size > 0 && size <= i64(INT32_MAX)) buffer = static_cast<unsigned char *>(std::malloc(size_t(size)));
    if (buffer == nullptr) {
        rmgError(RMG_StsNoMem, kFunc, "", kModule, __LINE__);
        return nullptr;
    }
    // Cleared, so that what no tile fills reads the same on every call.
    std::memset(buffer, 0, size_t(size));

    int copyColEnd = colEnd, copyRowEnd = rowEnd;
    tiles->callBack(src, colEnd - 1, firstRow, RMG_TILE_READ);
    const bool rightThere = tiles->tileData != nullptr;
    tiles->callBack(src, colEnd - 1, firstRow, RMG_TILE_RELEASE);
    if (!rightThere) --copyColEnd;
    tiles->callBack(src, firstCol, rowEnd - 1, RMG_TILE_READ);
    const bool bottomThere = tiles->tileData != nullptr;
    tiles->callBack(src, firstCol, rowEnd - 1, RMG_TILE_RELEASE);
    if (!bottomThere) --copyRowEnd;

    const i64 planes = plane ? src->nChannels : 1;
    const i64 bufRow = colsTotal * pixel, bufPlane = rowsTotal * colsTotal * eb;
    // A tile as the call-back holds it: rows of (tile width * pixel) bytes,
    // planes of tile height such rows, tileBytes in all. At depth 1 the
    // rows counted here are longer than the tile's own, and the copy stops
    // at the tile's last byte.
    const i64 tileRow = i64(tw) * pixel, tilePlane = tileRow * th;
    const i64 tileBytes = src->depth == RMG_DEPTH_1U ? tileCount(src) : tileCount(src) * eb;
    for (int r = firstRow; r < copyRowEnd; ++r) {
        for (int c = firstCol; c < copyColEnd; ++c) {
            tiles->callBack(src, c, r, RMG_TILE_READ);
            const unsigned char *data = tiles->tileData;
            if (data == nullptr) {
                std::free(buffer);
                return nullptr;
            }
            for (i64 p = 0; p < planes; ++p)
                for (i64 i = 0; i < th; ++i) {
                    unsigned char *to = buffer + p * bufPlane + (i64(r - firstRow) * th + i) * bufRow +
                                        i64(c - firstCol) * tileRow;
                    copyClipped(to, data, p * tilePlane + i * tileRow, tileRow, tileBytes);
                }
            tiles->callBack(src, c, r, RMG_TILE_RELEASE);
        }
    }
    const i64 validRows = i64(copyRowEnd - firstRow) * th, validCols = i64(copyColEnd - firstCol) * tw;
    if (!rightThere && validCols > 0) {
        for (i64 p = 0; p < planes; ++p)
            for (i64 i = 0; i < validRows; ++i) {
                unsigned char *row = buffer + p * bufPlane + i * bufRow;
                for (i64 k = 1; k <= interpolation && validCols - 1 + k < colsTotal; ++k)
                    std::memcpy(row + (validCols - 1 + k) * pixel, row + (validCols - 1) * pixel,
                                size_t(pixel));
            }
    }
    if (!bottomThere && validRows > 0) {
        for (i64 p = 0; p < planes; ++p) {
            unsigned char *base = buffer + p * bufPlane;
            for (i64 k = 1; k <= interpolation && validRows - 1 + k < rowsTotal; ++k)
                std::memcpy(base + (validRows - 1 + k) * bufRow, base + (validRows - 1) * bufRow,
                            size_t(bufRow));
        }
    }
    return buffer;
}

int ownDecimateTileGather(const Walk &w) {
    const RmgImage *src = w.src;
    const int th256 = mul32(src->tileInfo->height, 256), tw256 = mul32(src->tileInfo->width, 256);
    const bool cubic = w.interpolation == RMG_INTER_CUBIC;
    const int yFrom = cubic && w.yStart % th256 != 0 ? sub32(w.yStart, 8) : w.yStart;
    const int xFrom = cubic && w.xStart % tw256 != 0 ? sub32(w.xStart, 8) : w.xStart;
    const int firstRow = yFrom / th256, firstCol = xFrom / tw256;
    const int reach = mul32(w.interpolation, 256);
    const int rowEnd = add32(sub32(w.yEnd, 1), reach) / th256 + 1;
    const int colEnd = add32(sub32(w.xEnd, 1), reach) / tw256 + 1;
    // An empty range gathers nothing and writes nothing.
    if (rowEnd <= firstRow || colEnd <= firstCol) return 1;
    int y = sub32(w.yStart, mul32(firstRow, th256)), x = sub32(w.xStart, mul32(firstCol, tw256));
    const int yEnd = sub32(w.yEnd, mul32(firstRow, th256)), xEnd = sub32(w.xEnd, mul32(firstCol, tw256));
    int channelStart = w.channelStart, channelEnd = w.channelEnd, srcPlane = w.srcPlane;
    if (src->dataOrder == RMG_DATA_PLANE) {
        const int n = mul32(colEnd - firstCol, rowEnd - firstRow);
        channelStart = mul32(channelStart, n);
        channelEnd = mul32(channelEnd, n);
        srcPlane = mul32(srcPlane, n);
    }
    unsigned char *buffer =
        ownDecimateGather(src, firstRow, rowEnd, firstCol, colEnd, w.interpolation);
    if (buffer == nullptr) return 0;
    OwnDecimateLimits lim = w.lim;
    lim.srcCount = i64(src->nChannels) * src->tileInfo->height * (rowEnd - firstRow) *
                   src->tileInfo->width * (colEnd - firstCol);
    const int ok = callKernel(w, buffer, channelStart, channelEnd, srcPlane,
                              mul32(w.srcRow, colEnd - firstCol), lim, w.dstChannelStart, yEnd,
                              xEnd, &y, &x);
    std::free(buffer);
    return ok;
}

using Walker = int (*)(const Walk &);

OwnDecimateKernel chooseKernel(unsigned int depth, int interpolation, bool xWhole, bool yWhole) {
    static const OwnDecimateKernel k8[7] = {ownDecimateNearest8,  ownDecimateLinearX8,
                                            ownDecimateLinearY8,  ownDecimateLinear8,
                                            ownDecimateCubicX8,   ownDecimateCubicY8,
                                            ownDecimateCubic8};
    static const OwnDecimateKernel k16[7] = {ownDecimateNearest16, ownDecimateLinearX16,
                                             ownDecimateLinearY16, ownDecimateLinear16,
                                             ownDecimateCubicX16,  ownDecimateCubicY16,
                                             ownDecimateCubic16};
    const OwnDecimateKernel *table = depth == RMG_DEPTH_8U ? k8 : k16;
    if (interpolation == RMG_INTER_NN) return table[0];
    const int base = interpolation == RMG_INTER_LINEAR ? 1 : 4;
    if (yWhole) return table[base];
    if (xWhole) return table[base + 1];
    return table[base + 2];
}

}  // namespace

int ownDecimateChannelCount(const RmgImage *image) {
    if (image->roi != nullptr && image->roi->coi != 0)
        return image->roi->coi <= image->nChannels ? 1 : -1;
    return image->nChannels;
}

int ownDecimateMinChannels(const RmgImage *src, const RmgImage *dst) {
    return std::min(ownDecimateChannelCount(src), ownDecimateChannelCount(dst));
}

int ownDecimateRows(const RmgImage *image) {
    const RmgROI *roi = image->roi;
    if (roi == nullptr) return image->height;
    if (add32(roi->yOffset, roi->height) >= image->height) return sub32(image->height, roi->yOffset);
    return roi->height;
}

int ownDecimateCols(const RmgImage *image) {
    const RmgROI *roi = image->roi;
    if (roi == nullptr) return image->width;
    if (add32(roi->xOffset, roi->width) >= image->width) return sub32(image->width, roi->xOffset);
    return roi->width;
}

int ownDecimateFit(int srcCount, int dstCount, int u, int l) {
    const int n = mul32(u, srcCount) / l;
    return std::min(n, dstCount);
}

int ownDecimateDstRows(const RmgImage *src, const RmgImage *dst, int yU, int yL) {
    return ownDecimateFit(ownDecimateRows(src), ownDecimateRows(dst), yU, yL);
}

int ownDecimateDstCols(const RmgImage *src, const RmgImage *dst, int xU, int xL) {
    return ownDecimateFit(ownDecimateCols(src), ownDecimateCols(dst), xU, xL);
}

void ownDecimateOrigin(int *channel, int *y, int *x, const RmgImage *image) {
    const RmgROI *roi = image->roi;
    *channel = roi != nullptr && roi->coi != 0 ? roi->coi - 1 : 0;
    *y = roi != nullptr ? roi->yOffset : 0;
    *x = roi != nullptr ? roi->xOffset : 0;
}

int ownDecimateElemBytes(int count, unsigned int depth) {
    switch (depth) {
    case RMG_DEPTH_1U: return count >> 3;
    case RMG_DEPTH_8U: return count;
    case RMG_DEPTH_16U: return mul32(count, 2);
    default: return 0;
    }
}

int ownDecimateRowElements(const RmgImage *image) {
    switch (image->depth) {
    case RMG_DEPTH_1U: return mul32(image->widthStep, 8);
    case RMG_DEPTH_8U: return image->widthStep;
    case RMG_DEPTH_16U: return image->widthStep >> 1;
    default: return 0;
    }
}

int ownDecimateTileRowElements(const RmgImage *image) {
    const int tw = image->tileInfo->width;
    if (image->depth != RMG_DEPTH_1U) return tw;
    if (image->align == 4) return ((tw / 8 + 3) & ~3) * 8;
    return ((tw / 8 + 7) & ~7) * 8;
}

void ownDecimateStrides(const RmgImage *image, int *plane, int *row, int *pixel) {
    *row = ownDecimateRowElements(image);
    if (image->dataOrder == RMG_DATA_PLANE) {
        *plane = mul32(*row, image->height);
        *pixel = 1;
    } else {
        *plane = 1;
        *pixel = image->nChannels;
    }
}

void ownDecimateTileStrides(const RmgImage *image, int *plane, int *row, int *pixel) {
    const int elements = ownDecimateTileRowElements(image);
    if (image->dataOrder == RMG_DATA_PLANE) {
        *plane = mul32(elements, image->tileInfo->height);
        *row = elements;
        *pixel = 1;
    } else {
        *plane = 1;
        *row = mul32(image->nChannels, elements);
        *pixel = image->nChannels;
    }
}

int ownDecimate(const RmgImage *srcImage, RmgImage *dstImage, int xU, int xL, int yU, int yL,
                int interpolate, const int *tilePoint) {
    const int xStep = int(uint32_t(xL) << 8) / xU, yStep = int(uint32_t(yL) << 8) / yU;
    const bool xWhole = xL % xU == 0, yWhole = yL % yU == 0;
    int interpolation = interpolate;
    if (srcImage->width < 4 || srcImage->height < 4 || (xWhole && yWhole))
        interpolation = RMG_INTER_NN;

    const unsigned int depth = srcImage->depth;
    OwnDecimateKernel kernel = nullptr;
    if (depth == RMG_DEPTH_1U) {
        kernel = ownDecimateNearest1;
    } else if (depth == RMG_DEPTH_8U || depth == RMG_DEPTH_16U) {
        if (interpolation < RMG_INTER_NN || interpolation > RMG_INTER_CUBIC) {
            rmgError(RMG_StsBadArg, kFunc, "interpolate is wrong", kModule, __LINE__);
            return 0;
        }
        kernel = chooseKernel(depth, interpolation, xWhole, yWhole);
    } else {
        rmgError(RMG_StsBadArg, kFunc, "srcImage->depth is wrong", kModule, __LINE__);
        return 0;
    }
    // The steps are xL and yL shifted left by 8 in a 32-bit word: from
    // 2^23 on the shift leaves the word and a step can come out 0 or
    // negative. No loop over positions would end with such a step, so the
    // call does nothing.
    if (xStep <= 0 || yStep <= 0) return 1;
    Walker walker = ownDecimatePlain;
    if (srcImage->tileInfo != nullptr)
        walker = interpolation == RMG_INTER_NN ? ownDecimateTileNearest : ownDecimateTileGather;

    Walk w{};
    w.kernel = kernel;
    w.interpolation = interpolation;
    w.src = srcImage;
    w.yStep = yStep;
    w.xStep = xStep;
    int srcChannel, srcY, srcX;
    ownDecimateOrigin(&srcChannel, &srcY, &srcX, srcImage);
    const int channelEnd = add32(srcChannel, ownDecimateMinChannels(srcImage, dstImage));
    if (srcImage->tileInfo != nullptr)
        ownDecimateTileStrides(srcImage, &w.srcPlane, &w.srcRow, &w.srcPixel);
    else
        ownDecimateStrides(srcImage, &w.srcPlane, &w.srcRow, &w.srcPixel);
    int dstChannel, dstY, dstX;
    ownDecimateOrigin(&dstChannel, &dstY, &dstX, dstImage);
    if (depth == RMG_DEPTH_1U) dstChannel = dstX % 8;
    const int cols = ownDecimateDstCols(srcImage, dstImage, xU, xL);
    const int rows = ownDecimateDstRows(srcImage, dstImage, yU, yL);
    int yStart = mul32(srcY, 256), xStart = mul32(srcX, 256);
    if (interpolation == RMG_INTER_NN) {
        if (!yWhole) yStart = add32(yStart, 128);
        if (!xWhole) xStart = add32(xStart, 128);
    }
    int yEnd = add32(yStart, mul32(yStep, rows)), xEnd = add32(xStart, mul32(xStep, cols));
    if (srcImage->tileInfo == nullptr && interpolation == RMG_INTER_CUBIC) {
        // Keeps the four nodes inside the image; the column end is lowered
        // by the row step, as the operation has always done.
        if (!yWhole && add32(yEnd, 1) > mul32(srcImage->height - 1, 256)) yEnd = sub32(yEnd, yStep);
        if (!xWhole && add32(xEnd, 1) > mul32(srcImage->width - 1, 256)) xEnd = sub32(xEnd, yStep);
    }
    w.yStart = yStart;
    w.xStart = xStart;
    w.yEnd = yEnd;
    w.xEnd = xEnd;
    w.channelStart = mul32(srcChannel, w.srcPlane);
    w.channelEnd = mul32(channelEnd, w.srcPlane);

    if (dstImage->tileInfo == nullptr) {
        ownDecimateStrides(dstImage, &w.dstPlane, &w.dstRow, &w.dstPixel);
        w.dstChannelStart = mul32(dstChannel, w.dstPlane);
        w.dst = dstImage->imageData;
        const i64 bytes = i64(ownDecimateElemBytes(mul32(dstY, w.dstRow), depth)) +
                          ownDecimateElemBytes(mul32(dstX, w.dstPixel), depth);
        w.lim.dstCount = plainCount(dstImage);
        w.lim.dstOffset = elementsOf(bytes, depth);
        if (!walker(w)) {
            rmgError(RMG_StsInternal, kFunc, kSrcCrash, kModule, __LINE__);
            return 0;
        }
        return 1;
    }

    // Tiled destination.
    RmgTileInfo *tiles = dstImage->tileInfo;
    ownDecimateTileStrides(dstImage, &w.dstPlane, &w.dstRow, &w.dstPixel);
    const int th = tiles->height, tw = tiles->width;
    const int firstTileRow = dstY / th, firstTileCol = dstX / tw;
    const int lastTileRow = add32(rows - 1, dstY) / th;
    const int rowEnd = lastTileRow + 1;
    const int colEnd = add32(cols - 1, dstX) / tw + 1;
    i64 rowOffset = ownDecimateElemBytes(mul32(dstY - firstTileRow * th, w.dstRow), depth);
    i64 colOffset = ownDecimateElemBytes(mul32(dstX - firstTileCol * tw, w.dstPixel), depth);
    int dstChannelStart = mul32(dstChannel, w.dstPlane);
    const int rowAdvance = mul32(th, yStep), colAdvance = mul32(tw, xStep);
    const int secondRowStart =
        sub32(add32(yStart, mul32(rowAdvance, firstTileRow + 1)), mul32(dstY, yStep));
    const int secondColStart =
        sub32(add32(xStart, mul32(colAdvance, firstTileCol + 1)), mul32(dstX, xStep));
    int rowFirst = firstTileRow, rowLast = lastTileRow, colFirst = firstTileCol, colLast = colEnd - 1;
    if (tilePoint != nullptr) {
        const int px = tilePoint[0], py = tilePoint[1];
        if (py < firstTileRow || py >= rowEnd || px < firstTileCol || px >= colEnd) return 1;
        if (py > firstTileRow) {
            yStart = add32(secondRowStart, mul32(py - firstTileRow - 1, rowAdvance));
            rowOffset = 0;
        }
        if (py + 1 < rowEnd) yEnd = add32(secondRowStart, mul32(py - firstTileRow, rowAdvance));
        if (px > firstTileCol) {
            xStart = add32(secondColStart, mul32(px - firstTileCol - 1, colAdvance));
            colOffset = 0;
            if (depth == RMG_DEPTH_1U) dstChannelStart = 0;
        }
        if (px + 1 < colEnd) xEnd = add32(secondColStart, mul32(px - firstTileCol, colAdvance));
        rowFirst = rowLast = py;
        colFirst = colLast = px;
    }
    const i64 tileElements = [&] {
        const i64 n = i64(dstImage->nChannels) * ownDecimateTileRowElements(dstImage) * th;
        return depth == RMG_DEPTH_1U ? n / 8 : n;
    }();
    int yFrom = yStart;
    for (int row = rowFirst; row <= rowLast; ++row) {
        const int yTo = row == rowLast ? yEnd
                                       : add32(secondRowStart, mul32(row - firstTileRow, rowAdvance));
        int xFrom = xStart;
        for (int col = colFirst; col <= colLast; ++col) {
            const int xTo = col == colLast
                                ? xEnd
                                : add32(secondColStart, mul32(col - firstTileCol, colAdvance));
            tiles->callBack(dstImage, col, row, RMG_TILE_WRITE);
            if (tiles->tileData == nullptr) {
                rmgError(RMG_StsInternal, kFunc, kDstCrash, kModule, __LINE__);
                return 0;
            }
            Walk t = w;
            t.dst = tiles->tileData;
            t.lim.dstCount = tileElements;
            t.lim.dstOffset = elementsOf(rowOffset + colOffset, depth);
            t.dstChannelStart = dstChannelStart;
            t.yStart = yFrom;
            t.yEnd = yTo;
            t.xStart = xFrom;
            t.xEnd = xTo;
            if (!walker(t)) {
                // The destination tile in hand is not released.
                rmgError(RMG_StsInternal, kFunc, kSrcCrash, kModule, __LINE__);
                return 0;
            }
            tiles->callBack(dstImage, col, row, RMG_TILE_RELEASE);
            colOffset = 0;
            if (depth == RMG_DEPTH_1U) dstChannelStart = 0;
            xFrom = xTo;
        }
        // Each tile row starts at the region's own first column again.
        colOffset = ownDecimateElemBytes(mul32(dstX - firstTileCol * tw, w.dstPixel), depth);
        dstChannelStart = mul32(dstChannel, w.dstPlane);
        rowOffset = 0;
        yFrom = yTo;
    }
    return 1;
}

extern "C" void rmgDecimate(RmgImage *srcImage, RmgImage *dstImage, int xU, int xL, int yU,
                            int yL, int interpolate, const int *tilePoint) {
    if (!rmg::openImages(kFunc, kModule, __LINE__, {srcImage, dstImage})) return;
    if (srcImage == nullptr || dstImage == nullptr) return;
    if (srcImage->depth != dstImage->depth)
        rmgError(RMG_StsBadArg, kFunc, "srcImage->depth != dstImage->depth", kModule, __LINE__);
    if (srcImage->origin != dstImage->origin)
        rmgError(RMG_StsBadArg, kFunc, "srcImage->origin != dstImage->origin", kModule, __LINE__);
    if (srcImage->dataOrder != dstImage->dataOrder)
        rmgError(RMG_StsBadArg, kFunc, "srcImage->dataOrder != dstImage->dataOrder", kModule,
                 __LINE__);
    if (interpolate != RMG_INTER_NN && interpolate != RMG_INTER_LINEAR &&
        interpolate != RMG_INTER_CUBIC)
        rmgError(RMG_StsBadArg, kFunc,
                 "interpolate != RMG_INTER_NN, RMG_INTER_LINEAR or RMG_INTER_CUBIC", kModule,
                 __LINE__);
    if (xU <= 0) rmgError(RMG_StsBadArg, kFunc, "xU <= 0", kModule, __LINE__);
    if (xL <= 0) rmgError(RMG_StsBadArg, kFunc, "xL <= 0", kModule, __LINE__);
    if (yU <= 0) rmgError(RMG_StsBadArg, kFunc, "yU <= 0", kModule, __LINE__);
    if (yL <= 0) rmgError(RMG_StsBadArg, kFunc, "yL <= 0", kModule, __LINE__);
    if (xU > xL) rmgError(RMG_StsBadArg, kFunc, "xU > xL", kModule, __LINE__);
    if (yU > yL) rmgError(RMG_StsBadArg, kFunc, "yU > yL", kModule, __LINE__);
    if (rmgGetErrStatus() < 0) return;
    ownDecimate(srcImage, dstImage, xU, xL, yU, yL, interpolate, tilePoint);
}
