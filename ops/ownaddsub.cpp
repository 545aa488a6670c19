// Element kernels of scalar add and subtract: the scalar form of the runs,
// the shapes, the one-channel loop, the schemes of the row kernels and the
// way from an operation to its row kernel or tile walk.
#include "ops/ownaddsub.h"

#include <cstddef>
#include <cstdint>

#include "core/rmgcpu.h"
#include "ops/ownaddsub_impl.h"
#include "ops/rmgpoint.h"
#include "rmg.h"

namespace rmg {

int elemFamilySize(int family) { return static_cast<int>(familySize(family)); }

void elemRunScalar(int family, const unsigned char *src, unsigned char *dst, size_t n,
                   int64_t v) {
    elemLoop(family, src, dst, n, v);
}

void elemChannelScalar(int family, const unsigned char *src, unsigned char *dst, size_t pixels,
                       int channels, int channel, int64_t v) {
    elemChannelLoop(family, src, dst, pixels, channels, channel, v);
}

}  // namespace rmg

namespace {

int minOf(int a, int b) { return a < b ? a : b; }

ptrdiff_t times(int a, int b) { return static_cast<ptrdiff_t>(a) * b; }

}  // namespace

void ownElemsRun(int family, const unsigned char *src, unsigned char *dst, int count,
                 int64_t value) {
    if (count <= 0) return;
    rmg::kElemRun.get()(family, src, dst, static_cast<size_t>(count), value);
}

void ownElemsRows(int family, const unsigned char *src, unsigned char *dst, int count, int rows,
                  int srcStep, int dstStep, int64_t value) {
    if (count <= 0) return;
    const rmg::ElemRunFn run = rmg::kElemRun.get();
    for (int r = 0; r < rows; ++r)
        run(family, src + times(r, srcStep), dst + times(r, dstStep), static_cast<size_t>(count),
            value);
}

void ownElemsPlanes(int family, const unsigned char *src, unsigned char *dst, int count,
                    int rows, int planes, int srcStep, int dstStep, int srcPlaneStep,
                    int dstPlaneStep, int64_t value) {
    for (int p = 0; p < planes; ++p)
        ownElemsRows(family, src + times(p, srcPlaneStep), dst + times(p, dstPlaneStep), count,
                     rows, srcStep, dstStep, value);
}

void ownElemsStrided(int family, const unsigned char *src, unsigned char *dst, int count,
                     int srcStride, int dstStride, int64_t value) {
    if (count <= 0) return;
    rmg::elemLoop(family, src, dst, static_cast<size_t>(count), value, srcStride, dstStride);
}

void ownAddSubImages(const RmgImage *srcImage, const RmgImage *dstImage, int family,
                     int64_t value, int oneFamily, int64_t oneValue) {
    const int size = rmg::elemFamilySize(family);
    // Whole images: flat arrays of imageSize bytes, the padding at the end
    // of each row processed like any element.
    if (rmgIsWholeImage(srcImage, dstImage)) {
        ownElemsRun(family, srcImage->imageData, dstImage->imageData, srcImage->imageSize / size,
                    value);
        return;
    }
    const RmgImage *images[2] = {srcImage, dstImage};
    RmgPointPlan plan;
    if (!rmgPointPlanOf(images, 2, &plan)) return;
    const unsigned char *src = plan.data[0];
    unsigned char *dst = plan.data[1];
    const int count = plan.rowBytes / size;
    switch (plan.kase) {
    case 'A':
    case 'B':
        // B: the one plane of the coi in each image.
        if (plan.contiguous)
            ownElemsRun(family, src, dst, count * plan.rows, value);
        else
            ownElemsRows(family, src, dst, count, plan.rows, plan.step[0], plan.step[1], value);
        break;
    case 'C': {
        // Each image steps over its own channels. A row holds the pixels
        // that both images' regions have. Contiguous rows with the same
        // number of pixels in both images run as one long row; with
        // different numbers (images of different channel counts) the
        // rows go one by one, so that pixel (r, i) meets pixel (r, i).
        const int pixels = minOf(plan.pixels[0], plan.pixels[1]);
        const bool longRow = plan.contiguous && plan.pixels[0] == plan.pixels[1];
        const int count = longRow ? pixels * plan.rows : pixels;
        const int rows = longRow ? 1 : plan.rows;
        const int srcChannel = srcImage->roi->coi - 1;
        const int dstChannel = dstImage->roi->coi - 1;
        if (plan.nChannels[0] == plan.nChannels[1] && srcChannel == dstChannel) {
            // The same channel of pixels of one size: the channel kernel,
            // from each pixel's start.
            const rmg::ElemChannelFn channel = rmg::kElemChannel.get();
            const int at = srcChannel * size;
            for (int r = 0; r < rows; ++r)
                channel(oneFamily, src + times(r, plan.step[0]) - at,
                        dst + times(r, plan.step[1]) - at, static_cast<size_t>(count),
                        plan.nChannels[0], srcChannel, oneValue);
            break;
        }
        const int srcStride = plan.nChannels[0] * size;
        const int dstStride = plan.nChannels[1] * size;
        for (int r = 0; r < rows; ++r)
            ownElemsStrided(oneFamily, src + times(r, plan.step[0]), dst + times(r, plan.step[1]),
                            count, srcStride, dstStride, oneValue);
        break;
    }
    case 'D':
        if (plan.contiguous)
            ownElemsRows(family, src, dst, count * plan.rows, plan.planes, plan.planeStep[0],
                         plan.planeStep[1], value);
        else
            ownElemsPlanes(family, src, dst, count, plan.rows, plan.planes, plan.step[0],
                           plan.step[1], plan.planeStep[0], plan.planeStep[1], value);
        break;
    default:
        break;
    }
}

namespace {

// Columns of a bit row that lie inside a buffer of `size` bytes when the row
// starts at byte `row` with bit phase `phase`: at most `width`.
int64_t columnsInside(int64_t row, int phase, int width, int size) {
    if (row < 0 || row >= size) return 0;
    const int64_t inside = (static_cast<int64_t>(size) - row) * 8 - phase;
    return inside < width ? inside : width;
}

// One bit of the 1-bit formulas: e or m, e and not m, (not e) and m.
bool bitOf(int family, bool e, bool m) {
    switch (family) {
    case rmg::kOr1u:
        return e || m;
    case rmg::kAndNot1u:
        return e && !m;
    default:
        return !e && m;
    }
}

}  // namespace

void ownAddSubBits(const RmgImage *srcImage, const RmgImage *dstImage, int family, int value) {
    const int64_t mask = (value & 1) ? 0xFF : 0x00;
    // Whole images: whole 32-bit words; bytes beyond a multiple of 4 stay.
    if (rmgIsWholeImage(srcImage, dstImage)) {
        ownElemsRun(family, srcImage->imageData, dstImage->imageData,
                    srcImage->imageSize / 4 * 4, mask);
        return;
    }
    int srcWidth, srcHeight, srcPhase, dstWidth, dstHeight, dstPhase;
    const int srcOffset = rmgBitRect(srcImage, &srcWidth, &srcHeight, &srcPhase);
    const int dstOffset = rmgBitRect(dstImage, &dstWidth, &dstHeight, &dstPhase);
    if (srcOffset < 0 || dstOffset < 0) return;
    const int width = minOf(srcWidth, dstWidth);
    const int height = minOf(srcHeight, dstHeight);
    const unsigned char *src = srcImage->imageData;
    unsigned char *dst = dstImage->imageData;
    for (int r = 0; r < height; ++r) {
        const int64_t srcRow = srcOffset + static_cast<int64_t>(r) * srcImage->widthStep;
        const int64_t dstRow = dstOffset + static_cast<int64_t>(r) * dstImage->widthStep;
        // The bit rectangle is not cut by its offset: a ROI that reaches
        // past the image's right or bottom edge runs on into the padding,
        // the next row, and beyond the buffer's end. Bits whose byte lies
        // outside either image's imageSize bytes are neither read nor
        // written; the rest are done as the rectangle says.
        int64_t columns = columnsInside(srcRow, srcPhase, width, srcImage->imageSize);
        const int64_t dstColumns = columnsInside(dstRow, dstPhase, width, dstImage->imageSize);
        if (dstColumns < columns) columns = dstColumns;
        for (int64_t x = 0; x < columns; ++x) {
            const int64_t sBit = srcPhase + x;
            const int64_t dBit = dstPhase + x;
            const unsigned char sByte = src[srcRow + (sBit >> 3)];
            const auto sMask = static_cast<unsigned char>(0x80u >> (sBit & 7));
            const auto dMask = static_cast<unsigned char>(0x80u >> (dBit & 7));
            const bool bit = bitOf(family, (sByte & sMask) != 0, mask != 0);
            unsigned char &d = dst[dstRow + (dBit >> 3)];
            d = static_cast<unsigned char>(bit ? (d | dMask) : (d & ~dMask));
        }
    }
}

namespace {

struct WalkContext {
    const OwnAddSubCall *call;
};

void callRows(const OwnAddSubCall &call, const RmgImage *srcImage, const RmgImage *dstImage) {
    if (call.add != nullptr)
        call.add(srcImage, dstImage, call.value);
    else
        call.subtract(srcImage, dstImage, call.value, call.reversed);
}

void walkKernel(void *context, const RmgImage *const *copies) {
    callRows(*static_cast<WalkContext *>(context)->call, copies[0], copies[1]);
}

}  // namespace

void ownAddSubRun(const RmgImage *srcImage, RmgImage *dstImage, const int *tilePos,
                  const char *funcName, const char *module, const OwnAddSubCall &call) {
    if (srcImage->tileInfo == nullptr && dstImage->tileInfo == nullptr) {
        callRows(call, srcImage, dstImage);
        return;
    }
    const RmgWalkImage images[2] = {
        {srcImage, "(srcImage->tileInfo->tileData == ((void*)(0)))",
         "(srcImage->tileInfo->tileData != ((void*)(0)))"},
        {dstImage, "(dstImage->tileInfo->tileData == ((void*)(0)))",
         "(dstImage->tileInfo->tileData != ((void*)(0)))"},
    };
    WalkContext context{&call};
    rmgPointTileWalk(images, 2, tilePos, funcName, module, walkKernel, &context);
}
