// A chain of twenty links, hinged between stops, is swung by a motor at its base. Printed: the forces
// in the hinges and how far apart any hinge has come.
// Usage: hinge_chain [plot.csv]
#include "Gallery.h"

#include <Hy/Hy.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <vector>

using Hy::HyVector3;

namespace {

constexpr int kLinks = 20;
constexpr double kLength = 0.25, kMass = 1.5; // m, kg
constexpr double kStop = 0.35;                // rad, each way
constexpr double kFriction = 2;               // N m in each hinge

/// Distance between the two sides of a hinge, m.
double gap(const Hy::HyHinge& hinge) {
    return (hinge.getPartAttachmentPosition(0) - hinge.getPartAttachmentPosition(1)).norm();
}

} // namespace

int main(int argc, char** argv) {
    Gallery gallery(argc, argv);
    Hy::HyFrame* frame = Hy::HyFrame::instance();
    constexpr int kStepsPerSecond = 240;
    frame->setTimeStep(1.0 / kStepsPerSecond);
    Hy::HyUniverse& universe = frame->getUniverse();
    universe.setCriticalConstraintParameters(0, 1); // half of a gap is closed in each step
    std::vector<Hy::HyHinge*> hinges;
    Hy::HyPart* previous = nullptr;
    for (int i = 0; i < kLinks; ++i) {
        auto* link = new Hy::HyPart(kMass);
        const double across = kMass * (kLength * kLength + 0.05 * 0.05) / 12;
        const double tensor[3][3] = {
            {kMass * 0.05 * 0.05 / 6, 0, 0}, {0, across, 0}, {0, 0, across}};
        link->setMassAndInertia(kMass, tensor);
        universe.addPart(link);
        link->setPosition((i + 0.5) * kLength, 0, 0);
        auto* hinge =
            new Hy::HyHinge(link, previous, HyVector3(i * kLength, 0, 0), HyVector3(0, 1, 0));
        universe.addConstraint(hinge);
        hinge->enable(true);
        if (i > 0) {
            hinge->setLimitPositions(0, -kStop, kStop);
            hinge->setLimitsActive(0, true);
            Hy::HyConstraintFriction* friction = hinge->getCoordinateFriction(0);
            friction->setMaxForce(kFriction);
            friction->setEnabled(true);
        }
        hinges.push_back(hinge);
        previous = link;
    }
    Hy::HyHinge& base = *hinges.front();
    base.setMotorParameters(0, -0.5, 2000, 0); // rad/s upwards, N m
    base.setControl(0, Hy::HyConstraint::kControlMotorized);

    gallery.channels.add("motor torque", "N m", [&] { return base.getCoordinateForce(0); });
    gallery.channels.add("base force", "N", [&] { return base.getPartForce(0).norm(); });
    gallery.watch(universe);
    std::FILE* plot = argc > 1 ? std::fopen(argv[1], "w") : nullptr;
    if (plot != nullptr)
        std::fprintf(plot, "time,base_torque,base_force,tip_x,tip_z,gap\n");
    std::printf(" t (s)  base angle (rad)  motor (N m)  base force (N)  hinges at a stop  "
                "beyond a stop (rad)  widest gap (m)\n");
    double widest = 0, beyond = 0;
    for (int n = 1; n <= 20 * kStepsPerSecond; ++n) {
        if (n == 10 * kStepsPerSecond)
            base.setMotorDesiredVelocity(0, 0.5); // and down again
        frame->step();
        int atStop = 0;
        for (const Hy::HyHinge* hinge : hinges) {
            widest = std::max(widest, gap(*hinge));
            if (hinge == &base)
                continue;
            const double angle = std::abs(hinge->getCoordinateCurrentPosition(0));
            atStop += hinge->isLimitExceeded(0);
            beyond = std::max(beyond, angle - kStop);
        }
        const HyVector3 tip = previous->getPosition();
        const double torque = base.getCoordinateForce(0), force = base.getPartForce(0).norm();
        if (plot != nullptr)
            std::fprintf(plot, "%.4f,%.3f,%.3f,%.5f,%.5f,%.3e\n",
                         static_cast<double>(n) / kStepsPerSecond, torque, force, tip[0], tip[2],
                         widest);
        if (n % (2 * kStepsPerSecond) == 0)
            std::printf("%6.1f  %16.3f  %11.1f  %14.1f  %16d  %19.1e  %14.1e\n",
                        static_cast<double>(n) / kStepsPerSecond,
                        base.getCoordinateCurrentPosition(0), torque, force, atStop, beyond,
                        widest);
    }
    if (plot != nullptr)
        std::fclose(plot);
    gallery.expect("widest gap of a hinge", "m", 0, widest);
    gallery.expect("farthest beyond a stop", "rad", 0, beyond);
    Hy::HyFrame::release();
}
