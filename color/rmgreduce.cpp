// rmgReduceBits: a copy into an image of smaller depth, with noise before
// the reduction and a dither stage after it. Driver failures are reported
// in module rmgcolor, like those of the other colour operations.
#include <cstdint>

#include "access/owntile.h"
#include "color/ownreduce.h"
#include "color/rmgcolor.h"
#include "core/rmgint.h"
#include "rmg.h"

namespace {

constexpr char kModule[] = "rmgcolor";

struct ReduceArgs {
    int jitterType, dither, levelShift;
};

void reducePiece(const RmgImage *src, const RmgImage *dst, const rmg::ColorPiece &p,
                 const void *args) {
    const auto *a = static_cast<const ReduceArgs *>(args);
    if (a->jitterType == 0) {
        ownReduceBits(src, dst, p.src, p.dst, p.srcStep, p.height, p.width, p.dstStep, p.srcBytes,
                      p.dstBytes);
    } else {
        // The source rectangle is the walk's private copy: the noise may
        // change it.
        ownjitter_rect(src, dst, const_cast<unsigned char *>(p.src), p.dst, p.srcStep, p.height,
                       p.width, p.dstStep, a->jitterType, p.srcBytes, p.dstBytes);
    }
    if (a->dither != RMG_DITHER_NONE)
        own_dither_rect(dst, a->dither, p.dst, p.width, p.height, p.dstStep, a->levelShift, 1, 1,
                        p.dstBytes);
}

}  // namespace

extern "C" void rmgReduceBits(const RmgImage *srcImage, RmgImage *dstImage, int jitterType,
                              int dither, int levelShift, const int *tilePos) {
    if (jitterType < 0 || jitterType > 8) {
        rmgError(RMG_StsBadArg, "rmgReduceBits", "(0>jitterType)||(jitterType>8)", kModule,
                 __LINE__);
        return;
    }
    if (!rmg::ownColorOpen(srcImage, dstImage, "rmgReduceBits", rmgCanReduce)) return;
    if (srcImage->tileInfo == nullptr && dstImage->tileInfo == nullptr &&
        dither == RMG_DITHER_NONE && jitterType == 0) {
        // The one path that reads the source directly, without a copy.
        ownReduceBits(srcImage, dstImage, srcImage->imageData, dstImage->imageData,
                      srcImage->widthStep,
                      srcImage->height < dstImage->height ? srcImage->height : dstImage->height,
                      srcImage->width < dstImage->width ? srcImage->width : dstImage->width,
                      dstImage->widthStep, srcImage->imageSize, dstImage->imageSize);
        return;
    }
    const int bits = static_cast<int>(rmg::depthBits(dstImage->depth));
    if (levelShift < 0) levelShift = 0;
    if (levelShift > bits) levelShift = bits / 2;
    if (jitterType != 0) rmgFillJitterTables();
    const ReduceArgs args{jitterType, dither, levelShift};
    rmg::ownColorWalk(srcImage, dstImage, reducePiece, &args, tilePos);
}
