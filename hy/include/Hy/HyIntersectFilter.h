#pragma once
#include <Kit/KitApi.h>

namespace HyPs {
class HyParticleSystem;
}

namespace Hy {
class HyCollisionGeometry;

/// Says which pairs of a geometry are looked at. It may be called from workers, for several pairs at
/// once, and must not change anything.
class HY_API HyIntersectFilter {
public:
    virtual ~HyIntersectFilter() = default;
    [[nodiscard]] virtual bool isPairEnabled(const HyCollisionGeometry* geometry1,
                                             const HyCollisionGeometry* geometry2) = 0;
    [[nodiscard]] virtual bool isPairEnabled(const HyPs::HyParticleSystem* particles,
                                             const HyCollisionGeometry* geometry) = 0;
};

} // namespace Hy
