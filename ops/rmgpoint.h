// The frame of the point operations (scalar add and subtract, logical
// operations): the opening checks, the region helpers, the case analysis of
// a row kernel and the tile walk over source and destination. Internal to
// the library (C++ linkage, not exported).
#ifndef RMG_OPS_RMGPOINT_H
#define RMG_OPS_RMGPOINT_H

#include <cstddef>

#include "rmg.h"

// The region of an image as the tile walk sees it: the ROI's offset and its
// size cut at the image's edge (the size may come out 0 or negative), or the
// whole image. `endX` and `endY` are begX + width and begY + height; the walk
// sets them again for the size that all its images share.
struct RmgRoiRect {
    int begX;
    int endX;
    int begY;
    int endY;
    int height;
    int width;
};

// Where the walk stands in one image. For a tiled image: the first tile
// column of the region (begX, endX, column), the current tile row (begY,
// endY, row), the tile size, and the working begX, endX and column that
// run along the current tile row.
struct RmgTileCursor {
    int tiled;
    int begX;
    int endX;
    int begY;
    int endY;
    int column;
    int row;
    int tileHeight;
    int tileWidth;
    int workBegX;
    int workEndX;
    int workColumn;
};

// The rectangle of an image's region (see RmgRoiRect).
void rmgRoiRect(const RmgImage *image, RmgRoiRect *rect);

// Prepares the cursor of one image and its header copy. An untiled image
// keeps width, height and imageData in its copy. For a tiled image the
// copy's tileInfo is cleared, its widthStep is that of one tile, its width
// and height are the tile's, and its imageSize is one tile's bytes; the
// cursor starts at the tile that holds the rectangle's first element.
void rmgTileWalkInit(const RmgImage *image, RmgImage *copy, const RmgRoiRect *rect,
                     RmgTileCursor *cursor);

// True when both images have the same height, width and imageSize and each
// either has no ROI or a ROI at offset 0 that covers the image, with coi 0
// (or coi 1 in a one-channel image): the two may then be taken as flat
// arrays of imageSize bytes, row padding included.
bool rmgIsWholeImage(const RmgImage *a, const RmgImage *b);

// What a row kernel touches in an image: bytes in one row of the region,
// rows, channels processed; the result is the byte offset of the region's
// first element from imageData, or -1 when there is nothing to do. Rows or
// columns may come out 0 or negative for a ROI beyond the image's edge;
// callers treat that as an empty region. The row stride is computed again
// from the header (rmgRunStride), not read from widthStep.
int rmgRunGeometry(const RmgImage *image, int *rowBytes, int *rows, int *channels);

// The row stride rmgRunGeometry works with: rmgWidthStep of the header.
int rmgRunStride(const RmgImage *image);

// The region of a 1-bit image: width and height (each the smaller of ROI
// and image, the offset not taken off), the bit phase of the first column
// and, as result, the byte offset widthStep * yOffset + xOffset / 8; -1 for
// an image whose depth is not 1.
int rmgBitRect(const RmgImage *image, int *width, int *height, int *phase);

// The opening of a point operation with one source: both headers, then
// "(srcImage->depth != dstImage->depth)", "(srcImage->dataOrder !=
// dstImage->dataOrder)" and "(nChSrc != nChDst)". Raises RMG_StsBadArg under
// the operation's name and module on the first fault and returns false.
bool rmgPointOpen(const RmgImage *srcImage, const RmgImage *dstImage, const char *funcName,
                  const char *module);

// Channels an image brings to a point operation: 1 with a ROI of non-zero
// coi, otherwise nChannels.
int rmgPointChannels(const RmgImage *image);

// The resolved region of a row kernel over up to three images (sources
// first, destination last), after rmgRunGeometry for each.
struct RmgPointPlan {
    char kase;          // 'A', 'B', 'C' or 'D'
    int count;          // images
    int rowBytes;       // bytes of one row, the smallest of the images'
    int rows;           // rows, the smallest of the images'
    int contiguous;     // rowBytes equals widthStep of every image
    int planes;         // case D: the planes to process
    unsigned char *data[3];
    int step[3];        // row stride of each image
    int planeStep[3];   // height * row stride
    int nChannels[3];   // case C: element stride of each image, in elements
    int pixels[3];      // case C: pixels in one row of each image's region
};

// Resolves the images into a plan. False when there is nothing to do, in
// silence: a region that can't be resolved, an empty region, or a
// combination of dataOrder and coi outside the cases:
//   A: all in pixel order, each with all its channels processed;
//   B: all in plane order, each with a ROI of non-zero coi;
//   C: all in pixel order, each with a ROI of non-zero coi;
//   D: all in plane order, each with all its channels processed.
bool rmgPointPlanOf(const RmgImage *const *images, int count, RmgPointPlan *plan);

// One image of the tile walk with the two texts the walk raises for it:
// the tile came back null, and the tile was not cleared on release.
struct RmgWalkImage {
    const RmgImage *image;
    const char *nullText;
    const char *heldText;
};

// The walk's record of an argument with the texts that name it, e.g.
// RMG_WALK_IMAGE(srcImage) raises "(srcImage->tileInfo->tileData ==
// ((void*)(0)))" for a null tile.
#define RMG_WALK_IMAGE(name)                                     \
    RmgWalkImage {                                               \
        name, "(" #name "->tileInfo->tileData == ((void*)(0)))", \
            "(" #name "->tileInfo->tileData != ((void*)(0)))"    \
    }

// The row kernel of a tile walk: called with the header copies, in the
// order of the walk's images.
using RmgWalkKernel = void (*)(void *context, const RmgImage *const *copies);

// The tile walk of the point operations over `count` images (2 or 3,
// sources first, destination last; the first image drives the loops). Each
// image's pieces are handed to the kernel on header copies whose ROI is a
// local record. A non-null tilePos restricts a tiled destination to the
// tile at column tilePos[0], row tilePos[1]. Faults raise RMG_StsBadArg
// under funcName and module and end the walk at once.
void rmgPointTileWalk(const RmgWalkImage *images, int count, const int *tilePos,
                      const char *funcName, const char *module, RmgWalkKernel kernel,
                      void *context);

#endif
