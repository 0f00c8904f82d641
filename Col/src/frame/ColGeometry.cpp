#include <Col/ColFrame.h>
#include <Col/ColGeometry.h>
#include <Col/ColMessage.h>
#include "ColFrameTables.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace {
/// Off-diagonal entries that differ by more than this share of the trace are reported.
constexpr KitReal kAsymmetry = 1e-6;

struct GeometryType {
    ColGeometryFunctions functions;
    const char* name = nullptr;
};

struct GeometryTypes {
    std::vector<GeometryType> types; ///< by number
    int size = 0;                    ///< one more than the highest number registered
};

GeometryTypes& tables() {
    static GeometryTypes theTypes;
    return theTypes;
}

/// Functions of the geometry's type, or null with a report.
const ColGeometryFunctions* functionsOf(const ColGeometry* g, const char* caller) {
    if (g && ColGeometryTypeIdIsValid(g->mID)) [[likely]]
        return &tables().types[static_cast<std::size_t>(g->mID)].functions;
    ColMistake(kColErrorGeometry, caller);
    return nullptr;
}

lsVec3 originOf(const lsTransform* tm) {
    return tm ? tm->t() : lsVec3();
}

void callBounds(ColGeometryGetAABBFn fn, const ColGeometry* g, const lsTransform* tm,
                lsVec3* minCorner, lsVec3* maxCorner, KitReal* boundsOut) {
    if (fn) [[likely]] {
        fn(g, tm, minCorner, maxCorner, boundsOut);
        return;
    }
    *minCorner = *maxCorner = originOf(tm); // a type without extent is a point
    for (int i = 0; boundsOut && i < 3; ++i)
        boundsOut[2 * i] = boundsOut[2 * i + 1] = (*minCorner)[i];
}

void symmetrise(KitMatrix3 m) {
    const KitReal slack = kAsymmetry * std::abs(m[0][0] + m[1][1] + m[2][2]);
    bool symmetric = true;
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < i; ++j) {
            symmetric = symmetric && std::abs(m[i][j] - m[j][i]) <= slack;
            m[i][j] = m[j][i] = 0.5 * (m[i][j] + m[j][i]);
        }
    if (!symmetric)
        ColError(gColCoreErrorList, kColErrorInertia, "");
}
} // namespace

void ColGeometryTablesInit(int capacity) {
    tables().types.assign(static_cast<std::size_t>(capacity), {});
    tables().size = 0;
}

void ColGeometryTablesTerm() {
    tables() = {};
}

int ColGeometryRegisterType(int typeEnum, const char* typeName,
                            const ColGeometryFunctions& functions) {
    ColDefaultInit();
    if (typeEnum < 0 || typeEnum >= ColGeometryGetRegisteredTypeMaxId()) {
        ColMistake(kColErrorTypeCapacity, " in ColGeometryRegisterType.");
        return -1;
    }
    tables().size = std::max(tables().size, typeEnum + 1);
    tables().types[static_cast<std::size_t>(typeEnum)] = {functions, typeName};
    return typeEnum;
}

void ColGeometryInitObject(ColGeometry* g, int typeId) {
    if (!g) {
        ColMistake(kColErrorGeometry, " in ColGeometryInitObject.");
        return;
    }
    g->mID = static_cast<std::int16_t>(typeId);
    g->mSkin = 0;
}

void ColGeometryDestroy(ColGeometry* g) {
    if (const auto* f = functionsOf(g, " in ColGeometryDestroy."))
        f->destroy(g);
}

void ColGeometryGetAABB(const ColGeometry* g, const lsTransform* tm, lsVec3* minCorner,
                        lsVec3* maxCorner, KitReal* boundsOut) {
    if (const auto* f = functionsOf(g, " in ColGeometryGetAABB."))
        callBounds(f->getAABB, g, tm, minCorner, maxCorner, boundsOut);
}

void ColGeometryGetXYAABB(const ColGeometry* g, const lsTransform* tm, lsVec3* minCorner,
                          lsVec3* maxCorner, KitReal* boundsOut) {
    if (const auto* f = functionsOf(g, " in ColGeometryGetXYAABB."))
        callBounds(f->getXYAABB ? f->getXYAABB : f->getAABB, g, tm, minCorner, maxCorner,
                   boundsOut);
}

void ColGeometryGetBSphere(const ColGeometry* g, lsVec3* centre, KitReal* radius) {
    const auto* f = functionsOf(g, " in ColGeometryGetBSphere.");
    if (f && f->getBSphere) {
        f->getBSphere(g, centre, radius);
    } else if (f) {
        *centre = lsVec3();
        *radius = 0;
    }
}

void ColGeometryMaximumPoint(const ColGeometry* g, const lsTransform* tm, const lsVec3& direction,
                             lsVec3* point) {
    const auto* f = functionsOf(g, " in ColGeometryMaximumPoint.");
    if (f && f->maximumPoint)
        f->maximumPoint(g, tm, direction, point);
    else if (f)
        *point = originOf(tm);
}

bool ColGeometryGetMassProperties(const ColGeometry* g, ColMassProperties* out) {
    const auto* f = functionsOf(g, " in ColGeometryGetMassProperties.");
    if (!f || !f->getMassProperties || !f->getMassProperties(g, out))
        return false;
    symmetrise(out->inertia);
    return true;
}

bool ColGeometryGetPointInVolume(const ColGeometry* g, const lsTransform* tm, const lsVec3& point) {
    const auto* f = functionsOf(g, " in ColGeometryGetPointInVolume.");
    return f && f->getPointInVolume && f->getPointInVolume(g, tm, point);
}

bool ColGeometryTypeIdIsValid(int id) {
    const auto& types = tables().types;
    return id >= 0 && static_cast<std::size_t>(id) < types.size() &&
           types[static_cast<std::size_t>(id)].functions.destroy;
}

const char* ColGeometryGetTypeNameFromId(int id) {
    const char* name = ColGeometryTypeIdIsValid(id)
                           ? tables().types[static_cast<std::size_t>(id)].name
                           : "UnknownGeometryType";
    return name ? name : "";
}

int ColGeometryGetRegisteredTypeCount() {
    return tables().size;
}

int ColGeometryGetRegisteredTypeMaxId() {
    return static_cast<int>(tables().types.size());
}

void ColGeometryResetTypes() {
    std::fill(tables().types.begin(), tables().types.end(), GeometryType{});
    tables().size = 0;
}
