#include "ops/scetest.h"

#include <algorithm>
#include <climits>

namespace scetest {

int Layout::rowStep() const { return rmgWidthStep(dataOrder, depth, align, nChannels, width); }

int Layout::size() const {
    return rowStep() * height * (dataOrder == RMG_DATA_PLANE ? nChannels : 1);
}

int Layout::elementBytes() const { return static_cast<int>((depth & 0x7FFFFFFFu) >> 3); }

int Layout::offset(int x, int y, int ch) const {
    const int step = rowStep();
    if (depth == RMG_DEPTH_1U) return y * step + (x >> 3);
    const int bytes = elementBytes();
    if (dataOrder == RMG_DATA_PLANE) return (ch * height + y) * step + x * bytes;
    return y * step + (x * nChannels + ch) * bytes;
}

uint32_t storedValue(unsigned int depth, int v) {
    auto clamp = [](int value, int low, int high) { return std::min(std::max(value, low), high); };
    switch (depth) {
    case RMG_DEPTH_1U:
        return static_cast<uint32_t>(clamp(v, 0, 1));
    case RMG_DEPTH_8U:
        return static_cast<uint32_t>(clamp(v, 0, 255));
    case RMG_DEPTH_8S:
        return static_cast<uint32_t>(clamp(v, -128, 127)) & 0xFFu;
    case RMG_DEPTH_16U:
        return static_cast<uint32_t>(clamp(v, 0, 65535));
    case RMG_DEPTH_16S:
        return static_cast<uint32_t>(clamp(v, -32768, 32767)) & 0xFFFFu;
    default:
        return static_cast<uint32_t>(v);
    }
}

void putElement(std::vector<uint8_t> &bytes, int base, const Layout &layout, int x, int y,
                int ch, uint32_t value) {
    uint8_t *p = bytes.data() + base + layout.offset(x, y, ch);
    if (layout.depth == RMG_DEPTH_1U) {
        const uint8_t bit = static_cast<uint8_t>(0x80u >> (x & 7));
        *p = static_cast<uint8_t>(value ? (*p | bit) : (*p & ~bit));
        return;
    }
    for (int k = 0; k < layout.elementBytes(); ++k) p[k] = static_cast<uint8_t>(value >> (8 * k));
}

uint32_t getElement(const std::vector<uint8_t> &bytes, int base, const Layout &layout, int x,
                    int y, int ch) {
    const uint8_t *p = bytes.data() + base + layout.offset(x, y, ch);
    if (layout.depth == RMG_DEPTH_1U) return (*p >> (7 - (x & 7))) & 1u;
    uint32_t value = 0;
    for (int k = 0; k < layout.elementBytes(); ++k) value |= static_cast<uint32_t>(p[k]) << (8 * k);
    return value;
}

void modelFill(std::vector<uint8_t> &bytes, int base, const Layout &layout, const Area &area,
               uint32_t value) {
    const int x0 = std::max(area.x0, 0), x1 = std::min(area.x1, layout.width);
    const int y0 = std::max(area.y0, 0), y1 = std::min(area.y1, layout.height);
    for (int ch = 0; ch < layout.nChannels; ++ch) {
        if (area.coi != 0 && area.coi != ch + 1) continue;
        for (int y = y0; y < y1; ++y)
            for (int x = x0; x < x1; ++x) putElement(bytes, base, layout, x, y, ch, value);
    }
}

void pattern(std::vector<uint8_t> &bytes, uint32_t seed) {
    uint32_t s = seed * 2654435761u + 12345u;
    for (auto &b : bytes) {
        s ^= s << 13;
        s ^= s >> 17;
        s ^= s << 5;
        b = static_cast<uint8_t>(s >> 8);
    }
}

std::string difference(const std::vector<uint8_t> &have, const std::vector<uint8_t> &want) {
    if (have.size() != want.size())
        return "sizes " + std::to_string(have.size()) + " and " + std::to_string(want.size());
    for (size_t i = 0; i < have.size(); ++i)
        if (have[i] != want[i])
            return "byte " + std::to_string(i) + " is " + std::to_string(have[i]) + ", not " +
                   std::to_string(want[i]);
    return std::string();
}

Plain::Plain(int nChannels, unsigned int depth, int dataOrder, int align, int height, int width,
             int guardBytes, uint32_t seed)
    : guard(guardBytes) {
    image = rmgCreateImageHeader(nChannels, 0, depth, "RGB", "BGR", dataOrder, RMG_ORIGIN_TL,
                                 align, height, width, nullptr, nullptr, nullptr);
    block.resize(static_cast<size_t>(2 * guard + image->imageSize));
    pattern(block, seed);
    image->imageData = block.data() + guard;
}

Plain::~Plain() {
    image->roi = nullptr;  // the ROI and the buffer are this object's
    image->imageData = nullptr;
    rmgDeallocate(image, RMG_DEALLOC_HEADER);
}

Layout Plain::layout() const {
    return Layout{image->nChannels, image->depth, image->dataOrder, image->align,
                  image->height,    image->width};
}

void Plain::setRoi(int coi, int xOffset, int yOffset, int height, int width) {
    roi = RmgROI{coi, xOffset, yOffset, height, width};
    image->roi = &roi;
}

Area Plain::region() const {
    if (image->roi == nullptr) return Area{0, 0, image->width, image->height, 0};
    const RmgROI &r = *image->roi;
    // An offset at or beyond the image's edge leaves nothing.
    if (r.xOffset >= image->width || r.yOffset >= image->height) return Area{0, 0, 0, 0, r.coi};
    const long long x1 = static_cast<long long>(r.xOffset) + r.width;
    const long long y1 = static_cast<long long>(r.yOffset) + r.height;
    return Area{r.xOffset, r.yOffset, static_cast<int>(std::min<long long>(x1, INT_MAX)),
                static_cast<int>(std::min<long long>(y1, INT_MAX)), r.coi};
}

Tiled::Tiled(int nChannels, unsigned int depth, int dataOrder, int align, int height, int width,
             int tileWidth, int tileHeight, uint32_t seedValue)
    : seed(seedValue) {
    info = RmgTileInfo{callBack, this, nullptr, tileWidth, tileHeight};
    image = rmgCreateImageHeader(nChannels, 0, depth, "RGB", "BGR", dataOrder, RMG_ORIGIN_TL,
                                 align, height, width, nullptr, nullptr, &info);
}

Tiled::~Tiled() {
    image->roi = nullptr;
    image->tileInfo = nullptr;
    rmgDeallocate(image, RMG_DEALLOC_HEADER);
}

Layout Tiled::tileLayout() const {
    return Layout{image->nChannels, image->depth, image->dataOrder,
                  image->align,     info.height,  info.width};
}

void Tiled::setRoi(int coi, int xOffset, int yOffset, int height, int width) {
    roi = RmgROI{coi, xOffset, yOffset, height, width};
    image->roi = &roi;
}

std::vector<uint8_t> Tiled::freshTile(int x, int y) const {
    std::vector<uint8_t> bytes(static_cast<size_t>(tileLayout().size()));
    pattern(bytes, seed + 1000u * static_cast<uint32_t>(y) + static_cast<uint32_t>(x));
    return bytes;
}

const std::vector<uint8_t> &Tiled::tileBytes(int x, int y) const {
    const auto it = tiles.find({x, y});
    if (it != tiles.end()) return it->second;
    auto fresh = untouched_.find({x, y});
    if (fresh == untouched_.end()) fresh = untouched_.emplace(std::make_pair(x, y), freshTile(x, y)).first;
    return fresh->second;
}

uint32_t Tiled::element(int x, int y, int ch) const {
    const std::vector<uint8_t> &bytes = tileBytes(x / info.width, y / info.height);
    return getElement(bytes, 0, tileLayout(), x % info.width, y % info.height, ch);
}

void Tiled::callBack(const RmgImage *image, int xIndex, int yIndex, int mode) {
    auto *self = static_cast<Tiled *>(image->tileInfo->id);
    self->calls.push_back(TileCall{xIndex, yIndex, mode});
    if (mode == RMG_TILE_RELEASE || self->failing.count({xIndex, yIndex}) != 0) {
        self->info.tileData = nullptr;
        return;
    }
    auto it = self->tiles.find({xIndex, yIndex});
    if (it == self->tiles.end())
        it = self->tiles.emplace(std::make_pair(xIndex, yIndex), self->freshTile(xIndex, yIndex))
                 .first;
    self->info.tileData = it->second.data();
}

}  // namespace scetest
