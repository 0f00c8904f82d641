#include <Col/ColCapsule.h>

#include "PrimitiveGeometry.h"

#include <algorithm>
#include <numbers>

namespace {

int gCapsuleTypeId = -1;

const ColCapsule& capsuleOf(const ColGeometry* g) {
    return *static_cast<const ColCapsule*>(g);
}

bool isValid(KitReal radius, KitReal height) {
    return ColIsLength(radius) && height >= 0 && std::isfinite(height);
}

void storeDimensions(ColCapsule* capsule, KitReal radius, KitReal height) {
    capsule->radius = radius;
    capsule->halfHeight = height / 2;
    capsule->mBoundingRadius = radius + height / 2;
}

void destroy(ColGeometry* g) {
    delete static_cast<ColCapsule*>(g);
}

template <int kAxes>
void getAABB(const ColGeometry* g, const lsTransform* tm, lsVec3* minCorner, lsVec3* maxCorner,
             KitReal* boundsOut) {
    const lsTransform& frame = ColTransformOrIdentity(tm);
    const ColCapsule& capsule = capsuleOf(g);
    const auto extent = [&](int i) {
        return std::abs(frame.row[2][i]) * capsule.halfHeight + capsule.radius;
    };
    ColStoreSymmetricBounds<kAxes>(frame, extent, minCorner, maxCorner, boundsOut);
}

void getBSphere(const ColGeometry* g, lsVec3* centre, KitReal* radius) {
    *centre = lsVec3();
    *radius = capsuleOf(g).mBoundingRadius;
}

void maximumPoint(const ColGeometry* g, const lsTransform* tm, const lsVec3& direction,
                  lsVec3* point) {
    const lsTransform& frame = ColTransformOrIdentity(tm);
    lsVec3 unit = direction;
    if (!(unit.normalize() > 0))
        unit = frame.axis(2);
    const KitReal h = capsuleOf(g).halfHeight;
    *point = frame.t() + (frame.axis(2).dot(unit) < 0 ? -h : h) * frame.axis(2) +
             capsuleOf(g).radius * unit;
}

// A cylinder and two half balls, whose centres of mass lie 3/8 of the radius beyond its ends.
bool getMassProperties(const ColGeometry* g, ColMassProperties* out) {
    const KitReal r = capsuleOf(g).radius, h = capsuleOf(g).halfHeight;
    const KitReal cylinder = 2 * std::numbers::pi * r * r * h;
    const KitReal ball = 4.0 / 3.0 * std::numbers::pi * r * r * r;
    const KitReal inertiaX =
        cylinder * (r * r / 4 + h * h / 3) + ball * (0.4 * r * r + h * h + 0.75 * h * r);
    const KitReal inertiaZ = cylinder * r * r / 2 + ball * 0.4 * r * r;
    ColStoreRevolvedMass(out, cylinder + ball, 0, inertiaX, inertiaZ);
    return true;
}

bool getPointInVolume(const ColGeometry* g, const lsTransform* tm, const lsVec3& point) {
    lsVec3 p = ColTransformOrIdentity(tm).inverseTransform(point);
    const KitReal h = capsuleOf(g).halfHeight, reach = capsuleOf(g).radius + g->mSkin;
    p[2] -= std::clamp(p[2], -h, h);
    return p.square_norm() <= reach * reach;
}

} // namespace

ColCapsule* ColCapsuleCreate(KitReal radius, KitReal height) {
    if (!isValid(radius, height)) {
        KitWarning(12, "ColCapsuleCreate: radius must be finite and positive, height finite and "
                       "not negative.\n");
        return nullptr;
    }
    auto* capsule = new ColCapsule;
    ColGeometryInitObject(capsule, kColCapsule);
    storeDimensions(capsule, radius, height);
    return capsule;
}

void ColCapsuleSetDimensions(ColCapsule* capsule, KitReal radius, KitReal height) {
    if (!isValid(radius, height)) {
        KitWarning(12, "ColCapsuleSetDimensions: radius must be finite and positive, height finite "
                       "and not negative.\n");
        return;
    }
    storeDimensions(capsule, radius, height);
}

KitReal ColCapsuleGetRadius(const ColCapsule* capsule) {
    return capsule->radius;
}

KitReal ColCapsuleGetHeight(const ColCapsule* capsule) {
    return 2 * capsule->halfHeight;
}

int ColCapsuleGetTypeId() {
    return gCapsuleTypeId;
}

int ColCapsuleRegisterType() {
    return gCapsuleTypeId = ColGeometryRegisterType(kColCapsule, "Capsule",
                                                    {.destroy = destroy,
                                                     .getAABB = getAABB<3>,
                                                     .getXYAABB = getAABB<2>,
                                                     .getBSphere = getBSphere,
                                                     .maximumPoint = maximumPoint,
                                                     .getMassProperties = getMassProperties,
                                                     .getPointInVolume = getPointInVolume});
}
