#include <Hy/HyConstraint.h>

#include <Dyn/DynConstraint.h>
#include <Dyn/DynLimit.h>
#include <Hy/HyMessage.h>

#include <cmath>

// The stops of coordinates.

namespace Hy {
namespace {

bool isStop(HyConstraint::LimitEnum limit, const char* operation) {
    if (limit == HyConstraint::kLimitLower || limit == HyConstraint::kLimitUpper)
        return true;
    HyWarning(0, "HyConstraint::%s: the limit must be one of LimitEnum.\n", operation);
    return false;
}

bool setAll(DyncSingleLimit* stop, HyReal position, HyReal velocity, HyReal restitution,
            HyReal stiffness, HyReal damping) {
    return DynSingleLimitSetStop(stop, position) && DynSingleLimitSetVelocity(stop, velocity) &&
           DynSingleLimitSetRestitution(stop, restitution) &&
           DynSingleLimitSetStiffness(stop, stiffness) && DynSingleLimitSetDamping(stop, damping);
}

const DyncSingleLimit* stopOf(const DyncLimit* limit, HyConstraint::LimitEnum which,
                              const char* operation) {
    return limit && isStop(which, operation) ? &limit->limit[which] : nullptr;
}

} // namespace

template <class Set>
void HyConstraint::changeStop(int i, LimitEnum which, const char* operation, Set set) {
    DyncLimit* limit = coordinateAt(i, operation);
    if (!limit || !isStop(which, operation))
        return;
    DyncSingleLimit stop = limit->limit[which];
    const HyReal velocity = stop.velocity;
    if (!set(&stop))
        return;
    if (which == kLimitLower)
        DynLimitSetLowerLimit(limit, &stop);
    else
        DynLimitSetUpperLimit(limit, &stop);
    if (stop.velocity != velocity)
        noteVelocity(stop.velocity);
    wakePartsIf(DynLimitAreLimitsActive(limit));
}

void HyConstraint::setLowerLimit(int i, HyReal position, HyReal velocity, HyReal restitution,
                                 HyReal stiffness, HyReal damping) {
    changeStop(i, kLimitLower, "setLowerLimit", [=](DyncSingleLimit* stop) {
        return setAll(stop, position, velocity, restitution, stiffness, damping);
    });
}

void HyConstraint::setUpperLimit(int i, HyReal position, HyReal velocity, HyReal restitution,
                                 HyReal stiffness, HyReal damping) {
    changeStop(i, kLimitUpper, "setUpperLimit", [=](DyncSingleLimit* stop) {
        return setAll(stop, position, velocity, restitution, stiffness, damping);
    });
}

void HyConstraint::setLimitPositions(int i, HyReal lower, HyReal upper) {
    if (!std::isfinite(lower) || !std::isfinite(upper)) {
        HyWarning(0, "HyConstraint::setLimitPositions: the positions must be finite.\n");
        return;
    }
    setLimitPosition(i, kLimitLower, lower);
    setLimitPosition(i, kLimitUpper, upper);
}

void HyConstraint::setLimitPosition(int i, LimitEnum limit, HyReal position) {
    changeStop(i, limit, "setLimitPosition",
               [=](DyncSingleLimit* stop) { return DynSingleLimitSetStop(stop, position); });
}

void HyConstraint::setLimitVelocity(int i, LimitEnum limit, HyReal velocity) {
    changeStop(i, limit, "setLimitVelocity",
               [=](DyncSingleLimit* stop) { return DynSingleLimitSetVelocity(stop, velocity); });
}

void HyConstraint::setLimitRestitution(int i, LimitEnum limit, HyReal restitution) {
    changeStop(i, limit, "setLimitRestitution", [=](DyncSingleLimit* stop) {
        return DynSingleLimitSetRestitution(stop, restitution);
    });
}

void HyConstraint::setLimitMaximumForce(int i, LimitEnum limit, HyReal force) {
    if (!(force > 0)) {
        HyWarning(0, "HyConstraint::setLimitMaximumForce: max force must be > 0\n");
        return;
    }
    changeStop(i, limit, "setLimitMaximumForce",
               [=](DyncSingleLimit* stop) { return DynSingleLimitSetMaxForce(stop, force); });
}

void HyConstraint::setLimitStiffness(int i, LimitEnum limit, HyReal stiffness) {
    changeStop(i, limit, "setLimitStiffness",
               [=](DyncSingleLimit* stop) { return DynSingleLimitSetStiffness(stop, stiffness); });
}

void HyConstraint::setLimitDamping(int i, LimitEnum limit, HyReal damping) {
    changeStop(i, limit, "setLimitDamping",
               [=](DyncSingleLimit* stop) { return DynSingleLimitSetDamping(stop, damping); });
}

HyReal HyConstraint::getLimitPosition(int i, LimitEnum limit) const {
    constexpr const char* kOperation = "getLimitPosition";
    const DyncSingleLimit* stop = stopOf(coordinateAt(i, kOperation), limit, kOperation);
    return stop ? stop->stop : 0;
}

HyReal HyConstraint::getLimitVelocity(int i, LimitEnum limit) const {
    constexpr const char* kOperation = "getLimitVelocity";
    const DyncSingleLimit* stop = stopOf(coordinateAt(i, kOperation), limit, kOperation);
    return stop ? stop->velocity : 0;
}

HyReal HyConstraint::getLimitRestitution(int i, LimitEnum limit) const {
    constexpr const char* kOperation = "getLimitRestitution";
    const DyncSingleLimit* stop = stopOf(coordinateAt(i, kOperation), limit, kOperation);
    return stop ? stop->restitution : 0;
}

HyReal HyConstraint::getLimitMaximumForce(int i, LimitEnum limit) const {
    constexpr const char* kOperation = "getLimitMaximumForce";
    const DyncSingleLimit* stop = stopOf(coordinateAt(i, kOperation), limit, kOperation);
    return stop ? stop->maxForce : 0;
}

HyReal HyConstraint::getLimitStiffness(int i, LimitEnum limit) const {
    constexpr const char* kOperation = "getLimitStiffness";
    const DyncSingleLimit* stop = stopOf(coordinateAt(i, kOperation), limit, kOperation);
    return stop ? DynSingleLimitGetStiffness(stop) : 0;
}

HyReal HyConstraint::getLimitDamping(int i, LimitEnum limit) const {
    constexpr const char* kOperation = "getLimitDamping";
    const DyncSingleLimit* stop = stopOf(coordinateAt(i, kOperation), limit, kOperation);
    return stop ? stop->damping : 0;
}

void HyConstraint::setLimitsActive(int i, bool active) {
    DyncLimit* limit = coordinateAt(i, "setLimitsActive");
    if (!limit || DynLimitAreLimitsActive(limit) == active)
        return;
    // From now on the record's position is what is read.
    if (active)
        limit->position = DynConstraintComputeLimitPosition(mConstraint, limit);
    DynLimitActivateLimits(limit, active);
    DynConstraintResetNeedKinematicUpdate(mConstraint);
    wakeParts();
}

bool HyConstraint::getLimitsActive(int i) const {
    const DyncLimit* limit = coordinateAt(i, "getLimitsActive");
    return limit && DynLimitAreLimitsActive(limit);
}

bool HyConstraint::isLimitExceeded(int i) const {
    const DyncLimit* limit = coordinateAt(i, "isLimitExceeded");
    return limit && limit->currentLimitState == kDynLimitExceeded;
}

bool HyConstraint::isLimitReached(int i, LimitEnum which, HyReal tolerance) const {
    const DyncLimit* limit = coordinateAt(i, "isLimitReached");
    if (!limit || !isStop(which, "isLimitReached") || !DynLimitAreLimitsActive(limit))
        return false;
    const HyReal beyond = getCoordinateCurrentPosition(i) - limit->limit[which].stop;
    return which == kLimitLower ? beyond <= tolerance : beyond >= -tolerance;
}

} // namespace Hy
