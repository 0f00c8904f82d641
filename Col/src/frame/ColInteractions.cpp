#include <Col/ColIntersect.h>
#include <Col/ColMessage.h>
#include <Col/ColModelFunctions.h>
#include <Col/ColRequest.h>
#include "ColFrameTables.h"
#include "ColMovedPair.h"

#include <utility>

namespace {
/// Whether the pair can be intersected into the result; reports what is missing.
bool isReady(ColModelPair* pair, ColIntersectResult* result, const char* caller) {
    if (!result) {
        ColMistake(kColErrorResult, caller);
        return false;
    }
    ColIntersectResultClear(result);
    result->pair = pair;
    result->safeTime = 0;
    if (!ColPairHasGeometries(pair, caller))
        return false;
    if (!pair->model1->mGlobalTM || !pair->model2->mGlobalTM) {
        ColMistake(kColErrorTransform, caller);
        return false;
    }
    if (!result->contacts && result->contactMaxCount > 0) {
        ColMistake(kColErrorContactArray, caller);
        return false;
    }
    if (!pair->request)
        pair->request = ColGetDefaultRequestPtr();
    return true;
}

/// A composite names its children itself.
void nameModels(const ColModelPair& pair, ColIntersectResult& result) {
    if (ColModelIsComposite(pair.model1) || ColModelIsComposite(pair.model2))
        return;
    for (int i = 0; i < result.contactCount; ++i) {
        result.contacts[i].model1 = pair.model1;
        result.contacts[i].model2 = pair.model2;
    }
}
} // namespace

bool ColNearby(ColModelPair* pair) {
    if (!ColPairHasGeometries(pair, " in ColNearby."))
        return false;
    lsVec3 min1, max1, min2, max2;
    ColModelGetAABB(pair->model1, &min1, &max1);
    ColModelGetAABB(pair->model2, &min2, &max2);
    for (int i = 0; i < 3; ++i)
        if (!(min1[i] <= max2[i] && min2[i] <= max1[i]))
            return false;
    return true;
}

int ColIntersect(ColModelPair* pair, ColIntersectResult* result) {
    if (!isReady(pair, result, " in ColIntersect.") || !pair->m_intersectFn)
        return 0;
    result->touch = pair->m_intersectFn(pair, result);
    nameModels(*pair, *result);
    return 1;
}

int ColIntersectAt(ColModelPair* pair, ColIntersectResult* result, KitReal time) {
    if (!isReady(pair, result, " in ColIntersectAt."))
        return 0;
    ColMovedPair moved(pair);
    moved.moveTo(time);
    const int served = ColIntersect(moved.pair(), result);
    moved.nameOriginals(result);
    result->safeTime = time;
    return served;
}

int ColPathIntersect(ColModelPair* pair, ColIntersectResult* result, KitReal time) {
    if (!isReady(pair, result, " in ColPathIntersect.") || !pair->m_intersectFn)
        return 0;
    const bool isFast = pair->model1->mFastMoving || pair->model2->mFastMoving;
    if (!isFast || !pair->m_pathIntersectFn)
        return ColIntersect(pair, result);
    result->touch = pair->m_pathIntersectFn(pair, result, time);
    nameModels(*pair, *result);
    return 1;
}

int ColSafeTime(ColModelPair* pair, KitReal maxTime, ColSafeTimeResult* result) {
    if (!result) {
        ColMistake(kColErrorResult, " in ColSafeTime.");
        return 0;
    }
    result->pair = pair;
    result->time = maxTime;
    if (!ColPairHasGeometries(pair, " in ColSafeTime.") || !pair->m_safetimeFn)
        return 0;
    const ColModel &m1 = *pair->model1, &m2 = *pair->model2;
    if (m1.linearVelocity && m1.angularVelocity && m2.linearVelocity && m2.angularVelocity)
        pair->m_safetimeFn(pair, maxTime, result);
    return 1;
}

void ColDistanceRequestInit(ColDistanceRequest* request) {
    if (request)
        *request = {};
    else
        ColMistake(kColErrorNullPointer, "in ColDistanceRequestInit.");
}

namespace {
/// A pair with the models in the order that a distance function expects, and the way back.
struct OrderedPair {
    ColModelPair pair;
    const ColInteractions* interactions = nullptr;
    bool swapped = false;

    explicit OrderedPair(ColModelPair* original) : pair(*original) {
        interactions = ColInteractionTableGetInteractions(original, &swapped);
        if (swapped)
            std::swap(pair.model1, pair.model2);
    }
    void restore(ColModelPair* original, ColDistanceResult* result) const {
        result->pair = original;
        if (!swapped)
            return;
        std::swap(result->point1, result->point2);
        std::swap(result->element1, result->element2);
    }
};

bool isReadyForDistance(ColModelPair* pair, ColDistanceResult* result, const char* caller) {
    if (!result) {
        ColMistake(kColErrorResult, caller);
        return false;
    }
    result->pair = pair;
    result->distanceLB = result->distanceUB = kKitInfinity;
    if (!ColPairHasGeometries(pair, caller))
        return false;
    if (!pair->model1->mGlobalTM || !pair->model2->mGlobalTM) {
        ColMistake(kColErrorTransform, caller);
        return false;
    }
    return true;
}
} // namespace

int ColDistance(ColModelPair* pair, ColDistanceResult* result) {
    if (!isReadyForDistance(pair, result, " in ColDistance."))
        return 0;
    OrderedPair ordered(pair);
    if (!ordered.interactions->distanceFn)
        return ColApproximateDistance(pair, nullptr, result);
    const int found = ordered.interactions->distanceFn(&ordered.pair, result);
    ordered.restore(pair, result);
    return found;
}

int ColApproximateDistance(ColModelPair* pair, const ColDistanceRequest* request,
                           ColDistanceResult* result) {
    if (!isReadyForDistance(pair, result, " in ColApproximateDistance."))
        return 0;
    OrderedPair ordered(pair);
    if (!ordered.interactions->approxDistanceFn)
        return 0;
    const ColDistanceRequest fresh;
    const int found =
        ordered.interactions->approxDistanceFn(&ordered.pair, request ? request : &fresh, result);
    ordered.restore(pair, result);
    return found;
}
