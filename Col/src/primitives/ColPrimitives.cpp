#include <Col/ColPrimitives.h>

#include <Col/ColBox.h>
#include <Col/ColCapsule.h>
#include <Col/ColCone.h>
#include <Col/ColCylinder.h>
#include <Col/ColFrame.h>
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
    ColConePlaneRegisterInteraction();
    ColConeSphereRegisterInteraction();
    ColConeBoxRegisterInteraction();
    ColConeConeRegisterInteraction();
    ColBoxCylinderRegisterInteraction();
    ColCylinderPlaneRegisterInteraction();
    ColCylinderSphereRegisterInteraction();
    ColCylinderCylinderRegisterInteraction();
    ColConeCylinderRegisterInteraction();
    ColSphereTriangleListRegisterInteraction();
    ColBoxTriangleListRegisterInteraction();
    ColCylinderTriangleListRegisterInteraction();
}

void ColCapsulePrimitiveRegisterInteraction() {
    ColCapsuleCapsuleRegisterInteraction();
    ColCapsuleSphereRegisterInteraction();
    ColCapsulePlaneRegisterInteraction();
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
