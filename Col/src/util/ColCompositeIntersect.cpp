#include <Col/ColCompositeGeometry.h>
#include <Col/ColFrame.h>
#include <Col/ColIntersect.h>
#include <Col/ColModelFunctions.h>
#include <Col/ColPathIntersect.h>
#include <Col/ColRequest.h>
#include <Col/ColScratch.h>
#include <Col/ColSimplify.h>
#include <Kit/KitMessage.h>
#include <Kit/KitPool.h>
#include "frame/ColFrameTables.h"
#include "ColCompositeChild.h"

#include <algorithm>
#include <span>
#include <utility>

namespace {
constexpr KitReal kMinNormal = 1e-7; ///< a shorter sum of normals has no direction
/// Contacts of a buffer of this layer's own, for results that bring no pool; doubled while too small.
constexpr int kOwnBuffer = 64;
constexpr int kMaxOwnBuffer = 1 << 20;

/// A composite against another model, seen with the composite first.
struct CompositePair {
    ColModelPair pair; ///< model1 is the composite
    ColIntersectResult& result;
    KitReal otherBounds[6] = {}; ///< box of model2 at its present transform
    std::span<ColContact> buffer = {};
    int count = 0;      ///< contacts in the buffer
    lsVec3 normal = {}; ///< sum over the children that touch
    bool isFull = false;

    [[nodiscard]] const ColCompositeGeometry& composite() const {
        return ColCompositeOf(pair.model1->mGeometry);
    }
    [[nodiscard]] bool wantsContacts() const { return pair.request->contactMaxCount > 0; }
};

bool isPairEnabled(const ColHost& host, ColModel* child, ColModel* other) {
    if (!host.isPairEnabled)
        return true;
    Hy::HyIntersectFilter *mine = child->mIntersectFilter, *theirs = other->mIntersectFilter;
    return (!mine || host.isPairEnabled(mine, child, other)) &&
           (!theirs || theirs == mine || host.isPairEnabled(theirs, child, other));
}

bool boundsMeet(const ColModel& child, const ColModel& other, const KitReal* otherBounds) {
    const KitReal tolerance = child.mPadding + other.mPadding; // contacts begin before the touch
    for (int i = 0; i < 3; ++i)
        if (child.mBounds[2 * i] - tolerance > otherBounds[2 * i + 1] ||
            otherBounds[2 * i] - tolerance > child.mBounds[2 * i + 1])
            return false;
    return true;
}

void sayHello(ColModelPair* temporary, const CompositePair& c) {
    ColRequest* parents = c.pair.request;
    const bool ofComposite =
        ColModelIsComposite(temporary->model1) || ColModelIsComposite(temporary->model2);
    if (!c.wantsContacts() || ofComposite) {
        ColHelloWithRequest(temporary, parents);
        return;
    }
    const auto partPartRequest = ColGetHost().partPartRequest;
    if (c.result.bridge && partPartRequest)
        ColHelloWithRequest(temporary,
                            partPartRequest(c.result.bridge, temporary->model1->mRequestID,
                                            temporary->model2->mRequestID));
    else
        ColHello(temporary);
}

/// Contacts of one child, appended to the buffer and seen from the composite.
int CollideWithChild(CompositePair& c, ColModel* child) {
    ColModel* other = c.pair.model2;
    ColPlacedChild placed(child, *c.pair.model1->mGlobalTM);
    if (!boundsMeet(*placed.model(), *other, c.otherBounds) ||
        !isPairEnabled(ColGetHost(), child, other))
        return 0;

    ColModelPair temporary;
    ColModelPairReset(&temporary, other, placed.model());
    sayHello(&temporary, c);
    ColIntersectResult childResult;
    childResult.contacts = c.buffer.data() + c.count;
    childResult.contactMaxCount = static_cast<int>(c.buffer.size()) - c.count;
    childResult.contactPool = c.result.contactPool;
    childResult.userTriangleList = c.result.userTriangleList;
    childResult.threadedData = c.result.threadedData;
    childResult.bridge = c.result.bridge;
    ColIntersect(&temporary, &childResult);
    const bool wantsContacts = temporary.request && temporary.request->contactMaxCount > 0;
    const bool isInverted = temporary.model1 != placed.model();
    ColGoodbye(&temporary);
    if (childResult.touch == 0)
        return 0;

    c.result.touch = childResult.touch;
    if (!wantsContacts)
        return 1;
    for (int i = 0; i < childResult.contactCount; ++i) {
        ColContact& contact = childResult.contacts[i];
        if (isInverted)
            ColContactInvert(&contact);
        contact.model1 = placed.original(contact.model1);
    }
    c.normal += isInverted ? -childResult.normal : childResult.normal;
    c.count += childResult.contactCount;
    c.isFull = c.isFull || c.count >= static_cast<int>(c.buffer.size());
    return 1;
}

/// Whether the contact lies inside a hole, on either surface.
bool isInHole(const ColContact& contact, const ColGeometry* hole, const lsTransform& place) {
    lsVec3 point;
    ColContactGetPosition(&contact, kColSurfaceModel1, &point);
    if (ColGeometryGetPointInVolume(hole, &place, point))
        return true;
    if (contact.surfaceIndex == kColSurfaceNone)
        return false;
    ColContactGetPosition(&contact, kColSurfaceModel2, &point);
    return ColGeometryGetPointInVolume(hole, &place, point);
}

/// Takes out the contacts from `first` on that lie in an enabled hole other than `own`.
void removeContactsInHoles(CompositePair& c, int first, const ColModel* own) {
    for (const ColModel* hole : c.composite().mHoles) {
        if (hole == own || !ColIsEnabled(hole))
            continue;
        const lsTransform place = ColChildTransform(*hole, c.pair.model1->mGlobalTM);
        for (int i = first; i < c.count;) {
            if (isInHole(c.buffer[static_cast<std::size_t>(i)], hole->mGeometry, place))
                c.buffer[static_cast<std::size_t>(i)] =
                    c.buffer[static_cast<std::size_t>(--c.count)]; // tested again in its new slot
            else
                ++i;
        }
    }
}

bool hasParticles(const CompositePair& c) {
    return c.pair.model1->mParticleSystem || c.pair.model2->mParticleSystem;
}

/// Makes room in a long buffer, after what lies in holes has gone.
void simplifyBuffer(CompositePair& c) {
    const int size = static_cast<int>(c.buffer.size());
    if (hasParticles(c) || c.count <= size / 2 ||
        c.count <= static_cast<int>(std::min(c.pair.request->contactMaxCount, 1U << 30)))
        return;
    removeContactsInHoles(c, 0, nullptr);
    ColIntersectResult view;
    view.pair = &c.pair;
    view.contacts = c.buffer.data();
    view.contactMaxCount = size;
    view.contactCount = c.count;
    view.normal = c.normal;
    view.normal.normalize();
    ColContactSimplifyResult(&view); // from scratch memory: the pool's buffer is in use
    c.count = view.contactCount;
    c.isFull = c.count >= size;
}

void collideSolids(CompositePair& c) {
    for (ColModel* child : c.composite().mElements) {
        if (!ColIsEnabled(child))
            continue;
        CollideWithChild(c, child);
        if (c.isFull || (c.result.touch != 0 && !c.wantsContacts()))
            return;
        simplifyBuffer(c);
    }
}

void collideHoleWalls(CompositePair& c) {
    for (ColModel* hole : c.composite().mHoles) {
        if (!ColIsEnabled(hole) || c.isFull)
            continue;
        const int first = c.count;
        CollideWithChild(c, hole);
        removeContactsInHoles(c, first, hole);
    }
}

KitReal skinOf(const ColModel* model) {
    return model && model->mGeometry ? model->mGeometry->mSkin : 0;
}

bool surfacesMeet(const ColContact& a, const ColContact& b) {
    const KitReal reach = std::abs(a.separation) + skinOf(b.model1) + skinOf(b.model2);
    const bool areMidway = a.surfaceIndex == kColSurfaceNone && b.surfaceIndex == kColSurfaceNone;
    const int sides = areMidway ? 1 : 2;
    for (int i = 0; i < sides; ++i)
        for (int j = 0; j < sides; ++j) {
            lsVec3 p, q;
            ColContactGetPosition(&a, i, &p);
            ColContactGetPosition(&b, j, &q);
            if ((p - q).square_norm() < reach * reach)
                return true;
        }
    return false;
}

/// Where a solid's contact meets the wall of a hole the solid ends: the contact carries nothing.
void flattenRims(CompositePair& c, int holeStart) {
    for (ColContact& solid : c.buffer.first(static_cast<std::size_t>(holeStart)))
        for (int j = holeStart; j < c.count; ++j)
            if (surfacesMeet(solid, c.buffer[static_cast<std::size_t>(j)])) {
                solid.separation = 0;
                break;
            }
}

void writeContacts(CompositePair& c) {
    ColIntersectResult& result = c.result;
    if (c.count == 0) {
        result.touch = 0;
        return;
    }
    if (!(c.normal.normalize() >= kMinNormal))
        c.normal = c.buffer[0].normal;
    if (!hasParticles(c)) {
        result.pair = &c.pair;
        ColContactSimplifyBufferToResult(&c.normal, c.buffer.data(), c.count, &result,
                                         "ColCompositeGenericIntersect");
        return;
    }
    if (c.count > result.contactMaxCount)
        KitWarning(0, "ColCompositeGenericIntersect: pool contact count too small. Some contacts "
                      "may be lost.\n");
    result.contactCount = std::min(c.count, result.contactMaxCount);
    std::copy_n(c.buffer.data(), result.contactCount, result.contacts);
    result.normal = c.normal;
}

/// The whole walk with one buffer; what did not fit leaves isFull.
void collide(CompositePair& c) {
    ColIntersectResultClear(&c.result);
    c.count = 0;
    c.normal = {};
    c.isFull = false;
    collideSolids(c);
    if (c.result.touch == 0 || !c.wantsContacts() || c.isFull)
        return;
    removeContactsInHoles(c, 0, nullptr);
    const int holeStart = c.count;
    collideHoleWalls(c);
    if (c.isFull)
        return;
    flattenRims(c, holeStart);
    writeContacts(c);
}

void collideInOwnBuffer(CompositePair& c) {
    for (int size = kOwnBuffer;; size *= 2) {
        ColScratchScope scratch;
        c.buffer = scratch.take<ColContact>(static_cast<std::size_t>(size));
        collide(c);
        if (!c.isFull || size >= kMaxOwnBuffer)
            return;
    }
}

void collideInPool(CompositePair& c, KitPool* pool) {
    void* memory = KitPoolGetStruct(pool);
    const int size = KitPoolGetStructSize(pool) / static_cast<int>(sizeof(ColContact));
    if (!memory || size < 1) {
        KitPoolPutStruct(pool, memory);
        collideInOwnBuffer(c);
        return;
    }
    c.buffer = {static_cast<ColContact*>(memory), static_cast<std::size_t>(size)};
    collide(c);
    if (c.isFull)
        pool->needResize = 1; // the owner of the pool grows it and asks again
    KitPoolPutStruct(pool, memory);
}

bool hasHoles(const ColModel* model) {
    return ColModelIsComposite(model) && !ColCompositeOf(model->mGeometry).mHoles.empty();
}

void getBounds(const ColModel& model, KitReal* bounds) {
    lsVec3 minCorner, maxCorner;
    ColGeometryGetAABB(model.mGeometry, model.mGlobalTM, &minCorner, &maxCorner, bounds);
}

/// Of two composites one without holes is walked, else the larger one.
bool mustWalkSecond(const ColModelPair& pair) {
    if (!ColModelIsComposite(pair.model1))
        return true;
    if (!hasHoles(pair.model1) || !ColModelIsComposite(pair.model2))
        return false;
    if (!hasHoles(pair.model2))
        return true;
    KitReal bounds1[6], bounds2[6];
    getBounds(*pair.model1, bounds1);
    getBounds(*pair.model2, bounds2);
    int larger = 0;
    for (int i = 0; i < 3; ++i)
        larger += bounds2[2 * i + 1] - bounds2[2 * i] > bounds1[2 * i + 1] - bounds1[2 * i];
    return larger >= 2;
}

void invertResult(ColIntersectResult& result) {
    for (int i = 0; i < result.contactCount; ++i)
        ColContactInvert(&result.contacts[i]);
    for (int g = 0; g < result.groupCount; ++g)
        result.groupResult[g].normal = -result.groupResult[g].normal;
    result.normal = -result.normal;
}

int ColCompositeGenericIntersect(ColModelPair* pair, ColIntersectResult* result) {
    const bool isSwapped = mustWalkSecond(*pair);
    CompositePair c = {.pair = *pair, .result = *result};
    if (isSwapped)
        std::swap(c.pair.model1, c.pair.model2);
    ColIntersectResultClear(result);
    if (!ColIsEnabled(c.pair.model2))
        return 0;
    getBounds(*c.pair.model2, c.otherBounds);
    if (result->contactPool)
        collideInPool(c, result->contactPool);
    else
        collideInOwnBuffer(c);
    result->pair = pair;
    if (isSwapped)
        invertResult(*result);
    return result->touch;
}

int ColCompositeGenericApproximateDistance(ColModelPair* pair, const ColDistanceRequest* request,
                                           ColDistanceResult* result) {
    const bool isSwapped = !ColModelIsComposite(pair->model1);
    ColModel* composite = isSwapped ? pair->model2 : pair->model1;
    ColModel* other = isSwapped ? pair->model1 : pair->model2;
    ColDistanceResult best;
    best.distanceLB = best.distanceUB = kKitInfinity;
    int found = 0;
    for (ColModel* child : ColCompositeOf(composite->mGeometry).mElements) {
        if (!ColIsEnabled(child))
            continue;
        ColPlacedChild placed(child, *composite->mGlobalTM);
        ColModelPair temporary;
        ColModelPairReset(&temporary, placed.model(), other);
        ColHello(&temporary);
        ColDistanceResult now;
        if (ColApproximateDistance(&temporary, request, &now) != 0 &&
            now.distanceLB < best.distanceLB) {
            found = 1;
            best = now;
            if ((temporary.model1 == other) != isSwapped) {
                std::swap(best.point1, best.point2);
                std::swap(best.element1, best.element2);
            }
        }
        ColGoodbye(&temporary);
    }
    best.pair = pair;
    *result = best;
    return found;
}
} // namespace

void ColCompositeGenericRegisterInteractions() {
    ColDefaultInit();
    const ColInteractions generic = {.intersectFn = ColCompositeGenericIntersect,
                                     .pathIntersectFn = ColGenericPathIntersect};
    for (int type = 0; type < ColGeometryGetRegisteredTypeMaxId(); ++type)
        ColInteractionTableSetElementOfAnyType(kColComposite, type, generic, nullptr);
}

void ColCompositeGenericRegisterDistance() {
    ColDefaultInit();
    for (int type = 0; type < ColGeometryGetRegisteredTypeMaxId(); ++type)
        for (auto* element : {ColInteractionTableGetElementPtr(kColComposite, type),
                              ColInteractionTableGetElementPtr(type, kColComposite)})
            element->interactions.approxDistanceFn = ColCompositeGenericApproximateDistance;
}
