#include <Hy/HySphere.h>

#include "HySize.h"

#include <Col/ColSphere.h>

namespace Hy {

HySphere::HySphere(HyReal radius)
    : HyClass(ColSphereCreate(HySizeOr1(radius, "HySphere::HySphere"))) {}

HySphere* HySphere::clone() const {
    return new HySphere(getRadius());
}

void HySphere::setRadius(HyReal radius) {
    if (!HyIsSize(radius, "HySphere::setRadius"))
        return;
    ColSphereSetRadius(record<ColSphere>(), radius);
    shapeChanged();
}

HyReal HySphere::getRadius() const {
    return ColSphereGetRadius(record<ColSphere>());
}

} // namespace Hy
