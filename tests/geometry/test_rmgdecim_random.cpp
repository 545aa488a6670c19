// rmgDecimate on random plain images against the per-element model: every
// depth and order served, channel counts 1 to 4, whole and fractional
// ratios on each axis, each interpolation, regions that hang over the
// image's edges and channels of interest; the whole destination buffer,
// padding included, is compared.
#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <vector>

#include "geometry/test_rmgdecim_model.h"
#include "rmg.h"
#include "support/rmgtest.h"

namespace {

using decimtest::Bytes;
using mirrortest::Kind;

class DecimateRandomTest : public rmgtest::ErrorStateTest {};

struct Ratio {
    int u, l;
};
const Ratio kRatios[] = {{1, 1}, {1, 2}, {1, 3}, {2, 3}, {3, 7}, {3, 5}, {1, 4}, {4, 5}, {5, 11}};

void randomRoi(std::mt19937 &gen, RmgImage *image) {
    if (gen() % 3 == 0) return;
    const int coi = gen() % 2 ? 0 : int(gen() % (image->nChannels + 1));
    const int x = int(gen() % image->width), y = int(gen() % image->height);
    // Widths and heights up to past the image's edge.
    const int w = 1 + int(gen() % (image->width + 3)), h = 1 + int(gen() % (image->height + 3));
    mirrortest::setRoi(image, coi, x, y, h, w);
}

void runCases(unsigned depth, int order, int cases, uint32_t seed) {
    std::mt19937 gen(seed);
    for (int n = 0; n < cases; ++n) {
        const int nch = depth == RMG_DEPTH_1U ? 1 : 1 + int(gen() % 4);
        const Kind k{nch, depth, order, gen() % 2 ? 4 : 8};
        const Ratio rx = kRatios[gen() % 9], ry = kRatios[gen() % 9];
        const int interp = int(gen() % 3);
        RmgImage *src = mirrortest::makeImage(k, 1 + int(gen() % 40), 1 + int(gen() % 40), gen());
        RmgImage *dst = mirrortest::makeImage(k, 1 + int(gen() % 30), 1 + int(gen() % 30), gen());
        randomRoi(gen, src);
        randomRoi(gen, dst);
        const Bytes srcBytes = mirrortest::bufferOf(src), before = mirrortest::bufferOf(dst);
        rmgDecimate(src, dst, rx.u, rx.l, ry.u, ry.l, interp, nullptr);
        const Bytes want = decimtest::modelDecimate(src, srcBytes, dst, before, rx.u, rx.l, ry.u,
                                                    ry.l, interp);
        ASSERT_EQ(mirrortest::bufferOf(dst), want)
            << "case " << n << " depth " << depth << " order " << order << " ch " << nch
            << " src " << src->height << "x" << src->width << " dst " << dst->height << "x"
            << dst->width << " x " << rx.u << "/" << rx.l << " y " << ry.u << "/" << ry.l
            << " interp " << interp;
        ASSERT_EQ(mirrortest::bufferOf(src), srcBytes);
        ASSERT_TRUE(rmgtest::reports().empty());
        mirrortest::freeImage(src);
        mirrortest::freeImage(dst);
    }
}

TEST_F(DecimateRandomTest, EightBitPixelOrder) { runCases(RMG_DEPTH_8U, RMG_DATA_PIXEL, 1500, 1); }
TEST_F(DecimateRandomTest, EightBitPlaneOrder) { runCases(RMG_DEPTH_8U, RMG_DATA_PLANE, 1000, 2); }
TEST_F(DecimateRandomTest, SixteenBitPixelOrder) {
    runCases(RMG_DEPTH_16U, RMG_DATA_PIXEL, 1500, 3);
}
TEST_F(DecimateRandomTest, SixteenBitPlaneOrder) {
    runCases(RMG_DEPTH_16U, RMG_DATA_PLANE, 1000, 4);
}
TEST_F(DecimateRandomTest, OneBitBothOrders) {
    runCases(RMG_DEPTH_1U, RMG_DATA_PIXEL, 800, 5);
    runCases(RMG_DEPTH_1U, RMG_DATA_PLANE, 300, 6);
}

// One record as source and destination: each position is read before any
// write reaches it, so the result is that of a copy.
TEST_F(DecimateRandomTest, InPlaceNearestEqualsACopy) {
    std::mt19937 gen(8);
    for (int n = 0; n < 40; ++n) {
        const Kind k{1 + int(gen() % 4), n % 2 ? RMG_DEPTH_16U : RMG_DEPTH_8U,
                     n % 4 < 2 ? RMG_DATA_PIXEL : RMG_DATA_PLANE, 4};
        const Ratio rx = kRatios[gen() % 9], ry = kRatios[gen() % 9];
        RmgImage *im = mirrortest::makeImage(k, 4 + int(gen() % 30), 4 + int(gen() % 30), gen());
        const Bytes before = mirrortest::bufferOf(im);
        rmgDecimate(im, im, rx.u, rx.l, ry.u, ry.l, RMG_INTER_NN, nullptr);
        ASSERT_EQ(mirrortest::bufferOf(im), decimtest::modelDecimate(im, before, im, before, rx.u,
                                                                     rx.l, ry.u, ry.l,
                                                                     RMG_INTER_NN))
            << n;
        mirrortest::freeImage(im);
    }
}

// Rows wide enough for the untested loops (the footprint inside the
// buffers) at every width from 0 to 300 destination columns and every
// start column 0..3, against the model.
TEST_F(DecimateRandomTest, WideRowsAtEveryWidthAndStart) {
    std::mt19937 gen(7);
    for (unsigned depth : {RMG_DEPTH_8U, RMG_DEPTH_16U})
        for (int w = 0; w <= 300; w += (w < 40 ? 1 : 7)) {
            const Kind k{3, depth, RMG_DATA_PIXEL, 4};
            const Ratio r = kRatios[1 + gen() % 8];
            const int interp = int(gen() % 3);
            RmgImage *src = mirrortest::makeImage(k, 12, 2 * 300 + 16, gen());
            RmgImage *dst = mirrortest::makeImage(k, 4, 301, gen());
            mirrortest::setRoi(src, 0, int(gen() % 4), 2, 9, 2 * 300 + 8);
            mirrortest::setRoi(dst, 0, int(gen() % 4), 0, 4, std::max(w, 1));
            const Bytes srcBytes = mirrortest::bufferOf(src), before = mirrortest::bufferOf(dst);
            rmgDecimate(src, dst, r.u, r.l, 2, 5, interp, nullptr);
            ASSERT_EQ(mirrortest::bufferOf(dst),
                      decimtest::modelDecimate(src, srcBytes, dst, before, r.u, r.l, 2, 5, interp))
                << w << " " << depth << " " << interp;
            mirrortest::freeImage(src);
            mirrortest::freeImage(dst);
        }
}

}  // namespace
