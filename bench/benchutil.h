// Shared pieces of the benchmarks: one arena of memory that every benchmark
// of a run writes into, registration of a benchmark once per vector form the
// processor runs, and memset and memcpy of the same bytes as the yardstick
// beside an operation. Throughput is reported as bytes per second
// (SetBytesProcessed), so an operation and its yardstick compare directly.
//
// The yardstick is measured twice: as a benchmark of its own (the rows
// named memset and memcpy), and inside the loop of each operation, just
// before every call (timeBeside). The second gives the counter vs_memset or
// vs_memcpy, the yardstick's time over the operation's in the same
// iterations: above 1 the operation is the faster. Both see the same
// moment of a machine shared with others, whose load shifts benchmarks run
// one after another, and caches that the other has just swept.
//
// The program's main() is in bench/bench_main.cpp.
#ifndef RMG_BENCH_BENCHUTIL_H
#define RMG_BENCH_BENCHUTIL_H

#include <benchmark/benchmark.h>

#include <chrono>
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
inline benchmark::internal::Benchmark *registerBytes(
    const std::string &name, const std::function<size_t(benchmark::State &)> &body) {
    return benchmark::RegisterBenchmark(name.c_str(), [body](benchmark::State &state) {
        const size_t bytes = body(state);
        state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) *
                                static_cast<int64_t>(bytes));
    });
}

// Registers `name` for a body whose timing loop is timeBeside.
inline void registerTimed(const std::string &name,
                          const std::function<size_t(benchmark::State &)> &body) {
    registerBytes(name, body)->UseManualTime();
}

// Registers `name/<form>` for each form from scalar to the widest this
// processor runs, with that form forced while `body` (whose timing loop is
// timeBeside) runs.
inline void registerForms(const std::string &name,
                          const std::function<size_t(benchmark::State &)> &body) {
    for (int form = rmg::kFormScalar; form <= rmg::cpuBestForm(); ++form) {
        registerTimed(name + "/" + rmg::cpuFormName(form), [form, body](benchmark::State &state) {
            rmg::cpuForceForm(form);
            const size_t bytes = body(state);
            rmg::cpuReleaseForm();
            return bytes;
        });
    }
}

// A yardstick taken inside an operation's loop: its name for the counter
// ("memset", "memcpy", ...) and what it runs.
struct Yardstick {
    const char *name;
    std::function<void()> run;
};

// memset of `bytes` bytes at the arena's start.
inline Yardstick memsetOf(size_t bytes) {
    return {"memset", [bytes] {
                unsigned char *p = arena(bytes);
                std::memset(p, 0x5A, bytes);
                keep(p);
            }};
}

// memcpy of `bytes` bytes from the arena's second half to its first.
inline Yardstick memcpyOf(size_t bytes) {
    return {"memcpy", [bytes] {
                unsigned char *to = arena(bytes, 0);
                std::memcpy(to, arena(bytes, 1), bytes);
                keep(to);
            }};
}

// The timing loop of an operation, for a benchmark registered with
// registerTimed or registerForms. The iterations come in blocks of
// kBlockCalls calls of `op`, each timed on its own (the iteration's time);
// before each block the yardstick runs as many times, timed alike, for the
// counter vs_<yardstick>: the yardstick's time over the operation's. The
// two take turns every few milliseconds at most, so they see the same
// moment of the machine; and each sees the caches after itself, as in a
// loop of its own: a first untimed call after the other's block pays for
// the lines the other left to be written back (a copy that stores through
// the caches leaves up to the last-level cache's size of them).
// The yardstick writes the arena's first half, so it may only hold what
// the operation writes. The arena must already be large enough for the
// yardstick: it would move otherwise.
constexpr int kBlockCalls = 5;

template <class Op>
void timeBeside(benchmark::State &state, const Yardstick &yardstick, Op op) {
    using Clock = std::chrono::steady_clock;
    auto seconds = [](Clock::time_point from, Clock::time_point to) {
        return std::chrono::duration<double>(to - from).count();
    };
    double yardstickTime = 0;
    double opTime = 0;
    int call = 0;
    for (auto _ : state) {
        if (call == 0) {
            yardstick.run();
            for (int i = 0; i < kBlockCalls; ++i) {
                const Clock::time_point start = Clock::now();
                yardstick.run();
                yardstickTime += seconds(start, Clock::now());
            }
            op();
            benchmark::ClobberMemory();
        }
        call = (call + 1) % kBlockCalls;
        const Clock::time_point start = Clock::now();
        op();
        benchmark::ClobberMemory();
        const double time = seconds(start, Clock::now());
        opTime += time;
        state.SetIterationTime(time);
    }
    // The yardstick ran kBlockCalls times for each block begun: set its time
    // against the operation's over as many calls.
    const int64_t calls = state.iterations();
    const int64_t blocks = (calls + kBlockCalls - 1) / kBlockCalls;
    const double perYardstick = blocks > 0 ? yardstickTime / static_cast<double>(blocks * kBlockCalls) : 0.0;
    state.counters[std::string("vs_") + yardstick.name] =
        opTime > 0 ? perYardstick * static_cast<double>(calls) / opTime : 0.0;
}

// Registers `name/<yardstick>`: the yardstick alone, over `bytes` bytes.
inline void registerYardstick(const std::string &name, size_t bytes, const Yardstick &yardstick) {
    registerBytes(name + "/" + yardstick.name, [bytes, yardstick](benchmark::State &state) {
        for (auto _ : state) yardstick.run();
        return bytes;
    });
}

inline void registerMemset(const std::string &name, size_t bytes) {
    registerYardstick(name, bytes, memsetOf(bytes));
}

inline void registerMemcpy(const std::string &name, size_t bytes) {
    registerYardstick(name, bytes, memcpyOf(bytes));
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
