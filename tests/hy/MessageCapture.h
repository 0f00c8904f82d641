#pragma once
#include <Kit/KitMessage.h>

#include <string>

/// Collects the texts of warnings and infos while it lives.
class MessageCapture {
public:
    MessageCapture() {
        text().clear();
        mWarningShow = KitSetWarningShow(append);
        mInfoShow = KitSetInfoShow(append);
    }
    MessageCapture(const MessageCapture&) = delete;
    MessageCapture& operator=(const MessageCapture&) = delete;
    ~MessageCapture() {
        KitSetWarningShow(mWarningShow);
        KitSetInfoShow(mInfoShow);
    }

    /// What has come since the last call, prefixes and all.
    std::string take() {
        std::string taken;
        taken.swap(text());
        return taken;
    }

private:
    static std::string& text() {
        static std::string collected;
        return collected;
    }
    static void append(int, const char* piece) { text() += piece; }

    decltype(KitSetWarningShow(nullptr)) mWarningShow;
    decltype(KitSetInfoShow(nullptr)) mInfoShow;
};
