// rmgAnd: the opening checks in their order, the entry, the flat path and
// the cases over three images, the 1u paths, the plain path decided without
// srcImageB, and the byte kernels of AND, OR and XOR, with concrete values.
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

class AndTest : public rmgtest::ErrorStateTest {};

void expectOneReport(const std::string &context) {
    addstest::expectOneReport("rmgAnd", "rmgand", context);
}

std::vector<uint8_t> andOf(const std::vector<uint8_t> &a, const std::vector<uint8_t> &b) {
    std::vector<uint8_t> v(a.size());
    for (size_t k = 0; k < v.size(); ++k) v[k] = static_cast<uint8_t>(a[k] & b[k]);
    return v;
}

// ---------------------------------------------------------------------------
// Checks
// ---------------------------------------------------------------------------

TEST_F(AndTest, HeadersAreTestedInArgumentOrder) {
    Image a(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 2, 2, 1);
    Image b(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 2, 2, 2);
    Image d(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 2, 2, 3);
    b.image->align = 16;
    d.setRoi(0, -1, 0, 1, 1);
    rmgAnd(nullptr, b.image, d.image, nullptr);
    expectOneReport("Image header is null                                                  \n");
    rmgtest::reports().clear();
    rmgAnd(a.image, b.image, d.image, nullptr);
    expectOneReport("Image align is invalid                                                \n");
    rmgtest::reports().clear();
    b.image->align = 4;
    rmgAnd(a.image, b.image, d.image, nullptr);
    expectOneReport("ROI offset is invalid                                                 \n");
}

TEST_F(AndTest, ComparisonsComeInTheirOrder) {
    Image a(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 2, 2, 1);
    Image b(1, RMG_DEPTH_16U, RMG_DATA_PLANE, 4, 2, 2, 2);
    Image d(1, RMG_DEPTH_8S, RMG_DATA_PLANE, 4, 2, 2, 3);
    const std::vector<uint8_t> before = d.bytes();
    rmgAnd(a.image, b.image, d.image, nullptr);
    expectOneReport("(srcImageA->depth != dstImage->depth)");
    EXPECT_EQ(d.bytes(), before);

    auto check = [&](const Image &x, const Image &y, const Image &z, const char *text) {
        rmgtest::reports().clear();
        rmgAnd(x.image, y.image, z.image, nullptr);
        expectOneReport(text);
    };
    Image a8(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 2, 2, 1);
    Image b16(1, RMG_DEPTH_16U, RMG_DATA_PIXEL, 4, 2, 2, 2);
    Image d8(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 2, 2, 3);
    check(a8, b16, d8, "(srcImageB->depth != dstImage->depth)");
    Image aPlane(1, RMG_DEPTH_8U, RMG_DATA_PLANE, 4, 2, 2, 1);
    Image bPlane(1, RMG_DEPTH_8U, RMG_DATA_PLANE, 4, 2, 2, 2);
    check(aPlane, bPlane, d8, "(srcImageA->dataOrder != dstImage->dataOrder)");
    check(a8, bPlane, d8, "(srcImageB->dataOrder != dstImage->dataOrder)");
    Image a3(3, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 2, 2, 1);
    Image b3(3, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 2, 2, 2);
    Image d3(3, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 2, 2, 3);
    check(a8, b3, d3, "(nChSrcA != nChDst)");
    check(a3, b3, d8, "(nChSrcA != nChDst)");
    check(a3, a8, d3, "(nChSrcB != nChDst)");
    // A coi makes a region one channel.
    a3.setRoi(2, 0, 0, 2, 2);
    check(a3, b3, d3, "(nChSrcA != nChDst)");
    d3.setRoi(1, 0, 0, 2, 2);
    check(a3, b3, d3, "(nChSrcB != nChDst)");
    rmgtest::reports().clear();
    rmgAnd(a3.image, a8.image, d3.image, nullptr);
    EXPECT_TRUE(rmgtest::reports().empty());
}

TEST_F(AndTest, TheEntryForwardsAndAnEarlierFailureDoesNotStopIt) {
    rmgSetErrStatus(RMG_StsBadFunc);
    Image a(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 1, 4, 1);
    Image b(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 1, 4, 2);
    Image d(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 1, 4, 3);
    a.fillFrom({0xF0, 0x0F, 0xFF, 0x33});
    b.fillFrom({0x3C, 0x3C, 0x81, 0xFF});
    wrmgAnd(a.image, b.image, d.image, nullptr);
    EXPECT_EQ(d.bytes(), (std::vector<uint8_t>{0x30, 0x0C, 0x81, 0x33}));
    EXPECT_TRUE(rmgtest::reports().empty());
    EXPECT_EQ(rmgGetErrStatus(), RMG_StsBadFunc);
    wrmgAnd(a.image, b.image, nullptr, nullptr);
    EXPECT_EQ(rmgtest::reports().size(), 1u);
}

// ---------------------------------------------------------------------------
// The flat path and the cases
// ---------------------------------------------------------------------------

TEST_F(AndTest, WholeImagesCombineEveryByteOfTheBuffers) {
    rmgtest::inEveryForm([&](int) {
        for (unsigned int depth :
             {RMG_DEPTH_8U, RMG_DEPTH_8S, RMG_DEPTH_16U, RMG_DEPTH_16S, RMG_DEPTH_32S}) {
            // Rows with padding: 5 pixels of 3 channels.
            Image a(3, depth, RMG_DATA_PIXEL, 8, 7, 5, 1);
            Image b(3, depth, RMG_DATA_PIXEL, 8, 7, 5, 2);
            Image d(3, depth, RMG_DATA_PIXEL, 8, 7, 5, 3);
            rmgAnd(a.image, b.image, d.image, nullptr);
            EXPECT_EQ(d.bytes(), andOf(a.bytes(), b.bytes())) << depth;
        }
    });
}

TEST_F(AndTest, ThirtyTwoBitWholeImagesWorkInWholeWords) {
    Image a(1, RMG_DEPTH_32S, RMG_DATA_PIXEL, 4, 1, 2, 1);
    Image b(1, RMG_DEPTH_32S, RMG_DATA_PIXEL, 4, 1, 2, 2);
    Image d(1, RMG_DEPTH_32S, RMG_DATA_PIXEL, 4, 1, 2, 3);
    const std::vector<uint8_t> before = d.bytes();
    // A hand-made imageSize of 7: one whole word.
    for (Image *image : {&a, &b, &d}) image->image->imageSize = 7;
    rmgAnd(a.image, b.image, d.image, nullptr);
    std::vector<uint8_t> want = before;
    for (int k = 0; k < 4; ++k) want[static_cast<size_t>(k)] = a.data[k] & b.data[k];
    EXPECT_EQ(std::vector<uint8_t>(d.data, d.data + 8), want);
    for (Image *image : {&a, &b, &d}) image->image->imageSize = 8;
}

TEST_F(AndTest, SourceAEqualToTheDestinationIsSafe) {
    rmgtest::inEveryForm([&](int) {
        Image a(2, RMG_DEPTH_16U, RMG_DATA_PIXEL, 4, 9, 61, 1);
        Image b(2, RMG_DEPTH_16U, RMG_DATA_PIXEL, 4, 9, 61, 2);
        const std::vector<uint8_t> aBytes = a.bytes();
        rmgAnd(a.image, b.image, a.image, nullptr);
        EXPECT_EQ(a.bytes(), andOf(aBytes, b.bytes()));
        // With regions, and srcImageB the destination as well.
        a.fillFrom(aBytes);
        a.setRoi(0, 3, 2, 6, 50);
        b.setRoi(0, 1, 1, 8, 57);
        std::vector<uint8_t> want =
            andtest::andModel(a.image, aBytes, b.image, b.bytes(), a.image, aBytes);
        rmgAnd(a.image, b.image, a.image, nullptr);
        EXPECT_EQ(a.bytes(), want);
        const std::vector<uint8_t> bBytes = b.bytes();
        want = andtest::andModel(a.image, a.bytes(), b.image, bBytes, b.image, bBytes);
        rmgAnd(a.image, b.image, b.image, nullptr);
        EXPECT_EQ(b.bytes(), want);
    });
}

TEST_F(AndTest, CasesOverThreeImages) {
    // Case C: one channel of each of three pixel-order images.
    Image a(3, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 2, 4, 1);
    Image b(2, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 2, 4, 2);
    Image d(4, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 2, 4, 3);
    a.setRoi(3, 0, 0, 2, 4);
    b.setRoi(1, 1, 0, 2, 3);
    d.setRoi(2, 0, 1, 1, 4);
    const std::vector<uint8_t> before = d.bytes();
    rmgAnd(a.image, b.image, d.image, nullptr);
    std::vector<uint8_t> want = before;
    for (int i = 0; i < 3; ++i)
        want[static_cast<size_t>(16 + i * 4 + 1)] =
            static_cast<uint8_t>(a.data[i * 3 + 2] & b.data[(1 + i) * 2]);
    EXPECT_EQ(d.bytes(), want);

    // Case B: one plane of each.
    Image pa(2, RMG_DEPTH_16S, RMG_DATA_PLANE, 4, 2, 3, 4);
    Image pb(3, RMG_DEPTH_16S, RMG_DATA_PLANE, 4, 2, 3, 5);
    Image pd(2, RMG_DEPTH_16S, RMG_DATA_PLANE, 4, 2, 3, 6);
    pa.setRoi(2, 0, 0, 2, 3);
    pb.setRoi(3, 0, 0, 2, 3);
    pd.setRoi(1, 0, 0, 2, 3);
    const std::vector<uint8_t> pbefore = pd.bytes();
    rmgAnd(pa.image, pb.image, pd.image, nullptr);
    std::vector<uint8_t> pwant = pbefore;
    for (int k = 0; k < 16; ++k)
        if (k % 8 < 6) pwant[static_cast<size_t>(k)] = pa.data[16 + k] & pb.data[32 + k];
    EXPECT_EQ(pd.bytes(), pwant);

    // Case D, and a combination outside the cases (a coi on two of three).
    Image qa(3, RMG_DEPTH_32S, RMG_DATA_PLANE, 8, 3, 3, 7);
    Image qb(3, RMG_DEPTH_32S, RMG_DATA_PLANE, 4, 4, 5, 8);
    Image qd(3, RMG_DEPTH_32S, RMG_DATA_PLANE, 4, 3, 4, 9);
    qd.setRoi(0, 1, 1, 2, 3);
    const std::vector<uint8_t> qwant =
        andtest::andModel(qa.image, qa.bytes(), qb.image, qb.bytes(), qd.image, qd.bytes());
    rmgAnd(qa.image, qb.image, qd.image, nullptr);
    EXPECT_EQ(qd.bytes(), qwant);
    int32_t ea, eb, ed;
    std::memcpy(&ea, qa.data + 2 * 48, 4);           // plane 2, (0, 0)
    std::memcpy(&eb, qb.data + 2 * 80, 4);           // plane 2, (0, 0)
    std::memcpy(&ed, qd.data + 2 * 48 + 16 + 4, 4);  // plane 2, (1, 1)
    EXPECT_EQ(ed, ea & eb);

    Image ra(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 2, 4, 1);
    Image rb(3, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 2, 4, 2);
    Image rd(3, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 2, 4, 3);
    rb.setRoi(1, 0, 0, 2, 4);
    rd.setRoi(1, 0, 0, 2, 4);
    const std::vector<uint8_t> rbefore = rd.bytes();
    rmgAnd(ra.image, rb.image, rd.image, nullptr);
    EXPECT_EQ(rd.bytes(), rbefore);
    EXPECT_TRUE(rmgtest::reports().empty());
}

TEST_F(AndTest, ImagesOfDifferentSizesWorkOnTheSmallestRegion) {
    rmgtest::inEveryForm([&](int) {
        Image a(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 5, 70, 1);
        Image b(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 8, 4, 90, 2);
        Image d(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 6, 80, 3);
        const std::vector<uint8_t> before = d.bytes();
        rmgAnd(a.image, b.image, d.image, nullptr);
        std::vector<uint8_t> want = before;
        for (int y = 0; y < 4; ++y)
            for (int x = 0; x < 70; ++x)
                want[static_cast<size_t>(y * 80 + x)] =
                    static_cast<uint8_t>(a.data[y * 72 + x] & b.data[y * 96 + x]);
        EXPECT_EQ(d.bytes(), want);
    });
}

// ---------------------------------------------------------------------------
// 1u
// ---------------------------------------------------------------------------

TEST_F(AndTest, OneBitWholeImagesCombineThePaddingBytes) {
    // 10 columns, align 4: 4 bytes a row of which 2 and 6 bits are padding.
    Image a(1, RMG_DEPTH_1U, RMG_DATA_PIXEL, 4, 2, 10, 1);
    Image b(1, RMG_DEPTH_1U, RMG_DATA_PIXEL, 4, 2, 10, 2);
    Image d(1, RMG_DEPTH_1U, RMG_DATA_PIXEL, 4, 2, 10, 3);
    a.fillFrom({0xFF, 0xFF, 0xF0, 0x0F, 0xAA, 0x55, 0x33, 0xCC});
    b.fillFrom({0x0F, 0xF0, 0xFF, 0xFF, 0xFF, 0xFF, 0x3C, 0x3C});
    rmgAnd(a.image, b.image, d.image, nullptr);
    EXPECT_EQ(d.bytes(), (std::vector<uint8_t>{0x0F, 0xF0, 0xF0, 0x0F, 0xAA, 0x55, 0x30, 0x0C}));
}

TEST_F(AndTest, OneBitRegionsGoBitByBitAtTheirOwnPhases) {
    Image a(1, RMG_DEPTH_1U, RMG_DATA_PIXEL, 4, 2, 32, 1);
    Image b(1, RMG_DEPTH_1U, RMG_DATA_PIXEL, 4, 2, 32, 2);
    Image d(1, RMG_DEPTH_1U, RMG_DATA_PIXEL, 4, 2, 32, 3);
    a.fillFrom({0xFF, 0xFF, 0xFF, 0xFF, 0x0F, 0x0F, 0x0F, 0x0F});
    b.fillFrom({0xAA, 0xAA, 0xAA, 0xAA, 0xFF, 0xFF, 0xFF, 0xFF});
    d.fillFrom(std::vector<uint8_t>(8, 0));
    a.setRoi(0, 3, 0, 2, 9);
    b.setRoi(0, 0, 0, 2, 12);
    d.setRoi(0, 14, 0, 2, 10);
    rmgAnd(a.image, b.image, d.image, nullptr);
    // 9 bits a row into destination bits 14..22. Row 0: a all ones, b
    // bits 0..8 are 1,0,1,0,1,0,1,0,1. Row 1: a bits 3..11 of 0x0F 0x0F are
    // 0,1,1,1,1,0,0,0,0, b all ones.
    std::vector<uint8_t> want(8, 0);
    const bool row0[9] = {1, 0, 1, 0, 1, 0, 1, 0, 1};
    const bool row1[9] = {0, 1, 1, 1, 1, 0, 0, 0, 0};
    for (int i = 0; i < 9; ++i) {
        andtest::setBit(want.data(), 14 + i, row0[i]);
        andtest::setBit(want.data() + 4, 14 + i, row1[i]);
    }
    EXPECT_EQ(d.bytes(), want);
    EXPECT_EQ(want[1], 0x02);
}

// ---------------------------------------------------------------------------
// The plain path is decided by srcImageA and dstImage
// ---------------------------------------------------------------------------

// A tiled srcImageB beside untiled srcImageA and dstImage: the plain path
// runs and reads srcImageB through its imageData, which a tiled image
// doesn't have; nothing is read and nothing is written, and the
// call-back is never asked.
TEST_F(AndTest, ATiledSourceBBesideUntiledImagesIsNotWalked) {
    Image a(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 16, 16, 1);
    Image d(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 16, 16, 3);
    addstest::Tiled b(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 16, 16, 8, 8, 2);
    const std::vector<uint8_t> before = d.bytes();
    rmgAnd(a.image, b.image, d.image, nullptr);
    EXPECT_EQ(d.bytes(), before);
    EXPECT_TRUE(b.calls.empty());
    EXPECT_TRUE(rmgtest::reports().empty());
    // The row kernels on their own do the same.
    rmgAnd8(a.image, b.image, d.image);
    rmgAnd1u(a.image, b.image, d.image);
    EXPECT_EQ(d.bytes(), before);
}

// ---------------------------------------------------------------------------
// The byte kernels
// ---------------------------------------------------------------------------

TEST_F(AndTest, ByteKernelsOfAndOrAndXor) {
    rmgtest::inEveryForm([&](int) {
        std::vector<uint8_t> a(203), b(203);
        for (size_t k = 0; k < a.size(); ++k) {
            a[k] = static_cast<uint8_t>(k * 37);
            b[k] = static_cast<uint8_t>(k * 91 + 5);
        }
        std::vector<uint8_t> d(205, 0xEE);
        rmgAndBytes(a.data(), b.data(), d.data() + 1, 203);
        for (size_t k = 0; k < 203; ++k) ASSERT_EQ(d[k + 1], a[k] & b[k]);
        rmgOrBytes(a.data(), b.data(), d.data() + 1, 203);
        for (size_t k = 0; k < 203; ++k) ASSERT_EQ(d[k + 1], a[k] | b[k]);
        rmgXorBytes(a.data(), b.data(), d.data() + 1, 203);
        for (size_t k = 0; k < 203; ++k) ASSERT_EQ(d[k + 1], a[k] ^ b[k]);
        EXPECT_EQ(d[0], 0xEE);
        EXPECT_EQ(d[204], 0xEE);
        // A count of 0 or below does nothing.
        rmgAndBytes(a.data(), b.data(), d.data(), 0);
        rmgOrBytes(a.data(), b.data(), d.data(), -5);
        rmgXorBytes(a.data(), b.data(), d.data(), -1);
        EXPECT_EQ(d[0], 0xEE);
        // XOR in place takes each byte once.
        std::vector<uint8_t> x = a;
        rmgXorBytes(x.data(), b.data(), x.data(), 203);
        rmgXorBytes(x.data(), b.data(), x.data(), 203);
        EXPECT_EQ(x, a);
    });
}

}  // namespace
