// Copy and swap kernels: every form this processor runs, forced in turn,
// against loops written here: the byte copy and the byte swap from low to
// high addresses, and the element loop of a strided copy. Every length up
// to 300 bytes at every pair of start addresses modulo 64; runs that share
// memory in both directions; one channel of pixels into another layout.
// The whole of both buffers is compared, guard zones included.
#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cstdint>
#include <cstring>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "ops/copytest.h"
#include "ops/rmgcopy.h"
#include "support/rmgcanvas.h"
#include "support/rmgforms.h"

namespace {

constexpr int kMaxCount = 300;
constexpr int kAlignments = 64;
constexpr size_t kGuard = 64;

using rmgtest::Canvas;

// A canvas of `bytes` random bytes.
Canvas randomCanvas(size_t bytes, uint32_t seed) {
    Canvas canvas(bytes);
    std::mt19937 rng(seed);
    for (size_t i = 0; i < bytes; ++i) canvas.data()[i] = static_cast<unsigned char>(rng());
    return canvas;
}

// The loops that define the results.
void modelCopy(const unsigned char *src, unsigned char *dst, int count) {
    for (int i = 0; i < count; ++i) dst[i] = src[i];
}

void modelSwap(unsigned char *first, unsigned char *second, int count) {
    for (int i = 0; i < count; ++i) std::swap(first[i], second[i]);
}

void modelStrided(const unsigned char *src, unsigned char *dst, int count, int srcStride,
                  int dstStride, int size) {
    for (int i = 0; i < count; ++i) {
        unsigned char element[4];
        std::memcpy(element, src + i * srcStride, static_cast<size_t>(size));
        std::memcpy(dst + i * dstStride, element, static_cast<size_t>(size));
    }
}

::testing::AssertionResult sameBytes(const std::vector<unsigned char> &got,
                                     const std::vector<unsigned char> &want) {
    if (got == want) return ::testing::AssertionSuccess();
    size_t i = 0;
    while (got[i] == want[i]) ++i;
    return ::testing::AssertionFailure()
           << "byte " << i << " is " << int(got[i]) << ", expected " << int(want[i]);
}

using rmgtest::inEveryForm;

TEST(CopyBytes, EveryLengthAndAlignmentGivesTheByteLoop) {
    const size_t bytes = kGuard + kAlignments + kMaxCount + kGuard;
    Canvas src = randomCanvas(bytes, 1);
    Canvas dst = randomCanvas(bytes, 2);
    const std::vector<unsigned char> srcBytes = src.bytes();
    const std::vector<unsigned char> dstBytes = dst.bytes();
    std::vector<unsigned char> want;
    inEveryForm([&](int) {
        for (int count = 0; count <= kMaxCount; ++count)
            for (int a = 0; a < kAlignments; ++a)
                for (int b = 0; b < kAlignments; ++b) {
                    dst.set(dstBytes);
                    rmgCopyBytes(src.data() + kGuard + a, dst.data() + kGuard + b, count);
                    want = dstBytes;
                    modelCopy(srcBytes.data() + kGuard + a, want.data() + kGuard + b, count);
                    ASSERT_TRUE(sameBytes(dst.bytes(), want))
                        << "count " << count << " src +" << a << " dst +" << b;
                    ASSERT_EQ(std::memcmp(src.data(), srcBytes.data(), bytes), 0);
                }
    });
}

TEST(SwapBytes, EveryLengthAndAlignmentGivesTheByteLoop) {
    const size_t bytes = kGuard + kAlignments + kMaxCount + kGuard;
    Canvas first = randomCanvas(bytes, 3);
    Canvas second = randomCanvas(bytes, 4);
    const std::vector<unsigned char> firstBytes = first.bytes();
    const std::vector<unsigned char> secondBytes = second.bytes();
    std::vector<unsigned char> wantFirst, wantSecond;
    inEveryForm([&](int) {
        for (int count = 0; count <= kMaxCount; ++count)
            for (int a = 0; a < kAlignments; ++a)
                for (int b = 0; b < kAlignments; ++b) {
                    first.set(firstBytes);
                    second.set(secondBytes);
                    rmgSwapBytes(first.data() + kGuard + a, second.data() + kGuard + b, count);
                    wantFirst = firstBytes;
                    wantSecond = secondBytes;
                    modelSwap(wantFirst.data() + kGuard + a, wantSecond.data() + kGuard + b, count);
                    ASSERT_TRUE(sameBytes(first.bytes(), wantFirst))
                        << "first, count " << count << " +" << a << " +" << b;
                    ASSERT_TRUE(sameBytes(second.bytes(), wantSecond))
                        << "second, count " << count << " +" << a << " +" << b;
                }
    });
}

// Source and destination in one buffer, the destination from 70 bytes in
// front of the source to 70 bytes behind it: a destination behind the
// source's start repeats the source's first bytes, as the byte loop does.
TEST(CopyBytes, SharedMemoryGivesTheForwardLoop) {
    const size_t bytes = 600;
    Canvas canvas = randomCanvas(bytes, 5);
    const std::vector<unsigned char> pristine = canvas.bytes();
    inEveryForm([&](int) {
        for (int count : {1, 2, 7, 8, 9, 15, 16, 31, 33, 64, 100, 129, 200, 257})
            for (int distance = -70; distance <= 70; ++distance)
                for (int a : {0, 1, 5, 32, 63}) {
                    canvas.set(pristine);
                    const size_t from = 150 + static_cast<size_t>(a);
                    const size_t to = from + static_cast<size_t>(distance);
                    rmgCopyBytes(canvas.data() + from, canvas.data() + to, count);
                    std::vector<unsigned char> want = pristine;
                    modelCopy(want.data() + from, want.data() + to, count);
                    ASSERT_TRUE(sameBytes(canvas.bytes(), want))
                        << "count " << count << " distance " << distance << " +" << a;
                }
    });
}

TEST(SwapBytes, SharedMemoryGivesTheForwardLoop) {
    const size_t bytes = 600;
    Canvas canvas = randomCanvas(bytes, 6);
    const std::vector<unsigned char> pristine = canvas.bytes();
    inEveryForm([&](int) {
        for (int count : {1, 7, 8, 9, 16, 33, 64, 100, 200})
            for (int distance = -70; distance <= 70; ++distance) {
                canvas.set(pristine);
                rmgSwapBytes(canvas.data() + 150, canvas.data() + 150 + distance, count);
                std::vector<unsigned char> want = pristine;
                modelSwap(want.data() + 150, want.data() + 150 + distance, count);
                ASSERT_TRUE(sameBytes(canvas.bytes(), want))
                    << "count " << count << " distance " << distance;
            }
    });
}

TEST(SwapBytes, SevenBytesAndAnUnalignedEight) {
    inEveryForm([&](int) {
        alignas(64) unsigned char a[32];
        alignas(64) unsigned char b[32];
        for (int i = 0; i < 32; ++i) {
            a[i] = static_cast<unsigned char>(i);
            b[i] = static_cast<unsigned char>(100 + i);
        }
        // Seven bytes: swapped, the bytes around them not.
        rmgSwapBytes(a + 8, b + 8, 7);
        for (int i = 0; i < 32; ++i) {
            const bool in = i >= 8 && i < 15;
            EXPECT_EQ(a[i], in ? 100 + i : i) << i;
            EXPECT_EQ(b[i], in ? i : 100 + i) << i;
        }
        // Eight bytes with the second run at an odd address: all eight.
        rmgSwapBytes(a + 16, b + 17, 8);
        for (int i = 16; i < 24; ++i) {
            EXPECT_EQ(a[i], 100 + i + 1) << i;
            EXPECT_EQ(b[i + 1], i) << i;
        }
        EXPECT_EQ(a[24], 24);
        EXPECT_EQ(b[16], 116);
        EXPECT_EQ(b[25], 125);
    });
}

TEST(CopyBytes, CountOfZeroOrBelowTouchesNothing) {
    inEveryForm([&](int) {
        unsigned char a[16], b[16];
        std::memset(a, 0x11, sizeof a);
        std::memset(b, 0x22, sizeof b);
        for (int count : {0, -1, -300, INT_MIN}) {
            rmgCopyBytes(a, b, count);
            rmgSwapBytes(a, b, count);
            rmgCopyStrided(a, b, count, 3, 1, 1);
        }
        for (int i = 0; i < 16; ++i) {
            EXPECT_EQ(a[i], 0x11);
            EXPECT_EQ(b[i], 0x22);
        }
    });
}

// Long runs pass through the aligned loops and the string copy.
TEST(CopyBytes, LongRunsGiveTheByteLoop) {
    const size_t longest = (size_t{1} << 20) + 300;
    Canvas src = randomCanvas(longest + 2 * kGuard, 7);
    Canvas dst = randomCanvas(longest + 2 * kGuard, 8);
    const std::vector<unsigned char> dstBytes = dst.bytes();
    inEveryForm([&](int) {
        for (size_t count :
             {size_t{4095}, size_t{16383}, size_t{16384}, size_t{65536 + 3}, longest})
            for (int a : {0, 7, 33})
                for (int b : {0, 1, 62}) {
                    dst.set(dstBytes);
                    rmgCopyBytes(src.data() + kGuard + a, dst.data() + kGuard + b,
                                 static_cast<int>(count));
                    std::vector<unsigned char> want = dstBytes;
                    std::memcpy(want.data() + kGuard + b, src.data() + kGuard + a, count);
                    ASSERT_TRUE(sameBytes(dst.bytes(), want)) << count << " +" << a << " +" << b;
                    dst.set(dstBytes);
                    rmgSwapBytes(src.data() + kGuard + a, dst.data() + kGuard + b,
                                 static_cast<int>(count));
                    rmgSwapBytes(src.data() + kGuard + a, dst.data() + kGuard + b,
                                 static_cast<int>(count));
                    ASSERT_TRUE(sameBytes(dst.bytes(), dstBytes)) << "swapped twice " << count;
                }
    });
}

// A run past the size from which the stores bypass the caches.
TEST(CopyBytes, HugeRunGivesTheByteLoop) {
    const size_t count = (size_t{1} << 24) + 77;
    Canvas src = randomCanvas(count + 2 * kGuard, 12);
    Canvas dst = randomCanvas(count + 2 * kGuard, 13);
    const std::vector<unsigned char> dstBytes = dst.bytes();
    std::vector<unsigned char> want = dstBytes;
    std::memcpy(want.data() + kGuard + 3, src.data() + kGuard + 5, count);
    inEveryForm([&](int) {
        dst.set(dstBytes);
        rmgCopyBytes(src.data() + kGuard + 5, dst.data() + kGuard + 3, static_cast<int>(count));
        ASSERT_TRUE(sameBytes(dst.bytes(), want));
    });
}

// One channel of pixels of 1 to 4 channels into one channel of pixels of 1
// to 4 channels, for each element size, at several alignments of both.
TEST(CopyStrided, EveryLayoutPairGivesTheElementLoop) {
    const size_t bytes = 2 * kGuard + 64 + 4 * 4 * 200;
    Canvas src = randomCanvas(bytes, 9);
    Canvas dst = randomCanvas(bytes, 10);
    const std::vector<unsigned char> srcBytes = src.bytes();
    const std::vector<unsigned char> dstBytes = dst.bytes();
    inEveryForm([&](int) {
        for (int size : {1, 2, 4})
            for (int srcChannels = 1; srcChannels <= 4; ++srcChannels)
                for (int dstChannels = 1; dstChannels <= 4; ++dstChannels)
                    for (int count = 0; count <= 200; ++count)
                        for (int a : {0, 1, 2, 5, 16, 31, 63})
                            for (int b : {0, 3, 4, 32, 61}) {
                                const int srcStride = srcChannels * size;
                                const int dstStride = dstChannels * size;
                                // A channel other than the first where there is one.
                                const size_t from = kGuard + a + (srcChannels - 1) * size;
                                const size_t to = kGuard + b + (dstChannels > 2 ? size : 0);
                                dst.set(dstBytes);
                                rmgCopyStrided(src.data() + from, dst.data() + to, count, srcStride,
                                               dstStride, size);
                                std::vector<unsigned char> want = dstBytes;
                                modelStrided(srcBytes.data() + from, want.data() + to, count,
                                             srcStride, dstStride, size);
                                ASSERT_TRUE(sameBytes(dst.bytes(), want))
                                    << "size " << size << " channels " << srcChannels << " to "
                                    << dstChannels << " count " << count << " +" << a << " +" << b;
                            }
    });
}

// Strided copies inside one buffer: the element loop in its order.
TEST(CopyStrided, SharedMemoryGivesTheElementLoop) {
    const size_t bytes = 2400;
    Canvas canvas = randomCanvas(bytes, 11);
    const std::vector<unsigned char> pristine = canvas.bytes();
    inEveryForm([&](int) {
        for (int size : {1, 2, 4})
            for (int srcChannels : {1, 3, 4})
                for (int dstChannels : {1, 3, 4})
                    for (int count : {1, 5, 40, 100})
                        for (int distance = -40; distance <= 40; distance += 1) {
                            canvas.set(pristine);
                            const size_t from = 600;
                            const size_t to = from + static_cast<size_t>(distance);
                            rmgCopyStrided(canvas.data() + from, canvas.data() + to, count,
                                           srcChannels * size, dstChannels * size, size);
                            std::vector<unsigned char> want = pristine;
                            modelStrided(want.data() + from, want.data() + to, count,
                                         srcChannels * size, dstChannels * size, size);
                            ASSERT_TRUE(sameBytes(canvas.bytes(), want))
                                << "size " << size << " channels " << srcChannels << " to "
                                << dstChannels << " count " << count << " distance " << distance;
                        }
    });
}

}  // namespace
