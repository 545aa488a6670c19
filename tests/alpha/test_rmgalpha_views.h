// Test support for the tile views: a small operation for the tile walk
// (each element of the destination's region becomes the source's element
// plus a step, through the views, skipping the destination's alpha channel
// as the composition kernels do) that records every rectangle and view it
// is given, and its per-element model on the test images of the copy tests.
#ifndef RMG_TESTS_ALPHA_TEST_RMGALPHA_VIEWS_H
#define RMG_TESTS_ALPHA_TEST_RMGALPHA_VIEWS_H

#include <gtest/gtest.h>

#include <cstdint>
#include <initializer_list>
#include <map>
#include <ostream>
#include <utility>
#include <vector>

#include "alpha/rmgalpha_views.h"
#include "ops/copytest.h"
#include "ops/scetest.h"
#include "rmg.h"

namespace viewstest {

// One image of a test: in memory or tiled (exactly one is set).
struct Arg {
    scetest::Plain *plain = nullptr;
    scetest::Tiled *tiled = nullptr;
    RmgImage *image() const { return plain != nullptr ? plain->image : tiled->image; }
    uint32_t element(int x, int y, int ch) const {
        return plain != nullptr ? plain->element(x, y, ch) : tiled->element(x, y, ch);
    }
};
inline Arg of(scetest::Plain &p) { return Arg{&p, nullptr}; }
inline Arg of(scetest::Tiled &t) { return Arg{nullptr, &t}; }

// What the operation saw of one view (the header itself is gone after the
// walk; its address only tells views apart).
struct ViewSeen {
    const RmgImage *header;
    const unsigned char *imageData;
    RmgROI roi;
    int height, width;
};

// One run of the kernel: the set's rectangle, the size the walk gave, the
// views (destination first).
struct RunSeen {
    int rectX, rectY, rectWidth, rectHeight;
    int rows, columns;
    std::vector<ViewSeen> views;
};

// The operation: `dst` is added in write mode, then the sources in read
// mode; a run gets the views in the order of the entries and stops at the
// first null. `step` is added to each element (kept to the depth's range by
// wrapping). With a destination coi one channel is done, from the source's
// coi; otherwise every channel but the destination's alphaChannel.
struct Increment {
    std::vector<const RmgImage *> images;  // destination first
    std::vector<int> index;
    uint32_t step = 1;
    int adds = 0;
    std::vector<RunSeen> runs;

    static void add(void *context, RmgTileViews *set);
    static bool run(void *context, RmgTileViews *set, int rows, int columns);
    static const OwnViewsWalkOps ops;
};

// Runs the walk of Increment with the destination and one source.
Increment walkIncrement(const RmgImage *grid, Arg dst, Arg src, const int *tilePoint, int rows,
                        int columns, uint32_t step = 1);

// The expected bytes after an increment: the destination's elements of the
// region (rows by columns from its ROI origin) get the source's element
// there (from the source's ROI origin) plus the step. For a plain
// destination the whole block with its guards; for a tiled one every tile
// the walk asked for, fresh bytes with the changes.
std::vector<uint8_t> expectPlain(const scetest::Plain &dst, Arg src, int rows, int columns,
                                 uint32_t step = 1);
std::map<std::pair<int, int>, std::vector<uint8_t>> expectTiles(const scetest::Tiled &dst,
                                                                Arg src, int rows, int columns,
                                                                uint32_t step = 1);

// A rectangle of a walk, relative to the ROI origins.
struct Rect {
    int x, y, width, height;
    bool operator==(const Rect &o) const {
        return x == o.x && y == o.y && width == o.width && height == o.height;
    }
};
std::ostream &operator<<(std::ostream &os, const Rect &r);

// The rectangles of a walk whose steps have these widths and whose bands
// these heights: bands outermost, from (0, 0).
std::vector<Rect> crossRects(std::initializer_list<int> widths, std::initializer_list<int> heights);

// One call for each tile (column, row) in `mode`; the same in the shared
// log, under an image's name.
using Tiles = std::initializer_list<std::pair<int, int>>;
std::vector<scetest::TileCall> tileCalls(Tiles tiles, int mode);
std::vector<copytest::Call> logCalls(char name, Tiles tiles, int mode);

// A set of one entry for `image` in `mode`, with the set's tile size and
// the current rectangle given; the entry's index is 1.
RmgTileViews *oneEntrySet(const RmgImage *image, int mode, int tileWidth, int tileHeight,
                          const Rect &rect);

// Asserts the tiles of `t` are those of `want`, each byte.
void expectTilesEqual(const scetest::Tiled &t,
                      const std::map<std::pair<int, int>, std::vector<uint8_t>> &want);
// Asserts no tile of `t` differs from its fresh bytes.
void expectTilesFresh(const scetest::Tiled &t);

}  // namespace viewstest

#endif
