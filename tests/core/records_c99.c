/* Compiled as C99: proves that the public header is plain C, and reports
   the layout of the records as a C compiler sees it. */
#include <stddef.h>

#include "rmg.h"

/* Every constant must be usable in C constant expressions. */
static const unsigned int depths[] = {RMG_DEPTH_1U, RMG_DEPTH_8U, RMG_DEPTH_16U,
                                      RMG_DEPTH_8S, RMG_DEPTH_16S, RMG_DEPTH_32S};
static const int constants[] = {
    RMG_DATA_PIXEL, RMG_DATA_PLANE, RMG_ORIGIN_TL, RMG_ORIGIN_BL, RMG_BORDER_CONST,
    RMG_BORDER_REPLICATE, RMG_BORDER_REFLECT, RMG_BORDER_WRAP, RMG_SIDE_TOP, RMG_SIDE_BOTTOM,
    RMG_SIDE_LEFT, RMG_SIDE_RIGHT, RMG_DEALLOC_HEADER, RMG_DEALLOC_DATA, RMG_DEALLOC_ROI,
    RMG_DEALLOC_TILEINFO, RMG_DEALLOC_MASK, RMG_DEALLOC_ALL, RMG_TILE_READ, RMG_TILE_WRITE,
    RMG_TILE_RELEASE, RMG_StsOk, RMG_StsBackTrace, RMG_StsError, RMG_StsInternal,
    RMG_StsNoMem, RMG_StsBadArg, RMG_StsBadFunc, RMG_StsNoConv, RMG_StsAutoTrace,
    RMG_ErrorModeLeaf, RMG_ErrorModeParent, RMG_ErrorModeSilent, RMG_INTER_NN,
    RMG_INTER_LINEAR, RMG_INTER_CUBIC, RMG_DITHER_NONE, RMG_DITHER_FS, RMG_DITHER_JJN,
    RMG_DITHER_STUCKI, RMG_DITHER_BAYER, RMG_COMPOSITE_OVER, RMG_COMPOSITE_IN,
    RMG_COMPOSITE_OUT, RMG_COMPOSITE_ATOP, RMG_COMPOSITE_XOR, RMG_COMPOSITE_PLUS};

/* Layout of RmgImage, RmgROI and RmgTileInfo as seen from C, one entry a
   field in record order, then the three sizes. */
size_t rmgTestCLayout(size_t *out, size_t capacity);

size_t rmgTestCLayout(size_t *out, size_t capacity) {
    const size_t values[] = {
        offsetof(RmgImage, headerSize),   offsetof(RmgImage, headerVersion),
        offsetof(RmgImage, nChannels),    offsetof(RmgImage, alphaChannel),
        offsetof(RmgImage, depth),        offsetof(RmgImage, colorModel),
        offsetof(RmgImage, channelSeq),   offsetof(RmgImage, dataOrder),
        offsetof(RmgImage, origin),       offsetof(RmgImage, align),
        offsetof(RmgImage, height),       offsetof(RmgImage, width),
        offsetof(RmgImage, roi),          offsetof(RmgImage, maskRoi),
        offsetof(RmgImage, imageId),      offsetof(RmgImage, tileInfo),
        offsetof(RmgImage, imageSize),    offsetof(RmgImage, imageData),
        offsetof(RmgImage, widthStep),    offsetof(RmgImage, borderModes),
        offsetof(RmgImage, borderConsts), offsetof(RmgImage, dataOrigin),
        offsetof(RmgROI, coi),            offsetof(RmgROI, xOffset),
        offsetof(RmgROI, yOffset),        offsetof(RmgROI, height),
        offsetof(RmgROI, width),          offsetof(RmgTileInfo, callBack),
        offsetof(RmgTileInfo, id),        offsetof(RmgTileInfo, tileData),
        offsetof(RmgTileInfo, width),     offsetof(RmgTileInfo, height),
        sizeof(RmgImage),                 sizeof(RmgROI),
        sizeof(RmgTileInfo),              sizeof depths / sizeof depths[0],
        sizeof constants / sizeof constants[0]};
    size_t n = sizeof values / sizeof values[0];
    size_t i;
    for (i = 0; i < n && i < capacity; ++i) out[i] = values[i];
    return n;
}

/* A C caller of the entries, with the calls an application makes. */
int rmgTestCRoundTrip(void);

int rmgTestCRoundTrip(void) {
    RmgROI *roi = wrmgCreateROI(0, 1, 1, 2, 2);
    RmgImage *image = wrmgCreateImageHeader(3, 0, RMG_DEPTH_8U, "RGB", "BGR", RMG_DATA_PIXEL,
                                            RMG_ORIGIN_TL, 4, 4, 4, roi, NULL, NULL);
    int value;
    if (image == NULL) return -1;
    wrmgAllocateImage(image, 0x41);
    value = image->imageData[image->imageSize - 1];
    wrmgDeallocate(image, RMG_DEALLOC_ALL);
    return value + wrmgGetErrStatus();
}
