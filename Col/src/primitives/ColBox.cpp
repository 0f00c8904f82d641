#include <Col/ColBox.h>

#include "PrimitiveGeometry.h"

namespace {

int gBoxTypeId = -1;

const ColBox& boxOf(const ColGeometry* g) {
    return *static_cast<const ColBox*>(g);
}

void storeDimensions(ColBox* box, KitReal x, KitReal y, KitReal z) {
    box->mR = lsVec3(x / 2, y / 2, z / 2);
    box->mBoundingRadius = box->mR.norm();
}

void destroy(ColGeometry* g) {
    delete static_cast<ColBox*>(g);
}

template <int kAxes>
void getAABB(const ColGeometry* g, const lsTransform* tm, lsVec3* minCorner, lsVec3* maxCorner,
             KitReal* boundsOut) {
    const lsTransform& frame = ColTransformOrIdentity(tm);
    const lsVec3& r = boxOf(g).mR;
    const auto extent = [&](int i) {
        return std::abs(frame.row[0][i]) * r[0] + std::abs(frame.row[1][i]) * r[1] +
               std::abs(frame.row[2][i]) * r[2];
    };
    ColStoreSymmetricBounds<kAxes>(frame, extent, minCorner, maxCorner, boundsOut);
}

void getBSphere(const ColGeometry* g, lsVec3* centre, KitReal* radius) {
    *centre = lsVec3();
    *radius = boxOf(g).mBoundingRadius;
}

bool getMassProperties(const ColGeometry* g, ColMassProperties* out) {
    const lsVec3& r = boxOf(g).mR;
    *out = ColMassProperties{};
    out->mass = 8 * r[0] * r[1] * r[2];
    const KitReal third = out->mass / 3;
    out->inertia[0][0] = third * (r[1] * r[1] + r[2] * r[2]);
    out->inertia[1][1] = third * (r[2] * r[2] + r[0] * r[0]);
    out->inertia[2][2] = third * (r[0] * r[0] + r[1] * r[1]);
    return true;
}

bool getPointInVolume(const ColGeometry* g, const lsTransform* tm, const lsVec3& point) {
    const lsVec3 p = ColTransformOrIdentity(tm).inverseTransform(point);
    const lsVec3& r = boxOf(g).mR;
    return std::abs(p[0]) <= r[0] + g->mSkin && std::abs(p[1]) <= r[1] + g->mSkin &&
           std::abs(p[2]) <= r[2] + g->mSkin;
}

} // namespace

ColBox* ColBoxCreate(KitReal x, KitReal y, KitReal z) {
    if (!ColIsLength(x) || !ColIsLength(y) || !ColIsLength(z)) {
        KitWarning(12, "ColBoxCreate: dimensions must be finite and positive.\n");
        return nullptr;
    }
    auto* box = new ColBox;
    ColGeometryInitObject(box, kColBox);
    box->mSkin = kColDefaultSkin;
    storeDimensions(box, x, y, z);
    return box;
}

void ColBoxSetDimensions(ColBox* box, KitReal x, KitReal y, KitReal z) {
    if (!ColIsLength(x) || !ColIsLength(y) || !ColIsLength(z)) {
        KitWarning(12, "ColBoxSetDimensions: dimensions must be finite and positive.\n");
        return;
    }
    storeDimensions(box, x, y, z);
}

void ColBoxGetDimensions(const ColBox* box, KitReal* x, KitReal* y, KitReal* z) {
    *x = 2 * box->mR[0];
    *y = 2 * box->mR[1];
    *z = 2 * box->mR[2];
}

lsVec3 ColBoxGetRadii(const ColBox* box) {
    return box->mR;
}

void ColBoxMaximumPointLocal(const ColBox* box, const lsVec3& direction, lsVec3* point) {
    for (int i = 0; i < 3; ++i)
        (*point)[i] = direction[i] < 0 ? -box->mR[i] : box->mR[i];
}

void ColBoxMaximumPoint(const ColGeometry* g, const lsTransform* tm, const lsVec3& direction,
                        lsVec3* point) {
    const lsTransform& frame = ColTransformOrIdentity(tm);
    lsVec3 corner;
    ColBoxMaximumPointLocal(&boxOf(g), frame.inverseTransformWithoutTranslate(direction), &corner);
    *point = frame.transform(corner);
}

int ColBoxGetTypeId() {
    return gBoxTypeId;
}

int ColBoxRegisterType() {
    return gBoxTypeId = ColGeometryRegisterType(kColBox, "Box",
                                                {.destroy = destroy,
                                                 .getAABB = getAABB<3>,
                                                 .getXYAABB = getAABB<2>,
                                                 .getBSphere = getBSphere,
                                                 .maximumPoint = ColBoxMaximumPoint,
                                                 .getMassProperties = getMassProperties,
                                                 .getPointInVolume = getPointInVolume});
}
