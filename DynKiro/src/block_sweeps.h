#pragma once
#include <Kit/KitTypes.h>

struct DynsConstraints;
class KitMemoryPool;

/// Block Gauss-Seidel over the constraints of a partition: each constraint's few rows are solved
/// exactly with the effect of all others as a load. Memory comes from the pool and goes with it.
class DynsBlockSweeps {
public:
    /// Builds the blocks; begins from the present lambda and g_forces, which must agree.
    /// @param bodies number of bodies of the partition
    DynsBlockSweeps(DynsConstraints& constraints, int bodies, KitMemoryPool& pool);

    /// Forgets lambda and g_forces.
    void startFromZero();
    /// Solves each constraint once, in the order of the rows. Friction bounds follow the normal force
    /// of the same constraint. Every lambda stays finite and inside its bounds.
    void sweep();
    /// Euclidean norm of the residuals of all rows against their bounds; softness is left out.
    [[nodiscard]] KitReal residual();

private:
    struct Block {
        KitReal* M; ///< rows by rows
        int rows;
        int firstRow;
        int firstBlock;
        int blocks;
    };

    void solveBlock(const Block& block);
    void loadOfOthers(const Block& block, KitReal* b);
    void storeForces(const Block& block);

    DynsConstraints& c;
    int mBodies;
    Block* mBlocks = nullptr;
    KitReal (*Fb)[8] = nullptr; ///< sum of the constraint forces on each body
    KitReal (*mSums)[8] = nullptr;
    KitReal* w = nullptr;
};
