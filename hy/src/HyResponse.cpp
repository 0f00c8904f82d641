#include <Hy/HyResponse.h>

#include "HyContactChain.h"

#include <Col/ColIntersect.h>
#include <Col/ColModel.h>
#include <Col/ColModelPair.h>
#include <Dyn/DynConstraint.h>
#include <Dyn/DynContact.h>
#include <Hy/HyBridge.h>
#include <Hy/HyCollisionGeometryPair.h>
#include <Hy/HyIntersectResult.h>

namespace Hy {

void HyResponseStartBody_Body::operator()(HyBridge* bridge, ColModelPair* pair, CxSpace*, DynWorld*,
                                          const HyResponsePair*) {
    ColHelloWithRequest(
        pair, bridge->getPartPartColRequest(pair->model1->mRequestID, pair->model2->mRequestID));
    pair->responseData = DynContactInvalidID;
}

void HyResponseStart_Sensor_Body::operator()(HyBridge*, ColModelPair* pair, CxSpace*, DynWorld*,
                                             const HyResponsePair* response) {
    ColHelloWithRequest(pair, response->mRequest.getColRequest());
    pair->responseData = nullptr;
}

void HyResponseEndBody_Body::operator()(HyBridge*, ColModelPair* pair, CxSpace*, DynWorld*,
                                        const HyResponsePair*) {
    auto* contact = static_cast<DynContact*>(pair->responseData);
    while (contact) {
        DynContact* next = contact->nextContact;
        if (DynConstraintIsEnabled(contact))
            DynConstraintEnableBodiesIfMoving(contact);
        HyDestroyContact(contact);
        contact = next;
    }
    pair->responseData = DynContactInvalidID;
}

void HyResponseActive_User::operator()(HyBridge*, ColModelPair* pair, ColIntersectResult* result,
                                       CxSpace*, DynWorld*, const HyResponsePair*) {
    HyIntersectResult view(result);
    userResponse(&view, HyCollisionGeometryPair::fromColModelPair(pair));
}

} // namespace Hy
