// rmgMirror: the checks in their order, and the concrete cases of the
// rectangles, the three flips, one record, coi, bits and tilePoint.
#include <gtest/gtest.h>

#include <vector>

#include "geometry/mirrortest.h"
#include "rmg.h"
#include "support/rmgtest.h"

namespace {

using mirrortest::Bytes;
using mirrortest::freeImage;
using mirrortest::Kind;
using mirrortest::makeImage;
using mirrortest::setRoi;

class MirrorTest : public rmgtest::ErrorStateTest {};

const Kind k8{1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4};

// An 8u one-channel image of `rows` rows holding the given pixels.
RmgImage *grid8(int rows, int cols, const std::vector<int> &pixels) {
    RmgImage *image = makeImage(k8, rows, cols, 1);
    for (int r = 0; r < rows; ++r)
        for (int c = 0; c < cols; ++c)
            image->imageData[r * image->widthStep + c] = static_cast<unsigned char>(pixels[r * cols + c]);
    return image;
}

std::vector<int> pixelsOf(const RmgImage *image) {
    std::vector<int> out;
    for (int r = 0; r < image->height; ++r)
        for (int c = 0; c < image->width; ++c) out.push_back(image->imageData[r * image->widthStep + c]);
    return out;
}

void expectReport(const char *context) {
    ASSERT_EQ(1u, rmgtest::reports().size());
    const rmgtest::Report &r = rmgtest::reports()[0];
    EXPECT_EQ(RMG_StsBadArg, r.status);
    EXPECT_EQ("rmgMirror", r.funcName);
    EXPECT_EQ(context, r.context);
    EXPECT_EQ("rmgmirr", r.fileName);
    EXPECT_EQ(RMG_StsBadArg, rmgGetErrStatus());
}

TEST_F(MirrorTest, ABadSourceHeaderIsReportedByItsText) {
    RmgImage *dst = makeImage(k8, 2, 2, 1);
    const Bytes before = mirrortest::bufferOf(dst);
    wrmgMirror(nullptr, dst, 0, nullptr);
    expectReport("Image header is null                                                  \n");
    EXPECT_EQ(before, mirrortest::bufferOf(dst));
    freeImage(dst);
}

TEST_F(MirrorTest, ABadDestinationHeaderComesAfterTheSource) {
    RmgImage *src = makeImage(k8, 2, 2, 1);
    RmgImage *dst = makeImage(k8, 2, 2, 2);
    dst->align = 16;
    wrmgMirror(src, dst, 0, nullptr);
    expectReport("Image align is invalid                                                \n");
    dst->align = 4;
    freeImage(src);
    freeImage(dst);
}

TEST_F(MirrorTest, ChecksComeInTheirOrder) {
    RmgImage *src = makeImage({3, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4}, 2, 2, 1);
    RmgImage *dst16 = makeImage({1, RMG_DEPTH_16U, RMG_DATA_PIXEL, 4}, 2, 2, 2);
    RmgImage *dst1 = makeImage({1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4}, 2, 2, 3);
    RmgImage *dst3 = makeImage({3, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4}, 2, 2, 4);
    const Bytes before = mirrortest::bufferOf(dst3);

    // Depth before channels, channels before flipAxis, flipAxis before coi.
    wrmgMirror(src, dst16, 5, nullptr);
    expectReport("(srcImage->depth!=dstImage->depth)");
    rmgtest::reports().clear();
    wrmgMirror(src, dst1, 5, nullptr);
    expectReport("(srcImage->nChannels!=dstImage->nChannels)");
    rmgtest::reports().clear();
    setRoi(src, 1, 0, 0, 2, 2);
    wrmgMirror(src, dst3, 2, nullptr);
    expectReport("((flipAxis>1)||(flipAxis<-1))");
    rmgtest::reports().clear();
    wrmgMirror(src, dst3, -2, nullptr);
    expectReport("((flipAxis>1)||(flipAxis<-1))");
    rmgtest::reports().clear();
    wrmgMirror(src, dst3, 0, nullptr);
    expectReport("(coiSrc!=coiDst)");
    EXPECT_EQ(before, mirrortest::bufferOf(dst3));
    freeImage(src);
    freeImage(dst16);
    freeImage(dst1);
    freeImage(dst3);
}

TEST_F(MirrorTest, TheThreeLegalAxesPass) {
    for (int flip : {0, 1, -1}) {
        RmgImage *src = grid8(2, 3, {1, 2, 3, 4, 5, 6});
        RmgImage *dst = grid8(2, 3, {0, 0, 0, 0, 0, 0});
        wrmgMirror(src, dst, flip, nullptr);
        const std::vector<int> expected = flip == 0   ? std::vector<int>{4, 5, 6, 1, 2, 3}
                                          : flip == 1 ? std::vector<int>{3, 2, 1, 6, 5, 4}
                                                      : std::vector<int>{6, 5, 4, 3, 2, 1};
        EXPECT_EQ(expected, pixelsOf(dst)) << flip;
        freeImage(src);
        freeImage(dst);
    }
    EXPECT_TRUE(rmgtest::reports().empty());
    EXPECT_EQ(RMG_StsOk, rmgGetErrStatus());
}

TEST_F(MirrorTest, OneRecordWithOddAndEvenSizes) {
    // 3 x 3 and 2 x 4, each flip, in place.
    struct Case {
        int rows, cols, flip;
        std::vector<int> expected;
    };
    const Case cases[] = {
        {3, 3, 0, {7, 8, 9, 4, 5, 6, 1, 2, 3}},
        {3, 3, 1, {3, 2, 1, 6, 5, 4, 9, 8, 7}},
        {3, 3, -1, {9, 8, 7, 6, 5, 4, 3, 2, 1}},
        {2, 4, 0, {5, 6, 7, 8, 1, 2, 3, 4}},
        {2, 4, 1, {4, 3, 2, 1, 8, 7, 6, 5}},
        {2, 4, -1, {8, 7, 6, 5, 4, 3, 2, 1}},
    };
    for (const Case &c : cases) {
        std::vector<int> pixels;
        for (int i = 1; i <= c.rows * c.cols; ++i) pixels.push_back(i);
        for (unsigned int depth : {RMG_DEPTH_8U, RMG_DEPTH_16S, RMG_DEPTH_32S})
            for (int order : {RMG_DATA_PIXEL, RMG_DATA_PLANE}) {
                RmgImage *image = makeImage({1, depth, order, 4}, c.rows, c.cols, 9);
                const int e = static_cast<int>((depth & 0xFF) >> 3);
                for (int r = 0; r < c.rows; ++r)
                    for (int k = 0; k < c.cols; ++k)
                        for (int b = 0; b < e; ++b)
                            image->imageData[r * image->widthStep + k * e + b] =
                                b == 0 ? static_cast<unsigned char>(pixels[r * c.cols + k]) : 0;
                const Bytes before = mirrortest::bufferOf(image);
                wrmgMirror(image, image, c.flip, nullptr);
                Bytes expected = before;
                for (int r = 0; r < c.rows; ++r)
                    for (int k = 0; k < c.cols; ++k)
                        expected[r * image->widthStep + k * e] =
                            static_cast<unsigned char>(c.expected[r * c.cols + k]);
                EXPECT_EQ(expected, mirrortest::bufferOf(image))
                    << c.rows << "x" << c.cols << " flip " << c.flip << " depth " << depth;
                freeImage(image);
            }
    }
}

TEST_F(MirrorTest, TwoHeadersOnTheSamePixelsAreTwoImages) {
    // Columns: dst[1] <- src[2], dst[0] <- src[3], dst[3] <- src[0],
    // dst[2] <- src[1], one after the other on the same bytes.
    RmgImage *a = grid8(1, 4, {1, 2, 3, 4});
    RmgImage b = *a;
    wrmgMirror(a, &b, 1, nullptr);
    EXPECT_EQ((std::vector<int>{4, 3, 3, 4}), pixelsOf(a));
    // Rows: row 0 <- row 2, row 1 <- row 1, row 2 <- row 0 (already row 2).
    RmgImage *c = grid8(3, 1, {1, 2, 3});
    RmgImage d = *c;
    wrmgMirror(c, &d, 0, nullptr);
    EXPECT_EQ((std::vector<int>{3, 2, 3}), pixelsOf(c));
    freeImage(a);
    freeImage(c);
}

TEST_F(MirrorTest, ACoiLeavesTheOtherChannels) {
    RmgImage *src = makeImage({3, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4}, 1, 3, 1);
    RmgImage *dst = makeImage({3, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4}, 1, 3, 2);
    for (int i = 0; i < 9; ++i) {
        src->imageData[i] = static_cast<unsigned char>(10 + i);
        dst->imageData[i] = static_cast<unsigned char>(100 + i);
    }
    setRoi(src, 2, 0, 0, 1, 3);
    setRoi(dst, 2, 0, 0, 1, 3);
    wrmgMirror(src, dst, 1, nullptr);
    const unsigned char expected[9] = {100, 17, 102, 103, 14, 105, 106, 11, 108};
    EXPECT_EQ(Bytes(expected, expected + 9), Bytes(dst->imageData, dst->imageData + 9));
    // In place: only channel 2 turns round.
    wrmgMirror(dst, dst, 1, nullptr);
    const unsigned char back[9] = {100, 11, 102, 103, 14, 105, 106, 17, 108};
    EXPECT_EQ(Bytes(back, back + 9), Bytes(dst->imageData, dst->imageData + 9));
    freeImage(src);
    freeImage(dst);
}

TEST_F(MirrorTest, RegionsOfDifferentSizesMeetAtTheSmaller) {
    // Source: 2 x 3 ROI at (1, 1) of a 4 x 5 image; destination: 3 x 2 ROI
    // at (0, 2) of a 5 x 4 image. Common: 2 rows, 2 columns.
    std::vector<int> p(20), q(20, 0);
    for (int i = 0; i < 20; ++i) p[i] = i + 1;
    RmgImage *src = grid8(4, 5, p);
    RmgImage *dst = grid8(5, 4, q);
    setRoi(src, 0, 1, 1, 2, 3);
    setRoi(dst, 0, 0, 2, 3, 2);
    wrmgMirror(src, dst, -1, nullptr);
    // Source rows 1..2, columns 1..2: 7 8 / 12 13.
    std::vector<int> expected(20, 0);
    expected[2 * 4 + 0] = 13;
    expected[2 * 4 + 1] = 12;
    expected[3 * 4 + 0] = 8;
    expected[3 * 4 + 1] = 7;
    EXPECT_EQ(expected, pixelsOf(dst));
    freeImage(src);
    freeImage(dst);
}

TEST_F(MirrorTest, ASourceRoiPastTheRightEdgeTakesTheRowsLeftAsItsWidth) {
    // 6 x 4 source, ROI at (2, 3) of 3 rows and 5 columns: 2 columns are
    // left, so the width is 6 - 3 = 3 (the rows left). The destination
    // takes 3 columns, the third from the next row's start.
    std::vector<int> p(24), q(9, 0);
    for (int i = 0; i < 24; ++i) p[i] = i + 1;
    RmgImage *src = grid8(6, 4, p);
    RmgImage *dst = grid8(3, 3, q);
    setRoi(src, 0, 2, 3, 3, 5);
    wrmgMirror(src, dst, 1, nullptr);
    // Row 3: bytes 3*4+2 .. 3*4+4 = 15 16 17 (17 is row 4's first pixel).
    EXPECT_EQ((std::vector<int>{17, 16, 15, 21, 20, 19, 0, 24, 23}), pixelsOf(dst));
    freeImage(src);
    freeImage(dst);
}

TEST_F(MirrorTest, ARoiPastTheBufferLeavesWhatLiesOutside) {
    // The last row of the case above reads a byte past the buffer's end:
    // that element is not read and its destination keeps its value (0).
    std::vector<int> p(24), q(9, 0);
    for (int i = 0; i < 24; ++i) p[i] = i + 1;
    RmgImage *src = grid8(6, 4, p);
    RmgImage *dst = grid8(3, 3, q);
    setRoi(src, 0, 2, 3, 3, 5);
    wrmgMirror(src, dst, 0, nullptr);
    EXPECT_EQ((std::vector<int>{23, 24, 0, 19, 20, 21, 15, 16, 17}), pixelsOf(dst));
    freeImage(src);
    freeImage(dst);
}

TEST_F(MirrorTest, BitsFromTheMiddleOfAByteKeepTheirNeighbours) {
    const Kind k1{1, RMG_DEPTH_1U, RMG_DATA_PIXEL, 4};
    RmgImage *src = makeImage(k1, 1, 16, 1);
    RmgImage *dst = makeImage(k1, 1, 16, 2);
    src->imageData[0] = 0x3C;  // 0011 1100
    src->imageData[1] = 0x81;  // 1000 0001
    dst->imageData[0] = 0x00;
    dst->imageData[1] = 0xFF;
    setRoi(src, 0, 2, 0, 1, 8);  // columns 2..9: 1111 0010
    setRoi(dst, 0, 5, 0, 1, 8);  // columns 5..12
    for (int flip : {0, 1, -1}) {
        dst->imageData[0] = 0x00;
        dst->imageData[1] = 0xFF;
        wrmgMirror(src, dst, flip, nullptr);
        if (flip == 0) {  // rows only: 1111 0010 at column 5
            EXPECT_EQ(0x07, dst->imageData[0]);
            EXPECT_EQ(0x97, dst->imageData[1]);
        } else {  // reversed: 0100 1111 at column 5
            EXPECT_EQ(0x02, dst->imageData[0]);
            EXPECT_EQ(0x7F, dst->imageData[1]);
        }
    }
    // In place from bit 3 of a byte.
    setRoi(src, 0, 3, 0, 1, 6);  // columns 3..8: 1110 01 -> 1001 11
    wrmgMirror(src, src, 1, nullptr);
    EXPECT_EQ(0x33, src->imageData[0]);  // 001 1001 1 -> 0011 0011
    EXPECT_EQ(0x81, src->imageData[1]);  // column 8 is 1
    freeImage(src);
    freeImage(dst);
}

TEST_F(MirrorTest, APlainDestinationIgnoresTilePoint) {
    RmgImage *src = grid8(2, 2, {1, 2, 3, 4});
    RmgImage *dst = grid8(2, 2, {0, 0, 0, 0});
    const int far[2] = {100, 100};
    wrmgMirror(src, dst, -1, far);
    EXPECT_EQ((std::vector<int>{4, 3, 2, 1}), pixelsOf(dst));
    freeImage(src);
    freeImage(dst);
}

TEST_F(MirrorTest, ATilePointOutsideTheRectangleDoesNothing) {
    mirrortest::TiledImage tiled(k8, 16, 16, 8, 8, 3);
    RmgImage *src = makeImage(k8, 16, 16, 4);
    setRoi(tiled.image, 0, 4, 4, 8, 8);
    const Bytes before(tiled.grid->imageData, tiled.grid->imageData + tiled.grid->imageSize);
    for (const auto &point : std::vector<std::vector<int>>{{3, 5}, {12, 5}, {5, 3}, {5, 12}}) {
        wrmgMirror(src, tiled.image, 0, point.data());
        EXPECT_TRUE(tiled.calls.empty());
    }
    EXPECT_EQ(before, Bytes(tiled.grid->imageData, tiled.grid->imageData + tiled.grid->imageSize));
    EXPECT_TRUE(rmgtest::reports().empty());
    EXPECT_EQ(RMG_StsOk, rmgGetErrStatus());
    freeImage(src);
}

TEST_F(MirrorTest, EmptyRectanglesDoNothing) {
    RmgImage *src = grid8(2, 2, {1, 2, 3, 4});
    RmgImage *dst = grid8(2, 2, {0, 0, 0, 0});
    setRoi(dst, 0, 2, 0, 2, 2);  // columns from the right edge on: none
    wrmgMirror(src, dst, 1, nullptr);
    EXPECT_EQ((std::vector<int>{0, 0, 0, 0}), pixelsOf(dst));
    EXPECT_TRUE(rmgtest::reports().empty());
    freeImage(src);
    freeImage(dst);
}

}  // namespace
