// rmgColorToGray and rmgGrayToColor: the checks in order with their
// reports, the frame's helpers, and concrete values of the weights and
// the channel orders.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <vector>

#include "color/owncolor.h"
#include "color/rmgcolor.h"
#include "colortest.h"
#include "rmg.h"
#include "support/rmgtest.h"

namespace {

using colortest::Bytes;
using colortest::Call;
using rmgtest::reports;

class ColorTest : public rmgtest::ErrorStateTest {};

// A plain image without random content: every byte 0.
RmgImage *make(int nChannels, unsigned int depth, int order, const char *model, const char *seq,
               int height, int width) {
    RmgImage *image = rmgCreateImageHeader(nChannels, 0, depth, model, seq, order, RMG_ORIGIN_TL,
                                           4, height, width, nullptr, nullptr, nullptr);
    rmgAllocateImage(image, 0);
    return image;
}

struct Owned {
    RmgImage *image;
    explicit Owned(RmgImage *i) : image(i) {}
    ~Owned() { rmgDeallocate(image, RMG_DEALLOC_ALL); }
    Owned(const Owned &) = delete;
    Owned &operator=(const Owned &) = delete;
    RmgImage *operator->() const { return image; }
    operator RmgImage *() const { return image; }
};

void put16(RmgImage *im, int byteAt, uint16_t v) { std::memcpy(im->imageData + byteAt, &v, 2); }
uint16_t get16(const RmgImage *im, int byteAt) {
    uint16_t v;
    std::memcpy(&v, im->imageData + byteAt, 2);
    return v;
}
void put32(RmgImage *im, int byteAt, int32_t v) { std::memcpy(im->imageData + byteAt, &v, 4); }
int32_t get32(const RmgImage *im, int byteAt) {
    int32_t v;
    std::memcpy(&v, im->imageData + byteAt, 4);
    return v;
}

void expectReport(size_t index, const char *func, const char *context, const char *module) {
    ASSERT_LT(index, reports().size());
    EXPECT_EQ(reports()[index].status, RMG_StsBadArg);
    EXPECT_EQ(reports()[index].funcName, func);
    EXPECT_EQ(reports()[index].context, context);
    EXPECT_EQ(reports()[index].fileName, module);
}

std::string nullHeaderText() {
    char *text = rmgBadHeaderText(rmgBadImageHeader(nullptr));
    std::string s = text;
    rmgFree(text);
    return s;
}

// --------------------------------------------------------------------------
// Checks in order
// --------------------------------------------------------------------------

TEST_F(ColorTest, BadHeadersReportUnderTheSharedName) {
    Owned rgb(make(3, RMG_DEPTH_8U, RMG_DATA_PIXEL, "RGB", "RGB", 2, 2));
    Owned gray(make(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, "GRAY", "G", 2, 2));
    rmgColorToGray(nullptr, gray, nullptr);
    rmgColorToGray(rgb, nullptr, nullptr);
    wrmgGrayToColor(nullptr, rgb, 0, 0, 0, nullptr);
    wrmgGrayToColor(gray, nullptr, 0, 0, 0, nullptr);
    ASSERT_EQ(reports().size(), 4u);
    for (size_t i = 0; i < 4; ++i) expectReport(i, "rmgReduceBits", nullHeaderText().c_str(), "rmgcolor");
    EXPECT_EQ(rmgGetErrStatus(), RMG_StsBadArg);
}

TEST_F(ColorTest, SourceHeaderIsTestedBeforeTheDestination) {
    Owned rgb(make(3, RMG_DEPTH_8U, RMG_DATA_PIXEL, "RGB", "RGB", 2, 2));
    rgb->nChannels = 0;  // a bad source header
    rmgColorToGray(rgb, nullptr, nullptr);
    ASSERT_EQ(reports().size(), 1u);
    EXPECT_NE(reports()[0].context, nullHeaderText());
    EXPECT_EQ(reports()[0].funcName, "rmgReduceBits");
    rgb->nChannels = 3;
}

TEST_F(ColorTest, PointerTestNamesTheOperation) {
    Owned a(make(3, RMG_DEPTH_8U, RMG_DATA_PIXEL, "RGB", "RGB", 2, 2));
    RmgImage bare = *a.image;
    bare.imageData = nullptr;
    EXPECT_FALSE(ownCheckImagePointers(nullptr, a, "rmgColorToGray"));
    EXPECT_FALSE(ownCheckImagePointers(a, nullptr, "rmgColorToGray"));
    EXPECT_FALSE(ownCheckImagePointers(a, &bare, "rmgGrayToColor"));
    EXPECT_FALSE(ownCheckImagePointers(&bare, a, "rmgGrayToColor"));
    EXPECT_TRUE(ownCheckImagePointers(a, a, "rmgGrayToColor"));
    RmgTileInfo tiles{nullptr, nullptr, nullptr, 8, 8};
    bare.tileInfo = &tiles;
    EXPECT_TRUE(ownCheckImagePointers(&bare, a, "rmgGrayToColor"));
    ASSERT_EQ(reports().size(), 4u);
    expectReport(0, "rmgColorToGray", "null_image_pointer", "rmgcolor");
    expectReport(1, "rmgColorToGray", "null_image_pointer", "rmgcolor");
    expectReport(2, "rmgGrayToColor", "null_data_pointer", "rmgcolor");
    expectReport(3, "rmgGrayToColor", "null_data_pointer", "rmgcolor");
}

TEST_F(ColorTest, IncompatibleImagesAndThenKernelDepths) {
    Owned rgb(make(3, RMG_DEPTH_8U, RMG_DATA_PIXEL, "RGB", "RGB", 2, 2));
    Owned gray(make(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, "GRAY", "G", 2, 2));
    Owned gray3(make(3, RMG_DEPTH_8U, RMG_DATA_PIXEL, "GRAY", "GGG", 2, 2));
    const Bytes before(gray->imageData, gray->imageData + gray->imageSize);
    rmgColorToGray(gray, gray, nullptr);       // source model not RGB
    rmgColorToGray(rgb, gray3, nullptr);       // destination in pixel order with 3 channels
    rmgGrayToColor(gray, gray3, 0, 0, 0, nullptr);  // destination model not RGB
    Owned gray16(make(1, RMG_DEPTH_16U, RMG_DATA_PIXEL, "GRAY", "G", 2, 2));
    rmgGrayToColor(gray16, rgb, 0, 0, 0, nullptr);  // depths differ
    rmgGrayToColor(rgb, rgb, 0, 0, 0, nullptr);     // source in pixel order with 3 channels
    Owned bottom(make(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, "GRAY", "G", 2, 2));
    bottom->origin = RMG_ORIGIN_BL;
    rmgColorToGray(rgb, bottom, nullptr);  // origins differ
    ASSERT_EQ(reports().size(), 6u);
    expectReport(0, "rmgColorToGray", "incomatibleimages", "rmgcolor");
    expectReport(1, "rmgColorToGray", "incomatibleimages", "rmgcolor");
    expectReport(2, "rmgGrayToColor", "incomatibleimages", "rmgcolor");
    expectReport(3, "rmgGrayToColor", "incomatibleimages", "rmgcolor");
    expectReport(4, "rmgGrayToColor", "incomatibleimages", "rmgcolor");
    expectReport(5, "rmgColorToGray", "incomatibleimages", "rmgcolor");
    EXPECT_EQ(Bytes(gray->imageData, gray->imageData + gray->imageSize), before);
}

TEST_F(ColorTest, SignedSourcesHaveNoGrayKernel) {
    const unsigned int depths[2] = {RMG_DEPTH_8S, RMG_DEPTH_16S};
    for (unsigned int depth : depths) {
        Owned rgb(make(3, depth, RMG_DATA_PIXEL, "RGB", "RGB", 2, 2));
        std::memset(rgb->imageData, 0x40, static_cast<size_t>(rgb->imageSize));
        Owned gray(make(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, "GRAY", "G", 2, 2));
        rmgColorToGray(rgb, gray, nullptr);
        EXPECT_EQ(Bytes(gray->imageData, gray->imageData + gray->imageSize), Bytes(gray->imageSize, 0));
    }
    // Other pairs without a kernel: 8u into 32s, 32s into 32s.
    Owned rgb8(make(3, RMG_DEPTH_8U, RMG_DATA_PIXEL, "RGB", "RGB", 2, 2));
    Owned gray32(make(1, RMG_DEPTH_32S, RMG_DATA_PIXEL, "GRAY", "G", 2, 2));
    rmgColorToGray(rgb8, gray32, nullptr);
    ASSERT_EQ(reports().size(), 3u);
    for (size_t i = 0; i < 3; ++i) expectReport(i, "ownColorToGray", "errInOutDepth", "owncolor");
}

TEST_F(ColorTest, GrayToColorDepthsWithoutKernel) {
    Owned g8s(make(1, RMG_DEPTH_8S, RMG_DATA_PIXEL, "GRAY", "G", 2, 2));
    Owned c8s(make(3, RMG_DEPTH_8S, RMG_DATA_PIXEL, "RGB", "RGB", 2, 2));
    Owned g1(make(1, RMG_DEPTH_1U, RMG_DATA_PIXEL, "GRAY", "G", 2, 2));
    Owned c1(make(1, RMG_DEPTH_1U, RMG_DATA_PIXEL, "RGB", "RGB", 2, 2));
    rmgGrayToColor(g8s, c8s, 1, 1, 1, nullptr);
    rmgGrayToColor(g1, c1, 1, 1, 1, nullptr);
    ASSERT_EQ(reports().size(), 2u);
    expectReport(0, "ownGrayToColor", "errInOutDepth", "owncolor");
    expectReport(1, "ownGrayToColor", "errInOutDepth", "owncolor");
}

// --------------------------------------------------------------------------
// Compatibility checks and channel resolution
// --------------------------------------------------------------------------

TEST_F(ColorTest, CompatibilityChecks) {
    Owned rgb(make(3, RMG_DEPTH_8U, RMG_DATA_PIXEL, "RGBA", "RGB", 2, 2));
    Owned rgbPlane(make(3, RMG_DEPTH_8U, RMG_DATA_PLANE, "RGB", "RGB", 2, 2));
    Owned hsv(make(3, RMG_DEPTH_8U, RMG_DATA_PIXEL, "HSV", "HSV", 2, 2));
    Owned hls(make(3, RMG_DEPTH_8U, RMG_DATA_PIXEL, "HLS", "HLS", 2, 2));
    Owned gray(make(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, "GRAY", "G", 2, 2));
    Owned gray1(make(1, RMG_DEPTH_1U, RMG_DATA_PIXEL, "GRAY", "G", 2, 2));
    Owned gray16(make(1, RMG_DEPTH_16U, RMG_DATA_PIXEL, "GRAY", "G", 2, 2));
    // The other image's model plays no part.
    EXPECT_TRUE(rmgCanColorToGray(rgb, gray));
    EXPECT_TRUE(rmgCanColorToGray(rgb, rgbPlane));
    EXPECT_FALSE(rmgCanColorToGray(rgb, hsv));
    EXPECT_FALSE(rmgCanColorToGray(gray, gray));
    EXPECT_TRUE(rmgCanGrayToColor(gray, rgb));
    EXPECT_TRUE(rmgCanGrayToColor(gray1, rgb));
    EXPECT_FALSE(rmgCanGrayToColor(gray16, rgb));
    EXPECT_FALSE(rmgCanGrayToColor(gray, hsv));
    EXPECT_TRUE(rmgCanGrayToColor(rgbPlane, rgb));
    EXPECT_TRUE(rmgIsRGBPair(rgb, hsv));
    EXPECT_FALSE(rmgIsRGBPair(rgb, rgbPlane));
    EXPECT_FALSE(rmgIsRGBPair(rgb, gray));
    EXPECT_TRUE(rmgIsHSVPair(hsv, rgb));
    EXPECT_FALSE(rmgIsHSVPair(hls, rgb));
    EXPECT_TRUE(rmgIsHLSPair(hls, rgb));
    EXPECT_TRUE(rmgCanReduce(rgb, hsv));
    EXPECT_FALSE(rmgCanReduce(rgb, gray));
    RmgROI coi{2, 0, 0, 2, 2};
    rgb->roi = &coi;
    EXPECT_TRUE(rmgCanReduce(rgb, gray));
    EXPECT_TRUE(rmgIsRGBPair(rgb, gray));
    EXPECT_FALSE(rmgIsRGBPair(rgb, hsv));
    rgb->roi = nullptr;
    gray->origin = RMG_ORIGIN_BL;
    EXPECT_FALSE(rmgCanReduce(hsv, gray));
    EXPECT_FALSE(rmgCanColorToGray(rgb, gray));
    EXPECT_TRUE(reports().empty());
}

TEST_F(ColorTest, ChannelPointers) {
    Owned plane(make(4, RMG_DEPTH_16U, RMG_DATA_PLANE, "RGBA", "BGRA", 3, 5));
    unsigned char *base = plane->imageData;
    unsigned char *r = nullptr, *g = nullptr, *b = nullptr;
    rmgChannelPointers(plane, 12, 3, base, &r, &g, &b);
    EXPECT_EQ(r, base + 2 * 36);
    EXPECT_EQ(g, base + 36);
    EXPECT_EQ(b, base);
    Owned pixel(make(3, RMG_DEPTH_16U, RMG_DATA_PIXEL, "RGB", "BGR", 3, 5));
    rmgChannelPointers(pixel, 32, 3, pixel->imageData, &r, &g, &b);
    EXPECT_EQ(r, pixel->imageData + 4);
    EXPECT_EQ(g, pixel->imageData + 2);
    EXPECT_EQ(b, pixel->imageData);
    pixel->channelSeq[0] = 'R';
    rmgChannelPointers(pixel, 32, 3, pixel->imageData, &r, &g, &b);
    EXPECT_EQ(r, pixel->imageData);
    EXPECT_EQ(b, pixel->imageData + 4);
    // H, S, V and H, L, S in plane order; a letter no channel has leaves
    // its result alone.
    Owned hsv(make(3, RMG_DEPTH_8U, RMG_DATA_PLANE, "HSV", "VSH", 2, 4));
    unsigned char *h = nullptr, *s = nullptr, *v = nullptr, *l = nullptr;
    rmgHsvPointers(hsv, 4, 2, hsv->imageData, &h, &s, &v);
    EXPECT_EQ(h, hsv->imageData + 16);
    EXPECT_EQ(s, hsv->imageData + 8);
    EXPECT_EQ(v, hsv->imageData);
    h = s = nullptr;
    rmgHlsPointers(hsv, 4, 2, hsv->imageData, &h, &l, &s);
    EXPECT_EQ(h, hsv->imageData + 16);
    EXPECT_EQ(l, nullptr);
    EXPECT_EQ(s, hsv->imageData + 8);
}

// --------------------------------------------------------------------------
// Concrete values
// --------------------------------------------------------------------------

// White: (54 + 183 + 18) * 255 >> 8, 65025 >> 8 = 254; the weights add up
// to 255, not 256, so white doesn't stay 255.
TEST_F(ColorTest, White8uStaysBelow255) {
    Owned rgb(make(3, RMG_DEPTH_8U, RMG_DATA_PIXEL, "RGB", "RGB", 2, 3));
    std::memset(rgb->imageData, 255, static_cast<size_t>(rgb->imageSize));
    Owned gray(make(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, "GRAY", "G", 2, 3));
    wrmgColorToGray(rgb, gray, nullptr);
    // Rows of 3 gray bytes, padded to 4: the padding keeps its 0.
    EXPECT_EQ(Bytes(gray->imageData, gray->imageData + 8), (Bytes{254, 254, 254, 0, 254, 254, 254, 0}));
    EXPECT_TRUE(reports().empty());
}

TEST_F(ColorTest, Full8uInto16uGives65025) {
    Owned rgb(make(3, RMG_DEPTH_8U, RMG_DATA_PIXEL, "RGB", "RGB", 1, 2));
    std::memset(rgb->imageData, 255, static_cast<size_t>(rgb->imageSize));
    Owned gray(make(1, RMG_DEPTH_16U, RMG_DATA_PIXEL, "GRAY", "G", 1, 2));
    rmgColorToGray(rgb, gray, nullptr);
    EXPECT_EQ(get16(gray, 0), 65025);
    EXPECT_EQ(get16(gray, 2), 65025);
}

TEST_F(ColorTest, Negative32sShiftArithmeticallyAndWrap) {
    Owned rgb(make(3, RMG_DEPTH_32S, RMG_DATA_PIXEL, "RGB", "RGB", 1, 1));
    put32(rgb, 0, 1 << 30);
    put32(rgb, 4, -(1 << 30));
    put32(rgb, 8, 12345);
    Owned g8(make(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, "GRAY", "G", 1, 1));
    Owned g16(make(1, RMG_DEPTH_16U, RMG_DATA_PIXEL, "GRAY", "G", 1, 1));
    Owned g1(make(1, RMG_DEPTH_1U, RMG_DATA_PIXEL, "GRAY", "G", 1, 1));
    rmgColorToGray(rgb, g8, nullptr);
    rmgColorToGray(rgb, g16, nullptr);
    rmgColorToGray(rgb, g1, nullptr);
    // Sum 0xF7F800DE (>> 11) and 0xEFF001BC (>> 10).
    EXPECT_EQ(g8->imageData[0], 191);
    EXPECT_EQ(get16(g16, 0), 49088);
    EXPECT_EQ(g1->imageData[0], 0x80);
    // All -1024: each >> 11 is -1, the sum -512 wraps to 0xFFFFFE00.
    for (int k = 0; k < 3; ++k) put32(rgb, 4 * k, -1024);
    rmgColorToGray(rgb, g8, nullptr);
    rmgColorToGray(rgb, g16, nullptr);
    EXPECT_EQ(g8->imageData[0], 0xFF);
    EXPECT_EQ(get16(g16, 0), 0xFFFF);
}

TEST_F(ColorTest, ThirtyTwoBitToBitsKeepsItsChannelOrder) {
    // In BGR order the other kernels exchange the first and third channel;
    // the 32s to 1u kernel doesn't: its first element weighs 109.
    Owned rgb(make(3, RMG_DEPTH_32S, RMG_DATA_PIXEL, "RGB", "BGR", 1, 1));
    put32(rgb, 0, 2097151 * 1024);
    put32(rgb, 4, 1092896 * 1024);
    Owned g1(make(1, RMG_DEPTH_1U, RMG_DATA_PIXEL, "GRAY", "G", 1, 1));
    rmgColorToGray(rgb, g1, nullptr);
    // 2097151 * 109 + 1092896 * 366 = 628,722,395 > 0x1FFFFFFF; with 37 in
    // place of 109 it would stay below.
    EXPECT_EQ(g1->imageData[0], 0x80);
    Owned g8(make(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, "GRAY", "G", 1, 1));
    rmgColorToGray(rgb, g8, nullptr);
    EXPECT_EQ(g8->imageData[0], (1048575u * 37u + 546448u * 366u) >> 21);
}

TEST_F(ColorTest, ChannelOrderOfTheGrayWeights) {
    // Pixel order BGR: red is the third element and still weighs 54.
    Owned bgr(make(3, RMG_DEPTH_8U, RMG_DATA_PIXEL, "RGB", "BGR", 1, 1));
    bgr->imageData[2] = 200;
    Owned gray(make(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, "GRAY", "G", 1, 1));
    rmgColorToGray(bgr, gray, nullptr);
    EXPECT_EQ(gray->imageData[0], (200 * 54) >> 8);
    // Plane order BGR: the R plane is found by its letter and then takes
    // blue's weight.
    Owned plane(make(3, RMG_DEPTH_8U, RMG_DATA_PLANE, "RGB", "BGR", 1, 1));
    plane->imageData[2 * 4] = 200;  // the plane lettered R, third in memory
    rmgColorToGray(plane, gray, nullptr);
    EXPECT_EQ(gray->imageData[0], (200 * 18) >> 8);
    plane->channelSeq[0] = 'R';
    plane->channelSeq[2] = 'B';
    plane->imageData[0] = 200;  // now the plane lettered R is the first
    plane->imageData[8] = 0;
    rmgColorToGray(plane, gray, nullptr);
    EXPECT_EQ(gray->imageData[0], (200 * 54) >> 8);
}

TEST_F(ColorTest, SixteenBitPlaneKernelTruncatesEachProduct) {
    Owned pixel(make(3, RMG_DEPTH_16U, RMG_DATA_PIXEL, "RGB", "RGB", 1, 1));
    Owned plane(make(3, RMG_DEPTH_16U, RMG_DATA_PLANE, "RGB", "RGB", 1, 1));
    for (int k = 0; k < 3; ++k) {
        put16(pixel, 2 * k, 300);
        put16(plane, 4 * k, 300);
    }
    Owned a(make(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, "GRAY", "G", 1, 1));
    Owned b(make(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, "GRAY", "G", 1, 1));
    rmgColorToGray(pixel, a, nullptr);
    rmgColorToGray(plane, b, nullptr);
    EXPECT_EQ(a->imageData[0], 1);  // 300 * 255 >> 16
    EXPECT_EQ(b->imageData[0], 0);  // (0 + 1 + 0) >> 1
    for (int k = 0; k < 3; ++k) put16(plane, 4 * k, 65535);
    rmgColorToGray(plane, b, nullptr);
    EXPECT_EQ(b->imageData[0], 254);  // (108 + 365 + 36) >> 1
}

TEST_F(ColorTest, BitsAreWrittenMostSignificantFirstAndOthersKept) {
    Owned rgb(make(3, RMG_DEPTH_16U, RMG_DATA_PIXEL, "RGB", "RGB", 1, 10));
    for (int i = 0; i < 10; ++i)
        for (int k = 0; k < 3; ++k) put16(rgb, 6 * i + 2 * k, (i % 3 == 0) ? 40000 : 20000);
    Owned g1(make(1, RMG_DEPTH_1U, RMG_DATA_PIXEL, "GRAY", "G", 1, 10));
    std::memset(g1->imageData, 0x5A, static_cast<size_t>(g1->imageSize));
    rmgColorToGray(rgb, g1, nullptr);
    // 40000 * 255 >> 8 = 39843 > 32767: set at 0, 3, 6, 9; the bits after 10
    // keep 0x5A's.
    EXPECT_EQ(g1->imageData[0], 0x92);
    EXPECT_EQ(g1->imageData[1], 0x40 | (0x5A & 0x3F));
}

TEST_F(ColorTest, RedOnlyFractionAt8u) {
    Owned gray(make(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, "GRAY", "G", 1, 3));
    gray->imageData[0] = 0;
    gray->imageData[1] = 77;
    gray->imageData[2] = 255;
    Owned rgb(make(3, RMG_DEPTH_8U, RMG_DATA_PIXEL, "RGB", "RGB", 1, 3));
    std::memset(rgb->imageData, 9, static_cast<size_t>(rgb->imageSize));
    wrmgGrayToColor(gray, rgb, 1.0f, 0.0f, 0.0f, nullptr);
    // 255 stays 255 with a fraction of 1.0 (256 >> 8); row padding keeps 9.
    EXPECT_EQ(Bytes(rgb->imageData, rgb->imageData + 12), (Bytes{0, 0, 0, 77, 0, 0, 255, 0, 0, 9, 9, 9}));
    EXPECT_TRUE(reports().empty());
}

TEST_F(ColorTest, BgrDestinationStillTakesRedFirst) {
    Owned gray(make(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, "GRAY", "G", 1, 1));
    gray->imageData[0] = 100;
    Owned bgr(make(3, RMG_DEPTH_8U, RMG_DATA_PIXEL, "RGB", "BGR", 1, 1));
    rmgGrayToColor(gray, bgr, 1.0f, 0.5f, 0.25f, nullptr);
    EXPECT_EQ(bgr->imageData[0], 100);
    EXPECT_EQ(bgr->imageData[1], 50);
    EXPECT_EQ(bgr->imageData[2], 25);
    // A 1-bit source exchanges the first and third with that letter.
    Owned bit(make(1, RMG_DEPTH_1U, RMG_DATA_PIXEL, "GRAY", "G", 1, 2));
    bit->imageData[0] = 0x80;
    Owned out(make(3, RMG_DEPTH_8U, RMG_DATA_PIXEL, "RGB", "BGR", 1, 2));
    std::memset(out->imageData, 7, static_cast<size_t>(out->imageSize));
    rmgGrayToColor(bit, out, 1.0f, 0.5f, 0.25f, nullptr);
    // 64 * 255 >> 8 = 63, 128 * 255 >> 8 = 127, 256 * 255 >> 8 = 255.
    EXPECT_EQ(Bytes(out->imageData, out->imageData + 8), (Bytes{63, 127, 255, 0, 0, 0, 7, 7}));
    out->channelSeq[0] = 'R';
    rmgGrayToColor(bit, out, 1.0f, 0.5f, 0.25f, nullptr);
    EXPECT_EQ(Bytes(out->imageData, out->imageData + 3), (Bytes{255, 127, 63}));
}

TEST_F(ColorTest, SmallFractionsSelectTheDefaults) {
    Owned gray(make(1, RMG_DEPTH_16U, RMG_DATA_PIXEL, "GRAY", "G", 1, 1));
    put16(gray, 0, 65535);
    Owned rgb(make(3, RMG_DEPTH_16U, RMG_DATA_PIXEL, "RGB", "RGB", 1, 1));
    const float tiny = 1.0f / 32769.0f;
    rmgGrayToColor(gray, rgb, tiny, tiny, 0.0f, nullptr);
    EXPECT_EQ(get16(rgb, 0), 13951);
    EXPECT_EQ(get16(rgb, 2), 46847);
    EXPECT_EQ(get16(rgb, 4), 4735);
    // A fraction of 1.0 at 16 bits: 32768 >> 15 gives g back.
    rmgGrayToColor(gray, rgb, 1.0f, 0.0f, 0.0f, nullptr);
    EXPECT_EQ(get16(rgb, 0), 65535);
    EXPECT_EQ(get16(rgb, 2), 0);
    // All zero at 8 bits: 54, 183, 18 give a gray's luminance shares.
    Owned g8(make(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, "GRAY", "G", 1, 1));
    g8->imageData[0] = 200;
    Owned c8(make(3, RMG_DEPTH_8U, RMG_DATA_PIXEL, "RGB", "RGB", 1, 1));
    rmgGrayToColor(g8, c8, 0, 0, 0, nullptr);
    EXPECT_EQ(Bytes(c8->imageData, c8->imageData + 3), (Bytes{42, 142, 14}));
}

TEST_F(ColorTest, FourthChannelIsKept) {
    Owned gray(make(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, "GRAY", "G", 1, 2));
    gray->imageData[0] = 10;
    gray->imageData[1] = 20;
    Owned rgba(make(4, RMG_DEPTH_8U, RMG_DATA_PIXEL, "RGBA", "RGBA", 1, 2));
    std::memset(rgba->imageData, 0xAB, 8);
    rmgGrayToColor(gray, rgba, 1.0f, 1.0f, 1.0f, nullptr);
    EXPECT_EQ(Bytes(rgba->imageData, rgba->imageData + 8), (Bytes{10, 10, 10, 0xAB, 20, 20, 20, 0xAB}));
    Owned plane(make(4, RMG_DEPTH_8U, RMG_DATA_PLANE, "RGBA", "RGBA", 1, 2));
    std::memset(plane->imageData, 0xAB, static_cast<size_t>(plane->imageSize));
    rmgGrayToColor(gray, plane, 1.0f, 1.0f, 1.0f, nullptr);
    EXPECT_EQ(Bytes(plane->imageData, plane->imageData + 16),
              (Bytes{10, 20, 0xAB, 0xAB, 10, 20, 0xAB, 0xAB, 10, 20, 0xAB, 0xAB, 0xAB, 0xAB, 0xAB, 0xAB}));
}

TEST_F(ColorTest, ThirtyTwoBitWeightsAreFloats) {
    const RmgGrayCoefs d = ownGrayCoefs(RMG_DEPTH_32S, 0, 0, 0);
    uint32_t bits[3];
    std::memcpy(&bits[0], &d.fcoefR, 4);
    std::memcpy(&bits[1], &d.fcoefG, 4);
    std::memcpy(&bits[2], &d.fcoefB, 4);
    EXPECT_EQ(bits[0], 0x3E59C66Du);
    EXPECT_EQ(bits[1], 0x3F3714BAu);
    EXPECT_EQ(bits[2], 0x3D93CD57u);
    // 2.0 * 32768 is 65536: 0 as 16 bits, so three of them are the defaults
    // too; so is NaN, whose conversion gives INT_MIN.
    const float nan = std::numeric_limits<float>::quiet_NaN();
    EXPECT_EQ(ownGrayCoefs(RMG_DEPTH_32S, 2.0f, nan, 0).fcoefR, d.fcoefR);
    EXPECT_EQ(ownGrayCoefs(RMG_DEPTH_32S, 2.0f, 1.0f, 0).fcoefR, 2.0f);
    EXPECT_EQ(ownGrayCoefs(RMG_DEPTH_8U, -1.0f, 0, 0).coefR, 0xFF00);
    EXPECT_EQ(ownGrayCoefs(RMG_DEPTH_8U, 1e10f, 0, 0).coefShift, 8);
    EXPECT_EQ(ownGrayCoefs(RMG_DEPTH_8U, 1e10f, 0, 0).coefR, 54);  // INT_MIN: 0 as 16 bits

    Owned gray(make(1, RMG_DEPTH_32S, RMG_DATA_PIXEL, "GRAY", "G", 1, 3));
    put32(gray, 0, 1000);
    put32(gray, 4, 2147483647);
    put32(gray, 8, -7);
    Owned rgb(make(3, RMG_DEPTH_32S, RMG_DATA_PIXEL, "RGB", "RGB", 1, 3));
    rmgGrayToColor(gray, rgb, 0.5f, 1.5f, -0.25f, nullptr);
    EXPECT_EQ(get32(rgb, 0), 500);
    EXPECT_EQ(get32(rgb, 4), 1500);
    EXPECT_EQ(get32(rgb, 8), -250);
    EXPECT_EQ(get32(rgb, 12), 1073741823);               // 2147483647 * 0.5 truncated
    EXPECT_EQ(get32(rgb, 16), std::numeric_limits<int32_t>::min());  // beyond the range
    EXPECT_EQ(get32(rgb, 20), -536870911);
    EXPECT_EQ(get32(rgb, 24), -3);  // -3.5 towards zero
    EXPECT_EQ(get32(rgb, 28), -10);
    EXPECT_EQ(get32(rgb, 32), 1);
    rmgGrayToColor(gray, rgb, 0, 0, 0, nullptr);
    EXPECT_EQ(get32(rgb, 0), static_cast<int32_t>(1000.0 * static_cast<double>(d.fcoefR)));
    EXPECT_EQ(get32(rgb, 0), 212);
    EXPECT_EQ(get32(rgb, 4), 715);
    EXPECT_EQ(get32(rgb, 8), 72);
}

TEST_F(ColorTest, NegativeFractionAt8uWraps) {
    Owned gray(make(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, "GRAY", "G", 1, 1));
    gray->imageData[0] = 3;
    Owned rgb(make(3, RMG_DEPTH_8U, RMG_DATA_PIXEL, "RGB", "RGB", 1, 1));
    rmgGrayToColor(gray, rgb, -1.0f, 0.0f, 0.0f, nullptr);
    // -256 as 16 bits is 0xFF00: 3 * 0xFF00 >> 8 = 765, low byte 0xFD.
    EXPECT_EQ(rgb->imageData[0], 0xFD);
}

TEST_F(ColorTest, RoiPlaysNoPart) {
    Owned rgb(make(3, RMG_DEPTH_8U, RMG_DATA_PIXEL, "RGB", "RGB", 2, 2));
    std::memset(rgb->imageData, 100, static_cast<size_t>(rgb->imageSize));
    Owned gray(make(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, "GRAY", "G", 3, 3));
    RmgROI roi{0, 1, 1, 1, 1};
    gray->roi = &roi;
    rmgColorToGray(rgb, gray, nullptr);
    gray->roi = nullptr;
    // The smaller size of the two, from the first pixel: 100 * 255 >> 8 = 99.
    EXPECT_EQ(Bytes(gray->imageData, gray->imageData + 12), (Bytes{99, 99, 0, 0, 99, 99, 0, 0, 0, 0, 0, 0}));
}

// --------------------------------------------------------------------------
// Destination walk
// --------------------------------------------------------------------------

TEST_F(ColorTest, NextDstTileOnAnImageInMemory) {
    Owned gray(make(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, "GRAY", "G", 5, 7));
    int c = -1, r = -1, x = 9, y = 9, w = 0, h = 0;
    EXPECT_EQ(ownNextDstTile(gray, &c, &r, &x, &y, &w, &h, RMG_TILE_WRITE, nullptr), gray->imageData);
    EXPECT_EQ(x, 0);
    EXPECT_EQ(y, 0);
    EXPECT_EQ(w, 7);
    EXPECT_EQ(h, 5);
    EXPECT_EQ(ownNextDstTile(gray, &c, &r, &x, &y, &w, &h, RMG_TILE_WRITE, nullptr), nullptr);
    const int pos[2] = {3, 4};
    c = r = -1;
    EXPECT_EQ(ownNextDstTile(gray, &c, &r, &x, &y, &w, &h, RMG_TILE_WRITE, pos), gray->imageData);
    EXPECT_EQ(ownNextDstTile(gray, &c, &r, &x, &y, &w, &h, RMG_TILE_WRITE, pos), nullptr);
}

TEST_F(ColorTest, NextDstTileWalksTheGrid) {
    std::mt19937 rng(5);
    colortest::TiledImage t(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, "GRAY", "G", 20, 20, 8, 16, rng);
    int c = -1, r = -1, x = 0, y = 0, w = 0, h = 0;
    std::vector<std::array<int, 4>> pieces;
    while (ownNextDstTile(t.image, &c, &r, &x, &y, &w, &h, RMG_TILE_READ, nullptr) != nullptr)
        pieces.push_back({x, y, w, h});
    const std::vector<std::array<int, 4>> expected = {
        {0, 0, 8, 16}, {8, 0, 8, 16}, {16, 0, 8, 16}, {0, 16, 8, 16}, {8, 16, 8, 16}, {16, 16, 8, 16}};
    EXPECT_EQ(pieces, expected);
    // The walk itself releases nothing.
    std::vector<Call> expectedCalls;
    for (const Call &k : colortest::walkCalls(3, 2))
        if (k.mode != RMG_TILE_RELEASE) expectedCalls.push_back({k.x, k.y, RMG_TILE_READ});
    EXPECT_EQ(t.calls, expectedCalls);
    ownReleaseDstTile(t.image, 2, 1, RMG_TILE_RELEASE);
    EXPECT_EQ(t.calls.back(), (Call{2, 1, RMG_TILE_RELEASE}));
}

}  // namespace
