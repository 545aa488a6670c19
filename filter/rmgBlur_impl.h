// The blur's row kernels, shared by their forms. Included by
// filter/rmgBlur.cpp and by the files compiled for one instruction set;
// everything lives in an anonymous namespace so that each file keeps its
// own copy (see core/rmgcpu.h).
//
// The column sums and the running row sum are 32-bit words that wrap, so
// the vector forms may add in any grouping and give the same words. The
// store converts the sum to double, multiplies by the float scale widened to
// double and truncates; the vector conversion (cvttpd2dq) gives INT_MIN for
// NaN and overflow just as blurTruncate does. A vector form's traits V add
// to core/rmgvec.h:
//   kLanes              32-bit lanes of a vector
//   widen(p, kind)      kLanes elements of `kind` at p, as int32 lanes
//   reverse32(v)        the lanes in reversed order
//   sub32(a, b)         lane difference, wrapping
//   prefix32(v)         inclusive prefix sums of the lanes
//   scale(v, s)         trunc(lane * s) in double, INT_MIN where undefined
//   store8(p, v), store16(p, v)   the low bytes or halves of the lanes
#ifndef RMG_FILTER_RMGBLUR_IMPL_H
#define RMG_FILTER_RMGBLUR_IMPL_H

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "filter/rmgBlur.h"

namespace rmg {
namespace {

// The conversion of one scaled sum to an integer: truncation towards zero,
// and the integer indefinite value INT_MIN for a NaN or a value outside the
// range of int32.
inline int32_t blurTruncate(double v) {
    if (!(v > -2147483649.0 && v < 2147483648.0)) return INT32_MIN;
    return static_cast<int32_t>(v);
}

inline int32_t blurElement(const unsigned char *p, int kind) {
    switch (kind) {
        case kBlur8u: return *p;
        case kBlur8s: return static_cast<signed char>(*p);
        case kBlur16u: {
            uint16_t v;
            std::memcpy(&v, p, 2);
            return v;
        }
        default: {
            int16_t v;
            std::memcpy(&v, p, 2);
            return v;
        }
    }
}

inline int blurElementBytes(int kind) { return kind >= kBlur16u ? 2 : 1; }

inline void blurStoreElement(unsigned char *p, int32_t v, int kind) {
    if (kind >= kBlur16u) {
        const auto low = static_cast<uint16_t>(static_cast<uint32_t>(v));
        std::memcpy(p, &low, 2);
    } else {
        *p = static_cast<unsigned char>(static_cast<uint32_t>(v));
    }
}

inline void blurColumnsScalar(int32_t *sum, const unsigned char *add, const unsigned char *sub,
                              int count, ptrdiff_t stride, int kind) {
    const ptrdiff_t step = stride * blurElementBytes(kind);
    for (int c = 0; c < count; ++c) {
        uint32_t s = static_cast<uint32_t>(sum[count - 1 - c]);
        s += static_cast<uint32_t>(blurElement(add + c * step, kind));
        if (sub != nullptr) s -= static_cast<uint32_t>(blurElement(sub + c * step, kind));
        sum[count - 1 - c] = static_cast<int32_t>(s);
    }
}

// The first acc of a row: the first nCols columns of the read area.
inline uint32_t blurFirstAcc(const int32_t *sum, int cols, int nCols) {
    uint32_t acc = 0;
    for (int i = cols + nCols - 1; i >= cols; --i) acc += static_cast<uint32_t>(sum[i]);
    return acc;
}

// Columns `from` to count - 1 of a row, the acc of column `from` given.
inline void blurRowTail(const int32_t *sum, int cols, int nCols, double scale, unsigned char *dst,
                        ptrdiff_t stride, int from, int count, int kind, uint32_t acc) {
    const ptrdiff_t step = stride * blurElementBytes(kind);
    for (int o = from; o < count; ++o) {
        blurStoreElement(dst + o * step,
                         blurTruncate(static_cast<double>(static_cast<int32_t>(acc)) * scale), kind);
        const int j = cols - 1 - o;
        acc += static_cast<uint32_t>(sum[j]) - static_cast<uint32_t>(sum[j + nCols]);
    }
}

inline void blurRowScalar(const int32_t *sum, int cols, int nCols, float scale, unsigned char *dst,
                          ptrdiff_t stride, int count, int kind) {
    blurRowTail(sum, cols, nCols, static_cast<double>(scale), dst, stride, 0, count, kind,
                blurFirstAcc(sum, cols, nCols));
}

template <class V>
void blurColumnsForm(int32_t *sum, const unsigned char *add, const unsigned char *sub, int count,
                     ptrdiff_t stride, int kind) {
    if (stride != 1 || sub == nullptr) {
        blurColumnsScalar(sum, add, sub, count, stride, kind);
        return;
    }
    constexpr int L = V::kLanes;
    const int eb = blurElementBytes(kind);
    int c = 0;
    for (; c + L <= count; c += L) {
        const auto d = V::sub32(V::widen(add + c * eb, kind), V::widen(sub + c * eb, kind));
        auto *at = reinterpret_cast<unsigned char *>(sum + (count - L - c));
        V::storeu(at, V::add32(V::loadu(at), V::reverse32(d)));
    }
    // The rest: sum[count - 1 - c] for c from here on are the entries
    // 0 to count - 1 - c, the front of the array.
    blurColumnsScalar(sum, add + c * eb, sub + c * eb, count - c, 1, kind);
}

template <class V>
void blurRowForm(const int32_t *sum, int cols, int nCols, float scale, unsigned char *dst,
                 ptrdiff_t stride, int count, int kind) {
    constexpr int L = V::kLanes;
    const double s = static_cast<double>(scale);
    const int eb = blurElementBytes(kind);
    uint32_t acc = blurFirstAcc(sum, cols, nCols);
    int o = 0;
    for (; o + L <= count; o += L) {
        // The differences of columns o to o + L - 1, in column order.
        const int j = cols - L - o;
        const auto *lo = reinterpret_cast<const unsigned char *>(sum + j);
        const auto *hi = reinterpret_cast<const unsigned char *>(sum + j + nCols);
        const auto e = V::reverse32(V::sub32(V::loadu(lo), V::loadu(hi)));
        const auto inclusive = V::prefix32(e);
        const auto accs = V::add32(V::splat32(acc), V::sub32(inclusive, e));
        const auto values = V::scale(accs, s);
        unsigned char *to = dst + o * stride * eb;
        if (stride == 1) {
            if (eb == 1)
                V::store8(to, values);
            else
                V::store16(to, values);
        } else {
            alignas(64) int32_t lanes[L];
            V::storeu(reinterpret_cast<unsigned char *>(lanes), values);
            for (int k = 0; k < L; ++k) blurStoreElement(to + k * stride * eb, lanes[k], kind);
        }
        int32_t total[L];
        V::storeu(reinterpret_cast<unsigned char *>(total), inclusive);
        acc += static_cast<uint32_t>(total[L - 1]);
    }
    blurRowTail(sum, cols, nCols, s, dst, stride, o, count, kind, acc);
}

}  // namespace
}  // namespace rmg

#endif
