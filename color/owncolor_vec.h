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
#include "core/rmgvec.h"

namespace rmg {
namespace {

// The vector traits of core/rmgvec.h with what these rows add: 16-bit
// unpacks, 32-bit subtraction, shifts by a count, the signed 32-bit pack,
// and two ways back to element order for the wider form.
#if defined(__SSE2__)
struct ColorSse2 : Sse2Vec {
    static Vec lo16(Vec a, Vec b) { return _mm_unpacklo_epi16(a, b); }
    static Vec hi16(Vec a, Vec b) { return _mm_unpackhi_epi16(a, b); }
    static Vec sub32(Vec a, Vec b) { return _mm_sub_epi32(a, b); }
    static Vec srl16(Vec a, int n) { return _mm_srl_epi16(a, _mm_cvtsi32_si128(n)); }
    static Vec sll16(Vec a, int n) { return _mm_sll_epi16(a, _mm_cvtsi32_si128(n)); }
    static Vec srl32(Vec a, int n) { return _mm_srl_epi32(a, _mm_cvtsi32_si128(n)); }
    static Vec packs32(Vec a, Vec b) { return _mm_packs_epi32(a, b); }
    // Two vectors of 16-bit lanes loaded one after the other, saturated to
    // bytes in element order.
    static Vec narrow(Vec a, Vec b) { return _mm_packus_epi16(a, b); }
    // The 16-bit halves of unpackLo8/Hi8 of one vector stored in element
    // order.
    static void storeWide(unsigned char *p, Vec lo, Vec hi) {
        storeu(p, lo);
        storeu(p + kBytes, hi);
    }
};
#endif

#if defined(__AVX2__)
struct ColorAvx2 : Avx2Vec {
    static Vec lo16(Vec a, Vec b) { return _mm256_unpacklo_epi16(a, b); }
    static Vec hi16(Vec a, Vec b) { return _mm256_unpackhi_epi16(a, b); }
    static Vec sub32(Vec a, Vec b) { return _mm256_sub_epi32(a, b); }
    static Vec srl16(Vec a, int n) { return _mm256_srl_epi16(a, _mm_cvtsi32_si128(n)); }
    static Vec sll16(Vec a, int n) { return _mm256_sll_epi16(a, _mm_cvtsi32_si128(n)); }
    static Vec srl32(Vec a, int n) { return _mm256_srl_epi32(a, _mm_cvtsi32_si128(n)); }
    static Vec packs32(Vec a, Vec b) { return _mm256_packs_epi32(a, b); }
    static Vec narrow(Vec a, Vec b) { return _mm256_permute4x64_epi64(_mm256_packus_epi16(a, b), 0xD8); }
    static void storeWide(unsigned char *p, Vec lo, Vec hi) {
        storeu(p, _mm256_permute2x128_si256(lo, hi, 0x20));
        storeu(p + kBytes, _mm256_permute2x128_si256(lo, hi, 0x31));
    }
};
#endif

// 16-bit sums a * 54 + b * 183 + c * 18 of widened bytes (at most 65025).
template <typename X>
typename X::Vec sum8(typename X::Vec a, typename X::Vec b, typename X::Vec c) {
    return X::add16(X::add16(X::mullo16(a, X::splat16(54)), X::mullo16(b, X::splat16(183))),
                    X::mullo16(c, X::splat16(18)));
}

// 32-bit products of 16-bit lanes with w, the low and high four of each
// lane's eight.
template <typename X>
void product32(typename X::Vec v, int w, typename X::Vec *lo, typename X::Vec *hi) {
    const typename X::Vec k = X::splat16(w);
    const typename X::Vec l = X::mullo16(v, k), h = X::mulhiU16(v, k);
    *lo = X::lo16(l, h);
    *hi = X::hi16(l, h);
}

// 32-bit sums a * 54 + b * 183 + c * 18 of 16-bit lanes.
template <typename X>
void sum16(typename X::Vec a, typename X::Vec b, typename X::Vec c, typename X::Vec *lo, typename X::Vec *hi) {
    typename X::Vec al, ah, bl, bh, cl, ch;
    product32<X>(a, 54, &al, &ah);
    product32<X>(b, 183, &bl, &bh);
    product32<X>(c, 18, &cl, &ch);
    *lo = X::add32(X::add32(al, bl), cl);
    *hi = X::add32(X::add32(ah, bh), ch);
}

// 32-bit lanes of at most 65535 packed to 16 bits, in order.
template <typename X>
typename X::Vec pack32u(typename X::Vec lo, typename X::Vec hi) {
    const typename X::Vec bias = X::splat32(32768);
    return X::xor_(X::packs32(X::sub32(lo, bias), X::sub32(hi, bias)), X::splat16(0x8000));
}

template <typename X>
void grayRow8u8uVec(const unsigned char *a, const unsigned char *b, const unsigned char *c,
                    int step, unsigned char *dst, int n) {
    if (step != 1) return grayRow8u8uScalar(a, b, c, step, dst, n);
    constexpr int K = X::kBytes;
    int i = 0;
    for (; i + K <= n; i += K) {
        const typename X::Vec va = X::loadu(a + i), vb = X::loadu(b + i), vc = X::loadu(c + i);
        const typename X::Vec lo = X::srl16(sum8<X>(X::unpackLo8(va, X::zero()), X::unpackLo8(vb, X::zero()), X::unpackLo8(vc, X::zero())), 8);
        const typename X::Vec hi = X::srl16(sum8<X>(X::unpackHi8(va, X::zero()), X::unpackHi8(vb, X::zero()), X::unpackHi8(vc, X::zero())), 8);
        X::storeu(dst + i, X::packUs16(lo, hi));
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
        const typename X::Vec va = X::loadu(a + i), vb = X::loadu(b + i), vc = X::loadu(c + i);
        X::storeWide(dst + 2 * i, sum8<X>(X::unpackLo8(va, X::zero()), X::unpackLo8(vb, X::zero()), X::unpackLo8(vc, X::zero())),
                     sum8<X>(X::unpackHi8(va, X::zero()), X::unpackHi8(vb, X::zero()), X::unpackHi8(vc, X::zero())));
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
        typename X::Vec lo, hi;
        sum16<X>(X::loadu(a + 2 * i), X::loadu(b + 2 * i), X::loadu(c + 2 * i), &lo, &hi);
        X::storeu(dst + 2 * i, pack32u<X>(X::srl32(lo, 8), X::srl32(hi, 8)));
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
        typename X::Vec half[2];
        for (int h = 0; h < 2; ++h) {
            const ptrdiff_t at = 2 * static_cast<ptrdiff_t>(i) + h * X::kBytes;
            typename X::Vec lo, hi;
            sum16<X>(X::loadu(a + at), X::loadu(b + at), X::loadu(c + at), &lo, &hi);
            half[h] = X::packs32(X::srl32(lo, 16), X::srl32(hi, 16));
        }
        X::storeu(dst + i, X::narrow(half[0], half[1]));
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
        typename X::Vec half[2];
        for (int h = 0; h < 2; ++h) {
            const ptrdiff_t at = 2 * static_cast<ptrdiff_t>(i) + h * X::kBytes;
            const typename X::Vec s =
                X::add16(X::add16(X::mulhiU16(X::loadu(a + at), X::splat16(109)),
                                  X::mulhiU16(X::loadu(b + at), X::splat16(366))),
                         X::mulhiU16(X::loadu(c + at), X::splat16(37)));
            half[h] = X::srl16(s, 1);
        }
        X::storeu(dst + i, X::narrow(half[0], half[1]));
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
        const typename X::Vec v = X::loadu(g + i);
        const typename X::Vec lo = X::unpackLo8(v, X::zero()), hi = X::unpackHi8(v, X::zero());
        // The low 8 bits of (g * w) >> 8 are bits 8 to 15 of the product.
        for (int k = 0; k < 3; ++k) {
            const typename X::Vec wk = X::splat16(w[k]);
            X::storeu(out[k] + i, X::packUs16(X::srl16(X::mullo16(lo, wk), 8), X::srl16(X::mullo16(hi, wk), 8)));
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
        const typename X::Vec v = X::loadu(g + 2 * i);
        // Bits shift to shift + 15 of the 32-bit product.
        for (int k = 0; k < 3; ++k) {
            const typename X::Vec wk = X::splat16(w[k]);
            X::storeu(out[k] + 2 * i, X::or_(X::sll16(X::mulhiU16(v, wk), 16 - shift),
                                            X::srl16(X::mullo16(v, wk), shift)));
        }
    }
    spreadRow16uScalar(g + 2 * i, o1 + 2 * i, o2 + 2 * i, o3 + 2 * i, 1, n - i, w, shift);
}

#if defined(__AVX2__)
// Pixel order, 8u to 8u, steps 3 and 4 (three channels next to each other):
// 16 pixels at a time, each channel's bytes gathered from the step loads
// of 16 bytes by byte shuffles into one vector, then the plane rows' sums.
// The loads stay within the bytes of the row's last pixel's three channels
// (the rest goes through the scalar row).
template <int Step>
void grayPixels8u(const unsigned char *a, const unsigned char *b, const unsigned char *c,
                  const unsigned char *base, unsigned char *dst, int n) {
    const ptrdiff_t at[3] = {a - base, b - base, c - base};
    // mask[q][t]: byte i of channel q's vector from byte Step * i + q - 16 * t
    // of load t.
    __m128i mask[3][Step];
    for (int q = 0; q < 3; ++q)
        for (int t = 0; t < Step; ++t) {
            alignas(16) unsigned char m[16];
            for (int i = 0; i < 16; ++i) {
                const ptrdiff_t from = Step * i + at[q] - 16 * t;
                m[i] = from >= 0 && from < 16 ? static_cast<unsigned char>(from) : 0x80;
            }
            mask[q][t] = _mm_load_si128(reinterpret_cast<const __m128i *>(m));
        }
    const __m128i zero = _mm_setzero_si128();
    const ptrdiff_t last = static_cast<ptrdiff_t>(n - 1) * Step + 3;
    int i = 0;
    for (; static_cast<ptrdiff_t>(i + 16) * Step <= last; i += 16) {
        const unsigned char *p = base + static_cast<ptrdiff_t>(i) * Step;
        __m128i v[Step];
        for (int t = 0; t < Step; ++t) v[t] = _mm_loadu_si128(reinterpret_cast<const __m128i *>(p + 16 * t));
        __m128i ch[3];
        for (int q = 0; q < 3; ++q) {
            ch[q] = _mm_shuffle_epi8(v[0], mask[q][0]);
            for (int t = 1; t < Step; ++t) ch[q] = _mm_or_si128(ch[q], _mm_shuffle_epi8(v[t], mask[q][t]));
        }
        const __m128i lo = ColorSse2::srl16(sum8<ColorSse2>(_mm_unpacklo_epi8(ch[0], zero),
                                                            _mm_unpacklo_epi8(ch[1], zero),
                                                            _mm_unpacklo_epi8(ch[2], zero)), 8);
        const __m128i hi = ColorSse2::srl16(sum8<ColorSse2>(_mm_unpackhi_epi8(ch[0], zero),
                                                            _mm_unpackhi_epi8(ch[1], zero),
                                                            _mm_unpackhi_epi8(ch[2], zero)), 8);
        _mm_storeu_si128(reinterpret_cast<__m128i *>(dst + i), _mm_packus_epi16(lo, hi));
    }
    const ptrdiff_t k = static_cast<ptrdiff_t>(i) * Step;
    grayRow8u8uScalar(a + k, b + k, c + k, Step, dst + i, n - i);
}

// Pixel order, 8u spread, steps 3 and 4 (outputs side by side): each
// output channel of 16 pixels computed as in plane order, then placed into
// the pixels' bytes by byte shuffles; with step 4 the fourth byte of each
// pixel is written back as it was read. The stores stay within the bytes
// of the row's last pixel's three outputs.
template <int Step>
void spreadPixels8u(const unsigned char *g, unsigned char *o1, unsigned char *o2,
                    unsigned char *o3, unsigned char *base, int n, const uint16_t *w) {
    const ptrdiff_t at[3] = {o1 - base, o2 - base, o3 - base};
    // place[q][t]: byte j of store t from byte i of channel q's vector where
    // 16 * t + j is Step * i + q's place; keep[t]: the bytes no channel has.
    __m128i place[3][Step], keep[Step];
    for (int t = 0; t < Step; ++t) {
        alignas(16) unsigned char k[16];
        for (int j = 0; j < 16; ++j) k[j] = 0xFF;
        for (int q = 0; q < 3; ++q) {
            alignas(16) unsigned char m[16];
            for (int j = 0; j < 16; ++j) {
                const ptrdiff_t byte = 16 * t + j - at[q];
                const bool mine = byte >= 0 && byte % Step == 0 && byte / Step < 16;
                m[j] = mine ? static_cast<unsigned char>(byte / Step) : 0x80;
                if (mine) k[j] = 0;
            }
            place[q][t] = _mm_load_si128(reinterpret_cast<const __m128i *>(m));
        }
        keep[t] = _mm_load_si128(reinterpret_cast<const __m128i *>(k));
    }
    const __m128i zero = _mm_setzero_si128();
    const ptrdiff_t last = static_cast<ptrdiff_t>(n - 1) * Step + 3;
    int i = 0;
    for (; static_cast<ptrdiff_t>(i + 16) * Step <= last; i += 16) {
        const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i *>(g + i));
        const __m128i lo = _mm_unpacklo_epi8(v, zero), hi = _mm_unpackhi_epi8(v, zero);
        __m128i ch[3];
        // The low 8 bits of (g * w) >> 8 are bits 8 to 15 of the product.
        for (int q = 0; q < 3; ++q) {
            const __m128i wq = _mm_set1_epi16(static_cast<short>(w[q]));
            ch[q] = _mm_packus_epi16(_mm_srli_epi16(_mm_mullo_epi16(lo, wq), 8),
                                     _mm_srli_epi16(_mm_mullo_epi16(hi, wq), 8));
        }
        unsigned char *p = base + static_cast<ptrdiff_t>(i) * Step;
        for (int t = 0; t < Step; ++t) {
            __m128i out = _mm_or_si128(_mm_or_si128(_mm_shuffle_epi8(ch[0], place[0][t]),
                                                    _mm_shuffle_epi8(ch[1], place[1][t])),
                                       _mm_shuffle_epi8(ch[2], place[2][t]));
            if (Step == 4) {
                const __m128i old = _mm_loadu_si128(reinterpret_cast<const __m128i *>(p + 16 * t));
                out = _mm_or_si128(out, _mm_and_si128(old, keep[t]));
            }
            _mm_storeu_si128(reinterpret_cast<__m128i *>(p + 16 * t), out);
        }
    }
    const ptrdiff_t k = static_cast<ptrdiff_t>(i) * Step;
    spreadRow8uScalar(g + i, o1 + k, o2 + k, o3 + k, Step, n - i, w, 8);
}

inline void spreadRow8uPixels(const unsigned char *g, unsigned char *o1, unsigned char *o2,
                              unsigned char *o3, int step, int n, const uint16_t *w, int shift) {
    unsigned char *base = o1 < o2 ? (o1 < o3 ? o1 : o3) : (o2 < o3 ? o2 : o3);
    const ptrdiff_t p1 = o1 - base, p2 = o2 - base, p3 = o3 - base;
    const bool adjacent = p1 <= 2 && p2 <= 2 && p3 <= 2 && p1 != p2 && p2 != p3 && p1 != p3;
    if (adjacent && shift == 8 && step == 3) return spreadPixels8u<3>(g, o1, o2, o3, base, n, w);
    if (adjacent && shift == 8 && step == 4) return spreadPixels8u<4>(g, o1, o2, o3, base, n, w);
    spreadRow8uVec<ColorAvx2>(g, o1, o2, o3, step, n, w, shift);
}

inline void grayRow8u8uPixels(const unsigned char *a, const unsigned char *b,
                              const unsigned char *c, int step, unsigned char *dst, int n) {
    const unsigned char *base = a < b ? (a < c ? a : c) : (b < c ? b : c);
    const ptrdiff_t pa = a - base, pb = b - base, pc = c - base;
    const bool adjacent = pa <= 2 && pb <= 2 && pc <= 2 && pa != pb && pb != pc && pa != pc;
    if (adjacent && step == 3) return grayPixels8u<3>(a, b, c, base, dst, n);
    if (adjacent && step == 4) return grayPixels8u<4>(a, b, c, base, dst, n);
    grayRow8u8uVec<ColorAvx2>(a, b, c, step, dst, n);
}
#endif

template <typename X>
constexpr ColorForms vectorColorForms() {
    return ColorForms{grayRow8u8uVec<X>,       grayRow8u16uVec<X>,      grayRow16u16uVec<X>,
                      grayRow16u8uPixelVec<X>, grayRow16u8uPlaneVec<X>, spreadRow8uVec<X>,
                      spreadRow16uVec<X>};
}

}  // namespace
}  // namespace rmg

#endif
