// Mirror row kernel, SSE2 form: 16-byte vectors. SSE2 has no byte shuffle:
// a block is reversed in units of its element (dwords, words, bytes) with
// the word and dword shuffles, and a 3-channel pixel, which comes out with
// its first and last element exchanged, gets them back in place with byte
// shifts under masks.
#include "core/rmgvec.h"

#if RMG_CPU_X86
#include "geometry/rmgmirr.h"
#include "geometry/rmgmirr_impl.h"

namespace rmg {
namespace {

struct Sse2 : Sse2Vec {
    template <int P>
    static constexpr size_t kUnits = 16 / P;

    static Vec words(Vec v) {
        v = _mm_shuffle_epi32(v, 0x1B);
        v = _mm_shufflelo_epi16(v, 0xB1);
        return _mm_shufflehi_epi16(v, 0xB1);
    }
    static Vec bytes(Vec v) {
        v = words(v);
        return _mm_or_si128(_mm_slli_epi16(v, 8), _mm_srli_epi16(v, 8));
    }
    // Pixels of three elements of E bytes reversed element by element:
    // element 0 and 2 of each pixel change places.
    template <int E>
    static Vec fixTriples(Vec v) {
        alignas(16) static constexpr unsigned char kMasks[3][16] = {
#define RMG_M(r) \
    {(0 / E) % 3 == r, (1 / E) % 3 == r, (2 / E) % 3 == r, (3 / E) % 3 == r, (4 / E) % 3 == r, \
     (5 / E) % 3 == r, (6 / E) % 3 == r, (7 / E) % 3 == r, (8 / E) % 3 == r, (9 / E) % 3 == r, \
     (10 / E) % 3 == r, (11 / E) % 3 == r, (12 / E) % 3 == r, (13 / E) % 3 == r,            \
     (14 / E) % 3 == r, (15 / E) % 3 == r}
            RMG_M(0), RMG_M(1), RMG_M(2)
#undef RMG_M
        };
        const Vec zero = _mm_setzero_si128();
        const Vec m0 = _mm_cmpgt_epi8(load(kMasks[0]), zero);
        const Vec m1 = _mm_cmpgt_epi8(load(kMasks[1]), zero);
        const Vec m2 = _mm_cmpgt_epi8(load(kMasks[2]), zero);
        return _mm_or_si128(_mm_or_si128(_mm_and_si128(m0, _mm_srli_si128(v, 2 * E)),
                                         _mm_and_si128(m1, v)),
                            _mm_and_si128(m2, _mm_slli_si128(v, 2 * E)));
    }

    template <int P>
    static Vec reverse(Vec v) {
        if constexpr (P == 1) return bytes(v);
        if constexpr (P == 2) return words(v);
        if constexpr (P == 3) return fixTriples<1>(bytes(v));
        if constexpr (P == 4) return _mm_shuffle_epi32(v, 0x1B);
        if constexpr (P == 6) return fixTriples<2>(words(v));
        if constexpr (P == 8) return _mm_shuffle_epi32(v, 0x4E);
        if constexpr (P == 12) return _mm_srli_si128(v, 4);
        return v;
    }
};

}  // namespace

constexpr MirrorForms kMirrorSse2 = {reverseForm<Sse2>};

}  // namespace rmg

#endif
