// rmgAlphaCompositeC and rmgAlphaComposite, operator over, beside memcpy of
// the destination's bytes: 4-channel images with their alpha in channel 4,
// 8u and 16u, 3840x2160 and 512x512, in pixel order (the integer kernels)
// and in plane order (rmgAlphaComposite takes the planar rows there;
// rmgAlphaCompositeC has no planar form and stays with the integer ones).
// The constant form reads the alpha of A from its channel and takes 128
// for B.
#include <cstddef>
#include <cstdlib>
#include <string>

#include "bench/benchutil.h"
#include "rmg.h"

namespace {

using rmgbench::ImageDepth;
using rmgbench::ImageSize;

constexpr ImageSize kSizes[] = {{"3840x2160x4", 2160, 3840}, {"512x512x4", 512, 512}};
constexpr ImageDepth kDepths[] = {{"8u", RMG_DEPTH_8U}, {"16u", RMG_DEPTH_16U}};
constexpr int kOrders[] = {RMG_DATA_PIXEL, RMG_DATA_PLANE};
constexpr const char *kOrderNames[] = {"pixel", "plane"};

size_t imageBytes(const ImageSize &size, const ImageDepth &depth, int order) {
    const int planes = order == RMG_DATA_PLANE ? 4 : 1;
    return static_cast<size_t>(rmgWidthStep(order, depth.depth, 8, 4, size.width)) *
           static_cast<size_t>(size.height) * planes;
}

RmgImage *rgbaHeader(const ImageSize &size, const ImageDepth &depth, int order) {
    RmgImage *image = rmgCreateImageHeader(4, 4, depth.depth, "RGBA", "RGBA", order,
                                           RMG_ORIGIN_TL, 8, size.height, size.width, nullptr,
                                           nullptr, nullptr);
    if (image == nullptr) std::abort();
    return image;
}

// The destination in the arena's first half, source A in its second half,
// source B in a buffer of its own, filled once so that page faults stay
// out of the timings. `composite` runs the operation on them.
template <class Composite>
void registerComposite(const std::string &name, const ImageSize &size, const ImageDepth &depth,
                       int order, Composite composite) {
    rmgbench::registerTimed(name, [size, depth, order, composite](benchmark::State &state) {
        const size_t bytes = imageBytes(size, depth, order);
        RmgImage *a = rgbaHeader(size, depth, order);
        RmgImage *b = rgbaHeader(size, depth, order);
        RmgImage *d = rgbaHeader(size, depth, order);
        a->imageData = rmgbench::arena(bytes, 1);
        d->imageData = rmgbench::arena(bytes, 0);
        rmgAllocateImage(b, 0x40);
        if (b->imageData == nullptr) std::abort();
        rmgbench::timeBeside(state, rmgbench::memcpyOf(bytes), [&] { composite(a, b, d); });
        rmgbench::releaseHeader(a);
        rmgbench::releaseHeader(d);
        rmgDeallocate(b, RMG_DEALLOC_ALL);
        return bytes;
    });
}

bool registerAll() {
    for (const ImageSize &size : kSizes) {
        for (const ImageDepth &depth : kDepths) {
            for (int o = 0; o < 2; ++o) {
                const std::string tail =
                    std::string("over/") + depth.name + "/" + size.name + "/" + kOrderNames[o];
                const size_t bytes = imageBytes(size, depth, kOrders[o]);
                rmgbench::registerMemcpy("AlphaComposite/" + tail, bytes);
                registerComposite("AlphaCompositeC/" + tail, size, depth, kOrders[o],
                                  [](RmgImage *a, RmgImage *b, RmgImage *d) {
                                      rmgAlphaCompositeC(a, b, d, RMG_COMPOSITE_OVER, -1, 128, 0,
                                                         0, nullptr);
                                  });
                registerComposite("AlphaComposite/" + tail, size, depth, kOrders[o],
                                  [](RmgImage *a, RmgImage *b, RmgImage *d) {
                                      rmgAlphaComposite(a, b, d, RMG_COMPOSITE_OVER, nullptr,
                                                        nullptr, nullptr, 0, 0, nullptr);
                                  });
            }
        }
    }
    return true;
}

const bool kRegistered = registerAll();

}  // namespace
