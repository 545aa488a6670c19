// Region resolution: clipping, addresses and strides of images in memory,
// the tile grid of tiled images, and the cut of the grid's first and last
// tiles.
#include <gtest/gtest.h>

#include <random>

#include "access/ownrect.h"
#include "rmg.h"

namespace {

void noTile(const RmgImage *, int, int, int) {}

struct Image {
    RmgImage *image;
    RmgROI roi{0, 0, 0, 0, 0};
    Image(int nChannels, unsigned int depth, int dataOrder, int align, int height, int width) {
        image = rmgCreateImageHeader(nChannels, 0, depth, "RGB", "BGR", dataOrder, 0, align,
                                     height, width, nullptr, nullptr, nullptr);
        rmgAllocateImage(image, 0);
    }
    ~Image() {
        image->roi = nullptr;  // the ROI is this object's, not a block
        rmgDeallocate(image, RMG_DEALLOC_ALL);
    }
    void setRoi(int coi, int x, int y, int h, int w) {
        roi = RmgROI{coi, x, y, h, w};
        image->roi = &roi;
    }
};

struct Rect {
    unsigned char *data;
    int rowStep, channels, rows, columns, planeStep;
};

Rect rectOf(const RmgImage *image) {
    Rect r{};
    ownImageRect(image, &r.data, &r.rowStep, &r.channels, &r.rows, &r.columns, &r.planeStep);
    return r;
}

TEST(ImageRect, WholeImageWithoutRoi) {
    Image a(3, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 5, 7);
    Rect r = rectOf(a.image);
    EXPECT_EQ(r.data, a.image->imageData);
    EXPECT_EQ(r.rowStep, 24);
    EXPECT_EQ(r.channels, 3);
    EXPECT_EQ(r.rows, 5);
    EXPECT_EQ(r.columns, 7);
    EXPECT_EQ(r.planeStep, 5 * 24);
}

TEST(ImageRect, OffsetAtOrBeyondWidthGivesNoColumns) {
    Image a(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 5, 100);
    a.setRoi(0, 100, 1, 2, 10);
    Rect r = rectOf(a.image);
    EXPECT_EQ(r.columns, 0);
    EXPECT_EQ(r.rows, 2);
    EXPECT_EQ(r.data, a.image->imageData + 100);  // x back to 0, row 1
    a.setRoi(0, 150, 0, 2, 10);
    EXPECT_EQ(rectOf(a.image).columns, 0);
}

TEST(ImageRect, RoiHangingOutOnTheRightIsCut) {
    Image a(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 5, 100);
    a.setRoi(0, 95, 0, 1, 10);
    Rect r = rectOf(a.image);
    EXPECT_EQ(r.columns, 5);
    EXPECT_EQ(r.data, a.image->imageData + 95);
}

TEST(ImageRect, RoiTallerThanTheImageIsCut) {
    Image a(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 5, 8);
    a.setRoi(0, 0, 0, 10, 8);
    EXPECT_EQ(rectOf(a.image).rows, 5);
}

TEST(ImageRect, NegativeOffsetsShrinkTheRegion) {
    // Offsets below 0 don't pass the header test, but the clipping itself
    // takes them: the part left of column 0 is dropped.
    Image a(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 6, 8);
    a.setRoi(0, -3, -2, 5, 5);
    Rect r = rectOf(a.image);
    EXPECT_EQ(r.columns, 2);
    EXPECT_EQ(r.rows, 3);
    EXPECT_EQ(r.data, a.image->imageData);
    a.setRoi(0, -5, -5, 5, 5);  // ends before column 0 and row 0
    r = rectOf(a.image);
    EXPECT_EQ(r.columns, 0);
    EXPECT_EQ(r.rows, 0);
}

TEST(ImageRect, ChannelOfInterestInPixelOrder) {
    Image a(3, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 4, 4);
    a.setRoi(2, 1, 1, 2, 2);
    Rect r = rectOf(a.image);
    EXPECT_EQ(r.data, a.image->imageData + 12 + 3 + 1);  // row 1, column 1, channel 2
    EXPECT_EQ(r.channels, 1);
    Image b(3, RMG_DEPTH_16S, RMG_DATA_PIXEL, 8, 4, 4);
    b.setRoi(3, 1, 0, 2, 2);
    r = rectOf(b.image);
    EXPECT_EQ(r.data, b.image->imageData + 6 + 2 * 2);
}

TEST(ImageRect, ChannelOfInterestInPlaneOrder) {
    Image a(3, RMG_DEPTH_32S, RMG_DATA_PLANE, 8, 3, 5);
    a.setRoi(2, 1, 1, 1, 1);
    Rect r = rectOf(a.image);
    EXPECT_EQ(r.rowStep, 24);
    EXPECT_EQ(r.planeStep, 72);
    EXPECT_EQ(r.data, a.image->imageData + 72 + 24 + 4);
    EXPECT_EQ(r.channels, 1);
    a.setRoi(0, 1, 1, 1, 1);
    r = rectOf(a.image);
    EXPECT_EQ(r.channels, 3);
    EXPECT_EQ(r.data, a.image->imageData + 24 + 4);
}

TEST(ImageRect, RowStepIsComputedNotRead) {
    Image a(3, RMG_DEPTH_16U, RMG_DATA_PIXEL, 8, 3, 5);
    a.image->widthStep = 1000;
    EXPECT_EQ(rectOf(a.image).rowStep, 32);
    Image bits(1, RMG_DEPTH_1U, RMG_DATA_PIXEL, 4, 3, 33);
    bits.setRoi(0, 20, 1, 1, 5);
    Rect r = rectOf(bits.image);
    EXPECT_EQ(r.rowStep, 8);
    EXPECT_EQ(r.data, bits.image->imageData + 8);  // start of the row
    EXPECT_EQ(r.columns, 5);
}

TEST(ImageRect, PlaneStepCoversTheWholeHeight) {
    Image a(2, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 9, 3);
    a.setRoi(0, 0, 2, 3, 3);
    EXPECT_EQ(rectOf(a.image).planeStep, 9 * 8);
}

// A per-element model of the clipping: the set of pixels inside both.
TEST(ImageRect, RandomRoisAgreeWithTheIntersection) {
    std::mt19937 rng(7);
    for (int iter = 0; iter < 2000; ++iter) {
        const int h = 1 + rng() % 12, w = 1 + rng() % 12;
        Image a(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, h, w);
        const int x = static_cast<int>(rng() % 30) - 15, y = static_cast<int>(rng() % 30) - 15;
        const int rh = 1 + rng() % 15, rw = 1 + rng() % 15;
        a.setRoi(0, x, y, rh, rw);
        Rect r = rectOf(a.image);
        const int x0 = std::max(x, 0), x1 = std::min(x + rw, w);
        const int y0 = std::max(y, 0), y1 = std::min(y + rh, h);
        const int wantColumns = std::max(0, x1 - x0), wantRows = std::max(0, y1 - y0);
        EXPECT_EQ(r.columns, wantColumns) << x << " " << rw << " " << w;
        EXPECT_EQ(r.rows, wantRows) << y << " " << rh << " " << h;
        if (wantColumns > 0 && wantRows > 0) {
            EXPECT_EQ(r.data, a.image->imageData + y0 * r.rowStep + x0);
        }
    }
}

struct Grid {
    int rows, columns, xInTile, yInTile, tileHeight, tileWidth, firstTileX, firstTileY, nTilesX,
        nTilesY;
};

struct Tiled {
    RmgTileInfo tiles{noTile, nullptr, nullptr, 8, 8};
    RmgROI roi{0, 0, 0, 0, 0};
    RmgImage *image;
    Tiled(int height, int width, int tileWidth, int tileHeight) {
        tiles.width = tileWidth;
        tiles.height = tileHeight;
        image = rmgCreateImageHeader(3, 0, RMG_DEPTH_8U, "RGB", "BGR", 0, 0, 4, height, width,
                                     nullptr, nullptr, &tiles);
    }
    ~Tiled() { rmgDeallocate(image, RMG_DEALLOC_HEADER); }
    void setRoi(int x, int y, int h, int w) {
        roi = RmgROI{0, x, y, h, w};
        image->roi = &roi;
    }
    Grid grid() const {
        Grid g{};
        ownTileRect(image, &g.rows, &g.columns, &g.xInTile, &g.yInTile, &g.tileHeight,
                    &g.tileWidth, &g.firstTileX, &g.firstTileY, &g.nTilesX, &g.nTilesY);
        return g;
    }
};

TEST(TileRect, RoiOnATileBoundary) {
    Tiled t(40, 40, 8, 8);
    t.setRoi(8, 0, 8, 16);
    Grid g = t.grid();
    EXPECT_EQ(g.firstTileX, 1);
    EXPECT_EQ(g.xInTile, 0);
    EXPECT_EQ(g.nTilesX, 2);
    EXPECT_EQ(g.firstTileY, 0);
    EXPECT_EQ(g.nTilesY, 1);
}

TEST(TileRect, RoiInsideATileAndItsParts) {
    Tiled t(40, 40, 8, 8);
    t.setRoi(12, 0, 8, 8);
    Grid g = t.grid();
    EXPECT_EQ(g.firstTileX, 1);
    EXPECT_EQ(g.xInTile, 4);
    EXPECT_EQ(g.nTilesX, 2);
    EXPECT_EQ(ownTilePartSize(0, g.nTilesX, g.xInTile, g.tileWidth, g.columns), 4);
    EXPECT_EQ(ownTilePartSize(1, g.nTilesX, g.xInTile, g.tileWidth, g.columns), 4);
    EXPECT_EQ(ownTilePartStart(0, g.xInTile), 4);
    EXPECT_EQ(ownTilePartStart(1, g.xInTile), 0);
}

TEST(TileRect, WholeImageAndSizes) {
    Tiled t(20, 30, 16, 8);
    Grid g = t.grid();
    EXPECT_EQ(g.rows, 20);
    EXPECT_EQ(g.columns, 30);
    EXPECT_EQ(g.tileWidth, 16);
    EXPECT_EQ(g.tileHeight, 8);
    EXPECT_EQ(g.nTilesX, 2);
    EXPECT_EQ(g.nTilesY, 3);
    EXPECT_EQ(rmgTileWidthStep(t.image), 48);
}

TEST(TileRect, RegionIsNotClippedAgainstTheImage) {
    Tiled t(16, 16, 8, 8);
    t.setRoi(10, 10, 30, 30);
    Grid g = t.grid();
    EXPECT_EQ(g.columns, 30);
    EXPECT_EQ(g.firstTileX, 1);
    EXPECT_EQ(g.nTilesX, 4);  // columns 10..39: tiles 1..4
    EXPECT_EQ(g.nTilesY, 4);
}

TEST(TileRect, PartsOfAOneTileGridAreTheRegion) {
    EXPECT_EQ(ownTilePartSize(0, 1, 3, 8, 2), 2);
    // Three tiles of 8, region of 17 from offset 5: 3 + 8 + 6.
    EXPECT_EQ(ownTilePartSize(0, 3, 5, 8, 17), 3);
    EXPECT_EQ(ownTilePartSize(1, 3, 5, 8, 17), 8);
    EXPECT_EQ(ownTilePartSize(2, 3, 5, 8, 17), 6);
}

TEST(TileRect, PairTakesTheSmallerSizeAtTheTiledPosition) {
    Tiled t(64, 64, 16, 16);
    t.setRoi(20, 4, 30, 40);
    Image other(3, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 10, 50);
    Grid g{};
    ASSERT_EQ(ownTileRectPair(other.image, t.image, &g.rows, &g.columns, &g.xInTile, &g.yInTile,
                              &g.tileHeight, &g.tileWidth, &g.firstTileX, &g.firstTileY,
                              &g.nTilesX, &g.nTilesY),
              1);
    EXPECT_EQ(g.rows, 10);
    EXPECT_EQ(g.columns, 40);
    EXPECT_EQ(g.firstTileX, 1);
    EXPECT_EQ(g.xInTile, 4);
    EXPECT_EQ(g.nTilesX, 3);  // 20..59
    EXPECT_EQ(g.firstTileY, 0);
    EXPECT_EQ(g.yInTile, 4);
    EXPECT_EQ(g.nTilesY, 1);  // 4..13
    // The other image's ROI size counts, not its position.
    other.setRoi(0, 30, 5, 3, 2);
    ASSERT_EQ(ownTileRectPair(other.image, t.image, &g.rows, &g.columns, &g.xInTile, &g.yInTile,
                              &g.tileHeight, &g.tileWidth, &g.firstTileX, &g.firstTileY,
                              &g.nTilesX, &g.nTilesY),
              1);
    EXPECT_EQ(g.rows, 3);
    EXPECT_EQ(g.columns, 2);
    EXPECT_EQ(g.xInTile, 4);
}

TEST(TileRect, PairOfSizeZeroStoresNothing) {
    Tiled t(64, 64, 16, 16);
    Image other(3, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 10, 50);
    other.setRoi(0, 0, 0, 0, 5);  // a size the header test would refuse
    Grid g{-1, -1, -1, -1, -1, -1, -1, -1, -1, -1};
    EXPECT_EQ(ownTileRectPair(other.image, t.image, &g.rows, &g.columns, &g.xInTile, &g.yInTile,
                              &g.tileHeight, &g.tileWidth, &g.firstTileX, &g.firstTileY,
                              &g.nTilesX, &g.nTilesY),
              0);
    EXPECT_EQ(g.rows, -1);
    EXPECT_EQ(g.nTilesY, -1);
}

TEST(TileWidthStep, ZeroUnlessAGoodTiledImage) {
    EXPECT_EQ(rmgTileWidthStep(nullptr), 0);
    Image plain(3, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 4, 4);
    EXPECT_EQ(rmgTileWidthStep(plain.image), 0);
    Tiled t(16, 16, 24, 8);
    EXPECT_EQ(rmgTileWidthStep(t.image), 72);
    t.tiles.width = 12;  // fails the header test
    EXPECT_EQ(rmgTileWidthStep(t.image), 0);
    t.tiles.width = 8;
    t.image->depth = RMG_DEPTH_16U;
    t.image->align = 8;
    EXPECT_EQ(rmgTileWidthStep(t.image), 48);
    t.image->dataOrder = RMG_DATA_PLANE;
    EXPECT_EQ(rmgTileWidthStep(t.image), 16);
}

}  // namespace
