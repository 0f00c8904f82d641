#include <Dyn/DynBody.h>
#include <Kit/KitMessage.h>

namespace {

void setThreshold(KitReal& threshold, KitReal value, const char* function) {
    if (!(value >= 0)) { // also refuses NaN; infinity lets the body sleep at any speed
        KitWarning(12, "%s: the threshold must not be negative.\n", function);
        return;
    }
    threshold = value;
}

} // namespace

void DynBodySetAutoDisableVelocityThreshold(DynBody* body, KitReal v) {
    setThreshold(body->autoDisableParams.vel_thresh, v, "DynBodySetAutoDisableVelocityThreshold");
}

void DynBodySetAutoDisableAngularVelocityThreshold(DynBody* body, KitReal v) {
    setThreshold(body->autoDisableParams.velrot_thresh, v,
                 "DynBodySetAutoDisableAngularVelocityThreshold");
}

void DynBodySetAutoDisableAccelerationThreshold(DynBody* body, KitReal a) {
    setThreshold(body->autoDisableParams.acc_thresh, a,
                 "DynBodySetAutoDisableAccelerationThreshold");
}

void DynBodySetAutoDisableAngularAccelerationThreshold(DynBody* body, KitReal a) {
    setThreshold(body->autoDisableParams.accrot_thresh, a,
                 "DynBodySetAutoDisableAngularAccelerationThreshold");
}

void DynBodySetAutoDisableAliveWindow(DynBody* body, int steps) {
    if (steps < 0) {
        KitWarning(12, "DynBodySetAutoDisableAliveWindow: the number of steps must not be "
                       "negative.\n");
        return;
    }
    body->autoDisableParams.alive_window = steps;
}

KitReal DynBodyGetAutoDisableVelocityThreshold(const DynBody* body) {
    return body->autoDisableParams.vel_thresh;
}

KitReal DynBodyGetAutoDisableAngularVelocityThreshold(const DynBody* body) {
    return body->autoDisableParams.velrot_thresh;
}

KitReal DynBodyGetAutoDisableAccelerationThreshold(const DynBody* body) {
    return body->autoDisableParams.acc_thresh;
}

KitReal DynBodyGetAutoDisableAngularAccelerationThreshold(const DynBody* body) {
    return body->autoDisableParams.accrot_thresh;
}

int DynBodyGetAutoDisableAliveWindow(const DynBody* body) {
    return body->autoDisableParams.alive_window;
}
