// The tile engine: any rectangle of any image, inside or beyond its edges,
// read into one plain block, and the pieces it is built from. Internal to
// the library (C++ linkage, not exported).
//
// Terms used below:
//  - pixelBytes: bytes of one pixel within a plane: nChannels * element
//    bytes in pixel order, element bytes in plane order, 0 for 1-bit images.
//  - planes: nChannels in plane order, 1 in pixel order.
//  - A 1-bit row holds pixel x in bit 7 - (x & 7) of byte x >> 3 (an
//    arithmetic shift, so negative columns fall in the bytes before the
//    row's start).
//
// Memory: every copy here is told how many bytes its source and its
// destination hold, and an element whose bytes would lie outside either is
// passed over: nothing is read and nothing written for it. The address
// arithmetic is otherwise that of the rules below, to the bit, including
// reads at negative positions or beyond an edge that do stay inside the
// memory (the end of the row before, the next plane, a row's padding).
// Where a rule would reach outside, the element keeps what the destination
// held; ownGetExtendedRect clears its block first, so that is 0 there.
//
// None of these functions raises a status; their callers decide what a
// failure means.
#ifndef RMG_ACCESS_OWNTILE_H
#define RMG_ACCESS_OWNTILE_H

#include <cstddef>

#include "rmg.h"

// Reads the rectangle of `width` columns and `height` rows whose upper left
// corner is column x, row y of the image (either may be negative, the
// rectangle may reach beyond any edge) into a new block from rmgAlloc8, and
// stores its row step (the row of `width` pixels, rounded up to the image's
// align) through `rowStep`. The block holds `planes` planes of
// rowStep * height bytes, then 16 spare bytes, all cleared before the read.
//
// Beyond the edges the image's border rules apply, borderModes[side] & 3
// with borderConsts[side] (top, bottom, left, right):
//  - The rows above and below the image take the top or bottom rule over
//    their whole width, corners included; the left and right rules work
//    only beside the image's own rows.
//  - RMG_BORDER_CONST: above and below, the side's 32-bit fill pattern over
//    the whole rows, padding included (1-bit: all ones if the constant is
//    odd; 8-bit: low byte four times; 16-bit: low half twice; 32-bit: the
//    value). Left and right, the constant by element over those pixels only
//    (1-bit: bits set if odd, else left clear).
//  - RMG_BORDER_REPLICATE: the nearest edge pixel.
//  - RMG_BORDER_REFLECT: mirrored with the edge pixel repeated (column -1
//    is column 0). No limit: beyond an image's size past the edge the read
//    goes on past the other edge.
//  - RMG_BORDER_WRAP: the other side's pixels (column -1 is column
//    width - 1), one wrap only: further out the positions are negative, or
//    beyond the other edge, and are read as they stand.
// The reads on a tiled image are those of ownReadTileRect, with its
// backward-walk rules; a reflected band or part is walked backwards.
//
// Returns null, storing nothing or only the row step, when the image is
// null or its dataOrder, depth or align has no legal value, when width,
// height or nChannels is below what a block can have (negative, or no
// channels), when the block would not fit a 32-bit allocation or memory
// runs out, or when a tile can't be had (the block is then freed; tiles
// given so far in the failing tile row are not released).
unsigned char *ownGetExtendedRect(const RmgImage *image, int x, int y, int width, int height,
                                  int *rowStep);

// Gives back a block of ownGetExtendedRect; null is ignored.
void ownReleaseExtendedRect(void *block);

// Copies the image's pixels from corner (x0, y0) to corner (x1, y1), both
// included, into `dst` at column dstX, row dstY; the destination holds
// `planes` planes dstPlaneStep bytes apart and `dstSize` bytes in all. An
// end below its start walks that axis backwards; destination rows and
// columns always count up. Returns 0 for success, 1 for failure.
//
// An image with imageData is copied with ownCopyBlock, rows widthStep apart
// and planes widthStep * height apart, within its imageSize bytes.
//
// A tiled image is walked by tile rows, each fetched as a whole with
// ownFetchTileRow and released with ownReleaseTileRow. Positions split into
// tile and offset by signed division (toward 0). The walk keeps two rules
// of the tile arithmetic that the results depend on:
//  - A backward walk over columns that crosses a tile border places every
//    tile after the first two columns short, so the second tile overwrites
//    the last two columns the first delivered (1-bit: ORs into them), and
//    the last two columns of the destination range are not written. When
//    the first tile delivers only its column 0, the second starts one
//    column before dstX.
//  - A backward walk over rows that crosses a tile row stops after the
//    first tile row; the rest of the destination keeps what it held.
// Failure: no tileInfo, a tile size below 1, no memory for the tile
// pointers, or a tile that came back null; the tiles of the failing row are
// not released.
int ownReadTileRect(const RmgImage *image, int x0, int y0, int x1, int y1, unsigned char *dst,
                    int dstX, int dstY, int dstRowStep, int dstPlaneStep, int pixelBytes,
                    int planes, size_t dstSize);

// The same copy from one plain block of `srcSize` bytes, rows srcRowStep and
// planes srcPlaneStep apart. pixelBytes above 0: for each plane, source row
// and column, pixelBytes bytes. pixelBytes 0 (1-bit, one plane): each set
// source bit sets its destination bit and a clear one leaves it alone, so
// the copy ORs into the destination. Source and destination don't overlap.
void ownCopyBlock(const unsigned char *src, int x0, int y0, int x1, int y1, int srcRowStep,
                  int srcPlaneStep, unsigned char *dst, int dstX, int dstY, int dstRowStep,
                  int dstPlaneStep, int pixelBytes, int planes, size_t srcSize, size_t dstSize);

// Asks for the tiles tileX + i * step of tile row tileY, i from 0 to
// count - 1, with RMG_TILE_READ, and stores each tileData into pointers[i].
// Goes on after a null tile and returns 1 if any was null, otherwise 0. A
// null call-back counts as a null tile for each (it can't be called).
int ownFetchTileRow(const RmgImage *image, unsigned char **pointers, int count, int tileX,
                    int tileY, int step);

// Releases the tiles of ownFetchTileRow from the last to the first: stores
// pointers[i] into tileData, then calls the call-back with RMG_TILE_RELEASE,
// so that the call-back sees the pointer it gave.
void ownReleaseTileRow(const RmgImage *image, unsigned char *const *pointers, int count, int tileX,
                       int tileY, int step);

// The spread helpers of the border rules, on a block of `planes` planes
// (one for 1-bit). The rectangle of `columns` by `rows` at column x, row y
// lies inside the block.
//
// ownSpreadCorner: every pixel of the rectangle takes the value of pixel
// (x, y). 1-bit: all bits set if that bit is set, otherwise nothing.
void ownSpreadCorner(unsigned char *block, int x, int y, int columns, int rows, int rowStep,
                     int planeStep, int pixelBytes, int planes);
// ownSpreadColumn: in each row, columns x + 1 to x + columns - 1 take the
// pixel at column x of that row. 1-bit: only where that bit is set.
void ownSpreadColumn(unsigned char *block, int x, int y, int columns, int rows, int rowStep,
                     int planeStep, int pixelBytes, int planes);
// ownSpreadRow: rows y + 1 to y + rows - 1 take row y's `columns` pixels
// from column x. 1-bit: only set bits are carried over.
void ownSpreadRow(unsigned char *block, int x, int y, int columns, int rows, int rowStep,
                  int planeStep, int pixelBytes, int planes);

#endif
