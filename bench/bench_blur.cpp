// rmgBlur beside memcpy of the destination's bytes: boxes of 3x3 and 7x7
// (anchors at the centre) on 3-channel images of 3840x2160 and 512x512 at
// 8u and 16u, pixel order as the other operations' benchmarks, and plane
// order beside it (elements one after the other, where the column sums
// run in vectors too). Once per kernel form.
#include <cstddef>
#include <string>

#include "bench/benchutil.h"
#include "rmg.h"

namespace {

using Size = rmgbench::ImageSize;
using Depth = rmgbench::ImageDepth;

RmgImage *header(const Size &size, const Depth &depth, int dataOrder, int part) {
    RmgImage *image = rmgbench::imageHeader(size, depth, nullptr, nullptr);
    image->dataOrder = dataOrder;
    image->widthStep = rmgWidthStep(dataOrder, depth.depth, image->align, 3, size.width);
    image->imageSize = rmgWidthStep(dataOrder, depth.depth, image->align, 3, size.width) *
                       size.height * (dataOrder == RMG_DATA_PLANE ? 3 : 1);
    image->imageData = rmgbench::arena(static_cast<size_t>(image->imageSize), part);
    rmgSetBorderMode(image, RMG_BORDER_REPLICATE, 15, 0);
    return image;
}

void registerBlur(const std::string &name, const Size &size, const Depth &depth, int dataOrder,
                  int box) {
    rmgbench::registerForms(name, [size, depth, dataOrder, box](benchmark::State &state) {
        RmgImage *src = header(size, depth, dataOrder, 1);
        RmgImage *dst = header(size, depth, dataOrder, 0);
        const size_t bytes = static_cast<size_t>(dst->imageSize);
        rmgbench::timeBeside(state, rmgbench::memcpyOf(bytes), [&] {
            rmgBlur(src, dst, box, box, box / 2, box / 2, nullptr);
        });
        rmgbench::releaseHeader(src);
        rmgbench::releaseHeader(dst);
        return bytes;
    });
}

bool registerAll() {
    for (const Size &size : rmgbench::kImageSizes)
        for (const Depth &depth : rmgbench::kImageDepths) {
            if (depth.depth == RMG_DEPTH_32S) continue;
            for (int box : {3, 7})
                for (int order : {RMG_DATA_PIXEL, RMG_DATA_PLANE}) {
                    const std::string tail = std::string(depth.name) + "/" + size.name + "/" +
                                             std::to_string(box) + "x" + std::to_string(box) +
                                             (order == RMG_DATA_PLANE ? "/plane" : "/pixel");
                    registerBlur("Blur" + tail + "/rmgBlur", size, depth, order, box);
                }
        }
    return true;
}

const bool kRegistered = registerAll();

}  // namespace
