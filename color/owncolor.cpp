// Gray conversion kernels: ownColorToGray and ownGrayToColor, the weights
// of a call, and the scalar row kernels (the ones with vector forms are in
// color/owncolor_impl.h).
#include "color/owncolor.h"

#include <climits>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "color/owncolor_impl.h"
#include "color/rmgcolor.h"
#include "core/rmgcpu.h"
#include "core/rmgint.h"
#include "rmg.h"

namespace rmg {

constexpr ColorForms kColorScalar = {grayRow8u8uScalar,      grayRow8u16uScalar,
                                     grayRow16u16uScalar,    grayRow16u8uPixelScalar,
                                     grayRow16u8uPlaneScalar, spreadRow8uScalar,
                                     spreadRow16uScalar};

namespace {
constexpr FormTable<const ColorForms *> kColor = formTable<const ColorForms *>(
    &kColorScalar, RMG_FORM_SSE2(&kColorSse2), RMG_FORM_AVX2(&kColorAvx2), nullptr);
}  // namespace

const ColorForms &colorForms() { return *kColor.get(); }

}  // namespace rmg

namespace {

constexpr char kModule[] = "owncolor";

using Byte = unsigned char;
using rmg::ld16;
using rmg::ld32;
using rmg::st16;
using rmg::st32;

// Truncation towards zero; NaN and values outside the 32-bit range give
// the processor's integer indefinite value, INT_MIN.
int32_t truncToInt(double v) {
    if (!(v > -2147483649.0 && v < 2147483648.0)) return INT_MIN;
    return static_cast<int32_t>(v);
}

// ---------------------------------------------------------------------------
// Gray rows without vector forms
// ---------------------------------------------------------------------------

void putBit(Byte *row, int i, bool set) {
    const Byte mask = static_cast<Byte>(0x80u >> (i & 7));
    Byte *p = row + (i >> 3);
    *p = static_cast<Byte>(set ? (*p | mask) : (*p & ~mask));
}

uint32_t shifted32(const Byte *p, int bits) { return static_cast<uint32_t>(ld32(p) >> bits); }

uint32_t sum32s(const Byte *a, const Byte *b, const Byte *c, int bits) {
    return shifted32(a, bits) * 109u + shifted32(b, bits) * 366u + shifted32(c, bits) * 37u;
}

void grayRow32s1u(const Byte *a, const Byte *b, const Byte *c, int step, Byte *dst, int n) {
    for (int i = n - 1; i >= 0; --i) {
        const ptrdiff_t k = 4 * static_cast<ptrdiff_t>(i) * step;
        putBit(dst, i, sum32s(a + k, b + k, c + k, 10) > 0x1FFFFFFFu);
    }
}
void grayRow32s8u(const Byte *a, const Byte *b, const Byte *c, int step, Byte *dst, int n) {
    for (int i = n - 1; i >= 0; --i) {
        const ptrdiff_t k = 4 * static_cast<ptrdiff_t>(i) * step;
        dst[i] = static_cast<Byte>(sum32s(a + k, b + k, c + k, 11) >> 21);
    }
}
void grayRow32s16u(const Byte *a, const Byte *b, const Byte *c, int step, Byte *dst, int n) {
    for (int i = n - 1; i >= 0; --i) {
        const ptrdiff_t k = 4 * static_cast<ptrdiff_t>(i) * step;
        st16(dst + 2 * static_cast<ptrdiff_t>(i), sum32s(a + k, b + k, c + k, 11) >> 13);
    }
}
void grayRow16u1u(const Byte *a, const Byte *b, const Byte *c, int step, Byte *dst, int n) {
    for (int i = n - 1; i >= 0; --i) {
        const ptrdiff_t k = 2 * static_cast<ptrdiff_t>(i) * step;
        putBit(dst, i, (rmg::graySum(ld16(a + k), ld16(b + k), ld16(c + k)) >> 8) > 32767u);
    }
}
void grayRow8u1u(const Byte *a, const Byte *b, const Byte *c, int step, Byte *dst, int n) {
    for (int i = n - 1; i >= 0; --i) {
        const ptrdiff_t k = static_cast<ptrdiff_t>(i) * step;
        putBit(dst, i, (rmg::graySum(a[k], b[k], c[k]) >> 8) > 127u);
    }
}

// ---------------------------------------------------------------------------
// Spread rows without vector forms
// ---------------------------------------------------------------------------

void spreadRow32s(const Byte *g, Byte *o1, Byte *o2, Byte *o3, int step, int n, const float *w) {
    for (int i = 0; i < n; ++i) {
        const ptrdiff_t k = 4 * static_cast<ptrdiff_t>(i) * step;
        const double v = ld32(g + 4 * static_cast<ptrdiff_t>(i));
        st32(o1 + k, static_cast<uint32_t>(truncToInt(v * static_cast<double>(w[0]))));
        st32(o2 + k, static_cast<uint32_t>(truncToInt(v * static_cast<double>(w[1]))));
        st32(o3 + k, static_cast<uint32_t>(truncToInt(v * static_cast<double>(w[2]))));
    }
}

// A set bit gives the three values `on`, a clear one three zeros.
void spreadRow1u(const Byte *g, Byte *o1, Byte *o2, Byte *o3, int step, int n, const Byte *on) {
    for (int i = 0; i < n; ++i) {
        const ptrdiff_t k = static_cast<ptrdiff_t>(i) * step;
        const bool set = (g[i >> 3] >> (7 - (i & 7))) & 1;
        o1[k] = set ? on[0] : 0;
        o2[k] = set ? on[1] : 0;
        o3[k] = set ? on[2] : 0;
    }
}

// ---------------------------------------------------------------------------
// Rows cut to the buffers
// ---------------------------------------------------------------------------

// How many of n elements, the first at byte offset `at` of a buffer of
// `bytes` bytes and the others `stride` bytes further each, lie wholly in
// the buffer (`size` bytes each; 0 for bits, `stride` then unused).
int64_t fitting(int64_t at, int64_t stride, int size, int64_t bytes, int64_t n) {
    if (n <= 0 || at < 0) return 0;
    int64_t fit;
    if (size == 0) {
        fit = (bytes - at) * 8;
    } else {
        if (bytes - at - size < 0) return 0;
        fit = (bytes - at - size) / stride + 1;
    }
    return fit < n ? fit : n;
}

bool spansShare(const Byte *a, int64_t aBytes, const Byte *b, int64_t bBytes) {
    const auto x = reinterpret_cast<uintptr_t>(a);
    const auto y = reinterpret_cast<uintptr_t>(b);
    return x < y + static_cast<uint64_t>(bBytes) && y < x + static_cast<uint64_t>(aBytes);
}

// The bytes that n elements of `size` bytes, `stride` apart, cover.
int64_t spanOf(int64_t n, int64_t stride, int size) {
    return size == 0 ? (n + 7) / 8 : (n - 1) * stride + size;
}

struct Layout {
    int64_t off[3];  // channel offsets in the order given to the kernel
    int step;        // elements between two of one channel
    int size;        // bytes of an element, 0 for bits
};

// The channels of a colour side: pixel order, the first three elements of
// a pixel, nChannels apart; plane order, the R, G and B planes, step 1.
bool colourLayout(const RmgImage *image, int rowStep, int height, Layout *l) {
    l->size = rmg::depthBits(image->depth) >> 3;
    if (image->dataOrder == RMG_DATA_PIXEL) {
        l->off[0] = 0;
        l->off[1] = l->size;
        l->off[2] = 2 * l->size;
        l->step = image->nChannels;
    } else {
        l->off[0] = l->off[1] = l->off[2] = -1;
        ownChannelOffsets(image, rowStep, height, "RGB", &l->off[0], &l->off[1], &l->off[2]);
        l->step = 1;
    }
    // A plane order image without one of the letters has nothing to convert.
    return l->off[0] >= 0 && l->off[1] >= 0 && l->off[2] >= 0 && l->step > 0;
}

// The elements of one row of the colour side and of the gray side that the
// buffers hold, from row offsets cOff and gOff.
int64_t rowFit(const Layout &c, int64_t cOff, int64_t cBytes, int gSize, int64_t gOff,
               int64_t gBytes, int64_t n) {
    const int64_t cStride = static_cast<int64_t>(c.step) * c.size;
    for (int k = 0; k < 3; ++k) n = fitting(cOff + c.off[k], cStride, c.size, cBytes, n);
    return fitting(gOff, gSize, gSize, gBytes, n);
}

// True when the colour side's rows and the gray row share a byte.
bool rowsShare(const Layout &c, const Byte *cRow, int gSize, const Byte *gRow, int64_t n) {
    const int64_t cStride = static_cast<int64_t>(c.step) * c.size;
    const int64_t gBytes = spanOf(n, gSize, gSize);
    for (int k = 0; k < 3; ++k)
        if (spansShare(cRow + c.off[k], spanOf(n, cStride, c.size), gRow, gBytes)) return true;
    return false;
}

enum class GrayKind { k32s1u, k32s8u, k32s16u, k16u1u, k16u8uPixel, k16u8uPlane, k16u16u, k8u1u, k8u8u, k8u16u, kNone };

GrayKind grayKind(const RmgImage *src, const RmgImage *dst) {
    const unsigned int d = dst->depth;
    switch (src->depth) {
    case RMG_DEPTH_32S:
        return d == RMG_DEPTH_1U ? GrayKind::k32s1u
               : d == RMG_DEPTH_8U ? GrayKind::k32s8u
               : d == RMG_DEPTH_16U ? GrayKind::k32s16u
                                    : GrayKind::kNone;
    case RMG_DEPTH_16U:
        if (d == RMG_DEPTH_8U)
            return src->dataOrder == RMG_DATA_PIXEL ? GrayKind::k16u8uPixel : GrayKind::k16u8uPlane;
        return d == RMG_DEPTH_1U ? GrayKind::k16u1u : d == RMG_DEPTH_16U ? GrayKind::k16u16u : GrayKind::kNone;
    case RMG_DEPTH_8U:
        return d == RMG_DEPTH_1U ? GrayKind::k8u1u
               : d == RMG_DEPTH_8U ? GrayKind::k8u8u
               : d == RMG_DEPTH_16U ? GrayKind::k8u16u
                                    : GrayKind::kNone;
    default:
        return GrayKind::kNone;
    }
}

// The scalar kernel of a kind, and its vector form where it has one.
rmg::GrayRowFn grayRow(GrayKind kind, const rmg::ColorForms &f) {
    switch (kind) {
    case GrayKind::k32s1u: return grayRow32s1u;
    case GrayKind::k32s8u: return grayRow32s8u;
    case GrayKind::k32s16u: return grayRow32s16u;
    case GrayKind::k16u1u: return grayRow16u1u;
    case GrayKind::k16u8uPixel: return f.gray16u8uPixel;
    case GrayKind::k16u8uPlane: return f.gray16u8uPlane;
    case GrayKind::k16u16u: return f.gray16u16u;
    case GrayKind::k8u1u: return grayRow8u1u;
    case GrayKind::k8u8u: return f.gray8u8u;
    case GrayKind::k8u16u: return f.gray8u16u;
    default: return nullptr;
    }
}

}  // namespace

RmgGrayCoefs ownGrayCoefs(unsigned int dstDepth, float fractR, float fractG, float fractB) {
    RmgGrayCoefs c{};
    const auto at = [](float f, double scale) {
        return static_cast<uint16_t>(static_cast<uint32_t>(truncToInt(scale * static_cast<double>(f))));
    };
    if (dstDepth == RMG_DEPTH_32S) {
        c.fcoefR = fractR;
        c.fcoefG = fractG;
        c.fcoefB = fractB;
        if (at(fractR, 32768.0) == 0 && at(fractG, 32768.0) == 0 && at(fractB, 32768.0) == 0) {
            const uint32_t bits[3] = {0x3E59C66Du, 0x3F3714BAu, 0x3D93CD57u};
            std::memcpy(&c.fcoefR, &bits[0], 4);
            std::memcpy(&c.fcoefG, &bits[1], 4);
            std::memcpy(&c.fcoefB, &bits[2], 4);
        }
        return c;
    }
    const bool wide = dstDepth == RMG_DEPTH_16U;
    const double scale = wide ? 32768.0 : 256.0;
    c.coefR = at(fractR, scale);
    c.coefG = at(fractG, scale);
    c.coefB = at(fractB, scale);
    c.coefShift = wide ? 15 : 8;
    if (c.coefR == 0 && c.coefG == 0 && c.coefB == 0) {
        c.coefR = wide ? 109 : 54;
        c.coefG = wide ? 366 : 183;
        c.coefB = wide ? 37 : 18;
        c.coefShift = wide ? 9 : 8;
    }
    return c;
}

void ownColorToGray(const RmgImage *src, const RmgImage *dst, const unsigned char *srcData,
                    unsigned char *dstData, int srcStep, int height, int width, int dstStep,
                    int64_t srcBytes, int64_t dstBytes) {
    const GrayKind kind = grayKind(src, dst);
    if (kind == GrayKind::kNone) {
        rmgError(RMG_StsBadArg, "ownColorToGray", "errInOutDepth", kModule, __LINE__);
        return;
    }
    const int count = rmg::mul32(width, dst->dataOrder == RMG_DATA_PIXEL ? dst->nChannels : 1);
    Layout c;
    if (srcData == nullptr || dstData == nullptr || count <= 0 || height <= 0 ||
        !colourLayout(src, srcStep, height, &c))
        return;
    // With a first letter other than 'R' the first and third channels change
    // places (in plane order too, after the planes have been found by their
    // letters); the 32s to 1u kernel keeps them as they are.
    if (src->channelSeq[0] != 'R' && kind != GrayKind::k32s1u) {
        const int64_t t = c.off[0];
        c.off[0] = c.off[2];
        c.off[2] = t;
    }
    const int gSize = rmg::depthBits(dst->depth) >> 3;
    const rmg::GrayRowFn scalar = grayRow(kind, rmg::kColorScalar);
    const rmg::GrayRowFn vector = grayRow(kind, rmg::colorForms());
    const auto run = [&](int64_t sOff, int64_t dOff, int64_t n) {
        n = rowFit(c, sOff, srcBytes, gSize, dOff, dstBytes, n);
        if (n <= 0) return;
        if (n > INT32_MAX) n = INT32_MAX;
        const Byte *row = srcData + sOff;
        Byte *out = dstData + dOff;
        const rmg::GrayRowFn fn = rowsShare(c, row, gSize, out, n) ? scalar : vector;
        fn(row + c.off[0], row + c.off[1], row + c.off[2], c.step, out, static_cast<int>(n));
    };
    // The plane-order 16u kernel runs once over rows that follow each other
    // without padding, over count * height * nChannels elements.
    if (kind == GrayKind::k16u8uPlane && srcStep == 2 * static_cast<int64_t>(count) &&
        dstStep == count) {
        run(0, 0, static_cast<int64_t>(count) * height * dst->nChannels);
        return;
    }
    for (int r = 0; r < height; ++r)
        run(static_cast<int64_t>(r) * srcStep, static_cast<int64_t>(r) * dstStep, count);
}

void ownGrayToColor(const RmgImage *src, const RmgImage *dst, float fractR, float fractG,
                    float fractB, const unsigned char *srcData, unsigned char *dstData,
                    int srcStep, int height, int width, int dstStep, int64_t srcBytes,
                    int64_t dstBytes) {
    const RmgGrayCoefs w = ownGrayCoefs(dst->depth, fractR, fractG, fractB);
    const unsigned int depth = src->depth;
    if (depth != RMG_DEPTH_32S && depth != RMG_DEPTH_16U && depth != RMG_DEPTH_8U &&
        !(depth == RMG_DEPTH_1U && dst->depth == RMG_DEPTH_8U)) {
        rmgError(RMG_StsBadArg, "ownGrayToColor", "errInOutDepth", kModule, __LINE__);
        return;
    }
    Layout c;
    if (srcData == nullptr || dstData == nullptr || width <= 0 || height <= 0 ||
        !colourLayout(dst, dstStep, height, &c))
        return;
    // The outputs take the source's element size (the depths agree, or 1u
    // goes to 8u).
    c.size = rmg::depthBits(depth) >> 3;
    if (depth == RMG_DEPTH_1U) c.size = 1;
    const int gSize = rmg::depthBits(depth) >> 3;
    const uint16_t coefs[3] = {w.coefR, w.coefG, w.coefB};
    const float fcoefs[3] = {w.fcoefR, w.fcoefG, w.fcoefB};
    // A set bit of a 1-bit source: (coefficient * 255) >> shift, low 8 bits;
    // a first letter other than 'R' exchanges the first and third.
    const bool red = dst->channelSeq[0] == 'R';
    const Byte on[3] = {static_cast<Byte>((uint32_t{red ? w.coefR : w.coefB} * 255u) >> w.coefShift),
                        static_cast<Byte>((uint32_t{w.coefG} * 255u) >> w.coefShift),
                        static_cast<Byte>((uint32_t{red ? w.coefB : w.coefR} * 255u) >> w.coefShift)};
    const rmg::ColorForms &forms = rmg::colorForms();
    // Each pixel of the destination row is one gray element: count is
    // width * nChannels destination elements in pixel order, width pixels.
    for (int r = 0; r < height; ++r) {
        const int64_t sOff = static_cast<int64_t>(r) * srcStep;
        const int64_t dOff = static_cast<int64_t>(r) * dstStep;
        const int64_t n = rowFit(c, dOff, dstBytes, gSize, sOff, srcBytes, width);
        if (n <= 0) continue;
        const Byte *g = srcData + sOff;
        Byte *row = dstData + dOff;
        Byte *o1 = row + c.off[0], *o2 = row + c.off[1], *o3 = row + c.off[2];
        const int m = static_cast<int>(n);
        const bool share = rowsShare(c, row, gSize, g, m);
        switch (depth) {
        case RMG_DEPTH_32S:
            spreadRow32s(g, o1, o2, o3, c.step, m, fcoefs);
            break;
        case RMG_DEPTH_16U:
            (share ? rmg::kColorScalar : forms).spread16u(g, o1, o2, o3, c.step, m, coefs, w.coefShift);
            break;
        case RMG_DEPTH_8U:
            (share ? rmg::kColorScalar : forms).spread8u(g, o1, o2, o3, c.step, m, coefs, w.coefShift);
            break;
        default:
            spreadRow1u(g, o1, o2, o3, c.step, m, on);
            break;
        }
    }
}
