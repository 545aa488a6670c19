// rmgAddS and rmgSubtractS: the opening checks and their texts, the entries,
// and the behaviour at the edges, with concrete values.
#include <gtest/gtest.h>

#include <climits>
#include <cstdint>
#include <cstring>
#include <vector>

#include "ops/addstest.h"
#include "ops/ownaddsub.h"
#include "support/rmgforms.h"
#include "support/rmgnoaccess.h"
#include "support/rmgtest.h"

namespace {

using addstest::Image;
using addstest::Kind;
using addstest::expectOneReport;

class AddSTest : public rmgtest::ErrorStateTest {};

// Sets every element of channel-interleaved 8u data to `v`.
void set8u(Image &image, uint8_t v) { std::memset(image.data, v, static_cast<size_t>(image.image->imageSize)); }

// ---------------------------------------------------------------------------
// Checks
// ---------------------------------------------------------------------------

TEST_F(AddSTest, NullSourceIsReportedWithTheHeaderText) {
    Image dst(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 2, 2, 1);
    const std::vector<uint8_t> before = dst.bytes();
    rmgAddS(nullptr, dst.image, 1, nullptr);
    expectOneReport("rmgAddS", "rmgadds",
                    "Image header is null                                                  \n");
    EXPECT_EQ(dst.bytes(), before);
}

TEST_F(AddSTest, BadDestinationIsReportedAfterAGoodSource) {
    Image src(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 2, 2, 1);
    Image dst(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 2, 2, 2);
    dst.image->align = 16;
    rmgSubtractS(src.image, dst.image, 1, 0, nullptr);
    expectOneReport("rmgSubtractS", "rmgsubs",
                    "Image align is invalid                                                \n");
    dst.image->align = 4;
}

TEST_F(AddSTest, TheSourceIsTestedFirst) {
    Image src(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 2, 2, 1);
    Image dst(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 2, 2, 2);
    src.setRoi(0, -1, 0, 1, 1);
    dst.image->align = 16;
    rmgAddS(src.image, dst.image, 1, nullptr);
    expectOneReport("rmgAddS", "rmgadds",
                    "ROI offset is invalid                                                 \n");
    dst.image->align = 4;
}

TEST_F(AddSTest, DepthsDiffer) {
    Image src(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 2, 2, 1);
    Image dst(1, RMG_DEPTH_16U, RMG_DATA_PLANE, 4, 2, 2, 2);
    const std::vector<uint8_t> before = dst.bytes();
    rmgAddS(src.image, dst.image, 1, nullptr);
    // The first fault ends the call: the order is not reported as well.
    expectOneReport("rmgAddS", "rmgadds", "(srcImage->depth != dstImage->depth)");
    EXPECT_EQ(dst.bytes(), before);
}

TEST_F(AddSTest, DataOrdersDiffer) {
    Image src(3, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 2, 2, 1);
    Image dst(3, RMG_DEPTH_8U, RMG_DATA_PLANE, 4, 2, 2, 2);
    rmgSubtractS(src.image, dst.image, 1, 1, nullptr);
    expectOneReport("rmgSubtractS", "rmgsubs", "(srcImage->dataOrder != dstImage->dataOrder)");
}

TEST_F(AddSTest, ChannelCountsDiffer) {
    Image src(3, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 2, 2, 1);
    Image dst(4, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 2, 2, 2);
    rmgAddS(src.image, dst.image, 1, nullptr);
    expectOneReport("rmgAddS", "rmgadds", "(nChSrc != nChDst)");
    // A coi makes a region one channel: against a one-channel image it
    // passes, against a three-channel image without ROI it does not.
    rmgtest::reports().clear();
    src.setRoi(2, 0, 0, 2, 2);
    rmgAddS(src.image, dst.image, 1, nullptr);
    expectOneReport("rmgAddS", "rmgadds", "(nChSrc != nChDst)");
}

TEST_F(AddSTest, AnEarlierFailureDoesNotStopTheOperation) {
    rmgSetErrStatus(RMG_StsNoMem);
    Image src(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 1, 4, 1);
    Image dst(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 1, 4, 2);
    set8u(src, 7);
    rmgAddS(src.image, dst.image, 3, nullptr);
    EXPECT_EQ(dst.bytes(), std::vector<uint8_t>(4, 10));
    EXPECT_TRUE(rmgtest::reports().empty());
    EXPECT_EQ(rmgGetErrStatus(), RMG_StsNoMem);
}

TEST_F(AddSTest, EntriesForwardToTheOperations) {
    Image src(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 1, 4, 1);
    Image dst(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 1, 4, 2);
    set8u(src, 100);
    wrmgAddS(src.image, dst.image, 10, nullptr);
    EXPECT_EQ(dst.bytes(), std::vector<uint8_t>(4, 110));
    wrmgSubtractS(src.image, dst.image, 10, 0, nullptr);
    EXPECT_EQ(dst.bytes(), std::vector<uint8_t>(4, 90));
    wrmgSubtractS(src.image, dst.image, 250, 1, nullptr);
    EXPECT_EQ(dst.bytes(), std::vector<uint8_t>(4, 150));
    wrmgAddS(nullptr, dst.image, 10, nullptr);
    EXPECT_EQ(wrmgGetErrStatus(), RMG_StsBadArg);
    EXPECT_EQ(rmgtest::reports().size(), 1u);
}

// The call of the overview: two plain 8-bit images, a ROI on the source.
TEST_F(AddSTest, PlainImagesWithASourceRoi) {
    Image src(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 3, 20, 1);
    Image dst(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 3, 20, 2);
    for (int i = 0; i < src.image->imageSize; ++i) src.data[i] = static_cast<uint8_t>(240 + i % 16);
    set8u(dst, 0);
    src.setRoi(0, 3, 1, 2, 17);
    wrmgAddS(src.image, dst.image, 10, nullptr);
    // The destination's region starts at its first element; the source's
    // at (3, 1); 2 rows of 17.
    for (int y = 0; y < 3; ++y) {
        for (int x = 0; x < 20; ++x) {
            const uint8_t have = dst.data[y * 20 + x];
            if (y < 2 && x < 17) {
                const int e = 240 + ((y + 1) * 20 + x + 3) % 16;
                EXPECT_EQ(have, e + 10 > 255 ? 255 : e + 10) << x << "," << y;
            } else {
                EXPECT_EQ(have, 0) << x << "," << y;
            }
        }
    }
    EXPECT_TRUE(rmgtest::reports().empty());
    EXPECT_EQ(rmgGetErrStatus(), RMG_StsOk);
}

// ---------------------------------------------------------------------------
// Edge cases
// ---------------------------------------------------------------------------

TEST_F(AddSTest, ValueZeroInPlaceChangesNothingAndCopiesOtherwise) {
    for (unsigned int depth : {RMG_DEPTH_1U, RMG_DEPTH_8U, RMG_DEPTH_8S, RMG_DEPTH_16U,
                               RMG_DEPTH_16S, RMG_DEPTH_32S}) {
        const int channels = depth == RMG_DEPTH_1U ? 1 : 3;
        Image a(channels, depth, RMG_DATA_PIXEL, 4, 5, 7, 11);
        const std::vector<uint8_t> before = a.bytes();
        rmgAddS(a.image, a.image, 0, nullptr);
        EXPECT_EQ(a.bytes(), before) << depth;
        rmgSubtractS(a.image, a.image, 0, 0, nullptr);
        EXPECT_EQ(a.bytes(), before) << depth;

        Image b(channels, depth, RMG_DATA_PIXEL, 4, 5, 7, 12);
        a.setRoi(0, 1, 1, 3, 4);
        b.setRoi(0, 2, 0, 3, 4);
        const Image &src = a;
        const std::vector<uint8_t> old = b.bytes();
        rmgAddS(src.image, b.image, 0, nullptr);
        const addstest::Layout sl = addstest::layoutOf(a.image);
        const addstest::Layout dl = addstest::layoutOf(b.image);
        for (int y = 0; y < 5; ++y) {
            for (int x = 0; x < 7; ++x) {
                for (int ch = 0; ch < channels; ++ch) {
                    const bool inside = y < 3 && x >= 2 && x < 6;
                    const int64_t want = inside ? addstest::getAt(sl, before.data(), x - 1, y + 1, ch)
                                                : addstest::getAt(dl, old.data(), x, y, ch);
                    EXPECT_EQ(addstest::getAt(dl, b.data, x, y, ch), want)
                        << depth << " " << x << "," << y << "," << ch;
                }
            }
        }
        EXPECT_TRUE(rmgtest::reports().empty());
    }
}

TEST_F(AddSTest, EightBitAddOfMinus255ClearsAnd255Saturates) {
    rmgtest::inEveryForm([&](int) {
        Image src(3, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 4, 37, 5);
        Image dst(3, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 4, 37, 6);
        for (int i = 0; i < src.image->imageSize; ++i) src.data[i] = static_cast<uint8_t>(i);
        rmgAddS(src.image, dst.image, -255, nullptr);
        EXPECT_EQ(dst.bytes(), std::vector<uint8_t>(dst.bytes().size(), 0));
        rmgAddS(src.image, dst.image, 255, nullptr);
        EXPECT_EQ(dst.bytes(), std::vector<uint8_t>(dst.bytes().size(), 255));
    });
}

// The 8u runs keep the constant in 16 bits; the one-channel loop of
// pixel-order images (coi) adds in 32 bits.
TEST_F(AddSTest, EightBitRunsUseTheLow16BitsAndTheChannelLoopUses32) {
    rmgtest::inEveryForm([&](int) {
        Image src(3, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 2, 40, 5);
        Image dst(3, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 2, 40, 6);
        set8u(src, 1);
        // 32767 + 1 is 0x8000 as a word: negative, so 0.
        rmgAddS(src.image, dst.image, 32767, nullptr);
        EXPECT_EQ(dst.bytes(), std::vector<uint8_t>(dst.bytes().size(), 0));
        // 65536 + 5 acts as 5.
        rmgAddS(src.image, dst.image, 65541, nullptr);
        EXPECT_EQ(dst.bytes(), std::vector<uint8_t>(dst.bytes().size(), 6));
        // -65536 + 3 reversed: 3 - 1.
        rmgSubtractS(src.image, dst.image, -65533, 1, nullptr);
        EXPECT_EQ(dst.bytes(), std::vector<uint8_t>(dst.bytes().size(), 2));

        // With a coi the same constants work on the whole 32 bits.
        set8u(dst, 9);
        src.setRoi(2, 0, 0, 2, 40);
        dst.setRoi(2, 0, 0, 2, 40);
        rmgAddS(src.image, dst.image, 32767, nullptr);
        for (int i = 0; i < dst.image->imageSize; ++i)
            EXPECT_EQ(dst.data[i], (i % 3 == 1 && i % 120 < 120) ? 255 : 9) << i;
        rmgSubtractS(src.image, dst.image, -65533, 1, nullptr);
        for (int i = 0; i < dst.image->imageSize; ++i)
            EXPECT_EQ(dst.data[i], i % 3 == 1 ? 0 : 9) << i;
    });
}

// 16u constants of magnitude above 65535: the exact formula, at every
// alignment.
TEST_F(AddSTest, SixteenBitConstantsBeyond65535FollowTheExactFormula) {
    rmgtest::inEveryForm([&](int) {
        for (int x = 0; x < 20; ++x) {
            Image src(1, RMG_DEPTH_16U, RMG_DATA_PIXEL, 8, 1, 60, 5);
            Image dst(1, RMG_DEPTH_16U, RMG_DATA_PIXEL, 8, 1, 60, 6);
            std::vector<uint16_t> e(60);
            for (int i = 0; i < 60; ++i) e[i] = static_cast<uint16_t>(i * 1100);
            std::memcpy(src.data, e.data(), 120);
            src.setRoi(0, x, 0, 1, 60 - x);
            dst.setRoi(0, x, 0, 1, 60 - x);
            auto check = [&](Kind kind, int value, auto formula) {
                addstest::apply(kind, src.image, dst.image, value, nullptr);
                std::vector<uint16_t> have(60);
                std::memcpy(have.data(), dst.data, 120);
                for (int i = x; i < 60; ++i)
                    EXPECT_EQ(have[i], formula(int64_t{e[i]})) << value << " at " << i;
            };
            check(addstest::kAdd, 70000, [](int64_t) { return 65535; });
            check(addstest::kAdd, -70000, [](int64_t) { return 0; });
            check(addstest::kSub, 70000, [](int64_t) { return 0; });
            check(addstest::kSub, -70000, [](int64_t) { return 65535; });
            check(addstest::kRev, 70000, [](int64_t v) { return v > 4465 ? 70000 - v : 65535; });
            check(addstest::kRev, INT_MAX, [](int64_t) { return 65535; });
            check(addstest::kAdd, INT_MIN, [](int64_t) { return 0; });
            check(addstest::kSub, INT_MIN, [](int64_t) { return 65535; });
        }
    });
}

// Reversed subtraction of a negative constant at 16u stores zeros and
// reads nothing: the source's pixels lie on a page that can't be read.
TEST_F(AddSTest, SixteenBitReversedNegativeStoresZerosWithoutReading) {
    rmgtest::inEveryForm([&](int) {
        Image src(2, RMG_DEPTH_16U, RMG_DATA_PIXEL, 4, 3, 9, 5);
        Image dst(2, RMG_DEPTH_16U, RMG_DATA_PIXEL, 4, 3, 9, 6);
        const rmgtest::NoAccessPage page;
        uint8_t *own = src.image->imageData;
        src.image->imageData = page.bytes();
        rmgSubtractS(src.image, dst.image, -1, 1, nullptr);  // whole images
        EXPECT_EQ(dst.bytes(), std::vector<uint8_t>(dst.bytes().size(), 0));
        dst.fill(7);
        src.setRoi(0, 1, 0, 3, 8);  // rows of the region one by one
        const std::vector<uint8_t> before = dst.bytes();
        rmgSubtractS(src.image, dst.image, -40000, 1, nullptr);
        std::vector<uint8_t> want = before;
        for (int y = 0; y < 3; ++y) std::memset(want.data() + y * 36, 0, 32);
        EXPECT_EQ(dst.bytes(), want);
        src.image->imageData = own;
    });
}

TEST_F(AddSTest, ThirtyTwoBitAddOfTheMostNegativeValueHasLimitZero) {
    rmgtest::inEveryForm([&](int) {
        const std::vector<int32_t> e = {-1, 0, 5, INT_MAX, INT_MIN, -7, 1, 100, 2, 3, 4};
        Image src(1, RMG_DEPTH_32S, RMG_DATA_PIXEL, 4, 1, 11, 1);
        Image dst(1, RMG_DEPTH_32S, RMG_DATA_PIXEL, 4, 1, 11, 2);
        std::memcpy(src.data, e.data(), 44);
        rmgAddS(src.image, dst.image, INT_MIN, nullptr);
        std::vector<int32_t> have(11);
        std::memcpy(have.data(), dst.data, 44);
        const std::vector<int32_t> want = {INT_MIN, INT_MIN, INT_MIN + 5, -1, INT_MIN, INT_MIN,
                                           INT_MIN + 1, INT_MIN + 100, INT_MIN + 2, INT_MIN + 3,
                                           INT_MIN + 4};
        EXPECT_EQ(have, want);
        // Subtraction goes through double precision to the same results.
        rmgSubtractS(src.image, dst.image, INT_MIN, 0, nullptr);
        std::memcpy(have.data(), dst.data, 44);
        const std::vector<int32_t> wantSub = {INT_MAX, INT_MAX, INT_MAX, INT_MAX, 0,
                                              INT_MAX - 6, INT_MAX, INT_MAX, INT_MAX, INT_MAX,
                                              INT_MAX};
        EXPECT_EQ(have, wantSub);
        rmgSubtractS(src.image, dst.image, INT_MIN, 1, nullptr);
        std::memcpy(have.data(), dst.data, 44);
        const std::vector<int32_t> wantRev = {INT_MIN + 1, INT_MIN, INT_MIN, INT_MIN, 0,
                                              INT_MIN + 7, INT_MIN, INT_MIN, INT_MIN, INT_MIN,
                                              INT_MIN};
        EXPECT_EQ(have, wantRev);
    });
}

TEST_F(AddSTest, WholeImagesOverwriteTheRowPaddingWithTheSourcePaddingsResult) {
    // 3 columns, align 4: one padding byte a row.
    Image src(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 2, 3, 1);
    Image dst(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 2, 3, 2);
    const std::vector<uint8_t> pixels = {1, 2, 3, 10, 4, 5, 6, 250};
    src.fillFrom(pixels);
    rmgAddS(src.image, dst.image, 5, nullptr);
    EXPECT_EQ(dst.bytes(), (std::vector<uint8_t>{6, 7, 8, 15, 9, 10, 11, 255}));
    // A ROI that covers the image with coi 0 is whole as well; one that
    // doesn't start at 0 is not, and the padding stays.
    dst.fill(3);
    src.setRoi(0, 0, 0, 5, 5);
    rmgAddS(src.image, dst.image, 5, nullptr);
    EXPECT_EQ(dst.bytes(), (std::vector<uint8_t>{6, 7, 8, 15, 9, 10, 11, 255}));
    dst.fillFrom(std::vector<uint8_t>(8, 0));
    src.setRoi(0, 0, 0, 2, 2);
    rmgAddS(src.image, dst.image, 5, nullptr);
    EXPECT_EQ(dst.bytes(), (std::vector<uint8_t>{6, 7, 0, 0, 9, 10, 0, 0}));
}

// Rows count as contiguous when the region's row length equals widthStep,
// which is read for this test alone: addresses come from the row step that
// the header's fields give.
TEST_F(AddSTest, ContiguityIsJudgedByWidthStep) {
    Image src(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 3, 3, 1);  // rows of 4 bytes
    Image dst(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 3, 3, 2);
    std::vector<uint8_t> pixels(12);
    for (int i = 0; i < 12; ++i) pixels[static_cast<size_t>(i)] = static_cast<uint8_t>(10 + i);
    src.fillFrom(pixels);
    dst.fillFrom(std::vector<uint8_t>(12, 0));
    src.setRoi(0, 0, 0, 2, 3);  // two of the three rows: not whole
    rmgAddS(src.image, dst.image, 1, nullptr);
    EXPECT_EQ(dst.bytes(), (std::vector<uint8_t>{11, 12, 13, 0, 15, 16, 17, 0, 0, 0, 0, 0}));
    // With widthStep 3 in both headers the two rows are one run of 6
    // elements from the first: the padding byte of row 0 is processed and
    // the last element of row 1 is not.
    src.image->widthStep = 3;
    dst.image->widthStep = 3;
    dst.fillFrom(std::vector<uint8_t>(12, 0));
    rmgAddS(src.image, dst.image, 1, nullptr);
    EXPECT_EQ(dst.bytes(), (std::vector<uint8_t>{11, 12, 13, 14, 15, 16, 0, 0, 0, 0, 0, 0}));
    src.image->widthStep = 4;
    dst.image->widthStep = 4;
}

TEST_F(AddSTest, ImagesOfDifferentSizesWorkOnTheSmallerHeightAndWidth) {
    Image src(2, RMG_DEPTH_16S, RMG_DATA_PLANE, 4, 5, 7, 1);
    Image dst(2, RMG_DEPTH_16S, RMG_DATA_PLANE, 8, 4, 9, 2);
    const std::vector<uint8_t> before = dst.bytes();
    const std::vector<uint8_t> srcBytes = src.bytes();
    rmgSubtractS(src.image, dst.image, 300, 0, nullptr);
    const addstest::Layout sl = addstest::layoutOf(src.image);
    const addstest::Layout dl = addstest::layoutOf(dst.image);
    for (int ch = 0; ch < 2; ++ch)
        for (int y = 0; y < 4; ++y)
            for (int x = 0; x < 9; ++x) {
                int64_t want = addstest::getAt(dl, before.data(), x, y, ch);
                if (x < 7) {
                    const int64_t e = addstest::getAt(sl, srcBytes.data(), x, y, ch);
                    want = e - 300 < -32768 ? -32768 : e - 300;
                }
                EXPECT_EQ(addstest::getAt(dl, dst.data, x, y, ch), want) << x << "," << y;
            }
}

TEST_F(AddSTest, ACoiAboveTheChannelsIsRefusedOrIgnored) {
    Image src(3, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 2, 4, 1);
    Image dst(3, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 2, 4, 2);
    src.setRoi(4, 0, 0, 2, 4);
    dst.setRoi(4, 0, 0, 2, 4);
    const std::vector<uint8_t> before = dst.bytes();
    rmgAddS(src.image, dst.image, 1, nullptr);
    expectOneReport("rmgAddS", "rmgadds",
                    "COI is less zero or is more image channel's number                    \n");
    rmgtest::reports().clear();
    // The row kernel on its own does nothing, in silence.
    rmgAddS8u(src.image, dst.image, 1);
    rmgSubtractS16u(src.image, dst.image, 1, 0);
    EXPECT_EQ(dst.bytes(), before);
    EXPECT_TRUE(rmgtest::reports().empty());
}

TEST_F(AddSTest, CombinationsOutsideTheCasesWriteNothing) {
    // A pixel-order source with a coi and a one-channel destination without
    // ROI pass the channel check, and then nothing is written.
    Image src(3, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 2, 4, 1);
    Image dst(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 2, 4, 2);
    src.setRoi(2, 0, 0, 2, 4);
    const std::vector<uint8_t> before = dst.bytes();
    rmgAddS(src.image, dst.image, 1, nullptr);
    EXPECT_EQ(dst.bytes(), before);
    EXPECT_TRUE(rmgtest::reports().empty());
    // With coi 1 the one-channel destination is case C.
    dst.setRoi(1, 0, 0, 2, 4);
    const std::vector<uint8_t> srcBytes = src.bytes();
    rmgAddS(src.image, dst.image, 1, nullptr);
    for (int y = 0; y < 2; ++y)
        for (int x = 0; x < 4; ++x) {
            const int e = srcBytes[static_cast<size_t>(y * 12 + x * 3 + 1)];
            EXPECT_EQ(dst.data[y * 4 + x], e == 255 ? 255 : e + 1);
        }
    // Plane order, the source with a coi and the destination without: nothing.
    Image psrc(3, RMG_DEPTH_8U, RMG_DATA_PLANE, 4, 2, 4, 3);
    Image pdst(1, RMG_DEPTH_8U, RMG_DATA_PLANE, 4, 2, 4, 4);
    psrc.setRoi(3, 0, 0, 2, 4);
    const std::vector<uint8_t> pbefore = pdst.bytes();
    rmgAddS(psrc.image, pdst.image, 1, nullptr);
    EXPECT_EQ(pdst.bytes(), pbefore);
}

// The bit rectangle is not cut by its offset: the columns run on into the
// padding and the next row; bits beyond the buffer are left alone.
TEST_F(AddSTest, OneBitRoiPastTheRightEdgeRunsIntoTheNextRow) {
    // Width 10, align 4: 4 bytes a row, 3 rows.
    Image src(1, RMG_DEPTH_1U, RMG_DATA_PIXEL, 4, 3, 10, 1);
    Image dst(1, RMG_DEPTH_1U, RMG_DATA_PIXEL, 4, 3, 10, 2);
    src.fillFrom(std::vector<uint8_t>(12, 0x00));
    dst.fillFrom(std::vector<uint8_t>(12, 0x00));
    // Columns 28 .. 37 from row 1, in an image 10 columns wide: bits 4..7
    // of the row's byte 3 (padding) and bits 0..5 of the next row's byte 0.
    src.setRoi(0, 28, 1, 10, 10);
    dst.setRoi(0, 28, 1, 10, 10);
    rmgAddS(src.image, dst.image, 1, nullptr);
    std::vector<uint8_t> want(12, 0);
    // Rows 1 and 2 of the rectangle: row 1 writes byte 7 (low half) and byte
    // 8 (high six bits); row 2 writes byte 11 and would go on to byte 12,
    // which is beyond the buffer and skipped.
    want[7] = 0x0F;
    want[8] = 0xFC;
    want[11] = 0x0F;
    EXPECT_EQ(dst.bytes(), want);
    EXPECT_TRUE(rmgtest::reports().empty());
}

TEST_F(AddSTest, OneBitOperations) {
    Image src(1, RMG_DEPTH_1U, RMG_DATA_PIXEL, 4, 1, 32, 1);
    Image dst(1, RMG_DEPTH_1U, RMG_DATA_PIXEL, 4, 1, 32, 2);
    src.fillFrom({0xF0, 0x0F, 0xAA, 0x55});
    // Whole images: the word formulas.
    rmgAddS(src.image, dst.image, 1, nullptr);
    EXPECT_EQ(dst.bytes(), (std::vector<uint8_t>{0xFF, 0xFF, 0xFF, 0xFF}));
    rmgAddS(src.image, dst.image, 2, nullptr);
    EXPECT_EQ(dst.bytes(), (std::vector<uint8_t>{0xF0, 0x0F, 0xAA, 0x55}));
    rmgSubtractS(src.image, dst.image, 3, 0, nullptr);
    EXPECT_EQ(dst.bytes(), (std::vector<uint8_t>{0, 0, 0, 0}));
    rmgSubtractS(src.image, dst.image, 3, 1, nullptr);
    EXPECT_EQ(dst.bytes(), (std::vector<uint8_t>{0x0F, 0xF0, 0x55, 0xAA}));
    rmgSubtractS(src.image, dst.image, 4, 1, nullptr);
    EXPECT_EQ(dst.bytes(), (std::vector<uint8_t>{0, 0, 0, 0}));
    // Bit by bit with different phases: source columns 4..11 to destination
    // columns 9..16.
    dst.fillFrom({0x00, 0x00, 0x00, 0x00});
    src.setRoi(0, 4, 0, 1, 8);
    dst.setRoi(0, 9, 0, 1, 8);
    rmgSubtractS(src.image, dst.image, 1, 1, nullptr);
    // Source bits 4..11: 0000 0000 (0xF0 low half, 0x0F high half) negated:
    // all ones.
    EXPECT_EQ(dst.bytes(), (std::vector<uint8_t>{0x00, 0x7F, 0x80, 0x00}));
}

TEST_F(AddSTest, OneBitWholeImagesLeaveBytesBeyondWholeWordsAlone) {
    // A hand-made header whose imageSize is not a multiple of 4.
    Image src(1, RMG_DEPTH_1U, RMG_DATA_PIXEL, 4, 1, 48, 1);
    Image dst(1, RMG_DEPTH_1U, RMG_DATA_PIXEL, 4, 1, 48, 2);
    src.fillFrom({1, 2, 3, 4, 5, 6, 7, 8});
    dst.fillFrom({0, 0, 0, 0, 0, 0, 0, 0});
    src.image->imageSize = 6;
    dst.image->imageSize = 6;
    rmgAddS(src.image, dst.image, 1, nullptr);
    EXPECT_EQ(dst.bytes().size(), 6u);
    EXPECT_EQ(std::vector<uint8_t>(dst.data, dst.data + 8),
              (std::vector<uint8_t>{0xFF, 0xFF, 0xFF, 0xFF, 0, 0, 0, 0}));
    src.image->imageSize = 8;
    dst.image->imageSize = 8;
}

TEST_F(AddSTest, TilePosOnAnUntiledDestinationIsIgnored) {
    Image src(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 20, 20, 1);
    Image dst(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, 20, 20, 2);
    set8u(src, 1);
    const int tilePos[2] = {5, 5};
    rmgAddS(src.image, dst.image, 1, tilePos);
    EXPECT_EQ(dst.bytes(), std::vector<uint8_t>(dst.bytes().size(), 2));
    EXPECT_TRUE(rmgtest::reports().empty());
}

TEST_F(AddSTest, SignedDepthsSaturate) {
    Image src(1, RMG_DEPTH_8S, RMG_DATA_PIXEL, 4, 1, 4, 1);
    Image dst(1, RMG_DEPTH_8S, RMG_DATA_PIXEL, 4, 1, 4, 2);
    src.fillFrom({0x80, 0xFF, 0x00, 0x7F});  // -128, -1, 0, 127
    rmgAddS(src.image, dst.image, 100, nullptr);
    EXPECT_EQ(dst.bytes(), (std::vector<uint8_t>{0xE4, 99, 100, 127}));
    rmgSubtractS(src.image, dst.image, 100, 1, nullptr);  // 100 - e
    EXPECT_EQ(dst.bytes(), (std::vector<uint8_t>{127, 101, 100, 0xE5}));
    // The 32-bit sum wraps at the end of the range: INT_MAX + 1 is negative.
    rmgAddS(src.image, dst.image, INT_MAX, nullptr);
    EXPECT_EQ(dst.bytes(), (std::vector<uint8_t>{127, 127, 127, 0x80}));

    Image s16(1, RMG_DEPTH_16S, RMG_DATA_PIXEL, 4, 1, 2, 1);
    Image d16(1, RMG_DEPTH_16S, RMG_DATA_PIXEL, 4, 1, 2, 2);
    const int16_t e16[2] = {-32768, 32767};
    std::memcpy(s16.data, e16, 4);
    rmgSubtractS(s16.image, d16.image, -40000, 0, nullptr);
    int16_t have[2];
    std::memcpy(have, d16.data, 4);
    EXPECT_EQ(have[0], 7232);
    EXPECT_EQ(have[1], 32767);
}

}  // namespace
