#pragma once
#include <Dync/DynBaseConstraint.h>
#include <Kit/KitApi.h>
#include <Kit/lsTransform.h>
#include <Kit/lsVec3.h>

/// Attachments of a constraint in the world, at the present poses of its bodies.
struct DyncWorldFrames {
    lsTransform w[kDynsMaxConstraintBodies]; ///< attachment frames
    /// From the body's centre of mass to the attachment; from the world's origin without body.
    lsVec3 p[kDynsMaxConstraintBodies];
    lsVec3 d01; ///< from attachment 1 to attachment 0
};

/// Frames of the slots in use.
[[nodiscard]] HY_API DyncWorldFrames DyncGetWorldFrames(const DynBaseConstraint& constraint);

/// Velocity of the point of body 0 less that of body 1, along an axis; points as arms from the
/// centres of mass. A slot without body, or with a frozen one, counts as resting.
[[nodiscard]] HY_API KitReal DyncGetBodiesRelLinearVelocityAlong(
    const DynBaseConstraint& constraint, const lsVec3* p, const lsVec3& axis);
/// Angular velocity of body 0 less that of body 1, about an axis.
[[nodiscard]] HY_API KitReal
DyncGetBodiesRelAngularVelocityAbout(const DynBaseConstraint& constraint, const lsVec3& axis);
