// rmgDecimate beside memcpy of the destination's bytes: 3-channel 8u and
// 16u images of 3840x2160 and 512x512 shrunk by 2 (whole on both axes, so
// every interpolation samples nearest) and by 3/2 (linear and cubic run
// their two-axis kernels), from one image into another.
#include <cstddef>
#include <string>

#include "bench/benchutil.h"
#include "rmg.h"

namespace {

struct Ratio {
    const char *name;
    int u, l;
};
constexpr Ratio kRatios[] = {{"2x", 1, 2}, {"1.5x", 2, 3}};

void registerDecimate(const rmgbench::ImageSize &size, const rmgbench::ImageDepth &depth,
                      const Ratio &ratio, int interp) {
    const char *interpName = interp == RMG_INTER_NN ? "nearest"
                             : interp == RMG_INTER_LINEAR ? "linear"
                                                          : "cubic";
    const std::string name = std::string("Decimate/") + ratio.name + "/" + interpName + "/" +
                             depth.name + "/" + size.name;
    rmgbench::registerForms(name, [size, depth, ratio, interp](benchmark::State &state) {
        const rmgbench::ImageSize small{size.name, size.height * ratio.u / ratio.l,
                                        size.width * ratio.u / ratio.l};
        const size_t srcBytes = static_cast<size_t>(
            rmgWidthStep(RMG_DATA_PIXEL, depth.depth, 8, 3, size.width)) *
            static_cast<size_t>(size.height);
        const size_t bytes = static_cast<size_t>(
            rmgWidthStep(RMG_DATA_PIXEL, depth.depth, 8, 3, small.width)) *
            static_cast<size_t>(small.height);
        const size_t arenaHalf = srcBytes > bytes ? srcBytes : bytes;
        RmgImage *src = rmgbench::imageHeader(size, depth, nullptr, rmgbench::arena(arenaHalf, 1));
        RmgImage *dst = rmgbench::imageHeader(small, depth, nullptr, rmgbench::arena(arenaHalf, 0));
        rmgbench::timeBeside(state, rmgbench::memcpyOf(bytes), [&] {
            rmgDecimate(src, dst, ratio.u, ratio.l, ratio.u, ratio.l, interp, nullptr);
        });
        rmgbench::releaseHeader(src);
        rmgbench::releaseHeader(dst);
        return bytes;
    });
}

const bool kRegistered = [] {
    for (const auto &size : rmgbench::kImageSizes)
        for (const auto &depth : rmgbench::kImageDepths) {
            if (depth.depth == RMG_DEPTH_32S) continue;
            for (const auto &ratio : kRatios)
                for (int interp : {RMG_INTER_NN, RMG_INTER_LINEAR, RMG_INTER_CUBIC})
                    registerDecimate(size, depth, ratio, interp);
        }
    return true;
}();

}  // namespace
