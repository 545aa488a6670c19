// The mirror's row kernel, shared by its forms. Included by
// geometry/rmgmirr.cpp and by the files compiled for one instruction set;
// everything lives in an anonymous namespace so that each file keeps its
// own copy (see core/rmgcpu.h).
//
// A reversal of units of P bytes runs in blocks: a vector loaded so that it
// ends with the last K units of the source still to do (K = units a vector
// holds) is turned into those K units in reversed order at its start, and
// stored at the destination's next position. Its bytes behind the K units
// are overwritten by the next store, or by the element loop that finishes
// the run, so no store reaches past the run. The vector form's traits V
// add to core/rmgvec.h:
//   kUnits<P>        units of P bytes per block (0: no vector path)
//   reverse<P>(v)    the last kUnits<P> units of v, reversed, at its start
#ifndef RMG_GEOMETRY_RMGMIRR_IMPL_H
#define RMG_GEOMETRY_RMGMIRR_IMPL_H

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "geometry/rmgmirr.h"

namespace rmg {
namespace {

// The element loop: unit k of dst from unit count - 1 - k of src.
template <int P>
inline void reverseUnits(const unsigned char *src, unsigned char *dst, size_t count) {
    const unsigned char *from = src + count * P;
    for (size_t k = 0; k < count; ++k) {
        from -= P;
        unsigned char unit[P];
        std::memcpy(unit, from, P);
        std::memcpy(dst + k * P, unit, P);
    }
}

inline void reverseScalar(const unsigned char *src, unsigned char *dst, size_t count, int unit) {
    switch (unit) {
        case 1: reverseUnits<1>(src, dst, count); break;
        case 2: reverseUnits<2>(src, dst, count); break;
        case 3: reverseUnits<3>(src, dst, count); break;
        case 4: reverseUnits<4>(src, dst, count); break;
        case 6: reverseUnits<6>(src, dst, count); break;
        case 8: reverseUnits<8>(src, dst, count); break;
        case 12: reverseUnits<12>(src, dst, count); break;
        default: reverseUnits<16>(src, dst, count); break;
    }
}

template <class V, int P>
inline void reverseBlocks(const unsigned char *src, unsigned char *dst, size_t count) {
    constexpr size_t K = V::template kUnits<P>;
    constexpr size_t kB = V::kBytes;
    const size_t total = count * P;
    size_t at = 0;
    if constexpr (K > 0) {
        for (; at + kB <= total; at += K * P)
            V::storeu(dst + at, V::template reverse<P>(V::loadu(src + (total - at - kB))));
    }
    const size_t done = at / P;
    reverseUnits<P>(src, dst + at, count - done);
}

template <class V>
void reverseForm(const unsigned char *src, unsigned char *dst, size_t count, int unit) {
    switch (unit) {
        case 1: reverseBlocks<V, 1>(src, dst, count); break;
        case 2: reverseBlocks<V, 2>(src, dst, count); break;
        case 3: reverseBlocks<V, 3>(src, dst, count); break;
        case 4: reverseBlocks<V, 4>(src, dst, count); break;
        case 6: reverseBlocks<V, 6>(src, dst, count); break;
        case 8: reverseBlocks<V, 8>(src, dst, count); break;
        case 12: reverseBlocks<V, 12>(src, dst, count); break;
        default: reverseBlocks<V, 16>(src, dst, count); break;
    }
}

// The byte shuffle of a block of `vectorBytes` bytes in 16-byte lanes: for
// output byte o below K * P, the byte of the input that it takes, split
// into the control of a shuffle within the lane (`same`) and of one of the
// lanes exchanged (`cross`); 0x80 gives 0.
struct LaneShuffle {
    unsigned char same[32];
    unsigned char cross[32];
};

constexpr LaneShuffle makeLaneShuffle(int vectorBytes, int P) {
    LaneShuffle t{};
    const int K = vectorBytes / P;
    for (int o = 0; o < 32; ++o) {
        t.same[o] = 0x80;
        t.cross[o] = 0x80;
        if (o >= K * P) continue;
        const int j = o / P;
        const int s = vectorBytes - K * P + (K - 1 - j) * P + o % P;
        if (s / 16 == o / 16)
            t.same[o] = static_cast<unsigned char>(s % 16);
        else
            t.cross[o] = static_cast<unsigned char>(s % 16);
    }
    return t;
}

}  // namespace
}  // namespace rmg

#endif
