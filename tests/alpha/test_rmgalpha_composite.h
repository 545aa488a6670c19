// Random calls of rmgAlphaCompositeC and rmgAlphaComposite for the driver
// tests: images of random size, order, align, ROI and bytes that pass every
// check, the arguments of one call, and the call on any headers standing in
// for those images.
#ifndef RMG_TESTS_ALPHA_TEST_RMGALPHA_COMPOSITE_H
#define RMG_TESTS_ALPHA_TEST_RMGALPHA_COMPOSITE_H

#include <algorithm>
#include <memory>
#include <random>
#include <vector>

#include <gtest/gtest.h>

#include <string>

#include "alpha/alphatest.h"
#include "alpha/rmgalpha.h"
#include "rmg.h"
#include "support/rmgtest.h"

namespace compositetest {

// The one report since the last clearing: `status` under `funcName` with
// `context`, module "rmgalpha", and the status word set to it.
inline void expectOneReport(int status, const char *funcName, const std::string &context) {
    ASSERT_EQ(rmgtest::reports().size(), 1u);
    const rmgtest::Report &r = rmgtest::reports()[0];
    EXPECT_EQ(r.status, status);
    EXPECT_EQ(r.funcName, funcName);
    EXPECT_EQ(r.context, context);
    EXPECT_EQ(r.fileName, "rmgalpha");
    EXPECT_EQ(rmgGetErrStatus(), status);
}

using alphatest::Image;

class RandomImages {
public:
    RandomImages(std::mt19937 &rng, unsigned int depth, int maxSide)
        : rng_(rng), depth_(depth), maxSide_(maxSide) {}

    int pick(int lo, int hi) { return std::uniform_int_distribution<int>(lo, hi)(rng_); }
    bool coin() { return pick(0, 1) == 1; }

    // An image of random size, align and bytes, in `order`, with a ROI half
    // of the time (always with `coi` above 0).
    Image *image(int nChannels, int alphaChannel, int order, int coi = 0) {
        const int height = pick(1, maxSide_), width = pick(1, maxSide_);
        images_.push_back(std::make_unique<Image>(nChannels, alphaChannel, depth_, order,
                                                  coin() ? 4 : 8, height, width));
        Image *img = images_.back().get();
        img->randomize(rng_);
        if (coi > 0 || coin())
            img->setRoi(coi, pick(0, width - 1), pick(0, height - 1), pick(1, maxSide_ + 2),
                        pick(1, maxSide_ + 2));
        return img;
    }

    // A copy of `img` with its own buffer, header and ROI; null for null.
    Image *copyOf(const Image *img) {
        if (img == nullptr) return nullptr;
        const RmgImage *h = img->image;
        images_.push_back(std::make_unique<Image>(h->nChannels, h->alphaChannel, h->depth,
                                                  h->dataOrder, h->align, h->height, h->width));
        Image *c = images_.back().get();
        c->setBytes(img->bytes());
        if (h->roi != nullptr)
            c->setRoi(h->roi->coi, h->roi->xOffset, h->roi->yOffset, h->roi->height,
                      h->roi->width);
        return c;
    }

private:
    std::mt19937 &rng_;
    unsigned int depth_;
    int maxSide_;
    std::vector<std::unique_ptr<Image>> images_;
};

// The images of one call, in the argument order; the alpha images and
// alphaDst may be null.
struct Images {
    Image *A, *B, *D, *alphaA, *alphaB, *alphaDst;
};

// One call that passes every check: a constant-form call (constForm) with
// alphaA and alphaB, or an image-form call with its alpha images.
struct Setup {
    unsigned int depth;
    bool constForm;
    int op, premul, divide;
    int alphaA, alphaB;
    Images images;
};

inline Setup randomSetup(RandomImages &r, unsigned int depth) {
    Setup s{};
    s.depth = depth;
    const int colours = r.pick(1, 3);
    const bool planeAll = r.pick(0, 2) == 0;
    auto order = [&] {
        return planeAll ? RMG_DATA_PLANE : (r.coin() ? RMG_DATA_PLANE : RMG_DATA_PIXEL);
    };
    const bool coi = r.pick(0, 3) == 0;
    auto image = [&](bool alpha) {
        const int n = colours + (alpha ? 1 : 0);
        return r.image(n, alpha ? n : 0, order(), coi ? r.pick(1, n) : 0);
    };
    s.constForm = r.coin();
    s.op = r.pick(0, 5);
    s.premul = r.pick(0, 1);
    s.divide = r.pick(0, 3) == 0 ? 1 : 0;
    Images &m = s.images;
    m.A = image(r.coin());
    m.B = image(r.coin());
    m.D = image(r.coin());
    const int M = depth == RMG_DEPTH_8U ? 255 : 65535;
    if (s.constForm) {
        s.alphaA = m.A->image->alphaChannel && r.coin() ? -1 : r.pick(0, M + 100);
        s.alphaB = m.B->image->alphaChannel && r.coin() ? -1 : r.pick(0, M + 100);
        return s;
    }
    // Alpha images of their own, or the sources themselves.
    if (r.coin() || m.A->image->alphaChannel == 0) {
        m.alphaA = r.image(r.pick(1, 2), 0, order(), 0);
        if (r.coin()) m.alphaA->image->alphaChannel = m.alphaA->image->nChannels;
    }
    if (m.alphaA != nullptr ? r.coin() : m.B->image->alphaChannel == 0)
        m.alphaB = r.image(1, r.pick(0, 1), order(), 0);
    if (r.coin()) m.alphaDst = r.image(2, r.pick(1, 2), order(), 0);
    return s;
}

inline Images copiesOf(RandomImages &r, const Images &m) {
    return {r.copyOf(m.A),      r.copyOf(m.B),      r.copyOf(m.D),
            r.copyOf(m.alphaA), r.copyOf(m.alphaB), r.copyOf(m.alphaDst)};
}

// The common extent of the images, as the checks narrow it: rows, or
// columns.
inline int extentOf(const Images &m, bool rowsWanted) {
    int rows = 99999, columns = 99999;
    for (const Image *img : {m.A, m.B, m.D, m.alphaA, m.alphaB, m.alphaDst})
        if (img != nullptr) ownClipExtent(img->image, &rows, &columns);
    return rowsWanted ? rows : columns;
}

// The headers a call is made on: the images' own, or others standing in.
struct Headers {
    RmgImage *A, *B, *D, *alphaA, *alphaB, *alphaDst;
};

inline RmgImage *headerOf(const Image *img) { return img != nullptr ? img->image : nullptr; }

inline Headers headersOf(const Images &m) {
    return {headerOf(m.A),      headerOf(m.B),      headerOf(m.D),
            headerOf(m.alphaA), headerOf(m.alphaB), headerOf(m.alphaDst)};
}

inline void invoke(const Setup &s, const Headers &h, const int *tilePoint = nullptr) {
    if (s.constForm)
        rmgAlphaCompositeC(h.A, h.B, h.D, s.op, s.alphaA, s.alphaB, s.premul, s.divide,
                           tilePoint);
    else
        rmgAlphaComposite(h.A, h.B, h.D, s.op, h.alphaA, h.alphaB, h.alphaDst, s.premul, s.divide,
                          tilePoint);
}

}  // namespace compositetest

#endif
