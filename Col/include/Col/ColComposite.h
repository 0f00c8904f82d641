#pragma once
#include <Col/ColGeometry.h>
#include <Kit/KitApi.h>
#include <Kit/KitTypes.h>
#include <Kit/lsTransform.h>
#include <Kit/lsVec3.h>

#include <vector>

struct ColModel;
struct KitPool;

/// Child models that act as one geometry: solid ones, and holes that are taken out of these. The
/// children are not owned.
struct ColCompositeGeometry : ColGeometry {
    std::vector<ColModel*> mElements; ///< solid
    std::vector<ColModel*> mHoles;
    lsVec3 mCentre;      ///< of the bounding sphere, frame of the composite
    KitReal mRadius = 0; ///< m
};

// Geometry. A child carries its transform relative to the composite in mRelTM.

/// Owned by the caller until ColGeometryDestroy().
[[nodiscard]] HY_API ColCompositeGeometry* ColCompositeGeometryCreate();
/// Appends a solid child; null for the relative transform stands for the identity. False for null, one
/// that is there, and a child that holds this composite.
HY_API bool ColCompositeGeometryAddElement(ColCompositeGeometry* geometry, ColModel* model,
                                           const lsTransform* relativeTransform);
/// Whether it was there.
HY_API bool ColCompositeGeometryRemoveElement(ColCompositeGeometry* geometry, ColModel* model);
HY_API bool ColCompositeGeometryAddElementHole(ColCompositeGeometry* geometry, ColModel* model,
                                               const lsTransform* relativeTransform);
HY_API bool ColCompositeGeometryRemoveElementHole(ColCompositeGeometry* geometry, ColModel* model);
[[nodiscard]] HY_API int ColCompositeGeometryGetElementCount(const ColCompositeGeometry* geometry);
[[nodiscard]] HY_API int
ColCompositeGeometryGetElementHoleCount(const ColCompositeGeometry* geometry);
/// Null for an index out of range.
[[nodiscard]] HY_API ColModel* ColCompositeGeometryGetElement(const ColCompositeGeometry* geometry,
                                                              int index);
[[nodiscard]] HY_API ColModel*
ColCompositeGeometryGetElementHole(const ColCompositeGeometry* geometry, int index);
/// Computes the bounding sphere anew, of composites inside of it first. After each change of children.
HY_API void ColCompositeGeometryRebuild(ColCompositeGeometry* geometry);
/// Whether an enabled hole holds a world point.
[[nodiscard]] HY_API bool ColCompositeGeometryGetPointInHole(const ColCompositeGeometry* geometry,
                                                             const lsVec3& point);

// Models.

/// A model of a composite of its own; ColCompositeModelDestroy() takes both.
[[nodiscard]] HY_API ColModel* ColCompositeModelCreate();
HY_API void ColCompositeModelDestroy(ColModel* model);
[[nodiscard]] HY_API ColCompositeGeometry* ColCompositeModelGetGeometry(const ColModel* model);
/// Appends a child, which moves with the parent from now on: its world transform becomes a compound,
/// written to the transform that it points at, and it takes the parent's velocities.
HY_API bool ColCompositeModelAddElement(ColModel* parent, ColModel* child,
                                        const lsTransform* relativeTransform);
HY_API bool ColCompositeModelAddElementHole(ColModel* parent, ColModel* child,
                                            const lsTransform* relativeTransform);
/// Lets a child go, at rest. Whether it was there.
HY_API bool ColCompositeModelRemoveElement(ColModel* parent, ColModel* child);
HY_API bool ColCompositeModelRemoveElementHole(ColModel* parent, ColModel* child);
/// ColModelSetVelocityPtr() for the composite and all its children.
HY_API void ColCompositeModelSetVelocityPtr(ColModel* model, const KitReal* linear,
                                            const KitReal* angular, const KitReal* acceleration);
/// Brings the world transforms of the children up to date with the parent's.
HY_API void ColCompositeModelUpdateTransform(ColModel* model);

// Registration.

[[nodiscard]] HY_API int ColCompositeGetTypeId();
HY_API int ColCompositeRegisterType();
/// Of composites with every type that may be registered; after all types.
HY_API void ColCompositeGenericRegisterInteractions();
