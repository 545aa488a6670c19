// Running a test once per vector form of the kernels: the forms this
// processor can run, and a scope that forces one of them and puts the
// detected form back at its end.
#ifndef RMG_TESTS_SUPPORT_RMGFORMS_H
#define RMG_TESTS_SUPPORT_RMGFORMS_H

#include <gtest/gtest.h>

#include <vector>

#include "core/rmgcpu.h"

namespace rmgtest {

// scalar, then each wider form up to the widest the processor runs.
inline std::vector<int> runnableForms() {
    std::vector<int> forms;
    for (int form = rmg::kFormScalar; form <= rmg::cpuBestForm(); ++form) forms.push_back(form);
    return forms;
}

class ForcedForm {
public:
    explicit ForcedForm(int form) { EXPECT_TRUE(rmg::cpuForceForm(form)) << form; }
    ~ForcedForm() { rmg::cpuReleaseForm(); }
    ForcedForm(const ForcedForm &) = delete;
    ForcedForm &operator=(const ForcedForm &) = delete;
};

}  // namespace rmgtest

#endif
