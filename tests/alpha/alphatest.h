// Test images of the alpha composition tests: an image in memory whose
// pixels are a block of exactly imageSize bytes (so the address sanitizer
// sees any access beyond it), with its own ROI record, and the sample
// access of the per-element models, worked out here from the layout and not
// taken from the library.
#ifndef RMG_TESTS_ALPHA_ALPHATEST_H
#define RMG_TESTS_ALPHA_ALPHATEST_H

#include <cstdint>
#include <random>
#include <vector>

#include "rmg.h"

namespace alphatest {

inline int sampleBytes(unsigned int depth) { return depth == RMG_DEPTH_16U ? 2 : 1; }

// Bytes of a row: the row's samples rounded up to `align`.
inline int rowBytes(int nChannels, unsigned int depth, int dataOrder, int align, int width) {
    const int samples = dataOrder == RMG_DATA_PIXEL ? width * nChannels : width;
    const int bytes = samples * sampleBytes(depth);
    return (bytes + align - 1) / align * align;
}

class Image {
public:
    Image(int nChannels, int alphaChannel, unsigned int depth, int dataOrder, int align,
          int height, int width, uint8_t fill = 0xEE)
        : image(rmgCreateImageHeader(nChannels, alphaChannel, depth, "RGB", "BGR", dataOrder,
                                     RMG_ORIGIN_TL, align, height, width, nullptr, nullptr,
                                     nullptr)) {
        pixels_.assign(static_cast<size_t>(image->imageSize), fill);
        image->imageData = pixels_.data();
    }
    ~Image() { rmgDeallocate(image, RMG_DEALLOC_HEADER); }
    Image(const Image &) = delete;
    Image &operator=(const Image &) = delete;

    void setRoi(int coi, int xOffset, int yOffset, int height, int width) {
        roi = RmgROI{coi, xOffset, yOffset, height, width};
        image->roi = &roi;
    }
    void clearRoi() { image->roi = nullptr; }
    std::vector<uint8_t> bytes() const { return pixels_; }
    // A new block of exactly from.size() bytes (a plain assignment would
    // keep the old capacity, which the address sanitizer doesn't guard).
    void setBytes(const std::vector<uint8_t> &from) {
        pixels_ = std::vector<uint8_t>(from.begin(), from.end());
        image->imageData = pixels_.data();
    }
    void randomize(std::mt19937 &rng) {
        for (uint8_t &b : pixels_) b = static_cast<uint8_t>(rng());
    }

    // Byte index of sample (x, y) of channel ch (0-based), in image
    // coordinates.
    size_t at(int x, int y, int ch) const {
        const int step = rowBytes(image->nChannels, image->depth, image->dataOrder, image->align,
                                  image->width);
        const int size = sampleBytes(image->depth);
        if (image->dataOrder == RMG_DATA_PIXEL)
            return static_cast<size_t>(y * step + (x * image->nChannels + ch) * size);
        return static_cast<size_t>((ch * image->height + y) * step + x * size);
    }

    RmgImage *image;
    RmgROI roi{0, 0, 0, 0, 0};

private:
    std::vector<uint8_t> pixels_;
};

// A sample of a byte block laid out as `image`: little-endian at 16 bits.
inline int getSample(const Image &img, const std::vector<uint8_t> &bytes, int x, int y, int ch) {
    const size_t i = img.at(x, y, ch);
    if (img.image->depth == RMG_DEPTH_16U) return bytes[i] | (bytes[i + 1] << 8);
    return bytes[i];
}

inline void putSample(const Image &img, std::vector<uint8_t> &bytes, int x, int y, int ch, int v) {
    const size_t i = img.at(x, y, ch);
    bytes[i] = static_cast<uint8_t>(v);
    if (img.image->depth == RMG_DEPTH_16U) bytes[i + 1] = static_cast<uint8_t>(v >> 8);
}

inline void put(Image &img, int x, int y, int ch, int v) {
    std::vector<uint8_t> b = img.bytes();
    putSample(img, b, x, y, ch, v);
    img.setBytes(b);
}

}  // namespace alphatest

#endif
