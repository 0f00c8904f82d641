#pragma once
#include <Dyns/DynsParameters.h>
#include <Kit/KitApi.h>

struct DynsBody;
struct DynsConstraints;
struct DynsConstraintFrames;
struct KitChunk;
struct KitMemoryAPIStruct;
class KitThreadPool;
class LCPMatrix;
class WorldStepper;

/// The solver's workspaces, one a partition of the largest slice. DynsStep runs one slice: setup of
/// each partition, coupling passes in which secondaries go first, then accelerations and cleanup.

/// Fewer rows in all partitions of a slice stay with the calling thread: on two processors that share no
/// cache, islands of 20 rows took as long on both as on one at 640 rows, and islands of 5 rows longer.
constexpr int kDynsMinSharedRows = 600;

/// How the frames reach what the layers above own. Null entries are allowed.
struct DynsHost {
    void* owner = nullptr;
    /// The pool on which partitions are solved side by side; null runs them in turn.
    KitThreadPool* (*threadPool)(void* owner) = nullptr;
};

[[nodiscard]] HY_API DynsConstraintFrames*
DynsConstraintFramesCreate(const KitMemoryAPIStruct* mem);
HY_API void DynsConstraintFramesDestroy(DynsConstraintFrames* frames);
HY_API void DynsConstraintFramesSetHost(DynsConstraintFrames* frames, const DynsHost& host);
/// Makes room for the partitions refIndex[start .. end), of which the last nSecondary are secondary.
/// Arrays are indexed by partition, k_bodies by bodiesStart.
HY_API void DynsConstraintFramesResizeIfNeeded(DynsConstraintFrames* frames, int start, int end,
                                               const int* constraintsSize, const int* bodiesSize,
                                               const int* maxConstraintsRows,
                                               DynsBody* const* k_bodies, const int* bodiesStart,
                                               const int* refIndex, int nSecondary);
/// Rows of a frame of the present slice.
[[nodiscard]] HY_API DynsConstraints* DynsConstraintFramesGetFrame(DynsConstraintFrames* frames,
                                                                   int frameID);
[[nodiscard]] HY_API DynsParameters*
DynsConstraintFramesGetKiroParameters(DynsConstraintFrames* frames, int frameID);
[[nodiscard]] HY_API DynsFrame* DynsConstraintFramesGetKiroFrame(DynsConstraintFrames* frames,
                                                                 int frameID);
[[nodiscard]] HY_API KitChunk* DynsConstraintFramesGetMemoryPool(DynsConstraintFrames* frames,
                                                                 int frameID);
HY_API void DynsConstraintFramesSetBodyArray(DynsConstraintFrames* frames, int frameID,
                                             DynsBody* const* bodies, int nb);
/// The partition takes n + 1 passes.
HY_API void DynsConstraintFramesSetFrameCouplingIterations(DynsConstraintFrames* frames,
                                                           int frameID, int n);
[[nodiscard]] HY_API int DynsConstraintFramesGetThreaded(const DynsConstraintFrames* frames);
/// Answers the old value.
HY_API int DynsConstraintFramesSetThreaded(DynsConstraintFrames* frames, int threaded);
[[nodiscard]] HY_API KitReal
DynsConstraintFramesGetCouplingTolerance(const DynsConstraintFrames* frames);
HY_API void DynsConstraintFramesSetCouplingTolerance(DynsConstraintFrames* frames, KitReal);
HY_API void DynsConstraintFramesPrintMemoryUsage(const DynsConstraintFrames* frames);
/// Solves the slice. finalSlice tells that it is the last of this world step.
HY_API void DynsStep(DynsConstraintFrames* frames, int finalSlice);
/// Partitions of the present slice whose LCP ended without converging, and those that the block
/// sweeps finished, summed since creation.
[[nodiscard]] HY_API long long DynsConstraintFramesGetFallbackCount(const DynsConstraintFrames*);
[[nodiscard]] HY_API long long DynsConstraintFramesGetUnconvergedCount(const DynsConstraintFrames*);

/// Fills kiro_frame and memory_pool_handler of the parameters with new objects.
HY_API void DynsFrameCreate(DynsParameters* parameters);
HY_API void DynsFrameDestroy(DynsParameters* parameters);
/// Append to the frame's models and matrices; answer the new count.
HY_API int DynsFrameAddStepperModel(DynsFrame* frame, WorldStepper* model);
HY_API int DynsFrameAddLinearSolver(DynsFrame* frame, LCPMatrix* matrix);
