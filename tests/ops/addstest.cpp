#include "ops/addstest.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <sstream>

#include "support/rmgforms.h"
#include "support/rmgtest.h"

namespace addstest {

void apply(Kind kind, const RmgImage *src, RmgImage *dst, int value, const int *tilePos) {
    if (kind == kAdd)
        rmgAddS(src, dst, value, tilePos);
    else
        rmgSubtractS(src, dst, value, kind == kRev ? 1 : 0, tilePos);
}

namespace {

int64_t clampTo(int64_t x, int64_t low, int64_t high) { return std::min(std::max(x, low), high); }

int32_t wrap32(int64_t x) { return static_cast<int32_t>(static_cast<uint32_t>(x)); }

int64_t combine(Kind kind, int64_t e, int64_t v) {
    return kind == kAdd ? e + v : kind == kSub ? e - v : v - e;
}

}  // namespace

int64_t resultOf(unsigned int depth, Kind kind, int value, int64_t e, bool oneChannel) {
    switch (depth) {
    case RMG_DEPTH_1U: {
        const bool m = (value & 1) != 0;
        const bool b = e != 0;
        return kind == kAdd ? (b || m) : kind == kSub ? (b && !m) : (!b && m);
    }
    case RMG_DEPTH_8U:
        if (oneChannel) return clampTo(wrap32(combine(kind, e, value)), 0, 255);
        // A 16-bit word: the constant's low 16 bits, the sum wrapping.
        return clampTo(static_cast<int16_t>(static_cast<uint16_t>(
                           combine(kind, e, static_cast<int16_t>(static_cast<uint16_t>(value))))),
                       0, 255);
    case RMG_DEPTH_8S:
        return clampTo(wrap32(combine(kind, e, value)), -128, 127);
    case RMG_DEPTH_16S:
        return clampTo(wrap32(combine(kind, e, value)), -32768, 32767);
    case RMG_DEPTH_16U:
        return clampTo(combine(kind, e, value), 0, 65535);
    default:
        return clampTo(combine(kind, e, value), INT32_MIN, INT32_MAX);
    }
}

int stepOf(int nChannels, unsigned int depth, int dataOrder, int align, int width) {
    const int64_t bits = static_cast<int64_t>(width) * (dataOrder == RMG_DATA_PIXEL ? nChannels : 1) *
                         (depth & 0x7FFFFFFFu);
    const int64_t unit = align * 8;
    return static_cast<int>((bits + unit - 1) / unit * align);
}

int elemBytes(unsigned int depth) {
    return depth == RMG_DEPTH_1U ? 1 : static_cast<int>((depth & 0x7FFFFFFFu) / 8);
}

Layout layoutOf(const RmgImage *image) {
    return Layout{image->nChannels, image->depth, image->dataOrder, image->height,
                  stepOf(image->nChannels, image->depth, image->dataOrder, image->align,
                         image->width)};
}

namespace {

int64_t byteOffset(const Layout &l, int x, int y, int ch) {
    const int e = elemBytes(l.depth);
    if (l.dataOrder == RMG_DATA_PIXEL)
        return static_cast<int64_t>(y) * l.step + (static_cast<int64_t>(x) * l.nChannels + ch) * e;
    return (static_cast<int64_t>(ch) * l.height + y) * l.step + static_cast<int64_t>(x) * e;
}

}  // namespace

int64_t getFlat(unsigned int depth, const uint8_t *bytes, int k) {
    switch (depth) {
    case RMG_DEPTH_8U:
    case RMG_DEPTH_1U:
        return bytes[k];
    case RMG_DEPTH_8S:
        return static_cast<int8_t>(bytes[k]);
    case RMG_DEPTH_16U: {
        uint16_t v;
        std::memcpy(&v, bytes + 2 * static_cast<int64_t>(k), 2);
        return v;
    }
    case RMG_DEPTH_16S: {
        int16_t v;
        std::memcpy(&v, bytes + 2 * static_cast<int64_t>(k), 2);
        return v;
    }
    default: {
        int32_t v;
        std::memcpy(&v, bytes + 4 * static_cast<int64_t>(k), 4);
        return v;
    }
    }
}

void putFlat(unsigned int depth, uint8_t *bytes, int k, int64_t v) {
    const int e = elemBytes(depth);
    const auto word = static_cast<uint32_t>(v);
    std::memcpy(bytes + static_cast<int64_t>(k) * e, &word, static_cast<size_t>(e));
}

int64_t getAt(const Layout &l, const uint8_t *bytes, int x, int y, int ch) {
    if (l.depth == RMG_DEPTH_1U)
        return (bytes[static_cast<int64_t>(y) * l.step + x / 8] >> (7 - (x & 7))) & 1;
    const int64_t at = byteOffset(l, x, y, ch);
    return getFlat(l.depth, bytes + at, 0);
}

void putAt(const Layout &l, uint8_t *bytes, int x, int y, int ch, int64_t v) {
    if (l.depth == RMG_DEPTH_1U) {
        uint8_t &b = bytes[static_cast<int64_t>(y) * l.step + x / 8];
        const auto mask = static_cast<uint8_t>(0x80u >> (x & 7));
        b = static_cast<uint8_t>(v ? (b | mask) : (b & ~mask));
        return;
    }
    putFlat(l.depth, bytes + byteOffset(l, x, y, ch), 0, v);
}

void pattern(std::vector<uint8_t> &bytes, uint32_t seed) {
    std::mt19937 rng(seed);
    for (auto &b : bytes) b = static_cast<uint8_t>(rng());
}

// ---------------------------------------------------------------------------
// Images
// ---------------------------------------------------------------------------

Image::Image(int nChannels, unsigned int depth, int dataOrder, int align, int height, int width,
             uint32_t seed) {
    image = rmgCreateImageHeader(nChannels, 0, depth, "RGBA", "BGRA", dataOrder, RMG_ORIGIN_TL,
                                 align, height, width, nullptr, nullptr, nullptr);
    data = static_cast<uint8_t *>(std::malloc(static_cast<size_t>(image->imageSize)));
    image->imageData = data;
    fill(seed);
}

Image::~Image() {
    image->roi = nullptr;
    image->imageData = nullptr;
    rmgDeallocate(image, RMG_DEALLOC_HEADER);
    std::free(data);
}

void Image::setRoi(int coi, int xOffset, int yOffset, int height, int width) {
    roi = RmgROI{coi, xOffset, yOffset, height, width};
    image->roi = &roi;
}

std::vector<uint8_t> Image::bytes() const {
    return std::vector<uint8_t>(data, data + image->imageSize);
}

void Image::fill(uint32_t seed) {
    std::vector<uint8_t> content(static_cast<size_t>(image->imageSize));
    pattern(content, seed);
    fillFrom(content);
}

void Image::fillFrom(const std::vector<uint8_t> &content) {
    std::memcpy(data, content.data(), content.size());
}

// ---------------------------------------------------------------------------
// The model
// ---------------------------------------------------------------------------

namespace {

bool coversWhole(const RmgImage *image) {
    const RmgROI *roi = image->roi;
    if (roi == nullptr) return true;
    return roi->xOffset == 0 && roi->yOffset == 0 && roi->height >= image->height &&
           roi->width >= image->width &&
           (roi->coi == 0 || (roi->coi == 1 && image->nChannels == 1));
}

}  // namespace

bool isWhole(const RmgImage *a, const RmgImage *b) {
    return a->height == b->height && a->width == b->width && a->imageSize == b->imageSize &&
           coversWhole(a) && coversWhole(b);
}

Region regionOf(const RmgImage *image) {
    const RmgROI *roi = image->roi;
    if (roi == nullptr) return Region{0, 0, image->width, image->height, 0, true};
    const int64_t lastX = std::min<int64_t>(int64_t{roi->xOffset} + roi->width - 1, image->width - 1);
    const int64_t lastY =
        std::min<int64_t>(int64_t{roi->yOffset} + roi->height - 1, image->height - 1);
    Region r{};
    r.ok = lastX >= 0 && lastY >= 0 && roi->coi <= image->nChannels && roi->coi >= 0;
    r.x0 = std::max(roi->xOffset, 0);
    r.y0 = std::max(roi->yOffset, 0);
    r.columns = static_cast<int>(lastX - r.x0 + 1);
    r.rows = static_cast<int>(lastY - r.y0 + 1);
    r.coi = roi->coi;
    return r;
}

bool hasCoi(const RmgImage *image) { return image->roi != nullptr && image->roi->coi != 0; }

bool allChannels(const RmgImage *image) {
    return !hasCoi(image) || image->nChannels == 1;
}

namespace {

void bitPlan(const RmgImage *src, const RmgImage *dst, Plan &plan) {
    struct BitRect {
        int64_t offset;
        int width, height, phase;
    };
    auto rectOf = [](const RmgImage *image) {
        const RmgROI *roi = image->roi;
        if (roi == nullptr) return BitRect{0, image->width, image->height, 0};
        return BitRect{int64_t{image->widthStep} * roi->yOffset + roi->xOffset / 8,
                       std::min(roi->width, image->width), std::min(roi->height, image->height),
                       roi->xOffset & 7};
    };
    const BitRect s = rectOf(src);
    const BitRect d = rectOf(dst);
    plan.flatBits = true;
    const int width = std::min(s.width, d.width);
    const int height = std::min(s.height, d.height);
    for (int r = 0; r < height; ++r) {
        for (int x = 0; x < width; ++x) {
            const int64_t sBit = (s.offset + int64_t{r} * src->widthStep) * 8 + s.phase + x;
            const int64_t dBit = (d.offset + int64_t{r} * dst->widthStep) * 8 + d.phase + x;
            // Bits whose byte lies outside a buffer are skipped.
            if (sBit / 8 >= src->imageSize || dBit / 8 >= dst->imageSize) continue;
            plan.bits.emplace_back(sBit, dBit);
        }
    }
}

}  // namespace

Plan planOf(const RmgImage *src, const RmgImage *dst, bool pairsOnly) {
    Plan plan;
    if (isWhole(src, dst) && !pairsOnly) {
        plan.whole = true;
        return plan;
    }
    if (src->depth == RMG_DEPTH_1U) {
        if (pairsOnly) {
            // For regions inside the images (the tiled tests): bit columns and
            // rows of the ROIs, the smaller size.
            const Region s = regionOf(src);
            const Region d = regionOf(dst);
            for (int r = 0; r < std::min(s.rows, d.rows); ++r)
                for (int x = 0; x < std::min(s.columns, d.columns); ++x)
                    plan.pairs.push_back(Pair{s.x0 + x, s.y0 + r, 0, d.x0 + x, d.y0 + r, 0, false});
            return plan;
        }
        bitPlan(src, dst, plan);
        return plan;
    }
    const Region s = regionOf(src);
    const Region d = regionOf(dst);
    if (!s.ok || !d.ok) return plan;
    const int rows = std::min(s.rows, d.rows);
    if (rows <= 0 || s.columns <= 0 || d.columns <= 0) return plan;
    const bool pixel = src->dataOrder == RMG_DATA_PIXEL && dst->dataOrder == RMG_DATA_PIXEL;
    const bool plane = src->dataOrder == RMG_DATA_PLANE && dst->dataOrder == RMG_DATA_PLANE;
    auto add = [&](int sx, int sy, int sch, int dx, int dy, int dch, bool one) {
        plan.pairs.push_back(Pair{sx, sy, sch, dx, dy, dch, one});
    };
    if (pixel && allChannels(src) && allChannels(dst)) {
        // Case A: rows of interleaved elements, the shorter row counting.
        const int elems = std::min(s.columns * src->nChannels, d.columns * dst->nChannels);
        for (int r = 0; r < rows; ++r)
            for (int j = 0; j < elems; ++j)
                add(s.x0 + j / src->nChannels, s.y0 + r, j % src->nChannels,
                    d.x0 + j / dst->nChannels, d.y0 + r, j % dst->nChannels, false);
    } else if (plane && hasCoi(src) && hasCoi(dst)) {
        // Case B: the one plane of each coi.
        const int columns = std::min(s.columns, d.columns);
        for (int r = 0; r < rows; ++r)
            for (int x = 0; x < columns; ++x)
                add(s.x0 + x, s.y0 + r, s.coi - 1, d.x0 + x, d.y0 + r, d.coi - 1, false);
    } else if (pixel && hasCoi(src) && hasCoi(dst)) {
        // Case C: one channel of each image, element by element.
        const int columns = std::min(s.columns, d.columns);
        for (int r = 0; r < rows; ++r)
            for (int x = 0; x < columns; ++x)
                add(s.x0 + x, s.y0 + r, s.coi - 1, d.x0 + x, d.y0 + r, d.coi - 1, true);
    } else if (plane && allChannels(src) && allChannels(dst)) {
        // Case D: every plane.
        const int columns = std::min(s.columns, d.columns);
        const int planes = std::min(src->nChannels, dst->nChannels);
        for (int p = 0; p < planes; ++p)
            for (int r = 0; r < rows; ++r)
                for (int x = 0; x < columns; ++x)
                    add(s.x0 + x, s.y0 + r, p, d.x0 + x, d.y0 + r, p, false);
    }
    return plan;
}

void applyFlat(unsigned int depth, Kind kind, int value, const uint8_t *src, uint8_t *dst,
               int bytes) {
    if (depth == RMG_DEPTH_1U) {
        const uint8_t m = (value & 1) ? 0xFF : 0x00;
        for (int k = 0; k < bytes / 4 * 4; ++k) {
            const uint8_t e = src[k];
            dst[k] = static_cast<uint8_t>(kind == kAdd ? (e | m) : kind == kSub ? (e & ~m) : (~e & m));
        }
        return;
    }
    const int n = bytes / elemBytes(depth);
    for (int k = 0; k < n; ++k)
        putFlat(depth, dst, k, resultOf(depth, kind, value, getFlat(depth, src, k), false));
}

std::vector<uint8_t> model(const RmgImage *src, const std::vector<uint8_t> &srcBytes,
                           const RmgImage *dst, const std::vector<uint8_t> &dstBytes, Kind kind,
                           int value, bool pairsOnly) {
    std::vector<uint8_t> out = dstBytes;
    const Plan plan = planOf(src, dst, pairsOnly);
    const unsigned int depth = dst->depth;
    if (plan.whole) {
        applyFlat(depth, kind, value, srcBytes.data(), out.data(), dst->imageSize);
        return out;
    }
    for (const auto &b : plan.bits) {
        const int64_t e = (srcBytes[static_cast<size_t>(b.first / 8)] >> (7 - b.first % 8)) & 1;
        uint8_t &t = out[static_cast<size_t>(b.second / 8)];
        const auto mask = static_cast<uint8_t>(0x80u >> (b.second % 8));
        t = static_cast<uint8_t>(resultOf(depth, kind, value, e, false) ? (t | mask) : (t & ~mask));
    }
    const Layout sl = layoutOf(src);
    const Layout dl = layoutOf(dst);
    for (const Pair &p : plan.pairs) {
        const int64_t e = getAt(sl, srcBytes.data(), p.sx, p.sy, p.sch);
        putAt(dl, out.data(), p.dx, p.dy, p.dch, resultOf(depth, kind, value, e, p.one));
    }
    return out;
}

std::string describe(const std::vector<TileCall> &calls) {
    std::ostringstream text;
    for (const TileCall &c : calls) text << "(" << c.x << "," << c.y << "," << c.mode << ")";
    return text.str();
}

// ---------------------------------------------------------------------------
// Tiled images
// ---------------------------------------------------------------------------

Tiled::Tiled(int nChannels, unsigned int depth, int dataOrder, int align, int height, int width,
             int tileWidth, int tileHeight, uint32_t seed) {
    info = RmgTileInfo{callBack, this, nullptr, tileWidth, tileHeight};
    image = rmgCreateImageHeader(nChannels, 0, depth, "RGBA", "BGRA", dataOrder, RMG_ORIGIN_TL,
                                 align, height, width, nullptr, nullptr, &info);
    const int tilesX = (width + tileWidth - 1) / tileWidth + 1;
    const int tilesY = (height + tileHeight - 1) / tileHeight + 1;
    const Layout l = tileLayout();
    const size_t bytes = static_cast<size_t>(l.step) * tileHeight *
                         (dataOrder == RMG_DATA_PLANE ? nChannels : 1);
    for (int ty = 0; ty < tilesY; ++ty) {
        for (int tx = 0; tx < tilesX; ++tx) {
            std::vector<uint8_t> &t = tiles[{tx, ty}];
            t.resize(bytes);
            pattern(t, seed + static_cast<uint32_t>(ty * 131 + tx));
        }
    }
}

Tiled::~Tiled() {
    image->roi = nullptr;
    image->tileInfo = nullptr;
    rmgDeallocate(image, RMG_DEALLOC_HEADER);
}

void Tiled::setRoi(int coi, int xOffset, int yOffset, int height, int width) {
    roi = RmgROI{coi, xOffset, yOffset, height, width};
    image->roi = &roi;
}

int Tiled::tileStep() const {
    return stepOf(image->nChannels, image->depth, image->dataOrder, image->align, info.width);
}

Layout Tiled::tileLayout() const {
    return Layout{image->nChannels, image->depth, image->dataOrder, info.height, tileStep()};
}

int64_t Tiled::get(int x, int y, int ch) const {
    const std::vector<uint8_t> &t = tiles.at({x / info.width, y / info.height});
    return getAt(tileLayout(), t.data(), x % info.width, y % info.height, ch);
}

void Tiled::put(int x, int y, int ch, int64_t v) {
    std::vector<uint8_t> &t = tiles.at({x / info.width, y / info.height});
    putAt(tileLayout(), t.data(), x % info.width, y % info.height, ch, v);
}

void Tiled::load(const Image &plain) {
    const Layout l = layoutOf(plain.image);
    const int channels = image->depth == RMG_DEPTH_1U ? 1 : image->nChannels;
    for (int y = 0; y < image->height; ++y)
        for (int x = 0; x < image->width; ++x)
            for (int ch = 0; ch < channels; ++ch) put(x, y, ch, getAt(l, plain.data, x, y, ch));
}

void Tiled::callBack(const RmgImage *image, int xIndex, int yIndex, int mode) {
    auto *self = static_cast<Tiled *>(image->tileInfo->id);
    self->calls.push_back(TileCall{xIndex, yIndex, mode});
    if (self->shared != nullptr) self->shared->emplace_back(self->tag, TileCall{xIndex, yIndex, mode});
    const std::pair<int, int> key{xIndex, yIndex};
    auto listed = [&](const std::vector<std::pair<int, int>> &list) {
        return std::find(list.begin(), list.end(), key) != list.end();
    };
    if (mode == RMG_TILE_RELEASE) {
        if (!listed(self->held)) self->info.tileData = nullptr;
        return;
    }
    auto it = self->tiles.find(key);
    if (listed(self->refused) || it == self->tiles.end()) {
        self->info.tileData = nullptr;
        return;
    }
    self->info.tileData = it->second.data();
}

void expectOneReport(const char *funcName, const char *module, const std::string &context) {
    ASSERT_EQ(rmgtest::reports().size(), 1u);
    const rmgtest::Report &r = rmgtest::reports()[0];
    EXPECT_EQ(r.status, RMG_StsBadArg);
    EXPECT_EQ(r.funcName, funcName);
    EXPECT_EQ(r.fileName, module);
    EXPECT_EQ(r.context, context);
    EXPECT_EQ(rmgGetErrStatus(), RMG_StsBadArg);
}

void expectInEveryForm(Kind kind, Image &src, Image &dst, int value,
                       const std::vector<uint8_t> &want, const std::string &note) {
    const bool same = src.image == dst.image;
    const std::vector<uint8_t> srcBefore = src.bytes();
    const std::vector<uint8_t> dstBefore = dst.bytes();
    for (int form : rmgtest::runnableForms()) {
        rmgtest::ForcedForm forced(form);
        dst.fillFrom(dstBefore);
        if (!same) src.fillFrom(srcBefore);
        apply(kind, src.image, dst.image, value, nullptr);
        ASSERT_EQ(dst.bytes(), want) << note << " form " << rmg::cpuFormName(form);
        if (!same) {
            ASSERT_EQ(src.bytes(), srcBefore) << note;
        }
        ASSERT_TRUE(rmgtest::reports().empty()) << note;
    }
}

const std::vector<int> &extremeValues() {
    static const std::vector<int> values = {
        0,      1,      -1,      2,      7,      -7,         100,       -100,
        127,    128,    -128,    -129,   254,    255,        256,       -255,
        -256,   509,    510,     -510,   32512,  32767,      32768,     -32768,
        -32769, 65534,  65535,   65536,  -65535, -65536,     70000,     -70000,
        131070, 131071, 1 << 20, -(1 << 20), INT32_MAX, INT32_MIN, INT32_MAX - 100,
        INT32_MIN + 100, INT32_MAX - 65535, INT32_MIN + 65535, 0x12345678, -0x12345678};
    return values;
}

const std::vector<TilePosProbe> &tilePosProbes() {
    // Regions at (8, 8) and at (16, 16).
    static const std::vector<TilePosProbe> probes = {
        {8, 8, 3, 1, "(dTile.begX > dRoi.endX)"},
        {8, 8, 1, 3, "(dTile.begY > dRoi.endY)"},
        {8, 8, 3, 3, "(dTile.begX > dRoi.endX)"},
        {16, 16, 0, 2, "(dTile.endX < dRoi.begX)"},
        {16, 16, 2, 0, "(dTile.endY < dRoi.begY)"},
    };
    return probes;
}

}  // namespace addstest
