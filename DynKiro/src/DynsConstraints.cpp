#include <Dyns/DynsConstraints.h>

#include <Kit/KitMemory.h>
#include <Kit/KitMemoryPool.h>
#include <Kit/KitMessage.h>

#include <algorithm>
#include <climits>
#include <cstddef>
#include <cstdlib>
#include <cstring>

namespace {

constexpr std::size_t kArrayAlignment = 64;
constexpr int kRowMultiple = 12;

// Deals out a block to the arrays of a record one behind the other; without a block it only measures.
class ArrayDealer {
public:
    explicit ArrayDealer(std::byte* block) : mBlock(block) {}

    template <typename T>
    void deal(T*& array, int count) {
        if (mBlock)
            array = reinterpret_cast<T*>(mBlock + mBytes);
        const std::size_t bytes = static_cast<std::size_t>(count) * sizeof(T);
        mBytes += (bytes + kArrayAlignment - 1) / kArrayAlignment * kArrayAlignment;
    }
    [[nodiscard]] std::size_t bytes() const { return mBytes; }

private:
    std::byte* mBlock;
    std::size_t mBytes = 0;
};

// The first array, phi, begins the block.
void dealArrays(DynsConstraints& c, ArrayDealer& dealer) {
    for (KitReal** array : {&c.phi, &c.v0, &c.lower, &c.upper, &c.lambda, &c.xepsilon, &c.xgamma,
                            &c.friction_coefficient, &c.soil_cohesion_coefficient, &c.rhs})
        dealer.deal(*array, c.max_constraint_rows);
    for (int** array : {&c.flags, &c.index_set})
        dealer.deal(*array, c.max_constraint_rows);
    for (unsigned** array : {&c.friction_model, &c.reference_normal})
        dealer.deal(*array, c.max_constraint_rows);
    for (int** array : {&c.Jtype, &c.constraint_first_block, &c.constraint_n_blocks})
        dealer.deal(*array, c.max_constraints);
    for (int** array : {&c.g_blocks_heads, &c.g_blocks_tails})
        dealer.deal(*array, c.max_bodies);
    for (int** array : {&c.g_block_size, &c.g_block_first_row, &c.g_blocks_next, &c.g_bodies_idx})
        dealer.deal(*array, c.max_g_blocks);
    dealer.deal(c.g_bodies, c.max_g_blocks);
    dealer.deal(c.g_forces, c.max_g_blocks);
    dealer.deal(c.G, c.max_g_blocks);
    dealer.deal(c.GM, c.max_g_blocks);
    dealer.deal(c.g_rows, c.max_g_rows);
    dealer.deal(c.gm_rows, c.max_g_rows);
}

std::size_t bytesOfArrays(DynsConstraints& c) {
    ArrayDealer dealer(nullptr);
    dealArrays(c, dealer);
    return std::max(dealer.bytes(), kArrayAlignment);
}

// The block, which the arrays share, comes zeroed; the counts go with the contents.
void adoptBlock(DynsConstraints& c, void* block, std::size_t bytes) {
    if (!block) {
        KitFatalError(0, "DynsConstraintsResize: could not allocate memory for %d rows.\n",
                      c.max_constraint_rows);
        std::abort();
    }
    std::memset(block, 0, bytes);
    ArrayDealer dealer(static_cast<std::byte*>(block));
    dealArrays(c, dealer);
    c.n_constraint_rows = c.n_constraints = c.n_g_blocks = c.n_g_rows = c.n_bodies = 0;
    c.used_g_blocks = c.used_g_rows = 0;
}

// Capacities for this many; false, with a warning, if they are below 0 or beyond what an index holds.
bool setCapacities(DynsConstraints& c, int constraints, int bodies, int rows) {
    constexpr int kMost = INT_MAX / kDynsMaxConstraintBodies;
    if (constraints < 0 || bodies < 0 || rows < 0 || constraints > kMost || rows > kMost) {
        KitWarning(0, "DynsConstraintsResize: sizes must be from 0 to %d.\n", kMost);
        return false;
    }
    c.max_constraints = constraints;
    c.max_bodies = bodies;
    c.max_constraint_rows = rows;
    c.max_g_blocks = kDynsMaxConstraintBodies * constraints;
    c.max_g_rows = kDynsMaxConstraintBodies * rows;
    return true;
}

int roundUpRows(int rows) {
    constexpr int kMost = INT_MAX - kRowMultiple;
    return rows > kMost ? rows : (rows + kRowMultiple - 1) / kRowMultiple * kRowMultiple;
}

const KitMemoryAPIStruct& tableOf(const KitMemoryAPIStruct* mem) {
    return mem ? *mem : KitMemoryAPI;
}

template <typename T>
void zero(T* array, int count) {
    if (count > 0)
        std::memset(array, 0, static_cast<std::size_t>(count) * sizeof(T));
}

template <typename T>
void setAllBits(T* array, int count) {
    if (count > 0)
        std::memset(array, 0xFF, static_cast<std::size_t>(count) * sizeof(T));
}

void clearRows(DynsConstraints& c, int n) {
    for (KitReal* array : {c.phi, c.v0, c.lower, c.upper, c.lambda, c.xepsilon, c.xgamma,
                           c.soil_cohesion_coefficient, c.rhs})
        zero(array, n);
    zero(c.flags, n);
    zero(c.index_set, n);
    zero(c.friction_model, n);
    setAllBits(c.reference_normal, n);
    setAllBits(c.friction_coefficient, n);
}

void clearBlocks(DynsConstraints& c, int n) {
    for (int* array : {c.g_block_size, c.g_block_first_row, c.g_bodies_idx})
        zero(array, n);
    setAllBits(c.g_blocks_next, n);
    zero(c.g_bodies, n);
    zero(c.g_forces, n);
    zero(c.G, n);
    zero(c.GM, n);
}

} // namespace

DynsConstraints* DynsConstraintsCreate() {
    void* record = KitMemoryAPI_createZeroed(sizeof(DynsConstraints));
    if (!record) {
        KitFatalError(0, "DynsConstraintsCreate: could not allocate memory.\n");
        std::abort();
    }
    return static_cast<DynsConstraints*>(record);
}

void DynsConstraintsDestroy(DynsConstraints* c, const KitMemoryAPIStruct* mem) {
    if (!c)
        return;
    tableOf(mem).destroyAligned(c->phi);
    KitMemoryAPI_destroy(c);
}

void DynsConstraintsResize(DynsConstraints* c, int constraints, int bodies, int rows,
                           const KitMemoryAPIStruct* mem) {
    if (!setCapacities(*c, std::max(constraints, c->max_constraints),
                       std::max(bodies, c->max_bodies), roundUpRows(rows)))
        return;
    tableOf(mem).destroyAligned(c->phi);
    const std::size_t bytes = bytesOfArrays(*c);
    adoptBlock(*c, tableOf(mem).createAligned(bytes, kArrayAlignment), bytes);
}

void DynsConstraintsNewResize(DynsConstraints* c, int constraints, int bodies, int rows,
                              KitMemoryPool* pool) {
    if (!setCapacities(*c, constraints, bodies, rows))
        return;
    const std::size_t bytes = bytesOfArrays(*c);
    adoptBlock(*c, pool->create_aligned(bytes, kArrayAlignment, "kiroConstraint"), bytes);
}

void DynsConstraintsReset(DynsConstraints* c, int rows, int constraints, int bodies) {
    c->used_g_blocks = std::max(c->used_g_blocks, c->n_g_blocks);
    c->used_g_rows = std::max(c->used_g_rows, c->n_g_rows);
    c->n_constraint_rows = c->n_constraints = c->n_g_blocks = c->n_g_rows = c->n_bodies = 0;
    c->use_scaled_box_friction = c->scaled_box_iterations = c->lcp_iteration_count = 0;
    c->scaled_box_error = 0;
    c->unconverged_solves = c->fallback_solves = 0;
    if (constraints <= 0)
        return;
    clearRows(*c, std::min(rows, c->max_constraint_rows));
    const int nConstraints = std::min(constraints, c->max_constraints);
    for (int* array : {c->Jtype, c->constraint_first_block, c->constraint_n_blocks})
        zero(array, nConstraints);
    const int nBodies = std::min(bodies, c->max_bodies);
    setAllBits(c->g_blocks_heads, nBodies);
    setAllBits(c->g_blocks_tails, nBodies);
    // What no push has reached since it was last cleared is clear.
    clearBlocks(*c, c->used_g_blocks);
    zero(c->g_rows, c->used_g_rows);
    zero(c->gm_rows, c->used_g_rows);
    c->used_g_blocks = c->used_g_rows = 0;
}

int DynsConstraintsGetNumRows(const DynsConstraints* c) {
    return c->n_constraint_rows;
}

int DynsConstraintsGetLcpIterations(const DynsConstraints* c) {
    return c->lcp_iteration_count;
}

KitReal DynsConstraintsGetScaledBoxError(const DynsConstraints* c) {
    return c->scaled_box_error;
}

int DynsConstraintsGetScaledBoxIterations(const DynsConstraints* c) {
    return c->scaled_box_iterations;
}

void DynsConstraintsSetIndices(DynsConstraints* c, KitAssocArray* indices) {
    c->indicies = indices;
}

void DynsConstraintsSetType(DynsConstraints* c, int type) {
    c->type = type;
}

int DynsConstraintsGetType(const DynsConstraints* c) {
    return c->type;
}
