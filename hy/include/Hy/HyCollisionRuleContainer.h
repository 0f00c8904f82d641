#pragma once
#include <Kit/KitApi.h>

#include <cstddef>
#include <memory>
#include <vector>

namespace Hy {
class HyCollisionRule;
class HyUniverse;

/// What holds collision rules of its own: a part, or a mechanism of parts. They act in the universe
/// that it is in, from the start of the next step on. Rules that name an object go with it.
class HY_API HyCollisionRuleContainer {
public:
    HyCollisionRuleContainer();
    HyCollisionRuleContainer(const HyCollisionRuleContainer&) = delete;
    HyCollisionRuleContainer& operator=(const HyCollisionRuleContainer&) = delete;
    virtual ~HyCollisionRuleContainer();

    /// Priority that its rules take; where two rules apply, the one of higher priority decides.
    [[nodiscard]] virtual int getCollisionRulePriority() const = 0;

    /// Appends a copy of a rule, which takes the container's priority. The objects named are alive.
    void appendCollisionRule(const HyCollisionRule& rule);
    /// The same before an index; beyond the end, at the end. Answers true.
    bool insertCollisionRule(std::size_t index, const HyCollisionRule& rule);
    /// False for an index beyond the end.
    bool removeCollisionRule(std::size_t index);
    /// Removes all rules.
    void removeCollisionRules();
    [[nodiscard]] const std::vector<HyCollisionRule>& getCollisionRules() const;

protected:
    /// Hands changed rules to the universe; called at the start of a step. Null: nothing.
    void preStepCollisionRuleContainer(HyUniverse* universe);
    /// Takes the rules along; either may be null.
    void onCollisionRuleContainerUniverseChanged(HyUniverse* old, HyUniverse* universe);
    /// The rules have changed: the container wants to be called at the start of the next step.
    virtual void onCollisionRulesChanged() = 0;

private:
    struct Rules;

    Rules& makeRules();
    void commit(HyUniverse& universe);
    void withdraw(HyUniverse& universe);
    void setDirty();

    std::unique_ptr<Rules> mRules; ///< made with the first rule: most containers have none
};

} // namespace Hy
