#include <Col/ColMessage.h>
#include <Col/ColModel.h>
#include <Col/ColSimplify.h>
#include <Kit/KitMessage.h>
#include "ColDegeneracy.h"

#include <cmath>
#include <utility>

int gColContactSimplifyDeepestFirst = 1;
KitReal gDegeneracyMinDistance2 = kInitialDegeneracy;
KitReal gColContactSimplifyGroupEpsilon = kInitialDegeneracy;
KitReal gDegeneracyMinCosAngle = 0.99F;

namespace {
int typeOf(const ColModel* model) {
    return model && model->mGeometry ? model->mGeometry->mID : -1;
}

std::int16_t swapBytes(std::int16_t dims) {
    const auto bits = static_cast<std::uint16_t>(dims);
    return static_cast<std::int16_t>(static_cast<std::uint16_t>(bits << 8 | bits >> 8));
}
} // namespace

void ColContactInit(ColContact* contact) {
    if (contact)
        *contact = {};
    else
        ColMistake(kColErrorNullPointer, "in ColContactInit.");
}

void ColContactInvert(ColContact* contact) {
    if (!contact) {
        ColMistake(kColErrorNullPointer, "in ColContactInvert.");
        return;
    }
    // A point on model1 goes over to model2, which is the first of the inverted view.
    if (contact->surfaceIndex == kColSurfaceModel1)
        contact->position.substractMultiple(contact->separation, contact->normal);
    else if (contact->surfaceIndex == kColSurfaceModel2)
        contact->surfaceIndex = kColSurfaceModel1;
    std::swap(contact->model1, contact->model2);
    std::swap(contact->indexElement1, contact->indexElement2);
    contact->dims = swapBytes(contact->dims);
    contact->normal = -contact->normal;
}

void ColContactGetPosition(const ColContact* contact, int side, lsVec3* outPosition) {
    if (!contact || !outPosition) {
        ColMistake(kColErrorNullPointer, "in ColContactGetPosition.");
        return;
    }
    *outPosition = contact->position;
    const int index = contact->surfaceIndex;
    if (index == kColSurfaceNone || index == side)
        return;
    if (side == kColSurfaceModel1 && index == kColSurfaceModel2)
        outPosition->addMultiple(contact->separation, contact->normal);
    else if (side == kColSurfaceModel2 && index == kColSurfaceModel1)
        outPosition->substractMultiple(contact->separation, contact->normal);
    else
        KitWarning(0, "ColContactGetPosition: surfaceIndex between %d %d not set\n",
                   typeOf(contact->model1), typeOf(contact->model2));
}

void ColSetContactDegeneracyThreshold(KitReal minDistance, KitReal minCosAngle) {
    if (!(minDistance >= 0) || !std::isfinite(minDistance) || !(std::abs(minCosAngle) <= 1)) {
        KitWarning(0, "ColSetContactDegeneracyThreshold: minDistance must be finite and not "
                      "negative, minCosAngle must lie in -1 to 1.\n");
        return;
    }
    gDegeneracyMinDistance2 = gColContactSimplifyGroupEpsilon = minDistance * minDistance;
    gDegeneracyMinCosAngle = minCosAngle;
}

void ColGetContactDegeneracyThreshold(KitReal* outDistance, KitReal* outCos) {
    if (outDistance)
        *outDistance = std::sqrt(gDegeneracyMinDistance2);
    if (outCos)
        *outCos = gDegeneracyMinCosAngle;
}
