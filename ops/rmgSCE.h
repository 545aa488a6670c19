// Fill and copy: the row functions of rmgSet, and the tile walk that the
// operations of this module share. Internal to the library.
#ifndef RMG_OPS_RMGSCE_H
#define RMG_OPS_RMGSCE_H

#include <cstdint>

#include "rmg.h"

// ---------------------------------------------------------------------------
// Row functions of rmgSet
// ---------------------------------------------------------------------------

// Sets (value & 1) or clears `count` bits, from bit number `bitPos` (7 is
// the most significant) of byte `first` towards lower bit numbers and on
// over byte borders. Every other bit of the bytes touched stays. A count of
// 0 or below touches nothing.
void rmgSetBits(int value, unsigned char *first, int bitPos, int count);

// rmgSetBits on each of `rows` rows, `columns` bits from bit column
// `xOffset` of a row that starts at `data`.
void rmgSetRegion1u(unsigned char *data, int rows, int columns, int rowStep, int xOffset,
                    int value);

// Each of `planes` planes, each row: one fill of `columns` elements.
void rmgSetRows8(unsigned char *data, int rows, int columns, int rowStep, int planeStep,
                 int planes, uint8_t value);
void rmgSetRows16(unsigned char *data, int rows, int columns, int rowStep, int planeStep,
                  int planes, uint16_t value);
void rmgSetRows32(unsigned char *data, int rows, int columns, int rowStep, int planeStep,
                  int planes, uint32_t value);

// Each row: `value` into `columns` elements, `pixelStep` elements apart.
void rmgSetChannel8(unsigned char *data, int rows, int columns, int rowStep, int pixelStep,
                    uint8_t value);
void rmgSetChannel16(unsigned char *data, int rows, int columns, int rowStep, int pixelStep,
                     uint16_t value);
void rmgSetChannel32(unsigned char *data, int rows, int columns, int rowStep, int pixelStep,
                     uint32_t value);

namespace rmg {

// ---------------------------------------------------------------------------
// The tile walk of Set, Copy and Exchange
// ---------------------------------------------------------------------------

// The grid of tiles that an operation walks over a tiled image's region,
// the parts used of its first and last tile columns and rows, and the grid
// row and column the walk starts at.
struct TileWalk {
    int rows, columns, xInTile, yInTile, tileHeight, tileWidth;
    int firstTileX, firstTileY, nTilesX, nTilesY;
    int firstWidth, lastWidth, firstHeight, lastHeight;
    int startRow, startColumn;
};

// Completes a walk whose first ten fields hold a grid (from ownTileRect or
// ownTileRectPair): works out the parts of the first and last tiles, then
// applies the `tile` argument. Null walks the whole grid. Otherwise tile[0]
// and tile[1] are a tile column and row: outside the grid the result is
// false and nothing is to be walked; inside, the grid shrinks to one tile
// column and row, the start column is tile[0] - firstTileX and the start row
// tile[0] - firstTileY. The row is formed from the column value as well, so
// the walk runs only when tile[0] is the region's first tile column, and
// then over tile rows tile[0] to firstTileY when tile[0] is not above
// firstTileY (grid rows below 0 are whole tile heights).
bool tileWalkStart(TileWalk *walk, const int *tile);

// Visits the grid row by row from the start row and column: visit(i, j)
// for grid row i and column j, and stops when a visit returns false.
template <typename Visit>
void forEachTile(const TileWalk &walk, Visit visit) {
    for (int i = walk.startRow; i < walk.nTilesY; ++i)
        for (int j = walk.startColumn; j < walk.nTilesX; ++j)
            if (!visit(i, j)) return;
}

// A plain image of one tile's size that stands for the tile of a tiled
// image during a walk: a copy of the tiled image's header with the tile's
// width and height, no tile record and its own ROI, whose coi is the
// image's coi (0 without a ROI). imageSize and widthStep stay those of the
// whole image: the first passes the header test, and the row step of an
// image in memory is computed from the width, so it is the tile's.
class TileHeader {
public:
    TileHeader(const RmgImage &image, const TileWalk &walk);
    TileHeader(const TileHeader &) = delete;
    TileHeader &operator=(const TileHeader &) = delete;

    // The ROI takes the part of grid row i and column j used by the region.
    void setPart(const TileWalk &walk, int i, int j);
    RmgImage *image() { return &header_; }
    const RmgROI &roi() const { return roi_; }

private:
    RmgImage header_;
    RmgROI roi_;
};

}  // namespace rmg

#endif
