#pragma once
#include <Hy/HyTypes.h>
#include <Kit/KitApi.h>

namespace Hy {

/// Settings of the solver for the islands of one solver group.
///
/// A view: a pointer to it is a pointer to the DynGrouping record of its group, which lives, at one
/// address, as long as the universe. Got from HyUniverse::getSolverParameters(), never made or
/// deleted. Group 0 holds for parts without a group too: its setters also write the parameters of the
/// world. A value out of its range gets a warning, and the old one stays.
class HY_API HySolverParameters {
public:
    enum eStepperModel : int {
        kStableStepper = 0,      ///< true inertia, stabilised gyroscopic torque
        kHomogeneousStepper = 1, ///< spherical inertia, no gyroscopic torque
    };
    enum eLinearSolver : int {
        kVBCholeskySolver = 0,     ///< factors in the order of the constraints
        kBVBRRTCholeskySolver = 1, ///< by tiles, in an order of its own
    };

    HySolverParameters() = delete;
    HySolverParameters(const HySolverParameters&) = delete;
    HySolverParameters& operator=(const HySolverParameters&) = delete;

    /// Takes all settings of the solver and of the constraints' softness from another group, which
    /// may be of another universe; what the partitioner reads stays. Null: a warning.
    void set(const HySolverParameters* other);
    /// Number of the group.
    [[nodiscard]] int getSolverGroup() const;

    // Choice of the solver.

    void setStepperModel(eStepperModel model);
    [[nodiscard]] eStepperModel getStepperModel() const;
    void setLinearSolver(eLinearSolver solver);
    [[nodiscard]] eLinearSolver getLinearSolver() const;
    /// @param id of a kind in HyConstraintSolverRegistry: 0 direct, 1 iterative. Where its factory has
    ///   gone meanwhile, islands are solved by 0.
    void setConstraintSolver(unsigned id);
    [[nodiscard]] unsigned getConstraintSolver() const;
    /// Islands with more rows are given to the iterative solver, which takes all threads for a large
    /// one; 0, as at the start: none are.
    void setIterativeSolverRowThreshold(int rows);
    [[nodiscard]] int getIterativeSolverRowThreshold() const;
    /// The iterative solver begins with most of the forces of the last step, with as much as is stable
    /// however few the sweeps, so that a heap at rest needs few of them; without, with none. Off at the
    /// start.
    void setIterativeSolverWarmStart(bool on);
    [[nodiscard]] bool getIterativeSolverWarmStart() const;
    /// Adds the geometric stiffness of last step's joint forces to the parts' effective inertia, which
    /// keeps taut chains of light links stable. Off at the start.
    void setGeometricStiffness(bool on);
    [[nodiscard]] bool getGeometricStiffness() const;

    // Passes and tolerances. Counts and tolerances are not negative.

    /// Coupling passes between partitions beyond the first.
    void setConstraintSolverMaxCouplingIteration(int count);
    [[nodiscard]] int getConstraintSolverMaxCouplingIteration() const;
    /// Passes of the direct solver, at least 1.
    void setConstraintStdSolverMaxIteration(int count);
    [[nodiscard]] int getConstraintStdSolverMaxIteration() const;
    /// Violation that the direct solver takes for none.
    void setConstraintStdSolverTolerance(HyReal tolerance);
    [[nodiscard]] HyReal getConstraintStdSolverTolerance() const;
    /// Sweeps of the iterative solver beyond the first.
    void setConstraintIterativeSolverMaxIteration(int count);
    [[nodiscard]] int getConstraintIterativeSolverMaxIteration() const;
    /// Residual, or its relative change, at which the sweeps end; 0 takes all of them.
    void setConstraintIterativeSolverTolerance(HyReal tolerance);
    [[nodiscard]] HyReal getConstraintIterativeSolverTolerance() const;
    /// Further solves with friction bounds that follow the normal forces.
    void setScaleBoxMaxIteration(int count);
    [[nodiscard]] int getScaleBoxMaxIteration() const;
    /// Relative change of the forces at which those solves end.
    void setScaleBoxTolerance(HyReal tolerance);
    [[nodiscard]] HyReal getScaleBoxTolerance() const;

    // Softness of the rows that are not relaxed by themselves; finite and not negative.

    /// m/N
    void setConstraintLinearCompliance(HyReal compliance);
    [[nodiscard]] HyReal getConstraintLinearCompliance() const;
    /// rad/(N m)
    void setConstraintAngularCompliance(HyReal compliance);
    [[nodiscard]] HyReal getConstraintAngularCompliance() const;
    /// N s/m
    void setConstraintLinearDamping(HyReal damping);
    [[nodiscard]] HyReal getConstraintLinearDamping() const;
    /// N m s/rad
    void setConstraintAngularDamping(HyReal damping);
    [[nodiscard]] HyReal getConstraintAngularDamping() const;
    /// m/(N s)
    void setConstraintLinearKineticLoss(HyReal loss);
    [[nodiscard]] HyReal getConstraintLinearKineticLoss() const;
    /// rad/(N m s)
    void setConstraintAngularKineticLoss(HyReal loss);
    [[nodiscard]] HyReal getConstraintAngularKineticLoss() const;
    /// All six. If one is refused, none is set.
    void setConstraintComplianceParameters(HyReal linearCompliance, HyReal angularCompliance,
                                           HyReal linearDamping, HyReal angularDamping,
                                           HyReal linearLoss, HyReal angularLoss);

    // What the partitioner reads.

    /// Of the parts of a constraint, those of the strongest group act as if nothing moved them, in
    /// that constraint.
    void setStrength(int strength);
    [[nodiscard]] int getStrength() const;
    /// Constraints that a partition of this group may reach into other groups; -1: the universe's.
    void setPartitionCrossGroupingDepth(int depth);
    [[nodiscard]] int getPartitionCrossGroupingDepth() const;
    /// Most parts of a partition that begins in this group; -1 and 0: no limit.
    void setPartitionPartMaxCount(int count);
    [[nodiscard]] int getPartitionPartMaxCount() const;
    /// Group whose settings the secondary partitions of this group take; created if it is missing.
    void setSecondarySolverGroup(int group);
    [[nodiscard]] int getSecondarySolverGroup() const;
};

} // namespace Hy
