// rmgAndS and rmgAnd against the per-element models of ops/andtest.h:
// every depth, both data orders, align 4 and 8, odd widths, ROIs inside, at
// the edge, hanging out and beyond, a coi on one image, some or all,
// sources equal to the destination, images of different sizes, constants
// and elements at the extremes; the whole destination buffer compared,
// padding included, in every vector form.
#include <gtest/gtest.h>

#include <climits>
#include <cstdint>
#include <random>
#include <sstream>
#include <vector>

#include "ops/addstest.h"
#include "ops/andtest.h"
#include "support/rmgforms.h"
#include "support/rmgtest.h"

namespace {

using addstest::Image;

class AndRandomTest : public rmgtest::ErrorStateTest {};

const unsigned int kDepths[] = {RMG_DEPTH_1U,  RMG_DEPTH_8U,  RMG_DEPTH_8S,
                                RMG_DEPTH_16U, RMG_DEPTH_16S, RMG_DEPTH_32S};

struct Rng {
    explicit Rng(uint32_t seed) : engine(seed) {}
    int below(int n) { return static_cast<int>(engine() % static_cast<unsigned>(n)); }
    uint32_t word() { return static_cast<uint32_t>(engine()); }
    std::mt19937 engine;
};

// Pixels at random, a quarter of the elements all ones, all zeros or with
// only the sign bit set.
void fillPixels(Image &image, Rng &rng) {
    image.fill(rng.word());
    const unsigned int depth = image.image->depth;
    const int size = addstest::elemBytes(depth);
    const int n = image.image->imageSize / size;
    const int64_t sign = depth == RMG_DEPTH_1U ? 0x80 : int64_t{1} << (8 * size - 1);
    const int64_t ends[3] = {0, -1, sign};
    for (int k = 0; k < n; ++k)
        if (rng.below(4) == 0) addstest::putFlat(depth, image.data, k, ends[rng.below(3)]);
}

// A ROI of a random kind on an image: inside, at the right and bottom
// edge, hanging out, at 0 covering it, beyond it, or anywhere.
void setRandomRoi(Image &image, int coi, Rng &rng, std::ostringstream &note) {
    const int h = image.image->height;
    const int w = image.image->width;
    const int kind = rng.below(6);
    int x = kind == 3 ? 0 : kind == 4 ? w + rng.below(4) : rng.below(kind == 5 ? w + 2 : w);
    int y = kind == 3 ? 0 : rng.below(kind == 5 ? h + 2 : h);
    int rw = 0;
    int rh = 0;
    switch (kind) {
        case 0:
            rw = 1 + rng.below(w - x);
            rh = 1 + rng.below(h - y);
            break;
        case 1:
            rw = w - x;
            rh = h - y;
            break;
        case 2:
            rw = w - x + 1 + rng.below(9);
            rh = h - y + 1 + rng.below(4);
            break;
        case 3:
            rw = w + rng.below(3);
            rh = h + rng.below(3);
            break;
        default:
            rw = 1 + rng.below(w + 4);
            rh = 1 + rng.below(h + 4);
            break;
    }
    image.setRoi(coi, x, y, rh, rw);
    note << " roi(" << coi << "," << x << "," << y << "," << rh << "," << rw << ")";
}

// Channel counts and cois for `count` images of one depth (coi -1: no
// ROI), so that the channel checks pass.
void channelPlan(unsigned int depth, int count, Rng &rng, int *channels, int *coi) {
    for (int i = 0; i < count; ++i) coi[i] = rng.below(3) == 0 ? -1 : 0;
    if (depth == RMG_DEPTH_1U) {
        for (int i = 0; i < count; ++i) {
            channels[i] = 1;
            if (coi[i] == 0 && rng.below(2)) coi[i] = 1;
        }
        return;
    }
    switch (rng.below(4)) {
        case 0: {  // the same channels, all of them
            const int n = 1 + rng.below(4);
            for (int i = 0; i < count; ++i) channels[i] = n;
            break;
        }
        case 1:  // a coi on every image
            for (int i = 0; i < count; ++i) {
                channels[i] = 1 + rng.below(4);
                coi[i] = 1 + rng.below(channels[i]);
            }
            break;
        case 2:  // a coi on some, one channel (with or without ROI) on the rest
            for (int i = 0; i < count; ++i) {
                if (rng.below(2)) {
                    channels[i] = 1 + rng.below(4);
                    coi[i] = 1 + rng.below(channels[i]);
                } else {
                    channels[i] = 1;
                    coi[i] = rng.below(3) - 1;
                }
            }
            break;
        default:  // one channel each, coi 1, 0 or no ROI
            for (int i = 0; i < count; ++i) {
                channels[i] = 1;
                coi[i] = rng.below(3) - 1;
            }
            break;
    }
}

int randomValue(Rng &rng) {
    const std::vector<int> &values = addstest::extremeValues();
    if (rng.below(4) == 0) return static_cast<int>(rng.word());
    return values[static_cast<size_t>(rng.below(static_cast<int>(values.size())))];
}

// Images of a random shape for one iteration.
struct Shape {
    int channels;
    int align;
    int height;
    int width;
    int coi;
};

Shape randomShape(Rng &rng, int channels, int coi, bool wide) {
    return Shape{channels, rng.below(2) ? 8 : 4, 1 + rng.below(9),
                 wide ? 60 + rng.below(200) : 1 + rng.below(45), coi};
}

std::string depthName(unsigned int depth) {
    return std::to_string(depth & 0xFF) + (depth & RMG_DEPTH_SIGN ? "s" : "u");
}

void runAndS(int iterations, uint32_t seed, bool wide) {
    Rng rng(seed);
    const std::vector<int> forms = rmgtest::runnableForms();
    for (int iteration = 0; iteration < iterations; ++iteration) {
        const unsigned int depth = kDepths[rng.below(6)];
        const int order = rng.below(2);
        int channels[2];
        int coi[2];
        channelPlan(depth, 2, rng, channels, coi);
        const bool same = rng.below(5) == 0;
        std::ostringstream note;
        note << "iteration " << iteration << " depth " << depthName(depth) << " order " << order;
        Shape s[2];
        for (int i = 0; i < 2; ++i) s[i] = randomShape(rng, channels[i], coi[i], wide);
        if (rng.below(6) == 0) {
            // A whole-image call now and then: equal shapes without ROI.
            s[0].coi = -1;
            s[1] = s[0];
        }
        if (same) s[1] = s[0];
        Image a(s[0].channels, depth, order, s[0].align, s[0].height, s[0].width, 1);
        Image b(s[1].channels, depth, order, s[1].align, s[1].height, s[1].width, 2);
        Image &src = a;
        Image &dst = same ? a : b;
        for (int i = 0; i < (same ? 1 : 2); ++i) {
            Image &image = i == 0 ? a : b;
            note << (i == 0 ? " src " : " dst ") << s[i].channels << "x" << s[i].height << "x"
                 << s[i].width << "/" << s[i].align;
            if (s[i].coi >= 0) setRandomRoi(image, s[i].coi, rng, note);
        }
        const int value = randomValue(rng);
        note << (same ? " in place" : "") << " value " << value;
        fillPixels(a, rng);
        fillPixels(b, rng);
        const std::vector<uint8_t> srcBefore = src.bytes();
        const std::vector<uint8_t> dstBefore = dst.bytes();
        const std::vector<uint8_t> want =
            andtest::andSModel(src.image, srcBefore, dst.image, dstBefore, value);
        for (int form : forms) {
            rmgtest::ForcedForm forced(form);
            dst.fillFrom(dstBefore);
            if (!same) src.fillFrom(srcBefore);
            rmgAndS(src.image, dst.image, value, nullptr);
            ASSERT_EQ(dst.bytes(), want) << note.str() << " form " << rmg::cpuFormName(form);
            if (!same) {
                ASSERT_EQ(src.bytes(), srcBefore) << note.str();
            }
            ASSERT_TRUE(rmgtest::reports().empty()) << note.str();
        }
    }
}

TEST_F(AndRandomTest, AndSAgreesWithTheModel) { runAndS(3000, 20241121, false); }

// Rows of a few hundred elements, so that the vector bodies run long.
TEST_F(AndRandomTest, AndSLongRowsAgreeWithTheModel) { runAndS(400, 77, true); }

void runAnd(int iterations, uint32_t seed, bool wide) {
    Rng rng(seed);
    const std::vector<int> forms = rmgtest::runnableForms();
    for (int iteration = 0; iteration < iterations; ++iteration) {
        const unsigned int depth = kDepths[rng.below(6)];
        const int order = rng.below(2);
        int channels[3];
        int coi[3];
        channelPlan(depth, 3, rng, channels, coi);
        // Which images are one: 0 none, 1 A is the destination, 2 B is the
        // destination, 3 A and B are one.
        const int alias = rng.below(8) < 5 ? 0 : 1 + rng.below(3);
        Shape s[3];
        for (int i = 0; i < 3; ++i) s[i] = randomShape(rng, channels[i], coi[i], wide);
        if (rng.below(5) == 0) {
            // Whole images: equal shapes without ROI.
            s[1] = s[0];
            s[2] = s[0];
            s[0].coi = s[1].coi = s[2].coi = -1;
        }
        if (alias == 1) s[0] = s[2];
        if (alias == 2) s[1] = s[2];
        if (alias == 3) s[1] = s[0];
        std::ostringstream note;
        note << "iteration " << iteration << " depth " << depthName(depth) << " order " << order
             << " alias " << alias;
        Image ia(s[0].channels, depth, order, s[0].align, s[0].height, s[0].width, 1);
        Image ib(s[1].channels, depth, order, s[1].align, s[1].height, s[1].width, 2);
        Image id(s[2].channels, depth, order, s[2].align, s[2].height, s[2].width, 3);
        Image &a = alias == 1 ? id : ia;
        Image &b = alias == 2 ? id : alias == 3 ? a : ib;
        Image &d = id;
        Image *distinct[3] = {&a, &b, &d};
        for (int i = 0; i < 3; ++i) {
            bool repeated = false;
            for (int j = 0; j < i; ++j) repeated = repeated || distinct[j] == distinct[i];
            if (repeated) continue;
            note << " [" << i << "] " << s[i].channels << "x" << s[i].height << "x" << s[i].width
                 << "/" << s[i].align;
            if (s[i].coi >= 0) setRandomRoi(*distinct[i], s[i].coi, rng, note);
        }
        fillPixels(ia, rng);
        fillPixels(ib, rng);
        fillPixels(id, rng);
        const std::vector<uint8_t> aBefore = a.bytes();
        const std::vector<uint8_t> bBefore = b.bytes();
        const std::vector<uint8_t> dBefore = d.bytes();
        const std::vector<uint8_t> want =
            andtest::andModel(a.image, aBefore, b.image, bBefore, d.image, dBefore);
        for (int form : forms) {
            rmgtest::ForcedForm forced(form);
            ia.fillFrom(alias == 1 ? dBefore : aBefore);
            ib.fillFrom(alias == 2 ? dBefore : bBefore);
            id.fillFrom(dBefore);
            rmgAnd(a.image, b.image, d.image, nullptr);
            ASSERT_EQ(d.bytes(), want) << note.str() << " form " << rmg::cpuFormName(form);
            if (&a != &d) {
                ASSERT_EQ(a.bytes(), aBefore) << note.str();
            }
            if (&b != &d) {
                ASSERT_EQ(b.bytes(), bBefore) << note.str();
            }
            ASSERT_TRUE(rmgtest::reports().empty()) << note.str();
        }
    }
}

TEST_F(AndRandomTest, AndAgreesWithTheModel) { runAnd(3000, 314159, false); }

TEST_F(AndRandomTest, AndLongRowsAgreeWithTheModel) { runAnd(400, 2718, true); }

}  // namespace
