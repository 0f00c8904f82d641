#include <Dyn/DynConeLimit.h>

#include "DynChecks.h"

#include <Dync/DyncJointTags.h>
#include <Kit/KitMessage.h>

#include <algorithm>
#include <cmath>

DynConeLimit* DynConeLimitCreateInPool(KitPool* pool) {
    return static_cast<DynConeLimit*>(DynConstraintCreateInPool(pool, kDynTagConeLimit));
}

void DynConeLimitSetConeHalfAngle(DynConeLimit* joint, KitReal angle) {
    if (!DynCheckNumber(angle, "DynConeLimitSetConeHalfAngle"))
        return;
    joint->cone_half_angle = angle;
    joint->cosine = std::cos(angle);
}

KitReal DynConeLimitGetConeHalfAngle(const DynConeLimit* joint) {
    return joint->cone_half_angle;
}

void DynConeLimitSetStiffness(DynConeLimit* joint, KitReal stiffness) {
    if (!(stiffness > 0) || !std::isfinite(stiffness)) {
        KitWarning(12, "DynConeLimitSetStiffness: stiffness must be finite and above 0.\n");
        return;
    }
    joint->cone_compliance = stiffness == kKitInfinity ? 0 : std::min(1 / stiffness, kKitInfinity);
}

KitReal DynConeLimitGetStiffness(const DynConeLimit* joint) {
    return joint->cone_compliance == 0 ? kKitInfinity
                                       : std::min(1 / joint->cone_compliance, kKitInfinity);
}

void DynConeLimitSetDamping(DynConeLimit* joint, KitReal damping) {
    if (!(damping >= 0) || !std::isfinite(damping)) {
        KitWarning(12, "DynConeLimitSetDamping: damping must be finite and not negative.\n");
        return;
    }
    joint->cone_damping = damping;
}

KitReal DynConeLimitGetDamping(const DynConeLimit* joint) {
    return joint->cone_damping;
}
