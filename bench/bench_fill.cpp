// Fill kernels beside memset of the same bytes: a whole 3840x2160 image of
// 3 channels as one run, and a 512x512 one that fits the caches, at 8, 16
// and 32 bits; and one channel of those images (the strided fill of a
// channel of interest); and rows of a few sizes, one call a row.
#include <cstdint>
#include <cstring>
#include <string>

#include "bench/benchutil.h"
#include "ops/rmgfill.h"

namespace {

void fill(int size, unsigned char *p, int count) {
    if (size == 1) rmgFill8(0x5A, p, count);
    if (size == 2) rmgFill16(0x5A5A, p, count);
    if (size == 4) rmgFill32(0x5A5A5A5Au, p, count);
}

void fillChannel(int size, unsigned char *p, int count) {
    if (size == 1) rmgFillStrided8(0x5A, p + 1, count, 3);
    if (size == 2) rmgFillStrided16(0x5A5A, p + 2, count, 6);
    if (size == 4) rmgFillStrided32(0x5A5A5A5Au, p + 4, count, 12);
}

bool registerAll() {
    for (const rmgbench::ImageSize &shape : rmgbench::kImageSizes) {
        const int elements = shape.height * shape.width * 3;
        for (int size : {1, 2, 4}) {
            const std::string depth = std::to_string(8 * size);
            const size_t bytes = static_cast<size_t>(elements) * static_cast<size_t>(size);
            const std::string run = std::string("Fill") + depth + "/" + shape.name;
            rmgbench::registerMemset(run, bytes);
            rmgbench::registerForms(run, [size, elements, bytes](benchmark::State &state) {
                unsigned char *p = rmgbench::arena(bytes);
                rmgbench::timeBeside(state, rmgbench::memsetOf(bytes),
                                     [&] { fill(size, p, elements); });
                return bytes;
            });
            // Channel 2 of 3: a third of the elements, over the same bytes,
            // beside the memset above.
            const std::string channel = std::string("FillChannel") + depth + "/" + shape.name;
            rmgbench::registerForms(channel, [size, elements, bytes](benchmark::State &state) {
                unsigned char *p = rmgbench::arena(bytes);
                rmgbench::timeBeside(state, rmgbench::memsetOf(bytes),
                                     [&] { fillChannel(size, p, elements / 3); });
                return bytes;
            });
        }
    }
    // Short rows one call each, as a region's rows are filled: 1024 rows of
    // 8-bit elements whose starts move through every alignment.
    for (int count : {13, 64, 200, 1920}) {
        const int step = count + 7;
        const size_t bytes = static_cast<size_t>(count) * 1024;
        const std::string rows = "FillRows8/" + std::to_string(count);
        // The yardstick: memset of the same rows, one call a row.
        const rmgbench::Yardstick rowsMemset{"memset", [count, step] {
                                                 unsigned char *p = rmgbench::arena(
                                                     static_cast<size_t>(step) * 1024);
                                                 for (int r = 0; r < 1024; ++r)
                                                     std::memset(p + r * step, 0x5A, count);
                                                 rmgbench::keep(p);
                                             }};
        rmgbench::registerYardstick(rows, bytes, rowsMemset);
        rmgbench::registerForms(rows, [count, step, bytes, rowsMemset](benchmark::State &state) {
            unsigned char *p = rmgbench::arena(static_cast<size_t>(step) * 1024);
            rmgbench::timeBeside(state, rowsMemset, [&] {
                for (int r = 0; r < 1024; ++r) rmgFill8(0x5A, p + r * step, count);
            });
            return bytes;
        });
    }
    return true;
}

const bool kRegistered = registerAll();

}  // namespace
