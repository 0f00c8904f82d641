#include "SolverFixture.h"

#include <Dyns/DynsConstraintSolverRegistry.h>
#include <Kit/KitMessage.h>

#include <string>

namespace {

std::string gText;

class RegistryTest : public testing::Test {
protected:
    void SetUp() override {
        gText.clear();
        mOld = KitSetWarningHandler([](int, const char* format, va_list args) {
            char line[300];
            std::vsnprintf(line, sizeof line, format, args);
            gText += line;
        });
    }
    void TearDown() override { KitSetWarningHandler(mOld); }

    DynsConstraintSolverRegistry& registry = DynsConstraintSolverRegistry::instance();

private:
    KitMessageHandler mOld = nullptr;
};

using DenseFactory = DynsConstraintSolverFactoryImpl<DenseEquationSolver>;

class BarrenFactory : public DynsConstraintSolverFactory {
public:
    using DynsConstraintSolverFactory::DynsConstraintSolverFactory;
    [[nodiscard]] const std::type_info& getRTTI() const override { return typeid(void); }

protected:
    constraint_solver* createImpl() override { return nullptr; }
};

} // namespace

TEST_F(RegistryTest, BuiltInsAndIdentifiers) {
    EXPECT_EQ(registry.getId("std_constraint_solver"), 0U);
    EXPECT_EQ(registry.getId("itr_constraint_solver"), 1U);
    EXPECT_EQ(registry.getFactory("std_constraint_solver")->getRTTI(),
              typeid(std_constraint_solver));
    EXPECT_EQ(gText, "");
    EXPECT_EQ(registry.getId("nothing"), DynsConstraintSolverRegistry::INVALID_ID);
    EXPECT_EQ(gText, "The name [nothing] is not the name of a valid constraint solver.\n");
    EXPECT_FALSE(registry.isIdValid(DynsConstraintSolverRegistry::INVALID_ID));
    EXPECT_EQ(registry.getFactory("nothing"), nullptr);
    registry.unregisterFactory(nullptr);
    registry.registerFactory(nullptr);
    EXPECT_EQ(registry.getFactories().size(), 2U);
}

TEST_F(RegistryTest, FactoryKnowsItsLivingSolvers) {
    const constraint_solver* left = nullptr;
    {
        DenseFactory factory("dense");
        const unsigned id = registry.getId("dense");
        EXPECT_GE(id, 2U);
        EXPECT_TRUE(registry.isIdValid(id));
        constraint_solver* first = factory.create();
        constraint_solver* second = factory.create();
        left = second;
        EXPECT_EQ(DynsConstraintSolverFactory::findFactoryCreatorOf(first), &factory);
        EXPECT_EQ(factory.getConstraintList().size(), 2U);
        delete first;
        EXPECT_EQ(factory.getConstraintList(), std::vector<constraint_solver*>{second});
        EXPECT_FALSE(factory.onConstraintSolverDestroyed(nullptr));
        DenseEquationSolver alone;
        EXPECT_EQ(DynsConstraintSolverFactory::findFactoryCreatorOf(&alone), nullptr);
    }
    EXPECT_EQ(DynsConstraintSolverFactory::findFactoryCreatorOf(left), nullptr);
    EXPECT_EQ(registry.getFactory("dense"), nullptr);
    EXPECT_EQ(gText, "");

    BarrenFactory barren("barren");
    EXPECT_EQ(barren.create(), nullptr);
    EXPECT_TRUE(barren.getConstraintList().empty());
}

TEST_F(RegistryTest, DuplicatesWarnAndShareTheIdentifier) {
    DenseFactory first("twin");
    const unsigned id = registry.getId("twin");
    {
        DenseFactory second("twin");
        EXPECT_EQ(gText,
                  "ConstraintSolverRegistry: Registering more than one factory with the name "
                  "\"twin\" causes undefined behavior.\n");
        EXPECT_EQ(registry.getFactory("twin"), &first);
    }
    EXPECT_EQ(registry.getId("twin"), id);
}

// A frame outlives the factories: what a late one makes is found, what an unloaded one made is gone.
TEST_F(RegistryTest, FramesFollowTheFactories) {
    std::vector<DynsBody> bodies(1, makeBody());
    DynsBody* pointer = &bodies[0];
    DynsConstraintFrames* frames = DynsConstraintFramesCreate(&KitMemoryAPI);
    const int one = 1, zero = 0;
    const auto solveWith = [&](unsigned id) {
        bodies[0] = makeBody();
        bodies[0].localIndex = bodies[0].localPartition = 0;
        DynsConstraintFramesResizeIfNeeded(frames, 0, 1, &one, &one, &one, &pointer, &zero, &zero,
                                           0);
        DynsConstraints& c = *DynsConstraintFramesGetFrame(frames, 0);
        DynsConstraintsReset(&c, 1, 1, 1);
        DynsParameters& p = *DynsConstraintFramesGetKiroParameters(frames, 0);
        p.stepsize = 0.5;
        p.ct_solver = id;
        MatrixX J = MatrixX::Zero(1, 6);
        J(0, 1) = 1;
        // The dense solver heeds no bounds, the built-in ones do.
        pushRows(c, {pointer}, J, {RowValues{.v0 = 3, .lower = -1, .upper = 1}});
        DynsStep(frames, 1);
        return bodies[0].accel[1];
    };
    EXPECT_DOUBLE_EQ(solveWith(0), 1);
    unsigned id = 0;
    {
        DenseFactory late("late");
        id = registry.getId("late");
        EXPECT_DOUBLE_EQ(solveWith(id), 6);
        EXPECT_EQ(late.getConstraintList().size(), 1U);
        late.destroyAll();
        EXPECT_DOUBLE_EQ(solveWith(id), 6);
    }
    EXPECT_DOUBLE_EQ(solveWith(id), 1);
    EXPECT_DOUBLE_EQ(solveWith(99), 1);
    DynsConstraintFramesDestroy(frames);
    EXPECT_EQ(gText, "");
}

// Last in this file: it uses up the identifiers of the process.
TEST_F(RegistryTest, IdentifiersEnd) {
    std::vector<std::unique_ptr<DenseFactory>> factories;
    for (int i = 0; i < 20; ++i)
        factories.push_back(std::make_unique<DenseFactory>("kind " + std::to_string(i)));
    EXPECT_NE(gText, "");
    EXPECT_EQ(registry.getFactory("kind 19"), nullptr);
    EXPECT_FALSE(registry.isIdValid(DynsConstraintSolverRegistry::kMaxCount));
    FrameParameters frame(0.01); // takes a solver of each kind that has an identifier
    factories.clear();
}
