#include "EngineFixture.h"
#include "support/HeapCounter.h"

#include <Hy/HyContactMaterial.h>

#include <cmath>

namespace {

using Hy::HyReal;
using Hy::HyVector3;
using Material = Hy::HyContactMaterial;

constexpr HyReal kHalf = 0.25; // m, of a cube's edge
constexpr HyReal kGravity = 9.80665;
const HyVector3 kUp(0, 0, 1);

HyVector3 corner(std::size_t i) {
    return {i % 2 == 0 ? -kHalf : kHalf, i < 2 ? -kHalf : kHalf, -kHalf};
}

/// Columns of cubes on the plane z = 0, with four contacts under each.
class ContactsTest : public EngineFixture {
protected:
    void SetUp() override {
        HeapCounter::watchMemoryTable(true);
        EngineFixture::SetUp();
    }
    void TearDown() override {
        EngineFixture::TearDown();
        HeapCounter::watchMemoryTable(false);
    }
    void build(int columns, int height) {
        universe->setAutoSleep(false);
        Material material;
        material.setFrictionModel(Material::kFrictionAxisLinear, Material::kFrictionModelScaledBox);
        material.setFrictionCoefficient(Material::kFrictionAxisLinear, 0.5);
        for (int c = 0; c < columns; ++c) {
            Hy::HyPart* below = nullptr;
            for (int i = 0; i < height; ++i) {
                Hy::HyPart& cube = addPart(1 + i);
                cube.setPosition(2.0 * c, 0, kHalf * (1 + 2 * i));
                for (int k = 0; k < 4; ++k) {
                    contacts.push_back(universe->createUserDynamicsContact(&cube, below, &material,
                                                                           HyVector3(), kUp, 0));
                    contacts.back()->resetSlidingVelocityThreshold();
                }
                cubes.push_back(&cube);
                below = &cube;
            }
        }
    }
    /// Each contact stays under its corner; the tops of the cubes count as level.
    void update(int height) {
        for (std::size_t i = 0; i < contacts.size(); ++i) {
            const std::size_t cube = i / 4;
            const HyVector3 point = cubes[cube]->getTransform().transform(corner(i % 4));
            const bool lowest = cube % static_cast<std::size_t>(height) == 0;
            const HyReal floor = lowest ? 0 : cubes[cube - 1]->getPosition()[2] + kHalf;
            contacts[i]->setPosition(point);
            contacts[i]->setPenetration(floor - point[2]);
            contacts[i]->enableContact(true);
        }
    }
    [[nodiscard]] HyReal load(std::size_t cube) const {
        HyReal sum = 0;
        for (std::size_t i = 4 * cube; i < 4 * cube + 4; ++i) {
            HyVector3 force;
            contacts[i]->getForce(0, force);
            sum += force[2];
        }
        return sum;
    }

    std::vector<Hy::HyPart*> cubes;
    std::vector<Hy::HyDynamicsContact*> contacts;
};

} // namespace

// Heavier cubes lie above lighter ones; each layer bears the weight of all above.
TEST_F(ContactsTest, AColumnBearsItsWeight) {
    constexpr int kHeight = 5;
    build(1, kHeight);
    for (int i = 0; i < 120; ++i) {
        update(kHeight);
        step(1);
    }
    HyReal weight = 0;
    for (int i = kHeight; i-- > 0;) {
        weight += (1 + i) * kGravity;
        EXPECT_NEAR(load(static_cast<std::size_t>(i)), weight, 1e-4 * weight) << "layer " << i;
    }
    EXPECT_NEAR(cubes.back()->getPosition()[2], kHalf * (2 * kHeight - 1), 1e-5);
    EXPECT_NEAR(cubes.back()->getPosition()[0], 0, 1e-5);
}

TEST_F(ContactsTest, SlideToTheSameBitsOnAnyNumberOfThreads) {
    std::vector<HyVector3> first;
    for (const int threads : {1, 2, 4}) {
        start(threads);
        cubes.clear();
        contacts.clear();
        build(20, 3);
        for (std::size_t i = 0; i < cubes.size(); ++i)
            cubes[i]->setLinearVelocity(0.1 * static_cast<HyReal>(i % 7), 0.3, 0);
        for (int i = 0; i < 60; ++i) {
            update(3);
            step(1);
        }
        std::vector<HyVector3> places;
        for (const Hy::HyPart* cube : cubes)
            places.push_back(cube->getPosition());
        if (first.empty())
            first = places;
        EXPECT_TRUE(places == first) << threads << " threads";
        EXPECT_GT(first[2][1], 0.001) << "slid";
    }
}

TEST_F(ContactsTest, TakeNothingFromTheHeap) {
    build(10, 2);
    const auto run = [&](int n) {
        for (int i = 0; i < n; ++i) {
            update(2);
            step(1);
        }
    };
    run(20);
    const long before = HeapCounter::calls();
    run(50);
    EXPECT_EQ(HeapCounter::calls(), before);
}
