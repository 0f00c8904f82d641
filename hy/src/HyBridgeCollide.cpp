#include "HyBridgeArena.h"
#include "HyContactChain.h"

#include <Col/ColIntersect.h>
#include <Col/ColModel.h>
#include <Col/ColModelPair.h>
#include <Col/ColModelPairContainer.h>
#include <Col/ColSpace.h>
#include <Dyn/DynBody.h>
#include <Dyn/DynContact.h>
#include <Hy/HyBridge.h>
#include <Hy/HyCollisionGeometry.h>
#include <Hy/HyDynamicsContactInput.h>
#include <Hy/HyFrame.h>
#include <Hy/HyIntersectFilter.h>
#include <Hy/HyIntersectResult.h>
#include <Hy/HyMessage.h>
#include <Hy/HyUniverse.h>
#include <Kit/KitProfile.h>

#include <algorithm>
#include <array>
#include <numeric>
#include <utility>

// One update of the bridge: goodbye, hello, intersection on the workers, responses in order.

namespace Hy {
namespace {

/// Fewer pairs are not worth the workers.
constexpr std::size_t kParallelPairs = 9;
/// Pairs of one unit of work: many small units balance, and their number does not follow that of the
/// workers.
constexpr std::size_t kPairsPerUnit = 32;

bool isSensor(const ColModel* model) {
    return model->mResponseID == HyUniverse::kResponseSensor;
}

// Each filter is asked once, in the order of the pair.
bool filtersAgree(const ColModel* model1, const ColModel* model2) {
    const HyCollisionGeometry *g1 = model1->mCollisionGeometry, *g2 = model2->mCollisionGeometry;
    HyIntersectFilter *filter1 = model1->mIntersectFilter, *filter2 = model2->mIntersectFilter;
    return (!filter1 || filter1->isPairEnabled(g1, g2)) &&
           (!filter2 || filter2 == filter1 || filter2->isPairEnabled(g1, g2));
}

} // namespace

// Responses and subscribers walk what an update holds, so none may begin inside of another.
bool HyBridge::beginUpdate(const char* operation) {
    if (mUpdating) {
        HyWarning(0, "HyBridge::%s: cannot be called from a response or subscriber.\n", operation);
        return false;
    }
    mUpdating = true;
    ColSpaceEndChanges(mSpace);
    return true;
}

void HyBridge::endUpdate() {
    ColModelPairContainerReset(mPairs); // the pairs may go in the interval that begins
    ColSpaceBeginChanges(mSpace);
    mUpdating = false;
}

void HyBridge::updateContacts(HyReal time) {
    if (!beginUpdate("updateContacts"))
        return;
    mSafeTime = time;
    ColSpacePairIterator iterator;
    ColSpacePairIteratorBegin(mSpace, &iterator);
    int count = 0;
    for (bool more = true; more; ++count) {
        ColModelPairContainerReset(mPairs);
        more = mNumInactiveEntityPairSubscribers > 0
                   ? ColSpaceGetPairsIncludingFrozen(mSpace, &iterator, mPairs) != 0
                   : ColSpaceGetPairs(mSpace, &iterator, mPairs) != 0;
        handleTransitions();
        handleCollisions(time);
    }
    endUpdate();
    // All pairs at a time keep the workers busy. Without workers it is the same, so that the order of
    // the pairs is.
    if (count > 1) {
        const unsigned size = static_cast<unsigned>(count + 1) * mCollisionPairsMaxCount;
        HyWarning(0, "HyBridge::updateContacts: resizing collision pair max count to %d\n", size);
        setCollisionPairsMaxCount(size);
    }
}

void HyBridge::updateTransitions() {
    if (!beginUpdate("updateTransitions"))
        return;
    ColSpacePairIterator iterator;
    ColSpacePairIteratorBegin(mSpace, &iterator);
    for (bool more = true; more;) {
        ColModelPairContainerReset(mPairs);
        more = ColSpaceGetTransitions(mSpace, &iterator, mPairs) != 0;
        handleTransitions();
    }
    endUpdate();
}

void HyBridge::handleTransitions() {
    const KitProfileScope zone("contacts: pairs that begin and end");
    for (int i = mPairs->goodbyeFirst; i < mPairs->goodbyeEnd; ++i)
        if (mPairs->array[i])
            sayGoodbye(mPairs->array[i]);
    for (int i = mPairs->helloFirst; i < mPairs->helloEndStayingFirst; ++i) {
        ColModelPair* pair = mPairs->array[i];
        if (!pair)
            continue;
        const HyResponsePair& response = getResponse(pair->mResponseID1, pair->mResponseID2);
        if (response.mResponseHello.valid())
            (*response.mResponseHello)(this, pair, mSpace, mWorld, &response);
        else
            ColHello(pair);
    }
}

// A pair of a removed model was ended at its removal.
void HyBridge::sayGoodbye(ColModelPair* pair) {
    if ((pair->m_flags & kColPairEnded) != 0)
        return;
    pair->m_flags |= kColPairEnded;
    if (ColModelPairGetWasIntersecting(pair)) {
        ColModelPairSetWasIntersecting(pair, false);
        ColIntersectResult empty;
        empty.pair = pair;
        notify(pair, &empty, kEventDisjoint);
    }
    sayResponseGoodbye(pair);
    ColGoodbye(pair);
}

void HyBridge::sayResponseGoodbye(ColModelPair* pair) {
    const HyResponsePair& response = getResponse(pair->mResponseID1, pair->mResponseID2);
    if (response.mResponseGoodbye.valid())
        (*response.mResponseGoodbye)(this, pair, mSpace, mWorld, &response);
}

void HyBridge::modelRemoved(ColModel* model) {
    const auto isOf = [model](const ColModelPair* pair) {
        return pair && (pair->model1 == model || pair->model2 == model);
    };
    if (mUpdating) {
        // What waits for its goodbye is not among the pairs that the removal ends.
        for (int i = mPairs->goodbyeFirst; i < mPairs->goodbyeEnd; ++i)
            if (isOf(mPairs->array[i]))
                sayGoodbye(mPairs->array[i]);
        for (int i = 0; i < mPairs->size; ++i)
            if (isOf(mPairs->array[i]))
                mPairs->array[i] = nullptr;
        for (const auto& arena : mArenas)
            for (Result& result : arena->results)
                if (isOf(result.pair))
                    result.pair = nullptr;
        dropResultsOf(model); // another pair of the two bodies may speak for this one
    }
    // The model's pairs stand last in the list, behind those that earlier removals have ended. A
    // subscriber may remove another model meanwhile, which lengthens the list.
    for (std::size_t i = mSpace->GetRemovedPairList().size(); i-- > 0;) {
        ColModelPair* pair = &mSpace->GetRemovedPairList()[i]->mPair;
        if ((pair->m_flags & kColPairEnded) != 0)
            break;
        if (isOf(pair))
            sayGoodbye(pair);
    }
    ColSpaceForgetModel(mSpace, model);
}

// The pair is that of the composite and goes on; what it touches comes again in the next step.
void HyBridge::childModelRemoved(const ColModel* model) {
    if (mUpdating)
        dropResultsOf(model);
}

void HyBridge::dropResultsOf(const ColModel* model) {
    const auto isOf = [model](const ColModel* each) {
        while (each && each != model)
            each = each->mParent;
        return each == model;
    };
    for (const auto& arena : mArenas)
        for (Result& waiting : arena->results) {
            ColIntersectResult& result = waiting.result;
            const bool names = std::any_of(
                result.contacts, result.contacts + result.contactCount,
                [&isOf](const ColContact& c) { return isOf(c.model1) || isOf(c.model2); });
            if (!names)
                continue;
            if (waiting.pair && waiting.event == kEventFirst)
                ColModelPairSetWasIntersecting(waiting.pair, false);
            waiting.pair = nullptr;
            result.contactCount = result.groupCount = 0; // a subscriber may have it in hand
        }
}

// Intersection.

void HyBridge::handleCollisions(HyReal time) {
    const auto first = static_cast<std::size_t>(mPairs->helloFirst);
    const auto end = static_cast<std::size_t>(mPairs->stayingEnd);
    const std::size_t count = end - first;
    if (mBatchPartPairContact) {
        sortBatch();
        mOrder.resize(count);
        std::iota(mOrder.begin(), mOrder.end(), mPairs->helloFirst);
    } else {
        sortByGenerators();
    }
    const std::size_t mostUnits = (count + kPairsPerUnit - 1) / kPairsPerUnit;
    while (mArenas.size() < mostUnits)
        mArenas.push_back(std::make_unique<Arena>());
    if (mUnits.size() < mostUnits)
        mUnits.resize(mostUnits);
    std::size_t units = 0;
    for (std::size_t from = 0; from < count; ++units) {
        const std::size_t to = unitEnd(from, count);
        mUnits[units].set(this, from, to, time, mArenas[units].get());
        from = to;
    }
    HyFrame* frame = HyFrame::currentInstance();
    const bool parallel = mMultiThreaded && end - first >= kParallelPairs && frame;
    KitThreadPool* pool = parallel ? frame->getThreadPool() : nullptr;
    if (pool && !std::exchange(mToldThreaded, true))
        HyInfo(0, "HyBridge::handleCollisions running in threaded mode.\n");
    // The stepping thread takes part.
    mTriangleLists->reserve(pool ? static_cast<int>(pool->getThreadCount()) + 1 : 1,
                            pool != nullptr);
    KitThreadPoolExecute(pool, mUnits.data(), units);
    for (std::size_t unit = 0; unit < units; ++unit) {
        mSafeTime = std::min(mSafeTime, mArenas[unit]->safeTime);
        mArenas[unit]->messages.deliver();
        if (std::exchange(mArenas[unit]->overrun, 0) > 0)
            HyInfo(0,
                   "HyBridge::handleCollisions: ContactBuffer size has been increased to %d, the "
                   "initial buffer size can be set using HyUniverse::setContactBufferSize.\n",
                   static_cast<int>(mArenas[unit]->buffer.size()));
    }
    respond(units);
    handleInactivePairs();
}

// Pairs of one generator run one after another, so that it stays in the caches; they keep their order.
// Generators are numbered as they come, and the last bucket takes all for whom there is no number.
void HyBridge::sortByGenerators() {
    constexpr std::size_t kBuckets = 32;
    const auto first = static_cast<std::size_t>(mPairs->helloFirst);
    const std::size_t count = static_cast<std::size_t>(mPairs->stayingEnd) - first;
    std::array<ColIntersectFn, kBuckets> generators = {};
    std::array<std::size_t, kBuckets + 1> next = {}; // of each bucket, where its next pair goes
    mOrder.resize(count);
    mBuckets.resize(count);
    std::size_t used = 0, bucket = 0;
    for (std::size_t i = 0; i < count; ++i) {
        const ColModelPair* pair = mPairs->array[first + i];
        const ColIntersectFn generator = pair ? pair->m_intersectFn : nullptr;
        if (used == 0 || generators[bucket] != generator) {
            bucket = 0;
            while (bucket < used && generators[bucket] != generator)
                ++bucket;
            if (bucket == used && used < kBuckets)
                generators[used++] = generator;
            bucket = std::min(bucket, kBuckets - 1);
        }
        mBuckets[i] = static_cast<std::uint8_t>(bucket);
        ++next[bucket + 1];
    }
    std::partial_sum(next.begin(), next.end(), next.begin());
    for (std::size_t i = 0; i < count; ++i)
        mOrder[next[mBuckets[i]]++] = static_cast<int>(first + i);
}

// No unit cuts the pairs of two bodies in batch mode.
std::size_t HyBridge::unitEnd(std::size_t from, std::size_t end) const {
    std::size_t to = std::min(end, from + kPairsPerUnit);
    while (mBatchPartPairContact && to < end && goesOnInBatch(to - 1))
        ++to;
    return to;
}

void HyBridge::collide(std::size_t first, std::size_t end, HyReal time, Arena& arena) const {
    const KitProfileScope zone("contacts: intersect");
    arena.clear();
    arena.safeTime = time;
    const KitMessageQueue::Scope messages(arena.messages);
    const TriangleLists::Loan loan(*mTriangleLists);
    arena.triangleList = loan.list();
    if (arena.buffer.size() < static_cast<std::size_t>(mContactBufferSize))
        arena.buffer.resize(static_cast<std::size_t>(mContactBufferSize));
    arena.merged.into.pair = nullptr;
    for (std::size_t i = first; i < end; ++i) {
        const std::size_t before = arena.results.size();
        if (ColModelPair* pair = mPairs->array[mOrder[i]])
            collidePair(pair, time, arena);
        const bool hasResult = arena.results.size() > before;
        if (hasResult)
            arena.results.back().place = mOrder[i];
        if (!mBatchPartPairContact)
            continue;
        if (hasResult)
            mergeLast(arena);
        if (!goesOnInBatch(i))
            endBatchRun(arena);
    }
}

// Runs on a worker: touches the pair and the arena alone.
void HyBridge::collidePair(ColModelPair* pair, HyReal time, Arena& arena) const {
    const auto add = [&](Result::Kind kind, eIntersectEventType event) -> ColIntersectResult& {
        Result& result = arena.results.emplace_back();
        result.pair = pair;
        result.kind = kind;
        result.event = event;
        result.result.pair = pair;
        return result.result;
    };
    const ColModel *model1 = pair->model1, *model2 = pair->model2;
    const bool touched = ColModelPairGetWasIntersecting(pair);
    if (model1->mTemporaryDisabledStatus != kNotTemporaryDisabled ||
        model2->mTemporaryDisabledStatus != kNotTemporaryDisabled) {
        ColModelPairSetWasIntersecting(pair, false);
        if (touched)
            add(Result::kEndContacts, kEventCount);
        return;
    }
    if (time != 0 && ColSpaceModelIsFrozenNoCheck(model1) && ColSpaceModelIsFrozenNoCheck(model2))
        return;
    if (!pairNeedsCollision(model1, model2, mNumSensorSensorPairSubscribers > 0,
                            mNumSensorPartPairSubscribers > 0, mAcceptNonDynamicPairCollision)) {
        // A load that rests on an animated part sleeps with its contacts: the part can wake it.
        if (touched && !(bothRest(model1, model2) && filtersAgree(model1, model2))) {
            ColModelPairSetWasIntersecting(pair, false);
            add(Result::kRespond, kEventDisjoint);
        }
        return;
    }
    ColIntersectResult result;
    for (;;) {
        result = ColIntersectResult();
        result.contacts = arena.buffer.data();
        result.contactMaxCount = static_cast<int>(arena.buffer.size());
        result.bridge = const_cast<HyBridge*>(this);
        result.userTriangleList = arena.triangleList;
        ColPathIntersect(pair, &result, time);
        if (result.contactCount < result.contactMaxCount - 1)
            break;
        ++arena.overrun; // the contacts may have been cut
        arena.buffer.resize(2 * arena.buffer.size());
    }
    bool touches = result.touch != 0;
    if (touches && result.safeTime > 0 && result.safeTime < time) {
        arena.safeTime = std::min(arena.safeTime, result.safeTime);
        const HyFrame* frame = HyFrame::currentInstance();
        if (frame && frame->getContinuousCollisionDetection())
            touches = false; // the step is cut short there, and the pair comes again
    }
    if (!touches && !touched)
        return;
    ColModelPairSetWasIntersecting(pair, touches);
    ColIntersectResult& kept = add(Result::kRespond, !touches  ? kEventDisjoint
                                                     : touched ? kEventActive
                                                               : kEventFirst);
    if (!touches)
        return;
    kept = result;
    kept.userTriangleList = nullptr; // lent to another unit by then
    kept.contacts = arena.store(result.contacts, result.contactCount);
    kept.contactMaxCount = result.contactCount;
}

bool HyBridge::pairNeedsCollision(const ColModel* model1, const ColModel* model2, bool sensorSensor,
                                  bool sensorPart, bool acceptNonDynamic) const {
    if (!filtersAgree(model1, model2))
        return false;
    const DynBody *root1 = HyBridgeRootOf(model1), *root2 = HyBridgeRootOf(model2);
    if (root1 && root1 == root2)
        return false;
    if (isSensor(model1) || isSensor(model2))
        return isSensor(model1) && isSensor(model2) ? sensorSensor : sensorPart;
    if (!root1 || !root2)
        return true;
    if (DynBodyIsFrozen(root1) && DynBodyIsFrozen(root2))
        return false;
    return DynBodyIsEnabled(root1) || DynBodyIsEnabled(root2) || acceptNonDynamic;
}

bool HyBridge::bothRest(const ColModel* model1, const ColModel* model2) {
    const DynBody *root1 = HyBridgeRootOf(model1), *root2 = HyBridgeRootOf(model2);
    return !isSensor(model1) && !isSensor(model2) && root1 && root2 && root1 != root2 &&
           !DynBodyIsEnabled(root1) && !DynBodyIsEnabled(root2) &&
           !(DynBodyIsFrozen(root1) && DynBodyIsFrozen(root2));
}

// Responses.

// In the order of the pairs, whatever that of their intersections was. In batch mode a pair may have
// two results, and they stand in order.
void HyBridge::respond(std::size_t units) {
    const KitProfileScope zone("contacts: respond");
    mWaiting.clear();
    if (!mBatchPartPairContact)
        mWaiting.resize(mOrder.size(), nullptr);
    for (std::size_t unit = 0; unit < units; ++unit)
        for (Result& result : mArenas[unit]->results)
            if (mBatchPartPairContact)
                mWaiting.push_back(&result);
            else
                mWaiting[static_cast<std::size_t>(result.place - mPairs->helloFirst)] = &result;
    for (Result* result : mWaiting)
        if (result && result->pair)
            respond(*result);
}

void HyBridge::respond(Result& result) {
    if (result.kind == Result::kRespond)
        handlePairResponse(result.pair, &result.result, result.event);
    else
        sayResponseGoodbye(result.pair);
}

void HyBridge::handlePairResponse(ColModelPair* pair, ColIntersectResult* result,
                                  eIntersectEventType event) {
    const HyResponsePair& response = getResponse(pair->mResponseID1, pair->mResponseID2);
    if (response.mResponseActive.valid())
        (*response.mResponseActive)(this, pair, result, mSpace, mWorld, &response);
    if ((pair->m_flags & kColPairEnded) == 0) // the response may have removed a model
        notify(pair, result, event);
}

void HyBridge::notify(ColModelPair* pair, ColIntersectResult* result, eIntersectEventType event) {
    if (!hasSubscriberLists() || !mCallBackEnabled)
        return;
    HySubscriberListResponse* list =
        getIntersectSubscriberList(pair->mResponseID1, pair->mResponseID2, event);
    if (!list || list->empty())
        return;
    HyTimer timer(true);
    HyIntersectResult view(result);
    if (event == kEventDisjoint || event == kEventInactive) {
        list->notifyDisjoint(event, &view);
    } else {
        const bool sensor = pair->mResponseID1 == HyUniverse::kResponseSensor ||
                            pair->mResponseID2 == HyUniverse::kResponseSensor;
        HyDynamicsContactInput input(sensor ? nullptr
                                            : static_cast<DynContact*>(pair->responseData));
        list->notifyIntersect(event, &view, &input);
        if (!sensor && (pair->m_flags & kColPairEnded) == 0)
            HyResolveFriction(static_cast<DynContact*>(pair->responseData));
    }
    mAccIntersectSubscriberTime += timer.stop();
}

void HyBridge::handleInactivePairs() {
    if (mNumInactiveEntityPairSubscribers == 0 || !hasSubscriberLists())
        return;
    for (int i = mPairs->frozenFirst; i < mPairs->frozenEnd; ++i) {
        ColModelPair* pair = mPairs->array[i];
        if (!pair || !ColModelPairGetWasIntersecting(pair))
            continue;
        ColIntersectResult empty;
        empty.pair = pair;
        if (pair->model1->mTemporaryDisabledStatus == kNotTemporaryDisabled &&
            pair->model2->mTemporaryDisabledStatus == kNotTemporaryDisabled) {
            notify(pair, &empty, kEventInactive);
            continue;
        }
        ColModelPairSetWasIntersecting(pair, false);
        sayResponseGoodbye(pair);
        if (mPairs->array[i])
            notify(pair, &empty, kEventDisjoint);
    }
}

} // namespace Hy
