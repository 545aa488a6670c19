// rmgAndS: the bitwise AND of every element of an image's region with a
// constant, into a second image; and its row kernels. The constant is
// replicated by depth into a 32-bit mask once, so that one byte-range
// kernel serves elements of 8, 16 and 32 bits; only a channel of interest
// in pixel order makes the work go element by element.
#include <cstddef>
#include <cstdint>

#include "core/rmgint.h"
#include "ops/ownand.h"
#include "ops/rmgpoint.h"
#include "rmg.h"

namespace {

constexpr char kModule[] = "rmgands";

int minOf(int a, int b) { return a < b ? a : b; }

// Rows of a region that lie inside an image's imageSize bytes, of `rows`
// rows `step` bytes apart whose touched bytes run from `first` for `span`
// bytes (offsets from imageData). The region follows the header's
// widthStep, which an application may have changed; whatever would fall
// outside the buffer is left out, from the last row back. A region that
// starts in front of the buffer has no rows.
int rowsInside(const RmgImage *image, int64_t first, int64_t span, int step, int rows) {
    if (first < 0 || rows <= 0) return 0;
    const int64_t room = static_cast<int64_t>(image->imageSize) - first - span;
    if (room < 0) return 0;
    if (step <= 0) return rows;
    const int64_t fit = room / step + 1;
    return fit < rows ? static_cast<int>(fit) : rows;
}

// Where an image's region starts: the ROI's first row and column, in
// bytes from imageData; pixel order counts whole pixels, plane order one
// element per column. Without ROI, 0.
int64_t regionStart(const RmgImage *image, int size) {
    const RmgROI *roi = image->roi;
    if (roi == nullptr) return 0;
    const int64_t column = image->dataOrder == RMG_DATA_PIXEL
                               ? static_cast<int64_t>(roi->xOffset) * image->nChannels * size
                               : static_cast<int64_t>(roi->xOffset) * size;
    return column + static_cast<int64_t>(roi->yOffset) * image->widthStep;
}

// rmgAndRows over `rows` rows of `rowBytes` bytes from the two offsets,
// within both buffers.
void andRowsAt(const RmgImage *srcImage, const RmgImage *dstImage, int64_t srcFirst,
               int64_t dstFirst, int rowBytes, int rows, uint64_t mask) {
    rows = minOf(rowsInside(srcImage, srcFirst, rowBytes, srcImage->widthStep, rows),
                 rowsInside(dstImage, dstFirst, rowBytes, dstImage->widthStep, rows));
    if (rows <= 0) return;
    rmgAndRows(srcImage->imageData + srcFirst, dstImage->imageData + dstFirst, rowBytes, rows,
               srcImage->widthStep, dstImage->widthStep, mask);
}

// The channel kernel of an element size.
void andCoi(const unsigned char *src, unsigned char *dst, int width, int height, int srcChannels,
            int dstChannels, int srcStep, int dstStep, int srcIndex, int dstIndex, int size,
            uint32_t mask) {
    switch (size) {
        case 1:
            rmgAndCoi8(src, dst, width, height, srcChannels, dstChannels, srcStep, dstStep,
                       srcIndex, dstIndex, static_cast<uint8_t>(mask));
            break;
        case 2:
            rmgAndCoi16(src, dst, width, height, srcChannels, dstChannels, srcStep, dstStep,
                        srcIndex, dstIndex, static_cast<uint16_t>(mask));
            break;
        default:
            rmgAndCoi32(src, dst, width, height, srcChannels, dstChannels, srcStep, dstStep,
                        srcIndex, dstIndex, mask);
            break;
    }
}

// One channel of pixel-order images: the source's channel srcCoi - 1 into
// the destination's channel dstCoi - 1.
void andChannelAt(const RmgImage *srcImage, const RmgImage *dstImage, int64_t srcStart,
                  int64_t dstStart, int width, int height, int srcCoi, int dstCoi, int size,
                  uint32_t mask) {
    if (width <= 0 || height <= 0) return;
    const int srcChannels = srcImage->nChannels;
    const int dstChannels = dstImage->nChannels;
    const int64_t srcFirst = srcStart + static_cast<int64_t>(srcCoi - 1) * size;
    const int64_t dstFirst = dstStart + static_cast<int64_t>(dstCoi - 1) * size;
    const int64_t srcSpan = static_cast<int64_t>(width - 1) * srcChannels * size + size;
    const int64_t dstSpan = static_cast<int64_t>(width - 1) * dstChannels * size + size;
    const unsigned char *src = srcImage->imageData + srcStart;
    unsigned char *dst = dstImage->imageData + dstStart;
    if (dstFirst < 0) {
        // A one-channel destination without ROI has coi 0 here, so its
        // channel index is -1: element i of a row goes to the element
        // before pixel i. In the first row that is, for i = 0, the element
        // in front of the buffer; it is not written. The rest of the first
        // row and the other rows get their results as the index says.
        const int rest = minOf(
            rowsInside(srcImage, srcFirst + srcChannels * size, srcSpan - srcChannels * size, 0, 1),
            rowsInside(dstImage, dstFirst + dstChannels * size, dstSpan - dstChannels * size, 0,
                       1));
        if (width > 1 && rest > 0)
            andCoi(src + srcChannels * size, dst + dstChannels * size, width - 1, 1, srcChannels,
                   dstChannels, 0, 0, srcCoi - 1, dstCoi - 1, size, mask);
        srcStart += srcImage->widthStep;
        dstStart += dstImage->widthStep;
        andChannelAt(srcImage, dstImage, srcStart, dstStart, width, height - 1, srcCoi, dstCoi,
                     size, mask);
        return;
    }
    height = minOf(rowsInside(srcImage, srcFirst, srcSpan, srcImage->widthStep, height),
                   rowsInside(dstImage, dstFirst, dstSpan, dstImage->widthStep, height));
    if (height <= 0) return;
    andCoi(src, dst, width, height, srcChannels, dstChannels, srcImage->widthStep,
           dstImage->widthStep, srcCoi - 1, dstCoi - 1, size, mask);
}

// The scheme of rmgAndS8, rmgAndS16 and rmgAndS32, `size` the element's
// bytes.
void andElements(const RmgImage *srcImage, const RmgImage *dstImage, int size, uint32_t mask) {
    if (srcImage->imageData == nullptr || dstImage->imageData == nullptr) return;
    int srcCoi, srcHeight, srcWidth, dstCoi, dstHeight, dstWidth;
    rmgRoiSize(srcImage, nullptr, &srcCoi, &srcHeight, &srcWidth);
    rmgRoiSize(dstImage, nullptr, &dstCoi, &dstHeight, &dstWidth);
    const int width = minOf(srcWidth, dstWidth);
    const int height = minOf(srcHeight, dstHeight);
    if (width <= 0 || height <= 0) return;
    const uint64_t mask64 = (static_cast<uint64_t>(mask) << 32) | mask;
    const int64_t srcStart = regionStart(srcImage, size);
    const int64_t dstStart = regionStart(dstImage, size);

    if (srcImage->dataOrder == RMG_DATA_PLANE) {
        const int64_t srcPlane = static_cast<int64_t>(srcImage->widthStep) * srcImage->height;
        const int64_t dstPlane = static_cast<int64_t>(dstImage->widthStep) * dstImage->height;
        const int rowBytes = rmg::mul32(width, size);
        if (srcCoi != 0) {
            // The plane of each coi. A destination with coi 0 (one channel,
            // no ROI) would be the plane before its first, which lies
            // wholly in front of its buffer: nothing is written then.
            andRowsAt(srcImage, dstImage, srcStart + srcPlane * (srcCoi - 1),
                      dstStart + dstPlane * (dstCoi - 1), rowBytes, height, mask64);
            return;
        }
        // Every plane of the source, the destination's planes beside them.
        for (int p = 0; p < srcImage->nChannels; ++p)
            andRowsAt(srcImage, dstImage, srcStart + srcPlane * p, dstStart + dstPlane * p,
                      rowBytes, height, mask64);
        return;
    }
    if (srcCoi != 0) {
        andChannelAt(srcImage, dstImage, srcStart, dstStart, width, height, srcCoi, dstCoi, size,
                     mask);
        return;
    }
    andRowsAt(srcImage, dstImage, srcStart, dstStart,
              rmg::mul32(rmg::mul32(width, srcImage->nChannels), size), height, mask64);
}

// A row kernel of rmgAndS and its mask.
struct AndSCall {
    void (*rows)(const RmgImage *, const RmgImage *, uint32_t);
    uint32_t mask;
};

// The plain path of one pair of images, or of one piece of the tile walk.
void andSPiece(const AndSCall &call, const RmgImage *srcImage, const RmgImage *dstImage) {
    if (rmgIsWholeImage(srcImage, dstImage))
        rmgAndSWhole(srcImage, dstImage, call.mask);
    else
        call.rows(srcImage, dstImage, call.mask);
}

void walkKernel(void *context, const RmgImage *const *copies) {
    andSPiece(*static_cast<const AndSCall *>(context), copies[0], copies[1]);
}

}  // namespace

void rmgRoiSize(const RmgImage *image, int *channels, int *coi, int *height, int *width) {
    if (channels != nullptr) *channels = image->nChannels;
    RmgRoiRect rect;
    rmgRoiRect(image, &rect);
    *height = rect.height;
    *width = rect.width;
    if (image->roi == nullptr)
        *coi = 0;
    else
        *coi = image->nChannels == 1 ? 1 : image->roi->coi;
}

uint32_t rmgAndSMask(unsigned int depth, int value) {
    // The rule of the fill pattern: bit 0 spread, the low byte or half
    // repeated, or the value itself.
    return rmg::fillPattern32(value, rmg::depthBits(depth));
}

void rmgAndSWhole(const RmgImage *srcImage, const RmgImage *dstImage, uint32_t mask) {
    const int count = srcImage->imageSize / 4;
    if (srcImage->align == 8)
        rmgAndWords64(srcImage->imageData, dstImage->imageData, count / 2,
                      (static_cast<uint64_t>(mask) << 32) | mask);
    else
        rmgAndWords32(srcImage->imageData, dstImage->imageData, count, mask);
}

void rmgAndS1u(const RmgImage *srcImage, const RmgImage *dstImage, uint32_t mask) {
    if (srcImage->imageData == nullptr || dstImage->imageData == nullptr) return;
    int srcCoi, srcHeight, srcWidth, dstCoi, dstHeight, dstWidth;
    rmgRoiSize(srcImage, nullptr, &srcCoi, &srcHeight, &srcWidth);
    rmgRoiSize(dstImage, nullptr, &dstCoi, &dstHeight, &dstWidth);
    const int width = minOf(srcWidth, dstWidth);
    int height = minOf(srcHeight, dstHeight);
    if (width <= 0 || height <= 0) return;
    const RmgROI *srcRoi = srcImage->roi;
    const RmgROI *dstRoi = dstImage->roi;
    const int srcX = srcRoi != nullptr ? srcRoi->xOffset : 0;
    const int dstX = dstRoi != nullptr ? dstRoi->xOffset : 0;
    const int64_t srcRow = srcRoi != nullptr ? int64_t{srcRoi->yOffset} * srcImage->widthStep : 0;
    const int64_t dstRow = dstRoi != nullptr ? int64_t{dstRoi->yOffset} * dstImage->widthStep : 0;
    if (srcX < 0 || dstX < 0) return;
    const int64_t srcSpan = ((srcX & 7) + static_cast<int64_t>(width) + 7) / 8;
    const int64_t dstSpan = ((dstX & 7) + static_cast<int64_t>(width) + 7) / 8;
    height = minOf(rowsInside(srcImage, srcRow + srcX / 8, srcSpan, srcImage->widthStep, height),
                   rowsInside(dstImage, dstRow + dstX / 8, dstSpan, dstImage->widthStep, height));
    if (height <= 0) return;
    rmgAndBits(srcImage->imageData + srcRow, dstImage->imageData + dstRow, srcX, dstX, width,
               height, srcImage->widthStep, dstImage->widthStep, mask);
}

void rmgAndS8(const RmgImage *srcImage, const RmgImage *dstImage, uint32_t mask) {
    andElements(srcImage, dstImage, 1, mask);
}

void rmgAndS16(const RmgImage *srcImage, const RmgImage *dstImage, uint32_t mask) {
    andElements(srcImage, dstImage, 2, mask);
}

void rmgAndS32(const RmgImage *srcImage, const RmgImage *dstImage, uint32_t mask) {
    andElements(srcImage, dstImage, 4, mask);
}

extern "C" void rmgAndS(const RmgImage *srcImage, RmgImage *dstImage, int value,
                        const int *tilePos) {
    if (!rmgPointOpen(srcImage, dstImage, "rmgAndS", kModule)) return;
    const int index = ownAndKernelIndex(srcImage->depth);
    if (index < 0) return;
    static constexpr void (*kRows[4])(const RmgImage *, const RmgImage *, uint32_t) = {
        rmgAndS1u, rmgAndS8, rmgAndS16, rmgAndS32};
    AndSCall call{kRows[index], rmgAndSMask(srcImage->depth, value)};
    if (srcImage->tileInfo == nullptr && dstImage->tileInfo == nullptr) {
        andSPiece(call, srcImage, dstImage);
        return;
    }
    const RmgWalkImage images[2] = {RMG_WALK_IMAGE(srcImage), RMG_WALK_IMAGE(dstImage)};
    rmgPointTileWalk(images, 2, tilePos, "rmgAndS", kModule, walkKernel, &call);
}
