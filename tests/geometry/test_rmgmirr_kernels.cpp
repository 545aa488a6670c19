// The mirror's row kernel: every vector form against the element loop, for
// every unit, lengths 0 to 300 and every alignment of both runs, with guard
// bytes around the destination.
#include <gtest/gtest.h>

#include <vector>

#include "geometry/rmgmirr.h"
#include "support/rmgforms.h"

namespace {

TEST(MirrorKernels, ReverseRunMatchesTheElementLoopInEveryForm) {
    const int units[] = {1, 2, 3, 4, 6, 8, 12, 16};
    rmgtest::inEveryForm([&](int) {
        for (int unit : units)
            for (int count = 0; count <= 300; ++count)
                for (int srcShift = 0; srcShift < 4; ++srcShift)
                    for (int dstShift = 0; dstShift < 4; ++dstShift) {
                        // Each run in a block of its exact size, so that the
                        // sanitizer sees any byte beyond it.
                        const size_t bytes = static_cast<size_t>(count) * unit;
                        std::vector<unsigned char> srcBlock(bytes + srcShift);
                        std::vector<unsigned char> dstBlock(bytes + dstShift + 8, 0xA5);
                        for (size_t i = 0; i < srcBlock.size(); ++i)
                            srcBlock[i] = static_cast<unsigned char>(i * 7 + unit + count);
                        std::vector<unsigned char> expected = dstBlock;
                        const unsigned char *src = srcBlock.data() + srcShift;
                        for (int k = 0; k < count; ++k)
                            for (int b = 0; b < unit; ++b)
                                expected[dstShift + k * unit + b] = src[(count - 1 - k) * unit + b];
                        ownReverseRun(src, dstBlock.data() + dstShift, count, unit);
                        ASSERT_EQ(expected, dstBlock)
                            << "unit " << unit << " count " << count << " shifts " << srcShift
                            << "," << dstShift;
                    }
    });
}

TEST(MirrorKernels, ReverseRunReadsNothingBeyondTheSource) {
    // A source block that ends exactly where the run ends and starts where
    // it starts: any read outside is seen by the sanitizer.
    rmgtest::inEveryForm([&](int) {
        for (int unit : {1, 3, 6, 12}) {
            for (int count = 1; count <= 70; ++count) {
                auto *src = new unsigned char[static_cast<size_t>(count) * unit];
                auto *dst = new unsigned char[static_cast<size_t>(count) * unit];
                for (int i = 0; i < count * unit; ++i) src[i] = static_cast<unsigned char>(i);
                ownReverseRun(src, dst, count, unit);
                for (int k = 0; k < count; ++k)
                    for (int b = 0; b < unit; ++b)
                        ASSERT_EQ(src[(count - 1 - k) * unit + b], dst[k * unit + b]);
                delete[] src;
                delete[] dst;
            }
        }
    });
}

TEST(MirrorKernels, ReverseBitsWritesOnlyTheRun) {
    const unsigned char from[2] = {0xB4, 0x0F};  // 1011 0100 0000 1111
    unsigned char to[2] = {0x00, 0xFF};
    // Bits 2..9 of `from` (1101 0000) reversed into positions 4..11.
    ownReverseBits(from, to, 2, 4, 8);
    EXPECT_EQ(0x00, to[0]);  // 0000 0000: reversed run 0000 1011 starts at bit 4
    EXPECT_EQ(0xBF, to[1]);  // 1011 1111
}

TEST(MirrorKernels, CopyBitsKeepsTheNeighbours) {
    const unsigned char from[2] = {0xFF, 0xFF};
    unsigned char to[2] = {0x00, 0x00};
    ownCopyBits(from, to, 4, 5, 6);  // positions 2..7 of `to`
    EXPECT_EQ(0x3F, to[0]);
    EXPECT_EQ(0x00, to[1]);
}

}  // namespace
