#include <Hy/HyCollisionRuleContainer.h>

#include "HyCollisionRuleStore.h"

#include <Hy/HyUniverse.h>

#include <algorithm>

namespace Hy {

struct HyCollisionRuleContainer::Rules {
    HyCollisionRuleStore mCollisionRules;
    std::vector<unsigned> mCommitedCollisionRules; ///< IDs that the universe gave them
    bool mCollisionRulesDirty = false;
};

HyCollisionRuleContainer::HyCollisionRuleContainer() = default;
HyCollisionRuleContainer::~HyCollisionRuleContainer() = default;

HyCollisionRuleContainer::Rules& HyCollisionRuleContainer::makeRules() {
    if (!mRules)
        mRules = std::make_unique<Rules>();
    return *mRules;
}

void HyCollisionRuleContainer::setDirty() {
    mRules->mCollisionRulesDirty = true;
    onCollisionRulesChanged();
}

void HyCollisionRuleContainer::appendCollisionRule(const HyCollisionRule& rule) {
    insertCollisionRule(getCollisionRules().size(), rule);
}

bool HyCollisionRuleContainer::insertCollisionRule(std::size_t index, const HyCollisionRule& rule) {
    HyCollisionRuleStore& rules = makeRules().mCollisionRules;
    HyCollisionRule own = rule;
    own.priority = getCollisionRulePriority();
    rules.insert(std::min(index, rules.get().size()), own);
    setDirty();
    return true;
}

bool HyCollisionRuleContainer::removeCollisionRule(std::size_t index) {
    if (index >= getCollisionRules().size())
        return false;
    mRules->mCollisionRules.erase(index);
    setDirty();
    return true;
}

void HyCollisionRuleContainer::removeCollisionRules() {
    if (getCollisionRules().empty())
        return;
    mRules->mCollisionRules.clear();
    setDirty();
}

const std::vector<HyCollisionRule>& HyCollisionRuleContainer::getCollisionRules() const {
    static const std::vector<HyCollisionRule> none;
    return mRules ? mRules->mCollisionRules.get() : none;
}

void HyCollisionRuleContainer::preStepCollisionRuleContainer(HyUniverse* universe) {
    if (!universe || !mRules || !mRules->mCollisionRulesDirty)
        return;
    withdraw(*universe);
    commit(*universe);
}

void HyCollisionRuleContainer::onCollisionRuleContainerUniverseChanged(HyUniverse* old,
                                                                       HyUniverse* universe) {
    if (!mRules)
        return;
    if (old)
        withdraw(*old);
    if (universe)
        commit(*universe);
}

void HyCollisionRuleContainer::commit(HyUniverse& universe) {
    mRules->mCommitedCollisionRules = universe.addCollisionRules(getCollisionRules());
    mRules->mCollisionRulesDirty = false;
}

void HyCollisionRuleContainer::withdraw(HyUniverse& universe) {
    universe.removeCollisionRules(mRules->mCommitedCollisionRules);
    mRules->mCommitedCollisionRules.clear();
}

} // namespace Hy
