// Fill kernels: every form this processor runs, forced in turn, against the
// scalar form and against a per-element store loop written here, for every
// length up to 300 elements and every start address modulo 64. The whole
// buffer is compared, so a byte changed before or after the run, or between
// the elements of a channel, shows.
#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cstdint>
#include <cstring>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "ops/rmgfill.h"
#include "support/rmgcanvas.h"
#include "support/rmgforms.h"

#if defined(__SANITIZE_ADDRESS__)
#include <sanitizer/asan_interface.h>
#define RMG_TEST_POISON(p, n) __asan_poison_memory_region((p), (n))
#define RMG_TEST_UNPOISON(p, n) __asan_unpoison_memory_region((p), (n))
#else
#define RMG_TEST_POISON(p, n) ((void)(p), (void)(n))
#define RMG_TEST_UNPOISON(p, n) ((void)(p), (void)(n))
#endif

namespace {

constexpr int kMaxCount = 300;
constexpr int kAlignments = 64;
constexpr size_t kGuard = 64;

using rmgtest::Canvas;

// Random contents, copied from a pool of random bytes at a random place.
class RandomBytes {
public:
    RandomBytes() : rng_(20240611u), pool_(1 << 16) {
        for (auto &b : pool_) b = static_cast<unsigned char>(rng_());
    }
    uint32_t next() { return static_cast<uint32_t>(rng_()); }
    void fill(unsigned char *to, size_t bytes) {
        size_t from = next() % pool_.size();
        for (size_t done = 0; done < bytes; from = 0) {
            const size_t part = std::min(bytes - done, pool_.size() - from);
            std::memcpy(to + done, pool_.data() + from, part);
            done += part;
        }
    }

private:
    std::mt19937 rng_;
    std::vector<unsigned char> pool_;
};

// The store loop: element i of `size` bytes at row + i * stride, in order.
void model(unsigned char *row, int count, ptrdiff_t stride, uint32_t value, int size) {
    const auto v8 = static_cast<uint8_t>(value);
    const auto v16 = static_cast<uint16_t>(value);
    for (int i = 0; i < count; ++i) {
        unsigned char *at = row + i * stride;
        if (size == 1) std::memcpy(at, &v8, 1);
        if (size == 2) std::memcpy(at, &v16, 2);
        if (size == 4) std::memcpy(at, &value, 4);
    }
}

::testing::AssertionResult sameBytes(const unsigned char *got, const unsigned char *want,
                                     size_t bytes, const std::string &what) {
    if (std::memcmp(got, want, bytes) == 0) return ::testing::AssertionSuccess();
    size_t i = 0;
    while (got[i] == want[i]) ++i;
    return ::testing::AssertionFailure() << what << ": byte " << i << " of " << bytes << " is "
                                         << int(got[i]) << ", expected " << int(want[i]);
}

// One case: `count` elements of `size` bytes, `stride` bytes apart (0: a
// run through rmgFill8/16/32), from byte `first` of a canvas of `bytes`
// random bytes. Under each form the kernel writes a copy of the canvas; the
// scalar form must give the model's bytes and every other form the scalar
// form's bytes.
struct Case {
    int size;
    int count;
    int stride;
    size_t first;
    size_t bytes;
};

void callKernel(const Case &c, uint32_t value, unsigned char *canvas) {
    unsigned char *row = canvas + c.first;
    if (c.stride == 0) {
        if (c.size == 1) rmgFill8(static_cast<uint8_t>(value), row, c.count);
        if (c.size == 2) rmgFill16(static_cast<uint16_t>(value), row, c.count);
        if (c.size == 4) rmgFill32(value, row, c.count);
    } else {
        if (c.size == 1) rmgFillStrided8(static_cast<uint8_t>(value), row, c.count, c.stride);
        if (c.size == 2) rmgFillStrided16(static_cast<uint16_t>(value), row, c.count, c.stride);
        if (c.size == 4) rmgFillStrided32(value, row, c.count, c.stride);
    }
}

// Under AddressSanitizer the bytes around the elements' span are made
// unreachable while the kernel runs, so that a read or write there stops
// the test: behind the span to the byte, before it to the 8-byte granule
// of the sanitizer.
class SpanOnly {
public:
    SpanOnly(unsigned char *canvas, const Case &c) : canvas_(canvas), bytes_(c.bytes) {
        size_t span = 0;
        if (c.count > 0)
            span = static_cast<size_t>(c.count - 1) *
                       static_cast<size_t>(c.stride == 0 ? c.size : c.stride) +
                   static_cast<size_t>(c.size);
        RMG_TEST_POISON(canvas_, c.first & ~size_t{7});
        RMG_TEST_POISON(canvas_ + c.first + span, bytes_ - c.first - span);
    }
    ~SpanOnly() { RMG_TEST_UNPOISON(canvas_, bytes_); }
    SpanOnly(const SpanOnly &) = delete;
    SpanOnly &operator=(const SpanOnly &) = delete;

private:
    unsigned char *canvas_;
    size_t bytes_;
};

::testing::AssertionResult checkCase(RandomBytes &random, const Case &c) {
    Canvas work(c.bytes);
    random.fill(work.data(), c.bytes);
    const std::vector<unsigned char> before = work.bytes();
    const uint32_t value = random.next();
    std::vector<unsigned char> expected = before;
    model(expected.data() + c.first, c.count, c.stride == 0 ? c.size : c.stride, value, c.size);

    std::ostringstream what;
    what << "size " << c.size << " count " << c.count << " stride " << c.stride << " first "
         << c.first << " value 0x" << std::hex << value;
    std::vector<unsigned char> scalar;
    for (int form : rmgtest::runnableForms()) {
        work.set(before);
        {
            rmgtest::ForcedForm forced(form);
            SpanOnly span(work.data(), c);
            callKernel(c, value, work.data());
        }
        const std::string where = what.str() + " form " + rmg::cpuFormName(form);
        if (form == rmg::kFormScalar) {
            auto same = sameBytes(work.data(), expected.data(), c.bytes, where + " vs model");
            if (!same) return same;
            scalar = work.bytes();
        } else {
            auto same = sameBytes(work.data(), scalar.data(), c.bytes, where + " vs scalar");
            if (!same) return same;
        }
    }
    return ::testing::AssertionSuccess();
}

TEST(Fill, EveryFormStoresTheRunAndNothingElse) {
    RandomBytes random;
    for (int size : {1, 2, 4}) {
        for (int count = 0; count <= kMaxCount; ++count) {
            for (int align = 0; align < kAlignments; ++align) {
                const size_t first = kGuard + static_cast<size_t>(align);
                const size_t bytes = first + static_cast<size_t>(count * size) + kGuard;
                ASSERT_TRUE(checkCase(random, Case{size, count, 0, first, bytes}));
            }
        }
    }
}

// Channel `channel` of `channels`: the elements of the pixels from the
// start address on; the other channels' bytes are in the span and must keep
// their values.
TEST(FillStrided, EveryFormStoresTheChannelAndNothingElse) {
    RandomBytes random;
    for (int size : {1, 2, 4}) {
        for (int channels = 1; channels <= 4; ++channels) {
            const int stride = channels * size;
            for (int channel = 0; channel < channels; ++channel) {
                for (int count = 0; count <= kMaxCount; ++count) {
                    for (int align = 0; align < kAlignments; ++align) {
                        const size_t start = kGuard + static_cast<size_t>(align);
                        const size_t first = start + static_cast<size_t>(channel * size);
                        const size_t bytes = start + static_cast<size_t>(count * stride) + kGuard;
                        ASSERT_TRUE(checkCase(random, Case{size, count, stride, first, bytes}))
                            << "channel " << channel << " of " << channels;
                    }
                }
            }
        }
    }
}

// Strides of more channels, or of no whole number of elements, take the
// store loop in every form: each element at its byte, later ones over
// earlier ones where they overlap.
TEST(FillStrided, AnyStrideGivesTheStoreLoop) {
    RandomBytes random;
    for (int size : {1, 2, 4}) {
        for (int stride : {1, 2, 3, 5, 6, 7, 9, 10, 13, 16, 20, 24, 32}) {
            for (int count : {1, 2, 7, 31, 64, 100, 257}) {
                for (int align : {0, 1, 3, 17, 63}) {
                    const size_t first = kGuard + static_cast<size_t>(align);
                    const size_t bytes = first + static_cast<size_t>(count * stride + size) + kGuard;
                    ASSERT_TRUE(checkCase(random, Case{size, count, stride, first, bytes}));
                }
            }
        }
    }
}

// Long runs and channels pass through every loop of the vector forms, the
// string store of long runs included.
TEST(Fill, LongRunsMatchTheStoreLoop) {
    RandomBytes random;
    for (int size : {1, 2, 4}) {
        for (int count : {4095, 65536 + 3, (1 << 22) / size + 5}) {
            for (int stride : {0, 3 * size, 4 * size}) {
                for (int align : {0, 5, 62}) {
                    const size_t first = kGuard + static_cast<size_t>(align);
                    const size_t span = static_cast<size_t>(count) *
                                        static_cast<size_t>(stride == 0 ? size : stride);
                    ASSERT_TRUE(
                        checkCase(random, Case{size, count, stride, first, first + span + kGuard}));
                }
            }
        }
    }
}

TEST(Fill, CountOfZeroOrBelowStoresNothing) {
    rmgtest::inEveryForm([&](int form) {
        unsigned char buffer[16];
        std::memset(buffer, 0x77, sizeof buffer);
        for (int count : {0, -1, -300, INT_MIN}) {
            rmgFill8(1, buffer + 4, count);
            rmgFill16(2, buffer + 4, count);
            rmgFill32(3, buffer + 4, count);
            rmgFillStrided8(1, buffer + 4, count, 3);
            rmgFillStrided16(2, buffer + 4, count, 6);
            rmgFillStrided32(3, buffer + 4, count, 12);
        }
        for (unsigned char b : buffer) EXPECT_EQ(b, 0x77) << rmg::cpuFormName(form);
    });
}

TEST(Fill, ValuesAreStoredInTheElementsByteOrder) {
    rmgtest::inEveryForm([&](int form) {
        uint16_t words[37];
        uint32_t longs[37];
        rmgFill16(0xBEEF, words, 37);
        rmgFill32(0xDEADBEEFu, longs, 37);
        for (uint16_t w : words) EXPECT_EQ(w, 0xBEEF) << rmg::cpuFormName(form);
        for (uint32_t l : longs) EXPECT_EQ(l, 0xDEADBEEFu) << rmg::cpuFormName(form);
        unsigned char pixels[3 * 100];
        std::memset(pixels, 0, sizeof pixels);
        rmgFillStrided8(200, pixels + 1, 100, 3);
        for (int i = 0; i < 300; ++i)
            EXPECT_EQ(pixels[i], i % 3 == 1 ? 200 : 0) << rmg::cpuFormName(form) << " byte " << i;
    });
}

}  // namespace
