#include <Col/ColPlane.h>

#include "PrimitiveGeometry.h"

namespace {

int gPlaneTypeId = -1;

/// A normal nearer than this to a world axis is that axis: the axis of a rotation that was never
/// touched, while a tilt of 1e-3 lifts the plane by a metre within a kilometre.
constexpr KitReal kAxisTolerance = 1e-12;

void destroy(ColGeometry* g) {
    delete static_cast<ColPlane*>(g);
}

template <int kAxes>
void getAABB(const ColGeometry*, const lsTransform* tm, lsVec3* minCorner, lsVec3* maxCorner,
             KitReal* boundsOut) {
    lsVec3 lower(-kKitInfinity, -kKitInfinity, -kKitInfinity), upper = -lower;
    const lsTransform& frame = ColTransformOrIdentity(tm);
    const lsVec3& n = frame.axis(2);
    for (int i = 0; i < 3; ++i) {
        if (n[i] >= 1 - kAxisTolerance)
            upper[i] = frame.t()[i];
        else if (n[i] <= kAxisTolerance - 1)
            lower[i] = frame.t()[i];
    }
    ColStoreBounds(lower, upper, kAxes, minCorner, maxCorner, boundsOut);
}

void getBSphere(const ColGeometry*, lsVec3* centre, KitReal* radius) {
    *centre = lsVec3();
    *radius = kKitInfinity;
}

bool getPointInVolume(const ColGeometry* g, const lsTransform* tm, const lsVec3& point) {
    const lsTransform& frame = ColTransformOrIdentity(tm);
    return frame.axis(2).dot(point - frame.t()) <= g->mSkin;
}

} // namespace

ColPlane* ColPlaneCreate() {
    auto* plane = new ColPlane;
    ColGeometryInitObject(plane, kColPlane);
    return plane;
}

int ColPlaneGetTypeId() {
    return gPlaneTypeId;
}

int ColPlaneRegisterType() {
    // No point of a plane is farthest, and half a space has no mass.
    return gPlaneTypeId = ColGeometryRegisterType(kColPlane, "Plane",
                                                  {.destroy = destroy,
                                                   .getAABB = getAABB<3>,
                                                   .getXYAABB = getAABB<2>,
                                                   .getBSphere = getBSphere,
                                                   .getPointInVolume = getPointInVolume});
}
