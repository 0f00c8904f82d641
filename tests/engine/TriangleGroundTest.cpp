#include "EngineFixture.h"

#include <Col/ColTriangleList.h>
#include <Hy/HyCapsule.h>
#include <Hy/HyCylinder.h>
#include <Hy/HyTriListMemProvider.h>

#include <atomic>
#include <cmath>

namespace {

using Hy::HyReal;
using Hy::HyVector3;

constexpr int kCells = 40;      ///< of the ground, each way
constexpr HyReal kCell = 0.45;  ///< m
constexpr int kMaxThreads = 64; ///< that the test counts

/// Ground of triangles that are made where they are asked for.
class Terrain : public Hy::HyGeometry {
public:
    explicit Terrain(HyReal roughness)
        : HyGeometry(ColTriangleListCreate(0)), mRoughness(roughness) {
        auto* list = record<ColTriangleList>();
        const HyReal half = 0.5 * kCells * kCell;
        ColTriangleListSetBounds(list, lsVec3(-half, -half, -roughness),
                                 lsVec3(half, half, roughness));
        list->userData = this;
        list->triangleListAABBGenerator = fill;
    }
    [[nodiscard]] HyGeometry* clone() const override { return new Terrain(mRoughness); }

    std::atomic<bool> wasUsedBy[kMaxThreads] = {};

private:
    [[nodiscard]] lsVec3 corner(int i, int j) const {
        const HyReal x = (i - kCells / 2) * kCell, y = (j - kCells / 2) * kCell;
        return {x, y, mRoughness * std::sin(3 * x) * std::cos(2 * y)};
    }
    static int cellOf(KitReal x) { return static_cast<int>(std::floor(x / kCell)) + kCells / 2; }

    static void fill(ColModelPair*, const lsVec3& low, const lsVec3& high, ColTriangleList* list) {
        auto& self = *static_cast<Terrain*>(list->userData);
        if (list->cacheIndex >= 0 && list->cacheIndex < kMaxThreads)
            self.wasUsedBy[list->cacheIndex] = true;
        for (int i = std::max(cellOf(low[0]), 0); i <= std::min(cellOf(high[0]), kCells - 1); ++i)
            for (int j = std::max(cellOf(low[1]), 0); j <= std::min(cellOf(high[1]), kCells - 1);
                 ++j) {
                const lsVec3 a = self.corner(i, j), b = self.corner(i + 1, j);
                const lsVec3 c = self.corner(i + 1, j + 1), d = self.corner(i, j + 1);
                ColTriangleListAddTriangle(list, a, b, c, 2 * (i * kCells + j));
                ColTriangleListAddTriangle(list, a, c, d, 2 * (i * kCells + j) + 1);
            }
        ColTriangleListBuild(list); // the neighbours in the box; its border has none
    }

    HyReal mRoughness;
};

class TriangleGroundTest : public EngineFixture {
protected:
    Terrain& addGround(HyReal roughness) {
        auto* ground = new Hy::HyPart;
        auto* terrain = new Terrain(roughness);
        ground->setControl(Hy::HyPart::kControlStatic);
        ground->addCollisionGeometry(new Hy::HyCollisionGeometry(terrain, material));
        universe->addPart(ground);
        return *terrain;
    }
    Hy::HyPart& addBody(Hy::HyGeometry* shape, const HyVector3& position) {
        Hy::HyPart& part = addPart(1);
        part.addCollisionGeometry(new Hy::HyCollisionGeometry(shape, material));
        part.setPosition(position);
        return part;
    }
    void makeMaterial(HyReal friction) {
        material = universe->getMaterialTable()->registerMaterial("ground");
        material->setFrictionModel(Hy::HyMaterial::kFrictionAxisLinear,
                                   Hy::HyMaterial::kFrictionModelScaledBox);
        material->setFrictionCoefficient(Hy::HyMaterial::kFrictionAxisLinear, friction);
    }
    Hy::HyMaterial* material = nullptr;
};

} // namespace

// Without friction bodies glide over a plane of triangles for metres as over ice: no seam lifts, slows
// or turns them.
TEST_F(TriangleGroundTest, BodiesGlideOverSeams) {
    makeMaterial(0);
    addGround(0);
    universe->setAutoSleep(false);
    struct Body {
        Hy::HyGeometry* shape;
        HyReal height;
    };
    const Body bodies[] = {{new Hy::HyBox(0.6, 0.4, 0.4), 0.2},
                           {new Hy::HyCylinder(0.3, 0.5), 0.25},
                           {new Hy::HySphere(0.3), 0.3}};
    std::vector<Hy::HyPart*> parts;
    HyReal y = -3;
    for (const Body& body : bodies) {
        parts.push_back(&addBody(body.shape, HyVector3(-4, y += 1.3, body.height)));
        parts.back()->setLinearVelocity(HyVector3(2, 0.37, 0));
    }
    step(180); // 6 m
    for (std::size_t i = 0; i < parts.size(); ++i) {
        SCOPED_TRACE(i);
        const HyVector3 v = parts[i]->getLinearVelocity(), w = parts[i]->getAngularVelocity();
        EXPECT_NEAR(v[0], 2, 1e-6);
        EXPECT_NEAR(v[1], 0.37, 1e-6);
        EXPECT_LT(w.norm(), 1e-6);
        EXPECT_NEAR(parts[i]->getPosition()[2], bodies[i].height, 2e-3);
    }
}

// A heap on rough ground comes to the same bits whatever the number of workers, each with a list of its
// own, and none falls through.
TEST_F(TriangleGroundTest, WorkersDoNotChangeTheResult) {
    const auto run = [this](int threads) {
        start(threads);
        universe->setCollisionIntersectMultithreaded(threads > 1);
        makeMaterial(0.5);
        Terrain& terrain = addGround(0.15);
        std::vector<Hy::HyPart*> parts;
        for (int i = 0; i < 60; ++i) {
            Hy::HyGeometry* shape = nullptr;
            if (i % 4 == 0)
                shape = new Hy::HyBox(0.6, 0.4, 0.5);
            else if (i % 4 == 1)
                shape = new Hy::HySphere(0.25);
            else if (i % 4 == 2)
                shape = new Hy::HyCylinder(0.25, 0.5);
            else
                shape = new Hy::HyCapsule(0.2, 0.5);
            parts.push_back(&addBody(
                shape, HyVector3(0.8 * (i % 8) - 2.8, 0.9 * (i / 8) - 3, 0.8 + 0.1 * (i % 3))));
        }
        step(150);
        std::vector<HyReal> state;
        for (const Hy::HyPart* part : parts) {
            const HyVector3 p = part->getPosition();
            EXPECT_GT(p[2], -0.05) << state.size() / 3;
            state.insert(state.end(), {p[0], p[1], p[2]});
        }
        for (int i = threads > 1 ? threads + 1 : 0; i < kMaxThreads; ++i)
            EXPECT_FALSE(terrain.wasUsedBy[i]) << i;
        return state;
    };
    const std::vector<HyReal> alone = run(1);
    EXPECT_EQ(alone, run(4));
    EXPECT_EQ(alone, run(2));
}

TEST(HyTriListMemProviderTest, ClientsHaveListsOfTheirOwn) {
    Hy::HyTriListMemProvider& provider = *Hy::HyTriListMemProvider::instance();
    const int first = 0, second = 0;
    provider.registerClient(&first, 2, 10);
    provider.registerClient(&second, 1, 10);
    ColTriangleList* kept = provider.getTriList(&first, 1);
    EXPECT_EQ(kept->triangleMaxCount, 10);
    provider.registerClient(&first, 5, 99); // changes nothing
    EXPECT_EQ(provider.getTriListCount(&first), 2);
    EXPECT_EQ(provider.getTriList(&first, 1), kept);
    EXPECT_NE(provider.getTriList(&first, 0), kept);
    EXPECT_NE(provider.getTriList(&second, 0), provider.getTriList(&first, 0));
    EXPECT_GE(provider.getDefaultTriList()->triangleMaxCount, 128);
    provider.unregisterClient(&first);
    EXPECT_EQ(provider.getTriListCount(&first), 0);
    EXPECT_EXIT((void)provider.getTriList(&first, 0), testing::ExitedWithCode(1),
                "HyTriListMemProvider::getTriList client not registered.\n");
    EXPECT_EXIT((void)provider.getTriList(&second, 1), testing::ExitedWithCode(1), "getTriList");
    provider.unregisterClient(&second);
}
