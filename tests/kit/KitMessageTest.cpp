#include <Kit/KitMessage.h>
#include <gtest/gtest.h>
#include <unistd.h>
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

namespace {
std::vector<std::string> shown; // NOLINT: show functions carry no context

void record(int code, const char* text) {
    shown.push_back(std::to_string(code) + "|" + text);
}

/// Records what the channels show.
class KitMessageTest : public testing::Test {
protected:
    void SetUp() override {
        shown.clear();
        KitSetInfoShow(record);
        KitSetWarningShow(record);
        KitSetDebugShow(record);
    }
    void TearDown() override {
        KitSetInfoShow(nullptr);
        KitSetWarningShow(nullptr);
        KitSetDebugShow(nullptr);
        KitWarningLevel = 127;
    }
};

using Shown = std::vector<std::string>;

TEST_F(KitMessageTest, ShowsPrefixAndTextAsTwoPieces) {
    KitInfo(0, "a %d\n", 1);
    KitWarning(12, "b %s", "x");
    KitDebug(-3, "%%");
    EXPECT_EQ(shown, (Shown{"0|HyInfo{0}: ", "0|a 1\n", "12|HyWarning{12}: ", "12|b x",
                            "-3|HyDebug{-3}: ", "-3|%"}));
}

TEST_F(KitMessageTest, ShowsCodesUpToTheLevelOfTheChannel) {
    KitWarningLevel = 0;
    KitWarning(12, "hidden");
    KitWarning(1, "hidden");
    KitWarning(0, "seen");
    KitInfo(12, "seen too");
    EXPECT_EQ(shown, (Shown{"0|HyWarning{0}: ", "0|seen", "12|HyInfo{12}: ", "12|seen too"}));
}

TEST_F(KitMessageTest, CutsTextAtTheEndOfTheBuffer) {
    for (const std::size_t length : {4998u, 4999u, 5000u, 20000u}) {
        shown.clear();
        const std::string text(length, 'x');
        KitInfo(0, "%s", text.c_str());
        ASSERT_EQ(shown.size(), 2u);
        EXPECT_EQ(shown[1].size(), 2 + std::min<std::size_t>(length, 4999)) << length;
    }
}

TEST_F(KitMessageTest, SettersAnswerThePreviousFunctionAndNullRestoresTheDefault) {
    const KitMessageHandler mine = [](int, const char*, va_list) { shown.push_back("mine"); };
    EXPECT_EQ(KitSetWarningHandler(mine), KitHandlerWarning);
    KitWarning(0, "x");
    EXPECT_EQ(shown, Shown{"mine"});
    EXPECT_EQ(KitSetWarningHandler(nullptr), mine);
    EXPECT_EQ(KitWarningHandler, KitHandlerWarning);

    EXPECT_EQ(KitSetWarningShow(nullptr), record);
    EXPECT_EQ(KitWarningShow, KitShowStderr);
    EXPECT_EQ(KitSetFatalErrorShow(KitShowStdout), KitShowStderr);
    EXPECT_EQ(KitSetFatalErrorShow(nullptr), KitShowStdout);
}

TEST_F(KitMessageTest, FatalHandlerThatReturnsLetsTheCallerGoOn) {
    KitSetFatalErrorHandler([](int code, const char* format, va_list) { record(code, format); });
    testing::internal::CaptureStdout();
    KitFatalError(5, "broken");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "HyFatalError\n");
    KitSetFatalErrorHandler(nullptr);
    EXPECT_EQ(shown, Shown{"5|broken"});
}

TEST(KitMessageDeathTest, FatalErrorShowsThePiecesAndExits) {
    EXPECT_EXIT(KitFatalError(7, "it %s\n", "broke"), testing::ExitedWithCode(1),
                "^HyFatalError\\{7\\}: it broke\n$");
    // Standard output has the line, then both pieces with a line end of puts() each.
    EXPECT_EXIT(
        {
            KitSetFatalErrorShow([](int, const char*) {});
            dup2(2, 1);
            KitFatalError(7, "it broke\n");
        },
        testing::ExitedWithCode(1), "^HyFatalError\nHyFatalError\\{7\\}: \nit broke\n\n$");
}

TEST(KitMessageDeathTest, SilencedFatalErrorStillEndsTheProcess) {
    EXPECT_EXIT(
        {
            KitFatalErrorLevel = 6;
            dup2(2, 1);
            KitFatalError(7, "hidden\n");
        },
        testing::ExitedWithCode(1), "^HyFatalError\n$");
}

// Static objects may be in use by other threads when a worker fails, so they are not destroyed.
TEST(KitMessageDeathTest, FatalErrorOnAWorkerEndsAtOnceWithFlushedStreams) {
    const auto failOn = [](bool isWorker) {
        std::atexit([] { std::fputs("exit ran\n", stderr); });
        dup2(2, 1);
        std::thread([isWorker] {
            KitSetWorkerThread(isWorker);
            KitFatalError(0, "broke\n");
        }).join();
    };
    EXPECT_EXIT(failOn(false), testing::ExitedWithCode(1), "exit ran");
    EXPECT_EXIT(failOn(true), testing::ExitedWithCode(1),
                "^HyFatalError\\{0\\}: broke\nHyFatalError\nHyFatalError\\{0\\}: \nbroke\n\n$");
}

} // namespace
