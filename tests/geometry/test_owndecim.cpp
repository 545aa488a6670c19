// Decimate kernels on small hand-made buffers: the copy at position 0, the
// 1/256 of the pixel before on a boundary, constants, the cut of cubic
// overshoot, the row above a region, the stop positions, and reads and
// writes kept inside the buffers.
#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "geometry/owndecim.h"
#include "geometry/test_rmgdecim_model.h"

namespace {

// One-channel 8-bit image of rows x cols, row stride = cols.
struct Grid8 {
    int rows, cols;
    std::vector<uint8_t> px;
    Grid8(int r, int c, uint8_t v = 0) : rows(r), cols(c), px(size_t(r) * c, v) {}
    uint8_t &at(int r, int c) { return px[size_t(r) * cols + c]; }
};

// Runs a one-channel kernel over the whole grid into `out` (row stride
// outCols) from (y, x); returns the stop positions.
template <typename T>
std::pair<int, int> run(OwnDecimateKernel k, const std::vector<T> &src, int srcCols,
                        std::vector<T> &out, int outCols, int yStep, int xStep, int yEnd, int xEnd,
                        int y = 0, int x = 0) {
    const OwnDecimateLimits lim{std::ptrdiff_t(src.size()), std::ptrdiff_t(out.size()), 0};
    k(src.data(), out.data(), 0, 0, 1, 1, srcCols, 1, 1, outCols, 1, yStep, xStep, yEnd, xEnd, &y,
      &x, lim);
    return {y, x};
}

TEST(OwnDecimateKernels, PositionZeroIsAPlainCopyInTwoAxisKernels) {
    // Columns 0, 3, 6, ... carry 0 and the rest 200: any interpolation at
    // the corner would mix them.
    Grid8 g(8, 8);
    for (int r = 0; r < 8; ++r)
        for (int c = 0; c < 8; ++c) g.at(r, c) = uint8_t(r * 20 + c * 7 + 5);
    for (OwnDecimateKernel k : {ownDecimateLinear8, ownDecimateCubic8}) {
        std::vector<uint8_t> out(9, 0xAB);
        run<uint8_t>(k, g.px, 8, out, 3, 384, 384, 3 * 384, 3 * 384);
        EXPECT_EQ(out[0], g.at(0, 0));
        // First row: y position 0 is exact, x interpolated from k = 383.
        const int f = 383 & 255;
        if (k == ownDecimateLinear8) {
            EXPECT_EQ(out[1], decimtest::lin1(g.at(0, 1), g.at(0, 2), f));
            EXPECT_EQ(out[3], decimtest::lin1(g.at(1, 0), g.at(2, 0), f));
        }
    }
}

TEST(OwnDecimateKernels, BoundaryPositionTakesOne256thOfThePixelBefore) {
    // Position 256 is computed at k = 255: 1/256 of pixel 0, 255/256 of pixel 1.
    std::vector<uint8_t> src = {0, 200, 200, 200};
    std::vector<uint8_t> out(2, 0);
    run<uint8_t>(ownDecimateLinearX8, src, 4, out, 2, 256, 256, 1, 768, 0, 256);
    // ((1*0 + 255*200) >> 7) + 1 >> 1 = 199.
    EXPECT_EQ(out[0], 199);
    EXPECT_EQ(out[1], 200);
}

TEST(OwnDecimateKernels, ConstantImageComesBackFromEveryKernel) {
    std::vector<uint8_t> c8(16 * 16, 77);
    std::vector<uint16_t> c16(16 * 16, 54321);
    const OwnDecimateKernel k8[] = {ownDecimateLinearX8, ownDecimateLinearY8, ownDecimateLinear8,
                                    ownDecimateCubicX8,  ownDecimateCubicY8,  ownDecimateCubic8};
    const OwnDecimateKernel k16[] = {ownDecimateLinearX16, ownDecimateLinearY16,
                                     ownDecimateLinear16,  ownDecimateCubicX16,
                                     ownDecimateCubicY16,  ownDecimateCubic16};
    for (int i = 0; i < 6; ++i) {
        // From (512, 512) so that all four cubic nodes stay in the buffer.
        std::vector<uint8_t> o8(16, 0);
        run<uint8_t>(k8[i], c8, 16, o8, 4, 597, 597, 512 + 4 * 597, 512 + 4 * 597, 512, 512);
        for (uint8_t v : o8) EXPECT_EQ(v, 77) << i;
        std::vector<uint16_t> o16(16, 0);
        run<uint16_t>(k16[i], c16, 16, o16, 4, 597, 597, 512 + 4 * 597, 512 + 4 * 597, 512, 512);
        for (uint16_t v : o16) EXPECT_EQ(v, 54321) << i;
    }
}

TEST(OwnDecimateKernels, CubicOvershootIsCutAtBothEnds) {
    // Nodes 0, 255, 255, 0 at f = 128: S = 1721, 1721 / 6 = 286, cut to 255.
    // Nodes 255, 0, 0, 255: S = -192, -32, cut to 0.
    std::vector<uint8_t> bump = {0, 255, 255, 0, 0}, dip = {255, 0, 0, 255, 255};
    std::vector<uint8_t> out(1, 7);
    run<uint8_t>(ownDecimateCubicX8, bump, 5, out, 1, 256, 384, 1, 386, 0, 385);
    EXPECT_EQ(out[0], 255);
    run<uint8_t>(ownDecimateCubicX8, dip, 5, out, 1, 256, 384, 1, 386, 0, 385);
    EXPECT_EQ(out[0], 0);
    std::vector<uint16_t> bump16 = {0, 65535, 65535, 0, 0}, o16(1, 7);
    run<uint16_t>(ownDecimateCubicX16, bump16, 5, o16, 1, 256, 384, 1, 386, 0, 385);
    EXPECT_EQ(o16[0], 65535);
}

TEST(OwnDecimateKernels, TwoAxisCubicCutsOnceAtTheEnd) {
    // Rows -1 and 0 carry the bump 0, 255, 255, 0 across (S = 1721 each, over
    // 6 * 255), rows 1 and 2 are 0. Along y at fy = 128 the sum is 5163,
    // 5163 / 36 = 143; rows cut to 1530 first would give 127.
    Grid8 g(4, 4);
    for (int r = 0; r < 2; ++r) {
        g.at(r, 1) = 255;
        g.at(r, 2) = 255;
    }
    std::vector<uint8_t> out(1, 7);
    // Position 385 on both axes: k = 384, i = 1, f = 128.
    run<uint8_t>(ownDecimateCubic8, g.px, 4, out, 1, 384, 384, 386, 386, 385, 385);
    EXPECT_EQ(out[0], 143);
}

TEST(OwnDecimateKernels, RowAboveTheFirstNodeIsReadWithoutAGuard) {
    // Start at row 1 (position 256): k = 255, i = 0, and the node at i - 1
    // is the row before the base address. Where that row lies outside the
    // memory the call was given it reads 0; inside it, it is read as it is.
    std::vector<uint8_t> buf = {90, 10, 20, 30, 40, 50};  // column of 6 rows, row 0 = 90
    std::vector<uint8_t> out(1, 0);
    int y = 256, x = 0;
    // src at buf + 1: row -1 is buf[0].
    // Limits of 5 elements from buf + 1: row -1 lies outside and reads 0.
    ownDecimateCubicY8(buf.data() + 1, out.data(), 0, 0, 1, 1, 1, 1, 1, 1, 1, 384, 256, 257, 1,
                       &y, &x, OwnDecimateLimits{5, 1, 0});
    const int32_t s = decimtest::poly(0, 10, 20, 30, 255);  // outside the limits: 0
    EXPECT_EQ(out[0], decimtest::cut(s / 6, 255));
    // With the limits covering row -1 from a base that has it in range.
    std::vector<uint8_t> out2(1, 0);
    y = 512;
    x = 0;
    ownDecimateCubicY8(buf.data(), out2.data(), 0, 0, 1, 1, 1, 1, 1, 1, 1, 384, 256, 513, 1, &y,
                       &x, OwnDecimateLimits{6, 1, 0});
    EXPECT_EQ(out2[0], decimtest::cut(decimtest::poly(90, 10, 20, 30, 255) / 6, 255));
}

TEST(OwnDecimateKernels, NearestLeavesTheFirstPositionsPastTheEnds) {
    std::vector<uint8_t> src(64);
    for (int i = 0; i < 64; ++i) src[size_t(i)] = uint8_t(i);
    std::vector<uint8_t> out(9, 0);
    const auto stop = run<uint8_t>(ownDecimateNearest8, src, 8, out, 3, 640, 384, 3 * 640,
                                   128 + 3 * 384, 0, 128);
    EXPECT_EQ(stop.first, 1920);
    EXPECT_EQ(stop.second, 128 + 3 * 384);
    // Rows 0, 2, 5; columns 0, 2, 3.
    const std::vector<uint8_t> want = {0, 2, 3, 16, 18, 19, 40, 42, 43};
    EXPECT_EQ(out, want);
}

TEST(OwnDecimateKernels, Nearest1ClearsThenSetsEachBitFromTheBitPosition) {
    // Source row 0b10110010, every other column; destination from bit 3.
    std::vector<uint8_t> src = {0xB2, 0x00}, out = {0xFF, 0x00};
    int y = 0, x = 0;
    ownDecimateNearest1(src.data(), out.data(), 0, 3, 1, 1, 16, 1, 1, 16, 1, 256, 512, 1, 2048,
                        &y, &x, OwnDecimateLimits{2, 2, 0});
    // Bits 0, 2, 4, 6 of the source: 1, 1, 0, 1 into bits 3..6 of byte 0.
    EXPECT_EQ(out[0], 0xFB);  // 1110 1 011 -> bits 3..6 = 1,1,0,1
    EXPECT_EQ(out[1], 0x00);
}

TEST(OwnDecimateKernels, ReadsOutsideGiveZeroAndWritesOutsideAreLeftOut) {
    // The source is 2 elements, the kernel asked for 4 columns and 2 rows
    // of a 4-wide destination of 4 elements: reads beyond give 0, the
    // second row is not written.
    std::vector<uint8_t> src = {11, 22}, out = {1, 2, 3, 4};
    int y = 0, x = 0;
    ownDecimateNearest8(src.data(), out.data(), 0, 0, 1, 1, 2, 1, 1, 4, 1, 256, 256, 512, 1024,
                        &y, &x, OwnDecimateLimits{2, 4, 0});
    const std::vector<uint8_t> want = {11, 22, 0, 0};
    EXPECT_EQ(out, want);
}

TEST(OwnDecimateKernels, SixteenBitLinearSumWrapsAndKeepsTheLowBits) {
    // All four samples 65535 at fx = fy = 128: the sum is 2^32 - 2^24,
    // which wraps; the stored low 16 bits are 65535 all the same.
    std::vector<uint16_t> src(16, 65535), out(4, 0);
    run<uint16_t>(ownDecimateLinear16, src, 4, out, 2, 384, 384, 385 + 384, 385 + 384, 385, 385);
    EXPECT_EQ(out[0], 65535);
}

}  // namespace
