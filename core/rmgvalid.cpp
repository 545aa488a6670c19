// Header validation: the test every operation makes of its images, the text
// of its bit mask, the comparison of two images, the assertion-style
// validator, and the standard opening of an operation.
#include "core/rmgvalid.h"

#include <cstring>

#include "core/rmgint.h"
#include "rmg.h"

namespace {

struct HeaderText {
    int mask;
    const char *text;
};

// Walked in this order, by the text builder too: 0x0008 stands last.
// Every text is 70 characters of words and blanks and a line feed.
const HeaderText kHeaderTexts[] = {
    {0x0001, "Image header is null                                                  \n"},
    {0x0002, "Image data and tileinfo is either null or not null                    \n"},
    {0x0004, "Image size is invalid                                                 \n"},
    {0x0010, "Image widthStep is invalid                                            \n"},
    {0x0020, "Image channel's number is less one                                    \n"},
    {0x0040, "For image depth 1U channel's number is not equal one                  \n"},
    {0x0080, "Image depth is invalid                                                \n"},
    {0x0100, "Image alpha channel's number is less zero or is more channel's number \n"},
    {0x0200, "Image data order is invalid                                           \n"},
    {0x0400, "Image origin is invalid                                               \n"},
    {0x0800, "Image align is invalid                                                \n"},
    {0x1000, "Callback is null                                                      \n"},
    {0x2000, "Tile size is invalid                                                  \n"},
    {0x4000, "COI is less zero or is more image channel's number                    \n"},
    {0x8000, "ROI size is invalid                                                   \n"},
    {0x0008, "ROI offset is invalid                                                 \n"},
    {0, nullptr},
};

char kUnknownText[] = "Bad status: unknown error";
char kNoMemoryText[] = "Out of memory";

}  // namespace

namespace rmg {

bool isConstantHeaderText(const void *text) {
    return text == kUnknownText || text == kNoMemoryText;
}

bool openImages(const char *funcName, const char *fileName, int line,
                std::initializer_list<const RmgImage *> images) {
    for (const RmgImage *image : images) {
        if (rmgBadImageHeader(image) == 0) continue;
        char *text = rmgBadHeaderText(rmgBadImageHeader(image));
        rmgError(RMG_StsBadArg, funcName, text, fileName, line);
        rmgFree(text);
        return false;
    }
    return true;
}

}  // namespace rmg

extern "C" {

int rmgBadImageHeader(const RmgImage *image) {
    if (image == nullptr) return 0x0001;
    int mask = 0;
    const RmgTileInfo *tiles = image->tileInfo;
    if ((image->imageData == nullptr) == (tiles == nullptr)) mask |= 0x0002;
    if ((image->imageSize <= 0 && tiles == nullptr) || image->height <= 0 || image->width <= 0)
        mask |= 0x0004;
    if (image->widthStep <= 0 && tiles == nullptr) mask |= 0x0010;
    if (image->nChannels <= 0) mask |= 0x0020;
    if (image->depth == RMG_DEPTH_1U && image->nChannels != 1) mask |= 0x0040;
    if (!rmg::isLegalDepth(image->depth)) mask |= 0x0080;
    if (image->alphaChannel < 0 || image->alphaChannel > image->nChannels) mask |= 0x0100;
    if (image->dataOrder != RMG_DATA_PIXEL && image->dataOrder != RMG_DATA_PLANE) mask |= 0x0200;
    if (image->origin != RMG_ORIGIN_TL && image->origin != RMG_ORIGIN_BL) mask |= 0x0400;
    if (image->align != 4 && image->align != 8) mask |= 0x0800;
    if (tiles != nullptr) {
        if (tiles->callBack == nullptr) mask |= 0x1000;
        if (tiles->width <= 0 || tiles->height <= 0 || tiles->width % 8 != 0 ||
            tiles->height % 8 != 0)
            mask |= 0x2000;
    }
    if (const RmgROI *roi = image->roi) {
        if (roi->coi < 0 || roi->coi > image->nChannels) mask |= 0x4000;
        if (roi->height <= 0 || roi->width <= 0) mask |= 0x8000;
        if (roi->xOffset < 0 || roi->yOffset < 0) mask |= 0x0008;
    }
    return mask;
}

char *rmgBadHeaderText(int mask) {
    if (mask == 0) return nullptr;
    int sum = 0;
    for (const HeaderText *t = kHeaderTexts; t->mask != 0; ++t)
        if (t->mask & mask) sum += static_cast<int>(std::strlen(t->text));
    if (sum == 0) return kUnknownText;
    auto *block = static_cast<char *>(rmgAlloc8(sum + 1));
    if (block == nullptr) return kNoMemoryText;
    block[0] = '\0';
    char *end = block;
    for (const HeaderText *t = kHeaderTexts; t->mask != 0; ++t) {
        if (t->mask & mask) {
            const size_t n = std::strlen(t->text);
            std::memcpy(end, t->text, n + 1);
            end += n;
        }
    }
    return block;
}

void rmgCheckCompatible(const RmgImage *srcImage, const RmgImage *dstImage, const char *funcName,
                        const char *fileName, int line) {
    if (srcImage->depth != dstImage->depth)
        rmgError(RMG_StsBadArg, funcName, "srcImage->depth != dstImage->depth", fileName, line);
    if (srcImage->dataOrder != dstImage->dataOrder)
        rmgError(RMG_StsBadArg, funcName, "srcImage->dataOrder != dstImage->dataOrder", fileName,
                 line);
    if (srcImage->origin != dstImage->origin)
        rmgError(RMG_StsBadArg, funcName, "srcImage->origin != dstImage->origin", fileName, line);
}

int rmgCheckImage(const RmgImage *image, const char *funcName, const char *fileName, int line) {
    auto fault = [&](const char *text) { rmgError(RMG_StsBadArg, funcName, text, fileName, line); };
    if (image == nullptr) {
        fault("Image == NULL");
        return 0;
    }
    if (image->imageData == nullptr && image->tileInfo == nullptr)
        fault("Image->imageData == NULL && Image->tileInfo == NULL");
    if (image->imageData != nullptr && image->tileInfo != nullptr)
        fault("Image->imageData != NULL && Image->tileInfo != NULL");
    if (image->nChannels < 1) fault("Image->nChannels < 1");
    if (image->height < 1) fault("Image->height <= 0");
    if (image->width < 1) fault("Image->width <= 0");
    if (const RmgTileInfo *tiles = image->tileInfo) {
        if (tiles->callBack == nullptr) fault("Image->tileInfo->callBack == NULL");
        if (tiles->width < 1) fault("Image->tileInfo->width <= 0");
        if (tiles->height < 1) fault("Image->tileInfo->height <= 0");
    }
    if (const RmgROI *roi = image->roi) {
        if (roi->coi < 0 || roi->coi > image->nChannels)
            fault("Image->roi->coi < 0 || Image->roi->coi > Image->nChannels");
        if (roi->height < 1) fault("Image->roi->height <= 0");
        if (roi->width < 1) fault("Image->roi->width <= 0");
    }
    return 0;
}

}  // extern "C"
