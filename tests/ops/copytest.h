// Test support for Copy and Exchange: one log of the tile call-backs of
// several tiled images in the order they came (with a call that can be
// made to fail), the region of an image in memory as the library clips it,
// the per-element model of both operations, and access to the elements of
// plain and tiled test images in image coordinates.
#ifndef RMG_TESTS_OPS_COPYTEST_H
#define RMG_TESTS_OPS_COPYTEST_H

#include <gtest/gtest.h>

#include <cstdint>
#include <initializer_list>
#include <ostream>
#include <string>
#include <vector>

#include "ops/scetest.h"
#include "rmg.h"

namespace copytest {

// One call of a tile call-back, with the name of its image.
struct Call {
    char image;
    int x, y, mode;
    bool operator==(const Call &o) const {
        return image == o.image && x == o.x && y == o.y && mode == o.mode;
    }
};
std::ostream &operator<<(std::ostream &os, const Call &c);

// The calls of the tiled images it watches, in order. A watched image's
// call-back goes through the log to the image's own. The call with number
// `failAt` (0-based, over all images) that asks for a tile gets null.
class CallLog {
  public:
    CallLog();
    ~CallLog();
    CallLog(const CallLog &) = delete;
    CallLog &operator=(const CallLog &) = delete;

    void watch(scetest::Tiled &tiled, char name);
    // A source and a destination, as 'S' and 'D'.
    void watchPair(scetest::Tiled &src, scetest::Tiled &dst);
    std::vector<Call> calls;
    int failAt = -1;

  private:
    static void callBack(const RmgImage *image, int xIndex, int yIndex, int mode);
    std::vector<std::pair<const RmgTileInfo *, char>> names_;
};

// One part of the walk over two tiled images: the destination's tile asked
// for writing, the source's tile read and released (for an exchange then
// asked for writing and released again), the destination's tile released.
std::vector<Call> partOf(bool exchange, int dx, int dy, int sx, int sy);
// The lists one after the other.
std::vector<Call> joined(std::initializer_list<std::vector<Call>> lists);

// Two tiled one-channel 8-bit images of one size in tiles of 8 x 8, a
// source and a destination, whose call-backs go into one log.
struct TiledPair {
    TiledPair(int height, int width, uint32_t srcSeed = 7, uint32_t dstSeed = 7)
        : src(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, height, width, 8, 8, srcSeed),
          dst(1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4, height, width, 8, 8, dstSeed) {
        log.watchPair(src, dst);
    }
    scetest::Tiled src, dst;
    CallLog log;
};

// The region of an image in memory after clipping, as ownImageRect gives
// it: origin, size (either may be 0) and coi.
struct Clip {
    int x, y, rows, columns, coi;
};
Clip clipOf(const RmgImage *image);

// Element access in image coordinates; channels 0-based.
uint32_t elementOf(const scetest::Plain &p, int x, int y, int ch);
void putElement(scetest::Plain &p, int x, int y, int ch, uint32_t value);
uint32_t elementOf(const scetest::Tiled &t, int x, int y, int ch);
void putElement(scetest::Tiled &t, int x, int y, int ch, uint32_t value);

// The model of rmgCopy (exchange false) or rmgExchange (true) on two plain
// images with the status good: the bytes both blocks should hold after the
// call. Each gets the element of the other's region at the same place in
// the smaller size, channel to channel (a coi picks one).
void modelPair(bool exchange, const scetest::Plain &src, const scetest::Plain &dst,
               std::vector<uint8_t> *wantSrc, std::vector<uint8_t> *wantDst);

// The text rmgBadHeaderText gives for a mask.
std::string headerText(int mask);

// Asserts that report `index` of the recording handler came from the
// module with these values.
void expectReport(size_t index, int status, const std::string &context,
                  const std::string &funcName);

// Pixel bytes start, start + 1, ... in order of memory, padding included.
void countUp(scetest::Plain &p, int start = 0);

// The pixel bytes of an image, and a header as bytes (to see that a call
// left it exactly as it was).
std::vector<uint8_t> pixelsOf(scetest::Plain &p);
std::vector<uint8_t> headerBytes(const RmgImage *image);

}  // namespace copytest

#endif
