#pragma once
#include <Col/ColGeometry.h>
#include <Kit/KitApi.h>
#include <Kit/KitTypes.h>
#include <Kit/lsTransform.h>
#include <Kit/lsVec3.h>

/// A box about the origin of its frame, edges along the axes.
struct ColBox : ColGeometry {
    lsVec3 mR;                   ///< half lengths of the edges, m, positive
    KitReal mBoundingRadius = 0; ///< m
};

/// Takes the full lengths of the edges, m. Owned by the caller until ColGeometryDestroy(); a length
/// that is not finite and positive gives a warning and null.
[[nodiscard]] HY_API ColBox* ColBoxCreate(KitReal x, KitReal y, KitReal z);
/// Full lengths, m; one that is not finite and positive gives a warning and changes nothing.
HY_API void ColBoxSetDimensions(ColBox* box, KitReal x, KitReal y, KitReal z);
HY_API void ColBoxGetDimensions(const ColBox* box, KitReal* x, KitReal* y, KitReal* z);
[[nodiscard]] HY_API lsVec3 ColBoxGetRadii(const ColBox* box);
/// Corner farthest along a direction in the box's frame. A direction of zero counts as positive.
HY_API void ColBoxMaximumPointLocal(const ColBox* box, const lsVec3& direction, lsVec3* point);
/// The same in world axes.
HY_API void ColBoxMaximumPoint(const ColGeometry* g, const lsTransform* tm, const lsVec3& direction,
                               lsVec3* point);
/// -1 before registration.
[[nodiscard]] HY_API int ColBoxGetTypeId();
HY_API int ColBoxRegisterType();
