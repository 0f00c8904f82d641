#pragma once
#include <Dyns/DynsConstraintSolverRegistry.h>
#include <Dyns/constraint_solver.h>

namespace Hy {

/// The kinds of constraint solver that exist; HySolverParameters::setConstraintSolver() takes their
/// identifiers.
using HyConstraintSolverRegistry = DynsConstraintSolverRegistry;
/// Makes the solvers of one kind, for a plug-in to derive from.
using HyConstraintSolverFactory = DynsConstraintSolverFactory;
/// The factory of solver class T; one object of it makes the kind known.
template <typename T>
using HyConstraintSolverFactoryImpl = DynsConstraintSolverFactoryImpl<T>;

} // namespace Hy
