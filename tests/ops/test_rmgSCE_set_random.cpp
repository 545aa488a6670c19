// rmgSet on random images against the per-element model, in every form of
// the fill kernels this processor runs: all six depths, both orders, both
// alignments, regions inside, at the edge, hanging out and beyond, and any
// channel. The whole buffer is compared, row padding and guard zones
// included; some images have a buffer of exactly their size, so that an
// access past the end shows under the sanitizer. Tiled images are compared
// with the model tile by tile and with a plain image inside the image.
#include <gtest/gtest.h>

#include <climits>
#include <random>
#include <string>
#include <vector>

#include "core/rmgcpu.h"
#include "ops/scetest.h"
#include "rmg.h"
#include "support/rmgforms.h"
#include "support/rmgtest.h"

namespace {

using scetest::Area;
using scetest::difference;
using scetest::Plain;
using scetest::TileCall;
using scetest::Tiled;

const unsigned int kDepths[] = {RMG_DEPTH_1U,  RMG_DEPTH_8U,  RMG_DEPTH_16U,
                                RMG_DEPTH_8S,  RMG_DEPTH_16S, RMG_DEPTH_32S};

using rmgtest::inEveryForm;
using SetRandomTest = rmgtest::ErrorStateTest;

struct Shape {
    unsigned int depth;
    int nChannels, dataOrder, align, height, width;
};

Shape randomShape(std::mt19937 &rng, int maxHeight, int maxWidth) {
    auto pick = [&](int low, int high) { return std::uniform_int_distribution<int>(low, high)(rng); };
    Shape s;
    s.depth = kDepths[pick(0, 5)];
    s.nChannels = s.depth == RMG_DEPTH_1U ? 1 : pick(1, 4);
    s.dataOrder = pick(0, 1);
    s.align = pick(0, 1) ? 8 : 4;
    s.height = pick(1, maxHeight);
    s.width = pick(0, 3) == 0 ? pick(40, maxWidth) : pick(1, 40);
    return s;
}

// A region of one of the kinds: none (false), inside, touching the right or
// bottom edge, hanging out, or at and beyond the edge.
bool randomRoi(std::mt19937 &rng, int height, int width, int nChannels, RmgROI *roi) {
    auto pick = [&](int low, int high) { return std::uniform_int_distribution<int>(low, high)(rng); };
    const int kind = pick(0, 4);
    if (kind == 0) return false;
    roi->coi = pick(0, 2) == 0 ? 0 : pick(0, nChannels);
    roi->xOffset = pick(0, width - 1);
    roi->yOffset = pick(0, height - 1);
    roi->width = pick(1, width - roi->xOffset);
    roi->height = pick(1, height - roi->yOffset);
    if (kind == 2) {
        roi->width = width - roi->xOffset;
        roi->height = height - roi->yOffset;
    } else if (kind == 3) {
        roi->width += pick(1, 20);
        roi->height += pick(0, 5);
    } else if (kind == 4) {
        if (pick(0, 1))
            roi->xOffset = width + pick(0, 9);
        else
            roi->yOffset = height + pick(0, 3);
    }
    return true;
}

int randomValue(std::mt19937 &rng) {
    static const int kSpecial[] = {0,      1,      -1,    2,     127,    128,     -128, -129,
                                   255,    256,    32767, 32768, -32768, -32769,  65535, 65536,
                                   INT_MIN, INT_MAX, 300, -300};
    std::uniform_int_distribution<int> pick(0, 39);
    const int k = pick(rng);
    if (k < 20) return kSpecial[k];
    return static_cast<int>(rng());
}

TEST_F(SetRandomTest, PlainImagesAgreeWithTheModel) {
    inEveryForm([&](int form) {
        std::mt19937 rng(1234u + static_cast<unsigned>(form));
        for (int iteration = 0; iteration < 1500; ++iteration) {
            const Shape s = randomShape(rng, 9, 300);
            // One image in four has no guard zones: its buffer ends with its
            // last pixel row.
            const int guard = (rng() & 3u) == 0 ? 0 : 64;
            Plain p(s.nChannels, s.depth, s.dataOrder, s.align, s.height, s.width, guard,
                    static_cast<uint32_t>(rng()));
            RmgROI roi;
            if (randomRoi(rng, s.height, s.width, s.nChannels, &roi))
                p.setRoi(roi.coi, roi.xOffset, roi.yOffset, roi.height, roi.width);
            const int value = randomValue(rng);
            std::vector<uint8_t> want = p.block;
            scetest::modelFill(want, p.guard, p.layout(), p.region(),
                               scetest::storedValue(s.depth, value));
            rmgSet(p.image, value, nullptr);
            ASSERT_EQ(difference(p.block, want), "")
                << "iteration " << iteration << " depth " << (s.depth & 0xFF) << " channels "
                << s.nChannels << " order " << s.dataOrder << " align " << s.align << " size "
                << s.height << "x" << s.width << " roi "
                << (p.image->roi ? std::to_string(roi.coi) + " " + std::to_string(roi.xOffset) +
                                       "," + std::to_string(roi.yOffset) + " " +
                                       std::to_string(roi.height) + "x" +
                                       std::to_string(roi.width)
                                 : std::string("none"))
                << " value " << value;
        }
    });
    EXPECT_TRUE(rmgtest::reports().empty());
}

TEST_F(SetRandomTest, WideRowsAtEveryPhaseAgreeWithTheModel) {
    // Long runs and strided channels starting at every byte phase, so that
    // heads, vector loops and tails of every kernel form are all crossed.
    inEveryForm([&](int form) {
        std::mt19937 rng(99u + static_cast<unsigned>(form));
        for (unsigned int depth : kDepths) {
            const int nChannels = depth == RMG_DEPTH_1U ? 1 : 3;
            for (int x = 0; x < 70; ++x) {
                Plain p(nChannels, depth, RMG_DATA_PIXEL, 4, 2, 700, 0,
                        static_cast<uint32_t>(rng()));
                const int coi = x % 2 == 0 ? 0 : 1 + x % nChannels;
                p.setRoi(coi, x, 0, 2, 700 - 2 * x);
                const int value = randomValue(rng);
                std::vector<uint8_t> want = p.block;
                scetest::modelFill(want, 0, p.layout(), p.region(),
                                   scetest::storedValue(depth, value));
                rmgSet(p.image, value, nullptr);
                ASSERT_EQ(difference(p.block, want), "")
                    << "depth " << (depth & 0xFF) << " x " << x << " coi " << coi;
            }
        }
    });
}

// The calls the walk makes over the grid of a region without `tile`.
std::vector<TileCall> gridCalls(int x0, int y0, int x1, int y1, int tileWidth, int tileHeight) {
    std::vector<TileCall> calls;
    for (int ty = y0 / tileHeight; ty <= (y1 - 1) / tileHeight; ++ty)
        for (int tx = x0 / tileWidth; tx <= (x1 - 1) / tileWidth; ++tx) {
            calls.push_back(TileCall{tx, ty, RMG_TILE_WRITE});
            calls.push_back(TileCall{tx, ty, RMG_TILE_RELEASE});
        }
    return calls;
}

TEST_F(SetRandomTest, TiledImagesAgreeWithTheModelAndWithPlainOnes) {
    const int kTileSizes[] = {8, 16, 24};
    inEveryForm([&](int form) {
        std::mt19937 rng(777u + static_cast<unsigned>(form));
        for (int iteration = 0; iteration < 300; ++iteration) {
            const Shape s = randomShape(rng, 50, 80);
            const int tileWidth = kTileSizes[rng() % 3];
            const int tileHeight = kTileSizes[rng() % 3];
            Tiled t(s.nChannels, s.depth, s.dataOrder, s.align, s.height, s.width, tileWidth,
                    tileHeight, static_cast<uint32_t>(rng()));
            Plain p(s.nChannels, s.depth, s.dataOrder, s.align, s.height, s.width, 0);
            // The plain image starts with the tiled image's pixels.
            for (int ch = 0; ch < s.nChannels; ++ch)
                for (int y = 0; y < s.height; ++y)
                    for (int x = 0; x < s.width; ++x)
                        scetest::putElement(p.block, 0, p.layout(), x, y, ch,
                                            t.element(x, y, ch));
            RmgROI roi;
            // The region of a tiled image is not clipped; one at or beyond
            // the edge is walked as it stands, so those are kept within
            // reach of a few tiles.
            const bool hasRoi = randomRoi(rng, s.height, s.width, s.nChannels, &roi);
            Area area{0, 0, s.width, s.height, 0};
            if (hasRoi) {
                t.setRoi(roi.coi, roi.xOffset, roi.yOffset, roi.height, roi.width);
                p.setRoi(roi.coi, roi.xOffset, roi.yOffset, roi.height, roi.width);
                area = Area{roi.xOffset, roi.yOffset, roi.xOffset + roi.width,
                            roi.yOffset + roi.height, roi.coi};
            }
            const int value = randomValue(rng);
            const uint32_t stored = scetest::storedValue(s.depth, value);
            rmgSet(t.image, value, nullptr);
            rmgSet(p.image, value, nullptr);
            SCOPED_TRACE("iteration " + std::to_string(iteration));

            ASSERT_EQ(t.calls, gridCalls(area.x0, area.y0, area.x1, area.y1, tileWidth,
                                         tileHeight));
            // Each tile asked for: the part of the region in it, nothing else.
            for (const auto &entry : t.tiles) {
                std::vector<uint8_t> want = t.freshTile(entry.first.first, entry.first.second);
                const int ox = entry.first.first * tileWidth;
                const int oy = entry.first.second * tileHeight;
                scetest::modelFill(want, 0, t.tileLayout(),
                                   Area{area.x0 - ox, area.y0 - oy, area.x1 - ox, area.y1 - oy,
                                        area.coi},
                                   stored);
                ASSERT_EQ(difference(entry.second, want), "");
            }
            // Inside the image the two agree element by element.
            for (int ch = 0; ch < s.nChannels; ++ch)
                for (int y = 0; y < s.height; ++y)
                    for (int x = 0; x < s.width; ++x)
                        ASSERT_EQ(t.element(x, y, ch), p.element(x, y, ch))
                            << x << "," << y << " channel " << ch;
        }
    });
    EXPECT_TRUE(rmgtest::reports().empty());
}

}  // namespace
