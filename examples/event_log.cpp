// Who touches whom, as it happens: a ball drops through a sensor onto a table and rolls off. A rule,
// switched on while it rolls, then lets it fall through the floor.
#include "Gallery.h"

#include <Hy/Hy.h>

#include <cstdio>

namespace {

class Log : public Hy::HyUniverse::IntersectSubscriber {
public:
    void notifyDisjoint(Hy::eIntersectEventType, Hy::HyIntersectResult* result) override {
        print("parts from", result);
    }
    void notifyIntersect(Hy::eIntersectEventType, Hy::HyIntersectResult* result,
                         Hy::HyDynamicsResponseInput*) override {
        print("touches", result);
    }
    double time = 0; ///< simulated, s
    int lines = 0;

private:
    void print(const char* what, Hy::HyIntersectResult* result) {
        Hy::HyPart *first = nullptr, *second = nullptr;
        result->getEntityPair(first, second);
        if (!first || !second)
            return;
        ++lines;
        std::printf("%6.3f s  %-7s %-10s %-7s %d contacts\n", time, first->getName().c_str(), what,
                    second->getName().c_str(), result->getContactCount());
    }
};

Hy::HyPart* addStatic(Hy::HyUniverse& universe, const char* name, Hy::HyGeometry* shape,
                      const Hy::HyVector3& position) {
    auto* part = new Hy::HyPart;
    part->setControl(Hy::HyPart::kControlStatic);
    part->setName(name);
    part->addCollisionGeometry(new Hy::HyCollisionGeometry(shape));
    part->setPosition(position);
    universe.addPart(part);
    return part;
}

} // namespace

int main(int argc, char** argv) {
    Gallery gallery(argc, argv);
    Hy::HyFrame* frame = Hy::HyFrame::instance();
    Hy::HyUniverse& universe = frame->getUniverse();
    Hy::HyPart* floor = addStatic(universe, "floor", new Hy::HyPlane, Hy::HyVector3(0, 0, 0));
    addStatic(universe, "table", new Hy::HyBox(2, 2, 0.2), Hy::HyVector3(0, 0, 1));
    Hy::HyPart* gate =
        addStatic(universe, "gate", new Hy::HyBox(1, 1, 0.2), Hy::HyVector3(0, 0, 2));
    for (Hy::HyCollisionGeometry* zone : gate->getCollisionGeometries())
        zone->setResponseID(Hy::HyUniverse::kResponseSensor);

    auto* ball = new Hy::HyPart(1.0);
    ball->setName("ball");
    ball->addCollisionGeometry(new Hy::HyCollisionGeometry(new Hy::HySphere(0.15)));
    ball->setPosition(0, 0, 2.6);
    ball->setLinearVelocity(0.8, 0, 0);
    universe.addPart(ball);

    Log log;
    const int part = Hy::HyUniverse::kResponsePart, sensor = Hy::HyUniverse::kResponseSensor;
    for (const Hy::eIntersectEventType event : {Hy::kEventFirst, Hy::kEventDisjoint}) {
        universe.addIntersectSubscriber(part, part, event, &log);
        universe.addIntersectSubscriber(sensor, part, event, &log);
    }
    gallery.channels.add("height", "m", [ball] { return ball->getPosition()[2]; });
    gallery.watch(universe);
    const auto run = [&](int steps) {
        for (int step = 0; step < steps; ++step) {
            log.time += frame->getTimeStep();
            frame->step();
        }
    };
    run(180);
    std::printf("%6.3f s  a rule parts ball and floor\n", log.time);
    universe.addCollisionRule(
        Hy::HyCollisionRule(ball, floor, false, Hy::HyCollisionRule::PriorityScene));
    run(60);
    std::printf("the ball is at a height of %.2f m; %d events\n", ball->getPosition()[2],
                log.lines);
    gallery.measure("events told", "", log.lines);
    const bool through = ball->getPosition()[2] < 0;
    Hy::HyFrame::release();
    return through ? 0 : 1;
}
