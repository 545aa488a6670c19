// rmgAlphaCompositeC and rmgAlphaComposite over tiled images: random calls
// with tiled destinations, sources, alpha images or all of them, at tile
// sizes 8, 16 and 24, with and without tilePoint, against the same call on
// plain images; every byte of every tile compared. Then the order in which
// the views are taken, a failing call-back, and a tilePoint that a plain
// destination ignores.
#include <gtest/gtest.h>

#include <cstdint>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "alpha/alphatest.h"
#include "alpha/test_rmgalpha_composite.h"
#include "support/rmgtest.h"

namespace {

using alphatest::Image;
using Bytes = std::vector<uint8_t>;
using TileBytes = std::map<std::pair<int, int>, Bytes>;

// The tiles of a tiled image laid over `plain` with square tiles of `side`:
// every tile of the grid that covers the image, pixels beyond the image
// and row padding 0xCD.
TileBytes tilesOf(const Image &plain, int side) {
    const RmgImage *p = plain.image;
    const int size = alphatest::sampleBytes(p->depth);
    const int step = rmgWidthStep(p->dataOrder, p->depth, p->align, p->nChannels, side);
    const int planes = p->dataOrder == RMG_DATA_PLANE ? p->nChannels : 1;
    const Bytes bytes = plain.bytes();
    TileBytes tiles;
    for (int ty = 0; ty * side < p->height; ++ty)
        for (int tx = 0; tx * side < p->width; ++tx)
            tiles[{tx, ty}] = Bytes(static_cast<size_t>(step) * side * planes, 0xCD);
    for (int y = 0; y < p->height; ++y)
        for (int x = 0; x < p->width; ++x)
            for (int ch = 0; ch < p->nChannels; ++ch) {
                const int i = x % side, j = y % side;
                const size_t at = p->dataOrder == RMG_DATA_PLANE
                                      ? static_cast<size_t>((ch * side + j) * step + i * size)
                                      : static_cast<size_t>(j * step + (i * p->nChannels + ch) * size);
                Bytes &tile = tiles[{x / side, y / side}];
                for (int k = 0; k < size; ++k) tile[at + k] = bytes[plain.at(x, y, ch) + k];
            }
    return tiles;
}

// The call-backs of one call, across all its tiled images: tag, tile
// column and row, mode.
struct CallLog {
    std::vector<std::string> calls;
    int failAt = -1;  // 0-based number of the read or write that gets null
    int gets = 0;
};

// A tiled image with the layout, size and ROI of a plain one, its tiles
// held here and written in place.
class Tiled {
public:
    Tiled(const Image &plain, int side, const char *tag, CallLog *log)
        : tiles_(tilesOf(plain, side)), tag_(tag), log_(log) {
        const RmgImage *p = plain.image;
        info_ = RmgTileInfo{callBack, this, nullptr, side, side};
        image = rmgCreateImageHeader(p->nChannels, p->alphaChannel, p->depth, "RGB", "BGR",
                                     p->dataOrder, RMG_ORIGIN_TL, p->align, p->height, p->width,
                                     nullptr, nullptr, &info_);
        if (p->roi != nullptr) {
            roi_ = *p->roi;
            image->roi = &roi_;
        }
    }
    ~Tiled() { rmgDeallocate(image, RMG_DEALLOC_HEADER); }
    Tiled(const Tiled &) = delete;
    Tiled &operator=(const Tiled &) = delete;

    const TileBytes &tiles() const { return tiles_; }
    RmgImage *image;

private:
    static void callBack(const RmgImage *image, int x, int y, int mode) {
        auto *self = static_cast<Tiled *>(image->tileInfo->id);
        CallLog &log = *self->log_;
        log.calls.push_back(self->tag_ + " " + std::to_string(x) + "," + std::to_string(y) + " " +
                            std::to_string(mode));
        image->tileInfo->tileData = nullptr;
        if (mode == RMG_TILE_RELEASE) return;
        if (log.gets++ == log.failAt) return;
        auto it = self->tiles_.find({x, y});
        if (it != self->tiles_.end()) image->tileInfo->tileData = it->second.data();
    }

    TileBytes tiles_;
    std::string tag_;
    CallLog *log_;
    RmgTileInfo info_;
    RmgROI roi_{};
};

// Which images of a call are tiled.
enum Tiling { kDst, kSourceA, kSources, kAlphaImages, kAll };
const char *const kTilingNames[] = {"destination", "source A", "both sources", "alpha images",
                                    "all"};

bool tiledIn(Tiling tiling, int role) {  // role: 0 A, 1 B, 2 D, 3 alphaA, 4 alphaB, 5 alphaDst
    switch (tiling) {
        case kDst: return role == 2;
        case kSourceA: return role == 0;
        case kSources: return role == 0 || role == 1;
        case kAlphaImages: return role >= 3;
        default: return true;
    }
}

// The region of the one tile that holds tilePoint, as the plain call's
// ROIs: each image's ROI moved by (left, top) and cut to (w, h). False
// when the point's tile lies outside the region.
bool narrowToTile(const compositetest::Images &m, const int *tilePoint, int side, int rows,
                  int columns) {
    const RmgImage *d = m.D->image;
    const int ox = d->roi ? d->roi->xOffset : 0, oy = d->roi ? d->roi->yOffset : 0;
    int left = tilePoint[0] / side * side - ox, top = tilePoint[1] / side * side - oy;
    if (left >= columns || left + side <= 0 || top >= rows || top + side <= 0) return false;
    int w = left + side > columns ? columns - left : side;
    int h = top + side > rows ? rows - top : side;
    if (left < 0) { w += left; left = 0; }
    if (top < 0) { h += top; top = 0; }
    for (Image *img : {m.A, m.B, m.D, m.alphaA, m.alphaB, m.alphaDst}) {
        if (img == nullptr) continue;
        const RmgROI *r = img->image->roi;
        img->setRoi(r ? r->coi : 0, (r ? r->xOffset : 0) + left, (r ? r->yOffset : 0) + top, h, w);
    }
    return true;
}

class CompositeTiles : public rmgtest::ErrorStateTest {};

TEST_F(CompositeTiles, TiledCallsWriteWhatPlainCallsWrite) {
    std::mt19937 rng(977);
    int iteration = 0;
    for (int side : {8, 16, 24})
        for (Tiling tiling : {kDst, kSourceA, kSources, kAlphaImages, kAll})
            for (bool withPoint : {false, true})
                for (int repeat = 0; repeat < 40; ++repeat, ++iteration) {
                    const unsigned int depth = repeat % 2 ? RMG_DEPTH_16U : RMG_DEPTH_8U;
                    compositetest::RandomImages r(rng, depth, 40);
                    const compositetest::Setup s = compositetest::randomSetup(r, depth);
                    const compositetest::Images &m = s.images;
                    // Expected: the plain call on copies.
                    compositetest::Images expected = compositetest::copiesOf(r, m);
                    int point[2] = {r.pick(-4, 50), r.pick(-4, 50)};
                    const bool pointCounts = withPoint && tiledIn(tiling, 2);
                    SCOPED_TRACE(testing::Message()
                                 << "iteration " << iteration << ", tiles " << side << ", tiled "
                                 << kTilingNames[tiling] << ", point " << point[0] << ","
                                 << point[1] << (pointCounts ? "" : " (ignored)") << ", op "
                                 << s.op << ", const " << s.constForm << ", divide " << s.divide);
                    bool runs = true;
                    if (pointCounts) {
                        // One tile of the destination's grid: the plain call on
                        // that rectangle only (later, the ROIs are put back).
                        compositetest::Images narrowed = compositetest::copiesOf(r, m);
                        runs = narrowToTile(narrowed, point, side, compositetest::extentOf(m, true),
                                            compositetest::extentOf(m, false));
                        if (runs) {
                            compositetest::invoke(s, compositetest::headersOf(narrowed));
                            expected = narrowed;
                        }
                    } else {
                        compositetest::invoke(s, compositetest::headersOf(expected));
                    }
                    ASSERT_TRUE(rmgtest::reports().empty());

                    // The call on tiled stand-ins of the chosen images.
                    CallLog log;
                    const Image *roles[6] = {m.A, m.B, m.D, m.alphaA, m.alphaB, m.alphaDst};
                    const char *tags[6] = {"A", "B", "D", "alphaA", "alphaB", "alphaDst"};
                    std::unique_ptr<Tiled> tiled[6];
                    RmgImage *headers[6];
                    for (int i = 0; i < 6; ++i) {
                        headers[i] = compositetest::headerOf(roles[i]);
                        if (roles[i] != nullptr && tiledIn(tiling, i)) {
                            tiled[i] = std::make_unique<Tiled>(*roles[i], side, tags[i], &log);
                            headers[i] = tiled[i]->image;
                        }
                    }
                    compositetest::invoke(s,
                                          {headers[0], headers[1], headers[2], headers[3],
                                           headers[4], headers[5]},
                                          withPoint ? point : nullptr);
                    ASSERT_TRUE(rmgtest::reports().empty());
                    const Image *results[6] = {expected.A,      expected.B,      expected.D,
                                               expected.alphaA, expected.alphaB, expected.alphaDst};
                    for (int i = 0; i < 6; ++i) {
                        if (roles[i] == nullptr) continue;
                        SCOPED_TRACE(tags[i]);
                        const Image &want = runs ? *results[i] : *roles[i];
                        if (tiled[i] != nullptr)
                            ASSERT_EQ(tiled[i]->tiles(), tilesOf(want, side));
                        else
                            ASSERT_EQ(roles[i]->bytes(), want.bytes());
                    }
                    if (!runs) {
                        ASSERT_TRUE(log.calls.empty());
                    }
                }
}

// ---------------------------------------------------------------------------
// Concrete walks
// ---------------------------------------------------------------------------

// Six one-channel 8 by 8 images of the image form, each tiled 8 by 8 (one
// tile, one rectangle), with a shared call log.
struct SixTiled {
    SixTiled()
        : a(1, 0, RMG_DEPTH_8U, RMG_DATA_PIXEL, 8, 8, 8),
          b(1, 0, RMG_DEPTH_8U, RMG_DATA_PIXEL, 8, 8, 8),
          d(1, 0, RMG_DEPTH_8U, RMG_DATA_PIXEL, 8, 8, 8),
          alphaA(1, 0, RMG_DEPTH_8U, RMG_DATA_PIXEL, 8, 8, 8),
          alphaB(1, 0, RMG_DEPTH_8U, RMG_DATA_PIXEL, 8, 8, 8),
          alphaDst(1, 1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 8, 8, 8),
          tA(a, 8, "A", &log),
          tB(b, 8, "B", &log),
          tD(d, 8, "D", &log),
          tAlphaA(alphaA, 8, "alphaA", &log),
          tAlphaB(alphaB, 8, "alphaB", &log),
          tAlphaDst(alphaDst, 8, "alphaDst", &log) {}

    void composite(const RmgImage *alphaImageB) {
        rmgAlphaComposite(tA.image, tB.image, tD.image, RMG_COMPOSITE_OVER, tAlphaA.image,
                          alphaImageB, tAlphaDst.image, 0, 0, nullptr);
    }

    CallLog log;
    Image a, b, d, alphaA, alphaB, alphaDst;
    Tiled tA, tB, tD, tAlphaA, tAlphaB, tAlphaDst;
};

using Calls = std::vector<std::string>;

TEST_F(CompositeTiles, ViewsAreTakenInTheOrderOfRegistration) {
    SixTiled t;
    t.composite(t.tAlphaB.image);
    EXPECT_EQ(t.log.calls, (Calls{"D 0,0 2", "alphaDst 0,0 2", "A 0,0 1", "B 0,0 1",
                                  "alphaA 0,0 1", "alphaB 0,0 1", "D 0,0 4", "alphaDst 0,0 4",
                                  "A 0,0 4", "B 0,0 4", "alphaA 0,0 4", "alphaB 0,0 4"}));
    EXPECT_TRUE(rmgtest::reports().empty());
}

TEST_F(CompositeTiles, AnImageInSeveralPlacesIsOneView) {
    // srcImageA as its own alpha image, dstImage as the destination alpha:
    // each is one entry, registered and taken once, the destination in
    // write mode.
    Image a(2, 2, RMG_DEPTH_8U, RMG_DATA_PIXEL, 8, 8, 8);
    Image b(2, 2, RMG_DEPTH_8U, RMG_DATA_PIXEL, 8, 8, 8);
    Image d(2, 2, RMG_DEPTH_8U, RMG_DATA_PIXEL, 8, 8, 8);
    CallLog log;
    Tiled tA(a, 8, "A", &log), tB(b, 8, "B", &log), tD(d, 8, "D", &log);
    rmgAlphaComposite(tA.image, tB.image, tD.image, RMG_COMPOSITE_OVER, nullptr, nullptr, nullptr,
                      0, 0, nullptr);
    EXPECT_EQ(log.calls, (Calls{"D 0,0 2", "A 0,0 1", "B 0,0 1", "D 0,0 4", "A 0,0 4",
                                "B 0,0 4"}));
    // The same image as source and destination: one entry in write mode.
    log.calls.clear();
    rmgAlphaCompositeC(tD.image, tB.image, tD.image, RMG_COMPOSITE_OVER, -1, 255, 0, 0, nullptr);
    EXPECT_EQ(log.calls, (Calls{"D 0,0 2", "B 0,0 1", "D 0,0 4", "B 0,0 4"}));
    EXPECT_TRUE(rmgtest::reports().empty());
}

void expectTilingError(const char *funcName) {
    compositetest::expectOneReport(RMG_StsError, funcName, "ERROR in Tiling callBack");
}

// 8-bit images of one size and layout: two sources of random bytes, a
// destination and a plain image for the expected result, both of 0xEE.
struct RandomThree {
    RandomThree(int nChannels, int height, int width, unsigned seed)
        : a(nChannels, 0, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, height, width),
          b(nChannels, 0, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, height, width),
          d(nChannels, 0, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, height, width),
          want(nChannels, 0, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, height, width) {
        std::mt19937 rng(seed);
        a.randomize(rng);
        b.randomize(rng);
    }
    Image a, b, d, want;
};

TEST_F(CompositeTiles, ConstantFormTakesAllThreeViewsBeforeItLooks) {
    Image a(1, 0, RMG_DEPTH_8U, RMG_DATA_PIXEL, 8, 8, 8);
    Image b(1, 0, RMG_DEPTH_8U, RMG_DATA_PIXEL, 8, 8, 8);
    Image d(1, 0, RMG_DEPTH_8U, RMG_DATA_PIXEL, 8, 8, 8);
    CallLog log;
    log.failAt = 0;  // the destination's tile
    Tiled tA(a, 8, "A", &log), tB(b, 8, "B", &log), tD(d, 8, "D", &log);
    rmgAlphaCompositeC(tA.image, tB.image, tD.image, RMG_COMPOSITE_OVER, 128, 128, 0, 0, nullptr);
    // The two sources are still taken; the views that were had are given
    // back when the set is freed.
    EXPECT_EQ(log.calls, (Calls{"D 0,0 2", "A 0,0 1", "B 0,0 1", "A 0,0 4", "B 0,0 4"}));
    expectTilingError("rmgAlphaCompositeC");
    EXPECT_EQ(tD.tiles(), tilesOf(d, 8));
}

TEST_F(CompositeTiles, ImageFormLooksAfterTheThreeImagesAndAfterEachAlphaView) {
    {
        // The destination's tile fails: the sources are still taken, the
        // alpha images of A and B not.
        SixTiled t;
        t.log.failAt = 0;
        t.composite(t.tAlphaB.image);
        EXPECT_EQ(t.log.calls, (Calls{"D 0,0 2", "alphaDst 0,0 2", "A 0,0 1", "B 0,0 1",
                                      "alphaDst 0,0 4", "A 0,0 4", "B 0,0 4"}));
        expectTilingError("rmgAlphaComposite");
    }
    rmgtest::reports().clear();
    {
        // The alpha image of A fails: the alpha image of B is not taken.
        SixTiled t;
        t.log.failAt = 4;
        t.composite(t.tAlphaB.image);
        EXPECT_EQ(t.log.calls,
                  (Calls{"D 0,0 2", "alphaDst 0,0 2", "A 0,0 1", "B 0,0 1", "alphaA 0,0 1",
                         "D 0,0 4", "alphaDst 0,0 4", "A 0,0 4", "B 0,0 4"}));
        expectTilingError("rmgAlphaComposite");
        EXPECT_EQ(t.tD.tiles(), tilesOf(t.d, 8));
    }
}

TEST_F(CompositeTiles, RectanglesBeforeAFailedOneStayWritten) {
    // A destination of three tiles in a row; its third tile fails.
    RandomThree t(1, 8, 24, 5);
    Image &a = t.a, &b = t.b, &d = t.d, &plain = t.want;
    rmgAlphaCompositeC(a.image, b.image, plain.image, RMG_COMPOSITE_XOR, 200, 100, 0, 0, nullptr);
    CallLog log;
    log.failAt = 2;
    Tiled tD(d, 8, "D", &log);
    rmgAlphaCompositeC(a.image, b.image, tD.image, RMG_COMPOSITE_XOR, 200, 100, 0, 0, nullptr);
    expectTilingError("rmgAlphaCompositeC");
    TileBytes want = tilesOf(plain, 8);
    want[{2, 0}] = tilesOf(d, 8).at({2, 0});
    EXPECT_EQ(tD.tiles(), want);
}

TEST_F(CompositeTiles, ATilePointOnAPlainDestinationIsIgnored) {
    // Only the source is tiled: the whole region is done.
    RandomThree t(3, 20, 20, 6);
    Image &a = t.a, &b = t.b, &d = t.d, &want = t.want;
    rmgAlphaCompositeC(a.image, b.image, want.image, RMG_COMPOSITE_ATOP, 90, 160, 0, 0, nullptr);
    CallLog log;
    Tiled tA(a, 8, "A", &log);
    const int point[2] = {3, 3};
    rmgAlphaCompositeC(tA.image, b.image, d.image, RMG_COMPOSITE_ATOP, 90, 160, 0, 0, point);
    EXPECT_EQ(d.bytes(), want.bytes());
    EXPECT_EQ(log.calls.size(), 18u);  // 3 x 3 tiles, each read and released
    // A point outside the region of a tiled destination does nothing.
    log.calls.clear();
    Tiled tD(d, 8, "D", &log);
    const int outside[2] = {40, 0};
    rmgAlphaCompositeC(a.image, b.image, tD.image, RMG_COMPOSITE_ATOP, 90, 160, 0, 0, outside);
    EXPECT_TRUE(log.calls.empty());
    EXPECT_EQ(tD.tiles(), tilesOf(d, 8));
    EXPECT_TRUE(rmgtest::reports().empty());
}

}  // namespace
