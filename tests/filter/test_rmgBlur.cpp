// rmgBlur: the checks in order, and the concrete cases of the box average.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <vector>

#include "filter/blurtest.h"
#include "filter/rmgBlur.h"
#include "geometry/mirrortest.h"
#include "rmg.h"
#include "support/rmgtest.h"

namespace {

using blurtest::Bytes;
using blurtest::elementAt;
using blurtest::evenImage;
using blurtest::setElement;
using mirrortest::bufferOf;
using mirrortest::freeImage;
using mirrortest::makeImage;

class BlurTest : public rmgtest::ErrorStateTest {};

void expectOneReport(const std::string &text) {
    ASSERT_EQ(rmgtest::reports().size(), 1u);
    const rmgtest::Report &r = rmgtest::reports()[0];
    EXPECT_EQ(r.status, RMG_StsBadArg);
    EXPECT_EQ(r.funcName, "rmgBlur");
    EXPECT_EQ(r.fileName, "rmgBlur");
    EXPECT_EQ(r.context, text);
    EXPECT_EQ(rmgGetErrStatus(), RMG_StsBadArg);
}

TEST_F(BlurTest, NullSourceGivesTheHeaderText) {
    RmgImage *dst = evenImage(RMG_DEPTH_8U, 4, 4, 9);
    const Bytes before = bufferOf(dst);
    rmgBlur(nullptr, dst, 3, 3, 1, 1, nullptr);
    expectOneReport("Image header is null                                                  \n");
    EXPECT_EQ(bufferOf(dst), before);
    freeImage(dst);
}

TEST_F(BlurTest, BadDestinationIsTestedAfterTheSource) {
    RmgImage *src = evenImage(RMG_DEPTH_8U, 4, 4, 9);
    RmgImage *dst = evenImage(RMG_DEPTH_8U, 4, 4, 9);
    dst->align = 16;
    wrmgBlur(src, dst, 3, 3, 1, 1, nullptr);
    expectOneReport("Image align is invalid                                                \n");
    dst->align = 4;
    freeImage(src);
    freeImage(dst);
}

TEST_F(BlurTest, ChecksInOrder) {
    RmgImage *a8 = evenImage(RMG_DEPTH_8U, 4, 4, 9);
    RmgImage *b8 = evenImage(RMG_DEPTH_8U, 4, 4, 9);
    RmgImage *a16 = evenImage(RMG_DEPTH_16U, 4, 4, 9);
    RmgImage *bits = rmgCreateImageHeader(1, 0, RMG_DEPTH_1U, "GRAY", "GRAY", 0, 0, 4, 8, 8,
                                          nullptr, nullptr, nullptr);
    rmgAllocateImage(bits, 0);
    RmgImage *bits2 = rmgCreateImageHeader(1, 0, RMG_DEPTH_1U, "GRAY", "GRAY", 0, 0, 4, 8, 8,
                                           nullptr, nullptr, nullptr);
    rmgAllocateImage(bits2, 0);
    const Bytes before = bufferOf(b8);
    struct Case {
        RmgImage *src, *dst;
        int nRows, nCols, ax, ay;
        const char *text;
    } cases[] = {
        {a8, a16, -1, 3, -1, 1, "(srcImage->depth!=dstImage->depth)"},
        {bits, bits2, -1, 3, 1, 1, "(srcImage->depth==1)"},
        {a8, b8, -1, 3, -1, 1, "(nRows<0||nCols<0)"},
        {a8, b8, 3, -1, 1, 1, "(nRows<0||nCols<0)"},
        {a8, b8, 3, 3, -1, 1, "(anchorX<0||anchorY<0)"},
        {a8, b8, 3, 3, 1, -1, "(anchorX<0||anchorY<0)"},
    };
    for (const Case &c : cases) {
        rmgtest::reports().clear();
        rmgBlur(c.src, c.dst, c.nRows, c.nCols, c.ax, c.ay, nullptr);
        SCOPED_TRACE(c.text);
        expectOneReport(c.text);
    }
    EXPECT_EQ(bufferOf(b8), before);
    freeImage(a8);
    freeImage(b8);
    freeImage(a16);
    rmgDeallocate(bits, RMG_DEALLOC_ALL);
    rmgDeallocate(bits2, RMG_DEALLOC_ALL);
}

TEST_F(BlurTest, ThreeByThreeGivesAnEvenAreaBack) {
    EXPECT_GT(static_cast<double>(blurtest::scaleOf(3, 3)), 1.0 / 9.0);
    for (int v : {0, 1, 100, 254, 255}) {
        RmgImage *src = evenImage(RMG_DEPTH_8U, 5, 6, v);
        rmgSetBorderMode(src, RMG_BORDER_REPLICATE, 15, 0);
        RmgImage *dst = evenImage(RMG_DEPTH_8U, 5, 6, 17);
        rmgBlur(src, dst, 3, 3, 1, 1, nullptr);
        EXPECT_EQ(blurScale, blurtest::scaleOf(3, 3));
        for (int y = 0; y < 5; ++y)
            for (int x = 0; x < 6; ++x) EXPECT_EQ(elementAt(dst, x, y), v) << x << "," << y;
        freeImage(src);
        freeImage(dst);
    }
    EXPECT_TRUE(rmgtest::reports().empty());
}

TEST_F(BlurTest, FiveByFiveOnAnEvenAreaOf100Gives99) {
    EXPECT_LT(static_cast<double>(blurtest::scaleOf(5, 5)), 1.0 / 25.0);
    RmgImage *src = evenImage(RMG_DEPTH_8U, 7, 9, 100);
    rmgSetBorderMode(src, RMG_BORDER_REPLICATE, 15, 0);
    RmgImage *dst = evenImage(RMG_DEPTH_8U, 7, 9, 0);
    rmgBlur(src, dst, 5, 5, 2, 2, nullptr);
    for (int y = 0; y < 7; ++y)
        for (int x = 0; x < 9; ++x) EXPECT_EQ(elementAt(dst, x, y), 99);
    freeImage(src);
    freeImage(dst);
}

TEST_F(BlurTest, SourceEqualToDestination) {
    RmgImage *image = makeImage({3, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4}, 9, 11, 5);
    rmgSetBorderMode(image, RMG_BORDER_REFLECT, 15, 0);
    const Bytes before = bufferOf(image);
    RmgImage *copy = makeImage({3, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4}, 9, 11, 5);
    rmgSetBorderMode(copy, RMG_BORDER_REFLECT, 15, 0);
    const Bytes expected = blurtest::modelBlur(copy, image, before, {3, 3, 1, 1});
    rmgBlur(image, image, 3, 3, 1, 1, nullptr);
    EXPECT_EQ(bufferOf(image), expected);
    freeImage(image);
    freeImage(copy);
}

TEST_F(BlurTest, AnchorAtZeroAveragesToTheRightAndBelow) {
    // One row 10 20 30 40 50, border replicated: the pixel at x averages
    // columns x to x + 2 (scale 1/3 rounded up, so the exact values stay).
    RmgImage *src = evenImage(RMG_DEPTH_8U, 1, 5, 0);
    for (int x = 0; x < 5; ++x) setElement(src, x, 0, 10 * (x + 1));
    rmgSetBorderMode(src, RMG_BORDER_REPLICATE, 15, 0);
    RmgImage *dst = evenImage(RMG_DEPTH_8U, 1, 5, 0);
    rmgBlur(src, dst, 1, 3, 0, 0, nullptr);
    const int expected[5] = {20, 30, 40, 46, 50};  // 140/3 = 46.67
    for (int x = 0; x < 5; ++x) EXPECT_EQ(elementAt(dst, x, 0), expected[x]) << x;
    freeImage(src);
    freeImage(dst);
}

TEST_F(BlurTest, AnchorBeyondTheBoxReadsLeftOfThePixel) {
    // anchorX 3 with a box of 2: the pixel at x averages columns x - 3 and
    // x - 2; left of the image the constant border 0.
    RmgImage *src = evenImage(RMG_DEPTH_8U, 1, 4, 0);
    for (int x = 0; x < 4; ++x) setElement(src, x, 0, 10 * (x + 1));
    RmgImage *dst = evenImage(RMG_DEPTH_8U, 1, 4, 77);
    rmgBlur(src, dst, 1, 2, 3, 0, nullptr);
    EXPECT_TRUE(rmgtest::reports().empty());
    const int expected[4] = {0, 0, 5, 15};
    for (int x = 0; x < 4; ++x) EXPECT_EQ(elementAt(dst, x, 0), expected[x]) << x;
    freeImage(src);
    freeImage(dst);
}

TEST_F(BlurTest, EmptyBoxStoresTheIntegerIndefiniteValue) {
    for (unsigned int depth : {RMG_DEPTH_8U, RMG_DEPTH_8S, RMG_DEPTH_16U, RMG_DEPTH_16S,
                               RMG_DEPTH_32S}) {
        for (auto box : {std::pair<int, int>{0, 3}, {3, 0}, {0, 0}}) {
            RmgImage *src = evenImage(depth, 3, 4, 5);
            RmgImage *dst = evenImage(depth, 3, 4, 9);
            rmgBlur(src, dst, box.first, box.second, 0, 0, nullptr);
            EXPECT_TRUE(std::isinf(blurScale));
            const int32_t expected = depth == RMG_DEPTH_32S ? INT32_MIN : 0;
            for (int y = 0; y < 3; ++y)
                for (int x = 0; x < 4; ++x) EXPECT_EQ(elementAt(dst, x, y), expected) << depth;
            freeImage(src);
            freeImage(dst);
        }
    }
    EXPECT_TRUE(rmgtest::reports().empty());
}

TEST_F(BlurTest, SignedBytesTruncateTowardsZero) {
    // -1 and -2 over a box of 2: -1.5 gives -1.
    RmgImage *src = evenImage(RMG_DEPTH_8S, 1, 2, 0);
    setElement(src, 0, 0, -1);
    setElement(src, 1, 0, -2);
    RmgImage *dst = evenImage(RMG_DEPTH_8S, 1, 2, 0);
    rmgBlur(src, dst, 1, 2, 0, 0, nullptr);
    EXPECT_EQ(elementAt(dst, 0, 0), -1);
    EXPECT_EQ(dst->imageData[0], 0xFF);
    freeImage(src);
    freeImage(dst);
}

TEST_F(BlurTest, CoiOnOneImageFiltersTheOverlap) {
    for (bool onSource : {true, false}) {
        RmgImage *src = makeImage({3, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4}, 6, 7, 11);
        RmgImage *dst = makeImage({3, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4}, 6, 7, 12);
        mirrortest::setRoi(onSource ? src : dst, 2, 0, 0, 6, 7);
        const Bytes before = bufferOf(dst);
        const Bytes expected = blurtest::modelBlur(src, dst, before, {3, 3, 1, 1});
        rmgBlur(src, dst, 3, 3, 1, 1, nullptr);
        EXPECT_EQ(blurFirstChannel, 2);
        EXPECT_EQ(blurLastChannel, 2);
        const Bytes after = bufferOf(dst);
        EXPECT_EQ(after, expected);
        // Channels 1 and 3 as they were.
        for (int y = 0; y < 6; ++y)
            for (int x = 0; x < 7; ++x)
                for (int ch : {0, 2}) {
                    const size_t off = size_t(y) * dst->widthStep + x * 3 + ch;
                    EXPECT_EQ(after[off], before[off]);
                }
        freeImage(src);
        freeImage(dst);
    }
}

TEST_F(BlurTest, CrossingChannelsWriteNothing) {
    RmgImage *src = makeImage({3, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4}, 6, 7, 11);
    RmgImage *dst = makeImage({3, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4}, 6, 7, 12);
    mirrortest::setRoi(src, 2, 0, 0, 6, 7);
    mirrortest::setRoi(dst, 3, 0, 0, 6, 7);
    const Bytes before = bufferOf(dst);
    rmgBlur(src, dst, 3, 3, 1, 1, nullptr);
    EXPECT_EQ(bufferOf(dst), before);
    EXPECT_TRUE(rmgtest::reports().empty());
    freeImage(src);
    freeImage(dst);
}

TEST_F(BlurTest, OneByOneCopiesFromTheAnchoredPlace) {
    RmgImage *src = makeImage({1, RMG_DEPTH_16S, RMG_DATA_PIXEL, 8}, 5, 6, 3);
    RmgImage *dst = makeImage({1, RMG_DEPTH_16S, RMG_DATA_PIXEL, 8}, 5, 6, 4);
    rmgSetBorderMode(src, RMG_BORDER_WRAP, 15, 0);
    rmgBlur(src, dst, 1, 1, 1, 0, nullptr);
    for (int y = 0; y < 5; ++y)
        for (int x = 0; x < 6; ++x)
            EXPECT_EQ(elementAt(dst, x, y), elementAt(src, (x + 5) % 6, y));
    freeImage(src);
    freeImage(dst);
}

TEST_F(BlurTest, ThirtyTwoBitSumsDriftInFloat) {
    // Column sums held as floats: 16777217 comes out as 16777216, so a 1 x 2
    // box over two of them gives 16777216, not their value.
    RmgImage *src = evenImage(RMG_DEPTH_32S, 1, 2, 16777217);
    RmgImage *dst = evenImage(RMG_DEPTH_32S, 1, 2, 0);
    rmgBlur(src, dst, 1, 2, 0, 0, nullptr);
    EXPECT_EQ(elementAt(dst, 0, 0), 16777216);
    freeImage(src);
    freeImage(dst);
}

TEST_F(BlurTest, DestinationWidthStepPastItsBufferIsNotWritten) {
    // The application made widthStep larger than the buffer's rows: the
    // rows that would lie past imageSize are left out.
    RmgImage *src = evenImage(RMG_DEPTH_8U, 4, 4, 9);
    rmgSetBorderMode(src, RMG_BORDER_REPLICATE, 15, 0);
    RmgImage *dst = evenImage(RMG_DEPTH_8U, 4, 4, 1);
    dst->widthStep = 8;  // the buffer holds 4 rows of 4
    rmgBlur(src, dst, 3, 3, 1, 1, nullptr);
    EXPECT_EQ(dst->imageData[0], 9);
    EXPECT_EQ(dst->imageData[8], 9);
    EXPECT_EQ(dst->imageData[4], 1);
    dst->widthStep = 4;
    freeImage(src);
    freeImage(dst);
}

}  // namespace
