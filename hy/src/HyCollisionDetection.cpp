#include "HyCollisionDetection.h"

#include <Col/ColComposite.h>
#include <Col/ColFrame.h>
#include <Col/ColModel.h>
#include <Col/ColPrimitivePrimitiveDistance.h>
#include <Col/ColPrimitives.h>
#include <Col/ColRequest.h>
#include <Col/ColSimplify.h>
#include <Hy/HyBridge.h>
#include <Hy/HyCollisionGeometry.h>
#include <Hy/HyCollisionPairRequest.h>
#include <Hy/HyIntersectFilter.h>
#include <Hy/HyLineSegIntersectSub.h>
#include <Hy/HyMessage.h>
#include <Hy/HyUniverse.h>

#include <cmath>
#include <memory>

namespace Hy {
namespace {

int sUsers = 0;
HyReal sContactTolerance = 0.001; ///< m
/// Cosine above which the normals of two contacts at one place are one normal.
constexpr float kDegeneracyCosine = 0.99F;
std::unique_ptr<HyCollisionPairRequest> sDefaultRequest;

bool isPairEnabled(HyIntersectFilter* filter, ColModel* model1, ColModel* model2) {
    return filter->isPairEnabled(model1->mCollisionGeometry, model2->mCollisionGeometry);
}

ColRequest* partPartRequest(HyBridge* bridge, int id1, int id2) {
    return bridge ? bridge->getPartPartColRequest(id1, id2) : nullptr;
}

ColLineSegAction notifyLineSeg(HyLineSegIntersectSub* subscriber, HyCollisionGeometry* geometry) {
    return static_cast<ColLineSegAction>(subscriber->notify(geometry));
}

void applyTolerance() {
    ColModelSetDefaultContactTolerance(sContactTolerance);
    ColSetContactDegeneracyThreshold(sContactTolerance, static_cast<KitReal>(kDegeneracyCosine));
}

} // namespace

void HyCollisionDetection_INCREF() {
    if (sUsers++ > 0)
        return;
    ColDefaultInit();
    ColPrimitivesRegisterTypes();
    ColCompositeRegisterType();
    ColCompositeGenericRegisterInteractions();
    ColCompositeLineSegmentRegisterInteraction();
    ColPrimitivesRegisterInteractions();
    ColCapsulePrimitiveRegisterInteraction();
    ColPrimitivePrimitiveRegisterApproximateDistance();
    ColPrimitivePrimitiveRegisterDistance();
    ColCompositeGenericRegisterDistance();
    ColHost host;
    host.isPairEnabled = isPairEnabled;
    host.partPartRequest = partPartRequest;
    host.notifyLineSeg = notifyLineSeg;
    ColSetHost(host);
    applyTolerance();
    sDefaultRequest = std::make_unique<HyCollisionPairRequest>();
    sDefaultRequest->setFaceNormalsFirst(true);
    ColSetDefaultRequestPtr(sDefaultRequest->getColRequest());
}

void HyCollisionDetection_DECREF() {
    if (--sUsers > 0)
        return;
    ColSetDefaultRequestPtr(nullptr);
    sDefaultRequest.reset();
    ColTerm();
}

void HyUniverse::setDefaultContactTolerance(HyReal tolerance) {
    if (!(tolerance >= 0) || !std::isfinite(tolerance)) {
        HyWarning(0, "HyUniverse::setDefaultContactTolerance: the tolerance must be finite and not "
                     "negative.\n");
        return;
    }
    sContactTolerance = tolerance;
    if (sUsers > 0)
        applyTolerance();
}

HyReal HyUniverse::getDefaultContactTolerance() {
    return sContactTolerance;
}

} // namespace Hy
