#pragma once
#include <Col/ColModel.h>
#include <Kit/KitApi.h>
#include <Kit/KitTypes.h>
#include <Kit/lsTransform.h>

struct ColCompositeGeometry;
struct KitPool;

// Models of composites. A model that is no composite is refused with a warning.

/// A model with an empty composite of its own.
[[nodiscard]] HY_API ColModel* ColCompositeModelCreate();
[[nodiscard]] HY_API ColModel* ColCompositeModelCreateInPool(KitPool* pool);
/// @param geometry the model takes it
[[nodiscard]] HY_API ColModel*
ColCompositeModelCreateFromCompositeGeometry(ColCompositeGeometry* geometry);
/// Takes the model, and the composite if it was made here or taken over; the children stay, without
/// a parent. ColModelDestroy() of a composite comes here.
HY_API void ColCompositeModelDestroy(ColModel* model);
HY_API void ColCompositeModelDestroyInPool(ColModel* model, KitPool* pool);

/// ColCompositeGeometryAddElement(), then the child takes parent, reference transform and
/// velocities from the composite's model.
HY_API int ColCompositeModelAddElement(ColModel* parent, ColModel* child,
                                       const lsTransform* relativeTransform);
HY_API int ColCompositeModelAddElementHole(ColModel* parent, ColModel* child,
                                           const lsTransform* relativeTransform);
/// Undoes the adding: the child has no parent, no transforms but its own, and no velocities.
HY_API int ColCompositeModelRemoveElement(ColModel* parent, ColModel* child);
HY_API int ColCompositeModelRemoveElementHole(ColModel* parent, ColModel* child);

[[nodiscard]] HY_API int ColCompositeModelGetElementCount(const ColModel* model);
[[nodiscard]] HY_API int ColCompositeModelGetElementHoleCount(const ColModel* model);
/// Child by its place, null out of range.
[[nodiscard]] HY_API ColModel* ColCompositeModelGetElement(const ColModel* model, int index);
[[nodiscard]] HY_API ColModel* ColCompositeModelGetElementHole(const ColModel* model, int index);
[[nodiscard]] HY_API const lsTransform*
ColCompositeModelGetElementRelativeTransformPtr(const ColModel* model, int index);

HY_API void ColCompositeModelBuild(ColModel* model);
/// Puts the children where the model's world transform says.
HY_API void ColCompositeModelUpdateTransform(ColModel* model);
/// Stores the pointers here and in all children.
HY_API void ColCompositeModelSetVelocityPtr(ColModel* model, const KitReal* linear,
                                            const KitReal* angular, const KitReal* acceleration);
