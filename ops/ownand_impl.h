// The code of the logical kernels shared by their forms. Included by
// ops/ownand.cpp and by the files compiled for one instruction set;
// everything here lives in an anonymous namespace so that each of those
// files keeps its own copy, compiled with its own options (see
// core/rmgcpu.h).
//
// The vector templates take a traits type of core/rmgvec.h.
#ifndef RMG_OPS_OWNAND_IMPL_H
#define RMG_OPS_OWNAND_IMPL_H

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "ops/ownand.h"

namespace rmg {
namespace {

// Byte j (0..7) of a 64-bit word, the low byte first.
inline unsigned char byteOf(uint64_t word, size_t j) {
    return static_cast<unsigned char>(word >> (8 * (j & 7)));
}

// The pattern seen from `shift` bytes further on: its bytes rotated so that
// byte (shift mod 8) comes first.
inline uint64_t rotatePattern(uint64_t pattern, size_t shift) {
    const unsigned bits = static_cast<unsigned>(shift & 7) * 8u;
    return bits == 0 ? pattern : (pattern >> bits) | (pattern << (64u - bits));
}

// The pattern as an 8-byte word in memory order, whatever the byte order of
// the processor.
inline uint64_t memoryWord(uint64_t pattern) {
    unsigned char bytes[8];
    for (size_t j = 0; j < 8; ++j) bytes[j] = byteOf(pattern, j);
    uint64_t word;
    std::memcpy(&word, bytes, 8);
    return word;
}

inline uint64_t load64(const unsigned char *p) {
    uint64_t w;
    std::memcpy(&w, p, 8);
    return w;
}
inline void store64(unsigned char *p, uint64_t w) { std::memcpy(p, &w, 8); }

// The plain pattern loop: 8 bytes at a time, then single bytes.
inline void andPatternLoop(const unsigned char *src, unsigned char *dst, size_t n,
                           uint64_t pattern) {
    const uint64_t word = memoryWord(pattern);
    size_t k = 0;
    for (; k + 8 <= n; k += 8) store64(dst + k, load64(src + k) & word);
    for (; k < n; ++k) dst[k] = static_cast<unsigned char>(src[k] & byteOf(pattern, k));
}

// The plain pattern loop over rows, each row's pattern seen from its
// distance to the first row.
inline void andPatternRows(const unsigned char *src, unsigned char *dst, size_t n, size_t rows,
                           ptrdiff_t srcStep, ptrdiff_t dstStep, uint64_t pattern) {
    for (size_t r = 0; r < rows; ++r) {
        const ptrdiff_t at = static_cast<ptrdiff_t>(r) * dstStep;
        andPatternLoop(src + static_cast<ptrdiff_t>(r) * srcStep, dst + at, n,
                       rotatePattern(pattern, static_cast<size_t>(at)));
    }
}

template <int Op>
inline uint64_t byteOp64(uint64_t a, uint64_t b) {
    return Op == kByteAnd ? (a & b) : Op == kByteOr ? (a | b) : (a ^ b);
}

// The plain byte loop: 8 bytes at a time, then single bytes. Each step
// reads its bytes of both sources before it writes the destination's.
template <int Op>
inline void byteOpLoop(const unsigned char *a, const unsigned char *b, unsigned char *d, size_t n) {
    size_t k = 0;
    for (; k + 8 <= n; k += 8) store64(d + k, byteOp64<Op>(load64(a + k), load64(b + k)));
    for (; k < n; ++k) d[k] = static_cast<unsigned char>(byteOp64<Op>(a[k], b[k]));
}

inline void byteOpScalar(int op, const unsigned char *a, const unsigned char *b, unsigned char *d,
                         size_t n, size_t rows, ptrdiff_t aStep, ptrdiff_t bStep, ptrdiff_t dStep) {
    for (size_t r = 0; r < rows; ++r) {
        const auto i = static_cast<ptrdiff_t>(r);
        if (op == kByteAnd)
            byteOpLoop<kByteAnd>(a + i * aStep, b + i * bStep, d + i * dStep, n);
        else if (op == kByteOr)
            byteOpLoop<kByteOr>(a + i * aStep, b + i * bStep, d + i * dStep, n);
        else
            byteOpLoop<kByteXor>(a + i * aStep, b + i * bStep, d + i * dStep, n);
    }
}

// The sources of the one-channel kernels: one row ANDed with the mask, or
// two rows ANDed with each other (their mask all ones). `byte` gives the
// result for byte t of the span, `lane` its place in its element.
struct MaskSource {
    const unsigned char *s;
    ptrdiff_t step;
    uint32_t mask;
    MaskSource row(size_t r) const { return {s + static_cast<ptrdiff_t>(r) * step, step, mask}; }
    unsigned char byte(size_t t, size_t lane) const {
        return static_cast<unsigned char>(s[t] & byteOf(mask, lane));
    }
};

struct PairSource {
    const unsigned char *a;
    const unsigned char *b;
    ptrdiff_t aStep;
    ptrdiff_t bStep;
    uint32_t mask;  // all ones
    PairSource row(size_t r) const {
        const auto i = static_cast<ptrdiff_t>(r);
        return {a + i * aStep, b + i * bStep, aStep, bStep, mask};
    }
    unsigned char byte(size_t t, size_t) const { return static_cast<unsigned char>(a[t] & b[t]); }
};

// One channel of a row, byte by byte: the bytes from `first` to `last`
// (offsets from the first element) that belong to the channel.
template <class Src>
void channelBytes(const Src &src, unsigned char *dst, size_t first, size_t last, ptrdiff_t stride,
                  int size) {
    const auto period = static_cast<size_t>(stride);
    size_t lane = first % period;
    for (size_t t = first; t < last; ++t) {
        if (lane < static_cast<size_t>(size)) dst[t] = src.byte(t, lane);
        if (++lane == period) lane = 0;
    }
}

// `count` elements of Size bytes, `stride` bytes apart, of one row.
template <int Size, class Src>
void channelElements(const Src &src, unsigned char *dst, size_t count, ptrdiff_t stride) {
    for (size_t i = 0; i < count; ++i) {
        const size_t at = i * static_cast<size_t>(stride);
        for (size_t j = 0; j < Size; ++j) dst[at + j] = src.byte(at + j, j);
    }
}

template <class Src>
void channelLoop(const Src &src, unsigned char *dst, size_t count, size_t rows, ptrdiff_t dstStep,
                 ptrdiff_t stride, int size) {
    for (size_t r = 0; r < rows; ++r) {
        const Src s = src.row(r);
        unsigned char *d = dst + static_cast<ptrdiff_t>(r) * dstStep;
        if (size == 1)
            channelElements<1>(s, d, count, stride);
        else if (size == 2)
            channelElements<2>(s, d, count, stride);
        else
            channelElements<4>(s, d, count, stride);
    }
}

inline void andChannelLoop(const unsigned char *src, unsigned char *dst, size_t count, size_t rows,
                           ptrdiff_t srcStep, ptrdiff_t dstStep, ptrdiff_t stride, int size,
                           uint32_t mask) {
    channelLoop(MaskSource{src, srcStep, mask}, dst, count, rows, dstStep, stride, size);
}

inline void andPairLoop(const unsigned char *a, const unsigned char *b, unsigned char *d,
                        size_t count, size_t rows, ptrdiff_t aStep, ptrdiff_t bStep,
                        ptrdiff_t dStep, ptrdiff_t stride, int size) {
    channelLoop(PairSource{a, b, aStep, bStep, 0xFFFFFFFFu}, d, count, rows, dStep, stride, size);
}

#if RMG_CPU_X86

// From here on the code is for x86 only (little-endian words).

// From this many bytes of a call on the destination is written with
// stores that bypass the caches: the work is far larger than the
// last-level cache, so the lines would be evicted unread, and a normal
// store first reads each line it writes.
constexpr size_t kStreamBytes = size_t{16} << 20;

inline size_t misalignment(const void *p, size_t alignment) {
    return static_cast<size_t>(reinterpret_cast<uintptr_t>(p) & (alignment - 1));
}

// Bytes from p up to the next multiple of the vector size.
template <class V>
size_t headBytes(const void *p) {
    return (V::kBytes - misalignment(p, V::kBytes)) & (V::kBytes - 1);
}

// The aligned middle of a run: from offset k, where the destination is
// aligned to the vector, while whole vectors remain, four a pass: the
// vector `at(offset)` stored at dst + offset, past the caches when Stream
// (the caller fences). Returns the offset where it stopped.
template <class V, bool Stream, class At>
size_t alignedRun(unsigned char *dst, size_t k, size_t n, const At &at) {
    constexpr size_t kB = V::kBytes;
    for (; k + 4 * kB <= n; k += 4 * kB) {
        const typename V::Vec r0 = at(k);
        const typename V::Vec r1 = at(k + kB);
        const typename V::Vec r2 = at(k + 2 * kB);
        const typename V::Vec r3 = at(k + 3 * kB);
        if (Stream) {
            V::stream(dst + k, r0);
            V::stream(dst + k + kB, r1);
            V::stream(dst + k + 2 * kB, r2);
            V::stream(dst + k + 3 * kB, r3);
        } else {
            V::store(dst + k, r0);
            V::store(dst + k + kB, r1);
            V::store(dst + k + 2 * kB, r2);
            V::store(dst + k + 3 * kB, r3);
        }
    }
    for (; k + kB <= n; k += kB) V::store(dst + k, at(k));
    return k;
}

// One row of the pattern kernel with vectors: an unaligned vector at each
// end and aligned vectors between them; rows shorter than a vector take the
// plain loop. The source may have any alignment. The end vectors overlap
// the aligned ones, which is harmless: ANDing with the pattern gives the
// same byte however often it is applied, and each vector reads its source
// before it writes, so the source may also be the destination.
template <class V, bool Stream>
void andPatternRow(const unsigned char *src, unsigned char *dst, size_t n, uint64_t pattern) {
    constexpr size_t kB = V::kBytes;
    if (n < kB) {
        andPatternLoop(src, dst, n, pattern);
        return;
    }
    V::storeu(dst, V::and_(V::loadu(src), V::splat64(pattern)));
    size_t k = headBytes<V>(dst);
    const typename V::Vec p = V::splat64(rotatePattern(pattern, k));
    alignedRun<V, Stream>(dst, k, n, [&](size_t at) { return V::and_(V::loadu(src + at), p); });
    const size_t last = n - kB;
    V::storeu(dst + last, V::and_(V::loadu(src + last), V::splat64(rotatePattern(pattern, last))));
}

template <class V, bool Stream>
void andPatternRowsOf(const unsigned char *src, unsigned char *dst, size_t n, size_t rows,
                      ptrdiff_t srcStep, ptrdiff_t dstStep, uint64_t pattern) {
    for (size_t r = 0; r < rows; ++r) {
        const ptrdiff_t at = static_cast<ptrdiff_t>(r) * dstStep;
        andPatternRow<V, Stream>(src + static_cast<ptrdiff_t>(r) * srcStep, dst + at, n,
                                 rotatePattern(pattern, static_cast<size_t>(at)));
    }
    if (Stream) V::fence();
}

template <class V>
void andPatternVector(const unsigned char *src, unsigned char *dst, size_t n, size_t rows,
                      ptrdiff_t srcStep, ptrdiff_t dstStep, uint64_t pattern) {
    if (n * rows >= kStreamBytes)
        andPatternRowsOf<V, true>(src, dst, n, rows, srcStep, dstStep, pattern);
    else
        andPatternRowsOf<V, false>(src, dst, n, rows, srcStep, dstStep, pattern);
}

template <class V, int Op>
inline typename V::Vec vecOp(typename V::Vec a, typename V::Vec b) {
    return Op == kByteAnd ? V::and_(a, b) : Op == kByteOr ? V::or_(a, b) : V::xor_(a, b);
}

// One row of the byte kernels with vectors. AND and OR in the scheme of
// the pattern kernel, with unaligned vectors at the ends: applying them
// twice gives the same byte, also where the destination is one of the
// sources. XOR would not, so its ends go through the plain loop.
template <class V, int Op, bool Stream>
void byteOpRow(const unsigned char *a, const unsigned char *b, unsigned char *d, size_t n) {
    constexpr size_t kB = V::kBytes;
    auto at = [&](size_t k) { return vecOp<V, Op>(V::loadu(a + k), V::loadu(b + k)); };
    if (Op != kByteXor && n >= kB) {
        V::storeu(d, at(0));
        alignedRun<V, Stream>(d, headBytes<V>(d), n, at);
        V::storeu(d + n - kB, at(n - kB));
        return;
    }
    if (n < 2 * kB) {
        byteOpLoop<Op>(a, b, d, n);
        return;
    }
    size_t k = headBytes<V>(d);
    byteOpLoop<Op>(a, b, d, k);
    k = alignedRun<V, Stream>(d, k, n, at);
    byteOpLoop<Op>(a + k, b + k, d + k, n - k);
}

template <class V, int Op, bool Stream>
void byteOpRowsOf(const unsigned char *a, const unsigned char *b, unsigned char *d, size_t n,
                  size_t rows, ptrdiff_t aStep, ptrdiff_t bStep, ptrdiff_t dStep) {
    for (size_t r = 0; r < rows; ++r) {
        const auto i = static_cast<ptrdiff_t>(r);
        byteOpRow<V, Op, Stream>(a + i * aStep, b + i * bStep, d + i * dStep, n);
    }
    if (Stream) V::fence();
}

template <class V, int Op>
void byteOpRuns(const unsigned char *a, const unsigned char *b, unsigned char *d, size_t n,
                size_t rows, ptrdiff_t aStep, ptrdiff_t bStep, ptrdiff_t dStep) {
    if (n * rows >= kStreamBytes)
        byteOpRowsOf<V, Op, true>(a, b, d, n, rows, aStep, bStep, dStep);
    else
        byteOpRowsOf<V, Op, false>(a, b, d, n, rows, aStep, bStep, dStep);
}

template <class V>
void byteOpVector(int op, const unsigned char *a, const unsigned char *b, unsigned char *d,
                  size_t n, size_t rows, ptrdiff_t aStep, ptrdiff_t bStep, ptrdiff_t dStep) {
    if (op == kByteAnd)
        byteOpRuns<V, kByteAnd>(a, b, d, n, rows, aStep, bStep, dStep);
    else if (op == kByteOr)
        byteOpRuns<V, kByteOr>(a, b, d, n, rows, aStep, bStep, dStep);
    else
        byteOpRuns<V, kByteXor>(a, b, d, n, rows, aStep, bStep, dStep);
}

// A source's vector at offset `at` of the span.
template <class V>
typename V::Vec sourceVec(const MaskSource &src, size_t at) {
    return V::loadu(src.s + at);
}
template <class V>
typename V::Vec sourceVec(const PairSource &src, size_t at) {
    return V::and_(V::loadu(src.a + at), V::loadu(src.b + at));
}

// The widest pixel that the vector form of the one-channel kernels takes.
constexpr size_t kWidestPixel = 32;

// The masks of a vector of the one-channel kernels: the channel's bytes,
// and those bytes of the element mask.
template <class V>
struct LaneMasks {
    typename V::Vec channel;
    typename V::Vec value;
};

// One channel with vectors. When three vectors hold a whole number of
// pixels of at most kWidestPixel bytes (strides of 1, 2, 3, 4, 6, 8, 12,
// 16, 24 and, for AVX2 and AVX-512, 32 bytes: among them every 1 to 4 channels of 1, 2
// or 4 bytes), each vector of the row's span is read, the channel's bytes
// replaced by their result, and the vector written back: the other bytes
// get their own values again. Aligned vectors fill the middle, and an
// unaligned vector stands at each end of the span; where they overlap the
// bytes are worked out twice, which gives the same bytes, also when the
// destination is one of the sources. Shorter spans and other strides take
// the plain loop.
template <class V, class Src>
void channelVector(const Src &src, unsigned char *dst, size_t count, size_t rows, ptrdiff_t dstStep,
                   ptrdiff_t stride, int size) {
    constexpr size_t kB = V::kBytes;
    constexpr size_t kPass = 3 * kB;
    if (count == 0) return;
    const auto period = static_cast<size_t>(stride);
    const size_t span = (count - 1) * period + static_cast<size_t>(size);
    if (stride < size || period > kWidestPixel || kPass % period != 0 || span < kB) {
        channelLoop(src, dst, count, rows, dstStep, stride, size);
        return;
    }
    // The channel's bytes and their mask from phase 0 of a pixel, long
    // enough for three vectors read from any phase below the stride.
    alignas(64) unsigned char inChannel[kPass + kWidestPixel];
    alignas(64) unsigned char masked[kPass + kWidestPixel];
    for (size_t t = 0; t < sizeof inChannel; ++t) {
        const size_t lane = t % period;
        inChannel[t] = lane < static_cast<size_t>(size) ? 0xFF : 0;
        masked[t] = lane < static_cast<size_t>(size) ? byteOf(src.mask, lane) : 0;
    }
    auto masks = [&](size_t at, size_t pass) {
        return LaneMasks<V>{V::loadu(inChannel + at % period + pass * kB),
                            V::loadu(masked + at % period + pass * kB)};
    };
    const size_t last = span - kB;
    const auto lastMasks = masks(last, 0);
    const auto firstMasks = masks(0, 0);
    for (size_t r = 0; r < rows; ++r) {
        const Src s = src.row(r);
        unsigned char *d = dst + static_cast<ptrdiff_t>(r) * dstStep;
        auto blend = [&](size_t at, const LaneMasks<V> &m) {
            return V::or_(V::andNot(m.channel, V::loadu(d + at)),
                          V::and_(sourceVec<V>(s, at), m.value));
        };
        V::storeu(d, blend(0, firstMasks));
        const size_t first = headBytes<V>(d);
        const auto p0 = masks(first, 0);
        const auto p1 = masks(first, 1);
        const auto p2 = masks(first, 2);
        size_t k = first;
        for (; k + kPass <= span; k += kPass) {
            V::store(d + k, blend(k, p0));
            V::store(d + k + kB, blend(k + kB, p1));
            V::store(d + k + 2 * kB, blend(k + 2 * kB, p2));
        }
        // Fewer than three vectors remain; they continue the period from p0.
        if (k + kB <= span) {
            V::store(d + k, blend(k, p0));
            k += kB;
        }
        if (k + kB <= span) V::store(d + k, blend(k, p1));
        V::storeu(d + last, blend(last, lastMasks));
    }
}

// One channel AND a mask. Elements that follow each other without a gap
// (stride equal to size) are a pattern run, which needn't read the
// destination.
template <class V>
void andChannelVector(const unsigned char *src, unsigned char *dst, size_t count, size_t rows,
                      ptrdiff_t srcStep, ptrdiff_t dstStep, ptrdiff_t stride, int size,
                      uint32_t mask) {
    if (stride != size) {
        channelVector<V>(MaskSource{src, srcStep, mask}, dst, count, rows, dstStep, stride, size);
        return;
    }
    uint64_t pattern = mask;
    if (size == 1) pattern = (mask & 0xFFu) * 0x0101010101010101ull;
    if (size == 2) pattern = (mask & 0xFFFFu) * 0x0001000100010001ull;
    if (size == 4) pattern = (mask & 0xFFFFFFFFull) * 0x0000000100000001ull;
    // Each row's pattern starts at its own first element.
    for (size_t r = 0; r < rows; ++r)
        andPatternVector<V>(src + static_cast<ptrdiff_t>(r) * srcStep,
                            dst + static_cast<ptrdiff_t>(r) * dstStep,
                            count * static_cast<size_t>(size), 1, 0, 0, pattern);
}

template <class V>
void andPairVector(const unsigned char *a, const unsigned char *b, unsigned char *d, size_t count,
                   size_t rows, ptrdiff_t aStep, ptrdiff_t bStep, ptrdiff_t dStep, ptrdiff_t stride,
                   int size) {
    channelVector<V>(PairSource{a, b, aStep, bStep, 0xFFFFFFFFu}, d, count, rows, dStep, stride,
                     size);
}

template <class V>
constexpr AndForms vectorAndForms() {
    return AndForms{andPatternVector<V>, byteOpVector<V>, andChannelVector<V>, andPairVector<V>};
}

#endif  // RMG_CPU_X86

}  // namespace
}  // namespace rmg

#endif
