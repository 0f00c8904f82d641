// A T-shaped handle spins about its middle axis in free fall, and turns over at regular intervals.
// The interval follows from the elliptic integral of the free top; the letters show where the handle
// points. The gyroscopic torque is taken implicitly, which damps the tumbling in proportion to the
// step: hence short steps here.
#include "Gallery.h"

#include <Hy/Hy.h>

#include <cmath>
#include <cstdio>
#include <string>
#include <utility>

using Hy::HyVector3;

namespace {

/// Time between two turns of a free top with moments I0 < I1 < I2 (Landau, Lifshitz, "Mechanics",
/// section 37): half the period of the angular velocity.
double turnInterval(const double I[3], const HyVector3& w) {
    double energy2 = 0, L2 = 0; // twice the energy, squared angular momentum
    for (int k = 0; k < 3; ++k) {
        energy2 += I[k] * w[k] * w[k];
        L2 += I[k] * w[k] * I[k] * w[k];
    }
    double a = (I[2] - I[1]) * (L2 - energy2 * I[0]), b = (I[1] - I[0]) * (energy2 * I[2] - L2);
    if (b > a)
        std::swap(a, b);
    return 2 * std::comp_ellint_1(std::sqrt(b / a)) * std::sqrt(I[0] * I[1] * I[2] / a);
}

/// Angular velocity in the axes of the part.
HyVector3 bodySpin(const Hy::HyPart& part) {
    return part.getTransform().inverseRotate(part.getAngularVelocity());
}

} // namespace

int main(int argc, char** argv) {
    Gallery gallery(argc, argv);
    // Bar 10 x 1.2 cm, stem 5 x 1.2 cm, steel: moments in kg m^2.
    const double I[3] = {2.1e-5, 7.6e-5, 9.2e-5};
    constexpr int kStepsPerSecond = 9600;
    Hy::HyFrame* frame = Hy::HyFrame::instance();
    Hy::HyUniverse& universe = frame->getUniverse();
    universe.setGravity(0, 0, 0);
    frame->setTimeStep(1.0 / kStepsPerSecond);
    auto* handle = new Hy::HyPart(0.13);
    const double tensor[3][3] = {{I[0], 0, 0}, {0, I[1], 0}, {0, 0, I[2]}};
    handle->setMassAndInertia(0.13, tensor);
    universe.addPart(handle);
    handle->setAngularVelocity(0.1, 12, 0.1); // rad/s
    Gallery::dress(*handle, new Hy::HyBox(0.012, 0.1, 0.012), HyVector3(0.01, 0, 0));
    Gallery::dress(*handle, new Hy::HyBox(0.05, 0.012, 0.012), HyVector3(-0.021, 0, 0));
    gallery.channels.add("spin about the middle axis", "rad/s",
                         [=] { return bodySpin(*handle)[1]; });
    gallery.watch(universe);
    const HyVector3 L = handle->getAngularMomentum();
    const double energy = handle->getKineticEnergy();

    double before = 1, lastTurn = 0, lastExpected = 0;
    for (int n = 1; n <= 10 * kStepsPerSecond; ++n) {
        frame->step();
        // The middle axis against the angular momentum: +1 upright, -1 turned over.
        const double up = handle->getTransform().rotate(HyVector3(0, 1, 0)).dot(L) / L.norm();
        const double time = n * frame->getTimeStep();
        if (n % (kStepsPerSecond / 5) == 0)
            std::printf("%6.2f s  %s\n", time,
                        std::string(static_cast<std::size_t>(std::lround(30 + 28 * up)), ' ')
                            .append("T")
                            .c_str());
        if (up * before < 0) {
            const double expected = turnInterval(I, bodySpin(*handle));
            if (lastTurn > 0) {
                gallery.expect("time between two turns", "s", (lastExpected + expected) / 2,
                               time - lastTurn);
                std::printf(
                    "%6.2f s  turned over after %.3f s; from the elliptic integral: %.3f s\n", time,
                    time - lastTurn, (lastExpected + expected) / 2);
            }
            lastTurn = time;
            lastExpected = expected;
        }
        before = up;
    }
    std::printf("angular momentum kept to %.1e of it, energy changed by %.1e of it\n",
                (handle->getAngularMomentum() - L).norm() / L.norm(),
                handle->getKineticEnergy() / energy - 1);
    Hy::HyFrame::release();
}
