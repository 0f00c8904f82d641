#include <Col/ColPrimitives.h>

#include <Col/ColBox.h>
#include <Col/ColPlane.h>
#include <Col/ColSphere.h>

#include "ColPrimitivePairs.h"

void ColPrimitivesRegisterTypes() {
    ColSphereRegisterType();
    ColBoxRegisterType();
    ColPlaneRegisterType();
}

void ColPrimitivesRegisterInteractions() {
    ColSphereSphereRegisterInteraction();
    ColBoxBoxRegisterInteraction();
    ColBoxPlaneRegisterInteraction();
    ColBoxSphereRegisterInteraction();
    ColSpherePlaneRegisterInteraction();
}
