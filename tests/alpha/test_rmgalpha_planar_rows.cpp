// The planar row kernels against the per-sample model of their tables: every
// row kernel, in every form, at both depths, with premulAlpha 0 and 1, with
// and without an alpha row of B, at every length from 0 to 300 and at every
// alignment of the destination and the sources; the bytes around the
// destination are compared too.
#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <vector>

#include "alpha/rmgalpha.h"
#include "alpha/rmgalpha_planar.h"
#include "alpha/test_rmgalpha_planar_model.h"
#include "support/rmgcanvas.h"
#include "support/rmgforms.h"

namespace {

using planartest::alphaModel;
using planartest::colourModel;
using planartest::Row;

constexpr unsigned char kGuard = 0xA5;
constexpr size_t kMaxCount = 300;

// The destination alignments tried for a row of `count` samples: all 32
// for the short rows, where head, body and tail meet in every way, and four
// for the longer ones.
std::vector<size_t> dstOffsets(size_t count) {
    if (count < 72) {
        std::vector<size_t> all;
        for (size_t k = 0; k < 32; ++k) all.push_back(k);
        return all;
    }
    return {count % 32, (count * 7 + 3) % 32, 0, 31};
}

// One kernel call on fresh rows of `count` samples, the destination `dstOff`
// bytes past a 64-byte boundary with guard bytes on both sides, each source
// at its own alignment. `model(i, A, a, B, b)` gives sample i; `call` runs
// the kernel. Compares the whole destination block.
template <class Call, class Model>
void checkRow(int depth, size_t count, size_t dstOff, uint32_t seed, const Call &call,
              const Model &model) {
    const int bytes = depth == kOwnDepth8u ? 1 : 2;
    const int M = depth == kOwnDepth8u ? 255 : 65535;
    std::mt19937 rng(seed);
    Row A(bytes, count, (dstOff + count) % 32);
    Row a(bytes, count, (dstOff * 3 + 1) % 32);
    Row B(bytes, count, (dstOff * 5 + 2) % 32);
    Row b(bytes, count, (dstOff * 7 + 3) % 32);
    A.randomize(rng, M);
    a.randomize(rng, M);
    B.randomize(rng, M);
    b.randomize(rng, M);
    const size_t size = 64 + kMaxCount * 2 + 64;
    rmgtest::Canvas dst(size);
    std::vector<unsigned char> guard(size, kGuard);
    dst.set(guard);
    std::vector<unsigned char> want = guard;
    for (size_t i = 0; i < count; ++i)
        planartest::putAt(want.data() + dstOff, bytes, i,
                          model(A.get(i), a.get(i), B.get(i), b.get(i)));
    call(A.data(), a.data(), B.data(), b.data(), dst.data() + dstOff);
    ASSERT_EQ(dst.bytes(), want) << "count " << count << " dst offset " << dstOff;
}

// Every length and alignment of one kernel and one choice of its arguments.
template <class Call, class Model>
void checkLengths(int depth, uint32_t seed, const Call &call, const Model &model) {
    for (size_t count = 0; count <= kMaxCount; ++count)
        for (size_t dstOff : dstOffsets(count)) {
            checkRow(depth, count, dstOff, seed + static_cast<uint32_t>(count * 64 + dstOff),
                     [&](auto... rows) { call(rows..., static_cast<int>(count)); }, model);
            if (::testing::Test::HasFatalFailure()) return;
        }
}

const char *const kNames[6] = {"over", "in", "out", "atop", "xor", "plus"};

TEST(PlanarRows, ColourRowsFollowTheirTables) {
    rmgtest::inEveryForm([&](int) {
        for (int depth : {kOwnDepth8u, kOwnDepth16u})
            for (int op = 0; op < 6; ++op)
                for (int premul : {0, 1})
                    for (bool hasB : {true, false}) {
                        SCOPED_TRACE(::testing::Message()
                                     << kNames[op] << " depth " << depth << " premulAlpha "
                                     << premul << (hasB ? " with" : " without") << " rowAlphaB");
                        const int M = depth == kOwnDepth8u ? 255 : 65535;
                        const OwnColourRowFn fn = ownColourRows[depth][op];
                        checkLengths(
                            depth, 1000u * op + 100u * premul + hasB,
                            [&](const unsigned char *A, const unsigned char *a,
                                const unsigned char *B, const unsigned char *b,
                                unsigned char *d, int count) {
                                fn(A, a, B, hasB ? b : nullptr, d, count, premul);
                            },
                            [&](int A, int a, int B, int b) {
                                return colourModel(op, M, premul != 0, hasB, A, a, B, b);
                            });
                        if (HasFatalFailure()) return;
                    }
    });
}

TEST(PlanarRows, AlphaRowsFollowTheirTable) {
    rmgtest::inEveryForm([&](int) {
        for (int depth : {kOwnDepth8u, kOwnDepth16u})
            for (int op = 0; op < 6; ++op)
                for (bool hasB : {true, false}) {
                    SCOPED_TRACE(::testing::Message() << kNames[op] << " alpha depth " << depth
                                                      << (hasB ? " with" : " without")
                                                      << " rowAlphaB");
                    const int M = depth == kOwnDepth8u ? 255 : 65535;
                    const OwnAlphaRowFn fn = ownAlphaRows[depth][op];
                    checkLengths(
                        depth, 7000u + 10u * op + hasB,
                        [&](const unsigned char *, const unsigned char *a, const unsigned char *,
                            const unsigned char *b, unsigned char *d,
                            int count) { fn(a, hasB ? b : nullptr, d, count); },
                        [&](int, int a, int, int b) { return alphaModel(op, M, hasB, a, b); });
                    if (HasFatalFailure()) return;
                }
    });
}

TEST(PlanarRows, MulAndScaleRowsAreTheScaledProduct) {
    rmgtest::inEveryForm([&](int) {
        for (int depth : {kOwnDepth8u, kOwnDepth16u}) {
            SCOPED_TRACE(depth);
            const int M = depth == kOwnDepth8u ? 255 : 65535;
            auto mulRow = depth == kOwnDepth8u ? ownMulRow8u : ownMulRow16u;
            auto scaleRow = depth == kOwnDepth8u ? ownScaleRow8u : ownScaleRow16u;
            checkLengths(
                depth, 11u,
                [&](const unsigned char *A, const unsigned char *, const unsigned char *B,
                    const unsigned char *, unsigned char *d, int count) { mulRow(A, B, d, count); },
                [&](int A, int, int B, int) { return planartest::mulOf(M, A, B); });
            for (int value : {0, 1, M / 2 + 1, M - 1, M}) {
                SCOPED_TRACE(value);
                checkLengths(
                    depth, 13u,
                    [&](const unsigned char *A, const unsigned char *, const unsigned char *,
                        const unsigned char *, unsigned char *d,
                        int count) { scaleRow(A, d, value, count); },
                    [&](int A, int, int, int) { return planartest::mulOf(M, A, value); });
            }
        }
    });
}

}  // namespace
