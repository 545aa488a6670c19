// Per-element models of rmgAndS and rmgAnd on images in memory, for the
// tests of the logical operations. The images and tiled images are those of
// ops/addstest.h.
//
// rmgAndS:
//   - whole images (same height, width and imageSize, ROIs absent or at 0
//     and covering the image with coi 0, or coi 1 of one channel): the
//     buffer in 4-byte words, imageSize / 4 of them; with a source align of
//     8 in pairs of them, imageSize / 8 8-byte words, of which a single one
//     is left alone;
//   - 1u: the bits of the regions (ROI offsets, sizes cut at the edge, the
//     smaller of the two), bit AND bit 0 of the value;
//   - otherwise the source's coi decides: plane order, one plane of each
//     coi (none when the destination's coi is 0) or every source plane into
//     the destination's planes of the same index; pixel order, one channel
//     of each coi (a destination coi of 0 means the element before each
//     pixel, none in front of the buffer) or the region's rows of elements.
// rmgAnd:
//   - untiled srcImageA and dstImage only (a tiled srcImageB has no pixels);
//   - whole images: every byte of imageSize (32 bits: whole words);
//   - 1u: bit by bit over the unclipped bit rectangles, bits outside any
//     buffer skipped;
//   - otherwise the cases A to D over the three clipped regions.
#ifndef RMG_TESTS_OPS_ANDTEST_H
#define RMG_TESTS_OPS_ANDTEST_H

#include <cstdint>
#include <vector>

#include "ops/addstest.h"
#include "rmg.h"

namespace andtest {

// The 32-bit mask of rmgAndS's constant at a depth, worked out anew.
uint32_t maskOf(unsigned int depth, int value);

// The destination's bytes after rmgAndS, from the bytes before the call
// (the same vector for one image).
std::vector<uint8_t> andSModel(const RmgImage *src, const std::vector<uint8_t> &srcBytes,
                               const RmgImage *dst, const std::vector<uint8_t> &dstBytes,
                               int value);

// The destination's bytes after rmgAnd.
std::vector<uint8_t> andModel(const RmgImage *a, const std::vector<uint8_t> &aBytes,
                              const RmgImage *b, const std::vector<uint8_t> &bBytes,
                              const RmgImage *dst, const std::vector<uint8_t> &dstBytes);

// Bit x of a row that starts at `row`, most significant bit first.
bool bitOf(const uint8_t *row, int64_t x);
void setBit(uint8_t *row, int64_t x, bool v);

}  // namespace andtest

#endif
