// The frame of the alpha composition module: scaled products, channel
// cursors, the common extent, the image block, the rule for channels of
// interest and the rounding of the float kernels.
#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <string>

#include "alpha/alphatest.h"
#include "alpha/rmgalpha.h"
#include "support/rmgtest.h"

namespace {

using alphatest::Image;

// ---------------------------------------------------------------------------
// Scaled products
// ---------------------------------------------------------------------------

TEST(AlphaMul, GivenValues) {
    EXPECT_EQ(ownMul255(255, 255), 255u);
    EXPECT_EQ(ownMul255(1, 254), 0u);
    EXPECT_EQ(ownMul255(128, 128), 64u);
    EXPECT_EQ(ownMul255(127, 128), 63u);
    EXPECT_EQ(ownMul65535(65535, 65535), 65535u);
    static_assert(ownMul255(255, 255) == 255, "usable in constant expressions");
}

TEST(AlphaMul, Mul255IsTheFloorOfTheQuotientForEveryPair) {
    for (uint32_t x = 0; x < 256; ++x)
        for (uint32_t y = 0; y < 256; ++y) ASSERT_EQ(ownMul255(x, y), x * y / 255) << x << " " << y;
}

TEST(AlphaMul, Mul65535IsTheFloorOfTheQuotient) {
    std::mt19937 rng(7);
    for (int i = 0; i < 1000000; ++i) {
        const uint32_t x = rng() & 0xFFFF;
        const uint32_t y = rng() & 0xFFFF;
        ASSERT_EQ(ownMul65535(x, y), static_cast<uint32_t>(uint64_t{x} * y / 65535)) << x << " " << y;
    }
    for (uint32_t x = 0; x < 65536; ++x) {
        ASSERT_EQ(ownMul65535(x, 65535), x);
        ASSERT_EQ(ownMul65535(x, 65534), static_cast<uint32_t>(uint64_t{x} * 65534 / 65535));
        ASSERT_EQ(ownMul65535(x, 1), x / 65535);
    }
}

// ---------------------------------------------------------------------------
// Channel cursors
// ---------------------------------------------------------------------------

struct CursorCase {
    int nChannels;
    unsigned int depth;
    int dataOrder;
    int align;
    int height;
    int width;
    int rowStep;  // in samples
};

ownChannelCursor cursorOf(const RmgImage &image, const RmgROI *roi, int channel) {
    ownChannelCursor c{};
    ownSetChannelCursor(&image, roi, channel, &c);
    return c;
}

RmgImage headerOf(const CursorCase &k) {
    RmgImage image{};
    image.nChannels = k.nChannels;
    image.depth = k.depth;
    image.dataOrder = k.dataOrder;
    image.align = k.align;
    image.height = k.height;
    image.width = k.width;
    image.widthStep = 12345;  // never read
    image.imageData = reinterpret_cast<unsigned char *>(0x1000);
    return image;
}

TEST(AlphaCursor, RowSizeOfEachDepthOrderAndAlign) {
    const CursorCase cases[] = {
        // 8u pixel order: 3 x 5 = 15 bytes, 3 x 3 = 9 bytes.
        {3, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 2, 5, 16},
        {3, RMG_DEPTH_8U, RMG_DATA_PIXEL, 8, 2, 5, 16},
        {3, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 2, 3, 12},
        {3, RMG_DEPTH_8U, RMG_DATA_PIXEL, 8, 2, 3, 16},
        {1, RMG_DEPTH_8S, RMG_DATA_PIXEL, 4, 2, 5, 8},
        {1, RMG_DEPTH_8S, RMG_DATA_PIXEL, 4, 2, 8, 8},
        // 16u: 18 bytes round to 20 (10 samples) or 24 (12 samples).
        {3, RMG_DEPTH_16U, RMG_DATA_PIXEL, 4, 2, 3, 10},
        {3, RMG_DEPTH_16U, RMG_DATA_PIXEL, 8, 2, 3, 12},
        {2, RMG_DEPTH_16S, RMG_DATA_PLANE, 4, 4, 5, 6},
        {2, RMG_DEPTH_16S, RMG_DATA_PLANE, 8, 4, 5, 8},
        // 1u: 13 bits are 2 bytes, 4 or 8 bytes after rounding, in bits.
        {1, RMG_DEPTH_1U, RMG_DATA_PIXEL, 4, 2, 13, 32},
        {1, RMG_DEPTH_1U, RMG_DATA_PIXEL, 8, 2, 13, 64},
        // 32s: 12 bytes, or 16 at align 8.
        {1, RMG_DEPTH_32S, RMG_DATA_PIXEL, 4, 2, 3, 3},
        {1, RMG_DEPTH_32S, RMG_DATA_PIXEL, 8, 2, 3, 4},
        // Plane order counts one channel per row.
        {3, RMG_DEPTH_8U, RMG_DATA_PLANE, 4, 3, 5, 8},
        {3, RMG_DEPTH_8U, RMG_DATA_PLANE, 8, 3, 9, 16},
    };
    for (const CursorCase &k : cases) {
        SCOPED_TRACE(testing::Message() << k.nChannels << " ch, depth " << k.depth << ", order "
                                        << k.dataOrder << ", align " << k.align << ", width "
                                        << k.width);
        const RmgImage image = headerOf(k);
        const ownChannelCursor c = cursorOf(image, nullptr, 1);
        EXPECT_EQ(c.data, image.imageData);
        EXPECT_EQ(c.depth, static_cast<int32_t>(k.depth));
        EXPECT_EQ(c.rowStep, k.rowStep);
        EXPECT_EQ(c.offset, 0);
        if (k.dataOrder == RMG_DATA_PLANE) {
            EXPECT_EQ(c.channelStep, k.height * k.rowStep);
            EXPECT_EQ(c.pixelStep, 1);
        } else {
            EXPECT_EQ(c.channelStep, 1);
            EXPECT_EQ(c.pixelStep, k.nChannels);
        }
    }
}

TEST(AlphaCursor, OffsetOfAChannelAtTheRoiOrigin) {
    // Pixel order, 3 channels of 16u, width 3, align 4: row of 10 samples.
    const RmgImage pixel = headerOf({3, RMG_DEPTH_16U, RMG_DATA_PIXEL, 4, 5, 3, 10});
    const RmgROI roi{0, 2, 3, 1, 1};
    EXPECT_EQ(cursorOf(pixel, nullptr, 2).offset, 1);
    EXPECT_EQ(cursorOf(pixel, &roi, 1).offset, 3 * 10 + 3 * 2);
    EXPECT_EQ(cursorOf(pixel, &roi, 3).offset, 2 + 3 * 10 + 3 * 2);
    // Plane order, 3 channels of 8u, height 4, width 5, align 8: 8 samples
    // a row, 32 a plane.
    const RmgImage plane = headerOf({3, RMG_DEPTH_8U, RMG_DATA_PLANE, 8, 4, 5, 8});
    EXPECT_EQ(cursorOf(plane, nullptr, 3).offset, 64);
    EXPECT_EQ(cursorOf(plane, &roi, 1).offset, 3 * 8 + 2);
    EXPECT_EQ(cursorOf(plane, &roi, 2).offset, 32 + 3 * 8 + 2);
    // The coi of the ROI doesn't count: the channel is the argument.
    const RmgROI withCoi{3, 2, 3, 1, 1};
    EXPECT_EQ(cursorOf(plane, &withCoi, 2).offset, 32 + 3 * 8 + 2);
}

TEST(AlphaCursor, HeaderArithmeticWrapsLikeWords) {
    // 0x40000000 pixels of 4 channels: the sample count wraps to 0.
    const RmgImage image = headerOf({4, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 2, 0x40000000, 0});
    const ownChannelCursor c = cursorOf(image, nullptr, 1);
    EXPECT_EQ(c.rowStep, 0);
    // Plane order: height times the row wraps too.
    const RmgImage plane = headerOf({2, RMG_DEPTH_8U, RMG_DATA_PLANE, 4, 0x10000, 0x10000, 0});
    const ownChannelCursor p = cursorOf(plane, nullptr, 2);
    EXPECT_EQ(p.rowStep, 0x10000);
    EXPECT_EQ(p.channelStep, 0);
    const RmgROI far{0, 0x7FFFFFFF, 0x7FFFFFFF, 1, 1};
    const ownChannelCursor f = cursorOf(plane, &far, 1);
    EXPECT_EQ(f.offset, static_cast<int32_t>(0xFFFF0000u + 0x7FFFFFFFu));
}

// ---------------------------------------------------------------------------
// The common extent
// ---------------------------------------------------------------------------

TEST(AlphaExtent, RoiOfTheSourceAgainstAWholeDestination) {
    Image src(1, 0, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 100, 100);
    Image dst(1, 0, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 20, 20);
    src.setRoi(0, 30, 40, 10, 10);
    int rows = 99999, columns = 99999;
    ownClipExtent(src.image, &rows, &columns);
    ownClipExtent(dst.image, &rows, &columns);
    EXPECT_EQ(rows, 10);
    EXPECT_EQ(columns, 10);
}

TEST(AlphaExtent, RoiIsCutAtTheImageEdge) {
    Image img(1, 0, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 50, 60);
    img.setRoi(0, 55, 45, 20, 30);
    int rows = 99999, columns = 99999;
    ownClipExtent(img.image, &rows, &columns);
    EXPECT_EQ(rows, 5);
    EXPECT_EQ(columns, 5);
    img.clearRoi();
    ownClipExtent(img.image, &rows, &columns);
    EXPECT_EQ(rows, 5);
    EXPECT_EQ(columns, 5);
    rows = columns = 99999;
    ownClipExtent(img.image, &rows, &columns);
    EXPECT_EQ(rows, 50);
    EXPECT_EQ(columns, 60);
}

// ---------------------------------------------------------------------------
// The image block
// ---------------------------------------------------------------------------

class AlphaBlockTest : public rmgtest::ErrorStateTest {
protected:
    // A good plain image with a ROI and a tiled twin, whose faults the
    // tests put in one at a time.
    AlphaBlockTest() : img(3, 0, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 6, 8) {
        img.setRoi(0, 1, 1, 2, 2);
        tiled = *img.image;
        tiled.imageData = nullptr;
        tiled.tileInfo = &tiles;
    }

    // The one report of a fault: RMG_StsBadArg, `funcName`, `text`, module
    // "rmgalpha", and the status set.
    static void expectReport(const char *funcName, const std::string &text) {
        EXPECT_EQ(rmgGetErrStatus(), RMG_StsBadArg);
        ASSERT_EQ(rmgtest::reports().size(), 1u);
        const rmgtest::Report &r = rmgtest::reports()[0];
        EXPECT_EQ(r.status, RMG_StsBadArg);
        EXPECT_EQ(r.funcName, funcName);
        EXPECT_EQ(r.context, text);
        EXPECT_EQ(r.fileName, "rmgalpha");
    }

    static void clearReports() {
        rmgtest::reports().clear();
        rmgSetErrStatus(RMG_StsOk);
    }

    // The block with the header mask given, and with the header test itself.
    void expectFault(const RmgImage *image, int mask, const char *name, const std::string &text) {
        clearReports();
        EXPECT_FALSE(ownCheckImageBlockMask(image, mask, name, "rmgAlphaComposite"));
        expectReport("rmgAlphaComposite", text);
    }
    void expectHeaderFault(const RmgImage *image, const char *name, const std::string &text) {
        clearReports();
        EXPECT_FALSE(ownCheckImageBlock(image, name, "rmgAlphaCompositeC"));
        expectReport("rmgAlphaCompositeC", text);
    }

    // The step's text for "dstImage" and, with the name put in, for
    // "alphaImageB"; the header mask is taken as good.
    void expectStep(const RmgImage *image, const std::string &dstText, const std::string &otherText) {
        expectFault(image, 0, "dstImage", dstText);
        expectFault(image, 0, "alphaImageB", otherText);
    }

    Image img;
    RmgTileInfo tiles{reinterpret_cast<RmgCallBack>(1), nullptr, nullptr, 8, 8};
    RmgImage tiled;
};

TEST_F(AlphaBlockTest, AGoodImagePassesSilently) {
    EXPECT_TRUE(ownCheckImageBlock(img.image, "srcImageA", "rmgAlphaComposite"));
    img.clearRoi();
    EXPECT_TRUE(ownCheckImageBlock(img.image, "srcImageA", "rmgAlphaComposite"));
    EXPECT_TRUE(ownCheckImageBlockMask(&tiled, 0, "srcImageA", "rmgAlphaComposite"));
    EXPECT_TRUE(rmgtest::reports().empty());
    EXPECT_EQ(rmgGetErrStatus(), RMG_StsOk);
}

TEST_F(AlphaBlockTest, Step01NullImage) {
    expectStep(nullptr, "dstImage==0", "alphaImageB==0");
    expectHeaderFault(nullptr, "srcImageB", "srcImageB==0");
}

TEST_F(AlphaBlockTest, Step02BadHeader) {
    expectFault(img.image, 0x0800, "dstImage", "rmgBadImageHeader(dstImage) != 0");
    expectFault(img.image, 1, "srcImageA", "rmgBadImageHeader(srcImageA) != 0");
    // Through the header test itself: a bad align, and every fault that
    // the header test covers too is reported as this step.
    img.image->align = 16;
    expectHeaderFault(img.image, "alphaImageDst", "rmgBadImageHeader(alphaImageDst) != 0");
    img.image->align = 4;
    img.image->width = 0;
    expectHeaderFault(img.image, "dstImage", "rmgBadImageHeader(dstImage) != 0");
}

TEST_F(AlphaBlockTest, Step03Width) {
    img.image->width = 0;
    img.image->height = -1;  // step 4 fails too: the first one counts
    expectStep(img.image, "dstImage->width <= 0", "alphaImageB->width <= 0");
}

TEST_F(AlphaBlockTest, Step04Height) {
    img.image->height = 0;
    expectStep(img.image, "dstImage->height <= 0", "alphaImageB->height <= 0");
}

TEST_F(AlphaBlockTest, Step05Channels) {
    img.image->nChannels = 0;
    expectStep(img.image, "dstImage->nChannels <= 0", "alphaImageB->nChannels <= 0");
}

TEST_F(AlphaBlockTest, Step06RoiWidth) {
    img.roi.width = 0;
    img.roi.height = 0;
    expectStep(img.image, "dstImage->roi->width <= 0", "alphaImageB->roi->width <= 0");
}

TEST_F(AlphaBlockTest, Step07RoiHeight) {
    img.roi.height = -3;
    expectStep(img.image, "dstImage->roi->height <= 0", "alphaImageB->roi->height <= 0");
}

TEST_F(AlphaBlockTest, Step08RoiXOffset) {
    img.roi.xOffset = -1;
    expectStep(img.image, "dstImage->roi->xOffset < 0", "alphaImageB->roi->xOffset < 0");
}

TEST_F(AlphaBlockTest, Step09RoiYOffset) {
    img.roi.yOffset = -1;
    expectStep(img.image, "dstImage->roi->yOffset < 0", "alphaImageB->roi->yOffset < 0");
}

TEST_F(AlphaBlockTest, Step10RoiXOffsetBeyondWidth) {
    img.roi.xOffset = 8;
    expectStep(img.image, "dstImage->roi->xOffset >= dstImage->width",
               "alphaImageB->roi->xOffset >= alphaImageB->width");
    // The header test lets this one pass, so the block finds it itself.
    expectHeaderFault(img.image, "srcImageA", "srcImageA->roi->xOffset >= srcImageA->width");
}

TEST_F(AlphaBlockTest, Step11RoiYOffsetBeyondHeight) {
    img.roi.yOffset = 6;
    expectStep(img.image, "dstImage->roi->yOffset >= dstImage->height",
               "alphaImageB->roi->yOffset >= alphaImageB->height");
    expectHeaderFault(img.image, "srcImageB", "srcImageB->roi->yOffset >= srcImageB->height");
}

TEST_F(AlphaBlockTest, Step12Coi) {
    img.roi.coi = -1;
    expectStep(img.image, "dstImage->roi->coi < 0", "alphaImageB->roi->coi < 0");
}

TEST_F(AlphaBlockTest, Step13CoiAboveChannels) {
    img.roi.coi = 4;
    expectStep(img.image, "dstImage->roi->coi > dstImage->nChannels",
               "alphaImageB->roi->coi > alphaImageB->nChannels");
}

TEST_F(AlphaBlockTest, Step14NeitherDataNorTiles) {
    img.image->imageData = nullptr;
    expectStep(img.image,
               "dstImage->imageData == ((void*)(0)) && dstImage->tileInfo == ((void*)(0))",
               "alphaImageB->imageData == ((void*)(0)) && alphaImageB->tileInfo == ((void*)(0))");
}

TEST_F(AlphaBlockTest, Step15DataAndTiles) {
    tiled.imageData = img.image->imageData;
    expectStep(&tiled,
               "dstImage->imageData != ((void*)(0)) && dstImage->tileInfo != ((void*)(0))",
               "alphaImageB->imageData != ((void*)(0)) && alphaImageB->tileInfo != ((void*)(0))");
}

TEST_F(AlphaBlockTest, Step16CallBack) {
    tiles.callBack = nullptr;
    tiles.width = 0;
    expectStep(&tiled, "dstImage->tileInfo->callBack==0", "alphaImageB->tileInfo->callBack==0");
}

TEST_F(AlphaBlockTest, Step17TileWidth) {
    tiles.width = -8;
    expectStep(&tiled, "dstImage->tileInfo->width <= 0", "alphaImageB->tileInfo->width <= 0");
}

TEST_F(AlphaBlockTest, Step18TileHeight) {
    tiles.height = 0;
    expectStep(&tiled, "dstImage->tileInfo->height <= 0", "alphaImageB->tileInfo->height <= 0");
}

// ---------------------------------------------------------------------------
// The rule for channels of interest
// ---------------------------------------------------------------------------

class AlphaCoiTest : public AlphaBlockTest {
protected:
    AlphaCoiTest() : src(3, 0, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 6, 8) {}

    void expectRule(const std::string &text) {
        clearReports();
        EXPECT_FALSE(ownCheckCoiRule(src.image, "srcImageB", img.image, "rmgAlphaCompositeC"));
        expectReport("rmgAlphaCompositeC", text);
    }
    void expectPass() {
        clearReports();
        EXPECT_TRUE(ownCheckCoiRule(src.image, "srcImageB", img.image, "rmgAlphaCompositeC"));
        EXPECT_TRUE(rmgtest::reports().empty());
    }

    Image src;
};

TEST_F(AlphaCoiTest, SourceCoiWithoutDestinationRoi) {
    img.clearRoi();
    src.setRoi(2, 0, 0, 2, 2);
    expectRule("srcImageB->roi->coi > 0 && dstImage->roi == 0");
    src.roi.coi = 0;
    expectPass();
    src.clearRoi();
    expectPass();
}

TEST_F(AlphaCoiTest, DestinationCoiWithoutSourceRoi) {
    img.roi.coi = 1;
    src.clearRoi();
    expectRule("dstImage->roi->coi > 0 && srcImageB->roi == 0");
}

TEST_F(AlphaCoiTest, DestinationCoiWithSourceCoiZero) {
    img.roi.coi = 3;
    src.setRoi(0, 0, 0, 2, 2);
    expectRule("dstImage->roi->coi > 0 && srcImageB->roi->coi == 0");
    src.roi.coi = 1;
    expectPass();
}

TEST_F(AlphaCoiTest, SourceCoiUnderDestinationRoiWithCoiZeroIsAccepted) {
    img.roi.coi = 0;
    src.setRoi(2, 0, 0, 2, 2);
    expectPass();
    EXPECT_EQ(rmgGetErrStatus(), RMG_StsOk);
}

// ---------------------------------------------------------------------------
// Rounding of the float kernels
// ---------------------------------------------------------------------------

TEST(AlphaRound, NearestWithTiesToEven) {
    EXPECT_EQ(ownRoundSample(0.0, 255), 0);
    EXPECT_EQ(ownRoundSample(0.49, 255), 0);
    EXPECT_EQ(ownRoundSample(0.5, 255), 0);
    EXPECT_EQ(ownRoundSample(1.5, 255), 2);
    EXPECT_EQ(ownRoundSample(2.5, 255), 2);
    EXPECT_EQ(ownRoundSample(2.5000001, 255), 3);
    EXPECT_EQ(ownRoundSample(254.7, 255), 255);
    EXPECT_EQ(ownRoundSample(65534.5, 65535), 65534);
    EXPECT_EQ(ownRoundSample(-0.2, 255), 0);
    EXPECT_EQ(ownRoundSample(-1e-7, 255), 0);
}

TEST(AlphaRound, AboveTheMaximumIsTheMaximum) {
    EXPECT_EQ(ownRoundSample(300.0, 255), 255);
    EXPECT_EQ(ownRoundSample(70000.0, 65535), 65535);
    EXPECT_EQ(ownRoundSample(393.0, 255), 255);
}

TEST(AlphaRound, TheBitPatternRuleOutsideItsRange) {
    // 2^23 - 1 has exponent 22, so its mantissa holds twice its distance
    // from 2^22: 0x7FFFFE, above any M.
    EXPECT_EQ(ownRoundSample(-1.0, 255), 255);
    EXPECT_EQ(ownRoundSample(-1.0, 0x7FFFFF), 0x7FFFFE);
    // Below 2^23 a float has halves: -0.4 + 2^23 is stored as 2^23 - 0.5.
    EXPECT_EQ(ownRoundSample(-0.4, 255), 255);
    EXPECT_EQ(ownRoundSample(-0.4, 0x7FFFFF), 0x7FFFFF);
    // 2^23 + 2^23 is 2^24: mantissa 0.
    EXPECT_EQ(ownRoundSample(8388608.0, 65535), 0);
    EXPECT_EQ(ownRoundSample(8388610.0, 65535), 1);
}

}  // namespace
