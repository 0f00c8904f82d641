#pragma once
#include <Hy/HyGeometry.h>

namespace Hy {

/// A cylinder with hemispheres on both ends, about the origin of its frame and along its z axis.
class HY_API HyCapsule : public HyClass<kHyCapsuleClassId, HyGeometry> {
public:
    /// Radius and length of the straight part, m. A radius that is not finite and positive, or a
    /// length that is not finite or negative: a warning, and 1.
    HyCapsule(HyReal radius, HyReal length);
    [[nodiscard]] const char* getClassName() const override { return "HyCapsule"; }
    [[nodiscard]] HyCapsule* clone() const override;

    void setRadius(HyReal radius);
    [[nodiscard]] HyReal getRadius() const;
    /// Length of the straight part, m.
    void setLength(HyReal length);
    [[nodiscard]] HyReal getLength() const;
};

} // namespace Hy
