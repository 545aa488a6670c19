// The composition kernels in every vector form against the scalar form, on
// random images that lean towards what the pixel rows take (pixel order,
// the same channels in every colour image) and towards what they must
// refuse (work in place at the same or another offset, alpha channels that
// are also the destination's): both depths, all operators, both
// arithmetics, both alpha forms, 1 to 4 channels with and without an alpha
// channel, ROIs, destination COIs, every width 1..70 and some large ones.
// Every buffer of a call is compared whole, row padding included.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <map>
#include <memory>
#include <random>
#include <vector>

#include "alpha/alphatest.h"
#include "alpha/rmgalpha.h"
#include "support/rmgforms.h"

namespace {

using alphatest::Image;
using Bytes = std::vector<uint8_t>;

struct Call {
    Call(int depth_, int op_, int arith_, bool imageForm_)
        : depth(depth_), op(op_), arith(arith_), imageForm(imageForm_) {}
    int depth = kOwnDepth8u;
    int op = 0;
    int arith = kOwnIntegerKernel;
    bool imageForm = false;
    Image *A = nullptr, *B = nullptr, *D = nullptr;
    Image *alphaA = nullptr, *alphaB = nullptr, *alphaD = nullptr;
    int constA = 0, constB = 0;
    int premul = 0, divide = 0;
    int rows = 0, columns = 0;
    // Headers of their own over the destination's bytes (other ROIs).
    std::vector<Image *> views;
};

RmgImage *headerOf(Image *img) { return img != nullptr ? img->image : nullptr; }

void runKernel(const Call &k) {
    if (k.imageForm)
        ownCompositeImage[k.depth][k.op][k.arith](k.A->image, k.B->image, k.D->image,
                                                  k.alphaA->image, headerOf(k.alphaB),
                                                  headerOf(k.alphaD), k.premul, k.divide, k.rows,
                                                  k.columns);
    else
        ownCompositeConst[k.depth][k.op][k.arith](k.A->image, k.B->image, k.D->image, k.constA,
                                                  k.constB, k.premul, k.divide, k.rows, k.columns);
}

// The call in the scalar form and in every other, each on the same bytes;
// every image's buffer compared whole.
void compareForms(const Call &k) {
    std::vector<Image *> images;
    for (Image *img : {k.A, k.B, k.D, k.alphaA, k.alphaB, k.alphaD})
        if (img != nullptr && std::find(images.begin(), images.end(), img) == images.end() &&
            std::find(k.views.begin(), k.views.end(), img) == k.views.end())
            images.push_back(img);
    std::vector<Bytes> start;
    for (Image *img : images) start.push_back(img->bytes());
    std::vector<Bytes> scalar;
    rmgtest::inEveryForm([&](int form) {
        for (size_t i = 0; i < images.size(); ++i) images[i]->setBytes(start[i]);
        for (Image *view : k.views) view->image->imageData = k.D->image->imageData;
        runKernel(k);
        for (size_t i = 0; i < images.size(); ++i) {
            if (form == rmg::kFormScalar) {
                scalar.push_back(images[i]->bytes());
                continue;
            }
            SCOPED_TRACE(testing::Message() << "image " << i);
            ASSERT_EQ(images[i]->bytes(), scalar[i]);
        }
    });
}

class Maker {
public:
    Maker(std::mt19937 &rng, int depth) : rng_(rng), depth_(depth == kOwnDepth8u ? RMG_DEPTH_8U : RMG_DEPTH_16U) {}

    int pick(int lo, int hi) { return std::uniform_int_distribution<int>(lo, hi)(rng_); }
    bool coin(int oneIn = 2) { return pick(1, oneIn) == 1; }

    // Mostly pixel order; a ROI inside the image, wider than it at times.
    Image *image(int nChannels, int alphaChannel, int height, int width, bool roi, int coi) {
        const int order = coin(6) ? RMG_DATA_PLANE : RMG_DATA_PIXEL;
        images_.push_back(std::make_unique<Image>(nChannels, alphaChannel, depth_, order,
                                                  coin() ? 4 : 8, height, width));
        Image *img = images_.back().get();
        img->randomize(rng_);
        if (roi || coi != 0)
            img->setRoi(coi, pick(0, std::min(3, width - 1)), pick(0, std::min(2, height - 1)),
                        pick(1, height + 1), pick(width / 2 + 1, width + 2));
        return img;
    }

    // A header like `of` with a ROI of its own; the caller points it at
    // the bytes of `of`.
    Image *view(const Image *of) {
        const RmgImage *h = of->image;
        images_.push_back(std::make_unique<Image>(h->nChannels, h->alphaChannel, depth_,
                                                  h->dataOrder, h->align, h->height, h->width));
        Image *img = images_.back().get();
        img->setRoi(0, pick(0, std::min(3, h->width - 1)), pick(0, std::min(2, h->height - 1)),
                    h->height, h->width);
        return img;
    }

private:
    std::mt19937 &rng_;
    unsigned int depth_;
    std::vector<std::unique_ptr<Image>> images_;
};

// One random call of the kernel (depth, op, arith, form) over images about
// `width` pixels wide.
void randomCall(std::mt19937 &rng, int depth, int op, int arith, bool imageForm, int width) {
    Maker mk(rng, depth);
    const int M = depth == kOwnDepth8u ? 255 : 65535;
    Call k(depth, op, arith, imageForm);
    k.premul = mk.pick(0, 1);
    k.divide = arith == kOwnFloatKernel ? mk.pick(0, 1) : 0;
    const int height = mk.pick(1, 4);

    const int n = mk.pick(1, 4);
    const int dstAlpha = mk.coin(3) ? 0 : mk.coin(3) ? mk.pick(1, n) : n;
    const bool coi = mk.coin(8);
    auto coiOf = [&](int channels) { return coi ? mk.pick(1, channels) : 0; };
    const bool sameRoi = mk.coin();
    k.D = mk.image(n, dstAlpha, height, width, coi || mk.coin(3), coiOf(n));
    // A source: like the destination, or another channel count; or the
    // destination itself, at its own ROI or at another offset.
    auto source = [&]() -> Image * {
        const int place = mk.pick(0, 9);
        if (place == 0) return k.D;
        if (place == 1 && !coi) {
            k.views.push_back(mk.view(k.D));
            return k.views.back();
        }
        const int channels = mk.coin(5) ? mk.pick(1, 4) : n;
        const int alpha = mk.coin(4) ? 0 : mk.coin(4) ? mk.pick(1, channels) : channels;
        return mk.image(channels, alpha, height, width, coi || !sameRoi, coiOf(channels));
    };
    k.A = source();
    k.B = source();
    auto withAlpha = [&](Image *img) { return img->image->alphaChannel != 0; };
    auto separateAlpha = [&](bool needsAlpha) {
        const int channels = mk.coin() ? n : mk.pick(1, 4);
        return mk.image(channels, needsAlpha || mk.coin() ? mk.pick(1, channels) : 0, height, width,
                        mk.coin(3), 0);
    };
    if (imageForm) {
        const int a = mk.pick(0, 3);
        k.alphaA = a == 0 ? k.A : a == 1 ? k.D : separateAlpha(false);
        const int b = mk.pick(0, 3);
        k.alphaB = b == 0 ? nullptr : b == 1 ? k.B : separateAlpha(false);
        const int d = mk.pick(0, 3);
        if (d == 1 && withAlpha(k.D)) k.alphaD = k.D;
        if (d == 2) k.alphaD = separateAlpha(true);
        if (d == 3 && withAlpha(k.A)) k.alphaD = k.A;
    } else {
        auto constant = [&](Image *src) {
            if (withAlpha(src) && mk.coin(3) != 1) return -1;
            const int which = mk.pick(0, 3);
            return which == 0 ? 0 : which == 1 ? M : mk.pick(0, M);
        };
        k.constA = constant(k.A);
        k.constB = constant(k.B);
    }
    k.rows = k.columns = 99999;
    for (const Image *img : {k.D, k.alphaD, k.A, k.B, k.alphaA, k.alphaB})
        if (img != nullptr) ownClipExtent(img->image, &k.rows, &k.columns);
    SCOPED_TRACE(testing::Message() << "depth " << depth << " op " << op << " arith " << arith
                                    << " image form " << imageForm << " n " << n << " alpha "
                                    << dstAlpha << " coi " << coi << " width " << width
                                    << " rows " << k.rows << " columns " << k.columns);
    compareForms(k);
}

class AlphaKernelFormsTest : public testing::TestWithParam<std::tuple<int, int, bool>> {};

TEST_P(AlphaKernelFormsTest, EveryFormGivesTheScalarBytes) {
    const int depth = std::get<0>(GetParam());
    const int op = std::get<1>(GetParam());
    const bool imageForm = std::get<2>(GetParam());
    std::mt19937 rng(static_cast<uint32_t>(depth * 100 + op * 10 + imageForm));
    for (int width = 1; width <= 70; ++width)
        for (int arith : {kOwnIntegerKernel, kOwnIntegerKernel, kOwnFloatKernel}) {
            randomCall(rng, depth, op, arith, imageForm, width);
            if (HasFatalFailure()) return;
        }
    for (int width : {127, 128, 129, 255, 333, 1000}) {
        randomCall(rng, depth, op, kOwnIntegerKernel, imageForm, width);
        if (HasFatalFailure()) return;
    }
}

INSTANTIATE_TEST_SUITE_P(AllKernels, AlphaKernelFormsTest,
                         testing::Combine(testing::Values(kOwnDepth8u, kOwnDepth16u),
                                          testing::Range(0, 6), testing::Bool()));

}  // namespace
