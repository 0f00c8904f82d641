// Bullet with rigid bodies. Modes: default (sequential impulses as they come), f2 (two friction directions
// and 50 iterations), mb (trees of joints in reduced coordinates).
#include "BulletCommon.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace bench {
namespace {

constexpr int kGroundGroup = 1, kBodyGroup = 2;

btCollisionShape* makeShape(const Shape& shape) {
    const auto r = static_cast<btScalar>(shape.radius);
    const auto h = static_cast<btScalar>(shape.halfLength);
    switch (shape.kind) {
    case ShapeKind::kBox:
        return new btBoxShape(toBt(shape.half));
    case ShapeKind::kCapsule:
        return new btCapsuleShapeZ(r, 2 * h);
    case ShapeKind::kCylinder:
        return new btCylinderShapeZ(btVector3(r, r, h));
    case ShapeKind::kSphere:
        break;
    }
    return new btSphereShape(r);
}

class BulletEngine : public Engine {
public:
    BulletEngine(const Scene& scene, const Variant& variant)
        : mScene(scene), mSubsteps(variant.substeps), mParts(scene),
          mWorld(&mParts.dispatcher, &mParts.broadphase, &mSolver, &mParts.configuration) {
        mWorld.setGravity(toBt(scene.gravity));
        if (variant.mode == "f2") {
            mWorld.getSolverInfo().m_solverMode |= SOLVER_USE_2_FRICTION_DIRECTIONS;
            mWorld.getSolverInfo().m_numIterations = 50;
        }
        mParts.addGround(mWorld);
        for (const Body& body : scene.bodies)
            addBody(body);
        for (const Joint& joint : scene.joints)
            addJoint(joint);
    }
    ~BulletEngine() override {
        for (const auto& joint : mJoints)
            mWorld.removeConstraint(joint.get());
        for (const auto& body : mBodies)
            mWorld.removeRigidBody(body.get());
    }

    void step() override {
        const auto h = static_cast<btScalar>(mScene.dt / mSubsteps);
        for (int i = 0; i < mSubsteps; ++i)
            mWorld.stepSimulation(h, 0);
    }

    void read(std::vector<Motion>& motions) override {
        motions.resize(mBodies.size());
        for (std::size_t i = 0; i < mBodies.size(); ++i) {
            const btRigidBody& b = *mBodies[i];
            motions[i] = {fromBt(b.getCenterOfMassPosition()), fromBt(b.getOrientation()),
                          fromBt(b.getLinearVelocity()), fromBt(b.getAngularVelocity())};
        }
    }

    bool cast(const std::vector<Segment>& segments, std::vector<double>& distances) override {
        mWorld.updateAabbs();
        for (std::size_t i = 0; i < segments.size(); ++i) {
            const btVector3 from = toBt(segments[i].start), to = toBt(segments[i].end);
            btCollisionWorld::ClosestRayResultCallback hit(from, to);
            hit.m_collisionFilterGroup = hit.m_collisionFilterMask = mParts.group();
            mWorld.rayTest(from, to, hit);
            distances[i] =
                hit.hasHit() ? double(hit.m_closestHitFraction) * double((to - from).length()) : -1;
        }
        return true;
    }

private:
    void addBody(const Body& body) {
        btRigidBody::btRigidBodyConstructionInfo info(static_cast<btScalar>(body.mass), nullptr,
                                                      mParts.shape(body.shape),
                                                      toBt(body.shape.inertia(body.mass)));
        info.m_startWorldTransform = btTransform(toBt(body.start.q), toBt(body.start.p));
        auto made = std::make_unique<btRigidBody>(info);
        mParts.setSurface(*made);
        made->setActivationState(DISABLE_DEACTIVATION);
        made->setLinearVelocity(toBt(body.start.v));
        made->setAngularVelocity(toBt(body.start.w));
        mWorld.addRigidBody(made.get(), mParts.group(), mParts.mask());
        mBodies.push_back(std::move(made));
    }

    btRigidBody& bodyOf(int body) {
        return body == Joint::kWorld ? btTypedConstraint::getFixedBody()
                                     : *mBodies[static_cast<std::size_t>(body)];
    }
    [[nodiscard]] btTransform poseOf(int body) const {
        return body == Joint::kWorld ? btTransform::getIdentity()
                                     : mBodies[static_cast<std::size_t>(body)]->getWorldTransform();
    }
    [[nodiscard]] btVector3 anchorIn(int body, const Joint& joint) const {
        return poseOf(body).invXform(toBt(joint.anchor));
    }
    [[nodiscard]] btVector3 axisIn(int body, const Joint& joint) const {
        return poseOf(body).getBasis().transpose() * toBt(joint.axis);
    }

    void addJoint(const Joint& joint) {
        std::unique_ptr<btTypedConstraint> made;
        if (joint.kind == JointKind::kBall)
            made = std::make_unique<btPoint2PointConstraint>(bodyOf(joint.a), bodyOf(joint.b),
                                                             anchorIn(joint.a, joint),
                                                             anchorIn(joint.b, joint));
        else if (joint.kind == JointKind::kHinge)
            made = makeHinge(joint);
        else
            made = makeSlider(joint);
        mWorld.addConstraint(made.get(), true);
        mJoints.push_back(std::move(made));
    }

    // Its angle is that of a relative to b.
    std::unique_ptr<btTypedConstraint> makeHinge(const Joint& joint) {
        auto hinge = std::make_unique<btHingeConstraint>(
            bodyOf(joint.a), bodyOf(joint.b), anchorIn(joint.a, joint), anchorIn(joint.b, joint),
            axisIn(joint.a, joint), axisIn(joint.b, joint));
        if (joint.limited)
            hinge->setLimit(static_cast<btScalar>(-joint.upper),
                            static_cast<btScalar>(-joint.lower));
        if (joint.motor)
            hinge->enableAngularMotor(true, static_cast<btScalar>(-joint.speed),
                                      static_cast<btScalar>(joint.bound * mScene.dt / mSubsteps));
        return hinge;
    }

    // Slides along x of its frames, which are those of the world at the start.
    std::unique_ptr<btTypedConstraint> makeSlider(const Joint& joint) {
        const btTransform at(btQuaternion::getIdentity(), toBt(joint.anchor));
        auto slider = std::make_unique<btSliderConstraint>(bodyOf(joint.a), bodyOf(joint.b),
                                                           poseOf(joint.a).inverse() * at,
                                                           poseOf(joint.b).inverse() * at, true);
        slider->setLowerLinLimit(1);
        slider->setUpperLinLimit(-1);
        slider->setLowerAngLimit(0);
        slider->setUpperAngLimit(0);
        if (joint.motor) {
            slider->setPoweredLinMotor(true);
            slider->setTargetLinMotorVelocity(static_cast<btScalar>(joint.speed));
            slider->setMaxLinMotorForce(static_cast<btScalar>(joint.bound));
        }
        return slider;
    }

    const Scene& mScene;
    int mSubsteps;
    BulletParts mParts;
    btSequentialImpulseConstraintSolver mSolver;
    btDiscreteDynamicsWorld mWorld;
    std::vector<std::unique_ptr<btRigidBody>> mBodies;
    std::vector<std::unique_ptr<btTypedConstraint>> mJoints;
};

class BulletBroadPhase : public BroadPhase {
public:
    BulletBroadPhase()
        : mDispatcher(&mConfiguration), mWorld(&mDispatcher, &mBroadphase, &mConfiguration),
          mShape(btScalar(Swarm::kRadius)), mObjects(Swarm::kCount) {
        for (int i = 0; i < Swarm::kCount; ++i) {
            btCollisionObject& object = mObjects[static_cast<std::size_t>(i)];
            object.setCollisionShape(&mShape);
            object.setUserIndex(i);
            mWorld.addCollisionObject(&object, kBodyGroup, kBodyGroup);
        }
    }
    ~BulletBroadPhase() override {
        for (btCollisionObject& object : mObjects)
            mWorld.removeCollisionObject(&object);
    }
    int update(const std::vector<Vec3>& centres) override {
        for (std::size_t i = 0; i < mObjects.size(); ++i)
            mObjects[i].getWorldTransform().setOrigin(toBt(centres[i]));
        mWorld.updateAabbs();
        mWorld.computeOverlappingPairs();
        return mBroadphase.getOverlappingPairCache()->getNumOverlappingPairs();
    }
    std::vector<std::pair<int, int>> pairs() override {
        std::vector<std::pair<int, int>> all;
        btBroadphasePairArray& array =
            mBroadphase.getOverlappingPairCache()->getOverlappingPairArray();
        for (int i = 0; i < array.size(); ++i) {
            const auto index = [](const btBroadphaseProxy* proxy) {
                return static_cast<const btCollisionObject*>(proxy->m_clientObject)->getUserIndex();
            };
            all.push_back(std::minmax(index(array[i].m_pProxy0), index(array[i].m_pProxy1)));
        }
        return all;
    }

private:
    btDefaultCollisionConfiguration mConfiguration;
    btCollisionDispatcher mDispatcher;
    btDbvtBroadphase mBroadphase;
    btCollisionWorld mWorld;
    btSphereShape mShape;
    std::vector<btCollisionObject> mObjects;
};

} // namespace

BulletParts::BulletParts(const Scene& scene) : dispatcher(&configuration), mScene(scene) {}

btCollisionShape* BulletParts::shape(const Shape& shape) {
    mShapes.emplace_back(makeShape(shape));
    return mShapes.back().get();
}

int BulletParts::group() const {
    return kBodyGroup;
}

int BulletParts::mask() const {
    return (mScene.ground ? kGroundGroup : 0) | (mScene.pairs ? kBodyGroup : 0);
}

// Friction and restitution of two surfaces are multiplied.
void BulletParts::setSurface(btCollisionObject& object) const {
    object.setFriction(static_cast<btScalar>(std::sqrt(mScene.friction)));
    object.setRestitution(static_cast<btScalar>(std::sqrt(mScene.restitution)));
}

void BulletParts::addGround(btDynamicsWorld& world) {
    if (!mScene.ground)
        return;
    mShapes.push_back(std::make_unique<btStaticPlaneShape>(btVector3(0, 0, 1), btScalar(0)));
    mGround = std::make_unique<btRigidBody>(
        btRigidBody::btRigidBodyConstructionInfo(0, nullptr, mShapes.back().get()));
    setSurface(*mGround);
    world.addRigidBody(mGround.get(), kGroundGroup, kBodyGroup);
}

const char* engineName() {
    return sizeof(btScalar) == sizeof(double) ? "bullet64" : "bullet";
}

std::vector<std::string> engineModes() {
    return {"f2", "mb"};
}

std::unique_ptr<Engine> makeEngine(const Scene& scene, const Variant& variant) {
    if (variant.mode == "mb")
        return makeMultiBodyEngine(scene, variant);
    return std::make_unique<BulletEngine>(scene, variant);
}

std::unique_ptr<BroadPhase> makeBroadPhase(const Variant&) {
    return std::make_unique<BulletBroadPhase>();
}

bool recordTrace(const std::string&) {
    return false;
}

} // namespace bench
