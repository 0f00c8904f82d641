#include <Hy/HyCapsule.h>

#include "HySize.h"

#include <Col/ColCapsule.h>

namespace Hy {
namespace {

bool isLength(HyReal length, const char* operation) {
    return length == 0 || HyIsSize(length, operation); // no straight part: a ball
}

} // namespace

HyCapsule::HyCapsule(HyReal radius, HyReal length)
    : HyClass(ColCapsuleCreate(HySizeOr1(radius, "HyCapsule::HyCapsule"),
                               isLength(length, "HyCapsule::HyCapsule") ? length : 1)) {}

HyCapsule* HyCapsule::clone() const {
    return new HyCapsule(getRadius(), getLength());
}

void HyCapsule::setRadius(HyReal radius) {
    if (!HyIsSize(radius, "HyCapsule::setRadius"))
        return;
    ColCapsuleSetDimensions(record<ColCapsule>(), radius, getLength());
    shapeChanged();
}

HyReal HyCapsule::getRadius() const {
    return ColCapsuleGetRadius(record<ColCapsule>());
}

void HyCapsule::setLength(HyReal length) {
    if (!isLength(length, "HyCapsule::setLength"))
        return;
    ColCapsuleSetDimensions(record<ColCapsule>(), getRadius(), length);
    shapeChanged();
}

HyReal HyCapsule::getLength() const {
    return ColCapsuleGetHeight(record<ColCapsule>());
}

} // namespace Hy
