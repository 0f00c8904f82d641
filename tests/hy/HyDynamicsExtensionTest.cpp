#include "FrameFixture.h"

#include <Hy/HyConstraintRegistry.h>
#include <Hy/HyDynamicsExtensionContainer.h>
#include <Hy/HyDynamicsExtensionRegistry.h>
#include <Hy/HyDynamicsExtensionState.h>
#include <Hy/HyHinge.h>
#include <Hy/HyPart.h>
#include <Hy/HyUniverse.h>
#include <Hy/HyUniverseObserver.h>
#include <Hy/HyUniverseState.h>

#include <functional>
#include <memory>

using namespace Hy;

namespace {

std::string calls;

struct Counter : HyDynamicsExtension {
    struct State : HyDynamicsExtensionState {
        int count = 0;
    };
    ~Counter() override { calls += "~" + getName() + " "; }
    void preStep() override {
        calls += getName() + ".pre ";
        ++count;
        if (onPreStep)
            onPreStep();
    }
    void preCollision() override { calls += getName() + ".collide "; }
    void step() override { calls += getName() + ".step "; }
    void postStep() override { calls += getName() + ".post "; }
    HyDynamicsExtensionState* createStateImpl() override {
        auto* state = new State;
        state->count = count;
        return state;
    }
    void restoreStateImpl(HyDynamicsExtensionState* state) override {
        count = static_cast<State*>(state)->count;
    }
    void onUniverseChanged(HyUniverse* before, HyUniverse* now) override {
        calls += before ? (now ? "moves " : "leaves ") : "comes ";
    }

    int count = 0;
    std::function<void()> onPreStep;
};

struct Observer : HyUniverseObserver {
    void onExtensionAdded(HyDynamicsExtension* extension) override {
        calls += "+" + extension->getName() + " ";
    }
    void onExtensionRemoved(HyDynamicsExtension* extension) override {
        calls += "-" + extension->getName() + " ";
    }
};

struct Box : HyDynamicsExtensionContainer {
    const HyWalkedObjects<HyDynamicsExtension>& getExtensions() const override { return held; }
    bool addExtension(HyDynamicsExtension* extension) override {
        extension->setContainer(this);
        return held.insert(extension);
    }
    HyDynamicsExtension* removeExtension(HyDynamicsExtension* extension) override {
        extension->setContainer(nullptr);
        return held.erase(extension) ? extension : nullptr;
    }
    bool destroyExtension(HyDynamicsExtension*) override { return false; }
    void destroyExtensions() override {}

    HyWalkedObjects<HyDynamicsExtension> held;
};

struct Nothing : HyDynamicsExtensionFactory {
    using HyDynamicsExtensionFactory::HyDynamicsExtensionFactory;
    const std::type_info* getExtensionRTTI() const override { return nullptr; }
    HyDynamicsExtension* createExtensionImpl() override { return nullptr; }
};

struct Hinges : HyConstraintFactory {
    using HyConstraintFactory::HyConstraintFactory;
    const std::type_info* getConstraintRTTI() const override { return &typeid(HyHinge); }
    HyConstraint* createConstraintImpl() override { return new HyHinge; }
};

std::string take() {
    return std::exchange(calls, "");
}

Counter* make(const char* name) {
    auto* extension = new Counter;
    extension->setName(name);
    return extension;
}

using HyDynamicsExtensionTest = FrameFixture;

} // namespace

TEST_F(HyDynamicsExtensionTest, LivesInOneUniverseAndIsCalledAtItsStages) {
    HyUniverse& first = frame->getUniverse();
    HyUniverse second(10, 10, nullptr);
    Observer observer;
    first.registerObserver(&observer, false);
    Counter *a = make("a"), *b = make("b");
    take();
    EXPECT_TRUE(first.addExtension(b));
    EXPECT_TRUE(first.addExtension(a));
    EXPECT_FALSE(first.addExtension(a) || first.addExtension(nullptr));
    EXPECT_EQ(take(), "comes +b comes +a ");
    frame->step(); // in the order of creation
    EXPECT_EQ(take(), "a.pre b.pre a.collide b.collide a.step b.step a.post b.post ");

    a->onPreStep = [&] { first.destroyExtension(b); };
    frame->step();
    EXPECT_EQ(take(), "a.pre leaves -b ~b a.collide a.step a.post ");

    EXPECT_TRUE(second.addExtension(a));
    EXPECT_EQ(take(), "leaves -a comes ");
    EXPECT_EQ(a->getUniverse(), &second);
    EXPECT_TRUE(first.getExtensions().empty());
    EXPECT_EQ(first.removeExtension(a), nullptr);
    a->setUniverse(&second);
    EXPECT_EQ(take(), "");
    second.destroyExtensions();
    EXPECT_EQ(take(), "leaves ~a ");
}

TEST_F(HyDynamicsExtensionTest, StatesBelongToOneExtension) {
    HyUniverse& universe = frame->getUniverse();
    Counter *a = make("a"), *b = make("b");
    universe.addExtension(a);
    universe.addExtension(b);
    Box box;
    box.addExtension(b);
    frame->step();
    const std::unique_ptr<HyDynamicsExtensionState> ofB(b->createState());
    const std::unique_ptr<HyUniverseState> whole(universe.createState());
    EXPECT_EQ(ofB->mInstance.get(), b);
    frame->step();
    EXPECT_FALSE(a->restoreState(ofB.get()) || a->restoreState(nullptr));
    EXPECT_EQ(a->count, 2);
    whole->restore();
    EXPECT_EQ(a->count, 1);
    EXPECT_EQ(b->count, 2); // its container would restore it
    ofB->restore();
    EXPECT_EQ(b->count, 1);
    delete b;
    EXPECT_TRUE(box.held.empty());
    EXPECT_EQ(universe.getExtensions().size(), 1U);
    ofB->restore(); // nothing left to restore
    whole->restore();
    take();
}

TEST_F(HyDynamicsExtensionTest, FactoriesKnowWhatTheyMadeAndTakeItAlong) {
    auto& registry = HyDynamicsExtensionRegistry::instance();
    const std::size_t before = registry.getFactories().size();
    {
        HyDynamicsExtensionFactoryImpl<Counter> factory("counter"), again("counter");
        registry.registerFactory(&factory);
        registry.registerFactory(nullptr);
        EXPECT_EQ(registry.getFactories().size(), before + 2);
        EXPECT_EQ(registry.getFactory("counter"), &factory);
        EXPECT_EQ(*factory.getExtensionRTTI(), typeid(Counter));
        HyDynamicsExtension* one = factory.createExtension();
        HyDynamicsExtension* two = factory.createExtension();
        EXPECT_EQ(one->getFactory(), &factory);
        frame->getUniverse().addExtension(one);
        frame->getUniverse().addExtension(two);
        delete one;
        ASSERT_EQ(factory.getExtensions().size(), 1U);
        EXPECT_EQ(factory.getExtensions().at(0), two);
    }
    EXPECT_EQ(registry.getFactories().size(), before);
    EXPECT_TRUE(frame->getUniverse().getExtensions().empty());
    Nothing nothing("nothing");
    EXPECT_EQ(nothing.createExtension(), nullptr);
    EXPECT_TRUE(nothing.getExtensions().empty());

    Hinges hinges("hinges");
    HyConstraint* hinge = hinges.createConstraint();
    HyHinge byHand;
    EXPECT_EQ(HyConstraintRegistry::instance().getFactory("hinges"), &hinges);
    EXPECT_EQ(HyConstraintFactory::findFactoryCreatorOf(hinge), &hinges);
    EXPECT_EQ(HyConstraintFactory::findFactoryCreatorOf(&byHand), nullptr);
    frame->getUniverse().addConstraint(hinge);
    frame->getUniverse().destroyConstraint(hinge);
    EXPECT_TRUE(hinges.getConstraints().empty());
    frame->getUniverse().addConstraint(hinges.createConstraint());
    hinges.destroyAll();
    EXPECT_TRUE(frame->getUniverse().getConstraints().empty());
    take();
}
