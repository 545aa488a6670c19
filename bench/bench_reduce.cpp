// rmgReduceBits beside memcpy of the destination's bytes: a 3-channel
// 16u image into 8u without dither (the direct path), with noise, and with
// each dither, at 3840x2160 and 512x512.
#include <cstddef>
#include <string>

#include "bench/benchutil.h"
#include "rmg.h"

namespace {

RmgImage *header(const rmgbench::ImageSize &size, unsigned int depth, unsigned char *data) {
    return rmgbench::imageHeader(size, rmgbench::ImageDepth{"", depth}, nullptr, data);
}

struct Variant {
    const char *name;
    int jitterType, dither;
};
const Variant kVariants[] = {{"none", 0, RMG_DITHER_NONE},     {"jitter4", 4, RMG_DITHER_NONE},
                             {"fs", 0, RMG_DITHER_FS},         {"jjn", 0, RMG_DITHER_JJN},
                             {"stucki", 0, RMG_DITHER_STUCKI}, {"bayer", 0, RMG_DITHER_BAYER}};

void registerReduce(const rmgbench::ImageSize &size, const Variant &v) {
    const std::string name = std::string("ReduceBits/16u8u/") + v.name + "/" + size.name;
    rmgbench::registerForms(name, [=](benchmark::State &state) {
        const size_t srcBytes = static_cast<size_t>(rmgWidthStep(RMG_DATA_PIXEL, RMG_DEPTH_16U, 8, 3, size.width)) *
                                static_cast<size_t>(size.height);
        const size_t dstBytes = static_cast<size_t>(rmgWidthStep(RMG_DATA_PIXEL, RMG_DEPTH_8U, 8, 3, size.width)) *
                                static_cast<size_t>(size.height);
        RmgImage *src = header(size, RMG_DEPTH_16U, rmgbench::arena(srcBytes, 0));
        RmgImage *dst = header(size, RMG_DEPTH_8U, rmgbench::arena(srcBytes, 1));
        rmgbench::timeBeside(state, rmgbench::memcpyOf(dstBytes),
                             [&] { rmgReduceBits(src, dst, v.jitterType, v.dither, 4, nullptr); });
        rmgbench::releaseHeader(src);
        rmgbench::releaseHeader(dst);
        return dstBytes;
    });
}

const bool kRegistered = [] {
    for (const auto &size : rmgbench::kImageSizes)
        for (const Variant &v : kVariants) registerReduce(size, v);
    return true;
}();

}  // namespace
