#include <Hy/HyUniverse.h>

#include "HyCollisionRuleStore.h"

#include <Col/ColSpace.h>
#include <Hy/HyCollisionGeometry.h>

#include <algorithm>

// The rules of a universe, sorted so that of several that apply to a pair the first decides.

namespace Hy {

unsigned HyUniverse::addCollisionRule(const HyCollisionRule& rule) {
    HyCollisionRule own = rule;
    own.ID = mCollisionRulesNextID++;
    mCollisionRules->insertSorted(own);
    mCollisionRulesChanged->insertSorted(own);
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
    for (const HyCollisionRule& rule : mCollisionRules->get())
        if (rule.ID == id)
            mCollisionRulesChanged->insertSorted(rule);
    mCollisionRules->eraseId(id);
}

void HyUniverse::removeCollisionRules(const std::vector<unsigned>& ids) {
    for (unsigned id : ids)
        removeCollisionRule(id);
}

void HyUniverse::removeCollisionRules() {
    for (const HyCollisionRule& rule : mCollisionRules->get())
        mCollisionRulesChanged->insertSorted(rule);
    mCollisionRules->clear();
}

const std::vector<HyCollisionRule>& HyUniverse::getCollisionRules() const {
    return mCollisionRules->get();
}

void HyUniverse::setCollisionRulesSuspended(bool on) {
    mCollisionRulesReset |= on && !mCollisionRulesSuspended;
    mCollisionRulesSuspended = on;
}

// Application: at the next detection, to the geometries that changed rules name, or all.

void HyUniverse::collisionGeometryDirty(HyCollisionGeometry* geometry) {
    const HyCollisionRule::Target target = HyCollisionRule::Target::chainOf(geometry);
    const std::vector<HyCollisionRule>& rules = mCollisionRules->get();
    if (std::any_of(rules.begin(), rules.end(),
                    [&](const HyCollisionRule& rule) { return rule.appliesTo(target); }))
        mCollisionGeometriesDirty = true;
    else
        geometry->clearDirtyFlag();
}

namespace {

bool isSwitched(const HyCollisionGeometry* geometry) {
    return geometry->isCollisionEnabled() && geometry->getColModel() &&
           geometry->getTemporaryDisabledStatus() == HyCollisionGeometry::kNotTemporaryDisabled;
}

} // namespace

void HyUniverse::stepCollisionRules() {
    if (mCollisionRulesSuspended)
        return;
    const std::vector<HyCollisionRule>& changed = mCollisionRulesChanged->get();
    if (!mCollisionRulesReset && !changed.empty()) {
        if (HyCollisionRule::appliesToEverything(changed)) {
            mCollisionRulesReset = true;
        } else {
            std::vector<HyCollisionGeometry*> named;
            for (HyCollisionGeometry* geometry : mCollisionGeometries) {
                const auto target = HyCollisionRule::Target::chainOf(geometry);
                if (isSwitched(geometry) &&
                    std::any_of(changed.begin(), changed.end(), [&](const HyCollisionRule& rule) {
                        return rule.appliesTo(target);
                    }))
                    named.push_back(geometry); // stays dirty: one that is not named may meet it too
            }
            applyCollisionRules(named, true);
        }
    }
    mCollisionRulesChanged->clear();
    if (mCollisionRulesReset || mCollisionGeometriesDirty) {
        const std::vector<HyCollisionGeometry*> all(mCollisionGeometries.begin(),
                                                    mCollisionGeometries.end());
        applyCollisionRules(all, mCollisionRulesReset);
    }
    mCollisionRulesReset = false;
    if (mCollisionGeometriesDirty)
        for (HyCollisionGeometry* geometry : mCollisionGeometries)
            geometry->clearDirtyFlag();
    mCollisionGeometriesDirty = false;
}

// Of the rules that apply to a pair the first decides; a pair without any is enabled. In the first
// step all pairs are enabled already.
void HyUniverse::applyCollisionRules(const std::vector<HyCollisionGeometry*>& geometries,
                                     bool all) {
    if (mFirstStep && mCollisionRules->get().empty())
        return;
    struct Candidate {
        HyCollisionGeometry* geometry;
        HyCollisionRule::Target target;
    };
    std::vector<Candidate> candidates;
    for (HyCollisionGeometry* geometry : geometries)
        if (isSwitched(geometry))
            candidates.push_back({geometry, HyCollisionRule::Target::chainOf(geometry)});
    std::vector<const HyCollisionRule*> workList;
    for (const Candidate& a : candidates) {
        if (!all && !a.geometry->isDirty())
            continue;
        workList.clear();
        for (const HyCollisionRule& rule : mCollisionRules->get())
            if (rule.appliesTo(a.target))
                workList.push_back(&rule);
        for (const Candidate& b : candidates) {
            if (a.geometry == b.geometry ||
                (a.geometry->getPart() && a.geometry->getPart() == b.geometry->getPart()))
                continue;
            const auto rule = std::find_if(workList.begin(), workList.end(),
                                           [&](const HyCollisionRule* candidate) {
                                               return candidate->appliesTo(a.target, b.target);
                                           });
            const bool collide = rule == workList.end() || (*rule)->collide;
            ColModel *modelA = a.geometry->getColModel(), *modelB = b.geometry->getColModel();
            if (collide && mFirstStep)
                continue;
            if (ColSpacePairIsEnabled(modelA, modelB) != collide)
                (collide ? ColSpaceEnablePair : ColSpaceDisablePair)(modelA, modelB);
        }
    }
}

} // namespace Hy
