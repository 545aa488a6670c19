// rmgCopy and rmgExchange beside memcpy of the same bytes: whole 3-channel
// 8-bit images of 3840x2160 and 512x512 (the copy against one memcpy, the
// exchange against two, one each way), a ROI copy (half the image's size
// from (1, 1), rows that are no longer one run) and coi copies (channel 2
// of the image gathered into a 1-channel image, scattered back, and into
// channel 3 of a second 3-channel image).
#include <cstddef>
#include <cstring>
#include <string>

#include "bench/benchutil.h"
#include "rmg.h"

namespace {

using Size = rmgbench::ImageSize;

// A header of `channels` 8u channels over part `part` of the arena.
RmgImage *header(const Size &size, int channels, int part, RmgROI *roi) {
    const size_t whole = static_cast<size_t>(
        rmgWidthStep(RMG_DATA_PIXEL, RMG_DEPTH_8U, 8, 3, size.width) * size.height);
    return rmgbench::imageHeader(size, rmgbench::kImageDepths[0], roi,
                                 rmgbench::arena(whole, part), channels);
}

// Source in the arena's second half, destination in its first. `bytes` is what one
// call writes, for the throughput.
struct Case {
    const char *name;
    int srcChannels, dstChannels;
    RmgROI srcRoi, dstRoi;  // width 0: none
    bool exchange;
};

size_t writtenBytes(const Size &size, const Case &c) {
    const int channels = c.dstRoi.coi != 0 || c.dstChannels == 1 ? 1 : c.dstChannels;
    const RmgROI &r = c.dstRoi.width != 0 ? c.dstRoi : c.srcRoi;
    const size_t columns = r.width != 0 ? static_cast<size_t>(r.width) : size.width;
    const size_t rows = r.width != 0 ? static_cast<size_t>(r.height) : size.height;
    return columns * rows * static_cast<size_t>(channels);
}

// Two memcpy calls of `bytes` bytes, one each way between the arena's two
// halves: the yardstick of an exchange.
rmgbench::Yardstick twoMemcpy(size_t bytes) {
    return {"2memcpy", [bytes] {
                unsigned char *a = rmgbench::arena(bytes, 0);
                unsigned char *b = rmgbench::arena(bytes, 1);
                std::memcpy(a, b, bytes);
                rmgbench::keep(a);
                std::memcpy(b, a, bytes);
                rmgbench::keep(b);
            }};
}

void registerCase(const Size &size, const Case &c) {
    const std::string name = std::string(c.name) + "/" + size.name;
    rmgbench::registerForms(name, [size, c](benchmark::State &state) {
        RmgROI srcRoi = c.srcRoi;
        RmgROI dstRoi = c.dstRoi;
        RmgImage *src = header(size, c.srcChannels, 1, srcRoi.width != 0 ? &srcRoi : nullptr);
        RmgImage *dst = header(size, c.dstChannels, 0, dstRoi.width != 0 ? &dstRoi : nullptr);
        const size_t bytes = writtenBytes(size, c);
        rmgbench::timeBeside(state, c.exchange ? twoMemcpy(bytes) : rmgbench::memcpyOf(bytes),
                             [&] {
                                 if (c.exchange)
                                     rmgExchange(src, dst, nullptr);
                                 else
                                     rmgCopy(src, dst, nullptr);
                             });
        rmgbench::releaseHeader(src);
        rmgbench::releaseHeader(dst);
        return bytes;
    });
}

bool registerAll() {
    for (const Size &size : rmgbench::kImageSizes) {
        const size_t bytes = static_cast<size_t>(size.width) * 3 * static_cast<size_t>(size.height);
        const RmgROI none{0, 0, 0, 0, 0};
        const RmgROI half{0, 1, 1, size.height / 2, size.width / 2};
        const RmgROI coi2{2, 0, 0, size.height, size.width};
        const RmgROI coi3{3, 0, 0, size.height, size.width};
        rmgbench::registerMemcpy(std::string("Copy8u/") + size.name, bytes);
        registerCase(size, Case{"Copy8u", 3, 3, none, none, false});
        rmgbench::registerYardstick(std::string("Exchange8u/") + size.name, bytes, twoMemcpy(bytes));
        registerCase(size, Case{"Exchange8u", 3, 3, none, none, true});
        registerCase(size, Case{"CopyRoi8u", 3, 3, half, none, false});
        registerCase(size, Case{"CopyCoiGather8u", 3, 1, coi2, none, false});
        registerCase(size, Case{"CopyCoiScatter8u", 1, 3, none, coi2, false});
        registerCase(size, Case{"CopyCoiToCoi8u", 3, 3, coi2, coi3, false});
    }
    return true;
}

const bool kRegistered = registerAll();

}  // namespace
