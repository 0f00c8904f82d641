#include "JointFixture.h"

#include <Dync/DyncContact.h>
#include <Kit/KitMessage.h>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

using Material = DyncContactMaterial;
using Eigen::Vector3d;

constexpr double kStep = 0.01; // s, of JointFixture

int sWarnings = 0;

class ContactRowsTest : public testing::Test {
protected:
    ContactRowsTest() : fixture(7) {
        contact = fixture.make<DynContact>(kDynTagContact, kDyncMaxContactRows, 1, 1);
        contact->tm0 = &fixture.body[0].tm;
        contact->tm1 = &fixture.body[1].tm;
        contact->bclH.lambda[0] = kDynLambdaEnd;
        setVector(contact->cpos, randomUnit());
        setVector(contact->normal, randomUnit());
        contact->slidingVelocityThreshold = 1e-3;
        sWarnings = 0;
        mOldHandler = KitSetWarningHandler([](int, const char*, va_list) { ++sWarnings; });
    }
    ~ContactRowsTest() override { KitSetWarningHandler(mOldHandler); }

    static void setVector(KitReal* to, const Vector3d& from) {
        std::copy(from.data(), from.data() + 3, to);
    }
    static Vector3d vector(const KitReal* from) { return {from[0], from[1], from[2]}; }

    Vector3d randomUnit() {
        KitVector3 v;
        fixture.randomVector(v, 1);
        return vector(v).normalized();
    }
    void use(std::initializer_list<int> axes, Material::FrictionModel model) {
        for (int a : axes)
            material().model[a] = model;
    }
    /// Gives body 0 the speed v at the contact against a body 1 at rest.
    void approach(const Vector3d& v) {
        for (DynsBody& b : fixture.body)
            std::fill_n(b.vel, 4, 0.0), std::fill_n(b.velrot, 4, 0.0);
        setVector(fixture.body[0].vel, v);
    }
    int build() { return fixture.build(DyncAddContact, *contact); }
    Material& material() { return contact->params; }
    [[nodiscard]] const DynsConstraints& rows() const { return *fixture.rows; }

    JointFixture fixture;
    std::unique_ptr<DynContact> contact;

private:
    KitMessageHandler mOldHandler;
};

// A point of each body starts at the contact; the rows' rates are those of the distance between the
// two, and of the angle between the bodies.
TEST_F(ContactRowsTest, JacobianIsTheDerivativeOfSeparationSlipAndTurn) {
    constexpr double h = 1e-6;
    for (int round = 0; round < 20; ++round) {
        use({0, 1, 2, 3, 4}, Material::kFrictionModelBox);
        material().options = round % 2 == 0 ? 0 : Material::kOptionDirection;
        setVector(contact->cpos, 2 * randomUnit());
        setVector(contact->normal, randomUnit());
        setVector(contact->direction, randomUnit());
        ASSERT_EQ(build(), 6);
        DyncRowBlock G;
        lsVec3 axes[3];
        ASSERT_EQ(DyncGetContactJacobian(contact.get(), G, axes), 6);
        double rate[6];
        for (int row = 0; row < 6; ++row)
            rate[row] = fixture.rate(row);

        const DynsBody before[2] = {fixture.body[0], fixture.body[1]};
        Vector3d point[2][2];
        Eigen::Quaterniond turn[2][2];
        for (int side = 0; side < 2; ++side) {
            fixture.move(side == 0 ? -h : h);
            for (int i = 0; i < 2; ++i) {
                const DynsBody &b = fixture.body[i], &b0 = before[i];
                turn[side][i] = {b.qrot[0], b.qrot[1], b.qrot[2], b.qrot[3]};
                const Eigen::Quaterniond q0(b0.qrot[0], b0.qrot[1], b0.qrot[2], b0.qrot[3]);
                point[side][i] =
                    turn[side][i] * (q0.inverse() * (vector(contact->cpos) - vector(b0.tm[3]))) +
                    vector(b.tm[3]);
            }
            std::copy(before, before + 2, fixture.body);
        }
        const Vector3d slip = ((point[1][0] - point[1][1]) - (point[0][0] - point[0][1])) / (2 * h);
        const auto spinOf = [&](int i) {
            return Vector3d(2 * (turn[1][i] * turn[0][i].inverse()).vec() / (2 * h));
        };
        const Vector3d spin = spinOf(0) - spinOf(1);
        const Vector3d n = vector(axes[0].v), t1 = vector(axes[1].v), t2 = vector(axes[2].v);
        const double expected[6] = {slip.dot(n), slip.dot(t1), slip.dot(t2),
                                    spin.dot(n), spin.dot(t1), spin.dot(t2)};
        for (int row = 0; row < 6; ++row)
            EXPECT_NEAR(rate[row], expected[row], 1e-7) << "row " << row << " round " << round;
    }
}

TEST_F(ContactRowsTest, FrictionAxesAreOrthonormal) {
    for (int round = 0; round < 100; ++round) {
        const bool byDirection = round % 2 == 1;
        const Vector3d n = round < 6 ? Vector3d::Unit(round % 3) : randomUnit();
        const Vector3d d = round % 10 == 9 ? Vector3d(-3 * n) : 5 * randomUnit();
        const bool onlyPrimary = round % 3 == 0;
        material() = {};
        use(onlyPrimary ? std::initializer_list<int>{0} : std::initializer_list<int>{0, 4},
            Material::kFrictionModelBox);
        material().options = byDirection ? Material::kOptionDirection : 0;
        setVector(contact->normal, n);
        setVector(contact->direction, d);
        DyncRowBlock G;
        lsVec3 v[3];
        DyncGetContactJacobian(contact.get(), G, v);
        Eigen::Matrix3d frame;
        frame << vector(v[0].v), vector(v[1].v), vector(v[2].v);
        EXPECT_TRUE((frame.transpose() * frame).isIdentity(1e-14)) << frame;
        const bool parallel = d.cross(n).norm() < 1e-9;
        if ((byDirection || onlyPrimary) && !parallel) {
            EXPECT_TRUE(frame.col(1).isApprox((d - d.dot(n) * n).normalized(), 1e-13));
        } else {
            EXPECT_NEAR(frame.determinant(), 1, 1e-14);
        }
        EXPECT_TRUE(vector(contact->direction) == (byDirection || onlyPrimary ? d : frame.col(1)))
            << "a default is told to the user, a choice stays";
    }
}

TEST_F(ContactRowsTest, RowsFollowTheAxesInUse) {
    material().boxMaxForce[1] = 5;
    material().sbCoefficient[4] = 0.5;
    EXPECT_EQ(build(), 1);
    material().model[0] = Material::kFrictionModelNeutral;
    EXPECT_EQ(build(), 1);
    material().model[1] = Material::kFrictionModelBox;
    material().model[4] = Material::kFrictionModelScaledBox;
    EXPECT_EQ(build(), 3);
    EXPECT_EQ(rows().upper[1], 5);
    EXPECT_EQ(rows().lower[1], -5);
    EXPECT_EQ(rows().use_scaled_box_friction, 1);
    EXPECT_EQ(rows().reference_normal[2], 2U) << "back to the normal row";
    EXPECT_EQ(rows().friction_coefficient[2], 0.5);
    EXPECT_EQ(rows().upper[2], 0) << "until the normal force is known";
    EXPECT_EQ(rows().reference_normal[1], kDynsNoReferenceNormal);
    EXPECT_EQ(contact->bclH.flags[1] & ~kDynsRowOwnSoftness, kDynsRowLinear | kDynsRowVelocity);
    EXPECT_EQ(contact->bclH.flags[2] & ~kDynsRowOwnSoftness, kDynsRowAngular | kDynsRowVelocity);
}

TEST_F(ContactRowsTest, NormalRow) {
    contact->penetration = -0.02;
    build();
    EXPECT_EQ(rows().phi[0], 0.02) << "closes at the speed that the gap allows";
    EXPECT_EQ(rows().lower[0], 0);
    EXPECT_EQ(rows().upper[0], kKitInfinity);
    EXPECT_EQ(rows().xepsilon[0], fixture.params.diag[0]);

    material().max_adhesive_force = 3;
    DyncContactMaterialSetCompliance(&material(), 1e-3, 20);
    contact->surface = 0.5;
    build();
    EXPECT_EQ(rows().lower[0], -3);
    const double c = 1e-3 / 0.5, d = 20 * 0.5, gamma = 1 / (d * c / kStep + 1);
    EXPECT_NEAR(rows().xgamma[0], gamma, 1e-15);
    EXPECT_NEAR(rows().xepsilon[0], c * gamma / (kStep * kStep), 1e-12);
    EXPECT_EQ(sWarnings, 0);

    contact->surface = 0;
    build();
    const double gamma1 = 1 / (20 * 1e-3 / kStep + 1);
    EXPECT_NEAR(rows().xgamma[0], gamma1, 1e-15) << "counts as 1";
    EXPECT_EQ(contact->surface, 0);
    EXPECT_EQ(sWarnings, 1);
}

TEST_F(ContactRowsTest, BouncesAboveTheThreshold) {
    const Vector3d n = vector(contact->normal);
    struct Case {
        const char* name;
        double restitution, speed, v0;
    };
    const Case cases[] = {
        {"half", 0.5, -2, 1},           {"none", 0, -2, 0},
        {"parting", 0.5, 2, 0},         {"slower", 0.5, -0.2499, 0},
        {"faster", 1, -0.2501, 0.2501},
    };
    for (const Case& c : cases) {
        material().restitution = c.restitution;
        material().velThreshold = 0.25;
        approach(c.speed * n);
        build();
        EXPECT_NEAR(rows().v0[0], c.v0, 1e-14) << c.name;
    }
    setVector(contact->normal, Vector3d::UnitX());
    approach(-0.25 * Vector3d::UnitX());
    build();
    EXPECT_EQ(rows().v0[0], 0) << "at the threshold itself";
}

TEST_F(ContactRowsTest, SlipFadesWithTheSquareOfTheSpeed) {
    setVector(contact->normal, Vector3d::UnitZ());
    setVector(contact->direction, Vector3d::UnitX());
    contact->slidingVelocityThreshold = 0.1;
    for (int axes = 1; axes <= 2; ++axes) { // one linear axis, then both
        material().options = Material::kOptionDirection;
        material().slip[0] = material().slip[1] = 2; // m/(N s)
        material().slide[0] = 1;
        use({0}, Material::kFrictionModelBox);
        if (axes == 2)
            use({1}, Material::kFrictionModelBox);
        const double slip = 2 / kStep;
        approach({1.05, 0, 0});
        build();
        EXPECT_EQ(rows().v0[1], 1);
        EXPECT_NEAR(rows().xepsilon[1], slip, 1e-12) << "near the belt's speed";
        approach({1.2, 0.05, 0});
        build();
        EXPECT_NEAR(rows().xepsilon[1], slip / 4, 1e-10);
        if (axes == 2) {
            EXPECT_NEAR(rows().xepsilon[2], slip, 1e-12);
        }
        EXPECT_EQ((contact->flags & kDynContactTwoAxes) != 0, axes == 2);
    }
}

TEST_F(ContactRowsTest, AStickingContactIntegratesItsSlip) {
    setVector(contact->normal, Vector3d::UnitZ());
    setVector(contact->direction, Vector3d::UnitX());
    use({0, 1}, Material::kFrictionModelBox);
    use({2}, Material::kFrictionModelBox);
    material().options = Material::kOptionDirection;
    material().slip[0] = 1;
    material().mIntegratedSlipDisplacementActivated = true;
    std::fill_n(material().boxMaxForce, 5, 10.0);
    std::fill_n(material().staticFrictionScale, 5, 1.5);
    contact->slidingVelocityThreshold = 1;
    approach({0.5, 0.25, 0}); // t2 = d x n = -y
    build();
    EXPECT_DOUBLE_EQ(contact->slip_displacement[0], 0.5 * kStep);
    EXPECT_DOUBLE_EQ(contact->slip_displacement[1], -0.25 * kStep);
    EXPECT_EQ(rows().phi[1], contact->slip_displacement[0]);
    EXPECT_EQ(contact->bclH.flags[1], kDynsRowLinear | kDynsRowPosition) << "global softness";
    EXPECT_EQ(rows().upper[2], 15);
    EXPECT_EQ(rows().upper[3], 10) << "angular axes wait for a match";
    const Vector3d stuckAt = vector(contact->posRel0);

    contact->flags |= kDynContactMatched;
    setVector(contact->cpos, vector(contact->cpos) + Vector3d(0.1, 0, 0));
    contact->bclH.dynamic_flags[3] = 0;
    build();
    EXPECT_DOUBLE_EQ(contact->slip_displacement[0], 2 * 0.5 * kStep);
    EXPECT_TRUE(vector(contact->posRel0) == stuckAt) << "where it began to stick";
    EXPECT_EQ(rows().upper[3], 15);
    contact->bclH.dynamic_flags[3] = kDyncRowAtBound;
    contact->bclH.gflag = 1;
    EXPECT_EQ(build(), 0) << "another partition has still to build it";
    contact->bclH.gflag = 0;
    build();
    EXPECT_DOUBLE_EQ(contact->slip_displacement[0], 3 * 0.5 * kStep) << "once a step";
    EXPECT_EQ(rows().upper[3], 10) << "slipped in the last step";

    contact->penetration = -0.01;
    build();
    EXPECT_DOUBLE_EQ(contact->slip_displacement[0], 0.5 * kStep) << "apart: begins anew";
    contact->penetration = 0;
    approach({1.5, 0, 0});
    build();
    EXPECT_EQ(contact->slip_displacement[0], 0);
    EXPECT_EQ(contact->bclH.flags[1] & kDynsRowPosition, 0);
    EXPECT_EQ(rows().upper[1], 10) << "no static scale while sliding";
    EXPECT_FALSE(vector(contact->posRel0) == stuckAt);

    material().mIntegratedSlipDisplacementActivated = false;
    approach({0.5, 0, 0});
    contact->slip_displacement[0] = 1;
    build();
    EXPECT_EQ(contact->slip_displacement[0], 0);
    EXPECT_EQ(rows().phi[1], 0);
}

TEST_F(ContactRowsTest, PointIsKeptInEachBodysFrame) {
    for (int axes = 0; axes < 3; ++axes) {
        material() = {};
        for (int a = 0; a < axes; ++a)
            material().model[a] = Material::kFrictionModelBox;
        contact->flags = 0;
        contact->tm1 = axes == 1 ? nullptr : &fixture.body[1].tm;
        build();
        Vector3d back = vector(fixture.body[0].tm[3]);
        for (int k = 0; k < 3; ++k)
            back += contact->posRel0[k] * vector(fixture.body[0].tm[k]);
        EXPECT_TRUE(back.isApprox(vector(contact->cpos), 1e-14)) << axes;
        if (axes == 1) {
            EXPECT_TRUE(vector(contact->posRel1) == vector(contact->cpos)) << "of the world";
        }
    }
}

TEST_F(ContactRowsTest, HugeBoundsStayFinite) {
    use({0, 1}, Material::kFrictionModelBox);
    std::fill_n(material().boxMaxForce, 5, kKitInfinity);
    std::fill_n(material().staticFrictionScale, 5, 2.0);
    contact->slidingVelocityThreshold = 1e9;
    build();
    EXPECT_EQ(rows().upper[1], kKitInfinity);
    EXPECT_EQ(rows().lower[1], -kKitInfinity);
}

TEST_F(ContactRowsTest, SlipVelocityIsToldForEachAxisWithARow) {
    setVector(contact->normal, Vector3d::UnitZ());
    setVector(contact->direction, Vector3d::UnitX());
    material().options = Material::kOptionDirection;
    use({1}, Material::kFrictionModelBox);
    approach({1, 2, 3});
    KitVector3 v;
    DyncContactGetSlipVelocity(contact.get(), v);
    EXPECT_NEAR(v[0], 3, 1e-15);
    EXPECT_EQ(v[1], 0);
    EXPECT_NEAR(v[2], -2, 1e-15);
    contact->bclH.tag = 0;
    DyncContactGetSlipVelocity(contact.get(), v);
    EXPECT_EQ(v[0], 0);
}

} // namespace
