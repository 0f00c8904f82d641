#include <Hy/HySafeWalk.h>

#include <gtest/gtest.h>

#include <iostream>
#include <memory>
#include <random>
#include <set>
#include <vector>

namespace Hy {
namespace {

// Random removals, returns and creations in the middle of two nested walks, against the plain
// statement of what must be visited: in the order of creation, what was there when the walk began
// and has not left since.
class HySafeWalkTest : public testing::Test {
protected:
    void walk(int depth) {
        std::set<std::uint64_t> expected; // serials still to visit
        for (const HyBase* object : objects)
            expected.insert(object->getSerial());
        pending.push_back(&expected);
        HySafeWalk walk(objects);
        while (const HyBase* object = walk.next()) {
            ASSERT_FALSE(expected.empty());
            ASSERT_EQ(object->getSerial(), *expected.begin());
            expected.erase(expected.begin());
            for (std::size_t i = below(4); i > 0; --i)
                change();
            if (depth == 0 && below(3) == 0)
                this->walk(1);
        }
        EXPECT_TRUE(expected.empty());
        pending.pop_back();
    }
    void change() {
        const std::size_t i = below(alive.size() + 1);
        if (i == alive.size()) {
            alive.push_back(std::make_unique<HyBase>());
            return;
        }
        HyBase* object = alive[i].get();
        if (!objects.contains(object)) {
            objects.insert(object);
            return;
        }
        for (std::set<std::uint64_t>* expected : pending)
            expected->erase(object->getSerial());
        objects.erase(object);
        if (below(2))
            alive.erase(alive.begin() + static_cast<std::ptrdiff_t>(i));
    }
    std::size_t below(std::size_t n) { return random() % n; }

    std::mt19937 random;
    std::vector<std::unique_ptr<HyBase>> alive;
    HyWalkedObjects<HyBase> objects;
    std::vector<std::set<std::uint64_t>*> pending;
};

TEST_F(HySafeWalkTest, VisitsWhatStaysOnceInOrderOfCreation) {
    const unsigned seed = std::random_device()();
    std::cout << "seed " << seed << '\n';
    random.seed(seed);
    for (int round = 0; round < 300 && !HasFailure(); ++round) {
        for (int i = 0; i < 12; ++i)
            change();
        walk(0);
    }
}

} // namespace
} // namespace Hy
