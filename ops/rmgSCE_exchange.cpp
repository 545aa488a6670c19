// Fill and copy: rmgExchange with its row functions.
//
// Exchange runs the frame of rmgCopy (ops/rmgSCE_copy.h) with swapping row
// functions, and both images are written. Where it differs: a tiled source
// whose destination is plain has its tiles asked for to write, as they
// change too; and with two tiled images each part goes through a block:
// the source's part is read into it, the destination's tile part is copied
// into the source, then the block into the tile.
#include "ops/rmgSCE_exchange.h"

#include <cstring>

#include "core/rmgint.h"
#include "ops/rmgSCE_copy.h"
#include "ops/rmgcopy.h"
#include "rmg.h"

using rmg::mul32;
using rmg::nthRow;

namespace {

template <int Size>
void swapElements(unsigned char *first, unsigned char *second, int count, int firstStride,
                  int secondStride) {
    for (int i = 0; i < count; ++i) {
        unsigned char *a = first + static_cast<ptrdiff_t>(i) * firstStride;
        unsigned char *b = second + static_cast<ptrdiff_t>(i) * secondStride;
        unsigned char elementA[Size];
        unsigned char elementB[Size];
        std::memcpy(elementA, a, Size);
        std::memcpy(elementB, b, Size);
        std::memcpy(a, elementB, Size);
        std::memcpy(b, elementA, Size);
    }
}

template <int Size>
void exchangeChannels(unsigned char *src, unsigned char *dst, int rows, int columns, int srcRowStep,
                      int dstRowStep, int srcStep, int dstStep, int channels) {
    for (int r = 0; r < rows; ++r) {
        unsigned char *a = nthRow(src, r, srcRowStep);
        unsigned char *b = nthRow(dst, r, dstRowStep);
        if (channels == srcStep && channels == dstStep)
            rmgSwapBytes(a, b, mul32(mul32(columns, channels), Size));
        else
            swapElements<Size>(a, b, columns, mul32(srcStep, Size), mul32(dstStep, Size));
    }
}

// One part when both images are tiled. The source takes the tile's part
// through the tiled-destination path of rmgCopy, with a temporary ROI of
// the part at column x, row y in place of its own; then the block, which
// holds what the source had there, goes into the tile.
void exchangeTileStep(RmgImage *srcImage, RmgImage *block, RmgImage *part, int x, int y) {
    RmgROI sourcePart{block->roi->coi, x, y, block->roi->height, block->roi->width};
    rmg::RoiStandIn standIn(srcImage, &sourcePart);
    rmgCopy(part, srcImage, nullptr);
    rmgCopy(block, part, nullptr);
}

const rmg::PairOperation kExchange = {
    "rmgExchange",
    rmgExchange,
    RMG_TILE_WRITE,
    {rmg::pairRow<ownExchangeBits>,
     rmg::pairRow<ownExchangeRows>,
     {rmg::pairRow<ownExchangeChannels8>, rmg::pairRow<ownExchangeChannels16>,
      rmg::pairRow<ownExchangeChannels32>}},
    exchangeTileStep,
};

}  // namespace

// ---------------------------------------------------------------------------
// Row functions
// ---------------------------------------------------------------------------

int ownExchangeBits(unsigned char *src, unsigned char *dst, int rows, int columns, int srcRowStep,
                    int dstRowStep, int srcX, int dstX) {
    if (rows < 1) return 0;
    for (int r = 0; r < rows; ++r) {
        unsigned char *a = nthRow(src, r, srcRowStep);
        unsigned char *b = nthRow(dst, r, dstRowStep);
        for (int i = 0; i < columns; ++i) {
            const int x = srcX + i;
            const int y = dstX + i;
            unsigned char *byteA = a + (x >> 3);
            unsigned char *byteB = b + (y >> 3);
            const unsigned int maskA = 0x80u >> (x & 7);
            const unsigned int maskB = 0x80u >> (y & 7);
            const bool bitA = (*byteA & maskA) != 0;
            const bool bitB = (*byteB & maskB) != 0;
            *byteA = static_cast<unsigned char>(bitB ? *byteA | maskA : *byteA & ~maskA);
            *byteB = static_cast<unsigned char>(bitA ? *byteB | maskB : *byteB & ~maskB);
        }
    }
    return rows;
}

int ownExchangeRows(unsigned char *src, unsigned char *dst, int rows, int rowBytes, int srcRowStep,
                    int dstRowStep, int srcPlaneStep, int dstPlaneStep, int planes) {
    if (planes < 1) return 0;
    rmg::forEachRun(src, dst, rows, rowBytes, srcRowStep, dstRowStep, srcPlaneStep, dstPlaneStep,
                    planes, rmgSwapBytes);
    return planes;
}

void ownExchangeChannels8(unsigned char *src, unsigned char *dst, int rows, int columns,
                          int srcRowStep, int dstRowStep, int srcStep, int dstStep, int channels) {
    exchangeChannels<1>(src, dst, rows, columns, srcRowStep, dstRowStep, srcStep, dstStep,
                        channels);
}

void ownExchangeChannels16(unsigned char *src, unsigned char *dst, int rows, int columns,
                           int srcRowStep, int dstRowStep, int srcStep, int dstStep, int channels) {
    exchangeChannels<2>(src, dst, rows, columns, srcRowStep, dstRowStep, srcStep, dstStep,
                        channels);
}

void ownExchangeChannels32(unsigned char *src, unsigned char *dst, int rows, int columns,
                           int srcRowStep, int dstRowStep, int srcStep, int dstStep, int channels) {
    exchangeChannels<4>(src, dst, rows, columns, srcRowStep, dstRowStep, srcStep, dstStep,
                        channels);
}

// ---------------------------------------------------------------------------
// The operation
// ---------------------------------------------------------------------------

extern "C" void rmgExchange(RmgImage *srcImage, RmgImage *dstImage, const int *tile) {
    rmg::pairOperation(kExchange, srcImage, dstImage, tile);
}
