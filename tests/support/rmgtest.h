// Shared pieces of the test suite: a fixture that puts the library's error
// state back to its start values around every test, and a recording handler
// and dialog host.
#ifndef RMG_TESTS_SUPPORT_RMGTEST_H
#define RMG_TESTS_SUPPORT_RMGTEST_H

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "rmg.h"

namespace rmgtest {

// One call of an error handler.
struct Report {
    int status;
    std::string funcName;
    std::string context;
    std::string fileName;
    int line;
};

// What the recording handler has seen since the fixture's start.
std::vector<Report> &reports();

// A handler that records each call and returns its status.
int recordingHandler(int status, const char *funcName, const char *context,
                     const char *fileName, int line);

// One call of the dialog host.
struct Dialog {
    std::string text;
    std::string caption;
    unsigned int style;
};
std::vector<Dialog> &dialogs();
std::vector<std::string> &endings();
// The button the recording host answers with.
int &dialogAnswer();
// A host that records its calls; endProcess records the text and returns,
// which lets a test see the end of the process without ending it.
const RmgDialogHost *recordingHost();

// Fixture: error state at its start values (status 0, Leaf mode, default
// handler, system host), with the recording handler installed unless a test
// puts the default one back.
class ErrorStateTest : public ::testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;
};

}  // namespace rmgtest

#endif
