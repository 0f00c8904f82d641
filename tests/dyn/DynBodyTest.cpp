#include "DynBodyFixture.h"

#include <cmath>
#include <cstring>
#include <limits>

namespace {

constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kRounding = 1e-12;

class DynBodyTest : public DynBodyFixture {
protected:
    bool isInEnabledList(const DynBody* wanted) const {
        for (const DynBody* body = mWorld->enabledBodyHead; body; body = body->enabledNext)
            if (body == wanted)
                return true;
        return false;
    }
    Vector materialVelocity(const DynBody* body, const Vector& point) {
        KitVector3 v;
        DynBodyGetVelocityAtPoint(body, point.data(), v);
        return vectorOf(v);
    }
};

} // namespace

TEST_F(DynBodyTest, StatesFollowTheirTable) {
    using Step = void (*)(DynBody*);
    struct Case {
        const char* name;
        std::vector<Step> steps;
        unsigned state;
        int solverFlags;
        bool enabled;
        std::vector<bool> geometryCalls;
        std::size_t rebinds; ///< of the body's constraint
    };
    constexpr unsigned F = kDynBodyFrozen, K = kDynBodyKinematic;
    const Step enable = DynBodyEnable, disable = DynBodyDisable, freeze = DynBodyFreeze,
               unfreeze = DynBodyUnFreeze, dynamic = DynBodyMakeDynamic,
               kinematic = DynBodyMakeKinematic;
    const Case cases[] = {
        {"new", {}, 0, 0, false, {}, 0},
        {"enabled", {enable}, 0, 0, true, {false}, 0},
        {"enabled twice", {enable, enable}, 0, 0, true, {false}, 0},
        {"slept", {enable, disable, disable}, 0, 0, false, {false, true}, 0},
        {"frozen asleep", {freeze}, F, 16, false, {}, 1},
        {"frozen awake", {enable, freeze, freeze}, F, 16, false, {false}, 1},
        {"frozen is not woken", {freeze, enable}, F, 16, false, {}, 1},
        {"unfrozen wakes", {freeze, unfreeze}, 0, 0, true, {}, 2},
        {"unfreezing an unfrozen", {unfreeze}, 0, 0, false, {}, 0},
        {"kinematic wakes its geometry first", {kinematic}, K, 32, false, {false}, 1},
        {"kinematic, frozen", {kinematic, freeze}, F | K, 48, false, {false}, 2},
        {"kinematic, frozen, unfrozen", {kinematic, freeze, unfreeze}, K, 32, false, {false}, 3},
        {"back to dynamic", {kinematic, dynamic}, 0, 0, true, {false, false}, 2},
        {"dynamic from both", {kinematic, freeze, dynamic}, 0, 0, true, {false, false}, 3},
        {"dynamic stays asleep", {dynamic}, 0, 0, false, {}, 0},
    };
    for (const Case& c : cases) {
        DynBody* body = addBody();
        FakeConstraint& constraint = tie({body});
        geometryCalls().clear();
        for (const Step step : c.steps)
            step(body);
        EXPECT_EQ(body->stateFlags, c.state) << c.name;
        EXPECT_EQ(body->kiroBody.flags, c.solverFlags) << c.name;
        EXPECT_EQ(DynBodyIsEnabled(body), c.enabled) << c.name;
        EXPECT_EQ(isInEnabledList(body), c.enabled) << c.name;
        EXPECT_EQ(mWorld->nEnabledBodies, c.enabled ? 1 : 0) << c.name;
        std::vector<bool> calls;
        for (const auto& [called, isStatic] : geometryCalls())
            calls.push_back(isStatic);
        EXPECT_EQ(calls, c.geometryCalls) << c.name;
        EXPECT_EQ(constraint.bound.size(), c.rebinds) << c.name;
        for (const auto& [slot, bound] : constraint.bound)
            EXPECT_TRUE(slot == 0 && bound == body) << c.name;
        destroy(body);
    }
}

TEST_F(DynBodyTest, WakesWhatIsConnectedToAWall) {
    DynBody *wall = addBody(), *a = addBody(), *b = addBody(), *frozen = addBody();
    DynBodyMakeKinematic(wall);
    DynBodyFreeze(frozen);
    tie({a, wall});
    tie({wall, frozen, b});
    DynBodyEnableConnectedBodies(wall);
    EXPECT_TRUE(DynBodyIsEnabled(a) && DynBodyIsEnabled(b));
    EXPECT_FALSE(DynBodyIsEnabled(frozen) || DynBodyIsEnabled(wall));

    DynBodyDisable(a);
    DynBodyDisable(b);
    DynBodyEnableConnectedBodies(a); // dynamic: itself alone
    EXPECT_TRUE(DynBodyIsEnabled(a));
    EXPECT_FALSE(DynBodyIsEnabled(b));
}

TEST_F(DynBodyTest, MovesWhileAnyQuantityIsAboveItsThreshold) {
    struct Case {
        const char* name;
        KitReal* (*field)(DynBody*);
        double atRest, moving;
    };
    const Case cases[] = {
        {"speed", [](DynBody* b) { return b->kiroBody.vel; }, 0.139, 0.141},
        {"spin", [](DynBody* b) { return b->kiroBody.velrot; }, 0.0299, 0.0301},
        {"acceleration", [](DynBody* b) { return b->kiroBody.accel; }, 0.0449, 0.0451},
        {"angular acceleration", [](DynBody* b) { return b->kiroBody.accelrot; }, 0.0449, 0.0451},
        {"not a number", [](DynBody* b) { return b->kiroBody.vel; }, 0, kNaN},
    };
    for (const Case& c : cases) {
        DynBody* body = addBody();
        DynBodyEnable(body);
        DynBodySetEnabledTime(body, 10);
        c.field(body)[1] = c.atRest;
        EXPECT_FALSE(DynBodyIsMovingTest(body)) << c.name;
        DynBodySetEnabledTime(body, 9);
        EXPECT_TRUE(DynBodyIsMovingTest(body)) << c.name;
        DynBodySetEnabledTime(body, 10);
        c.field(body)[1] = c.moving;
        EXPECT_TRUE(DynBodyIsMovingTest(body)) << c.name;
        destroy(body);
    }
}

// A centre of mass anywhere in the body, turned anyhow: the frames agree, and the material goes on
// as it did, with the same inertia.
TEST_F(DynBodyTest, MovingTheCenterOfMassKeepsTheMaterial) {
    for (int trial = 0; trial < 50; ++trial) {
        DynBody *body = addBody(), *other = addBody();
        setRandomMotion(body);
        FakeConstraint& constraint = tie({other, body});
        setRandomTransform(constraint.bclH.ref[1]);
        for (int move = 0; move < 3; ++move) {
            KitMatrix4 oldBody, attachment, centre;
            DynBodyGetTransform(body, oldBody);
            KitMatrix4TMCompound(attachment, constraint.bclH.ref[1], body->kiroBody.tm);
            const Vector point = randomVector(5), velocity = materialVelocity(body, point);
            KitMatrix3 tensor;
            DynBodyGetInertiaTensor(body, tensor);
            KitVector3 momentum, newMomentum;
            DynBodyGetAngularMomentum(body, momentum);

            setRandomTransform(centre);
            DynBodySetCenterOfMassRelativeTransform(body, centre);

            KitMatrix4 expected, back;
            KitMatrix4TMCompound(expected, centre, oldBody);
            DynBodyGetCenterOfMassRelativeTransform(body, back);
            KitMatrix4 newAttachment;
            KitMatrix4TMCompound(newAttachment, constraint.bclH.ref[1], body->kiroBody.tm);
            for (int i = 0; i < 4; ++i)
                for (int j = 0; j < 4; ++j) {
                    EXPECT_EQ(body->bodyTM[i][j], oldBody[i][j]) << kSeed;
                    EXPECT_NEAR(body->kiroBody.tm[i][j], expected[i][j], kRounding) << kSeed;
                    EXPECT_NEAR(back[i][j], centre[i][j], kRounding) << kSeed;
                    EXPECT_NEAR(newAttachment[i][j], attachment[i][j], 10 * kRounding) << kSeed;
                }
            EXPECT_LT((materialVelocity(body, point) - velocity).norm(), 10 * kRounding) << kSeed;
            KitMatrix3 newTensor;
            DynBodyGetInertiaTensor(body, newTensor);
            EXPECT_LT((matrixOf(newTensor) - matrixOf(tensor)).norm(), kRounding) << kSeed;
            DynBodyGetAngularMomentum(body, newMomentum);
            EXPECT_LT((vectorOf(newMomentum) - vectorOf(momentum)).norm(), kRounding) << kSeed;
            UpdateBodyTransform(body);
            EXPECT_LT((rotationOf(body->bodyTM) - rotationOf(oldBody)).norm(), kRounding);
            EXPECT_LT((vectorOf(body->bodyTM[3]) - vectorOf(oldBody[3])).norm(), 10 * kRounding);
            DynBodySetTransform(body, oldBody);
        }
        destroy(body);
        destroy(other);
    }
}

TEST_F(DynBodyTest, HoldsAttachmentsButNotContactsInTheWorld) {
    DynBody *body = addBody(), *other = addBody();
    setRandomMotion(body);
    FakeConstraint &joint = tie({body, other}), &contact = tie({body, other});
    contact.bclH.tag = kDynTagContact;
    setRandomTransform(joint.bclH.ref[0]);
    setRandomTransform(joint.bclH.ref[1]);
    KitMatrix4 before, after, tm, otherRef;
    KitMatrix4TMCompound(before, joint.bclH.ref[0], body->kiroBody.tm);
    KitMatrix4Copy(otherRef, joint.bclH.ref[1]);
    setRandomTransform(tm);
    DynBodySetTransformAndUpdateConstraintAttachments(body, tm);
    KitMatrix4TMCompound(after, joint.bclH.ref[0], body->kiroBody.tm);
    for (int i = 0; i < 4; ++i)
        for (int j = 0; j < 4; ++j) {
            EXPECT_NEAR(after[i][j], before[i][j], 10 * kRounding);
            EXPECT_EQ(joint.bclH.ref[1][i][j], otherRef[i][j]);
            EXPECT_EQ(contact.bclH.ref[0][i][j], i == j ? 1 : 0);
        }
}

// With the centre of mass beside the frame, one step of the velocities leads to the target; a turn
// by θ is answered by the first-order 2 sin(θ/2), whichever sign the quaternions have.
TEST_F(DynBodyTest, MovesToItsTarget) {
    const double dt = 0.1, angle = 0.3;
    for (const double start : {0.0, 2.9, 4.1}) { // about z; the sign flips behind the last
        DynBody *body = addBody(), *load = addBody();
        DynBodyMakeKinematic(body);
        tie({body, load});
        KitMatrix4 from, to, centre;
        for (auto& tm : {from, to, centre})
            KitMatrix4SetIdentity(const_cast<KitReal(*)[4]>(tm));
        const auto about = [](KitMatrix4 tm, double turn) {
            const KitVector4 q = {std::cos(turn / 2), 0, 0, std::sin(turn / 2)};
            KitMatrix4TMSetRotationFromQuaternion(tm, q);
        };
        KitVector3Set(centre[3], 0.5, 0, 0);
        about(from, start);
        about(to, start + angle);
        KitVector3Set(to[3], 1, -2, 0.5);
        DynBodySetCenterOfMassRelativeTransform(body, centre);
        DynBodySetTransform(body, from);
        const Vector oldCenter = vectorOf(body->kiroBody.tm[3]);
        DynBodyMoveTo(body, to, dt);
        EXPECT_LT(
            (oldCenter + dt * vectorOf(body->kiroBody.vel) - vectorOf(body->kiroBody.tm[3])).norm(),
            kRounding);
        EXPECT_NEAR(body->kiroBody.velrot[2], 2 * std::sin(angle / 2) / dt, kRounding) << start;
        EXPECT_TRUE(DynBodyIsEnabled(load));
        EXPECT_FALSE(DynBodyIsEnabled(body));
        destroy(body);
        destroy(load);
    }
}

TEST_F(DynBodyTest, MoveToRefusesAFrozenBodyAndAStepThatIsNone) {
    const WarningRecorder recorder;
    DynBody* body = addBody();
    DynBodyMakeKinematic(body);
    KitMatrix4 tm;
    setRandomTransform(tm);
    for (const double dt : {0.0, -1.0, kNaN}) {
        KitVector3Set(body->kiroBody.vel, 1, 1, 1);
        DynBodyMoveTo(body, tm, dt);
        EXPECT_EQ(recorder.take(), std::vector<std::string>{
                                       "12: DynBodyMoveTo: time step must be larger than 0.\n"});
        EXPECT_EQ(vectorOf(body->kiroBody.vel), Vector::Zero());
        EXPECT_EQ(body->bodyTM[3][0], tm[3][0]);
    }
    DynBodyFreeze(body);
    DynBodySetPosition(body, Vector(7, 0, 0).data());
    DynBodyMoveTo(body, tm, 0.1);
    EXPECT_EQ(recorder.take(),
              std::vector<std::string>{
                  "12: DynBodyMoveTo: Can't move a frozen body. Unfreeze the body first.\n"});
    EXPECT_EQ(body->bodyTM[3][0], 7);
}

TEST_F(DynBodyTest, PoseComesBackToTheBit) {
    DynBody* body = addBody();
    setRandomMotion(body);
    KitMatrix4 centre;
    setRandomTransform(centre);
    DynBodySetCenterOfMassRelativeTransform(body, centre);
    for (int i = 0; i < 100; ++i) { // a quaternion that no transform gives back
        DynsBodyIntegrate(&body->kiroBody, 0.01);
        UpdateBodyTransform(body);
    }
    DynBodyPose pose, now;
    DynBodyGetPose(body, &pose);
    KitMatrix4 tm;
    setRandomTransform(tm);
    DynBodySetTransform(body, tm);
    DynBodySetPose(body, pose);
    DynBodyGetPose(body, &now);
    EXPECT_EQ(std::memcmp(&now, &pose, sizeof pose), 0);

    KitMatrix4SetIdentity(centre); // another centre: the frame counts, its pose is new
    DynBodySetCenterOfMassRelativeTransform(body, centre);
    DynBodySetPose(body, pose);
    EXPECT_EQ(std::memcmp(body->kiroBody.tm, pose.bodyTM, sizeof pose.bodyTM), 0);
}

TEST_F(DynBodyTest, LoadsActAboutTheCenterOfMass) {
    DynBody* body = addBody();
    setRandomMotion(body);
    KitMatrix4 centre;
    setRandomTransform(centre);
    DynBodySetCenterOfMassRelativeTransform(body, centre);
    const Vector f = randomVector(), p = randomVector(3), c = vectorOf(body->kiroBody.tm[3]);
    DynBodyAddForceAtPosition(body, f.data(), p.data());
    DynBodyAddImpulseAtPosition(body, f.data(), p.data());
    EXPECT_EQ(vectorOf(body->kiroBody.force), f);
    EXPECT_LT((vectorOf(body->kiroBody.torque) - (p - c).cross(f)).norm(), kRounding);
    EXPECT_LT((vectorOf(body->impulseAngular) - (p - c).cross(f)).norm(), kRounding);
    EXPECT_TRUE(body->impulseAdded);

    DynBodyClearUserForces(body);
    const Vector world = rotationOf(body->bodyTM) * p + vectorOf(body->bodyTM[3]);
    DynBodyAddForceAtLocalPosition(body, f.data(), p.data());
    EXPECT_LT((vectorOf(body->kiroBody.torque) - (world - c).cross(f)).norm(), kRounding);
}

TEST_F(DynBodyTest, SavedLoadsAddAndImpulsesComeBackOnce) {
    DynBody* body = addBody();
    DynBodyAddForce(body, Vector(1, 2, 3).data());
    DynBodyAddTorque(body, Vector(4, 5, 6).data());
    DynBodySaveUserForces(body);
    KitVector3Set(body->kiroBody.cf, 10, 0, 0);
    KitVector3Set(body->kiroBody.ct, 0, 20, 0);
    DynBodyResetForces(body);
    EXPECT_EQ(vectorOf(body->lastForce), Vector(11, 2, 3));
    EXPECT_EQ(vectorOf(body->lastTorque), Vector(4, 25, 6));
    EXPECT_EQ(vectorOf(body->kiroBody.cf), Vector::Zero());
    DynBodyAddForce(body, Vector(100, 0, 0).data()); // by a hook of the next substep
    DynBodyRestoreUserForces(body);
    EXPECT_EQ(vectorOf(body->kiroBody.force), Vector(101, 2, 3));
    EXPECT_EQ(vectorOf(body->kiroBody.torque), Vector(4, 5, 6));

    KitVector3Set(body->consumedImpulseLinear, 1, 0, 0);
    body->impulseConsumed = true;
    DynBodyRearmImpulses(body);
    DynBodyRearmImpulses(body);
    EXPECT_EQ(vectorOf(body->impulseLinear), Vector(1, 0, 0));
    EXPECT_TRUE(body->impulseAdded);
}

TEST_F(DynBodyTest, EnergyAndAccelerationAtAPoint) {
    for (int i = 0; i < 20; ++i) {
        DynBody* body = addBody();
        setRandomMotion(body);
        KitMatrix3 tensor;
        DynBodyGetInertiaTensor(body, tensor);
        const Matrix R = rotationOf(body->bodyTM), I = R * matrixOf(tensor) * R.transpose();
        const Vector v = vectorOf(body->kiroBody.vel), w = vectorOf(body->kiroBody.velrot);
        const double expected = 0.5 * body->mass * v.squaredNorm() + 0.5 * w.dot(I * w);
        EXPECT_NEAR(DynBodyGetKineticEnergy(body), expected, kRounding);
        DynBodySetSphericalInertiaFlag(body, true);
        EXPECT_NEAR(DynBodyGetKineticEnergy(body),
                    0.5 * body->mass * v.squaredNorm() + I.trace() / 6 * w.squaredNorm(),
                    kRounding);

        const Vector a = randomVector(), alpha = randomVector(), p = randomVector(3);
        DynBodySetAccelerations(body, a.data(), alpha.data());
        KitVector3 at;
        DynBodyGetAccelerationAtPoint(body, p.data(), at);
        const Vector arm = p - vectorOf(body->kiroBody.tm[3]);
        EXPECT_LT((vectorOf(at) - (a + alpha.cross(arm) + w.cross(w.cross(arm)))).norm(), 1e-11);
    }
}

TEST_F(DynBodyTest, DestroyedBodyLeavesWorldAndConstraints) {
    DynBody *a = addBody(), *b = addBody();
    FakeConstraint& constraint = tie({a, b, a});
    DynBodyEnable(a);
    destroy(a);
    EXPECT_EQ(mWorld->nBodies, 1);
    EXPECT_EQ(mWorld->nEnabledBodies, 0);
    EXPECT_EQ(constraint.body[0], nullptr);
    EXPECT_EQ(constraint.body[2], nullptr);
    EXPECT_EQ(constraint.body[1], b);
}
