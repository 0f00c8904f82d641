#include <Hy/HyFrameStepperOption.h>

#include "ForEachUniverse.h"

#include <Hy/HyMessage.h>
#include <Hy/HySolverParameters.h>
#include <Hy/HyUniverse.h>

#include <algorithm>
#include <limits>

// The iterative solver for all groups during a step. What the groups had is noted in the order of
// universes and groups when the solve begins, and given back at the end of the step. An application
// that changes universes or groups in between, from a check, is warned; what can be restored is.

namespace Hy {
namespace {

/// Identifier of the iterative solver in the registry.
constexpr unsigned kIterativeSolver = 1;

void warnOfChange() {
    HyWarning(0, "HyFrameStepperOption::forceIterativeSolverPost: frame, universe and solver "
                 "parameter content should not be done during the step. Restoring of the solver "
                 "data may be wrong.");
}

} // namespace

void HyFrameStepperOption::setForceIterativeSolverIterationCount(unsigned count) {
    if (count > static_cast<unsigned>(std::numeric_limits<int>::max())) {
        HyWarning(0,
                  "HyFrameStepperOption::setForceIterativeSolverIterationCount: count must be "
                  "at most %d.\n",
                  std::numeric_limits<int>::max());
        return;
    }
    mForceIterativeSolverIterationCount = count;
}

// A step of several substeps comes here once for each: what the groups had of their own must not be
// taken from groups that are forced already.
void HyFrameStepperOption::forceIterativeSolverPre() {
    if (mForceIterativeSolverNeedPost)
        forceIterativeSolverPost();
    mSolverDataCount = 0;
    forEachUniverse([this](HyUniverse& universe) {
        for (int i = 0; i < universe.getSolverParametersCount(); ++i) {
            HySolverParameters& group = *universe.getSolverParameters(i);
            if (mSolverDataCount == mSolverDataArray.size())
                mSolverDataArray.resize(2 * mSolverDataCount);
            SolverData& data = mSolverDataArray[mSolverDataCount++];
            data.mGroup = &group;
            data.mSolverType = group.getConstraintSolver();
            if (data.mSolverType == kIterativeSolver)
                continue;
            data.mIterativeSolverIterationCount = group.getConstraintIterativeSolverMaxIteration();
            group.setConstraintSolver(kIterativeSolver);
            group.setConstraintIterativeSolverMaxIteration(
                static_cast<int>(mForceIterativeSolverIterationCount));
            mForceIterativeSolverNeedPost = true;
        }
    });
}

void HyFrameStepperOption::forceIterativeSolverPost() {
    mForceIterativeSolverNeedPost = false;
    std::size_t next = 0;
    bool complete = true;
    forEachUniverse([&](HyUniverse& universe) {
        if (!restoreSolvers(universe, next))
            complete = false;
    });
    if (!complete)
        warnOfChange();
}

/// Gives the groups of a universe back what is noted from entry next on, and moves it past them.
/// False if some group is not noted. Such a group was made in this step, after the model of group 0,
/// and becomes again what that is; one of a universe that came in this step is as it was made.
bool HyFrameStepperOption::restoreSolvers(HyUniverse& universe, std::size_t& next) {
    bool complete = true;
    const SolverData* model = nullptr;
    for (int i = 0; i < universe.getSolverParametersCount(); ++i) {
        HySolverParameters& group = *universe.getSolverParameters(i);
        while (next < mSolverDataCount && !mSolverDataArray[next].mGroup)
            ++next;
        const bool noted = next < mSolverDataCount && mSolverDataArray[next].mGroup == &group;
        complete = complete && noted;
        const SolverData* data = noted ? &mSolverDataArray[next++] : model;
        if (i == 0)
            model = data;
        const bool forced = noted || group.getConstraintSolver() == kIterativeSolver;
        if (!data || data->mSolverType == kIterativeSolver || !forced)
            continue;
        group.setConstraintSolver(data->mSolverType);
        group.setConstraintIterativeSolverMaxIteration(data->mIterativeSolverIterationCount);
    }
    return complete;
}

/// A universe that leaves in mid-step is restored while it is there.
void HyFrameStepperOption::universeLeaves(HyUniverse& universe) {
    if (!mForceIterativeSolverNeedPost)
        return;
    const HySolverParameters* first = universe.getSolverParameters(0);
    SolverData* const begin = mSolverDataArray.data();
    SolverData* const end = begin + mSolverDataCount;
    SolverData* const place =
        std::find_if(begin, end, [first](const SolverData& data) { return data.mGroup == first; });
    auto next = static_cast<std::size_t>(place - begin);
    if (!restoreSolvers(universe, next))
        warnOfChange();
    std::for_each(place, begin + next, [](SolverData& data) { data.mGroup = nullptr; });
}

} // namespace Hy
