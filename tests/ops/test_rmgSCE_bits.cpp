// The 1-bit row functions of Copy and Exchange against a bit-by-bit model:
// every pair of start bits and every length from 0 to 80 bits, with random
// bytes around the runs and guard bytes on both sides, the whole buffers
// compared. And rmgCopyShifted with concrete bytes.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <memory>
#include <random>
#include <vector>

#include "ops/rmgSCE_copy.h"
#include "ops/rmgSCE_exchange.h"

namespace {

using Bytes = std::vector<unsigned char>;

constexpr int kGuard = 16;
constexpr int kMaxBits = 80;

// Bit `index` of a run that starts at bit 7 of `base`, the most significant.
bool bitAt(const Bytes &bytes, int base, int index) {
    return (bytes[static_cast<size_t>(base + (index >> 3))] >> (7 - (index & 7))) & 1u;
}

void setBitAt(Bytes &bytes, int base, int index, bool value) {
    unsigned char &b = bytes[static_cast<size_t>(base + (index >> 3))];
    const auto mask = static_cast<unsigned char>(0x80u >> (index & 7));
    b = static_cast<unsigned char>(value ? b | mask : b & ~mask);
}

Bytes randomBytes(std::mt19937 &rng, size_t n) {
    Bytes bytes(n);
    for (auto &b : bytes) b = static_cast<unsigned char>(rng());
    return bytes;
}

// A run of `count` bits from bit `bit` (7 the highest) of the byte after
// the guard: its index from the guard byte's bit 7 is 7 - bit.
int firstIndex(int bit) { return 7 - bit; }

TEST(CopyBits, EveryPhasePairAndLengthGivesTheBitCopy) {
    std::mt19937 rng(77);
    const size_t bytes = static_cast<size_t>(2 * kGuard + kMaxBits / 8 + 2);
    for (int srcBit = 0; srcBit < 8; ++srcBit)
        for (int dstBit = 0; dstBit < 8; ++dstBit)
            for (int count = 0; count <= kMaxBits; ++count)
                for (int round = 0; round < 4; ++round) {
                    const Bytes src = randomBytes(rng, bytes);
                    Bytes dst = randomBytes(rng, bytes);
                    Bytes want = dst;
                    for (int i = 0; i < count; ++i)
                        setBitAt(want, kGuard, firstIndex(dstBit) + i,
                                 bitAt(src, kGuard, firstIndex(srcBit) + i));
                    rmgCopyBits(src.data() + kGuard, dst.data() + kGuard, srcBit, dstBit, count);
                    ASSERT_EQ(dst, want)
                        << "srcBit " << srcBit << " dstBit " << dstBit << " count " << count;
                }
}

// The source run in a block of exactly its own bytes: nothing outside it is
// read (the sanitizer sees a read past the end of the block).
TEST(CopyBits, ReadsOnlyTheSourceBytesOfTheRun) {
    std::mt19937 rng(78);
    for (int srcBit = 0; srcBit < 8; ++srcBit)
        for (int dstBit = 0; dstBit < 8; ++dstBit)
            for (int count = 1; count <= kMaxBits; ++count) {
                const int srcBytes = (firstIndex(srcBit) + count + 7) / 8;
                const Bytes pool = randomBytes(rng, static_cast<size_t>(srcBytes));
                std::unique_ptr<unsigned char[]> exact(new unsigned char[pool.size()]);
                std::memcpy(exact.get(), pool.data(), pool.size());
                Bytes dst = randomBytes(rng, static_cast<size_t>(kGuard + 12));
                Bytes want = dst;
                for (int i = 0; i < count; ++i)
                    setBitAt(want, 0, firstIndex(dstBit) + i,
                             bitAt(pool, 0, firstIndex(srcBit) + i));
                rmgCopyBits(exact.get(), dst.data(), srcBit, dstBit, count);
                ASSERT_EQ(dst, want) << srcBit << " " << dstBit << " " << count;
            }
}

TEST(CopyBits, CountOfZeroOrBelowTouchesNothing) {
    const Bytes src(4, 0xFF);
    Bytes dst(4, 0x00);
    for (int count : {0, -1, -100}) rmgCopyBits(src.data(), dst.data() + 1, 3, 5, count);
    EXPECT_EQ(dst, Bytes(4, 0x00));
}

TEST(CopyShifted, JoinsNeighbouringSourceBytes) {
    const Bytes src = {0x12, 0x34, 0x56, 0x78, 0x9A, 0xBC, 0xDE, 0xF0, 0x0F, 0xED, 0xCB};
    // Shift 4 and 4: each output byte is the low half of one byte and the
    // high half of the next.
    Bytes dst(10, 0xAA);
    rmgCopyShifted(src.data(), dst.data(), 4, 4, 10);
    EXPECT_EQ(dst, (Bytes{0x23, 0x45, 0x67, 0x89, 0xAB, 0xCD, 0xEF, 0x00, 0xFE, 0xDC}));
    // Shifts 3 and 5 over 9 bytes: the eight-byte pass and one single byte.
    Bytes out(9, 0);
    rmgCopyShifted(src.data(), out.data(), 3, 5, 9);
    for (int i = 0; i < 9; ++i)
        EXPECT_EQ(out[i], static_cast<unsigned char>(src[i] << 3 | src[i + 1] >> 5)) << i;
    // Shifts that don't add up to 8 take each byte on its own.
    Bytes odd(4, 0);
    rmgCopyShifted(src.data(), odd.data(), 1, 6, 4);
    for (int i = 0; i < 4; ++i)
        EXPECT_EQ(odd[i], static_cast<unsigned char>(src[i] << 1 | src[i + 1] >> 6)) << i;
    // No bytes: nothing written.
    Bytes none(2, 0x5A);
    rmgCopyShifted(src.data(), none.data(), 2, 6, 0);
    EXPECT_EQ(none, Bytes(2, 0x5A));
}

TEST(CopyRegion1u, RowsAndBitColumnsAcrossBytes) {
    // Two rows of 4 bytes each side; 11 bits from column 3 to column 13.
    Bytes src = {0xFF, 0x00, 0xFF, 0x00, 0x0F, 0xF0, 0x0F, 0xF0};
    Bytes dst(8, 0x00);
    rmgCopyRegion1u(src.data(), dst.data(), 2, 11, 4, 4, 3, 13);
    Bytes want(8, 0x00);
    for (int r = 0; r < 2; ++r)
        for (int i = 0; i < 11; ++i) setBitAt(want, 4 * r, 13 + i, bitAt(src, 4 * r, 3 + i));
    EXPECT_EQ(dst, want);
}

TEST(ExchangeBits, EveryPhasePairAndLengthGivesTheBitSwap) {
    std::mt19937 rng(79);
    const size_t bytes = static_cast<size_t>(2 * kGuard + kMaxBits / 8 + 2);
    for (int srcX = 0; srcX < 8; ++srcX)
        for (int dstX = 0; dstX < 8; ++dstX)
            for (int count = 0; count <= kMaxBits; ++count) {
                // Two rows, 11 bytes apart in the source, 12 in the destination.
                Bytes src = randomBytes(rng, bytes + 11);
                Bytes dst = randomBytes(rng, bytes + 12);
                Bytes wantSrc = src;
                Bytes wantDst = dst;
                for (int r = 0; r < 2; ++r)
                    for (int i = 0; i < count; ++i) {
                        const bool a = bitAt(src, kGuard + 11 * r, srcX + i);
                        const bool b = bitAt(dst, kGuard + 12 * r, dstX + i);
                        setBitAt(wantSrc, kGuard + 11 * r, srcX + i, b);
                        setBitAt(wantDst, kGuard + 12 * r, dstX + i, a);
                    }
                const int done = ownExchangeBits(src.data() + kGuard, dst.data() + kGuard, 2, count,
                                                 11, 12, srcX, dstX);
                EXPECT_EQ(done, 2);
                ASSERT_EQ(src, wantSrc) << srcX << " " << dstX << " " << count;
                ASSERT_EQ(dst, wantDst) << srcX << " " << dstX << " " << count;
            }
}

TEST(ExchangeBits, ReturnsTheRowsDone) {
    Bytes a(4, 0xF0), b(4, 0x0F);
    EXPECT_EQ(ownExchangeBits(a.data(), b.data(), 0, 8, 4, 4, 0, 0), 0);
    EXPECT_EQ(ownExchangeBits(a.data(), b.data(), -3, 8, 4, 4, 0, 0), 0);
    EXPECT_EQ(a, Bytes(4, 0xF0));
    EXPECT_EQ(ownExchangeBits(a.data(), b.data(), 1, 4, 4, 4, 2, 6), 1);
    // Bits 2..5 of a (1, 1, 0, 0) and bits 6..9 of b (1, 1, 0, 0): the same
    // values, so nothing changes; then bits 0..3 of a with 4..7 of b.
    EXPECT_EQ(a[0], 0xF0);
    EXPECT_EQ(b[0], 0x0F);
    EXPECT_EQ(ownExchangeBits(a.data(), b.data(), 1, 4, 4, 4, 0, 4), 1);
    EXPECT_EQ(a[0], 0xF0);
    EXPECT_EQ(b[0], 0x0F);
    EXPECT_EQ(ownExchangeBits(a.data(), b.data(), 1, 4, 4, 4, 0, 0), 1);
    EXPECT_EQ(a[0], 0x00);
    EXPECT_EQ(b[0], 0xFF);
}

}  // namespace
