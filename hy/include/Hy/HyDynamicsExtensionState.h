#pragma once
#include <Hy/HyDynamicsExtension.h>
#include <Hy/HyPointer.h>

namespace Hy {

/// What an extension was like when HyDynamicsExtension::createState() was called. Classes with something
/// to save derive from it.
class HY_API HyDynamicsExtensionState {
public:
    HyDynamicsExtensionState() = default;
    virtual ~HyDynamicsExtensionState() = default;
    /// HyDynamicsExtension::restoreState(), if the extension still exists.
    void restore();

    HyPointer<HyDynamicsExtension> mInstance;
};

} // namespace Hy
