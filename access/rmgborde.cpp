// The image border rules: any rectangle of an image, inside or beyond its
// edges, read into one plain block. The library's only border code: an
// operation that reads beyond an image's edge reads through this.
//
// The rectangle is cut into up to three bands of rows (above the image,
// beside it, below it) and each band into up to three column parts (left
// of the image, inside it, right of it). The bands above and below follow
// the top and bottom rules over their whole width, corners included; the
// left and right rules work only in the middle band.
#include <algorithm>
#include <cstdint>
#include <cstring>

#include "access/owntile.h"
#include "core/rmgint.h"
#include "ops/rmgfill.h"
#include "rmg.h"

using rmg::add32;
using rmg::sub32;

namespace {

using i64 = int64_t;

// How a rectangle's extent on one axis falls against the image's:
// `before` positions before the image's first, falling `beforeSkip` short
// of it; `inside` positions in the image; `after` positions beyond its last,
// starting `afterSkip` beyond it, where `over` is by how much the rectangle's
// end passes the image's.
struct Cut {
    int before, beforeSkip, inside, over, after, afterSkip;
};

Cut cutOf(int start, int extent, int imageExtent) {
    Cut c{};
    const int end = add32(start, extent);
    if (start < 0) {
        c.before = std::min(sub32(0, start), extent);
        c.beforeSkip = sub32(sub32(0, start), c.before);
    }
    if (end > 0 && start < imageExtent)
        c.inside = sub32(sub32(std::min(end, imageExtent), start), c.before);
    if (end > imageExtent) {
        c.over = sub32(end, imageExtent);
        c.after = std::min(c.over, extent);
        c.afterSkip = sub32(c.over, c.after);
    }
    // The three parts lie side by side in the rectangle's extent. Only a
    // start and extent whose sum wraps in 32 bits could make them reach
    // further; they are kept inside the block.
    c.before = std::clamp(c.before, 0, extent);
    c.inside = std::clamp(c.inside, 0, extent - c.before);
    c.after = std::clamp(c.after, 0, extent - c.before - c.inside);
    return c;
}

// A run of image positions from `from` to `to`, both included, walked
// backwards when `to` is the smaller.
struct Span {
    int from, to;
};

// The positions a reflected or wrapped part reads, before the image (top
// rows, left columns) and after it (bottom rows, right columns). Reflection
// repeats the edge pixel and has no limit; wrapping goes round once. So a
// rectangle further out than the image's size names positions past the
// other edge or below 0. They are read at their addresses as they stand
// where that is still the image's memory (the row before, the next plane);
// a pixel whose address leaves the image's memory, or the tile's, is not
// read, and its place in the block keeps the 0 it was cleared to (the
// copies in owntile.cpp pass it over).
Span spanBefore(int mode, int start, const Cut &c, int imageExtent) {
    if (mode == RMG_BORDER_REFLECT) return {sub32(-1, start), c.beforeSkip};
    return {add32(start, imageExtent), sub32(sub32(imageExtent, c.beforeSkip), 1)};
}
Span spanAfter(int mode, const Cut &c, int imageExtent) {
    if (mode == RMG_BORDER_REFLECT)
        return {sub32(sub32(imageExtent, c.afterSkip), 1),
                sub32(sub32(imageExtent, c.afterSkip), c.after)};
    return {c.afterSkip, sub32(add32(c.afterSkip, c.after), 1)};
}
Span spanInside(int start, const Cut &c) {
    const int first = add32(start, c.before);
    return {first, sub32(add32(first, c.inside), 1)};
}

// The read of one rectangle and its block.
struct Reader {
    const RmgImage *image;
    unsigned char *block;
    size_t size;  // the whole allocation, spare bytes included
    int rowStep, planeStep, pixelBytes, planes, bits;
    int x;  // the rectangle's first column
    Cut xs;

    // Image columns `cols` of image rows `rows` into the block at column
    // `at`, row `row`.
    bool read(Span cols, Span rows, int at, int row) const {
        return ownReadTileRect(image, cols.from, rows.from, cols.to, rows.to, block, at, row,
                               rowStep, planeStep, pixelBytes, planes, size) == 0;
    }
    bool readPixel(int column, int imageRow, int at, int row) const {
        return read({column, column}, {imageRow, imageRow}, at, row);
    }

    // The side's 32-bit pattern over whole rows, padding included.
    void fillRows(int constant, int row, int rows) const {
        const uint32_t pattern = rmg::fillPattern32(constant, bits);
        for (int p = 0; p < planes; ++p)
            for (int j = 0; j < rows; ++j) {
                unsigned char *to =
                    block + static_cast<i64>(p) * planeStep + static_cast<i64>(row + j) * rowStep;
                rmgFill32(pattern, to, rowStep / 4);
            }
    }

    // The side's constant by element over `columns` pixels from column
    // `at`: stored into the first pixel of each row, then spread along it.
    // 1-bit: the bits are set if the constant is odd, else left clear.
    void fillColumns(int constant, int at, int columns, int row, int rows) const {
        if (bits == 1) {
            if (!(constant & 1)) return;
            for (int j = 0; j < rows; ++j) {
                unsigned char *to = block + static_cast<i64>(row + j) * rowStep;
                to[at >> 3] |= static_cast<unsigned char>(0x80u >> (at & 7));
            }
        } else {
            const uint8_t v8 = static_cast<uint8_t>(constant);
            const uint16_t v16 = static_cast<uint16_t>(constant);
            const void *element = bits == 8    ? static_cast<const void *>(&v8)
                                  : bits == 16 ? static_cast<const void *>(&v16)
                                               : static_cast<const void *>(&constant);
            const int elementBytes = bits / 8;
            for (int p = 0; p < planes; ++p)
                for (int j = 0; j < rows; ++j) {
                    unsigned char *to = block + static_cast<i64>(p) * planeStep +
                                        static_cast<i64>(row + j) * rowStep +
                                        static_cast<i64>(at) * pixelBytes;
                    for (int e = 0; e < pixelBytes; e += elementBytes)
                        std::memcpy(to + e, element, static_cast<size_t>(elementBytes));
                }
        }
        ownSpreadColumn(block, at, row, columns, rows, rowStep, planeStep, pixelBytes, planes);
    }

    // A band above or below the image: `mode` for its whole width, `rows`
    // the image rows a reflection or wrap reads, `edge` the image row next
    // to the band.
    bool outerBand(int mode, int constant, Span rows, int edge, int row, int count) const {
        if (count <= 0) return true;
        const int width = image->width;
        const int right = xs.before + xs.inside;
        if (mode == RMG_BORDER_CONST) {
            fillRows(constant, row, count);
            return true;
        }
        if (mode == RMG_BORDER_REPLICATE) {
            if (xs.before > 0) {
                if (!readPixel(0, edge, 0, row)) return false;
                ownSpreadCorner(block, 0, row, xs.before, count, rowStep, planeStep, pixelBytes,
                                planes);
            }
            if (xs.inside > 0) {
                if (!read(spanInside(x, xs), {edge, edge}, xs.before, row)) return false;
                ownSpreadRow(block, xs.before, row, xs.inside, count, rowStep, planeStep,
                             pixelBytes, planes);
            }
            if (xs.after > 0) {
                if (!readPixel(width - 1, edge, right, row)) return false;
                ownSpreadCorner(block, right, row, xs.after, count, rowStep, planeStep, pixelBytes,
                                planes);
            }
            return true;
        }
        return (xs.before <= 0 || read(spanBefore(mode, x, xs, width), rows, 0, row)) &&
               (xs.inside <= 0 || read(spanInside(x, xs), rows, xs.before, row)) &&
               (xs.after <= 0 || read(spanAfter(mode, xs, width), rows, right, row));
    }

    // The left or right part of the middle band, by that side's rule.
    bool sidePart(bool left, int mode, int constant, Span rows, int row, int count) const {
        const int columns = left ? xs.before : xs.after;
        if (columns <= 0) return true;
        const int at = left ? 0 : xs.before + xs.inside;
        const int width = image->width;
        if (mode == RMG_BORDER_CONST) {
            fillColumns(constant, at, columns, row, count);
            return true;
        }
        if (mode == RMG_BORDER_REPLICATE) {
            const int edge = left ? 0 : width - 1;
            if (!read({edge, edge}, rows, at, row)) return false;
            ownSpreadColumn(block, at, row, columns, count, rowStep, planeStep, pixelBytes, planes);
            return true;
        }
        return read(left ? spanBefore(mode, x, xs, width) : spanAfter(mode, xs, width), rows, at,
                    row);
    }

    // The band beside the image's own rows `rows`.
    bool middleBand(Span rows, int row, int count) const {
        if (count <= 0) return true;
        const int *modes = image->borderModes;
        const int *consts = image->borderConsts;
        return sidePart(true, modes[2] & 3, consts[2], rows, row, count) &&
               (xs.inside <= 0 || read(spanInside(x, xs), rows, xs.before, row)) &&
               sidePart(false, modes[3] & 3, consts[3], rows, row, count);
    }
};

}  // namespace

unsigned char *ownGetExtendedRect(const RmgImage *image, int x, int y, int width, int height,
                                  int *rowStep) {
    if (image == nullptr) return nullptr;
    const int order = image->dataOrder;
    if ((order != RMG_DATA_PIXEL && order != RMG_DATA_PLANE) || !rmg::isLegalDepth(image->depth) ||
        (image->align != 4 && image->align != 8))
        return nullptr;
    // A block of negative size or without channels can't be had; nor can
    // one that no 32-bit allocation holds. These fail like memory that
    // runs out.
    if (width < 0 || height < 0 || image->nChannels < 1) return nullptr;

    const int bits = rmg::depthBits(image->depth);
    const i64 elementBytes = bits >> 3;
    const i64 pixelBytes =
        bits == 1 ? 0 : (order == RMG_DATA_PIXEL ? image->nChannels * elementBytes : elementBytes);
    const i64 planes = order == RMG_DATA_PLANE ? image->nChannels : 1;
    const i64 rowBytes = bits == 1 ? (static_cast<i64>(width) + 7) / 8 : width * pixelBytes;
    const i64 step = image->align == 4 ? (rowBytes + 3) & ~i64{3} : (rowBytes + 7) & ~i64{7};
    const i64 planeStep = step * height;
    const i64 total = planeStep * planes + 16;
    if (pixelBytes > INT32_MAX || step > INT32_MAX || total > INT32_MAX - 20) return nullptr;
    if (rowStep != nullptr) *rowStep = static_cast<int>(step);

    auto *block = static_cast<unsigned char *>(rmgAlloc8(static_cast<int>(total)));
    if (block == nullptr) return nullptr;
    // The 1-bit copies OR into the block, so it starts cleared. Every other
    // depth starts cleared too: what no rule writes (row padding beside the
    // image, what a backward walk over tiles leaves) is then 0 and not what
    // the allocator left.
    std::memset(block, 0, static_cast<size_t>(total));

    const Reader r{image,
                   block,
                   static_cast<size_t>(total),
                   static_cast<int>(step),
                   static_cast<int>(planeStep),
                   static_cast<int>(pixelBytes),
                   static_cast<int>(planes),
                   bits,
                   x,
                   cutOf(x, width, image->width)};
    const int imageHeight = image->height;
    const Cut ys = cutOf(y, height, imageHeight);
    const int top = image->borderModes[0] & 3;
    const int bottom = image->borderModes[1] & 3;
    const int middleRow = ys.before;
    const int bottomRow = ys.before + ys.inside;
    const bool ok = r.outerBand(top, image->borderConsts[0], spanBefore(top, y, ys, imageHeight), 0,
                                0, ys.before) &&
                    r.middleBand(spanInside(y, ys), middleRow, ys.inside) &&
                    r.outerBand(bottom, image->borderConsts[1], spanAfter(bottom, ys, imageHeight),
                                imageHeight - 1, bottomRow, ys.after);
    if (!ok) {
        rmgFree(block);
        return nullptr;
    }
    return block;
}

void ownReleaseExtendedRect(void *block) {
    if (block != nullptr) rmgFree(block);
}
