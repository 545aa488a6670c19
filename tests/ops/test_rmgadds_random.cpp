// rmgAddS and rmgSubtractS against the per-element model: every depth, both
// data orders, align 4 and 8, odd widths, ROIs inside, at the edge, hanging
// out and beyond, a coi on one image or both, source equal to destination,
// images of different sizes, values and elements at the extremes; the whole
// destination buffer compared, padding included, in every vector form.
#include <gtest/gtest.h>

#include <climits>
#include <cstdint>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "ops/addstest.h"
#include "support/rmgforms.h"
#include "support/rmgtest.h"

namespace {

using addstest::Image;
using addstest::Kind;

class AddSRandomTest : public rmgtest::ErrorStateTest {};

const unsigned int kDepths[] = {RMG_DEPTH_1U,  RMG_DEPTH_8U,  RMG_DEPTH_8S,
                                RMG_DEPTH_16U, RMG_DEPTH_16S, RMG_DEPTH_32S};

// Element values at the ends of a depth, and next to them.
std::vector<int64_t> endsOf(unsigned int depth) {
    switch (depth) {
    case RMG_DEPTH_8U:
        return {0, 1, 2, 127, 128, 254, 255};
    case RMG_DEPTH_8S:
        return {-128, -127, -1, 0, 1, 126, 127};
    case RMG_DEPTH_16U:
        return {0, 1, 255, 256, 32767, 32768, 65534, 65535};
    case RMG_DEPTH_16S:
        return {-32768, -32767, -256, -1, 0, 1, 255, 32766, 32767};
    case RMG_DEPTH_32S:
        return {INT_MIN, INT_MIN + 1, -65536, -1, 0, 1, 65535, 65536, INT_MAX - 1, INT_MAX};
    default:
        return {0};
    }
}

// Random pixels with a quarter of the elements at the depth's ends.
void fillWithEnds(Image &image, std::mt19937 &rng) {
    image.fill(static_cast<uint32_t>(rng()));
    const unsigned int depth = image.image->depth;
    if (depth == RMG_DEPTH_1U) return;
    const std::vector<int64_t> ends = endsOf(depth);
    const int n = image.image->imageSize / addstest::elemBytes(depth);
    for (int k = 0; k < n; ++k)
        if (rng() % 4 == 0) addstest::putFlat(depth, image.data, k, ends[rng() % ends.size()]);
}

// A ROI of one of the kinds the test wants, for an image of h x w.
void randomRoi(Image &image, int coi, std::mt19937 &rng, std::ostringstream &note) {
    const int h = image.image->height;
    const int w = image.image->width;
    auto pick = [&](int n) { return static_cast<int>(rng() % static_cast<unsigned>(n)); };
    int x = 0, y = 0, rh = h, rw = w;
    switch (pick(6)) {
    case 0:  // inside
        x = pick(w);
        y = pick(h);
        rw = 1 + pick(w - x);
        rh = 1 + pick(h - y);
        break;
    case 1:  // at the right and bottom edge
        x = pick(w);
        y = pick(h);
        rw = w - x;
        rh = h - y;
        break;
    case 2:  // hanging out
        x = pick(w);
        y = pick(h);
        rw = w - x + 1 + pick(9);
        rh = h - y + 1 + pick(4);
        break;
    case 3:  // at offset 0, covering the image or more
        rw = w + pick(3);
        rh = h + pick(3);
        break;
    case 4:  // beyond the image
        x = w + pick(4);
        y = pick(h);
        rw = 1 + pick(5);
        rh = 1 + pick(h);
        break;
    default:  // somewhere, any size
        x = pick(w + 2);
        y = pick(h + 2);
        rw = 1 + pick(w + 4);
        rh = 1 + pick(h + 4);
        break;
    }
    image.setRoi(coi, x, y, rh, rw);
    note << " roi(" << coi << "," << x << "," << y << "," << rh << "," << rw << ")";
}

struct Case {
    unsigned int depth;
    int order;
    int channels[2];
    int coi[2];  // -1: no ROI
    int align[2];
    int height[2];
    int width[2];
    bool same;
};

Case randomCase(std::mt19937 &rng) {
    auto pick = [&](int n) { return static_cast<int>(rng() % static_cast<unsigned>(n)); };
    Case c{};
    c.depth = kDepths[pick(6)];
    c.order = pick(2);
    c.same = pick(5) == 0;
    for (int i = 0; i < 2; ++i) {
        c.align[i] = pick(2) ? 8 : 4;
        c.height[i] = 1 + pick(9);
        c.width[i] = 1 + pick(45);
        c.coi[i] = pick(3) == 0 ? -1 : 0;
    }
    if (c.depth == RMG_DEPTH_1U) {
        c.channels[0] = c.channels[1] = 1;
        for (int i = 0; i < 2; ++i)
            if (c.coi[i] == 0 && pick(2)) c.coi[i] = 1;
        return c;
    }
    switch (pick(4)) {
    case 0: {  // the same channels, all processed
        const int n = 1 + pick(4);
        c.channels[0] = c.channels[1] = n;
        break;
    }
    case 1:  // a coi on both
        for (int i = 0; i < 2; ++i) {
            c.channels[i] = 1 + pick(4);
            c.coi[i] = 1 + pick(c.channels[i]);
        }
        break;
    case 2: {  // a coi on one, one channel on the other (with or without ROI)
        const int withCoi = pick(2);
        c.channels[withCoi] = 1 + pick(4);
        c.coi[withCoi] = 1 + pick(c.channels[withCoi]);
        c.channels[1 - withCoi] = 1;
        c.coi[1 - withCoi] = pick(3) - 1;
        break;
    }
    default:  // one channel both, coi 1 or none
        c.channels[0] = c.channels[1] = 1;
        for (int i = 0; i < 2; ++i) c.coi[i] = pick(3) - 1;
        break;
    }
    return c;
}

int randomValue(std::mt19937 &rng) {
    const std::vector<int> &values = addstest::extremeValues();
    if (rng() % 4 == 0) return static_cast<int>(rng());
    return values[rng() % values.size()];
}

TEST_F(AddSRandomTest, AgreesWithTheModel) {
    std::mt19937 rng(20240611);
    int compared = 0;
    for (int iteration = 0; iteration < 2500; ++iteration) {
        const Case c = randomCase(rng);
        std::ostringstream note;
        note << "iteration " << iteration << " depth " << (c.depth & 0xFF)
             << (c.depth & RMG_DEPTH_SIGN ? "s" : "u") << " order " << c.order;
        Image a(c.channels[0], c.depth, c.order, c.align[0], c.height[0], c.width[0], 1);
        Image b(c.channels[1], c.depth, c.order, c.align[1], c.height[1], c.width[1], 2);
        Image &src = a;
        Image &dst = c.same ? a : b;
        note << " src " << c.channels[0] << "x" << c.height[0] << "x" << c.width[0] << "/"
             << c.align[0];
        if (c.coi[0] >= 0) randomRoi(src, c.coi[0], rng, note);
        if (!c.same) {
            note << " dst " << c.channels[1] << "x" << c.height[1] << "x" << c.width[1] << "/"
                 << c.align[1];
            if (c.coi[1] >= 0) randomRoi(dst, c.coi[1], rng, note);
        }
        note << (c.same ? " in place" : "");
        const Kind kind = static_cast<Kind>(rng() % 3);
        const int value = randomValue(rng);
        note << " kind " << kind << " value " << value;

        fillWithEnds(a, rng);
        fillWithEnds(b, rng);
        const std::vector<uint8_t> want =
            addstest::model(src.image, src.bytes(), dst.image, dst.bytes(), kind, value);
        addstest::expectInEveryForm(kind, src, dst, value, want, note.str());
        if (HasFatalFailure()) return;
        ++compared;
    }
    EXPECT_EQ(compared, 2500);
}

// Larger images, so that the vector bodies run long: rows of a few hundred
// elements at every alignment of the region's first element.
TEST_F(AddSRandomTest, LongRowsAgreeWithTheModel) {
    std::mt19937 rng(7);
    for (int iteration = 0; iteration < 300; ++iteration) {
        const unsigned int depth = kDepths[1 + rng() % 5];
        const int order = static_cast<int>(rng() % 2);
        const int channels = 1 + static_cast<int>(rng() % 3);
        const int width = 100 + static_cast<int>(rng() % 200);
        Image src(channels, depth, order, 8, 3, width, 1);
        Image dst(channels, depth, order, rng() % 2 ? 8 : 4, 3, width, 2);
        fillWithEnds(src, rng);
        fillWithEnds(dst, rng);
        const int x = static_cast<int>(rng() % 40);
        src.setRoi(0, x, 0, 3, width - x);
        dst.setRoi(0, static_cast<int>(rng() % 40), 0, 3, width);
        const Kind kind = static_cast<Kind>(rng() % 3);
        const int value = randomValue(rng);
        const std::vector<uint8_t> want =
            addstest::model(src.image, src.bytes(), dst.image, dst.bytes(), kind, value);
        addstest::expectInEveryForm(kind, src, dst, value, want,
                                    "iteration " + std::to_string(iteration) + " value " +
                                        std::to_string(value));
        if (HasFatalFailure()) return;
    }
}

}  // namespace
