// The operators of the composition kernels and the pixel rows of their
// vector forms, as templates for the scalar kernels and every instruction
// set's file alike.
//
// The integer formulas are written once over lanes L (one sample, or a
// vector of samples), with the lane arithmetic of the planar rows
// (alpha/rmgalpha_planar_impl.h: mul, adds, inv, load, store) and `sub`,
// x - y for y <= x. Each term is truncated by mul as the kernels' table
// gives it, and a complement is x - mul(x, a). Every difference below is of
// a value and a product of it, so it is never negative, and every result
// that can pass M is a sum: a saturating add gives min(M, sum), the
// kernels' limit, in the sample's own width.
//
// Everything lives in an anonymous namespace (see core/rmgcpu.h).
#ifndef RMG_ALPHA_RMGALPHA_KERNELS_IMPL_H
#define RMG_ALPHA_RMGALPHA_KERNELS_IMPL_H

#include <cstddef>
#include <cstdint>

#include "alpha/rmgalpha_kernels.h"
#include "alpha/rmgalpha_planar_impl.h"
#include "core/rmgcpu.h"

namespace rmg {
namespace {

// ---------------------------------------------------------------------------
// Operators: colour and destination alpha of the integer kernels over lanes
// L, from A2, B2 (pre-multiplied colour) and the alphas a, b; num and den of
// the float kernels.
// ---------------------------------------------------------------------------

struct CompositeOver {
    static constexpr bool kReadsB = true;
    template <class L, class T> static T colour(T A2, T B2, T a, T) {
        return L::adds(A2, L::sub(B2, L::mul(B2, a)));
    }
    template <class L, class T> static T alpha(T a, T b) { return L::adds(a, L::sub(b, L::mul(a, b))); }
    static double num(double cA, double cB, double a, double) { return cB * (1.0 - a) + cA; }
    static double den(double a, double b) { return (1.0 - a) * b + a; }
};

struct CompositeIn {
    static constexpr bool kReadsB = false;
    template <class L, class T> static T colour(T A2, T, T, T b) { return L::mul(A2, b); }
    template <class L, class T> static T alpha(T a, T b) { return L::mul(a, b); }
    static double num(double cA, double, double, double b) { return cA * b; }
    static double den(double a, double b) { return a * b; }
};

struct CompositeOut {
    static constexpr bool kReadsB = false;
    template <class L, class T> static T colour(T A2, T, T, T b) { return L::sub(A2, L::mul(A2, b)); }
    template <class L, class T> static T alpha(T a, T b) { return L::sub(a, L::mul(a, b)); }
    static double num(double cA, double, double, double b) { return cA * (1.0 - b); }
    static double den(double a, double b) { return (1.0 - b) * a; }
};

struct CompositeAtop {
    static constexpr bool kReadsB = true;
    template <class L, class T> static T colour(T A2, T B2, T a, T b) {
        return L::adds(L::mul(A2, b), L::sub(B2, L::mul(B2, a)));
    }
    template <class L, class T> static T alpha(T, T b) { return b; }
    static double num(double cA, double cB, double a, double b) { return cA * b + cB * (1.0 - a); }
    static double den(double, double b) { return b; }
};

struct CompositeXor {
    static constexpr bool kReadsB = true;
    template <class L, class T> static T colour(T A2, T B2, T a, T b) {
        return L::adds(L::sub(A2, L::mul(A2, b)), L::sub(B2, L::mul(B2, a)));
    }
    // a + b - 2 mul(a, b) as (a - mul(a, b)) + (b - mul(a, b)).
    template <class L, class T> static T alpha(T a, T b) {
        const T ab = L::mul(a, b);
        return L::adds(L::sub(a, ab), L::sub(b, ab));
    }
    static double num(double cA, double cB, double a, double b) {
        return cA * (1.0 - b) + cB * (1.0 - a);
    }
    static double den(double a, double b) { return (1.0 - b) * a + (1.0 - a) * b; }
};

struct CompositePlus {
    static constexpr bool kReadsB = true;
    template <class L, class T> static T colour(T A2, T B2, T, T) { return L::adds(A2, B2); }
    template <class L, class T> static T alpha(T a, T b) { return L::adds(a, b); }
    static double num(double cA, double cB, double, double) { return cA + cB; }
    static double den(double a, double b) { return a + b; }
};

// The colour of one sample (or vector of samples) from A, B and the alphas.
template <class L, class Op, bool Premul, class T>
T compositeColour(T A, T B, T a, T b) {
    const T A2 = Premul ? A : L::mul(A, a);
    const T B2 = Premul || !Op::kReadsB ? B : L::mul(B, b);
    return Op::template colour<L>(A2, B2, a, b);
}

// One sample, with the subtraction the operators need.
template <class S>
struct CompositeScalar : S {
    using T = typename S::T;
    static T sub(T x, T y) { return x - y; }
};
using CompositeScalar8 = CompositeScalar<Scalar8>;
using CompositeScalar16 = CompositeScalar<Scalar16>;

// ---------------------------------------------------------------------------
// Pixel rows
// ---------------------------------------------------------------------------

// The alpha of pixel x, one sample (not used for kAlphaComplement).
template <class S>
typename S::T alphaOfPixel(const CompositeAlpha &alpha, const unsigned char *p, size_t x,
                           size_t pixelBytes) {
    if (alpha.kind == kAlphaConst) return alpha.value;
    if (alpha.kind == kAlphaLane)
        return S::load(p + x * pixelBytes + static_cast<size_t>(alpha.lane) * S::kSampleBytes);
    return S::load(p + static_cast<ptrdiff_t>(x) * alpha.step);
}

// Pixel x of a row, one sample at a time: its alphas, the destination
// alpha, then the colour of every lane but the skipped one.
template <class S, class Op, bool Premul>
void compositePixel(const CompositeShape &shape, const CompositeRow &r, size_t x) {
    using T = typename S::T;
    constexpr size_t s = S::kSampleBytes;
    const size_t pixelBytes = static_cast<size_t>(shape.channels) * s;
    const size_t at = x * pixelBytes;
    const T a = alphaOfPixel<S>(shape.a, r.a, x, pixelBytes);
    const T b = shape.b.kind == kAlphaComplement ? S::inv(a) : alphaOfPixel<S>(shape.b, r.b, x, pixelBytes);
    if (shape.dstAlpha != kDstAlphaNone) {
        const T d = Op::template alpha<S>(a, b);
        if (shape.dstAlpha == kDstAlphaLane)
            S::store(r.dst + at + static_cast<size_t>(shape.skip) * s, d);
        else
            S::store(r.alpha + static_cast<ptrdiff_t>(x) * shape.dstAlphaStep, d);
    }
    for (int c = 0; c < shape.channels; ++c) {
        if (c == shape.skip) continue;
        const size_t i = at + static_cast<size_t>(c) * s;
        const T B = Op::kReadsB ? S::load(r.B + i) : T{0};
        S::store(r.dst + i, compositeColour<S, Op, Premul>(S::load(r.A + i), B, a, b));
    }
}

#if RMG_CPU_X86
// Vector lanes over the primitives O of an instruction set: those of the
// planar rows (see alpha/rmgalpha_planar_impl.h), and sub8, sub16, a shift
// count (Count, count(bits)), and sll16/32/64, srl16/32/64 (each lane
// shifted by a count).
template <class O, class S>
struct CompositeVec : VecLanes<O, S> {
    using T = typename O::Vec;
    static T sub(T x, T y) { return S::kSampleBytes == 1 ? O::sub8(x, y) : O::sub16(x, y); }
};

// The lanes of pixels of P bytes shifted left (Left) or right by `count`
// bits, each pixel on its own.
template <class O, size_t P, bool Left>
typename O::Vec shiftPixels(typename O::Vec v, typename O::Count count) {
    if constexpr (P == 2) return Left ? O::sll16(v, count) : O::srl16(v, count);
    if constexpr (P == 4) return Left ? O::sll32(v, count) : O::srl32(v, count);
    if constexpr (P == 8) return Left ? O::sll64(v, count) : O::srl64(v, count);
    return v;
}

// The sample at one lane of each pixel (of P bytes, samples of s bytes),
// copied into all the pixel's lanes: moved to the pixel's top by `up`
// bits and down to its bottom, then doubled up to the pixel's width.
template <class O, size_t P, size_t s>
typename O::Vec spreadLane(typename O::Vec v, typename O::Count up) {
    if constexpr (P == s) {
        return v;
    } else {
        typename O::Vec t = shiftPixels<O, P, false>(shiftPixels<O, P, true>(v, up),
                                                     O::count(static_cast<int>(8 * (P - s))));
        for (size_t w = s; w < P; w *= 2)
            t = O::or_(t, shiftPixels<O, P, true>(t, O::count(static_cast<int>(8 * w))));
        return t;
    }
}

// An alpha of a vector of whole pixels, starting at pixel `first`, spread
// over each pixel's lanes.
template <class O, class S, size_t P>
typename O::Vec alphaVector(const CompositeAlpha &alpha, const unsigned char *p, size_t first,
                            typename O::Vec constant, typename O::Count up) {
    using L = CompositeVec<O, S>;
    constexpr size_t s = S::kSampleBytes;
    if (alpha.kind == kAlphaConst) return constant;
    if (alpha.kind == kAlphaLane) return spreadLane<O, P, s>(L::load(p + first * P), up);
    alignas(64) unsigned char spread[O::kBytes];
    for (size_t k = 0; k < O::kBytes / P; ++k) {
        const auto v = S::load(p + static_cast<ptrdiff_t>(first + k) * alpha.step);
        for (size_t c = 0; c < P; c += s) S::store(spread + k * P + c, v);
    }
    return O::load(spread);
}

template <class O>
typename O::Count laneShift(const CompositeAlpha &alpha, size_t P, size_t s) {
    const size_t lane = alpha.kind == kAlphaLane ? static_cast<size_t>(alpha.lane) : 0;
    return O::count(static_cast<int>(8 * (P - s - lane * s)));
}

// A row of pixels of P bytes: whole vectors of pixels, then the pixels
// after the last whole vector one by one. Every vector reads its pixels'
// samples before it writes them; the kernels take this path only where no
// write reaches a sample that another pixel or lane reads.
template <class O, class S, class Op, bool Premul, size_t P>
void pixelRowOf(const CompositeShape &shape, const CompositeRow &r, size_t pixels) {
    using L = CompositeVec<O, S>;
    using T = typename O::Vec;
    constexpr size_t kB = O::kBytes;
    constexpr size_t s = S::kSampleBytes;
    if constexpr (P < s) {
        return;  // no pixel is smaller than its sample
    }
    const size_t whole = pixels * P / kB * kB;
    // The lane `skip` of every pixel.
    alignas(64) unsigned char skipBytes[kB];
    for (size_t t = 0; t < kB; ++t)
        skipBytes[t] = static_cast<int>(t % P / s) == shape.skip ? 0xFF : 0;
    const T skipLane = O::load(skipBytes);
    const T constA = L::splat(shape.a.value);
    const T constB = L::splat(shape.b.value);
    const typename O::Count upA = laneShift<O>(shape.a, P, s);
    const typename O::Count upB = laneShift<O>(shape.b, P, s);
    for (size_t i = 0; i < whole; i += kB) {
        const T a = alphaVector<O, S, P>(shape.a, r.a, i / P, constA, upA);
        const T b = shape.b.kind == kAlphaComplement ? L::inv(a)
                                                     : alphaVector<O, S, P>(shape.b, r.b, i / P, constB, upB);
        const T B = Op::kReadsB ? L::load(r.B + i) : a;
        T out = compositeColour<L, Op, Premul>(L::load(r.A + i), B, a, b);
        if (shape.dstAlpha == kDstAlphaLane) {
            out = O::blend(out, Op::template alpha<L>(a, b), skipLane);
        } else {
            if (shape.skip >= 0) out = O::blend(out, L::load(r.dst + i), skipLane);
            if (shape.dstAlpha == kDstAlphaScatter) {
                alignas(64) unsigned char alphas[kB];
                O::store(alphas, Op::template alpha<L>(a, b));
                for (size_t k = 0; k < kB / P; ++k)
                    S::store(r.alpha + static_cast<ptrdiff_t>(i / P + k) * shape.dstAlphaStep,
                             S::load(alphas + k * P));
            }
        }
        L::store(r.dst + i, out);
    }
    for (size_t x = whole / P; x < pixels; ++x) compositePixel<S, Op, Premul>(shape, r, x);
}

template <class O, class S, class Op, bool Premul>
void pixelRow(const CompositeShape &shape, const CompositeRow &r, size_t pixels) {
    switch (static_cast<size_t>(shape.channels) * S::kSampleBytes) {
        case 1: return pixelRowOf<O, S, Op, Premul, 1>(shape, r, pixels);
        case 2: return pixelRowOf<O, S, Op, Premul, 2>(shape, r, pixels);
        case 4: return pixelRowOf<O, S, Op, Premul, 4>(shape, r, pixels);
        case 8: return pixelRowOf<O, S, Op, Premul, 8>(shape, r, pixels);
        default:
            for (size_t x = 0; x < pixels; ++x) compositePixel<S, Op, Premul>(shape, r, x);
    }
}

template <class O, class S, class Op>
constexpr void compositeOperatorForms(CompositeRowFn (&row)[2]) {
    row[0] = pixelRow<O, S, Op, false>;
    row[1] = pixelRow<O, S, Op, true>;
}

template <class O, class S>
constexpr void compositeDepthForms(CompositeRowFn (&row)[6][2]) {
    compositeOperatorForms<O, S, CompositeOver>(row[0]);
    compositeOperatorForms<O, S, CompositeIn>(row[1]);
    compositeOperatorForms<O, S, CompositeOut>(row[2]);
    compositeOperatorForms<O, S, CompositeAtop>(row[3]);
    compositeOperatorForms<O, S, CompositeXor>(row[4]);
    compositeOperatorForms<O, S, CompositePlus>(row[5]);
}

template <class O>
constexpr CompositeForms vectorCompositeForms() {
    CompositeForms f{};
    compositeDepthForms<O, CompositeScalar8>(f.row[0]);
    compositeDepthForms<O, CompositeScalar16>(f.row[1]);
    return f;
}
#endif  // RMG_CPU_X86

}  // namespace
}  // namespace rmg

#endif
