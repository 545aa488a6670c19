// Decimate kernels: the sampling loops of rmgDecimate in integer arithmetic
// with 8 fractional bits. Internal to the library (C++ linkage).
#ifndef RMG_GEOMETRY_OWNDECIM_H
#define RMG_GEOMETRY_OWNDECIM_H

#include <cstddef>

// The memory a kernel call may touch, in elements of the depth (bytes for
// depth 1). `src` and `dst` are the first byte of each buffer; the source
// may be read at element indices [0, srcCount), the destination written at
// [0, dstCount). `dstOffset` is the index of the destination's first pixel.
// An index outside these ranges is never touched: a read there gives 0 and a
// write there is left out. A call whose whole footprint lies inside runs
// without any per-element test.
struct OwnDecimateLimits {
    std::ptrdiff_t srcCount;
    std::ptrdiff_t dstCount;
    std::ptrdiff_t dstOffset;
};

// Every kernel: source channel offsets from channelStart below channelEnd by
// srcPlane, the destination's from dstChannelStart by dstPlane (depth 1: the
// bit position of the first pixel); strides in elements (depth 1: rows in
// bits); positions with 8 fractional bits served while below yEnd / xEnd;
// *y and *x hold the start positions and are left at the stop positions.
// Returns 1.
using OwnDecimateKernel = int (*)(const void *src, void *dst, int channelStart,
                                  int dstChannelStart, int channelEnd, int srcPlane, int srcRow,
                                  int srcPixel, int dstPlane, int dstRow, int dstPixel, int yStep,
                                  int xStep, int yEnd, int xEnd, int *y, int *x,
                                  const OwnDecimateLimits &limits);

#define RMG_DECIMATE_KERNEL(name)                                                               \
    int name(const void *src, void *dst, int channelStart, int dstChannelStart, int channelEnd, \
             int srcPlane, int srcRow, int srcPixel, int dstPlane, int dstRow, int dstPixel,   \
             int yStep, int xStep, int yEnd, int xEnd, int *y, int *x,                         \
             const OwnDecimateLimits &limits)

RMG_DECIMATE_KERNEL(ownDecimateNearest1);
RMG_DECIMATE_KERNEL(ownDecimateNearest8);
RMG_DECIMATE_KERNEL(ownDecimateNearest16);
RMG_DECIMATE_KERNEL(ownDecimateLinearX8);
RMG_DECIMATE_KERNEL(ownDecimateLinearX16);
RMG_DECIMATE_KERNEL(ownDecimateLinearY8);
RMG_DECIMATE_KERNEL(ownDecimateLinearY16);
RMG_DECIMATE_KERNEL(ownDecimateLinear8);
RMG_DECIMATE_KERNEL(ownDecimateLinear16);
RMG_DECIMATE_KERNEL(ownDecimateCubicX8);
RMG_DECIMATE_KERNEL(ownDecimateCubicX16);
RMG_DECIMATE_KERNEL(ownDecimateCubicY8);
RMG_DECIMATE_KERNEL(ownDecimateCubicY16);
RMG_DECIMATE_KERNEL(ownDecimateCubic8);
RMG_DECIMATE_KERNEL(ownDecimateCubic16);

#endif
