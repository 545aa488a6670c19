// rmgZoom beside memcpy of the destination's bytes: 2x enlargements of
// 3-channel 8u and 16u images, 1920x1080 to 3840x2160 and 256x256 to
// 512x512, with nearest neighbour, linear and cubic interpolation.
#include <algorithm>
#include <cstddef>
#include <string>

#include "bench/benchutil.h"
#include "rmg.h"

namespace {

struct Sizes {
    const char *name;
    rmgbench::ImageSize src, dst;
};
constexpr Sizes kSizes[] = {
    {"1920x1080to3840x2160x3", {"", 1080, 1920}, {"", 2160, 3840}},
    {"256x256to512x512x3", {"", 256, 256}, {"", 512, 512}},
};
constexpr struct {
    const char *name;
    int inter;
} kInters[] = {{"nn", RMG_INTER_NN}, {"linear", RMG_INTER_LINEAR}, {"cubic", RMG_INTER_CUBIC}};

void registerCase(const Sizes &size, const rmgbench::ImageDepth &depth, int inter,
                  const std::string &name) {
    rmgbench::registerForms(name, [size, depth, inter](benchmark::State &state) {
        const auto stepOf = [&](const rmgbench::ImageSize &s) {
            return static_cast<size_t>(rmgWidthStep(RMG_DATA_PIXEL, depth.depth, 8, 3, s.width)) *
                   static_cast<size_t>(s.height);
        };
        const size_t bytes = stepOf(size.dst);
        const size_t half = std::max(bytes, stepOf(size.src));
        RmgImage *src = rmgbench::imageHeader(size.src, depth, nullptr, rmgbench::arena(half, 1));
        RmgImage *dst = rmgbench::imageHeader(size.dst, depth, nullptr, rmgbench::arena(half, 0));
        rmgbench::timeBeside(state, rmgbench::memcpyOf(bytes),
                             [&] { rmgZoom(src, dst, 2, 1, 2, 1, inter, nullptr); });
        rmgbench::releaseHeader(src);
        rmgbench::releaseHeader(dst);
        return bytes;
    });
}

bool registerAll() {
    for (const Sizes &size : kSizes)
        for (int d = 0; d < 2; ++d)
            for (const auto &inter : kInters)
                registerCase(size, rmgbench::kImageDepths[d], inter.inter,
                             std::string("zoom_") + inter.name + "/" + rmgbench::kImageDepths[d].name +
                                 "/" + size.name);
    return true;
}

const bool kRegistered = registerAll();

}  // namespace
