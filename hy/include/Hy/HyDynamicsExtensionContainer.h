#pragma once
#include <Hy/HyDynamicsExtension.h>
#include <Hy/HySafeWalk.h>

namespace Hy {

/// Holds extensions and owns them.
class HY_API HyDynamicsExtensionContainer {
public:
    virtual ~HyDynamicsExtensionContainer() = default;

    /// In the order of creation.
    [[nodiscard]] virtual const HyWalkedObjects<HyDynamicsExtension>& getExtensions() const = 0;
    /// False for null and for one that is here already.
    virtual bool addExtension(HyDynamicsExtension* extension) = 0;
    /// Gives an extension back to the caller, null if it was not here.
    virtual HyDynamicsExtension* removeExtension(HyDynamicsExtension* extension) = 0;
    /// Removes and deletes an extension; false if it was not here.
    virtual bool destroyExtension(HyDynamicsExtension* extension) = 0;
    virtual void destroyExtensions() = 0;
};

} // namespace Hy
