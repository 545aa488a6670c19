// The median-cut palette on small images with known tables: the direct
// tables of few colours, one-split palettes, axis ties, sampling at depth
// 16 and past a fourth channel, the pass that finds no live box, and the
// inputs that fail. Each test compares the whole bitmap buffer, the bytes
// behind the last entry included.
#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <cstring>
#include <vector>

#include "dib/rmgdib_medcut.h"
#include "support/rmgtest.h"
#include "tests/dib/medcuttest.h"

namespace {

using Entries = std::vector<std::array<uint8_t, 3>>;
using medcut::dibBuffer;
using medcut::expectedBuffer;
using medcut::header;
using medcut::makeImage;
using medcut::sampleAt;

class MedianCut : public rmgtest::ErrorStateTest {};

// Sets pixel x of row 0 of a colour image to red, green, blue, whatever the
// channel order.
void setRgb(RmgImage *img, int x, int y, uint8_t r, uint8_t g, uint8_t b) {
    const bool rgbFirst = img->channelSeq[0] == 'R';
    *sampleAt(img, x, y, rgbFirst ? 0 : 2) = r;
    *sampleAt(img, x, y, 1) = g;
    *sampleAt(img, x, y, rgbFirst ? 2 : 0) = b;
}

void setGray(RmgImage *img, const std::vector<uint8_t> &values) {
    for (size_t x = 0; x < values.size(); ++x) *sampleAt(img, static_cast<int>(x), 0, 0) = values[x];
}

// Runs the palette into a fresh buffer; the status must stay 0.
std::vector<uint8_t> palette(int bitCount, const RmgImage *img, int expectResult = 1) {
    std::vector<uint8_t> b = dibBuffer(bitCount);
    EXPECT_EQ(rmgMedianCutPalette(header(b), img), expectResult);
    EXPECT_EQ(rmgGetErrStatus(), 0);
    EXPECT_TRUE(rmgtest::reports().empty());
    return b;
}

// The palette of a one-row colour image of the given red, green, blue
// pixels.
std::vector<uint8_t> rowPalette(int bitCount, const char *seq, const Entries &rgb) {
    RmgImage *img = makeImage(3, RMG_DEPTH_8U, seq, RMG_DATA_PIXEL, 1,
                              static_cast<int>(rgb.size()));
    for (size_t x = 0; x < rgb.size(); ++x)
        setRgb(img, static_cast<int>(x), 0, rgb[x][0], rgb[x][1], rgb[x][2]);
    std::vector<uint8_t> b = palette(bitCount, img);
    rmgDeallocate(img, RMG_DEALLOC_ALL);
    return b;
}

TEST_F(MedianCut, GrayWithFewValuesGetsThemAscending) {
    RmgImage *img = makeImage(1, RMG_DEPTH_8U, "G", RMG_DATA_PIXEL, 1, 5);
    setGray(img, {200, 10, 10, 77, 200});
    EXPECT_EQ(palette(4, img), expectedBuffer(4, Entries{{10, 10, 10}, {77, 77, 77}, {200, 200, 200}}));
    rmgDeallocate(img, RMG_DEALLOC_ALL);
}

TEST_F(MedianCut, ColourWithFewBinsGetsThemInBinOrderQuantised) {
    // Pixels as red, green, blue: white (bin 262143), pure blue (258048),
    // pure red (63), bin 1 * 4096 + 2 * 64 + 3, white's bin again. Entries
    // are blue, green, red in bin order.
    EXPECT_EQ(rowPalette(8, "BGR",
                         Entries{{255, 255, 255}, {0, 0, 255}, {255, 0, 0}, {13, 9, 7},
                                 {255, 254, 253}}),
              expectedBuffer(8, Entries{{0, 0, 252}, {4, 8, 12}, {252, 0, 0}, {252, 252, 252}}));
}

TEST_F(MedianCut, OneBitImageGetsBlackAndWhiteAtEveryBitCount) {
    RmgImage *img = makeImage(1, RMG_DEPTH_1U, "G", RMG_DATA_PIXEL, 2, 16);
    for (int bits : {0, 1, 4, 8})
        EXPECT_EQ(palette(bits, img), expectedBuffer(bits, Entries{{0, 0, 0}, {255, 255, 255}}))
            << bits;
    rmgDeallocate(img, RMG_DEALLOC_ALL);
}

TEST_F(MedianCut, OneBitPerPixelSplitsOnceInGray) {
    // count 4, half 2: the walk passes half at 100 (acc 3, prev 2) and steps
    // back to 99, since 2 - 2 < 3 - 2; the lower box shrinks to 0.
    RmgImage *img = makeImage(1, RMG_DEPTH_8U, "G", RMG_DATA_PIXEL, 1, 4);
    setGray(img, {0, 100, 0, 200});
    EXPECT_EQ(palette(1, img), expectedBuffer(1, Entries{{0, 0, 0}, {150, 150, 150}}));
    rmgDeallocate(img, RMG_DEALLOC_ALL);
}

TEST_F(MedianCut, OneBitPerPixelSplitsOnceInColour) {
    // Red range 60 is the widest; half 1; plane 0 holds 2 pixels (over
    // half, no step back at the first plane): lower box red 0, upper the
    // pixel at red index 60.
    EXPECT_EQ(rowPalette(1, "RGB", Entries{{0, 0, 0}, {1, 16, 0}, {240, 8, 0}}),
              expectedBuffer(1, Entries{{0, 8, 0}, {0, 8, 240}}));
}

TEST_F(MedianCut, ImageOfOneColourGetsOneEntry) {
    RmgImage *img = makeImage(3, RMG_DEPTH_8U, "BGR", RMG_DATA_PLANE, 7, 9);
    for (int y = 0; y < 7; ++y)
        for (int x = 0; x < 9; ++x) setRgb(img, x, y, 255, 130, 17);
    EXPECT_EQ(palette(8, img), expectedBuffer(8, Entries{{16, 128, 252}}));
    RmgImage *g = makeImage(1, RMG_DEPTH_8U, "G", RMG_DATA_PIXEL, 3, 3);
    rmgSet(g, 99, nullptr);
    EXPECT_EQ(palette(2, g), expectedBuffer(2, Entries{{99, 99, 99}}));
    rmgDeallocate(img, RMG_DEALLOC_ALL);
    rmgDeallocate(g, RMG_DEALLOC_ALL);
}

TEST_F(MedianCut, FourthChannelHasNoInfluence) {
    const int w = 40, h = 30;
    RmgImage *four = makeImage(4, RMG_DEPTH_8U, "BGRA", RMG_DATA_PIXEL, h, w);
    RmgImage *three = makeImage(3, RMG_DEPTH_8U, "BGR", RMG_DATA_PIXEL, h, w);
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) {
            const uint8_t r = static_cast<uint8_t>(x * 6), g = static_cast<uint8_t>(y * 8),
                          b = static_cast<uint8_t>(x * y);
            setRgb(four, x, y, r, g, b);
            setRgb(three, x, y, r, g, b);
            *sampleAt(four, x, y, 3) = static_cast<uint8_t>(x * 37 + y);
        }
    const std::vector<uint8_t> expected = palette(8, three);
    EXPECT_EQ(medcut::clrUsed(expected), 256u);
    EXPECT_EQ(palette(8, four), expected);
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) *sampleAt(four, x, y, 3) = 255;
    EXPECT_EQ(palette(8, four), expected);
    rmgDeallocate(four, RMG_DEALLOC_ALL);
    rmgDeallocate(three, RMG_DEALLOC_ALL);
}

TEST_F(MedianCut, AtDepth16OnlyTheHighByteCounts) {
    RmgImage *img = makeImage(1, RMG_DEPTH_16U, "G", RMG_DATA_PIXEL, 1, 3);
    auto *e = reinterpret_cast<uint16_t *>(img->imageData);
    e[0] = 0x1234;
    e[1] = 0x12FF;
    e[2] = 0x5600;
    EXPECT_EQ(palette(8, img), expectedBuffer(8, Entries{{0x12, 0x12, 0x12}, {0x56, 0x56, 0x56}}));
    rmgDeallocate(img, RMG_DEALLOC_ALL);

    RmgImage *c = makeImage(3, RMG_DEPTH_16U, "RGB", RMG_DATA_PLANE, 1, 2);
    setRgb(c, 0, 0, 0x80, 0x40, 0x20);
    setRgb(c, 1, 0, 0x80, 0x40, 0x20);
    auto *ce = reinterpret_cast<uint16_t *>(c->imageData);
    ce[0] |= 0xFF;  // a low byte only: the same bin
    EXPECT_EQ(palette(8, c), expectedBuffer(8, Entries{{0x20, 0x40, 0x80}}));
    rmgDeallocate(c, RMG_DEALLOC_ALL);
}

TEST_F(MedianCut, EqualRangesPreferRedThenGreen) {
    // Red and green both span bins 0..10, blue none: the cut is on red.
    // Plane red 0 holds 2 of 3 pixels, so the lower box keeps both (a cut
    // on green would have kept only black).
    EXPECT_EQ(rowPalette(1, "BGR", Entries{{0, 0, 0}, {40, 40, 0}, {0, 40, 0}}),
              expectedBuffer(1, Entries{{0, 20, 0}, {0, 40, 40}}));
    // Green and blue both span 0..10, red none: the cut is on green.
    EXPECT_EQ(rowPalette(1, "RGBA", Entries{{0, 0, 0}, {0, 40, 40}, {0, 0, 40}}),
              expectedBuffer(1, Entries{{20, 0, 0}, {40, 40, 0}}));
}

TEST_F(MedianCut, NoLiveBoxEndsWithTheBoxesMadeSoFar) {
    // Ten black pixels and four reds: the first cut leaves black alone in
    // one bin, whose 255 passes to the box of the reds. No box is live at
    // two of four boxes: the table is black and the mean of the reds,
    // (40 + 80 + 120 + 252) / 4.
    Entries pixels(10, {0, 0, 0});
    for (uint8_t red : {40, 80, 120, 255}) pixels.push_back({red, 0, 0});
    EXPECT_EQ(rowPalette(2, "BGR", pixels), expectedBuffer(2, Entries{{0, 0, 0}, {0, 0, 123}}));
}

TEST_F(MedianCut, RegionOfInterestIsIgnored) {
    RmgImage *img = makeImage(1, RMG_DEPTH_8U, "G", RMG_DATA_PIXEL, 1, 4);
    setGray(img, {5, 6, 7, 8});
    img->roi = rmgCreateROI(0, 1, 0, 1, 1);
    EXPECT_EQ(palette(8, img), expectedBuffer(8, Entries{{5, 5, 5}, {6, 6, 6}, {7, 7, 7}, {8, 8, 8}}));
    rmgDeallocate(img, RMG_DEALLOC_ALL);
}

TEST_F(MedianCut, EmptyImageGivesAnEmptyTable) {
    std::vector<uint8_t> pixels(16, 0);
    RmgImage img{};
    img.nChannels = 3;
    img.depth = RMG_DEPTH_8U;
    std::memcpy(img.channelSeq, "BGR", 4);
    img.width = 0;
    img.height = 2;
    img.widthStep = 8;
    img.imageSize = 16;
    img.imageData = pixels.data();
    EXPECT_EQ(palette(8, &img), expectedBuffer(8, Entries{}));
}

TEST_F(MedianCut, RefusedInputsWriteNothing) {
    const std::vector<uint8_t> untouched = dibBuffer(8);
    RmgImage *img = makeImage(3, RMG_DEPTH_8U, "BGR", RMG_DATA_PIXEL, 2, 2);
    std::vector<uint8_t> b = dibBuffer(9);  // over 8 bits a pixel
    EXPECT_EQ(rmgMedianCutPalette(header(b), img), 0);
    EXPECT_EQ(b, dibBuffer(9));
    EXPECT_EQ(palette(8, nullptr, 0), untouched);
    b = dibBuffer(8);
    EXPECT_EQ(rmgMedianCutPalette(nullptr, img), 0);

    std::memcpy(img->channelSeq, "GRB", 4);  // no channel order of the four
    EXPECT_EQ(palette(8, img, 0), untouched);
    std::memcpy(img->channelSeq, "BGRX", 4);  // compared as one word
    EXPECT_EQ(palette(8, img, 0), untouched);
    std::memcpy(img->channelSeq, "BGR", 4);
    img->nChannels = 2;
    EXPECT_EQ(palette(8, img, 0), untouched);
    img->nChannels = 3;
    // Signed depths would put the samples a sign bit's distance away.
    img->depth = RMG_DEPTH_8S;
    EXPECT_EQ(palette(8, img, 0), untouched);
    img->depth = RMG_DEPTH_32S;
    EXPECT_EQ(palette(8, img, 0), untouched);
    img->depth = RMG_DEPTH_8U;
    // Pixels the header places beyond its imageSize are not read.
    const int size = img->imageSize;
    img->imageSize = size - 1 - (img->widthStep - 6);
    EXPECT_EQ(palette(8, img, 0), untouched);
    img->imageSize = size;
    // Nor rows that overlap.
    img->widthStep = 5;
    EXPECT_EQ(palette(8, img, 0), untouched);
    img->widthStep = 8;
    EXPECT_EQ(palette(8, img, 1).size(), untouched.size());
    rmgDeallocate(img, RMG_DEALLOC_ALL);

    // A tiled image has no pixels in memory.
    RmgTileInfo *tiles = rmgCreateTileInfo([](const RmgImage *, int, int, int) {}, nullptr, 8, 8);
    RmgImage *tiled = rmgCreateImageHeader(1, 0, RMG_DEPTH_8U, "GRAY", "G", RMG_DATA_PIXEL,
                                           RMG_ORIGIN_TL, 4, 8, 8, nullptr, nullptr, tiles);
    EXPECT_EQ(palette(8, tiled, 0), untouched);
    rmgDeallocate(tiled, RMG_DEALLOC_ALL);
}

}  // namespace
