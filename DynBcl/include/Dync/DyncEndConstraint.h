#pragma once
#include <Dync/DyncConstraintParameters.h>
#include <Dync/DyncFrames.h>
#include <Dync/DyncRows.h>
#include <Kit/KitApi.h>

/// Friction rows of a joint behind `row` rows: bounds on the force along or about the axes of the
/// entries' reference frames. Static friction raises the bounds until the row first slips. Ends at
/// the joint's max_rows, with one warning in the life of the process. Answers the rows added.
HY_API int DyncAddFriction(DynsInputRowFactors* factors, DyncRowBlock& G, int row,
                           DynBaseConstraint* constraint, const DyncConstraintParameters* params,
                           const DyncWorldFrames& frames);

/// Gives each row its softness (its own, the relaxation of its equation, or the global one of its
/// kind, which is a floor for all), turns bodies that act as kinematic into target speeds, and pushes
/// the rows. Answers the rows pushed: 0 while another partition has still to build the constraint,
/// and where no body of the partition takes part.
HY_API int DyncEndConstraint(DynsConstraints* clist, DynBaseConstraint* constraint,
                             DynsInputRowFactors* factors, int rows,
                             const DyncConstraintParameters* params);
