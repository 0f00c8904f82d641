#include <Dyn/DynConstraint.h>

#include "DynConstraintInternal.h"
#include "DynWorldInternal.h"

#include <Dyn/DynBody.h>
#include <Dyn/DynConstraintLinks.h>
#include <Dyn/DynWorld.h>
#include <Kit/KitMatrix4.h>
#include <Kit/KitMessage.h>
#include <Kit/KitPool.h>

#include <algorithm>
#include <atomic>

namespace {

std::atomic<std::uint64_t> sLastConstraintSerial{0};

void initCoordinates(DynBaseConstraint* c, const DynJointType& type) {
    c->limits = type.limits ? type.limits(c) : nullptr;
    c->iNumLimits = static_cast<int>(type.coordinates.size());
    bool hasAxis[3] = {};
    for (int i = 0; i < c->iNumLimits; ++i) {
        const DynCoordinateType& coordinate = type.coordinates[static_cast<std::size_t>(i)];
        c->limits[i].type = coordinate.type;
        c->limits[i].coord = coordinate.coord;
        c->limits[i].bodyRef = coordinate.bodyRef;
        // Friction about the axis of a coordinate acts about the very axis that the coordinate has.
        if (coordinate.type == kDynLimitTypeAngular && !hasAxis[coordinate.coord]) {
            hasAxis[coordinate.coord] = true;
            c->bclH.friction[3 + coordinate.coord].mPartRef = coordinate.bodyRef;
        }
    }
}

void initRecord(DynBaseConstraint* c, const DynJointType& type) {
    c->bclFunction = type.builder;
    c->updateKinematicFunction = DynConstraintUpdateKinematic;
    c->setBodyFunc = DynConstraintSetBody;
    c->set1BodyFunc = DynConstraintBindSlot;
    c->setAxisFunc = DynConstraintBodySetAxes;
    c->kinematicUpdateIndex = -1;
    c->edge_data = {};
    c->bclH.tag = type.tag;
    c->bclH.n_bodies = type.n_bodies;
    c->bclH.max_rows = type.max_rows;
    for (KitMatrix4& ref : c->bclH.ref)
        KitMatrix4SetIdentity(ref);
    initCoordinates(c, type);
    BaseConstraintReset(c);
}

bool refuse(const char* function, const char* what) {
    KitWarning(12, "%s: %s.\n", function, what);
    return false;
}

bool mayAct(const DynBaseConstraint* c) {
    return c->body[0] || c->body[1];
}

void updateMerged(DynBaseConstraint* c) {
    const DynBody* root = c->body[0] ? c->body[0]->rootParent : nullptr;
    c->merged = root != nullptr;
    for (int slot = 1; slot < c->bclH.n_bodies; ++slot)
        if (!c->body[slot] || c->body[slot]->rootParent != root)
            c->merged = 0;
}

void moveAttachment(DynBaseConstraint* c, int slot, const DynBody* from, const DynBody* to) {
    KitMatrix4& ref = c->bclH.ref[slot];
    for (int axis = 0; axis < 3; ++axis)
        DynConvertCOMVector(from, to, ref[axis]);
    DynConvertCOMPositionVector(from, to, ref[3]);
}

void forgetBody(DynBaseConstraint* c, const DynBody* body) {
    for (int slot = 0; slot < c->bclH.n_bodies; ++slot)
        if (c->body[slot] == body)
            return;
    if (c->bclH.bodySeenAsKinematic == body)
        c->bclH.bodySeenAsKinematic = nullptr;
    if (c->bclH.strongestBody == body) {
        c->bclH.strongestBody = nullptr;
        c->bclH.strongestSolverBody = nullptr;
    }
}

bool mayTake(const DynBaseConstraint* c, const DynBody* body) {
    if (!DynConstraintIsEnabled(c))
        return true;
    if (DynWorldRefusesDuringStep(c->world, "DynConstraintSetBody"))
        return false;
    return !body || body->world == c->world ||
           refuse("DynConstraintSetBody", "the body must be in the constraint's world");
}

void replaceBody(DynBaseConstraint* c, int slot, DynBody* body) {
    DynBody* old = c->body[slot];
    KitCListNodeRemove(c, slot);
    DynConstraintLetBodyGo(c, slot);
    c->body[slot] = body;
    DynConstraintHoldBody(c, slot);
    moveAttachment(c, slot, old, body);
    if (old)
        forgetBody(c, old);
    updateMerged(c);
    c->edge_data = {};
    if (!DynConstraintIsEnabled(c))
        return;
    if (!mayAct(c) || !KitCListNodeInsert(c, slot))
        DynConstraintDisable(c);
}

void letBodiesGo(DynBaseConstraint* c) {
    for (int slot = 0; slot < kDynsMaxConstraintBodies; ++slot)
        DynConstraintLetBodyGo(c, slot);
}

bool mayBeEnabled(const DynBaseConstraint* c) {
    constexpr const char* kFunction = "DynConstraintEnable";
    if (!c->world)
        return refuse(kFunction, "the constraint must be in a world");
    if (!mayAct(c))
        return refuse(kFunction, "one of the first two bodies must not be null");
    for (int slot = 0; slot < c->bclH.n_bodies; ++slot)
        if (c->body[slot] && c->body[slot]->world != c->world)
            return refuse(kFunction, "the bodies must be in the constraint's world");
    return !DynWorldRefusesDuringStep(c->world, kFunction);
}

} // namespace

bool DynConstraintIsSlot(const DynBaseConstraint* constraint, int slot, const char* function) {
    return (slot >= 0 && slot < constraint->bclH.n_bodies) ||
           refuse(function, "the slot must be one of the constraint's");
}

bool DynConstraintIsRow(int row, const char* function) {
    return (row >= 0 && row < kDynsMaxConstraintRows) ||
           refuse(function, "the row must be one of a constraint's");
}

void DynConstraintBindSlot(DynBaseConstraint* c, int slot, DynBody* body) {
    DyncConstraintHeader& head = c->bclH;
    const bool moves = body && DynBodyIsDynamic(body) && DynConstraintIsEnabled(c);
    head.b[slot] = moves ? &body->kiroBody : nullptr;
    head.r[slot] = body ? &body->kiroBody.tm : nullptr;
    head.velocity[slot] = body && !DynBodyIsFrozen(body) ? &body->kiroBody.vel : nullptr;
    head.q[slot] = body ? body->kiroBody.qrot : nullptr;
}

void DynConstraintBindBodies(DynBaseConstraint* constraint) {
    for (int slot = 0; slot < constraint->bclH.n_bodies; ++slot)
        constraint->set1BodyFunc(constraint, slot, constraint->body[slot]);
}

// Life.

DynBaseConstraint* DynConstraintCreateInPool(KitPool* pool, int tag) {
    const DynJointType* type = DynJointTypeGet(tag);
    if (!pool || !type || KitPoolGetStructSize(pool) < static_cast<int>(type ? type->size : 0)) {
        refuse("DynConstraintCreateInPool", "the tag must be known and its records fit the pool");
        return nullptr;
    }
    void* memory = KitPoolGetStruct(pool);
    if (!memory)
        return nullptr;
    DynBaseConstraint* constraint = type->construct(memory);
    constraint->pool = pool;
    constraint->serial = ++sLastConstraintSerial;
    initRecord(constraint, *type);
    return constraint;
}

bool DynConstraintDestroy(DynBaseConstraint* constraint) {
    if (!constraint)
        return true;
    DynConstraintDisable(constraint);
    if (constraint->world && !DynConstraintIsEnabled(constraint))
        DynWorldRemoveConstraint(constraint->world, constraint);
    if (constraint->world) // in the middle of a step; it has been told
        return false;
    letBodiesGo(constraint);
    constraint->bclH.tag = -1;
    KitPoolPutStruct(constraint->pool, constraint);
    return true;
}

void DynConstraintReset(DynBaseConstraint* constraint) {
    DynConstraintDisable(constraint);
    const DynJointType* type = DynJointTypeGet(constraint->bclH.tag);
    if (!type || DynConstraintIsEnabled(constraint))
        return;
    DynWorld* world = constraint->world;
    KitPool* pool = constraint->pool;
    Hy::HyConstraint* owner = constraint->mConstraint;
    const std::uint64_t serial = constraint->serial;
    DynBaseConstraint *next = constraint->next, **tome = constraint->tome;
    const int slots = constraint->bclH.n_bodies, rows = constraint->bclH.max_rows;
    letBodiesGo(constraint);
    constraint = type->construct(constraint); // the records have no destructor
    initRecord(constraint, *type);
    constraint->world = world;
    constraint->pool = pool;
    constraint->mConstraint = owner;
    constraint->serial = serial;
    constraint->next = next;
    constraint->tome = tome;
    constraint->bclH.n_bodies = slots;
    constraint->bclH.max_rows = rows;
}

void DynConstraintSetSerial(DynBaseConstraint* constraint, std::uint64_t serial) {
    if (DynConstraintIsEnabled(constraint))
        refuse("DynConstraintSetSerial", "the constraint must not be enabled");
    else
        constraint->serial = serial;
}

void BaseConstraintReset(DynBaseConstraint* constraint) {
    DyncConstraintHeader& head = constraint->bclH;
    std::fill(head.compliance, head.compliance + kDynsMaxConstraintRows, 0.0);
    std::fill(head.damping, head.damping + kDynsMaxConstraintRows, 0.0);
    std::fill(head.loss, head.loss + kDynsMaxConstraintRows, 0.0);
    std::fill(head.lower, head.lower + kDynsMaxConstraintRows, -kKitInfinity);
    std::fill(head.upper, head.upper + kDynsMaxConstraintRows, kKitInfinity);
    std::fill(head.flags, head.flags + kDynsMaxConstraintRows, 0);
    std::fill(head.dynamic_flags, head.dynamic_flags + kDynsMaxConstraintRows, 0);
    std::fill(head.bRelaxConstraint, head.bRelaxConstraint + kDynsMaxConstraintRows, 0);
}

// Bodies.

DynBody* DynConstraintGetBody(const DynBaseConstraint* constraint, int slot) {
    return DynConstraintIsSlot(constraint, slot, "DynConstraintGetBody") ? constraint->body[slot]
                                                                         : nullptr;
}

void DynConstraintSetBody(DynBaseConstraint* constraint, int slot, DynBody* body) {
    if (!DynConstraintIsSlot(constraint, slot, "DynConstraintSetBody"))
        return;
    if (constraint->body[slot] != body) {
        if (!mayTake(constraint, body))
            return;
        replaceBody(constraint, slot, body);
        DynConstraintResetNeedKinematicUpdate(constraint);
    }
    constraint->set1BodyFunc(constraint, slot, constraint->body[slot]);
}

void DynConstraintSetBodies(DynBaseConstraint* constraint, DynBody* body0, DynBody* body1) {
    DynConstraintSetBody(constraint, 0, body0);
    DynConstraintSetBody(constraint, 1, body1);
}

bool DynConstraintEnable(DynBaseConstraint* constraint) {
    if (DynConstraintIsEnabled(constraint))
        return true;
    if (!mayBeEnabled(constraint))
        return false;
    DynConstraintEnabledListInsert(constraint);
    if (constraint->needKinematicUpdate)
        DynWorldAddKinematicConstraint(constraint->world, constraint);
    updateMerged(constraint);
    DynConstraintBindBodies(constraint);
    for (int slot = 0; slot < constraint->bclH.n_bodies; ++slot)
        if (!KitCListNodeInsert(constraint, slot))
            DynConstraintDisable(constraint);
    return DynConstraintIsEnabled(constraint);
}

void DynConstraintDisable(DynBaseConstraint* constraint) {
    if (!DynConstraintIsEnabled(constraint) ||
        DynWorldRefusesDuringStep(constraint->world, "DynConstraintDisable"))
        return;
    for (int slot = constraint->bclH.n_bodies - 1; slot >= 0; --slot)
        KitCListNodeRemove(constraint, slot);
    DynWorldRemoveKinematicConstraint(constraint->world, constraint);
    DynConstraintEnabledListRemove(constraint);
    DynConstraintBindBodies(constraint);
    constraint->edge_data = {};
}

bool DynConstraintIsEnabled(const DynBaseConstraint* constraint) {
    return constraint->enabledTome != nullptr;
}

void DynConstraintEnableBodies(DynBaseConstraint* constraint) {
    for (int slot = 0; slot < constraint->bclH.n_bodies; ++slot)
        if (DynBody* body = constraint->body[slot]; body && !DynBodyIsEnabled(body))
            DynBodyEnable(body);
}

void DynConstraintEnableBodiesIfMoving(DynBaseConstraint* constraint) {
    const auto moves = [](const DynBody* body) {
        return body && (DynBodyIsDynamic(body) ? body->enabledTime >= 0
                                               : body->stateFlags == kDynBodyKinematic);
    };
    DynBody** bodies = constraint->body;
    if (std::none_of(bodies, bodies + constraint->bclH.n_bodies, moves))
        return;
    const DynBody* strongest = DynConstraintFindStrongestBody(constraint); // it may be asleep
    for (int slot = 0; slot < constraint->bclH.n_bodies; ++slot)
        if (bodies[slot] && bodies[slot] != strongest)
            DynBodyEnable(bodies[slot]);
}

void DynConstraintSetBodySeenAsKinematic(DynBaseConstraint* constraint, DynBody* body) {
    DynBody** bodies = constraint->body;
    const int n = constraint->bclH.n_bodies;
    if (body && std::find(bodies, bodies + n, body) == bodies + n) {
        refuse("DynConstraintSetBodySeenAsKinematic", "the body must be one of the constraint's");
        return;
    }
    constraint->bclH.bodySeenAsKinematic = body;
}

// The constraints of a body.

void DynBodyDisableConstraints(DynBody* body) {
    DynBodyForAllConstraints(
        body, [](DynBaseConstraint* constraint, void*) { DynConstraintDisable(constraint); },
        nullptr);
}

void DynBodyDestroyConstraints(DynBody* body) {
    DynBodyForAllConstraints(
        body, [](DynBaseConstraint* constraint, void*) { DynConstraintDestroy(constraint); },
        nullptr);
}
