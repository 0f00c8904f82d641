#include "IxPair.h"

#include <cmath>
#include <numbers>

namespace {

/// Speed with which the surface of a model can move along an axis beyond its centre's motion, m/s.
KitReal turningSpeed(const ColModel& model, KitReal reach) noexcept {
    const KitReal spin = lsVec3::constCast(model.angularVelocity).norm();
    return spin > 0 ? spin * (reach + model.mCOMOffset.norm()) : 0;
}

lsVec3 accelerationOf(const ColModel& model) noexcept {
    return model.linearAcceleration ? lsVec3::constCast(model.linearAcceleration) : lsVec3();
}

/// First time t with speed t + acceleration t²/2 = gap > 0, at most maxTime.
KitReal closingTime(KitReal gap, KitReal speed, KitReal acceleration, KitReal maxTime) noexcept {
    const KitReal square = speed * speed + 2 * acceleration * gap;
    if (!(square >= 0) || (speed <= 0 && acceleration <= 0))
        return maxTime;
    const KitReal root = std::sqrt(square);
    const KitReal time = speed >= 0 ? 2 * gap / (speed + root) : (root - speed) / acceleration;
    return time < maxTime ? time : maxTime;
}

} // namespace

int IxWriteSingleContact(const ColModelPair& pair, ColIntersectResult* result,
                         const lsVec3& position, const lsVec3& normal, KitReal separation, int dims,
                         KitReal radius, KitReal eps) noexcept {
    result->normal = normal;
    result->contactCount = result->groupCount = 1;
    ColContact& contact = result->contacts[0];
    contact = ColContact{};
    contact.position = position;
    contact.normal = normal;
    contact.separation = separation;
    contact.dims = static_cast<std::int16_t>(dims);
    contact.surfaceIndex = kColSurfaceModel1;

    ColIntersectGroupResult& group = result->groupResult[0];
    group.contactCount = 1;
    group.normal = normal;
    group.surface = 1;
    if (pair.request->computeGroupContactSurface != 0) {
        const KitReal depth = std::min(std::max(-separation, eps), radius);
        group.surface = std::numbers::pi * depth * (2 * radius - depth);
    }
    return 1;
}

void IxSafeTime(const ColModelPair& pair, const lsVec3& normal, KitReal separation, KitReal reach1,
                KitReal reach2, KitReal maxTime, ColSafeTimeResult* result) noexcept {
    const ColModel &model1 = *pair.model1, &model2 = *pair.model2;
    const lsVec3 velocity =
        lsVec3::constCast(model2.linearVelocity) - lsVec3::constCast(model1.linearVelocity);
    const KitReal speed =
        velocity.dot(normal) + turningSpeed(model1, reach1) + turningSpeed(model2, reach2);
    const KitReal acceleration =
        normal.dot(accelerationOf(model2)) - normal.dot(accelerationOf(model1));
    const KitReal gap = separation - model1.mPadding - model2.mPadding;
    result->time = gap > 0 ? closingTime(gap, speed, acceleration, maxTime) : 0;
}
