#pragma once
#include <Dyn/DynConstraint.h>
#include <Dync/DynContactRecord.h>

struct DynBody;
struct DynWorld;

// Contacts: constraints that are made, filled and dropped by the thousand. No contact argument may be
// null, but where a function destroys. A vector or number that is not finite is refused with a
// warning, and the contact stays as it was. Vectors are in world axes.

/// The end of a list of contacts.
constexpr DynContact* DynContactInvalidID = nullptr;

// Life.

/// A contact in its initial state, in the world, from its constraint pool; null if that cannot grow.
[[nodiscard]] HY_API DynContact* DynContactCreate(DynWorld* world);
/// See DynConstraintDestroy.
HY_API bool DynContactDestroy(DynContact* contact);
/// The initial state again, disabled and without bodies, in the same world: a record for reuse.
HY_API void DynContactReset(DynContact* contact);

// State.

/// Null stands for the world. Of an enabled contact as DynConstraintSetBodies.
HY_API void DynContactSetBodies(DynContact* contact, DynBody* body0, DynBody* body1);
HY_API void DynContactSetPosition(DynContact* contact, const KitVector3 position);
/// Towards body 0; is made a unit vector. Zero: a warning, no change.
HY_API void DynContactSetNormal(DynContact* contact, const KitVector3 normal);
/// Aims the primary friction axis: its part in the plane of contact counts. Zero: a warning, no
/// change. The contact's material gets kOptionDirection.
HY_API void DynContactSetDirection(DynContact* contact, const KitVector3 direction);
/// In m, positive when the surfaces overlap.
HY_API void DynContactSetPenetration(DynContact* contact, KitReal penetration);
/// The contact's share of the area: softness is divided by it. Above 0 once there is softness.
HY_API void DynContactSetSurface(DynContact* contact, KitReal surface);
/// A copy of the material, options included.
/// @param name of the material, not owned: it outlives the contact; may be null
HY_API void DynContactSetParams(DynContact* contact, const DyncContactMaterial* material,
                                const char* name);
/// A weak contact may be given up where a solver group ends; see DynWeak.
HY_API void DynContactSetWeakContact(DynContact* contact, int weak);
HY_API void DynContactSetGroupIndex(DynContact* contact, int group);

HY_API void DynContactGetBodies(const DynContact* contact, DynBody** body0, DynBody** body1);
HY_API void DynContactGetPosition(const DynContact* contact, KitVector3 position);
HY_API void DynContactGetNormal(const DynContact* contact, KitVector3 normal);
HY_API void DynContactGetDirection(const DynContact* contact, KitVector3 direction);
[[nodiscard]] HY_API KitReal DynContactGetPenetration(const DynContact* contact);
[[nodiscard]] HY_API KitReal DynContactGetSurface(const DynContact* contact);
[[nodiscard]] HY_API const DyncContactMaterial* DynContactGetParams(const DynContact* contact);
[[nodiscard]] HY_API int DynContactGetWeakContact(const DynContact* contact);
[[nodiscard]] HY_API int DynContactGetGroupIndex(const DynContact* contact);
/// See DyncContactGetSlipVelocity.
HY_API void DynContactGetSlipVelocity(const DynContact* contact, KitVector3 v);

// The list of a pair's contacts.

HY_API void DynContactSetNext(DynContact* contact, DynContact* next);
[[nodiscard]] HY_API DynContact* DynContactGetNext(const DynContact* contact);
/// Links a contact that is in no list behind another.
HY_API void DynContactInsertAfter(DynContact* contact, DynContact* inserted);

// Friction.

/// Masses of the dynamic bodies among two, which may be null: the smaller and the larger, kg. Without
/// any: DBL_MAX and 0.
HY_API void DynContactGetPairMasses(const DynBody* body0, const DynBody* body1, KitReal* low,
                                    KitReal* high);
/// Turns the models of the contact's own material into those that its rows know: None for Neutral, Box
/// for the proportional ones and for ScaledBoxFast of a matched contact (by the normal force of the
/// last step), ScaledBox for that of another. Once after each DynContactSetParams.
/// @param low,high from DynContactGetPairMasses
HY_API void DynContactResolveFriction(DynContact* contact, KitReal low, KitReal high);
/// sqrt of the larger vel_thresh of two bodies, which may be null, times a scale: the speed, in m/s,
/// above which their contacts count as sliding.
[[nodiscard]] HY_API KitReal DynContactComputeSlidingVelocityThreshold(const DynBody* body0,
                                                                       const DynBody* body1,
                                                                       KitReal scale);

// Call-backs for DynBodySetFrictionDirectionCB: aim the friction of the contacts from the given one
// to the end of its list. data points at three numbers, an axis in the body's frame. Where the axis
// is too near the normal, or to the plane, a direction stays.

/// Across the axis: n x axis.
HY_API void DynBodyFrictionDirectionPerpendicularToAxisCB(DynBaseConstraint* contact, DynBody* body,
                                                          void* data);
/// Along the axis, against its sense: n x (n x axis).
HY_API void DynBodyFrictionDirectionParallelToAxisCB(DynBaseConstraint* contact, DynBody* body,
                                                     void* data);
