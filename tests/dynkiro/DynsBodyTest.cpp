#include <Dyns/DynsBody.h>

#include <Kit/KitMath.h>
#include <Kit/KitMessage.h>

#include <Eigen/Dense>
#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <random>

namespace {

using Eigen::Matrix3d;
using Eigen::Vector3d;
constexpr double kPi = std::numbers::pi;
constexpr double kRounding = 1e-13;

Vector3d vectorOf(const KitVector4 v) {
    return {v[0], v[1], v[2]};
}

void assign(KitVector4 to, const Vector3d& v) {
    KitVector3Set(to, v[0], v[1], v[2]);
}

// Rows of the stored rotation are the images of the axes: the transpose of the usual matrix.
Matrix3d rotationOf(const DynsBody& body) {
    Matrix3d R;
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j)
            R(j, i) = body.tm[i][j];
    return R;
}

Matrix3d blockOf(const KitReal m[3][4]) {
    Matrix3d M;
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j)
            M(i, j) = m[i][j];
    return M;
}

void assign(KitReal to[3][4], const Matrix3d& M) {
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j)
            to[i][j] = M(i, j);
}

DynsBody makeBody(double mass, const Matrix3d& inertia) {
    DynsBody body{};
    KitMatrix4SetIdentity(body.tm);
    KitQuaternionSetIdentity(body.qrot);
    KitVector3Set(body.fastSpinAxis, 1, 0, 0);
    body.invmass = body._i0[0][3] = 1 / mass;
    body._i0[3][3] = mass;
    assign(body._i0, inertia);
    assign(body._i0 + 3, inertia.inverse());
    return body;
}

Matrix3d makeInertia(double a, double b, double c) {
    return Vector3d(a, b, c).asDiagonal();
}

void turn(DynsBody& body, const Vector3d& rotationVector) {
    KitVector3 w = {rotationVector[0], rotationVector[1], rotationVector[2]};
    KitQuaternionFiniteRotation(body.qrot, w, 1);
    DynsBody* bodies[] = {&body};
    body_update_rotation(bodies, 1);
}

// One step of a body without constraints, as a solver frames it: the inertia that is implicit in
// damping and in the gyroscopic term, the accelerations, the integration.
void step(DynsBody& body, double h) {
    DynsBody* bodies[] = {&body};
    body_update_inertia_tensor(bodies, 1, false);
    body_update_momentum(bodies, 1);
    const Vector3d L = vectorOf(body.angularMomentum);
    Matrix3d S;
    S << 0, -L[2], L[1], L[2], 0, -L[0], -L[1], L[0], 0;
    const Matrix3d A = blockOf(body._I) - h * h * S * blockOf(body._invI) * S +
                       h * body.angular_damping * Matrix3d::Identity();
    assign(body.inverse_massmatrix, A.inverse());
    body.inverse_massmatrix[0][3] = 1 / (1 / body.invmass + h * body.linear_damping);
    add_non_inertial_forces(bodies, 1, 1);
    body_update_accelerations(bodies, 1);
    DynsBodyIntegrate(&body, h);
    for (KitReal* load : {body.force, body.torque})
        KitVector3Zero(load);
}

Vector3d momentumOf(DynsBody& body) {
    DynsBody* bodies[] = {&body};
    body_update_inertia_tensor(bodies, 1, false);
    return blockOf(body._I) * vectorOf(body.velrot);
}

double angleBetween(const Vector3d& a, const Vector3d& b) {
    return std::atan2(a.cross(b).norm(), a.dot(b));
}

} // namespace

// A free body keeps its angular momentum; the other sign of the gyroscopic torque lets it swing.
TEST(DynsBodyTest, FreeTopKeepsItsMomentum) {
    struct Case {
        const char* name;
        Matrix3d inertia;
        Vector3d spin; // rad/s
        double seconds, maxAngle;
    };
    const Case cases[] = {
        {"about the intermediate axis", makeInertia(1, 2, 3), {0.01, 3, 0.02}, 20, 0.05},
        {"fast coin", makeInertia(1, 1, 1.9), {0.3, 0, 30}, 20, 0.05},
        {"rod", makeInertia(0.05, 1, 1), {20, 2, 0}, 20, 0.05},
    };
    const double h = 1.0 / 600;
    for (const Case& c : cases) {
        DynsBody body = makeBody(1, c.inertia);
        assign(body.velrot, c.spin);
        turn(body, {0.3, -0.2, 0.9});
        const Vector3d before = momentumOf(body);
        for (int i = 0; i < c.seconds / h; ++i)
            step(body, h);
        const Vector3d after = momentumOf(body);
        EXPECT_LT(angleBetween(before, after), c.maxAngle) << c.name;
        EXPECT_NEAR(after.norm(), before.norm(), 0.05 * before.norm()) << c.name;
    }
}

// A step of angle θ = |ω| h turns by 2 atan(θ/2), by θ, and by 4 atan(θ/4).
TEST(DynsBodyTest, MethodsTurnByTheirAngles) {
    const Vector3d w = Vector3d(1, -2, 2) * 0.7; // |w| = 2.1 rad/s
    const double h = 0.4, theta = 2.1 * h;
    const double angles[] = {2 * std::atan(theta / 2), theta, 4 * std::atan(theta / 4)};
    for (int method = 1; method <= 3; ++method) {
        DynsBody body = makeBody(1, makeInertia(1, 1, 1)), *bodies[] = {&body};
        turn(body, {0.5, 0.1, -1.2});
        const Matrix3d before = rotationOf(body);
        assign(body.velrot, w);
        body_update_quaternion(bodies, 1, h, method);
        body_update_rotation(bodies, 1);
        const double angle = angles[method - 1];
        const Matrix3d expected =
            Eigen::AngleAxisd(angle, w.normalized()).toRotationMatrix() * before;
        EXPECT_LT((rotationOf(body) - expected).norm(), kRounding) << "method " << method;
        EXPECT_NEAR(KitQuaternionDot(body.qrot, body.qrot), 1, kRounding) << "method " << method;
    }
}

// Spin along the fast axis is exact by any method, the rest is integrated beside it.
TEST(DynsBodyTest, FastSpinIsExact) {
    const double h = 1.0 / 60, spin = 500;
    for (int method = 1; method <= 3; ++method) {
        DynsBody body = makeBody(1, makeInertia(1, 1, 1)), *bodies[] = {&body};
        turn(body, {0.5, 0.1, -1.2});
        body.flags |= kDynsBodyFastSpinAxis;
        assign(body.fastSpinAxis, {0, 0.6, 0.8});
        const Matrix3d before = rotationOf(body);
        const Vector3d axis = before * Vector3d(0, 0.6, 0.8);
        assign(body.velrot, spin * axis);
        body_update_quaternion(bodies, 1, h, method);
        body_update_rotation(bodies, 1);
        const Matrix3d expected = Eigen::AngleAxisd(spin * h, axis).toRotationMatrix() * before;
        EXPECT_LT((rotationOf(body) - expected).norm(), 1e-11) << "method " << method;
        EXPECT_EQ(vectorOf(body.velrot), spin * axis);
    }
}

TEST(DynsBodyTest, UnknownMethodIsFatal) {
    DynsBody body = makeBody(1, makeInertia(1, 1, 1)), *bodies[] = {&body};
    EXPECT_EXIT(body_update_quaternion(bodies, 1, 0.1, 4), testing::ExitedWithCode(1),
                "body_update_quaternion:: No such method : 4");
}

TEST(DynsBodyTest, WorldInertiaTurnsWithTheBody) {
    const unsigned seed = 7;
    std::mt19937 random(seed);
    std::uniform_real_distribution<double> uniform(-1, 1);
    for (int i = 0; i < 100; ++i) {
        Matrix3d M;
        for (double& entry : M.reshaped())
            entry = uniform(random);
        const Matrix3d inertia = M * M.transpose() + 0.1 * Matrix3d::Identity();
        DynsBody body = makeBody(2, inertia), *bodies[] = {&body};
        turn(body, kPi * Vector3d(uniform(random), uniform(random), uniform(random)));
        const Matrix3d R = rotationOf(body);

        body_update_inertia_tensor(bodies, 1, false);
        EXPECT_LT((blockOf(body._I) - R * inertia * R.transpose()).norm(), 1e-13) << seed;
        EXPECT_LT((blockOf(body._I) * blockOf(body._invI) - Matrix3d::Identity()).norm(), 1e-9);
        EXPECT_EQ(blockOf(body._I), blockOf(body._I).transpose()) << seed;
        EXPECT_EQ(body._I[0][3], 2);
        EXPECT_EQ(body._invI[0][3], 0.5);

        for (const bool byFlag : {false, true}) {
            body.flags = byFlag ? kDynsBodySphericalInertia : 0;
            body_update_inertia_tensor(bodies, 1, !byFlag);
            const double mean = inertia.trace() / 3;
            EXPECT_LT((blockOf(body._I) - mean * Matrix3d::Identity()).norm(), 1e-14);
            EXPECT_LT((blockOf(body._invI) - Matrix3d::Identity() / mean).norm(), 1e-14 / mean);
        }
    }
}
