// The zoom kernels on their own: every interpolation, depth and data order
// against a per-element model of the formulas (factors 1/1, 2/1, 3/2 and
// 7/3 on both axes, odd sizes, regions inside larger images, fractions of
// tiled pieces), whole destination buffers compared with their padding;
// the fixed-point rules on concrete values; and every vector form against
// the scalar form.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <random>
#include <vector>

#include "geometry/ownZoom.h"
#include "geometry/zoomtest.h"
#include "support/rmgforms.h"

namespace {

using zoomtest::Ask;
using zoomtest::Plane;

enum Inter { kNearest, kLinear, kCubic };

// One kernel call on random elements, and the model's whole destination.
struct Case {
    Inter inter;
    bool plane;
    int width, height;  // source image
    int ox, oy;         // region origin
    int xU, xL, yU, yL;
    int channels, srcN, dstN;  // pixel order; plane order: channels planes
    double xFrac, yFrac;
};

// The most columns (rows) whose positions stay inside the image: the last
// one's node reaches lastCol at most.
int fitting(Inter inter, double scale, double frac, int last) {
    int n = 0;
    if (inter == kCubic) {
        double p = frac;
        while (p <= last && n < 400) {
            ++n;
            p += scale;
        }
        return n;
    }
    const int64_t step = inter == kNearest ? zoomtest::nearestFixed(scale)
                                           : zoomtest::roundEven(scale * 16384);
    const int64_t start = inter == kNearest ? zoomtest::nearestFixed(frac)
                                            : zoomtest::roundEven(frac * 16384);
    while (((start + n * step) >> 14) <= last && n < 400) ++n;
    return n;
}

template <typename T>
void callKernel(const Case &k, const Ask &a, const T *src, T *dst, int srcStride, int dstStride,
                int srcPlane, int dstPlane) {
    const int n = a.cols * (k.plane ? 1 : k.channels);
    std::vector<int16_t> bufA(n), bufB(n);
    std::vector<float> r0(n), r1(n), r2(n), r3(n);
    constexpr bool k8 = sizeof(T) == 1;
    auto s8 = reinterpret_cast<const uint8_t *>(src);
    auto d8 = reinterpret_cast<uint8_t *>(dst);
    auto s16 = reinterpret_cast<const uint16_t *>(src);
    auto d16 = reinterpret_cast<uint16_t *>(dst);
    const int P = k.channels;
    switch (k.inter) {
    case kNearest:
        if (k.plane) {
            if (k8) ownZoomNearest8Plane(s8, d8, a.xScale, a.yScale, srcStride, dstStride, a.cols, a.rows, a.xFrac, a.yFrac, P, srcPlane, dstPlane);
            else ownZoomNearest16Plane(s16, d16, a.xScale, a.yScale, srcStride, dstStride, a.cols, a.rows, a.xFrac, a.yFrac, P, srcPlane, dstPlane);
        } else {
            if (k8) ownZoomNearest8Pixel(s8, d8, a.xScale, a.yScale, srcStride, dstStride, a.cols, a.rows, a.xFrac, a.yFrac, P, k.srcN, k.dstN);
            else ownZoomNearest16Pixel(s16, d16, a.xScale, a.yScale, srcStride, dstStride, a.cols, a.rows, a.xFrac, a.yFrac, P, k.srcN, k.dstN);
        }
        break;
    case kLinear:
        if (k.plane) {
            if (k8) ownZoomLinear8Plane(s8, d8, a.xScale, a.yScale, srcStride, dstStride, a.cols, a.rows, a.xFrac, a.yFrac, P, srcPlane, dstPlane, a.lastCol, a.lastRow, bufA.data(), bufB.data());
            else ownZoomLinear16Plane(s16, d16, a.xScale, a.yScale, srcStride, dstStride, a.cols, a.rows, a.xFrac, a.yFrac, P, srcPlane, dstPlane, a.lastCol, a.lastRow, bufA.data(), bufB.data());
        } else {
            if (k8) ownZoomLinear8Pixel(s8, d8, a.xScale, a.yScale, srcStride, dstStride, a.cols, a.rows, a.xFrac, a.yFrac, P, k.srcN, k.dstN, a.lastCol, a.lastRow, bufA.data(), bufB.data());
            else ownZoomLinear16Pixel(s16, d16, a.xScale, a.yScale, srcStride, dstStride, a.cols, a.rows, a.xFrac, a.yFrac, P, k.srcN, k.dstN, a.lastCol, a.lastRow, bufA.data(), bufB.data());
        }
        break;
    case kCubic:
        if (k.plane) {
            if (k8) ownZoomCubic8Plane(s8, d8, a.xScale, a.yScale, srcStride, dstStride, a.cols, a.rows, a.xFrac, a.yFrac, P, srcPlane, dstPlane, a.xOffset, a.yOffset, a.width, a.height, r0.data(), r1.data(), r2.data(), r3.data());
            else ownZoomCubic16Plane(s16, d16, a.xScale, a.yScale, srcStride, dstStride, a.cols, a.rows, a.xFrac, a.yFrac, P, srcPlane, dstPlane, a.xOffset, a.yOffset, a.width, a.height, r0.data(), r1.data(), r2.data(), r3.data());
        } else {
            if (k8) ownZoomCubic8Pixel(s8, d8, a.xScale, a.yScale, srcStride, dstStride, a.cols, a.rows, a.xFrac, a.yFrac, P, k.srcN, k.dstN, a.xOffset, a.yOffset, a.width, a.height, r0.data(), r1.data(), r2.data(), r3.data());
            else ownZoomCubic16Pixel(s16, d16, a.xScale, a.yScale, srcStride, dstStride, a.cols, a.rows, a.xFrac, a.yFrac, P, k.srcN, k.dstN, a.xOffset, a.yOffset, a.width, a.height, r0.data(), r1.data(), r2.data(), r3.data());
        }
        break;
    }
}

// Runs the case and compares the whole destination with the model.
template <typename T>
void runCase(const Case &k, uint32_t seed) {
    const int srcN = k.plane ? 1 : k.srcN;
    const int dstN = k.plane ? 1 : k.dstN;
    const int planes = k.plane ? k.channels : 1;
    const int firstCh = k.plane ? 0 : k.srcN - k.channels;
    Ask a{};
    a.xScale = static_cast<double>(k.xL) / k.xU;
    a.yScale = static_cast<double>(k.yL) / k.yU;
    a.xFrac = k.xFrac;
    a.yFrac = k.yFrac;
    a.lastCol = k.width - k.ox - 1;
    a.lastRow = k.height - k.oy - 1;
    a.xOffset = k.ox;
    a.yOffset = k.oy;
    a.width = k.width;
    a.height = k.height;
    a.channels = k.channels;
    a.cols = fitting(k.inter, a.xScale, a.xFrac, a.lastCol);
    a.rows = fitting(k.inter, a.yScale, a.yFrac, a.lastRow);

    const int srcStride = k.width * srcN + 3;
    const int srcPlane = srcStride * k.height + 5;
    const int dstStride = a.cols * dstN + 2;
    const int dstPlane = dstStride * a.rows + 1;
    const std::vector<T> src = zoomtest::randomElements<T>(static_cast<size_t>(srcPlane) * planes, seed);
    std::vector<T> dst = zoomtest::randomElements<T>(static_cast<size_t>(dstPlane) * planes, seed + 1);
    std::vector<T> want = dst;
    const ptrdiff_t origin = static_cast<ptrdiff_t>(k.oy) * srcStride + k.ox * srcN + firstCh;
    for (int p = 0; p < planes; ++p) {
        const Plane<T> plane{src.data(), origin + static_cast<ptrdiff_t>(p) * srcPlane, srcStride, srcN};
        for (int r = 0; r < a.rows; ++r)
            for (int c = 0; c < a.cols; ++c)
                for (int ch = 0; ch < (k.plane ? 1 : k.channels); ++ch) {
                    T v = 0;
                    if (k.inter == kNearest) v = zoomtest::modelNearest<T>(plane, a, c, r, ch);
                    if (k.inter == kLinear) v = zoomtest::modelLinear<T>(plane, a, c, r, ch);
                    if (k.inter == kCubic) v = zoomtest::modelCubic<T>(plane, a, c, r, ch);
                    want[static_cast<size_t>(p) * dstPlane + r * dstStride + c * dstN + ch] = v;
                }
    }
    callKernel<T>(k, a, src.data() + origin, dst.data(), srcStride, dstStride, srcPlane, dstPlane);
    ASSERT_EQ(dst, want) << "inter " << k.inter << " plane " << k.plane << " size " << k.width
                         << "x" << k.height << " at " << k.ox << "," << k.oy << " x " << k.xU
                         << "/" << k.xL << " y " << k.yU << "/" << k.yL << " ch " << k.channels
                         << "/" << k.srcN << "/" << k.dstN << " frac " << k.xFrac << ","
                         << k.yFrac << " cols " << a.cols << " rows " << a.rows;
}

const int kFactors[][2] = {{1, 1}, {2, 1}, {3, 2}, {7, 3}};

TEST(ZoomKernels, AgreeWithTheModelForEveryInterpolationDepthOrderAndFactor) {
    std::mt19937 rng(42);
    uint32_t seed = 1;
    for (Inter inter : {kNearest, kLinear, kCubic})
        for (bool plane : {false, true})
            for (const auto &fx : kFactors)
                for (const auto &fy : kFactors) {
                    Case k{};
                    k.inter = inter;
                    k.plane = plane;
                    k.width = 5 + static_cast<int>(rng() % 9);
                    k.height = 5 + static_cast<int>(rng() % 7);
                    k.ox = static_cast<int>(rng() % 3);
                    k.oy = static_cast<int>(rng() % 3);
                    k.xU = fx[0];
                    k.xL = fx[1];
                    k.yU = fy[0];
                    k.yL = fy[1];
                    k.srcN = 1 + static_cast<int>(rng() % 4);
                    k.channels = 1 + static_cast<int>(rng() % k.srcN);
                    k.dstN = k.channels + static_cast<int>(rng() % 2);
                    k.xFrac = k.yFrac = 0.0;
                    runCase<uint8_t>(k, seed++);
                    runCase<uint16_t>(k, seed++);
                    // A piece of a tiled zoom starts inside a source pixel.
                    k.xFrac = (rng() % 16384) / 16384.0;
                    k.yFrac = (rng() % 16384) / 16384.0;
                    runCase<uint8_t>(k, seed++);
                    runCase<uint16_t>(k, seed++);
                }
}

TEST(ZoomKernels, EveryFormGivesTheModelsBytes) {
    rmgtest::inEveryForm([](int) {
        std::mt19937 rng(7);
        for (int n = 0; n < 60; ++n) {
            Case k{};
            k.inter = n % 2 == 0 ? kNearest : kLinear;
            k.plane = n % 3 == 0;
            k.width = 2 + static_cast<int>(rng() % 70);
            k.height = 2 + static_cast<int>(rng() % 5);
            k.ox = static_cast<int>(rng() % 2);
            k.oy = 0;
            const auto &fx = kFactors[rng() % 4];
            const auto &fy = kFactors[rng() % 4];
            k.xU = fx[0];
            k.xL = fx[1];
            k.yU = fy[0];
            k.yL = fy[1];
            k.srcN = 1 + static_cast<int>(rng() % 4);
            k.channels = rng() % 2 ? k.srcN : 1 + static_cast<int>(rng() % k.srcN);
            k.dstN = rng() % 2 ? k.channels : 4;
            k.xFrac = (rng() % 3) / 3.0;
            k.yFrac = 0.0;
            runCase<uint8_t>(k, 100 + n);
            runCase<uint16_t>(k, 200 + n);
        }
    });
}

// ---------------------------------------------------------------------------
// Concrete values
// ---------------------------------------------------------------------------

TEST(ZoomKernels, NearestWithScaleOneCopiesExactly) {
    EXPECT_EQ(rmg::zoomNearestFixed(1.0), 16384);
    const uint8_t src[2][5] = {{1, 2, 3, 4, 5}, {6, 7, 8, 9, 10}};
    uint8_t dst[2][6];
    std::memset(dst, 0xEE, sizeof dst);
    ownZoomNearest8Pixel(&src[0][0], &dst[0][0], 1.0, 1.0, 5, 6, 5, 2, 0.0, 0.0, 1, 1, 1);
    const uint8_t want[2][6] = {{1, 2, 3, 4, 5, 0xEE}, {6, 7, 8, 9, 10, 0xEE}};
    EXPECT_EQ(0, std::memcmp(dst, want, sizeof dst));
}

TEST(ZoomKernels, NearestThirdStepPutsColumnThreeOnSourceColumnZero) {
    EXPECT_EQ(rmg::zoomNearestFixed(1.0 / 3.0), 5461);
    EXPECT_EQ(3 * 5461, 16383);
    const uint8_t src[3] = {10, 20, 30};
    uint8_t dst[7];
    std::memset(dst, 0, sizeof dst);
    ownZoomNearest8Pixel(src, dst, 1.0 / 3.0, 1.0, 3, 7, 7, 1, 0.0, 0.0, 1, 1, 1);
    const uint8_t want[7] = {10, 10, 10, 10, 20, 20, 20};
    EXPECT_EQ(0, std::memcmp(dst, want, sizeof dst));
}

TEST(ZoomKernels, LinearOnLastRowBlendsTheLastTwoRowsWithFullWeight) {
    // Two rows, yScale 1/2: destination row 2 lies at 16384, on lastRow 1,
    // so rows 0 and 1 are blended with f = 16384 and give row 1 itself.
    const uint8_t src[2][2] = {{10, 200}, {77, 3}};
    uint8_t dst[3][2];
    int16_t a[2], b[2];
    ownZoomLinear8Pixel(&src[0][0], &dst[0][0], 1.0, 0.5, 2, 2, 2, 3, 0.0, 0.0, 1, 1, 1, 1, 1, a,
                        b);
    EXPECT_EQ(dst[2][0], 77);
    EXPECT_EQ(dst[2][1], 3);
    EXPECT_EQ(dst[0][0], 10);
    EXPECT_EQ(dst[0][1], 200);
    // Row 1 at 8192: (16384 - 8192) * 640 + 8192 * 4928 >> 20 = 43.
    EXPECT_EQ(dst[1][0], 43);
}

TEST(ZoomKernels, LinearKeepsAnEvenAreaAt8BitsAndLosesTheLowBitAt16) {
    uint8_t src8[3][3];
    std::memset(src8, 255, sizeof src8);
    uint8_t dst8[5][5];
    int16_t a[5], b[5];
    ownZoomLinear8Pixel(&src8[0][0], &dst8[0][0], 0.5, 0.5, 3, 5, 5, 5, 0.0, 0.0, 1, 1, 1, 2, 2, a, b);
    for (auto &row : dst8)
        for (uint8_t v : row) EXPECT_EQ(v, 255);

    const std::vector<uint16_t> src16(9, 65535);
    std::vector<uint16_t> dst16(25, 0);
    ownZoomLinear16Plane(src16.data(), dst16.data(), 0.5, 0.5, 3, 5, 5, 5, 0.0, 0.0, 1, 9, 25, 2, 2, a, b);
    for (uint16_t v : dst16) EXPECT_EQ(v, 65534);
}

TEST(ZoomKernels, CubicOnTheFirstRowGivesTheRowItself) {
    // At p = 0 the node moves to 1, t = -1, and a, b and c are 0.
    const rmg::ZoomCubicNode node = rmg::zoomCubicNode(0.0, 0, 10);
    EXPECT_EQ(node.i, 1);
    EXPECT_EQ(node.t, -1.0);
    const rmg::ZoomCubicWeights w = rmg::zoomCubicWeights(node.t);
    EXPECT_EQ(w.a, 0.0);
    EXPECT_EQ(w.b, 0.0);
    EXPECT_EQ(w.c, 0.0);
    std::vector<uint8_t> src(36);
    for (size_t i = 0; i < src.size(); ++i) src[i] = static_cast<uint8_t>(i * 7 + 3);
    uint8_t dst[1][6];
    std::vector<float> r0(6), r1(6), r2(6), r3(6);
    ownZoomCubic8Plane(src.data(), &dst[0][0], 1.0, 1.0, 6, 6, 6, 1, 0.0, 0.0, 1, 36, 6, 0, 0, 6, 6,
                       r0.data(), r1.data(), r2.data(), r3.data());
    for (int c = 0; c < 6; ++c) EXPECT_EQ(dst[0][c], src[c]) << c;
}

TEST(ZoomKernels, CubicOnAConstantImageGivesTheConstant) {
    const std::vector<uint8_t> src(8 * 8, 100);
    std::vector<uint8_t> dst(17 * 17, 0);
    std::vector<float> r0(17), r1(17), r2(17), r3(17);
    ownZoomCubic8Plane(src.data(), dst.data(), 7.0 / 17, 7.0 / 17, 8, 17, 17, 17, 0.0, 0.0, 1, 64,
                       289, 0, 0, 8, 8, r0.data(), r1.data(), r2.data(), r3.data());
    for (uint8_t v : dst) EXPECT_EQ(v, 100);
}

TEST(ZoomKernels, NearestOneBitLeavesTheOtherBitsOfItsBytesAlone) {
    // Source bits 1,0,1,1 from bit position 3; destination 8 columns at
    // bit position 5 of a byte pair full of ones and zeros.
    const uint8_t src[1] = {0x16};  // 0001 0110: bits 3..6 are 1,0,1,1
    uint8_t dst[2][3] = {{0xFF, 0xFF, 0xFF}, {0x00, 0x00, 0x00}};
    ownZoomNearest1(src, &dst[0][0], 0.5, 1.0, 0, 3, 8, 1, 0.0, 0.0, 3, 5);
    // Columns 0..7 take source bits 1,1,0,0,1,1,1,1 at bits 5..12.
    EXPECT_EQ(dst[0][0], 0xFF & ~0x01);  // bits 5, 6: 1, 1; bit 7: 0
    EXPECT_EQ(dst[0][1], 0x7F);          // bit 8: 0, then 1s
    EXPECT_EQ(dst[0][2], 0xFF);
    ownZoomNearest1(src, &dst[1][0], 0.5, 1.0, 0, 3, 8, 1, 0.0, 0.0, 3, 5);
    EXPECT_EQ(dst[1][0], 0x06);
    EXPECT_EQ(dst[1][1], 0x78);
    EXPECT_EQ(dst[1][2], 0x00);
}

TEST(ZoomKernels, RoundingGivesIntegerIndefiniteForNaNAndOverflow) {
    EXPECT_EQ(rmg::zoomRound(2.5), 2);
    EXPECT_EQ(rmg::zoomRound(3.5), 4);
    EXPECT_EQ(rmg::zoomRound(-2.5), -2);
    EXPECT_EQ(rmg::zoomRound(std::nan("")), INT32_MIN);
    EXPECT_EQ(rmg::zoomRound(3e9), INT32_MIN);
    EXPECT_EQ(rmg::zoomRound(-3e9), INT32_MIN);
    EXPECT_EQ(rmg::zoomRound(2147483647.0), 2147483647);
}

}  // namespace
