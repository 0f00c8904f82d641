#include <Col/ColComposite.h>
#include <Col/ColModel.h>
#include <Col/ColModelFunctions.h>
#include <Kit/KitMessage.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>

namespace {

/// Centres nearer than this have no direction, m.
constexpr KitReal kMinCentreDistance = 1e-14;

int sTypeId = -1;

const ColCompositeGeometry& cast(const ColGeometry* g) {
    return *static_cast<const ColCompositeGeometry*>(g);
}

bool isEnabled(const ColModel* child) {
    return child->mTemporaryDisabledStatus == kNotTemporaryDisabled;
}

/// Where a child is when the composite is at tm, null for the origin.
lsTransform placeOf(const ColModel& child, const lsTransform* tm) {
    lsTransform place = child.mRelTM != nullptr ? *child.mRelTM : lsTransform();
    if (tm != nullptr)
        KitMatrix4TMCompound(place.matrix(), place.matrix(), tm->matrix());
    return place;
}

bool holds(const ColModel* child, const ColCompositeGeometry* geometry) {
    if (child->mGeometry == geometry)
        return true;
    if (child->mGeometry == nullptr || child->mGeometry->mID != kColComposite)
        return false;
    const auto& inner = cast(child->mGeometry);
    const auto inside = [geometry](const ColModel* each) { return holds(each, geometry); };
    return std::any_of(inner.mElements.begin(), inner.mElements.end(), inside) ||
           std::any_of(inner.mHoles.begin(), inner.mHoles.end(), inside);
}

bool add(ColCompositeGeometry* geometry, std::vector<ColModel*>& list, ColModel* model,
         const lsTransform* relativeTransform) {
    if (model == nullptr || std::find(list.begin(), list.end(), model) != list.end())
        return false;
    if (holds(model, geometry)) {
        KitWarning(0, "ColCompositeGeometryAddElement: a composite cannot be inside of itself.\n");
        return false;
    }
    model->mRelTM = relativeTransform;
    list.push_back(model);
    return true;
}

ColModel* at(const std::vector<ColModel*>& list, int index) {
    return index >= 0 && static_cast<std::size_t>(index) < list.size()
               ? list[static_cast<std::size_t>(index)]
               : nullptr;
}

// Grows a sphere to hold another one.
void growSphere(lsVec3& centre, KitReal& radius, const lsVec3& otherCentre, KitReal otherRadius) {
    lsVec3 across = otherCentre - centre;
    const KitReal distance = across.norm();
    if (std::abs(radius - otherRadius) >= distance) {
        if (otherRadius > radius) {
            centre = otherCentre;
            radius = otherRadius;
        }
        return;
    }
    const KitReal grown = (radius + otherRadius + distance) / 2;
    if (distance >= kMinCentreDistance)
        centre += across * ((grown - radius) / distance);
    radius = grown;
}

// Functions of the type.

void destroy(ColGeometry* g) {
    delete static_cast<ColCompositeGeometry*>(g);
}

template <class ChildBox>
void mergeBoxes(const ColGeometry* g, const lsTransform* tm, lsVec3* minCorner, lsVec3* maxCorner,
                KitReal* boundsOut, ChildBox childBox) {
    const lsVec3 origin = tm != nullptr ? tm->t() : lsVec3();
    bool first = true;
    lsVec3 low = origin, high = origin;
    for (const ColModel* child : cast(g).mElements) {
        if (child->mGeometry == nullptr)
            continue;
        const lsTransform place = placeOf(*child, tm);
        lsVec3 min, max;
        childBox(child->mGeometry, &place, &min, &max);
        for (int axis = 0; axis < 3; ++axis) {
            low[axis] = first ? min[axis] : std::min(low[axis], min[axis]);
            high[axis] = first ? max[axis] : std::max(high[axis], max[axis]);
        }
        first = false;
    }
    for (int axis = 0; axis < 3; ++axis) {
        (*minCorner)[axis] = low[axis];
        (*maxCorner)[axis] = high[axis];
        if (boundsOut != nullptr) {
            boundsOut[2 * axis] = low[axis];
            boundsOut[2 * axis + 1] = high[axis];
        }
    }
}

void getAABB(const ColGeometry* g, const lsTransform* tm, lsVec3* minCorner, lsVec3* maxCorner,
             KitReal* boundsOut) {
    mergeBoxes(g, tm, minCorner, maxCorner, boundsOut,
               [](const ColGeometry* child, const lsTransform* place, lsVec3* min, lsVec3* max) {
                   ColGeometryGetAABB(child, place, min, max, nullptr);
               });
}

void getBSphere(const ColGeometry* g, lsVec3* centre, KitReal* radius) {
    *centre = cast(g).mCentre;
    *radius = cast(g).mRadius;
}

void maximumPoint(const ColGeometry* g, const lsTransform* tm, const lsVec3& direction,
                  lsVec3* point) {
    *point = tm != nullptr ? tm->t() : lsVec3();
    KitReal best = -std::numeric_limits<KitReal>::infinity();
    for (const ColModel* child : cast(g).mElements) {
        if (child->mGeometry == nullptr)
            continue;
        const lsTransform place = placeOf(*child, tm);
        lsVec3 candidate;
        ColGeometryMaximumPoint(child->mGeometry, &place, direction, &candidate);
        if (candidate.dot(direction) > best) {
            best = candidate.dot(direction);
            *point = candidate;
        }
    }
}

// Sums over the solid children by their densities; the tensor of each is moved to the common centre
// by the parallel axis rule.
bool getMassProperties(const ColGeometry* g, ColMassProperties* out) {
    struct One {
        ColMassProperties properties;
        lsVec3 centre;
        KitMatrix3 inertia;
    };
    std::vector<One> ones;
    KitReal mass = 0;
    lsVec3 centre;
    for (const ColModel* child : cast(g).mElements) {
        One one;
        if (child->mGeometry == nullptr ||
            !ColGeometryGetMassProperties(child->mGeometry, &one.properties))
            continue;
        const lsTransform place = placeOf(*child, nullptr);
        one.centre = place.transformWithoutTranslate(one.properties.centre) + place.t();
        one.properties.mass *= child->mDensity;
        for (int i = 0; i < 3; ++i)
            for (int j = 0; j < 3; ++j) {
                one.inertia[i][j] = 0;
                for (int k = 0; k < 3; ++k)
                    for (int l = 0; l < 3; ++l)
                        one.inertia[i][j] += child->mDensity * place.axis(k)[i] *
                                             one.properties.inertia[k][l] * place.axis(l)[j];
            }
        mass += one.properties.mass;
        centre += one.centre * one.properties.mass;
        ones.push_back(one);
    }
    if (!(mass > 0))
        return false;
    centre /= mass;
    *out = ColMassProperties{};
    out->mass = mass;
    out->centre = centre;
    for (const One& one : ones) {
        const lsVec3 d = one.centre - centre;
        for (int i = 0; i < 3; ++i)
            for (int j = 0; j < 3; ++j)
                out->inertia[i][j] +=
                    one.inertia[i][j] +
                    one.properties.mass * ((i == j ? d.square_norm() : 0) - d[i] * d[j]);
    }
    return true;
}

bool getPointInVolume(const ColGeometry* g, const lsTransform* tm, const lsVec3& point) {
    const auto& elements = cast(g).mElements;
    return std::any_of(elements.begin(), elements.end(), [&](const ColModel* child) {
        const lsTransform place = placeOf(*child, tm);
        return child->mGeometry != nullptr &&
               ColGeometryGetPointInVolume(child->mGeometry, &place, point);
    });
}

} // namespace

ColCompositeGeometry* ColCompositeGeometryCreate() {
    auto* geometry = new ColCompositeGeometry;
    ColGeometryInitObject(geometry, kColComposite);
    return geometry;
}

bool ColCompositeGeometryAddElement(ColCompositeGeometry* geometry, ColModel* model,
                                    const lsTransform* relativeTransform) {
    return add(geometry, geometry->mElements, model, relativeTransform);
}

bool ColCompositeGeometryRemoveElement(ColCompositeGeometry* geometry, ColModel* model) {
    return std::erase(geometry->mElements, model) > 0;
}

bool ColCompositeGeometryAddElementHole(ColCompositeGeometry* geometry, ColModel* model,
                                        const lsTransform* relativeTransform) {
    return add(geometry, geometry->mHoles, model, relativeTransform);
}

bool ColCompositeGeometryRemoveElementHole(ColCompositeGeometry* geometry, ColModel* model) {
    return std::erase(geometry->mHoles, model) > 0;
}

int ColCompositeGeometryGetElementCount(const ColCompositeGeometry* geometry) {
    return static_cast<int>(geometry->mElements.size());
}

int ColCompositeGeometryGetElementHoleCount(const ColCompositeGeometry* geometry) {
    return static_cast<int>(geometry->mHoles.size());
}

ColModel* ColCompositeGeometryGetElement(const ColCompositeGeometry* geometry, int index) {
    return at(geometry->mElements, index);
}

ColModel* ColCompositeGeometryGetElementHole(const ColCompositeGeometry* geometry, int index) {
    return at(geometry->mHoles, index);
}

void ColCompositeGeometryRebuild(ColCompositeGeometry* geometry) {
    geometry->mCentre = lsVec3();
    geometry->mRadius = 0;
    bool first = true;
    for (ColModel* child : geometry->mElements) {
        if (child->mGeometry == nullptr)
            continue;
        if (child->mGeometry->mID == kColComposite)
            ColCompositeGeometryRebuild(static_cast<ColCompositeGeometry*>(child->mGeometry));
        const lsTransform place = placeOf(*child, nullptr);
        lsVec3 centre;
        KitReal radius = 0;
        ColGeometryGetBSphere(child->mGeometry, &centre, &radius);
        centre = place.transformWithoutTranslate(centre) + place.t();
        if (first) {
            geometry->mCentre = centre;
            geometry->mRadius = radius;
        } else {
            growSphere(geometry->mCentre, geometry->mRadius, centre, radius);
        }
        first = false;
    }
}

bool ColCompositeGeometryGetPointInHole(const ColCompositeGeometry* geometry, const lsVec3& point) {
    return std::any_of(geometry->mHoles.begin(), geometry->mHoles.end(), [&](const ColModel* hole) {
        return isEnabled(hole) && hole->mGeometry != nullptr &&
               ColGeometryGetPointInVolume(hole->mGeometry, hole->mGlobalTM, point);
    });
}

int ColCompositeGetTypeId() {
    return sTypeId;
}

int ColCompositeRegisterType() {
    ColGeometryFunctions functions;
    functions.destroy = destroy;
    functions.getAABB = getAABB;
    functions.getXYAABB = getAABB;
    functions.getBSphere = getBSphere;
    functions.maximumPoint = maximumPoint;
    functions.getMassProperties = getMassProperties;
    functions.getPointInVolume = getPointInVolume;
    return sTypeId = ColGeometryRegisterType(kColComposite, "Composite", functions);
}
