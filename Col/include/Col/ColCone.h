#pragma once
#include <Col/ColGeometry.h>
#include <Kit/KitApi.h>
#include <Kit/KitTypes.h>

/// A cone or its lower part, about the origin of its frame, axis along z: the lower disc is at
/// z = -halfHeight, the upper disc or the tip at z = halfHeight.
struct ColCone : ColGeometry {
    KitReal radiusLower = 0;     ///< m, not negative
    KitReal radiusUpper = 0;     ///< m, not negative, 0 for a tip; one of both is positive
    KitReal halfHeight = 0;      ///< m, positive
    KitReal mBoundingRadius = 0; ///< m
};

/// Takes the full height, m. Owned by the caller until ColGeometryDestroy(); a radius that is not
/// finite or negative, two radii of 0 or a height that is not finite and positive gives a warning
/// and null.
[[nodiscard]] HY_API ColCone* ColConeCreate(KitReal radiusLower, KitReal radiusUpper,
                                            KitReal height);
/// With its tip at z = height / 2.
[[nodiscard]] HY_API ColCone* ColConeCreatePointed(KitReal radius, KitReal height);
/// The same numbers as at creation; others give a warning and change nothing.
HY_API void ColConeSetDimensions(ColCone* cone, KitReal radiusLower, KitReal radiusUpper,
                                 KitReal height);
[[nodiscard]] HY_API KitReal ColConeGetRadiusLower(const ColCone* cone);
[[nodiscard]] HY_API KitReal ColConeGetRadiusUpper(const ColCone* cone);
/// Full height, m.
[[nodiscard]] HY_API KitReal ColConeGetHeight(const ColCone* cone);
/// Radius of the section at a height, m; outside the cone that of the nearer disc.
[[nodiscard]] HY_API KitReal ColConeRadiusAtZ(const ColCone* cone, KitReal z);
/// -1 before registration.
[[nodiscard]] HY_API int ColConeGetTypeId();
HY_API int ColConeRegisterType();
