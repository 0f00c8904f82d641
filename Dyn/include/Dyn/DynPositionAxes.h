#pragma once
#include <Dync/DynJointRecords.h>
#include <Kit/KitApi.h>

/// Frame along whose axes the position rows act: 0, 1, or -1 for the world's. Anything else: a
/// warning, no change.
HY_API void DynPositionAxesSetReferenceBody(DynPositionAxes* joint, int body);
