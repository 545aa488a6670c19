// The vector forms of the gray conversion rows against the scalar form:
// random elements, every length 0 to 300, each row at several alignments,
// steps 1 and 3, whole output buffers (bytes around the rows included).
#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "color/owncolor.h"
#include "core/rmgcpu.h"
#include "support/rmgcanvas.h"

namespace {

using Bytes = std::vector<unsigned char>;
using rmg::ColorForms;

std::vector<const ColorForms *> vectorForms() {
    std::vector<const ColorForms *> forms;
#if RMG_CPU_X86
    if (rmg::cpuBestForm() >= rmg::kFormSse2) forms.push_back(&rmg::kColorSse2);
    if (rmg::cpuBestForm() >= rmg::kFormAvx2) forms.push_back(&rmg::kColorAvx2);
#endif
    return forms;
}

constexpr int kMaxLength = 300;
constexpr int kSlack = 80;

// Three channel rows of `length` elements of `size` bytes at `step`, one
// output row, placed at offsets of a canvas; the rest of the canvas is
// random too, and is compared as well.
struct Rows {
    rmgtest::Canvas canvas{4 * (kMaxLength * 4 * 4 + 4 * kSlack)};
    size_t part = canvas.size() / 4;
    unsigned char *at(int k, int offset) { return canvas.data() + k * part + offset; }
};

using GrayMember = rmg::GrayRowFn ColorForms::*;
using SpreadMember = rmg::SpreadRowFn ColorForms::*;

struct GrayCase {
    GrayMember fn;
    int inSize, outSize;
    const char *name;
};
const GrayCase kGrayCases[] = {{&ColorForms::gray8u8u, 1, 1, "8u8u"},
                               {&ColorForms::gray8u16u, 1, 2, "8u16u"},
                               {&ColorForms::gray16u16u, 2, 2, "16u16u"},
                               {&ColorForms::gray16u8uPixel, 2, 1, "16u8u pixel"},
                               {&ColorForms::gray16u8uPlane, 2, 1, "16u8u plane"}};

// The canvas after the scalar row and after the form's row, each from the
// same start, must agree.
void expectSameGray(Rows &rows, const Bytes &start, const ColorForms *form, const GrayCase &c,
                    const unsigned char *a, const unsigned char *b, const unsigned char *cc,
                    int step, unsigned char *out, int n) {
    rows.canvas.set(start);
    (rmg::kColorScalar.*(c.fn))(a, b, cc, step, out, n);
    const Bytes expected = rows.canvas.bytes();
    rows.canvas.set(start);
    (form->*(c.fn))(a, b, cc, step, out, n);
    ASSERT_EQ(rows.canvas.bytes(), expected) << c.name << " n " << n << " step " << step;
}

TEST(OwnColorForms, GrayRowsMatchTheScalarForm) {
    std::mt19937 rng(31);
    Rows rows;
    Bytes start(rows.canvas.size());
    for (unsigned char &b : start) b = static_cast<unsigned char>(rng());
    for (const ColorForms *form : vectorForms())
        for (const GrayCase &c : kGrayCases)
            for (int step : {1, 3})
                for (int n = 0; n <= kMaxLength; ++n) {
                    const int offsets[4] = {static_cast<int>(rng() % 64), static_cast<int>(rng() % 64),
                                            static_cast<int>(rng() % 64), static_cast<int>(rng() % 64)};
                    expectSameGray(rows, start, form, c, rows.at(0, offsets[0]), rows.at(1, offsets[1]),
                                   rows.at(2, offsets[2]), step, rows.at(3, offsets[3]), n);
                }
}

// Pixel order: the three channels next to each other in one row, in each
// order, steps 3 and 4.
TEST(OwnColorForms, PixelGrayRowsMatchTheScalarForm) {
    std::mt19937 rng(33);
    Rows rows;
    Bytes start(rows.canvas.size());
    for (unsigned char &b : start) b = static_cast<unsigned char>(rng());
    const int orders[6][3] = {{0, 1, 2}, {2, 1, 0}, {1, 0, 2}, {0, 2, 1}, {1, 2, 0}, {2, 0, 1}};
    for (const ColorForms *form : vectorForms())
        for (const GrayCase &c : kGrayCases)
            for (int step : {3, 4})
                for (int n = 0; n <= kMaxLength; ++n) {
                    const int *o = orders[n % 6];
                    const int offset = static_cast<int>(rng() % 64), out = static_cast<int>(rng() % 64);
                    const int size = c.inSize;
                    unsigned char *row = rows.at(0, offset);
                    expectSameGray(rows, start, form, c, row + o[0] * size, row + o[1] * size,
                                   row + o[2] * size, step, rows.at(3, out), n);
                }
}

TEST(OwnColorForms, SpreadRowsMatchTheScalarForm) {
    std::mt19937 rng(32);
    Rows rows;
    Bytes start(rows.canvas.size());
    for (unsigned char &b : start) b = static_cast<unsigned char>(rng());
    const SpreadMember members[2] = {&ColorForms::spread8u, &ColorForms::spread16u};
    for (const ColorForms *form : vectorForms())
        for (int m = 0; m < 2; ++m)
            for (int step : {1, 3, 4})
                for (int n = 0; n <= kMaxLength; ++n) {
                    const uint16_t w[3] = {static_cast<uint16_t>(rng()), static_cast<uint16_t>(rng() % 600),
                                           static_cast<uint16_t>(n % 2 ? 256 : 32768)};
                    const int shift = m == 0 ? 8 : (n % 3 ? 15 : 9);
                    const int offsets[4] = {static_cast<int>(rng() % 64), static_cast<int>(rng() % 64),
                                            static_cast<int>(rng() % 64), static_cast<int>(rng() % 64)};
                    rows.canvas.set(start);
                    (rmg::kColorScalar.*(members[m]))(rows.at(0, offsets[0]), rows.at(1, offsets[1]),
                                                      rows.at(2, offsets[2]), rows.at(3, offsets[3]),
                                                      step, n, w, shift);
                    const Bytes expected = rows.canvas.bytes();
                    rows.canvas.set(start);
                    (form->*(members[m]))(rows.at(0, offsets[0]), rows.at(1, offsets[1]),
                                          rows.at(2, offsets[2]), rows.at(3, offsets[3]), step, n, w, shift);
                    ASSERT_EQ(rows.canvas.bytes(), expected) << m << " n " << n << " step " << step;
                }
}

// Pixel order: the three outputs next to each other in one row, in each
// order, steps 3 and 4 (the fourth byte must keep its value).
TEST(OwnColorForms, PixelSpreadRowsMatchTheScalarForm) {
    std::mt19937 rng(34);
    Rows rows;
    Bytes start(rows.canvas.size());
    for (unsigned char &b : start) b = static_cast<unsigned char>(rng());
    const int orders[6][3] = {{0, 1, 2}, {2, 1, 0}, {1, 0, 2}, {0, 2, 1}, {1, 2, 0}, {2, 0, 1}};
    const SpreadMember members[2] = {&ColorForms::spread8u, &ColorForms::spread16u};
    for (const ColorForms *form : vectorForms())
        for (int m = 0; m < 2; ++m)
            for (int step : {3, 4})
                for (int n = 0; n <= kMaxLength; ++n) {
                    const int *o = orders[n % 6];
                    const uint16_t w[3] = {static_cast<uint16_t>(rng()), static_cast<uint16_t>(rng() % 600),
                                           static_cast<uint16_t>(n % 2 ? 256 : 32768)};
                    const int shift = m == 0 ? 8 : 15;
                    const int size = m == 0 ? 1 : 2;
                    const unsigned char *g = rows.at(0, static_cast<int>(rng() % 64));
                    unsigned char *row = rows.at(1, static_cast<int>(rng() % 64));
                    rows.canvas.set(start);
                    (rmg::kColorScalar.*(members[m]))(g, row + o[0] * size, row + o[1] * size,
                                                      row + o[2] * size, step, n, w, shift);
                    const Bytes expected = rows.canvas.bytes();
                    rows.canvas.set(start);
                    (form->*(members[m]))(g, row + o[0] * size, row + o[1] * size, row + o[2] * size,
                                          step, n, w, shift);
                    ASSERT_EQ(rows.canvas.bytes(), expected) << m << " n " << n << " step " << step;
                }
}

}  // namespace
