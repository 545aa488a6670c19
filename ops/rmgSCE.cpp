// Fill and copy: rmgSet, with its row functions and its tile walk.
//
// Set shows the frame of the operations of this module: test the header;
// walk the tiles of a tiled image through a temporary plain header per
// tile and a recursive call; otherwise resolve the region and hand each
// row to a fill kernel chosen by depth and layout.
#include "ops/rmgSCE.h"

#include <climits>
#include <cstddef>
#include <cstdint>

#include "access/ownrect.h"
#include "core/rmgint.h"
#include "core/rmgvalid.h"
#include "ops/rmgfill.h"
#include "rmg.h"

using rmg::mul32;

namespace {

constexpr char kModule[] = "rmgSCE";

// Row r of plane p of a region, in byte steps that may exceed 2^31 in all.
unsigned char *rowAt(unsigned char *data, int p, int planeStep, int r, int rowStep) {
    return data + static_cast<ptrdiff_t>(p) * planeStep + static_cast<ptrdiff_t>(r) * rowStep;
}

int clampValue(int value, int low, int high) {
    return value < low ? low : value > high ? high : value;
}

// Changes the bits of `mask` in `*byte`: set for an odd value, else clear.
void changeBits(unsigned char *byte, unsigned int mask, int value) {
    if (value & 1)
        *byte = static_cast<unsigned char>(*byte | mask);
    else
        *byte = static_cast<unsigned char>(*byte & ~mask);
}

template <typename T, void (*Fill)(T, void *, int)>
void setRows(unsigned char *data, int rows, int columns, int rowStep, int planeStep, int planes,
             T value) {
    // Rows that follow each other without a gap (the region spans whole
    // rows that have no padding) are one run, and so are such planes that
    // follow each other: the same stores in fewer kernel calls.
    const int64_t element = static_cast<int64_t>(sizeof(T));
    if (rows > 0 && columns > 0 && columns * element == rowStep) {
        int64_t run = static_cast<int64_t>(columns) * rows;
        int runs = planes;
        if (planes > 1 && planeStep == static_cast<int64_t>(rowStep) * rows &&
            run * planes <= INT_MAX) {
            run *= planes;
            runs = 1;
        }
        if (run <= INT_MAX) {
            for (int p = 0; p < runs; ++p)
                Fill(value, rowAt(data, p, planeStep, 0, rowStep), static_cast<int>(run));
            return;
        }
    }
    for (int p = 0; p < planes; ++p)
        for (int r = 0; r < rows; ++r) Fill(value, rowAt(data, p, planeStep, r, rowStep), columns);
}

template <typename T, void (*Fill)(T, void *, int, int)>
void setChannel(unsigned char *data, int rows, int columns, int rowStep, int pixelStep, T value) {
    const int stride = mul32(pixelStep, static_cast<int>(sizeof(T)));
    for (int r = 0; r < rows; ++r) Fill(value, rowAt(data, 0, 0, r, rowStep), columns, stride);
}

// The value range a depth stores; 32-bit values are taken as they are.
struct DepthRange {
    int low;
    int high;
};

bool rangeOf(unsigned int depth, DepthRange *range) {
    switch (depth) {
    case RMG_DEPTH_1U:
        *range = {0, 1};
        return true;
    case RMG_DEPTH_8U:
        *range = {0, 255};
        return true;
    case RMG_DEPTH_8S:
        *range = {-128, 127};
        return true;
    case RMG_DEPTH_16U:
        *range = {0, 65535};
        return true;
    case RMG_DEPTH_16S:
        *range = {-32768, 32767};
        return true;
    case RMG_DEPTH_32S:
        *range = {INT_MIN, INT_MAX};
        return true;
    default:
        return false;
    }
}

// The clipped region of an image in memory, as ownImageRect gives it.
struct PlainRegion {
    unsigned char *data;
    int rowStep, channels, rows, columns, planeStep;

    explicit PlainRegion(const RmgImage *image) {
        ownImageRect(image, &data, &rowStep, &channels, &rows, &columns, &planeStep);
    }
};

template <typename T>
using SetRowsFn = void (*)(unsigned char *, int, int, int, int, int, T);
template <typename T>
using SetChannelFn = void (*)(unsigned char *, int, int, int, int, T);

// Whole runs per row and plane where the region's rows have no gaps, else
// every `pixelStep`-th element.
template <typename T>
void setElements(const PlainRegion &r, bool contiguous, int pixelStep, T value,
                 SetRowsFn<T> setRowsFn, SetChannelFn<T> setChannelFn) {
    if (contiguous)
        setRowsFn(r.data, r.rows, r.columns, r.rowStep, r.planeStep, r.channels, value);
    else
        setChannelFn(r.data, r.rows, r.columns, r.rowStep, pixelStep, value);
}

// Set on an image in memory: the clipped region, in whole runs where the
// rows have no gaps, else one channel of pixel-order pixels.
void setPlain(const RmgImage *image, int fillValue) {
    PlainRegion r(image);

    // Plane order is always a run per row and plane; pixel order is one when
    // every channel is written, and then a row is one run of all channels.
    bool contiguous = image->dataOrder == RMG_DATA_PLANE;
    if (!contiguous && r.channels == image->nChannels) {
        contiguous = true;
        r.channels = 1;
        r.columns = mul32(r.columns, image->nChannels);
    }

    // A depth outside the six has been refused by the header test already.
    DepthRange range;
    if (!rangeOf(image->depth, &range)) return;
    const int value = clampValue(fillValue, range.low, range.high);
    const int pixelStep = image->nChannels;

    switch (rmg::depthBits(image->depth)) {
    case 1:
        rmgSetRegion1u(r.data, r.rows, r.columns, r.rowStep,
                       image->roi != nullptr ? image->roi->xOffset : 0, value);
        break;
    case 8:
        setElements(r, contiguous, pixelStep, static_cast<uint8_t>(value), rmgSetRows8,
                    rmgSetChannel8);
        break;
    case 16:
        setElements(r, contiguous, pixelStep, static_cast<uint16_t>(value), rmgSetRows16,
                    rmgSetChannel16);
        break;
    default:
        setElements(r, contiguous, pixelStep, static_cast<uint32_t>(value), rmgSetRows32,
                    rmgSetChannel32);
        break;
    }
}

// Set on a tiled image: each tile of the region's grid is asked for with
// write, filled through a plain header of one tile by the recursive call,
// and released. A tile the call-back can't give ends the walk; the tiles
// done stay written.
void setTiles(const RmgImage *image, int fillValue, const int *tile) {
    rmg::TileWalk walk;
    ownTileRect(image, &walk.rows, &walk.columns, &walk.xInTile, &walk.yInTile, &walk.tileHeight,
                &walk.tileWidth, &walk.firstTileX, &walk.firstTileY, &walk.nTilesX,
                &walk.nTilesY);
    if (walk.rows == 0 || walk.columns == 0) return;
    if (!rmg::tileWalkStart(&walk, tile)) return;

    rmg::TileHeader part(*image, walk);
    const RmgCallBack callBack = image->tileInfo->callBack;
    rmg::forEachTile(walk, [&](int i, int j) {
        const int x = walk.firstTileX + j;
        const int y = walk.firstTileY + i;
        part.setPart(walk, i, j);
        callBack(image, x, y, RMG_TILE_WRITE);
        part.image()->imageData = image->tileInfo->tileData;
        if (part.image()->imageData == nullptr) {
            rmgError(RMG_StsError, "rmgSet", "Error get tile to write", kModule, __LINE__);
            return false;
        }
        rmgSet(part.image(), fillValue, nullptr);
        callBack(image, x, y, RMG_TILE_RELEASE);
        return true;
    });
}

}  // namespace

// ---------------------------------------------------------------------------
// Row functions
// ---------------------------------------------------------------------------

void rmgSetBits(int value, unsigned char *first, int bitPos, int count) {
    // The mask arithmetic below assumes at least one bit: with none it would
    // name the byte in front of `first`. Nothing to do is done here.
    if (count <= 0) return;
    const unsigned int firstMask = 0xFFu >> (7 - bitPos);
    const int end = rmg::add32(count, 6 - bitPos);
    const int lastIndex = end >> 3;
    const unsigned int lastMask = (0xFFu << (7 - (end & 7))) & 0xFFu;
    if (lastIndex == 0) {
        changeBits(first, firstMask & lastMask, value);
        return;
    }
    changeBits(first, firstMask, value);
    rmgFill8((value & 1) ? 0xFF : 0x00, first + 1, lastIndex - 1);
    changeBits(first + lastIndex, lastMask, value);
}

void rmgSetRegion1u(unsigned char *data, int rows, int columns, int rowStep, int xOffset,
                    int value) {
    if (columns <= 0) return;
    for (int r = 0; r < rows; ++r)
        rmgSetBits(value, rowAt(data, 0, 0, r, rowStep) + (xOffset >> 3), 7 - (xOffset & 7),
                   columns);
}

void rmgSetRows8(unsigned char *data, int rows, int columns, int rowStep, int planeStep,
                 int planes, uint8_t value) {
    setRows<uint8_t, rmgFill8>(data, rows, columns, rowStep, planeStep, planes, value);
}

void rmgSetRows16(unsigned char *data, int rows, int columns, int rowStep, int planeStep,
                  int planes, uint16_t value) {
    setRows<uint16_t, rmgFill16>(data, rows, columns, rowStep, planeStep, planes, value);
}

void rmgSetRows32(unsigned char *data, int rows, int columns, int rowStep, int planeStep,
                  int planes, uint32_t value) {
    setRows<uint32_t, rmgFill32>(data, rows, columns, rowStep, planeStep, planes, value);
}

void rmgSetChannel8(unsigned char *data, int rows, int columns, int rowStep, int pixelStep,
                    uint8_t value) {
    setChannel<uint8_t, rmgFillStrided8>(data, rows, columns, rowStep, pixelStep, value);
}

void rmgSetChannel16(unsigned char *data, int rows, int columns, int rowStep, int pixelStep,
                     uint16_t value) {
    setChannel<uint16_t, rmgFillStrided16>(data, rows, columns, rowStep, pixelStep, value);
}

void rmgSetChannel32(unsigned char *data, int rows, int columns, int rowStep, int pixelStep,
                     uint32_t value) {
    setChannel<uint32_t, rmgFillStrided32>(data, rows, columns, rowStep, pixelStep, value);
}

// ---------------------------------------------------------------------------
// The tile walk
// ---------------------------------------------------------------------------

namespace rmg {

bool tileWalkStart(TileWalk *walk, const int *tile) {
    // The parts are those of the region's own grid, also when `tile` then
    // shrinks the grid to one tile.
    walk->firstWidth = ownTilePartSize(0, walk->nTilesX, walk->xInTile, walk->tileWidth,
                                       walk->columns);
    walk->lastWidth = ownTilePartSize(walk->nTilesX - 1, walk->nTilesX, walk->xInTile,
                                      walk->tileWidth, walk->columns);
    walk->firstHeight = ownTilePartSize(0, walk->nTilesY, walk->yInTile, walk->tileHeight,
                                        walk->rows);
    walk->lastHeight = ownTilePartSize(walk->nTilesY - 1, walk->nTilesY, walk->yInTile,
                                       walk->tileHeight, walk->rows);
    walk->startRow = 0;
    walk->startColumn = 0;
    if (tile == nullptr) return true;

    const int tx = tile[0];
    const int ty = tile[1];
    if (tx < walk->firstTileX || tx > add32(walk->firstTileX, walk->nTilesX - 1) ||
        ty < walk->firstTileY || ty > add32(walk->firstTileY, walk->nTilesY - 1))
        return false;
    walk->nTilesX = 1;
    walk->nTilesY = 1;
    walk->startColumn = tx - walk->firstTileX;
    walk->startRow = sub32(tx, walk->firstTileY);  // the column value, not tile[1]
    return true;
}

TileHeader::TileHeader(const RmgImage &image, const TileWalk &walk) : header_(image) {
    header_.width = walk.tileWidth;
    header_.height = walk.tileHeight;
    header_.tileInfo = nullptr;
    header_.imageData = nullptr;
    roi_ = RmgROI{image.roi != nullptr ? image.roi->coi : 0, 0, 0, 0, 0};
    header_.roi = &roi_;
}

void TileHeader::setPart(const TileWalk &walk, int i, int j) {
    // The first part wins where the grid has one row or column.
    auto part = [](int index, int count, int inTile, int first, int last, int whole,
                   int *offset, int *size) {
        *offset = ownTilePartStart(index, inTile);
        *size = index == 0 ? first : index == count - 1 ? last : whole;
    };
    part(i, walk.nTilesY, walk.yInTile, walk.firstHeight, walk.lastHeight, walk.tileHeight,
         &roi_.yOffset, &roi_.height);
    part(j, walk.nTilesX, walk.xInTile, walk.firstWidth, walk.lastWidth, walk.tileWidth,
         &roi_.xOffset, &roi_.width);
}

}  // namespace rmg

// ---------------------------------------------------------------------------
// The operation
// ---------------------------------------------------------------------------

extern "C" void rmgSet(RmgImage *image, int fillValue, const int *tile) {
    // No test of the status follows the header test: Set works after an
    // earlier failure as well.
    if (!rmg::openImages("rmgSet", kModule, __LINE__, {image})) return;
    if (image->tileInfo != nullptr)
        setTiles(image, fillValue, tile);
    else
        setPlain(image, fillValue);
}
