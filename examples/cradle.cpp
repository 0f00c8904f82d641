// Newton's cradle: five balls on strings, a hair apart, hit with restitution 1. The first one falls from
// an angle; by momentum m v and energy m v²/2 the last one must leave as the first one came, with
// v = sqrt(2 g L (1 - cos angle)), and come back.
#include "Gallery.h"

#include <Hy/Hy.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <vector>

namespace {

constexpr int kBalls = 5, kStepsPerSecond = 20000, kBounces = 6;
constexpr double kMass = 0.2, kRadius = 0.03, kGap = 2e-4; // kg, m, m
constexpr double kString = 0.5, kAngle = 0.5;              // m, rad
constexpr double kGravity = 9.80665;                       // m/s²

} // namespace

int main(int argc, char** argv) {
    Gallery gallery(argc, argv);
    Hy::HyFrame* frame = Hy::HyFrame::instance();
    frame->setTimeStep(1.0 / kStepsPerSecond);
    Hy::HyUniverse& universe = frame->getUniverse();
    universe.setAutoSleep(false);
    Hy::HyMaterial* steel = universe.getMaterialTable()->registerMaterial("steel");
    steel->setRestitution(1);
    std::vector<Hy::HyPart*> balls;
    auto* shape = new Hy::HySphere(kRadius);
    for (int i = 0; i < kBalls; ++i) {
        const double angle = i == 0 ? kAngle : 0, x = (2 * kRadius + kGap) * i;
        auto* ball = new Hy::HyPart(kMass);
        auto* geometry = new Hy::HyCollisionGeometry(shape, steel);
        geometry->setContactTolerance(1e-5); // contacts begin where the balls meet
        ball->addCollisionGeometry(geometry);
        ball->setPosition(x - kString * std::sin(angle), 0, -kString * std::cos(angle));
        universe.addPart(ball);
        auto* string = new Hy::HyDistanceJoint(nullptr, ball, kString);
        string->setPartAttachmentPosition(0, Hy::HyVector3(x, 0, 0));
        universe.addConstraint(string);
        string->enable(true);
        balls.push_back(ball);
    }

    gallery.channels.add("first ball", "m/s", [&] { return balls[0]->getLinearVelocity()[0]; });
    gallery.channels.add("last ball", "m/s", [&] { return balls.back()->getLinearVelocity()[0]; });
    gallery.watch(universe);
    const double speed = std::sqrt(2 * kGravity * kString * (1 - std::cos(kAngle)));
    const double momentum = kMass * speed, energy = 0.5 * kMass * speed * speed;
    std::printf("expected: momentum %.5f kg m/s, energy %.5f J\n", momentum, energy);
    std::printf("%6s %9s %10s %10s %8s %8s %12s\n", "bounce", "time (s)", "momentum", "energy",
                "p/p0", "E/E0", "others (m/s)");
    bool right = true, first = true; // the one that leads
    double fastest = 0;
    int bounces = 0;
    for (int step = 1; step < 20 * kStepsPerSecond && bounces < kBounces; ++step) {
        frame->step();
        const double v = balls[first ? kBalls - 1 : 0]->getLinearVelocity()[0];
        const double leaving = first ? v : -v;
        fastest = std::max(fastest, leaving);
        // The far ball has been hit and begins to slow down: the chain of hits has run through.
        if (!(fastest > 0.5 * speed && leaving < 0.999 * fastest))
            continue;
        double p = 0, e = 0, others = 0;
        for (int i = 0; i < kBalls; ++i) {
            const Hy::HyPart& ball = *balls[static_cast<std::size_t>(i)];
            const double height = ball.getPosition()[2] + kString;
            p += kMass * ball.getLinearVelocity()[0];
            e += ball.getKineticEnergy() + kMass * kGravity * height;
            if (i != (first ? kBalls - 1 : 0))
                others = std::max(others, std::abs(ball.getLinearVelocity()[0]));
        }
        std::printf("%6d %9.3f %10.5f %10.5f %8.4f %8.4f %12.5f\n", ++bounces,
                    static_cast<double>(step) / kStepsPerSecond, std::abs(p), e,
                    std::abs(p) / momentum, e / energy, others);
        gallery.expect("momentum after a bounce", "kg m/s", momentum, std::abs(p));
        right =
            right && std::abs(e / energy - 1) < 0.02 && std::abs(std::abs(p) / momentum - 1) < 0.02;
        fastest = 0;
        first = !first;
    }
    Hy::HyFrame::release();
    return right && bounces == kBounces ? 0 : 1;
}
