// The tile walk of the alpha module, driven by a small increment operation
// through the views: rectangles on the grid image's tile boundaries, the
// call-back sequences of in-place, gathered and scattered views, the
// tilePoint restriction and a failing call-back.
#include <random>
#include <vector>

#include "alpha/rmgalpha_views.h"
#include "alpha/test_rmgalpha_views.h"
#include "ops/copytest.h"
#include "ops/scetest.h"
#include "support/rmgtest.h"

namespace {

using copytest::Call;
using copytest::CallLog;
using scetest::Plain;
using scetest::Tiled;
using scetest::TileCall;
using viewstest::expectPlain;
using viewstest::expectTiles;
using viewstest::expectTilesEqual;
using viewstest::Increment;
using viewstest::of;
using viewstest::walkIncrement;

using viewstest::crossRects;
using viewstest::logCalls;
using viewstest::Rect;

class ViewsWalkTest : public rmgtest::ErrorStateTest {};

// The rectangles of the runs, checking that each run got the rectangle's
// size as rows and columns.
std::vector<Rect> rectsOf(const Increment &op) {
    std::vector<Rect> rects;
    for (const auto &run : op.runs) {
        EXPECT_EQ(run.rows, run.rectHeight);
        EXPECT_EQ(run.columns, run.rectWidth);
        rects.push_back(Rect{run.rectX, run.rectY, run.rectWidth, run.rectHeight});
    }
    return rects;
}

void expectNoReport() {
    EXPECT_TRUE(rmgtest::reports().empty());
    EXPECT_EQ(rmgGetErrStatus(), RMG_StsOk);
}

void expectOneReport(const char *funcName) {
    ASSERT_EQ(rmgtest::reports().size(), 1u);
    const rmgtest::Report &r = rmgtest::reports()[0];
    EXPECT_EQ(r.status, RMG_StsError);
    EXPECT_EQ(r.funcName, funcName);
    EXPECT_EQ(r.context, "ERROR in Tiling callBack");
    EXPECT_EQ(r.fileName, "rmgalpha");
}

// A tiled destination's tile calls, for each tile (column, row) in order:
// asked for with `mode`, then released.
std::vector<TileCall> getPut(viewstest::Tiles tiles, int mode) {
    std::vector<TileCall> calls;
    for (const auto &t : tiles) {
        calls.push_back(TileCall{t.first, t.second, mode});
        calls.push_back(TileCall{t.first, t.second, RMG_TILE_RELEASE});
    }
    return calls;
}

// The walk on a tiled destination's own grid from a plain source, the
// destination's tiles checked against the model and no report expected.
Increment incrementTiled(Tiled &dst, Plain &src, int rows, int columns) {
    Increment op = walkIncrement(dst.image, of(dst), of(src), nullptr, rows, columns);
    expectTilesEqual(dst, expectTiles(dst, of(src), rows, columns));
    expectNoReport();
    return op;
}

TEST_F(ViewsWalkTest, RoiAtTwentyWithTilesSixteenWideStepsTwelveThenSixteen) {
    Tiled dst(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 48, 64, 16, 16);
    dst.setRoi(0, 20, 0, 16, 40);
    Plain src(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 16, 40, 0);
    const Increment op = incrementTiled(dst, src, 16, 40);
    EXPECT_EQ(op.adds, 1);
    EXPECT_EQ(rectsOf(op), crossRects({12, 16, 12}, {16}));
    EXPECT_EQ(dst.calls, getPut({{1, 0}, {2, 0}, {3, 0}}, RMG_TILE_WRITE));
    // The first view lies in tile 1 from column 4; the others from 0.
    ASSERT_EQ(op.runs.size(), 3u);
    EXPECT_EQ(op.runs[0].views[0].roi.xOffset, 4);
    EXPECT_EQ(op.runs[1].views[0].roi.xOffset, 0);
    EXPECT_EQ(op.runs[2].views[0].roi.xOffset, 0);
}

TEST_F(ViewsWalkTest, BandsAndStepsEndOnTheGridImagesTileBoundaries) {
    Tiled dst(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 64, 64, 16, 8);
    dst.setRoi(0, 5, 3, 20, 30);
    Plain src(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 20, 30, 0);
    const Increment op = incrementTiled(dst, src, 20, 30);
    // Bands of 5, 8, 7 rows (3 + 5 = 8); steps of 11, 16, 3 columns.
    EXPECT_EQ(rectsOf(op), crossRects({11, 16, 3}, {5, 8, 7}));
    EXPECT_EQ(rectsOf(op)[4], (Rect{11, 5, 16, 8}));
}

TEST_F(ViewsWalkTest, RegionInsideOneTileRunsInTheTilesMemory) {
    Tiled dst(2, RMG_DEPTH_16U, RMG_DATA_PIXEL, 4, 64, 64, 64, 64);
    dst.setRoi(0, 10, 20, 30, 40);
    Plain src(2, RMG_DEPTH_16U, RMG_DATA_PIXEL, 4, 30, 40, 0);
    const Increment op = incrementTiled(dst, src, 30, 40);
    ASSERT_EQ(op.runs.size(), 1u);
    EXPECT_EQ(op.runs[0].views[0].imageData, dst.tiles.at({0, 0}).data());
    EXPECT_EQ(op.runs[0].views[0].width, 64);
    EXPECT_EQ(op.runs[0].views[0].height, 64);
    EXPECT_EQ(op.runs[0].views[0].roi.xOffset, 10);
    EXPECT_EQ(op.runs[0].views[0].roi.yOffset, 20);
    EXPECT_EQ(dst.calls, getPut({{0, 0}}, RMG_TILE_WRITE));
}

TEST_F(ViewsWalkTest, SourceInSmallerTilesIsGatheredOnTheDestinationsGrid) {
    Tiled dst(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 64, 128, 64, 64, 11);
    Tiled src(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 64, 128, 32, 32, 22);
    CallLog log;
    log.watchPair(src, dst);
    const Increment op = walkIncrement(dst.image, of(dst), of(src), nullptr, 64, 128);
    EXPECT_EQ(rectsOf(op), crossRects({64, 64}, {64}));
    const viewstest::Tiles left = {{0, 0}, {1, 0}, {0, 1}, {1, 1}};
    const viewstest::Tiles right = {{2, 0}, {3, 0}, {2, 1}, {3, 1}};
    EXPECT_EQ(log.calls, copytest::joined({logCalls('D', {{0, 0}}, RMG_TILE_WRITE),
                                           logCalls('S', left, RMG_TILE_READ),
                                           logCalls('D', {{0, 0}}, RMG_TILE_RELEASE),
                                           logCalls('S', left, RMG_TILE_RELEASE),
                                           logCalls('D', {{1, 0}}, RMG_TILE_WRITE),
                                           logCalls('S', right, RMG_TILE_READ),
                                           logCalls('D', {{1, 0}}, RMG_TILE_RELEASE),
                                           logCalls('S', right, RMG_TILE_RELEASE)}));
    // The source's view is the scratch image, the destination's the tile.
    ASSERT_EQ(op.runs.size(), 2u);
    EXPECT_EQ(op.runs[1].views[0].imageData, dst.tiles.at({1, 0}).data());
    EXPECT_EQ(op.runs[1].views[1].width, 64);
    EXPECT_NE(op.runs[1].views[1].imageData, src.tiles.at({2, 0}).data());
    expectTilesEqual(dst, expectTiles(dst, of(src), 64, 128));
    viewstest::expectTilesFresh(src);
    expectNoReport();
}

TEST_F(ViewsWalkTest, PlainDestinationGoesBySourcesGridThroughItsShadowHeader) {
    Plain dst(3, RMG_DEPTH_8U, RMG_DATA_PLANE, 8, 40, 50, 0);
    dst.setRoi(0, 6, 2, 30, 40);
    Tiled src(3, RMG_DEPTH_8U, RMG_DATA_PLANE, 8, 64, 64, 16, 16);
    src.setRoi(0, 20, 8, 30, 40);
    const Increment op = walkIncrement(src.image, of(dst), of(src), nullptr, 30, 40);
    EXPECT_EQ(rectsOf(op), crossRects({12, 16, 12}, {8, 16, 6}));
    for (const auto &run : op.runs) {
        EXPECT_EQ(run.views[0].imageData, dst.image->imageData);
        EXPECT_EQ(run.views[0].roi.xOffset, 6 + run.rectX);
        EXPECT_EQ(run.views[0].roi.yOffset, 2 + run.rectY);
    }
    // Every source rectangle lies in one source tile.
    EXPECT_EQ(src.calls, getPut({{1, 0}, {2, 0}, {3, 0}, {1, 1}, {2, 1}, {3, 1}, {1, 2}, {2, 2},
                                 {3, 2}},
                                RMG_TILE_READ));
    EXPECT_EQ(scetest::difference(dst.block, expectPlain(dst, of(src), 30, 40)), "");
    expectNoReport();
}

TEST_F(ViewsWalkTest, SameTiledImageIsOneEntryInWriteMode) {
    Tiled img(4, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 32, 32, 16, 16);
    img.image->alphaChannel = 4;
    img.setRoi(0, 8, 0, 16, 16);
    Increment op;
    op.images = {img.image, img.image};
    ownViewsWalk("rmgTest", img.image, img.image, nullptr, 16, 16, 2, Increment::ops, &op);
    EXPECT_EQ(op.index, (std::vector<int>{1, 1}));
    EXPECT_EQ(rectsOf(op), crossRects({8, 8}, {16}));
    // One get a rectangle, for writing; source and destination are one view.
    EXPECT_EQ(img.calls, getPut({{0, 0}, {1, 0}}, RMG_TILE_WRITE));
    for (const auto &run : op.runs) EXPECT_EQ(run.views[0].header, run.views[1].header);
    // Each element once plus one, in place; the alpha channel keeps its values.
    std::map<std::pair<int, int>, std::vector<uint8_t>> want;
    for (int t = 0; t < 2; ++t) {
        std::vector<uint8_t> tile = img.freshTile(t, 0);
        for (int y = 0; y < 16; ++y)
            for (int x = t == 0 ? 8 : 0; x < (t == 0 ? 16 : 8); ++x)
                for (int ch = 0; ch < 3; ++ch) {
                    const uint32_t v = scetest::getElement(tile, 0, img.tileLayout(), x, y, ch);
                    scetest::putElement(tile, 0, img.tileLayout(), x, y, ch, (v + 1) & 0xFF);
                }
        want[{t, 0}] = tile;
    }
    expectTilesEqual(img, want);
    expectNoReport();
}

TEST_F(ViewsWalkTest, WriteViewsAcrossTilesAreScatteredAndSkippedChannelsKept) {
    // The grid is the source's 32 x 32; the destination's view of each
    // rectangle covers up to 5 x 5 of its 8 x 8 tiles.
    Tiled src(4, RMG_DEPTH_16U, RMG_DATA_PLANE, 4, 64, 64, 32, 32, 5);
    src.setRoi(0, 4, 0, 50, 50);
    Tiled dst(4, RMG_DEPTH_16U, RMG_DATA_PLANE, 4, 64, 64, 8, 8, 6);
    dst.image->alphaChannel = 2;
    dst.setRoi(0, 3, 5, 50, 50);
    const Increment op = walkIncrement(src.image, of(dst), of(src), nullptr, 50, 50, 0x1234);
    EXPECT_EQ(rectsOf(op), crossRects({28, 22}, {32, 18}));
    for (const auto &run : op.runs) EXPECT_EQ(run.views[0].width, 32);
    expectTilesEqual(dst, expectTiles(dst, of(src), 50, 50, 0x1234));
    // Each destination tile asked for once per rectangle that touches it,
    // and released as often.
    int asked = 0, released = 0;
    for (const TileCall &c : dst.calls) (c.mode == RMG_TILE_RELEASE ? released : asked)++;
    EXPECT_EQ(asked, released);
    // Rows 5..36 touch tile rows 0..4, rows 37..54 rows 4..6; columns 3..30
    // touch tile columns 0..3, columns 31..52 columns 3..6.
    EXPECT_EQ(asked, 4 * 5 + 4 * 5 + 4 * 3 + 4 * 3);
    expectNoReport();
}

TEST_F(ViewsWalkTest, DestinationCoiWritesOneChannel) {
    Tiled dst(3, RMG_DEPTH_8U, RMG_DATA_PIXEL, 8, 40, 40, 8, 16);
    dst.setRoi(3, 1, 2, 20, 20);
    Plain src(3, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 30, 30, 0);
    src.setRoi(1, 4, 4, 20, 20);
    Tiled grid(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 64, 64, 16, 8);
    const std::vector<uint8_t> before = src.block;
    Increment op;
    op.images = {dst.image, src.image};
    ownViewsWalk("rmgTest", grid.image, dst.image, nullptr, 20, 20, 2, Increment::ops, &op);
    expectTilesEqual(dst, expectTiles(dst, of(src), 20, 20));
    EXPECT_EQ(scetest::difference(src.block, before), "");
    expectNoReport();
}

TEST_F(ViewsWalkTest, TilePointOutsideTheRegionDoesNothing) {
    Tiled dst(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 64, 64, 16, 16);
    dst.setRoi(0, 20, 4, 40, 40);
    Plain src(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 40, 40, 0);
    // left = tile start - 20, top = tile start - 4: each fails one test.
    const int outside[][2] = {{0, 16},     // left -20: left + 16 <= 0
                              {64, 16},    // left 44 >= 40
                              {16, 48},    // top 44 >= 40
                              {-1, 16},    // -1 / 16 is 0: left -20
                              {16, -20}};  // top -20: top + 16 <= 0
    for (const auto &point : outside) {
        const Increment op = walkIncrement(dst.image, of(dst), of(src), point, 40, 40);
        EXPECT_EQ(op.adds, 0) << point[0] << ", " << point[1];
        EXPECT_TRUE(op.runs.empty());
    }
    EXPECT_TRUE(dst.calls.empty());
    EXPECT_TRUE(dst.tiles.empty());
    expectNoReport();
}

TEST_F(ViewsWalkTest, TilePointInsideRunsOneClippedRectangle) {
    Tiled dst(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 64, 64, 16, 16);
    dst.setRoi(0, 20, 4, 40, 40);
    Plain src(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 40, 40, 0);
    struct Case {
        int point[2];
        Rect rect;
        std::pair<int, int> tile;
    };
    // left = (px / 16) * 16 - 20, top = (py / 16) * 16 - 4; a negative one is
    // added to the size and set to 0, the end is cut at the region's.
    const Case cases[] = {{{16, 0}, {0, 0, 12, 12}, {1, 0}},
                          {{33, 20}, {12, 12, 16, 16}, {2, 1}},
                          {{50, 47}, {28, 28, 12, 12}, {3, 2}}};
    for (const Case &c : cases) {
        dst.calls.clear();
        const Increment op = walkIncrement(dst.image, of(dst), of(src), c.point, 40, 40);
        EXPECT_EQ(rectsOf(op), std::vector<Rect>{c.rect});
        EXPECT_EQ(dst.calls, getPut({c.tile}, RMG_TILE_WRITE));
    }
    // A tilePoint counts only for a tiled destination.
    Plain plainDst(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 40, 40, 0);
    Tiled tiledSrc(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 40, 40, 16, 16);
    const int far[2] = {1000, 1000};
    const Increment op = walkIncrement(tiledSrc.image, of(plainDst), of(tiledSrc), far, 40, 40);
    EXPECT_EQ(op.runs.size(), 9u);
    expectNoReport();
}

TEST_F(ViewsWalkTest, NullTileOnTheThirdRectangleKeepsTheFirstTwoAndReportsOnce) {
    Tiled dst(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 16, 64, 16, 16);
    dst.failing = {{2, 0}};
    Plain src(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 16, 64, 0);
    const Increment op = walkIncrement(dst.image, of(dst), of(src), nullptr, 16, 64);
    EXPECT_EQ(op.runs.size(), 3u);
    // Tile 2 came back null: not released, and the walk ends.
    std::vector<TileCall> calls = getPut({{0, 0}, {1, 0}}, RMG_TILE_WRITE);
    calls.push_back(TileCall{2, 0, RMG_TILE_WRITE});
    EXPECT_EQ(dst.calls, calls);
    expectTilesEqual(dst, expectTiles(dst, of(src), 16, 32));
    expectOneReport("rmgTest");
}

TEST_F(ViewsWalkTest, NullTileInAGatheredViewEndsTheWalk) {
    Tiled src(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 32, 64, 8, 8);
    src.failing = {{5, 1}};
    Tiled dst(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 32, 64, 16, 16);
    CallLog log;
    log.watchPair(src, dst);
    const Increment op = walkIncrement(dst.image, of(dst), of(src), nullptr, 32, 64);
    ASSERT_EQ(op.runs.size(), 3u);
    // Third rectangle: D (2, 0), then S (4, 0) (5, 0) (4, 1) (5, 1): null.
    // The set is freed: the tiles are given back in get order up to the
    // null one.
    ASSERT_EQ(log.calls.size(), 2u * (1 + 4 + 1 + 4) + 9u);
    const std::vector<Call> tail(log.calls.end() - 9, log.calls.end());
    EXPECT_EQ(tail, copytest::joined(
                        {logCalls('D', {{2, 0}}, RMG_TILE_WRITE),
                         logCalls('S', {{4, 0}, {5, 0}, {4, 1}, {5, 1}}, RMG_TILE_READ),
                         logCalls('D', {{2, 0}}, RMG_TILE_RELEASE),
                         logCalls('S', {{4, 0}, {5, 0}, {4, 1}}, RMG_TILE_RELEASE)}));
    // The third destination tile was asked for but not written.
    expectTilesEqual(dst, expectTiles(dst, of(src), 16, 32));
    expectOneReport("rmgTest");
}

TEST_F(ViewsWalkTest, RandomImagesAgainstTheModel) {
    std::mt19937 rng(20240611);
    auto pick = [&](int low, int high) {
        return std::uniform_int_distribution<int>(low, high)(rng);
    };
    for (int round = 0; round < 150; ++round) {
        const unsigned int depth = pick(0, 1) ? RMG_DEPTH_16U : RMG_DEPTH_8U;
        const int order = pick(0, 1);
        const int channels = pick(1, 4);
        const int align = pick(0, 1) ? 8 : 4;
        const int height = pick(1, 70), width = pick(1, 70);
        const bool dstTiled = pick(0, 2) != 0, srcTiled = pick(0, 2) != 0 || !dstTiled;
        const int rows = pick(1, height), columns = pick(1, width);
        const int coi = pick(0, 2) == 0 ? pick(1, channels) : 0;
        auto tileSize = [&]() { return 8 * pick(1, 5); };
        auto setRoi = [&](auto &img) {
            img.setRoi(coi, pick(0, width - columns), pick(0, height - rows), rows, columns);
        };
        Plain plainDst(channels, depth, order, align, height, width, 0, 3 + round);
        Plain plainSrc(channels, depth, order, align, height, width, 0, 4 + round);
        Tiled tiledDst(channels, depth, order, align, height, width, tileSize(), tileSize(),
                       5 + round);
        Tiled tiledSrc(channels, depth, order, align, height, width, tileSize(), tileSize(),
                       6 + round);
        viewstest::Arg dst = dstTiled ? of(tiledDst) : of(plainDst);
        viewstest::Arg src = srcTiled ? of(tiledSrc) : of(plainSrc);
        dst.image()->alphaChannel = pick(0, channels);
        if (dstTiled)
            setRoi(tiledDst);
        else
            setRoi(plainDst);
        if (srcTiled)
            setRoi(tiledSrc);
        else
            setRoi(plainSrc);
        const RmgImage *grid = dstTiled ? dst.image() : src.image();
        SCOPED_TRACE(::testing::Message() << "round " << round);
        const Increment op = walkIncrement(grid, dst, src, nullptr, rows, columns, 77);
        if (dstTiled)
            expectTilesEqual(tiledDst, expectTiles(tiledDst, src, rows, columns, 77));
        else
            EXPECT_EQ(scetest::difference(plainDst.block,
                                          expectPlain(plainDst, src, rows, columns, 77)),
                      "");
        if (srcTiled) viewstest::expectTilesFresh(tiledSrc);
        EXPECT_FALSE(op.runs.empty());
        expectNoReport();
    }
}

}  // namespace
