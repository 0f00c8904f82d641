// A brick wall stands on its own friction until a heavy ball breaks it. Printed: overlap, energy, contacts
// and the time of a step, before the ball comes, as it breaks through, and after.
#include "Gallery.h"

#include <Hy/Hy.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <vector>

namespace {

constexpr int kColumns = 10, kRows = 8, kStepsPerSecond = 120;
constexpr double kLength = 0.5, kDepth = 0.25, kHeight = 0.25, kJoint = 0.005; // of a brick, m
constexpr double kBrickMass = 30, kBallMass = 400, kRadius = 0.5, kSpeed = 12; // kg, kg, m, m/s
constexpr double kGravity = 9.80665;                                           // m/s²

double energyOf(const std::vector<Hy::HyPart*>& parts) {
    double energy = 0;
    for (const Hy::HyPart* part : parts)
        energy += part->getKineticEnergy() + part->getMass() * kGravity * part->getPosition()[2];
    return energy;
}

struct Contacts {
    int count = 0;
    double overlap = 0; // m
};

Contacts look(Hy::HyUniverse& universe) {
    Contacts contacts;
    for (auto each = universe.dynamicsContactBegin(); each != universe.dynamicsContactEnd();
         ++each) {
        ++contacts.count;
        contacts.overlap = std::max(contacts.overlap, (*each)->getPenetration());
    }
    return contacts;
}

} // namespace

int main(int argc, char** argv) {
    Gallery gallery(argc, argv);
    Hy::HyFrame* frame = Hy::HyFrame::instance();
    frame->setTimeStep(1.0 / kStepsPerSecond);
    Hy::HyUniverse& universe = frame->getUniverse();
    Hy::HySolverParameters* solver = universe.getSolverParameters(0);
    solver->setIterativeSolverRowThreshold(300); // the wall is swept
    solver->setIterativeSolverWarmStart(true);
    Hy::HyMaterial* brick = universe.getMaterialTable()->registerMaterial("brick");
    brick->setFrictionModel(Hy::HyMaterial::kFrictionAxisLinear,
                            Hy::HyMaterial::kFrictionModelScaledBox);
    brick->setFrictionCoefficient(Hy::HyMaterial::kFrictionAxisLinear, 0.6);
    auto* ground = new Hy::HyPart;
    ground->setControl(Hy::HyPart::kControlStatic);
    ground->addCollisionGeometry(new Hy::HyCollisionGeometry(new Hy::HyPlane, brick));
    universe.addPart(ground);

    std::vector<Hy::HyPart*> parts;
    auto* shape = new Hy::HyBox(kDepth, kLength, kHeight);
    for (int row = 0; row < kRows; ++row)
        for (int column = 0; column < kColumns; ++column) {
            auto* part = new Hy::HyPart(kBrickMass);
            part->addCollisionGeometry(new Hy::HyCollisionGeometry(shape, brick));
            part->setPosition(0, (kLength + kJoint) * (column - 0.5 * kColumns + 0.5 * (row % 2)),
                              kHeight * (row + 0.5));
            universe.addPart(part);
            parts.push_back(part);
        }
    auto* ball = new Hy::HyPart(kBallMass);
    ball->addCollisionGeometry(new Hy::HyCollisionGeometry(new Hy::HySphere(kRadius), brick));
    ball->setPosition(-kSpeed * 1.0 - kRadius, 0, 1.0);
    ball->setLinearVelocity(kSpeed, 0, 0.5 * kGravity); // is at this height again after a second
    universe.addPart(ball);
    parts.push_back(ball);

    gallery.channels.add("energy", "J", [&] { return energyOf(parts); });
    gallery.watch(universe);
    const double start = energyOf(parts);
    double highest = start, deepest = 0, shift = 0, worst = 0;
    std::printf("%8s %12s %10s %13s %12s\n", "time (s)", "overlap (m)", "contacts", "energy (J)",
                "step (ms)");
    for (int step = 1; step <= 4 * kStepsPerSecond; ++step) {
        const auto from = std::chrono::steady_clock::now();
        frame->step();
        const std::chrono::duration<double, std::milli> time =
            std::chrono::steady_clock::now() - from;
        worst = std::max(worst, time.count());
        const double energy = energyOf(parts);
        const Contacts contacts = look(universe);
        highest = std::max(highest, energy);
        deepest = std::max(deepest, contacts.overlap);
        if (step == 9 * kStepsPerSecond / 10) // the ball is still 1.2 m away
            for (std::size_t i = 0; i + 1 < parts.size(); ++i)
                shift = std::max(shift, std::abs(parts[i]->getPosition()[0]));
        if (step % (kStepsPerSecond / 4) == 0)
            std::printf("%8.2f %12.5f %10d %13.1f %12.2f\n",
                        static_cast<double>(step) / kStepsPerSecond, contacts.overlap,
                        contacts.count, energy, time.count());
    }
    double lowest = 1, farthest = 0;
    for (const Hy::HyPart* part : parts) {
        lowest = std::min(lowest, part->getPosition()[2]);
        farthest = std::max(farthest, part->getPosition()[0]);
    }
    gallery.expect("bricks moved before the hit", "m", 0, shift);
    gallery.expect("energy above the start", "J", 0, highest - start);
    std::printf("before the hit the bricks had moved by %.2g m\n", shift);
    std::printf("energy rose by at most %.3f of what the ball brought in, deepest overlap %.4f m, "
                "longest step %.1f ms\n",
                (highest - start) / (0.5 * kBallMass * kSpeed * kSpeed), deepest, worst);
    std::printf("lowest centre %.3f m above the ground, farthest part %.1f m behind the wall\n",
                lowest, farthest);
    Hy::HyFrame::release();
    const bool stood = shift<1e-3, broke = farthest> 1, above = lowest > 0.4 * kDepth;
    return stood && broke && above && highest < start * 1.01 ? 0 : 1;
}
