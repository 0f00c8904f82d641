// A six-axis arm of the 18 kg class, with masses, lengths and torque limits as published for such an
// arm, holds a payload of 5 kg and then swings it. Holding torques are compared with statics, the work
// of the motors with the energy that the arm gains.
// Usage: robot_arm [plot.csv]
#include "Gallery.h"

#include <Hy/Hy.h>

#include <cmath>
#include <cstdio>
#include <numbers>

using Hy::HyVector3;

namespace {

constexpr double kGravity = 9.80665;
constexpr int kAxes = 6;

/// One axis with the link behind it, the arm stretched out along x. World axes, kg, m, kg m^2, N m.
struct Axis {
    HyVector3 origin, direction;
    double mass;
    HyVector3 centre;
    HyVector3 inertia; // principal, along x, y, z
    double maxTorque;
};

const Axis kArm[kAxes] = {
    {{0, 0, 0}, {0, 0, 1}, 3.7, {0, 0.0256, 0.0872}, {0.0103, 0.0103, 0.0067}, 150},
    {{0, 0.1359, 0.0892},
     {0, 1, 0},
     8.393,
     {0.2125, 0.1359, 0.0892},
     {0.0151, 0.2269, 0.2269},
     150},
    {{0.425, 0.0162, 0.0892},
     {0, 1, 0},
     2.33,
     {0.575, 0.0162, 0.0892},
     {0.0041, 0.0494, 0.0494},
     150},
    {{0.8173, 0.0162, 0.0892},
     {0, 1, 0},
     1.219,
     {0.8173, 0.0929, 0.0892},
     {0.0012, 0.0009, 0.0012},
     28},
    {{0.8173, 0.1092, 0.0892},
     {0, 0, -1},
     1.219,
     {0.8173, 0.1092, 0.0110},
     {0.0012, 0.0012, 0.0009},
     28},
    {{0.8173, 0.1092, -0.0055},
     {0, 1, 0},
     0.1879,
     {0.8173, 0.1903, -0.0055},
     {0.0001, 0.0002, 0.0001},
     28},
};
constexpr double kPayload = 5;
const HyVector3 kPayloadCentre(0.8173, 0.2315, -0.0055);

Hy::HyPart* addLink(Hy::HyUniverse& universe, double mass, const HyVector3& centre,
                    const HyVector3& I) {
    auto* part = new Hy::HyPart(mass);
    const double tensor[3][3] = {{I[0], 0, 0}, {0, I[1], 0}, {0, 0, I[2]}};
    part->setMassAndInertia(mass, tensor);
    universe.addPart(part);
    part->setPosition(centre);
    return part;
}

/// Torque about an axis that holds all links behind it and the payload against gravity.
double holdingTorque(int axis) {
    double torque = 0;
    const auto add = [&](double mass, const HyVector3& centre) {
        torque -= (centre - kArm[axis].origin)
                      .cross(HyVector3(0, 0, -mass * kGravity))
                      .dot(kArm[axis].direction);
    };
    for (int i = axis; i < kAxes; ++i)
        add(kArm[i].mass, kArm[i].centre);
    add(kPayload, kPayloadCentre);
    return torque;
}

} // namespace

int main(int argc, char** argv) {
    Gallery gallery(argc, argv);
    Hy::HyFrame* frame = Hy::HyFrame::instance();
    constexpr int kStepsPerSecond = 240;
    frame->setTimeStep(1.0 / kStepsPerSecond);
    Hy::HyUniverse& universe = frame->getUniverse();
    universe.setAutoSleep(false);
    Hy::HyPart* links[kAxes + 1];
    Hy::HyHinge* hinges[kAxes];
    for (int i = 0; i < kAxes; ++i) {
        links[i] = addLink(universe, kArm[i].mass, kArm[i].centre, kArm[i].inertia);
        hinges[i] = new Hy::HyHinge(links[i], i > 0 ? links[i - 1] : nullptr, kArm[i].origin,
                                    kArm[i].direction);
        universe.addConstraint(hinges[i]);
        hinges[i]->enable(true);
        hinges[i]->setLockParameters(0, 0, kArm[i].maxTorque);
        hinges[i]->setControl(0, Hy::HyConstraint::kControlLocked);
    }
    links[kAxes] = addLink(universe, kPayload, kPayloadCentre, {0.01, 0.01, 0.01});
    auto* grip =
        new Hy::HyHinge(links[kAxes], links[kAxes - 1], kPayloadCentre, HyVector3(0, 1, 0));
    universe.addConstraint(grip);
    grip->enable(true);
    grip->lockAll(true);

    for (int i = 0; i < 3; ++i)
        gallery.channels.add(("torque of axis " + std::to_string(i + 1)).c_str(), "N m",
                             [&, i] { return hinges[i]->getCoordinateForce(0); });
    gallery.watch(universe);
    for (int n = 0; n < kStepsPerSecond; ++n)
        frame->step();
    gallery.expect("holding torque of the shoulder", "N m", holdingTorque(1),
                   hinges[1]->getCoordinateForce(0));
    gallery.expect("holding torque of the elbow", "N m", holdingTorque(2),
                   hinges[2]->getCoordinateForce(0));
    std::printf("holding the payload:\naxis  torque (N m)  statics (N m)  limit (N m)\n");
    for (int i = 0; i < kAxes; ++i)
        std::printf("%4d  %12.5f  %13.5f  %11.0f\n", i + 1, hinges[i]->getCoordinateForce(0),
                    holdingTorque(i), kArm[i].maxTorque);

    std::FILE* plot = argc > 1 ? std::fopen(argv[1], "w") : nullptr;
    if (plot != nullptr)
        std::fprintf(plot, "time,x,y,z,t1,t2,t3,t4,t5,t6\n");
    const auto energy = [&] {
        double sum = 0;
        for (Hy::HyPart* link : links)
            sum += link->getKineticEnergy() + link->getMass() * kGravity * link->getPosition()[2];
        return sum;
    };
    for (int i = 0; i < kAxes; ++i) {
        hinges[i]->setMotorParameters(0, 0, kArm[i].maxTorque, 0);
        hinges[i]->setControl(0, Hy::HyConstraint::kControlMotorized);
    }
    std::printf("\nswinging it:\n t (s)  tool x, y, z (m)            highest torque / limit  "
                "energy (J)  motors' work (J)  gap (m)\n");
    const double start = energy();
    double work = 0, load = 0, gap = 0;
    for (int n = 1; n <= 6 * kStepsPerSecond; ++n) {
        const double t = static_cast<double>(n) / kStepsPerSecond;
        double before[kAxes];
        for (int i = 0; i < kAxes; ++i) {
            before[i] = hinges[i]->getCoordinateCurrentPosition(0);
            hinges[i]->setMotorDesiredVelocity(0, 0.6 * std::sin((0.7 + 0.2 * i) * t) *
                                                      (i % 2 == 0 ? 1 : -1));
        }
        frame->step();
        for (int i = 0; i < kAxes; ++i) {
            const double torque = hinges[i]->getCoordinateForce(0);
            work += torque * (hinges[i]->getCoordinateCurrentPosition(0) - before[i]);
            load = std::max(load, std::abs(torque) / kArm[i].maxTorque);
            gap = std::max(gap, (hinges[i]->getPartAttachmentPosition(0) -
                                 hinges[i]->getPartAttachmentPosition(1))
                                    .norm());
        }
        const HyVector3 tool = links[kAxes]->getPosition();
        if (plot != nullptr) {
            std::fprintf(plot, "%.4f,%.5f,%.5f,%.5f", t, tool[0], tool[1], tool[2]);
            for (const Hy::HyHinge* hinge : hinges)
                std::fprintf(plot, ",%.4f", hinge->getCoordinateForce(0));
            std::fprintf(plot, "\n");
        }
        if (n % kStepsPerSecond == 0)
            std::printf("%6.1f  %8.4f %8.4f %8.4f  %22.3f  %10.3f  %16.3f  %7.1e\n", t, tool[0],
                        tool[1], tool[2], load, energy() - start, work, gap);
    }
    if (plot != nullptr)
        std::fclose(plot);
    gallery.expect("energy gained by the motors' work", "J", work, energy() - start);
    Hy::HyFrame::release();
}
