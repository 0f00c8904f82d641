#include "JointScene.h"

#include <bit>
#include <cstdint>

using namespace Hy;

namespace {

using Bits = std::vector<std::uint64_t>;

class LargeIslandTest : public JointScene {
protected:
    /// All islands of some size are swept.
    void useSweeps(int sweeps, bool warmStart) {
        HySolverParameters& group = *universe->getSolverParameters(0);
        group.setIterativeSolverRowThreshold(10);
        group.setConstraintIterativeSolverMaxIteration(sweeps - 1);
        group.setConstraintIterativeSolverTolerance(0);
        group.setIterativeSolverWarmStart(warmStart);
    }
    HyBallAndSocket& tie(HyPart& part, HyPart* other, const HyVector3& position) {
        return add<HyBallAndSocket>(&part, other, position);
    }

    static constexpr HyReal kPitch = 0.1; ///< m
};

} // namespace

// A net of a thousand knots that falls onto its held rim, and small islands beside it: the bits do not
// depend on the threads, of which the net takes all.
TEST_F(LargeIslandTest, SameBitsForEveryNumberOfThreads) {
    constexpr int kSide = 24;
    const auto run = [this](int threads, bool warmStart, int small) {
        start(threads);
        universe->setAutoSleep(false);
        useSweeps(6, warmStart);
        std::vector<HyPart*> knots;
        for (int i = 0; i < kSide * kSide; ++i) {
            const HyVector3 position(kPitch * (i % kSide), kPitch * (i / kSide), 0);
            HyPart& knot = addBall(0.1, 1e-4, position);
            for (const int stride : {1, kSide})
                if (stride == 1 ? i % kSide > 0 : i >= kSide) {
                    const HyVector3 half(stride == 1 ? kPitch / 2 : 0, stride == 1 ? 0 : kPitch / 2,
                                         0);
                    tie(knot, knots[static_cast<std::size_t>(i - stride)], position - half);
                }
            if (i < kSide)
                tie(knot, nullptr, position);
            knots.push_back(&knot);
        }
        for (int k = 0; k < small; ++k) {
            HyPart& bob = addBall(1, 0.1, HyVector3(5.0 + k, 0, 0));
            tie(bob, nullptr, HyVector3(5.0 + k, 0.5, 0));
            knots.push_back(&bob);
        }
        step(8);
        Bits bits;
        for (const HyPart* part : knots)
            for (int k = 0; k < 3; ++k)
                bits.push_back(std::bit_cast<std::uint64_t>(part->getPosition()[k]));
        return bits;
    };
    for (const int small : {0, 20}) {
        const Bits cold = run(1, false, small), warm = run(1, true, small);
        EXPECT_NE(warm, cold);
        for (const int threads : {2, 4}) {
            EXPECT_EQ(run(threads, false, small), cold) << threads << " " << small;
            EXPECT_EQ(run(threads, true, small), warm) << threads << " " << small;
        }
    }
}

// Few sweeps bear a long chain by its stretch alone: a force that each step begins anew needs an error
// to come from. Of the force that is carried over, the part 1/(1 + gamma), none is needed, so that the
// stretch falls to gamma/(1 + gamma), a seventh for hard rows, of gamma 1/6. All of it would diverge.
TEST_F(LargeIslandTest, WarmStartTakesTheStretchOutOfAChain) {
    constexpr int kLinks = 20;
    constexpr HyReal kMass = 0.5, kWeight = kLinks * kMass * kGravity; // kg, N
    const auto stretch = [this](int sweeps, bool warmStart) {
        start(1);
        universe->setAutoSleep(false);
        useSweeps(sweeps, warmStart);
        HyBallAndSocket* top = nullptr;
        HyPart* above = nullptr;
        for (int i = 0; i < kLinks; ++i) {
            HyPart& link = addBall(kMass, 0.1, HyVector3(0, 0, -kPitch * (i + 0.5)));
            HyBallAndSocket& joint = tie(link, above, HyVector3(0, 0, -kPitch * i));
            top = top ? top : &joint;
            above = &link;
        }
        stepFor(10);
        EXPECT_NEAR(top->getPartForce(0)[2], kWeight, 0.01 * kWeight) << sweeps;
        return -above->getPosition()[2] - kPitch * (kLinks - 0.5);
    };
    for (const int sweeps : {6, 10}) {
        const HyReal cold = stretch(sweeps, false);
        EXPECT_GT(cold, 0.2);
        EXPECT_NEAR(cold / stretch(sweeps, true), 7, 0.2) << sweeps;
    }
}
