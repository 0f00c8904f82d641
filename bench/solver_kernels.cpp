// Kernels of the direct solver against the peak of this machine's multiply-adds, measured in the same
// run: the counter "of_peak" is their part of it.
#include "../DynKiro/src/dense_kernels.h"

#include <Kit/KitAlignedVector.h>
#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <iterator>
#include <string>

#if defined(__x86_64__)
#include <immintrin.h>
#endif

namespace {

using Clock = std::chrono::steady_clock;

constexpr int kPeakLoops = 20000, kPeakChains = 12; // more than latency times units

#if defined(__x86_64__)
__attribute__((target("avx512f"))) double multiplyAddAvx512() {
    __m512d chains[kPeakChains], factor = _mm512_set1_pd(0.999999);
    for (__m512d& chain : chains)
        chain = factor;
    for (int i = 0; i < kPeakLoops; ++i)
        for (__m512d& chain : chains)
            chain = _mm512_fmadd_pd(chain, factor, factor);
    for (__m512d& chain : chains)
        benchmark::DoNotOptimize(chain);
    return 2.0 * 8 * kPeakChains * kPeakLoops;
}

__attribute__((target("avx2,fma"))) double multiplyAddAvx2() {
    __m256d chains[kPeakChains], factor = _mm256_set1_pd(0.999999);
    for (__m256d& chain : chains)
        chain = factor;
    for (int i = 0; i < kPeakLoops; ++i)
        for (__m256d& chain : chains)
            chain = _mm256_fmadd_pd(chain, factor, factor);
    for (__m256d& chain : chains)
        benchmark::DoNotOptimize(chain);
    return 2.0 * 4 * kPeakChains * kPeakLoops;
}
#endif

/// Works in the widest vectors that the processor has, and answers the operations done.
double multiplyAddInRegisters() {
#if defined(__x86_64__)
    if (__builtin_cpu_supports("avx512f"))
        return multiplyAddAvx512();
    if (__builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma"))
        return multiplyAddAvx2();
#endif
    double chains[2 * kPeakChains];
    std::fill(std::begin(chains), std::end(chains), 0.999999);
    for (int i = 0; i < kPeakLoops; ++i)
        for (double& chain : chains)
            chain = chain * 0.999999 + 0.999999;
    benchmark::DoNotOptimize(chains);
    return 2.0 * 2 * kPeakChains * kPeakLoops;
}

double seconds(Clock::time_point begin) {
    return std::chrono::duration<double>(Clock::now() - begin).count();
}

/// Flops per second of independent chains of multiply-adds in registers. The largest of many short
/// runs, as the machine may be busy.
double measurePeak() {
    constexpr int kRuns = 50;
    double best = 0;
    for (int run = 0; run < kRuns; ++run) {
        const auto begin = Clock::now();
        const double flops = multiplyAddInRegisters();
        best = std::max(best, flops / seconds(begin));
    }
    return best;
}

const double kPeak = measurePeak();

void report(benchmark::State& state, double flops) {
    state.counters["GFlop/s"] =
        benchmark::Counter(flops * 1e-9, benchmark::Counter::kIsIterationInvariantRate);
    state.counters["of_peak"] =
        benchmark::Counter(flops / kPeak, benchmark::Counter::kIsIterationInvariantRate);
}

/// A panel whose triangle dominates, so that factors stay of size one.
struct Front {
    explicit Front(int rows, int columns)
        : n(rows), pivots(columns), ld(DynsPaddedRows(rows)),
          matrix(static_cast<std::size_t>(ld) * static_cast<std::size_t>(columns) + kDynsPanelRows),
          inverse(static_cast<std::size_t>(columns)), y(static_cast<std::size_t>(8 * ld)) {
        for (int j = 0; j < pivots; ++j)
            for (int i = j; i < n; ++i)
                at(i, j) = i == j ? 2.0 + n : std::sin(i + 7.0 * j);
        std::fill(y.begin(), y.begin() + n, 1.0);
    }
    KitReal& at(int i, int j) {
        return matrix[static_cast<std::size_t>(j) * static_cast<std::size_t>(ld) +
                      static_cast<std::size_t>(i)];
    }

    int n, pivots, ld;
    KitAlignedVector<KitReal> matrix, inverse, y;
};

void factorFront(benchmark::State& state) {
    const int n = static_cast<int>(state.range(0)), pivots = n / 2;
    Front front(n, pivots);
    const KitAlignedVector<KitReal> original = front.matrix;
    for (auto _ : state) {
        front.matrix = original;
        DynsFactorColumns(front.matrix.data(), front.ld, n, 0, pivots, front.inverse.data());
    }
    const double k = pivots, rest = n - pivots;
    report(state, k * k * k / 3 + k * k * rest);
}

void updateFront(benchmark::State& state) {
    const int n = static_cast<int>(state.range(0));
    Front front(n, n / 2);
    KitAlignedVector<KitReal> update(
        static_cast<std::size_t>(front.ld) * static_cast<std::size_t>(n) + kDynsPanelRows);
    const KitReal* L = front.matrix.data();
    for (auto _ : state)
        DynsSubtractLower(update.data(), front.ld, n, 0, n, L, L, front.ld, front.pivots);
    report(state, 1.0 * n * n * front.pivots);
}

void solveOne(benchmark::State& state) {
    const int n = static_cast<int>(state.range(0));
    Front front(n, n / 2);
    DynsFactorColumns(front.matrix.data(), front.ld, n, 0, front.pivots, front.inverse.data());
    const DynsKernelVariant& kernels = *DynsKernelVariants().front();
    const auto ld = static_cast<std::size_t>(front.ld);
    for (auto _ : state) {
        kernels.forward(front.matrix.data(), ld, n, front.pivots, front.inverse.data(),
                        front.y.data());
        kernels.backward(front.matrix.data(), ld, n, front.pivots, front.inverse.data(),
                         front.y.data());
    }
    report(state, 4.0 * front.pivots * (n - 0.5 * front.pivots));
}

void solveEight(benchmark::State& state) {
    const int n = static_cast<int>(state.range(0));
    Front front(n, n / 2);
    DynsFactorColumns(front.matrix.data(), front.ld, n, 0, front.pivots, front.inverse.data());
    for (auto _ : state) {
        DynsForwardMany(front.matrix.data(), front.ld, n, front.pivots, front.inverse.data(),
                        front.y.data());
        DynsBackwardMany(front.matrix.data(), front.ld, n, front.pivots, front.inverse.data(),
                         front.y.data());
    }
    report(state, kDynsManySides * 4.0 * front.pivots * (n - 0.5 * front.pivots));
}

/// Each variant's tile, against the peak of the fastest.
void tile(benchmark::State& state, const DynsKernelVariant& variant) {
    const int k = static_cast<int>(state.range(0));
    KitAlignedVector<KitReal> A(static_cast<std::size_t>(8 * k), 1e-3);
    KitAlignedVector<KitReal> B(static_cast<std::size_t>(4 * k), 1e-3), C(32, 0);
    for (auto _ : state) {
        variant.tile(C.data(), 8, A.data(), 8, B.data(), 4, k, 4);
        benchmark::DoNotOptimize(C.data());
    }
    report(state, 2.0 * 32 * k);
}

BENCHMARK(factorFront)->Arg(10)->Arg(30)->Arg(100)->Arg(300)->Arg(1000);
BENCHMARK(updateFront)->Arg(10)->Arg(30)->Arg(100)->Arg(300)->Arg(1000);
BENCHMARK(solveOne)->Arg(10)->Arg(30)->Arg(100)->Arg(300)->Arg(1000);
BENCHMARK(solveEight)->Arg(10)->Arg(30)->Arg(100)->Arg(300)->Arg(1000);

} // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    std::printf("Peak of one thread, %s: %.1f GFlop/s\n", DynsKernelVariants().front()->name,
                kPeak * 1e-9);
    for (const DynsKernelVariant* variant : DynsKernelVariants())
        benchmark::RegisterBenchmark((std::string("tile_") + variant->name).c_str(), tile, *variant)
            ->Arg(5)
            ->Arg(32)
            ->Arg(128);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
