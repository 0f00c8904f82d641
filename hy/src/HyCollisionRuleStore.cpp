#include "HyCollisionRuleStore.h"

#include <Hy/HyCollisionGeometry.h>
#include <Hy/HyPart.h>

#include <algorithm>

namespace Hy {
namespace {

/// Calls with each object that a rule names.
template <typename Call>
void forEachObject(const HyCollisionRule& rule, Call call) {
    for (const HyCollisionRule::Target* target : {&rule.first(), &rule.second()}) {
        if (target->collisionGeometry)
            call(target->collisionGeometry);
        if (target->part)
            call(target->part);
    }
}

bool hasObject(const HyCollisionRule& rule, const HyBase* object) {
    const auto& first = rule.first().serials;
    const auto& second = rule.second().serials;
    const std::uint64_t serial = object->getSerial();
    return std::find(first.begin(), first.end(), serial) != first.end() ||
           std::find(second.begin(), second.end(), serial) != second.end();
}

} // namespace

HyCollisionRuleStore::~HyCollisionRuleStore() {
    clear();
}

void HyCollisionRuleStore::insert(std::size_t index, const HyCollisionRule& rule) {
    const auto place = mRules.begin() + static_cast<std::ptrdiff_t>(index);
    // Once for each rule and target, so that each takes back its own.
    forEachObject(*mRules.insert(place, rule),
                  [this](HyBase* object) { object->addSubscriber(HyBase::kEventDestroy, this); });
}

void HyCollisionRuleStore::insertSorted(const HyCollisionRule& rule) {
    const auto place = std::upper_bound(mRules.begin(), mRules.end(), rule);
    insert(static_cast<std::size_t>(place - mRules.begin()), rule);
}

void HyCollisionRuleStore::erase(std::size_t index) {
    const auto place = mRules.begin() + static_cast<std::ptrdiff_t>(index);
    forEachObject(
        *place, [this](HyBase* object) { object->removeSubscriber(HyBase::kEventDestroy, this); });
    mRules.erase(place);
}

void HyCollisionRuleStore::eraseId(unsigned id) {
    for (std::size_t i = mRules.size(); i-- > 0;)
        if (mRules[i].ID == id)
            erase(i);
}

void HyCollisionRuleStore::clear() {
    while (!mRules.empty())
        erase(mRules.size() - 1);
}

void HyCollisionRuleStore::notify(int, HyBase* object) {
    for (std::size_t i = mRules.size(); i-- > 0;)
        if (hasObject(mRules[i], object))
            erase(i);
}

} // namespace Hy
