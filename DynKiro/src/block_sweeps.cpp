#include "block_sweeps.h"

#include "constraint_block.h"
#include "pool_array.h"

#include <Dyns/DynsConstraints.h>
#include <Kit/KitMemoryPool.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <new>
#include <numeric>

namespace {

/// Long enough to outweigh the handing over between threads, some microseconds.
constexpr int kBlocksPerChunk = 32;

DynsColours inOrderOfRows(const DynsConstraints& c, KitMemoryPool& pool) {
    DynsColours one;
    one.order = takePoolArray<int>(&pool, c.n_constraints, "sweep order");
    std::iota(one.order, one.order + c.n_constraints, 0);
    one.starts[1] = c.n_constraints;
    one.groups = 1;
    one.hasRest = true;
    return one;
}

} // namespace

DynsBlockSweeps::DynsBlockSweeps(DynsConstraints& constraints, int bodies, KitMemoryPool& pool,
                                 DynsSweepOrder order)
    : c(constraints), mOrder(order), mBodies(bodies),
      mColours(order == DynsSweepOrder::kColours ? DynsColourConstraints(c, bodies, pool)
                                                 : inOrderOfRows(c, pool)),
      mSums(takePoolArray<DynsSweepBody>(&pool, bodies, "body force")) {
    takeBlocks(pool);
    takeChunks(pool);
}

void DynsBlockSweeps::takeBlocks(KitMemoryPool& pool) {
    struct alignas(64) Line {
        KitReal numbers[8];
    };
    mBlocks = takePoolArray<DynsSweepBlock>(&pool, c.n_constraints, "sweep blocks");
    std::size_t reals = 0;
    for (int k = 0; k < c.n_constraints; ++k)
        reals += DynsSweepBlockReals(c, k);
    Line* lines = takePoolArray<Line>(&pool, static_cast<int>(reals / 8), "block matrices");
    KitReal* data = lines ? lines->numbers : nullptr;
    for (int i = 0; i < c.n_constraints; ++i) {
        const int k = mColours.order[i];
        new (mBlocks + i) DynsSweepBlock{.data = data, .constraint = k};
        data += DynsSweepBlockReals(c, k);
    }
}

void DynsBlockSweeps::takeChunks(KitMemoryPool& pool) {
    const int most = c.n_constraints / kBlocksPerChunk + mColours.groups;
    mChunkEnds = takePoolArray<int>(&pool, most, "sweep chunks");
    mErrors = takePoolArray<KitReal>(&pool, most, "sweep errors");
    int chunks = 0;
    for (int g = 0; g < mColours.groups; ++g) {
        const int end = mColours.starts[g + 1];
        const bool whole = mColours.hasRest && g == mColours.groups - 1;
        for (int i = mColours.starts[g]; i < end;) {
            i = whole ? end : std::min(i + kBlocksPerChunk, end);
            mChunkEnds[chunks++] = i;
        }
        mGroupEnds[g] = chunks;
    }
}

void DynsBlockSweeps::startFromZero() {
    std::fill(c.lambda, c.lambda + c.n_constraint_rows, 0.0);
}

// Sweeps that leave the part c of an error and begin with the part s of the last lambda are a lag in the
// loop that stabilises position. For one row and one mode of the errors, with x = h v, phi and
// mu = h^2 (lambda - load)/m, a step does
//   mu' = c s mu - (1 - c)(x + gamma phi),  x' = x + mu',  phi' = phi + x'.
// By Jury's criterion the roots of (z - cs)(z - 1)^2 + (1 - c)((1 + gamma) z^2 - z) lie inside the unit
// circle if and only if c s (1 + gamma) < 1, so that s = 1/(1 + gamma) is the most that is stable
// however few the sweeps; all of lambda makes a long chain diverge.
void DynsBlockSweeps::startFromGiven() {
    mIsWarm = true;
    for (int i = 0; i < c.n_constraint_rows; ++i)
        c.lambda[i] /= 1 + std::max(c.xgamma[i], 0.0);
}

void DynsBlockSweeps::solve(const DynsSweepLimits& limits, DynsStageTeam& team,
                            KitThreadPool* threads) {
    mLimits = limits;
    mStage = Stage::kLoad;
    mGroup = mSweep = mFirstChunk = 0;
    mPrevious = mOrder == DynsSweepOrder::kRows ? 1 : kKitInfinity;
    for (int i = 0; i < mBodies; ++i)
        mSums[i] = {};
    team.run(*this, mOrder == DynsSweepOrder::kColours ? threads : nullptr);
    mAreBlocksBuilt = true;
}

// A round takes all groups through one stage: loading, a sweep, or storing.
int DynsBlockSweeps::beginStage() {
    if (mGroup == mColours.groups)
        endRound();
    if (mStage == Stage::kEnd || mColours.groups == 0)
        return -1;
    mFirstChunk = mGroup == 0 ? 0 : mGroupEnds[mGroup - 1];
    return mGroupEnds[mGroup++] - mFirstChunk;
}

void DynsBlockSweeps::endRound() {
    mGroup = 0;
    if (mStage == Stage::kLoad)
        mStage = Stage::kSweep;
    else if (mStage == Stage::kStore)
        mStage = Stage::kEnd;
    else if (sweepIsLast())
        mStage = Stage::kStore;
}

bool DynsBlockSweeps::sweepIsLast() {
    const bool wasLast = ++mSweep >= mLimits.sweeps;
    if (!(mLimits.tolerance > 0))
        return wasLast;
    const KitReal error = std::sqrt(sumOfSquares());
    const bool done =
        mLimits.tolerance > error || mLimits.tolerance > std::abs(error - mPrevious) / mPrevious;
    mPrevious = error;
    return wasLast || done;
}

KitReal DynsBlockSweeps::sumOfSquares() const {
    if (mOrder == DynsSweepOrder::kColours)
        return std::accumulate(mErrors, mErrors + mGroupEnds[mColours.groups - 1], 0.0);
    KitReal sum = 0;
    for (int i = 0; i < c.n_constraints; ++i)
        sum += DynsSweepBlockResidual(mBlocks[i], mSums);
    return sum;
}

void DynsBlockSweeps::runChunk(int chunk) {
    const int number = mFirstChunk + chunk;
    const int begin = number == 0 ? 0 : mChunkEnds[number - 1], end = mChunkEnds[number];
    if (mStage == Stage::kSweep) {
        KitReal error = 0;
        for (int i = begin; i < end; ++i)
            error += DynsSweepBlockVisit(mBlocks[i], mSums);
        mErrors[number] = error;
        return;
    }
    for (int i = begin; i < end; ++i) {
        DynsSweepBlock& block = mBlocks[i];
        if (mStage == Stage::kStore) {
            DynsSweepBlockStore(block, c);
            continue;
        }
        if (!mAreBlocksBuilt)
            DynsSweepBlockBuild(block, c, block.constraint, block.data);
        DynsSweepBlockLoad(block, c, mIsWarm && !mAreBlocksBuilt, mSums);
    }
}
