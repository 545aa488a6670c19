// The per-sample model of the planar rows, written cell by cell from their
// three tables (colour with premulAlpha 0, colour with premulAlpha 1,
// destination alpha; each with and without an alpha row of B), with the
// scaled product as a division, and the rows of test samples they run on.
#ifndef RMG_TESTS_ALPHA_TEST_RMGALPHA_PLANAR_MODEL_H
#define RMG_TESTS_ALPHA_TEST_RMGALPHA_PLANAR_MODEL_H

#include <cstdint>
#include <cstdlib>
#include <new>
#include <random>
#include <vector>

#include "alpha/rmgalpha_planar.h"

namespace planartest {

enum { kOver, kIn, kOut, kAtop, kXor, kPlus };

inline int mulOf(int M, int x, int y) {
    return static_cast<int>(static_cast<int64_t>(x) * y / M);
}

// Colour of one sample; hasB false means rowAlphaB null (b is not used).
inline int colourModel(int op, int M, bool premul, bool hasB, int A, int a, int B, int b) {
    auto mul = [M](int x, int y) { return mulOf(M, x, y); };
    auto sat = [M](int x) { return x > M ? M : x; };
    const int na = M - a;
    const int nb = M - b;
    if (!premul) {
        const int A2 = mul(A, a);
        if (hasB) {
            const int B2 = mul(B, b);
            switch (op) {
            case kOver: return sat(A2 + mul(na, B2));
            case kIn: return mul(A2, b);
            case kOut: return mul(nb, A2);
            case kAtop: return sat(mul(b, A2) + mul(na, B2));
            case kXor: return sat(mul(nb, A2) + mul(na, B2));
            default: return sat(A2 + B2);
            }
        }
        switch (op) {
        case kOver: return sat(A2 + mul(na, mul(B, na)));
        case kIn: return mul(na, A2);
        case kOut: return mul(a, A2);
        case kAtop: return sat(mul(na, A2) + mul(na, mul(B, na)));
        case kXor: return sat(mul(a, A2) + mul(na, mul(B, na)));
        default: return sat(A2 + mul(na, B));
        }
    }
    if (hasB) {
        switch (op) {
        case kOver: return sat(A + mul(B, na));
        case kIn: return mul(A, b);
        case kOut: return mul(A, nb);
        case kAtop: return sat(mul(A, b) + mul(B, na));
        case kXor: return sat(mul(A, nb) + mul(B, na));
        default: return sat(A + B);
        }
    }
    switch (op) {
    case kOver: return sat(A + mul(B, na));
    case kIn: return mul(A, na);
    case kOut: return mul(A, a);
    case kAtop: return sat(mul(A, na) + mul(B, na));
    case kXor: return sat(mul(A, a) + mul(B, na));
    default: return sat(A + B);
    }
}

// Destination alpha of one sample.
inline int alphaModel(int op, int M, bool hasB, int a, int b) {
    auto mul = [M](int x, int y) { return mulOf(M, x, y); };
    auto sat = [M](int x) { return x > M ? M : x; };
    const int na = M - a;
    const int nb = M - b;
    if (hasB) {
        switch (op) {
        case kOver: return sat(a + mul(na, b));
        case kIn: return mul(a, b);
        case kOut: return mul(nb, a);
        case kAtop: return b;
        case kXor: return sat(mul(na, b) + mul(nb, a));
        default: return sat(a + b);
        }
    }
    switch (op) {
    case kOver: return sat(a + mul(na, na));
    case kIn: return mul(a, na);
    case kOut: return mul(a, a);
    case kAtop: return na;
    case kXor: return sat(mul(na, na) + mul(a, a));
    default: return M;
    }
}

// Samples with the ends of the range often: 0 and M an eighth of the time
// each, else uniform.
inline int randomSample(std::mt19937 &rng, int M) {
    const uint32_t r = rng();
    if (r % 8 == 0) return 0;
    if (r % 8 == 1) return M;
    return static_cast<int>((r >> 3) % static_cast<uint32_t>(M + 1));
}

inline int getAt(const unsigned char *p, int bytes, size_t i) {
    return bytes == 1 ? p[i] : p[2 * i] | p[2 * i + 1] << 8;
}

inline void putAt(unsigned char *p, int bytes, size_t i, int v) {
    if (bytes == 1) {
        p[i] = static_cast<unsigned char>(v);
    } else {
        p[2 * i] = static_cast<unsigned char>(v);
        p[2 * i + 1] = static_cast<unsigned char>(v >> 8);
    }
}

// A row of `count` samples that starts `offset` bytes past a 64-byte
// boundary, in a block that ends where the row ends (so the address
// sanitizer sees any read beyond it).
class Row {
public:
    Row(int bytes, size_t count, size_t offset) : bytes_(bytes), count_(count), offset_(offset) {
        const size_t size = offset + count * static_cast<size_t>(bytes);
        block_ = static_cast<unsigned char *>(
            ::operator new(size == 0 ? 1 : size, std::align_val_t{64}));
    }
    ~Row() { ::operator delete(block_, std::align_val_t{64}); }
    Row(const Row &) = delete;
    Row &operator=(const Row &) = delete;
    unsigned char *data() { return block_ + offset_; }
    int get(size_t i) { return getAt(data(), bytes_, i); }
    void put(size_t i, int v) { putAt(data(), bytes_, i, v); }
    void randomize(std::mt19937 &rng, int M) {
        for (size_t i = 0; i < count_; ++i) put(i, randomSample(rng, M));
    }

private:
    int bytes_;
    size_t count_;
    size_t offset_;
    unsigned char *block_;
};

}  // namespace planartest

#endif
