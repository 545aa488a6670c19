// Running a test once per vector form of the kernels: the forms this
// processor can run, a scope that forces one of them and puts the detected
// form back at its end, and a loop of a test body over all of them.
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

// Runs `body(form)` once in each kernel form this processor runs, with that
// form forced and its name in the trace of any failure.
template <typename Body>
void inEveryForm(Body body) {
    for (int form : runnableForms()) {
        ForcedForm forced(form);
        SCOPED_TRACE(rmg::cpuFormName(form));
        body(form);
    }
}

}  // namespace rmgtest

#endif
