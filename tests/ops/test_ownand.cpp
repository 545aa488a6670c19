// The logical kernels on their own: the bit kernel against a loop bit by
// bit, the vector forms against the scalar form at every length and
// alignment, the word paths with their single-word rules, the byte-range
// kernel's mask lanes, and the one-channel kernels.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <random>
#include <vector>

#include "ops/andtest.h"
#include "ops/ownand.h"
#include "support/rmgforms.h"

namespace {

using andtest::bitOf;
using andtest::setBit;

std::vector<uint8_t> randomBytes(size_t n, uint32_t seed) {
    std::mt19937 rng(seed);
    std::vector<uint8_t> v(n);
    for (auto &b : v) b = static_cast<uint8_t>(rng());
    return v;
}

// A block of exactly n bytes on the heap, so that the address sanitizer
// sees any access beyond it.
struct Block {
    explicit Block(size_t n, uint32_t seed) : size(n) {
        data = static_cast<uint8_t *>(std::malloc(n == 0 ? 1 : n));
        const std::vector<uint8_t> v = randomBytes(n, seed);
        if (n != 0) std::memcpy(data, v.data(), n);
    }
    ~Block() { std::free(data); }
    Block(const Block &) = delete;
    Block &operator=(const Block &) = delete;
    std::vector<uint8_t> bytes() const { return std::vector<uint8_t>(data, data + size); }
    uint8_t *data;
    size_t size;
};

// ---------------------------------------------------------------------------
// rmgAndBits
// ---------------------------------------------------------------------------

TEST(AndBits, AgreesWithABitLoopForAllPhasePairsAndWidths) {
    for (int srcPhase = 0; srcPhase < 8; ++srcPhase) {
        for (int dstPhase = 0; dstPhase < 8; ++dstPhase) {
            for (int width = 1; width <= 80; ++width) {
                const int rows = 3;
                // Rows exactly as long as the bits need, the buffers exactly
                // as long as the rows: nothing outside may be touched.
                const int srcStep = (srcPhase + width + 7) / 8;
                const int dstStep = (dstPhase + width + 7) / 8;
                const uint32_t seed =
                    static_cast<uint32_t>(srcPhase * 1000 + dstPhase * 100 + width);
                for (uint32_t mask : {0xFFFFFFFFu, 0u, 0x5AC3u}) {
                    Block src(static_cast<size_t>(srcStep * rows), seed);
                    Block dst(static_cast<size_t>(dstStep * rows), seed + 7);
                    std::vector<uint8_t> want = dst.bytes();
                    for (int r = 0; r < rows; ++r)
                        for (int i = 0; i < width; ++i) {
                            const int d = dstPhase + i;
                            // The mask byte of destination byte j: high for
                            // even j, low for odd j.
                            const unsigned m = (d / 8) % 2 == 0 ? (mask >> 8) & 0xFF : mask & 0xFF;
                            const bool bit = bitOf(src.data + r * srcStep, srcPhase + i) &&
                                             ((m >> (7 - d % 8)) & 1);
                            setBit(want.data() + r * dstStep, d, bit);
                        }
                    rmgAndBits(src.data, dst.data, srcPhase, dstPhase, width, rows, srcStep,
                               dstStep, mask);
                    ASSERT_EQ(dst.bytes(), want)
                        << srcPhase << " " << dstPhase << " width " << width << " mask " << mask;
                }
            }
        }
    }
}

TEST(AndBits, PhasesBeyondOneByteMoveTheStarts) {
    Block src(8, 1);
    Block dst(8, 2);
    std::vector<uint8_t> want = dst.bytes();
    for (int i = 0; i < 21; ++i) setBit(want.data(), 27 + i, bitOf(src.data, 13 + i));
    rmgAndBits(src.data, dst.data, 13, 27, 21, 1, 8, 8, 0xFFFFFFFFu);
    EXPECT_EQ(dst.bytes(), want);
}

TEST(AndBits, WidthOneAndWidthsEndingOnAChunkBoundary) {
    // One bit at destination phase 7 from source phase 0: only bit 7 of
    // the destination byte changes.
    uint8_t src[1] = {0x80};
    uint8_t dst[1] = {0x00};
    rmgAndBits(src, dst, 0, 7, 1, 1, 1, 1, 0xFFFFFFFFu);
    EXPECT_EQ(dst[0], 0x01);
    dst[0] = 0xFF;
    src[0] = 0x7F;
    rmgAndBits(src, dst, 0, 3, 1, 1, 1, 1, 0xFFFFFFFFu);
    EXPECT_EQ(dst[0], 0xEF);
    // 13 bits from destination phase 3 end on the 16-bit boundary; 29 from
    // phase 3 end on the 32-bit one.
    uint8_t s16[4] = {0xFF, 0xFF, 0xFF, 0xFF};
    uint8_t d16[4] = {0x00, 0x00, 0x00, 0x00};
    rmgAndBits(s16, d16, 5, 3, 13, 1, 4, 4, 0xFFFFFFFFu);
    EXPECT_EQ(std::vector<uint8_t>(d16, d16 + 4), (std::vector<uint8_t>{0x1F, 0xFF, 0, 0}));
    rmgAndBits(s16, d16, 0, 3, 29, 1, 4, 4, 0xFFFFFFFFu);
    EXPECT_EQ(std::vector<uint8_t>(d16, d16 + 4), (std::vector<uint8_t>{0x1F, 0xFF, 0xFF, 0xFF}));
    // A zero mask clears exactly the range.
    rmgAndBits(s16, d16, 0, 4, 16, 1, 4, 4, 0);
    EXPECT_EQ(std::vector<uint8_t>(d16, d16 + 4), (std::vector<uint8_t>{0x10, 0x00, 0x0F, 0xFF}));
}

// ---------------------------------------------------------------------------
// Vector forms against the scalar form
// ---------------------------------------------------------------------------

// The forms this processor runs, besides the scalar one.
std::vector<const rmg::AndForms *> vectorForms() {
    std::vector<const rmg::AndForms *> forms;
    if (rmg::cpuBestForm() >= rmg::kFormSse2) forms.push_back(&rmg::kAndSse2);
    if (rmg::cpuBestForm() >= rmg::kFormAvx2) forms.push_back(&rmg::kAndAvx2);
    if (rmg::cpuBestForm() >= rmg::kFormAvx512) forms.push_back(&rmg::kAndAvx512);
    return forms;
}

constexpr size_t kGuard = 80;

TEST(AndForms, PatternRunsAgreeAtEveryLengthAndAlignment) {
    const std::vector<uint8_t> src = randomBytes(300 + 2 * kGuard + 64, 11);
    const std::vector<uint8_t> base = randomBytes(300 + 2 * kGuard + 64, 12);
    const uint64_t pattern = 0xF00FA55A3CC3E77Eull;
    for (const rmg::AndForms *forms : vectorForms()) {
        for (size_t n = 0; n <= 300; ++n) {
            for (size_t align = 0; align < 64; ++align) {
                const size_t srcAlign = (align * 7 + n) % 64;
                alignas(64) uint8_t want[300 + 2 * kGuard + 64];
                alignas(64) uint8_t have[300 + 2 * kGuard + 64];
                std::memcpy(want, base.data(), sizeof want);
                std::memcpy(have, base.data(), sizeof have);
                rmg::kAndScalar.pattern(src.data() + srcAlign, want + kGuard + align, n, 1, 0, 0,
                                        pattern);
                forms->pattern(src.data() + srcAlign, have + kGuard + align, n, 1, 0, 0, pattern);
                ASSERT_EQ(0, std::memcmp(want, have, sizeof want)) << n << " at " << align;
                // In place.
                std::memcpy(have, base.data(), sizeof have);
                std::memcpy(want, base.data(), sizeof want);
                rmg::kAndScalar.pattern(want + kGuard + align, want + kGuard + align, n, 1, 0, 0,
                                        pattern);
                forms->pattern(have + kGuard + align, have + kGuard + align, n, 1, 0, 0, pattern);
                ASSERT_EQ(0, std::memcmp(want, have, sizeof want)) << n << " in place at " << align;
            }
        }
    }
}

TEST(AndForms, ScalarPatternIsTheByteFormula) {
    const std::vector<uint8_t> src = randomBytes(40, 3);
    std::vector<uint8_t> dst(48, 0xEE);
    const uint64_t pattern = 0x0102040810204080ull;
    rmg::kAndScalar.pattern(src.data(), dst.data() + 3, 37, 1, 0, 0, pattern);
    for (size_t k = 0; k < 48; ++k) {
        if (k < 3 || k >= 40) {
            EXPECT_EQ(dst[k], 0xEE) << k;
        } else {
            const auto m = static_cast<uint8_t>(pattern >> (8 * ((k - 3) % 8)));
            EXPECT_EQ(dst[k], src[k - 3] & m) << k;
        }
    }
}

TEST(AndForms, ByteOperationsAgreeAtEveryLengthAndAlignment) {
    constexpr size_t kSize = 300 + 2 * kGuard + 64;
    const std::vector<uint8_t> a = randomBytes(kSize, 21);
    const std::vector<uint8_t> b = randomBytes(kSize, 22);
    const std::vector<uint8_t> base = randomBytes(kSize, 23);
    for (const rmg::AndForms *forms : vectorForms()) {
        for (int op : {rmg::kByteAnd, rmg::kByteOr, rmg::kByteXor}) {
            for (size_t n = 0; n <= 300; ++n) {
                for (size_t align = 0; align < 64; ++align) {
                    const size_t aAlign = (align * 5 + n) % 64;
                    const size_t bAlign = (align * 11 + 3 * n) % 64;
                    alignas(64) uint8_t want[kSize];
                    alignas(64) uint8_t have[kSize];
                    std::memcpy(want, base.data(), kSize);
                    std::memcpy(have, base.data(), kSize);
                    rmg::kAndScalar.bytes(op, a.data() + aAlign, b.data() + bAlign,
                                          want + kGuard + align, n, 1, 0, 0, 0);
                    forms->bytes(op, a.data() + aAlign, b.data() + bAlign, have + kGuard + align, n,
                                 1, 0, 0, 0);
                    ASSERT_EQ(0, std::memcmp(want, have, kSize))
                        << op << " " << n << " at " << align;
                    // The destination as the first source (XOR must not
                    // take any byte twice).
                    std::memcpy(want, base.data(), kSize);
                    std::memcpy(have, base.data(), kSize);
                    rmg::kAndScalar.bytes(op, want + kGuard + align, b.data() + bAlign,
                                          want + kGuard + align, n, 1, 0, 0, 0);
                    forms->bytes(op, have + kGuard + align, b.data() + bAlign,
                                 have + kGuard + align, n, 1, 0, 0, 0);
                    ASSERT_EQ(0, std::memcmp(want, have, kSize)) << op << " " << n << " in place";
                }
            }
        }
    }
}

TEST(AndForms, ScalarByteOperationsAreTheFormulas) {
    const std::vector<uint8_t> a = randomBytes(29, 1);
    const std::vector<uint8_t> b = randomBytes(29, 2);
    for (int op : {rmg::kByteAnd, rmg::kByteOr, rmg::kByteXor}) {
        std::vector<uint8_t> d(31, 0x77);
        rmg::kAndScalar.bytes(op, a.data(), b.data(), d.data() + 1, 29, 1, 0, 0, 0);
        EXPECT_EQ(d[0], 0x77);
        EXPECT_EQ(d[30], 0x77);
        for (size_t k = 0; k < 29; ++k) {
            const int want = op == rmg::kByteAnd  ? (a[k] & b[k])
                             : op == rmg::kByteOr ? (a[k] | b[k])
                                                  : (a[k] ^ b[k]);
            EXPECT_EQ(d[k + 1], want) << op << " " << k;
        }
    }
}

// Several rows with their own steps, short and long, and a call large
// enough for the stores that bypass the caches.
TEST(AndForms, RowsAgreeAlsoWhenTheStoresBypassTheCaches) {
    struct Shape {
        size_t n, rows;
        ptrdiff_t srcStep, dstStep, bStep;
    };
    const Shape shapes[] = {{5, 4, 9, 13, 7},
                            {70, 3, 75, 77, 71},
                            {300, 5, 301, 333, 310},
                            {1000, 2, -1003, 1011, 1005},
                            {3000003, 6, 3000011, 3000005, 3000009}};
    for (const Shape &shape : shapes) {
        const size_t span = (shape.rows + 1) * (shape.n + 64);
        const std::vector<uint8_t> src = randomBytes(span, 41);
        const std::vector<uint8_t> b = randomBytes(span, 42);
        const std::vector<uint8_t> base = randomBytes(span, 43);
        // Offsets of the first rows; a negative step starts from the end.
        const size_t first = shape.srcStep < 0 ? span - shape.n - 3 : 3;
        for (const rmg::AndForms *forms : vectorForms()) {
            std::vector<uint8_t> want = base;
            std::vector<uint8_t> have = base;
            rmg::kAndScalar.pattern(src.data() + first, want.data() + 5, shape.n, shape.rows,
                                    shape.srcStep, shape.dstStep, 0x0123456789ABCDEFull);
            forms->pattern(src.data() + first, have.data() + 5, shape.n, shape.rows, shape.srcStep,
                           shape.dstStep, 0x0123456789ABCDEFull);
            ASSERT_TRUE(want == have) << shape.n << " x " << shape.rows;
            for (int op : {rmg::kByteAnd, rmg::kByteXor}) {
                rmg::kAndScalar.bytes(op, src.data() + first, b.data() + 1, want.data() + 6,
                                      shape.n, shape.rows, shape.srcStep, shape.bStep,
                                      shape.dstStep);
                forms->bytes(op, src.data() + first, b.data() + 1, have.data() + 6, shape.n,
                             shape.rows, shape.srcStep, shape.bStep, shape.dstStep);
                ASSERT_TRUE(want == have) << op << " " << shape.n << " x " << shape.rows;
            }
        }
    }
}

TEST(AndForms, ChannelRunsAgreeForEveryStrideLengthAndAlignment) {
    constexpr size_t kSize = 2 * (300 * 52 + 5) + 2 * kGuard + 64;
    const std::vector<uint8_t> src = randomBytes(kSize, 31);
    const std::vector<uint8_t> base = randomBytes(kSize, 32);
    std::vector<uint8_t> want(kSize + 64);
    std::vector<uint8_t> have(kSize + 64);
    // 64-aligned starts inside the vectors.
    uint8_t *wantAt = want.data() + (64 - reinterpret_cast<uintptr_t>(want.data()) % 64) % 64;
    uint8_t *haveAt = have.data() + (64 - reinterpret_cast<uintptr_t>(have.data()) % 64) % 64;
    const uint32_t mask = 0xA5C3F00Fu;
    for (const rmg::AndForms *forms : vectorForms()) {
        for (int size : {1, 2, 4}) {
            for (int channels : {1, 2, 3, 4, 5, 6, 8, 12, 13}) {
                const ptrdiff_t stride = size * channels;
                for (size_t n = 0; n <= 300; n += (n < 40 ? 1 : 7)) {
                    for (size_t align = 0; align < 64; ++align) {
                        const size_t srcAlign = (align * 3 + n) % 64;
                        std::memcpy(wantAt, base.data(), kSize);
                        std::memcpy(haveAt, base.data(), kSize);
                        // Two rows, the second 5 bytes further on.
                        const ptrdiff_t step = stride * static_cast<ptrdiff_t>(n) + 5;
                        if (kGuard + align + 2 * static_cast<size_t>(step) + 8 > kSize) continue;
                        rmg::kAndScalar.channel(src.data() + srcAlign, wantAt + kGuard + align, n,
                                                2, step, step, stride, size, mask);
                        forms->channel(src.data() + srcAlign, haveAt + kGuard + align, n, 2, step,
                                       step, stride, size, mask);
                        ASSERT_EQ(0, std::memcmp(wantAt, haveAt, kSize))
                            << size << "x" << channels << " " << n << " at " << align;
                        // Two sources; then the destination as the first.
                        const uint8_t *second = src.data() + (srcAlign * 7) % 64;
                        rmg::kAndScalar.pair(src.data() + srcAlign, second, wantAt + kGuard + align,
                                             n, 2, step, step + 1, step, stride, size);
                        forms->pair(src.data() + srcAlign, second, haveAt + kGuard + align, n, 2,
                                    step, step + 1, step, stride, size);
                        ASSERT_EQ(0, std::memcmp(wantAt, haveAt, kSize))
                            << "pair " << size << "x" << channels << " " << n << " at " << align;
                        rmg::kAndScalar.pair(wantAt + kGuard + align, second,
                                             wantAt + kGuard + align, n, 2, step, step, step,
                                             stride, size);
                        forms->pair(haveAt + kGuard + align, second, haveAt + kGuard + align, n, 2,
                                    step, step, step, stride, size);
                        ASSERT_EQ(0, std::memcmp(wantAt, haveAt, kSize))
                            << "pair in place " << size << "x" << channels << " " << n;
                    }
                }
            }
        }
    }
}

TEST(AndForms, ScalarChannelTouchesOnlyTheChannel) {
    const std::vector<uint8_t> src = randomBytes(40, 5);
    std::vector<uint8_t> dst(40, 0xEE);
    // 16-bit elements, 3 channels: elements at bytes 0, 6, 12.
    rmg::kAndScalar.channel(src.data(), dst.data(), 3, 1, 0, 0, 6, 2, 0x0FF0u);
    for (size_t k = 0; k < 40; ++k) {
        if (k < 18 && k % 6 < 2)
            EXPECT_EQ(dst[k], src[k] & (k % 6 == 0 ? 0xF0 : 0x0F)) << k;
        else
            EXPECT_EQ(dst[k], 0xEE) << k;
    }
}

// ---------------------------------------------------------------------------
// The word paths
// ---------------------------------------------------------------------------

TEST(AndWords, SixtyFourBitWordsLeaveASingleWordAlone) {
    rmgtest::inEveryForm([&](int) {
        Block src(8, 1);
        Block dst(8, 2);
        const std::vector<uint8_t> before = dst.bytes();
        rmgAndWords64(src.data, dst.data, 1, 0);
        EXPECT_EQ(dst.bytes(), before);
        for (int count : {0, 2, 3, 7, 40}) {
            Block s(static_cast<size_t>(count) * 8, 3);
            Block d(static_cast<size_t>(count) * 8, 4);
            rmgAndWords64(s.data, d.data, count, 0x00FF00FF0F0F0F0Full);
            for (int k = 0; k < count * 8; ++k) {
                const auto m = static_cast<uint8_t>(0x00FF00FF0F0F0F0Full >> (8 * (k % 8)));
                ASSERT_EQ(d.data[k], s.data[k] & m) << count << " " << k;
            }
        }
    });
}

// A single 32-bit word: the word itself gets its result, the word in front
// of the buffers is neither read nor written (the blocks are exactly 4
// bytes, so the address sanitizer would see it).
TEST(AndWords, ThirtyTwoBitWordsOfCountOneStayInsideTheBuffer) {
    rmgtest::inEveryForm([&](int) {
        Block src(4, 1);
        Block dst(4, 2);
        rmgAndWords32(src.data, dst.data, 1, 0xF0F0FF00u);
        const uint8_t m[4] = {0x00, 0xFF, 0xF0, 0xF0};
        for (int k = 0; k < 4; ++k) EXPECT_EQ(dst.data[k], src.data[k] & m[k]);
        // Inside a larger buffer, the word before the start is left alone.
        std::vector<uint8_t> big = randomBytes(12, 9);
        const std::vector<uint8_t> before = big;
        rmgAndWords32(big.data() + 4, big.data() + 8, 1, 0);
        EXPECT_EQ(std::vector<uint8_t>(big.begin(), big.begin() + 8),
                  std::vector<uint8_t>(before.begin(), before.begin() + 8));
        EXPECT_EQ(std::vector<uint8_t>(big.begin() + 8, big.end()), std::vector<uint8_t>(4, 0));
        for (int count : {0, 2, 3, 5, 33}) {
            Block s(static_cast<size_t>(count) * 4, 3);
            Block d(static_cast<size_t>(count) * 4, 4);
            rmgAndWords32(s.data, d.data, count, 0x12345678u);
            for (int k = 0; k < count * 4; ++k)
                ASSERT_EQ(d.data[k], s.data[k] & static_cast<uint8_t>(0x12345678u >> (8 * (k % 4))))
                    << count << " " << k;
        }
    });
}

// ---------------------------------------------------------------------------
// The byte-range kernel
// ---------------------------------------------------------------------------

TEST(AndRows, MaskBytesStandByTheDestinationsAddressLanes) {
    rmgtest::inEveryForm([&](int form) {
        alignas(16) uint8_t src[64];
        alignas(16) uint8_t dst[64];
        std::memset(src, 0xFF, sizeof src);
        std::memset(dst, 0x11, sizeof dst);
        // Rows of 5 bytes at destination offsets 3 and 3 + 13, source
        // offsets 1 and 1 + 9.
        rmgAndRows(src + 1, dst + 3, 5, 2, 9, 13, 0x8877665544332211ull);
        for (int k = 0; k < 64; ++k) {
            const bool inside = (k >= 3 && k < 8) || (k >= 16 && k < 21);
            const auto lane = static_cast<uint8_t>(0x8877665544332211ull >> (8 * (k % 8)));
            EXPECT_EQ(dst[k], inside ? lane : 0x11) << form << " " << k;
        }
    });
}

TEST(AndRows, LongRowsAtAnyPhaseMatchTheLaneFormula) {
    const std::vector<uint8_t> srcBytes = randomBytes(4000, 1);
    const uint64_t mask = 0xFEDCBA9876543210ull;
    rmgtest::inEveryForm([&](int form) {
        for (int phase = 0; phase < 8; ++phase) {
            std::vector<uint8_t> dst = randomBytes(4000, 2);
            const std::vector<uint8_t> before = dst;
            rmgAndRows(srcBytes.data() + 3, dst.data() + phase, 900, 4, 950, 999, mask);
            for (size_t k = 0; k < dst.size(); ++k) {
                const ptrdiff_t off = static_cast<ptrdiff_t>(k) - phase;
                const ptrdiff_t row = off >= 0 ? off / 999 : -1;
                const ptrdiff_t col = off - row * 999;
                if (row >= 0 && row < 4 && col < 900) {
                    const auto lane =
                        static_cast<size_t>(reinterpret_cast<uintptr_t>(dst.data() + k) % 8);
                    const uint8_t want = srcBytes[static_cast<size_t>(3 + row * 950 + col)] &
                                         static_cast<uint8_t>(mask >> (8 * lane));
                    ASSERT_EQ(dst[k], want) << form << " " << phase << " " << k;
                } else {
                    ASSERT_EQ(dst[k], before[k]) << form << " " << phase << " " << k;
                }
            }
        }
    });
}

// ---------------------------------------------------------------------------
// One channel
// ---------------------------------------------------------------------------

TEST(AndCoi, OneChannelOfEachImageWithItsOwnChannelCount) {
    rmgtest::inEveryForm([&](int) {
        // 8 bits: 3-channel source, channel 2; 4-channel destination,
        // channel 0; 2 rows of 40 pixels.
        const std::vector<uint8_t> src = randomBytes(2 * 130, 1);
        std::vector<uint8_t> dst = randomBytes(2 * 170, 2);
        const std::vector<uint8_t> before = dst;
        rmgAndCoi8(src.data(), dst.data(), 40, 2, 3, 4, 130, 170, 2, 0, 0x3C);
        std::vector<uint8_t> want = before;
        for (int r = 0; r < 2; ++r)
            for (int i = 0; i < 40; ++i)
                want[static_cast<size_t>(r * 170 + i * 4)] =
                    static_cast<uint8_t>(src[static_cast<size_t>(r * 130 + i * 3 + 2)] & 0x3C);
        EXPECT_EQ(dst, want);

        // 16 and 32 bits, the same channel count: the vector path.
        std::vector<uint8_t> s16 = randomBytes(3 * 200 * 6, 3);
        std::vector<uint8_t> d16 = randomBytes(3 * 200 * 6, 4);
        std::vector<uint8_t> w16 = d16;
        rmgAndCoi16(s16.data(), d16.data() + 2, 190, 3, 3, 3, 1200, 1200, 1, 2, 0xF00Fu);
        for (int r = 0; r < 3; ++r)
            for (int i = 0; i < 190; ++i) {
                const size_t at = static_cast<size_t>(2 + r * 1200 + i * 6 + 4);
                const size_t from = static_cast<size_t>(r * 1200 + i * 6 + 2);
                w16[at] = static_cast<uint8_t>(s16[from] & 0x0F);
                w16[at + 1] = static_cast<uint8_t>(s16[from + 1] & 0xF0);
            }
        EXPECT_EQ(d16, w16);

        std::vector<uint8_t> s32 = randomBytes(2 * 100 * 16, 5);
        std::vector<uint8_t> d32 = randomBytes(2 * 100 * 16, 6);
        std::vector<uint8_t> w32 = d32;
        rmgAndCoi32(s32.data(), d32.data(), 100, 2, 4, 4, 1600, 1600, 3, 3, 0x80FF01FEu);
        const uint8_t m[4] = {0xFE, 0x01, 0xFF, 0x80};
        for (int r = 0; r < 2; ++r)
            for (int i = 0; i < 100; ++i)
                for (int j = 0; j < 4; ++j) {
                    const size_t at = static_cast<size_t>(r * 1600 + i * 16 + 12 + j);
                    w32[at] = static_cast<uint8_t>(s32[at] & m[j]);
                }
        EXPECT_EQ(d32, w32);
    });
}

}  // namespace
