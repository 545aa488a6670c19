// Mirror row kernel, AVX2 form: 32-byte vectors. A block takes two byte
// shuffles within the 16-byte lanes, one of the vector as loaded and one
// with its lanes exchanged, together any order of its bytes.
#include "core/rmgvec.h"

#if RMG_CPU_X86
#include "geometry/rmgmirr.h"
#include "geometry/rmgmirr_impl.h"

namespace rmg {
namespace {

template <int P>
constexpr LaneShuffle kShuffle = makeLaneShuffle(32, P);

struct Avx2 : Avx2Vec {
    template <int P>
    static constexpr size_t kUnits = 32 / P;

    template <int P>
    static Vec reverse(Vec v) {
        const Vec same = loadu(kShuffle<P>.same);
        const Vec cross = loadu(kShuffle<P>.cross);
        const Vec swapped = _mm256_permute2x128_si256(v, v, 0x01);
        return _mm256_or_si256(_mm256_shuffle_epi8(v, same), _mm256_shuffle_epi8(swapped, cross));
    }
};

}  // namespace

constexpr MirrorForms kMirrorAvx2 = {reverseForm<Avx2>};

}  // namespace rmg

#endif
