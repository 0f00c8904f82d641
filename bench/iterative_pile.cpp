// Sweeps over a pile: balls on a lattice with a contact of three rows to each neighbour. Prints the time
// a block and a sweep of the solver in the order of the rows and by colours, on one and two threads,
// against a plain sweep over the same rows, which goes through the record and pivots every block.
#include <Dyns/Dyns.h>
#include <Kit/KitMemory.h>
#include <Kit/KitMemoryPool.h>
#include <Kit/KitThreadPool.h>
#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstddef>
#include <memory>
#include <random>
#include <vector>

namespace {

constexpr int kRows = 3, kSweeps = 20;
constexpr KitReal kRadius = 0.5, kStep = 0.01, kGravity = 9.81, kFriction = 0.6; // m, s, m/s²

/// Balls of 1 to 2 kg in a cube that stands on a plane.
class Pile {
public:
    explicit Pile(int blocks) : mSide(static_cast<int>(std::cbrt(blocks / 2.8)) + 1) {
        const int count = mSide * mSide * mSide, contacts = 3 * count;
        mBodies.resize(static_cast<std::size_t>(count));
        for (int i = 0; i < count; ++i) {
            DynsBody& body = mBodies[static_cast<std::size_t>(i)];
            body.localIndex = i;
            body.localPartition = 0;
            mInverseMass.push_back(1 / (1 + draw()));
        }
        mRecord.reset(DynsConstraintsCreate());
        DynsConstraintsResize(&rows(), contacts, count, kRows * contacts, &KitMemoryAPI);
        DynsConstraintsReset(&rows(), kRows * contacts, contacts, count);
        for (int i = 0; i < count && rows().n_constraints < blocks; ++i)
            addContactsOf(i, blocks);
        rows().use_scaled_box_friction = 1;
        for (int g = 0; g < rows().n_g_blocks; ++g)
            multiplyByInverseMass(g);
        mRhs.assign(rows().rhs, rows().rhs + rows().n_constraint_rows);
    }

    DynsConstraints& rows() { return *mRecord; }
    [[nodiscard]] int bodies() const { return static_cast<int>(mBodies.size()); }

    /// No forces, and friction bounds of no width.
    void reset() {
        DynsConstraints& c = rows();
        std::fill_n(c.lambda, c.n_constraint_rows, 0.0);
        for (int i = 0; i < c.n_constraint_rows; ++i)
            if (i % kRows > 0)
                c.lower[i] = c.upper[i] = 0;
        std::fill_n(&c.g_forces[0][0], 8 * c.n_g_blocks, 0.0);
    }

private:
    struct Destroy {
        void operator()(DynsConstraints* c) const { DynsConstraintsDestroy(c, &KitMemoryAPI); }
    };

    KitReal draw() { return std::uniform_real_distribution<KitReal>(0, 1)(mRandom); }

    void addContactsOf(int i, int blocks) {
        const int cell[3] = {i % mSide, i / mSide % mSide, i / (mSide * mSide)};
        const int stride[3] = {1, mSide, mSide * mSide};
        for (int axis = 0; axis < 3 && rows().n_constraints < blocks; ++axis)
            if (cell[axis] > 0)
                addContact(i, i - stride[axis], axis);
            else if (axis == 2)
                addContact(i, -1, axis);
    }

    /// Ball i rests on ball j, or on the ground, roughly along an axis.
    void addContact(int i, int j, int axis) {
        KitReal n[3];
        for (int k = 0; k < 3; ++k)
            n[k] = (k == axis) + 0.3 * (draw() - 0.5);
        const KitReal length = std::hypot(n[0], n[1], n[2]);
        for (KitReal& entry : n)
            entry /= length;
        KitReal t[3] = {n[1], -n[0], 0};
        if (axis != 2)
            t[0] = n[2], t[1] = 0, t[2] = -n[0];
        const KitReal tangent = std::hypot(t[0], t[1], t[2]);
        for (KitReal& entry : t)
            entry /= tangent;
        const KitReal axes[kRows][3] = {
            {n[0], n[1], n[2]},
            {t[0], t[1], t[2]},
            {n[1] * t[2] - n[2] * t[1], n[2] * t[0] - n[0] * t[2], n[0] * t[1] - n[1] * t[0]}};
        pushContact(i, j, axes);
    }

    void pushContact(int i, int j, const KitReal axes[kRows][3]) {
        DynsConstraints& c = rows();
        DynsGRow G[2][kRows];
        DynsInputRowFactors factors{};
        factors.G[0] = G[0];
        factors.G[1] = G[1];
        const KitReal* n = axes[0];
        for (int r = 0; r < kRows; ++r) {
            const KitReal* a = axes[r];
            const KitReal turn[3] = {n[2] * a[1] - n[1] * a[2], n[0] * a[2] - n[2] * a[0],
                                     n[1] * a[0] - n[0] * a[1]};
            for (int k = 0; k < 3; ++k) {
                G[0][r][k] = a[k];
                G[1][r][k] = -a[k];
                G[0][r][3 + k] = G[1][r][3 + k] = kRadius * turn[k];
            }
            const int row = c.n_constraint_rows + r;
            c.lower[row] = 0;
            c.upper[row] = r == 0 ? kKitInfinity : 0;
            c.xepsilon[row] = 1e-7;
            c.friction_coefficient[row] = kFriction;
            c.reference_normal[row] = r == 0 ? kDynsNoReferenceNormal : static_cast<unsigned>(r);
            c.rhs[row] = 0.2 * (draw() - 0.5) / kStep + (j < 0 ? kGravity * a[2] : 0);
        }
        DynsBody* bodies[2] = {&mBodies[static_cast<std::size_t>(i)],
                               j < 0 ? nullptr : &mBodies[static_cast<std::size_t>(j)]};
        DynsConstraintsPushConstraint(&c, &factors, bodies, 2, kRows, 0, nullptr);
    }

    void multiplyByInverseMass(int g) {
        DynsConstraints& c = rows();
        const KitReal inverse = mInverseMass[static_cast<std::size_t>(c.g_bodies_idx[g])];
        for (int r = 0; r < kRows; ++r)
            for (int k = 0; k < 6; ++k) // of a ball, I = 2/5 m r²
                c.GM[g][r][k] =
                    c.G[g][r][k] * (k < 3 ? inverse : inverse / (0.4 * kRadius * kRadius));
    }

    int mSide;
    std::mt19937_64 mRandom{2026};
    std::vector<DynsBody> mBodies;
    std::vector<KitReal> mInverseMass, mRhs;
    std::unique_ptr<DynsConstraints, Destroy> mRecord;
};

/// The plain sweep: rows by way of the record, and each block pivoted anew.
class PlainSweeps {
public:
    PlainSweeps(DynsConstraints& rows, int bodies)
        : c(rows), mBlocks(static_cast<std::size_t>(rows.n_constraints)),
          mForces(static_cast<std::size_t>(8 * bodies)) {
        for (int k = 0; k < c.n_constraints; ++k)
            build(k);
    }

    void run(int sweeps) {
        std::fill(mForces.begin(), mForces.end(), 0.0);
        for (int s = 0; s < sweeps; ++s)
            for (int k = 0; k < c.n_constraints; ++k)
                visit(k);
    }

private:
    struct Matrix {
        KitReal entry[kRows * kRows] = {};
    };

    KitReal* forceOn(int g) { return &mForces[static_cast<std::size_t>(8 * c.g_bodies_idx[g])]; }

    void build(int k) {
        Matrix& M = mBlocks[static_cast<std::size_t>(k)];
        const int first = c.constraint_first_block[k];
        for (int i = 0; i < kRows; ++i)
            M.entry[4 * i] = c.xepsilon[kRows * k + i];
        for (int g = first; g < first + c.constraint_n_blocks[k]; ++g)
            for (int i = 0; i < kRows; ++i)
                for (int j = 0; j < kRows; ++j)
                    for (int e = 0; e < 6; ++e)
                        M.entry[kRows * i + j] += c.GM[g][i][e] * c.G[g][j][e];
    }

    void visit(int k) {
        const int f = kRows * k, first = c.constraint_first_block[k];
        const int end = first + c.constraint_n_blocks[k];
        KitReal b[kRows];
        std::copy_n(c.rhs + f, kRows, b);
        for (int g = first; g < end; ++g) {
            KitReal* force = forceOn(g);
            for (int e = 0; e < 8; ++e)
                force[e] -= c.g_forces[g][e];
            for (int j = 0; j < kRows; ++j)
                for (int e = 0; e < 6; ++e)
                    b[j] -= c.GM[g][j][e] * force[e < 3 ? e : e + 1];
        }
        solve(k, b);
        scale_box_lcp_data(kRows, c.lambda + f, c.lower + f, c.upper + f, c.reference_normal + f,
                           c.friction_coefficient + f, c.soil_cohesion_coefficient + f,
                           c.index_set + f);
        solve(k, b);
        for (int g = first; g < end; ++g) {
            std::fill_n(c.g_forces[g], 8, 0.0);
            for (int j = 0; j < kRows; ++j)
                for (int e = 0; e < 6; ++e)
                    c.g_forces[g][e < 3 ? e : e + 1] += c.lambda[f + j] * c.G[g][j][e];
            for (int e = 0; e < 8; ++e)
                forceOn(g)[e] += c.g_forces[g][e];
        }
    }

    void solve(int k, const KitReal* b) {
        const int f = kRows * k;
        smv_solve_boxed(mBlocks[static_cast<std::size_t>(k)].entry, kRows, c.lambda + f, b,
                        c.lower + f, c.upper + f, c.index_set + f);
    }

    DynsConstraints& c;
    std::vector<Matrix> mBlocks;
    std::vector<KitReal> mForces; ///< body: force and torque, four numbers each
};

/// The solver on the rows of a pile, once set up.
class Solver {
public:
    Solver(Pile& pile, bool byColours, KitThreadPool* threads) : mBuffer(std::size_t{1} << 26) {
        mPool.init(mBuffer.data(), mBuffer.size());
        mParameters.memory_pool_handler = &mPool;
        mParameters.iterative_rows_threshold = byColours ? 1 : 0;
        mParameters.thread_pool = threads;
        mParameters.lcp_parameters.it_ct_solver_tol = 0;
        mSolver.setup(pile.rows().n_constraint_rows, nullptr, &pile.rows(), &mParameters, nullptr,
                      nullptr, pile.bodies(), nullptr);
    }
    ~Solver() { mSolver.cleanup(); }
    Solver(const Solver&) = delete;
    Solver& operator=(const Solver&) = delete;

    void run(int sweeps) {
        mParameters.lcp_parameters.it_ct_solver_max_it = sweeps - 1;
        (void)mSolver.solve();
    }

private:
    std::vector<std::byte> mBuffer;
    KitMemoryPool mPool;
    DynsParameters mParameters;
    itr_constraint_solver mSolver;
};

template <class Work>
double secondsOf(Work work) {
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

/// The best times of the ways, taken in turn: other load on the machine only adds.
void sweepPile(benchmark::State& state) {
    Pile pile(static_cast<int>(state.range(0)));
    KitThreadPool two(2);
    PlainSweeps plain(pile.rows(), pile.bodies());
    Solver rows(pile, false, nullptr), colours(pile, true, nullptr), threaded(pile, true, &two);
    double setUp = 0, times[4] = {1e9, 1e9, 1e9, 1e9};
    const auto measure = [&pile](auto& way, int sweeps) {
        pile.reset();
        return secondsOf([&] { way.run(sweeps); });
    };
    for (Solver* solver : {&rows, &colours, &threaded}) // the first run builds the blocks
        setUp = measure(*solver, 1);
    for (auto _ : state) {
        times[0] = std::min(times[0], measure(plain, kSweeps));
        times[1] = std::min(times[1], measure(rows, kSweeps));
        times[2] = std::min(times[2], measure(colours, kSweeps));
        times[3] = std::min(times[3], measure(threaded, kSweeps));
    }
    const int blocks = pile.rows().n_constraints;
    const char* names[4] = {"plain_ns", "rows_ns", "colours_ns", "colours_2_threads_ns"};
    for (int i = 0; i < 4; ++i)
        state.counters[names[i]] = times[i] * 1e9 / kSweeps / blocks;
    state.counters["blocks"] = blocks;
    state.counters["first_run_ns"] = setUp * 1e9 / blocks;
    state.counters["plain/rows"] = times[0] / times[1];
    state.counters["plain/colours"] = times[0] / times[2];
    state.counters["plain/2_threads"] = times[0] / times[3];
}

} // namespace

BENCHMARK(sweepPile)->Arg(1000)->Arg(5000)->Arg(20000)->Unit(benchmark::kMillisecond);

BENCHMARK_MAIN();
