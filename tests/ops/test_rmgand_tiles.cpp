// The tile walks of rmgAndS (two cursors) and rmgAnd (three cursors):
// tiled against plain for tile sizes 8, 16 and 24 with tiled sources,
// destination or all, with and without tilePos; the recorded call-back
// sequences in their order; the messages of a null tile, of a tile not
// cleared on release, and of a tilePos outside the destination's region.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <map>
#include <memory>
#include <random>
#include <sstream>
#include <vector>

#include "ops/addstest.h"
#include "ops/andtest.h"
#include "support/rmgforms.h"
#include "support/rmgtest.h"

namespace {

using addstest::Image;
using addstest::TileCall;
using addstest::Tiled;

class AndTilesTest : public rmgtest::ErrorStateTest {};

using Shared = std::vector<std::pair<int, TileCall>>;

const unsigned int kDepths[] = {RMG_DEPTH_1U,  RMG_DEPTH_8U,  RMG_DEPTH_8S,
                                RMG_DEPTH_16U, RMG_DEPTH_16S, RMG_DEPTH_32S};
const int kTileSizes[] = {8, 16, 24};

// One image of a test, plain or tiled, with the plain twin that the
// reference call works on.
struct Operand {
    std::unique_ptr<Image> plain;
    std::unique_ptr<Tiled> tiled;
    RmgImage *image() const { return tiled ? tiled->image : plain->image; }
    void setRoi(int coi, int x, int y, int h, int w) {
        plain->setRoi(coi, x, y, h, w);
        if (tiled) tiled->setRoi(coi, x, y, h, w);
    }
    // Element (x, y, ch) as the call left it.
    int64_t get(int x, int y, int ch) const {
        if (tiled) return tiled->get(x, y, ch);
        return addstest::getAt(addstest::layoutOf(plain->image), plain->data, x, y, ch);
    }
};

// The size of an image's region as the walk sees it (the ROI cut at the
// image's edge), its offset, and the tile range of a region of h x w there.
struct Span {
    int x, y, h, w;
};
Span spanOf(const RmgImage *image) {
    if (const RmgROI *roi = image->roi)
        return Span{roi->xOffset, roi->yOffset, std::min(roi->height, image->height - roi->yOffset),
                    std::min(roi->width, image->width - roi->xOffset)};
    return Span{0, 0, image->height, image->width};
}

// Every acquired tile is released, and tileData is left null.
void expectBalanced(const Tiled &t, const std::string &note) {
    std::map<std::pair<int, int>, int> open;
    for (const TileCall &c : t.calls) {
        if (c.mode == RMG_TILE_RELEASE)
            --open[{c.x, c.y}];
        else
            ++open[{c.x, c.y}];
    }
    for (const auto &entry : open) EXPECT_EQ(entry.second, 0) << note;
    EXPECT_EQ(t.info.tileData, nullptr) << note;
}

// Runs one random configuration of rmgAndS (count 2) or rmgAnd (count 3).
// `tiledMask` bit i: operand i is tiled; `alias`: the first source is the
// destination.
void runTiled(int count, std::mt19937 &rng, int iteration, int *withTilePos) {
    auto pick = [&](int n) { return static_cast<int>(rng() % static_cast<unsigned>(n)); };
    const unsigned int depth = kDepths[pick(6)];
    const int order = pick(2);
    const int channels = depth == RMG_DEPTH_1U ? 1 : 1 + pick(3);
    const int last = count - 1;
    int tiledMask = 0;
    // Some image that decides the walk is tiled: the destination, or the
    // first source (rmgAnd doesn't walk for a tiled second source alone).
    while ((tiledMask & ((1 << last) | 1)) == 0) tiledMask = pick(1 << count);
    const bool alias = pick(6) == 0;
    if (alias && ((tiledMask >> last) & 1) != (tiledMask & 1)) tiledMask |= 1 | (1 << last);
    const bool withCoi = depth != RMG_DEPTH_1U && pick(3) == 0;
    const bool withRoi = withCoi || pick(4) != 0;

    std::ostringstream note;
    note << (count == 2 ? "rmgAndS" : "rmgAnd") << " iteration " << iteration << " depth "
         << (depth & 0xFF) << " order " << order << " channels " << channels << " tiled "
         << tiledMask << (alias ? " alias" : "");
    Operand ops[3];
    for (int i = 0; i < count; ++i) {
        if (alias && i == last) break;
        const int align = pick(2) ? 8 : 4;
        // Two rows at least: a whole image of exactly 8 bytes with align 8
        // is left unchanged by rmgAndS, which no tile of 8 rows is.
        const int height = 2 + pick(39);
        int width = 1 + pick(60);
        const int tw = kTileSizes[pick(3)];
        const int th = pick(2) ? tw : kTileSizes[pick(3)];
        // An untiled image never has a tile's width: a whole-tile piece
        // against it would take the flat path, padding and all.
        if (!((tiledMask >> i) & 1) && width % 8 == 0) ++width;
        ops[i].plain = std::make_unique<Image>(channels, depth, order, align, height, width, rng());
        if ((tiledMask >> i) & 1) {
            ops[i].tiled = std::make_unique<Tiled>(channels, depth, order, align, height, width, tw,
                                                   th, rng());
            ops[i].tiled->load(*ops[i].plain);
        }
        note << " [" << i << "] " << height << "x" << width << "/" << align << " tile " << tw << "x"
             << th;
        if (!withRoi) continue;
        const int x = pick(width);
        const int y = pick(height);
        int rw = 1 + pick(width - x);
        int rh = 1 + pick(height - y);
        if (depth != RMG_DEPTH_1U && pick(4) == 0) {
            rw += pick(20);
            rh += pick(20);
        }
        const int coi = withCoi ? 1 + pick(channels) : 0;
        ops[i].setRoi(coi, x, y, rh, rw);
        note << " roi(" << coi << "," << x << "," << y << "," << rh << "," << rw << ")";
    }
    Operand &dst = alias ? ops[0] : ops[last];
    RmgImage *images[3];
    for (int i = 0; i < count; ++i) images[i] = (alias && i == last ? ops[0] : ops[i]).image();

    int tilePosStore[2];
    const int *tilePos = nullptr;
    if (dst.tiled && pick(5) < 2) {
        int h = INT32_MAX, w = INT32_MAX;
        for (int i = 0; i < count; ++i) {
            const Span s = spanOf(images[i]);
            h = std::min(h, s.h);
            w = std::min(w, s.w);
        }
        const Span d = spanOf(dst.image());
        const int tw = dst.tiled->info.width;
        const int th = dst.tiled->info.height;
        tilePosStore[0] = d.x / tw + pick((d.x + w - 1) / tw - d.x / tw + 1);
        tilePosStore[1] = d.y / th + pick((d.y + h - 1) / th - d.y / th + 1);
        tilePos = tilePosStore;
        note << " tilePos " << tilePos[0] << "," << tilePos[1];
        ++*withTilePos;
    }
    const int value = static_cast<int>(rng());
    note << " value " << value;

    // The reference: the plain images through the plain path.
    const std::vector<uint8_t> dstBefore = dst.plain->bytes();
    if (count == 2)
        rmgAndS(ops[0].plain->image, (alias ? ops[0] : ops[1]).plain->image, value, nullptr);
    else
        rmgAnd(ops[0].plain->image, ops[1].plain->image, (alias ? ops[0] : ops[2]).plain->image,
               nullptr);
    ASSERT_TRUE(rmgtest::reports().empty()) << note.str();
    const std::vector<uint8_t> dstAfter = dst.plain->bytes();
    const addstest::Layout dl = addstest::layoutOf(dst.plain->image);

    std::map<std::pair<int, int>, std::vector<uint8_t>> tilesBefore[3];
    for (int i = 0; i < count; ++i)
        if (ops[i].tiled) tilesBefore[i] = ops[i].tiled->tiles;
    for (int form : rmgtest::runnableForms()) {
        rmgtest::ForcedForm forced(form);
        for (int i = 0; i < count; ++i) {
            if (ops[i].tiled) {
                ops[i].tiled->tiles = tilesBefore[i];
                ops[i].tiled->calls.clear();
            }
        }
        if (!dst.tiled) dst.plain->fillFrom(dstBefore);
        if (count == 2)
            rmgAndS(images[0], images[1], value, tilePos);
        else
            rmgAnd(images[0], images[1], images[2], tilePos);
        ASSERT_TRUE(rmgtest::reports().empty()) << note.str();
        const RmgImage *d = dst.plain->image;
        const int tw = dst.tiled ? dst.tiled->info.width : 1;
        const int th = dst.tiled ? dst.tiled->info.height : 1;
        const int planes = depth == RMG_DEPTH_1U ? 1 : channels;
        for (int y = 0; y < d->height; ++y)
            for (int x = 0; x < d->width; ++x)
                for (int ch = 0; ch < planes; ++ch) {
                    const bool inTile =
                        tilePos == nullptr || (x / tw == tilePos[0] && y / th == tilePos[1]);
                    const int64_t want =
                        addstest::getAt(dl, (inTile ? dstAfter : dstBefore).data(), x, y, ch);
                    ASSERT_EQ(dst.get(x, y, ch), want)
                        << note.str() << " at " << x << "," << y << "," << ch << " form " << form;
                }
        for (int i = 0; i < count; ++i) {
            if (!ops[i].tiled) continue;
            expectBalanced(*ops[i].tiled, note.str());
            if (&ops[i] != &dst) {
                ASSERT_EQ(ops[i].tiled->tiles, tilesBefore[i]) << note.str();
            }
        }
    }
}

TEST_F(AndTilesTest, AndSTiledAgreesWithPlain) {
    std::mt19937 rng(8086);
    int withTilePos = 0;
    for (int iteration = 0; iteration < 700; ++iteration) runTiled(2, rng, iteration, &withTilePos);
    EXPECT_GT(withTilePos, 40);
}

TEST_F(AndTilesTest, AndTiledAgreesWithPlain) {
    std::mt19937 rng(6502);
    int withTilePos = 0;
    for (int iteration = 0; iteration < 700; ++iteration) runTiled(3, rng, iteration, &withTilePos);
    EXPECT_GT(withTilePos, 40);
}

// ---------------------------------------------------------------------------
// Call-back sequences
// ---------------------------------------------------------------------------

TileCall call(int x, int y, int mode) { return TileCall{x, y, mode}; }

// Three tiled images of 16 x 16 in tiles of 8: at each step srcImageA,
// srcImageB and dstImage in this order, and at the end of a tile row the
// three released in the same order.
TEST_F(AndTilesTest, ThreeCursorsAskInTheOrderOfTheArguments) {
    Shared shared;
    Tiled a(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 16, 16, 8, 8, 1);
    Tiled b(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 16, 16, 8, 8, 2);
    Tiled d(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 16, 16, 8, 8, 3);
    Tiled *all[3] = {&a, &b, &d};
    for (int i = 0; i < 3; ++i) {
        all[i]->shared = &shared;
        all[i]->tag = i;
    }
    rmgAnd(a.image, b.image, d.image, nullptr);
    Shared want;
    for (int row = 0; row < 2; ++row) {
        for (int i = 0; i < 3; ++i) want.push_back({i, call(0, row, i == 2 ? 2 : 1)});
        for (int i = 0; i < 3; ++i) {
            want.push_back({i, call(0, row, 4)});
            want.push_back({i, call(1, row, i == 2 ? 2 : 1)});
        }
        for (int i = 0; i < 3; ++i) want.push_back({i, call(1, row, 4)});
    }
    EXPECT_EQ(shared, want);
    EXPECT_TRUE(rmgtest::reports().empty());
    for (int y = 0; y < 16; ++y)
        for (int x = 0; x < 16; ++x) EXPECT_EQ(d.get(x, y, 0), a.get(x, y, 0) & b.get(x, y, 0));
}

// An untiled srcImageA, a tiled srcImageB with tiles of 16 and a tiled
// destination with tiles of 8: each cursor moves through its own grid.
TEST_F(AndTilesTest, EachCursorMovesThroughItsOwnGrid) {
    Shared shared;
    Image a(1, RMG_DEPTH_16U, RMG_DATA_PIXEL, 4, 16, 16, 1);
    Tiled b(1, RMG_DEPTH_16U, RMG_DATA_PIXEL, 4, 16, 16, 16, 16, 2);
    Tiled d(1, RMG_DEPTH_16U, RMG_DATA_PIXEL, 4, 16, 16, 8, 8, 3);
    b.shared = &shared;
    d.shared = &shared;
    b.tag = 1;
    d.tag = 2;
    rmgAnd(a.image, b.image, d.image, nullptr);
    const Shared want = {{1, call(0, 0, 1)}, {2, call(0, 0, 2)}, {2, call(0, 0, 4)},
                         {2, call(1, 0, 2)}, {1, call(0, 0, 4)}, {2, call(1, 0, 4)},
                         {1, call(0, 0, 1)}, {2, call(0, 1, 2)}, {2, call(0, 1, 4)},
                         {2, call(1, 1, 2)}, {1, call(0, 0, 4)}, {2, call(1, 1, 4)}};
    EXPECT_EQ(shared, want);
}

TEST_F(AndTilesTest, AndSWithATiledSourceReadsRowsOfItsTiles) {
    Tiled src(3, RMG_DEPTH_32S, RMG_DATA_PLANE, 8, 30, 30, 16, 8, 1);
    Image dst(3, RMG_DEPTH_32S, RMG_DATA_PLANE, 8, 30, 30, 2);
    src.setRoi(0, 10, 5, 4, 10);
    rmgAndS(src.image, dst.image, -1, nullptr);
    EXPECT_EQ(addstest::describe(src.calls),
              "(0,0,1)(0,0,4)(1,0,1)(1,0,4)(0,1,1)(0,1,4)(1,1,1)(1,1,4)");
    const addstest::Layout dl = addstest::layoutOf(dst.image);
    for (int ch = 0; ch < 3; ++ch)
        for (int y = 0; y < 4; ++y)
            for (int x = 0; x < 10; ++x)
                EXPECT_EQ(addstest::getAt(dl, dst.data, x, y, ch), src.get(10 + x, 5 + y, ch));
}

TEST_F(AndTilesTest, TilePosRestrictsBothWalksToOneDestinationTile) {
    Image a(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 24, 24, 1);
    Image b(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 24, 24, 2);
    Tiled d(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 24, 24, 8, 8, 3);
    const auto before = d.tiles;
    const int tilePos[2] = {2, 1};
    rmgAnd(a.image, b.image, d.image, tilePos);
    EXPECT_EQ(addstest::describe(d.calls), "(2,1,2)(2,1,4)");
    for (const auto &entry : d.tiles)
        if (entry.first != std::make_pair(2, 1)) {
            EXPECT_EQ(entry.second, before.at(entry.first));
        }
    for (int y = 8; y < 16; ++y)
        for (int x = 16; x < 24; ++x)
            EXPECT_EQ(d.get(x, y, 0), a.data[y * 24 + x] & b.data[y * 24 + x]);

    d.calls.clear();
    const int other[2] = {0, 2};
    rmgAndS(a.image, d.image, 0x0F, other);
    EXPECT_EQ(addstest::describe(d.calls), "(0,2,2)(0,2,4)");
    for (int y = 16; y < 24; ++y)
        for (int x = 0; x < 8; ++x) EXPECT_EQ(d.get(x, y, 0), a.data[y * 24 + x] & 0x0F);
}

// ---------------------------------------------------------------------------
// Messages
// ---------------------------------------------------------------------------

TEST_F(AndTilesTest, ANullTileOfEachImageOfRmgAnd) {
    struct Probe {
        int image;  // 0 A, 1 B, 2 destination
        std::pair<int, int> tile;
        const char *text;
        const char *sequence;
    };
    const Probe probes[] = {
        {0, {0, 0}, "(srcImageA->tileInfo->tileData == ((void*)(0)))", "(0,0,1)"},
        {1, {0, 0}, "(srcImageB->tileInfo->tileData == ((void*)(0)))", "(0,0,1)"},
        {2, {0, 0}, "(dstImage->tileInfo->tileData == ((void*)(0)))", "(0,0,2)"},
        {1, {1, 0}, "(srcImageB->tileInfo->tileData == ((void*)(0)))", "(0,0,1)(0,0,4)(1,0,1)"},
        {2,
         {0, 1},
         "(dstImage->tileInfo->tileData == ((void*)(0)))",
         "(0,0,2)(0,0,4)(1,0,2)(1,0,4)(0,1,2)"},
    };
    for (const Probe &p : probes) {
        rmgtest::reports().clear();
        Tiled a(1, RMG_DEPTH_16S, RMG_DATA_PIXEL, 4, 16, 16, 8, 8, 1);
        Tiled b(1, RMG_DEPTH_16S, RMG_DATA_PIXEL, 4, 16, 16, 8, 8, 2);
        Tiled d(1, RMG_DEPTH_16S, RMG_DATA_PIXEL, 4, 16, 16, 8, 8, 3);
        Tiled *all[3] = {&a, &b, &d};
        all[p.image]->refused = {p.tile};
        rmgAnd(a.image, b.image, d.image, nullptr);
        addstest::expectOneReport("rmgAnd", "rmgand", p.text);
        EXPECT_EQ(addstest::describe(all[p.image]->calls), p.sequence) << p.text;
        // Images after the failing one in the step were not asked.
        if (p.tile == std::make_pair(0, 0)) {
            for (int i = p.image + 1; i < 3; ++i) EXPECT_TRUE(all[i]->calls.empty()) << i;
        }
    }
}

TEST_F(AndTilesTest, ATileNotClearedOnReleaseOfEachImageOfRmgAnd) {
    struct Probe {
        int image;
        std::pair<int, int> tile;
        const char *text;
    };
    const Probe probes[] = {
        {0, {0, 0}, "(srcImageA->tileInfo->tileData != ((void*)(0)))"},
        {1, {0, 0}, "(srcImageB->tileInfo->tileData != ((void*)(0)))"},
        {2, {0, 0}, "(dstImage->tileInfo->tileData != ((void*)(0)))"},
        // The last tile of a row is released after the columns.
        {1, {1, 0}, "(srcImageB->tileInfo->tileData != ((void*)(0)))"},
        {2, {1, 0}, "(dstImage->tileInfo->tileData != ((void*)(0)))"},
    };
    for (const Probe &p : probes) {
        rmgtest::reports().clear();
        Tiled a(1, RMG_DEPTH_32S, RMG_DATA_PLANE, 8, 8, 16, 8, 8, 1);
        Tiled b(1, RMG_DEPTH_32S, RMG_DATA_PLANE, 8, 8, 16, 8, 8, 2);
        Tiled d(1, RMG_DEPTH_32S, RMG_DATA_PLANE, 8, 8, 16, 8, 8, 3);
        Tiled *all[3] = {&a, &b, &d};
        all[p.image]->held = {p.tile};
        rmgAnd(a.image, b.image, d.image, nullptr);
        addstest::expectOneReport("rmgAnd", "rmgand", p.text);
        const TileCall released{p.tile.first, p.tile.second, RMG_TILE_RELEASE};
        ASSERT_FALSE(all[p.image]->calls.empty());
        EXPECT_EQ(all[p.image]->calls.back(), released) << p.text;
    }
}

TEST_F(AndTilesTest, ANullTileAndATileNotClearedInRmgAndS) {
    struct Probe {
        int image;  // 0 source, 1 destination
        bool held;  // not cleared on release, else refused
        std::pair<int, int> tile;
        const char *text;
        const char *sequence;
    };
    const Probe probes[] = {
        {0,
         false,
         {0, 1},
         "(srcImage->tileInfo->tileData == ((void*)(0)))",
         "(0,0,1)(0,0,4)(1,0,1)(1,0,4)(0,1,1)"},
        {1,
         false,
         {1, 0},
         "(dstImage->tileInfo->tileData == ((void*)(0)))",
         "(0,0,2)(0,0,4)(1,0,2)"},
        {0,
         true,
         {1, 0},
         "(srcImage->tileInfo->tileData != ((void*)(0)))",
         "(0,0,1)(0,0,4)(1,0,1)(1,0,4)"},
        {1, true, {0, 0}, "(dstImage->tileInfo->tileData != ((void*)(0)))", "(0,0,2)(0,0,4)"},
    };
    for (const Probe &p : probes) {
        rmgtest::reports().clear();
        Tiled src(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 16, 16, 8, 8, 1);
        Tiled dst(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 16, 16, 8, 8, 2);
        Tiled &t = p.image == 0 ? src : dst;
        (p.held ? t.held : t.refused) = {p.tile};
        rmgAndS(src.image, dst.image, 1, nullptr);
        addstest::expectOneReport("rmgAndS", "rmgands", p.text);
        EXPECT_EQ(addstest::describe(t.calls), p.sequence) << p.text;
    }
}

TEST_F(AndTilesTest, ATilePosOutsideTheDestinationRegion) {
    Image a(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 32, 32, 1);
    Image b(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 32, 32, 2);
    Tiled d(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 32, 32, 8, 8, 3);
    for (const addstest::TilePosProbe &p : addstest::tilePosProbes()) {
        d.setRoi(0, p.x, p.y, 8, 8);
        const int tilePos[2] = {p.tileX, p.tileY};
        for (int op = 0; op < 2; ++op) {
            rmgtest::reports().clear();
            d.calls.clear();
            if (op == 0)
                rmgAnd(a.image, b.image, d.image, tilePos);
            else
                rmgAndS(a.image, d.image, 1, tilePos);
            addstest::expectOneReport(op == 0 ? "rmgAnd" : "rmgAndS",
                                      op == 0 ? "rmgand" : "rmgands", p.text);
            EXPECT_TRUE(d.calls.empty());
        }
    }
}

}  // namespace
