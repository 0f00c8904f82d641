#include <Col/ColFrame.h>
#include <Col/ColLineSeg.h>
#include <Col/ColModel.h>

#include "IxPrimitiveLineSegment.h"
#include "IxTriangleList.h"

namespace {

/// The triangles of a list that a segment may hit, frame of the list.
std::span<const CxTriangleNE> nearTriangles(ColModel* model, const lsVec3& start, const lsVec3& end,
                                            ColTriangleList* userList) {
    const auto& list = IxGeometry<ColTriangleList>(model);
    const ColTriangleList* filled = &list;
    if (list.triangleListLineSegGenerator != nullptr) {
        if (userList == nullptr)
            userList = IxThreadTriangleList();
        ColTriangleListShallowCopy(&list, userList);
        list.triangleListLineSegGenerator(model, start, end, userList);
        filled = userList;
    }
    return {filled->triangleList, static_cast<std::size_t>(filled->triangleCount)};
}

int IxTriangleListLineSegment(ColModel* model, const lsVec3& start, const lsVec3& end,
                              ColLineSegIntersectResult* result, Hy::HyLineSegIntersectSub*) {
    const lsTransform& tm = ColTransformOrIdentity(model->mGlobalTM);
    const lsVec3 from = tm.inverseTransform(start), to = tm.inverseTransform(end);
    KitReal t = 1;
    int hit = 0;
    lsVec3 normal;
    for (const CxTriangleNE& triangle : nearTriangles(model, from, to, result->userTriangleList)) {
        const lsVec3(&v)[3] = triangle.mVertex;
        if (!IxTriangleLineSegment(v[0], v[1], v[2], from, to, &t, &normal))
            continue;
        hit = 1;
        result->index = triangle.mIndex;
        if (result->anyHit)
            break;
    }
    if (hit == 0)
        return 0;
    result->position = start + t * (end - start);
    result->normal = tm.transformWithoutTranslate(normal);
    result->distance = t * (end - start).norm();
    return 1;
}

} // namespace

void ColTriangleListLineSegmentRegisterInteraction() {
    ColLineSegRegisterInteraction(kColTriangleList, IxTriangleListLineSegment);
}
