#include "EngineFixture.h"

#include <Dyn/Dyn.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <functional>
#include <string>

using namespace Hy;

namespace {

constexpr int kLinks = 6;                    // a chain has 3 rows a link
constexpr HyReal kLength = 0.5, kLoad = 100; // m, kg

using Bits = std::vector<std::uint64_t>;
using Change = std::function<void(HySolverParameters&)>;

class SolverGroupTest : public EngineFixture {
protected:
    void SetUp() override { begin(1); }
    void TearDown() override {
        destroyJoints();
        EngineFixture::TearDown();
    }

    void begin(int threads) {
        destroyJoints();
        start(threads);
        universe->setAutoSleep(false);
    }
    void destroyJoints() {
        for (DynBaseConstraint* joint : mJoints)
            DynConstraintDestroy(joint);
        mJoints.clear();
    }
    template <class Joint>
    Joint& tie(Joint* joint, HyPart* part0, HyPart& part1, const HyVector3& position) {
        DynBaseConstraint* record = joint;
        DynWorldInsertConstraint(universe->getDynWorld(), record);
        DynConstraintSetBodies(record, part0 ? part0->getDynBody() : nullptr, part1.getDynBody());
        DynConstraintBodySetPosition(record, 0, position.v);
        DynConstraintBodySetPosition(record, 1, position.v);
        mJoints.push_back(record);
        return *joint;
    }
    void addBall(HyPart* part0, HyPart& part1, const HyVector3& position) {
        DynConstraintEnable(&tie(DynBSJointCreateInPool(universe->getDynWorld()->constraintPool),
                                 part0, part1, position));
    }
    /// A level chain, let go, with a spinning load at its end.
    std::vector<HyPart*> addChain(int group, HyReal y) {
        std::vector<HyPart*> chain;
        for (int i = 0; i < kLinks; ++i) {
            HyPart& part = addPart(i == kLinks - 1 ? kLoad : 1);
            const HyReal across = part.getMass() * kLength * kLength / 12;
            const HyReal inertia[3][3] = {{across / 4, 0, 0}, {0, across, 0}, {0, 0, across * 2}};
            part.setMassAndInertia(part.getMass(), inertia);
            part.setPosition((i + 0.5) * kLength, y, 0);
            part.setAngularVelocity(0.5, 0.1, 0);
            part.setSolverGroup(group);
            addBall(chain.empty() ? nullptr : chain.back(), part, HyVector3(i * kLength, y, 0));
            chain.push_back(&part);
        }
        return chain;
    }
    [[nodiscard]] static Bits bitsOf(const std::vector<HyPart*>& parts) {
        Bits bits;
        for (const HyPart* part : parts)
            for (int row = 0; row < 4; ++row)
                for (int i = 0; i < 4; ++i)
                    bits.push_back(std::bit_cast<std::uint64_t>(part->getTransform()[row][i]));
        return bits;
    }

    struct Result {
        Bits first, second; ///< of the chains in group 0 and group 1
        int partitions;
    };
    /// Two chains after 20 steps, with changes made to the two groups.
    Result run(const Change& first, const Change& second, int threads = 1) {
        begin(threads);
        const auto chain0 = addChain(0, 0), chain1 = addChain(1, 5);
        if (first)
            first(*universe->getSolverParameters(0));
        if (second)
            second(*universe->getSolverParameters(1));
        step(20);
        return {bitsOf(chain0), bitsOf(chain1), universe->getLastPartitionCount()};
    }

private:
    std::vector<DynBaseConstraint*> mJoints;
};

void useFewSweeps(HySolverParameters& group) {
    group.setConstraintIterativeSolverMaxIteration(2);
}

void useIterativeSolver(HySolverParameters& group) {
    useFewSweeps(group);
    group.setConstraintSolver(1);
}

} // namespace

// Each setting that the solver reads changes the islands of its group, and no bit of the others.
TEST_F(SolverGroupTest, ParametersActOnTheirOwnIslandsAlone) {
    struct Case {
        const char* name;
        Change change;
    };
    const Case cases[] = {
        {"solver", useIterativeSolver},
        {"model",
         [](HySolverParameters& g) { g.setStepperModel(HySolverParameters::kHomogeneousStepper); }},
        {"compliance", [](HySolverParameters& g) { g.setConstraintLinearCompliance(1e-4); }},
        {"damping",
         [](HySolverParameters& g) {
             g.setConstraintLinearCompliance(1e-4);
             g.setConstraintLinearDamping(10);
         }},
        {"stiffness", [](HySolverParameters& g) { g.setGeometricStiffness(true); }},
    };
    const Result plain = run(nullptr, nullptr);
    EXPECT_EQ(plain.partitions, 2);
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        const Result first = run(c.change, nullptr);
        EXPECT_NE(first.first, plain.first);
        EXPECT_EQ(first.second, plain.second);
        for (const int threads : {1, 3}) {
            const Result second = run(nullptr, c.change, threads);
            EXPECT_EQ(second.first, plain.first) << threads;
            EXPECT_NE(second.second, plain.second) << threads;
        }
    }
}

TEST_F(SolverGroupTest, IslandsAboveTheRowThresholdAreSolvedIteratively) {
    constexpr int kRows = 3 * kLinks;
    const auto withThreshold = [](int rows) -> Change {
        return [rows](HySolverParameters& group) {
            useFewSweeps(group);
            group.setIterativeSolverRowThreshold(rows);
        };
    };
    const Result direct = run(nullptr, nullptr), iterative = run(nullptr, useIterativeSolver);
    EXPECT_EQ(run(nullptr, withThreshold(kRows)).second, direct.second);
    const Result swept = run(nullptr, withThreshold(kRows - 1)); // by colours
    EXPECT_NE(swept.second, direct.second);
    EXPECT_NE(swept.second, iterative.second);
    EXPECT_NE(direct.second, iterative.second);
    EXPECT_EQ(swept.first, direct.first);
}

// A step with forcing is a step with the iterative solver in all groups, and the next one is direct.
TEST_F(SolverGroupTest, ForcingIsUndoneBetweenSteps) {
    const auto runWith = [this](const std::function<void(bool)>& force) {
        begin(1);
        const auto chain0 = addChain(0, 0), chain1 = addChain(1, 5);
        for (int i = 0; i < 6; ++i) {
            force(i % 3 == 1);
            frame->step();
        }
        Bits bits = bitsOf(chain0);
        const Bits more = bitsOf(chain1);
        bits.insert(bits.end(), more.begin(), more.end());
        return bits;
    };
    const Bits plain = runWith([](bool) {});
    const Bits byHand = runWith([this](bool on) {
        for (const int i : {0, 1}) {
            universe->getSolverParameters(i)->setConstraintSolver(on ? 1 : 0);
            universe->getSolverParameters(i)->setConstraintIterativeSolverMaxIteration(on ? 4 : 20);
        }
    });
    const Bits forced = runWith([this](bool on) {
        frame->getStepperOption().setForceIterativeSolver(on);
        frame->getStepperOption().setForceIterativeSolverIterationCount(4);
    });
    EXPECT_EQ(forced, byHand);
    EXPECT_NE(forced, plain);
}

// A part on a taut rope that flies towards its anchor needs no force. That takes the solver a second
// pass, as the first one takes the row for held.
TEST_F(SolverGroupTest, SolvesThatDoNotConvergeAreCounted) {
    auto* other = new HyUniverse(2, 2, nullptr);
    frame->addUniverse(other);
    HyPart& part = addPart(2);
    part.setPosition(0, 0, -1.001);
    DynDistance& rope =
        tie(DynDistanceCreateInPool(universe->getDynWorld()->constraintPool), nullptr, part, {});
    DynConstraintBodySetPosition(&rope, 1, part.getPosition().v);
    DynDistanceSetDistance(&rope, 1);
    DynConstraintEnable(&rope);
    part.setLinearVelocity(0, 0, 10);
    const auto stepFrom = [&](int iterations) {
        universe->getSolverParameters(0)->setConstraintStdSolverMaxIteration(iterations);
        part.setPosition(0, 0, -1.001);
        part.setLinearVelocity(0, 0, 10);
        frame->step();
        return part.getLinearVelocity()[2];
    };
    const HyReal exact = stepFrom(35);
    EXPECT_NEAR(exact, 10 - 9.80665 * kStep, 1e-12);
    EXPECT_EQ(universe->getSolverUnconvergedCount(), 0);
    EXPECT_EQ(stepFrom(1), exact) << "the sweeps finish what the solve left";
    EXPECT_EQ(universe->getSolverUnconvergedCount(), 1);
    EXPECT_EQ(universe->getSolverFallbackCount(), 1);
    (void)stepFrom(1);
    EXPECT_EQ(universe->getSolverFallbackCount(), 2);
    EXPECT_EQ(other->getSolverFallbackCount(), 0);
}
