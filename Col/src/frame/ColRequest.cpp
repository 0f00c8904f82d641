#include <Col/ColMessage.h>
#include <Col/ColRequest.h>
#include "ColFrameTables.h"

namespace {
ColRequest theBuiltIn;
ColRequest* theDefault = &theBuiltIn;
} // namespace

void ColDefaultRequestInit() {
    theBuiltIn = {};
    theDefault = &theBuiltIn;
}

void ColRequestInit(ColRequest* request) {
    if (request)
        *request = {};
    else
        ColMistake(kColErrorNullPointer, "in ColRequestInit.");
}

ColRequest* ColGetDefaultRequestPtr() {
    return theDefault;
}

void ColSetDefaultRequestPtr(ColRequest* request) {
    theDefault = request ? request : &theBuiltIn;
}
