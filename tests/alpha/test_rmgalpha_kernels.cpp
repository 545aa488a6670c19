// The composition kernels on concrete values: the six operators at 8 bits,
// saturation, the alpha complement, the division of the float kernels, the
// work in place, the common extent and the channels of interest, and the
// limits of a buffer.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "alpha/alphatest.h"
#include "alpha/rmgalpha.h"

namespace {

using alphatest::Image;
using alphatest::put;
using Bytes = std::vector<uint8_t>;

constexpr int kOver = RMG_COMPOSITE_OVER;
constexpr int kIn = RMG_COMPOSITE_IN;
constexpr int kAtop = RMG_COMPOSITE_ATOP;
constexpr int kPlus = RMG_COMPOSITE_PLUS;

int depthIndex(unsigned int depth) { return depth == RMG_DEPTH_8U ? kOwnDepth8u : kOwnDepth16u; }
int maxOf(unsigned int depth) { return depth == RMG_DEPTH_8U ? 255 : 65535; }

// One row of `values` in channel ch of a one-row image.
void putRow(Image &img, int ch, const std::vector<int> &values) {
    for (size_t x = 0; x < values.size(); ++x) put(img, static_cast<int>(x), 0, ch, values[x]);
}

// srcImageA, srcImageB and dstImage of one layout, one channel each.
struct Three {
    Three(unsigned int depth, int align, int height, int width)
        : a(1, 0, depth, RMG_DATA_PIXEL, align, height, width),
          b(1, 0, depth, RMG_DATA_PIXEL, align, height, width),
          d(1, 0, depth, RMG_DATA_PIXEL, align, height, width) {}
    Image a, b, d;
};

// `size` bytes of 0xEE whose first `count` are `value`.
Bytes startingWith(size_t size, size_t count, uint8_t value) {
    Bytes b(size, 0xEE);
    std::fill(b.begin(), b.begin() + static_cast<ptrdiff_t>(count), value);
    return b;
}

std::vector<int> rowOf(const Image &img, int ch) {
    std::vector<int> v;
    const Bytes b = img.bytes();
    for (int x = 0; x < img.image->width; ++x) v.push_back(alphatest::getSample(img, b, x, 0, ch));
    return v;
}

// ---------------------------------------------------------------------------
// The six operators, 8-bit integer, premulAlpha 0
// ---------------------------------------------------------------------------

struct OperatorCase {
    int op;
    int A, a, B, b;
    int colour, alpha;
};

TEST(AlphaKernels, EightBitIntegerOperators) {
    const OperatorCase cases[] = {
        {RMG_COMPOSITE_OVER, 200, 128, 100, 255, 150, 255},
        {RMG_COMPOSITE_IN, 200, 128, 100, 128, 50, 64},
        {RMG_COMPOSITE_OUT, 200, 128, 100, 128, 50, 64},
        {RMG_COMPOSITE_ATOP, 200, 128, 100, 128, 75, 128},
        {RMG_COMPOSITE_XOR, 200, 128, 100, 128, 75, 128},
        {RMG_COMPOSITE_PLUS, 200, 128, 100, 128, 150, 255},
    };
    for (const OperatorCase &k : cases) {
        SCOPED_TRACE(k.op);
        // Colour and alpha in one pixel of each image, the alpha last; a row
        // of 2 bytes padded to 4.
        Image a(2, 2, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 1, 1);
        Image b(2, 2, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 1, 1);
        Image d(2, 2, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 1, 1);
        put(a, 0, 0, 0, k.A);
        put(a, 0, 0, 1, k.a);
        put(b, 0, 0, 0, k.B);
        put(b, 0, 0, 1, k.b);
        ownCompositeImage[kOwnDepth8u][k.op][kOwnIntegerKernel](a.image, b.image, d.image, a.image,
                                                                 b.image, d.image, 0, 0, 1, 1);
        EXPECT_EQ(d.bytes(), (Bytes{static_cast<uint8_t>(k.colour), static_cast<uint8_t>(k.alpha),
                                    0xEE, 0xEE}));
        // The constant form gives the same colour and leaves the alpha.
        Image c(2, 2, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 1, 1);
        ownCompositeConst[kOwnDepth8u][k.op][kOwnIntegerKernel](a.image, b.image, c.image, k.a,
                                                                 -1, 0, 0, 1, 1);
        EXPECT_EQ(c.bytes(), (Bytes{static_cast<uint8_t>(k.colour), 0xEE, 0xEE, 0xEE}));
    }
}

TEST(AlphaKernels, PremultipliedSourceThatIsNotSaturates) {
    // 200 + 200 - mul(200, 10) = 393, limited to 255.
    Three t(RMG_DEPTH_8U, 4, 1, 1);
    put(t.a, 0, 0, 0, 200);
    put(t.b, 0, 0, 0, 200);
    ownCompositeConst[kOwnDepth8u][kOver][kOwnIntegerKernel](t.a.image, t.b.image, t.d.image, 10,
                                                              0, 1, 0, 1, 1);
    EXPECT_EQ(t.d.bytes(), startingWith(4, 1, 255));
}

TEST(AlphaKernels, OverWithOpaqueAndTransparentA) {
    Image a(1, 0, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 1, 4);
    Image b(1, 0, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 1, 4);
    putRow(a, 0, {0, 77, 200, 255});
    putRow(b, 0, {10, 100, 40, 0});
    auto over = [&](int alphaA, int premul) {
        Image d(1, 0, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 1, 4);
        ownCompositeConst[kOwnDepth8u][kOver][kOwnIntegerKernel](a.image, b.image, d.image, alphaA,
                                                                  177, premul, 0, 1, 4);
        return rowOf(d, 0);
    };
    // a = 255: A2 exactly, which is A itself with premulAlpha 0 too.
    EXPECT_EQ(over(255, 0), (std::vector<int>{0, 77, 200, 255}));
    EXPECT_EQ(over(255, 1), (std::vector<int>{0, 77, 200, 255}));
    // a = 0: A2 + B2; with premulAlpha 0, A2 is 0 and B2 = mul(B, 177).
    EXPECT_EQ(over(0, 0), (std::vector<int>{6, 69, 27, 0}));
    EXPECT_EQ(over(0, 1), (std::vector<int>{10, 177, 240, 255}));
}

// ---------------------------------------------------------------------------
// Without an alpha image of B: b is the complement of a
// ---------------------------------------------------------------------------

class AlphaComplementTest : public testing::TestWithParam<std::tuple<unsigned int, int>> {
protected:
    // Runs `op` in the image form with alpha images of A and of the
    // destination (one channel each, alphaChannel 1) and none of B; gives
    // the destination alpha written for the alphas `as`.
    std::vector<int> destinationAlpha(int op, const std::vector<int> &as) {
        const unsigned int depth = std::get<0>(GetParam());
        const int width = static_cast<int>(as.size());
        Image a(3, 0, depth, RMG_DATA_PIXEL, 4, 1, width);
        Image b(3, 0, depth, RMG_DATA_PLANE, 8, 1, width);
        Image d(3, 0, depth, RMG_DATA_PIXEL, 8, 1, width);
        Image alphaA(1, 0, depth, RMG_DATA_PIXEL, 4, 1, width);
        Image alphaD(1, 1, depth, RMG_DATA_PIXEL, 4, 1, width);
        putRow(alphaA, 0, as);
        ownCompositeImage[depthIndex(depth)][op][std::get<1>(GetParam())](
            a.image, b.image, d.image, alphaA.image, nullptr, alphaD.image, 0, 0, 1, width);
        return rowOf(alphaD, 0);
    }
};

TEST_P(AlphaComplementTest, PlusWritesTheMaximumEverywhere) {
    const int M = maxOf(std::get<0>(GetParam()));
    EXPECT_EQ(destinationAlpha(kPlus, {0, 1, 128, M / 3, M - 1, M}),
              (std::vector<int>(6, M)));
}

TEST_P(AlphaComplementTest, AtopWritesTheComplementOfA) {
    const int M = maxOf(std::get<0>(GetParam()));
    EXPECT_EQ(destinationAlpha(kAtop, {0, 1, 128, M / 3, M - 1, M}),
              (std::vector<int>{M, M - 1, M - 128, M - M / 3, 1, 0}));
}

INSTANTIATE_TEST_SUITE_P(DepthsAndArithmetics, AlphaComplementTest,
                         testing::Combine(testing::Values(RMG_DEPTH_8U, RMG_DEPTH_16U),
                                          testing::Values(kOwnIntegerKernel, kOwnFloatKernel)));

// ---------------------------------------------------------------------------
// The float kernels with divideMode 1
// ---------------------------------------------------------------------------

TEST(AlphaKernels, DivisionOfATransparentResultKeepsTheSum) {
    for (unsigned int depth : {RMG_DEPTH_8U, RMG_DEPTH_16U}) {
        Three t(depth, 4, 1, 2);
        putRow(t.a, 0, {200, maxOf(depth)});
        putRow(t.b, 0, {100, maxOf(depth)});
        ownCompositeConst[depthIndex(depth)][kOver][kOwnFloatKernel](t.a.image, t.b.image,
                                                                      t.d.image, 0, 0, 0, 1, 1, 2);
        EXPECT_EQ(rowOf(t.d, 0), (std::vector<int>{0, 0})) << depth;
    }
}

TEST(AlphaKernels, DivisionCancelsBothAlphasOfIn) {
    Three t(RMG_DEPTH_8U, 4, 1, 256);
    std::vector<int> all(256);
    for (int i = 0; i < 256; ++i) all[static_cast<size_t>(i)] = i;
    putRow(t.a, 0, all);
    ownCompositeConst[kOwnDepth8u][kIn][kOwnFloatKernel](t.a.image, t.b.image, t.d.image, 128, 128,
                                                          0, 1, 1, 256);
    EXPECT_EQ(rowOf(t.d, 0), all);
}

TEST(AlphaKernels, OpaqueAAtEightBitsVanishesInTheRounding) {
    // a' is a little above 1, so 1 - a' is a little below 0.
    Image a(2, 2, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 1, 256);
    Image b(2, 2, RMG_DEPTH_8U, RMG_DATA_PLANE, 4, 1, 256);
    Image d(1, 0, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 1, 256);
    std::vector<int> colour(256), opaque(256, 255), bs(256), bAlpha(256);
    for (int i = 0; i < 256; ++i) {
        colour[static_cast<size_t>(i)] = (i * 37) % 256;
        bs[static_cast<size_t>(i)] = i;
        bAlpha[static_cast<size_t>(i)] = (i * 91) % 256;
    }
    putRow(a, 0, colour);
    putRow(a, 1, opaque);
    putRow(b, 0, bs);
    putRow(b, 1, bAlpha);
    for (int premul : {0, 1}) {
        ownCompositeImage[kOwnDepth8u][kOver][kOwnFloatKernel](a.image, b.image, d.image, a.image,
                                                                b.image, nullptr, premul, 1, 1, 256);
        EXPECT_EQ(rowOf(d, 0), colour) << premul;
    }
}

// ---------------------------------------------------------------------------
// In place
// ---------------------------------------------------------------------------

TEST(AlphaKernels, InPlaceLaterChannelsSeeTheNewAlpha) {
    // dstImage is srcImageA, and its alpha channel is the alpha of A and the
    // destination alpha. Pass of channel 0: a = 128, b = 255: colour 150,
    // alpha 255 written. Pass of channel 1: a is now 255, so the colour is
    // A2 = 200 + B2 - B2.
    Image ad(3, 3, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 1, 1);
    Image b(2, 2, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 1, 1);
    ad.setBytes({200, 200, 128, 0x11});
    b.setBytes({100, 255, 0x22, 0x33});
    ownCompositeImage[kOwnDepth8u][kOver][kOwnIntegerKernel](ad.image, b.image, ad.image, ad.image,
                                                              b.image, ad.image, 0, 0, 1, 1);
    EXPECT_EQ(ad.bytes(), (Bytes{150, 200, 255, 0x11}));
    EXPECT_EQ(b.bytes(), (Bytes{100, 255, 0x22, 0x33}));
}

TEST(AlphaKernels, NoDestinationAlphaWhenChannelZeroIsTheAlpha) {
    // A one-channel destination whose alphaChannel is 1: nothing to do.
    Image a(1, 1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 1, 2);
    Image b(1, 1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 1, 2);
    Image d(1, 1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 1, 2);
    a.setBytes({9, 9, 9, 9});
    ownCompositeImage[kOwnDepth8u][kPlus][kOwnIntegerKernel](a.image, b.image, d.image, a.image,
                                                              b.image, d.image, 1, 0, 1, 2);
    EXPECT_EQ(d.bytes(), (Bytes(4, 0xEE)));
}

// ---------------------------------------------------------------------------
// Extent and channels of interest
// ---------------------------------------------------------------------------

TEST(AlphaKernels, RoiOfTheSourceAgainstAWholeDestination) {
    Image a(1, 0, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 100, 100);
    Image b(1, 0, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 20, 20);
    Image d(1, 0, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 20, 20);
    std::mt19937 rng(3);
    a.randomize(rng);
    b.randomize(rng);
    a.setRoi(0, 30, 40, 10, 10);
    int rows = 99999, columns = 99999;
    for (const Image *img : {&d, &a, &b}) ownClipExtent(img->image, &rows, &columns);
    ASSERT_EQ(rows, 10);
    ASSERT_EQ(columns, 10);
    ownCompositeConst[kOwnDepth8u][kPlus][kOwnIntegerKernel](a.image, b.image, d.image, 255, 255,
                                                              1, 0, rows, columns);
    Bytes expected(static_cast<size_t>(d.image->imageSize), 0xEE);
    const Bytes ab = a.bytes(), bb = b.bytes();
    for (int y = 0; y < 10; ++y)
        for (int x = 0; x < 10; ++x) {
            const int sum = ab[a.at(30 + x, 40 + y, 0)] + bb[b.at(x, y, 0)];
            expected[d.at(x, y, 0)] = static_cast<uint8_t>(sum > 255 ? 255 : sum);
        }
    EXPECT_EQ(d.bytes(), expected);
}

TEST(AlphaKernels, SourceCoiUnderDestinationWithoutCoiIsIgnored) {
    Image a(3, 0, RMG_DEPTH_16U, RMG_DATA_PLANE, 4, 3, 4);
    Image b(3, 0, RMG_DEPTH_16U, RMG_DATA_PIXEL, 8, 3, 4);
    std::mt19937 rng(5);
    a.randomize(rng);
    b.randomize(rng);
    Image d1(3, 0, RMG_DEPTH_16U, RMG_DATA_PIXEL, 4, 3, 4);
    Image d2(3, 0, RMG_DEPTH_16U, RMG_DATA_PIXEL, 4, 3, 4);
    d1.setRoi(0, 1, 1, 2, 3);
    d2.setRoi(0, 1, 1, 2, 3);
    a.setRoi(0, 0, 1, 2, 3);
    ownCompositeConst[kOwnDepth16u][kOver][kOwnIntegerKernel](a.image, b.image, d1.image, 40000,
                                                               9000, 0, 0, 2, 3);
    a.roi.coi = 2;
    ownCompositeConst[kOwnDepth16u][kOver][kOwnIntegerKernel](a.image, b.image, d2.image, 40000,
                                                               9000, 0, 0, 2, 3);
    EXPECT_EQ(d2.bytes(), d1.bytes());
    EXPECT_NE(d1.bytes(), Bytes(d1.bytes().size(), 0xEE));
}

// ---------------------------------------------------------------------------
// The limits of a buffer
// ---------------------------------------------------------------------------

TEST(AlphaKernels, RowsBeyondImageSizeAreLeftOut) {
    // The destination says 4 rows of 8 bytes but has 2.5 of them: the rows
    // that don't fit whole are left out, and nothing outside is touched.
    Three t(RMG_DEPTH_8U, 8, 4, 8);
    t.d.setBytes(Bytes(20, 0xEE));
    t.d.image->imageSize = 20;
    ownCompositeConst[kOwnDepth8u][kPlus][kOwnIntegerKernel](t.a.image, t.b.image, t.d.image, 0,
                                                              0, 1, 0, 4, 8);
    EXPECT_EQ(t.d.bytes(), startingWith(20, 16, 255));
}

TEST(AlphaKernels, AlphaImageShorterThanItsSizeStopsTheRows) {
    // 16 bits: the alpha image of A holds 3 whole rows of 2 pixels and one
    // byte more; a region from row 1 keeps 2 rows.
    Three t(RMG_DEPTH_16U, 4, 4, 2);
    Image alphaA(1, 0, RMG_DEPTH_16U, RMG_DATA_PIXEL, 4, 4, 2);
    alphaA.setBytes(Bytes(13, 0xFF));
    alphaA.image->imageSize = 13;
    alphaA.setRoi(0, 0, 1, 3, 2);
    ownCompositeImage[kOwnDepth16u][kPlus][kOwnIntegerKernel](t.a.image, t.b.image, t.d.image,
                                                               alphaA.image, nullptr, nullptr, 1,
                                                               0, 3, 2);
    EXPECT_EQ(t.d.bytes(), startingWith(16, 8, 0xFF));
}

TEST(AlphaKernels, RegionStartingOutsideTheBufferHasNoRows) {
    // A source whose alphaChannel is 0 read as its own alpha: channel 0
    // stands in front of the buffer.
    Three t(RMG_DEPTH_8U, 4, 2, 2);
    ownCompositeConst[kOwnDepth8u][kOver][kOwnFloatKernel](t.a.image, t.b.image, t.d.image, -1, 5,
                                                            0, 1, 2, 2);
    EXPECT_EQ(t.d.bytes(), Bytes(8, 0xEE));
}

}  // namespace
