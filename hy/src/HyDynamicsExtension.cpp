#include <Hy/HyDynamicsExtension.h>

#include <Hy/HyDynamicsExtensionContainer.h>
#include <Hy/HyDynamicsExtensionFactory.h>
#include <Hy/HyDynamicsExtensionState.h>
#include <Hy/HyUniverse.h>

#include <utility>

namespace Hy {

HyDynamicsExtension::~HyDynamicsExtension() {
    if (mContainer)
        mContainer->removeExtension(this);
    if (mUniverse)
        mUniverse->removeExtension(this);
    if (mFactory)
        mFactory->onExtensionDestroyed(this);
}

void HyDynamicsExtension::transform(const HyTransform&) {}

HyDynamicsExtensionState* HyDynamicsExtension::createState() {
    HyDynamicsExtensionState* state = createStateImpl();
    if (state && state->mInstance.get() != this)
        state->mInstance = this;
    return state;
}

bool HyDynamicsExtension::restoreState(HyDynamicsExtensionState* state) {
    if (!state || state->mInstance.get() != this)
        return false;
    restoreStateImpl(state);
    return true;
}

void HyDynamicsExtensionState::restore() {
    if (mInstance.valid())
        mInstance->restoreState(this);
}

void HyDynamicsExtension::setUniverse(HyUniverse* universe) {
    if (universe != mUniverse)
        onUniverseChanged(std::exchange(mUniverse, universe), universe);
}

void HyDynamicsExtension::setContainer(HyDynamicsExtensionContainer* container) {
    if (container != mContainer)
        onContainerChanged(std::exchange(mContainer, container), container);
}

HyDynamicsExtensionState* HyDynamicsExtension::createStateImpl() {
    return new HyDynamicsExtensionState;
}

void HyDynamicsExtension::restoreStateImpl(HyDynamicsExtensionState*) {}
void HyDynamicsExtension::onUniverseChanged(HyUniverse*, HyUniverse*) {}
void HyDynamicsExtension::onContainerChanged(HyDynamicsExtensionContainer*,
                                             HyDynamicsExtensionContainer*) {}

} // namespace Hy
