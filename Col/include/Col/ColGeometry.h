#pragma once
#include <Kit/KitApi.h>
#include <Kit/KitTypes.h>
#include <Kit/lsTransform.h>
#include <Kit/lsVec3.h>

#include <cstdint>

/// Fixed numbers of the geometry types, indices of the tables.
enum ColGeometryTypeId : std::int16_t {
    kColPlane = 0,
    kColSphere = 1,
    kColBox = 2,
    kColCylinder = 3,
    kColCone = 4,
    kColTriangleList = 5,
    kColCapsule = 6,
    kColRGHeightField = 8,
    kColConvex = 9,
    kColTriangleMesh = 10,
    kColComposite = 11,
    kColParticleSystem = 12, ///< never registered here
    kColSphereHole = 13,
    kColBoxHole = 14,
    kColCylinderHole = 15,
};

/// Head of every geometry record: each starts with it, derived from it.
struct ColGeometry {
    std::int16_t mID = -1; ///< ColGeometryTypeId
    KitReal mSkin = 0;     ///< m, widens the point-in-volume tests
};

/// Mass properties of a geometry of density 1.
struct ColMassProperties {
    KitReal mass = 0;                                       ///< kg for 1 kg/m^3, so m^3
    lsVec3 centre;                                          ///< of mass, frame of the geometry
    KitMatrix3 inertia = {{0, 0, 0}, {0, 0, 0}, {0, 0, 0}}; ///< about the centre of mass
};

/// Destroys a geometry made by the type's create function.
using ColGeometryDestroyFn = void (*)(ColGeometry* g);
/// World box of a geometry at a transform, null for the identity. boundsOut, if given, takes min x,
/// max x, min y, max y, min z, max z.
using ColGeometryGetAABBFn = void (*)(const ColGeometry* g, const lsTransform* tm,
                                      lsVec3* minCorner, lsVec3* maxCorner, KitReal* boundsOut);
/// Bounding sphere in the geometry's frame.
using ColGeometryGetBSphereFn = void (*)(const ColGeometry* g, lsVec3* centre, KitReal* radius);
/// The point farthest along a world direction, world axes.
using ColGeometryMaximumPointFn = void (*)(const ColGeometry* g, const lsTransform* tm,
                                           const lsVec3& direction, lsVec3* point);
/// False if the type has no volume.
using ColGeometryGetMassPropertiesFn = bool (*)(const ColGeometry* g, ColMassProperties* out);
/// Whether a world point lies inside the volume, widened by mSkin.
using ColGeometryGetPointInVolumeFn = bool (*)(const ColGeometry* g, const lsTransform* tm,
                                               const lsVec3& point);

/// Functions of one geometry type; any but destroy may be null.
struct ColGeometryFunctions {
    ColGeometryDestroyFn destroy = nullptr;
    ColGeometryGetAABBFn getAABB = nullptr;
    ColGeometryGetAABBFn getXYAABB = nullptr; ///< the same for the x and y axes alone
    ColGeometryGetBSphereFn getBSphere = nullptr;
    ColGeometryMaximumPointFn maximumPoint = nullptr;
    ColGeometryGetMassPropertiesFn getMassProperties = nullptr;
    ColGeometryGetPointInVolumeFn getPointInVolume = nullptr;
};

/// Registers a type under its fixed number and answers it; starts the framework if need be. A later
/// registration replaces an earlier one. No room in the tables is error 21.
/// @param typeName not owned, lives as long as the framework
HY_API int ColGeometryRegisterType(int typeEnum, const char* typeName,
                                   const ColGeometryFunctions& functions);
/// Sets the head of a new record.
HY_API void ColGeometryInitObject(ColGeometry* g, int typeId);
HY_API void ColGeometryDestroy(ColGeometry* g);
HY_API void ColGeometryGetAABB(const ColGeometry* g, const lsTransform* tm, lsVec3* minCorner,
                               lsVec3* maxCorner, KitReal* boundsOut);
HY_API void ColGeometryGetXYAABB(const ColGeometry* g, const lsTransform* tm, lsVec3* minCorner,
                                 lsVec3* maxCorner, KitReal* boundsOut);
HY_API void ColGeometryGetBSphere(const ColGeometry* g, lsVec3* centre, KitReal* radius);
HY_API void ColGeometryMaximumPoint(const ColGeometry* g, const lsTransform* tm,
                                    const lsVec3& direction, lsVec3* point);
/// Mass properties for density 1, with the inertia tensor made symmetric; false without a volume.
HY_API bool ColGeometryGetMassProperties(const ColGeometry* g, ColMassProperties* out);
[[nodiscard]] HY_API bool ColGeometryGetPointInVolume(const ColGeometry* g, const lsTransform* tm,
                                                      const lsVec3& point);

/// In range and registered.
[[nodiscard]] HY_API bool ColGeometryTypeIdIsValid(int id);
/// The type's name, "UnknownGeometryType" for a number that is not valid.
[[nodiscard]] HY_API const char* ColGeometryGetTypeNameFromId(int id);
/// One more than the highest number registered so far.
[[nodiscard]] HY_API int ColGeometryGetRegisteredTypeCount();
/// Capacity of the tables.
[[nodiscard]] HY_API int ColGeometryGetRegisteredTypeMaxId();
HY_API void ColGeometryResetTypes();

/// True for sphere, box, cylinder and capsule, and only those.
[[nodiscard]] constexpr bool ColGeometryIdIsAPrimitive(int id) noexcept {
    return id == kColSphere || id == kColBox || id == kColCylinder || id == kColCapsule;
}
/// What a type's GetTypeId answers before its registration is -1.
[[nodiscard]] constexpr bool ColGeometryTypeIsRegistered(int id) noexcept {
    return id != -1;
}
