// The frame of the alpha composition module: channel cursors, the common
// extent, the image block, the rule for channels of interest and the
// rounding of the float kernels.
#include <cstring>
#include <string>

#include "alpha/rmgalpha.h"
#include "core/rmgint.h"
#include "rmg.h"

using rmg::add32;
using rmg::mul32;

namespace {

constexpr char kModule[] = "rmgalpha";

int minOf(int a, int b) { return a < b ? a : b; }

// `text` with every "from" replaced by `to`, scanning on after each
// replacement (so a name that contains "from" is not replaced again).
std::string withName(const char *text, const char *from, const char *to) {
    std::string s(text);
    const size_t fromSize = std::strlen(from);
    const size_t toSize = std::strlen(to);
    for (size_t at = s.find(from); at != std::string::npos; at = s.find(from, at + toSize))
        s.replace(at, fromSize, to);
    return s;
}

bool raise(const char *funcName, const char *text, const char *from, const char *name, int line) {
    const std::string context = withName(text, from, name);
    rmgError(RMG_StsBadArg, funcName, context.c_str(), kModule, line);
    return false;
}

// The texts of the image block, step 1 first, written for "dstImage".
const char *const kBlockTexts[18] = {
    "dstImage==0",
    "rmgBadImageHeader(dstImage) != 0",
    "dstImage->width <= 0",
    "dstImage->height <= 0",
    "dstImage->nChannels <= 0",
    "dstImage->roi->width <= 0",
    "dstImage->roi->height <= 0",
    "dstImage->roi->xOffset < 0",
    "dstImage->roi->yOffset < 0",
    "dstImage->roi->xOffset >= dstImage->width",
    "dstImage->roi->yOffset >= dstImage->height",
    "dstImage->roi->coi < 0",
    "dstImage->roi->coi > dstImage->nChannels",
    "dstImage->imageData == ((void*)(0)) && dstImage->tileInfo == ((void*)(0))",
    "dstImage->imageData != ((void*)(0)) && dstImage->tileInfo != ((void*)(0))",
    "dstImage->tileInfo->callBack==0",
    "dstImage->tileInfo->width <= 0",
    "dstImage->tileInfo->height <= 0",
};

// The first step of the image block that `image` fails (1..18), 0 if none.
int blockFault(const RmgImage *image, int headerMask) {
    if (image == nullptr) return 1;
    if (headerMask != 0) return 2;
    if (image->width <= 0) return 3;
    if (image->height <= 0) return 4;
    if (image->nChannels <= 0) return 5;
    if (const RmgROI *roi = image->roi) {
        if (roi->width <= 0) return 6;
        if (roi->height <= 0) return 7;
        if (roi->xOffset < 0) return 8;
        if (roi->yOffset < 0) return 9;
        if (roi->xOffset >= image->width) return 10;
        if (roi->yOffset >= image->height) return 11;
        if (roi->coi < 0) return 12;
        if (roi->coi > image->nChannels) return 13;
    }
    if (image->imageData == nullptr && image->tileInfo == nullptr) return 14;
    if (image->imageData != nullptr && image->tileInfo != nullptr) return 15;
    if (const RmgTileInfo *tiles = image->tileInfo) {
        if (tiles->callBack == nullptr) return 16;
        if (tiles->width <= 0) return 17;
        if (tiles->height <= 0) return 18;
    }
    return 0;
}

}  // namespace

void ownSetChannelCursor(const RmgImage *image, const RmgROI *roi, int channel,
                         ownChannelCursor *cursor) {
    const uint32_t depth = image->depth;
    // 1. Samples of a row.
    int32_t n = image->width;
    if (image->dataOrder != RMG_DATA_PLANE) n = mul32(n, image->nChannels);
    // 2. To bytes.
    int32_t bytes = n;
    if (depth == RMG_DEPTH_1U)
        bytes = add32(n, 7) >> 3;
    else if (depth == RMG_DEPTH_16U || depth == RMG_DEPTH_16S)
        bytes = mul32(n, 2);
    else if (depth == RMG_DEPTH_32S)
        bytes = mul32(n, 4);
    // 3. Rounded up to the alignment: 4, or else 8.
    const int32_t unit = image->align == 4 ? 4 : 8;
    bytes = add32(bytes, unit - 1) & -unit;
    // 4. Back to samples.
    int32_t rowStep = bytes;
    if (depth == RMG_DEPTH_1U)
        rowStep = mul32(bytes, 8);
    else if (depth == RMG_DEPTH_16U || depth == RMG_DEPTH_16S)
        rowStep = bytes >> 1;
    else if (depth == RMG_DEPTH_32S)
        rowStep = bytes >> 2;
    // 5. Steps of the data order.
    int32_t channelStep = 1;
    int32_t pixelStep = image->nChannels;
    if (image->dataOrder == RMG_DATA_PLANE) {
        channelStep = mul32(image->height, rowStep);
        pixelStep = 1;
    }
    // 6. The channel at the ROI's top-left pixel.
    const int32_t xOffset = roi != nullptr ? roi->xOffset : 0;
    const int32_t yOffset = roi != nullptr ? roi->yOffset : 0;
    cursor->data = image->imageData;
    cursor->depth = static_cast<int32_t>(depth);
    cursor->offset = add32(add32(mul32(channel - 1, channelStep), mul32(yOffset, rowStep)),
                           mul32(pixelStep, xOffset));
    cursor->channelStep = channelStep;
    cursor->rowStep = rowStep;
    cursor->pixelStep = pixelStep;
}

void ownClipExtent(const RmgImage *image, int *rows, int *columns) {
    int h = image->height;
    int w = image->width;
    if (const RmgROI *roi = image->roi) {
        h = minOf(rmg::sub32(image->height, roi->yOffset), roi->height);
        w = minOf(rmg::sub32(image->width, roi->xOffset), roi->width);
    }
    *rows = minOf(*rows, h);
    *columns = minOf(*columns, w);
}

bool ownCheckImageBlockMask(const RmgImage *image, int headerMask, const char *name,
                            const char *funcName) {
    const int step = blockFault(image, headerMask);
    if (step == 0) return true;
    return raise(funcName, kBlockTexts[step - 1], "dstImage", name, __LINE__);
}

bool ownCheckImageBlock(const RmgImage *image, const char *name, const char *funcName) {
    return ownCheckImageBlockMask(image, rmgBadImageHeader(image), name, funcName);
}

bool ownCheckCoiRule(const RmgImage *srcImage, const char *srcName, const RmgImage *dstImage,
                     const char *funcName) {
    const RmgROI *src = srcImage->roi;
    const RmgROI *dst = dstImage->roi;
    if (dst == nullptr) {
        if (src != nullptr && src->coi > 0)
            return raise(funcName, "srcImage->roi->coi > 0 && dstImage->roi == 0", "srcImage",
                         srcName, __LINE__);
    } else if (dst->coi > 0) {
        if (src == nullptr)
            return raise(funcName, "dstImage->roi->coi > 0 && srcImage->roi == 0", "srcImage",
                         srcName, __LINE__);
        if (src->coi == 0)
            return raise(funcName, "dstImage->roi->coi > 0 && srcImage->roi->coi == 0",
                         "srcImage", srcName, __LINE__);
    }
    return true;
}

// v is always finite and far inside the range of a float here: the kernels
// pass sums and products of samples (at most 65535) and alphas scaled to at
// most 1.0000001, a quotient only by a den above eps (about 1.2e-10), and
// den times M; so |v| stays below 1e21 and the conversion to float is
// defined. The bit pattern is read through memcpy.
int ownRoundSample(double v, int maxValue) {
    const float sum = static_cast<float>(v + 8388608.0);
    uint32_t bits = 0;
    std::memcpy(&bits, &sum, sizeof bits);
    const auto low = static_cast<int>(bits & 0x7FFFFFu);
    return low > maxValue ? maxValue : low;
}

OwnSampleStream ownSampleStream(const RmgImage *image, int channel, int64_t sampleBytes) {
    ownChannelCursor c;
    ownSetChannelCursor(image, image->roi, channel, &c);
    OwnSampleStream s;
    s.data = c.data;
    s.start = int64_t{c.offset} * sampleBytes;
    s.row = int64_t{c.rowStep} * sampleBytes;
    s.channel = int64_t{c.channelStep} * sampleBytes;
    s.pixel = int64_t{c.pixelStep} * sampleBytes;
    return s;
}

int ownRowsInside(const OwnSampleStream &s, int size, int firstChannel, int lastChannel,
                  int columns, int rows, int64_t sampleBytes) {
    if (s.data == nullptr || size <= 0) return 0;
    const int64_t channelSpan = static_cast<int64_t>(lastChannel - firstChannel) * s.channel;
    const int64_t pixelSpan = static_cast<int64_t>(columns - 1) * s.pixel;
    const int64_t first = s.start + static_cast<int64_t>(firstChannel) * s.channel;
    const int64_t lo = first + (channelSpan < 0 ? channelSpan : 0) + (pixelSpan < 0 ? pixelSpan : 0);
    const int64_t hi = first + (channelSpan > 0 ? channelSpan : 0) + (pixelSpan > 0 ? pixelSpan : 0);
    const int64_t last = static_cast<int64_t>(size) - sampleBytes;
    if (lo < 0 || hi > last) return 0;
    int64_t fit = rows;
    if (s.row > 0) fit = (last - hi) / s.row + 1;
    if (s.row < 0) fit = lo / -s.row + 1;
    return fit < rows ? static_cast<int>(fit) : rows;
}
