// rmgZoom: the checks in order with their texts, the rectangles and the
// choice of interpolation on concrete cases, random plain calls against a
// per-element model, and tiled calls (each walk, tile sizes 8, 16, 24)
// against plain ones where positions are exact.
#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "geometry/rmgZoom.h"
#include "geometry/zoomtest.h"
#include "ops/copytest.h"
#include "ops/scetest.h"
#include "rmg.h"
#include "support/rmgtest.h"

namespace {

using scetest::Plain;
using scetest::Tiled;
using zoomtest::Ask;

class Zoom : public rmgtest::ErrorStateTest {};

void expectZoomReport(size_t index, int status, const std::string &context) {
    ASSERT_LT(index, rmgtest::reports().size());
    const rmgtest::Report &r = rmgtest::reports()[index];
    EXPECT_EQ(r.status, status);
    EXPECT_EQ(r.funcName, "rmgZoom");
    EXPECT_EQ(r.fileName, "rmgZoom");
    EXPECT_EQ(r.context, context);
}

// ---------------------------------------------------------------------------
// The model
// ---------------------------------------------------------------------------

// Element access of a plain image in the source region's coordinates.
struct RegionReader {
    const Plain &p;
    int x0, y0, firstCh;
    uint32_t at(int64_t x, int64_t y, int ch) const {
        return p.element(static_cast<int>(x0 + x), static_cast<int>(y0 + y), firstCh + ch);
    }
};

int feedable(int count, int srcCount, double scale) {
    if (zoomtest::roundEven((count - 1) * scale + 0.00001 - 0.5) > srcCount - 1) {
        const double t = srcCount / scale;
        count = static_cast<int>(zoomtest::roundEven(t + 0.00001 - 0.5));
        if (count == t) --count;
    }
    return count;
}

// The bytes the destination holds after a plain zoom with a good status.
template <typename T>
std::vector<uint8_t> modelZoom(const Plain &src, const Plain &dst, int xU, int xL, int yU, int yL,
                               int inter) {
    std::vector<uint8_t> want = dst.block;
    const RmgImage *s = src.image;
    const RmgImage *d = dst.image;
    if (s->depth == RMG_DEPTH_1U || s->width < 2 || s->height < 2) inter = RMG_INTER_NN;
    else if ((s->width < 4 || s->height < 4) && inter == RMG_INTER_CUBIC) inter = RMG_INTER_LINEAR;
    const RmgROI *sr = s->roi;
    const RmgROI *dr = d->roi;
    const int sx = sr ? sr->xOffset : 0, sy = sr ? sr->yOffset : 0;
    const int sCols = sr ? std::min(sr->width, s->width - sx) : s->width;
    const int sRows = sr ? std::min(sr->height, s->height - sy) : s->height;
    const int sFirst = sr && sr->coi ? sr->coi - 1 : 0;
    const int sCount = sr && sr->coi ? 1 : s->nChannels;
    const int dx = dr ? dr->xOffset : 0, dy = dr ? dr->yOffset : 0;
    const int dCols = dr ? std::min(dr->width, d->width - dx) : d->width;
    const int dRows = dr ? std::min(dr->height, d->height - dy) : d->height;
    const int dFirst = dr && dr->coi ? dr->coi - 1 : 0;
    const int dCount = dr ? (dr->coi ? 1 : d->nChannels) : s->nChannels;
    if (sFirst == 0 && dFirst == 0 ? sCount != dCount : (sCount != 1 || dCount != 1)) return want;
    Ask a{};
    a.xScale = static_cast<double>(xL) / xU;
    a.yScale = static_cast<double>(yL) / yU;
    a.cols = feedable(dCols, sCols, a.xScale);
    a.rows = feedable(dRows, sRows, a.yScale);
    a.lastCol = s->width - sx - 1;
    a.lastRow = s->height - sy - 1;
    a.xOffset = sx;
    a.yOffset = sy;
    a.width = s->width;
    a.height = s->height;
    const RegionReader reader{src, sx, sy, sFirst};
    const scetest::Layout layout = dst.layout();
    for (int r = 0; r < a.rows; ++r)
        for (int c = 0; c < a.cols; ++c)
            for (int ch = 0; ch < sCount; ++ch) {
                uint32_t v;
                if (inter == RMG_INTER_NN) v = zoomtest::modelNearest<T>(reader, a, c, r, ch);
                else if (inter == RMG_INTER_LINEAR) v = zoomtest::modelLinear<T>(reader, a, c, r, ch);
                else v = zoomtest::modelCubic<T>(reader, a, c, r, ch);
                scetest::putElement(want, dst.guard, layout, dx + c, dy + r, dFirst + ch, v);
            }
    return want;
}

std::vector<uint8_t> model(const Plain &src, const Plain &dst, int xU, int xL, int yU, int yL,
                           int inter) {
    if (src.image->depth == RMG_DEPTH_16U) return modelZoom<uint16_t>(src, dst, xU, xL, yU, yL, inter);
    return modelZoom<uint8_t>(src, dst, xU, xL, yU, yL, inter);
}

// ---------------------------------------------------------------------------
// Checks
// ---------------------------------------------------------------------------

TEST_F(Zoom, BadSourceHeaderIsReportedWithItsText) {
    Plain src(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 4, 4), dst(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 8, 8);
    src.image->width = 0;
    dst.image->align = 16;
    rmgZoom(src.image, dst.image, 2, 1, 2, 1, RMG_INTER_NN, nullptr);
    ASSERT_EQ(rmgtest::reports().size(), 1u);
    expectZoomReport(0, RMG_StsBadArg, copytest::headerText(0x0004));
    src.image->width = 4;
    rmgtest::reports().clear();
    rmgError(0, "", "", "", 0);
    rmgZoom(src.image, dst.image, 2, 1, 2, 1, RMG_INTER_NN, nullptr);
    ASSERT_EQ(rmgtest::reports().size(), 1u);
    expectZoomReport(0, RMG_StsBadArg, copytest::headerText(0x0800));
}

TEST_F(Zoom, NullImagesAreReportedOneAfterTheOther) {
    rmgZoom(nullptr, nullptr, 2, 1, 2, 1, RMG_INTER_NN, nullptr);
    ASSERT_EQ(rmgtest::reports().size(), 2u);
    expectZoomReport(0, RMG_StsBadArg, "srcImage==0");
    expectZoomReport(1, RMG_StsBadArg, "dstImage==0");
    EXPECT_EQ(rmgGetErrStatus(), RMG_StsBadArg);
}

TEST_F(Zoom, ArgumentTestsAllRunBeforeTheCallStops) {
    Plain src(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 4, 4);
    Plain dst(1, RMG_DEPTH_16U, RMG_DATA_PLANE, 4, 8, 8);
    const std::vector<uint8_t> before = dst.block;
    rmgZoom(src.image, dst.image, 0, 1, 0, 1, 7, nullptr);
    ASSERT_EQ(rmgtest::reports().size(), 6u);
    expectZoomReport(0, RMG_StsBadArg,
                     "interpolate != RMG_INTER_NN && interpolate != RMG_INTER_LINEAR && "
                     "interpolate != RMG_INTER_CUBIC");
    expectZoomReport(1, RMG_StsBadArg, "srcImage->depth != dstImage->depth");
    expectZoomReport(2, RMG_StsBadArg, "srcImage->dataOrder != dstImage->dataOrder");
    expectZoomReport(3, RMG_StsBadArg, "xU <= 0 || xL <= 0");
    expectZoomReport(4, RMG_StsBadArg, "yU <= 0 || yL <= 0");
    expectZoomReport(5, RMG_StsBadArg, "xU < xL || yU < yL");
    EXPECT_EQ(dst.block, before);
}

TEST_F(Zoom, ShrinkingIsRefused) {
    Plain src(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 4, 4), dst(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 8, 8);
    const std::vector<uint8_t> before = dst.block;
    rmgZoom(src.image, dst.image, 1, 2, 1, 1, RMG_INTER_NN, nullptr);
    ASSERT_EQ(rmgtest::reports().size(), 1u);
    expectZoomReport(0, RMG_StsBadArg, "xU < xL || yU < yL");
    EXPECT_EQ(dst.block, before);
}

TEST_F(Zoom, NegativeStatusOfAnEarlierCallStopsTheCallSilently) {
    Plain src(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 4, 4), dst(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 8, 8);
    rmgError(RMG_StsBadArg, "x", "earlier", "y", 1);
    rmgtest::reports().clear();
    const std::vector<uint8_t> before = dst.block;
    rmgZoom(src.image, dst.image, 2, 1, 2, 1, RMG_INTER_NN, nullptr);
    EXPECT_TRUE(rmgtest::reports().empty());
    EXPECT_EQ(dst.block, before);
}

TEST_F(Zoom, TiledDestinationWithoutCallBackIsReported) {
    Plain src(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 4, 4);
    Tiled dst(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 8, 8, 8, 8);
    // The header test finds a null call-back first (its own text).
    dst.info.callBack = nullptr;
    rmgZoom(src.image, dst.image, 2, 1, 2, 1, RMG_INTER_NN, nullptr);
    ASSERT_EQ(rmgtest::reports().size(), 1u);
    expectZoomReport(0, RMG_StsBadArg, copytest::headerText(0x1000));
}

// ---------------------------------------------------------------------------
// Concrete cases
// ---------------------------------------------------------------------------

TEST_F(Zoom, EqualFactorsWithNearestNeighbourCopyAsMuchAsFits) {
    Plain src(3, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 5, 7, 0, 3), dst(3, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 9, 4, 0, 4);
    std::vector<uint8_t> want = dst.block;
    const scetest::Layout l = dst.layout();
    // Rows: (9 - 1) * 1.0 passes the source's last row, so the count is
    // cut to 5 / 1.0 = 5, less 1 as that is exact: 4 rows.
    for (int y = 0; y < 4; ++y)
        for (int x = 0; x < 4; ++x)
            for (int ch = 0; ch < 3; ++ch) scetest::putElement(want, 0, l, x, y, ch, src.element(x, y, ch));
    rmgZoom(src.image, dst.image, 3, 3, 5, 5, RMG_INTER_NN, nullptr);
    EXPECT_EQ(dst.block, want);
    EXPECT_TRUE(rmgtest::reports().empty());
}

// The count of destination columns written into a row of 50 or 40.
int writtenColumns(int dstWidth) {
    Plain src(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 2, 10, 0, 5);
    Plain dst(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 1, dstWidth, 0, 6);
    for (auto &b : src.block) b = 0;
    for (auto &b : dst.block) b = 0xEE;
    rmgZoom(src.image, dst.image, 4, 1, 1, 1, RMG_INTER_NN, nullptr);
    int n = 0;
    while (n < dstWidth && dst.block[n] == 0) ++n;
    return n;
}

TEST_F(Zoom, DestinationIsCutToWhatTheSourceFeeds) {
    EXPECT_EQ(writtenColumns(50), 39);
    EXPECT_EQ(writtenColumns(40), 40);
}

TEST_F(Zoom, InterpolationFollowsTheWholeSourceImage) {
    // 3 rows: cubic runs as linear.
    Plain src(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 3, 6, 0, 11);
    Plain a(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 6, 12, 0, 12), b(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 6, 12, 0, 12);
    rmgZoom(src.image, a.image, 2, 1, 2, 1, RMG_INTER_CUBIC, nullptr);
    rmgZoom(src.image, b.image, 2, 1, 2, 1, RMG_INTER_LINEAR, nullptr);
    EXPECT_EQ(a.block, b.block);
    EXPECT_EQ(a.block, model(src, b, 2, 1, 2, 1, RMG_INTER_LINEAR));
    // 1 row: nearest neighbour.
    Plain row(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 1, 6, 0, 13);
    Plain c(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 2, 12, 0, 14), n(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 2, 12, 0, 14);
    rmgZoom(row.image, c.image, 2, 1, 2, 1, RMG_INTER_CUBIC, nullptr);
    rmgZoom(row.image, n.image, 2, 1, 2, 1, RMG_INTER_NN, nullptr);
    EXPECT_EQ(c.block, n.block);
    // 1-bit: always nearest neighbour.
    Plain bits(1, RMG_DEPTH_1U, RMG_DATA_PIXEL, 4, 6, 13, 0, 15);
    Plain d(1, RMG_DEPTH_1U, RMG_DATA_PIXEL, 4, 12, 26, 0, 16), e(1, RMG_DEPTH_1U, RMG_DATA_PIXEL, 4, 12, 26, 0, 16);
    rmgZoom(bits.image, d.image, 2, 1, 2, 1, RMG_INTER_LINEAR, nullptr);
    rmgZoom(bits.image, e.image, 2, 1, 2, 1, RMG_INTER_NN, nullptr);
    EXPECT_EQ(d.block, e.block);
    for (int y = 0; y < 12; ++y)
        for (int x = 0; x < 25; ++x) EXPECT_EQ(d.element(x, y, 0), bits.element(x / 2, y / 2, 0));
    EXPECT_TRUE(rmgtest::reports().empty());
}

TEST_F(Zoom, LinearReadsTheColumnRightOfTheRegion) {
    Plain src(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 4, 100, 0, 21);
    src.setRoi(0, 0, 0, 4, 10);
    Plain dst(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 8, 20, 0, 22);
    const std::vector<uint8_t> want = model(src, dst, 2, 1, 2, 1, RMG_INTER_LINEAR);
    rmgZoom(src.image, dst.image, 2, 1, 2, 1, RMG_INTER_LINEAR, nullptr);
    EXPECT_EQ(dst.block, want);
    // Column 19 lies halfway between source columns 9 and 10.
    const uint32_t v9 = src.element(9, 0, 0), v10 = src.element(10, 0, 0);
    EXPECT_EQ(dst.element(19, 0, 0), ((8192 * (v9 * 64) + 8192 * (v10 * 64)) >> 14) >> 6);
}

TEST_F(Zoom, SignedDepthPassesAndWritesNothing) {
    Plain src(1, RMG_DEPTH_8S, RMG_DATA_PIXEL, 4, 4, 4), dst(1, RMG_DEPTH_8S, RMG_DATA_PIXEL, 4, 8, 8);
    const std::vector<uint8_t> before = dst.block;
    rmgZoom(src.image, dst.image, 2, 1, 2, 1, RMG_INTER_LINEAR, nullptr);
    EXPECT_EQ(dst.block, before);
    EXPECT_TRUE(rmgtest::reports().empty());
    EXPECT_EQ(rmgGetErrStatus(), RMG_StsOk);
}

TEST_F(Zoom, ChannelOfInterestMovesOneChannelToAnother) {
    Plain src(3, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 4, 5, 0, 31), dst(3, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 8, 10, 0, 32);
    src.setRoi(2, 0, 0, 4, 5);
    dst.setRoi(3, 0, 0, 8, 10);
    std::vector<uint8_t> want = dst.block;
    const scetest::Layout l = dst.layout();
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 10; ++x) scetest::putElement(want, 0, l, x, y, 2, src.element(x / 2, y / 2, 1));
    rmgZoom(src.image, dst.image, 2, 1, 2, 1, RMG_INTER_NN, nullptr);
    EXPECT_EQ(dst.block, want);
}

TEST_F(Zoom, LinearOnConstant16BitLosesTheLowestBit) {
    Plain src(1, RMG_DEPTH_16U, RMG_DATA_PLANE, 4, 5, 5, 0, 1), dst(1, RMG_DEPTH_16U, RMG_DATA_PLANE, 4, 9, 9, 0, 2);
    for (auto &b : src.block) b = 0xFF;
    rmgZoom(src.image, dst.image, 2, 1, 2, 1, RMG_INTER_LINEAR, nullptr);
    for (int y = 0; y < 9; ++y)
        for (int x = 0; x < 9; ++x) EXPECT_EQ(dst.element(x, y, 0), 65534u);
}

// ---------------------------------------------------------------------------
// Random plain calls against the model
// ---------------------------------------------------------------------------

TEST_F(Zoom, RandomPlainCallsAgreeWithTheModel) {
    std::mt19937 rng(2024);
    const unsigned depths[] = {RMG_DEPTH_8U, RMG_DEPTH_16U, RMG_DEPTH_1U};
    const int factors[][2] = {{1, 1}, {2, 1}, {3, 2}, {7, 3}, {4, 1}};
    for (int n = 0; n < 400; ++n) {
        const unsigned depth = depths[rng() % 3];
        const int order = depth == RMG_DEPTH_1U ? RMG_DATA_PIXEL : static_cast<int>(rng() % 2);
        const int nCh = depth == RMG_DEPTH_1U ? 1 : 1 + static_cast<int>(rng() % 4);
        const int align = rng() % 2 ? 4 : 8;
        const int sw = 1 + static_cast<int>(rng() % 20), sh = 1 + static_cast<int>(rng() % 12);
        const int dw = 1 + static_cast<int>(rng() % 40), dh = 1 + static_cast<int>(rng() % 30);
        Plain src(nCh, depth, order, align, sh, sw, 0, static_cast<uint32_t>(n));
        Plain dst(nCh, depth, order, align, dh, dw, 0, static_cast<uint32_t>(n + 7777));
        if (rng() % 2)
            src.setRoi(rng() % 3 ? 0 : 1 + static_cast<int>(rng() % nCh), static_cast<int>(rng() % sw),
                       static_cast<int>(rng() % sh), 1 + static_cast<int>(rng() % sh),
                       1 + static_cast<int>(rng() % sw));
        if (rng() % 2)
            dst.setRoi(rng() % 3 ? 0 : 1 + static_cast<int>(rng() % nCh), static_cast<int>(rng() % dw),
                       static_cast<int>(rng() % dh), 1 + static_cast<int>(rng() % dh),
                       1 + static_cast<int>(rng() % dw));
        const auto &fx = factors[rng() % 5];
        const auto &fy = factors[rng() % 5];
        int inter = static_cast<int>(rng() % 3);
        // A cubic region that starts on the image's last two rows or columns
        // reads beyond the image (the nodes are kept inside only from the
        // image's start); those cases have a test of their own.
        const RmgROI &sr = src.roi;
        if (inter == RMG_INTER_CUBIC && src.image->roi != nullptr &&
            (sr.xOffset >= sw - 2 || sr.yOffset >= sh - 2))
            inter = RMG_INTER_LINEAR;
        // Linear on a region that starts on the last row or column blends
        // with a buffer never given a row (cleared); tested on its own.
        if (inter == RMG_INTER_LINEAR && src.image->roi != nullptr &&
            (sr.xOffset >= sw - 1 || sr.yOffset >= sh - 1))
            inter = RMG_INTER_NN;
        const std::vector<uint8_t> want = model(src, dst, fx[0], fx[1], fy[0], fy[1], inter);
        rmgZoom(src.image, dst.image, fx[0], fx[1], fy[0], fy[1], inter, nullptr);
        ASSERT_EQ(scetest::difference(dst.block, want), "") << "call " << n << " depth " << depth << " order " << order
                                   << " ch " << nCh << " src " << sw << "x" << sh << " dst " << dw
                                   << "x" << dh << " inter " << inter << " roi " << (src.image->roi ? src.roi.xOffset : -1) << "," << (src.image->roi ? src.roi.yOffset : -1) << " " << src.roi.width << "x" << src.roi.height << " coi " << src.roi.coi << " droi " << (dst.image->roi ? dst.roi.xOffset : -1) << "," << dst.roi.yOffset << " " << dst.roi.width << "x" << dst.roi.height << " f " << fx[0] << "/" << fx[1] << " " << fy[0] << "/" << fy[1];
        ASSERT_TRUE(rmgtest::reports().empty());
    }
}

// ---------------------------------------------------------------------------
// Tiled against plain
// ---------------------------------------------------------------------------

// Compares the destination region a plain zoom writes with the same
// elements of the tiled image.
template <typename Dst>
void expectSameRegion(const Plain &plain, const Dst &other, int cols, int rows, int nCh) {
    for (int y = 0; y < rows; ++y)
        for (int x = 0; x < cols; ++x)
            for (int ch = 0; ch < nCh; ++ch)
                ASSERT_EQ(plain.element(x, y, ch), other.element(x, y, ch)) << x << "," << y << "," << ch;
}

void fillTiledFrom(Tiled &t, const Plain &p) {
    // The tiles of the source hold the plain image's pixels.
    const scetest::Layout tl = t.tileLayout();
    const int tw = t.info.width, th = t.info.height;
    for (int ty = 0; ty * th < p.image->height; ++ty)
        for (int tx = 0; tx * tw < p.image->width; ++tx) {
            std::vector<uint8_t> bytes = t.freshTile(tx, ty);
            for (int y = 0; y < th && ty * th + y < p.image->height; ++y)
                for (int x = 0; x < tw && tx * tw + x < p.image->width; ++x)
                    for (int ch = 0; ch < p.image->nChannels; ++ch)
                        scetest::putElement(bytes, 0, tl, x, y, ch, p.element(tx * tw + x, ty * th + y, ch));
            t.tiles[{tx, ty}] = bytes;
        }
}

TEST_F(Zoom, TiledWalksAgreeWithPlainWherePositionsAreExact) {
    for (int tile : {8, 16, 24})
        for (int inter : {RMG_INTER_NN, RMG_INTER_LINEAR})
            for (unsigned depth : {RMG_DEPTH_8U, RMG_DEPTH_16U})
                for (int order : {RMG_DATA_PIXEL, RMG_DATA_PLANE}) {
                    SCOPED_TRACE(testing::Message() << "tile " << tile << " inter " << inter
                                                    << " depth " << depth << " order " << order);
                    const int nCh = 3, sw = 23, sh = 19, dw = 2 * sw, dh = 2 * sh;
                    Plain src(nCh, depth, order, 4, sh, sw, 0, 5);
                    Plain plain(nCh, depth, order, 4, dh, dw, 0, 6);
                    rmgZoom(src.image, plain.image, 2, 1, 2, 1, inter, nullptr);
                    const int cols = 2 * sw - 1, rows = 2 * sh - 1;
                    // Walk A: plain source, tiled destination.
                    Tiled a(nCh, depth, order, 4, dh, dw, tile, tile, 9);
                    rmgZoom(src.image, a.image, 2, 1, 2, 1, inter, nullptr);
                    expectSameRegion(plain, a, cols, rows, nCh);
                    // Walk B: tiled source, plain destination.
                    Tiled tsrc(nCh, depth, order, 4, sh, sw, tile, tile, 10);
                    fillTiledFrom(tsrc, src);
                    Plain b(nCh, depth, order, 4, dh, dw, 0, 6);
                    rmgZoom(tsrc.image, b.image, 2, 1, 2, 1, inter, nullptr);
                    expectSameRegion(plain, b, cols, rows, nCh);
                    // Walk C: both tiled.
                    Tiled c(nCh, depth, order, 4, dh, dw, tile, tile, 11);
                    rmgZoom(tsrc.image, c.image, 2, 1, 2, 1, inter, nullptr);
                    expectSameRegion(plain, c, cols, rows, nCh);
                    ASSERT_TRUE(rmgtest::reports().empty());
                    ASSERT_EQ(src.image->roi, nullptr);
                }
}

TEST_F(Zoom, TiledDestinationIsWrittenTileByTileInRowOrder) {
    Plain src(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 8, 12, 0, 5);
    Tiled dst(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 16, 24, 8, 8, 9);
    rmgZoom(src.image, dst.image, 2, 1, 2, 1, RMG_INTER_NN, nullptr);
    std::vector<scetest::TileCall> want;
    for (int y = 0; y < 2; ++y)
        for (int x = 0; x < 3; ++x) {
            want.push_back({x, y, RMG_TILE_WRITE});
            want.push_back({x, y, RMG_TILE_RELEASE});
        }
    EXPECT_EQ(dst.calls, want);
    // One tile by its number; the row is formed from the column number.
    dst.calls.clear();
    const int only[2] = {1, 0};
    rmgZoom(src.image, dst.image, 2, 1, 2, 1, RMG_INTER_NN, only);
    EXPECT_TRUE(dst.calls.empty());
    const int first[2] = {0, 1};
    rmgZoom(src.image, dst.image, 2, 1, 2, 1, RMG_INTER_NN, first);
    EXPECT_EQ(dst.calls, (std::vector<scetest::TileCall>{{0, 0, RMG_TILE_WRITE}, {0, 0, RMG_TILE_RELEASE}}));
    dst.calls.clear();
    const int outside[2] = {3, 0};
    rmgZoom(src.image, dst.image, 2, 1, 2, 1, RMG_INTER_NN, outside);
    EXPECT_TRUE(dst.calls.empty());
}

TEST_F(Zoom, AFailingDestinationTileIsReportedAndEndsTheWalk) {
    Plain src(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 8, 12, 0, 5);
    src.setRoi(0, 1, 1, 6, 10);
    RmgROI *const own = src.image->roi;
    Tiled dst(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 16, 24, 8, 8, 9);
    dst.failing.insert({1, 0});
    rmgZoom(src.image, dst.image, 2, 1, 2, 1, RMG_INTER_LINEAR, nullptr);
    ASSERT_EQ(rmgtest::reports().size(), 1u);
    expectZoomReport(0, RMG_StsError, "Error get tile to write");
    EXPECT_EQ(dst.calls, (std::vector<scetest::TileCall>{
                             {0, 0, RMG_TILE_WRITE}, {0, 0, RMG_TILE_RELEASE}, {1, 0, RMG_TILE_WRITE}}));
    // The source's own ROI is back (no header keeps a pointer into the call).
    EXPECT_EQ(src.image->roi, own);
}

TEST_F(Zoom, CubicTiledWalksStayInsideTheirBuffers) {
    for (int tile : {8, 16})
        for (unsigned depth : {RMG_DEPTH_8U, RMG_DEPTH_16U}) {
            Plain src(2, depth, RMG_DATA_PIXEL, 4, 13, 11, 0, 5);
            Tiled tsrc(2, depth, RMG_DATA_PIXEL, 4, 13, 11, tile, tile, 10);
            fillTiledFrom(tsrc, src);
            Tiled a(2, depth, RMG_DATA_PIXEL, 4, 30, 29, tile, tile, 9);
            Plain b(2, depth, RMG_DATA_PIXEL, 4, 30, 29, 0, 6);
            Tiled c(2, depth, RMG_DATA_PIXEL, 4, 30, 29, tile, tile, 11);
            rmgZoom(src.image, a.image, 7, 3, 7, 3, RMG_INTER_CUBIC, nullptr);
            rmgZoom(tsrc.image, b.image, 7, 3, 7, 3, RMG_INTER_CUBIC, nullptr);
            rmgZoom(tsrc.image, c.image, 7, 3, 7, 3, RMG_INTER_CUBIC, nullptr);
            EXPECT_TRUE(rmgtest::reports().empty());
        }
}

TEST_F(Zoom, CubicRegionOnTheLastRowsStaysInsideTheBuffers) {
    // Nodes at -1 from a region on the second-last row, and rows and
    // columns beyond the image's end from a region on the last ones: the
    // elements past the buffer read as 0, and the call is deterministic.
    for (int at = 2; at <= 5; ++at) {
        Plain src(2, RMG_DEPTH_16U, RMG_DATA_PIXEL, 4, 6, 6, 0, 3);
        src.setRoi(0, at, at, 6, 6);
        Plain a(2, RMG_DEPTH_16U, RMG_DATA_PIXEL, 4, 9, 9, 0, 4), b(2, RMG_DEPTH_16U, RMG_DATA_PIXEL, 4, 9, 9, 0, 4);
        for (int inter : {RMG_INTER_LINEAR, RMG_INTER_CUBIC}) {
            rmgZoom(src.image, a.image, 4, 1, 4, 1, inter, nullptr);
            rmgZoom(src.image, b.image, 4, 1, 4, 1, inter, nullptr);
            EXPECT_EQ(a.block, b.block);
        }
    }
    EXPECT_TRUE(rmgtest::reports().empty());
}

TEST_F(Zoom, ExportedEntryForwards) {
    Plain src(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 3, 3, 0, 1), dst(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 6, 6, 0, 2);
    const std::vector<uint8_t> want = model(src, dst, 2, 1, 2, 1, RMG_INTER_LINEAR);
    wrmgZoom(src.image, dst.image, 2, 1, 2, 1, RMG_INTER_LINEAR, nullptr);
    EXPECT_EQ(dst.block, want);
}

}  // namespace
