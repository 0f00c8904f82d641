#include <Hy/HyMassProperties.h>
#include <Hy/HyPart.h>
#include <Hy/HyQuaternion.h>

#include "MessageCapture.h"

#include <Eigen/Dense>
#include <gtest/gtest.h>

#include <limits>
#include <random>
#include <string>
#include <vector>

using namespace Hy;

namespace {

constexpr HyReal kNaN = std::numeric_limits<HyReal>::quiet_NaN();
constexpr HyReal kInfinite = std::numeric_limits<HyReal>::infinity();

class HyMassPropertiesTest : public testing::Test {
protected:
    static constexpr unsigned kSeed = 20240611;
    MessageCapture messages;
    HyReal random(HyReal low, HyReal high) {
        return std::uniform_real_distribution<HyReal>(low, high)(mEngine);
    }
    HyVector3 randomVector(HyReal size) {
        return {random(-size, size), random(-size, size), random(-size, size)};
    }
    HyTransform randomTransform(HyReal size) {
        return HyTransform(
            HyQuaternion(random(-1, 1), random(-1, 1), random(-1, 1), random(0.1, 1)),
            randomVector(size));
    }

private:
    std::mt19937 mEngine{kSeed};
    testing::ScopedTrace mSeed{__FILE__, __LINE__, "seed " + std::to_string(kSeed)};
};

struct PointMass {
    HyReal mass;
    HyVector3 position;
};
using Cloud = std::vector<PointMass>;

Eigen::Vector3d toEigen(const HyVector3& v) {
    return {v[0], v[1], v[2]};
}

Eigen::Matrix3d toEigen(const HyReal m[3][3]) {
    Eigen::Matrix3d out;
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j)
            out(i, j) = m[i][j];
    return out;
}

/// Mass, centre and tensor of point masses, summed from the definition.
struct Oracle {
    double mass = 0;
    Eigen::Vector3d centre = Eigen::Vector3d::Zero();
    Eigen::Matrix3d tensor = Eigen::Matrix3d::Zero();

    explicit Oracle(const Cloud& cloud) {
        for (const PointMass& point : cloud) {
            mass += point.mass;
            centre += point.mass * toEigen(point.position);
        }
        centre /= mass;
        for (const PointMass& point : cloud) {
            const Eigen::Vector3d r = toEigen(point.position) - centre;
            tensor +=
                point.mass * (r.squaredNorm() * Eigen::Matrix3d::Identity() - r * r.transpose());
        }
    }
    void expectEqual(const HyMassProperties& value, double size) const {
        const double kRounding = 1e-12;
        EXPECT_NEAR(value.getMass(), mass, kRounding * mass);
        KitMatrix3 absolute;
        value.getInertiaTensorAbsolute(absolute);
        EXPECT_LE((toEigen(value.getCOMPositionAbsolute()) - centre).norm(), kRounding * size);
        EXPECT_LE((toEigen(absolute) - tensor).norm(), kRounding * mass * size * size);
    }
};

/// The properties of a cloud in a reference frame, from the definition.
HyMassProperties propertiesOf(const Cloud& cloud, const HyTransform* reference) {
    Cloud local = cloud;
    if (reference) {
        for (PointMass& point : local)
            point.position = reference->inverseTransform(point.position);
    }
    const Oracle oracle(local);
    HyMassProperties value(reference);
    value.setMass(oracle.mass);
    value.setCOMPositionLocal({oracle.centre[0], oracle.centre[1], oracle.centre[2]});
    KitMatrix3 tensor;
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j)
            tensor[i][j] = oracle.tensor(i, j);
    value.setInertiaTensorLocal(tensor);
    return value;
}

void append(Cloud& to, const Cloud& from) {
    to.insert(to.end(), from.begin(), from.end());
}

TEST_F(HyMassPropertiesTest, CompositeBodiesAreTheSumOfTheirPoints) {
    constexpr double kSize = 10; // m
    for (int round = 0; round < 200; ++round) {
        const HyTransform frames[] = {randomTransform(kSize), randomTransform(kSize)};
        const HyTransform* first = round % 3 == 0 ? nullptr : &frames[0];
        const HyTransform* second = round % 4 == 0 ? nullptr : &frames[1];
        Cloud a, b;
        for (int i = 0; i < 6; ++i) {
            a.push_back({random(0.1, 2), randomVector(kSize)});
            b.push_back({random(0.1, 2), randomVector(kSize)});
        }
        Cloud both = a;
        append(both, b);
        HyMassProperties sum = propertiesOf(a, first);
        sum += propertiesOf(b, second);
        Oracle(both).expectEqual(sum, kSize);
        EXPECT_EQ(sum.getHasIdentityReferenceFrame(), !first);

        // The way back, and the same body taken from the whole by its relative frame.
        HyMassProperties back = sum;
        back -= propertiesOf(b, second);
        Oracle(a).expectEqual(back, kSize);
        const HyTransform relative = (second ? *second : HyTransform::kIdentity) *
                                     (first ? *first : HyTransform::kIdentity).inverse();
        sum.subtractMassProperties(propertiesOf(b, second), relative);
        Oracle(a).expectEqual(sum, kSize);
        sum.addMassProperties(propertiesOf(b, second), relative);
        Oracle(both).expectEqual(sum, kSize);

        HyMassProperties nothing(first); // the first body of an empty sum
        nothing += propertiesOf(b, second);
        Oracle(b).expectEqual(nothing, kSize);
        nothing += nothing; // twice as heavy in the same place
        append(b, b);
        Oracle(b).expectEqual(nothing, kSize);
    }
    EXPECT_EQ(messages.take(), "");
}

TEST_F(HyMassPropertiesTest, TwoPointMassesMakeADumbbell) {
    HyMassProperties a, b;
    a.setMass(2);
    b.setMass(2);
    a.setCOMPositionLocal({-1, 0, 0});
    b.setCOMPositionLocal({1, 0, 0});
    a += b;
    EXPECT_EQ(a.getMass(), 4);
    EXPECT_EQ(a.getCOMPositionLocal(), HyVector3(0, 0, 0));
    const HyReal expected[3][3] = {{0, 0, 0}, {0, 4, 0}, {0, 0, 4}};
    EXPECT_EQ(toEigen(a.getInertiaTensorLocal()), toEigen(expected));

    HyMassProperties massless; // changes nothing, wherever it is
    massless.setCOMPositionLocal({5, 5, 5});
    massless.setInertiaTensorLocal(expected);
    const HyMassProperties before = a;
    a += massless;
    a -= massless;
    a.addMassProperties(massless, HyTransform(HyVector3(1, 2, 3)));
    EXPECT_EQ(a.getMass(), before.getMass());
    EXPECT_EQ(a.getCOMPositionLocal(), before.getCOMPositionLocal());
    EXPECT_EQ(toEigen(a.getInertiaTensorLocal()), toEigen(expected));
    EXPECT_EQ(messages.take(), "");
}

TEST_F(HyMassPropertiesTest, NothingIsLeftOfAWholeTakenFromItself) {
    HyMassProperties whole = propertiesOf({{1, {1, 2, 3}}, {0.3, {4, 5, 7}}}, nullptr);
    HyMassProperties part = propertiesOf({{0.1, {3, 2, 1}}}, nullptr);
    HyMassProperties rest = whole;
    for (int i = 0; i < 10; ++i)
        rest += part; // 0.1 is rounded, so that the difference below is not exactly 0
    for (int i = 0; i < 10; ++i)
        rest -= part;
    rest -= whole;
    EXPECT_EQ(rest.getMass(), 0);
    EXPECT_TRUE(rest.getCOMTransformLocal() == HyTransform::kIdentity);
    EXPECT_EQ(toEigen(rest.getInertiaTensorLocal()).norm(), 0);
    EXPECT_EQ(messages.take(), "");

    const auto expectRefusal = [&](auto operation, const std::string& warning) {
        HyMassProperties value = part;
        operation(value);
        EXPECT_EQ(messages.take(), "HyWarning{0}: HyMassProperties::" + warning + "\n");
        EXPECT_EQ(value.getMass(), part.getMass());
        EXPECT_EQ(value.getCOMPositionLocal(), part.getCOMPositionLocal());
        EXPECT_EQ(toEigen(value.getInertiaTensorLocal()), toEigen(part.getInertiaTensorLocal()));
    };
    using Value = HyMassProperties;
    HyTransform broken;
    broken.m[3][1] = kNaN;
    expectRefusal([](Value& v) { v -= v; }, "operator-=: can't subtract self.");
    expectRefusal([](Value& v) { v.subtractMassProperties(v, HyTransform::kIdentity); },
                  "subtractMassProperties: can't subtract self.");
    expectRefusal([&](Value& v) { v -= whole; }, "operator-=: the mass must not become negative.");
    expectRefusal([&](Value& v) { v.addMassProperties(whole, broken); },
                  "addMassProperties: relativeTM must be finite.");
    expectRefusal([](Value& v) { v.setMass(-1); },
                  "setMass: mass must be finite and not negative.");
    expectRefusal([](Value& v) { v.setMass(kNaN); },
                  "setMass: mass must be finite and not negative.");
    expectRefusal([](Value& v) { v.scaleInertiaTensor(-2); },
                  "scaleInertiaTensor: scale must be finite and not negative.");
    expectRefusal(
        [](Value& v) {
            v.setCOMPositionLocal({kInfinite, 0, 0});
        },
        "setCOMPositionLocal: the position must be finite.");
    expectRefusal(
        [](Value& v) {
            v.setCOMPositionAbsolute({kNaN, 0, 0});
        },
        "setCOMPositionAbsolute: the position must be finite.");
    expectRefusal([&](Value& v) { v.setCOMTransformLocal(broken); },
                  "setCOMTransformLocal: the transform must be finite.");
    const HyReal bad[3][3] = {{1, 0, 0}, {0, kNaN, 0}, {0, 0, 1}};
    expectRefusal([&](Value& v) { v.setInertiaTensorLocal(bad); },
                  "setInertiaTensorLocal: the tensor must be finite.");

    Value large = whole;
    large.scaleInertiaTensor(1e308);
    EXPECT_EQ(messages.take(),
              "HyWarning{0}: HyMassProperties::scaleInertiaTensor: the inertia tensor "
              "must stay finite.\n");
    EXPECT_EQ(toEigen(large.getInertiaTensorLocal()), toEigen(whole.getInertiaTensorLocal()));
}

TEST_F(HyMassPropertiesTest, FollowsItsReferenceFrame) {
    HyTransform frame = randomTransform(3);
    HyMassProperties value(&frame);
    value.setCOMPositionAbsolute({1, 2, 3});
    EXPECT_LE(value.getCOMPositionAbsolute().distance({1, 2, 3}), 1e-14);
    frame.t() += HyVector3(0, 0, 5);
    HyVector3 position;
    value.getCOMPositionAbsolute(position);
    EXPECT_LE(position.distance({1, 2, 8}), 1e-14);
    value.getCOMPositionLocal(position);
    EXPECT_LE(frame.transform(position).distance({1, 2, 8}), 1e-14);

    HyMassProperties other; // a copy of the numbers in another frame
    other.copy(value);
    EXPECT_TRUE(other.getHasIdentityReferenceFrame());
    EXPECT_EQ(other.getCOMPositionAbsolute(), value.getCOMPositionLocal());

    const HyReal tensor[3][3] = {{1, 0.5, 0}, {0.5, 2, 0}, {0, 0, 3}};
    value.setInertiaTensorLocal(tensor);
    value.scaleInertiaTensor(2);
    KitMatrix3 scaled;
    value.getInertiaTensorLocal(scaled);
    EXPECT_EQ(toEigen(scaled), 2 * toEigen(tensor));
}

TEST_F(HyMassPropertiesTest, OrthogonalTensorIsDiagonalInItsFrame) {
    for (int round = 0; round < 100; ++round) {
        const HyTransform frame = randomTransform(5);
        Cloud cloud;
        for (int i = 0; i < 2 + round % 4; ++i)
            cloud.push_back({random(0.1, 2), randomVector(2)});
        const HyMassProperties value = propertiesOf(cloud, round % 2 ? &frame : nullptr);
        HyTransform principal;
        HyVector3 moments;
        KitMatrix3 diagonal;
        value.getOrthogonalInertiaTensor(moments, principal);
        value.getOrthogonalInertiaTensor(diagonal, principal);
        EXPECT_EQ(toEigen(diagonal), Eigen::Matrix3d(toEigen(moments).asDiagonal()));
        EXPECT_TRUE(principal.isValid()); // right-handed too
        EXPECT_EQ(principal.t(), value.getCOMPositionAbsolute());
        Eigen::Matrix3d rebuilt = Eigen::Matrix3d::Zero();
        for (int i = 0; i < 3; ++i)
            rebuilt +=
                moments[i] * toEigen(principal.axis(i)) * toEigen(principal.axis(i)).transpose();
        EXPECT_LE((rebuilt - Oracle(cloud).tensor).norm(), 1e-12 * rebuilt.norm());
    }

    const HyTransform frame = randomTransform(5);
    HyMassProperties value(&frame); // moments out of order stay so, in the reference's axes
    const HyReal tensor[3][3] = {{3, 1e-15, 0}, {1e-15, 5, 0}, {0, 0, 4}};
    value.setInertiaTensorLocal(tensor);
    value.setCOMPositionLocal({1, 2, 3});
    HyTransform principal;
    HyVector3 moments;
    value.getOrthogonalInertiaTensor(moments, principal);
    EXPECT_EQ(moments, HyVector3(3, 5, 4));
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(principal.axis(i), frame.axis(i));
    EXPECT_EQ(principal.t(), frame.transform({1, 2, 3}));
}

/// A tensor of given moments about random axes.
void turn(const HyTransform& axes, const HyVector3& moments, HyReal out[3][3]) {
    for (int i = 0; i < 3; ++i) {
        for (int j = 0; j < 3; ++j) {
            out[i][j] = 0;
            for (int k = 0; k < 3; ++k)
                out[i][j] += moments[k] * (axes.m[k][i] * axes.m[k][j]);
        }
    }
}

TEST_F(HyMassPropertiesTest, MakeValidLeavesMomentsThatABodyCanHave) {
    struct Case {
        const char* name;
        HyVector3 moments, expected; ///< by rising size
    };
    const Case cases[] = {
        {"sphere", {1, 1, 1}, {1, 1, 1}},
        {"lamina", {1, 2, 3}, {1, 2, 3}},
        {"too large a moment", {1, 1, 3}, {1, 1, 1}},
        {"thin rod", {0.001, 1, 1}, {0.01, 1, 1}},
        {"rod of 20 radii", {0.0147, 1, 1}, {0.0147, 1, 1}},
        {"negative moment", {-1, 2, 2}, {0.02, 2, 2}},
        {"lifted, then too large", {0, 0.5, 1}, {0.01, 0.5, 0.5}},
        {"nothing", {0, 0, 0}, {0, 0, 0}},
    };
    for (const Case& c : cases) {
        for (int round = 0; round < 50; ++round) {
            KitMatrix3 tensor;
            turn(round ? randomTransform(0) : HyTransform::kIdentity, c.moments, tensor);
            const Eigen::Matrix3d before = toEigen(tensor);
            HyMassProperties value;
            value.setInertiaTensorLocal(tensor);
            EXPECT_EQ(value.makeValidInertiaTensor(), c.moments != c.expected) << c.name;
            const Eigen::Matrix3d after = toEigen(value.getInertiaTensorLocal());
            EXPECT_EQ(after == before, c.moments == c.expected) << c.name; // to the bit
            const Eigen::Vector3d moments =
                Eigen::SelfAdjointEigenSolver<Eigen::Matrix3d>(after).eigenvalues();
            EXPECT_LE((moments - toEigen(c.expected)).norm(), 1e-14 * before.norm()) << c.name;
            EXPECT_EQ(after, after.transpose()) << c.name;
            EXPECT_LE((after * before - before * after).norm(), 1e-13) << c.name; // same axes
            EXPECT_FALSE(value.makeValidInertiaTensor()) << c.name;
        }
    }
    EXPECT_EQ(messages.take(), "");
    KitMatrix3 bad = {{kNaN, 0, 0}, {0, 1, 0}, {0, 0, 1}};
    EXPECT_FALSE(HyMassProperties::makeValidInertiaTensor(bad));
    KitMatrix3 negative = {{-1, 0, 0}, {0, -2, 0}, {0, 0, -3}};
    EXPECT_FALSE(HyMassProperties::makeValidInertiaTensor(negative));
    EXPECT_EQ(negative[0][0], -1);
    EXPECT_NE(messages.take(), "");
}

} // namespace
