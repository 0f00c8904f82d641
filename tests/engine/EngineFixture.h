#pragma once
#include <Hy/Hy.h>

#include <gtest/gtest.h>
#include <memory>
#include <vector>

/// A fresh frame with one universe for each test.
class EngineFixture : public testing::Test {
protected:
    void SetUp() override { start(1); }
    void TearDown() override {
        Hy::HyFrame::release();
        Hy::HyFrameStepperOption::instance().getCheckSubscriberArray().clear();
    }

    /// Begins anew, with threads of the solver above one.
    void start(int threads) {
        Hy::HyFrame::release();
        frame = Hy::HyFrame::instance();
        frame->setMaxThreadCount(threads);
        frame->setTimeStep(kStep);
        universe = &frame->getUniverse();
        universe->setDynamicsMultithreaded(threads > 1);
    }
    Hy::HyPart& addPart(Hy::HyReal mass) {
        auto* part = new Hy::HyPart(mass);
        universe->addPart(part);
        return *part;
    }
    void step(int n) {
        for (int i = 0; i < n; ++i)
            frame->step();
    }

    static constexpr Hy::HyReal kStep = 1.0 / 60; ///< s
    Hy::HyFrame* frame = nullptr;
    Hy::HyUniverse* universe = nullptr;
};
