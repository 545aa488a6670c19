// Pieces of the median-cut palette tests: a bitmap buffer with a guard
// pattern, images of given layout, and a model of the palette written
// step by step from its rules, every plane sum and every shrink a walk of
// the histogram of its own.
#ifndef RMG_TESTS_DIB_MEDCUTTEST_H
#define RMG_TESTS_DIB_MEDCUTTEST_H

#include <array>
#include <cstdint>
#include <cstring>
#include <vector>

#include "dib/rmgdib.h"
#include "rmg.h"

namespace medcut {

constexpr size_t kHeaderBytes = 40;
constexpr size_t kBufferBytes = kHeaderBytes + 4 * 256 + 64;
constexpr uint8_t kGuard = 0xCD;
constexpr size_t kClrUsedAt = 32;  // byte offset of biClrUsed

// A bitmap header followed by room for 256 entries and a guard tail, all
// of it but the header filled with kGuard.
inline std::vector<uint8_t> dibBuffer(int bitCount) {
    std::vector<uint8_t> b(kBufferBytes, kGuard);
    BITMAPINFOHEADER h{};
    h.biSize = 40;
    h.biWidth = 1;
    h.biHeight = 1;
    h.biPlanes = 1;
    h.biBitCount = static_cast<uint16_t>(bitCount);
    h.biClrUsed = 0xDEADBEEFu;
    std::memcpy(b.data(), &h, sizeof h);
    return b;
}

inline BITMAPINFOHEADER *header(std::vector<uint8_t> &b) {
    return reinterpret_cast<BITMAPINFOHEADER *>(b.data());
}

inline uint32_t clrUsed(const std::vector<uint8_t> &b) {
    uint32_t v;
    std::memcpy(&v, b.data() + kClrUsedAt, 4);
    return v;
}

// The buffer the tests expect: the header with biClrUsed set and the
// given entries (blue, green, red, 0 each), the rest untouched.
inline std::vector<uint8_t> expectedBuffer(int bitCount,
                                           const std::vector<std::array<uint8_t, 3>> &entries) {
    std::vector<uint8_t> b = dibBuffer(bitCount);
    const uint32_t n = static_cast<uint32_t>(entries.size());
    std::memcpy(b.data() + kClrUsedAt, &n, 4);
    for (size_t i = 0; i < entries.size(); ++i) {
        b[kHeaderBytes + 4 * i] = entries[i][0];
        b[kHeaderBytes + 4 * i + 1] = entries[i][1];
        b[kHeaderBytes + 4 * i + 2] = entries[i][2];
        b[kHeaderBytes + 4 * i + 3] = 0;
    }
    return b;
}

// An allocated image; freed with rmgDeallocate(image, RMG_DEALLOC_ALL).
inline RmgImage *makeImage(int nChannels, unsigned depth, const char *seq, int order,
                           int height, int width, int align = 4) {
    const char *model = nChannels == 1 ? "GRAY" : "RGB";
    RmgImage *img = rmgCreateImageHeader(nChannels, 0, depth, model, seq, order, RMG_ORIGIN_TL,
                                         align, height, width, nullptr, nullptr, nullptr);
    if (img != nullptr) rmgAllocateImage(img, 0);
    return img;
}

// The address of the byte of channel c (0-based, in memory order) of
// pixel (x, y) that holds its high byte (the element itself at 8 bits).
inline uint8_t *sampleAt(const RmgImage *img, int x, int y, int c) {
    const int bytes = static_cast<int>(img->depth & 0xFF) / 8;
    int64_t off = static_cast<int64_t>(y) * img->widthStep + (bytes - 1);
    if (img->dataOrder == RMG_DATA_PIXEL)
        off += static_cast<int64_t>(x) * img->nChannels * bytes + c * bytes;
    else
        off += static_cast<int64_t>(x) * bytes +
               static_cast<int64_t>(c) * img->widthStep * img->height;
    return img->imageData + off;
}

// ---- the model -------------------------------------------------------------

struct MBox {
    int state;
    int lo[3], hi[3];
    uint32_t count;
};

constexpr int kStep[3] = {1, 64, 4096};

struct Model {
    std::vector<uint32_t> hist;

    uint32_t plane(const MBox &b, int axis, int s) const {
        int lo[3], hi[3];
        for (int a = 0; a < 3; ++a) {
            lo[a] = b.lo[a];
            hi[a] = b.hi[a];
        }
        lo[axis] = hi[axis] = s;
        uint32_t sum = 0;
        for (int bl = lo[2]; bl <= hi[2]; bl += 4096)
            for (int g = lo[1]; g <= hi[1]; g += 64)
                for (int r = lo[0]; r <= hi[0]; ++r) sum += hist[bl + g + r];
        return sum;
    }
    bool empty(const MBox &b) const {
        for (int s = b.lo[0]; s <= b.hi[0]; ++s)
            if (plane(b, 0, s) != 0) return false;
        return true;
    }
    void shrink(MBox &b, int first) const {
        if (empty(b)) return;
        const int order[3] = {first, first == 0 ? 1 : 0, first == 2 ? 1 : 2};
        for (int a : order) {
            while (plane(b, a, b.lo[a]) == 0) b.lo[a] += kStep[a];
            while (plane(b, a, b.hi[a]) == 0) b.hi[a] -= kStep[a];
        }
    }
    static bool single(const MBox &b) {
        return b.lo[0] == b.hi[0] && b.lo[1] == b.hi[1] && b.lo[2] == b.hi[2];
    }
    void splitColour(MBox &old, MBox &fresh) const {
        const int rr = old.hi[0] - old.lo[0];
        const int gr = (old.hi[1] - old.lo[1]) >> 6;
        const int br = (old.hi[2] - old.lo[2]) >> 12;
        const int axis = (rr >= gr && rr >= br) ? 0 : (gr >= br ? 1 : 2);
        const int step = kStep[axis];
        const uint32_t half = old.count >> 1;
        uint32_t acc = 0, prev = 0;
        int s = old.lo[axis];
        bool passed = false;
        for (; s <= old.hi[axis]; s += step) {
            prev = acc;
            acc += plane(old, axis, s);
            if (acc > half) {
                passed = true;
                break;
            }
        }
        if (passed && half - prev < acc - half) {
            acc = prev;
            s -= step;
        }
        fresh = old;
        fresh.lo[axis] = s + step;
        old.hi[axis] = s;
        shrink(fresh, axis);
        shrink(old, axis);
        old.state = single(old) ? 255 : old.state + 1;
        fresh.state = single(fresh) ? 255 : old.state;
        fresh.count = old.count - acc;
        old.count = acc;
    }
    void splitGray(MBox &old, MBox &fresh) const {
        const uint32_t half = old.count >> 1;
        uint32_t acc = 0, prev = 0;
        int s = old.lo[0];
        for (; s <= old.hi[0]; ++s) {
            prev = acc;
            acc += hist[s];
            if (acc > half) break;
        }
        if (half - prev < acc - half) {
            acc = prev;
            s -= 1;
        }
        fresh = old;
        fresh.lo[0] = s + 1;
        fresh.count = old.count - acc;
        old.hi[0] = s;
        old.count = acc;
        while (hist[old.hi[0]] == 0) --old.hi[0];
        while (hist[fresh.lo[0]] == 0) ++fresh.lo[0];
        if (fresh.lo[0] != fresh.hi[0]) {
            ++old.state;
            fresh.state = old.state;
        } else {
            fresh.state = 255;
        }
        if (old.lo[0] == old.hi[0]) old.state = 255;
    }
};

// The palette by the rules, into a buffer made by dibBuffer; gives the
// result (1 or 0).
inline int modelPalette(std::vector<uint8_t> &buf, const RmgImage *img) {
    const int bitCount = header(buf)->biBitCount;
    if (bitCount > 8) return 0;
    const int p = 1 << bitCount;
    uint8_t *table = buf.data() + kHeaderBytes;
    auto put = [&](int i, uint32_t b, uint32_t g, uint32_t r) {
        table[4 * i] = static_cast<uint8_t>(b);
        table[4 * i + 1] = static_cast<uint8_t>(g);
        table[4 * i + 2] = static_cast<uint8_t>(r);
        table[4 * i + 3] = 0;
    };
    auto setUsed = [&](uint32_t n) { std::memcpy(buf.data() + kClrUsedAt, &n, 4); };
    if (img->depth == RMG_DEPTH_1U) {
        put(0, 0, 0, 0);
        put(1, 255, 255, 255);
        setUsed(2);
        return 1;
    }
    const bool gray = img->nChannels == 1;
    if (!gray && img->nChannels != 3 && img->nChannels != 4) return 0;
    int red = 2, blue = 0;
    if (!gray) {
        if (!std::memcmp(img->channelSeq, "RGB", 4) || !std::memcmp(img->channelSeq, "RGBA", 4))
            red = 0, blue = 2;
        else if (std::memcmp(img->channelSeq, "BGR", 4) && std::memcmp(img->channelSeq, "BGRA", 4))
            return 0;
    }
    Model m;
    m.hist.assign(gray ? 256 : 262144, 0);
    uint32_t d = 0;
    for (int y = 0; y < img->height; ++y)
        for (int x = 0; x < img->width; ++x) {
            uint32_t bin;
            if (gray) {
                bin = *sampleAt(img, x, y, 0);
            } else {
                bin = (*sampleAt(img, x, y, blue) >> 2) * 4096u +
                      (*sampleAt(img, x, y, 1) >> 2) * 64u + (*sampleAt(img, x, y, red) >> 2);
            }
            if (m.hist[bin]++ == 0) ++d;
        }
    if (d <= static_cast<uint32_t>(p)) {
        int i = 0;
        for (uint32_t bin = 0; bin < m.hist.size(); ++bin) {
            if (m.hist[bin] == 0) continue;
            if (gray) put(i++, bin, bin, bin);
            else put(i++, (bin >> 10) & ~3u, (bin >> 4) & ~3u, (bin & 63) * 4);
        }
        setUsed(d);
        return 1;
    }
    std::vector<MBox> boxes(p);
    MBox &first = boxes[0];
    first.state = 0;
    first.count = static_cast<uint32_t>(img->width) * static_cast<uint32_t>(img->height);
    if (gray) {
        first.lo[0] = 0;
        first.hi[0] = 255;
        while (m.hist[first.lo[0]] == 0) ++first.lo[0];
        while (m.hist[first.hi[0]] == 0) --first.hi[0];
        first.lo[1] = first.hi[1] = first.lo[2] = first.hi[2] = 0;
    } else {
        first.lo[0] = 0, first.hi[0] = 63;
        first.lo[1] = 0, first.hi[1] = 4032;
        first.lo[2] = 0, first.hi[2] = 258048;
        m.shrink(first, 0);
    }
    int n = 1;
    while (n < p) {
        const int last = n - 1;
        const int before = n;
        for (int i = 0; i <= last; ++i) {
            if (boxes[i].state == 255) continue;
            if (n == p) break;
            if (gray) m.splitGray(boxes[i], boxes[n]);
            else m.splitColour(boxes[i], boxes[n]);
            ++n;
        }
        if (n == before) break;  // no live box: the palette is what exists
    }
    for (int i = 0; i < n; ++i) {
        const MBox &b = boxes[i];
        uint32_t sb = 0, sg = 0, sr = 0;
        for (int bl = b.lo[2]; bl <= b.hi[2]; bl += 4096)
            for (int g = b.lo[1]; g <= b.hi[1]; g += 64)
                for (int r = b.lo[0]; r <= b.hi[0]; ++r) {
                    const uint32_t c = m.hist[bl + g + r];
                    sb += static_cast<uint32_t>(bl >> 10) * c;
                    sg += static_cast<uint32_t>(g >> 4) * c;
                    sr += static_cast<uint32_t>(gray ? r : r * 4) * c;
                }
        if (gray) put(i, sr / b.count, sr / b.count, sr / b.count);
        else put(i, sb / b.count, sg / b.count, sr / b.count);
    }
    setUsed(static_cast<uint32_t>(n));
    return 1;
}

}  // namespace medcut

#endif
