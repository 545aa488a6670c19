// The choice of vector form: what is read from the processor, forcing a
// form and putting the detected one back, and the fall-back of the tables.
#include <gtest/gtest.h>

#include <cstdio>

#include "core/rmgcpu.h"
#include "support/rmgforms.h"

#if RMG_CPU_X86
#include <cpuid.h>
#endif

namespace {

#if RMG_CPU_X86
// The compiler's own reading of the processor (it checks the register
// state the operating system saves, as the library does).
struct Reading {
    bool sse2, avx, avx2, bmi2, avx512f, avx512bw, avx512vl;
};

Reading compilersReading() {
    __builtin_cpu_init();
    return Reading{__builtin_cpu_supports("sse2") != 0,     __builtin_cpu_supports("avx") != 0,
                   __builtin_cpu_supports("avx2") != 0,     __builtin_cpu_supports("bmi2") != 0,
                   __builtin_cpu_supports("avx512f") != 0,  __builtin_cpu_supports("avx512bw") != 0,
                   __builtin_cpu_supports("avx512vl") != 0};
}
#endif

TEST(CpuForm, FeaturesAgreeWithTheCompilersReading) {
#if RMG_CPU_X86
    const uint32_t f = rmg::cpuFeatures();
    const Reading has = compilersReading();
    EXPECT_EQ((f & rmg::kCpuSse2) != 0, has.sse2);
    EXPECT_EQ((f & rmg::kCpuAvx) != 0, has.avx);
    EXPECT_EQ((f & rmg::kCpuAvx2) != 0, has.avx2);
    EXPECT_EQ((f & rmg::kCpuBmi2) != 0, has.bmi2);
    EXPECT_EQ((f & rmg::kCpuAvx512F) != 0, has.avx512f);
    EXPECT_EQ((f & rmg::kCpuAvx512BW) != 0, has.avx512bw);
    EXPECT_EQ((f & rmg::kCpuAvx512VL) != 0, has.avx512vl);
#else
    EXPECT_EQ(rmg::cpuFeatures(), 0u);
#endif
}

TEST(CpuForm, StringStoreBitFollowsCpuid) {
#if RMG_CPU_X86
    unsigned int eax = 0, ebx = 0, ecx = 0, edx = 0;
    const bool erms = __get_cpuid_count(7, 0, &eax, &ebx, &ecx, &edx) != 0 && (ebx & (1u << 9));
    EXPECT_EQ((rmg::cpuFeatures() & rmg::kCpuErms) != 0, erms);
#else
    EXPECT_EQ(rmg::cpuFeatures() & rmg::kCpuErms, 0u);
#endif
}

TEST(CpuForm, BestFormIsTheWidestTheProcessorRuns) {
    int expected = rmg::kFormScalar;
#if RMG_CPU_X86
    const Reading has = compilersReading();
    if (has.sse2) expected = rmg::kFormSse2;
    if (has.avx2 && has.bmi2) expected = rmg::kFormAvx2;
    if (expected == rmg::kFormAvx2 && has.avx512f && has.avx512bw && has.avx512vl)
        expected = rmg::kFormAvx512;
#endif
    EXPECT_EQ(rmg::cpuBestForm(), expected);
    std::printf("processor form: %s\n", rmg::cpuFormName(expected));
}

TEST(CpuForm, FirstCallDetectsTheBestForm) {
    // As after loading: nothing read yet.
    rmg::detail::gActiveForm = -1;
    EXPECT_EQ(rmg::cpuActiveForm(), rmg::cpuBestForm());
    EXPECT_EQ(rmg::detail::gActiveForm, rmg::cpuBestForm());
}

TEST(CpuForm, ForcedFormIsReportedAndReleased) {
    for (int form : rmgtest::runnableForms()) {
        EXPECT_TRUE(rmg::cpuForceForm(form));
        EXPECT_EQ(rmg::cpuActiveForm(), form);
        rmg::cpuReleaseForm();
        EXPECT_EQ(rmg::cpuActiveForm(), rmg::cpuBestForm());
    }
}

TEST(CpuForm, FormsTheProcessorLacksAreRefused) {
    const int best = rmg::cpuBestForm();
    ASSERT_TRUE(rmg::cpuForceForm(rmg::kFormScalar));
    for (int form : {-1, best + 1, rmg::kFormCount, 100}) {
        EXPECT_FALSE(rmg::cpuForceForm(form)) << form;
        EXPECT_EQ(rmg::cpuActiveForm(), rmg::kFormScalar) << form;
    }
    rmg::cpuReleaseForm();
    EXPECT_EQ(rmg::cpuActiveForm(), best);
}

TEST(CpuForm, FormNames) {
    EXPECT_STREQ(rmg::cpuFormName(rmg::kFormScalar), "scalar");
    EXPECT_STREQ(rmg::cpuFormName(rmg::kFormSse2), "sse2");
    EXPECT_STREQ(rmg::cpuFormName(rmg::kFormAvx2), "avx2");
    EXPECT_STREQ(rmg::cpuFormName(rmg::kFormAvx512), "avx512");
    EXPECT_STREQ(rmg::cpuFormName(4), "?");
}

int form0() { return 0; }
int form2() { return 2; }

TEST(CpuForm, MissingFormsFallBackToTheFormBelow) {
    using Fn = int (*)();
    constexpr rmg::FormTable<Fn> table = rmg::formTable<Fn>(form0, nullptr, form2, nullptr);
    EXPECT_EQ(table.at(rmg::kFormScalar)(), 0);
    EXPECT_EQ(table.at(rmg::kFormSse2)(), 0);
    EXPECT_EQ(table.at(rmg::kFormAvx2)(), 2);
    EXPECT_EQ(table.at(rmg::kFormAvx512)(), 2);
    {
        rmgtest::ForcedForm scalar(rmg::kFormScalar);
        EXPECT_EQ(table.get()(), 0);
    }
    EXPECT_EQ(table.get()(), rmg::cpuBestForm() >= rmg::kFormAvx2 ? 2 : 0);
}

}  // namespace
