#include "DynBodyConstraints.h"
#include "DynWorldInternal.h"

#include <Dyn/DynBody.h>
#include <Dyn/DynConstraint.h>
#include <Kit/KitMatrix4.h>

namespace {

// Calls fn for each node; fn may take out that node alone.
template <class Fn>
void forAllNodes(DynBody* body, Fn fn) {
    for (KitCListNode *node = body->constraintList, *next; node; node = next) {
        next = node->next;
        fn(*node);
    }
}

std::uint64_t removalsIn(const DynWorld* world) {
    return world ? world->scratch->nodeRemovals : 0;
}

// The nodes of one constraint stand side by side.
KitCListNode* nodeOfNextConstraint(const KitCListNode& node) {
    KitCListNode* next = node.next;
    while (next && next->constraint == node.constraint)
        next = next->next;
    return next;
}

// The list goes from the newest constraint to the oldest.
KitCListNode* firstNodeOlderThan(const DynBody* body, std::uint64_t serial) {
    KitCListNode* node = body->constraintList;
    while (node && node->constraint->serial >= serial)
        node = node->next;
    return node;
}

} // namespace

void DynBodyRefreshConstraints(DynBody* body) {
    forAllNodes(body, [body](KitCListNode& node) {
        if (node.constraint->setBodyFunc)
            node.constraint->setBodyFunc(node.constraint, node.slot, body);
    });
}

void DynBodyResetGraphData(DynBody* body) {
    body->node_data = {};
    forAllNodes(body, [](KitCListNode& node) {
        node.constraint->edge_data = {};
        node.constraint->flag = 0;
    });
}

void DynBodyAdaptAttachments(DynBody* body, const KitMatrix4 change) {
    forAllNodes(body, [change](KitCListNode& node) {
        KitMatrix4& ref = node.constraint->bclH.ref[node.slot];
        KitMatrix4TMCompound(ref, ref, change);
    });
}

void DynBodyHoldAttachments(DynBody* body, const KitMatrix4 oldTM) {
    KitMatrix4 change;
    KitMatrix4TMCompoundInverseSecond(change, oldTM, body->kiroBody.tm);
    forAllNodes(body, [body, &change](KitCListNode& node) {
        DynBaseConstraint* constraint = node.constraint;
        if (constraint->bclH.tag == kDynTagContact)
            return;
        KitMatrix4& ref = constraint->bclH.ref[node.slot];
        KitMatrix4TMCompound(ref, ref, change);
        if (constraint->setAxisFunc) {
            KitMatrix4 world;
            KitMatrix4TMCompound(world, ref, body->kiroBody.tm);
            constraint->setAxisFunc(constraint, node.slot, world[0], world[1]);
        }
    });
}

void DynBodyLeaveConstraints(DynBody* body) {
    // An emptied constraint may leave altogether, with its nodes of other slots: begin anew each time.
    while (KitCListNode* node = body->constraintList) {
        DynBaseConstraint* constraint = node->constraint;
        if (constraint->setBodyFunc)
            constraint->setBodyFunc(constraint, node->slot, nullptr);
        if (body->constraintList == node)
            return;
    }
    while (const KitCListNode* hold = body->holders) // of disabled constraints
        DynConstraintSetBody(hold->constraint, hold->slot, nullptr);
}

void DynBodyForAllConstraints(DynBody* body, void (*fn)(DynBaseConstraint*, void*), void* data) {
    if (!fn)
        return;
    for (KitCListNode* node = body->constraintList; node;) {
        DynBaseConstraint* constraint = node->constraint;
        const DynWorld* world = constraint->world;
        const std::uint64_t serial = constraint->serial, removals = removalsIn(world);
        KitCListNode* next = nodeOfNextConstraint(*node);
        fn(constraint, data);
        // Any node may have gone, the next one too.
        node = removalsIn(world) == removals ? next : firstNodeOlderThan(body, serial);
    }
}

void DynBodySetUserGroup(DynBody* body, int group) {
    body->kiroBody.user_group = group;
}

int DynBodyGetUserGroup(const DynBody* body) {
    return body->kiroBody.user_group;
}

int DynBodyGetLastPartitionIndex(const DynBody* body) {
    return body->partitionIndex;
}
