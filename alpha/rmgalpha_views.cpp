// Tile views of the alpha composition module, and the tile walk its
// operations share.
//
// Each image of an operation has an entry in a view set. A plain image is
// shown through a shadow header of its own size and pixels, whose ROI is set
// to the rectangle. A tiled image is shown through a header of one tile's
// size whose imageData is the tile, when the rectangle lies inside one tile;
// otherwise the rectangle's tiles are gathered with rmgCopy into a scratch
// image of the set's tile size and, for an image that is written, copied
// back into them when the view is put. All headers made here are plain
// (no tileInfo), so the kernels see images in memory.
//
// The gather and the scatter are rmgCopy calls, and rmgCopy does nothing
// while the status is negative: after an earlier failure a gathered view
// holds what the scratch image held, and nothing is scattered back, while
// views in a tile's own memory are written as always.
#include "alpha/rmgalpha_views.h"

#include <cstdlib>

#include "core/rmgint.h"
#include "rmg.h"

using rmg::add32;
using rmg::mul32;
using rmg::sub32;

namespace {

constexpr char kModule[] = "rmgalpha";

// A plain header with the layout fields of `image`, the given size and ROI,
// and no tileInfo.
RmgImage *layoutHeader(const RmgImage *image, int height, int width, RmgROI *roi) {
    return rmgCreateImageHeader(image->nChannels, image->alphaChannel, image->depth,
                                image->colorModel, image->channelSeq, image->dataOrder,
                                image->origin, image->align, height, width, roi, nullptr,
                                nullptr);
}

// The entry of a 1-based index, or null for an index outside the set or a
// free entry.
RmgTileView *entryOf(RmgTileViews *set, int index) {
    if (set == nullptr || index < 1 || index > set->viewCount) return nullptr;
    RmgTileView *entry = &set->views[index - 1];
    return entry->image != nullptr ? entry : nullptr;
}

// One call of the tile call-back; the tile is what it leaves in tileData.
unsigned char *fetchTile(const RmgImage *image, int column, int row, int mode) {
    image->tileInfo->callBack(image, column, row, mode);
    return image->tileInfo->tileData;
}

// Where the part of a rectangle that falls in tile `index` (counted from the
// rectangle's first tile) starts in that tile and in the rectangle, and its
// extent: from `inTile` in the first tile and 0 in the others, to the tile's
// end but no further than the rectangle's end.
struct Part {
    int inTile, inRect, extent;
};

Part partOf(int index, int inFirstTile, int tileSize, int rectSize) {
    Part p;
    p.inTile = index == 0 ? inFirstTile : 0;
    p.inRect = index == 0 ? 0 : add32(sub32(tileSize, inFirstTile), mul32(index - 1, tileSize));
    p.extent = sub32(tileSize, p.inTile);
    const int rest = sub32(rectSize, p.inRect);
    if (p.extent > rest) p.extent = rest;
    return p;
}

// The offsets of the current rectangle in the entry's image (the rectangle
// plus the image's ROI offsets) and the ROI's coi.
struct Origin {
    int x, y, coi;
};

Origin originOf(const RmgTileViews *set, const RmgImage *image) {
    const RmgROI *roi = image->roi;
    return Origin{add32(set->rectX, roi != nullptr ? roi->xOffset : 0),
                  add32(set->rectY, roi != nullptr ? roi->yOffset : 0),
                  roi != nullptr ? roi->coi : 0};
}

// Points the entry's tile header at tile (row i, column j) of the current
// rectangle's tiles, with the part of the rectangle in it as its ROI, and
// the gather ROI at the same part of the rectangle. Used by the gather and
// the scatter alike, so both move the same pixels.
void aimAtPart(const RmgTileViews *set, RmgTileView *entry, const Origin &at, int i, int j,
               unsigned char *tile) {
    const int px = sub32(at.x, mul32(entry->firstColumn, entry->tileWidth));
    const int py = sub32(at.y, mul32(entry->firstRow, entry->tileHeight));
    const Part column = partOf(j, px, entry->tileWidth, set->rectWidth);
    const Part row = partOf(i, py, entry->tileHeight, set->rectHeight);
    entry->tileHeader->imageData = tile;
    rmgSetROI(entry->tileRoi, 0, column.inTile, row.inTile, row.extent, column.extent);
    rmgSetROI(entry->gatherRoi, 0, column.inRect, row.inRect, row.extent, column.extent);
}

// Makes the scratch image and the tile table of a tiled entry, once for the
// set's life. False when memory runs out (see ownViewsGet).
bool makeGather(const RmgTileViews *set, RmgTileView *entry) {
    if (entry->gatherHeader != nullptr)
        return entry->gatherHeader->imageData != nullptr && entry->tileTable != nullptr;
    entry->gatherRoi = rmgCreateROI(0, 0, 0, 0, 0);
    entry->gatherHeader =
        layoutHeader(entry->image, set->tileHeight, set->tileWidth, entry->gatherRoi);
    if (entry->gatherHeader == nullptr) return false;
    rmgAllocateImage(entry->gatherHeader, -1);
    // A rectangle is never larger than the set's tile (ownViewsSetRect sees
    // to that), so it touches at most this many tile columns and rows.
    entry->tableColumns = (entry->tileWidth + set->tileWidth - 1) / entry->tileWidth + 1;
    const int tableRows = (entry->tileHeight + set->tileHeight - 1) / entry->tileHeight + 1;
    entry->tileTable = static_cast<unsigned char **>(
        std::calloc(static_cast<size_t>(entry->tableColumns) * static_cast<size_t>(tableRows),
                    sizeof(unsigned char *)));
    return entry->gatherHeader->imageData != nullptr && entry->tileTable != nullptr;
}

bool oneTile(const RmgTileView *entry) {
    return entry->firstColumn == entry->lastColumn && entry->firstRow == entry->lastRow;
}

}  // namespace

RmgTileViews *ownViewsCreate(int viewCount, int tileWidth, int tileHeight) {
    auto *set = static_cast<RmgTileViews *>(std::malloc(sizeof(RmgTileViews)));
    const int count = viewCount > 0 ? viewCount : 0;
    auto *views = static_cast<RmgTileView *>(std::calloc(count > 0 ? count : 1, sizeof(RmgTileView)));
    // No memory: no set (the walk reports it as a failed call-back).
    if (set == nullptr || views == nullptr) {
        std::free(set);
        std::free(views);
        return nullptr;
    }
    *set = RmgTileViews{count, tileWidth, tileHeight, 0, 0, 0, 0, 0, views};
    return set;
}

int ownViewsAdd(RmgTileViews *set, const RmgImage *image, int mode) {
    if (set == nullptr || image == nullptr) return 0;
    RmgTileView *entry = nullptr;
    int index = 0;
    for (int i = 0; i < set->viewCount; ++i) {
        if (set->views[i].image == image) return i + 1;
        if (set->views[i].image == nullptr && entry == nullptr) {
            entry = &set->views[i];
            index = i + 1;
        }
    }
    // A set with no free entry left takes no more images: index 0 names no
    // entry, and its get gives null.
    if (entry == nullptr) return 0;
    *entry = RmgTileView{};
    entry->image = image;
    entry->mode = mode;
    if (image->tileInfo != nullptr) {
        entry->tileRoi = rmgCreateROI(0, 0, 0, 0, 0);
        entry->tileWidth = image->tileInfo->width;
        entry->tileHeight = image->tileInfo->height;
        entry->tileHeader =
            layoutHeader(image, entry->tileHeight, entry->tileWidth, entry->tileRoi);
    } else {
        entry->gatherRoi = rmgCreateROI(0, 0, 0, 0, 0);
        entry->gatherHeader = layoutHeader(image, image->height, image->width, entry->gatherRoi);
        if (entry->gatherHeader != nullptr) {
            entry->gatherHeader->imageData = image->imageData;
            // The kernels keep within a header's imageSize; the shadow's is
            // the size of the buffer the image itself claims, not one worked
            // out again from its layout.
            entry->gatherHeader->imageSize = image->imageSize;
            entry->gatherHeader->widthStep = image->widthStep;
        }
    }
    return index;
}

void ownViewsSetRect(RmgTileViews *set, int x, int y, int width, int height) {
    if (set == nullptr) return;
    // The scratch images and tile tables hold a rectangle of the set's tile
    // size at most, which is all a walk asks for; a larger rectangle is cut
    // to that size so that neither is overrun.
    set->rectX = x;
    set->rectY = y;
    set->rectWidth = width < set->tileWidth ? width : set->tileWidth;
    set->rectHeight = height < set->tileHeight ? height : set->tileHeight;
}

RmgImage *ownViewsGet(RmgTileViews *set, int index) {
    RmgTileView *entry = entryOf(set, index);
    if (entry == nullptr) return nullptr;
    if (entry->useCount++ > 0) return entry->view;
    const RmgImage *image = entry->image;
    const Origin at = originOf(set, image);

    // A get that fails leaves no view, so that a second get of the same
    // entry in this rectangle gives null as well rather than the header of
    // an earlier rectangle, whose tiles are given back.
    auto fail = [&]() -> RmgImage * {
        set->failed = 1;
        entry->view = nullptr;
        return nullptr;
    };

    if (image->tileInfo == nullptr) {
        if (entry->gatherHeader == nullptr) return fail();
        rmgSetROI(entry->gatherRoi, at.coi, at.x, at.y, set->rectHeight, set->rectWidth);
        return entry->view = entry->gatherHeader;
    }
    // A header that could not be made counts as a tile that could not be
    // had: the alternative is a write through a null header.
    if (entry->tileHeader == nullptr) return fail();

    entry->firstColumn = at.x / entry->tileWidth;
    entry->lastColumn = add32(at.x, set->rectWidth - 1) / entry->tileWidth;
    entry->firstRow = at.y / entry->tileHeight;
    entry->lastRow = add32(at.y, set->rectHeight - 1) / entry->tileHeight;

    if (oneTile(entry)) {
        unsigned char *tile = fetchTile(image, entry->firstColumn, entry->firstRow, entry->mode);
        if (tile == nullptr) return fail();
        entry->tileHeader->imageData = tile;
        rmgSetROI(entry->tileRoi, at.coi, sub32(at.x, mul32(entry->firstColumn, entry->tileWidth)),
                  sub32(at.y, mul32(entry->firstRow, entry->tileHeight)), set->rectHeight,
                  set->rectWidth);
        return entry->view = entry->tileHeader;
    }

    // Several tiles. No scratch image or table (no memory) fails the get
    // like a null tile, before any tile is asked for; so does a rectangle
    // whose tiles the table can't hold, which a rectangle no larger than the
    // set's tile never has. A null first entry tells the put that no tile
    // of this rectangle was asked for.
    const int tableRows = (entry->tileHeight + set->tileHeight - 1) / entry->tileHeight + 1;
    if (!makeGather(set, entry) ||
        sub32(entry->lastColumn, entry->firstColumn) >= entry->tableColumns ||
        sub32(entry->lastRow, entry->firstRow) >= tableRows) {
        if (entry->tileTable != nullptr) entry->tileTable[0] = nullptr;
        return fail();
    }
    for (int i = 0; i <= entry->lastRow - entry->firstRow; ++i) {
        for (int j = 0; j <= entry->lastColumn - entry->firstColumn; ++j) {
            unsigned char *tile =
                fetchTile(image, entry->firstColumn + j, entry->firstRow + i, entry->mode);
            entry->tileTable[i * entry->tableColumns + j] = tile;
            if (tile == nullptr) return fail();
            aimAtPart(set, entry, at, i, j, tile);
            rmgCopy(entry->tileHeader, entry->gatherHeader, nullptr);
        }
    }
    rmgSetROI(entry->gatherRoi, at.coi, 0, 0, set->rectHeight, set->rectWidth);
    return entry->view = entry->gatherHeader;
}

void ownViewsPut(RmgTileViews *set, int index) {
    RmgTileView *entry = entryOf(set, index);
    if (entry == nullptr || entry->useCount == 0) return;
    entry->useCount = 0;
    const RmgImage *image = entry->image;
    if (image->tileInfo == nullptr || entry->tileHeader == nullptr) return;

    if (oneTile(entry)) {
        if (image->tileInfo->tileData != nullptr)
            image->tileInfo->callBack(image, entry->firstColumn, entry->firstRow,
                                      RMG_TILE_RELEASE);
        return;
    }
    // Without a table the get failed before it asked for any tile.
    if (entry->tileTable == nullptr) return;
    const Origin at = originOf(set, image);
    for (int i = 0; i <= entry->lastRow - entry->firstRow; ++i) {
        for (int j = 0; j <= entry->lastColumn - entry->firstColumn; ++j) {
            unsigned char *tile = entry->tileTable[i * entry->tableColumns + j];
            image->tileInfo->tileData = tile;
            // The get stopped at this tile: those behind it were not asked for.
            if (tile == nullptr) return;
            if (entry->mode == RMG_TILE_WRITE) {
                aimAtPart(set, entry, at, i, j, tile);
                rmgCopy(entry->gatherHeader, entry->tileHeader, nullptr);
            }
            image->tileInfo->callBack(image, entry->firstColumn + j, entry->firstRow + i,
                                      RMG_TILE_RELEASE);
        }
    }
}

void ownViewsPutAll(RmgTileViews *set) {
    if (set == nullptr) return;
    for (int i = 0; i < set->viewCount; ++i)
        if (set->views[i].image != nullptr && set->views[i].useCount > 0) ownViewsPut(set, i + 1);
}

int ownViewsFree(RmgTileViews *set) {
    if (set == nullptr) return 0;
    for (int i = 0; i < set->viewCount; ++i) {
        RmgTileView *entry = &set->views[i];
        if (entry->image == nullptr) continue;
        ownViewsPut(set, i + 1);
        // The scratch pixels are the set's only for a tiled image; a plain
        // image's shadow header holds the image's own.
        if (entry->image->tileInfo != nullptr && entry->gatherHeader != nullptr)
            rmgDeallocateImageData(entry->gatherHeader);
        rmgDeallocate(entry->gatherHeader, RMG_DEALLOC_HEADER);
        rmgDeallocate(entry->tileHeader, RMG_DEALLOC_HEADER);
        rmgDeleteROI(entry->gatherRoi);
        rmgDeleteROI(entry->tileRoi);
        std::free(entry->tileTable);
        *entry = RmgTileView{};
    }
    const int failed = set->failed;
    // The views array goes with the set: nothing can reach it afterwards, and
    // keeping it would only leak one block per operation on tiled images.
    std::free(set->views);
    std::free(set);
    return failed;
}

// ---------------------------------------------------------------------------
// The tile walk
// ---------------------------------------------------------------------------

namespace {

// Runs the operation over one rectangle: set it, get the views and run the
// kernel (ops.run), give the views back. False when a get failed; the views
// then stay open for ownViewsFree.
bool runRect(RmgTileViews *set, const OwnViewsWalkOps &ops, void *context, int x, int y,
             int width, int height) {
    ownViewsSetRect(set, x, y, width, height);
    if (!ops.run(context, set, set->rectHeight, set->rectWidth)) return false;
    ownViewsPutAll(set);
    return true;
}

// The extent of the first step of a walk over an axis whose region starts
// at `offset` in an image of tiles `tileSize` long: up to the next tile
// boundary, tileSize * (offset / tileSize + 1) - offset, 1 .. tileSize.
int firstStep(int offset, int tileSize) {
    return sub32(mul32(tileSize, offset / tileSize + 1), offset);
}

}  // namespace

void ownViewsWalk(const char *funcName, const RmgImage *gridImage, const RmgImage *dstImage,
                  const int *tilePoint, int rows, int columns, int viewCount,
                  const OwnViewsWalkOps &ops, void *context) {
    if (gridImage == nullptr || gridImage->tileInfo == nullptr) return;
    const int tw = gridImage->tileInfo->width;
    const int th = gridImage->tileInfo->height;
    const RmgROI *roi = gridImage->roi;
    const int ox = roi != nullptr ? roi->xOffset : 0;
    const int oy = roi != nullptr ? roi->yOffset : 0;

    const bool onePoint = tilePoint != nullptr && dstImage != nullptr && dstImage->tileInfo != nullptr;
    int left = 0;
    int top = 0;
    if (onePoint) {
        left = sub32(mul32(tilePoint[0] / tw, tw), ox);
        top = sub32(mul32(tilePoint[1] / th, th), oy);
        if (left >= columns || add32(left, tw) <= 0 || top >= rows || add32(top, th) <= 0) return;
    }

    RmgTileViews *set = ownViewsCreate(viewCount, tw, th);
    bool ok = set != nullptr;
    if (ok) ops.add(context, set);
    if (ok && onePoint) {
        int w = add32(left, tw) > columns ? sub32(columns, left) : tw;
        int h = add32(top, th) > rows ? sub32(rows, top) : th;
        if (left < 0) {
            w = add32(w, left);
            left = 0;
        }
        if (top < 0) {
            h = add32(h, top);
            top = 0;
        }
        ok = runRect(set, ops, context, left, top, w, h);
    } else if (ok) {
        // Bands of rows, each cut at a tile boundary of the grid image, and
        // steps of columns within them likewise.
        for (int y = 0, h = firstStep(oy, th); ok && y < rows; y += h, h = th) {
            if (h > rows - y) h = rows - y;
            for (int x = 0, w = firstStep(ox, tw); ok && x < columns; x += w, w = tw) {
                if (w > columns - x) w = columns - x;
                ok = runRect(set, ops, context, x, y, w, h);
            }
        }
    }
    if (ownViewsFree(set) != 0 || !ok)
        rmgError(RMG_StsError, funcName, "ERROR in Tiling callBack", kModule, __LINE__);
}
