#include <Kit/KitMessage.h>
#include <Kit/KitMessageQueue.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {
constexpr int kShowAll = 127;           ///< default level, above every code in use
constexpr std::size_t kTextSize = 5000; ///< bytes of a piece, with the ending zero

constinit thread_local bool isWorkerThread = false;

__attribute__((format(printf, 2, 0))) void formatText(char (&text)[kTextSize], const char* format,
                                                      va_list arguments) {
    text[0] = 0; // what stays if the format cannot be converted
    if (format && std::vsnprintf(text, kTextSize, format, arguments) < 0)
        text[0] = 0;
}

__attribute__((format(printf, 4, 0))) void showMessage(KitMessageShow show, const char* prefix,
                                                       int code, const char* format,
                                                       va_list arguments) {
    char text[kTextSize];
    std::snprintf(text, kTextSize, prefix, code);
    show(code, text);
    formatText(text, format, arguments);
    show(code, text);
}

void putAndShow(int code, const char* text) {
    std::puts(text);
    KitFatalErrorShow(code, text);
}

[[noreturn]] void endProcess() {
    if (!isWorkerThread)
        std::exit(EXIT_FAILURE);
    std::fflush(stdout); // not all streams: another thread may wait in one and hold its lock
    std::fflush(stderr);
    std::_Exit(EXIT_FAILURE);
}

/// Stores a new function, or the default for null, and answers the old one.
template <typename Function>
Function exchange(Function& slot, Function value, Function standard) {
    const Function previous = slot;
    slot = value ? value : standard;
    return previous;
}
} // namespace

constinit int KitInfoLevel = kShowAll;
constinit int KitWarningLevel = kShowAll;
constinit int KitFatalErrorLevel = kShowAll;
constinit int KitDebugLevel = kShowAll;

constinit KitMessageShow KitInfoShow = KitShowStderr;
constinit KitMessageShow KitWarningShow = KitShowStderr;
constinit KitMessageShow KitFatalErrorShow = KitShowStderr;
constinit KitMessageShow KitDebugShow = KitShowStderr;

constinit KitMessageHandler KitInfoHandler = KitHandlerInfo;
constinit KitMessageHandler KitWarningHandler = KitHandlerWarning;
constinit KitMessageHandler KitFatalErrorHandler = KitHandlerFatalError;
constinit KitMessageHandler KitDebugHandler = KitHandlerDebug;

void KitInfo(int code, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    if (!KitMessageQueue::take(KitMessageQueue::kInfo, code, format, arguments))
        KitInfoHandler(code, format, arguments);
    va_end(arguments);
}

void KitWarning(int code, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    if (!KitMessageQueue::take(KitMessageQueue::kWarning, code, format, arguments))
        KitWarningHandler(code, format, arguments);
    va_end(arguments);
}

void KitDebug(int code, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    if (!KitMessageQueue::take(KitMessageQueue::kDebug, code, format, arguments))
        KitDebugHandler(code, format, arguments);
    va_end(arguments);
}

void KitFatalError(int code, const char* format, ...) {
    std::puts("HyFatalError");
    va_list arguments;
    va_start(arguments, format);
    KitFatalErrorHandler(code, format, arguments);
    va_end(arguments);
}

void KitHandlerInfo(int code, const char* format, va_list arguments) {
    if (KitInfoLevel >= code)
        showMessage(KitInfoShow, "HyInfo{%d}: ", code, format, arguments);
}

void KitHandlerWarning(int code, const char* format, va_list arguments) {
    if (KitWarningLevel >= code)
        showMessage(KitWarningShow, "HyWarning{%d}: ", code, format, arguments);
}

void KitHandlerDebug(int code, const char* format, va_list arguments) {
    if (KitDebugLevel >= code)
        showMessage(KitDebugShow, "HyDebug{%d}: ", code, format, arguments);
}

void KitHandlerFatalError(int code, const char* format, va_list arguments) {
    if (KitFatalErrorLevel >= code)
        showMessage(putAndShow, "HyFatalError{%d}: ", code, format, arguments);
    endProcess();
}

KitMessageHandler KitSetInfoHandler(KitMessageHandler handler) {
    return exchange(KitInfoHandler, handler, KitHandlerInfo);
}

KitMessageHandler KitSetWarningHandler(KitMessageHandler handler) {
    return exchange(KitWarningHandler, handler, KitHandlerWarning);
}

KitMessageHandler KitSetFatalErrorHandler(KitMessageHandler handler) {
    return exchange(KitFatalErrorHandler, handler, KitHandlerFatalError);
}

KitMessageHandler KitSetDebugHandler(KitMessageHandler handler) {
    return exchange(KitDebugHandler, handler, KitHandlerDebug);
}

KitMessageShow KitSetInfoShow(KitMessageShow show) {
    return exchange(KitInfoShow, show, KitShowStderr);
}

KitMessageShow KitSetWarningShow(KitMessageShow show) {
    return exchange(KitWarningShow, show, KitShowStderr);
}

KitMessageShow KitSetFatalErrorShow(KitMessageShow show) {
    return exchange(KitFatalErrorShow, show, KitShowStderr);
}

KitMessageShow KitSetDebugShow(KitMessageShow show) {
    return exchange(KitDebugShow, show, KitShowStderr);
}

void KitShowStderr(int, const char* text) {
    std::fputs(text, stderr);
}

void KitShowStdout(int, const char* text) {
    std::fputs(text, stdout);
}

void KitSetWorkerThread(bool isWorker) {
    isWorkerThread = isWorker;
}

bool KitIsWorkerThread() {
    return isWorkerThread;
}

const char* KitShortenPath(const char* path) {
    if (!path)
        return "";
    const char* slash = std::strrchr(path, '/');
    return slash ? slash + 1 : path;
}
