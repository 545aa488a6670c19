// Kernels of the logical operations: the AND of an image with a constant
// (rmgAndS) and of two images (rmgAnd), with their flat, row, bit and
// one-channel paths, and the byte kernels of AND, OR and XOR. Internal to
// the library (C++ linkage, not exported).
//
// Results, whatever vector form runs:
//   - rmgAndRows: byte k of a row's range = source byte k AND byte
//     ((address of the destination byte) mod 8) of the 64-bit mask, in
//     memory order. Bytes outside the range are neither read nor written.
//   - rmgAndWords64 / rmgAndWords32: word i = source word i AND the mask.
//   - rmgAndBits: destination bit (dstPhase + i) = source bit
//     (srcPhase + i) AND the mask, most significant bit first; the other
//     bits of the destination keep their values.
//   - rmgAndCoi: one channel of pixel-order rows, element by element.
//   - rmgAndBytes, rmgOrBytes, rmgXorBytes: d[k] = a[k] op b[k].
// A result never depends on a neighbour, so a destination may be one of its
// sources (the same address), but no other overlap is allowed.
#ifndef RMG_OPS_OWNAND_H
#define RMG_OPS_OWNAND_H

#include <cstddef>
#include <cstdint>

#include "core/rmgcpu.h"
#include "rmg.h"

// ---------------------------------------------------------------------------
// Kernels of rmgAndS
// ---------------------------------------------------------------------------

// The region of an image for the rmgAndS family: channels (nChannels), coi
// (0 without ROI; with a ROI its coi, or 1 for a one-channel image), height
// and width (the image's, or the ROI's cut at the image's edge; either may
// come out 0 or negative). `channels` may be null.
void rmgRoiSize(const RmgImage *image, int *channels, int *coi, int *height, int *width);

// Which of the four row kernels of a logical operation serves a depth: 0
// for 1u, 1 for 8 bits, 2 for 16 bits, 3 for 32 bits, signed and unsigned
// alike; -1 for any other depth.
int ownAndKernelIndex(unsigned int depth);

// The constant of rmgAndS replicated by depth into a 32-bit mask: 1u all
// ones or zero by bit 0, 8 bits the low byte four times, 16 bits the low
// half twice, 32 bits the value itself.
uint32_t rmgAndSMask(unsigned int depth, int value);

// Flat path of whole images: imageSize / 4 words; rmgAndWords64 with half
// of them when the source's align is 8, else rmgAndWords32.
void rmgAndSWhole(const RmgImage *srcImage, const RmgImage *dstImage, uint32_t mask);

// `count` 8-byte words. A count of exactly one leaves the destination as
// it is.
void rmgAndWords64(const unsigned char *src, unsigned char *dst, int count, uint64_t mask);
// `count` 4-byte words.
void rmgAndWords32(const unsigned char *src, unsigned char *dst, int count, uint32_t mask);

// A byte range of `rowBytes` bytes in each of `rows` rows.
void rmgAndRows(const unsigned char *src, unsigned char *dst, int rowBytes, int rows, int srcStep,
                int dstStep, uint64_t mask);

// A bit range of `width` bits in each of `rows` rows. The phases may be any
// column: the starts move to its byte, the remainder is the bit phase. The
// mask's low 16 bits act on big-endian 16-bit chunks counted from the
// destination's first byte (bits of the destination byte j: the high byte
// of the mask for even j, the low byte for odd j).
void rmgAndBits(const unsigned char *src, unsigned char *dst, int srcPhase, int dstPhase, int width,
                int rows, int srcStep, int dstStep, uint32_t mask);

// One channel of pixel-order images: in each row, destination element
// (i * dstChannels + dstIndex) = source element (i * srcChannels +
// srcIndex) AND the mask, for i in 0 .. width - 1.
void rmgAndCoi8(const unsigned char *src, unsigned char *dst, int width, int height,
                int srcChannels, int dstChannels, int srcStep, int dstStep, int srcIndex,
                int dstIndex, uint8_t mask);
void rmgAndCoi16(const unsigned char *src, unsigned char *dst, int width, int height,
                 int srcChannels, int dstChannels, int srcStep, int dstStep, int srcIndex,
                 int dstIndex, uint16_t mask);
void rmgAndCoi32(const unsigned char *src, unsigned char *dst, int width, int height,
                 int srcChannels, int dstChannels, int srcStep, int dstStep, int srcIndex,
                 int dstIndex, uint32_t mask);

// Row kernels of rmgAndS, one per element width, with the replicated mask.
// They never report: a region that can't be resolved does nothing.
void rmgAndS1u(const RmgImage *srcImage, const RmgImage *dstImage, uint32_t mask);
void rmgAndS8(const RmgImage *srcImage, const RmgImage *dstImage, uint32_t mask);
void rmgAndS16(const RmgImage *srcImage, const RmgImage *dstImage, uint32_t mask);
void rmgAndS32(const RmgImage *srcImage, const RmgImage *dstImage, uint32_t mask);

// ---------------------------------------------------------------------------
// Kernels of rmgAnd
// ---------------------------------------------------------------------------

// `count` bytes; a count of 0 or below does nothing.
void rmgAndBytes(const unsigned char *srcA, const unsigned char *srcB, unsigned char *dst,
                 int count);
void rmgOrBytes(const unsigned char *srcA, const unsigned char *srcB, unsigned char *dst,
                int count);
void rmgXorBytes(const unsigned char *srcA, const unsigned char *srcB, unsigned char *dst,
                 int count);

// rmgAndBytes over `rows` rows of `count` bytes, each image's rows its own
// step apart.
void ownAndByteRows(const unsigned char *srcA, const unsigned char *srcB, unsigned char *dst,
                    int count, int rows, int stepA, int stepB, int stepD);

// One channel of each of three pixel-order images, element by element: in
// each row, destination element i = element i of A AND element i of B, the
// elements `size` bytes long and each image's `stride` bytes apart.
void ownAndChannels(const unsigned char *srcA, const unsigned char *srcB, unsigned char *dst,
                    int count, int rows, int stepA, int stepB, int stepD, int strideA, int strideB,
                    int strideD, int size);

// Row kernels of rmgAnd: the flat path of whole images, otherwise the cases
// A to D over three images (1u: bit by bit). They never report.
void rmgAnd1u(const RmgImage *srcImageA, const RmgImage *srcImageB, const RmgImage *dstImage);
void rmgAnd8(const RmgImage *srcImageA, const RmgImage *srcImageB, const RmgImage *dstImage);
void rmgAnd16(const RmgImage *srcImageA, const RmgImage *srcImageB, const RmgImage *dstImage);
void rmgAnd32(const RmgImage *srcImageA, const RmgImage *srcImageB, const RmgImage *dstImage);

// ---------------------------------------------------------------------------
// Vector forms
// ---------------------------------------------------------------------------

namespace rmg {

// The byte operations of the byte kernels.
enum ByteOp : int { kByteAnd, kByteOr, kByteXor };

// `rows` rows of n bytes, srcStep and dstStep bytes apart: byte k of row r
// of dst = the same byte of src AND byte ((k + r * dstStep) mod 8) of
// `pattern` (its low byte first).
using AndPatternFn = void (*)(const unsigned char *src, unsigned char *dst, size_t n, size_t rows,
                              ptrdiff_t srcStep, ptrdiff_t dstStep, uint64_t pattern);
// `rows` rows of n bytes, each image's rows its own step apart: d[k] =
// a[k] op b[k].
using ByteOpFn = void (*)(int op, const unsigned char *a, const unsigned char *b, unsigned char *d,
                          size_t n, size_t rows, ptrdiff_t aStep, ptrdiff_t bStep, ptrdiff_t dStep);
// `rows` rows of `count` elements of `size` bytes (1, 2 or 4), element i
// at byte i * stride of both rows: dst element = src element AND `mask` (its
// low `size` bytes). Bytes between the elements keep their values. The
// stride is at least `size`.
using AndChannelFn = void (*)(const unsigned char *src, unsigned char *dst, size_t count,
                              size_t rows, ptrdiff_t srcStep, ptrdiff_t dstStep, ptrdiff_t stride,
                              int size, uint32_t mask);

// As AndChannelFn with two sources ANDed with each other (three rows of
// the same stride).
using AndPairFn = void (*)(const unsigned char *a, const unsigned char *b, unsigned char *d,
                           size_t count, size_t rows, ptrdiff_t aStep, ptrdiff_t bStep,
                           ptrdiff_t dStep, ptrdiff_t stride, int size);

struct AndForms {
    AndPatternFn pattern;
    ByteOpFn bytes;
    AndChannelFn channel;
    AndPairFn pair;
};
extern const AndForms kAndScalar;
extern const AndForms kAndSse2;
extern const AndForms kAndAvx2;
extern const AndForms kAndAvx512;

// The forms for the processor (or the form a test forced).
const AndForms &andForms();

}  // namespace rmg

#endif
