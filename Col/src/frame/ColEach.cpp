#include <Col/ColEach.h>
#include <Col/ColIntersect.h>
#include <Col/ColMessage.h>
#include <Col/ColRequest.h>

#include <algorithm>

namespace {
/// Contacts that the pair may hand back.
int wantedContacts(const ColModelPair& pair) {
    const ColRequest* request = pair.request ? pair.request : ColGetDefaultRequestPtr();
    constexpr unsigned kMost = 1U << 30;
    return static_cast<int>(std::min(request->contactMaxCount, kMost));
}
} // namespace

void ColHelloEach(ColModelPairContainer* container) {
    for (int i = 0, n = ColModelPairContainerGetHelloCount(container); i < n; ++i)
        ColHello(ColModelPairContainerGetHelloArray(container)[i]);
}

void ColGoodbyeEach(ColModelPairContainer* container) {
    for (int i = 0, n = ColModelPairContainerGetGoodbyeCount(container); i < n; ++i)
        ColGoodbye(ColModelPairContainerGetGoodbyeArray(container)[i]);
}

int ColIntersectEach(ColModelPairContainer* pairs, ColModelPairContainerIterator* pairsIter,
                     ColIntersectResult* resultArray, int resultArraySize, int* resultCount,
                     ColContact* contactArray, int contactArraySize, int* contactCount) {
    if (!pairs || !pairsIter || !resultCount || !contactCount ||
        (!resultArray && resultArraySize > 0) || (!contactArray && contactArraySize > 0)) {
        ColMistake(kColErrorNullPointer, "in ColIntersectEach.");
        return 0;
    }
    *resultCount = *contactCount = 0;
    int& unread = pairsIter->unreadCurrentPairsLessThanIndex;
    for (unread = std::min(unread, pairs->stayingEnd); unread > pairs->helloFirst; --unread) {
        ColModelPair* pair = pairs->array[unread - 1];
        if (!pair)
            continue;
        const int room = std::max(contactArraySize, 0) - *contactCount;
        const bool isFirst = *resultCount == 0; // waiting would not give it more room
        if (*resultCount >= resultArraySize || (wantedContacts(*pair) > room && !isFirst))
            return 1;
        ColIntersectResult& result = resultArray[(*resultCount)++];
        result.contacts = contactArray + *contactCount;
        result.contactMaxCount = room;
        ColIntersect(pair, &result);
        *contactCount += result.contactCount;
    }
    return 0;
}
