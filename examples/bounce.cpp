// Balls of different restitution e fall on the floor. The n-th bounce should reach e^(2n) of the first
// height, until the speed of approach falls below the material's threshold and the ball lies still.
#include "Gallery.h"

#include <Hy/Hy.h>

#include <cmath>
#include <cstdio>
#include <vector>

using Hy::HyVector3;

namespace {

constexpr double kMass = 0.5, kRadius = 0.1, kHeight = 1; // kg, m, m
constexpr double kGravity = 9.80665;
constexpr int kStepsPerSecond = 4000;
constexpr double kThreshold = 0.8; // m/s
constexpr int kBounces = 5;

/// Greatest height of the ball's lowest point after each bounce, m.
std::vector<double> bounce(double restitution, Gallery* gallery) {
    Hy::HyFrame* frame = Hy::HyFrame::instance();
    frame->setTimeStep(1.0 / kStepsPerSecond);
    Hy::HyUniverse& universe = frame->getUniverse();
    universe.setAutoSleep(false);
    auto* ball = new Hy::HyPart(kMass);
    ball->setPosition(0, 0, kRadius + kHeight);
    universe.addPart(ball);
    if (gallery) {
        Gallery::dress(*ball, new Hy::HySphere(kRadius));
        gallery->channels.add("height", "m", [ball] { return ball->getPosition()[2] - kRadius; });
        gallery->watch(universe);
    }
    Hy::HyContactMaterial rubber;
    rubber.setRestitution(restitution);
    rubber.setVelThreshold(kThreshold);
    // Penetration stays 0: what a step has sunk in would be pushed out again, and add to the bounce.
    Hy::HyDynamicsContact* contact = universe.createUserDynamicsContact(
        ball, nullptr, &rubber, HyVector3(), HyVector3(0, 0, 1), 0);

    std::vector<double> heights;
    double before = -1; // speed, m/s
    for (int i = 0; i < 8 * kStepsPerSecond && heights.size() < kBounces; ++i) {
        const double gap = ball->getPosition()[2] - kRadius;
        contact->setPosition(HyVector3(0, 0, 0));
        contact->enableContact(gap <= 0);
        frame->step();
        const double speed = ball->getLinearVelocity()[2];
        if (before > 0 && speed <= 0)
            heights.push_back(ball->getPosition()[2] - kRadius);
        before = speed;
    }
    heights.resize(kBounces, 0.0);
    Hy::HyFrame::release();
    return heights;
}

} // namespace

int main(int argc, char** argv) {
    Gallery gallery(argc, argv);
    std::printf("   e  bounce  height (m)  e^(2n) h (m)\n");
    bool right = true;
    for (const double e : {1.0, 0.9, 0.7, 0.4, 0.0}) {
        const std::vector<double> heights = bounce(e, e == 0.7 ? &gallery : nullptr);
        double approach = std::sqrt(2 * kGravity * kHeight), expected = kHeight;
        for (int n = 1; n <= kBounces; ++n) {
            const bool bounces = approach > kThreshold && e > 0;
            expected = bounces ? expected * e * e : 0;
            approach *= e;
            const double height = heights[static_cast<std::size_t>(n - 1)];
            std::printf("%4.1f  %6d  %10.4f  %12.4f\n", e, n, height, expected);
            if (e == 0.7)
                gallery.expect("height of a bounce", "m", expected, height);
            right = right && std::abs(height - expected) < 2e-3 + 0.01 * expected;
            if (!bounces)
                break;
        }
    }
    return right ? 0 : 1;
}
