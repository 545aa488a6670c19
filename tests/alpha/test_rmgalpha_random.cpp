// The 48 composition kernels against a per-element model written from the
// formulas: random images of both depths in pixel and plane order, mixed
// between the images, ROIs at different origins, destination COIs,
// destinations with an alpha channel, alpha images of their own or the
// sources themselves, and work in place. Every buffer of a call is compared
// whole, row padding included.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <map>
#include <memory>
#include <random>
#include <vector>

#include "alpha/alphatest.h"
#include "alpha/rmgalpha.h"

namespace {

using alphatest::getSample;
using alphatest::Image;
using alphatest::putSample;
using Bytes = std::vector<uint8_t>;

// ---------------------------------------------------------------------------
// The model
// ---------------------------------------------------------------------------

double fromFloatBits(uint32_t bits) {
    float f;
    std::memcpy(&f, &bits, sizeof f);
    return f;
}

double fromDoubleBits(uint64_t bits) {
    double d;
    std::memcpy(&d, &bits, sizeof d);
    return d;
}

// (v + 2^23) as a float, its low 23 bits, at most M.
int roundModel(double v, int M) {
    const float f = static_cast<float>(v + 8388608.0);
    uint32_t bits;
    std::memcpy(&bits, &f, sizeof bits);
    return std::min(static_cast<int>(bits & 0x7FFFFF), M);
}

struct Call {
    unsigned int depth = RMG_DEPTH_8U;
    int op = 0;
    int arith = 0;
    bool imageForm = false;
    Image *A = nullptr;
    Image *B = nullptr;
    Image *D = nullptr;
    Image *alphaA = nullptr;  // image form
    Image *alphaB = nullptr;
    Image *alphaD = nullptr;
    int constA = 0;  // constant form
    int constB = 0;
    int premul = 0;
    int divide = 0;
    int rows = 0;
    int columns = 0;
};

int mulModel(unsigned int depth, int x, int y) {
    return static_cast<int>(depth == RMG_DEPTH_8U ? ownMul255(static_cast<uint32_t>(x), static_cast<uint32_t>(y))
                                                  : ownMul65535(static_cast<uint32_t>(x), static_cast<uint32_t>(y)));
}

// Colour and alpha of one pixel and channel.
void pixelModel(const Call &k, int A, int B, int a, int b, int *colour, int *alpha) {
    const int M = k.depth == RMG_DEPTH_8U ? 255 : 65535;
    if (k.arith == kOwnIntegerKernel) {
        auto mul = [&](int x, int y) { return mulModel(k.depth, x, y); };
        const int A2 = k.premul ? A : mul(A, a);
        const int B2 = k.premul ? B : mul(B, b);
        int c = 0, d = 0;
        switch (k.op) {
        case 0: c = A2 + B2 - mul(B2, a); d = a + b - mul(a, b); break;
        case 1: c = mul(A2, b); d = mul(a, b); break;
        case 2: c = A2 - mul(A2, b); d = a - mul(a, b); break;
        case 3: c = mul(A2, b) + B2 - mul(B2, a); d = b; break;
        case 4: c = A2 - mul(A2, b) + B2 - mul(B2, a); d = a + b - 2 * mul(a, b); break;
        default: c = A2 + B2; d = a + b; break;
        }
        *colour = std::min(c, M);
        *alpha = std::min(d, M);
        return;
    }
    const double kk = k.depth == RMG_DEPTH_8U ? fromFloatBits(0x3B808081u)
                                              : fromDoubleBits(0x3EF0001000100010u);
    const double eps = k.depth == RMG_DEPTH_8U ? fromFloatBits(0x37010183u)
                                               : fromDoubleBits(0x3DE0002000300040u);
    const double one = 1.0;
    const double ak = a * kk, bk = b * kk;
    const double cA = k.premul ? A : A * ak;
    const double cB = k.premul ? B : B * bk;
    double num = 0, den = 0;
    switch (k.op) {
    case 0: num = cB * (one - ak) + cA; den = (one - ak) * bk + ak; break;
    case 1: num = cA * bk; den = ak * bk; break;
    case 2: num = cA * (one - bk); den = (one - bk) * ak; break;
    case 3: num = cA * bk + cB * (one - ak); den = bk; break;
    case 4: num = cA * (one - bk) + cB * (one - ak); den = (one - bk) * ak + (one - ak) * bk; break;
    default: num = cA + cB; den = ak + bk; break;
    }
    if (k.divide && den > eps) {
        num = num / den;
        if (num > M) num = M;
    }
    *alpha = roundModel(den * M, M);
    *colour = roundModel(num, M);
}

int xOf(const Image *img) { return img->image->roi ? img->roi.xOffset : 0; }
int yOf(const Image *img) { return img->image->roi ? img->roi.yOffset : 0; }

// The call on copies of the buffers, one copy per distinct image, so that
// an image that stands in several places is one buffer here too.
std::map<const Image *, Bytes> model(const Call &k) {
    std::map<const Image *, Bytes> mem;
    for (const Image *img : {k.A, k.B, k.D, k.alphaA, k.alphaB, k.alphaD})
        if (img != nullptr) mem.emplace(img, img->bytes());
    const int M = k.depth == RMG_DEPTH_8U ? 255 : 65535;
    const bool coi = k.D->image->roi != nullptr && k.D->roi.coi != 0;
    const int n = coi ? 1 : k.D->image->nChannels;
    const bool readsB = k.op != 1 && k.op != 2;
    auto get = [&](const Image *img, int x, int y, int ch) {
        return getSample(*img, mem[img], xOf(img) + x, yOf(img) + y, ch);
    };
    auto alphaChannelOf = [](const Image *img) {
        return img->image->alphaChannel != 0 ? img->image->alphaChannel - 1 : 0;
    };
    for (int y = 0; y < k.rows; ++y)
        for (int c = 0; c < n; ++c) {
            if (c == k.D->image->alphaChannel - 1) continue;
            const int chA = coi ? k.A->roi.coi - 1 : c;
            const int chB = coi ? k.B->roi.coi - 1 : c;
            const int chD = coi ? k.D->roi.coi - 1 : c;
            for (int x = 0; x < k.columns; ++x) {
                int a, b;
                if (k.imageForm) {
                    a = get(k.alphaA, x, y, alphaChannelOf(k.alphaA));
                    b = k.alphaB ? get(k.alphaB, x, y, alphaChannelOf(k.alphaB)) : M - a;
                } else {
                    a = k.constA < 0 ? get(k.A, x, y, k.A->image->alphaChannel - 1) : k.constA;
                    b = k.constB < 0 ? get(k.B, x, y, k.B->image->alphaChannel - 1) : k.constB;
                }
                const int A = get(k.A, x, y, chA);
                const int B = readsB ? get(k.B, x, y, chB) : 0;
                int colour, alpha;
                pixelModel(k, A, B, a, b, &colour, &alpha);
                if (c == 0 && k.imageForm && k.alphaD != nullptr)
                    putSample(*k.alphaD, mem[k.alphaD], xOf(k.alphaD) + x, yOf(k.alphaD) + y,
                              k.alphaD->image->alphaChannel - 1, alpha);
                putSample(*k.D, mem[k.D], xOf(k.D) + x, yOf(k.D) + y, chD, colour);
            }
        }
    return mem;
}

// ---------------------------------------------------------------------------
// Random calls
// ---------------------------------------------------------------------------

class Maker {
public:
    Maker(std::mt19937 &rng, unsigned int depth) : rng_(rng), depth_(depth) {}

    int pick(int lo, int hi) { return std::uniform_int_distribution<int>(lo, hi)(rng_); }
    bool coin(int oneIn = 2) { return pick(1, oneIn) == 1; }

    // An image of random size, order and align, random bytes, with a ROI at
    // a random origin half of the time (coi 0; `coi` -1 for a random coi).
    Image *image(int nChannels, int alphaChannel, bool roi, int coi = 0) {
        const int height = pick(1, 7), width = pick(1, 7);
        images_.push_back(std::make_unique<Image>(nChannels, alphaChannel, depth_,
                                                  coin() ? RMG_DATA_PIXEL : RMG_DATA_PLANE,
                                                  coin() ? 4 : 8, height, width));
        Image *img = images_.back().get();
        img->randomize(rng_);
        if (roi || coi != 0) {
            const int x = pick(0, width - 1), y = pick(0, height - 1);
            img->setRoi(coi < 0 ? pick(1, nChannels) : coi, x, y, pick(1, 8), pick(1, 8));
        }
        return img;
    }

    // An image with ROI whenever the destination has a COI.
    Image *source(int nChannels, int alphaChannel, bool dstCoi) {
        return image(nChannels, alphaChannel, dstCoi || coin(), dstCoi ? -1 : 0);
    }

private:
    std::mt19937 &rng_;
    unsigned int depth_;
    std::vector<std::unique_ptr<Image>> images_;
};

int extentRows(const Image *img) {
    return img->image->roi ? std::min(img->image->height - img->roi.yOffset, img->roi.height)
                           : img->image->height;
}
int extentColumns(const Image *img) {
    return img->image->roi ? std::min(img->image->width - img->roi.xOffset, img->roi.width)
                           : img->image->width;
}

void runOnce(std::mt19937 &rng, unsigned int depth, int op, int arith, bool imageForm) {
    Maker mk(rng, depth);
    const int M = depth == RMG_DEPTH_8U ? 255 : 65535;
    Call k;
    k.depth = depth;
    k.op = op;
    k.arith = arith;
    k.imageForm = imageForm;
    k.premul = mk.pick(0, 1);
    k.divide = arith == kOwnFloatKernel ? mk.pick(0, 1) : 0;

    // The destination: its colour channels, an alpha channel last half of
    // the time, a COI a quarter of the time.
    const int dstChannels = mk.pick(1, 4);
    const int dstAlpha = (dstChannels > 1 || mk.coin(4)) && mk.coin() ? dstChannels : 0;
    const bool dstCoi = mk.coin(4);
    k.D = mk.image(dstChannels, dstAlpha, dstCoi || mk.coin(), dstCoi ? -1 : 0);
    const int colours = dstChannels - (dstAlpha != 0);
    // Sources: as many colour channels unless the destination has a COI.
    auto makeSource = [&]() {
        const bool alpha = mk.coin() || colours == 0;
        const int channels = dstCoi ? mk.pick(1, 4) : colours + alpha;
        return mk.source(channels, alpha ? channels : 0, dstCoi);
    };
    const int place = mk.pick(0, 5);  // 0: dst is srcImageA, 1: srcImageB
    k.A = place == 0 ? k.D : makeSource();
    k.B = place == 1 ? k.D : makeSource();

    if (imageForm) {
        auto alphaImage = [&](Image *src) {
            if (src->image->alphaChannel != 0 && mk.coin()) return src;
            const int channels = mk.pick(1, 3);
            return mk.image(channels, mk.pick(0, channels), mk.coin());
        };
        k.alphaA = alphaImage(k.A);
        k.alphaB = mk.coin(3) ? nullptr : alphaImage(k.B);
        const int dstPlace = mk.pick(0, 2);
        if (dstPlace == 1 && dstAlpha != 0) {
            k.alphaD = k.D;
        } else if (dstPlace == 2) {
            const int channels = mk.pick(1, 3);
            k.alphaD = mk.image(channels, mk.pick(1, channels), mk.coin());
        }
    } else {
        auto constant = [&](const Image *src) {
            if (src->image->alphaChannel != 0 && mk.coin()) return -1 - mk.pick(0, 5);
            const int which = mk.pick(0, 3);
            return which == 0 ? 0 : which == 1 ? M : mk.pick(0, M);
        };
        k.constA = constant(k.A);
        k.constB = constant(k.B);
    }

    k.rows = k.columns = 99999;
    for (const Image *img : {k.D, k.alphaD, k.A, k.B, k.alphaA, k.alphaB}) {
        if (img == nullptr) continue;
        k.rows = std::min(k.rows, extentRows(img));
        k.columns = std::min(k.columns, extentColumns(img));
    }

    const std::map<const Image *, Bytes> expected = model(k);
    const int d = depth == RMG_DEPTH_8U ? kOwnDepth8u : kOwnDepth16u;
    if (imageForm)
        ownCompositeImage[d][op][arith](k.A->image, k.B->image, k.D->image, k.alphaA->image,
                                        k.alphaB ? k.alphaB->image : nullptr,
                                        k.alphaD ? k.alphaD->image : nullptr, k.premul, k.divide,
                                        k.rows, k.columns);
    else
        ownCompositeConst[d][op][arith](k.A->image, k.B->image, k.D->image, k.constA, k.constB,
                                        k.premul, k.divide, k.rows, k.columns);
    for (const auto &entry : expected) {
        SCOPED_TRACE(testing::Message()
                     << "image " << (entry.first == k.D ? "dst" : entry.first == k.A ? "A"
                                     : entry.first == k.B ? "B" : "alpha")
                     << ", dst " << dstChannels << " ch alpha " << dstAlpha << " coi " << dstCoi
                     << ", premul " << k.premul << ", divide " << k.divide << ", rows "
                     << k.rows << " columns " << k.columns);
        ASSERT_EQ(entry.first->bytes(), entry.second);
    }
}

class AlphaRandomTest : public testing::TestWithParam<std::tuple<unsigned int, int, int, bool>> {};

TEST_P(AlphaRandomTest, MatchesTheModel) {
    const unsigned int depth = std::get<0>(GetParam());
    const int op = std::get<1>(GetParam());
    const int arith = std::get<2>(GetParam());
    const bool imageForm = std::get<3>(GetParam());
    std::mt19937 rng(static_cast<uint32_t>(depth * 1000 + op * 100 + arith * 10 + imageForm));
    for (int i = 0; i < 300; ++i) {
        SCOPED_TRACE(i);
        runOnce(rng, depth, op, arith, imageForm);
        if (HasFatalFailure()) return;
    }
}

INSTANTIATE_TEST_SUITE_P(AllKernels, AlphaRandomTest,
                         testing::Combine(testing::Values(RMG_DEPTH_8U, RMG_DEPTH_16U),
                                          testing::Range(0, 6),
                                          testing::Values(kOwnIntegerKernel, kOwnFloatKernel),
                                          testing::Bool()));

}  // namespace
