#include "DynPartitionInternal.h"
#include "DynWorldInternal.h"

#include <Dyn/DynBody.h>
#include <Dyn/DynPartition.h>

#include <algorithm>
#include <climits>

DynBody* DynConstraintFindStrongestBody(const DynBaseConstraint* constraint) {
    if (constraint->bclH.bodySeenAsKinematic)
        return constraint->bclH.bodySeenAsKinematic;
    DynBody* strongest = nullptr;
    int most = INT_MIN, least = INT_MAX;
    for (int slot = 0; slot < constraint->bclH.n_bodies; ++slot) {
        DynBody* body = constraint->body[slot];
        if (!body)
            continue;
        if (body->stateFlags != 0)
            return body;
        const DynGrouping* group = DynGroupingOfBody(body->rootParent);
        const int strength = group ? group->strength : 0;
        if (strength > most) {
            most = strength;
            strongest = body;
        }
        least = std::min(least, strength);
    }
    return most > least ? strongest : nullptr;
}

void DynConstraintUpdateStrongestBody(DynBaseConstraint* constraint) {
    DynBody* strongest = DynConstraintFindStrongestBody(constraint);
    constraint->bclH.strongestBody = strongest;
    constraint->bclH.strongestSolverBody = strongest ? &strongest->rootParent->kiroBody : nullptr;
}

void DynPartitionPrepare(const DynWorld* world, DynBaseConstraint& c) {
    if (!world || c.preparedStep == world->stepCount)
        return;
    c.preparedStep = world->stepCount;
    c.edge_data = {};
    c.bclH.gflag = 0;
    DynConstraintUpdateStrongestBody(&c);
}
