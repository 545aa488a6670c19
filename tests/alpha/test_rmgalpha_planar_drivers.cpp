// The planar drivers against a model built on the per-sample model of the
// rows: random plane-order images of both depths with ROIs at their own
// origins, alpha images of their own or the images themselves, destination
// alpha images, a destination alpha channel that is skipped, destination
// COIs, work in place, and images whose imageSize cuts off their last rows.
// Every buffer of a call is compared whole, row padding included.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <map>
#include <memory>
#include <random>
#include <vector>

#include "alpha/alphatest.h"
#include "alpha/rmgalpha.h"
#include "alpha/rmgalpha_planar.h"
#include "alpha/test_rmgalpha_planar_model.h"
#include "support/rmgforms.h"

namespace {

using alphatest::getSample;
using alphatest::Image;
using alphatest::putSample;
using Bytes = std::vector<uint8_t>;

struct Call {
    int depth = kOwnDepth8u;
    int op = 0;
    Image *A = nullptr;
    Image *B = nullptr;
    Image *D = nullptr;
    Image *alphaA = nullptr;
    Image *alphaB = nullptr;  // or null: b is ~a
    Image *alphaD = nullptr;  // or null: no destination alpha
    int premul = 0;
    int rows = 0;
    int columns = 0;
};

int xOf(const Image *img) { return img->image->roi ? img->roi.xOffset : 0; }
int yOf(const Image *img) { return img->image->roi ? img->roi.yOffset : 0; }

// The call on copies of the buffers, one per distinct image: row by row,
// the destination alpha row first, then the colour rows of the channels
// but the destination's alpha channel, each reading the buffers as they
// stand by then.
std::map<const Image *, Bytes> model(const Call &k) {
    std::map<const Image *, Bytes> mem;
    for (const Image *img : {k.A, k.B, k.D, k.alphaA, k.alphaB, k.alphaD})
        if (img != nullptr) mem.emplace(img, img->bytes());
    const int M = k.depth == kOwnDepth8u ? 255 : 65535;
    const bool coi = k.D->image->roi != nullptr && k.D->roi.coi != 0;
    const int n = coi ? 1 : k.D->image->nChannels;
    const bool hasB = k.alphaB != nullptr;
    auto get = [&](const Image *img, int x, int y, int ch) {
        return getSample(*img, mem[img], xOf(img) + x, yOf(img) + y, ch);
    };
    auto alphaOf = [](const Image *img) {
        return img->image->alphaChannel != 0 ? img->image->alphaChannel - 1 : 0;
    };
    auto alphaRow = [&](int y, std::vector<int> *a, std::vector<int> *b) {
        for (int x = 0; x < k.columns; ++x) {
            (*a)[x] = get(k.alphaA, x, y, alphaOf(k.alphaA));
            (*b)[x] = hasB ? get(k.alphaB, x, y, alphaOf(k.alphaB)) : 0;
        }
    };
    std::vector<int> a(k.columns), b(k.columns), out(k.columns);
    for (int y = 0; y < k.rows; ++y) {
        if (k.alphaD != nullptr) {
            alphaRow(y, &a, &b);
            for (int x = 0; x < k.columns; ++x) out[x] = planartest::alphaModel(k.op, M, hasB, a[x], b[x]);
            for (int x = 0; x < k.columns; ++x)
                putSample(*k.alphaD, mem[k.alphaD], xOf(k.alphaD) + x, yOf(k.alphaD) + y,
                          k.alphaD->image->alphaChannel - 1, out[x]);
        }
        for (int c = 0; c < n; ++c) {
            if (c == k.D->image->alphaChannel - 1) continue;
            const int chA = coi ? k.A->roi.coi - 1 : c;
            const int chB = coi ? k.B->roi.coi - 1 : c;
            const int chD = coi ? k.D->roi.coi - 1 : c;
            alphaRow(y, &a, &b);
            for (int x = 0; x < k.columns; ++x)
                out[x] = planartest::colourModel(k.op, M, k.premul != 0, hasB, get(k.A, x, y, chA),
                                                 a[x], get(k.B, x, y, chB), b[x]);
            for (int x = 0; x < k.columns; ++x)
                putSample(*k.D, mem[k.D], xOf(k.D) + x, yOf(k.D) + y, chD, out[x]);
        }
    }
    return mem;
}

void run(const Call &k) {
    ownCompositePlanar[k.depth][k.op](k.A->image, k.B->image, k.D->image, k.alphaA->image,
                                      k.alphaB ? k.alphaB->image : nullptr,
                                      k.alphaD ? k.alphaD->image : nullptr, k.premul, 0, k.rows,
                                      k.columns);
}

void check(const Call &k) {
    const std::map<const Image *, Bytes> want = model(k);
    run(k);
    for (const auto &kv : want) EXPECT_EQ(kv.first->bytes(), kv.second);
}

class Maker {
public:
    Maker(std::mt19937 &rng, int depth) : rng_(rng), depth_(depth) {}

    int pick(int lo, int hi) { return std::uniform_int_distribution<int>(lo, hi)(rng_); }
    bool coin(int oneIn = 2) { return pick(1, oneIn) == 1; }

    // A plane-order image of random size and align with random bytes; with
    // a ROI of `height` by `width` at a random origin inside it when `roi`,
    // else exactly that size. `coi` -1 picks a random coi.
    Image *image(int nChannels, int alphaChannel, int height, int width, bool roi, int coi = 0) {
        const int extraY = roi ? pick(0, 3) : 0, extraX = roi ? pick(0, 9) : 0;
        images_.push_back(std::make_unique<Image>(
            nChannels, alphaChannel, depth_ == kOwnDepth8u ? RMG_DEPTH_8U : RMG_DEPTH_16U,
            RMG_DATA_PLANE, coin() ? 4 : 8, height + extraY, width + extraX));
        Image *img = images_.back().get();
        img->randomize(rng_);
        if (roi) img->setRoi(coi < 0 ? pick(1, nChannels) : coi, pick(0, extraX), pick(0, extraY), height, width);
        return img;
    }

private:
    std::mt19937 &rng_;
    int depth_;
    std::vector<std::unique_ptr<Image>> images_;
};

TEST(PlanarDrivers, AgreeWithTheRowModelOnRandomImages) {
    std::mt19937 rng(77);
    rmgtest::inEveryForm([&](int) {
        for (int depth : {kOwnDepth8u, kOwnDepth16u})
            for (int op = 0; op < 6; ++op)
                for (int trial = 0; trial < 24; ++trial) {
                    SCOPED_TRACE(::testing::Message() << "depth " << depth << " op " << op
                                                      << " trial " << trial);
                    Maker make(rng, depth);
                    Call k;
                    k.depth = depth;
                    k.op = op;
                    k.premul = make.pick(0, 1);
                    k.rows = make.pick(1, 5);
                    k.columns = make.pick(1, 70);
                    const int shape = trial % 4;
                    const bool dstCoi = shape == 3;
                    const int channels = make.pick(1, 3);
                    // 0: plain; 1: destination with an alpha channel, which
                    // the colour loop skips and which takes the destination
                    // alpha; 2: in place, the destination being source A and
                    // its alpha channel the alpha of A and the destination
                    // alpha; 3: destination COI.
                    const int dstAlpha = shape == 1 || shape == 2 ? channels + 1 : 0;
                    k.D = make.image(channels + (dstAlpha ? 1 : 0), dstAlpha, k.rows, k.columns,
                                     make.coin() || dstCoi, dstCoi ? -1 : 0);
                    auto source = [&]() {
                        return make.image(k.D->image->nChannels, 0, k.rows, k.columns,
                                          dstCoi || make.coin(), dstCoi ? -1 : 0);
                    };
                    k.A = shape == 2 ? k.D : source();
                    k.B = source();
                    k.alphaA = shape == 2 ? k.D : make.image(1, 0, k.rows, k.columns, make.coin());
                    k.alphaB = make.coin(3) ? nullptr : make.image(make.pick(1, 2), 0, k.rows,
                                                                   k.columns, make.coin());
                    if (shape == 1 || shape == 2)
                        k.alphaD = k.D;
                    else if (make.coin())
                        k.alphaD = make.image(2, make.pick(1, 2), k.rows, k.columns, make.coin());
                    check(k);
                    if (HasFailure()) return;
                }
    });
}

// A one-channel destination whose alpha channel is its only channel: no
// colour row runs, and the destination alpha is still written.
TEST(PlanarDrivers, DestinationAlphaWithoutColourChannels) {
    std::mt19937 rng(3);
    for (int depth : {kOwnDepth8u, kOwnDepth16u})
        for (int op = 0; op < 6; ++op) {
            Maker make(rng, depth);
            Call k;
            k.depth = depth;
            k.op = op;
            k.rows = 3;
            k.columns = 40;
            k.D = make.image(1, 1, 3, 40, false);
            k.A = make.image(1, 0, 3, 40, false);
            k.B = make.image(1, 0, 3, 40, false);
            k.alphaA = make.image(1, 0, 3, 40, false);
            k.alphaB = op % 2 ? nullptr : make.image(1, 0, 3, 40, false);
            k.alphaD = k.D;
            const Bytes before = k.D->bytes();
            check(k);
            EXPECT_NE(k.D->bytes(), before) << op;
        }
}

// An image whose imageSize is one byte short of its layout: the row that
// would reach that byte and those after it are left out, in every image.
TEST(PlanarDrivers, RowsBeyondAnImagesSizeAreLeftOut) {
    std::mt19937 rng(9);
    for (int depth : {kOwnDepth8u, kOwnDepth16u})
        for (int shortOne = 0; shortOne < 6; ++shortOne) {
            SCOPED_TRACE(::testing::Message() << "depth " << depth << " image " << shortOne);
            Maker make(rng, depth);
            Call k;
            k.depth = depth;
            k.op = 0;
            k.rows = 4;
            k.columns = 24;  // rows without padding: the last sample ends the buffer
            k.D = make.image(3, 0, 4, 24, false);
            k.A = make.image(3, 0, 4, 24, false);
            k.B = make.image(3, 0, 4, 24, false);
            k.alphaA = make.image(1, 0, 4, 24, false);
            k.alphaB = make.image(1, 0, 4, 24, false);
            k.alphaD = make.image(1, 1, 4, 24, false);
            Image *const cut[6] = {k.D, k.A, k.B, k.alphaA, k.alphaB, k.alphaD};
            Image *img = cut[shortOne];
            Bytes bytes = img->bytes();
            bytes.pop_back();
            img->setBytes(bytes);
            img->image->imageSize -= 1;
            Call fewer = k;
            fewer.rows = 3;
            const std::map<const Image *, Bytes> want = model(fewer);
            run(k);
            for (const auto &kv : want) EXPECT_EQ(kv.first->bytes(), kv.second);
        }
}

}  // namespace
