#include <Col/ColComposite.h>
#include <Col/ColModel.h>
#include <Col/ColModelFunctions.h>

namespace {

ColCompositeGeometry* compositeOf(const ColModel* model) {
    const bool isComposite =
        model != nullptr && model->mGeometry != nullptr && model->mGeometry->mID == kColComposite;
    return isComposite ? static_cast<ColCompositeGeometry*>(model->mGeometry) : nullptr;
}

using AddFn = bool (*)(ColCompositeGeometry*, ColModel*, const lsTransform*);
using RemoveFn = bool (*)(ColCompositeGeometry*, ColModel*);

bool addChild(AddFn addTo, ColModel* parent, ColModel* child, const lsTransform* relative) {
    ColCompositeGeometry* geometry = compositeOf(parent);
    if (geometry == nullptr || !addTo(geometry, child, relative))
        return false;
    parent->mSetVelocityPtrFn = ColCompositeModelSetVelocityPtr;
    child->mParent = parent;
    child->mRefTM = parent->mGlobalTM;
    child->mSetVelocityPtrFn(child, parent->linearVelocity, parent->angularVelocity,
                             parent->linearAcceleration);
    return true;
}

bool removeChild(RemoveFn removeFrom, ColModel* parent, ColModel* child) {
    ColCompositeGeometry* geometry = compositeOf(parent);
    if (geometry == nullptr || child == nullptr || !removeFrom(geometry, child))
        return false;
    child->mParent = nullptr;
    child->mRefTM = nullptr;
    child->mRelTM = nullptr;
    child->mTransformUpdateFn = nullptr;
    child->mSetVelocityPtrFn(child, ColDefault0Velocity, ColDefault0Velocity, ColDefault0Velocity);
    return true;
}

} // namespace

ColModel* ColCompositeModelCreate() {
    ColModel* model = ColModelCreate(ColCompositeGeometryCreate());
    model->mSetVelocityPtrFn = ColCompositeModelSetVelocityPtr;
    return model;
}

void ColCompositeModelDestroy(ColModel* model) {
    ColCompositeGeometry* geometry = compositeOf(model);
    if (geometry == nullptr || model->mSpace != nullptr)
        return;
    while (!geometry->mElements.empty())
        ColCompositeModelRemoveElement(model, geometry->mElements.back());
    while (!geometry->mHoles.empty())
        ColCompositeModelRemoveElementHole(model, geometry->mHoles.back());
    ColModelDestroy(model);
    ColGeometryDestroy(geometry);
}

ColCompositeGeometry* ColCompositeModelGetGeometry(const ColModel* model) {
    return compositeOf(model);
}

bool ColCompositeModelAddElement(ColModel* parent, ColModel* child,
                                 const lsTransform* relativeTransform) {
    return addChild(ColCompositeGeometryAddElement, parent, child, relativeTransform);
}

bool ColCompositeModelAddElementHole(ColModel* parent, ColModel* child,
                                     const lsTransform* relativeTransform) {
    return addChild(ColCompositeGeometryAddElementHole, parent, child, relativeTransform);
}

bool ColCompositeModelRemoveElement(ColModel* parent, ColModel* child) {
    return removeChild(ColCompositeGeometryRemoveElement, parent, child);
}

bool ColCompositeModelRemoveElementHole(ColModel* parent, ColModel* child) {
    return removeChild(ColCompositeGeometryRemoveElementHole, parent, child);
}

void ColCompositeModelSetVelocityPtr(ColModel* model, const KitReal* linear, const KitReal* angular,
                                     const KitReal* acceleration) {
    ColModelSetVelocityPtr(model, linear, angular, acceleration);
    if (const ColCompositeGeometry* geometry = compositeOf(model))
        for (const auto* children : {&geometry->mElements, &geometry->mHoles})
            for (ColModel* child : *children)
                child->mSetVelocityPtrFn(child, linear, angular, acceleration);
}

// On the stepping thread, when the boxes are taken; workers read the transforms only.
void ColCompositeModelUpdateTransform(ColModel* model) {
    const ColCompositeGeometry* geometry = compositeOf(model);
    if (geometry == nullptr)
        return;
    for (const auto* children : {&geometry->mElements, &geometry->mHoles})
        for (ColModel* child : *children) {
            ColModelUpdate(child);
            ColCompositeModelUpdateTransform(child);
        }
}
