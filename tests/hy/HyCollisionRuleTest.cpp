#include <Hy/HyCollisionPairRequest.h>
#include <Hy/HyCollisionRule.h>
#include <Hy/HyPart.h>

#include <Col/ColRequest.h>

#include "FrameFixture.h"

#include <algorithm>
#include <iostream>
#include <limits>
#include <memory>
#include <random>

namespace Hy {
namespace {

using Rule = HyCollisionRule;
using Target = HyCollisionRule::Target;

/// A target with objects of the kinds geometry, part, assembly, mechanism; 0 for none.
Target targetOf(std::uint64_t geometry, std::uint64_t part = 0, std::uint64_t assembly = 0,
                std::uint64_t mechanism = 0) {
    Target target;
    target.serials = {geometry, part, assembly, mechanism};
    return target;
}

Target named(int kind, std::uint64_t serial) {
    Target target;
    if (kind < 4)
        target.serials[static_cast<std::size_t>(kind)] = serial;
    return target;
}

TEST(HyCollisionRuleTest, KindsGiveTheTypeInEitherOrder) {
    int type = 0;
    for (int kind1 = 0; kind1 < 5; ++kind1)
        for (int kind2 = kind1; kind2 < 5; ++kind2, ++type) {
            const Target a = named(kind1, 7), b = named(kind2, 3);
            const Rule rule(a, b, true, 5), swapped(b, a, true, 5);
            EXPECT_EQ(rule.getType(), type);
            EXPECT_EQ(rule, swapped);
            EXPECT_EQ(swapped.getType(), type);
            EXPECT_EQ(rule.first(), kind1 == kind2 ? b : a); // the older one of a kind
            EXPECT_EQ(rule.appliesToEverything(), kind2 == 4);
        }
    EXPECT_EQ(type, Rule::kType_Everything_Everything + 1);
    EXPECT_EQ(Rule(), Rule(Target(), false, Rule::PriorityDefault));
    EXPECT_EQ(Rule().ID, Rule::InvalidID);
    EXPECT_TRUE(Rule::appliesToEverything({Rule(named(0, 1), named(1, 1), true, 0), Rule()}));
    EXPECT_FALSE(Rule::appliesToEverything({Rule(named(0, 1), named(1, 1), true, 0)}));
}

// Geometries 1 to 8 lie in parts 11 to 14, two in each; two parts in each assembly 21 and 22, the
// first of them in mechanism 31.
Target chainOfGeometry(std::uint64_t geometry) {
    const std::uint64_t part = 11 + (geometry - 1) / 2, assembly = 21 + (geometry - 1) / 4;
    return targetOf(geometry, part, assembly, assembly == 21 ? 31 : 0);
}

TEST(HyCollisionRuleTest, AppliesWhereBothTargetsAreInThePair) {
    const Target named1[] = {named(0, 3), named(1, 12), named(2, 21), named(3, 31), named(4, 0)};
    const Target named2[] = {named(0, 5), named(1, 13), named(2, 22), named(3, 31), named(4, 0)};
    const auto isIn = [](const Target& name, const Target& chain) {
        if (name == Target())
            return true;
        for (std::size_t kind = 0; kind < 4; ++kind)
            if (name.serials[kind] && name.serials[kind] == chain.serials[kind])
                return true;
        return false;
    };
    int applied = 0;
    for (const Target& a : named1)
        for (const Target& b : named2)
            for (std::uint64_t g = 1; g <= 8; ++g) {
                const Rule rule(a, b, false, 0);
                const Target chain = chainOfGeometry(g);
                const bool everything = a == Target() || b == Target();
                EXPECT_EQ(rule.appliesTo(chain), everything || isIn(a, chain) || isIn(b, chain));
                for (std::uint64_t h = 1; h <= 8; ++h) {
                    const Target other = chainOfGeometry(h);
                    const bool expected =
                        (isIn(a, chain) && isIn(b, other)) || (isIn(a, other) && isIn(b, chain));
                    EXPECT_EQ(rule.appliesTo(chain, other), expected);
                    applied += expected;
                }
            }
    EXPECT_GT(applied, 100);
}

TEST(HyCollisionRuleTest, OrderIsTotalAndPutsPriorityFirst) {
    std::vector<Rule> rules;
    for (int priority : {0, 10000})
        for (int kind1 = 0; kind1 < 5; ++kind1)
            for (int kind2 = kind1; kind2 < 5; ++kind2)
                for (std::uint64_t serial : {1, 2})
                    rules.emplace_back(named(kind1, serial), named(kind2, 2), serial == 1,
                                       priority);
    std::vector<Rule> sorted = rules;
    std::stable_sort(sorted.begin(), sorted.end());
    EXPECT_EQ(sorted.front().priority, 10000);
    EXPECT_EQ(sorted.front().getType(), Rule::kType_CG_CG);
    EXPECT_EQ(sorted.front().first(), named(0, 1));
    EXPECT_EQ(sorted.back(), Rule(Target(), rules.back().collide, 0));
    for (std::size_t i = 0; i < sorted.size(); ++i)
        for (std::size_t j = i; j < sorted.size(); ++j)
            EXPECT_FALSE(sorted[j] < sorted[i]);

    // Alike but for what they say: everything against everything, at both priorities.
    const std::vector<Rule> doubled = Rule::detectContradictions(rules);
    ASSERT_EQ(doubled.size(), 2U);
    EXPECT_EQ(doubled[0].getType(), Rule::kType_Everything_Everything);
    EXPECT_FALSE(doubled[0].collide);
}

TEST(HyCollisionRuleTest, PairRequestKeepsItsRecordAndItsBounds) {
    HyCollisionPairRequest request(8, true), copy;
    ColRequest* const record = copy.getColRequest();
    EXPECT_EQ(copy.getContactMaxCount(), ColRequest().contactMaxCount);
    testing::internal::CaptureStderr();
    request.setGroupMaxCount(7);
    EXPECT_NE(testing::internal::GetCapturedStderr().find(
                  "HyCollisionPairRequest::setGroupMaxCount: @a maxCount exeeds max count (6)\n"),
              std::string::npos);
    EXPECT_EQ(request.getGroupMaxCount(), 6);
    request.setMaxPenetrationFactor(0.5);
    for (HyReal refused : {0.0, 1.0, -1.0, std::numeric_limits<HyReal>::quiet_NaN()})
        request.setMaxPenetrationFactor(refused);
    request.setGroupNormalMethod(HyCollisionPairRequest::kGroupNormalMethodUseWeightedAverage);
    copy = request;
    EXPECT_EQ(copy.getColRequest(), record);
    EXPECT_EQ(record->contactMaxCount, 8U);
    EXPECT_EQ(record->faceNormalsFirst, 1);
    EXPECT_EQ(record->maxPenetrationFactor, 0.5);
    EXPECT_EQ(record->groupNormalMethod, 3);
    const HyCollisionPairRequest moved(std::move(copy));
    EXPECT_EQ(moved.getColRequest(), record);
}

class HyCollisionRuleContainerTest : public FrameFixture {
protected:
    [[nodiscard]] std::vector<unsigned> ids() const {
        std::vector<unsigned> found;
        for (const Rule& rule : frame->getUniverse().getCollisionRules())
            found.push_back(rule.ID);
        return found;
    }
    HyPart& addPart() const {
        auto* part = new HyPart(1);
        frame->getUniverse().addPart(part);
        return *part;
    }
};

TEST_F(HyCollisionRuleContainerTest, UniverseSortsAndNumbersItsRules) {
    HyUniverse& universe = frame->getUniverse();
    HyPart &a = addPart(), &b = addPart();
    EXPECT_EQ(universe.addCollisionRule(Rule(&b, true, 0)), 1U);
    const std::vector<unsigned> added =
        universe.addCollisionRules({Rule(&a, &b, false, 5), Rule(&b, false, 0), Rule(&a, true, 0)});
    EXPECT_EQ(added, (std::vector<unsigned>{2, 3, 4}));
    EXPECT_EQ(ids(), (std::vector<unsigned>{2, 4, 1, 3})); // equivalent ones as added
    universe.removeCollisionRules({1, 99});
    EXPECT_EQ(ids(), (std::vector<unsigned>{2, 4, 3}));
    universe.destroyPart(&a); // rules that name it go with it
    EXPECT_EQ(ids(), (std::vector<unsigned>{3}));
    universe.removeCollisionRules();
    EXPECT_TRUE(ids().empty());
    EXPECT_EQ(universe.addCollisionRule(Rule()), 5U);
}

TEST_F(HyCollisionRuleContainerTest, PartsHandTheirRulesOverAtTheNextStep) {
    HyUniverse& universe = frame->getUniverse();
    HyPart &a = addPart(), &b = addPart(), &c = addPart();
    a.appendCollisionRule(Rule(&a, &b, false, Rule::PriorityScene));
    EXPECT_TRUE(a.insertCollisionRule(77, Rule(&a, &c, false, 0)));
    EXPECT_TRUE(a.insertCollisionRule(0, Rule(&a, true, 0)));
    EXPECT_EQ(a.getCollisionRules()[0].second(), Target());
    EXPECT_EQ(a.getCollisionRules()[1].priority, Rule::PriorityPart);
    EXPECT_TRUE(ids().empty());
    frame->step();
    EXPECT_EQ(ids(), (std::vector<unsigned>{2, 3, 1}));
    frame->step();
    EXPECT_EQ(ids(), (std::vector<unsigned>{2, 3, 1}));

    EXPECT_FALSE(a.removeCollisionRule(3));
    EXPECT_TRUE(a.removeCollisionRule(0));
    a.wakeDynamics(false); // asleep it hands them over as well
    frame->step();
    EXPECT_EQ(ids(), (std::vector<unsigned>{4, 5}));

    auto* other = new HyUniverse(2, 2, nullptr);
    frame->addUniverse(other);
    other->addPart(&a);
    EXPECT_TRUE(ids().empty());
    ASSERT_EQ(other->getCollisionRules().size(), 2U);
    universe.destroyPart(&b);
    EXPECT_EQ(a.getCollisionRules().size(), 1U);
    ASSERT_EQ(other->getCollisionRules().size(), 1U);
    EXPECT_EQ(other->getCollisionRules()[0].second(), Target(&c));
    other->destroyPart(&a);
    EXPECT_TRUE(other->getCollisionRules().empty());
}

// Parts with rules about each other come, change and go; the rules of a universe stay those of the
// parts in it.
TEST_F(HyCollisionRuleContainerTest, UniverseHoldsWhatItsPartsSayThroughRandomCalls) {
    const unsigned seed = std::random_device()();
    std::cout << "seed " << seed << '\n';
    std::mt19937 random(seed);
    HyUniverse& universe = frame->getUniverse();
    std::vector<HyPart*> parts;
    for (int call = 0; call < 2000; ++call) {
        const auto pick = [&] { return parts[random() % parts.size()]; };
        const auto action = static_cast<unsigned>(random() % 6);
        if (parts.size() < 3 || (action == 0 && parts.size() < 10)) {
            parts.push_back(new HyPart(1));
        } else if (action == 1) {
            HyPart* part = pick();
            std::erase(parts, part);
            delete part;
        } else if (action == 2) {
            HyPart* part = pick();
            if (!universe.removePart(part))
                universe.addPart(part);
        } else if (action == 3) {
            HyPart* part = pick();
            part->removeCollisionRule(random() % (1 + part->getCollisionRules().size()));
        } else {
            pick()->appendCollisionRule(random() % 4 ? Rule(pick(), pick(), random() % 2, 0)
                                                     : Rule(pick(), random() % 2, 0));
        }
        if (random() % 3)
            continue;
        frame->step();
        std::vector<Rule> expected;
        for (const HyPart* part : parts)
            if (part->getUniverse())
                for (const Rule& rule : part->getCollisionRules())
                    expected.push_back(rule);
        std::vector<Rule> held = universe.getCollisionRules();
        ASSERT_TRUE(std::is_sorted(held.begin(), held.end()));
        const auto byAll = [](const Rule& x, const Rule& y) {
            return x < y || (!(y < x) && x.collide < y.collide);
        };
        std::sort(held.begin(), held.end(), byAll);
        std::sort(expected.begin(), expected.end(), byAll);
        ASSERT_TRUE(held == expected) << "call " << call;
    }
    for (HyPart* part : parts)
        delete part;
    EXPECT_TRUE(universe.getCollisionRules().empty());
}

} // namespace
} // namespace Hy
