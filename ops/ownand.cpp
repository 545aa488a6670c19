// Logical kernels: the portable forms, the choice of a form for the
// processor, and the kernels of words, byte ranges, bit ranges, one
// channel and bytes that the row kernels of rmgAndS and rmgAnd use.
#include "ops/ownand.h"

#include <cstddef>
#include <cstdint>

#include "core/rmgcpu.h"
#include "ops/ownand_impl.h"

namespace rmg {

constexpr AndForms kAndScalar = {andPatternRows, byteOpScalar, andChannelLoop, andPairLoop};

namespace {

constexpr FormTable<const AndForms *> kAnd = formTable<const AndForms *>(
    &kAndScalar, RMG_FORM_SSE2(&kAndSse2), RMG_FORM_AVX2(&kAndAvx2),
    RMG_FORM_AVX512(&kAndAvx512));

}  // namespace

const AndForms &andForms() { return *kAnd.get(); }

}  // namespace rmg

namespace {

ptrdiff_t times(int a, int b) { return static_cast<ptrdiff_t>(a) * b; }

// One channel of pixel-order rows, elements of `size` bytes: the scheme of
// rmgAndCoi8, rmgAndCoi16 and rmgAndCoi32.
void andChannel(const unsigned char *src, unsigned char *dst, int width, int height,
                int srcChannels, int dstChannels, int srcStep, int dstStep, int srcIndex,
                int dstIndex, int size, uint32_t mask) {
    if (width <= 0 || height <= 0) return;
    const unsigned char *s = src + times(srcIndex, size);
    unsigned char *d = dst + times(dstIndex, size);
    const rmg::AndForms &forms = rmg::andForms();
    if (srcChannels == dstChannels) {
        forms.channel(s, d, static_cast<size_t>(width), static_cast<size_t>(height), srcStep,
                      dstStep, times(srcChannels, size), size, mask);
        return;
    }
    // Different pixel sizes: each element on its own.
    for (int r = 0; r < height; ++r)
        for (int i = 0; i < width; ++i)
            rmg::kAndScalar.channel(s + times(r, srcStep) + times(i, srcChannels * size),
                                    d + times(r, dstStep) + times(i, dstChannels * size), 1, 1, 0,
                                    0, size, size, mask);
}

}  // namespace

int ownAndKernelIndex(unsigned int depth) {
    switch (depth) {
        case RMG_DEPTH_1U:
            return 0;
        case RMG_DEPTH_8U:
        case RMG_DEPTH_8S:
            return 1;
        case RMG_DEPTH_16U:
        case RMG_DEPTH_16S:
            return 2;
        case RMG_DEPTH_32S:
            return 3;
        default:
            return -1;
    }
}

void rmgAndWords64(const unsigned char *src, unsigned char *dst, int count, uint64_t mask) {
    // A single word is left as it is, as the pairs of words that this path
    // works in from the end leave it.
    if (count <= 1) return;
    rmg::andForms().pattern(src, dst, static_cast<size_t>(count) * 8, 1, 0, 0, mask);
}

void rmgAndWords32(const unsigned char *src, unsigned char *dst, int count, uint32_t mask) {
    // Working in pairs of words from the end, a count of one would take the
    // word before the buffers into its pair as well: it would read the 4
    // bytes in front of the source and store them, ANDed, in front of the
    // destination. That word lies outside the image, so it is neither read
    // nor written here; word 0 gets its result like every other word.
    if (count <= 0) return;
    const uint64_t pattern = (static_cast<uint64_t>(mask) << 32) | mask;
    rmg::andForms().pattern(src, dst, static_cast<size_t>(count) * 4, 1, 0, 0, pattern);
}

void rmgAndRows(const unsigned char *src, unsigned char *dst, int rowBytes, int rows, int srcStep,
                int dstStep, uint64_t mask) {
    if (rowBytes <= 0 || rows <= 0) return;
    // The mask's bytes stand by the lanes of the destination's aligned
    // 8-byte words.
    const auto lane = static_cast<size_t>(reinterpret_cast<uintptr_t>(dst) & 7);
    rmg::andForms().pattern(src, dst, static_cast<size_t>(rowBytes), static_cast<size_t>(rows),
                            srcStep, dstStep, rmg::rotatePattern(mask, lane));
}

void rmgAndBits(const unsigned char *src, unsigned char *dst, int srcPhase, int dstPhase, int width,
                int rows, int srcStep, int dstStep, uint32_t mask) {
    if (width <= 0 || rows <= 0 || srcPhase < 0 || dstPhase < 0) return;
    src += srcPhase / 8;
    dst += dstPhase / 8;
    const int sp = srcPhase & 7;
    const int dp = dstPhase & 7;
    // Destination bytes 0 .. lastByte hold the range; bits sp + i of the
    // source meet bits dp + i of the destination, so destination byte j
    // takes its bits from source bits 8j - dp + sp .. 8j - dp + sp + 7.
    const int lastBit = dp + width - 1;
    const int lastByte = lastBit / 8;
    const int srcLastByte = (sp + width - 1) / 8;
    const int shift = sp - dp;  // source bit of destination bit b: b + shift
    const auto maskHigh = static_cast<unsigned>((mask >> 8) & 0xFF);
    const auto maskLow = static_cast<unsigned>(mask & 0xFF);
    for (int r = 0; r < rows; ++r) {
        const unsigned char *s = src + times(r, srcStep);
        unsigned char *d = dst + times(r, dstStep);
        // A source byte of the range, or 0 outside it (those bits are not
        // used): the source is read only where the range lies.
        auto srcByte = [&](int index) -> unsigned {
            return index >= 0 && index <= srcLastByte ? s[index] : 0u;
        };
        for (int j = 0; j <= lastByte; ++j) {
            // 16 source bits whose high byte holds destination bit 8j.
            const int bit = 8 * j + shift;  // may be negative for j = 0
            const int index = bit >= 0 ? bit / 8 : -1;
            const int offset = bit - 8 * index;  // 0 .. 7, or 8 + bit
            const unsigned pair = (srcByte(index) << 8) | srcByte(index + 1);
            unsigned bits = (pair << offset >> 8) & 0xFF;
            bits &= (j & 1) ? maskLow : maskHigh;
            unsigned keep = 0;
            if (j == 0) keep |= 0xFFu << (8 - dp) & 0xFF;
            if (j == lastByte) keep |= 0xFFu >> ((lastBit & 7) + 1);
            d[j] = static_cast<unsigned char>((d[j] & keep) | (bits & ~keep & 0xFF));
        }
    }
}

void rmgAndCoi8(const unsigned char *src, unsigned char *dst, int width, int height,
                int srcChannels, int dstChannels, int srcStep, int dstStep, int srcIndex,
                int dstIndex, uint8_t mask) {
    andChannel(src, dst, width, height, srcChannels, dstChannels, srcStep, dstStep, srcIndex,
               dstIndex, 1, mask);
}

void rmgAndCoi16(const unsigned char *src, unsigned char *dst, int width, int height,
                 int srcChannels, int dstChannels, int srcStep, int dstStep, int srcIndex,
                 int dstIndex, uint16_t mask) {
    andChannel(src, dst, width, height, srcChannels, dstChannels, srcStep, dstStep, srcIndex,
               dstIndex, 2, mask);
}

void rmgAndCoi32(const unsigned char *src, unsigned char *dst, int width, int height,
                 int srcChannels, int dstChannels, int srcStep, int dstStep, int srcIndex,
                 int dstIndex, uint32_t mask) {
    andChannel(src, dst, width, height, srcChannels, dstChannels, srcStep, dstStep, srcIndex,
               dstIndex, 4, mask);
}

namespace {

void byteRows(int op, const unsigned char *srcA, const unsigned char *srcB, unsigned char *dst,
              int count, int rows, int stepA, int stepB, int stepD) {
    if (count > 0 && rows > 0)
        rmg::andForms().bytes(op, srcA, srcB, dst, static_cast<size_t>(count),
                              static_cast<size_t>(rows), stepA, stepB, stepD);
}

}  // namespace

void rmgAndBytes(const unsigned char *srcA, const unsigned char *srcB, unsigned char *dst,
                 int count) {
    byteRows(rmg::kByteAnd, srcA, srcB, dst, count, 1, 0, 0, 0);
}

void rmgOrBytes(const unsigned char *srcA, const unsigned char *srcB, unsigned char *dst,
                int count) {
    byteRows(rmg::kByteOr, srcA, srcB, dst, count, 1, 0, 0, 0);
}

void rmgXorBytes(const unsigned char *srcA, const unsigned char *srcB, unsigned char *dst,
                 int count) {
    byteRows(rmg::kByteXor, srcA, srcB, dst, count, 1, 0, 0, 0);
}

void ownAndByteRows(const unsigned char *srcA, const unsigned char *srcB, unsigned char *dst,
                    int count, int rows, int stepA, int stepB, int stepD) {
    byteRows(rmg::kByteAnd, srcA, srcB, dst, count, rows, stepA, stepB, stepD);
}

void ownAndChannels(const unsigned char *srcA, const unsigned char *srcB, unsigned char *dst,
                    int count, int rows, int stepA, int stepB, int stepD, int strideA, int strideB,
                    int strideD, int size) {
    if (count <= 0 || rows <= 0) return;
    if (strideA == strideD && strideB == strideD) {
        rmg::andForms().pair(srcA, srcB, dst, static_cast<size_t>(count), static_cast<size_t>(rows),
                             stepA, stepB, stepD, strideD, size);
        return;
    }
    // Pixels of different sizes: each element on its own.
    for (int r = 0; r < rows; ++r)
        for (int i = 0; i < count; ++i)
            rmg::kAndScalar.pair(srcA + times(r, stepA) + times(i, strideA),
                                 srcB + times(r, stepB) + times(i, strideB),
                                 dst + times(r, stepD) + times(i, strideD), 1, 1, 0, 0, 0, size,
                                 size);
}
