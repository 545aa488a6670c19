// The view set of the alpha module: entries, gets in place and by gather,
// puts with and without scatter, failing call-backs, freeing.
#include <algorithm>
#include <map>
#include <string>
#include <vector>

#include "alpha/rmgalpha_views.h"
#include "alpha/test_rmgalpha_views.h"
#include "ops/copytest.h"
#include "ops/scetest.h"
#include "support/rmgtest.h"

namespace {

using scetest::Plain;
using scetest::Tiled;
using scetest::TileCall;
using viewstest::logCalls;
using viewstest::oneEntrySet;
using viewstest::Rect;
using viewstest::tileCalls;

class ViewsTest : public rmgtest::ErrorStateTest {};

const viewstest::Tiles kNine = {{0, 0}, {1, 0}, {2, 0}, {0, 1}, {1, 1},
                                {2, 1}, {0, 2}, {1, 2}, {2, 2}};

// The calls of a gather over the nine tiles in `mode`, then of their release.
std::vector<TileCall> nineAndReleased(int mode) {
    std::vector<TileCall> calls = tileCalls(kNine, mode);
    for (const TileCall &c : tileCalls(kNine, RMG_TILE_RELEASE)) calls.push_back(c);
    return calls;
}

void expectRoi(const RmgROI *roi, int coi, int x, int y, int height, int width) {
    ASSERT_NE(roi, nullptr);
    EXPECT_EQ(roi->coi, coi);
    EXPECT_EQ(roi->xOffset, x);
    EXPECT_EQ(roi->yOffset, y);
    EXPECT_EQ(roi->height, height);
    EXPECT_EQ(roi->width, width);
}

void expectLayoutOf(const RmgImage *header, const RmgImage *image, int height, int width) {
    ASSERT_NE(header, nullptr);
    EXPECT_EQ(header->nChannels, image->nChannels);
    EXPECT_EQ(header->alphaChannel, image->alphaChannel);
    EXPECT_EQ(header->depth, image->depth);
    EXPECT_EQ(header->dataOrder, image->dataOrder);
    EXPECT_EQ(header->origin, image->origin);
    EXPECT_EQ(header->align, image->align);
    EXPECT_EQ(std::string(header->colorModel, 4), std::string(image->colorModel, 4));
    EXPECT_EQ(std::string(header->channelSeq, 4), std::string(image->channelSeq, 4));
    EXPECT_EQ(header->height, height);
    EXPECT_EQ(header->width, width);
    EXPECT_EQ(header->tileInfo, nullptr);
}

TEST_F(ViewsTest, CreateGivesFreeEntriesAndFreeGivesFailed) {
    RmgTileViews *set = ownViewsCreate(3, 32, 16);
    ASSERT_NE(set, nullptr);
    EXPECT_EQ(set->viewCount, 3);
    EXPECT_EQ(set->tileWidth, 32);
    EXPECT_EQ(set->tileHeight, 16);
    EXPECT_EQ(set->failed, 0);
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(set->views[i].image, nullptr);
        EXPECT_EQ(set->views[i].useCount, 0);
    }
    set->failed = 1;
    // The views array goes with the set; the sanitizer's leak check sees it.
    EXPECT_EQ(ownViewsFree(set), 1);
    EXPECT_TRUE(rmgtest::reports().empty());
}

TEST_F(ViewsTest, AddMakesHeadersAndKeepsTheFirstMode) {
    Plain plain(3, RMG_DEPTH_8U, RMG_DATA_PIXEL, 8, 10, 12);
    plain.image->alphaChannel = 3;
    Tiled tiled(2, RMG_DEPTH_16U, RMG_DATA_PLANE, 4, 40, 50, 16, 8);
    RmgTileViews *set = ownViewsCreate(2, 16, 16);
    EXPECT_EQ(ownViewsAdd(set, tiled.image, RMG_TILE_READ), 1);
    EXPECT_EQ(ownViewsAdd(set, plain.image, RMG_TILE_WRITE), 2);
    // Already in the set: its index, and its first mode stays.
    EXPECT_EQ(ownViewsAdd(set, tiled.image, RMG_TILE_WRITE), 1);
    EXPECT_EQ(ownViewsAdd(set, plain.image, RMG_TILE_READ), 2);
    EXPECT_EQ(set->views[0].mode, RMG_TILE_READ);
    EXPECT_EQ(set->views[1].mode, RMG_TILE_WRITE);
    // No free entry left: index 0, whose get gives null.
    Plain other(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 4, 4);
    EXPECT_EQ(ownViewsAdd(set, other.image, RMG_TILE_READ), 0);
    EXPECT_EQ(ownViewsGet(set, 0), nullptr);
    EXPECT_EQ(ownViewsGet(set, 3), nullptr);

    const RmgTileView &t = set->views[0];
    EXPECT_EQ(t.image, tiled.image);
    EXPECT_EQ(t.useCount, 0);
    EXPECT_EQ(t.view, nullptr);
    EXPECT_EQ(t.tileWidth, 16);
    EXPECT_EQ(t.tileHeight, 8);
    expectLayoutOf(t.tileHeader, tiled.image, 8, 16);
    EXPECT_EQ(t.tileHeader->roi, t.tileRoi);
    expectRoi(t.tileRoi, 0, 0, 0, 0, 0);
    EXPECT_EQ(t.gatherHeader, nullptr);
    EXPECT_EQ(t.gatherRoi, nullptr);
    EXPECT_EQ(t.tileTable, nullptr);

    const RmgTileView &p = set->views[1];
    expectLayoutOf(p.gatherHeader, plain.image, 10, 12);
    EXPECT_EQ(p.gatherHeader->imageData, plain.image->imageData);
    EXPECT_EQ(p.gatherHeader->imageSize, plain.image->imageSize);
    EXPECT_EQ(p.gatherHeader->roi, p.gatherRoi);
    EXPECT_EQ(p.tileHeader, nullptr);
    EXPECT_EQ(ownViewsFree(set), 0);
}

TEST_F(ViewsTest, PlainImageIsShownThroughItsShadowHeader) {
    Plain plain(3, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 30, 40);
    plain.setRoi(2, 5, 7, 20, 30);
    RmgTileViews *set = oneEntrySet(plain.image, RMG_TILE_WRITE, 16, 16, Rect{3, 4, 12, 16});
    RmgImage *view = ownViewsGet(set, 1);
    ASSERT_EQ(view, set->views[0].gatherHeader);
    EXPECT_EQ(view->imageData, plain.image->imageData);
    expectRoi(view->roi, 2, 8, 11, 16, 12);
    ownViewsPutAll(set);
    EXPECT_EQ(set->views[0].useCount, 0);
    EXPECT_EQ(ownViewsFree(set), 0);
    // The image's own header is untouched.
    EXPECT_EQ(plain.image->roi, &plain.roi);
}

TEST_F(ViewsTest, RegionInsideOneTileWorksInTheTilesOwnMemory) {
    Tiled tiled(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 128, 128, 64, 64);
    tiled.setRoi(0, 70, 66, 40, 40);
    RmgTileViews *set = oneEntrySet(tiled.image, RMG_TILE_WRITE, 64, 64, Rect{2, 3, 20, 30});
    const int i = 1;
    RmgImage *view = ownViewsGet(set, i);
    ASSERT_NE(view, nullptr);
    EXPECT_EQ(view, set->views[0].tileHeader);
    EXPECT_EQ(view->imageData, tiled.tiles.at({1, 1}).data());
    expectRoi(view->roi, 0, 8, 5, 30, 20);
    // No scratch image and no table.
    EXPECT_EQ(set->views[0].gatherHeader, nullptr);
    EXPECT_EQ(set->views[0].tileTable, nullptr);
    // A second get in the rectangle is the same view, without a call.
    EXPECT_EQ(ownViewsGet(set, i), view);
    EXPECT_EQ(set->views[0].useCount, 2);
    EXPECT_EQ(tiled.calls, tileCalls({{1, 1}}, RMG_TILE_WRITE));
    // Written in place: the put only releases.
    view->imageData[5 * 64 + 8] = 0xAB;
    ownViewsPut(set, i);
    ownViewsPut(set, i);
    EXPECT_EQ(tiled.calls, (std::vector<TileCall>{{1, 1, RMG_TILE_WRITE}, {1, 1, RMG_TILE_RELEASE}}));
    EXPECT_EQ(tiled.tiles.at({1, 1})[5 * 64 + 8], 0xAB);
    EXPECT_EQ(ownViewsFree(set), 0);
    EXPECT_EQ(tiled.calls.size(), 2u);
}

TEST_F(ViewsTest, ReadViewAcrossTilesIsGatheredAndOnlyReleased) {
    Tiled tiled(3, RMG_DEPTH_16U, RMG_DATA_PIXEL, 4, 64, 64, 8, 8);
    tiled.setRoi(2, 4, 2, 30, 30);
    RmgTileViews *set = oneEntrySet(tiled.image, RMG_TILE_READ, 16, 16, Rect{0, 2, 16, 16});
    RmgImage *view = ownViewsGet(set, 1);
    const RmgTileView &e = set->views[0];
    ASSERT_NE(view, nullptr);
    EXPECT_EQ(view, e.gatherHeader);
    expectLayoutOf(view, tiled.image, 16, 16);
    expectRoi(view->roi, 2, 0, 0, 16, 16);
    EXPECT_EQ(e.tableColumns, 3);  // (8 + 16 - 1) / 8 + 1
    EXPECT_EQ(e.firstColumn, 0);
    EXPECT_EQ(e.lastColumn, 2);
    EXPECT_EQ(e.firstRow, 0);
    EXPECT_EQ(e.lastRow, 2);
    EXPECT_EQ(tiled.calls, tileCalls(kNine, RMG_TILE_READ));
    // All channels are gathered, whatever the coi.
    const scetest::Layout layout{3, RMG_DEPTH_16U, RMG_DATA_PIXEL, 4, 16, 16};
    std::vector<uint8_t> scratch(view->imageData, view->imageData + view->imageSize);
    for (int y = 0; y < 16; ++y)
        for (int x = 0; x < 16; ++x)
            for (int ch = 0; ch < 3; ++ch)
                ASSERT_EQ(scetest::getElement(scratch, 0, layout, x, y, ch),
                          tiled.element(4 + x, 4 + y, ch))
                    << x << ", " << y << ", " << ch;
    ownViewsPutAll(set);
    EXPECT_EQ(tiled.calls, nineAndReleased(RMG_TILE_READ));
    viewstest::expectTilesFresh(tiled);
    EXPECT_EQ(ownViewsFree(set), 0);
    EXPECT_TRUE(rmgtest::reports().empty());
}

TEST_F(ViewsTest, WriteViewAcrossTilesIsGatheredThenScattered) {
    Tiled tiled(2, RMG_DEPTH_8U, RMG_DATA_PLANE, 8, 32, 32, 8, 8);
    RmgTileViews *set = oneEntrySet(tiled.image, RMG_TILE_WRITE, 16, 16, Rect{4, 4, 16, 16});
    RmgImage *view = ownViewsGet(set, 1);
    ASSERT_NE(view, nullptr);
    EXPECT_EQ(tiled.calls, tileCalls(kNine, RMG_TILE_WRITE));
    // The old pixels are there before anything is written; change channel
    // 2 only, channel 1 keeps its values through the scatter.
    const scetest::Layout layout{2, RMG_DEPTH_8U, RMG_DATA_PLANE, 8, 16, 16};
    std::vector<uint8_t> scratch(view->imageData, view->imageData + view->imageSize);
    std::map<std::pair<int, int>, std::vector<uint8_t>> want;
    for (const auto &t : tiled.tiles) want[t.first] = t.second;
    for (int y = 0; y < 16; ++y)
        for (int x = 0; x < 16; ++x) {
            const uint32_t v = scetest::getElement(scratch, 0, layout, x, y, 1) ^ 0x5Au;
            scetest::putElement(scratch, 0, layout, x, y, 1, v);
            scetest::putElement(want[{(4 + x) / 8, (4 + y) / 8}], 0, tiled.tileLayout(),
                                (4 + x) % 8, (4 + y) % 8, 1, v);
        }
    std::copy(scratch.begin(), scratch.end(), view->imageData);
    ownViewsPut(set, 1);
    EXPECT_EQ(tiled.calls, nineAndReleased(RMG_TILE_WRITE));
    viewstest::expectTilesEqual(tiled, want);
    EXPECT_EQ(ownViewsFree(set), 0);
}

TEST_F(ViewsTest, NullTileInAGatherStopsGetAndPutThere) {
    Tiled tiled(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 32, 32, 8, 8);
    tiled.failing = {{1, 1}};
    RmgTileViews *set = oneEntrySet(tiled.image, RMG_TILE_WRITE, 16, 16, Rect{4, 4, 16, 16});
    EXPECT_EQ(ownViewsGet(set, 1), nullptr);
    EXPECT_EQ(set->failed, 1);
    // The same entry again in this rectangle: null as well, no call.
    EXPECT_EQ(ownViewsGet(set, 1), nullptr);
    EXPECT_EQ(tiled.calls, tileCalls({{0, 0}, {1, 0}, {2, 0}, {0, 1}, {1, 1}}, RMG_TILE_WRITE));
    tiled.calls.clear();
    EXPECT_EQ(ownViewsFree(set), 1);
    // The put gave back the four tiles before the null one, in get order.
    EXPECT_EQ(tiled.calls, tileCalls({{0, 0}, {1, 0}, {2, 0}, {0, 1}}, RMG_TILE_RELEASE));
    viewstest::expectTilesFresh(tiled);
    EXPECT_TRUE(rmgtest::reports().empty());
}

TEST_F(ViewsTest, NullSingleTileIsNotReleased) {
    Tiled tiled(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 32, 32, 16, 16);
    tiled.failing = {{1, 0}};
    RmgTileViews *set = oneEntrySet(tiled.image, RMG_TILE_READ, 16, 16, Rect{16, 0, 16, 16});
    EXPECT_EQ(ownViewsGet(set, 1), nullptr);
    EXPECT_EQ(ownViewsFree(set), 1);
    EXPECT_EQ(tiled.calls, tileCalls({{1, 0}}, RMG_TILE_READ));
}

TEST_F(ViewsTest, FreeGivesBackOpenViews) {
    Tiled a(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 32, 32, 8, 8);
    Tiled b(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 32, 32, 16, 16);
    copytest::CallLog log;
    log.watchPair(a, b);
    RmgTileViews *set = ownViewsCreate(2, 16, 16);
    ownViewsAdd(set, a.image, RMG_TILE_READ);
    ownViewsAdd(set, b.image, RMG_TILE_WRITE);
    ownViewsSetRect(set, 0, 16, 16, 16);
    ASSERT_NE(ownViewsGet(set, 2), nullptr);
    ASSERT_NE(ownViewsGet(set, 1), nullptr);
    EXPECT_EQ(ownViewsFree(set), 0);
    const viewstest::Tiles four = {{0, 2}, {1, 2}, {0, 3}, {1, 3}};
    EXPECT_EQ(log.calls, copytest::joined({logCalls('D', {{0, 1}}, RMG_TILE_WRITE),
                                           logCalls('S', four, RMG_TILE_READ),
                                           logCalls('S', four, RMG_TILE_RELEASE),
                                           logCalls('D', {{0, 1}}, RMG_TILE_RELEASE)}));
}

// The scratch image and the table hold a rectangle of the set's tile size;
// a larger one is cut to that size, so a view never reaches beyond them.
TEST_F(ViewsTest, RectangleLargerThanTheSetsTileIsCut) {
    Tiled tiled(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 64, 64, 8, 8);
    RmgTileViews *set = oneEntrySet(tiled.image, RMG_TILE_WRITE, 16, 8, Rect{4, 2, 40, 30});
    EXPECT_EQ(set->rectX, 4);
    EXPECT_EQ(set->rectY, 2);
    EXPECT_EQ(set->rectWidth, 16);
    EXPECT_EQ(set->rectHeight, 8);
    RmgImage *view = ownViewsGet(set, 1);
    ASSERT_NE(view, nullptr);
    EXPECT_EQ(view->width, 16);
    EXPECT_EQ(view->height, 8);
    expectRoi(view->roi, 0, 0, 0, 8, 16);
    EXPECT_EQ(tiled.calls,
              tileCalls({{0, 0}, {1, 0}, {2, 0}, {0, 1}, {1, 1}, {2, 1}}, RMG_TILE_WRITE));
    EXPECT_EQ(ownViewsFree(set), 0);
    viewstest::expectTilesFresh(tiled);
}

}  // namespace
