#include <Col/ColSphere.h>

#include "PrimitiveGeometry.h"

#include <numbers>

namespace {

int gSphereTypeId = -1;

const ColSphere& sphereOf(const ColGeometry* g) {
    return *static_cast<const ColSphere*>(g);
}

void destroy(ColGeometry* g) {
    delete static_cast<ColSphere*>(g);
}

template <int kAxes>
void getAABB(const ColGeometry* g, const lsTransform* tm, lsVec3* minCorner, lsVec3* maxCorner,
             KitReal* boundsOut) {
    ColStoreSymmetricBounds<kAxes>(
        ColTransformOrIdentity(tm), [radius = sphereOf(g).radius](int) { return radius; },
        minCorner, maxCorner, boundsOut);
}

void getBSphere(const ColGeometry* g, lsVec3* centre, KitReal* radius) {
    *centre = lsVec3();
    *radius = sphereOf(g).radius;
}

void maximumPoint(const ColGeometry* g, const lsTransform* tm, const lsVec3& direction,
                  lsVec3* point) {
    lsVec3 unit = direction;
    if (!(unit.normalize() > 0))
        unit = lsVec3(0, 0, 1);
    *point = ColTransformOrIdentity(tm).t() + sphereOf(g).radius * unit;
}

bool getMassProperties(const ColGeometry* g, ColMassProperties* out) {
    const KitReal r = sphereOf(g).radius;
    const KitReal mass = 4.0 / 3.0 * std::numbers::pi * r * r * r;
    ColStoreRevolvedMass(out, mass, 0, 0.4 * mass * r * r, 0.4 * mass * r * r);
    return true;
}

bool getPointInVolume(const ColGeometry* g, const lsTransform* tm, const lsVec3& point) {
    const KitReal reach = sphereOf(g).radius + g->mSkin;
    return (point - ColTransformOrIdentity(tm).t()).square_norm() <= reach * reach;
}

} // namespace

ColSphere* ColSphereCreate(KitReal radius) {
    if (!ColIsLength(radius)) {
        KitWarning(12, "ColSphereCreate: radius must be finite and positive.\n");
        return nullptr;
    }
    auto* sphere = new ColSphere;
    ColGeometryInitObject(sphere, kColSphere);
    sphere->mSkin = kColDefaultSkin;
    sphere->radius = radius;
    return sphere;
}

void ColSphereSetRadius(ColSphere* sphere, KitReal radius) {
    if (!ColIsLength(radius)) {
        KitWarning(12, "ColSphereSetRadius: radius must be finite and positive.\n");
        return;
    }
    sphere->radius = radius;
}

KitReal ColSphereGetRadius(const ColSphere* sphere) {
    return sphere->radius;
}

int ColSphereGetTypeId() {
    return gSphereTypeId;
}

int ColSphereRegisterType() {
    return gSphereTypeId = ColGeometryRegisterType(kColSphere, "Sphere",
                                                   {.destroy = destroy,
                                                    .getAABB = getAABB<3>,
                                                    .getXYAABB = getAABB<2>,
                                                    .getBSphere = getBSphere,
                                                    .maximumPoint = maximumPoint,
                                                    .getMassProperties = getMassProperties,
                                                    .getPointInVolume = getPointInVolume});
}
