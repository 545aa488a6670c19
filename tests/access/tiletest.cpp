#include "access/tiletest.h"

#include <algorithm>
#include <cstring>

namespace tiletest {

std::ostream &operator<<(std::ostream &os, const Kind &k) {
    return os << "{nChannels " << k.nChannels << ", depth 0x" << std::hex << k.depth << std::dec
              << ", order " << k.dataOrder << ", align " << k.align << "}";
}

std::ostream &operator<<(std::ostream &os, const Call &c) {
    return os << "(" << c.x << ", " << c.y << ", " << c.mode << ")";
}

int bitsOf(unsigned int depth) { return static_cast<int>(depth & 0x7FFFFFFFu); }
int elementBytesOf(const Kind &k) { return bitsOf(k.depth) / 8; }
int pixelBytesOf(const Kind &k) {
    const int eb = elementBytesOf(k);
    return k.dataOrder == RMG_DATA_PIXEL ? eb * k.nChannels : eb;
}
int planesOf(const Kind &k) { return k.dataOrder == RMG_DATA_PLANE ? k.nChannels : 1; }

int blockRowStep(const Kind &k, int width) {
    const int bytes = bitsOf(k.depth) == 1 ? (width + 7) / 8 : width * pixelBytesOf(k);
    return (bytes + k.align - 1) / k.align * k.align;
}

Kind kindOf(const RmgImage *image) {
    return Kind{image->nChannels, image->depth, image->dataOrder, image->align};
}

Kind kindNumber(int index, unsigned variant) {
    static const unsigned kDepths[6] = {RMG_DEPTH_1U, RMG_DEPTH_8U,  RMG_DEPTH_16U,
                                        RMG_DEPTH_8S, RMG_DEPTH_16S, RMG_DEPTH_32S};
    const unsigned depth = kDepths[index % 6];
    const int order = (index / 6) % 2;
    const int channels = depth == RMG_DEPTH_1U ? 1 : 1 + static_cast<int>(variant % 4);
    return Kind{channels, depth, order, (variant / 4) % 2 ? 8 : 4};
}

uint8_t sampleByte(uint32_t seed, int X, int Y, int p, int k) {
    uint32_t h = static_cast<uint32_t>(X) * 0x9E3779B1u ^ static_cast<uint32_t>(Y) * 0x85EBCA77u ^
                 static_cast<uint32_t>(p * 16 + k + 1) * 0xC2B2AE3Du ^ seed;
    h ^= h >> 15;
    h *= 0x2C1B3C6Du;
    h ^= h >> 12;
    h *= 0x297A2D39u;
    h ^= h >> 15;
    return static_cast<uint8_t>(h);
}

bool sampleBit(uint32_t seed, int X, int Y) { return (sampleByte(seed, X, Y, 0, 0) & 1) != 0; }

// ---------------------------------------------------------------------------

PlainImage::PlainImage(const Kind &k, int height, int width, uint32_t seed, int padFill) {
    image = rmgCreateImageHeader(k.nChannels, 0, k.depth, "RGB", "BGR", k.dataOrder, 0, k.align,
                                 height, width, nullptr, nullptr, nullptr);
    rmgAllocateImage(image, padFill);
    const int pb = pixelBytesOf(k);
    for (int p = 0; p < planesOf(k); ++p)
        for (int Y = 0; Y < height; ++Y)
            for (int X = 0; X < width; ++X) {
                if (pb == 0) {
                    unsigned char *row = image->imageData + Y * image->widthStep;
                    const unsigned char mask = static_cast<unsigned char>(0x80u >> (X & 7));
                    row[X >> 3] = static_cast<unsigned char>(
                        sampleBit(seed, X, Y) ? row[X >> 3] | mask : row[X >> 3] & ~mask);
                    continue;
                }
                for (int b = 0; b < pb; ++b) pixel(X, Y, p)[b] = sampleByte(seed, X, Y, p, b);
            }
}

PlainImage::~PlainImage() { rmgDeallocate(image, RMG_DEALLOC_ALL); }

unsigned char *PlainImage::pixel(int X, int Y, int p) const {
    const Kind k = kindOf(image);
    return image->imageData + p * image->widthStep * image->height + Y * image->widthStep +
           X * pixelBytesOf(k);
}

// ---------------------------------------------------------------------------

TiledImage::TiledImage(const Kind &k, int height, int width, int tileWidth, int tileHeight,
                       uint32_t seed)
    : seed_(seed) {
    rmgSetTileInfo(&tiles, callBack, this, tileWidth, tileHeight);
    image = rmgCreateImageHeader(k.nChannels, 0, k.depth, "RGB", "BGR", k.dataOrder, 0, k.align,
                                 height, width, nullptr, nullptr, &tiles);
}

TiledImage::~TiledImage() { rmgDeallocate(image, RMG_DEALLOC_HEADER); }

void TiledImage::callBack(const RmgImage *image, int xIndex, int yIndex, int mode) {
    auto *self = static_cast<TiledImage *>(image->tileInfo->id);
    self->calls.push_back(Call{xIndex, yIndex, mode});
    if (mode == RMG_TILE_READ) {
        if (self->reads++ == self->failAtRead) {
            self->tiles.tileData = nullptr;
            return;
        }
        self->serve(xIndex, yIndex);
    } else if (mode == RMG_TILE_RELEASE) {
        self->release(xIndex, yIndex);
    }
}

void TiledImage::serve(int xIndex, int yIndex) {
    const Kind k = kindOf(image);
    const int tw = tiles.width, th = tiles.height;
    const int step = rmgWidthStep(k.dataOrder, k.depth, k.align, k.nChannels, tw);
    auto tile = std::make_unique<Tile>();
    tile->x = xIndex;
    tile->y = yIndex;
    tile->bytes.assign(static_cast<size_t>(step) * th * planesOf(k), 0xEE);
    const int pb = pixelBytesOf(k);
    for (int p = 0; p < planesOf(k); ++p)
        for (int r = 0; r < th; ++r)
            for (int c = 0; c < tw; ++c) {
                const int X = xIndex * tw + c, Y = yIndex * th + r;
                unsigned char *row = tile->bytes.data() + (p * th + r) * step;
                if (pb == 0) {
                    if (c % 8 == 0) row[c >> 3] = 0;
                    if (sampleBit(seed_, X, Y))
                        row[c >> 3] |= static_cast<unsigned char>(0x80u >> (c & 7));
                    continue;
                }
                for (int b = 0; b < pb; ++b) row[c * pb + b] = sampleByte(seed_, X, Y, p, b);
            }
    tiles.tileData = tile->bytes.data();
    given_.push_back(std::move(tile));
}

void TiledImage::release(int xIndex, int yIndex) {
    for (auto it = given_.begin(); it != given_.end(); ++it) {
        if ((*it)->bytes.data() == tiles.tileData && (*it)->x == xIndex && (*it)->y == yIndex) {
            given_.erase(it);
            return;
        }
    }
    badRelease = true;
}

// ---------------------------------------------------------------------------

long long mapPosition(int mode, long long X, long long W) {
    if (X < 0) {
        if (mode == RMG_BORDER_REPLICATE) return 0;
        if (mode == RMG_BORDER_REFLECT) return -X - 1;
        return X + W;
    }
    if (X >= W) {
        if (mode == RMG_BORDER_REPLICATE) return W - 1;
        if (mode == RMG_BORDER_REFLECT) return 2 * W - 1 - X;
        return X - W;
    }
    return X;
}

Block modelExtended(const RmgImage *image, int x, int y, int width, int height) {
    const Kind k = kindOf(image);
    const int bits = bitsOf(k.depth);
    const int pb = pixelBytesOf(k), eb = elementBytesOf(k), planes = planesOf(k);
    Block out;
    out.rowStep = blockRowStep(k, width);
    const long long planeStep = static_cast<long long>(out.rowStep) * height;
    out.bytes.assign(static_cast<size_t>(planeStep * planes), 0);
    const long long W = image->width, H = image->height, ws = image->widthStep;
    const long long size = image->imageSize;
    const unsigned char *data = image->imageData;

    for (int j = 0; j < height; ++j) {
        const long long Y = static_cast<long long>(y) + j;
        const int band = Y < 0 ? 0 : (Y >= H ? 1 : 2);
        long long row = Y;
        if (band < 2) {
            const int mode = image->borderModes[band] & 3;
            if (mode == RMG_BORDER_CONST) {
                const auto v = static_cast<uint32_t>(image->borderConsts[band]);
                uint32_t pattern = v;
                if (bits == 1) pattern = (v & 1) ? 0xFFFFFFFFu : 0;
                if (bits == 8) pattern = (v & 0xFF) * 0x01010101u;
                if (bits == 16) pattern = (v & 0xFFFF) * 0x00010001u;
                for (int p = 0; p < planes; ++p)
                    for (int b = 0; b + 4 <= out.rowStep; b += 4)
                        std::memcpy(&out.bytes[p * planeStep + j * out.rowStep + b], &pattern, 4);
                continue;
            }
            row = mapPosition(mode, Y, H);
        }
        for (int i = 0; i < width; ++i) {
            const long long X = static_cast<long long>(x) + i;
            int mode = band < 2 ? image->borderModes[band] & 3 : -1;
            if (band == 2 && X < 0) mode = image->borderModes[2] & 3;
            if (band == 2 && X >= W) mode = image->borderModes[3] & 3;
            if (mode == RMG_BORDER_CONST) {  // beside the image's rows only
                const int constant = image->borderConsts[X < 0 ? 2 : 3];
                if (bits == 1) {
                    if (constant & 1) out.bytes[j * out.rowStep + i / 8] |= 0x80 >> (i & 7);
                    continue;
                }
                for (int p = 0; p < planes; ++p)
                    for (int b = 0; b < pb; b += eb)
                        std::memcpy(&out.bytes[p * planeStep + j * out.rowStep + i * pb + b],
                                    &constant, eb);  // the low bytes, little-endian
                continue;
            }
            const long long col = mode < 0 ? X : mapPosition(mode, X, W);
            if (bits == 1) {
                const long long at = row * ws + ((col - (col & 7)) / 8);
                if (at >= 0 && at < size && (data[at] & (0x80 >> (col & 7))))
                    out.bytes[j * out.rowStep + i / 8] |= 0x80 >> (i & 7);
                continue;
            }
            for (int p = 0; p < planes; ++p) {
                const long long at = p * ws * H + row * ws + col * pb;
                if (at >= 0 && at + pb <= size)
                    std::memcpy(&out.bytes[p * planeStep + j * out.rowStep + i * pb], data + at,
                                pb);
            }
        }
    }
    return out;
}

}  // namespace tiletest
