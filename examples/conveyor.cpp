// A crate is set down at rest on a running belt. Friction accelerates it by mu g until it has the
// belt's speed v, so after v / (mu g), having slipped v^2 / (2 mu g) on the belt; then it rides along.
#include "Gallery.h"

#include <Hy/Hy.h>

#include <cmath>
#include <cstdio>
#include <vector>

using Hy::HyVector3;

namespace {

constexpr double kMass = 20, kHalf = 0.3; // kg, m
constexpr double kGravity = 9.80665;
constexpr int kStepsPerSecond = 480;

using Material = Hy::HyContactMaterial;

struct Ride {
    double time;  // s, until the crate has the belt's speed
    double slip;  // m, on the belt
    double later; // m/s, speed one second later
};

Ride ride(double mu, double speed, Gallery* gallery) {
    Hy::HyFrame* frame = Hy::HyFrame::instance();
    frame->setTimeStep(1.0 / kStepsPerSecond);
    Hy::HyUniverse& universe = frame->getUniverse();
    auto* crate = new Hy::HyPart(kMass);
    crate->setPosition(0, 0, kHalf);
    universe.addPart(crate);
    if (gallery) {
        Gallery::dress(*crate, new Hy::HyBox(2 * kHalf, 2 * kHalf, 2 * kHalf));
        gallery->channels.add("speed", "m/s", [crate] { return crate->getLinearVelocity()[0]; });
        gallery->watch(universe);
    }

    Material belt;
    belt.setFrictionModel(Material::kFrictionAxisLinear, Material::kFrictionModelScaledBox);
    belt.setFrictionCoefficient(Material::kFrictionAxisLinear, mu);
    belt.setSlide(Material::kFrictionAxisLinearPrimary, speed);
    std::vector<Hy::HyDynamicsContact*> contacts;
    for (int i = 0; i < 4; ++i) {
        contacts.push_back(universe.createUserDynamicsContact(crate, nullptr, &belt, HyVector3(),
                                                              HyVector3(0, 0, 1), 0));
        contacts.back()->setDirection(HyVector3(1, 0, 0)); // the belt's run
    }

    Ride result{-1, 0, 0};
    for (int i = 0; i < 20 * kStepsPerSecond; ++i) {
        for (std::size_t k = 0; k < contacts.size(); ++k) {
            const HyVector3 corner(k % 2 == 0 ? -kHalf : kHalf, k < 2 ? -kHalf : kHalf, -kHalf);
            const HyVector3 point = crate->getTransform().transform(corner);
            contacts[k]->setPosition(point);
            contacts[k]->setPenetration(-point[2]);
            contacts[k]->enableContact(true);
        }
        frame->step();
        const double t = (i + 1.0) / kStepsPerSecond;
        result.later = crate->getLinearVelocity()[0];
        if (result.time < 0 && result.later > speed * (1 - 1e-4)) {
            result.time = t;
            result.slip = speed * t - crate->getPosition()[0];
        }
        if (result.time > 0 && t > result.time + 1)
            break;
    }
    Hy::HyFrame::release();
    return result;
}

} // namespace

int main(int argc, char** argv) {
    Gallery gallery(argc, argv);
    std::printf("  mu  belt (m/s)  time to its speed (s)  expected (s)  slip (m)  expected (m)  "
                "a second later (m/s)\n");
    bool right = true;
    for (const double mu : {0.1, 0.3, 0.8})
        for (const double speed : {0.5, 2.0}) {
            const bool isShown = mu == 0.3 && speed == 2;
            const Ride r = ride(mu, speed, isShown ? &gallery : nullptr);
            const double time = speed / (mu * kGravity), slip = speed * time / 2;
            std::printf("%4.1f  %10.1f  %21.4f  %12.4f  %8.4f  %12.4f  %20.6f\n", mu, speed, r.time,
                        time, r.slip, slip, r.later);
            if (isShown) {
                gallery.expect("time to the belt's speed", "s", time, r.time);
                gallery.expect("slip on the belt", "m", slip, r.slip);
            }
            right = right && std::abs(r.time - time) < 2.0 / kStepsPerSecond &&
                    std::abs(r.slip - slip) < 2.0 * speed / kStepsPerSecond &&
                    std::abs(r.later - speed) < 1e-3 * speed;
        }
    return right ? 0 : 1;
}
