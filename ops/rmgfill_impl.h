// The fill kernels' code shared by their forms. Included by ops/rmgfill.cpp
// and by the files compiled for one instruction set; everything here lives
// in an anonymous namespace so that each of those files keeps its own copy,
// compiled with its own options (see core/rmgcpu.h).
//
// The vector templates take a traits type V of the including file, one of
// core/rmgvec.h with two additions:
//   fillShort(p, bytes, word)   the whole run for bytes below kBytes
//   kStringStoreBytes           where long runs change to `rep stos`
#ifndef RMG_OPS_RMGFILL_IMPL_H
#define RMG_OPS_RMGFILL_IMPL_H

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "core/rmgcpu.h"
#include "ops/rmgfill.h"

namespace rmg {
namespace {

// Element i, of type T, at byte i * stride from row.
template <typename T>
inline void storeEach(unsigned char *row, size_t count, ptrdiff_t stride, T value) {
    for (size_t i = 0; i < count; ++i)
        std::memcpy(row + static_cast<ptrdiff_t>(i) * stride, &value, sizeof value);
}

// The plain store loop: element i at byte i * stride, in order of i.
inline void fillStridedLoop(unsigned char *row, size_t count, ptrdiff_t stride, uint32_t value,
                            int size) {
    switch (size) {
    case 1:
        storeEach(row, count, stride, static_cast<uint8_t>(value));
        break;
    case 2:
        storeEach(row, count, stride, static_cast<uint16_t>(value));
        break;
    default:
        storeEach(row, count, stride, value);
        break;
    }
}

#if RMG_CPU_X86

// From here on the code is for x86 only: a 32-bit word read from memory
// holds its bytes in little-endian order.

// The 4 bytes that a run of elements repeats (elements of 1, 2 or 4 bytes
// all repeat after 4 bytes), starting at an element's first byte.
inline uint32_t patternWord(uint32_t value, int size) {
    if (size == 1) return (value & 0xFFu) * 0x01010101u;
    if (size == 2) return (value & 0xFFFFu) * 0x00010001u;
    return value;
}

// The pattern as seen from `shift` bytes further on (shift taken mod 4).
inline uint32_t shiftWord(uint32_t word, size_t shift) {
    const unsigned bits = static_cast<unsigned>(shift & 3u) * 8u;
    return bits == 0 ? word : (word >> bits) | (word << (32u - bits));
}

// Fills fewer than 16 bytes with overlapping stores from both ends; every
// store starts a whole number of elements from row, so it sees the pattern
// from its first byte.
inline void fillBelow16(unsigned char *row, size_t bytes, uint32_t word) {
    if (bytes >= 8) {
        const uint64_t wide = word * 0x0000000100000001ull;
        std::memcpy(row, &wide, 8);
        std::memcpy(row + bytes - 8, &wide, 8);
    } else if (bytes >= 4) {
        std::memcpy(row, &word, 4);
        std::memcpy(row + bytes - 4, &word, 4);
    } else if (bytes >= 2) {
        const auto half = static_cast<uint16_t>(word);
        std::memcpy(row, &half, 2);
        std::memcpy(row + bytes - 2, &half, 2);
    } else if (bytes == 1) {
        *row = static_cast<unsigned char>(word);
    }
}

inline unsigned char *alignDown(unsigned char *p, size_t alignment) {
    return p - (reinterpret_cast<uintptr_t>(p) & (alignment - 1));
}

// From this many bytes on, the aligned middle of a run is stored with
// `rep stos` where the processor makes it fast (ERMS). It writes whole
// lines without reading them first; 32- and 64-byte vector stores are
// quicker while the run fits the second-level cache, 16-byte ones only on
// short runs. A traits type names its own threshold (kStringStoreBytes).
constexpr size_t kStringStoreWide = size_t{1} << 20;
constexpr size_t kStringStoreNarrow = size_t{4} << 10;

// Stores the pattern word over `bytes` bytes from p, a multiple of 8.
inline void stringStore(unsigned char *p, size_t bytes, uint32_t word) {
#if defined(__x86_64__) || defined(_M_X64)
    const uint64_t wide = word * 0x0000000100000001ull;
    size_t n = bytes / 8;
    __asm__ volatile("rep stosq" : "+D"(p), "+c"(n) : "a"(wide) : "memory");
#else
    size_t n = bytes / 4;
    __asm__ volatile("rep stosl" : "+D"(p), "+c"(n) : "a"(word) : "memory");
#endif
}

// Fills `bytes` bytes (a whole number of elements) with the pattern word.
// Up to eight vectors: unaligned stores from both ends. Longer: four
// unaligned vectors at each end, aligned vectors between them, four a pass,
// or a string store for a long middle. Every store starts a whole number of
// elements from row, except the aligned ones, which see the pattern rotated
// by their distance from row.
template <class V>
void fillRunVector(unsigned char *row, size_t bytes, uint32_t word) {
    constexpr size_t kB = V::kBytes;
    if (bytes < kB) {
        V::fillShort(row, bytes, word);
        return;
    }
    unsigned char *const end = row + bytes;
    {
        const typename V::Vec v = V::splat32(word);
        V::storeu(row, v);
        V::storeu(end - kB, v);
        if (bytes <= 2 * kB) return;
        V::storeu(row + kB, v);
        V::storeu(end - 2 * kB, v);
        if (bytes <= 4 * kB) return;
        V::storeu(row + 2 * kB, v);
        V::storeu(row + 3 * kB, v);
        V::storeu(end - 3 * kB, v);
        V::storeu(end - 4 * kB, v);
        if (bytes <= 8 * kB) return;
    }
    // The middle, aligned: from inside the first four vectors to inside the
    // last four.
    unsigned char *at = alignDown(row + 4 * kB, kB);
    unsigned char *const stop = alignDown(end - 3 * kB, kB);
    const uint32_t shifted = shiftWord(word, static_cast<size_t>(at - row));
    if (static_cast<size_t>(stop - at) >= V::kStringStoreBytes &&
        (detail::gFeatures & kCpuErms)) {
        stringStore(at, static_cast<size_t>(stop - at), shifted);
        return;
    }
    const typename V::Vec rotated = V::splat32(shifted);
    for (; stop - at >= static_cast<ptrdiff_t>(4 * kB); at += 4 * kB) {
        V::store(at, rotated);
        V::store(at + kB, rotated);
        V::store(at + 2 * kB, rotated);
        V::store(at + 3 * kB, rotated);
    }
    for (; at < stop; at += kB) V::store(at, rotated);
}

// A run of `count` elements.
template <class V>
void fillRunForm(unsigned char *row, size_t count, uint32_t value, int size) {
    fillRunVector<V>(row, count * static_cast<size_t>(size), patternWord(value, size));
}

// The row of kChannelMasks for an element size of 1, 2 or 4 bytes and 2 to
// 4 channels (stride = channels * size), or -1 for any other pair.
inline int channelMaskRow(int size, ptrdiff_t stride) {
    const int sizeIndex = size == 1 ? 0 : size == 2 ? 1 : size == 4 ? 2 : -1;
    if (sizeIndex < 0 || stride % size != 0) return -1;
    const ptrdiff_t channels = stride / size;
    if (channels < 2 || channels > 4) return -1;
    return sizeIndex * 3 + static_cast<int>(channels - 2);
}

// The strided fill with vectors for 2, 3 and 4 channels: each aligned vector
// inside the span of the elements is read, the channel's bytes replaced, and
// written back (the other bytes get their own values again). A pass is three
// vectors, the period of the 3-channel masks; for 2 and 4 channels the three
// masks are equal. Elements that begin before the first aligned vector or
// end after the last are stored one by one. Other strides take the store
// loop; a stride of one element is a run.
template <class V>
void fillStridedVector(unsigned char *row, size_t count, ptrdiff_t stride, uint32_t value,
                       int size) {
    if (stride == size) {
        fillRunForm<V>(row, count, value, size);
        return;
    }
    const int maskRow = channelMaskRow(size, stride);
    if (maskRow < 0) {
        fillStridedLoop(row, count, stride, value, size);
        return;
    }
    unsigned char *const end = row + static_cast<ptrdiff_t>(count - 1) * stride + size;
    unsigned char *at = alignDown(row + V::kBytes - 1, V::kBytes);
    unsigned char *const stop = alignDown(end, V::kBytes);
    const ptrdiff_t pass = static_cast<ptrdiff_t>(3 * V::kBytes);
    if (stop - at < pass) {
        fillStridedLoop(row, count, stride, value, size);
        return;
    }
    // Elements outside the aligned vectors: those that begin before `at`,
    // and those that end after `stop`.
    const auto head = static_cast<size_t>((at - row + stride - 1) / stride);
    fillStridedLoop(row, head, stride, value, size);
    const auto tail = static_cast<size_t>((stop - row - size) / stride + 1);
    if (tail < count)
        fillStridedLoop(row + static_cast<ptrdiff_t>(tail) * stride, count - tail, stride, value,
                        size);

    const size_t offset = static_cast<size_t>(at - row);
    const unsigned char *masks =
        kChannelMasks.rows[maskRow] + offset % static_cast<size_t>(stride);
    const typename V::Vec word = V::splat32(shiftWord(patternWord(value, size), offset));
    const typename V::Vec m0 = V::loadu(masks);
    const typename V::Vec m1 = V::loadu(masks + V::kBytes);
    const typename V::Vec m2 = V::loadu(masks + 2 * V::kBytes);
    for (; stop - at >= pass; at += pass) {
        V::store(at, V::blend(V::load(at), word, m0));
        V::store(at + V::kBytes, V::blend(V::load(at + V::kBytes), word, m1));
        V::store(at + 2 * V::kBytes, V::blend(V::load(at + 2 * V::kBytes), word, m2));
    }
    // Fewer than three vectors remain; they continue the period from m0.
    if (at < stop) V::store(at, V::blend(V::load(at), word, m0));
    if (at + V::kBytes < stop) V::store(at + V::kBytes, V::blend(V::load(at + V::kBytes), word, m1));
}

// The kernels of a vector form.
template <class V>
constexpr FillForms vectorFillForms() {
    return FillForms{fillRunForm<V>, fillStridedVector<V>};
}

#endif  // RMG_CPU_X86

}  // namespace
}  // namespace rmg

#endif
