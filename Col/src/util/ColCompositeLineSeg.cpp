#include <Col/ColCompositeGeometry.h>
#include <Col/ColFrame.h>
#include <Col/ColLineSeg.h>
#include <Col/ColModelFunctions.h>
#include "ColCompositeChild.h"

namespace {
constexpr KitReal kFarAway = 1e20; ///< m

ColLineSegAction ask(Hy::HyLineSegIntersectSub* subscriber, const ColModel& child) {
    const auto notify = ColGetHost().notifyLineSeg;
    return subscriber && notify ? notify(subscriber, child.mCollisionGeometry)
                                : kColLineSegIntersect;
}

/// Nearest hit among the enabled solid children.
int ColCompositeLineSegmentIntersect(ColModel* model, const lsVec3& start, const lsVec3& end,
                                     ColLineSegIntersectResult* result,
                                     Hy::HyLineSegIntersectSub* subscriber) {
    KitReal nearest = kFarAway;
    int found = 0;
    for (ColModel* child : ColCompositeOf(model->mGeometry).mElements) {
        const auto intersect =
            child->mGeometry ? ColLineSegGetIntersectFnPtr(child->mGeometry->mID) : nullptr;
        if (!intersect || !ColIsEnabled(child))
            continue;
        const ColLineSegAction action = ask(subscriber, *child);
        if (action == kColLineSegStop)
            break;
        if (action == kColLineSegIgnore)
            continue;
        ColPlacedChild placed(child, model->mGlobalTM ? *model->mGlobalTM : lsTransform());
        ColLineSegIntersectResult hit;
        hit.anyHit = result->anyHit;
        hit.userTriangleList = result->userTriangleList;
        if (intersect(placed.model(), start, end, &hit, subscriber) == 0 ||
            !(hit.distance < nearest))
            continue;
        found = 1;
        nearest = hit.distance;
        result->position = hit.position;
        result->normal = hit.normal;
        result->distance = hit.distance;
        result->index = hit.index;
        result->subModel = hit.subModel ? hit.subModel : child;
        if (result->anyHit)
            break;
    }
    return found;
}
} // namespace

void ColCompositeLineSegmentRegisterInteraction() {
    ColLineSegRegisterInteraction(kColComposite, ColCompositeLineSegmentIntersect);
}
