// Windows builds of the suite: no test may reach the system's dialog, which
// would stop an unattended run with a window. The tests of the dialog
// replace the host (rmgSetDialogHost) or use silent mode; any other way to
// the box is a fault of a test. So the test program binds the library's
// import slots of MessageBoxA and FatalAppExitA to functions of its own.
// The program is linked statically, and a slot defined here keeps the
// linker from taking the one of user32's or kernel32's import library.
#if defined(_WIN32)
#include <windows.h>

#include <cstdio>
#include <cstdlib>

#include <gtest/gtest.h>

namespace {

// The status of a process that FatalAppExit ends; no test expects it.
constexpr int kFatalAppExitStatus = 0x40000015;

// Ends the process with a report on standard error: the way out of the
// child of a death test, whose failures never reach the parent's report,
// and of FatalAppExitA, which doesn't return.
[[noreturn]] void endWithReport(const char *what, const char *text) {
    std::fprintf(stderr, "%s was reached with \"%s\"\n", what, text);
    std::fflush(stderr);
    std::_Exit(kFatalAppExitStatus);
}

// Fails the running test and answers so that the operation goes on: No to
// "Terminate the application?", OK to "Continue?".
int WINAPI trappedMessageBox(HWND, LPCSTR text, LPCSTR caption, UINT style) {
    if (::testing::internal::InDeathTestChild()) endWithReport("the system's message box", text);
    ADD_FAILURE() << "the system's message box was reached, caption \"" << caption
                  << "\", text \"" << text << "\"";
    return (style & 0xFu) == MB_YESNO ? IDNO : IDOK;
}

void WINAPI trappedFatalAppExit(UINT, LPCSTR text) { endWithReport("FatalAppExitA", text); }

}  // namespace

// The import slots' names: "__imp_" and the linker's name of the function,
// which on 32-bit x86 carries an underscore and the size of the arguments.
#if defined(_WIN64)
#define RMG_IMPORT_SLOT(name, argumentBytes) "__imp_" #name
#else
#define RMG_IMPORT_SLOT(name, argumentBytes) "__imp__" #name "@" #argumentBytes
#endif

extern "C" {
decltype(&MessageBoxA) rmgTrapMessageBoxA asm(RMG_IMPORT_SLOT(MessageBoxA, 16)) =
    trappedMessageBox;
decltype(&FatalAppExitA) rmgTrapFatalAppExitA asm(RMG_IMPORT_SLOT(FatalAppExitA, 8)) =
    trappedFatalAppExit;
}
#endif
