// A pyramid of 210 boxes, held by friction alone, should stand still: twenty rows, each box on two.
#include "Gallery.h"

#include <Hy/Hy.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <vector>

namespace {

constexpr int kRows = 20;
constexpr int kSteps = 600;

Hy::HyMaterial* addMaterial(Hy::HyUniverse& universe, double friction) {
    Hy::HyMaterial* material = universe.getMaterialTable()->registerMaterial("stone");
    material->setFrictionModel(Hy::HyMaterial::kFrictionAxisLinear,
                               Hy::HyMaterial::kFrictionModelScaledBox);
    material->setFrictionCoefficient(Hy::HyMaterial::kFrictionAxisLinear, friction);
    return material;
}

} // namespace

int main(int argc, char** argv) {
    Gallery gallery(argc, argv);
    Hy::HyFrame* frame = Hy::HyFrame::instance();
    Hy::HyUniverse& universe = frame->getUniverse();
    universe.setAutoSleep(false); // standing still is not falling asleep
    // An island of more rows than this is swept, beginning with the forces of the last step.
    Hy::HySolverParameters* solver = universe.getSolverParameters(0);
    solver->setIterativeSolverRowThreshold(600);
    solver->setIterativeSolverWarmStart(true);
    solver->setConstraintIterativeSolverMaxIteration(40);
    Hy::HyMaterial* stone = addMaterial(universe, 0.5);

    auto* ground = new Hy::HyPart;
    ground->setControl(Hy::HyPart::kControlStatic);
    ground->addCollisionGeometry(new Hy::HyCollisionGeometry(new Hy::HyPlane, stone));
    universe.addPart(ground);

    std::vector<Hy::HyPart*> boxes;
    std::vector<Hy::HyVector3> places;
    for (int row = 0; row < kRows; ++row)
        for (int i = 0; i < kRows - row; ++i) {
            auto* box = new Hy::HyPart(1.0);
            box->addCollisionGeometry(new Hy::HyCollisionGeometry(new Hy::HyBox(1, 1, 1), stone));
            const Hy::HyVector3 place((i - (kRows - 1 - row) / 2.0) * 1.05, 0, 0.5 + row);
            box->setPosition(place);
            universe.addPart(box);
            boxes.push_back(box);
            places.push_back(place);
        }

    gallery.channels.add("top of the pyramid", "m", [&] { return boxes.back()->getPosition()[2]; });
    gallery.watch(universe, {.rate = 10, .forces = true});
    std::vector<double> milliseconds;
    for (int step = 0; step < kSteps; ++step) {
        const auto start = std::chrono::steady_clock::now();
        frame->step();
        const std::chrono::duration<double, std::milli> time =
            std::chrono::steady_clock::now() - start;
        milliseconds.push_back(time.count());
    }
    std::nth_element(milliseconds.begin(), milliseconds.begin() + kSteps / 2, milliseconds.end());

    double moved = 0, speed = 0, deepest = 0, weight = 0;
    int contacts = 0;
    for (std::size_t i = 0; i < boxes.size(); ++i) {
        moved = std::max(moved, (boxes[i]->getPosition() - places[i]).norm());
        speed = std::max(speed, boxes[i]->getLinearVelocity().norm());
    }
    for (auto contact = universe.dynamicsContactBegin(); contact != universe.dynamicsContactEnd();
         ++contact) {
        ++contacts;
        deepest = std::max(deepest, (*contact)->getPenetration());
        Hy::HyPart *part1 = nullptr, *part2 = nullptr;
        (*contact)->getPartPair(part1, part2);
        Hy::HyVector3 force;
        (*contact)->getForce(part1 == ground ? 1 : 0, force); // on the box
        if (part1 == ground || part2 == ground)
            weight += force[2];
    }
    std::printf("%zu boxes after %d steps: moved %.2g m at most, fastest %.2g m/s\n", boxes.size(),
                kSteps, moved, speed);
    gallery.expect("ground bears", "N", static_cast<double>(boxes.size()) * 9.80665, weight);
    gallery.expect("moved at most", "m", 0, moved);
    gallery.measure("deepest overlap", "m", deepest);
    std::printf("%d contacts, deepest %.2g m\n", contacts, deepest);
    std::printf("the ground bears %.3f N of a weight of %.3f N\n", weight,
                static_cast<double>(boxes.size()) * 9.80665);
    std::printf("a step takes %.2f ms (median)\n",
                milliseconds[static_cast<std::size_t>(kSteps) / 2]);
    Hy::HyFrame::release();
    return moved < 0.05 ? 0 : 1;
}
