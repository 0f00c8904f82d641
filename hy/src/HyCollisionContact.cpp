#include <Hy/HyCollisionContact.h>

#include <Hy/HyMessage.h>

#include <Col/ColContact.h>
#include <Col/ColModelFunctions.h>
#include <Col/ColSimplify.h>

#include <cmath>

namespace Hy {
namespace {

HyVector3 vectorOf(const lsVec3& v) {
    return HyVector3(v.v);
}

HyCollisionGeometry* geometryOf(const ColModel* model) {
    return model ? ColModelGetCollisionGeometry(model) : nullptr;
}

} // namespace

void HyCollisionContact::getNormal(HyVector3& normal) const {
    normal = vectorOf(m_pColContact->normal);
}

void HyCollisionContact::getPosition(HyVector3& position, int modelIndex) const {
    if (modelIndex != 0 && modelIndex != 1 && getSurfaceIndex() != kColSurfaceNone) {
        HyWarning(0, "HyCollisionContact::getPosition: modelIndex must be 0 or 1.\n");
        return;
    }
    lsVec3 point;
    ColContactGetPosition(m_pColContact, modelIndex, &point);
    position = vectorOf(point);
}

HyReal HyCollisionContact::getPenetration() const {
    return -m_pColContact->separation;
}

void HyCollisionContact::setPenetration(HyReal penetration) {
    if (!std::isfinite(penetration)) {
        HyWarning(0, "HyCollisionContact::setPenetration: penetration must be finite.\n");
        return;
    }
    m_pColContact->separation = -penetration;
}

void HyCollisionContact::getDimensions(int& dimension1, int& dimension2) const {
    const auto dims = static_cast<std::uint16_t>(m_pColContact->dims);
    dimension1 = dims & 0xFF;
    dimension2 = dims >> 8;
}

void HyCollisionContact::getIndices(int& index1, int& index2) const {
    index1 = getIndex1();
    index2 = getIndex2();
}

int HyCollisionContact::getIndex1() const {
    return m_pColContact->indexElement1;
}

int HyCollisionContact::getIndex2() const {
    return m_pColContact->indexElement2;
}

int HyCollisionContact::getSurfaceIndex() const {
    return m_pColContact->surfaceIndex;
}

HyCollisionGeometry* HyCollisionContact::getCollisionGeometry1() const {
    return geometryOf(m_pColContact->model1);
}

HyCollisionGeometry* HyCollisionContact::getCollisionGeometry2() const {
    return geometryOf(m_pColContact->model2);
}

} // namespace Hy
