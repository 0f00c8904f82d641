#include <Dyn/DynConstraintLinks.h>

#include "DynConstraintInternal.h"
#include "DynWorldInternal.h"

#include <Dyn/DynBody.h>
#include <Kit/KitMessage.h>

#include <algorithm>

namespace {

void link(KitCListNode& node, KitCListNode** place) {
    node.next = *place;
    node.tome = place;
    if (node.next)
        node.next->tome = &node.next;
    *place = &node;
}

void unlink(KitCListNode& node) {
    *node.tome = node.next;
    if (node.next)
        node.next->tome = node.tome;
}

// A body's list goes from the newest constraint to the oldest, with the last slot first, so that no
// result depends on the order in which constraints were enabled.
KitCListNode** placeInList(DynBody* body, const DynBaseConstraint* constraint, int slot) {
    KitCListNode** place = &body->constraintList;
    for (; *place; place = &(*place)->next) {
        const std::uint64_t serial = (*place)->constraint->serial;
        if (serial != constraint->serial ? serial < constraint->serial : (*place)->slot < slot)
            break;
    }
    return place;
}

} // namespace

void DynConstraintWalkForget(DynWorld* world, const DynBaseConstraint* constraint) {
    for (DynConstraintWalk* walk = world->scratch->walk; walk; walk = walk->outer) {
        auto* place =
            std::lower_bound(walk->entries.begin(), walk->entries.end(), constraint->serial,
                             [](const DynConstraintWalk::Entry& entry, std::uint64_t serial) {
                                 return entry.serial < serial;
                             });
        for (; place != walk->entries.end() && place->serial == constraint->serial; ++place)
            if (place->constraint == constraint)
                place->constraint = nullptr;
    }
}

void DynConstraintEnabledListInsert(DynBaseConstraint* constraint) {
    DynWorld* world = constraint->world;
    if (!world || constraint->enabledTome)
        return;
    constraint->enabledNext = world->enabledConstraintHead;
    constraint->enabledTome = &world->enabledConstraintHead;
    constraint->preparedStep = 0; // the steps of another world are counted otherwise
    if (constraint->enabledNext)
        constraint->enabledNext->enabledTome = &constraint->enabledNext;
    world->enabledConstraintHead = constraint;
    ++world->nEnabledConstraints;
}

void DynConstraintEnabledListRemove(DynBaseConstraint* constraint) {
    if (!constraint->enabledTome)
        return;
    DynConstraintWalkForget(constraint->world, constraint);
    *constraint->enabledTome = constraint->enabledNext;
    if (constraint->enabledNext)
        constraint->enabledNext->enabledTome = constraint->enabledTome;
    constraint->enabledNext = nullptr;
    constraint->enabledTome = nullptr;
    --constraint->world->nEnabledConstraints;
}

bool KitCListNodeInsert(DynBaseConstraint* constraint, int slot) {
    DynBody* body = constraint->body[slot];
    if (!body || constraint->cNode[slot])
        return true;
    void* memory = KitPoolGetStruct(constraint->world->cNodePool);
    if (!memory) {
        KitWarning(20, "KitCListNodeInsert: the node pool cannot grow.\n");
        return false;
    }
    auto* node = new (memory) KitCListNode{.constraint = constraint, .slot = slot};
    link(*node, placeInList(body, constraint, slot));
    constraint->cNode[slot] = node;
    return true;
}

void KitCListNodeRemove(DynBaseConstraint* constraint, int slot) {
    KitCListNode* node = constraint->cNode[slot];
    if (!node)
        return;
    unlink(*node);
    constraint->cNode[slot] = nullptr;
    ++constraint->world->scratch->nodeRemovals;
    KitPoolPutStruct(constraint->world->cNodePool, node);
}

void DynConstraintHoldBody(DynBaseConstraint* constraint, int slot) {
    DynBody* body = constraint->body[slot];
    if (!body)
        return;
    constraint->hold[slot] = {.constraint = constraint, .slot = slot};
    link(constraint->hold[slot], &body->holders);
}

void DynConstraintLetBodyGo(DynBaseConstraint* constraint, int slot) {
    if (!constraint->hold[slot].tome)
        return;
    unlink(constraint->hold[slot]);
    constraint->hold[slot] = {};
}
