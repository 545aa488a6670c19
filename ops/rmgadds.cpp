// rmgAddS: a constant added to every element of an image's region, with
// saturation, into a second image; and its row kernels, one per depth.
#include <cstdint>

#include "ops/ownaddsub.h"
#include "ops/rmgpoint.h"
#include "rmg.h"

namespace {

constexpr char kModule[] = "rmgadds";

}  // namespace

void rmgAddS1u(const RmgImage *srcImage, const RmgImage *dstImage, int value) {
    ownAddSubBits(srcImage, dstImage, rmg::kOr1u, value);
}

// The 8u runs keep the constant in a 16-bit word; case C adds in 32 bits.
void rmgAddS8u(const RmgImage *srcImage, const RmgImage *dstImage, int value) {
    ownAddSubImages(srcImage, dstImage, rmgAddElems8u, value, rmg::kAdd8uFull, value);
}

void rmgAddS8s(const RmgImage *srcImage, const RmgImage *dstImage, int value) {
    ownAddSubImages(srcImage, dstImage, rmg::kAdd8s, value, rmg::kAdd8s, value);
}

// The sign of the constant chooses the family: a negative one is
// subtracted by its magnitude. Case C evaluates e + value directly.
//
// Constants of magnitude above 65535: every element gets the formula in
// exact arithmetic, clamp(e + value, 0, 65535), whatever the alignment and
// whichever case runs (so 65536 and more give 65535, -65536 and less give
// 0). The families keep the whole magnitude to do so; the same rule holds
// for subtraction, where value - e above 65535 gives 65535.
void rmgAddS16u(const RmgImage *srcImage, const RmgImage *dstImage, int value) {
    if (value >= 0)
        ownAddSubImages(srcImage, dstImage, rmgAddElems16u, value, rmg::kAdd16u, value);
    else
        ownAddSubImages(srcImage, dstImage, rmgSubElems16u, -static_cast<int64_t>(value),
                        rmg::kAdd16u, value);
}

void rmgAddS16s(const RmgImage *srcImage, const RmgImage *dstImage, int value) {
    ownAddSubImages(srcImage, dstImage, rmg::kAdd16s, value, rmg::kAdd16s, value);
}

void rmgAddS32s(const RmgImage *srcImage, const RmgImage *dstImage, int value) {
    ownAddSubImages(srcImage, dstImage, rmg::kAdd32s, value, rmg::kAdd32s, value);
}

extern "C" void rmgAddS(const RmgImage *srcImage, RmgImage *dstImage, int value,
                        const int *tilePos) {
    if (!rmgPointOpen(srcImage, dstImage, "rmgAddS", kModule)) return;
    OwnAddSubCall call{nullptr, nullptr, value, 0};
    switch (dstImage->depth) {
    case RMG_DEPTH_1U:
        call.add = rmgAddS1u;
        break;
    case RMG_DEPTH_8U:
        call.add = rmgAddS8u;
        break;
    case RMG_DEPTH_8S:
        call.add = rmgAddS8s;
        break;
    case RMG_DEPTH_16U:
        call.add = rmgAddS16u;
        break;
    case RMG_DEPTH_16S:
        call.add = rmgAddS16s;
        break;
    case RMG_DEPTH_32S:
        call.add = rmgAddS32s;
        break;
    default:
        return;
    }
    ownAddSubRun(srcImage, dstImage, tilePos, "rmgAddS", kModule, call);
}
