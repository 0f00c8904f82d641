#pragma once
#include <Hy/HyGeometry.h>

namespace Hy {

/// A cylinder about the origin of its frame, axis along z.
class HY_API HyCylinder : public HyClass<kHyCylinderClassId, HyGeometry> {
public:
    /// Radius and full height, m. One that is not finite and positive: a warning, and 1.
    HyCylinder(HyReal radius, HyReal height);
    [[nodiscard]] const char* getClassName() const override { return "HyCylinder"; }
    [[nodiscard]] HyCylinder* clone() const override;

    void setRadius(HyReal radius);
    [[nodiscard]] HyReal getRadius() const;
    /// Full height, m.
    void setHeight(HyReal height);
    [[nodiscard]] HyReal getHeight() const;
};

} // namespace Hy
