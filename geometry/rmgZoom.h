// Zoom: the frame of rmgZoom (the rectangles, the choice of kernel and the
// tile grid of its walks). Internal to the library (C++ linkage).
#ifndef RMG_GEOMETRY_RMGZOOM_H
#define RMG_GEOMETRY_RMGZOOM_H

#include "rmg.h"

// Resamples the source's region into the destination's region, both images
// in memory, with the interpolation given (RMG_INTER_xxx, not tested
// again) and the position of the first destination pixel inside its source
// pixel (xFrac, yFrac). The regions come from each image's roi: the source's
// columns and rows are cut to the image, but interpolation stops at the
// image's last column and row, not the region's; the destination is cut to
// what the source can feed. A channel mismatch, a signed depth or an empty
// region does nothing, in silence.
//
// Memory: only the bytes from imageData up to imageData + imageSize of each
// image are touched. Destination rows (and, in plane order, planes) that
// would reach beyond are not written. Where the rules would read a source
// element outside those bytes (a region hanging out of the image through a
// tile piece, a one-column block read to the left of its start, a widthStep
// the application changed), the kernel reads 0 in its place instead: the
// source elements it needs are then first copied into a scratch block
// around which everything else is 0.
void ownZoomRect(const RmgImage *src, const RmgImage *dst, double xScale, double yScale,
                 int interpolation, double xFrac, double yFrac);

// The grid of a tiled destination's region (or, in the walk over a tiled
// source, of 128 x 128 blocks given as a tile record).
struct RmgZoomGrid {
    int rows, cols, xStart, yStart, th, tw, firstTileCol, firstTileRow, tileCols, tileRows;
};

// Fills the grid; returns 0 when the rows or columns the source can feed
// are 0, else 1. The source's size is its roi's width and height (not cut
// to the image) or the whole image.
int ownZoomTileGrid(const RmgImage *src, const RmgImage *dst, double xScale, double yScale,
                    RmgZoomGrid *grid);

#endif
