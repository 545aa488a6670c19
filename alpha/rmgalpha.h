// The frame of the alpha composition module (rmgalpha): the scaled products
// of two samples, the channel cursor every row loop works from, the block of
// checks each image argument passes, the narrowing of the common extent, the
// rule for channels of interest, the rounding of the float kernels, and the
// tables of the composition kernels. Internal to the library (C++ linkage,
// not exported). The depths of the module are RMG_DEPTH_8U and
// RMG_DEPTH_16U.
#ifndef RMG_ALPHA_RMGALPHA_H
#define RMG_ALPHA_RMGALPHA_H

#include <cstdint>

#include "rmg.h"

// floor(x * y / 255) for x, y in 0..255, from one product, two shifts and
// three additions: ownMul255(x, 255) is x and the result never exceeds x or y.
constexpr uint32_t ownMul255(uint32_t x, uint32_t y) {
    const uint32_t p = x * y;
    return ((p >> 8) + p + 1u) >> 8;
}

// floor(x * y / 65535) for x, y in 0..65535; neither the product nor the sum
// leaves 32 bits (65535 * 65535 + 65533 + 1 < 2^32).
constexpr uint32_t ownMul65535(uint32_t x, uint32_t y) {
    const uint32_t p = x * y;
    return ((p >> 16) + p + 1u) >> 16;
}

// Where one channel of an image's region lies. Offsets and steps count
// samples (elements of the depth), not bytes.
struct ownChannelCursor {
    unsigned char *data;  // the image's imageData
    int32_t depth;        // the image's depth
    int32_t offset;       // the channel's sample at the ROI's top-left pixel
    int32_t channelStep;  // from one channel of a pixel to the next
    int32_t rowStep;      // from one row to the next
    int32_t pixelStep;    // from one pixel of a row to the next
};

// Fills `cursor` for the 1-based `channel` of `image`, at the offsets of
// `roi` (0 for null). The row size is worked out from width, nChannels,
// dataOrder, depth and align, never read from widthStep, so that a header
// made for a tile gets it right; the arithmetic wraps like 32-bit words.
void ownSetChannelCursor(const RmgImage *image, const RmgROI *roi, int channel,
                         ownChannelCursor *cursor);

// A channel's samples in bytes: where the first sample of the region is,
// and the steps between rows, channels and pixels. `data` null: the stream
// isn't used. 64-bit, so that no header value overflows them on a 32-bit
// system either.
struct OwnSampleStream {
    unsigned char *data = nullptr;
    int64_t start = 0;
    int64_t row = 0;
    int64_t channel = 0;
    int64_t pixel = 0;
};

// The stream of the 1-based `channel` of `image` at the offsets of its own
// ROI, for samples of `sampleBytes` bytes.
OwnSampleStream ownSampleStream(const RmgImage *image, int channel, int64_t sampleBytes);

// Rows of a stream that lie inside `size` bytes when its first row touches
// the channels firstChannel..lastChannel and `columns` pixels: all `rows`,
// or fewer when the later rows would leave the buffer (none when the first
// one does). Worked in 64 bits, so no header value can wrap it.
int ownRowsInside(const OwnSampleStream &s, int size, int firstChannel, int lastChannel,
                  int columns, int rows, int64_t sampleBytes);

// Narrows the common extent of an operation by one image: its height and
// width, or with a ROI what of the ROI lies inside the image from the ROI's
// offset. An operation starts with both at 99999.
void ownClipExtent(const RmgImage *image, int *rows, int *columns);

// The image block: the 18 checks that each image argument of the module's
// operations passes, in order. On the first fault raises RMG_StsBadArg
// under `funcName` with the failed condition's text, `name` (the argument's
// name: "dstImage", "srcImageA", "alphaImageB", ...) standing in it for the
// image, and returns false; true when the image passes.
bool ownCheckImageBlock(const RmgImage *image, const char *name, const char *funcName);

// The same with `headerMask` in place of rmgBadImageHeader(image). A header
// that the mask test passes also passes most of the later steps, which
// repeat parts of it; this form reaches each of them.
bool ownCheckImageBlockMask(const RmgImage *image, int headerMask, const char *name,
                            const char *funcName);

// The rule for channels of interest of a source (`srcName`) against the
// destination: a COI on one side needs a ROI, and with a destination COI a
// source COI, on the other. Raises RMG_StsBadArg under `funcName` and
// returns false on a fault. A source COI under a destination ROI with coi 0
// passes, and the kernels then ignore it.
bool ownCheckCoiRule(const RmgImage *srcImage, const char *srcName, const RmgImage *dstImage,
                     const char *funcName);

// The rounding of the float kernels: v + 2^23 stored to single precision
// (round to nearest, ties to even), the low 23 bits of its bit pattern, at
// most `maxValue`. From 2^23 on the sum's exponent moves and the low bits no
// longer hold the value; that is the rule as it stands.
int ownRoundSample(double v, int maxValue);

// ---------------------------------------------------------------------------
// Composition kernels
// ---------------------------------------------------------------------------
//
// 48 kernels: 2 depths x 6 operators x 2 forms x 2 arithmetics. Each runs
// over `rows` by `columns` pixels from each image's own ROI origin (the
// callers narrow them by ownClipExtent), raises nothing and fails in no way.
// With a destination COI one channel is done, at each image's own coi;
// otherwise channels 0 .. nChannels-1 of the destination, skipping its
// alphaChannel. Rows that would reach outside any image's imageSize bytes
// (a header whose imageSize is smaller than its size and layout say) are
// left out from the last row back, so a call never touches memory beyond
// the buffers; a region that starts outside its buffer has no rows.
//
// Constant form: `alphaA` and `alphaB` are constants 0..M (the caller limits
// them) or negative for the source's own alphaChannel, pixel by pixel. It
// never writes a destination alpha.
using OwnCompositeConstFn = void (*)(const RmgImage *srcImageA, const RmgImage *srcImageB,
                                     RmgImage *dstImage, int alphaA, int alphaB,
                                     int premulAlpha, int divideMode, int rows, int columns);

// Image form: the alpha of A from `alphaImageA` (its alphaChannel, or
// channel 1 when that is 0); the alpha of B likewise from `alphaImageB`, or
// with a null `alphaImageB` the complement M - a; the destination alpha
// written into `alphaImageDst` at its alphaChannel when that is not null.
using OwnCompositeImageFn = void (*)(const RmgImage *srcImageA, const RmgImage *srcImageB,
                                     RmgImage *dstImage, const RmgImage *alphaImageA,
                                     const RmgImage *alphaImageB, RmgImage *alphaImageDst,
                                     int premulAlpha, int divideMode, int rows, int columns);

// The tables, indexed [depth][compositeType][arithmetic]: depth 0 for 8-bit
// and 1 for 16-bit samples; compositeType 0 over, 1 in, 2 out, 3 atop,
// 4 xor, 5 plus; arithmetic 0 integer (divideMode 0), 1 float.
enum { kOwnDepth8u = 0, kOwnDepth16u = 1 };
enum { kOwnIntegerKernel = 0, kOwnFloatKernel = 1 };
extern const OwnCompositeConstFn ownCompositeConst[2][6][2];
extern const OwnCompositeImageFn ownCompositeImage[2][6][2];

#endif
