// A rod swings on a hinge; its first period is compared with the elliptic integral for growing
// amplitudes and shrinking steps, and the force in the hinge with the one that the motion asks for. A
// step of h seconds loses energy in proportion to h, and a large swing's period with it.
// Usage: pendulum [plot.csv]
#include "Gallery.h"

#include <Hy/Hy.h>

#include <cmath>
#include <cstdio>
#include <memory>
#include <numbers>
#include <vector>

using Hy::HyVector3;

namespace {

constexpr double kMass = 2, kLength = 1;                    // kg, m
constexpr double kGravity = 9.80665;                        // m/s^2
constexpr double kInertia = kMass * kLength * kLength / 12; // about the centre, kg m^2

struct Swing {
    double period;     // s
    double energyLoss; // part of the energy lost in a period
    double
        forceError; // largest difference of the hinge's force from the motion's, part of the weight
};

/// Swings once from rest at an amplitude in rad.
Swing swing(double amplitude, int stepsPerSecond, std::FILE* plot, Gallery* gallery) {
    Hy::HyFrame* frame = Hy::HyFrame::instance();
    frame->setTimeStep(1.0 / stepsPerSecond);
    Hy::HyUniverse& universe = frame->getUniverse();
    universe.setAutoSleep(false);
    auto* rod = new Hy::HyPart(kMass);
    const double thin = 1e-2 * kInertia;
    const double tensor[3][3] = {{kInertia, 0, 0}, {0, kInertia, 0}, {0, 0, thin}};
    rod->setMassAndInertia(kMass, tensor);
    universe.addPart(rod);
    // Hanging down along z when the angle is 0; the hinge is about y through the origin.
    const Hy::HyQuaternion turn(std::cos(amplitude / 2), 0, std::sin(amplitude / 2), 0);
    rod->setOrientationQuaternion(Hy::HyQuaternion(turn));
    rod->setPosition(turn.rotate(HyVector3(0, 0, -kLength / 2)));
    auto* hinge = new Hy::HyHinge(rod, nullptr, HyVector3(0, 0, 0), HyVector3(0, 1, 0));
    universe.addConstraint(hinge);
    hinge->enable(true);
    hinge->setCoordinateCurrentPosition(0, amplitude);
    hinge->setForceCalculateCoordinatePosition(0, true); // keeps count beyond half a turn

    if (gallery) {
        gallery->channels.add("angle", "rad",
                              [=] { return hinge->getCoordinateCurrentPosition(0); });
        gallery->channels.add("force in the hinge", "N",
                              [=] { return hinge->getPartForce(0).norm(); });
        gallery->watch(universe);
    }
    const double start = rod->getKineticEnergy() + kMass * kGravity * rod->getPosition()[2];
    const double bottom = start + kMass * kGravity * kLength / 2; // energy above the lowest point
    double before = amplitude, time = 0, energy = start, worst = 0;
    HyVector3 speed = rod->getLinearVelocity();
    std::vector<double> crossings;
    while (crossings.size() < 3) {
        frame->step();
        time += 1.0 / stepsPerSecond;
        const double angle = hinge->getCoordinateCurrentPosition(0);
        if (angle * before < 0)
            crossings.push_back(time - angle / (angle - before) / stepsPerSecond);
        before = angle;
        // Newton: what the hinge gives is the change of momentum less the weight.
        const HyVector3 force = kMass * stepsPerSecond * (rod->getLinearVelocity() - speed) +
                                HyVector3(0, 0, kMass * kGravity);
        speed = rod->getLinearVelocity();
        worst = std::max(worst, (hinge->getPartForce(0) - force).norm() / (kMass * kGravity));
        energy = rod->getKineticEnergy() + kMass * kGravity * rod->getPosition()[2];
        if (plot != nullptr)
            std::fprintf(plot, "%.5f,%.6f,%.6f,%.6f\n", time, angle, energy - start,
                         hinge->getPartForce(0).norm());
    }
    Hy::HyFrame::release();
    return {crossings.back() - crossings.front(), (start - energy) / bottom, worst};
}

} // namespace

int main(int argc, char** argv) {
    Gallery gallery(argc, argv);
    std::FILE* plot = argc > 1 ? std::fopen(argv[1], "w") : nullptr;
    if (plot != nullptr)
        std::fprintf(plot, "time,angle,energy,force\n");
    const double inertia = kInertia + kMass * kLength * kLength / 4; // about the hinge
    std::printf(
        "amplitude (deg)  steps/s  period (s)  elliptic integral (s)  energy lost a period  "
        "force error\n");
    for (const double degrees : {5.0, 60.0, 120.0})
        for (const int steps : {60, 600, 6000}) {
            const double amplitude = degrees * std::numbers::pi / 180;
            const double expected = 4 * std::sqrt(inertia / (kMass * kGravity * kLength / 2)) *
                                    std::comp_ellint_1(std::sin(amplitude / 2));
            const bool last = degrees == 120.0 && steps == 600;
            const Swing s =
                swing(amplitude, steps, last ? plot : nullptr, last ? &gallery : nullptr);
            if (last)
                gallery.expect("period at 120 degrees", "s", expected, s.period);
            std::printf("%15.0f  %7d  %10.5f  %21.5f  %20.2e  %11.1e\n", degrees, steps, s.period,
                        expected, s.energyLoss, s.forceError);
        }
    if (plot != nullptr)
        std::fclose(plot);
}
