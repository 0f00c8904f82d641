// A planar crank and rocker with four hinges: twenty equations, of which three say nothing new. It
// turns for an hour, and is looked at for drift.
// Usage: fourbar [plot.csv]
#include "Gallery.h"

#include <Hy/Hy.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <numbers>

using Hy::HyVector3;

namespace {

/// A square bar from p to q in the plane of x and z, 2 kg/m.
Hy::HyPart* addBar(Hy::HyUniverse& universe, const HyVector3& p, const HyVector3& q) {
    const double length = (q - p).norm(), mass = 2 * length, side = 0.06;
    auto* bar = new Hy::HyPart(mass);
    const double along = mass * side * side / 6;
    const double across = mass * (length * length + side * side) / 12;
    const double tensor[3][3] = {{along, 0, 0}, {0, across, 0}, {0, 0, across}};
    bar->setMassAndInertia(mass, tensor);
    universe.addPart(bar);
    const double angle = -std::atan2(q[2] - p[2], q[0] - p[0]); // about y
    bar->setOrientationQuaternion(Hy::HyQuaternion(std::cos(angle / 2), 0, std::sin(angle / 2), 0));
    bar->setPosition(0.5 * (p + q));
    return bar;
}

Hy::HyHinge* addHinge(Hy::HyUniverse& universe, Hy::HyPart* a, Hy::HyPart* b, const HyVector3& at) {
    auto* hinge = new Hy::HyHinge(a, b, at, HyVector3(0, 1, 0));
    universe.addConstraint(hinge);
    hinge->enable(true);
    return hinge;
}

} // namespace

int main(int argc, char** argv) {
    Gallery gallery(argc, argv);
    Hy::HyFrame* frame = Hy::HyFrame::instance();
    Hy::HyUniverse& universe = frame->getUniverse();
    universe.setAutoSleep(false);
    const double r = std::numbers::pi / 3;
    const HyVector3 A(0, 0, 0), B(0.5 * std::cos(r), 0, 0.5 * std::sin(r)), D(1.6, 0, 0);
    // C lies above, at 1.5 m from B and 1.2 m from D.
    const HyVector3 BD = D - B;
    const double d = BD.norm(), s = (1.5 * 1.5 - 1.2 * 1.2 + d * d) / (2 * d);
    const HyVector3 up = HyVector3(-BD[2], 0, BD[0]) / d;
    const HyVector3 C = B + s / d * BD + std::sqrt(1.5 * 1.5 - s * s) * up;
    Hy::HyPart* crank = addBar(universe, A, B);
    Hy::HyPart* coupler = addBar(universe, B, C);
    Hy::HyPart* rocker = addBar(universe, C, D);
    Hy::HyHinge* hinges[4] = {
        addHinge(universe, crank, nullptr, A), addHinge(universe, coupler, crank, B),
        addHinge(universe, rocker, coupler, C), addHinge(universe, rocker, nullptr, D)};
    hinges[0]->setMotorParameters(0, 3, 1000, 0); // rad/s, N m
    hinges[0]->setControl(0, Hy::HyConstraint::kControlMotorized);

    gallery.channels.add("motor torque", "N m", [&] { return hinges[0]->getCoordinateForce(0); });
    gallery.channels.add("rocker", "rad",
                         [&] { return hinges[3]->getCoordinateCurrentPosition(0); });
    gallery.watch(universe);
    std::FILE* plot = argc > 1 ? std::fopen(argv[1], "w") : nullptr;
    if (plot != nullptr)
        std::fprintf(plot, "time,crank,rocker,torque\n");
    std::printf(
        "minutes  crank (turns)  closure (m), worst so far  out of plane (m)  motor (N m)\n");
    double worst = 0, out = 0;
    for (int n = 1; n <= 216000; ++n) {
        frame->step();
        for (const Hy::HyHinge* hinge : hinges)
            worst = std::max(
                worst,
                (hinge->getPartAttachmentPosition(0) - hinge->getPartAttachmentPosition(1)).norm());
        for (const Hy::HyPart* bar : {crank, coupler, rocker})
            out = std::max(out, std::abs(bar->getPosition()[1]));
        if (n == 600)
            gallery.stop();
        const double angle = hinges[0]->getCoordinateCurrentPosition(0);
        const double torque = hinges[0]->getCoordinateForce(0);
        if (plot != nullptr && n <= 600)
            std::fprintf(plot, "%.4f,%.5f,%.5f,%.3f\n", n / 60.0, angle,
                         hinges[3]->getCoordinateCurrentPosition(0), torque);
        if (n % 36000 == 0)
            std::printf("%7d  %13.3f  %26.1e  %16.1e  %11.2f\n", n / 3600,
                        angle / (2 * std::numbers::pi), worst, out, torque);
    }
    if (plot != nullptr)
        std::fclose(plot);
    gallery.expect("turns in an hour", "", 3600 * 3 / (2 * std::numbers::pi),
                   hinges[0]->getCoordinateCurrentPosition(0) / (2 * std::numbers::pi));
    gallery.expect("widest gap of a hinge in an hour", "m", 0, worst);
    std::printf("asked for %.3f turns\n", 3600 * 3 / (2 * std::numbers::pi));
    Hy::HyFrame::release();
}
