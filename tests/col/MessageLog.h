#pragma once
#include <Kit/KitMessage.h>
#include <cstdio>
#include <string>
#include <utility>
#include <vector>

/// Keeps warnings and fatal errors from their handlers while it lives.
class MessageLog {
public:
    MessageLog()
        : mWarning(KitSetWarningHandler(record)), mFatal(KitSetFatalErrorHandler(recordFatal)) {
        texts().clear();
        fatals() = 0;
    }
    ~MessageLog() {
        KitSetWarningHandler(mWarning);
        KitSetFatalErrorHandler(mFatal);
    }
    MessageLog(const MessageLog&) = delete;
    MessageLog& operator=(const MessageLog&) = delete;

    [[nodiscard]] static std::vector<std::string> take() { return std::exchange(texts(), {}); }
    [[nodiscard]] static int fatalCount() { return fatals(); }

private:
    static std::vector<std::string>& texts() {
        static std::vector<std::string> theTexts;
        return theTexts;
    }
    static int& fatals() {
        static int theCount = 0;
        return theCount;
    }
    __attribute__((format(printf, 2, 0))) static void record(int, const char* format,
                                                             va_list arguments) {
        char text[2000];
        std::vsnprintf(text, sizeof(text), format, arguments);
        texts().push_back(text);
    }
    __attribute__((format(printf, 2, 0))) static void recordFatal(int code, const char* format,
                                                                  va_list arguments) {
        ++fatals();
        record(code, format, arguments);
    }

    KitMessageHandler mWarning, mFatal;
};
