// rmgMirror on random images against the per-element model (all depths,
// both orders, each flip, ROIs inside and hanging out, coi, one record,
// different sizes; whole buffers compared), and tiled calls against plain
// ones with the call-back sequences of the tile walk.
#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "geometry/mirrortest.h"
#include "rmg.h"
#include "support/rmgforms.h"
#include "support/rmgtest.h"

namespace {

using mirrortest::Bytes;
using mirrortest::Call;
using mirrortest::freeImage;
using mirrortest::Kind;
using mirrortest::makeImage;
using mirrortest::setRoi;

class MirrorRandomTest : public rmgtest::ErrorStateTest {};

const unsigned int kDepths[] = {RMG_DEPTH_1U,  RMG_DEPTH_8U,  RMG_DEPTH_16U,
                                RMG_DEPTH_8S,  RMG_DEPTH_16S, RMG_DEPTH_32S};

Kind randomKind(std::mt19937 &gen) {
    const unsigned int depth = kDepths[gen() % 6];
    const int channels = depth == RMG_DEPTH_1U ? 1 : 1 + static_cast<int>(gen() % 4);
    return {channels, depth, static_cast<int>(gen() % 2), gen() % 2 ? 4 : 8};
}

int pick(std::mt19937 &gen, int lo, int hi) { return lo + static_cast<int>(gen() % (hi - lo + 1)); }

// A ROI inside the image or hanging out of it at the right and bottom.
void randomRoi(std::mt19937 &gen, RmgImage *image, int coi) {
    const int x = pick(gen, 0, image->width + 1);
    const int y = pick(gen, 0, image->height + 1);
    setRoi(image, coi, x, y, pick(gen, 1, image->height + 2), pick(gen, 1, image->width + 2));
}

TEST_F(MirrorRandomTest, PlainImagesFollowTheModel) {
    rmgtest::inEveryForm([&](int form) {
        std::mt19937 gen(1234 + form);
        for (int iter = 0; iter < 1500; ++iter) {
            const Kind kind = randomKind(gen);
            const bool same = gen() % 4 == 0;
            RmgImage *src = makeImage(kind, pick(gen, 1, 40), pick(gen, 1, 70), gen());
            RmgImage *dst = same ? src : makeImage(kind, pick(gen, 1, 40), pick(gen, 1, 70), gen());
            const int coi = gen() % 3 == 0 ? pick(gen, 1, kind.nChannels) : 0;
            if (coi != 0 || gen() % 2) randomRoi(gen, src, coi);
            if (!same && (coi != 0 || gen() % 2)) randomRoi(gen, dst, coi);
            const int flip = pick(gen, -1, 1);
            const Bytes srcBytes = mirrortest::bufferOf(src);
            const Bytes dstBytes = mirrortest::bufferOf(dst);
            const Bytes expected = mirrortest::modelMirror(src, srcBytes, dst, dstBytes, flip);
            rmgMirror(src, dst, flip, nullptr);
            ASSERT_EQ(expected, mirrortest::bufferOf(dst))
                << "iteration " << iter << " depth " << kind.depth << " order " << kind.dataOrder
                << " channels " << kind.nChannels << " flip " << flip << " same " << same;
            freeImage(src);
            if (!same) freeImage(dst);
        }
    });
    EXPECT_TRUE(rmgtest::reports().empty());
}

TEST_F(MirrorRandomTest, WideRowsTakeTheVectorPathsInPlaceAndBetweenImages) {
    rmgtest::inEveryForm([&](int form) {
        std::mt19937 gen(99 + form);
        for (int iter = 0; iter < 60; ++iter) {
            const Kind kind{pick(gen, 1, 4), kDepths[pick(gen, 1, 5)], RMG_DATA_PIXEL, 8};
            const bool same = iter % 2 == 0;
            RmgImage *src = makeImage(kind, pick(gen, 1, 5), pick(gen, 100, 400), gen());
            RmgImage *dst = same ? src : makeImage(kind, src->height, src->width, gen());
            const int flip = pick(gen, -1, 1);
            const Bytes expected = mirrortest::modelMirror(src, mirrortest::bufferOf(src), dst,
                                                           mirrortest::bufferOf(dst), flip);
            rmgMirror(src, dst, flip, nullptr);
            ASSERT_EQ(expected, mirrortest::bufferOf(dst)) << iter;
            freeImage(src);
            if (!same) freeImage(dst);
        }
    });
}

TEST_F(MirrorRandomTest, AChangedWidthStepStaysInsideTheBuffer) {
    // A widthStep far beyond the rows: most rows lie outside imageSize and
    // are left alone on both sides.
    for (int flip : {0, 1, -1})
        for (bool same : {false, true}) {
            RmgImage *src = makeImage({3, RMG_DEPTH_16U, RMG_DATA_PIXEL, 4}, 6, 5, 7);
            RmgImage *dst = same ? src : makeImage({3, RMG_DEPTH_16U, RMG_DATA_PIXEL, 4}, 6, 5, 8);
            src->widthStep = 44;
            dst->widthStep = 48;
            const Bytes expected = mirrortest::modelMirror(src, mirrortest::bufferOf(src), dst,
                                                           mirrortest::bufferOf(dst), flip);
            rmgMirror(src, dst, flip, nullptr);
            EXPECT_EQ(expected, mirrortest::bufferOf(dst)) << flip << same;
            freeImage(src);
            if (!same) freeImage(dst);
        }
}

// ---------------------------------------------------------------------------
// Tiles
// ---------------------------------------------------------------------------

std::vector<Call> writes(std::initializer_list<std::pair<int, int>> tiles) {
    std::vector<Call> calls;
    for (const auto &t : tiles) {
        calls.push_back({t.first, t.second, RMG_TILE_WRITE});
        calls.push_back({t.first, t.second, RMG_TILE_RELEASE});
    }
    return calls;
}

TEST_F(MirrorRandomTest, TheTileOrderFollowsTheFlip) {
    const Kind k8{1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4};
    RmgImage *src = makeImage(k8, 16, 16, 5);
    const std::vector<Call> expected[3] = {
        writes({{0, 1}, {0, 0}, {1, 1}, {1, 0}}),  // 0: columns forwards, rows backwards
        writes({{1, 0}, {0, 0}, {1, 1}, {0, 1}}),  // 1: rows forwards, columns backwards
        writes({{1, 1}, {1, 0}, {0, 1}, {0, 0}}),  // -1: both backwards
    };
    for (int flip : {0, 1, -1}) {
        mirrortest::TiledImage tiled(k8, 16, 16, 8, 8, 6);
        wrmgMirror(src, tiled.image, flip, nullptr);
        EXPECT_EQ(expected[flip == -1 ? 2 : flip], tiled.calls) << flip;
    }
    freeImage(src);
}

TEST_F(MirrorRandomTest, OneTiledRecordIsReadWholeFirst) {
    const Kind k8{1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4};
    mirrortest::TiledImage tiled(k8, 16, 8, 8, 8, 6);
    RmgImage *plain = tiled.plainCopy(1);
    wrmgMirror(tiled.image, tiled.image, 0, nullptr);
    wrmgMirror(plain, plain, 0, nullptr);
    // The read of two tile rows: each row fetched and released on its own.
    const std::vector<Call> reads = {{0, 0, RMG_TILE_READ}, {0, 0, RMG_TILE_RELEASE},
                                     {0, 1, RMG_TILE_READ}, {0, 1, RMG_TILE_RELEASE}};
    std::vector<Call> all = reads;
    for (const Call &c : writes({{0, 1}, {0, 0}})) all.push_back(c);
    EXPECT_EQ(all, tiled.calls);
    EXPECT_TRUE(tiled.samePixels(plain));
    freeImage(plain);
}

TEST_F(MirrorRandomTest, TiledCallsGiveThePlainResult) {
    std::mt19937 gen(77);
    const int tileSizes[] = {8, 16, 24};
    for (int iter = 0; iter < 240; ++iter) {
        const Kind kind = randomKind(gen);
        const int tw = tileSizes[gen() % 3], th = tileSizes[gen() % 3];
        const int way = iter % 4;  // 0: tiled dst, 1: tiled src, 2: both, 3: one tiled record
        const int flip = pick(gen, -1, 1);
        const int coi = gen() % 3 == 0 ? pick(gen, 1, kind.nChannels) : 0;
        const int h = pick(gen, 1, 60), w = pick(gen, 1, 60);
        mirrortest::TiledImage dstTiled(kind, h, w, tw, th, gen());
        mirrortest::TiledImage srcTiled(kind, pick(gen, 1, 60), pick(gen, 1, 60), tw, th, gen());
        const uint32_t padSeed = gen();
        RmgImage *dstPlain = dstTiled.plainCopy(padSeed);
        RmgImage *srcPlain = way == 3 ? dstPlain : srcTiled.plainCopy(gen());
        RmgImage *srcUsed = way == 0 ? srcPlain : way == 3 ? dstTiled.image : srcTiled.image;
        RmgImage *dstUsed = way == 1 ? dstPlain : dstTiled.image;
        // ROIs inside the images: beyond the edges a tiled read takes the
        // border rules where a plain one reads the buffer.
        const auto inside = [&](RmgImage *a, RmgImage *b) {
            const int y = pick(gen, 0, a->height - 1), x = pick(gen, 0, a->width - 1);
            const int rows = pick(gen, 1, a->height - y), cols = pick(gen, 1, a->width - x);
            setRoi(a, coi, x, y, rows, cols);
            setRoi(b, coi, x, y, rows, cols);
        };
        if (coi != 0 || gen() % 2) {
            if (way != 3) inside(srcTiled.image, srcPlain);
            inside(dstTiled.image, dstPlain);
        }
        RmgImage *srcForPlain = way == 3 ? dstPlain : srcPlain;
        rmgMirror(srcForPlain, dstPlain, flip, nullptr);
        if (way == 1) {
            // The plain destination: compare with a second one mirrored from
            // the tiled source.
            RmgImage *again = dstTiled.plainCopy(padSeed);
            if (dstPlain->roi != nullptr) setRoi(again, coi, dstPlain->roi->xOffset,
                                                 dstPlain->roi->yOffset, dstPlain->roi->height,
                                                 dstPlain->roi->width);
            // The first plain result came from srcPlain, of the same pixels.
            rmgMirror(srcUsed, again, flip, nullptr);
            ASSERT_EQ(mirrortest::bufferOf(dstPlain), mirrortest::bufferOf(again))
                << "iteration " << iter << " flip " << flip << " depth " << kind.depth;
            freeImage(again);
        } else {
            rmgMirror(srcUsed, dstUsed, flip, nullptr);
            ASSERT_TRUE(dstTiled.samePixels(dstPlain))
                << "iteration " << iter << " way " << way << " flip " << flip << " tiles " << tw
                << "x" << th << " depth " << kind.depth << " order " << kind.dataOrder;
        }
        freeImage(dstPlain);
        if (srcPlain != dstPlain) freeImage(srcPlain);
    }
    EXPECT_TRUE(rmgtest::reports().empty());
}

TEST_F(MirrorRandomTest, ATilePointDoesOneTileOfTheWalk) {
    std::mt19937 gen(5);
    const Kind kind{3, RMG_DEPTH_16U, RMG_DATA_PIXEL, 4};
    for (int flip : {0, 1, -1}) {
        RmgImage *src = makeImage(kind, 40, 40, 11);
        setRoi(src, 0, 3, 5, 30, 29);
        mirrortest::TiledImage whole(kind, 40, 40, 8, 16, 12);
        mirrortest::TiledImage byPoint(kind, 40, 40, 8, 16, 12);
        setRoi(whole.image, 0, 5, 2, 33, 31);
        setRoi(byPoint.image, 0, 5, 2, 33, 31);
        rmgMirror(src, whole.image, flip, nullptr);
        for (int y = 2; y < 2 + 30; y += 4)
            for (int x = 5; x < 5 + 29; x += 3) {
                const int point[2] = {x, y};
                byPoint.calls.clear();
                rmgMirror(src, byPoint.image, flip, point);
                EXPECT_EQ(writes({{x / 8, y / 16}}), byPoint.calls);
            }
        EXPECT_EQ(Bytes(whole.grid->imageData, whole.grid->imageData + whole.grid->imageSize),
                  Bytes(byPoint.grid->imageData, byPoint.grid->imageData + byPoint.grid->imageSize))
            << flip;
        freeImage(src);
    }
}

}  // namespace
