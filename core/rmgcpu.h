// Run-time choice of the vector form of a kernel.
//
// Every vector kernel family comes in up to four forms: portable C++
// (scalar), SSE2, AVX2 and AVX-512. The processor's features are read at the
// first call that needs them (cpuid, and xgetbv for the register state the
// operating system saves) and kept in two words of constant-initialised
// data, so loading the library runs no code. A family gathers its kernels
// of one form in a constant record, and keeps a `FormTable` of the records,
// built at compile time:
//
//     constexpr rmg::FormTable<const FillForms *> kFill =
//         rmg::formTable<const FillForms *>(&kFillScalar, RMG_FORM_SSE2(&kFillSse2),
//                                           RMG_FORM_AVX2(&kFillAvx2),
//                                           RMG_FORM_AVX512(&kFillAvx512));
//     kFill.get()->run(row, count, value, size);
//
// A form a family doesn't have (nullptr in its place) falls back to the next
// lower one; on processors other than x86 only the scalar form exists.
//
// Rule for the files compiled for one instruction set (*_sse2.cpp,
// *_avx2.cpp, *_avx512.cpp): they must not define or instantiate any inline
// function or template with external linkage, the standard library's
// included. The linker keeps one copy of each such function, and it may be
// the one compiled for the wider instruction set, which then runs on every
// processor. Helpers of those files live in an anonymous namespace; the
// basic vector operations of each instruction set are in core/rmgvec.h.
#ifndef RMG_CORE_RMGCPU_H
#define RMG_CORE_RMGCPU_H

#include <cstddef>
#include <cstdint>

#if defined(__x86_64__) || defined(__i386__) || defined(_M_X64) || defined(_M_IX86)
#define RMG_CPU_X86 1
#define RMG_FORM_SSE2(fn) fn
#define RMG_FORM_AVX2(fn) fn
#define RMG_FORM_AVX512(fn) fn
#else
#define RMG_CPU_X86 0
#define RMG_FORM_SSE2(fn) nullptr
#define RMG_FORM_AVX2(fn) nullptr
#define RMG_FORM_AVX512(fn) nullptr
#endif

namespace rmg {

// The forms, in order of width; a processor that runs one runs those below.
enum CpuForm : int {
    kFormScalar = 0,
    kFormSse2 = 1,
    kFormAvx2 = 2,
    kFormAvx512 = 3,
};
constexpr int kFormCount = 4;

// Feature bits of cpuFeatures(). The AVX and AVX-512 bits are set only when
// the operating system saves the registers they need (xgetbv).
enum CpuFeature : uint32_t {
    kCpuSse2 = 1u << 0,
    kCpuAvx = 1u << 1,
    kCpuAvx2 = 1u << 2,
    kCpuBmi2 = 1u << 3,
    kCpuAvx512F = 1u << 4,
    kCpuAvx512BW = 1u << 5,
    kCpuAvx512VL = 1u << 6,
    kCpuErms = 1u << 7,  // fast `rep stosb` and `rep movsb`
};

// The processor's features; read at the first call.
uint32_t cpuFeatures();

// The widest form this processor and operating system can run.
int cpuBestForm();

// Name of a form ("scalar", "sse2", "avx2", "avx512"), "?" for others.
const char *cpuFormName(int form);

// For tests and benchmarks: makes every kernel family use `form` (or its
// own next lower form). A form above cpuBestForm(), or outside the range,
// is refused: nothing changes and the result is false.
bool cpuForceForm(int form);

// Puts the detected form back after cpuForceForm.
void cpuReleaseForm();

namespace detail {
// The form the kernels use: -1 until the first call has read the processor.
extern int gActiveForm;
int detectActiveForm();
// The feature bits, for a kernel reached through a FormTable (the table has
// read the processor by then). A kernel may read this word directly, where
// calling cpuFeatures() would make it keep vector registers across a call.
// Before the first reading it holds only the bit 0x80000000.
extern uint32_t gFeatures;
}  // namespace detail

// The form the kernels use now: the detected one unless a test forced one.
inline int cpuActiveForm() {
    const int form = detail::gActiveForm;
    return form >= 0 ? form : detail::detectActiveForm();
}

// One kernel signature of a family, one entry per form.
template <typename Fn>
struct FormTable {
    Fn forms[kFormCount];

    Fn get() const { return forms[cpuActiveForm()]; }
    Fn at(int form) const { return forms[form]; }
};

namespace detail {
// An entry of formTable: the given kernel, or for a literal null the form
// below. The test is by type, not by value: with the sanitizers on, the
// compiler won't fold a comparison of a function's address with null.
template <typename Fn>
constexpr Fn formOr(Fn form, Fn) {
    return form;
}
template <typename Fn>
constexpr Fn formOr(std::nullptr_t, Fn below) {
    return below;
}
}  // namespace detail

// Builds a table at compile time; a null entry (nullptr, as RMG_FORM_SSE2
// and its kin give off x86) takes the form below it.
template <typename Fn, typename Sse2, typename Avx2, typename Avx512>
constexpr FormTable<Fn> formTable(Fn scalar, Sse2 sse2, Avx2 avx2, Avx512 avx512) {
    const Fn s2 = detail::formOr<Fn>(sse2, scalar);
    const Fn a2 = detail::formOr<Fn>(avx2, s2);
    const Fn a5 = detail::formOr<Fn>(avx512, a2);
    return FormTable<Fn>{{scalar, s2, a2, a5}};
}

}  // namespace rmg

#endif
