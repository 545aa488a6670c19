// rmgAlphaCompositeC and rmgAlphaComposite: the checks of their arguments,
// the choice of the alpha sources, the plain and the tiled road, and the
// choice of kernel by depth, operator, arithmetic and data order.
#include <initializer_list>

#include "alpha/rmgalpha.h"
#include "alpha/rmgalpha_planar.h"
#include "alpha/rmgalpha_views.h"
#include "rmg.h"

namespace {

constexpr char kModule[] = "rmgalpha";
constexpr char kCompositeC[] = "rmgAlphaCompositeC";
constexpr char kComposite[] = "rmgAlphaComposite";

// Library-wide switches, fixed when the library is built; nothing writes
// them and no interface reaches them. rmgForceFloat sends every composition
// to the float kernels; rmgPlanarFast lets rmgAlphaComposite use the planar
// rows when all its images are in plane order.
constexpr int rmgForceFloat = 0;
constexpr int rmgPlanarFast = 1;

bool fail(const char *funcName, const char *text, int line) {
    rmgError(RMG_StsBadArg, funcName, text, kModule, line);
    return false;
}

// The image block of one argument, then the common extent narrowed by it.
bool checkImage(const RmgImage *image, const char *name, const char *funcName, int *rows,
                int *columns) {
    if (!ownCheckImageBlock(image, name, funcName)) return false;
    ownClipExtent(image, rows, columns);
    return true;
}

// The opening of both operations: the image blocks of dstImage, srcImageA
// and srcImageB, then the depths.
bool checkOpening(const RmgImage *srcImageA, const RmgImage *srcImageB, const RmgImage *dstImage,
                  const char *funcName, int *rows, int *columns) {
    if (!checkImage(dstImage, "dstImage", funcName, rows, columns)) return false;
    if (!checkImage(srcImageA, "srcImageA", funcName, rows, columns)) return false;
    if (!checkImage(srcImageB, "srcImageB", funcName, rows, columns)) return false;
    if (dstImage->depth != 8 && dstImage->depth != 16)
        return fail(funcName, "dstImage->depth != 8 && dstImage->depth != 16", __LINE__);
    if (srcImageA->depth != dstImage->depth)
        return fail(funcName, "srcImageA->depth != dstImage->depth", __LINE__);
    if (srcImageB->depth != dstImage->depth)
        return fail(funcName, "srcImageB->depth != dstImage->depth", __LINE__);
    return true;
}

// The alpha channel that an image must name: where a source serves as its
// own alpha, and in the destination alpha image. The second test can't fail
// after the image block, whose header test already refuses an alphaChannel
// above nChannels; it stays in its place.
struct AlphaChannelTexts {
    const char *none;
    const char *beyond;
};
constexpr AlphaChannelTexts kAlphaOfA = {"srcImageA->alphaChannel < 1",
                                         "srcImageA->alphaChannel > srcImageA->nChannels"};
constexpr AlphaChannelTexts kAlphaOfB = {"srcImageB->alphaChannel < 1",
                                         "srcImageB->alphaChannel > srcImageB->nChannels"};
constexpr AlphaChannelTexts kAlphaOfDst = {
    "alphaImageDst->alphaChannel < 1", "alphaImageDst->alphaChannel > alphaImageDst->nChannels"};

bool checkAlphaChannel(const RmgImage *image, const AlphaChannelTexts &texts,
                       const char *funcName) {
    if (image->alphaChannel < 1) return fail(funcName, texts.none, __LINE__);
    if (image->alphaChannel > image->nChannels) return fail(funcName, texts.beyond, __LINE__);
    return true;
}

// The closing checks of both operations: the COI rule for each source, the
// place of each alpha channel, the colour channels without a destination
// COI, and the three plain arguments.
bool checkClosing(const RmgImage *srcImageA, const RmgImage *srcImageB, const RmgImage *dstImage,
                  int compositeType, int premulAlpha, int divideMode, const char *funcName) {
    if (!ownCheckCoiRule(srcImageA, "srcImageA", dstImage, funcName)) return false;
    if (!ownCheckCoiRule(srcImageB, "srcImageB", dstImage, funcName)) return false;
    if (srcImageA->alphaChannel > 0 && srcImageA->alphaChannel != srcImageA->nChannels)
        return fail(funcName,
                    "srcImageA->alphaChannel > 0 && srcImageA->alphaChannel != srcImageA->nChannels",
                    __LINE__);
    if (srcImageB->alphaChannel > 0 && srcImageB->alphaChannel != srcImageB->nChannels)
        return fail(funcName,
                    "srcImageB->alphaChannel > 0 && srcImageB->alphaChannel != srcImageB->nChannels",
                    __LINE__);
    if (dstImage->alphaChannel > 0 && dstImage->alphaChannel != dstImage->nChannels)
        return fail(funcName,
                    "dstImage->alphaChannel > 0 && dstImage->alphaChannel != dstImage->nChannels",
                    __LINE__);
    if (dstImage->roi == nullptr || dstImage->roi->coi == 0) {
        const int colourD = dstImage->nChannels - (dstImage->alphaChannel != 0);
        if (srcImageA->nChannels - (srcImageA->alphaChannel != 0) != colourD)
            return fail(funcName,
                        "(srcImageA->nChannels - (srcImageA->alphaChannel != 0)) != "
                        "(dstImage->nChannels - (dstImage->alphaChannel != 0))",
                        __LINE__);
        if (srcImageB->nChannels - (srcImageB->alphaChannel != 0) != colourD)
            return fail(funcName,
                        "(srcImageB->nChannels - (srcImageB->alphaChannel != 0)) != "
                        "(dstImage->nChannels - (dstImage->alphaChannel != 0))",
                        __LINE__);
    }
    if (compositeType != 0 && compositeType != 1 && compositeType != 2 && compositeType != 3 &&
        compositeType != 4 && compositeType != 5)
        return fail(funcName,
                    "compositeType != 0 && compositeType != 1 && compositeType != 2 && "
                    "compositeType != 3 && compositeType != 4 && compositeType != 5",
                    __LINE__);
    if (premulAlpha != 0 && premulAlpha != 1)
        return fail(funcName, "premulAlpha != 0 && premulAlpha != 1", __LINE__);
    if (divideMode != 0 && divideMode != 1)
        return fail(funcName, "divideMode != 0 && divideMode != 1", __LINE__);
    return true;
}

// The kernel tables' depth: 8 bits for a depth of 8, 16 bits for any other.
// The first of `images` that is tiled, in the order given; null for none.
// The image that decides gives the walk its grid.
const RmgImage *firstTiled(std::initializer_list<const RmgImage *> images) {
    for (const RmgImage *image : images)
        if (image != nullptr && image->tileInfo != nullptr) return image;
    return nullptr;
}

int depthIndexOf(const RmgImage *dstImage) {
    return dstImage->depth == RMG_DEPTH_8U ? kOwnDepth8u : kOwnDepth16u;
}

bool integerArithmetic(int divideMode) { return divideMode == 0 && rmgForceFloat == 0; }

// ---------------------------------------------------------------------------
// rmgAlphaCompositeC
// ---------------------------------------------------------------------------

// The arguments of one call of rmgAlphaCompositeC after its checks.
struct ConstCall {
    const RmgImage *srcImageA;
    const RmgImage *srcImageB;
    RmgImage *dstImage;
    int compositeType;
    int alphaA;
    int alphaB;
    int premulAlpha;
    int divideMode;
    // Entries of the view set in a tiled call.
    int dstView;
    int viewA;
    int viewB;
};

// The kernel selector of rmgAlphaCompositeC on three images (the caller's
// or the views of a rectangle). A constant alpha above the depth's maximum
// is the maximum; the comparison is signed, so a negative value still
// takes the source's own alpha channel.
void runConst(const ConstCall &call, const RmgImage *srcImageA, const RmgImage *srcImageB,
              RmgImage *dstImage, int rows, int columns) {
    const int depth = depthIndexOf(dstImage);
    const int maxValue = depth == kOwnDepth8u ? 255 : 65535;
    const int alphaA = call.alphaA > maxValue ? maxValue : call.alphaA;
    const int alphaB = call.alphaB > maxValue ? maxValue : call.alphaB;
    const int arithmetic = integerArithmetic(call.divideMode) ? kOwnIntegerKernel : kOwnFloatKernel;
    ownCompositeConst[depth][call.compositeType][arithmetic](srcImageA, srcImageB, dstImage, alphaA,
                                                             alphaB, call.premulAlpha,
                                                             call.divideMode, rows, columns);
}

// ---------------------------------------------------------------------------
// rmgAlphaComposite
// ---------------------------------------------------------------------------

// The arguments of one call of rmgAlphaComposite after its checks, with
// the alpha sources settled: alphaA is alphaImageA or srcImageA; alphaB is
// alphaImageB, srcImageB or null (the complement of A's alpha); alphaDst
// is alphaImageDst, dstImage or null (no destination alpha).
struct ImageCall {
    const RmgImage *srcImageA;
    const RmgImage *srcImageB;
    RmgImage *dstImage;
    const RmgImage *alphaA;
    const RmgImage *alphaB;
    RmgImage *alphaDst;
    int compositeType;
    int premulAlpha;
    int divideMode;
    // Entries of the view set in a tiled call; 0 for an image that isn't.
    int dstView;
    int alphaDstView;
    int viewA;
    int viewB;
    int alphaViewA;
    int alphaViewB;
};

bool inPlaneOrder(const RmgImage *image) {
    return image == nullptr || image->dataOrder == RMG_DATA_PLANE;
}

// The kernel selector of rmgAlphaComposite on its six images (the caller's
// or the views of a rectangle; alphaB and alphaDst may be null). The
// integer arithmetic goes to the planar drivers when every image that
// exists is in plane order, otherwise to the scalar kernels; the two give
// other pixels on the same data, and both stay.
void runImage(const ImageCall &call, const RmgImage *srcImageA, const RmgImage *srcImageB,
              RmgImage *dstImage, const RmgImage *alphaA, const RmgImage *alphaB,
              RmgImage *alphaDst, int rows, int columns) {
    const int depth = depthIndexOf(dstImage);
    OwnCompositeImageFn kernel = ownCompositeImage[depth][call.compositeType][kOwnFloatKernel];
    if (integerArithmetic(call.divideMode)) {
        const bool planar = rmgPlanarFast != 0 && inPlaneOrder(srcImageA) &&
                            inPlaneOrder(srcImageB) && inPlaneOrder(dstImage) &&
                            inPlaneOrder(alphaA) && inPlaneOrder(alphaB) && inPlaneOrder(alphaDst);
        kernel = planar ? ownCompositePlanar[depth][call.compositeType]
                        : ownCompositeImage[depth][call.compositeType][kOwnIntegerKernel];
    }
    kernel(srcImageA, srcImageB, dstImage, alphaA, alphaB, alphaDst, call.premulAlpha,
           call.divideMode, rows, columns);
}

// The alpha sources of rmgAlphaComposite with their checks, in order; they
// are stored in `call` as they are settled.
bool settleAlpha(const RmgImage *alphaImageA, const RmgImage *alphaImageB, RmgImage *alphaImageDst,
                 ImageCall *call, int *rows, int *columns) {
    if (alphaImageA == nullptr) {
        if (!checkAlphaChannel(call->srcImageA, kAlphaOfA, kComposite)) return false;
        call->alphaA = call->srcImageA;
    } else {
        if (!checkImage(alphaImageA, "alphaImageA", kComposite, rows, columns)) return false;
        if (alphaImageA->depth != call->dstImage->depth)
            return fail(kComposite, "alphaImageA->depth != dstImage->depth", __LINE__);
        call->alphaA = alphaImageA;
    }
    if (alphaImageB != nullptr) {
        if (!checkImage(alphaImageB, "alphaImageB", kComposite, rows, columns)) return false;
        if (alphaImageB->depth != call->dstImage->depth)
            return fail(kComposite, "alphaImageB->depth != dstImage->depth", __LINE__);
        call->alphaB = alphaImageB;
    } else if (alphaImageA == nullptr) {
        if (!checkAlphaChannel(call->srcImageB, kAlphaOfB, kComposite)) return false;
        call->alphaB = call->srcImageB;
    } else {
        // One alpha image blends the two sources: B's alpha is the
        // complement of A's, whatever channels srcImageB has.
        call->alphaB = nullptr;
    }
    if (alphaImageDst != nullptr) {
        if (!checkImage(alphaImageDst, "alphaImageDst", kComposite, rows, columns)) return false;
        if (alphaImageDst->depth != call->dstImage->depth)
            return fail(kComposite, "alphaImageDst->depth != dstImage->depth", __LINE__);
        if (!checkAlphaChannel(alphaImageDst, kAlphaOfDst, kComposite)) return false;
        call->alphaDst = alphaImageDst;
    } else {
        call->alphaDst = call->dstImage->alphaChannel != 0 ? call->dstImage : nullptr;
    }
    return true;
}

// ---------------------------------------------------------------------------
// The tiled road
// ---------------------------------------------------------------------------

constexpr int kMaxViews = 6;

// The views of one rectangle. An entry that serves in several places (a
// source that is its own alpha image, a destination that takes the alpha)
// is got once and its view used in each.
class RectViews {
public:
    explicit RectViews(RmgTileViews *set) : set_(set) {}
    RmgImage *get(int index) {
        if (index < 1 || index > kMaxViews) return nullptr;
        if (!taken_[index]) {
            view_[index] = ownViewsGet(set_, index);
            taken_[index] = true;
        }
        return view_[index];
    }

private:
    RmgTileViews *set_;
    RmgImage *view_[kMaxViews + 1] = {};
    bool taken_[kMaxViews + 1] = {};
};

void addConst(void *context, RmgTileViews *set) {
    auto *call = static_cast<ConstCall *>(context);
    call->dstView = ownViewsAdd(set, call->dstImage, RMG_TILE_WRITE);
    call->viewA = ownViewsAdd(set, call->srcImageA, RMG_TILE_READ);
    call->viewB = ownViewsAdd(set, call->srcImageB, RMG_TILE_READ);
}

// rmgAlphaCompositeC takes all three views before it looks at them.
bool runConstViews(void *context, RmgTileViews *set, int rows, int columns) {
    const auto *call = static_cast<const ConstCall *>(context);
    RectViews views(set);
    RmgImage *dst = views.get(call->dstView);
    const RmgImage *srcA = views.get(call->viewA);
    const RmgImage *srcB = views.get(call->viewB);
    if (dst == nullptr || srcA == nullptr || srcB == nullptr) return false;
    runConst(*call, srcA, srcB, dst, rows, columns);
    return true;
}

constexpr OwnViewsWalkOps kConstWalk = {addConst, runConstViews};

void addImage(void *context, RmgTileViews *set) {
    auto *call = static_cast<ImageCall *>(context);
    call->dstView = ownViewsAdd(set, call->dstImage, RMG_TILE_WRITE);
    if (call->alphaDst != nullptr)
        call->alphaDstView = ownViewsAdd(set, call->alphaDst, RMG_TILE_WRITE);
    call->viewA = ownViewsAdd(set, call->srcImageA, RMG_TILE_READ);
    call->viewB = ownViewsAdd(set, call->srcImageB, RMG_TILE_READ);
    call->alphaViewA = ownViewsAdd(set, call->alphaA, RMG_TILE_READ);
    if (call->alphaB != nullptr) call->alphaViewB = ownViewsAdd(set, call->alphaB, RMG_TILE_READ);
}

// rmgAlphaComposite takes the views in the order of registration. It looks
// at dstImage, srcImageA and srcImageB once these are taken, and at each
// alpha view in turn after that: the destination alpha's (taken second),
// then A's and B's, each as soon as it is taken.
bool runImageViews(void *context, RmgTileViews *set, int rows, int columns) {
    const auto *call = static_cast<const ImageCall *>(context);
    RectViews views(set);
    RmgImage *dst = views.get(call->dstView);
    RmgImage *alphaDst = views.get(call->alphaDstView);
    const RmgImage *srcA = views.get(call->viewA);
    const RmgImage *srcB = views.get(call->viewB);
    if (dst == nullptr || srcA == nullptr || srcB == nullptr) return false;
    if (call->alphaDst != nullptr && alphaDst == nullptr) return false;
    const RmgImage *alphaA = views.get(call->alphaViewA);
    if (alphaA == nullptr) return false;
    const RmgImage *alphaB = views.get(call->alphaViewB);
    if (call->alphaB != nullptr && alphaB == nullptr) return false;
    runImage(*call, srcA, srcB, dst, alphaA, alphaB, alphaDst, rows, columns);
    return true;
}

constexpr OwnViewsWalkOps kImageWalk = {addImage, runImageViews};

}  // namespace

extern "C" void rmgAlphaCompositeC(const RmgImage *srcImageA, const RmgImage *srcImageB,
                                   RmgImage *dstImage, int compositeType, int alphaA, int alphaB,
                                   int premulAlpha, int divideMode, const int *tilePoint) {
    int rows = 99999;
    int columns = 99999;
    if (!checkOpening(srcImageA, srcImageB, dstImage, kCompositeC, &rows, &columns)) return;
    if (alphaA < 0 && !checkAlphaChannel(srcImageA, kAlphaOfA, kCompositeC)) return;
    if (alphaB < 0 && !checkAlphaChannel(srcImageB, kAlphaOfB, kCompositeC)) return;
    if (!checkClosing(srcImageA, srcImageB, dstImage, compositeType, premulAlpha, divideMode,
                      kCompositeC))
        return;
    ConstCall call{srcImageA, srcImageB,   dstImage,   compositeType, alphaA, alphaB,
                   premulAlpha, divideMode, 0, 0, 0};
    const RmgImage *grid = firstTiled({dstImage, srcImageA, srcImageB});
    if (grid == nullptr)
        runConst(call, srcImageA, srcImageB, dstImage, rows, columns);
    else
        ownViewsWalk(kCompositeC, grid, dstImage, tilePoint, rows, columns, 3, kConstWalk, &call);
}

extern "C" void rmgAlphaComposite(const RmgImage *srcImageA, const RmgImage *srcImageB,
                                  RmgImage *dstImage, int compositeType,
                                  const RmgImage *alphaImageA, const RmgImage *alphaImageB,
                                  RmgImage *alphaImageDst, int premulAlpha, int divideMode,
                                  const int *tilePoint) {
    int rows = 99999;
    int columns = 99999;
    if (!checkOpening(srcImageA, srcImageB, dstImage, kComposite, &rows, &columns)) return;
    ImageCall call{srcImageA, srcImageB,     dstImage,    nullptr,    nullptr, nullptr,
                   compositeType, premulAlpha, divideMode, 0, 0, 0, 0, 0, 0};
    if (!settleAlpha(alphaImageA, alphaImageB, alphaImageDst, &call, &rows, &columns)) return;
    if (!checkClosing(srcImageA, srcImageB, dstImage, compositeType, premulAlpha, divideMode,
                      kComposite))
        return;
    // The alpha images as settled count: a source that is its own alpha
    // image is looked at twice, which changes nothing.
    const RmgImage *grid =
        firstTiled({dstImage, call.alphaDst, srcImageA, srcImageB, call.alphaA, call.alphaB});
    if (grid == nullptr)
        runImage(call, srcImageA, srcImageB, dstImage, call.alphaA, call.alphaB, call.alphaDst,
                 rows, columns);
    else
        ownViewsWalk(kComposite, grid, dstImage, tilePoint, rows, columns, kMaxViews, kImageWalk,
                     &call);
}
