#include <Dync/DyncCoordinate.h>

#include <Dync/DyncConstraintParameters.h>
#include <Dync/DyncJointTags.h>

#include <cmath>
#include <numbers>

namespace {

constexpr KitReal kPi = std::numbers::pi;

/// Points nearer than this have no direction, m^2.
constexpr KitReal kMinSquaredLength = 1e-14;

/// For a coordinate about axis c of frame b: the axis of both frames that is compared, and its
/// neighbour in frame b that tells the sense.
constexpr int kComparedAxis[2][3] = {{1, 2, 0}, {2, 0, 1}};
constexpr int kSenseAxis[2][3] = {{2, 0, 1}, {1, 2, 0}};

struct AngleAxes {
    lsVec3 e, x, y;
};

AngleAxes angleAxes(const DyncLimit& limit, const lsTransform* w) {
    const int b = limit.bodyRef, c = limit.coord;
    return {w[1 - b].axis(kComparedAxis[b][c]), w[b].axis(kComparedAxis[b][c]),
            w[b].axis(kSenseAxis[b][c])};
}

/// The axes against which a double hinge measures the line between its points.
AngleAxes lineAxes(const DyncLimit& limit, const DyncWorldFrames& frames) {
    const KitReal length = frames.d01.norm();
    const lsVec3 u = length > 0 ? frames.d01 / length : lsVec3(1, 0, 0);
    return {u, frames.w[limit.bodyRef].axis(1), frames.w[limit.bodyRef].axis(2)};
}

KitReal angleOf(const AngleAxes& a) {
    return -std::atan2(a.e.dot(a.y), a.e.dot(a.x));
}

const lsVec3& axisOf(const DyncLimit& limit, const lsTransform* w) {
    return w[limit.bodyRef].axis(limit.coord);
}

KitReal orbitalSpeed(const DynBaseConstraint& c, const DyncLimit& limit,
                     const DyncWorldFrames& frames, KitReal radius, const lsVec3& r) {
    const lsVec3& axis = axisOf(limit, frames.w);
    KitReal speed = 0;
    if (c.bclH.velocity[limit.bodyRef] != nullptr)
        speed = lsVec3::constCast(c.bclH.velocity[limit.bodyRef][1]).dot(axis);
    if (radius * radius > kMinSquaredLength)
        speed -= DyncGetBodiesRelLinearVelocityAlong(c, frames.p, axis.cross(r)) / radius;
    return speed;
}

} // namespace

KitReal DyncWindAngle(KitReal theta, KitReal previous) {
    if (theta > previous + kPi)
        theta += 2 * kPi * (std::trunc((previous + kPi - theta) / (2 * kPi)) - 1);
    else if (previous > theta + kPi)
        theta += 2 * kPi * (std::trunc((previous - theta - kPi) / (2 * kPi)) + 1);
    return theta;
}

void DyncUpdateRotationalPosition(DyncLimit* limit, const lsVec3& e, const lsVec3& x,
                                  const lsVec3& y) {
    limit->previous_position = limit->position;
    limit->position = DyncWindAngle(angleOf({e, x, y}), limit->previous_position);
}

void DyncUpdateRotationalPosition(DyncLimit* limit, const lsTransform* w) {
    const AngleAxes a = angleAxes(*limit, w);
    DyncUpdateRotationalPosition(limit, a.e, a.x, a.y);
}

void DyncGetAxisOvershoot(DyncLimit* limit) {
    limit->overshoot = 0;
    if (limit->currentLimitState == kDynLimitInactive)
        return;
    limit->currentLimitState = kDynLimitActive;
    const KitReal x = limit->position + limit->m_offset;
    if (x < limit->limit[0].stop - kDyncStopTolerance)
        limit->overshoot = x - limit->limit[0].stop;
    else if (x > limit->limit[1].stop + kDyncStopTolerance)
        limit->overshoot = x - limit->limit[1].stop;
}

void DyncUpdateLinearLimit(const DynBaseConstraint& c, const DyncConstraintParameters*,
                           DyncLimit* limit, const lsTransform* w, const lsVec3* p,
                           const lsVec3& d01) {
    const lsVec3& axis = axisOf(*limit, w);
    limit->previous_position = limit->position;
    limit->position = axis.dot(d01);
    limit->velocity = DyncGetBodiesRelLinearVelocityAlong(c, p, axis);
    DyncGetAxisOvershoot(limit);
}

void DyncUpdateRotationalLimit(const DynBaseConstraint& c, const DyncConstraintParameters*,
                               DyncLimit* limit, const lsTransform* w) {
    limit->velocity = DyncGetBodiesRelAngularVelocityAbout(c, axisOf(*limit, w));
    DyncGetAxisOvershoot(limit);
}

void DyncUpdateOrbitalLimit(const DynBaseConstraint& c, const DyncConstraintParameters*,
                            DyncLimit* limit, const DyncWorldFrames& frames, KitReal radius,
                            const lsVec3& r) {
    limit->velocity = orbitalSpeed(c, *limit, frames, radius, r);
    DyncGetAxisOvershoot(limit);
}

bool DyncLimitUpdateControlState(DyncLimit* limit) {
    if (limit->currentControlState == kDynConstraintControlMotorActive &&
        limit->bMotorStopAtLock != 0) {
        const KitReal before = limit->lock_position - limit->previous_position - limit->m_offset;
        const KitReal now = limit->lock_position - limit->position - limit->m_offset;
        if (before * now <= 0)
            limit->currentControlState = kDynConstraintControlLockActive;
    }
    if (limit->currentLimitState != kDynLimitInactive && limit->overshoot != 0) {
        limit->currentLimitState = kDynLimitExceeded;
        return true;
    }
    return DyncLimitIsDriven(*limit);
}

void DyncSetRowFactorsToLock(DynsInputRowFactors* factors, const DyncConstraintParameters* params,
                             int row, const DyncLimit& limit) {
    DyncSetRowFactorsToSpring(factors, params, row, limit.lock_compliance, limit.lock_damping,
                              limit.position + limit.m_offset - limit.lock_position,
                              limit.lock_fmin, limit.lock_fmax);
    factors->v0[row] = limit.lock_velocity;
}

void DyncSetRowFactorsToSpring(DynsInputRowFactors* factors, const DyncConstraintParameters* params,
                               int row, KitReal compliance, KitReal damping, KitReal stretch,
                               KitReal lower, KitReal upper) {
    const DyncSoftness softness = DyncSoftnessFromCompliance(compliance, damping, params->stepsize);
    factors->phi[row] = stretch;
    factors->v0[row] = 0;
    factors->lower[row] = softness.acts ? lower : 0;
    factors->upper[row] = softness.acts ? upper : 0;
    factors->xepsilon[row] = softness.epsilon;
    factors->xgamma[row] = softness.gamma;
    factors->flags[row] |= kDynsRowOwnSoftness;
}

void DyncSetRowFactorsToMotor(DynsInputRowFactors* factors, const DyncConstraintParameters* params,
                              int row, const DyncLimit& limit) {
    /// Part of the way to a stop that a motor makes in one step.
    constexpr KitReal kApproach = 0.9;
    const KitReal desired = limit.motor_desired_vel;
    KitReal target = desired;
    if (limit.currentLimitState != kDynLimitInactive) {
        const KitReal x = limit.position + limit.m_offset;
        const KitReal next = x + desired * params->stepsize;
        if (next < limit.limit[0].stop + kDyncStopTolerance)
            target = (limit.limit[0].stop - x) * kApproach * params->h_inv;
        else if (next > limit.limit[1].stop - kDyncStopTolerance)
            target = (limit.limit[1].stop - x) * kApproach * params->h_inv;
        if (target * desired <= 0)
            target = 0;
    }
    factors->phi[row] = 0;
    factors->v0[row] = target;
    factors->lower[row] = limit.motor_fmin;
    factors->upper[row] = limit.motor_fmax;
    factors->xepsilon[row] = limit.motor_loss * params->h_inv;
    factors->xgamma[row] = 0;
    factors->flags[row] = (factors->flags[row] & ~(kDynsRowPosition | kDynsRowVelocity)) |
                          kDynsRowVelocity | kDynsRowOwnSoftness;
}

void DyncSetRowFactorsToLimitBounce(DynsInputRowFactors* factors,
                                    const DyncConstraintParameters* params, int row,
                                    const DyncLimit& limit) {
    const bool atLower = limit.overshoot < 0;
    const DyncSingleLimit& stop = limit.limit[atLower ? 0 : 1];
    const bool motorized = limit.currentControlState == kDynConstraintControlMotorActive;
    const bool acts = limit.overshoot != 0 && stop.compliance >= 0 &&
                      DyncSoftnessFromCompliance(stop.compliance, stop.damping, 1).acts;
    if (!acts && motorized) {
        DyncLimit free = limit; // the motor turns as if the stop were not there
        free.currentLimitState = kDynLimitInactive;
        DyncSetRowFactorsToMotor(factors, params, row, free);
        return;
    }
    const KitReal most = acts ? stop.maxForce : 0;
    DyncSetRowFactorsToSpring(factors, params, row, acts ? stop.compliance : 0, stop.damping,
                              limit.overshoot, atLower ? 0 : -most, atLower ? most : 0);
    // A coordinate that moves on past the stop leaves it with a part of its closing speed.
    factors->v0[row] = stop.velocity;
    const KitReal closing = (limit.velocity - stop.velocity) * stop.restitution;
    if (limit.overshoot * closing >= 0)
        factors->v0[row] = stop.velocity - closing;
    if (!motorized)
        return;
    // One row carries the stop and the motor.
    const bool pushesIn = atLower ? limit.motor_desired_vel <= 0 : limit.motor_desired_vel >= 0;
    if (!pushesIn) {
        factors->v0[row] = limit.motor_desired_vel;
        factors->lower[row] = std::min(-stop.maxForce, limit.motor_fmin);
        factors->upper[row] = std::max(stop.maxForce, limit.motor_fmax);
    } else if (atLower) {
        factors->lower[row] = limit.motor_fmin;
        factors->upper[row] = stop.maxForce;
    } else {
        factors->lower[row] = -stop.maxForce;
        factors->upper[row] = limit.motor_fmax;
    }
}

void DyncLimitSetDriver(DynsInputRowFactors* factors, const DyncConstraintParameters* params,
                        int row, DyncLimit* limit) {
    limit->lastStepRow = row;
    if (limit->currentLimitState == kDynLimitExceeded)
        DyncSetRowFactorsToLimitBounce(factors, params, row, *limit);
    else if (limit->currentControlState == kDynConstraintControlLockActive)
        DyncSetRowFactorsToLock(factors, params, row, *limit);
    else if (limit->currentControlState == kDynConstraintControlMotorActive)
        DyncSetRowFactorsToMotor(factors, params, row, *limit);
}

bool DyncLimitIsDriven(const DyncLimit& limit) {
    return limit.currentControlState == kDynConstraintControlMotorActive ||
           limit.currentControlState == kDynConstraintControlLockActive;
}

bool DyncLimitIsActive(const DyncLimit& limit) {
    return limit.currentLimitState != kDynLimitInactive || DyncLimitIsDriven(limit) ||
           limit.bForceCalculatePosition != 0;
}

int DyncAddCoordinate(DynsInputRowFactors* factors, DyncRowBlock& G, int row,
                      const DynBaseConstraint& c, const DyncConstraintParameters* params,
                      const DyncWorldFrames& frames, DyncLimit* limit, int rowLimit) {
    if (!DyncLimitIsActive(*limit))
        return 0;
    const lsVec3& axis = axisOf(*limit, frames.w);
    if (limit->type == kDynLimitTypeAngular) {
        DyncUpdateRotationalPosition(limit, frames.w);
        DyncUpdateRotationalLimit(c, params, limit, frames.w);
        return DyncAddDrivenRows(factors, row, params, limit, rowLimit,
                                 [&](int at) { DyncSetAxialConstraint(factors, G, at, axis, 1); });
    }
    DyncUpdateLinearLimit(c, params, limit, frames.w, frames.p, frames.d01);
    return DyncAddDrivenRows(factors, row, params, limit, rowLimit, [&](int at) {
        DyncSetDot2Constraint(factors, G, at, frames.d01, axis, frames.p, limit->bodyRef, 1);
    });
}

KitReal DyncConstraintGetLimitLinearPosition(const DynBaseConstraint& c, const DyncLimit& limit) {
    const DyncWorldFrames frames = DyncGetWorldFrames(c);
    return axisOf(limit, frames.w).dot(frames.d01);
}

KitReal DyncConstraintGetLimitRotationalPosition(const DynBaseConstraint& c,
                                                 const DyncLimit& limit) {
    const DyncWorldFrames frames = DyncGetWorldFrames(c);
    const AngleAxes axes =
        c.bclH.tag == kDynTagDoubleHinge ? lineAxes(limit, frames) : angleAxes(limit, frames.w);
    return DyncWindAngle(angleOf(axes), limit.position);
}

KitReal DyncConstraintGetLimitDistancePosition(const DynBaseConstraint& c, const DyncLimit&) {
    return DyncGetWorldFrames(c).d01.norm();
}

KitReal DyncConstraintLimitGetCurrentVelocity(const DynBaseConstraint& c, const DyncLimit& limit) {
    const DyncWorldFrames frames = DyncGetWorldFrames(c);
    const KitReal length = frames.d01.norm();
    switch (limit.type) {
    case kDynLimitTypeLinear:
        return DyncGetBodiesRelLinearVelocityAlong(c, frames.p, axisOf(limit, frames.w));
    case kDynLimitTypeAngular:
        if (c.bclH.tag == kDynTagDoubleHinge && limit.bodyRef == 0)
            return orbitalSpeed(c, limit, frames, length, lineAxes(limit, frames).e);
        return DyncGetBodiesRelAngularVelocityAbout(c, axisOf(limit, frames.w));
    case kDynLimitTypeDistance: {
        if (length * length <= kMinSquaredLength)
            return 0;
        const lsVec3 none[2]; // the speed of the centres of mass, as the distance has no arm
        return DyncGetBodiesRelLinearVelocityAlong(c, none, frames.d01 / length);
    }
    }
    return 0;
}
