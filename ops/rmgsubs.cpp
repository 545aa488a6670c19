// rmgSubtractS: a constant subtracted from every element of an image's
// region, or every element subtracted from the constant, with saturation,
// into a second image; and its row kernels, one per depth.
#include <cstdint>

#include "ops/ownaddsub.h"
#include "ops/rmgpoint.h"
#include "rmg.h"

namespace {

constexpr char kModule[] = "rmgsubs";

// The depths whose runs and one-channel loop share their arithmetic.
void subtractWith(const RmgImage *srcImage, const RmgImage *dstImage, int value, int reversed,
                  int subFamily, int revFamily) {
    const int family = reversed ? revFamily : subFamily;
    ownAddSubImages(srcImage, dstImage, family, value, family, value);
}

}  // namespace

void rmgSubtractS1u(const RmgImage *srcImage, const RmgImage *dstImage, int value,
                    int reversed) {
    ownAddSubBits(srcImage, dstImage, reversed ? rmg::kNotAnd1u : rmg::kAndNot1u, value);
}

// The 8u runs keep the constant in a 16-bit word; case C subtracts in 32
// bits.
void rmgSubtractS8u(const RmgImage *srcImage, const RmgImage *dstImage, int value,
                    int reversed) {
    if (reversed)
        ownAddSubImages(srcImage, dstImage, rmgRevSubElems8u, value, rmg::kRevSub8uFull, value);
    else
        ownAddSubImages(srcImage, dstImage, rmgSubElems8u, value, rmg::kSub8uFull, value);
}

void rmgSubtractS8s(const RmgImage *srcImage, const RmgImage *dstImage, int value,
                    int reversed) {
    subtractWith(srcImage, dstImage, value, reversed, rmg::kSub8s, rmg::kRevSub8s);
}

// The sign of the constant chooses the family. Reversed with a negative
// constant every result is 0: the region is stored with zeros, the source
// not read. Case C evaluates the formula directly. Constants of magnitude
// above 65535 give the formula in exact arithmetic (see rmgAddS16u).
void rmgSubtractS16u(const RmgImage *srcImage, const RmgImage *dstImage, int value,
                     int reversed) {
    const int64_t magnitude = value >= 0 ? value : -static_cast<int64_t>(value);
    if (reversed)
        ownAddSubImages(srcImage, dstImage, value >= 0 ? rmgRevSubElems16u : rmg::kZero16u,
                        magnitude, rmg::kRevSub16u, value);
    else
        ownAddSubImages(srcImage, dstImage, value >= 0 ? rmgSubElems16u : rmgAddElems16u,
                        magnitude, rmg::kSub16u, value);
}

void rmgSubtractS16s(const RmgImage *srcImage, const RmgImage *dstImage, int value,
                     int reversed) {
    subtractWith(srcImage, dstImage, value, reversed, rmg::kSub16s, rmg::kRevSub16s);
}

// Through double precision, unlike the comparing addition; the results
// agree.
void rmgSubtractS32s(const RmgImage *srcImage, const RmgImage *dstImage, int value,
                     int reversed) {
    subtractWith(srcImage, dstImage, value, reversed, rmg::kSub32s, rmg::kRevSub32s);
}

extern "C" void rmgSubtractS(const RmgImage *srcImage, RmgImage *dstImage, int value,
                             int reversed, const int *tilePos) {
    if (!rmgPointOpen(srcImage, dstImage, "rmgSubtractS", kModule)) return;
    OwnAddSubCall call{nullptr, nullptr, value, reversed};
    switch (dstImage->depth) {
    case RMG_DEPTH_1U:
        call.subtract = rmgSubtractS1u;
        break;
    case RMG_DEPTH_8U:
        call.subtract = rmgSubtractS8u;
        break;
    case RMG_DEPTH_8S:
        call.subtract = rmgSubtractS8s;
        break;
    case RMG_DEPTH_16U:
        call.subtract = rmgSubtractS16u;
        break;
    case RMG_DEPTH_16S:
        call.subtract = rmgSubtractS16s;
        break;
    case RMG_DEPTH_32S:
        call.subtract = rmgSubtractS32s;
        break;
    default:
        return;
    }
    ownAddSubRun(srcImage, dstImage, tilePos, "rmgSubtractS", kModule, call);
}
