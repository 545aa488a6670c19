// The row kernels of the gray conversion, shared by their forms. Included
// by color/owncolor.cpp and by the files compiled for one instruction set;
// everything here lives in an anonymous namespace so that each of those
// files keeps its own copy, compiled with its own options (see
// core/rmgcpu.h).
#ifndef RMG_COLOR_OWNCOLOR_IMPL_H
#define RMG_COLOR_OWNCOLOR_IMPL_H

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "color/owncolor.h"

namespace rmg {
namespace {

inline uint32_t ld16(const unsigned char *p) {
    uint16_t v;
    std::memcpy(&v, p, 2);
    return v;
}
inline void st16(unsigned char *p, uint32_t v) {
    const auto w = static_cast<uint16_t>(v);
    std::memcpy(p, &w, 2);
}
inline int32_t ld32(const unsigned char *p) {
    int32_t v;
    std::memcpy(&v, p, 4);
    return v;
}
inline void st32(unsigned char *p, uint32_t v) { std::memcpy(p, &v, 4); }

// The luminance sums, from unsigned elements of 8 or 16 bits.
inline uint32_t graySum(uint32_t a, uint32_t b, uint32_t c) { return a * 54u + b * 183u + c * 18u; }

// Gray rows, scalar, from the last element to the first.
inline void grayRow8u8uScalar(const unsigned char *a, const unsigned char *b,
                              const unsigned char *c, int step, unsigned char *dst, int n) {
    for (int i = n - 1; i >= 0; --i) {
        const ptrdiff_t k = static_cast<ptrdiff_t>(i) * step;
        dst[i] = static_cast<unsigned char>(graySum(a[k], b[k], c[k]) >> 8);
    }
}
inline void grayRow8u16uScalar(const unsigned char *a, const unsigned char *b,
                               const unsigned char *c, int step, unsigned char *dst, int n) {
    for (int i = n - 1; i >= 0; --i) {
        const ptrdiff_t k = static_cast<ptrdiff_t>(i) * step;
        st16(dst + 2 * static_cast<ptrdiff_t>(i), graySum(a[k], b[k], c[k]));
    }
}
inline void grayRow16u16uScalar(const unsigned char *a, const unsigned char *b,
                                const unsigned char *c, int step, unsigned char *dst, int n) {
    for (int i = n - 1; i >= 0; --i) {
        const ptrdiff_t k = 2 * static_cast<ptrdiff_t>(i) * step;
        st16(dst + 2 * static_cast<ptrdiff_t>(i), graySum(ld16(a + k), ld16(b + k), ld16(c + k)) >> 8);
    }
}
inline void grayRow16u8uPixelScalar(const unsigned char *a, const unsigned char *b,
                                    const unsigned char *c, int step, unsigned char *dst, int n) {
    for (int i = n - 1; i >= 0; --i) {
        const ptrdiff_t k = 2 * static_cast<ptrdiff_t>(i) * step;
        dst[i] = static_cast<unsigned char>(graySum(ld16(a + k), ld16(b + k), ld16(c + k)) >> 16);
    }
}
// The plane-order kernel: each product's high half on its own, the sum
// halved and saturated. It serves step 1 only; another step does nothing.
inline void grayRow16u8uPlaneScalar(const unsigned char *a, const unsigned char *b,
                                    const unsigned char *c, int step, unsigned char *dst, int n) {
    if (step != 1) return;
    for (int i = n - 1; i >= 0; --i) {
        const ptrdiff_t k = 2 * static_cast<ptrdiff_t>(i);
        const uint32_t s = (((ld16(a + k) * 109u) >> 16) + ((ld16(b + k) * 366u) >> 16) +
                            ((ld16(c + k) * 37u) >> 16)) >> 1;
        dst[i] = static_cast<unsigned char>(s > 255u ? 255u : s);
    }
}

// Spread rows, scalar, from the first element to the last: output k is
// (g * w[k]) >> shift, kept to the element's bits.
inline void spreadRow8uScalar(const unsigned char *g, unsigned char *o1, unsigned char *o2,
                              unsigned char *o3, int step, int n, const uint16_t *w, int shift) {
    for (int i = 0; i < n; ++i) {
        const ptrdiff_t k = static_cast<ptrdiff_t>(i) * step;
        const uint32_t v = g[i];
        o1[k] = static_cast<unsigned char>((v * w[0]) >> shift);
        o2[k] = static_cast<unsigned char>((v * w[1]) >> shift);
        o3[k] = static_cast<unsigned char>((v * w[2]) >> shift);
    }
}
inline void spreadRow16uScalar(const unsigned char *g, unsigned char *o1, unsigned char *o2,
                               unsigned char *o3, int step, int n, const uint16_t *w, int shift) {
    for (int i = 0; i < n; ++i) {
        const ptrdiff_t k = 2 * static_cast<ptrdiff_t>(i) * step;
        const uint32_t v = ld16(g + 2 * static_cast<ptrdiff_t>(i));
        st16(o1 + k, (v * w[0]) >> shift);
        st16(o2 + k, (v * w[1]) >> shift);
        st16(o3 + k, (v * w[2]) >> shift);
    }
}

}  // namespace
}  // namespace rmg

#endif
