#include <Col/ColMessage.h>
#include <Col/ColModel.h>
#include <Col/ColModelPair.h>
#include <Col/ColRequest.h>
#include <Kit/KitMemory.h>
#include "ColFrameTables.h"

#include <new>

ColModelPair* ColModelPairCreate(ColModel* model1, ColModel* model2) {
    void* memory = KitMemoryAPI_create(sizeof(ColModelPair));
    if (!memory)
        return nullptr;
    auto* pair = new (memory) ColModelPair;
    ColModelPairReset(pair, model1, model2);
    return pair;
}

void ColModelPairDestroy(ColModelPair* pair) {
    KitMemoryAPI_destroy(pair);
}

void ColModelPairReset(ColModelPair* pair, ColModel* model1, ColModel* model2) {
    if (pair)
        *pair = {.model1 = model1,
                 .model2 = model2,
                 .request = ColGetDefaultRequestPtr(),
                 .mResponseID1 = model1 ? model1->mResponseID : 0,
                 .mResponseID2 = model2 ? model2->mResponseID : 0};
    else
        ColMistake(kColErrorPair, " in ColModelPairReset.");
}

void ColModelPairSetRequestPtr(ColModelPair* pair, ColRequest* request) {
    if (pair)
        pair->request = request ? request : ColGetDefaultRequestPtr();
    else
        ColMistake(kColErrorPair, " in ColModelPairSetRequestPtr.");
}

ColRequest* ColModelPairGetRequestPtr(const ColModelPair* pair) {
    return pair ? pair->request : nullptr;
}

void ColModelPairSetWasIntersecting(ColModelPair* pair, bool intersecting) {
    if (!pair)
        ColMistake(kColErrorPair, " in ColModelPairSetWasIntersecting.");
    else if (intersecting)
        pair->m_flags |= kColPairWasIntersecting;
    else
        pair->m_flags &= ~kColPairWasIntersecting;
}

bool ColModelPairGetWasIntersecting(const ColModelPair* pair) {
    return pair && (pair->m_flags & kColPairWasIntersecting) != 0;
}

bool ColPairHasGeometries(const ColModelPair* pair, const char* caller) {
    int fault = 0;
    if (!pair)
        fault = kColErrorPair;
    else if (!pair->model1 || !pair->model2)
        fault = kColErrorPairModels;
    else if (!pair->model1->mGeometry || !pair->model2->mGeometry)
        fault = kColErrorGeometry;
    if (fault != 0)
        ColMistake(fault, caller);
    return fault == 0;
}
