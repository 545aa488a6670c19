// The vector forms of the word reduction rows against the scalar form:
// random elements (extremes mixed in), every length 0 to 300, source and
// destination at every alignment modulo 64, whole canvases compared. And
// the form a whole reduction runs in doesn't change its bytes.
#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <vector>

#include "color/ownreduce.h"
#include "core/rmgcpu.h"
#include "support/rmgcanvas.h"
#include "support/rmgforms.h"

namespace {

using Bytes = std::vector<unsigned char>;
using rmg::ReduceForms;

std::vector<const ReduceForms *> vectorForms() {
    std::vector<const ReduceForms *> forms;
#if RMG_CPU_X86
    if (rmg::cpuBestForm() >= rmg::kFormSse2) forms.push_back(&rmg::kReduceSse2);
    if (rmg::cpuBestForm() >= rmg::kFormAvx2) forms.push_back(&rmg::kReduceAvx2);
#endif
    return forms;
}

constexpr int kMaxLength = 300;

TEST(OwnReduceForms, RowsMatchTheScalarForm) {
    std::mt19937 rng(41);
    rmgtest::Canvas canvas(2 * (kMaxLength * 4 + 128));
    const size_t half = canvas.size() / 2;
    Bytes start(canvas.size());
    for (size_t i = 0; i < start.size(); ++i) {
        // Bytes of 0x00, 0x7F, 0x80 and 0xFF now and then, for the extremes
        // of each word.
        const unsigned r = rng();
        start[i] = r % 8 == 0 ? static_cast<unsigned char>(0x7F + (r >> 8) % 2)
                   : r % 8 == 1 ? static_cast<unsigned char>((r >> 8) % 2 ? 0xFF : 0)
                                : static_cast<unsigned char>(r);
    }
    using Member = rmg::ReduceRowFn ReduceForms::*;
    const Member members[3] = {&ReduceForms::row32s16u, &ReduceForms::row32s8u, &ReduceForms::row16u8u};
    for (const ReduceForms *form : vectorForms())
        for (int m = 0; m < 3; ++m)
            for (int n = 0; n <= kMaxLength; ++n) {
                const int in = n % 64, out = static_cast<int>(rng() % 64);
                unsigned char *src = canvas.data() + in;
                unsigned char *dst = canvas.data() + half + out;
                canvas.set(start);
                (rmg::kReduceScalar.*(members[m]))(src, dst, n);
                const Bytes expected = canvas.bytes();
                canvas.set(start);
                (form->*(members[m]))(src, dst, n);
                ASSERT_EQ(canvas.bytes(), expected) << m << " n " << n << " at " << in << ", " << out;
            }
}

TEST(OwnReduceForms, WholeReductionInEveryForm) {
    std::mt19937 rng(42);
    const unsigned int pairs[3][2] = {{RMG_DEPTH_32S, RMG_DEPTH_16U},
                                      {RMG_DEPTH_32S, RMG_DEPTH_8U},
                                      {RMG_DEPTH_16U, RMG_DEPTH_8U}};
    for (const auto &p : pairs) {
        RmgImage *src = rmgCreateImageHeader(3, 0, p[0], "RGB", "RGB", RMG_DATA_PIXEL, RMG_ORIGIN_TL,
                                             4, 17, 133, nullptr, nullptr, nullptr);
        RmgImage *dst = rmgCreateImageHeader(3, 0, p[1], "RGB", "RGB", RMG_DATA_PIXEL, RMG_ORIGIN_TL,
                                             8, 17, 133, nullptr, nullptr, nullptr);
        rmgAllocateImage(src, 0);
        rmgAllocateImage(dst, 0);
        for (int i = 0; i < src->imageSize; ++i) src->imageData[i] = static_cast<unsigned char>(rng());
        Bytes first;
        rmgtest::inEveryForm([&](int) {
            for (int i = 0; i < dst->imageSize; ++i) dst->imageData[i] = 0x5A;
            rmgReduceBits(src, dst, 0, RMG_DITHER_NONE, 0, nullptr);
            const Bytes now(dst->imageData, dst->imageData + dst->imageSize);
            if (first.empty()) first = now;
            EXPECT_EQ(now, first);
        });
        rmgDeallocate(src, RMG_DEALLOC_ALL);
        rmgDeallocate(dst, RMG_DEALLOC_ALL);
    }
}

}  // namespace
