#include <Col/ColSpace.h>

#include <Col/ColFrame.h>
#include <Col/ColLineSeg.h>
#include <Col/ColMessage.h>
#include <Col/ColModel.h>
#include <Col/CxSpace.h>
#include <Kit/KitMessage.h>

#include <cmath>

namespace {

struct Search {
    const lsVec3 &start, &end;
    ColLineSegIntersectResult* result;
    Hy::HyLineSegIntersectSub* subscriber;
    KitReal nearest; ///< m
};

ColLineSegAction ask(const Search& search, const ColModel& model) {
    const auto notify = ColGetHost().notifyLineSeg;
    return search.subscriber && notify ? notify(search.subscriber, model.mCollisionGeometry)
                                       : kColLineSegIntersect;
}

constexpr KitReal kEnd = -1;

KitReal visit(ColModel* model, void* data) {
    Search& search = *static_cast<Search*>(data);
    if (!model->mGeometry || model->mTemporaryDisabledStatus != kNotTemporaryDisabled)
        return search.nearest;
    const ColLineSegAction action = ask(search, *model);
    if (action != kColLineSegIntersect)
        return action == kColLineSegStop ? kEnd : search.nearest;
    ColLineSegIntersectResult hit;
    hit.anyHit = search.result->anyHit;
    hit.userTriangleList = search.result->userTriangleList;
    if (ColLineSegIntersect(model, search.start, search.end, &hit, search.subscriber) == 0)
        return search.nearest;
    const KitReal distance = std::abs(hit.distance);
    const ColModel* best = search.result->model;
    if (best && !(distance < search.nearest ||
                  (distance == search.nearest && model->serial < best->serial)))
        return search.nearest;
    *search.result = hit;
    search.nearest = distance;
    return hit.anyHit ? kEnd : distance;
}

} // namespace

int ColSpaceLineSegIntersect(const CxSpace* space, const lsVec3& start, const lsVec3& end,
                             ColLineSegIntersectResult* result,
                             Hy::HyLineSegIntersectSub* subscriber) {
    if (!result) {
        ColMistake(kColErrorResult, " in ColSpaceLineSegIntersect.");
        return 0;
    }
    result->model = result->subModel = nullptr;
    result->index = -1;
    if (!space || !KitVector3IsFinite(start.v) || !KitVector3IsFinite(end.v)) {
        KitWarning(0, "ColSpaceLineSegIntersect: space must not be null, start and end be "
                      "finite.\n");
        return 0;
    }
    Search search{start, end, result, subscriber, (end - start).norm()};
    space->WalkSegment(start, end, visit, &search);
    return result->model ? 1 : 0;
}
