// The pairs of bench_pair_contacts in two other engines, by their own pairwise queries: ODE's dCollide()
// in doubles, and Bullet's algorithm of the pair, which keeps its contacts between calls, in the
// precision of the package. Both are asked for at most 8 contacts.
#include "PairPoses.h"

#include <benchmark/benchmark.h>
#include <btBulletCollisionCommon.h>
#include <memory>
#include <ode/ode.h>
#include <string>

namespace {

enum class Kind { kSphere, kBox, kCapsule, kPlane };

struct Shape {
    const char* name;
    Kind kind;
    KitReal lower; ///< height of the origin over the lowest point, m
};
constexpr Shape kSphere{"sphere", Kind::kSphere, 0.5}, kBox{"box", Kind::kBox, 0.5},
    kCapsule{"capsule", Kind::kCapsule, 0.6}, kPlane{"plane", Kind::kPlane, 0};

std::array<lsTransform, kPoses> posesOf(const Shape& below, const Shape& above,
                                        const PairGap& gap) {
    return PairPoses(below.lower + above.lower + gap.separation,
                     below.kind == Kind::kSphere || below.kind == Kind::kCapsule);
}

dGeomID createOdeGeom(Kind kind) {
    switch (kind) {
    case Kind::kSphere:
        return dCreateSphere(nullptr, 0.5);
    case Kind::kBox:
        return dCreateBox(nullptr, 1, 1, 1);
    case Kind::kCapsule:
        return dCreateCapsule(nullptr, 0.3, 0.6);
    case Kind::kPlane:
        break;
    }
    return dCreatePlane(nullptr, 0, 0, 1, 0);
}

void runOde(benchmark::State& state, const Shape& below, const Shape& above, const PairGap& gap) {
    const auto poses = posesOf(below, above, gap);
    const dGeomID lower = createOdeGeom(below.kind), upper = createOdeGeom(above.kind);
    dContactGeom contacts[8];
    std::size_t pose = 0;
    int count = 0;
    for (auto unused : state) {
        (void)unused;
        const lsTransform& tm = poses[pose++ % kPoses];
        dMatrix3 rotation = {};
        for (int i = 0; i < 3; ++i)
            for (int j = 0; j < 3; ++j)
                rotation[4 * i + j] = static_cast<dReal>(tm.row[j][i]);
        dGeomSetRotation(upper, rotation);
        dGeomSetPosition(upper, tm.t()[0], tm.t()[1], tm.t()[2]);
        count = dCollide(lower, upper, 8, contacts, sizeof(dContactGeom));
        benchmark::DoNotOptimize(count);
    }
    state.counters["contacts"] = count;
    dGeomDestroy(lower);
    dGeomDestroy(upper);
}

std::unique_ptr<btCollisionShape> createBulletShape(Kind kind) {
    constexpr btScalar kHalf(0.5);
    switch (kind) {
    case Kind::kSphere:
        return std::make_unique<btSphereShape>(kHalf);
    case Kind::kBox:
        return std::make_unique<btBoxShape>(btVector3(kHalf, kHalf, kHalf));
    case Kind::kCapsule:
        return std::make_unique<btCapsuleShapeZ>(btScalar(0.3), btScalar(0.6));
    case Kind::kPlane:
        break;
    }
    return std::make_unique<btStaticPlaneShape>(btVector3(0, 0, 1), btScalar(0));
}

void runBullet(benchmark::State& state, const Shape& below, const Shape& above,
               const PairGap& gap) {
    const auto poses = posesOf(below, above, gap);
    const auto lower = createBulletShape(below.kind), upper = createBulletShape(above.kind);
    btDefaultCollisionConfiguration configuration;
    btCollisionDispatcher dispatcher(&configuration);
    btCollisionObject objects[2];
    objects[0].setCollisionShape(lower.get());
    objects[1].setCollisionShape(upper.get());
    objects[0].setWorldTransform(btTransform::getIdentity());
    const btCollisionObjectWrapper first(nullptr, lower.get(), &objects[0],
                                         objects[0].getWorldTransform(), -1, -1);
    const btCollisionObjectWrapper second(nullptr, upper.get(), &objects[1],
                                          objects[1].getWorldTransform(), -1, -1);
    btPersistentManifold* manifold = dispatcher.getNewManifold(&objects[0], &objects[1]);
    btCollisionAlgorithm* algorithm =
        dispatcher.findAlgorithm(&first, &second, manifold, BT_CONTACT_POINT_ALGORITHMS);
    const btDispatcherInfo info;
    std::size_t pose = 0;
    int count = 0;
    for (auto unused : state) {
        (void)unused;
        const lsTransform& tm = poses[pose++ % kPoses];
        btTransform transform;
        for (int i = 0; i < 3; ++i)
            transform.getBasis()[i].setValue(static_cast<btScalar>(tm.row[0][i]),
                                             static_cast<btScalar>(tm.row[1][i]),
                                             static_cast<btScalar>(tm.row[2][i]));
        transform.setOrigin(btVector3(static_cast<btScalar>(tm.t()[0]),
                                      static_cast<btScalar>(tm.t()[1]),
                                      static_cast<btScalar>(tm.t()[2])));
        objects[1].setWorldTransform(transform);
        btManifoldResult result(&first, &second);
        algorithm->processCollision(&first, &second, info, &result);
        // Some algorithms keep a manifold of their own.
        const btPersistentManifold* filled = result.getPersistentManifold();
        count = filled ? filled->getNumContacts() : 0;
        benchmark::DoNotOptimize(count);
    }
    state.counters["contacts"] = count;
    algorithm->~btCollisionAlgorithm();
    dispatcher.freeCollisionAlgorithm(algorithm);
    dispatcher.releaseManifold(manifold);
}

} // namespace

int main(int argc, char** argv) {
    dInitODE();
    const Shape* const pairs[][2] = {
        {&kSphere, &kSphere}, {&kPlane, &kSphere},    {&kBox, &kSphere},
        {&kBox, &kBox},       {&kPlane, &kBox},       {&kBox, &kCapsule},
        {&kPlane, &kCapsule}, {&kCapsule, &kCapsule}, {&kCapsule, &kSphere},
    };
    for (const auto& pair : pairs)
        for (const PairGap& gap : kPairGaps) {
            const std::string name =
                std::string(pair[0]->name) + "_" + pair[1]->name + "/" + gap.name;
            benchmark::RegisterBenchmark(("ode/" + name).c_str(), [=](benchmark::State& state) {
                runOde(state, *pair[0], *pair[1], gap);
            });
            benchmark::RegisterBenchmark(("bullet/" + name).c_str(), [=](benchmark::State& state) {
                runBullet(state, *pair[0], *pair[1], gap);
            });
        }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    dCloseODE();
}
