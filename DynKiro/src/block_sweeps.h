#pragma once
#include "constraint_colours.h"
#include "stage_team.h"
#include "sweep_block.h"

struct DynsConstraints;
class KitMemoryPool;

/// The order in which a sweep visits the constraints.
enum class DynsSweepOrder {
    kRows,    ///< that of the rows
    kColours, ///< group by group of those that share no body, so that several threads may sweep
};

/// When the sweeps end.
struct DynsSweepLimits {
    int sweeps;        ///< at most, and at least 1
    KitReal tolerance; ///< of the residual and of its relative change; not above 0: all sweeps
};

/// Block Gauss-Seidel over the constraints of a partition: each constraint's few rows are solved
/// exactly with the effect of all others as a load. What a sweep reads stands in the order of the
/// sweep. Memory comes from the pool and goes with it. Results depend on the order alone, not on the
/// threads.
class DynsBlockSweeps final : DynsStagedWork {
public:
    /// @param bodies number of bodies of the partition
    DynsBlockSweeps(DynsConstraints& constraints, int bodies, KitMemoryPool& pool,
                    DynsSweepOrder order);

    /// Forgets lambda.
    void startFromZero();
    /// The first solve begins with the given lambda, that of the last step, each divided by 1 + xgamma
    /// and brought inside its bounds, with those of friction rows that follow the given normal forces.
    void startFromGiven();
    /// Sweeps from the present lambda, for the present rhs and bounds. Friction bounds follow the
    /// normal force of the same constraint. Every lambda stays finite and inside its bounds.
    ///
    /// In the order of the rows the residual is measured after each sweep, without softness, the first
    /// against 1. By colours each constraint's residual is measured when the sweep comes to it.
    void solve(const DynsSweepLimits& limits, DynsStageTeam& team, KitThreadPool* threads);

private:
    enum class Stage { kLoad, kSweep, kStore, kEnd };

    void takeBlocks(KitMemoryPool& pool);
    void takeChunks(KitMemoryPool& pool);
    int beginStage() override;
    void runChunk(int chunk) override;
    void endRound();
    [[nodiscard]] bool sweepIsLast();
    [[nodiscard]] KitReal sumOfSquares() const;

    DynsConstraints& c;
    DynsSweepOrder mOrder;
    int mBodies;
    bool mAreBlocksBuilt = false;
    bool mIsWarm = false;
    DynsColours mColours; ///< one group, to be taken in its order, for the order of the rows
    DynsSweepBlock* mBlocks = nullptr; ///< in the order of the sweep
    DynsSweepBody* mSums = nullptr;
    int* mChunkEnds = nullptr;                   ///< chunk: end of its blocks
    KitReal* mErrors = nullptr;                  ///< chunk: squares of the residuals
    int mGroupEnds[DynsColours::kMost + 1] = {}; ///< group: end of its chunks

    // Of the solve under way.
    DynsSweepLimits mLimits{};
    Stage mStage = Stage::kLoad;
    int mGroup = 0, mSweep = 0, mFirstChunk = 0;
    KitReal mPrevious = 0;
};
