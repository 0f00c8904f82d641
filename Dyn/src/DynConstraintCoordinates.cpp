#include <Dyn/DynConstraint.h>

#include "DynConstraintInternal.h"

#include <Dyn/DynWorld.h>
#include <Dync/DyncCoordinate.h>
#include <Kit/KitMessage.h>

#include <algorithm>
#include <cmath>
#include <span>

namespace {

std::span<DyncLimit> coordinatesOf(const DynBaseConstraint* c) {
    return {c->limits, static_cast<std::size_t>(c->iNumLimits)};
}

bool isLocked(const DyncLimit& limit) {
    return limit.currentControlState == kDynConstraintControlLockActive;
}

bool hasMovingStop(const DyncLimit& limit) {
    return limit.currentLimitState != kDynLimitInactive &&
           (limit.limit[0].velocity != 0 || limit.limit[1].velocity != 0);
}

bool hasMovingLock(const DyncLimit& limit) {
    return isLocked(limit) && limit.lock_velocity != 0;
}

KitReal bounded(KitReal position) {
    return std::clamp(position, -kKitInfinity, kKitInfinity);
}

// Stops that would cross stay where they are, both of them.
void moveStops(DynBaseConstraint* c, DyncLimit& limit, KitReal h) {
    DyncSingleLimit *stops = limit.limit, *last = stops + 1;
    KitReal lower = bounded(stops->stop + h * stops->velocity);
    KitReal upper = bounded(last->stop + h * last->velocity);
    if (isLocked(limit)) {
        lower = std::min(lower, limit.lock_position);
        upper = std::max(upper, limit.lock_position);
    }
    if (upper > lower) {
        stops->stop = lower;
        last->stop = upper;
    }
    const KitReal x = limit.position + limit.m_offset;
    if (x < stops->stop - kDyncStopTolerance || x > last->stop + kDyncStopTolerance)
        DynConstraintEnableBodies(c);
}

// The target comes to rest just inside a stop.
void moveLock(DynBaseConstraint* c, DyncLimit& limit, KitReal h) {
    limit.lock_position += h * limit.lock_velocity;
    DynConstraintEnableBodies(c); // however slowly it moves, the bodies must follow
    if (limit.currentLimitState == kDynLimitInactive)
        return;
    if (limit.lock_position < limit.limit[0].stop)
        limit.lock_position = limit.limit[0].stop + kDyncStopTolerance;
    else if (limit.lock_position > limit.limit[1].stop)
        limit.lock_position = limit.limit[1].stop - kDyncStopTolerance;
    else
        return;
    limit.lock_velocity = 0;
}

void registerForUpdate(DynBaseConstraint* c, bool wanted) {
    c->needKinematicUpdate = wanted;
    if (!DynConstraintIsEnabled(c))
        return;
    if (wanted)
        DynWorldAddKinematicConstraint(c->world, c);
    else
        DynWorldRemoveKinematicConstraint(c->world, c);
}

bool mayMove(const DynBaseConstraint* c) {
    return !c->merged && !DynConstraintIsLockedConstraint(c);
}

} // namespace

int DynConstraintGetLimitCount(const DynBaseConstraint* constraint) {
    return constraint->iNumLimits;
}

DyncLimit* DynConstraintGetIndexedLimit(const DynBaseConstraint* constraint, int index) {
    return index >= 0 && index < constraint->iNumLimits ? constraint->limits + index : nullptr;
}

KitReal DynConstraintComputeLimitPosition(const DynBaseConstraint* constraint,
                                          const DyncLimit* limit) {
    switch (limit->type) {
    case kDynLimitTypeLinear:
        return DyncConstraintGetLimitLinearPosition(*constraint, *limit);
    case kDynLimitTypeAngular:
        return DyncConstraintGetLimitRotationalPosition(*constraint, *limit);
    case kDynLimitTypeDistance:
        return DyncConstraintGetLimitDistancePosition(*constraint, *limit);
    }
    return 0;
}

KitReal DynConstraintComputeLimitVelocity(DynBaseConstraint* constraint, const DyncLimit* limit) {
    // Nobody tells a constraint that is not enabled of a body that freezes.
    if (!DynConstraintIsEnabled(constraint))
        DynConstraintBindBodies(constraint);
    return DyncConstraintLimitGetCurrentVelocity(*constraint, *limit);
}

void DynConstraintUpdateKinematic(DynBaseConstraint* constraint, KitReal h) {
    bool stopped = false;
    for (DyncLimit& limit : coordinatesOf(constraint)) {
        if (hasMovingStop(limit))
            moveStops(constraint, limit, h);
        if (hasMovingLock(limit)) {
            moveLock(constraint, limit, h);
            stopped |= limit.lock_velocity == 0;
        }
    }
    if (stopped)
        DynConstraintResetNeedKinematicUpdate(constraint);
}

void DynConstraintSetNeedKinematicUpdate(DynBaseConstraint* constraint) {
    registerForUpdate(constraint, mayMove(constraint));
}

// A record with kinematics of its own decides in its function.
void DynConstraintResetNeedKinematicUpdate(DynBaseConstraint* constraint) {
    const auto moves = [](const DyncLimit& limit) {
        return hasMovingLock(limit) || hasMovingStop(limit);
    };
    const std::span<DyncLimit> limits = coordinatesOf(constraint);
    registerForUpdate(constraint,
                      mayMove(constraint) &&
                          (constraint->updateKinematicFunction != DynConstraintUpdateKinematic ||
                           std::any_of(limits.begin(), limits.end(), moves)));
}

void DynConstraintSaveCoordinates(const DynBaseConstraint* constraint,
                                  DynConstraintCoordinates* saved) {
    DynConstraintCoordinates::Coordinate* to = saved->coordinates;
    for (const DyncLimit& limit : coordinatesOf(constraint))
        *to++ = {.position = limit.position,
                 .previous_position = limit.previous_position,
                 .lock_position = limit.lock_position,
                 .lock_velocity = limit.lock_velocity,
                 .stops = {limit.limit[0].stop, limit.limit[1].stop},
                 .control = limit.currentControlState,
                 .limitState = limit.currentLimitState};
    const DyncConstraintHeader& head = constraint->bclH;
    for (int k = 0; k < 6; ++k) {
        saved->frictionMaxForce[k] = head.friction[k].mMaxForce;
        saved->frictionRow[k] = head.friction[k].mLastStepRow;
    }
    std::copy(head.dynamic_flags, head.dynamic_flags + kDynsMaxConstraintRows,
              saved->dynamic_flags);
}

void DynConstraintRestoreCoordinates(DynBaseConstraint* constraint,
                                     const DynConstraintCoordinates& saved) {
    const DynConstraintCoordinates::Coordinate* from = saved.coordinates;
    for (DyncLimit& limit : coordinatesOf(constraint)) {
        limit.position = from->position;
        limit.previous_position = from->previous_position;
        limit.lock_position = from->lock_position;
        limit.lock_velocity = from->lock_velocity;
        for (int i = 0; i < 2; ++i)
            limit.limit[i].stop = from->stops[i];
        limit.currentControlState = from->control;
        limit.currentLimitState = from->limitState;
        ++from;
    }
    DyncConstraintHeader& head = constraint->bclH;
    for (int k = 0; k < 6; ++k) {
        if (head.friction[k].mProportional)
            head.friction[k].mMaxForce = saved.frictionMaxForce[k];
        head.friction[k].mLastStepRow = saved.frictionRow[k];
    }
    std::copy(saved.dynamic_flags, saved.dynamic_flags + kDynsMaxConstraintRows,
              head.dynamic_flags);
    DynConstraintResetNeedKinematicUpdate(constraint);
}

void DynConstraintResetDynamics(DynBaseConstraint* constraint) {
    for (int slot = 0; slot < kDynsMaxConstraintBodies; ++slot) {
        std::fill_n(constraint->resultForce[slot], 4, 0.0);
        std::fill_n(constraint->resultTorque[slot], 4, 0.0);
    }
    DyncConstraintHeader& head = constraint->bclH;
    std::fill(head.phi, head.phi + kDynsMaxConstraintRows, 0.0);
    std::fill(head.lambda, head.lambda + kDynsMaxConstraintRows + 1, 0.0);
    std::fill(head.dynamic_flags, head.dynamic_flags + kDynsMaxConstraintRows, 0);
    for (DyncLimit& limit : coordinatesOf(constraint)) {
        limit.position = limit.previous_position = 0;
        limit.velocity = DynConstraintComputeLimitVelocity(constraint, &limit);
        if (DyncLimitIsActive(limit)) // the record's position is what is read
            limit.position = DynConstraintComputeLimitPosition(constraint, &limit);
    }
    for (DyncFriction& friction : head.friction) {
        friction.mLastStepRow = 0;
        if (friction.mProportional)
            friction.mMaxForce = 0;
    }
}
