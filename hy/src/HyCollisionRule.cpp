#include <Hy/HyCollisionRule.h>

#include <Hy/HyCollisionGeometry.h>
#include <Hy/HyPart.h>

#include <algorithm>
#include <set>
#include <utility>

namespace Hy {
namespace {

using Target = HyCollisionRule::Target;

/// Kinds of objects by their place in Target::serials, from the most specific on.
enum Kind : std::size_t { kGeometry, kPart, kAssembly, kMechanism, kEverything };
constexpr std::size_t kKindCount = kEverything + 1;

/// The most specific kind that is set.
std::size_t kindOf(const Target& target) {
    std::size_t kind = 0;
    while (kind < kEverything && target.serials[kind] == 0)
        ++kind;
    return kind;
}

/// The types are the upper triangle of the kinds by kinds.
HyCollisionRule::Type typeOf(std::size_t kind1, std::size_t kind2) {
    return static_cast<HyCollisionRule::Type>(kKindCount * kind1 + kind2 - kind1 * (kind1 + 1) / 2);
}

/// Whether the object that a rule names is in what it is asked about; everything always is.
bool names(const Target& named, const Target& asked) {
    const std::size_t kind = kindOf(named);
    return kind == kEverything || named.serials[kind] == asked.serials[kind];
}

} // namespace

// Targets.

Target::Target(HyPart* namedPart) : part(namedPart) {
    if (namedPart)
        serials[kPart] = namedPart->getSerial();
}

Target::Target(HyCollisionGeometry* namedGeometry) : collisionGeometry(namedGeometry) {
    if (namedGeometry)
        serials[kGeometry] = namedGeometry->getSerial();
}

Target Target::chainOf(HyPart* part) {
    return Target(part);
}

Target Target::chainOf(HyCollisionGeometry* geometry) {
    Target chain = chainOf(geometry->getPart());
    chain.collisionGeometry = geometry;
    chain.serials[kGeometry] = geometry->getSerial();
    return chain;
}

bool Target::operator<(const Target& other) const {
    const std::size_t kind = kindOf(*this);
    const std::size_t otherKind = kindOf(other);
    if (kind != otherKind)
        return kind < otherKind;
    return kind != kEverything && serials[kind] < other.serials[kind];
}

// Rules.

HyCollisionRule::HyCollisionRule(const Target& a, const Target& b, bool mayCollide,
                                 int rulePriority)
    : collide(mayCollide), priority(rulePriority), mFirst(a), mSecond(b) {
    if (mSecond < mFirst)
        std::swap(mFirst, mSecond);
    mType = typeOf(kindOf(mFirst), kindOf(mSecond));
}

HyCollisionRule::HyCollisionRule(const Target& a, bool mayCollide, int rulePriority)
    : HyCollisionRule(a, Target(), mayCollide, rulePriority) {}

bool HyCollisionRule::appliesTo(const Target& t1, const Target& t2) const {
    return (names(mFirst, t1) && names(mSecond, t2)) || (names(mFirst, t2) && names(mSecond, t1));
}

bool HyCollisionRule::appliesTo(const Target& t) const {
    return appliesToEverything() || names(mFirst, t) || names(mSecond, t);
}

bool HyCollisionRule::appliesToEverything() const {
    return kindOf(mSecond) == kEverything;
}

bool HyCollisionRule::appliesToEverything(const std::vector<HyCollisionRule>& rules) {
    return std::any_of(rules.begin(), rules.end(),
                       [](const HyCollisionRule& rule) { return rule.appliesToEverything(); });
}

std::vector<HyCollisionRule>
HyCollisionRule::detectContradictions(const std::vector<HyCollisionRule>& rules) {
    std::set<HyCollisionRule> distinct;
    std::vector<HyCollisionRule> contradictions;
    for (const HyCollisionRule& rule : rules)
        if (!distinct.insert(rule).second)
            contradictions.push_back(rule);
    return contradictions;
}

bool HyCollisionRule::operator==(const HyCollisionRule& other) const {
    return mFirst == other.mFirst && mSecond == other.mSecond && collide == other.collide &&
           priority == other.priority;
}

bool HyCollisionRule::operator<(const HyCollisionRule& other) const {
    if (priority != other.priority)
        return priority > other.priority;
    if (mFirst < other.mFirst || other.mFirst < mFirst)
        return mFirst < other.mFirst;
    return mSecond < other.mSecond;
}

} // namespace Hy
