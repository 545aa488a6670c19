// The element arithmetic of scalar add and subtract, shared by the scalar
// form and the files compiled for one instruction set. Everything lives in
// an anonymous namespace, so that each of those files keeps its own copy,
// compiled with its own options (see core/rmgcpu.h).
#ifndef RMG_OPS_OWNADDSUB_IMPL_H
#define RMG_OPS_OWNADDSUB_IMPL_H

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "ops/ownaddsub.h"

namespace rmg {
namespace {

constexpr int32_t kInt32Max = 2147483647;
constexpr int32_t kInt32Min = -2147483647 - 1;

inline int64_t clamp64(int64_t x, int64_t low, int64_t high) {
    return x < low ? low : x > high ? high : x;
}
// The loops' limits in 32-bit arithmetic, which the compiler turns into
// vector code for the plain loops.
inline int32_t clamp32(int32_t x, int32_t low, int32_t high) {
    x = x < low ? low : x;
    return x > high ? high : x;
}

// 32-bit sums and differences that wrap like the machine's words.
inline int32_t wrapAdd(int32_t a, int32_t b) {
    return static_cast<int32_t>(static_cast<uint32_t>(a) + static_cast<uint32_t>(b));
}
inline int32_t wrapSub(int32_t a, int32_t b) {
    return static_cast<int32_t>(static_cast<uint32_t>(a) - static_cast<uint32_t>(b));
}

// The 8u arithmetic of the vector kernels: a 16-bit word sum, negative
// words giving 0 and words above 255 giving 255.
inline int16_t word16(int64_t v) { return static_cast<int16_t>(static_cast<uint16_t>(v)); }
inline uint8_t satWord8u(int32_t word) {
    return static_cast<uint8_t>(clamp32(static_cast<int16_t>(static_cast<uint16_t>(word)), 0, 255));
}

// The exact 16u arithmetic in 32 bits: a constant limited to
// -131072..131072 gives every element the same result as the constant
// itself (an element is at most 65535 away from either end).
inline int32_t within16u(int64_t v) { return static_cast<int32_t>(clamp64(v, -131072, 131072)); }
inline uint16_t sat16u(int32_t x) { return static_cast<uint16_t>(clamp32(x, 0, 65535)); }

// The 32s kernels. Addition compares with the limit before it adds.
inline int32_t add32s(int32_t e, int32_t v) {
    if (v >= 0) {
        const int32_t limit = kInt32Max - v;
        return e > limit ? kInt32Max : e + v;
    }
    const int32_t limit = kInt32Min - v;
    return e < limit ? kInt32Min : e + v;
}
// Subtraction goes through double precision, where the difference of two
// 32-bit integers is exact.
inline int32_t fromDouble32s(double d) {
    if (d > 2147483647.0) return kInt32Max;
    if (d < -2147483648.0) return kInt32Min;
    return static_cast<int32_t>(d);
}

template <typename T>
inline T loadElem(const unsigned char *p) {
    T e;
    std::memcpy(&e, p, sizeof e);
    return e;
}
template <typename T>
inline void storeElem(unsigned char *p, T e) {
    std::memcpy(p, &e, sizeof e);
}

// One element of a family at src to dst.
inline void elemOne(int family, const unsigned char *src, unsigned char *dst, int64_t v) {
    switch (family) {
    case kAdd8u:
        *dst = satWord8u(*src + word16(v));
        break;
    case kSub8u:
        *dst = satWord8u(*src - word16(v));
        break;
    case kRevSub8u:
        *dst = satWord8u(word16(v) - *src);
        break;
    case kAdd16u:
        storeElem<uint16_t>(dst, sat16u(loadElem<uint16_t>(src) + within16u(v)));
        break;
    case kSub16u:
        storeElem<uint16_t>(dst, sat16u(loadElem<uint16_t>(src) - within16u(v)));
        break;
    case kRevSub16u:
        storeElem<uint16_t>(dst, sat16u(within16u(v) - loadElem<uint16_t>(src)));
        break;
    case kZero16u:
        storeElem<uint16_t>(dst, 0);
        break;
    case kAdd8s:
        storeElem<int8_t>(dst, static_cast<int8_t>(clamp32(wrapAdd(loadElem<int8_t>(src), static_cast<int32_t>(v)), -128, 127)));
        break;
    case kSub8s:
        storeElem<int8_t>(dst, static_cast<int8_t>(clamp32(wrapSub(loadElem<int8_t>(src), static_cast<int32_t>(v)), -128, 127)));
        break;
    case kRevSub8s:
        storeElem<int8_t>(dst, static_cast<int8_t>(clamp32(wrapSub(static_cast<int32_t>(v), loadElem<int8_t>(src)), -128, 127)));
        break;
    case kAdd16s:
        storeElem<int16_t>(dst, static_cast<int16_t>(clamp32(wrapAdd(loadElem<int16_t>(src), static_cast<int32_t>(v)), -32768, 32767)));
        break;
    case kSub16s:
        storeElem<int16_t>(dst, static_cast<int16_t>(clamp32(wrapSub(loadElem<int16_t>(src), static_cast<int32_t>(v)), -32768, 32767)));
        break;
    case kRevSub16s:
        storeElem<int16_t>(dst, static_cast<int16_t>(clamp32(wrapSub(static_cast<int32_t>(v), loadElem<int16_t>(src)), -32768, 32767)));
        break;
    case kAdd32s:
        storeElem<int32_t>(dst, add32s(loadElem<int32_t>(src), static_cast<int32_t>(v)));
        break;
    case kSub32s:
        storeElem<int32_t>(dst, fromDouble32s(static_cast<double>(loadElem<int32_t>(src)) -
                                              static_cast<double>(static_cast<int32_t>(v))));
        break;
    case kRevSub32s:
        storeElem<int32_t>(dst, fromDouble32s(static_cast<double>(static_cast<int32_t>(v)) -
                                              static_cast<double>(loadElem<int32_t>(src))));
        break;
    case kOr1u:
        *dst = static_cast<uint8_t>(*src | static_cast<uint8_t>(v));
        break;
    case kAndNot1u:
        *dst = static_cast<uint8_t>(*src & ~static_cast<uint8_t>(v));
        break;
    case kNotAnd1u:
        *dst = static_cast<uint8_t>(~*src & static_cast<uint8_t>(v));
        break;
    case kAdd8uFull:
        *dst = static_cast<uint8_t>(clamp32(wrapAdd(*src, static_cast<int32_t>(v)), 0, 255));
        break;
    case kSub8uFull:
        *dst = static_cast<uint8_t>(clamp32(wrapSub(*src, static_cast<int32_t>(v)), 0, 255));
        break;
    case kRevSub8uFull:
        *dst = static_cast<uint8_t>(clamp32(wrapSub(static_cast<int32_t>(v), *src), 0, 255));
        break;
    default:
        break;
    }
}

constexpr size_t familySize(int family) {
    switch (family) {
    case kAdd16u:
    case kSub16u:
    case kRevSub16u:
    case kZero16u:
    case kAdd16s:
    case kSub16s:
    case kRevSub16s:
        return 2;
    case kAdd32s:
    case kSub32s:
    case kRevSub32s:
        return 4;
    default:
        return 1;
    }
}

// The families with arithmetic (all but the zero store), for the switches
// that turn a family number into a loop compiled for it.
#define RMG_ARITH_FAMILIES(X)                                                              \
    X(kAdd8u) X(kSub8u) X(kRevSub8u) X(kAdd16u) X(kSub16u) X(kRevSub16u) X(kAdd8s)       \
    X(kSub8s) X(kRevSub8s) X(kAdd16s) X(kSub16s) X(kRevSub16s) X(kAdd32s) X(kSub32s)      \
    X(kRevSub32s) X(kOr1u) X(kAndNot1u) X(kNotAnd1u) X(kAdd8uFull) X(kSub8uFull)          \
    X(kRevSub8uFull)

// The plain loop of a family: the scalar form, and the heads and tails of
// the vector forms; the element size is known when it is compiled.
template <int Family>
inline void elemLoopOf(const unsigned char *src, unsigned char *dst, size_t n, int64_t v) {
    constexpr size_t kSize = familySize(Family);
    for (size_t i = 0; i < n; ++i) elemOne(Family, src + i * kSize, dst + i * kSize, v);
}

// The same over elements srcStride and dstStride bytes apart: the
// one-channel loop of pixel-order images.
template <int Family>
inline void elemLoopOf(const unsigned char *src, unsigned char *dst, size_t n, int64_t v,
                       ptrdiff_t srcStride, ptrdiff_t dstStride) {
    for (size_t i = 0; i < n; ++i)
        elemOne(Family, src + static_cast<ptrdiff_t>(i) * srcStride,
                dst + static_cast<ptrdiff_t>(i) * dstStride, v);
}

inline void elemLoop(int family, const unsigned char *src, unsigned char *dst, size_t n,
                     int64_t v, ptrdiff_t srcStride, ptrdiff_t dstStride) {
    switch (family) {
#define RMG_LOOP_CASE(f)                                     \
    case f:                                                  \
        elemLoopOf<f>(src, dst, n, v, srcStride, dstStride); \
        break;
        RMG_ARITH_FAMILIES(RMG_LOOP_CASE)
#undef RMG_LOOP_CASE
    case kZero16u:
        // Stores only: the source is not read.
        for (size_t i = 0; i < n; ++i)
            storeElem<uint16_t>(dst + static_cast<ptrdiff_t>(i) * dstStride, 0);
        break;
    default:
        break;
    }
}

// The plain loop over adjacent elements, compiled for each family's size.
inline void elemLoop(int family, const unsigned char *src, unsigned char *dst, size_t n,
                     int64_t v) {
    switch (family) {
#define RMG_LOOP_CASE(f)                \
    case f:                             \
        elemLoopOf<f>(src, dst, n, v);  \
        break;
        RMG_ARITH_FAMILIES(RMG_LOOP_CASE)
#undef RMG_LOOP_CASE
    case kZero16u:
        std::memset(dst, 0, n * 2);
        break;
    default:
        break;
    }
}

// One channel of pixel-order pixels, src and dst at the first pixel's start.
inline void elemChannelLoop(int family, const unsigned char *src, unsigned char *dst,
                            size_t pixels, int channels, int channel, int64_t v) {
    const auto size = static_cast<ptrdiff_t>(familySize(family));
    const ptrdiff_t at = channel * size;
    elemLoop(family, src + at, dst + at, pixels, v, channels * size, channels * size);
}

#if RMG_CPU_X86

// ---------------------------------------------------------------------------
// The vector forms. A form supplies a traits type V:
//   Vec, kBytes, zero(), loadu(p), store(p, v), storeu(p, v), splat8/16/32,
//   and_, or_, andNot (~a & b), blend(old, new, mask) (new where the mask's
//   bytes are 0xFF), all from core/rmgvec.h, and add16, sub16, add32, unpackLo8, unpackHi8, packUs16, addsU8, subsU8,
//   addsU16, subsU16, addsS8, subsS8, addsS16, subsS16, cmpGt32,
//   subDouble32(x, v, reversed) (the 32s subtraction of each lane
//   through double precision).
// Each vector step below gives, lane by lane, what elemOne gives.
// ---------------------------------------------------------------------------

// How a run of one family is done with vectors: the step and its
// constants, chosen once per run. kScalar: no vector step gives the
// family's results for this value (the 32-bit sum wraps for some
// elements), the plain loop runs.
enum StepKind : int {
    kScalar,
    kWiden8u,       // 8u: words e + w (or w - e), packed with unsigned saturation
    kWidenRev8u,
    kAddsU8,        // saturating byte and word steps
    kSubsU8,
    kRevSubsU8,     // c - e
    kRevTwoU8,      // adds(subs(c, e), d)
    kAddsU16,
    kSubsU16,
    kRevU16,        // adds(subs(c, e), d)
    kConst,         // every element the same: c
    kTwoAddsS8,     // adds(adds(e, c), d)
    kRevTwoS8,      // adds(subs(c, e), d)
    kTwoAddsS16,
    kRevTwoS16,
    kLimitAdd32s,   // limit compare: e > c (or e < c) gives d, else e + v
    kDoubleSub32s,  // through double precision
    kOr,
    kAndNot,
    kNotAnd,
};

struct Step {
    int kind;
    int32_t c;
    int32_t d;
    int32_t v;
    int greater;  // kLimitAdd32s: 1 when the limit test is e > c
    int reversed; // kDoubleSub32s
};

// A signed depth of `bits` 8 or 16 with the 32-bit wrapping sum
// clamp(int32(e + v)) (add) or clamp(int32(v - e)) (rev): two saturating
// steps, a constant, or the plain loop where the 32-bit sum wraps.
inline Step signedStep(bool rev, int64_t v, int bits) {
    const int64_t high = bits == 8 ? 127 : 32767;
    const int64_t low = -high - 1;
    // The sum of any element with v, outside 32 bits, wraps: plain loop.
    const int64_t reachLow = rev ? v - high : v + low;
    const int64_t reachHigh = rev ? v - low : v + high;
    if (reachLow < kInt32Min || reachHigh > kInt32Max) return Step{kScalar, 0, 0, 0, 0, 0};
    if (reachLow >= high) return Step{kConst, static_cast<int32_t>(high), 0, 0, 0, 0};
    if (reachHigh <= low) return Step{kConst, static_cast<int32_t>(low), 0, 0, 0, 0};
    // Here |v| <= 2 * high + 1, and v = c + d with c in the element's range
    // and d of the same sign: a first saturating step can only saturate on
    // the side that the second one moves towards.
    const int64_t c = clamp64(v, low, high);
    const int64_t d = v - c;
    int kind;
    if (bits == 8)
        kind = rev ? kRevTwoS8 : kTwoAddsS8;
    else
        kind = rev ? kRevTwoS16 : kTwoAddsS16;
    return Step{kind, static_cast<int32_t>(c), static_cast<int32_t>(d), 0, 0, 0};
}

// 8u in 32-bit arithmetic, clamp(int32(e + v)) (add) or clamp(int32(v - e))
// (rev) to 0..255: byte steps, a constant, or the plain loop where the
// 32-bit sum wraps for some element.
inline Step fullStep8u(bool rev, int64_t v) {
    const int64_t reachLow = rev ? v - 255 : v;
    const int64_t reachHigh = rev ? v : v + 255;
    if (reachLow < kInt32Min || reachHigh > kInt32Max) return Step{kScalar, 0, 0, 0, 0, 0};
    if (reachLow >= 255) return Step{kConst, 255, 0, 0, 0, 0};
    if (reachHigh <= 0) return Step{kConst, 0, 0, 0, 0, 0};
    const auto w = static_cast<int32_t>(v);
    if (!rev) return w >= 0 ? Step{kAddsU8, w, 0, 0, 0, 0} : Step{kSubsU8, -w, 0, 0, 0, 0};
    // v - e = (255 - e) + (v - 255) for v above 255: the first step can't
    // saturate, the second saturates at the top only.
    if (w <= 255) return Step{kRevSubsU8, w, 0, 0, 0, 0};
    return Step{kRevTwoU8, 255, w - 255, 0, 0, 0};
}

inline Step stepOf(int family, int64_t v) {
    switch (family) {
    case kAdd8u:
    case kSub8u: {
        // e - w is e + (-w) in 16-bit words.
        const int32_t w = family == kAdd8u ? word16(v) : word16(-word16(v));
        if (w >= 0 && w <= 255) return Step{kAddsU8, w, 0, 0, 0, 0};
        if (w < 0 && w >= -255) return Step{kSubsU8, -w, 0, 0, 0, 0};
        return Step{kWiden8u, w, 0, 0, 0, 0};
    }
    case kRevSub8u: {
        const int32_t w = word16(v);
        if (w >= 0 && w <= 255) return Step{kRevSubsU8, w, 0, 0, 0, 0};
        return Step{kWidenRev8u, w, 0, 0, 0, 0};
    }
    case kAdd16u:
    case kSub16u: {
        // The exact sum: adding a negative v subtracts its magnitude.
        const int64_t up = family == kAdd16u ? v : -v;
        if (up >= 0) return Step{kAddsU16, static_cast<int32_t>(clamp64(up, 0, 65535)), 0, 0, 0, 0};
        return Step{kSubsU16, static_cast<int32_t>(clamp64(-up, 0, 65535)), 0, 0, 0, 0};
    }
    case kRevSub16u:
        if (v < 0) return Step{kConst, 0, 0, 0, 0, 0};
        // v - e = (c - e) + d with c = min(v, 65535): c - e never falls
        // below 0 when d > 0, so the two saturating steps are exact.
        return Step{kRevU16, static_cast<int32_t>(clamp64(v, 0, 65535)),
                    static_cast<int32_t>(clamp64(v - 65535, 0, 65535)), 0, 0, 0};
    case kZero16u:
        return Step{kConst, 0, 0, 0, 0, 0};
    case kAdd8s:
        return signedStep(false, static_cast<int32_t>(v), 8);
    case kSub8s:
        return signedStep(false, wrapSub(0, static_cast<int32_t>(v)), 8);
    case kRevSub8s:
        return signedStep(true, static_cast<int32_t>(v), 8);
    case kAdd16s:
        return signedStep(false, static_cast<int32_t>(v), 16);
    case kSub16s:
        return signedStep(false, wrapSub(0, static_cast<int32_t>(v)), 16);
    case kRevSub16s:
        return signedStep(true, static_cast<int32_t>(v), 16);
    case kAdd32s: {
        const auto w = static_cast<int32_t>(v);
        if (w >= 0) return Step{kLimitAdd32s, kInt32Max - w, kInt32Max, w, 1, 0};
        return Step{kLimitAdd32s, kInt32Min - w, kInt32Min, w, 0, 0};
    }
    case kSub32s:
        return Step{kDoubleSub32s, 0, 0, static_cast<int32_t>(v), 0, 0};
    case kRevSub32s:
        return Step{kDoubleSub32s, 0, 0, static_cast<int32_t>(v), 0, 1};
    case kOr1u:
        return Step{kOr, static_cast<uint8_t>(v), 0, 0, 0, 0};
    case kAndNot1u:
        return Step{kAndNot, static_cast<uint8_t>(v), 0, 0, 0, 0};
    case kNotAnd1u:
        return Step{kNotAnd, static_cast<uint8_t>(v), 0, 0, 0, 0};
    case kAdd8uFull:
        return fullStep8u(false, static_cast<int32_t>(v));
    case kSub8uFull:
        return fullStep8u(false, wrapSub(0, static_cast<int32_t>(v)));
    case kRevSub8uFull:
        return fullStep8u(true, static_cast<int32_t>(v));
    default:
        return Step{kScalar, 0, 0, 0, 0, 0};
    }
}

// Bytes of the lanes that hold a step's constants: words for the widened
// 8u steps, 32-bit lanes for 32s, else the element's size.
constexpr size_t laneBytes(int kind, size_t size) {
    return kind == kWiden8u || kind == kWidenRev8u ? 2 : kind == kLimitAdd32s ? 4 : size;
}

template <class V>
typename V::Vec splatLane(int32_t x, size_t bytes) {
    const auto u = static_cast<uint32_t>(x);
    return bytes == 1 ? V::splat8(u) : bytes == 2 ? V::splat16(u) : V::splat32(u);
}

// The vector step of a kind, with its constants in registers.
template <class V, int Kind>
struct VecStep {
    typename V::Vec c, d, v, zero;
    int greater;
    int reversed;
    explicit VecStep(const Step &s, size_t size)
        : c(splatLane<V>(s.c, laneBytes(Kind, size))),
          d(splatLane<V>(s.d, laneBytes(Kind, size))),
          v(V::splat32(static_cast<uint32_t>(s.v))),
          zero(V::zero()),
          greater(s.greater),
          reversed(s.reversed) {}

    typename V::Vec operator()(typename V::Vec e) const {
        switch (Kind) {
        case kWiden8u:
            return V::packUs16(V::add16(V::unpackLo8(e, zero), c),
                               V::add16(V::unpackHi8(e, zero), c));
        case kWidenRev8u:
            return V::packUs16(V::sub16(c, V::unpackLo8(e, zero)),
                               V::sub16(c, V::unpackHi8(e, zero)));
        case kAddsU8:
            return V::addsU8(e, c);
        case kSubsU8:
            return V::subsU8(e, c);
        case kRevSubsU8:
            return V::subsU8(c, e);
        case kRevTwoU8:
            return V::addsU8(V::subsU8(c, e), d);
        case kAddsU16:
            return V::addsU16(e, c);
        case kSubsU16:
            return V::subsU16(e, c);
        case kRevU16:
            return V::addsU16(V::subsU16(c, e), d);
        case kConst:
            return c;
        case kTwoAddsS8:
            return V::addsS8(V::addsS8(e, c), d);
        case kRevTwoS8:
            return V::addsS8(V::subsS8(c, e), d);
        case kTwoAddsS16:
            return V::addsS16(V::addsS16(e, c), d);
        case kRevTwoS16:
            return V::addsS16(V::subsS16(c, e), d);
        case kLimitAdd32s: {
            const typename V::Vec over = greater ? V::cmpGt32(e, c) : V::cmpGt32(c, e);
            return V::or_(V::and_(over, d), V::andNot(over, V::add32(e, v)));
        }
        case kDoubleSub32s:
            return V::subDouble32(e, v, reversed);
        case kOr:
            return V::or_(e, c);
        case kAndNot:
            return V::andNot(c, e);
        case kNotAnd:
            return V::andNot(e, c);
        default:
            return e;
        }
    }
};

// One run with vectors. Runs shorter than a vector go one element at a
// time. Otherwise the first and the last vector of the run are read and
// worked out first (unaligned, they may overlap the middle), the middle
// goes in vectors stored at the destination's vector alignment (when whole
// elements can reach it; unaligned otherwise), and the first and last
// results are stored at the end. Every element's result depends on its own
// source element alone, so a byte written twice gets the same value twice,
// and since the ends are read before anything is written, source and
// destination may be one buffer.
template <class V, int Kind, int Family>
void runVector(const unsigned char *src, unsigned char *dst, size_t n, int64_t value,
               const Step &step) {
    const size_t size = familySize(Family);
    const size_t bytes = n * size;
    if (bytes < V::kBytes) {
        elemLoopOf<Family>(src, dst, n, value);
        return;
    }
    const VecStep<V, Kind> op(step, size);
    const typename V::Vec first = op(V::loadu(src));
    const typename V::Vec last = op(V::loadu(src + bytes - V::kBytes));
    const size_t misalign = reinterpret_cast<uintptr_t>(dst) & (V::kBytes - 1);
    size_t i = misalign == 0 ? 0 : V::kBytes - misalign;
    if (i % size == 0) {
        for (; i + 4 * V::kBytes <= bytes; i += 4 * V::kBytes) {
            const typename V::Vec a0 = op(V::loadu(src + i));
            const typename V::Vec a1 = op(V::loadu(src + i + V::kBytes));
            const typename V::Vec a2 = op(V::loadu(src + i + 2 * V::kBytes));
            const typename V::Vec a3 = op(V::loadu(src + i + 3 * V::kBytes));
            V::store(dst + i, a0);
            V::store(dst + i + V::kBytes, a1);
            V::store(dst + i + 2 * V::kBytes, a2);
            V::store(dst + i + 3 * V::kBytes, a3);
        }
        for (; i + V::kBytes <= bytes; i += V::kBytes) V::store(dst + i, op(V::loadu(src + i)));
    } else {
        for (i = V::kBytes; i + V::kBytes <= bytes; i += V::kBytes)
            V::storeu(dst + i, op(V::loadu(src + i)));
    }
    V::storeu(dst, first);
    V::storeu(dst + bytes - V::kBytes, last);
}

// One channel of `pixels` pixel-order pixels of `channels` (2 to 4)
// elements, src and dst at the first pixel's start: blocks of three
// vectors, a whole number of pixels, go through the step on every lane and
// are merged into the destination under a mask of the channel's bytes (the
// other bytes of the destination's pixels are written back with their own
// values); the pixels after the last block one by one.
template <class V, int Kind, int Family>
void channelVector(const unsigned char *src, unsigned char *dst, size_t pixels, int channels,
                   int channel, int64_t value, const Step &step) {
    const size_t size = familySize(Family);
    const size_t pixel = static_cast<size_t>(channels) * size;
    const size_t block = 3 * V::kBytes;
    const size_t blocks = pixels * pixel / block;
    if (blocks > 0) {
        unsigned char masks[3 * V::kBytes];
        for (size_t t = 0; t < block; ++t)
            masks[t] = (t % pixel) / size == static_cast<size_t>(channel) ? 0xFF : 0x00;
        const VecStep<V, Kind> op(step, size);
        const typename V::Vec m0 = V::loadu(masks);
        const typename V::Vec m1 = V::loadu(masks + V::kBytes);
        const typename V::Vec m2 = V::loadu(masks + 2 * V::kBytes);
        for (size_t b = 0; b < blocks; ++b) {
            const unsigned char *s = src + b * block;
            unsigned char *t = dst + b * block;
            const typename V::Vec r0 = op(V::loadu(s));
            const typename V::Vec r1 = op(V::loadu(s + V::kBytes));
            const typename V::Vec r2 = op(V::loadu(s + 2 * V::kBytes));
            V::storeu(t, V::blend(V::loadu(t), r0, m0));
            V::storeu(t + V::kBytes, V::blend(V::loadu(t + V::kBytes), r1, m1));
            V::storeu(t + 2 * V::kBytes, V::blend(V::loadu(t + 2 * V::kBytes), r2, m2));
        }
    }
    const size_t done = blocks * block / pixel;
    const size_t at = done * pixel + static_cast<size_t>(channel) * size;
    elemLoopOf<Family>(src + at, dst + at, pixels - done, value, static_cast<ptrdiff_t>(pixel),
                       static_cast<ptrdiff_t>(pixel));
}

// The arguments of one call of a vector form: a run (channels 0) or one
// channel of pixels.
struct VecCall {
    const unsigned char *src;
    unsigned char *dst;
    size_t n;
    int channels;
    int channel;
    int64_t value;
};

template <class V, int Kind, int Family>
void vectorCall(const VecCall &c, const Step &step) {
    if (c.channels == 0)
        runVector<V, Kind, Family>(c.src, c.dst, c.n, c.value, step);
    else
        channelVector<V, Kind, Family>(c.src, c.dst, c.n, c.channels, c.channel, c.value, step);
}

template <class V, int Family>
void runFamily(const VecCall &c) {
    const Step step = stepOf(Family, c.value);
    switch (step.kind) {
#define RMG_STEP_CASE(k)                       \
    case k:                                    \
        vectorCall<V, k, Family>(c, step);     \
        return;
        RMG_STEP_CASE(kWiden8u)
        RMG_STEP_CASE(kWidenRev8u)
        RMG_STEP_CASE(kAddsU8)
        RMG_STEP_CASE(kSubsU8)
        RMG_STEP_CASE(kRevSubsU8)
        RMG_STEP_CASE(kRevTwoU8)
        RMG_STEP_CASE(kAddsU16)
        RMG_STEP_CASE(kSubsU16)
        RMG_STEP_CASE(kRevU16)
        RMG_STEP_CASE(kConst)
        RMG_STEP_CASE(kTwoAddsS8)
        RMG_STEP_CASE(kRevTwoS8)
        RMG_STEP_CASE(kTwoAddsS16)
        RMG_STEP_CASE(kRevTwoS16)
        RMG_STEP_CASE(kLimitAdd32s)
        RMG_STEP_CASE(kDoubleSub32s)
        RMG_STEP_CASE(kOr)
        RMG_STEP_CASE(kAndNot)
        RMG_STEP_CASE(kNotAnd)
#undef RMG_STEP_CASE
    default:
        if (c.channels == 0) {
            elemLoopOf<Family>(c.src, c.dst, c.n, c.value);
        } else {
            const auto pixel = static_cast<ptrdiff_t>(c.channels * familySize(Family));
            const ptrdiff_t at = static_cast<ptrdiff_t>(c.channel * familySize(Family));
            elemLoopOf<Family>(c.src + at, c.dst + at, c.n, c.value, pixel, pixel);
        }
        return;
    }
}

// A call of a vector form: the family's loop compiled for it. The zero
// store has no arithmetic and reads nothing: the plain loop.
template <class V>
void elemCallVector(int family, const VecCall &c) {
    switch (family) {
#define RMG_FAMILY_CASE(f)        \
    case f:                       \
        runFamily<V, f>(c);       \
        return;
        RMG_ARITH_FAMILIES(RMG_FAMILY_CASE)
#undef RMG_FAMILY_CASE
    default: {
        const ptrdiff_t size = static_cast<ptrdiff_t>(familySize(family));
        const ptrdiff_t pixel = c.channels == 0 ? size : c.channels * size;
        const ptrdiff_t at = c.channels == 0 ? 0 : c.channel * size;
        elemLoop(family, c.src + at, c.dst + at, c.n, c.value, pixel, pixel);
        return;
    }
    }
}

template <class V>
void elemRunVector(int family, const unsigned char *src, unsigned char *dst, size_t n,
                   int64_t v) {
    elemCallVector<V>(family, VecCall{src, dst, n, 0, 0, v});
}

// One channel with vectors for 2 to 4 channels; other counts one by one.
template <class V>
void elemChannelVector(int family, const unsigned char *src, unsigned char *dst, size_t pixels,
                       int channels, int channel, int64_t v) {
    if (channels < 2 || channels > 4) {
        elemChannelLoop(family, src, dst, pixels, channels, channel, v);
        return;
    }
    elemCallVector<V>(family, VecCall{src, dst, pixels, channels, channel, v});
}

#endif  // RMG_CPU_X86

}  // namespace
}  // namespace rmg

#endif
