// rmgAlphaCompositeC and rmgAlphaComposite on plain images: concrete values
// for the constant alphas, the alpha sources, the channels of interest, the
// destination alpha and the common extent; the choice between the integer
// kernels and the planar drivers by data order; and random calls against
// the kernels called directly on copies of the same buffers.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <random>
#include <vector>

#include "alpha/alphatest.h"
#include "alpha/rmgalpha.h"
#include "alpha/rmgalpha_planar.h"
#include "support/rmgtest.h"

namespace {

using alphatest::Image;
using alphatest::put;
using Bytes = std::vector<uint8_t>;

constexpr int kOver = RMG_COMPOSITE_OVER;

// Every pixel of `img` gets the samples `channels`, one per channel.
void fill(Image &img, const std::vector<int> &channels) {
    Bytes b = img.bytes();
    for (int y = 0; y < img.image->height; ++y)
        for (int x = 0; x < img.image->width; ++x)
            for (size_t c = 0; c < channels.size(); ++c)
                alphatest::putSample(img, b, x, y, static_cast<int>(c), channels[c]);
    img.setBytes(b);
}

// A one-row image of `pixels` pixels whose every pixel holds `channels`.
std::unique_ptr<Image> pixelsOf(int nChannels, int alphaChannel, const std::vector<int> &channels,
                                int pixels = 1, unsigned int depth = RMG_DEPTH_8U,
                                int dataOrder = RMG_DATA_PIXEL) {
    auto img = std::make_unique<Image>(nChannels, alphaChannel, depth, dataOrder, 4, 1, pixels);
    fill(*img, channels);
    return img;
}

class CompositeValues : public rmgtest::ErrorStateTest {
protected:
    void TearDown() override {
        EXPECT_TRUE(rmgtest::reports().empty());
        EXPECT_EQ(rmgGetErrStatus(), RMG_StsOk);
        rmgtest::ErrorStateTest::TearDown();
    }
};

// ---------------------------------------------------------------------------
// Constant alphas
// ---------------------------------------------------------------------------

TEST_F(CompositeValues, AlphaAboveTheMaximumActsAsTheMaximum) {
    // over with a = 255: A2 + B2 - mul(B2, 255) = A2 = A.
    auto a = pixelsOf(3, 0, {200, 10, 0}, 2);
    auto b = pixelsOf(3, 0, {100, 250, 255}, 2);
    Image d300(3, 0, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 1, 2);
    Image d255(3, 0, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 1, 2);
    rmgAlphaCompositeC(a->image, b->image, d300.image, kOver, 300, 128, 0, 0, nullptr);
    rmgAlphaCompositeC(a->image, b->image, d255.image, kOver, 255, 128, 0, 0, nullptr);
    EXPECT_EQ(d300.bytes(), (Bytes{200, 10, 0, 200, 10, 0, 0xEE, 0xEE}));
    EXPECT_EQ(d300.bytes(), d255.bytes());
    // alphaB above the maximum too: in with b = 255 is A2.
    rmgAlphaCompositeC(a->image, b->image, d300.image, RMG_COMPOSITE_IN, 255, 0x7FFFFFFF, 0, 0,
                       nullptr);
    EXPECT_EQ(d300.bytes(), (Bytes{200, 10, 0, 200, 10, 0, 0xEE, 0xEE}));
}

TEST_F(CompositeValues, SixteenBitAlphaAboveTheMaximumActsAsTheMaximum) {
    auto a = pixelsOf(1, 0, {50000}, 1, RMG_DEPTH_16U);
    auto b = pixelsOf(1, 0, {1000}, 1, RMG_DEPTH_16U);
    Image d(1, 0, RMG_DEPTH_16U, RMG_DATA_PIXEL, 4, 1, 1);
    // over, a = 65535 (from 70000): A2 = 50000 exactly, whatever B2.
    rmgAlphaCompositeC(a->image, b->image, d.image, kOver, 70000, 30000, 0, 0, nullptr);
    EXPECT_EQ(d.bytes(), (Bytes{0x50, 0xC3, 0xEE, 0xEE}));
    // 300 is no maximum at 16 bits: mul(50000, 300) = 228, and
    // B2 = mul(1000, 30000) = 457, less mul(457, 300) = 2: 683.
    rmgAlphaCompositeC(a->image, b->image, d.image, kOver, 300, 30000, 0, 0, nullptr);
    EXPECT_EQ(d.bytes(), (Bytes{0xAB, 0x02, 0xEE, 0xEE}));
}

TEST_F(CompositeValues, AnyNegativeAlphaTakesTheAlphaChannel) {
    // The limit is a signed comparison: -300 and INT_MIN stay negative.
    auto a = pixelsOf(2, 2, {200, 128});
    auto b = pixelsOf(2, 2, {100, 255});
    for (int alphaA : {-1, -300, INT32_MIN}) {
        Image d(1, 0, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 1, 1);
        rmgAlphaCompositeC(a->image, b->image, d.image, kOver, alphaA, INT32_MIN, 0, 0, nullptr);
        EXPECT_EQ(d.bytes(), (Bytes{150, 0xEE, 0xEE, 0xEE})) << alphaA;
    }
}

TEST_F(CompositeValues, ConstantAlphasNeedNoAlphaChannel) {
    // A2 = mul(200, 128) = 100, B2 = mul(100, 128) = 50, less
    // mul(50, 128) = 25: 125 in every colour channel.
    auto a = pixelsOf(3, 0, {200, 200, 200});
    auto b = pixelsOf(3, 0, {100, 100, 100});
    Image d(3, 0, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 1, 1);
    rmgAlphaCompositeC(a->image, b->image, d.image, kOver, 128, 128, 0, 0, nullptr);
    EXPECT_EQ(d.bytes(), (Bytes{125, 125, 125, 0xEE}));
}

TEST_F(CompositeValues, SourceWithAlphaBesideSourceWithoutIntoThreeChannels) {
    // Three colour channels on each side; a = 128 from A's channel 4.
    auto a = pixelsOf(4, 4, {200, 200, 200, 128});
    auto b = pixelsOf(3, 0, {100, 100, 100});
    Image d(3, 0, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 1, 1);
    rmgAlphaCompositeC(a->image, b->image, d.image, kOver, -1, 255, 0, 0, nullptr);
    EXPECT_EQ(d.bytes(), (Bytes{150, 150, 150, 0xEE}));
}

TEST_F(CompositeValues, FourChannelsWithoutAlphaAgainstThreeWorkUnderADestinationCoi) {
    // Channel 3 of A and channel 1 of B into channel 2 of the destination.
    auto a = pixelsOf(4, 0, {10, 20, 200, 40});
    auto b = pixelsOf(3, 0, {100, 7, 9});
    Image d(3, 0, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 1, 1);
    a->setRoi(3, 0, 0, 1, 1);
    b->setRoi(1, 0, 0, 1, 1);
    d.setRoi(2, 0, 0, 1, 1);
    rmgAlphaCompositeC(a->image, b->image, d.image, kOver, 128, 128, 0, 0, nullptr);
    EXPECT_EQ(d.bytes(), (Bytes{0xEE, 125, 0xEE, 0xEE}));
}

TEST_F(CompositeValues, ConstantFormLeavesTheDestinationAlphaAsItWas) {
    auto a = pixelsOf(4, 4, {200, 200, 200, 128}, 2);
    auto b = pixelsOf(4, 4, {100, 100, 100, 255}, 2);
    Image d(4, 4, RMG_DEPTH_8U, RMG_DATA_PIXEL, 8, 1, 2);
    fill(d, {1, 2, 3, 77});
    rmgAlphaCompositeC(a->image, b->image, d.image, kOver, -1, -1, 0, 0, nullptr);
    EXPECT_EQ(d.bytes(), (Bytes{150, 150, 150, 77, 150, 150, 150, 77}));
}

// ---------------------------------------------------------------------------
// Alpha images
// ---------------------------------------------------------------------------

TEST_F(CompositeValues, OneAlphaImageBlendsTheTwoSources) {
    // alphaImageA gives a = 128; B's own alpha (255) is not read: b is
    // 255 - 128 = 127. B2 = mul(100, 127) = 49, less mul(49, 128) = 24,
    // plus A2 = 100: 125 (with b = 255 it would be 150).
    auto a = pixelsOf(3, 0, {200, 200, 200}, 2);
    auto b = pixelsOf(4, 4, {100, 100, 100, 255}, 2);
    auto alpha = pixelsOf(1, 0, {128}, 2);
    Image d(3, 0, RMG_DEPTH_8U, RMG_DATA_PIXEL, 8, 1, 2);
    rmgAlphaComposite(a->image, b->image, d.image, kOver, alpha->image, nullptr, nullptr, 0, 0,
                      nullptr);
    EXPECT_EQ(d.bytes(), (Bytes{125, 125, 125, 125, 125, 125, 0xEE, 0xEE}));
    // The same as the kernel with no alpha image of B.
    Image k(3, 0, RMG_DEPTH_8U, RMG_DATA_PIXEL, 8, 1, 2);
    ownCompositeImage[kOwnDepth8u][kOver][kOwnIntegerKernel](a->image, b->image, k.image,
                                                              alpha->image, nullptr, nullptr, 0,
                                                              0, 1, 2);
    EXPECT_EQ(d.bytes(), k.bytes());
}

TEST_F(CompositeValues, WithoutAlphaImagesTheSourcesServeAndNoDestinationAlphaIsWritten) {
    auto a = pixelsOf(4, 4, {200, 200, 200, 128});
    auto b = pixelsOf(4, 4, {100, 100, 100, 255});
    const Bytes aBefore = a->bytes(), bBefore = b->bytes();
    Image d(3, 0, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 1, 1);
    rmgAlphaComposite(a->image, b->image, d.image, kOver, nullptr, nullptr, nullptr, 0, 0,
                      nullptr);
    EXPECT_EQ(d.bytes(), (Bytes{150, 150, 150, 0xEE}));
    EXPECT_EQ(a->bytes(), aBefore);
    EXPECT_EQ(b->bytes(), bBefore);
}

TEST_F(CompositeValues, ADestinationWithAlphaReceivesTheResultingAlpha) {
    // a + b - mul(a, b) = 128 + 64 - 32 = 160 into channel 4.
    auto a = pixelsOf(4, 4, {200, 200, 200, 128});
    auto b = pixelsOf(4, 4, {100, 100, 100, 64});
    Image d(4, 4, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 1, 1);
    rmgAlphaComposite(a->image, b->image, d.image, kOver, nullptr, nullptr, nullptr, 0, 0,
                      nullptr);
    // A2 = 100, B2 = mul(100, 64) = 25, less mul(25, 128) = 12: 113.
    EXPECT_EQ(d.bytes(), (Bytes{113, 113, 113, 160}));
    // A destination alpha image takes it instead, at its alphaChannel; the
    // destination's own alpha channel is then left alone.
    Image d2(4, 4, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 1, 1);
    Image alphaDst(2, 1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 1, 1);
    rmgAlphaComposite(a->image, b->image, d2.image, kOver, nullptr, nullptr, alphaDst.image, 0,
                      0, nullptr);
    EXPECT_EQ(d2.bytes(), (Bytes{113, 113, 113, 0xEE}));
    EXPECT_EQ(alphaDst.bytes(), (Bytes{160, 0xEE, 0xEE, 0xEE}));
}

TEST_F(CompositeValues, ASmallerAlphaImageNarrowsTheRegion) {
    Image a(1, 0, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 3, 4);
    Image b(1, 0, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 3, 4);
    Image alpha(1, 0, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 2, 3);
    Image d(1, 0, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 3, 4);
    fill(a, {200});
    fill(b, {100});
    fill(alpha, {128});
    rmgAlphaComposite(a.image, b.image, d.image, kOver, alpha.image, nullptr, nullptr, 0, 0,
                      nullptr);
    EXPECT_EQ(d.bytes(), (Bytes{125, 125, 125, 0xEE,  //
                                125, 125, 125, 0xEE,  //
                                0xEE, 0xEE, 0xEE, 0xEE}));
}

// ---------------------------------------------------------------------------
// Integer kernels or planar drivers
// ---------------------------------------------------------------------------

// over, A = 200 with a = 128, B = 100 with b = 255, into a one-channel
// destination; each image in the order given.
Bytes overOf(int orderA, int orderB, int orderD, int divideMode = 0, bool constForm = false) {
    auto a = pixelsOf(2, 2, {200, 128}, 1, RMG_DEPTH_8U, orderA);
    auto b = pixelsOf(2, 2, {100, 255}, 1, RMG_DEPTH_8U, orderB);
    Image d(1, 0, RMG_DEPTH_8U, orderD, 4, 1, 1);
    if (constForm)
        rmgAlphaCompositeC(a->image, b->image, d.image, kOver, -1, -1, 0, divideMode, nullptr);
    else
        rmgAlphaComposite(a->image, b->image, d.image, kOver, nullptr, nullptr, nullptr, 0,
                          divideMode, nullptr);
    return d.bytes();
}

TEST_F(CompositeValues, PlaneOrderEverywhereTakesThePlanarDriver) {
    constexpr int P = RMG_DATA_PLANE, X = RMG_DATA_PIXEL;
    // Integer kernel: 100 + 100 - mul(100, 128) = 150; planar row:
    // 100 (+) mul(127, 100) = 149.
    EXPECT_EQ(overOf(X, X, X), (Bytes{150, 0xEE, 0xEE, 0xEE}));
    EXPECT_EQ(overOf(P, P, P), (Bytes{149, 0xEE, 0xEE, 0xEE}));
    // One image in pixel order is enough for the integer kernel.
    EXPECT_EQ(overOf(X, P, P), (Bytes{150, 0xEE, 0xEE, 0xEE}));
    EXPECT_EQ(overOf(P, X, P), (Bytes{150, 0xEE, 0xEE, 0xEE}));
    EXPECT_EQ(overOf(P, P, X), (Bytes{150, 0xEE, 0xEE, 0xEE}));
    // divideMode 1 is the float kernel in any order.
    auto a = pixelsOf(2, 2, {200, 128}, 1, RMG_DEPTH_8U, P);
    auto b = pixelsOf(2, 2, {100, 255}, 1, RMG_DEPTH_8U, P);
    Image d(1, 0, RMG_DEPTH_8U, P, 4, 1, 1);
    ownCompositeImage[kOwnDepth8u][kOver][kOwnFloatKernel](a->image, b->image, d.image, a->image,
                                                            b->image, nullptr, 0, 1, 1, 1);
    EXPECT_EQ(overOf(P, P, P, 1), d.bytes());
    EXPECT_EQ(overOf(X, X, X, 1), d.bytes());
    // rmgAlphaCompositeC has no planar form.
    EXPECT_EQ(overOf(P, P, P, 0, true), (Bytes{150, 0xEE, 0xEE, 0xEE}));
}

TEST_F(CompositeValues, AlphaImagesInPixelOrderKeepTheIntegerKernel) {
    constexpr int P = RMG_DATA_PLANE;
    auto a = pixelsOf(1, 0, {200}, 1, RMG_DEPTH_8U, P);
    auto b = pixelsOf(1, 0, {100}, 1, RMG_DEPTH_8U, P);
    auto alphaA = pixelsOf(1, 0, {128}, 1, RMG_DEPTH_8U, P);
    auto alphaB = pixelsOf(1, 0, {255}, 1, RMG_DEPTH_8U, P);
    auto alphaDst = pixelsOf(1, 1, {0}, 1, RMG_DEPTH_8U, P);
    Image d(1, 0, RMG_DEPTH_8U, P, 4, 1, 1);
    rmgAlphaComposite(a->image, b->image, d.image, kOver, alphaA->image, alphaB->image,
                      alphaDst->image, 0, 0, nullptr);
    EXPECT_EQ(d.bytes(), (Bytes{149, 0xEE, 0xEE, 0xEE}));
    for (Image *img : {alphaA.get(), alphaB.get(), alphaDst.get()}) {
        img->image->dataOrder = RMG_DATA_PIXEL;
        rmgAlphaComposite(a->image, b->image, d.image, kOver, alphaA->image, alphaB->image,
                          alphaDst->image, 0, 0, nullptr);
        EXPECT_EQ(d.bytes(), (Bytes{150, 0xEE, 0xEE, 0xEE}));
        img->image->dataOrder = P;
    }
    // The destination alpha: 128 + 255 - 128 = 255 either way.
    EXPECT_EQ(alphaDst->bytes(), (Bytes{255, 0xEE, 0xEE, 0xEE}));
}

// ---------------------------------------------------------------------------
// Random calls against the kernels called directly
// ---------------------------------------------------------------------------

class RandomCall {
public:
    RandomCall(std::mt19937 &rng, unsigned int depth) : rng_(rng), depth_(depth) {}

    int pick(int lo, int hi) { return std::uniform_int_distribution<int>(lo, hi)(rng_); }
    bool coin() { return pick(0, 1) == 1; }

    // An image of random size, align and bytes, in `order`, with a ROI half
    // of the time (always with `coi` above 0).
    Image *image(int nChannels, int alphaChannel, int order, int coi = 0) {
        const int height = pick(1, 6), width = pick(1, 9);
        images_.push_back(std::make_unique<Image>(nChannels, alphaChannel, depth_, order,
                                                  coin() ? 4 : 8, height, width));
        Image *img = images_.back().get();
        img->randomize(rng_);
        if (coi > 0 || coin())
            img->setRoi(coi, pick(0, width - 1), pick(0, height - 1), pick(1, 9), pick(1, 9));
        return img;
    }

    // A copy of `img` with its own buffer, header and ROI.
    Image *copyOf(const Image *img) {
        const RmgImage *h = img->image;
        images_.push_back(std::make_unique<Image>(h->nChannels, h->alphaChannel, h->depth,
                                                  h->dataOrder, h->align, h->height, h->width));
        Image *c = images_.back().get();
        c->setBytes(img->bytes());
        if (h->roi != nullptr) c->setRoi(h->roi->coi, h->roi->xOffset, h->roi->yOffset,
                                         h->roi->height, h->roi->width);
        return c;
    }

private:
    std::mt19937 &rng_;
    unsigned int depth_;
    std::vector<std::unique_ptr<Image>> images_;
};

int extentOf(const std::vector<const Image *> &images, bool rowsWanted) {
    int n = 99999;
    for (const Image *img : images) {
        if (img == nullptr) continue;
        int rows = 99999, columns = 99999;
        ownClipExtent(img->image, &rows, &columns);
        n = std::min(n, rowsWanted ? rows : columns);
    }
    return n;
}

TEST_F(CompositeValues, RandomCallsRunTheKernelsOverTheCommonExtent) {
    std::mt19937 rng(20240611);
    for (int iteration = 0; iteration < 3000; ++iteration) {
        const unsigned int depth = iteration % 2 ? RMG_DEPTH_16U : RMG_DEPTH_8U;
        RandomCall r(rng, depth);
        const int colours = r.pick(1, 3);
        const bool planeAll = r.pick(0, 2) == 0;
        auto order = [&] {
            return planeAll ? RMG_DATA_PLANE : (r.coin() ? RMG_DATA_PLANE : RMG_DATA_PIXEL);
        };
        const bool coi = r.pick(0, 3) == 0;
        auto image = [&](bool alpha) {
            const int n = colours + (alpha ? 1 : 0);
            return r.image(n, alpha ? n : 0, order(), coi ? r.pick(1, n) : 0);
        };
        const bool constForm = r.coin();
        const int op = r.pick(0, 5);
        const int premul = r.pick(0, 1);
        const int divide = r.pick(0, 3) == 0 ? 1 : 0;
        const int M = depth == RMG_DEPTH_8U ? 255 : 65535;
        SCOPED_TRACE(testing::Message() << "iteration " << iteration << " op " << op << " const "
                                        << constForm << " divide " << divide);

        Image *A = image(r.coin());
        Image *B = image(r.coin());
        Image *D = image(r.coin());
        const int depthIndex = depth == RMG_DEPTH_8U ? kOwnDepth8u : kOwnDepth16u;
        const int arith = divide ? kOwnFloatKernel : kOwnIntegerKernel;
        if (constForm) {
            const int alphaA = A->image->alphaChannel && r.coin() ? -1 : r.pick(0, M + 100);
            const int alphaB = B->image->alphaChannel && r.coin() ? -1 : r.pick(0, M + 100);
            Image *A2 = r.copyOf(A), *B2 = r.copyOf(B), *D2 = r.copyOf(D);
            rmgAlphaCompositeC(A->image, B->image, D->image, op, alphaA, alphaB, premul, divide,
                               nullptr);
            ownCompositeConst[depthIndex][op][arith](
                A2->image, B2->image, D2->image, std::min(alphaA, M), std::min(alphaB, M), premul,
                divide, extentOf({A, B, D}, true), extentOf({A, B, D}, false));
            ASSERT_EQ(D->bytes(), D2->bytes());
            ASSERT_TRUE(rmgtest::reports().empty());
            continue;
        }
        // Alpha images of their own, or the sources themselves.
        Image *alphaA = r.coin() || A->image->alphaChannel == 0
                            ? r.image(r.pick(1, 2), 0, order(), 0)
                            : nullptr;
        if (alphaA != nullptr && r.coin()) alphaA->image->alphaChannel = alphaA->image->nChannels;
        Image *alphaB = nullptr;
        if (alphaA != nullptr ? r.coin() : B->image->alphaChannel == 0)
            alphaB = r.image(1, r.pick(0, 1), order(), 0);
        Image *alphaDst = r.coin() ? r.image(2, r.pick(1, 2), order(), 0) : nullptr;
        Image *A2 = r.copyOf(A), *B2 = r.copyOf(B), *D2 = r.copyOf(D);
        Image *alphaA2 = alphaA ? r.copyOf(alphaA) : nullptr;
        Image *alphaB2 = alphaB ? r.copyOf(alphaB) : nullptr;
        Image *alphaDst2 = alphaDst ? r.copyOf(alphaDst) : nullptr;
        rmgAlphaComposite(A->image, B->image, D->image, op, alphaA ? alphaA->image : nullptr,
                          alphaB ? alphaB->image : nullptr, alphaDst ? alphaDst->image : nullptr,
                          premul, divide, nullptr);
        // The settled alpha sources on the copies.
        const RmgImage *kernelAlphaA = alphaA ? alphaA2->image : A2->image;
        const RmgImage *kernelAlphaB =
            alphaB ? alphaB2->image : (alphaA ? nullptr : B2->image);
        RmgImage *kernelAlphaDst =
            alphaDst ? alphaDst2->image : (D->image->alphaChannel ? D2->image : nullptr);
        bool plane = true;
        const RmgImage *const used[] = {A2->image,    B2->image,    D2->image,
                                        kernelAlphaA, kernelAlphaB, kernelAlphaDst};
        for (const RmgImage *img : used)
            if (img != nullptr && img->dataOrder != RMG_DATA_PLANE) plane = false;
        const OwnCompositeImageFn kernel = !divide && plane ? ownCompositePlanar[depthIndex][op]
                                                            : ownCompositeImage[depthIndex][op][arith];
        kernel(A2->image, B2->image, D2->image, kernelAlphaA, kernelAlphaB, kernelAlphaDst, premul,
               divide, extentOf({A, B, D, alphaA, alphaB, alphaDst}, true),
               extentOf({A, B, D, alphaA, alphaB, alphaDst}, false));
        ASSERT_EQ(D->bytes(), D2->bytes());
        if (alphaDst) {
            ASSERT_EQ(alphaDst->bytes(), alphaDst2->bytes());
        }
        ASSERT_EQ(A->bytes(), A2->bytes());
        ASSERT_EQ(B->bytes(), B2->bytes());
        ASSERT_TRUE(rmgtest::reports().empty());
    }
}

}  // namespace
