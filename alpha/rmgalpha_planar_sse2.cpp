// Planar rows, SSE2 form: 16-byte vectors.
#include "core/rmgvec.h"

#if RMG_CPU_X86
#include "alpha/rmgalpha_planar.h"
#include "alpha/rmgalpha_planar_impl.h"

namespace rmg {
namespace {

struct Sse2Planar : Sse2Vec {
    static Vec add16(Vec a, Vec b) { return _mm_add_epi16(a, b); }
    static Vec mullo16(Vec a, Vec b) { return _mm_mullo_epi16(a, b); }
    static Vec mulhiU16(Vec a, Vec b) { return _mm_mulhi_epu16(a, b); }
    static Vec srli16by8(Vec a) { return _mm_srli_epi16(a, 8); }
    static Vec addsU8(Vec a, Vec b) { return _mm_adds_epu8(a, b); }
    static Vec addsU16(Vec a, Vec b) { return _mm_adds_epu16(a, b); }
    static Vec subsU16(Vec a, Vec b) { return _mm_subs_epu16(a, b); }
};

}  // namespace

constexpr PlanarForms kPlanarSse2 = vectorPlanarForms<Sse2Planar>();

}  // namespace rmg

#endif
