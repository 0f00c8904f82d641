#include "DynEnabledBodies.h"

#include <Dyn/DynBody.h>
#include <Dyn/DynWorld.h>

void DynWorldSaveUserForces(DynWorld* world) {
    DynForEachEnabledBody(world, DynBodySaveUserForces);
}

void DynWorldRestoreUserForces(DynWorld* world) {
    DynForEachEnabledBody(world, DynBodyRestoreUserForces);
}

void DynWorldClearUserForces(DynWorld* world) {
    DynForEachEnabledBody(world, DynBodyClearUserForces);
}

void DynWorldRevertLoads(DynWorld* world) {
    DynForEachEnabledBody(world, [](DynBody* body) {
        DynBodyResetForces(body);
        DynBodyRearmImpulses(body);
    });
}
