// Element kernels of scalar add and subtract: the families of runs, their
// shapes (Run, Rows, Planes), the strided loops of one channel, and the row
// kernels of every depth that choose among them. Internal to the library
// (C++ linkage, not exported).
//
// Element arithmetic, e the element and v the constant:
//
//   family              result
//   rmgAddElems8u       sat8u(int16(e + w)), w the low 16 bits of v as a
//   rmgSubElems8u       sat8u(int16(e - w))  signed word; the sum wraps in
//   rmgRevSubElems8u    sat8u(int16(w - e))  16 bits before it is limited
//   rmgAddElems16u      min(e + v, 65535)        v taken as 0 .. 2^32 - 1,
//   rmgSubElems16u      max(e - v, 0)            exact: no wrap-around
//   rmgRevSubElems16u   clamp(v - e, 0, 65535)
//   kZero16u            0, the source not read
//   add / sub / rev 8s  clamp(int32(e + v)) etc. to -128..127, the sum
//   add / sub / rev 16s   wrapping in 32 bits, to -32768..32767
//   add 32s             e + v limited to the 32-bit range, by comparing e
//                       with the limit 2147483647 - v (v >= 0) or
//                       -2147483648 - v (v < 0) before adding
//   sub / rev 32s       (double)e - (double)v or (double)v - (double)e,
//                       limited to the 32-bit range
//   or / andnot / notand 1u   bytes: e | m, e & ~m, ~e & m
//   add / sub / rev 8u full   clamp(int32(e + v)) etc. to 0..255: the
//                       one-channel loop of pixel-order images (case C)
//
// Every form (scalar, SSE2, AVX2) gives these results bit for bit, for any
// length and any alignment of source and destination.
#ifndef RMG_OPS_OWNADDSUB_H
#define RMG_OPS_OWNADDSUB_H

#include <cstddef>
#include <cstdint>

#include "core/rmgcpu.h"
#include "rmg.h"

namespace rmg {

// The families of runs; the value of the table above is the run's `v`.
enum ElemFamily : int {
    kAdd8u,
    kSub8u,
    kRevSub8u,
    kAdd16u,
    kSub16u,
    kRevSub16u,
    kZero16u,
    kAdd8s,
    kSub8s,
    kRevSub8s,
    kAdd16s,
    kSub16s,
    kRevSub16s,
    kAdd32s,
    kSub32s,
    kRevSub32s,
    kOr1u,
    kAndNot1u,
    kNotAnd1u,
    kAdd8uFull,     // 8u in full 32-bit arithmetic: clamp(int32(e + v), 0, 255)
    kSub8uFull,     // clamp(int32(e - v), 0, 255)
    kRevSub8uFull,  // clamp(int32(v - e), 0, 255)
    kElemFamilyCount
};

// Bytes of one element of a family.
int elemFamilySize(int family);

// One run: n elements of `family` from src to dst (which may be the same
// address, or not overlap at all).
using ElemRunFn = void (*)(int family, const unsigned char *src, unsigned char *dst, size_t n,
                           int64_t v);

void elemRunScalar(int family, const unsigned char *src, unsigned char *dst, size_t n,
                   int64_t v);
void elemRunSse2(int family, const unsigned char *src, unsigned char *dst, size_t n, int64_t v);
void elemRunAvx2(int family, const unsigned char *src, unsigned char *dst, size_t n, int64_t v);

constexpr FormTable<ElemRunFn> kElemRun = formTable<ElemRunFn>(
    elemRunScalar, RMG_FORM_SSE2(elemRunSse2), RMG_FORM_AVX2(elemRunAvx2), nullptr);

// One channel of `pixels` pixel-order pixels of `channels` elements, src and
// dst at the first pixel's start; element `channel` (0-based) of each pixel
// gets the family's result, the other elements stay as they are.
using ElemChannelFn = void (*)(int family, const unsigned char *src, unsigned char *dst,
                               size_t pixels, int channels, int channel, int64_t v);

void elemChannelScalar(int family, const unsigned char *src, unsigned char *dst, size_t pixels,
                       int channels, int channel, int64_t v);
void elemChannelSse2(int family, const unsigned char *src, unsigned char *dst, size_t pixels,
                     int channels, int channel, int64_t v);
void elemChannelAvx2(int family, const unsigned char *src, unsigned char *dst, size_t pixels,
                     int channels, int channel, int64_t v);

constexpr FormTable<ElemChannelFn> kElemChannel = formTable<ElemChannelFn>(
    elemChannelScalar, RMG_FORM_SSE2(elemChannelSse2), RMG_FORM_AVX2(elemChannelAvx2), nullptr);

}  // namespace rmg

// The named families of the 8u and 16u vector kernels, for their shapes.
constexpr int rmgAddElems8u = rmg::kAdd8u;
constexpr int rmgSubElems8u = rmg::kSub8u;
constexpr int rmgRevSubElems8u = rmg::kRevSub8u;
constexpr int rmgAddElems16u = rmg::kAdd16u;
constexpr int rmgSubElems16u = rmg::kSub16u;
constexpr int rmgRevSubElems16u = rmg::kRevSub16u;

// The three shapes of a family. Steps are in bytes; a count of 0 or below
// does nothing.
void ownElemsRun(int family, const unsigned char *src, unsigned char *dst, int count,
                 int64_t value);
void ownElemsRows(int family, const unsigned char *src, unsigned char *dst, int count, int rows,
                  int srcStep, int dstStep, int64_t value);
void ownElemsPlanes(int family, const unsigned char *src, unsigned char *dst, int count,
                    int rows, int planes, int srcStep, int dstStep, int srcPlaneStep,
                    int dstPlaneStep, int64_t value);

// One channel of pixel-order rows: count elements, element i at byte
// i * srcStride of the source and i * dstStride of the destination.
void ownElemsStrided(int family, const unsigned char *src, unsigned char *dst, int count,
                     int srcStride, int dstStride, int64_t value);

// The scheme of the row kernels of 8 to 32 bits: the whole-image shortcut,
// the geometry of both images and the cases A to D. `family` and `value`
// serve the runs of the whole image and of cases A, B and D; `oneFamily`
// and `oneValue` the element loop of case C.
void ownAddSubImages(const RmgImage *srcImage, const RmgImage *dstImage, int family,
                     int64_t value, int oneFamily, int64_t oneValue);

// The 1-bit scheme: whole 32-bit words of whole images, otherwise bit by
// bit over the bit rectangles. `family` is kOr1u, kAndNot1u or kNotAnd1u.
void ownAddSubBits(const RmgImage *srcImage, const RmgImage *dstImage, int family, int value);

// Row kernels: one image pair, the constant, and for subtraction the order
// of the operands. They never report; a region that can't be resolved, or a
// combination of dataOrder and coi outside the cases, does nothing.
void rmgAddS1u(const RmgImage *srcImage, const RmgImage *dstImage, int value);
void rmgAddS8u(const RmgImage *srcImage, const RmgImage *dstImage, int value);
void rmgAddS8s(const RmgImage *srcImage, const RmgImage *dstImage, int value);
void rmgAddS16u(const RmgImage *srcImage, const RmgImage *dstImage, int value);
void rmgAddS16s(const RmgImage *srcImage, const RmgImage *dstImage, int value);
void rmgAddS32s(const RmgImage *srcImage, const RmgImage *dstImage, int value);
void rmgSubtractS1u(const RmgImage *srcImage, const RmgImage *dstImage, int value, int reversed);
void rmgSubtractS8u(const RmgImage *srcImage, const RmgImage *dstImage, int value, int reversed);
void rmgSubtractS8s(const RmgImage *srcImage, const RmgImage *dstImage, int value, int reversed);
void rmgSubtractS16u(const RmgImage *srcImage, const RmgImage *dstImage, int value,
                     int reversed);
void rmgSubtractS16s(const RmgImage *srcImage, const RmgImage *dstImage, int value,
                     int reversed);
void rmgSubtractS32s(const RmgImage *srcImage, const RmgImage *dstImage, int value,
                     int reversed);

// A row kernel of one operation with its constant bound: rmgAddS<depth>
// with `value`, or rmgSubtractS<depth> with `value` and `reversed`.
struct OwnAddSubCall {
    void (*add)(const RmgImage *, const RmgImage *, int);
    void (*subtract)(const RmgImage *, const RmgImage *, int, int);
    int value;
    int reversed;
};

// The rest of rmgAddS and rmgSubtractS once the checks have passed and the
// depth has chosen the row kernel: one call of it on the caller's images
// when neither is tiled, otherwise the tile walk.
void ownAddSubRun(const RmgImage *srcImage, RmgImage *dstImage, const int *tilePos,
                  const char *funcName, const char *module, const OwnAddSubCall &call);

#endif
