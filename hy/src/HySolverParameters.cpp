#include <Hy/HySolverParameters.h>

#include <Hy/HyMessage.h>

#include <Dyn/DynWorld.h>
#include <Dyns/DynsConstraintSolverRegistry.h>

#include <cmath>

namespace Hy {
namespace {

using LCP = DynsLCPSolverParameters;
using Softness = DyncConstraintParameters;

DynGrouping& recordOf(HySolverParameters* view) {
    return *reinterpret_cast<DynGrouping*>(view);
}

const DynGrouping& recordOf(const HySolverParameters* view) {
    return *reinterpret_cast<const DynGrouping*>(view);
}

// Writes the group, and the world with it if the group is 0.

template <typename Write>
void writeSolver(HySolverParameters* view, Write write) {
    DynGrouping& group = recordOf(view);
    write(group.k_params);
    if (group.id == 0)
        write(group.world->params.k_params);
}

template <typename Write>
void writeSoftness(HySolverParameters* view, Write write) {
    DynGrouping& group = recordOf(view);
    write(group.bcl_params);
    if (group.id == 0)
        write(group.world->params.bcl_params);
}

// Checks, with the operation that warns.

bool isAtLeast(int value, int least, const char* operation) {
    if (value >= least)
        return true;
    HyWarning(0, "HySolverParameters::%s: the number must be at least %d.\n", operation, least);
    return false;
}

bool isNotNegative(HyReal value, const char* operation) {
    if (value >= 0 && std::isfinite(value))
        return true;
    HyWarning(0, "HySolverParameters::%s: the value must be finite and not negative.\n", operation);
    return false;
}

void setCount(HySolverParameters* view, int DynsParameters::*field, int value, int least,
              const char* operation) {
    if (isAtLeast(value, least, operation))
        writeSolver(view, [=](DynsParameters& solver) { solver.*field = value; });
}

void setCount(HySolverParameters* view, int LCP::*field, int value, int least,
              const char* operation) {
    if (isAtLeast(value, least, operation))
        writeSolver(view, [=](DynsParameters& solver) { solver.lcp_parameters.*field = value; });
}

void setTolerance(HySolverParameters* view, KitReal LCP::*field, HyReal value,
                  const char* operation) {
    if (isNotNegative(value, operation))
        writeSolver(view, [=](DynsParameters& solver) { solver.lcp_parameters.*field = value; });
}

void setSoftness(HySolverParameters* view, KitReal Softness::*field, HyReal value,
                 const char* operation) {
    if (isNotNegative(value, operation))
        writeSoftness(view, [=](Softness& softness) { softness.*field = value; });
}

// For a choice of which the solver knows the range, and warns.
template <typename Write>
void writeChoice(HySolverParameters* view, Write write) {
    DynsParameters candidate = recordOf(view).k_params;
    write(candidate);
    if (DynsValidateKiroParameters(&candidate))
        writeSolver(view, write);
}

} // namespace

void HySolverParameters::set(const HySolverParameters* other) {
    if (!other) {
        HyWarning(0, "HySolverParameters::set: other must not be null.\n");
        return;
    }
    const DynGrouping& source = recordOf(other);
    writeSolver(this, [&](DynsParameters& solver) { solver = source.k_params; });
    writeSoftness(this, [&](Softness& softness) { softness = source.bcl_params; });
}

int HySolverParameters::getSolverGroup() const {
    return recordOf(this).id;
}

// Choice of the solver.

void HySolverParameters::setStepperModel(eStepperModel model) {
    writeChoice(this, [=](DynsParameters& solver) {
        solver.stepper_model = static_cast<DynStepperModelEnum>(model);
    });
}

HySolverParameters::eStepperModel HySolverParameters::getStepperModel() const {
    return static_cast<eStepperModel>(recordOf(this).k_params.stepper_model);
}

void HySolverParameters::setLinearSolver(eLinearSolver solver) {
    writeChoice(this, [=](DynsParameters& parameters) {
        parameters.linear_solver = static_cast<DynLinearSolverEnum>(solver);
    });
}

HySolverParameters::eLinearSolver HySolverParameters::getLinearSolver() const {
    return static_cast<eLinearSolver>(recordOf(this).k_params.linear_solver);
}

void HySolverParameters::setConstraintSolver(unsigned id) {
    if (!DynsConstraintSolverRegistry::instance().isIdValid(id)) {
        HyWarning(0,
                  "HySolverParameters::setConstraintSolver: there must be a constraint solver with "
                  "the identifier %u.\n",
                  id);
        return;
    }
    writeSolver(this, [=](DynsParameters& solver) { solver.ct_solver = id; });
}

unsigned HySolverParameters::getConstraintSolver() const {
    return recordOf(this).k_params.ct_solver;
}

void HySolverParameters::setIterativeSolverRowThreshold(int rows) {
    setCount(this, &DynsParameters::iterative_rows_threshold, rows, 0,
             "setIterativeSolverRowThreshold");
}

int HySolverParameters::getIterativeSolverRowThreshold() const {
    return recordOf(this).k_params.iterative_rows_threshold;
}

void HySolverParameters::setIterativeSolverWarmStart(bool on) {
    writeSolver(this, [=](DynsParameters& solver) { solver.iterative_warm_start = on; });
}

bool HySolverParameters::getIterativeSolverWarmStart() const {
    return recordOf(this).k_params.iterative_warm_start != 0;
}

void HySolverParameters::setGeometricStiffness(bool on) {
    writeSolver(this, [=](DynsParameters& solver) { solver.geometric_stiffness = on; });
}

bool HySolverParameters::getGeometricStiffness() const {
    return recordOf(this).k_params.geometric_stiffness != 0;
}

// Passes and tolerances.

void HySolverParameters::setConstraintSolverMaxCouplingIteration(int count) {
    setCount(this, &DynsParameters::coupling_iterations, count, 0,
             "setConstraintSolverMaxCouplingIteration");
}

int HySolverParameters::getConstraintSolverMaxCouplingIteration() const {
    return recordOf(this).k_params.coupling_iterations;
}

void HySolverParameters::setConstraintStdSolverMaxIteration(int count) {
    setCount(this, &LCP::max_iterations, count, 1, "setConstraintStdSolverMaxIteration");
}

int HySolverParameters::getConstraintStdSolverMaxIteration() const {
    return recordOf(this).k_params.lcp_parameters.max_iterations;
}

void HySolverParameters::setConstraintStdSolverTolerance(HyReal tolerance) {
    setTolerance(this, &LCP::tolerance, tolerance, "setConstraintStdSolverTolerance");
}

HyReal HySolverParameters::getConstraintStdSolverTolerance() const {
    return recordOf(this).k_params.lcp_parameters.tolerance;
}

void HySolverParameters::setConstraintIterativeSolverMaxIteration(int count) {
    setCount(this, &LCP::it_ct_solver_max_it, count, 0, "setConstraintIterativeSolverMaxIteration");
}

int HySolverParameters::getConstraintIterativeSolverMaxIteration() const {
    return recordOf(this).k_params.lcp_parameters.it_ct_solver_max_it;
}

void HySolverParameters::setConstraintIterativeSolverTolerance(HyReal tolerance) {
    setTolerance(this, &LCP::it_ct_solver_tol, tolerance, "setConstraintIterativeSolverTolerance");
}

HyReal HySolverParameters::getConstraintIterativeSolverTolerance() const {
    return recordOf(this).k_params.lcp_parameters.it_ct_solver_tol;
}

void HySolverParameters::setScaleBoxMaxIteration(int count) {
    setCount(this, &LCP::max_scaled_box_iterations, count, 0, "setScaleBoxMaxIteration");
}

int HySolverParameters::getScaleBoxMaxIteration() const {
    return recordOf(this).k_params.lcp_parameters.max_scaled_box_iterations;
}

void HySolverParameters::setScaleBoxTolerance(HyReal tolerance) {
    setTolerance(this, &LCP::scaled_box_tolerance, tolerance, "setScaleBoxTolerance");
}

HyReal HySolverParameters::getScaleBoxTolerance() const {
    return recordOf(this).k_params.lcp_parameters.scaled_box_tolerance;
}

// Softness. What follows from it is computed when a step begins.

void HySolverParameters::setConstraintLinearCompliance(HyReal compliance) {
    setSoftness(this, &Softness::linear_compliance, compliance, "setConstraintLinearCompliance");
}

HyReal HySolverParameters::getConstraintLinearCompliance() const {
    return recordOf(this).bcl_params.linear_compliance;
}

void HySolverParameters::setConstraintAngularCompliance(HyReal compliance) {
    setSoftness(this, &Softness::angular_compliance, compliance, "setConstraintAngularCompliance");
}

HyReal HySolverParameters::getConstraintAngularCompliance() const {
    return recordOf(this).bcl_params.angular_compliance;
}

void HySolverParameters::setConstraintLinearDamping(HyReal damping) {
    setSoftness(this, &Softness::linear_damping, damping, "setConstraintLinearDamping");
}

HyReal HySolverParameters::getConstraintLinearDamping() const {
    return recordOf(this).bcl_params.linear_damping;
}

void HySolverParameters::setConstraintAngularDamping(HyReal damping) {
    setSoftness(this, &Softness::angular_damping, damping, "setConstraintAngularDamping");
}

HyReal HySolverParameters::getConstraintAngularDamping() const {
    return recordOf(this).bcl_params.angular_damping;
}

void HySolverParameters::setConstraintLinearKineticLoss(HyReal loss) {
    setSoftness(this, &Softness::linear_kinetic_loss, loss, "setConstraintLinearKineticLoss");
}

HyReal HySolverParameters::getConstraintLinearKineticLoss() const {
    return recordOf(this).bcl_params.linear_kinetic_loss;
}

void HySolverParameters::setConstraintAngularKineticLoss(HyReal loss) {
    setSoftness(this, &Softness::angular_kinetic_loss, loss, "setConstraintAngularKineticLoss");
}

HyReal HySolverParameters::getConstraintAngularKineticLoss() const {
    return recordOf(this).bcl_params.angular_kinetic_loss;
}

void HySolverParameters::setConstraintComplianceParameters(HyReal linearCompliance,
                                                           HyReal angularCompliance,
                                                           HyReal linearDamping,
                                                           HyReal angularDamping, HyReal linearLoss,
                                                           HyReal angularLoss) {
    for (const HyReal value : {linearCompliance, angularCompliance, linearDamping, angularDamping,
                               linearLoss, angularLoss})
        if (!isNotNegative(value, "setConstraintComplianceParameters"))
            return;
    writeSoftness(this, [=](Softness& softness) {
        softness.linear_compliance = linearCompliance;
        softness.angular_compliance = angularCompliance;
        softness.linear_damping = linearDamping;
        softness.angular_damping = angularDamping;
        softness.linear_kinetic_loss = linearLoss;
        softness.angular_kinetic_loss = angularLoss;
    });
}

// What the partitioner reads.

void HySolverParameters::setStrength(int strength) {
    recordOf(this).strength = strength;
}

int HySolverParameters::getStrength() const {
    return recordOf(this).strength;
}

void HySolverParameters::setPartitionCrossGroupingDepth(int depth) {
    if (isAtLeast(depth, -1, "setPartitionCrossGroupingDepth"))
        recordOf(this).cross_grouping_depth = depth;
}

int HySolverParameters::getPartitionCrossGroupingDepth() const {
    return recordOf(this).cross_grouping_depth;
}

void HySolverParameters::setPartitionPartMaxCount(int count) {
    if (isAtLeast(count, -1, "setPartitionPartMaxCount"))
        recordOf(this).max_partition_bodies = count;
}

int HySolverParameters::getPartitionPartMaxCount() const {
    return recordOf(this).max_partition_bodies;
}

void HySolverParameters::setSecondarySolverGroup(int group) {
    if (!isAtLeast(group, 0, "setSecondarySolverGroup"))
        return;
    if (DynGroupingGet(recordOf(this).world, group))
        recordOf(this).secondaryid = group;
}

int HySolverParameters::getSecondarySolverGroup() const {
    return recordOf(this).secondaryid;
}

} // namespace Hy
