#pragma once
#include <Hy/HyGeometry.h>

namespace Hy {

/// A ball about the origin of its frame.
class HY_API HySphere : public HyClass<kHySphereClassId, HyGeometry> {
public:
    /// Radius in m. Not finite and positive: a warning, and 1.
    explicit HySphere(HyReal radius);
    [[nodiscard]] const char* getClassName() const override { return "HySphere"; }
    [[nodiscard]] HySphere* clone() const override;

    void setRadius(HyReal radius);
    [[nodiscard]] HyReal getRadius() const;
};

} // namespace Hy
