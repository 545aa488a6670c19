// Status and error reporting: the sticky status word, the trace codes, the
// status texts, the handler and its replacement, and the default handler's
// dialog with its messages, captions and three outcomes.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "rmg.h"
#include "support/rmgtest.h"

namespace {

using rmgtest::dialogAnswer;
using rmgtest::dialogs;
using rmgtest::endings;
using rmgtest::reports;

class ErrorTest : public rmgtest::ErrorStateTest {};

// The default handler with the recording dialog host.
class DialogTest : public rmgtest::ErrorStateTest {
protected:
    void SetUp() override {
        ErrorStateTest::SetUp();
        rmgRedirectError(nullptr);
        rmgSetDialogHost(rmgtest::recordingHost());
    }
};

const char kLeafTrailer[] = "\n\nErrMode=RMG_ErrorModeLeaf\n\nTerminate the application?";
const char kParentTrailer[] = "\n\nErrMode=RMG_ErrorModeParent\n\nContinue?";
const char kExit[] = "RMG Library:\nterminating the application";

TEST_F(ErrorTest, StatusStartsAtOkAndSticks) {
    EXPECT_EQ(rmgGetErrStatus(), RMG_StsOk);
    rmgError(RMG_StsBadArg, "f", "c", "m", 1);
    EXPECT_EQ(rmgGetErrStatus(), RMG_StsBadArg);
    EXPECT_EQ(wrmgGetErrStatus(), RMG_StsBadArg);
    rmgError(RMG_StsError, "f", "c", "m", 2);
    EXPECT_EQ(rmgGetErrStatus(), RMG_StsError);
    rmgError(7, "f", "c", "m", 3);  // any value is stored
    EXPECT_EQ(rmgGetErrStatus(), 7);
    ASSERT_EQ(reports().size(), 3u);
}

TEST_F(ErrorTest, TraceCodesReachTheHandlerButKeepTheStatus) {
    rmgError(RMG_StsNoMem, "f", "c", "m", 1);
    EXPECT_EQ(rmgError(RMG_StsBackTrace, "g", "ctx", "mod", 9), RMG_StsBackTrace);
    EXPECT_EQ(rmgGetErrStatus(), RMG_StsNoMem);
    EXPECT_EQ(rmgError(RMG_StsAutoTrace, "g", "ctx", "mod", 9), RMG_StsAutoTrace);
    EXPECT_EQ(rmgGetErrStatus(), RMG_StsNoMem);
    ASSERT_EQ(reports().size(), 3u);
    EXPECT_EQ(reports()[1].status, RMG_StsBackTrace);
    EXPECT_EQ(reports()[2].status, RMG_StsAutoTrace);
    EXPECT_EQ(reports()[2].funcName, "g");
    EXPECT_EQ(reports()[2].context, "ctx");
    EXPECT_EQ(reports()[2].fileName, "mod");
    EXPECT_EQ(reports()[2].line, 9);
}

TEST_F(ErrorTest, ZeroClearsWithoutCallingTheHandler) {
    rmgError(RMG_StsBadArg, "f", "c", "m", 1);
    EXPECT_EQ(rmgError(RMG_StsOk, "f", "c", "m", 1), 0);
    EXPECT_EQ(rmgGetErrStatus(), RMG_StsOk);
    EXPECT_EQ(reports().size(), 1u);
}

TEST_F(ErrorTest, ErrorReturnsWhatTheHandlerReturns) {
    rmgRedirectError([](int, const char *, const char *, const char *, int) { return 1234; });
    EXPECT_EQ(rmgError(RMG_StsBadArg, "f", "c", "m", 1), 1234);
}

TEST_F(ErrorTest, StatusTextsOfTheTable) {
    EXPECT_STREQ(rmgErrStatusText(0), "No Error");
    EXPECT_STREQ(rmgErrStatusText(-1), "Backtrace");
    EXPECT_STREQ(rmgErrStatusText(-2), "Unknown error");
    EXPECT_STREQ(rmgErrStatusText(-3), "Internal error (bad state)");
    EXPECT_STREQ(rmgErrStatusText(-4), "Out of memory");
    EXPECT_STREQ(rmgErrStatusText(-5), "Bad argument");
    EXPECT_STREQ(rmgErrStatusText(-6), "Unsupported function");
    EXPECT_STREQ(rmgErrStatusText(-7), "Iteration convergence failed");
    EXPECT_STREQ(rmgErrStatusText(-8), "Autotrace call");
}

TEST_F(ErrorTest, UnknownCodesShareOneStaticBuffer) {
    const char *first = rmgErrStatusText(-9);
    EXPECT_STREQ(first, "Unknown error code -9");
    const char *second = rmgErrStatusText(1);
    EXPECT_STREQ(second, "Unknown status code 1");
    EXPECT_EQ(first, second);
    EXPECT_STREQ(rmgErrStatusText(-2147483647 - 1), "Unknown error code -2147483648");
    EXPECT_STREQ(rmgErrStatusText(2147483647), "Unknown status code 2147483647");
}

TEST_F(ErrorTest, RedirectReturnsThePreviousHandler) {
    EXPECT_EQ(rmgRedirectError(nullptr), &rmgtest::recordingHandler);
    EXPECT_EQ(rmgRedirectError(rmgtest::recordingHandler), &rmgDefaultErrorHandler);
    // Null after a custom handler: the custom one comes back, the default
    // is in force again.
    EXPECT_EQ(rmgRedirectError(nullptr), &rmgtest::recordingHandler);
    EXPECT_EQ(rmgRedirectError(nullptr), &rmgDefaultErrorHandler);
}

TEST_F(ErrorTest, ModeStoresAnyValue) {
    EXPECT_EQ(rmgGetErrMode(), RMG_ErrorModeLeaf);
    rmgSetErrMode(RMG_ErrorModeParent);
    EXPECT_EQ(rmgGetErrMode(), RMG_ErrorModeParent);
    rmgSetErrMode(-17);
    EXPECT_EQ(rmgGetErrMode(), -17);
}

TEST_F(ErrorTest, StatusPointerIsTheStatusWord) {
    int *status = rmgErrStatusPointer();
    ASSERT_NE(status, nullptr);
    rmgError(RMG_StsInternal, "f", "c", "m", 1);
    EXPECT_EQ(*status, RMG_StsInternal);
    rmgSetErrStatus(RMG_StsNoConv);
    EXPECT_EQ(*status, RMG_StsNoConv);
    *status = RMG_StsOk;
    EXPECT_EQ(rmgGetErrStatus(), RMG_StsOk);
}

TEST_F(ErrorTest, LeafExitReturnsOutsideLeafMode) {
    rmgSetErrMode(RMG_ErrorModeParent);
    EXPECT_EQ(rmgLeafExit(42), 42);
    rmgSetErrMode(RMG_ErrorModeSilent);
    EXPECT_EQ(rmgLeafExit(-3), -3);
}

TEST(ErrorDeathTest, LeafExitEndsTheProcessInLeafMode) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            rmgSetErrMode(RMG_ErrorModeLeaf);
            rmgLeafExit(5);
        },
        ::testing::ExitedWithCode(1), "");
}

TEST_F(ErrorTest, VersionRecord) {
    const RmgLibVersion *v = rmgGetLibVersion();
    ASSERT_NE(v, nullptr);
    EXPECT_EQ(v->major, 1);
    EXPECT_EQ(v->minor, 3);
    EXPECT_EQ(v->build, 3);
    EXPECT_STREQ(v->libraryName, "rmgm5l.lib");
    EXPECT_STREQ(v->versionText, "v1.0 Beta 3");
    EXPECT_STREQ(v->internalVersion, "[1.03.03, 06/30/97]");
    EXPECT_STREQ(v->buildDate, "Jul  7 1997");
    EXPECT_STREQ(v->compiler, "Microsoft");
    EXPECT_EQ(rmgGetLibVersion(), v);
}

TEST_F(DialogTest, LeafBoxAnsweredNoContinues) {
    EXPECT_EQ(rmgError(RMG_StsBadArg, "rmgCopy", "srcImage->depth != dstImage->depth", "rmgSCE",
                       120),
              RMG_StsBadArg);
    ASSERT_EQ(dialogs().size(), 1u);
    EXPECT_EQ(dialogs()[0].text, std::string("in function [rmgSCE:120]:rmgCopy():\n"
                                             "srcImage->depth != dstImage->depth") +
                                     kLeafTrailer);
    EXPECT_EQ(dialogs()[0].caption, "RMG Library Error: Bad argument");
    EXPECT_EQ(dialogs()[0].style, 0x1004u);
    EXPECT_TRUE(endings().empty());
    EXPECT_EQ(rmgGetErrStatus(), RMG_StsBadArg);
}

TEST_F(DialogTest, LeafBoxAnsweredYesEndsTheProcess) {
    dialogAnswer() = RMG_IDYES;
    EXPECT_EQ(rmgError(RMG_StsBadArg, "f", "c", "m", 1), RMG_StsBadArg);
    ASSERT_EQ(endings().size(), 1u);
    EXPECT_EQ(endings()[0], kExit);
}

TEST_F(DialogTest, ParentBoxOkContinuesCancelEnds) {
    rmgSetErrMode(RMG_ErrorModeParent);
    dialogAnswer() = RMG_IDOK;
    rmgError(RMG_StsNoMem, "rmgDecimate", "no memory", "rmgdecim", 7);
    ASSERT_EQ(dialogs().size(), 1u);
    EXPECT_EQ(dialogs()[0].text,
              std::string("in function [rmgdecim:7]:rmgDecimate():\nno memory") + kParentTrailer);
    EXPECT_EQ(dialogs()[0].caption, "RMG Library Error: Out of memory");
    EXPECT_EQ(dialogs()[0].style, 0x1001u);
    EXPECT_TRUE(endings().empty());

    dialogAnswer() = RMG_IDCANCEL;
    rmgError(RMG_StsNoMem, "rmgDecimate", "no memory", "rmgdecim", 7);
    ASSERT_EQ(endings().size(), 1u);
    EXPECT_EQ(endings()[0], kExit);
}

TEST_F(DialogTest, YesInParentModeAndOkInLeafModeContinue) {
    rmgSetErrMode(RMG_ErrorModeParent);
    dialogAnswer() = RMG_IDYES;
    rmgError(RMG_StsBadArg, "f", "c", "m", 1);
    rmgSetErrMode(RMG_ErrorModeLeaf);
    dialogAnswer() = RMG_IDCANCEL;
    rmgError(RMG_StsBadArg, "f", "c", "m", 1);
    EXPECT_EQ(dialogs().size(), 2u);
    EXPECT_TRUE(endings().empty());
}

TEST_F(DialogTest, SilentModeStoresAndShowsNothing) {
    rmgSetErrMode(RMG_ErrorModeSilent);
    EXPECT_EQ(rmgError(RMG_StsBadArg, "f", "c", "m", 1), RMG_StsBadArg);
    EXPECT_EQ(rmgGetErrStatus(), RMG_StsBadArg);
    EXPECT_TRUE(dialogs().empty());
    EXPECT_TRUE(endings().empty());
}

TEST_F(DialogTest, OtherModesShowNothing) {
    rmgSetErrMode(3);
    EXPECT_EQ(rmgError(RMG_StsInternal, "f", "c", "m", 1), RMG_StsInternal);
    rmgSetErrMode(-1);
    EXPECT_EQ(rmgError(RMG_StsInternal, "f", "c", "m", 1), RMG_StsInternal);
    EXPECT_TRUE(dialogs().empty());
    EXPECT_TRUE(endings().empty());
}

TEST_F(DialogTest, MissingPartsAreReplaced) {
    rmgError(RMG_StsBadArg, nullptr, "ctx", nullptr, -3);
    ASSERT_EQ(dialogs().size(), 1u);
    EXPECT_EQ(dialogs()[0].text, std::string("in function [:0]:<unknown>():\nctx") + kLeafTrailer);
    rmgDefaultErrorHandler(RMG_StsBadArg, "f", nullptr, "m", 2);
    ASSERT_EQ(dialogs().size(), 2u);
    EXPECT_EQ(dialogs()[1].text, std::string("in function [m:2]:f():\n") + kLeafTrailer);
}

TEST_F(DialogTest, TraceFormatsAndCaptionOfTheStoredStatus) {
    rmgSetErrMode(RMG_ErrorModeParent);
    rmgError(RMG_StsBadArg, "f", "c", "m", 1);
    rmgError(RMG_StsBackTrace, "rmgZoom", "step", "rmgZoom", 33);
    rmgError(RMG_StsAutoTrace, "rmgZoom", "step", "rmgZoom", 34);
    ASSERT_EQ(dialogs().size(), 3u);
    EXPECT_EQ(dialogs()[1].text,
              std::string("called from [rmgZoom:33]:rmgZoom():\nstep") + kParentTrailer);
    EXPECT_EQ(dialogs()[2].text,
              std::string("called from [rmgZoom:34]:\nrmgZoom(step)") + kParentTrailer);
    EXPECT_EQ(dialogs()[1].caption, "RMG Library Error: Bad argument");
    EXPECT_EQ(dialogs()[2].caption, "RMG Library Error: Bad argument");
}

TEST_F(DialogTest, CaptionOfAnUnknownCode) {
    rmgError(12, "f", "c", "m", 1);
    ASSERT_EQ(dialogs().size(), 1u);
    EXPECT_EQ(dialogs()[0].caption, "RMG Library Error: Unknown status code 12");
    EXPECT_EQ(dialogs()[0].text, std::string("in function [m:1]:f():\nc") + kLeafTrailer);
}

TEST_F(DialogTest, LongMessagesAreCutAt1023Characters) {
    const std::string context(5000, 'x');
    const std::string name(3000, 'n');
    rmgError(RMG_StsBadArg, "f", context.c_str(), "m", 1);
    rmgError(RMG_StsBadArg, name.c_str(), "c", name.c_str(), 1);
    ASSERT_EQ(dialogs().size(), 2u);
    const std::string head = "in function [m:1]:f():\n";
    EXPECT_EQ(dialogs()[0].text, head + context.substr(0, 1023 - head.size()));
    EXPECT_EQ(dialogs()[1].text, "in function [" + name.substr(0, 1023 - 13));
    // Just at the limit nothing is cut.
    const std::string fits(1023 - head.size() - (sizeof kLeafTrailer - 1), 'y');
    rmgError(RMG_StsBadArg, "f", fits.c_str(), "m", 1);
    EXPECT_EQ(dialogs()[2].text, head + fits + kLeafTrailer);
    EXPECT_EQ(dialogs()[2].text.size(), 1023u);
}

TEST_F(DialogTest, NoAfterALeafBoxKeepsTheStatus) {
    rmgError(RMG_StsBadArg, "f", "c", "m", 1);
    EXPECT_EQ(rmgGetErrStatus(), RMG_StsBadArg);
    EXPECT_TRUE(endings().empty());
    EXPECT_EQ(rmgGetErrStatus(), RMG_StsBadArg);
}

TEST_F(DialogTest, SetDialogHostReturnsThePrevious) {
    const RmgDialogHost *mine = rmgtest::recordingHost();
    const RmgDialogHost *system = rmgSetDialogHost(nullptr);
    EXPECT_EQ(system, mine);
    const RmgDialogHost *again = rmgSetDialogHost(mine);
    EXPECT_NE(again, mine);
    EXPECT_NE(again, nullptr);
    EXPECT_EQ(rmgSetDialogHost(nullptr), mine);
}

#if !defined(_WIN32)
// The console host of non-Windows systems: the dialog goes to standard
// error, the answer lets the operation go on, and the end of the process
// writes its text and exits with status 1.
TEST(ConsoleHostTest, LeafDialogGoesToStandardErrorAndContinues) {
    rmgRedirectError(nullptr);
    rmgSetDialogHost(nullptr);
    rmgSetErrMode(RMG_ErrorModeLeaf);
    ::testing::internal::CaptureStderr();
    rmgError(RMG_StsBadArg, "rmgSet", "bad", "rmgSCE", 5);
    const std::string out = ::testing::internal::GetCapturedStderr();
    EXPECT_EQ(out, std::string("RMG Library Error: Bad argument\n"
                               "in function [rmgSCE:5]:rmgSet():\nbad") +
                       kLeafTrailer + "\n");
    EXPECT_EQ(rmgGetErrStatus(), RMG_StsBadArg);
    rmgSetErrMode(RMG_ErrorModeParent);
    ::testing::internal::CaptureStderr();
    rmgError(RMG_StsError, "g", "h", "i", 6);
    const std::string parent = ::testing::internal::GetCapturedStderr();
    EXPECT_EQ(parent, std::string("RMG Library Error: Unknown error\n"
                                  "in function [i:6]:g():\nh") +
                          kParentTrailer + "\n");
    rmgError(RMG_StsOk, nullptr, nullptr, nullptr, 0);
    rmgSetErrMode(RMG_ErrorModeLeaf);
}

void endThroughTheSystemHost() {
    // The system's own dialog, with only the answer replaced by Yes.
    static const RmgDialogHost *system = nullptr;
    system = rmgSetDialogHost(nullptr);
    static RmgDialogHost yes;
    yes.messageBox = [](const char *, const char *, unsigned int) { return RMG_IDYES; };
    yes.endProcess = system->endProcess;
    rmgSetDialogHost(&yes);
    rmgRedirectError(nullptr);
    rmgSetErrMode(RMG_ErrorModeLeaf);
    rmgError(RMG_StsBadArg, "f", "c", "m", 1);
}

TEST(ConsoleHostDeathTest, YesEndsTheProcessWithTheText) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(endThroughTheSystemHost(), ::testing::ExitedWithCode(1),
                "RMG Library:\nterminating the application\n");
}
#endif

}  // namespace
