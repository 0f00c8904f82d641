#pragma once
#include <Col/ColGeometry.h>
#include <Col/CxTriangleNE.h>
#include <Kit/KitApi.h>
#include <Kit/KitTypes.h>
#include <Kit/lsVec3.h>

struct ColModel;
struct ColModelPair;
struct ColTriangleList;

/// Adds the triangles near a ball to the list, frame of the list's model.
/// @param pair whose contacts are wanted
using ColTriangleListGeneratorFn = void (*)(ColModelPair* pair, const lsVec3& centre,
                                            KitReal radius, ColTriangleList* list);
/// Adds the triangles near a box to the list, frame of the list's model.
using ColTriangleListAABBGeneratorFn = void (*)(ColModelPair* pair, const lsVec3& minCorner,
                                                const lsVec3& maxCorner, ColTriangleList* list);
/// Adds the triangles that a line segment may hit to the list, frame of the model.
using ColTriangleListLineSegGeneratorFn = void (*)(ColModel* model, const lsVec3& start,
                                                   const lsVec3& end, ColTriangleList* list);
/// Adds the one triangle of an index.
using ColTriangleListByIndexGeneratorFn = void (*)(ColModel* model, int index,
                                                   ColTriangleList* list);

/// A surface of triangles: its own, or made on demand near what may touch it.
///
/// Generators run on any worker. They fill the list that they are given, which belongs to that worker
/// alone, and find their data by its `userData`; `cacheIndex` tells the workers of one step apart.
/// They must give the same triangles in the same order whatever the worker.
///
/// A list meets spheres, boxes, cylinders and capsules. Pairs with planes, cones and other lists are
/// not served. A body whose centre has come below a triangle's plane gets no contact from it, but for
/// the rounding of a sphere or capsule, which is pushed back while its surface reaches the plane.
struct ColTriangleList : ColGeometry {
    lsVec3 mMin, mMax;                    ///< bounds, frame of the geometry
    KitReal mBoundingRadius = 0;          ///< about the middle of the bounds, m
    CxTriangleNE* triangleList = nullptr; ///< room for triangleMaxCount; owned
    int triangleCount = 0;
    int triangleMaxCount = 0;
    int cacheIndex = -1;      ///< of the worker that fills the list; -1 without workers
    void* userData = nullptr; ///< of the generators; not owned
    int element = -1;         ///< carried for the generators
    ColTriangleListGeneratorFn triangleListGenerator = nullptr;
    /// Asked before triangleListGenerator where both are set.
    ColTriangleListAABBGeneratorFn triangleListAABBGenerator = nullptr;
    ColTriangleListLineSegGeneratorFn triangleListLineSegGenerator = nullptr;
    ColTriangleListByIndexGeneratorFn triangleListByIndexGenerator = nullptr;
};

/// An empty list with room for triangles; it grows as they are added. Owned by the caller until
/// ColGeometryDestroy() or ColTriangleListDestroy(). A negative room gives a warning and null.
[[nodiscard]] HY_API ColTriangleList* ColTriangleListCreate(int triangleMaxCount);
/// Works with and without a framework; null is allowed.
HY_API void ColTriangleListDestroy(ColTriangleList* list);
/// Makes room for a number of triangles in all; never shrinks.
HY_API void ColTriangleListReserve(ColTriangleList* list, int triangleMaxCount);
/// Forgets the triangles and keeps the room.
HY_API void ColTriangleListClear(ColTriangleList* list);
/// Adds a triangle whose edges have no neighbours yet; their angles may be set in what is answered,
/// which stays in place until the next is added. A triangle without area is left out.
/// @param index named by contacts as their element
/// @return null if it was left out
HY_API CxTriangleNE* ColTriangleListAddTriangle(ColTriangleList* list, const lsVec3& a,
                                                const lsVec3& b, const lsVec3& c, int index);
/// Bounds of all that the generators can give, frame of the geometry. Corners that are not finite, or
/// not in order, give a warning and change nothing.
HY_API void ColTriangleListSetBounds(ColTriangleList* list, const lsVec3& minCorner,
                                     const lsVec3& maxCorner);
/// For a list of its own triangles, once all are added: finds the neighbours, triangles that share
/// two vertices exactly, in opposite order, and the bounds.
HY_API void ColTriangleListBuild(ColTriangleList* list);
/// Makes a worker's list stand for a geometry: all but the triangles, their room and the cacheIndex
/// is copied, and the worker's list is emptied. Its memory stays its own, so workers never share.
HY_API void ColTriangleListShallowCopy(const ColTriangleList* geometry, ColTriangleList* userList);

/// Contacts that a cylinder and a list may hold before they are reduced for the first time.
extern HY_API int gColCylinderTriListContactBufferSize;

/// -1 before registration.
[[nodiscard]] HY_API int ColTriangleListGetTypeId();
HY_API int ColTriangleListRegisterType();
