#pragma once
#include <Kit/KitApi.h>

namespace Hy {
class HyCollisionGeometry;

/// Says which geometries a line segment is tested against. It must not change the universe; where
/// several threads cast segments with one subscriber, it is called by several at once.
class HY_API HyLineSegIntersectSub {
public:
    enum LineSegAction {
        LineSegIntersect = 0, ///< test this geometry
        LineSegIgnore = 1,    ///< pass it over
        LineSegStop = 2,      ///< end the query with what was found so far
    };
    virtual ~HyLineSegIntersectSub() = default;
    /// @param geometry null for a model that no geometry holds
    virtual LineSegAction notify(HyCollisionGeometry* geometry) = 0;
};

} // namespace Hy
