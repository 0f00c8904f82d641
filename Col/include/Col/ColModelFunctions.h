#pragma once
#include <Col/ColModel.h>
#include <Kit/KitApi.h>
#include <Kit/KitTypes.h>
#include <Kit/lsTransform.h>
#include <Kit/lsVec3.h>

struct KitPool;

// Life and operations of models. Null models are refused with a warning, and answer null or zero.

/// A model of the framework's pool, which starts if need be. Null if the pool cannot grow.
/// @param geometry not owned, may be null
[[nodiscard]] HY_API ColModel* ColModelCreate(ColGeometry* geometry);
/// @param pool of elements that hold a ColModel
[[nodiscard]] HY_API ColModel* ColModelCreateInPool(ColGeometry* geometry, KitPool* pool);
/// Takes a model of the framework's pool, out of its composite if it is a child. Its geometry stays,
/// but for a composite; see ColCompositeModelDestroy().
HY_API void ColModelDestroy(ColModel* model);
HY_API void ColModelDestroyInPool(ColModel* model, KitPool* pool);

HY_API void ColModelSetGeometry(ColModel* model, ColGeometry* geometry);
[[nodiscard]] HY_API ColGeometry* ColModelGetGeometry(const ColModel* model);

/// World transform, not owned; it is the reference transform too, with nothing between them.
HY_API void ColModelSetTransformPtr(ColModel* model, lsTransform* transform);
[[nodiscard]] HY_API lsTransform* ColModelGetTransformPtr(const ColModel* model);
/// Makes the world transform the compound of a relative and a reference transform, brought up to
/// date by ColModelUpdate(). Nothing is owned; null for both leaves the world transform alone.
HY_API void ColModelSetRelativeTransformPtr(ColModel* model, const lsTransform* relative,
                                            lsTransform* reference);
[[nodiscard]] HY_API const lsTransform* ColModelGetRelativeTransformPtr(const ColModel* model);
[[nodiscard]] HY_API lsTransform* ColModelGetReferenceTransformPtr(const ColModel* model);
/// World transform := relative then reference, as far as these are set.
HY_API void ColModelCompoundTransforms(ColModel* model);
/// Brings the world transform up to date.
HY_API void ColModelUpdate(ColModel* model);

/// Velocities of the model, three numbers each: of the centre of mass in m/s, of rotation in rad/s,
/// and linear acceleration in m/s^2, world axes. Null is allowed. ColModelMoveTo() writes the first
/// two.
HY_API void ColModelSetVelocityPtr(ColModel* model, const KitReal* linear, const KitReal* angular,
                                   const KitReal* acceleration);

/// Contact tolerance, m, finite and not negative.
HY_API void ColModelSetContactTolerance(ColModel* model, KitReal tolerance);
[[nodiscard]] HY_API KitReal ColModelGetContactTolerance(const ColModel* model);
/// kg/m^3, finite and not negative.
HY_API void ColModelSetDensity(ColModel* model, KitReal density);
[[nodiscard]] HY_API KitReal ColModelGetDensity(const ColModel* model);

HY_API void ColModelSetCollisionGeometry(ColModel* model, Hy::HyCollisionGeometry* geometry);
[[nodiscard]] HY_API Hy::HyCollisionGeometry* ColModelGetCollisionGeometry(const ColModel* model);
HY_API void ColModelSetBody(ColModel* model, DynBody* body);
[[nodiscard]] HY_API DynBody* ColModelGetBody(const ColModel* model);
HY_API void ColModelSetParticleSystem(ColModel* model, HyPs::HyParticleSystem* system);
[[nodiscard]] HY_API HyPs::HyParticleSystem* ColModelGetParticleSystem(const ColModel* model);
HY_API void ColModelSetIntersectFilter(ColModel* model, Hy::HyIntersectFilter* filter);
[[nodiscard]] HY_API Hy::HyIntersectFilter* ColModelGetIntersectFilter(const ColModel* model);
HY_API void ColModelSetRequestID(ColModel* model, int id);
[[nodiscard]] HY_API int ColModelGetRequestID(const ColModel* model);
HY_API void ColModelSetResponseID(ColModel* model, int id);
[[nodiscard]] HY_API int ColModelGetResponseID(const ColModel* model);
/// A fast model may be followed along its path.
HY_API void ColModelSetFastMoving(ColModel* model, bool fast);
[[nodiscard]] HY_API bool ColModelGetFastMoving(const ColModel* model);
HY_API void ColModelSetTemporaryDisabledStatus(ColModel* model,
                                               ColModelTemporaryDisabledStatus status);
[[nodiscard]] HY_API ColModelTemporaryDisabledStatus
ColModelGetTemporaryDisabledStatus(const ColModel* model);

/// Null for a model in no space.
[[nodiscard]] HY_API CxSpace* ColModelGetSpace(const ColModel* model);
/// Number within the space, -1 for none.
[[nodiscard]] HY_API int ColModelGetSpaceID(const ColModel* model);
/// Composite that the model is a child of, or null.
[[nodiscard]] HY_API ColModel* ColModelGetParent(const ColModel* model);
[[nodiscard]] HY_API bool ColModelIsComposite(const ColModel* model);

/// World box at the present transform, kept in mBounds too; a composite brings its children up to
/// date. A model without a geometry leaves the
/// corners alone.
HY_API void ColModelGetAABB(ColModel* model, lsVec3* minCorner, lsVec3* maxCorner);
/// The same for the stretch that a fast model covers within motionDuration seconds; mBounds keeps
/// the box of the present.
///
/// The boxes of start and end are joined and widened by what an arc can leave them by: a point at
/// the distance R of the centre of mass, turning by theta, strays from its chord by at most
/// R (1 - cos(theta/2)), or 2 R from theta = pi; a constant acceleration a adds |a| t^2/8.
HY_API void ColModelGetPathAABB(ColModel* model, lsVec3* minCorner, lsVec3* maxCorner,
                                KitReal motionDuration);
/// min x, max x, min y, ... as two corners.
HY_API void ColConvertBounds(const KitReal* bounds, lsVec3* minCorner, lsVec3* maxCorner);
/// Bounding sphere, world.
HY_API void ColModelGetBSphere(const ColModel* model, lsVec3* centre, KitReal* radius);
/// The world transform after `time` seconds of the model's velocities, about its centre of mass.
/// False without velocities: the transform is then the present one.
HY_API bool ColModelExtrapolateTransform(const ColModel* model, KitReal time, lsTransform* out);

/// Puts the reference transform (the world transform without one) elsewhere. A time above 1e-7 s
/// also sets the velocities that lead there, unless the model uses the shared zero velocity.
HY_API void ColModelMoveTo(ColModel* model, const lsTransform& transform, KitReal time);
/// @param com centre of mass, m, in the frame that the relative transform refers to
HY_API void ColModelSetCOMRelativePosition(ColModel* model, const lsVec3& com);
/// Mass properties at the model's density, in the frame that its relative transform refers to.
/// False if the geometry has no volume.
HY_API bool ColModelGetMassProperties(const ColModel* model, ColMassProperties* out);
