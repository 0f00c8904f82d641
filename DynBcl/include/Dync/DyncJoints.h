#pragma once
#include <Dync/DynJointRecords.h>
#include <Dync/DyncRows.h>
#include <Kit/KitApi.h>

/// The row builders of the ordinary joints, all of the shape of DyncAddConstraintFn: equations first,
/// then coordinates, then friction. Index of an equation = index of its row.
HY_API int DyncAddBSJoint(DynsConstraints*, DynBaseConstraint*, const DyncConstraintParameters*);
HY_API int DyncAddHinge(DynsConstraints*, DynBaseConstraint*, const DyncConstraintParameters*);
HY_API int DyncAddPrismatic(DynsConstraints*, DynBaseConstraint*, const DyncConstraintParameters*);
HY_API int DyncAddCylindrical(DynsConstraints*, DynBaseConstraint*,
                              const DyncConstraintParameters*);
HY_API int DyncAddUniversal(DynsConstraints*, DynBaseConstraint*, const DyncConstraintParameters*);
HY_API int DyncAddHomokinetic(DynsConstraints*, DynBaseConstraint*,
                              const DyncConstraintParameters*);
HY_API int DyncAddLinear1(DynsConstraints*, DynBaseConstraint*, const DyncConstraintParameters*);
HY_API int DyncAddLinear2(DynsConstraints*, DynBaseConstraint*, const DyncConstraintParameters*);
HY_API int DyncAddLinear3(DynsConstraints*, DynBaseConstraint*, const DyncConstraintParameters*);
HY_API int DyncAddAngular3(DynsConstraints*, DynBaseConstraint*, const DyncConstraintParameters*);
HY_API int DyncAddMotorJoint(DynsConstraints*, DynBaseConstraint*, const DyncConstraintParameters*);
HY_API int DyncAddA1P3Joint(DynsConstraints*, DynBaseConstraint*, const DyncConstraintParameters*);
HY_API int DyncAddA2P3Joint(DynsConstraints*, DynBaseConstraint*, const DyncConstraintParameters*);
HY_API int DyncAddFixedPath(DynsConstraints*, DynBaseConstraint*, const DyncConstraintParameters*);
HY_API int DyncAddDistance(DynsConstraints*, DynBaseConstraint*, const DyncConstraintParameters*);
HY_API int DyncAddConeLimit(DynsConstraints*, DynBaseConstraint*, const DyncConstraintParameters*);
HY_API int DyncAddDoubleHinge(DynsConstraints*, DynBaseConstraint*,
                              const DyncConstraintParameters*);
HY_API int DyncAddGenericConstraint(DynsConstraints*, DynBaseConstraint*,
                                    const DyncConstraintParameters*);
/// Installed over any lockable joint: the two frames rigid with six rows.
HY_API int DyncAddLockJoint(DynsConstraints*, DynBaseConstraint*, const DyncConstraintParameters*);

/// What an application's row function sees.
struct DyncGenericRows {
    DynBaseConstraint* constraint;
    const DyncConstraintParameters* params;
    const DyncWorldFrames* frames;
    DynsInputRowFactors* factors;
    DyncRowBlock* G;
};
