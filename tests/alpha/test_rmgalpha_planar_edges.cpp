// The planar rows on concrete values: the gap to the integer kernels, the
// rows that are not read, short rows, rows that start off a boundary, empty
// rows, the lane products against the scalar products, and the differences
// to the integer kernels on random data.
#include <gtest/gtest.h>

#include <cstdint>
#include <map>
#include <memory>
#include <random>
#include <set>
#include <vector>

#include "alpha/alphatest.h"
#include "alpha/rmgalpha.h"
#include "alpha/rmgalpha_planar.h"
#include "alpha/test_rmgalpha_planar_model.h"
#include "support/rmgcanvas.h"
#include "support/rmgforms.h"
#include "support/rmgnoaccess.h"

namespace {

using alphatest::Image;
using rmgtest::NoAccessPage;
using Bytes = std::vector<uint8_t>;
using Words = std::vector<uint16_t>;

// One-sample composition of 8-bit samples by both paths: plane-order 1 by 1
// images for the integer kernel and the planar driver.
struct OnePixel {
    OnePixel(int A, int a, int B, int b)
        : srcA(1, 0, RMG_DEPTH_8U, RMG_DATA_PLANE, 4, 1, 1),
          srcB(1, 0, RMG_DEPTH_8U, RMG_DATA_PLANE, 4, 1, 1),
          dst(1, 0, RMG_DEPTH_8U, RMG_DATA_PLANE, 4, 1, 1),
          alphaA(1, 0, RMG_DEPTH_8U, RMG_DATA_PLANE, 4, 1, 1),
          alphaB(1, 0, RMG_DEPTH_8U, RMG_DATA_PLANE, 4, 1, 1) {
        alphatest::put(srcA, 0, 0, 0, A);
        alphatest::put(alphaA, 0, 0, 0, a);
        alphatest::put(srcB, 0, 0, 0, B);
        alphatest::put(alphaB, 0, 0, 0, b);
    }
    int run(OwnCompositeImageFn fn) {
        fn(srcA.image, srcB.image, dst.image, alphaA.image, alphaB.image, nullptr, 0, 0, 1, 1);
        return dst.bytes()[0];
    }
    Image srcA, srcB, dst, alphaA, alphaB;
};

TEST(PlanarEdges, OverFloorsWhereTheIntegerKernelCeils) {
    OnePixel p(200, 128, 100, 255);
    EXPECT_EQ(p.run(ownCompositePlanar[kOwnDepth8u][0]), 149);
    EXPECT_EQ(p.run(ownCompositeImage[kOwnDepth8u][0][kOwnIntegerKernel]), 150);
    rmgtest::inEveryForm([](int) {
        const uint8_t A = 200, a = 128, B = 100, b = 255;
        uint8_t d = 0;
        ownOverRow8u(&A, &a, &B, &b, &d, 1, 0);
        EXPECT_EQ(d, 149);
    });
}

TEST(PlanarEdges, OutAtopAndXorShowTheSameGap) {
    // A2 = 100, B2 = 50 (a = b = 128 at atop and xor); out with b = 100.
    OnePixel out(200, 128, 100, 100);
    EXPECT_EQ(out.run(ownCompositePlanar[kOwnDepth8u][2]), 60);
    EXPECT_EQ(out.run(ownCompositeImage[kOwnDepth8u][2][kOwnIntegerKernel]), 61);
    OnePixel atop(200, 128, 100, 128);
    EXPECT_EQ(atop.run(ownCompositePlanar[kOwnDepth8u][3]), 74);
    EXPECT_EQ(atop.run(ownCompositeImage[kOwnDepth8u][3][kOwnIntegerKernel]), 75);
    OnePixel xr(200, 128, 100, 128);
    EXPECT_EQ(xr.run(ownCompositePlanar[kOwnDepth8u][4]), 73);
    EXPECT_EQ(xr.run(ownCompositeImage[kOwnDepth8u][4][kOwnIntegerKernel]), 75);
}

TEST(PlanarEdges, OutPremultipliedWithoutAlphaOfBIsTheProductWithA) {
    rmgtest::inEveryForm([](int) {
        const uint8_t A = 200, a = 100, B = 7;
        uint8_t d = 0;
        ownOutRow8u(&A, &a, &B, nullptr, &d, 1, 1);
        EXPECT_EQ(d, 78);  // mul(200, 100); 200 - mul(200, 155) would be 79
        const uint16_t A16 = 51200, a16 = 25700, B16 = 7;
        uint16_t d16 = 0;
        ownOutRow16u(&A16, &a16, &B16, nullptr, &d16, 1, 1);
        EXPECT_EQ(d16, ownMul65535(51200, 25700));
    });
}

// The over row at 8 bits, premulAlpha 0, alpha of B given, on `count`
// samples whose destination starts `dstOff` bytes past a 64-byte boundary,
// against the model.
void checkOverRun(size_t count, size_t dstOff) {
    std::mt19937 rng(static_cast<uint32_t>(count * 100 + dstOff));
    Bytes A(count), a(count), B(count), b(count);
    for (size_t i = 0; i < count; ++i) {
        A[i] = static_cast<uint8_t>(rng());
        a[i] = static_cast<uint8_t>(rng());
        B[i] = static_cast<uint8_t>(rng());
        b[i] = static_cast<uint8_t>(rng());
    }
    rmgtest::Canvas dst(dstOff + count + 16);
    dst.set(Bytes(dst.size(), 0x5A));
    Bytes want(dst.size(), 0x5A);
    for (size_t i = 0; i < count; ++i)
        want[dstOff + i] = static_cast<uint8_t>(
            planartest::colourModel(planartest::kOver, 255, false, true, A[i], a[i], B[i], b[i]));
    ownOverRow8u(A.data(), a.data(), B.data(), b.data(), dst.data() + dstOff,
                 static_cast<int>(count), 0);
    EXPECT_EQ(dst.bytes(), want) << count << " samples at offset " << dstOff;
}

TEST(PlanarEdges, AlignedRowsOfOneToSevenSamples) {
    rmgtest::inEveryForm([](int) {
        for (size_t count = 1; count <= 7; ++count) checkOverRun(count, 0);
    });
}

TEST(PlanarEdges, HundredSamplesThreeBytesPastABoundary) {
    // 5 samples up to the 8-byte boundary, 11 blocks of 8, 7 after them: the
    // values are the formula's wherever a sample falls.
    rmgtest::inEveryForm([](int) {
        checkOverRun(100, 3);
        checkOverRun(100, 8 + 3);
    });
}

TEST(PlanarEdges, CountZeroOrBelowWritesNothing) {
    rmgtest::inEveryForm([](int) {
        for (int count : {0, -1, -300}) {
            for (int depth : {kOwnDepth8u, kOwnDepth16u}) {
                const Bytes src(64, 0x11);
                Bytes dst(64, 0xC3);
                const Bytes guard = dst;
                for (int op = 0; op < 6; ++op) {
                    for (int premul : {0, 1}) {
                        ownColourRows[depth][op](src.data(), src.data(), src.data(), src.data(),
                                                 dst.data() + 8, count, premul);
                        ownColourRows[depth][op](src.data(), src.data(), src.data(), nullptr,
                                                 dst.data() + 8, count, premul);
                    }
                    ownAlphaRows[depth][op](src.data(), src.data(), dst.data() + 8, count);
                    ownAlphaRows[depth][op](src.data(), nullptr, dst.data() + 8, count);
                    // No row is looked at: null rows are as good as any.
                    ownAlphaRows[depth][op](nullptr, nullptr, nullptr, count);
                }
                if (depth == kOwnDepth8u) {
                    ownMulRow8u(src.data(), src.data(), dst.data() + 8, count);
                    ownScaleRow8u(src.data(), dst.data() + 8, 200, count);
                } else {
                    ownMulRow16u(src.data(), src.data(), dst.data() + 8, count);
                    ownScaleRow16u(src.data(), dst.data() + 8, 200, count);
                }
                EXPECT_EQ(dst, guard) << count;
            }
        }
    });
}

TEST(PlanarEdges, PlusAlphaWithoutAlphaOfBFillsWithoutReadingA) {
    NoAccessPage page;
    rmgtest::inEveryForm([&](int) {
        for (size_t count = 0; count <= 100; ++count) {
            Bytes d8(count + 2, 0x3C);
            ownPlusAlphaRow8u(page.data(), nullptr, d8.data() + 1, static_cast<int>(count));
            Bytes want8(count + 2, 0xFF);
            want8.front() = want8.back() = 0x3C;
            EXPECT_EQ(d8, want8) << count;
            Words d16(count + 2, 0x3C3C);
            ownPlusAlphaRow16u(page.data(), nullptr, d16.data() + 1, static_cast<int>(count));
            Words want16(count + 2, 0xFFFF);
            want16.front() = want16.back() = 0x3C3C;
            EXPECT_EQ(d16, want16) << count;
        }
    });
}

TEST(PlanarEdges, RowsTheFormulaDoesNotUseAreNotRead) {
    NoAccessPage page;
    const void *none = page.data();
    rmgtest::inEveryForm([&](int) {
        const Bytes A = {200, 10, 0, 255, 128, 77, 3, 250, 1, 99};
        const Bytes a = {128, 10, 255, 0, 128, 200, 1, 254, 0, 50};
        const Bytes B = {100, 200, 255, 255, 3, 0, 99, 128, 7, 1};
        const int n = static_cast<int>(A.size());
        Bytes got(A.size()), want(A.size());
        auto model = [&](int op, int premul, bool hasB) {
            for (size_t i = 0; i < A.size(); ++i)
                want[i] = static_cast<uint8_t>(
                    planartest::colourModel(op, 255, premul != 0, hasB, A[i], a[i], B[i], 0));
        };
        // premulAlpha 1, over and plus: rowAlphaB, given, isn't looked at.
        for (int op : {planartest::kOver, planartest::kPlus}) {
            ownColourRows[kOwnDepth8u][op](A.data(), a.data(), B.data(), none, got.data(), n, 1);
            model(op, 1, false);
            EXPECT_EQ(got, want) << op;
        }
        // in and out don't read rowB.
        for (int op : {planartest::kIn, planartest::kOut})
            for (int premul : {0, 1}) {
                ownColourRows[kOwnDepth8u][op](A.data(), a.data(), none, nullptr, got.data(), n,
                                               premul);
                model(op, premul, false);
                EXPECT_EQ(got, want) << op;
            }
        // The atop alpha row with rowAlphaB copies it without reading rowAlphaA.
        ownAtopAlphaRow8u(none, B.data(), got.data(), n);
        EXPECT_EQ(got, B);
    });
}

TEST(PlanarEdges, AtopAlphaAtSixteenBits) {
    rmgtest::inEveryForm([](int) {
        for (size_t count : {size_t{1}, size_t{15}, size_t{16}, size_t{17}, size_t{100}}) {
            Words a(count), b(count), d(count + 1, 0x1234);
            for (size_t i = 0; i < count; ++i) {
                a[i] = static_cast<uint16_t>(i * 6553 + 1);
                b[i] = static_cast<uint16_t>(65535 - i * 311);
            }
            ownAtopAlphaRow16u(a.data(), b.data(), d.data() + 1, static_cast<int>(count));
            for (size_t i = 0; i < count; ++i) EXPECT_EQ(d[i + 1], b[i]) << i;
            ownAtopAlphaRow16u(a.data(), nullptr, d.data() + 1, static_cast<int>(count));
            for (size_t i = 0; i < count; ++i) EXPECT_EQ(d[i + 1], 65535 - a[i]) << i;
            EXPECT_EQ(d[0], 0x1234);
        }
    });
}

TEST(PlanarEdges, LaneProductsEqualTheScalarProducts) {
    rmgtest::inEveryForm([](int) {
        // Every pair of bytes.
        Bytes x(256 * 256), y(256 * 256), d(256 * 256);
        for (size_t i = 0; i < x.size(); ++i) {
            x[i] = static_cast<uint8_t>(i);
            y[i] = static_cast<uint8_t>(i >> 8);
        }
        ownMulRow8u(x.data(), y.data(), d.data(), static_cast<int>(d.size()));
        for (size_t i = 0; i < d.size(); ++i)
            ASSERT_EQ(d[i], ownMul255(x[i], y[i])) << int{x[i]} << " " << int{y[i]};
        // Every word against factors at the ends, around the carries and the
        // top bit, and at random.
        std::mt19937 rng(5);
        std::vector<uint32_t> factors = {0,     1,     2,     255,   256,   32767, 32768,
                                         32769, 65279, 65280, 65533, 65534, 65535};
        for (int k = 0; k < 24; ++k) factors.push_back(rng() & 0xFFFF);
        Words wx(65536), wy(65536), wd(65536);
        for (size_t i = 0; i < wx.size(); ++i) wx[i] = static_cast<uint16_t>(i);
        for (uint32_t f : factors) {
            for (auto &w : wy) w = static_cast<uint16_t>(f);
            ownMulRow16u(wx.data(), wy.data(), wd.data(), 65536);
            for (size_t i = 0; i < wd.size(); ++i)
                ASSERT_EQ(wd[i], ownMul65535(wx[i], f)) << i << " " << f;
            ownScaleRow16u(wx.data(), wd.data(), static_cast<int>(f), 65536);
            for (size_t i = 0; i < wd.size(); ++i)
                ASSERT_EQ(wd[i], ownMul65535(wx[i], f)) << i << " " << f;
        }
        // Random pairs.
        for (size_t i = 0; i < wx.size(); ++i) {
            wx[i] = static_cast<uint16_t>(rng());
            wy[i] = static_cast<uint16_t>(rng());
        }
        ownMulRow16u(wx.data(), wy.data(), wd.data(), 65536);
        for (size_t i = 0; i < wd.size(); ++i)
            ASSERT_EQ(wd[i], ownMul65535(wx[i], wy[i])) << wx[i] << " " << wy[i];
    });
}

// Integer kernel minus planar driver on random 8-bit plane-order images,
// premulAlpha 0, with alpha images of both sources and a destination alpha:
// the differences that occur, of colour and of destination alpha, and the
// share of each colour difference.
TEST(PlanarEdges, DifferencesToTheIntegerKernelsOnRandomData) {
    struct Allowed {
        std::set<int> colour, alpha;
    };
    const Allowed allowed[6] = {
        {{0, 1}, {0, 1}},       // over
        {{0}, {0}},             // in
        {{0, 1}, {0, 1}},       // out
        {{0, 1}, {0}},          // atop
        {{0, 1, 2}, {0, 2}},    // xor
        {{0}, {0}},             // plus
    };
    const int height = 48, width = 64;
    std::mt19937 rng(2024);
    for (int op = 0; op < 6; ++op) {
        SCOPED_TRACE(op);
        auto image = [&](int channels, int alphaChannel) {
            auto img = std::make_unique<Image>(channels, alphaChannel, RMG_DEPTH_8U, RMG_DATA_PLANE,
                                               4, height, width);
            img->randomize(rng);
            return img;
        };
        auto srcA = image(3, 0), srcB = image(3, 0), alphaA = image(1, 0), alphaB = image(1, 0);
        auto dstI = image(3, 0), dstP = image(3, 0), alphaI = image(1, 1), alphaP = image(1, 1);
        ownCompositeImage[kOwnDepth8u][op][kOwnIntegerKernel](
            srcA->image, srcB->image, dstI->image, alphaA->image, alphaB->image, alphaI->image, 0,
            0, height, width);
        ownCompositePlanar[kOwnDepth8u][op](srcA->image, srcB->image, dstP->image, alphaA->image,
                                            alphaB->image, alphaP->image, 0, 0, height, width);
        std::map<int, int> colour;
        std::set<int> alpha;
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x) {
                for (int c = 0; c < 3; ++c)
                    ++colour[alphatest::getSample(*dstI, dstI->bytes(), x, y, c) -
                             alphatest::getSample(*dstP, dstP->bytes(), x, y, c)];
                alpha.insert(alphatest::getSample(*alphaI, alphaI->bytes(), x, y, 0) -
                             alphatest::getSample(*alphaP, alphaP->bytes(), x, y, 0));
            }
        for (const auto &kv : colour) EXPECT_EQ(allowed[op].colour.count(kv.first), 1u) << kv.first;
        for (int d : alpha) EXPECT_EQ(allowed[op].alpha.count(d), 1u) << d;
        const double samples = 3.0 * height * width;
        if (op == 0 || op == 2 || op == 3) {
            EXPECT_GT(colour[1] / samples, 0.85);
        }
        if (op == 4) {
            EXPECT_GT(colour[2] / samples, 0.5);
        }
    }
}

}  // namespace
