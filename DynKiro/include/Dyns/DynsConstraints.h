#pragma once
#include <Kit/KitApi.h>
#include <Kit/KitTypes.h>

struct DynsBody;
struct KitAssocArray;
struct KitMemoryAPIStruct;
class KitMemoryPool;

/// One row of a Jacobian for one body: linear x, y, z, angular x, y, z.
using DynsGRow = KitReal[6];
/// Points at the first row of a block: the rows of one constraint that belong to one body.
using DynsGBlock = DynsGRow*;

/// Most bodies of one constraint.
constexpr int kDynsMaxConstraintBodies = 6;
/// Most rows of one constraint.
constexpr int kDynsMaxConstraintRows = 16;
/// Value of reference_normal for a row whose bounds are not scaled by a normal force.
constexpr unsigned kDynsNoReferenceNormal = ~0U;

/// Values of DynsConstraints::index_set; see the LCP solver.
enum DynsIndex : int {
    kDynsIndexFree = 0,
    kDynsIndexLower = 2,
    kDynsIndexUpper = 4,
    kDynsIndexOut = 16,  ///< the index never changes, w is forced to 0
    kDynsIndexZero = 32, ///< z is forced to 0
};

/// Values of DynsConstraints::flags, the kind of a row.
enum DynsRowFlag : int {
    kDynsRowLinear = 2,
    kDynsRowAngular = 4,
    kDynsRowPosition = 8,     ///< has a phi, takes position-level softness
    kDynsRowVelocity = 16,    ///< no phi, takes velocity-level softness
    kDynsRowOwnSoftness = 32, ///< the end step keeps the row's own softness
};

/// The rows of one partition, the wire between the row builders and the solver:
///   (J M^-1 J^T + diag(xepsilon)) lambda = rhs + w,  lower <= lambda <= upper,  w complementary.
/// A row asks for J v = v0 - xgamma phi / h; lambda is a force in N or N m, not an impulse.
/// Arrays are 64-byte aligned and owned; the comment gives their extent.
struct DynsConstraints {
    KitReal* phi;   ///< row: position error, m or rad
    KitReal* v0;    ///< row: velocity that the row asks for
    KitReal* lower; ///< row: bounds of lambda
    KitReal* upper;
    KitReal* lambda;             ///< row: result
    KitReal* xepsilon;           ///< row: softness, added to the diagonal
    KitReal* xgamma;             ///< row: fraction of phi to remove in one step
    int* Jtype;                  ///< constraint: tag given by the builder
    int* flags;                  ///< row: DynsRowFlag
    int lcp_iteration_count;     ///< sum of the passes of this step
    int* index_set;              ///< row: DynsIndex; a warm start begins from it
    int use_scaled_box_friction; ///< not zero if some row takes its bounds from a normal force
    unsigned* friction_model;    ///< row: not used by the solver
    unsigned* reference_normal; ///< row: distance back to the normal row, or kDynsNoReferenceNormal
    KitReal* friction_coefficient;      ///< row
    KitReal* soil_cohesion_coefficient; ///< row: N, added to the bound of a scaled row
    int n_constraint_rows;
    int n_constraints;
    int n_g_blocks;
    int n_g_rows;                ///< rows counted once for each of their bodies
    int* g_block_size;           ///< block: rows
    int* g_block_first_row;      ///< block
    int* constraint_first_block; ///< constraint
    int* constraint_n_blocks;    ///< constraint
    int* g_blocks_heads;         ///< body: first block, -1 if none
    int* g_blocks_next;          ///< block: next block of the same body, -1 at the end
    int* g_blocks_tails;         ///< body: last block, -1 if none
    DynsBody** g_bodies;         ///< block
    int* g_bodies_idx;           ///< block: index of the body in the partition
    KitReal (
        *g_forces)[8]; ///< block: force x, y, z, pad, torque x, y, z, pad, at the centre of mass
    DynsGBlock* G;     ///< block: rows of J
    DynsGBlock* GM;    ///< block: rows of J M^-1
    DynsGRow* g_rows;  ///< storage of G
    DynsGRow* gm_rows; ///< storage of GM, same positions
    int max_g_blocks, max_g_rows, max_constraints, max_bodies, max_constraint_rows;
    int n_bodies; ///< largest body index met
    KitReal* rhs; ///< row: right-hand side of the present solve
    int scaled_box_iterations;
    KitReal scaled_box_error;
    int type;                ///< 0 primary partition, 1 secondary
    KitAssocArray* indicies; ///< from DynsBody* to the index in the partition
    int partition;           ///< index of the partition being packed, see DynsBody::localPartition
    int unconverged_solves;  ///< solves of this step that ended without converging
    int fallback_solves;     ///< of these, how many the block sweeps finished
    int used_g_blocks, used_g_rows; ///< entries written since the last clearing reset
};

/// A row builder's view of the next free rows of a DynsConstraints.
struct DynsInputRowFactors {
    KitReal *phi, *v0, *lower, *upper, *xepsilon, *xgamma;
    DynsGRow* G[kDynsMaxConstraintBodies]; ///< slot: the builder's local block of rows
    int* flags;
};

[[nodiscard]] HY_API DynsConstraints* DynsConstraintsCreate();
HY_API void DynsConstraintsDestroy(DynsConstraints* c, const KitMemoryAPIStruct* mem);
/// Raises the capacities; the contents do not survive. The row capacity becomes a multiple of 12.
HY_API void DynsConstraintsResize(DynsConstraints* c, int constraints, int bodies, int rows,
                                  const KitMemoryAPIStruct* mem);
/// The same with capacities exactly as asked, from a memory pool.
HY_API void DynsConstraintsNewResize(DynsConstraints* c, int constraints, int bodies, int rows,
                                     KitMemoryPool* pool);
HY_API void DynsConstraintsReset(DynsConstraints* c, int rows, int constraints, int bodies);
/// Appends a constraint of the given rows. A null slot of bodies takes no block; a body that the
/// partition does not know gets none either, and a constraint without any block leaves no trace.
HY_API void DynsConstraintsPushConstraint(DynsConstraints* c, const DynsInputRowFactors* factors,
                                          DynsBody* const* bodies, int n_bodies, int rows, int tag,
                                          void* extra);
/// Result of constraint i, slot by slot and row by row; see the definition for the flags.
HY_API void DynsConstraintsGetForces(const DynsConstraints* c, int constraint,
                                     DynsBody* const* bodies, int n_bodies, KitVector4* force,
                                     KitVector4* torque, KitReal* lambda, KitReal* phi,
                                     int* dynamic_flags);
[[nodiscard]] HY_API int DynsConstraintsGetNumRows(const DynsConstraints* c);
[[nodiscard]] HY_API int DynsConstraintsGetLcpIterations(const DynsConstraints* c);
[[nodiscard]] HY_API KitReal DynsConstraintsGetScaledBoxError(const DynsConstraints* c);
[[nodiscard]] HY_API int DynsConstraintsGetScaledBoxIterations(const DynsConstraints* c);
HY_API void DynsConstraintsSetIndices(DynsConstraints* c, KitAssocArray* indices);
HY_API void DynsConstraintsSetType(DynsConstraints* c, int type);
[[nodiscard]] HY_API int DynsConstraintsGetType(const DynsConstraints* c);
