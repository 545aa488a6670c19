// rmgAndS and rmgAnd beside memcpy of the same bytes: 3-channel images of
// 3840x2160 and 512x512 at 8u, 16u and 32s, as whole images (the flat
// paths), with a ROI 16 pixels in from every edge (the byte-range rows),
// and with a channel of interest in pixel order (channel 2 of 3, over the
// same bytes as the whole image).
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <string>

#include "bench/benchutil.h"
#include "rmg.h"

namespace {

using rmgbench::ImageDepth;
using rmgbench::ImageSize;

// The region of a benchmark: the whole image, a ROI 16 pixels in from
// each edge, or channel 2 of the whole image.
enum Region { kWhole, kRoi, kCoi };
constexpr const char *kRegionNames[] = {"whole", "roi", "coi"};

// The second source of rmgAnd: a block of its own beside the arena's two
// halves, written once so that page faults stay out of the timings.
unsigned char *secondSource(size_t bytes) {
    static unsigned char *block = nullptr;
    static size_t size = 0;
    if (bytes > size) {
        std::free(block);
        size = (bytes + 4095) & ~size_t{4095};
        block = static_cast<unsigned char *>(std::aligned_alloc(64, size));
        if (block == nullptr) std::abort();
        std::memset(block, 0x33, size);
    }
    return block;
}

// A header over `data` with the region's ROI (or none).
RmgImage *header(const ImageSize &size, const ImageDepth &depth, Region region, RmgROI *roi,
                 unsigned char *data) {
    *roi = region == kRoi ? RmgROI{0, 16, 16, size.height - 32, size.width - 32}
                          : RmgROI{2, 0, 0, size.height, size.width};
    return rmgbench::imageHeader(size, depth, region == kWhole ? nullptr : roi, data);
}

// Bytes of a region: the image's for whole images and a channel, the ROI's
// rows for a ROI.
size_t regionBytes(const ImageSize &size, const ImageDepth &depth, Region region) {
    const size_t element = (depth.depth & 0xFF) / 8;
    if (region == kRoi)
        return static_cast<size_t>(size.height - 32) * static_cast<size_t>(size.width - 32) * 3 *
               element;
    const int rowStep = rmgWidthStep(RMG_DATA_PIXEL, depth.depth, 8, 3, size.width);
    return static_cast<size_t>(rowStep) * static_cast<size_t>(size.height);
}

void registerAndS(const std::string &name, const ImageSize &size, const ImageDepth &depth,
                  Region region) {
    rmgbench::registerForms(name, [size, depth, region](benchmark::State &state) {
        const size_t bytes = regionBytes(size, depth, kWhole);
        RmgROI srcRoi, dstRoi;
        RmgImage *src = header(size, depth, region, &srcRoi, rmgbench::arena(bytes, 1));
        RmgImage *dst = header(size, depth, region, &dstRoi, rmgbench::arena(bytes, 0));
        rmgbench::timeBeside(state, rmgbench::memcpyOf(regionBytes(size, depth, region)),
                             [&] { rmgAndS(src, dst, 0x5A5A5A5A, nullptr); });
        rmgbench::releaseHeader(src);
        rmgbench::releaseHeader(dst);
        return regionBytes(size, depth, region);
    });
}

void registerAnd(const std::string &name, const ImageSize &size, const ImageDepth &depth,
                 Region region) {
    rmgbench::registerForms(name, [size, depth, region](benchmark::State &state) {
        const size_t bytes = regionBytes(size, depth, kWhole);
        RmgROI aRoi, bRoi, dRoi;
        RmgImage *a = header(size, depth, region, &aRoi, rmgbench::arena(bytes, 1));
        RmgImage *b = header(size, depth, region, &bRoi, secondSource(bytes));
        RmgImage *d = header(size, depth, region, &dRoi, rmgbench::arena(bytes, 0));
        rmgbench::timeBeside(state, rmgbench::memcpyOf(regionBytes(size, depth, region)),
                             [&] { rmgAnd(a, b, d, nullptr); });
        rmgbench::releaseHeader(a);
        rmgbench::releaseHeader(b);
        rmgbench::releaseHeader(d);
        return regionBytes(size, depth, region);
    });
}

bool registerAll() {
    for (const ImageSize &size : rmgbench::kImageSizes) {
        for (const ImageDepth &depth : rmgbench::kImageDepths) {
            for (Region region : {kWhole, kRoi, kCoi}) {
                const std::string tail =
                    std::string(depth.name) + "/" + size.name + "/" + kRegionNames[region];
                rmgbench::registerMemcpy("And" + tail, regionBytes(size, depth, region));
                registerAndS("AndS" + tail, size, depth, region);
                registerAnd("And" + tail, size, depth, region);
            }
        }
    }
    return true;
}

const bool kRegistered = registerAll();

}  // namespace
