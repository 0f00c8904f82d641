#pragma once
#include <Hy/HyFrame.h>
#include <Hy/HyFrameStepperOption.h>
#include <Hy/HyMessage.h>
#include <Hy/HyUniverse.h>

#include <cstdarg>
#include <cstdio>
#include <functional>
#include <gtest/gtest.h>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

/// A fresh frame for each test. Warnings are kept instead of printed.
class FrameFixture : public testing::Test {
protected:
    void SetUp() override {
        Hy::HyFrame::release();
        warnings().clear();
        mOldHandler = Hy::HySetWarningHandler(keepWarning);
        frame = Hy::HyFrame::instance();
        frame->setTimeStep(1);
    }
    void TearDown() override {
        Hy::HyFrame::release();
        Hy::HyFrameStepperOption::instance().setRecoverySubstepCount(10);
        Hy::HyFrameStepperOption::instance().getCheckSubscriberArray().clear();
        Hy::HySetWarningHandler(mOldHandler);
    }

    [[nodiscard]] static std::vector<std::string>& warnings() {
        static std::vector<std::string> kept;
        return kept;
    }
    /// Whether some warning holds the text; forgets all.
    [[nodiscard]] static bool warned(const std::string& text) {
        bool found = false;
        for (const std::string& warning : warnings())
            found |= warning.find(text) != std::string::npos;
        warnings().clear();
        return found;
    }

    Hy::HyFrame* frame = nullptr;

private:
    static void keepWarning(int, const char* format, va_list arguments) {
        char text[1000];
        std::vsnprintf(text, sizeof text, format, arguments);
        warnings().emplace_back(text);
    }

    KitMessageHandler mOldHandler = nullptr;
};

/// What happened in a step, as words: D(0.5) is a detection of half a second.
class StepLog {
public:
    void add(const std::string& word) { mText += mText.empty() ? word : " " + word; }
    void add(const std::string& word, double value) {
        std::ostringstream text;
        text << word << '(' << value << ')';
        add(text.str());
    }
    /// The text so far; begins anew.
    std::string take() { return std::exchange(mText, std::string()); }

private:
    std::string mText;
};

/// Writes each phase into a log: P, D, K, S, V, A, Q in the order of the phases, R for a restore.
class RecordingStepper : public Hy::HyStepperBase {
public:
    explicit RecordingStepper(StepLog& stepLog, int priority = kDefaultPriority,
                              std::string suffix = {})
        : HyStepperBase(priority), log(stepLog), mSuffix(std::move(suffix)) {}

    void restoreExternalForcesForSubstepping() override { add("R"); }

    /// Is called in each phase with its word.
    std::function<void(const std::string&)> onPhase;
    StepLog& log;

protected:
    void preUpdateImpl() override { add("P"); }
    void detectCollisionsImpl(Hy::HyReal dt) override { add("D", dt); }
    void advanceKinematicsImpl(Hy::HyReal dt) override { add("K", dt); }
    void solveDynamicsImpl(Hy::HyReal dt) override { add("S", dt); }
    void revertDynamicsImpl() override { add("V"); }
    void advanceDynamicsImpl(Hy::HyReal dt) override { add("A", dt); }
    void postUpdateImpl() override { add("Q"); }

private:
    template <typename... Value>
    void add(const std::string& word, Value... value) {
        log.add(word + mSuffix, value...);
        if (onPhase)
            onPhase(word);
    }
    std::string mSuffix;
};
