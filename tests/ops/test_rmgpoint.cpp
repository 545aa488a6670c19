// The frame of the point operations: the region rectangle, the tile
// cursor and header copy, the whole-image test, the run geometry, the bit
// rectangle and the case analysis.
#include <gtest/gtest.h>

#include "ops/addstest.h"
#include "ops/rmgpoint.h"

namespace {

using addstest::Image;
using addstest::Tiled;

TEST(RoiRect, WithoutRoiTheWholeImage) {
    Image a(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 5, 7, 1);
    RmgRoiRect r;
    rmgRoiRect(a.image, &r);
    EXPECT_EQ(r.begX, 0);
    EXPECT_EQ(r.begY, 0);
    EXPECT_EQ(r.width, 7);
    EXPECT_EQ(r.height, 5);
    EXPECT_EQ(r.endX, 7);
    EXPECT_EQ(r.endY, 5);
}

TEST(RoiRect, TheRoiIsCutAtTheImagesEdge) {
    Image a(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 5, 7, 1);
    a.setRoi(2, 3, 1, 10, 10);
    RmgRoiRect r;
    rmgRoiRect(a.image, &r);
    EXPECT_EQ(r.begX, 3);
    EXPECT_EQ(r.begY, 1);
    EXPECT_EQ(r.width, 4);
    EXPECT_EQ(r.height, 4);
    a.setRoi(0, 9, 6, 2, 2);  // beyond: the size comes out negative
    rmgRoiRect(a.image, &r);
    EXPECT_EQ(r.width, -2);
    EXPECT_EQ(r.height, -1);
}

TEST(TileWalkInit, AnUntiledImageKeepsItsSizeAndData) {
    Image a(3, RMG_DEPTH_16S, RMG_DATA_PLANE, 8, 5, 7, 1);
    RmgImage copy = *a.image;
    RmgRoiRect r{2, 5, 1, 3, 2, 3};
    RmgTileCursor c;
    rmgTileWalkInit(a.image, &copy, &r, &c);
    EXPECT_EQ(c.tiled, 0);
    EXPECT_EQ(copy.width, 7);
    EXPECT_EQ(copy.height, 5);
    EXPECT_EQ(copy.imageData, a.image->imageData);
    EXPECT_EQ(copy.imageSize, a.image->imageSize);
}

TEST(TileWalkInit, ATiledImageLooksLikeOneTile) {
    Tiled t(3, RMG_DEPTH_16U, RMG_DATA_PIXEL, 8, 50, 70, 24, 16, 1);
    RmgImage copy = *t.image;
    RmgRoiRect r{30, 40, 20, 25, 5, 10};
    RmgTileCursor c;
    rmgTileWalkInit(t.image, &copy, &r, &c);
    EXPECT_EQ(c.tiled, 1);
    EXPECT_EQ(c.column, 1);
    EXPECT_EQ(c.row, 1);
    EXPECT_EQ(c.begX, 24);
    EXPECT_EQ(c.endX, 48);
    EXPECT_EQ(c.begY, 16);
    EXPECT_EQ(c.endY, 32);
    EXPECT_EQ(c.tileWidth, 24);
    EXPECT_EQ(c.tileHeight, 16);
    EXPECT_EQ(copy.tileInfo, nullptr);
    EXPECT_EQ(copy.width, 24);
    EXPECT_EQ(copy.height, 16);
    EXPECT_EQ(copy.widthStep, 144);  // 24 * 3 * 2 bytes, a multiple of 8
    EXPECT_EQ(copy.imageSize, 144 * 16);

    Tiled p(3, RMG_DEPTH_8U, RMG_DATA_PLANE, 4, 50, 70, 8, 8, 1);
    RmgImage planes = *p.image;
    rmgTileWalkInit(p.image, &planes, &r, &c);
    EXPECT_EQ(planes.widthStep, 8);
    EXPECT_EQ(planes.imageSize, 8 * 8 * 3);
    EXPECT_EQ(c.column, 3);
    EXPECT_EQ(c.row, 2);
}

TEST(IsWholeImage, SameSizesAndRoisThatCoverAll) {
    Image a(3, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 5, 7, 1);
    Image b(3, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 5, 7, 2);
    Image c(3, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 5, 6, 3);
    Image one(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 5, 28, 4);
    EXPECT_TRUE(rmgIsWholeImage(a.image, b.image));
    EXPECT_FALSE(rmgIsWholeImage(a.image, c.image));
    a.setRoi(0, 0, 0, 9, 9);
    EXPECT_TRUE(rmgIsWholeImage(a.image, b.image));
    a.setRoi(1, 0, 0, 5, 7);
    EXPECT_FALSE(rmgIsWholeImage(a.image, b.image));  // coi 1 of three channels
    a.setRoi(0, 1, 0, 5, 7);
    EXPECT_FALSE(rmgIsWholeImage(a.image, b.image));
    a.setRoi(0, 0, 0, 4, 7);
    EXPECT_FALSE(rmgIsWholeImage(a.image, b.image));
    // A one-channel image with coi 1 counts as whole; same height, width
    // and imageSize is all the test asks of the other.
    one.setRoi(1, 0, 0, 5, 28);
    Image other(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 5, 28, 5);
    EXPECT_TRUE(rmgIsWholeImage(one.image, other.image));
    b.image->imageSize += 4;
    a.clearRoi();
    EXPECT_FALSE(rmgIsWholeImage(a.image, b.image));
    b.image->imageSize -= 4;
}

TEST(RunGeometry, PixelOrder) {
    Image a(3, RMG_DEPTH_16U, RMG_DATA_PIXEL, 4, 5, 7, 1);  // 44 bytes a row
    int rowBytes = 0, rows = 0, channels = 0;
    EXPECT_EQ(rmgRunGeometry(a.image, &rowBytes, &rows, &channels), 0);
    EXPECT_EQ(rowBytes, 42);
    EXPECT_EQ(rows, 5);
    EXPECT_EQ(channels, 3);
    a.setRoi(2, 1, 2, 2, 3);
    EXPECT_EQ(rmgRunGeometry(a.image, &rowBytes, &rows, &channels), 2 * 44 + 1 * 6 + 2);
    EXPECT_EQ(rowBytes, 18);
    EXPECT_EQ(rows, 2);
    EXPECT_EQ(channels, 1);
    // A ROI hanging out on the right and at the bottom ends at the edge.
    a.setRoi(0, 5, 3, 9, 9);
    EXPECT_EQ(rmgRunGeometry(a.image, &rowBytes, &rows, &channels), 3 * 44 + 5 * 6);
    EXPECT_EQ(rowBytes, 12);
    EXPECT_EQ(rows, 2);
    EXPECT_EQ(channels, 3);
}

TEST(RunGeometry, TheStrideIsComputedAgain) {
    Image a(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 8, 5, 3, 1);
    a.image->widthStep = 100;
    a.setRoi(0, 1, 2, 1, 1);
    int rowBytes = 0, rows = 0, channels = 0;
    EXPECT_EQ(rmgRunGeometry(a.image, &rowBytes, &rows, &channels), 2 * 8 + 1);
    EXPECT_EQ(rmgRunStride(a.image), 8);
    a.image->widthStep = 8;
}

TEST(RunGeometry, PlaneOrder) {
    Image a(3, RMG_DEPTH_32S, RMG_DATA_PLANE, 8, 5, 7, 1);  // 32 bytes a row
    a.setRoi(3, 2, 1, 3, 4);
    int rowBytes = 0, rows = 0, channels = 0;
    EXPECT_EQ(rmgRunGeometry(a.image, &rowBytes, &rows, &channels), 5 * 32 * 2 + 32 + 8);
    EXPECT_EQ(rowBytes, 16);
    EXPECT_EQ(rows, 3);
    EXPECT_EQ(channels, 1);
    // 1-bit plane images take the column offset in bytes, column / 8.
    Image bits(1, RMG_DEPTH_1U, RMG_DATA_PLANE, 4, 4, 40, 2);
    bits.setRoi(0, 17, 1, 2, 5);
    EXPECT_EQ(rmgRunGeometry(bits.image, &rowBytes, &rows, &channels), 8 + 2);
    EXPECT_EQ(rowBytes, 5);
}

TEST(RunGeometry, NothingToDo) {
    int rowBytes = 0, rows = 0, channels = 0;
    EXPECT_EQ(rmgRunGeometry(nullptr, &rowBytes, &rows, &channels), -1);
    Image a(2, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 5, 7, 1);
    a.setRoi(3, 0, 0, 5, 7);
    EXPECT_EQ(rmgRunGeometry(a.image, &rowBytes, &rows, &channels), -1);
    // A ROI beyond the image: the first column stays, the count is negative.
    a.setRoi(0, 9, 0, 5, 2);
    EXPECT_GE(rmgRunGeometry(a.image, &rowBytes, &rows, &channels), 0);
    EXPECT_LE(rowBytes, 0);
}

TEST(BitRect, SizesAreNotCutByTheOffset) {
    Image a(1, RMG_DEPTH_1U, RMG_DATA_PIXEL, 4, 6, 40, 1);  // 8 bytes a row
    int width = 0, height = 0, phase = 0;
    EXPECT_EQ(rmgBitRect(a.image, &width, &height, &phase), 0);
    EXPECT_EQ(width, 40);
    EXPECT_EQ(height, 6);
    EXPECT_EQ(phase, 0);
    a.setRoi(0, 13, 2, 10, 50);
    EXPECT_EQ(rmgBitRect(a.image, &width, &height, &phase), 2 * 8 + 1);
    EXPECT_EQ(width, 40);
    EXPECT_EQ(height, 6);
    EXPECT_EQ(phase, 5);
    Image b(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 6, 40, 1);
    EXPECT_EQ(rmgBitRect(b.image, &width, &height, &phase), -1);
}

TEST(PointPlan, TheFourCases) {
    Image p3(3, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 4, 4, 1);  // 12 bytes a row
    Image q3(3, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 4, 4, 2);
    Image s3(3, RMG_DEPTH_8U, RMG_DATA_PLANE, 4, 4, 4, 3);
    Image t3(3, RMG_DEPTH_8U, RMG_DATA_PLANE, 4, 4, 4, 4);
    const RmgImage *pair[2] = {p3.image, q3.image};
    RmgPointPlan plan;
    ASSERT_TRUE(rmgPointPlanOf(pair, 2, &plan));
    EXPECT_EQ(plan.kase, 'A');
    EXPECT_EQ(plan.contiguous, 1);
    EXPECT_EQ(plan.rowBytes, 12);
    q3.setRoi(0, 1, 0, 4, 3);
    ASSERT_TRUE(rmgPointPlanOf(pair, 2, &plan));
    EXPECT_EQ(plan.kase, 'A');
    EXPECT_EQ(plan.contiguous, 0);
    EXPECT_EQ(plan.rowBytes, 9);
    EXPECT_EQ(plan.data[1], q3.data + 3);
    p3.setRoi(2, 0, 0, 4, 4);
    q3.setRoi(3, 0, 0, 4, 4);
    ASSERT_TRUE(rmgPointPlanOf(pair, 2, &plan));
    EXPECT_EQ(plan.kase, 'C');
    EXPECT_EQ(plan.data[0], p3.data + 1);
    EXPECT_EQ(plan.data[1], q3.data + 2);
    EXPECT_EQ(plan.pixels[0], 4);

    const RmgImage *planes[2] = {s3.image, t3.image};
    ASSERT_TRUE(rmgPointPlanOf(planes, 2, &plan));
    EXPECT_EQ(plan.kase, 'D');
    EXPECT_EQ(plan.planes, 3);
    EXPECT_EQ(plan.planeStep[0], 16);
    s3.setRoi(2, 0, 0, 4, 4);
    t3.setRoi(1, 0, 0, 4, 4);
    ASSERT_TRUE(rmgPointPlanOf(planes, 2, &plan));
    EXPECT_EQ(plan.kase, 'B');
    EXPECT_EQ(plan.data[0], s3.data + 16);
    EXPECT_EQ(plan.data[1], t3.data);
    t3.clearRoi();
    EXPECT_FALSE(rmgPointPlanOf(planes, 2, &plan));
    // Orders that differ fall outside the cases.
    const RmgImage *mixed[2] = {p3.image, t3.image};
    p3.clearRoi();
    EXPECT_FALSE(rmgPointPlanOf(mixed, 2, &plan));
}

}  // namespace
