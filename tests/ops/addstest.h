// Test images and the per-element model of scalar add and subtract.
//
// Images keep their pixels in a block of exactly imageSize bytes, so that
// the address sanitizer sees any access beyond it. Tiled images keep each
// tile in a block of exactly one tile's bytes and serve it through a
// recording call-back that clears tileData on release.
//
// The model says, for an operation on two images, which destination element
// gets a result from which source element and by which arithmetic:
//   - whole images (same height, width and imageSize, ROIs absent or at 0 and
//     covering the image with coi 0, or coi 1 of one channel): every element
//     of the buffer, row padding included, from the element at the same
//     index; 1-bit images whole 32-bit words only;
//   - otherwise the cases A to D over the clipped regions, the smaller rows
//     and columns counting, with the 8u arithmetic in 16-bit words except in
//     the one-channel loop of pixel-order images (case C), which works in 32
//     bits; anything else writes nothing;
//   - 1-bit images bit by bit over the unclipped bit rectangles, skipping
//     bits whose byte lies outside either buffer.
#ifndef RMG_TESTS_OPS_ADDSTEST_H
#define RMG_TESTS_OPS_ADDSTEST_H

#include <cstdint>
#include <map>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "rmg.h"

namespace addstest {

enum Kind { kAdd, kSub, kRev };

// Calls rmgAddS (kAdd) or rmgSubtractS (kSub: reversed 0, kRev: reversed 1).
void apply(Kind kind, const RmgImage *src, RmgImage *dst, int value, const int *tilePos);

// The element the operation gives for element e of a depth. `oneChannel`:
// the arithmetic of case C (8u in 32 bits; the others as in the runs).
int64_t resultOf(unsigned int depth, Kind kind, int value, int64_t e, bool oneChannel);

// Row step of a header's layout, computed as the library's headers are.
int stepOf(int nChannels, unsigned int depth, int dataOrder, int align, int width);

// Bytes of an element (1 for 1-bit images, as the geometry counts them).
int elemBytes(unsigned int depth);

// Where the elements of an image, or of one tile, lie in its bytes.
struct Layout {
    int nChannels;
    unsigned int depth;
    int dataOrder;
    int height;
    int step;
};
Layout layoutOf(const RmgImage *image);

// Reads or writes element (x, y) of channel ch (0-based); for 1-bit images
// the bit at column x, most significant bit first.
int64_t getAt(const Layout &layout, const uint8_t *bytes, int x, int y, int ch);
void putAt(const Layout &layout, uint8_t *bytes, int x, int y, int ch, int64_t v);

// Element k of a buffer taken as a flat array of the depth's elements.
int64_t getFlat(unsigned int depth, const uint8_t *bytes, int k);
void putFlat(unsigned int depth, uint8_t *bytes, int k, int64_t v);

// An image in memory with its own exact-size buffer and ROI record.
struct Image {
    Image(int nChannels, unsigned int depth, int dataOrder, int align, int height, int width,
          uint32_t seed);
    ~Image();
    Image(const Image &) = delete;
    Image &operator=(const Image &) = delete;

    void setRoi(int coi, int xOffset, int yOffset, int height, int width);
    void clearRoi() { image->roi = nullptr; }
    std::vector<uint8_t> bytes() const;
    void fill(uint32_t seed);
    void fillFrom(const std::vector<uint8_t> &content);

    RmgImage *image;
    RmgROI roi{0, 0, 0, 0, 0};
    uint8_t *data;
};

// True when the operations take two images as flat buffers: the same
// height, width and imageSize, and each without ROI or with a ROI at 0
// that covers it with coi 0 (or coi 1 of one channel).
bool isWhole(const RmgImage *a, const RmgImage *b);

// The clipped region of an image, as rows, columns and the channels it
// brings; `ok` false when it can't be resolved (coi above the channels, or
// a region ending before the image).
struct Region {
    int x0, y0, columns, rows, coi;
    bool ok;
};
Region regionOf(const RmgImage *image);

// A ROI with a non-zero coi; all channels processed (no coi, or coi 1 of
// one channel).
bool hasCoi(const RmgImage *image);
bool allChannels(const RmgImage *image);

// One destination element and the source element it comes from, in image
// coordinates (for 1-bit images: column and row of the bit). `one`: the
// arithmetic of case C.
struct Pair {
    int sx, sy, sch, dx, dy, dch;
    bool one;
};

// What the model says of a call on untiled headers (the regions as the
// headers give them).
struct Plan {
    bool whole = false;          // flat over imageSize (1u: whole words)
    bool flatBits = false;       // 1u bit loop in buffer bit positions
    std::vector<Pair> pairs;     // the cases, or the 1u bits of flatBits
    // flatBits only: absolute bit positions in the buffers.
    std::vector<std::pair<int64_t, int64_t>> bits;
};

// `pairsOnly`: give the pairs of the cases also for whole images (what a
// whole image's pixels get, without its padding).
Plan planOf(const RmgImage *src, const RmgImage *dst, bool pairsOnly = false);

// The destination bytes the operation leaves, from the source's and the
// destination's bytes before the call (the same vector for one image).
// `pairsOnly` as for planOf.
std::vector<uint8_t> model(const RmgImage *src, const std::vector<uint8_t> &srcBytes,
                           const RmgImage *dst, const std::vector<uint8_t> &dstBytes, Kind kind,
                           int value, bool pairsOnly = false);

// The flat path of whole images over `bytes` bytes: every element (1-bit
// images: every byte of whole 32-bit words, bytes / 4 * 4 of them).
void applyFlat(unsigned int depth, Kind kind, int value, const uint8_t *src, uint8_t *dst,
               int bytes);

// One call of a tile call-back.
struct TileCall {
    int x, y, mode;
    bool operator==(const TileCall &o) const { return x == o.x && y == o.y && mode == o.mode; }
};
std::string describe(const std::vector<TileCall> &calls);

// A tiled image: each tile in a block of one tile's bytes, made at
// construction for the whole grid (and one tile row and column beyond it,
// so that a ROI past the edge finds tiles too), filled with pattern.
struct Tiled {
    Tiled(int nChannels, unsigned int depth, int dataOrder, int align, int height, int width,
          int tileWidth, int tileHeight, uint32_t seed);
    ~Tiled();
    Tiled(const Tiled &) = delete;
    Tiled &operator=(const Tiled &) = delete;

    void setRoi(int coi, int xOffset, int yOffset, int height, int width);
    // Copies the pixels of a plain image of the same size into the tiles.
    void load(const Image &plain);
    int tileStep() const;
    Layout tileLayout() const;
    std::vector<uint8_t> &tile(int tx, int ty) { return tiles.at({tx, ty}); }
    int64_t get(int x, int y, int ch) const;
    void put(int x, int y, int ch, int64_t v);

    static void callBack(const RmgImage *image, int xIndex, int yIndex, int mode);

    RmgImage *image;
    RmgROI roi{0, 0, 0, 0, 0};
    RmgTileInfo info;
    std::map<std::pair<int, int>, std::vector<uint8_t>> tiles;
    std::vector<TileCall> calls;
    // Tiles the call-back refuses (tileData null), and tiles it does not
    // clear on release.
    std::vector<std::pair<int, int>> refused;
    std::vector<std::pair<int, int>> held;
    // A second record of the calls, shared by several images, each call
    // with this image's tag.
    std::vector<std::pair<int, TileCall>> *shared = nullptr;
    int tag = 0;
};

// Pattern bytes for a seed.
void pattern(std::vector<uint8_t> &bytes, uint32_t seed);

// The one report of a failed call: RMG_StsBadArg under funcName and module,
// with the context text; the status is RMG_StsBadArg.
void expectOneReport(const char *funcName, const char *module, const std::string &context);

// Runs the operation in every vector form on the images as they are now and
// compares the whole destination buffer with `want`, and the source with
// what it was (unless it is the destination); no report may come.
void expectInEveryForm(Kind kind, Image &src, Image &dst, int value,
                       const std::vector<uint8_t> &want, const std::string &note);

// Values at the ends of the depths and of 16 and 32 bits, and near them.
const std::vector<int> &extremeValues();

// A tilePos outside the destination's region, for a tiled destination of
// 32 x 32 in tiles of 8 x 8 whose region is 8 x 8 at (x, y): the tile, and
// the context of the one report the walk raises before it asks for a tile.
struct TilePosProbe {
    int x, y, tileX, tileY;
    const char *text;
};
const std::vector<TilePosProbe> &tilePosProbes();

}  // namespace addstest

#endif
