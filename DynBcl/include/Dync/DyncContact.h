#pragma once
#include <Dync/DynContactRecord.h>
#include <Dync/DyncRows.h>
#include <Kit/KitApi.h>
#include <Kit/lsVec3.h>

struct DyncConstraintParameters;

/// Most rows of a contact: one along the normal, one for each friction axis.
constexpr int kDyncMaxContactRows = 1 + DyncContactMaterial::kFrictionAxisCount;

/// Whether the axis has a row: its model is neither None nor Neutral.
[[nodiscard]] constexpr bool DyncContactHasAxis(const DyncContactMaterial& material,
                                                int axis) noexcept {
    return material.model[axis] != DyncContactMaterial::kFrictionModelNone &&
           material.model[axis] != DyncContactMaterial::kFrictionModelNeutral;
}

/// Writes the Jacobian rows of a contact: the normal's, then one for each friction axis in use, in the
/// order of the axes. A row of a slot without body is left as it is. Without a direction of its own
/// the contact takes over that of the default friction frame.
/// @param v takes the unit axes: normal, primary, secondary; may be null
/// @return the number of rows
HY_API int DyncGetContactJacobian(DynContact* contact, DyncRowBlock& G, lsVec3* v);
/// Velocity of body 0 less that of body 1 at the contact: along the normal and along the two linear
/// friction axes, m/s. 0 for an axis without row, all 0 for a record that is no contact.
HY_API void DyncContactGetSlipVelocity(const DynBaseConstraint* constraint, KitVector3 v);

/// Row builder of contacts, see DyncAddConstraintFn.
HY_API int DyncAddContact(DynsConstraints* clist, DynBaseConstraint* constraint,
                          const DyncConstraintParameters* params);
