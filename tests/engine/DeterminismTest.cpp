#include "EngineFixture.h"

#include <array>
#include <cstdint>
#include <bit>
#include <random>

using namespace Hy;

namespace {

constexpr unsigned kSeed = 20240607;

class DeterminismTest : public EngineFixture {
protected:
    /// Many free parts with their own mass, spin and load.
    void buildScene(int count) {
        std::mt19937 random(kSeed);
        std::uniform_real_distribution<HyReal> uniform(-1, 1);
        const auto vector = [&] {
            const HyReal x = uniform(random), y = uniform(random);
            return HyVector3(x, y, uniform(random));
        };
        parts.clear();
        for (int i = 0; i < count; ++i) {
            HyPart& part = addPart(2 + uniform(random));
            const HyReal inertia[3][3] = {
                {1.5 + uniform(random) / 4, 0, 0}, {0, 2, 0}, {0, 0, 2.2}};
            part.setMassAndInertia(part.getMass(), inertia);
            part.setPosition(vector());
            part.setLinearVelocity(vector());
            part.setAngularVelocity(vector() * 5);
            parts.push_back(&part);
        }
    }
    void stepWithLoads(int n) {
        for (int i = 0; i < n; ++i) {
            for (std::size_t p = 0; p < parts.size(); p += 3)
                parts[p]->addForceAtRelativePosition(HyVector3(1, 2, 3), HyVector3(0.1, 0.2, 0.3));
            frame->step();
        }
    }
    /// All poses and velocities, to the bit.
    [[nodiscard]] std::vector<std::uint64_t> bits() const {
        std::vector<std::uint64_t> all;
        const auto append = [&all](const HyReal* values, std::size_t n) {
            for (std::size_t i = 0; i < n; ++i)
                all.push_back(std::bit_cast<std::uint64_t>(values[i]));
        };
        for (const HyPart* part : parts) {
            for (int row = 0; row < 4; ++row)
                append(part->getTransform()[row], 4);
            append(part->getLinearVelocity().v, 3);
            append(part->getAngularVelocity().v, 3);
        }
        return all;
    }

    std::vector<HyPart*> parts;
};

} // namespace

TEST_F(DeterminismTest, SameBitsForEveryNumberOfThreads) {
    std::vector<std::uint64_t> reference;
    for (const int threads : {1, 1, 2, 4}) {
        start(threads);
        buildScene(300);
        stepWithLoads(100);
        if (reference.empty())
            reference = bits();
        EXPECT_EQ(bits(), reference) << threads << " threads, seed " << kSeed;
    }
}

TEST_F(DeterminismTest, ARestoredStateReplaysToTheSameBits) {
    buildScene(50);
    stepWithLoads(20);
    const std::unique_ptr<HyUniverseState> state(universe->createState());
    stepWithLoads(50);
    const std::vector<std::uint64_t> reference = bits();
    state->restore();
    stepWithLoads(50);
    EXPECT_EQ(bits(), reference) << "seed " << kSeed;
}
