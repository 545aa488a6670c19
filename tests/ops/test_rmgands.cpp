// rmgAndS: the opening checks and their texts, the entry, the mask by depth,
// the whole-image word paths, the source's coi deciding the path, and the
// behaviour at the edges, with concrete values.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <vector>

#include "ops/addstest.h"
#include "ops/andtest.h"
#include "ops/ownand.h"
#include "support/rmgforms.h"
#include "support/rmgtest.h"

namespace {

using addstest::Image;

class AndSTest : public rmgtest::ErrorStateTest {};

void expectOneReport(const std::string &context) {
    addstest::expectOneReport("rmgAndS", "rmgands", context);
}

std::vector<uint16_t> words16(const Image &image) {
    std::vector<uint16_t> v(static_cast<size_t>(image.image->imageSize) / 2);
    std::memcpy(v.data(), image.data, v.size() * 2);
    return v;
}

// ---------------------------------------------------------------------------
// Checks
// ---------------------------------------------------------------------------

TEST_F(AndSTest, HeadersAreTestedSourceFirst) {
    Image dst(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 2, 2, 1);
    const std::vector<uint8_t> before = dst.bytes();
    rmgAndS(nullptr, dst.image, 1, nullptr);
    expectOneReport("Image header is null                                                  \n");
    EXPECT_EQ(dst.bytes(), before);

    rmgtest::reports().clear();
    Image src(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 2, 2, 2);
    dst.image->align = 16;
    rmgAndS(src.image, dst.image, 1, nullptr);
    expectOneReport("Image align is invalid                                                \n");
    dst.image->align = 4;
}

TEST_F(AndSTest, DepthOrderAndChannelsAreCompared) {
    Image src(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 2, 2, 1);
    Image dst(1, RMG_DEPTH_8S, RMG_DATA_PLANE, 4, 2, 2, 2);
    const std::vector<uint8_t> before = dst.bytes();
    rmgAndS(src.image, dst.image, 0, nullptr);
    expectOneReport("(srcImage->depth != dstImage->depth)");
    EXPECT_EQ(dst.bytes(), before);

    rmgtest::reports().clear();
    Image p(3, RMG_DEPTH_16U, RMG_DATA_PIXEL, 4, 2, 2, 1);
    Image q(3, RMG_DEPTH_16U, RMG_DATA_PLANE, 4, 2, 2, 2);
    rmgAndS(p.image, q.image, 0, nullptr);
    expectOneReport("(srcImage->dataOrder != dstImage->dataOrder)");

    rmgtest::reports().clear();
    Image r(4, RMG_DEPTH_32S, RMG_DATA_PIXEL, 4, 2, 2, 2);
    Image t(3, RMG_DEPTH_32S, RMG_DATA_PIXEL, 4, 2, 2, 2);
    rmgAndS(r.image, t.image, 0, nullptr);
    expectOneReport("(nChSrc != nChDst)");
}

TEST_F(AndSTest, TheEntryForwardsAndAnEarlierFailureDoesNotStopIt) {
    rmgSetErrStatus(RMG_StsNoMem);
    Image src(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 1, 4, 1);
    Image dst(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 1, 4, 2);
    src.fillFrom({0xF3, 0x3F, 0x55, 0xAA});
    wrmgAndS(src.image, dst.image, 0x0F, nullptr);
    EXPECT_EQ(dst.bytes(), (std::vector<uint8_t>{0x03, 0x0F, 0x05, 0x0A}));
    EXPECT_TRUE(rmgtest::reports().empty());
    EXPECT_EQ(rmgGetErrStatus(), RMG_StsNoMem);
    wrmgAndS(src.image, nullptr, 1, nullptr);
    EXPECT_EQ(rmgtest::reports().size(), 1u);
}

// ---------------------------------------------------------------------------
// The mask by depth
// ---------------------------------------------------------------------------

TEST_F(AndSTest, TheMaskIsReplicatedByDepth) {
    EXPECT_EQ(rmgAndSMask(RMG_DEPTH_1U, 2), 0u);
    EXPECT_EQ(rmgAndSMask(RMG_DEPTH_1U, 3), 0xFFFFFFFFu);
    EXPECT_EQ(rmgAndSMask(RMG_DEPTH_1U, -1), 0xFFFFFFFFu);
    EXPECT_EQ(rmgAndSMask(RMG_DEPTH_8U, 0x1FF), 0xFFFFFFFFu);
    EXPECT_EQ(rmgAndSMask(RMG_DEPTH_8S, 0x12345678), 0x78787878u);
    EXPECT_EQ(rmgAndSMask(RMG_DEPTH_16U, 0x1FFFF), 0xFFFFFFFFu);
    EXPECT_EQ(rmgAndSMask(RMG_DEPTH_16S, 0x12345678), 0x56785678u);
    EXPECT_EQ(rmgAndSMask(RMG_DEPTH_32S, 0x12345678), 0x12345678u);
    EXPECT_EQ(rmgAndSMask(RMG_DEPTH_32S, -2), 0xFFFFFFFEu);
}

TEST_F(AndSTest, EightBitValue0x1FFActsAs0xFFAndSixteenBit0x1FFFFAs0xFFFF) {
    rmgtest::inEveryForm([&](int) {
        Image src(3, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 3, 17, 1);
        Image dst(3, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 3, 17, 2);
        rmgAndS(src.image, dst.image, 0x1FF, nullptr);
        EXPECT_EQ(dst.bytes(), src.bytes());
        src.setRoi(0, 2, 1, 2, 11);
        dst.fill(3);
        rmgAndS(src.image, dst.image, 0x100, nullptr);
        // 0x100 acts as 0: the region (rows 0..1, 11 pixels) becomes 0.
        for (int y = 0; y < 3; ++y)
            for (int k = 0; k < 51; ++k)
                if (y < 2 && k < 33) {
                    ASSERT_EQ(dst.data[y * 52 + k], 0) << y << "," << k;
                }

        Image s16(1, RMG_DEPTH_16U, RMG_DATA_PLANE, 8, 2, 13, 3);
        Image d16(1, RMG_DEPTH_16U, RMG_DATA_PLANE, 8, 2, 13, 4);
        rmgAndS(s16.image, d16.image, 0x1FFFF, nullptr);
        EXPECT_EQ(d16.bytes(), s16.bytes());
        d16.setRoi(0, 1, 0, 2, 12);
        rmgAndS(s16.image, d16.image, 0x10F0F, nullptr);
        const std::vector<uint16_t> s = words16(s16);
        const std::vector<uint16_t> d = words16(d16);
        for (int y = 0; y < 2; ++y)
            for (int x = 1; x < 13; ++x)
                EXPECT_EQ(d[static_cast<size_t>(y * 16 + x)],
                          s[static_cast<size_t>(y * 16 + x - 1)] & 0x0F0F);
    });
}

TEST_F(AndSTest, SignedAndUnsignedDepthsGiveTheSameBytes) {
    for (unsigned int pair : {8u, 16u}) {
        const unsigned int u = pair == 8 ? RMG_DEPTH_8U : RMG_DEPTH_16U;
        const unsigned int s = pair == 8 ? RMG_DEPTH_8S : RMG_DEPTH_16S;
        Image su(2, u, RMG_DATA_PIXEL, 4, 3, 9, 1);
        Image du(2, u, RMG_DATA_PIXEL, 4, 3, 9, 2);
        Image ss(2, s, RMG_DATA_PIXEL, 4, 3, 9, 1);
        Image ds(2, s, RMG_DATA_PIXEL, 4, 3, 9, 2);
        su.setRoi(0, 1, 1, 2, 7);
        ss.setRoi(0, 1, 1, 2, 7);
        rmgAndS(su.image, du.image, -0x5A5B, nullptr);
        rmgAndS(ss.image, ds.image, -0x5A5B, nullptr);
        EXPECT_EQ(du.bytes(), ds.bytes());
    }
}

// ---------------------------------------------------------------------------
// 1u
// ---------------------------------------------------------------------------

TEST_F(AndSTest, OneBitValue2ClearsTheRegionAndValue3CopiesIt) {
    // Whole images of 3 rows of 20 bits (4 bytes a row, align 4).
    Image src(1, RMG_DEPTH_1U, RMG_DATA_PIXEL, 4, 3, 20, 1);
    Image dst(1, RMG_DEPTH_1U, RMG_DATA_PIXEL, 4, 3, 20, 2);
    rmgAndS(src.image, dst.image, 2, nullptr);
    EXPECT_EQ(dst.bytes(), std::vector<uint8_t>(12, 0));
    rmgAndS(src.image, dst.image, 3, nullptr);
    EXPECT_EQ(dst.bytes(), src.bytes());  // padding included

    // A region: bits 5..16 of rows 1..2 of the source into bits 2..13 of
    // rows 0..1 of the destination.
    src.fillFrom({0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF});
    dst.fillFrom(std::vector<uint8_t>(12, 0xFF));
    src.setRoi(0, 5, 1, 2, 12);
    dst.setRoi(1, 2, 0, 5, 12);
    rmgAndS(src.image, dst.image, 2, nullptr);
    EXPECT_EQ(dst.bytes(), (std::vector<uint8_t>{0xC0, 0x03, 0xFF, 0xFF, 0xC0, 0x03, 0xFF, 0xFF,
                                                 0xFF, 0xFF, 0xFF, 0xFF}));
    src.fillFrom({0, 0, 0, 0, 0xAA, 0xAA, 0xAA, 0xAA, 0x0F, 0xF0, 0x0F, 0xF0});
    rmgAndS(src.image, dst.image, 3, nullptr);
    // Row 0 gets source row 1 bits 5..16 (0 1 0 1 0 1 0 1 0 1 0 1) at 2..13.
    std::vector<uint8_t> want = {0xC0, 0x03, 0xFF, 0xFF, 0xC0, 0x03,
                                 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF};
    const uint8_t *row1 = src.data + 4;
    const uint8_t *row2 = src.data + 8;
    for (int i = 0; i < 12; ++i) {
        andtest::setBit(want.data(), 2 + i, andtest::bitOf(row1, 5 + i));
        andtest::setBit(want.data() + 4, 2 + i, andtest::bitOf(row2, 5 + i));
    }
    EXPECT_EQ(dst.bytes(), want);
    EXPECT_TRUE(rmgtest::reports().empty());
}

// ---------------------------------------------------------------------------
// Whole images and the word paths
// ---------------------------------------------------------------------------

TEST_F(AndSTest, AWholeImageOfExactlyEightBytesWithAlign8StaysUnchanged) {
    rmgtest::inEveryForm([&](int) {
        Image src(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 8, 1, 5, 1);
        Image dst(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 8, 1, 5, 2);
        ASSERT_EQ(dst.image->imageSize, 8);
        const std::vector<uint8_t> before = dst.bytes();
        rmgAndS(src.image, dst.image, 0, nullptr);
        EXPECT_EQ(dst.bytes(), before);
        // Two rows: 16 bytes, two 8-byte words, both done, padding too.
        Image s2(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 8, 2, 5, 3);
        Image d2(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 8, 2, 5, 4);
        rmgAndS(s2.image, d2.image, 0xF0, nullptr);
        std::vector<uint8_t> want = s2.bytes();
        for (auto &b : want) b &= 0xF0;
        EXPECT_EQ(d2.bytes(), want);
        // 24 bytes (an odd count of 8-byte words): all three.
        Image s3(2, RMG_DEPTH_16S, RMG_DATA_PIXEL, 8, 3, 2, 5);
        Image d3(2, RMG_DEPTH_16S, RMG_DATA_PIXEL, 8, 3, 2, 6);
        ASSERT_EQ(d3.image->imageSize, 24);
        rmgAndS(s3.image, d3.image, 0x00FF, nullptr);
        want = s3.bytes();
        for (size_t k = 0; k < want.size(); ++k) want[k] = k % 2 ? 0 : want[k];
        EXPECT_EQ(d3.bytes(), want);
    });
}

// A whole image of one 4-byte word with align 4: the word gets its
// result and nothing in front of the buffer is touched (the buffer is
// exactly 4 bytes; the address sanitizer watches it).
TEST_F(AndSTest, AWholeImageOfOneFourByteWordStaysInsideItsBuffer) {
    rmgtest::inEveryForm([&](int) {
        Image src(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 1, 3, 1);
        Image dst(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 1, 3, 2);
        ASSERT_EQ(dst.image->imageSize, 4);
        src.fillFrom({0x12, 0x34, 0x56, 0x78});
        rmgAndS(src.image, dst.image, 0x0F, nullptr);
        EXPECT_EQ(dst.bytes(), (std::vector<uint8_t>{0x02, 0x04, 0x06, 0x08}));
        // The same in place, and for a 32-bit pixel.
        rmgAndS(src.image, src.image, 0xF0, nullptr);
        EXPECT_EQ(src.bytes(), (std::vector<uint8_t>{0x10, 0x30, 0x50, 0x70}));
        Image s32(1, RMG_DEPTH_32S, RMG_DATA_PIXEL, 4, 1, 1, 3);
        Image d32(1, RMG_DEPTH_32S, RMG_DATA_PIXEL, 4, 1, 1, 4);
        s32.fillFrom({0xFF, 0xFF, 0xFF, 0xFF});
        rmgAndS(s32.image, d32.image, 0x01020304, nullptr);
        EXPECT_EQ(d32.bytes(), (std::vector<uint8_t>{0x04, 0x03, 0x02, 0x01}));
    });
}

TEST_F(AndSTest, WholeImagesCombineTheRowPadding) {
    // 3 columns of 16 bits, align 4: 8 bytes a row, 2 of them padding.
    Image src(1, RMG_DEPTH_16U, RMG_DATA_PIXEL, 4, 2, 3, 1);
    Image dst(1, RMG_DEPTH_16U, RMG_DATA_PIXEL, 4, 2, 3, 2);
    src.fillFrom(std::vector<uint8_t>(16, 0xFF));
    rmgAndS(src.image, dst.image, 0x8001, nullptr);
    EXPECT_EQ(dst.bytes(), (std::vector<uint8_t>{1, 0x80, 1, 0x80, 1, 0x80, 1, 0x80, 1, 0x80, 1,
                                                 0x80, 1, 0x80, 1, 0x80}));
    // A ROI that doesn't cover the image keeps the padding.
    dst.fillFrom(std::vector<uint8_t>(16, 0));
    src.setRoi(0, 0, 0, 2, 2);
    dst.setRoi(0, 0, 0, 2, 3);
    rmgAndS(src.image, dst.image, 0x8001, nullptr);
    EXPECT_EQ(dst.bytes(),
              (std::vector<uint8_t>{1, 0x80, 1, 0x80, 0, 0, 0, 0, 1, 0x80, 1, 0x80, 0, 0, 0, 0}));
    // Without the destination's ROI its coi is 0 beside the source's coi 1
    // (a one-channel image with a ROI): each result goes one element
    // early, the first one, in front of the buffer, nowhere.
    dst.fillFrom(std::vector<uint8_t>(16, 0));
    dst.clearRoi();
    rmgAndS(src.image, dst.image, 0x8001, nullptr);
    EXPECT_EQ(dst.bytes(),
              (std::vector<uint8_t>{1, 0x80, 0, 0, 0, 0, 1, 0x80, 1, 0x80, 0, 0, 0, 0, 0, 0}));
}

// ---------------------------------------------------------------------------
// The source's coi decides the path
// ---------------------------------------------------------------------------

TEST_F(AndSTest, PixelOrderCoiUsesTheChannelOfEachImage) {
    rmgtest::inEveryForm([&](int) {
        Image src(3, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 2, 40, 1);
        Image dst(4, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 2, 40, 2);
        src.setRoi(2, 0, 0, 2, 40);
        dst.setRoi(4, 1, 0, 2, 39);
        const std::vector<uint8_t> before = dst.bytes();
        rmgAndS(src.image, dst.image, 0x1F3, nullptr);
        std::vector<uint8_t> want = before;
        for (int y = 0; y < 2; ++y)
            for (int i = 0; i < 39; ++i)
                want[static_cast<size_t>(y * 160 + (1 + i) * 4 + 3)] =
                    static_cast<uint8_t>(src.data[y * 120 + i * 3 + 1] & 0xF3);
        EXPECT_EQ(dst.bytes(), want);
    });
}

// A pixel-order source with a coi beside a one-channel destination without
// ROI: the destination's coi is 0 and its channel index -1, so each result
// lands on the element before its pixel; the one in front of the buffer is
// not written.
TEST_F(AndSTest, APixelOrderDestinationWithoutRoiTakesEachResultOneElementEarly) {
    Image src(2, RMG_DEPTH_16U, RMG_DATA_PIXEL, 4, 2, 3, 1);
    Image dst(1, RMG_DEPTH_16U, RMG_DATA_PIXEL, 4, 2, 3, 2);
    // Source rows of 3 pixels of 2 channels: 12 bytes, no padding.
    const uint16_t s[12] = {1, 0x101, 2, 0x202, 3, 0x303, 4, 0x404, 5, 0x505, 6, 0x606};
    std::memcpy(src.data, s, 24);
    // Destination rows: 3 elements and one of padding.
    const uint16_t d[8] = {0xAAAA, 0xBBBB, 0xCCCC, 0xDDDD, 0xEEEE, 0xFFFF, 0x9999, 0x8888};
    std::memcpy(dst.data, d, 16);
    src.setRoi(2, 0, 0, 2, 3);
    rmgAndS(src.image, dst.image, 0xFF0F, nullptr);
    uint16_t have[8];
    std::memcpy(have, dst.data, 16);
    // Row 0: pixel 0's result would go in front of the buffer; pixels 1
    // and 2 go to elements 0 and 1. Row 1: pixel 0 to the padding element
    // of row 0, pixels 1 and 2 to elements 0 and 1 of row 1.
    const uint16_t want[8] = {0x0202, 0x0303, 0xCCCC, 0x0404, 0x0505, 0x0606, 0x9999, 0x8888};
    EXPECT_EQ(std::vector<uint16_t>(have, have + 8), std::vector<uint16_t>(want, want + 8));
    EXPECT_TRUE(rmgtest::reports().empty());
    // With a ROI of coi 0 the one-channel destination has coi 1.
    std::memcpy(dst.data, d, 16);
    dst.setRoi(0, 0, 0, 2, 3);
    rmgAndS(src.image, dst.image, 0xFF0F, nullptr);
    std::memcpy(have, dst.data, 16);
    const uint16_t want1[8] = {0x0101, 0x0202, 0x0303, 0xDDDD, 0x0404, 0x0505, 0x0606, 0x8888};
    EXPECT_EQ(std::vector<uint16_t>(have, have + 8), std::vector<uint16_t>(want1, want1 + 8));
}

// In plane order the same destination would be the plane before its
// first, wholly in front of the buffer: nothing is written.
TEST_F(AndSTest, APlaneOrderDestinationWithoutRoiBesideASourceCoiIsLeftAlone) {
    Image src(3, RMG_DEPTH_8U, RMG_DATA_PLANE, 4, 2, 5, 1);
    Image dst(1, RMG_DEPTH_8U, RMG_DATA_PLANE, 4, 2, 5, 2);
    src.setRoi(2, 0, 0, 2, 5);
    const std::vector<uint8_t> before = dst.bytes();
    rmgAndS(src.image, dst.image, 0xFF, nullptr);
    EXPECT_EQ(dst.bytes(), before);
    EXPECT_TRUE(rmgtest::reports().empty());
    // With a ROI it gets plane 2 of the source.
    dst.setRoi(0, 0, 0, 2, 5);
    rmgAndS(src.image, dst.image, 0x3C, nullptr);
    for (int y = 0; y < 2; ++y)
        for (int x = 0; x < 5; ++x) EXPECT_EQ(dst.data[y * 8 + x], src.data[16 + y * 8 + x] & 0x3C);
}

// Without a source coi the destination's coi is not looked at: every
// source plane goes to the destination's plane of the same index.
TEST_F(AndSTest, WithoutASourceCoiTheDestinationsCoiIsNotUsed) {
    Image src(1, RMG_DEPTH_8U, RMG_DATA_PLANE, 4, 2, 4, 1);
    Image dst(3, RMG_DEPTH_8U, RMG_DATA_PLANE, 4, 2, 4, 2);
    dst.setRoi(3, 0, 0, 2, 4);
    const std::vector<uint8_t> before = dst.bytes();
    rmgAndS(src.image, dst.image, 0x7F, nullptr);
    std::vector<uint8_t> want = before;
    for (int k = 0; k < 8; ++k) want[static_cast<size_t>(k)] = src.data[k] & 0x7F;
    EXPECT_EQ(dst.bytes(), want);
    // In pixel order the rows of the source's one channel start at the
    // destination's pixel, its first channel.
    Image ps(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 1, 4, 3);
    Image pd(3, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 1, 4, 4);
    pd.setRoi(2, 0, 0, 1, 4);
    const std::vector<uint8_t> pbefore = pd.bytes();
    rmgAndS(ps.image, pd.image, 0xFF, nullptr);
    std::vector<uint8_t> pwant = pbefore;
    for (int k = 0; k < 4; ++k) pwant[static_cast<size_t>(k)] = ps.data[k];
    EXPECT_EQ(pd.bytes(), pwant);
}

TEST_F(AndSTest, PlaneOrderWorksOnEveryPlaneOrOnTheCoisPlane) {
    Image src(3, RMG_DEPTH_32S, RMG_DATA_PLANE, 8, 3, 3, 1);
    Image dst(3, RMG_DEPTH_32S, RMG_DATA_PLANE, 4, 4, 5, 2);
    dst.setRoi(0, 2, 1, 3, 3);
    const std::vector<uint8_t> srcBytes = src.bytes();
    std::vector<uint8_t> want =
        andtest::andSModel(src.image, srcBytes, dst.image, dst.bytes(), 0x7FFF00FF);
    rmgAndS(src.image, dst.image, 0x7FFF00FF, nullptr);
    EXPECT_EQ(dst.bytes(), want);
    // Spot check: plane 2, destination (2, 1) from source (0, 0).
    int32_t s, d;
    std::memcpy(&s, src.data + 2 * 3 * 16, 4);
    std::memcpy(&d, dst.data + 2 * 4 * 20 + 20 + 8, 4);
    EXPECT_EQ(d, s & 0x7FFF00FF);

    src.setRoi(3, 1, 0, 2, 2);
    dst.setRoi(1, 0, 0, 4, 5);
    want = andtest::andSModel(src.image, srcBytes, dst.image, dst.bytes(), -1);
    rmgAndS(src.image, dst.image, -1, nullptr);
    EXPECT_EQ(dst.bytes(), want);
    std::memcpy(&s, src.data + 2 * 3 * 16 + 4, 4);
    std::memcpy(&d, dst.data, 4);
    EXPECT_EQ(d, s);
}

TEST_F(AndSTest, RegionsAreCutAtTheEdgeAndTheSmallerCounts) {
    Image src(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 4, 10, 1);
    Image dst(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 5, 7, 2);
    src.setRoi(0, 6, 2, 9, 9);  // cut to 4 columns, 2 rows
    // A one-channel image with a ROI has coi 1; the destination gets a ROI
    // too, so that its coi is 1 as well (see the test above for coi 0).
    dst.setRoi(0, 0, 0, 5, 7);
    const std::vector<uint8_t> before = dst.bytes();
    rmgAndS(src.image, dst.image, 0xFF, nullptr);
    std::vector<uint8_t> want = before;
    for (int y = 0; y < 2; ++y)
        for (int x = 0; x < 4; ++x)
            want[static_cast<size_t>(y * 8 + x)] = src.data[(y + 2) * 12 + 6 + x];
    EXPECT_EQ(dst.bytes(), want);
    // A ROI that starts beyond the edge leaves nothing to do.
    src.setRoi(0, 10, 0, 2, 2);
    rmgAndS(src.image, dst.image, 0, nullptr);
    EXPECT_EQ(dst.bytes(), want);
    EXPECT_TRUE(rmgtest::reports().empty());
}

// The header's widthStep is what the rows follow; a widthStep that the
// application has made larger than the buffer allows is followed only as
// far as the buffer reaches.
TEST_F(AndSTest, RowsBeyondTheBufferAreLeftOut) {
    Image src(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 3, 4, 1);
    Image dst(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 3, 4, 2);
    src.setRoi(0, 1, 0, 3, 3);
    dst.setRoi(0, 0, 0, 3, 4);
    dst.image->widthStep = 6;  // rows at 0, 6, 12: the third is outside
    const std::vector<uint8_t> before = dst.bytes();
    rmgAndS(src.image, dst.image, 0xFF, nullptr);
    std::vector<uint8_t> want = before;
    for (int y = 0; y < 2; ++y)
        for (int x = 0; x < 3; ++x) want[static_cast<size_t>(y * 6 + x)] = src.data[y * 4 + 1 + x];
    EXPECT_EQ(dst.bytes(), want);
    dst.image->widthStep = 4;
}

TEST_F(AndSTest, SourceEqualToDestination) {
    rmgtest::inEveryForm([&](int) {
        Image a(3, RMG_DEPTH_16S, RMG_DATA_PIXEL, 8, 5, 33, 1);
        a.setRoi(2, 3, 1, 3, 27);
        std::vector<uint8_t> bytes = a.bytes();
        const std::vector<uint8_t> want =
            andtest::andSModel(a.image, bytes, a.image, bytes, 0x0FF0);
        rmgAndS(a.image, a.image, 0x0FF0, nullptr);
        EXPECT_EQ(a.bytes(), want);
    });
}

}  // namespace
