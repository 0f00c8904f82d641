#include <Dyn/DynPositionAxes.h>

#include <Kit/KitMessage.h>

void DynPositionAxesSetReferenceBody(DynPositionAxes* joint, int body) {
    if (body < -1 || body > 1) {
        KitWarning(12, "DynPositionAxesSetReferenceBody: the body must be 0, 1 or -1.\n");
        return;
    }
    joint->linearAxisReferenceBody = body;
}
