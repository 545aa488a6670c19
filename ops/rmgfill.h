// Fill kernels: one value stored into a run of elements, or into every
// `stride`-th byte position (one channel of pixel-order pixels). Internal to
// the library (C++ linkage, not exported).
//
// The results are those of a plain store loop, whatever form runs: the
// elements get the value's bytes in memory order, and no byte outside the
// span from the first element's first byte to the last element's last byte
// is read or written. Inside the span of a strided fill, the vector forms
// read the other channels' bytes and write them back unchanged. Pointers
// may have any alignment.
#ifndef RMG_OPS_RMGFILL_H
#define RMG_OPS_RMGFILL_H

#include <cstddef>
#include <cstdint>

// Stores `value` into `count` consecutive elements from `row`. A count of 0
// or below stores nothing.
void rmgFill8(uint8_t value, void *row, int count);
void rmgFill16(uint16_t value, void *row, int count);
void rmgFill32(uint32_t value, void *row, int count);

// Stores `value` into `count` elements from `row`, the element i at byte
// `i * stride` (a pixel-order channel: stride = nChannels * element size).
// Elements don't overlap when stride is at least the element size; any
// other stride gives the result of the store loop in order of i. A count of
// 0 or below stores nothing.
void rmgFillStrided8(uint8_t value, void *row, int count, int stride);
void rmgFillStrided16(uint16_t value, void *row, int count, int stride);
void rmgFillStrided32(uint32_t value, void *row, int count, int stride);

namespace rmg {

// The forms of the fill kernels, one set per instruction set. `value`
// holds the element in its low `size` bytes (1, 2 or 4); `count` is at
// least 1.
using FillRunFn = void (*)(unsigned char *row, size_t count, uint32_t value, int size);
using FillStridedFn = void (*)(unsigned char *row, size_t count, ptrdiff_t stride,
                               uint32_t value, int size);
struct FillForms {
    FillRunFn run;
    FillStridedFn strided;
};
extern const FillForms kFillScalar;
extern const FillForms kFillSse2;
extern const FillForms kFillAvx2;
extern const FillForms kFillAvx512;

// Byte masks of one channel in pixel-order rows, for the vector forms. Row
// r (see channelMaskRow in ops/rmgfill_impl.h) is for one pair of element
// size and stride; its byte t is 0xFF where (t mod stride) is below the
// element size, 0 elsewhere. A row is long enough for three 64-byte vectors
// read from any phase below the stride.
struct ChannelMasks {
    unsigned char rows[9][3 * 64 + 16];
};
extern const ChannelMasks kChannelMasks;

}  // namespace rmg

#endif
