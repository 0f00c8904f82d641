#include "SolverFixture.h"

#include <cmath>
#include <limits>

namespace {

constexpr double kStep = 0.01;

// A stepper over a few bodies with rows, solved as equations.
class WorldStepperTest : public testing::Test {
protected:
    void fill(int n, int constraints, int rowsEach) {
        for (int i = 0; i < n; ++i)
            bodies.push_back(makeRandomBody(random));
        record = std::make_unique<RowRecord>(bodies, constraints, constraints * rowsEach);
        for (int i = 0; i < constraints; ++i) {
            std::vector<RowValues> values;
            for (int r = 0; r < rowsEach; ++r)
                values.push_back({.phi = gauss(random), .v0 = gauss(random), .gamma = 0.2});
            pushRows(record->c, {body(i % n), body((i + 1) % n)},
                     randomJacobian(random, rowsEach, 2), values);
        }
    }
    DynsBody* body(int i) { return &bodies[static_cast<std::size_t>(i)]; }
    void setup(WorldStepper& model) {
        model.setup(static_cast<int>(bodies.size()), &record->c, &frame.p, record->pointers.data(),
                    nullptr, nullptr, &solver);
        model.initialize();
    }
    void runPass(WorldStepper& model) {
        model.pre_sync_forces();
        model.get_forces();
        model.post_sync_forces();
    }
    Eigen::VectorXd rhs() const {
        return Eigen::Map<Eigen::VectorXd>(record->c.rhs, record->c.n_constraint_rows);
    }

    std::mt19937_64 random{42};
    std::normal_distribution<double> gauss;
    FrameParameters frame{kStep};
    std::vector<DynsBody> bodies;
    std::unique_ptr<RowRecord> record;
    DenseEquationSolver solver;
};

} // namespace

// The point of it all: after the step the rows' velocity is v0 - gamma phi / h, whatever the momenta,
// loads and gyroscopic torques were.
TEST_F(WorldStepperTest, RowsReachTheirVelocity) {
    StableStepper stable;
    kiro_model kiro;
    for (WorldStepper* model :
         {static_cast<WorldStepper*>(&stable), static_cast<WorldStepper*>(&kiro)}) {
        bodies.clear();
        fill(4, 4, 3);
        const DynsConstraints& c = record->c;
        setup(*model);
        runPass(*model);
        model->computeAcceleration();
        model->cleanup();
        Eigen::VectorXd velocity(24);
        for (int i = 0; i < 4; ++i) {
            body_integrate(body(i), kStep);
            velocity.segment<6>(6 * i) = bodyVectorOf(body(i)->vel, body(i)->velrot);
        }
        const Eigen::VectorXd reached = denseJacobian(c, c.G, 4) * velocity;
        for (int r = 0; r < c.n_constraint_rows; ++r)
            EXPECT_NEAR(reached[r], c.v0[r] - 0.2 * c.phi[r] / kStep, 1e-10) << model->get_name();
    }
}

TEST_F(WorldStepperTest, RightHandSide) {
    fill(2, 1, 1);
    for (DynsBody& still : bodies)
        still = makeBody();
    record->c.phi[0] = 0.1;
    record->c.v0[0] = 0;
    for (int i = 0; i < 2; ++i) {
        body(i)->localIndex = i;
        body(i)->localPartition = 0;
    }
    StableStepper model;
    setup(model);
    EXPECT_NEAR(model.rhs0[0], -200, 1e-12); // gamma 0.2, phi 0.1, h 0.01
    model.cleanup();
}

TEST_F(WorldStepperTest, AnotherPassRestoresTheRightHandSide) {
    fill(3, 3, 2);
    StableStepper model;
    setup(model);
    runPass(model);
    const Eigen::VectorXd first = rhs();
    runPass(model);
    EXPECT_LT((rhs() - first).norm(), 1e-12 * first.norm());
    EXPECT_EQ(model.pass, 2);

    // What another partition adds to a body shows in full.
    body(1)->cf[2] += 5;
    model.pre_sync_forces();
    Eigen::VectorXd load = Eigen::VectorXd::Zero(18);
    load[8] = 5;
    const DynsConstraints& c = record->c;
    EXPECT_LT((rhs() - (first - denseJacobian(c, c.GM, 3) * load)).norm(), 1e-11 * first.norm());
    model.cleanup();
}

TEST_F(WorldStepperTest, WithoutRows) {
    fill(1, 1, 1);
    DynsConstraintsReset(&record->c, 0, 0, 1);
    body(0)->linear_damping = 30;
    const DynsBody before = *body(0);
    StableStepper model;
    setup(model);
    EXPECT_EQ(model.rhs0, nullptr);
    ASSERT_NE(model.invI, nullptr);
    EXPECT_DOUBLE_EQ(body(0)->linearMomentum[1], before.vel[1] / before.invmass);
    EXPECT_DOUBLE_EQ(body(0)->inverse_massmatrix[0][3], 1 / (1 / before.invmass + 0.3));
    runPass(model);
    model.computeAcceleration();
    EXPECT_DOUBLE_EQ(body(0)->accel[0], before.force[0] * body(0)->inverse_massmatrix[0][3]);
    model.cleanup();
}

// The bodies of a secondary partition belong to primary ones of another model perhaps.
TEST_F(WorldStepperTest, SecondaryChangesNoBody) {
    fill(2, 1, 3);
    StableStepper stable;
    setup(stable);
    stable.cleanup();
    const std::vector<DynsBody> before = bodies;
    DynsConstraintsSetType(&record->c, 1);
    StableStepper secondary;
    kiro_model spherical;
    for (WorldStepper* model :
         {static_cast<WorldStepper*>(&secondary), static_cast<WorldStepper*>(&spherical)}) {
        setup(*model);
        for (int i = 0; i < 2; ++i) {
            EXPECT_EQ(std::memcmp(body(i), &before[static_cast<std::size_t>(i)], sizeof(DynsBody)),
                      0);
            EXPECT_EQ(model->invI[i].invI1[2], body(i)->inverse_massmatrix[1][2]);
            EXPECT_EQ(model->invI[i].invmass, body(i)->inverse_massmatrix[0][3]);
        }
        model->cleanup();
    }
}

// A body with something not finite takes its own rows out; the other rows solve as if it were fixed.
TEST_F(WorldStepperTest, BadBodyLosesItsRowsAlone) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const auto spoilers = {
        +[](DynsBody& b, double bad) { b.force[1] = bad; },
        +[](DynsBody& b, double bad) { b.velrot[2] = bad; },
        +[](DynsBody& b, double bad) { b.tm[0][1] = bad; },
        +[](DynsBody& b, double bad) { b.invmass = bad; },
        +[](DynsBody& b, double bad) { b.torque[0] = 2 * bad; },
    };
    for (const double bad : {nan, std::numeric_limits<double>::max()})
        for (const auto& spoil : spoilers) {
            bodies.clear();
            fill(4, 3, 2); // constraints 0-1, 1-2, 2-3
            spoil(*body(3), bad);
            StableStepper model;
            setup(model);
            const DynsConstraints& c = record->c;
            runPass(model);
            const bool taken = c.lower[4] == 0 && c.upper[5] == 0;
            EXPECT_TRUE(taken || std::isfinite(bad));
            EXPECT_EQ(c.upper[3], kKitInfinity);
            for (int r = 0; r < c.n_constraint_rows; ++r)
                EXPECT_TRUE(std::isfinite(c.lambda[r])) << r;
            EXPECT_TRUE(!taken || c.lambda[4] == 0);
            for (int i = 0; i < 3; ++i)
                EXPECT_TRUE(std::isfinite(body(i)->cf[0]));
            model.cleanup();
        }
}

TEST_F(WorldStepperTest, CleanupAsksForWhatThePoolLacked) {
    FrameParameters small(kStep, 64);
    fill(3, 3, 3);
    StableStepper model;
    model.setup(3, &record->c, &small.p, record->pointers.data(), nullptr, nullptr, &solver);
    model.cleanup();
    EXPECT_GE(small.p.memory_pool_needed, 3 * sizeof(MassMatrix) + 9 * sizeof(KitReal));
    EXPECT_EQ(model.invI, nullptr);
}

// A model that integrates by itself takes the same steps as the world does.
TEST_F(WorldStepperTest, IntegratesLikeTheWorld) {
    fill(1, 1, 1);
    DynsConstraintsReset(&record->c, 0, 0, 1);
    StableStepper model;
    setup(model);
    model.computeAcceleration();
    DynsBody other = *body(0);
    model.integrate();
    body_integrate(&other, kStep);
    EXPECT_EQ(std::memcmp(&other.tm, &body(0)->tm, sizeof other.tm), 0);
    EXPECT_EQ(std::memcmp(&other.velrot, &body(0)->velrot, sizeof other.velrot), 0);
    body(0)->cf[0] = body(0)->ct[2] = 1;
    model.resetBodyForces();
    EXPECT_EQ(body(0)->cf[0] + body(0)->ct[2], 0);
    model.cleanup();
}
