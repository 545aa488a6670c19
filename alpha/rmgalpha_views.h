// Tile views of the alpha composition module (rmgalpha): a view set shows
// each image of an operation one rectangle at a time as a plain image whose
// ROI is that rectangle, so that the composition kernels, which know only
// images in memory, run over tiled images too. A rectangle inside one tile
// is shown in the tile's own memory; a rectangle across tiles is gathered
// into a scratch image and, for an image that is written, scattered back
// when the view is put. Internal to the library (C++ linkage, not exported).
#ifndef RMG_ALPHA_RMGALPHA_VIEWS_H
#define RMG_ALPHA_RMGALPHA_VIEWS_H

#include "rmg.h"

// One image of a view set. `image` null marks a free entry.
struct RmgTileView {
    const RmgImage *image;   // the image; null: free entry
    int useCount;            // gets open in the current rectangle
    int mode;                // RMG_TILE_READ or RMG_TILE_WRITE
    RmgImage *gatherHeader;  // plain image: its shadow header; tiled: the scratch image
    RmgROI *gatherRoi;       // ROI of gatherHeader
    RmgImage *tileHeader;    // tiled image: one tile's header, imageData set per tile
    RmgROI *tileRoi;         // ROI of tileHeader
    RmgImage *view;          // the header given out for the current rectangle
    int tileWidth;           // from the image's tileInfo
    int tileHeight;
    unsigned char **tileTable;  // gathered tiles' tileData, row by row
    int tableColumns;        // entries in a row of tileTable
    int firstColumn;         // the tiles the current rectangle touches
    int lastColumn;
    int firstRow;
    int lastRow;
};

// The set: the rectangle is relative to each image's own ROI origin.
struct RmgTileViews {
    int viewCount;  // entries in views
    int tileWidth;  // tile size of the walk
    int tileHeight;
    int failed;     // 1 once a call-back has left tileData null
    int rectX;
    int rectY;
    int rectWidth;
    int rectHeight;
    RmgTileView *views;
};

// A set of viewCount free entries, from malloc (not tested).
RmgTileViews *ownViewsCreate(int viewCount, int tileWidth, int tileHeight);
// Registers `image` in `mode` and returns its 1-based index; an image already
// in the set keeps its entry and its first mode.
int ownViewsAdd(RmgTileViews *set, const RmgImage *image, int mode);
void ownViewsSetRect(RmgTileViews *set, int x, int y, int width, int height);
// The header to use for entry `index` in the current rectangle; null when a
// call-back left tileData null (the set's `failed` is then 1).
RmgImage *ownViewsGet(RmgTileViews *set, int index);
// Gives one view back (a written, gathered view is scattered to its tiles).
void ownViewsPut(RmgTileViews *set, int index);
// Gives back every view that is open.
void ownViewsPutAll(RmgTileViews *set);
// Gives back open views, frees everything the set made and the set itself;
// returns `failed`.
int ownViewsFree(RmgTileViews *set);

// The tile walk of the module's operations (steps 1-6 of the walk).
// `gridImage`: the first tiled image, which gives the tile size and the ROI offsets.
// `add` registers the operation's images in its order; `run` gets the views of the
// current rectangle (in the operation's own order and checking nulls where the
// operation does), runs the kernel with (rows, columns) of the rectangle, and returns
// false when a get gave null. On false or a non-zero ownViewsFree the walk raises
// RMG_StsError "ERROR in Tiling callBack" under funcName, module "rmgalpha", once.
struct OwnViewsWalkOps {
    void (*add)(void *context, RmgTileViews *set);
    bool (*run)(void *context, RmgTileViews *set, int rows, int columns);
};
// tilePoint counts only when dstImage is tiled.
void ownViewsWalk(const char *funcName, const RmgImage *gridImage, const RmgImage *dstImage,
                  const int *tilePoint, int rows, int columns, int viewCount,
                  const OwnViewsWalkOps &ops, void *context);

#endif
