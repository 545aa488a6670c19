// Blur: rmgBlur, the box average of an nCols by nRows box.
//
// The operation checks its arguments, sets the library-wide working words
// (the scale and the channels, then for each piece its size), and works in
// pieces: one piece when the destination is in memory, one per destination
// tile otherwise. Each piece starts with a copy of the source rectangle and
// the box's margin read through ownGetExtendedRect, so the source's border
// rules decide what lies beyond its edges and source and destination may be
// the same image. ownBlurRect then slides the box over the copy with
// running column sums and a running row sum.
#include "filter/rmgBlur.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "access/owntile.h"
#include "core/rmgcpu.h"
#include "core/rmgint.h"
#include "core/rmgvalid.h"
#include "filter/rmgBlur_impl.h"
#include "rmg.h"

int32_t blurCols = 0;
int32_t blurRows = 0;
int32_t blurFirstChannel = 0;
int32_t blurLastChannel = 0;
float blurScale = 0.0f;

namespace rmg {

constexpr BlurForms kBlurScalar = {blurColumnsScalar, blurRowScalar};

namespace {

constexpr FormTable<const BlurForms *> kBlur = formTable<const BlurForms *>(
    &kBlurScalar, RMG_FORM_SSE2(&kBlurSse2), RMG_FORM_AVX2(&kBlurAvx2), nullptr);

}  // namespace
}  // namespace rmg

namespace {

constexpr char kFunc[] = "rmgBlur";
constexpr char kModule[] = "rmgBlur";

using Byte = unsigned char;

int minInt(int a, int b) { return a < b ? a : b; }
int maxInt(int a, int b) { return a > b ? a : b; }

int coiOf(const RmgImage *image) { return image->roi != nullptr ? image->roi->coi : 0; }

// Element strides of an image: rows (widthStep by the element size),
// pixels and channels.
struct Strides {
    int64_t row, pixel, channel;
};

Strides stridesOf(const RmgImage *image, int elementBytes) {
    const int64_t row = image->widthStep / elementBytes;
    if (image->dataOrder == RMG_DATA_PLANE) return {row, 1, row * image->height};
    return {row, image->nChannels, 1};
}

// Columns of a destination row, from column 0, whose elements lie inside
// the image's buffer: the row starts `first` elements behind imageData.
int writableColumns(int64_t first, int64_t pixel, int64_t sizeElements, int cols) {
    if (first < 0 || first >= sizeElements || pixel <= 0) return 0;
    const int64_t n = (sizeElements - 1 - first) / pixel + 1;
    return n < cols ? static_cast<int>(n) : cols;
}

void copyElement(const Byte *from, Byte *to, int elementBytes) {
    std::memcpy(to, from, static_cast<size_t>(elementBytes));
}

int kindOf(uint32_t depth) {
    switch (depth) {
        case RMG_DEPTH_8U: return rmg::kBlur8u;
        case RMG_DEPTH_8S: return rmg::kBlur8s;
        case RMG_DEPTH_16U: return rmg::kBlur16u;
        default: return rmg::kBlur16s;
    }
}

// RMG_DEPTH_32S: float column sums, each addition rounded to float, and a
// double acc; all of it in the order of the integer depths.
void blurRect32(const Byte *src, const Strides &s, Byte *dst, const Strides &d,
                int64_t dstFirst, int64_t sizeElements, int W, int H, int nRows, int nCols,
                float *sum) {
    const int T = W + nCols;
    const auto at = [&](int r, int c) {
        int32_t v;
        std::memcpy(&v, src + (r * s.row + c * s.pixel) * 4, 4);
        return v;
    };
    for (int c = 0; c < T; ++c) {
        float e = 0.0f;
        for (int i = 0; i < nRows; ++i)
            e = static_cast<float>(static_cast<double>(e) + static_cast<double>(at(i, c)));
        sum[T - 1 - c] = e;
    }
    const double scale = static_cast<double>(blurScale);
    for (int r = 0; r < H; ++r) {
        const int64_t first = dstFirst + r * d.row;
        const int n = writableColumns(first, d.pixel, sizeElements, W);
        double acc = 0.0;
        for (int i = T - 1; i >= W; --i) acc = acc + static_cast<double>(sum[i]);
        for (int o = 0; o < n; ++o) {
            const int32_t v = rmg::blurTruncate(acc * scale);
            std::memcpy(dst + (first + o * d.pixel) * 4, &v, 4);
            const int j = W - 1 - o;
            acc = acc + static_cast<double>(sum[j]) - static_cast<double>(sum[j + nCols]);
        }
        for (int c = 0; c < T; ++c) {
            const int32_t diff = rmg::sub32(at(r + nRows, c), at(r, c));
            sum[T - 1 - c] = static_cast<float>(static_cast<double>(sum[T - 1 - c]) +
                                                static_cast<double>(diff));
        }
    }
}

}  // namespace

void ownBlurRegion(const RmgImage *image, int *x, int *y, int *cols, int *rows,
                   int *firstChannel, int *lastChannel) {
    const RmgROI *roi = image->roi;
    if (roi == nullptr) {
        *x = 0;
        *y = 0;
        *cols = image->width;
        *rows = image->height;
        *firstChannel = 1;
        *lastChannel = image->nChannels;
        return;
    }
    *x = roi->xOffset;
    *y = roi->yOffset;
    *cols = minInt(roi->width, rmg::sub32(image->width, roi->xOffset));
    *rows = minInt(roi->height, rmg::sub32(image->height, roi->yOffset));
    *firstChannel = roi->coi != 0 ? roi->coi : 1;
    *lastChannel = roi->coi != 0 ? roi->coi : image->nChannels;
}

void ownBlurRect(const RmgImage *src, RmgImage *dst, int nRows, int nCols, int, int) {
    const int W = blurCols;
    const int H = blurRows;
    if (W <= 0 || H <= 0 || nRows < 0 || nCols < 0) return;
    if (src->imageData == nullptr || dst->imageData == nullptr || src->depth != dst->depth) return;
    const int eb = rmg::depthBits(src->depth) / 8;
    if (eb != 1 && eb != 2 && eb != 4) return;
    // The read area: blurRows + nRows rows of blurCols + nCols columns from
    // the temporary's origin (its ROI offsets are not applied). A header
    // that doesn't hold them, or channels it doesn't have, give nothing.
    const int64_t T = static_cast<int64_t>(W) + nCols;
    if (static_cast<int64_t>(src->height) < static_cast<int64_t>(H) + nRows || src->width < T ||
        T * 4 > INT32_MAX - 64)
        return;
    if (blurFirstChannel < 1 || blurLastChannel > src->nChannels ||
        blurLastChannel > dst->nChannels)
        return;
    const Strides s = stridesOf(src, eb);
    const Strides d = stridesOf(dst, eb);
    const int64_t sizeElements = dst->imageSize > 0 ? dst->imageSize / eb : 0;
    const int64_t dstX = dst->roi != nullptr ? dst->roi->xOffset : 0;
    const int64_t dstY = dst->roi != nullptr ? dst->roi->yOffset : 0;
    const auto dstFirstOf = [&](int ch) {
        return dstY * d.row + dstX * d.pixel + (ch - 1) * d.channel;
    };
    const auto srcOf = [&](int ch) { return src->imageData + (ch - 1) * s.channel * eb; };

    if (nRows == 1 && nCols == 1) {
        for (int ch = blurFirstChannel; ch <= blurLastChannel; ++ch) {
            const Byte *from = srcOf(ch);
            for (int r = 0; r < H; ++r) {
                const int64_t first = dstFirstOf(ch) + r * d.row;
                const int n = writableColumns(first, d.pixel, sizeElements, W);
                for (int o = 0; o < n; ++o)
                    copyElement(from + (r * s.row + o * s.pixel) * eb,
                                dst->imageData + (first + o * d.pixel) * eb, eb);
            }
        }
        return;
    }

    void *block = rmgAlloc8(static_cast<int>(T * 4));
    if (block == nullptr) return;
    if (eb == 4) {
        for (int ch = blurFirstChannel; ch <= blurLastChannel; ++ch)
            blurRect32(srcOf(ch), s, dst->imageData, d, dstFirstOf(ch), sizeElements, W, H, nRows,
                       nCols, static_cast<float *>(block));
        rmgFree(block);
        return;
    }
    auto *sum = static_cast<int32_t *>(block);
    const rmg::BlurForms *forms = rmg::kBlur.get();
    const int kind = kindOf(src->depth);
    const int count = static_cast<int>(T);
    for (int ch = blurFirstChannel; ch <= blurLastChannel; ++ch) {
        const Byte *from = srcOf(ch);
        const auto row = [&](int r) { return from + r * s.row * eb; };
        std::memset(sum, 0, static_cast<size_t>(count) * 4);
        for (int i = 0; i < nRows; ++i) forms->columns(sum, row(i), nullptr, count, s.pixel, kind);
        for (int r = 0; r < H; ++r) {
            const int64_t first = dstFirstOf(ch) + r * d.row;
            const int n = writableColumns(first, d.pixel, sizeElements, W);
            if (n > 0)
                forms->row(sum, W, nCols, blurScale, dst->imageData + first * eb, d.pixel, n, kind);
            forms->columns(sum, row(r + nRows), row(r), count, s.pixel, kind);
        }
    }
    rmgFree(block);
}

namespace {

// The temporary source of a piece of `rows` by `cols` whose box origin is
// column x, row y of the source: a plain header of the source's format,
// one box larger, with a ROI at the anchor and the pixels from column
// x - anchorX, row y - anchorY. Null when a part can't be had; what was
// made is given back.
RmgImage *readPiece(const RmgImage *src, int x, int y, int rows, int cols, int nRows, int nCols,
                    int anchorX, int anchorY) {
    const int height = rmg::add32(rows, nRows);
    const int width = rmg::add32(cols, nCols);
    RmgImage *piece = rmgCreateImageHeader(src->nChannels, src->alphaChannel, src->depth,
                                           src->colorModel, src->channelSeq, src->dataOrder,
                                           src->origin, src->align, height, width, nullptr,
                                           nullptr, nullptr);
    if (piece == nullptr) return nullptr;
    piece->roi = rmgCreateROI(coiOf(src), anchorX, anchorY, rows, cols);
    if (piece->roi == nullptr) {
        rmgDeallocate(piece, RMG_DEALLOC_HEADER);
        return nullptr;
    }
    int rowStep = 0;
    unsigned char *block = ownGetExtendedRect(src, rmg::sub32(x, anchorX), rmg::sub32(y, anchorY),
                                              width, height, &rowStep);
    if (block == nullptr) {
        rmgDeallocate(piece, RMG_DEALLOC_HEADER | RMG_DEALLOC_ROI);
        return nullptr;
    }
    piece->imageData = block;
    piece->widthStep = rowStep;
    return piece;
}

void releasePiece(RmgImage *piece) {
    ownReleaseExtendedRect(piece->imageData);
    piece->imageData = nullptr;
    rmgDeallocate(piece, RMG_DEALLOC_HEADER | RMG_DEALLOC_ROI);
}

struct Box {
    int nRows, nCols, anchorX, anchorY;
};

// One axis of the walk over the destination's tile grid: the tiles first to
// last, the start in the first one, the count to cover and where the
// source's part of it begins.
struct Axis {
    int first, last, start, count, source;
};

// The destination tile by tile, tile columns outside, tile rows inside;
// a tile is released once the tile one column and one row further on is
// done, the rest after the walk.
void blurTiles(const RmgImage *srcImage, RmgImage *dstImage, const Axis &xs, const Axis &ys,
               const Box &box) {
    RmgTileInfo *tiles = dstImage->tileInfo;
    const int tw = tiles->width;
    const int th = tiles->height;
    const auto release = [&](int c, int r) { tiles->callBack(dstImage, c, r, RMG_TILE_RELEASE); };
    int doneX = 0;
    for (int c = xs.first; c <= xs.last; ++c) {
        const int startX = c == xs.first ? xs.start : 0;
        const int pieceCols = minInt(tw - startX, xs.count - doneX);
        int doneY = 0;
        for (int r = ys.first; r <= ys.last; ++r) {
            const int startY = r == ys.first ? ys.start : 0;
            const int pieceRows = minInt(th - startY, ys.count - doneY);
            blurCols = pieceCols;
            blurRows = pieceRows;
            RmgImage *piece =
                readPiece(srcImage, rmg::add32(xs.source, doneX), rmg::add32(ys.source, doneY),
                          pieceRows, pieceCols, box.nRows, box.nCols, box.anchorX, box.anchorY);
            if (piece == nullptr) return;
            tiles->callBack(dstImage, c, r, RMG_TILE_WRITE);
            RmgImage *part = rmgCreateImageHeader(
                dstImage->nChannels, dstImage->alphaChannel, dstImage->depth, dstImage->colorModel,
                dstImage->channelSeq, dstImage->dataOrder, dstImage->origin, dstImage->align, th,
                tw, nullptr, nullptr, nullptr);
            if (part == nullptr) {
                releasePiece(piece);
                return;
            }
            part->widthStep = rmgWidthStep(dstImage->dataOrder, dstImage->depth, dstImage->align,
                                           dstImage->nChannels, tw);
            part->imageData = tiles->tileData;
            part->roi = rmgCreateROI(coiOf(dstImage), startX, startY, pieceRows, pieceCols);
            // A tile the call-back left null is not written: there is no
            // memory to write into.
            if (part->roi != nullptr && part->imageData != nullptr)
                ownBlurRect(piece, part, box.nRows, box.nCols, box.anchorX, box.anchorY);
            if (c != xs.first && r != ys.first) release(c - 1, r - 1);
            part->imageData = nullptr;
            rmgDeallocate(part, RMG_DEALLOC_HEADER | RMG_DEALLOC_ROI);
            releasePiece(piece);
            doneY += pieceRows;
        }
        doneX += pieceCols;
    }
    for (int c = xs.first; c <= xs.last; ++c) release(c, ys.last);
    for (int r = ys.first; r < ys.last; ++r) release(xs.last, r);
}

// The axis of a walk: the whole rectangle (origin, count, source origin), or
// with a tile point `p` only the tile that holds it; false when that tile
// lies outside the rectangle.
bool axisOf(int origin, int count, int source, int tile, const int *p, Axis *a) {
    if (p == nullptr) {
        a->first = origin / tile;
        a->last = rmg::add32(rmg::sub32(count, 1), origin) / tile;
        a->start = origin % tile;
        a->count = count;
        a->source = source;
        return true;
    }
    const int k = *p / tile;
    const int64_t tileStart = static_cast<int64_t>(k) * tile;
    if (static_cast<int64_t>(origin) + count - 1 < tileStart ||
        static_cast<int64_t>(origin) > tileStart + tile - 1)
        return false;
    a->first = k;
    a->last = k;
    a->count = count;
    a->source = source;
    const int64_t start = origin - tileStart;
    if (start < 0) {
        a->start = 0;
        a->count = static_cast<int>(count + start);
        a->source = static_cast<int>(source - start);
    } else {
        a->start = static_cast<int>(start);
    }
    return true;
}

}  // namespace

extern "C" void rmgBlur(const RmgImage *srcImage, RmgImage *dstImage, int nRows, int nCols,
                        int anchorX, int anchorY, const int *tilePoint) {
    if (!rmg::openImages(kFunc, kModule, __LINE__, {srcImage, dstImage})) return;
    if (srcImage->depth != dstImage->depth) {
        rmgError(RMG_StsBadArg, kFunc, "(srcImage->depth!=dstImage->depth)", kModule, __LINE__);
        return;
    }
    if (srcImage->depth == 1) {
        rmgError(RMG_StsBadArg, kFunc, "(srcImage->depth==1)", kModule, __LINE__);
        return;
    }
    if (nRows < 0 || nCols < 0) {
        rmgError(RMG_StsBadArg, kFunc, "(nRows<0||nCols<0)", kModule, __LINE__);
        return;
    }
    if (anchorX < 0 || anchorY < 0) {
        rmgError(RMG_StsBadArg, kFunc, "(anchorX<0||anchorY<0)", kModule, __LINE__);
        return;
    }

    // The product in 32-bit words, converted, divided in double and held
    // as a float; a box of no elements gives an infinite scale.
    const int32_t elements = rmg::mul32(nRows, nCols);
    blurScale = elements == 0 ? INFINITY : static_cast<float>(1.0 / static_cast<double>(elements));

    int sx, sy, sCols, sRows, sFirst, sLast;
    int dx, dy, cols, rows, dFirst, dLast;
    ownBlurRegion(srcImage, &sx, &sy, &sCols, &sRows, &sFirst, &sLast);
    ownBlurRegion(dstImage, &dx, &dy, &cols, &rows, &dFirst, &dLast);
    cols = minInt(cols, sCols);
    rows = minInt(rows, sRows);
    blurFirstChannel = maxInt(sFirst, dFirst);
    blurLastChannel = minInt(sLast, dLast);
    // Channels that cross leave nothing to filter. An empty rectangle (a
    // ROI at or beyond an image's edge) has nothing to read or write and
    // asks for no tile.
    if (blurFirstChannel > blurLastChannel || cols <= 0 || rows <= 0) return;

    const Box box{nRows, nCols, anchorX, anchorY};
    if (dstImage->tileInfo == nullptr) {
        // One piece; a tiled source is read through its tiles.
        blurCols = cols;
        blurRows = rows;
        RmgImage *piece = readPiece(srcImage, sx, sy, rows, cols, nRows, nCols, anchorX, anchorY);
        if (piece == nullptr) return;
        ownBlurRect(piece, dstImage, nRows, nCols, anchorX, anchorY);
        releasePiece(piece);
        return;
    }
    Axis xs, ys;
    const RmgTileInfo *tiles = dstImage->tileInfo;
    if (!axisOf(dx, cols, sx, tiles->width, tilePoint, &xs)) return;
    if (!axisOf(dy, rows, sy, tiles->height, tilePoint != nullptr ? tilePoint + 1 : nullptr, &ys))
        return;
    blurTiles(srcImage, dstImage, xs, ys, box);
}
