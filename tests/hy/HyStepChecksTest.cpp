#include "FrameFixture.h"

#include <Hy/HyBox.h>
#include <Hy/HyCollisionGeometry.h>
#include <Hy/HyContactMaterial.h>
#include <Hy/HyDynamicsContact.h>
#include <Hy/HyHinge.h>
#include <Hy/HyPart.h>
#include <Hy/HyStepChecks.h>
#include <Hy/HyUniverse.h>

#include <cmath>

using namespace Hy;

namespace {

using Option = HyFrameStepperOption;
using Callback = Option::CheckSubscriberCB;

constexpr HyReal kStep = 0.01; // s

struct Answers : Callback {
    using Callback::notifyCheckFailure;
    ReturnTypeEnum notifyCheckFailure(HyPart* part, const char* description) override {
        heard += (part ? part->getName() : "-") + ": " + description + "\n";
        return answer;
    }
    std::string heard;
    ReturnTypeEnum answer = kReturnTypeEnumAccept;
};

struct HyStepChecksTest : FrameFixture {
    void SetUp() override {
        FrameFixture::SetUp();
        frame->setTimeStep(kStep);
        universe = &frame->getUniverse();
        universe->setGravity(0, 0, 0);
        option().setStepperMode(Option::kModeCheck);
    }
    void TearDown() override {
        for (Option::CheckSubscriber* check : option().getCheckSubscriberArray())
            check->setCheckSubscriberCB(nullptr);
        option().setVerbose(false);
        FrameFixture::TearDown();
        option().resetStepperMode();
    }
    static Option& option() { return Option::instance(); }
    static void answer(Answers& answers) {
        const auto& checks = option().getCheckSubscriberArray();
        checks.at(checks.size() - 1)->setCheckSubscriberCB(&answers);
    }
    HyPart& addBox(const char* name, HyReal mass, const HyVector3& position) {
        auto* part = new HyPart(mass);
        part->setName(name);
        part->addCollisionGeometry(new HyCollisionGeometry(new HyBox(1, 1, 1)));
        part->setPosition(position);
        part->setControl(HyPart::kControlDynamic);
        universe->addPart(part);
        return *part;
    }

    HyUniverse* universe = nullptr;
};

} // namespace

TEST_F(HyStepChecksTest, SettlingTakesItsShareOfVelocitiesEachStep) {
    HyPart& part = addBox("a", 1, {});
    part.setLinearVelocity(8, 0, 0);
    part.setAngularVelocity(0, 4, 0);
    option().setSettle(true);
    frame->step();
    frame->step();
    EXPECT_NEAR(part.getLinearVelocity()[0], 2, 1e-12);
    EXPECT_NEAR(part.getAngularVelocity()[1], 1, 1e-12);
    option().setSettlingFactor(NAN);
    EXPECT_TRUE(warned("the factor must be finite"));
    EXPECT_EQ(option().getSettlingFactor(), 0.5);
    option().setSettle(false);
    EXPECT_FALSE(option().getSettle());
    frame->step();
    EXPECT_NEAR(part.getLinearVelocity()[0], 2, 1e-12);
}

// A box of 1 m may move by 0.25 m in a step.
TEST_F(HyStepChecksTest, FastPartsAreFollowedFromTheirFirstFastStep) {
    HyPart &slow = addBox("slow", 1, {}), &fast = addBox("fast", 1, {5, 0, 0}),
           &turning = addBox("turning", 1, {0, 5, 0});
    HyPart& bare = *new HyPart(1);
    universe->addPart(&bare);
    slow.setLinearVelocity(24, 0, 0);
    fast.setLinearVelocity(0, 26, 0);
    turning.setAngularVelocity(0, 0, 26);
    bare.setLinearVelocity(99, 0, 0);
    option().setVerbose(true);
    option().setCheckFastMoving(true);
    Answers answers;
    answer(answers);
    frame->step();
    EXPECT_TRUE(fast.getFastMoving() && turning.getFastMoving());
    EXPECT_FALSE(slow.getFastMoving() || bare.getFastMoving());
    EXPECT_EQ(answers.heard, "turning: check velocity failure\nfast: check velocity failure\n");
    ASSERT_EQ(warnings().size(), 2U);
    EXPECT_TRUE(warned("part fast is moving fast without setFastMoving enabled\n"));
    fast.setFastMoving(false);
    answers.answer = Callback::kReturnTypeEnumIgnore;
    frame->step();
    EXPECT_FALSE(fast.getFastMoving() || warned("moving fast"));
    EXPECT_FALSE(frame->getStepAborted());
}

TEST_F(HyStepChecksTest, DeepContactsAreMadeShallow) {
    HyPart& part = addBox("deep", 1, {});
    const auto penetration = [&] {
        const HyDynamicsContact* contact = universe->getUserDynamicsContacts().at(0);
        return contact->getPenetration();
    };
    const auto press = [&](HyReal depth) {
        universe->deleteAllUserDynamicsContacts();
        universe->createUserDynamicsContact(&part, nullptr, nullptr, {}, {0, 0, 1}, depth);
        frame->step();
    };
    option().setVerbose(true);
    option().setCheckContactPenetration(true);
    press(0.3);
    EXPECT_EQ(penetration(), 0.1);
    EXPECT_TRUE(warned("part deep and part frozen part are deeply inter-penetrated.\n"));
    Answers answers;
    answers.answer = Callback::kReturnTypeEnumIgnore;
    answer(answers);
    press(0.3);
    EXPECT_EQ(penetration(), 0.3);
    EXPECT_EQ(answers.heard, "deep: check contact penetration failure\n");
    option().setCheckContactPenetrationThreshold(-1);
    EXPECT_TRUE(warned("HyCheckContact::setPenetrationThreshold"));
    EXPECT_EQ(option().getCheckContactPenetrationThreshold(), 0.1);
}

// 1000 N on 1 kg: beyond the limit of sqrt(100000) m/s^2.
TEST_F(HyStepChecksTest, AccelerationBeyondTheLimitAbortsUnlessIgnored) {
    EXPECT_NEAR(option().getCheckAccelerationLinearThreshold(), 316.2278, 1e-4);
    EXPECT_EQ(option().getCheckAccelerationAngularThreshold(), 100);
    HyPart &first = addBox("first", 1, {}), &second = addBox("second", 1, {5, 0, 0});
    option().setVerbose(true);
    option().setCheckAcceleration(true);
    const auto push = [&] {
        option().setStepperMode(Option::kModeCheck);
        first.addForce(HyVector3(1000, 0, 0));
        second.addForce(HyVector3(1000, 0, 0));
        frame->step();
        return first.getLinearVelocity()[0];
    };
    EXPECT_EQ(push(), 0); // not integrated
    EXPECT_TRUE(warned("HyCheckAcceleration: part second exceeds max acceleration\n"));
    EXPECT_EQ(option().getStepperMode(), Option::kModeCollisionAndDynamics);

    Answers answers;
    answer(answers);
    EXPECT_EQ(push(), 0);
    EXPECT_EQ(answers.heard, "second: check acceleration failure\n"
                             "first: check acceleration failure\n");
    answers.answer = Callback::kReturnTypeEnumIgnore;
    warnings().clear();
    EXPECT_NEAR(push(), 1000 * kStep, 1e-9);
    EXPECT_FALSE(warned("exceeds max"));
    answers.answer = Callback::kReturnTypeEnumBreak;
    option().setCheckAccelerationLinearThreshold(1001);
    EXPECT_NEAR(push(), 2000 * kStep, 1e-9);
    option().setCheckAccelerationLinearThreshold(std::sqrt(100000.0));
}

TEST_F(HyStepChecksTest, MaterialsStayWhereFrictionIsForcedAway) {
    HyPart& part = addBox("a", 1, {});
    HyContactMaterial material;
    material.setFrictionModel(HyMaterialBase::kFrictionAxisLinear,
                              HyMaterialBase::kFrictionModelScaledBox);
    HyDynamicsContact* contact =
        universe->createUserDynamicsContact(&part, nullptr, &material, {}, {0, 0, 1}, 0.01);
    option().setCheckForceFrictionless(true);
    frame->step();
    EXPECT_EQ(contact->getContactMaterial().model[0], DyncContactMaterial::kFrictionModelNone);
    EXPECT_EQ(contact->getContactMaterial().model[1], DyncContactMaterial::kFrictionModelNone);
    EXPECT_EQ(material.getFrictionModel(HyMaterialBase::kFrictionAxisLinear),
              HyMaterialBase::kFrictionModelScaledBox);
}

// A part that acts as if nothing could move it keeps its velocity, whatever hangs on it.
TEST_F(HyStepChecksTest, FarHeavierPartsAreNotMovedByLighterOnes) {
    HyPart &heavy = addBox("heavy", 60, {}), &light = addBox("light", 1, {3, 0, 0});
    auto* hinge = new HyHinge(&light, &heavy, {1.5, 0, 0}, {0, 1, 0});
    universe->addConstraint(hinge);
    hinge->enable(true);
    HyDynamicsContact* contact =
        universe->createUserDynamicsContact(&light, &heavy, nullptr, {}, {1, 0, 0}, 0);
    option().setCheckForceKinematicPart(true);
    light.addForce(HyVector3(100, 0, 0));
    frame->step();
    EXPECT_EQ(hinge->getForcePartKinematicResponseIndex(), 1);
    EXPECT_EQ(contact->getForcePartKinematicResponse(), &heavy);
    EXPECT_NEAR(heavy.getLinearVelocity().norm(), 0, 1e-12);
    option().setCheckForceKinematicPartMassThreshold(100);
    frame->step();
    EXPECT_EQ(hinge->getForcePartKinematicResponseIndex(), -1);
    option().setCheckForceKinematicPartMassThreshold(50);
    frame->step();
    option().setCheckForceKinematicPart(false);
    EXPECT_EQ(hinge->getForcePartKinematicResponseIndex(), -1);
}

TEST_F(HyStepChecksTest, ContactsEndWithCollision) {
    HyPart& part = addBox("a", 1, {});
    HyDynamicsContact* contact =
        universe->createUserDynamicsContact(&part, nullptr, nullptr, {}, {0, 0, 1}, 0.01);
    option().setUpdateActionCollision(false);
    EXPECT_FALSE(contact->isEnabled());
    EXPECT_EQ(option().getStepperMode(), Option::kModeManual);
}
