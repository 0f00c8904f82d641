#include "SolverFixture.h"

// Products by blocks against dense ones, on a random graph of constraints of one to three bodies.
class JacobianTest : public testing::Test {
protected:
    static constexpr int kBodies = 7, kConstraints = 9, kMaxRows = 40;

    void SetUp() override {
        RecordProperty("seed", kSeed);
        for (int i = 0; i < kBodies; ++i)
            bodies.push_back(makeRandomBody(random));
        record = std::make_unique<RowRecord>(bodies, kConstraints, kMaxRows);
        c = &record->c;
        std::uniform_int_distribution<int> pick(0, kBodies - 1), size(1, 4), count(1, 3);
        for (int i = 0; i < kConstraints; ++i) {
            std::vector<DynsBody*> slots;
            for (int k = count(random); k > 0; --k)
                slots.push_back(&bodies[static_cast<std::size_t>(pick(random))]);
            slots.push_back(nullptr);
            const MatrixX rows =
                randomJacobian(random, size(random), static_cast<int>(slots.size()));
            pushRows(*c, slots, rows,
                     std::vector<RowValues>(static_cast<std::size_t>(rows.rows())));
        }
        n = c->n_constraint_rows;
        J = denseJacobian(*c, c->G, kBodies);
    }

    Eigen::VectorXd bodyColumn(const KitReal* (*part)(const DynsBody&, bool angular)) const {
        Eigen::VectorXd x(6 * kBodies);
        for (int i = 0; i < kBodies; ++i) {
            const DynsBody& body = bodies[static_cast<std::size_t>(i)];
            x.segment<6>(6 * i) = bodyVectorOf(part(body, false), part(body, true));
        }
        return x;
    }
    Eigen::VectorXd constraintLoads() const {
        return bodyColumn([](const DynsBody& b, bool angular) { return angular ? b.ct : b.cf; });
    }

    static constexpr int kSeed = 20240;
    std::mt19937_64 random{kSeed};
    std::vector<DynsBody> bodies;
    std::unique_ptr<RowRecord> record;
    DynsConstraints* c = nullptr;
    int n = 0;
    MatrixX J;
};

TEST_F(JacobianTest, TimesBodyVectorsAndBack) {
    const Eigen::VectorXd loads =
        bodyColumn([](const DynsBody& b, bool angular) { return angular ? b.torque : b.force; });
    Eigen::VectorXd y = Eigen::VectorXd::LinSpaced(n, -1, 1);
    const Eigen::VectorXd expected = y - 2.5 * (J * loads);
    jacobian_with_body_vector_mv(-2.5, c, c->G, 0, offsetof(DynsBody, force), 1, y.data());
    EXPECT_LT((y - expected).norm(), 1e-13 * expected.norm());

    const Eigen::VectorXd x = Eigen::VectorXd::LinSpaced(n, 3, -2);
    const Eigen::VectorXd back = constraintLoads() + 0.5 * (J.transpose() * x);
    jacobian_to_body_vector_mv(0.5, c, c->G, x.data(), 1, 0, offsetof(DynsBody, cf));
    EXPECT_LT((constraintLoads() - back).norm(), 1e-13 * back.norm());
}

TEST_F(JacobianTest, TimesInverseMass) {
    FrameParameters frame(0.01);
    body_update_inertia_tensor(record->pointers.data(), kBodies, false);
    body_update_momentum(record->pointers.data(), kBodies);
    const MassMatrix* invM =
        mass_matrix_build_stabilized_inverse(record->pointers.data(), kBodies, &frame.p, 1);
    MatrixX M = MatrixX::Zero(6 * kBodies, 6 * kBodies);
    for (int i = 0; i < kBodies; ++i) {
        const auto& inverse = bodies[static_cast<std::size_t>(i)].inverse_massmatrix;
        M.block<3, 3>(6 * i, 6 * i) = inverse[0][3] * Matrix3::Identity();
        M.block<3, 3>(6 * i + 3, 6 * i + 3) = tensorOf(inverse);
    }
    jacobian_mass_mm(c, invM);
    EXPECT_LT((denseJacobian(*c, c->GM, kBodies) - J * M).norm(), 1e-13 * (J * M).norm());
    EXPECT_EQ(c->GM[3] - c->gm_rows, c->G[3] - c->g_rows);

    // mass_matrix_mv on 8 reals a body
    std::vector<double> x(8 * kBodies, 1.5), y(8 * kBodies, -1);
    mass_matrix_mv(kBodies, 2, invM, x.data(), 3, y.data());
    const Eigen::VectorXd product = M * Eigen::VectorXd::Constant(6 * kBodies, 1.5);
    for (int i = 0; i < kBodies; ++i)
        for (int k = 0; k < 6; ++k)
            EXPECT_NEAR(y[static_cast<std::size_t>(8 * i + (k < 3 ? k : k + 1))],
                        2 * product[6 * i + k] - 3, 1e-12);
}

TEST_F(JacobianTest, ForcesGoInAndComeOut) {
    for (int i = 0; i < n; ++i)
        c->lambda[i] = 1 + 0.1 * i;
    const Eigen::VectorXd before = constraintLoads();
    const Eigen::VectorXd forces = J.transpose() * Eigen::Map<Eigen::VectorXd>(c->lambda, n);
    jacobian_get_forces(c, 1);
    EXPECT_LT((constraintLoads() - before - forces).norm(), 1e-13 * forces.norm());
    for (int block = 0; block < c->n_g_blocks; ++block) {
        const int size = c->g_block_size[block];
        const Eigen::VectorXd expected =
            Eigen::Map<const MatrixX>(c->G[block][0], size, 6).transpose() *
            Eigen::Map<Eigen::VectorXd>(c->lambda + c->g_block_first_row[block], size);
        const KitReal* force = c->g_forces[block];
        EXPECT_LT((bodyVectorOf(force, force + 4) - expected).norm(), 1e-13 * expected.norm());
    }
    jacobian_get_forces(c, -1);
    EXPECT_LT((constraintLoads() - before).norm(), 1e-13 * forces.norm());
}

TEST(KitRealTest, StridesAndNorm) {
    const KitReal x[] = {1, 9, 2, 9, 3, 9};
    KitReal y[] = {10, 20, 30}, z[] = {1, 9, 1, 9, 1, 9};
    kitreal_axpy(3, 2, x, 2, y, 1);
    EXPECT_EQ(std::vector<KitReal>(y, y + 3), (std::vector<KitReal>{12, 24, 36}));
    kitreal_had(3, 2, x, 2, y, 1, -1, z, 2);
    EXPECT_EQ(std::vector<KitReal>(z, z + 6), (std::vector<KitReal>{23, 9, 95, 9, 215, 9}));
    kitreal_scal(3, 0.5, z, 2);
    kitreal_copy(3, z, 2, y, 1);
    kitreal_axpy_m1_1_1(2, z, y); // z is read with stride 1
    EXPECT_EQ(std::vector<KitReal>(y, y + 3), (std::vector<KitReal>{0, 38.5, 107.5}));

    const KitReal large[] = {3e200, 4e200}, small[] = {3e-200, 4e-200}, nan[] = {1, NAN, 2};
    EXPECT_DOUBLE_EQ(kitreal_nrm2(2, large, 1), 5e200);
    EXPECT_DOUBLE_EQ(kitreal_nrm2(2, small, 1), 5e-200);
    EXPECT_DOUBLE_EQ(kitreal_nrm2(3, x, 2), std::sqrt(14.0));
    EXPECT_TRUE(std::isnan(kitreal_nrm2(3, nan, 1)));
    EXPECT_EQ(kitreal_nrm2(0, nan, 1), 0);
}
