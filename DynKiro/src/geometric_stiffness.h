#pragma once
#include <Kit/KitTypes.h>

struct DynsBody;

/// Takes the geometric stiffness that the last step's joint forces left in a body, zeroes it there,
/// and answers its positive semidefinite part: a joint that pushes softens the body, and what softens
/// may not be taken from its inertia.
void takePositiveGeometricStiffness(DynsBody& body, KitMatrix3 stiffness);
