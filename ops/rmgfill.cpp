// Fill kernels: the portable forms, the channel masks of the vector forms,
// and the entries that pick a form for the processor.
#include "ops/rmgfill.h"

#include <cstring>

#include "core/rmgcpu.h"
#include "ops/rmgfill_impl.h"

namespace rmg {

namespace {

constexpr ChannelMasks makeChannelMasks() {
    ChannelMasks masks{};
    constexpr int kSizes[3] = {1, 2, 4};
    for (int r = 0; r < 9; ++r) {
        const int size = kSizes[r / 3];
        const int stride = size * (r % 3 + 2);
        for (int t = 0; t < static_cast<int>(sizeof masks.rows[r]); ++t)
            masks.rows[r][t] = t % stride < size ? 0xFF : 0;
    }
    return masks;
}

}  // namespace

constexpr ChannelMasks kChannelMasks = makeChannelMasks();

namespace {

void fillRunScalar(unsigned char *row, size_t count, uint32_t value, int size) {
    if (size == 1)
        std::memset(row, static_cast<unsigned char>(value), count);
    else
        fillStridedLoop(row, count, size, value, size);
}

}  // namespace

constexpr FillForms kFillScalar = {fillRunScalar, fillStridedLoop};

namespace {

constexpr FormTable<const FillForms *> kFill = formTable<const FillForms *>(
    &kFillScalar, RMG_FORM_SSE2(&kFillSse2), RMG_FORM_AVX2(&kFillAvx2),
    RMG_FORM_AVX512(&kFillAvx512));

void fillRun(void *row, int count, uint32_t value, int size) {
    if (count > 0)
        kFill.get()->run(static_cast<unsigned char *>(row), static_cast<size_t>(count), value, size);
}

void fillStrided(void *row, int count, int stride, uint32_t value, int size) {
    if (count > 0)
        kFill.get()->strided(static_cast<unsigned char *>(row), static_cast<size_t>(count), stride,
                             value, size);
}

}  // namespace
}  // namespace rmg

void rmgFill8(uint8_t value, void *row, int count) { rmg::fillRun(row, count, value, 1); }
void rmgFill16(uint16_t value, void *row, int count) { rmg::fillRun(row, count, value, 2); }
void rmgFill32(uint32_t value, void *row, int count) { rmg::fillRun(row, count, value, 4); }

void rmgFillStrided8(uint8_t value, void *row, int count, int stride) {
    rmg::fillStrided(row, count, stride, value, 1);
}
void rmgFillStrided16(uint16_t value, void *row, int count, int stride) {
    rmg::fillStrided(row, count, stride, value, 2);
}
void rmgFillStrided32(uint32_t value, void *row, int count, int stride) {
    rmg::fillStrided(row, count, stride, value, 4);
}
