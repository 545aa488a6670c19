// Shared pieces of the benchmarks: one arena of memory that every benchmark
// of a run writes into, registration of a benchmark once per vector form the
// processor runs, and memset and memcpy of the same bytes as the yardstick
// beside an operation. Throughput is reported as bytes per second
// (SetBytesProcessed), so an operation and its yardstick compare directly.
//
// The program's main() is in bench/bench_main.cpp.
#ifndef RMG_BENCH_BENCHUTIL_H
#define RMG_BENCH_BENCHUTIL_H

#include <benchmark/benchmark.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <string>
#include <utility>

#include "core/rmgcpu.h"
#include "rmg.h"

namespace rmgbench {

// A block of at least `bytes` bytes whose start is a multiple of 64, the
// same block for every benchmark (it only grows), written once when it is
// made so that page faults stay out of the timings. `part` 0 is the start,
// `part` 1 the second half, for a source beside a destination.
inline unsigned char *arena(size_t bytes, int part = 0) {
    static unsigned char *block = nullptr;
    static size_t size = 0;
    const size_t half = (bytes + 4095) & ~size_t{4095};
    if (2 * half > size) {
        std::free(block);
        size = 2 * half;
        block = static_cast<unsigned char *>(std::aligned_alloc(64, size));
        if (block == nullptr) std::abort();
        std::memset(block, 0x11, size);
    }
    return block + (part == 0 ? 0 : size / 2);
}

// Ends one iteration: the compiler may not drop or move the writes to `p`.
inline void keep(void *p) {
    benchmark::DoNotOptimize(p);
    benchmark::ClobberMemory();
}

// Registers `name`: `body` runs its timing loop and returns the bytes one
// iteration writes.
inline void registerBytes(const std::string &name,
                          const std::function<size_t(benchmark::State &)> &body) {
    benchmark::RegisterBenchmark(name.c_str(), [body](benchmark::State &state) {
        const size_t bytes = body(state);
        state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) *
                                static_cast<int64_t>(bytes));
    });
}

// Registers `name/<form>` for each form from scalar to the widest this
// processor runs, with that form forced while `body` runs.
inline void registerForms(const std::string &name,
                          const std::function<size_t(benchmark::State &)> &body) {
    for (int form = rmg::kFormScalar; form <= rmg::cpuBestForm(); ++form) {
        registerBytes(name + "/" + rmg::cpuFormName(form), [form, body](benchmark::State &state) {
            rmg::cpuForceForm(form);
            const size_t bytes = body(state);
            rmg::cpuReleaseForm();
            return bytes;
        });
    }
}

// Registers `name/memset`: memset of `bytes` bytes of the arena.
inline void registerMemset(const std::string &name, size_t bytes) {
    registerBytes(name + "/memset", [bytes](benchmark::State &state) {
        unsigned char *p = arena(bytes);
        for (auto _ : state) {
            std::memset(p, 0x5A, bytes);
            keep(p);
        }
        return bytes;
    });
}

// Registers `name/memcpy`: memcpy of `bytes` bytes from one half of the
// arena to the other.
inline void registerMemcpy(const std::string &name, size_t bytes) {
    registerBytes(name + "/memcpy", [bytes](benchmark::State &state) {
        unsigned char *to = arena(bytes, 0);
        const unsigned char *from = arena(bytes, 1);
        for (auto _ : state) {
            std::memcpy(to, from, bytes);
            keep(to);
        }
        return bytes;
    });
}

// The images the operations' benchmarks use: 3 channels in pixel order, at
// these sizes and depths.
struct ImageSize {
    const char *name;
    int height, width;
};
constexpr ImageSize kImageSizes[] = {{"3840x2160x3", 2160, 3840}, {"512x512x3", 512, 512}};

struct ImageDepth {
    const char *name;
    unsigned int depth;
};
constexpr ImageDepth kImageDepths[] = {
    {"8u", RMG_DEPTH_8U}, {"16u", RMG_DEPTH_16U}, {"32s", RMG_DEPTH_32S}};

// A header of such an image over `data`, with `roi` (may be null) and, where
// asked, another number of channels; given back with releaseHeader, which
// leaves data and ROI alone.
inline RmgImage *imageHeader(const ImageSize &size, const ImageDepth &depth, RmgROI *roi,
                             unsigned char *data, int channels = 3) {
    RmgImage *image = rmgCreateImageHeader(channels, 0, depth.depth, "RGB", "BGR", RMG_DATA_PIXEL,
                                           RMG_ORIGIN_TL, 8, size.height, size.width, roi,
                                           nullptr, nullptr);
    if (image == nullptr) std::abort();
    image->imageData = data;
    return image;
}

inline void releaseHeader(RmgImage *image) {
    image->imageData = nullptr;
    image->roi = nullptr;
    rmgDeallocate(image, RMG_DEALLOC_HEADER);
}

}  // namespace rmgbench

#endif
