// The tile walk of rmgAddS and rmgSubtractS: tiled against plain for tile
// sizes 8, 16 and 24 with a tiled source, destination or both, with and
// without tilePos; the recorded call-back sequences; the messages of a null
// tile, of a tile not cleared on release, and of a tilePos outside the
// destination's region.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <map>
#include <memory>
#include <random>
#include <sstream>
#include <vector>

#include "ops/addstest.h"
#include "support/rmgforms.h"
#include "support/rmgtest.h"

namespace {

using addstest::Image;
using addstest::Kind;
using addstest::TileCall;
using addstest::Tiled;

class AddSTilesTest : public rmgtest::ErrorStateTest {};

using Tiles = std::map<std::pair<int, int>, std::vector<uint8_t>>;
using Shared = std::vector<std::pair<int, TileCall>>;

struct Rect {
    int begX, endX, begY, endY;
};

// The walk's rectangle of an image: the ROI's offset and its size cut at
// the image's edge.
Rect roiRect(const RmgImage *image, int *height, int *width) {
    int x = 0, y = 0, h = image->height, w = image->width;
    if (const RmgROI *roi = image->roi) {
        x = roi->xOffset;
        y = roi->yOffset;
        h = std::min(roi->height, image->height - y);
        w = std::min(roi->width, image->width - x);
    }
    *height = h;
    *width = w;
    return Rect{x, x + w, y, y + h};
}

bool coiKeepsWhole(const RmgImage *image) {
    return image->roi == nullptr || image->roi->coi == 0 ||
           (image->roi->coi == 1 && image->nChannels == 1);
}

// What the walk leaves in a tiled destination: the plain model's pairs (cut
// to the tile of tilePos), and where a piece is a whole tile of both images
// alike, the whole tile's bytes from the flat path, its padding included.
Tiles expectedTiles(const Image &srcPlain, const std::vector<uint8_t> &srcBefore,
                    const Image &dstPlain, const Tiled &dst, const Tiled *srcTiled,
                    const Tiles &srcTilesBefore, Kind kind, int value, const int *tilePos) {
    Tiles want = dst.tiles;
    const int tw = dst.info.width;
    const int th = dst.info.height;
    const addstest::Layout sl = addstest::layoutOf(srcPlain.image);
    const addstest::Layout tl = dst.tileLayout();
    const unsigned int depth = dst.image->depth;
    auto inTile = [&](int x, int y) {
        return tilePos == nullptr || (x / tw == tilePos[0] && y / th == tilePos[1]);
    };
    for (const addstest::Pair &p :
         addstest::planOf(srcPlain.image, dstPlain.image, true).pairs) {
        if (!inTile(p.dx, p.dy)) continue;
        const int64_t e = addstest::getAt(sl, srcBefore.data(), p.sx, p.sy, p.sch);
        addstest::putAt(tl, want.at({p.dx / tw, p.dy / th}).data(), p.dx % tw, p.dy % th, p.dch,
                        addstest::resultOf(depth, kind, value, e, p.one));
    }
    if (srcTiled == nullptr || srcTiled->info.width != tw || srcTiled->info.height != th ||
        srcTiled->tileStep() != dst.tileStep() || !coiKeepsWhole(srcTiled->image) ||
        !coiKeepsWhole(dst.image))
        return want;
    int hs, ws, hd, wd;
    Rect rs = roiRect(srcTiled->image, &hs, &ws);
    Rect rd = roiRect(dst.image, &hd, &wd);
    const int h = std::min(hs, hd);
    const int w = std::min(ws, wd);
    rs.endX = rs.begX + w;
    rs.endY = rs.begY + h;
    rd.endX = rd.begX + w;
    rd.endY = rd.begY + h;
    if (tilePos != nullptr) {
        const int cutBegX = std::max(tilePos[0] * tw - rd.begX, 0);
        const int cutEndX = std::max(rd.endX - (tilePos[0] + 1) * tw, 0);
        const int cutBegY = std::max(tilePos[1] * th - rd.begY, 0);
        const int cutEndY = std::max(rd.endY - (tilePos[1] + 1) * th, 0);
        rd = Rect{rd.begX + cutBegX, rd.endX - cutEndX, rd.begY + cutBegY, rd.endY - cutEndY};
        rs = Rect{rs.begX + cutBegX, rs.endX - cutEndX, rs.begY + cutBegY, rs.endY - cutEndY};
    }
    const int dx = rs.begX - rd.begX;
    const int dy = rs.begY - rd.begY;
    if (dx % tw != 0 || dy % th != 0) return want;
    for (auto &entry : want) {
        const int tx = entry.first.first;
        const int ty = entry.first.second;
        if (tx * tw < rd.begX || (tx + 1) * tw > rd.endX || ty * th < rd.begY ||
            (ty + 1) * th > rd.endY)
            continue;
        const std::vector<uint8_t> &from = srcTilesBefore.at({tx + dx / tw, ty + dy / th});
        addstest::applyFlat(depth, kind, value, from.data(), entry.second.data(),
                            static_cast<int>(entry.second.size()));
    }
    return want;
}

// Every acquired tile is released, and tileData is left null.
void expectBalanced(const Tiled &t, const std::string &note) {
    std::map<std::pair<int, int>, int> open;
    for (const TileCall &c : t.calls) {
        if (c.mode == RMG_TILE_RELEASE) {
            const int held = open[std::make_pair(c.x, c.y)]--;
            EXPECT_GT(held, 0) << note << " " << addstest::describe(t.calls);
        } else {
            ++open[{c.x, c.y}];
        }
    }
    for (const auto &entry : open) EXPECT_EQ(entry.second, 0) << note;
    EXPECT_EQ(t.info.tileData, nullptr) << note;
}

const unsigned int kDepths[] = {RMG_DEPTH_1U,  RMG_DEPTH_8U,  RMG_DEPTH_8S,
                                RMG_DEPTH_16U, RMG_DEPTH_16S, RMG_DEPTH_32S};
const int kTileSizes[] = {8, 16, 24};

void setRoiBoth(Image &plain, Tiled *tiled, int coi, int x, int y, int h, int w) {
    plain.setRoi(coi, x, y, h, w);
    if (tiled != nullptr) tiled->setRoi(coi, x, y, h, w);
}

TEST_F(AddSTilesTest, TiledAgreesWithPlain) {
    std::mt19937 rng(4711);
    auto pick = [&](int n) { return static_cast<int>(rng() % static_cast<unsigned>(n)); };
    const std::vector<int> forms = rmgtest::runnableForms();
    int withTilePos = 0;
    for (int iteration = 0; iteration < 900; ++iteration) {
        const unsigned int depth = kDepths[pick(6)];
        const int order = pick(2);
        const int channels = depth == RMG_DEPTH_1U ? 1 : 1 + pick(3);
        // 0: tiled source, 1: tiled destination, 2: both, 3: one tiled image
        // as source and destination.
        const int mode = pick(4);
        const bool srcTiled = mode != 1;
        const bool dstTiled = mode != 0;
        const bool same = mode == 3;
        const int tw[2] = {kTileSizes[pick(3)], kTileSizes[pick(3)]};
        const int th[2] = {pick(2) ? tw[0] : kTileSizes[pick(3)], pick(2) ? tw[1] : kTileSizes[pick(3)]};
        const int align[2] = {pick(2) ? 8 : 4, pick(2) ? 8 : 4};
        int height[2], width[2];
        for (int i = 0; i < 2; ++i) {
            height[i] = 1 + pick(40);
            width[i] = 1 + pick(60);
        }
        // An untiled image never has exactly a tile's size here: the flat
        // path of a piece against it is a test of its own below.
        if (!srcTiled && width[0] == tw[1]) ++width[0];
        if (!dstTiled && width[1] == tw[0]) ++width[1];

        std::ostringstream note;
        note << "iteration " << iteration << " depth " << (depth & 0xFF) << " order " << order
             << " channels " << channels << " mode " << mode;
        Image srcPlain(channels, depth, order, align[0], height[0], width[0], rng());
        Image dstPlainOwn(channels, depth, order, align[1], height[1], width[1], rng());
        Image &dstPlain = same ? srcPlain : dstPlainOwn;
        std::unique_ptr<Tiled> srcT, dstT;
        if (srcTiled) {
            srcT = std::make_unique<Tiled>(channels, depth, order, align[0], height[0], width[0],
                                           tw[0], th[0], rng());
            srcT->load(srcPlain);
        }
        if (dstTiled && !same) {
            dstT = std::make_unique<Tiled>(channels, depth, order, align[1], height[1], width[1],
                                           tw[1], th[1], rng());
            dstT->load(dstPlain);
        }
        Tiled *dstTiles = same ? srcT.get() : dstT.get();

        // ROIs: the same channel rule on both sides (all channels, or a coi
        // each); 1-bit regions stay inside the image.
        const bool withCoi = depth != RMG_DEPTH_1U && pick(3) == 0;
        for (int i = 0; i < (same ? 1 : 2); ++i) {
            Image &plain = i == 0 ? srcPlain : dstPlain;
            Tiled *tiled = i == 0 ? srcT.get() : dstT.get();
            const int h = plain.image->height;
            const int w = plain.image->width;
            const int coi = withCoi ? 1 + pick(channels) : 0;
            if (!withCoi && pick(3) == 0) continue;
            const int x = pick(w);
            const int y = pick(h);
            int rw = 1 + pick(w - x);
            int rh = 1 + pick(h - y);
            if (depth != RMG_DEPTH_1U && pick(4) == 0) {
                rw += pick(20);
                rh += pick(20);
            }
            setRoiBoth(plain, tiled, coi, x, y, rh, rw);
            note << " roi" << i << "(" << coi << "," << x << "," << y << "," << rh << "," << rw
                 << ")";
        }

        int tilePosStore[2];
        const int *tilePos = nullptr;
        if (dstTiled && pick(5) < 2) {
            int hd, wd;
            const Rect rd = roiRect(dstTiles->image, &hd, &wd);
            int hs, ws;
            roiRect(srcTiled ? srcT->image : srcPlain.image, &hs, &ws);
            const int h = std::min(hd, hs);
            const int w = std::min(wd, ws);
            const int tileW = dstTiles->info.width;
            const int tileH = dstTiles->info.height;
            tilePosStore[0] = rd.begX / tileW + pick((rd.begX + w - 1) / tileW - rd.begX / tileW + 1);
            tilePosStore[1] = rd.begY / tileH + pick((rd.begY + h - 1) / tileH - rd.begY / tileH + 1);
            tilePos = tilePosStore;
            note << " tilePos " << tilePos[0] << "," << tilePos[1];
            ++withTilePos;
        }
        const Kind kind = static_cast<Kind>(pick(3));
        const std::vector<int> &values = addstest::extremeValues();
        const int value = values[rng() % values.size()];
        note << " kind " << kind << " value " << value;

        const std::vector<uint8_t> srcBefore = srcPlain.bytes();
        const std::vector<uint8_t> dstBefore = dstPlain.bytes();
        const Tiles srcTilesBefore = srcT ? srcT->tiles : Tiles{};
        const Tiles dstTilesBefore = dstTiles ? dstTiles->tiles : Tiles{};

        Tiles wantTiles;
        std::vector<uint8_t> wantPlain;
        if (dstTiled)
            wantTiles = expectedTiles(srcPlain, srcBefore, dstPlain, *dstTiles, srcT.get(),
                                      srcTilesBefore, kind, value, tilePos);
        else
            wantPlain = addstest::model(srcPlain.image, srcBefore, dstPlain.image, dstBefore,
                                        kind, value, true);

        for (int form : forms) {
            rmgtest::ForcedForm forced(form);
            if (srcT) srcT->tiles = srcTilesBefore;
            if (dstTiles) dstTiles->tiles = dstTilesBefore;
            if (!dstTiled) dstPlain.fillFrom(dstBefore);
            if (srcT) srcT->calls.clear();
            if (dstTiles) dstTiles->calls.clear();
            const RmgImage *src = srcTiled ? srcT->image : srcPlain.image;
            RmgImage *dst = dstTiled ? dstTiles->image : dstPlain.image;
            addstest::apply(kind, src, dst, value, tilePos);
            ASSERT_TRUE(rmgtest::reports().empty()) << note.str();
            if (dstTiled) {
                for (const auto &entry : wantTiles)
                    ASSERT_EQ(dstTiles->tiles.at(entry.first), entry.second)
                        << note.str() << " tile " << entry.first.first << ","
                        << entry.first.second << " form " << form;
            } else {
                ASSERT_EQ(dstPlain.bytes(), wantPlain) << note.str() << " form " << form;
            }
            if (srcT && !same) {
                ASSERT_EQ(srcT->tiles, srcTilesBefore) << note.str();
            }
            if (!srcTiled) {
                ASSERT_EQ(srcPlain.bytes(), srcBefore) << note.str();
            }
            if (srcT) expectBalanced(*srcT, note.str());
            if (dstT) expectBalanced(*dstT, note.str());
        }
    }
    EXPECT_GT(withTilePos, 50);
}

// ---------------------------------------------------------------------------
// Call-back sequences
// ---------------------------------------------------------------------------

std::vector<TileCall> calls(std::initializer_list<TileCall> list) { return list; }

TEST_F(AddSTilesTest, TiledDestinationIsWrittenTileByTile) {
    Image src(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 20, 20, 1);
    Tiled dst(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 20, 20, 8, 8, 2);
    dst.setRoi(0, 4, 4, 10, 10);
    rmgAddS(src.image, dst.image, 1, nullptr);
    EXPECT_EQ(addstest::describe(dst.calls),
              addstest::describe(calls({{0, 0, 2}, {0, 0, 4}, {1, 0, 2}, {1, 0, 4},
                                        {0, 1, 2}, {0, 1, 4}, {1, 1, 2}, {1, 1, 4}})));
    EXPECT_TRUE(rmgtest::reports().empty());
}

TEST_F(AddSTilesTest, SourceAndDestinationMoveThroughTheirOwnGrids) {
    Shared shared;
    Tiled src(1, RMG_DEPTH_16U, RMG_DATA_PIXEL, 4, 16, 16, 16, 16, 1);
    Tiled dst(1, RMG_DEPTH_16U, RMG_DATA_PIXEL, 4, 16, 16, 8, 8, 2);
    src.shared = &shared;
    dst.shared = &shared;
    src.tag = 0;
    dst.tag = 1;
    rmgSubtractS(src.image, dst.image, 5, 1, nullptr);
    const Shared want = {
        {0, {0, 0, 1}}, {1, {0, 0, 2}}, {1, {0, 0, 4}}, {1, {1, 0, 2}}, {0, {0, 0, 4}},
        {1, {1, 0, 4}}, {0, {0, 0, 1}}, {1, {0, 1, 2}}, {1, {0, 1, 4}}, {1, {1, 1, 2}},
        {0, {0, 0, 4}}, {1, {1, 1, 4}}};
    EXPECT_EQ(shared, want);
}

TEST_F(AddSTilesTest, ATiledSourceIsReadInRowsOfItsTiles) {
    Tiled src(3, RMG_DEPTH_8U, RMG_DATA_PLANE, 8, 30, 30, 16, 8, 1);
    Image dst(3, RMG_DEPTH_8U, RMG_DATA_PLANE, 8, 30, 30, 2);
    src.setRoi(0, 10, 5, 4, 10);
    rmgAddS(src.image, dst.image, 3, nullptr);
    // Rows 5..8 of the source: tile row 0 for rows 5..7, tile row 1 for row
    // 8; columns 10..19: tile columns 0 and 1.
    EXPECT_EQ(addstest::describe(src.calls),
              addstest::describe(calls({{0, 0, 1}, {0, 0, 4}, {1, 0, 1}, {1, 0, 4},
                                        {0, 1, 1}, {0, 1, 4}, {1, 1, 1}, {1, 1, 4}})));
}

TEST_F(AddSTilesTest, TilePosRestrictsTheWalkToOneDestinationTile) {
    Image src(1, RMG_DEPTH_32S, RMG_DATA_PIXEL, 4, 24, 24, 1);
    Tiled dst(1, RMG_DEPTH_32S, RMG_DATA_PIXEL, 4, 24, 24, 8, 8, 2);
    const Tiles before = dst.tiles;
    const std::vector<uint8_t> srcBytes = src.bytes();
    const int tilePos[2] = {1, 2};
    rmgAddS(src.image, dst.image, 1000, tilePos);
    EXPECT_EQ(addstest::describe(dst.calls), addstest::describe(calls({{1, 2, 2}, {1, 2, 4}})));
    for (const auto &entry : dst.tiles)
        if (entry.first != std::make_pair(1, 2)) {
            EXPECT_EQ(entry.second, before.at(entry.first));
        }
    const addstest::Layout sl = addstest::layoutOf(src.image);
    for (int y = 16; y < 24; ++y)
        for (int x = 8; x < 16; ++x) {
            const int64_t e = addstest::getAt(sl, srcBytes.data(), x, y, 0);
            EXPECT_EQ(dst.get(x, y, 0), e > INT32_MAX - 1000 ? INT32_MAX : e + 1000);
        }
}

TEST_F(AddSTilesTest, OneImageAsSourceAndDestinationAsksForReadThenWrite) {
    Tiled image(1, RMG_DEPTH_8S, RMG_DATA_PIXEL, 4, 8, 16, 8, 8, 1);
    rmgAddS(image.image, image.image, 1, nullptr);
    EXPECT_EQ(addstest::describe(image.calls),
              addstest::describe(calls({{0, 0, 1}, {0, 0, 2}, {0, 0, 4}, {1, 0, 1}, {0, 0, 4},
                                        {1, 0, 2}, {1, 0, 4}, {1, 0, 4}})));
}

// A piece that is a whole tile of a tiled image and all of an untiled image
// of the tile's size takes the flat path: the tile's padding gets the
// formula of the untiled image's padding.
TEST_F(AddSTilesTest, AWholeTileAgainstAnImageOfItsSizeIncludesThePadding) {
    Image src(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 8, 9, 1);  // 12 bytes a row
    Tiled dst(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 8, 9, 9 + 7, 8, 2);
    // A tile of 16 columns, 16 bytes a row: not the source's size, no flat
    // path; the padding of the tile stays.
    const Tiles before = dst.tiles;
    rmgAddS(src.image, dst.image, 1, nullptr);
    const std::vector<uint8_t> &tile = dst.tiles.at({0, 0});
    for (int y = 0; y < 8; ++y)
        for (int x = 9; x < 16; ++x)
            EXPECT_EQ(tile[static_cast<size_t>(y * 16 + x)], before.at({0, 0})[static_cast<size_t>(y * 16 + x)]);

    // A 1-bit source of 8 x 8 (4 bytes a row, 3 of them padding) against
    // tiles of 8 x 8: flat over whole words, padding included.
    Image src2(1, RMG_DEPTH_1U, RMG_DATA_PIXEL, 4, 8, 8, 3);
    Tiled dst2(1, RMG_DEPTH_1U, RMG_DATA_PIXEL, 4, 8, 8, 8, 8, 4);
    rmgSubtractS(src2.image, dst2.image, 1, 1, nullptr);
    std::vector<uint8_t> want(32);
    addstest::applyFlat(RMG_DEPTH_1U, addstest::kRev, 1, src2.data, want.data(), 32);
    EXPECT_EQ(dst2.tiles.at({0, 0}), want);
    for (int i = 0; i < 32; ++i) EXPECT_EQ(want[static_cast<size_t>(i)], static_cast<uint8_t>(~src2.data[i]));
}

// ---------------------------------------------------------------------------
// Messages
// ---------------------------------------------------------------------------

TEST_F(AddSTilesTest, ANullSourceTileEndsTheWalk) {
    Tiled src(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 16, 16, 8, 8, 1);
    Tiled dst(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 16, 16, 8, 8, 2);
    src.refused = {{0, 0}};
    rmgAddS(src.image, dst.image, 1, nullptr);
    addstest::expectOneReport("rmgAddS", "rmgadds", "(srcImage->tileInfo->tileData == ((void*)(0)))");
    EXPECT_EQ(addstest::describe(src.calls), "(0,0,1)");
    EXPECT_TRUE(dst.calls.empty());
}

TEST_F(AddSTilesTest, ANullSourceTileInTheRowEndsTheWalkWithTilesHeld) {
    Tiled src(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 16, 16, 8, 8, 1);
    Tiled dst(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 16, 16, 8, 8, 2);
    const Tiles before = dst.tiles;
    src.refused = {{1, 0}};
    rmgSubtractS(src.image, dst.image, 1, 0, nullptr);
    addstest::expectOneReport("rmgSubtractS", "rmgsubs", "(srcImage->tileInfo->tileData == ((void*)(0)))");
    EXPECT_EQ(addstest::describe(src.calls), "(0,0,1)(0,0,4)(1,0,1)");
    // The destination's tile (0, 0) was written and stays acquired.
    EXPECT_EQ(addstest::describe(dst.calls), "(0,0,2)");
    EXPECT_NE(dst.tiles.at({0, 0}), before.at({0, 0}));
}

TEST_F(AddSTilesTest, ANullDestinationTile) {
    Image src(1, RMG_DEPTH_16S, RMG_DATA_PIXEL, 4, 16, 16, 1);
    Tiled dst(1, RMG_DEPTH_16S, RMG_DATA_PIXEL, 4, 16, 16, 8, 8, 2);
    dst.refused = {{0, 1}};
    rmgAddS(src.image, dst.image, 1, nullptr);
    addstest::expectOneReport("rmgAddS", "rmgadds", "(dstImage->tileInfo->tileData == ((void*)(0)))");
    EXPECT_EQ(addstest::describe(dst.calls), "(0,0,2)(0,0,4)(1,0,2)(1,0,4)(0,1,2)");
}

TEST_F(AddSTilesTest, ASourceTileNotClearedOnRelease) {
    Tiled src(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 16, 16, 8, 8, 1);
    Image dst(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 16, 16, 2);
    src.held = {{0, 0}};
    rmgAddS(src.image, dst.image, 1, nullptr);
    addstest::expectOneReport("rmgAddS", "rmgadds", "(srcImage->tileInfo->tileData != ((void*)(0)))");
    EXPECT_EQ(addstest::describe(src.calls), "(0,0,1)(0,0,4)");
}

TEST_F(AddSTilesTest, ADestinationTileNotClearedAtTheEndOfARow) {
    Image src(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 16, 16, 1);
    Tiled dst(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 16, 16, 8, 8, 2);
    dst.held = {{1, 0}};
    rmgSubtractS(src.image, dst.image, 1, 1, nullptr);
    addstest::expectOneReport("rmgSubtractS", "rmgsubs", "(dstImage->tileInfo->tileData != ((void*)(0)))");
    EXPECT_EQ(addstest::describe(dst.calls), "(0,0,2)(0,0,4)(1,0,2)(1,0,4)");
}

TEST_F(AddSTilesTest, ATilePosOutsideTheDestinationRegion) {
    Image src(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 32, 32, 1);
    Tiled dst(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 32, 32, 8, 8, 2);
    for (const addstest::TilePosProbe &p : addstest::tilePosProbes()) {
        rmgtest::reports().clear();
        dst.calls.clear();
        dst.setRoi(0, p.x, p.y, 8, 8);
        const int tilePos[2] = {p.tileX, p.tileY};
        rmgAddS(src.image, dst.image, 1, tilePos);
        addstest::expectOneReport("rmgAddS", "rmgadds", p.text);
        EXPECT_TRUE(dst.calls.empty());
    }
    // A tile that only touches the region's end is not refused: the cut
    // leaves no column, and the tile is asked for and given back.
    rmgtest::reports().clear();
    dst.setRoi(0, 8, 8, 8, 8);
    const Tiles before = dst.tiles;
    const int touching[2] = {2, 1};
    rmgAddS(src.image, dst.image, 1, touching);
    EXPECT_TRUE(rmgtest::reports().empty());
    EXPECT_EQ(addstest::describe(dst.calls), "(2,1,2)(2,1,4)");
    EXPECT_EQ(dst.tiles, before);
}

}  // namespace
