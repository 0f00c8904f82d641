#include "EngineFixture.h"

#include <cmath>
#include <random>

using namespace Hy;

namespace {

constexpr HyReal kGravity = 9.80665; ///< m/s²

// One result for all pairs of two parts.
class PartPairContacts : public EngineFixture {
protected:
    static HyCollisionGeometry& shape(HyPart& part, HyGeometry* geometry, const HyVector3& place) {
        auto* placed = new HyCollisionGeometry(geometry, nullptr, HyTransform(place));
        part.addCollisionGeometry(placed);
        return *placed;
    }
    HyPart& ground() {
        HyPart& part = addPart(1);
        part.setControl(HyPart::kControlStatic);
        return part;
    }
    std::vector<HyDynamicsContact*> contacts() {
        std::vector<HyDynamicsContact*> all;
        for (auto each = universe->dynamicsContactBegin(); each != universe->dynamicsContactEnd();
             ++each)
            all.push_back(*each);
        return all;
    }
    HyReal forceUpOn(const HyPart& part) {
        HyReal up = 0;
        for (HyDynamicsContact* contact : contacts()) {
            HyPart *first = nullptr, *second = nullptr;
            contact->getPartPair(first, second);
            HyVector3 force;
            contact->getForce(first == &part ? 0 : 1, force);
            up += force[2];
        }
        return up;
    }
};

/// Counts what it is told.
struct Listener : HyIntersectSubscriber {
    int calls = 0, contacts = 0;
    void notifyDisjoint(eIntersectEventType, HyIntersectResult*) override { ++calls; }
    void notifyIntersect(eIntersectEventType, HyIntersectResult* result,
                         HyDynamicsResponseInput*) override {
        ++calls;
        contacts = result->getContactCount();
    }
};

// A table of four boxes stands on its corners alone, and these bear its weight.
TEST_F(PartPairContacts, TilesOfOnePartShareTheContactsOfItsOutline) {
    shape(ground(), new HyPlane, HyVector3());
    HyPart& table = addPart(3);
    std::vector<HyCollisionGeometry*> tiles;
    for (int i = 0; i < 4; ++i)
        tiles.push_back(
            &shape(table, new HyBox(1, 1, 0.5), HyVector3(i % 2 - 0.5, i / 2 - 0.5, 0)));
    table.setPosition(HyVector3(0, 0, 0.25));
    universe->setAutoSleep(false);
    Listener listener;
    universe->addIntersectSubscriber(0, 0, kEventActive, &listener);
    step(2);
    EXPECT_EQ(contacts().size(), 16u);
    EXPECT_EQ(listener.calls, 4);

    universe->setPartPairContactMergingEnabled(true);
    listener.calls = 0;
    step(120);
    EXPECT_EQ(listener.calls, 120);
    EXPECT_EQ(listener.contacts, 4);
    ASSERT_EQ(contacts().size(), 4u);
    for (const HyDynamicsContact* contact : contacts()) {
        HyVector3 place;
        contact->getPosition(place);
        EXPECT_NEAR(std::abs(place[0]), 1, 1e-3);
        EXPECT_NEAR(std::abs(place[1]), 1, 1e-3);
    }
    EXPECT_NEAR(forceUpOn(table), 3 * kGravity, 1e-6 * 3 * kGravity);
    universe->removeIntersectSubscriber(0, 0, kEventActive, &listener);

    // Of the pairs one has the contacts in its charge; when it ends another takes over.
    const HyCollisionGeometry* plane = *universe->getCollisionGeometries().begin();
    std::size_t withContacts = 0;
    for (std::size_t i = 0; i < tiles.size(); ++i) {
        const HyDynamicsContactInput input =
            universe->getDynamicsContactInputOnPair(tiles[i - withContacts], plane);
        if (!*input.dynamicsContactBegin())
            continue;
        ++withContacts;
        table.destroyCollisionGeometry(tiles[i]);
        tiles.erase(tiles.begin() + static_cast<long>(i));
        step(1);
    }
    EXPECT_GE(withContacts, 1u);
    step(1);
    EXPECT_GE(contacts().size(), 4u);
    EXPECT_LE(contacts().size(), 8u);

    universe->setPartPairContactMergingEnabled(false);
    step(2);
    EXPECT_EQ(contacts().size(), 4 * tiles.size());
}

// A ball on a box and a box on a ball: the kinds of shape order the models of a pair, so that the two
// pairs of the parts see them from different sides.
TEST_F(PartPairContacts, ContactsOfPairsInTheOtherOrderAreInverted) {
    HyPart& base = ground();
    shape(base, new HySphere(0.5), HyVector3(-1, 0, 0));
    shape(base, new HyBox(1, 1, 1), HyVector3(1, 0, 0));
    HyPart& load = addPart(2);
    shape(load, new HyBox(1, 1, 1), HyVector3(-1, 0, 0));
    shape(load, new HySphere(0.5), HyVector3(1, 0, 0));
    load.setPosition(HyVector3(0, 0, 0.999));
    universe->setPartPairContactMergingEnabled(true);
    step(1);
    ASSERT_EQ(contacts().size(), 2u);
    for (const HyDynamicsContact* contact : contacts()) {
        HyPart *first = nullptr, *second = nullptr;
        contact->getPartPair(first, second);
        HyVector3 normal;
        contact->getNormal(normal);
        EXPECT_NEAR(normal[2], first == &load ? 1 : -1, 1e-9);
    }
    step(1);
    EXPECT_NEAR(load.getLinearVelocity()[2], 0, 0.1);
    EXPECT_NEAR(load.getAngularVelocity().norm(), 0, 1e-7);
}

// Dumb-bells fall in a heap: the number of workers changes no bit, and nothing falls through.
TEST_F(PartPairContacts, HeapIsTheSameForAnyNumberOfWorkers) {
    std::vector<HyVector3> reference;
    for (const int threads : {1, 3}) {
        start(threads);
        universe->setCollisionMultithreaded(threads > 1);
        universe->setPartPairContactMergingEnabled(true);
        shape(ground(), new HyPlane, HyVector3());
        std::mt19937 random(7);
        std::uniform_real_distribution<HyReal> jitter(-0.2, 0.2);
        std::vector<HyPart*> parts;
        for (int i = 0; i < 60; ++i) {
            HyPart& part = addPart(1);
            shape(part, new HyBox(0.4, 0.4, 0.4), HyVector3(-0.4, 0, 0));
            shape(part, new HyBox(0.4, 0.2, 0.2), HyVector3(0, 0, 0));
            shape(part, new HySphere(0.25), HyVector3(0.4, 0, 0));
            part.setPosition(
                HyVector3(i % 3 + jitter(random), i / 3 % 3 + jitter(random), 0.5 + 0.5 * (i / 9)));
            parts.push_back(&part);
        }
        step(150);
        std::vector<HyVector3> places;
        for (const HyPart* part : parts) {
            places.push_back(part->getPosition());
            EXPECT_GT(part->getPosition()[2], 0.05);
        }
        if (reference.empty())
            reference = places;
        for (std::size_t i = 0; i < places.size(); ++i)
            EXPECT_EQ((places[i] - reference[i]).norm(), 0) << i;
    }
}

} // namespace
