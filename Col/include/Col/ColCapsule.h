#pragma once
#include <Col/ColGeometry.h>
#include <Kit/KitApi.h>
#include <Kit/KitTypes.h>

/// The points within a radius of a segment of the z axis; the origin is its middle.
struct ColCapsule : ColGeometry {
    KitReal radius = 0;     ///< m, positive
    KitReal halfHeight = 0; ///< of the segment, m, not negative: its ends are at z = +-halfHeight
    KitReal mBoundingRadius = 0; ///< m
};

/// Takes the height of the straight part, m. Owned by the caller until ColGeometryDestroy(); a radius
/// that is not finite and positive or a height that is not finite or negative gives a warning and
/// null.
[[nodiscard]] HY_API ColCapsule* ColCapsuleCreate(KitReal radius, KitReal height);
/// The same numbers as at creation; others give a warning and change nothing.
HY_API void ColCapsuleSetDimensions(ColCapsule* capsule, KitReal radius, KitReal height);
[[nodiscard]] HY_API KitReal ColCapsuleGetRadius(const ColCapsule* capsule);
/// Height of the straight part, m.
[[nodiscard]] HY_API KitReal ColCapsuleGetHeight(const ColCapsule* capsule);
/// -1 before registration.
[[nodiscard]] HY_API int ColCapsuleGetTypeId();
HY_API int ColCapsuleRegisterType();
