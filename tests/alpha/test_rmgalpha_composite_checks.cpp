// The checks of rmgAlphaCompositeC and rmgAlphaComposite, in their order:
// each case makes one check fail while every earlier one passes, and sees
// exactly one report (RMG_StsBadArg, the function's name, the condition's
// text, module "rmgalpha") and a destination left as it was.
#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "alpha/alphatest.h"
#include "alpha/test_rmgalpha_composite.h"
#include "support/rmgtest.h"

namespace {

using alphatest::Image;
using alphatest::put;
using Bytes = std::vector<uint8_t>;

enum Operation { kConst, kImage };
const char *const kNames[] = {"rmgAlphaCompositeC", "rmgAlphaComposite"};

class CompositeChecks : public rmgtest::ErrorStateTest {
protected:
    // Good arguments for both operations: two 4-channel sources with their
    // alpha in channel 4, a 3-channel destination, a 1-channel alpha image
    // and a 2-channel destination alpha image with its alpha in channel 2.
    CompositeChecks()
        : a(4, 4, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 3, 5),
          b(4, 4, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 3, 5),
          d(3, 0, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 3, 5),
          alpha(1, 0, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 3, 5),
          alphaDst(2, 2, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 3, 5),
          untouched(d.bytes()),
          untouchedAlpha(alphaDst.bytes()) {}

    void run(Operation op) {
        rmgtest::reports().clear();
        rmgSetErrStatus(RMG_StsOk);
        if (op == kConst)
            rmgAlphaCompositeC(srcA, srcB, dst, compositeType, alphaA, alphaB, premulAlpha,
                               divideMode, nullptr);
        else
            rmgAlphaComposite(srcA, srcB, dst, compositeType, alphaImageA, alphaImageB,
                              alphaImageDst, premulAlpha, divideMode, nullptr);
    }

    // The call raises `text` once and writes nothing.
    void expectRefused(Operation op, const std::string &text) {
        SCOPED_TRACE(kNames[op]);
        run(op);
        compositetest::expectOneReport(RMG_StsBadArg, kNames[op], text);
        EXPECT_EQ(d.bytes(), untouched);
        EXPECT_EQ(alphaDst.bytes(), untouchedAlpha);
    }
    void expectRefusedByBoth(const std::string &text) {
        expectRefused(kConst, text);
        expectRefused(kImage, text);
    }
    void expectAccepted(Operation op) {
        SCOPED_TRACE(kNames[op]);
        run(op);
        EXPECT_TRUE(rmgtest::reports().empty());
        EXPECT_EQ(rmgGetErrStatus(), RMG_StsOk);
        untouched = d.bytes();
        untouchedAlpha = alphaDst.bytes();
    }

    Image a, b, d, alpha, alphaDst;
    Bytes untouched;
    Bytes untouchedAlpha;
    const RmgImage *srcA = a.image;
    const RmgImage *srcB = b.image;
    RmgImage *dst = d.image;
    int compositeType = RMG_COMPOSITE_OVER;
    int alphaA = -1;
    int alphaB = -1;
    const RmgImage *alphaImageA = nullptr;
    const RmgImage *alphaImageB = nullptr;
    RmgImage *alphaImageDst = nullptr;
    int premulAlpha = 0;
    int divideMode = 0;
};

TEST_F(CompositeChecks, GoodArgumentsPass) {
    expectAccepted(kConst);
    expectAccepted(kImage);
}

// Step 1: the image blocks of dstImage, srcImageA and srcImageB.

TEST_F(CompositeChecks, ImageBlockOfTheDestinationFirst) {
    dst = nullptr;
    srcA = nullptr;
    expectRefusedByBoth("dstImage==0");
}

TEST_F(CompositeChecks, ImageBlockOfSourceASecond) {
    srcA = nullptr;
    srcB = nullptr;
    expectRefusedByBoth("srcImageA==0");
    srcA = a.image;
    a.setRoi(0, 5, 0, 1, 1);
    expectRefusedByBoth("srcImageA->roi->xOffset >= srcImageA->width");
}

TEST_F(CompositeChecks, ImageBlockOfSourceBThird) {
    srcB = nullptr;
    expectRefusedByBoth("srcImageB==0");
    srcB = b.image;
    RmgTileInfo tiles{nullptr, nullptr, nullptr, 8, 8};
    b.image->tileInfo = &tiles;
    b.image->imageData = nullptr;
    // The header test refuses a tile record without call-back.
    expectRefusedByBoth("rmgBadImageHeader(srcImageB) != 0");
}

// Steps 2 to 4: the depths.

TEST_F(CompositeChecks, DestinationDepth) {
    // After the three blocks: a depth of this module's images only.
    for (unsigned int depth : {RMG_DEPTH_8S, RMG_DEPTH_16S, RMG_DEPTH_32S, RMG_DEPTH_1U}) {
        SCOPED_TRACE(depth);
        const int channels = depth == RMG_DEPTH_1U ? 1 : 3;
        Image other(channels, 0, depth, RMG_DATA_PIXEL, 4, 3, 5);
        Image otherA(channels, 0, depth, RMG_DATA_PIXEL, 4, 3, 5);
        Image otherB(channels, 0, depth, RMG_DATA_PIXEL, 4, 3, 5);
        dst = other.image;
        srcA = otherA.image;
        srcB = otherB.image;
        expectRefusedByBoth("dstImage->depth != 8 && dstImage->depth != 16");
        EXPECT_EQ(other.bytes(), Bytes(other.bytes().size(), 0xEE));
    }
}

TEST_F(CompositeChecks, DepthOfSourceA) {
    Image wideA(4, 4, RMG_DEPTH_16U, RMG_DATA_PIXEL, 4, 3, 5);
    Image wideB(4, 4, RMG_DEPTH_16U, RMG_DATA_PIXEL, 4, 3, 5);
    srcA = wideA.image;
    srcB = wideB.image;
    expectRefusedByBoth("srcImageA->depth != dstImage->depth");
}

TEST_F(CompositeChecks, DepthOfSourceB) {
    Image wideB(4, 4, RMG_DEPTH_16U, RMG_DATA_PIXEL, 4, 3, 5);
    srcB = wideB.image;
    expectRefusedByBoth("srcImageB->depth != dstImage->depth");
}

// rmgAlphaCompositeC, steps 5 and 6: a negative alpha needs the source's
// alpha channel.

TEST_F(CompositeChecks, ConstNegativeAlphaANeedsAnAlphaChannel) {
    a.image->alphaChannel = 0;
    b.image->alphaChannel = 0;
    expectRefused(kConst, "srcImageA->alphaChannel < 1");
    // A constant needs none.
    alphaA = 0;
    expectRefused(kConst, "srcImageB->alphaChannel < 1");
}

TEST_F(CompositeChecks, ConstNegativeAlphaBNeedsAnAlphaChannel) {
    b.image->alphaChannel = 0;
    expectRefused(kConst, "srcImageB->alphaChannel < 1");
    alphaB = 7;
    b.image->alphaChannel = 0;
    // Then the closing checks: B's four channels against three.
    expectRefused(kConst,
                  "(srcImageB->nChannels - (srcImageB->alphaChannel != 0)) != "
                  "(dstImage->nChannels - (dstImage->alphaChannel != 0))");
}

TEST_F(CompositeChecks, AnAlphaChannelBeyondTheChannelsIsAHeaderFault) {
    // "srcImageA->alphaChannel > srcImageA->nChannels" stands after the
    // image block, whose header test refuses such an image first.
    a.image->alphaChannel = 5;
    expectRefusedByBoth("rmgBadImageHeader(srcImageA) != 0");
    a.image->alphaChannel = 4;
    b.image->alphaChannel = 5;
    expectRefusedByBoth("rmgBadImageHeader(srcImageB) != 0");
}

// rmgAlphaComposite: the alpha sources.

TEST_F(CompositeChecks, ImageWithoutAlphaImageANeedsTheAlphaChannelOfA) {
    a.image->alphaChannel = 0;
    b.image->alphaChannel = 0;
    expectRefused(kImage, "srcImageA->alphaChannel < 1");
}

TEST_F(CompositeChecks, ImageBlockAndDepthOfAlphaImageA) {
    alphaImageA = alpha.image;
    alpha.setRoi(0, 0, 3, 1, 1);
    expectRefused(kImage, "alphaImageA->roi->yOffset >= alphaImageA->height");
    alpha.clearRoi();
    Image wide(1, 0, RMG_DEPTH_16U, RMG_DATA_PIXEL, 4, 3, 5);
    alphaImageA = wide.image;
    expectRefused(kImage, "alphaImageA->depth != dstImage->depth");
}

TEST_F(CompositeChecks, AlphaImageANeedsNoAlphaChannelAnywhere) {
    // With alphaImageA set and alphaImageB null, neither source needs one.
    a.image->alphaChannel = 0;
    b.image->alphaChannel = 0;
    Image a3(3, 0, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 3, 5);
    Image b3(3, 0, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 3, 5);
    srcA = a3.image;
    srcB = b3.image;
    alphaImageA = alpha.image;
    expectAccepted(kImage);
}

TEST_F(CompositeChecks, ImageBlockAndDepthOfAlphaImageB) {
    alphaImageB = alpha.image;
    alpha.setRoi(0, 5, 0, 1, 1);
    expectRefused(kImage, "alphaImageB->roi->xOffset >= alphaImageB->width");
    alpha.clearRoi();
    Image wide(1, 0, RMG_DEPTH_16U, RMG_DATA_PIXEL, 4, 3, 5);
    alphaImageB = wide.image;
    expectRefused(kImage, "alphaImageB->depth != dstImage->depth");
    // Alpha image of A first.
    alphaImageA = wide.image;
    expectRefused(kImage, "alphaImageA->depth != dstImage->depth");
}

TEST_F(CompositeChecks, ImageWithoutAnyAlphaImageNeedsTheAlphaChannelOfB) {
    b.image->alphaChannel = 0;
    expectRefused(kImage, "srcImageB->alphaChannel < 1");
    // With alphaImageB set, B's own channel isn't asked for.
    alphaImageB = alpha.image;
    b.image->alphaChannel = 0;
    Image b3(3, 0, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 3, 5);
    srcB = b3.image;
    expectAccepted(kImage);
}

TEST_F(CompositeChecks, ImageBlockAndChecksOfTheDestinationAlphaImage) {
    alphaImageDst = alphaDst.image;
    alphaDst.image->width = -1;
    expectRefused(kImage, "rmgBadImageHeader(alphaImageDst) != 0");
    alphaDst.image->width = 5;
    alphaDst.image->depth = RMG_DEPTH_16U;
    expectRefused(kImage, "alphaImageDst->depth != dstImage->depth");
    alphaDst.image->depth = RMG_DEPTH_8U;
    alphaDst.image->alphaChannel = 0;
    expectRefused(kImage, "alphaImageDst->alphaChannel < 1");
    // Its alpha channel needn't be its last channel, nor its channels
    // agree with anything.
    alphaDst.image->alphaChannel = 1;
    expectAccepted(kImage);
}

// Step 7: the COI rule, source A then source B.

TEST_F(CompositeChecks, CoiRuleOfSourceA) {
    a.setRoi(1, 0, 0, 3, 5);
    b.setRoi(1, 0, 0, 3, 5);
    expectRefusedByBoth("srcImageA->roi->coi > 0 && dstImage->roi == 0");
    d.setRoi(2, 0, 0, 3, 5);
    a.clearRoi();
    expectRefusedByBoth("dstImage->roi->coi > 0 && srcImageA->roi == 0");
    a.setRoi(0, 0, 0, 3, 5);
    expectRefusedByBoth("dstImage->roi->coi > 0 && srcImageA->roi->coi == 0");
}

TEST_F(CompositeChecks, CoiRuleOfSourceB) {
    b.setRoi(1, 0, 0, 3, 5);
    expectRefusedByBoth("srcImageB->roi->coi > 0 && dstImage->roi == 0");
    d.setRoi(2, 0, 0, 3, 5);
    a.setRoi(1, 0, 0, 3, 5);
    b.clearRoi();
    expectRefusedByBoth("dstImage->roi->coi > 0 && srcImageB->roi == 0");
    b.setRoi(0, 0, 0, 3, 5);
    expectRefusedByBoth("dstImage->roi->coi > 0 && srcImageB->roi->coi == 0");
}

// Steps 8 to 10: an alpha channel must be the last channel.

TEST_F(CompositeChecks, AlphaChannelOfSourceAIsTheLast) {
    a.image->alphaChannel = 2;
    b.image->alphaChannel = 1;
    expectRefusedByBoth(
        "srcImageA->alphaChannel > 0 && srcImageA->alphaChannel != srcImageA->nChannels");
}

TEST_F(CompositeChecks, AlphaChannelOfSourceBIsTheLast) {
    b.image->alphaChannel = 3;
    expectRefusedByBoth(
        "srcImageB->alphaChannel > 0 && srcImageB->alphaChannel != srcImageB->nChannels");
}

TEST_F(CompositeChecks, AlphaChannelOfTheDestinationIsTheLast) {
    Image d4(4, 1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 3, 5);
    dst = d4.image;
    expectRefusedByBoth(
        "dstImage->alphaChannel > 0 && dstImage->alphaChannel != dstImage->nChannels");
    EXPECT_EQ(d4.bytes(), Bytes(d4.bytes().size(), 0xEE));
}

// Step 11: colour channels without a destination COI.

TEST_F(CompositeChecks, ColourChannelsOfSourceA) {
    Image a4(4, 0, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 3, 5);
    srcA = a4.image;
    alphaA = 128;
    alphaImageA = alpha.image;
    expectRefusedByBoth(
        "(srcImageA->nChannels - (srcImageA->alphaChannel != 0)) != "
        "(dstImage->nChannels - (dstImage->alphaChannel != 0))");
    // With a destination COI the counts aren't compared.
    d.setRoi(1, 0, 0, 3, 5);
    a4.setRoi(2, 0, 0, 3, 5);
    b.setRoi(3, 0, 0, 3, 5);
    expectAccepted(kConst);
    expectAccepted(kImage);
    // A destination ROI with coi 0 compares them.
    d.roi.coi = 0;
    expectRefusedByBoth(
        "(srcImageA->nChannels - (srcImageA->alphaChannel != 0)) != "
        "(dstImage->nChannels - (dstImage->alphaChannel != 0))");
}

TEST_F(CompositeChecks, ColourChannelsOfSourceB) {
    Image b2(2, 2, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 3, 5);
    srcB = b2.image;
    expectRefusedByBoth(
        "(srcImageB->nChannels - (srcImageB->alphaChannel != 0)) != "
        "(dstImage->nChannels - (dstImage->alphaChannel != 0))");
}

TEST_F(CompositeChecks, ColourChannelsCountWithoutTheDestinationAlpha) {
    // Four channels with alpha in the destination: three colour channels.
    Image d4(4, 4, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 3, 5);
    dst = d4.image;
    expectAccepted(kConst);
    expectAccepted(kImage);
}

// Steps 12 to 14: the plain arguments, after every image test.

TEST_F(CompositeChecks, CompositeType) {
    const char *text =
        "compositeType != 0 && compositeType != 1 && compositeType != 2 && compositeType != 3 "
        "&& compositeType != 4 && compositeType != 5";
    compositeType = 6;
    premulAlpha = 2;
    expectRefusedByBoth(text);
    compositeType = -1;
    expectRefusedByBoth(text);
    premulAlpha = 0;
    for (compositeType = 0; compositeType <= 5; ++compositeType) {
        expectAccepted(kConst);
        expectAccepted(kImage);
    }
}

TEST_F(CompositeChecks, CompositeTypeIsRefusedAfterAllImageTests) {
    compositeType = 6;
    b.image->alphaChannel = 2;
    expectRefusedByBoth(
        "srcImageB->alphaChannel > 0 && srcImageB->alphaChannel != srcImageB->nChannels");
    b.image->alphaChannel = 4;
    srcB = nullptr;
    expectRefusedByBoth("srcImageB==0");
    srcB = b.image;
    alphaImageDst = alphaDst.image;
    alphaDst.image->alphaChannel = 0;
    expectRefused(kImage, "alphaImageDst->alphaChannel < 1");
}

TEST_F(CompositeChecks, PremulAlpha) {
    premulAlpha = 2;
    divideMode = -1;
    expectRefusedByBoth("premulAlpha != 0 && premulAlpha != 1");
    premulAlpha = -1;
    expectRefusedByBoth("premulAlpha != 0 && premulAlpha != 1");
}

TEST_F(CompositeChecks, DivideMode) {
    divideMode = 2;
    expectRefusedByBoth("divideMode != 0 && divideMode != 1");
    premulAlpha = 1;
    divideMode = 1;
    expectAccepted(kConst);
    expectAccepted(kImage);
}

TEST_F(CompositeChecks, TheEntriesForwardTheirArguments) {
    compositeType = 7;
    wrmgAlphaCompositeC(srcA, srcB, dst, compositeType, alphaA, alphaB, 0, 0, nullptr);
    ASSERT_EQ(rmgtest::reports().size(), 1u);
    EXPECT_EQ(rmgtest::reports()[0].funcName, "rmgAlphaCompositeC");
    wrmgAlphaComposite(srcA, srcB, dst, 0, nullptr, nullptr, nullptr, 0, 5, nullptr);
    ASSERT_EQ(rmgtest::reports().size(), 2u);
    EXPECT_EQ(rmgtest::reports()[1].funcName, "rmgAlphaComposite");
    EXPECT_EQ(rmgtest::reports()[1].context, "divideMode != 0 && divideMode != 1");
    // An earlier failure doesn't stop a good call.
    put(a, 0, 0, 0, 200);
    wrmgAlphaCompositeC(srcA, srcB, dst, 0, 255, 0, 1, 0, nullptr);
    EXPECT_EQ(rmgtest::reports().size(), 2u);
    EXPECT_EQ(d.bytes()[0], 200);
}

}  // namespace
