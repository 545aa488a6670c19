// rmgReduceBits on random images against a per-element model: the plain
// reduction of every depth pair in both orders with 1 to 4 channels and a
// coi, images of different sizes; a tiled destination without noise
// against the plain result; noise (with the same rand sequence) and each
// dither over tiles, whole buffers compared.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <random>
#include <vector>

#include "colortest.h"
#include "rmg.h"
#include "support/rmgtest.h"

namespace {

using colortest::Bytes;

class ReduceRandomTest : public rmgtest::ErrorStateTest {};

int sizeOf(unsigned int depth) { return depth == RMG_DEPTH_1U ? 0 : static_cast<int>(depth & 0xFF) / 8; }

int64_t getE(const Bytes &b, int64_t at, unsigned int depth) {
    if (depth == RMG_DEPTH_8U) return b[at];
    if (depth == RMG_DEPTH_16U) return b[at] | (b[at + 1] << 8);
    uint32_t v;
    std::memcpy(&v, &b[at], 4);
    return static_cast<int32_t>(v);
}
void putE(Bytes &b, int64_t at, unsigned int depth, int64_t v) {
    b[at] = static_cast<unsigned char>(v);
    if (depth == RMG_DEPTH_16U) b[at + 1] = static_cast<unsigned char>(v >> 8);
}
void putBit(Bytes &b, int64_t row, int64_t i, bool set) {
    unsigned char &c = b[row + i / 8];
    const unsigned char m = static_cast<unsigned char>(0x80 >> (i % 8));
    c = static_cast<unsigned char>(set ? c | m : c & ~m);
}

// The reduction of one element without noise.
int64_t plainValue(unsigned int sd, unsigned int dd, int64_t e) {
    if (sd == RMG_DEPTH_32S && dd == RMG_DEPTH_16U) return ((e >> 16) * 2) & 0xFFFF;
    if (sd == RMG_DEPTH_32S) return e < 0 ? 0 : e >> 23;
    if (sd == RMG_DEPTH_16U) return e >> 8;
    return e > 127;
}

// The model's own noise tables, filled from rand like the library's.
struct Tables {
    double noise[1024];
    int index[1024];
    void fill() {
        for (double &v : noise) v = (std::rand() & 1023) / 1024.0;
        for (int i = 0; i < 1024; ++i) (void)std::rand();
        for (int &v : index) v = std::rand() & 1023;
    }
};

// The noise step of one element; the result also goes back to the source.
int64_t jitter(const Tables &t, unsigned int sd, unsigned int dd, int64_t e, int x, int y, int j) {
    int64_t limit, low, u;
    if (sd == RMG_DEPTH_8U) limit = 239, low = e & 15, u = 16;
    else if (sd == RMG_DEPTH_16U) limit = 65279, low = e & 255, u = 256;
    else if (dd == RMG_DEPTH_16U) limit = 0x7FFEFFFF, low = 0, u = 65536;
    else limit = 0x7EFFFFFF, low = 0, u = 16777216;
    if (e >= limit) return e;
    if (sd != RMG_DEPTH_32S && low <= static_cast<int>(9.0 * t.noise[(x + 4 * y + t.index[x & 1023]) & 1023]))
        e += u;
    const int d = static_cast<int>(2.0 * j * t.noise[(y + 4 * x + t.index[y & 1023]) & 1023] + 0.5) - j;
    int64_t e2 = e + d * u;
    if (sd == RMG_DEPTH_32S) {
        e2 = static_cast<int32_t>(static_cast<uint32_t>(e2));
        return e2 >= 0 ? e2 : e;
    }
    const int64_t max = sd == RMG_DEPTH_8U ? 255 : 65535;
    return e2 >= 0 && e2 <= max ? e2 : e;
}
int64_t jitteredValue(unsigned int sd, unsigned int dd, int64_t e) {
    if (sd == RMG_DEPTH_32S) return (dd == RMG_DEPTH_16U ? e >> 15 : e >> 23) & (dd == RMG_DEPTH_16U ? 0xFFFF : 0xFF);
    return plainValue(sd, dd, e);
}

struct Format {
    unsigned int sd, dd;
    int order, channels;
};

// The reduction of one piece: rows (and planes) of count elements.
void modelPiece(const Format &f, const Bytes &src, int64_t srcAt, int64_t srcStep, int64_t srcPlane,
                Bytes &dst, int64_t dstStep, int64_t dstPlane, int height, int width,
                const Tables *t, int j) {
    const bool plane = f.order == RMG_DATA_PLANE;
    const int planes = plane ? f.channels : 1;
    const int step = plane ? 1 : f.channels;
    const int64_t count = plane ? width : static_cast<int64_t>(width) * f.channels;
    const int es = sizeOf(f.sd), ed = sizeOf(f.dd);
    for (int p = 0; p < planes; ++p)
        for (int y = 0; y < height; ++y)
            for (int64_t x = 0; x < count; ++x) {
                if (f.dd == RMG_DEPTH_1U && x % step != 0) continue;
                const int64_t s = srcAt + p * srcPlane + y * srcStep + x * es;
                const int64_t d = p * dstPlane + y * dstStep;
                if (s + es > static_cast<int64_t>(src.size())) continue;
                if (ed == 0 ? d + x / step / 8 >= static_cast<int64_t>(dst.size())
                            : d + (x + 1) * ed > static_cast<int64_t>(dst.size()))
                    continue;
                int64_t e = getE(src, s, f.sd);
                int64_t v;
                if (t != nullptr) {
                    e = jitter(*t, f.sd, f.dd, e, static_cast<int>(x), y, j);
                    v = jitteredValue(f.sd, f.dd, e);
                } else {
                    v = plainValue(f.sd, f.dd, e);
                }
                if (ed == 0) putBit(dst, d, x / step, v != 0);
                else putE(dst, d + x * ed, f.dd, v);
            }
}

// --------------------------------------------------------------------------
// Dither model: one element at (x, y) of channel k of a piece.
// --------------------------------------------------------------------------

struct DitherModel {
    Bytes &b;
    unsigned int depth;
    int64_t off[3];
    int n, step, rowStep, width, height, q;
    int size() const { return depth == RMG_DEPTH_8U ? 1 : 2; }
    int64_t at(int k, int x, int y) const { return off[k] + int64_t(y) * rowStep + int64_t(x) * step * size(); }
    int get(int k, int x, int y) const { return static_cast<int>(getE(b, at(k, x, y), depth)); }
    void set(int k, int x, int y, int64_t v) const { putE(b, at(k, x, y), depth, v); }
    void add(int k, int x, int y, int64_t v) const { set(k, x, y, get(k, x, y) + v); }
    int quantize(int v) const {
        if (v > 65535) return 65535;
        const int base = v / q * q;
        return v - base > q / 2 ? base + q : base;
    }
    int64_t error(int k, int x, int y) const {
        const int old = get(k, x, y), e = quantize(old);
        set(k, x, y, e);
        return old - e;
    }
    static int64_t floorShift(int64_t v) { return v >= 0 ? v / 16 : -((-v + 15) / 16); }

    void fs() const {
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x)
                for (int k = 0; k < n; ++k) {
                    const int64_t err = error(k, x, y);
                    if (x + 1 < width) add(k, x + 1, y, floorShift(err * 7));
                    if (y + 1 == height) continue;
                    add(k, x, y + 1, floorShift(err * 5));
                    if (x + 1 < width) add(k, x + 1, y + 1, floorShift(err));
                    if (x > 0) add(k, x - 1, y + 1, floorShift(err * 3));
                }
    }
    void table(const int *w) const {
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x)
                for (int k = 0; k < n; ++k) {
                    const int64_t err = error(k, x, y);
                    const int right = width - x - 1 < 2 ? width - x - 1 : 2;
                    const int left = x < 2 ? x : 2;
                    for (int i = 0; i < right; ++i) add(k, x + 1 + i, y, w[i] * err);
                    for (int r = 1; r <= 2 && y + r < height; ++r)
                        for (int i = 0; i <= right + left; ++i)
                            add(k, x - left + i, y + r, w[(r == 1 ? 2 : 7) + i] * err);
                }
    }
    void ordered() const {
        static const int kTable[16] = {0, 120, 30, 150, 180, 60, 210, 90, 45, 165, 15, 135, 225, 105, 195, 75};
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x)
                for (int k = 0; k < n; ++k) {
                    const int v = get(k, x, y);
                    const int64_t t = kTable[(x & 3) * 4 + (y & 3)] * (size() == 2 ? 257 : 1);
                    const int base = v / q * q;
                    set(k, x, y, (v - base > t * q ? base + q : base) & 0xFF);
                }
    }
};

const int kJjn8[12] = {37, 26, 15, 26, 37, 26, 15, 5, 15, 26, 15, 5};
const int kStucki8[12] = {48, 24, 12, 24, 48, 24, 12, 6, 12, 24, 12, 6};
const int kJjn16[12] = {0x2555, 0x1AAA, 0x0FFF, 0x1AAA, 0x2555, 0x1AAA, 0x0FFF, 0x0555, 0x0FFF, 0x1AAA, 0x0FFF, 0x0555};
const int kStucki16[12] = {0x30C2, 0x1861, 0x0C30, 0x1861, 0x30C2, 0x1861, 0x0C30, 0x0618, 0x0C30, 0x1861, 0x0C30, 0x0618};

const Format kPairs[] = {{RMG_DEPTH_32S, RMG_DEPTH_16U, 0, 0},
                         {RMG_DEPTH_32S, RMG_DEPTH_8U, 0, 0},
                         {RMG_DEPTH_16U, RMG_DEPTH_8U, 0, 0},
                         {RMG_DEPTH_8U, RMG_DEPTH_1U, 0, 0}};
const char *const kSeqs[] = {"G", "GG", "RGB", "BGRA"};
const char *const kModels[] = {"GRAY", "GRAY", "RGB", "RGBA"};

TEST_F(ReduceRandomTest, PlainImagesAgainstTheModel) {
    std::mt19937 rng(11);
    for (int round = 0; round < 300; ++round) {
        Format f = kPairs[round % 4];
        f.order = (round / 4) % 2 ? RMG_DATA_PLANE : RMG_DATA_PIXEL;
        f.channels = 1 + static_cast<int>(rng() % 4);
        const int sh = 1 + static_cast<int>(rng() % 9), sw = static_cast<int>(rng() % 40) + 1;
        const int dh = 1 + static_cast<int>(rng() % 9), dw = static_cast<int>(rng() % 40) + 1;
        const int c = f.channels - 1;
        colortest::Image src(f.channels, f.sd, f.order, kModels[c], kSeqs[c], sh, sw, 4, rng);
        const bool coi = rng() % 4 == 0 || (f.dd == RMG_DEPTH_1U && f.channels > 1);
        const int dc = coi ? 1 : f.channels;
        colortest::Image dst(dc, f.dd, f.order, kModels[dc - 1], kSeqs[dc - 1], dh, dw, 8, rng);
        RmgROI *roi = coi ? rmgCreateROI(1 + static_cast<int>(rng() % f.channels), 0, 0, sh, sw) : nullptr;
        src.image->roi = roi;
        Bytes expected = dst.bytes();
        const int h = sh < dh ? sh : dh, w = sw < dw ? sw : dw;
        modelPiece(f, src.bytes(), 0, src.image->widthStep, int64_t(src.image->widthStep) * h, expected,
                   dst.image->widthStep, int64_t(dst.image->widthStep) * h, h, w, nullptr, 0);
        rmgReduceBits(src.image, dst.image, 0, RMG_DITHER_NONE, 3, nullptr);
        ASSERT_EQ(dst.bytes(), expected) << "round " << round << " ch " << f.channels << " coi " << coi << " " << sh << "x" << sw << " " << dh << "x" << dw;
        // The source's destructor frees its roi.
    }
    EXPECT_TRUE(rmgtest::reports().empty());
}

// Tiles of the destination: the model of each piece from the source
// rectangle at its place, with noise from the rand sequence after `seed`
// and the dither stage.
void tiledRound(std::mt19937 &rng, const Format &f, int jitterType, int dither, int levelShift,
                const char *model, const char *seq) {
    const int tw = 8 * (1 + static_cast<int>(rng() % 2)), th = 8;
    const int tx = 1 + static_cast<int>(rng() % 3), ty = 1 + static_cast<int>(rng() % 3);
    colortest::Image src(f.channels, f.sd, f.order, model, seq, th * ty, tw * tx, 4, rng);
    colortest::TiledImage dst(f.channels, f.dd, f.order, model, seq, th * ty, tw * tx, tw, th, rng);
    std::vector<Bytes> expected = dst.data;
    const unsigned seed = rng();
    Tables tables;
    std::srand(seed);
    if (jitterType != 0) tables.fill();
    const Bytes s = src.bytes();
    const int es = sizeOf(f.sd);
    const int perPixel = f.order == RMG_DATA_PLANE ? 1 : f.channels;
    const int bits = f.dd == RMG_DEPTH_8U ? 8 : f.dd == RMG_DEPTH_16U ? 16 : 1;
    int shift = levelShift < 0 ? 0 : levelShift;
    if (shift > bits) shift = bits / 2;
    for (int y = 0; y < ty; ++y)
        for (int x = 0; x < tx; ++x) {
            Bytes &tile = expected[x + y * tx];
            // A copy of the source: the noise changes it.
            Bytes copy = s;
            modelPiece(f, copy, int64_t(y) * th * src.image->widthStep + int64_t(x) * tw * perPixel * es,
                       src.image->widthStep, int64_t(src.image->widthStep) * src.image->height, tile,
                       dst.tileStep, int64_t(dst.tileStep) * th, th, tw, jitterType ? &tables : nullptr,
                       jitterType);
            if (dither == RMG_DITHER_NONE) continue;
            int q = (f.dd == RMG_DEPTH_8U ? 255 : 65535) >> shift;
            if (q == 0) q = 1;
            DitherModel m{tile, f.dd, {0, 0, 0}, 1, perPixel, dst.tileStep, tw, th, q};
            const int e = f.dd == RMG_DEPTH_8U ? 1 : 2;
            if (seq[0] != 'G') {
                m.n = 3;
                for (int k = 0; k < 3; ++k) {
                    const char letter = "RGB"[k];
                    int c = 0;
                    while (seq[c] != letter) ++c;
                    m.off[k] = f.order == RMG_DATA_PLANE ? int64_t(c) * dst.tileStep * th
                                                         : (seq[0] == 'R' ? k : 2 - k) * e;
                }
            }
            if (dither == RMG_DITHER_FS) m.fs();
            else if (dither == RMG_DITHER_BAYER) m.ordered();
            else if (dither == RMG_DITHER_JJN) m.table(e == 1 ? kJjn8 : kJjn16);
            else m.table(e == 1 ? kStucki8 : kStucki16);
        }
    std::srand(seed);
    rmgReduceBits(src.image, dst.image, jitterType, dither, levelShift, nullptr);
    ASSERT_TRUE(rmgtest::reports().empty()) << rmgtest::reports()[0].funcName << " " << rmgtest::reports()[0].context;
    ASSERT_EQ(dst.calls, colortest::walkCalls(tx, ty));
    for (size_t i = 0; i < expected.size(); ++i)
        ASSERT_EQ(dst.data[i], expected[i]) << "tile " << i << " jitter " << jitterType << " dither "
                                            << dither << " shift " << levelShift << " seq " << seq;
}

// Rounds over every pair, both orders and 1 to 4 channels (1u: one), with
// the noise that jitterOf gives for a round.
template <typename JitterOf>
void tiledPairs(unsigned seed, int rounds, JitterOf jitterOf) {
    std::mt19937 rng(seed);
    for (int round = 0; round < rounds; ++round) {
        Format f = kPairs[round % 4];
        f.order = (round / 4) % 2 ? RMG_DATA_PLANE : RMG_DATA_PIXEL;
        f.channels = f.dd == RMG_DEPTH_1U ? 1 : 1 + (round / 8) % 4;
        tiledRound(rng, f, jitterOf(round), RMG_DITHER_NONE, 0, kModels[f.channels - 1],
                   kSeqs[f.channels - 1]);
    }
    EXPECT_TRUE(rmgtest::reports().empty());
}

TEST_F(ReduceRandomTest, TiledWithoutNoiseIsThePlainReduction) {
    tiledPairs(5, 80, [](int) { return 0; });
}

TEST_F(ReduceRandomTest, TiledWithNoise) {
    tiledPairs(6, 120, [](int round) { return 1 + round % 8; });
}

TEST_F(ReduceRandomTest, TiledWithEachDither) {
    std::mt19937 rng(7);
    const int dithers[4] = {RMG_DITHER_FS, RMG_DITHER_JJN, RMG_DITHER_STUCKI, RMG_DITHER_BAYER};
    const char *const seqs[4] = {"G", "RGB", "BGR", "GRAY"};
    const char *const models[4] = {"GRAY", "RGB", "RGB", "GRAY"};
    for (int round = 0; round < 160; ++round) {
        Format f = kPairs[round % 2 == 0 ? 2 : 0];  // into 8u and into 16u
        f.order = (round / 2) % 2 ? RMG_DATA_PLANE : RMG_DATA_PIXEL;
        const int s = (round / 4) % 4;
        f.channels = s == 0 ? 1 : s == 3 ? 4 : 3;
        const char *seq = s == 3 ? "GRAY" : seqs[s];
        tiledRound(rng, f, round % 3 == 0 ? 0 : 1 + round % 8, dithers[(round / 16) % 4],
                   static_cast<int>(rng() % 20) - 2, models[s], seq);
    }
    EXPECT_TRUE(rmgtest::reports().empty());
}

}  // namespace
