#include "FrameFixture.h"

#include <Hy/HyConstraintSolverRegistry.h>
#include <Hy/HyPart.h>
#include <Hy/HySolverParameters.h>

#include <Dyn/DynWorld.h>

#include <cfloat>
#include <limits>

using namespace Hy;

namespace {

constexpr HyReal kNaN = std::numeric_limits<HyReal>::quiet_NaN();
constexpr HyReal kInfinity = std::numeric_limits<HyReal>::infinity();

class HySolverParametersTest : public FrameFixture {
protected:
    void SetUp() override {
        FrameFixture::SetUp();
        frame->setTimeStep(0.01);
        universe = &frame->getUniverse();
    }
    [[nodiscard]] HySolverParameters& group(int i) { return *universe->getSolverParameters(i); }
    [[nodiscard]] DynWorldParams& worldParams() { return universe->getDynWorld()->params; }

    HyUniverse* universe = nullptr;
};

using Parameters = HySolverParameters;

struct RealField {
    const char* name;
    void (Parameters::*set)(HyReal);
    HyReal (Parameters::*get)() const;
    HyReal (*world)(const DynWorldParams&);
    HyReal start;
};

struct IntField {
    const char* name;
    void (Parameters::*set)(int);
    int (Parameters::*get)() const;
    int (*world)(const DynWorldParams&); ///< null for what the world does not have
    int start, least;
};

/// Damping of 1e-10 m/N at 5 steps of a 60th of a second, which is known in single precision.
constexpr HyReal kStartDamping = 5 * HyReal{1.0F / 60.0F} / 1e-10;
constexpr HyReal kStartLoss = 1e-10 / HyReal{1.0F / 60.0F};

const RealField kRealFields[] = {
    {"setConstraintStdSolverTolerance", &Parameters::setConstraintStdSolverTolerance,
     &Parameters::getConstraintStdSolverTolerance,
     [](const DynWorldParams& w) { return w.k_params.lcp_parameters.tolerance; }, 0.001},
    {"setConstraintIterativeSolverTolerance", &Parameters::setConstraintIterativeSolverTolerance,
     &Parameters::getConstraintIterativeSolverTolerance,
     [](const DynWorldParams& w) { return w.k_params.lcp_parameters.it_ct_solver_tol; }, 0.001F},
    {"setScaleBoxTolerance", &Parameters::setScaleBoxTolerance, &Parameters::getScaleBoxTolerance,
     [](const DynWorldParams& w) { return w.k_params.lcp_parameters.scaled_box_tolerance; }, 1e-4F},
    {"setConstraintLinearCompliance", &Parameters::setConstraintLinearCompliance,
     &Parameters::getConstraintLinearCompliance,
     [](const DynWorldParams& w) { return w.bcl_params.linear_compliance; }, 1e-10},
    {"setConstraintAngularCompliance", &Parameters::setConstraintAngularCompliance,
     &Parameters::getConstraintAngularCompliance,
     [](const DynWorldParams& w) { return w.bcl_params.angular_compliance; }, 1e-10},
    {"setConstraintLinearDamping", &Parameters::setConstraintLinearDamping,
     &Parameters::getConstraintLinearDamping,
     [](const DynWorldParams& w) { return w.bcl_params.linear_damping; }, kStartDamping},
    {"setConstraintAngularDamping", &Parameters::setConstraintAngularDamping,
     &Parameters::getConstraintAngularDamping,
     [](const DynWorldParams& w) { return w.bcl_params.angular_damping; }, kStartDamping},
    {"setConstraintLinearKineticLoss", &Parameters::setConstraintLinearKineticLoss,
     &Parameters::getConstraintLinearKineticLoss,
     [](const DynWorldParams& w) { return w.bcl_params.linear_kinetic_loss; }, kStartLoss},
    {"setConstraintAngularKineticLoss", &Parameters::setConstraintAngularKineticLoss,
     &Parameters::getConstraintAngularKineticLoss,
     [](const DynWorldParams& w) { return w.bcl_params.angular_kinetic_loss; }, kStartLoss},
};

const IntField kIntFields[] = {
    {"setConstraintSolverMaxCouplingIteration",
     &Parameters::setConstraintSolverMaxCouplingIteration,
     &Parameters::getConstraintSolverMaxCouplingIteration,
     [](const DynWorldParams& w) { return w.k_params.coupling_iterations; }, 5, 0},
    {"setConstraintStdSolverMaxIteration", &Parameters::setConstraintStdSolverMaxIteration,
     &Parameters::getConstraintStdSolverMaxIteration,
     [](const DynWorldParams& w) { return w.k_params.lcp_parameters.max_iterations; }, 35, 1},
    {"setConstraintIterativeSolverMaxIteration",
     &Parameters::setConstraintIterativeSolverMaxIteration,
     &Parameters::getConstraintIterativeSolverMaxIteration,
     [](const DynWorldParams& w) { return w.k_params.lcp_parameters.it_ct_solver_max_it; }, 20, 0},
    {"setScaleBoxMaxIteration", &Parameters::setScaleBoxMaxIteration,
     &Parameters::getScaleBoxMaxIteration,
     [](const DynWorldParams& w) { return w.k_params.lcp_parameters.max_scaled_box_iterations; }, 1,
     0},
    {"setIterativeSolverRowThreshold", &Parameters::setIterativeSolverRowThreshold,
     &Parameters::getIterativeSolverRowThreshold,
     [](const DynWorldParams& w) { return w.k_params.iterative_rows_threshold; }, 0, 0},
    {"setPartitionCrossGroupingDepth", &Parameters::setPartitionCrossGroupingDepth,
     &Parameters::getPartitionCrossGroupingDepth, nullptr, -1, -1},
    {"setPartitionPartMaxCount", &Parameters::setPartitionPartMaxCount,
     &Parameters::getPartitionPartMaxCount, nullptr, -1, -1},
};

} // namespace

// Each field: its start, what is refused, and that the world follows group 0 alone.
TEST_F(HySolverParametersTest, NumbersAreStoredMirroredOrRefused) {
    for (const RealField& field : kRealFields) {
        SCOPED_TRACE(field.name);
        const HyReal world = field.world(worldParams());
        EXPECT_DOUBLE_EQ((group(1).*field.get)(), field.start);
        EXPECT_EQ(world, (group(0).*field.get)());
        (group(1).*field.set)(0.25);
        EXPECT_EQ((group(1).*field.get)(), 0.25);
        EXPECT_EQ(field.world(worldParams()), world);
        (group(0).*field.set)(0.125);
        EXPECT_EQ(field.world(worldParams()), 0.125);
        EXPECT_TRUE(warnings().empty());
        for (const HyReal bad : {-1e-300, kNaN, kInfinity, -kInfinity}) {
            (group(0).*field.set)(bad);
            EXPECT_TRUE(warned(std::string("HySolverParameters::") + field.name + ": ")) << bad;
        }
        EXPECT_EQ((group(0).*field.get)(), 0.125);
        EXPECT_EQ(field.world(worldParams()), 0.125);
        EXPECT_EQ((group(1).*field.get)(), 0.25);
    }
    for (const IntField& field : kIntFields) {
        SCOPED_TRACE(field.name);
        EXPECT_EQ((group(1).*field.get)(), field.start);
        (group(1).*field.set)(9);
        EXPECT_EQ((group(0).*field.get)(), field.start);
        (group(0).*field.set)(field.least);
        if (field.world) {
            EXPECT_EQ(field.world(worldParams()), field.least);
        }
        EXPECT_TRUE(warnings().empty());
        (group(0).*field.set)(field.least - 1);
        EXPECT_TRUE(warned(std::string("HySolverParameters::") + field.name + ": "));
        EXPECT_EQ((group(0).*field.get)(), field.least);
        EXPECT_EQ((group(1).*field.get)(), 9);
    }
}

TEST_F(HySolverParametersTest, ChoicesAreStoredMirroredOrRefused) {
    EXPECT_EQ(group(0).getStepperModel(), Parameters::kStableStepper);
    EXPECT_EQ(group(0).getLinearSolver(), Parameters::kBVBRRTCholeskySolver);
    EXPECT_EQ(group(0).getConstraintSolver(), 0U);
    EXPECT_FALSE(group(0).getGeometricStiffness());
    EXPECT_FALSE(group(0).getIterativeSolverWarmStart());
    for (const int i : {1, 0}) {
        const DynsParameters& world = worldParams().k_params;
        const bool mirrored = i == 0;
        group(i).setStepperModel(Parameters::kHomogeneousStepper);
        group(i).setLinearSolver(Parameters::kVBCholeskySolver);
        group(i).setConstraintSolver(1);
        group(i).setGeometricStiffness(true);
        group(i).setIterativeSolverWarmStart(true);
        EXPECT_EQ(world.stepper_model, mirrored ? kDynsStepper : kDynStableStepper);
        EXPECT_EQ(world.linear_solver, mirrored ? kDynVBCholeskySolver : kDynBVBRRTCholeskySolver);
        EXPECT_EQ(world.ct_solver, mirrored ? 1U : 0U);
        EXPECT_EQ(world.geometric_stiffness != 0, mirrored);
        EXPECT_EQ(world.iterative_warm_start != 0, mirrored);
        EXPECT_TRUE(warnings().empty());

        for (const int bad : {2, -1}) {
            group(i).setStepperModel(static_cast<Parameters::eStepperModel>(bad));
            EXPECT_TRUE(warned("no such model number"));
        }
        for (const int bad : {2, 3, 4, -1}) {
            group(i).setLinearSolver(static_cast<Parameters::eLinearSolver>(bad));
            EXPECT_TRUE(warned("no such Linear Solver"));
        }
        for (const unsigned bad : {2U, 19U, 20U, 99U, HyConstraintSolverRegistry::INVALID_ID}) {
            group(i).setConstraintSolver(bad);
            EXPECT_TRUE(warned("HySolverParameters::setConstraintSolver: ")) << bad;
        }
        EXPECT_EQ(group(i).getStepperModel(), Parameters::kHomogeneousStepper);
        EXPECT_EQ(group(i).getLinearSolver(), Parameters::kVBCholeskySolver);
        EXPECT_EQ(group(i).getConstraintSolver(), 1U);
        EXPECT_TRUE(group(i).getGeometricStiffness());
        EXPECT_TRUE(group(i).getIterativeSolverWarmStart());
    }
}

TEST_F(HySolverParametersTest, ComplianceParametersAreSetTogetherOrNotAtAll) {
    group(0).setConstraintComplianceParameters(1, 2, 3, 4, 5, 6);
    for (const int bad : {0, 3, 5}) {
        HyReal v[6] = {10, 10, 10, 10, 10, 10};
        v[bad] = -1;
        group(0).setConstraintComplianceParameters(v[0], v[1], v[2], v[3], v[4], v[5]);
        EXPECT_TRUE(warned("HySolverParameters::setConstraintComplianceParameters: "));
    }
    const DyncConstraintParameters& world = worldParams().bcl_params;
    EXPECT_EQ(world.linear_compliance, 1);
    EXPECT_EQ(world.angular_compliance, 2);
    EXPECT_EQ(world.linear_damping, 3);
    EXPECT_EQ(world.angular_damping, 4);
    EXPECT_EQ(world.linear_kinetic_loss, 5);
    EXPECT_EQ(world.angular_kinetic_loss, 6);
}

TEST_F(HySolverParametersTest, NewGroupsStartLikeGroup0AndStayAtTheirAddress) {
    group(0).setConstraintStdSolverMaxIteration(7);
    group(0).setConstraintLinearCompliance(3e-4);
    group(0).setStrength(4);
    EXPECT_EQ(universe->getSolverParametersCount(), 1);
    std::vector<HySolverParameters*> found = {universe->getSolverParameters(3)};
    EXPECT_EQ(universe->getSolverParametersCount(), 4);
    for (int i = 1; i <= 3; ++i) {
        EXPECT_EQ(group(i).getSolverGroup(), i);
        EXPECT_EQ(group(i).getSecondarySolverGroup(), i);
        EXPECT_EQ(group(i).getConstraintStdSolverMaxIteration(), 7);
        EXPECT_EQ(group(i).getConstraintLinearCompliance(), 3e-4);
        EXPECT_EQ(group(i).getStrength(), 0);
    }
    EXPECT_EQ(universe->getSolverParameters(-1), nullptr);
    EXPECT_TRUE(warnings().empty());
    EXPECT_EQ(universe->getSolverParameters(kDynMaxGrouping + 1), nullptr);
    EXPECT_TRUE(warned("65535"));
    EXPECT_EQ(universe->getSolverParametersCount(), 4);

    const HySolverParameters* last = universe->getSolverParameters(kDynMaxGrouping);
    ASSERT_NE(last, nullptr);
    EXPECT_EQ(last->getSolverGroup(), kDynMaxGrouping);
    EXPECT_EQ(universe->getSolverParameters(3), found[0]);
}

TEST_F(HySolverParametersTest, SetCopiesWhatTheSolverReads) {
    auto other = std::make_unique<HyUniverse>(2, 2, nullptr);
    HySolverParameters& source = *other->getSolverParameters(2);
    source.setConstraintSolver(1);
    source.setScaleBoxMaxIteration(6);
    source.setConstraintAngularDamping(0.5);
    source.setStrength(3);
    group(0).set(&source);
    group(1).set(nullptr);
    EXPECT_TRUE(warned("HySolverParameters::set: "));
    other.reset(); // nothing of it is left behind
    EXPECT_EQ(group(0).getSolverGroup(), 0);
    EXPECT_EQ(group(0).getStrength(), 0);
    EXPECT_EQ(worldParams().k_params.ct_solver, 1U);
    EXPECT_EQ(worldParams().k_params.lcp_parameters.max_scaled_box_iterations, 6);
    EXPECT_EQ(worldParams().bcl_params.angular_damping, 0.5);
    EXPECT_EQ(group(0).getScaleBoxMaxIteration(), 6);
    frame->step();
}

TEST_F(HySolverParametersTest, SecondaryGroupIsCreatedOrRefused) {
    group(0).setSecondarySolverGroup(2);
    EXPECT_EQ(group(0).getSecondarySolverGroup(), 2);
    EXPECT_EQ(universe->getSolverParametersCount(), 3);
    EXPECT_TRUE(warnings().empty());
    for (const int bad : {-1, kDynMaxGrouping + 1}) {
        group(0).setSecondarySolverGroup(bad);
        EXPECT_FALSE(warnings().empty());
        warnings().clear();
    }
    EXPECT_EQ(group(0).getSecondarySolverGroup(), 2);
}

// With compliance c, step h and half life n in steps: damping n h / c, loss c / h.
TEST_F(HySolverParametersTest, CriticalSoftnessFollowsTheFramesStep) {
    EXPECT_DOUBLE_EQ(universe->getCriticalDamping(2000, 5), 5 * 0.01 * 2000);
    EXPECT_DOUBLE_EQ(universe->getCriticalLoss(2000, 5), 1 / (2000 * 0.01));
    EXPECT_EQ(universe->getCriticalDamping(DBL_MAX, 5), 0);
    EXPECT_EQ(universe->getCriticalLoss(DBL_MAX, 5), 0);
    EXPECT_EQ(universe->getCriticalDamping(2000, 0), 0);
    EXPECT_TRUE(warnings().empty());
    for (const HyReal bad : {0.0, -1.0, 1e-310, kNaN, kInfinity}) {
        EXPECT_EQ(universe->getCriticalDamping(bad, 5), 0) << bad;
        EXPECT_TRUE(warned("HyUniverse::getCriticalDamping: stiffness"));
        EXPECT_EQ(universe->getCriticalLoss(bad, 5), 0) << bad;
        EXPECT_TRUE(warned("HyUniverse::getCriticalLoss: stiffness"));
    }

    for (const int i : {0, 2}) {
        group(i).setConstraintLinearCompliance(1e-3);
        group(i).setConstraintAngularCompliance(1e-4);
        universe->setCriticalConstraintParameters(i, 4);
        EXPECT_DOUBLE_EQ(group(i).getConstraintLinearDamping(), 40);
        EXPECT_DOUBLE_EQ(group(i).getConstraintAngularDamping(), 400);
        EXPECT_DOUBLE_EQ(group(i).getConstraintLinearKineticLoss(), 0.1);
        EXPECT_DOUBLE_EQ(group(i).getConstraintAngularKineticLoss(), 0.01);
    }
    EXPECT_DOUBLE_EQ(worldParams().bcl_params.angular_damping, 400);
    for (const HyReal bad : {-1.0, kNaN, kInfinity, DBL_MAX}) {
        universe->setCriticalConstraintParameters(0, bad);
        EXPECT_TRUE(warned("HyUniverse::setCriticalConstraintParameters: half_life")) << bad;
        EXPECT_EQ(universe->getCriticalDamping(2000, bad), 0);
        EXPECT_TRUE(warned("HyUniverse::getCriticalDamping: half_life"));
    }
    universe->setCriticalConstraintParameters(-1, 5);
    EXPECT_TRUE(warned("HyUniverse::setCriticalConstraintParameters: group"));
    EXPECT_DOUBLE_EQ(group(0).getConstraintLinearDamping(), 40);
}

// A plug-in's kind can be chosen while its factory is there, and again after it came back.
TEST_F(HySolverParametersTest, SolverOfAPlugInCanBeChosen) {
    class Solver : public constraint_solver {
        void setup(int, LCPMatrix*, DynsConstraints*, DynsParameters*, lcp_solver_function_ptr,
                   DynsBody* const*, int, void*) override {}
        int solve() override { return 0; }
        void cleanup() override {}
    };
    using Factory = HyConstraintSolverFactoryImpl<Solver>;
    HyConstraintSolverRegistry& registry = HyConstraintSolverRegistry::instance();
    HyPart part(1);
    universe->addPart(&part);
    frame->step(); // its frames exist before the factory does
    unsigned id = 0;
    {
        const Factory factory("plug-in");
        id = registry.getId("plug-in");
        group(0).setConstraintSolver(id);
        EXPECT_EQ(group(0).getConstraintSolver(), id);
        frame->step();
    }
    frame->step();
    EXPECT_TRUE(warnings().empty());
    group(1).setConstraintSolver(id);
    EXPECT_TRUE(warned("HySolverParameters::setConstraintSolver: "));
    universe->removePart(&part);
}

namespace {

/// Notes the solver and sweeps of chosen groups in each solve.
class SolverCheck : public HyFrameStepperOption::CheckSubscriber {
public:
    bool preUpdateForceCheck() override {
        std::ostringstream text;
        for (const HySolverParameters* group : groups)
            text << group->getConstraintSolver() << '/'
                 << group->getConstraintIterativeSolverMaxIteration() << ' ';
        seen.push_back(text.str());
        if (onSolve)
            onSolve();
        return true;
    }
    std::vector<HySolverParameters*> groups;
    std::vector<std::string> seen;
    std::function<void()> onSolve;
};

class ForceIterativeSolverTest : public HySolverParametersTest {
protected:
    // Group 0 direct, group 1 iterative with 9 sweeps; a second universe with one direct group.
    void SetUp() override {
        HySolverParametersTest::SetUp();
        second = new HyUniverse(2, 2, nullptr);
        frame->addUniverse(second);
        group(1).setConstraintSolver(1);
        group(1).setConstraintIterativeSolverMaxIteration(9);
        group(0).setConstraintIterativeSolverMaxIteration(7);
        second->getSolverParameters(0)->setConstraintIterativeSolverMaxIteration(8);
        check.groups = {&group(0), &group(1), second->getSolverParameters(0)};
        option.getCheckSubscriberArray().push_back(&check);
        option.setUpdateActionCheck(true);
        option.setForceIterativeSolver(true);
        option.setForceIterativeSolverIterationCount(3);
    }
    [[nodiscard]] static std::string stateOf(const HySolverParameters& parameters) {
        return std::to_string(parameters.getConstraintSolver()) + "/" +
               std::to_string(parameters.getConstraintIterativeSolverMaxIteration());
    }
    void expectRestored() {
        EXPECT_EQ(stateOf(group(0)), "0/7");
        EXPECT_EQ(worldParams().k_params.ct_solver, 0U);
        EXPECT_EQ(worldParams().k_params.lcp_parameters.it_ct_solver_max_it, 7);
        EXPECT_EQ(stateOf(group(1)), "1/9");
    }

    HyFrameStepperOption& option = HyFrameStepperOption::instance();
    SolverCheck check;
    HyUniverse* second = nullptr;
};

constexpr const char* kForced = "1/3 1/9 1/3 ";
constexpr const char* kFree = "0/7 1/9 0/8 ";
constexpr const char* kRestoreWarning =
    "HyFrameStepperOption::forceIterativeSolverPost: frame, universe and solver parameter content "
    "should not be done during the step. Restoring of the solver data may be wrong.";

} // namespace

TEST_F(ForceIterativeSolverTest, HoldsForTheStepAlone) {
    for (int i = 0; i < 2; ++i) {
        frame->step();
        expectRestored();
    }
    option.setForceIterativeSolver(false);
    frame->step();
    EXPECT_EQ(check.seen, (std::vector<std::string>{kForced, kForced, kFree}));
    EXPECT_EQ(stateOf(*second->getSolverParameters(0)), "0/8");
    EXPECT_TRUE(warnings().empty());

    option.setForceIterativeSolverIterationCount(4294967295U);
    EXPECT_TRUE(warned("HyFrameStepperOption::setForceIterativeSolverIterationCount: "));
    EXPECT_EQ(option.getForceIterativeSolverIterationCount(), 3U);
    option.setForceIterativeSolver(true);
    option.resetStepperMode();
    EXPECT_FALSE(option.getForceIterativeSolver());
    EXPECT_EQ(option.getForceIterativeSolverIterationCount(), 1U);
}

// Each substep forces anew; what is given back is what the groups had before the first.
TEST_F(ForceIterativeSolverTest, SurvivesTheSubstepsOfARecovery) {
    option.setStepperMode(HyFrameStepperOption::kModeSafe);
    option.setRecoverySubstepCount(3);
    int solves = 0;
    check.onSolve = [&] {
        if (++solves == 1)
            frame->setStepAborted();
    };
    frame->step();
    EXPECT_EQ(solves, 1) << "checks are off while the step is taken again";
    EXPECT_EQ(check.seen, std::vector<std::string>{kForced});
    expectRestored();
    EXPECT_EQ(stateOf(*second->getSolverParameters(0)), "0/8");
}

TEST_F(ForceIterativeSolverTest, HoldsInEverySubstep) {
    struct Impacts : HyUniverse {
        Impacts() : HyUniverse(2, 2, nullptr) {}
        [[nodiscard]] HyReal getCollisionSafeTime() const override { return 0.004; }
    };
    frame->addUniverse(new Impacts);
    frame->setContinuousCollisionDetection(true);
    frame->setContinuousCollisionDetectionMaxSubStepCount(2);
    frame->step();
    EXPECT_EQ(check.seen, (std::vector<std::string>{kForced, kForced, kForced}));
    expectRestored();
    EXPECT_TRUE(warnings().empty());
}

// A group made in a step copies a forced group 0, and is restored like it, with the warning.
TEST_F(ForceIterativeSolverTest, ContentsThatChangeInAStepAreRestored) {
    check.onSolve = [&] { (void)group(3); };
    frame->step();
    EXPECT_TRUE(warned(kRestoreWarning));
    expectRestored();
    EXPECT_EQ(stateOf(group(2)), "0/7");
    EXPECT_EQ(stateOf(group(3)), "0/7");
    EXPECT_EQ(stateOf(*second->getSolverParameters(0)), "0/8");

    // The first universe leaves, alive; the second one's data are still its own.
    check.onSolve = [&] { frame->removeUniverse(universe); };
    frame->step();
    EXPECT_EQ(check.seen.back(), kForced);
    expectRestored();
    EXPECT_EQ(stateOf(*second->getSolverParameters(0)), "0/8");

    // One comes, another goes for good.
    check.groups.clear();
    check.onSolve = [&] {
        frame->addUniverse(universe);
        delete second;
    };
    frame->step();
    expectRestored();
    check.onSolve = [&] { option.resetStepperMode(); };
    frame->step();
    expectRestored();
}
