#include "SolverFixture.h"

#include <cmath>

namespace {

struct Top {
    DynsBody body = makeBody();
    DynsBody* pointer = &body;

    Top() { setBodyInertia(body, 2, {1, 2, 2.5}); }

    void prepare() {
        body_update_inertia_tensor(&pointer, 1, false);
        body_update_momentum(&pointer, 1);
    }
    Eigen::Vector3d omega() const { return Eigen::Map<const Eigen::Vector3d>(body.velrot); }
    Eigen::Vector3d momentum() const { return tensorOf(body._I) * omega(); }
    double energy() const { return 0.5 * omega().dot(momentum()); }
};

} // namespace

TEST(MassMatrixTest, DampingActsImplicitly) {
    Top top;
    top.body.linear_damping = 2;
    top.body.angular_damping = 3;
    setBodyInertia(top.body, 1, {1, 2, 2.5});
    top.prepare();
    FrameParameters frame(0.5);
    const MassMatrix* plain = mass_matrix_build_inverse(&frame.p, &top.pointer, 1, 0);
    EXPECT_EQ(plain->invmass, 0.5);
    EXPECT_EQ(top.body.inverse_massmatrix[0][3], 0.5);
    const double moments[] = {1, 2, 2.5};
    for (int i = 0; i < 3; ++i)
        EXPECT_NEAR(top.body.inverse_massmatrix[i][i], 1 / (moments[i] + 1.5), 1e-15);
}

// Without momentum there is nothing to stabilise; with it the inertia can only become stiffer.
TEST(MassMatrixTest, StabilizedInverse) {
    std::mt19937_64 random(11);
    DynsBody body = makeRandomBody(random);
    DynsBody* pointer = &body;
    body.angular_damping = 0.3;
    FrameParameters frame(0.02);
    body_update_inertia_tensor(&pointer, 1, false);
    const MassMatrix* still = mass_matrix_build_stabilized_inverse(&pointer, 1, &frame.p, 1);
    const Matrix3 atRest = tensorOf(body.inverse_massmatrix);
    (void)mass_matrix_build_inverse(&frame.p, &pointer, 1, 0);
    EXPECT_LT((atRest - tensorOf(body.inverse_massmatrix)).norm(), 1e-15);
    EXPECT_EQ(still->invmass, body.inverse_massmatrix[0][3]);

    body_update_momentum(&pointer, 1);
    (void)mass_matrix_build_stabilized_inverse(&pointer, 1, &frame.p, 1);
    const Eigen::Map<const Eigen::Vector3d> L(body.angularMomentum);
    Matrix3 S;
    S << 0, -L[2], L[1], L[2], 0, -L[0], -L[1], L[0], 0;
    const Matrix3 I = tensorOf(body._I);
    const Matrix3 A = I - 0.02 * 0.02 * S * I.inverse() * S + 0.02 * 0.3 * Matrix3::Identity();
    EXPECT_LT((tensorOf(body.inverse_massmatrix) - A.inverse()).norm(), 1e-14);
}

TEST(MassMatrixTest, SphericalInertia) {
    for (const bool byFlag : {false, true}) {
        Top top;
        top.body.flags = byFlag ? kDynsBodySphericalInertia : 0;
        top.body.angular_damping = 0.5;
        for (auto& row : top.body.inverse_massmatrix)
            std::fill_n(row, 4, 7.0); // what the model before left
        top.prepare();
        FrameParameters frame(0.1);
        const MassMatrix* m = mass_matrix_build_inverse(&frame.p, &top.pointer, 1, !byFlag);
        const double expected = 1 / (5.5 / 3 + 0.05);
        EXPECT_EQ(m->invI1[1], expected);
        EXPECT_EQ(m->invI1[0], 0);
        EXPECT_EQ(tensorOf(top.body.inverse_massmatrix), Matrix3(expected * Matrix3::Identity()));
    }
}

// A free top that starts near its unstable axis, n steps of 1/60 s; the plain one has the explicit
// gyroscopic torque and the inertia as it is.
struct TopRun {
    double energy, worstGain, momentum; ///< relative to the start; gain of one step
};

TopRun spinFreeTop(double speed, int n, bool stabilized) {
    Top top;
    top.body.velrot[1] = speed;
    top.body.velrot[0] = 0.01 * speed;
    top.prepare();
    FrameParameters frame(1.0 / 60);
    const double startEnergy = top.energy(), startMomentum = top.momentum().norm();
    double energy = startEnergy, worstGain = 0;
    for (int i = 0; i < n; ++i) {
        top.prepare();
        add_non_inertial_forces(&top.pointer, 1, 1);
        (void)mass_matrix_build_stabilized_inverse(&top.pointer, 1, &frame.p, stabilized ? 1 : 0);
        body_update_accelerations(&top.pointer, 1);
        frame.p.memory_pool_handler->cleanup();
        body_integrate(&top.body, frame.p.stepsize);
        std::fill_n(top.body.torque, 4, 0.0);
        body_update_inertia_tensor(&top.pointer, 1, false);
        worstGain = std::max(worstGain, top.energy() / energy - 1);
        energy = top.energy();
    }
    return {energy / startEnergy, worstGain, top.momentum().norm() / startMomentum};
}

// The stabilised step is the implicit (I - h S) w' = L: w' . I w' = w' . I w, so that by
// Cauchy-Schwarz it never gains energy, at any speed, up to three radians a step. The explicit step
// gains and runs away.
TEST(MassMatrixTest, FreeTopNeverGainsEnergy) {
    for (const double speed : {0.5, 1.0, 10.0, 180.0}) {
        const TopRun run = spinFreeTop(speed, 20000, true);
        EXPECT_LE(run.worstGain, 1e-13) << speed;
        EXPECT_GT(run.energy, 0) << speed;
    }
    constexpr double kFast = 10;
    EXPECT_NEAR(spinFreeTop(kFast, 3000, true).momentum, 1, 0.1);
    EXPECT_FALSE(spinFreeTop(kFast, 3000, false).energy < 10); // not a number, in the end
}

// A joint that pulls outwards with F at arm r stiffens the body by F r across r. The motion that the
// body has stays as it is: the inertia and the momentum grow alike.
TEST(MassMatrixTest, GeometricStiffnessSlowsAccelerationAlone) {
    constexpr double kForce = 1000, kArm = 0.05, kStep = 1.0 / 60;
    const KitVector3 force = {0, 0, kForce}, arm = {0, 0, kArm};
    for (const bool stabilized : {true, false}) {
        Top top;
        top.body.velrot[0] = 0.7;
        top.body.velrot[2] = 0.2;
        FrameParameters frame(kStep);
        frame.p.geometric_stiffness = 1;
        DynsBodyAddGeometricStiffness(&top.body, force, arm);
        top.prepare();
        const auto build = [&] {
            return stabilized ? mass_matrix_build_stabilized_inverse(&top.pointer, 1, &frame.p, 0)
                              : mass_matrix_build_inverse(&frame.p, &top.pointer, 1, 0);
        };
        (void)build();
        const double added = kStep * kStep * kForce * kArm;
        const Matrix3 inverse = tensorOf(top.body.inverse_massmatrix);
        EXPECT_NEAR(inverse(0, 0), 1 / (1 + added), 1e-14);
        EXPECT_NEAR(inverse(1, 1), 1 / (2 + added), 1e-14);
        EXPECT_NEAR(inverse(2, 2), 1 / 2.5, 1e-14); // along the arm nothing turns the force
        const Eigen::Map<const Eigen::Vector3d> L(top.body.angularMomentum);
        EXPECT_LT((inverse * L - top.omega()).norm(), 1e-14);

        // Consumed: the next step without joint forces has the plain inertia. A push adds nothing.
        top.prepare();
        const KitVector3 push = {0, 0, -kForce};
        DynsBodyAddGeometricStiffness(&top.body, push, arm);
        const KitVector3 broken = {NAN, 0, 0};
        DynsBodyAddGeometricStiffness(&top.body, broken, arm);
        (void)build();
        EXPECT_NEAR(top.body.inverse_massmatrix[0][0], 1, 1e-14);
    }
}
