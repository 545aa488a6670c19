// rmgCopy with concrete values: the opening and the status test, sizes and
// channels of the plain path, 1-bit runs, copies inside one image, and the
// three tiled paths with their call-back sequences, messages, `tile`
// argument and the headers they leave.
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
using copytest::CallLog;
using copytest::countUp;
using copytest::headerBytes;
using copytest::joined;
using copytest::partOf;
using copytest::headerText;
using copytest::pixelsOf;
using copytest::TiledPair;
using scetest::difference;
using scetest::Plain;
using scetest::TileCall;
using scetest::Tiled;

class CopyTest : public rmgtest::ErrorStateTest {};

constexpr int Rd = RMG_TILE_READ;
constexpr int Wr = RMG_TILE_WRITE;
constexpr int Rel = RMG_TILE_RELEASE;

void expectReport(size_t index, int status, const std::string &context) {
    copytest::expectReport(index, status, context, "rmgCopy");
}

// Copies a source whose pixel bytes count up from `start` into `dst`, whose
// pixel bytes are all set to `fill` first (left as made where it is -1),
// and gives the destination's pixel bytes, row padding included.
std::vector<uint8_t> copyCounted(Plain &src, Plain &dst, int start, int fill = -1) {
    countUp(src, start);
    if (fill >= 0) std::memset(dst.pixels(), fill, static_cast<size_t>(dst.image->imageSize));
    rmgCopy(src.image, dst.image, nullptr);
    return pixelsOf(dst);
}

// Copies and asserts that the destination's whole block, guard zones
// included, is as it was before.
void expectCopyLeavesAlone(Plain &src, Plain &dst) {
    const std::vector<uint8_t> before = dst.block;
    rmgCopy(src.image, dst.image, nullptr);
    EXPECT_EQ(difference(dst.block, before), "");
}

// The walk over these tiles in this order: each asked for in `mode`, then
// released.
std::vector<TileCall> walkOf(int mode, const std::vector<std::pair<int, int>> &tiles) {
    std::vector<TileCall> calls;
    for (const auto &t : tiles) {
        calls.push_back({t.first, t.second, mode});
        calls.push_back({t.first, t.second, Rel});
    }
    return calls;
}

// --- The opening ------------------------------------------------------------

TEST_F(CopyTest, BadSourceHeaderIsReportedAndTheDestinationIsNotTested) {
    Plain dst(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 2, 4);
    const std::vector<uint8_t> before = dst.block;
    rmgCopy(nullptr, nullptr, nullptr);
    ASSERT_EQ(rmgtest::reports().size(), 1u);
    expectReport(0, RMG_StsBadArg, headerText(0x0001));
    rmgtest::reports().clear();
    rmgCopy(nullptr, dst.image, nullptr);
    ASSERT_EQ(rmgtest::reports().size(), 1u);
    expectReport(0, RMG_StsBadArg, headerText(0x0001));
    EXPECT_EQ(difference(dst.block, before), "");
}

TEST_F(CopyTest, BadDestinationHeaderIsReported) {
    Plain src(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 2, 4);
    Plain dst(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 2, 4);
    dst.setRoi(0, -1, 0, 1, 1);
    const std::vector<uint8_t> before = dst.block;
    rmgCopy(src.image, dst.image, nullptr);
    ASSERT_EQ(rmgtest::reports().size(), 1u);
    expectReport(0, RMG_StsBadArg, headerText(0x0008));
    EXPECT_EQ(difference(dst.block, before), "");
    EXPECT_EQ(rmgGetErrStatus(), RMG_StsBadArg);
}

TEST_F(CopyTest, DepthOrderAndOriginRaiseThreeTimesAndStop) {
    Plain src(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 2, 4);
    Plain dst(1, RMG_DEPTH_16U, RMG_DATA_PLANE, 4, 2, 4);
    dst.image->origin = RMG_ORIGIN_BL;
    const std::vector<uint8_t> before = dst.block;
    rmgCopy(src.image, dst.image, nullptr);
    ASSERT_EQ(rmgtest::reports().size(), 3u);
    expectReport(0, RMG_StsBadArg, "srcImage->depth != dstImage->depth");
    expectReport(1, RMG_StsBadArg, "srcImage->dataOrder != dstImage->dataOrder");
    expectReport(2, RMG_StsBadArg, "srcImage->origin != dstImage->origin");
    EXPECT_EQ(rmgGetErrStatus(), RMG_StsBadArg);
    EXPECT_EQ(difference(dst.block, before), "");
}

TEST_F(CopyTest, NegativeStatusStopsACopyOfTwoGoodImages) {
    Plain src(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 2, 4, 16, 1);
    Plain dst(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 2, 4, 16, 2);
    const std::vector<uint8_t> before = dst.block;
    rmgSetErrStatus(RMG_StsError);
    rmgCopy(src.image, dst.image, nullptr);
    EXPECT_EQ(difference(dst.block, before), "");
    EXPECT_TRUE(rmgtest::reports().empty());
    EXPECT_EQ(rmgGetErrStatus(), RMG_StsError);
    // Also on a tiled destination: not one call-back.
    Tiled t(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 8, 8, 8, 8);
    rmgCopy(src.image, t.image, nullptr);
    EXPECT_TRUE(t.calls.empty());
}

TEST_F(CopyTest, EntryForwards) {
    Plain src(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 1, 4, 8);
    Plain dst(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 1, 4, 8);
    std::memcpy(src.pixels(), "\x01\x02\x03\x04", 4);
    wrmgCopy(src.image, dst.image, nullptr);
    EXPECT_EQ(std::memcmp(dst.pixels(), "\x01\x02\x03\x04", 4), 0);
    EXPECT_EQ(rmgGetErrStatus(), RMG_StsOk);
}

// --- Sizes and channels -------------------------------------------------------

TEST_F(CopyTest, DifferentSizesCopyTheCommonTopLeftPart) {
    // Source 3 rows of 5 pixels (rows of 15 bytes padded to 16), destination
    // 4 rows of 3 pixels (rows of 9 bytes padded to 12).
    Plain src(3, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 3, 5, 8);
    Plain dst(3, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 4, 3, 8);
    const std::vector<uint8_t> want = {0,    1,    2,    3,    4,    5,    6,    7,    8,    0xEE,
                                       0xEE, 0xEE, 16,   17,   18,   19,   20,   21,   22,   23,
                                       24,   0xEE, 0xEE, 0xEE, 32,   33,   34,   35,   36,   37,
                                       38,   39,   40,   0xEE, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE,
                                       0xEE, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE};
    EXPECT_EQ(copyCounted(src, dst, 0, 0xEE), want);
    EXPECT_TRUE(rmgtest::reports().empty());
}

TEST_F(CopyTest, SourceChannelThreeIsGatheredIntoOneChannel) {
    Plain src(3, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 2, 4, 8);
    Plain dst(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 2, 4, 8);
    src.setRoi(3, 0, 0, 2, 4);
    EXPECT_EQ(copyCounted(src, dst, 0), (std::vector<uint8_t>{2, 5, 8, 11, 14, 17, 20, 23}));
}

TEST_F(CopyTest, OneChannelIsScatteredIntoChannelTwo) {
    Plain src(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 2, 4, 8);
    Plain dst(3, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 2, 4, 8);
    dst.setRoi(2, 0, 0, 2, 4);
    EXPECT_EQ(copyCounted(src, dst, 0x10, 0),
              (std::vector<uint8_t>{0, 0x10, 0, 0, 0x11, 0, 0, 0x12, 0, 0, 0x13, 0,
                                    0, 0x14, 0, 0, 0x15, 0, 0, 0x16, 0, 0, 0x17, 0}));
}

TEST_F(CopyTest, ChannelOneGoesIntoChannelThree) {
    Plain src(3, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 1, 4, 8);
    Plain dst(3, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 1, 4, 8);
    src.setRoi(1, 0, 0, 1, 4);
    dst.setRoi(3, 0, 0, 1, 4);
    EXPECT_EQ(copyCounted(src, dst, 0x40, 0),
              (std::vector<uint8_t>{0, 0, 0x40, 0, 0, 0x43, 0, 0, 0x46, 0, 0, 0x49}));
}

TEST_F(CopyTest, ThreeChannelsIntoACoiDestinationDoNothing) {
    Plain src(3, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 2, 4, 16, 1);
    Plain dst(3, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 2, 4, 16, 2);
    dst.setRoi(2, 0, 0, 2, 4);
    expectCopyLeavesAlone(src, dst);
    // Nor the other way round, nor into an image of one channel.
    Plain gray(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 2, 4, 16, 3);
    expectCopyLeavesAlone(src, gray);
    EXPECT_TRUE(rmgtest::reports().empty());
    EXPECT_EQ(rmgGetErrStatus(), RMG_StsOk);
}

TEST_F(CopyTest, PlaneOrderWithCoiCopiesThatPlane) {
    // 16-bit planes of 2 rows of 3 elements (6 bytes padded to 8).
    Plain src(3, RMG_DEPTH_16S, RMG_DATA_PLANE, 4, 2, 3, 8);
    Plain dst(2, RMG_DEPTH_16S, RMG_DATA_PLANE, 4, 2, 3, 8);
    src.setRoi(3, 1, 0, 2, 2);
    dst.setRoi(2, 0, 1, 5, 5);
    const std::vector<uint8_t> have = copyCounted(src, dst, 0, 0);
    // Source plane 3 starts at byte 32; its row 0 from column 1 is bytes
    // 34..37. The destination's plane 2 starts at byte 16, row 1 at 24.
    std::vector<uint8_t> want(32, 0);
    want[24] = 34;
    want[25] = 35;
    want[26] = 36;
    want[27] = 37;
    EXPECT_EQ(have, want);
}

TEST_F(CopyTest, ThirtyTwoBitChannelsWithDifferentSteps) {
    Plain src(4, RMG_DEPTH_32S, RMG_DATA_PIXEL, 8, 1, 3, 8);
    Plain dst(2, RMG_DEPTH_32S, RMG_DATA_PIXEL, 8, 1, 3, 8);
    src.setRoi(4, 0, 0, 1, 3);
    dst.setRoi(1, 0, 0, 1, 3);
    EXPECT_EQ(copyCounted(src, dst, 0, 0),
              (std::vector<uint8_t>{12, 13, 14, 15, 0, 0, 0, 0, 28, 29, 30, 31,
                                    0,  0,  0,  0,  44, 45, 46, 47, 0, 0, 0, 0}));
}

TEST_F(CopyTest, RegionBeyondTheEdgeCopiesNothing) {
    Plain src(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 4, 8, 16, 1);
    Plain dst(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 4, 8, 16, 2);
    src.setRoi(0, 8, 0, 2, 2);
    expectCopyLeavesAlone(src, dst);
    src.setRoi(0, 0, 4, 2, 2);
    expectCopyLeavesAlone(src, dst);
    src.clearRoi();
    dst.setRoi(0, 9, 0, 2, 2);
    expectCopyLeavesAlone(src, dst);
    EXPECT_TRUE(rmgtest::reports().empty());
}

TEST_F(CopyTest, RoiHangingOverTheEdgeIsClippedOnEachSide) {
    // Source region columns 6..7 (of 8), destination region from column 1:
    // two columns by the smaller size.
    Plain src(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 2, 8, 8);
    Plain dst(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 2, 8, 8);
    src.setRoi(0, 6, 1, 4, 10);
    dst.setRoi(0, 1, 0, 10, 10);
    EXPECT_EQ(copyCounted(src, dst, 0, 0),
              (std::vector<uint8_t>{0, 14, 15, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}));
}

TEST_F(CopyTest, ComputedRowStepIsUsedNotWidthStep) {
    Plain src(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 2, 5, 8);
    Plain dst(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 2, 5, 8);
    src.image->widthStep = 5;
    dst.image->widthStep = 99;
    EXPECT_EQ(copyCounted(src, dst, 0, 0),
              (std::vector<uint8_t>{0, 1, 2, 3, 4, 0, 0, 0, 8, 9, 10, 11, 12, 0, 0, 0}));
}

// --- 1-bit runs ---------------------------------------------------------------

TEST_F(CopyTest, OneBitRunLeavesEveryOtherBit) {
    // Source bits 3..12 of B3 5C are 1001101011; they go to bits 5..14.
    Plain src(1, RMG_DEPTH_1U, RMG_DATA_PIXEL, 4, 1, 32, 8);
    Plain dst(1, RMG_DEPTH_1U, RMG_DATA_PIXEL, 4, 1, 32, 8);
    std::memcpy(src.pixels(), "\xB3\x5C\x0F\xF0", 4);
    src.setRoi(0, 3, 0, 1, 10);
    dst.setRoi(0, 5, 0, 1, 20);
    std::memset(dst.pixels(), 0x00, 4);
    rmgCopy(src.image, dst.image, nullptr);
    EXPECT_EQ(pixelsOf(dst), (std::vector<uint8_t>{0x04, 0xD6, 0x00, 0x00}));
    std::memset(dst.pixels(), 0xFF, 4);
    rmgCopy(src.image, dst.image, nullptr);
    EXPECT_EQ(pixelsOf(dst), (std::vector<uint8_t>{0xFC, 0xD7, 0xFF, 0xFF}));
}

// --- Source and destination in one image ------------------------------------------

TEST_F(CopyTest, OneImageIntoItselfOneRowDownRepeatsTheFirstRow) {
    // Rows of 8 bytes without padding: the copy from low to high addresses
    // reads each row after it has been written, so row 0 goes all the way
    // down; row by row or as one run, the bytes are the same.
    Plain p(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 4, 8, 8);
    countUp(p);
    RmgROI srcRoi{0, 0, 0, 3, 8};
    RmgROI dstRoi{0, 0, 1, 3, 8};
    RmgImage dstHeader = *p.image;
    p.image->roi = &srcRoi;
    dstHeader.roi = &dstRoi;
    rmgCopy(p.image, &dstHeader, nullptr);
    for (int y = 0; y < 4; ++y)
        for (int x = 0; x < 8; ++x) EXPECT_EQ(p.pixels()[y * 8 + x], x) << y << "," << x;
    // One row up: each row reads the row below before it is written.
    countUp(p);
    srcRoi = RmgROI{0, 0, 1, 3, 8};
    dstRoi = RmgROI{0, 0, 0, 3, 8};
    rmgCopy(p.image, &dstHeader, nullptr);
    for (int y = 0; y < 4; ++y)
        for (int x = 0; x < 8; ++x)
            EXPECT_EQ(p.pixels()[y * 8 + x], (y < 3 ? y + 1 : y) * 8 + x) << y << "," << x;
    // Three bytes to the right within each row: the first three repeat.
    countUp(p);
    srcRoi = RmgROI{0, 0, 0, 1, 5};
    dstRoi = RmgROI{0, 3, 0, 1, 5};
    rmgCopy(p.image, &dstHeader, nullptr);
    EXPECT_EQ(std::vector<uint8_t>(p.pixels(), p.pixels() + 8),
              (std::vector<uint8_t>{0, 1, 2, 0, 1, 2, 0, 1}));
}

// --- Destination tiled, source in memory ----------------------------------------

TEST_F(CopyTest, TiledDestinationAsksEachTileToWriteAndCopiesItsPart) {
    // Destination 24 x 16 in tiles of 8 x 8, region 12 x 9 at (4, 3): tiles
    // 0..1 by 0..1; source 20 x 20, region from (2, 1).
    Tiled dst(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 16, 24, 8, 8);
    Plain src(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 20, 20, 8);
    countUp(src);
    dst.setRoi(0, 4, 3, 9, 12);
    src.setRoi(0, 2, 1, 30, 30);
    rmgCopy(src.image, dst.image, nullptr);
    EXPECT_EQ(dst.calls, walkOf(Wr, {{0, 0}, {1, 0}, {0, 1}, {1, 1}}));
    for (const auto &entry : dst.tiles) {
        std::vector<uint8_t> want = dst.freshTile(entry.first.first, entry.first.second);
        for (int y = 0; y < 8; ++y)
            for (int x = 0; x < 8; ++x) {
                const int X = entry.first.first * 8 + x;
                const int Y = entry.first.second * 8 + y;
                if (X >= 4 && X < 16 && Y >= 3 && Y < 12)
                    want[y * 8 + x] = static_cast<uint8_t>((Y - 3 + 1) * 20 + (X - 4 + 2));
            }
        EXPECT_EQ(difference(entry.second, want), "")
            << entry.first.first << "," << entry.first.second;
    }
    EXPECT_EQ(src.image->roi, &src.roi);
    EXPECT_TRUE(rmgtest::reports().empty());
}

TEST_F(CopyTest, NullTileToWriteEndsTheWalkAndPutsTheSourceRoiBack) {
    Tiled dst(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 8, 24, 8, 8);
    Plain src(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 8, 24, 8);
    src.setRoi(0, 0, 0, 8, 24);
    dst.failing.insert({1, 0});
    const std::vector<uint8_t> srcHeader = headerBytes(src.image);
    rmgCopy(src.image, dst.image, nullptr);
    EXPECT_EQ(dst.calls, (std::vector<TileCall>{{0, 0, Wr}, {0, 0, Rel}, {1, 0, Wr}}));
    ASSERT_EQ(rmgtest::reports().size(), 1u);
    expectReport(0, RMG_StsError, "Error get tile to write");
    EXPECT_EQ(rmgGetErrStatus(), RMG_StsError);
    // The walk puts the source's own ROI back on this failure too, so that
    // the caller's header never points at a record that ended with the call.
    EXPECT_EQ(headerBytes(src.image), srcHeader);
    // Tile 0 was written before the failure, and stays so.
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 8; ++x)
            EXPECT_EQ(dst.tiles.at({0, 0})[y * 8 + x], src.pixels()[y * 24 + x]);
}

TEST_F(CopyTest, TileOutsideTheGridLeavesTheSourceHeaderUnchanged) {
    Tiled dst(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 16, 32, 8, 8);
    Plain src(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 16, 32, 16, 5);
    src.setRoi(0, 1, 1, 8, 8);
    const std::vector<uint8_t> srcHeader = headerBytes(src.image);
    const std::vector<uint8_t> srcBlock = src.block;
    for (const auto &tile : {std::vector<int>{4, 0}, std::vector<int>{-1, 0},
                             std::vector<int>{0, 2}, std::vector<int>{1, 1}}) {
        rmgCopy(src.image, dst.image, tile.data());
        // The walk replaces the source's ROI with a record of its own before
        // it looks at `tile`, and returns at once for a tile outside the
        // grid; it puts the source's own ROI back on that way out as well,
        // so the header is just as it was: a pointer to a record that ended
        // with the call would be left behind otherwise.
        EXPECT_EQ(headerBytes(src.image), srcHeader) << tile[0] << "," << tile[1];
    }
    EXPECT_EQ(src.image->roi, &src.roi);
    EXPECT_EQ(difference(src.block, srcBlock), "");
    EXPECT_TRUE(dst.calls.empty());
    EXPECT_TRUE(rmgtest::reports().empty());
}

TEST_F(CopyTest, TileSelectsTheFirstTileAndTakesItsRowFromTheColumn) {
    Tiled dst(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 32, 32, 8, 8);
    Plain src(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 32, 32, 8);
    countUp(src);
    const int tile[2] = {0, 3};  // row 3 is in the grid, the walk starts at row 0 - 0
    rmgCopy(src.image, dst.image, tile);
    EXPECT_EQ(dst.calls, (std::vector<TileCall>{{0, 0, Wr}, {0, 0, Rel}}));
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 8; ++x)
            EXPECT_EQ(dst.tiles.at({0, 0})[y * 8 + x], src.pixels()[y * 32 + x]);
    // A tile column below the first tile row walks the tile rows above:
    // region tiles 2..3 by 3..4, tile (2, 4): start row 2 - 3 = -1. The
    // source's part for grid row -1 starts at row 0 + 8 * (-2) + 6 = -10, a
    // negative offset that the header test of the recursive call refuses;
    // the status then stops the call for grid row 0 as well.
    Tiled up(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 40, 40, 8, 8);
    up.setRoi(0, 18, 26, 10, 12);
    const int upper[2] = {2, 4};
    rmgCopy(src.image, up.image, upper);
    EXPECT_EQ(up.calls, (std::vector<TileCall>{{2, 2, Wr}, {2, 2, Rel}, {2, 3, Wr}, {2, 3, Rel}}));
    ASSERT_EQ(rmgtest::reports().size(), 1u);
    expectReport(0, RMG_StsBadArg, headerText(0x0008));
    EXPECT_EQ(difference(up.tiles.at({2, 2}), up.freshTile(2, 2)), "");
    EXPECT_EQ(difference(up.tiles.at({2, 3}), up.freshTile(2, 3)), "");
    EXPECT_EQ(src.image->roi, nullptr);
}

// --- Source tiled, destination in memory ------------------------------------------

TEST_F(CopyTest, TiledSourceAsksEachTileToReadAndIgnoresTile) {
    Tiled src(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 16, 16, 8, 8);
    Plain dst(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 12, 12, 8);
    src.setRoi(0, 6, 6, 10, 10);
    dst.setRoi(0, 1, 2, 20, 20);
    const std::vector<uint8_t> dstHeader = headerBytes(dst.image);
    const int tile[2] = {7, 7};
    rmgCopy(src.image, dst.image, tile);
    EXPECT_EQ(src.calls, walkOf(Rd, {{0, 0}, {1, 0}, {0, 1}, {1, 1}}));
    // The source's region of 10 x 10 at (6, 6) in parts of 2 and 8 into
    // the destination's region from (1, 2), whose own ROI is larger.
    std::vector<uint8_t> want = dst.block;
    for (int y = 0; y < 10; ++y)
        for (int x = 0; x < 10; ++x)
            scetest::putElement(want, dst.guard, dst.layout(), 1 + x, 2 + y, 0,
                                src.element(6 + x, 6 + y, 0));
    EXPECT_EQ(difference(dst.block, want), "");
    EXPECT_EQ(headerBytes(dst.image), dstHeader);
    EXPECT_TRUE(rmgtest::reports().empty());
}

TEST_F(CopyTest, TiledSourceReadFailureRaisesAndStops) {
    Tiled src(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 16, 16, 8, 8);
    Plain dst(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 16, 16, 8);
    src.failing.insert({1, 0});
    const std::vector<uint8_t> dstHeader = headerBytes(dst.image);
    std::vector<uint8_t> want = dst.block;
    rmgCopy(src.image, dst.image, nullptr);
    EXPECT_EQ(src.calls, (std::vector<TileCall>{{0, 0, Rd}, {0, 0, Rel}, {1, 0, Rd}}));
    ASSERT_EQ(rmgtest::reports().size(), 1u);
    expectReport(0, RMG_StsError, "Error get tile to read");
    EXPECT_EQ(rmgGetErrStatus(), -2);
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 8; ++x)
            scetest::putElement(want, dst.guard, dst.layout(), x, y, 0, src.element(x, y, 0));
    EXPECT_EQ(difference(dst.block, want), "");
    EXPECT_EQ(headerBytes(dst.image), dstHeader);
}

// --- Both tiled -------------------------------------------------------------------

TEST_F(CopyTest, BothTiledReadsEachPartThroughABlock) {
    TiledPair p(16, 16);
    // Destination region 8 x 4 at (4, 0): two parts of 4 columns; the
    // source's region is the whole image.
    p.dst.setRoi(0, 4, 0, 4, 8);
    const std::vector<uint8_t> srcHeader = headerBytes(p.src.image);
    rmgCopy(p.src.image, p.dst.image, nullptr);
    EXPECT_EQ(p.log.calls, joined({partOf(false, 0, 0, 0, 0), partOf(false, 1, 0, 0, 0)}));
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 16; ++x) {
            const bool in = x >= 4 && x < 12 && y < 4;
            const uint32_t fresh = scetest::getElement(p.dst.freshTile(x / 8, 0), 0,
                                                       p.dst.tileLayout(), x % 8, y, 0);
            EXPECT_EQ(p.dst.element(x, y, 0), in ? p.src.element(x - 4, y, 0) : fresh)
                << x << "," << y;
        }
    EXPECT_EQ(headerBytes(p.src.image), srcHeader);
    EXPECT_TRUE(rmgtest::reports().empty());
}

TEST_F(CopyTest, BothTiledReadsAcrossSourceTilesAndApartFromTheEdge) {
    Tiled src(3, RMG_DEPTH_16U, RMG_DATA_PIXEL, 8, 16, 16, 8, 8);
    Tiled dst(1, RMG_DEPTH_16U, RMG_DATA_PIXEL, 8, 16, 16, 16, 8);
    CallLog log;
    log.watchPair(src, dst);
    src.setRoi(2, 4, 4, 8, 8);
    rmgCopy(src.image, dst.image, nullptr);
    EXPECT_EQ(log.calls, (std::vector<Call>{{'D', 0, 0, Wr},
                                            {'S', 0, 0, Rd},
                                            {'S', 1, 0, Rd},
                                            {'S', 1, 0, Rel},
                                            {'S', 0, 0, Rel},
                                            {'S', 0, 1, Rd},
                                            {'S', 1, 1, Rd},
                                            {'S', 1, 1, Rel},
                                            {'S', 0, 1, Rel},
                                            {'D', 0, 0, Rel}}));
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 16; ++x)
            EXPECT_EQ(dst.element(x, y, 0), x < 8 ? src.element(4 + x, 4 + y, 1)
                                                  : scetest::getElement(dst.freshTile(0, 0), 0,
                                                                        dst.tileLayout(), x, y, 0))
                << x << "," << y;
}

TEST_F(CopyTest, BothTiledBorderRuleFillsBeyondTheSourcesEdge) {
    Tiled src(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 16, 16, 8, 8);
    Tiled dst(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 16, 16, 8, 8);
    rmgSetBorderMode(src.image, RMG_BORDER_REPLICATE, RMG_SIDE_RIGHT, 0);
    src.setRoi(0, 12, 0, 4, 8);  // columns 12..19: four beyond the edge
    dst.setRoi(0, 0, 0, 4, 8);
    rmgCopy(src.image, dst.image, nullptr);
    for (int y = 0; y < 4; ++y)
        for (int x = 0; x < 8; ++x)
            EXPECT_EQ(dst.element(x, y, 0), src.element(x < 4 ? 12 + x : 15, y, 0))
                << x << "," << y;
    // The tile beyond the edge isn't asked for: the rule reads column 15.
    for (const TileCall &c : src.calls) EXPECT_EQ(c.x, 1);
}

TEST_F(CopyTest, BothTiledNullDestinationTileRaises) {
    TiledPair p(8, 16);
    p.dst.failing.insert({1, 0});
    rmgCopy(p.src.image, p.dst.image, nullptr);
    EXPECT_EQ(p.log.calls, joined({partOf(false, 0, 0, 0, 0), {{'D', 1, 0, Wr}}}));
    ASSERT_EQ(rmgtest::reports().size(), 1u);
    expectReport(0, RMG_StsError, "Error get tile to write");
}

TEST_F(CopyTest, BothTiledFailedSourceReadStopsWithoutAWordOrARelease) {
    TiledPair p(8, 16);
    p.src.failing.insert({1, 0});
    rmgCopy(p.src.image, p.dst.image, nullptr);
    EXPECT_EQ(p.log.calls,
              joined({partOf(false, 0, 0, 0, 0), {{'D', 1, 0, Wr}, {'S', 1, 0, Rd}}}));
    EXPECT_TRUE(rmgtest::reports().empty());
    EXPECT_EQ(rmgGetErrStatus(), RMG_StsOk);
}

TEST_F(CopyTest, BothTiledTileRestrictsTheDestinationsWalk) {
    TiledPair p(16, 16);
    const int outside[2] = {2, 0};
    rmgCopy(p.src.image, p.dst.image, outside);
    EXPECT_TRUE(p.log.calls.empty());
    const int first[2] = {0, 1};
    rmgCopy(p.src.image, p.dst.image, first);
    EXPECT_EQ(p.log.calls, partOf(false, 0, 0, 0, 0));
    EXPECT_TRUE(rmgtest::reports().empty());
}

}  // namespace
