// Bullet with trees of joints in reduced coordinates.
#include "BulletCommon.h"

#include <BulletDynamics/Featherstone/btMultiBody.h>
#include <BulletDynamics/Featherstone/btMultiBodyConstraintSolver.h>
#include <BulletDynamics/Featherstone/btMultiBodyDynamicsWorld.h>
#include <BulletDynamics/Featherstone/btMultiBodyJointLimitConstraint.h>
#include <BulletDynamics/Featherstone/btMultiBodyJointMotor.h>
#include <BulletDynamics/Featherstone/btMultiBodyLinkCollider.h>
#include <algorithm>

namespace bench {
namespace {

constexpr btScalar kNoSpeedLimit(1e6);

/// A tree of the scene: its bodies from the root on, each with the joint to its parent.
struct Tree {
    struct Node {
        int body, parent; ///< the parent's place in the tree, -1 for the base
        int joint;        ///< -1 for a root that is free
    };
    bool fixed = false; ///< hangs on the world, which is the base then
    std::vector<Node> nodes;
};

/// False if the joints form a loop, or slide.
bool findTrees(const Scene& scene, std::vector<Tree>& trees) {
    std::vector<std::vector<int>> jointsOf(scene.bodies.size());
    std::vector<int> worldJoint(scene.bodies.size(), -1);
    for (std::size_t j = 0; j < scene.joints.size(); ++j) {
        const Joint& joint = scene.joints[j];
        if (joint.kind == JointKind::kSlider)
            return false;
        const auto a = static_cast<std::size_t>(joint.a);
        if (joint.b == Joint::kWorld) {
            worldJoint[a] = static_cast<int>(j);
            continue;
        }
        jointsOf[a].push_back(static_cast<int>(j));
        jointsOf[static_cast<std::size_t>(joint.b)].push_back(static_cast<int>(j));
    }
    std::vector<bool> seen(scene.bodies.size()), used(scene.joints.size());
    const auto grow = [&](std::size_t root, bool fixed) {
        Tree tree{fixed, {{static_cast<int>(root), -1, fixed ? worldJoint[root] : -1}}};
        if (fixed)
            used[static_cast<std::size_t>(worldJoint[root])] = true;
        seen[root] = true;
        for (std::size_t n = 0; n < tree.nodes.size(); ++n)
            for (const int j : jointsOf[static_cast<std::size_t>(tree.nodes[n].body)]) {
                const Joint& joint = scene.joints[static_cast<std::size_t>(j)];
                const int other = joint.a == tree.nodes[n].body ? joint.b : joint.a;
                if (used[static_cast<std::size_t>(j)] || seen[static_cast<std::size_t>(other)])
                    continue;
                seen[static_cast<std::size_t>(other)] = used[static_cast<std::size_t>(j)] = true;
                tree.nodes.push_back({other, static_cast<int>(n), j});
            }
        trees.push_back(std::move(tree));
    };
    for (std::size_t i = 0; i < scene.bodies.size(); ++i)
        if (worldJoint[i] >= 0 && !seen[i])
            grow(i, true);
    for (std::size_t i = 0; i < scene.bodies.size(); ++i)
        if (!seen[i])
            grow(i, false);
    return std::all_of(used.begin(), used.end(), [](bool u) { return u; });
}

class MultiBodyEngine : public Engine {
public:
    MultiBodyEngine(const Scene& scene, const Variant& variant, const std::vector<Tree>& trees)
        : mScene(scene), mSubsteps(variant.substeps), mParts(scene),
          mWorld(&mParts.dispatcher, &mParts.broadphase, &mSolver, &mParts.configuration),
          mPlaces(scene.bodies.size()) {
        mWorld.setGravity(toBt(scene.gravity));
        mParts.addGround(mWorld);
        for (const Tree& tree : trees)
            addTree(tree);
    }
    ~MultiBodyEngine() override {
        for (const auto& constraint : mConstraints)
            mWorld.removeMultiBodyConstraint(constraint.get());
        for (const auto& collider : mColliders)
            mWorld.removeCollisionObject(collider.get());
        for (const auto& multiBody : mMultiBodies)
            mWorld.removeMultiBody(multiBody.get());
    }

    void step() override {
        const auto h = static_cast<btScalar>(mScene.dt / mSubsteps);
        for (int i = 0; i < mSubsteps; ++i)
            mWorld.stepSimulation(h, 0);
    }

    void read(std::vector<Motion>& motions) override {
        motions.resize(mScene.bodies.size());
        for (const auto& multiBody : mMultiBodies) {
            multiBody->forwardKinematics(mTurns, mOrigins);
            const auto size = static_cast<std::size_t>(multiBody->getNumLinks()) + 1;
            mOmegas.resize(size);
            mSpeeds.resize(size);
            multiBody->compTreeLinkVelocities(mOmegas.data(), mSpeeds.data());
            for (std::size_t i = 0; i < mPlaces.size(); ++i)
                if (mPlaces[i].multiBody == multiBody.get())
                    motions[i] = motionOf(mPlaces[i]);
        }
    }

private:
    struct Place {
        btMultiBody* multiBody = nullptr;
        int link = -1;
    };

    // Velocities of the tree are in the links' frames.
    Motion motionOf(const Place& place) const {
        const btMultiBody& m = *place.multiBody;
        const btTransform tm = place.link < 0 ? m.getBaseWorldTransform()
                                              : m.getLink(place.link).m_cachedWorldTransform;
        const auto index = static_cast<std::size_t>(place.link + 1);
        return {fromBt(tm.getOrigin()), fromBt(tm.getRotation()),
                fromBt(tm.getBasis() * mSpeeds[index]), fromBt(tm.getBasis() * mOmegas[index])};
    }

    [[nodiscard]] btTransform poseOf(int body) const {
        const Motion& m = mScene.bodies[static_cast<std::size_t>(body)].start;
        return btTransform(toBt(m.q), toBt(m.p));
    }

    void addTree(const Tree& tree) {
        const Body& root = mScene.bodies[static_cast<std::size_t>(tree.nodes[0].body)];
        const int skipped = tree.fixed ? 0 : 1; // a free root is the base
        const int links = static_cast<int>(tree.nodes.size()) - skipped;
        auto made = std::make_unique<btMultiBody>(
            links, tree.fixed ? btScalar(0) : static_cast<btScalar>(root.mass),
            tree.fixed ? btVector3(0, 0, 0) : toBt(root.shape.inertia(root.mass)), tree.fixed,
            false);
        if (!tree.fixed)
            mPlaces[static_cast<std::size_t>(tree.nodes[0].body)] = {made.get(), -1};
        for (int i = 0; i < links; ++i)
            addLink(*made, tree, i, skipped);
        made->finalizeMultiDof();
        made->setLinearDamping(0);
        made->setAngularDamping(0);
        made->setMaxCoordinateVelocity(kNoSpeedLimit);
        made->setUseGyroTerm(true);
        made->setHasSelfCollision(false);
        if (!tree.fixed)
            made->setBaseWorldTransform(poseOf(tree.nodes[0].body));
        mWorld.addMultiBody(made.get());
        addColliders(*made, tree, skipped);
        for (int i = 0; i < links; ++i)
            addDrive(*made, tree.nodes[static_cast<std::size_t>(i + skipped)], i);
        mMultiBodies.push_back(std::move(made));
    }

    void addLink(btMultiBody& made, const Tree& tree, int link, int skipped) {
        const Tree::Node& node = tree.nodes[static_cast<std::size_t>(link + skipped)];
        const Body& body = mScene.bodies[static_cast<std::size_t>(node.body)];
        const Joint& joint = mScene.joints[static_cast<std::size_t>(node.joint)];
        const btTransform here = poseOf(node.body);
        const btTransform parent =
            node.parent < 0 ? btTransform::getIdentity()
                            : poseOf(tree.nodes[static_cast<std::size_t>(node.parent)].body);
        const btVector3 anchor = toBt(joint.anchor), inertia = toBt(body.shape.inertia(body.mass));
        const btVector3 fromParent = parent.invXform(anchor), toHere = -here.invXform(anchor);
        const btQuaternion turned = here.getRotation().inverse() * parent.getRotation();
        const int parentLink = node.parent < 0 ? -1 : node.parent - skipped;
        const auto mass = static_cast<btScalar>(body.mass);
        if (joint.kind == JointKind::kBall) {
            made.setupSpherical(link, mass, inertia, parentLink, turned, fromParent, toHere, true);
        } else {
            const btVector3 axis = here.getBasis().transpose() * toBt(joint.axis);
            made.setupRevolute(link, mass, inertia, parentLink, turned, axis, fromParent, toHere,
                               true);
        }
        mPlaces[static_cast<std::size_t>(node.body)] = {&made, link};
    }

    void addColliders(btMultiBody& made, const Tree& tree, int skipped) {
        if (!mScene.ground && !mScene.pairs)
            return;
        for (std::size_t n = 0; n < tree.nodes.size(); ++n) {
            const int link = static_cast<int>(n) - skipped;
            const Body& body = mScene.bodies[static_cast<std::size_t>(tree.nodes[n].body)];
            auto collider = std::make_unique<btMultiBodyLinkCollider>(&made, link);
            collider->setCollisionShape(mParts.shape(body.shape));
            collider->setWorldTransform(poseOf(tree.nodes[n].body));
            mParts.setSurface(*collider);
            mWorld.addCollisionObject(collider.get(), mParts.group(), mParts.mask());
            if (link < 0)
                made.setBaseCollider(collider.get());
            else
                made.getLink(link).m_collider = collider.get();
            mColliders.push_back(std::move(collider));
        }
    }

    // The coordinate of a link is its motion relative to its parent.
    void addDrive(btMultiBody& made, const Tree::Node& node, int link) {
        const Joint& joint = mScene.joints[static_cast<std::size_t>(node.joint)];
        const bool reversed = joint.a == node.body;
        const double sign = reversed ? -1 : 1;
        if (joint.limited)
            addConstraint(std::make_unique<btMultiBodyJointLimitConstraint>(
                &made, link, static_cast<btScalar>(reversed ? -joint.upper : joint.lower),
                static_cast<btScalar>(reversed ? -joint.lower : joint.upper)));
        if (joint.motor)
            addConstraint(std::make_unique<btMultiBodyJointMotor>(
                &made, link, static_cast<btScalar>(sign * joint.speed),
                static_cast<btScalar>(joint.bound * mScene.dt / mSubsteps)));
    }

    void addConstraint(std::unique_ptr<btMultiBodyConstraint> constraint) {
        mWorld.addMultiBodyConstraint(constraint.get());
        mConstraints.push_back(std::move(constraint));
    }

    const Scene& mScene;
    int mSubsteps;
    BulletParts mParts;
    btMultiBodyConstraintSolver mSolver;
    btMultiBodyDynamicsWorld mWorld;
    std::vector<std::unique_ptr<btMultiBody>> mMultiBodies;
    std::vector<std::unique_ptr<btMultiBodyLinkCollider>> mColliders;
    std::vector<std::unique_ptr<btMultiBodyConstraint>> mConstraints;
    std::vector<Place> mPlaces; ///< of the scene's bodies
    btAlignedObjectArray<btQuaternion> mTurns;
    btAlignedObjectArray<btVector3> mOrigins;
    std::vector<btVector3> mOmegas, mSpeeds;
};

} // namespace

std::unique_ptr<Engine> makeMultiBodyEngine(const Scene& scene, const Variant& variant) {
    std::vector<Tree> trees;
    if (scene.joints.empty() || !findTrees(scene, trees))
        return nullptr;
    return std::make_unique<MultiBodyEngine>(scene, variant, trees);
}

} // namespace bench
