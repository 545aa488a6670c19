#include "filter/blurtest.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "access/tiletest.h"

namespace blurtest {

namespace {

int elementBytes(unsigned int depth) { return static_cast<int>((depth & 0x7FFFFFFFu) >> 3); }

int32_t readElement(const unsigned char *p, unsigned int depth) {
    switch (depth) {
        case RMG_DEPTH_8U: return *p;
        case RMG_DEPTH_8S: return static_cast<signed char>(*p);
        case RMG_DEPTH_16U: {
            uint16_t v;
            std::memcpy(&v, p, 2);
            return v;
        }
        case RMG_DEPTH_16S: {
            int16_t v;
            std::memcpy(&v, p, 2);
            return v;
        }
        default: {
            int32_t v;
            std::memcpy(&v, p, 4);
            return v;
        }
    }
}

void writeElement(unsigned char *p, unsigned int depth, int32_t v) {
    const auto u = static_cast<uint32_t>(v);
    std::memcpy(p, &u, static_cast<size_t>(elementBytes(depth)));  // little-endian low bytes
}

struct Region {
    int x, y, cols, rows, first, last;
};

Region regionOf(const RmgImage *image) {
    const RmgROI *roi = image->roi;
    if (roi == nullptr) return {0, 0, image->width, image->height, 1, image->nChannels};
    const int cols = std::min(roi->width, image->width - roi->xOffset);
    const int rows = std::min(roi->height, image->height - roi->yOffset);
    const int first = roi->coi != 0 ? roi->coi : 1;
    const int last = roi->coi != 0 ? roi->coi : image->nChannels;
    return {roi->xOffset, roi->yOffset, cols, rows, first, last};
}

int32_t truncated(double v) {
    if (std::isnan(v) || v <= -2147483649.0 || v >= 2147483648.0) return INT32_MIN;
    return static_cast<int32_t>(v);
}

}  // namespace

float scaleOf(int nRows, int nCols) {
    const int64_t n = static_cast<int64_t>(nRows) * nCols;
    return n == 0 ? INFINITY : static_cast<float>(1.0 / static_cast<double>(n));
}

Bytes modelBlur(const RmgImage *src, const RmgImage *dst, const Bytes &dstBefore, const Box &box) {
    Bytes out = dstBefore;
    const Region s = regionOf(src);
    const Region d = regionOf(dst);
    const int cols = std::min(s.cols, d.cols);
    const int rows = std::min(s.rows, d.rows);
    const int first = std::max(s.first, d.first);
    const int last = std::min(s.last, d.last);
    if (cols <= 0 || rows <= 0 || first > last) return out;
    const int W = cols + box.nCols, H = rows + box.nRows;
    const tiletest::Block block =
        tiletest::modelExtended(src, s.x - box.anchorX, s.y - box.anchorY, W, H);
    const unsigned int depth = src->depth;
    const int eb = elementBytes(depth);
    const bool plane = src->dataOrder == RMG_DATA_PLANE;
    const auto at = [&](int ch, int r, int c) {
        const size_t off = plane ? size_t(ch - 1) * block.rowStep * H + size_t(r) * block.rowStep +
                                       size_t(c) * eb
                                 : size_t(r) * block.rowStep +
                                       (size_t(c) * src->nChannels + (ch - 1)) * eb;
        return readElement(&block.bytes[off], depth);
    };
    const double scale = scaleOf(box.nRows, box.nCols);
    const bool dplane = dst->dataOrder == RMG_DATA_PLANE;
    const int64_t rowE = dst->widthStep / eb;
    for (int ch = first; ch <= last; ++ch)
        for (int r = 0; r < rows; ++r)
            for (int c = 0; c < cols; ++c) {
                int32_t v;
                if (box.nRows == 1 && box.nCols == 1) {
                    v = at(ch, r, c);
                } else {
                    uint32_t sum = 0;
                    for (int i = 0; i < box.nRows; ++i)
                        for (int j = 0; j < box.nCols; ++j)
                            sum += static_cast<uint32_t>(at(ch, r + i, c + j));
                    v = truncated(static_cast<double>(static_cast<int32_t>(sum)) * scale);
                }
                const int64_t e =
                    dplane ? (ch - 1) * rowE * dst->height + (d.y + r) * rowE + (d.x + c)
                           : (d.y + r) * rowE + int64_t(d.x + c) * dst->nChannels + (ch - 1);
                if ((e + 1) * eb > dst->imageSize) continue;
                writeElement(&out[size_t(e * eb)], depth, v);
            }
    return out;
}

RmgImage *evenImage(unsigned int depth, int height, int width, int value) {
    RmgImage *image = mirrortest::makeImage({1, depth, RMG_DATA_PIXEL, 4}, height, width, 7);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) setElement(image, x, y, value);
    return image;
}

int32_t elementAt(const RmgImage *image, int x, int y) {
    const int eb = elementBytes(image->depth);
    return readElement(image->imageData + y * image->widthStep + x * eb, image->depth);
}

void setElement(RmgImage *image, int x, int y, int32_t value) {
    const int eb = elementBytes(image->depth);
    writeElement(image->imageData + y * image->widthStep + x * eb, image->depth, value);
}

}  // namespace blurtest
