// Decimate: the frame of rmgDecimate (accessors, the choice of kernel and
// the tile walks). Internal to the library (C++ linkage).
#ifndef RMG_GEOMETRY_RMGDECIM_H
#define RMG_GEOMETRY_RMGDECIM_H

#include "rmg.h"

// Accessors on an image record.
int ownDecimateChannelCount(const RmgImage *image);
int ownDecimateMinChannels(const RmgImage *src, const RmgImage *dst);
int ownDecimateRows(const RmgImage *image);
int ownDecimateCols(const RmgImage *image);
int ownDecimateFit(int srcCount, int dstCount, int u, int l);
int ownDecimateDstRows(const RmgImage *src, const RmgImage *dst, int yU, int yL);
int ownDecimateDstCols(const RmgImage *src, const RmgImage *dst, int xU, int xL);
void ownDecimateOrigin(int *channel, int *y, int *x, const RmgImage *image);
int ownDecimateElemBytes(int count, unsigned int depth);
int ownDecimateRowElements(const RmgImage *image);
int ownDecimateTileRowElements(const RmgImage *image);
// Plane, row and pixel strides in elements (bits for depth 1).
void ownDecimateStrides(const RmgImage *image, int *plane, int *row, int *pixel);
void ownDecimateTileStrides(const RmgImage *image, int *plane, int *row, int *pixel);

// The operation after rmgDecimate's checks; 1 on success, 0 on failure.
int ownDecimate(const RmgImage *srcImage, RmgImage *dstImage, int xU, int xL, int yU, int yL,
                int interpolate, const int *tilePoint);

#endif
