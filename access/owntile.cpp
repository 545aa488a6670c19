// The tile engine's copies: a rectangle of a plain block or of a tiled
// image into a plain destination, the fetch and release of a row of tiles,
// and the spread helpers of the border rules.
#include "access/owntile.h"

#include <cstdint>
#include <cstring>

#include "core/rmgint.h"
#include "rmg.h"

using rmg::add32;
using rmg::mul32;

namespace {

using i64 = int64_t;

// Offsets are worked out in 64 bits, so that positions far outside a
// buffer still compare as outside instead of wrapping into it.
bool inside(i64 offset, i64 bytes, size_t size) {
    const i64 limit = static_cast<i64>(size);
    return offset >= 0 && bytes <= limit && offset <= limit - bytes;
}

// Byte of a 1-bit row that holds pixel x (floor of x / 8), and its mask.
i64 bitByte(i64 x) { return (x - (x & 7)) / 8; }
unsigned char bitMask(i64 x) { return static_cast<unsigned char>(0x80u >> (x & 7)); }

// One axis of a copy: from `start` by `step` (-1 when the start lies above
// the end, otherwise 1), `count` positions.
struct Walk {
    i64 start;
    i64 step;
    i64 count;
};
Walk walkOf(i64 from, i64 to) {
    return to < from ? Walk{from, -1, from - to + 1} : Walk{from, 1, to - from + 1};
}

// ORs `count` bits from bit `from` of `src` into the bits from `to` of
// `dst`, a byte at a time once the destination reaches a byte boundary.
// Both runs lie inside their buffers.
void orBitRun(const unsigned char *src, i64 from, unsigned char *dst, i64 to, i64 count) {
    for (; count > 0 && (to & 7) != 0; --count, ++from, ++to)
        if (src[bitByte(from)] & bitMask(from)) dst[bitByte(to)] |= bitMask(to);
    const int shift = static_cast<int>(from & 7);
    for (; count >= 8; count -= 8, from += 8, to += 8) {
        const unsigned char *s = src + bitByte(from);
        // With a shift the eight bits span two source bytes, both in the run.
        const unsigned bits = shift == 0 ? s[0] : (s[0] << shift | s[1] >> (8 - shift)) & 0xFFu;
        dst[bitByte(to)] |= static_cast<unsigned char>(bits);
    }
    for (; count > 0; --count, ++from, ++to)
        if (src[bitByte(from)] & bitMask(from)) dst[bitByte(to)] |= bitMask(to);
}

// ownCopyBlock with 64-bit destination positions, which the tile walk
// computes from tile sizes and may put before the destination's start.
void copyBlock(const unsigned char *src, size_t srcSize, i64 x0, i64 y0, i64 x1, i64 y1,
               i64 srcRowStep, i64 srcPlaneStep, unsigned char *dst, size_t dstSize, i64 dstX,
               i64 dstY, i64 dstRowStep, i64 dstPlaneStep, int pixelBytes, int planes) {
    const Walk cols = walkOf(x0, x1);
    const Walk rows = walkOf(y0, y1);
    if (pixelBytes > 0) {
        const i64 pb = pixelBytes;
        for (i64 p = 0; p < planes; ++p) {
            for (i64 j = 0; j < rows.count; ++j) {
                const i64 from = p * srcPlaneStep + (rows.start + j * rows.step) * srcRowStep;
                const i64 to = p * dstPlaneStep + (dstY + j) * dstRowStep + dstX * pb;
                if (cols.step > 0 && cols.count <= static_cast<i64>(dstSize) &&
                    inside(from + x0 * pb, cols.count * pb, srcSize) &&
                    inside(to, cols.count * pb, dstSize)) {
                    std::memcpy(dst + to, src + from + x0 * pb,
                                static_cast<size_t>(cols.count * pb));
                    continue;
                }
                for (i64 i = 0; i < cols.count; ++i) {
                    const i64 s = from + (cols.start + i * cols.step) * pb;
                    const i64 d = to + i * pb;
                    // A pixel outside the source or the destination (a
                    // position past an edge that leaves the buffer, or a
                    // tile placed before the destination's start) is
                    // passed over: nothing outside is read or written.
                    if (inside(s, pb, srcSize) && inside(d, pb, dstSize))
                        std::memcpy(dst + d, src + s, static_cast<size_t>(pb));
                }
            }
        }
    } else if (pixelBytes == 0) {
        for (i64 j = 0; j < rows.count; ++j) {
            const i64 from = (rows.start + j * rows.step) * srcRowStep;
            const i64 to = (dstY + j) * dstRowStep;
            const i64 lastX = dstX + cols.count - 1;
            if (cols.step > 0 &&
                inside(from + bitByte(x0), bitByte(x1) - bitByte(x0) + 1, srcSize) &&
                inside(to + bitByte(dstX), bitByte(lastX) - bitByte(dstX) + 1, dstSize)) {
                orBitRun(src + from, x0, dst + to, dstX, cols.count);
                continue;
            }
            for (i64 i = 0; i < cols.count; ++i) {
                const i64 column = cols.start + i * cols.step;
                const i64 s = from + bitByte(column);
                // As above: a bit outside the source reads as clear, and
                // a clear bit leaves the destination alone.
                if (!inside(s, 1, srcSize) || !(src[s] & bitMask(column))) continue;
                const i64 d = to + bitByte(dstX + i);
                if (inside(d, 1, dstSize)) dst[d] |= bitMask(dstX + i);
            }
        }
    }
}

// Bytes of one whole tile as the tile protocol lays it out.
size_t tileBytes(const RmgImage *image) {
    const RmgTileInfo *tiles = image->tileInfo;
    const i64 rowStep =
        rmgWidthStep(image->dataOrder, image->depth, image->align, image->nChannels, tiles->width);
    const i64 planes = image->dataOrder == RMG_DATA_PIXEL ? 1 : image->nChannels;
    const i64 bytes = rowStep * tiles->height * planes;
    return bytes > 0 ? static_cast<size_t>(bytes) : 0;
}

// The walk of a tiled image over the tile grid: where it starts and ends
// in tiles and within them, and where each tile's part lands.
struct TileWalk {
    int tileX0, inX0, tileX1, inX1, stepX;
    int tileY0, inY0, tileY1, inY1;
    int nextX, endX, nextY, endY;
    i64 nTilesBetween, doneX, doneY;
    int tileWidth, tileHeight;
    i64 tileRowStep, tilePlaneStep;
    size_t tileSize;
};

TileWalk tileWalkOf(const RmgImage *image, int x0, int y0, int x1, int y1) {
    TileWalk w{};
    w.tileWidth = image->tileInfo->width;
    w.tileHeight = image->tileInfo->height;
    w.stepX = x1 < x0 ? -1 : 1;
    const bool upwards = y1 < y0;
    // Signed division, toward 0, as the machine divides.
    w.tileY0 = y0 / w.tileHeight;
    w.inY0 = y0 % w.tileHeight;
    w.tileY1 = y1 / w.tileHeight;
    w.inY1 = y1 % w.tileHeight;
    w.tileX0 = x0 / w.tileWidth;
    w.inX0 = x0 % w.tileWidth;
    w.tileX1 = x1 / w.tileWidth;
    w.inX1 = x1 % w.tileWidth;
    const int tileRowStep = rmgTileWidthStep(image);
    w.tileRowStep = tileRowStep;
    w.tilePlaneStep = mul32(tileRowStep, w.tileHeight);
    w.tileSize = tileBytes(image);

    w.nextY = upwards ? w.tileHeight - 1 : 0;
    w.endY = upwards ? 0 : w.tileHeight - 1;
    w.nextX = w.stepX < 0 ? w.tileWidth - 1 : 0;
    w.endX = w.stepX < 0 ? 0 : w.tileWidth - 1;
    if (w.tileY0 == w.tileY1) w.endY = w.inY1;
    if (w.tileX0 == w.tileX1) w.endX = w.inX1;

    // What the first tile delivers, and where the next one lands. Exact for
    // a forward walk; a backward one comes out at inX0 - 1, two short, and
    // that placement is kept.
    w.nTilesBetween = (static_cast<i64>(w.tileX1) - w.tileX0) * w.stepX;
    w.doneX = (static_cast<i64>(w.endX) - w.inX0 + 1) * w.stepX;
    w.doneY = (static_cast<i64>(w.endY) - w.inY0 + 1) * (upwards ? -1 : 1);
    return w;
}

struct Target {
    unsigned char *dst;
    size_t size;
    int dstX;
    int dstRowStep, dstPlaneStep, pixelBytes, planes;
};

// Copies rows r0 to r1 of each tile of one fetched tile row: the first
// tile from inX0, the middle ones whole, the last one up to inX1.
void copyTileRow(const TileWalk &w, unsigned char *const *pointers, int r0, int r1, i64 dstRow,
                 const Target &t) {
    auto copy = [&](int i, int c0, int c1, i64 dstX) {
        copyBlock(pointers[i], w.tileSize, c0, r0, c1, r1, w.tileRowStep, w.tilePlaneStep, t.dst,
                  t.size, dstX, dstRow, t.dstRowStep, t.dstPlaneStep, t.pixelBytes, t.planes);
    };
    copy(0, w.inX0, w.endX, t.dstX);
    if (w.nTilesBetween == 0) return;
    for (i64 i = 1; i < w.nTilesBetween; ++i)
        copy(static_cast<int>(i), w.nextX, w.endX, t.dstX + w.tileWidth * (i - 1) + w.doneX);
    copy(static_cast<int>(w.nTilesBetween), w.nextX, w.inX1,
         t.dstX + w.tileWidth * (w.nTilesBetween - 1) + w.doneX);
}

}  // namespace

void ownCopyBlock(const unsigned char *src, int x0, int y0, int x1, int y1, int srcRowStep,
                  int srcPlaneStep, unsigned char *dst, int dstX, int dstY, int dstRowStep,
                  int dstPlaneStep, int pixelBytes, int planes, size_t srcSize, size_t dstSize) {
    copyBlock(src, srcSize, x0, y0, x1, y1, srcRowStep, srcPlaneStep, dst, dstSize, dstX, dstY,
              dstRowStep, dstPlaneStep, pixelBytes, planes);
}

int ownFetchTileRow(const RmgImage *image, unsigned char **pointers, int count, int tileX,
                    int tileY, int step) {
    RmgTileInfo *tiles = image->tileInfo;
    int failed = 0;
    for (int i = 0; i < count; ++i) {
        const int column = add32(tileX, mul32(i, step));
        // Without a call-back there is no tile to have.
        if (tiles->callBack != nullptr) tiles->callBack(image, column, tileY, RMG_TILE_READ);
        pointers[i] = tiles->callBack != nullptr ? tiles->tileData : nullptr;
        if (pointers[i] == nullptr) failed = 1;
    }
    return failed;
}

void ownReleaseTileRow(const RmgImage *image, unsigned char *const *pointers, int count, int tileX,
                       int tileY, int step) {
    RmgTileInfo *tiles = image->tileInfo;
    for (int i = count - 1; i >= 0; --i) {
        tiles->tileData = pointers[i];
        if (tiles->callBack != nullptr)
            tiles->callBack(image, add32(tileX, mul32(i, step)), tileY, RMG_TILE_RELEASE);
    }
}

int ownReadTileRect(const RmgImage *image, int x0, int y0, int x1, int y1, unsigned char *dst,
                    int dstX, int dstY, int dstRowStep, int dstPlaneStep, int pixelBytes,
                    int planes, size_t dstSize) {
    if (image->imageData != nullptr) {
        const size_t size = image->imageSize > 0 ? static_cast<size_t>(image->imageSize) : 0;
        copyBlock(image->imageData, size, x0, y0, x1, y1, image->widthStep,
                  mul32(image->widthStep, image->height), dst, dstSize, dstX, dstY, dstRowStep,
                  dstPlaneStep, pixelBytes, planes);
        return 0;
    }
    // An image with neither pixels nor tiles, or with tiles of no size, has
    // nothing to read (and the tile arithmetic would divide by 0).
    const RmgTileInfo *tiles = image->tileInfo;
    if (tiles == nullptr || tiles->width < 1 || tiles->height < 1) return 1;

    const TileWalk w = tileWalkOf(image, x0, y0, x1, y1);
    const i64 count = w.nTilesBetween + 1;
    // A row of pointers that no 32-bit allocation can hold fails like a
    // failed allocation.
    if (count > (INT32_MAX - 20) / static_cast<i64>(sizeof(unsigned char *))) return 1;
    auto **pointers = static_cast<unsigned char **>(
        rmgAlloc8(static_cast<int>(count * static_cast<i64>(sizeof(unsigned char *)))));
    if (pointers == nullptr) return 1;
    const int n = static_cast<int>(count);
    const Target target{dst, dstSize, dstX, dstRowStep, dstPlaneStep, pixelBytes, planes};

    // One tile row: fetch, copy rows r0 to r1 to dstRow, release.
    auto tileRow = [&](int row, int r0, int r1, i64 dstRow) {
        if (ownFetchTileRow(image, pointers, n, w.tileX0, row, w.stepX) != 0) return false;
        copyTileRow(w, pointers, r0, r1, dstRow, target);
        ownReleaseTileRow(image, pointers, n, w.tileX0, row, w.stepX);
        return true;
    };

    bool ok = tileRow(w.tileY0, w.inY0, w.endY, dstY);
    // Only a forward walk goes on past its first tile row; a backward one
    // that crosses a tile row ends here.
    if (ok && w.tileY0 < w.tileY1) {
        for (int row = w.tileY0 + 1; ok && row < w.tileY1; ++row) {
            const i64 k = static_cast<i64>(row) - w.tileY0 - 1;
            ok = tileRow(row, w.nextY, w.endY, dstY + w.tileHeight * k + w.doneY);
        }
        const i64 k = static_cast<i64>(w.tileY1) - w.tileY0 - 1;
        if (ok) ok = tileRow(w.tileY1, w.nextY, w.inY1, dstY + w.tileHeight * k + w.doneY);
    }
    rmgFree(pointers);
    return ok ? 0 : 1;
}

// ---------------------------------------------------------------------------
// Spread helpers. Rectangles lie inside the block, as ownGetExtendedRect
// builds them.
// ---------------------------------------------------------------------------

namespace {

unsigned char *pixelAt(unsigned char *block, int x, int y, int rowStep, int pixelBytes) {
    return block + static_cast<i64>(y) * rowStep + static_cast<i64>(x) * pixelBytes;
}
bool bitAt(const unsigned char *row, int x) { return (row[bitByte(x)] & bitMask(x)) != 0; }
void setBits(unsigned char *row, int x, int count) {
    for (int i = 0; i < count; ++i) row[bitByte(x + i)] |= bitMask(x + i);
}

}  // namespace

void ownSpreadCorner(unsigned char *block, int x, int y, int columns, int rows, int rowStep,
                     int planeStep, int pixelBytes, int planes) {
    if (pixelBytes < 0) return;
    if (pixelBytes == 0) {
        if (!bitAt(block + static_cast<i64>(y) * rowStep, x)) return;
        for (int j = 0; j < rows; ++j)
            setBits(block + static_cast<i64>(y + j) * rowStep, x, columns);
        return;
    }
    for (int p = 0; p < planes; ++p) {
        unsigned char *plane = block + static_cast<i64>(p) * planeStep;
        const unsigned char *corner = pixelAt(plane, x, y, rowStep, pixelBytes);
        for (int j = 0; j < rows; ++j)
            for (int i = 0; i < columns; ++i) {
                unsigned char *to = pixelAt(plane, x + i, y + j, rowStep, pixelBytes);
                if (to != corner) std::memcpy(to, corner, static_cast<size_t>(pixelBytes));
            }
    }
}

void ownSpreadColumn(unsigned char *block, int x, int y, int columns, int rows, int rowStep,
                     int planeStep, int pixelBytes, int planes) {
    if (pixelBytes < 0) return;
    if (pixelBytes == 0) {
        for (int j = 0; j < rows; ++j) {
            unsigned char *row = block + static_cast<i64>(y + j) * rowStep;
            if (bitAt(row, x)) setBits(row, x + 1, columns - 1);
        }
        return;
    }
    for (int p = 0; p < planes; ++p) {
        unsigned char *plane = block + static_cast<i64>(p) * planeStep;
        for (int j = 0; j < rows; ++j) {
            const unsigned char *first = pixelAt(plane, x, y + j, rowStep, pixelBytes);
            for (int i = 1; i < columns; ++i)
                std::memcpy(pixelAt(plane, x + i, y + j, rowStep, pixelBytes), first,
                            static_cast<size_t>(pixelBytes));
        }
    }
}

void ownSpreadRow(unsigned char *block, int x, int y, int columns, int rows, int rowStep,
                  int planeStep, int pixelBytes, int planes) {
    if (pixelBytes < 0 || columns <= 0) return;
    if (pixelBytes == 0) {
        const unsigned char *first = block + static_cast<i64>(y) * rowStep;
        for (int j = 1; j < rows; ++j) {
            unsigned char *row = block + static_cast<i64>(y + j) * rowStep;
            for (int i = 0; i < columns; ++i)
                if (bitAt(first, x + i)) row[bitByte(x + i)] |= bitMask(x + i);
        }
        return;
    }
    const size_t bytes = static_cast<size_t>(columns) * static_cast<size_t>(pixelBytes);
    for (int p = 0; p < planes; ++p) {
        unsigned char *plane = block + static_cast<i64>(p) * planeStep;
        const unsigned char *first = pixelAt(plane, x, y, rowStep, pixelBytes);
        for (int j = 1; j < rows; ++j)
            std::memcpy(pixelAt(plane, x, y + j, rowStep, pixelBytes), first, bytes);
    }
}
