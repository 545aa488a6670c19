// rmgSet with concrete values: the header test of the opening, clamps by
// depth, regions and channels, 1-bit runs, and the tile walk with its
// call-back sequence and its `tile` argument.
#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <string>
#include <vector>

#include "ops/rmgSCE.h"
#include "ops/scetest.h"
#include "rmg.h"
#include "support/rmgtest.h"

namespace {

using scetest::Area;
using scetest::difference;
using scetest::Plain;
using scetest::TileCall;
using scetest::Tiled;

class SetTest : public rmgtest::ErrorStateTest {};

constexpr int W = RMG_TILE_WRITE;
constexpr int R = RMG_TILE_RELEASE;

// The text rmgBadHeaderText gives for a mask, as a string.
std::string headerText(int mask) {
    char *text = rmgBadHeaderText(mask);
    std::string s = text;
    rmgFree(text);
    return s;
}

// Asserts one report of a bad header from rmgSet.
void expectHeaderReport(int mask) {
    ASSERT_EQ(rmgtest::reports().size(), 1u);
    const rmgtest::Report &r = rmgtest::reports()[0];
    EXPECT_EQ(r.status, RMG_StsBadArg);
    EXPECT_EQ(r.funcName, "rmgSet");
    EXPECT_EQ(r.context, headerText(mask));
    EXPECT_EQ(r.fileName, "rmgSCE");
    EXPECT_EQ(rmgGetErrStatus(), RMG_StsBadArg);
}

// rmgSet refuses the image with the text of `mask` and writes nothing.
void expectRefused(Plain &p, int mask) {
    const std::vector<uint8_t> before = p.block;
    rmgSet(p.image, 1, nullptr);
    expectHeaderReport(mask);
    EXPECT_EQ(difference(p.block, before), "");
}

// Runs rmgSet and compares the whole block, guards included, with the
// model's fill of `area`.
void expectSetFills(Plain &p, const Area &area, int fillValue, const int *tile = nullptr) {
    std::vector<uint8_t> want = p.block;
    scetest::modelFill(want, p.guard, p.layout(), area,
                       scetest::storedValue(p.image->depth, fillValue));
    rmgSet(p.image, fillValue, tile);
    EXPECT_EQ(difference(p.block, want), "");
}

// Sets every pixel byte to `start`, runs rmgSet, and gives the first n
// pixel bytes.
std::vector<uint8_t> setOver(Plain &p, uint8_t start, int fillValue, int n) {
    std::memset(p.pixels(), start, static_cast<size_t>(p.image->imageSize));
    rmgSet(p.image, fillValue, nullptr);
    return std::vector<uint8_t>(p.pixels(), p.pixels() + n);
}

// --- The opening --------------------------------------------------------

TEST_F(SetTest, NullImageRaisesTheNullText) {
    rmgSet(nullptr, 5, nullptr);
    expectHeaderReport(0x0001);
    EXPECT_EQ(rmgtest::reports()[0].context,
              "Image header is null                                                  \n");
}

TEST_F(SetTest, HeaderWithoutDataRaisesBitTwoAlone) {
    RmgImage *image = rmgCreateImageHeader(3, 0, RMG_DEPTH_8U, "RGB", "BGR", RMG_DATA_PIXEL,
                                           RMG_ORIGIN_TL, 4, 4, 4, nullptr, nullptr, nullptr);
    rmgSet(image, 1, nullptr);
    expectHeaderReport(0x0002);
    EXPECT_EQ(rmgtest::reports()[0].context,
              "Image data and tileinfo is either null or not null                    \n");
    rmgDeallocate(image, RMG_DEALLOC_ALL);
}

TEST_F(SetTest, OneBitImageWithThreeChannelsIsRefusedUntouched) {
    Plain p(3, RMG_DEPTH_1U, RMG_DATA_PIXEL, 4, 2, 8);
    expectRefused(p, 0x0040);
}

TEST_F(SetTest, DepthOf32IsRefusedUntouched) {
    Plain p(1, RMG_DEPTH_32S, RMG_DATA_PIXEL, 4, 2, 3);
    p.image->depth = 32;
    expectRefused(p, 0x0080);
}

TEST_F(SetTest, TileWidth12OrHeight0IsRefusedWithoutCalls) {
    Tiled t(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 16, 16, 12, 8);
    rmgSet(t.image, 1, nullptr);
    expectHeaderReport(0x2000);
    rmgtest::reports().clear();
    t.info.width = 8;
    t.info.height = 0;
    rmgSet(t.image, 1, nullptr);
    expectHeaderReport(0x2000);
    EXPECT_TRUE(t.calls.empty());
}

TEST_F(SetTest, Align16IsRefusedUntouched) {
    Plain p(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 2, 8);
    p.image->align = 16;
    expectRefused(p, 0x0800);
}

TEST_F(SetTest, NegativeRoiOffsetTextComesLast) {
    Plain p(3, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 2, 8);
    p.setRoi(4, -1, 0, 1, 1);  // coi above nChannels as well
    expectRefused(p, 0x4000 | 0x0008);
    EXPECT_EQ(rmgtest::reports()[0].context,
              "COI is less zero or is more image channel's number                    \n"
              "ROI offset is invalid                                                 \n");
}

TEST_F(SetTest, WorksWhateverTheStatusIsAndLeavesIt) {
    Plain p(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 2, 5);
    rmgSetErrStatus(RMG_StsError);
    expectSetFills(p, Area{0, 0, 5, 2, 0}, 9);
    EXPECT_TRUE(rmgtest::reports().empty());
    EXPECT_EQ(rmgGetErrStatus(), RMG_StsError);
}

TEST_F(SetTest, SuccessLeavesAGoodStatusAlone) {
    Plain p(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 2, 5);
    rmgSet(p.image, 9, nullptr);
    EXPECT_EQ(rmgGetErrStatus(), RMG_StsOk);
    EXPECT_TRUE(rmgtest::reports().empty());
}

TEST_F(SetTest, EntryForwards) {
    Plain p(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 1, 4);
    wrmgSet(p.image, 0x42, nullptr);
    EXPECT_EQ(std::memcmp(p.pixels(), "\x42\x42\x42\x42", 4), 0);
    wrmgSet(nullptr, 0, nullptr);
    expectHeaderReport(0x0001);
}

// --- Values by depth -------------------------------------------------------

struct ClampCase {
    unsigned int depth;
    int fillValue;
    std::vector<uint8_t> element;  // the bytes of one element, in memory order
};

TEST_F(SetTest, ValuesAreClampedToTheDepth) {
    const ClampCase cases[] = {
        {RMG_DEPTH_8U, 300, {0xFF}},
        {RMG_DEPTH_8U, -5, {0x00}},
        {RMG_DEPTH_8U, 77, {77}},
        {RMG_DEPTH_8S, 300, {0x7F}},
        {RMG_DEPTH_8S, -300, {0x80}},
        {RMG_DEPTH_8S, -1, {0xFF}},
        {RMG_DEPTH_16U, 70000, {0xFF, 0xFF}},
        {RMG_DEPTH_16U, -1, {0x00, 0x00}},
        {RMG_DEPTH_16U, 0x1234, {0x34, 0x12}},
        {RMG_DEPTH_16S, 40000, {0xFF, 0x7F}},
        {RMG_DEPTH_16S, -40000, {0x00, 0x80}},
        {RMG_DEPTH_32S, INT_MIN, {0x00, 0x00, 0x00, 0x80}},
        {RMG_DEPTH_32S, 0x01020304, {0x04, 0x03, 0x02, 0x01}},
    };
    for (const ClampCase &c : cases) {
        Plain p(3, c.depth, RMG_DATA_PIXEL, 4, 2, 3, 16);
        rmgSet(p.image, c.fillValue, nullptr);
        const int n = static_cast<int>(c.element.size());
        const int rowBytes = 3 * 3 * n;
        for (int y = 0; y < 2; ++y)
            for (int i = 0; i < rowBytes; ++i)
                ASSERT_EQ(p.pixels()[y * p.image->widthStep + i], c.element[i % n])
                    << "depth " << (c.depth & 0xFF) << " value " << c.fillValue;
    }
    EXPECT_TRUE(rmgtest::reports().empty());
}

TEST_F(SetTest, OneBitValuesAboveOneAndBelowZero) {
    Plain p(1, RMG_DEPTH_1U, RMG_DATA_PIXEL, 4, 1, 12, 8);
    EXPECT_EQ(setOver(p, 0x00, 2, 4), (std::vector<uint8_t>{0xFF, 0xF0, 0x00, 0x00}));
    EXPECT_EQ(setOver(p, 0xFF, -1, 4), (std::vector<uint8_t>{0x00, 0x0F, 0xFF, 0xFF}));
}

TEST_F(SetTest, PlainFillGivesOtherValuesThanAllocation) {
    // Allocation keeps the low bits of its fill value; Set clamps.
    RmgImage *image = rmgCreateImageHeader(1, 0, RMG_DEPTH_8U, "GRAY", "GRAY", RMG_DATA_PIXEL,
                                           RMG_ORIGIN_TL, 4, 1, 4, nullptr, nullptr, nullptr);
    rmgAllocateImage(image, 300);
    EXPECT_EQ(image->imageData[0], 44);
    rmgSet(image, 300, nullptr);
    EXPECT_EQ(image->imageData[0], 255);
    rmgDeallocate(image, RMG_DEALLOC_ALL);
}

// --- Regions and channels --------------------------------------------------

TEST_F(SetTest, RoiAtOrBeyondTheEdgeDoesNothingAndRaisesNothing) {
    for (unsigned int depth : {RMG_DEPTH_8U, RMG_DEPTH_1U, RMG_DEPTH_32S}) {
        Plain p(1, depth, RMG_DATA_PIXEL, 4, 5, 100);
        const std::vector<uint8_t> before = p.block;
        for (const RmgROI &roi : {RmgROI{0, 100, 0, 5, 10}, RmgROI{0, 150, 1, 2, 10},
                                  RmgROI{0, 0, 5, 3, 10}, RmgROI{1, 3, 9, 3, 10}}) {
            p.setRoi(roi.coi, roi.xOffset, roi.yOffset, roi.height, roi.width);
            rmgSet(p.image, 1, nullptr);
            ASSERT_EQ(difference(p.block, before), "") << "offset " << roi.xOffset;
        }
    }
    EXPECT_TRUE(rmgtest::reports().empty());
    EXPECT_EQ(rmgGetErrStatus(), RMG_StsOk);
}

TEST_F(SetTest, RoiOfTenColumnsAt95OfWidth100FillsFive) {
    Plain p(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 2, 100);
    p.setRoi(0, 95, 0, 1, 10);
    std::vector<uint8_t> want(200, 0);
    for (int x = 95; x < 100; ++x) want[x] = 7;
    EXPECT_EQ(setOver(p, 0, 7, 200), want);
    expectSetFills(p, Area{95, 0, 100, 1, 0}, 8);
}

TEST_F(SetTest, RoiTallerThanTheImageFillsItsRows) {
    Plain p(1, RMG_DEPTH_16U, RMG_DATA_PIXEL, 4, 5, 3);
    p.setRoi(0, 0, 0, 10, 3);
    expectSetFills(p, Area{0, 0, 3, 5, 0}, 0x0102);
}

TEST_F(SetTest, RoiHangingOverTheRightEdgeStopsAtTheEdge) {
    // Width 10 in align 4: each row has 2 bytes of padding, which stay.
    Plain p(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 3, 10, 8);
    p.setRoi(0, 6, 1, 5, 10);
    std::vector<uint8_t> want(36, 0);
    for (int y = 1; y < 3; ++y)
        for (int x = 6; x < 10; ++x) want[y * 12 + x] = 0xAB;
    EXPECT_EQ(setOver(p, 0, 0xAB, 36), want);
}

TEST_F(SetTest, ChannelTwoInPixelOrderChangesEveryThirdByte) {
    Plain p(3, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 2, 4, 8);
    p.setRoi(2, 0, 0, 2, 4);
    std::vector<uint8_t> want(24, 0);
    for (int y = 0; y < 2; ++y)
        for (int x = 0; x < 4; ++x) want[y * 12 + 3 * x + 1] = 0x5A;
    EXPECT_EQ(setOver(p, 0, 0x5A, 24), want);
}

TEST_F(SetTest, ChannelTwoInPlaneOrderFillsTheSecondPlane) {
    Plain p(3, RMG_DEPTH_16S, RMG_DATA_PLANE, 4, 2, 3, 8);
    p.setRoi(2, 0, 0, 2, 3);
    // Rows of 6 bytes padded to 8; planes of 16 bytes; -2 is FE FF.
    std::vector<uint8_t> want(48, 0);
    for (int y = 0; y < 2; ++y)
        for (int x = 0; x < 3; ++x) {
            want[16 + y * 8 + 2 * x] = 0xFE;
            want[16 + y * 8 + 2 * x + 1] = 0xFF;
        }
    EXPECT_EQ(setOver(p, 0, -2, 48), want);
}

TEST_F(SetTest, PlaneOrderWithoutCoiFillsEveryPlane) {
    Plain p(3, RMG_DEPTH_8U, RMG_DATA_PLANE, 8, 2, 3);
    p.setRoi(0, 1, 1, 1, 5);
    expectSetFills(p, Area{1, 1, 3, 2, 0}, 3);
}

TEST_F(SetTest, ComputedRowStepIsUsedNotWidthStep) {
    Plain p(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 3, 5, 8);
    p.image->widthStep = 5;  // the computed step is 8
    EXPECT_EQ(setOver(p, 0, 1, 24), (std::vector<uint8_t>{1, 1, 1, 1, 1, 0, 0, 0,  //
                                                          1, 1, 1, 1, 1, 0, 0, 0,  //
                                                          1, 1, 1, 1, 1, 0, 0, 0}));
}

// --- 1-bit runs ---------------------------------------------------------------

TEST_F(SetTest, ThreeBitsFromColumnSixTouchTwoBytes) {
    Plain p(1, RMG_DEPTH_1U, RMG_DATA_PIXEL, 4, 1, 16, 8);
    p.setRoi(0, 6, 0, 1, 3);
    EXPECT_EQ(setOver(p, 0x00, 1, 4), (std::vector<uint8_t>{0x03, 0x80, 0x00, 0x00}));
    EXPECT_EQ(setOver(p, 0xFF, 0, 4), (std::vector<uint8_t>{0xFC, 0x7F, 0xFF, 0xFF}));
}

TEST_F(SetTest, OneBitRegionWithNoColumnsTouchesNothing) {
    Plain p(1, RMG_DEPTH_1U, RMG_DATA_PIXEL, 4, 4, 16);
    p.setRoi(0, 16, 1, 2, 4);  // columns 0, rows 2
    const std::vector<uint8_t> before = p.block;
    rmgSet(p.image, 1, nullptr);
    EXPECT_EQ(difference(p.block, before), "");
}

struct BitsCase {
    int value, bitPos, count;
    std::vector<uint8_t> before, after;
};

TEST_F(SetTest, SetBitsMasks) {
    const BitsCase cases[] = {
        {1, 7, 1, {0x00, 0x00}, {0x80, 0x00}},
        {1, 0, 1, {0x00, 0x00}, {0x01, 0x00}},
        {1, 7, 8, {0x00, 0x00}, {0xFF, 0x00}},
        {1, 7, 9, {0x00, 0x00}, {0xFF, 0x80}},
        {1, 3, 2, {0x00, 0x00}, {0x0C, 0x00}},
        {0, 3, 2, {0xFF, 0xFF}, {0xF3, 0xFF}},
        {1, 0, 2, {0x00, 0x00}, {0x01, 0x80}},
        {3, 5, 4, {0x00, 0x00}, {0x3C, 0x00}},
        {2, 5, 4, {0xFF, 0xFF}, {0xC3, 0xFF}},  // only bit 0 of the value counts
        {1, 4, 0, {0x00, 0x00}, {0x00, 0x00}},
        {1, 7, -3, {0x00, 0x00}, {0x00, 0x00}},
    };
    for (const BitsCase &c : cases) {
        std::vector<uint8_t> bytes = c.before;
        rmgSetBits(c.value, bytes.data(), c.bitPos, c.count);
        EXPECT_EQ(bytes, c.after) << "bitPos " << c.bitPos << " count " << c.count;
    }
    // Across several whole bytes: 3 + 24 + 5 bits.
    std::vector<uint8_t> bytes(6, 0x00);
    rmgSetBits(1, bytes.data() + 1, 2, 32);
    EXPECT_EQ(bytes, (std::vector<uint8_t>{0x00, 0x07, 0xFF, 0xFF, 0xFF, 0xF8}));
    std::fill(bytes.begin(), bytes.end(), 0xFF);
    rmgSetBits(0, bytes.data() + 1, 2, 32);
    EXPECT_EQ(bytes, (std::vector<uint8_t>{0xFF, 0xF8, 0x00, 0x00, 0x00, 0x07}));
}

// --- Tiled images --------------------------------------------------------------

// Every element of the tiled image in the area's channel, in image
// coordinates, has the value; and no other element of the grid changed.
void expectTiledFill(const Tiled &t, int x0, int y0, int x1, int y1, int coi, uint32_t value) {
    for (const auto &entry : t.tiles) {
        std::vector<uint8_t> want = t.freshTile(entry.first.first, entry.first.second);
        const int ox = entry.first.first * t.info.width;
        const int oy = entry.first.second * t.info.height;
        scetest::modelFill(want, 0, t.tileLayout(), Area{x0 - ox, y0 - oy, x1 - ox, y1 - oy, coi},
                           value);
        EXPECT_EQ(difference(entry.second, want), "")
            << "tile " << entry.first.first << "," << entry.first.second;
    }
}

// Tile (x, y) has the value in the area of its own coordinates, and its
// other bytes are those it was made with.
void expectTile(const Tiled &t, int x, int y, const Area &area, uint32_t value) {
    std::vector<uint8_t> want = t.freshTile(x, y);
    scetest::modelFill(want, 0, t.tileLayout(), area, value);
    EXPECT_EQ(difference(t.tileBytes(x, y), want), "") << "tile " << x << "," << y;
}

TEST_F(SetTest, TiledWholeImageAsksEachTileOnceWriteThenRelease) {
    Tiled t(3, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 12, 20, 8, 8);
    rmgSet(t.image, 0x11, nullptr);
    const std::vector<TileCall> want = {{0, 0, W}, {0, 0, R}, {1, 0, W}, {1, 0, R},
                                        {2, 0, W}, {2, 0, R}, {0, 1, W}, {0, 1, R},
                                        {1, 1, W}, {1, 1, R}, {2, 1, W}, {2, 1, R}};
    EXPECT_EQ(t.calls, want);
    // The last tile column and row are cut to the image: 4 columns, 4 rows.
    expectTiledFill(t, 0, 0, 20, 12, 0, 0x11);
    EXPECT_TRUE(rmgtest::reports().empty());
}

TEST_F(SetTest, TiledRoiOnATileBoundary) {
    Tiled t(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 40, 40, 8, 8);
    t.setRoi(0, 8, 0, 8, 16);
    rmgSet(t.image, 0x22, nullptr);
    EXPECT_EQ(t.calls, (std::vector<TileCall>{{1, 0, W}, {1, 0, R}, {2, 0, W}, {2, 0, R}}));
    expectTiledFill(t, 8, 0, 24, 8, 0, 0x22);
}

TEST_F(SetTest, TiledRoiFirstPartStartsAtXInTile) {
    Tiled t(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 40, 40, 8, 8);
    t.setRoi(0, 12, 3, 2, 8);
    rmgSet(t.image, 0x33, nullptr);
    EXPECT_EQ(t.calls, (std::vector<TileCall>{{1, 0, W}, {1, 0, R}, {2, 0, W}, {2, 0, R}}));
    // Tile 1: columns 4..7 of rows 3 and 4; tile 2: columns 0..3.
    const std::vector<uint8_t> tile1 = t.tiles.at({1, 0});
    const std::vector<uint8_t> tile2 = t.tiles.at({2, 0});
    for (int y = 3; y < 5; ++y)
        for (int x = 0; x < 4; ++x) {
            EXPECT_EQ(tile1[y * 8 + 4 + x], 0x33);
            EXPECT_EQ(tile2[y * 8 + x], 0x33);
        }
    expectTiledFill(t, 12, 3, 20, 5, 0, 0x33);
}

TEST_F(SetTest, TiledRoiBeyondTheImageAsksForTilesBeyondIt) {
    Tiled t(1, RMG_DEPTH_16U, RMG_DATA_PIXEL, 4, 16, 16, 8, 8);
    t.setRoi(0, 10, 12, 8, 10);  // columns 10..19, rows 12..19
    rmgSet(t.image, 0x4455, nullptr);
    EXPECT_EQ(t.calls, (std::vector<TileCall>{{1, 1, W}, {1, 1, R}, {2, 1, W}, {2, 1, R},
                                              {1, 2, W}, {1, 2, R}, {2, 2, W}, {2, 2, R}}));
    expectTiledFill(t, 10, 12, 20, 20, 0, 0x4455);
}

TEST_F(SetTest, TiledPlaneOrderWithCoiFillsThatPlaneOfEachTile) {
    Tiled t(3, RMG_DEPTH_32S, RMG_DATA_PLANE, 8, 16, 16, 8, 16);
    t.setRoi(3, 4, 2, 10, 6);
    rmgSet(t.image, -7, nullptr);
    EXPECT_EQ(t.calls, (std::vector<TileCall>{{0, 0, W}, {0, 0, R}, {1, 0, W}, {1, 0, R}}));
    expectTiledFill(t, 4, 2, 10, 12, 3, static_cast<uint32_t>(-7));
}

TEST_F(SetTest, TiledOneBitImage) {
    Tiled t(1, RMG_DEPTH_1U, RMG_DATA_PIXEL, 4, 16, 40, 16, 8);
    t.setRoi(0, 13, 5, 6, 20);
    rmgSet(t.image, 1, nullptr);
    EXPECT_EQ(t.calls, (std::vector<TileCall>{{0, 0, W}, {0, 0, R}, {1, 0, W}, {1, 0, R},
                                              {2, 0, W}, {2, 0, R}, {0, 1, W}, {0, 1, R},
                                              {1, 1, W}, {1, 1, R}, {2, 1, W}, {2, 1, R}}));
    expectTiledFill(t, 13, 5, 33, 11, 0, 1);
}

TEST_F(SetTest, NullTileEndsTheWalkAndKeepsWhatWasWritten) {
    Tiled t(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 16, 24, 8, 8);
    t.failing.insert({1, 0});
    rmgSet(t.image, 0x44, nullptr);
    EXPECT_EQ(t.calls, (std::vector<TileCall>{{0, 0, W}, {0, 0, R}, {1, 0, W}}));
    ASSERT_EQ(rmgtest::reports().size(), 1u);
    const rmgtest::Report &r = rmgtest::reports()[0];
    EXPECT_EQ(r.status, RMG_StsError);
    EXPECT_EQ(r.funcName, "rmgSet");
    EXPECT_EQ(r.context, "Error get tile to write");
    EXPECT_EQ(r.fileName, "rmgSCE");
    EXPECT_EQ(rmgGetErrStatus(), RMG_StsError);
    ASSERT_EQ(t.tiles.size(), 1u);
    expectTiledFill(t, 0, 0, 8, 8, 0, 0x44);
}

TEST_F(SetTest, TileHeaderKeepsTheImagesSizeAndStep) {
    // The tile's own header keeps widthStep and imageSize of the image: a
    // widthStep changed by hand doesn't matter, as the step is computed ...
    Tiled t(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 8, 16, 8, 8);
    t.image->widthStep = 3;
    rmgSet(t.image, 5, nullptr);
    expectTiledFill(t, 0, 0, 16, 8, 0, 5);
    EXPECT_TRUE(rmgtest::reports().empty());
    // ... while an imageSize of 0 fails the header test of each tile.
    Tiled u(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 8, 16, 8, 8);
    u.image->imageSize = 0;
    rmgSet(u.image, 5, nullptr);
    EXPECT_EQ(u.calls, (std::vector<TileCall>{{0, 0, W}, {0, 0, R}, {1, 0, W}, {1, 0, R}}));
    ASSERT_EQ(rmgtest::reports().size(), 2u);
    EXPECT_EQ(rmgtest::reports()[1].context, headerText(0x0004));
    expectTiledFill(u, 0, 0, 0, 0, 0, 5);
}

TEST_F(SetTest, TiledImageRestoresNothingBecauseItChangesNothing) {
    Tiled t(3, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 16, 16, 8, 8);
    t.setRoi(2, 3, 3, 5, 9);
    rmgSet(t.image, 1, nullptr);
    t.failing.insert({1, 0});
    rmgSet(t.image, 1, nullptr);
    EXPECT_EQ(t.image->roi, &t.roi);
    EXPECT_EQ(t.image->tileInfo, &t.info);
    EXPECT_EQ(t.image->imageData, nullptr);
    EXPECT_EQ(t.image->width, 16);
    EXPECT_EQ(t.image->height, 16);
    EXPECT_EQ(t.image->widthStep, 48);
    EXPECT_EQ(t.roi.coi, 2);
    EXPECT_EQ(t.roi.xOffset, 3);
    EXPECT_EQ(t.roi.yOffset, 3);
    EXPECT_EQ(t.roi.height, 5);
    EXPECT_EQ(t.roi.width, 9);
}

// --- The tile argument -------------------------------------------------------

TEST_F(SetTest, TileOutsideTheGridMakesNoCallAndNoReport) {
    Tiled t(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 32, 32, 8, 8);
    for (const auto &tile : {std::vector<int>{4, 0}, std::vector<int>{0, 4},
                             std::vector<int>{-1, 0}, std::vector<int>{0, -1}}) {
        rmgSet(t.image, 1, tile.data());
    }
    t.setRoi(0, 16, 24, 8, 8);  // grid: tile 2, 3 only
    for (const auto &tile : {std::vector<int>{1, 3}, std::vector<int>{2, 2},
                             std::vector<int>{3, 3}, std::vector<int>{2, 4}}) {
        rmgSet(t.image, 1, tile.data());
    }
    EXPECT_TRUE(t.calls.empty());
    EXPECT_TRUE(rmgtest::reports().empty());
    EXPECT_TRUE(t.tiles.empty());
}

TEST_F(SetTest, TileSelectsTheFirstTileOfTheGrid) {
    Tiled t(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 32, 32, 8, 8);
    const int first[2] = {0, 0};
    rmgSet(t.image, 9, first);
    EXPECT_EQ(t.calls, (std::vector<TileCall>{{0, 0, W}, {0, 0, R}}));
    expectTiledFill(t, 0, 0, 8, 8, 0, 9);
}

TEST_F(SetTest, TileRowIsFormedFromTheColumnValue) {
    Tiled t(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 32, 32, 8, 8);
    // Row 3 is inside the grid, but the walk's start row is 0 - 0.
    const int columnZeroRowThree[2] = {0, 3};
    rmgSet(t.image, 9, columnZeroRowThree);
    EXPECT_EQ(t.calls, (std::vector<TileCall>{{0, 0, W}, {0, 0, R}}));
    expectTiledFill(t, 0, 0, 8, 8, 0, 9);
    // A column other than the grid's first: the start column is past the
    // one-tile grid, so nothing is asked for.
    t.calls.clear();
    const int columnOne[2] = {1, 1};
    rmgSet(t.image, 9, columnOne);
    EXPECT_TRUE(t.calls.empty());
}

TEST_F(SetTest, TileColumnAboveFirstTileRowWalksNothing) {
    Tiled t(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 32, 32, 8, 8);
    t.setRoi(0, 16, 8, 16, 16);  // tiles 2..3 by 1..2
    const int tile[2] = {2, 1};  // start row 2 - 1 = 1: past the one-row grid
    rmgSet(t.image, 9, tile);
    EXPECT_TRUE(t.calls.empty());
    EXPECT_TRUE(rmgtest::reports().empty());
}

TEST_F(SetTest, TileColumnBelowFirstTileRowWalksTheRowsAbove) {
    Tiled t(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 40, 40, 8, 8);
    t.setRoi(0, 18, 26, 10, 12);  // columns 18..29, rows 26..35: tiles 2..3 by 3..4
    const int tile[2] = {2, 4};   // start row 2 - 3 = -1
    rmgSet(t.image, 9, tile);
    EXPECT_EQ(t.calls, (std::vector<TileCall>{{2, 2, W}, {2, 2, R}, {2, 3, W}, {2, 3, R}}));
    // Grid row -1 is a whole tile's height from its top; grid row 0 is the
    // first row part, from row 2. Both take the first column part of the
    // region's grid: columns 2..7.
    expectTile(t, 2, 2, Area{2, 0, 8, 8, 0}, 9);
    expectTile(t, 2, 3, Area{2, 2, 8, 8, 0}, 9);
}

TEST_F(SetTest, TileColumnWellBelowFirstTileRowWalksFromThatRow) {
    Tiled t(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 32, 32, 8, 8);
    t.setRoi(0, 0, 16, 8, 12);  // tiles 0..1 by 2
    const int tile[2] = {0, 2};  // start row 0 - 2 = -2: rows 0, 1, 2
    rmgSet(t.image, 9, tile);
    EXPECT_EQ(t.calls, (std::vector<TileCall>{{0, 0, W}, {0, 0, R}, {0, 1, W}, {0, 1, R},
                                              {0, 2, W}, {0, 2, R}}));
    // The first column part is that of the region's grid of two columns:
    // the whole first tile width.
    expectTiledFill(t, 0, 0, 8, 24, 0, 9);
}

TEST_F(SetTest, TileOnAOneColumnGridTakesTheRegionsColumns) {
    Tiled t(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 32, 32, 8, 8);
    t.setRoi(0, 2, 0, 20, 3);  // one tile column, rows 0..19 (tile rows 0..2)
    const int tile[2] = {0, 2};
    rmgSet(t.image, 9, tile);
    EXPECT_EQ(t.calls, (std::vector<TileCall>{{0, 0, W}, {0, 0, R}}));
    expectTiledFill(t, 2, 0, 5, 8, 0, 9);
}

TEST_F(SetTest, TileIsIgnoredForAnImageInMemory) {
    Plain p(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 3, 5);
    const int tile[2] = {7, 7};
    expectSetFills(p, Area{0, 0, 5, 3, 0}, 4, tile);
}

}  // namespace
