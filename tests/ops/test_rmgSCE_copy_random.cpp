// rmgCopy and rmgExchange on random images against the per-element model,
// in every form of the copy kernels this processor runs: all six depths,
// both orders, any alignment, channel counts and coi on either side,
// regions inside, at the edge, hanging out and beyond. Both whole buffers
// are compared, row padding and guard zones included; some images have a
// buffer of exactly their size, so that an access past the end shows under
// the sanitizer. Then the four pairings of plain and tiled images (tiles of
// 8, 16 and 24) against the result of the plain pair.
#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "core/rmgcpu.h"
#include "ops/copytest.h"
#include "ops/scetest.h"
#include "rmg.h"
#include "support/rmgforms.h"
#include "support/rmgtest.h"

namespace {

using scetest::difference;
using scetest::Plain;
using scetest::TileCall;
using scetest::Tiled;

const unsigned int kDepths[] = {RMG_DEPTH_1U, RMG_DEPTH_8U,  RMG_DEPTH_16U,
                                RMG_DEPTH_8S, RMG_DEPTH_16S, RMG_DEPTH_32S};
const int kTileSizes[] = {8, 16, 24};

class CopyRandomTest : public rmgtest::ErrorStateTest {};

using rmgtest::inEveryForm;

int pick(std::mt19937 &rng, int low, int high) {
    return std::uniform_int_distribution<int>(low, high)(rng);
}

// One side of a pair: its layout, size and ROI (roi.width 0: none).
struct Side {
    int nChannels, align, height, width;
    RmgROI roi;
};

std::string describe(const Side &s) {
    std::ostringstream os;
    os << s.nChannels << "ch align " << s.align << " " << s.height << "x" << s.width;
    if (s.roi.width != 0)
        os << " roi coi " << s.roi.coi << " at " << s.roi.xOffset << "," << s.roi.yOffset << " "
           << s.roi.height << "x" << s.roi.width;
    return os.str();
}

// A ROI of one of the kinds: none, inside, touching the right and bottom
// edges, hanging out, or at and beyond the edge (the last two only when
// `anywhere`).
RmgROI randomRoi(std::mt19937 &rng, int height, int width, bool anywhere) {
    RmgROI roi{0, 0, 0, 0, 0};
    const int kind = pick(rng, 0, anywhere ? 4 : 2);
    if (kind == 0) return roi;
    roi.xOffset = pick(rng, 0, width - 1);
    roi.yOffset = pick(rng, 0, height - 1);
    roi.width = pick(rng, 1, width - roi.xOffset);
    roi.height = pick(rng, 1, height - roi.yOffset);
    if (kind == 2) {
        roi.width = width - roi.xOffset;
        roi.height = height - roi.yOffset;
    } else if (kind == 3) {
        roi.width += pick(rng, 1, 20);
        roi.height += pick(rng, 0, 5);
    } else if (kind == 4) {
        if (pick(rng, 0, 1))
            roi.xOffset = width + pick(rng, 0, 9);
        else
            roi.yOffset = height + pick(rng, 0, 3);
    }
    return roi;
}

// Channel counts and coi of both sides: mostly a pair whose regions have
// the same channel count (all channels of equal counts, or one channel on
// each side), sometimes any.
void randomChannels(std::mt19937 &rng, unsigned int depth, Side *a, Side *b) {
    if (depth == RMG_DEPTH_1U) {
        a->nChannels = b->nChannels = 1;
        a->roi.coi = pick(rng, 0, 1);
        b->roi.coi = pick(rng, 0, 1);
        return;
    }
    const int mode = pick(rng, 0, 9);
    a->nChannels = pick(rng, 1, 4);
    b->nChannels = pick(rng, 1, 4);
    a->roi.coi = 0;
    b->roi.coi = 0;
    if (mode < 4) {
        b->nChannels = a->nChannels;
    } else if (mode < 8) {
        a->roi.coi = a->nChannels == 1 && pick(rng, 0, 1) ? 0 : pick(rng, 1, a->nChannels);
        b->roi.coi = b->nChannels == 1 && pick(rng, 0, 1) ? 0 : pick(rng, 1, b->nChannels);
        if (a->nChannels > 1 && a->roi.coi == 0) a->roi.coi = 1;
        if (b->nChannels > 1 && b->roi.coi == 0) b->roi.coi = 1;
    } else {
        a->roi.coi = pick(rng, 0, a->nChannels);
        b->roi.coi = pick(rng, 0, b->nChannels);
    }
    // A coi needs a ROI; a ROI of the whole image carries it where none was
    // drawn.
    for (Side *s : {a, b})
        if (s->roi.coi != 0 && s->roi.width == 0)
            s->roi = RmgROI{s->roi.coi, 0, 0, s->height, s->width};
}

Side randomSide(std::mt19937 &rng, int maxHeight, int maxWidth, bool anywhere) {
    Side s;
    s.nChannels = 1;
    s.align = pick(rng, 0, 1) ? 8 : 4;
    s.height = pick(rng, 1, maxHeight);
    s.width = pick(rng, 0, 3) == 0 ? pick(rng, 40, maxWidth) : pick(rng, 1, 40);
    s.roi = randomRoi(rng, s.height, s.width, anywhere);
    return s;
}

void applyRoi(Plain &p, const Side &s) {
    if (s.roi.width != 0)
        p.setRoi(s.roi.coi, s.roi.xOffset, s.roi.yOffset, s.roi.height, s.roi.width);
}

void applyRoi(Tiled &t, const Side &s) {
    if (s.roi.width != 0)
        t.setRoi(s.roi.coi, s.roi.xOffset, s.roi.yOffset, s.roi.height, s.roi.width);
}

void run(bool exchange, RmgImage *src, RmgImage *dst) {
    if (exchange)
        rmgExchange(src, dst, nullptr);
    else
        rmgCopy(src, dst, nullptr);
}

TEST_F(CopyRandomTest, PlainPairsAgreeWithTheModel) {
    inEveryForm([&](int form) {
        std::mt19937 rng(4321u + static_cast<unsigned>(form));
        for (int iteration = 0; iteration < 1200; ++iteration) {
            const bool exchange = iteration % 2 == 1;
            const unsigned int depth = kDepths[pick(rng, 0, 5)];
            const int order = pick(rng, 0, 1);
            Side a = randomSide(rng, 9, 300, true);
            Side b = randomSide(rng, 9, 300, true);
            randomChannels(rng, depth, &a, &b);
            // One image in four has a buffer of exactly its size.
            Plain src(a.nChannels, depth, order, a.align, a.height, a.width,
                      (rng() & 3u) == 0 ? 0 : 32, static_cast<uint32_t>(rng()));
            Plain dst(b.nChannels, depth, order, b.align, b.height, b.width,
                      (rng() & 3u) == 0 ? 0 : 32, static_cast<uint32_t>(rng()));
            applyRoi(src, a);
            applyRoi(dst, b);
            std::vector<uint8_t> wantSrc, wantDst;
            copytest::modelPair(exchange, src, dst, &wantSrc, &wantDst);
            run(exchange, src.image, dst.image);
            const std::string note =
                std::string(exchange ? "exchange" : "copy") + " iteration " +
                std::to_string(iteration) + " depth " + std::to_string(depth & 0xFF) + " order " +
                std::to_string(order) + " src " + describe(a) + " dst " + describe(b);
            ASSERT_EQ(difference(src.block, wantSrc), "") << note;
            ASSERT_EQ(difference(dst.block, wantDst), "") << note;
        }
    });
    EXPECT_TRUE(rmgtest::reports().empty());
}

TEST_F(CopyRandomTest, WideRowsAtEveryPhaseAgreeWithTheModel) {
    // Long rows and channels of 3-channel images from every byte phase, so
    // that heads, vector loops, gathers and scatters and tails are crossed.
    inEveryForm([&](int form) {
        std::mt19937 rng(99u + static_cast<unsigned>(form));
        for (unsigned int depth : kDepths) {
            const int channels = depth == RMG_DEPTH_1U ? 1 : 3;
            for (int x = 0; x < 48; ++x) {
                const bool exchange = x % 3 == 2;
                Plain src(channels, depth, RMG_DATA_PIXEL, 4, 2, 600, 0,
                          static_cast<uint32_t>(rng()));
                Plain dst(x % 4 == 1 ? 1 : channels, depth, RMG_DATA_PIXEL, 8, 2, 600, 0,
                          static_cast<uint32_t>(rng()));
                const int srcCoi = channels == 1 ? 0 : (x % 4 == 0 ? 0 : 1 + x % 3);
                const int dstCoi =
                    dst.image->nChannels == 1 ? 0 : (x % 4 == 0 ? 0 : 1 + (x / 3) % 3);
                src.setRoi(srcCoi, x, 0, 2, 600 - x);
                dst.setRoi(dstCoi, (x * 7) % 50, 0, 2, 600);
                std::vector<uint8_t> wantSrc, wantDst;
                copytest::modelPair(exchange, src, dst, &wantSrc, &wantDst);
                run(exchange, src.image, dst.image);
                ASSERT_EQ(difference(src.block, wantSrc), "")
                    << "depth " << (depth & 0xFF) << " x " << x;
                ASSERT_EQ(difference(dst.block, wantDst), "")
                    << "depth " << (depth & 0xFF) << " x " << x;
            }
        }
    });
}

// One image as a plain image and as a tiled one with the same pixels.
struct Both {
    std::unique_ptr<Plain> plain;
    std::unique_ptr<Tiled> tiled;
    std::map<std::pair<int, int>, std::vector<uint8_t>> initialTiles;

    Both(unsigned int depth, int order, const Side &s, int tileWidth, int tileHeight,
         uint32_t seed) {
        plain.reset(new Plain(s.nChannels, depth, order, s.align, s.height, s.width, 16, seed));
        tiled.reset(new Tiled(s.nChannels, depth, order, s.align, s.height, s.width, tileWidth,
                              tileHeight, seed + 1));
        for (int ch = 0; ch < s.nChannels; ++ch)
            for (int y = 0; y < s.height; ++y)
                for (int x = 0; x < s.width; ++x)
                    copytest::putElement(*tiled, x, y, ch, plain->element(x, y, ch));
        initialTiles = tiled->tiles;
        applyRoi(*plain, s);
        applyRoi(*tiled, s);
    }

    // The tiles should hold what they held, with the image's elements of
    // `want` (the bytes of the plain image's block).
    std::string compareTiles(const std::vector<uint8_t> &want) const {
        const Tiled &t = *tiled;
        const scetest::Layout layout = plain->layout();
        for (const auto &entry : t.tiles) {
            const auto initial = initialTiles.find(entry.first);
            std::vector<uint8_t> tile = initial != initialTiles.end()
                                            ? initial->second
                                            : t.freshTile(entry.first.first, entry.first.second);
            const int x0 = entry.first.first * t.info.width;
            const int y0 = entry.first.second * t.info.height;
            for (int ch = 0; ch < layout.nChannels; ++ch)
                for (int y = y0; y < y0 + t.info.height && y < layout.height; ++y)
                    for (int x = x0; x < x0 + t.info.width && x < layout.width; ++x)
                        if (x >= 0 && y >= 0)
                            scetest::putElement(
                                tile, 0, t.tileLayout(), x - x0, y - y0, ch,
                                scetest::getElement(want, plain->guard, layout, x, y, ch));
            const std::string d = difference(entry.second, tile);
            if (!d.empty())
                return "tile " + std::to_string(entry.first.first) + "," +
                       std::to_string(entry.first.second) + ": " + d;
        }
        return std::string();
    }
};

// Every tile asked for was released after it, once.
bool balanced(const std::vector<TileCall> &calls) {
    std::map<std::pair<int, int>, int> open;
    for (const TileCall &c : calls) {
        int &n = open[{c.x, c.y}];
        n += c.mode == RMG_TILE_RELEASE ? -1 : 1;
        if (n < 0 || n > 1) return false;
    }
    for (const auto &entry : open)
        if (entry.second != 0) return false;
    return true;
}

TEST_F(CopyRandomTest, FourPairingsAgreeWithThePlainPair) {
    inEveryForm([&](int form) {
        std::mt19937 rng(2468u + static_cast<unsigned>(form));
        for (int iteration = 0; iteration < 160; ++iteration) {
            const bool exchange = iteration % 2 == 1;
            const unsigned int depth = kDepths[pick(rng, 0, 5)];
            const int order = pick(rng, 0, 1);
            // Regions inside the images: a tiled region isn't clipped, so
            // only there do the four pairings have one result.
            Side a = randomSide(rng, 50, 60, false);
            Side b = randomSide(rng, 50, 60, false);
            randomChannels(rng, depth, &a, &b);
            const int tiles[4] = {kTileSizes[pick(rng, 0, 2)], kTileSizes[pick(rng, 0, 2)],
                                  kTileSizes[pick(rng, 0, 2)], kTileSizes[pick(rng, 0, 2)]};
            const uint32_t seedA = static_cast<uint32_t>(rng());
            const uint32_t seedB = static_cast<uint32_t>(rng());

            std::vector<uint8_t> wantSrc, wantDst;
            {
                Both s(depth, order, a, tiles[0], tiles[1], seedA);
                Both d(depth, order, b, tiles[2], tiles[3], seedB);
                copytest::modelPair(exchange, *s.plain, *d.plain, &wantSrc, &wantDst);
            }
            for (int pairing = 0; pairing < 4; ++pairing) {
                const bool srcTiled = (pairing & 1) != 0;
                const bool dstTiled = (pairing & 2) != 0;
                Both s(depth, order, a, tiles[0], tiles[1], seedA);
                Both d(depth, order, b, tiles[2], tiles[3], seedB);
                RmgImage *src = srcTiled ? s.tiled->image : s.plain->image;
                RmgImage *dst = dstTiled ? d.tiled->image : d.plain->image;
                RmgROI *const srcRoi = src->roi;
                RmgROI *const dstRoi = dst->roi;
                run(exchange, src, dst);
                const std::string note =
                    std::string(exchange ? "exchange" : "copy") + " iteration " +
                    std::to_string(iteration) + " pairing src " + (srcTiled ? "tiled" : "plain") +
                    " dst " + (dstTiled ? "tiled" : "plain") + " depth " +
                    std::to_string(depth & 0xFF) + " order " + std::to_string(order) + " src " +
                    describe(a) + " tiles " + std::to_string(tiles[0]) + "x" +
                    std::to_string(tiles[1]) + " dst " + describe(b) + " tiles " +
                    std::to_string(tiles[2]) + "x" + std::to_string(tiles[3]);
                ASSERT_TRUE(rmgtest::reports().empty())
                    << note << ": " << rmgtest::reports()[0].context;
                ASSERT_EQ(src->roi, srcRoi) << note;
                ASSERT_EQ(dst->roi, dstRoi) << note;
                if (srcTiled) {
                    ASSERT_EQ(s.compareTiles(wantSrc), "") << note;
                    ASSERT_TRUE(balanced(s.tiled->calls)) << note;
                } else {
                    ASSERT_EQ(difference(s.plain->block, wantSrc), "") << note;
                }
                if (dstTiled) {
                    ASSERT_EQ(d.compareTiles(wantDst), "") << note;
                    ASSERT_TRUE(balanced(d.tiled->calls)) << note;
                } else {
                    ASSERT_EQ(difference(d.plain->block, wantDst), "") << note;
                }
            }
        }
    });
}

}  // namespace
