#pragma once
#include <Hy/HyBaseUserData.h>

namespace Hy {
class HyDynamicsExtensionContainer;
class HyDynamicsExtensionFactory;
class HyDynamicsExtensionState;
class HyTransform;
class HyUniverse;

/// An application's behaviour that is no part, constraint or geometry: it lives in a universe, is
/// called at the stages of each step, and can save and restore what it holds.
///
/// Extensions of a universe are called in the order of their creation. One that is deleted leaves its
/// container, its universe and its factory by itself.
class HY_API HyDynamicsExtension : public HyClass<kHyDynamicsExtensionClassId, HyBaseUserData> {
public:
    HyDynamicsExtension() = default;
    ~HyDynamicsExtension() override;
    [[nodiscard]] const char* getClassName() const override { return "HyDynamicsExtension"; }

    // Hooks, which do nothing here. An extension may leave, or delete others, in any of them.

    /// At the start of a step, after the parts'.
    virtual void preStep() {}
    /// In each detection, so in each substep, after collision rules and before the broad phase.
    virtual void preCollision() {}
    /// In each detection, after contacts and update subscribers and before the solve.
    virtual void step() {}
    /// At the end of a step, after the parts'.
    virtual void postStep() {}
    /// The owner was moved as a whole.
    /// @param tm follows the poses so far, in the world
    virtual void transform(const HyTransform& tm);

    /// What the extension holds now, or null if its class captures nothing. Owned by the caller.
    [[nodiscard]] HyDynamicsExtensionState* createState();
    /// Brings a state back. False, and no change, for null or the state of another extension.
    bool restoreState(HyDynamicsExtensionState* state);

    /// Who made it, null for one made by hand.
    [[nodiscard]] HyDynamicsExtensionFactory* getFactory() const { return mFactory; }
    [[nodiscard]] HyUniverse* getUniverse() const { return mUniverse; }
    /// What holds it, null for none. A universe's snapshot leaves its state to that.
    [[nodiscard]] HyDynamicsExtensionContainer* getContainer() const { return mContainer; }

    /// For the universe, which calls it on entry and on leaving.
    void setUniverse(HyUniverse* universe);
    /// For the container.
    void setContainer(HyDynamicsExtensionContainer* container);

protected:
    /// A new state, of a class of its own where there is something to save.
    [[nodiscard]] virtual HyDynamicsExtensionState* createStateImpl();
    virtual void restoreStateImpl(HyDynamicsExtensionState* state);
    virtual void onUniverseChanged(HyUniverse* oldUniverse, HyUniverse* newUniverse);
    virtual void onContainerChanged(HyDynamicsExtensionContainer* oldContainer,
                                    HyDynamicsExtensionContainer* newContainer);

private:
    friend class HyDynamicsExtensionFactory;

    HyDynamicsExtensionFactory* mFactory = nullptr;
    HyUniverse* mUniverse = nullptr;
    HyDynamicsExtensionContainer* mContainer = nullptr;
};

} // namespace Hy
