// Mirror: the region routines of rmgMirror and its row kernels. Internal
// to the library (C++ linkage, not exported).
#ifndef RMG_GEOMETRY_RMGMIRR_H
#define RMG_GEOMETRY_RMGMIRR_H

#include <cstddef>

#include "rmg.h"

// Writes the mirror of `rows` by `cols` pixels of src into dst, each
// rectangle taken from its own image's ROI origin (none: 0, 0), rows
// widthStep apart. flipAxis 0 reverses the rows, 1 the columns, -1 both.
// Both images are in memory. Depth 1 goes to ownMirrorBits, which takes the
// bits as one plane; other depths by src's dataOrder to the plane or pixel
// routine of their element size; any other depth does nothing. `coi` (0 or
// 1-based) selects one channel, `channels` is the number of channels moved
// (1 with a coi). src and dst may be the same record: the mirror is then
// made in place.
//
// Memory: only the bytes from imageData up to imageData + imageSize of each
// image are read or written. An element whose bytes would lie outside
// (a ROI reaching past the image's end, a widthStep or imageSize the
// application changed) is left out: it is not read, and the destination
// element that it would give keeps its value.
void ownMirrorRect(const RmgImage *src, RmgImage *dst, int channels, int coi, int rows, int cols,
                   int flipAxis);

// The routines of plane order and of pixel order, for elements of 8, 16
// and 32 bits; same arguments as ownMirrorRect.
void ownMirrorPlane8(const RmgImage *src, RmgImage *dst, int channels, int coi, int rows, int cols,
                     int flipAxis);
void ownMirrorPlane16(const RmgImage *src, RmgImage *dst, int channels, int coi, int rows,
                      int cols, int flipAxis);
void ownMirrorPlane32(const RmgImage *src, RmgImage *dst, int channels, int coi, int rows,
                      int cols, int flipAxis);
void ownMirrorPixel8(const RmgImage *src, RmgImage *dst, int channels, int coi, int rows, int cols,
                     int flipAxis);
void ownMirrorPixel16(const RmgImage *src, RmgImage *dst, int channels, int coi, int rows,
                      int cols, int flipAxis);
void ownMirrorPixel32(const RmgImage *src, RmgImage *dst, int channels, int coi, int rows,
                      int cols, int flipAxis);

// Depth 1: the bits of the rectangles, the bit phase of each from its ROI's
// xOffset.
void ownMirrorBits(const RmgImage *src, RmgImage *dst, int rows, int cols, int flipAxis);

// Forward copies of a run: the result of the byte loop from low to high
// addresses (see rmgCopyBytes), `bytes` bytes or `elements` 16-bit
// elements.
void ownCopyRow8(const unsigned char *from, unsigned char *to, int bytes);
void ownCopyRow16(const unsigned char *from, unsigned char *to, int elements);

// Copies `count` bits from bit `fromBit` of from[0] to bit `toBit` of to[0]
// (bit numbers from the least significant bit: pixel 0 of a byte is bit 7;
// the run goes on over byte borders). Other bits of the destination stay.
// Runs that share bytes, other than the same bits, are copied as if the
// source had been read first.
void ownCopyBits(const unsigned char *from, unsigned char *to, int fromBit, int toBit, int count);

// Writes the run of `count` bits reversed: for k from 0 upwards the bit at
// position fromPos + count - 1 - k into position toPos + k, bit by bit,
// positions counted from the most significant bit of from[0] and to[0].
void ownReverseBits(const unsigned char *from, unsigned char *to, int fromPos, int toPos,
                    int count);

// Reverses `count` units of `unit` bytes (1, 2, 3, 4, 6, 8, 12 or 16: an
// element, or a pixel of 1 to 4 elements): unit k of dst is unit
// count - 1 - k of src. The runs share no byte. Any alignment; nothing
// outside the two runs is read or written.
void ownReverseRun(const unsigned char *src, unsigned char *dst, int count, int unit);

namespace rmg {

using ReverseRunFn = void (*)(const unsigned char *src, unsigned char *dst, size_t count,
                              int unit);
struct MirrorForms {
    ReverseRunFn reverse;
};
extern const MirrorForms kMirrorScalar;
extern const MirrorForms kMirrorSse2;
extern const MirrorForms kMirrorAvx2;

}  // namespace rmg

#endif
