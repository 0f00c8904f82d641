#include <Col/ColCompositeModel.h>
#include <Col/ColFrame.h>
#include <Col/ColMessage.h>
#include <Col/ColModelFunctions.h>
#include <Col/ColSpace.h>
#include <Kit/KitMessage.h>
#include <Kit/KitPool.h>

#include <atomic>
#include <cmath>
#include <new>

const KitVector3 ColDefault0Velocity = {0, 0, 0};

namespace {
std::uint64_t nextSerial() {
    static std::atomic<std::uint64_t> last = 0;
    return ++last;
}

bool isModel(const ColModel* model, const char* caller) {
    if (!model)
        ColMistake(kColErrorModel, caller);
    return model != nullptr;
}

bool isNotNegative(KitReal x) {
    return x >= 0 && std::isfinite(x);
}

template <class Field>
void set(ColModel* model, Field ColModel::*field, Field value, const char* caller) {
    if (isModel(model, caller))
        model->*field = value;
}

template <class Field>
Field get(const ColModel* model, Field ColModel::*field, Field without) {
    return model ? model->*field : without;
}
} // namespace

ColModel* ColModelCreate(ColGeometry* geometry) {
    ColDefaultInit();
    return ColModelCreateInPool(geometry, &gColFramework->modelPool);
}

ColModel* ColModelCreateInPool(ColGeometry* geometry, KitPool* pool) {
    if (!pool || KitPoolGetStructSize(pool) < static_cast<int>(sizeof(ColModel))) {
        KitWarning(0, "ColModelCreateInPool: pool must hold ColModel records.\n");
        return nullptr;
    }
    void* memory = KitPoolGetStruct(pool);
    if (!memory) {
        ColError(gColCoreErrorList, kColErrorAllocation, "ColModel.");
        return nullptr;
    }
    auto* model = new (memory) ColModel;
    model->mGeometry = geometry;
    model->mPadding = ColModelGetDefaultContactTolerance();
    model->mSetVelocityPtrFn = ColModelSetVelocityPtr;
    model->serial = nextSerial();
    return model;
}

void ColModelDestroy(ColModel* model) {
    if (gColFramework)
        ColModelDestroyInPool(model, &gColFramework->modelPool);
}

void ColModelDestroyInPool(ColModel* model, KitPool* pool) {
    if (!isModel(model, " in ColModelDestroy."))
        return;
    if (model->mSpace) {
        ColError(gColCoreErrorList, kColErrorModelInSpace, "");
        CxSpace* space = model->mSpace;
        ColSpaceRemoveModel(model);
        space->ForgetModel(model);
    }
    ColModel* parent = model->mParent;
    if (ColModelIsComposite(parent) && ColCompositeModelRemoveElement(parent, model) == 0)
        ColCompositeModelRemoveElementHole(parent, model);
    if (ColModelIsComposite(model))
        ColCompositeModelDestroyInPool(model, pool);
    else
        KitPoolPutStruct(pool, model);
}

void ColModelSetGeometry(ColModel* model, ColGeometry* geometry) {
    set(model, &ColModel::mGeometry, geometry, " in ColModelSetGeometry.");
}

ColGeometry* ColModelGetGeometry(const ColModel* model) {
    return get(model, &ColModel::mGeometry, {});
}

void ColModelSetTransformPtr(ColModel* model, lsTransform* transform) {
    if (!isModel(model, " in ColModelSetTransformPtr."))
        return;
    model->mGlobalTM = model->mRefTM = transform;
    model->mRelTM = nullptr;
    model->mTransformUpdateFn = nullptr;
}

lsTransform* ColModelGetTransformPtr(const ColModel* model) {
    return get(model, &ColModel::mGlobalTM, {});
}

void ColModelSetRelativeTransformPtr(ColModel* model, const lsTransform* relative,
                                     lsTransform* reference) {
    if (!isModel(model, " in ColModelSetRelativeTransformPtr."))
        return;
    model->mRelTM = relative;
    model->mRefTM = reference;
    model->mTransformUpdateFn = relative || reference ? ColModelCompoundTransforms : nullptr;
}

const lsTransform* ColModelGetRelativeTransformPtr(const ColModel* model) {
    return get(model, &ColModel::mRelTM, {});
}

lsTransform* ColModelGetReferenceTransformPtr(const ColModel* model) {
    return get(model, &ColModel::mRefTM, {});
}

void ColModelCompoundTransforms(ColModel* model) {
    if (!isModel(model, " in ColModelCompoundTransforms."))
        return;
    if (!model->mGlobalTM)
        ColMistake(kColErrorTransform, " in ColModelCompoundTransforms.");
    else if (model->mRelTM && model->mRefTM)
        model->mGlobalTM->thisIsFirstThenSecond(*model->mRelTM, *model->mRefTM);
    else if (model->mRelTM)
        *model->mGlobalTM = *model->mRelTM;
    else if (model->mRefTM)
        *model->mGlobalTM = *model->mRefTM;
}

void ColModelUpdate(ColModel* model) {
    if (isModel(model, " in ColModelUpdate.") && model->mTransformUpdateFn)
        model->mTransformUpdateFn(model);
}

void ColModelSetVelocityPtr(ColModel* model, const KitReal* linear, const KitReal* angular,
                            const KitReal* acceleration) {
    if (!isModel(model, " in ColModelSetVelocityPtr."))
        return;
    model->linearVelocity = linear;
    model->angularVelocity = angular;
    model->linearAcceleration = acceleration;
}

void ColModelSetContactTolerance(ColModel* model, KitReal tolerance) {
    if (!isModel(model, " in ColModelSetContactTolerance."))
        return;
    if (isNotNegative(tolerance))
        model->mPadding = tolerance;
    else
        KitWarning(0, "ColModelSetContactTolerance: tolerance must be finite and not negative.\n");
}

KitReal ColModelGetContactTolerance(const ColModel* model) {
    return get(model, &ColModel::mPadding, 0.0);
}

void ColModelSetDensity(ColModel* model, KitReal density) {
    if (!isModel(model, " in ColModelSetDensity."))
        return;
    if (isNotNegative(density))
        model->mDensity = density;
    else
        KitWarning(0, "ColModelSetDensity: density must be finite and not negative.\n");
}

KitReal ColModelGetDensity(const ColModel* model) {
    return get(model, &ColModel::mDensity, 0.0);
}

void ColModelSetCollisionGeometry(ColModel* model, Hy::HyCollisionGeometry* geometry) {
    set(model, &ColModel::mCollisionGeometry, geometry, " in ColModelSetCollisionGeometry.");
}

Hy::HyCollisionGeometry* ColModelGetCollisionGeometry(const ColModel* model) {
    return get(model, &ColModel::mCollisionGeometry, {});
}

void ColModelSetBody(ColModel* model, DynBody* body) {
    set(model, &ColModel::mBody, body, " in ColModelSetBody.");
}

DynBody* ColModelGetBody(const ColModel* model) {
    return get(model, &ColModel::mBody, {});
}

void ColModelSetParticleSystem(ColModel* model, HyPs::HyParticleSystem* system) {
    set(model, &ColModel::mParticleSystem, system, " in ColModelSetParticleSystem.");
}

HyPs::HyParticleSystem* ColModelGetParticleSystem(const ColModel* model) {
    return get(model, &ColModel::mParticleSystem, {});
}

void ColModelSetIntersectFilter(ColModel* model, Hy::HyIntersectFilter* filter) {
    set(model, &ColModel::mIntersectFilter, filter, " in ColModelSetIntersectFilter.");
}

Hy::HyIntersectFilter* ColModelGetIntersectFilter(const ColModel* model) {
    return get(model, &ColModel::mIntersectFilter, {});
}

void ColModelSetRequestID(ColModel* model, int id) {
    set(model, &ColModel::mRequestID, id, " in ColModelSetRequestID.");
}

int ColModelGetRequestID(const ColModel* model) {
    return get(model, &ColModel::mRequestID, 0);
}

void ColModelSetResponseID(ColModel* model, int id) {
    set(model, &ColModel::mResponseID, id, " in ColModelSetResponseID.");
}

int ColModelGetResponseID(const ColModel* model) {
    return get(model, &ColModel::mResponseID, 0);
}

void ColModelSetFastMoving(ColModel* model, bool fast) {
    set(model, &ColModel::mFastMoving, fast, " in ColModelSetFastMoving.");
}

bool ColModelGetFastMoving(const ColModel* model) {
    return get(model, &ColModel::mFastMoving, false);
}

void ColModelSetTemporaryDisabledStatus(ColModel* model, ColModelTemporaryDisabledStatus status) {
    if (!isModel(model, " in ColModelSetTemporaryDisabledStatus.") ||
        status == model->mTemporaryDisabledStatus)
        return;
    const bool parked = model->mTemporaryDisabledStatus == kTemporaryDisabledLongTerm;
    model->mTemporaryDisabledStatus = status;
    if (!model->mSpace)
        return;
    if (parked != (status == kTemporaryDisabledLongTerm))
        model->mSpace->Park(model->mSpaceID, !parked);
    model->mSpace->StatusChanged(model->mSpaceID);
}

ColModelTemporaryDisabledStatus ColModelGetTemporaryDisabledStatus(const ColModel* model) {
    return get(model, &ColModel::mTemporaryDisabledStatus, kNotTemporaryDisabled);
}

CxSpace* ColModelGetSpace(const ColModel* model) {
    return get(model, &ColModel::mSpace, {});
}

int ColModelGetSpaceID(const ColModel* model) {
    return get(model, &ColModel::mSpaceID, -1);
}

ColModel* ColModelGetParent(const ColModel* model) {
    return get(model, &ColModel::mParent, {});
}

bool ColModelIsComposite(const ColModel* model) {
    return model && model->mGeometry && model->mGeometry->mID == kColComposite;
}
