#include <Hy/HyBox.h>
#include <Hy/HyCollisionContact.h>
#include <Hy/HyCollisionGeometry.h>
#include <Hy/HyCollisionPairRequest.h>
#include <Hy/HyCollisionRule.h>
#include <Hy/HyCompositeCollisionGeometry.h>
#include <Hy/HyDynamicsContact.h>
#include <Hy/HyFrame.h>
#include <Hy/HyIntersect.h>
#include <Hy/HyIntersectResult.h>
#include <Hy/HyMaterial.h>
#include <Hy/HyMaterialTable.h>
#include <Hy/HyPart.h>
#include <Hy/HyPlane.h>
#include <Hy/HySphere.h>
#include <Hy/HyUniverse.h>
#include <Hy/HyUniverseState.h>
#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <random>
#include <string>
#include <vector>

using namespace Hy;

namespace {

constexpr HyReal kGravity = 9.80665; ///< m/s²

class FallingBoxes : public ::testing::Test {
protected:
    FallingBoxes() : universe(HyFrame::instance()->getUniverse()) {
        stone = universe.getMaterialTable()->registerMaterial("stone");
        setFriction(0.5);
        ground = new HyPart;
        ground->setControl(HyPart::kControlStatic);
        ground->addCollisionGeometry(new HyCollisionGeometry(new HyPlane, stone));
        universe.addPart(ground);
    }
    ~FallingBoxes() override { HyFrame::release(); }

    void setFriction(HyReal coefficient) {
        stone->setFrictionModel(HyMaterial::kFrictionAxisLinear,
                                HyMaterial::kFrictionModelScaledBox);
        stone->setFrictionCoefficient(HyMaterial::kFrictionAxisLinear, coefficient);
    }
    HyPart* add(HyGeometry* shape, HyReal mass, const HyVector3& position) {
        auto* part = new HyPart(mass);
        part->addCollisionGeometry(new HyCollisionGeometry(shape, stone));
        part->setPosition(position);
        universe.addPart(part);
        return part;
    }
    HyPart* addBox(HyReal mass, const HyVector3& position) {
        return add(new HyBox(1, 1, 1), mass, position);
    }
    static void step(int count) {
        for (int i = 0; i < count; ++i)
            HyFrame::instance()->step();
    }
    int contactCount() {
        int count = 0;
        for (auto contact = universe.dynamicsContactBegin();
             contact != universe.dynamicsContactEnd(); ++contact)
            ++count;
        return count;
    }

    HyUniverse& universe;
    HyMaterial* stone;
    HyPart* ground;
};

// A box falls, lands, and comes to rest where it lies on the plane, which bears its weight; then it
// sleeps, and sleeping it stays.
TEST_F(FallingBoxes, BoxFallsRestsAndSleeps) {
    HyPart* box = addBox(2, HyVector3(0, 0, 1.5));
    const int fallSteps = static_cast<int>(std::sqrt(2 * 1.0 / kGravity) * 60) - 1;
    step(fallSteps);
    const HyReal t = fallSteps / 60.0; // semi-implicit Euler falls by half a step more
    EXPECT_NEAR(box->getPosition()[2], 1.5 - kGravity * t * (t + 1.0 / 60) / 2, 1e-9);
    EXPECT_EQ(contactCount(), 0);
    universe.setAutoSleep(false);
    step(300); // the overlap of the impact has gone
    EXPECT_EQ(contactCount(), 4);
    HyReal weight = 0;
    for (auto contact = universe.dynamicsContactBegin(); contact != universe.dynamicsContactEnd();
         ++contact) {
        HyPart *first = nullptr, *second = nullptr;
        (*contact)->getPartPair(first, second);
        HyVector3 force;
        (*contact)->getForce(first == box ? 0 : 1, force);
        weight += force[2];
    }
    EXPECT_NEAR(weight, 2 * kGravity, 1e-6 * 2 * kGravity);
    universe.setAutoSleep(true);
    step(30);
    EXPECT_NEAR(box->getPosition()[2], 0.5, 1e-4);
    EXPECT_FALSE(box->isDynamicsAwake());
    const HyVector3 asleep = box->getPosition();
    step(60);
    EXPECT_EQ((box->getPosition() - asleep).norm(), 0);
    box->addForce(HyVector3(0, 0, 10 * 2 * kGravity));
    step(1);
    EXPECT_GT(box->getLinearVelocity()[2], 0);
    step(5);
    EXPECT_EQ(contactCount(), 0);
}

// Along an axis of its friction a sliding box stops after v²/(2 μ g).
TEST_F(FallingBoxes, SlidingBoxStopsAfterTheDistanceOfItsFriction) {
    for (const HyReal friction : {0.2, 0.4}) {
        setFriction(friction);
        HyPart* box = add(new HyBox(1, 1, 0.2), 1, HyVector3(0, 0, 0.1));
        box->setLinearVelocity(HyVector3(4, 0, 0));
        step(180);
        const HyReal distance = 16 / (2 * friction * kGravity);
        EXPECT_NEAR(box->getPosition()[0], distance, 0.02 * distance) << friction;
        EXPECT_NEAR(box->getPosition()[1], 0, 1e-6);
        universe.destroyPart(box);
    }
}

TEST_F(FallingBoxes, StackStands) {
    universe.setAutoSleep(false);
    std::vector<HyPart*> boxes;
    for (int i = 0; i < 4; ++i)
        boxes.push_back(addBox(1, HyVector3(0, 0, 0.5 + i)));
    step(300);
    for (int i = 0; i < 4; ++i) {
        const HyVector3 moved =
            boxes[static_cast<std::size_t>(i)]->getPosition() - HyVector3(0, 0, 0.5 + i);
        EXPECT_LT(moved.norm(), 0.01) << i;
    }
}

/// Writes down what it is told.
struct EventLog : HyIntersectSubscriber {
    std::string log;
    int contacts = 0;
    void notifyDisjoint(eIntersectEventType event, HyIntersectResult*) override {
        log += event == kEventDisjoint ? 'D' : 'I';
    }
    void notifyIntersect(eIntersectEventType event, HyIntersectResult* result,
                         HyDynamicsResponseInput*) override {
        log += event == kEventFirst ? 'F' : 'A';
        contacts = result->getContactCount();
    }
};

TEST_F(FallingBoxes, SubscribersHearOfFirstTouchAndParting) {
    EventLog log;
    for (const eIntersectEventType event : {kEventFirst, kEventActive, kEventDisjoint})
        universe.addIntersectSubscriber(0, 0, event, &log);
    HyPart* box = addBox(1, HyVector3(0, 0, 0.5));
    step(3);
    EXPECT_EQ(log.log, "FAA");
    EXPECT_EQ(log.contacts, 4);
    box->setPosition(HyVector3(0, 0, 5));
    step(1);
    EXPECT_EQ(log.log, "FAAD");
    box->setPosition(HyVector3(0, 0, 0.5));
    step(1);
    universe.destroyPart(box); // its pair ends at once
    EXPECT_EQ(log.log, "FAADFD");
    step(2);
    EXPECT_EQ(log.log, "FAADFD");
    EXPECT_EQ(contactCount(), 0);
    universe.removeIntersectSubscriber(0, 0, kEventFirst, &log);
    universe.removeIntersectSubscriber(0, 0, kEventActive, &log);
    universe.removeIntersectSubscriber(0, 0, kEventDisjoint, &log);
}

/// Notes where the parts are whose touch it is told of.
struct OrderLog : HyIntersectSubscriber {
    std::vector<HyReal> places;
    void notifyDisjoint(eIntersectEventType, HyIntersectResult*) override {}
    void notifyIntersect(eIntersectEventType, HyIntersectResult* result,
                         HyDynamicsResponseInput*) override {
        HyPart *first = nullptr, *second = nullptr;
        result->getEntityPair(first, second);
        places.push_back(first->getPosition()[0] + second->getPosition()[0]);
    }
};

// Events come in the order of the pairs: which generator serves a pair has no part in it.
TEST_F(FallingBoxes, ShapesDoNotChangeTheOrderOfEvents) {
    constexpr int kParts = 100; // of several units of work
    OrderLog logs[2];
    for (OrderLog& log : logs) {
        std::vector<HyPart*> row;
        for (int i = 0; i < kParts; ++i) {
            auto* shape = &log == &logs[1] && i % 3 != 0
                              ? static_cast<HyGeometry*>(new HySphere(0.5))
                              : new HyBox(1, 1, 1);
            row.push_back(add(shape, 1, HyVector3(2 * i, 0, 0.5)));
        }
        universe.addIntersectSubscriber(0, 0, kEventFirst, &log);
        step(1);
        universe.removeIntersectSubscriber(0, 0, kEventFirst, &log);
        EXPECT_EQ(log.places.size(), static_cast<std::size_t>(kParts));
        for (HyPart* part : row)
            universe.destroyPart(part);
    }
    EXPECT_EQ(logs[0].places, logs[1].places);
}

/// Removes a part at the first parting that it hears of.
struct Remover : HyIntersectSubscriber {
    HyUniverse* universe = nullptr;
    HyPart* victim = nullptr;
    int partings = 0;
    void notifyDisjoint(eIntersectEventType, HyIntersectResult*) override {
        if (partings++ == 0)
            universe->removePart(victim);
    }
    void notifyIntersect(eIntersectEventType, HyIntersectResult*,
                         HyDynamicsResponseInput*) override {}
};

TEST_F(FallingBoxes, RemovalInsideARemovalEndsAllPairs) {
    std::vector<HyPart*> row;
    for (int i = 0; i < 3; ++i)
        row.push_back(addBox(1, HyVector3(0.999 * i, 0, 0.5)));
    step(1);
    Remover remover;
    remover.universe = &universe;
    remover.victim = row[1];
    universe.addIntersectSubscriber(0, 0, kEventDisjoint, &remover);
    universe.removePart(row[0]);
    EXPECT_EQ(remover.partings,
              4); // each other, both with the ground, and the second with the third
    step(1);
    EXPECT_EQ(remover.partings, 4);
    EXPECT_EQ(contactCount(), 4);
    universe.removeIntersectSubscriber(0, 0, kEventDisjoint, &remover);
    delete row[0];
    delete row[1];
}

// A sensor reports touch, without contacts and without force.
TEST_F(FallingBoxes, SensorLetsThrough) {
    EventLog log;
    auto* sensor = new HyPart;
    sensor->setControl(HyPart::kControlStatic);
    auto* zone = new HyCollisionGeometry(new HyBox(4, 4, 1));
    sensor->addCollisionGeometry(zone);
    sensor->setPosition(HyVector3(0, 0, 3));
    universe.addPart(sensor);
    zone->setResponseID(HyUniverse::kResponseSensor);
    for (const eIntersectEventType event : {kEventFirst, kEventDisjoint})
        universe.addIntersectSubscriber(HyUniverse::kResponseSensor, HyUniverse::kResponsePart,
                                        event, &log);
    HyPart* box = add(new HySphere(0.2), 1, HyVector3(0, 0, 5));
    step(60);
    EXPECT_EQ(log.log, "FD");
    EXPECT_LT(box->getPosition()[2], 2);
    universe.removePart(sensor);
    delete sensor;
}

// Rules switch pairs at the next step; of two that apply the one of higher priority decides.
TEST_F(FallingBoxes, RulesDecideWhoCollides) {
    HyPart* box = addBox(1, HyVector3(0, 0, 0.5));
    step(2);
    EXPECT_EQ(contactCount(), 4);
    const unsigned through = universe.addCollisionRule(
        HyCollisionRule(box, ground, false, HyCollisionRule::PriorityScene));
    step(2);
    EXPECT_EQ(contactCount(), 0);
    const unsigned weaker = universe.addCollisionRule(
        HyCollisionRule(box, ground, true, HyCollisionRule::PriorityPart));
    step(2);
    EXPECT_EQ(contactCount(), 0);
    universe.removeCollisionRule(through);
    box->setPosition(HyVector3(0, 0, 0.5));
    box->setLinearVelocity(HyVector3());
    step(3);
    EXPECT_EQ(contactCount(), 4);
    universe.removeCollisionRule(weaker);
}

// Two geometries of one part never touch, and neither do those of parts whose pair is switched off.
TEST_F(FallingBoxes, PairsOfOnePartAndSwitchedPairsRestApart) {
    auto* cross = new HyPart(1);
    cross->addCollisionGeometry(new HyCollisionGeometry(new HyBox(2, 0.4, 0.4), stone));
    cross->addCollisionGeometry(new HyCollisionGeometry(new HyBox(0.4, 2, 0.4), stone));
    cross->setPosition(HyVector3(0, 0, 0.2));
    universe.addPart(cross);
    HyPart* other = addBox(1, HyVector3(0, 0, 0.6));
    ASSERT_TRUE(universe.disablePairIntersect(cross, other));
    step(5);
    EXPECT_EQ(contactCount(), 4 + 4 + 0); // both bars on the ground
    EXPECT_LT(other->getPosition()[2], 0.6);
    for (const HyCollisionGeometry* geometry : universe.getCollisionGeometries())
        EXPECT_TRUE(geometry->invariant());
}

TEST_F(FallingBoxes, MassFollowsTheGeometriesUntilLocked) {
    auto* part = new HyPart;
    part->setControl(HyPart::kControlDynamic);
    auto* left = new HyCollisionGeometry(new HyBox(1, 1, 1), stone);
    left->setRelativeDensity(1000);
    part->addCollisionGeometry(left);
    EXPECT_NEAR(part->getMass(), 1000, 1e-9);
    HyTransform tm;
    tm.t() = HyVector3(2, 0, 0);
    auto* right = new HyCollisionGeometry(new HyBox(1, 1, 1), stone, tm);
    right->setRelativeDensity(3000);
    part->addCollisionGeometry(right);
    EXPECT_NEAR(part->getMass(), 4000, 1e-9);
    EXPECT_NEAR(part->getCOMOffset()[0], 1.5, 1e-12);
    HyReal tensor[3][3];
    part->getInertiaLocal(tensor);
    // Two cubes of side 1 about the common centre: m/6 each, and m d² across.
    EXPECT_NEAR(tensor[0][0], 4000 / 6.0, 1e-6);
    EXPECT_NEAR(tensor[2][2], 4000 / 6.0 + 1000 * 2.25 + 3000 * 0.25, 1e-6);
    part->setMass(4);
    right->setRelativeDensity(1000);
    EXPECT_EQ(part->getMass(), 4);
    EXPECT_NEAR(part->getCOMOffset()[0], 1, 1e-12);
    delete part;
}

// The same bits whatever the number of workers, on a scene in which boxes meet and part.
TEST_F(FallingBoxes, ThreadsChangeNothing) {
    std::vector<std::vector<HyReal>> runs;
    for (const bool threads : {false, true}) {
        universe.setCollisionMultithreaded(threads);
        std::mt19937 random(5);
        std::uniform_real_distribution<HyReal> place(-1.5, 1.5);
        std::vector<HyPart*> boxes;
        for (int i = 0; i < 24; ++i)
            boxes.push_back(add(new HyBox(0.5, 0.5, 0.5), 1,
                                HyVector3(place(random), place(random), 0.5 + 0.4 * i)));
        step(60);
        std::vector<HyReal> end;
        for (const HyPart* box : boxes)
            for (int i = 0; i < 3; ++i)
                end.push_back(box->getPosition()[i]);
        runs.push_back(end);
        for (HyPart* box : boxes)
            universe.destroyPart(box);
        step(1);
    }
    EXPECT_EQ(runs[0], runs[1]);
}

// A restored state goes on to the same bits.
TEST_F(FallingBoxes, StateReplays) {
    std::vector<HyPart*> boxes;
    for (int i = 0; i < 3; ++i)
        boxes.push_back(addBox(1, HyVector3(0.1 * i, 0, 0.6 + 1.1 * i)));
    step(20);
    const std::unique_ptr<HyUniverseState> state(universe.createState());
    const auto places = [&] {
        std::vector<HyReal> numbers;
        for (const HyPart* box : boxes)
            for (int i = 0; i < 3; ++i)
                numbers.push_back(box->getPosition()[i]);
        return numbers;
    };
    state->restore();
    step(40);
    const std::vector<HyReal> first = places();
    state->restore();
    step(40);
    EXPECT_EQ(places(), first);
}

struct Hits : HyIntersect::IntersectSubscriber {
    std::vector<HyCollisionGeometry*> hits;
    bool notify(HyCollisionGeometry* geometry) override {
        hits.push_back(geometry);
        return true;
    }
};

TEST_F(FallingBoxes, QueriesAnswerAtOnce) {
    HyPart* box = addBox(1, HyVector3(0, 0, 0.4));
    HyPart* far = addBox(1, HyVector3(5, 0, 0.5));
    step(1);
    Hits hits;
    EXPECT_TRUE(HyIntersect::intersect(box, &hits, true));
    ASSERT_EQ(hits.hits.size(), 1U);
    EXPECT_EQ(hits.hits[0]->getPart(), ground);
    HyIntersectResult result(std::size_t{16});
    HyIntersect::intersectPair(*box->getCollisionGeometries().begin(),
                               *far->getCollisionGeometries().begin(), &result);
    EXPECT_FALSE(result.isPairTouching());
    far->setPosition(HyVector3(0.9, 0, 0.5));
    HyIntersect::intersectPair(*box->getCollisionGeometries().begin(),
                               *far->getCollisionGeometries().begin(), &result);
    EXPECT_TRUE(result.isPairTouching());
    EXPECT_GT(result.getContactCount(), 0);
    for (auto contact = result.collisionContactBegin(); contact != result.collisionContactEnd();
         ++contact) {
        HyVector3 normal;
        (*contact).getNormal(normal);
        EXPECT_NEAR(std::abs(normal[0]), 1, 1e-6);
    }
}

// A composite of two boxes lies on the ground as one body, and its children are told apart.
TEST_F(FallingBoxes, CompositeRestsOnItsChildren) {
    auto* composite = new HyCompositeCollisionGeometry;
    for (const HyReal x : {-1.0, 1.0}) {
        HyTransform tm;
        tm.t() = HyVector3(x, 0, 0);
        ASSERT_TRUE(composite->addCollisionGeometry(
            new HyCollisionGeometry(new HyBox(0.5, 0.5, 1), stone, tm)));
    }
    EXPECT_FALSE(composite->addCollisionGeometry(composite));
    auto* table = new HyPart(3);
    table->addCollisionGeometry(composite);
    table->setPosition(HyVector3(0, 0, 0.7));
    universe.addPart(table);
    step(120);
    EXPECT_NEAR(table->getPosition()[2], 0.5, 1e-3);
    EXPECT_GE(contactCount(), 4);
}

} // namespace
