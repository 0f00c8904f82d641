// Cost of the broad phase: falling, resting and sleeping boxes. Boxes are taken from an array, so that
// the time of the geometry is not measured.
#include <Col/ColModel.h>
#include <Col/ColSpace.h>
#include <benchmark/benchmark.h>

#include <cmath>
#include <memory>
#include <random>
#include <vector>

namespace {

struct Body : ColModel {
    double x = 0, y = 0, z = 0, speed = 0;
};

void readBox(ColModel* model, lsVec3* min, lsVec3* max, KitReal) {
    const auto& body = static_cast<Body&>(*model);
    *min = lsVec3(body.x - 0.5, body.y - 0.5, body.z - 0.5);
    *max = lsVec3(body.x + 0.5, body.y + 0.5, body.z + 0.5);
}

struct Scene {
    CxSpace* space = ColSpaceAxisSortCreate(ColAllAxes, 64, 64, false);
    std::vector<std::unique_ptr<Body>> bodies;
    std::mt19937 random{1};

    Scene(int count, double gap) {
        ColSpaceSetAABBFn(space, readBox);
        const int side = static_cast<int>(std::cbrt(count) + 0.999);
        for (int i = 0; i < count; ++i) {
            auto body = std::make_unique<Body>();
            body->x = gap * (i % side);
            body->y = gap * (i / side % side);
            body->z = gap * (i / side / side);
            body->serial = static_cast<std::uint64_t>(i) + 1;
            body->mSpaceID = space->Insert(body.get(), false);
            bodies.push_back(std::move(body));
        }
        step();
        step();
    }
    ~Scene() {
        for (auto& body : bodies)
            space->Remove(body->mSpaceID);
        ColSpaceDestroy(space);
    }
    void step() {
        ColSpaceBeginChanges(space);
        ColSpaceUpdateAll(space);
        ColSpaceEndChanges(space);
    }
    void report(benchmark::State& state) const {
        state.counters["pairs"] = static_cast<double>(space->GetPairOverlapList().size() +
                                                      space->GetRestingPairList().size());
    }
};

// All fall side by side, each at a speed of its own, and meet on the way.
void falling(benchmark::State& state) {
    Scene scene(static_cast<int>(state.range(0)), 1.1);
    std::uniform_real_distribution<double> speed(0, 0.1);
    for (auto& body : scene.bodies)
        body->speed = speed(scene.random);
    for (auto _ : state) {
        for (auto& body : scene.bodies) {
            body->z -= body->speed;
            body->x += 0.3 * body->speed - 0.015;
        }
        scene.step();
    }
    scene.report(state);
}

// A stack at rest: every box touches its neighbours and trembles by 1e-7 m.
void resting(benchmark::State& state) {
    Scene scene(static_cast<int>(state.range(0)), 0.999);
    std::uniform_real_distribution<double> jitter(-1e-7, 1e-7);
    for (auto _ : state) {
        for (auto& body : scene.bodies)
            body->x += jitter(scene.random);
        scene.step();
    }
    scene.report(state);
}

void sleeping(benchmark::State& state) {
    Scene scene(static_cast<int>(state.range(0)), 0.999);
    for (auto& body : scene.bodies)
        scene.space->SetDynamic(body->mSpaceID, false);
    scene.step();
    for (auto _ : state)
        scene.step();
    scene.report(state);
}

BENCHMARK(falling)->Arg(1000)->Arg(5000)->Unit(benchmark::kMillisecond);
BENCHMARK(resting)->Arg(1000)->Arg(4000)->Unit(benchmark::kMillisecond);
BENCHMARK(sleeping)->Arg(4000)->Arg(50000)->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
