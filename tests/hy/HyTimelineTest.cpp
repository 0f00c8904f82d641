#include <Hy/HyTimeline.h>

#include <gtest/gtest.h>

#include <set>
#include <thread>
#include <vector>

namespace Hy::HyTimeline {
namespace {

class HyTimelineTest : public testing::Test {
protected:
    HyTimelineTest() { timeline.setRecording(true); }
    ~HyTimelineTest() override {
        timeline.setRecording(false);
        timeline.clear();
    }
    Timeline& timeline = Timeline::instance();
};

TEST_F(HyTimelineTest, KeepsTheOrderOfMaking) {
    timeline.setRecording(false);
    EXPECT_EQ(timeline.addMarker(), nullptr);
    EXPECT_EQ(timeline.addInterval(), nullptr);
    EXPECT_EQ(timeline.first(), nullptr);

    timeline.setRecording(true);
    Marker* marker = timeline.addMarker();
    Interval* interval = timeline.addInterval();
    EXPECT_EQ(timeline.first(), marker);
    EXPECT_EQ(timeline.last(), interval);
    EXPECT_EQ(marker->next(), interval);
    EXPECT_EQ(interval->previous(), marker);
    EXPECT_EQ(marker->previous(), nullptr);
    EXPECT_EQ(interval->next(), nullptr);
    EXPECT_EQ(marker->asInterval(), nullptr);
    EXPECT_EQ(timeline.last()->asInterval(), interval);
    marker->getMetaData().reals["x"] = 0.5;
    EXPECT_EQ(timeline.first()->getMetaData().reals.at("x"), 0.5);

    EXPECT_LE(interval->getDuration(), 0);
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    interval->end();
    EXPECT_GE(interval->getDuration(), 0.019F);
    EXPECT_EQ(interval->getDuration(), interval->getEnd() - interval->getTime());
    timeline.clear();
    EXPECT_EQ(timeline.first(), nullptr);
    EXPECT_EQ(timeline.last(), nullptr);
}

TEST_F(HyTimelineTest, TakesEventsOfAllThreads) {
    constexpr int kThreads = 4, kEvents = 500;
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t)
        threads.emplace_back([this] {
            for (int i = 0; i < kEvents; ++i)
                timeline.addMarker()->getMetaData().integers["i"] = i;
        });
    for (std::thread& thread : threads)
        thread.join();
    std::map<int, int> counts; // by thread
    Event* previous = nullptr;
    for (Event* event = timeline.first(); event; event = event->next()) {
        EXPECT_EQ(event->previous(), previous);
        const auto& integers = event->getMetaData().integers;
        EXPECT_EQ(integers.at("i"), counts[integers.at("thread")]++);
        previous = event;
    }
    EXPECT_EQ(timeline.last(), previous);
    EXPECT_EQ(counts.size(), std::size_t{kThreads});
    for (const auto& [thread, count] : counts)
        EXPECT_EQ(count, kEvents);
}

} // namespace
} // namespace Hy::HyTimeline
