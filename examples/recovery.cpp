// A disc enters water fast. Drag, -k v |v| per mass, is taken at the start of each step, and while
// k |v| h > 2 such a step turns the motion round and makes it faster: it explodes. A check of
// accelerations catches each of these steps before it is integrated; the frame takes it back and repeats
// it in substeps, in each of which the drag is asked again. Then the way in water should be that of
// v' = -k v^2: ln(1 + k v0 t) / k, the closer the more substeps.
#include "Gallery.h"

#include <Hy/Hy.h>

#include <cmath>
#include <cstdio>

namespace {

constexpr double kMass = 10, kRadius = 0.25;            // kg, m
constexpr double kWater = 1000, kDragCoefficient = 0.5; // kg/m^3, 1
constexpr double kSpeed = 50;                           // m/s
constexpr double kStep = 1.0 / 60;                      // s
constexpr int kSteps = 120;
constexpr double kLimit = 20; // m/s^2, at k v h = 0.16
constexpr double kPi = 3.14159265358979323846;
constexpr double kDrag = kWater * kDragCoefficient * kPi * kRadius * kRadius / 2 / kMass; // 1/m

using Option = Hy::HyFrameStepperOption;

struct Water : Hy::HyUniverse::UpdateSubscriber {
    explicit Water(Hy::HyPart& part) : disc(part) {}
    void update(Hy::HyUniverse*) override {
        const Hy::HyVector3 v = disc.getLinearVelocity();
        disc.addForce(v * (-kMass * kDrag * v.norm()));
    }
    void reset() override {}

    Hy::HyPart& disc;
};

/// Prints what was found, and lets it stand.
struct Report : Option::CheckSubscriberCB {
    using Option::CheckSubscriberCB::notifyCheckFailure;
    ReturnTypeEnum notifyCheckFailure(Hy::HyPart* part, const char* description) override {
        if (++count <= 3)
            std::printf("  step %d redone: %s of %s, %.0f m/s^2\n", step, description,
                        part->getName().c_str(), part->getLinearAcceleration().norm());
        return kReturnTypeEnumAccept;
    }
    int step = 0, count = 0;
};

struct Result {
    double way = 0; ///< m
    int redone = 0; ///< steps
};

Result dive(Option::StepperModeEnum mode, int substeps, Gallery* gallery) {
    Hy::HyFrame* frame = Hy::HyFrame::instance();
    frame->setTimeStep(kStep);
    Option& option = frame->getStepperOption();
    option.setStepperMode(mode);
    option.setRecoverySubstepCount(substeps);
    const double usualLimit = option.getCheckAccelerationLinearThreshold();
    option.setCheckAccelerationLinearThreshold(kLimit);
    option.setCheckAcceleration(true);
    Report report;
    option.getCheckSubscriberArray().at(0)->setCheckSubscriberCB(&report);

    Hy::HyUniverse& universe = frame->getUniverse();
    universe.setGravity(0, 0, 0); // the disc floats
    universe.setAutoSleep(false);
    auto* disc = new Hy::HyPart(kMass);
    disc->setName("disc");
    universe.addPart(disc);
    disc->setLinearVelocity(kSpeed, 0, 0);
    Water water(*disc);
    universe.addUpdateSubscriber(&water);
    if (gallery) {
        Gallery::dress(*disc, new Hy::HyCylinder(kRadius, 0.05));
        gallery->channels.add("speed", "m/s", [disc] { return disc->getLinearVelocity()[0]; });
        gallery->watch(universe);
    }
    for (; report.step < kSteps; ++report.step)
        frame->step();
    const Result result{.way = disc->getPosition()[0], .redone = report.count};
    option.setCheckAcceleration(false);
    option.setCheckAccelerationLinearThreshold(usualLimit);
    option.resetStepperMode();
    Hy::HyFrame::release();
    return result;
}

} // namespace

int main(int argc, char** argv) {
    Gallery gallery(argc, argv);
    const double expected = std::log(1 + kDrag * kSpeed * kSteps * kStep) / kDrag;
    std::printf("k v h = %.1f at first; %.3f m are expected in %.0f s\n", kDrag * kSpeed * kStep,
                expected, kSteps * kStep);
    const Result loose = dive(Option::kModeNormal, 10, nullptr);
    std::printf("no checks: %.3g m\n", loose.way);
    Result guarded;
    double error = 0;
    bool right = !(std::abs(loose.way) < 10 * expected); // or no number
    for (const int substeps : {10, 40, 160}) {
        guarded = dive(Option::kModeSafe, substeps, substeps == 160 ? &gallery : nullptr);
        const double before = error;
        error = std::abs(guarded.way - expected);
        std::printf("%3d steps redone, in %d substeps each: %.3f m\n", guarded.redone, substeps,
                    guarded.way);
        right = right && guarded.redone > 0 && (before == 0 || error < before);
    }
    gallery.expect("way in water", "m", expected, guarded.way);
    gallery.measure("steps redone", "1", guarded.redone);
    return right && error < 0.05 * expected ? 0 : 1;
}
