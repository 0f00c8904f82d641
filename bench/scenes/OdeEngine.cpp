// ODE in the precision of its package. Modes: default (the world step), quick (the iterative step), and for
// the broad phase sap and hash.
#include "Engine.h"

#include <algorithm>
#include <cmath>
#include <ode/ode.h>

namespace bench {
namespace {

constexpr int kMaxContacts = 8; ///< of a pair

Vec3 toVec3(const dReal* v) {
    return {v[0], v[1], v[2]};
}

dGeomID makeShape(dSpaceID space, const Shape& shape) {
    switch (shape.kind) {
    case ShapeKind::kBox:
        return dCreateBox(space, 2 * shape.half.x, 2 * shape.half.y, 2 * shape.half.z);
    case ShapeKind::kCapsule:
        return dCreateCapsule(space, shape.radius, 2 * shape.halfLength);
    case ShapeKind::kCylinder:
        return dCreateCylinder(space, shape.radius, 2 * shape.halfLength);
    case ShapeKind::kSphere:
        break;
    }
    return dCreateSphere(space, shape.radius);
}

/// The library is ready while one of these lives.
struct Library {
    Library() { dInitODE(); }
    Library(const Library&) = delete;
    Library& operator=(const Library&) = delete;
    ~Library() { dCloseODE(); }
};

class OdeEngine : public Engine {
public:
    OdeEngine(const Scene& scene, const Variant& variant)
        : mScene(scene), mSubsteps(variant.substeps), mQuick(variant.mode == "quick"),
          mWorld(dWorldCreate()), mSpace(dSweepAndPruneSpaceCreate(nullptr, dSAP_AXES_XYZ)),
          mContacts(dJointGroupCreate(0)) {
        dWorldSetGravity(mWorld, scene.gravity.x, scene.gravity.y, scene.gravity.z);
        if (variant.mode == "exact") // errors of position end within one step
            dWorldSetERP(mWorld, 1);
        for (const Body& body : scene.bodies)
            addBody(body);
        if (scene.ground)
            mGround = dCreatePlane(mSpace, 0, 0, 1, 0);
        for (const Joint& joint : scene.joints)
            addJoint(joint);
    }
    ~OdeEngine() override {
        dJointGroupDestroy(mContacts);
        dSpaceDestroy(mSpace);
        dWorldDestroy(mWorld);
    }

    void step() override {
        const double h = mScene.dt / mSubsteps;
        for (int i = 0; i < mSubsteps; ++i) {
            if (mScene.ground || mScene.pairs)
                dSpaceCollide(mSpace, this, near);
            if (mQuick)
                dWorldQuickStep(mWorld, h);
            else
                dWorldStep(mWorld, h);
            dJointGroupEmpty(mContacts);
        }
    }

    void read(std::vector<Motion>& motions) override {
        motions.resize(mBodies.size());
        for (std::size_t i = 0; i < mBodies.size(); ++i) {
            const dReal* q = dBodyGetQuaternion(mBodies[i]);
            motions[i] = {toVec3(dBodyGetPosition(mBodies[i])),
                          {q[0], q[1], q[2], q[3]},
                          toVec3(dBodyGetLinearVel(mBodies[i])),
                          toVec3(dBodyGetAngularVel(mBodies[i]))};
        }
    }

    bool cast(const std::vector<Segment>& segments, std::vector<double>& distances) override {
        const dGeomID ray = dCreateRay(nullptr, 1);
        dGeomRaySetClosestHit(ray, 1);
        for (std::size_t i = 0; i < segments.size(); ++i) {
            const Vec3 &from = segments[i].start, d = segments[i].end - from;
            dGeomRaySetLength(ray, norm(d));
            dGeomRaySet(ray, from.x, from.y, from.z, d.x, d.y, d.z);
            distances[i] = -1;
            dSpaceCollide2(ray, reinterpret_cast<dGeomID>(mSpace), &distances[i], nearRay);
        }
        dGeomDestroy(ray);
        return true;
    }

private:
    /// The depth of a ray's contact is its distance.
    static void nearRay(void* nearest, dGeomID g1, dGeomID g2) {
        dContactGeom contact;
        auto& distance = *static_cast<double*>(nearest);
        if (dCollide(g1, g2, 1, &contact, sizeof contact) > 0 &&
            (distance < 0 || contact.depth < distance))
            distance = contact.depth;
    }
    void addBody(const Body& body) {
        const dBodyID b = dBodyCreate(mWorld);
        const Vec3 I = body.shape.inertia(body.mass);
        dMass mass;
        dMassSetParameters(&mass, body.mass, 0, 0, 0, I.x, I.y, I.z, 0, 0, 0);
        dBodySetMass(b, &mass);
        const Motion& m = body.start;
        const dQuaternion q = {m.q.w, m.q.x, m.q.y, m.q.z};
        dBodySetPosition(b, m.p.x, m.p.y, m.p.z);
        dBodySetQuaternion(b, q);
        dBodySetLinearVel(b, m.v.x, m.v.y, m.v.z);
        dBodySetAngularVel(b, m.w.x, m.w.y, m.w.z);
        if (mScene.ground || mScene.pairs)
            dGeomSetBody(makeShape(mSpace, body.shape), b);
        mBodies.push_back(b);
    }

    dBodyID bodyOf(int body) const {
        return body == Joint::kWorld ? nullptr : mBodies[static_cast<std::size_t>(body)];
    }

    // Coordinates are those of the first body relative to the second: b goes first, and where it is the
    // world a goes first along the opposite axis, which comes to the same.
    void addJoint(const Joint& joint) {
        const bool onWorld = joint.b == Joint::kWorld;
        const dBodyID first = bodyOf(onWorld ? joint.a : joint.b);
        const dBodyID second = bodyOf(onWorld ? joint.b : joint.a);
        const Vec3 axis = onWorld ? -joint.axis : joint.axis, at = joint.anchor;
        dJointID made = nullptr;
        if (joint.kind == JointKind::kBall) {
            made = dJointCreateBall(mWorld, nullptr);
            dJointAttach(made, first, second);
            dJointSetBallAnchor(made, at.x, at.y, at.z);
        } else if (joint.kind == JointKind::kHinge) {
            made = dJointCreateHinge(mWorld, nullptr);
            dJointAttach(made, first, second);
            dJointSetHingeAnchor(made, at.x, at.y, at.z);
            dJointSetHingeAxis(made, axis.x, axis.y, axis.z);
            setParameters(joint, [made](int p, double v) { dJointSetHingeParam(made, p, v); });
        } else {
            made = dJointCreateSlider(mWorld, nullptr);
            dJointAttach(made, first, second);
            dJointSetSliderAxis(made, axis.x, axis.y, axis.z);
            setParameters(joint, [made](int p, double v) { dJointSetSliderParam(made, p, v); });
        }
    }

    template <typename Set>
    static void setParameters(const Joint& joint, Set set) {
        if (joint.limited) {
            set(dParamLoStop, joint.lower);
            set(dParamHiStop, joint.upper);
            set(dParamLoStop, joint.lower); // one that crosses the other is not taken
        }
        if (joint.motor) {
            set(dParamVel, joint.speed);
            set(dParamFMax, joint.bound);
        }
    }

    static void near(void* self, dGeomID g1, dGeomID g2) {
        static_cast<OdeEngine*>(self)->collide(g1, g2);
    }
    void collide(dGeomID g1, dGeomID g2) {
        const dBodyID b1 = dGeomGetBody(g1), b2 = dGeomGetBody(g2);
        if (b1 && b2 && (!mScene.pairs || dAreConnectedExcluding(b1, b2, dJointTypeContact)))
            return;
        dContact contacts[kMaxContacts];
        const int count = dCollide(g1, g2, kMaxContacts, &contacts[0].geom, sizeof(dContact));
        for (int i = 0; i < count; ++i) {
            dSurfaceParameters& surface = contacts[i].surface;
            surface = {};
            surface.mode = dContactApprox1; // friction by the normal force
            surface.mu = mScene.friction;
            if (mScene.restitution > 0) {
                surface.mode |= dContactBounce;
                surface.bounce = mScene.restitution;
            }
            dJointAttach(dJointCreateContact(mWorld, mContacts, &contacts[i]), b1, b2);
        }
    }

    Library mLibrary;
    const Scene& mScene;
    int mSubsteps;
    bool mQuick;
    dWorldID mWorld;
    dSpaceID mSpace;
    dJointGroupID mContacts;
    dGeomID mGround = nullptr;
    std::vector<dBodyID> mBodies;
};

class OdeBroadPhase : public BroadPhase {
public:
    explicit OdeBroadPhase(bool hash)
        : mSpace(hash ? dHashSpaceCreate(nullptr)
                      : dSweepAndPruneSpaceCreate(nullptr, dSAP_AXES_XYZ)) {
        for (int i = 0; i < Swarm::kCount; ++i) {
            const dGeomID geom = dCreateSphere(mSpace, Swarm::kRadius);
            dGeomSetData(geom, reinterpret_cast<void*>(static_cast<std::intptr_t>(i)));
            mGeoms.push_back(geom);
        }
    }
    ~OdeBroadPhase() override { dSpaceDestroy(mSpace); }
    int update(const std::vector<Vec3>& centres) override {
        for (std::size_t i = 0; i < mGeoms.size(); ++i)
            dGeomSetPosition(mGeoms[i], centres[i].x, centres[i].y, centres[i].z);
        int count = 0;
        dSpaceCollide(mSpace, &count, [](void* n, dGeomID, dGeomID) { ++*static_cast<int*>(n); });
        return count;
    }
    std::vector<std::pair<int, int>> pairs() override {
        std::vector<std::pair<int, int>> all;
        dSpaceCollide(mSpace, &all, [](void* list, dGeomID g1, dGeomID g2) {
            const auto index = [](dGeomID g) {
                return static_cast<int>(reinterpret_cast<std::intptr_t>(dGeomGetData(g)));
            };
            static_cast<std::vector<std::pair<int, int>>*>(list)->push_back(
                std::minmax(index(g1), index(g2)));
        });
        return all;
    }

private:
    Library mLibrary;
    dSpaceID mSpace;
    std::vector<dGeomID> mGeoms;
};

} // namespace

const char* engineName() {
    return "ode";
}

std::vector<std::string> engineModes() {
    return {"quick", "hash", "exact"};
}

std::unique_ptr<Engine> makeEngine(const Scene& scene, const Variant& variant) {
    return std::make_unique<OdeEngine>(scene, variant);
}

std::unique_ptr<BroadPhase> makeBroadPhase(const Variant& variant) {
    return std::make_unique<OdeBroadPhase>(variant.mode == "hash");
}

bool recordTrace(const std::string&) {
    return false;
}

} // namespace bench
