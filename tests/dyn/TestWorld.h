#pragma once
#include <Dyn/DynBody.h>
#include <Dyn/DynConstraintLinks.h>
#include <Dyn/DynPartition.h>
#include <Dyn/DynWorld.h>
#include <Dyn/DynWorldParameters.h>
#include <Dyns/DynsConstraints.h>

#include <algorithm>
#include <deque>
#include <set>
#include <string>
#include <vector>

/// A world with bodies at the origin and hand-made constraints.
class TestWorld {
public:
    TestWorld() : world(DynWorldCreate(1, 1)) {}
    TestWorld(const TestWorld&) = delete;
    TestWorld& operator=(const TestWorld&) = delete;
    ~TestWorld() { DynWorldDestroy(world); }

    DynBody* addBody(int group = 0) {
        DynBody* body = DynBodyCreate(world);
        DynGroupingGet(world, group);
        DynBodySetUserGroup(body, group);
        DynWorldInsertBody(world, body);
        DynBodyEnable(body);
        bodies.push_back(body);
        return body;
    }

    DynBody* addKinematic() {
        DynBody* body = addBody();
        DynBodyMakeKinematic(body);
        return body;
    }

    /// Joins the bodies by rows that make their velocities equal; enabled.
    DynBaseConstraint& join(const std::vector<DynBody*>& slots) {
        DynBaseConstraint& c = constraints.emplace_back();
        c.serial = constraints.size();
        c.kinematicUpdateIndex = -1;
        c.edge_data = {};
        c.bclFunction = addEqualVelocity;
        c.bclH.n_bodies = static_cast<int>(slots.size());
        c.bclH.max_rows = 3;
        for (std::size_t i = 0; i < slots.size(); ++i) {
            DynBody* body = c.body[i] = slots[i];
            setIdentity(c.bclH.ref[i]);
            if (!body)
                continue;
            c.bclH.b[i] = DynBodyIsDynamic(body) ? &body->kiroBody : nullptr;
            c.bclH.r[i] = &body->kiroBody.tm;
        }
        DynWorldInsertConstraint(world, &c);
        enable(c);
        return c;
    }

    static void enable(DynBaseConstraint& c) {
        DynConstraintEnabledListInsert(&c);
        for (int i = 0; i < c.bclH.n_bodies; ++i)
            KitCListNodeInsert(&c, i);
    }

    static void disable(DynBaseConstraint& c) {
        for (int i = 0; i < c.bclH.n_bodies; ++i)
            KitCListNodeRemove(&c, i);
        DynConstraintEnabledListRemove(&c);
    }

    /// Partitions the enabled bodies without a step.
    DynPartitionOutput& partition() {
        for (DynBaseConstraint* c = world->enabledConstraintHead; c; c = c->enabledNext)
            DynConstraintUpdateStrongestBody(c);
        DynPartitionUpdate(world->enabledBodyHead, &world->partitionOutput,
                           &world->partition_parameters);
        return world->partitionOutput;
    }

    void step(KitReal dt = 1.0 / 60) const {
        DynWorldStep(world, dt);
        DynWorldIntegrate(world);
    }

    [[nodiscard]] std::set<const DynBody*> bodiesOf(int p) const {
        const DynPartitionOutput& o = world->partitionOutput;
        return {o.bodies + o.bodiesStart[p], o.bodies + o.bodiesStart[p] + o.bodiesSize[p]};
    }
    [[nodiscard]] std::set<const DynBaseConstraint*> constraintsOf(int p) const {
        const DynPartitionOutput& o = world->partitionOutput;
        return {o.constraints + o.constraintsStart[p],
                o.constraints + o.constraintsStart[p] + o.constraintsSize[p]};
    }
    /// Partitions of a type: 0 primary, 1 secondary.
    [[nodiscard]] std::vector<int> partitionsOf(int type) const {
        std::vector<int> found;
        for (int p = 0; p < world->partitionOutput.nPartitions; ++p)
            if (world->partitionOutput.partition_type[p] == type)
                found.push_back(p);
        return found;
    }

    DynWorld* world;
    std::vector<DynBody*> bodies;
    std::deque<DynBaseConstraint> constraints;

private:
    static void setIdentity(KitMatrix4 tm) {
        for (int i = 0; i < 4; ++i)
            for (int j = 0; j < 4; ++j)
                tm[i][j] = i == j ? 1 : 0;
    }

    // Rows k: v0[k] - v1[k] = 0 on the centres of mass.
    static int addEqualVelocity(DynsConstraints* list, DynBaseConstraint* c,
                                const DyncConstraintParameters*) {
        DynsGRow G[kDynsMaxConstraintBodies][3] = {};
        const int row = list->n_constraint_rows;
        DynsInputRowFactors factors{.phi = list->phi + row,
                                    .v0 = list->v0 + row,
                                    .lower = list->lower + row,
                                    .upper = list->upper + row,
                                    .xepsilon = list->xepsilon + row,
                                    .xgamma = list->xgamma + row,
                                    .G = {},
                                    .flags = list->flags + row};
        for (int k = 0; k < 3; ++k) {
            factors.lower[k] = -kKitInfinity;
            factors.upper[k] = kKitInfinity;
            factors.xepsilon[k] = 1e-12;
            factors.flags[k] = kDynsRowLinear | kDynsRowVelocity;
            for (int slot = 0; slot < c->bclH.n_bodies; ++slot)
                G[slot][k][k] = slot == 0 ? 1 : -1;
        }
        for (int slot = 0; slot < c->bclH.n_bodies; ++slot)
            factors.G[slot] = G[slot];
        const int before = list->n_constraint_rows;
        DynsConstraintsPushConstraint(list, &factors, c->bclH.b, c->bclH.n_bodies, 3, c->bclH.tag,
                                      nullptr);
        return list->n_constraint_rows - before;
    }
};
