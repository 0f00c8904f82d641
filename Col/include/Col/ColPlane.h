#pragma once
#include <Col/ColGeometry.h>
#include <Kit/KitApi.h>

/// The plane z = 0 of its frame, solid below; the frame's z axis is the outward normal.
struct ColPlane : ColGeometry {};

/// Owned by the caller until ColGeometryDestroy().
[[nodiscard]] HY_API ColPlane* ColPlaneCreate();
/// -1 before registration.
[[nodiscard]] HY_API int ColPlaneGetTypeId();
HY_API int ColPlaneRegisterType();
