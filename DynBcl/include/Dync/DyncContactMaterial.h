#pragma once
#include <Kit/KitApi.h>
#include <Kit/KitTypes.h>

/// What two surfaces do to each other, as plain numbers: the part of a contact material that the rows
/// of a contact read. Each contact has a copy of its own, which the response may rewrite.
struct DyncContactMaterial {
    enum FrictionAxis : int {
        kFrictionAxisLinearPrimary = 0,
        kFrictionAxisLinearSecondary = 1,
        kFrictionAxisAngularNormal = 2,
        kFrictionAxisAngularPrimary = 3,
        kFrictionAxisAngularSecondary = 4,
        kFrictionAxisCount = 5,
        kFrictionAxisLinear = 6, ///< in a setter: both linear axes
    };
    enum FrictionModel : int {
        kFrictionModelBox = 0,                 ///< bound: boxMaxForce
        kFrictionModelScaledBox = 1,           ///< bound: sbCoefficient times the normal force
        kFrictionModelBoxProportionalLow = 2,  ///< bound: boxMaxForce times the smaller mass
        kFrictionModelBoxProportionalHigh = 3, ///< bound: boxMaxForce times the larger mass
        kFrictionModelScaledBoxFast = 4,       ///< ScaledBox by the last step's normal force
        kFrictionModelNeutral = 5,             ///< no row; yields to the other material
        kFrictionModelNone = 6,                ///< no row
    };
    /// Values of options.
    enum Option : int {
        kOptionDirection = 1,  ///< the contact's direction is the primary friction axis
        kOptionCompliance = 4, ///< compliance or damping is not zero
    };

    int options = 0;
    KitReal restitution = 0;
    KitReal velThreshold = 0.001;   ///< m/s, no bounce at or below it
    KitReal compliance = 0;         ///< m/N
    KitReal damping = 0;            ///< N s/m
    KitReal max_adhesive_force = 0; ///< N, by which the normal row may pull
    FrictionModel model[kFrictionAxisCount] = {kFrictionModelNone, kFrictionModelNone,
                                               kFrictionModelNone, kFrictionModelNone,
                                               kFrictionModelNone};
    /// N, N m on the angular axes; an acceleration in the proportional models.
    KitReal boxMaxForce[kFrictionAxisCount] = {0, 0, 0, 0, 0};
    KitReal slip[kFrictionAxisCount] = {0, 0, 0, 0, 0};  ///< velocity softness, m/(N s)
    KitReal slide[kFrictionAxisCount] = {0, 0, 0, 0, 0}; ///< speed of the surface, m/s
    KitReal sbCoefficient[kFrictionAxisCount] = {0, 0, 0, 0, 0};
    KitReal staticFrictionScale[kFrictionAxisCount] = {1, 1, 1, 1, 1};
    bool mIntegratedSlipDisplacementActivated = false;
};

/// Sets a value of one axis, or of both linear axes; an axis out of range is ignored.
template <class T>
constexpr void DyncContactMaterialSet(T (&values)[DyncContactMaterial::kFrictionAxisCount],
                                      int axis, T value) noexcept {
    if (axis == DyncContactMaterial::kFrictionAxisLinear)
        values[0] = values[1] = value;
    else if (axis >= 0 && axis < DyncContactMaterial::kFrictionAxisCount)
        values[axis] = value;
}
/// Keeps kOptionCompliance set exactly while compliance or damping is not zero.
constexpr void DyncContactMaterialSetCompliance(DyncContactMaterial* material, KitReal compliance,
                                                KitReal damping) noexcept {
    material->compliance = compliance;
    material->damping = damping;
    material->options &= ~DyncContactMaterial::kOptionCompliance;
    if (compliance != 0 || damping != 0)
        material->options |= DyncContactMaterial::kOptionCompliance;
}
