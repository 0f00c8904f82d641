#include "StepperData.h"

#include "DynsFrame.h"

#include <Dyns/DynsConstraintFrames.h>
#include <Dyns/DynsConstraints.h>
#include <Kit/KitMemoryPool.h>
#include <Kit/KitProfile.h>

#include <algorithm>

namespace {

constexpr std::size_t kFirstPoolBytes = 10;
constexpr std::size_t kPoolAlignment = 16;
/// Work memory of a typical solve: a first estimate, from which the frame learns.
constexpr std::size_t kBytesPerRow = 256;
/// Identifier of itr_constraint_solver.
constexpr unsigned kIterativeSolver = 1;

} // namespace

StepperData::StepperData() : c(DynsConstraintsCreate()) {
    DynsParametersSetDefault(&kp);
    DynsFrameCreate(&kp);
    kf = kp.kiro_frame;
    kp.memory_pool_size = kFirstPoolBytes;
    KitChunkInit(&mc);
    KitChunkSetAuto(&mc, kFirstPoolBytes, kPoolAlignment);
}

void StepperData::destroy(const KitMemoryAPIStruct* mem) {
    DynsFrameDestroy(&kp);
    DynsConstraintsDestroy(c, mem);
    KitChunkDestroy(&mc);
    kf = nullptr;
    c = nullptr;
}

void StepperData::prepareMemory(int maxRows) {
    const std::size_t rows = static_cast<std::size_t>(std::max(maxRows, 0));
    const std::size_t size =
        std::max(kp.memory_pool_size + kp.memory_pool_needed, kBytesPerRow * rows + kBytesPerRow);
    kp.memory_pool_needed = 0;
    kp.memory_pool = KitChunkGetMem(&mc, size);
    kp.memory_pool_size = size;
    kp.memory_pool_handler->init(kp.memory_pool, size);
}

void StepperData::chooseSolvers() {
    model = DynsFrameGetStepper(*kf, kp);
    linear_solver = DynsFrameGetMatrix(*kf, kp);
    lcp_solver = DynsFrameGetLcpSolver(*kf, kp);
    const bool large = kp.iterative_rows_threshold > 0 &&
                       DynsConstraintsGetNumRows(c) > kp.iterative_rows_threshold;
    ct_solver = DynsFrameGetConstraintSolver(*kf, large ? kIterativeSolver : kp.ct_solver);
}

bool StepperData::isShared() const {
    return !usesAllThreads && c->n_constraint_rows > 0;
}

void StepperData::spreadOver(KitThreadPool* pool) {
    usesAllThreads = pool != nullptr;
    kp.thread_pool = pool;
    if (linear_solver)
        linear_solver->thread_pool = pool;
}

void StepperData::setUp(int index) {
    iteration = 0;
    model->setup(nb, c, &kp, b, lcp_solver, linear_solver, ct_solver);
    model->initialize();
    partitionIndex = index;
}

void StepperData::runPass() {
    model->pre_sync_forces();
    model->get_forces();
    postSync();
}

void StepperData::postSync() {
    model->post_sync_forces();
    ++iteration;
}

void StepperData::solveAlone(int index) {
    const KitProfileScope zone("dynamics: island");
    setUp(index);
    do
        runPass();
    while (isActive());
    model->computeAcceleration();
    model->cleanup();
}
