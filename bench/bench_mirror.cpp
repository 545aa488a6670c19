// rmgMirror beside memcpy of the same bytes: each flip of whole 3-channel
// images of 8u, 16u and 32s, at 3840x2160 and 512x512, from one image into
// another.
#include <cstddef>
#include <string>

#include "bench/benchutil.h"
#include "rmg.h"

namespace {

void registerMirror(const rmgbench::ImageSize &size, const rmgbench::ImageDepth &depth, int flip) {
    const char *flipName = flip == 0 ? "rows" : flip == 1 ? "columns" : "both";
    const std::string name =
        std::string("Mirror/") + flipName + "/" + depth.name + "/" + size.name;
    rmgbench::registerForms(name, [size, depth, flip](benchmark::State &state) {
        const size_t bytes = static_cast<size_t>(
            rmgWidthStep(RMG_DATA_PIXEL, depth.depth, 8, 3, size.width)) *
            static_cast<size_t>(size.height);
        RmgImage *src = rmgbench::imageHeader(size, depth, nullptr, rmgbench::arena(bytes, 1));
        RmgImage *dst = rmgbench::imageHeader(size, depth, nullptr, rmgbench::arena(bytes, 0));
        rmgbench::timeBeside(state, rmgbench::memcpyOf(bytes),
                             [&] { rmgMirror(src, dst, flip, nullptr); });
        rmgbench::releaseHeader(src);
        rmgbench::releaseHeader(dst);
        return bytes;
    });
}

const bool kRegistered = [] {
    for (const auto &size : rmgbench::kImageSizes)
        for (const auto &depth : rmgbench::kImageDepths)
            for (int flip : {0, 1, -1}) registerMirror(size, depth, flip);
    return true;
}();

}  // namespace
