#include "CxTreeSpace.h"

#include "../primitives/IxPrimitiveLineSegment.h"

#include <algorithm>

// Models whose fat box moved in an interval that is open still stand in the trees with their old one:
// they are tried one by one.
void CxTreeSpace::WalkSegment(const lsVec3& start, const lsVec3& end, CxSegmentCb visit,
                              void* data) const {
    lsVec3 direction = end - start;
    const KitReal length = direction.normalize();
    if (!(length > 0))
        return;
    CxRay ray(start, direction, length);
    const auto tryBox = [&](int id) {
        const TightBox& box = mBoxes[idx(id)];
        KitReal distance = 0;
        if (IxRayAABBOverlap(lsVec3::constCast(box.min), lsVec3::constCast(box.max), ray.origin,
                             ray.direction, &distance) != 0 &&
            distance <= ray.limit)
            ray.limit = std::min(ray.limit, visit(mReps[idx(id)].model, data));
    };
    const auto tryPlaced = [&](int id) {
        if (!mReps[idx(id)].left)
            tryBox(id);
    };
    mMovingTree.Query(ray, tryPlaced);
    mRestingTree.Query(ray, tryPlaced);
    for (const int id : mHuge)
        tryPlaced(id);
    for (const int id : mLeft)
        if (mReps[idx(id)].left)
            tryBox(id);
}
