// Test support for the tile engine: images whose pixels are a known
// function of their position (plain, or tiled and served by a recording
// call-back), and a per-element model of the border rules on plain images.
#ifndef RMG_TESTS_ACCESS_TILETEST_H
#define RMG_TESTS_ACCESS_TILETEST_H

#include <cstdint>
#include <memory>
#include <ostream>
#include <vector>

#include "rmg.h"

namespace tiletest {

// The layout of an image.
struct Kind {
    int nChannels;
    unsigned int depth;
    int dataOrder;
    int align;
};
using Bytes = std::vector<unsigned char>;

// One-channel layouts the concrete cases use.
const Kind k8{1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 4};
const Kind k8align8{1, RMG_DEPTH_8U, RMG_DATA_PIXEL, 8};
const Kind k1{1, RMG_DEPTH_1U, RMG_DATA_PIXEL, 4};
std::ostream &operator<<(std::ostream &os, const Kind &k);

int bitsOf(unsigned int depth);
int elementBytesOf(const Kind &k);  // 0 for 1-bit
int pixelBytesOf(const Kind &k);    // bytes of a pixel within a plane, 0 for 1-bit
int planesOf(const Kind &k);
// Row step of a plain block of `width` pixels of this kind.
int blockRowStep(const Kind &k, int width);
Kind kindOf(const RmgImage *image);

// The twelve layouts of the six depths in both orders, with a channel
// count and align taken from `variant`.
Kind kindNumber(int index, unsigned variant);

// What every test image holds at (X, Y), for any X and Y, negative or
// beyond the image: byte k of the pixel's bytes in plane p, or the bit of
// a 1-bit image.
uint8_t sampleByte(uint32_t seed, int X, int Y, int p, int k);
bool sampleBit(uint32_t seed, int X, int Y);

// A plain image with the sample pixels; its row padding holds `padFill`
// (the fill pattern of rmgAllocateImage).
struct PlainImage {
    RmgImage *image;
    PlainImage(const Kind &k, int height, int width, uint32_t seed, int padFill = 0x5A);
    ~PlainImage();
    PlainImage(const PlainImage &) = delete;
    PlainImage &operator=(const PlainImage &) = delete;
    // Byte offset of pixel (X, Y) in plane p, and the whole buffer.
    unsigned char *pixel(int X, int Y, int p = 0) const;
};

// One call of the tile call-back.
struct Call {
    int x, y, mode;
    bool operator==(const Call &o) const { return x == o.x && y == o.y && mode == o.mode; }
};
std::ostream &operator<<(std::ostream &os, const Call &c);

// A tiled image whose call-back serves, for any tile column and row (also
// beyond the grid and at negative numbers), a tile of the sample pixels
// with padding bytes 0xEE. It records every call, checks that a release
// hands back the pointer it gave, and can give null at a chosen read. Tiles
// never released are freed with the object.
class TiledImage {
  public:
    TiledImage(const Kind &k, int height, int width, int tileWidth, int tileHeight, uint32_t seed);
    ~TiledImage();
    TiledImage(const TiledImage &) = delete;
    TiledImage &operator=(const TiledImage &) = delete;

    RmgImage *image;
    RmgTileInfo tiles;
    std::vector<Call> calls;
    int failAtRead = -1;  // 0-based number of the read that gets null
    int reads = 0;
    bool badRelease = false;
    size_t outstanding() const { return given_.size(); }

  private:
    struct Tile {
        int x, y;
        std::vector<unsigned char> bytes;
    };
    static void callBack(const RmgImage *image, int xIndex, int yIndex, int mode);
    void serve(int xIndex, int yIndex);
    void release(int xIndex, int yIndex);
    uint32_t seed_;
    std::vector<std::unique_ptr<Tile>> given_;
};

// The per-element model of the border rules on a plain image: the block
// that reading the rectangle gives, row padding included. Each block pixel
// at image position (X, Y) takes, by the rule of its band (above, below,
// or beside the image, where left and right rules apply), the image pixel
// at the position the rule names, read at its address; what lies outside
// the image's imageSize bytes stays 0.
struct Block {
    std::vector<uint8_t> bytes;
    int rowStep;
};
Block modelExtended(const RmgImage *image, int x, int y, int width, int height);

// The column (or row) the rule reads for position X of an image of extent
// W: reflection with the edge pixel repeated and no limit, one wrap.
long long mapPosition(int mode, long long X, long long W);

}  // namespace tiletest

#endif
