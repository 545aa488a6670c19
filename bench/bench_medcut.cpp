// rmgMedianCutPalette beside memcpy of the bytes it writes (the bitmap
// header and a 256-entry table): 256 entries from 3-channel 8u images of
// 3840x2160 and 512x512, random noise and a smooth picture.
#include <cstddef>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "bench/benchutil.h"
#include "dib/rmgdib_medcut.h"
#include "rmg.h"

namespace {

constexpr size_t kDibBytes = sizeof(BITMAPINFOHEADER) + 4 * 256;

void fillImage(RmgImage *image, bool smooth) {
    std::mt19937 rng(7);
    for (int y = 0; y < image->height; ++y) {
        unsigned char *row = image->imageData + static_cast<size_t>(y) * image->widthStep;
        for (int x = 0; x < image->width; ++x) {
            unsigned char *p = row + 3 * x;
            if (smooth) {
                // Slow ramps in three directions with a little noise: the
                // run of one bin goes on for a few pixels at a time.
                p[0] = static_cast<unsigned char>(x * 255 / image->width + (rng() & 3));
                p[1] = static_cast<unsigned char>(y * 255 / image->height + (rng() & 3));
                p[2] = static_cast<unsigned char>((x + y) * 127 / (image->width + image->height) +
                                                  64 + (rng() & 3));
            } else {
                const uint32_t v = rng();
                p[0] = static_cast<unsigned char>(v);
                p[1] = static_cast<unsigned char>(v >> 8);
                p[2] = static_cast<unsigned char>(v >> 16);
            }
        }
    }
}

void registerMedianCut(const rmgbench::ImageSize &size, bool smooth) {
    const std::string name =
        std::string("MedianCut/256/") + (smooth ? "smooth" : "random") + "/8u/" + size.name;
    rmgbench::registerForms(name, [size, smooth](benchmark::State &state) {
        const rmgbench::ImageDepth depth{"8u", RMG_DEPTH_8U};
        const size_t imageBytes =
            static_cast<size_t>(rmgWidthStep(RMG_DATA_PIXEL, RMG_DEPTH_8U, 8, 3, size.width)) *
            static_cast<size_t>(size.height);
        RmgImage *src = rmgbench::imageHeader(size, depth, nullptr, rmgbench::arena(imageBytes, 1));
        src->imageSize = static_cast<int>(imageBytes);
        fillImage(src, smooth);
        std::vector<unsigned char> dib(kDibBytes + 64, 0);
        auto *header = reinterpret_cast<BITMAPINFOHEADER *>(dib.data());
        header->biSize = sizeof(BITMAPINFOHEADER);
        header->biPlanes = 1;
        header->biBitCount = 8;
        rmgbench::timeBeside(state, rmgbench::memcpyOf(kDibBytes), [&] {
            if (rmgMedianCutPalette(header, src) != 1) state.SkipWithError("palette failed");
        });
        rmgbench::releaseHeader(src);
        return kDibBytes;
    });
}

const bool kRegistered = [] {
    for (const auto &size : rmgbench::kImageSizes)
        for (bool smooth : {false, true}) registerMedianCut(size, smooth);
    return true;
}();

}  // namespace
