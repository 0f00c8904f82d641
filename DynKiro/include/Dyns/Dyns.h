#pragma once
// All public headers of the solver.
#include <Dyns/DynsBody.h>
#include <Dyns/DynsConstraintFrames.h>
#include <Dyns/DynsConstraintSolverRegistry.h>
#include <Dyns/DynsConstraints.h>
#include <Dyns/DynsParameters.h>
#include <Dyns/LCPMatrix.h>
#include <Dyns/StableStepper.h>
#include <Dyns/WorldStepper.h>
#include <Dyns/constraint_solver.h>
#include <Dyns/itr_constraint_solver.h>
#include <Dyns/jacobian.h>
#include <Dyns/kiro_model.h>
#include <Dyns/kitreal.h>
#include <Dyns/lcp.h>
#include <Dyns/mass_matrix.h>
#include <Dyns/std_constraint_solver.h>
