#pragma once
#include <Kit/KitMessage.h>

namespace Hy {
// The channels are those of KitMessage.h: handlers, levels and show functions are shared.

HY_API void HyInfo(int code, const char* format, ...) __attribute__((format(printf, 2, 3)));
HY_API void HyWarning(int code, const char* format, ...) __attribute__((format(printf, 2, 3)));
/// Calls the handler, which by default ends the process; if a custom one returns, so does this.
HY_API void HyFatalError(int code, const char* format, ...) __attribute__((format(printf, 2, 3)));
/// A fatal error of code 0 from which there is no way on: aborts where the handler returns.
[[noreturn]] HY_API void HyFatalErrorOrAbort(const char* message) __attribute__((cold));

/// Unless the condition holds, a fatal error of code 0 whose text starts with the file's base name
/// and the line. Active in every build; returns only if a custom handler does.
HY_API void HyAssertImplementation(const char* file, int line, bool condition, const char* format,
                                   ...) __attribute__((format(printf, 4, 5)));

/// Each setter installs a handler and answers the previous one; null installs the default.
HY_API KitMessageHandler HySetInfoHandler(KitMessageHandler handler);
HY_API KitMessageHandler HySetWarningHandler(KitMessageHandler handler);
HY_API KitMessageHandler HySetFatalErrorHandler(KitMessageHandler handler);

/// A message is shown if its code is at most the level of its channel; 127 shows all.
[[nodiscard]] HY_API int getHyInfoLevel();
[[nodiscard]] HY_API int getHyWarningLevel();
[[nodiscard]] HY_API int getHyFatalErrorLevel();
/// Each setter answers the previous level.
HY_API int setHyInfoLevel(int level);
HY_API int setHyWarningLevel(int level);
HY_API int setHyFatalErrorLevel(int level);
} // namespace Hy
