// The word reduction rows, scalar, shared by the vector forms for their
// tails. Everything here lives in an anonymous namespace (see core/rmgcpu.h).
#ifndef RMG_COLOR_OWNREDUCE_IMPL_H
#define RMG_COLOR_OWNREDUCE_IMPL_H

#include <cstdint>
#include <cstring>

namespace rmg {
namespace {

// 32s to 16u: (e >> 16) << 1, kept to 16 bits.
inline void reduceRow32s16uScalar(const unsigned char *src, unsigned char *dst, int n) {
    for (int i = 0; i < n; ++i) {
        int32_t e;
        std::memcpy(&e, src + 4 * i, 4);
        const auto v = static_cast<uint16_t>(static_cast<uint32_t>(e >> 16) << 1);
        std::memcpy(dst + 2 * i, &v, 2);
    }
}
// 32s to 8u: e >> 23, negative to 0.
inline void reduceRow32s8uScalar(const unsigned char *src, unsigned char *dst, int n) {
    for (int i = 0; i < n; ++i) {
        int32_t e;
        std::memcpy(&e, src + 4 * i, 4);
        dst[i] = static_cast<unsigned char>(e < 0 ? 0 : e >> 23);
    }
}
// 16u to 8u: e >> 8.
inline void reduceRow16u8uScalar(const unsigned char *src, unsigned char *dst, int n) {
    for (int i = 0; i < n; ++i) {
        uint16_t e;
        std::memcpy(&e, src + 2 * i, 2);
        dst[i] = static_cast<unsigned char>(e >> 8);
    }
}

}  // namespace
}  // namespace rmg

#endif
