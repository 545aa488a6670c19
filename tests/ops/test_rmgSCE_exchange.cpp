// rmgExchange with concrete values: the opening, swaps of whole regions,
// channels and bit runs in the plain path, and the three tiled paths with
// their call-back sequences and messages.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "ops/copytest.h"
#include "ops/scetest.h"
#include "rmg.h"
#include "support/rmgtest.h"

namespace {

using copytest::Call;
using copytest::countUp;
using copytest::headerBytes;
using copytest::joined;
using copytest::partOf;
using copytest::pixelsOf;
using copytest::TiledPair;
using scetest::difference;
using scetest::Plain;
using scetest::TileCall;
using scetest::Tiled;

class ExchangeTest : public rmgtest::ErrorStateTest {};

constexpr int Rd = RMG_TILE_READ;
constexpr int Wr = RMG_TILE_WRITE;
constexpr int Rel = RMG_TILE_RELEASE;

void expectReport(size_t index, int status, const std::string &context,
                  const std::string &funcName = "rmgExchange") {
    copytest::expectReport(index, status, context, funcName);
}

// --- The opening ------------------------------------------------------------

TEST_F(ExchangeTest, HeadersCompatibilityAndStatusAsInCopy) {
    Plain a(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 2, 4, 16, 1);
    Plain b(1, RMG_DEPTH_16U, RMG_DATA_PLANE, 4, 2, 4, 16, 2);
    b.image->origin = RMG_ORIGIN_BL;
    const std::vector<uint8_t> aBefore = a.block;
    const std::vector<uint8_t> bBefore = b.block;
    rmgExchange(a.image, b.image, nullptr);
    ASSERT_EQ(rmgtest::reports().size(), 3u);
    expectReport(0, RMG_StsBadArg, "srcImage->depth != dstImage->depth");
    expectReport(1, RMG_StsBadArg, "srcImage->dataOrder != dstImage->dataOrder");
    expectReport(2, RMG_StsBadArg, "srcImage->origin != dstImage->origin");
    rmgtest::reports().clear();
    rmgExchange(a.image, nullptr, nullptr);
    ASSERT_EQ(rmgtest::reports().size(), 1u);
    expectReport(0, RMG_StsBadArg, copytest::headerText(1));
    // The status is negative now: two good images are left alone.
    rmgtest::reports().clear();
    Plain c(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 2, 4, 16, 3);
    const std::vector<uint8_t> cBefore = c.block;
    rmgExchange(a.image, c.image, nullptr);
    EXPECT_TRUE(rmgtest::reports().empty());
    EXPECT_EQ(difference(a.block, aBefore), "");
    EXPECT_EQ(difference(b.block, bBefore), "");
    EXPECT_EQ(difference(c.block, cBefore), "");
}

// --- The plain path ----------------------------------------------------------

TEST_F(ExchangeTest, SameLayoutSwapsAndASecondCallRestores) {
    Plain a(3, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 3, 5, 16);
    Plain b(3, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 3, 5, 16);
    countUp(a, 0);
    countUp(b, 100);
    const std::vector<uint8_t> aBlock = a.block;
    const std::vector<uint8_t> bBlock = b.block;
    rmgExchange(a.image, b.image, nullptr);
    // Rows of 15 bytes, padded to 16: the padding byte stays on each side.
    for (int y = 0; y < 3; ++y)
        for (int i = 0; i < 16; ++i) {
            const int at = y * 16 + i;
            EXPECT_EQ(a.pixels()[at], i < 15 ? 100 + at : at) << at;
            EXPECT_EQ(b.pixels()[at], i < 15 ? at : 100 + at) << at;
        }
    rmgExchange(a.image, b.image, nullptr);
    EXPECT_EQ(difference(a.block, aBlock), "");
    EXPECT_EQ(difference(b.block, bBlock), "");
    EXPECT_TRUE(rmgtest::reports().empty());
}

TEST_F(ExchangeTest, ChannelOneAndChannelTwoLeaveTheOthers) {
    Plain a(3, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 1, 4, 8);
    Plain b(3, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 1, 4, 8);
    countUp(a, 0);
    countUp(b, 0x80);
    a.setRoi(1, 0, 0, 1, 4);
    b.setRoi(2, 0, 0, 1, 4);
    rmgExchange(a.image, b.image, nullptr);
    EXPECT_EQ(pixelsOf(a),
              (std::vector<uint8_t>{0x81, 1, 2, 0x84, 4, 5, 0x87, 7, 8, 0x8A, 10, 11}));
    EXPECT_EQ(pixelsOf(b),
              (std::vector<uint8_t>{0x80, 0, 0x82, 0x83, 3, 0x85, 0x86, 6, 0x88, 0x89, 9, 0x8B}));
}

TEST_F(ExchangeTest, OneBitAcrossOffsetsIsExactAndLeavesTheRest) {
    // Bits 3..12 of a (B3 5C: 1001101011) and bits 5..14 of b (0F F0:
    // 1111100000... from bit 5: 1,1,1,1,1,1,1,0,0,0).
    Plain a(1, RMG_DEPTH_1U, RMG_DATA_PIXEL, 4, 1, 32, 8);
    Plain b(1, RMG_DEPTH_1U, RMG_DATA_PIXEL, 4, 1, 32, 8);
    std::memcpy(a.pixels(), "\xB3\x5C\x00\xFF", 4);
    std::memcpy(b.pixels(), "\x0F\xF0\xFF\x00", 4);
    a.setRoi(0, 3, 0, 1, 10);
    b.setRoi(0, 5, 0, 1, 10);
    rmgExchange(a.image, b.image, nullptr);
    // a: bits 0..2 (101) stay, 3..12 take 1111111000, 13..15 (100) stay.
    // b: bits 0..4 (00001) stay, 5..14 take 1001101011, bit 15 (0) stays.
    EXPECT_EQ(pixelsOf(a), (std::vector<uint8_t>{0xBF, 0xC4, 0x00, 0xFF}));
    EXPECT_EQ(pixelsOf(b), (std::vector<uint8_t>{0x0C, 0xD6, 0xFF, 0x00}));
}

TEST_F(ExchangeTest, DifferentSizesMoveOnlyTheCommonPart) {
    Plain a(1, RMG_DEPTH_16U, RMG_DATA_PIXEL, 4, 2, 3, 8);
    Plain b(1, RMG_DEPTH_16U, RMG_DATA_PIXEL, 4, 3, 2, 8);
    countUp(a, 0);
    countUp(b, 0x40);
    rmgExchange(a.image, b.image, nullptr);
    // a: rows of 6 bytes padded to 8; b: rows of 4 bytes. Two rows of two
    // elements swap.
    EXPECT_EQ(pixelsOf(a), (std::vector<uint8_t>{0x40, 0x41, 0x42, 0x43, 4, 5, 6, 7, 0x44, 0x45,
                                                 0x46, 0x47, 12, 13, 14, 15}));
    EXPECT_EQ(pixelsOf(b),
              (std::vector<uint8_t>{0, 1, 2, 3, 8, 9, 10, 11, 0x48, 0x49, 0x4A, 0x4B}));
}

TEST_F(ExchangeTest, ThreeChannelsAgainstACoiDoNothing) {
    Plain a(3, RMG_DEPTH_32S, RMG_DATA_PLANE, 8, 2, 2, 16, 1);
    Plain b(3, RMG_DEPTH_32S, RMG_DATA_PLANE, 8, 2, 2, 16, 2);
    b.setRoi(3, 0, 0, 2, 2);
    const std::vector<uint8_t> aBefore = a.block;
    const std::vector<uint8_t> bBefore = b.block;
    rmgExchange(a.image, b.image, nullptr);
    EXPECT_EQ(difference(a.block, aBefore), "");
    EXPECT_EQ(difference(b.block, bBefore), "");
    EXPECT_TRUE(rmgtest::reports().empty());
}

// --- Tiled paths --------------------------------------------------------------

TEST_F(ExchangeTest, TiledDestinationSwapsEachPart) {
    Tiled dst(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 8, 16, 8, 8);
    Plain src(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 8, 16, 8);
    countUp(src, 0);
    dst.setRoi(0, 4, 2, 3, 8);
    src.setRoi(0, 1, 1, 3, 8);
    const std::vector<uint8_t> srcHeader = headerBytes(src.image);
    std::vector<uint8_t> srcWant = src.block;
    for (int y = 0; y < 3; ++y)
        for (int x = 0; x < 8; ++x)
            scetest::putElement(srcWant, src.guard, src.layout(), 1 + x, 1 + y, 0,
                                dst.element(4 + x, 2 + y, 0));
    rmgExchange(src.image, dst.image, nullptr);
    EXPECT_EQ(dst.calls, (std::vector<TileCall>{{0, 0, Wr}, {0, 0, Rel}, {1, 0, Wr}, {1, 0, Rel}}));
    for (int y = 0; y < 3; ++y)
        for (int x = 0; x < 8; ++x)
            EXPECT_EQ(dst.element(4 + x, 2 + y, 0), static_cast<uint32_t>((1 + y) * 16 + 1 + x));
    EXPECT_EQ(difference(src.block, srcWant), "");
    EXPECT_EQ(headerBytes(src.image), srcHeader);
    EXPECT_TRUE(rmgtest::reports().empty());
}

TEST_F(ExchangeTest, TiledDestinationNullTileRaisesUnderExchange) {
    Tiled dst(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 8, 16, 8, 8);
    Plain src(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 8, 16, 8);
    src.setRoi(0, 0, 0, 8, 16);
    dst.failing.insert({0, 0});
    const std::vector<uint8_t> srcHeader = headerBytes(src.image);
    const std::vector<uint8_t> srcBlock = src.block;
    rmgExchange(src.image, dst.image, nullptr);
    EXPECT_EQ(dst.calls, (std::vector<TileCall>{{0, 0, Wr}}));
    ASSERT_EQ(rmgtest::reports().size(), 1u);
    expectReport(0, RMG_StsError, "Error get tile to write");
    // The source's own ROI is back, as on every way out of the walk.
    EXPECT_EQ(headerBytes(src.image), srcHeader);
    EXPECT_EQ(difference(src.block, srcBlock), "");
}

TEST_F(ExchangeTest, TiledSourceAsksItsTilesToWrite) {
    Tiled src(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 16, 8, 8, 8);
    Plain dst(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 16, 8, 8);
    countUp(dst, 0);
    std::vector<uint8_t> dstWant = dst.block;
    for (int y = 0; y < 16; ++y)
        for (int x = 0; x < 8; ++x)
            scetest::putElement(dstWant, dst.guard, dst.layout(), x, y, 0, src.element(x, y, 0));
    const int tile[2] = {5, 5};  // not looked at on this path
    rmgExchange(src.image, dst.image, tile);
    EXPECT_EQ(src.calls, (std::vector<TileCall>{{0, 0, Wr}, {0, 0, Rel}, {0, 1, Wr}, {0, 1, Rel}}));
    for (int y = 0; y < 16; ++y)
        for (int x = 0; x < 8; ++x)
            EXPECT_EQ(src.element(x, y, 0), static_cast<uint32_t>(y * 8 + x));
    EXPECT_EQ(difference(dst.block, dstWant), "");
    EXPECT_EQ(dst.image->roi, nullptr);
}

TEST_F(ExchangeTest, TiledSourceNullTileRaisesAsARead) {
    Tiled src(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 16, 8, 8, 8);
    Plain dst(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 16, 8, 8);
    src.failing.insert({0, 1});
    rmgExchange(src.image, dst.image, nullptr);
    EXPECT_EQ(src.calls, (std::vector<TileCall>{{0, 0, Wr}, {0, 0, Rel}, {0, 1, Wr}}));
    ASSERT_EQ(rmgtest::reports().size(), 1u);
    expectReport(0, RMG_StsError, "Error get tile to read");
    EXPECT_EQ(rmgGetErrStatus(), RMG_StsError);
    EXPECT_EQ(dst.image->roi, nullptr);
}

TEST_F(ExchangeTest, BothTiledGoesThroughABlockAndTheSourcesTiles) {
    TiledPair p(16, 16, 11, 12);
    p.dst.setRoi(0, 4, 0, 4, 8);
    uint32_t before[2][4][8];
    for (int y = 0; y < 4; ++y)
        for (int x = 0; x < 8; ++x) {
            before[0][y][x] = p.src.element(x, y, 0);
            before[1][y][x] = p.dst.element(4 + x, y, 0);
        }
    const std::vector<uint8_t> srcHeader = headerBytes(p.src.image);
    rmgExchange(p.src.image, p.dst.image, nullptr);
    EXPECT_EQ(p.log.calls, joined({partOf(true, 0, 0, 0, 0), partOf(true, 1, 0, 0, 0)}));
    for (int y = 0; y < 4; ++y)
        for (int x = 0; x < 8; ++x) {
            EXPECT_EQ(p.src.element(x, y, 0), before[1][y][x]) << x << "," << y;
            EXPECT_EQ(p.dst.element(4 + x, y, 0), before[0][y][x]) << x << "," << y;
        }
    EXPECT_EQ(headerBytes(p.src.image), srcHeader);
    EXPECT_TRUE(rmgtest::reports().empty());
}

TEST_F(ExchangeTest, BothTiledNullDestinationTileRaisesUnderExchange) {
    Tiled src(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 8, 8, 8, 8);
    Tiled dst(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 8, 8, 8, 8);
    dst.failing.insert({0, 0});
    rmgExchange(src.image, dst.image, nullptr);
    EXPECT_TRUE(src.calls.empty());
    ASSERT_EQ(rmgtest::reports().size(), 1u);
    expectReport(0, RMG_StsError, "Error get tile to write");
}

TEST_F(ExchangeTest, BothTiledFailureInTheCopyToTheSourceStopsTheWalk) {
    TiledPair p(8, 16, 11, 12);
    p.log.failAt = 3;  // the source's tile, asked for to take the destination's part
    const std::vector<uint8_t> srcHeader = headerBytes(p.src.image);
    rmgExchange(p.src.image, p.dst.image, nullptr);
    // The copy into the source raises under its own name; the copy into
    // the tile then finds the status negative, and so does the read of the
    // next part, which ends the walk without releasing the tile.
    EXPECT_EQ(p.log.calls, (std::vector<Call>{{'D', 0, 0, Wr},
                                              {'S', 0, 0, Rd},
                                              {'S', 0, 0, Rel},
                                              {'S', 0, 0, Wr},
                                              {'D', 0, 0, Rel},
                                              {'D', 1, 0, Wr},
                                              {'S', 1, 0, Rd},
                                              {'S', 1, 0, Rel}}));
    ASSERT_EQ(rmgtest::reports().size(), 1u);
    expectReport(0, RMG_StsError, "Error get tile to write", "rmgCopy");
    EXPECT_EQ(headerBytes(p.src.image), srcHeader);
    EXPECT_EQ(difference(p.dst.tiles.at({0, 0}), p.dst.freshTile(0, 0)), "");
    EXPECT_EQ(difference(p.src.tiles.at({0, 0}), p.src.freshTile(0, 0)), "");
}

}  // namespace
