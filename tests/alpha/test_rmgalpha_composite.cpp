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
#include "alpha/test_rmgalpha_composite.h"
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

TEST_F(CompositeValues, RandomCallsRunTheKernelsOverTheCommonExtent) {
    std::mt19937 rng(20240611);
    for (int iteration = 0; iteration < 3000; ++iteration) {
        const unsigned int depth = iteration % 2 ? RMG_DEPTH_16U : RMG_DEPTH_8U;
        compositetest::RandomImages r(rng, depth, 7);
        const compositetest::Setup s = compositetest::randomSetup(r, depth);
        const compositetest::Images &m = s.images;
        const compositetest::Images k = compositetest::copiesOf(r, m);
        SCOPED_TRACE(testing::Message() << "iteration " << iteration << " op " << s.op
                                        << " const " << s.constForm << " divide " << s.divide);
        compositetest::invoke(s, compositetest::headersOf(m));
        ASSERT_TRUE(rmgtest::reports().empty());

        const int depthIndex = depth == RMG_DEPTH_8U ? kOwnDepth8u : kOwnDepth16u;
        const int arith = s.divide ? kOwnFloatKernel : kOwnIntegerKernel;
        const int rows = compositetest::extentOf(m, true);
        const int columns = compositetest::extentOf(m, false);
        if (s.constForm) {
            const int M = depth == RMG_DEPTH_8U ? 255 : 65535;
            ownCompositeConst[depthIndex][s.op][arith](k.A->image, k.B->image, k.D->image,
                                                       std::min(s.alphaA, M),
                                                       std::min(s.alphaB, M), s.premul, s.divide,
                                                       rows, columns);
            ASSERT_EQ(m.D->bytes(), k.D->bytes());
            continue;
        }
        // The settled alpha sources on the copies.
        const RmgImage *alphaA = m.alphaA ? k.alphaA->image : k.A->image;
        const RmgImage *alphaB = m.alphaB ? k.alphaB->image : (m.alphaA ? nullptr : k.B->image);
        RmgImage *alphaDst =
            m.alphaDst ? k.alphaDst->image : (m.D->image->alphaChannel ? k.D->image : nullptr);
        bool plane = true;
        const RmgImage *const used[] = {k.A->image, k.B->image, k.D->image,
                                        alphaA,     alphaB,     alphaDst};
        for (const RmgImage *img : used)
            if (img != nullptr && img->dataOrder != RMG_DATA_PLANE) plane = false;
        const OwnCompositeImageFn kernel = !s.divide && plane
                                               ? ownCompositePlanar[depthIndex][s.op]
                                               : ownCompositeImage[depthIndex][s.op][arith];
        kernel(k.A->image, k.B->image, k.D->image, alphaA, alphaB, alphaDst, s.premul, s.divide,
               rows, columns);
        ASSERT_EQ(m.D->bytes(), k.D->bytes());
        if (m.alphaDst) {
            ASSERT_EQ(m.alphaDst->bytes(), k.alphaDst->bytes());
        }
        ASSERT_EQ(m.A->bytes(), k.A->bytes());
        ASSERT_EQ(m.B->bytes(), k.B->bytes());
    }
}

}  // namespace
