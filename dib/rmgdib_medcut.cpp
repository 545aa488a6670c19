// Median-cut palette: colours reduced to 6 bits a channel in a full
// histogram (gray: 256 levels), boxes split breadth-first a generation at a
// time at the point nearest half the box's pixels, and each entry the
// weighted mean of its box.
#include "dib/rmgdib_medcut.h"

#include <cstdint>
#include <cstring>

namespace {

constexpr int kGrayBins = 256;
constexpr int kColourBins = 64 * 64 * 64;
constexpr int32_t kSingleBin = 255;  // state of a box that can't be split

// Eight 32-bit words. In colour, red holds bin indices 0..63, green bin
// offsets 0..4032 by 64, blue 0..258048 by 4096; gray uses red only.
struct Box {
    int32_t state;
    int32_t redLo, redHi;
    int32_t greenLo, greenHi;
    int32_t blueLo, blueHi;
    uint32_t count;
};
static_assert(sizeof(Box) == 32, "a box is eight words");

// ---- histograms ---------------------------------------------------------

// Counts the samples of `height` rows of `width` pixels, kStep bytes apart
// (0: `pixStep` at run time).
template <int kStep>
void countGray(const uint8_t *base, int64_t pixStep, int64_t rowStep, int width, int height,
               uint32_t *hist) {
    const int64_t step = kStep != 0 ? kStep : pixStep;
    for (int y = 0; y < height; ++y) {
        const uint8_t *p = base + rowStep * y;
        for (int x = 0; x < width; ++x, p += step) ++hist[*p];
    }
}

// The colour counting pass, the main cost of the palette: one increment per
// pixel of the bin (blue >> 2) * 4096 + (green >> 2) * 64 + (red >> 2).
// Two ways round the wait of an increment for the store of the one before
// (neighbours of a smooth picture share bins) were tried and left out:
// counting runs of one bin in a register (smooth pictures with a little
// noise change bins often enough that its branch cost more than it saved),
// and a second histogram for the odd pixels (on 3840x2160 smooth 9.5 to
// 8.4 ms, random 12.5 to 14.5 ms: the larger footprint misses more).
template <int kStep>
void countColour(const uint8_t *base, int64_t redOff, int64_t greenOff, int64_t blueOff,
                 int64_t pixStep, int64_t rowStep, int width, int height, uint32_t *hist) {
    const int64_t step = kStep != 0 ? kStep : pixStep;
    for (int y = 0; y < height; ++y) {
        const uint8_t *r = base + rowStep * y + redOff;
        const uint8_t *g = base + rowStep * y + greenOff;
        const uint8_t *b = base + rowStep * y + blueOff;
        for (int x = 0; x < width; ++x) {
            const uint32_t bin = (static_cast<uint32_t>(b[0] >> 2) << 12) |
                                 (static_cast<uint32_t>(g[0] >> 2) << 6) |
                                 static_cast<uint32_t>(r[0] >> 2);
            ++hist[bin];
            r += step;
            g += step;
            b += step;
        }
    }
}

uint32_t nonEmptyBins(const uint32_t *hist, int bins) {
    uint32_t d = 0;
    for (int i = 0; i < bins; ++i) d += hist[i] != 0 ? 1u : 0u;
    return d;
}

void writeEntry(uint8_t *table, int i, uint32_t blue, uint32_t green, uint32_t red) {
    uint8_t *e = table + 4 * static_cast<int64_t>(i);
    e[0] = static_cast<uint8_t>(blue);
    e[1] = static_cast<uint8_t>(green);
    e[2] = static_cast<uint8_t>(red);
    e[3] = 0;
}

// ---- gray path -----------------------------------------------------------

void splitGray(Box &old, Box &fresh, const uint32_t *hist) {
    const uint32_t half = old.count >> 1;
    uint32_t acc = 0, prev = 0;
    int32_t s = old.redLo;
    for (; s <= old.redHi; ++s) {
        prev = acc;
        acc += hist[s];
        if (acc > half) break;
    }
    // With the box's count equal to the sum of its bins the walk always
    // passes half before its end; should it not, the last bin is kept so
    // that no range leaves the histogram.
    if (s > old.redHi) s = old.redHi;
    if (half - prev < acc - half) {
        acc = prev;
        --s;
    }
    fresh.redLo = s + 1;
    fresh.redHi = old.redHi;
    fresh.count = old.count - acc;
    old.redHi = s;
    old.count = acc;
    while (old.redHi > old.redLo && hist[old.redHi] == 0) --old.redHi;
    while (fresh.redLo < fresh.redHi && hist[fresh.redLo] == 0) ++fresh.redLo;
    fresh.greenLo = fresh.greenHi = fresh.blueLo = fresh.blueHi = 0;
    if (fresh.redLo != fresh.redHi) {
        ++old.state;
        fresh.state = old.state;
    } else {
        fresh.state = kSingleBin;
    }
    if (old.redLo == old.redHi) old.state = kSingleBin;
}

// ---- colour path ---------------------------------------------------------

constexpr int32_t kAxisStep[3] = {1, 64, 4096};

int32_t &axisLo(Box &b, int axis) {
    return axis == 0 ? b.redLo : axis == 1 ? b.greenLo : b.blueLo;
}
int32_t &axisHi(Box &b, int axis) {
    return axis == 0 ? b.redHi : axis == 1 ? b.greenHi : b.blueHi;
}

// Moves each range of the box in to the first and last planes that hold a
// non-empty bin. Each axis's search looks within the ranges the earlier
// axes already shrank, and a shrink never drops a non-empty bin, so every
// axis ends at the bounds of the same set of bins whatever the order of
// the axes: one pass over the box finds them all. A box with no pixel at
// all is left unchanged.
void rmgShrinkBox(Box &b, const uint32_t *hist) {
    int32_t redLo = 64, redHi = -1, greenLo = 4096, greenHi = -1, blueLo = 262144, blueHi = -1;
    for (int32_t blue = b.blueLo; blue <= b.blueHi; blue += 4096)
        for (int32_t green = b.greenLo; green <= b.greenHi; green += 64) {
            const uint32_t *row = hist + blue + green;
            int32_t first = b.redLo;
            while (first <= b.redHi && row[first] == 0) ++first;
            if (first > b.redHi) continue;
            int32_t last = b.redHi;
            while (row[last] == 0) --last;
            if (first < redLo) redLo = first;
            if (last > redHi) redHi = last;
            if (green < greenLo) greenLo = green;
            if (green > greenHi) greenHi = green;
            if (blue < blueLo) blueLo = blue;
            blueHi = blue;
        }
    if (redHi < 0) return;
    b.redLo = redLo;
    b.redHi = redHi;
    b.greenLo = greenLo;
    b.greenHi = greenHi;
    b.blueLo = blueLo;
    b.blueHi = blueHi;
}

// The sums of the box's planes along an axis, planes[k] for the plane k
// steps above the axis's Lo: one pass over the box's bins.
void planeSums(const Box &b, int axis, const uint32_t *hist, uint32_t *planes) {
    for (int32_t blue = b.blueLo; blue <= b.blueHi; blue += 4096)
        for (int32_t green = b.greenLo; green <= b.greenHi; green += 64) {
            const uint32_t *row = hist + blue + green;
            if (axis == 0) {
                for (int32_t red = b.redLo; red <= b.redHi; ++red) planes[red - b.redLo] += row[red];
                continue;
            }
            uint32_t sum = 0;
            for (int32_t red = b.redLo; red <= b.redHi; ++red) sum += row[red];
            if (axis == 1) planes[(green - b.greenLo) >> 6] += sum;
            else planes[(blue - b.blueLo) >> 12] += sum;
        }
}

bool isSingleBin(const Box &b) {
    return b.redLo == b.redHi && b.greenLo == b.greenHi && b.blueLo == b.blueHi;
}

void splitColour(Box &old, Box &fresh, const uint32_t *hist) {
    const int32_t redRange = old.redHi - old.redLo;
    const int32_t greenRange = (old.greenHi - old.greenLo) >> 6;
    const int32_t blueRange = (old.blueHi - old.blueLo) >> 12;
    const int axis = (redRange >= greenRange && redRange >= blueRange) ? 0
                     : greenRange >= blueRange                        ? 1
                                                                      : 2;
    const int32_t step = kAxisStep[axis];
    const int32_t lo = axisLo(old, axis), hi = axisHi(old, axis);

    // The sums of the box's planes along the axis, one pass over its bins.
    uint32_t planes[64] = {};
    planeSums(old, axis, hist, planes);

    const uint32_t half = old.count >> 1;
    uint32_t acc = 0, prev = 0;
    int32_t s = lo;
    bool passed = false;
    for (; s <= hi; s += step) {
        prev = acc;
        acc += planes[(s - lo) >> (axis * 6)];
        if (acc > half) {
            passed = true;
            break;
        }
    }
    if (passed) {
        if (half - prev < acc - half) {
            acc = prev;
            s -= step;
        }
    } else {
        // The walk can't end without passing half while the count is the
        // sum of the box's bins; were it to, the last plane is kept (rather
        // than one plane past it) so that no range leaves the histogram.
        s = hi;
    }

    fresh = old;
    axisLo(fresh, axis) = s + step;
    axisHi(old, axis) = s;
    rmgShrinkBox(fresh, hist);
    rmgShrinkBox(old, hist);

    if (isSingleBin(old)) old.state = kSingleBin;
    else ++old.state;
    fresh.state = isSingleBin(fresh) ? kSingleBin : old.state;
    fresh.count = old.count - acc;
    old.count = acc;
}

// Splits a generation at a time until p boxes exist. A pass with no live
// box would repeat for ever without effect; it ends the loop instead, and
// the boxes made so far are the palette. Gives the number of boxes.
template <typename Split>
int splitGenerations(Box *boxes, int p, Split split) {
    int n = 1;
    while (n < p) {
        const int last = n - 1;
        bool splitOne = false;
        for (int i = 0; i <= last; ++i) {
            if (boxes[i].state == kSingleBin) continue;
            if (n >= p) break;
            split(boxes[i], boxes[n]);
            ++n;
            splitOne = true;
        }
        if (!splitOne) break;
    }
    return n;
}

// The pixel layout the palette reads: a sample byte's offsets and steps.
struct Layout {
    const uint8_t *base;
    int64_t pixStep, rowStep;
    int64_t redOff, greenOff, blueOff;  // colour only
};

// True when every sample the counting pass reads lies within the image's
// imageSize bytes, rows not overlapping. A header that describes pixels
// beyond its buffer is refused rather than read past; with rows apart the
// pixel count stays below 2^31, so no counter or box count wraps and no
// box is left with a count of 0 to divide by.
bool samplesInside(const RmgImage *image, const Layout &l, int64_t channelSpan) {
    if (image->width <= 0 || image->height <= 0) return true;
    if (image->widthStep <= 0 || l.pixStep * image->width > image->widthStep) return false;
    const int64_t last = (l.base - image->imageData) + channelSpan +
                         l.rowStep * (image->height - 1) + l.pixStep * (image->width - 1);
    return last < static_cast<int64_t>(image->imageSize);
}

// The frame of both paths: the histogram of `bins` counters that count()
// fills, the direct table when no more than p bins are used (binEntry
// writes a bin's entry), otherwise the first box (firstBox), the
// generations of split() and the table of boxMean.
template <typename Count, typename BinEntry, typename FirstBox, typename Split,
          typename BoxMean>
int runPalette(BITMAPINFOHEADER *dib, int p, int bins, uint32_t boxCount, Count count,
               BinEntry binEntry, FirstBox firstBox, Split split, BoxMean boxMean) {
    auto *hist = static_cast<uint32_t *>(rmgAlloc32(bins));
    if (hist == nullptr) return 0;
    std::memset(hist, 0, sizeof(uint32_t) * static_cast<size_t>(bins));
    count(hist);

    uint8_t *table = reinterpret_cast<uint8_t *>(dib) + dib->biSize;
    const uint32_t d = nonEmptyBins(hist, bins);
    if (d <= static_cast<uint32_t>(p)) {
        int i = 0;
        for (uint32_t bin = 0; bin < static_cast<uint32_t>(bins); ++bin)
            if (hist[bin] != 0) binEntry(table, i++, bin);
        dib->biClrUsed = d;
        rmgFree(hist);
        return 1;
    }
    auto *boxes = static_cast<Box *>(rmgAlloc32(8 * p));
    if (boxes == nullptr) {
        rmgFree(hist);
        return 0;
    }
    std::memset(&boxes[0], 0, sizeof(Box));
    boxes[0].count = boxCount;
    firstBox(boxes[0], hist);
    const int n = splitGenerations(boxes, p, [hist, split](Box &old, Box &fresh) {
        split(old, fresh, hist);
    });
    for (int i = 0; i < n; ++i) boxMean(table, i, boxes[i], hist);
    dib->biClrUsed = static_cast<uint32_t>(n);
    rmgFree(boxes);
    rmgFree(hist);
    return 1;
}

int grayPalette(BITMAPINFOHEADER *dib, const RmgImage *image, int p, const Layout &l) {
    if (!samplesInside(image, l, 0)) return 0;
    const int w = image->width, h = image->height;
    return runPalette(
        dib, p, kGrayBins, static_cast<uint32_t>(w) * static_cast<uint32_t>(h),
        [&](uint32_t *hist) {
            if (l.pixStep == 1) countGray<1>(l.base, 1, l.rowStep, w, h, hist);
            else countGray<0>(l.base, l.pixStep, l.rowStep, w, h, hist);
        },
        [](uint8_t *table, int i, uint32_t v) { writeEntry(table, i, v, v, v); },
        [](Box &first, const uint32_t *hist) {
            first.redLo = 0;
            while (hist[first.redLo] == 0) ++first.redLo;
            first.redHi = kGrayBins - 1;
            while (hist[first.redHi] == 0) --first.redHi;
        },
        splitGray,
        [](uint8_t *table, int i, const Box &box, const uint32_t *hist) {
            uint32_t sum = 0;
            for (int32_t v = box.redLo; v <= box.redHi; ++v)
                sum += static_cast<uint32_t>(v) * hist[v];
            const uint32_t mean = sum / box.count;
            writeEntry(table, i, mean, mean, mean);
        });
}

int colourPalette(BITMAPINFOHEADER *dib, const RmgImage *image, int p, const Layout &l) {
    const int64_t span = l.redOff > l.blueOff ? l.redOff : l.blueOff;
    if (!samplesInside(image, l, span)) return 0;
    const int w = image->width, h = image->height;
    return runPalette(
        dib, p, kColourBins, static_cast<uint32_t>(w) * static_cast<uint32_t>(h),
        [&](uint32_t *hist) {
            const int64_t r = l.redOff, g = l.greenOff, b = l.blueOff;
            if (l.pixStep == 3) countColour<3>(l.base, r, g, b, 3, l.rowStep, w, h, hist);
            else if (l.pixStep == 4) countColour<4>(l.base, r, g, b, 4, l.rowStep, w, h, hist);
            else countColour<0>(l.base, r, g, b, l.pixStep, l.rowStep, w, h, hist);
        },
        // The quantised values themselves: blue and green with their two
        // low bits clear, red the index times 4.
        [](uint8_t *table, int i, uint32_t bin) {
            writeEntry(table, i, (bin >> 10) & ~3u, (bin >> 4) & ~3u, (bin & 63u) * 4);
        },
        [](Box &first, const uint32_t *hist) {
            first.redHi = 63;
            first.greenHi = 4032;
            first.blueHi = 258048;
            rmgShrinkBox(first, hist);
        },
        splitColour,
        [](uint8_t *table, int i, const Box &box, const uint32_t *hist) {
            // Sums of 32-bit words, wrapping: a row's counts are gathered
            // first, which gives the same words as bin by bin.
            uint32_t blue = 0, green = 0, red = 0;
            for (int32_t b = box.blueLo; b <= box.blueHi; b += 4096)
                for (int32_t g = box.greenLo; g <= box.greenHi; g += 64) {
                    const uint32_t *row = hist + b + g;
                    uint32_t rowCount = 0, rowRed = 0;
                    for (int32_t r = box.redLo; r <= box.redHi; ++r) {
                        rowCount += row[r];
                        rowRed += static_cast<uint32_t>(r * 4) * row[r];
                    }
                    blue += static_cast<uint32_t>(b >> 10) * rowCount;
                    green += static_cast<uint32_t>(g >> 4) * rowCount;
                    red += rowRed;
                }
            writeEntry(table, i, blue / box.count, green / box.count, red / box.count);
        });
}

}  // namespace

int rmgMedianCutPalette(BITMAPINFOHEADER *dib, const RmgImage *image) {
    // Null arguments have nothing to read or fill: failure.
    if (dib == nullptr || image == nullptr) return 0;
    if (dib->biBitCount > 8) return 0;
    const int p = 1 << dib->biBitCount;
    uint8_t *table = reinterpret_cast<uint8_t *>(dib) + dib->biSize;
    if (image->depth == RMG_DEPTH_1U) {
        writeEntry(table, 0, 0, 0, 0);
        writeEntry(table, 1, 255, 255, 255);
        dib->biClrUsed = 2;
        return 1;
    }
    // Samples are the bytes at imageData + depth / 16 with steps of depth /
    // 8. Only depths 8 and 16 give offsets inside the pixels: with the sign
    // bit of the signed depths they would lie gigabytes away, so those
    // depths fail. An image without pixels in memory (tiled) fails too.
    if (image->depth != RMG_DEPTH_8U && image->depth != RMG_DEPTH_16U) return 0;
    if (image->imageData == nullptr) return 0;
    const int64_t bytes = image->depth / 8;
    Layout l{};
    l.base = image->imageData + image->depth / 16;
    l.rowStep = image->widthStep;
    if (image->nChannels == 1) {
        l.pixStep = bytes;
        return grayPalette(dib, image, p, l);
    }
    if (image->nChannels != 3 && image->nChannels != 4) return 0;
    int64_t chanStep;
    if (image->dataOrder == RMG_DATA_PIXEL) {
        l.pixStep = image->nChannels * bytes;
        chanStep = bytes;
    } else {
        l.pixStep = bytes;
        chanStep = static_cast<int64_t>(image->widthStep) * image->height;
    }
    if (std::memcmp(image->channelSeq, "BGR", 4) == 0 ||
        std::memcmp(image->channelSeq, "BGRA", 4) == 0) {
        l.blueOff = 0;
        l.greenOff = chanStep;
        l.redOff = 2 * chanStep;
    } else if (std::memcmp(image->channelSeq, "RGB", 4) == 0 ||
               std::memcmp(image->channelSeq, "RGBA", 4) == 0) {
        l.redOff = 0;
        l.greenOff = chanStep;
        l.blueOff = 2 * chanStep;
    } else {
        return 0;
    }
    return colourPalette(dib, image, p, l);
}
