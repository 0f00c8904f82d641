#include "MessageCapture.h"

#include <Dyn/DynBody.h>
#include <Hy/HyFrame.h>
#include <Hy/HyPart.h>
#include <Hy/HyPartState.h>
#include <Hy/HyUniverse.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <functional>
#include <limits>
#include <memory>
#include <vector>

using namespace Hy;
using testing::HasSubstr;

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr double kRounding = 1e-12;
constexpr HyReal kUnitTensor[3][3] = {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}};
constexpr auto kAnimated = HyPart::kControlAnimated;
constexpr auto kDynamic = HyPart::kControlDynamic;
constexpr auto kStatic = HyPart::kControlStatic;

/// A universe without gravity and sleep, stepped by the frame at 1/60 s.
class HyPartTest : public testing::Test {
protected:
    HyPartTest() {
        mUniverse.setGravity(0, 0, 0);
        mUniverse.setAutoSleep(false);
    }
    ~HyPartTest() override { HyFrame::release(); }

    HyPart& addPart(HyReal mass) {
        auto* part = new HyPart(mass);
        mUniverse.addPart(part);
        return *part;
    }
    void step(int n = 1) {
        for (int i = 0; i < n; ++i)
            mFrame.step();
    }
    static HyTransform makeTransform(const HyVector3& position, const HyVector3& axis,
                                     HyReal angle) {
        HyQuaternion q;
        q.fromAxisAngle(axis.normalized(), angle);
        return HyTransform(q, position);
    }
    static void expectNear(const HyVector3& a, const HyVector3& b, HyReal tolerance = kRounding) {
        EXPECT_TRUE(HyVector3::areEqualTol(a, b, tolerance))
            << a[0] << " " << a[1] << " " << a[2] << ", expected " << b[0] << " " << b[1] << " "
            << b[2];
    }

    HyFrame& mFrame = *HyFrame::instance();
    HyUniverse& mUniverse = mFrame.getUniverse();
    const HyReal mStep = mFrame.getTimeStep();
};

unsigned stateOf(const HyPart& part) {
    return part.getDynBody()->stateFlags;
}

} // namespace

TEST_F(HyPartTest, ControlIsAppliedInAUniverse) {
    using Action = void (*)(HyPart&);
    struct Case {
        const char* name;
        HyReal mass;
        std::vector<Action> actions;
        HyPart::EntityControlTypeEnum asked, effective;
        unsigned bodyState; ///< after the first step
        bool awake;
    };
    const Action freeze = [](HyPart& p) { p.freeze(true); };
    const Action thaw = [](HyPart& p) { p.freeze(false); };
    const Action makeDynamic = [](HyPart& p) { p.setControl(kDynamic); };
    const Action makeStatic = [](HyPart& p) { p.setControl(kStatic); };
    const Action makeAnimated = [](HyPart& p) { p.setControl(kAnimated); };
    constexpr unsigned F = kDynBodyFrozen, K = kDynBodyKinematic;
    const Case cases[] = {
        {"no mass", 0, {}, kAnimated, kAnimated, K, false},
        {"mass", 2, {}, kDynamic, kDynamic, 0, true},
        {"static", 2, {makeStatic}, kStatic, kStatic, F | K, false},
        {"made dynamic", 0, {makeDynamic}, kDynamic, kDynamic, 0, true},
        {"frozen dynamic", 2, {freeze}, kDynamic, kStatic, F | K, false},
        {"frozen and back", 2, {freeze, thaw}, kDynamic, kDynamic, 0, true},
        {"frozen animated", 0, {freeze}, kAnimated, kStatic, F | K, false},
        {"control of a frozen part waits",
         0,
         {freeze, makeDynamic},
         kDynamic,
         kStatic,
         F | K,
         false},
        {"static and back to animated",
         2,
         {makeStatic, makeAnimated},
         kAnimated,
         kAnimated,
         K,
         false},
    };
    for (const Case& c : cases)
        for (const bool inside : {false, true}) {
            auto* part = new HyPart(c.mass);
            if (inside) {
                mUniverse.addPart(part);
                step();
            }
            for (const Action act : c.actions)
                act(*part);
            if (!inside) {
                mUniverse.addPart(part);
                EXPECT_EQ(stateOf(*part), 0u) << c.name << ": applied before the step";
                step();
            }
            EXPECT_EQ(part->getControl(), c.asked) << c.name << inside;
            EXPECT_EQ(part->getEffectiveControl(), c.effective) << c.name << inside;
            EXPECT_EQ(stateOf(*part), c.bodyState) << c.name << inside;
            EXPECT_EQ(part->isDynamicsAwake(), c.awake) << c.name << inside;
            mUniverse.destroyPart(part);
        }
}

TEST_F(HyPartTest, ControlStopsAndFreezingDoesNot) {
    HyPart& part = addPart(1);
    step();
    part.setLinearVelocity(1, 0, 0);
    part.freeze(true);
    step();
    expectNear(part.getPosition(), {0, 0, 0}, 0);
    part.freeze(false);
    step();
    expectNear(part.getPosition(), {mStep, 0, 0});
    part.setControl(kAnimated);
    expectNear(part.getLinearVelocity(), {0, 0, 0}, 0);

    HyPart outside(1);
    outside.freeze(true);
    outside.freeze(false); // not yet applied
    EXPECT_EQ(outside.getEffectiveControl(), kStatic);
}

TEST_F(HyPartTest, AnEqualTransformWakesNothing) {
    HyPart& part = addPart(1);
    const HyTransform tm = makeTransform({1, 2, 3}, {1, 2, 2}, 0.7);
    part.setTransform(tm);
    step(3);
    HyTransform equal = tm;
    equal[3][1] = std::nextafter(2.0, 3.0);
    part.wakeDynamics(false);
    part.setTransform(equal);
    EXPECT_FALSE(part.isDynamicsAwake());
    EXPECT_EQ(part.getTransform(), equal); // but its bits count
    EXPECT_EQ(part.getPreviousTransform(), equal);

    part.wakeDynamics(true);
    step(2);
    const int steps = part.getEnabledSteps();
    part.setTransform(part.getTransform());
    EXPECT_EQ(part.getEnabledSteps(), steps);
    HyTransform other = tm;
    other[3][1] += 1e-9;
    part.setTransform(other);
    EXPECT_EQ(part.getEnabledSteps(), 0);
}

TEST_F(HyPartTest, AHeldPartCanBePlaced) {
    HyPart &frozen = addPart(1), &fixed = addPart(1);
    frozen.freeze(true);
    fixed.setControl(kStatic);
    step();
    for (HyPart* part : {&frozen, &fixed}) {
        part->setPosition(5, 0, 0);
        EXPECT_EQ(stateOf(*part), unsigned(kDynBodyFrozen | kDynBodyKinematic));
        step();
        expectNear(part->getPosition(), {5, 0, 0}, 0);
    }
}

TEST_F(HyPartTest, KinematicMoves) {
    const HyTransform tm = makeTransform({0.1, 0, 0}, {0, 0, 1}, 0.02);
    struct Case {
        const char* name;
        bool inUniverse;
        HyPart::EntityControlTypeEnum control;
        HyReal dt;
        bool getsVelocity, informs;
    };
    const Case cases[] = {
        {"animated", true, kAnimated, 0.1, true, false},
        {"dynamic", true, kDynamic, 0.1, true, false},
        {"static", true, kStatic, 0.1, false, true},
        {"no time", true, kAnimated, 0, false, false},
        {"no universe", false, kAnimated, 0.1, false, false},
    };
    for (const Case& c : cases) {
        auto part = std::make_unique<HyPart>(1);
        part->setControl(c.control);
        if (c.inUniverse) {
            mUniverse.addPart(part.get());
            step();
        }
        MessageCapture messages;
        part->setTransform(tm, c.dt);
        const HyReal speed = c.getsVelocity ? 1 : 0;
        expectNear(part->getLinearVelocity(), {speed, 0, 0});
        expectNear(part->getAngularVelocity(), {0, 0, speed * 2 * std::sin(0.01) / 0.1});
        EXPECT_EQ(part->getTransform(), tm) << c.name;
        EXPECT_EQ(part->getPreviousTransform() == tm, !c.getsVelocity) << c.name;
        EXPECT_EQ(messages.take().find("HyPart::setTransform(tm, dt): This method should not be "
                                       "called if the part is frozen. \n. Please think to use "
                                       "setTransform(tm) in that case.\n") != std::string::npos,
                  c.informs)
            << c.name;
    }
}

TEST_F(HyPartTest, QuaternionSetterNormalisesItsArgument) {
    HyPart& part = addPart(1);
    HyQuaternion q(0, 0, 3, 4);
    part.setOrientationQuaternion(q);
    EXPECT_NEAR(q[2], 0.6, kRounding);
    HyQuaternion small(0, 0, 3e-5, 4e-5);
    part.setOrientationQuaternion(small);
    EXPECT_EQ(small[2], 3e-5);
    const HyQuaternion now = part.getOrientationQuaternion();
    EXPECT_NEAR(std::abs(now.dot(q)), 1, kRounding);
    MessageCapture messages;
    part.setOrientationQuaternion(HyQuaternion(0, 0, 0, 0));
    EXPECT_THAT(messages.take(), HasSubstr("HyPart::setOrientationQuaternion: "));
    EXPECT_EQ(part.getOrientationQuaternion(), now);

    part.setOrientationEulerAngles(HyEulerAngles(0.1, 0.2, 0.3));
    const HyEulerAngles angles = part.getOrientationEulerAngles();
    EXPECT_NEAR(angles.y, 0.2, kRounding);
    EXPECT_NEAR(angles.z, 0.3, kRounding);
}

// A part with its centre of mass beside the frame, thrown with spin and damped: p' = m v / (m + h d),
// the centre goes straight and the frame turns about it.
TEST_F(HyPartTest, FliesAboutItsCenterOfMass) {
    HyPart& part = addPart(2);
    part.setCOMOffset({0.5, 0, 0});
    part.setLinearVelocityDamping(3);
    step();
    const HyVector3 start = part.getCOMPosition();
    expectNear(start, {0.5, 0, 0});
    part.setLinearVelocity(0, 1, 0);
    part.setAngularVelocity(0, 0, 2);
    HyReal v = 1, y = 0;
    for (int i = 0; i < 60; ++i) {
        step();
        v = 2 * v / (2 + mStep * 3);
        y += mStep * v;
    }
    expectNear(part.getCOMPosition(), start + HyVector3(0, y, 0));
    const HyReal angle = 2 * 60 * mStep;
    expectNear(part.getPosition(),
               part.getCOMPosition() - 0.5 * HyVector3(std::cos(angle), std::sin(angle), 0), 1e-10);
    expectNear(part.getLinearVelocityAtAbsolutePosition(part.getPosition()),
               part.getLinearVelocityAtRelativePosition({0, 0, 0}));
}

TEST_F(HyPartTest, MovingTheCenterOfMassKeepsTheMotion) {
    HyPart& part = addPart(2);
    part.setTransform(makeTransform({1, 2, 3}, {1, 1, 0}, 1));
    part.setLinearVelocity(1, 2, 3);
    part.setAngularVelocity(-1, 4, 2);
    const HyVector3 point(4, 4, 4), before = part.getLinearVelocityAtAbsolutePosition(point);
    part.setCOMPosition({1, 2, 4});
    expectNear(part.getCOMPosition(), {1, 2, 4});
    expectNear(part.getLinearVelocityAtAbsolutePosition(point), before);
    EXPECT_TRUE(part.getLockCOM());
}

TEST_F(HyPartTest, MassOfAPart) {
    HyPart part(2);
    HyReal tensor[3][3];
    part.getInertiaLocal(tensor);
    EXPECT_EQ(tensor[1][1], 2); // unit tensor, scaled
    part.setMass(6);
    part.getInertiaLocal(tensor);
    EXPECT_EQ(tensor[1][1], 6);
    EXPECT_EQ(part.getDynBody()->kiroBody._i0[1][1], 6);
    EXPECT_EQ(part.getDynBody()->mass, 6);

    part.setLockMass(false);
    const HyReal own[3][3] = {{1, 0, 0}, {0, 2, 0}, {0, 0, 3}};
    part.setMassAndInertia(6, own);
    part.setLockMass(false);
    part.setMass(6); // locks and leaves the tensor
    EXPECT_TRUE(part.getLockMass());
    part.getInertiaLocal(tensor);
    EXPECT_EQ(tensor[2][2], 3);

    HyPart animated;
    animated.setMass(3);
    EXPECT_EQ(animated.getMass(), 0);
    EXPECT_FALSE(animated.getLockMass());
    part.setMassFromPart(&animated); // not dynamic
    EXPECT_EQ(part.getMass(), 6);
    HyPart other(1);
    other.setMassFromPart(&part);
    EXPECT_EQ(other.getMass(), 6);
    EXPECT_TRUE(other.getLockInertia());
}

TEST_F(HyPartTest, ADynamicPartOfNoMassWeighsOneKilogram) {
    HyPart part;
    part.setControl(kDynamic);
    EXPECT_EQ(part.getMass(), 0);
    mUniverse.addPart(&part);
    step();
    HyReal tensor[3][3];
    part.getInertiaLocal(tensor);
    EXPECT_EQ(part.getMass(), 1);
    EXPECT_EQ(tensor[0][0], 1);
    EXPECT_EQ(part.getDynBody()->kiroBody._i0[0][0], 1);
}

TEST_F(HyPartTest, MassPropertiesAddUp) {
    HyPart part(2);
    part.setMassAndInertia(2, kUnitTensor);
    const HyMassProperties added = part.getMassProperties();
    part.addMassProperties(added, HyTransform(HyVector3(0, 0, 2)));
    EXPECT_EQ(part.getMass(), 4);
    expectNear(part.getCOMOffset(), {0, 0, 1});
    HyReal tensor[3][3];
    part.getInertiaLocal(tensor);
    EXPECT_NEAR(tensor[0][0], 1 + 1 + 2 + 2, kRounding); // two of 2 kg at a distance of 1 m
    EXPECT_NEAR(tensor[2][2], 2, kRounding);
    part.subtractMassProperties(added, HyTransform(HyVector3(0, 0, 2)));
    EXPECT_EQ(part.getMass(), 2);
    expectNear(part.getCOMOffset(), {0, 0, 0});
    EXPECT_TRUE(part.getLockMass() && part.getLockCOM() && part.getLockInertia());
}

TEST_F(HyPartTest, LoadsWakeDynamicPartsAlone) {
    HyPart &dynamic = addPart(2), &animated = addPart(0);
    step();
    dynamic.wakeDynamics(false);
    animated.addForce(HyVector3(1, 0, 0));
    expectNear(animated.getForce(), {0, 0, 0}, 0);
    dynamic.addForceAtRelativePosition(HyVector3(0, 6, 0), HyVector3(1, 0, 0));
    EXPECT_TRUE(dynamic.isDynamicsAwake());
    expectNear(dynamic.getTorque(), {0, 0, 6}, 0);
    dynamic.addImpulse(HyVector3(4, 0, 0));
    step();
    expectNear(dynamic.getLinearVelocity(), {2, 6 * mStep / 2, 0});
    expectNear(dynamic.getAngularVelocity(), {0, 0, 6 * mStep / 2});
    expectNear(dynamic.getForce(), {0, 0, 0}, 0);
    expectNear(dynamic.getLastForce(), {4 / mStep, 6, 0}, 1e-9);
    step();
    expectNear(dynamic.getLinearVelocity(), {2, 6 * mStep / 2, 0});
}

// A load is for one step, also where the part is put to sleep before it has acted.
TEST_F(HyPartTest, ALoadDoesNotOutlastItsStepInASleepingPart) {
    struct Sleeper : HyUniverse::UpdateSubscriber {
        HyPart* part = nullptr;
        void update(HyUniverse*) override { part->wakeDynamics(false); }
        void reset() override {}
    };
    for (const bool inStep : {false, true}) {
        HyPart& part = addPart(1);
        step();
        part.addForce(HyVector3(6, 0, 0));
        part.addTorque(HyVector3(0, 6, 0));
        Sleeper sleeper;
        sleeper.part = &part;
        if (inStep)
            mUniverse.addUpdateSubscriber(&sleeper);
        else
            part.wakeDynamics(false);
        step();
        mUniverse.removeUpdateSubscriber(&sleeper);
        EXPECT_FALSE(part.isDynamicsAwake());
        part.wakeDynamics(true);
        step();
        expectNear(part.getLinearVelocity(), {0, 0, 0}, 0);
        expectNear(part.getAngularVelocity(), {0, 0, 0}, 0);
    }
}

TEST_F(HyPartTest, SleepThresholdsInTheirOrder) {
    HyPart part(1);
    part.setAutoSleepThreshold(1, 2, 3, 4, 5);
    EXPECT_EQ(part.getAutoSleepLinearSpeedThreshold(), 1);
    EXPECT_EQ(part.getAutoSleepLinearAccelerationThreshold(), 2);
    EXPECT_EQ(part.getAutoSleepAngularSpeedThreshold(), 3);
    EXPECT_EQ(part.getAutoSleepAngularAccelerationThreshold(), 4);
    EXPECT_EQ(part.getAutoSleepStepLiveThreshold(), 5);
    const DynAutoDisableParams& params = part.getDynBody()->autoDisableParams;
    EXPECT_EQ(params.velrot_thresh, 3);
    EXPECT_EQ(params.acc_thresh, 2);

    HyReal v, a, w, alpha;
    int steps;
    HyPart::getDefaultAutoSleepParameters(v, a, w, alpha, steps);
    HyPart::setDefaultAutoSleepParameters(1, 2, 3, 4, 5);
    MessageCapture messages;
    HyPart::setDefaultAutoSleepParameters(9, 9, 9, 9, -1);
    EXPECT_THAT(messages.take(), HasSubstr("alive_window"));
    HyPart other(1);
    HyPart::setDefaultAutoSleepParameters(v, a, w, alpha, steps);
    EXPECT_EQ(other.getAutoSleepLinearAccelerationThreshold(), 2);
    EXPECT_EQ(other.getAutoSleepAngularSpeedThreshold(), 3);
}

// At rest: awake for the first 10 steps, then asleep; moving: never.
TEST_F(HyPartTest, FallsAsleepAtRest) {
    mUniverse.setAutoSleep(true);
    HyPart &resting = addPart(1), &moving = addPart(1);
    moving.setLinearVelocity(0, 0, 1);
    step(9);
    EXPECT_TRUE(resting.isDynamicsAwake());
    step(5);
    EXPECT_FALSE(resting.isDynamicsAwake());
    EXPECT_EQ(resting.getEnabledSteps(), -1);
    EXPECT_EQ(resting.getLastPartitionIndex(), -1);
    EXPECT_TRUE(moving.isDynamicsAwake());
}

TEST_F(HyPartTest, FastSpinAxisInEitherFrame) {
    HyPart& part = addPart(1);
    part.setTransform(makeTransform({0, 0, 0}, {0, 0, 1}, std::acos(0.0))); // x to y
    part.setFastSpinAxisAbsolute({0, 2, 0});
    expectNear(part.getFastSpinAxisRelative(), {2, 0, 0});
    EXPECT_FALSE(part.getDynBody()->kiroBody.flags & kDynsBodyFastSpinAxis);
    part.setFastSpinAxisEnabled(true);
    EXPECT_TRUE(part.getDynBody()->kiroBody.flags & kDynsBodyFastSpinAxis);
    expectNear(HyVector3(part.getDynBody()->kiroBody.fastSpinAxis), {1, 0, 0});
    expectNear(part.getFastSpinAxisAbsolute(), {0, 2, 0});
    part.setFastSpinAxisEnabled(false);
    EXPECT_FALSE(part.getDynBody()->kiroBody.flags & kDynsBodyFastSpinAxis);
}

TEST_F(HyPartTest, RefusesBadInput) {
    struct Case {
        const char* name;
        std::function<void(HyPart&)> call;
    };
    const HyVector3 bad(0, kNaN, 0), good(1, 1, 1);
    HyPart none;
    none.setControl(kDynamic);
    HyTransform badTM;
    badTM[1][1] = kInf;
    const HyReal flat[3][3] = {{1, 0, 0}, {0, 1, 0}, {0, 0, 0}};
    const Case cases[] = {
        {"control", [](HyPart& p) { p.setControl(static_cast<HyPart::EntityControlTypeEnum>(3)); }},
        {"transform", [&](HyPart& p) { p.setTransform(badTM); }},
        {"kinematic transform", [&](HyPart& p) { p.setTransform(badTM, 0.1); }},
        {"position", [&](HyPart& p) { p.setPosition(bad); }},
        {"velocity", [&](HyPart& p) { p.setLinearVelocity(bad); }},
        {"no mass", [](HyPart& p) { p.setMass(0); }},
        {"negative mass", [](HyPart& p) { p.setMass(-1); }},
        {"mass with no inverse", [](HyPart& p) { p.setMass(1e-310); }},
        {"mass with no inverse tensor", [](HyPart& p) { p.setMass(1e-150); }},
        {"mass of a part that has none yet", [&](HyPart& p) { p.setMassFromPart(&none); }},
        {"mass of none", [](HyPart& p) { p.setMass(kNaN); }},
        {"flat tensor", [&](HyPart& p) { p.setMassAndInertia(1, flat); }},
        {"empty properties", [](HyPart& p) { p.setMassProperties(HyMassProperties()); }},
        {"take away all",
         [](HyPart& p) { p.subtractMassProperties(HyMassProperties(p.getMassProperties()), {}); }},
        {"centre of mass", [&](HyPart& p) { p.setCOMOffset(bad); }},
        {"force", [&](HyPart& p) { p.addForce(bad); }},
        {"force at nowhere", [&](HyPart& p) { p.addForceAtRelativePosition(good, bad); }},
        {"impulse", [&](HyPart& p) { p.addImpulse(bad); }},
        {"axis", [&](HyPart& p) { p.setFastSpinAxisRelative(bad); }},
        {"group", [](HyPart& p) { p.setSolverGroup(-2); }},
        {"large group", [](HyPart& p) { p.setSolverGroup(65536); }},
    };
    HyPart& part = addPart(2);
    step();
    part.setLockMass(false);
    part.wakeDynamics(false);
    std::vector<unsigned char> before(sizeof(DynBody));
    std::memcpy(before.data(), static_cast<const void*>(part.getDynBody()), sizeof(DynBody));
    MessageCapture messages;
    for (const Case& c : cases) {
        c.call(part);
        EXPECT_THAT(messages.take(), HasSubstr("Warning")) << c.name;
        EXPECT_EQ(std::memcmp(before.data(), static_cast<const void*>(part.getDynBody()),
                              sizeof(DynBody)),
                  0)
            << c.name;
        EXPECT_EQ(part.getMass(), 2) << c.name;
        EXPECT_FALSE(part.getLockMass()) << c.name;
        EXPECT_FALSE(part.getLockCOM() || part.getLockInertia()) << c.name;
        EXPECT_EQ(part.getSolverGroup(), 0) << c.name;
    }
    HyPart unmade(-1.0);
    EXPECT_THAT(messages.take(), HasSubstr("HyPart::setMass: mass must be larger than 0.\n"));
    EXPECT_EQ(unmade.getControl(), kDynamic);
    EXPECT_EQ(unmade.getMass(), 0);
}

TEST_F(HyPartTest, WarnsOfControlInTheMiddleOfAStep) {
    struct Changer : HyUniverse::UpdateSubscriber {
        HyPart* part = nullptr;
        void update(HyUniverse*) override { part->setControl(kStatic); }
        void reset() override {}
    };
    HyPart& part = addPart(1);
    step();
    Changer changer;
    changer.part = &part;
    mUniverse.addUpdateSubscriber(&changer);
    MessageCapture messages;
    step();
    const std::string text = messages.take();
    EXPECT_THAT(text, HasSubstr("HyPart::setControl: cannot be called while stepping universe "
                                "(check intersect subscribers).\n"));
    EXPECT_THAT(text, HasSubstr("HyPart::_freeze: cannot be called while stepping universe (check "
                                "intersect subscribers).\n"));
    EXPECT_EQ(part.getEffectiveControl(), kStatic); // it does all the same
    mUniverse.removeUpdateSubscriber(&changer);
}

TEST_F(HyPartTest, LeavesAndChangesUniverses) {
    auto* part = new HyPart(1);
    mUniverse.addPart(part);
    step(2);
    auto* second = new HyUniverse(10, 10, nullptr);
    mFrame.addUniverse(second);
    second->addPart(part);
    EXPECT_EQ(part->getUniverse(), second);
    EXPECT_TRUE(mUniverse.getParts().empty());
    EXPECT_TRUE(part->isDynamicsAwake());
    EXPECT_EQ(part->getEnabledSteps(), 0);
    second->removePart(part);
    EXPECT_EQ(part->getUniverse(), nullptr);
    EXPECT_FALSE(part->isDynamicsAwake());
    part->setControl(kStatic); // pending
    mUniverse.addPart(part);
    delete part; // before its first step
    step();
    EXPECT_TRUE(mUniverse.getParts().empty());
}

// A restored part goes on to the same bits: a spinning top with an odd centre of mass, damped.
TEST_F(HyPartTest, RestoredStateReplaysToTheBit) {
    HyPart &part = addPart(2), &other = addPart(1);
    const HyReal tensor[3][3] = {{1, 0.1, 0}, {0.1, 2, 0}, {0, 0, 2.5}};
    part.setMassAndInertia(2, tensor);
    part.setCOMOffset({0.1, 0.2, 0.3});
    part.setTransform(makeTransform({1, 2, 3}, {3, 2, 1}, 2));
    part.setAngularVelocity(1, 7, 2);
    part.setLinearVelocity(0.3, 0, 0);
    part.setAngularVelocityDamping(0.1);
    mUniverse.setAutoSleep(true);
    step(20);
    const std::unique_ptr<HyPartState> state(part.createState());
    std::vector<HyTransform> first;
    for (int i = 0; i < 50; ++i) {
        step();
        first.push_back(part.getTransform());
    }
    const int steps = part.getEnabledSteps();
    part.setControl(kStatic);
    part.setPosition(9, 9, 9);
    step();
    state->restore();
    EXPECT_EQ(part.getControl(), kDynamic);
    for (int i = 0; i < 50; ++i) {
        step();
        EXPECT_EQ(std::memcmp(&part.getTransform(), &first[std::size_t(i)], sizeof(HyTransform)), 0)
            << "step " << i;
    }
    EXPECT_EQ(part.getEnabledSteps(), steps);

    const HyTransform otherBefore = other.getTransform();
    EXPECT_FALSE(other.restoreState(state.get()));
    EXPECT_FALSE(other.restoreState(nullptr));
    EXPECT_EQ(other.getTransform(), otherBefore);
    mUniverse.destroyPart(&part);
    state->restore(); // nothing to restore
}
