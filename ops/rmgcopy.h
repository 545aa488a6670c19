// Copy and swap kernels: a run of bytes copied or swapped, and one channel
// of pixel-order pixels copied element by element with the steps of two
// images. Internal to the library (C++ linkage, not exported).
//
// Every form gives the bytes of the plain loop that each function names,
// also where source and destination share memory: a copy is the loop from
// low to high addresses, so a destination that starts inside its source
// repeats the source's first bytes; a swap is the loop of byte exchanges
// from low to high addresses. No byte outside the span from an element's
// (or a run's) first byte to the last one's last byte is read or written.
// Inside the span of a strided copy, the vector forms read the other
// channels' bytes of the destination and write them back unchanged.
// Pointers may have any alignment.
#ifndef RMG_OPS_RMGCOPY_H
#define RMG_OPS_RMGCOPY_H

#include <cstddef>
#include <cstdint>

// Copies `count` bytes: dst[i] = src[i] for i from 0 upwards. A count of 0
// or below copies nothing.
void rmgCopyBytes(const void *src, void *dst, int count);

// Swaps `count` bytes of the two runs: for i from 0 upwards, first[i] and
// second[i] change places. A count of 0 or below swaps nothing.
void rmgSwapBytes(void *first, void *second, int count);

// Copies `count` elements of `size` bytes (1, 2 or 4): for i from 0
// upwards, the element at src + i * srcStride is read whole and written
// whole to dst + i * dstStride. Strides are at least `size`. A count of 0
// or below copies nothing.
void rmgCopyStrided(const void *src, void *dst, int count, int srcStride, int dstStride, int size);

namespace rmg {

// The forms of the kernels, one set per instruction set; counts are at
// least 1.
using CopyRunFn = void (*)(const unsigned char *src, unsigned char *dst, size_t count);
using SwapRunFn = void (*)(unsigned char *first, unsigned char *second, size_t count);
using CopyStridedFn = void (*)(const unsigned char *src, unsigned char *dst, size_t count,
                               ptrdiff_t srcStride, ptrdiff_t dstStride, int size);
struct CopyForms {
    CopyRunFn copy;
    SwapRunFn swap;
    CopyStridedFn copyStrided;
};
extern const CopyForms kCopyScalar;
extern const CopyForms kCopySse2;
extern const CopyForms kCopyAvx2;
extern const CopyForms kCopyAvx512;

}  // namespace rmg

#endif
