#include <Hy/HyIntersect.h>

#include "HyBridgeArena.h"

#include <Col/ColIntersect.h>
#include <Col/ColModel.h>
#include <Col/ColModelPair.h>
#include <Col/ColSimplify.h>
#include <Col/ColSpace.h>
#include <Hy/HyBridge.h>
#include <Hy/HyCollisionGeometry.h>
#include <Hy/HyCollisionPairRequest.h>
#include <Hy/HyCompositeCollisionGeometry.h>
#include <Hy/HyFrame.h>
#include <Hy/HyIntersectResult.h>
#include <Hy/HyMessage.h>
#include <Hy/HyPart.h>
#include <Hy/HyPointer.h>
#include <Hy/HySafeWalk.h>
#include <Hy/HyTriListMemProvider.h>
#include <Hy/HyUniverse.h>

#include <vector>

namespace Hy {

// Pairs.

void HyIntersect::intersectPair(HyCollisionGeometry* g1, HyCollisionGeometry* g2,
                                HyIntersectResult* result) {
    intersectPair(g1, g2, nullptr, result);
}

void HyIntersect::intersectPair(HyCollisionGeometry* g1, HyCollisionGeometry* g2,
                                HyCollisionPairRequest* request, HyIntersectResult* result) {
    if (!g1 || !g2 || !result || !g1->getColModel() || !g2->getColModel()) {
        HyWarning(0, "HyIntersect::intersectPair: two geometries with shapes and a result are "
                     "needed.\n");
        return;
    }
    ColModelPair pair;
    ColModelPairReset(&pair, g1->getColModel(), g2->getColModel());
    if (!ColNearby(&pair))
        return;
    if (request)
        ColHelloWithRequest(&pair, request->getColRequest());
    else
        ColHello(&pair);
    ColIntersect(&pair, result->getColIntersectResult());
    ColGoodbye(&pair);
    result->keepPair(pair);
}

// Against a universe.

bool HyIntersect::intersect(HyCollisionGeometry* geometry, IntersectSubscriber* subscriber,
                            bool updateTransitions) {
    if (!geometry) {
        HyWarning(0, "HyIntersect::intersect: collision geometry is NULL\n");
        return false;
    }
    if (subscriber)
        subscriber->mTestCg = geometry;
    HyUniverse* universe = geometry->getUniverse();
    if (!universe) {
        HyWarning(0,
                  "HyIntersect::intersect: This method requires the collision geometry to be added "
                  "to the universe.\n");
        return false;
    }
    if (updateTransitions)
        universe->getBridge()->updateTransitions();
    const HyReal time = HyFrame::instance()->getTimeStep();
    return universe->getBridge()->detectCollisions(geometry, time, subscriber) != kCGCollisionNone;
}

bool HyIntersect::intersect(HyPart* part, IntersectSubscriber* subscriber, bool updateTransitions) {
    HyUniverse* universe = part ? part->getUniverse() : nullptr;
    if (!universe) {
        HyWarning(0, "HyIntersect::intersect: This method requires the sensor to be added to the "
                     "universe.\n");
        return false;
    }
    if (updateTransitions)
        universe->getBridge()->updateTransitions();
    const HyReal time = HyFrame::instance()->getTimeStep();
    bool touches = false;
    for (HySafeWalk walk(part->getCollisionGeometries());
         HyCollisionGeometry* geometry = walk.next();) {
        if (subscriber)
            subscriber->mTestCg = geometry;
        switch (universe->getBridge()->detectCollisions(geometry, time, subscriber)) {
        case kCGCollidesAndAborted:
            return true;
        case kCGCollides:
            touches = true;
            break;
        case kCGCollisionNone:
            break;
        }
    }
    return touches;
}

namespace {

HyCollisionGeometry* rootOf(HyCollisionGeometry* geometry) {
    while (geometry->getParent())
        geometry = geometry->getParent();
    return geometry;
}

/// States a result from the other side.
void invert(ColIntersectResult& result) {
    for (int i = 0; i < result.contactCount; ++i)
        ColContactInvert(&result.contacts[i]);
    result.normal = -result.normal;
    for (int group = 0; group < result.groupCount; ++group)
        result.groupResult[group].normal = -result.groupResult[group].normal;
}

/// Intersects the pair, or, for a geometry inside a composite, it alone with the pair's other model.
void intersect(ColModelPair* pair, ColModel* root, ColModel* asked, HyReal time,
               std::vector<ColContact>& buffer, ColIntersectResult& result) {
    ColModelPair child;
    ColModelPair* used = pair;
    if (asked != root) {
        ColModelPairReset(&child, pair->model1 == root ? pair->model2 : pair->model1, asked);
        ColHelloWithRequest(&child, pair->request);
        used = &child;
    }
    for (;;) {
        result.contacts = buffer.data();
        result.contactMaxCount = static_cast<int>(buffer.size());
        ColPathIntersect(used, &result, time);
        if (buffer.empty() || result.contactCount < result.contactMaxCount - 1)
            break;
        buffer.resize(2 * buffer.size()); // the contacts may have been cut
    }
    if (asked != root) {
        ColGoodbye(&child);
        if ((used->model1 == asked) != (pair->model1 == root))
            invert(result);
    }
    result.pair = pair;
}

} // namespace

CGTestEnum HyBridge::detectCollisions(HyCollisionGeometry* geometry, HyReal time,
                                      HyIntersect::IntersectSubscriber* subscriber) {
    HyCollisionGeometry* rootGeometry = rootOf(geometry);
    ColModel *asked = geometry->getColModel(), *root = rootGeometry->getColModel();
    if (!asked || !root || root->mSpace != mSpace ||
        asked->mTemporaryDisabledStatus != kNotTemporaryDisabled)
        return kCGCollisionNone;
    const HyPointer<HyCollisionGeometry> alive(geometry); // the subscriber may destroy it
    std::vector<ColModelPair*> pairs;                     // the subscriber may change them
    for (CxPairLink* link = mSpace->GetNextPairOf(root->mSpaceID, nullptr); link;
         link = mSpace->GetNextPairOf(root->mSpaceID, link))
        pairs.push_back(&link->mPair);
    std::vector<ColContact> buffer;
    if (subscriber)
        buffer.resize(static_cast<std::size_t>(mContactBufferSize));
    CGTestEnum answer = kCGCollisionNone;
    for (ColModelPair* pair : pairs) {
        if ((pair->m_flags & kColPairEnded) != 0 || !pair->model1 || !pair->model2)
            continue;
        ColModel* other = pair->model1 == root ? pair->model2 : pair->model1;
        if (other->mTemporaryDisabledStatus != kNotTemporaryDisabled)
            continue;
        HyIntersect::IntersectAction action = HyIntersect::kIntersectionTest;
        if (subscriber)
            action = subscriber->collisionFilter(other->mCollisionGeometry);
        if (action == HyIntersect::kStop)
            return answer == kCGCollides ? kCGCollidesAndAborted : kCGCollisionNone;
        if (action == HyIntersect::kNoIntersectionTest)
            continue;
        if (action != HyIntersect::kForceIntersectionTest &&
            !pairNeedsCollision(pair->model1, pair->model2, true, true, true))
            continue;
        ColIntersectResult result;
        result.bridge = this;
        result.userTriangleList = HyTriListMemProvider::instance()->getDefaultTriList();
        intersect(pair, root, asked, time, buffer, result);
        if (result.touch == 0)
            continue;
        if (!subscriber)
            return kCGCollidesAndAborted;
        HyIntersectResult view(&result);
        subscriber->mResult = &view;
        const bool goOn = subscriber->notify(other->mCollisionGeometry);
        subscriber->mResult = nullptr;
        if (!goOn || !alive.valid() || geometry->getColModel() != asked)
            return kCGCollidesAndAborted;
        answer = kCGCollides;
    }
    return answer;
}

} // namespace Hy
