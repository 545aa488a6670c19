// The element kernels of scalar add and subtract: the scalar form against
// the formulas written out here, and every vector form against the scalar
// form for lengths 0 to 300 and every alignment 0 to 63, in place too; no
// byte in front of or behind a run is touched.
#include <gtest/gtest.h>

#include <climits>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <algorithm>
#include <random>
#include <vector>

#include "core/rmgcpu.h"
#include "ops/ownaddsub.h"
#include "support/rmgforms.h"

namespace {

using rmg::ElemRunFn;

int64_t clampTo(int64_t x, int64_t low, int64_t high) { return x < low ? low : x > high ? high : x; }
int64_t wrap32(int64_t x) { return static_cast<int32_t>(static_cast<uint32_t>(x)); }
int64_t word16(int64_t x) { return static_cast<int16_t>(static_cast<uint16_t>(x)); }

// The element of each family, written out from its definition.
int64_t formula(int family, int64_t e, int64_t v) {
    switch (family) {
    case rmg::kAdd8u:
        return clampTo(word16(e + word16(v)), 0, 255);
    case rmg::kSub8u:
        return clampTo(word16(e - word16(v)), 0, 255);
    case rmg::kRevSub8u:
        return clampTo(word16(word16(v) - e), 0, 255);
    case rmg::kAdd16u:
        return clampTo(e + v, 0, 65535);
    case rmg::kSub16u:
        return clampTo(e - v, 0, 65535);
    case rmg::kRevSub16u:
        return clampTo(v - e, 0, 65535);
    case rmg::kZero16u:
        return 0;
    case rmg::kAdd8s:
        return clampTo(wrap32(e + v), -128, 127);
    case rmg::kSub8s:
        return clampTo(wrap32(e - v), -128, 127);
    case rmg::kRevSub8s:
        return clampTo(wrap32(v - e), -128, 127);
    case rmg::kAdd16s:
        return clampTo(wrap32(e + v), -32768, 32767);
    case rmg::kSub16s:
        return clampTo(wrap32(e - v), -32768, 32767);
    case rmg::kRevSub16s:
        return clampTo(wrap32(v - e), -32768, 32767);
    case rmg::kAdd32s:
        return clampTo(e + static_cast<int32_t>(v), INT32_MIN, INT32_MAX);
    case rmg::kSub32s:
        return clampTo(e - static_cast<int32_t>(v), INT32_MIN, INT32_MAX);
    case rmg::kRevSub32s:
        return clampTo(static_cast<int32_t>(v) - e, INT32_MIN, INT32_MAX);
    case rmg::kOr1u:
        return (e | v) & 0xFF;
    case rmg::kAndNot1u:
        return e & ~v & 0xFF;
    case rmg::kNotAnd1u:
        return ~e & v & 0xFF;
    case rmg::kAdd8uFull:
        return clampTo(wrap32(e + v), 0, 255);
    case rmg::kSub8uFull:
        return clampTo(wrap32(e - v), 0, 255);
    default:
        return clampTo(wrap32(v - e), 0, 255);
    }
}

bool isSigned(int family) {
    return (family >= rmg::kAdd8s && family <= rmg::kRevSub32s);
}

int64_t load(int family, const uint8_t *p) {
    const int size = rmg::elemFamilySize(family);
    if (size == 1) return isSigned(family) ? static_cast<int8_t>(*p) : *p;
    if (size == 2) {
        uint16_t u;
        std::memcpy(&u, p, 2);
        return isSigned(family) ? static_cast<int16_t>(u) : u;
    }
    int32_t s;
    std::memcpy(&s, p, 4);
    return s;
}

// Constants for a family: the ends of 16 and 32 bits and of the element's
// range, and the thresholds where the vector forms change their step.
std::vector<int64_t> valuesFor(int family) {
    std::vector<int64_t> values = {0,      1,      -1,     2,          -2,        100,
                                   -100,   127,    128,    -128,       -129,      254,
                                   255,    256,    -255,   -256,       509,       510,
                                   -510,   32512,  32767,  32768,      -32768,    -32769,
                                   65534,  65535,  65536,  -65535,     -65536,    70000,
                                   131069, 131070, 131071, INT32_MAX,  INT32_MIN, INT32_MAX - 126,
                                   INT32_MAX - 127, INT32_MIN + 127, INT32_MIN + 128,
                                   INT32_MAX - 32767, INT32_MIN + 32768, 0x12345678};
    if (family >= rmg::kAdd16u && family <= rmg::kZero16u) {
        // The 16u families take a magnitude: 0 .. 2^31.
        for (int64_t &v : values) v = v < 0 ? -v : v;
        values.push_back(int64_t{1} << 31);
    }
    if (family >= rmg::kOr1u && family <= rmg::kNotAnd1u) values = {0x00, 0xFF};
    return values;
}

// A block of exactly `bytes` bytes, so that the sanitizer sees any access
// beyond its end.
struct Block {
    explicit Block(size_t bytes) : size(bytes), data(static_cast<uint8_t *>(std::malloc(bytes + 1))) {}
    ~Block() { std::free(data); }
    Block(const Block &) = delete;
    Block &operator=(const Block &) = delete;
    size_t size;
    uint8_t *data;
};

void randomBytes(uint8_t *p, size_t n, std::mt19937 &rng) {
    for (size_t i = 0; i < n; ++i) p[i] = static_cast<uint8_t>(rng());
}

TEST(ElemKernels, ScalarFormFollowsTheFormulas) {
    std::mt19937 rng(99);
    for (int family = 0; family < rmg::kElemFamilyCount; ++family) {
        const int size = rmg::elemFamilySize(family);
        for (int64_t v : valuesFor(family)) {
            std::vector<uint8_t> src(64 * 4);
            randomBytes(src.data(), src.size(), rng);
            if (size == 1)
                for (int i = 0; i < 256; ++i) src[static_cast<size_t>(i)] = static_cast<uint8_t>(i);
            std::vector<uint8_t> dst(src.size());
            const size_t n = src.size() / static_cast<size_t>(size);
            rmg::elemRunScalar(family, src.data(), dst.data(), n, v);
            for (size_t i = 0; i < n; ++i) {
                const int64_t e = load(family, src.data() + i * size);
                const int64_t want = formula(family, e, v);
                ASSERT_EQ(load(family, dst.data() + i * size), want)
                    << "family " << family << " v " << v << " e " << e;
            }
        }
    }
}

// Every 8-bit element against every constant in -70000..70000 around the
// places where the arithmetic changes.
TEST(ElemKernels, EightBitFamiliesForEveryElement) {
    const int families[] = {rmg::kAdd8u, rmg::kSub8u, rmg::kRevSub8u, rmg::kAdd8s,
                            rmg::kSub8s, rmg::kRevSub8s, rmg::kAdd8uFull, rmg::kSub8uFull,
                            rmg::kRevSub8uFull};
    std::vector<uint8_t> src(256);
    for (int i = 0; i < 256; ++i) src[static_cast<size_t>(i)] = static_cast<uint8_t>(i);
    std::vector<int64_t> values;
    for (int64_t v = -600; v <= 600; ++v) values.push_back(v);
    for (int64_t base : std::vector<int64_t>{32768, -32768, 65536, -65536, INT32_MAX, INT32_MIN})
        for (int64_t d = -300; d <= 300; ++d)
            if (base + d >= INT32_MIN && base + d <= INT32_MAX) values.push_back(base + d);
    for (int form : rmgtest::runnableForms()) {
        const ElemRunFn run = rmg::kElemRun.at(form);
        for (int family : families) {
            for (int64_t v : values) {
                std::vector<uint8_t> dst(256);
                run(family, src.data(), dst.data(), 256, v);
                std::vector<uint8_t> want(256);
                for (int i = 0; i < 256; ++i)
                    want[static_cast<size_t>(i)] =
                        static_cast<uint8_t>(formula(family, load(family, src.data() + i), v));
                ASSERT_EQ(dst, want) << rmg::cpuFormName(form) << " family " << family << " v " << v;
            }
        }
    }
}

// One run of a form against the scalar form: src at srcAlign, dst at
// dstAlign (or in place), every byte of both blocks compared.
void compareRun(int form, int family, size_t n, int srcAlign, int dstAlign, bool inPlace,
                int64_t v, std::mt19937 &rng) {
    const size_t size = static_cast<size_t>(rmg::elemFamilySize(family));
    const size_t bytes = n * size;
    Block src(static_cast<size_t>(srcAlign) + bytes);
    Block dst(static_cast<size_t>(dstAlign) + bytes);
    randomBytes(src.data, src.size, rng);
    randomBytes(dst.data, dst.size, rng);
    const std::vector<uint8_t> srcStart(src.data, src.data + src.size);
    const std::vector<uint8_t> dstStart(dst.data, dst.data + dst.size);
    uint8_t *from = inPlace ? dst.data + dstAlign : src.data + srcAlign;
    uint8_t *to = dst.data + dstAlign;

    rmg::kElemRun.at(rmg::kFormScalar)(family, from, to, n, v);
    const std::vector<uint8_t> want(dst.data, dst.data + dst.size);
    if (dst.size != 0) std::memcpy(dst.data, dstStart.data(), dst.size);
    rmg::kElemRun.at(form)(family, from, to, n, v);
    const std::vector<uint8_t> have(dst.data, dst.data + dst.size);
    ASSERT_EQ(have, want) << rmg::cpuFormName(form) << " family " << family << " n " << n
                          << " align " << srcAlign << "/" << dstAlign << " v " << v
                          << (inPlace ? " in place" : "");
    // Nothing in front of the run changes, and the source stays.
    ASSERT_TRUE(std::equal(have.begin(), have.begin() + dstAlign, dstStart.begin()));
    ASSERT_EQ(std::vector<uint8_t>(src.data, src.data + src.size), srcStart);
}

TEST(ElemKernels, VectorFormsAgreeWithScalarForEveryLengthAndAlignment) {
    std::mt19937 rng(2024);
    const std::vector<int> forms = rmgtest::runnableForms();
    for (int form : forms) {
        if (form == rmg::kFormScalar) continue;
        for (int family = 0; family < rmg::kElemFamilyCount; ++family) {
            const std::vector<int64_t> values = valuesFor(family);
            size_t k = 0;
            for (size_t n = 0; n <= 300; ++n) {
                const int dstAlign = static_cast<int>(n % 64);
                const int srcAlign = static_cast<int>((n * 7 + 3) % 64);
                compareRun(form, family, n, srcAlign, dstAlign, n % 3 == 0, values[k++ % values.size()], rng);
            }
            for (int dstAlign = 0; dstAlign < 64; ++dstAlign)
                for (int srcAlign : {0, 1, 2, 3, 5, 8, 17, 32, 63})
                    for (size_t n : {size_t{77}, size_t{200}})
                        compareRun(form, family, n, srcAlign, dstAlign, srcAlign == 5,
                                   values[k++ % values.size()], rng);
            // Every constant at a few lengths.
            for (int64_t v : values)
                for (size_t n : {size_t{1}, size_t{31}, size_t{64}, size_t{129}})
                    compareRun(form, family, n, 1, 3, false, v, rng);
        }
    }
}

// One channel of pixels: every vector form against the scalar form, which
// touches the channel's elements alone; for 2, 3 and 4 channels, every
// channel, pixel counts 0 to 130 and many alignments, in place too.
TEST(ElemKernels, ChannelFormsAgreeWithScalar) {
    std::mt19937 rng(77);
    for (int form : rmgtest::runnableForms()) {
        if (form == rmg::kFormScalar) continue;
        for (int family = 0; family < rmg::kElemFamilyCount; ++family) {
            const std::vector<int64_t> values = valuesFor(family);
            const size_t size = static_cast<size_t>(rmg::elemFamilySize(family));
            size_t k = 0;
            for (int channels = 1; channels <= 5; ++channels) {
                for (int channel = 0; channel < channels; ++channel) {
                    for (size_t pixels = 0; pixels <= 130; pixels += 1 + pixels / 16) {
                        const int srcAlign = static_cast<int>((pixels * 5 + channel) % 64);
                        const int dstAlign = static_cast<int>((pixels * 3 + channels) % 64);
                        const bool inPlace = (pixels + channel) % 4 == 0;
                        const int64_t v = values[k++ % values.size()];
                        const size_t bytes = pixels * static_cast<size_t>(channels) * size;
                        Block src(static_cast<size_t>(srcAlign) + bytes);
                        Block dst(static_cast<size_t>(dstAlign) + bytes);
                        randomBytes(src.data, src.size, rng);
                        randomBytes(dst.data, dst.size, rng);
                        const std::vector<uint8_t> start(dst.data, dst.data + dst.size);
                        uint8_t *from = inPlace ? dst.data + dstAlign : src.data + srcAlign;
                        uint8_t *to = dst.data + dstAlign;
                        rmg::kElemChannel.at(rmg::kFormScalar)(family, from, to, pixels, channels,
                                                               channel, v);
                        const std::vector<uint8_t> want(dst.data, dst.data + dst.size);
                        if (dst.size != 0) std::memcpy(dst.data, start.data(), dst.size);
                        rmg::kElemChannel.at(form)(family, from, to, pixels, channels, channel, v);
                        ASSERT_EQ(std::vector<uint8_t>(dst.data, dst.data + dst.size), want)
                            << rmg::cpuFormName(form) << " family " << family << " channels "
                            << channels << " channel " << channel << " pixels " << pixels
                            << " v " << v << (inPlace ? " in place" : "");
                        // The scalar form leaves the other channels alone.
                        for (size_t p = 0; p < pixels; ++p)
                            for (int c = 0; c < channels; ++c)
                                if (c != channel)
                                    for (size_t b = 0; b < size; ++b) {
                                        const size_t at = static_cast<size_t>(dstAlign) +
                                                          (p * channels + c) * size + b;
                                        ASSERT_EQ(want[at], start[at]);
                                    }
                    }
                }
            }
        }
    }
}

}  // namespace
