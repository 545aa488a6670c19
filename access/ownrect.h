// Region resolution: from a validated image to the address, strides and
// sizes of its region, or to the tile grid that covers it.
#ifndef RMG_ACCESS_OWNRECT_H
#define RMG_ACCESS_OWNRECT_H

#include "rmg.h"

// The clipped region of an image in memory: first byte (in its channel of
// interest, if any), row step (computed again, not read from widthStep),
// channel count of the region, rows and columns after clipping (either may
// be 0) and the step from one plane to the next. For a 1-bit image `data`
// stands at the start of the row; the caller takes the bit offset from the
// ROI's unclipped xOffset.
void ownImageRect(const RmgImage *image, unsigned char **data, int *rowStep, int *channels,
                  int *rows, int *columns, int *planeStep);

// The tile grid over a tiled image's region, which is not clipped against
// the image: region size, offset of the region in its first tile, tile
// size, first tile column and row, and the number of tile columns and rows.
void ownTileRect(const RmgImage *image, int *rows, int *columns, int *xInTile, int *yInTile,
                 int *tileHeight, int *tileWidth, int *firstTileX, int *firstTileY, int *nTilesX,
                 int *nTilesY);

// As ownTileRect for tiledImage's region, with the size that both images'
// regions can hold. Returns 0, storing nothing, when that size is 0.
int ownTileRectPair(const RmgImage *otherImage, const RmgImage *tiledImage, int *rows,
                    int *columns, int *xInTile, int *yInTile, int *tileHeight, int *tileWidth,
                    int *firstTileX, int *firstTileY, int *nTilesX, int *nTilesY);

// The part of tile column (or row) `index` of a grid of `count` that the
// region uses: the first part runs from `inTile` to the tile's end, the last
// ends with the region, the others are whole; a grid of one is the region's
// `extent` itself.
int ownTilePartSize(int index, int count, int inTile, int tileSize, int extent);

// Where that part starts within its tile: `inTile` for the first, else 0.
inline int ownTilePartStart(int index, int inTile) { return index == 0 ? inTile : 0; }

#endif
