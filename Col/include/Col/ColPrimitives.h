#pragma once
#include <Kit/KitApi.h>

/// Registers the types of primitives.
HY_API void ColPrimitivesRegisterTypes();
/// Registers the contact generators of pairs of primitives and their functions
/// for line segments, capsules apart; after their types.
///
/// Some pairs tell only whether they touch, and never have contacts: a cone
/// with a box, a cone or a cylinder. A cone and a capsule, two planes, two lists
/// of triangles, and such a list with a plane or a cone are not served.
HY_API void ColPrimitivesRegisterInteractions();
/// Registers the contact generators of capsules with capsules, spheres, boxes,
/// cylinders, planes and lists of triangles, and line segments with capsules.
HY_API void ColCapsulePrimitiveRegisterInteraction();
/// Sets what applications start from: a contact tolerance of 1 mm for new
/// models, contacts nearer than 1 mm count as one, and a default request of the
/// application's own that prefers face normals.
HY_API void ColPrimitivesSetDefaults();
