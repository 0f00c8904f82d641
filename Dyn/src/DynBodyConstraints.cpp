#include "DynBodyConstraints.h"

#include <Dyn/DynBody.h>
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

bool isFirstSlotOf(const KitCListNode& node, const DynBody* body) {
    for (int slot = 0; slot < node.slot; ++slot)
        if (node.constraint->body[slot] == body)
            return false;
    return true;
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
}

void DynBodyForAllConstraints(DynBody* body, void (*fn)(DynBaseConstraint*, void*), void* data) {
    if (!fn)
        return;
    for (KitCListNode* node = body->constraintList; node;) {
        DynBaseConstraint* constraint = node->constraint;
        const bool first = isFirstSlotOf(*node, body);
        // fn may take out every node of this constraint: go on at one of another.
        KitCListNode* next = node->next;
        while (first && next && next->constraint == constraint)
            next = next->next;
        if (first)
            fn(constraint, data);
        node = next;
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
