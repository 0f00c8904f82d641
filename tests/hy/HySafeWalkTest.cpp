#include <Hy/HySafeWalk.h>
#include <Hy/SortedVector.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <iostream>
#include <memory>
#include <random>
#include <set>
#include <vector>

namespace Hy {
namespace {

using Objects = SortedVector<HyBase*, HyCreationOrder>;

// Random removals (with deletion), returns and creations in the middle of a walk, against the
// plain statement of what must be visited.
TEST(HySafeWalkTest, VisitsWhatStaysOnceInOrderOfCreation) {
    const unsigned seed = std::random_device()();
    std::cout << "seed " << seed << '\n';
    std::mt19937 random(seed);
    const auto below = [&](std::size_t n) { return random() % n; };
    for (int round = 0; round < 300; ++round) {
        std::vector<std::unique_ptr<HyBase>> alive;
        Objects objects;
        for (std::size_t i = below(12); i > 0; --i) {
            alive.push_back(std::make_unique<HyBase>());
            objects.insert(alive.back().get());
        }
        const std::size_t initial = alive.size();
        std::vector<std::uint64_t> expected; // serials still to visit
        for (const auto& object : alive)
            expected.push_back(object->getSerial());

        HySafeWalk walk(objects);
        while (HyBase* object = walk.next()) {
            ASSERT_FALSE(expected.empty()) << "round " << round;
            ASSERT_EQ(object->getSerial(), expected.front()) << "round " << round;
            expected.erase(expected.begin());
            for (std::size_t i = below(3); i > 0 && !alive.empty(); --i) {
                const std::size_t victim = below(alive.size());
                std::erase(expected, alive[victim]->getSerial());
                objects.erase(alive[victim].get());
                alive.erase(alive.begin() + static_cast<std::ptrdiff_t>(victim));
            }
            if (below(2)) {
                alive.push_back(std::make_unique<HyBase>());
                objects.insert(alive.back().get());
            }
        }
        EXPECT_TRUE(expected.empty()) << "round " << round << " of " << initial;
    }
}

} // namespace
} // namespace Hy
