#pragma once
#include <Dync/DyncConstraintParameters.h>
#include <Dync/DyncFrames.h>
#include <Dync/DyncLimit.h>
#include <Dync/DyncRows.h>
#include <Dync/DyncSoftness.h>
#include <Kit/KitApi.h>

/// The driver of coordinates: where a coordinate stands, whether it needs a row, and what the row
/// asks for. Linear positions are in m along the axis `coord` of frame `bodyRef`, angular ones in rad
/// about it and wound up over full turns.

/// A coordinate comes back to its stop from farther than this, m or rad.
constexpr KitReal kDyncStopTolerance = 1e-14;

/// Position along the axis, its speed, and the overshoot.
HY_API void DyncUpdateLinearLimit(const DynBaseConstraint& c,
                                  const DyncConstraintParameters* params, DyncLimit* limit,
                                  const lsTransform* w, const lsVec3* p, const lsVec3& d01);
/// Angular speed about the axis, and the overshoot; the position is up to date already.
HY_API void DyncUpdateRotationalLimit(const DynBaseConstraint& c,
                                      const DyncConstraintParameters* params, DyncLimit* limit,
                                      const lsTransform* w);
/// Speed of the angle of the unit vector r, which joins the attachments at distance radius, seen from
/// the frame of the coordinate; and the overshoot.
HY_API void DyncUpdateOrbitalLimit(const DynBaseConstraint& c,
                                   const DyncConstraintParameters* params, DyncLimit* limit,
                                   const DyncWorldFrames& frames, KitReal radius, const lsVec3& r);
/// Winds the angle -atan2(e y, e x) up against the position of the last step.
HY_API void DyncUpdateRotationalPosition(DyncLimit* limit, const lsVec3& e, const lsVec3& x,
                                         const lsVec3& y);
/// The angle of an angular coordinate from the frames, wound up.
HY_API void DyncUpdateRotationalPosition(DyncLimit* limit, const lsTransform* w);
/// theta plus the full turns that keep it within half a turn of the previous one.
[[nodiscard]] HY_API KitReal DyncWindAngle(KitReal theta, KitReal previous);
/// Distance past the stop, and the state active or exceeded that follows.
HY_API void DyncGetAxisOvershoot(DyncLimit* limit);

/// Turns a motor that has passed its lock target into a lock; answers whether the coordinate needs a
/// row.
HY_API bool DyncLimitUpdateControlState(DyncLimit* limit);
/// What the coordinate's row asks for: stop, lock or motor, in this order.
HY_API void DyncLimitSetDriver(DynsInputRowFactors* factors, const DyncConstraintParameters* params,
                               int row, DyncLimit* limit);
HY_API void DyncSetRowFactorsToLock(DynsInputRowFactors* factors,
                                    const DyncConstraintParameters* params, int row,
                                    const DyncLimit& limit);
HY_API void DyncSetRowFactorsToMotor(DynsInputRowFactors* factors,
                                     const DyncConstraintParameters* params, int row,
                                     const DyncLimit& limit);
HY_API void DyncSetRowFactorsToLimitBounce(DynsInputRowFactors* factors,
                                           const DyncConstraintParameters* params, int row,
                                           const DyncLimit& limit);
HY_API void DyncSetRowFactorsToSpring(DynsInputRowFactors* factors,
                                      const DyncConstraintParameters* params, int row,
                                      KitReal compliance, KitReal damping, KitReal stretch,
                                      KitReal lower, KitReal upper);

/// True if a motor or a lock acts on the coordinate; no other control has a row.
[[nodiscard]] HY_API bool DyncLimitIsDriven(const DyncLimit& limit);
/// True if the coordinate is to be looked at in this step.
[[nodiscard]] HY_API bool DyncLimitIsActive(const DyncLimit& limit);
/// The rows of an active linear or angular coordinate: none, one, or two where a stop is exceeded and
/// the coordinate is locked. No row is written at or behind `rowLimit`.
HY_API int DyncAddCoordinate(DynsInputRowFactors* factors, DyncRowBlock& G, int row,
                             const DynBaseConstraint& c, const DyncConstraintParameters* params,
                             const DyncWorldFrames& frames, DyncLimit* limit,
                             int rowLimit = kDynsMaxConstraintRows);
/// Writes rows for a coordinate whose position and overshoot are up to date; writeAxis(row) writes
/// the Jacobian.
template <typename WriteAxis>
int DyncAddDrivenRows(DynsInputRowFactors* factors, int row, const DyncConstraintParameters* params,
                      DyncLimit* limit, int rowLimit, WriteAxis writeAxis) {
    if (!DyncLimitUpdateControlState(limit) || row >= rowLimit)
        return 0;
    const auto drive = [&](int at) {
        writeAxis(at);
        factors->flags[at] |= kDynsRowOwnSoftness;
        DyncLimitSetDriver(factors, params, at, limit);
    };
    drive(row);
    const bool lockBesideStop = limit->currentLimitState == kDynLimitExceeded &&
                                limit->currentControlState == kDynConstraintControlLockActive;
    if (!lockBesideStop || row + 1 >= rowLimit)
        return 1;
    limit->currentLimitState = kDynLimitActive;
    drive(row + 1);
    limit->currentLimitState = kDynLimitExceeded;
    return 2;
}

// Readers for the layers above: they compute from the present poses and leave the record alone.
[[nodiscard]] HY_API KitReal DyncConstraintGetLimitLinearPosition(const DynBaseConstraint& c,
                                                                  const DyncLimit& limit);
[[nodiscard]] HY_API KitReal DyncConstraintGetLimitRotationalPosition(const DynBaseConstraint& c,
                                                                      const DyncLimit& limit);
[[nodiscard]] HY_API KitReal DyncConstraintGetLimitDistancePosition(const DynBaseConstraint& c,
                                                                    const DyncLimit& limit);
[[nodiscard]] HY_API KitReal DyncConstraintLimitGetCurrentVelocity(const DynBaseConstraint& c,
                                                                   const DyncLimit& limit);
