#include <Col/ColCompositeGeometry.h>
#include <Col/ColCompositeModel.h>
#include <Col/ColFrame.h>
#include <Col/ColMessage.h>
#include <Col/ColModelFunctions.h>
#include <Kit/KitMessage.h>
#include <Kit/KitPool.h>

#include <algorithm>
#include <vector>

namespace {
using ChildList = std::vector<ColModel*> ColCompositeGeometry::*;

/// The composite of a model, or null with a warning.
ColCompositeGeometry* compositeOf(const ColModel* model, const char* caller) {
    if (ColModelIsComposite(model))
        return static_cast<ColCompositeGeometry*>(model->mGeometry);
    ColMistake(kColErrorModel, caller);
    return nullptr;
}

bool isAncestor(const ColModel* model, const ColModel* of) {
    while (of && of != model)
        of = of->mParent;
    return of != nullptr;
}

void setVelocityPtr(ColModel* model, const KitReal* linear, const KitReal* angular,
                    const KitReal* acceleration) {
    const auto set = model->mSetVelocityPtrFn ? model->mSetVelocityPtrFn : ColModelSetVelocityPtr;
    set(model, linear, angular, acceleration);
}

void release(ColModel* child) {
    child->mParent = nullptr;
    child->mRelTM = nullptr;
    child->mRefTM = child->mGlobalTM;
    child->mTransformUpdateFn = nullptr;
    setVelocityPtr(child, ColDefault0Velocity, ColDefault0Velocity, ColDefault0Velocity);
}

int addChild(ColModel* parent, ColModel* child, const lsTransform* relativeTransform,
             int (*addToGeometry)(ColCompositeGeometry*, ColModel*, const lsTransform*)) {
    ColCompositeGeometry* geometry = compositeOf(parent, " in ColCompositeModelAddElement.");
    if (!geometry)
        return 0;
    if (child && ((child->mParent && child->mParent != parent) || isAncestor(child, parent))) {
        KitWarning(0, "ColCompositeModelAddElement: child must have no other parent and be no "
                      "ancestor.\n");
        return 0;
    }
    if (addToGeometry(geometry, child, relativeTransform) == 0)
        return 0;
    parent->mSetVelocityPtrFn = ColCompositeModelSetVelocityPtr;
    child->mParent = parent;
    child->mRefTM = parent->mGlobalTM;
    setVelocityPtr(child, parent->linearVelocity, parent->angularVelocity,
                   parent->linearAcceleration);
    return 1;
}

int removeChild(ColModel* parent, ColModel* child,
                int (*removeFromGeometry)(ColCompositeGeometry*, ColModel*)) {
    ColCompositeGeometry* geometry = compositeOf(parent, " in ColCompositeModelRemoveElement.");
    const int removed = geometry && child ? removeFromGeometry(geometry, child) : 0;
    if (removed != 0)
        release(child);
    return removed;
}

template <class Visit>
void forChildren(const ColCompositeGeometry& geometry, Visit&& visit) {
    for (const ChildList list : {&ColCompositeGeometry::mElements, &ColCompositeGeometry::mHoles})
        std::for_each((geometry.*list).begin(), (geometry.*list).end(), visit);
}

/// A model that takes the composite, or null.
ColModel* createInPool(ColCompositeGeometry* geometry, KitPool* pool) {
    ColModel* model = ColModelCreateInPool(geometry, pool);
    if (model) {
        geometry->mBelongsToModel = true;
        model->mSetVelocityPtrFn = ColCompositeModelSetVelocityPtr;
    }
    return model;
}
} // namespace

ColModel* ColCompositeModelCreate() {
    ColDefaultInit();
    return ColCompositeModelCreateInPool(&gColFramework->modelPool);
}

ColModel* ColCompositeModelCreateInPool(KitPool* pool) {
    ColCompositeGeometry* geometry = ColCompositeGeometryCreate();
    ColModel* model = createInPool(geometry, pool);
    if (!model)
        ColCompositeDestroy(geometry);
    return model;
}

ColModel* ColCompositeModelCreateFromCompositeGeometry(ColCompositeGeometry* geometry) {
    if (!geometry) {
        ColMistake(kColErrorGeometry, " in ColCompositeModelCreateFromCompositeGeometry.");
        return nullptr;
    }
    ColDefaultInit();
    return createInPool(geometry, &gColFramework->modelPool);
}

void ColCompositeModelDestroy(ColModel* model) {
    if (gColFramework)
        ColCompositeModelDestroyInPool(model, &gColFramework->modelPool);
}

void ColCompositeModelDestroyInPool(ColModel* model, KitPool* pool) {
    ColCompositeGeometry* geometry = compositeOf(model, " in ColCompositeModelDestroy.");
    if (!geometry)
        return;
    forChildren(*geometry, [&](ColModel* child) {
        if (child->mParent == model)
            release(child);
    });
    if (geometry->mBelongsToModel)
        ColCompositeDestroy(geometry);
    model->mGeometry = nullptr;
    ColModelDestroyInPool(model, pool);
}

int ColCompositeModelAddElement(ColModel* parent, ColModel* child,
                                const lsTransform* relativeTransform) {
    return addChild(parent, child, relativeTransform, ColCompositeGeometryAddElement);
}

int ColCompositeModelAddElementHole(ColModel* parent, ColModel* child,
                                    const lsTransform* relativeTransform) {
    return addChild(parent, child, relativeTransform, ColCompositeGeometryAddElementHole);
}

int ColCompositeModelRemoveElement(ColModel* parent, ColModel* child) {
    return removeChild(parent, child, ColCompositeGeometryRemoveElement);
}

int ColCompositeModelRemoveElementHole(ColModel* parent, ColModel* child) {
    return removeChild(parent, child, ColCompositeGeometryRemoveElementHole);
}

int ColCompositeModelGetElementCount(const ColModel* model) {
    return ColCompositeGeometryGetElementCount(
        compositeOf(model, " in ColCompositeModelGetElementCount."));
}

int ColCompositeModelGetElementHoleCount(const ColModel* model) {
    return ColCompositeGeometryGetElementHoleCount(
        compositeOf(model, " in ColCompositeModelGetElementHoleCount."));
}

ColModel* ColCompositeModelGetElement(const ColModel* model, int index) {
    return ColCompositeGeometryGetModel(compositeOf(model, " in ColCompositeModelGetElement."),
                                        index);
}

ColModel* ColCompositeModelGetElementHole(const ColModel* model, int index) {
    return ColCompositeGeometryHoleGetModel(
        compositeOf(model, " in ColCompositeModelGetElementHole."), index);
}

const lsTransform* ColCompositeModelGetElementRelativeTransformPtr(const ColModel* model,
                                                                   int index) {
    return ColModelGetRelativeTransformPtr(ColCompositeModelGetElement(model, index));
}

void ColCompositeModelBuild(ColModel* model) {
    if (ColCompositeGeometry* geometry = compositeOf(model, " in ColCompositeModelBuild."))
        ColCompositeGeometryBuild(geometry);
}

void ColCompositeModelUpdateTransform(ColModel* model) {
    ColCompositeGeometry* geometry = compositeOf(model, " in ColCompositeModelUpdateTransform.");
    if (!geometry)
        return;
    if (model->mGlobalTM)
        ColCompositeGeometryUpdateTransform(geometry, *model->mGlobalTM);
    else
        ColMistake(kColErrorTransform, " in ColCompositeModelUpdateTransform.");
}

void ColCompositeModelSetVelocityPtr(ColModel* model, const KitReal* linear, const KitReal* angular,
                                     const KitReal* acceleration) {
    const ColCompositeGeometry* geometry =
        compositeOf(model, " in ColCompositeModelSetVelocityPtr.");
    if (!geometry)
        return;
    ColModelSetVelocityPtr(model, linear, angular, acceleration);
    forChildren(*geometry,
                [&](ColModel* child) { setVelocityPtr(child, linear, angular, acceleration); });
}
