// Status and error reporting: the library-wide status word, the error mode,
// the replaceable handler, the texts of the status codes, and the default
// handler with its dialog.
//
// All state is initialised data, so loading the library runs no code.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "rmg.h"

#if defined(_WIN32)
#include <windows.h>
#endif

namespace {

// The dialog shows at most this many characters of a message: the system
// formatter of the Windows build writes at most 1024 bytes, its terminating
// zero included, and every build keeps to that so that the texts agree.
constexpr size_t kMessageLimit = 1023;
constexpr size_t kCaptionSize = 100;
const char kExitText[] = "RMG Library:\nterminating the application";

#if defined(_WIN32)

int systemMessageBox(const char *text, const char *caption, unsigned int style) {
    return MessageBoxA(nullptr, text, caption, style);
}

void systemEndProcess(const char *text) {
    if (GetVersion() & 0x80000000u) {
        // Not a Windows NT system: say so in a box of its own, then exit.
        MessageBoxA(nullptr, text, "Win32S: Application exit", MB_SYSTEMMODAL);
        std::exit(1);
    }
    FatalAppExitA(0, text);
    std::exit(1);  // not reached
}

#else

// The console host: the caption and the message go to standard error, and
// the answer is the one that lets the operation go on (No to "Terminate the
// application?", OK to "Continue?").
int systemMessageBox(const char *text, const char *caption, unsigned int style) {
    std::fprintf(stderr, "%s\n%s\n", caption, text);
    std::fflush(stderr);
    return (style & 0xFu) == RMG_MB_YESNO ? RMG_IDNO : RMG_IDOK;
}

void systemEndProcess(const char *text) {
    std::fprintf(stderr, "%s\n", text);
    std::fflush(stderr);
    std::exit(1);
}

#endif

const RmgDialogHost kSystemHost = {systemMessageBox, systemEndProcess};

const RmgLibVersion kVersion = {
    1, 3, 3, "rmgm5l.lib", "v1.0 Beta 3", "[1.03.03, 06/30/97]", "Jul  7 1997", "Microsoft",
};

const char *const kStatusTexts[9] = {
    "No Error",                      //  0
    "Backtrace",                     // -1
    "Unknown error",                 // -2
    "Internal error (bad state)",    // -3
    "Out of memory",                 // -4
    "Bad argument",                  // -5
    "Unsupported function",          // -6
    "Iteration convergence failed",  // -7
    "Autotrace call",                // -8
};

int gStatus = RMG_StsOk;
int gMode = RMG_ErrorModeLeaf;
RmgErrorCallBack gHandler = rmgDefaultErrorHandler;
const RmgDialogHost *gHost = &kSystemHost;
char gUnknownText[64];

// The message of the dialog, cut to the dialog's limit.
std::string formatMessage(const char *format, const char *fileName, int line,
                          const char *funcName, const char *context, const char *trailer) {
#if defined(_WIN32)
    // wsprintfA never writes more than 1024 bytes.
    char buffer[kMessageLimit + 1];
    wsprintfA(buffer, format, fileName, line, funcName, context, trailer);
    return std::string(buffer);
#else
    const int length = std::snprintf(nullptr, 0, format, fileName, line, funcName, context, trailer);
    if (length <= 0) return std::string();
    std::string text(static_cast<size_t>(length) + 1, '\0');
    std::snprintf(&text[0], text.size(), format, fileName, line, funcName, context, trailer);
    text.resize(static_cast<size_t>(length) < kMessageLimit ? static_cast<size_t>(length)
                                                            : kMessageLimit);
    return text;
#endif
}

}  // namespace

extern "C" {

int rmgGetErrStatus(void) { return gStatus; }

void rmgSetErrStatus(int status) { gStatus = status; }

int *rmgErrStatusPointer(void) { return &gStatus; }

int rmgGetErrMode(void) { return gMode; }

void rmgSetErrMode(int mode) { gMode = mode; }

RmgErrorCallBack rmgRedirectError(RmgErrorCallBack handler) {
    RmgErrorCallBack previous = gHandler;
    gHandler = handler != nullptr ? handler : rmgDefaultErrorHandler;
    return previous;
}

const RmgDialogHost *rmgSetDialogHost(const RmgDialogHost *host) {
    const RmgDialogHost *previous = gHost;
    gHost = host != nullptr ? host : &kSystemHost;
    return previous;
}

int rmgError(int status, const char *funcName, const char *context, const char *fileName,
             int line) {
    // -1 and -8 are trace events: they reach the handler but leave the
    // stored status alone.
    if (status != RMG_StsBackTrace && status != RMG_StsAutoTrace) rmgSetErrStatus(status);
    if (status == RMG_StsOk) return 0;
    return gHandler(status, funcName, context, fileName, line);
}

const char *rmgErrStatusText(int status) {
    if (status >= -8 && status <= 0) return kStatusTexts[-status];
    std::snprintf(gUnknownText, sizeof gUnknownText, "Unknown %s code %d",
                  status < 0 ? "error" : "status", status);
    return gUnknownText;
}

int rmgLeafExit(int value) {
    if (gMode == RMG_ErrorModeLeaf) std::exit(1);
    return value;
}

const RmgLibVersion *rmgGetLibVersion(void) { return &kVersion; }

int rmgDefaultErrorHandler(int status, const char *funcName, const char *context,
                           const char *fileName, int line) {
    // The message is built in a buffer of its own size, so a context of any
    // length is safe; a null context, which the library's raising sites never
    // pass, counts as empty.
    if (gMode == RMG_ErrorModeSilent) return status;
    if (funcName == nullptr) funcName = "<unknown>";
    if (context == nullptr) context = "";
    if (fileName == nullptr) fileName = "";
    if (line < 0) line = 0;

    const char *trailer = "";
    if (gMode == RMG_ErrorModeLeaf)
        trailer = "\n\nErrMode=RMG_ErrorModeLeaf\n\nTerminate the application?";
    else if (gMode == RMG_ErrorModeParent)
        trailer = "\n\nErrMode=RMG_ErrorModeParent\n\nContinue?";

    const char *format = "in function [%s:%d]:%s():\n%s%s";
    if (status == RMG_StsBackTrace)
        format = "called from [%s:%d]:%s():\n%s%s";
    else if (status == RMG_StsAutoTrace)
        format = "called from [%s:%d]:\n%s(%s)%s";
    const std::string message = formatMessage(format, fileName, line, funcName, context, trailer);

    // The caption names the stored status, not the argument: for the trace
    // codes it names the last real failure.
    char caption[kCaptionSize];
    std::snprintf(caption, sizeof caption, "RMG Library Error: %s", rmgErrStatusText(gStatus));

    bool end = false;
    if (gMode == RMG_ErrorModeParent) {
        end = gHost->messageBox(message.c_str(), caption, RMG_MB_OKCANCEL | RMG_MB_SYSTEMMODAL) ==
              RMG_IDCANCEL;
    } else if (gMode == RMG_ErrorModeLeaf) {
        end = gHost->messageBox(message.c_str(), caption, RMG_MB_YESNO | RMG_MB_SYSTEMMODAL) ==
              RMG_IDYES;
    }
    if (end) gHost->endProcess(kExitText);
    return status;
}

}  // extern "C"
