#include "FrameFixture.h"

#include <Dyn/DynConstraint.h>
#include <Hy/Hy.h>

#include <limits>
#include <memory>
#include <numbers>
#include <utility>

using namespace Hy;

namespace {

constexpr HyReal kNan = std::numeric_limits<HyReal>::quiet_NaN();
constexpr HyReal kLargest = std::numeric_limits<HyReal>::max();

class HyConstraintTest : public FrameFixture {
protected:
    void SetUp() override {
        FrameFixture::SetUp();
        frame->setTimeStep(1.0 / 60);
        universe = &frame->getUniverse();
        universe->setGravity(0, 0, 0);
        universe->setAutoSleep(false);
    }
    HyPart& addPart(const HyVector3& position = HyVector3()) {
        auto* part = new HyPart(1);
        part->setPosition(position);
        universe->addPart(part);
        part->preStep();
        return *part;
    }
    template <class Joint, class... Arguments>
    Joint& add(Arguments&&... arguments) {
        auto* joint = new Joint(std::forward<Arguments>(arguments)...);
        universe->addConstraint(joint);
        joint->enable(true);
        return *joint;
    }
    HyHinge& addHinge(HyPart* part1, HyPart* part2) {
        return add<HyHinge>(part1, part2, HyVector3(), HyVector3(0, 0, 1));
    }
    void step(int n = 1) {
        for (int i = 0; i < n; ++i)
            frame->step();
    }

    HyUniverse* universe = nullptr;
};

} // namespace

TEST_F(HyConstraintTest, ActsWhereAllItsPartsAre) {
    HyPart &a = addPart(), &b = addPart();
    HyHinge hinge(&a, &b, HyVector3(), HyVector3(0, 0, 1));
    EXPECT_EQ(hinge.getPartCount(), 2);
    EXPECT_EQ(a.getConstraint(0), &hinge);
    hinge.enable(true);
    EXPECT_TRUE(hinge.isEnabled());
    EXPECT_FALSE(hinge.isEnabledInternal()) << "in no universe";
    universe->addConstraint(&hinge);
    EXPECT_TRUE(hinge.isEnabledInternal());
    HyPart* out = universe->removePart(&b);
    EXPECT_FALSE(hinge.isEnabledInternal());
    HyUniverse other(10, 10, nullptr);
    other.addPart(out);
    EXPECT_FALSE(hinge.isEnabledInternal()) << "its part is elsewhere";
    universe->addPart(out);
    EXPECT_TRUE(hinge.isEnabledInternal());
    hinge.setParts(nullptr, nullptr);
    EXPECT_FALSE(hinge.isEnabledInternal());
    EXPECT_EQ(a.getConstraintCount(), 0);
    EXPECT_TRUE(warnings().empty());
}

TEST_F(HyConstraintTest, DeletedPartLeavesAnEmptySlot) {
    HyPart &a = addPart(HyVector3(1, 0, 0)), &b = addPart();
    HyHinge& hinge = addHinge(&a, &b);
    universe->destroyPart(&a);
    EXPECT_EQ(hinge.getPart(0), nullptr);
    EXPECT_TRUE(hinge.isEnabledInternal());
    step(3);
    universe->destroyPart(&b);
    EXPECT_FALSE(hinge.isEnabledInternal());
    EXPECT_FALSE(DynConstraintIsEnabled(hinge.getDynConstraint()));
    step();
}

TEST_F(HyConstraintTest, OnePartTwiceIsToldAndLeavesOnce) {
    static std::string told;
    const KitMessageHandler before =
        HySetInfoHandler([](int, const char* format, va_list) { told = format; });
    HyPart& part = addPart();
    HyHinge& hinge = addHinge(&part, &part);
    HySetInfoHandler(before);
    EXPECT_NE(told.find("two first parts set to the same value"), std::string::npos);
    EXPECT_EQ(part.getConstraintCount(), 1);
    hinge.setPart(0, nullptr);
    EXPECT_EQ(part.getConstraintCount(), 1) << "still in the other slot";
    hinge.setPart(1, nullptr);
    EXPECT_EQ(part.getConstraintCount(), 0);
}

TEST_F(HyConstraintTest, ControlNeedsForceAndTellsChanges) {
    HyHinge& hinge = addHinge(&addPart(), nullptr);
    EXPECT_TRUE(hinge.setControl(0, HyConstraint::kControlLocked));
    EXPECT_EQ(hinge.getControl(0), HyConstraint::kControlLocked);
    EXPECT_EQ(hinge.getDynConstraint()->limits[0].currentControlState,
              kDynConstraintControlLockActive);
    EXPECT_FALSE(hinge.setControl(0, HyConstraint::kControlLocked));
    hinge.setLockMinimumAndMaximumForce(0, 3, 3);
    EXPECT_TRUE(hinge.setControl(0, HyConstraint::kControlLocked));
    EXPECT_EQ(hinge.getControl(0), HyConstraint::kControlFree);
    hinge.setMotorParameters(0, 1, 0, 0);
    EXPECT_EQ(hinge.getMotorMinimumForce(0), 0);
    EXPECT_FALSE(hinge.setControl(0, HyConstraint::kControlMotorized));
    EXPECT_EQ(hinge.getControl(0), HyConstraint::kControlFree);
    hinge.setMotorMinimumAndMaximumForce(0, 5, -2);
    EXPECT_EQ(hinge.getMotorMinimumForce(0), -2);
    EXPECT_TRUE(hinge.setControl(0, HyConstraint::kControlMotorized));
    EXPECT_TRUE(hinge.isMotorized(0));
}

// Nobody follows a free coordinate; a motor that stops at its target must not take the way that the
// part went meanwhile for its own.
TEST_F(HyConstraintTest, ControlBeginsAtThePresentPosition) {
    HyPart& part = addPart();
    HyHinge& hinge = addHinge(&part, nullptr);
    step();
    part.setOrientationQuaternion(HyQuaternion(std::cos(0.5), 0, 0, std::sin(0.5)));
    hinge.setLockPosition(0, 0.5);
    hinge.setMotorParameters(0, 0.6, kLargest, 0);
    hinge.setMotorStopAtLock(0, true);
    hinge.setControl(0, HyConstraint::kControlMotorized);
    step(10);
    EXPECT_TRUE(hinge.isMotorized(0));
    EXPECT_NEAR(part.getAngularVelocity()[2], 0.6, 1e-6);

    hinge.setControl(0, HyConstraint::kControlFree);
    hinge.setLimitsActive(0, true);
    step();
    const HyReal position = hinge.getCoordinateCurrentPosition(0);
    hinge.resetDynamics();
    EXPECT_NEAR(hinge.getCoordinateCurrentPosition(0), position + 0.6 / 60, 1e-6);
    hinge.lockAll(true);
    part.setOrientationQuaternion(HyQuaternion(1, 0, 0, 0));
    EXPECT_NEAR(hinge.getCoordinateCurrentPosition(0), 0, 1e-9) << "the lock measures no angle";
}

TEST_F(HyConstraintTest, BadCallsAreToldAndChangeNothing) {
    HyHinge& hinge = addHinge(&addPart(), nullptr);
    const std::pair<std::function<void()>, const char*> calls[] = {
        {[&] { hinge.setPart(2, nullptr); }, "range error"},
        {[&] { hinge.setPartAttachmentAxis(0, HyVector3()); }, "axes must be finite"},
        {[&] { hinge.setPartAttachmentPosition(0, kNan, 0, 0); }, "must be finite"},
        {[&] { (void)hinge.setControl(1, HyConstraint::kControlFree); }, "setControl"},
        {[&] { (void)hinge.setControl(0, static_cast<HyConstraint::CoordinateControlEnum>(3)); },
         "setControl"},
        {[&] { hinge.setLimitMaximumForce(0, HyConstraint::kLimitLower, 0); },
         "HyConstraint::setLimitMaximumForce: max force must be > 0\n"},
        {[&] { hinge.setLockParameters(0, 1, 1, -1, 0, 0); }, "not negative"},
        {[&] { hinge.setLockParameters(0, 1, 1, 1, 0, kNan); }, "finite"},
        {[&] { hinge.setMotorLoss(0, -1); }, "not negative"},
        {[&] { hinge.setLimitStiffness(0, HyConstraint::kLimitUpper, -1); }, "not negative"},
        {[&] { hinge.setLimitPositions(0, kNan, 1); }, "finite"},
        {[&] { hinge.setRelaxationParameters(0, 0, 0, 0, true); },
         "A constraint can't be relaxed with zero stiffness.\n"},
        {[&] { hinge.setRelaxationStiffness(7, 1); }, "must have the equation"},
        {[&] { hinge.setRelaxationStiffnessAndDamping(0, -1, 5); }, "not negative"},
        {[&] { hinge.setCoordinateCurrentPosition(0, kNan); }, "finite"},
        {[&] { hinge.setCoordinateReferencePartIndex(0, 1); }, "no choice"},
        {[&] { (void)hinge.getFriction(3, true); }, "0, 1 or 2"},
        {[&] { hinge.getCoordinateFriction(0)->setLoss(-1); }, "not negative"},
        {[&] { hinge.getCoordinateFriction(0)->setPartReferenceIndex(2); }, "0 or 1"},
        {[&] { hinge.setForcePartKinematicResponse(&addPart()); }, "one of the constraint's"},
        {[&] {
             hinge.setLinearAxisReferencePartIndex(
                 static_cast<HyHinge::LinearAxisReferencePartIndex>(-2));
         },
         "0, 1 or -1"},
    };
    for (const auto& [call, text] : calls) {
        call();
        EXPECT_TRUE(warned(text)) << text;
    }
    // The position of a coordinate that is not there reads 0 and writes nothing, silently.
    EXPECT_EQ(hinge.getCoordinateCurrentPosition(3), 0);
    hinge.setCoordinateInternalPosition(-1, 5);
    EXPECT_TRUE(warnings().empty());
    EXPECT_EQ(hinge.getLockPosition(0), 0);
    EXPECT_EQ(hinge.getLockMaximumForce(0), kLargest);
    HyReal stiffness, damping, loss;
    bool enabled;
    hinge.getRelaxationParameters(0, stiffness, damping, loss, enabled);
    EXPECT_EQ(stiffness, kLargest);
    EXPECT_EQ(damping, 0);
    EXPECT_FALSE(enabled);
    EXPECT_EQ(hinge.getCoordinateFriction(0)->getLoss(), 0);
}

// Names, rows and friction entries of each class.
TEST_F(HyConstraintTest, ClassesTellTheirEquationsAndCoordinates) {
    struct Equation {
        const char* name;
        int row, friction;
    };
    struct Case {
        std::unique_ptr<HyConstraint> joint;
        std::vector<Equation> equations;
        std::vector<const char*> coordinates;
    };
    const Equation p0{"Primary axis position", 0, 0}, p1{"Secondary axis position", 1, 1},
        p2{"Third axis position", 2, 2};
    const char *a0 = "Primary axis orientation", *a1 = "Secondary axis orientation",
               *a2 = "Third axis orientation";
    std::vector<Case> cases;
    const auto expect = [&](HyConstraint* joint, std::vector<Equation> equations,
                            std::vector<const char*> coordinates) {
        cases.push_back(
            {std::unique_ptr<HyConstraint>(joint), std::move(equations), std::move(coordinates)});
    };
    expect(new HyHinge, {p0, p1, p2, {a1, 3, 5}, {a2, 4, 4}}, {"Angular"});
    expect(new HyPrismatic, {{p1.name, 0, 1}, {p2.name, 1, 2}, {a0, 2, 3}, {a1, 3, 4}, {a2, 4, 5}},
           {"Linear"});
    expect(new HyBallAndSocket, {p0, p1, p2}, {});
    expect(new HyCylindrical, {{p1.name, 0, 1}, {p2.name, 1, 2}, {a1, 2, 5}, {a2, 3, 4}},
           {"Linear", "Angular"});
    expect(new HyUniversal, {p0, p1, p2, {a2, 3, 5}}, {"Angular0", "Angular1"});
    expect(new HyHomokinetic, {p0, p1, p2, {a0, 3, 3}}, {});
    expect(new HyAngular1Position3, {{a1, 0, 4}, {a2, 1, 5}},
           {"Angular", "Linear0", "Linear1", "Linear2"});
    expect(new HyAngular2Position3, {{a2, 0, 5}},
           {"Angular0", "Angular1", "Linear0", "Linear1", "Linear2"});
    expect(new HyAngular3, {{a0, 0, -1}, {a1, 1, -1}, {a2, 2, -1}}, {});
    expect(new HyLinear1, {{p0.name, 0, -1}}, {});
    expect(new HyLinear2, {{p1.name, 0, -1}, {p2.name, 1, -1}}, {});
    expect(new HyLinear3, {{p1.name, 0, -1}, {p2.name, 1, -1}, {a0, 2, -1}}, {});
    expect(new HyMotorConstraint, {}, {"Coordinate"});
    expect(new HyConeConstraint, {{a0, 0, -1}}, {});
    expect(new HyDistanceJoint, {{"Distance", 0, -1}}, {});
    expect(new HyDoubleHinge, {{p0.name, 1, -1}, {a2, 2, -1}, {a1, 3, -1}},
           {"Distance", "Torsion", "Wheel"});
    for (const Case& c : cases) {
        const HyConstraint& joint = *c.joint;
        SCOPED_TRACE(joint.getClassName());
        EXPECT_EQ(joint.getMaxPartCount(), 2);
        ASSERT_EQ(joint.getConstraintEquationCount(), static_cast<int>(c.equations.size()));
        for (std::size_t i = 0; i < c.equations.size(); ++i) {
            const ConstraintEquation& equation = *joint.getConstraintEquations()[i];
            const Equation& expected = c.equations[i];
            EXPECT_EQ(equation.getName(), expected.name);
            EXPECT_EQ(equation.getIndex(), expected.row);
            const HyConstraintFriction* entry =
                expected.friction < 0
                    ? nullptr
                    : joint.getFriction(expected.friction % 3, expected.friction < 3);
            EXPECT_EQ(joint.getConstraintEquationFriction(expected.row), entry) << expected.name;
        }
        ASSERT_EQ(joint.getCoordinateCount(), static_cast<int>(c.coordinates.size()));
        for (std::size_t i = 0; i < c.coordinates.size(); ++i) {
            const std::string name = c.coordinates[i];
            EXPECT_EQ(joint.getCoordinates()[i]->getName(), name);
            const bool angular = name.starts_with("Angular") || name == "Torsion" ||
                                 name == "Wheel" || name == "Coordinate";
            EXPECT_EQ(joint.isAngular(static_cast<int>(i)), angular) << name;
        }
        EXPECT_EQ(joint.isCoordinateControllable(0),
                  !c.coordinates.empty() && std::string(c.coordinates[0]) != "Distance");
    }
    EXPECT_TRUE(warnings().empty());
}

TEST_F(HyConstraintTest, AttachmentsKeepTheirPlaceInTheMaterial) {
    HyPart &a = addPart(HyVector3(1, 2, 3)), &b = addPart();
    a.setOrientationQuaternion(HyQuaternion(1, 2, 3, 4));
    HyHinge& hinge = add<HyHinge>(&a, &b, HyVector3(0.5, 0, 0), HyVector3(0, 1, 0));
    const HyVector3 rel = hinge.getPartAttachmentPositionRel(0);
    EXPECT_LT(a.getTransform().transform(rel).distance(HyVector3(0.5, 0, 0)), 1e-14);
    // The centre of mass may move, whether the joint acts or not.
    for (const bool acts : {true, false}) {
        hinge.enable(acts);
        a.setCOMOffset(HyVector3(0.3, acts ? 0.1 : -0.2, 0));
        EXPECT_LT(hinge.getPartAttachmentPositionRel(0).distance(rel), 1e-13) << acts;
    }
    EXPECT_LT(hinge.getPartAttachmentPositionCOMRel(0).distance(rel - a.getCOMOffset()), 1e-13);
    const HyTransform moved(HyQuaternion(4, 1, 0, 0), HyVector3(5, 5, 5));
    a.setTransform(moved);
    EXPECT_LT(hinge.getPartAttachmentPosition(0).distance(moved.transform(rel)), 1e-13);
}

TEST_F(HyConstraintTest, AttachmentObjectsCarryAFrameOver) {
    HyPart &a = addPart(HyVector3(1, 0, 0)), &b = addPart();
    a.setCOMOffset(HyVector3(0, 0.5, 0));
    HyHinge& hinge = addHinge(&a, &b);
    HyConstraintAttachment empty, attachment, read;
    EXPECT_TRUE(empty.isEmpty());
    HyTransform tm(HyVector3(3, 3, 3));
    empty.getTransform(tm);
    EXPECT_TRUE(tm.isIdentity());
    hinge.setAttachment(0, empty);
    EXPECT_TRUE(warned("must not be empty"));

    const HyTransform world(HyQuaternion(1, 0.5, 0, 0.2), HyVector3(2, 1, 0));
    for (const auto type :
         {HyConstraintAttachment::kAttachmentRelativePart,
          HyConstraintAttachment::kAttachmentRelativePartCOM,
          HyConstraintAttachment::kAttachmentAbsolute, HyConstraintAttachment::kAttachmentSlave}) {
        attachment.mPart = &a;
        attachment.mType = type;
        attachment.setTransform(world);
        attachment.getTransform(tm);
        EXPECT_LT(tm.t().distance(world.t()), 1e-14) << type;
        hinge.setAttachment(0, attachment);
        EXPECT_LT(hinge.getPartAttachmentPosition(0).distance(world.t()), 1e-14) << type;
        EXPECT_LT(hinge.getPartAttachmentAxis(0).distance(world.axis(0)), 1e-14) << type;
        hinge.getAttachment(0, read);
        EXPECT_EQ(read.mPosition, attachment.mPosition) << type;
        if (type == HyConstraintAttachment::kAttachmentRelativePartCOM) {
            EXPECT_LT(read.mPosition.distance(HyVector3(1, 0.5, 0)), 1e-14);
        }
    }
    hinge.setPartAttachmentPosition(0, HyVector3());
    hinge.updateAttachmentFromPart(0);
    hinge.getAttachment(0, read);
    EXPECT_LT(read.mPosition.distance(HyVector3(-1, 0, 0)), 1e-14);
    hinge.resetAttachment(0);
    hinge.getAttachment(0, read);
    EXPECT_TRUE(read.isEmpty());
}

TEST_F(HyConstraintTest, ConstructorsPlaceTheirAttachments) {
    HyPart &a = addPart(HyVector3(0, 0, 1)), &b = addPart(HyVector3(2, 0, 0));
    a.setOrientationQuaternion(HyQuaternion(1, 1, 0, 0));
    const HyVector3 p(0.1, 0.2, 0.3), x(0, 3, 0), y(0, 0, -2);
    const HyVector3 unitX(0, 1, 0), unitY(0, 0, -1);
    HyUniversal universal(&a, &b, p, x, y);
    HyHomokinetic homokinetic(&a, &b, p, x);
    HyAngular2Position3 angular(&a, &b, p, x, y);
    HyDoubleHinge arm(&a, &b, p, p + x, x, y);
    for (const HyConstraint* joint :
         std::initializer_list<const HyConstraint*>{&universal, &homokinetic, &angular, &arm})
        for (int i = 0; i < 2; ++i) {
            HyVector3 first, second;
            joint->getPartAttachmentAxes(i, first, second);
            EXPECT_LT(first.distance(unitX), 1e-14) << joint->getClassName();
            if (joint != &homokinetic) {
                EXPECT_LT(second.distance(unitY), 1e-14) << joint->getClassName();
            }
            const HyVector3 place = joint == &arm && i == 1 ? p + x : p;
            EXPECT_LT(joint->getPartAttachmentPosition(i).distance(place), 1e-14);
        }
    HyCylindrical cylindrical(&a, &b, x);
    HyDistanceJoint rope(&a, &b, 4);
    for (const HyConstraint* joint :
         std::initializer_list<const HyConstraint*>{&cylindrical, &rope})
        EXPECT_LT(joint->getPartAttachmentPosition(1).distance(b.getPosition()), 1e-14);
    HyBallAndSocket bare(&a, &b, p);
    EXPECT_EQ(bare.getPartAttachmentAxisRel(1), HyVector3(1, 0, 0)) << "as it was";
    HyBallAndSocket turned(&a, &b, p, &x);
    EXPECT_LT(turned.getPartAttachmentAxis(0).distance(unitX), 1e-14);
    HyConeConstraint cone(&a, &b, x, y);
    EXPECT_LT(cone.getPartAttachmentAxisRel(0).distance(unitX), 1e-14) << "in the part's frame";
    HyVector3 first, second;
    cone.getPartAttachmentAxesRel(1, first, second);
    EXPECT_LT(first.distance(unitY), 1e-14);
    HyLinear3 line(&a, &b, p, x);
    EXPECT_LT(line.getPartAttachmentAxisRel(1).distance(HyVector3(1, 0, 0)), 1e-14);
}

TEST_F(HyConstraintTest, AngularFrictionOfABallIsThreeAsOne) {
    HyBallAndSocket joint;
    HyBallAndSocket::AngularFriction& friction = joint.getAngularFriction();
    friction.setMaxForce(2);
    friction.setEnabled(true);
    friction.setProportional(true);
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(joint.getFriction(i, false)->getMaxForce(), 2);
        EXPECT_TRUE(joint.getFriction(i, false)->getEnabled());
        EXPECT_FALSE(joint.getFriction(i, true)->getEnabled());
    }
    EXPECT_TRUE(joint.getDynConstraint()->bclH.hasProportionalFriction);
    joint.getFriction(1, false)->setMaxForce(7);
    joint.getFriction(2, false)->setMaxForce(3);
    EXPECT_EQ(friction.getMaxForce(), 7);
    friction.setCoefficient(-1);
    EXPECT_TRUE(warned("not negative"));
    EXPECT_EQ(friction.getCoefficient(), 0);
}

TEST_F(HyConstraintTest, StateComesBackWhole) {
    HyPart &a = addPart(), &b = addPart(HyVector3(1, 0, 0));
    HyPrismatic& joint = add<HyPrismatic>(&a, &b, HyVector3(), HyVector3(1, 0, 0));
    joint.setLimitPositions(0, -1, 1);
    joint.setLimitVelocity(0, HyConstraint::kLimitUpper, 0.5);
    joint.setLimitsActive(0, true);
    joint.setLockParameters(0, 0.25, 100, 50, 5, 0.125);
    joint.setControl(0, HyConstraint::kControlLocked);
    joint.setCoordinateOffset(0, 0.0625);
    step(3);
    const std::unique_ptr<HyConstraintState> state(joint.createState());
    const HyReal lock = joint.getLockPosition(0);
    const HyReal internal = joint.getCoordinateInternalPosition(0);
    const HyVector3 place = joint.getPartAttachmentPositionRel(0);

    joint.setControl(0, HyConstraint::kControlFree);
    joint.setLimitsActive(0, false);
    joint.setLimitPositions(0, 3, 4);
    joint.setLockVelocity(0, 0);
    joint.setCoordinateOffset(0, 9);
    joint.setPart(1, nullptr);
    joint.setPartAttachmentPosition(0, HyVector3(7, 7, 7));
    joint.enable(false);
    step(3);
    state->restore();
    EXPECT_TRUE(joint.isLocked(0));
    EXPECT_TRUE(joint.getLimitsActive(0));
    EXPECT_EQ(joint.getLimitPosition(0, HyConstraint::kLimitLower), -1);
    EXPECT_NEAR(joint.getLimitPosition(0, HyConstraint::kLimitUpper), 1 + 3 * 0.5 / 60, 1e-14);
    EXPECT_EQ(joint.getLimitVelocity(0, HyConstraint::kLimitUpper), 0.5);
    EXPECT_EQ(joint.getLockPosition(0), lock);
    EXPECT_EQ(joint.getLockVelocity(0), 0.125);
    EXPECT_EQ(joint.getCoordinateOffset(0), 0.0625);
    EXPECT_EQ(joint.getCoordinateInternalPosition(0), internal);
    EXPECT_EQ(joint.getPart(1), &b);
    EXPECT_EQ(joint.getPartAttachmentPositionRel(0), place);
    EXPECT_TRUE(joint.isEnabledInternal());

    HyPrismatic& other = add<HyPrismatic>(&a, &b, HyVector3(), HyVector3(0, 1, 0));
    EXPECT_FALSE(other.restoreState(state.get()));
    EXPECT_FALSE(other.restoreState(nullptr));
    EXPECT_EQ(other.getControl(0), HyConstraint::kControlFree);
    state->mAttachments[0].mPositionRel = HyVector3(0, 2, 0); // edited by the application
    state->restore();
    EXPECT_EQ(joint.getPartAttachmentPositionRel(0), HyVector3(0, 2, 0));
    universe->destroyPart(&b);
    state->restore();
    EXPECT_EQ(joint.getPart(1), nullptr);
    universe->destroyConstraint(&joint);
    state->restore(); // nothing is left to restore
}

TEST_F(HyConstraintTest, RopeStateHasItsLength) {
    HyDistanceJoint rope(nullptr, &addPart(), 2);
    const std::unique_ptr<HyConstraintState> state(rope.createState());
    rope.setDistance(5);
    EXPECT_TRUE(rope.restoreState(state.get()));
    EXPECT_EQ(rope.getDistance(), 2);
}

// What a step that is given up cannot compute back: turns, and a lock target that came to rest.
TEST_F(HyConstraintTest, AbortedStepKeepsTurnsAndLockTargets) {
    HyPart& wheel = addPart();
    HyHinge& hinge = addHinge(&wheel, nullptr);
    hinge.setForceCalculateCoordinatePosition(0, true);
    wheel.setAngularVelocity(0, 0, 10);
    step(120);
    const HyReal turned = hinge.getCoordinateInternalPosition(0);
    EXPECT_GT(turned, 18);
    hinge.setLimitPositions(0, 0, turned + 0.01);
    hinge.setLimitsActive(0, true);
    hinge.setLockParameters(0, turned, 1, 1, 1, 5);
    hinge.setControl(0, HyConstraint::kControlLocked);

    universe->preUpdate();
    universe->advanceKinematics(1.0 / 60);
    EXPECT_EQ(hinge.getLockVelocity(0), 0) << "stopped at the limit";
    universe->solveDynamics(1.0 / 60);
    universe->advanceKinematics(-1.0 / 60);
    universe->revertDynamics();
    EXPECT_EQ(hinge.getLockPosition(0), turned);
    EXPECT_EQ(hinge.getLockVelocity(0), 5);
    EXPECT_NEAR(hinge.getCoordinateInternalPosition(0), turned, 0.2) << "the turns are still there";
    universe->postUpdate();
    // A constraint that leaves between the two is passed over.
    universe->advanceKinematics(1.0 / 60);
    universe->destroyConstraint(&hinge);
    universe->advanceKinematics(-1.0 / 60);
}

// In the middle of a solve nothing may leave: the object goes, its record stays until the world does.
TEST_F(HyConstraintTest, DestroyedInASolveLeavesAHarmlessRecord) {
    struct Suicidal : HyGenericConstraint {
        Suicidal() : HyGenericConstraint(2, 4) {}
        void update(ConstraintInternal* rows) override {
            rows->addSphericalConstraint(-1);
            delete std::exchange(victim, nullptr);
        }
        HyConstraint* victim = nullptr;
    };
    HyPart& part = addPart();
    HyHinge& hinge = addHinge(&part, nullptr);
    Suicidal& joint = add<Suicidal>();
    joint.setPart(0, &part);
    joint.victim = &hinge;
    step();
    EXPECT_TRUE(warned("must not be called during a step"));
    EXPECT_EQ(part.getConstraintCount(), 1);
    EXPECT_EQ(universe->getConstraints().size(), 1U);
    step(3);
    universe->destroyPart(&part);
    step();
}

TEST_F(HyConstraintTest, WakesWhatItActsOn) {
    universe->setAutoSleep(true);
    HyPart& part = addPart();
    HyHinge& hinge = addHinge(&part, nullptr);
    const auto sleep = [&] { part.wakeDynamics(false); };
    const std::pair<const char*, std::function<void()>> calls[] = {
        {"control", [&] { hinge.setControl(0, HyConstraint::kControlMotorized); }},
        {"motor", [&] { hinge.setMotorDesiredVelocity(0, 2); }},
        {"limits", [&] { hinge.setLimitsActive(0, true); }},
        {"stop", [&] { hinge.setLimitPosition(0, HyConstraint::kLimitLower, -2); }},
        {"relaxation", [&] { hinge.setRelaxationParameters(0, 10, 1, 0, true); }},
        {"attachment", [&] { hinge.setPartAttachmentPosition(1, 0, 0, 0.1); }},
        {"friction", [&] { hinge.getCoordinateFriction(0)->setEnabled(true); }},
        {"lock of all", [&] { hinge.lockAll(true); }},
        {"disabling", [&] { hinge.enable(false); }},
        {"enabling", [&] { hinge.enable(true); }},
        {"removal", [&] { universe->removeConstraint(&hinge); }},
    };
    for (const auto& [name, call] : calls) {
        sleep();
        call();
        EXPECT_TRUE(part.isDynamicsAwake()) << name;
    }
    sleep();
    hinge.setLockPosition(0, 1); // not in use
    EXPECT_FALSE(part.isDynamicsAwake());
    delete &hinge;
}

TEST_F(HyConstraintTest, VisitSeesWhatActsAndSurvivesChanges) {
    HyPart& part = addPart();
    std::vector<HyConstraint*> hinges;
    for (int i = 0; i < 4; ++i)
        hinges.push_back(&addHinge(&part, nullptr));
    hinges[2]->enable(false);
    std::vector<HyConstraint*> seen;
    for (auto it = universe->enabledConstraintsBegin(); it != universe->enabledConstraintsEnd();
         ++it) {
        seen.push_back(*it);
        if (seen.size() == 1)
            universe->destroyConstraint(*it);
    }
    EXPECT_EQ(seen, (std::vector<HyConstraint*>{hinges[3], hinges[1], hinges[0]}));
    auto it = universe->enabledConstraintsBegin();
    hinges[0]->enable(false);
    hinges[1]->enable(false);
    ++it;
    EXPECT_TRUE(
        warned("HyUniverse::EnabledConstraintsIterator: constraint should not be disabled"));
    EXPECT_EQ(it, universe->enabledConstraintsEnd());
}

TEST_F(HyConstraintTest, ControllersTurnEventsIntoControl) {
    HyHinge& hinge = addHinge(&addPart(), nullptr);
    HyLockController lock;
    lock.init(&hinge, 0.1, -1, 1, 0);
    hinge.setLockPosition(0, 0.5);
    lock.notifyEvent(HyConstraintController::kEventIncrease, 0);
    EXPECT_DOUBLE_EQ(hinge.getLockPosition(0), 0.6) << "goes on from where the lock is";
    EXPECT_TRUE(hinge.isLocked(0));
    lock.notifyEvent(HyConstraintController::kEventSet, 5);
    EXPECT_EQ(hinge.getLockPosition(0), 1);
    lock.notifyEvent(9, 5);
    EXPECT_EQ(lock.getCurrentValue(), 1);
    lock.notifyEvent(HyConstraintController::kEventSet, kNan);
    EXPECT_TRUE(warned("must be finite"));
    lock.notifyEvent(HyConstraintController::kEventZero, 0);
    EXPECT_EQ(hinge.getLockPosition(0), 0);

    HyMotorController motor;
    motor.init(&hinge, 0.5, -2, 2, 0);
    motor.setMaxForce(30);
    motor.setAutoLock(true);
    hinge.setControl(0, HyConstraint::kControlFree);
    motor.notifyEvent(HyConstraintController::kEventIncrease, 0);
    motor.notifyEvent(HyConstraintController::kEventIncrease, 0);
    EXPECT_EQ(hinge.getMotorDesiredVelocity(0), 1);
    EXPECT_EQ(hinge.getMotorMaximumForce(0), 30);
    EXPECT_TRUE(hinge.isMotorized(0));
    motor.notifyEvent(HyConstraintController::kEventZero, 0);
    EXPECT_TRUE(hinge.isLocked(0));

    HyMotorForceController force;
    force.init(&hinge, 1, -3, 4, 0);
    force.notifyEvent(HyConstraintController::kEventSet, 100);
    EXPECT_EQ(hinge.getMotorDesiredVelocity(0), 4);
    EXPECT_EQ(hinge.getMotorMinimumForce(0), 0);
    EXPECT_EQ(hinge.getMotorMaximumForce(0), 100);
    force.notifyEvent(HyConstraintController::kEventSet, -20);
    EXPECT_EQ(hinge.getMotorDesiredVelocity(0), -3);
    EXPECT_EQ(hinge.getMotorMinimumForce(0), -20);
    EXPECT_EQ(hinge.getMotorMaximumForce(0), 0);
    force.notifyEvent(HyConstraintController::kEventZero, 0);
    EXPECT_EQ(hinge.getControl(0), HyConstraint::kControlFree);

    HyLockVelocityController velocity;
    velocity.init(&hinge, 0.25, -1, 1, 0);
    velocity.notifyEvent(HyConstraintController::kEventIncrease, 0);
    EXPECT_EQ(hinge.getLockVelocity(0), 0.25);
    EXPECT_TRUE(hinge.isLocked(0));
    HyLimitMotorController stop;
    stop.init(&hinge, 0.5, -1, 1, 0);
    stop.setLimit(HyConstraint::kLimitUpper);
    stop.notifyEvent(HyConstraintController::kEventDecrease, 0);
    EXPECT_EQ(hinge.getLimitVelocity(0, HyConstraint::kLimitUpper), -0.5);
    universe->destroyConstraint(&hinge);
    stop.notifyEvent(HyConstraintController::kEventDecrease, 0);
    EXPECT_EQ(stop.getConstraint(), nullptr);
}

TEST_F(HyConstraintTest, GenericRowsHaveStrengthAngleAndRoom) {
    struct Probe : HyGenericConstraint {
        Probe() : HyGenericConstraint(2, 4) {}
        void update(ConstraintInternal* rows) override {
            EXPECT_EQ(rows->addSphericalConstraint(-1), 3);
            EXPECT_EQ(rows->addAxialRow(HyVector3(0, 0, 1)), 1);
            EXPECT_EQ(rows->addSphericalLock(), 0) << "no room";
            const ConstraintInternalFactors& f = rows->mFactors;
            f.setStrength(0, 50, kLargest);
            EXPECT_EQ(f.xepsilon[0], 0);
            EXPECT_EQ(f.xgamma[0], 0);
            const HyReal h = 1.0 / 60;
            f.setStrength(1, 50, 5);
            EXPECT_NEAR(f.xgamma[1], h * 50 / (h * 50 + 5), 1e-14);
            EXPECT_NEAR(f.xepsilon[1], 1 / (h * (5 + h * 50)), 1e-10);
            f.setStrength(2, 0.5);
            EXPECT_NEAR(f.xepsilon[2], 30, 1e-12);
            f.setStrength(16, 1);
            rows->mRowAdded = 0; // what has an index out of range adds nothing
            EXPECT_EQ(rows->addSphericalConstraint(2) + rows->addDot1Constraint(3, 0) +
                          rows->addDot2Constraint(HyVector3(1, 0, 0), -1) +
                          rows->addLinePointDistanceConstraint(0, 2, 0, 1),
                      0);
            EXPECT_EQ(rows->getLinearPosition(2, 0) + rows->getAngularPosition(0, 3, 0), 0);
            rows->mRowAdded = 4;
            angle = rows->getAngularPosition(0, 0, 10);
            distance = rows->getLinearPosition(0, 1);
            ++updates;
        }
        void updateKinematic(HyReal h) override { time += h; }
        void resetKinematic() override { time = 0; }
        HyReal angle = 0, distance = 0, time = 0;
        int updates = 0;
    };
    HyPart& part = addPart();
    const HyReal turn = -std::numbers::pi / 2;
    part.setOrientationQuaternion(HyQuaternion(std::cos(turn / 2), std::sin(turn / 2), 0, 0));
    Probe& probe = add<Probe>();
    probe.setPart(0, &part);
    probe.setPartAttachmentAxesRel(0, HyVector3(1, 0, 0), HyVector3(0, 1, 0));
    step();
    EXPECT_EQ(probe.updates, 1);
    EXPECT_NEAR(probe.angle, turn + 4 * std::numbers::pi, 1e-12);
    EXPECT_NEAR(probe.time, 1.0 / 60, 1e-15);
    std::string told;
    for (const std::string& warning : warnings())
        told += warning;
    for (const char* text :
         {"setStrength: invalid row index\n",
          "addSphericalConstraint: the reference must be -1 to 1", "addDot1Constraint: the axis",
          "addDot2Constraint: the part", "addLinePointDistanceConstraint: the part",
          "getLinearPosition", "getAngularPosition"})
        EXPECT_NE(told.find(text), std::string::npos) << text;
    EXPECT_EQ(probe.addConstraintEquationDefinition("Mine"), 0);
    EXPECT_EQ(probe.addConstraintEquationDefinition(nullptr), -1);
    universe->destroyConstraint(&probe);
    step();
}

TEST_F(HyConstraintTest, VerifyDynamicsTellsWhatIsImplausible) {
    const auto verify = [&](int level) {
        testing::internal::CaptureStderr();
        universe->verifyDynamics("test", level);
        return testing::internal::GetCapturedStderr();
    };
    const std::string begin = "Verifying parts and constraints dynamics:\n";
    HyPart& part = addPart();
    HyHinge& hinge = addHinge(&part, nullptr);
    hinge.setName("hinge");
    EXPECT_EQ(verify(1), begin + "No problem found.\n\n\n");
    EXPECT_EQ(verify(2),
              begin + "test: constraint hinge has no limit on coord 0 \nNo problem found.\n\n\n");
    part.setMass(2e5);
    hinge.setLimitPositions(0, 1, 1);
    hinge.setLimitsActive(0, true);
    hinge.setLockMinimumAndMaximumForce(0, -2, -1);
    hinge.setControl(0, HyConstraint::kControlLocked);
    EXPECT_EQ(verify(1), begin + "test: entity " + part.getName() +
                             " has extreme mass\n"
                             "test: constraint hinge has locked coord 0 with bad max force\n"
                             "test: constraint hinge coord 0 has low limit >= upper limit\n\n\n\n");
    part.setMass(1);
    hinge.enable(false);
    EXPECT_EQ(verify(2), begin + "test: constraint hinge is disabled\nNo problem found.\n\n\n");
}
