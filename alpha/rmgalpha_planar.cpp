// The planar path of the alpha composition module: the scalar form of the
// rows, the choice of a form for the processor, the row entries and the
// planar drivers.
#include "alpha/rmgalpha_planar.h"

#include <cstdint>

#include "alpha/rmgalpha.h"
#include "alpha/rmgalpha_planar_impl.h"
#include "core/rmgcpu.h"

namespace rmg {

constexpr PlanarForms kPlanarScalar = scalarPlanarForms();

namespace {

constexpr FormTable<const PlanarForms *> kPlanar = formTable<const PlanarForms *>(
    &kPlanarScalar, RMG_FORM_SSE2(&kPlanarSse2), RMG_FORM_AVX2(&kPlanarAvx2), nullptr);

const unsigned char *bytesOf(const void *p) { return static_cast<const unsigned char *>(p); }

PlanarRow planarRow(const void *A, const void *a, const void *B, const void *b, void *dst,
                    uint32_t value) {
    return PlanarRow{bytesOf(A), bytesOf(a), bytesOf(B), bytesOf(b),
                     static_cast<unsigned char *>(dst), value};
}

void mulRow(int depth, const void *rowA, const void *rowB, void *dstRow, int count) {
    if (count > 0)
        kPlanar.get()->mul[depth](planarRow(rowA, nullptr, rowB, nullptr, dstRow, 0),
                                  static_cast<size_t>(count));
}

void scaleRow(int depth, const void *srcRow, void *dstRow, int value, int count) {
    if (count > 0)
        kPlanar.get()->scale[depth](
            planarRow(srcRow, nullptr, nullptr, nullptr, dstRow, static_cast<uint32_t>(value)),
            static_cast<size_t>(count));
}

// The loop is chosen once for the row, by premulAlpha and by whether there
// is an alpha row of B.
void colourRow(int depth, int op, const void *rowA, const void *rowAlphaA, const void *rowB,
               const void *rowAlphaB, void *dstRow, int count, int premulAlpha) {
    if (count > 0)
        kPlanar.get()->colour[depth][op][premulAlpha != 0][rowAlphaB != nullptr](
            planarRow(rowA, rowAlphaA, rowB, rowAlphaB, dstRow, 0), static_cast<size_t>(count));
}

void alphaRow(int depth, int op, const void *rowAlphaA, const void *rowAlphaB, void *dstRow,
              int count) {
    if (count > 0)
        kPlanar.get()->alpha[depth][op][rowAlphaB != nullptr](
            planarRow(nullptr, rowAlphaA, nullptr, rowAlphaB, dstRow, 0),
            static_cast<size_t>(count));
}

}  // namespace
}  // namespace rmg

void ownMulRow8u(const void *rowA, const void *rowB, void *dstRow, int count) {
    rmg::mulRow(kOwnDepth8u, rowA, rowB, dstRow, count);
}
void ownMulRow16u(const void *rowA, const void *rowB, void *dstRow, int count) {
    rmg::mulRow(kOwnDepth16u, rowA, rowB, dstRow, count);
}
void ownScaleRow8u(const void *srcRow, void *dstRow, int value, int count) {
    rmg::scaleRow(kOwnDepth8u, srcRow, dstRow, value, count);
}
void ownScaleRow16u(const void *srcRow, void *dstRow, int value, int count) {
    rmg::scaleRow(kOwnDepth16u, srcRow, dstRow, value, count);
}

// own<Op>Row8u, own<Op>Row16u, own<Op>AlphaRow8u and own<Op>AlphaRow16u of
// one operator (compositeType `op`).
#define OWN_PLANAR_ROWS(Op, op)                                                                 \
    void own##Op##Row8u(const void *rowA, const void *rowAlphaA, const void *rowB,              \
                        const void *rowAlphaB, void *dstRow, int count, int premulAlpha) {      \
        rmg::colourRow(kOwnDepth8u, op, rowA, rowAlphaA, rowB, rowAlphaB, dstRow, count,        \
                       premulAlpha);                                                            \
    }                                                                                           \
    void own##Op##Row16u(const void *rowA, const void *rowAlphaA, const void *rowB,             \
                         const void *rowAlphaB, void *dstRow, int count, int premulAlpha) {     \
        rmg::colourRow(kOwnDepth16u, op, rowA, rowAlphaA, rowB, rowAlphaB, dstRow, count,       \
                       premulAlpha);                                                            \
    }                                                                                           \
    void own##Op##AlphaRow8u(const void *rowAlphaA, const void *rowAlphaB, void *dstRow,        \
                             int count) {                                                       \
        rmg::alphaRow(kOwnDepth8u, op, rowAlphaA, rowAlphaB, dstRow, count);                    \
    }                                                                                           \
    void own##Op##AlphaRow16u(const void *rowAlphaA, const void *rowAlphaB, void *dstRow,       \
                              int count) {                                                      \
        rmg::alphaRow(kOwnDepth16u, op, rowAlphaA, rowAlphaB, dstRow, count);                   \
    }

OWN_PLANAR_ROWS(Over, 0)
OWN_PLANAR_ROWS(In, 1)
OWN_PLANAR_ROWS(Out, 2)
OWN_PLANAR_ROWS(Atop, 3)
OWN_PLANAR_ROWS(Xor, 4)
OWN_PLANAR_ROWS(Plus, 5)

#undef OWN_PLANAR_ROWS

const OwnColourRowFn ownColourRows[2][6] = {
    {ownOverRow8u, ownInRow8u, ownOutRow8u, ownAtopRow8u, ownXorRow8u, ownPlusRow8u},
    {ownOverRow16u, ownInRow16u, ownOutRow16u, ownAtopRow16u, ownXorRow16u, ownPlusRow16u},
};

const OwnAlphaRowFn ownAlphaRows[2][6] = {
    {ownOverAlphaRow8u, ownInAlphaRow8u, ownOutAlphaRow8u, ownAtopAlphaRow8u, ownXorAlphaRow8u,
     ownPlusAlphaRow8u},
    {ownOverAlphaRow16u, ownInAlphaRow16u, ownOutAlphaRow16u, ownAtopAlphaRow16u,
     ownXorAlphaRow16u, ownPlusAlphaRow16u},
};

// ---------------------------------------------------------------------------
// Drivers
// ---------------------------------------------------------------------------

namespace {

int minOf(int a, int b) { return a < b ? a : b; }

// The stream of a row kernel's samples: the image's channel cursor, with
// the samples of a row taken as adjacent (which they are in plane order,
// and which is what a row kernel touches in any case).
OwnSampleStream rowStream(const RmgImage *image, int channel, int64_t sampleBytes) {
    OwnSampleStream s = ownSampleStream(image, channel, sampleBytes);
    s.pixel = sampleBytes;
    return s;
}

int alphaChannelOf(const RmgImage *image) {
    return image->alphaChannel != 0 ? image->alphaChannel : 1;
}

// The planar driver of operator `op` at depth `depth`: the cursors of the
// scalar frame (n channels from channel 1, or one at each image's own coi
// under a destination COI; the alpha images at their alphaChannel, or 1),
// then row by row the destination alpha row, when there is a destination
// alpha image, and the colour row of each channel but the destination's
// alphaChannel. So a row's destination alpha is complete before its first
// colour row, whichever channel is skipped.
//
// As in the scalar kernels, rows that would reach outside any image's
// imageSize bytes are left out from the last row back, so that a call never
// touches memory beyond the buffers; rowB is only looked at by the
// operators that read it.
template <int depth, int op>
void compositePlanar(const RmgImage *srcImageA, const RmgImage *srcImageB, RmgImage *dstImage,
                     const RmgImage *alphaImageA, const RmgImage *alphaImageB,
                     RmgImage *alphaImageDst, int premulAlpha, int, int rows, int columns) {
    constexpr int64_t kBytes = depth == kOwnDepth8u ? 1 : 2;
    constexpr bool kReadsB = op != 1 && op != 2;  // `in` and `out` don't
    if (rows <= 0 || columns <= 0) return;
    const bool coi = dstImage->roi != nullptr && dstImage->roi->coi != 0;
    auto channelOf = [coi](const RmgImage *image) {
        return coi ? (image->roi != nullptr ? image->roi->coi : 0) : 1;
    };
    const OwnSampleStream A = rowStream(srcImageA, channelOf(srcImageA), kBytes);
    const OwnSampleStream B = rowStream(srcImageB, channelOf(srcImageB), kBytes);
    const OwnSampleStream dst = rowStream(dstImage, channelOf(dstImage), kBytes);
    const OwnSampleStream a = rowStream(alphaImageA, alphaChannelOf(alphaImageA), kBytes);
    OwnSampleStream b, d;
    if (alphaImageB != nullptr) b = rowStream(alphaImageB, alphaChannelOf(alphaImageB), kBytes);
    if (alphaImageDst != nullptr) d = rowStream(alphaImageDst, alphaImageDst->alphaChannel, kBytes);

    const int n = coi ? 1 : dstImage->nChannels;
    const int skip = dstImage->alphaChannel - 1;
    // The channels with a colour row, without the skipped one at either end.
    const int firstChannel = skip == 0 ? 1 : 0;
    const int lastChannel = skip == n - 1 ? n - 2 : n - 1;
    const bool colour = firstChannel <= lastChannel;
    if (!colour && alphaImageDst == nullptr) return;

    if (colour) {
        rows = minOf(rows, ownRowsInside(A, srcImageA->imageSize, firstChannel, lastChannel,
                                         columns, rows, kBytes));
        if (kReadsB)
            rows = minOf(rows, ownRowsInside(B, srcImageB->imageSize, firstChannel, lastChannel,
                                             columns, rows, kBytes));
        rows = minOf(rows, ownRowsInside(dst, dstImage->imageSize, firstChannel, lastChannel,
                                         columns, rows, kBytes));
    }
    rows = minOf(rows, ownRowsInside(a, alphaImageA->imageSize, 0, 0, columns, rows, kBytes));
    if (alphaImageB != nullptr)
        rows = minOf(rows, ownRowsInside(b, alphaImageB->imageSize, 0, 0, columns, rows, kBytes));
    if (alphaImageDst != nullptr)
        rows = minOf(rows, ownRowsInside(d, alphaImageDst->imageSize, 0, 0, columns, rows, kBytes));

    const OwnColourRowFn colourRow = ownColourRows[depth][op];
    const OwnAlphaRowFn alphaRow = ownAlphaRows[depth][op];
    for (int r = 0; r < rows; ++r) {
        // Addresses are formed only for the rows found inside the buffers.
        const unsigned char *rowa = a.data + a.start + r * a.row;
        const unsigned char *rowb = alphaImageB != nullptr ? b.data + b.start + r * b.row : nullptr;
        if (alphaImageDst != nullptr)
            alphaRow(rowa, rowb, d.data + d.start + r * d.row, columns);
        for (int c = firstChannel; colour && c <= lastChannel; ++c) {
            if (c == skip) continue;
            const unsigned char *rowB =
                kReadsB ? B.data + B.start + r * B.row + c * B.channel : nullptr;
            colourRow(A.data + A.start + r * A.row + c * A.channel, rowa, rowB, rowb,
                      dst.data + dst.start + r * dst.row + c * dst.channel, columns, premulAlpha);
        }
    }
}

}  // namespace

const OwnCompositeImageFn ownCompositePlanar[2][6] = {
    {compositePlanar<0, 0>, compositePlanar<0, 1>, compositePlanar<0, 2>, compositePlanar<0, 3>,
     compositePlanar<0, 4>, compositePlanar<0, 5>},
    {compositePlanar<1, 0>, compositePlanar<1, 1>, compositePlanar<1, 2>, compositePlanar<1, 3>,
     compositePlanar<1, 4>, compositePlanar<1, 5>},
};
