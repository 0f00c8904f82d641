#include "DynBodyConstraints.h"
#include "DynWorldInternal.h"

#include <Dyn/DynBody.h>
#include <Dyn/DynBodyForce.h>
#include <Dyn/DynWorld.h>
#include <Kit/KitMath.h>
#include <Kit/KitMessage.h>
#include <Kit/KitPool.h>

#include <atomic>
#include <limits>
#include <new>

namespace {

DynAutoDisableParams sDefaultAutoDisableParams;
std::atomic<std::uint64_t> sLastBodySerial{0};

/// Moment of a new body about each axis, kg m²: a ball of 1 kg and 1 m.
constexpr KitReal kInitialMoment = 0.4;

void initSolverBody(DynsBody& body) {
    body = DynsBody{};
    body.tag = kDynsBodyTag;
    body.len = static_cast<int>(sizeof(DynsBody));
    body.partition_index = -1;
    body.user_group = -1;
    body.localIndex = body.localPartition = -1;
    KitQuaternionSetIdentity(body.qrot);
    body.fastSpinAxis[0] = 1;
    KitMatrix4SetIdentity(body.tm);
}

// The simulated values; links, identity and back references stay.
void initValues(DynBody* body) {
    body->enabledIndex = -1;
    initSolverBody(body->kiroBody);
    KitMatrix4SetIdentity(body->bodyTM);
    KitMatrix4SetIdentity(body->comToBodyTM);
    body->useBodyOffset = false;
    body->stateFlags = 0;
    body->enabledTime = -1;
    body->partitionIndex = -1;
    body->processedByPartitioner = false;
    body->node_data = {};
    body->solvedStep = 0;
    body->rootParent = body;
    body->autoDisableParams = sDefaultAutoDisableParams;
    body->safeTime = std::numeric_limits<KitReal>::max();
    body->frictionDirectionCB = nullptr;
    body->frictionDirectionCBData = nullptr;
    DynBodyResetDynamics(body);
    DynBodySetMass(body, 1);
    DynBodySetSphericalInertiaTensor(body, kInitialMoment);
    body->kiroBody.inverse_massmatrix[0][3] = body->kiroBody.invmass;
    for (int i = 0; i < 3; ++i)
        body->kiroBody.inverse_massmatrix[i][i] = 1 / kInitialMoment;
}

} // namespace

void DynBodySetDefaultAutoDisableParams(const DynAutoDisableParams& params) {
    const KitReal thresholds[] = {params.vel_thresh, params.velrot_thresh, params.acc_thresh,
                                  params.accrot_thresh};
    for (const KitReal threshold : thresholds)
        if (!(threshold >= 0)) {
            KitWarning(12,
                       "DynBodySetDefaultAutoDisableParams: thresholds must not be negative.\n");
            return;
        }
    if (params.alive_window < 0) {
        KitWarning(12, "DynBodySetDefaultAutoDisableParams: alive_window must not be negative.\n");
        return;
    }
    sDefaultAutoDisableParams = params;
}

const DynAutoDisableParams& DynBodyGetDefaultAutoDisableParams() {
    return sDefaultAutoDisableParams;
}

DynBody* DynBodyCreate(DynWorld* world) {
    if (!world || !world->bodyPool) {
        KitWarning(12, "DynBodyCreate: the world must have a body pool.\n");
        return nullptr;
    }
    return DynBodyCreateInPool(world->bodyPool);
}

DynBody* DynBodyCreateInPool(KitPool* pool) {
    void* memory = pool ? KitPoolGetStruct(pool) : nullptr;
    if (!memory)
        return nullptr;
    auto* body = new (memory) DynBody{};
    body->pool = pool;
    body->serial = ++sLastBodySerial;
    initValues(body);
    return body;
}

void DynBodyDestroy(DynBody* body) {
    if (body)
        DynBodyDestroyInPool(body, body->pool);
}

void DynBodyDestroyInPool(DynBody* body, KitPool* pool) {
    if (!body || (body->world && DynWorldRefusesDuringStep(body->world, "DynBodyDestroy")))
        return;
    DynBodyDisable(body);
    DynBodyLeaveConstraints(body);
    body->mPart = nullptr;
    if (body->world) {
        DynBodyForceForgetBody(body->world, body);
        DynWorldRemoveBody(body->world, body);
    }
    body->kiroBody.tag = -1;
    KitPoolPutStruct(pool, body);
}

void DynBodyReset(DynBody* body) {
    DynBodyDisable(body);
    const bool hadState = body->stateFlags != 0;
    initValues(body);
    if (hadState)
        DynBodyRefreshConstraints(body);
}

void DynBodyCopy(DynBody*, const DynBody*) {
    KitFatalError(12, "DynBodyCopy: NOT YET IMPLEMENTED.\n");
}

void DynBodyResetDynamics(DynBody* body) {
    DynsBody& solver = body->kiroBody;
    for (KitReal* v : {solver.force, solver.torque, solver.cf, solver.ct, solver.linearMomentum,
                       solver.angularMomentum, solver.accel, solver.accelrot, body->impulseLinear,
                       body->impulseAngular, body->lastForce, body->lastTorque,
                       body->consumedImpulseLinear, body->consumedImpulseAngular})
        KitVector3Zero(v);
    body->isUserLoadSaved = false;
    KitVector3Zero(solver.vel);
    KitVector3Zero(solver.velrot);
    for (KitVector3& row : solver.geometricStiffness) // of joint forces that are no more
        KitVector3Zero(row);
    body->impulseAdded = false;
    body->impulseConsumed = false;
    if (body->stateFlags != 0)
        body->enabledTime = -1;
    else if (DynBodyIsEnabled(body))
        body->enabledTime = 0;
}

DynBody* DynBodyGetFirst(DynWorld* world) {
    return world ? world->bodyHead : nullptr;
}

DynBody* DynBodyGetNext(DynBody* body) {
    return body->next;
}
