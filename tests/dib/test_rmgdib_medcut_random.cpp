// The median-cut palette of random images against the model in
// medcuttest.h: few and many colours, smooth ramps, fewer colours than
// entries, gray and colour at depths 8 and 16 in both orders and all four
// channel sequences, every bit count; whole bitmap buffers compared. The
// palette has one form (its counting pass is scattered increments), so the
// forms loop checks that forcing a form changes nothing.
#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <vector>

#include "dib/rmgdib_medcut.h"
#include "support/rmgforms.h"
#include "support/rmgtest.h"
#include "tests/dib/medcuttest.h"

namespace {

using medcut::dibBuffer;
using medcut::header;
using medcut::makeImage;
using medcut::modelPalette;
using medcut::sampleAt;

class MedianCutRandom : public rmgtest::ErrorStateTest {};

struct Layout {
    int nChannels;
    unsigned depth;
    const char *seq;
    int order;
};

const Layout kLayouts[] = {
    {1, RMG_DEPTH_8U, "G", RMG_DATA_PIXEL},      {1, RMG_DEPTH_16U, "G", RMG_DATA_PIXEL},
    {3, RMG_DEPTH_8U, "BGR", RMG_DATA_PIXEL},    {3, RMG_DEPTH_8U, "RGB", RMG_DATA_PLANE},
    {4, RMG_DEPTH_8U, "BGRA", RMG_DATA_PIXEL},   {4, RMG_DEPTH_8U, "RGBA", RMG_DATA_PLANE},
    {3, RMG_DEPTH_16U, "RGB", RMG_DATA_PIXEL},   {4, RMG_DEPTH_16U, "BGRA", RMG_DATA_PLANE},
    {3, RMG_DEPTH_8U, "BGRA", RMG_DATA_PIXEL},   {4, RMG_DEPTH_8U, "RGB", RMG_DATA_PIXEL},
};

// Fills every byte of the buffer (padding and low bytes included) at
// random, then writes the samples: kind 0 picks each pixel from `colours`
// random colours, kind 1 is a smooth ramp, kind 2 is noise.
void fill(RmgImage *img, std::mt19937 &rng, int kind, int colours) {
    for (int i = 0; i < img->imageSize; ++i) img->imageData[i] = static_cast<uint8_t>(rng());
    std::vector<uint32_t> palette(static_cast<size_t>(colours));
    for (auto &c : palette) c = rng();
    for (int y = 0; y < img->height; ++y)
        for (int x = 0; x < img->width; ++x)
            for (int c = 0; c < img->nChannels; ++c) {
                const uint8_t v =
                    kind == 1 ? static_cast<uint8_t>(x * (c + 1) + y * (3 - c % 3) + c * 50)
                              : static_cast<uint8_t>(rng());
                *sampleAt(img, x, y, c) = v;
            }
    // Few colours: the first three channels of each pixel take one of the
    // chosen colours; a fourth keeps its noise.
    if (kind == 0)
        for (int y = 0; y < img->height; ++y)
            for (int x = 0; x < img->width; ++x) {
                const uint32_t c = palette[rng() % palette.size()];
                for (int ch = 0; ch < img->nChannels && ch < 3; ++ch)
                    *sampleAt(img, x, y, ch) = static_cast<uint8_t>(c >> (8 * ch));
            }
}

TEST_F(MedianCutRandom, MatchesTheModel) {
    std::mt19937 rng(20261121);
    int cases = 0;
    for (const Layout &l : kLayouts)
        for (int kind = 0; kind < 3; ++kind)
            for (int round = 0; round < 3; ++round) {
                const int width = 1 + static_cast<int>(rng() % 300);
                const int height = 1 + static_cast<int>(rng() % 24);
                const int colours = 1 + static_cast<int>(rng() % (round == 0 ? 8 : 600));
                const int bits = static_cast<int>(rng() % 9);
                RmgImage *img = makeImage(l.nChannels, l.depth, l.seq, l.order, height, width,
                                          rng() % 2 ? 4 : 8);
                ASSERT_NE(img, nullptr);
                fill(img, rng, kind, colours);
                SCOPED_TRACE(::testing::Message() << l.seq << " ch " << l.nChannels << " depth "
                                                  << l.depth << " order " << l.order << " "
                                                  << width << "x" << height << " kind " << kind
                                                  << " colours " << colours << " bits " << bits);
                std::vector<uint8_t> want = dibBuffer(bits);
                const int wantResult = modelPalette(want, img);
                rmgtest::inEveryForm([&](int) {
                    std::vector<uint8_t> got = dibBuffer(bits);
                    EXPECT_EQ(rmgMedianCutPalette(header(got), img), wantResult);
                    EXPECT_EQ(got, want);
                });
                rmgDeallocate(img, RMG_DEALLOC_ALL);
                ++cases;
            }
    EXPECT_EQ(rmgGetErrStatus(), 0);
    EXPECT_EQ(cases, 90);
}

// Whole pictures of half a million pixels, smooth and noise: all 256
// entries from generations of many-bin boxes.
TEST_F(MedianCutRandom, LargeImagesMatchTheModel) {
    std::mt19937 rng(5);
    for (int kind = 1; kind <= 2; ++kind) {
        RmgImage *img = makeImage(3, RMG_DEPTH_8U, "BGR", RMG_DATA_PIXEL, 517, 1031);
        ASSERT_NE(img, nullptr);
        fill(img, rng, kind, 1);
        std::vector<uint8_t> want = dibBuffer(8);
        ASSERT_EQ(modelPalette(want, img), 1);
        EXPECT_EQ(medcut::clrUsed(want), 256u);
        std::vector<uint8_t> got = dibBuffer(8);
        EXPECT_EQ(rmgMedianCutPalette(header(got), img), 1);
        EXPECT_EQ(got, want) << "kind " << kind;
        rmgDeallocate(img, RMG_DEALLOC_ALL);
    }
}

}  // namespace
