#include <Hy/HyUniverse.h>

#include "HyCollisionRuleStore.h"

// The rules of a universe, sorted so that of several that apply to a pair the first decides.

namespace Hy {

unsigned HyUniverse::addCollisionRule(const HyCollisionRule& rule) {
    HyCollisionRule own = rule;
    own.ID = mCollisionRulesNextID++;
    mCollisionRules->insertSorted(own);
    return own.ID;
}

std::vector<unsigned> HyUniverse::addCollisionRules(const std::vector<HyCollisionRule>& rules) {
    std::vector<unsigned> ids;
    ids.reserve(rules.size());
    for (const HyCollisionRule& rule : rules)
        ids.push_back(addCollisionRule(rule));
    return ids;
}

void HyUniverse::removeCollisionRule(unsigned id) {
    mCollisionRules->eraseId(id);
}

void HyUniverse::removeCollisionRules(const std::vector<unsigned>& ids) {
    for (unsigned id : ids)
        removeCollisionRule(id);
}

void HyUniverse::removeCollisionRules() {
    mCollisionRules->clear();
}

const std::vector<HyCollisionRule>& HyUniverse::getCollisionRules() const {
    return mCollisionRules->get();
}

} // namespace Hy
