// rmgBlur on random images against the per-element model, tiled calls
// against plain ones with the call-back order of the walk, and the kernel
// forms against the scalar ones.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <random>
#include <vector>

#include "filter/blurtest.h"
#include "filter/rmgBlur.h"
#include "geometry/mirrortest.h"
#include "rmg.h"
#include "support/rmgcanvas.h"
#include "support/rmgforms.h"
#include "support/rmgtest.h"

namespace {

using blurtest::Box;
using blurtest::Bytes;
using mirrortest::bufferOf;
using mirrortest::Call;
using mirrortest::freeImage;
using mirrortest::Kind;
using mirrortest::makeImage;

class BlurRandomTest : public rmgtest::ErrorStateTest {};

const unsigned int kDepths[] = {RMG_DEPTH_8U, RMG_DEPTH_8S, RMG_DEPTH_16U, RMG_DEPTH_16S,
                                RMG_DEPTH_32S};

// 32-bit elements small enough that float column sums stay exact.
void tameThirtyTwo(RmgImage *image, std::mt19937 &rng) {
    if (image->depth != RMG_DEPTH_32S) return;
    for (int i = 0; i + 4 <= image->imageSize; i += 4) {
        const int32_t v = static_cast<int32_t>(rng() % 200001) - 100000;
        std::memcpy(image->imageData + i, &v, 4);
    }
    for (int side = 0; side < 4; ++side) image->borderConsts[side] %= 100000;
}

void randomBorders(RmgImage *image, std::mt19937 &rng) {
    for (int side = 0; side < 4; ++side) {
        image->borderModes[side] = static_cast<int>(rng() % 4);
        image->borderConsts[side] = static_cast<int>(rng());
    }
}

TEST_F(BlurRandomTest, PlainImagesAgainstTheModel) {
    const Box boxes[] = {{1, 1, 0, 0}, {3, 3, 1, 1}, {1, 5, 2, 0}, {7, 1, 0, 3}, {2, 2, 0, 0},
                         {4, 6, 3, 2}, {3, 3, 0, 0}, {3, 3, 2, 2}, {5, 5, 4, 0}, {2, 4, 1, 3},
                         {0, 3, 1, 1}, {3, 3, 5, 4}};
    std::mt19937 rng(1234);
    rmgtest::inEveryForm([&](int) {
        int round = 0;
        for (unsigned int depth : kDepths)
            for (int order : {RMG_DATA_PIXEL, RMG_DATA_PLANE})
                for (const Box &box : boxes) {
                    SCOPED_TRACE(::testing::Message() << "round " << round++ << " depth " << depth
                                                      << " order " << order << " box "
                                                      << box.nRows << "x" << box.nCols << " @"
                                                      << box.anchorX << "," << box.anchorY);
                    const int channels = 1 + static_cast<int>(rng() % 3);
                    const Kind kind{channels, depth, order, (rng() & 1) ? 4 : 8};
                    const int h = 1 + static_cast<int>(rng() % 12);
                    const int w = 1 + static_cast<int>(rng() % 40);
                    RmgImage *src = makeImage(kind, h, w, rng());
                    randomBorders(src, rng);
                    tameThirtyTwo(src, rng);
                    const bool same = rng() % 5 == 0;
                    RmgImage *dst = same ? src : makeImage(kind, h + static_cast<int>(rng() % 3),
                                                           w + static_cast<int>(rng() % 3), rng());
                    if (rng() % 2)
                        mirrortest::setRoi(src, static_cast<int>(rng() % (channels + 1)),
                                           static_cast<int>(rng() % w), static_cast<int>(rng() % h),
                                           1 + static_cast<int>(rng() % h),
                                           1 + static_cast<int>(rng() % (w + 4)));
                    if (!same && rng() % 2)
                        mirrortest::setRoi(dst, static_cast<int>(rng() % (channels + 1)),
                                           static_cast<int>(rng() % w), static_cast<int>(rng() % h),
                                           1 + static_cast<int>(rng() % (h + 2)),
                                           1 + static_cast<int>(rng() % w));
                    const Bytes before = bufferOf(dst);
                    const Bytes expected = blurtest::modelBlur(src, dst, before, box);
                    rmgBlur(src, dst, box.nRows, box.nCols, box.anchorX, box.anchorY, nullptr);
                    EXPECT_EQ(bufferOf(dst), expected);
                    if (!same) freeImage(dst);
                    freeImage(src);
                }
    });
    EXPECT_TRUE(rmgtest::reports().empty());
}

std::vector<Call> calls(std::initializer_list<Call> list) { return list; }

// A tiled destination of 20 x 13 in tiles of 8 against the plain call.
TEST_F(BlurRandomTest, TiledDestinationAgreesWithPlain) {
    std::mt19937 rng(99);
    for (unsigned int depth : kDepths)
        for (int order : {RMG_DATA_PIXEL, RMG_DATA_PLANE})
            for (int tile : {8, 16}) {
                SCOPED_TRACE(::testing::Message() << depth << " " << order << " " << tile);
                const Kind kind{3, depth, order, 4};
                RmgImage *src = makeImage(kind, 13, 20, rng());
                randomBorders(src, rng);
                tameThirtyTwo(src, rng);
                mirrortest::TiledImage tiled(kind, 13, 20, tile, tile, rng());
                RmgImage *plain = tiled.plainCopy(rng());
                rmgBlur(src, plain, 3, 5, 1, 2, nullptr);
                rmgBlur(src, tiled.image, 3, 5, 1, 2, nullptr);
                EXPECT_TRUE(tiled.samePixels(plain));
                freeImage(plain);
                freeImage(src);
            }
}

TEST_F(BlurRandomTest, TiledWalkCallsInOrder) {
    const Kind kind{1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4};
    RmgImage *src = makeImage(kind, 20, 20, 3);
    mirrortest::TiledImage tiled(kind, 20, 20, 8, 8, 4);
    // A ROI from (4, 4) of 14 x 14: tile columns and rows 0 to 2.
    mirrortest::setRoi(tiled.image, 0, 4, 4, 14, 14);
    RmgImage *plain = tiled.plainCopy(5);
    mirrortest::setRoi(plain, 0, 4, 4, 14, 14);
    rmgBlur(src, plain, 3, 3, 1, 1, nullptr);
    rmgBlur(src, tiled.image, 3, 3, 1, 1, nullptr);
    const int W = RMG_TILE_WRITE, R = RMG_TILE_RELEASE;
    EXPECT_EQ(tiled.calls, calls({{0, 0, W}, {0, 1, W}, {0, 2, W},
                                  {1, 0, W}, {1, 1, W}, {0, 0, R}, {1, 2, W}, {0, 1, R},
                                  {2, 0, W}, {2, 1, W}, {1, 0, R}, {2, 2, W}, {1, 1, R},
                                  {0, 2, R}, {1, 2, R}, {2, 2, R}, {2, 0, R}, {2, 1, R}}));
    rmgDeallocate(plain, RMG_DEALLOC_ROI);  // compare the whole images
    EXPECT_TRUE(tiled.samePixels(plain));
    freeImage(plain);
    freeImage(src);
}

TEST_F(BlurRandomTest, TilePointDoesOneTile) {
    const Kind kind{2, RMG_DEPTH_16S, RMG_DATA_PLANE, 8};
    RmgImage *src = makeImage(kind, 24, 24, 30);
    std::mt19937 rng(8);
    randomBorders(src, rng);
    for (auto point : {std::pair<int, int>{9, 17}, {0, 0}, {23, 5}}) {
        mirrortest::TiledImage tiled(kind, 24, 24, 8, 8, 31);
        // The rectangle from (5, 3) begins in an earlier tile for most points.
        mirrortest::setRoi(tiled.image, 0, 5, 3, 20, 19);
        RmgImage *plain = tiled.plainCopy(32);
        mirrortest::setRoi(plain, 0, 5, 3, 20, 19);
        rmgBlur(src, plain, 5, 3, 2, 1, nullptr);
        rmgDeallocate(plain, RMG_DEALLOC_ROI);
        const int tp[2] = {point.first, point.second};
        rmgBlur(src, tiled.image, 5, 3, 2, 1, tp);
        const int tx = point.first / 8, ty = point.second / 8;
        EXPECT_EQ(tiled.calls,
                  calls({{tx, ty, RMG_TILE_WRITE}, {tx, ty, RMG_TILE_RELEASE}}));
        // That tile as in the plain call, the others untouched.
        RmgImage *expected = tiled.plainCopy(33);
        const int eb = 2;
        for (int p = 0; p < 2; ++p)
            for (int y = ty * 8; y < ty * 8 + 8 && y < 24; ++y)
                std::memcpy(expected->imageData + (p * 24 + y) * expected->widthStep + tx * 8 * eb,
                            plain->imageData + (p * 24 + y) * plain->widthStep + tx * 8 * eb,
                            8 * eb);
        EXPECT_TRUE(tiled.samePixels(expected)) << point.first << "," << point.second;
        freeImage(expected);
        freeImage(plain);
    }
    freeImage(src);
}

TEST_F(BlurRandomTest, TilePointOutsideTheRectangleDoesNothing) {
    const Kind kind{1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4};
    RmgImage *src = makeImage(kind, 24, 24, 30);
    mirrortest::TiledImage tiled(kind, 24, 24, 8, 8, 31);
    mirrortest::setRoi(tiled.image, 0, 9, 9, 6, 6);
    const int tp[2] = {2, 20};
    rmgBlur(src, tiled.image, 3, 3, 1, 1, tp);
    EXPECT_TRUE(tiled.calls.empty());
    freeImage(src);
}

TEST_F(BlurRandomTest, TiledSourceAgreesWithPlain) {
    std::mt19937 rng(5);
    for (unsigned int depth : kDepths) {
        const Kind kind{3, depth, RMG_DATA_PIXEL, 4};
        mirrortest::TiledImage tiled(kind, 19, 21, 8, 8, rng());
        for (int side = 0; side < 4; ++side)
            rmgSetBorderMode(tiled.image, side == 0 ? RMG_BORDER_REPLICATE : RMG_BORDER_CONST,
                             1 << side, 3);
        RmgImage *plainSrc = tiled.plainCopy(rng());
        std::memcpy(plainSrc->borderModes, tiled.image->borderModes, sizeof plainSrc->borderModes);
        std::memcpy(plainSrc->borderConsts, tiled.image->borderConsts,
                    sizeof plainSrc->borderConsts);
        RmgImage *a = makeImage(kind, 19, 21, 1);
        RmgImage *b = makeImage(kind, 19, 21, 1);
        const int tp[2] = {100, 100};  // ignored: the destination is in memory
        rmgBlur(plainSrc, a, 4, 4, 2, 2, nullptr);
        rmgBlur(tiled.image, b, 4, 4, 2, 2, tp);
        EXPECT_EQ(bufferOf(a), bufferOf(b)) << depth;
        freeImage(a);
        freeImage(b);
        freeImage(plainSrc);
    }
}

// ---------------------------------------------------------------------------
// Kernel forms
// ---------------------------------------------------------------------------

TEST(BlurKernelForms, ColumnsMatchScalar) {
    std::mt19937 rng(77);
    rmgtest::Canvas add(2 * 300 * 3 + 64), sub(2 * 300 * 3 + 64);
    for (int kind = 0; kind < 4; ++kind)
        for (int count = 0; count <= 300; ++count)
            for (ptrdiff_t stride : {1, 3}) {
                const int shift = static_cast<int>(rng() % 8);
                for (size_t i = 0; i < add.size(); ++i) {
                    add.data()[i] = static_cast<unsigned char>(rng());
                    sub.data()[i] = static_cast<unsigned char>(rng());
                }
                std::vector<int32_t> start(static_cast<size_t>(count) + 2);
                for (auto &v : start) v = static_cast<int32_t>(rng());
                std::vector<int32_t> want = start;
                rmg::kBlurScalar.columns(want.data() + 1, add.data() + shift, sub.data() + shift,
                                         count, stride, kind);
                std::vector<int32_t> init = start;
                rmg::kBlurScalar.columns(init.data() + 1, add.data() + shift, nullptr, count,
                                         stride, kind);
                rmgtest::inEveryForm([&](int form) {
                    const rmg::BlurForms *f = form == 0 ? &rmg::kBlurScalar
                                              : form == 1 ? &rmg::kBlurSse2
                                                          : &rmg::kBlurAvx2;
                    std::vector<int32_t> got = start;
                    f->columns(got.data() + 1, add.data() + shift, sub.data() + shift, count,
                               stride, kind);
                    EXPECT_EQ(got, want) << kind << " " << count << " " << stride;
                    got = start;
                    f->columns(got.data() + 1, add.data() + shift, nullptr, count, stride, kind);
                    EXPECT_EQ(got, init);
                });
            }
}

TEST(BlurKernelForms, RowsMatchScalar) {
    std::mt19937 rng(78);
    const float scales[] = {1.0f / 9, 1.0f / 25, 0.5f, INFINITY, 1e10f, 1.0f / 49};
    for (int kind = 0; kind < 4; ++kind)
        for (int cols = 0; cols <= 300; ++cols)
            for (ptrdiff_t stride : {1, 3}) {
                const int nCols = static_cast<int>(rng() % 8);
                const float scale = scales[rng() % 6];
                std::vector<int32_t> sum(static_cast<size_t>(cols + nCols) + 1);
                const bool small = rng() % 2;
                for (auto &v : sum)
                    v = small ? static_cast<int32_t>(rng() % 100000) : static_cast<int32_t>(rng());
                const int eb = kind >= rmg::kBlur16u ? 2 : 1;
                const int shift = static_cast<int>(rng() % 8);
                const size_t bytes = static_cast<size_t>(cols) * stride * eb + 16;
                rmgtest::Canvas want(bytes), got(bytes);
                for (size_t i = 0; i < bytes; ++i) want.data()[i] = static_cast<unsigned char>(rng());
                const Bytes start = want.bytes();
                // Mostly the whole row, now and then a row cut short.
                const int cut = cols > 0 && rng() % 3 == 0 ? static_cast<int>(rng() % cols) : 0;
                const int count = cols - cut;
                rmg::kBlurScalar.row(sum.data(), cols, nCols, scale, want.data() + shift, stride,
                                     count, kind);
                rmgtest::inEveryForm([&](int form) {
                    const rmg::BlurForms *f = form == 0 ? &rmg::kBlurScalar
                                              : form == 1 ? &rmg::kBlurSse2
                                                          : &rmg::kBlurAvx2;
                    got.set(start);
                    f->row(sum.data(), cols, nCols, scale, got.data() + shift, stride, count, kind);
                    EXPECT_EQ(got.bytes(), want.bytes()) << kind << " " << cols << " " << stride;
                });
            }
}

}  // namespace
