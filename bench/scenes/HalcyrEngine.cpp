// Halcyr. Modes: default (as the library comes), iter (islands of many rows are swept, beginning with the
// forces of the last step), sweep (all islands are), iter30 and sweep30 (the same with 30 sweeps), stiff
// (with geometric stiffness).
#include "Engine.h"

#include "HeapCounter.h"

#include <Col/ColLineSeg.h>
#include <Col/ColSpace.h>
#include <Dyn/DynWorld.h>
#include <Dyns/DynsConstraintFrames.h>
#include <Dyns/DynsConstraints.h>
#include <Hy/Hy.h>
#include <Kit/KitProfile.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <map>

namespace bench {
namespace {

constexpr double kCalm = 1000;   ///< times the damping of a contact's depth, see `calm`
constexpr int kDirectRows = 300; ///< of the islands that `iter` still solves directly

Hy::HyVector3 toHy(const Vec3& v) {
    return {v.x, v.y, v.z};
}
Vec3 fromHy(const Hy::HyVector3& v) {
    return {v[0], v[1], v[2]};
}

Hy::HyGeometry* makeShape(const Shape& shape) {
    switch (shape.kind) {
    case ShapeKind::kBox:
        return new Hy::HyBox(2 * shape.half.x, 2 * shape.half.y, 2 * shape.half.z);
    case ShapeKind::kCapsule:
        return new Hy::HyCapsule(shape.radius, 2 * shape.halfLength);
    case ShapeKind::kCylinder:
        return new Hy::HyCylinder(shape.radius, 2 * shape.halfLength);
    case ShapeKind::kSphere:
        break;
    }
    return new Hy::HySphere(shape.radius);
}

/// Aims the friction of a part's contacts along their slip, so that a box of bounds acts as a cone.
class AlongTheSlip : public Hy::FrictionDirectionSubscriber {
public:
    void notify(Hy::HyPart* part, Hy::HyDynamicsContactInput* contacts) override {
        for (auto contact = contacts->dynamicsContactBegin();
             contact != contacts->dynamicsContactEnd(); ++contact)
            notify(part, *contact);
    }
    void notify(Hy::HyPart*, Hy::HyDynamicsContact* contact) override {
        const Hy::HyVector3 slip = contact->getSlidingVelocity();
        if (slip.norm() > 0)
            contact->setDirection(slip);
    }
    void setReferenceDirection(const Hy::HyVector3&) override {}
    [[nodiscard]] Hy::HyVector3 getReferenceDirection() const override { return {}; }
};

/// A frame with one universe; there is one at a time.
class Host {
public:
    explicit Host(const Variant& variant) : frame(*start(variant)), universe(frame.getUniverse()) {
        universe.setDynamicsMultithreaded(variant.threads > 1);
        universe.setCollisionMultithreaded(variant.threads > 1);
    }
    Host(const Host&) = delete;
    Host& operator=(const Host&) = delete;
    ~Host() { Hy::HyFrame::release(); }

    Hy::HyFrame& frame;
    Hy::HyUniverse& universe;

private:
    static Hy::HyFrame* start(const Variant& variant) {
        Hy::HyFrame* frame = Hy::HyFrame::instance();
        frame->setMaxThreadCount(variant.threads);
        return frame;
    }
};

class HalcyrEngine : public Engine {
public:
    HalcyrEngine(const Scene& scene, const Variant& variant)
        : mScene(scene), mHost(variant), mSubsteps(variant.substeps) {
        mHost.frame.setTimeStep(scene.dt / variant.substeps);
        mHost.universe.setGravity(toHy(scene.gravity));
        mHost.universe.setAutoSleep(false);
        setUpSolver(variant.mode);
        setUpMaterial();
        addBodies();
        if (variant.mode == "aimed")
            for (Hy::HyPart* part : mParts)
                part->setFrictionDirectionSubscriber(new AlongTheSlip);
        for (const Joint& joint : scene.joints)
            addJoint(joint);
        choosePairs();
        watchSolves();
    }

    void step() override {
        const long before = HeapCounter::calls();
        mStepStart =
            std::chrono::steady_clock::now().time_since_epoch() / std::chrono::nanoseconds(1);
        for (int i = 0; i < mSubsteps; ++i) {
            mHost.frame.step();
            addTimings(); // a copy of nine numbers
        }
        mHeapCalls = HeapCounter::calls() - before;
    }

    void read(std::vector<Motion>& motions) override {
        motions.resize(mParts.size());
        for (std::size_t i = 0; i < mParts.size(); ++i) {
            const Hy::HyPart& part = *mParts[i];
            const Hy::HyQuaternion q = part.getOrientationQuaternion();
            motions[i] = {fromHy(part.getPosition()),
                          {q.w(), q.x(), q.y(), q.z()},
                          fromHy(part.getLinearVelocity()),
                          fromHy(part.getAngularVelocity())};
        }
    }

    bool cast(const std::vector<Segment>& segments, std::vector<double>& distances) override {
        CxSpace* space = mHost.universe.getColSpace();
        ColSpaceUpdateAll(space);
        ColSpaceEndChanges(space);
        for (std::size_t i = 0; i < segments.size(); ++i) {
            const Vec3 &a = segments[i].start, &b = segments[i].end;
            ColLineSegIntersectResult hit;
            const bool any = ColSpaceLineSegIntersect(space, lsVec3(a.x, a.y, a.z),
                                                      lsVec3(b.x, b.y, b.z), &hit, nullptr) != 0;
            distances[i] = any ? hit.distance : -1;
        }
        ColSpaceBeginChanges(space);
        return true;
    }

    void observe() override {
        ++mSteps;
        CxSpace& space = *mHost.universe.getColSpace();
        add("n_pairs", static_cast<double>(space.GetPairOverlapList().size() +
                                           space.GetRestingPairList().size()));
        double contacts = 0;
        for (auto c = mHost.universe.dynamicsContactBegin();
             c != mHost.universe.dynamicsContactEnd(); ++c)
            ++contacts;
        add("n_contacts", contacts);
        add("n_islands", mHost.universe.getLastPartitionCount());
        observeRows();
        if (mSteps > mScene.steps / 2) { // in steady state
            mLateHeapCalls += static_cast<double>(mHeapCalls);
            mLateSteps += 1;
        }
        observeZones();
    }

    Results counters() override {
        Results results;
        for (const auto& [name, sum] : mSums)
            results.emplace_back(name, sum / mSteps);
        results.emplace_back("n_heap_calls_late", mLateHeapCalls / std::max(mLateSteps, 1.0));
        results.emplace_back("n_unconverged_total",
                             static_cast<double>(mHost.universe.getSolverUnconvergedCount()));
        results.emplace_back("n_fallbacks_total",
                             static_cast<double>(mHost.universe.getSolverFallbackCount()));
        return results;
    }

private:
    void setUpSolver(const std::string& mode) {
        Hy::HySolverParameters& solver = *mHost.universe.getSolverParameters(0);
        const bool sweeps = mode == "sweep" || mode == "sweep30";
        if (sweeps)
            solver.setConstraintSolver(1);
        if (mode == "iter" || mode == "iter30")
            solver.setIterativeSolverRowThreshold(kDirectRows);
        if (sweeps || mode == "iter" || mode == "iter30")
            solver.setIterativeSolverWarmStart(true);
        if (mode == "iter30" || mode == "sweep30")
            solver.setConstraintIterativeSolverMaxIteration(30);
        if (mode == "stiff")
            solver.setGeometricStiffness(true);
        if (mode == "exact") { // errors of position end within one step
            solver.setConstraintLinearDamping(0);
            solver.setConstraintAngularDamping(0);
        }
        if (mode == "calm") // depth is pushed out slowly, so that it adds no speed to a bounce
            solver.setConstraintLinearDamping(kCalm * solver.getConstraintLinearDamping());
    }

    void setUpMaterial() {
        mMaterial = mHost.universe.getMaterialTable()->registerMaterial("surface");
        if (mScene.friction > 0) {
            mMaterial->setFrictionModel(Hy::HyMaterial::kFrictionAxisLinear,
                                        Hy::HyMaterial::kFrictionModelScaledBox);
            mMaterial->setFrictionCoefficient(Hy::HyMaterial::kFrictionAxisLinear, mScene.friction);
        }
        mMaterial->setRestitution(mScene.restitution);
    }

    void addBodies() {
        const bool collides = mScene.ground || mScene.pairs;
        if (mScene.ground) {
            mGround = new Hy::HyPart;
            mGround->setControl(Hy::HyPart::kControlStatic);
            mGround->addCollisionGeometry(new Hy::HyCollisionGeometry(new Hy::HyPlane, mMaterial));
            mHost.universe.addPart(mGround);
        }
        for (const Body& body : mScene.bodies) {
            auto* part = new Hy::HyPart(body.mass);
            const Vec3 I = body.shape.inertia(body.mass);
            const double tensor[3][3] = {{I.x, 0, 0}, {0, I.y, 0}, {0, 0, I.z}};
            part->setMassAndInertia(body.mass, tensor);
            if (collides)
                part->addCollisionGeometry(
                    new Hy::HyCollisionGeometry(makeShape(body.shape), mMaterial));
            const Quat& q = body.start.q;
            part->setOrientationQuaternion(Hy::HyQuaternion(q.w, q.x, q.y, q.z));
            part->setPosition(toHy(body.start.p));
            mHost.universe.addPart(part);
            part->setLinearVelocity(toHy(body.start.v));
            part->setAngularVelocity(toHy(body.start.w));
            mParts.push_back(part);
        }
    }

    Hy::HyPart* partOf(int body) const {
        return body == Joint::kWorld ? nullptr : mParts[static_cast<std::size_t>(body)];
    }

    // The coordinate of a joint is the motion of its first part relative to the second.
    void addJoint(const Joint& joint) {
        Hy::HyConstraint* made = nullptr;
        const Hy::HyVector3 at = toHy(joint.anchor), axis = toHy(joint.axis);
        Hy::HyPart *a = partOf(joint.a), *b = partOf(joint.b);
        if (joint.kind == JointKind::kBall)
            made = new Hy::HyBallAndSocket(a, b, at);
        else if (joint.kind == JointKind::kHinge)
            made = new Hy::HyHinge(a, b, at, -axis);
        else
            made = new Hy::HyPrismatic(a, b, at, -axis);
        mHost.universe.addConstraint(made);
        made->enable(true);
        if (joint.limited) {
            made->setLowerLimit(0, joint.lower);
            made->setUpperLimit(0, joint.upper);
            made->setLimitsActive(0, true);
        }
        if (joint.motor) {
            made->setMotorParameters(0, joint.speed, joint.bound, 0);
            made->setControl(0, Hy::HyConstraint::kControlMotorized);
        }
    }

    void choosePairs() {
        if (!mScene.pairs && mGround) {
            mHost.universe.disableAllPairs();
            mHost.universe.enablePairsWith(mGround);
        }
        if (mScene.pairs)
            for (const Joint& joint : mScene.joints)
                if (joint.b != Joint::kWorld)
                    mHost.universe.disablePairIntersect(partOf(joint.a), partOf(joint.b));
    }

    void add(const std::string& name, double value) { mSums[name] += value; }

    void addTimings() {
        const auto& t = mHost.universe.getUniverseTimings();
        mStages[0] += t.preStepParts;
        mStages[1] += t.collisionDetectionBroadPhase;
        mStages[2] += t.collisionDetectionContactGeneration;
        mStages[3] += t.advanceKinematics;
        mStages[4] += t.solveDynamics;
        mStages[5] += t.integrate;
        mStages[6] += t.postStepParts;
    }

    void observeRows() {
        static const char* const kNames[] = {"ms_parts_before", "ms_broad_phase", "ms_contacts",
                                             "ms_kinematics",   "ms_dynamics",    "ms_integrate",
                                             "ms_parts_after"};
        for (std::size_t i = 0; i < std::size(kNames); ++i) {
            add(kNames[i], mStages[i]);
            mStages[i] = 0;
        }
        add("n_rows", mSolved.rows);
        add("n_rows_of_largest", mSolved.largest);
        add("n_passes", mSolved.passes);
        mSolved = {};
    }

    /// Counts each slice between its solve and the universe's own look at it.
    void watchSolves() {
        DynWorldHost& host = mHost.universe.getDynWorld()->host;
        watcher() = this;
        mNextHook = host.postUpdateForce;
        host.postUpdateForce = [](void* owner, DynWorld* world, int start, int end) {
            watcher()->countSlice(*world, end - start);
            if (watcher()->mNextHook)
                watcher()->mNextHook(owner, world, start, end);
        };
    }
    void countSlice(const DynWorld& world, int frames) {
        for (int i = 0; i < frames; ++i) {
            const DynsConstraints& c = *DynsConstraintFramesGetFrame(world.constraint_frames, i);
            mSolved.rows += c.n_constraint_rows;
            mSolved.largest = std::max<double>(mSolved.largest, c.n_constraint_rows);
            mSolved.passes += std::abs(c.lcp_iteration_count);
        }
    }
    static HalcyrEngine*& watcher() {
        static HalcyrEngine* engine = nullptr;
        return engine;
    }

    // Zones stand in the order of their ends; those of earlier steps stay for the trace.
    void observeZones() {
        if (!KitProfileIsEnabled())
            return;
        for (std::size_t t = 0; t < KitProfileGetThreadCount(); ++t)
            for (std::size_t i = KitProfileGetZoneCount(t); i-- > 0;) {
                const KitProfileZone zone = KitProfileGetZone(t, i);
                if (zone.end < mStepStart)
                    break;
                std::string name = std::string("zone_") + zone.name;
                std::replace(name.begin(), name.end(), ' ', '_');
                add(name, 1e-6 * static_cast<double>(zone.end - zone.start));
            }
    }

    const Scene& mScene;
    Host mHost;
    int mSubsteps, mSteps = 0;
    Hy::HyMaterial* mMaterial = nullptr;
    Hy::HyPart* mGround = nullptr;
    std::vector<Hy::HyPart*> mParts;
    std::map<std::string, double> mSums;
    double mStages[7] = {}; ///< ms, of the substeps since the last observation
    struct {
        double rows = 0, largest = 0, passes = 0; ///< since the last observation
    } mSolved;
    void (*mNextHook)(void*, DynWorld*, int, int) = nullptr;
    std::int64_t mStepStart = 0; ///< ns, on the clock of the profile
    long mHeapCalls = 0;
    double mLateHeapCalls = 0, mLateSteps = 0;
};

/// Spheres without parts in the space of a universe.
class HalcyrBroadPhase : public BroadPhase {
public:
    explicit HalcyrBroadPhase(const Variant& variant)
        : mHost(variant), mSpace(*mHost.universe.getColSpace()) {
        auto* shape = new Hy::HySphere(Swarm::kRadius);
        for (int i = 0; i < Swarm::kCount; ++i) {
            auto* geometry = new Hy::HyCollisionGeometry(shape);
            geometry->setContactTolerance(0);
            mHost.universe.addCollisionGeometry(geometry);
            mIndex[geometry->getColModel()] = i;
            mGeometries.push_back(geometry);
        }
    }
    int update(const std::vector<Vec3>& centres) override {
        for (std::size_t i = 0; i < mGeometries.size(); ++i)
            mGeometries[i]->setTransformRelative(Hy::HyTransform(toHy(centres[i])));
        ColSpaceUpdateAll(&mSpace);
        ColSpaceEndChanges(&mSpace);
        const int count = static_cast<int>(mSpace.GetPairOverlapList().size());
        ColSpaceBeginChanges(&mSpace);
        return count;
    }
    std::vector<std::pair<int, int>> pairs() override {
        std::vector<std::pair<int, int>> all;
        ColSpaceEndChanges(&mSpace);
        for (const CxPairLink* link : mSpace.GetPairOverlapList())
            all.push_back(
                std::minmax(mIndex.at(link->mPair.model1), mIndex.at(link->mPair.model2)));
        ColSpaceBeginChanges(&mSpace);
        return all;
    }

private:
    Host mHost;
    CxSpace& mSpace;
    std::vector<Hy::HyCollisionGeometry*> mGeometries;
    std::map<const ColModel*, int> mIndex;
};

std::string& tracePath() {
    static std::string path;
    return path;
}

} // namespace

const char* engineName() {
    return "halcyr";
}

std::vector<std::string> engineModes() {
    return {"iter", "iter30", "sweep", "sweep30", "stiff", "aimed", "exact", "calm"};
}

std::unique_ptr<Engine> makeEngine(const Scene& scene, const Variant& variant) {
    HeapCounter::watchMemoryTable(true);
    return std::make_unique<HalcyrEngine>(scene, variant);
}

std::unique_ptr<BroadPhase> makeBroadPhase(const Variant& variant) {
    return std::make_unique<HalcyrBroadPhase>(variant);
}

bool recordTrace(const std::string& path) {
    KitProfileSetEnabled(true);
    tracePath() = path;
    return std::atexit([] { KitProfileWriteTrace(tracePath().c_str()); }) == 0;
}

} // namespace bench
