#pragma once
#include <Col/ColCylinder.h>

#include "../math/CylinderContacts.h"
#include "IxPair.h"

/// Cosine up to which two lines cross at a point rather than run along each other.
constexpr KitReal kIxCrossingCosine = 0.99;

/// A model's cylinder seen from a frame.
inline CylinderShape IxCylinderShape(const lsTransform& tm, const lsTransform& frame,
                                     const ColCylinder& cylinder) noexcept {
    return {.centre = frame.inverseTransform(tm.t()),
            .axis = frame.inverseTransformWithoutTranslate(tm.axis(2)),
            .xAxis = frame.inverseTransformWithoutTranslate(tm.axis(0)),
            .radius = cylinder.radius,
            .halfHeight = cylinder.halfHeight};
}

/// Writes the contacts of a solid with a cylinder, model2, that overlaps it:
/// each candidate at its own depth below the reference plane, points of model2
/// moved to model1.
/// @param referenceIsFirst whether the plane is that of model1; depths are
/// those of model2 below it
/// @param list candidates, frame of model1; may be empty
/// @param single the one contact where features meet at a point, or no
/// candidate is left; on model1
inline int IxWriteCylinderContacts(const IxPairFrame& frame, const OverlapAxis& overlap,
                                   bool referenceIsFirst, const CandidateList& list,
                                   const lsVec3& single, ColIntersectResult* result) noexcept {
    const lsVec3 normal = frame.tm1.transformWithoutTranslate(overlap.normal);
    IxContacts<> contacts;
    for (int i = 0; i < list.count; ++i) {
        lsVec3 point = list.points[i];
        const KitReal height = overlap.normal.dot(point);
        const KitReal separation =
            referenceIsFirst ? overlap.plane1 - height : height - overlap.plane2;
        if (!(separation <= kIxKeptShare * overlap.separation))
            continue;
        if (referenceIsFirst)
            point.addMultiple(separation, overlap.normal);
        contacts.add(frame.tm1.transform(point), normal, separation, overlap.dims,
                     kColSurfaceModel1);
    }
    if (contacts.count() == 0 && overlap.separation <= 0)
        contacts.add(frame.tm1.transform(single), normal, overlap.separation, overlap.dims,
                     kColSurfaceModel1);
    return contacts.simplifyInto(result, normal);
}
