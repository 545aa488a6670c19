// Bit reduction kernels: ownReduceBits, ownjitter_rect, own_dither_rect,
// rmgQuantize and the noise tables. Module owncolor, like the other colour
// kernels.
#include "color/ownreduce.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "color/ownreduce_impl.h"
#include "color/rmgcolor.h"
#include "core/rmgcpu.h"
#include "core/rmgint.h"
#include "core/rmgvalid.h"
#include "rmg.h"

// The three noise tables: the library-wide state of the reduction, filled
// anew by every call with noise.
double jitterNoise[1024];
double jitterSpare[1024];
int32_t jitterIndex[1024];

void rmgFillJitterTables() {
    for (double &v : jitterNoise) v = (std::rand() & 1023) * 0.0009765625;
    // Nothing reads this table; it is kept because filling it moves the
    // rand sequence on.
    for (double &v : jitterSpare) v = (std::rand() & 1023) * 0.0009765625;
    for (int32_t &v : jitterIndex) v = std::rand() & 1023;
}

int rmgQuantize(int v, int q) {
    if (v > 65535) return 65535;
    const int b = v != 0 ? (v / q) * q : 0;
    return v - b > (q >> 1) ? b + q : b;
}

namespace rmg {

constexpr ReduceForms kReduceScalar = {reduceRow32s16uScalar, reduceRow32s8uScalar,
                                       reduceRow16u8uScalar};

namespace {
constexpr FormTable<const ReduceForms *> kReduce = formTable<const ReduceForms *>(
    &kReduceScalar, RMG_FORM_SSE2(&kReduceSse2), RMG_FORM_AVX2(&kReduceAvx2), nullptr);
}  // namespace

const ReduceForms &reduceForms() { return *kReduce.get(); }

}  // namespace rmg

namespace {

constexpr char kModule[] = "owncolor";
using Byte = unsigned char;

enum class Pair { k32s16u, k32s8u, k16u8u, k8u1u, kNone };

// The depth pair of a reduction, or kNone after raising its failure.
Pair reducePair(const RmgImage *src, const RmgImage *dst, const char *name) {
    const unsigned int s = src->depth, d = dst->depth;
    if (s == RMG_DEPTH_32S) {
        if (d == RMG_DEPTH_16U) return Pair::k32s16u;
        if (d == RMG_DEPTH_8U) return Pair::k32s8u;
        rmgError(RMG_StsBadArg, name, "errInOutDepth", kModule, __LINE__);
    } else if (s == RMG_DEPTH_16U) {
        if (d == RMG_DEPTH_8U) return Pair::k16u8u;
        rmgError(RMG_StsBadArg, name, "errOutDepth", kModule, __LINE__);
    } else if (s == RMG_DEPTH_8U) {
        if (d == RMG_DEPTH_1U) return Pair::k8u1u;
        rmgError(RMG_StsBadArg, name, "errOutDepth", kModule, __LINE__);
    } else {
        rmgError(RMG_StsBadArg, name, "errInOutDepth", kModule, __LINE__);
    }
    return Pair::kNone;
}

// Elements of `size` bytes (0: bits) from offset `at` of a buffer of
// `bytes` bytes, of which at most n, that lie wholly inside it.
int64_t fitting(int64_t at, int size, int64_t bytes, int64_t n) {
    if (n <= 0 || at < 0 || at >= bytes) return 0;
    const int64_t fit = size == 0 ? (bytes - at) * 8 : (bytes - at) / size;
    return fit < n ? fit : n;
}

void putBit(Byte *row, int64_t i, bool set) {
    const Byte mask = static_cast<Byte>(0x80u >> (i & 7));
    Byte *p = row + (i >> 3);
    *p = static_cast<Byte>(set ? (*p | mask) : (*p & ~mask));
}

// One row of a piece: n elements (the first `fit` of them inside both
// buffers) at src and dst; x counts the elements of the row, y the rows.
using RowFn = void (*)(Byte *src, Byte *dst, int n, int step, int y, const void *ctx);

// The walk both kernels share: rows, and in plane order planes a row step
// times the piece's height apart, each row cut to the buffers.
void walkRows(const RmgImage *src, Pair pair, Byte *srcData, Byte *dstData, int srcStep,
              int height, int width, int dstStep, int64_t srcBytes, int64_t dstBytes, RowFn row,
              const void *ctx) {
    if (srcData == nullptr || dstData == nullptr || height <= 0 || width <= 0) return;
    const bool plane = src->dataOrder == RMG_DATA_PLANE;
    const int planes = plane ? src->nChannels : 1;
    const int step = plane ? 1 : src->nChannels;
    const int64_t count = plane ? width : static_cast<int64_t>(width) * src->nChannels;
    const int inSize = pair == Pair::k16u8u ? 2 : pair == Pair::k8u1u ? 1 : 4;
    const int outSize = pair == Pair::k32s16u ? 2 : pair == Pair::k8u1u ? 0 : 1;
    for (int p = 0; p < planes; ++p)
        for (int y = 0; y < height; ++y) {
            const int64_t s = (static_cast<int64_t>(p) * height + y) * srcStep;
            const int64_t d = (static_cast<int64_t>(p) * height + y) * dstStep;
            int64_t n = fitting(s, inSize, srcBytes, count);
            // A bit destination takes one bit for each step-th element.
            n = outSize == 0 ? step * fitting(d, 0, dstBytes, (n + step - 1) / step)
                             : fitting(d, outSize, dstBytes, n);
            if (n > count) n = count;
            if (n > 0) row(srcData + s, dstData + d, static_cast<int>(n), step, y, ctx);
        }
}

// ---------------------------------------------------------------------------
// Plain reduction
// ---------------------------------------------------------------------------

// 8u to 1u: every step-th element (the first channel of each pixel; a 1u
// image has one channel) gives the next bit.
void row8u1u(Byte *src, Byte *dst, int n, int step, int, const void *) {
    for (int i = 0; i < n; i += step) putBit(dst, i / step, src[i] > 127);
}

void plainRow(Byte *src, Byte *dst, int n, int step, int y, const void *ctx) {
    const Pair pair = *static_cast<const Pair *>(ctx);
    const rmg::ReduceForms &f = rmg::reduceForms();
    switch (pair) {
    case Pair::k32s16u: f.row32s16u(src, dst, n); break;
    case Pair::k32s8u: f.row32s8u(src, dst, n); break;
    case Pair::k16u8u: f.row16u8u(src, dst, n); break;
    default: row8u1u(src, dst, n, step, y, nullptr); break;
    }
}

// ---------------------------------------------------------------------------
// Reduction with noise
// ---------------------------------------------------------------------------

struct JitterCtx {
    Pair pair;
    int j;
};

// Truncation of the noise terms; they are small and never NaN.
int truncSmall(double v) { return static_cast<int>(v); }

bool firstStep(int low, int x, int y) {
    const int i1 = (x + 4 * y + jitterIndex[x & 1023]) & 1023;
    return low <= truncSmall(9.0 * jitterNoise[i1]);
}
int noiseSteps(int x, int y, int j) {
    const int i2 = (y + 4 * x + jitterIndex[y & 1023]) & 1023;
    return truncSmall(2.0 * j * jitterNoise[i2] + 0.5) - j;
}

// An unsigned element e (8 or 16 bits) with its limit, low mask and step.
uint32_t jitterUnsigned(uint32_t e, uint32_t limit, uint32_t lowMask, int u, uint32_t max, int x,
                        int y, int j) {
    if (e >= limit) return e;
    if (firstStep(static_cast<int>(e & lowMask), x, y)) e += static_cast<uint32_t>(u);
    const int64_t e2 = static_cast<int64_t>(e) + static_cast<int64_t>(noiseSteps(x, y, j)) * u;
    if (e2 >= 0 && e2 <= static_cast<int64_t>(max)) e = static_cast<uint32_t>(e2);
    return e;
}
// A signed element: both branches of the first step store e as it stands,
// so it has no effect and isn't computed; the sum wraps in 32 bits, and a
// negative one is refused.
int32_t jitterSigned(int32_t e, int32_t limit, int32_t u, int x, int y, int j) {
    if (e >= limit) return e;
    const int32_t e2 = rmg::add32(e, rmg::mul32(noiseSteps(x, y, j), u));
    return e2 >= 0 ? e2 : e;
}

void jitterRow(Byte *src, Byte *dst, int n, int step, int y, const void *ctx) {
    const auto *c = static_cast<const JitterCtx *>(ctx);
    const int j = c->j;
    switch (c->pair) {
    case Pair::k8u1u:
        for (int x = 0; x < n; x += step) {
            src[x] = static_cast<Byte>(jitterUnsigned(src[x], 239, 15, 16, 255, x, y, j));
            putBit(dst, x / step, src[x] > 127);
        }
        break;
    case Pair::k16u8u:
        for (int x = n - 1; x >= 0; --x) {
            uint16_t e;
            std::memcpy(&e, src + 2 * x, 2);
            e = static_cast<uint16_t>(jitterUnsigned(e, 65279, 255, 256, 65535, x, y, j));
            std::memcpy(src + 2 * x, &e, 2);
            dst[x] = static_cast<Byte>(e >> 8);
        }
        break;
    case Pair::k32s16u:
    case Pair::k32s8u: {
        const bool to16 = c->pair == Pair::k32s16u;
        for (int x = n - 1; x >= 0; --x) {
            int32_t e;
            std::memcpy(&e, src + 4 * x, 4);
            e = to16 ? jitterSigned(e, 0x7FFEFFFF, 65536, x, y, j)
                     : jitterSigned(e, 0x7EFFFFFF, 16777216, x, y, j);
            std::memcpy(src + 4 * x, &e, 4);
            if (to16) {
                const auto v = static_cast<uint16_t>(e >> 15);
                std::memcpy(dst + 2 * x, &v, 2);
            } else {
                dst[x] = static_cast<Byte>(e >> 23);
            }
        }
        break;
    }
    default: break;
    }
}

// ---------------------------------------------------------------------------
// Dither
// ---------------------------------------------------------------------------

// One channel of a piece: elements `size` bytes wide, `step` elements apart
// along a row, rows rowStep bytes apart; `bytes` usable from base on.
struct Channel {
    Byte *base;
    int64_t bytes;
    int size, step, rowStep;

    Byte *at(int x, int y) const {
        const int64_t o = static_cast<int64_t>(y) * rowStep + static_cast<int64_t>(x) * step * size;
        return o >= 0 && o + size <= bytes ? base + o : nullptr;
    }
    static int get(const Byte *p, int size) {
        if (size == 1) return *p;
        uint16_t v;
        std::memcpy(&v, p, 2);
        return v;
    }
    static void put(Byte *p, int size, uint32_t v) {
        if (size == 1) {
            *p = static_cast<Byte>(v);
        } else {
            const auto w = static_cast<uint16_t>(v);
            std::memcpy(p, &w, 2);
        }
    }
    // Adds to the element at x, y in its width, wrapping; outside the
    // buffer nothing happens.
    void add(int x, int y, int32_t v) const {
        if (Byte *p = at(x, y)) put(p, size, static_cast<uint32_t>(get(p, size)) + static_cast<uint32_t>(v));
    }
    // Quantises the element at x, y and gives its error (0 outside).
    int32_t quantize(int x, int y, int q) const {
        Byte *p = at(x, y);
        if (p == nullptr) return 0;
        const int old = get(p, size);
        const int e = rmgQuantize(old, q);
        put(p, size, static_cast<uint32_t>(e));
        return old - e;
    }
};

// Arithmetic shift right of a signed product.
int32_t asr(int32_t v, int n) { return v >= 0 ? v >> n : -((-v - 1) >> n) - 1; }

// The channels of one dither call (one for gray, three for colour),
// worked position by position, each with its own error.
struct Channels {
    Channel c[3];
    int n;
};

void floydSteinberg(const Channels &cs, int width, int height, int q, bool lastRow,
                    bool lastColumn) {
    int y = 0;
    for (; y < height - 1; ++y) {
        int x = 0;
        for (; x < width - 1; ++x)
            for (int k = 0; k < cs.n; ++k) {
                const Channel &c = cs.c[k];
                const int32_t err = c.quantize(x, y, q);
                c.add(x + 1, y, asr(err * 7, 4));
                c.add(x, y + 1, asr(err * 5, 4));
                c.add(x + 1, y + 1, asr(err, 4));
                if (x > 0) c.add(x - 1, y + 1, asr(err * 3, 4));
            }
        if (lastColumn)
            for (int k = 0; k < cs.n; ++k) {
                const Channel &c = cs.c[k];
                const int32_t err = c.quantize(x, y, q);
                c.add(x, y + 1, asr(err * 5, 4));
                if (x > 0) c.add(x - 1, y + 1, asr(err * 3, 4));
            }
    }
    if (lastRow)
        for (int x = 0; x < width; ++x)
            for (int k = 0; k < cs.n; ++k) {
                const int32_t err = cs.c[k].quantize(x, y, q);
                if (x + 1 < width) cs.c[k].add(x + 1, y, asr(err * 7, 4));
            }
}

constexpr uint16_t kJjn8[12] = {37, 26, 15, 26, 37, 26, 15, 5, 15, 26, 15, 5};
constexpr uint16_t kStucki8[12] = {48, 24, 12, 24, 48, 24, 12, 6, 12, 24, 12, 6};
constexpr uint16_t kJjn16[12] = {0x2555, 0x1AAA, 0x0FFF, 0x1AAA, 0x2555, 0x1AAA,
                                 0x0FFF, 0x0555, 0x0FFF, 0x1AAA, 0x0FFF, 0x0555};
constexpr uint16_t kStucki16[12] = {0x30C2, 0x1861, 0x0C30, 0x1861, 0x30C2, 0x1861,
                                    0x0C30, 0x0618, 0x0C30, 0x1861, 0x0C30, 0x0618};

// Jarvis-Judice-Ninke and Stucki: the products aren't scaled back, each
// neighbour keeps the low bits of its value plus weight times error. Near
// the left edge the weights of a row start at its first column present.
void diffuse(const Channels &cs, const uint16_t *w, int width, int height, int q, bool lastRow,
             bool lastColumn) {
    const int rows = lastRow ? height : height - 2;
    const int columns = lastColumn ? width : width - 2;
    for (int y = 0; y < rows; ++y)
        for (int x = 0; x < columns; ++x)
            for (int k = 0; k < cs.n; ++k) {
                const Channel &c = cs.c[k];
                const int32_t err = c.quantize(x, y, q);
                const int r = width - x < 4 ? width - x - 1 : 2;
                for (int i = 0; i < r; ++i) c.add(x + 1 + i, y, rmg::mul32(w[i], err));
                const int l = x < 2 ? x : 2;
                if (y + 1 < height)
                    for (int i = 0; i <= r + l; ++i) c.add(x - l + i, y + 1, rmg::mul32(w[2 + i], err));
                if (y + 2 < height)
                    for (int i = 0; i <= r + l; ++i) c.add(x - l + i, y + 2, rmg::mul32(w[7 + i], err));
            }
}

constexpr Byte kBayer[16] = {0, 120, 30, 150, 180, 60, 210, 90, 45, 165, 15, 135, 225, 105, 195, 75};

// Ordered: the entry of x and 3, y and 3 (in 16-bit images the byte twice);
// the result keeps its low 8 bits at both depths.
void ordered(const Channels &cs, int width, int height, int q) {
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            for (int k = 0; k < cs.n; ++k) {
                const Channel &c = cs.c[k];
                Byte *p = c.at(x, y);
                if (p == nullptr) continue;
                const int v = Channel::get(p, c.size);
                const int64_t entry = kBayer[(x & 3) * 4 + (y & 3)];
                const int64_t t = c.size == 1 ? entry : entry * 0x101;
                const int b = v != 0 ? (v / q) * q : 0;
                const int r = v - b > t * q ? b + q : b;
                Channel::put(p, c.size, static_cast<uint32_t>(r & 0xFF));
            }
}

void ditherChannels(const Channels &cs, int dither, int width, int height, int q, bool lastRow,
                    bool lastColumn) {
    const bool wide = cs.c[0].size == 2;
    switch (dither) {
    case RMG_DITHER_FS: floydSteinberg(cs, width, height, q, lastRow, lastColumn); break;
    case RMG_DITHER_JJN:
        diffuse(cs, wide ? kJjn16 : kJjn8, width, height, q, lastRow, lastColumn);
        break;
    case RMG_DITHER_STUCKI:
        diffuse(cs, wide ? kStucki16 : kStucki8, width, height, q, lastRow, lastColumn);
        break;
    default: ordered(cs, width, height, q); break;
    }
}

}  // namespace

void ownReduceBits(const RmgImage *src, const RmgImage *dst, const unsigned char *srcData,
                   unsigned char *dstData, int srcStep, int height, int width, int dstStep,
                   int64_t srcBytes, int64_t dstBytes) {
    const Pair pair = reducePair(src, dst, "ownReduceBits");
    if (pair == Pair::kNone) return;
    // The rows are read only.
    walkRows(src, pair, const_cast<Byte *>(srcData), dstData, srcStep, height, width, dstStep,
             srcBytes, dstBytes, plainRow, &pair);
}

void ownjitter_rect(const RmgImage *src, const RmgImage *dst, unsigned char *srcData,
                    unsigned char *dstData, int srcStep, int height, int width, int dstStep,
                    int jitterType, int64_t srcBytes, int64_t dstBytes) {
    const Pair pair = reducePair(src, dst, "ownjitter_rect");
    if (pair == Pair::kNone) return;
    const JitterCtx ctx{pair, jitterType};
    walkRows(src, pair, srcData, dstData, srcStep, height, width, dstStep, srcBytes, dstBytes,
             jitterRow, &ctx);
}

void own_dither_rect(const RmgImage *image, int dither, unsigned char *data, int width,
                     int height, int rowStep, int levelShift, int lastRow, int lastColumn,
                     int64_t bytes) {
    if (dither != RMG_DITHER_FS && dither != RMG_DITHER_JJN && dither != RMG_DITHER_STUCKI &&
        dither != RMG_DITHER_BAYER) {
        rmgError(RMG_StsBadArg, "own_dither_rect", "errDitherOption", kModule, __LINE__);
        return;
    }
    if (image->depth != RMG_DEPTH_8U && image->depth != RMG_DEPTH_16U) {
        rmgError(RMG_StsBadArg, "own_dither_rect", "errInDepth", kModule, __LINE__);
        return;
    }
    // A piece without pixels has nothing to quantise (the last-column step
    // would otherwise touch an element outside the piece).
    if (data == nullptr || width <= 0 || height <= 0) return;
    const int size = image->depth == RMG_DEPTH_8U ? 1 : 2;
    int q = (size == 1 ? 255 : 65535) >> levelShift;
    if (q == 0) q = 1;
    const int step = image->dataOrder == RMG_DATA_PLANE ? 1 : image->nChannels;
    Channels cs{};
    if (image->channelSeq[0] == 'G') {
        cs.c[0] = Channel{data, bytes, size, step, rowStep};
        cs.n = 1;
    } else {
        unsigned char *ch[3] = {nullptr, nullptr, nullptr};
        rmgChannelPointers(image, rowStep, height, data, &ch[0], &ch[1], &ch[2]);
        for (unsigned char *p : ch)
            if (p != nullptr)  // a letter no channel carries is left out
                cs.c[cs.n++] = Channel{p, bytes - (p - data), size, step, rowStep};
    }
    ditherChannels(cs, dither, width, height, q, lastRow != 0, lastColumn != 0);
}
