// The exported entries: each wrmgXxx hands the caller's arguments to the
// internal rmgXxx and returns what it returns, adding no test and no state.
#include "rmg.h"

#if defined(_WIN32) && defined(RMG_BUILDING_DLL)
#include <windows.h>

// The library keeps no per-thread data, so it asks for no thread notices.
extern "C" BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, LPVOID) {
    if (reason == DLL_PROCESS_ATTACH) DisableThreadLibraryCalls(module);
    return TRUE;
}
#endif

extern "C" {

RmgImage *wrmgCreateImageHeader(int nChannels, int alphaChannel, unsigned int depth,
                                const char *colorModel, const char *channelSeq, int dataOrder,
                                int origin, int align, int height, int width, RmgROI *roi,
                                void *imageId, RmgTileInfo *tileInfo) {
    return rmgCreateImageHeader(nChannels, alphaChannel, depth, colorModel, channelSeq,
                                dataOrder, origin, align, height, width, roi, imageId,
                                tileInfo);
}

void wrmgAllocateImage(RmgImage *image, int fillValue) { rmgAllocateImage(image, fillValue); }

void wrmgDeallocate(RmgImage *image, int flags) { rmgDeallocate(image, flags); }

RmgROI *wrmgCreateROI(int coi, int xOffset, int yOffset, int height, int width) {
    return rmgCreateROI(coi, xOffset, yOffset, height, width);
}

int wrmgGetErrStatus(void) { return rmgGetErrStatus(); }

void wrmgAddS(const RmgImage *srcImage, RmgImage *dstImage, int value, const int *tilePos) {
    rmgAddS(srcImage, dstImage, value, tilePos);
}

void wrmgSubtractS(const RmgImage *srcImage, RmgImage *dstImage, int value, int reversed,
                   const int *tilePos) {
    rmgSubtractS(srcImage, dstImage, value, reversed, tilePos);
}

void wrmgAnd(const RmgImage *srcImageA, const RmgImage *srcImageB, RmgImage *dstImage,
             const int *tilePos) {
    rmgAnd(srcImageA, srcImageB, dstImage, tilePos);
}

void wrmgAndS(const RmgImage *srcImage, RmgImage *dstImage, int value, const int *tilePos) {
    rmgAndS(srcImage, dstImage, value, tilePos);
}

void wrmgSet(RmgImage *image, int fillValue, const int *tile) {
    rmgSet(image, fillValue, tile);
}

void wrmgCopy(RmgImage *srcImage, RmgImage *dstImage, const int *tile) {
    rmgCopy(srcImage, dstImage, tile);
}

void wrmgAlphaCompositeC(const RmgImage *srcImageA, const RmgImage *srcImageB, RmgImage *dstImage,
                         int compositeType, int alphaA, int alphaB, int premulAlpha,
                         int divideMode, const int *tilePoint) {
    rmgAlphaCompositeC(srcImageA, srcImageB, dstImage, compositeType, alphaA, alphaB, premulAlpha,
                       divideMode, tilePoint);
}

void wrmgAlphaComposite(const RmgImage *srcImageA, const RmgImage *srcImageB, RmgImage *dstImage,
                        int compositeType, const RmgImage *alphaImageA,
                        const RmgImage *alphaImageB, RmgImage *alphaImageDst, int premulAlpha,
                        int divideMode, const int *tilePoint) {
    rmgAlphaComposite(srcImageA, srcImageB, dstImage, compositeType, alphaImageA, alphaImageB,
                      alphaImageDst, premulAlpha, divideMode, tilePoint);
}

void wrmgMirror(const RmgImage *srcImage, RmgImage *dstImage, int flipAxis,
                const int *tilePoint) {
    rmgMirror(srcImage, dstImage, flipAxis, tilePoint);
}

void wrmgBlur(const RmgImage *srcImage, RmgImage *dstImage, int nRows, int nCols, int anchorX,
              int anchorY, const int *tilePoint) {
    rmgBlur(srcImage, dstImage, nRows, nCols, anchorX, anchorY, tilePoint);
}

void wrmgColorToGray(const RmgImage *srcImage, RmgImage *dstImage, const int *tilePos) {
    rmgColorToGray(srcImage, dstImage, tilePos);
}

void wrmgGrayToColor(const RmgImage *srcImage, RmgImage *dstImage, float fractR, float fractG,
                     float fractB, const int *tilePos) {
    rmgGrayToColor(srcImage, dstImage, fractR, fractG, fractB, tilePos);
}

void wrmgDecimate(RmgImage *srcImage, RmgImage *dstImage, int xU, int xL, int yU, int yL,
                  int interpolate, const int *tilePoint) {
    rmgDecimate(srcImage, dstImage, xU, xL, yU, yL, interpolate, tilePoint);
}

void wrmgZoom(RmgImage *srcImage, RmgImage *dstImage, int xU, int xL, int yU, int yL,
              int interpolate, const int *tilePoint) {
    rmgZoom(srcImage, dstImage, xU, xL, yU, yL, interpolate, tilePoint);
}

}  // extern "C"
