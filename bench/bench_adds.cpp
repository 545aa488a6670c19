// rmgAddS and rmgSubtractS beside memcpy of the same bytes (an operation
// reads one buffer and writes another, as memcpy does): 3-channel
// pixel-order images of 3840x2160 and 512x512 at 8u, 16u and 32s, as whole
// images (one flat run), with a ROI one pixel inside the edge (row by row),
// and with a channel of interest (one channel of the same image).
#include <cstddef>
#include <string>

#include "bench/benchutil.h"
#include "rmg.h"

namespace {

using Size = rmgbench::ImageSize;
using Depth = rmgbench::ImageDepth;

enum Region { kWhole, kRoi, kCoi };
constexpr const char *kRegionNames[] = {"whole", "roi", "coi"};

// Bytes an operation reads (and writes) in the region.
size_t regionBytes(const Size &size, const Depth &depth, Region region) {
    const size_t element = (depth.depth & 0xFFu) / 8;
    if (region == kWhole)
        return static_cast<size_t>(rmgWidthStep(RMG_DATA_PIXEL, depth.depth, 8, 3, size.width)) *
               static_cast<size_t>(size.height);
    if (region == kRoi)
        return static_cast<size_t>(size.height - 2) * static_cast<size_t>(size.width - 2) * 3 *
               element;
    return static_cast<size_t>(size.height) * static_cast<size_t>(size.width) * element;
}

void registerOp(const std::string &name, const Size &size, const Depth &depth, Region region,
                bool subtract) {
    rmgbench::registerForms(name, [size, depth, region, subtract](benchmark::State &state) {
        RmgROI srcRoi{0, 1, 1, size.height - 2, size.width - 2};
        RmgROI dstRoi = srcRoi;
        if (region == kCoi) {
            srcRoi = RmgROI{2, 0, 0, size.height, size.width};
            dstRoi = srcRoi;
        }
        const bool roi = region != kWhole;
        const size_t bytes = regionBytes(size, depth, kWhole);
        RmgImage *src = rmgbench::imageHeader(size, depth, roi ? &srcRoi : nullptr,
                                              rmgbench::arena(bytes, 1));
        RmgImage *dst = rmgbench::imageHeader(size, depth, roi ? &dstRoi : nullptr,
                                              rmgbench::arena(bytes, 0));
        rmgbench::timeBeside(state, rmgbench::memcpyOf(regionBytes(size, depth, region)), [&] {
            if (subtract)
                rmgSubtractS(src, dst, 7, 0, nullptr);
            else
                rmgAddS(src, dst, 7, nullptr);
        });
        rmgbench::releaseHeader(src);
        rmgbench::releaseHeader(dst);
        return regionBytes(size, depth, region);
    });
}

bool registerAll() {
    for (const Size &size : rmgbench::kImageSizes) {
        for (const Depth &depth : rmgbench::kImageDepths) {
            const std::string tail = std::string(depth.name) + "/" + size.name;
            rmgbench::registerMemcpy("AddSub" + tail, regionBytes(size, depth, kWhole));
            for (Region region : {kWhole, kRoi, kCoi}) {
                const std::string where = std::string("/") + kRegionNames[region];
                registerOp("AddS" + tail + where, size, depth, region, false);
                registerOp("SubtractS" + tail + where, size, depth, region, true);
            }
        }
    }
    return true;
}

const bool kRegistered = registerAll();

}  // namespace
