#include <Col/ColCompositeModel.h>
#include <Col/ColMessage.h>
#include <Col/ColModelFunctions.h>
#include "ColMovedPair.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace {
constexpr KitReal kIntegratorEpsilon = 0.0001; ///< s

/// Farthest that a point within R of the pivot leaves its chord while turning by theta, m. An
/// endless geometry has no radius, and its box needs no help.
KitReal sagitta(KitReal radius, KitReal theta) {
    if (!(theta > 0) || !(radius < kKitInfinity))
        return 0;
    return theta >= std::numbers::pi ? 2 * radius : radius * (1 - std::cos(0.5 * theta));
}

bool hasVelocities(const ColModel& model) {
    return model.linearVelocity && model.angularVelocity;
}
} // namespace

KitReal ColModelStrayDistance(const ColModel& model, KitReal duration) {
    if (!hasVelocities(model))
        return 0;
    const KitReal theta = lsVec3::constCast(model.angularVelocity).norm() * std::abs(duration);
    lsVec3 centre;
    KitReal radius = 0;
    if (theta > 0)
        ColGeometryGetBSphere(model.mGeometry, &centre, &radius);
    const KitReal reach = (centre + model.mCOMOffset).norm() + radius;
    const KitReal bend =
        model.linearAcceleration
            ? lsVec3::constCast(model.linearAcceleration).norm() * duration * duration / 8
            : 0;
    return sagitta(reach, theta) + bend;
}

void ColModelGetAABB(ColModel* model, lsVec3* minCorner, lsVec3* maxCorner) {
    if (!model) {
        ColMistake(kColErrorModel, " in ColModelGetAABB.");
        return;
    }
    ColModelUpdate(model);
    if (ColModelIsComposite(model) && model->mGlobalTM)
        ColCompositeModelUpdateTransform(model);
    if (model->mGeometry)
        ColGeometryGetAABB(model->mGeometry, model->mGlobalTM, minCorner, maxCorner,
                           model->mBounds);
}

void ColModelGetPathAABB(ColModel* model, lsVec3* minCorner, lsVec3* maxCorner,
                         KitReal motionDuration) {
    ColModelGetAABB(model, minCorner, maxCorner);
    if (!model || !model->mGeometry || !model->mGlobalTM || !model->mFastMoving ||
        !hasVelocities(*model) || !(std::abs(motionDuration) > 0))
        return;
    lsTransform end;
    ColModelExtrapolateTransform(model, motionDuration, &end);
    lsVec3 endMin, endMax;
    ColGeometryGetAABB(model->mGeometry, &end, &endMin, &endMax, nullptr);
    const KitReal stray = ColModelStrayDistance(*model, motionDuration);
    for (int i = 0; i < 3; ++i) {
        (*minCorner)[i] = std::min((*minCorner)[i], endMin[i]) - stray;
        (*maxCorner)[i] = std::max((*maxCorner)[i], endMax[i]) + stray;
    }
}

void ColConvertBounds(const KitReal* bounds, lsVec3* minCorner, lsVec3* maxCorner) {
    for (int i = 0; i < 3; ++i) {
        (*minCorner)[i] = bounds[2 * i];
        (*maxCorner)[i] = bounds[2 * i + 1];
    }
}

void ColModelGetBSphere(const ColModel* model, lsVec3* centre, KitReal* radius) {
    if (!model || !model->mGeometry) {
        ColMistake(kColErrorModel, " in ColModelGetBSphere.");
        return;
    }
    ColGeometryGetBSphere(model->mGeometry, centre, radius);
    if (model->mGlobalTM)
        *centre = model->mGlobalTM->transform(*centre);
}

bool ColModelExtrapolateTransform(const ColModel* model, KitReal time, lsTransform* out) {
    if (!model || !model->mGlobalTM) {
        ColMistake(model ? kColErrorTransform : kColErrorModel,
                   " in ColModelExtrapolateTransform.");
        return false;
    }
    if (!hasVelocities(*model)) {
        *out = *model->mGlobalTM;
        return false;
    }
    const KitReal* acceleration =
        model->linearAcceleration ? model->linearAcceleration : ColDefault0Velocity;
    const lsVec3 centreOfMass = -model->mCOMOffset;
    KitMatrix4TMUpdateFromVelocitiesAndLinearAccelAroundCOM(
        out->matrix(), kIntegratorEpsilon, time, model->linearVelocity, acceleration,
        model->angularVelocity, centreOfMass.v, model->mGlobalTM->matrix(), nullptr);
    return true;
}
