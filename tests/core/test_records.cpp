// The records' layout, as C and C++ see it, and the exported entries.
#include <gtest/gtest.h>

#include <cstddef>
#include <vector>

#include "rmg.h"
#include "support/rmgtest.h"

extern "C" size_t rmgTestCLayout(size_t *out, size_t capacity);
extern "C" int rmgTestCRoundTrip(void);

namespace {

std::vector<size_t> cppLayout() {
    return {offsetof(RmgImage, headerSize),   offsetof(RmgImage, headerVersion),
            offsetof(RmgImage, nChannels),    offsetof(RmgImage, alphaChannel),
            offsetof(RmgImage, depth),        offsetof(RmgImage, colorModel),
            offsetof(RmgImage, channelSeq),   offsetof(RmgImage, dataOrder),
            offsetof(RmgImage, origin),       offsetof(RmgImage, align),
            offsetof(RmgImage, height),       offsetof(RmgImage, width),
            offsetof(RmgImage, roi),          offsetof(RmgImage, maskRoi),
            offsetof(RmgImage, imageId),      offsetof(RmgImage, tileInfo),
            offsetof(RmgImage, imageSize),    offsetof(RmgImage, imageData),
            offsetof(RmgImage, widthStep),    offsetof(RmgImage, borderModes),
            offsetof(RmgImage, borderConsts), offsetof(RmgImage, dataOrigin),
            offsetof(RmgROI, coi),            offsetof(RmgROI, xOffset),
            offsetof(RmgROI, yOffset),        offsetof(RmgROI, height),
            offsetof(RmgROI, width),          offsetof(RmgTileInfo, callBack),
            offsetof(RmgTileInfo, id),        offsetof(RmgTileInfo, tileData),
            offsetof(RmgTileInfo, width),     offsetof(RmgTileInfo, height),
            sizeof(RmgImage),                 sizeof(RmgROI),
            sizeof(RmgTileInfo)};
}

TEST(Records, CAndCppAgree) {
    std::vector<size_t> c(64);
    const size_t n = rmgTestCLayout(c.data(), c.size());
    ASSERT_EQ(n, cppLayout().size() + 2);
    c.resize(n);
    EXPECT_EQ(c[n - 2], 6u);   // the six depths
    EXPECT_EQ(c[n - 1], 47u);  // the other constants
    c.resize(n - 2);
    EXPECT_EQ(c, cppLayout());
}

TEST(Records, BindingFieldOrder) {
    const size_t p = sizeof(void *);
    std::vector<size_t> want;
    if (p == 4) {
        // 28 words of 4 bytes.
        want = {0, 4, 8, 12, 16, 20, 24, 28, 32, 36, 40, 44, 48, 52, 56, 60, 64, 68, 72, 76, 92,
                108, 0, 4, 8, 12, 16, 0, 4, 8, 12, 16, 112, 20, 20};
    } else {
        // The same order with 8-byte pointers, each on its natural boundary.
        want = {0, 4, 8, 12, 16, 20, 24, 28, 32, 36, 40, 44, 48, 56, 64, 72, 80, 88, 96, 100, 116,
                136, 0, 4, 8, 12, 16, 0, 8, 16, 24, 28, 144, 20, 32};
    }
    EXPECT_EQ(cppLayout(), want);
}

TEST(Records, HeaderSizeIsTheRecordSize) {
    RmgImage *image = rmgCreateImageHeader(1, 0, RMG_DEPTH_8U, "GRAY", "GRAY", 0, 0, 4, 1, 1,
                                           nullptr, nullptr, nullptr);
    ASSERT_NE(image, nullptr);
    EXPECT_EQ(image->headerSize, static_cast<int>(sizeof(RmgImage)));
    if (sizeof(void *) == 4) {
        EXPECT_EQ(image->headerSize, 112);
    }
    rmgDeallocate(image, RMG_DEALLOC_ALL);
}

#if defined(__i386__) || defined(_M_IX86)
static_assert(sizeof(RmgImage) == 112, "the image header is 28 words");
#endif

class Entries : public rmgtest::ErrorStateTest {};

TEST_F(Entries, ForwardToTheInternalFunctions) {
    // From C: a ROI, a header, a fill of 0x41 read back, the release, and
    // the status (0 here).
    rmgError(RMG_StsOk, nullptr, nullptr, nullptr, 0);
    EXPECT_EQ(rmgTestCRoundTrip(), 0x41);

    RmgImage *a = wrmgCreateImageHeader(1, 0, RMG_DEPTH_16U, "GRAY", "GRAY", 0, 0, 8, 3, 3,
                                        nullptr, nullptr, nullptr);
    ASSERT_NE(a, nullptr);
    EXPECT_EQ(a->widthStep, 8);
    wrmgAllocateImage(a, 0x0102);
    EXPECT_EQ(a->imageData[0], 0x02);
    EXPECT_EQ(a->imageData[1], 0x01);
    wrmgDeallocate(a, RMG_DEALLOC_DATA);
    EXPECT_EQ(a->imageData, nullptr);
    wrmgDeallocate(a, RMG_DEALLOC_HEADER);
    EXPECT_EQ(wrmgCreateImageHeader(1, 0, 32u, "GRAY", "GRAY", 0, 0, 8, 3, 3, nullptr, nullptr,
                                    nullptr),
              nullptr);
    RmgROI *roi = wrmgCreateROI(1, 2, 3, 4, 5);
    ASSERT_NE(roi, nullptr);
    EXPECT_EQ(roi->width, 5);
    rmgDeleteROI(roi);
    rmgError(RMG_StsNoConv, nullptr, "", nullptr, 0);
    EXPECT_EQ(wrmgGetErrStatus(), RMG_StsNoConv);
    rmgError(RMG_StsOk, nullptr, nullptr, nullptr, 0);
}

}  // namespace
