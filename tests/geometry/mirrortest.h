// Test support for the mirror: plain images with random bytes in the whole
// buffer, a per-element model of the mirror on plain images, and a tiled
// image whose tiles are cut out of (and written back into) one plain image
// of the whole grid, with a log of the call-backs.
#ifndef RMG_TESTS_GEOMETRY_MIRRORTEST_H
#define RMG_TESTS_GEOMETRY_MIRRORTEST_H

#include <gtest/gtest.h>

#include <cstdint>
#include <map>
#include <memory>
#include <ostream>
#include <utility>
#include <vector>

#include "rmg.h"

namespace mirrortest {

using Bytes = std::vector<unsigned char>;

struct Kind {
    int nChannels;
    unsigned int depth;
    int dataOrder;
    int align;
};

// A plain image of `kind`, every byte of its buffer (padding included)
// random from `seed`; an optional ROI owned by the image.
RmgImage *makeImage(const Kind &kind, int height, int width, uint32_t seed);
void setRoi(RmgImage *image, int coi, int x, int y, int height, int width);
void freeImage(RmgImage *image);
Bytes bufferOf(const RmgImage *image);

// The rectangle rules of the operation, written again for the model.
struct Rect {
    int x, y, rows, cols;
};
Rect modelSourceRect(const RmgImage *image);
Rect modelDestinationRect(const RmgImage *image);

// The expected bytes of dst's buffer after a mirror of the plain images
// src into dst whose buffers held `srcBytes` and `dstBytes` before the
// call (for one record, the same bytes twice): each element of the common
// rectangle taken from its mirrored position, when both lie inside their
// buffers; everything else as it was.
Bytes modelMirror(const RmgImage *src, const Bytes &srcBytes, const RmgImage *dst,
                  const Bytes &dstBytes, int flipAxis);

// One call of a tile call-back.
struct Call {
    int x, y, mode;
    bool operator==(const Call &o) const { return x == o.x && y == o.y && mode == o.mode; }
};
std::ostream &operator<<(std::ostream &os, const Call &c);

// A tiled image of `height` by `width` whose tiles are cut from `grid`, a
// plain image of whole tiles (random bytes from `seed`); a written tile
// goes back into the grid at its release.
class TiledImage {
  public:
    TiledImage(const Kind &kind, int height, int width, int tileWidth, int tileHeight,
               uint32_t seed);
    ~TiledImage();
    TiledImage(const TiledImage &) = delete;
    TiledImage &operator=(const TiledImage &) = delete;

    RmgImage *image;
    RmgImage *grid;
    RmgTileInfo tiles;
    std::vector<Call> calls;
    // A plain image of height by width with the grid's pixels (padding
    // random), for the same call on a plain image.
    RmgImage *plainCopy(uint32_t seed) const;
    // True when the pixels of `plain` equal those of the grid's first
    // height by width pixels.
    ::testing::AssertionResult samePixels(const RmgImage *plain) const;

  private:
    static void callBack(const RmgImage *image, int xIndex, int yIndex, int mode);
    std::map<std::pair<int, int>, std::pair<int, Bytes>> given_;
    void moveTile(int xIndex, int yIndex, unsigned char *tile, bool toTile);
};

}  // namespace mirrortest

#endif
