// Colour frame and gray conversion drivers: rmgColorToGray, rmgGrayToColor
// and what the colour operations share (pointer test, channel resolution,
// compatibility checks, destination walk, driver).
#include "color/rmgcolor.h"

#include <cstdint>
#include <cstring>

#include "access/owntile.h"
#include "color/owncolor.h"
#include "core/rmgint.h"
#include "core/rmgvalid.h"
#include "rmg.h"

namespace {

constexpr char kModule[] = "rmgcolor";

bool modelIs(const RmgImage *image, const char *model) {
    return std::strncmp(image->colorModel, model, 3) == 0;
}

// Channels of an image's region: 1 with a coi, otherwise nChannels.
int regionChannels(const RmgImage *image) {
    return image->roi != nullptr && image->roi->coi != 0 ? 1 : image->nChannels;
}

bool isPair(const RmgImage *srcImage, const RmgImage *dstImage, const char *model) {
    return modelIs(srcImage, model) && regionChannels(srcImage) == regionChannels(dstImage) &&
           srcImage->depth == dstImage->depth && srcImage->dataOrder == dstImage->dataOrder &&
           srcImage->origin == dstImage->origin;
}

int elementBytes(const RmgImage *image) { return rmg::depthBits(image->depth) >> 3; }

void letterOffsets(const RmgImage *image, int rowStep, int height, const char *letters,
                   int64_t *first, int64_t *second, int64_t *third) {
    const int64_t plane = static_cast<int64_t>(rowStep) * height;
    int64_t *results[3] = {first, second, third};
    const int named = image->nChannels < 4 ? image->nChannels : 4;
    for (int c = 0; c < named; ++c)
        for (int k = 0; k < 3; ++k)
            if (image->channelSeq[c] == letters[k]) *results[k] = c * plane;
}

void letterPointers(const RmgImage *image, int rowStep, int height, unsigned char *base,
                    const char *letters, unsigned char **p1, unsigned char **p2,
                    unsigned char **p3) {
    int64_t o[3] = {-1, -1, -1};
    ownChannelOffsets(image, rowStep, height, letters, &o[0], &o[1], &o[2]);
    unsigned char **results[3] = {p1, p2, p3};
    for (int k = 0; k < 3; ++k)
        if (o[k] >= 0) *results[k] = base + o[k];
}

}  // namespace

bool ownCheckImagePointers(const RmgImage *srcImage, const RmgImage *dstImage,
                           const char *funcName) {
    if (srcImage == nullptr || dstImage == nullptr) {
        rmgError(RMG_StsBadArg, funcName, "null_image_pointer", kModule, __LINE__);
        return false;
    }
    if ((srcImage->imageData == nullptr && srcImage->tileInfo == nullptr) ||
        (dstImage->imageData == nullptr && dstImage->tileInfo == nullptr)) {
        rmgError(RMG_StsBadArg, funcName, "null_data_pointer", kModule, __LINE__);
        return false;
    }
    return true;
}

void ownChannelOffsets(const RmgImage *image, int rowStep, int height, const char *letters,
                       int64_t *first, int64_t *second, int64_t *third) {
    if (image->dataOrder == RMG_DATA_PLANE) {
        letterOffsets(image, rowStep, height, letters, first, second, third);
        return;
    }
    const int e = elementBytes(image);
    const bool red = image->channelSeq[0] == 'R';
    *first = red ? 0 : 2 * e;
    *second = e;
    *third = red ? 2 * e : 0;
}

void rmgChannelPointers(const RmgImage *image, int rowStep, int height, unsigned char *base,
                        unsigned char **r, unsigned char **g, unsigned char **b) {
    letterPointers(image, rowStep, height, base, "RGB", r, g, b);
}

void rmgHlsPointers(const RmgImage *image, int rowStep, int height, unsigned char *base,
                    unsigned char **h, unsigned char **l, unsigned char **s) {
    if (image->dataOrder == RMG_DATA_PLANE) letterPointers(image, rowStep, height, base, "HLS", h, l, s);
}

void rmgHsvPointers(const RmgImage *image, int rowStep, int height, unsigned char *base,
                    unsigned char **h, unsigned char **s, unsigned char **v) {
    if (image->dataOrder == RMG_DATA_PLANE) letterPointers(image, rowStep, height, base, "HSV", h, s, v);
}

bool rmgCanReduce(const RmgImage *srcImage, const RmgImage *dstImage) {
    return regionChannels(srcImage) == regionChannels(dstImage) &&
           srcImage->dataOrder == dstImage->dataOrder && srcImage->origin == dstImage->origin;
}

// The further comparisons with "RGBA" and "Gray" of these two checks can't
// change their result (three letters that match "RGB" match "RGBA" too) and
// are left out.
bool rmgCanColorToGray(const RmgImage *srcImage, const RmgImage *dstImage) {
    return modelIs(srcImage, "RGB") &&
           (dstImage->dataOrder != RMG_DATA_PIXEL || dstImage->nChannels == 1) &&
           srcImage->origin == dstImage->origin;
}

bool rmgCanGrayToColor(const RmgImage *srcImage, const RmgImage *dstImage) {
    return modelIs(dstImage, "RGB") &&
           (srcImage->depth == dstImage->depth ||
            (srcImage->depth == RMG_DEPTH_1U && dstImage->depth == RMG_DEPTH_8U)) &&
           (srcImage->dataOrder != RMG_DATA_PIXEL || srcImage->nChannels == 1) &&
           srcImage->origin == dstImage->origin;
}

bool rmgIsRGBPair(const RmgImage *srcImage, const RmgImage *dstImage) {
    return isPair(srcImage, dstImage, "RGB");
}
bool rmgIsHSVPair(const RmgImage *srcImage, const RmgImage *dstImage) {
    return isPair(srcImage, dstImage, "HSV");
}
bool rmgIsHLSPair(const RmgImage *srcImage, const RmgImage *dstImage) {
    return isPair(srcImage, dstImage, "HLS");
}

unsigned char *ownNextDstTile(RmgImage *dstImage, int *column, int *row, int *x, int *y,
                              int *width, int *height, int mode, const int *tilePos) {
    if (tilePos != nullptr) {
        if (*column >= 0) return nullptr;
        *column = tilePos[0];
        *row = tilePos[1];
    }
    RmgTileInfo *tiles = dstImage->tileInfo;
    if (tiles == nullptr) {
        // An image in memory is one piece; a second call ends the walk
        // (with tilePos the test above has ended it).
        if (tilePos == nullptr) {
            if (*column >= 0) return nullptr;
            *column = 0;
            *row = 0;
        }
        *x = 0;
        *y = 0;
        *width = dstImage->width;
        *height = dstImage->height;
        return dstImage->imageData;
    }
    if (*column < 0) {
        *column = 0;
        *row = 0;
    } else if (tilePos == nullptr) {
        *column = rmg::add32(*column, 1);
    }
    // A tiled image without a call-back has no tiles to give: the walk ends.
    if (tiles->callBack == nullptr) return nullptr;
    tiles->callBack(dstImage, *column, *row, mode);
    if (tiles->tileData == nullptr) {
        *column = 0;
        *row = rmg::add32(*row, 1);
        tiles->callBack(dstImage, *column, *row, mode);
    }
    *x = rmg::mul32(*column, tiles->width);
    *y = rmg::mul32(*row, tiles->height);
    *width = tiles->width;
    *height = tiles->height;
    return tiles->tileData;
}

void ownReleaseDstTile(RmgImage *dstImage, int column, int row, int mode) {
    RmgTileInfo *tiles = dstImage->tileInfo;
    if (tiles != nullptr && tiles->callBack != nullptr) tiles->callBack(dstImage, column, row, mode);
}

namespace rmg {

bool ownColorOpen(const RmgImage *srcImage, const RmgImage *dstImage, const char *funcName,
                  ColorCheck check) {
    // The header test of every colour operation reports under this one name.
    if (!rmg::openImages("rmgReduceBits", kModule, __LINE__, {srcImage, dstImage})) return false;
    if (!ownCheckImagePointers(srcImage, dstImage, funcName)) return false;
    if (!check(srcImage, dstImage)) {
        rmgError(RMG_StsBadArg, funcName, "incomatibleimages", kModule, __LINE__);
        return false;
    }
    return true;
}

void ownColorDriver(const RmgImage *srcImage, RmgImage *dstImage, const char *funcName,
                    ColorCheck check, ColorKernel kernel, const void *args, const int *tilePos) {
    if (!ownColorOpen(srcImage, dstImage, funcName, check)) return;
    if (srcImage->tileInfo == nullptr && dstImage->tileInfo == nullptr) {
        const ColorPiece piece{srcImage->imageData,
                               dstImage->imageData,
                               srcImage->widthStep,
                               srcImage->height < dstImage->height ? srcImage->height
                                                                   : dstImage->height,
                               srcImage->width < dstImage->width ? srcImage->width
                                                                 : dstImage->width,
                               dstImage->widthStep,
                               srcImage->imageSize,
                               dstImage->imageSize};
        kernel(srcImage, dstImage, piece, args);
        return;
    }
    ownColorWalk(srcImage, dstImage, kernel, args, tilePos);
}

void ownColorWalk(const RmgImage *srcImage, RmgImage *dstImage, ColorKernel kernel,
                  const void *args, const int *tilePos) {
    // The row step of a destination piece is that of a tile, also when the
    // destination is in memory and only the source is tiled: rmgTileWidthStep
    // gives 0 there, and every row of the piece goes to the destination's
    // first row.
    const int dstStep = rmgTileWidthStep(dstImage);
    const int dstPlanes = dstImage->dataOrder == RMG_DATA_PLANE ? dstImage->nChannels : 1;
    const int srcPlanes = srcImage->dataOrder == RMG_DATA_PLANE ? srcImage->nChannels : 1;
    int column = -1, row = -1;
    int x = 0, y = 0, width = 0, height = 0;
    for (;;) {
        unsigned char *piece =
            ownNextDstTile(dstImage, &column, &row, &x, &y, &width, &height, RMG_TILE_WRITE, tilePos);
        if (piece == nullptr) break;
        int rowStep = 0;
        unsigned char *block = ownGetExtendedRect(srcImage, x, y, width, height, &rowStep);
        // A tile is whole, of the tile's rows and row step; an image in memory
        // holds its imageSize bytes. The block holds its planes and 16 spare
        // bytes. A block that couldn't be had goes to the kernel as null,
        // which then reads and writes nothing.
        const int64_t dstBytes =
            dstImage->tileInfo != nullptr
                ? static_cast<int64_t>(dstStep) * dstImage->tileInfo->height * dstPlanes
                : dstImage->imageSize;
        const int64_t srcBytes =
            block != nullptr ? static_cast<int64_t>(rowStep) * height * srcPlanes + 16 : 0;
        const ColorPiece p{block, piece, rowStep, height, width, dstStep, srcBytes, dstBytes};
        kernel(srcImage, dstImage, p, args);
        ownReleaseExtendedRect(block);
        ownReleaseDstTile(dstImage, column, row, RMG_TILE_RELEASE);
    }
}

}  // namespace rmg

namespace {

struct Fractions {
    float r, g, b;
};

void colorToGrayPiece(const RmgImage *src, const RmgImage *dst, const rmg::ColorPiece &p,
                      const void *) {
    ownColorToGray(src, dst, p.src, p.dst, p.srcStep, p.height, p.width, p.dstStep, p.srcBytes,
                   p.dstBytes);
}

void grayToColorPiece(const RmgImage *src, const RmgImage *dst, const rmg::ColorPiece &p,
                      const void *args) {
    const auto *f = static_cast<const Fractions *>(args);
    ownGrayToColor(src, dst, f->r, f->g, f->b, p.src, p.dst, p.srcStep, p.height, p.width,
                   p.dstStep, p.srcBytes, p.dstBytes);
}

}  // namespace

extern "C" void rmgColorToGray(const RmgImage *srcImage, RmgImage *dstImage, const int *tilePos) {
    rmg::ownColorDriver(srcImage, dstImage, "rmgColorToGray", rmgCanColorToGray, colorToGrayPiece,
                        nullptr, tilePos);
}

extern "C" void rmgGrayToColor(const RmgImage *srcImage, RmgImage *dstImage, float fractR,
                               float fractG, float fractB, const int *tilePos) {
    const Fractions f{fractR, fractG, fractB};
    rmg::ownColorDriver(srcImage, dstImage, "rmgGrayToColor", rmgCanGrayToColor, grayToColorPiece,
                        &f, tilePos);
}
