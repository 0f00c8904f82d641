#pragma once
#include <Hy/HyVector3.h>

struct ColContact;

namespace Hy {
class HyCollisionGeometry;

/// One point in which two geometries touch, before any dynamics.
///
/// A view on a record of the collision layer, valid within the notification that hands it out. World
/// axes; the normal points from geometry 2 towards geometry 1.
class HY_API HyCollisionContact {
public:
    /// @param contact not owned, not null
    explicit HyCollisionContact(ColContact* contact) : m_pColContact(contact) {}

    void getNormal(HyVector3& normal) const;
    /// The point on the surface of a geometry, m.
    /// @param modelIndex 0 for geometry 1, 1 for geometry 2; does not count where getSurfaceIndex() is -1
    void getPosition(HyVector3& position, int modelIndex) const;
    /// Depth in m by which the surfaces overlap, negative while they are apart.
    [[nodiscard]] HyReal getPenetration() const;
    /// Not finite: a warning, nothing changes.
    void setPenetration(HyReal penetration);
    /// Dimensions of the touching features: 0 vertex, 1 edge, 2 face.
    void getDimensions(int& dimension1, int& dimension2) const;
    /// Triangle, cell or child of a geometry in the contact.
    void getIndices(int& index1, int& index2) const;
    [[nodiscard]] int getIndex1() const;
    [[nodiscard]] int getIndex2() const;
    /// Whose surface bears the stored point: 0 geometry 1, 1 geometry 2, -1 neither.
    [[nodiscard]] int getSurfaceIndex() const;
    /// Null where the model below belongs to no geometry. In a composite the child that touches.
    [[nodiscard]] HyCollisionGeometry* getCollisionGeometry1() const;
    [[nodiscard]] HyCollisionGeometry* getCollisionGeometry2() const;

private:
    ColContact* m_pColContact;
};

} // namespace Hy
