// Header validation: the bit mask, its texts, the comparison of two images,
// the assertion-style validator and the standard opening.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "core/rmgvalid.h"
#include "rmg.h"
#include "support/rmgtest.h"

namespace {

using rmgtest::reports;

class ValidTest : public rmgtest::ErrorStateTest {};

void noTile(const RmgImage *, int, int, int) {}

// A good 8-bit RGB image of 4 x 6 with data of the application.
struct GoodImage {
    unsigned char pixels[4 * 20] = {};
    RmgImage image{};
    RmgROI roi{0, 0, 0, 1, 1};
    RmgTileInfo tiles{noTile, nullptr, nullptr, 8, 8};
    GoodImage() {
        RmgImage *h = rmgCreateImageHeader(3, 0, RMG_DEPTH_8U, "RGB", "BGR", 0, 0, 4, 4, 6,
                                           nullptr, nullptr, nullptr);
        image = *h;
        rmgDeallocate(h, RMG_DEALLOC_HEADER);
        image.imageData = pixels;
    }
    void makeTiled() {
        image.imageData = nullptr;
        image.tileInfo = &tiles;
    }
};

std::string text(int n) {
    static const char *const words[] = {
        "Image header is null",
        "Image data and tileinfo is either null or not null",
        "Image size is invalid",
        "Image widthStep is invalid",
        "Image channel's number is less one",
        "For image depth 1U channel's number is not equal one",
        "Image depth is invalid",
        "Image alpha channel's number is less zero or is more channel's number",
        "Image data order is invalid",
        "Image origin is invalid",
        "Image align is invalid",
        "Callback is null",
        "Tile size is invalid",
        "COI is less zero or is more image channel's number",
        "ROI size is invalid",
        "ROI offset is invalid",
    };
    std::string t = words[n];
    t.resize(70, ' ');
    return t + "\n";
}

TEST_F(ValidTest, NullImageIsMaskOneWithItsText) {
    EXPECT_EQ(rmgBadImageHeader(nullptr), 1);
    char *t = rmgBadHeaderText(1);
    ASSERT_NE(t, nullptr);
    EXPECT_EQ(std::string(t), "Image header is null" + std::string(50, ' ') + "\n");
    EXPECT_EQ(std::strlen(t), 71u);
    rmgFree(t);
}

TEST_F(ValidTest, GoodImagesPass) {
    GoodImage g;
    EXPECT_EQ(rmgBadImageHeader(&g.image), 0);
    g.makeTiled();
    EXPECT_EQ(rmgBadImageHeader(&g.image), 0);
    // A tiled image is not asked for size or step.
    g.image.imageSize = 0;
    g.image.widthStep = -1;
    EXPECT_EQ(rmgBadImageHeader(&g.image), 0);
}

TEST_F(ValidTest, HeaderWithoutDataOrTilesIsBitTwoAlone) {
    RmgImage *h = rmgCreateImageHeader(3, 0, RMG_DEPTH_8U, "RGB", "BGR", 0, 0, 4, 4, 6, nullptr,
                                       nullptr, nullptr);
    EXPECT_EQ(rmgBadImageHeader(h), 0x0002);
    GoodImage g;
    g.image.tileInfo = &g.tiles;  // both set
    EXPECT_EQ(rmgBadImageHeader(&g.image), 0x0002);
    rmgDeallocate(h, RMG_DEALLOC_ALL);
}

TEST_F(ValidTest, EachTestHasItsBit) {
    // Each case starts from a good image (tiled, or with its ROI record
    // attached, where it says so), makes its change and expects exactly
    // this mask.
    enum Start { kData, kTiled, kRoi };
    struct Case {
        const char *what;
        Start start;
        void (*change)(GoodImage &);
        int mask;
    };
    const Case cases[] = {
        {"imageSize 0", kData, [](GoodImage &g) { g.image.imageSize = 0; }, 0x0004},
        {"height 0", kData, [](GoodImage &g) { g.image.height = 0; }, 0x0004},
        {"width -2", kData, [](GoodImage &g) { g.image.width = -2; }, 0x0004},
        // The size is tested for tiled images too.
        {"tiled height 0", kTiled, [](GoodImage &g) { g.image.height = 0; }, 0x0004},
        {"widthStep 0", kData, [](GoodImage &g) { g.image.widthStep = 0; }, 0x0010},
        {"nChannels 0", kData, [](GoodImage &g) { g.image.nChannels = 0; }, 0x0020},
        {"nChannels -1, alpha 0 above it", kData,
         [](GoodImage &g) {
             g.image.nChannels = -1;
             g.image.alphaChannel = 0;
         },
         0x0020 | 0x0100},
        {"1u with 3 channels", kData, [](GoodImage &g) { g.image.depth = RMG_DEPTH_1U; }, 0x0040},
        {"depth 32", kData, [](GoodImage &g) { g.image.depth = 32; }, 0x0080},
        {"alpha 4", kData, [](GoodImage &g) { g.image.alphaChannel = 4; }, 0x0100},
        {"alpha -1", kData, [](GoodImage &g) { g.image.alphaChannel = -1; }, 0x0100},
        {"dataOrder 2", kData, [](GoodImage &g) { g.image.dataOrder = 2; }, 0x0200},
        {"origin 2", kData, [](GoodImage &g) { g.image.origin = 2; }, 0x0400},
        {"align 16", kData, [](GoodImage &g) { g.image.align = 16; }, 0x0800},
        {"callBack null", kTiled, [](GoodImage &g) { g.tiles.callBack = nullptr; }, 0x1000},
        {"tile width 12", kTiled, [](GoodImage &g) { g.tiles.width = 12; }, 0x2000},
        {"tile height 0", kTiled, [](GoodImage &g) { g.tiles.height = 0; }, 0x2000},
        {"tile height -8", kTiled, [](GoodImage &g) { g.tiles.height = -8; }, 0x2000},
        {"coi 4", kRoi, [](GoodImage &g) { g.roi.coi = 4; }, 0x4000},
        {"coi -1", kRoi, [](GoodImage &g) { g.roi.coi = -1; }, 0x4000},
        {"coi 3", kRoi, [](GoodImage &g) { g.roi.coi = 3; }, 0},
        {"roi width 0", kRoi, [](GoodImage &g) { g.roi.width = 0; }, 0x8000},
        {"roi height -1", kRoi, [](GoodImage &g) { g.roi.height = -1; }, 0x8000},
        {"roi xOffset -1", kRoi, [](GoodImage &g) { g.roi.xOffset = -1; }, 0x0008},
        {"roi yOffset -1", kRoi, [](GoodImage &g) { g.roi.yOffset = -1; }, 0x0008},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.what);
        GoodImage g;
        if (c.start == kTiled) g.makeTiled();
        if (c.start == kRoi) g.image.roi = &g.roi;
        c.change(g);
        EXPECT_EQ(rmgBadImageHeader(&g.image), c.mask);
    }
}

TEST_F(ValidTest, RoiOutsideTheImagePasses) {
    GoodImage g;
    g.image.roi = &g.roi;
    g.roi = RmgROI{0, 100, 100, 5, 5};
    EXPECT_EQ(rmgBadImageHeader(&g.image), 0);
}

TEST_F(ValidTest, DataOriginIsNotTested) {
    GoodImage g;
    EXPECT_EQ(g.image.dataOrigin, nullptr);
    EXPECT_EQ(rmgBadImageHeader(&g.image), 0);
}

TEST_F(ValidTest, TextsFollowTheTableOrderWithOffsetLast) {
    GoodImage g;
    g.image.roi = &g.roi;
    g.roi.xOffset = -1;
    g.image.align = 16;
    g.image.origin = 7;
    const int mask = rmgBadImageHeader(&g.image);
    EXPECT_EQ(mask, 0x0008 | 0x0400 | 0x0800);
    char *t = rmgBadHeaderText(mask);
    EXPECT_EQ(std::string(t), text(9) + text(10) + text(15));
    rmgFree(t);
}

TEST_F(ValidTest, EveryTextIs70CharactersAndALineFeed) {
    const int masks[16] = {0x0001, 0x0002, 0x0004, 0x0010, 0x0020, 0x0040, 0x0080, 0x0100,
                           0x0200, 0x0400, 0x0800, 0x1000, 0x2000, 0x4000, 0x8000, 0x0008};
    std::string all;
    for (int i = 0; i < 16; ++i) {
        char *t = rmgBadHeaderText(masks[i]);
        EXPECT_EQ(std::string(t), text(i)) << i;
        rmgFree(t);
        all += text(i);
    }
    char *t = rmgBadHeaderText(0xFFFF);
    EXPECT_EQ(std::string(t), all);
    EXPECT_EQ(all.size(), 16u * 71u);
    rmgFree(t);
}

TEST_F(ValidTest, TwoTextsMake142Characters) {
    char *t = rmgBadHeaderText(0x0003);
    EXPECT_EQ(std::string(t), text(0) + text(1));
    EXPECT_EQ(std::strlen(t), 142u);
    rmgFree(t);
}

TEST_F(ValidTest, ConstantFallbacksAndSafeFree) {
    EXPECT_EQ(rmgBadHeaderText(0), nullptr);
    char *t = rmgBadHeaderText(0x10000);
    EXPECT_STREQ(t, "Bad status: unknown error");
    EXPECT_TRUE(rmg::isConstantHeaderText(t));
    EXPECT_EQ(rmgFree(t), nullptr);  // not a block: passed over
    EXPECT_EQ(rmgBadHeaderText(0x10000), t);
    // Bits beside known ones are ignored.
    char *u = rmgBadHeaderText(0x10001);
    EXPECT_EQ(std::string(u), text(0));
    rmgFree(u);
}

TEST_F(ValidTest, CheckCompatibleRaisesThreeTimesInOrder) {
    GoodImage a, b;
    b.image.depth = RMG_DEPTH_16U;
    b.image.dataOrder = RMG_DATA_PLANE;
    b.image.origin = RMG_ORIGIN_BL;
    b.image.nChannels = 1;  // channel counts are not compared
    rmgCheckCompatible(&a.image, &b.image, "rmgCopy", "rmgSCE", 77);
    ASSERT_EQ(reports().size(), 3u);
    EXPECT_EQ(reports()[0].context, "srcImage->depth != dstImage->depth");
    EXPECT_EQ(reports()[1].context, "srcImage->dataOrder != dstImage->dataOrder");
    EXPECT_EQ(reports()[2].context, "srcImage->origin != dstImage->origin");
    for (const auto &r : reports()) {
        EXPECT_EQ(r.status, RMG_StsBadArg);
        EXPECT_EQ(r.funcName, "rmgCopy");
        EXPECT_EQ(r.fileName, "rmgSCE");
        EXPECT_EQ(r.line, 77);
    }
    EXPECT_EQ(rmgGetErrStatus(), RMG_StsBadArg);
    reports().clear();
    GoodImage c;
    c.image.nChannels = 1;
    rmgCheckCompatible(&a.image, &c.image, "f", "m", 1);
    EXPECT_TRUE(reports().empty());
}

TEST_F(ValidTest, CheckImageStopsOnlyAtNull) {
    rmgCheckImage(nullptr, "f", "m", 3);
    ASSERT_EQ(reports().size(), 1u);
    EXPECT_EQ(reports()[0].context, "Image == NULL");
    reports().clear();

    GoodImage g;
    g.image.imageData = nullptr;
    g.image.nChannels = 0;
    g.image.height = 0;
    g.image.width = 0;
    g.image.roi = &g.roi;
    g.roi = RmgROI{1, 0, 0, 0, 0};  // coi 1 above nChannels 0
    rmgCheckImage(&g.image, "f", "m", 3);
    std::vector<std::string> got;
    for (const auto &r : reports()) got.push_back(r.context);
    EXPECT_EQ(got, (std::vector<std::string>{
                       "Image->imageData == NULL && Image->tileInfo == NULL",
                       "Image->nChannels < 1", "Image->height <= 0", "Image->width <= 0",
                       "Image->roi->coi < 0 || Image->roi->coi > Image->nChannels",
                       "Image->roi->height <= 0", "Image->roi->width <= 0"}));
    reports().clear();

    GoodImage t;
    t.image.tileInfo = &t.tiles;  // data and tiles both set
    t.tiles = RmgTileInfo{nullptr, nullptr, nullptr, 0, -8};
    rmgCheckImage(&t.image, "f", "m", 3);
    got.clear();
    for (const auto &r : reports()) got.push_back(r.context);
    EXPECT_EQ(got, (std::vector<std::string>{"Image->imageData != NULL && Image->tileInfo != NULL",
                                             "Image->tileInfo->callBack == NULL",
                                             "Image->tileInfo->width <= 0",
                                             "Image->tileInfo->height <= 0"}));
    reports().clear();
    // A tile width of 12 is no fault here: only sizes below 1 are.
    GoodImage u;
    u.makeTiled();
    u.tiles.width = 12;
    rmgCheckImage(&u.image, "f", "m", 3);
    EXPECT_TRUE(reports().empty());
}

TEST_F(ValidTest, OpeningReportsTheFirstBadImageAndStops) {
    GoodImage good, bad, worse;
    bad.image.align = 16;
    worse.image.depth = 32;
    EXPECT_TRUE(rmg::openImages("rmgSet", "rmgSCE", 10, {&good.image}));
    EXPECT_TRUE(reports().empty());
    EXPECT_FALSE(rmg::openImages("rmgCopy", "rmgSCE", 20, {&good.image, &bad.image, &worse.image}));
    ASSERT_EQ(reports().size(), 1u);
    EXPECT_EQ(reports()[0].status, RMG_StsBadArg);
    EXPECT_EQ(reports()[0].funcName, "rmgCopy");
    EXPECT_EQ(reports()[0].fileName, "rmgSCE");
    EXPECT_EQ(reports()[0].line, 20);
    EXPECT_EQ(reports()[0].context, text(10));
    EXPECT_FALSE(rmg::openImages("rmgSet", "rmgSCE", 30, {nullptr}));
    EXPECT_EQ(reports()[1].context, text(0));
}

TEST_F(ValidTest, ZeroHeightHeaderFailsTheFirstOperation) {
    RmgImage *h = rmgCreateImageHeader(3, 0, RMG_DEPTH_8U, "RGB", "BGR", 0, 0, 4, 0, 6, nullptr,
                                       nullptr, nullptr);
    ASSERT_NE(h, nullptr);
    rmgAllocateImage(h, 0);
    EXPECT_EQ(rmgBadImageHeader(h), 0x0004);
    EXPECT_FALSE(rmg::openImages("rmgSet", "rmgSCE", 1, {h}));
    ASSERT_EQ(reports().size(), 1u);
    EXPECT_EQ(reports()[0].context, text(2));
    rmgDeallocate(h, RMG_DEALLOC_ALL);
}

}  // namespace
