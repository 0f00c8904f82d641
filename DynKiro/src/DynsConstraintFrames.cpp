#include <Dyns/DynsConstraintFrames.h>

#include "InternalConstraintFrames.h"

#include <Dyns/DynsConstraints.h>
#include <Kit/KitMemory.h>
#include <Kit/KitMessage.h>

#include <algorithm>
#include <utility>

namespace {

// The frame of a partition of the present slice, null for an identifier that names none.
StepperData* frameOf(DynsConstraintFrames* frames, int frameID) {
    const auto& steppers = frames->mSteppers;
    const bool known = frameID >= 0 && static_cast<std::size_t>(frameID) < steppers.size();
    return known ? steppers[static_cast<std::size_t>(frameID)] : nullptr;
}

bool isTooSmall(const DynsConstraints& c, int constraints, int bodies, int rows) {
    return c.max_constraints < constraints || c.max_bodies < bodies || c.max_constraint_rows < rows;
}

void printFrames(const std::vector<std::unique_ptr<StepperData>>& frames, int& number) {
    for (const auto& data : frames)
        KitInfo(0, "Frame %d: partCount=%d, constaintCount=%d, maxRows=%d\n", number++,
                data->c->max_bodies, data->c->max_constraints, data->c->max_constraint_rows);
}

} // namespace

DynsConstraintFrames* DynsConstraintFramesCreate(const KitMemoryAPIStruct* mem) {
    auto* frames = new InternalConstraintFrames;
    frames->mem = mem ? mem : &KitMemoryAPI;
    return frames;
}

void DynsConstraintFramesDestroy(DynsConstraintFrames* frames) {
    delete frames;
}

void DynsConstraintFramesSetHost(DynsConstraintFrames* frames, const DynsHost& host) {
    DynsInternal(frames).host = host;
}

void DynsConstraintFramesResizeIfNeeded(DynsConstraintFrames* frames, int start, int end,
                                        const int* constraintsSize, const int* bodiesSize,
                                        const int* maxConstraintsRows, DynsBody* const* k_bodies,
                                        const int* bodiesStart, const int* refIndex,
                                        int nSecondary) {
    const int count = std::max(end - start, 0);
    const int secondaries = std::clamp(nSecondary, 0, count);
    const int primaries = count - secondaries;
    DynsInternal(frames).resize(primaries, secondaries);
    for (int i = 0; i < count; ++i) {
        const int p = refIndex[start + i];
        const auto& pool = i < primaries ? frames->mStepperPrimary : frames->mStepperSecondary;
        StepperData* data = pool[static_cast<std::size_t>(i < primaries ? i : i - primaries)].get();
        frames->mSteppers.push_back(data);
        data->prepareMemory(maxConstraintsRows[p]);
        if (isTooSmall(*data->c, constraintsSize[p], bodiesSize[p], maxConstraintsRows[p]))
            DynsConstraintsResize(data->c, constraintsSize[p], bodiesSize[p], maxConstraintsRows[p],
                                  frames->mem);
        data->nb = bodiesSize[p];
        data->b = k_bodies + bodiesStart[p];
    }
}

DynsConstraints* DynsConstraintFramesGetFrame(DynsConstraintFrames* frames, int frameID) {
    StepperData* data = frameOf(frames, frameID);
    return data ? data->c : nullptr;
}

DynsParameters* DynsConstraintFramesGetKiroParameters(DynsConstraintFrames* frames, int frameID) {
    StepperData* data = frameOf(frames, frameID);
    return data ? &data->kp : nullptr;
}

DynsFrame* DynsConstraintFramesGetKiroFrame(DynsConstraintFrames* frames, int frameID) {
    StepperData* data = frameOf(frames, frameID);
    return data ? data->kf : nullptr;
}

KitChunk* DynsConstraintFramesGetMemoryPool(DynsConstraintFrames* frames, int frameID) {
    StepperData* data = frameOf(frames, frameID);
    return data ? &data->mc : nullptr;
}

void DynsConstraintFramesSetBodyArray(DynsConstraintFrames* frames, int frameID,
                                      DynsBody* const* bodies, int nb) {
    if (StepperData* data = frameOf(frames, frameID)) {
        data->b = bodies;
        data->nb = nb;
    }
}

void DynsConstraintFramesSetFrameCouplingIterations(DynsConstraintFrames* frames, int frameID,
                                                    int n) {
    constexpr int kMost = 1 << 20; // far beyond use, and n + 1 stays an int
    if (StepperData* data = frameOf(frames, frameID))
        data->max_iteration = std::clamp(n, 0, kMost) + 1;
}

int DynsConstraintFramesGetThreaded(const DynsConstraintFrames* frames) {
    return DynsInternal(frames).threaded;
}

int DynsConstraintFramesSetThreaded(DynsConstraintFrames* frames, int threaded) {
    return std::exchange(DynsInternal(frames).threaded, threaded);
}

KitReal DynsConstraintFramesGetCouplingTolerance(const DynsConstraintFrames* frames) {
    return DynsInternal(frames).coupling_tolerance;
}

void DynsConstraintFramesSetCouplingTolerance(DynsConstraintFrames* frames, KitReal tolerance) {
    DynsInternal(frames).coupling_tolerance = tolerance;
}

void DynsConstraintFramesPrintMemoryUsage(const DynsConstraintFrames* frames) {
    int number = 0;
    printFrames(frames->mStepperPrimary, number);
    printFrames(frames->mStepperSecondary, number);
}

void DynsStep(DynsConstraintFrames* frames, int finalSlice) {
    DynsInternal(frames).step(finalSlice != 0);
}

long long DynsConstraintFramesGetFallbackCount(const DynsConstraintFrames* frames) {
    return DynsInternal(frames).fallbacks;
}

long long DynsConstraintFramesGetUnconvergedCount(const DynsConstraintFrames* frames) {
    return DynsInternal(frames).unconverged;
}
