// Test support for the gray conversions: images with random bytes, a
// per-element model of both conversions on byte buffers, and a tiled image
// whose call-back serves a fixed grid of tiles and records its calls.
#ifndef RMG_TESTS_COLOR_COLORTEST_H
#define RMG_TESTS_COLOR_COLORTEST_H

#include <cstdint>
#include <random>
#include <vector>

#include "access/tiletest.h"
#include "rmg.h"

namespace colortest {

using Bytes = std::vector<unsigned char>;

// A plain image whose whole buffer, padding included, holds random bytes.
struct Image {
    RmgImage *image;
    Image(int nChannels, unsigned int depth, int order, const char *model, const char *seq,
          int height, int width, int align, std::mt19937 &rng);
    ~Image();
    Image(const Image &) = delete;
    Image &operator=(const Image &) = delete;
    Bytes bytes() const;
};

// The model of one piece of rmgColorToGray: `height` rows of `width`
// pixels of src (format of srcFormat, rows srcStep apart, the buffer's
// bytes only) into dst (format of dstFormat, rows dstStep apart). Elements
// whose bytes lie outside either buffer are skipped.
void modelColorToGray(const RmgImage *srcFormat, const Bytes &src, int srcStep, int height,
                      int width, const RmgImage *dstFormat, Bytes &dst, int dstStep);

// The model of one piece of rmgGrayToColor.
void modelGrayToColor(const RmgImage *srcFormat, const Bytes &src, int srcStep, int height,
                      int width, const RmgImage *dstFormat, Bytes &dst, int dstStep, float fractR,
                      float fractG, float fractB);

// One call of a tile call-back, as the tile engine's tests record them.
using tiletest::Call;

// A tiled image of tilesX by tilesY tiles of random bytes; the call-back
// gives null for any tile outside the grid (which ends a destination walk)
// and records every call.
class TiledImage {
public:
    TiledImage(int nChannels, unsigned int depth, int order, const char *model, const char *seq,
               int height, int width, int tileWidth, int tileHeight, std::mt19937 &rng);
    ~TiledImage();
    TiledImage(const TiledImage &) = delete;
    TiledImage &operator=(const TiledImage &) = delete;
    RmgImage *image;
    RmgTileInfo tiles;
    int tilesX, tilesY;
    int tileStep, tileBytes;
    std::vector<Bytes> data;  // tile (x, y) at x + y * tilesX
    std::vector<Call> calls;
    int nullAt = -1;  // a call number (0-based) whose tile is null
    Bytes &tile(int x, int y) { return data[x + y * tilesX]; }

private:
    static void callBack(const RmgImage *image, int xIndex, int yIndex, int mode);
};

// The calls of a whole destination walk over a grid of tilesX by tilesY.
std::vector<Call> walkCalls(int tilesX, int tilesY);

}  // namespace colortest

#endif
