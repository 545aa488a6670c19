// rmgColorToGray and rmgGrayToColor beside memcpy of the destination's
// bytes: 8u, 16u and 32s (32s colour into 16u gray), 3-channel images in
// pixel and plane order, at 3840x2160 and 512x512.
#include <algorithm>
#include <cstddef>
#include <string>

#include "bench/benchutil.h"
#include "rmg.h"

namespace {

RmgImage *header(const rmgbench::ImageSize &size, unsigned int depth, int channels, int order,
                 const char *model, const char *seq, unsigned char *data) {
    RmgImage *image = rmgCreateImageHeader(channels, 0, depth, model, seq, order, RMG_ORIGIN_TL, 8,
                                           size.height, size.width, nullptr, nullptr, nullptr);
    if (image == nullptr) std::abort();
    image->imageData = data;
    return image;
}

size_t bytesOf(const rmgbench::ImageSize &size, unsigned int depth, int channels, int order) {
    return static_cast<size_t>(rmgWidthStep(order, depth, 8, channels, size.width)) *
           static_cast<size_t>(size.height) * static_cast<size_t>(order == RMG_DATA_PLANE ? channels : 1);
}

void registerColor(const rmgbench::ImageSize &size, const rmgbench::ImageDepth &depth, int order,
                   bool toGray) {
    const unsigned int grayDepth = depth.depth == RMG_DEPTH_32S && toGray ? RMG_DEPTH_16U : depth.depth;
    const std::string name = std::string(toGray ? "ColorToGray/" : "GrayToColor/") + depth.name +
                             (order == RMG_DATA_PLANE ? "/plane/" : "/pixel/") + size.name;
    rmgbench::registerForms(name, [=](benchmark::State &state) {
        const size_t colourBytes = bytesOf(size, depth.depth, 3, order);
        const size_t grayBytes = bytesOf(size, grayDepth, 1, RMG_DATA_PIXEL);
        const size_t dstBytes = toGray ? grayBytes : colourBytes;
        const size_t most = std::max(colourBytes, grayBytes);
        RmgImage *colour = header(size, depth.depth, 3, order, "RGB", "BGR",
                                  rmgbench::arena(most, toGray ? 1 : 0));
        RmgImage *gray = header(size, grayDepth, 1, RMG_DATA_PIXEL, "GRAY", "G",
                                rmgbench::arena(most, toGray ? 0 : 1));
        if (toGray)
            rmgbench::timeBeside(state, rmgbench::memcpyOf(dstBytes),
                                 [&] { rmgColorToGray(colour, gray, nullptr); });
        else
            rmgbench::timeBeside(state, rmgbench::memcpyOf(dstBytes),
                                 [&] { rmgGrayToColor(gray, colour, 0.25f, 0.5f, 0.25f, nullptr); });
        rmgbench::releaseHeader(colour);
        rmgbench::releaseHeader(gray);
        return dstBytes;
    });
}

const bool kRegistered = [] {
    for (bool toGray : {true, false})
        for (const auto &size : rmgbench::kImageSizes)
            for (const auto &depth : rmgbench::kImageDepths)
                for (int order : {RMG_DATA_PIXEL, RMG_DATA_PLANE}) registerColor(size, depth, order, toGray);
    return true;
}();

}  // namespace
