#pragma once
#include <Col/ColGeometry.h>
#include <Kit/KitApi.h>
#include <Kit/KitTypes.h>

/// A cylinder about the origin of its frame, axis along z.
struct ColCylinder : ColGeometry {
    KitReal radius = 0;          ///< m, positive
    KitReal halfHeight = 0;      ///< m, positive
    KitReal mBoundingRadius = 0; ///< m
};

/// Takes the full height, m. Owned by the caller until
/// ColGeometryDestroy(); a number that is not finite and positive gives a warning and null.
[[nodiscard]] HY_API ColCylinder* ColCylinderCreate(KitReal radius, KitReal height);
/// A number that is not finite and positive gives a warning and changes nothing.
HY_API void ColCylinderSetDimensions(ColCylinder* cylinder, KitReal radius, KitReal height);
[[nodiscard]] HY_API KitReal ColCylinderGetRadius(const ColCylinder* cylinder);
/// Full height, m.
[[nodiscard]] HY_API KitReal ColCylinderGetHeight(const ColCylinder* cylinder);
/// -1 before registration.
[[nodiscard]] HY_API int ColCylinderGetTypeId();
HY_API int ColCylinderRegisterType();
