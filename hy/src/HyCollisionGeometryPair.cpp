#include <Hy/HyCollisionGeometryPair.h>

#include <Col/ColModel.h>
#include <Col/ColModelPair.h>

namespace Hy {

HyCollisionGeometryPair* HyCollisionGeometryPair::fromColModelPair(ColModelPair* pair) {
    return reinterpret_cast<HyCollisionGeometryPair*>(pair);
}

ColModelPair* HyCollisionGeometryPair::getColModelPair() {
    return reinterpret_cast<ColModelPair*>(this);
}

const ColModelPair* HyCollisionGeometryPair::getColModelPair() const {
    return reinterpret_cast<const ColModelPair*>(this);
}

void HyCollisionGeometryPair::setUserData(void* data) {
    getColModelPair()->userData = data;
}

void* HyCollisionGeometryPair::getUserData() const {
    return getColModelPair()->userData;
}

bool HyCollisionGeometryPair::getWasIntersecting() const {
    return ColModelPairGetWasIntersecting(getColModelPair());
}

void HyCollisionGeometryPair::getCollisionGeometryPair(HyCollisionGeometry*& g1,
                                                       HyCollisionGeometry*& g2) const {
    const ColModelPair* pair = getColModelPair();
    g1 = pair->model1 ? pair->model1->mCollisionGeometry : nullptr;
    g2 = pair->model2 ? pair->model2->mCollisionGeometry : nullptr;
}

} // namespace Hy
