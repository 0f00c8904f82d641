#include <Col/ColTriangleList.h>

#include <Col/ColScratch.h>

#include "PrimitiveGeometry.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <tuple>

namespace {

int gTriangleListTypeId = -1;

constexpr int kMaxTriangles = 1 << 24;
/// A full list grows by this factor, at least by kMinGrowth.
constexpr KitReal kGrowth = 1.5;
constexpr int kMinGrowth = 16;

const ColTriangleList& listOf(const ColGeometry* g) {
    return *static_cast<const ColTriangleList*>(g);
}

void destroy(ColGeometry* g) {
    ColTriangleListDestroy(static_cast<ColTriangleList*>(g));
}

template <int kAxes>
void getAABB(const ColGeometry* g, const lsTransform* tm, lsVec3* minCorner, lsVec3* maxCorner,
             KitReal* boundsOut) {
    const ColTriangleList& list = listOf(g);
    const lsTransform& frame = ColTransformOrIdentity(tm);
    const lsVec3 centre = frame.transform(0.5 * (list.mMin + list.mMax));
    const lsVec3 half = 0.5 * (list.mMax - list.mMin);
    lsVec3 extent;
    for (int i = 0; i < kAxes; ++i)
        for (int j = 0; j < 3; ++j)
            extent[i] += std::abs(frame.row[j][i]) * half[j];
    ColStoreBounds(centre - extent, centre + extent, kAxes, minCorner, maxCorner, boundsOut);
}

void getBSphere(const ColGeometry* g, lsVec3* centre, KitReal* radius) {
    const ColTriangleList& list = listOf(g);
    *centre = 0.5 * (list.mMin + list.mMax);
    *radius = list.mBoundingRadius;
}

/// The farthest corner of the bounds: what the generators can give is not known here.
void maximumPoint(const ColGeometry* g, const lsTransform* tm, const lsVec3& direction,
                  lsVec3* point) {
    const ColTriangleList& list = listOf(g);
    const lsTransform& frame = ColTransformOrIdentity(tm);
    const lsVec3 local = frame.inverseTransformWithoutTranslate(direction);
    lsVec3 corner;
    for (int i = 0; i < 3; ++i)
        corner[i] = local[i] < 0 ? list.mMin[i] : list.mMax[i];
    *point = frame.transform(corner);
}

bool isBefore(const lsVec3& a, const lsVec3& b) noexcept {
    return std::tie(a.v[0], a.v[1], a.v[2]) < std::tie(b.v[0], b.v[1], b.v[2]);
}

/// An edge with its ends in a fixed order, so that neighbours have equal keys.
struct EdgeKey {
    lsVec3 low, high;
    int triangle = 0, edge = 0;
    bool isReversed = false;

    [[nodiscard]] bool hasEndsOf(const EdgeKey& o) const noexcept {
        return low == o.low && high == o.high;
    }
    bool operator<(const EdgeKey& o) const noexcept {
        if (!(low == o.low))
            return isBefore(low, o.low);
        if (!(high == o.high))
            return isBefore(high, o.high);
        return std::tie(triangle, edge) < std::tie(o.triangle, o.edge);
    }
};

// Where more than two triangles meet, none of them is the neighbour.
void findMates(ColTriangleList* list) {
    ColScratchScope scratch;
    const auto keys = scratch.take<EdgeKey>(3 * static_cast<std::size_t>(list->triangleCount));
    for (int i = 0; i < list->triangleCount; ++i)
        for (int e = 0; e < 3; ++e) {
            const CxTriangleNE& t = list->triangleList[i];
            const lsVec3 &a = t.mVertex[e], &b = t.mVertex[(e + 1) % 3];
            const bool isReversed = isBefore(b, a);
            keys[static_cast<std::size_t>(3 * i + e)] = {isReversed ? b : a, isReversed ? a : b, i,
                                                         e, isReversed};
        }
    std::sort(keys.begin(), keys.end());
    for (std::size_t i = 0; i < keys.size();) {
        std::size_t end = i + 1;
        while (end < keys.size() && keys[end].hasEndsOf(keys[i]))
            ++end;
        const EdgeKey &first = keys[i], &second = keys[end - 1];
        if (end == i + 2 && first.isReversed != second.isReversed) {
            CxTriangleNE &a = list->triangleList[first.triangle],
                         &b = list->triangleList[second.triangle];
            CxTriangleNESetMate(&a, first.edge, b.mNormal);
            CxTriangleNESetMate(&b, second.edge, a.mNormal);
        }
        i = end;
    }
}

} // namespace

ColTriangleList* ColTriangleListCreate(int triangleMaxCount) {
    if (triangleMaxCount < 0 || triangleMaxCount > kMaxTriangles) {
        KitWarning(12, "ColTriangleListCreate: the room must be from 0 to 16777216 triangles.\n");
        return nullptr;
    }
    auto* list = new ColTriangleList;
    ColGeometryInitObject(list, kColTriangleList);
    ColTriangleListReserve(list, triangleMaxCount);
    return list;
}

void ColTriangleListDestroy(ColTriangleList* list) {
    if (!list)
        return;
    delete[] list->triangleList;
    delete list;
}

void ColTriangleListReserve(ColTriangleList* list, int triangleMaxCount) {
    if (triangleMaxCount <= list->triangleMaxCount)
        return;
    if (triangleMaxCount > kMaxTriangles) {
        KitWarning(12, "ColTriangleListReserve: the room must be at most 16777216 triangles.\n");
        return;
    }
    auto* grown = new CxTriangleNE[static_cast<std::size_t>(triangleMaxCount)];
    std::copy_n(list->triangleList, list->triangleCount, grown);
    delete[] list->triangleList;
    list->triangleList = grown;
    list->triangleMaxCount = triangleMaxCount;
}

void ColTriangleListClear(ColTriangleList* list) {
    list->triangleCount = 0;
}

CxTriangleNE* ColTriangleListAddTriangle(ColTriangleList* list, const lsVec3& a, const lsVec3& b,
                                         const lsVec3& c, int index) {
    CxTriangleNE triangle;
    if (!CxTriangleNESet(&triangle, a, b, c, index))
        return nullptr;
    if (list->triangleCount == list->triangleMaxCount)
        ColTriangleListReserve(list, std::max(list->triangleCount + kMinGrowth,
                                              static_cast<int>(kGrowth * list->triangleCount)));
    if (list->triangleCount == list->triangleMaxCount)
        return nullptr;
    list->triangleList[list->triangleCount] = triangle;
    return &list->triangleList[list->triangleCount++];
}

void ColTriangleListSetBounds(ColTriangleList* list, const lsVec3& minCorner,
                              const lsVec3& maxCorner) {
    for (int i = 0; i < 3; ++i)
        if (!(minCorner[i] <= maxCorner[i]) || !std::isfinite(maxCorner[i] - minCorner[i])) {
            KitWarning(12, "ColTriangleListSetBounds: corners must be finite and in order.\n");
            return;
        }
    list->mMin = minCorner;
    list->mMax = maxCorner;
    list->mBoundingRadius = 0.5 * (maxCorner - minCorner).norm();
}

void ColTriangleListBuild(ColTriangleList* list) {
    if (list->triangleCount == 0)
        return;
    lsVec3 low = list->triangleList[0].mVertex[0], high = low;
    for (int i = 0; i < list->triangleCount; ++i)
        for (const lsVec3& vertex : list->triangleList[i].mVertex)
            for (int axis = 0; axis < 3; ++axis) {
                low[axis] = std::min(low[axis], vertex[axis]);
                high[axis] = std::max(high[axis], vertex[axis]);
            }
    ColTriangleListSetBounds(list, low, high);
    findMates(list);
}

void ColTriangleListShallowCopy(const ColTriangleList* geometry, ColTriangleList* userList) {
    CxTriangleNE* const triangles = userList->triangleList;
    const int room = userList->triangleMaxCount, cacheIndex = userList->cacheIndex;
    *userList = *geometry;
    userList->triangleList = triangles;
    userList->triangleCount = 0;
    userList->triangleMaxCount = room;
    userList->cacheIndex = cacheIndex;
}

int ColTriangleListGetTypeId() {
    return gTriangleListTypeId;
}

int ColTriangleListRegisterType() {
    // A surface has no volume and no mass.
    return gTriangleListTypeId = ColGeometryRegisterType(kColTriangleList, "TriangleList",
                                                         {.destroy = destroy,
                                                          .getAABB = getAABB<3>,
                                                          .getXYAABB = getAABB<2>,
                                                          .getBSphere = getBSphere,
                                                          .maximumPoint = maximumPoint});
}
