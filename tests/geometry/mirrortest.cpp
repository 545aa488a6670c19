#include "geometry/mirrortest.h"

#include <cstring>
#include <random>

namespace mirrortest {

namespace {

int elementBytes(unsigned int depth) { return static_cast<int>((depth & 0x7FFFFFFFu) >> 3); }

int planesOf(const RmgImage *image) {
    return image->dataOrder == RMG_DATA_PLANE ? image->nChannels : 1;
}

void fillRandom(unsigned char *p, size_t n, uint32_t seed) {
    std::mt19937 gen(seed);
    for (size_t i = 0; i < n; ++i) p[i] = static_cast<unsigned char>(gen() >> 24);
}

}  // namespace

RmgImage *makeImage(const Kind &kind, int height, int width, uint32_t seed) {
    RmgImage *image =
        rmgCreateImageHeader(kind.nChannels, 0, kind.depth, "RGB", "BGR", kind.dataOrder,
                             RMG_ORIGIN_TL, kind.align, height, width, nullptr, nullptr, nullptr);
    if (image == nullptr) return nullptr;
    // A block of exactly imageSize bytes, so that the sanitizer guards its
    // ends.
    image->imageData = new unsigned char[static_cast<size_t>(image->imageSize)];
    fillRandom(image->imageData, static_cast<size_t>(image->imageSize), seed);
    return image;
}

void setRoi(RmgImage *image, int coi, int x, int y, int height, int width) {
    if (image->roi == nullptr) image->roi = rmgCreateROI(coi, x, y, height, width);
    else rmgSetROI(image->roi, coi, x, y, height, width);
}

void freeImage(RmgImage *image) {
    if (image == nullptr) return;
    delete[] image->imageData;
    image->imageData = nullptr;
    rmgDeallocate(image, RMG_DEALLOC_HEADER | RMG_DEALLOC_ROI);
}

Bytes bufferOf(const RmgImage *image) {
    return Bytes(image->imageData, image->imageData + image->imageSize);
}

Rect modelSourceRect(const RmgImage *image) {
    const RmgROI *r = image->roi;
    if (r == nullptr) return {0, 0, image->height, image->width};
    const int rowsLeft = image->height - r->yOffset;
    return {r->xOffset, r->yOffset, std::min(r->height, rowsLeft),
            r->width > image->width - r->xOffset ? rowsLeft : r->width};
}

Rect modelDestinationRect(const RmgImage *image) {
    const RmgROI *r = image->roi;
    if (r == nullptr) return {0, 0, image->height, image->width};
    return {r->xOffset, r->yOffset, std::min(r->height, image->height - r->yOffset),
            std::min(r->width, image->width - r->xOffset)};
}

Bytes modelMirror(const RmgImage *src, const Bytes &srcBytes, const RmgImage *dst,
                  const Bytes &dstBytes, int flipAxis) {
    Bytes out = dstBytes;
    const Rect s = modelSourceRect(src);
    const Rect d = modelDestinationRect(dst);
    const int rows = std::min(s.rows, d.rows);
    const int cols = std::min(s.cols, d.cols);
    const int coi = src->roi != nullptr ? src->roi->coi : 0;
    const int channels = coi == 0 ? src->nChannels : 1;
    const int64_t sSize = src->imageSize, dSize = dst->imageSize;
    for (int r = 0; r < rows; ++r)
        for (int c = 0; c < cols; ++c) {
            const int sr = flipAxis == 1 ? r : rows - 1 - r;
            const int sc = flipAxis == 0 ? c : cols - 1 - c;
            if (src->depth == RMG_DEPTH_1U) {
                const int64_t sBit = int64_t(s.x & 7) + sc, dBit = int64_t(d.x & 7) + c;
                const int64_t sByte = int64_t(s.y + sr) * src->widthStep + (s.x >> 3) + (sBit >> 3);
                const int64_t dByte = int64_t(d.y + r) * dst->widthStep + (d.x >> 3) + (dBit >> 3);
                if (sByte >= sSize || dByte >= dSize) continue;
                const int bit = (srcBytes[sByte] >> (7 - (sBit & 7))) & 1;
                const auto mask = static_cast<unsigned char>(0x80u >> (dBit & 7));
                out[dByte] = static_cast<unsigned char>(bit ? (out[dByte] | mask) : (out[dByte] & ~mask));
                continue;
            }
            const int e = elementBytes(src->depth);
            if (src->dataOrder == RMG_DATA_PLANE) {
                const int first = coi != 0 ? coi - 1 : 0;
                for (int p = first; p < first + channels; ++p) {
                    const int64_t so = int64_t(p) * src->height * src->widthStep +
                                       int64_t(s.y + sr) * src->widthStep + int64_t(s.x + sc) * e;
                    const int64_t dO = int64_t(p) * dst->height * dst->widthStep +
                                       int64_t(d.y + r) * dst->widthStep + int64_t(d.x + c) * e;
                    if (so + e > sSize || dO + e > dSize) continue;
                    std::memcpy(&out[dO], &srcBytes[so], e);
                }
                continue;
            }
            // Pixel order: one channel, or the whole pixel as one unit.
            const int pixel = src->nChannels * e;
            const int64_t so = int64_t(s.y + sr) * src->widthStep + int64_t(s.x + sc) * pixel;
            const int64_t dO = int64_t(d.y + r) * dst->widthStep + int64_t(d.x + c) * pixel;
            const int offset = channels == 1 ? ((coi != 0 ? coi : 1) - 1) * e : 0;
            const int length = channels == 1 ? e : pixel;
            if (so + offset + length > sSize || dO + offset + length > dSize) continue;
            std::memcpy(&out[dO + offset], &srcBytes[so + offset], length);
        }
    return out;
}

std::ostream &operator<<(std::ostream &os, const Call &c) {
    return os << "(" << c.x << "," << c.y << "," << c.mode << ")";
}

TiledImage::TiledImage(const Kind &kind, int height, int width, int tileWidth, int tileHeight,
                       uint32_t seed) {
    const int gridCols = (width + tileWidth - 1) / tileWidth;
    const int gridRows = (height + tileHeight - 1) / tileHeight;
    grid = makeImage(kind, gridRows * tileHeight, gridCols * tileWidth, seed);
    rmgSetTileInfo(&tiles, callBack, this, tileWidth, tileHeight);
    image = rmgCreateImageHeader(kind.nChannels, 0, kind.depth, "RGB", "BGR", kind.dataOrder,
                                 RMG_ORIGIN_TL, kind.align, height, width, nullptr, nullptr, &tiles);
}

TiledImage::~TiledImage() {
    rmgDeallocate(image, RMG_DEALLOC_HEADER | RMG_DEALLOC_ROI);
    freeImage(grid);
}

// Row bytes of a tile row within a plane.
static int tileRowBytes(const RmgImage *image, int tileWidth) {
    if (image->depth == RMG_DEPTH_1U) return tileWidth / 8;
    const int pixel = elementBytes(image->depth) *
                      (image->dataOrder == RMG_DATA_PLANE ? 1 : image->nChannels);
    return tileWidth * pixel;
}

void TiledImage::moveTile(int xIndex, int yIndex, unsigned char *tile, bool toTile) {
    const int step = rmgTileWidthStep(image);
    const int rowBytes = tileRowBytes(image, tiles.width);
    const int planes = planesOf(image);
    const int gridCols = grid->width / tiles.width;
    const int gridRows = grid->height / tiles.height;
    if (xIndex < 0 || yIndex < 0 || xIndex >= gridCols || yIndex >= gridRows) return;
    for (int p = 0; p < planes; ++p)
        for (int r = 0; r < tiles.height; ++r) {
            unsigned char *g = grid->imageData + int64_t(p) * grid->height * grid->widthStep +
                               int64_t(yIndex * tiles.height + r) * grid->widthStep +
                               int64_t(xIndex) * rowBytes;
            unsigned char *t = tile + int64_t(p) * step * tiles.height + int64_t(r) * step;
            if (toTile) std::memcpy(t, g, rowBytes);
            else std::memcpy(g, t, rowBytes);
        }
}

void TiledImage::callBack(const RmgImage *image, int xIndex, int yIndex, int mode) {
    auto *self = static_cast<TiledImage *>(image->tileInfo->id);
    self->calls.push_back({xIndex, yIndex, mode});
    const auto key = std::make_pair(xIndex, yIndex);
    if (mode == RMG_TILE_RELEASE) {
        auto it = self->given_.find(key);
        if (it == self->given_.end()) return;
        if (it->second.first == RMG_TILE_WRITE)
            self->moveTile(xIndex, yIndex, it->second.second.data(), false);
        self->given_.erase(it);
        return;
    }
    const size_t bytes = size_t(rmgTileWidthStep(image)) * self->tiles.height * planesOf(image);
    auto &entry = self->given_[key];
    entry.first = mode;
    entry.second.assign(bytes, 0xEE);
    self->moveTile(xIndex, yIndex, entry.second.data(), true);
    self->tiles.tileData = entry.second.data();
}

RmgImage *TiledImage::plainCopy(uint32_t seed) const {
    RmgImage *plain = makeImage({image->nChannels, image->depth, image->dataOrder, image->align},
                                image->height, image->width, seed);
    const int rowBytes = tileRowBytes(image, 8) * image->width / 8;
    const int bitRow = (image->width + 7) / 8;
    const int bytes = image->depth == RMG_DEPTH_1U ? bitRow : rowBytes;
    for (int p = 0; p < planesOf(image); ++p)
        for (int r = 0; r < image->height; ++r)
            std::memcpy(plain->imageData + int64_t(p) * plain->height * plain->widthStep +
                            int64_t(r) * plain->widthStep,
                        grid->imageData + int64_t(p) * grid->height * grid->widthStep +
                            int64_t(r) * grid->widthStep,
                        bytes);
    return plain;
}

::testing::AssertionResult TiledImage::samePixels(const RmgImage *plain) const {
    const int rowBytes = tileRowBytes(image, 8) * image->width / 8;
    const bool bits = image->depth == RMG_DEPTH_1U;
    for (int p = 0; p < planesOf(image); ++p)
        for (int r = 0; r < image->height; ++r) {
            const unsigned char *a = plain->imageData + int64_t(p) * plain->height * plain->widthStep +
                                     int64_t(r) * plain->widthStep;
            const unsigned char *b = grid->imageData + int64_t(p) * grid->height * grid->widthStep +
                                     int64_t(r) * grid->widthStep;
            const int n = bits ? image->width : rowBytes;
            for (int i = 0; i < n; ++i) {
                const int x = bits ? ((a[i >> 3] >> (7 - (i & 7))) & 1) : a[i];
                const int y = bits ? ((b[i >> 3] >> (7 - (i & 7))) & 1) : b[i];
                if (x != y)
                    return ::testing::AssertionFailure()
                           << "plane " << p << " row " << r << (bits ? " bit " : " byte ") << i
                           << ": plain " << x << ", tiled " << y;
            }
        }
    return ::testing::AssertionSuccess();
}

}  // namespace mirrortest
