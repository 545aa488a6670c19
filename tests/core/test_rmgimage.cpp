// Image records and their life: header creation and its checks, row and
// size arithmetic, allocation with its fill, the ordered release, and the
// aligned scratch allocator.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <vector>

#include "rmg.h"

namespace {

RmgImage *header(int nChannels, unsigned int depth, int dataOrder, int align, int height,
                 int width, RmgROI *roi = nullptr, RmgTileInfo *tileInfo = nullptr) {
    return rmgCreateImageHeader(nChannels, 0, depth, "RGB", "BGR", dataOrder, RMG_ORIGIN_TL,
                                align, height, width, roi, nullptr, tileInfo);
}

std::vector<unsigned char> bufferOf(const RmgImage *image) {
    return std::vector<unsigned char>(image->imageData, image->imageData + image->imageSize);
}

// A header filled in by hand, for rmgCheckNewHeader.
RmgImage goodRecord() {
    RmgImage r;
    std::memset(&r, 0, sizeof r);
    r.nChannels = 3;
    r.depth = RMG_DEPTH_8U;
    r.align = 4;
    r.height = 2;
    r.width = 2;
    return r;
}

TEST(CreateImageHeader, RowOfThreeBytePixelsRoundsToAlign) {
    RmgImage *a4 = header(3, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 1, 3);
    RmgImage *a8 = header(3, RMG_DEPTH_8U, RMG_DATA_PIXEL, 8, 1, 3);
    ASSERT_NE(a4, nullptr);
    ASSERT_NE(a8, nullptr);
    EXPECT_EQ(a4->widthStep, 12);
    EXPECT_EQ(a8->widthStep, 16);
    EXPECT_EQ(a4->imageSize, 12);
    EXPECT_EQ(a8->imageSize, 16);
    rmgDeallocate(a4, RMG_DEALLOC_ALL);
    rmgDeallocate(a8, RMG_DEALLOC_ALL);
}

TEST(CreateImageHeader, OneBitRowOfNinePixelsIsFourBytes) {
    RmgImage *image = rmgCreateImageHeader(1, 0, RMG_DEPTH_1U, "GRAY", "GRAY", RMG_DATA_PIXEL,
                                           RMG_ORIGIN_TL, 4, 3, 9, nullptr, nullptr, nullptr);
    ASSERT_NE(image, nullptr);
    EXPECT_EQ(image->widthStep, 4);
    EXPECT_EQ(image->imageSize, 12);
    rmgDeallocate(image, RMG_DEALLOC_ALL);
}

TEST(CreateImageHeader, PlaneImageSizeCountsEveryPlane) {
    RmgImage *image = header(3, RMG_DEPTH_16S, RMG_DATA_PLANE, 8, 2, 5);
    ASSERT_NE(image, nullptr);
    EXPECT_EQ(image->widthStep, 16);
    EXPECT_EQ(image->imageSize, 96);
    rmgDeallocate(image, RMG_DEALLOC_ALL);
}

TEST(CreateImageHeader, StoresEveryField) {
    RmgROI roi = {2, 1, 1, 2, 2};
    RmgTileInfo tiles = {nullptr, nullptr, nullptr, 8, 8};
    int id = 0;
    RmgImage *image = rmgCreateImageHeader(4, 4, RMG_DEPTH_16U, "RGBA", "BGRA", RMG_DATA_PLANE,
                                           RMG_ORIGIN_BL, 8, 7, 6, &roi, &id, &tiles);
    ASSERT_NE(image, nullptr);
    EXPECT_EQ(image->headerSize, static_cast<int>(sizeof(RmgImage)));
    EXPECT_EQ(image->headerVersion, 0);
    EXPECT_EQ(image->nChannels, 4);
    EXPECT_EQ(image->alphaChannel, 4);
    EXPECT_EQ(image->depth, RMG_DEPTH_16U);
    EXPECT_EQ(std::memcmp(image->colorModel, "RGBA", 4), 0);
    EXPECT_EQ(std::memcmp(image->channelSeq, "BGRA", 4), 0);
    EXPECT_EQ(image->dataOrder, RMG_DATA_PLANE);
    EXPECT_EQ(image->origin, RMG_ORIGIN_BL);
    EXPECT_EQ(image->align, 8);
    EXPECT_EQ(image->height, 7);
    EXPECT_EQ(image->width, 6);
    EXPECT_EQ(image->roi, &roi);
    EXPECT_EQ(image->maskRoi, nullptr);
    EXPECT_EQ(image->imageId, &id);
    EXPECT_EQ(image->tileInfo, &tiles);
    EXPECT_EQ(image->imageData, nullptr);
    EXPECT_EQ(image->dataOrigin, nullptr);
    // Computed over the whole image, tiled or not: 6 * 16 bits round to 16.
    EXPECT_EQ(image->widthStep, 16);
    EXPECT_EQ(image->imageSize, 16 * 7 * 4);
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(image->borderModes[i], RMG_BORDER_CONST);
        EXPECT_EQ(image->borderConsts[i], 0);
    }
    rmgDeallocate(image, RMG_DEALLOC_HEADER);
}

TEST(CreateImageHeader, ShortNameIsNotReadPastItsEnd) {
    RmgImage *image = rmgCreateImageHeader(1, 0, RMG_DEPTH_8U, "L", "", RMG_DATA_PIXEL,
                                           RMG_ORIGIN_TL, 4, 1, 1, nullptr, nullptr, nullptr);
    ASSERT_NE(image, nullptr);
    EXPECT_EQ(std::memcmp(image->colorModel, "L\0\0\0", 4), 0);
    EXPECT_EQ(std::memcmp(image->channelSeq, "\0\0\0\0", 4), 0);
    rmgDeallocate(image, RMG_DEALLOC_ALL);
}

TEST(CreateImageHeader, NullNameGivesNull) {
    EXPECT_EQ(rmgCreateImageHeader(1, 0, RMG_DEPTH_8U, nullptr, "GRAY", 0, 0, 4, 1, 1, nullptr,
                                   nullptr, nullptr),
              nullptr);
    EXPECT_EQ(rmgCreateImageHeader(1, 0, RMG_DEPTH_8U, "GRAY", nullptr, 0, 0, 4, 1, 1, nullptr,
                                   nullptr, nullptr),
              nullptr);
}

TEST(CreateImageHeader, BadFieldsGiveNullWithoutStatus) {
    const int before = rmgGetErrStatus();
    EXPECT_EQ(header(0, RMG_DEPTH_8U, 0, 4, 1, 1), nullptr);
    EXPECT_EQ(header(3, 32u, 0, 4, 1, 1), nullptr);
    EXPECT_EQ(header(3, RMG_DEPTH_8U, 2, 4, 1, 1), nullptr);
    EXPECT_EQ(header(3, RMG_DEPTH_8U, 0, 16, 1, 1), nullptr);
    EXPECT_EQ(header(3, RMG_DEPTH_8U, 0, 4, -1, 1), nullptr);
    EXPECT_EQ(header(3, RMG_DEPTH_8U, 0, 4, 1, -1), nullptr);
    EXPECT_EQ(rmgCreateImageHeader(3, 4, RMG_DEPTH_8U, "RGB", "BGR", 0, 0, 4, 1, 1, nullptr,
                                   nullptr, nullptr),
              nullptr);
    EXPECT_EQ(rmgCreateImageHeader(3, 0, RMG_DEPTH_8U, "RGB", "BGR", 0, 2, 4, 1, 1, nullptr,
                                   nullptr, nullptr),
              nullptr);
    EXPECT_EQ(rmgGetErrStatus(), before);
}

TEST(CreateImageHeader, ZeroHeightPassesCreation) {
    RmgImage *image = header(3, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 0, 5);
    ASSERT_NE(image, nullptr);
    EXPECT_EQ(image->height, 0);
    EXPECT_EQ(image->imageSize, 0);
    rmgDeallocate(image, RMG_DEALLOC_ALL);
}

TEST(CheckNewHeader, EachFieldHasItsBit) {
    // Each case changes a good record and expects exactly this mask.
    struct Case {
        const char *what;
        void (*change)(RmgImage &);
        int mask;
    };
    const Case cases[] = {
        {"good", [](RmgImage &) {}, 0},
        {"nChannels 0", [](RmgImage &r) { r.nChannels = 0; }, 0x001},
        {"depth 32", [](RmgImage &r) { r.depth = 32; }, 0x004},
        {"depth 8s", [](RmgImage &r) { r.depth = RMG_DEPTH_SIGN | 8u; }, 0},
        {"depth signed 1", [](RmgImage &r) { r.depth = RMG_DEPTH_SIGN | 1u; }, 0x004},
        {"alpha 4", [](RmgImage &r) { r.alphaChannel = 4; }, 0x010},
        {"alpha -1", [](RmgImage &r) { r.alphaChannel = -1; }, 0x010},
        {"dataOrder 2", [](RmgImage &r) { r.dataOrder = 2; }, 0x020},
        {"origin -1", [](RmgImage &r) { r.origin = -1; }, 0x040},
        {"align 2", [](RmgImage &r) { r.align = 2; }, 0x080},
        {"height -1", [](RmgImage &r) { r.height = -1; }, 0x100},
        {"width -7", [](RmgImage &r) { r.width = -7; }, 0x200},
        {"size 0 x 0",
         [](RmgImage &r) {
             r.width = 0;
             r.height = 0;
         },
         0},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.what);
        RmgImage r = goodRecord();
        c.change(r);
        EXPECT_EQ(rmgCheckNewHeader(&r), c.mask);
    }
}

TEST(CheckNewHeader, AlphaBitTwoNeedsNegativeChannels) {
    RmgImage r = goodRecord();
    r.nChannels = -3;
    r.alphaChannel = -2;  // above -3 and negative
    EXPECT_EQ(rmgCheckNewHeader(&r), 0x001 | 0x002 | 0x010);
    r.alphaChannel = -4;  // negative, not above
    EXPECT_EQ(rmgCheckNewHeader(&r), 0x001 | 0x010);
    r.alphaChannel = 0;
    EXPECT_EQ(rmgCheckNewHeader(&r), 0x001 | 0x010);
}

TEST(CheckNewHeader, EveryBitAtOnceLeavesBitEightClear) {
    RmgImage r = goodRecord();
    r.nChannels = -1;
    r.alphaChannel = 0;  // above nChannels but not negative: bit 2 stays clear
    r.depth = 3;
    r.dataOrder = 5;
    r.origin = 5;
    r.align = 0;
    r.height = -1;
    r.width = -1;
    EXPECT_EQ(rmgCheckNewHeader(&r), 0x3F5);
}

TEST(WidthStep, MatchesHeaderArithmetic) {
    EXPECT_EQ(rmgWidthStep(RMG_DATA_PIXEL, RMG_DEPTH_8U, 4, 3, 3), 12);
    EXPECT_EQ(rmgWidthStep(RMG_DATA_PIXEL, RMG_DEPTH_8U, 8, 3, 3), 16);
    EXPECT_EQ(rmgWidthStep(RMG_DATA_PIXEL, RMG_DEPTH_1U, 4, 1, 9), 4);
    EXPECT_EQ(rmgWidthStep(RMG_DATA_PIXEL, RMG_DEPTH_1U, 8, 1, 65), 16);
    EXPECT_EQ(rmgWidthStep(RMG_DATA_PLANE, RMG_DEPTH_16S, 8, 3, 5), 16);
    EXPECT_EQ(rmgWidthStep(RMG_DATA_PIXEL, RMG_DEPTH_32S, 4, 3, 5), 60);
    EXPECT_EQ(rmgWidthStep(RMG_DATA_PIXEL, RMG_DEPTH_16U, 8, 3, 0), 0);
    // Any non-zero order counts as plane: the channels don't multiply.
    EXPECT_EQ(rmgWidthStep(7, RMG_DEPTH_8U, 4, 3, 3), 4);
    // The sign bit doesn't count as a bit of the channel.
    EXPECT_EQ(rmgWidthStep(RMG_DATA_PIXEL, RMG_DEPTH_8S, 4, 1, 5), 8);
}

TEST(WidthStep, OverflowWrapsLikeA32BitWord) {
    // 0x10000000 columns of 32 bits: 2^33 bits wraps to 0.
    EXPECT_EQ(rmgWidthStep(RMG_DATA_PLANE, RMG_DEPTH_32S, 4, 1, 0x10000000), 0);
    // 0x4000000 columns of 16 bits: 2^30 bits, 2^27 bytes.
    EXPECT_EQ(rmgWidthStep(RMG_DATA_PLANE, RMG_DEPTH_16U, 4, 1, 0x4000000), 0x8000000);
    // 2^31 - 8 bits, rounded to 32 bits, is negative, and the shift is
    // arithmetic.
    EXPECT_EQ(rmgWidthStep(RMG_DATA_PLANE, RMG_DEPTH_8U, 4, 1, 0x0FFFFFFF), -0x10000000);
}

TEST(AllocateImage, MinusOneLeavesTheBufferUnfilled) {
    RmgImage *image = header(3, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 2, 3);
    ASSERT_NE(image, nullptr);
    rmgAllocateImage(image, -1);
    ASSERT_NE(image->imageData, nullptr);
    EXPECT_EQ(image->imageSize, 24);
    // A fill of -1 is no fill: the bytes stay what they were.
    std::memset(image->imageData, 0x5A, 24);
    rmgFillImage(image, -1, 8);
    EXPECT_EQ(bufferOf(image), std::vector<unsigned char>(24, 0x5A));
    rmgFillImage(image, -1, 32);
    EXPECT_EQ(bufferOf(image), std::vector<unsigned char>(24, 0x5A));
    rmgDeallocate(image, RMG_DEALLOC_ALL);
}

TEST(AllocateImage, ZeroClearsTheWholeBufferPaddingIncluded) {
    RmgImage *image = header(3, RMG_DEPTH_8U, RMG_DATA_PIXEL, 8, 3, 3);
    rmgAllocateImage(image, 0);
    ASSERT_NE(image->imageData, nullptr);
    EXPECT_EQ(image->imageSize, 48);
    EXPECT_EQ(bufferOf(image), std::vector<unsigned char>(48, 0));
    rmgDeallocate(image, RMG_DEALLOC_ALL);
}

TEST(AllocateImage, OneBitFillUsesTheLowestBit) {
    RmgImage *image = rmgCreateImageHeader(1, 0, RMG_DEPTH_1U, "GRAY", "GRAY", RMG_DATA_PIXEL,
                                           RMG_ORIGIN_TL, 4, 3, 9, nullptr, nullptr, nullptr);
    rmgAllocateImage(image, 2);
    EXPECT_EQ(bufferOf(image), std::vector<unsigned char>(12, 0x00));
    rmgDeallocate(image, RMG_DEALLOC_DATA);
    rmgAllocateImage(image, 3);
    EXPECT_EQ(bufferOf(image), std::vector<unsigned char>(12, 0xFF));
    rmgDeallocate(image, RMG_DEALLOC_ALL);
}

TEST(AllocateImage, PatternByBitCount) {
    RmgImage *u8 = header(3, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 2, 3);
    rmgAllocateImage(u8, 0x1234);
    EXPECT_EQ(bufferOf(u8), std::vector<unsigned char>(24, 0x34));

    RmgImage *u16 = header(3, RMG_DEPTH_16U, RMG_DATA_PIXEL, 4, 2, 3);
    rmgAllocateImage(u16, 0x1234);
    ASSERT_EQ(u16->imageSize, 40);
    for (int i = 0; i < u16->imageSize / 2; ++i) {
        uint16_t v;
        std::memcpy(&v, u16->imageData + 2 * i, 2);
        EXPECT_EQ(v, 0x1234) << i;
    }

    RmgImage *s32 = header(3, RMG_DEPTH_32S, RMG_DATA_PIXEL, 4, 2, 3);
    rmgAllocateImage(s32, 0x1234);
    ASSERT_EQ(s32->imageSize, 72);
    for (int i = 0; i < s32->imageSize / 4; ++i) {
        int32_t v;
        std::memcpy(&v, s32->imageData + 4 * i, 4);
        EXPECT_EQ(v, 0x1234) << i;
    }
    rmgDeallocate(u8, RMG_DEALLOC_ALL);
    rmgDeallocate(u16, RMG_DEALLOC_ALL);
    rmgDeallocate(s32, RMG_DEALLOC_ALL);
}

TEST(AllocateImage, SignedDepthsAreNotClamped) {
    RmgImage *s8 = header(1, RMG_DEPTH_8S, RMG_DATA_PIXEL, 4, 1, 4);
    rmgAllocateImage(s8, 300);  // low byte 0x2C, no clamp to 127
    EXPECT_EQ(bufferOf(s8), std::vector<unsigned char>(4, 0x2C));
    RmgImage *s16 = header(1, RMG_DEPTH_16S, RMG_DATA_PIXEL, 4, 1, 2);
    rmgAllocateImage(s16, -2);
    EXPECT_EQ(bufferOf(s16), (std::vector<unsigned char>{0xFE, 0xFF, 0xFE, 0xFF}));
    rmgDeallocate(s8, RMG_DEALLOC_ALL);
    rmgDeallocate(s16, RMG_DEALLOC_ALL);
}

TEST(AllocateImage, DataIsAlignedInsideTheAllocatedBlock) {
    for (int align : {4, 8}) {
        RmgImage *image = header(3, RMG_DEPTH_8U, RMG_DATA_PIXEL, align, 5, 7);
        rmgAllocateImage(image, 1);
        ASSERT_NE(image->dataOrigin, nullptr);
        EXPECT_EQ(reinterpret_cast<uintptr_t>(image->imageData) % align, 0u);
        EXPECT_GE(image->imageData, image->dataOrigin);
        EXPECT_LT(image->imageData, image->dataOrigin + align);
        rmgDeallocate(image, RMG_DEALLOC_ALL);
    }
}

TEST(AllocateImage, RecomputesStepFromThePresentFields) {
    RmgImage *image = header(3, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 2, 3);
    image->width = 5;
    image->widthStep = 999;
    rmgAllocateImage(image, 7);
    EXPECT_EQ(image->widthStep, 16);
    EXPECT_EQ(image->imageSize, 32);
    EXPECT_EQ(bufferOf(image), std::vector<unsigned char>(32, 7));
    rmgDeallocate(image, RMG_DEALLOC_ALL);
}

TEST(AllocateImage, BadHeaderGetsNoBuffer) {
    RmgImage *image = header(3, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 2, 3);
    image->align = 3;
    rmgAllocateImage(image, 0);
    EXPECT_EQ(image->imageData, nullptr);
    EXPECT_EQ(image->imageSize, 0);
    EXPECT_EQ(image->dataOrigin, nullptr);
    rmgDeallocate(image, RMG_DEALLOC_ALL);
}

TEST(AllocateImage, NullImageIsIgnored) { rmgAllocateImage(nullptr, 0); }

TEST(AllocateImage, TiledHeaderGetsABufferAnyway) {
    RmgTileInfo *tiles = rmgCreateTileInfo(nullptr, nullptr, 8, 8);
    RmgImage *image = header(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 8, 8, nullptr, tiles);
    rmgAllocateImage(image, 0);
    EXPECT_NE(image->imageData, nullptr);
    EXPECT_EQ(image->tileInfo, tiles);
    rmgDeallocate(image, RMG_DEALLOC_ALL);
}

TEST(AllocateImage, ZeroHeightGivesAnEmptyBuffer) {
    RmgImage *image = header(3, RMG_DEPTH_8U, RMG_DATA_PIXEL, 8, 0, 4);
    rmgAllocateImage(image, 0);
    EXPECT_NE(image->dataOrigin, nullptr);
    EXPECT_EQ(image->imageSize, 0);
    rmgDeallocate(image, RMG_DEALLOC_ALL);
}

TEST(Deallocate, RoiTwiceDoesNothingTheSecondTime) {
    RmgImage *image = header(3, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 2, 3,
                             rmgCreateROI(0, 0, 0, 1, 1));
    rmgDeallocate(image, RMG_DEALLOC_ROI);
    EXPECT_EQ(image->roi, nullptr);
    rmgDeallocate(image, RMG_DEALLOC_ROI);
    EXPECT_EQ(image->roi, nullptr);
    rmgDeallocate(image, RMG_DEALLOC_ALL);
}

TEST(Deallocate, DataThenAllocateGivesANewBuffer) {
    RmgImage *image = header(3, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 2, 3);
    rmgAllocateImage(image, 1);
    rmgDeallocate(image, RMG_DEALLOC_DATA);
    EXPECT_EQ(image->imageData, nullptr);
    EXPECT_EQ(image->dataOrigin, nullptr);
    EXPECT_EQ(image->imageSize, 24);
    EXPECT_EQ(image->widthStep, 12);
    rmgAllocateImage(image, 9);
    ASSERT_NE(image->imageData, nullptr);
    EXPECT_EQ(bufferOf(image), std::vector<unsigned char>(24, 9));
    rmgDeallocate(image, RMG_DEALLOC_ALL);
}

TEST(Deallocate, NullImageDoesNothing) { rmgDeallocate(nullptr, RMG_DEALLOC_ALL); }

TEST(Deallocate, ApplicationDataIsNeverFreed) {
    unsigned char pixels[12] = {};
    RmgImage *image = header(3, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 1, 3);
    image->imageData = pixels;
    rmgDeallocate(image, RMG_DEALLOC_DATA);
    EXPECT_EQ(image->imageData, pixels);
    rmgDeallocateImageData(image);
    EXPECT_EQ(image->imageData, nullptr);
    rmgDeallocate(image, RMG_DEALLOC_ALL);
}

TEST(Deallocate, MaskOfTheMaskStays) {
    RmgImage *image = header(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 1, 1);
    RmgImage *mask = header(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 1, 1);
    RmgImage *maskOfMask = header(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 1, 1);
    rmgAllocateImage(mask, 0);
    mask->maskRoi = maskOfMask;
    image->maskRoi = mask;
    rmgDeallocate(image, RMG_DEALLOC_ALL);
    // The mask and its data went; the mask's own mask is whole and usable.
    EXPECT_EQ(maskOfMask->headerSize, static_cast<int>(sizeof(RmgImage)));
    rmgAllocateImage(maskOfMask, 3);
    EXPECT_EQ(maskOfMask->imageData[0], 3);
    rmgDeallocate(maskOfMask, RMG_DEALLOC_ALL);
}

TEST(Deallocate, FlagsAreTakenOneByOne) {
    RmgROI *roi = rmgCreateROI(0, 0, 0, 1, 1);
    RmgTileInfo *tiles = rmgCreateTileInfo(nullptr, nullptr, 8, 8);
    RmgImage *image = header(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 1, 1, roi, tiles);
    rmgAllocateImage(image, 0);
    rmgDeallocate(image, RMG_DEALLOC_TILEINFO | 0x40);  // unknown flags ignored
    EXPECT_EQ(image->tileInfo, nullptr);
    EXPECT_EQ(image->roi, roi);
    EXPECT_NE(image->imageData, nullptr);
    rmgDeallocate(image, RMG_DEALLOC_DATA);
    EXPECT_EQ(image->roi, roi);
    EXPECT_EQ(image->imageData, nullptr);
    rmgDeallocate(image, RMG_DEALLOC_ALL);
}

TEST(DeallocateImageData, SkipsAHeaderThatFailsTheCheck) {
    RmgImage *image = header(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 1, 1);
    rmgAllocateImage(image, 0);
    unsigned char *data = image->imageData;
    image->align = 5;
    rmgDeallocateImageData(image);
    EXPECT_EQ(image->imageData, data);
    image->align = 4;
    rmgDeallocateImageData(image);
    EXPECT_EQ(image->imageData, nullptr);
    EXPECT_EQ(image->dataOrigin, nullptr);
    rmgDeallocateHeader(image);
    rmgDeallocateImageData(nullptr);
}

TEST(Roi, CreateSetDelete) {
    RmgROI *roi = rmgCreateROI(2, -3, 4, 5, 6);
    ASSERT_NE(roi, nullptr);
    EXPECT_EQ(roi->coi, 2);
    EXPECT_EQ(roi->xOffset, -3);
    EXPECT_EQ(roi->yOffset, 4);
    EXPECT_EQ(roi->height, 5);
    EXPECT_EQ(roi->width, 6);
    rmgSetROI(roi, 0, 1, 2, 3, 4);
    EXPECT_EQ(roi->coi, 0);
    EXPECT_EQ(roi->xOffset, 1);
    EXPECT_EQ(roi->yOffset, 2);
    EXPECT_EQ(roi->height, 3);
    EXPECT_EQ(roi->width, 4);
    rmgSetROI(nullptr, 0, 0, 0, 0, 0);
    rmgDeleteROI(roi);
    rmgDeleteROI(nullptr);
}

void noTile(const RmgImage *, int, int, int) {}

TEST(TileInfo, CreateSetDelete) {
    int id = 0;
    RmgTileInfo *tiles = rmgCreateTileInfo(noTile, &id, 16, 24);
    ASSERT_NE(tiles, nullptr);
    EXPECT_EQ(tiles->callBack, &noTile);
    EXPECT_EQ(tiles->id, &id);
    EXPECT_EQ(tiles->tileData, nullptr);
    EXPECT_EQ(tiles->width, 16);
    EXPECT_EQ(tiles->height, 24);
    unsigned char byte = 0;
    tiles->tileData = &byte;
    rmgSetTileInfo(tiles, nullptr, nullptr, 8, 8);
    EXPECT_EQ(tiles->tileData, nullptr);
    EXPECT_EQ(tiles->callBack, nullptr);
    rmgSetTileInfo(nullptr, noTile, nullptr, 8, 8);
    rmgDeleteTileInfo(tiles);
    rmgDeleteTileInfo(nullptr);
}

TEST(BorderMode, SidesByMask) {
    RmgImage *image = header(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 1, 1);
    rmgSetBorderMode(image, RMG_BORDER_WRAP, RMG_SIDE_TOP | RMG_SIDE_RIGHT, 77);
    EXPECT_EQ(image->borderModes[0], RMG_BORDER_WRAP);
    EXPECT_EQ(image->borderConsts[0], 77);
    EXPECT_EQ(image->borderModes[1], RMG_BORDER_CONST);
    EXPECT_EQ(image->borderConsts[1], 0);
    EXPECT_EQ(image->borderModes[2], RMG_BORDER_CONST);
    EXPECT_EQ(image->borderModes[3], RMG_BORDER_WRAP);
    EXPECT_EQ(image->borderConsts[3], 77);
    rmgSetBorderMode(image, RMG_BORDER_REFLECT, 0, 5);
    EXPECT_EQ(image->borderModes[1], RMG_BORDER_CONST);
    rmgDeallocate(image, RMG_DEALLOC_ALL);
}

TEST(AlignedAllocator, EightByteAlignedWithTheBlockInFront) {
    for (int n : {0, 1, 7, 8, 100, 4097}) {
        void *blocks[4] = {rmgAlloc8(n), rmgAlloc16(n), rmgAlloc32(n), rmgAlloc64(n)};
        const int widths[4] = {1, 2, 4, 8};
        for (int k = 0; k < 4; ++k) {
            ASSERT_NE(blocks[k], nullptr);
            EXPECT_EQ(reinterpret_cast<uintptr_t>(blocks[k]) % 8, 0u);
            // The raw block stands in the word in front, no more than 11
            // bytes before the result, and the elements fit in what remains.
            void *raw;
            std::memcpy(&raw, static_cast<void **>(blocks[k]) - 1, sizeof raw);
            const auto offset = static_cast<unsigned char *>(blocks[k]) -
                                static_cast<unsigned char *>(raw);
            EXPECT_GE(offset, static_cast<ptrdiff_t>(sizeof(void *)));
            EXPECT_LE(offset, static_cast<ptrdiff_t>(sizeof(void *) + 7));
            std::memset(blocks[k], 0xA5, static_cast<size_t>(n) * widths[k]);
            EXPECT_EQ(rmgFree(blocks[k]), nullptr);
        }
    }
    EXPECT_EQ(rmgFree(nullptr), nullptr);
}

}  // namespace
