#include "colortest.h"

#include <climits>
#include <cmath>
#include <cstring>

namespace colortest {

namespace {

int elemBytes(unsigned int depth) { return static_cast<int>((depth & 0x7FFFFFFFu) >> 3); }

bool inside(const Bytes &b, int64_t at, int n) {
    return at >= 0 && at + n <= static_cast<int64_t>(b.size());
}

uint32_t readU(const Bytes &b, int64_t at, int n) {
    uint32_t v = 0;
    for (int k = 0; k < n; ++k) v |= uint32_t{b[static_cast<size_t>(at + k)]} << (8 * k);
    return v;
}

void writeU(Bytes &b, int64_t at, int n, uint32_t v) {
    for (int k = 0; k < n; ++k) b[static_cast<size_t>(at + k)] = static_cast<unsigned char>(v >> (8 * k));
}

// Plane of the last channel among the first four that carries `letter`; -1
// for none.
int planeOf(const RmgImage *f, char letter) {
    int plane = -1;
    for (int c = 0; c < f->nChannels && c < 4; ++c)
        if (f->channelSeq[c] == letter) plane = c;
    return plane;
}

// Byte offsets of channels R, G, B of pixel 0 of row 0, and the step in
// bytes between pixels: pixel order, elements 0, 1, 2 of the pixel;
// plane order, the planes of the letters.
bool channels(const RmgImage *f, int rowStep, int height, int64_t off[3], int64_t *stride) {
    const int e = elemBytes(f->depth);
    if (f->dataOrder == RMG_DATA_PIXEL) {
        for (int k = 0; k < 3; ++k) off[k] = k * e;
        *stride = static_cast<int64_t>(f->nChannels) * e;
        return true;
    }
    const char letters[3] = {'R', 'G', 'B'};
    for (int k = 0; k < 3; ++k) {
        const int p = planeOf(f, letters[k]);
        if (p < 0) return false;
        off[k] = static_cast<int64_t>(p) * rowStep * height;
    }
    *stride = e;
    return true;
}

int32_t truncInt(double v) {
    if (std::isnan(v) || v <= -2147483649.0 || v >= 2147483648.0) return INT_MIN;
    return static_cast<int32_t>(v);
}

}  // namespace

Image::Image(int nChannels, unsigned int depth, int order, const char *model, const char *seq,
             int height, int width, int align, std::mt19937 &rng) {
    image = rmgCreateImageHeader(nChannels, 0, depth, model, seq, order, RMG_ORIGIN_TL, align,
                                 height, width, nullptr, nullptr, nullptr);
    rmgAllocateImage(image, -1);
    for (int i = 0; i < image->imageSize; ++i) image->imageData[i] = static_cast<unsigned char>(rng());
}

Image::~Image() { rmgDeallocate(image, RMG_DEALLOC_ALL); }

Bytes Image::bytes() const { return Bytes(image->imageData, image->imageData + image->imageSize); }

void modelColorToGray(const RmgImage *sf, const Bytes &src, int srcStep, int height, int width,
                      const RmgImage *df, Bytes &dst, int dstStep) {
    const unsigned int sd = sf->depth, dd = df->depth;
    const int es = elemBytes(sd);
    const int ed = elemBytes(dd);
    const bool plane16 = sd == RMG_DEPTH_16U && dd == RMG_DEPTH_8U && sf->dataOrder == RMG_DATA_PLANE;
    int64_t off[3], stride;
    if (!channels(sf, srcStep, height, off, &stride)) return;
    const bool swap = sf->channelSeq[0] != 'R' && !(sd == RMG_DEPTH_32S && dd == RMG_DEPTH_1U);
    if (swap) std::swap(off[0], off[2]);
    const int64_t count = static_cast<int64_t>(width) * (df->dataOrder == RMG_DATA_PIXEL ? df->nChannels : 1);
    int64_t rows = height, n = count;
    if (plane16 && srcStep == 2 * count && dstStep == count) {
        rows = 1;
        n = count * height * df->nChannels;
    }
    for (int64_t r = 0; r < rows; ++r)
        for (int64_t i = n - 1; i >= 0; --i) {
            uint32_t v[3];
            bool ok = true;
            for (int k = 0; k < 3; ++k) {
                const int64_t at = r * srcStep + off[k] + i * stride;
                if (!inside(src, at, es)) ok = false;
                else v[k] = readU(src, at, es);
            }
            const int64_t to = r * dstStep + (dd == RMG_DEPTH_1U ? i / 8 : i * ed);
            if (!ok || !inside(dst, to, dd == RMG_DEPTH_1U ? 1 : ed)) continue;
            uint32_t out = 0;
            if (sd == RMG_DEPTH_32S) {
                const int sh = dd == RMG_DEPTH_1U ? 10 : 11;
                uint32_t s = 0;
                const uint32_t w[3] = {109, 366, 37};
                for (int k = 0; k < 3; ++k)
                    s += static_cast<uint32_t>(static_cast<int32_t>(v[k]) >> sh) * w[k];
                out = dd == RMG_DEPTH_1U ? (s > 0x1FFFFFFFu) : dd == RMG_DEPTH_8U ? s >> 21 : s >> 13;
            } else if (plane16) {
                const uint32_t s = (((v[0] * 109) >> 16) + ((v[1] * 366) >> 16) + ((v[2] * 37) >> 16)) >> 1;
                out = s > 255 ? 255 : s;
            } else {
                const uint32_t s = v[0] * 54 + v[1] * 183 + v[2] * 18;
                if (dd == RMG_DEPTH_1U)
                    out = (s >> 8) > (sd == RMG_DEPTH_8U ? 127u : 32767u);
                else if (sd == RMG_DEPTH_16U && dd == RMG_DEPTH_8U)
                    out = s >> 16;
                else if (sd == RMG_DEPTH_8U && dd == RMG_DEPTH_16U)
                    out = s;
                else
                    out = s >> 8;
            }
            if (dd == RMG_DEPTH_1U) {
                const unsigned char mask = static_cast<unsigned char>(0x80 >> (i & 7));
                unsigned char &byte = dst[static_cast<size_t>(to)];
                byte = static_cast<unsigned char>(out ? (byte | mask) : (byte & ~mask));
            } else {
                writeU(dst, to, ed, out);
            }
        }
}

void modelGrayToColor(const RmgImage *sf, const Bytes &src, int srcStep, int height, int width,
                      const RmgImage *df, Bytes &dst, int dstStep, float fractR, float fractG,
                      float fractB) {
    const unsigned int sd = sf->depth;
    const float fr[3] = {fractR, fractG, fractB};
    // Weights.
    uint32_t w[3];
    int shift;
    float fw[3] = {fractR, fractG, fractB};
    const auto at16 = [](float f, double s) { return static_cast<uint16_t>(truncInt(s * f)); };
    if (df->depth == RMG_DEPTH_32S) {
        if (at16(fr[0], 32768) == 0 && at16(fr[1], 32768) == 0 && at16(fr[2], 32768) == 0) {
            fw[0] = 0.212671f;
            fw[1] = 0.715160f;
            fw[2] = 0.072169f;
        }
        w[0] = w[1] = w[2] = 0;
        shift = 0;
    } else if (df->depth == RMG_DEPTH_16U) {
        for (int k = 0; k < 3; ++k) w[k] = at16(fr[k], 32768);
        shift = 15;
        if (w[0] == 0 && w[1] == 0 && w[2] == 0) {
            w[0] = 109, w[1] = 366, w[2] = 37;
            shift = 9;
        }
    } else {
        for (int k = 0; k < 3; ++k) w[k] = at16(fr[k], 256);
        shift = 8;
        if (w[0] == 0 && w[1] == 0 && w[2] == 0) w[0] = 54, w[1] = 183, w[2] = 18;
    }
    const bool bits = sd == RMG_DEPTH_1U;
    const int es = bits ? 0 : elemBytes(sd);
    const int eo = bits ? 1 : es;  // output element bytes
    int64_t off[3], stride;
    if (!channels(df, dstStep, height, off, &stride)) return;
    if (bits) stride = df->dataOrder == RMG_DATA_PIXEL ? df->nChannels : 1;
    for (int64_t r = 0; r < height; ++r)
        for (int64_t i = 0; i < width; ++i) {
            const int64_t from = r * srcStep + (bits ? i / 8 : i * es);
            if (!inside(src, from, bits ? 1 : es)) continue;
            bool ok = true;
            for (int k = 0; k < 3; ++k)
                if (!inside(dst, r * dstStep + off[k] + i * stride, eo)) ok = false;
            if (!ok) continue;
            for (int k = 0; k < 3; ++k) {
                const int64_t to = r * dstStep + off[k] + i * stride;
                uint32_t out;
                if (bits) {
                    const bool set = (src[static_cast<size_t>(from)] >> (7 - i % 8)) & 1;
                    const int kk = df->channelSeq[0] == 'R' ? k : 2 - k;
                    out = set ? ((w[kk] * 255) >> shift) & 0xFF : 0;
                } else if (sd == RMG_DEPTH_32S) {
                    const double g = static_cast<int32_t>(readU(src, from, 4));
                    out = static_cast<uint32_t>(truncInt(g * static_cast<double>(fw[k])));
                } else {
                    out = (readU(src, from, es) * w[k]) >> shift;
                }
                writeU(dst, to, eo, out);
            }
        }
}

TiledImage::TiledImage(int nChannels, unsigned int depth, int order, const char *model,
                       const char *seq, int height, int width, int tileWidth, int tileHeight,
                       std::mt19937 &rng) {
    tiles = RmgTileInfo{callBack, this, nullptr, tileWidth, tileHeight};
    image = rmgCreateImageHeader(nChannels, 0, depth, model, seq, order, RMG_ORIGIN_TL, 4, height,
                                 width, nullptr, nullptr, &tiles);
    tilesX = (width + tileWidth - 1) / tileWidth;
    tilesY = (height + tileHeight - 1) / tileHeight;
    tileStep = rmgTileWidthStep(image);
    tileBytes = tileStep * tileHeight * (order == RMG_DATA_PLANE ? nChannels : 1);
    data.resize(static_cast<size_t>(tilesX) * tilesY);
    for (Bytes &t : data) {
        t.resize(static_cast<size_t>(tileBytes));
        for (unsigned char &b : t) b = static_cast<unsigned char>(rng());
    }
}

TiledImage::~TiledImage() { rmgDeallocate(image, RMG_DEALLOC_HEADER); }

void TiledImage::callBack(const RmgImage *image, int xIndex, int yIndex, int mode) {
    auto *self = static_cast<TiledImage *>(image->tileInfo->id);
    const int number = static_cast<int>(self->calls.size());
    self->calls.push_back({xIndex, yIndex, mode});
    if (mode == RMG_TILE_RELEASE) {
        self->tiles.tileData = nullptr;
        return;
    }
    const bool onGrid = xIndex >= 0 && yIndex >= 0 && xIndex < self->tilesX && yIndex < self->tilesY;
    self->tiles.tileData = onGrid && number != self->nullAt ? self->tile(xIndex, yIndex).data() : nullptr;
}

std::vector<Call> walkCalls(int tilesX, int tilesY) {
    std::vector<Call> calls;
    for (int y = 0; y < tilesY; ++y) {
        for (int x = 0; x < tilesX; ++x) {
            calls.push_back({x, y, RMG_TILE_WRITE});
            calls.push_back({x, y, RMG_TILE_RELEASE});
        }
        calls.push_back({tilesX, y, RMG_TILE_WRITE});
    }
    calls.push_back({0, tilesY, RMG_TILE_WRITE});
    return calls;
}

}  // namespace colortest
