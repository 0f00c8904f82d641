#pragma once
#include <Hy/HyTransform.h>
#include <Hy/HyVector3.h>

#include <cstdint>
#include <vector>

namespace Hy {
class HyCollisionGeometry;
class HyPart;

/// A shape to draw, in the frame of its node.
struct RunShape {
    enum class Kind { box, sphere, capsule, cylinder, plane };

    Kind kind = Kind::box;
    /// m. Box: its sides; sphere: radius; capsule, cylinder: radius and length of the straight part;
    /// plane: middle of the square that is drawn of it in its own axes, and half side of it.
    HyVector3 size{};
    HyTransform place{};

    friend bool operator==(const RunShape&, const RunShape&) = default;
};

/// Triangles, counter-clockwise seen from outside, with a normal a corner.
struct RunMesh {
    std::vector<float> positions, normals; ///< three a corner
    std::vector<std::uint32_t> indices;    ///< three a triangle
};

/// The shapes of a part's geometries, or the box of its mass and inertia if there is none to draw.
[[nodiscard]] std::vector<RunShape> describeShapes(const HyPart& part);
/// The shapes of a geometry that stands by itself; its own place is that of the node.
[[nodiscard]] std::vector<RunShape> describeShapes(const HyCollisionGeometry& geometry);

/// Whether geometries still have the shapes that were described; makes no heap call. True too where
/// there is nothing to draw: a box of mass and inertia is not looked at again.
[[nodiscard]] bool haveShapes(const HyPart& part, const std::vector<RunShape>& shapes);
[[nodiscard]] bool haveShapes(const HyCollisionGeometry& geometry,
                              const std::vector<RunShape>& shapes);

[[nodiscard]] RunMesh tessellate(const RunShape& shape);

} // namespace Hy
