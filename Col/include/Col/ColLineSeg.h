#pragma once
#include <Kit/KitApi.h>
#include <Kit/KitTypes.h>
#include <Kit/lsVec3.h>

#include <vector>

struct ColLineSegIntersectResultList;
struct ColModel;
struct ColTriangleList;
namespace Hy {
class HyLineSegIntersectSub;
}

/// First hit of a line segment with a model.
struct ColLineSegIntersectResult {
    ColModel* model = nullptr;                   ///< the model asked
    lsVec3 position;                             ///< world, m
    lsVec3 normal;                               ///< unit, world axes
    KitReal distance = 0;                        ///< from the start along the segment, m
    ColModel* subModel = nullptr;                ///< child of a composite that was hit
    int index = -1;                              ///< element that was hit, -1 for none
    bool anyHit = false;                         ///< any hit will do, not the first alone
    ColTriangleList* userTriangleList = nullptr; ///< of one worker
};

/// First hit of a segment with a model of one geometry type; 0 without one.
/// @param start,end world, m
/// @param subscriber may be null
using ColLineSegIntersectFn = int (*)(ColModel* model, const lsVec3& start, const lsVec3& end,
                                      ColLineSegIntersectResult* result,
                                      Hy::HyLineSegIntersectSub* subscriber);
/// All hits; answers their number.
using ColLineSegIntersectListFn = int (*)(ColModel* model, const lsVec3& start, const lsVec3& end,
                                          ColLineSegIntersectResultList* list,
                                          Hy::HyLineSegIntersectSub* subscriber);

/// Sets the function of a geometry type; error 35 for a number out of range.
HY_API void ColLineSegRegisterInteraction(int geoType, ColLineSegIntersectFn fn);
HY_API void ColLineSegListRegisterInteraction(int geoType, ColLineSegIntersectListFn fn);
/// Null for a type without one.
[[nodiscard]] HY_API ColLineSegIntersectFn ColLineSegGetIntersectFnPtr(int geoType);
[[nodiscard]] HY_API ColLineSegIntersectListFn ColLineSegGetIntersectListFnPtr(int geoType);

/// First hit of a segment with a model. A start inside a solid gives the way out; a plane that is hit
/// from below has a negative distance. Ends that are not finite give a warning and no hit.
/// @param result its anyHit and userTriangleList are read; model, subModel and index are set always
/// @param subscriber asked for the children of a composite, not owned, may be null
/// @return 0 for no hit, and for a type without a function
HY_API int ColLineSegIntersect(ColModel* model, const lsVec3& start, const lsVec3& end,
                               ColLineSegIntersectResult* result,
                               Hy::HyLineSegIntersectSub* subscriber);

/// Hits of one segment, from the nearest on once they are sorted.
struct HY_API ColLineSegIntersectResultList {
    ColTriangleList* userTriangleList = nullptr; ///< of one worker, not owned
    std::vector<ColLineSegIntersectResult> mList;
    bool mSorted = false;

    [[nodiscard]] int size() const { return static_cast<int>(mList.size()); }
    [[nodiscard]] bool empty() const { return mList.empty(); }
    /// An index that is not in the list is a fatal error.
    [[nodiscard]] const ColLineSegIntersectResult& operator[](int i) const;
    void push_back(const ColLineSegIntersectResult& result);
    /// By distance; hits of equal distance keep their order.
    void sort();
};

/// All hits of a segment with a model, sorted and added to the list; 100 at most, with a warning.
/// @return size of the list
HY_API int ColLineSegIntersectList(ColModel* model, const lsVec3& start, const lsVec3& end,
                                   ColLineSegIntersectResultList* list,
                                   Hy::HyLineSegIntersectSub* subscriber);

// Primitives, after their types are registered. ColPrimitivesRegisterInteractions() does all but the
// capsule, which comes with its pairs.

HY_API void ColPlaneLineSegmentRegisterInteraction();
HY_API void ColSphereLineSegmentRegisterInteraction();
HY_API void ColBoxLineSegmentRegisterInteraction();
HY_API void ColCapsuleLineSegmentRegisterInteraction();
HY_API void ColConeLineSegmentRegisterInteraction();
HY_API void ColCylinderLineSegmentRegisterInteraction();
HY_API void ColTriangleListLineSegmentRegisterInteraction();
