// Copy and swap kernels: the portable forms and the entries that pick a
// form for the processor.
#include "ops/rmgcopy.h"

#include "core/rmgcpu.h"
#include "ops/rmgcopy_impl.h"

namespace rmg {

constexpr CopyForms kCopyScalar = {copyForward, swapForward, copyStridedScalar};

namespace {

constexpr FormTable<const CopyForms *> kCopy =
    formTable<const CopyForms *>(&kCopyScalar, RMG_FORM_SSE2(&kCopySse2), RMG_FORM_AVX2(&kCopyAvx2),
                                 RMG_FORM_AVX512(&kCopyAvx512));

}  // namespace
}  // namespace rmg

void rmgCopyBytes(const void *src, void *dst, int count) {
    if (count > 0)
        rmg::kCopy.get()->copy(static_cast<const unsigned char *>(src),
                               static_cast<unsigned char *>(dst), static_cast<size_t>(count));
}

void rmgSwapBytes(void *first, void *second, int count) {
    if (count > 0)
        rmg::kCopy.get()->swap(static_cast<unsigned char *>(first),
                               static_cast<unsigned char *>(second), static_cast<size_t>(count));
}

void rmgCopyStrided(const void *src, void *dst, int count, int srcStride, int dstStride, int size) {
    if (count > 0)
        rmg::kCopy.get()->copyStrided(static_cast<const unsigned char *>(src),
                                      static_cast<unsigned char *>(dst), static_cast<size_t>(count),
                                      srcStride, dstStride, size);
}
