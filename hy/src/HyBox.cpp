#include <Hy/HyBox.h>

#include "HySize.h"

#include <Col/ColBox.h>

namespace Hy {

HyBox::HyBox(HyReal dx, HyReal dy, HyReal dz)
    : HyClass(ColBoxCreate(HySizeOr1(dx, "HyBox::HyBox"), HySizeOr1(dy, "HyBox::HyBox"),
                           HySizeOr1(dz, "HyBox::HyBox"))) {}

HyBox::HyBox(const HyReal dimensions[3]) : HyBox(dimensions[0], dimensions[1], dimensions[2]) {}

HyBox* HyBox::clone() const {
    return new HyBox(getDimensions().v);
}

void HyBox::setDimensions(const HyVector3& d) {
    if (!HyIsSize(d[0], "HyBox::setDimensions") || !HyIsSize(d[1], "HyBox::setDimensions") ||
        !HyIsSize(d[2], "HyBox::setDimensions"))
        return;
    ColBoxSetDimensions(record<ColBox>(), d[0], d[1], d[2]);
    shapeChanged();
}

HyVector3 HyBox::getDimensions() const {
    HyVector3 d;
    ColBoxGetDimensions(record<ColBox>(), &d[0], &d[1], &d[2]);
    return d;
}

} // namespace Hy
