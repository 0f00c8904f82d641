#pragma once
#include <Kit/KitApi.h>
#include <Kit/KitTypes.h>
#include <Kit/lsVec3.h>

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
