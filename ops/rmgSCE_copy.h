// Fill and copy: the row functions of rmgCopy, and the frame that rmgCopy
// and rmgExchange share: the opening, the plain path and the three tiled
// paths. Internal to the library.
#ifndef RMG_OPS_RMGSCE_COPY_H
#define RMG_OPS_RMGSCE_COPY_H

#include <cstddef>
#include <cstdint>

#include "rmg.h"

// ---------------------------------------------------------------------------
// Row functions of rmgCopy
// ---------------------------------------------------------------------------

// Copies `count` bits from bit `srcBit` of src[0] to bit `dstBit` of
// dst[0] (7 is the most significant bit, runs go towards lower bit numbers
// and on over byte borders): the result of a copy bit by bit. Every other
// bit of the destination's bytes stays. Reads only source bytes that hold
// bits of the run. A count of 0 or below touches nothing. The runs don't
// share memory, or are the same bits.
void rmgCopyBits(const unsigned char *src, unsigned char *dst, int srcBit, int dstBit, int count);

// `bytes` bytes: dst[i] = (src[i] << leftShift) | (src[i + 1] >> rightShift),
// kept to 8 bits, for shifts of 1 to 7. Reads src[0] to src[bytes].
void rmgCopyShifted(const unsigned char *src, unsigned char *dst, int leftShift, int rightShift,
                    int bytes);

// Each of `rows` rows: rmgCopyBits of `columns` bits from bit column srcX
// of a source row to bit column dstX of a destination row.
void rmgCopyRegion1u(const unsigned char *src, unsigned char *dst, int rows, int columns,
                     int srcRowStep, int dstRowStep, int srcX, int dstX);

// Each of `planes` planes, each row: rmgCopyBytes of `rowBytes` bytes.
void rmgCopyRows(const unsigned char *src, unsigned char *dst, int rows, int rowBytes,
                 int srcRowStep, int dstRowStep, int srcPlaneStep, int dstPlaneStep, int planes);

// Each row: with `channels` equal to both steps one rmgCopyBytes of
// columns * channels elements, otherwise `columns` elements, element i from
// i * srcStep to i * dstStep (steps in elements). The 16-bit form reads each
// element byte by byte, so any address works; all forms do.
void rmgCopyChannel8(const unsigned char *src, unsigned char *dst, int rows, int columns,
                     int srcRowStep, int dstRowStep, int srcStep, int dstStep, int channels);
void rmgCopyChannel16(const unsigned char *src, unsigned char *dst, int rows, int columns,
                      int srcRowStep, int dstRowStep, int srcStep, int dstStep, int channels);
void rmgCopyChannel32(const unsigned char *src, unsigned char *dst, int rows, int columns,
                      int srcRowStep, int dstRowStep, int srcStep, int dstStep, int channels);

namespace rmg {

// ---------------------------------------------------------------------------
// The frame of Copy and Exchange
// ---------------------------------------------------------------------------

// The row functions of the plain path, on the clipped regions of both
// images (the source's pointer is written by Exchange).
struct PairRows {
    void (*bits)(unsigned char *src, unsigned char *dst, int rows, int columns, int srcRowStep,
                 int dstRowStep, int srcX, int dstX);
    void (*rows)(unsigned char *src, unsigned char *dst, int rows, int rowBytes, int srcRowStep,
                 int dstRowStep, int srcPlaneStep, int dstPlaneStep, int planes);
    // For elements of 8, 16 and 32 bits.
    void (*channel[3])(unsigned char *src, unsigned char *dst, int rows, int columns,
                       int srcRowStep, int dstRowStep, int srcStep, int dstStep, int channels);
};

// A row function of Copy or Exchange as an entry of PairRows: the same
// arguments with a writable source pointer, and no result.
template <auto Fn, typename... Args>
void pairRow(unsigned char *src, unsigned char *dst, Args... args) {
    Fn(src, dst, args...);
}

// What one operation does with one part of the grid when both images are
// tiled: `block` is a plain image of the part's size holding the source's
// pixels at column x, row y (its ROI has the source's coi and the part's
// size), `part` the destination's tile with the part as its ROI.
using PairTileStep = void (*)(RmgImage *srcImage, RmgImage *block, RmgImage *part, int x, int y);

// What Copy and Exchange differ in.
struct PairOperation {
    const char *funcName;
    // The operation itself, for the recursion on temporary headers.
    void (*call)(RmgImage *srcImage, RmgImage *dstImage, const int *tile);
    // The mode a tiled source's tiles are asked for when the destination
    // is plain.
    int srcTileMode;
    PairRows rows;
    PairTileStep bothTiledStep;
};

// Row r of a block, in byte steps that may exceed 2^31 in all.
template <typename Byte>
Byte *nthRow(Byte *data, int r, int rowStep) {
    return data + static_cast<ptrdiff_t>(r) * rowStep;
}

// The runs of a row function over whole rows: for each of `planes` planes,
// each row, run(source row, destination row, rowBytes). Rows without
// padding between them on both sides make one run: the same bytes in the
// same order as row by row, so a copy or a swap from low to high addresses
// gives the same result either way.
template <typename Src, typename Dst, typename Run>
void forEachRun(Src *src, Dst *dst, int rows, int rowBytes, int srcRowStep, int dstRowStep,
                int srcPlaneStep, int dstPlaneStep, int planes, Run run) {
    for (int p = 0; p < planes; ++p) {
        Src *from = src + static_cast<ptrdiff_t>(p) * srcPlaneStep;
        Dst *to = dst + static_cast<ptrdiff_t>(p) * dstPlaneStep;
        if (rowBytes > 0 && srcRowStep == rowBytes && dstRowStep == rowBytes &&
            static_cast<int64_t>(rows) * rowBytes <= INT32_MAX) {
            run(from, to, rows * rowBytes);
            continue;
        }
        for (int r = 0; r < rows; ++r)
            run(nthRow(from, r, srcRowStep), nthRow(to, r, dstRowStep), rowBytes);
    }
}

// Puts a temporary ROI in place of an image's own for the life of the
// object, and the image's own back at its end, on every way out.
class RoiStandIn {
  public:
    RoiStandIn(RmgImage *image, RmgROI *standIn) : image_(image), own_(image->roi) {
        image->roi = standIn;
    }
    ~RoiStandIn() { image_->roi = own_; }
    RoiStandIn(const RoiStandIn &) = delete;
    RoiStandIn &operator=(const RoiStandIn &) = delete;

  private:
    RmgImage *image_;
    RmgROI *own_;
};

// The whole operation: the standard opening for both images, the
// comparison of depth, order and origin, the test of the status, and the
// path by which images have tiles.
void pairOperation(const PairOperation &op, RmgImage *srcImage, RmgImage *dstImage,
                   const int *tile);

}  // namespace rmg

#endif
