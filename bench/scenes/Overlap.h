#pragma once
#include "Scene.h"

#include <vector>

/// Depths of overlap from poses alone, m; at or below 0: apart.
namespace bench {

/// Below the ground: minus the height of the lowest point of the exact shape.
[[nodiscard]] double depthInGround(const Shape& shape, const Motion& motion);
/// Two boxes by separating axes: the least over the 15 axes.
[[nodiscard]] double depthOfBoxes(const Vec3& half1, const Motion& m1, const Vec3& half2,
                                  const Motion& m2);
/// Least distance of two segments, each given by its middle and half of its length as a vector.
[[nodiscard]] double segmentDistance(const Vec3& c1, const Vec3& h1, const Vec3& c2,
                                     const Vec3& h2);
/// Of two boxes, or of two spheres or capsules. Other pairs do not occur in the scenes.
[[nodiscard]] double depthOfPair(const Shape& shape1, const Motion& m1, const Shape& shape2,
                                 const Motion& m2);

/// Deepest overlap in a scene: bodies with the ground, and pairs of bodies that no joint connects.
class DeepestOverlap {
public:
    explicit DeepestOverlap(const Scene& scene);
    [[nodiscard]] double operator()(const std::vector<Motion>& motions);

private:
    [[nodiscard]] double ofPairs(const std::vector<Motion>& motions);
    [[nodiscard]] bool isJoined(int i, int j) const;

    const Scene& mScene;
    std::vector<std::pair<int, int>> mJoined; ///< smaller index first, sorted
    std::vector<int> mByX;
};

} // namespace bench
