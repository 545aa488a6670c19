// The frame of the colour operations: the pointer test, the channel
// resolution, the compatibility checks, the destination walk and the
// driver that all colour operations share. Internal to the library (C++
// linkage, not exported).
#ifndef RMG_COLOR_RMGCOLOR_H
#define RMG_COLOR_RMGCOLOR_H

#include <cstdint>

#include "rmg.h"

// True when both pointers are set and each image has imageData or
// tileInfo; otherwise raises "null_image_pointer" or "null_data_pointer"
// under funcName (module rmgcolor) and gives false.
bool ownCheckImagePointers(const RmgImage *srcImage, const RmgImage *dstImage,
                           const char *funcName);

// The byte offsets from a piece's first byte of the channels that carry the
// three letters (first, second, third result). Plane order: the image's
// channels a plane (rowStep * height) apart, each given to the result its
// channelSeq letter names; other letters, and channels beyond the four
// letters of channelSeq, are skipped, and a result no channel names keeps
// what the caller put there. Pixel order (rmgChannelPointers only): with
// channelSeq starting with 'R' the elements 0, 1, 2 of the pixel, otherwise
// 2, 1, 0, so that the results are red, green, blue.
void ownChannelOffsets(const RmgImage *image, int rowStep, int height, const char *letters,
                       int64_t *first, int64_t *second, int64_t *third);

// The addresses of the R, G and B channels of a piece that starts at base.
void rmgChannelPointers(const RmgImage *image, int rowStep, int height, unsigned char *base,
                        unsigned char **r, unsigned char **g, unsigned char **b);
// The same for the letters H, L, S and H, S, V; plane order only (a
// pixel-order image leaves the results as they are).
void rmgHlsPointers(const RmgImage *image, int rowStep, int height, unsigned char *base,
                    unsigned char **h, unsigned char **l, unsigned char **s);
void rmgHsvPointers(const RmgImage *image, int rowStep, int height, unsigned char *base,
                    unsigned char **h, unsigned char **s, unsigned char **v);

// Compatibility checks of the colour operations.
bool rmgCanReduce(const RmgImage *srcImage, const RmgImage *dstImage);
bool rmgCanColorToGray(const RmgImage *srcImage, const RmgImage *dstImage);
bool rmgCanGrayToColor(const RmgImage *srcImage, const RmgImage *dstImage);
bool rmgIsRGBPair(const RmgImage *srcImage, const RmgImage *dstImage);
bool rmgIsHSVPair(const RmgImage *srcImage, const RmgImage *dstImage);
bool rmgIsHLSPair(const RmgImage *srcImage, const RmgImage *dstImage);

// The next piece of the destination. The cursors start at -1. With tilePos
// the walk has one step, at the tile it names. A tiled image goes tile by
// tile along the rows, asking the call-back for each with `mode`; a null
// tile moves to column 0 of the next row and asks again, and a second null
// there ends the walk. An image in memory is one piece. Gives the piece's
// first byte (null: the walk is over) and its place and size in pixels.
unsigned char *ownNextDstTile(RmgImage *dstImage, int *column, int *row, int *x, int *y,
                              int *width, int *height, int mode, const int *tilePos);
// Releases the piece at column, row of a tiled image (nothing for an image
// in memory).
void ownReleaseDstTile(RmgImage *dstImage, int column, int row, int mode);

namespace rmg {

// One piece for a colour kernel: pointers, row steps, size, and the bytes
// that may be used from each pointer on.
struct ColorPiece {
    const unsigned char *src;
    unsigned char *dst;
    int srcStep, height, width, dstStep;
    int64_t srcBytes, dstBytes;
};

using ColorCheck = bool (*)(const RmgImage *, const RmgImage *);
using ColorKernel = void (*)(const RmgImage *src, const RmgImage *dst, const ColorPiece &piece,
                             const void *args);

// The driver of every colour operation: header tests (reported under
// "rmgReduceBits"), the pointer test and the compatibility check under
// funcName, then the kernel once on two images in memory, or piece by
// piece over the destination with the source's rectangles read through
// the tile engine.
void ownColorDriver(const RmgImage *srcImage, RmgImage *dstImage, const char *funcName,
                    ColorCheck check, ColorKernel kernel, const void *args, const int *tilePos);

// The two halves of the driver. ownColorOpen: the header, pointer and
// compatibility tests, true when they pass. ownColorWalk: the kernel piece
// by piece over the destination, each piece's source rectangle a private
// copy from the tile engine (also for two images in memory).
bool ownColorOpen(const RmgImage *srcImage, const RmgImage *dstImage, const char *funcName,
                  ColorCheck check);
void ownColorWalk(const RmgImage *srcImage, RmgImage *dstImage, ColorKernel kernel,
                  const void *args, const int *tilePos);

}  // namespace rmg

#endif
