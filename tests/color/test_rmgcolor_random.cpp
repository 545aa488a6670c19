// rmgColorToGray and rmgGrayToColor on random images against the
// per-element model: all served depths and orders, both letter orders,
// images of different sizes, plain and tiled destinations and sources,
// whole buffers compared with their padding.
#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "access/owntile.h"
#include "colortest.h"
#include "rmg.h"
#include "support/rmgforms.h"
#include "support/rmgtest.h"

namespace {

using colortest::Bytes;
using colortest::Call;
using colortest::Image;
using colortest::TiledImage;
using rmgtest::reports;

class ColorRandomTest : public rmgtest::ErrorStateTest {};

struct Format {
    int nChannels;
    unsigned int depth;
    int order;
    const char *model;
    const char *seq;
};

std::string describe(const Format &f) {
    return std::to_string(f.nChannels) + "x" + std::to_string(f.depth & 0xFF) +
           (f.order == RMG_DATA_PLANE ? " plane " : " pixel ") + f.seq;
}

const char *colourSeq(int nChannels, bool red) {
    if (nChannels == 4) return red ? "RGBA" : "BGRA";
    return red ? "RGB" : "BGR";
}

Format colourFormat(std::mt19937 &rng, unsigned int depth) {
    const int n = 3 + static_cast<int>(rng() % 2);
    return {n, depth, static_cast<int>(rng() % 2), "RGB", colourSeq(n, rng() % 2 == 0)};
}

// A gray side: pixel order with one channel, or plane order with 1 to 3.
Format grayFormat(std::mt19937 &rng, unsigned int depth, const char *model) {
    if (depth == RMG_DEPTH_1U || rng() % 2 == 0) return {1, depth, RMG_DATA_PIXEL, model, "G"};
    return {1 + static_cast<int>(rng() % 3), depth, RMG_DATA_PLANE, model, "GGG"};
}

float randomFraction(std::mt19937 &rng) {
    switch (rng() % 6) {
    case 0: return 0.0f;
    case 1: return 1.0f / 40000.0f;
    case 2: return 1.0f;
    default: return std::uniform_real_distribution<float>(-1.5f, 1.5f)(rng);
    }
}

struct GrayPair {
    unsigned int src, dst;
};
const GrayPair kGrayPairs[] = {{RMG_DEPTH_8U, RMG_DEPTH_1U},   {RMG_DEPTH_8U, RMG_DEPTH_8U},
                               {RMG_DEPTH_8U, RMG_DEPTH_16U},  {RMG_DEPTH_16U, RMG_DEPTH_1U},
                               {RMG_DEPTH_16U, RMG_DEPTH_8U},  {RMG_DEPTH_16U, RMG_DEPTH_16U},
                               {RMG_DEPTH_32S, RMG_DEPTH_1U},  {RMG_DEPTH_32S, RMG_DEPTH_8U},
                               {RMG_DEPTH_32S, RMG_DEPTH_16U}};
const GrayPair kSpreadPairs[] = {{RMG_DEPTH_8U, RMG_DEPTH_8U},
                                 {RMG_DEPTH_16U, RMG_DEPTH_16U},
                                 {RMG_DEPTH_32S, RMG_DEPTH_32S},
                                 {RMG_DEPTH_1U, RMG_DEPTH_8U}};

int randomSize(std::mt19937 &rng) { return 1 + static_cast<int>(rng() % 40); }

// A source and a destination of random bytes and random sizes, the same
// size now and then (so that plane order meets its contiguous rows too).
struct RandomPair {
    int sh, sw, dh, dw;
    Image src, dst;
    RandomPair(const Format &sf, const Format &df, std::mt19937 &rng, bool same)
        : sh(randomSize(rng)), sw(randomSize(rng)), dh(same ? sh : randomSize(rng)),
          dw(same ? sw : randomSize(rng)),
          src(sf.nChannels, sf.depth, sf.order, sf.model, sf.seq, sh, sw, rng() % 2 ? 4 : 8, rng),
          dst(df.nChannels, df.depth, df.order, df.model, df.seq, dh, dw, rng() % 2 ? 4 : 8, rng) {}
    int rows() const { return sh < dh ? sh : dh; }
    int cols() const { return sw < dw ? sw : dw; }
};

TEST_F(ColorRandomTest, ColorToGrayAgainstTheModel) {
    std::mt19937 rng(11);
    rmgtest::inEveryForm([&](int) {
        for (int round = 0; round < 60; ++round)
            for (const GrayPair &pair : kGrayPairs) {
                const Format sf = colourFormat(rng, pair.src);
                const Format df = grayFormat(rng, pair.dst, "GRAY");
                RandomPair p(sf, df, rng, rng() % 3 == 0);
                Bytes expected = p.dst.bytes();
                colortest::modelColorToGray(p.src.image, p.src.bytes(), p.src.image->widthStep,
                                            p.rows(), p.cols(), p.dst.image, expected,
                                            p.dst.image->widthStep);
                rmgColorToGray(p.src.image, p.dst.image, nullptr);
                ASSERT_EQ(p.dst.bytes(), expected) << describe(sf) << " " << p.sh << "x" << p.sw
                                                   << " -> " << describe(df) << " " << p.dh << "x" << p.dw;
            }
    });
    EXPECT_TRUE(reports().empty());
}

TEST_F(ColorRandomTest, GrayToColorAgainstTheModel) {
    std::mt19937 rng(12);
    rmgtest::inEveryForm([&](int) {
        for (int round = 0; round < 60; ++round)
            for (const GrayPair &pair : kSpreadPairs) {
                const Format sf = grayFormat(rng, pair.src, "GRAY");
                const Format df = colourFormat(rng, pair.dst);
                RandomPair p(sf, df, rng, rng() % 3 == 0);
                const float fr = randomFraction(rng), fg = randomFraction(rng), fb = randomFraction(rng);
                Bytes expected = p.dst.bytes();
                colortest::modelGrayToColor(p.src.image, p.src.bytes(), p.src.image->widthStep,
                                            p.rows(), p.cols(), p.dst.image, expected,
                                            p.dst.image->widthStep, fr, fg, fb);
                rmgGrayToColor(p.src.image, p.dst.image, fr, fg, fb, nullptr);
                ASSERT_EQ(p.dst.bytes(), expected) << describe(sf) << " -> " << describe(df) << " "
                                                 << fr << " " << fg << " " << fb;
            }
    });
    EXPECT_TRUE(reports().empty());
}

// A widthStep the application made larger than the buffer allows: rows
// reaching past imageSize are cut, nothing outside is touched (the
// sanitizer build watches the reads and writes).
TEST_F(ColorRandomTest, RowsAreCutToTheBuffers) {
    std::mt19937 rng(13);
    for (const GrayPair &pair : kGrayPairs) {
        const Format sf = colourFormat(rng, pair.src);
        Image src(sf.nChannels, sf.depth, sf.order, sf.model, sf.seq, 9, 13, 4, rng);
        Image dst(1, pair.dst, RMG_DATA_PIXEL, "GRAY", "G", 9, 13, 4, rng);
        src.image->widthStep += 7;
        dst.image->widthStep += 5;
        Bytes expected = dst.bytes();
        colortest::modelColorToGray(src.image, src.bytes(), src.image->widthStep, 9, 13, dst.image,
                                    expected, dst.image->widthStep);
        rmgColorToGray(src.image, dst.image, nullptr);
        EXPECT_EQ(dst.bytes(), expected) << describe(sf);
    }
    for (const GrayPair &pair : kSpreadPairs) {
        Image src(1, pair.src, RMG_DATA_PIXEL, "GRAY", "G", 9, 13, 4, rng);
        const Format df = colourFormat(rng, pair.dst);
        Image dst(df.nChannels, df.depth, df.order, df.model, df.seq, 9, 13, 4, rng);
        src.image->widthStep += 3;
        dst.image->widthStep += 9;
        Bytes expected = dst.bytes();
        colortest::modelGrayToColor(src.image, src.bytes(), src.image->widthStep, 9, 13, dst.image,
                                    expected, dst.image->widthStep, 0.5f, 0.25f, 0.125f);
        rmgGrayToColor(src.image, dst.image, 0.5f, 0.25f, 0.125f, nullptr);
        EXPECT_EQ(dst.bytes(), expected) << describe(df);
    }
    // In place on one record: pixel order RGB with one channel, the rows
    // run from their last element to their first.
    Image one(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, "RGB", "RGB", 3, 17, 4, rng);
    // In place, element i reads bytes i, i + 1 and i + 2, of which the last
    // two the elements above i have written already: the result follows the
    // loop order, from the last element to the first.
    Bytes expected = one.bytes();
    for (int r = 0; r < 3; ++r) {
        unsigned char *row = expected.data() + r * one.image->widthStep;
        const int limit = one.image->imageSize - r * one.image->widthStep;
        for (int i = 16; i >= 0; --i) {
            if (i + 3 > limit) continue;
            row[i] = static_cast<unsigned char>((row[i] * 54u + row[i + 1] * 183u + row[i + 2] * 18u) >> 8);
        }
    }
    rmgtest::inEveryForm([&](int) {
        Image copy(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, "RGB", "RGB", 3, 17, 4, rng);
        std::copy(one.image->imageData, one.image->imageData + one.image->imageSize, copy.image->imageData);
        rmgColorToGray(copy.image, copy.image, nullptr);
        EXPECT_EQ(copy.bytes(), expected);
    });
}

// --------------------------------------------------------------------------
// Tiled images
// --------------------------------------------------------------------------

// The expected tiles of a walk over a tiled destination: each tile the
// model of the source's rectangle as the tile engine reads it.
template <typename Model>
std::vector<Bytes> expectedTiles(const RmgImage *src, TiledImage &dst, Model model) {
    std::vector<Bytes> tiles = dst.data;
    const int tw = dst.tiles.width, th = dst.tiles.height;
    const int planes = src->dataOrder == RMG_DATA_PLANE ? src->nChannels : 1;
    for (int ty = 0; ty < dst.tilesY; ++ty)
        for (int tx = 0; tx < dst.tilesX; ++tx) {
            int rowStep = 0;
            unsigned char *block = ownGetExtendedRect(src, tx * tw, ty * th, tw, th, &rowStep);
            const Bytes read(block, block + static_cast<size_t>(rowStep) * th * planes + 16);
            ownReleaseExtendedRect(block);
            model(read, rowStep, tiles[static_cast<size_t>(tx + ty * dst.tilesX)]);
        }
    return tiles;
}

TEST_F(ColorRandomTest, TiledDestinationsAgainstTheModel) {
    std::mt19937 rng(21);
    for (int tile : {8, 16, 24})
        for (const GrayPair &pair : kGrayPairs) {
            const Format sf = colourFormat(rng, pair.src);
            const Format df = grayFormat(rng, pair.dst, "GRAY");
            const int h = randomSize(rng), w = randomSize(rng);
            Image src(sf.nChannels, sf.depth, sf.order, sf.model, sf.seq, h, w, 4, rng);
            TiledImage dst(df.nChannels, df.depth, df.order, df.model, df.seq, randomSize(rng),
                           randomSize(rng), tile, tile, rng);
            const auto expected = expectedTiles(src.image, dst, [&](const Bytes &read, int rowStep, Bytes &out) {
                colortest::modelColorToGray(src.image, read, rowStep, tile, tile, dst.image, out, dst.tileStep);
            });
            rmgColorToGray(src.image, dst.image, nullptr);
            EXPECT_EQ(dst.data, expected) << describe(sf) << " -> " << describe(df) << " tile " << tile;
            EXPECT_EQ(dst.calls, colortest::walkCalls(dst.tilesX, dst.tilesY));
        }
    for (int tile : {8, 16})
        for (const GrayPair &pair : kSpreadPairs) {
            const Format sf = grayFormat(rng, pair.src, "GRAY");
            const Format df = colourFormat(rng, pair.dst);
            Image src(sf.nChannels, sf.depth, sf.order, sf.model, sf.seq, randomSize(rng),
                      randomSize(rng), 8, rng);
            TiledImage dst(df.nChannels, df.depth, df.order, df.model, df.seq, randomSize(rng),
                           randomSize(rng), tile, tile, rng);
            const auto expected = expectedTiles(src.image, dst, [&](const Bytes &read, int rowStep, Bytes &out) {
                colortest::modelGrayToColor(src.image, read, rowStep, tile, tile, dst.image, out,
                                            dst.tileStep, 0.75f, 0.5f, 0.0f);
            });
            rmgGrayToColor(src.image, dst.image, 0.75f, 0.5f, 0.0f, nullptr);
            EXPECT_EQ(dst.data, expected) << describe(sf) << " -> " << describe(df) << " tile " << tile;
            EXPECT_EQ(dst.calls, colortest::walkCalls(dst.tilesX, dst.tilesY));
        }
    EXPECT_TRUE(reports().empty());
}

TEST_F(ColorRandomTest, TiledAndPlainAgreeInsideTheImage) {
    std::mt19937 rng(22);
    const Format sf{3, RMG_DEPTH_8U, RMG_DATA_PLANE, "RGB", "BGR"};
    Image src(3, RMG_DEPTH_8U, RMG_DATA_PLANE, "RGB", "BGR", 32, 48, 8, rng);
    Image plain(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, "GRAY", "G", 32, 48, 8, rng);
    TiledImage tiled(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, "GRAY", "G", 32, 48, 16, 8, rng);
    rmgColorToGray(src.image, plain.image, nullptr);
    rmgColorToGray(src.image, tiled.image, nullptr);
    for (int y = 0; y < 32; ++y)
        for (int x = 0; x < 48; ++x)
            ASSERT_EQ(tiled.tile(x / 16, y / 8)[static_cast<size_t>((y % 8) * tiled.tileStep + x % 16)],
                      plain.image->imageData[y * plain.image->widthStep + x])
                << describe(sf) << " at " << x << "," << y;
}

TEST_F(ColorRandomTest, TilePosDoesOneTile) {
    std::mt19937 rng(23);
    Image src(1, RMG_DEPTH_16U, RMG_DATA_PIXEL, "GRAY", "G", 30, 30, 4, rng);
    TiledImage dst(3, RMG_DEPTH_16U, RMG_DATA_PIXEL, "RGB", "RGB", 30, 30, 8, 8, rng);
    const std::vector<Bytes> before = dst.data;
    const auto all = expectedTiles(src.image, dst, [&](const Bytes &read, int rowStep, Bytes &out) {
        colortest::modelGrayToColor(src.image, read, rowStep, 8, 8, dst.image, out, dst.tileStep, 0, 0, 0);
    });
    const int pos[2] = {2, 1};
    rmgGrayToColor(src.image, dst.image, 0, 0, 0, pos);
    std::vector<Bytes> expected = before;
    expected[2 + 1 * dst.tilesX] = all[2 + 1 * dst.tilesX];
    EXPECT_EQ(dst.data, expected);
    EXPECT_EQ(dst.calls, (std::vector<Call>{{2, 1, RMG_TILE_WRITE}, {2, 1, RMG_TILE_RELEASE}}));
}

// With tilePos a null tile moves the one step to column 0 of the next row.
TEST_F(ColorRandomTest, TilePosAtANullTile) {
    std::mt19937 rng(27);
    Image src(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, "GRAY", "G", 24, 24, 4, rng);
    TiledImage dst(3, RMG_DEPTH_8U, RMG_DATA_PLANE, "RGB", "BGR", 24, 24, 8, 8, rng);
    dst.nullAt = 0;
    const std::vector<Bytes> before = dst.data;
    const auto all = expectedTiles(src.image, dst, [&](const Bytes &read, int rowStep, Bytes &out) {
        colortest::modelGrayToColor(src.image, read, rowStep, 8, 8, dst.image, out, dst.tileStep, 0.5f, 0.5f, 0.5f);
    });
    const int pos[2] = {2, 1};
    rmgGrayToColor(src.image, dst.image, 0.5f, 0.5f, 0.5f, pos);
    EXPECT_EQ(dst.calls, (std::vector<Call>{{2, 1, 2}, {0, 2, 2}, {0, 2, 4}}));
    std::vector<Bytes> expected = before;
    expected[0 + 2 * dst.tilesX] = all[0 + 2 * dst.tilesX];
    EXPECT_EQ(dst.data, expected);
}

// A source rectangle the tile engine can't read (its tile came back null)
// reaches the kernel as null: the piece is left as it was, and the walk
// goes on.
TEST_F(ColorRandomTest, UnreadableSourcePieceIsLeftAlone) {
    std::mt19937 rng(28);
    TiledImage src(3, RMG_DEPTH_16U, RMG_DATA_PIXEL, "RGB", "RGB", 16, 16, 8, 8, rng);
    TiledImage dst(1, RMG_DEPTH_16U, RMG_DATA_PIXEL, "GRAY", "G", 16, 16, 8, 8, rng);
    const std::vector<Bytes> before = dst.data;
    const auto all = expectedTiles(src.image, dst, [&](const Bytes &read, int rowStep, Bytes &out) {
        colortest::modelColorToGray(src.image, read, rowStep, 8, 8, dst.image, out, dst.tileStep);
    });
    src.calls.clear();
    src.nullAt = 0;  // the first read of the source
    rmgColorToGray(src.image, dst.image, nullptr);
    EXPECT_EQ(dst.calls, colortest::walkCalls(2, 2));
    EXPECT_EQ(dst.data[0], before[0]);
    for (size_t t = 1; t < 4; ++t) EXPECT_EQ(dst.data[t], all[t]) << t;
    EXPECT_TRUE(reports().empty());
}

TEST_F(ColorRandomTest, NullTileMovesToTheNextRow) {
    std::mt19937 rng(24);
    Image src(3, RMG_DEPTH_8U, RMG_DATA_PIXEL, "RGB", "RGB", 16, 16, 4, rng);
    TiledImage dst(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, "GRAY", "G", 16, 16, 8, 8, rng);
    dst.nullAt = 2;  // the write of tile (1, 0)
    const std::vector<Bytes> before = dst.data;
    const auto all = expectedTiles(src.image, dst, [&](const Bytes &read, int rowStep, Bytes &out) {
        colortest::modelColorToGray(src.image, read, rowStep, 8, 8, dst.image, out, dst.tileStep);
    });
    rmgColorToGray(src.image, dst.image, nullptr);
    EXPECT_EQ(dst.calls, (std::vector<Call>{{0, 0, 2}, {0, 0, 4}, {1, 0, 2}, {0, 1, 2}, {0, 1, 4},
                                            {1, 1, 2}, {1, 1, 4}, {2, 1, 2}, {0, 2, 2}}));
    EXPECT_EQ(dst.data[0], all[0]);
    EXPECT_EQ(dst.data[1], before[1]);
    EXPECT_EQ(dst.data[2], all[2]);
    EXPECT_EQ(dst.data[3], all[3]);
}

TEST_F(ColorRandomTest, KernelFailuresDontStopTheWalk) {
    std::mt19937 rng(25);
    Image src(3, RMG_DEPTH_16S, RMG_DATA_PIXEL, "RGB", "RGB", 16, 16, 4, rng);
    TiledImage dst(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, "GRAY", "G", 16, 24, 8, 8, rng);
    const std::vector<Bytes> before = dst.data;
    rmgColorToGray(src.image, dst.image, nullptr);
    EXPECT_EQ(dst.calls, colortest::walkCalls(3, 2));
    EXPECT_EQ(dst.data, before);
    ASSERT_EQ(reports().size(), 6u);
    for (const rmgtest::Report &r : reports()) {
        EXPECT_EQ(r.funcName, "ownColorToGray");
        EXPECT_EQ(r.context, "errInOutDepth");
        EXPECT_EQ(r.fileName, "owncolor");
    }
}

// A tiled source into an image in memory: the destination's row step is
// that of its tiles, which an image in memory doesn't have (0), so every
// row lands in the first one and the last row read stays there.
TEST_F(ColorRandomTest, TiledSourceIntoPlainDestination) {
    std::mt19937 rng(26);
    TiledImage src(3, RMG_DEPTH_8U, RMG_DATA_PIXEL, "RGB", "RGB", 12, 20, 8, 8, rng);
    Image dst(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, "GRAY", "G", 10, 20, 4, rng);
    Bytes expected = dst.bytes();
    int rowStep = 0;
    unsigned char *block = ownGetExtendedRect(src.image, 0, 0, 20, 10, &rowStep);
    const Bytes read(block, block + static_cast<size_t>(rowStep) * 10 + 16);
    ownReleaseExtendedRect(block);
    colortest::modelColorToGray(src.image, read, rowStep, 10, 20, dst.image, expected, 0);
    src.calls.clear();
    rmgColorToGray(src.image, dst.image, nullptr);
    EXPECT_EQ(dst.bytes(), expected);
    for (int x = 0; x < 20; ++x) {
        const unsigned char *p = read.data() + 9 * rowStep + 3 * x;
        EXPECT_EQ(dst.image->imageData[x], (p[0] * 54u + p[1] * 183u + p[2] * 18u) >> 8);
    }
    EXPECT_TRUE(reports().empty());
}

}  // namespace
