#include <Hy/HyPartState.h>

namespace Hy {

void HyPartState::restore() {
    if (mInstance.valid())
        mInstance->restoreState(this);
}

HyPartState* HyPart::createState() {
    auto* state = new HyPartState;
    state->mInstance = this;
    for (HyCollisionGeometry* geometry : mCollisionGeometries)
        state->mCollisionGeometries.emplace_back(geometry->createState());
    state->mTransform = getTransform();
    state->mLinearVelocity = getLinearVelocity();
    state->mAngularVelocity = getAngularVelocity();
    state->mControl = mControlType;
    state->mFrozen = mFreezeState;
    state->mDynamicsAwake = isDynamicsAwake();
    DynBodyGetPose(mDynBodyID, &state->mPose);
    state->mLinearAcceleration = getLinearAcceleration();
    state->mAngularAcceleration = getAngularAcceleration();
    state->mEnabledSteps = getEnabledSteps();
    return state;
}

bool HyPart::restoreState(const HyPartState* state) {
    if (!state || state->mInstance.get() != this)
        return false;
    for (const auto& geometry : state->mCollisionGeometries)
        if (geometry->mInstance.valid() && geometry->mInstance->getPart() == this)
            geometry->restore();
    setTransform(state->mTransform);
    if (state->mTransform == HyTransform(state->mPose.bodyTM)) // not edited meanwhile
        DynBodySetPose(mDynBodyID, state->mPose);
    setControl(state->mControl);
    freeze(state->mFrozen);
    resetDynamics();
    setLinearVelocity(state->mLinearVelocity);
    setAngularVelocity(state->mAngularVelocity);
    wakeDynamics(state->mDynamicsAwake);
    restoreActivity(*state);
    return true;
}

// A part that is moved by the application has none, and would wake its neighbours.
void HyPart::restoreActivity(const HyPartState& state) {
    if (!isDynamic())
        return;
    wakeDynamics(state.mDynamicsAwake);
    if (!isDynamicsAwake())
        return;
    DynBodySetAccelerations(mDynBodyID, state.mLinearAcceleration.v, state.mAngularAcceleration.v);
    setEnabledSteps(state.mEnabledSteps);
}

} // namespace Hy
