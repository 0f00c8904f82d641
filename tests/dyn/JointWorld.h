#pragma once
#include <Dyn/Dyn.h>
#include <Dync/DyncJointTags.h>
#include <Kit/KitPool.h>

#include <gtest/gtest.h>
#include <vector>

/// A world without gravity, and joints in a pool of their own.
class JointWorld : public testing::Test {
protected:
    JointWorld() : world(DynWorldCreate(1, 1)) {
        KitPoolInit(&pool, 8, getDynConstraintUnionSize(), 0);
        DynWorldSetConstraintSolver(world, 1);
        DynGroupingGet(world, 0);
    }
    ~JointWorld() override {
        for (DynBaseConstraint* joint : joints)
            DynConstraintDestroy(joint);
        while (DynBody* body = DynBodyGetFirst(world))
            DynBodyDestroy(body);
        DynWorldDestroy(world);
        KitPoolTerm(&pool);
    }

    DynBody* addBody(KitReal x = 0, KitReal y = 0, KitReal z = 0) {
        DynBody* body = DynBodyCreate(world);
        const KitVector3 position = {x, y, z};
        DynBodySetPosition(body, position);
        DynBodySetUserGroup(body, 0);
        DynWorldInsertBody(world, body);
        DynBodyEnable(body);
        return body;
    }

    /// In the world, not enabled.
    DynBaseConstraint* add(int tag, DynBody* body0, DynBody* body1) {
        DynBaseConstraint* joint = DynConstraintCreateInPool(&pool, tag);
        joints.push_back(joint);
        DynWorldInsertConstraint(world, joint);
        DynConstraintSetBodies(joint, body0, body1);
        return joint;
    }
    template <class Joint>
    Joint* add(int tag, DynBody* body0, DynBody* body1) {
        return static_cast<Joint*>(add(tag, body0, body1));
    }

    void step(int n = 1) const {
        for (int i = 0; i < n; ++i) {
            DynWorldUpdateKinematicConstraint(world, kStep);
            DynWorldStep(world, kStep);
            DynWorldIntegrate(world);
        }
    }

    [[nodiscard]] static int nodesOf(const DynBody* body) {
        int n = 0;
        for (const KitCListNode* node = body->constraintList; node; node = node->next)
            ++n;
        return n;
    }

    static constexpr KitReal kStep = 1.0 / 60; ///< s
    KitPool pool;
    DynWorld* world;
    std::vector<DynBaseConstraint*> joints;
};
