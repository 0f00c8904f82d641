#include "JointFixture.h"

#include <Dync/DyncJointTags.h>

#include <gtest/gtest.h>

#include <functional>
#include <vector>

namespace {

struct Builder {
    const char* name;
    DyncAddConstraintFn add;
    int tag, rows;
    /// Shared, so that a record is deleted as what it was made.
    std::function<std::shared_ptr<DynBaseConstraint>(JointFixture&, double, bool, bool)> make;
};

template <typename Record>
Builder builder(const char* name, DyncAddConstraintFn add, int tag, int rows,
                std::function<void(Record&)> setUp = {}) {
    return {name, add, tag, rows, [tag, setUp](JointFixture& f, double turn, bool w0, bool w1) {
                std::shared_ptr<Record> joint = f.make<Record>(tag, 16, turn, 0.3, w0, w1);
                if constexpr (requires { joint->limit; }) {
                    joint->limits = joint->limit;
                    joint->iNumLimits = static_cast<int>(std::size(joint->limit));
                }
                if (setUp)
                    setUp(*joint);
                return joint;
            }};
}

/// Locks each coordinate at 0, so that its position appears as the error of a row.
template <typename Record>
void lockAll(Record& joint) {
    for (DyncLimit& limit : joint.limit)
        limit.currentControlState = kDynConstraintControlLockActive;
}

template <typename Record>
std::function<void(Record&)> withCoordinates(std::vector<DyncLimit> limits) {
    return [limits](Record& joint) {
        std::copy(limits.begin(), limits.end(), joint.limit);
        lockAll(joint);
    };
}

DyncLimit angular(int coord, int bodyRef) {
    DyncLimit limit;
    limit.type = kDynLimitTypeAngular;
    limit.coord = coord;
    limit.bodyRef = bodyRef;
    return limit;
}

DyncLimit linear(int coord, int bodyRef) {
    DyncLimit limit;
    limit.coord = coord;
    limit.bodyRef = bodyRef;
    return limit;
}

DyncLimit distance() {
    DyncLimit limit;
    limit.type = kDynLimitTypeDistance;
    return limit;
}

std::vector<Builder> builders() {
    const auto axes = [](int reference) {
        return [reference](auto& joint) { joint.linearAxisReferenceBody = reference; };
    };
    return {
        builder<DynBSJoint>("ball, world axes", DyncAddBSJoint, kDynTagBSJoint, 3),
        builder<DynBSJoint>("ball, axes of 0", DyncAddBSJoint, kDynTagBSJoint, 3, axes(0)),
        builder<DynBSJoint>("ball, axes of 1", DyncAddBSJoint, kDynTagBSJoint, 3, axes(1)),
        builder<DynHinge>("hinge", DyncAddHinge, kDynTagHinge, 6,
                          withCoordinates<DynHinge>({angular(0, 0)})),
        builder<DynHinge>("hinge seen from 1", DyncAddHinge, kDynTagHinge, 6,
                          withCoordinates<DynHinge>({angular(0, 1)})),
        builder<DynPrismatic>("prismatic", DyncAddPrismatic, kDynTagPrismatic, 6,
                              withCoordinates<DynPrismatic>({linear(0, 0)})),
        builder<DynPrismatic>("prismatic seen from 1", DyncAddPrismatic, kDynTagPrismatic, 6,
                              withCoordinates<DynPrismatic>({linear(0, 1)})),
        builder<DynCylindrical>("cylindrical", DyncAddCylindrical, kDynTagCylindrical, 6,
                                withCoordinates<DynCylindrical>({linear(0, 0), angular(0, 0)})),
        builder<DynUniversal>("universal", DyncAddUniversal, kDynTagUniversal, 6,
                              withCoordinates<DynUniversal>({angular(0, 0), angular(1, 1)})),
        builder<DynHomokinetic>("homokinetic", DyncAddHomokinetic, kDynTagHomokinetic, 4),
        builder<DynLinear1>("linear 1", DyncAddLinear1, kDynTagLinear1, 1),
        builder<DynLinear2>("linear 2", DyncAddLinear2, kDynTagLinear2, 2),
        builder<DynLinear3>("linear 3", DyncAddLinear3, kDynTagLinear3, 3),
        builder<DynAngular3>("angular 3", DyncAddAngular3, kDynTagAngular3, 3),
        builder<DynAngular3>("angular 3, turning", DyncAddAngular3, kDynTagAngular3, 2,
                             [](DynAngular3& joint) { joint.rotationEnabled = 1; }),
        builder<DynMotorJoint>("motor, angular", DyncAddMotorJoint, kDynTagMotor, 1,
                               withCoordinates<DynMotorJoint>({angular(0, 0)})),
        builder<DynMotorJoint>("motor, linear", DyncAddMotorJoint, kDynTagMotor, 1,
                               withCoordinates<DynMotorJoint>({linear(2, 1)})),
        builder<DynA1P3Joint>("one angle, three positions", DyncAddA1P3Joint, kDynTagA1P3, 6,
                              withCoordinates<DynA1P3Joint>(
                                  {angular(0, 0), linear(0, 0), linear(1, 0), linear(2, 0)})),
        builder<DynA2P3Joint>(
            "two angles, three positions", DyncAddA2P3Joint, kDynTagA2P3, 6,
            withCoordinates<DynA2P3Joint>(
                {angular(0, 0), angular(1, 1), linear(0, 0), linear(1, 0), linear(2, 0)})),
        builder<DynDistance>("distance", DyncAddDistance, kDynTagDistance, 1),
        builder<DynDoubleHinge>(
            "double hinge", DyncAddDoubleHinge, kDynTagDoubleHinge, 6,
            withCoordinates<DynDoubleHinge>({distance(), angular(0, 0), angular(0, 1)})),
        builder<DynBaseConstraint>("lock", DyncAddLockJoint, kDynTagHinge, 6),
    };
}

/// Slope of each row's error over time, by central differences.
std::vector<double> errorRates(JointFixture& f, const Builder& builder, DynBaseConstraint& joint) {
    constexpr double kStep = 1e-6;
    std::vector<double> rates(static_cast<std::size_t>(builder.rows));
    for (const double sign : {-1.0, 1.0}) {
        f.move(sign * kStep);
        f.build(builder.add, joint);
        for (int row = 0; row < builder.rows; ++row)
            rates[static_cast<std::size_t>(row)] += sign * f.rows->phi[row] / (2 * kStep);
        f.move(-sign * kStep);
    }
    return rates;
}

// Each row's Jacobian is the derivative of its error, far from zero error and in every arrangement of
// bodies and world. The rotation about the axis is measured in the axis' own frame while the frames
// are aligned; so angles of frames that are turned against each other are looked at near alignment.
TEST(JointRowsTest, JacobianIsTheDerivativeOfTheError) {
    for (const Builder& builder : builders())
        for (unsigned seed = 1; seed <= 8; ++seed)
            for (const int world : {-1, 0, 1}) {
                SCOPED_TRACE(testing::Message()
                             << builder.name << ", seed " << seed << ", world in slot " << world);
                JointFixture f(seed);
                const auto joint = builder.make(f, 1e-5, world == 0, world == 1);
                ASSERT_EQ(f.build(builder.add, *joint), builder.rows);
                std::vector<double> expected;
                for (int row = 0; row < builder.rows; ++row)
                    expected.push_back(f.rate(row));
                const std::vector<double> measured = errorRates(f, builder, *joint);
                for (int row = 0; row < builder.rows; ++row)
                    EXPECT_NEAR(expected[static_cast<std::size_t>(row)],
                                measured[static_cast<std::size_t>(row)], 3e-4)
                        << "row " << row;
            }
}

// The equations proper are exact at any misalignment.
TEST(JointRowsTest, EquationsAreExactFarFromAlignment) {
    const auto isExact = [](const Builder& b) {
        return b.tag == kDynTagBSJoint || b.tag == kDynTagHomokinetic || b.tag == kDynTagLinear1 ||
               b.tag == kDynTagLinear2 || b.tag == kDynTagLinear3 || b.tag == kDynTagAngular3 ||
               b.tag == kDynTagPrismatic || b.tag == kDynTagDistance ||
               std::string(b.name) == "lock";
    };
    for (const Builder& builder : builders())
        for (unsigned seed = 11; isExact(builder) && seed <= 18; ++seed) {
            SCOPED_TRACE(testing::Message() << builder.name << ", seed " << seed);
            JointFixture f(seed);
            const auto joint = builder.make(f, 0.7, false, false);
            ASSERT_EQ(f.build(builder.add, *joint), builder.rows);
            std::vector<double> expected;
            for (int row = 0; row < builder.rows; ++row)
                expected.push_back(f.rate(row));
            const std::vector<double> measured = errorRates(f, builder, *joint);
            for (int row = 0; row < builder.rows; ++row)
                EXPECT_NEAR(expected[static_cast<std::size_t>(row)],
                            measured[static_cast<std::size_t>(row)], 1e-6)
                    << "row " << row;
        }
}

// A body that acts as kinematic leaves the rows and moves into their targets.
TEST(JointRowsTest, KinematicBodyBecomesATargetSpeed) {
    JointFixture f(21);
    const auto joint = f.make<DynHinge>(kDynTagHinge, 13, 0.1, 0.1);
    joint->limits = joint->limit;
    f.build(DyncAddHinge, *joint);
    std::vector<double> whole;
    for (int row = 0; row < 5; ++row)
        whole.push_back(f.rate(row) - f.rows->v0[row]);
    for (const int slot : {0, 1})
        for (const bool strongest : {true, false}) {
            DyncConstraintHeader& head = joint->bclH;
            const DyncConstraintHeader saved = head;
            if (strongest)
                head.strongestSolverBody = head.b[slot];
            else
                head.b[slot] = nullptr;
            f.build(DyncAddHinge, *joint);
            EXPECT_EQ(f.rows->n_g_blocks, 1);
            EXPECT_EQ(f.rows->g_bodies[0], &f.body[1 - slot]);
            for (int row = 0; row < 5; ++row)
                EXPECT_NEAR(f.rate(row) - f.rows->v0[row], whole[static_cast<std::size_t>(row)],
                            1e-12);
            head = saved;
        }
}

// Without a body that the partition moves nothing is pushed, and none is reported; a frozen one rests.
TEST(JointRowsTest, RowsOfNoKnownBodyAreNotReported) {
    JointFixture f(22);
    const auto joint = f.make<DynHinge>(kDynTagHinge, 13, 0.1, 0.1);
    joint->limits = joint->limit;
    DyncConstraintHeader& head = joint->bclH;
    head.strongestSolverBody = head.b[0];
    head.velocity[0] = nullptr;
    EXPECT_EQ(f.build(DyncAddHinge, *joint), 5);
    EXPECT_EQ(f.rows->v0[0], 0);
    f.body[1].localPartition = 7; // of another partition
    EXPECT_EQ(f.build(DyncAddHinge, *joint), 0);
    EXPECT_EQ(f.rows->n_constraints, 0);
    head.b[1] = nullptr;
    EXPECT_EQ(f.build(DyncAddHinge, *joint), 0);
}

TEST(JointRowsTest, FastSpinKeepsTheSpinOutOfTheRows) {
    for (const int fast : {0, 1}) {
        JointFixture f(31);
        const auto joint = f.make<DynHinge>(kDynTagHinge, 13, 1e-3, 0);
        joint->limits = joint->limit;
        f.body[fast].flags = kDynsBodyFastSpinAxis;
        ASSERT_EQ(f.build(DyncAddHinge, *joint), 5);
        // A spin about the axis that the body carries changes none of the orientation rows.
        const DyncWorldFrames frames = DyncGetWorldFrames(*joint);
        for (int i = 0; i < 2; ++i)
            for (int k = 0; k < 3; ++k) {
                f.body[i].vel[k] = 0;
                f.body[i].velrot[k] = i == fast ? frames.w[fast].axis(0)[k] * 1000 : 0;
            }
        EXPECT_NEAR(f.rate(3), 0, 1e-9);
        EXPECT_NEAR(f.rate(4), 0, 1e-9);
    }
}

TEST(JointRowsTest, RopeAndConeActOneWayAndOnlyWhenNeeded) {
    JointFixture f(41);
    const auto rope = f.make<DynDistance>(kDynTagDistance, 7, 0.5, 0.5);
    const double length = DyncGetWorldFrames(*rope).d01.norm();
    rope->distance = length;
    EXPECT_EQ(f.build(DyncAddDistance, *rope), 0);
    rope->distance = std::nextafter(length, 0);
    EXPECT_EQ(f.build(DyncAddDistance, *rope), 1);
    EXPECT_EQ(f.rows->upper[0], 0);
    EXPECT_EQ(f.rows->lower[0], -kKitInfinity);

    const auto cone = f.make<DynConeLimit>(kDynTagConeLimit, 7, 0.8, 0);
    const DyncWorldFrames frames = DyncGetWorldFrames(*cone);
    const double angle = std::acos(frames.w[0].axis(0).dot(frames.w[1].axis(0)));
    struct Case {
        double halfAngle;
        int rows;
        double phi, lower, upper;
    };
    const double pi = std::numbers::pi;
    const Case cases[] = {{pi, 0, 0, 0, 0},
                          {angle + 0.01, 0, 0, 0, 0},
                          {angle - 0.01, 1, -0.01, 0, kKitInfinity},
                          {-(pi - angle + 0.01), 0, 0, 0, 0},
                          {-(pi - angle - 0.01), 1, 0.01, -kKitInfinity, 0}};
    for (const Case& c : cases) {
        cone->cone_half_angle = c.halfAngle;
        cone->cosine = std::cos(c.halfAngle);
        ASSERT_EQ(f.build(DyncAddConeLimit, *cone), c.rows) << c.halfAngle;
        if (c.rows == 0)
            continue;
        EXPECT_NEAR(f.rows->phi[0], c.phi, 1e-9);
        EXPECT_EQ(f.rows->lower[0], c.lower);
        EXPECT_EQ(f.rows->upper[0], c.upper);
    }
}

} // namespace
