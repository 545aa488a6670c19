#include "alpha/test_rmgalpha_views.h"

namespace viewstest {

namespace {

scetest::Layout layoutOf(const RmgImage *image) {
    return scetest::Layout{image->nChannels, image->depth, image->dataOrder,
                           image->align,     image->height, image->width};
}

uint32_t maskOf(unsigned int depth) { return depth == RMG_DEPTH_16U ? 0xFFFFu : 0xFFu; }

// The channel pairs (destination, source), 0-based, that the operation does.
std::vector<std::pair<int, int>> channelsOf(const RmgImage *dst, const RmgImage *src) {
    std::vector<std::pair<int, int>> pairs;
    const int dstCoi = dst->roi != nullptr ? dst->roi->coi : 0;
    if (dstCoi != 0) {
        const int srcCoi = src->roi != nullptr && src->roi->coi != 0 ? src->roi->coi : dstCoi;
        pairs.emplace_back(dstCoi - 1, srcCoi - 1);
        return pairs;
    }
    for (int ch = 0; ch < dst->nChannels; ++ch)
        if (ch != dst->alphaChannel - 1) pairs.emplace_back(ch, ch);
    return pairs;
}

int xOf(const RmgImage *image) { return image->roi != nullptr ? image->roi->xOffset : 0; }
int yOf(const RmgImage *image) { return image->roi != nullptr ? image->roi->yOffset : 0; }

// The byte of element (x, y, ch) of a view, checked to lie inside the
// view's imageSize bytes, so that a view describing memory beyond its
// buffer fails here as well as under the sanitizer.
unsigned char *elementAt(const RmgImage *view, int x, int y, int ch) {
    const scetest::Layout layout = layoutOf(view);
    const int offset = layout.offset(x, y, ch);
    EXPECT_GE(offset, 0);
    EXPECT_LE(offset + layout.elementBytes(), view->imageSize);
    EXPECT_LT(x, view->width);
    EXPECT_LT(y, view->height);
    if (offset < 0 || offset + layout.elementBytes() > view->imageSize) return nullptr;
    return view->imageData + offset;
}

uint32_t load(const unsigned char *p, int bytes) {
    uint32_t v = 0;
    for (int k = 0; k < bytes; ++k) v |= static_cast<uint32_t>(p[k]) << (8 * k);
    return v;
}

void store(unsigned char *p, int bytes, uint32_t v) {
    for (int k = 0; k < bytes; ++k) p[k] = static_cast<unsigned char>(v >> (8 * k));
}

}  // namespace

const OwnViewsWalkOps Increment::ops = {Increment::add, Increment::run};

void Increment::add(void *context, RmgTileViews *set) {
    auto *self = static_cast<Increment *>(context);
    ++self->adds;
    for (size_t i = 0; i < self->images.size(); ++i)
        self->index.push_back(
            ownViewsAdd(set, self->images[i], i == 0 ? RMG_TILE_WRITE : RMG_TILE_READ));
}

bool Increment::run(void *context, RmgTileViews *set, int rows, int columns) {
    auto *self = static_cast<Increment *>(context);
    RunSeen seen{set->rectX, set->rectY, set->rectWidth, set->rectHeight, rows, columns, {}};
    std::vector<RmgImage *> views;
    for (int index : self->index) {
        RmgImage *view = ownViewsGet(set, index);
        if (view == nullptr) {
            self->runs.push_back(seen);
            return false;
        }
        views.push_back(view);
        seen.views.push_back(ViewSeen{view, view->imageData, *view->roi, view->height, view->width});
    }
    self->runs.push_back(seen);
    RmgImage *dst = views[0];
    const RmgImage *src = views.size() > 1 ? views[1] : views[0];
    const int bytes = layoutOf(dst).elementBytes();
    const uint32_t mask = maskOf(dst->depth);
    for (const auto &pair : channelsOf(dst, src))
        for (int r = 0; r < rows; ++r)
            for (int c = 0; c < columns; ++c) {
                const unsigned char *from = elementAt(src, xOf(src) + c, yOf(src) + r, pair.second);
                unsigned char *to = elementAt(dst, xOf(dst) + c, yOf(dst) + r, pair.first);
                if (from == nullptr || to == nullptr) return true;
                store(to, bytes, (load(from, bytes) + self->step) & mask);
            }
    return true;
}

Increment walkIncrement(const RmgImage *grid, Arg dst, Arg src, const int *tilePoint, int rows,
                        int columns, uint32_t step) {
    Increment op;
    op.step = step;
    op.images = {dst.image(), src.image()};
    ownViewsWalk("rmgTest", grid, dst.image(), tilePoint, rows, columns, 2, Increment::ops, &op);
    return op;
}

namespace {

// Calls put(x, y, ch, value) for each element the increment writes, in
// image coordinates of the destination.
template <typename Put>
void forEachWritten(const RmgImage *dst, Arg src, int rows, int columns, uint32_t step, Put put) {
    const uint32_t mask = maskOf(dst->depth);
    for (const auto &pair : channelsOf(dst, src.image()))
        for (int r = 0; r < rows; ++r)
            for (int c = 0; c < columns; ++c) {
                const uint32_t v =
                    src.element(xOf(src.image()) + c, yOf(src.image()) + r, pair.second);
                put(xOf(dst) + c, yOf(dst) + r, pair.first, (v + step) & mask);
            }
}

}  // namespace

std::vector<uint8_t> expectPlain(const scetest::Plain &dst, Arg src, int rows, int columns,
                                 uint32_t step) {
    std::vector<uint8_t> want = dst.block;
    forEachWritten(dst.image, src, rows, columns, step, [&](int x, int y, int ch, uint32_t v) {
        scetest::putElement(want, dst.guard, dst.layout(), x, y, ch, v);
    });
    return want;
}

std::map<std::pair<int, int>, std::vector<uint8_t>> expectTiles(const scetest::Tiled &dst,
                                                                Arg src, int rows, int columns,
                                                                uint32_t step) {
    std::map<std::pair<int, int>, std::vector<uint8_t>> want;
    for (const auto &tile : dst.tiles)
        want[tile.first] = dst.freshTile(tile.first.first, tile.first.second);
    const int tw = dst.info.width;
    const int th = dst.info.height;
    forEachWritten(dst.image, src, rows, columns, step, [&](int x, int y, int ch, uint32_t v) {
        const std::pair<int, int> key{x / tw, y / th};
        if (want.count(key) == 0) want[key] = dst.freshTile(key.first, key.second);
        scetest::putElement(want[key], 0, dst.tileLayout(), x % tw, y % th, ch, v);
    });
    return want;
}

std::ostream &operator<<(std::ostream &os, const Rect &r) {
    return os << "(" << r.x << ", " << r.y << ", " << r.width << ", " << r.height << ")";
}

std::vector<Rect> crossRects(std::initializer_list<int> widths, std::initializer_list<int> heights) {
    std::vector<Rect> rects;
    int y = 0;
    for (int h : heights) {
        int x = 0;
        for (int w : widths) {
            rects.push_back(Rect{x, y, w, h});
            x += w;
        }
        y += h;
    }
    return rects;
}

std::vector<scetest::TileCall> tileCalls(Tiles tiles, int mode) {
    std::vector<scetest::TileCall> calls;
    for (const auto &t : tiles) calls.push_back(scetest::TileCall{t.first, t.second, mode});
    return calls;
}

std::vector<copytest::Call> logCalls(char name, Tiles tiles, int mode) {
    std::vector<copytest::Call> calls;
    for (const auto &t : tiles) calls.push_back(copytest::Call{name, t.first, t.second, mode});
    return calls;
}

RmgTileViews *oneEntrySet(const RmgImage *image, int mode, int tileWidth, int tileHeight,
                          const Rect &rect) {
    RmgTileViews *set = ownViewsCreate(1, tileWidth, tileHeight);
    EXPECT_EQ(ownViewsAdd(set, image, mode), 1);
    ownViewsSetRect(set, rect.x, rect.y, rect.width, rect.height);
    return set;
}

void expectTilesEqual(const scetest::Tiled &t,
                      const std::map<std::pair<int, int>, std::vector<uint8_t>> &want) {
    ASSERT_EQ(t.tiles.size(), want.size());
    for (const auto &tile : want) {
        const auto it = t.tiles.find(tile.first);
        ASSERT_NE(it, t.tiles.end()) << "tile " << tile.first.first << ", " << tile.first.second;
        EXPECT_EQ(scetest::difference(it->second, tile.second), "")
            << "tile " << tile.first.first << ", " << tile.first.second;
    }
}

void expectTilesFresh(const scetest::Tiled &t) {
    for (const auto &tile : t.tiles)
        EXPECT_EQ(scetest::difference(tile.second, t.freshTile(tile.first.first, tile.first.second)),
                  "")
            << "tile " << tile.first.first << ", " << tile.first.second;
}

}  // namespace viewstest
