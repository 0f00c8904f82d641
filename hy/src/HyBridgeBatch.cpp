#include "HyBridgeArena.h"

#include <Col/ColModel.h>
#include <Col/ColModelPair.h>
#include <Col/ColModelPairContainer.h>
#include <Col/ColRequest.h>
#include <Col/ColSimplify.h>
#include <Col/ColSpace.h>
#include <Dyn/DynBody.h>
#include <Hy/HyBridge.h>

#include <algorithm>
#include <tuple>

// Batch mode: the pairs of two bodies are sorted next to each other, so that a unit of work merges
// what they give into the one result that the bodies' contacts are made of. The first pair of such a
// run that touches has the contacts in its charge.

namespace Hy {
namespace {

std::uint64_t rankOf(const ColModel* model) {
    const DynBody* root = HyBridgeRootOf(model);
    return root ? root->serial + 1 : 0;
}

void simplify(HyBridge::Merged& merged) {
    ColContactSimplifyResult(&merged.into.result);
}

} // namespace

// Bodies by creation; a pair that has contacts in its charge stays ahead of its run.
void HyBridge::sortBatch() {
    mBatch.clear();
    for (int i = mPairs->helloFirst; i < mPairs->stayingEnd; ++i) {
        ColModelPair* pair = mPairs->array[i];
        if (!pair)
            continue;
        const std::uint64_t rank1 = rankOf(pair->model1), rank2 = rankOf(pair->model2);
        mBatch.push_back({.high = std::max(rank1, rank2),
                          .low = std::min(rank1, rank2),
                          .highID = std::max(pair->mResponseID1, pair->mResponseID2),
                          .lowID = std::min(pair->mResponseID1, pair->mResponseID2),
                          .place = i,
                          .pair = pair});
    }
    std::sort(mBatch.begin(), mBatch.end(), [](const BatchEntry& a, const BatchEntry& b) {
        const bool emptyA = !a.pair->responseData, emptyB = !b.pair->responseData;
        return std::tie(b.high, b.low, a.highID, a.lowID, emptyA, a.place) <
               std::tie(a.high, a.low, b.highID, b.lowID, emptyB, b.place);
    });
    int i = mPairs->helloFirst;
    for (const BatchEntry& entry : mBatch)
        mPairs->array[i++] = entry.pair;
    std::fill(mPairs->array + i, mPairs->array + mPairs->stayingEnd, nullptr);
}

// Places of the container. Pairs of two models without bodies have nothing in common.
bool HyBridge::goesOnInBatch(std::size_t place) const {
    const std::size_t i = place - static_cast<std::size_t>(mPairs->helloFirst);
    if (i + 1 >= mBatch.size())
        return false;
    const BatchEntry &a = mBatch[i], &b = mBatch[i + 1];
    return a.high != 0 && a.high == b.high && a.low == b.low && a.highID == b.highID &&
           a.lowID == b.lowID;
}

// Takes the result of the last pair into the run's. A parting stands for itself.
void HyBridge::mergeLast(Arena& arena) {
    if (arena.results.back().kind != Result::kRespond ||
        arena.results.back().event == kEventDisjoint)
        return;
    const Result last = arena.results.back();
    arena.results.pop_back();
    Merged& merged = arena.merged;
    ColIntersectResult& into = merged.into.result;
    if (merged.into.pair && into.contactCount > 0) {
        endContacts(last.pair, arena);
        merged.append(last, static_cast<int>(arena.buffer.size()));
        return;
    }
    if (merged.into.pair) // it touches, but has nothing to say
        endContacts(merged.into.pair, arena);
    merged.begin(last);
}

void HyBridge::endBatchRun(Arena& arena) {
    Merged& merged = arena.merged;
    if (!merged.into.pair)
        return;
    simplify(merged);
    Result& result = arena.results.emplace_back(merged.into);
    result.result.contacts = arena.store(merged.contacts.data(), merged.into.result.contactCount);
    result.result.contactMaxCount = result.result.contactCount;
    merged.into.pair = nullptr;
}

// Another pair of the run takes over.
void HyBridge::endContacts(ColModelPair* pair, Arena& arena) {
    if (!pair->responseData)
        return;
    Result& result = arena.results.emplace_back();
    result.pair = pair;
    result.kind = Result::kEndContacts;
}

void HyBridge::Merged::begin(const Result& first) {
    into = first;
    contacts.assign(first.result.contacts, first.result.contacts + first.result.contactCount);
    into.result.contacts = contacts.data();
    into.result.contactMaxCount = first.result.contactCount;
}

void HyBridge::Merged::append(const Result& last, int capacity) {
    const ColIntersectResult& from = last.result;
    ColIntersectResult& to = into.result;
    into.event = last.event;
    if (from.safeTime > 0 && (to.safeTime <= 0 || from.safeTime < to.safeTime))
        to.safeTime = from.safeTime;
    if (from.contactCount == 0)
        return;
    if (to.contactCount + from.contactCount > capacity)
        simplify(*this);

    const bool inverted = HyBridgeRootOf(last.pair->model1) != HyBridgeRootOf(into.pair->model1);
    const KitReal weight = inverted ? -from.contactCount : from.contactCount;
    to.normal = to.normal * static_cast<KitReal>(to.contactCount) + from.normal * weight;
    if (const KitReal length = to.normal.norm(); length > 0)
        to.normal = to.normal * (1 / length);

    contacts.resize(static_cast<std::size_t>(to.contactCount));
    contacts.insert(contacts.end(), from.contacts, from.contacts + from.contactCount);
    if (inverted)
        std::for_each(contacts.end() - from.contactCount, contacts.end(),
                      [](ColContact& contact) { ColContactInvert(&contact); });
    to.contacts = contacts.data();
    to.contactCount = to.contactMaxCount = static_cast<int>(contacts.size());
    const ColRequest* request = into.pair->request;
    if (2 * to.contactCount > capacity &&
        static_cast<std::uint32_t>(to.contactCount) > request->contactMaxCount)
        simplify(*this);
}

// Contacts of the old form end: which pair has them in its charge is found anew.
void HyBridge::setBatchPartPairContact(bool on) {
    if (!on || mBatchPartPairContact) {
        mBatchPartPairContact = on;
        return;
    }
    if (!beginUpdate("setBatchPartPairContact"))
        return;
    mBatchPartPairContact = true;
    ColSpacePairIterator iterator;
    ColSpacePairIteratorBegin(mSpace, &iterator);
    int count = 0;
    for (bool more = true; more; ++count) {
        ColModelPairContainerReset(mPairs);
        more = ColSpaceGetPairsIncludingFrozen(mSpace, &iterator, mPairs) != 0;
        handleTransitions();
        const auto end = [this](int first, int last) {
            for (int i = first; i < last; ++i)
                if (mPairs->array[i] && mPairs->array[i]->responseData)
                    sayResponseGoodbye(mPairs->array[i]);
        };
        end(mPairs->helloFirst, mPairs->stayingEnd);
        end(mPairs->frozenFirst, mPairs->frozenEnd);
    }
    endUpdate();
    if (count > 1)
        setCollisionPairsMaxCount(static_cast<unsigned>(count) * mCollisionPairsMaxCount);
}

} // namespace Hy
