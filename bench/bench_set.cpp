// rmgSet beside memset of the same bytes: whole 3-channel images of
// 3840x2160 and 512x512 at 8u, 16u and 32s, and the fill of channel 2 of
// the same images (a channel of interest in pixel order, over the same
// bytes).
#include <cstddef>
#include <string>

#include "bench/benchutil.h"
#include "rmg.h"

namespace {

using Size = rmgbench::ImageSize;
using Depth = rmgbench::ImageDepth;

// A header over the arena; `roi` may be null.
RmgImage *header(const Size &size, const Depth &depth, RmgROI *roi) {
    RmgImage *image = rmgbench::imageHeader(size, depth, roi, nullptr);
    image->imageData = rmgbench::arena(static_cast<size_t>(image->imageSize));
    return image;
}

// rmgSet as an application meets it: the kernel form the processor runs.
void registerSet(const std::string &name, const Size &size, const Depth &depth, int coi) {
    rmgbench::registerTimed(name, [size, depth, coi](benchmark::State &state) {
        RmgROI roi{coi, 0, 0, size.height, size.width};
        RmgImage *image = header(size, depth, coi != 0 ? &roi : nullptr);
        const size_t bytes = static_cast<size_t>(image->imageSize);
        rmgbench::timeBeside(state, rmgbench::memsetOf(bytes),
                             [&] { rmgSet(image, 0x5A, nullptr); });
        rmgbench::releaseHeader(image);
        return bytes;
    });
}

bool registerAll() {
    for (const Size &size : rmgbench::kImageSizes) {
        for (const Depth &depth : rmgbench::kImageDepths) {
            const std::string tail = std::string(depth.name) + "/" + size.name;
            const int rowStep = rmgWidthStep(RMG_DATA_PIXEL, depth.depth, 8, 3, size.width);
            rmgbench::registerMemset("Set" + tail,
                                     static_cast<size_t>(rowStep) * static_cast<size_t>(size.height));
            registerSet("Set" + tail + "/rmgSet", size, depth, 0);
            registerSet("Set" + tail + "/rmgSetCoi2", size, depth, 2);
        }
    }
    return true;
}

const bool kRegistered = registerAll();

}  // namespace
