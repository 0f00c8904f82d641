#include "../../DynKiro/src/DynsWorkUnits.h"
#include "SolverFixture.h"

#include <Kit/KitChunk.h>
#include <Kit/KitMessage.h>
#include <Kit/KitThreadPool.h>

#include <mutex>
#include <string>

namespace {

// Partitions of bodies, primaries first, run through the frames as the world does.
class Slice {
public:
    explicit Slice(double stepsize) : h(stepsize) {}
    ~Slice() { DynsConstraintFramesDestroy(frames); }
    Slice(const Slice&) = delete;
    Slice& operator=(const Slice&) = delete;

    void add(const std::vector<DynsBody*>& bodies, int constraints = 0, int rows = 0) {
        starts.push_back(static_cast<int>(pointers.size()));
        pointers.insert(pointers.end(), bodies.begin(), bodies.end());
        sizes.push_back(static_cast<int>(bodies.size()));
        nConstraints.push_back(constraints);
        nRows.push_back(rows);
        order.push_back(static_cast<int>(order.size()));
    }
    int count() const { return static_cast<int>(order.size()); }

    void begin(int secondaries) {
        DynsConstraintFramesResizeIfNeeded(frames, 0, count(), nConstraints.data(), sizes.data(),
                                           nRows.data(), pointers.data(), starts.data(),
                                           order.data(), secondaries);
        for (int i = 0; i < count(); ++i) {
            const auto p = static_cast<std::size_t>(i);
            DynsConstraints& c = rowsOf(i);
            c.partition = i;
            DynsConstraintsSetType(&c, i >= count() - secondaries);
            DynsConstraintsReset(&c, nRows[p], nConstraints[p], sizes[p]);
            parametersOf(i).stepsize = h;
        }
    }
    // Rows between bodies of partition i, whose local indices are set first.
    void push(int i, const std::vector<DynsBody*>& bodies, const MatrixX& J,
              const std::vector<RowValues>& values) {
        const auto p = static_cast<std::size_t>(i);
        for (int k = 0; k < sizes[p]; ++k) {
            DynsBody* body = pointers[static_cast<std::size_t>(starts[p] + k)];
            body->localIndex = k;
            body->localPartition = i;
        }
        pushRows(rowsOf(i), bodies, J, values);
    }
    DynsConstraints& rowsOf(int i) { return *DynsConstraintFramesGetFrame(frames, i); }
    DynsParameters& parametersOf(int i) {
        return *DynsConstraintFramesGetKiroParameters(frames, i);
    }
    void passes(int i, int n) { DynsConstraintFramesSetFrameCouplingIterations(frames, i, n); }

    DynsConstraintFrames* frames = DynsConstraintFramesCreate(&KitMemoryAPI);
    double h;
    std::vector<DynsBody*> pointers;
    std::vector<int> starts, sizes, nConstraints, nRows, order;
};

// Notes the calls that a partition gets; it is named by the tag of its first body.
class RecordingStepper : public WorldStepper {
public:
    explicit RecordingStepper(std::vector<std::string>& log) : mLog(log) {}
    void setup(int count, DynsConstraints* rows, DynsParameters* parameters,
               DynsBody* const* bodies, lcp_solver_function_ptr, LCPMatrix*,
               constraint_solver*) override {
        nb = count, c = rows, p = parameters, b = bodies;
        note("setup");
    }
    void get_forces() override { note("get"); }
    void pre_sync_forces() override { note("pre"); }
    void post_sync_forces() override { note("post"); }
    void computeAcceleration() override { note("accelerate"); }
    void cleanup() override { note("cleanup"); }
    [[nodiscard]] const char* get_name() const override { return "recording"; }

private:
    void note(const char* call) {
        mLog.push_back(std::string(call) + " " + static_cast<char>(b[0]->tag));
    }
    std::vector<std::string>& mLog;
};

std::vector<DynsBody> makeTagged(const char* tags) {
    std::vector<DynsBody> bodies;
    for (const char* tag = tags; *tag; ++tag) {
        bodies.push_back(makeBody());
        bodies.back().tag = *tag;
    }
    return bodies;
}

KitThreadPool* poolOf(void* owner) {
    return static_cast<KitThreadPool*>(owner);
}

// A force row along x that holds the distance of two bodies.
MatrixX holdRow() {
    MatrixX J = MatrixX::Zero(1, 12);
    J(0, 0) = 1;
    J(0, 6) = -1;
    return J;
}

} // namespace

TEST(DynsConstraintFramesTest, OrderOfCoupledPartitions) {
    std::vector<std::string> log;
    std::vector<std::unique_ptr<RecordingStepper>> models;
    std::vector<DynsBody> bodies = makeTagged("abcdABC");
    const auto at = [&](int i) { return &bodies[static_cast<std::size_t>(i)]; };
    Slice slice(0.01);
    slice.add({at(0)}); // primaries a, b and the uncoupled c
    slice.add({at(1)});
    slice.add({at(2)});
    slice.add({at(4), at(0)}); // A shares a body with C, B with none
    slice.add({at(5), at(1)});
    slice.add({at(6), at(0)});
    slice.begin(3);
    for (int i = 0; i < slice.count(); ++i) {
        models.push_back(std::make_unique<RecordingStepper>(log));
        const int n = DynsFrameAddStepperModel(DynsConstraintFramesGetKiroFrame(slice.frames, i),
                                               models.back().get());
        slice.parametersOf(i).stepper_model = static_cast<DynStepperModelEnum>(n - 1);
    }
    const int iterations[] = {1, 2, 0, 1, 1, 2};
    for (int i = 0; i < slice.count(); ++i)
        slice.passes(i, iterations[i]);
    DynsStep(slice.frames, 1);

    const std::vector<std::string> once = {"pre a", "get a", "post a", "pre b", "get b", "post b"};
    // A and B are of one colour; C, which shares a body with A, comes after it.
    const std::vector<std::string> secondaries = {"pre A",  "pre B", "get A", "get B", "post A",
                                                  "post B", "pre C", "get C", "post C"};
    std::vector<std::string> expected = {"setup a", "setup b", "setup c",
                                         "setup A", "setup B", "setup C"};
    const auto append = [&](const std::vector<std::string>& more) {
        expected.insert(expected.end(), more.begin(), more.end());
    };
    append(secondaries);
    append(once);
    append({"pre c", "get c", "post c"}); // one pass, then it drops out
    append(secondaries);
    append(once);
    append({"pre C", "get C", "post C"}); // three passes
    append({"pre b", "get b", "post b"});
    append({"accelerate a", "accelerate b", "accelerate c"});
    append({"cleanup a", "cleanup b", "cleanup c", "cleanup A", "cleanup B", "cleanup C"});
    EXPECT_EQ(log, expected);
}

TEST(DynsConstraintFramesTest, PartitionsWithoutCoupling) {
    std::vector<std::string> log;
    RecordingStepper model(log);
    std::vector<DynsBody> bodies = makeTagged("a");
    Slice slice(0.01);
    slice.add({&bodies[0]});
    slice.begin(0);
    DynsHost host;
    host.threadPool = [](void*) -> KitThreadPool* {
        ADD_FAILURE() << "one partition needs no pool";
        return nullptr;
    };
    DynsConstraintFramesSetHost(slice.frames, host);
    (void)DynsFrameAddStepperModel(DynsConstraintFramesGetKiroFrame(slice.frames, 0), &model);
    slice.parametersOf(0).stepper_model = static_cast<DynStepperModelEnum>(2);
    for (const auto& [iterations, passes] : {std::pair{0, 1}, {5, 6}, {-3, 1}}) {
        log.clear();
        slice.passes(0, iterations);
        DynsStep(slice.frames, 1);
        EXPECT_EQ(std::count(log.begin(), log.end(), "get a"), passes);
        EXPECT_EQ(log.size(), static_cast<std::size_t>(3 * passes + 3));
    }
}

TEST(DynsConstraintFramesTest, UnitsTakeSmallPartitionsTogether) {
    std::vector<std::unique_ptr<StepperData>> data;
    std::vector<StepperData*> steppers;
    const auto deal = [&](const std::vector<int>& sizes, PartitionChoice choice) {
        while (data.size() < sizes.size())
            data.push_back(std::make_unique<StepperData>());
        steppers.clear();
        for (std::size_t i = 0; i < sizes.size(); ++i) {
            data[i]->nb = std::abs(sizes[i]); // negative: not active
            data[i]->iteration = sizes[i] < 0 ? 1 : 0;
            steppers.push_back(data[i].get());
        }
        std::vector<int> counts;
        std::vector<int> seen;
        for (int index = 0; index < static_cast<int>(sizes.size()); ++index) {
            AccelerationPartitionWorkUnit unit;
            fillWorkUnit(unit, steppers.data(), index, static_cast<int>(sizes.size()), choice);
            if (unit.count > 0)
                counts.push_back(unit.count);
            seen.insert(seen.end(), unit.partitionIndex, unit.partitionIndex + unit.count);
        }
        EXPECT_TRUE(std::is_sorted(seen.begin(), seen.end()));
        EXPECT_EQ(std::adjacent_find(seen.begin(), seen.end()), seen.end());
        return counts;
    };
    using Counts = std::vector<int>;
    EXPECT_EQ(deal(Counts(40, 2), PartitionChoice::kAll), (Counts{16, 16, 8}));
    EXPECT_EQ(deal({4, 2, 2}, PartitionChoice::kAll), (Counts{1, 2}));
    EXPECT_EQ(deal({9, 4, 3, 3, 1}, PartitionChoice::kAll), (Counts{1, 1, 3}));
    EXPECT_EQ(deal({2, 2, 4, 2}, PartitionChoice::kAll), (Counts{2, 1, 1}));
    EXPECT_EQ(deal({-2, 2, -2, -4, 2, -4}, PartitionChoice::kActiveShared), (Counts{2}));
    EXPECT_EQ(deal({-2, -2}, PartitionChoice::kActiveShared), Counts{});
    EXPECT_EQ(deal({-2, -2, 7}, PartitionChoice::kAll), (Counts{2, 1}));
    for (const auto& frame : data)
        frame->destroy(&KitMemoryAPI);
}

TEST(DynsConstraintFramesTest, PoolLearnsFromOverflow) {
    std::vector<DynsBody> bodies = makeTagged("abcdefgh");
    Slice slice(0.01);
    std::vector<DynsBody*> all;
    for (DynsBody& body : bodies)
        all.push_back(&body);
    slice.add(all); // eight inverses need more than the 256 bytes of a partition without rows
    slice.begin(0);
    EXPECT_EQ(slice.parametersOf(0).memory_pool_size, 256U);
    DynsStep(slice.frames, 1);
    const std::size_t lacked = slice.parametersOf(0).memory_pool_needed;
    EXPECT_GE(lacked, 8 * sizeof(MassMatrix));
    slice.begin(0);
    EXPECT_EQ(slice.parametersOf(0).memory_pool_size, 256 + lacked);
    EXPECT_GE(DynsConstraintFramesGetMemoryPool(slice.frames, 0)->memSizeAligned, 256 + lacked);
    DynsStep(slice.frames, 1);
    EXPECT_EQ(slice.parametersOf(0).memory_pool_needed, 0U);
}

// A chain cut into one body a partition, with every row in a secondary one, comes by coupling to the
// forces of the chain in one partition; also where all rows meet in one hub, which solving them side
// by side would drive apart.
TEST(DynsConstraintFramesTest, CouplingConvergesToTheWhole) {
    struct Case {
        const char* name;
        bool hub;
        int n;
    };
    for (const Case& test : {Case{"chain", false, 5}, Case{"hub", true, 6}}) {
        std::vector<DynsBody> bodies =
            makeTagged(std::string(static_cast<std::size_t>(test.n), 'x').c_str());
        std::vector<DynsBody*> all;
        for (DynsBody& body : bodies)
            all.push_back(&body);
        bodies[0].force[0] = 10;
        const auto ends = [&](int i) {
            return std::vector<DynsBody*>{all[test.hub ? 0 : static_cast<std::size_t>(i)],
                                          all[static_cast<std::size_t>(i) + 1]};
        };
        const auto solve = [&](bool cut, int iterations) {
            for (DynsBody& body : bodies)
                std::fill_n(body.cf, 4, 0.0);
            Slice slice(0.01);
            if (cut) {
                for (DynsBody* body : all)
                    slice.add({body});
                for (int i = 0; i + 1 < test.n; ++i)
                    slice.add(ends(i), 1, 1);
            } else {
                slice.add(all, test.n - 1, test.n - 1);
            }
            slice.begin(cut ? test.n - 1 : 0);
            for (int i = 0; i + 1 < test.n; ++i)
                slice.push(cut ? test.n + i : 0, ends(i), holdRow(), {RowValues{}});
            for (int i = 0; i < slice.count(); ++i)
                slice.passes(i, iterations);
            DynsStep(slice.frames, 1);
            Eigen::VectorXd accelerations(test.n);
            for (int i = 0; i < test.n; ++i)
                accelerations[i] = bodies[static_cast<std::size_t>(i)].accel[0];
            return accelerations;
        };
        const Eigen::VectorXd whole = solve(false, 0);
        for (double acceleration : whole) // rigid along x: all move alike
            EXPECT_NEAR(acceleration, 10.0 / test.n, 1e-9) << test.name;
        const double few = (solve(true, 10) - whole).norm();
        EXPECT_LT(few, whole.norm()) << test.name;
        EXPECT_LT((solve(true, 300) - whole).norm(), 1e-6) << test.name;
    }
}

// Islands, some coupled, some hit by a body that is not finite: the same bits for any number of
// threads, and finite wherever the bad body is not.
TEST(DynsConstraintFramesTest, SameBitsForAnyThreadCount) {
    constexpr int kIslands = 40;
    const auto run = [&](unsigned threads, bool coupled, bool spoil) {
        std::mt19937_64 random(99);
        std::vector<DynsBody> bodies;
        for (int i = 0; i < 3 * kIslands; ++i)
            bodies.push_back(makeRandomBody(random));
        const auto at = [&](int i) { return &bodies[static_cast<std::size_t>(i)]; };
        Slice slice(1.0 / 60);
        for (int i = 0; i < kIslands; ++i)
            slice.add({at(3 * i), at(3 * i + 1), at(3 * i + 2)}, 2, 6);
        const int secondaries = coupled ? kIslands - 1 : 0;
        for (int i = 0; i < secondaries; ++i)
            slice.add({at(3 * i), at(3 * i + 3)}, 1, 2);
        KitThreadPool pool(threads);
        DynsHost host;
        host.owner = &pool;
        host.threadPool = poolOf;
        if (threads > 0)
            DynsConstraintFramesSetHost(slice.frames, host);
        if (spoil)
            at(4)->force[0] = NAN;
        for (int step = 0; step < 3; ++step) {
            slice.begin(secondaries);
            for (int i = 0; i < kIslands; ++i)
                for (int k = 0; k < 2; ++k)
                    slice.push(i, {at(3 * i + k), at(3 * i + k + 1)}, randomJacobian(random, 3, 2),
                               std::vector<RowValues>(3, RowValues{.lower = -5, .upper = 5}));
            for (int i = 0; i < secondaries; ++i) {
                slice.push(kIslands + i, {at(3 * i), at(3 * i + 3)}, randomJacobian(random, 2, 2),
                           std::vector<RowValues>(2));
                slice.passes(i, i % 4);
                slice.passes(kIslands + i, i % 3);
            }
            DynsStep(slice.frames, 1);
            for (DynsBody& body : bodies) {
                body_integrate(&body, slice.h);
                std::fill_n(body.cf, 4, 0.0);
                std::fill_n(body.ct, 4, 0.0);
            }
        }
        std::vector<double> state;
        for (const DynsBody& body : bodies) {
            state.insert(state.end(), body.tm[0], body.tm[0] + 16);
            state.insert(state.end(), body.vel, body.vel + 3);
            state.insert(state.end(), body.velrot, body.velrot + 3);
        }
        return state;
    };
    constexpr std::size_t kPerBody = 22;
    for (const bool coupled : {false, true}) {
        const std::vector<double> alone = run(0, coupled, false);
        for (const unsigned threads : {1U, 2U, 5U})
            EXPECT_EQ(run(threads, coupled, false), alone)
                << threads << (coupled ? " coupled" : "");

        const std::vector<double> spoilt = run(2, coupled, true);
        for (std::size_t body = 0; body < 3 * kIslands; ++body)
            for (std::size_t k = 0; k < kPerBody; ++k) {
                const double value = spoilt[body * kPerBody + k];
                EXPECT_TRUE(body == 4 || std::isfinite(value)) << body;
                // Without coupling the other islands do not notice.
                if (!coupled && (body < 3 || body > 5)) {
                    EXPECT_EQ(value, alone[body * kPerBody + k]) << body;
                }
            }
    }
}

// An island that is most of a slice spreads over all threads, beside others that do not.
TEST(DynsConstraintFramesTest, LargeIslandHasTheSameBitsForAnyThreadCount) {
    constexpr int kBodies = 70, kJoints = 180, kSmall = 3;
    const auto run = [&](unsigned threads, bool coupled) {
        std::mt19937_64 random(98);
        std::vector<DynsBody> bodies;
        for (int i = 0; i < kBodies + kSmall; ++i)
            bodies.push_back(makeRandomBody(random));
        const auto at = [&](int i) { return &bodies[static_cast<std::size_t>(i)]; };
        Slice slice(1.0 / 60);
        std::vector<DynsBody*> large;
        for (int i = 0; i < kBodies; ++i)
            large.push_back(at(i));
        slice.add(large, kJoints, 3 * kJoints);
        for (int i = 0; i < kSmall; ++i)
            slice.add({at(kBodies + i)}, 1, 2);
        if (coupled)
            slice.add({at(0), at(kBodies)}, 1, 2);
        KitThreadPool pool(threads);
        DynsHost host;
        host.owner = &pool;
        host.threadPool = poolOf;
        if (threads > 0)
            DynsConstraintFramesSetHost(slice.frames, host);
        slice.begin(coupled ? 1 : 0);
        const std::vector<RowValues> bounded(3,
                                             RowValues{.lower = -5, .upper = 5, .epsilon = 1e-3});
        for (int k = 0; k < kJoints; ++k)
            slice.push(0, {at(k % kBodies), at((k + 1 + k / kBodies * 7) % kBodies)},
                       randomJacobian(random, 3, 2), bounded);
        for (int i = 0; i < kSmall; ++i)
            slice.push(1 + i, {at(kBodies + i)}, randomJacobian(random, 2, 1),
                       std::vector<RowValues>(2));
        if (coupled) {
            slice.push(1 + kSmall, {at(0), at(kBodies)}, randomJacobian(random, 2, 2),
                       std::vector<RowValues>(2));
            for (const int i : {0, 1, 1 + kSmall})
                slice.passes(i, 2);
        }
        DynsStep(slice.frames, 1);
        std::vector<double> forces;
        for (const DynsBody& body : bodies) {
            forces.insert(forces.end(), body.cf, body.cf + 3);
            forces.insert(forces.end(), body.ct, body.ct + 3);
        }
        return forces;
    };
    for (const bool coupled : {false, true}) {
        const std::vector<double> alone = run(0, coupled);
        EXPECT_NE(alone[0], 0);
        for (const unsigned threads : {1U, 2U, 5U})
            EXPECT_EQ(run(threads, coupled), alone) << threads << (coupled ? " coupled" : "");
    }
}

TEST(DynsParametersTest, Validation) {
    static std::string text;
    const KitMessageHandler old = KitSetWarningHandler([](int, const char* format, va_list args) {
        char line[200];
        std::vsnprintf(line, sizeof line, format, args);
        text += line;
    });
    FrameParameters frame(0.01);
    DynsParameters loose;
    EXPECT_EQ(DynsValidateKiroParameters(&frame.p), 1);
    EXPECT_EQ(DynsValidateKiroParameters(&loose), 1); // without a frame the built-in ones count
    EXPECT_EQ(text, "");
    EXPECT_EQ(DynsGetLinearSolverDescription(&loose), nullptr);
    EXPECT_STREQ(DynsGetLinearSolverDescription(&frame.p),
                 "block vb chol with tiling using inline functs");
    EXPECT_STREQ(DynsGetStepperModelDescription(&frame.p),
                 "stable rotational model: very stable with non-inertial forces");
    for (DynsParameters* p : {&frame.p, &loose}) {
        text.clear();
        p->stepper_model = static_cast<DynStepperModelEnum>(2);
        EXPECT_EQ(DynsValidateKiroParameters(p), 0);
        EXPECT_EQ(text, "DynsStep : no such model number parameters->stepper_model = : 2\n");
        p->stepper_model = kDynStableStepper;
        text.clear();
        p->linear_solver = kDynDenseSolver;
        p->lcp_parameters.solver_function = static_cast<DynLCPSolverEnum>(-1);
        p->cpu_resources = reinterpret_cast<KitCPUResources*>(p);
        EXPECT_EQ(DynsValidateKiroParameters(p), 0);
        EXPECT_EQ(text, "DynsStep: no such lcp solver : -1\n"
                        "DynsStep: no such CPU resource : 1\n"
                        "DynsStep: no such Linear Solver, see DynLinearSolver enumeration): 2\n");
        EXPECT_EQ(DynsGetLinearSolverDescription(p), nullptr);
        p->cpu_resources = nullptr;
    }
    KitSetWarningHandler(old);
}
