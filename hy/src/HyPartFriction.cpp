#include <Hy/HyPart.h>

#include <Dyn/DynBody.h>
#include <Hy/FrictionDirectionSubscriber.h>
#include <Hy/HyBridge.h>
#include <Hy/HyDynamicsContactInput.h>
#include <Hy/HyMessage.h>
#include <Hy/HyUniverse.h>

namespace Hy {

namespace {

void notifySubscriber(DynBaseConstraint* firstContact, DynBody* body, void* subscriber) {
    HyDynamicsContactInput input(firstContact);
    static_cast<FrictionDirectionSubscriber*>(subscriber)->notify(body->mPart, &input);
}

} // namespace

void HyPart::setFrictionDirectionSubscriber(FrictionDirectionSubscriber* subscriber) {
    if (subscriber == mFrictionDirectionSubscriber.get())
        return;
    if (mUniverse && mUniverse->getBridge()->isUpdating()) { // the present one may be at work
        HyWarning(0, "HyPart::setFrictionDirectionSubscriber: cannot be called from a response or "
                     "subscriber.\n");
        return;
    }
    DynBodySetFrictionDirectionCB(mDynBodyID, subscriber ? notifySubscriber : nullptr, subscriber);
    mFrictionDirectionSubscriber.reset(subscriber);
}

FrictionDirectionSubscriber* HyPart::getFrictionDirectionSubscriber() const {
    return mFrictionDirectionSubscriber.get();
}

} // namespace Hy
