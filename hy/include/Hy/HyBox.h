#pragma once
#include <Hy/HyGeometry.h>

namespace Hy {

/// A box about the origin of its frame, edges along the axes.
class HY_API HyBox : public HyClass<kHyBoxClassId, HyGeometry> {
public:
    /// Full lengths of the edges, m. One that is not finite and positive: a warning, and 1.
    HyBox(HyReal dx, HyReal dy, HyReal dz);
    explicit HyBox(const HyReal dimensions[3]);
    [[nodiscard]] const char* getClassName() const override { return "HyBox"; }
    [[nodiscard]] HyBox* clone() const override;

    /// Full lengths of the edges, m.
    void setDimensions(const HyVector3& dimensions) override;
    [[nodiscard]] HyVector3 getDimensions() const;
};

} // namespace Hy
