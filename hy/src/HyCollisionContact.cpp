#include <Hy/HyCollisionContact.h>

#include <Col/ColContact.h>
#include <Col/ColModel.h>
#include <Hy/HyCollisionGeometry.h>
#include <Hy/HyGeometry.h>
#include <Hy/HyMaterial.h>
#include <Hy/HyMessage.h>

#include <cmath>
#include <cstdint>

namespace Hy {
namespace {

HyCollisionGeometry* geometryOf(const ColModel* own, const ColModel* pairs) {
    const ColModel* model = own ? own : pairs;
    return model ? model->mCollisionGeometry : nullptr;
}

HyMaterial* materialOf(const HyCollisionGeometry* geometry, int element) {
    return geometry ? geometry->getMaterial(element) : nullptr;
}

int indexOf(const HyMaterial* material) {
    return material ? material->getIndex() : 0;
}

} // namespace

void HyCollisionContact::getNormal(HyVector3& normal) const {
    normal = HyVector3(m_pColContact->normal.v);
}

void HyCollisionContact::getPosition(HyVector3& position, int modelIndex) const {
    const ColContact& contact = *m_pColContact;
    lsVec3 point = contact.position;
    if (contact.surfaceIndex != kColSurfaceNone && contact.surfaceIndex != modelIndex)
        point += contact.normal * (modelIndex == 0 ? contact.separation : -contact.separation);
    position = HyVector3(point.v);
}

HyReal HyCollisionContact::getPenetration() const {
    return -m_pColContact->separation;
}

void HyCollisionContact::setPenetration(HyReal penetration) {
    if (std::isfinite(penetration))
        m_pColContact->separation = -penetration;
    else
        HyWarning(0, "HyCollisionContact::setPenetration: the penetration must be finite.\n");
}

void HyCollisionContact::getDimensions(int& d1, int& d2) const {
    const auto dims = static_cast<std::uint16_t>(m_pColContact->dims);
    d1 = dims & 0xFF;
    d2 = dims >> 8;
}

void HyCollisionContact::getIndices(int& i1, int& i2) const {
    i1 = getIndex1();
    i2 = getIndex2();
}

int HyCollisionContact::getIndex1() const {
    return m_pColContact->indexElement1;
}

int HyCollisionContact::getIndex2() const {
    return m_pColContact->indexElement2;
}

int HyCollisionContact::getSurfaceIndex() const {
    return static_cast<std::uint16_t>(m_pColContact->surfaceIndex);
}

HyCollisionGeometry* HyCollisionContact::getCollisionGeometry1() const {
    return geometryOf(m_pColContact->model1, m1);
}

HyCollisionGeometry* HyCollisionContact::getCollisionGeometry2() const {
    return geometryOf(m_pColContact->model2, m2);
}

void HyCollisionContact::getMaterials(HyMaterial*& material1, HyMaterial*& material2) const {
    material1 = getMaterial1();
    material2 = getMaterial2();
}

HyMaterial* HyCollisionContact::getMaterial1() const {
    return materialOf(getCollisionGeometry1(), getIndex1());
}

HyMaterial* HyCollisionContact::getMaterial2() const {
    return materialOf(getCollisionGeometry2(), getIndex2());
}

void HyCollisionContact::getMaterialIndices(int& index1, int& index2) const {
    index1 = getMaterialIndex1();
    index2 = getMaterialIndex2();
}

int HyCollisionContact::getMaterialIndex1() const {
    return indexOf(getMaterial1());
}

int HyCollisionContact::getMaterialIndex2() const {
    return indexOf(getMaterial2());
}

bool HyCollisionContact::isOfExactClassType(int model, int classType) const {
    const HyCollisionGeometry* geometry =
        model == 1 ? getCollisionGeometry1() : getCollisionGeometry2();
    const HyGeometry* shape = geometry ? geometry->getGeometry() : nullptr;
    return shape && shape->HyBaseUserData::isOfExactClassType(classType);
}

} // namespace Hy
