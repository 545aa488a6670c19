// rmgReduceBits: the checks in order with their reports, concrete values
// of the reduction, the noise and the dither stage, and random images
// against a per-element model, plain and tiled.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "color/ownreduce.h"
#include "colortest.h"
#include "rmg.h"
#include "support/rmgtest.h"

namespace {

using colortest::Bytes;
using rmgtest::reports;

class ReduceTest : public rmgtest::ErrorStateTest {};

struct Owned {
    RmgImage *image;
    Owned(int nChannels, unsigned int depth, int order, const char *seq, int height, int width,
          const char *model = "GRAY")
        : image(rmgCreateImageHeader(nChannels, 0, depth, model, seq, order, RMG_ORIGIN_TL, 4,
                                     height, width, nullptr, nullptr, nullptr)) {
        rmgAllocateImage(image, 0);
    }
    ~Owned() { rmgDeallocate(image, RMG_DEALLOC_ALL); }
    Owned(const Owned &) = delete;
    Owned &operator=(const Owned &) = delete;
    RmgImage *operator->() const { return image; }
    operator RmgImage *() const { return image; }
    Bytes bytes() const { return Bytes(image->imageData, image->imageData + image->imageSize); }
};

struct Expected {
    const char *func, *context, *module;
};

// The recorded handler calls, in order, are exactly these.
void expectReports(std::initializer_list<Expected> expected) {
    ASSERT_EQ(reports().size(), expected.size());
    size_t i = 0;
    for (const Expected &e : expected) {
        SCOPED_TRACE(i);
        EXPECT_EQ(reports()[i].status, RMG_StsBadArg);
        EXPECT_EQ(reports()[i].funcName, e.func);
        EXPECT_EQ(reports()[i].context, e.context);
        EXPECT_EQ(reports()[i].fileName, e.module);
        ++i;
    }
}

void put16(RmgImage *im, int at, int v) {
    const auto w = static_cast<uint16_t>(v);
    std::memcpy(im->imageData + at, &w, 2);
}

// A one-row 16u image of the values v << 8, and its 8u destination.
struct Row16 {
    Owned src, dst;
    explicit Row16(const std::vector<int> &v)
        : src(1, RMG_DEPTH_16U, RMG_DATA_PIXEL, "G", 1, static_cast<int>(v.size())),
          dst(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, "G", 1, static_cast<int>(v.size())) {
        for (size_t i = 0; i < v.size(); ++i) put16(src, static_cast<int>(2 * i), v[i] << 8);
    }
    std::vector<int> result() const {
        return std::vector<int>(dst->imageData, dst->imageData + dst->width);
    }
};

// --------------------------------------------------------------------------
// Checks in order
// --------------------------------------------------------------------------

TEST_F(ReduceTest, JitterTypeIsTestedBeforeTheImages) {
    rmgReduceBits(nullptr, nullptr, 9, 1, 0, nullptr);
    rmgReduceBits(nullptr, nullptr, -1, 1, 0, nullptr);
    expectReports({{"rmgReduceBits", "(0>jitterType)||(jitterType>8)", "rmgcolor"},
                   {"rmgReduceBits", "(0>jitterType)||(jitterType>8)", "rmgcolor"}});
}

TEST_F(ReduceTest, HeadersAndCompatibility) {
    Owned a(1, RMG_DEPTH_16U, RMG_DATA_PIXEL, "G", 2, 2);
    Owned b(3, RMG_DEPTH_8U, RMG_DATA_PIXEL, "RGB", 2, 2, "RGB");
    char *text = rmgBadHeaderText(rmgBadImageHeader(nullptr));
    const std::string nullText = text;
    rmgFree(text);
    rmgReduceBits(nullptr, b, 8, 1, 0, nullptr);
    rmgReduceBits(a, b, 0, 1, 0, nullptr);  // 1 channel against 3
    expectReports({{"rmgReduceBits", nullText.c_str(), "rmgcolor"},
                   {"rmgReduceBits", "incomatibleimages", "rmgcolor"}});
}

TEST_F(ReduceTest, DepthPairsWithoutKernel) {
    Owned s8(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, "G", 2, 2);
    Owned d8(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, "G", 2, 2);
    Owned s16(1, RMG_DEPTH_16U, RMG_DATA_PIXEL, "G", 2, 2);
    Owned s32(1, RMG_DEPTH_32S, RMG_DATA_PIXEL, "G", 2, 2);
    Owned d1(1, RMG_DEPTH_1U, RMG_DATA_PIXEL, "G", 2, 2);
    Owned s8s(1, RMG_DEPTH_8S, RMG_DATA_PIXEL, "G", 2, 2);
    const Bytes before = d8.bytes();
    rmgReduceBits(s8, d8, 0, 1, 0, nullptr);   // equal depths: still the output depth
    rmgReduceBits(s16, s16, 0, 1, 0, nullptr);
    rmgReduceBits(s32, d1, 0, 1, 0, nullptr);
    rmgReduceBits(s8s, d1, 0, 1, 0, nullptr);
    rmgReduceBits(s8, d8, 3, 1, 0, nullptr);  // the noise kernel in its own name
    rmgReduceBits(s32, d1, 3, 1, 0, nullptr);
    expectReports({{"ownReduceBits", "errOutDepth", "owncolor"},
                   {"ownReduceBits", "errOutDepth", "owncolor"},
                   {"ownReduceBits", "errInOutDepth", "owncolor"},
                   {"ownReduceBits", "errInOutDepth", "owncolor"},
                   {"ownjitter_rect", "errOutDepth", "owncolor"},
                   {"ownjitter_rect", "errInOutDepth", "owncolor"}});
    EXPECT_EQ(d8.bytes(), before);
}

TEST_F(ReduceTest, DitherOptionFailsAfterTheReductionWrote) {
    Row16 r({1, 2, 3, 200});
    rmgReduceBits(r.src, r.dst, 0, 3, 0, nullptr);
    expectReports({{"own_dither_rect", "errDitherOption", "owncolor"}});
    EXPECT_EQ(r.result(), (std::vector<int>{1, 2, 3, 200}));
}

TEST_F(ReduceTest, DitherTestsTheOptionBeforeTheDepth) {
    Owned bits(1, RMG_DEPTH_1U, RMG_DATA_PIXEL, "G", 2, 8);
    own_dither_rect(bits, 3, bits->imageData, 8, 2, bits->widthStep, 0, 1, 1, bits->imageSize);
    own_dither_rect(bits, 2, bits->imageData, 8, 2, bits->widthStep, 0, 1, 1, bits->imageSize);
    expectReports({{"own_dither_rect", "errDitherOption", "owncolor"},
                   {"own_dither_rect", "errInDepth", "owncolor"}});
}

// --------------------------------------------------------------------------
// Quantisation step
// --------------------------------------------------------------------------

TEST_F(ReduceTest, Quantize) {
    // value, q, nearest multiple (above 65535: 65535; no clamp to the depth)
    const int cases[][3] = {{255, 127, 254}, {0, 127, 0},       {64, 127, 127},
                            {63, 127, 0},    {70000, 3, 65535}, {254, 100, 300}};
    for (const auto &c : cases) EXPECT_EQ(rmgQuantize(c[0], c[1]), c[2]) << c[0] << " " << c[1];
}

TEST_F(ReduceTest, LevelShiftAboveTheBitsIsHalfTheBits) {
    // levelShift 100 at 8 bits is 4: q 15. Ordered: only x, y both
    // multiples of 4 may round upwards.
    Row16 r({20, 20, 7, 255, 20});
    rmgReduceBits(r.src, r.dst, 0, RMG_DITHER_BAYER, 100, nullptr);
    EXPECT_EQ(r.result(), (std::vector<int>{30, 15, 0, 255, 30}));
    EXPECT_TRUE(reports().empty());
}

TEST_F(ReduceTest, LevelShiftOfTheBitCountLeavesTheImage) {
    Row16 r({1, 77, 128, 254, 255, 3});
    rmgReduceBits(r.src, r.dst, 0, RMG_DITHER_FS, 8, nullptr);
    EXPECT_EQ(r.result(), (std::vector<int>{1, 77, 128, 254, 255, 3}));
    Row16 s({1, 77, 128, 254, 255, 3});
    rmgReduceBits(s.src, s.dst, 0, RMG_DITHER_STUCKI, 8, nullptr);
    EXPECT_EQ(s.result(), (std::vector<int>{1, 77, 128, 254, 255, 3}));
}

TEST_F(ReduceTest, LevelShiftZeroKeepsOnlyBlackAndWhite) {
    Row16 r({100, 100, 100, 100});
    rmgReduceBits(r.src, r.dst, 0, RMG_DITHER_FS, 0, nullptr);
    // 100 -> 0 (err 100, +43); 143 -> 255 (err -112, -49); 51 -> 0 (+22);
    // 122 -> 0.
    EXPECT_EQ(r.result(), (std::vector<int>{0, 255, 0, 0}));
    Row16 n({100, 100, 100, 100});
    rmgReduceBits(n.src, n.dst, 0, RMG_DITHER_FS, -5, nullptr);  // negative: 0
    EXPECT_EQ(n.result(), (std::vector<int>{0, 255, 0, 0}));
}

TEST_F(ReduceTest, QuantisationStepOf127) {
    Row16 r({255});
    rmgReduceBits(r.src, r.dst, 0, RMG_DITHER_FS, 1, nullptr);
    EXPECT_EQ(r.result(), (std::vector<int>{254}));
}

// --------------------------------------------------------------------------
// Dither kernels on one buffer
// --------------------------------------------------------------------------

// A gray 8u piece of 2 x 2 in a buffer of rows of 4 bytes and 3 rows: the
// bytes beyond the piece must stay.
struct Piece {
    Owned image{1, RMG_DEPTH_8U, RMG_DATA_PIXEL, "G", 3, 4};
    Piece(std::initializer_list<int> values) {
        std::memset(image->imageData, 0x77, static_cast<size_t>(image->imageSize));
        int i = 0;
        for (int v : values) {
            image->imageData[(i / 2) * 4 + i % 2] = static_cast<unsigned char>(v);
            ++i;
        }
    }
    Bytes expect(std::initializer_list<int> values) const {
        Bytes b(12, 0x77);
        int i = 0;
        for (int v : values) {
            b[(i / 2) * 4 + i % 2] = static_cast<unsigned char>(v);
            ++i;
        }
        return b;
    }
};

TEST_F(ReduceTest, FloydSteinbergAtTheLastRowAndColumn) {
    Piece p({30, 100, 0, 0});
    // q 15: (0,0) stays; (1,0) 100 -> 105, err -5: below -1 (255), below
    // left -2 (254), nothing to the right; the last row: 255 stays, 254 ->
    // 255 with nothing below it.
    own_dither_rect(p.image, RMG_DITHER_FS, p.image->imageData, 2, 2, 4, 4, 1, 1, 12);
    EXPECT_EQ(p.image.bytes(), p.expect({30, 105, 255, 255}));
    EXPECT_TRUE(reports().empty());
}

TEST_F(ReduceTest, FloydSteinbergErrorWraps) {
    // 23 -> 0 with q 255: err 23, (23 * 7) >> 4 = 10 to the right: 250 + 10
    // wraps to 4; below 7 and 1. Both flags clear: nothing else changes.
    Piece p({23, 250, 0, 0});
    own_dither_rect(p.image, RMG_DITHER_FS, p.image->imageData, 2, 2, 4, 0, 0, 0, 12);
    EXPECT_EQ(p.image.bytes(), p.expect({0, 4, 7, 1}));
}

TEST_F(ReduceTest, JarvisWeightsAreNotScaledBack) {
    Piece p({10, 0, 0, 0});
    // q 255: 10 -> 0, err 10; right: 37 * 10 = 370 -> 114; next row from
    // column 0: 15 * 10 = 150 and 26 * 10 = 260 -> 4. Then (1,0) 114 -> 0
    // err 114: next row from column 0 again (x - 1): 15 * 114 + 150 = 1860
    // -> 68, 26 * 114 + 4 = 2968 -> 152. Last row: 68 -> 0, err 68, right
    // 37 * 68 + 152 = 2668 -> 108 -> 0.
    own_dither_rect(p.image, RMG_DITHER_JJN, p.image->imageData, 2, 2, 4, 0, 1, 1, 12);
    EXPECT_EQ(p.image.bytes(), p.expect({0, 0, 0, 0}));
    Piece s({10, 0, 0, 0});
    own_dither_rect(s.image, RMG_DITHER_STUCKI, s.image->imageData, 2, 2, 4, 8, 0, 1, 12);
    // q 1, no error: both flags only bound the walk.
    EXPECT_EQ(s.image.bytes(), s.expect({10, 0, 0, 0}));
}

TEST_F(ReduceTest, OrderedSixteenBitsKeepsTheLowByte) {
    Owned im(1, RMG_DEPTH_16U, RMG_DATA_PIXEL, "G", 1, 2);
    put16(im, 0, 1000);
    put16(im, 2, 1000);
    // q = 65535 >> 4 = 4095: 1000 -> 4095 at (0,0), low byte 0xFF; at (1,0)
    // b = 0.
    own_dither_rect(im, RMG_DITHER_BAYER, im->imageData, 2, 1, im->widthStep, 4, 1, 1, im->imageSize);
    uint16_t v[2];
    std::memcpy(v, im->imageData, 4);
    EXPECT_EQ(v[0], 0xFF);
    EXPECT_EQ(v[1], 0);
}

// --------------------------------------------------------------------------
// Noise
// --------------------------------------------------------------------------

TEST_F(ReduceTest, WithoutJitterTheTablesAndRandAreUntouched) {
    jitterNoise[0] = 123.0;
    jitterIndex[5] = 77;
    std::srand(5);
    const int first = std::rand();
    std::srand(5);
    Row16 r({10, 20});
    rmgReduceBits(r.src, r.dst, 0, RMG_DITHER_FS, 8, nullptr);
    EXPECT_EQ(std::rand(), first);
    EXPECT_EQ(jitterNoise[0], 123.0);
    EXPECT_EQ(jitterIndex[5], 77);
    EXPECT_EQ(r.result(), (std::vector<int>{10, 20}));
}

TEST_F(ReduceTest, TwoCallsWithNoiseDiffer) {
    std::mt19937 rng(3);
    colortest::Image src(1, RMG_DEPTH_16U, RMG_DATA_PIXEL, "GRAY", "G", 32, 32, 4, rng);
    colortest::TiledImage a(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, "GRAY", "G", 32, 32, 16, 16, rng);
    colortest::TiledImage b(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, "GRAY", "G", 32, 32, 16, 16, rng);
    rmgReduceBits(src.image, a.image, 8, 1, 0, nullptr);
    rmgReduceBits(src.image, b.image, 8, 1, 0, nullptr);
    EXPECT_NE(a.data, b.data);
    EXPECT_EQ(a.calls, colortest::walkCalls(2, 2));
    EXPECT_TRUE(reports().empty());
}

// --------------------------------------------------------------------------
// Plain images through the walk, and buffers that cut rows
// --------------------------------------------------------------------------

TEST_F(ReduceTest, PlainImagesWithDitherWriteEveryRowIntoTheFirst) {
    // With a dither stage plain images go through the destination walk,
    // whose row step is that of a tile: 0 for an image in memory. So every
    // source row lands in row 0, the last one staying; row 1 keeps its bytes.
    Owned src(1, RMG_DEPTH_16U, RMG_DATA_PIXEL, "G", 2, 3);
    Owned dst(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, "G", 2, 3);
    for (int i = 0; i < 3; ++i) {
        put16(src, 2 * i, (10 + i) << 8);
        put16(src, src->widthStep + 2 * i, (20 + i) << 8);
    }
    std::memset(dst->imageData, 0x33, static_cast<size_t>(dst->imageSize));
    rmgReduceBits(src, dst, 0, RMG_DITHER_BAYER, 8, nullptr);  // q 1: no change
    Bytes expected(static_cast<size_t>(dst->imageSize), 0x33);
    expected[0] = 20;
    expected[1] = 21;
    expected[2] = 22;
    EXPECT_EQ(dst.bytes(), expected);
    EXPECT_TRUE(reports().empty());
}

TEST_F(ReduceTest, PlaneOrderWithFewerRowsStaysInTheBuffers) {
    // The planes of a piece lie a row step times the smaller height apart:
    // with a destination of 3 rows and a source of 2 the destination's
    // planes are read at that distance, and nothing outside either buffer is
    // touched (checked under the address sanitizer).
    Owned src(3, RMG_DEPTH_16U, RMG_DATA_PLANE, "RGB", 2, 4, "RGB");
    Owned dst(3, RMG_DEPTH_8U, RMG_DATA_PLANE, "RGB", 3, 4, "RGB");
    for (int i = 0; i < src->imageSize / 2; ++i) put16(src, 2 * i, i << 8);
    std::memset(dst->imageData, 0x33, static_cast<size_t>(dst->imageSize));
    rmgReduceBits(src, dst, 0, RMG_DITHER_NONE, 0, nullptr);
    Bytes expected(static_cast<size_t>(dst->imageSize), 0x33);
    // Source row r of plane p is element row p * 2 + r; it goes to the same
    // row number of the destination's buffer.
    for (int row = 0; row < 6; ++row)
        for (int x = 0; x < 4; ++x)
            expected[static_cast<size_t>(row * dst->widthStep + x)] =
                static_cast<unsigned char>(row * src->widthStep / 2 + x);
    EXPECT_EQ(dst.bytes(), expected);
}

TEST_F(ReduceTest, SmallerDestinationCutsTheRows) {
    Owned src(1, RMG_DEPTH_32S, RMG_DATA_PIXEL, "G", 3, 40);
    Owned dst(1, RMG_DEPTH_16U, RMG_DATA_PIXEL, "G", 2, 5);
    for (int i = 0; i < src->imageSize / 4; ++i) {
        const int32_t v = (i - 50) * 0x01000000 + 0x12345;
        std::memcpy(src->imageData + 4 * i, &v, 4);
    }
    rmgReduceBits(src, dst, 0, RMG_DITHER_NONE, 0, nullptr);
    for (int y = 0; y < 2; ++y)
        for (int x = 0; x < 5; ++x) {
            int32_t e;
            std::memcpy(&e, src->imageData + y * src->widthStep + 4 * x, 4);
            uint16_t v;
            std::memcpy(&v, dst->imageData + y * dst->widthStep + 2 * x, 2);
            EXPECT_EQ(v, static_cast<uint16_t>((e >> 16) * 2));
        }
}

TEST_F(ReduceTest, JitterOnThirtyTwoBitsKeepsTheLowBit) {
    // 32s to 16u with noise: e >> 15, no saturation; element 0x7FFF0000
    // (at the limit) is left as it is and gives 0xFFFE; 0x00018000 can only
    // move by multiples of 65536 and keeps its bit 15.
    Owned src(1, RMG_DEPTH_32S, RMG_DATA_PIXEL, "G", 1, 2);
    Owned dst(1, RMG_DEPTH_16U, RMG_DATA_PIXEL, "G", 1, 2);
    const int32_t e[2] = {0x7FFF0000, 0x00018000};
    std::memcpy(src->imageData, e, 8);
    rmgReduceBits(src, dst, 8, RMG_DITHER_NONE, 0, nullptr);
    uint16_t v;
    std::memcpy(&v, dst->imageData, 2);
    EXPECT_EQ(v, 0xFFFE);
    std::memcpy(&v, dst->imageData + 2, 2);
    EXPECT_EQ(v & 1, 1);
    EXPECT_EQ(std::memcmp(src->imageData, e, 8), 0);  // the source itself is not changed
}

TEST_F(ReduceTest, FailingDitherReportsOncePerPieceAndTheWalkGoesOn) {
    std::mt19937 rng(9);
    colortest::Image src(1, RMG_DEPTH_16U, RMG_DATA_PIXEL, "GRAY", "G", 16, 16, 4, rng);
    colortest::TiledImage dst(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, "GRAY", "G", 16, 16, 8, 8, rng);
    rmgReduceBits(src.image, dst.image, 0, 5, 0, nullptr);
    const Expected e{"own_dither_rect", "errDitherOption", "owncolor"};
    expectReports({e, e, e, e});
    EXPECT_EQ(dst.calls, colortest::walkCalls(2, 2));
    // The reduction has written each tile: row 0 of tile (1, 1).
    for (int x = 0; x < 8; ++x) {
        uint16_t v;
        std::memcpy(&v, src.image->imageData + 8 * src.image->widthStep + 2 * (8 + x), 2);
        EXPECT_EQ(dst.tile(1, 1)[static_cast<size_t>(x)], v >> 8);
    }
}

TEST_F(ReduceTest, TilePosDoesOneTile) {
    std::mt19937 rng(10);
    colortest::Image src(3, RMG_DEPTH_16U, RMG_DATA_PLANE, "RGB", "RGB", 16, 24, 4, rng);
    colortest::TiledImage all(3, RMG_DEPTH_8U, RMG_DATA_PLANE, "RGB", "RGB", 16, 24, 8, 8, rng);
    colortest::TiledImage one(3, RMG_DEPTH_8U, RMG_DATA_PLANE, "RGB", "RGB", 16, 24, 8, 8, rng);
    one.data = all.data;
    const std::vector<Bytes> before = one.data;
    rmgReduceBits(src.image, all.image, 0, RMG_DITHER_JJN, 3, nullptr);
    const int tilePos[2] = {1, 1};
    rmgReduceBits(src.image, one.image, 0, RMG_DITHER_JJN, 3, tilePos);
    EXPECT_EQ(one.calls, (std::vector<colortest::Call>{{1, 1, RMG_TILE_WRITE}, {1, 1, RMG_TILE_RELEASE}}));
    for (int y = 0; y < 2; ++y)
        for (int x = 0; x < 3; ++x)
            EXPECT_EQ(one.tile(x, y), x == 1 && y == 1 ? all.tile(x, y) : before[static_cast<size_t>(x + 3 * y)]);
    EXPECT_TRUE(reports().empty());
}

}  // namespace
