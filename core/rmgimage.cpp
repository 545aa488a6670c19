// Image records and their life: headers, ROIs, tile records, pixel buffers,
// and the aligned scratch allocator that the row and region code uses.
// Nothing here raises a status: failure shows as a null result or an empty
// image.
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "core/rmgint.h"
#include "core/rmgvalid.h"
#include "ops/rmgfill.h"
#include "rmg.h"

using rmg::add32;
using rmg::mul32;

namespace {

// Copies a 4-byte name field. A name is read up to its terminating zero and
// never past it, so a short text such as "L" is not read beyond its end;
// the rest of the field is cleared. For names of 3 or 4 characters this
// copies the same 4 bytes as a plain word copy would.
void copyName(char field[4], const char *name) {
    size_t i = 0;
    for (; i < 4 && name[i] != '\0'; ++i) field[i] = name[i];
    for (; i < 4; ++i) field[i] = '\0';
}

// Row size and image size of the header arithmetic, in 32-bit words that
// wrap like the machine's. Any non-zero dataOrder counts as plane order.
void rowAndSize(int dataOrder, uint32_t depth, int align, int nChannels, int width,
                int height, int32_t *widthStep, int32_t *imageSize) {
    const int32_t bits = rmg::depthBits(depth);
    const int32_t alignBits = mul32(align, 8);
    int32_t rowBits = mul32(width, bits);
    if (dataOrder == RMG_DATA_PIXEL) rowBits = mul32(rowBits, nChannels);
    // ((rowBits + alignBits - 1) & -alignBits) >> 3, an arithmetic shift.
    const int32_t rounded = add32(rowBits, alignBits - 1) & static_cast<int32_t>(0u - static_cast<uint32_t>(alignBits));
    const int32_t step = rounded >> 3;
    *widthStep = step;
    if (imageSize != nullptr) {
        int32_t size = mul32(step, height);
        if (dataOrder != RMG_DATA_PIXEL) size = mul32(size, nChannels);
        *imageSize = size;
    }
}

// Aligned scratch block: `bytes` requested from malloc, the result rounded
// up to 8 bytes behind room for one pointer, and the raw block stored in the
// word directly in front of the result. On 32-bit systems this is
// (raw + 11) & ~7; on 64-bit systems the pointer slot is 8 bytes wide, and
// the 20 extra bytes still hold slot and rounding.
void *allocAligned(int32_t bytes) {
    void *raw = std::malloc(static_cast<size_t>(static_cast<uint32_t>(bytes)));
    if (raw == nullptr) return nullptr;
    const uintptr_t at = (reinterpret_cast<uintptr_t>(raw) + sizeof(void *) + 7u) & ~uintptr_t{7};
    void **result = reinterpret_cast<void **>(at);
    std::memcpy(result - 1, &raw, sizeof raw);
    return result;
}

}  // namespace

extern "C" {

int rmgWidthStep(int dataOrder, unsigned int depth, int align, int nChannels, int width) {
    int32_t step = 0;
    rowAndSize(dataOrder, depth, align, nChannels, width, 0, &step, nullptr);
    return step;
}

int rmgCheckNewHeader(const RmgImage *image) {
    int mask = 0;
    if (image->nChannels <= 0) mask |= 0x001;
    // Above nChannels and negative at once: only a negative nChannels lets
    // this bit come up. The two tests stand together on purpose.
    if (image->alphaChannel > image->nChannels && image->alphaChannel < 0) mask |= 0x002;
    if (!rmg::isLegalDepth(image->depth)) mask |= 0x004;
    if (image->alphaChannel < 0 || image->alphaChannel > image->nChannels) mask |= 0x010;
    if (image->dataOrder != RMG_DATA_PIXEL && image->dataOrder != RMG_DATA_PLANE) mask |= 0x020;
    if (image->origin != RMG_ORIGIN_TL && image->origin != RMG_ORIGIN_BL) mask |= 0x040;
    if (image->align != 4 && image->align != 8) mask |= 0x080;
    if (image->height < 0) mask |= 0x100;
    if (image->width < 0) mask |= 0x200;
    return mask;
}

void rmgSetBorderMode(RmgImage *image, int mode, int sides, int constant) {
    for (int i = 0; i < 4; ++i) {
        if (sides & (1 << i)) {
            image->borderConsts[i] = constant;
            image->borderModes[i] = mode;
        }
    }
}

RmgImage *rmgCreateImageHeader(int nChannels, int alphaChannel, unsigned int depth,
                               const char *colorModel, const char *channelSeq, int dataOrder,
                               int origin, int align, int height, int width, RmgROI *roi,
                               void *imageId, RmgTileInfo *tileInfo) {
    auto *image = static_cast<RmgImage *>(std::malloc(sizeof(RmgImage)));
    if (image == nullptr) return nullptr;
    image->headerSize = static_cast<int>(sizeof(RmgImage));
    image->headerVersion = 0;
    image->nChannels = nChannels;
    image->alphaChannel = alphaChannel;
    image->depth = depth;
    if (colorModel == nullptr || channelSeq == nullptr) {
        std::free(image);
        return nullptr;
    }
    copyName(image->colorModel, colorModel);
    copyName(image->channelSeq, channelSeq);
    image->dataOrder = dataOrder;
    image->origin = origin;
    image->align = align;
    image->height = height;
    image->width = width;
    image->roi = roi;
    image->imageId = imageId;
    image->tileInfo = tileInfo;
    image->maskRoi = nullptr;
    image->imageData = nullptr;
    image->dataOrigin = nullptr;
    int32_t step = 0;
    int32_t size = 0;
    rowAndSize(dataOrder, depth, align, nChannels, width, height, &step, &size);
    image->widthStep = step;
    image->imageSize = size;
    rmgSetBorderMode(image, RMG_BORDER_CONST, 15, 0);
    if (rmgCheckNewHeader(image) != 0) {
        std::free(image);
        return nullptr;
    }
    return image;
}

void rmgFillImage(RmgImage *image, int fillValue, int bits) {
    if (fillValue == -1) return;
    // One 32-bit pattern over the whole buffer, row padding included.
    rmgFill32(rmg::fillPattern32(fillValue, bits), image->imageData,
              static_cast<int>(static_cast<uint32_t>(image->imageSize) / 4u));
}

void rmgAllocateImage(RmgImage *image, int fillValue) {
    if (image == nullptr) return;
    if (rmgCheckNewHeader(image) != 0) {
        image->imageData = nullptr;
        image->imageSize = 0;
        return;
    }
    int32_t step = 0;
    int32_t size = 0;
    rowAndSize(image->dataOrder, image->depth, image->align, image->nChannels, image->width,
               image->height, &step, &size);
    const int32_t request = add32(image->align, size - 1);
    image->dataOrigin = static_cast<unsigned char *>(
        std::malloc(static_cast<size_t>(static_cast<uint32_t>(request))));
    if (image->dataOrigin == nullptr) return;
    image->imageSize = size;
    const auto a = static_cast<uintptr_t>(image->align);
    image->imageData = reinterpret_cast<unsigned char *>(
        (reinterpret_cast<uintptr_t>(image->dataOrigin) + a - 1) & ~(a - 1));
    image->widthStep = step;
    rmgFillImage(image, fillValue, rmg::depthBits(image->depth));
}

void rmgDeallocate(RmgImage *image, int flags) {
    if (image == nullptr) return;
    if ((flags & RMG_DEALLOC_ROI) && image->roi != nullptr) {
        std::free(image->roi);
        image->roi = nullptr;
    }
    if ((flags & RMG_DEALLOC_MASK) && image->maskRoi != nullptr) {
        // 15 is everything but the mask flag: the mask's own mask stays.
        rmgDeallocate(image->maskRoi, 15);
        image->maskRoi = nullptr;
    }
    if ((flags & RMG_DEALLOC_TILEINFO) && image->tileInfo != nullptr) {
        std::free(image->tileInfo);
        image->tileInfo = nullptr;
    }
    if ((flags & RMG_DEALLOC_DATA) && image->dataOrigin != nullptr) {
        std::free(image->dataOrigin);
        image->imageData = nullptr;
        image->dataOrigin = nullptr;
    }
    if (flags & RMG_DEALLOC_HEADER) std::free(image);
}

void rmgDeallocateHeader(RmgImage *image) { rmgDeallocate(image, RMG_DEALLOC_HEADER); }

void rmgDeallocateImageData(RmgImage *image) {
    if (image == nullptr || rmgCheckNewHeader(image) != 0) return;
    if (image->dataOrigin != nullptr) std::free(image->dataOrigin);
    image->imageData = nullptr;
    image->dataOrigin = nullptr;
}

void rmgSetROI(RmgROI *roi, int coi, int xOffset, int yOffset, int height, int width) {
    if (roi == nullptr) return;
    roi->coi = coi;
    roi->xOffset = xOffset;
    roi->yOffset = yOffset;
    roi->height = height;
    roi->width = width;
}

RmgROI *rmgCreateROI(int coi, int xOffset, int yOffset, int height, int width) {
    auto *roi = static_cast<RmgROI *>(std::malloc(sizeof(RmgROI)));
    rmgSetROI(roi, coi, xOffset, yOffset, height, width);
    return roi;
}

void rmgDeleteROI(RmgROI *roi) {
    if (roi != nullptr) std::free(roi);
}

void rmgSetTileInfo(RmgTileInfo *tileInfo, RmgCallBack callBack, void *id, int width,
                    int height) {
    if (tileInfo == nullptr) return;
    tileInfo->callBack = callBack;
    tileInfo->id = id;
    tileInfo->tileData = nullptr;
    tileInfo->width = width;
    tileInfo->height = height;
}

RmgTileInfo *rmgCreateTileInfo(RmgCallBack callBack, void *id, int width, int height) {
    auto *tileInfo = static_cast<RmgTileInfo *>(std::malloc(sizeof(RmgTileInfo)));
    if (tileInfo == nullptr) return nullptr;
    rmgSetTileInfo(tileInfo, callBack, id, width, height);
    return tileInfo;
}

void rmgDeleteTileInfo(RmgTileInfo *tileInfo) {
    if (tileInfo != nullptr) std::free(tileInfo);
}

void *rmgAlloc8(int n) { return allocAligned(add32(n, 20)); }
void *rmgAlloc16(int n) { return allocAligned(add32(mul32(n, 2), 20)); }
void *rmgAlloc32(int n) { return allocAligned(add32(mul32(n, 4), 20)); }
void *rmgAlloc64(int n) { return allocAligned(add32(mul32(n, 8), 20)); }

void *rmgFree(void *p) {
    // The two constant texts of rmgBadHeaderText are no blocks: callers free
    // what they were given without looking, so they are passed over here.
    if (p != nullptr && !rmg::isConstantHeaderText(p)) {
        void *raw;
        std::memcpy(&raw, static_cast<void **>(p) - 1, sizeof raw);
        std::free(raw);
    }
    return nullptr;
}

}  // extern "C"
