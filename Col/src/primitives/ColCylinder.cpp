#include <Col/ColCylinder.h>

#include "PrimitiveGeometry.h"

#include <numbers>

namespace {

int gCylinderTypeId = -1;

const ColCylinder& cylinderOf(const ColGeometry* g) {
    return *static_cast<const ColCylinder*>(g);
}

void storeDimensions(ColCylinder* cylinder, KitReal radius, KitReal height) {
    cylinder->radius = radius;
    cylinder->halfHeight = height / 2;
    cylinder->mBoundingRadius = std::hypot(radius, height / 2);
}

void destroy(ColGeometry* g) {
    delete static_cast<ColCylinder*>(g);
}

template <int kAxes>
void getAABB(const ColGeometry* g, const lsTransform* tm, lsVec3* minCorner, lsVec3* maxCorner,
             KitReal* boundsOut) {
    const lsTransform& frame = ColTransformOrIdentity(tm);
    const ColCylinder& cylinder = cylinderOf(g);
    const auto extent = [&](int i) {
        const KitReal cosine = frame.row[2][i];
        return std::abs(cosine) * cylinder.halfHeight + ColSineOf(cosine) * cylinder.radius;
    };
    ColStoreSymmetricBounds<kAxes>(frame, extent, minCorner, maxCorner, boundsOut);
}

void getBSphere(const ColGeometry* g, lsVec3* centre, KitReal* radius) {
    *centre = lsVec3();
    *radius = cylinderOf(g).mBoundingRadius;
}

void maximumPoint(const ColGeometry* g, const lsTransform* tm, const lsVec3& direction,
                  lsVec3* point) {
    const lsTransform& frame = ColTransformOrIdentity(tm);
    const lsVec3 d = frame.inverseTransformWithoutTranslate(direction);
    lsVec3 local = cylinderOf(g).radius * ColRadialDirection(d);
    local[2] = d[2] < 0 ? -cylinderOf(g).halfHeight : cylinderOf(g).halfHeight;
    *point = frame.transform(local);
}

bool getMassProperties(const ColGeometry* g, ColMassProperties* out) {
    const KitReal r2 = cylinderOf(g).radius * cylinderOf(g).radius, h = cylinderOf(g).halfHeight;
    const KitReal mass = 2 * std::numbers::pi * r2 * h;
    ColStoreRevolvedMass(out, mass, 0, mass * (r2 / 4 + h * h / 3), mass * r2 / 2);
    return true;
}

bool getPointInVolume(const ColGeometry* g, const lsTransform* tm, const lsVec3& point) {
    const lsVec3 p = ColTransformOrIdentity(tm).inverseTransform(point);
    const KitReal reach = cylinderOf(g).radius + g->mSkin;
    return std::abs(p[2]) <= cylinderOf(g).halfHeight + g->mSkin &&
           p[0] * p[0] + p[1] * p[1] <= reach * reach;
}

} // namespace

ColCylinder* ColCylinderCreate(KitReal radius, KitReal height) {
    if (!ColIsLength(radius) || !ColIsLength(height)) {
        KitWarning(12, "ColCylinderCreate: dimensions must be finite and positive.\n");
        return nullptr;
    }
    auto* cylinder = new ColCylinder;
    ColGeometryInitObject(cylinder, kColCylinder);
    cylinder->mSkin = kColDefaultSkin;
    storeDimensions(cylinder, radius, height);
    return cylinder;
}

void ColCylinderSetDimensions(ColCylinder* cylinder, KitReal radius, KitReal height) {
    if (!ColIsLength(radius) || !ColIsLength(height)) {
        KitWarning(12, "ColCylinderSetDimensions: dimensions must be finite and positive.\n");
        return;
    }
    storeDimensions(cylinder, radius, height);
}

KitReal ColCylinderGetRadius(const ColCylinder* cylinder) {
    return cylinder->radius;
}

KitReal ColCylinderGetHeight(const ColCylinder* cylinder) {
    return 2 * cylinder->halfHeight;
}

int ColCylinderGetTypeId() {
    return gCylinderTypeId;
}

int ColCylinderRegisterType() {
    return gCylinderTypeId = ColGeometryRegisterType(kColCylinder, "Cylinder",
                                                     {.destroy = destroy,
                                                      .getAABB = getAABB<3>,
                                                      .getXYAABB = getAABB<2>,
                                                      .getBSphere = getBSphere,
                                                      .maximumPoint = maximumPoint,
                                                      .getMassProperties = getMassProperties,
                                                      .getPointInVolume = getPointInVolume});
}
