// The composition kernels: six Porter-Duff operators at 8 and 16 bits, with
// constant or image alpha, in integer or float arithmetic. One frame serves
// all 48; the depth (sample, M, scaled product, k, eps), the operator and
// the arithmetic are template arguments, and each operator's formula is
// written once per arithmetic.
#include <cstdint>
#include <cstring>

#include "alpha/rmgalpha.h"
#include "rmg.h"

namespace {

// ---------------------------------------------------------------------------
// Depths
// ---------------------------------------------------------------------------

// k is the float scale of one sample step and eps the smallest den that is
// divided by. At 8 bits both are single-precision values widened (bit
// patterns 0x3B808081 and 0x37010183; M * k is 1.00000006); at 16 bits they
// are double-precision values (0x3EF0001000100010, 0x3DE0002000300040).
struct Depth8u {
    static constexpr int M = 255;
    static constexpr int64_t kBytes = 1;
    static constexpr double k = static_cast<double>(0x1.010102p-8f);
    static constexpr double eps = static_cast<double>(0x1.020306p-17f);
    static int mul(int x, int y) {
        return static_cast<int>(ownMul255(static_cast<uint32_t>(x), static_cast<uint32_t>(y)));
    }
    static int load(const unsigned char *p) { return *p; }
    static void store(unsigned char *p, int v) { *p = static_cast<unsigned char>(v); }
};

// 16-bit samples are little-endian words at any alignment.
struct Depth16u {
    static constexpr int M = 65535;
    static constexpr int64_t kBytes = 2;
    static constexpr double k = 0x1.0001000100010p-16;
    static constexpr double eps = 0x1.0002000300040p-33;
    static int mul(int x, int y) {
        return static_cast<int>(ownMul65535(static_cast<uint32_t>(x), static_cast<uint32_t>(y)));
    }
    static int load(const unsigned char *p) {
        uint16_t v;
        std::memcpy(&v, p, sizeof v);
        return v;
    }
    static void store(unsigned char *p, int v) {
        const auto w = static_cast<uint16_t>(v);
        std::memcpy(p, &w, sizeof w);
    }
};

// ---------------------------------------------------------------------------
// Operators: the colour and alpha of the integer kernels (each term
// truncated by mul, a complement as x - mul(x, a)), and num and den of the
// float kernels, as the operator's table gives them.
// ---------------------------------------------------------------------------

struct Over {
    static constexpr bool kReadsB = true;
    template <class D> static int colour(int A2, int B2, int a, int) { return A2 + B2 - D::mul(B2, a); }
    template <class D> static int alpha(int a, int b) { return a + b - D::mul(a, b); }
    static double num(double cA, double cB, double a, double) { return cB * (1.0 - a) + cA; }
    static double den(double a, double b) { return (1.0 - a) * b + a; }
};

struct In {
    static constexpr bool kReadsB = false;
    template <class D> static int colour(int A2, int, int, int b) { return D::mul(A2, b); }
    template <class D> static int alpha(int a, int b) { return D::mul(a, b); }
    static double num(double cA, double, double, double b) { return cA * b; }
    static double den(double a, double b) { return a * b; }
};

struct Out {
    static constexpr bool kReadsB = false;
    template <class D> static int colour(int A2, int, int, int b) { return A2 - D::mul(A2, b); }
    template <class D> static int alpha(int a, int b) { return a - D::mul(a, b); }
    static double num(double cA, double, double, double b) { return cA * (1.0 - b); }
    static double den(double a, double b) { return (1.0 - b) * a; }
};

struct Atop {
    static constexpr bool kReadsB = true;
    template <class D> static int colour(int A2, int B2, int a, int b) {
        return D::mul(A2, b) + B2 - D::mul(B2, a);
    }
    template <class D> static int alpha(int, int b) { return b; }
    static double num(double cA, double cB, double a, double b) {
        return cA * b + cB * (1.0 - a);
    }
    static double den(double, double b) { return b; }
};

struct Xor {
    static constexpr bool kReadsB = true;
    template <class D> static int colour(int A2, int B2, int a, int b) {
        return A2 - D::mul(A2, b) + B2 - D::mul(B2, a);
    }
    template <class D> static int alpha(int a, int b) { return a + b - 2 * D::mul(a, b); }
    static double num(double cA, double cB, double a, double b) {
        return cA * (1.0 - b) + cB * (1.0 - a);
    }
    static double den(double a, double b) { return (1.0 - b) * a + (1.0 - a) * b; }
};

struct Plus {
    static constexpr bool kReadsB = true;
    template <class D> static int colour(int A2, int B2, int, int) { return A2 + B2; }
    template <class D> static int alpha(int a, int b) { return a + b; }
    static double num(double cA, double cB, double, double) { return cA + cB; }
    static double den(double a, double b) { return a + b; }
};

// ---------------------------------------------------------------------------
// Arithmetics: one pixel of one channel, from a, b, A and B (B is 0 where
// the operator doesn't read it) to the colour and, when `wantAlpha`, the
// destination alpha.
// ---------------------------------------------------------------------------

struct Integer {
    template <class D, class Op>
    static void pixel(int A, int B, int a, int b, bool premul, bool, bool wantAlpha,
                      int *colour, int *alpha) {
        const int A2 = premul ? A : D::mul(A, a);
        const int B2 = premul ? B : D::mul(B, b);
        const int c = Op::template colour<D>(A2, B2, a, b);
        *colour = c > D::M ? D::M : c;
        if (wantAlpha) {
            const int d = Op::template alpha<D>(a, b);
            *alpha = d > D::M ? D::M : d;
        }
    }
};

struct Float {
    template <class D, class Op>
    static void pixel(int A, int B, int a, int b, bool premul, bool divide, bool wantAlpha,
                      int *colour, int *alpha) {
        // For a constant alpha these are the same products in every pixel.
        const double ak = static_cast<double>(a) * D::k;
        const double bk = static_cast<double>(b) * D::k;
        const double cA = premul ? static_cast<double>(A) : static_cast<double>(A) * ak;
        const double cB = premul ? static_cast<double>(B) : static_cast<double>(B) * bk;
        double num = Op::num(cA, cB, ak, bk);
        if (divide || wantAlpha) {
            const double den = Op::den(ak, bk);
            if (divide && den > D::eps) {
                num = num / den;
                if (num > D::M) num = D::M;
            }
            if (wantAlpha) *alpha = ownRoundSample(den * D::M, D::M);
        }
        *colour = ownRoundSample(num, D::M);
    }
};

// ---------------------------------------------------------------------------
// The frame
// ---------------------------------------------------------------------------

using Stream = OwnSampleStream;

// Where a kernel's samples come from and go to. An alpha from a constant
// has no stream; `complementB` takes b as M - a.
struct Frame {
    Stream A, B, dst;
    Stream alphaA, alphaB, alphaDst;
    int constA = 0;
    int constB = 0;
    bool complementB = false;
    bool premul = false;
    bool divide = false;
    int nChannels = 0;  // channels the loop runs over
    int skip = -1;      // the destination's alpha channel, 0-based, or -1
};

template <class D>
Stream streamOf(const RmgImage *image, int channel) {
    return ownSampleStream(image, channel, D::kBytes);
}

// Channel of an alpha image: its alphaChannel, or 1 when that is 0.
int alphaChannelOf(const RmgImage *image) {
    return image->alphaChannel != 0 ? image->alphaChannel : 1;
}

int minOf(int a, int b) { return a < b ? a : b; }

// The frame over `rows` by `columns`: rows, then channels, then pixels; per
// pixel a, b, A, B are read, then the destination alpha (pass of channel 0
// only) and the colour are written. Working in place, the channels after
// the first see the alpha written in its pass.
template <class D, class Op, class Arith>
void run(const Frame &f, const RmgImage *srcImageA, const RmgImage *srcImageB,
         const RmgImage *dstImage, const RmgImage *alphaA, const RmgImage *alphaB,
         const RmgImage *alphaDst, int rows, int columns) {
    if (rows <= 0 || columns <= 0 || f.nChannels <= 0) return;
    // The channels the loop touches, without the skipped one at either end.
    const int firstChannel = f.skip == 0 ? 1 : 0;
    const int lastChannel = f.skip == f.nChannels - 1 ? f.nChannels - 2 : f.nChannels - 1;
    if (firstChannel > lastChannel) return;
    const bool writesAlpha = f.alphaDst.data != nullptr && firstChannel == 0;

    rows = minOf(rows, ownRowsInside(f.A, srcImageA->imageSize, firstChannel, lastChannel, columns,
                                  rows, D::kBytes));
    if (Op::kReadsB)
        rows = minOf(rows, ownRowsInside(f.B, srcImageB->imageSize, firstChannel, lastChannel,
                                      columns, rows, D::kBytes));
    rows = minOf(rows, ownRowsInside(f.dst, dstImage->imageSize, firstChannel, lastChannel, columns,
                                  rows, D::kBytes));
    if (alphaA != nullptr)
        rows = minOf(rows, ownRowsInside(f.alphaA, alphaA->imageSize, 0, 0, columns, rows, D::kBytes));
    if (alphaB != nullptr)
        rows = minOf(rows, ownRowsInside(f.alphaB, alphaB->imageSize, 0, 0, columns, rows, D::kBytes));
    if (writesAlpha)
        rows = minOf(rows,
                     ownRowsInside(f.alphaDst, alphaDst->imageSize, 0, 0, columns, rows, D::kBytes));

    const unsigned char *pA = f.A.data;
    const unsigned char *pB = f.B.data;
    unsigned char *pD = f.dst.data;
    const unsigned char *pa = f.alphaA.data;
    const unsigned char *pb = f.alphaB.data;
    unsigned char *pd = f.alphaDst.data;

    // Indices are integers until a sample is reached: the steps past the
    // last row or channel never form a pointer.
    int64_t rowA = f.A.start, rowB = f.B.start, rowD = f.dst.start;
    int64_t rowa = f.alphaA.start, rowb = f.alphaB.start, rowd = f.alphaDst.start;
    for (int r = 0; r < rows; ++r) {
        int64_t chA = rowA, chB = rowB, chD = rowD;
        for (int c = 0; c < f.nChannels; ++c) {
            if (c != f.skip) {
                const bool wantAlpha = c == 0 && writesAlpha;
                int64_t iA = chA, iB = chB, iD = chD, ia = rowa, ib = rowb, id = rowd;
                for (int x = 0; x < columns; ++x) {
                    const int a = pa != nullptr ? D::load(pa + ia) : f.constA;
                    const int b = f.complementB ? D::M - a : pb != nullptr ? D::load(pb + ib) : f.constB;
                    const int A = D::load(pA + iA);
                    const int B = Op::kReadsB ? D::load(pB + iB) : 0;
                    int colour = 0;
                    int alpha = 0;
                    Arith::template pixel<D, Op>(A, B, a, b, f.premul, f.divide, wantAlpha,
                                                 &colour, &alpha);
                    if (wantAlpha) D::store(pd + id, alpha);
                    D::store(pD + iD, colour);
                    iA += f.A.pixel;
                    iB += f.B.pixel;
                    iD += f.dst.pixel;
                    ia += f.alphaA.pixel;
                    ib += f.alphaB.pixel;
                    id += f.alphaDst.pixel;
                }
            }
            chA += f.A.channel;
            chB += f.B.channel;
            chD += f.dst.channel;
        }
        rowA += f.A.row;
        rowB += f.B.row;
        rowD += f.dst.row;
        rowa += f.alphaA.row;
        rowb += f.alphaB.row;
        rowd += f.alphaDst.row;
    }
}

// The colour streams and the channel loop: n channels from channel 1, or
// with a destination COI one channel at each image's own coi.
template <class D>
Frame colourFrame(const RmgImage *srcImageA, const RmgImage *srcImageB, const RmgImage *dstImage,
                  int premulAlpha, int divideMode) {
    Frame f;
    const bool coi = dstImage->roi != nullptr && dstImage->roi->coi != 0;
    auto channelOf = [coi](const RmgImage *image) {
        return coi ? (image->roi != nullptr ? image->roi->coi : 0) : 1;
    };
    f.A = streamOf<D>(srcImageA, channelOf(srcImageA));
    f.B = streamOf<D>(srcImageB, channelOf(srcImageB));
    f.dst = streamOf<D>(dstImage, channelOf(dstImage));
    f.nChannels = coi ? 1 : dstImage->nChannels;
    f.skip = dstImage->alphaChannel - 1;
    f.premul = premulAlpha != 0;
    f.divide = divideMode != 0;
    return f;
}

template <class D, class Op, class Arith>
void compositeConst(const RmgImage *srcImageA, const RmgImage *srcImageB, RmgImage *dstImage,
                    int alphaA, int alphaB, int premulAlpha, int divideMode, int rows,
                    int columns) {
    Frame f = colourFrame<D>(srcImageA, srcImageB, dstImage, premulAlpha, divideMode);
    const RmgImage *imageA = alphaA < 0 ? srcImageA : nullptr;
    const RmgImage *imageB = alphaB < 0 ? srcImageB : nullptr;
    if (imageA != nullptr) f.alphaA = streamOf<D>(imageA, imageA->alphaChannel);
    if (imageB != nullptr) f.alphaB = streamOf<D>(imageB, imageB->alphaChannel);
    f.constA = alphaA;
    f.constB = alphaB;
    run<D, Op, Arith>(f, srcImageA, srcImageB, dstImage, imageA, imageB, nullptr, rows, columns);
}

template <class D, class Op, class Arith>
void compositeImage(const RmgImage *srcImageA, const RmgImage *srcImageB, RmgImage *dstImage,
                    const RmgImage *alphaImageA, const RmgImage *alphaImageB,
                    RmgImage *alphaImageDst, int premulAlpha, int divideMode, int rows,
                    int columns) {
    Frame f = colourFrame<D>(srcImageA, srcImageB, dstImage, premulAlpha, divideMode);
    f.alphaA = streamOf<D>(alphaImageA, alphaChannelOf(alphaImageA));
    if (alphaImageB != nullptr)
        f.alphaB = streamOf<D>(alphaImageB, alphaChannelOf(alphaImageB));
    else
        f.complementB = true;
    if (alphaImageDst != nullptr)
        f.alphaDst = streamOf<D>(alphaImageDst, alphaImageDst->alphaChannel);
    run<D, Op, Arith>(f, srcImageA, srcImageB, dstImage, alphaImageA, alphaImageB, alphaImageDst,
                      rows, columns);
}

}  // namespace

#define OWN_COMPOSITE_ROW(form, D, Op) \
    { form<D, Op, Integer>, form<D, Op, Float> }
#define OWN_COMPOSITE_DEPTH(form, D)                                                        \
    {                                                                                       \
        OWN_COMPOSITE_ROW(form, D, Over), OWN_COMPOSITE_ROW(form, D, In),                   \
            OWN_COMPOSITE_ROW(form, D, Out), OWN_COMPOSITE_ROW(form, D, Atop),              \
            OWN_COMPOSITE_ROW(form, D, Xor), OWN_COMPOSITE_ROW(form, D, Plus)               \
    }

const OwnCompositeConstFn ownCompositeConst[2][6][2] = {
    OWN_COMPOSITE_DEPTH(compositeConst, Depth8u),
    OWN_COMPOSITE_DEPTH(compositeConst, Depth16u),
};

const OwnCompositeImageFn ownCompositeImage[2][6][2] = {
    OWN_COMPOSITE_DEPTH(compositeImage, Depth8u),
    OWN_COMPOSITE_DEPTH(compositeImage, Depth16u),
};
