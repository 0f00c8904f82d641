#include "IxPair.h"

#include <numbers>

namespace {

/// Speed with which the surface of a model can move along an axis beyond its centre's motion, m/s.
KitReal turningSpeed(const ColModel& model, KitReal reach) noexcept {
    const KitReal spin = lsVec3::constCast(model.angularVelocity).norm();
    return spin > 0 ? spin * (reach + model.mCOMOffset.norm()) : 0;
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
    const lsVec3 relative =
        lsVec3::constCast(model2.linearVelocity) - lsVec3::constCast(model1.linearVelocity);
    const KitReal closing =
        relative.dot(normal) + turningSpeed(model1, reach1) + turningSpeed(model2, reach2);
    const KitReal gap = separation - model1.mPadding - model2.mPadding;
    result->time = 0;
    if (gap > 0)
        result->time = closing * maxTime > gap ? gap / closing : maxTime;
}
