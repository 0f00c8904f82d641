#include "FrameFixture.h"

#include <Dyn/DynBody.h>
#include <Dyn/DynContact.h>
#include <Dyn/DynWorld.h>
#include <Hy/Hy.h>
#include <Hy/HyContactMaterial.h>
#include <Hy/HyContactProperties.h>
#include <Hy/HyMaterial.h>
#include <Hy/HyMaterialTable.h>

#include <cmath>
#include <limits>

using namespace Hy;

namespace {

constexpr HyReal kNan = std::numeric_limits<HyReal>::quiet_NaN();
const HyVector3 kUp(0, 0, 1);

class HyDynamicsContactTest : public FrameFixture {
protected:
    void SetUp() override {
        FrameFixture::SetUp();
        frame->setTimeStep(1.0 / 60);
        universe = &frame->getUniverse();
        universe->setAutoSleep(false);
    }
    HyPart& addPart() {
        auto* part = new HyPart(2);
        universe->addPart(part);
        part->preStep();
        return *part;
    }
    HyDynamicsContact* touch(HyPart* part1, HyPart* part2 = nullptr) {
        return universe->createUserDynamicsContact(part1, part2, nullptr, HyVector3(), kUp, 0);
    }

    HyUniverse* universe = nullptr;
};

} // namespace

TEST_F(HyDynamicsContactTest, NeedsADynamicPartOfTheUniverse) {
    constexpr const char* kWarning =
        "HyUniverse::createUserDynamicsContact: need at least one dynamic, non-frozen part for the "
        "contact to be valid.\n";
    HyPart &part = addPart(), &frozen = addPart(), &animated = addPart();
    frozen.freeze(true);
    animated.setControl(HyPart::kControlAnimated);
    HyPart loose(1);
    auto* other = new HyUniverse(2, 2, nullptr);
    frame->addUniverse(other);
    auto* foreign = new HyPart(1);
    other->addPart(foreign);
    const std::pair<HyPart*, HyPart*> refused[] = {{nullptr, nullptr}, {&loose, nullptr},
                                                   {&part, &loose},    {foreign, &part},
                                                   {&frozen, nullptr}, {&animated, &frozen}};
    for (const auto& [part1, part2] : refused) {
        EXPECT_EQ(touch(part1, part2), nullptr);
        EXPECT_TRUE(warned(kWarning));
    }
    EXPECT_EQ(universe->createUserDynamicsContact(&part, nullptr, nullptr, {}, {0, kNan, 0}, 0),
              nullptr);
    EXPECT_EQ(universe->createUserDynamicsContact(&part, nullptr, nullptr, {}, {}, 0), nullptr);
    EXPECT_EQ(universe->createUserDynamicsContact(&part, nullptr, nullptr, {}, kUp, kNan), nullptr);
    EXPECT_EQ(warnings().size(), 3U);
    EXPECT_TRUE(universe->getUserDynamicsContacts().empty());
    EXPECT_NE(touch(&frozen, &part), nullptr);
    EXPECT_NE(touch(nullptr, &part), nullptr);
    EXPECT_EQ(universe->getUserDynamicsContacts().size(), 2U);
}

// What the world presses with: a contact that acts holds the part up, one step long.
TEST_F(HyDynamicsContactTest, ActsThroughOneStep) {
    HyPart& part = addPart();
    HyDynamicsContact* contact = touch(&part);
    ASSERT_TRUE(contact && contact->isEnabled());
    EXPECT_EQ(contact->getSurface(), 0);
    EXPECT_EQ(contact->getGroupIndex(), 0);
    EXPECT_FALSE(contact->getWeakContact());
    frame->step();
    EXPECT_FALSE(contact->isEnabled());
    HyVector3 force;
    contact->getForce(0, force);
    EXPECT_NEAR(force[2], 2 * 9.80665, 1e-4);
    EXPECT_NEAR(part.getLinearVelocity()[2], 0, 1e-5);
    frame->step();
    EXPECT_NEAR(part.getLinearVelocity()[2], -9.80665 / 60, 1e-5) << "falls";
    EXPECT_TRUE(contact->enableContact(true));
    frame->step();
    EXPECT_NEAR(part.getLinearVelocity()[2], 0, 1e-5);

    universe->deleteUserDynamicsContact(contact);
    EXPECT_TRUE(universe->getUserDynamicsContacts().empty());
    universe->deleteUserDynamicsContact(contact); // gone
    universe->deleteUserDynamicsContact(nullptr);
    touch(&part);
    touch(&part);
    universe->deleteAllUserDynamicsContacts();
    EXPECT_TRUE(universe->getUserDynamicsContacts().empty());
    EXPECT_EQ(universe->getDynWorld()->nConstraints, 0);
}

TEST_F(HyDynamicsContactTest, LetsGoOfAPartThatLeaves) {
    HyPart &stays = addPart(), &leaves = addPart();
    HyDynamicsContact* contact = touch(&leaves, &stays);
    HyDynamicsContact* asleep = touch(&stays, &leaves);
    asleep->enableContact(false);
    universe->destroyPart(&leaves);
    EXPECT_FALSE(contact->isEnabled());
    HyPart *part1, *part2;
    contact->getPartPair(part1, part2);
    EXPECT_EQ(part1, nullptr);
    EXPECT_EQ(part2, &stays);
    contact->getOriginalPartPair(part1, part2);
    EXPECT_EQ(part1, nullptr);
    asleep->getPartPair(part1, part2);
    EXPECT_EQ(part2, nullptr);
    frame->step();
    universe->removePart(&stays);
    EXPECT_FALSE(contact->enableContact(true)) << "nothing to act on";
    universe->addPart(&stays);
    contact->setPartPair(&stays, nullptr);
    EXPECT_TRUE(contact->isEnabled());
}

TEST_F(HyDynamicsContactTest, TakesItsMaterial) {
    HyPart &light = addPart(), &heavy = addPart();
    heavy.setMass(5);
    HyContactMaterial material;
    material.setName("ice");
    material.setFrictionModel(HyMaterialBase::kFrictionAxisLinearPrimary,
                              HyMaterialBase::kFrictionModelBoxProportionalHigh);
    material.setBoxFrictionForce(HyMaterialBase::kFrictionAxisLinearPrimary, 3);
    material.setFrictionModel(HyMaterialBase::kFrictionAxisAngularNormal,
                              HyMaterialBase::kFrictionModelScaledBoxFast);
    HyDynamicsContact* contact =
        universe->createUserDynamicsContact(&light, &heavy, &material, {}, kUp, 0.1);
    DyncContactMaterial& own = contact->getContactMaterial();
    EXPECT_EQ(own.model[0], DyncContactMaterial::kFrictionModelBox);
    EXPECT_EQ(own.boxMaxForce[0], 15);
    EXPECT_EQ(own.model[2], DyncContactMaterial::kFrictionModelScaledBox) << "not matched";
    EXPECT_STREQ(contact->getContactMaterialName(), "ice");
    EXPECT_EQ(contact->getPenetration(), 0.1);

    HyContactProperties* properties = contact->getContactProperties();
    EXPECT_EQ(contact->getContactProperties(), properties);
    properties->setPrimaryBoxFrictionForce(4);
    EXPECT_EQ(own.boxMaxForce[0], 4);

    HyMaterialTable* table = universe->getMaterialTable();
    const HyMaterial* standard = table->getDefaultMaterial();
    table->getContactMaterial(standard, standard)->setRestitution(0.25);
    EXPECT_EQ(touch(&light)->getContactMaterial().restitution, 0.25) << "of the table";
}

TEST_F(HyDynamicsContactTest, SlipIsCountedFromTheBelt) {
    HyPart &a = addPart(), &b = addPart();
    HyDynamicsContact* contact = touch(&a, &b);
    contact->setPosition(HyVector3(0, 0, -1));
    a.setLinearVelocity(3, 1, 7);
    a.setAngularVelocity(0, 2, 0); // adds -2 along x at the contact
    b.setLinearVelocity(0.25, 0, -1);
    contact->setDirection(HyVector3(1, 0, 0));
    EXPECT_TRUE(HyVector3::areEqualTol(contact->getSlidingVelocity(), {0.75, 1, 0}, 1e-15));
    contact->getContactMaterial().slide[0] = 0.5;
    contact->getContactMaterial().slide[1] = 1;
    HyReal primary, secondary;
    contact->getSlidingVelocity(primary, secondary);
    EXPECT_DOUBLE_EQ(primary, 0.25);
    EXPECT_DOUBLE_EQ(secondary, 0);

    contact->setSlidingVelocityThreshold(1.26);
    EXPECT_FALSE(contact->getIsSliding()) << "|slip| is 1.25";
    contact->getContactMaterial().mIntegratedSlipDisplacementActivated = true;
    DynContact* record = contact->getDynContact();
    record->slip_displacement[1] = 0.5;
    HyReal d1, d2;
    EXPECT_FALSE(contact->getIntegratedDisplacement(d1, d2)) << "not matched";
    record->flags |= kDynContactMatched;
    EXPECT_TRUE(contact->getMatched());
    EXPECT_TRUE(contact->getIntegratedDisplacement(d1, d2));
    EXPECT_EQ(d2, 0.5);
    contact->setSlidingVelocityThreshold(1.24);
    EXPECT_TRUE(contact->getIsSliding());
    EXPECT_FALSE(contact->getIntegratedDisplacement(d1, d2));
    EXPECT_EQ(d2, 0);
    contact->setSlidingVelocityThreshold(kNan);
    EXPECT_EQ(contact->getSlidingVelocityThreshold(), 1.24);

    HyVector3 second;
    contact->getSecondaryDirection(second);
    EXPECT_TRUE(second == HyVector3(0, 1, 0));
    contact->setDirection(kUp);
    contact->getSecondaryDirection(second);
    EXPECT_TRUE(second == HyVector3()) << "along the normal";
}

TEST_F(HyDynamicsContactTest, SlidingThresholdFollowsTheParts) {
    HyPart &a = addPart(), &b = addPart();
    a.setAutoSleepLinearSpeedThreshold(0.25);
    b.setAutoSleepLinearSpeedThreshold(0);
    HyDynamicsContact *both = touch(&b, &a), *still = touch(&b);
    both->resetSlidingVelocityThreshold();
    still->setSlidingVelocityThreshold(1);
    still->resetSlidingVelocityThreshold();
    EXPECT_DOUBLE_EQ(both->getSlidingVelocityThreshold(), 0.05);
    EXPECT_EQ(still->getSlidingVelocityThreshold(), 0);
    for (const HyReal ignored : {0.0, -1.0, kNan})
        HyDynamicsContact::setSlidingVelocityThresholdScale(ignored);
    EXPECT_EQ(HyDynamicsContact::getSlidingVelocityThresholdScale(), 0.1);
    HyDynamicsContact::setSlidingVelocityThresholdScale(1);
    both->resetSlidingVelocityThreshold();
    EXPECT_EQ(both->getSlidingVelocityThreshold(), 0.5);
    HyDynamicsContact::setSlidingVelocityThresholdScale(0.1);
}

TEST_F(HyDynamicsContactTest, InputWalksAndDuplicates) {
    HyPart& part = addPart();
    HyDynamicsContact *first = touch(&part), *second = touch(&part);
    first->setDirection(HyVector3(0, 1, 0));
    first->setPosition(HyVector3(1, 2, 3));
    first->getContactMaterial().restitution = 0.5;
    first->setWeakContact(true);
    second->setGroupIndex(4);
    DynContactSetNext(first->getDynContact(), second->getDynContact());
    HyDynamicsContactInput input(first->getDynContact());
    const auto copy = input.addDuplicateContact(input.dynamicsContactBegin());
    ASSERT_NE(copy, input.dynamicsContactEnd());
    std::vector<HyDynamicsContact*> walked;
    for (auto it = input.dynamicsContactBegin(); it != input.dynamicsContactEnd(); ++it)
        walked.push_back(*it);
    EXPECT_EQ(walked, (std::vector<HyDynamicsContact*>{first, second, *copy}));
    EXPECT_EQ((*copy)->getGroupIndex(), 5);
    EXPECT_EQ((*copy)->getSurface(), 1);
    EXPECT_TRUE((*copy)->isEnabled());
    EXPECT_FALSE((*copy)->getWeakContact());
    EXPECT_EQ((*copy)->getContactMaterial().restitution, 0.5);
    HyVector3 v;
    (*copy)->getDirection(v);
    EXPECT_TRUE(v == HyVector3(0, 1, 0));
    (*copy)->getPosition(v);
    EXPECT_TRUE(v == HyVector3(1, 2, 3));
    EXPECT_EQ(input.addDuplicateContact(input.dynamicsContactEnd()), input.dynamicsContactEnd());
    EXPECT_EQ(warnings().size(), 1U);
    HyDynamicsContactInput empty(nullptr);
    EXPECT_EQ(empty.dynamicsContactBegin(), empty.dynamicsContactEnd());
    EXPECT_TRUE(input.isOfClassType(HyDynamicsResponseInput::getStaticClassType()));
    EXPECT_TRUE(first->isOfClassType(HyDynamicsContact::getStaticClassType()));
    DynContactDestroy((*copy)->getDynContact());
}

TEST_F(HyDynamicsContactTest, AxisSubscribersAim) {
    HyPart &a = addPart(), &b = addPart();
    HyDynamicsContact* contact = touch(&b, &a);
    a.setOrientationQuaternion(HyQuaternion(std::sqrt(0.5), 0, 0, std::sqrt(0.5))); // x to y
    auto* across = new HyFrictionDirectionPerpendicularToAxisSub(HyVector3(3, 0, 0));
    a.setFrictionDirectionSubscriber(across);
    a.setFrictionDirectionSubscriber(across); // its own: nothing
    EXPECT_EQ(a.getFrictionDirectionSubscriber(), across);
    EXPECT_TRUE(across->getReferenceDirection() == HyVector3(1, 0, 0));
    HyVector3 d;
    contact->applyFrictionDirectionSubscriber();
    contact->getDirection(d);
    EXPECT_TRUE(HyVector3::areEqualTol(d, {-1, 0, 0}, 1e-15)) << "z x y";
    EXPECT_EQ(contact->getContactMaterial().options, DyncContactMaterial::kOptionDirection);

    b.setFrictionDirectionSubscriber(
        new HyFrictionDirectionParallelToAxisSub(HyVector3(0, 0.6, 0.8)));
    contact->applyFrictionDirectionSubscriber();
    contact->getDirection(d);
    EXPECT_TRUE(HyVector3::areEqualTol(d, {0, 1, 0}, 1e-15)) << "the first part is asked";
    b.getFrictionDirectionSubscriber()->setReferenceDirection(HyVector3(0.09, 0, 1));
    contact->applyFrictionDirectionSubscriber();
    contact->getDirection(d);
    EXPECT_TRUE(HyVector3::areEqualTol(d, {0, 1, 0}, 1e-15)) << "too near the normal";
    b.setFrictionDirectionSubscriber(nullptr);
    contact->applyFrictionDirectionSubscriber();
    contact->getDirection(d);
    EXPECT_NEAR(d[0], -1, 1e-15) << "now the second";
    across->setReferenceDirection(HyVector3(kNan, 0, 0));
    EXPECT_TRUE(across->getReferenceDirection() == HyVector3(1, 0, 0));
}

TEST_F(HyDynamicsContactTest, ConstraintSubscriberAimsByItsAttachment) {
    HyPart &wheel = addPart(), &other = addPart();
    auto* axle = new HyHinge(&wheel, nullptr, HyVector3(), HyVector3(0, 1, 0));
    universe->addConstraint(axle);
    HyDynamicsContact* contact = touch(&wheel);
    HyConstraintFrictionDirectionSub sub(
        axle, 0, 0, FrictionDirectionSubscriber::kFrictionDirectionPerpendicular);
    sub.notify(&wheel, contact);
    HyVector3 d;
    contact->getDirection(d);
    EXPECT_TRUE(HyVector3::areEqualTol(d, {-1, 0, 0}, 1e-15));
    sub.setReferenceDirection(kUp);
    EXPECT_TRUE(HyVector3::areEqualTol(sub.getReferenceDirection(), {0, 1, 0}, 1e-15));
    HyDynamicsContactInput input(contact->getDynContact());
    EXPECT_TRUE(warnings().empty());
    sub.notify(&other, &input);
    HyConstraintFrictionDirectionSub wrong(axle, 7, 0,
                                           FrictionDirectionSubscriber::kFrictionDirectionParallel);
    wrong.notify(&wheel, contact);
    EXPECT_EQ(warnings().front(), "HyConstraintFrictionDirectionSub::notify: invalid argument\n");
    EXPECT_EQ(warnings().size(), 3U) << "one of them of the index";
    universe->destroyConstraint(axle);
    sub.notify(&wheel, contact); // its constraint is gone
    EXPECT_EQ(warnings().size(), 4U);
    EXPECT_TRUE(sub.getReferenceDirection() == HyVector3());
}
