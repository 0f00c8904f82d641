#include <Col/ColCompositeGeometry.h>
#include <Col/ColMessage.h>
#include <Col/ColModelFunctions.h>
#include <Kit/KitMessage.h>
#include "ColCompositeChild.h"

#include <algorithm>
#include <cmath>

namespace {
constexpr KitReal kSameCentre = 1e-14; ///< m

int theTypeId = -1;

bool contains(const ColGeometry* g, const ColGeometry* searched) {
    if (g == searched)
        return true;
    if (!g || g->mID != kColComposite)
        return false;
    const auto holds = [&](const ColModel* m) { return contains(m->mGeometry, searched); };
    const ColCompositeGeometry& c = ColCompositeOf(g);
    return std::any_of(c.mElements.begin(), c.mElements.end(), holds) ||
           std::any_of(c.mHoles.begin(), c.mHoles.end(), holds);
}

bool isListed(const std::vector<ColModel*>& list, const ColModel* model) {
    return std::find(list.begin(), list.end(), model) != list.end();
}

int add(ColCompositeGeometry* geometry, std::vector<ColModel*> ColCompositeGeometry::*list,
        ColModel* model, const lsTransform* relativeTransform) {
    if (!geometry || !model || !model->mGeometry || isListed(geometry->mElements, model) ||
        isListed(geometry->mHoles, model) || contains(model->mGeometry, geometry)) {
        KitWarning(0, "ColCompositeGeometryAddElement: model must have a geometry, be no child yet "
                      "and not contain the composite.\n");
        return 0;
    }
    model->mRelTM = relativeTransform;
    model->mTransformUpdateFn = nullptr; // the composite moves its children
    (geometry->*list).push_back(model);
    return 1;
}

int removeFrom(ColCompositeGeometry* geometry, std::vector<ColModel*> ColCompositeGeometry::*list,
               const ColModel* model) {
    return geometry && std::erase(geometry->*list, model) > 0 ? 1 : 0;
}

ColModel* at(const ColCompositeGeometry* geometry,
             const std::vector<ColModel*> ColCompositeGeometry::*list, int index) {
    if (!geometry || index < 0 || index >= static_cast<int>((geometry->*list).size()))
        return nullptr;
    return (geometry->*list)[static_cast<std::size_t>(index)];
}

/// The smallest sphere around both; the first radius is negative for no sphere yet.
void growSphere(lsVec3& centre, KitReal& radius, const lsVec3& otherCentre, KitReal otherRadius) {
    if (radius >= kKitInfinity || otherRadius >= kKitInfinity) { // endless: any centre will do
        radius = kKitInfinity;
        return;
    }
    const lsVec3 apart = otherCentre - centre;
    const KitReal d = apart.norm();
    if (radius < 0 || (otherRadius > radius && otherRadius - radius >= d)) {
        centre = otherCentre;
        radius = otherRadius;
        return;
    }
    if (radius - otherRadius >= d)
        return;
    const KitReal grown = 0.5 * (radius + otherRadius + d);
    if (d >= kSameCentre)
        centre.addMultiple((grown - radius) / d, apart);
    radius = grown;
}

void placeChildren(const std::vector<ColModel*>& children, const lsTransform& transform) {
    for (ColModel* child : children) {
        const lsTransform place = ColChildTransform(*child, &transform);
        if (child->mGlobalTM)
            *child->mGlobalTM = place;
        if (ColModelIsComposite(child))
            ColCompositeGeometryUpdateTransform(
                static_cast<ColCompositeGeometry*>(child->mGeometry), place);
        lsVec3 minCorner, maxCorner;
        ColGeometryGetAABB(child->mGeometry, &place, &minCorner, &maxCorner, child->mBounds);
    }
}
} // namespace

ColPlacedChild::ColPlacedChild(ColModel* child, const lsTransform& parent)
    : mChild(child), mTransform(ColChildTransform(*child, &parent)) {
    bool isThere = child->mGlobalTM;
    for (int i = 0; isThere && i < 4; ++i)
        isThere =
            lsVec3::constCast(mTransform.row[i].v) == lsVec3::constCast(child->mGlobalTM->row[i].v);
    if (isThere)
        return;
    mCopy = *child;
    mCopy->mGlobalTM = &mTransform;
    lsVec3 minCorner, maxCorner;
    ColGeometryGetAABB(child->mGeometry, &mTransform, &minCorner, &maxCorner, mCopy->mBounds);
}

void ColCompositeRegisterType() {
    theTypeId = ColGeometryRegisterType(kColComposite, "Composite",
                                        {.destroy = ColCompositeDestroy,
                                         .getAABB = ColCompositeGetAABB,
                                         .getXYAABB = ColCompositeGetAABB,
                                         .getBSphere = ColCompositeGetBSphere,
                                         .maximumPoint = ColCompositeMaximumPoint,
                                         .getMassProperties = ColCompositeGetMassProperties,
                                         .getPointInVolume = ColCompositeGetPointInVolume});
}

int ColCompositeGetTypeId() {
    return theTypeId;
}

ColCompositeGeometry* ColCompositeGeometryCreate() {
    auto* geometry = new ColCompositeGeometry;
    ColGeometryInitObject(geometry, kColComposite);
    return geometry;
}

void ColCompositeDestroy(ColGeometry* g) {
    delete static_cast<ColCompositeGeometry*>(g);
}

int ColCompositeGeometryAddElement(ColCompositeGeometry* geometry, ColModel* model,
                                   const lsTransform* relativeTransform) {
    return add(geometry, &ColCompositeGeometry::mElements, model, relativeTransform);
}

int ColCompositeGeometryAddElementHole(ColCompositeGeometry* geometry, ColModel* model,
                                       const lsTransform* relativeTransform) {
    return add(geometry, &ColCompositeGeometry::mHoles, model, relativeTransform);
}

int ColCompositeGeometryRemoveElement(ColCompositeGeometry* geometry, ColModel* model) {
    return removeFrom(geometry, &ColCompositeGeometry::mElements, model);
}

int ColCompositeGeometryRemoveElementHole(ColCompositeGeometry* geometry, ColModel* model) {
    return removeFrom(geometry, &ColCompositeGeometry::mHoles, model);
}

int ColCompositeGeometryGetElementCount(const ColCompositeGeometry* geometry) {
    return geometry ? static_cast<int>(geometry->mElements.size()) : 0;
}

int ColCompositeGeometryGetElementHoleCount(const ColCompositeGeometry* geometry) {
    return geometry ? static_cast<int>(geometry->mHoles.size()) : 0;
}

ColModel* ColCompositeGeometryGetModel(const ColCompositeGeometry* geometry, int index) {
    return at(geometry, &ColCompositeGeometry::mElements, index);
}

ColModel* ColCompositeGeometryHoleGetModel(const ColCompositeGeometry* geometry, int index) {
    return at(geometry, &ColCompositeGeometry::mHoles, index);
}

ColGeometry* ColCompositeGeometryGetElement(const ColCompositeGeometry* geometry, int index) {
    return ColModelGetGeometry(ColCompositeGeometryGetModel(geometry, index));
}

ColGeometry* ColCompositeGeometryGetElementHole(const ColCompositeGeometry* geometry, int index) {
    return ColModelGetGeometry(ColCompositeGeometryHoleGetModel(geometry, index));
}

void ColCompositeGeometryRebuild(ColCompositeGeometry* geometry) {
    if (!geometry) {
        ColMistake(kColErrorGeometry, " in ColCompositeGeometryRebuild.");
        return;
    }
    KitReal radius = -1;
    lsVec3 centre;
    for (const ColModel* child : geometry->mElements) {
        if (ColModelIsComposite(child))
            ColCompositeGeometryRebuild(static_cast<ColCompositeGeometry*>(child->mGeometry));
        lsVec3 childCentre;
        KitReal childRadius = 0;
        ColGeometryGetBSphere(child->mGeometry, &childCentre, &childRadius);
        growSphere(centre, radius, ColChildTransform(*child, nullptr).transform(childCentre),
                   childRadius);
    }
    geometry->mRadius = std::max(radius, 0.0);
    geometry->mCentre = centre;
}

void ColCompositeGeometryBuild(ColCompositeGeometry* geometry) {
    ColCompositeGeometryRebuild(geometry);
}

void ColCompositeGeometryUpdateTransform(ColCompositeGeometry* geometry,
                                         const lsTransform& transform) {
    if (!geometry) {
        ColMistake(kColErrorGeometry, " in ColCompositeGeometryUpdateTransform.");
        return;
    }
    const lsTransform parent = transform; // a child may share the composite's transform
    placeChildren(geometry->mElements, parent);
    placeChildren(geometry->mHoles, parent);
}

bool ColCompositeGeometryGetPointInHole(const ColCompositeGeometry* geometry,
                                        const lsTransform& transform, const lsVec3& point) {
    if (!geometry)
        return false;
    return std::any_of(geometry->mHoles.begin(), geometry->mHoles.end(), [&](const ColModel* hole) {
        const lsTransform tm = ColChildTransform(*hole, &transform);
        return ColIsEnabled(hole) && ColGeometryGetPointInVolume(hole->mGeometry, &tm, point);
    });
}

void ColCompositeGetAABB(const ColGeometry* g, const lsTransform* tm, lsVec3* minCorner,
                         lsVec3* maxCorner, KitReal* boundsOut) {
    bool isFirst = true;
    *minCorner = *maxCorner = tm ? tm->t() : lsVec3();
    for (const ColModel* child : ColCompositeOf(g).mElements) {
        const lsTransform place = ColChildTransform(*child, tm);
        lsVec3 low, high;
        ColGeometryGetAABB(child->mGeometry, &place, &low, &high, nullptr);
        for (int i = 0; i < 3; ++i) {
            (*minCorner)[i] = isFirst ? low[i] : std::min((*minCorner)[i], low[i]);
            (*maxCorner)[i] = isFirst ? high[i] : std::max((*maxCorner)[i], high[i]);
        }
        isFirst = false;
    }
    for (int i = 0; boundsOut && i < 3; ++i) {
        boundsOut[2 * i] = (*minCorner)[i];
        boundsOut[2 * i + 1] = (*maxCorner)[i];
    }
}

void ColCompositeGetBSphere(const ColGeometry* g, lsVec3* centre, KitReal* radius) {
    *centre = ColCompositeOf(g).mCentre;
    *radius = ColCompositeOf(g).mRadius;
}

void ColCompositeMaximumPoint(const ColGeometry* g, const lsTransform* tm, const lsVec3& direction,
                              lsVec3* point) {
    bool isFirst = true;
    *point = tm ? tm->t() : lsVec3();
    for (const ColModel* child : ColCompositeOf(g).mElements) {
        const lsTransform place = ColChildTransform(*child, tm);
        lsVec3 p;
        ColGeometryMaximumPoint(child->mGeometry, &place, direction, &p);
        if (isFirst || p.dot(direction) > point->dot(direction))
            *point = p;
        isFirst = false;
    }
}

bool ColCompositeGetPointInVolume(const ColGeometry* g, const lsTransform* tm,
                                  const lsVec3& point) {
    const auto& children = ColCompositeOf(g).mElements;
    return std::any_of(children.begin(), children.end(), [&](const ColModel* child) {
        const lsTransform place = ColChildTransform(*child, tm);
        return ColGeometryGetPointInVolume(child->mGeometry, &place, point);
    });
}
