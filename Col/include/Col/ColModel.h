#pragma once
#include <Col/ColGeometry.h>
#include <Kit/KitApi.h>
#include <Kit/KitTypes.h>
#include <Kit/lsTransform.h>
#include <Kit/lsVec3.h>

#include <cstdint>

struct ColModel;
class CxSpace;
struct DynBody;
struct KitPool;
namespace Hy {
class HyCollisionGeometry;
class HyIntersectFilter;
} // namespace Hy
namespace HyPs {
class HyParticleSystem;
}

enum ColModelTemporaryDisabledStatus : int {
    kNotTemporaryDisabled = 0,
    kTemporaryDisabledShortTerm = 1,
    kTemporaryDisabledLongTerm = 2, ///< parked in the space
};

/// Brings the model's world transform up to date.
using ColModelTransformUpdateFn = void (*)(ColModel* model);
using ColModelSetVelocityPtrFn = void (*)(ColModel* model, const KitReal* linear,
                                          const KitReal* angular, const KitReal* acceleration);

/// What velocities point at that nobody set.
extern HY_API const KitVector3 ColDefault0Velocity;

/// Places a geometry in the world. Holds pointers to its transforms and velocities, never copies;
/// nothing that it points to is owned.
struct ColModel {
    ColGeometry* mGeometry = nullptr;
    KitReal mBounds[6] = {0, 0, 0, 0, 0, 0}; ///< min x, max x, min y, max y, min z, max z
    lsTransform* mGlobalTM = nullptr;        ///< world transform
    const KitReal* linearVelocity = ColDefault0Velocity;     ///< of the centre of mass, m/s
    const KitReal* angularVelocity = ColDefault0Velocity;    ///< world axes, rad/s
    const KitReal* linearAcceleration = ColDefault0Velocity; ///< m/s^2
    ColModel* mParent = nullptr;                             ///< composite that this is a child of
    KitReal mPadding = 0;                                    ///< contact tolerance, m
    Hy::HyCollisionGeometry* mCollisionGeometry = nullptr;
    HyPs::HyParticleSystem* mParticleSystem = nullptr; ///< carried, not read
    lsTransform* mAuxTM = nullptr;                     ///< carried, not read
    CxSpace* mSpace = nullptr;
    int mSpaceID = -1;
    ColModelTransformUpdateFn mTransformUpdateFn = nullptr;
    ColModelSetVelocityPtrFn mSetVelocityPtrFn = nullptr;
    const lsTransform* mRelTM = nullptr; ///< relative to mRefTM
    lsTransform* mRefTM = nullptr;
    DynBody* mBody = nullptr; ///< opaque here; models of one body never pair
    ColModel* mNext = nullptr;
    KitReal mDensity = 1.0; ///< kg/m^3
    int mRequestID = 0;
    int mResponseID = 0;
    lsVec3 mCOMOffset; ///< minus the position of the centre of mass, frame of the model
    bool mFastMoving = false;
    ColModelTemporaryDisabledStatus mTemporaryDisabledStatus = kNotTemporaryDisabled;
    Hy::HyIntersectFilter* mIntersectFilter = nullptr;
    std::uint64_t serial = 0; ///< order of creation, never repeated in a process
};
