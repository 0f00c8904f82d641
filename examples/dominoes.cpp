// Twenty dominoes: a push on the first one runs through the row. Printed: when each falls, the speed of
// the wave once it runs evenly, and what the energy of the row does.
#include "Gallery.h"

#include <Hy/Hy.h>

#include <cmath>
#include <cstdio>
#include <vector>

namespace {

constexpr int kCount = 20;
constexpr int kStepsPerSecond = 240;
constexpr double kThickness = 0.1, kWidth = 0.5, kHeight = 1, kSpacing = 0.4; // m
constexpr double kGravity = 9.80665;                                          // m/s²

double energyOf(const std::vector<Hy::HyPart*>& parts) {
    double energy = 0;
    for (const Hy::HyPart* part : parts)
        energy += part->getKineticEnergy() + part->getMass() * kGravity * part->getPosition()[2];
    return energy;
}

bool hasFallen(const Hy::HyPart& domino) {
    return domino.getTransform().axis(2)[2] < std::cos(0.5); // leans by half a radian
}

} // namespace

int main(int argc, char** argv) {
    Gallery gallery(argc, argv);
    Hy::HyFrame* frame = Hy::HyFrame::instance();
    frame->setTimeStep(1.0 / kStepsPerSecond);
    Hy::HyUniverse& universe = frame->getUniverse();
    Hy::HyMaterial* wood = universe.getMaterialTable()->registerMaterial("wood");
    wood->setFrictionModel(Hy::HyMaterial::kFrictionAxisLinear,
                           Hy::HyMaterial::kFrictionModelScaledBox);
    wood->setFrictionCoefficient(Hy::HyMaterial::kFrictionAxisLinear, 0.4);
    auto* table = new Hy::HyPart;
    table->setControl(Hy::HyPart::kControlStatic);
    table->addCollisionGeometry(new Hy::HyCollisionGeometry(new Hy::HyPlane, wood));
    universe.addPart(table);

    std::vector<Hy::HyPart*> dominoes;
    for (int i = 0; i < kCount; ++i) {
        auto* domino = new Hy::HyPart(1.0);
        domino->addCollisionGeometry(
            new Hy::HyCollisionGeometry(new Hy::HyBox(kThickness, kWidth, kHeight), wood));
        domino->setPosition(kSpacing * i, 0, kHeight / 2);
        universe.addPart(domino);
        dominoes.push_back(domino);
    }
    gallery.channels.add("energy", "J", [&] { return energyOf(dominoes); });
    gallery.watch(universe);
    frame->step();
    dominoes[0]->setAngularVelocity(0, 1.5, 0);
    const double start = energyOf(dominoes);

    std::vector<double> fallTime(kCount, -1);
    double highest = start;
    int fallen = 0;
    for (int step = 1; step < 10 * kStepsPerSecond && fallen < kCount; ++step) {
        frame->step();
        highest = std::fmax(highest, energyOf(dominoes));
        for (int i = 0; i < kCount; ++i) {
            double& time = fallTime[static_cast<std::size_t>(i)];
            if (time < 0 && hasFallen(*dominoes[static_cast<std::size_t>(i)])) {
                time = static_cast<double>(step) / kStepsPerSecond;
                ++fallen;
                std::printf("domino %2d falls at %.3f s\n", i + 1, time);
            }
        }
    }
    const double from = fallTime[kCount / 2], to = fallTime[kCount - 2];
    if (fallen >= kCount - 1) {
        const double speed = kSpacing * (kCount - 2 - kCount / 2) / (to - from);
        std::printf("the wave runs at %.2f m/s, %.2f times sqrt(g h)\n", speed,
                    speed / std::sqrt(kGravity * kHeight));
        gallery.measure("speed of the wave", "m/s", speed);
    }
    gallery.expect("energy above the push", "J", 0, highest - start);
    std::printf("energy: %.2f J pushed, at most %.4f J above that, %.2f J left\n", start,
                highest - start, energyOf(dominoes));
    Hy::HyFrame::release();
    return fallen >= kCount - 1 ? 0 : 1;
}
