#include <Hy/HyDynamicsContactInput.h>

#include <Col/ColModelPair.h>
#include <Col/ColSimplify.h>
#include <Dyn/DynContact.h>
#include <Hy/HyDynamicsContact.h>
#include <Hy/HyMessage.h>

#include <algorithm>

namespace Hy {

namespace {

template <class Call>
void forEachContact(HyDynamicsContact* first, Call call) {
    for (DynContact* c = first ? first->getDynContact() : nullptr; c; c = c->nextContact)
        call(*c);
}

ColContact colContactOf(DynContact& contact, const ColModelPair& pair) {
    ColContact copy;
    copy.position = lsVec3::constCast(contact.cpos);
    copy.normal = lsVec3::constCast(contact.normal);
    copy.separation = -contact.penetration;
    copy.model1 = pair.model1;
    copy.model2 = pair.model2;
    copy.internalData = &contact;
    return copy;
}

/// Puts another request into a pair for a while.
class RequestInForce {
public:
    RequestInForce(ColModelPair& pair, ColRequest* request) : mPair(pair), mOwn(pair.request) {
        if (request)
            mPair.request = request;
    }
    RequestInForce(const RequestInForce&) = delete;
    RequestInForce& operator=(const RequestInForce&) = delete;
    ~RequestInForce() { mPair.request = mOwn; }

private:
    ColModelPair& mPair;
    ColRequest* mOwn;
};

void copyContacts(HyDynamicsContact* first, ColIntersectResult& result) {
    result.contactCount = result.groupCount = 0;
    lsVec3 sum;
    forEachContact(first, [&](DynContact& contact) {
        if (!DynConstraintIsEnabled(&contact) || result.contactCount >= result.contactMaxCount)
            return;
        result.contacts[result.contactCount++] = colContactOf(contact, *result.pair);
        sum += lsVec3::constCast(contact.normal);
    });
    result.normal = sum / std::max(result.contactCount, 1);
}

void writeBack(const ColContact& from, KitReal surface, int group) {
    auto* contact = static_cast<DynContact*>(from.internalData);
    DynContactSetNormal(contact, from.normal.v);
    DynContactSetPosition(contact, from.position.v);
    DynContactSetPenetration(contact, -from.separation);
    DynContactSetSurface(contact, surface);
    DynContactSetGroupIndex(contact, group);
}

/// Answers the contacts that the groups hold. A request for no groups leaves them all in none.
int writeBackGroups(const ColIntersectResult& result) {
    int next = 0;
    for (int group = 0; group < result.groupCount; ++group) {
        const ColIntersectGroupResult& g = result.groupResult[group];
        const int end = std::min(next + g.contactCount, result.contactCount);
        for (; next < end; ++next)
            writeBack(result.contacts[next], g.surface, group);
    }
    for (; result.groupCount == 0 && next < result.contactCount; ++next)
        writeBack(result.contacts[next], 1, -1);
    return next;
}

void disableOthers(HyDynamicsContact* first, const ColContact* kept, int count) {
    forEachContact(first, [&](DynContact& contact) {
        const bool isKept = std::any_of(kept, kept + count, [&contact](const ColContact& each) {
            return each.internalData == &contact;
        });
        if (!isKept)
            DynConstraintDisable(&contact);
    });
}

} // namespace

void HyDynamicsContactInput::recomputeContactGroups(ColIntersectResult* result,
                                                    ColRequest* request) {
    if (!result || !result->pair || (result->contactMaxCount > 0 && !result->contacts)) {
        HyWarning(0, "HyDynamicsContactInput::recomputeContactGroups: the result must have a pair "
                     "and contacts.\n");
        return;
    }
    bool any = false;
    forEachContact(mContactFirst,
                   [&any](DynContact& contact) { any = any || DynConstraintIsEnabled(&contact); });
    if (!any)
        return;
    const RequestInForce inForce(*result->pair, request);
    copyContacts(mContactFirst, *result);
    ColContactSimplifyResult(result);
    disableOthers(mContactFirst, result->contacts, writeBackGroups(*result));
}

} // namespace Hy
