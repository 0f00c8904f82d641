#include "EngineFixture.h"

#include <algorithm>
#include <cmath>
#include <numbers>

using namespace Hy;

namespace {

class ContinuousCollisionTest : public EngineFixture {
protected:
    HyPart& addFast(HyReal mass, HyGeometry* shape, const HyVector3& position,
                    const HyVector3& velocity) {
        HyPart& part = addPart(mass);
        part.addCollisionGeometry(new HyCollisionGeometry(shape));
        part.setPosition(position);
        part.setLinearVelocity(velocity);
        part.setFastMoving(true);
        return part;
    }
    HyPart& addFixed(HyCollisionGeometry* geometry, const HyVector3& position) {
        HyPart& part = addPart(0);
        part.setControl(HyPart::kControlStatic);
        part.addCollisionGeometry(geometry);
        part.setPosition(position);
        return part;
    }
    /// Two thin walls of a composite, 20 cm apart, the first at x = 0.
    static HyCollisionGeometry* makeWalls() {
        auto* walls = new HyCompositeCollisionGeometry;
        for (const HyReal x : {0.0, 0.2}) {
            auto* wall = new HyCollisionGeometry(new HyBox(0.01, 2, 2));
            walls->addCollisionGeometry(wall);
            wall->setTransformRelative(HyTransform(HyVector3(x, 0, 0)));
        }
        return walls;
    }
};

constexpr HyReal kSpeed = 500; ///< m/s: 8 m a step

// With continuous detection nothing comes through, at any place of the wall within the step.
TEST_F(ContinuousCollisionTest, BulletsComeThroughNoWall) {
    struct Case {
        const char* name;
        HyGeometry* (*shape)();
        bool composite, continuous;
    };
    const auto ball = []() -> HyGeometry* { return new HySphere(0.005); };
    const auto plate = []() -> HyGeometry* { return new HyBox(0.01, 0.1, 0.1); };
    const Case cases[] = {
        {"ball", ball, false, true},           {"plate", plate, false, true},
        {"ball, composite", ball, true, true}, {"plate, composite", plate, true, true},
        {"ball, off", ball, false, false},
    };
    for (const Case& c : cases) {
        int through = 0;
        for (int i = 0; i < 8; ++i) {
            start(1);
            universe->setGravity(HyVector3(0, 0, 0));
            frame->setContinuousCollisionDetection(c.continuous);
            addFixed(c.composite ? makeWalls() : new HyCollisionGeometry(new HyBox(0.01, 2, 2)),
                     HyVector3());
            HyPart& bullet = addFast(0.01, c.shape(), {-3.3 - 1.1 * i, 0.2, 0.1}, {kSpeed, 0, 0});
            bullet.setFastMoving(c.continuous);
            HyReal farthest = -100;
            for (int k = 0; k < 6; ++k) {
                frame->step();
                farthest = std::max(farthest, bullet.getPosition()[0]);
            }
            through += farthest > 0;
            EXPECT_TRUE(std::isfinite(farthest));
        }
        EXPECT_EQ(through > 0, !c.continuous) << c.name;
    }
}

// The safe time is that of the impact, and the parts of the cut step add up to the whole of it.
TEST_F(ContinuousCollisionTest, StepIsCutAtTheImpactAndFinished) {
    universe->setGravity(HyVector3(0, 0, 0));
    frame->setContinuousCollisionDetection(true);
    addFixed(new HyCollisionGeometry(new HyBox(0.1, 2, 2)), {1.05 + 0.05, 0, 0});
    HyPart& ball = addFast(1, new HySphere(0.05), {0, 0, 0}, {100, 0, 0});
    HyPart& other = addFast(1, new HySphere(0.05), {0, 5, 0}, {100, 0, 0});
    universe->detectCollisions(kStep);
    EXPECT_NEAR(universe->getCollisionSafeTime(), 0.01, 0.01 * 0.05 / 100 + 1e-4);
    frame->step();
    EXPECT_NEAR(other.getPosition()[0], 100 * kStep, 1e-9) << "a whole step for the rest";
    EXPECT_EQ(frame->getTimeStep(), kStep);
    EXPECT_LT(ball.getPosition()[0], 1.01);
    EXPECT_LE(ball.getLinearVelocity()[0], 1e-6);
}

// A rod that makes half a turn in a step meets the pole in its way.
TEST_F(ContinuousCollisionTest, TurningRodMeetsThePoleInItsWay) {
    for (const bool continuous : {true, false}) {
        start(1);
        universe->setGravity(HyVector3(0, 0, 0));
        frame->setContinuousCollisionDetection(continuous);
        addFixed(new HyCollisionGeometry(new HyCylinder(0.05, 1)), {0, 0.8, 0});
        HyPart& rod = addFast(1, new HyBox(2, 0.05, 0.05), {0, 0, 0}, {0, 0, 0});
        rod.setFastMoving(continuous);
        const HyReal spin = std::numbers::pi / kStep;
        rod.setAngularVelocity({0, 0, spin});
        frame->step();
        EXPECT_EQ(rod.getAngularVelocity()[2] < 0.5 * spin, continuous);
    }
}

// Threads find the same impacts to the same bits.
TEST_F(ContinuousCollisionTest, ThreadsChangeNothing) {
    std::vector<HyReal> runs[2];
    for (const int threads : {1, 3}) {
        start(threads);
        universe->setCollisionMultithreaded(threads > 1);
        frame->setContinuousCollisionDetection(true);
        addFixed(makeWalls(), HyVector3());
        std::vector<HyPart*> bullets;
        for (int i = 0; i < 24; ++i)
            bullets.push_back(&addFast(0.01, new HySphere(0.02),
                                       {-2.0 - 0.37 * i, -0.9 + 0.08 * i, 0.4 - 0.03 * i},
                                       {300.0 + 7 * i, 0, 0}));
        step(20);
        for (const HyPart* bullet : bullets) {
            EXPECT_LT(bullet->getPosition()[0], 0);
            for (int k = 0; k < 3; ++k)
                runs[threads > 1].push_back(bullet->getPosition()[k]);
        }
    }
    EXPECT_EQ(runs[0], runs[1]);
}

} // namespace
