// The vector forms of the gray conversion rows, for the files compiled for
// one instruction set (color/owncolor_sse2.cpp, color/owncolor_avx2.cpp).
// Step 1 runs in vectors, a block of elements at a time, with the rest and
// any other step through the scalar rows; the results are those of the
// scalar rows to the bit. The unpacks and packs work within 16-byte lanes
// on both widths; each pack undoes the unpack before it, so the elements
// come back in their order.
#ifndef RMG_COLOR_OWNCOLOR_VEC_H
#define RMG_COLOR_OWNCOLOR_VEC_H

#include <immintrin.h>

#include "color/owncolor_impl.h"

namespace rmg {
namespace {

#if defined(__SSE2__)
struct ColorSse2 {
    using V = __m128i;
    static constexpr int kBytes = 16;
    static V load(const unsigned char *p) { return _mm_loadu_si128(reinterpret_cast<const __m128i *>(p)); }
    static void store(unsigned char *p, V v) { _mm_storeu_si128(reinterpret_cast<__m128i *>(p), v); }
    static V zero() { return _mm_setzero_si128(); }
    static V splat16(int x) { return _mm_set1_epi16(static_cast<short>(x)); }
    static V splat32(int x) { return _mm_set1_epi32(x); }
    static V lo8(V a) { return _mm_unpacklo_epi8(a, zero()); }
    static V hi8(V a) { return _mm_unpackhi_epi8(a, zero()); }
    static V lo16(V a, V b) { return _mm_unpacklo_epi16(a, b); }
    static V hi16(V a, V b) { return _mm_unpackhi_epi16(a, b); }
    static V add16(V a, V b) { return _mm_add_epi16(a, b); }
    static V add32(V a, V b) { return _mm_add_epi32(a, b); }
    static V sub32(V a, V b) { return _mm_sub_epi32(a, b); }
    static V mullo16(V a, V b) { return _mm_mullo_epi16(a, b); }
    static V mulhi16(V a, V b) { return _mm_mulhi_epu16(a, b); }
    static V srl16(V a, int n) { return _mm_srl_epi16(a, _mm_cvtsi32_si128(n)); }
    static V sll16(V a, int n) { return _mm_sll_epi16(a, _mm_cvtsi32_si128(n)); }
    static V srl32(V a, int n) { return _mm_srl_epi32(a, _mm_cvtsi32_si128(n)); }
    static V or_(V a, V b) { return _mm_or_si128(a, b); }
    static V xor_(V a, V b) { return _mm_xor_si128(a, b); }
    static V packus16(V a, V b) { return _mm_packus_epi16(a, b); }
    static V packs32(V a, V b) { return _mm_packs_epi32(a, b); }
    // Two vectors of 16-bit lanes loaded one after the other, saturated to
    // bytes in element order.
    static V narrow(V a, V b) { return _mm_packus_epi16(a, b); }
    // The 16-bit halves of lo8/hi8 of one vector stored in element order.
    static void storeWide(unsigned char *p, V lo, V hi) {
        store(p, lo);
        store(p + kBytes, hi);
    }
};
#endif

#if defined(__AVX2__)
struct ColorAvx2 {
    using V = __m256i;
    static constexpr int kBytes = 32;
    static V load(const unsigned char *p) { return _mm256_loadu_si256(reinterpret_cast<const __m256i *>(p)); }
    static void store(unsigned char *p, V v) { _mm256_storeu_si256(reinterpret_cast<__m256i *>(p), v); }
    static V zero() { return _mm256_setzero_si256(); }
    static V splat16(int x) { return _mm256_set1_epi16(static_cast<short>(x)); }
    static V splat32(int x) { return _mm256_set1_epi32(x); }
    static V lo8(V a) { return _mm256_unpacklo_epi8(a, zero()); }
    static V hi8(V a) { return _mm256_unpackhi_epi8(a, zero()); }
    static V lo16(V a, V b) { return _mm256_unpacklo_epi16(a, b); }
    static V hi16(V a, V b) { return _mm256_unpackhi_epi16(a, b); }
    static V add16(V a, V b) { return _mm256_add_epi16(a, b); }
    static V add32(V a, V b) { return _mm256_add_epi32(a, b); }
    static V sub32(V a, V b) { return _mm256_sub_epi32(a, b); }
    static V mullo16(V a, V b) { return _mm256_mullo_epi16(a, b); }
    static V mulhi16(V a, V b) { return _mm256_mulhi_epu16(a, b); }
    static V srl16(V a, int n) { return _mm256_srl_epi16(a, _mm_cvtsi32_si128(n)); }
    static V sll16(V a, int n) { return _mm256_sll_epi16(a, _mm_cvtsi32_si128(n)); }
    static V srl32(V a, int n) { return _mm256_srl_epi32(a, _mm_cvtsi32_si128(n)); }
    static V or_(V a, V b) { return _mm256_or_si256(a, b); }
    static V xor_(V a, V b) { return _mm256_xor_si256(a, b); }
    static V packus16(V a, V b) { return _mm256_packus_epi16(a, b); }
    static V packs32(V a, V b) { return _mm256_packs_epi32(a, b); }
    static V narrow(V a, V b) { return _mm256_permute4x64_epi64(_mm256_packus_epi16(a, b), 0xD8); }
    static void storeWide(unsigned char *p, V lo, V hi) {
        store(p, _mm256_permute2x128_si256(lo, hi, 0x20));
        store(p + kBytes, _mm256_permute2x128_si256(lo, hi, 0x31));
    }
};
#endif

// 16-bit sums a * 54 + b * 183 + c * 18 of widened bytes (at most 65025).
template <typename X>
typename X::V sum8(typename X::V a, typename X::V b, typename X::V c) {
    return X::add16(X::add16(X::mullo16(a, X::splat16(54)), X::mullo16(b, X::splat16(183))),
                    X::mullo16(c, X::splat16(18)));
}

// 32-bit products of 16-bit lanes with w, the low and high four of each
// lane's eight.
template <typename X>
void product32(typename X::V v, int w, typename X::V *lo, typename X::V *hi) {
    const typename X::V k = X::splat16(w);
    const typename X::V l = X::mullo16(v, k), h = X::mulhi16(v, k);
    *lo = X::lo16(l, h);
    *hi = X::hi16(l, h);
}

// 32-bit sums a * 54 + b * 183 + c * 18 of 16-bit lanes.
template <typename X>
void sum16(typename X::V a, typename X::V b, typename X::V c, typename X::V *lo, typename X::V *hi) {
    typename X::V al, ah, bl, bh, cl, ch;
    product32<X>(a, 54, &al, &ah);
    product32<X>(b, 183, &bl, &bh);
    product32<X>(c, 18, &cl, &ch);
    *lo = X::add32(X::add32(al, bl), cl);
    *hi = X::add32(X::add32(ah, bh), ch);
}

// 32-bit lanes of at most 65535 packed to 16 bits, in order.
template <typename X>
typename X::V pack32u(typename X::V lo, typename X::V hi) {
    const typename X::V bias = X::splat32(32768);
    return X::xor_(X::packs32(X::sub32(lo, bias), X::sub32(hi, bias)), X::splat16(0x8000));
}

template <typename X>
void grayRow8u8uVec(const unsigned char *a, const unsigned char *b, const unsigned char *c,
                    int step, unsigned char *dst, int n) {
    if (step != 1) return grayRow8u8uScalar(a, b, c, step, dst, n);
    constexpr int K = X::kBytes;
    int i = 0;
    for (; i + K <= n; i += K) {
        const typename X::V va = X::load(a + i), vb = X::load(b + i), vc = X::load(c + i);
        const typename X::V lo = X::srl16(sum8<X>(X::lo8(va), X::lo8(vb), X::lo8(vc)), 8);
        const typename X::V hi = X::srl16(sum8<X>(X::hi8(va), X::hi8(vb), X::hi8(vc)), 8);
        X::store(dst + i, X::packus16(lo, hi));
    }
    grayRow8u8uScalar(a + i, b + i, c + i, 1, dst + i, n - i);
}

template <typename X>
void grayRow8u16uVec(const unsigned char *a, const unsigned char *b, const unsigned char *c,
                     int step, unsigned char *dst, int n) {
    if (step != 1) return grayRow8u16uScalar(a, b, c, step, dst, n);
    constexpr int K = X::kBytes;
    int i = 0;
    for (; i + K <= n; i += K) {
        const typename X::V va = X::load(a + i), vb = X::load(b + i), vc = X::load(c + i);
        X::storeWide(dst + 2 * i, sum8<X>(X::lo8(va), X::lo8(vb), X::lo8(vc)),
                     sum8<X>(X::hi8(va), X::hi8(vb), X::hi8(vc)));
    }
    grayRow8u16uScalar(a + i, b + i, c + i, 1, dst + 2 * i, n - i);
}

template <typename X>
void grayRow16u16uVec(const unsigned char *a, const unsigned char *b, const unsigned char *c,
                      int step, unsigned char *dst, int n) {
    if (step != 1) return grayRow16u16uScalar(a, b, c, step, dst, n);
    constexpr int K = X::kBytes / 2;
    int i = 0;
    for (; i + K <= n; i += K) {
        typename X::V lo, hi;
        sum16<X>(X::load(a + 2 * i), X::load(b + 2 * i), X::load(c + 2 * i), &lo, &hi);
        X::store(dst + 2 * i, pack32u<X>(X::srl32(lo, 8), X::srl32(hi, 8)));
    }
    grayRow16u16uScalar(a + 2 * i, b + 2 * i, c + 2 * i, 1, dst + 2 * i, n - i);
}

template <typename X>
void grayRow16u8uPixelVec(const unsigned char *a, const unsigned char *b, const unsigned char *c,
                          int step, unsigned char *dst, int n) {
    if (step != 1) return grayRow16u8uPixelScalar(a, b, c, step, dst, n);
    constexpr int K = X::kBytes;
    int i = 0;
    for (; i + K <= n; i += K) {
        typename X::V half[2];
        for (int h = 0; h < 2; ++h) {
            const ptrdiff_t at = 2 * static_cast<ptrdiff_t>(i) + h * X::kBytes;
            typename X::V lo, hi;
            sum16<X>(X::load(a + at), X::load(b + at), X::load(c + at), &lo, &hi);
            half[h] = X::packs32(X::srl32(lo, 16), X::srl32(hi, 16));
        }
        X::store(dst + i, X::narrow(half[0], half[1]));
    }
    grayRow16u8uPixelScalar(a + 2 * i, b + 2 * i, c + 2 * i, 1, dst + i, n - i);
}

// High halves of the three products, each truncated, summed, halved and
// saturated by the pack.
template <typename X>
void grayRow16u8uPlaneVec(const unsigned char *a, const unsigned char *b, const unsigned char *c,
                          int step, unsigned char *dst, int n) {
    if (step != 1) return;
    constexpr int K = X::kBytes;
    int i = 0;
    for (; i + K <= n; i += K) {
        typename X::V half[2];
        for (int h = 0; h < 2; ++h) {
            const ptrdiff_t at = 2 * static_cast<ptrdiff_t>(i) + h * X::kBytes;
            const typename X::V s =
                X::add16(X::add16(X::mulhi16(X::load(a + at), X::splat16(109)),
                                  X::mulhi16(X::load(b + at), X::splat16(366))),
                         X::mulhi16(X::load(c + at), X::splat16(37)));
            half[h] = X::srl16(s, 1);
        }
        X::store(dst + i, X::narrow(half[0], half[1]));
    }
    grayRow16u8uPlaneScalar(a + 2 * i, b + 2 * i, c + 2 * i, 1, dst + i, n - i);
}

template <typename X>
void spreadRow8uVec(const unsigned char *g, unsigned char *o1, unsigned char *o2,
                    unsigned char *o3, int step, int n, const uint16_t *w, int shift) {
    if (step != 1 || shift != 8) return spreadRow8uScalar(g, o1, o2, o3, step, n, w, shift);
    constexpr int K = X::kBytes;
    unsigned char *out[3] = {o1, o2, o3};
    int i = 0;
    for (; i + K <= n; i += K) {
        const typename X::V v = X::load(g + i);
        const typename X::V lo = X::lo8(v), hi = X::hi8(v);
        // The low 8 bits of (g * w) >> 8 are bits 8 to 15 of the product.
        for (int k = 0; k < 3; ++k) {
            const typename X::V wk = X::splat16(w[k]);
            X::store(out[k] + i, X::packus16(X::srl16(X::mullo16(lo, wk), 8), X::srl16(X::mullo16(hi, wk), 8)));
        }
    }
    spreadRow8uScalar(g + i, o1 + i, o2 + i, o3 + i, 1, n - i, w, shift);
}

template <typename X>
void spreadRow16uVec(const unsigned char *g, unsigned char *o1, unsigned char *o2,
                     unsigned char *o3, int step, int n, const uint16_t *w, int shift) {
    if (step != 1 || shift < 1 || shift > 16) return spreadRow16uScalar(g, o1, o2, o3, step, n, w, shift);
    constexpr int K = X::kBytes / 2;
    unsigned char *out[3] = {o1, o2, o3};
    int i = 0;
    for (; i + K <= n; i += K) {
        const typename X::V v = X::load(g + 2 * i);
        // Bits shift to shift + 15 of the 32-bit product.
        for (int k = 0; k < 3; ++k) {
            const typename X::V wk = X::splat16(w[k]);
            X::store(out[k] + 2 * i, X::or_(X::sll16(X::mulhi16(v, wk), 16 - shift),
                                            X::srl16(X::mullo16(v, wk), shift)));
        }
    }
    spreadRow16uScalar(g + 2 * i, o1 + 2 * i, o2 + 2 * i, o3 + 2 * i, 1, n - i, w, shift);
}

template <typename X>
constexpr ColorForms vectorColorForms() {
    return ColorForms{grayRow8u8uVec<X>,       grayRow8u16uVec<X>,      grayRow16u16uVec<X>,
                      grayRow16u8uPixelVec<X>, grayRow16u8uPlaneVec<X>, spreadRow8uVec<X>,
                      spreadRow16uVec<X>};
}

}  // namespace
}  // namespace rmg

#endif
