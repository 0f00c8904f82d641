#include <Col/ColCone.h>

#include "PrimitiveGeometry.h"

#include <algorithm>
#include <numbers>

namespace {

int gConeTypeId = -1;

const ColCone& coneOf(const ColGeometry* g) {
    return *static_cast<const ColCone*>(g);
}

bool isValid(KitReal lower, KitReal upper, KitReal height) {
    return lower >= 0 && upper >= 0 && ColIsLength(lower + upper) && ColIsLength(height);
}

void storeDimensions(ColCone* cone, KitReal lower, KitReal upper, KitReal height) {
    cone->radiusLower = lower;
    cone->radiusUpper = upper;
    cone->halfHeight = height / 2;
    cone->mBoundingRadius = std::hypot(std::max(lower, upper), height / 2);
}

void destroy(ColGeometry* g) {
    delete static_cast<ColCone*>(g);
}

template <int kAxes>
void getAABB(const ColGeometry* g, const lsTransform* tm, lsVec3* minCorner, lsVec3* maxCorner,
             KitReal* boundsOut) {
    const lsTransform& frame = ColTransformOrIdentity(tm);
    const ColCone& cone = coneOf(g);
    lsVec3 lower, upper;
    for (int i = 0; i < kAxes; ++i) {
        const KitReal cosine = frame.row[2][i], sine = ColSineOf(cosine), t = frame.t()[i];
        const KitReal rise = cosine * cone.halfHeight;
        const KitReal discLower = sine * cone.radiusLower, discUpper = sine * cone.radiusUpper;
        lower[i] = t + std::min(rise - discUpper, -rise - discLower);
        upper[i] = t + std::max(rise + discUpper, -rise + discLower);
    }
    ColStoreBounds(lower, upper, kAxes, minCorner, maxCorner, boundsOut);
}

void getBSphere(const ColGeometry* g, lsVec3* centre, KitReal* radius) {
    *centre = lsVec3();
    *radius = coneOf(g).mBoundingRadius;
}

void maximumPoint(const ColGeometry* g, const lsTransform* tm, const lsVec3& direction,
                  lsVec3* point) {
    const lsTransform& frame = ColTransformOrIdentity(tm);
    const ColCone& cone = coneOf(g);
    const lsVec3 d = frame.inverseTransformWithoutTranslate(direction);
    const lsVec3 radial = ColRadialDirection(d);
    const KitReal reach = d.dot(radial), rise = d[2] * cone.halfHeight;
    const bool atUpper = reach * cone.radiusUpper + rise >= reach * cone.radiusLower - rise;
    lsVec3 local = (atUpper ? cone.radiusUpper : cone.radiusLower) * radial;
    local[2] = atUpper ? cone.halfHeight : -cone.halfHeight;
    *point = frame.transform(local);
}

// Moments of the discs between the ends: with u = z / h from -1 to 1 the radius is a + b u, and over
// the discs' area pi r^2 the integrals of r^2, r^2 u, r^2 u^2 and r^4 are polynomials of a and b.
bool getMassProperties(const ColGeometry* g, ColMassProperties* out) {
    const ColCone& cone = coneOf(g);
    const KitReal h = cone.halfHeight;
    const KitReal a = (cone.radiusUpper + cone.radiusLower) / 2;
    const KitReal b = (cone.radiusUpper - cone.radiusLower) / 2;
    const KitReal a2 = a * a, b2 = b * b, pi = std::numbers::pi;
    const KitReal mass = 2 * pi * h * (a2 + b2 / 3);
    const KitReal first = 2 * pi * h * h * (2 * a * b / 3);
    const KitReal second = 2 * pi * h * h * h * (a2 / 3 + b2 / 5);
    const KitReal fourth = 2 * pi * h * (a2 * a2 + 2 * a2 * b2 + b2 * b2 / 5);
    const KitReal centre = first / mass;
    ColStoreRevolvedMass(out, mass, centre, fourth / 4 + second - mass * centre * centre,
                         fourth / 2);
    return true;
}

bool getPointInVolume(const ColGeometry* g, const lsTransform* tm, const lsVec3& point) {
    const lsVec3 p = ColTransformOrIdentity(tm).inverseTransform(point);
    const KitReal reach = ColConeRadiusAtZ(&coneOf(g), p[2]) + g->mSkin;
    return std::abs(p[2]) <= coneOf(g).halfHeight + g->mSkin &&
           p[0] * p[0] + p[1] * p[1] <= reach * reach;
}

} // namespace

ColCone* ColConeCreate(KitReal radiusLower, KitReal radiusUpper, KitReal height) {
    if (!isValid(radiusLower, radiusUpper, height)) {
        KitWarning(12, "ColConeCreate: dimensions must be finite, the height and a radius "
                       "positive.\n");
        return nullptr;
    }
    auto* cone = new ColCone;
    ColGeometryInitObject(cone, kColCone);
    storeDimensions(cone, radiusLower, radiusUpper, height);
    return cone;
}

ColCone* ColConeCreatePointed(KitReal radius, KitReal height) {
    return ColConeCreate(radius, 0, height);
}

void ColConeSetDimensions(ColCone* cone, KitReal radiusLower, KitReal radiusUpper, KitReal height) {
    if (!isValid(radiusLower, radiusUpper, height)) {
        KitWarning(12, "ColConeSetDimensions: dimensions must be finite, the height and a radius "
                       "positive.\n");
        return;
    }
    storeDimensions(cone, radiusLower, radiusUpper, height);
}

KitReal ColConeGetRadiusLower(const ColCone* cone) {
    return cone->radiusLower;
}

KitReal ColConeGetRadiusUpper(const ColCone* cone) {
    return cone->radiusUpper;
}

KitReal ColConeGetHeight(const ColCone* cone) {
    return 2 * cone->halfHeight;
}

KitReal ColConeRadiusAtZ(const ColCone* cone, KitReal z) {
    const KitReal h = cone->halfHeight;
    const KitReal u = std::clamp(z, -h, h) / (2 * h);
    return cone->radiusLower * (0.5 - u) + cone->radiusUpper * (0.5 + u);
}

int ColConeGetTypeId() {
    return gConeTypeId;
}

int ColConeRegisterType() {
    return gConeTypeId = ColGeometryRegisterType(kColCone, "Cone",
                                                 {.destroy = destroy,
                                                  .getAABB = getAABB<3>,
                                                  .getXYAABB = getAABB<2>,
                                                  .getBSphere = getBSphere,
                                                  .maximumPoint = maximumPoint,
                                                  .getMassProperties = getMassProperties,
                                                  .getPointInVolume = getPointInVolume});
}
