#include <Hy/HyMessage.h>

#include <Kit/KitMessageQueue.h>
#include <Kit/KitMemory.h>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <utility>

namespace Hy {
namespace {
constexpr std::size_t kLineRoom = 17; ///< ":", a line number of up to 11 places, ": ", the zero

/// Copies a text so that printf prints it as it is, and answers the end of the copy.
char* copyEscaped(const char* text, char* to) {
    for (; *text; ++text) {
        if (*text == '%')
            *to++ = '%';
        *to++ = *text;
    }
    return to;
}

/// A format that prints "name: line: " in front of another format, or null without memory. The
/// caller destroys it.
char* createLocatedFormat(const char* name, int line, const char* format) {
    const std::size_t size = 2 * std::strlen(name) + std::strlen(format) + kLineRoom;
    char* located = static_cast<char*>(KitMemoryAPI_create(size));
    if (located) {
        char* end = copyEscaped(name, located);
        std::snprintf(end, size - static_cast<std::size_t>(end - located), ":% 4d: %s", line,
                      format);
    }
    return located;
}
} // namespace

void HyInfo(int code, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    if (!KitMessageQueue::take(KitMessageQueue::kInfo, code, format, arguments))
        KitInfoHandler(code, format, arguments);
    va_end(arguments);
}

void HyWarning(int code, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    if (!KitMessageQueue::take(KitMessageQueue::kWarning, code, format, arguments))
        KitWarningHandler(code, format, arguments);
    va_end(arguments);
}

void HyFatalError(int code, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    KitFatalErrorHandler(code, format, arguments);
    va_end(arguments);
}

void HyFatalErrorOrAbort(const char* message) {
    HyFatalError(0, "%s", message);
    std::abort();
}

void HyAssertImplementation(const char* file, int line, bool condition, const char* format, ...) {
    if (condition)
        return;
    char* located = createLocatedFormat(KitShortenPath(file), line, format ? format : "");
    va_list arguments;
    va_start(arguments, format);
    KitFatalErrorHandler(0, located ? located : format, arguments);
    va_end(arguments);
    KitMemoryAPI_destroy(located);
}

KitMessageHandler HySetInfoHandler(KitMessageHandler handler) {
    return KitSetInfoHandler(handler);
}

KitMessageHandler HySetWarningHandler(KitMessageHandler handler) {
    return KitSetWarningHandler(handler);
}

KitMessageHandler HySetFatalErrorHandler(KitMessageHandler handler) {
    return KitSetFatalErrorHandler(handler);
}

int getHyInfoLevel() {
    return KitInfoLevel;
}

int getHyWarningLevel() {
    return KitWarningLevel;
}

int getHyFatalErrorLevel() {
    return KitFatalErrorLevel;
}

int setHyInfoLevel(int level) {
    return std::exchange(KitInfoLevel, level);
}

int setHyWarningLevel(int level) {
    return std::exchange(KitWarningLevel, level);
}

int setHyFatalErrorLevel(int level) {
    return std::exchange(KitFatalErrorLevel, level);
}
} // namespace Hy
