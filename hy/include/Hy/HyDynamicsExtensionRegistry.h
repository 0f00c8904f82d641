#pragma once
#include <Hy/HyDynamicsExtensionFactory.h>

namespace Hy {

/// The factories of extensions of this process.
class HY_API HyDynamicsExtensionRegistry : public HyFactoryRegistry<HyDynamicsExtensionFactory> {
public:
    /// Lives until the process ends.
    [[nodiscard]] static HyDynamicsExtensionRegistry& instance();
};

} // namespace Hy
