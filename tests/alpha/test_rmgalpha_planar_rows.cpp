// The planar row kernels against the per-sample model of their tables: every
// row kernel, in every form, at both depths, with premulAlpha 0 and 1, with
// and without an alpha row of B, at every length from 0 to 300 and at every
// alignment of the destination and the sources; the bytes around the
// destination are compared too.
#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <string>
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

// A row kernel with one choice of its arguments, and its model.
struct Case {
    std::string name;
    std::function<void(const unsigned char *A, const unsigned char *a, const unsigned char *B,
                       const unsigned char *b, unsigned char *dst, int count)>
        call;
    std::function<int(int A, int a, int B, int b)> model;
};

const char *const kNames[6] = {"over", "in", "out", "atop", "xor", "plus"};

// Every row kernel of a depth with every choice of premulAlpha and rowAlphaB.
std::vector<Case> casesOf(int depth) {
    const int M = depth == kOwnDepth8u ? 255 : 65535;
    std::vector<Case> cases;
    for (int op = 0; op < 6; ++op) {
        for (int premul : {0, 1})
            for (bool hasB : {true, false}) {
                const OwnColourRowFn fn = ownColourRows[depth][op];
                cases.push_back(
                    {std::string(kNames[op]) + " colour, premulAlpha " + std::to_string(premul) +
                         (hasB ? ", rowAlphaB" : ", no rowAlphaB"),
                     [=](const unsigned char *A, const unsigned char *a, const unsigned char *B,
                         const unsigned char *b, unsigned char *d,
                         int count) { fn(A, a, B, hasB ? b : nullptr, d, count, premul); },
                     [=](int A, int a, int B, int b) {
                         return colourModel(op, M, premul != 0, hasB, A, a, B, b);
                     }});
            }
        for (bool hasB : {true, false}) {
            const OwnAlphaRowFn fn = ownAlphaRows[depth][op];
            cases.push_back({std::string(kNames[op]) + " alpha" +
                                 (hasB ? ", rowAlphaB" : ", no rowAlphaB"),
                             [=](const unsigned char *, const unsigned char *a,
                                 const unsigned char *, const unsigned char *b, unsigned char *d,
                                 int count) { fn(a, hasB ? b : nullptr, d, count); },
                             [=](int, int a, int, int b) { return alphaModel(op, M, hasB, a, b); }});
        }
    }
    auto mulRow = depth == kOwnDepth8u ? ownMulRow8u : ownMulRow16u;
    cases.push_back({"mul",
                     [=](const unsigned char *A, const unsigned char *, const unsigned char *B,
                         const unsigned char *, unsigned char *d,
                         int count) { mulRow(A, B, d, count); },
                     [=](int A, int, int B, int) { return planartest::mulOf(M, A, B); }});
    auto scaleRow = depth == kOwnDepth8u ? ownScaleRow8u : ownScaleRow16u;
    for (int value : {0, 1, M / 2 + 1, M - 1, M})
        cases.push_back({"scale by " + std::to_string(value),
                         [=](const unsigned char *A, const unsigned char *, const unsigned char *,
                             const unsigned char *, unsigned char *d,
                             int count) { scaleRow(A, d, value, count); },
                         [=](int A, int, int, int) { return planartest::mulOf(M, A, value); }});
    return cases;
}

// Every case on fresh rows of `count` samples, the destination `dstOff`
// bytes past a 64-byte boundary with guard bytes on both sides, each source
// at its own alignment in a block that ends with it. Compares the whole
// destination block.
void checkRows(int depth, const std::vector<Case> &cases, size_t count, size_t dstOff) {
    const int bytes = depth == kOwnDepth8u ? 1 : 2;
    const int M = depth == kOwnDepth8u ? 255 : 65535;
    std::mt19937 rng(static_cast<uint32_t>(count * 64 + dstOff + depth));
    Row A(bytes, count, (dstOff + count) % 32);
    Row a(bytes, count, (dstOff * 3 + 1) % 32);
    Row B(bytes, count, (dstOff * 5 + 2) % 32);
    Row b(bytes, count, (dstOff * 7 + 3) % 32);
    A.randomize(rng, M);
    a.randomize(rng, M);
    B.randomize(rng, M);
    b.randomize(rng, M);
    const size_t size = dstOff + count * static_cast<size_t>(bytes) + 32;
    rmgtest::Canvas dst(size);
    const std::vector<unsigned char> guard(size, kGuard);
    for (const Case &c : cases) {
        dst.set(guard);
        std::vector<unsigned char> want = guard;
        for (size_t i = 0; i < count; ++i)
            planartest::putAt(want.data() + dstOff, bytes, i,
                              c.model(A.get(i), a.get(i), B.get(i), b.get(i)));
        c.call(A.data(), a.data(), B.data(), b.data(), dst.data() + dstOff,
               static_cast<int>(count));
        ASSERT_EQ(dst.bytes(), want) << c.name << ", count " << count << ", dst offset " << dstOff;
    }
}

TEST(PlanarRows, EveryRowFollowsItsTableAtEveryLengthAndAlignment) {
    rmgtest::inEveryForm([&](int) {
        for (int depth : {kOwnDepth8u, kOwnDepth16u}) {
            SCOPED_TRACE(depth == kOwnDepth8u ? "8u" : "16u");
            const std::vector<Case> cases = casesOf(depth);
            for (size_t count = 0; count <= kMaxCount; ++count)
                for (size_t dstOff : dstOffsets(count)) {
                    checkRows(depth, cases, count, dstOff);
                    if (HasFatalFailure()) return;
                }
        }
    });
}

}  // namespace
