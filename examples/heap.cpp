// A thousand boxes fall on one heap, slide and come to rest. Printed: the time of a step, energy, contacts
// and overlap as the heap grows still, and what it costs once it sleeps.
#include "Gallery.h"

#include <Hy/Hy.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <random>
#include <vector>

namespace {

constexpr int kSide = 10;
constexpr double kHalf = 0.25;       // m
constexpr double kGravity = 9.80665; // m/s²

double energyOf(const std::vector<Hy::HyPart*>& parts) {
    double energy = 0;
    for (const Hy::HyPart* part : parts)
        energy += part->getKineticEnergy() + part->getMass() * kGravity * part->getPosition()[2];
    return energy;
}

double median(std::vector<double>& values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

} // namespace

int main(int argc, char** argv) {
    Gallery gallery(argc, argv);
    Hy::HyFrame* frame = Hy::HyFrame::instance();
    Hy::HyUniverse& universe = frame->getUniverse();
    Hy::HySolverParameters* solver = universe.getSolverParameters(0);
    solver->setIterativeSolverRowThreshold(300); // large islands are swept
    solver->setIterativeSolverWarmStart(true);
    Hy::HyMaterial* crate = universe.getMaterialTable()->registerMaterial("crate");
    crate->setFrictionModel(Hy::HyMaterial::kFrictionAxisLinear,
                            Hy::HyMaterial::kFrictionModelScaledBox);
    crate->setFrictionCoefficient(Hy::HyMaterial::kFrictionAxisLinear, 0.5);
    auto* ground = new Hy::HyPart;
    ground->setControl(Hy::HyPart::kControlStatic);
    ground->addCollisionGeometry(new Hy::HyCollisionGeometry(new Hy::HyPlane, crate));
    universe.addPart(ground);

    std::mt19937 random(12345);
    std::uniform_real_distribution<double> shift(-0.01, 0.01), axis(-1, 1), angle(0, 0.5);
    std::vector<Hy::HyPart*> boxes;
    auto* shape = new Hy::HyBox(2 * kHalf, 2 * kHalf, 2 * kHalf);
    for (int i = 0; i < kSide * kSide * kSide; ++i) {
        auto* box = new Hy::HyPart(1.0);
        box->addCollisionGeometry(new Hy::HyCollisionGeometry(shape, crate));
        const double half = angle(random) / 2;
        const Hy::HyVector3 about =
            Hy::HyVector3(axis(random), axis(random), axis(random) + 2).normalized() *
            std::sin(half);
        box->setOrientationQuaternion(
            Hy::HyQuaternion(std::cos(half), about[0], about[1], about[2]));
        box->setPosition((i % kSide - 4.5) * 0.9 + shift(random),
                         (i / kSide % kSide - 4.5) * 0.9 + shift(random),
                         1 + 0.9 * (i / kSide / kSide));
        universe.addPart(box);
        boxes.push_back(box);
    }

    gallery.channels.add("energy", "J", [&] { return energyOf(boxes); });
    gallery.watch(universe, {.rate = 30});
    const double start = energyOf(boxes);
    double highest = start;
    std::vector<double> milliseconds;
    std::printf("%6s %10s %10s %10s %12s %8s\n", "time", "step", "contacts", "asleep", "energy",
                "overlap");
    for (int step = 1; step <= 600; ++step) {
        const auto from = std::chrono::steady_clock::now();
        frame->step();
        const std::chrono::duration<double, std::milli> time =
            std::chrono::steady_clock::now() - from;
        milliseconds.push_back(time.count());
        highest = std::max(highest, energyOf(boxes));
        if (step % 60 != 0)
            continue;
        int contacts = 0;
        double deepest = 0;
        for (auto contact = universe.dynamicsContactBegin();
             contact != universe.dynamicsContactEnd(); ++contact) {
            ++contacts;
            deepest = std::max(deepest, (*contact)->getPenetration());
        }
        const auto asleep = std::count_if(boxes.begin(), boxes.end(), [](const Hy::HyPart* box) {
            return !box->isDynamicsAwake();
        });
        std::printf("%4d s %7.2f ms %10d %10d %10.1f J %5.1f mm\n", step / 60, median(milliseconds),
                    contacts, static_cast<int>(asleep), energyOf(boxes), 1000 * deepest);
        milliseconds.clear();
    }
    int lost = 0;
    for (const Hy::HyPart* box : boxes)
        lost += box->getPosition()[2] < 0;
    gallery.expect("boxes lost of 1000", "", 0, lost);
    gallery.expect("energy above the start", "J", 0, highest - start);
    std::printf("energy rose by %.3g J at most; %d boxes lost\n", highest - start, lost);
    Hy::HyFrame::release();
    return lost == 0 ? 0 : 1;
}
