// Internal helpers shared by every module of the library.
//
// The library's arithmetic on header fields is that of 32-bit two's
// complement words: sums and products wrap. These helpers do that without
// the undefined behaviour of signed overflow in C++.
#ifndef RMG_CORE_RMGINT_H
#define RMG_CORE_RMGINT_H

#include <cstdint>
#include <cstring>

#include "rmg.h"

namespace rmg {

inline int32_t add32(int32_t a, int32_t b) {
    return static_cast<int32_t>(static_cast<uint32_t>(a) + static_cast<uint32_t>(b));
}
inline int32_t sub32(int32_t a, int32_t b) {
    return static_cast<int32_t>(static_cast<uint32_t>(a) - static_cast<uint32_t>(b));
}
inline int32_t mul32(int32_t a, int32_t b) {
    return static_cast<int32_t>(static_cast<uint32_t>(a) * static_cast<uint32_t>(b));
}

// Bits in one channel of a depth: depth & 0x7FFFFFFF.
inline int32_t depthBits(uint32_t depth) { return static_cast<int32_t>(depth & 0x7FFFFFFFu); }

// True for the six legal depths.
inline bool isLegalDepth(uint32_t depth) {
    switch (depth) {
    case RMG_DEPTH_1U:
    case RMG_DEPTH_8U:
    case RMG_DEPTH_16U:
    case RMG_DEPTH_8S:
    case RMG_DEPTH_16S:
    case RMG_DEPTH_32S:
        return true;
    default:
        return false;
    }
}

// The 32-bit word that a fill of `value` stores for channels of `bits`
// bits: 1: all ones when the value is odd, else 0; 8: the low byte four
// times; 16: the low half twice; any other count: the value itself.
inline uint32_t fillPattern32(int32_t value, int32_t bits) {
    const auto v = static_cast<uint32_t>(value);
    switch (bits) {
    case 1:
        return (v & 1u) ? 0xFFFFFFFFu : 0u;
    case 8:
        return (v & 0xFFu) * 0x01010101u;
    case 16:
        return (v & 0xFFFFu) * 0x00010001u;
    default:
        return v;
    }
}

}  // namespace rmg

#endif
