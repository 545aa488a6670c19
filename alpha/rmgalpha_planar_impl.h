// The planar rows as templates, for the scalar form and the vector forms
// alike. Each operator's formula is written once, over an arithmetic `L`
// whose values are one sample (the scalar lanes) or a vector of samples (the
// vector lanes of an instruction set); a row kernel is a loop of the
// formula, and the vector forms run the scalar lanes on the samples before
// the destination's first aligned vector and after its last whole one.
//
// An arithmetic L provides:
//   T, kSamples, kSampleBytes, M     value type, samples per value, bytes per sample
//   load(p), store(p, v)             unaligned, little-endian samples
//   splat(x)                         x in every sample
//   mul(x, y)                        floor(x * y / M), the scaled product
//   inv(x)                           ~x, M - x, an exclusive or with M
//   adds(x, y)                       x (+) y, min(M, x + y)
//
// Everything lives in an anonymous namespace: this header is compiled into
// each instruction set's file, and nothing of it may be shared between them
// (see core/rmgcpu.h).
#ifndef RMG_ALPHA_RMGALPHA_PLANAR_IMPL_H
#define RMG_ALPHA_RMGALPHA_PLANAR_IMPL_H

#include <cstddef>
#include <cstdint>

#include "alpha/rmgalpha_planar.h"
#include "core/rmgcpu.h"

namespace rmg {
namespace {

// ---------------------------------------------------------------------------
// Scalar lanes: one sample. The products are those of ownMul255 and
// ownMul65535, written here again so that no shared inline function is
// compiled for a wider instruction set.
// ---------------------------------------------------------------------------

template <int kBits>
struct ScalarLanes {
    using T = uint32_t;
    static constexpr size_t kSamples = 1;
    static constexpr size_t kSampleBytes = kBits / 8;
    static constexpr uint32_t M = (1u << kBits) - 1u;
    static T load(const unsigned char *p) {
        return kSampleBytes == 1 ? p[0] : p[0] | static_cast<uint32_t>(p[1]) << 8;
    }
    static void store(unsigned char *p, T v) {
        p[0] = static_cast<unsigned char>(v);
        if (kSampleBytes == 2) p[1] = static_cast<unsigned char>(v >> 8);
    }
    static T splat(uint32_t x) { return x & M; }
    static T mul(T x, T y) {
        const uint32_t p = x * y;
        return ((p >> kBits) + p + 1u) >> kBits;
    }
    static T inv(T x) { return x ^ M; }
    static T adds(T x, T y) { return x + y > M ? M : x + y; }
};
using Scalar8 = ScalarLanes<8>;
using Scalar16 = ScalarLanes<16>;

// ---------------------------------------------------------------------------
// Operators: the colour of the row kernels from A2, B2, a and b (b being
// ~a when there is no alpha row of B, and A2, B2 the pre-multiplied
// samples), and the destination alpha from a and b. Which inputs they use
// decides which rows a loop reads.
// ---------------------------------------------------------------------------

struct PlanarOver {
    static constexpr bool kColourB = true;   // reads rowB
    static constexpr bool kColourb = false;  // uses b beyond B2
    static constexpr bool kAlphaa = true;    // the alpha row uses a
    template <class L, class T> static T colour(T A2, T B2, T a, T) {
        return L::adds(A2, L::mul(B2, L::inv(a)));
    }
    template <class L, class T> static T alpha(T a, T b) { return L::adds(a, L::mul(L::inv(a), b)); }
};

struct PlanarIn {
    static constexpr bool kColourB = false;
    static constexpr bool kColourb = true;
    static constexpr bool kAlphaa = true;
    template <class L, class T> static T colour(T A2, T, T, T b) { return L::mul(A2, b); }
    template <class L, class T> static T alpha(T a, T b) { return L::mul(a, b); }
};

struct PlanarOut {
    static constexpr bool kColourB = false;
    static constexpr bool kColourb = true;
    static constexpr bool kAlphaa = true;
    template <class L, class T> static T colour(T A2, T, T, T b) { return L::mul(A2, L::inv(b)); }
    template <class L, class T> static T alpha(T a, T b) { return L::mul(a, L::inv(b)); }
};

struct PlanarAtop {
    static constexpr bool kColourB = true;
    static constexpr bool kColourb = true;
    static constexpr bool kAlphaa = false;
    template <class L, class T> static T colour(T A2, T B2, T a, T b) {
        return L::adds(L::mul(A2, b), L::mul(B2, L::inv(a)));
    }
    template <class L, class T> static T alpha(T, T b) { return b; }
};

struct PlanarXor {
    static constexpr bool kColourB = true;
    static constexpr bool kColourb = true;
    static constexpr bool kAlphaa = true;
    template <class L, class T> static T colour(T A2, T B2, T a, T b) {
        return L::adds(L::mul(A2, L::inv(b)), L::mul(B2, L::inv(a)));
    }
    template <class L, class T> static T alpha(T a, T b) {
        return L::adds(L::mul(L::inv(a), b), L::mul(L::inv(b), a));
    }
};

struct PlanarPlus {
    static constexpr bool kColourB = true;
    static constexpr bool kColourb = false;
    static constexpr bool kAlphaa = true;
    template <class L, class T> static T colour(T A2, T B2, T, T) { return L::adds(A2, B2); }
    template <class L, class T> static T alpha(T a, T b) { return L::adds(a, b); }
};

// ---------------------------------------------------------------------------
// Kernels: the value of the samples at byte offset `at` of each row.
// ---------------------------------------------------------------------------

struct MulKernel {
    template <class L> static typename L::T at(const PlanarRow &r, size_t at) {
        return L::mul(L::load(r.A + at), L::load(r.B + at));
    }
};

struct ScaleKernel {
    template <class L> static typename L::T at(const PlanarRow &r, size_t at) {
        return L::mul(L::load(r.A + at), L::splat(r.value));
    }
};

// A colour row of one operator with premulAlpha `Premul` and the alpha row
// of B given or not. Each of the four has its own loop; the rows its
// formula doesn't use are not read.
template <class Op, bool Premul, bool HasB>
struct ColourKernel {
    static constexpr bool kUsesb = Op::kColourb || (!Premul && Op::kColourB);
    template <class L> static typename L::T at(const PlanarRow &r, size_t at) {
        using T = typename L::T;
        const T a = L::load(r.a + at);
        T b = a;
        if constexpr (kUsesb) b = HasB ? L::load(r.b + at) : L::inv(a);
        T A2 = L::load(r.A + at);
        if constexpr (!Premul) A2 = L::mul(A2, a);
        T B2 = A2;
        if constexpr (Op::kColourB) {
            B2 = L::load(r.B + at);
            if constexpr (!Premul) B2 = L::mul(B2, b);
        }
        return Op::template colour<L>(A2, B2, a, b);
    }
};

// A destination alpha row; without the alpha row of B, b is ~a. (`plus`
// then gives a (+) ~a, M in every sample: that row is FillKernel, which
// reads nothing.) `atop` with the alpha row of B copies it and reads no a.
template <class Op, bool HasB>
struct AlphaRowKernel {
    template <class L> static typename L::T at(const PlanarRow &r, size_t at) {
        using T = typename L::T;
        if constexpr (!HasB) {
            const T a = L::load(r.a + at);
            return Op::template alpha<L>(a, L::inv(a));
        } else if constexpr (Op::kAlphaa) {
            return Op::template alpha<L>(L::load(r.a + at), L::load(r.b + at));
        } else {
            const T b = L::load(r.b + at);
            return Op::template alpha<L>(b, b);  // the formula doesn't use its a
        }
    }
};

struct FillKernel {
    template <class L> static typename L::T at(const PlanarRow &, size_t) { return L::splat(L::M); }
};

// ---------------------------------------------------------------------------
// Loops
// ---------------------------------------------------------------------------

// Samples [first, last) of a row, L::kSamples at a time; `last - first` is
// a multiple of L::kSamples.
template <class L, class K>
void runSamples(const PlanarRow &r, size_t first, size_t last) {
    for (size_t i = first; i < last; i += L::kSamples) {
        const size_t at = i * L::kSampleBytes;
        L::store(r.dst + at, K::template at<L>(r, at));
    }
}

template <class S, class K>
void scalarRow(const PlanarRow &r, size_t count) {
    runSamples<S, K>(r, 0, count);
}

// The vector form: the scalar lanes up to the destination's first vector
// boundary (a 16-bit destination at an odd address stays unaligned, which
// changes no result), whole vectors, then the scalar lanes on the rest.
template <class S, class V, class K>
void vectorRow(const PlanarRow &r, size_t count) {
    const auto misaligned = static_cast<size_t>(reinterpret_cast<uintptr_t>(r.dst) % V::kBytes);
    const size_t toBoundary = (V::kBytes - misaligned) % V::kBytes;
    size_t head = (toBoundary + S::kSampleBytes - 1) / S::kSampleBytes;
    if (head > count) head = count;
    runSamples<S, K>(r, 0, head);
    const size_t body = head + (count - head) / V::kSamples * V::kSamples;
    runSamples<V, K>(r, head, body);
    runSamples<S, K>(r, body, count);
}

// ---------------------------------------------------------------------------
// The records of a form: `Row<S, K>` is the loop of kernel K at the depth
// of the scalar lanes S.
// ---------------------------------------------------------------------------

template <template <class, class> class Row, class S, class Op>
constexpr void operatorForms(PlanarRowFn (&colour)[2][2], PlanarRowFn (&alpha)[2]) {
    colour[0][0] = Row<S, ColourKernel<Op, false, false>>::fn;
    colour[0][1] = Row<S, ColourKernel<Op, false, true>>::fn;
    colour[1][0] = Row<S, ColourKernel<Op, true, false>>::fn;
    colour[1][1] = Row<S, ColourKernel<Op, true, true>>::fn;
    alpha[0] = Row<S, AlphaRowKernel<Op, false>>::fn;
    alpha[1] = Row<S, AlphaRowKernel<Op, true>>::fn;
}

template <template <class, class> class Row, class S>
constexpr void depthForms(PlanarForms &f, int d) {
    f.mul[d] = Row<S, MulKernel>::fn;
    f.scale[d] = Row<S, ScaleKernel>::fn;
    operatorForms<Row, S, PlanarOver>(f.colour[d][0], f.alpha[d][0]);
    operatorForms<Row, S, PlanarIn>(f.colour[d][1], f.alpha[d][1]);
    operatorForms<Row, S, PlanarOut>(f.colour[d][2], f.alpha[d][2]);
    operatorForms<Row, S, PlanarAtop>(f.colour[d][3], f.alpha[d][3]);
    operatorForms<Row, S, PlanarXor>(f.colour[d][4], f.alpha[d][4]);
    operatorForms<Row, S, PlanarPlus>(f.colour[d][5], f.alpha[d][5]);
    f.alpha[d][5][0] = Row<S, FillKernel>::fn;  // a (+) ~a is M: nothing to read
}

template <class S, class K>
struct ScalarRow {
    static constexpr PlanarRowFn fn = scalarRow<S, K>;
};

constexpr PlanarForms scalarPlanarForms() {
    PlanarForms f{};
    depthForms<ScalarRow, Scalar8>(f, 0);
    depthForms<ScalarRow, Scalar16>(f, 1);
    return f;
}

// ---------------------------------------------------------------------------
// Vector lanes, over the primitives O of an instruction set (a type derived
// from one of core/rmgvec.h that adds add16, mullo16, mulhiU16, srli16by8,
// addsU8, addsU16 and subsU16), at the depth of the scalar lanes S.
// ---------------------------------------------------------------------------

#if RMG_CPU_X86
template <class O, class S>
struct VecLanes {
    using T = typename O::Vec;
    static constexpr size_t kSampleBytes = S::kSampleBytes;
    static constexpr size_t kBytes = O::kBytes;
    static constexpr size_t kSamples = kBytes / kSampleBytes;
    static constexpr uint32_t M = S::M;
    static constexpr bool kEightBit = kSampleBytes == 1;
    static T load(const unsigned char *p) { return O::loadu(p); }
    static void store(unsigned char *p, T v) { O::storeu(p, v); }
    static T splat(uint32_t x) { return kEightBit ? O::splat8(x) : O::splat16(x); }
    static T inv(T x) { return O::xor_(x, O::splat16(0xFFFF)); }
    static T adds(T x, T y) { return kEightBit ? O::addsU8(x, y) : O::addsU16(x, y); }
    static T mul(T x, T y) {
        if constexpr (kEightBit) {
            // Even and odd bytes in 16-bit lanes, p = x * y fits; t = 1 + p +
            // (p >> 8) is at most 65280. The even result is t >> 8, the odd
            // one t with its low byte cleared.
            const T evens = O::splat16(0x00FF);
            const T one = O::splat16(1);
            const T pe = O::mullo16(O::and_(x, evens), O::and_(y, evens));
            const T po = O::mullo16(O::srli16by8(x), O::srli16by8(y));
            const T te = O::add16(O::add16(pe, one), O::srli16by8(pe));
            const T to = O::add16(O::add16(po, one), O::srli16by8(po));
            return O::or_(O::srli16by8(te), O::andNot(evens, to));
        } else {
            // p = hi * 65536 + lo; ((p >> 16) + p + 1) >> 16 is hi, plus 1
            // exactly when lo + hi reaches 65535: the saturated sum less
            // 0xFFFE, saturated, is that 1.
            const T hi = O::mulhiU16(x, y);
            const T lo = O::mullo16(x, y);
            return O::add16(hi, O::subsU16(O::addsU16(lo, hi), O::splat16(0xFFFE)));
        }
    }
};

template <class O>
struct VectorRows {
    template <class S, class K>
    struct Row {
        static constexpr PlanarRowFn fn = vectorRow<S, VecLanes<O, S>, K>;
    };
};

template <class O>
constexpr PlanarForms vectorPlanarForms() {
    PlanarForms f{};
    depthForms<VectorRows<O>::template Row, Scalar8>(f, 0);
    depthForms<VectorRows<O>::template Row, Scalar16>(f, 1);
    return f;
}
#endif  // RMG_CPU_X86

}  // namespace
}  // namespace rmg

#endif
