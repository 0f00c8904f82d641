#include <Hy/HyConstraintState.h>

#include <Dyn/DynConstraint.h>
#include <Dyn/DynLimit.h>

#include <algorithm>
#include <memory>

namespace Hy {
namespace {

HyConstraintState::Coordinate captured(const HyConstraint& constraint, const DyncLimit& limit,
                                       int i) {
    HyConstraintState::Coordinate state;
    state.mLimited = DynLimitAreLimitsActive(&limit);
    state.mLowerLimit = limit.limit[0].stop;
    state.mUpperLimit = limit.limit[1].stop;
    state.mLowerLimitVel = limit.limit[0].velocity;
    state.mUpperLimitVel = limit.limit[1].velocity;
    state.mControl = constraint.getControl(i);
    state.mLock = limit.lock_position;
    state.mLockVel = limit.lock_velocity;
    state.mMotorVel = limit.motor_desired_vel;
    state.mPosition = constraint.getCoordinateCurrentPosition(i);
    state.mInternalPosition = limit.position;
    state.mOffset = limit.m_offset;
    return state;
}

HyConstraintState::Attachment captured(const HyConstraint& constraint, int i) {
    HyConstraintState::Attachment state;
    state.mPart = constraint.getPart(i);
    state.mPositionRel = constraint.getPartAttachmentPositionRel(i);
    constraint.getPartAttachmentAxesRel(i, state.mPrimaryAxisRel, state.mSecondaryAxisRel);
    state.mFrame = HyTransform(constraint.getDynConstraint()->bclH.ref[i]);
    return state;
}

bool isSame(const HyConstraintState::Attachment& a, const HyConstraintState::Attachment& b) {
    return a.mPositionRel == b.mPositionRel && a.mPrimaryAxisRel == b.mPrimaryAxisRel &&
           a.mSecondaryAxisRel == b.mSecondaryAxisRel;
}

} // namespace

void HyConstraintState::restore() {
    if (mInstance.valid())
        mInstance->restoreState(this);
}

HyConstraintState* HyConstraint::createStateImpl() {
    return new HyConstraintState;
}

void HyConstraint::restoreStateImpl(const HyConstraintState&) {}

HyConstraintState* HyConstraint::createState() {
    HyConstraintState* state = createStateImpl();
    state->mInstance = this;
    state->mEnabled = mEnabled;
    for (int i = 0; i < getMaxPartCount(); ++i)
        state->mAttachments.push_back(captured(*this, i));
    for (int i = 0; i < getCoordinateCount(); ++i)
        state->mCoordinates.push_back(captured(*this, *silentCoordinateAt(i), i));
    DynConstraintSaveCoordinates(mConstraint, &state->mStep);
    return state;
}

bool HyConstraint::restoreState(const HyConstraintState* state) {
    if (!state || state->mInstance.get() != this)
        return false;
    resetDynamics();
    restoreCoordinates(*state);
    enable(state->mEnabled);
    restoreAttachments(*state);
    restoreStateImpl(*state);
    return true;
}

void HyConstraint::restoreCoordinates(const HyConstraintState& state) {
    const int n = std::min(getCoordinateCount(), static_cast<int>(state.mCoordinates.size()));
    DynConstraintRestoreCoordinates(mConstraint, state.mStep);
    for (int i = 0; i < n; ++i) {
        const HyConstraintState::Coordinate& from = state.mCoordinates[static_cast<std::size_t>(i)];
        setLimitsActive(i, from.mLimited);
        if (from.mLimited) {
            setLimitPositions(i, from.mLowerLimit, from.mUpperLimit);
            setLimitVelocity(i, kLimitLower, from.mLowerLimitVel);
            setLimitVelocity(i, kLimitUpper, from.mUpperLimitVel);
        }
        setControl(i, from.mControl);
        setLockPosition(i, from.mLock);
        setLockVelocity(i, from.mLockVel);
        setMotorDesiredVelocity(i, from.mMotorVel);
        setCoordinateOffset(i, from.mOffset);
        DyncLimit* limit = silentCoordinateAt(i);
        limit->position = from.mInternalPosition;
    }
}

// What was not edited meanwhile is written back to the bit.
void HyConstraint::restoreAttachments(const HyConstraintState& state) {
    const int n = std::min(getMaxPartCount(), static_cast<int>(state.mAttachments.size()));
    for (int i = 0; i < n; ++i) {
        const HyConstraintState::Attachment& from = state.mAttachments[static_cast<std::size_t>(i)];
        if (getPart(i) != from.mPart.get())
            setPart(i, from.mPart.get());
        KitMatrix4& ref = mConstraint->bclH.ref[i];
        const HyTransform before(ref);
        KitMatrix4Copy(ref, from.mFrame.m);
        if (isSame(captured(*this, i), from))
            continue;
        KitMatrix4Copy(ref, before.m);
        setPartAndAttachmentRel(i, from.mPart.get(), from.mPositionRel, from.mPrimaryAxisRel,
                                &from.mSecondaryAxisRel);
    }
}

} // namespace Hy
