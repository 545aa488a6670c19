// Fill and copy: rmgCopy with its row functions, and the frame that
// rmgCopy and rmgExchange share.
//
// The frame is that of rmgSet for two images: test both headers and their
// compatibility, stop on a negative status, then take one of four paths by
// which images have tiles. Every tiled path walks the grid of the tiled
// image (the destination's when both are tiled) and calls the operation
// again on temporary plain headers, one tile part at a time, so that all
// paths end in the plain one and its row functions.
#include "ops/rmgSCE_copy.h"

#include <cstddef>
#include <cstdint>

#include "access/ownrect.h"
#include "access/owntile.h"
#include "core/rmgint.h"
#include "core/rmgvalid.h"
#include "ops/rmgSCE.h"
#include "ops/rmgcopy.h"
#include "rmg.h"

using rmg::add32;
using rmg::mul32;
using rmg::nthRow;

namespace {

constexpr char kModule[] = "rmgSCE";

// The clipped region of an image in memory.
struct Region {
    unsigned char *data;
    int rowStep, channels, rows, columns, planeStep;
};

Region regionOf(const RmgImage *image) {
    Region r;
    ownImageRect(image, &r.data, &r.rowStep, &r.channels, &r.rows, &r.columns, &r.planeStep);
    return r;
}

// The bit column of a 1-bit region: the ROI's xOffset as it stands.
int bitColumnOf(const RmgImage *image) { return image->roi != nullptr ? image->roi->xOffset : 0; }

// Both images in memory: the smaller of the two clipped regions, in whole
// runs where the rows have no gaps, else element by element.
void pairPlain(const rmg::PairRows &rows, const RmgImage *srcImage, const RmgImage *dstImage) {
    const Region s = regionOf(srcImage);
    const Region d = regionOf(dstImage);
    // Three channels without coi don't go into one channel, nor the other
    // way round; a coi on either side makes one channel of it.
    if (s.channels != d.channels) return;
    const int height = s.rows < d.rows ? s.rows : d.rows;
    int columns = s.columns < d.columns ? s.columns : d.columns;
    if (height <= 0 || columns <= 0) return;

    // Plane order is a run per row and plane. Pixel order is one when both
    // images have the same channels and all are copied: then a row is one
    // run of all channels. The orders are equal, rmgCheckCompatible has
    // seen to that.
    bool contiguous = srcImage->dataOrder == RMG_DATA_PLANE;
    int planes = s.channels;
    if (!contiguous && srcImage->nChannels == dstImage->nChannels &&
        srcImage->nChannels == s.channels) {
        contiguous = true;
        planes = 1;
        columns = mul32(columns, srcImage->nChannels);
    }

    const int bits = rmg::depthBits(srcImage->depth);
    if (bits == 1) {
        rows.bits(s.data, d.data, height, columns, s.rowStep, d.rowStep, bitColumnOf(srcImage),
                  bitColumnOf(dstImage));
        return;
    }
    // A depth outside the six has been refused by the header test already.
    const int kind = bits == 8 ? 0 : bits == 16 ? 1 : bits == 32 ? 2 : -1;
    if (kind < 0) return;
    if (contiguous)
        rows.rows(s.data, d.data, height, mul32(columns, bits >> 3), s.rowStep, d.rowStep,
                  s.planeStep, d.planeStep, planes);
    else
        rows.channel[kind](s.data, d.data, height, columns, s.rowStep, d.rowStep,
                           srcImage->nChannels, dstImage->nChannels, s.channels);
}

// Where the part of grid row (or column) `index` starts in the other
// image: at the region's own offset for the first, else behind the first
// part and index - 1 whole tiles.
int partOrigin(int index, int origin, int tileSize, int firstSize) {
    if (index == 0) return origin;
    return add32(add32(origin, mul32(tileSize, index - 1)), firstSize);
}

// One image tiled, the other in memory. The grid is the tiled image's,
// with the size both regions hold. The plain image's ROI gives way to a
// temporary one that follows the parts; the tiled image's tile is a plain
// header of one tile with the part as its ROI. A tiled destination's tiles
// are asked for to write, and the `tile` argument restricts the walk; a
// tiled source's tiles are asked for in the operation's own mode, and
// `tile` isn't looked at.
void pairOneTiled(const rmg::PairOperation &op, RmgImage *srcImage, RmgImage *dstImage,
                  bool dstTiled, const int *tile) {
    RmgImage *const plain = dstTiled ? srcImage : dstImage;
    RmgImage *const tiled = dstTiled ? dstImage : srcImage;
    rmg::TileWalk walk;
    if (ownTileRectPair(plain, tiled, &walk.rows, &walk.columns, &walk.xInTile, &walk.yInTile,
                        &walk.tileHeight, &walk.tileWidth, &walk.firstTileX, &walk.firstTileY,
                        &walk.nTilesX, &walk.nTilesY) == 0)
        return;

    const RmgROI *const own = plain->roi;
    const int x0 = own != nullptr ? own->xOffset : 0;
    const int y0 = own != nullptr ? own->yOffset : 0;
    RmgROI plainPart{own != nullptr ? own->coi : 0, 0, 0, 0, 0};
    // The plain image's own ROI comes back when this function returns, on
    // the failure paths too (a tile outside the grid, a null tile): the
    // caller's header never keeps a pointer to this record, which ends with
    // the call. The call-backs and reports are those of a walk that left
    // it in place.
    rmg::RoiStandIn standIn(plain, &plainPart);
    rmg::TileHeader part(*tiled, walk);
    if (!rmg::tileWalkStart(&walk, dstTiled ? tile : nullptr)) return;

    const int mode = dstTiled ? RMG_TILE_WRITE : op.srcTileMode;
    const char *const failure = dstTiled ? "Error get tile to write" : "Error get tile to read";
    const RmgCallBack callBack = tiled->tileInfo->callBack;
    rmg::forEachTile(walk, [&](int i, int j) {
        const int x = walk.firstTileX + j;
        const int y = walk.firstTileY + i;
        part.setPart(walk, i, j);
        plainPart.height = part.roi().height;
        plainPart.width = part.roi().width;
        plainPart.yOffset = partOrigin(i, y0, walk.tileHeight, walk.firstHeight);
        plainPart.xOffset = partOrigin(j, x0, walk.tileWidth, walk.firstWidth);
        callBack(tiled, x, y, mode);
        part.image()->imageData = tiled->tileInfo->tileData;
        if (part.image()->imageData == nullptr) {
            rmgError(RMG_StsError, op.funcName, failure, kModule, __LINE__);
            return false;
        }
        if (dstTiled)
            op.call(srcImage, part.image(), nullptr);
        else
            op.call(part.image(), dstImage, nullptr);
        callBack(tiled, x, y, RMG_TILE_RELEASE);
        return true;
    });
}

// Both images tiled. The grid is the destination's; for each part its tile
// is asked for to write, the source's pixels of the same size at the
// matching position are read into one block through ownGetExtendedRect
// (the border rules apply where the position lies beyond the source's
// edge), and the operation's step works on the block and the tile. The
// source's own header isn't touched here.
void pairBothTiled(const rmg::PairOperation &op, RmgImage *srcImage, RmgImage *dstImage,
                   const int *tile) {
    rmg::TileWalk walk;
    if (ownTileRectPair(srcImage, dstImage, &walk.rows, &walk.columns, &walk.xInTile, &walk.yInTile,
                        &walk.tileHeight, &walk.tileWidth, &walk.firstTileX, &walk.firstTileY,
                        &walk.nTilesX, &walk.nTilesY) == 0)
        return;

    const RmgROI *const own = srcImage->roi;
    const int x0 = own != nullptr ? own->xOffset : 0;
    const int y0 = own != nullptr ? own->yOffset : 0;
    // The block: a plain image of the part's size, whose rows ownImageRect
    // computes to the step the block has.
    RmgImage block = *srcImage;
    RmgROI blockRoi{own != nullptr ? own->coi : 0, 0, 0, 0, 0};
    block.tileInfo = nullptr;
    block.imageData = nullptr;
    block.roi = &blockRoi;
    rmg::TileHeader part(*dstImage, walk);
    if (!rmg::tileWalkStart(&walk, tile)) return;

    const RmgCallBack callBack = dstImage->tileInfo->callBack;
    rmg::forEachTile(walk, [&](int i, int j) {
        const int x = walk.firstTileX + j;
        const int y = walk.firstTileY + i;
        part.setPart(walk, i, j);
        const int sourceX = partOrigin(j, x0, walk.tileWidth, walk.firstWidth);
        const int sourceY = partOrigin(i, y0, walk.tileHeight, walk.firstHeight);
        callBack(dstImage, x, y, RMG_TILE_WRITE);
        part.image()->imageData = dstImage->tileInfo->tileData;
        if (part.image()->imageData == nullptr) {
            rmgError(RMG_StsError, op.funcName, "Error get tile to write", kModule, __LINE__);
            return false;
        }
        block.width = blockRoi.width = part.roi().width;
        block.height = blockRoi.height = part.roi().height;
        int rowStep = 0;
        unsigned char *pixels =
            ownGetExtendedRect(srcImage, sourceX, sourceY, block.width, block.height, &rowStep);
        // A read that fails, or a failure raised meanwhile, ends the walk
        // without a report of its own and without releasing the tile. The
        // block is this call's memory and goes back all the same.
        if (pixels == nullptr || rmgGetErrStatus() < 0) {
            ownReleaseExtendedRect(pixels);
            return false;
        }
        block.imageData = pixels;
        op.bothTiledStep(srcImage, &block, part.image(), sourceX, sourceY);
        callBack(dstImage, x, y, RMG_TILE_RELEASE);
        ownReleaseExtendedRect(pixels);
        block.imageData = nullptr;
        return true;
    });
}

// The copy of one part when both images are tiled: the block into the tile.
void copyTileStep(RmgImage *, RmgImage *block, RmgImage *part, int, int) {
    rmgCopy(block, part, nullptr);
}

template <int Size>
void copyChannel(const unsigned char *src, unsigned char *dst, int rows, int columns,
                 int srcRowStep, int dstRowStep, int srcStep, int dstStep, int channels) {
    for (int r = 0; r < rows; ++r) {
        const unsigned char *from = nthRow(src, r, srcRowStep);
        unsigned char *to = nthRow(dst, r, dstRowStep);
        if (channels == srcStep && channels == dstStep)
            rmgCopyBytes(from, to, mul32(mul32(columns, channels), Size));
        else
            rmgCopyStrided(from, to, columns, mul32(srcStep, Size), mul32(dstStep, Size), Size);
    }
}

// The 8 bytes from p as one number, the first byte highest, and back.
uint64_t loadHighFirst(const unsigned char *p) {
    uint64_t word = 0;
    for (int k = 0; k < 8; ++k) word = word << 8 | p[k];
    return word;
}

void storeHighFirst(unsigned char *p, uint64_t word) {
    for (int k = 7; k >= 0; --k, word >>= 8) p[k] = static_cast<unsigned char>(word);
}

// Changes the bits of `mask` in `*byte` to those of `bits`.
void putBits(unsigned char *byte, unsigned int bits, unsigned int mask) {
    *byte = static_cast<unsigned char>((*byte & ~mask) | (bits & mask));
}

const rmg::PairOperation kCopy = {
    "rmgCopy",
    rmgCopy,
    RMG_TILE_READ,
    {rmg::pairRow<rmgCopyRegion1u>,
     rmg::pairRow<rmgCopyRows>,
     {rmg::pairRow<rmgCopyChannel8>, rmg::pairRow<rmgCopyChannel16>,
      rmg::pairRow<rmgCopyChannel32>}},
    copyTileStep,
};

}  // namespace

// ---------------------------------------------------------------------------
// Row functions
// ---------------------------------------------------------------------------

void rmgCopyShifted(const unsigned char *src, unsigned char *dst, int leftShift, int rightShift,
                    int bytes) {
    int i = 0;
    if (leftShift + rightShift == 8) {
        // Eight output bytes from nine source bytes: the first eight as one
        // number, shifted, and the top bits of the ninth behind them.
        for (; i + 8 <= bytes; i += 8)
            storeHighFirst(dst + i, loadHighFirst(src + i) << leftShift | src[i + 8] >> rightShift);
    }
    for (; i < bytes; ++i)
        dst[i] = static_cast<unsigned char>(src[i] << leftShift | src[i + 1] >> rightShift);
}

void rmgCopyBits(const unsigned char *src, unsigned char *dst, int srcBit, int dstBit, int count) {
    // The mask arithmetic assumes at least one bit; with none there is
    // nothing to do.
    if (count <= 0) return;
    // The destination's masks as for rmgSetBits: the bits from dstBit down
    // in the first byte, and those of the run in the byte lastIndex.
    const unsigned int firstMask = 0xFFu >> (7 - dstBit);
    const int end = add32(count, 6 - dstBit);
    const int lastIndex = end >> 3;
    const unsigned int lastMask = (0xFFu << (7 - (end & 7))) & 0xFFu;
    // The byte index of the run's last source bit: a byte past it is not
    // read, whatever shift would name it.
    const int srcLastByte = add32(7 - srcBit, count - 1) >> 3;

    if (srcBit == dstBit) {
        if (lastIndex == 0) {
            putBits(dst, src[0], firstMask & lastMask);
            return;
        }
        putBits(dst, src[0], firstMask);
        rmgCopyBytes(src + 1, dst + 1, lastIndex - 1);
        putBits(dst + lastIndex, src[lastIndex], lastMask);
    } else if (srcBit > dstBit) {
        // The source lies further left in its byte: destination byte k is
        // source byte k - 1 shifted left and byte k shifted right.
        const int shift = srcBit - dstBit;
        if (lastIndex == 0) {
            putBits(dst, src[0] >> shift, firstMask & lastMask);
            return;
        }
        putBits(dst, src[0] >> shift, firstMask);
        rmgCopyShifted(src, dst + 1, 8 - shift, shift, lastIndex - 1);
        unsigned int last = src[lastIndex - 1] << (8 - shift);
        if (srcLastByte >= lastIndex) last |= src[lastIndex] >> shift;
        putBits(dst + lastIndex, last, lastMask);
    } else {
        // The source lies further right: destination byte k is source byte
        // k shifted left and byte k + 1 shifted right.
        const int shift = dstBit - srcBit;
        unsigned int last = src[lastIndex] << shift;
        if (srcLastByte > lastIndex) last |= src[lastIndex + 1] >> (8 - shift);
        if (lastIndex == 0) {
            putBits(dst, last, firstMask & lastMask);
            return;
        }
        const unsigned char first = dst[0];
        rmgCopyShifted(src, dst, shift, 8 - shift, lastIndex);
        // The first byte's bits in front of the run are put right again.
        putBits(dst, first, ~firstMask & 0xFFu);
        putBits(dst + lastIndex, last, lastMask);
    }
}

void rmgCopyRegion1u(const unsigned char *src, unsigned char *dst, int rows, int columns,
                     int srcRowStep, int dstRowStep, int srcX, int dstX) {
    for (int r = 0; r < rows; ++r)
        rmgCopyBits(nthRow(src, r, srcRowStep) + (srcX >> 3),
                    nthRow(dst, r, dstRowStep) + (dstX >> 3), 7 - (srcX & 7), 7 - (dstX & 7),
                    columns);
}

void rmgCopyRows(const unsigned char *src, unsigned char *dst, int rows, int rowBytes,
                 int srcRowStep, int dstRowStep, int srcPlaneStep, int dstPlaneStep, int planes) {
    rmg::forEachRun(src, dst, rows, rowBytes, srcRowStep, dstRowStep, srcPlaneStep, dstPlaneStep,
                    planes, rmgCopyBytes);
}

void rmgCopyChannel8(const unsigned char *src, unsigned char *dst, int rows, int columns,
                     int srcRowStep, int dstRowStep, int srcStep, int dstStep, int channels) {
    copyChannel<1>(src, dst, rows, columns, srcRowStep, dstRowStep, srcStep, dstStep, channels);
}

void rmgCopyChannel16(const unsigned char *src, unsigned char *dst, int rows, int columns,
                      int srcRowStep, int dstRowStep, int srcStep, int dstStep, int channels) {
    copyChannel<2>(src, dst, rows, columns, srcRowStep, dstRowStep, srcStep, dstStep, channels);
}

void rmgCopyChannel32(const unsigned char *src, unsigned char *dst, int rows, int columns,
                      int srcRowStep, int dstRowStep, int srcStep, int dstStep, int channels) {
    copyChannel<4>(src, dst, rows, columns, srcRowStep, dstRowStep, srcStep, dstStep, channels);
}

// ---------------------------------------------------------------------------
// The frame
// ---------------------------------------------------------------------------

namespace rmg {

void pairOperation(const PairOperation &op, RmgImage *srcImage, RmgImage *dstImage,
                   const int *tile) {
    if (!openImages(op.funcName, kModule, __LINE__, {srcImage, dstImage})) return;
    rmgCheckCompatible(srcImage, dstImage, op.funcName, kModule, __LINE__);
    // The status is sticky: an earlier failure, in this call or before it,
    // stops the operation here, and every recursion of a tiled path with it.
    if (rmgGetErrStatus() < 0) return;
    const bool srcTiled = srcImage->tileInfo != nullptr;
    const bool dstTiled = dstImage->tileInfo != nullptr;
    if (!srcTiled && !dstTiled)
        pairPlain(op.rows, srcImage, dstImage);
    else if (srcTiled && dstTiled)
        pairBothTiled(op, srcImage, dstImage, tile);
    else
        pairOneTiled(op, srcImage, dstImage, dstTiled, tile);
}

}  // namespace rmg

// ---------------------------------------------------------------------------
// The operation
// ---------------------------------------------------------------------------

extern "C" void rmgCopy(RmgImage *srcImage, RmgImage *dstImage, const int *tile) {
    rmg::pairOperation(kCopy, srcImage, dstImage, tile);
}
