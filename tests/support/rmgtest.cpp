#include "support/rmgtest.h"

namespace rmgtest {

std::vector<Report> &reports() {
    static std::vector<Report> list;
    return list;
}

int recordingHandler(int status, const char *funcName, const char *context,
                     const char *fileName, int line) {
    reports().push_back(Report{status, funcName ? funcName : "(null)",
                               context ? context : "(null)", fileName ? fileName : "(null)",
                               line});
    return status;
}

std::vector<Dialog> &dialogs() {
    static std::vector<Dialog> list;
    return list;
}

std::vector<std::string> &endings() {
    static std::vector<std::string> list;
    return list;
}

int &dialogAnswer() {
    static int answer = RMG_IDNO;
    return answer;
}

namespace {
int recordBox(const char *text, const char *caption, unsigned int style) {
    dialogs().push_back(Dialog{text, caption, style});
    return dialogAnswer();
}
void recordEnd(const char *text) { endings().push_back(text); }
const RmgDialogHost kRecordingHost = {recordBox, recordEnd};
}  // namespace

const RmgDialogHost *recordingHost() { return &kRecordingHost; }

void ErrorStateTest::SetUp() {
    rmgError(RMG_StsOk, nullptr, nullptr, nullptr, 0);
    rmgSetErrMode(RMG_ErrorModeLeaf);
    rmgRedirectError(recordingHandler);
    rmgSetDialogHost(nullptr);
    reports().clear();
    dialogs().clear();
    endings().clear();
    dialogAnswer() = RMG_IDNO;
}

void ErrorStateTest::TearDown() {
    rmgError(RMG_StsOk, nullptr, nullptr, nullptr, 0);
    rmgSetErrMode(RMG_ErrorModeLeaf);
    rmgRedirectError(nullptr);
    rmgSetDialogHost(nullptr);
}

}  // namespace rmgtest
