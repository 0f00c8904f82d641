#pragma once
#include <Hy/HyBase.h>
#include <Hy/HyCollisionRule.h>

#include <cstddef>
#include <vector>

namespace Hy {

/// A list of rules that drops those which name an object when it is destroyed.
class HyCollisionRuleStore : public HyBase::Subscriber {
public:
    HyCollisionRuleStore() = default;
    HyCollisionRuleStore(const HyCollisionRuleStore&) = delete;
    HyCollisionRuleStore& operator=(const HyCollisionRuleStore&) = delete;
    ~HyCollisionRuleStore() override;

    [[nodiscard]] const std::vector<HyCollisionRule>& get() const { return mRules; }
    /// Inserts before an index, at most the number of rules. The objects named are alive.
    void insert(std::size_t index, const HyCollisionRule& rule);
    /// Inserts where the order of the rules wants it, behind equivalent ones.
    void insertSorted(const HyCollisionRule& rule);
    void erase(std::size_t index);
    /// Erases the rules of an ID.
    void eraseId(unsigned id);
    void clear();

    void notify(int event, HyBase* object) override;

private:
    std::vector<HyCollisionRule> mRules;
};

} // namespace Hy
