#include "support/HeapCounter.h"

#include <Dyn/Dyn.h>
#include <Kit/KitVector.h>

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <functional>

namespace {

using Material = DyncContactMaterial;

constexpr KitReal kStep = 1.0 / 240; // s
constexpr KitReal kGravity = 9.80665;
constexpr KitReal kMass = 3;   // kg
constexpr KitReal kHalf = 0.2; // m
constexpr KitReal kMu = 0.4;

Material frictionMaterial(Material::FrictionModel model) {
    Material m;
    m.model[0] = m.model[1] = model;
    m.sbCoefficient[0] = m.sbCoefficient[1] = kMu;
    return m;
}

/// A body on the plane z = 0, in gravity that is tilted as by an incline along x. Its contacts are
/// made once and filled anew in each step.
class ContactTest : public testing::Test {
protected:
    ContactTest() : world(DynWorldCreate(1, 1)) {
        DynGroupingGet(world, 0);
        DynPartitionParametersSetAutoDisable(&world->partition_parameters, 0);
        for (int i = 0; i < 4; ++i)
            feet[static_cast<std::size_t>(i)] = {i % 2 == 0 ? -kHalf : kHalf,
                                                 i < 2 ? -kHalf : kHalf, 0};
    }
    ~ContactTest() override {
        for (DynContact* contact : contacts)
            DynContactDestroy(contact);
        DynBodyDestroy(body);
        DynWorldDestroy(world);
    }

    void incline(KitReal angle) {
        const KitVector3 g = {kGravity * std::sin(angle), 0, -kGravity * std::cos(angle)};
        DynWorldSetGravity(world, g);
    }

    /// A block with its centre in the plane, so that nothing tips it over.
    void addBlock(const Material& material) { addBody(material, 4); }
    /// A ball on one contact.
    void addBall(const Material& material) {
        addBody(material, 1);
        feet[0] = {0, 0, -kHalf};
        const KitVector3 up = {0, 0, kHalf};
        DynBodySetPosition(body, up);
    }

    void fillContacts() {
        KitVector3 centre;
        DynBodyGetPosition(body, centre);
        const KitVector3 up = {0, 0, 1};
        for (std::size_t i = 0; i < contacts.size(); ++i) {
            const KitVector3 foot = {centre[0] + feet[i][0], centre[1] + feet[i][1],
                                     centre[2] + feet[i][2]};
            DynContactSetNormal(contacts[i], up);
            DynContactSetPosition(contacts[i], foot);
            DynContactSetPenetration(contacts[i], -foot[2]);
            DynContactSetParams(contacts[i], &material_, "test");
            DynContactResolveFriction(contacts[i], kMass, kMass);
        }
    }

    void step(int n, const std::function<void()>& before = {}) {
        for (int i = 0; i < n; ++i) {
            if (before)
                before();
            fillContacts();
            DynWorldStep(world, kStep);
            DynWorldIntegrate(world);
        }
    }

    void setFlags(int flags) {
        for (DynContact* contact : contacts)
            contact->flags = flags;
    }
    [[nodiscard]] KitReal position(int k) const {
        KitVector3 p;
        DynBodyGetPosition(body, p);
        return p[k];
    }
    [[nodiscard]] KitReal speed(int k) const {
        KitVector3 v;
        DynBodyGetLinearVelocity(body, v);
        return v[k];
    }
    [[nodiscard]] KitReal spin(int k) const {
        KitVector3 w;
        DynBodyGetAngularVelocity(body, w);
        return w[k];
    }
    void push(KitReal x, KitReal z = 0) {
        const KitVector3 f = {x, 0, z};
        DynBodyAddForce(body, f);
    }
    Material& material() { return material_; }

    DynWorld* world;
    DynBody* body = nullptr;
    std::vector<DynContact*> contacts;
    std::array<std::array<KitReal, 3>, 4> feet{};

private:
    void addBody(const Material& material, int nContacts) {
        material_ = material;
        body = DynBodyCreate(world);
        DynBodySetMassAndScaleInertiaTensor(body, kMass);
        DynBodySetUserGroup(body, 0);
        DynWorldInsertBody(world, body);
        DynBodyEnable(body);
        for (int i = 0; i < nContacts; ++i) {
            DynContact* contact = DynContactCreate(world);
            DynContactSetBodies(contact, body, nullptr);
            DynContactSetSurface(contact, 1.0 / nContacts);
            contact->slidingVelocityThreshold = 0.02;
            ASSERT_TRUE(DynConstraintEnable(contact));
            contacts.push_back(contact);
        }
    }
    Material material_;
};

// With four feet each bears a quarter of the load.
TEST_F(ContactTest, BlockSticksBelowTheFrictionAngleAndSlidesAbove) {
    using enum Material::FrictionModel;
    const KitReal angles[] = {0.3, std::atan(kMu) - 0.01, std::atan(kMu) + 0.01, 0.6};
    for (const auto model : {kFrictionModelBox, kFrictionModelScaledBox,
                             kFrictionModelBoxProportionalLow, kFrictionModelScaledBoxFast})
        for (const KitReal angle : angles) {
            Material m = frictionMaterial(model);
            const KitReal normal = kMass * kGravity * std::cos(angle);
            m.boxMaxForce[0] = m.boxMaxForce[1] =
                (model == kFrictionModelBox ? normal : normal / kMass) * kMu / 4;
            if (!body)
                addBlock(m);
            material() = m;
            KitVector3 zero = {0, 0, 0};
            DynBodySetPosition(body, zero);
            DynBodyResetDynamics(body);
            incline(angle);
            setFlags(0);
            step(1);
            setFlags(kDynContactMatched);
            step(239);
            const KitReal a = std::max(0.0, kGravity * (std::sin(angle) - kMu * std::cos(angle)));
            EXPECT_NEAR(speed(0), a, 2e-3 * kGravity) << "model " << model << " at " << angle;
            EXPECT_NEAR(position(0), a / 2, 0.01) << "model " << model << " at " << angle;
            EXPECT_NEAR(speed(1), 0, 1e-6);
            for (DynContact* contact : contacts)
                EXPECT_NEAR(DynConstraintGetRowForce(contact, 0), normal / 4, 1e-3 * normal);
        }
}

TEST_F(ContactTest, StaticScaleHoldsUntilTheBlockMoves) {
    Material m = frictionMaterial(Material::kFrictionModelScaledBox);
    m.staticFrictionScale[0] = m.staticFrictionScale[1] = 1.5;
    addBlock(m);
    incline(std::atan(1.25 * kMu));
    step(240);
    EXPECT_NEAR(position(0), 0, 1e-3);
    const KitVector3 kick = {0.05, 0, 0}; // above the sliding threshold
    DynBodySetLinearVelocity(body, kick);
    step(240);
    const KitReal angle = std::atan(1.25 * kMu);
    const KitReal a = kGravity * (std::sin(angle) - kMu * std::cos(angle));
    EXPECT_NEAR(speed(0), kick[0] + a, 1e-3);
}

TEST_F(ContactTest, ConveyorCarriesTheBlock) {
    Material m = frictionMaterial(Material::kFrictionModelScaledBox);
    m.slide[0] = 1.5;
    addBlock(m);
    incline(0);
    const KitVector3 along = {1, 0, 0};
    int steps = 0;
    const auto aim = [&] {
        for (DynContact* contact : contacts) {
            contact->params = material();
            DynContactSetDirection(contact, along);
        }
        material().options |= Material::kOptionDirection;
    };
    while (speed(0) < 1.5 - 1e-6 && steps < 1000) {
        step(1, aim);
        ++steps;
    }
    EXPECT_NEAR(steps * kStep, 1.5 / (kMu * kGravity), 2 * kStep);
    step(100, aim);
    EXPECT_NEAR(speed(0), 1.5, 1e-6);
}

// A torque bound M about an axis in the plane: a rolling ball is slowed by M / (m R (1 + 2/5)).
TEST_F(ContactTest, RollingAndSpinningAreResisted) {
    Material m = frictionMaterial(Material::kFrictionModelScaledBox);
    m.sbCoefficient[0] = m.sbCoefficient[1] = 10; // rolls
    constexpr KitReal kTorque = 0.05;             // N m
    for (const int axis : {2, 3, 4}) {
        m.model[axis] = Material::kFrictionModelBox;
        m.boxMaxForce[axis] = kTorque;
    }
    addBall(m);
    incline(0);
    DynBodySetSphericalInertiaTensor(body, 0.4 * kMass * kHalf * kHalf);
    const KitVector3 v = {1, 0, 0}, w = {0, 1 / kHalf, 8};
    DynBodySetLinearVelocity(body, v);
    DynBodySetAngularVelocity(body, w);
    const KitReal t = 0.5;
    step(static_cast<int>(t / kStep));
    EXPECT_NEAR(speed(0), 1 - kTorque / (1.4 * kMass * kHalf) * t, 1e-3);
    EXPECT_NEAR(spin(1) * kHalf, speed(0), 1e-6) << "still rolls";
    EXPECT_NEAR(spin(2), 8 - kTorque / (0.4 * kMass * kHalf * kHalf) * t, 1e-3);
    step(4500);
    EXPECT_NEAR(speed(0), 0, 1e-6);
    EXPECT_NEAR(spin(2), 0, 1e-6);
}

// Held by a spring of compliance c in each foot, of a quarter of the surface.
TEST_F(ContactTest, SlipDisplacementDrawsTheBlockBack) {
    Material m = frictionMaterial(Material::kFrictionModelScaledBox);
    m.mIntegratedSlipDisplacementActivated = true;
    DyncContactMaterialSetCompliance(&m, 1e-5, 2e4);
    addBlock(m);
    incline(0);
    step(240);
    setFlags(kDynContactMatched);
    step(240);
    const KitReal at = position(0), force = 0.5 * kMu * kMass * kGravity;
    step(480, [&] { push(force); });
    EXPECT_NEAR(position(0) - at, force * 1e-5, 1e-7) << "four feet in parallel";
    EXPECT_NEAR(contacts[0]->slip_displacement[0] * contacts[0]->slip_displacement[0] +
                    contacts[0]->slip_displacement[1] * contacts[0]->slip_displacement[1],
                std::pow(force * 1e-5, 2), 1e-12);
    step(480);
    EXPECT_NEAR(position(0), at, 1e-7) << "where it stuck";

    // Velocity rows forget: under the same force the block creeps by the kinetic loss of the group.
    material().mIntegratedSlipDisplacementActivated = false;
    DyncContactMaterialSetCompliance(&material(), 0, 0);
    material().slip[0] = material().slip[1] = 1e-4; // m/(N s)
    step(480, [&] { push(force); });
    EXPECT_NEAR(position(0) - at, force / 4 * 1e-4 * 480 * kStep, 1e-4);
}

TEST_F(ContactTest, CompliantFeetSinkByLoadTimesComplianceOverSurface) {
    Material m;
    constexpr KitReal kCompliance = 1e-5;
    DyncContactMaterialSetCompliance(&m, kCompliance, 3e3);
    addBlock(m);
    incline(0);
    for (const KitReal surface : {0.25, 1.0}) {
        for (DynContact* contact : contacts)
            DynContactSetSurface(contact, surface);
        step(1500);
        const KitReal load = kMass * kGravity / 4;
        EXPECT_NEAR(-position(2), load * kCompliance / surface, 1e-9) << surface;
        for (const DynContact* contact : contacts)
            EXPECT_NEAR(DynConstraintGetRowForce(contact, 0), load, 1e-6);
    }
}

TEST_F(ContactTest, AdhesionPullsUpToItsBound) {
    Material m;
    m.max_adhesive_force = 20; // N, each of four
    addBlock(m);
    incline(0);
    const KitReal weight = kMass * kGravity;
    step(60);
    step(120, [&] { push(0, weight + 79); });
    EXPECT_NEAR(position(2), 0, 1e-5);
    EXPECT_NEAR(DynConstraintGetRowForce(contacts[0], 0), -79.0 / 4, 1e-6);
    constexpr int kSteps = 60;
    step(kSteps, [&] { push(0, weight + 83); });
    EXPECT_NEAR(speed(2), 3.0 / kMass * kSteps * kStep, 1e-3);
}

TEST_F(ContactTest, BallBouncesByItsRestitution) {
    Material m;
    m.restitution = 0.7;
    m.velThreshold = 0.5;
    addBall(m);
    incline(0);
    struct Case {
        KitReal approach, rebound;
    };
    for (const Case& c : {Case{2, 1.4}, {0.6, 0.42}, {0.45, 0}}) {
        const KitVector3 up = {0, 0, kHalf}, down = {0, 0, -c.approach};
        DynBodySetPosition(body, up);
        DynBodySetLinearVelocity(body, down);
        step(1);
        EXPECT_NEAR(speed(2), c.rebound, 1e-5) << c.approach; // but for global softness
    }
}

TEST_F(ContactTest, RecordsAreReusedWithoutTheHeap) {
    addBlock(frictionMaterial(Material::kFrictionModelScaledBox));
    incline(0.1);
    const auto renew = [this] {
        for (DynContact*& contact : contacts) {
            DynContactDestroy(contact);
            contact = DynContactCreate(world);
            DynContactSetBodies(contact, nullptr, body);
            DynContactReset(contact);
            EXPECT_EQ(contact->body[1], nullptr);
            EXPECT_EQ(contact->normal[1], 1);
            DynContactSetBodies(contact, body, nullptr);
            EXPECT_EQ(contact->tm0, &body->bodyTM);
            DynConstraintEnable(contact);
        }
    };
    step(5, renew);
    const long before = HeapCounter::calls();
    for (int i = 0; i < 50; ++i) {
        renew();
        fillContacts();
        DynWorldStep(world, kStep);
        DynWorldIntegrate(world);
    }
    EXPECT_EQ(HeapCounter::calls(), before);
    EXPECT_NEAR(position(0), 0, 1e-3);
}

TEST_F(ContactTest, LosesADestroyedBody) {
    addBlock(frictionMaterial(Material::kFrictionModelScaledBox));
    DynConstraintDisable(contacts[3]); // holds its body all the same
    DynBodyDestroy(body);
    for (DynContact* contact : contacts) {
        EXPECT_FALSE(DynConstraintIsEnabled(contact));
        EXPECT_EQ(contact->body[0], nullptr);
        EXPECT_EQ(contact->tm0, nullptr);
    }
    body = DynBodyCreate(world);
    DynWorldInsertBody(world, body);
}

TEST_F(ContactTest, PairMassesCountDynamicBodies) {
    addBlock({});
    DynBody* heavy = DynBodyCreate(world);
    DynBodySetMass(heavy, 7);
    KitReal low, high;
    DynContactGetPairMasses(body, heavy, &low, &high);
    EXPECT_EQ(low, kMass);
    EXPECT_EQ(high, 7);
    DynBodyMakeKinematic(heavy);
    DynContactGetPairMasses(heavy, body, &low, &high);
    EXPECT_EQ(low, kMass);
    EXPECT_EQ(high, kMass);
    DynContactGetPairMasses(heavy, nullptr, &low, &high);
    EXPECT_EQ(low, kKitInfinity);
    EXPECT_EQ(high, 0);
    DynBodyDestroy(heavy);
}

// An axis far from the normal aims; one near it leaves the direction.
TEST_F(ContactTest, BodyLevelCallbacksAimAWholeList) {
    addBlock({});
    const KitVector3 up = {0, 0, 1};
    KitVector3 axis = {0, 2, 0};
    for (std::size_t i = 0; i < 3; ++i) {
        DynContactSetNormal(contacts[i], up);
        DynContactSetNext(contacts[i], i < 2 ? contacts[i + 1] : DynContactInvalidID);
    }
    DynBodyFrictionDirectionPerpendicularToAxisCB(contacts[1], body, axis);
    EXPECT_EQ(contacts[0]->params.options, 0) << "stands before the first";
    for (std::size_t i = 1; i < 3; ++i) {
        EXPECT_NEAR(contacts[i]->direction[0], -1, 1e-15);
        EXPECT_EQ(contacts[i]->params.options, Material::kOptionDirection);
    }
    DynBodyFrictionDirectionParallelToAxisCB(contacts[0], body, axis);
    EXPECT_NEAR(contacts[2]->direction[1], -1, 1e-15) << "against the axis";
    KitVector3Set(axis, 0.3, 0, 0.95);
    DynBodyFrictionDirectionParallelToAxisCB(contacts[0], body, axis);
    DynBodyFrictionDirectionPerpendicularToAxisCB(contacts[0], body, axis);
    EXPECT_NEAR(contacts[2]->direction[1], -1, 1e-15) << "squared sine below 0.1";
}

TEST_F(ContactTest, SettersRefuseWhatNobodyCanUse) {
    addBlock({});
    DynContact* c = contacts[0];
    const KitReal nan = std::nan("");
    const KitVector3 bad = {0, nan, 0}, zero = {0, 0, 0}, twice = {0, 0, 2};
    DynContactSetPosition(c, bad);
    DynContactSetNormal(c, bad);
    DynContactSetNormal(c, zero);
    DynContactSetDirection(c, zero);
    DynContactSetPenetration(c, nan);
    DynContactSetSurface(c, nan);
    DynContactSetParams(c, nullptr, nullptr);
    DynContactSetWeakContact(c, 3);
    EXPECT_EQ(DynContactCreate(nullptr), nullptr);
    EXPECT_EQ(c->cpos[1] + c->penetration, 0);
    EXPECT_EQ(c->normal[1], 1);
    EXPECT_EQ(c->direction[0], 1);
    EXPECT_EQ(c->surface, 0.25);
    EXPECT_EQ(c->weak, 0);
    DynContactSetNormal(c, twice);
    EXPECT_EQ(c->normal[2], 1);
}

} // namespace
