#include "RunShape.h"

#include <Hy/HyBox.h>
#include <Hy/HyCapsule.h>
#include <Hy/HyCollisionGeometry.h>
#include <Hy/HyCompositeCollisionGeometry.h>
#include <Hy/HyCylinder.h>
#include <Hy/HyMassProperties.h>
#include <Hy/HyPart.h>
#include <Hy/HyPlane.h>
#include <Hy/HySphere.h>

#include <cmath>
#include <numbers>
#include <optional>
#include <utility>

namespace Hy {

namespace {

constexpr unsigned kSegments = 32; ///< of a full turn
constexpr unsigned kRings = 8;     ///< of a quarter turn, from pole to equator

std::optional<RunShape> describe(const HyGeometry* geometry, const HyTransform& place) {
    using enum RunShape::Kind;
    if (const auto* const shape = dynamic_cast<const HyBox*>(geometry))
        return RunShape{box, shape->getDimensions(), place};
    if (const auto* const shape = dynamic_cast<const HySphere*>(geometry))
        return RunShape{sphere, {shape->getRadius(), 0, 0}, place};
    if (const auto* const shape = dynamic_cast<const HyCapsule*>(geometry))
        return RunShape{capsule, {shape->getRadius(), shape->getLength(), 0}, place};
    if (const auto* const shape = dynamic_cast<const HyCylinder*>(geometry))
        return RunShape{cylinder, {shape->getRadius(), shape->getHeight(), 0}, place};
    if (dynamic_cast<const HyPlane*>(geometry))
        return RunShape{plane, {}, place};
    return std::nullopt;
}

/// Calls with each shape of a geometry in turn.
template <typename Visit>
void visitShapes(const HyCollisionGeometry& geometry, const HyTransform& place, Visit&& visit) {
    if (const auto* const composite =
            dynamic_cast<const HyCompositeCollisionGeometry*>(&geometry)) {
        for (const HyCollisionGeometry* child : composite->getCollisionGeometries())
            visitShapes(*child, child->getTransformRelative() * place, visit);
    } else if (const std::optional<RunShape> shape = describe(geometry.getGeometry(), place)) {
        visit(*shape);
    }
}

template <typename Visit>
void visitShapes(const HyPart& part, Visit&& visit) {
    for (const HyCollisionGeometry* geometry : part.getCollisionGeometries())
        visitShapes(*geometry, geometry->getTransformRelative(), visit);
}

template <typename Visit>
void visitShapes(const HyCollisionGeometry& geometry, Visit&& visit) {
    visitShapes(geometry, HyTransform::kIdentity, visit);
}

template <typename Thing>
std::vector<RunShape> listShapes(const Thing& thing) {
    std::vector<RunShape> shapes;
    visitShapes(thing, [&shapes](const RunShape& shape) { shapes.push_back(shape); });
    return shapes;
}

template <typename Thing>
bool areShapes(const Thing& thing, const std::vector<RunShape>& shapes) {
    std::size_t count = 0;
    bool isSame = true;
    visitShapes(thing, [&](const RunShape& shape) {
        isSame = isSame && count < shapes.size() && shape == shapes[count];
        ++count;
    });
    return count == 0 || (isSame && count == shapes.size());
}

/// The uniform box with the mass and the principal moments of a part:
/// I_x = m (b^2 + c^2) / 12 and so on, thus a^2 = 6 (I_y + I_z - I_x) / m.
std::optional<RunShape> describeInertia(const HyPart& part) {
    const HyMassProperties& mass = part.getMassProperties();
    HyReal tensor[3][3];
    HyTransform axes; // in the world
    mass.getOrthogonalInertiaTensor(tensor, axes);
    HyVector3 sides;
    for (int i = 0; i < 3; ++i) {
        const HyReal sum = tensor[(i + 1) % 3][(i + 1) % 3] + tensor[(i + 2) % 3][(i + 2) % 3];
        sides[i] = std::sqrt(6 * std::max(sum - tensor[i][i], 0.0) / mass.getMass());
        if (!std::isfinite(sides[i]))
            return std::nullopt;
    }
    HyTransform place;
    place.compoundFirstThenInverseSecond(axes, mass.getReferenceFrame());
    return RunShape{RunShape::Kind::box, sides, place};
}

/// Adds corners to a mesh, moved to the shape's place.
class MeshBuilder {
public:
    explicit MeshBuilder(const HyTransform& place) : mPlace(place) {}

    std::uint32_t add(const HyVector3& point, const HyVector3& normal) {
        const HyVector3 p = mPlace.transform(point), n = mPlace.rotate(normal);
        for (int i = 0; i < 3; ++i) {
            mMesh.positions.push_back(static_cast<float>(p[i]));
            mMesh.normals.push_back(static_cast<float>(n[i]));
        }
        return mCorners++;
    }
    void addTriangle(std::uint32_t a, std::uint32_t b, std::uint32_t c) {
        mMesh.indices.insert(mMesh.indices.end(), {a, b, c});
    }
    /// Corners in the order around the face, counter-clockwise from outside.
    void addQuad(const HyVector3 (&corners)[4], const HyVector3& normal) {
        std::uint32_t index[4];
        for (int i = 0; i < 4; ++i)
            index[i] = add(corners[i], normal);
        addTriangle(index[0], index[1], index[2]);
        addTriangle(index[0], index[2], index[3]);
    }
    RunMesh take() { return std::move(mMesh); }

private:
    HyTransform mPlace;
    RunMesh mMesh;
    std::uint32_t mCorners = 0;
};

HyVector3 directionAt(unsigned segment) {
    const HyReal angle = 2 * std::numbers::pi * segment / kSegments;
    return {std::cos(angle), std::sin(angle), 0};
}

void addBox(MeshBuilder& mesh, const HyVector3& sides) {
    for (int axis = 0; axis < 3; ++axis) {
        for (const HyReal side : {-1.0, 1.0}) {
            HyVector3 normal, u, v;
            normal[axis] = side;
            u[(axis + 1) % 3] = side * sides[(axis + 1) % 3] / 2;
            v[(axis + 2) % 3] = sides[(axis + 2) % 3] / 2;
            const HyVector3 centre = normal * (sides[axis] / 2);
            mesh.addQuad({centre - u - v, centre + u - v, centre + u + v, centre - u + v}, normal);
        }
    }
}

/// A ring of corners about the z axis at height z, with normals that rise by the sine given.
std::uint32_t addRing(MeshBuilder& mesh, HyReal radius, HyReal z, HyReal normalZ) {
    const HyReal level = std::sqrt(std::max(1 - normalZ * normalZ, 0.0));
    std::uint32_t first = 0;
    for (unsigned s = 0; s <= kSegments; ++s) {
        const HyVector3 out = directionAt(s);
        const std::uint32_t corner =
            mesh.add(out * radius + HyVector3(0, 0, z), out * level + HyVector3(0, 0, normalZ));
        if (s == 0)
            first = corner;
    }
    return first;
}

void joinRings(MeshBuilder& mesh, std::uint32_t lower, std::uint32_t upper) {
    for (std::uint32_t s = 0; s < kSegments; ++s) {
        mesh.addTriangle(lower + s, lower + s + 1, upper + s + 1);
        mesh.addTriangle(lower + s, upper + s + 1, upper + s);
    }
}

/// Two hemispheres, `length` apart; a sphere where that is 0.
void addCapsule(MeshBuilder& mesh, HyReal radius, HyReal length) {
    std::uint32_t below = 0;
    for (unsigned ring = 0; ring <= 2 * kRings + 1; ++ring) {
        const bool isUpper = ring > kRings;
        const int step = static_cast<int>(ring) - static_cast<int>(isUpper ? kRings + 1 : kRings);
        const HyReal elevation = step * std::numbers::pi / 2 / kRings;
        const std::uint32_t corners = addRing(
            mesh, radius * std::cos(elevation),
            radius * std::sin(elevation) + (isUpper ? length : -length) / 2, std::sin(elevation));
        if (ring > 0)
            joinRings(mesh, below, corners);
        below = corners;
    }
}

void addDisc(MeshBuilder& mesh, HyReal radius, HyReal z, HyReal normalZ) {
    const std::uint32_t centre = mesh.add({0, 0, z}, {0, 0, normalZ});
    const std::uint32_t rim = addRing(mesh, radius, z, normalZ);
    for (std::uint32_t s = 0; s < kSegments; ++s)
        normalZ > 0 ? mesh.addTriangle(centre, rim + s, rim + s + 1)
                    : mesh.addTriangle(centre, rim + s + 1, rim + s);
}

void addCylinder(MeshBuilder& mesh, HyReal radius, HyReal length) {
    const std::uint32_t lower = addRing(mesh, radius, -length / 2, 0);
    joinRings(mesh, lower, addRing(mesh, radius, length / 2, 0));
    addDisc(mesh, radius, -length / 2, -1);
    addDisc(mesh, radius, length / 2, 1);
}

/// @param place middle and half side
void addSquare(MeshBuilder& mesh, const HyVector3& place) {
    const HyReal h = place[2];
    const HyVector3 middle(place[0], place[1], 0);
    mesh.addQuad({middle + HyVector3(-h, -h, 0), middle + HyVector3(h, -h, 0),
                  middle + HyVector3(h, h, 0), middle + HyVector3(-h, h, 0)},
                 {0, 0, 1});
}

} // namespace

std::vector<RunShape> describeShapes(const HyCollisionGeometry& geometry) {
    return listShapes(geometry);
}

std::vector<RunShape> describeShapes(const HyPart& part) {
    std::vector<RunShape> shapes = listShapes(part);
    if (shapes.empty())
        if (const std::optional<RunShape> box = describeInertia(part))
            shapes.push_back(*box);
    return shapes;
}

bool haveShapes(const HyPart& part, const std::vector<RunShape>& shapes) {
    return areShapes(part, shapes);
}

bool haveShapes(const HyCollisionGeometry& geometry, const std::vector<RunShape>& shapes) {
    return areShapes(geometry, shapes);
}

RunMesh tessellate(const RunShape& shape) {
    MeshBuilder mesh(shape.place);
    switch (shape.kind) {
    case RunShape::Kind::box:
        addBox(mesh, shape.size);
        break;
    case RunShape::Kind::sphere:
        addCapsule(mesh, shape.size[0], 0);
        break;
    case RunShape::Kind::capsule:
        addCapsule(mesh, shape.size[0], shape.size[1]);
        break;
    case RunShape::Kind::cylinder:
        addCylinder(mesh, shape.size[0], shape.size[1]);
        break;
    case RunShape::Kind::plane:
        addSquare(mesh, shape.size);
        break;
    }
    return mesh.take();
}

} // namespace Hy
