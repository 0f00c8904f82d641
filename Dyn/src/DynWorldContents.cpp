#include "DynEnabledList.h"
#include "DynMergeSort.h"
#include "DynWorldInternal.h"

#include <Dyn/DynBody.h>
#include <Kit/KitMemory.h>
#include <Kit/KitMessage.h>

#include <algorithm>
#include <cmath>

namespace {

constexpr int kFirstKinematicConstraints = 10;

bool growKinematicList(DynWorld* world) {
    const int capacity = std::max(kFirstKinematicConstraints, 2 * world->maxKineticConstraints);
    void* grown =
        KitMemoryAPI_resize(world->kineticConstraintHead,
                            static_cast<std::size_t>(capacity) * sizeof(DynBaseConstraint*));
    if (!grown)
        return false;
    world->kineticConstraintHead = static_cast<DynBaseConstraint**>(grown);
    world->maxKineticConstraints = capacity;
    return true;
}

void gatherEnabled(const DynWorld* world, DynBuffer<DynConstraintWalk::Entry>& entries) {
    entries.reserve(world->nEnabledConstraints);
    for (DynBaseConstraint* c = world->enabledConstraintHead; c; c = c->enabledNext)
        entries.push_back({c->serial, c});
    DynBuffer<DynConstraintWalk::Entry> merged;
    DynBuffer<int> runs;
    DynMergeSort(entries, merged, runs,
                 [](const DynConstraintWalk::Entry& a, const DynConstraintWalk::Entry& b) {
                     return a.serial < b.serial;
                 });
}

} // namespace

bool DynWorldRefusesDuringStep(const DynWorld* world, const char* function) {
    if (!world->scratch->stepping)
        return false;
    KitWarning(12, "%s: must not be called during a step.\n", function);
    return true;
}

void DynWorldInsertBody(DynWorld* world, DynBody* body) {
    if (!world || !body) {
        KitWarning(12, "DynWorldInsertBody: world and body must not be null.\n");
        return;
    }
    if (body->world) {
        KitInfo(0, "%s:%d\n", KitShortenPath(__FILE__), __LINE__);
        KitWarning(12, body->world == world
                           ? "DynWorldInsertBody: Body already in world.\n"
                           : "DynWorldInsertBody: Body already in a different world.\n");
        return;
    }
    body->world = world;
    body->next = world->bodyHead;
    body->tome = &world->bodyHead;
    if (body->next)
        body->next->tome = &body->next;
    world->bodyHead = body;
    ++world->nBodies;
    ++world->resize;
    if (DynBodyIsEnabled(body) && DynBodyIsDynamic(body))
        DynEnabledListInsert(body);
}

void DynWorldRemoveBody(DynWorld* world, DynBody* body) {
    if (!world || !body || body->world != world) {
        KitWarning(12, "DynWorldRemoveBody: the body must be in the world.\n");
        return;
    }
    if (DynWorldRefusesDuringStep(world, "DynWorldRemoveBody"))
        return;
    if (body->enabledTome)
        DynEnabledListRemove(body);
    *body->tome = body->next;
    if (body->next)
        body->next->tome = body->tome;
    body->next = nullptr;
    body->tome = nullptr;
    body->partitionIndex = body->kiroBody.partition_index = -1;
    body->kiroBody.localPartition = -1;
    body->world = nullptr;
    --world->nBodies;
}

void DynWorldInsertConstraint(DynWorld* world, DynBaseConstraint* constraint) {
    if (!world || !constraint) {
        KitWarning(12, "DynWorldInsertConstraint: world and constraint must not be null.\n");
        return;
    }
    if (constraint->world) {
        KitWarning(12, "DynWorldInsertConstraint: the constraint must not be in a world.\n");
        return;
    }
    constraint->world = world;
    constraint->next = world->constraintHead;
    constraint->tome = &world->constraintHead;
    if (constraint->next)
        constraint->next->tome = &constraint->next;
    world->constraintHead = constraint;
    ++world->nConstraints;
    ++world->resize;
}

void DynWorldRemoveConstraint(DynWorld* world, DynBaseConstraint* constraint) {
    if (!world || !constraint || constraint->world != world) {
        KitWarning(12, "DynWorldRemoveConstraint: the constraint must be in the world.\n");
        return;
    }
    if (constraint->enabledTome) {
        KitWarning(12, "DynWorldRemoveConstraint: the constraint must be disabled.\n");
        return;
    }
    if (DynWorldRefusesDuringStep(world, "DynWorldRemoveConstraint"))
        return;
    DynWorldRemoveKinematicConstraint(world, constraint);
    *constraint->tome = constraint->next;
    if (constraint->next)
        constraint->next->tome = constraint->tome;
    constraint->next = nullptr;
    constraint->tome = nullptr;
    constraint->world = nullptr;
    --world->nConstraints;
}

void DynWorldAddKinematicConstraint(DynWorld* world, DynBaseConstraint* constraint) {
    if (constraint->kinematicUpdateIndex >= 0)
        return;
    if (world->nKineticConstraints == world->maxKineticConstraints && !growKinematicList(world)) {
        KitWarning(20, "DynWorldAddKinematicConstraint: out of memory.\n");
        return;
    }
    constraint->kinematicUpdateIndex = world->nKineticConstraints;
    world->kineticConstraintHead[world->nKineticConstraints++] = constraint;
}

void DynWorldRemoveKinematicConstraint(DynWorld* world, DynBaseConstraint* constraint) {
    const int i = constraint->kinematicUpdateIndex;
    if (i < 0 || i >= world->nKineticConstraints || world->kineticConstraintHead[i] != constraint)
        return;
    DynBaseConstraint* last = world->kineticConstraintHead[--world->nKineticConstraints];
    world->kineticConstraintHead[i] = last;
    last->kinematicUpdateIndex = i;
    constraint->kinematicUpdateIndex = -1;
}

void DynWorldUpdateKinematicConstraint(DynWorld* world, KitReal dt) {
    if (!std::isfinite(dt)) {
        KitWarning(12, "DynWorldUpdateKinematicConstraint: dt must be finite.\n");
        return;
    }
    // Backward, as an update may end the need of its own constraint for further ones: the entry that
    // then takes its place has had its turn.
    for (int i = world->nKineticConstraints - 1; i >= 0; --i) {
        if (i >= world->nKineticConstraints)
            continue;
        DynBaseConstraint* constraint = world->kineticConstraintHead[i];
        if (constraint->updateKinematicFunction)
            constraint->updateKinematicFunction(constraint, dt);
    }
}

void DynWorldForAllConstraints(DynWorld* world, void (*fn)(DynBaseConstraint*, void*), void* data) {
    if (!world || !fn)
        return;
    DynConstraintWalk walk{.entries = {}, .outer = world->scratch->walk};
    gatherEnabled(world, walk.entries);
    world->scratch->walk = &walk;
    for (const DynConstraintWalk::Entry& entry : walk.entries)
        if (entry.constraint)
            fn(entry.constraint, data);
    world->scratch->walk = walk.outer;
}
