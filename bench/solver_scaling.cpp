// Cost of the direct solver against the size of a mechanism: chains, trees, nets, piles and mass
// ratios. The last lines give the exponent p of time ~ rows^p for each family, fitted in this run.
#include <Dyns/Dyns.h>
#include <Kit/KitMemory.h>
#include <Kit/KitMemoryPool.h>
#include <Kit/KitThreadPool.h>
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdio>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace {

struct Point {
    double x, y, z;
};

/// Bodies and rows of one partition, as the solver takes them.
class Mechanism {
public:
    Mechanism(int bodyCount, int constraints, int rowCount)
        : c(DynsConstraintsCreate()), mBodies(static_cast<std::size_t>(bodyCount)),
          mPlaces(mBodies.size()) {
        DynsConstraintsResize(c, constraints, bodyCount, rowCount, &KitMemoryAPI);
        DynsConstraintsReset(c, rowCount, constraints, bodyCount);
        c->partition = 0;
    }
    ~Mechanism() { DynsConstraintsDestroy(c, &KitMemoryAPI); }
    Mechanism(const Mechanism&) = delete;
    Mechanism& operator=(const Mechanism&) = delete;

    void setBody(int i, const Point& place, double mass, double inertia) {
        DynsBody& body = mBodies[static_cast<std::size_t>(i)];
        body.localIndex = i;
        body.localPartition = 0;
        body.inverse_massmatrix[0][3] = 1 / mass;
        for (int k = 0; k < 3; ++k)
            body.inverse_massmatrix[k][k] = 1 / inertia;
        mPlaces[static_cast<std::size_t>(i)] = place;
    }

    /// Rows of body a against body b, or the world for b < 0, that hold a point along the axes; with
    /// five rows they hold the x and y axes of the bodies too.
    void join(int a, int b, const Point& point, int rows) {
        DynsGRow G[2][kDynsMaxConstraintRows] = {};
        DynsInputRowFactors factors{};
        DynsBody* bodies[2] = {};
        for (int slot = 0; slot < (b < 0 ? 1 : 2); ++slot) {
            const int body = slot == 0 ? a : b;
            const double sign = slot == 0 ? 1 : -1;
            const Point& place = mPlaces[static_cast<std::size_t>(body)];
            const Point p{point.x - place.x, point.y - place.y, point.z - place.z};
            const double arms[3][3] = {{0, p.z, -p.y}, {-p.z, 0, p.x}, {p.y, -p.x, 0}};
            for (int r = 0; r < 3; ++r) {
                G[slot][r][r] = sign;
                for (int k = 0; k < 3; ++k)
                    G[slot][r][3 + k] = sign * arms[r][k];
            }
            for (int r = 3; r < rows; ++r)
                G[slot][r][r] = sign;
            factors.G[slot] = G[slot];
            bodies[slot] = &mBodies[static_cast<std::size_t>(body)];
        }
        const int first = c->n_constraint_rows;
        DynsConstraintsPushConstraint(c, &factors, bodies, b < 0 ? 1 : 2, rows, 0, nullptr);
        for (int i = first; i < first + rows; ++i) {
            c->xepsilon[i] = 1e-6;
            c->rhs[i] = i % 3 == 0 ? -9.8 : 0.1 * (i % 7);
            c->lower[i] = -kKitInfinity;
            c->upper[i] = kKitInfinity;
            c->reference_normal[i] = kDynsNoReferenceNormal;
        }
    }

    /// Makes the last three rows a contact: a normal along z behind which friction follows.
    void makeContact() {
        const int first = c->n_constraint_rows - 3;
        std::swap_ranges(c->G[c->n_g_blocks - 1][0], c->G[c->n_g_blocks - 1][0] + 6,
                         c->G[c->n_g_blocks - 1][2]);
        if (c->constraint_n_blocks[c->n_constraints - 1] == 2)
            std::swap_ranges(c->G[c->n_g_blocks - 2][0], c->G[c->n_g_blocks - 2][0] + 6,
                             c->G[c->n_g_blocks - 2][2]);
        c->lower[first] = 0;
        // All boxes fall alike: only the lowest approach what they stand on.
        const bool onGround = c->constraint_n_blocks[c->n_constraints - 1] == 1;
        c->rhs[first] = (onGround ? 9.8 : 0) + 0.01 * (first % 11);
        for (int k = 0; k < 3; ++k)
            c->xepsilon[first + k] = 1e-3;
        for (int k = 1; k < 3; ++k) {
            c->lower[first + k] = c->upper[first + k] = 0;
            c->rhs[first + k] = 0.2 * ((first + k) % 5 - 2);
            c->reference_normal[first + k] = static_cast<unsigned>(k);
            c->friction_coefficient[first + k] = 0.5;
            c->soil_cohesion_coefficient[first + k] = 0;
        }
        c->use_scaled_box_friction = 1;
    }

    /// Multiplies the rows by the inverse masses, which ends the construction.
    void finish() {
        for (int b = 0; b < c->n_g_blocks; ++b) {
            const auto& inverse = c->g_bodies[b]->inverse_massmatrix;
            for (int r = 0; r < c->g_block_size[b]; ++r)
                for (int k = 0; k < 6; ++k)
                    c->GM[b][r][k] =
                        (k < 3 ? inverse[0][3] : inverse[k - 3][k - 3]) * c->G[b][r][k];
        }
    }

    DynsConstraints* c;

private:
    std::vector<DynsBody> mBodies;
    std::vector<Point> mPlaces;
};

std::unique_ptr<Mechanism> makeChain(int links, double lastMass = 1) {
    auto m = std::make_unique<Mechanism>(links, links, 5 * links);
    for (int i = 0; i < links; ++i) {
        const double mass = i == links - 1 ? lastMass : 1;
        m->setBody(i, {0.1 * i + 0.05, 0.01 * (i % 3), 0}, mass, 0.004 * mass);
        m->join(i, i - 1, {0.1 * i, 0, 0}, 5);
    }
    m->finish();
    return m;
}

std::unique_ptr<Mechanism> makeTree(int nodes) {
    auto m = std::make_unique<Mechanism>(nodes, nodes, 5 * nodes);
    for (int i = 0; i < nodes; ++i) {
        m->setBody(i, {0.1 * (i % 13), 0.1 * (i % 7), 0.1 * std::log2(i + 1)}, 1, 0.004);
        m->join(i, i == 0 ? -1 : (i - 1) / 2, {0.1 * (i % 11), 0.05 * (i % 5), 0}, 5);
    }
    m->finish();
    return m;
}

/// A square net of bodies, each tied to its neighbours by three rows.
std::unique_ptr<Mechanism> makeNet(int side) {
    auto m = std::make_unique<Mechanism>(side * side, 2 * side * (side - 1) + 1,
                                         6 * side * (side - 1) + 3);
    for (int y = 0; y < side; ++y)
        for (int x = 0; x < side; ++x)
            m->setBody(x + side * y, {0.1 * x, 0.1 * y, 0.02 * ((x + 2 * y) % 5)}, 1, 0.004);
    m->join(0, -1, {0, 0, 0}, 3);
    for (int y = 0; y < side; ++y)
        for (int x = 0; x < side; ++x) {
            const int i = x + side * y;
            if (x > 0)
                m->join(i, i - 1, {0.1 * x - 0.05, 0.1 * y, 0.01}, 3);
            if (y > 0)
                m->join(i, i - side, {0.1 * x, 0.1 * y - 0.05, 0}, 3);
        }
    m->finish();
    return m;
}

/// A wall of boxes: four contacts below each, two on either box that it stands on.
std::unique_ptr<Mechanism> makeWall(int side) {
    const int boxes = side * side;
    auto m = std::make_unique<Mechanism>(boxes, 4 * boxes, 12 * boxes);
    for (int y = 0; y < side; ++y)
        for (int x = 0; x < side; ++x)
            m->setBody(x + side * y, {x + 0.5 * (y % 2), 0, y + 0.5}, 1 + 0.1 * (x % 3), 0.2);
    for (int y = 0; y < side; ++y)
        for (int x = 0; x < side; ++x)
            for (int k = 0; k < 4; ++k) {
                const int right = std::min(x + k / 2 + y % 2, side) - 1;
                const int below = y == 0 || right < 0 ? -1 : right + side * (y - 1);
                m->join(x + side * y, below,
                        {x + 0.5 * (y % 2) + (k / 2 == 0 ? -0.4 : 0.4), k % 2 == 0 ? -0.4 : 0.4,
                         static_cast<double>(y)},
                        3);
                m->makeContact();
            }
    m->finish();
    return m;
}

double relativeResidual(bvbCholRRT& matrix, const DynsConstraints& c, const KitReal* x) {
    std::vector<KitReal> y(static_cast<std::size_t>(matrix.n) + 4);
    matrix.multiply(x, y.data());
    double error = 0, size = 0;
    for (int i = 0; i < matrix.n; ++i) {
        const double difference = y[static_cast<std::size_t>(i)] - c.rhs[i];
        error += difference * difference;
        size += c.rhs[i] * c.rhs[i];
    }
    return std::sqrt(error / size);
}

enum class Start {
    kAgain,    ///< the graph of the last step, as in steady motion
    kNewGraph, ///< another graph than the last step's
    kFirst,    ///< a solver that has done nothing yet and has no memory
};

/// One step's work: matrix, factor, one solution.
void solveEquations(benchmark::State& state, const Mechanism& m, Start start,
                    KitThreadPool* pool = nullptr) {
    const auto other = makeChain(3);
    std::vector<KitReal> x(static_cast<std::size_t>(m.c->n_constraint_rows) + 4);
    std::unique_ptr<bvbCholRRT> matrix;
    const auto create = [&] {
        matrix = std::make_unique<bvbCholRRT>();
        matrix->thread_pool = pool;
    };
    const auto setUp = [&](DynsConstraints* c) {
        matrix->allocate(c->n_constraint_rows);
        matrix->calcJinvMJT(c);
        matrix->factorize();
    };
    const auto step = [&] {
        setUp(m.c);
        std::copy(m.c->rhs, m.c->rhs + matrix->n, x.begin());
        matrix->solve(x.data(), 1);
    };
    create();
    step();
    for (auto _ : state) {
        if (start != Start::kAgain) {
            state.PauseTiming();
            if (start == Start::kFirst)
                create();
            else
                setUp(other->c);
            state.ResumeTiming();
        }
        step();
    }
    state.counters["rows"] = matrix->n;
    state.counters["residual"] = relativeResidual(*matrix, *m.c, x.data());
    setUp(m.c);
    state.counters["GFlop/s"] = benchmark::Counter(matrix->pendingFactorFlops() * 1e-9,
                                                   benchmark::Counter::kIsIterationInvariantRate);
}

/// One step's work of a boxed problem with friction: all passes, from no guess.
void solveContacts(benchmark::State& state, const Mechanism& m) {
    const int n = m.c->n_constraint_rows;
    static std::vector<std::byte> memory(std::size_t{1} << 24U);
    DynsParameters parameters;
    DynsFrameCreate(&parameters);
    parameters.memory_pool_handler->init(memory.data(), memory.size());
    parameters.lcp_parameters.max_iterations = 200;
    bvbCholRRT matrix;
    const std::vector<KitReal> lower(m.c->lower, m.c->lower + n), upper(m.c->upper, m.c->upper + n);
    int passes = 0;
    for (auto _ : state) {
        std::copy(lower.begin(), lower.end(), m.c->lower);
        std::copy(upper.begin(), upper.end(), m.c->upper);
        parameters.lcp_parameters.warm_start = 0;
        matrix.allocate(n);
        matrix.calcJinvMJT(m.c);
        matrix.factorize();
        passes = solve_lcp_system(&matrix, m.c, &parameters, cycle_detect_lcp_solver);
    }
    state.counters["rows"] = n;
    state.counters["passes"] = passes; // negative where sweeps had to end the solve
    state.counters["time_per_pass"] =
        benchmark::Counter(std::abs(passes), benchmark::Counter::kIsIterationInvariantRate |
                                                 benchmark::Counter::kInvert);
    DynsFrameDestroy(&parameters);
}

void chain(benchmark::State& state) {
    solveEquations(state, *makeChain(static_cast<int>(state.range(0))), Start::kAgain);
}
void tree(benchmark::State& state) {
    solveEquations(state, *makeTree(static_cast<int>(state.range(0))), Start::kAgain);
}
void net(benchmark::State& state) {
    solveEquations(state, *makeNet(static_cast<int>(state.range(0))), Start::kAgain);
}
void netOnTwoThreads(benchmark::State& state) {
    KitThreadPool pool(2);
    solveEquations(state, *makeNet(static_cast<int>(state.range(0))), Start::kAgain, &pool);
}
void netNewGraph(benchmark::State& state) {
    solveEquations(state, *makeNet(static_cast<int>(state.range(0))), Start::kNewGraph);
}
void netFirstStep(benchmark::State& state) {
    solveEquations(state, *makeNet(static_cast<int>(state.range(0))), Start::kFirst);
}
void wall(benchmark::State& state) {
    solveContacts(state, *makeWall(static_cast<int>(state.range(0))));
}
/// Ten links of 1 kg and a load; residual is |A x - b| / |b|.
void massRatio(benchmark::State& state) {
    solveEquations(state, *makeChain(11, static_cast<double>(state.range(0))), Start::kAgain);
}

BENCHMARK(chain)->RangeMultiplier(10)->Range(10, 10000)->Unit(benchmark::kMicrosecond);
BENCHMARK(tree)->RangeMultiplier(4)->Range(15, 4095)->Unit(benchmark::kMicrosecond);
BENCHMARK(net)->RangeMultiplier(2)->Range(4, 64)->Arg(30)->Unit(benchmark::kMicrosecond);
BENCHMARK(netOnTwoThreads)
    ->RangeMultiplier(2)
    ->Range(16, 64)
    ->Unit(benchmark::kMicrosecond)
    ->UseRealTime();
BENCHMARK(netNewGraph)->RangeMultiplier(2)->Range(4, 64)->Arg(30)->Unit(benchmark::kMicrosecond);
BENCHMARK(netFirstStep)->RangeMultiplier(2)->Range(4, 64)->Arg(30)->Unit(benchmark::kMicrosecond);
BENCHMARK(wall)->DenseRange(4, 16, 4)->Unit(benchmark::kMicrosecond);
BENCHMARK(massRatio)->RangeMultiplier(10)->Range(1, 10000)->Unit(benchmark::kMicrosecond);

/// Prints the table, and at its end the slope of log time against log rows of each family.
class GrowthReporter : public benchmark::ConsoleReporter {
public:
    void ReportRuns(const std::vector<Run>& runs) override {
        ConsoleReporter::ReportRuns(runs);
        for (const Run& run : runs) {
            const auto rows = run.counters.find("rows");
            if (run.run_type == Run::RT_Iteration && rows != run.counters.end())
                mFamilies[run.run_name.function_name].emplace_back(
                    std::log(rows->second.value),
                    std::log(run.run_name.time_type.empty() ? run.GetAdjustedCPUTime()
                                                            : run.GetAdjustedRealTime()));
        }
    }
    void Finalize() override {
        ConsoleReporter::Finalize();
        std::printf("\nGrowth: time ~ rows^p\n");
        for (const auto& [name, points] : mFamilies)
            if (const double spread = sumOfSquares(points); spread > 0)
                std::printf("  %-16s p = %.2f\n", name.c_str(), slope(points, spread));
    }

private:
    using Points = std::vector<std::pair<double, double>>;

    static Point mean(const Points& points) {
        Point sum{};
        for (const auto& [x, y] : points) {
            sum.x += x / static_cast<double>(points.size());
            sum.y += y / static_cast<double>(points.size());
        }
        return sum;
    }
    static double sumOfSquares(const Points& points) {
        const Point centre = mean(points);
        double sum = 0;
        for (const auto& [x, y] : points)
            sum += (x - centre.x) * (x - centre.x);
        return sum;
    }
    static double slope(const Points& points, double spread) {
        const Point centre = mean(points);
        double sum = 0;
        for (const auto& [x, y] : points)
            sum += (x - centre.x) * (y - centre.y);
        return sum / spread;
    }

    std::map<std::string, Points> mFamilies;
};

} // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    GrowthReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    return 0;
}
