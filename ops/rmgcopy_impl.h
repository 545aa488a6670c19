// The copy and swap kernels' code shared by their forms. Included by
// ops/rmgcopy.cpp and by the files compiled for one instruction set;
// everything here lives in an anonymous namespace so that each of those
// files keeps its own copy, compiled with its own options (see
// core/rmgcpu.h).
//
// The loops that define the results (and serve every form where the runs
// share memory) come first; the vector templates follow. They take a traits
// type V of the including file, derived from core/rmgvec.h for
//   Vec, kBytes                 the vector type and its size in bytes
//   loadu(p), storeu(p, v)      unaligned load and store
//   store(p, v)                 aligned store
//   stream(p, v)                aligned store past the caches
// and adding
//   storeMasked(p, mask, v)     v into the bytes at p where mask bytes are
//                               0xFF; the others keep their values
//   copyShort(s, d, n)          a copy of n bytes, n below kBytes
//   swapShort(a, b, n)          a swap of n bytes, n below kBytes
// and, for the channel gathers and scatters, a type L of 16-byte lanes (see
// Lanes256 below), or void where the instruction set has no byte shuffle.
#ifndef RMG_OPS_RMGCOPY_IMPL_H
#define RMG_OPS_RMGCOPY_IMPL_H

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

#include "core/rmgcpu.h"
#include "ops/rmgcopy.h"
#include "ops/rmgfill.h"
#include "ops/rmgfill_impl.h"

#if RMG_CPU_X86
#include <emmintrin.h>
#endif
#if defined(__AVX2__)
#include <immintrin.h>
#endif

namespace rmg {
namespace {

// True when the byte ranges [a, a + aBytes) and [b, b + bBytes) share a byte.
inline bool spansOverlap(const void *a, size_t aBytes, const void *b, size_t bBytes) {
    const auto x = reinterpret_cast<uintptr_t>(a);
    const auto y = reinterpret_cast<uintptr_t>(b);
    return x < y + bBytes && y < x + aBytes;
}

// Bytes from the first byte of element 0 to the last byte of element
// count - 1 (count at least 1).
inline size_t stridedSpan(size_t count, ptrdiff_t stride, int size) {
    return (count - 1) * static_cast<size_t>(stride) + static_cast<size_t>(size);
}

// The copy loop from low to high addresses, for any runs. Where the
// destination starts inside the source, byte i of the destination reads a
// byte the loop wrote `distance` bytes before: the result repeats the
// source's first `distance` bytes. In every other case the loop reads only
// bytes it has not written yet, which is what memmove gives.
inline void copyForward(const unsigned char *src, unsigned char *dst, size_t count) {
    if (dst <= src || dst >= src + count) {
        std::memmove(dst, src, count);
        return;
    }
    const auto distance = static_cast<size_t>(dst - src);
    std::memcpy(dst, src, distance);
    // The written part is a whole number of periods, doubled each pass.
    for (size_t done = distance; done < count;) {
        const size_t part = done < count - done ? done : count - done;
        std::memcpy(dst + done, dst, part);
        done += part;
    }
}

// The swap loop from low to high addresses. Runs that share memory take
// the byte loop itself; others go eight bytes at a time.
inline void swapForward(unsigned char *first, unsigned char *second, size_t count) {
    size_t i = 0;
    if (!spansOverlap(first, count, second, count)) {
        for (; i + 8 <= count; i += 8) {
            uint64_t a, b;
            std::memcpy(&a, first + i, 8);
            std::memcpy(&b, second + i, 8);
            std::memcpy(first + i, &b, 8);
            std::memcpy(second + i, &a, 8);
        }
    }
    for (; i < count; ++i) {
        const unsigned char t = first[i];
        first[i] = second[i];
        second[i] = t;
    }
}

// The element loop: element i is read whole, then written whole.
template <typename T>
inline void copyEach(const unsigned char *src, unsigned char *dst, size_t count,
                     ptrdiff_t srcStride, ptrdiff_t dstStride) {
    for (size_t i = 0; i < count; ++i) {
        T element;
        std::memcpy(&element, src + static_cast<ptrdiff_t>(i) * srcStride, sizeof element);
        std::memcpy(dst + static_cast<ptrdiff_t>(i) * dstStride, &element, sizeof element);
    }
}

inline void copyStridedLoop(const unsigned char *src, unsigned char *dst, size_t count,
                            ptrdiff_t srcStride, ptrdiff_t dstStride, int size) {
    switch (size) {
        case 1:
            copyEach<uint8_t>(src, dst, count, srcStride, dstStride);
            break;
        case 2:
            copyEach<uint16_t>(src, dst, count, srcStride, dstStride);
            break;
        default:
            copyEach<uint32_t>(src, dst, count, srcStride, dstStride);
            break;
    }
}

// True when the elements of the two sides share no byte, so that a form
// may read and write them in any order.
inline bool stridedApart(const unsigned char *src, const unsigned char *dst, size_t count,
                         ptrdiff_t srcStride, ptrdiff_t dstStride, int size) {
    return !spansOverlap(src, stridedSpan(count, srcStride, size), dst,
                         stridedSpan(count, dstStride, size));
}

// The portable forms.
inline void copyStridedScalar(const unsigned char *src, unsigned char *dst, size_t count,
                              ptrdiff_t srcStride, ptrdiff_t dstStride, int size) {
    if (srcStride == size && dstStride == size &&
        stridedApart(src, dst, count, srcStride, dstStride, size)) {
        std::memcpy(dst, src, count * static_cast<size_t>(size));
        return;
    }
    copyStridedLoop(src, dst, count, srcStride, dstStride, size);
}

#if RMG_CPU_X86

// From this many bytes on, a copy goes through `rep movsb` once the
// destination is aligned, where the processor makes it fast: it moves whole
// lines and beats vector loops once the runs outgrow the first-level cache.
constexpr size_t kStringCopyBytes = size_t{1} << 14;

inline void stringCopy(const unsigned char *src, unsigned char *dst, size_t bytes) {
    __asm__ volatile("rep movsb" : "+S"(src), "+D"(dst), "+c"(bytes) : : "memory");
}

// From this many bytes on, a run far larger than the second-level cache,
// the stores bypass the caches (non-temporal stores, then a store fence):
// nothing of the destination would stay cached anyway, and the lines are
// written without being read first.
constexpr size_t kStreamCopyBytes = size_t{1} << 24;

// The first and the last sizeof(T) bytes of a run of at least that many
// and at most twice as many: both loads before the stores.
template <typename T>
inline void copyEnds(const unsigned char *src, unsigned char *dst, size_t bytes) {
    T a, b;
    std::memcpy(&a, src, sizeof a);
    std::memcpy(&b, src + bytes - sizeof b, sizeof b);
    std::memcpy(dst, &a, sizeof a);
    std::memcpy(dst + bytes - sizeof b, &b, sizeof b);
}

// Fewer than 16 bytes, with overlapping loads and stores from both ends.
inline void copyBelow16(const unsigned char *src, unsigned char *dst, size_t bytes) {
    if (bytes >= 8)
        copyEnds<uint64_t>(src, dst, bytes);
    else if (bytes >= 4)
        copyEnds<uint32_t>(src, dst, bytes);
    else if (bytes >= 2)
        copyEnds<uint16_t>(src, dst, bytes);
    else if (bytes == 1)
        *dst = *src;
}

// Fewer than 16 bytes of a swap: pieces of 8, 4, 2 and 1 bytes one after
// the other (a swap can't go over a byte twice).
template <typename T>
inline void swapPiece(unsigned char *first, unsigned char *second) {
    T a, b;
    std::memcpy(&a, first, sizeof a);
    std::memcpy(&b, second, sizeof b);
    std::memcpy(first, &b, sizeof b);
    std::memcpy(second, &a, sizeof a);
}

inline void swapBelow16(unsigned char *first, unsigned char *second, size_t bytes) {
    size_t i = 0;
    if (bytes & 8) swapPiece<uint64_t>(first + i, second + i), i += 8;
    if (bytes & 4) swapPiece<uint32_t>(first + i, second + i), i += 4;
    if (bytes & 2) swapPiece<uint16_t>(first + i, second + i), i += 2;
    if (bytes & 1) swapPiece<uint8_t>(first + i, second + i);
}

// A copy of runs that share no byte. Up to four vectors: loads from both
// ends, then the stores. Longer: the first vector unaligned, aligned stores
// from the first multiple of kBytes inside the run (four a pass, or a
// string copy for a long run), and the last four vectors unaligned.
template <class V>
void copyRunApart(const unsigned char *src, unsigned char *dst, size_t bytes) {
    constexpr size_t kB = V::kBytes;
    if (bytes < kB) {
        V::copyShort(src, dst, bytes);
        return;
    }
    if (bytes <= 2 * kB) {
        const typename V::Vec a = V::loadu(src);
        const typename V::Vec b = V::loadu(src + bytes - kB);
        V::storeu(dst, a);
        V::storeu(dst + bytes - kB, b);
        return;
    }
    if (bytes <= 4 * kB) {
        const typename V::Vec a = V::loadu(src);
        const typename V::Vec b = V::loadu(src + kB);
        const typename V::Vec c = V::loadu(src + bytes - 2 * kB);
        const typename V::Vec d = V::loadu(src + bytes - kB);
        V::storeu(dst, a);
        V::storeu(dst + kB, b);
        V::storeu(dst + bytes - 2 * kB, c);
        V::storeu(dst + bytes - kB, d);
        return;
    }
    V::storeu(dst, V::loadu(src));
    unsigned char *at = alignDown(dst + kB, kB);
    const unsigned char *from = src + (at - dst);
    unsigned char *const end = dst + bytes;
    const bool streaming = bytes >= kStreamCopyBytes;
    if (!streaming && bytes >= kStringCopyBytes && (detail::gFeatures & kCpuErms)) {
        stringCopy(from, at, static_cast<size_t>(end - at));
        return;
    }
    for (; end - at > static_cast<ptrdiff_t>(4 * kB); at += 4 * kB, from += 4 * kB) {
        const typename V::Vec a = V::loadu(from);
        const typename V::Vec b = V::loadu(from + kB);
        const typename V::Vec c = V::loadu(from + 2 * kB);
        const typename V::Vec d = V::loadu(from + 3 * kB);
        if (streaming) {
            V::stream(at, a);
            V::stream(at + kB, b);
            V::stream(at + 2 * kB, c);
            V::stream(at + 3 * kB, d);
        } else {
            V::store(at, a);
            V::store(at + kB, b);
            V::store(at + 2 * kB, c);
            V::store(at + 3 * kB, d);
        }
    }
    if (streaming) _mm_sfence();
    // At most four vectors remain: the last four of the run cover them.
    const unsigned char *tail = src + bytes - 4 * kB;
    const typename V::Vec a = V::loadu(tail);
    const typename V::Vec b = V::loadu(tail + kB);
    const typename V::Vec c = V::loadu(tail + 2 * kB);
    const typename V::Vec d = V::loadu(tail + 3 * kB);
    V::storeu(end - 4 * kB, a);
    V::storeu(end - 3 * kB, b);
    V::storeu(end - 2 * kB, c);
    V::storeu(end - kB, d);
}

template <class V>
void copyRunForm(const unsigned char *src, unsigned char *dst, size_t bytes) {
    if (spansOverlap(src, bytes, dst, bytes))
        copyForward(src, dst, bytes);
    else
        copyRunApart<V>(src, dst, bytes);
}

// A swap, two vectors a pass; runs that share memory take the byte loop.
template <class V>
void swapRunForm(unsigned char *first, unsigned char *second, size_t bytes) {
    constexpr size_t kB = V::kBytes;
    if (spansOverlap(first, bytes, second, bytes)) {
        swapForward(first, second, bytes);
        return;
    }
    size_t i = 0;
    for (; i + 2 * kB <= bytes; i += 2 * kB) {
        const typename V::Vec a0 = V::loadu(first + i);
        const typename V::Vec a1 = V::loadu(first + i + kB);
        const typename V::Vec b0 = V::loadu(second + i);
        const typename V::Vec b1 = V::loadu(second + i + kB);
        V::storeu(first + i, b0);
        V::storeu(first + i + kB, b1);
        V::storeu(second + i, a0);
        V::storeu(second + i + kB, a1);
    }
    if (i + kB <= bytes) {
        const typename V::Vec a = V::loadu(first + i);
        const typename V::Vec b = V::loadu(second + i);
        V::storeu(first + i, b);
        V::storeu(second + i, a);
        i += kB;
    }
    if (i < bytes) V::swapShort(first + i, second + i, bytes - i);
}

// One channel of pixel-order pixels into the same channel position of
// pixels with the same step (2 to 4 channels): vectors over the span of the
// elements, the source's bytes stored where the channel masks of
// kChannelMasks are set and the destination's own bytes kept elsewhere. A
// pass is three vectors, the period of the masks. Elements that end past
// the last whole vector are copied one by one.
template <class V>
void copySameStep(const unsigned char *src, unsigned char *dst, size_t count, ptrdiff_t stride,
                  int size, int maskRow) {
    constexpr size_t kB = V::kBytes;
    const size_t span = stridedSpan(count, stride, size);
    const unsigned char *masks = kChannelMasks.rows[maskRow];
    const typename V::Vec m0 = V::loadu(masks);
    const typename V::Vec m1 = V::loadu(masks + kB);
    const typename V::Vec m2 = V::loadu(masks + 2 * kB);
    size_t at = 0;
    for (; at + 3 * kB <= span; at += 3 * kB) {
        V::storeMasked(dst + at, m0, V::loadu(src + at));
        V::storeMasked(dst + at + kB, m1, V::loadu(src + at + kB));
        V::storeMasked(dst + at + 2 * kB, m2, V::loadu(src + at + 2 * kB));
    }
    if (at + kB <= span) {
        V::storeMasked(dst + at, m0, V::loadu(src + at));
        at += kB;
        if (at + kB <= span) {
            V::storeMasked(dst + at, m1, V::loadu(src + at));
            at += kB;
        }
    }
    // Elements wholly inside the vectors done: those ending at or before `at`.
    const size_t done = at < static_cast<size_t>(size) ? 0 : (at - size) / stride + 1;
    if (done < count)
        copyStridedLoop(src + static_cast<ptrdiff_t>(done) * stride,
                        dst + static_cast<ptrdiff_t>(done) * stride, count - done, stride, stride,
                        size);
}

// Byte shuffles of one channel between 16 bytes of packed elements and the
// 16 * channels bytes of pixels they belong to, for element sizes 1, 2, 4
// (index 0, 1, 2) and 2 to 4 channels (index channels - 2). A control byte
// of 0x80 gives 0.
//  gather[k]: from source block k (bytes 16k to 16k + 15 of the pixels),
//             the bytes of the packed elements that lie in it.
//  scatter[k]: into destination block k, the packed elements' bytes where
//             scatterMask[k] is 0xFF.
struct ChannelShuffles {
    unsigned char gather[3][3][4][16];
    unsigned char scatter[3][3][4][16];
    unsigned char scatterMask[3][3][4][16];
};

constexpr ChannelShuffles makeChannelShuffles() {
    ChannelShuffles t{};
    for (int s = 0; s < 3; ++s) {
        const int size = 1 << s;
        for (int c = 2; c <= 4; ++c) {
            const int stride = c * size;
            for (int k = 0; k < 4; ++k) {
                for (int o = 0; o < 16; ++o) {
                    const int from = (o / size) * stride + o % size;
                    t.gather[s][c - 2][k][o] = static_cast<unsigned char>(
                        from >= 16 * k && from < 16 * k + 16 ? from - 16 * k : 0x80);
                    const int q = 16 * k + o;
                    const bool mine = q % stride < size;
                    t.scatter[s][c - 2][k][o] =
                        static_cast<unsigned char>(mine ? (q / stride) * size + q % stride : 0x80);
                    t.scatterMask[s][c - 2][k][o] = mine ? 0xFF : 0x00;
                }
            }
        }
    }
    return t;
}

constexpr ChannelShuffles kChannelShuffles = makeChannelShuffles();

inline int sizeIndex(int size) { return size == 1 ? 0 : size == 2 ? 1 : 2; }

#if defined(__AVX2__)

// Two 16-byte lanes in a 256-bit vector, each loaded from or stored to its
// own address; a byte shuffle works within each lane.
struct Lanes256 {
    using Vec = __m256i;
    static constexpr size_t kLanes = 2;

    static Vec load(const unsigned char *p, ptrdiff_t laneStep) {
        const __m128i low = _mm_loadu_si128(reinterpret_cast<const __m128i *>(p));
        const __m128i high = _mm_loadu_si128(reinterpret_cast<const __m128i *>(p + laneStep));
        return _mm256_inserti128_si256(_mm256_castsi128_si256(low), high, 1);
    }
    static void store(unsigned char *p, ptrdiff_t laneStep, Vec v) {
        _mm_storeu_si128(reinterpret_cast<__m128i *>(p), _mm256_castsi256_si128(v));
        _mm_storeu_si128(reinterpret_cast<__m128i *>(p + laneStep), _mm256_extracti128_si256(v, 1));
    }
    // The 16 bytes of a table in both lanes.
    static Vec table(const unsigned char *p) {
        return _mm256_broadcastsi128_si256(_mm_loadu_si128(reinterpret_cast<const __m128i *>(p)));
    }
    static Vec shuffle(Vec v, Vec control) { return _mm256_shuffle_epi8(v, control); }
    static Vec either(Vec a, Vec b) { return _mm256_or_si256(a, b); }
    static Vec blend(Vec old, Vec mask, Vec v) { return _mm256_blendv_epi8(old, v, mask); }
};

// The elements that the passes of a gather or a scatter take, of `count`
// elements of pixels of `channels` channels: a pass takes 16 bytes of
// elements a lane and reaches over 16 * channels bytes of pixels a lane
// from its first element, and runs only while that stays within the span
// of the pixels' elements. The rest go one by one.
template <class L>
size_t channelPassElements(size_t count, int channels, int size) {
    const size_t stride = static_cast<size_t>(channels) * static_cast<size_t>(size);
    const size_t perPass = static_cast<size_t>(16 / size) * L::kLanes;
    const size_t passBytes = static_cast<size_t>(16 * channels) * L::kLanes;
    const size_t span = stridedSpan(count, static_cast<ptrdiff_t>(stride), size);
    if (span < passBytes) return 0;
    const size_t byCount = count / perPass;
    const size_t bySpan = (span - passBytes) / stride / perPass + 1;
    return (byCount < bySpan ? byCount : bySpan) * perPass;
}

// One channel of pixels of `channels` channels packed into elements side
// by side: each lane makes 16 bytes of elements from 16 * channels bytes of
// pixels.
template <class L>
void gatherChannel(const unsigned char *src, unsigned char *dst, size_t count, int channels,
                   int size) {
    const ptrdiff_t stride = static_cast<ptrdiff_t>(channels) * size;
    const auto &controls = kChannelShuffles.gather[sizeIndex(size)][channels - 2];
    typename L::Vec control[4];
    for (int k = 0; k < channels; ++k) control[k] = L::table(controls[k]);
    const ptrdiff_t laneStep = 16 * channels;
    const size_t done = channelPassElements<L>(count, channels, size);
    for (size_t i = 0; i < done; i += static_cast<size_t>(16 / size) * L::kLanes) {
        const unsigned char *from = src + static_cast<ptrdiff_t>(i) * stride;
        typename L::Vec packed = L::shuffle(L::load(from, laneStep), control[0]);
        for (int k = 1; k < channels; ++k)
            packed = L::either(packed, L::shuffle(L::load(from + 16 * k, laneStep), control[k]));
        L::store(dst + static_cast<ptrdiff_t>(i) * size, 16, packed);
    }
    if (done < count)
        copyStridedLoop(src + static_cast<ptrdiff_t>(done) * stride,
                        dst + static_cast<ptrdiff_t>(done) * size, count - done, stride, size,
                        size);
}

// Packed elements into one channel of pixels of `channels` channels: each
// lane spreads 16 bytes of elements over 16 * channels bytes of pixels,
// keeping the pixels' other bytes.
template <class L>
void scatterChannel(const unsigned char *src, unsigned char *dst, size_t count, int channels,
                    int size) {
    const ptrdiff_t stride = static_cast<ptrdiff_t>(channels) * size;
    const int s = sizeIndex(size);
    typename L::Vec control[4];
    typename L::Vec mask[4];
    for (int k = 0; k < channels; ++k) {
        control[k] = L::table(kChannelShuffles.scatter[s][channels - 2][k]);
        mask[k] = L::table(kChannelShuffles.scatterMask[s][channels - 2][k]);
    }
    const ptrdiff_t laneStep = 16 * channels;
    const size_t done = channelPassElements<L>(count, channels, size);
    for (size_t i = 0; i < done; i += static_cast<size_t>(16 / size) * L::kLanes) {
        const typename L::Vec packed = L::load(src + static_cast<ptrdiff_t>(i) * size, 16);
        unsigned char *to = dst + static_cast<ptrdiff_t>(i) * stride;
        for (int k = 0; k < channels; ++k) {
            unsigned char *block = to + 16 * k;
            L::store(block, laneStep,
                     L::blend(L::load(block, laneStep), mask[k], L::shuffle(packed, control[k])));
        }
    }
    if (done < count)
        copyStridedLoop(src + static_cast<ptrdiff_t>(done) * size,
                        dst + static_cast<ptrdiff_t>(done) * stride, count - done, size, stride,
                        size);
}

#endif  // __AVX2__

// The strided copy of a vector form: separate runs of one element after
// the other are a run copy; one channel into the same channel position of
// pixels with the same step, and (with lanes L) the gather of a channel
// into packed elements and its scatter back, take the vector loops above.
// Elements that share memory, and other steps, take the element loop.
template <class V, class L>
void copyStridedForm(const unsigned char *src, unsigned char *dst, size_t count,
                     ptrdiff_t srcStride, ptrdiff_t dstStride, int size) {
    if (!stridedApart(src, dst, count, srcStride, dstStride, size)) {
        copyStridedLoop(src, dst, count, srcStride, dstStride, size);
        return;
    }
    if (srcStride == size && dstStride == size) {
        copyRunApart<V>(src, dst, count * static_cast<size_t>(size));
        return;
    }
    if (srcStride == dstStride) {
        const int maskRow = channelMaskRow(size, srcStride);
        if (maskRow >= 0) {
            copySameStep<V>(src, dst, count, srcStride, size, maskRow);
            return;
        }
    }
#if defined(__AVX2__)
    if constexpr (!std::is_void<L>::value) {
        if (dstStride == size && channelMaskRow(size, srcStride) >= 0) {
            gatherChannel<L>(src, dst, count, static_cast<int>(srcStride / size), size);
            return;
        }
        if (srcStride == size && channelMaskRow(size, dstStride) >= 0) {
            scatterChannel<L>(src, dst, count, static_cast<int>(dstStride / size), size);
            return;
        }
    }
#endif
    copyStridedLoop(src, dst, count, srcStride, dstStride, size);
}

template <class V, class L>
constexpr CopyForms vectorCopyForms() {
    return CopyForms{copyRunForm<V>, swapRunForm<V>, copyStridedForm<V, L>};
}

#endif  // RMG_CPU_X86

}  // namespace
}  // namespace rmg

#endif
