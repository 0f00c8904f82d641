#pragma once
#include <Hy/HyConstraintFactory.h>

namespace Hy {

/// The factories of constraints of this process.
class HY_API HyConstraintRegistry : public HyFactoryRegistry<HyConstraintFactory> {
public:
    /// Lives until the process ends.
    [[nodiscard]] static HyConstraintRegistry& instance();
};

} // namespace Hy
