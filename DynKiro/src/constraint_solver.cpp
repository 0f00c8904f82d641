#include <Dyns/constraint_solver.h>

#include "DynsFrame.h"

#include <Dyns/DynsConstraintSolverRegistry.h>

constraint_solver::~constraint_solver() {
    DynsFrameForgetSolver(this);
    if (auto* factory = DynsConstraintSolverFactory::findFactoryCreatorOf(this))
        factory->onConstraintSolverDestroyed(this);
}
