// Step time of free parts, awake and asleep, on one and two threads: time a part, and ratios.
#include <Hy/Hy.h>
#include <benchmark/benchmark.h>

namespace {

void stepFreeParts(benchmark::State& state, bool awake) {
    const int count = static_cast<int>(state.range(0));
    Hy::HyFrame* frame = Hy::HyFrame::instance();
    frame->setMaxThreadCount(static_cast<int>(state.range(1)));
    Hy::HyUniverse& universe = frame->getUniverse();
    universe.setDynamicsMultithreaded(state.range(1) > 1);
    universe.setGravity(0, 0, 0);
    universe.setAutoSleep(!awake);
    for (int i = 0; i < count; ++i) {
        auto* part = new Hy::HyPart(1);
        universe.addPart(part);
        part->setPosition(2.0 * i, 0, 0);
        if (awake) {
            part->setLinearVelocity(1, 0, 0);
            part->setAngularVelocity(1, 2, 3);
        }
    }
    for (int i = 0; i < 30; ++i) // to sleep, or to settled buffers
        frame->step();
    for (auto _ : state)
        frame->step();
    state.counters["ns_per_part"] = benchmark::Counter(
        static_cast<double>(count) * static_cast<double>(state.iterations()) * 1e-9,
        benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
    Hy::HyFrame::release();
}

} // namespace

BENCHMARK_CAPTURE(stepFreeParts, awake, true)
    ->ArgsProduct({{1000, 10000, 100000}, {1, 2}})
    ->ArgNames({"parts", "threads"})
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(stepFreeParts, asleep, false)
    ->ArgsProduct({{1000, 10000, 100000}, {1, 2}})
    ->ArgNames({"parts", "threads"})
    ->Unit(benchmark::kMillisecond);

BENCHMARK_MAIN();
