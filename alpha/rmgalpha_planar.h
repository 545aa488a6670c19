// The planar path of the alpha composition module: row kernels over runs
// of adjacent samples, and the drivers that feed them when every image of
// an image-form composition is in RMG_DATA_PLANE order. Internal to the
// library (C++ linkage, not exported).
//
// Notation: M is 255 or 65535, mul(x, y) is ownMul255 or ownMul65535
// (floor(x * y / M)), ~x is M - x and x (+) y is min(M, x + y). Every
// truncation is part of the result. The complement terms are products
// mul(x, ~y), the floor, where the integer kernels subtract x - mul(x, y),
// the ceiling; the two paths give other pixels on the same data and stay
// apart.
//
// Row kernels take raw row addresses and a count of samples; a count of 0
// or below writes nothing, and nothing outside the `count` samples of each
// row is read or written. 16-bit samples are little-endian words at any
// address. The destination may be one of the sources (the same address),
// but no other overlap is allowed. Every vector form gives the bytes of the
// scalar form, wherever a sample falls in the row.
#ifndef RMG_ALPHA_RMGALPHA_PLANAR_H
#define RMG_ALPHA_RMGALPHA_PLANAR_H

#include <cstddef>
#include <cstdint>

#include "alpha/rmgalpha.h"

// The planar drivers, [depth 0=8u, 1=16u][compositeType 0..5], with the
// image-form arguments of OwnCompositeImageFn; every image in
// RMG_DATA_PLANE order. Per row: the destination alpha row first (when
// there is a destination alpha image), then the colour row of each channel
// but the destination's alphaChannel. `divideMode` is not looked at.
extern const OwnCompositeImageFn ownCompositePlanar[2][6];

// dstRow[i] = mul(rowA[i], rowB[i]).
void ownMulRow8u(const void *rowA, const void *rowB, void *dstRow, int count);
void ownMulRow16u(const void *rowA, const void *rowB, void *dstRow, int count);

// dstRow[i] = mul(srcRow[i], value); `value` is taken in 0..M (its low 8 or
// 16 bits).
void ownScaleRow8u(const void *srcRow, void *dstRow, int value, int count);
void ownScaleRow16u(const void *srcRow, void *dstRow, int value, int count);

// Colour rows. With premulAlpha 0, A2 = mul(A, a) and B2 = mul(B, b);
// with premulAlpha 1, A2 = A and B2 = B. With rowAlphaB null, b is ~a.
//   over  A2 (+) mul(B2, ~a)             in   mul(A2, b)
//   out   mul(A2, ~b)                    atop mul(A2, b) (+) mul(B2, ~a)
//   xor   mul(A2, ~b) (+) mul(B2, ~a)    plus A2 (+) B2
// A row that a formula doesn't need is not read: rowB in `in` and `out`,
// rowAlphaB with premulAlpha 1 in `over` and `plus`.
using OwnColourRowFn = void (*)(const void *rowA, const void *rowAlphaA, const void *rowB,
                                const void *rowAlphaB, void *dstRow, int count, int premulAlpha);
void ownOverRow8u(const void *rowA, const void *rowAlphaA, const void *rowB,
                  const void *rowAlphaB, void *dstRow, int count, int premulAlpha);
void ownInRow8u(const void *rowA, const void *rowAlphaA, const void *rowB, const void *rowAlphaB,
                void *dstRow, int count, int premulAlpha);
void ownOutRow8u(const void *rowA, const void *rowAlphaA, const void *rowB,
                 const void *rowAlphaB, void *dstRow, int count, int premulAlpha);
void ownAtopRow8u(const void *rowA, const void *rowAlphaA, const void *rowB,
                  const void *rowAlphaB, void *dstRow, int count, int premulAlpha);
void ownXorRow8u(const void *rowA, const void *rowAlphaA, const void *rowB,
                 const void *rowAlphaB, void *dstRow, int count, int premulAlpha);
void ownPlusRow8u(const void *rowA, const void *rowAlphaA, const void *rowB,
                  const void *rowAlphaB, void *dstRow, int count, int premulAlpha);
void ownOverRow16u(const void *rowA, const void *rowAlphaA, const void *rowB,
                   const void *rowAlphaB, void *dstRow, int count, int premulAlpha);
void ownInRow16u(const void *rowA, const void *rowAlphaA, const void *rowB,
                 const void *rowAlphaB, void *dstRow, int count, int premulAlpha);
void ownOutRow16u(const void *rowA, const void *rowAlphaA, const void *rowB,
                  const void *rowAlphaB, void *dstRow, int count, int premulAlpha);
void ownAtopRow16u(const void *rowA, const void *rowAlphaA, const void *rowB,
                   const void *rowAlphaB, void *dstRow, int count, int premulAlpha);
void ownXorRow16u(const void *rowA, const void *rowAlphaA, const void *rowB,
                  const void *rowAlphaB, void *dstRow, int count, int premulAlpha);
void ownPlusRow16u(const void *rowA, const void *rowAlphaA, const void *rowB,
                   const void *rowAlphaB, void *dstRow, int count, int premulAlpha);

// Destination alpha rows. With rowAlphaB null, b is ~a:
//   over  a (+) mul(~a, b)               in   mul(a, b)
//   out   mul(a, ~b)                     atop b (a plain copy; ~a)
//   xor   mul(~a, b) (+) mul(~b, a)      plus a (+) b
// `plus` with rowAlphaB null fills the row with M without reading
// rowAlphaA; `atop` with rowAlphaB given doesn't read rowAlphaA either.
using OwnAlphaRowFn = void (*)(const void *rowAlphaA, const void *rowAlphaB, void *dstRow,
                               int count);
void ownOverAlphaRow8u(const void *rowAlphaA, const void *rowAlphaB, void *dstRow, int count);
void ownInAlphaRow8u(const void *rowAlphaA, const void *rowAlphaB, void *dstRow, int count);
void ownOutAlphaRow8u(const void *rowAlphaA, const void *rowAlphaB, void *dstRow, int count);
void ownAtopAlphaRow8u(const void *rowAlphaA, const void *rowAlphaB, void *dstRow, int count);
void ownXorAlphaRow8u(const void *rowAlphaA, const void *rowAlphaB, void *dstRow, int count);
void ownPlusAlphaRow8u(const void *rowAlphaA, const void *rowAlphaB, void *dstRow, int count);
void ownOverAlphaRow16u(const void *rowAlphaA, const void *rowAlphaB, void *dstRow, int count);
void ownInAlphaRow16u(const void *rowAlphaA, const void *rowAlphaB, void *dstRow, int count);
void ownOutAlphaRow16u(const void *rowAlphaA, const void *rowAlphaB, void *dstRow, int count);
void ownAtopAlphaRow16u(const void *rowAlphaA, const void *rowAlphaB, void *dstRow, int count);
void ownXorAlphaRow16u(const void *rowAlphaA, const void *rowAlphaB, void *dstRow, int count);
void ownPlusAlphaRow16u(const void *rowAlphaA, const void *rowAlphaB, void *dstRow, int count);

// The row kernels by [depth][compositeType], as the drivers pick them.
extern const OwnColourRowFn ownColourRows[2][6];
extern const OwnAlphaRowFn ownAlphaRows[2][6];

namespace rmg {

// The forms of the planar rows, one record per instruction set. The rows
// are those of the functions above, with the sources gathered in one
// record and `count` at least 1. Colour rows come in four loops each, one
// for every pair of premulAlpha and rowAlphaB given; alpha rows in two.
struct PlanarRow {
    const unsigned char *A;  // rowA, or the source row of a scale row
    const unsigned char *a;  // rowAlphaA
    const unsigned char *B;  // rowB
    const unsigned char *b;  // rowAlphaB, or null
    unsigned char *dst;
    uint32_t value;  // the factor of a scale row
};
using PlanarRowFn = void (*)(const PlanarRow &row, size_t count);
struct PlanarForms {
    PlanarRowFn mul[2];                // [depth]
    PlanarRowFn scale[2];              // [depth]
    PlanarRowFn colour[2][6][2][2];    // [depth][operator][premulAlpha][rowAlphaB given]
    PlanarRowFn alpha[2][6][2];        // [depth][operator][rowAlphaB given]
};
extern const PlanarForms kPlanarScalar;
extern const PlanarForms kPlanarSse2;
extern const PlanarForms kPlanarAvx2;

}  // namespace rmg

#endif
