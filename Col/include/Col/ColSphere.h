#pragma once
#include <Col/ColGeometry.h>
#include <Kit/KitApi.h>
#include <Kit/KitTypes.h>

/// A ball about the origin of its frame.
struct ColSphere : ColGeometry {
    KitReal radius = 0; ///< m, positive
};

/// Owned by the caller until ColGeometryDestroy(); a radius that is not finite and positive gives a
/// warning and null.
[[nodiscard]] HY_API ColSphere* ColSphereCreate(KitReal radius);
/// A radius that is not finite and positive gives a warning and changes nothing.
HY_API void ColSphereSetRadius(ColSphere* sphere, KitReal radius);
[[nodiscard]] HY_API KitReal ColSphereGetRadius(const ColSphere* sphere);
/// -1 before registration.
[[nodiscard]] HY_API int ColSphereGetTypeId();
HY_API int ColSphereRegisterType();
