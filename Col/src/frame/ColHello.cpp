#include <Col/ColIntersect.h>
#include <Col/ColMessage.h>
#include <Col/ColModel.h>
#include <Col/ColRequest.h>
#include "ColFrameTables.h"

#include <utility>

namespace {
ColHelloCallbackFn theCallback = nullptr;
void* theCallbackData = nullptr;

void unbind(ColModelPair* pair) {
    pair->m_intersectFn = nullptr;
    pair->m_pathIntersectFn = nullptr;
    pair->m_safetimeFn = nullptr;
    pair->m_goodbyeFn = nullptr;
}

void bind(ColModelPair* pair) {
    bool swap = false;
    const ColInteractions& found = *ColInteractionTableGetInteractions(pair, &swap);
    pair->m_intersectFn = found.intersectFn;
    pair->m_pathIntersectFn = found.pathIntersectFn;
    pair->m_safetimeFn = found.safetimeFn;
    pair->m_goodbyeFn = found.goodbyeFn;
    if (swap) {
        std::swap(pair->model1, pair->model2);
        std::swap(pair->mResponseID1, pair->mResponseID2);
    }
    if (found.helloFn)
        found.helloFn(pair);
}

bool begin(ColModelPair* pair, const char* caller) {
    if (ColPairHasGeometries(pair, caller))
        return true;
    if (pair)
        unbind(pair);
    return false;
}
} // namespace

void ColSetHelloCallback(ColHelloCallbackFn fn, void* data) {
    theCallback = fn;
    theCallbackData = data;
}

ColHelloCallbackFn ColGetHelloCallback() {
    return theCallback;
}

void* ColGetHelloCallbackData() {
    return theCallbackData;
}

void ColHello(ColModelPair* pair) {
    if (!begin(pair, " in ColHello."))
        return;
    if (theCallback)
        theCallback(pair, theCallbackData);
    if (!pair->request)
        pair->request = ColGetDefaultRequestPtr();
    bind(pair);
}

void ColHelloWithRequest(ColModelPair* pair, ColRequest* request) {
    if (!begin(pair, " in ColHelloWithRequest."))
        return;
    ColModelPairSetRequestPtr(pair, request);
    bind(pair);
}

void ColGoodbye(ColModelPair* pair) {
    if (!pair) {
        ColMistake(kColErrorPair, " in ColGoodbye.");
        return;
    }
    if (pair->m_goodbyeFn)
        pair->m_goodbyeFn(pair);
}
