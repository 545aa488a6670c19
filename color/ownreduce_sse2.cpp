// Word reduction rows, sse2 form.
#include "core/rmgcpu.h"

#if RMG_CPU_X86
#include "color/ownreduce.h"
#include "color/ownreduce_vec.h"

namespace rmg {

constexpr ReduceForms kReduceSse2 = {reduceRow32s16uVec, reduceRow32s8uVec, reduceRow16u8uVec};

}  // namespace rmg

#endif
