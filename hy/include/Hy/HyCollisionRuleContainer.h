#pragma once
#include <Kit/KitApi.h>

namespace Hy {

/// What holds collision rules of its own: a part, or a mechanism of parts.
class HY_API HyCollisionRuleContainer {
public:
    HyCollisionRuleContainer() = default;
    HyCollisionRuleContainer(const HyCollisionRuleContainer&) = delete;
    HyCollisionRuleContainer& operator=(const HyCollisionRuleContainer&) = delete;
    virtual ~HyCollisionRuleContainer() = default;

    /// Priority that its rules take; where two rules apply, the one of higher priority decides.
    [[nodiscard]] virtual int getCollisionRulePriority() const = 0;
};

} // namespace Hy
