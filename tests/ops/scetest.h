// Test images for the fill and copy operations: an image in memory whose
// buffer the test owns (with guard zones, or of the exact size so that the
// sanitizer sees any access past its end), a tiled image whose tiles a
// recording call-back serves from memory, and a per-element model of the
// bytes.
#ifndef RMG_TESTS_OPS_SCETEST_H
#define RMG_TESTS_OPS_SCETEST_H

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "rmg.h"

namespace scetest {

// Where the elements of an image (or of one tile) lie in its bytes.
struct Layout {
    int nChannels;
    unsigned int depth;
    int dataOrder;
    int align;
    int height;
    int width;

    int rowStep() const;
    int size() const;  // bytes of all rows (and planes)
    int elementBytes() const;  // 0 for bits
    // Byte offset of element (x, y) of channel ch (0-based); for 1-bit
    // images the byte that holds its bit, which is bit 7 - (x & 7).
    int offset(int x, int y, int ch) const;
};

// The element a fill with `fillValue` stores, as bytes in memory order (its
// low elementBytes()), or the bit for a 1-bit image.
uint32_t storedValue(unsigned int depth, int fillValue);

// Stores `value` (as from storedValue) into the element at (x, y, ch).
void putElement(std::vector<uint8_t> &bytes, int base, const Layout &layout, int x, int y,
                int ch, uint32_t value);
uint32_t getElement(const std::vector<uint8_t> &bytes, int base, const Layout &layout, int x,
                    int y, int ch);

// A rectangle of element columns [x0, x1) and rows [y0, y1), and a channel
// (0 for all, else 1-based).
struct Area {
    int x0, y0, x1, y1, coi;
};

// The model of a fill: every element of `layout` inside `area` in its
// channel gets `value`; bytes at `base` within `bytes`.
void modelFill(std::vector<uint8_t> &bytes, int base, const Layout &layout, const Area &area,
               uint32_t value);

// A deterministic byte pattern, different for each seed.
void pattern(std::vector<uint8_t> &bytes, uint32_t seed);

// Empty when the two are equal; otherwise says where they differ first.
std::string difference(const std::vector<uint8_t> &have, const std::vector<uint8_t> &want);

// An image in memory. The buffer is `guard` bytes of pattern, imageSize
// bytes of pixels and `guard` bytes of pattern again; with a guard of 0 the
// block is exactly imageSize bytes long.
class Plain {
public:
    Plain(int nChannels, unsigned int depth, int dataOrder, int align, int height, int width,
          int guard = 64, uint32_t seed = 1);
    ~Plain();
    Plain(const Plain &) = delete;
    Plain &operator=(const Plain &) = delete;

    RmgImage *image;
    RmgROI roi{0, 0, 0, 0, 0};
    std::vector<uint8_t> block;  // guard + pixels + guard
    int guard;

    Layout layout() const;
    void setRoi(int coi, int xOffset, int yOffset, int height, int width);
    void clearRoi() { image->roi = nullptr; }
    uint8_t *pixels() { return block.data() + guard; }
    uint32_t element(int x, int y, int ch) const {
        return getElement(block, guard, layout(), x, y, ch);
    }
    // The area of the region after clipping, as the model sees it.
    Area region() const;
};

// One call of the tile call-back.
struct TileCall {
    int x, y, mode;
    bool operator==(const TileCall &o) const { return x == o.x && y == o.y && mode == o.mode; }
};

// A tiled image whose tiles live in this object: each tile is made at its
// first request, of exactly one tile's bytes, and filled with pattern. The
// call-back records every call and refuses the tiles in `failing`.
class Tiled {
public:
    Tiled(int nChannels, unsigned int depth, int dataOrder, int align, int height, int width,
          int tileWidth, int tileHeight, uint32_t seed = 7);
    ~Tiled();
    Tiled(const Tiled &) = delete;
    Tiled &operator=(const Tiled &) = delete;

    RmgImage *image;
    RmgROI roi{0, 0, 0, 0, 0};
    RmgTileInfo info;
    std::map<std::pair<int, int>, std::vector<uint8_t>> tiles;
    std::vector<TileCall> calls;
    std::set<std::pair<int, int>> failing;
    uint32_t seed;

    Layout tileLayout() const;
    void setRoi(int coi, int xOffset, int yOffset, int height, int width);
    // The bytes a tile has before anything is written into it.
    std::vector<uint8_t> freshTile(int x, int y) const;
    // Element (x, y, ch) of the image, in image coordinates.
    uint32_t element(int x, int y, int ch) const;
    // The bytes of a tile, made fresh if no call asked for it yet.
    const std::vector<uint8_t> &tileBytes(int x, int y) const;

    static void callBack(const RmgImage *image, int xIndex, int yIndex, int mode);

private:
    // Fresh copies of the tiles no call has asked for, for reading.
    mutable std::map<std::pair<int, int>, std::vector<uint8_t>> untouched_;
};

}  // namespace scetest

#endif
