// Ten rods of 1 kg and 0.1 m carry 1,000 kg, pushed aside: a pendulum whose links would shake
// themselves to pieces if their tension did not stiffen them.
// Usage: mass_ratio [plot.csv]
#include "Gallery.h"

#include <Hy/Hy.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <numbers>
#include <vector>

using Hy::HyVector3;

namespace {

constexpr int kRods = 10;
constexpr double kRodMass = 1, kLength = 0.1, kLoad = 1000; // kg, m, kg
constexpr double kGravity = 9.80665;

Hy::HyPart* addPart(Hy::HyUniverse& universe, double mass, double Ix, double Iz, double z) {
    auto* part = new Hy::HyPart(mass);
    const double tensor[3][3] = {{Ix, 0, 0}, {0, Ix, 0}, {0, 0, Iz}};
    part->setMassAndInertia(mass, tensor);
    universe.addPart(part);
    part->setPosition(0, 0, z);
    return part;
}

Hy::HyBallAndSocket* join(Hy::HyUniverse& universe, Hy::HyPart* a, Hy::HyPart* b, double z) {
    auto* joint = new Hy::HyBallAndSocket(a, b, HyVector3(0, 0, z), nullptr);
    universe.addConstraint(joint);
    joint->enable(true);
    return joint;
}

} // namespace

int main(int argc, char** argv) {
    Gallery gallery(argc, argv);
    Hy::HyFrame* frame = Hy::HyFrame::instance();
    Hy::HyUniverse& universe = frame->getUniverse();
    universe.setAutoSleep(false);
    universe.getSolverParameters(0)->setGeometricStiffness(true);
    std::vector<Hy::HyBallAndSocket*> joints;
    Hy::HyPart* upper = nullptr;
    const double across = kRodMass * kLength * kLength / 12, along = kRodMass * 1e-4 / 2;
    for (int i = 0; i < kRods; ++i) {
        Hy::HyPart* rod = addPart(universe, kRodMass, across, along, -(i + 0.5) * kLength);
        joints.push_back(join(universe, rod, upper, -i * kLength));
        upper = rod;
    }
    const double ball = 0.4 * kLoad * 0.31 * 0.31, centre = kRods * kLength + 0.31;
    Hy::HyPart* load = addPart(universe, kLoad, ball, ball, -centre);
    joints.push_back(join(universe, load, upper, -kRods * kLength));
    load->setLinearVelocity(0.2, 0, 0);

    gallery.channels.add("force at the top", "N",
                         [&] { return joints.front()->getPartForce(0).norm(); });
    gallery.channels.add("load at x", "m", [&] { return load->getPosition()[0]; });
    gallery.watch(universe);
    std::FILE* plot = argc > 1 ? std::fopen(argv[1], "w") : nullptr;
    if (plot != nullptr)
        std::fprintf(plot, "time,x,z,top_force\n");
    std::printf(" t (s)  load at x (m)  stretch (m)  top force (N)  widest gap (m)\n");
    double widest = 0, longest = 0, mean = 0;
    std::vector<double> crossings;
    double before = 0;
    constexpr int kSteps = 3600;
    for (int n = 1; n <= kSteps; ++n) {
        frame->step();
        for (const Hy::HyBallAndSocket* joint : joints)
            widest = std::max(
                widest,
                (joint->getPartAttachmentPosition(0) - joint->getPartAttachmentPosition(1)).norm());
        const HyVector3 hook = joints.back()->getPartAttachmentPosition(1);
        const double stretch = hook.norm() - kRods * kLength;
        const double force = joints.front()->getPartForce(0).norm();
        const double x = load->getPosition()[0];
        longest = std::max(longest, stretch);
        mean += force / kSteps;
        if (before < 0 && x >= 0)
            crossings.push_back(n / 60.0);
        before = x;
        if (plot != nullptr)
            std::fprintf(plot, "%.4f,%.6f,%.6f,%.3f\n", n / 60.0, x, load->getPosition()[2], force);
        if (n % 600 == 0)
            std::printf("%6.1f  %13.4f  %11.1e  %13.1f  %14.1e\n", n / 60.0, x, stretch, force,
                        widest);
    }
    if (plot != nullptr)
        std::fclose(plot);
    std::printf("force at the top: %.1f N on average, the weight is %.1f N\n", mean,
                (kLoad + kRods * kRodMass) * kGravity);
    gallery.expect("force at the top on average", "N", (kLoad + kRods * kRodMass) * kGravity, mean);
    gallery.expect("longest stretch", "m", 0, longest);
    if (crossings.size() > 1)
        std::printf("period %.3f s; a point on a string of the same length %.3f s\n",
                    (crossings.back() - crossings.front()) /
                        static_cast<double>(crossings.size() - 1),
                    2 * std::numbers::pi * std::sqrt(centre / kGravity));
    Hy::HyFrame::release();
}
