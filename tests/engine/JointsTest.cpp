#include "support/HeapCounter.h"
#include "JointScene.h"

#include <functional>

using namespace Hy;

namespace {

constexpr unsigned kSeed = 41;

class JointsTest : public JointScene {
protected:
    HyVector3 randomVector(HyReal size) {
        std::normal_distribution<HyReal> gauss(0, size);
        const HyReal x = gauss(random), y = gauss(random);
        return {x, y, gauss(random)};
    }
    /// Two parts anywhere, each at its own angle.
    void addPair() {
        for (HyPart*& part : pair) {
            part = &addBall(1 + std::abs(randomVector(1)[0]), 0.4, randomVector(0.5));
            part->setCOMOffset(randomVector(0.1));
            part->setOrientationQuaternion(HyQuaternion(1, 0.3, randomVector(0.3)[0], 0.1));
        }
    }
    void shake(int n) {
        for (int i = 0; i < n; ++i) {
            for (HyPart* part : pair) {
                part->addForce(randomVector(20));
                part->addTorque(randomVector(5));
            }
            frame->step();
        }
    }
    /// What a joint holds at zero, from its attachments.
    [[nodiscard]] static HyReal distanceAlong(const HyConstraint& joint, int part, int axis) {
        return (joint.getPartAttachmentPosition(0) - joint.getPartAttachmentPosition(1))
            .dot(axisOf(joint, part, axis));
    }
    [[nodiscard]] static HyReal misalignment(const HyConstraint& joint, int axis) {
        return axisOf(joint, 0, axis).cross(axisOf(joint, 1, axis)).norm();
    }

    std::mt19937 random{kSeed};
    HyPart* pair[2] = {};
};

} // namespace

// Under random loads, for each joint: the freedoms that it takes away stay away.
TEST_F(JointsTest, EquationsHold) {
    struct Case {
        const char* name;
        std::function<HyConstraint&(HyPart*, HyPart*, const HyVector3&, const HyVector3&,
                                    const HyVector3&)>
            make;
        std::function<HyReal(const HyConstraint&)> error;
    };
    const auto sum = [](HyReal a, HyReal b, HyReal c = 0, HyReal d = 0) {
        return std::abs(a) + std::abs(b) + std::abs(c) + std::abs(d);
    };
    using V = const HyVector3&;
    const Case cases[] = {
        {"hinge",
         [&](HyPart* a, HyPart* b, V p, V x, V) -> HyConstraint& {
             return add<HyHinge>(a, b, p, x);
         },
         [&](const HyConstraint& j) { return sum(gapOf(j), misalignment(j, 0)); }},
        {"prismatic",
         [&](HyPart* a, HyPart* b, V p, V x, V) -> HyConstraint& {
             return add<HyPrismatic>(a, b, p, x);
         },
         [&](const HyConstraint& j) {
             return sum(distanceAlong(j, 0, 1), distanceAlong(j, 0, 2), misalignment(j, 0),
                        misalignment(j, 1));
         }},
        {"ball and socket",
         [&](HyPart* a, HyPart* b, V p, V, V) -> HyConstraint& {
             return add<HyBallAndSocket>(a, b, p);
         },
         [](const HyConstraint& j) { return gapOf(j); }},
        {"cylindrical",
         [&](HyPart* a, HyPart* b, V p, V x, V) -> HyConstraint& {
             return add<HyCylindrical>(a, b, p, x);
         },
         [&](const HyConstraint& j) {
             return sum(distanceAlong(j, 0, 1), distanceAlong(j, 0, 2), misalignment(j, 0));
         }},
        {"universal",
         [&](HyPart* a, HyPart* b, V p, V x, V y) -> HyConstraint& {
             return add<HyUniversal>(a, b, p, x, y);
         },
         [&](const HyConstraint& j) {
             return sum(gapOf(j), axisOf(j, 0, 0).dot(axisOf(j, 1, 1)));
         }},
        {"one angle",
         [&](HyPart* a, HyPart* b, V p, V x, V y) -> HyConstraint& {
             return add<HyAngular1Position3>(a, b, p, x, y);
         },
         [](const HyConstraint& j) { return misalignment(j, 0); }},
        {"two angles",
         [&](HyPart* a, HyPart* b, V p, V x, V y) -> HyConstraint& {
             return add<HyAngular2Position3>(a, b, p, x, y);
         },
         [](const HyConstraint& j) { return std::abs(axisOf(j, 0, 0).dot(axisOf(j, 1, 1))); }},
        {"three angles",
         [&](HyPart* a, HyPart* b, V, V x, V) -> HyConstraint& { return add<HyAngular3>(a, b, x); },
         [&](const HyConstraint& j) { return sum(misalignment(j, 0), misalignment(j, 1)); }},
        {"three angles, one let go",
         [&](HyPart* a, HyPart* b, V, V x, V) -> HyConstraint& {
             auto& joint = add<HyAngular3>(a, b, x);
             joint.setRotationEnable(true);
             return joint;
         },
         [](const HyConstraint& j) { return misalignment(j, 0); }},
        {"point in a plane",
         [&](HyPart* a, HyPart* b, V p, V x, V) -> HyConstraint& {
             return add<HyLinear1>(a, b, p, x);
         },
         [](const HyConstraint& j) { return std::abs(distanceAlong(j, 1, 0)); }},
        {"point on a line",
         [&](HyPart* a, HyPart* b, V p, V x, V) -> HyConstraint& {
             return add<HyLinear2>(a, b, p, x);
         },
         [&](const HyConstraint& j) {
             return sum(distanceAlong(j, 1, 1), distanceAlong(j, 1, 2));
         }},
        {"point and angle on a line",
         [&](HyPart* a, HyPart* b, V p, V x, V y) -> HyConstraint& {
             auto& joint = add<HyLinear3>(a, b, p, x);
             joint.setAxes(x, y);
             return joint;
         },
         [&](const HyConstraint& j) {
             return sum(distanceAlong(j, 1, 1), distanceAlong(j, 1, 2),
                        axisOf(j, 0, 1).dot(axisOf(j, 1, 0)));
         }},
        {"locked whole",
         [&](HyPart* a, HyPart* b, V p, V x, V) -> HyConstraint& {
             auto& joint = add<HyHinge>(a, b, p, x);
             EXPECT_TRUE(joint.lockAll(true));
             return joint;
         },
         [&](const HyConstraint& j) {
             return sum(gapOf(j), misalignment(j, 0), misalignment(j, 1));
         }},
    };
    frame->setTimeStep(1.0 / 600); // positions drift with the square of step and speed
    for (const Case& c : cases) {
        addPair();
        const HyVector3 x = randomVector(1), y = x.getOrthogonal();
        const HyConstraint& joint = c.make(pair[0], pair[1], randomVector(0.5), x, y);
        EXPECT_LT(c.error(joint), 1e-13) << c.name;
        HyReal worst = 0;
        for (int i = 0; i < 60; ++i) {
            shake(5);
            worst = std::max(worst, c.error(joint));
        }
        EXPECT_LT(worst, 2e-3) << c.name << ", seed " << kSeed;
        EXPECT_GT(pair[0]->getKineticEnergy() + pair[1]->getKineticEnergy(), 1) << c.name;
        universe->destroyConstraints();
        universe->destroyParts();
    }
}

// Fixed freedoms bear no momentum: the pair moves as the forces on both of them say.
TEST_F(JointsTest, JointForcesAreEqualAndOpposite) {
    universe->setGravity(0, 0, 0);
    addPair();
    HyHinge& hinge = add<HyHinge>(pair[0], pair[1], randomVector(0.3), randomVector(1));
    hinge.setMotorParameters(0, 2, 3, 0);
    hinge.setControl(0, HyConstraint::kControlMotorized);
    HyVector3 momentum;
    for (int i = 0; i < 50; ++i) {
        const HyVector3 push = randomVector(20);
        pair[0]->addForce(push);
        momentum += push * kStep;
        frame->step();
        const HyVector3 sum = hinge.getPartForce(0) + hinge.getPartForce(1);
        EXPECT_LT(sum.norm(), 1e-10 * (1 + hinge.getPartForce(0).norm()));
    }
    const HyVector3 carried = pair[0]->getLinearVelocity() * pair[0]->getMass() +
                              pair[1]->getLinearVelocity() * pair[1]->getMass();
    EXPECT_LT(carried.distance(momentum), 1e-9);
}

// Twenty links swing from level for ten seconds, through the crack of the whip. The rows hold the
// points at J v = -gamma gap / h - h epsilon lambda, along the tangents of the arcs on which they move:
// per step a gap keeps its share 1 - gamma, gives way by gamma c |lambda|, and opens by what the arcs
// turn away from their tangents, at most (w h)^2 r / 2 each.
TEST_F(JointsTest, ChainOpensByTheArcsOfItsLinksAlone) {
    constexpr int kLinks = 20;
    constexpr HyReal kLink = 0.2, kArm = kLink / 2, kH = 1.0 / 240, kRounding = 1e-9;
    frame->setTimeStep(kH);
    const HySolverParameters& solver = *universe->getSolverParameters(0);
    const HyReal c = solver.getConstraintLinearCompliance();
    const HyReal gamma = 1 / (1 + solver.getConstraintLinearDamping() * c / kH);
    std::vector<HyBallAndSocket*> joints;
    std::vector<HyPart*> links;
    for (int i = 0; i < kLinks; ++i) {
        HyPart* last = links.empty() ? nullptr : links.back();
        links.push_back(&addBall(0.5, 0.002, HyVector3((i + 0.5) * kLink, 0, 0)));
        joints.push_back(&add<HyBallAndSocket>(last, links.back(), HyVector3(i * kLink, 0, 0)));
    }
    const auto arc = [](const HyPart* link) {
        return link ? 0.5 * link->getAngularVelocity().squareNorm() * kH * kH * kArm : 0;
    };
    HyReal fastest = 0;
    std::vector<HyReal> gaps(kLinks, 0);
    for (int i = 0; i < 2400; ++i) {
        frame->step();
        for (std::size_t k = 0; k < joints.size(); ++k) {
            const HyReal force = joints[k]->getPartForce(1).norm(), gap = gapOf(*joints[k]);
            ASSERT_LE(gap, (1 - gamma) * gaps[k] + gamma * c * force + arc(joints[k]->getPart(0)) +
                               arc(joints[k]->getPart(1)) + kRounding)
                << "joint " << k << ", step " << i;
            gaps[k] = gap;
        }
        fastest = std::max(fastest, links.back()->getAngularVelocity().norm());
    }
    EXPECT_GT(fastest, 5 * std::sqrt(3 * kGravity / (kLinks * kLink)))
        << "a rigid rod's is a fifth";
}

TEST_F(JointsTest, RopePullsAndNeverPushes) {
    HyPart& load = addBall(4, 0.1, HyVector3(0, 0, -1));
    HyDistanceJoint& rope = add<HyDistanceJoint>(nullptr, &load, 2);
    step(10);
    EXPECT_EQ(rope.getConstraintEquationForce(0), 0) << "slack";
    EXPECT_NEAR(load.getLinearVelocity()[2], -kGravity * 10 * kStep, 1e-9);
    stepFor(5);
    EXPECT_NEAR(load.getPosition()[2], -2, 1e-4);
    EXPECT_NEAR(-rope.getConstraintEquationForce(0), 4 * kGravity, 1e-4);
    rope.setDistance(-1);
    EXPECT_EQ(rope.getDistance(), 2);
    load.setPosition(0, 0, -1.5);
    step(1);
    EXPECT_EQ(rope.getConstraintEquationForce(0), 0);
}

// A stick on a ball joint may lean by the cone's angle and stays there, against a moment of m g r sin.
TEST_F(JointsTest, ConeHoldsALeaningStick) {
    constexpr HyReal kMass = 2, kHalfAngle = 0.5;
    HyPart& stick = addBall(kMass, 0.05, HyVector3(0, 0, 1));
    stick.setLinearVelocity(0.1, 0, 0);
    add<HyBallAndSocket>(nullptr, &stick, HyVector3());
    HyConeConstraint& cone =
        add<HyConeConstraint>(nullptr, &stick, HyVector3(0, 0, 1), HyVector3(0, 0, 1));
    cone.setHalfAngle(kHalfAngle);
    cone.setRelaxationParameters(0, HyConstraint::sDefaultStiffness, 0, 0, false);
    stepFor(20);
    const HyReal lean = std::acos(axisOf(cone, 1, 0)[2]);
    EXPECT_NEAR(lean, kHalfAngle, 1e-3);
    // The row is of the angle's cosine: force times the sine of the angle is the moment.
    EXPECT_NEAR(cone.getPartTorque(1).norm(), kMass * kGravity * std::sin(lean), 0.05);
}

// The link of a swing arm is the lock of coordinate 0: it stretches by its load.
TEST_F(JointsTest, DoubleHingeCarriesALoadOnItsLink) {
    constexpr HyReal kMass = 3, kStiffness = 4e3;
    HyPart& load = addBall(kMass, 0.1, HyVector3(0, 0, -1));
    HyDoubleHinge& arm = add<HyDoubleHinge>(nullptr, &load, HyVector3(), HyVector3(0, 0, -1),
                                            HyVector3(0, 1, 0), HyVector3(1, 0, 0));
    arm.setLockParameters(0, 1, HyConstraint::sDefaultStiffness, kStiffness,
                          2 * std::sqrt(kStiffness * kMass), 0);
    stepFor(5);
    EXPECT_NEAR(load.getPosition()[2], -1 - kMass * kGravity / kStiffness, 1e-6);
    EXPECT_NEAR(arm.getCoordinateCurrentPosition(HyDoubleHinge::kDistanceCoordinate),
                1 + kMass * kGravity / kStiffness, 1e-6);
    EXPECT_NEAR(axisOf(arm, 1, 0).dot(HyVector3(0, 1, 0)), 1, 1e-9);
    // A motor on an angle of the link swings the load about the first hinge.
    arm.setMotorParameters(HyDoubleHinge::kTorsionCoordinate, 0.5, 1e5, 0);
    arm.setControl(HyDoubleHinge::kTorsionCoordinate, HyConstraint::kControlMotorized);
    stepFor(1);
    EXPECT_NEAR(std::abs(arm.getCoordinateVelocity(HyDoubleHinge::kTorsionCoordinate)), 0.5, 0.02);
    EXPECT_GT(std::abs(load.getPosition()[0]), 0.3);
}

TEST_F(JointsTest, MotorConstraintDrivesAlongAndAbout) {
    universe->setGravity(0, 0, 0);
    HyPart& part = addBall(2, 0.5, HyVector3());
    HyMotorConstraint& motor =
        add<HyMotorConstraint>(&part, nullptr, HyVector3(), HyVector3(0, 0, 1), HyVector3(1, 0, 0));
    EXPECT_TRUE(motor.getCoordinateAngular(0));
    motor.setMotorParameters(0, 3, 1e4, 0);
    motor.setControl(0, HyConstraint::kControlMotorized);
    step(2);
    EXPECT_NEAR(part.getAngularVelocity()[2], 3, 1e-6);
    EXPECT_NEAR(part.getLinearVelocity().norm(), 0, 1e-12);
    motor.setCoordinateAngular(0, false);
    step(2);
    EXPECT_NEAR(part.getLinearVelocity()[2], 3, 1e-6);
}

// A part that the constraint must not move drags the other one.
TEST_F(JointsTest, KinematicResponseAndStrengthDecideWhoGivesWay) {
    universe->setGravity(0, 0, 0);
    HyPart &a = addBall(1, 0.1, HyVector3()), &b = addBall(50, 1, HyVector3(1, 0, 0));
    HyBallAndSocket& joint = add<HyBallAndSocket>(&a, &b, HyVector3(0.5, 0, 0));
    joint.setForcePartKinematicResponse(&a);
    EXPECT_EQ(joint.getForcePartKinematicResponseIndex(), 0);
    a.setLinearVelocity(0, 2, 0);
    step(30);
    EXPECT_EQ(a.getLinearVelocity(), HyVector3(0, 2, 0));
    EXPECT_LT(gapOf(joint), 0.01);
    joint.setForcePartKinematicResponse(nullptr);
    step(30);
    EXPECT_LT(a.getLinearVelocity()[1], 1.9);
}

// The application's own rows, written with the same primitives, move the parts to the same bits.
TEST_F(JointsTest, GenericConstraintEqualsTheBuiltInJoint) {
    struct Ball : HyGenericConstraint {
        Ball() : HyGenericConstraint(2, 9) {}
        void update(ConstraintInternal* rows) override { rows->addSphericalConstraint(-1); }
    };
    std::vector<HyReal> reference;
    for (const bool isGeneric : {false, true}) {
        random.seed(kSeed);
        addPair();
        HyConstraint& joint = isGeneric ? static_cast<HyConstraint&>(add<Ball>())
                                        : static_cast<HyConstraint&>(add<HyBallAndSocket>());
        joint.setParts(pair[0], pair[1]);
        joint.setPartAttachmentPosition(0, HyVector3(0.1, 0.2, 0.3));
        joint.setPartAttachmentPosition(1, HyVector3(0.1, 0.2, 0.3));
        shake(50);
        std::vector<HyReal> pose(&pair[1]->getTransform()[0][0],
                                 &pair[1]->getTransform()[0][0] + 16);
        if (!isGeneric)
            reference = pose;
        else
            EXPECT_EQ(pose, reference);
        universe->destroyConstraints();
        universe->destroyParts();
    }
}

// A point at 0.5 m from a line of another part, written by hand.
TEST_F(JointsTest, GenericConstraintHoldsAPointAtADistanceFromALine) {
    struct Follower : HyGenericConstraint {
        Follower() : HyGenericConstraint(2, 8) { addConstraintEquationDefinition("Distance"); }
        void update(ConstraintInternal* rows) override {
            EXPECT_EQ(rows->addLinePointDistanceConstraint(0, 1, 2, 0.5), 1);
        }
    };
    frame->setTimeStep(1.0 / 600);
    addPair();
    HyConstraint& joint = add<Follower>();
    joint.setParts(pair[0], pair[1]);
    const auto distance = [&] {
        const HyVector3 axis = axisOf(joint, 1, 2);
        HyVector3 apart = joint.getPartAttachmentPosition(0) - joint.getPartAttachmentPosition(1);
        apart.orthogonalize(axis);
        return apart.norm();
    };
    joint.setPartAttachmentPositionRel(1, HyVector3());
    joint.setPartAttachmentPosition(0,
                                    joint.getPartAttachmentPosition(1) + 0.5 * axisOf(joint, 1, 0));
    ASSERT_NEAR(distance(), 0.5, 1e-12);
    HyReal worst = 0;
    for (int i = 0; i < 40; ++i) {
        shake(5);
        worst = std::max(worst, std::abs(distance() - 0.5));
    }
    EXPECT_LT(worst, 2e-3);
    EXPECT_NE(joint.getConstraintEquationForce(0), 0);
}

// Many joints of all kinds: the same bits for every number of threads, after a restored state, and
// without a heap call.
class JointWorkshopTest : public JointsTest {
protected:
    void build(int threads) {
        start(threads);
        random.seed(kSeed);
        parts.clear();
        for (int i = 0; i < 40; ++i) {
            addPair();
            parts.insert(parts.end(), pair, pair + 2);
            HyPart* anchor = i % 3 == 0 ? nullptr : parts[parts.size() / 3];
            HyHinge& hinge =
                add<HyHinge>(pair[0], pair[1], pair[0]->getPosition(), randomVector(1));
            hinge.setMotorParameters(0, 1, 2, 0);
            hinge.setLimitPositions(0, -0.3, 0.3);
            hinge.setLimitsActive(0, true);
            hinge.setControl(0, HyConstraint::kControlMotorized);
            HyPrismatic& slide =
                add<HyPrismatic>(pair[1], anchor, pair[1]->getPosition(), randomVector(1));
            slide.setLockParameters(0, 0, 50, 100, 10, 0.01);
            slide.setControl(0, HyConstraint::kControlLocked);
            HyConstraintFriction* friction = slide.getConstraintEquationFriction(1);
            friction->setProportional(true);
            friction->setCoefficient(0.3);
            friction->setEnabled(true);
            add<HyDistanceJoint>(pair[0], nullptr, 1.5);
        }
    }
    [[nodiscard]] std::vector<HyReal> bits() const {
        std::vector<HyReal> all;
        for (const HyPart* part : parts) {
            const HyReal* pose = part->getTransform()[0];
            all.insert(all.end(), pose, pose + 16);
            all.insert(all.end(), part->getLinearVelocityPtr(), part->getLinearVelocityPtr() + 3);
        }
        return all;
    }

    std::vector<HyPart*> parts;
};

TEST_F(JointWorkshopTest, SameBitsForThreadsAndRestoredState) {
    std::vector<HyReal> reference;
    for (const int threads : {1, 2, 4}) {
        build(threads);
        step(40);
        const std::unique_ptr<HyUniverseState> state(universe->createState());
        step(40);
        const std::vector<HyReal> first = bits();
        if (reference.empty())
            reference = first;
        EXPECT_EQ(first, reference) << threads << " threads, seed " << kSeed;
        for (const HyReal value : first)
            ASSERT_TRUE(std::isfinite(value));
        state->restore();
        step(40);
        EXPECT_EQ(bits(), reference) << threads << " threads, restored, seed " << kSeed;
    }
}

TEST_F(JointWorkshopTest, StepMakesNoHeapCall) {
    HeapCounter::watchMemoryTable(true);
    for (const int threads : {1, 2}) {
        build(threads);
        universe->setAutoSleep(false); // islands stay what they are
        step(240); // ropes and stops come into play, and with them the largest systems
        const long before = HeapCounter::calls();
        step(60);
        EXPECT_EQ(HeapCounter::calls() - before, 0) << threads;
    }
    HyFrame::release();
    HeapCounter::watchMemoryTable(false);
}
