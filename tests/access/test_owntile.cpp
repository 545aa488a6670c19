// The tile engine's copies: a block copy in both directions, the fetch and
// release of a row of tiles, the read of a rectangle from a tiled image with
// its backward-walk rules, and the spread helpers.
#include <gtest/gtest.h>

#include <numeric>
#include <random>
#include <vector>

#include "access/owntile.h"
#include "access/tiletest.h"

namespace {

using namespace tiletest;

Bytes iota(size_t n, int first = 0) {
    Bytes b(n);
    std::iota(b.begin(), b.end(), static_cast<unsigned char>(first));
    return b;
}

// ---------------------------------------------------------------------------
// ownCopyBlock
// ---------------------------------------------------------------------------

TEST(CopyBlock, ForwardCopiesEachPixel) {
    const Bytes src = iota(30);  // 3 rows of 10 bytes: 4 pixels of 2 bytes and padding
    Bytes dst(32, 0xEE);         // 4 rows of 8 bytes
    ownCopyBlock(src.data(), 1, 0, 2, 1, 10, 30, dst.data(), 1, 1, 8, 32, 2, 1, src.size(),
                 dst.size());
    Bytes want(32, 0xEE);
    const Bytes row1 = {2, 3, 4, 5}, row2 = {12, 13, 14, 15};
    std::copy(row1.begin(), row1.end(), want.begin() + 8 + 2);
    std::copy(row2.begin(), row2.end(), want.begin() + 16 + 2);
    EXPECT_EQ(dst, want);
}

TEST(CopyBlock, BackwardAxesStillFillTheDestinationUpwards) {
    const Bytes src = iota(12);  // 3 rows of 4 one-byte pixels
    Bytes dst(9, 0);
    // Columns 2, 1, 0 of rows 2 and 1, to destination columns 0..2, rows 0..1.
    ownCopyBlock(src.data(), 2, 2, 0, 1, 4, 12, dst.data(), 0, 0, 3, 9, 1, 1, src.size(),
                 dst.size());
    EXPECT_EQ(dst, (Bytes{10, 9, 8, 6, 5, 4, 0, 0, 0}));
}

TEST(CopyBlock, EveryPlaneIsCopied) {
    const Bytes src = iota(16);  // 2 planes of 2 rows of 4 bytes
    Bytes dst(8, 0);             // 2 planes of 2 rows of 2 bytes
    ownCopyBlock(src.data(), 1, 0, 2, 1, 4, 8, dst.data(), 0, 0, 2, 4, 1, 2, src.size(),
                 dst.size());
    EXPECT_EQ(dst, (Bytes{1, 2, 5, 6, 9, 10, 13, 14}));
}

TEST(CopyBlock, OneBitCopyOrsIntoTheDestination) {
    const Bytes src = {0xA5, 0x0F};  // 1 row: bits 10100101 00001111
    Bytes dst = {0x00, 0x40, 0x00};
    // Source bits 4..11 (0101 0000) to destination bits 3..10.
    ownCopyBlock(src.data(), 4, 0, 11, 0, 2, 2, dst.data(), 3, 0, 3, 3, 0, 1, src.size(),
                 dst.size());
    EXPECT_EQ(dst, (Bytes{0x0A, 0x40, 0x00}));
    // Backwards: source bits 15 down to 4 (1111 0000 1010) to bits 0..11.
    Bytes back = {0x00, 0x00};
    ownCopyBlock(src.data(), 15, 0, 4, 0, 2, 2, back.data(), 0, 0, 2, 2, 0, 1, src.size(),
                 back.size());
    EXPECT_EQ(back, (Bytes{0xF0, 0xA0}));
}

TEST(CopyBlock, PixelsOutsideEitherBufferArePassedOver) {
    const Bytes src = iota(8, 1);  // 2 rows of 4
    Bytes dst(8, 0xEE);
    // Source row -1 lies before the buffer and row 2 behind it; column -1
    // of row 1 is the last pixel of row 0, inside the buffer, and is read.
    ownCopyBlock(src.data(), -1, -1, 1, 2, 4, 8, dst.data(), 0, 0, 3, 12, 1, 1, src.size(),
                 dst.size());
    //          row -1 skipped   row 0         row 1 (col -1 = byte 3)
    EXPECT_EQ(dst, (Bytes{0xEE, 0xEE, 0xEE, 0xEE, 1, 2, 4, 5}));
    // The destination's rows 2 and 3 would be behind its 8 bytes: not written.
    // Destination column -1 of row 0 lies before the buffer.
    Bytes small(4, 0xEE);
    ownCopyBlock(src.data(), 0, 0, 2, 0, 4, 8, small.data(), -1, 0, 4, 4, 1, 1, src.size(),
                 small.size());
    EXPECT_EQ(small, (Bytes{2, 3, 0xEE, 0xEE}));
}

// Per-element model of the copy with its bounds: in walk order, each pixel
// whose source and destination bytes lie inside is copied (1-bit: ORed).
TEST(CopyBlock, RandomCopiesAgreeWithTheModel) {
    std::mt19937 rng(11);
    for (int iter = 0; iter < 3000; ++iter) {
        const int pbChoices[] = {0, 1, 2, 3, 4, 6};
        const int pb = pbChoices[rng() % 6];
        const int planes = pb == 0 ? 1 : 1 + static_cast<int>(rng() % 3);
        const int srcRowStep = 4 + static_cast<int>(rng() % 16);
        const int srcPlaneStep = srcRowStep * (1 + static_cast<int>(rng() % 5));
        Bytes src(srcPlaneStep * planes - static_cast<int>(rng() % 3));
        for (auto &b : src) b = static_cast<unsigned char>(rng());
        const int dstRowStep = 4 + static_cast<int>(rng() % 16);
        const int dstPlaneStep = dstRowStep * (1 + static_cast<int>(rng() % 5));
        Bytes dst(dstPlaneStep * planes - static_cast<int>(rng() % 3));
        for (auto &b : dst) b = static_cast<unsigned char>(rng());
        auto pos = [&](int range) { return static_cast<int>(rng() % (2 * range)) - range / 2; };
        const int x0 = pos(12), x1 = pos(12), y0 = pos(8), y1 = pos(8);
        const int dstX = pos(8), dstY = pos(6);

        Bytes want = dst;
        const int sx = x1 < x0 ? -1 : 1, sy = y1 < y0 ? -1 : 1;
        const long long sSize = static_cast<long long>(src.size());
        const long long dSize = static_cast<long long>(dst.size());
        for (int p = 0; p < planes; ++p)
            for (int j = 0, r = y0;; ++j, r += sy) {
                for (int i = 0, c = x0;; ++i, c += sx) {
                    if (pb == 0) {
                        const long long s = 1LL * r * srcRowStep + ((c - (c & 7)) / 8);
                        const int dc = dstX + i;
                        const long long d = 1LL * (dstY + j) * dstRowStep + ((dc - (dc & 7)) / 8);
                        if (s >= 0 && s < sSize && (src[s] & (0x80 >> (c & 7))) && d >= 0 &&
                            d < dSize)
                            want[d] |= static_cast<unsigned char>(0x80 >> (dc & 7));
                    } else {
                        const long long s =
                            1LL * p * srcPlaneStep + 1LL * r * srcRowStep + 1LL * c * pb;
                        const long long d = 1LL * p * dstPlaneStep + 1LL * (dstY + j) * dstRowStep +
                                            1LL * (dstX + i) * pb;
                        if (s >= 0 && s + pb <= sSize && d >= 0 && d + pb <= dSize)
                            std::copy(src.begin() + s, src.begin() + s + pb, want.begin() + d);
                    }
                    if (c == x1) break;
                }
                if (r == y1) break;
            }
        ownCopyBlock(src.data(), x0, y0, x1, y1, srcRowStep, srcPlaneStep, dst.data(), dstX, dstY,
                     dstRowStep, dstPlaneStep, pb, planes, src.size(), dst.size());
        ASSERT_EQ(dst, want) << "iteration " << iter << " pb " << pb << " x " << x0 << ".." << x1
                             << " y " << y0 << ".." << y1 << " dst " << dstX << "," << dstY;
    }
}

// ---------------------------------------------------------------------------
// ownFetchTileRow, ownReleaseTileRow
// ---------------------------------------------------------------------------

TEST(TileRow, FetchInStepOrderAndReleaseFromLastToFirst) {
    TiledImage t(k8, 64, 64, 8, 8, 1);
    unsigned char *pointers[3] = {};
    EXPECT_EQ(ownFetchTileRow(t.image, pointers, 3, 5, 2, -1), 0);
    EXPECT_EQ(t.calls, (std::vector<Call>{{5, 2, 1}, {4, 2, 1}, {3, 2, 1}}));
    EXPECT_NE(pointers[0], nullptr);
    EXPECT_NE(pointers[2], nullptr);
    // The pointers are those the call-back gave, by position.
    EXPECT_EQ(pointers[1][0], sampleByte(1, 4 * 8, 2 * 8, 0, 0));
    t.calls.clear();
    t.tiles.tileData = nullptr;
    ownReleaseTileRow(t.image, pointers, 3, 5, 2, -1);
    EXPECT_EQ(t.calls, (std::vector<Call>{{3, 2, 4}, {4, 2, 4}, {5, 2, 4}}));
    // Each release saw the pointer its read gave.
    EXPECT_FALSE(t.badRelease);
    EXPECT_EQ(t.outstanding(), 0u);
    EXPECT_EQ(t.tiles.tileData, pointers[0]);
}

TEST(TileRow, ForwardStepCountsUp) {
    TiledImage t(k8, 64, 64, 8, 8, 1);
    unsigned char *pointers[2] = {};
    EXPECT_EQ(ownFetchTileRow(t.image, pointers, 2, -1, 0, 1), 0);
    ownReleaseTileRow(t.image, pointers, 2, -1, 0, 1);
    EXPECT_EQ(t.calls, (std::vector<Call>{{-1, 0, 1}, {0, 0, 1}, {0, 0, 4}, {-1, 0, 4}}));
    EXPECT_FALSE(t.badRelease);
}

TEST(TileRow, ANullTileFailsTheRowButTheFetchGoesOn) {
    TiledImage t(k8, 64, 64, 8, 8, 1);
    t.failAtRead = 1;
    unsigned char *pointers[3] = {};
    EXPECT_EQ(ownFetchTileRow(t.image, pointers, 3, 0, 1, 1), 1);
    EXPECT_EQ(t.calls, (std::vector<Call>{{0, 1, 1}, {1, 1, 1}, {2, 1, 1}}));
    EXPECT_NE(pointers[0], nullptr);
    EXPECT_EQ(pointers[1], nullptr);
    EXPECT_NE(pointers[2], nullptr);
    EXPECT_EQ(t.outstanding(), 2u);  // nothing is released on failure
}

TEST(TileRow, WithoutACallBackEveryTileIsMissing) {
    TiledImage t(k8, 64, 64, 8, 8, 1);
    t.tiles.callBack = nullptr;
    unsigned char *pointers[2] = {reinterpret_cast<unsigned char *>(&t), nullptr};
    EXPECT_EQ(ownFetchTileRow(t.image, pointers, 2, 0, 0, 1), 1);
    EXPECT_EQ(pointers[0], nullptr);
    unsigned char byte = 0;
    unsigned char *given[1] = {&byte};
    ownReleaseTileRow(t.image, given, 1, 0, 0, 1);
    EXPECT_EQ(t.tiles.tileData, &byte);
    EXPECT_TRUE(t.calls.empty());
}

// ---------------------------------------------------------------------------
// ownReadTileRect
// ---------------------------------------------------------------------------

TEST(ReadTileRect, PlainImageIsOneBlockCopy) {
    PlainImage a(k8, 3, 5, 2);  // widthStep 8
    Bytes dst(12, 0);
    EXPECT_EQ(ownReadTileRect(a.image, 3, 2, 1, 1, dst.data(), 1, 0, 4, 12, 1, 1, dst.size()), 0);
    Bytes want(12, 0);
    for (int i = 0; i < 3; ++i) {
        want[1 + i] = *a.pixel(3 - i, 2);
        want[4 + 1 + i] = *a.pixel(3 - i, 1);
    }
    EXPECT_EQ(dst, want);
}

TEST(ReadTileRect, PlainImageIsReadWithinItsImageSize) {
    PlainImage a(k8, 2, 4, 2);  // widthStep 4, imageSize 8
    Bytes dst(4, 0xEE);
    // Row 2 lies behind the buffer; column 4 of row 0 is column 0 of row 1.
    EXPECT_EQ(ownReadTileRect(a.image, 3, 0, 4, 0, dst.data(), 0, 0, 2, 4, 1, 1, dst.size()), 0);
    EXPECT_EQ(ownReadTileRect(a.image, 3, 2, 4, 2, dst.data(), 0, 1, 2, 4, 1, 1, dst.size()), 0);
    EXPECT_EQ(dst, (Bytes{*a.pixel(3, 0), *a.pixel(0, 1), 0xEE, 0xEE}));
}

TEST(ReadTileRect, ForwardAcrossTilesIsExact) {
    TiledImage t(k8, 32, 32, 8, 8, 3);
    Bytes dst(12 * 11, 0);
    // Columns 5..16 and rows 6..16: three tile columns, three tile rows.
    ASSERT_EQ(ownReadTileRect(t.image, 5, 6, 16, 16, dst.data(), 0, 0, 12, 132, 1, 1, dst.size()),
              0);
    for (int r = 0; r < 11; ++r)
        for (int c = 0; c < 12; ++c)
            ASSERT_EQ(dst[r * 12 + c], sampleByte(3, 5 + c, 6 + r, 0, 0)) << c << "," << r;
    const std::vector<Call> want = {{0, 0, 1}, {1, 0, 1}, {2, 0, 1}, {2, 0, 4}, {1, 0, 4},
                                    {0, 0, 4}, {0, 1, 1}, {1, 1, 1}, {2, 1, 1}, {2, 1, 4},
                                    {1, 1, 4}, {0, 1, 4}, {0, 2, 1}, {1, 2, 1}, {2, 2, 1},
                                    {2, 2, 4}, {1, 2, 4}, {0, 2, 4}};
    EXPECT_EQ(t.calls, want);
    EXPECT_FALSE(t.badRelease);
    EXPECT_EQ(t.outstanding(), 0u);
}

TEST(ReadTileRect, BackwardColumnsCrossingATileLandTwoShort) {
    TiledImage t(k8, 16, 24, 8, 8, 4);
    Bytes dst(8, 0xEE);
    // Columns 10 down to 3: tile 1 gives 10, 9, 8 at 0..2; tile 0 lands at
    // 0 + inX0 - 1 = 1 and gives 7..3 at 1..5; columns 6 and 7 stay.
    ASSERT_EQ(ownReadTileRect(t.image, 10, 0, 3, 0, dst.data(), 0, 0, 8, 8, 1, 1, dst.size()), 0);
    auto s = [](int X) { return sampleByte(4, X, 0, 0, 0); };
    EXPECT_EQ(dst, (Bytes{s(10), s(7), s(6), s(5), s(4), s(3), 0xEE, 0xEE}));
    EXPECT_EQ(t.calls, (std::vector<Call>{{1, 0, 1}, {0, 0, 1}, {0, 0, 4}, {1, 0, 4}}));
}

TEST(ReadTileRect, BackwardColumnsOverThreeTiles) {
    TiledImage t(k8, 16, 40, 8, 8, 4);
    Bytes dst(22, 0xEE);
    // Columns 20 down to 0: tile 2 gives 20..16 at 0..4, tile 1 lands at 3
    // (15..8 at 3..10), tile 0 at 11 (7..0 at 11..18); 19 and 20 stay.
    ASSERT_EQ(ownReadTileRect(t.image, 20, 0, 0, 0, dst.data(), 0, 0, 22, 22, 1, 1, dst.size()), 0);
    Bytes want(22, 0xEE);
    for (int X = 20; X >= 16; --X) want[20 - X] = sampleByte(4, X, 0, 0, 0);
    for (int X = 15; X >= 0; --X) want[20 - X - 2] = sampleByte(4, X, 0, 0, 0);
    EXPECT_EQ(dst, want);
    EXPECT_EQ(t.calls, (std::vector<Call>{
                           {2, 0, 1}, {1, 0, 1}, {0, 0, 1}, {0, 0, 4}, {1, 0, 4}, {2, 0, 4}}));
}

TEST(ReadTileRect, BackwardRowsCrossingATileRowStopAfterTheFirst) {
    TiledImage t(k8, 32, 16, 8, 8, 5);
    Bytes dst(4 * 8, 0xEE);
    // Rows 10 down to 3: only rows 10, 9, 8 of tile row 1 are delivered.
    ASSERT_EQ(ownReadTileRect(t.image, 2, 10, 5, 3, dst.data(), 0, 0, 4, 32, 1, 1, dst.size()), 0);
    Bytes want(32, 0xEE);
    for (int r = 0; r < 3; ++r)
        for (int c = 0; c < 4; ++c) want[r * 4 + c] = sampleByte(5, 2 + c, 10 - r, 0, 0);
    EXPECT_EQ(dst, want);
    EXPECT_EQ(t.calls, (std::vector<Call>{{0, 1, 1}, {0, 1, 4}}));
}

TEST(ReadTileRect, BackwardRowsWithinOneTileRowAreWhole) {
    TiledImage t(k8, 32, 16, 8, 8, 5);
    Bytes dst(6, 0);
    ASSERT_EQ(ownReadTileRect(t.image, 1, 13, 1, 8, dst.data(), 0, 0, 1, 6, 1, 1, dst.size()), 0);
    for (int r = 0; r < 6; ++r) EXPECT_EQ(dst[r], sampleByte(5, 1, 13 - r, 0, 0));
}

TEST(ReadTileRect, BackwardTileBeforeTheDestinationIsPassedOver) {
    TiledImage t(k8, 16, 16, 8, 8, 6);
    auto s = [](int X, int Y) { return sampleByte(6, X, Y, 0, 0); };
    // Columns 8 down to 5: tile 1 gives 8 at 0; tile 0 lands at 0 + 0 - 1:
    // column 7 at -1, 6 at 0, 5 at 1. Column -1 of row 0 lies before the
    // buffer and is not written; in row 1 it is the last byte of row 0.
    Bytes dst(8, 0xEE);
    ASSERT_EQ(ownReadTileRect(t.image, 8, 0, 5, 1, dst.data(), 0, 0, 4, 8, 1, 1, dst.size()), 0);
    EXPECT_EQ(dst, (Bytes{s(6, 0), s(5, 0), 0xEE, s(7, 1), s(6, 1), s(5, 1), 0xEE, 0xEE}));
}

TEST(ReadTileRect, OneBitBackwardWalkOrsTheOverlap) {
    TiledImage t(k1, 8, 16, 8, 8, 7);
    Bytes dst(4, 0);
    ASSERT_EQ(ownReadTileRect(t.image, 9, 2, 6, 2, dst.data(), 0, 0, 4, 4, 0, 1, dst.size()), 0);
    // Tile 1 gives 9, 8 at bits 0, 1; tile 0 lands at 0: 7 at bit 0, 6 at 1.
    auto b = [](int X) { return sampleBit(7, X, 2) ? 1 : 0; };
    const int bit0 = b(9) | b(7), bit1 = b(8) | b(6);
    EXPECT_EQ(dst[0], (bit0 << 7) | (bit1 << 6));
}

TEST(ReadTileRect, NegativePositionsSplitTowardZero) {
    TiledImage t(k8, 16, 16, 8, 8, 8);
    auto s = [](int X, int Y) { return sampleByte(8, X, Y, 0, 0); };
    // Column -2 is tile 0 at -2: two bytes before its row; in tile row 1 of
    // the tile that is column 6 of row 0, before row 0 nothing.
    Bytes dst(2, 0xEE);
    ASSERT_EQ(ownReadTileRect(t.image, -2, 0, -2, 1, dst.data(), 0, 0, 1, 2, 1, 1, dst.size()), 0);
    EXPECT_EQ(dst, (Bytes{0xEE, s(6, 0)}));
    EXPECT_EQ(t.calls, (std::vector<Call>{{0, 0, 1}, {0, 0, 4}}));
    // Column -9 is tile -1 at -1, row -10 tile -1 at -2: the tile above and
    // to the left is asked for, and its offset lies before it.
    t.calls.clear();
    Bytes one(1, 0xEE);
    ASSERT_EQ(ownReadTileRect(t.image, -9, -10, -9, -10, one.data(), 0, 0, 1, 1, 1, 1, one.size()),
              0);
    EXPECT_EQ(one[0], 0xEE);
    EXPECT_EQ(t.calls, (std::vector<Call>{{-1, -1, 1}, {-1, -1, 4}}));
}

TEST(ReadTileRect, FailuresReturnOne) {
    Bytes dst(64, 0);
    RmgImage *none = rmgCreateImageHeader(1, 0, RMG_DEPTH_8U, "GRAY", "GRAY", 0, 0, 4, 8, 8,
                                          nullptr, nullptr, nullptr);
    EXPECT_EQ(ownReadTileRect(none, 0, 0, 1, 1, dst.data(), 0, 0, 8, 64, 1, 1, dst.size()), 1);
    rmgDeallocate(none, RMG_DEALLOC_HEADER);

    TiledImage t(k8, 16, 16, 8, 8, 1);
    t.tiles.width = 0;  // no tile grid to divide by
    EXPECT_EQ(ownReadTileRect(t.image, 0, 0, 1, 1, dst.data(), 0, 0, 8, 64, 1, 1, dst.size()), 1);
    EXPECT_TRUE(t.calls.empty());
    t.tiles.width = 8;
    t.tiles.callBack = nullptr;
    EXPECT_EQ(ownReadTileRect(t.image, 0, 0, 1, 1, dst.data(), 0, 0, 8, 64, 1, 1, dst.size()), 1);
}

TEST(ReadTileRect, ANullTileStopsTheWalkWithoutReleasingItsRow) {
    TiledImage t(k8, 32, 32, 8, 8, 1);
    t.failAtRead = 4;  // tile (1, 1): the second tile of the second tile row
    Bytes dst(20 * 20, 0);
    EXPECT_EQ(ownReadTileRect(t.image, 4, 4, 19, 19, dst.data(), 0, 0, 20, 400, 1, 1, dst.size()),
              1);
    const std::vector<Call> want = {{0, 0, 1}, {1, 0, 1}, {2, 0, 1}, {2, 0, 4}, {1, 0, 4},
                                    {0, 0, 4}, {0, 1, 1}, {1, 1, 1}, {2, 1, 1}};
    EXPECT_EQ(t.calls, want);
    EXPECT_EQ(t.outstanding(), 2u);  // (0, 1) and (2, 1) stay with the call-back
}

// Per-element model of a tiled read with non-negative positions: a forward
// axis is exact; a backward column walk puts every column after the first
// tile two places early (later tiles overwrite, 1-bit ORs); a backward row
// walk that crosses a tile row delivers the first tile row only.
TEST(ReadTileRect, RandomWalksAgreeWithTheModel) {
    std::mt19937 rng(21);
    const int sizes[3] = {8, 16, 24};
    for (int iter = 0; iter < 1500; ++iter) {
        const Kind k = kindNumber(static_cast<int>(rng() % 12), rng());
        const int tw = sizes[rng() % 3], th = sizes[rng() % 3];
        const uint32_t seed = rng();
        TiledImage t(k, 3 * th, 3 * tw, tw, th, seed);
        const int x0 = static_cast<int>(rng() % (3 * tw)), x1 = static_cast<int>(rng() % (3 * tw));
        const int y0 = static_cast<int>(rng() % (3 * th)), y1 = static_cast<int>(rng() % (3 * th));
        const int cols = std::abs(x1 - x0) + 1, rows = std::abs(y1 - y0) + 1;
        const int dstX = 2 + static_cast<int>(rng() % 4), dstY = static_cast<int>(rng() % 3);
        const int pb = pixelBytesOf(k), planes = planesOf(k);
        const int dstRowStep = blockRowStep(k, dstX + cols + 3);
        const int dstPlaneStep = dstRowStep * (dstY + rows + 1);
        Bytes dst(static_cast<size_t>(dstPlaneStep) * planes);
        for (auto &b : dst) b = static_cast<unsigned char>(rng());
        Bytes want = dst;

        const int sx = x1 < x0 ? -1 : 1;
        const int lastRow = y1 >= y0 ? y1 : (y0 / th == y1 / th ? y1 : y0 / th * th);
        for (int p = 0; p < planes; ++p)
            for (int r = y0, j = 0;; r += (y1 < y0 ? -1 : 1), ++j) {
                for (int c = x0, i = 0;; c += sx, ++i) {
                    const int d = dstX + i - (sx < 0 && c / tw != x0 / tw ? 2 : 0);
                    unsigned char *row = want.data() + p * dstPlaneStep + (dstY + j) * dstRowStep;
                    if (pb == 0) {
                        if (sampleBit(seed, c, r)) row[d >> 3] |= 0x80 >> (d & 7);
                    } else {
                        for (int b = 0; b < pb; ++b) row[d * pb + b] = sampleByte(seed, c, r, p, b);
                    }
                    if (c == x1) break;
                }
                if (r == lastRow) break;
            }
        std::vector<Call> calls;
        const int n = std::abs(x1 / tw - x0 / tw) + 1;
        const int lastTileRow = y1 >= y0 ? y1 / th : y0 / th;
        for (int ty = y0 / th; ty <= lastTileRow; ++ty) {
            for (int i = 0; i < n; ++i) calls.push_back({x0 / tw + i * sx, ty, RMG_TILE_READ});
            for (int i = n - 1; i >= 0; --i)
                calls.push_back({x0 / tw + i * sx, ty, RMG_TILE_RELEASE});
        }

        ASSERT_EQ(ownReadTileRect(t.image, x0, y0, x1, y1, dst.data(), dstX, dstY, dstRowStep,
                                  dstPlaneStep, pb, planes, dst.size()),
                  0);
        ASSERT_EQ(dst, want) << "iteration " << iter << " " << k << " tile " << tw << "x" << th
                             << " x " << x0 << ".." << x1 << " y " << y0 << ".." << y1;
        ASSERT_EQ(t.calls, calls) << "iteration " << iter;
        ASSERT_FALSE(t.badRelease);
        ASSERT_EQ(t.outstanding(), 0u);
    }
}

// ---------------------------------------------------------------------------
// Spread helpers
// ---------------------------------------------------------------------------

TEST(Spread, CornerCopiesOnePixelOverTheRectangleInEachPlane) {
    // 2 planes of 3 rows of 8 bytes, pixels of 2 bytes.
    Bytes block(48, 0);
    block[1 * 8 + 2] = 7;
    block[1 * 8 + 3] = 8;
    block[24 + 1 * 8 + 2] = 9;
    block[24 + 1 * 8 + 3] = 10;
    ownSpreadCorner(block.data(), 1, 1, 2, 2, 8, 24, 2, 2);
    Bytes want(48, 0);
    for (int p = 0; p < 2; ++p)
        for (int r = 1; r < 3; ++r)
            for (int c = 1; c < 3; ++c) {
                want[p * 24 + r * 8 + c * 2] = p ? 9 : 7;
                want[p * 24 + r * 8 + c * 2 + 1] = p ? 10 : 8;
            }
    EXPECT_EQ(block, want);
}

TEST(Spread, ColumnRepeatsEachRowsFirstPixel) {
    Bytes block = iota(12);  // 3 rows of 4 bytes, 1-byte pixels
    ownSpreadColumn(block.data(), 1, 1, 3, 2, 4, 12, 1, 1);
    EXPECT_EQ(block, (Bytes{0, 1, 2, 3, 4, 5, 5, 5, 8, 9, 9, 9}));
}

TEST(Spread, RowRepeatsTheFirstRow) {
    Bytes block = iota(12);
    ownSpreadRow(block.data(), 1, 0, 2, 3, 4, 12, 1, 1);
    EXPECT_EQ(block, (Bytes{0, 1, 2, 3, 4, 1, 2, 7, 8, 1, 2, 11}));
}

TEST(Spread, OneBitCarriesOnlySetBits) {
    Bytes block = {0x80, 0x00, 0x00, 0x01};  // 4 rows of 1 byte
    ownSpreadCorner(block.data(), 0, 0, 3, 2, 1, 4, 0, 1);
    EXPECT_EQ(block, (Bytes{0xE0, 0xE0, 0x00, 0x01}));
    Bytes clear = {0x40, 0x10, 0x00, 0x01};
    ownSpreadCorner(clear.data(), 0, 0, 3, 2, 1, 4, 0, 1);  // corner bit clear: nothing
    EXPECT_EQ(clear, (Bytes{0x40, 0x10, 0x00, 0x01}));
    Bytes cols = {0x40, 0x00, 0x41};
    ownSpreadColumn(cols.data(), 1, 0, 4, 3, 1, 3, 0, 1);
    EXPECT_EQ(cols, (Bytes{0x78, 0x00, 0x79}));
    Bytes rows = {0x5A, 0x81, 0x00};
    ownSpreadRow(rows.data(), 2, 0, 4, 3, 1, 3, 0, 1);  // bits 2..5 of 0x5A: 0x18
    EXPECT_EQ(rows, (Bytes{0x5A, 0x99, 0x18}));
}

}  // namespace
