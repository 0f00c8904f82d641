#include <Dyns/jacobian.h>

#include <Dyns/DynsBody.h>

namespace {

static_assert(offsetof(DynsBody, torque) == offsetof(DynsBody, force) + sizeof(KitVector4));
static_assert(offsetof(DynsBody, ct) == offsetof(DynsBody, cf) + sizeof(KitVector4));
static_assert(offsetof(DynsBody, angularMomentum) ==
              offsetof(DynsBody, linearMomentum) + sizeof(KitVector4));

// Where the angular half of a body vector begins.
constexpr int kAngular = 4;

const KitReal* bodyVector(const DynsBody* body, int X, std::size_t offset) {
    return reinterpret_cast<const KitReal*>(reinterpret_cast<const std::byte*>(body) + offset) + X;
}

KitReal* bodyVector(DynsBody* body, int X, std::size_t offset) {
    return reinterpret_cast<KitReal*>(reinterpret_cast<std::byte*>(body) + offset) + X;
}

KitReal dot(const DynsGRow& row, const KitReal* x) {
    return row[0] * x[0] + row[1] * x[1] + row[2] * x[2] + row[3] * x[kAngular] +
           row[4] * x[kAngular + 1] + row[5] * x[kAngular + 2];
}

// sum += Gᵀ x over the rows of a block
void addTransposed(DynsGRow& sum, const DynsGRow* rows, const KitReal* x, int n) {
    for (int r = 0; r < n; ++r)
        for (int k = 0; k < 6; ++k)
            sum[k] += rows[r][k] * x[r];
}

} // namespace

void jacobian_mass_mm(DynsConstraints* c, const MassMatrix* invM) {
    for (int block = 0; block < c->n_g_blocks; ++block) {
        const MassMatrix& m = invM[c->g_bodies_idx[block]];
        const DynsGRow* G = c->G[block];
        DynsGRow* GM = c->GM[block];
        for (int r = 0, n = c->g_block_size[block]; r < n; ++r) {
            const KitReal a = G[r][3], b = G[r][4], d = G[r][5];
            for (int k = 0; k < 3; ++k) {
                GM[r][k] = G[r][k] * m.invmass;
                GM[r][3 + k] = a * m.invI0[k] + b * m.invI1[k] + d * m.invI2[k];
            }
        }
    }
}

void jacobian_with_body_vector_mv(KitReal alpha, const DynsConstraints* c, const DynsGBlock* G,
                                  int X, std::size_t offset, KitReal beta, KitReal* Y) {
    for (int block = 0; block < c->n_g_blocks; ++block) {
        const DynsBody* body = c->g_bodies[block];
        const KitReal* x = bodyVector(body, X, offset);
        const DynsGRow* rows = G[block];
        KitReal* y = Y + c->g_block_first_row[block];
        for (int r = 0, n = c->g_block_size[block]; r < n; ++r)
            y[r] = beta * y[r] + alpha * dot(rows[r], x);
    }
}

void jacobian_to_body_vector_mv(KitReal alpha, const DynsConstraints* c, const DynsGBlock* G,
                                const KitReal* x, KitReal beta, int Y, std::size_t offset) {
    for (int block = 0; block < c->n_g_blocks; ++block) {
        DynsGRow sum = {};
        addTransposed(sum, G[block], x + c->g_block_first_row[block], c->g_block_size[block]);
        KitReal* y = bodyVector(c->g_bodies[block], Y, offset);
        for (int k = 0; k < 3; ++k) {
            y[k] = beta * y[k] + alpha * sum[k];
            y[kAngular + k] = beta * y[kAngular + k] + alpha * sum[3 + k];
        }
    }
}

void jacobian_get_forces(DynsConstraints* c, KitReal alpha) {
    for (int block = 0; block < c->n_g_blocks; ++block) {
        DynsGRow sum = {};
        addTransposed(sum, c->G[block], c->lambda + c->g_block_first_row[block],
                      c->g_block_size[block]);
        DynsBody& body = *c->g_bodies[block];
        KitReal* force = c->g_forces[block];
        for (int k = 0; k < 3; ++k) {
            force[k] = sum[k];
            force[kAngular + k] = sum[3 + k];
            body.cf[k] += alpha * sum[k];
            body.ct[k] += alpha * sum[3 + k];
        }
        force[3] = force[kAngular + 3] = 0;
    }
}
