// Records a run on the timeline: an interval for each frame, a marker where a ball lands. The
// ball falls freely onto the plane, so it should arrive after sqrt(2 h / g).
#include "Gallery.h"

#include <Hy/Hy.h>
#include <cmath>
#include <cstdio>

namespace Timing = Hy::HyTimeline;

namespace {

constexpr double kHeight = 2, kRadius = 0.1; // m, of the lowest point
constexpr double kStep = 1e-3;               // s

/// Follows the one part of the universe and marks where its fall ends.
class LandingRecorder : public Hy::ICD::HyConsumerPart {
public:
    void partAdded(unsigned) override {}
    void partRemoved(unsigned) override {}
    void partUpdated(unsigned id, const Hy::HyVector3& position, const Hy::HyVector3&,
                     const Hy::HyVector3& velocity, const Hy::HyVector3&) override {
        mTime += kStep;
        if (mVelocity < -1 && velocity[2] > mVelocity / 2)
            if (Timing::Marker* marker = Timing::Timeline::instance().addMarker()) {
                marker->getMetaData().strings["what"] = "landing";
                marker->getMetaData().integers["part"] = static_cast<int>(id);
                marker->getMetaData().reals["time"] = mTime;
                marker->getMetaData().reals["height"] = position[2] - kRadius;
            }
        mVelocity = velocity[2];
    }

private:
    double mTime = 0, mVelocity = 0; // s, m/s
};

} // namespace

int main(int argc, char** argv) {
    Gallery gallery(argc, argv);
    Hy::HyFrame* frame = Hy::HyFrame::instance();
    frame->setTimeStep(kStep);
    Hy::HyUniverse& universe = frame->getUniverse(); // z up, earth gravity
    universe.addCollisionGeometry(new Hy::HyCollisionGeometry(new Hy::HyPlane));
    auto* ball = new Hy::HyPart(1); // kg
    ball->addCollisionGeometry(new Hy::HyCollisionGeometry(new Hy::HySphere(kRadius)));
    ball->setPosition(0, 0, kHeight + kRadius);
    universe.addPart(ball);

    Hy::ICD::HyMappingPartIDMap numbers;
    LandingRecorder landings;
    auto* producer = new Hy::ICD::HyProducerPart(&universe, &numbers);
    producer->registerConsumer(&landings);
    frame->addStepper(producer); // behind the universe: it tells of states after the step

    gallery.channels.add("height", "m", [ball] { return ball->getPosition()[2] - kRadius; });
    gallery.watch(universe);
    Timing::Timeline& timeline = Timing::Timeline::instance();
    timeline.setRecording(true);
    for (int i = 0; i < 1000; ++i) {
        Timing::Interval* interval = timeline.addInterval();
        frame->step();
        interval->end();
    }
    timeline.setRecording(false);

    int frames = 0;
    double busy = 0, arrival = 0; // s
    for (const Timing::Event* event = timeline.first(); event; event = event->next()) {
        if (event->getType() == Timing::Event::kInterval) {
            ++frames;
            busy += static_cast<const Timing::Interval*>(event)->getDuration();
        } else if (arrival == 0) {
            arrival = event->getMetaData().reals.at("time");
        }
    }
    const double expected = std::sqrt(2 * kHeight / 9.80665);
    std::printf("%d frames, %.1f us each\n", frames, 1e6 * busy / frames);
    gallery.expect("time of the fall", "s", expected, arrival);
    std::printf("arrived after %.3f s, expected %.3f s\n", arrival, expected);
    timeline.clear();
    Hy::HyFrame::release();
    return frames == 1000 && std::abs(arrival - expected) < 5 * kStep ? 0 : 1;
}
