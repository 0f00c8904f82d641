// A block lies on an incline by four contacts, one under each corner. Below the angle of friction it
// should stay, above it slide by g (sin a - mu cos a) t^2 / 2, and static friction hold it beyond that
// angle until something moves it.
#include "Gallery.h"

#include <Hy/Hy.h>

#include <cmath>
#include <cstdio>
#include <vector>

using Hy::HyVector3;

namespace {

constexpr double kMass = 10, kHalf = 0.25, kHeight = 0.1; // kg, m; half edges
constexpr double kMu = 0.5, kGravity = 9.80665;
constexpr double kDegree = 3.14159265358979323846 / 180; // rad
constexpr int kStepsPerSecond = 480, kSeconds = 2;

using Material = Hy::HyContactMaterial;

/// The incline passes through the origin, with its normal in the x-z plane.
struct Incline {
    double angle; // rad
    HyVector3 normal() const { return {std::sin(angle), 0, std::cos(angle)}; }
    HyVector3 down() const { return {std::cos(angle), 0, -std::sin(angle)}; }
};

/// Puts the contacts under the corners of the block, and lets them act in the next step.
void update(const std::vector<Hy::HyDynamicsContact*>& contacts, const Hy::HyPart& block,
            const Incline& incline) {
    for (std::size_t i = 0; i < contacts.size(); ++i) {
        const HyVector3 corner(i % 2 == 0 ? -kHalf : kHalf, i < 2 ? -kHalf : kHalf, -kHeight);
        const HyVector3 point = block.getTransform().transform(corner);
        contacts[i]->setPosition(point);
        contacts[i]->setPenetration(-point.dot(incline.normal()));
        contacts[i]->enableContact(true);
    }
}

/// Distance that the block slides down from rest, or from a kick in m/s.
double slide(const Incline& incline, const Material& material, double kick, Gallery* gallery) {
    Hy::HyFrame* frame = Hy::HyFrame::instance();
    frame->setTimeStep(1.0 / kStepsPerSecond);
    Hy::HyUniverse& universe = frame->getUniverse(); // z up, earth gravity
    auto* block = new Hy::HyPart(kMass);
    block->setOrientationQuaternion(
        Hy::HyQuaternion(std::cos(incline.angle / 2), 0, std::sin(incline.angle / 2), 0));
    block->setPosition(incline.normal() * kHeight);
    block->setLinearVelocity(incline.down() * kick);
    universe.addPart(block);
    if (gallery) {
        Gallery::dress(*block, new Hy::HyBox(2 * kHalf, 2 * kHalf, 2 * kHeight));
        gallery->channels.add("slid", "m",
                              [=] { return block->getPosition().dot(incline.down()); });
        gallery->watch(universe);
    }

    std::vector<Hy::HyDynamicsContact*> contacts;
    for (int i = 0; i < 4; ++i) {
        contacts.push_back(universe.createUserDynamicsContact(block, nullptr, &material,
                                                              HyVector3(), incline.normal(), 0));
        contacts.back()->setDirection(incline.down());
        contacts.back()->resetSlidingVelocityThreshold();
    }
    for (int i = 0; i < kSeconds * kStepsPerSecond; ++i) {
        update(contacts, *block, incline);
        frame->step();
    }
    const double distance = block->getPosition().dot(incline.down());
    Hy::HyFrame::release();
    return distance;
}

struct Case {
    const char* name;
    double degrees, staticScale, kick;
    Material::FrictionModel model;
    bool slides;
};

double expected(const Case& c) {
    const double a = c.degrees * kDegree, t = kSeconds;
    return c.slides ? c.kick * t + kGravity * (std::sin(a) - kMu * std::cos(a)) * t * t / 2 : 0;
}

} // namespace

int main(int argc, char** argv) {
    Gallery gallery(argc, argv);
    const Case cases[] = {
        {"box", 20, 1, 0, Material::kFrictionModelBox, false},
        {"box", 26, 1, 0, Material::kFrictionModelBox, false},
        {"box", 27, 1, 0, Material::kFrictionModelBox, true},
        {"box", 40, 1, 0, Material::kFrictionModelBox, true},
        {"scaled box", 20, 1, 0, Material::kFrictionModelScaledBox, false},
        {"scaled box", 26, 1, 0, Material::kFrictionModelScaledBox, false},
        {"scaled box", 27, 1, 0, Material::kFrictionModelScaledBox, true},
        {"scaled box", 40, 1, 0, Material::kFrictionModelScaledBox, true},
        {"static x 1.5, at rest", 32, 1.5, 0, Material::kFrictionModelScaledBox, false},
        {"static x 1.5, kicked", 32, 1.5, 0.1, Material::kFrictionModelScaledBox, true},
    };
    std::printf("friction angle %.2f degrees\n", std::atan(kMu) / kDegree);
    std::printf("%-22s  incline (degrees)  slid (m)  expected (m)\n", "friction");
    bool right = true;
    for (const Case& c : cases) {
        Material material;
        material.setFrictionModel(Material::kFrictionAxisLinear, c.model);
        material.setFrictionCoefficient(Material::kFrictionAxisLinear, kMu);
        const double load = kMass * kGravity * std::cos(c.degrees * kDegree); // N, on four corners
        material.setBoxFrictionForce(Material::kFrictionAxisLinear, kMu * load / 4);
        material.setStaticFrictionScale(Material::kFrictionAxisLinear, c.staticScale);
        const bool isShown = c.model == Material::kFrictionModelScaledBox && c.degrees == 40;
        const double distance =
            slide({c.degrees * kDegree}, material, c.kick, isShown ? &gallery : nullptr);
        std::printf("%-22s  %17.1f  %8.4f  %12.4f\n", c.name, c.degrees, distance, expected(c));
        if (isShown)
            gallery.expect("slid in two seconds at 40 degrees", "m", expected(c), distance);
        right = right && std::abs(distance - expected(c)) < 0.005 + 0.005 * expected(c);
    }
    return right ? 0 : 1;
}
