#pragma once
#include <Hy/HyVector3.h>

struct ColContact;
struct ColModel;

namespace Hy {
class HyCollisionGeometry;
class HyMaterial;

/// A contact as collision detection found it, before any dynamics exists. A view, valid during the
/// notification that supplies it. The first geometry is that of the pair's first model.
class HY_API HyCollisionContact {
public:
    /// @param contact not null
    HyCollisionContact(ColContact* contact, ColModel* model1, ColModel* model2)
        : m_pColContact(contact), m1(model1), m2(model2) {}

    /// Unit, from the second geometry towards the first.
    void getNormal(HyVector3& normal) const;
    /// Point on the surface of geometry 0 or 1, world.
    void getPosition(HyVector3& position, int modelIndex) const;
    /// m, negative while the surfaces are apart.
    [[nodiscard]] HyReal getPenetration() const;
    void setPenetration(HyReal penetration);
    /// Dimensions of the touching features: 0 a vertex, 1 an edge, 2 a face, 3 a curved surface.
    void getDimensions(int& d1, int& d2) const;
    /// Elements of the geometries: triangle, cell or child.
    void getIndices(int& i1, int& i2) const;
    [[nodiscard]] int getIndex1() const;
    [[nodiscard]] int getIndex2() const;
    /// Geometry whose surface carries the point, 0 or 1; 0xFFFF for neither.
    [[nodiscard]] int getSurfaceIndex() const;

    /// Of a composite the child; null where it is gone.
    [[nodiscard]] HyCollisionGeometry* getCollisionGeometry1() const;
    [[nodiscard]] HyCollisionGeometry* getCollisionGeometry2() const;
    /// Null stands for the default material.
    void getMaterials(HyMaterial*& material1, HyMaterial*& material2) const;
    [[nodiscard]] HyMaterial* getMaterial1() const;
    [[nodiscard]] HyMaterial* getMaterial2() const;
    /// Indices in the table of materials, 0 for the default one.
    void getMaterialIndices(int& index1, int& index2) const;
    [[nodiscard]] int getMaterialIndex1() const;
    [[nodiscard]] int getMaterialIndex2() const;
    /// Whether the shape of geometry 1, or of geometry 2 for another number, is exactly of a class.
    [[nodiscard]] bool isOfExactClassType(int model, int classType) const;

private:
    ColContact* m_pColContact;
    ColModel* m1;
    ColModel* m2;
};

} // namespace Hy
