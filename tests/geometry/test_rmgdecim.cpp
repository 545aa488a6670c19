// rmgDecimate: the checks in order, the concrete cases of the operation,
// the tile walks with their call-back sequences and failures.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "geometry/rmgdecim.h"
#include "geometry/test_rmgdecim_model.h"
#include "rmg.h"
#include "support/rmgtest.h"

namespace {

using decimtest::Bytes;
using mirrortest::Call;
using mirrortest::Kind;

class DecimateTest : public rmgtest::ErrorStateTest {};

const Kind k8{1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4};
const Kind k8c3{3, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4};

struct Img {
    RmgImage *im;
    Img(const Kind &k, int h, int w, uint32_t seed) : im(mirrortest::makeImage(k, h, w, seed)) {}
    ~Img() { mirrortest::freeImage(im); }
    Bytes bytes() const { return mirrortest::bufferOf(im); }
    uint8_t &at(int r, int c) { return im->imageData[r * im->widthStep + c]; }
};

std::vector<std::string> contexts() {
    std::vector<std::string> out;
    for (const auto &r : rmgtest::reports()) {
        EXPECT_EQ(r.funcName, "rmgDecimate");
        EXPECT_EQ(r.fileName, "rmgdecim");
        out.push_back(r.context);
    }
    return out;
}

TEST_F(DecimateTest, BadHeadersStopAtTheFirstWithItsText) {
    Img dst(k8, 4, 4, 1);
    rmgDecimate(nullptr, dst.im, 1, 2, 1, 2, 0, nullptr);
    char *text = rmgBadHeaderText(rmgBadImageHeader(nullptr));
    ASSERT_EQ(contexts(), std::vector<std::string>{text});
    rmgFree(text);
    EXPECT_EQ(rmgtest::reports()[0].status, RMG_StsBadArg);

    rmgSetErrStatus(0);
    rmgtest::reports().clear();
    Img src(k8, 8, 8, 2);
    const Bytes before = dst.bytes();
    dst.im->width = 0;
    rmgDecimate(src.im, dst.im, 1, 2, 1, 2, 0, nullptr);
    text = rmgBadHeaderText(rmgBadImageHeader(dst.im));
    EXPECT_EQ(contexts(), std::vector<std::string>{text});
    rmgFree(text);
    dst.im->width = 4;
    EXPECT_EQ(dst.bytes(), before);
}

TEST_F(DecimateTest, ArgumentChecksAllRaiseInOrderAndNothingIsDone) {
    const Kind k16plane{1, RMG_DEPTH_16U, RMG_DATA_PLANE, 4};
    Img src(k8, 8, 8, 3), dst(k16plane, 4, 4, 4);
    dst.im->origin = RMG_ORIGIN_BL;
    const Bytes before = dst.bytes();
    rmgDecimate(src.im, dst.im, -1, -2, 0, 0, 7, nullptr);
    const std::vector<std::string> want = {
        "srcImage->depth != dstImage->depth",
        "srcImage->origin != dstImage->origin",
        "srcImage->dataOrder != dstImage->dataOrder",
        "interpolate != RMG_INTER_NN, RMG_INTER_LINEAR or RMG_INTER_CUBIC",
        "xU <= 0",
        "xL <= 0",
        "yU <= 0",
        "yL <= 0",
        "xU > xL"};
    EXPECT_EQ(contexts(), want);
    for (const auto &r : rmgtest::reports()) EXPECT_EQ(r.status, RMG_StsBadArg);
    EXPECT_EQ(dst.bytes(), before);

    rmgSetErrStatus(0);
    rmgtest::reports().clear();
    Img dst8(k8, 4, 4, 5);
    const Bytes before8 = dst8.bytes();
    rmgDecimate(src.im, dst8.im, 3, 2, 3, 2, 0, nullptr);
    EXPECT_EQ(contexts(), (std::vector<std::string>{"xU > xL", "yU > yL"}));
    EXPECT_EQ(dst8.bytes(), before8);
}

TEST_F(DecimateTest, AnEarlierFailureStopsTheCall) {
    Img src(k8, 8, 8, 6), dst(k8, 4, 4, 7);
    const Bytes before = dst.bytes();
    rmgSetErrStatus(RMG_StsError);
    rmgDecimate(src.im, dst.im, 1, 2, 1, 2, 0, nullptr);
    EXPECT_TRUE(rmgtest::reports().empty());
    EXPECT_EQ(dst.bytes(), before);
}

TEST_F(DecimateTest, SignedDepthsAreRefusedInWords) {
    for (unsigned depth : {RMG_DEPTH_8S, RMG_DEPTH_16S, RMG_DEPTH_32S}) {
        rmgSetErrStatus(0);
        rmgtest::reports().clear();
        const Kind k{1, depth, RMG_DATA_PIXEL, 4};
        Img src(k, 8, 8, 8), dst(k, 4, 4, 9);
        const Bytes before = dst.bytes();
        rmgDecimate(src.im, dst.im, 1, 2, 1, 2, 0, nullptr);
        EXPECT_EQ(contexts(), std::vector<std::string>{"srcImage->depth is wrong"});
        EXPECT_EQ(rmgGetErrStatus(), RMG_StsBadArg);
        EXPECT_EQ(dst.bytes(), before);
    }
}

TEST_F(DecimateTest, WholeRatiosSampleEvenRowsAndColumnsWithoutBiasWhateverIsAsked) {
    Img src(k8, 8, 8, 10);
    for (int r = 0; r < 8; ++r)
        for (int c = 0; c < 8; ++c) src.at(r, c) = uint8_t(r * 16 + c);
    for (int interp : {RMG_INTER_NN, RMG_INTER_LINEAR, RMG_INTER_CUBIC}) {
        Img dst(k8, 4, 4, 11);
        rmgDecimate(src.im, dst.im, 1, 2, 1, 2, interp, nullptr);
        for (int r = 0; r < 4; ++r)
            for (int c = 0; c < 4; ++c) EXPECT_EQ(dst.at(r, c), (2 * r) * 16 + 2 * c) << interp;
    }
    EXPECT_TRUE(rmgtest::reports().empty());
}

TEST_F(DecimateTest, ThreeHalvesNearestSamplesFromTheCentre) {
    // xStep 384 from position 128: 128, 512, 896, 1280, ... give columns
    // 0, 2, 3, 5, 6, 8.
    Img src(k8, 2, 9, 12);
    for (int c = 0; c < 9; ++c) src.at(0, c) = uint8_t(c * 10);
    Img dst(k8, 1, 8, 13);
    Bytes want = dst.bytes();
    const int cols[] = {0, 2, 3, 5, 6, 8};
    for (int i = 0; i < 6; ++i) want[size_t(i)] = uint8_t(cols[i] * 10);
    rmgDecimate(src.im, dst.im, 2, 3, 1, 1, RMG_INTER_NN, nullptr);
    EXPECT_EQ(dst.bytes(), want);
}

TEST_F(DecimateTest, ASourceOfThreeColumnsIsSampledNearest) {
    Img src(k8, 9, 3, 14);
    Img a(k8, 4, 2, 15), b(k8, 4, 2, 15);
    rmgDecimate(src.im, a.im, 2, 3, 2, 5, RMG_INTER_CUBIC, nullptr);
    rmgDecimate(src.im, b.im, 2, 3, 2, 5, RMG_INTER_NN, nullptr);
    EXPECT_EQ(a.bytes(), b.bytes());
    // Rows at 128, 768, 1408 (0, 3, 5), column 128 (0).
    EXPECT_EQ(a.at(1, 0), src.at(3, 0));
    EXPECT_EQ(a.at(2, 0), src.at(5, 0));
    EXPECT_EQ(a.bytes(), decimtest::modelDecimate(src.im, src.bytes(), b.im, b.bytes(), 2, 3, 2,
                                                  5, RMG_INTER_CUBIC));
}

TEST_F(DecimateTest, ASmallerDestinationTakesOnlyItsOwnRows) {
    Img src(k8, 20, 20, 16), dst(k8, 3, 6, 17);
    const Bytes before = dst.bytes();
    rmgDecimate(src.im, dst.im, 1, 2, 1, 2, RMG_INTER_NN, nullptr);
    Bytes want = before;
    for (int r = 0; r < 3; ++r)
        for (int c = 0; c < 6; ++c)
            want[size_t(r * dst.im->widthStep + c)] = src.at(2 * r, 2 * c);
    EXPECT_EQ(dst.bytes(), want);
}

TEST_F(DecimateTest, CubicGuardLowersTheColumnEndByTheRowStep) {
    // x 2/3 (step 384, not whole), y 1/3 (step 768, whole): 8 columns fit,
    // xEnd 3072 passes 11 * 256 and is lowered by 768 to 2304: columns at
    // 0, 383, ..., 1919 (6), where lowering by the column step would give 7.
    Img src(k8, 12, 12, 18), dst(k8, 4, 8, 19);
    const Bytes before = dst.bytes();
    rmgDecimate(src.im, dst.im, 2, 3, 1, 3, RMG_INTER_CUBIC, nullptr);
    const Bytes got = dst.bytes();
    EXPECT_EQ(got, decimtest::modelDecimate(src.im, src.bytes(), dst.im, before, 2, 3, 1, 3,
                                            RMG_INTER_CUBIC));
    for (int r = 0; r < 4; ++r) {
        EXPECT_EQ(got[size_t(r * dst.im->widthStep + 0)], src.at(3 * r, 0));
        for (int c = 6; c < 8; ++c)
            EXPECT_EQ(got[size_t(r * dst.im->widthStep + c)], before[size_t(r * dst.im->widthStep + c)])
                << r << "," << c;
    }
}

TEST_F(DecimateTest, CoiOfTheSourceGoesToTheCoiOfTheDestination) {
    Img src(k8c3, 8, 8, 20), dst(k8c3, 4, 4, 21);
    mirrortest::setRoi(src.im, 2, 0, 0, 8, 8);
    mirrortest::setRoi(dst.im, 3, 0, 0, 4, 4);
    const Bytes before = dst.bytes();
    rmgDecimate(src.im, dst.im, 1, 2, 1, 2, RMG_INTER_NN, nullptr);
    Bytes want = before;
    for (int r = 0; r < 4; ++r)
        for (int c = 0; c < 4; ++c)
            want[size_t(r * dst.im->widthStep + 3 * c + 2)] =
                src.im->imageData[2 * r * src.im->widthStep + 3 * 2 * c + 1];
    EXPECT_EQ(dst.bytes(), want);
}

TEST_F(DecimateTest, AStepThatLeavesItsWordDoesNothing) {
    // xL 2^24: (xL << 8) wraps to 0 in 32 bits.
    Img src(k8, 8, 8, 48), dst(k8, 4, 4, 49);
    mirrortest::setRoi(src.im, 0, 0, 0, 8, 8);
    const Bytes before = dst.bytes();
    rmgDecimate(src.im, dst.im, 1, 1 << 24, 1, 2, RMG_INTER_NN, nullptr);
    rmgDecimate(src.im, dst.im, 1, 2, 1, (1 << 23) + 1, RMG_INTER_LINEAR, nullptr);
    EXPECT_EQ(dst.bytes(), before);
    EXPECT_TRUE(rmgtest::reports().empty());
}

TEST_F(DecimateTest, TheEntryForwards) {
    Img src(k8, 8, 8, 22), a(k8, 4, 4, 23), b(k8, 4, 4, 23);
    wrmgDecimate(src.im, a.im, 2, 3, 3, 7, RMG_INTER_LINEAR, nullptr);
    rmgDecimate(src.im, b.im, 2, 3, 3, 7, RMG_INTER_LINEAR, nullptr);
    EXPECT_EQ(a.bytes(), b.bytes());
}

TEST_F(DecimateTest, AccessorsGiveCountsOriginsAndStrides) {
    Img im(k8c3, 10, 12, 24);
    EXPECT_EQ(ownDecimateChannelCount(im.im), 3);
    EXPECT_EQ(ownDecimateRows(im.im), 10);
    EXPECT_EQ(ownDecimateCols(im.im), 12);
    mirrortest::setRoi(im.im, 2, 5, 4, 6, 7);
    // 4 + 6 reaches the image's end: cut to 10 - 4; 5 + 7 likewise.
    EXPECT_EQ(ownDecimateRows(im.im), 6);
    EXPECT_EQ(ownDecimateCols(im.im), 7);
    EXPECT_EQ(ownDecimateChannelCount(im.im), 1);
    im.im->roi->height = 3;
    im.im->roi->width = 2;
    EXPECT_EQ(ownDecimateRows(im.im), 3);
    EXPECT_EQ(ownDecimateCols(im.im), 2);
    int ch, y, x;
    ownDecimateOrigin(&ch, &y, &x, im.im);
    EXPECT_EQ(ch, 1);
    EXPECT_EQ(y, 4);
    EXPECT_EQ(x, 5);
    im.im->nChannels = 1;  // coi 2 beyond the channels
    EXPECT_EQ(ownDecimateChannelCount(im.im), -1);
    im.im->nChannels = 3;
    EXPECT_EQ(ownDecimateFit(20, 100, 2, 3), 13);
    EXPECT_EQ(ownDecimateFit(20, 9, 2, 3), 9);
    EXPECT_EQ(ownDecimateElemBytes(17, RMG_DEPTH_1U), 2);
    EXPECT_EQ(ownDecimateElemBytes(17, RMG_DEPTH_8U), 17);
    EXPECT_EQ(ownDecimateElemBytes(17, RMG_DEPTH_16U), 34);
    EXPECT_EQ(ownDecimateElemBytes(17, RMG_DEPTH_32S), 0);
    int plane, row, pixel;
    ownDecimateStrides(im.im, &plane, &row, &pixel);
    EXPECT_EQ(plane, 1);
    EXPECT_EQ(row, im.im->widthStep);
    EXPECT_EQ(pixel, 3);

    const Kind k1a8{1, RMG_DEPTH_1U, RMG_DATA_PIXEL, 8}, k16p{2, RMG_DEPTH_16U, RMG_DATA_PLANE, 4};
    decimtest::Tiled bits4(mirrortest::Kind{1, RMG_DEPTH_1U, RMG_DATA_PIXEL, 4}, 8, 40, 40, 8, 1);
    decimtest::Tiled bits8(k1a8, 8, 40, 40, 8, 1);
    // 40 bits: 5 bytes, padded to 8 (align 4) or 8 (align 8); 72 bits: 9
    // bytes, to 12 or 16.
    EXPECT_EQ(ownDecimateTileRowElements(bits4.image), 64);
    EXPECT_EQ(ownDecimateTileRowElements(bits8.image), 64);
    bits4.tiles.width = 72;
    bits8.tiles.width = 72;
    EXPECT_EQ(ownDecimateTileRowElements(bits4.image), 96);
    EXPECT_EQ(ownDecimateTileRowElements(bits8.image), 128);
    decimtest::Tiled planes(k16p, 8, 16, 16, 8, 1);
    ownDecimateTileStrides(planes.image, &plane, &row, &pixel);
    EXPECT_EQ(plane, 16 * 8);
    EXPECT_EQ(row, 16);
    EXPECT_EQ(pixel, 1);
    Img p16(k16p, 5, 7, 25);
    ownDecimateStrides(p16.im, &plane, &row, &pixel);
    EXPECT_EQ(row, p16.im->widthStep >> 1);
    EXPECT_EQ(plane, row * 5);
    EXPECT_EQ(pixel, 1);
}

TEST_F(DecimateTest, AnInterpolationOutsideTheKernelTableIsRefusedBelowTheChecks) {
    Img src(k8, 8, 8, 26), dst(k8, 4, 4, 27);
    const Bytes before = dst.bytes();
    EXPECT_EQ(ownDecimate(src.im, dst.im, 2, 3, 2, 3, 3, nullptr), 0);
    EXPECT_EQ(contexts(), std::vector<std::string>{"interpolate is wrong"});
    EXPECT_EQ(dst.bytes(), before);
    // Depth 1 keeps the value: no refusal, and no centre bias since it is
    // not nearest.
    rmgSetErrStatus(0);
    rmgtest::reports().clear();
    const Kind k1{1, RMG_DEPTH_1U, RMG_DATA_PIXEL, 4};
    Img s1(k1, 8, 8, 28), d1(k1, 4, 4, 29);
    const Bytes before1 = d1.bytes();
    EXPECT_EQ(ownDecimate(s1.im, d1.im, 2, 3, 2, 3, RMG_INTER_LINEAR, nullptr), 1);
    EXPECT_TRUE(rmgtest::reports().empty());
    EXPECT_EQ(d1.bytes(), decimtest::modelDecimate(s1.im, s1.bytes(), d1.im, before1, 2, 3, 2, 3,
                                                   RMG_INTER_LINEAR));
}

// ---------------------------------------------------------------------------
// Tiles
// ---------------------------------------------------------------------------

TEST_F(DecimateTest, TiledDestinationMatchesPlainWithWriteAndReleasePerTile) {
    for (int interp : {RMG_INTER_NN, RMG_INTER_LINEAR, RMG_INTER_CUBIC}) {
        Img src(k8c3, 40, 44, 30);
        decimtest::Tiled tiled(k8c3, 20, 24, 8, 8, 31);
        Img plain(k8c3, 20, 24, 32);
        // The plain destination starts with the tiled one's pixels.
        for (int r = 0; r < 20; ++r)
            std::memcpy(plain.im->imageData + r * plain.im->widthStep,
                        tiled.grid->imageData + r * tiled.grid->widthStep, 24 * 3);
        mirrortest::setRoi(tiled.image, 0, 3, 5, 14, 17);
        mirrortest::setRoi(plain.im, 0, 3, 5, 14, 17);
        rmgDecimate(src.im, tiled.image, 2, 3, 2, 5, interp, nullptr);
        rmgDecimate(src.im, plain.im, 2, 3, 2, 5, interp, nullptr);
        for (int r = 0; r < 20; ++r)
            EXPECT_EQ(0, std::memcmp(plain.im->imageData + r * plain.im->widthStep,
                                     tiled.grid->imageData + r * tiled.grid->widthStep, 24 * 3))
                << interp << " row " << r;
        // Rows 5..18 and columns 3..19 touch tile rows 0..2 and columns 0..2.
        std::vector<Call> want;
        for (int ty = 0; ty < 3; ++ty)
            for (int tx = 0; tx < 3; ++tx) {
                want.push_back({tx, ty, RMG_TILE_WRITE});
                want.push_back({tx, ty, RMG_TILE_RELEASE});
            }
        EXPECT_EQ(tiled.calls, want) << interp;
    }
    EXPECT_TRUE(rmgtest::reports().empty());
}

TEST_F(DecimateTest, TilePointRestrictsTheWalkToOneTile) {
    Img src(k8, 40, 40, 33);
    decimtest::Tiled all(k8, 16, 16, 8, 8, 34), one(k8, 16, 16, 8, 8, 34);
    rmgDecimate(src.im, all.image, 2, 5, 2, 5, RMG_INTER_LINEAR, nullptr);
    const int tp[2] = {1, 0};
    rmgDecimate(src.im, one.image, 2, 5, 2, 5, RMG_INTER_LINEAR, tp);
    EXPECT_EQ(one.calls, (std::vector<Call>{{1, 0, RMG_TILE_WRITE}, {1, 0, RMG_TILE_RELEASE}}));
    // Tile (1, 0) as in the whole walk, the others untouched.
    Img fresh(k8, 16, 16, 34);
    for (int r = 0; r < 16; ++r)
        for (int c = 0; c < 16; ++c) {
            const bool in = r < 8 && c >= 8;
            const uint8_t got = one.grid->imageData[r * one.grid->widthStep + c];
            const uint8_t want = in ? all.grid->imageData[r * all.grid->widthStep + c]
                                    : fresh.im->imageData[r * fresh.im->widthStep + c];
            EXPECT_EQ(got, want) << r << "," << c;
        }
}

TEST_F(DecimateTest, TilePointOutsideTheRangeDoesNothing) {
    Img src(k8, 40, 40, 35);
    decimtest::Tiled dst(k8, 16, 16, 8, 8, 36);
    const Bytes before = mirrortest::bufferOf(dst.grid);
    for (auto tp : {std::vector<int>{2, 0}, std::vector<int>{0, 2}, std::vector<int>{-1, 0},
                    std::vector<int>{0, -1}}) {
        rmgDecimate(src.im, dst.image, 2, 5, 2, 5, RMG_INTER_LINEAR, tp.data());
    }
    EXPECT_TRUE(dst.calls.empty());
    EXPECT_EQ(mirrortest::bufferOf(dst.grid), before);
    EXPECT_TRUE(rmgtest::reports().empty());
    EXPECT_EQ(rmgGetErrStatus(), 0);
}

TEST_F(DecimateTest, ARefusedDestinationTileRaisesAndStops) {
    Img src(k8, 40, 40, 37);
    decimtest::Tiled dst(k8, 16, 16, 8, 8, 38);
    dst.failAtWrite = 1;
    rmgDecimate(src.im, dst.image, 2, 5, 2, 5, RMG_INTER_NN, nullptr);
    EXPECT_EQ(contexts(), std::vector<std::string>{"dstImage->tileInfo->callBack crash"});
    EXPECT_EQ(rmgGetErrStatus(), RMG_StsInternal);
    EXPECT_EQ(dst.calls, (std::vector<Call>{{0, 0, RMG_TILE_WRITE},
                                            {0, 0, RMG_TILE_RELEASE},
                                            {1, 0, RMG_TILE_WRITE}}));
}

TEST_F(DecimateTest, TiledNearestSourceMatchesPlainAndReadsEachTileOnce) {
    const Kind kinds[] = {k8c3, {2, RMG_DEPTH_16U, RMG_DATA_PLANE, 8}, {1, RMG_DEPTH_1U, RMG_DATA_PIXEL, 4}};
    for (const Kind &k : kinds) {
        decimtest::Tiled src(k, 30, 36, 8, 16, 40);
        RmgImage *plain = mirrortest::makeImage(k, 30, 36, 0);
        const int planes = k.dataOrder == RMG_DATA_PLANE ? k.nChannels : 1;
        for (int p = 0; p < planes; ++p)
            for (int r = 0; r < 30; ++r)
                std::memcpy(plain->imageData + (int64_t(p) * 30 + r) * plain->widthStep,
                            src.grid->imageData +
                                (int64_t(p) * src.grid->height + r) * src.grid->widthStep,
                            size_t(plain->widthStep));
        Img a(k, 12, 11, 41), b(k, 12, 11, 41);
        mirrortest::setRoi(src.image, 0, 2, 3, 27, 31);
        mirrortest::setRoi(plain, 0, 2, 3, 27, 31);
        rmgDecimate(src.image, a.im, 2, 5, 3, 7, RMG_INTER_NN, nullptr);
        rmgDecimate(plain, b.im, 2, 5, 3, 7, RMG_INTER_NN, nullptr);
        EXPECT_EQ(a.bytes(), b.bytes()) << k.depth;
        // Rows from 3*256+128 by 597 for 11 rows: tiles rows 0..1; columns
        // from 2*256+128 by 640 for 11 columns: tile columns 0..3.
        std::vector<Call> want;
        for (int ty = 0; ty < 2; ++ty)
            for (int tx = 0; tx < 4; ++tx) {
                want.push_back({tx, ty, RMG_TILE_READ});
                want.push_back({tx, ty, RMG_TILE_RELEASE});
            }
        EXPECT_EQ(src.calls, want) << k.depth;
        mirrortest::freeImage(plain);
    }
    EXPECT_TRUE(rmgtest::reports().empty());
}

TEST_F(DecimateTest, ARefusedSourceTileRaisesAndKeepsTheDestinationTile) {
    decimtest::Tiled dst(k8, 8, 8, 8, 8, 43);
    // Nearest over 16 x 16 at 1/2 reads tiles up to column 1; with a grid of
    // one tile column the second is refused.
    decimtest::Tiled narrow(k8, 16, 16, 8, 8, 42, 1, 2);
    rmgDecimate(narrow.image, dst.image, 1, 2, 1, 2, RMG_INTER_NN, nullptr);
    EXPECT_EQ(contexts(), std::vector<std::string>{"srcImage->tileInfo->callBack crash"});
    EXPECT_EQ(rmgGetErrStatus(), RMG_StsInternal);
    // The destination tile was asked for and never released.
    EXPECT_EQ(dst.calls, (std::vector<Call>{{0, 0, RMG_TILE_WRITE}}));
}

// The gathered block of tiles [0, rowEnd) x [0, colEnd) of a tiled image,
// as the model reads it: pixel rows of colEnd tiles, planes after each other.
Bytes gathered(const decimtest::Tiled &t, const Kind &k, int rowEnd, int colEnd, int64_t *row,
               int64_t *plane) {
    const int eb = k.depth == RMG_DEPTH_16U ? 2 : 1;
    const int planes = k.dataOrder == RMG_DATA_PLANE ? k.nChannels : 1;
    const int pix = k.dataOrder == RMG_DATA_PLANE ? 1 : k.nChannels;
    const int rows = rowEnd * t.tiles.height, cols = colEnd * t.tiles.width;
    Bytes out(size_t(planes) * rows * cols * pix * eb, 0);
    for (int p = 0; p < planes; ++p)
        for (int r = 0; r < rows && r < t.grid->height; ++r) {
            const int n = std::min(cols, t.grid->width) * pix * eb;
            std::memcpy(out.data() + (size_t(p) * rows + r) * cols * pix * eb,
                        t.grid->imageData + int64_t(p) * t.grid->height * t.grid->widthStep +
                            int64_t(r) * t.grid->widthStep,
                        size_t(n));
        }
    *row = int64_t(cols) * pix;
    *plane = k.dataOrder == RMG_DATA_PLANE ? int64_t(rows) * cols : 1;
    return out;
}

TEST_F(DecimateTest, GatheredSourceIsOneBlockOfItsTiles) {
    const Kind kinds[] = {k8c3, {2, RMG_DEPTH_16U, RMG_DATA_PLANE, 4}};
    for (const Kind &k : kinds)
        for (int interp : {RMG_INTER_LINEAR, RMG_INTER_CUBIC}) {
            // 40 x 40 in tiles of 8: 2/3 and 3/7 need rows up to 17 * 7 / 3
            // and columns to 11 * 3 / 2, with the interpolation's reach.
            decimtest::Tiled src(k, 40, 40, 8, 8, 44);
            src.refuseOutside = false;
            Img dst(k, 11, 17, 45);
            const Bytes before = dst.bytes();
            rmgDecimate(src.image, dst.im, 2, 3, 3, 7, interp, nullptr);
            const int yEnd = 597 * 11, xEnd = 384 * 17;
            const int rowEnd = (yEnd - 1 + interp * 256) / 2048 + 1;
            const int colEnd = (xEnd - 1 + interp * 256) / 2048 + 1;
            int64_t row, plane;
            const Bytes block = gathered(src, k, rowEnd, colEnd, &row, &plane);
            const decimtest::SrcData data{&block, row, plane};
            EXPECT_EQ(dst.bytes(), decimtest::modelDecimate(src.image, Bytes(), dst.im, before, 2,
                                                            3, 3, 7, interp, &data, false))
                << k.depth << " " << interp;
            // Two probes, then every tile of the block.
            std::vector<Call> want = {{colEnd - 1, 0, RMG_TILE_READ},
                                      {colEnd - 1, 0, RMG_TILE_RELEASE},
                                      {0, rowEnd - 1, RMG_TILE_READ},
                                      {0, rowEnd - 1, RMG_TILE_RELEASE}};
            for (int ty = 0; ty < rowEnd; ++ty)
                for (int tx = 0; tx < colEnd; ++tx) {
                    want.push_back({tx, ty, RMG_TILE_READ});
                    want.push_back({tx, ty, RMG_TILE_RELEASE});
                }
            EXPECT_EQ(src.calls, want);
        }
    EXPECT_TRUE(rmgtest::reports().empty());
}

TEST_F(DecimateTest, AMissingTileAtTheRightEdgeRepeatsTheLastGoodColumn) {
    // 16 x 16 in tiles of 8 (two by two): 3/4 across (step 341, 12 columns,
    // xEnd 4092) and 1/1 down reach tile column 2 and tile row 2, which the
    // call-back refuses: column 15 is repeated into column 16, row 15 into
    // row 16.
    decimtest::Tiled src(k8, 16, 16, 8, 8, 46);
    Img dst(k8, 16, 12, 47);
    const Bytes before = dst.bytes();
    rmgDecimate(src.image, dst.im, 3, 4, 1, 1, RMG_INTER_LINEAR, nullptr);
    Bytes block(24 * 24, 0);
    for (int r = 0; r < 17; ++r)
        for (int c = 0; c < 17; ++c)
            block[size_t(r * 24 + c)] =
                src.grid->imageData[std::min(r, 15) * src.grid->widthStep + std::min(c, 15)];
    const decimtest::SrcData data{&block, 24, 24 * 24};
    EXPECT_EQ(dst.bytes(), decimtest::modelDecimate(src.image, Bytes(), dst.im, before, 3, 4, 1,
                                                    1, RMG_INTER_LINEAR, &data, false));
    // The last column reads column 15 at 255 - f parts and column 16 (its copy).
    const int k = 341 * 11 - 1;
    EXPECT_EQ(dst.at(0, 11), decimtest::lin1(src.grid->imageData[k >> 8],
                                             src.grid->imageData[std::min((k >> 8) + 1, 15)],
                                             k & 255));
    EXPECT_EQ(src.calls[0], (Call{2, 0, RMG_TILE_READ}));
    EXPECT_EQ(src.calls[1], (Call{2, 0, RMG_TILE_RELEASE}));
    EXPECT_EQ(src.calls[2], (Call{0, 2, RMG_TILE_READ}));
    EXPECT_EQ(src.calls.size(), 4u + 8u);
    EXPECT_TRUE(rmgtest::reports().empty());
}

}  // namespace
