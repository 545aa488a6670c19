// The basic vector operations of each instruction set, as traits types that
// the kernel templates of a family take (see core/rmgcpu.h for the forms):
//
//   Vec, kBytes                  the vector type and its size in bytes
//   zero(), splat8/16/32/64(x)   constants: 0, x in every lane
//   loadu(p), load(p)            unaligned and aligned loads
//   storeu(p, v), store(p, v)    unaligned and aligned stores
//   stream(p, v), fence()        a store past the caches (aligned), and the
//                                fence that orders such stores
//   and_, or_, xor_, andNot(a, b)  bitwise; andNot is ~a & b
//   blend(old, fresh, mask)      fresh where the mask's bytes are 0xFF, old
//                                where they are 0
//   add16, sub16, add32          lane arithmetic, wrapping
//   mullo16, mulhiU16            low half, unsigned high half of 16-bit
//                                products
//   srli16by8                    16-bit lanes shifted right by 8
//   unpackLo8/Hi8, packUs16      bytes to words and back (within each
//                                16-byte lane, as the SSE2 instructions do)
//   addsU8, subsU8, addsU16, subsU16, addsS8, subsS8, addsS16, subsS16
//                                saturating arithmetic
//   cmpGt32(a, b)                all ones in the 32-bit lanes where a > b
//
// Include this header only from the files compiled for one instruction set
// (*_sse2.cpp, *_avx2.cpp, *_avx512.cpp): a type is defined where the
// compiler's options provide its instructions (Sse2Vec in all three,
// Avx2Vec with -mavx2, Avx512Vec with -mavx512bw), and everything lives in
// an anonymous namespace, so each file keeps its own copy. A family derives
// its traits from one of these and adds what it needs.
#ifndef RMG_CORE_RMGVEC_H
#define RMG_CORE_RMGVEC_H

#include <cstddef>
#include <cstdint>

#include "core/rmgcpu.h"

#if RMG_CPU_X86
#include <immintrin.h>

namespace rmg {
namespace {

#if defined(__SSE2__)
struct Sse2Vec {
    using Vec = __m128i;
    static constexpr size_t kBytes = 16;

    static Vec zero() { return _mm_setzero_si128(); }
    static Vec splat8(uint32_t x) { return _mm_set1_epi8(static_cast<char>(x)); }
    static Vec splat16(uint32_t x) { return _mm_set1_epi16(static_cast<short>(x)); }
    static Vec splat32(uint32_t x) { return _mm_set1_epi32(static_cast<int>(x)); }
    static Vec splat64(uint64_t x) { return _mm_set1_epi64x(static_cast<long long>(x)); }
    static Vec loadu(const unsigned char *p) {
        return _mm_loadu_si128(reinterpret_cast<const __m128i *>(p));
    }
    static Vec load(const unsigned char *p) {
        return _mm_load_si128(reinterpret_cast<const __m128i *>(p));
    }
    static void storeu(unsigned char *p, Vec v) { _mm_storeu_si128(reinterpret_cast<__m128i *>(p), v); }
    static void store(unsigned char *p, Vec v) { _mm_store_si128(reinterpret_cast<__m128i *>(p), v); }
    static void stream(unsigned char *p, Vec v) { _mm_stream_si128(reinterpret_cast<__m128i *>(p), v); }
    static void fence() { _mm_sfence(); }
    static Vec and_(Vec a, Vec b) { return _mm_and_si128(a, b); }
    static Vec or_(Vec a, Vec b) { return _mm_or_si128(a, b); }
    static Vec xor_(Vec a, Vec b) { return _mm_xor_si128(a, b); }
    static Vec andNot(Vec a, Vec b) { return _mm_andnot_si128(a, b); }
    static Vec blend(Vec old, Vec fresh, Vec mask) {
        return _mm_or_si128(_mm_and_si128(mask, fresh), _mm_andnot_si128(mask, old));
    }
    static Vec add16(Vec a, Vec b) { return _mm_add_epi16(a, b); }
    static Vec sub16(Vec a, Vec b) { return _mm_sub_epi16(a, b); }
    static Vec add32(Vec a, Vec b) { return _mm_add_epi32(a, b); }
    static Vec mullo16(Vec a, Vec b) { return _mm_mullo_epi16(a, b); }
    static Vec mulhiU16(Vec a, Vec b) { return _mm_mulhi_epu16(a, b); }
    static Vec srli16by8(Vec a) { return _mm_srli_epi16(a, 8); }
    static Vec unpackLo8(Vec a, Vec b) { return _mm_unpacklo_epi8(a, b); }
    static Vec unpackHi8(Vec a, Vec b) { return _mm_unpackhi_epi8(a, b); }
    static Vec packUs16(Vec a, Vec b) { return _mm_packus_epi16(a, b); }
    static Vec addsU8(Vec a, Vec b) { return _mm_adds_epu8(a, b); }
    static Vec subsU8(Vec a, Vec b) { return _mm_subs_epu8(a, b); }
    static Vec addsU16(Vec a, Vec b) { return _mm_adds_epu16(a, b); }
    static Vec subsU16(Vec a, Vec b) { return _mm_subs_epu16(a, b); }
    static Vec addsS8(Vec a, Vec b) { return _mm_adds_epi8(a, b); }
    static Vec subsS8(Vec a, Vec b) { return _mm_subs_epi8(a, b); }
    static Vec addsS16(Vec a, Vec b) { return _mm_adds_epi16(a, b); }
    static Vec subsS16(Vec a, Vec b) { return _mm_subs_epi16(a, b); }
    static Vec cmpGt32(Vec a, Vec b) { return _mm_cmpgt_epi32(a, b); }
};
#endif

#if defined(__AVX2__)
struct Avx2Vec {
    using Vec = __m256i;
    static constexpr size_t kBytes = 32;

    static Vec zero() { return _mm256_setzero_si256(); }
    static Vec splat8(uint32_t x) { return _mm256_set1_epi8(static_cast<char>(x)); }
    static Vec splat16(uint32_t x) { return _mm256_set1_epi16(static_cast<short>(x)); }
    static Vec splat32(uint32_t x) { return _mm256_set1_epi32(static_cast<int>(x)); }
    static Vec splat64(uint64_t x) { return _mm256_set1_epi64x(static_cast<long long>(x)); }
    static Vec loadu(const unsigned char *p) {
        return _mm256_loadu_si256(reinterpret_cast<const __m256i *>(p));
    }
    static Vec load(const unsigned char *p) {
        return _mm256_load_si256(reinterpret_cast<const __m256i *>(p));
    }
    static void storeu(unsigned char *p, Vec v) {
        _mm256_storeu_si256(reinterpret_cast<__m256i *>(p), v);
    }
    static void store(unsigned char *p, Vec v) {
        _mm256_store_si256(reinterpret_cast<__m256i *>(p), v);
    }
    static void stream(unsigned char *p, Vec v) {
        _mm256_stream_si256(reinterpret_cast<__m256i *>(p), v);
    }
    static void fence() { _mm_sfence(); }
    static Vec and_(Vec a, Vec b) { return _mm256_and_si256(a, b); }
    static Vec or_(Vec a, Vec b) { return _mm256_or_si256(a, b); }
    static Vec xor_(Vec a, Vec b) { return _mm256_xor_si256(a, b); }
    static Vec andNot(Vec a, Vec b) { return _mm256_andnot_si256(a, b); }
    static Vec blend(Vec old, Vec fresh, Vec mask) { return _mm256_blendv_epi8(old, fresh, mask); }
    static Vec add16(Vec a, Vec b) { return _mm256_add_epi16(a, b); }
    static Vec sub16(Vec a, Vec b) { return _mm256_sub_epi16(a, b); }
    static Vec add32(Vec a, Vec b) { return _mm256_add_epi32(a, b); }
    static Vec mullo16(Vec a, Vec b) { return _mm256_mullo_epi16(a, b); }
    static Vec mulhiU16(Vec a, Vec b) { return _mm256_mulhi_epu16(a, b); }
    static Vec srli16by8(Vec a) { return _mm256_srli_epi16(a, 8); }
    static Vec unpackLo8(Vec a, Vec b) { return _mm256_unpacklo_epi8(a, b); }
    static Vec unpackHi8(Vec a, Vec b) { return _mm256_unpackhi_epi8(a, b); }
    static Vec packUs16(Vec a, Vec b) { return _mm256_packus_epi16(a, b); }
    static Vec addsU8(Vec a, Vec b) { return _mm256_adds_epu8(a, b); }
    static Vec subsU8(Vec a, Vec b) { return _mm256_subs_epu8(a, b); }
    static Vec addsU16(Vec a, Vec b) { return _mm256_adds_epu16(a, b); }
    static Vec subsU16(Vec a, Vec b) { return _mm256_subs_epu16(a, b); }
    static Vec addsS8(Vec a, Vec b) { return _mm256_adds_epi8(a, b); }
    static Vec subsS8(Vec a, Vec b) { return _mm256_subs_epi8(a, b); }
    static Vec addsS16(Vec a, Vec b) { return _mm256_adds_epi16(a, b); }
    static Vec subsS16(Vec a, Vec b) { return _mm256_subs_epi16(a, b); }
    static Vec cmpGt32(Vec a, Vec b) { return _mm256_cmpgt_epi32(a, b); }
};
#endif

#if defined(__AVX512F__) && defined(__AVX512BW__)
struct Avx512Vec {
    using Vec = __m512i;
    static constexpr size_t kBytes = 64;

    static Vec zero() { return _mm512_setzero_si512(); }
    static Vec splat8(uint32_t x) { return _mm512_set1_epi8(static_cast<char>(x)); }
    static Vec splat16(uint32_t x) { return _mm512_set1_epi16(static_cast<short>(x)); }
    static Vec splat32(uint32_t x) { return _mm512_set1_epi32(static_cast<int>(x)); }
    static Vec splat64(uint64_t x) { return _mm512_set1_epi64(static_cast<long long>(x)); }
    static Vec loadu(const unsigned char *p) { return _mm512_loadu_si512(p); }
    static Vec load(const unsigned char *p) { return _mm512_load_si512(p); }
    static void storeu(unsigned char *p, Vec v) { _mm512_storeu_si512(p, v); }
    static void store(unsigned char *p, Vec v) { _mm512_store_si512(p, v); }
    static void stream(unsigned char *p, Vec v) {
        _mm512_stream_si512(reinterpret_cast<__m512i *>(p), v);
    }
    static void fence() { _mm_sfence(); }
    static Vec and_(Vec a, Vec b) { return _mm512_and_si512(a, b); }
    static Vec or_(Vec a, Vec b) { return _mm512_or_si512(a, b); }
    static Vec xor_(Vec a, Vec b) { return _mm512_xor_si512(a, b); }
    // ~a & b as a ternary function (0x0C: a clear, b set); the compiler's
    // own andnot intrinsic draws a false uninitialised-value warning.
    static Vec andNot(Vec a, Vec b) { return _mm512_ternarylogic_epi32(a, b, b, 0x0C); }
    // Bitwise mask ? fresh : old in one instruction.
    static Vec blend(Vec old, Vec fresh, Vec mask) {
        return _mm512_ternarylogic_epi32(mask, fresh, old, 0xCA);
    }
    static Vec add16(Vec a, Vec b) { return _mm512_add_epi16(a, b); }
    static Vec sub16(Vec a, Vec b) { return _mm512_sub_epi16(a, b); }
    static Vec add32(Vec a, Vec b) { return _mm512_add_epi32(a, b); }
    static Vec mullo16(Vec a, Vec b) { return _mm512_mullo_epi16(a, b); }
    static Vec mulhiU16(Vec a, Vec b) { return _mm512_mulhi_epu16(a, b); }
    static Vec srli16by8(Vec a) { return _mm512_srli_epi16(a, 8); }
    static Vec unpackLo8(Vec a, Vec b) { return _mm512_unpacklo_epi8(a, b); }
    static Vec unpackHi8(Vec a, Vec b) { return _mm512_unpackhi_epi8(a, b); }
    static Vec packUs16(Vec a, Vec b) { return _mm512_packus_epi16(a, b); }
    static Vec addsU8(Vec a, Vec b) { return _mm512_adds_epu8(a, b); }
    static Vec subsU8(Vec a, Vec b) { return _mm512_subs_epu8(a, b); }
    static Vec addsU16(Vec a, Vec b) { return _mm512_adds_epu16(a, b); }
    static Vec subsU16(Vec a, Vec b) { return _mm512_subs_epu16(a, b); }
    static Vec addsS8(Vec a, Vec b) { return _mm512_adds_epi8(a, b); }
    static Vec subsS8(Vec a, Vec b) { return _mm512_subs_epi8(a, b); }
    static Vec addsS16(Vec a, Vec b) { return _mm512_adds_epi16(a, b); }
    static Vec subsS16(Vec a, Vec b) { return _mm512_subs_epi16(a, b); }
    // The comparison gives a lane mask; all ones where it is set.
    static Vec cmpGt32(Vec a, Vec b) {
        return _mm512_maskz_set1_epi32(_mm512_cmpgt_epi32_mask(a, b), -1);
    }
};
#endif

}  // namespace
}  // namespace rmg

#endif  // RMG_CPU_X86

#endif
