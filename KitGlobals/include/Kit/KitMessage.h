#pragma once
#include <Kit/KitApi.h>
#include <cstdarg>

/// Receives a message: its code, its printf format and the arguments.
using KitMessageHandler = void (*)(int code, const char* format, va_list arguments);
/// Writes one piece of text. The default handlers call it twice a message: prefix, then text.
using KitMessageShow = void (*)(int code, const char* text);

// One value a channel. All of it is constant data: it holds from load to exit and may be used by
// the constructors of static objects. No lock guards it: install handlers before threads report.

extern HY_API int KitInfoLevel; ///< a message is shown if its code is at most the level
extern HY_API int KitWarningLevel;
extern HY_API int KitFatalErrorLevel;
extern HY_API int KitDebugLevel;

extern HY_API KitMessageShow KitInfoShow;
extern HY_API KitMessageShow KitWarningShow;
extern HY_API KitMessageShow KitFatalErrorShow;
extern HY_API KitMessageShow KitDebugShow;

extern HY_API KitMessageHandler KitInfoHandler;
extern HY_API KitMessageHandler KitWarningHandler;
extern HY_API KitMessageHandler KitFatalErrorHandler;
extern HY_API KitMessageHandler KitDebugHandler;

HY_API void KitInfo(int code, const char* format, ...) __attribute__((format(printf, 2, 3)));
HY_API void KitWarning(int code, const char* format, ...) __attribute__((format(printf, 2, 3)));
HY_API void KitDebug(int code, const char* format, ...) __attribute__((format(printf, 2, 3)));
/// Writes the line "HyFatalError" to standard output and calls the handler, which by default ends
/// the process. A custom handler should end it too; if it returns, so does this function.
HY_API void KitFatalError(int code, const char* format, ...) __attribute__((format(printf, 2, 3)));

/// The default handlers: "HyInfo{code}: " and so on, then the text, cut at 5000 bytes. No line end
/// is added.
HY_API void KitHandlerInfo(int code, const char* format, va_list arguments)
    __attribute__((format(printf, 2, 0)));
HY_API void KitHandlerWarning(int code, const char* format, va_list arguments)
    __attribute__((format(printf, 2, 0)));
HY_API void KitHandlerDebug(int code, const char* format, va_list arguments)
    __attribute__((format(printf, 2, 0)));
/// Puts each piece on standard output too, then ends the process with status 1, at any level: by
/// exit() on an ordinary thread, at once on a worker (see KitSetWorkerThread()).
HY_API void KitHandlerFatalError(int code, const char* format, va_list arguments)
    __attribute__((format(printf, 2, 0)));

/// Each setter installs a handler and answers the previous one; null installs the default.
HY_API KitMessageHandler KitSetInfoHandler(KitMessageHandler handler);
HY_API KitMessageHandler KitSetWarningHandler(KitMessageHandler handler);
HY_API KitMessageHandler KitSetFatalErrorHandler(KitMessageHandler handler);
HY_API KitMessageHandler KitSetDebugHandler(KitMessageHandler handler);

/// Each setter installs a show function and answers the previous one; null installs the default.
HY_API KitMessageShow KitSetInfoShow(KitMessageShow show);
HY_API KitMessageShow KitSetWarningShow(KitMessageShow show);
HY_API KitMessageShow KitSetFatalErrorShow(KitMessageShow show);
HY_API KitMessageShow KitSetDebugShow(KitMessageShow show);

HY_API void KitShowStderr(int code, const char* text);
HY_API void KitShowStdout(int code, const char* text);

/// Tells that the calling thread is a worker. A fatal error there flushes the standard streams and
/// ends the process without destroying static objects, which other threads may be using.
HY_API void KitSetWorkerThread(bool isWorker);
[[nodiscard]] HY_API bool KitIsWorkerThread();

/// The part of a path behind its last "/", or the whole path. Points into the argument; null gives
/// the empty text.
[[nodiscard]] HY_API const char* KitShortenPath(const char* path);
