#include <Hy/HyCylinder.h>

#include "HySize.h"

#include <Col/ColCylinder.h>

namespace Hy {

HyCylinder::HyCylinder(HyReal radius, HyReal height)
    : HyClass(ColCylinderCreate(HySizeOr1(radius, "HyCylinder::HyCylinder"),
                                HySizeOr1(height, "HyCylinder::HyCylinder"))) {}

HyCylinder* HyCylinder::clone() const {
    return new HyCylinder(getRadius(), getHeight());
}

void HyCylinder::setRadius(HyReal radius) {
    if (!HyIsSize(radius, "HyCylinder::setRadius"))
        return;
    ColCylinderSetDimensions(record<ColCylinder>(), radius, getHeight());
    shapeChanged();
}

HyReal HyCylinder::getRadius() const {
    return ColCylinderGetRadius(record<ColCylinder>());
}

void HyCylinder::setHeight(HyReal height) {
    if (!HyIsSize(height, "HyCylinder::setHeight"))
        return;
    ColCylinderSetDimensions(record<ColCylinder>(), getRadius(), height);
    shapeChanged();
}

HyReal HyCylinder::getHeight() const {
    return ColCylinderGetHeight(record<ColCylinder>());
}

} // namespace Hy
