#pragma once
#include <Kit/KitApi.h>
#include <Kit/KitTypes.h>

// Inertia tensors of solids about their centre, kg m², for a mass in kg and lengths in m. A number
// that is negative or not finite gets a warning, and `out` stays.

/// 2/5 m r² about each axis.
HY_API void DynMakeInertiaTensorSphere(KitReal mass, KitReal radius, KitMatrix3 out);
/// A box of sides x, y and z along the axes: m/12 (y² + z²) about the first, and so on.
HY_API void DynMakeInertiaTensorBox(KitReal mass, KitReal x, KitReal y, KitReal z, KitMatrix3 out);
