#include <Col/ColPrimitives.h>

#include <Col/ColBox.h>
#include <Col/ColCapsule.h>
#include <Col/ColCone.h>
#include <Col/ColCylinder.h>
#include <Col/ColFrame.h>
#include <Col/ColLineSeg.h>
#include <Col/ColPlane.h>
#include <Col/ColRequest.h>
#include <Col/ColSimplify.h>
#include <Col/ColSphere.h>
#include <Col/ColTriangleList.h>

#include "ColPrimitivePairs.h"

void ColPrimitivesRegisterTypes() {
    ColSphereRegisterType();
    ColBoxRegisterType();
    ColPlaneRegisterType();
    ColCylinderRegisterType();
    ColConeRegisterType();
    ColCapsuleRegisterType();
    ColTriangleListRegisterType();
}

void ColPrimitivesRegisterInteractions() {
    ColSphereSphereRegisterInteraction();
    ColBoxBoxRegisterInteraction();
    ColBoxPlaneRegisterInteraction();
    ColBoxSphereRegisterInteraction();
    ColSpherePlaneRegisterInteraction();
    ColBoxLineSegmentRegisterInteraction();
    ColSphereLineSegmentRegisterInteraction();
    ColPlaneLineSegmentRegisterInteraction();
    ColConePlaneRegisterInteraction();
    ColConeSphereRegisterInteraction();
    ColConeBoxRegisterInteraction();
    ColConeConeRegisterInteraction();
    ColConeLineSegmentRegisterInteraction();
    ColBoxCylinderRegisterInteraction();
    ColCylinderPlaneRegisterInteraction();
    ColCylinderSphereRegisterInteraction();
    ColCylinderCylinderRegisterInteraction();
    ColCylinderLineSegmentRegisterInteraction();
    ColConeCylinderRegisterInteraction();
    ColSphereTriangleListRegisterInteraction();
    ColBoxTriangleListRegisterInteraction();
    ColCylinderTriangleListRegisterInteraction();
    ColTriangleListLineSegmentRegisterInteraction();
}

void ColCapsulePrimitiveRegisterInteraction() {
    ColCapsuleCapsuleRegisterInteraction();
    ColCapsuleSphereRegisterInteraction();
    ColCapsulePlaneRegisterInteraction();
    ColCapsuleLineSegmentRegisterInteraction();
    ColBoxCapsuleRegisterInteraction();
    ColCylinderCapsuleRegisterInteraction();
    ColCapsuleTriangleListRegisterInteraction();
}

void ColPrimitivesSetDefaults() {
    static ColRequest request;
    ColModelSetDefaultContactTolerance(0.001);
    ColSetContactDegeneracyThreshold(0.001, static_cast<KitReal>(0.99F));
    ColRequestInit(&request);
    ColSetDefaultRequestPtr(&request);
    request.faceNormalsFirst = 1;
}
