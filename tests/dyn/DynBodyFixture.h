#pragma once
#include <Dyn/DynBody.h>
#include <Dyn/DynWorld.h>
#include <Kit/KitMath.h>
#include <Kit/KitPool.h>
#include <kit/KitTestSupport.h>

#include <Eigen/Dense>
#include <gtest/gtest.h>

#include <algorithm>
#include <deque>
#include <random>
#include <utility>
#include <vector>

/// A world, bodies in it and constraints whose functions only note that they were called.
class DynBodyFixture : public testing::Test {
protected:
    using Vector = Eigen::Vector3d;
    using Matrix = Eigen::Matrix3d;

    struct FakeConstraint : DynBaseConstraint {
        std::vector<std::pair<int, DynBody*>> bound; ///< calls of setBodyFunc
        std::deque<KitCListNode> nodes;
    };

    DynBodyFixture() {
        KitPoolInit(&mPool, 8, static_cast<int>(sizeof(DynBody)),
                    static_cast<int>(alignof(DynBody)));
        DynWorldHost host;
        host.setGeometriesStatic = [](DynBody* body, bool isStatic) {
            geometryCalls().emplace_back(body, isStatic);
        };
        DynWorldSetHost(mWorld, host);
        geometryCalls().clear();
    }
    ~DynBodyFixture() override {
        for (DynBody* body : mBodies)
            DynBodyDestroy(body);
        DynWorldDestroy(mWorld);
        KitPoolTerm(&mPool);
    }

    DynBody* addFreeBody() { return mBodies.emplace_back(DynBodyCreateInPool(&mPool)); }
    DynBody* addBody() {
        DynBody* body = addFreeBody();
        DynWorldInsertBody(mWorld, body);
        return body;
    }
    void destroy(DynBody* body) {
        std::erase(mBodies, body);
        DynBodyDestroy(body);
    }

    FakeConstraint& tie(const std::vector<DynBody*>& bodies) {
        FakeConstraint& constraint = mConstraints.emplace_back();
        constraint.bclH.n_bodies = static_cast<int>(bodies.size());
        constraint.setBodyFunc = [](DynBaseConstraint* c, int slot, DynBody* body) {
            static_cast<FakeConstraint*>(c)->bound.emplace_back(slot, body);
            if (!body)
                unlink(c, slot);
        };
        for (int slot = 0; slot < constraint.bclH.n_bodies; ++slot) {
            DynBody* body = bodies[static_cast<std::size_t>(slot)];
            constraint.body[slot] = body;
            KitMatrix4SetIdentity(constraint.bclH.ref[slot]);
            KitCListNode& node = constraint.nodes.emplace_back();
            node = {&constraint, slot, body->constraintList, &body->constraintList};
            if (node.next)
                node.next->tome = &node.next;
            body->constraintList = &node;
            constraint.cNode[slot] = &node;
        }
        return constraint;
    }
    static void unlink(DynBaseConstraint* constraint, int slot) {
        KitCListNode* node = std::exchange(constraint->cNode[slot], nullptr);
        if (!node)
            return;
        *node->tome = node->next;
        if (node->next)
            node->next->tome = node->tome;
        constraint->body[slot] = nullptr;
    }

    static std::vector<std::pair<DynBody*, bool>>& geometryCalls() {
        static std::vector<std::pair<DynBody*, bool>> calls;
        return calls;
    }

    static Vector vectorOf(const KitReal* v) { return {v[0], v[1], v[2]}; }
    static Matrix matrixOf(const KitMatrix3 m) {
        Matrix M;
        for (int i = 0; i < 3; ++i)
            for (int j = 0; j < 3; ++j)
                M(i, j) = m[i][j];
        return M;
    }
    /// The rotation as column vectors know it.
    static Matrix rotationOf(const KitMatrix4 tm) {
        Matrix R;
        for (int i = 0; i < 3; ++i)
            for (int j = 0; j < 3; ++j)
                R(j, i) = tm[i][j];
        return R;
    }

    double uniform(double low, double high) {
        return std::uniform_real_distribution<double>(low, high)(mRandom);
    }
    Vector randomVector(double size = 1) {
        return {uniform(-size, size), uniform(-size, size), uniform(-size, size)};
    }
    void setRandomTransform(KitMatrix4 tm) {
        KitMatrix4SetIdentity(tm);
        const KitVector4 q = {uniform(-1, 1), uniform(-1, 1), uniform(-1, 1), uniform(-1, 1)};
        KitMatrix4TMSetRotationFromQuaternion(tm, q);
        KitVector3Copy(tm[3], randomVector(5).data());
    }
    Matrix randomTensor() {
        Matrix M;
        for (double& entry : M.reshaped())
            entry = uniform(-1, 1);
        return M * M.transpose() + 0.2 * Matrix::Identity();
    }
    void setRandomMotion(DynBody* body) {
        KitMatrix4 tm;
        setRandomTransform(tm);
        DynBodySetTransform(body, tm);
        DynBodySetLinearVelocity(body, randomVector().data());
        DynBodySetAngularVelocity(body, randomVector().data());
        KitMatrix3 tensor;
        const Matrix random = randomTensor();
        for (int i = 0; i < 3; ++i)
            KitVector3Copy(tensor[i], Vector(random.row(i)).data());
        DynBodySetInertiaTensor(body, tensor);
        DynBodySetMass(body, uniform(1, 3));
    }

    KitPool mPool;
    DynWorld* mWorld = DynWorldCreate(1, 1);
    std::vector<DynBody*> mBodies;
    std::deque<FakeConstraint> mConstraints;
    static constexpr unsigned kSeed = 12345;
    std::mt19937 mRandom{kSeed};
};
