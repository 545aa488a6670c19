#include "ops/andtest.h"

#include <algorithm>
#include <cstring>

namespace andtest {

using addstest::allChannels;
using addstest::elemBytes;
using addstest::getAt;
using addstest::hasCoi;
using addstest::isWhole;
using addstest::Layout;
using addstest::layoutOf;
using addstest::putAt;
using addstest::Region;
using addstest::regionOf;

uint32_t maskOf(unsigned int depth, int value) {
    const auto v = static_cast<uint32_t>(value);
    switch (depth) {
        case RMG_DEPTH_1U:
            return (v & 1) ? 0xFFFFFFFFu : 0;
        case RMG_DEPTH_8U:
        case RMG_DEPTH_8S:
            return (v & 0xFF) | (v & 0xFF) << 8 | (v & 0xFF) << 16 | (v & 0xFF) << 24;
        case RMG_DEPTH_16U:
        case RMG_DEPTH_16S:
            return (v & 0xFFFF) | (v & 0xFFFF) << 16;
        default:
            return v;
    }
}

bool bitOf(const uint8_t *row, int64_t x) { return (row[x >> 3] >> (7 - (x & 7))) & 1; }

void setBit(uint8_t *row, int64_t x, bool v) {
    const auto m = static_cast<uint8_t>(0x80u >> (x & 7));
    row[x >> 3] = static_cast<uint8_t>(v ? (row[x >> 3] | m) : (row[x >> 3] & ~m));
}

namespace {

// The region of rmgAndS: ROI offset and size cut at the image's edge.
struct RoiSize {
    int x, y, height, width, coi;
};

RoiSize roiSizeOf(const RmgImage *image) {
    const RmgROI *roi = image->roi;
    if (roi == nullptr) return RoiSize{0, 0, image->height, image->width, 0};
    RoiSize r{roi->xOffset, roi->yOffset, roi->height, roi->width, roi->coi};
    if (int64_t{r.x} + r.width > image->width) r.width = image->width - r.x;
    if (int64_t{r.y} + r.height > image->height) r.height = image->height - r.y;
    if (image->nChannels == 1) r.coi = 1;
    return r;
}

// Element at a byte offset of a buffer.
int64_t elemAtByte(unsigned int depth, const std::vector<uint8_t> &bytes, int64_t offset) {
    return addstest::getFlat(depth, bytes.data() + offset, 0);
}
void putAtByte(unsigned int depth, std::vector<uint8_t> &bytes, int64_t offset, int64_t v) {
    addstest::putFlat(depth, bytes.data() + offset, 0, v);
}

}  // namespace

std::vector<uint8_t> andSModel(const RmgImage *src, const std::vector<uint8_t> &srcBytes,
                               const RmgImage *dst, const std::vector<uint8_t> &dstBytes,
                               int value) {
    std::vector<uint8_t> out = dstBytes;
    const unsigned int depth = src->depth;
    const uint32_t mask = maskOf(depth, value);
    if (isWhole(src, dst)) {
        const int words = src->imageSize / 4;
        int bytes = words * 4;
        if (src->align == 8) bytes = words / 2 == 1 ? 0 : words / 2 * 8;
        for (int k = 0; k < bytes; ++k)
            out[static_cast<size_t>(k)] =
                static_cast<uint8_t>(srcBytes[static_cast<size_t>(k)] & (mask >> (8 * (k % 4))));
        return out;
    }
    const RoiSize s = roiSizeOf(src);
    const RoiSize d = roiSizeOf(dst);
    const int width = std::min(s.width, d.width);
    const int height = std::min(s.height, d.height);
    if (width <= 0 || height <= 0) return out;
    if (depth == RMG_DEPTH_1U) {
        for (int r = 0; r < height; ++r)
            for (int i = 0; i < width; ++i) {
                const bool bit =
                    bitOf(srcBytes.data() + int64_t{s.y + r} * src->widthStep, s.x + i) &&
                    (mask & 1);
                setBit(out.data() + int64_t{d.y + r} * dst->widthStep, d.x + i, bit);
            }
        return out;
    }
    const int size = elemBytes(depth);
    const int64_t elemMask = size == 4 ? int64_t{mask} : int64_t{mask & ((1u << (8 * size)) - 1)};
    auto anded = [&](int64_t e) {
        const auto bits = static_cast<uint32_t>(e) & static_cast<uint32_t>(elemMask);
        return addstest::getFlat(depth, reinterpret_cast<const uint8_t *>(&bits), 0);
    };
    const Layout sl = layoutOf(src);
    const Layout dl = layoutOf(dst);
    if (src->dataOrder == RMG_DATA_PLANE) {
        if (s.coi != 0) {
            if (d.coi == 0) return out;  // the plane before the first: nothing
            for (int r = 0; r < height; ++r)
                for (int i = 0; i < width; ++i)
                    putAt(dl, out.data(), d.x + i, d.y + r, d.coi - 1,
                          anded(getAt(sl, srcBytes.data(), s.x + i, s.y + r, s.coi - 1)));
            return out;
        }
        for (int p = 0; p < src->nChannels; ++p)
            for (int r = 0; r < height; ++r)
                for (int i = 0; i < width; ++i)
                    putAt(dl, out.data(), d.x + i, d.y + r, p,
                          anded(getAt(sl, srcBytes.data(), s.x + i, s.y + r, p)));
        return out;
    }
    if (s.coi != 0) {
        for (int r = 0; r < height; ++r)
            for (int i = 0; i < width; ++i) {
                const int64_t e = getAt(sl, srcBytes.data(), s.x + i, s.y + r, s.coi - 1);
                if (d.coi != 0) {
                    putAt(dl, out.data(), d.x + i, d.y + r, d.coi - 1, anded(e));
                    continue;
                }
                // Channel index -1: the element before pixel i; none in
                // front of the buffer.
                const int64_t at = int64_t{d.y + r} * dst->widthStep +
                                   int64_t{d.x + i} * dst->nChannels * size - size;
                if (at >= 0) putAtByte(depth, out, at, anded(e));
            }
        return out;
    }
    // Rows of width x nChannels elements from each region's first pixel.
    const int64_t count = int64_t{width} * src->nChannels;
    for (int r = 0; r < height; ++r) {
        const int64_t srcRow =
            int64_t{s.y + r} * src->widthStep + int64_t{s.x} * src->nChannels * size;
        const int64_t dstRow =
            int64_t{d.y + r} * dst->widthStep + int64_t{d.x} * dst->nChannels * size;
        for (int64_t j = 0; j < count; ++j)
            putAtByte(depth, out, dstRow + j * size,
                      anded(elemAtByte(depth, srcBytes, srcRow + j * size)));
    }
    return out;
}

namespace {

// The bit rectangle of a 1-bit image: byte offset, width, height, phase.
struct BitRect {
    int64_t offset;
    int width, height, phase;
};

BitRect bitRectOf(const RmgImage *image) {
    const RmgROI *roi = image->roi;
    if (roi == nullptr) return BitRect{0, image->width, image->height, 0};
    return BitRect{int64_t{image->widthStep} * roi->yOffset + roi->xOffset / 8,
                   std::min(roi->width, image->width), std::min(roi->height, image->height),
                   roi->xOffset & 7};
}

}  // namespace

std::vector<uint8_t> andModel(const RmgImage *a, const std::vector<uint8_t> &aBytes,
                              const RmgImage *b, const std::vector<uint8_t> &bBytes,
                              const RmgImage *dst, const std::vector<uint8_t> &dstBytes) {
    std::vector<uint8_t> out = dstBytes;
    if (a->tileInfo != nullptr || b->tileInfo != nullptr || dst->tileInfo != nullptr) return out;
    const unsigned int depth = dst->depth;
    if (isWhole(a, dst) && isWhole(b, dst)) {
        const int bytes = depth == RMG_DEPTH_32S ? dst->imageSize / 4 * 4 : dst->imageSize;
        for (int k = 0; k < bytes; ++k)
            out[static_cast<size_t>(k)] = static_cast<uint8_t>(aBytes[static_cast<size_t>(k)] &
                                                               bBytes[static_cast<size_t>(k)]);
        return out;
    }
    const RmgImage *images[3] = {a, b, dst};
    if (depth == RMG_DEPTH_1U) {
        BitRect rects[3];
        for (int i = 0; i < 3; ++i) rects[i] = bitRectOf(images[i]);
        const int width = std::min({rects[0].width, rects[1].width, rects[2].width});
        const int height = std::min({rects[0].height, rects[1].height, rects[2].height});
        for (int r = 0; r < height; ++r)
            for (int x = 0; x < width; ++x) {
                int64_t bit[3];
                bool inside = true;
                for (int i = 0; i < 3; ++i) {
                    bit[i] = (rects[i].offset + int64_t{r} * images[i]->widthStep) * 8 +
                             rects[i].phase + x;
                    inside = inside && bit[i] / 8 < images[i]->imageSize;
                }
                if (!inside) continue;
                setBit(out.data(), bit[2],
                       bitOf(aBytes.data(), bit[0]) && bitOf(bBytes.data(), bit[1]));
            }
        return out;
    }
    Region reg[3];
    for (int i = 0; i < 3; ++i) {
        reg[i] = regionOf(images[i]);
        if (!reg[i].ok) return out;
    }
    const int rows = std::min({reg[0].rows, reg[1].rows, reg[2].rows});
    if (rows <= 0 || reg[0].columns <= 0 || reg[1].columns <= 0 || reg[2].columns <= 0) return out;
    bool pixel = true, plane = true, full = true, coi = true;
    for (const RmgImage *image : images) {
        pixel = pixel && image->dataOrder == RMG_DATA_PIXEL;
        plane = plane && image->dataOrder == RMG_DATA_PLANE;
        full = full && allChannels(image);
        coi = coi && hasCoi(image);
    }
    const Layout al = layoutOf(a);
    const Layout bl = layoutOf(b);
    const Layout dl = layoutOf(dst);
    auto put = [&](int ax, int ay, int ach, int bx, int by, int bch, int dx, int dy, int dch) {
        const int64_t e =
            getAt(al, aBytes.data(), ax, ay, ach) & getAt(bl, bBytes.data(), bx, by, bch);
        putAt(dl, out.data(), dx, dy, dch, e);
    };
    const int columns = std::min({reg[0].columns, reg[1].columns, reg[2].columns});
    if (pixel && full) {
        const int elems = std::min({reg[0].columns * a->nChannels, reg[1].columns * b->nChannels,
                                    reg[2].columns * dst->nChannels});
        const int na = a->nChannels, nb = b->nChannels, nd = dst->nChannels;
        for (int r = 0; r < rows; ++r)
            for (int j = 0; j < elems; ++j)
                put(reg[0].x0 + j / na, reg[0].y0 + r, j % na, reg[1].x0 + j / nb, reg[1].y0 + r,
                    j % nb, reg[2].x0 + j / nd, reg[2].y0 + r, j % nd);
    } else if ((plane || pixel) && coi) {
        // Case B (one plane each) and case C (one channel each).
        for (int r = 0; r < rows; ++r)
            for (int x = 0; x < columns; ++x)
                put(reg[0].x0 + x, reg[0].y0 + r, reg[0].coi - 1, reg[1].x0 + x, reg[1].y0 + r,
                    reg[1].coi - 1, reg[2].x0 + x, reg[2].y0 + r, reg[2].coi - 1);
    } else if (plane && full) {
        const int planes = std::min({a->nChannels, b->nChannels, dst->nChannels});
        for (int p = 0; p < planes; ++p)
            for (int r = 0; r < rows; ++r)
                for (int x = 0; x < columns; ++x)
                    put(reg[0].x0 + x, reg[0].y0 + r, p, reg[1].x0 + x, reg[1].y0 + r, p,
                        reg[2].x0 + x, reg[2].y0 + r, p);
    }
    return out;
}

}  // namespace andtest
