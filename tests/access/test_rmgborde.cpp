// The border rules: any rectangle of a plain or tiled image, inside or
// beyond its edges, as one block, against concrete values and a
// per-element model, and a tiled read against the plain one.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

#include "access/owntile.h"
#include "access/tiletest.h"

namespace {

using namespace tiletest;

// The block of a read, its bytes over all planes (spare bytes left out).
struct Read {
    Bytes bytes;
    int rowStep = -1;
    bool null = true;
};

Read readRect(const RmgImage *image, int x, int y, int width, int height) {
    Read r;
    unsigned char *block = ownGetExtendedRect(image, x, y, width, height, &r.rowStep);
    if (block == nullptr) return r;
    r.null = false;
    const Kind k = kindOf(image);
    r.bytes.assign(block, block + static_cast<size_t>(r.rowStep) * height * planesOf(k));
    ownReleaseExtendedRect(block);
    return r;
}

void setModes(RmgImage *image, int top, int bottom, int left, int right) {
    image->borderModes[0] = top;
    image->borderModes[1] = bottom;
    image->borderModes[2] = left;
    image->borderModes[3] = right;
}
void setConsts(RmgImage *image, int top, int bottom, int left, int right) {
    image->borderConsts[0] = top;
    image->borderConsts[1] = bottom;
    image->borderConsts[2] = left;
    image->borderConsts[3] = right;
}

// Gives the plain image's pixels simple values: 16 * Y + X + 1.
void numberPixels(PlainImage &a) {
    for (int Y = 0; Y < a.image->height; ++Y)
        for (int X = 0; X < a.image->width; ++X)
            *a.pixel(X, Y) = static_cast<unsigned char>(16 * Y + X + 1);
}

// ---------------------------------------------------------------------------
// Concrete cases
// ---------------------------------------------------------------------------

TEST(ExtendedRect, ReplicateCornerTopBandAndLeftPart) {
    PlainImage a(k8align8, 4, 5, 1);
    numberPixels(a);
    rmgSetBorderMode(a.image, RMG_BORDER_REPLICATE, 15, 0);
    const Read r = readRect(a.image, -2, -2, 4, 4);
    ASSERT_FALSE(r.null);
    EXPECT_EQ(r.rowStep, 8);
    // The 2 by 2 corner holds pixel (0, 0); the top band's right part row 0;
    // the middle band's left part column 0.
    const Bytes want = {1,  1,  1,  2,  0, 0, 0, 0,  //
                        1,  1,  1,  2,  0, 0, 0, 0,  //
                        1,  1,  1,  2,  0, 0, 0, 0,  //
                        17, 17, 17, 18, 0, 0, 0, 0};
    EXPECT_EQ(r.bytes, want);
}

TEST(ExtendedRect, ReflectRepeatsTheEdgePixel) {
    PlainImage a(k8, 2, 5, 1);
    numberPixels(a);
    rmgSetBorderMode(a.image, RMG_BORDER_REFLECT, 15, 0);
    // Columns -2..6 of row 0: -2 is column 1, -1 is column 0, 5 is 4, 6 is 3.
    const Read r = readRect(a.image, -2, 0, 9, 1);
    EXPECT_EQ(r.bytes, (Bytes{2, 1, 1, 2, 3, 4, 5, 5, 4, 0, 0, 0}));
    // Rows: -1 is row 0, -2 is row 1, 2 is row 1.
    const Read rows = readRect(a.image, 0, -2, 1, 5);
    EXPECT_EQ(rows.bytes, (Bytes{17, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 17, 0, 0, 0, 17, 0, 0, 0}));
}

TEST(ExtendedRect, WrapTakesTheOtherSide) {
    PlainImage a(k8, 2, 5, 1);
    numberPixels(a);
    rmgSetBorderMode(a.image, RMG_BORDER_WRAP, 15, 0);
    // Column -1 is column 4, column 5 is column 0; row -1 is row 1.
    EXPECT_EQ(readRect(a.image, -1, 0, 7, 1).bytes, (Bytes{5, 1, 2, 3, 4, 5, 1, 0}));
    EXPECT_EQ(readRect(a.image, 1, -1, 1, 1).bytes, (Bytes{18, 0, 0, 0}));
}

TEST(ExtendedRect, ConstTopAndBottomFillTheCornersLeftAndRightDont) {
    PlainImage a(k8, 2, 3, 1);
    numberPixels(a);
    rmgSetBorderMode(a.image, RMG_BORDER_CONST, 15, 0);
    setConsts(a.image, 0x1A1, 0xB2, 0xC3, -44);  // low bytes A1, B2, C3, D4
    const Read r = readRect(a.image, -1, -1, 5, 4);
    EXPECT_EQ(r.rowStep, 8);
    const Bytes want = {0xA1, 0xA1, 0xA1, 0xA1, 0xA1, 0xA1, 0xA1, 0xA1,  // padding too
                        0xC3, 1,    2,    3,    0xD4, 0,    0,    0,     //
                        0xC3, 17,   18,   19,   0xD4, 0,    0,    0,     //
                        0xB2, 0xB2, 0xB2, 0xB2, 0xB2, 0xB2, 0xB2, 0xB2};
    EXPECT_EQ(r.bytes, want);
}

TEST(ExtendedRect, ConstPatternsByDepth) {
    const Kind k16{3, RMG_DEPTH_16S, RMG_DATA_PIXEL, 4};
    PlainImage a(k16, 1, 1, 1);
    rmgSetBorderMode(a.image, RMG_BORDER_CONST, 15, 0x12345678);
    // One pixel beside the image (by element) and one above (the pattern).
    Read r = readRect(a.image, -1, -1, 1, 2);
    EXPECT_EQ(r.rowStep, 8);
    EXPECT_EQ(r.bytes, (Bytes{0x78, 0x56, 0x78, 0x56, 0x78, 0x56, 0x78, 0x56,  //
                              0x78, 0x56, 0x78, 0x56, 0x78, 0x56, 0, 0}));
    const Kind k32{2, RMG_DEPTH_32S, RMG_DATA_PLANE, 8};
    PlainImage b(k32, 1, 1, 1);
    rmgSetBorderMode(b.image, RMG_BORDER_CONST, 15, 0x12345678);
    r = readRect(b.image, 1, 0, 1, 2);  // right of row 0, then below
    EXPECT_EQ(r.bytes, (Bytes{0x78, 0x56, 0x34, 0x12, 0,    0,    0,    0,  //
                              0x78, 0x56, 0x34, 0x12, 0x78, 0x56, 0x34, 0x12,
                              0x78, 0x56, 0x34, 0x12, 0,    0,    0,    0,  //
                              0x78, 0x56, 0x34, 0x12, 0x78, 0x56, 0x34, 0x12}));
}

TEST(ExtendedRect, AWhollyAboveRectangleIsAllTopBand) {
    PlainImage a(k8, 4, 4, 1);
    numberPixels(a);
    rmgSetBorderMode(a.image, RMG_BORDER_CONST, 14, 0x77);  // bottom, left, right
    a.image->borderModes[0] = RMG_BORDER_WRAP;
    // Rows -3 and -2 wrap to rows 1 and 2, corners by the top rule too.
    const Read r = readRect(a.image, -1, -3, 6, 2);
    EXPECT_EQ(r.bytes, (Bytes{20, 17, 18, 19, 20, 17, 0, 0,  //
                              36, 33, 34, 35, 36, 33, 0, 0}));
}

TEST(ExtendedRect, OneBitBlockStartsClearedConstantTwoClearThreeSets) {
    const Kind k1{1, RMG_DEPTH_1U, RMG_DATA_PIXEL, 4};
    PlainImage a(k1, 2, 10, 9, 1);  // padding bits set
    setModes(a.image, RMG_BORDER_CONST, RMG_BORDER_CONST, RMG_BORDER_CONST, RMG_BORDER_CONST);
    setConsts(a.image, 2, 3, 2, 3);
    const Read r = readRect(a.image, -3, -1, 16, 4);
    ASSERT_EQ(r.rowStep, 4);
    Bytes want(16, 0);  // row -1: constant 2, all clear
    for (int Y = 0; Y < 2; ++Y) {
        unsigned bits = 0x7;  // columns 10..12, right constant 3
        for (int X = 0; X < 10; ++X)
            if (sampleBit(9, X, Y)) bits |= 1u << (12 - X);
        want[4 * (1 + Y)] = static_cast<unsigned char>(bits >> 8);  // columns -3..4
        want[4 * (1 + Y) + 1] = static_cast<unsigned char>(bits);   // columns 5..12
    }
    for (int b = 12; b < 16; ++b) want[b] = 0xFF;  // row 2: constant 3, padding too
    EXPECT_EQ(r.bytes, want);
}

TEST(ExtendedRect, NullTileInTheThirdTileRow) {
    TiledImage t(k8, 24, 24, 8, 8, 1);
    t.failAtRead = 6;  // the first tile of tile row 2
    int rowStep = 0;
    EXPECT_EQ(ownGetExtendedRect(t.image, 0, 0, 24, 24, &rowStep), nullptr);
    const std::vector<Call> want = {{0, 0, 1}, {1, 0, 1}, {2, 0, 1}, {2, 0, 4}, {1, 0, 4},
                                    {0, 0, 4}, {0, 1, 1}, {1, 1, 1}, {2, 1, 1}, {2, 1, 4},
                                    {1, 1, 4}, {0, 1, 4}, {0, 2, 1}, {1, 2, 1}, {2, 2, 1}};
    EXPECT_EQ(t.calls, want);  // the rows done were released, the failing one not
    EXPECT_EQ(t.outstanding(), 2u);
    EXPECT_FALSE(t.badRelease);
}

TEST(ExtendedRect, TilesOfEightAcrossABorderGiveThePlainBytes) {
    TiledImage t(k8, 16, 16, 8, 8, 12);
    PlainImage a(k8, 16, 16, 12);
    const Read tiled = readRect(t.image, 4, 3, 8, 9);
    const Read plain = readRect(a.image, 4, 3, 8, 9);
    ASSERT_FALSE(tiled.null);
    EXPECT_EQ(tiled.bytes, plain.bytes);
    EXPECT_EQ(tiled.bytes[0], sampleByte(12, 4, 3, 0, 0));
    EXPECT_EQ(tiled.bytes[8 * 9 - 1], sampleByte(12, 11, 11, 0, 0));
}

TEST(ExtendedRect, RowStepFollowsWidthDepthOrderAndAlign) {
    struct Case {
        Kind k;
        int width, rowStep;
    };
    const Case cases[] = {
        {{3, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4}, 5, 16},
        {{3, RMG_DEPTH_8U, RMG_DATA_PLANE, 4}, 5, 8},
        {{2, RMG_DEPTH_16U, RMG_DATA_PLANE, 8}, 3, 8},
        {{1, RMG_DEPTH_1U, RMG_DATA_PIXEL, 4}, 10, 4},
        {{1, RMG_DEPTH_1U, RMG_DATA_PIXEL, 8}, 65, 16},
        {{4, RMG_DEPTH_32S, RMG_DATA_PIXEL, 4}, 3, 48},
        {{1, RMG_DEPTH_8S, RMG_DATA_PIXEL, 8}, 0, 0},
    };
    for (const Case &c : cases) {
        PlainImage a(c.k, 2, 2, 1);
        const Read r = readRect(a.image, 0, 0, c.width, 3);
        EXPECT_EQ(r.rowStep, c.rowStep) << c.k << " width " << c.width;
        EXPECT_FALSE(r.null);
    }
}

TEST(ExtendedRect, NullForIllegalImagesAndSizes) {
    int rowStep = -7;
    EXPECT_EQ(ownGetExtendedRect(nullptr, 0, 0, 1, 1, &rowStep), nullptr);
    PlainImage a(k8, 4, 4, 1);
    a.image->depth = 32;
    EXPECT_EQ(ownGetExtendedRect(a.image, 0, 0, 1, 1, &rowStep), nullptr);
    a.image->depth = RMG_DEPTH_8U;
    a.image->dataOrder = 2;
    EXPECT_EQ(ownGetExtendedRect(a.image, 0, 0, 1, 1, &rowStep), nullptr);
    a.image->dataOrder = RMG_DATA_PIXEL;
    a.image->align = 2;
    EXPECT_EQ(ownGetExtendedRect(a.image, 0, 0, 1, 1, &rowStep), nullptr);
    EXPECT_EQ(rowStep, -7);
    a.image->align = 4;
    // Sizes no block can have: negative, or beyond a 32-bit allocation.
    EXPECT_EQ(ownGetExtendedRect(a.image, 0, 0, -1, 1, &rowStep), nullptr);
    EXPECT_EQ(ownGetExtendedRect(a.image, 0, 0, 1, -1, &rowStep), nullptr);
    EXPECT_EQ(ownGetExtendedRect(a.image, 0, 0, 70000, 70000, &rowStep), nullptr);
    // An image with neither pixels nor tiles fails where it is read, and
    // not where only constants are stored.
    RmgImage *none = rmgCreateImageHeader(1, 0, RMG_DEPTH_8U, "GRAY", "GRAY", 0, 0, 4, 4, 4,
                                          nullptr, nullptr, nullptr);
    EXPECT_EQ(ownGetExtendedRect(none, 0, 0, 2, 2, &rowStep), nullptr);
    const Read constants = readRect(none, -3, 0, 2, 2);
    EXPECT_FALSE(constants.null);
    rmgDeallocate(none, RMG_DEALLOC_HEADER);
}

TEST(ExtendedRect, OnlyTheLowTwoBitsOfAModeCount) {
    PlainImage a(k8, 2, 5, 1);
    numberPixels(a);
    rmgSetBorderMode(a.image, RMG_BORDER_REFLECT | 0x7C, 15, 0);
    EXPECT_EQ(readRect(a.image, -2, 0, 2, 1).bytes, (Bytes{2, 1, 0, 0}));
}

TEST(ExtendedRect, WrapGoesRoundOnceFurtherOutItReadsNegativePositions) {
    PlainImage a(k8, 3, 4, 1);  // rows of 4 bytes, no padding
    numberPixels(a);
    setModes(a.image, RMG_BORDER_CONST, RMG_BORDER_CONST, RMG_BORDER_WRAP, RMG_BORDER_CONST);
    // Column -6 wraps to -2: in row 0 that lies before the image's memory
    // and stays 0; in rows 1 and 2 it is column 2 of the row before.
    const Read r = readRect(a.image, -6, 0, 1, 3);
    EXPECT_EQ(r.bytes, (Bytes{0, 0, 0, 0, 3, 0, 0, 0, 19, 0, 0, 0}));
}

TEST(ExtendedRect, ReflectHasNoLimitAndReadsPastTheOtherEdge) {
    const Kind planes{2, RMG_DEPTH_8U, RMG_DATA_PLANE, 4};
    PlainImage a(planes, 2, 2, 3);
    a.image->borderModes[0] = RMG_BORDER_REFLECT;
    // Row -3 reflects to row 2: in plane 0 that is row 0 of plane 1; in
    // plane 1 it lies behind the image's memory and stays 0.
    const Read r = readRect(a.image, 0, -3, 2, 1);
    EXPECT_EQ(r.bytes, (Bytes{*a.pixel(0, 0, 1), *a.pixel(1, 0, 1), 0, 0, 0, 0, 0, 0}));
}

TEST(ExtendedRect, TiledReflectAndWrapBeyondTheGrid) {
    TiledImage t(k8, 8, 8, 8, 8, 5);
    t.image->borderModes[0] = RMG_BORDER_REFLECT;
    // Row -10 reflects to row 9: tile row 1, beyond the one-row grid.
    const Read r = readRect(t.image, 0, -10, 2, 1);
    EXPECT_EQ(r.bytes, (Bytes{sampleByte(5, 0, 9, 0, 0), sampleByte(5, 1, 9, 0, 0), 0, 0}));
    EXPECT_EQ(t.calls, (std::vector<Call>{{0, 1, 1}, {0, 1, 4}}));
    // Column -10 wraps to -2: tile 0 at -2, before its row 0, and in its
    // row 1 the byte 6 of row 0.
    t.calls.clear();
    t.image->borderModes[2] = RMG_BORDER_WRAP;
    const Read w = readRect(t.image, -10, 0, 1, 2);
    EXPECT_EQ(w.bytes, (Bytes{0, 0, 0, 0, sampleByte(5, 6, 0, 0, 0), 0, 0, 0}));
}

TEST(ExtendedRect, TiledReflectedLeftPartLandsTwoShortEvenBeforeTheBlock) {
    TiledImage t(k8, 16, 16, 8, 8, 6);
    t.image->borderModes[2] = RMG_BORDER_REFLECT;
    // Columns -9..-1 reflect to 8 down to 0. Tile 1 gives column 8 at block
    // column 0; tile 0 lands at -1: 7 at -1, 6 at 0, ... 0 at 6. Block
    // columns 7 and 8 are not written. Column -1 of row 0 lies before the
    // block and is passed over; that of row 1 is row 0's last padding byte.
    const Read r = readRect(t.image, -9, 0, 9, 2);
    ASSERT_EQ(r.rowStep, 12);
    Bytes want(24, 0);
    for (int Y = 0; Y < 2; ++Y)
        for (int c = 0; c <= 6; ++c) want[Y * 12 + c] = sampleByte(6, 6 - c, Y, 0, 0);
    want[11] = sampleByte(6, 7, 1, 0, 0);
    EXPECT_EQ(r.bytes, want);
}

TEST(ExtendedRect, TiledReflectedTopBandStopsAfterItsFirstTileRow) {
    TiledImage t(k8, 16, 16, 8, 8, 7);
    t.image->borderModes[0] = RMG_BORDER_REFLECT;
    // Rows -10..-1 reflect to 9 down to 0; only 9 and 8 come, the rest of
    // the band stays 0.
    const Read r = readRect(t.image, 0, -10, 4, 10);
    Bytes want(40, 0);
    for (int c = 0; c < 4; ++c) {
        want[c] = sampleByte(7, c, 9, 0, 0);
        want[4 + c] = sampleByte(7, c, 8, 0, 0);
    }
    EXPECT_EQ(r.bytes, want);
    EXPECT_EQ(t.calls, (std::vector<Call>{{0, 1, 1}, {0, 1, 4}}));
}

TEST(ExtendedRect, TileCallsOfEveryBandInOrder) {
    TiledImage t(k8, 12, 20, 8, 8, 8);
    setModes(t.image, RMG_BORDER_REPLICATE, RMG_BORDER_WRAP, RMG_BORDER_REFLECT, RMG_BORDER_CONST);
    const Read r = readRect(t.image, -2, -2, 24, 16);
    ASSERT_FALSE(r.null);
    // clang-format off
    const std::vector<Call> want = {
        // top band, replicated: pixel (0, 0), row 0, pixel (19, 0)
        {0, 0, 1}, {0, 0, 4},
        {0, 0, 1}, {1, 0, 1}, {2, 0, 1}, {2, 0, 4}, {1, 0, 4}, {0, 0, 4},
        {2, 0, 1}, {2, 0, 4},
        // middle band: left part reflected (columns 1, 0), the image, right constant
        {0, 0, 1}, {0, 0, 4}, {0, 1, 1}, {0, 1, 4},
        {0, 0, 1}, {1, 0, 1}, {2, 0, 1}, {2, 0, 4}, {1, 0, 4}, {0, 0, 4},
        {0, 1, 1}, {1, 1, 1}, {2, 1, 1}, {2, 1, 4}, {1, 1, 4}, {0, 1, 4},
        // bottom band, wrapped to rows 0 and 1: columns 18..19, 0..19, 0..1
        {2, 0, 1}, {2, 0, 4},
        {0, 0, 1}, {1, 0, 1}, {2, 0, 1}, {2, 0, 4}, {1, 0, 4}, {0, 0, 4},
        {0, 0, 1}, {0, 0, 4}};
    // clang-format on
    EXPECT_EQ(t.calls, want);
    EXPECT_FALSE(t.badRelease);
    EXPECT_EQ(t.outstanding(), 0u);
    // Every walk here is forward or inside one tile: the plain bytes.
    PlainImage a(k8, 12, 20, 8);
    setModes(a.image, RMG_BORDER_REPLICATE, RMG_BORDER_WRAP, RMG_BORDER_REFLECT, RMG_BORDER_CONST);
    EXPECT_EQ(r.bytes, readRect(a.image, -2, -2, 24, 16).bytes);
}

TEST(ExtendedRect, EmptyRectanglesGiveABlock) {
    PlainImage a(k8, 4, 4, 1);
    Read r = readRect(a.image, 1, 1, 0, 3);
    EXPECT_FALSE(r.null);
    EXPECT_EQ(r.rowStep, 0);
    r = readRect(a.image, 1, 1, 3, 0);
    EXPECT_FALSE(r.null);
    EXPECT_EQ(r.rowStep, 4);
    EXPECT_TRUE(r.bytes.empty());
}

// ---------------------------------------------------------------------------
// Randomized
// ---------------------------------------------------------------------------

int pick(std::mt19937 &rng, int lo, int hi) {  // lo..hi, both included
    return lo + static_cast<int>(rng() % static_cast<unsigned>(hi - lo + 1));
}

void randomBorders(std::mt19937 &rng, RmgImage *image, bool highBits) {
    for (int i = 0; i < 4; ++i) {
        image->borderModes[i] =
            static_cast<int>(rng() % 4) | (highBits ? static_cast<int>(rng() % 8) << 2 : 0);
        image->borderConsts[i] = static_cast<int>(rng());
    }
}

// Plain images of every layout, rectangles anywhere (also further out than
// an image's size), every rule on every side: the whole block equals the
// per-element model.
TEST(ExtendedRectRandom, PlainImagesAgreeWithThePerElementModel) {
    std::mt19937 rng(31);
    for (int iter = 0; iter < 6000; ++iter) {
        const Kind k = kindNumber(iter % 12, rng());
        const int W = pick(rng, 1, 12), H = pick(rng, 1, 12);
        PlainImage a(k, H, W, rng(), static_cast<int>(rng() & 0x7FFFFFFF));  // never -1
        randomBorders(rng, a.image, true);
        const int x = pick(rng, -3 * W - 2, 3 * W + 2), y = pick(rng, -3 * H - 2, 3 * H + 2);
        const int w = pick(rng, 0, 4 * W), h = pick(rng, 0, 4 * H);
        const Read r = readRect(a.image, x, y, w, h);
        const Block want = modelExtended(a.image, x, y, w, h);
        ASSERT_FALSE(r.null);
        ASSERT_EQ(r.rowStep, want.rowStep);
        ASSERT_EQ(r.bytes, want.bytes)
            << "iteration " << iter << " " << k << " image " << W << "x" << H << " rect " << x
            << "," << y << " " << w << "x" << h << " modes " << (a.image->borderModes[0] & 3)
            << (a.image->borderModes[1] & 3) << (a.image->borderModes[2] & 3)
            << (a.image->borderModes[3] & 3);
    }
}

// True when every backward walk (a reflected band's rows, a reflected
// part's columns) stays inside one tile; positions are not negative here.
bool reflectionsStayInOneTile(const RmgImage *image, int x, int y, int w, int h) {
    const long long W = image->width, H = image->height;
    const int tw = image->tileInfo->width, th = image->tileInfo->height;
    auto same = [](long long a, long long b, int t) { return a / t == b / t; };
    const bool left = x < 0 && w > 0, right = x + w > W && w > 0;
    const long long lx0 = x, lx1 = std::min(x + w, 0) - 1;
    const long long rx0 = std::max<long long>(x, W), rx1 = x + w - 1;
    auto sidesStay = [&](int leftMode, int rightMode) {
        if (left && leftMode == RMG_BORDER_REFLECT && !same(-lx0 - 1, -lx1 - 1, tw)) return false;
        if (right && rightMode == RMG_BORDER_REFLECT && !same(2 * W - 1 - rx0, 2 * W - 1 - rx1, tw))
            return false;
        return true;
    };
    const int top = image->borderModes[0] & 3, bottom = image->borderModes[1] & 3;
    if (y < 0 && h > 0 && top == RMG_BORDER_REFLECT) {
        const long long y0 = y, y1 = std::min(y + h, 0) - 1;
        if (!same(-y0 - 1, -y1 - 1, th) || !sidesStay(top, top)) return false;
    }
    if (y + h > H && h > 0 && bottom == RMG_BORDER_REFLECT) {
        const long long y0 = std::max<long long>(y, H), y1 = y + h - 1;
        if (!same(2 * H - 1 - y0, 2 * H - 1 - y1, th) || !sidesStay(bottom, bottom)) return false;
    }
    if (y < H && y + h > 0 && h > 0)
        return sidesStay(image->borderModes[2] & 3, image->borderModes[3] & 3);
    return true;
}

// Tiled images of tile sizes 8, 16 and 24 against the same pixels in a
// plain image, rectangles inside and out to one image's size on every side,
// every rule on every side: where every walk is forward (or a backward one
// stays in one tile) the blocks are the same bytes.
TEST(ExtendedRectRandom, TiledImagesAgreeWithPlainOnesWhenWalkedForwards) {
    std::mt19937 rng(41);
    const int sizes[3] = {8, 16, 24};
    int compared = 0, reflected = 0;
    for (int iter = 0; iter < 2500; ++iter) {
        const Kind k = kindNumber(iter % 12, rng());
        const int W = pick(rng, 1, 40), H = pick(rng, 1, 40);
        const uint32_t seed = rng();
        TiledImage t(k, H, W, sizes[rng() % 3], sizes[rng() % 3], seed);
        PlainImage a(k, H, W, seed);
        randomBorders(rng, t.image, false);
        std::copy(t.image->borderModes, t.image->borderModes + 4, a.image->borderModes);
        std::copy(t.image->borderConsts, t.image->borderConsts + 4, a.image->borderConsts);
        const int x = pick(rng, -W, W), y = pick(rng, -H, H);
        const int w = pick(rng, 0, 2 * W - x), h = pick(rng, 0, 2 * H - y);
        const Read tiled = readRect(t.image, x, y, w, h);
        ASSERT_FALSE(tiled.null);
        ASSERT_FALSE(t.badRelease);
        ASSERT_EQ(t.outstanding(), 0u);
        if (!reflectionsStayInOneTile(t.image, x, y, w, h)) continue;
        const bool anyReflect = std::any_of(t.image->borderModes, t.image->borderModes + 4,
                                            [](int m) { return m == RMG_BORDER_REFLECT; });
        ++compared;
        reflected += anyReflect;
        const Read plain = readRect(a.image, x, y, w, h);
        ASSERT_EQ(tiled.rowStep, plain.rowStep);
        ASSERT_EQ(tiled.bytes, plain.bytes)
            << "iteration " << iter << " " << k << " image " << W << "x" << H << " tiles "
            << t.tiles.width << "x" << t.tiles.height << " rect " << x << "," << y << " " << w
            << "x" << h;
    }
    EXPECT_GT(compared, 1500);
    EXPECT_GT(reflected, 500);
}

// A null tile at any read of any rectangle: the result is null, the calls
// are those of the good read up to the end of the failing tile row's
// fetch, and nothing after the failing read is released.
TEST(ExtendedRectRandom, ANullTileAnywhereGivesNull) {
    std::mt19937 rng(51);
    for (int iter = 0; iter < 600; ++iter) {
        const Kind k = kindNumber(iter % 12, rng());
        const int W = pick(rng, 1, 30), H = pick(rng, 1, 30);
        const uint32_t seed = rng();
        TiledImage good(k, H, W, 8, 8, seed);
        randomBorders(rng, good.image, false);
        const int x = pick(rng, -W, W), y = pick(rng, -H, H);
        const int w = pick(rng, 1, 2 * W - x + 1), h = pick(rng, 1, 2 * H - y + 1);
        ASSERT_FALSE(readRect(good.image, x, y, w, h).null);
        if (good.reads == 0) continue;

        TiledImage bad(k, H, W, 8, 8, seed);
        std::copy(good.image->borderModes, good.image->borderModes + 4, bad.image->borderModes);
        bad.failAtRead = pick(rng, 0, good.reads - 1);
        ASSERT_TRUE(readRect(bad.image, x, y, w, h).null) << "iteration " << iter;
        ASSERT_LE(bad.calls.size(), good.calls.size());
        ASSERT_TRUE(std::equal(bad.calls.begin(), bad.calls.end(), good.calls.begin()));
        int reads = 0;
        size_t failed = 0;
        for (size_t i = 0; i < bad.calls.size(); ++i)
            if (bad.calls[i].mode == RMG_TILE_READ && reads++ == bad.failAtRead) failed = i;
        for (size_t i = failed; i < bad.calls.size(); ++i)
            ASSERT_EQ(bad.calls[i].mode, RMG_TILE_READ) << "iteration " << iter;
        ASSERT_FALSE(bad.badRelease);
    }
}

}  // namespace
