// Mirror: rmgMirror, its region routines and the entry of its row kernel.
//
// The operation checks its arguments, finds the two rectangles and their
// common size, and goes one of three ways: both images in memory (the
// region routines directly), a tiled source into an image in memory (the
// source's rectangle read into one block first), or a tiled destination
// (tile by tile, each piece of the source read into a block of its own).
//
// The region routines move whole elements. Between two records they run
// the rows and elements in a fixed order, which decides the result where
// two headers describe the same pixels; on one record they use a row
// buffer or exchanges and give the mirror itself. Each row is a run of
// units (elements, or whole pixels) at a stride, limited to the units that
// lie inside the image's buffer (see ownMirrorRect).
#include "geometry/rmgmirr.h"

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "access/owntile.h"
#include "core/rmgcpu.h"
#include "core/rmgint.h"
#include "core/rmgvalid.h"
#include "geometry/rmgmirr_impl.h"
#include "ops/rmgSCE_copy.h"
#include "ops/rmgcopy.h"
#include "rmg.h"

namespace rmg {

constexpr MirrorForms kMirrorScalar = {reverseScalar};

namespace {

constexpr FormTable<const MirrorForms *> kMirror = formTable<const MirrorForms *>(
    &kMirrorScalar, RMG_FORM_SSE2(&kMirrorSse2), RMG_FORM_AVX2(&kMirrorAvx2), nullptr);

}  // namespace
}  // namespace rmg

namespace {

constexpr char kModule[] = "rmgmirr";
constexpr char kFunc[] = "rmgMirror";

using Byte = unsigned char;

inline int minInt(int a, int b) { return a < b ? a : b; }
inline int maxInt(int a, int b) { return a > b ? a : b; }

// True when the byte ranges [a, a + aBytes) and [b, b + bBytes) share a byte.
bool spansOverlap(const void *a, size_t aBytes, const void *b, size_t bBytes) {
    const auto x = reinterpret_cast<uintptr_t>(a);
    const auto y = reinterpret_cast<uintptr_t>(b);
    return x < y + bBytes && y < x + aBytes;
}

bool isRunUnit(int unit) {
    return unit == 1 || unit == 2 || unit == 3 || unit == 4 || unit == 6 || unit == 8 ||
           unit == 12 || unit == 16;
}

// ---------------------------------------------------------------------------
// Rows of units
// ---------------------------------------------------------------------------

// A row of units of `unit` bytes, `stride` bytes apart, of which units lo
// to hi - 1 may be read or written (the others lie outside the buffer, or
// hold nothing yet in a row buffer).
struct Units {
    Byte *p;
    ptrdiff_t stride;
    int lo, hi;
    Byte *at(int k) const { return p + static_cast<ptrdiff_t>(k) * stride; }
};

// The units written by an operation: d.lo to d.hi - 1.
struct Range {
    int lo, hi;
};

// One unit read whole, then written whole.
void moveUnit(const Byte *from, Byte *to, int unit) { std::memmove(to, from, static_cast<size_t>(unit)); }

// Two units read whole, then each written to the other's place.
void exchangeUnits(Byte *a, Byte *b, int unit) {
    Byte t[64];
    if (unit <= 64) {
        std::memcpy(t, a, static_cast<size_t>(unit));
        std::memmove(a, b, static_cast<size_t>(unit));
        std::memcpy(b, t, static_cast<size_t>(unit));
        return;
    }
    for (int i = 0; i < unit; ++i) {
        const Byte x = a[i];
        a[i] = b[i];
        b[i] = x;
    }
}

// d[c] = s[c] for the units both may hold, from c low to high: a forward
// run copy where the units are packed, else unit by unit.
Range copyUnits(const Units &s, const Units &d, int unit) {
    const int lo = maxInt(s.lo, d.lo);
    const int hi = minInt(s.hi, d.hi);
    if (hi <= lo) return {0, 0};
    const int n = hi - lo;
    if (s.stride == unit && d.stride == unit)
        rmgCopyBytes(s.at(lo), d.at(lo), static_cast<int>(static_cast<int64_t>(n) * unit));
    else if (unit == 1 || unit == 2 || unit == 4)
        rmgCopyStrided(s.at(lo), d.at(lo), n, static_cast<int>(s.stride), static_cast<int>(d.stride),
                       unit);
    else
        for (int k = lo; k < hi; ++k) moveUnit(s.at(k), d.at(k), unit);
    return {lo, hi};
}

// The order of a reversal, where its two runs share memory.
enum class Order {
    // Between two records: for i = 1, 3, 5, ... below cols, unit i from
    // cols - 1 - i, then unit i - 1 from cols - i; with cols odd, last the
    // unit cols - 1 from unit 0.
    kPairs,
    // On one record: pairs from both ends inwards, both units of a pair
    // read before either is written (in one run: an exchange).
    kEnds,
};

// In place, units lo to hi - 1 of a packed run reversed (lo + hi is the
// row's length, so that this is the row's mirror): the two halves are
// exchanged reversed, a piece at a time through a small block.
void reverseInPlace(const Units &r, int lo, int hi, int unit) {
    constexpr int kBlockBytes = 1024;
    Byte block[kBlockBytes];
    const int half = (hi - lo) / 2;
    const int piece = kBlockBytes / unit;
    for (int i = 0; i < half; i += piece) {
        const int m = minInt(piece, half - i);
        Byte *left = r.at(lo + i);
        Byte *right = r.at(hi - i - m);
        std::memcpy(block, left, static_cast<size_t>(m) * static_cast<size_t>(unit));
        ownReverseRun(right, left, m, unit);
        ownReverseRun(block, right, m, unit);
    }
}

// d[c] = s[cols - 1 - c] for the units both may give and take.
Range reverseUnits(const Units &s, const Units &d, int cols, int unit, Order order) {
    const int lo = maxInt(d.lo, cols - s.hi);
    const int hi = minInt(d.hi, cols - s.lo);
    if (hi <= lo) return {0, 0};
    const int n = hi - lo;
    const Byte *from = s.at(cols - hi);
    Byte *to = d.at(lo);
    const size_t fromSpan = static_cast<size_t>(n - 1) * static_cast<size_t>(s.stride) + unit;
    const size_t toSpan = static_cast<size_t>(n - 1) * static_cast<size_t>(d.stride) + unit;
    const bool packed = s.stride == unit && d.stride == unit;
    if (!spansOverlap(from, fromSpan, to, toSpan)) {
        if (packed && isRunUnit(unit))
            ownReverseRun(from, to, n, unit);
        else
            for (int k = 0; k < n; ++k)
                moveUnit(from + static_cast<ptrdiff_t>(n - 1 - k) * s.stride,
                         to + static_cast<ptrdiff_t>(k) * d.stride, unit);
        return {lo, hi};
    }
    if (order == Order::kEnds && from == to && s.stride == d.stride) {
        // One run reversed onto itself.
        if (packed && isRunUnit(unit))
            reverseInPlace(d, lo, hi, unit);
        else
            for (int k = 0; k < n / 2; ++k)
                exchangeUnits(to + static_cast<ptrdiff_t>(k) * d.stride,
                              to + static_cast<ptrdiff_t>(n - 1 - k) * d.stride, unit);
        return {lo, hi};
    }
    // Runs that share memory otherwise: the order itself, unit by unit.
    const auto inside = [&](int c) { return c >= lo && c < hi; };
    if (order == Order::kPairs) {
        const auto move = [&](int c) {
            if (inside(c)) moveUnit(s.at(cols - 1 - c), d.at(c), unit);
        };
        for (int i = 1; i < cols; i += 2) {
            move(i);
            move(i - 1);
        }
        if (cols & 1) move(cols - 1);
    } else {
        Byte a[64], b[64];
        for (int k = 0; k < (cols + 1) / 2; ++k) {
            const int l = cols - 1 - k;
            if (unit > 64) {
                // Units this wide come only from a header of many channels;
                // they move one after the other.
                if (inside(k)) moveUnit(s.at(l), d.at(k), unit);
                if (inside(l) && l != k) moveUnit(s.at(k), d.at(l), unit);
                continue;
            }
            if (inside(k)) std::memcpy(b, s.at(l), static_cast<size_t>(unit));
            if (inside(l)) std::memcpy(a, s.at(k), static_cast<size_t>(unit));
            if (inside(k)) std::memcpy(d.at(k), b, static_cast<size_t>(unit));
            if (inside(l)) std::memcpy(d.at(l), a, static_cast<size_t>(unit));
        }
    }
    return {lo, hi};
}

// ---------------------------------------------------------------------------
// Images as rows of units
// ---------------------------------------------------------------------------

// Where one image's rectangle lies in its buffer, in byte offsets from
// imageData (64-bit: a header's products can't overflow them).
struct Side {
    Byte *base;
    int64_t size;
    int64_t first;  // unit 0 of row 0 of plane 0
    int64_t rowStep, planeStep;
    ptrdiff_t stride;
};

Units rowOf(const Side &side, int plane, int r, int cols, int unit) {
    const int64_t off = side.first + plane * side.planeStep + r * side.rowStep;
    Units u{side.base, side.stride, 0, 0};
    if (side.base == nullptr || off < 0 || off + unit > side.size) return u;
    const int64_t n = (side.size - off - unit) / side.stride + 1;
    u.p = side.base + off;
    u.hi = n < cols ? static_cast<int>(n) : cols;
    return u;
}

int64_t xOffsetOf(const RmgImage *image) { return image->roi != nullptr ? image->roi->xOffset : 0; }
int64_t yOffsetOf(const RmgImage *image) { return image->roi != nullptr ? image->roi->yOffset : 0; }

// A row buffer of `cols` units, packed, nothing in it yet.
struct RowBuffer {
    Byte *block = nullptr;
    explicit RowBuffer(int64_t bytes) {
        if (bytes > 0 && bytes <= INT32_MAX - 64)
            block = static_cast<Byte *>(rmgAlloc8(static_cast<int>(bytes)));
    }
    ~RowBuffer() { rmgFree(block); }
    RowBuffer(const RowBuffer &) = delete;
    RowBuffer &operator=(const RowBuffer &) = delete;
};

// The mirror of rows of units. `planes` planes of `rows` rows of `cols`
// units each; `columnsThroughBuffer` makes the one-record column mirror go
// through the row buffer (pixel order) instead of exchanges (plane order).
void mirrorUnits(const Side &src, const Side &dst, bool same, int planes, int rows, int cols,
                 int unit, int flipAxis, bool columnsThroughBuffer) {
    if (rows <= 0 || cols <= 0 || planes <= 0) return;
    if (!same) {
        for (int p = 0; p < planes; ++p)
            for (int i = 0; i < rows; ++i) {
                const Units d = rowOf(dst, p, i, cols, unit);
                const Units s = rowOf(src, p, flipAxis == 1 ? i : rows - 1 - i, cols, unit);
                if (flipAxis == 0)
                    copyUnits(s, d, unit);
                else
                    reverseUnits(s, d, cols, unit, Order::kPairs);
            }
        return;
    }
    const bool needBuffer = flipAxis != 1 || columnsThroughBuffer;
    RowBuffer buffer(needBuffer ? static_cast<int64_t>(cols) * unit : 0);
    // A buffer that can't be had leaves the image as it is.
    if (needBuffer && buffer.block == nullptr) return;
    Units buf{buffer.block, unit, 0, cols};
    const auto filled = [&](Range r) {
        buf.lo = r.lo;
        buf.hi = r.hi;
    };
    for (int p = 0; p < planes; ++p) {
        if (flipAxis == 1) {
            for (int i = 0; i < rows; ++i) {
                const Units r = rowOf(dst, p, i, cols, unit);
                if (!columnsThroughBuffer) {
                    reverseUnits(r, r, cols, unit, Order::kEnds);
                    continue;
                }
                buf.lo = 0;
                buf.hi = cols;
                filled(reverseUnits(r, buf, cols, unit, Order::kEnds));
                copyUnits(buf, r, unit);
            }
            continue;
        }
        for (int i = 0; i < (rows + 1) / 2; ++i) {
            const Units ri = rowOf(dst, p, i, cols, unit);
            const Units rj = rowOf(dst, p, rows - 1 - i, cols, unit);
            buf.lo = 0;
            buf.hi = cols;
            if (flipAxis == 0) {
                filled(copyUnits(ri, buf, unit));
                copyUnits(rj, ri, unit);
            } else {
                filled(reverseUnits(ri, buf, cols, unit, Order::kEnds));
                reverseUnits(rj, ri, cols, unit, Order::kEnds);
            }
            copyUnits(buf, rj, unit);
        }
    }
}

// The plane routine: channels planes of elements, each image's planes
// height * widthStep apart, a coi starting at its plane.
void mirrorPlane(const RmgImage *srcImage, RmgImage *dstImage, int channels, int coi, int rows,
                 int cols, int flipAxis, int element) {
    const auto sideOf = [&](const RmgImage *image) {
        const int64_t planeStep = static_cast<int64_t>(image->height) * image->widthStep;
        int64_t first = yOffsetOf(image) * image->widthStep + xOffsetOf(image) * element;
        if (coi != 0) first += (coi - 1) * planeStep;
        return Side{image->imageData, image->imageSize, first, image->widthStep, planeStep, element};
    };
    mirrorUnits(sideOf(srcImage), sideOf(dstImage), srcImage == dstImage, channels, rows, cols,
                element, flipAxis, false);
}

// The pixel routine: pixels of the source's nChannels elements, whole, or
// with one channel (coi, or a one-channel image) that channel alone.
void mirrorPixel(const RmgImage *srcImage, RmgImage *dstImage, int channels, int coi, int rows,
                 int cols, int flipAxis, int element) {
    const int64_t pixel = static_cast<int64_t>(srcImage->nChannels) * element;
    if (pixel > INT32_MAX) return;
    const bool one = channels == 1;
    const int64_t channelOffset = one ? static_cast<int64_t>((coi != 0 ? coi : 1) - 1) * element : 0;
    const int unit = one ? element : static_cast<int>(pixel);
    const auto sideOf = [&](const RmgImage *image) {
        const int64_t first =
            yOffsetOf(image) * image->widthStep + xOffsetOf(image) * pixel + channelOffset;
        return Side{image->imageData, image->imageSize, first, image->widthStep, 0,
                    static_cast<ptrdiff_t>(pixel)};
    };
    mirrorUnits(sideOf(srcImage), sideOf(dstImage), srcImage == dstImage, 1, rows, cols, unit,
                flipAxis, true);
}

// ---------------------------------------------------------------------------
// Bits
// ---------------------------------------------------------------------------

// A row of bits: its first byte, the position of bit column 0 from that
// byte's most significant bit, and the columns lo to hi - 1 that may be
// read or written.
struct BitRow {
    Byte *p;
    int phase;
    int lo, hi;
};

struct BitSide {
    Byte *base;
    int64_t size, first, rowStep;
    int phase;
};

BitSide bitSideOf(const RmgImage *image) {
    const int64_t x = xOffsetOf(image);
    return {image->imageData, image->imageSize, yOffsetOf(image) * image->widthStep + (x >> 3),
            image->widthStep, static_cast<int>(x & 7)};
}

BitRow bitRowOf(const BitSide &side, int r, int cols) {
    const int64_t off = side.first + r * side.rowStep;
    BitRow row{side.base, side.phase, 0, 0};
    if (side.base == nullptr || off < 0 || off >= side.size) return row;
    const int64_t n = (side.size - off) * 8 - side.phase;
    row.p = side.base + off;
    row.hi = n < cols ? static_cast<int>(n) : cols;
    return row;
}

// Bits of `count` columns from position `pos` (from the most significant
// bit of p[0]) as ownCopyBits wants them.
Range copyBitRow(const BitRow &s, const BitRow &d) {
    const int lo = maxInt(s.lo, d.lo);
    const int hi = minInt(s.hi, d.hi);
    if (hi <= lo) return {0, 0};
    const int from = s.phase + lo;
    const int to = d.phase + lo;
    ownCopyBits(s.p + (from >> 3), d.p + (to >> 3), 7 - (from & 7), 7 - (to & 7), hi - lo);
    return {lo, hi};
}

Range reverseBitRow(const BitRow &s, const BitRow &d, int cols) {
    const int lo = maxInt(d.lo, cols - s.hi);
    const int hi = minInt(d.hi, cols - s.lo);
    if (hi <= lo) return {0, 0};
    ownReverseBits(s.p, d.p, s.phase + cols - hi, d.phase + lo, hi - lo);
    return {lo, hi};
}

bool getBit(const Byte *p, int64_t pos) { return (p[pos >> 3] >> (7 - (pos & 7))) & 1; }

void putBit(Byte *p, int64_t pos, bool bit) {
    const Byte mask = static_cast<Byte>(0x80u >> (pos & 7));
    if (bit)
        p[pos >> 3] = static_cast<Byte>(p[pos >> 3] | mask);
    else
        p[pos >> 3] = static_cast<Byte>(p[pos >> 3] & ~mask);
}

}  // namespace

// ---------------------------------------------------------------------------
// Row functions
// ---------------------------------------------------------------------------

void ownReverseRun(const unsigned char *src, unsigned char *dst, int count, int unit) {
    if (count > 0) rmg::kMirror.get()->reverse(src, dst, static_cast<size_t>(count), unit);
}

void ownCopyRow8(const unsigned char *from, unsigned char *to, int bytes) {
    rmgCopyBytes(from, to, bytes);
}

void ownCopyRow16(const unsigned char *from, unsigned char *to, int elements) {
    if (elements > 0 && elements <= INT32_MAX / 2) rmgCopyBytes(from, to, elements * 2);
}

void ownCopyBits(const unsigned char *from, unsigned char *to, int fromBit, int toBit, int count) {
    if (count <= 0) return;
    const size_t fromBytes = static_cast<size_t>((static_cast<int64_t>(7 - fromBit) + count + 7) >> 3);
    const size_t toBytes = static_cast<size_t>((static_cast<int64_t>(7 - toBit) + count + 7) >> 3);
    if ((from == to && fromBit == toBit) || !spansOverlap(from, fromBytes, to, toBytes)) {
        rmgCopyBits(from, to, fromBit, toBit, count);
        return;
    }
    // Runs that share bytes: the source's bytes are taken first.
    if (fromBytes > static_cast<size_t>(INT32_MAX)) return;
    Byte *copy = static_cast<Byte *>(rmgAlloc8(static_cast<int>(fromBytes)));
    if (copy == nullptr) return;
    std::memcpy(copy, from, fromBytes);
    rmgCopyBits(copy, to, fromBit, toBit, count);
    rmgFree(copy);
}

void ownReverseBits(const unsigned char *from, unsigned char *to, int fromPos, int toPos,
                    int count) {
    for (int k = 0; k < count; ++k)
        putBit(to, static_cast<int64_t>(toPos) + k,
               getBit(from, static_cast<int64_t>(fromPos) + count - 1 - k));
}

// ---------------------------------------------------------------------------
// Region routines
// ---------------------------------------------------------------------------

void ownMirrorBits(const RmgImage *src, RmgImage *dst, int rows, int cols, int flipAxis) {
    if (rows <= 0 || cols <= 0) return;
    const BitSide s = bitSideOf(src);
    const BitSide d = bitSideOf(dst);
    if (src != dst) {
        // Row i of the destination from row rows - 1 - i of the source (for
        // -1 the source is walked from its last row up), or from row i.
        for (int i = 0; i < rows; ++i) {
            const BitRow to = bitRowOf(d, i, cols);
            const BitRow from = bitRowOf(s, flipAxis == 1 ? i : rows - 1 - i, cols);
            if (flipAxis == 0)
                copyBitRow(from, to);
            else
                reverseBitRow(from, to, cols);
        }
        return;
    }
    // One record: a buffer at the row's own bit phase.
    RowBuffer buffer((static_cast<int64_t>(d.phase) + cols) / 8 + 1);
    if (buffer.block == nullptr) return;
    BitRow buf{buffer.block, d.phase, 0, cols};
    const auto filled = [&](Range r) {
        buf.lo = r.lo;
        buf.hi = r.hi;
    };
    if (flipAxis == 1) {
        for (int i = 0; i < rows; ++i) {
            const BitRow r = bitRowOf(d, i, cols);
            buf.lo = 0;
            buf.hi = cols;
            filled(copyBitRow(r, buf));
            reverseBitRow(buf, r, cols);
        }
        return;
    }
    for (int i = 0; i < (rows + 1) / 2; ++i) {
        const BitRow ri = bitRowOf(d, i, cols);
        const BitRow rj = bitRowOf(d, rows - 1 - i, cols);
        buf.lo = 0;
        buf.hi = cols;
        filled(copyBitRow(ri, buf));
        if (flipAxis == 0) {
            copyBitRow(rj, ri);
            copyBitRow(buf, rj);
        } else {
            reverseBitRow(rj, ri, cols);
            reverseBitRow(buf, rj, cols);
        }
    }
}

void ownMirrorPlane8(const RmgImage *src, RmgImage *dst, int channels, int coi, int rows, int cols,
                     int flipAxis) {
    mirrorPlane(src, dst, channels, coi, rows, cols, flipAxis, 1);
}
void ownMirrorPlane16(const RmgImage *src, RmgImage *dst, int channels, int coi, int rows,
                      int cols, int flipAxis) {
    mirrorPlane(src, dst, channels, coi, rows, cols, flipAxis, 2);
}
void ownMirrorPlane32(const RmgImage *src, RmgImage *dst, int channels, int coi, int rows,
                      int cols, int flipAxis) {
    mirrorPlane(src, dst, channels, coi, rows, cols, flipAxis, 4);
}
void ownMirrorPixel8(const RmgImage *src, RmgImage *dst, int channels, int coi, int rows, int cols,
                     int flipAxis) {
    mirrorPixel(src, dst, channels, coi, rows, cols, flipAxis, 1);
}
void ownMirrorPixel16(const RmgImage *src, RmgImage *dst, int channels, int coi, int rows,
                      int cols, int flipAxis) {
    mirrorPixel(src, dst, channels, coi, rows, cols, flipAxis, 2);
}
void ownMirrorPixel32(const RmgImage *src, RmgImage *dst, int channels, int coi, int rows,
                      int cols, int flipAxis) {
    mirrorPixel(src, dst, channels, coi, rows, cols, flipAxis, 4);
}

void ownMirrorRect(const RmgImage *src, RmgImage *dst, int channels, int coi, int rows, int cols,
                   int flipAxis) {
    if (flipAxis < -1 || flipAxis > 1) return;
    if (src->depth == RMG_DEPTH_1U) {
        ownMirrorBits(src, dst, rows, cols, flipAxis);
        return;
    }
    const bool plane = src->dataOrder == RMG_DATA_PLANE;
    switch (src->depth) {
        case RMG_DEPTH_8U:
        case RMG_DEPTH_8S:
            (plane ? ownMirrorPlane8 : ownMirrorPixel8)(src, dst, channels, coi, rows, cols, flipAxis);
            break;
        case RMG_DEPTH_16U:
        case RMG_DEPTH_16S:
            (plane ? ownMirrorPlane16 : ownMirrorPixel16)(src, dst, channels, coi, rows, cols,
                                                          flipAxis);
            break;
        case RMG_DEPTH_32S:
            (plane ? ownMirrorPlane32 : ownMirrorPixel32)(src, dst, channels, coi, rows, cols,
                                                          flipAxis);
            break;
        default:
            break;
    }
}

// ---------------------------------------------------------------------------
// The operation
// ---------------------------------------------------------------------------

namespace {

// A rectangle: origin, rows and columns.
struct Rect {
    int x, y, rows, cols;
};

// The source's rectangle. A ROI's column count that reaches past the
// right edge is replaced by the rows that remain below the ROI's origin.
Rect sourceRect(const RmgImage *image) {
    const RmgROI *roi = image->roi;
    if (roi == nullptr) return {0, 0, image->height, image->width};
    const int rowsLeft = rmg::sub32(image->height, roi->yOffset);
    const int colsLeft = rmg::sub32(image->width, roi->xOffset);
    return {roi->xOffset, roi->yOffset, minInt(roi->height, rowsLeft),
            roi->width > colsLeft ? rowsLeft : roi->width};
}

// The destination's rectangle: the ROI cut at the right and bottom edges.
Rect destinationRect(const RmgImage *image) {
    const RmgROI *roi = image->roi;
    if (roi == nullptr) return {0, 0, image->height, image->width};
    return {roi->xOffset, roi->yOffset, minInt(roi->height, rmg::sub32(image->height, roi->yOffset)),
            minInt(roi->width, rmg::sub32(image->width, roi->xOffset))};
}

// A plain header of `image`'s format with `rows` rows and `cols` columns,
// no ROI and no tiles; null when it can't be made.
RmgImage *headerLike(const RmgImage *image, int rows, int cols, RmgROI *roi) {
    return rmgCreateImageHeader(image->nChannels, image->alphaChannel, image->depth,
                                image->colorModel, image->channelSeq, image->dataOrder,
                                image->origin, image->align, rows, cols, roi, nullptr, nullptr);
}

// `rows` by `cols` pixels of `image` from column x, row y read into a new
// plain image without ROI (border rules beyond the edges); null when the
// header or the read can't be had. Given back with releaseRead.
RmgImage *readRect(const RmgImage *image, int x, int y, int rows, int cols) {
    RmgImage *block = headerLike(image, rows, cols, nullptr);
    if (block == nullptr) return nullptr;
    int rowStep = 0;
    block->imageData = ownGetExtendedRect(image, x, y, cols, rows, &rowStep);
    block->widthStep = rowStep;
    return block;
}

void releaseRead(RmgImage *block) {
    if (block == nullptr) return;
    ownReleaseExtendedRect(block->imageData);
    block->imageData = nullptr;
    rmgDeallocate(block, RMG_DEALLOC_HEADER);
}

// The pieces of one axis of the destination's rectangle in its tile grid.
struct Axis {
    int origin, count, tile;  // X0, cols, tw (or Y0, rows, th)
    bool flipped;
    int first() const { return origin / tile; }
    int last() const { return rmg::add32(origin, count - 1) / tile; }
};

// Piece k of an axis: where it starts in its tile, its size, and where its
// source lies from the source rectangle's origin.
struct Piece {
    int start, size, source;
};

Piece pieceOf(const Axis &a, int k) {
    const int end = rmg::add32(a.origin, a.count - 1);
    const int kFirst = a.first();
    const int kLast = a.last();
    const int kStart = rmg::mul32(k, a.tile);
    Piece p;
    if (end < a.tile) {
        p.start = a.origin;
        p.size = a.count;
    } else if (k == kFirst && k == kLast) {
        p.start = a.origin - kStart;
        p.size = a.count;
    } else if (k == kFirst) {
        p.start = a.origin - kStart;
        p.size = rmg::sub32(rmg::add32(kStart, a.tile), a.origin);
    } else if (k == kLast) {
        p.start = 0;
        p.size = rmg::sub32(rmg::add32(a.origin, a.count), kStart);
    } else {
        p.start = 0;
        p.size = a.tile;
    }
    // The piece at offset `at` of the rectangle: a flipped axis takes the
    // source from the other end, count - at - size.
    const int at = rmg::sub32(rmg::add32(kStart, p.start), a.origin);
    p.source = a.flipped ? rmg::sub32(rmg::sub32(a.count, at), p.size) : at;
    return p;
}

struct TileJob {
    const RmgImage *source;  // the source image, or the read of its rectangle
    int sourceX, sourceY;    // the rectangle's origin in `source`
    RmgImage *dstImage;
    int channels, coi, flipAxis;
};

// One destination tile: the six steps for the piece of column k, row l.
void mirrorTile(const TileJob &job, const Axis &xs, const Axis &ys, int k, int l) {
    const Piece px = pieceOf(xs, k);
    const Piece py = pieceOf(ys, l);
    RmgImage *block = readRect(job.source, rmg::add32(job.sourceX, px.source),
                               rmg::add32(job.sourceY, py.source), py.size, px.size);
    RmgImage *dst = job.dstImage;
    RmgTileInfo *tiles = dst->tileInfo;
    tiles->callBack(dst, k, l, RMG_TILE_WRITE);
    RmgROI *roi = rmgCreateROI(job.coi, px.start, py.start, py.size, px.size);
    RmgImage *part = headerLike(dst, tiles->height, tiles->width, roi);
    if (part != nullptr) {
        part->widthStep = rmgTileWidthStep(dst);
        part->imageData = tiles->tileData;
    }
    // The call-back's tile is taken as it stands; a null tile, a failed
    // read or a header that couldn't be made leaves the piece undone.
    if (block != nullptr && block->imageData != nullptr && part != nullptr && roi != nullptr &&
        part->imageData != nullptr)
        ownMirrorRect(block, part, job.channels, job.coi, py.size, px.size, job.flipAxis);
    if (block != nullptr) {
        ownReleaseExtendedRect(block->imageData);
        block->imageData = nullptr;
    }
    tiles->callBack(dst, k, l, RMG_TILE_RELEASE);
    rmgDeallocate(block, RMG_DEALLOC_HEADER);
    if (part != nullptr) {
        part->imageData = nullptr;
        // The piece's ROI is this call's own and goes with its header.
        rmgDeallocate(part, RMG_DEALLOC_HEADER | RMG_DEALLOC_ROI);
    } else {
        rmgDeleteROI(roi);
    }
}

// A tiled destination, tile by tile in the order that flipAxis gives: a
// flipped axis is walked from its last tile to its first.
void mirrorTiles(const RmgImage *srcImage, RmgImage *dstImage, const Rect &s, const Rect &d,
                 int rows, int cols, int channels, int coi, int flipAxis, const int *tilePoint) {
    const Axis xs{d.x, cols, dstImage->tileInfo->width, flipAxis != 0};
    const Axis ys{d.y, rows, dstImage->tileInfo->height, flipAxis != 1};
    TileJob job{srcImage, s.x, s.y, dstImage, channels, coi, flipAxis};
    if (tilePoint != nullptr) {
        const int px = tilePoint[0];
        const int py = tilePoint[1];
        if (px < xs.origin || px > rmg::add32(xs.origin, cols - 1) || py < ys.origin ||
            py > rmg::add32(ys.origin, rows - 1))
            return;
        mirrorTile(job, xs, ys, px / xs.tile, py / ys.tile);
        return;
    }
    // On one record the whole source rectangle is read before the first
    // tile is written, and the pieces come from that read.
    RmgImage *whole = nullptr;
    if (srcImage == dstImage) {
        whole = readRect(srcImage, s.x, s.y, rows, cols);
        if (whole == nullptr || whole->imageData == nullptr) {
            releaseRead(whole);
            return;
        }
        job.source = whole;
        job.sourceX = 0;
        job.sourceY = 0;
    }
    const int x0 = xs.first(), x1 = xs.last(), y0 = ys.first(), y1 = ys.last();
    if (flipAxis == 1) {
        for (int l = y0; l <= y1; ++l)
            for (int k = x1; k >= x0; --k) mirrorTile(job, xs, ys, k, l);
    } else {
        const bool columnsBackwards = flipAxis == -1;
        for (int n = 0; n <= x1 - x0; ++n) {
            const int k = columnsBackwards ? x1 - n : x0 + n;
            for (int l = y1; l >= y0; --l) mirrorTile(job, xs, ys, k, l);
        }
    }
    releaseRead(whole);
}

}  // namespace

extern "C" void rmgMirror(const RmgImage *srcImage, RmgImage *dstImage, int flipAxis,
                          const int *tilePoint) {
    if (!rmg::openImages(kFunc, kModule, __LINE__, {srcImage, dstImage})) return;
    if (srcImage->depth != dstImage->depth) {
        rmgError(RMG_StsBadArg, kFunc, "(srcImage->depth!=dstImage->depth)", kModule, __LINE__);
        return;
    }
    if (srcImage->nChannels != dstImage->nChannels) {
        rmgError(RMG_StsBadArg, kFunc, "(srcImage->nChannels!=dstImage->nChannels)", kModule,
                 __LINE__);
        return;
    }
    if ((flipAxis > 1) || (flipAxis < -1)) {
        rmgError(RMG_StsBadArg, kFunc, "((flipAxis>1)||(flipAxis<-1))", kModule, __LINE__);
        return;
    }
    const int coiSrc = srcImage->roi != nullptr ? srcImage->roi->coi : 0;
    const int coiDst = dstImage->roi != nullptr ? dstImage->roi->coi : 0;
    if (coiSrc != coiDst) {
        rmgError(RMG_StsBadArg, kFunc, "(coiSrc!=coiDst)", kModule, __LINE__);
        return;
    }
    const int channels = coiSrc == 0 ? srcImage->nChannels : 1;
    const Rect s = sourceRect(srcImage);
    const Rect d = destinationRect(dstImage);
    const int rows = minInt(s.rows, d.rows);
    const int cols = minInt(s.cols, d.cols);
    // An empty rectangle has nothing to read or write, and asks for no tile.
    if (rows <= 0 || cols <= 0) return;

    if (dstImage->tileInfo != nullptr) {
        mirrorTiles(srcImage, dstImage, s, d, rows, cols, channels, coiSrc, flipAxis, tilePoint);
        return;
    }
    if (srcImage->tileInfo == nullptr) {
        ownMirrorRect(srcImage, dstImage, channels, coiSrc, rows, cols, flipAxis);
        return;
    }
    // A tiled source into an image in memory: its rectangle read first.
    RmgImage *block = readRect(srcImage, s.x, s.y, rows, cols);
    if (block != nullptr && block->imageData != nullptr)
        ownMirrorRect(block, dstImage, channels, coiSrc, rows, cols, flipAxis);
    releaseRead(block);
}
