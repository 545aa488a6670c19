// rmgAnd: the bitwise AND of two images, element by element, into a third;
// and its row kernels, which follow the cases of the point operations
// over three images and combine raw bytes.
#include <cstddef>
#include <cstdint>

#include "core/rmgvalid.h"
#include "ops/ownand.h"
#include "ops/rmgpoint.h"
#include "rmg.h"

namespace {

constexpr char kModule[] = "rmgand";

int minOf(int a, int b) { return a < b ? a : b; }

ptrdiff_t times(int a, int b) { return static_cast<ptrdiff_t>(a) * b; }

bool fail(const char *text, int line) {
    rmgError(RMG_StsBadArg, "rmgAnd", text, kModule, line);
    return false;
}

// The checks of rmgAnd, in order; the first fault is raised and ends it.
bool andOpen(const RmgImage *srcImageA, const RmgImage *srcImageB, const RmgImage *dstImage) {
    if (!rmg::openImages("rmgAnd", kModule, __LINE__, {srcImageA, srcImageB, dstImage}))
        return false;
    if (srcImageA->depth != dstImage->depth)
        return fail("(srcImageA->depth != dstImage->depth)", __LINE__);
    if (srcImageB->depth != dstImage->depth)
        return fail("(srcImageB->depth != dstImage->depth)", __LINE__);
    if (srcImageA->dataOrder != dstImage->dataOrder)
        return fail("(srcImageA->dataOrder != dstImage->dataOrder)", __LINE__);
    if (srcImageB->dataOrder != dstImage->dataOrder)
        return fail("(srcImageB->dataOrder != dstImage->dataOrder)", __LINE__);
    const int nChDst = rmgPointChannels(dstImage);
    if (rmgPointChannels(srcImageA) != nChDst) return fail("(nChSrcA != nChDst)", __LINE__);
    if (rmgPointChannels(srcImageB) != nChDst) return fail("(nChSrcB != nChDst)", __LINE__);
    return true;
}

// rmgAndBytes over the plan's rows, or one run when they are contiguous.
void andRows(const RmgPointPlan &plan, const unsigned char *a, const unsigned char *b,
             unsigned char *d) {
    if (plan.contiguous)
        rmgAndBytes(a, b, d, plan.rowBytes * plan.rows);
    else
        ownAndByteRows(a, b, d, plan.rowBytes, plan.rows, plan.step[0], plan.step[1], plan.step[2]);
}

// The scheme of rmgAnd8, rmgAnd16 and rmgAnd32, `size` the element's bytes.
void andImages(const RmgImage *srcImageA, const RmgImage *srcImageB, const RmgImage *dstImage,
               int size) {
    // A tiled srcImageB beside untiled srcImageA and dstImage comes here
    // with no pixels of its own (imageData null): there is nothing to read,
    // and nothing is written.
    if (srcImageA->imageData == nullptr || srcImageB->imageData == nullptr ||
        dstImage->imageData == nullptr)
        return;
    if (rmgIsWholeImage(srcImageA, dstImage) && rmgIsWholeImage(srcImageB, dstImage)) {
        // Flat over the buffers, row padding included; 32-bit images in
        // whole words.
        const int bytes = size == 4 ? dstImage->imageSize / 4 * 4 : dstImage->imageSize;
        rmgAndBytes(srcImageA->imageData, srcImageB->imageData, dstImage->imageData, bytes);
        return;
    }
    const RmgImage *images[3] = {srcImageA, srcImageB, dstImage};
    RmgPointPlan plan;
    if (!rmgPointPlanOf(images, 3, &plan)) return;
    const unsigned char *a = plan.data[0];
    const unsigned char *b = plan.data[1];
    unsigned char *d = plan.data[2];
    switch (plan.kase) {
        case 'A':
        case 'B':
            // B: the one plane of the coi in each image.
            andRows(plan, a, b, d);
            break;
        case 'C': {
            // Each image steps over its own channels; a row holds the pixels
            // that all three regions have.
            const int pixels = minOf(minOf(plan.pixels[0], plan.pixels[1]), plan.pixels[2]);
            ownAndChannels(a, b, d, pixels, plan.rows, plan.step[0], plan.step[1], plan.step[2],
                           plan.nChannels[0] * size, plan.nChannels[1] * size,
                           plan.nChannels[2] * size, size);
            break;
        }
        case 'D':
            for (int p = 0; p < plan.planes; ++p)
                andRows(plan, a + times(p, plan.planeStep[0]), b + times(p, plan.planeStep[1]),
                        d + times(p, plan.planeStep[2]));
            break;
        default:
            break;
    }
}

// Bit columns of a row from byte `row` with bit phase `phase` that lie
// inside a buffer of `size` bytes: at most `width`.
int64_t columnsInside(int64_t row, int phase, int width, int size) {
    if (row < 0 || row >= size) return 0;
    const int64_t inside = (static_cast<int64_t>(size) - row) * 8 - phase;
    return inside < width ? inside : width;
}

bool bitAt(const unsigned char *bytes, int64_t bit) {
    return (bytes[bit >> 3] & (0x80u >> (bit & 7))) != 0;
}

using Kernel = void (*)(const RmgImage *, const RmgImage *, const RmgImage *);

// The row kernels through the tile walk.
void walkKernel(void *context, const RmgImage *const *copies) {
    (*static_cast<const Kernel *>(context))(copies[0], copies[1], copies[2]);
}

}  // namespace

void rmgAnd1u(const RmgImage *srcImageA, const RmgImage *srcImageB, const RmgImage *dstImage) {
    if (srcImageA->imageData == nullptr || srcImageB->imageData == nullptr ||
        dstImage->imageData == nullptr)
        return;
    if (rmgIsWholeImage(srcImageA, dstImage) && rmgIsWholeImage(srcImageB, dstImage)) {
        rmgAndBytes(srcImageA->imageData, srcImageB->imageData, dstImage->imageData,
                    dstImage->imageSize);
        return;
    }
    const RmgImage *images[3] = {srcImageA, srcImageB, dstImage};
    int offset[3], width[3], height[3], phase[3];
    for (int i = 0; i < 3; ++i) {
        offset[i] = rmgBitRect(images[i], &width[i], &height[i], &phase[i]);
        if (offset[i] < 0) return;
    }
    const int columns = minOf(minOf(width[0], width[1]), width[2]);
    const int rows = minOf(minOf(height[0], height[1]), height[2]);
    unsigned char *dst = dstImage->imageData;
    for (int r = 0; r < rows; ++r) {
        int64_t row[3];
        int64_t inside = columns;
        for (int i = 0; i < 3; ++i) {
            row[i] = offset[i] + static_cast<int64_t>(r) * images[i]->widthStep;
            // The bit rectangle is not cut by its offset, so it may run on
            // past the row and the buffer's end: bits whose byte lies
            // outside any of the three buffers are neither read nor written.
            const int64_t here = columnsInside(row[i], phase[i], columns, images[i]->imageSize);
            if (here < inside) inside = here;
        }
        for (int64_t x = 0; x < inside; ++x) {
            const bool bit = bitAt(srcImageA->imageData, row[0] * 8 + phase[0] + x) &&
                             bitAt(srcImageB->imageData, row[1] * 8 + phase[1] + x);
            const int64_t dBit = row[2] * 8 + phase[2] + x;
            unsigned char &byte = dst[dBit >> 3];
            const auto m = static_cast<unsigned char>(0x80u >> (dBit & 7));
            byte = static_cast<unsigned char>(bit ? (byte | m) : (byte & ~m));
        }
    }
}

void rmgAnd8(const RmgImage *srcImageA, const RmgImage *srcImageB, const RmgImage *dstImage) {
    andImages(srcImageA, srcImageB, dstImage, 1);
}

void rmgAnd16(const RmgImage *srcImageA, const RmgImage *srcImageB, const RmgImage *dstImage) {
    andImages(srcImageA, srcImageB, dstImage, 2);
}

void rmgAnd32(const RmgImage *srcImageA, const RmgImage *srcImageB, const RmgImage *dstImage) {
    andImages(srcImageA, srcImageB, dstImage, 4);
}

extern "C" void rmgAnd(const RmgImage *srcImageA, const RmgImage *srcImageB, RmgImage *dstImage,
                       const int *tilePos) {
    if (!andOpen(srcImageA, srcImageB, dstImage)) return;
    const int index = ownAndKernelIndex(dstImage->depth);
    if (index < 0) return;
    static constexpr Kernel kKernels[4] = {rmgAnd1u, rmgAnd8, rmgAnd16, rmgAnd32};
    Kernel kernel = kKernels[index];
    // The plain path is decided by srcImageA and dstImage alone; a tiled
    // srcImageB beside them is read through its imageData.
    if (srcImageA->tileInfo == nullptr && dstImage->tileInfo == nullptr) {
        kernel(srcImageA, srcImageB, dstImage);
        return;
    }
    const RmgWalkImage images[3] = {RMG_WALK_IMAGE(srcImageA), RMG_WALK_IMAGE(srcImageB),
                                    RMG_WALK_IMAGE(dstImage)};
    rmgPointTileWalk(images, 3, tilePos, "rmgAnd", kModule, walkKernel, &kernel);
}
