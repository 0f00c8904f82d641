#include <Hy/HyMessage.h>
#include "../kit/KitTestSupport.h"
#include <gtest/gtest.h>
#include <csignal>
#include <cstdio>
#include <string>
#include <vector>

namespace Hy {
namespace {
std::vector<std::string> received; // NOLINT: handlers carry no context

void receive(int code, const char* format, va_list arguments) __attribute__((format(printf, 2, 0)));
void receive(int code, const char* format, va_list arguments) {
    char text[500];
    std::vsnprintf(text, sizeof(text), format, arguments);
    received.push_back(std::to_string(code) + "|" + text);
}

using Received = std::vector<std::string>;

TEST(HyMessageTest, AssertionNamesFileAndLineAndNeverTakesTheFileAsFormat) {
    received.clear();
    HySetFatalErrorHandler(receive);
    testing::internal::CaptureStdout();
    HyAssertImplementation("src/100%s.cpp", 42, false, "got %d of %s\n", 3, "four");
    HyAssertImplementation("a.cpp", 12345, false, "%%");
    HyAssertImplementation("a.cpp", 1, true, "fine");
    {
        const CountingAllocator allocator;
        CountingAllocator::isFailing = true;
        HyAssertImplementation("a.cpp", 1, false, "got %d", 3);
    }
    HySetFatalErrorHandler(nullptr);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), ""); // no extra line in this layer
    EXPECT_EQ(received,
              (Received{"0|100%s.cpp:  42: got 3 of four\n", "0|a.cpp: 12345: %", "0|got 3"}));
}

TEST(HyMessageDeathTest, FatalErrorsEndTheProcess) {
    EXPECT_EXIT(HyFatalError(0, "broke\n"), testing::ExitedWithCode(1),
                "^HyFatalError\\{0\\}: broke\n$");
    EXPECT_EXIT(HyAssertImplementation("a/b.cpp", 7, false, "broke\n"), testing::ExitedWithCode(1),
                "^HyFatalError\\{0\\}: b.cpp:   7: broke\n$");
    EXPECT_EXIT(
        {
            HySetFatalErrorHandler([](int, const char*, va_list) {});
            HyFatalErrorOrAbort("broke\n");
        },
        testing::KilledBySignal(SIGABRT), "");
}
} // namespace
} // namespace Hy
