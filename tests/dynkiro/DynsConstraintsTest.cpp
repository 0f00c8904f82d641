#include "SolverFixture.h"

#include <Kit/KitAssoc.h>
#include <Kit/KitMessage.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>

namespace {

int gWarnings = 0;

// Counts warnings instead of printing them.
class QuietWarnings {
public:
    QuietWarnings() {
        gWarnings = 0;
        mOld = KitSetWarningHandler([](int, const char*, va_list) { ++gWarnings; });
    }
    ~QuietWarnings() { KitSetWarningHandler(mOld); }

private:
    KitMessageHandler mOld;
};

std::vector<DynsBody> makeBodies(int n) {
    return std::vector<DynsBody>(static_cast<std::size_t>(n), makeBody());
}

bool isZero(const KitReal* values, int n) {
    return std::all_of(values, values + n, [](KitReal value) { return value == 0; });
}

} // namespace

TEST(DynsConstraintsTest, Capacities) {
    struct Case {
        int wanted, rows;
    };
    for (const Case& test : {Case{0, 0}, Case{1, 12}, Case{12, 12}, Case{13, 24}, Case{5, 12}}) {
        DynsConstraints* c = DynsConstraintsCreate();
        DynsConstraintsResize(c, 3, 4, 30, &KitMemoryAPI);
        DynsConstraintsResize(c, 2, 9, test.wanted, &KitMemoryAPI);
        EXPECT_EQ(c->max_constraint_rows, test.rows) << test.wanted;
        EXPECT_EQ(c->max_g_rows, 6 * test.rows);
        EXPECT_EQ(c->max_constraints, 3);
        EXPECT_EQ(c->max_bodies, 9);
        EXPECT_EQ(c->max_g_blocks, 18);
        for (const void* array :
             {static_cast<const void*>(c->v0), static_cast<const void*>(c->G),
              static_cast<const void*>(c->g_forces), static_cast<const void*>(c->gm_rows)})
            EXPECT_EQ(reinterpret_cast<std::uintptr_t>(array) % 64, 0U);
        DynsConstraintsDestroy(c, &KitMemoryAPI);
    }
    QuietWarnings quiet;
    DynsConstraints* c = DynsConstraintsCreate();
    DynsConstraintsResize(c, 1, 1, std::numeric_limits<int>::max() - 5, &KitMemoryAPI);
    DynsConstraintsResize(c, std::numeric_limits<int>::max(), 1, 1, &KitMemoryAPI);
    EXPECT_EQ(gWarnings, 2);
    EXPECT_EQ(c->max_constraint_rows, 0);
    DynsConstraintsDestroy(c, &KitMemoryAPI);
}

TEST(DynsConstraintsTest, BlocksAreLinkedByBody) {
    std::vector<DynsBody> bodies = makeBodies(3);
    DynsBody stranger = makeBody();
    RowRecord record(bodies, 5, 20);
    DynsConstraints& c = record.c;
    std::mt19937_64 random(3);
    const std::vector<RowValues> three(3), one(1);
    pushRows(c, {&bodies[2], nullptr, &bodies[0]}, randomJacobian(random, 3, 3), three, 77);
    pushRows(c, {&bodies[0]}, randomJacobian(random, 0, 1), {}, 78);             // no rows
    pushRows(c, {nullptr, &stranger}, randomJacobian(random, 1, 2), one, 79);    // no block
    pushRows(c, {&stranger, &bodies[2]}, randomJacobian(random, 1, 2), one, 80); // one of two

    EXPECT_EQ(c.n_constraints, 2);
    EXPECT_EQ(c.n_constraint_rows, 4);
    EXPECT_EQ(c.n_g_blocks, 3);
    EXPECT_EQ(c.n_g_rows, 7);
    EXPECT_EQ(c.n_bodies, 2);
    EXPECT_EQ(c.Jtype[0], 77);
    EXPECT_EQ(c.Jtype[1], 80);
    EXPECT_EQ(c.constraint_n_blocks[0], 2);
    EXPECT_EQ(c.constraint_n_blocks[1], 1);
    EXPECT_EQ(c.constraint_first_block[1], 2);
    EXPECT_EQ(c.g_block_first_row[2], 3);
    EXPECT_EQ(c.G[2], c.g_rows + 6);
    EXPECT_EQ(c.g_blocks_heads[2], 0);
    EXPECT_EQ(c.g_blocks_next[0], 2);
    EXPECT_EQ(c.g_blocks_tails[2], 2);
    EXPECT_EQ(c.g_blocks_heads[0], 1);
    EXPECT_EQ(c.g_blocks_heads[1], -1);

    // The map of pairs, if set, decides in place of the index kept in the body.
    KitAssoc pairs[] = {{&stranger, 1}, {&bodies[0], 0}};
    KitAssocArray map = {2, pairs};
    KitAssocArraySort(&map);
    DynsConstraintsSetIndices(&c, &map);
    pushRows(c, {&stranger, &bodies[2]}, randomJacobian(random, 1, 2), one);
    EXPECT_EQ(c.constraint_n_blocks[2], 1);
    EXPECT_EQ(c.g_blocks_heads[1], 3);
}

// What a builder marked beside rows that got no block must not reach the next constraint.
TEST(DynsConstraintsTest, DroppedRowsLeaveNoTrace) {
    std::vector<DynsBody> bodies = makeBodies(1);
    DynsBody stranger = makeBody();
    RowRecord record(bodies, 3, 12);
    DynsConstraints& c = record.c;
    c.reference_normal[1] = 1;
    c.friction_coefficient[1] = 0.5;
    c.soil_cohesion_coefficient[1] = 3;
    pushRows(c, {&stranger}, MatrixX::Ones(2, 6), std::vector<RowValues>(2));
    EXPECT_EQ(c.n_constraint_rows, 0);
    EXPECT_EQ(c.reference_normal[1], kDynsNoReferenceNormal);
    EXPECT_TRUE(std::isnan(c.friction_coefficient[1])); // all bits
    EXPECT_EQ(c.soil_cohesion_coefficient[1], 0);
}

TEST(DynsConstraintsTest, RefusesRowsWithoutRoom) {
    std::vector<DynsBody> bodies = makeBodies(1);
    RowRecord record(bodies, 2, 12);
    DynsConstraints& c = record.c;
    QuietWarnings quiet;
    pushRows(c, {&bodies[0]}, MatrixX::Ones(17, 6), std::vector<RowValues>(17));
    pushRows(c, {&bodies[0]}, MatrixX::Ones(11, 6), std::vector<RowValues>(11));
    pushRows(c, {&bodies[0]}, MatrixX::Ones(2, 6), std::vector<RowValues>(2));
    pushRows(c, {&bodies[0]}, MatrixX::Ones(1, 6), std::vector<RowValues>(1));
    pushRows(c, {&bodies[0]}, MatrixX::Ones(1, 6), std::vector<RowValues>(1));
    EXPECT_EQ(gWarnings, 3);
    EXPECT_EQ(c.n_constraints, 2);
    EXPECT_EQ(c.n_constraint_rows, 12);
}

TEST(DynsConstraintsTest, ResetClearsAllThatWasUsed) {
    std::vector<DynsBody> bodies = makeBodies(2);
    RowRecord record(bodies, 4, 12);
    DynsConstraints& c = record.c;
    pushRows(c, {&bodies[0], &bodies[1]}, MatrixX::Ones(3, 12),
             std::vector<RowValues>(3, RowValues{1, 2, -3, 4, 5, 6}));
    c.use_scaled_box_friction = c.lcp_iteration_count = c.scaled_box_iterations = 1;
    c.scaled_box_error = 2;
    c.unconverged_solves = c.fallback_solves = 1;
    std::fill_n(c.gm_rows[0], 36, 1.0);
    DynsConstraintsReset(&c, 0, 0, 2); // a step without constraints in between clears no array
    EXPECT_EQ(c.n_constraint_rows + c.n_constraints + c.n_g_blocks + c.n_g_rows, 0);
    EXPECT_EQ(c.lcp_iteration_count + c.use_scaled_box_friction + c.unconverged_solves, 0);
    DynsConstraintsReset(&c, 12, 4, 2);
    EXPECT_TRUE(isZero(c.g_rows[0], 6 * c.max_g_rows));
    EXPECT_TRUE(isZero(c.gm_rows[0], 6 * c.max_g_rows));
    for (const KitReal* row : {c.phi, c.v0, c.lower, c.upper, c.lambda, c.xepsilon, c.xgamma})
        EXPECT_TRUE(isZero(row, 12));
    EXPECT_EQ(c.g_blocks_heads[0], -1);
    EXPECT_EQ(c.g_blocks_tails[1], -1);
    EXPECT_EQ(c.g_bodies[0], nullptr);
    EXPECT_EQ(c.reference_normal[11], kDynsNoReferenceNormal);
}

TEST(DynsConstraintsTest, ResultsGoToTheirSlots) {
    std::vector<DynsBody> bodies = makeBodies(2);
    DynsBody stranger = makeBody();
    RowRecord record(bodies, 2, 12);
    DynsConstraints& c = record.c;
    std::mt19937_64 random(5);
    std::vector<RowValues> values(4);
    values[0] = {.phi = 0.5, .lower = -1, .upper = 1};
    values[1] = {.lower = -1, .upper = 1};
    values[2] = {.lower = -1, .upper = 1};
    values[3] = {.lower = 2, .upper = 2};
    pushRows(c, {&bodies[1]}, randomJacobian(random, 1, 1), {RowValues{}});
    // The same body in two slots, an empty slot, and one that the partition does not know.
    const std::vector<DynsBody*> slots = {&bodies[1], nullptr, &stranger, &bodies[0], &bodies[1]};
    const MatrixX J = randomJacobian(random, 4, 5);
    pushRows(c, slots, J, values);
    const double lambda[] = {0.3, 1, -1, 2};
    std::copy_n(lambda, 4, c.lambda + 1);
    jacobian_get_forces(&c, 1);

    KitVector4 force[5], torque[5];
    KitReal resultLambda[kDynsMaxConstraintRows + 1], phi[kDynsMaxConstraintRows];
    int flags[kDynsMaxConstraintRows] = {8, 8};
    DynsConstraintsGetForces(&c, 1, slots.data(), 5, force, torque, resultLambda, phi, flags);
    const Eigen::VectorXd expected = J.transpose() * Eigen::Map<const Eigen::VectorXd>(lambda, 4);
    for (int slot = 0; slot < 5; ++slot) {
        const bool empty = slot == 1 || slot == 2;
        const Eigen::VectorXd wanted = empty ? Eigen::VectorXd(Eigen::VectorXd::Zero(6))
                                             : Eigen::VectorXd(expected.segment(6 * slot, 6));
        EXPECT_LT((bodyVectorOf(force[slot], torque[slot]) - wanted).norm(), 1e-13) << slot;
    }
    EXPECT_EQ(std::vector<KitReal>(resultLambda, resultLambda + 5),
              (std::vector<KitReal>{0.3, 1, -1, 2, 4294967295.0}));
    EXPECT_EQ(phi[0], 0.5);
    EXPECT_EQ(std::vector<int>(flags, flags + 4), (std::vector<int>{8, 8 | 3, 5, 7}));

    DynsConstraintsGetForces(&c, 2, slots.data(), 5, force, torque, resultLambda, phi, flags);
    EXPECT_EQ(resultLambda[0], 4294967295.0);
    EXPECT_TRUE(isZero(force[0], 4));
}

// Anything not finite in a row takes that row out and leaves its neighbours.
TEST(DynsConstraintsTest, RowsThatAreNotFiniteAreTakenOut) {
    struct Case {
        const char* name;
        RowValues values;
        bool badJacobian;
    };
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const double inf = std::numeric_limits<double>::infinity();
    const Case cases[] = {
        {"phi", {.phi = nan}, false},
        {"v0", {.v0 = inf}, false},
        {"lower", {.lower = -inf}, false},
        {"upper", {.upper = nan}, false},
        {"softness", {.epsilon = nan}, false},
        {"gamma", {.gamma = inf}, false},
        {"J", {}, true},
    };
    for (const Case& test : cases) {
        std::vector<DynsBody> bodies = makeBodies(2);
        RowRecord record(bodies, 2, 12);
        DynsConstraints& c = record.c;
        MatrixX J = MatrixX::Ones(3, 12);
        if (test.badJacobian)
            J(1, 8) = nan;
        pushRows(c, {&bodies[0], &bodies[1]}, J, {RowValues{}, test.values, RowValues{}});
        EXPECT_EQ(c.n_constraint_rows, 3) << test.name;
        EXPECT_EQ(c.lower[1], 0) << test.name;
        EXPECT_EQ(c.upper[1], 0) << test.name;
        const MatrixX kept = denseJacobian(c, c.G, 2);
        EXPECT_EQ(kept.row(1).norm(), 0) << test.name;
        EXPECT_EQ(kept.row(0).sum() + kept.row(2).sum(), 24) << test.name;
        EXPECT_EQ(c.upper[2], kKitInfinity) << test.name;
    }
}
