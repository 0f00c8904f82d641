#pragma once
#include <Col/ColGeometry.h>
#include <Kit/KitApi.h>
#include <Kit/KitTypes.h>
#include <Kit/lsTransform.h>
#include <Kit/lsVec3.h>

#include <vector>

struct ColModel;

/// A shape made of child models: the solid ones together, without what the holes take away. A child
/// stands at its mRelTM in the frame of the composite, or in that frame itself without one.
struct ColCompositeGeometry : ColGeometry {
    std::vector<ColModel*> mElements; ///< solid children, not owned
    std::vector<ColModel*> mHoles;    ///< not owned
    KitReal mRadius = 0;              ///< of the bounding sphere of the solid children, m
    lsVec3 mCentre;
    bool mBelongsToModel = false; ///< dies with the model that took it
};

HY_API void ColCompositeRegisterType();
/// kColComposite, or -1 before its registration.
[[nodiscard]] HY_API int ColCompositeGetTypeId();

[[nodiscard]] HY_API ColCompositeGeometry* ColCompositeGeometryCreate();
/// The children stay.
HY_API void ColCompositeDestroy(ColGeometry* g);

/// Adds a solid child, or a hole. Call ColCompositeGeometryRebuild() after the last change.
/// @param model has a geometry, is no child yet and does not contain the composite; anything else
/// gives a warning
/// @param relativeTransform not owned, null for the frame of the composite
/// @return 1, or 0 for a model that is refused
HY_API int ColCompositeGeometryAddElement(ColCompositeGeometry* geometry, ColModel* model,
                                          const lsTransform* relativeTransform);
HY_API int ColCompositeGeometryAddElementHole(ColCompositeGeometry* geometry, ColModel* model,
                                              const lsTransform* relativeTransform);
/// @return 1, or 0 if the model is no such child
HY_API int ColCompositeGeometryRemoveElement(ColCompositeGeometry* geometry, ColModel* model);
HY_API int ColCompositeGeometryRemoveElementHole(ColCompositeGeometry* geometry, ColModel* model);

[[nodiscard]] HY_API int ColCompositeGeometryGetElementCount(const ColCompositeGeometry* geometry);
[[nodiscard]] HY_API int
ColCompositeGeometryGetElementHoleCount(const ColCompositeGeometry* geometry);
/// Child by its place, null out of range.
[[nodiscard]] HY_API ColModel* ColCompositeGeometryGetModel(const ColCompositeGeometry* geometry,
                                                            int index);
[[nodiscard]] HY_API ColModel*
ColCompositeGeometryHoleGetModel(const ColCompositeGeometry* geometry, int index);
/// Geometry of a child by its place, null out of range.
[[nodiscard]] HY_API ColGeometry*
ColCompositeGeometryGetElement(const ColCompositeGeometry* geometry, int index);
[[nodiscard]] HY_API ColGeometry*
ColCompositeGeometryGetElementHole(const ColCompositeGeometry* geometry, int index);

/// Makes the bounding sphere from the children, those of composite children first.
HY_API void ColCompositeGeometryRebuild(ColCompositeGeometry* geometry);
/// The first ColCompositeGeometryRebuild().
HY_API void ColCompositeGeometryBuild(ColCompositeGeometry* geometry);
/// Puts all children, their boxes too, where they stand for a composite at this transform.
HY_API void ColCompositeGeometryUpdateTransform(ColCompositeGeometry* geometry,
                                                const lsTransform& transform);
/// Whether an enabled hole of a composite at this transform holds the world point.
[[nodiscard]] HY_API bool ColCompositeGeometryGetPointInHole(const ColCompositeGeometry* geometry,
                                                             const lsTransform& transform,
                                                             const lsVec3& point);

// Functions of the type. Transforms may differ from where the children stand at present.

/// Box of the solid children; without any the origin.
HY_API void ColCompositeGetAABB(const ColGeometry* g, const lsTransform* tm, lsVec3* minCorner,
                                lsVec3* maxCorner, KitReal* boundsOut);
HY_API void ColCompositeGetBSphere(const ColGeometry* g, lsVec3* centre, KitReal* radius);
HY_API void ColCompositeMaximumPoint(const ColGeometry* g, const lsTransform* tm,
                                     const lsVec3& direction, lsVec3* point);
/// Sum over the solid children at their densities, by the parallel axis rule. Overlaps count twice
/// and holes are not taken off.
HY_API bool ColCompositeGetMassProperties(const ColGeometry* g, ColMassProperties* out);
/// Whether a solid child holds the point, whatever the holes.
[[nodiscard]] HY_API bool ColCompositeGetPointInVolume(const ColGeometry* g, const lsTransform* tm,
                                                       const lsVec3& point);

/// Mass properties of several models in their common reference frame.
/// @param com centre of mass, with the axes of the reference frame
/// @param inertia about the centre of mass, for a mass of 1 kg, m^2
/// @param volume m^3  @param mass kg, at the models' densities
/// @return false, with a volume of 0, if no model has mass
HY_API bool ColGetMassPropertiesAndMassFromModelList(ColModel* const* models, int count,
                                                     lsTransform* com, KitMatrix3 inertia,
                                                     KitReal* volume, KitReal* mass);

/// Serves composites against each type that the tables have room for.
HY_API void ColCompositeGenericRegisterInteractions();
HY_API void ColCompositeGenericRegisterDistance();
HY_API void ColCompositeLineSegmentRegisterInteraction();
