// The composition kernels: six Porter-Duff operators at 8 and 16 bits, with
// constant or image alpha, in integer or float arithmetic. One frame serves
// all 48; the depth (sample, M, scaled product, k, eps), the operator and
// the arithmetic are template arguments, and each operator's formula is
// written once per arithmetic (alpha/rmgalpha_kernels_impl.h). The kinds of
// the alphas, premulAlpha, divideMode and the writing of a destination
// alpha are chosen once per call, each combination with a loop of its own.
//
// The integer kernels on pixel-order images take the rows of the vector
// forms (alpha/rmgalpha_kernels.h), which work a whole pixel at a time,
// where the buffers show that this order gives the same bytes as the
// frame's: see planPixelRows.
#include <cstdint>
#include <cstring>
#include <type_traits>

#include "alpha/rmgalpha.h"
#include "alpha/rmgalpha_kernels.h"
#include "alpha/rmgalpha_kernels_impl.h"
#include "core/rmgcpu.h"
#include "rmg.h"

namespace rmg {

constexpr CompositeForms kCompositeScalar = {};

namespace {

constexpr FormTable<const CompositeForms *> kComposite = formTable<const CompositeForms *>(
    &kCompositeScalar, RMG_FORM_SSE2(&kCompositeSse2), RMG_FORM_AVX2(&kCompositeAvx2), nullptr);

}  // namespace

const CompositeForms &compositeForms() { return *kComposite.get(); }

}  // namespace rmg

namespace {

using rmg::CompositeAlpha;
using rmg::CompositeRow;
using rmg::CompositeShape;

// ---------------------------------------------------------------------------
// Depths
// ---------------------------------------------------------------------------

// k is the float scale of one sample step and eps the smallest den that is
// divided by. At 8 bits both are single-precision values widened (bit
// patterns 0x3B808081 and 0x37010183; M * k is 1.00000006); at 16 bits they
// are double-precision values (0x3EF0001000100010, 0x3DE0002000300040).
// 16-bit samples are little-endian words at any alignment.
struct Depth8u {
    using Lanes = rmg::CompositeScalar8;
    static constexpr int M = 255;
    static constexpr int64_t kBytes = 1;
    static constexpr double k = static_cast<double>(0x1.010102p-8f);
    static constexpr double eps = static_cast<double>(0x1.020306p-17f);
};

struct Depth16u {
    using Lanes = rmg::CompositeScalar16;
    static constexpr int M = 65535;
    static constexpr int64_t kBytes = 2;
    static constexpr double k = 0x1.0001000100010p-16;
    static constexpr double eps = 0x1.0002000300040p-33;
};

// ---------------------------------------------------------------------------
// Arithmetics: one pixel of one channel, from a, b, A and B (B is 0 where
// the operator doesn't read it) to the colour and, when `WantAlpha`, the
// destination alpha.
// ---------------------------------------------------------------------------

struct Integer {
    static constexpr bool kDivides = false;
    template <class D, class Op, bool Premul, bool, bool WantAlpha>
    static void pixel(uint32_t A, uint32_t B, uint32_t a, uint32_t b, double, double,
                      uint32_t *colour, uint32_t *alpha) {
        using L = typename D::Lanes;
        *colour = rmg::compositeColour<L, Op, Premul>(A, B, a, b);
        if (WantAlpha) *alpha = Op::template alpha<L>(a, b);
    }
};

// ownRoundSample, here where the loops can inline it: v + 2^23 stored to
// single precision, the low 23 bits of its pattern, at most M.
template <class D>
uint32_t roundSample(double v) {
    const float sum = static_cast<float>(v + 8388608.0);
    uint32_t bits = 0;
    std::memcpy(&bits, &sum, sizeof bits);
    return (bits & 0x7FFFFFu) > uint32_t{D::M} ? uint32_t{D::M} : bits & 0x7FFFFFu;
}

// `ak` and `bk` are a * k and b * k, computed by the loop (once for a
// constant alpha).
struct Float {
    static constexpr bool kDivides = true;
    template <class D, class Op, bool Premul, bool Divide, bool WantAlpha>
    static void pixel(uint32_t A, uint32_t B, uint32_t, uint32_t, double ak, double bk,
                      uint32_t *colour, uint32_t *alpha) {
        const double cA = Premul ? static_cast<double>(A) : static_cast<double>(A) * ak;
        const double cB = Premul ? static_cast<double>(B) : static_cast<double>(B) * bk;
        double num = Op::num(cA, cB, ak, bk);
        if (Divide || WantAlpha) {
            const double den = Op::den(ak, bk);
            if (Divide && den > D::eps) {
                num = num / den;
                if (num > D::M) num = D::M;
            }
            if (WantAlpha) *alpha = roundSample<D>(den * D::M);
        }
        *colour = roundSample<D>(num);
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
    int laneA = 0, laneB = 0, laneDst = 0;  // 0-based channels of the alpha streams
    // imageSize of each stream's image.
    int sizeA = 0, sizeB = 0, sizeDst = 0, sizeAlphaA = 0, sizeAlphaB = 0, sizeAlphaDst = 0;
    int constA = 0;
    int constB = 0;
    bool complementB = false;
    bool premul = false;
    bool divide = false;
    bool coi = false;
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

enum class From { Const, Stream, Complement };

// The positions of one channel's pass over a row, in bytes from each
// stream's data.
struct Pass {
    int64_t A, B, D, a, b, d;
};

template <class D>
uint32_t load(const unsigned char *p) {
    return D::Lanes::load(p);
}

// One channel's pass over `columns` pixels; per pixel a, b, A, B are read,
// then the destination alpha (when `WantAlpha`) and the colour written.
template <class D, class Op, class Arith, From FA, From FB, bool Premul, bool Divide,
          bool WantAlpha>
void pass(const Frame &f, Pass at, int columns) {
    const unsigned char *pA = f.A.data;
    const unsigned char *pB = f.B.data;
    unsigned char *pD = f.dst.data;
    const unsigned char *pa = f.alphaA.data;
    const unsigned char *pb = f.alphaB.data;
    unsigned char *pd = f.alphaDst.data;
    const int64_t stepA = f.A.pixel, stepB = f.B.pixel, stepD = f.dst.pixel;
    const int64_t stepa = f.alphaA.pixel, stepb = f.alphaB.pixel, stepd = f.alphaDst.pixel;
    const auto constA = static_cast<uint32_t>(f.constA);
    const auto constB = static_cast<uint32_t>(f.constB);
    const double constAk = static_cast<double>(f.constA) * D::k;
    const double constBk = static_cast<double>(f.constB) * D::k;
    for (int x = 0; x < columns; ++x) {
        const uint32_t a = FA == From::Stream ? load<D>(pa + at.a) : constA;
        const uint32_t b = FB == From::Complement ? D::M - a
                           : FB == From::Stream   ? load<D>(pb + at.b)
                                                  : constB;
        const uint32_t A = load<D>(pA + at.A);
        const uint32_t B = Op::kReadsB ? load<D>(pB + at.B) : 0;
        double ak = constAk, bk = constBk;
        if (Arith::kDivides && FA != From::Const) ak = static_cast<double>(a) * D::k;
        if (Arith::kDivides && FB != From::Const) bk = static_cast<double>(b) * D::k;
        uint32_t colour = 0;
        uint32_t alpha = 0;
        Arith::template pixel<D, Op, Premul, Divide, WantAlpha>(A, B, a, b, ak, bk, &colour, &alpha);
        if (WantAlpha) D::Lanes::store(pd + at.d, alpha);
        D::Lanes::store(pD + at.D, colour);
        at.A += stepA;
        at.B += stepB;
        at.D += stepD;
        at.a += stepa;
        at.b += stepb;
        at.d += stepd;
    }
}

// Rows, then channels, then pixels; the destination alpha in the pass of
// channel 0 only. Working in place, the channels after the first see the
// alpha written in its pass.
template <class D, class Op, class Arith, From FA, From FB, bool Premul, bool Divide>
void frameLoop(const Frame &f, bool writesAlpha, int rows, int columns) {
    // Indices are integers until a sample is reached: the steps past the
    // last row or channel never form a pointer.
    Pass row{f.A.start, f.B.start, f.dst.start, f.alphaA.start, f.alphaB.start, f.alphaDst.start};
    for (int r = 0; r < rows; ++r) {
        Pass at = row;
        for (int c = 0; c < f.nChannels; ++c) {
            if (c == 0 && writesAlpha)
                pass<D, Op, Arith, FA, FB, Premul, Divide, true>(f, at, columns);
            else if (c != f.skip)
                pass<D, Op, Arith, FA, FB, Premul, Divide, false>(f, at, columns);
            at.A += f.A.channel;
            at.B += f.B.channel;
            at.D += f.dst.channel;
        }
        row.A += f.A.row;
        row.B += f.B.row;
        row.D += f.dst.row;
        row.a += f.alphaA.row;
        row.b += f.alphaB.row;
        row.d += f.alphaDst.row;
    }
}

template <bool V>
using Bool = std::integral_constant<bool, V>;
template <From F>
using FromTag = std::integral_constant<From, F>;

template <class Fn>
void withBool(bool value, Fn &&fn) {
    if (value)
        fn(Bool<true>{});
    else
        fn(Bool<false>{});
}

// The loop of the frame for the call's alpha kinds, premulAlpha and
// divideMode (the integer kernels don't divide).
template <class D, class Op, class Arith>
void runFrame(const Frame &f, bool writesAlpha, int rows, int columns) {
    auto withB = [&](auto fa) {
        auto go = [&](auto fb) {
            withBool(f.premul, [&](auto premul) {
                withBool(Arith::kDivides && f.divide, [&](auto divide) {
                    frameLoop<D, Op, Arith, decltype(fa)::value, decltype(fb)::value,
                              decltype(premul)::value, decltype(divide)::value && Arith::kDivides>(
                        f, writesAlpha, rows, columns);
                });
            });
        };
        if (f.complementB)
            go(FromTag<From::Complement>{});
        else if (f.alphaB.data != nullptr)
            go(FromTag<From::Stream>{});
        else
            go(FromTag<From::Const>{});
    };
    if (f.alphaA.data != nullptr)
        withB(FromTag<From::Stream>{});
    else
        withB(FromTag<From::Const>{});
}

// ---------------------------------------------------------------------------
// Pixel rows
// ---------------------------------------------------------------------------

// Bytes [lo, hi) that a stream reaches over the call's rows, channels
// first..last of its own and `columns` pixels.
struct Span {
    uintptr_t lo = 0, hi = 0;
    bool meets(const Span &o) const { return lo < o.hi && o.lo < hi; }
};

Span spanOf(const Stream &s, int first, int last, int columns, int rows, int64_t sampleBytes) {
    int64_t lo = s.start + first * s.channel, hi = lo;
    auto stretch = [&](int64_t by) {
        if (by < 0) lo += by;
        if (by > 0) hi += by;
    };
    stretch((last - first) * s.channel);
    stretch(int64_t{columns - 1} * s.pixel);
    stretch(int64_t{rows - 1} * s.row);
    const auto base = reinterpret_cast<uintptr_t>(s.data);
    return Span{base + static_cast<uintptr_t>(lo), base + static_cast<uintptr_t>(hi + sampleBytes)};
}

// A stream whose pixels are the pixels of `dst`: the same buffer, rows and
// pixel step, its first sample in the destination's first pixel at
// `lane`.
bool onPixelsOf(const Stream &s, const Stream &dst, int lane, int64_t sampleBytes) {
    return s.data == dst.data && s.row == dst.row && s.pixel == dst.pixel &&
           s.channel == dst.channel && s.start == dst.start + lane * sampleBytes;
}

// How the pixel rows read one alpha stream; `base` gets the stream's
// first byte for the rows (the pixel's first sample for kAlphaLane).
CompositeAlpha alphaOf(const Stream &s, int lane, int64_t pixelBytes, int64_t sampleBytes,
                       int constant, int64_t *base) {
    CompositeAlpha alpha;
    alpha.value = static_cast<uint32_t>(constant);
    *base = s.start;
    if (s.data == nullptr) return alpha;
    alpha.kind = rmg::kAlphaGather;
    alpha.step = s.pixel;
    if (s.pixel == pixelBytes && s.channel == sampleBytes && lane >= 0 &&
        lane * sampleBytes < pixelBytes) {
        alpha.kind = rmg::kAlphaLane;
        alpha.lane = lane;
        *base = s.start - lane * sampleBytes;
    }
    return alpha;
}

// The pixel rows of a call, or false where they don't serve it: a form
// without them, a destination COI, colour images that aren't all in pixel
// order with 1, 2 or 4 channels, pixels that reach outside a buffer, or
// buffers that meet where the frame's order could be seen:
//   - source A or B meets the destination and isn't its very samples (a
//     sample read and written by its own pixel only is the same in any
//     order);
//   - an alpha stream meets the destination, unless it is the skipped
//     channel of the destination's own pixels and no destination alpha is
//     written there;
//   - a destination alpha that isn't the skipped channel of the
//     destination's pixels meets any other stream.
// `rows` are those of the frame (inside every buffer for their channels).
template <class D>
bool planPixelRows(const Frame &f, bool readsB, bool writesAlpha, int rows, int columns,
                   rmg::CompositeRowFn fn, CompositeShape *shape, int64_t base[3]) {
    if (fn == nullptr || f.coi) return false;
    const int n = f.nChannels;
    const int64_t s = D::kBytes;
    const int64_t pixelBytes = n * s;
    if (n != 1 && n != 2 && n != 4) return false;
    auto colourStream = [&](const Stream &st) { return st.pixel == pixelBytes && st.channel == s; };
    if (!colourStream(f.dst) || !colourStream(f.A) || (readsB && !colourStream(f.B))) return false;

    shape->channels = n;
    shape->skip = f.skip >= 0 && f.skip < n ? f.skip : -1;
    shape->a = alphaOf(f.alphaA, f.laneA, pixelBytes, s, f.constA, &base[0]);
    shape->b = alphaOf(f.alphaB, f.laneB, pixelBytes, s, f.constB, &base[1]);
    if (f.complementB) shape->b.kind = rmg::kAlphaComplement;
    base[2] = f.alphaDst.start;
    if (writesAlpha) {
        const bool inSkip = shape->skip >= 0 && f.alphaDst.data == f.dst.data &&
                            f.alphaDst.row == f.dst.row && f.alphaDst.pixel == pixelBytes &&
                            f.alphaDst.start == f.dst.start + shape->skip * s;
        shape->dstAlpha = inSkip ? rmg::kDstAlphaLane : rmg::kDstAlphaScatter;
        shape->dstAlphaStep = f.alphaDst.pixel;
    }

    // Whole pixels inside the buffers, for every row.
    auto whole = [&](const Stream &st, int size, int first, int last) {
        return ownRowsInside(st, size, first, last, columns, rows, s) >= rows;
    };
    if (!whole(f.A, f.sizeA, 0, n - 1) || !whole(f.dst, f.sizeDst, 0, n - 1) ||
        (readsB && !whole(f.B, f.sizeB, 0, n - 1)))
        return false;
    const CompositeAlpha *alphas[2] = {&shape->a, &shape->b};
    const Stream *alphaStreams[2] = {&f.alphaA, &f.alphaB};
    const int sizes[2] = {f.sizeAlphaA, f.sizeAlphaB};
    for (int k = 0; k < 2; ++k)
        if (alphas[k]->kind == rmg::kAlphaLane &&
            !whole(*alphaStreams[k], sizes[k], -alphas[k]->lane, n - 1 - alphas[k]->lane))
            return false;

    // Where the buffers meet.
    const Span dstSpan = spanOf(f.dst, 0, n - 1, columns, rows, s);
    auto colourMeets = [&](const Stream &st) {
        return spanOf(st, 0, n - 1, columns, rows, s).meets(dstSpan) && !onPixelsOf(st, f.dst, 0, s);
    };
    if (colourMeets(f.A) || (readsB && colourMeets(f.B))) return false;
    for (int k = 0; k < 2; ++k) {
        if (alphaStreams[k]->data == nullptr) continue;
        const Span span = spanOf(*alphaStreams[k], 0, 0, columns, rows, s);
        const bool skipped = shape->skip >= 0 && shape->dstAlpha != rmg::kDstAlphaLane &&
                             onPixelsOf(*alphaStreams[k], f.dst, shape->skip, s);
        if (span.meets(dstSpan) && !skipped) return false;
    }
    if (shape->dstAlpha == rmg::kDstAlphaScatter) {
        const Span alphaSpan = spanOf(f.alphaDst, 0, 0, columns, rows, s);
        if (alphaSpan.meets(dstSpan) || alphaSpan.meets(spanOf(f.A, 0, n - 1, columns, rows, s)) ||
            (readsB && alphaSpan.meets(spanOf(f.B, 0, n - 1, columns, rows, s))))
            return false;
        for (int k = 0; k < 2; ++k)
            if (alphaStreams[k]->data != nullptr &&
                alphaSpan.meets(spanOf(*alphaStreams[k], 0, 0, columns, rows, s)))
                return false;
    }
    return true;
}

unsigned char *rowOf(const Stream &s, int64_t start, int r) {
    return s.data == nullptr ? nullptr : s.data + start + r * s.row;
}

void runPixelRows(const Frame &f, const CompositeShape &shape, const int64_t base[3],
                  rmg::CompositeRowFn fn, int rows, int columns) {
    for (int r = 0; r < rows; ++r) {
        const CompositeRow row{rowOf(f.A, f.A.start, r),     rowOf(f.B, f.B.start, r),
                               rowOf(f.dst, f.dst.start, r), rowOf(f.alphaA, base[0], r),
                               rowOf(f.alphaB, base[1], r),  rowOf(f.alphaDst, base[2], r)};
        fn(shape, row, static_cast<size_t>(columns));
    }
}

// ---------------------------------------------------------------------------
// Kernels
// ---------------------------------------------------------------------------

// Over `rows` by `columns`, narrowed to the rows inside every buffer, by
// the pixel rows where they serve (integer arithmetic), else the frame.
template <class D, class Op, class Arith>
void run(const Frame &f, int rows, int columns, int depth, int op) {
    if (rows <= 0 || columns <= 0 || f.nChannels <= 0) return;
    // The channels the loop touches, without the skipped one at either end.
    const int firstChannel = f.skip == 0 ? 1 : 0;
    const int lastChannel = f.skip == f.nChannels - 1 ? f.nChannels - 2 : f.nChannels - 1;
    if (firstChannel > lastChannel) return;
    const bool writesAlpha = f.alphaDst.data != nullptr && firstChannel == 0;

    auto inside = [&](const Stream &s, int size, int first, int last) {
        rows = minOf(rows, ownRowsInside(s, size, first, last, columns, rows, D::kBytes));
    };
    inside(f.A, f.sizeA, firstChannel, lastChannel);
    if (Op::kReadsB) inside(f.B, f.sizeB, firstChannel, lastChannel);
    inside(f.dst, f.sizeDst, firstChannel, lastChannel);
    if (f.alphaA.data != nullptr) inside(f.alphaA, f.sizeAlphaA, 0, 0);
    if (f.alphaB.data != nullptr) inside(f.alphaB, f.sizeAlphaB, 0, 0);
    if (writesAlpha) inside(f.alphaDst, f.sizeAlphaDst, 0, 0);
    if (rows <= 0) return;

    if (!Arith::kDivides) {
        const rmg::CompositeRowFn fn = rmg::compositeForms().row[depth][op][f.premul ? 1 : 0];
        CompositeShape shape;
        int64_t base[3] = {0, 0, 0};
        if (planPixelRows<D>(f, Op::kReadsB, writesAlpha, rows, columns, fn, &shape, base)) {
            runPixelRows(f, shape, base, fn, rows, columns);
            return;
        }
    }
    runFrame<D, Op, Arith>(f, writesAlpha, rows, columns);
}

// The colour streams and the channel loop: n channels from channel 1, or
// with a destination COI one channel at each image's own coi.
template <class D>
Frame colourFrame(const RmgImage *srcImageA, const RmgImage *srcImageB, const RmgImage *dstImage,
                  int premulAlpha, int divideMode) {
    Frame f;
    f.coi = dstImage->roi != nullptr && dstImage->roi->coi != 0;
    auto channelOf = [&f](const RmgImage *image) {
        return f.coi ? (image->roi != nullptr ? image->roi->coi : 0) : 1;
    };
    f.A = streamOf<D>(srcImageA, channelOf(srcImageA));
    f.B = streamOf<D>(srcImageB, channelOf(srcImageB));
    f.dst = streamOf<D>(dstImage, channelOf(dstImage));
    f.sizeA = srcImageA->imageSize;
    f.sizeB = srcImageB->imageSize;
    f.sizeDst = dstImage->imageSize;
    f.nChannels = f.coi ? 1 : dstImage->nChannels;
    f.skip = dstImage->alphaChannel - 1;
    f.premul = premulAlpha != 0;
    f.divide = divideMode != 0;
    return f;
}

// The alpha stream of `image` at its 1-based `channel`.
template <class D>
void alphaStream(const RmgImage *image, int channel, Stream *stream, int *lane, int *size) {
    *stream = streamOf<D>(image, channel);
    *lane = channel - 1;
    *size = image->imageSize;
}

constexpr int opIndex(const rmg::CompositeOver *) { return 0; }
constexpr int opIndex(const rmg::CompositeIn *) { return 1; }
constexpr int opIndex(const rmg::CompositeOut *) { return 2; }
constexpr int opIndex(const rmg::CompositeAtop *) { return 3; }
constexpr int opIndex(const rmg::CompositeXor *) { return 4; }
constexpr int opIndex(const rmg::CompositePlus *) { return 5; }

template <class D>
constexpr int depthIndex() {
    return std::is_same<D, Depth8u>::value ? kOwnDepth8u : kOwnDepth16u;
}

template <class D, class Op, class Arith>
void compositeConst(const RmgImage *srcImageA, const RmgImage *srcImageB, RmgImage *dstImage,
                    int alphaA, int alphaB, int premulAlpha, int divideMode, int rows,
                    int columns) {
    Frame f = colourFrame<D>(srcImageA, srcImageB, dstImage, premulAlpha, divideMode);
    if (alphaA < 0) alphaStream<D>(srcImageA, srcImageA->alphaChannel, &f.alphaA, &f.laneA, &f.sizeAlphaA);
    if (alphaB < 0) alphaStream<D>(srcImageB, srcImageB->alphaChannel, &f.alphaB, &f.laneB, &f.sizeAlphaB);
    f.constA = alphaA;
    f.constB = alphaB;
    run<D, Op, Arith>(f, rows, columns, depthIndex<D>(), opIndex(static_cast<Op *>(nullptr)));
}

template <class D, class Op, class Arith>
void compositeImage(const RmgImage *srcImageA, const RmgImage *srcImageB, RmgImage *dstImage,
                    const RmgImage *alphaImageA, const RmgImage *alphaImageB,
                    RmgImage *alphaImageDst, int premulAlpha, int divideMode, int rows,
                    int columns) {
    Frame f = colourFrame<D>(srcImageA, srcImageB, dstImage, premulAlpha, divideMode);
    alphaStream<D>(alphaImageA, alphaChannelOf(alphaImageA), &f.alphaA, &f.laneA, &f.sizeAlphaA);
    if (alphaImageB != nullptr)
        alphaStream<D>(alphaImageB, alphaChannelOf(alphaImageB), &f.alphaB, &f.laneB, &f.sizeAlphaB);
    else
        f.complementB = true;
    if (alphaImageDst != nullptr)
        alphaStream<D>(alphaImageDst, alphaImageDst->alphaChannel, &f.alphaDst, &f.laneDst,
                       &f.sizeAlphaDst);
    run<D, Op, Arith>(f, rows, columns, depthIndex<D>(), opIndex(static_cast<Op *>(nullptr)));
}

}  // namespace

#define OWN_COMPOSITE_ROW(form, D, Op) \
    { form<D, rmg::Op, Integer>, form<D, rmg::Op, Float> }
#define OWN_COMPOSITE_DEPTH(form, D)                                                        \
    {                                                                                       \
        OWN_COMPOSITE_ROW(form, D, CompositeOver), OWN_COMPOSITE_ROW(form, D, CompositeIn), \
            OWN_COMPOSITE_ROW(form, D, CompositeOut),                                       \
            OWN_COMPOSITE_ROW(form, D, CompositeAtop),                                      \
            OWN_COMPOSITE_ROW(form, D, CompositeXor), OWN_COMPOSITE_ROW(form, D, CompositePlus) \
    }

const OwnCompositeConstFn ownCompositeConst[2][6][2] = {
    OWN_COMPOSITE_DEPTH(compositeConst, Depth8u),
    OWN_COMPOSITE_DEPTH(compositeConst, Depth16u),
};

const OwnCompositeImageFn ownCompositeImage[2][6][2] = {
    OWN_COMPOSITE_DEPTH(compositeImage, Depth8u),
    OWN_COMPOSITE_DEPTH(compositeImage, Depth16u),
};
