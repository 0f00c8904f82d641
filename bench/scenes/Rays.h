#pragma once
#include "Scene.h"

#include <vector>

/// Line segments among bodies, and where they hit by closed forms.
namespace bench {

struct Segment {
    Vec3 start, end;
};

[[nodiscard]] bool isInside(const Shape& shape, const Motion& motion, const Vec3& point);
/// Distance from the start, which lies outside, to the first point of the body; negative for none. Of
/// boxes, spheres and capsules.
[[nodiscard]] double hitDistance(const Shape& shape, const Motion& motion, const Segment& segment);
/// The least over all bodies.
[[nodiscard]] double nearestHit(const Scene& scene, const Segment& segment);
/// The segments of `rays`, whose starts lie outside of all bodies.
[[nodiscard]] std::vector<Segment> raySegments(const Scene& scene);

/// Bodies of `rays`, which do not move.
void makeRays(Scene& scene, int);

} // namespace bench
