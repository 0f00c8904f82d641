#include "SceneMeasures.h"

#include "References.h"

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <functional>

namespace bench {
namespace {

constexpr double kToDegrees = 180 / M_PI;
constexpr double kMillimetres = 1000;

int coarse(const Scene& scene) {
    return scene.isLarge() ? 10 : 1;
}

/// For stacks that should stand still.
class MovedMeasure : public Measure {
public:
    explicit MovedMeasure(const Scene& scene) : Measure(coarse(scene)), mScene(scene) {}
    void sample(int, const std::vector<Motion>& motions) override {
        for (std::size_t i = 0; i < motions.size(); ++i)
            mMoved = std::max(mMoved, norm(motions[i].p - mScene.bodies[i].start.p));
    }
    void report(Results& results) const override { results.emplace_back("moved_max", mMoved); }

private:
    const Scene& mScene;
    double mMoved = 0;
};

/// Energy, and bodies that are no longer where they belong.
class EnergyMeasure : public Measure {
public:
    using IsLost = std::function<bool(const Motion&)>;
    /// @param scale of the scene's own fall or swing, J
    EnergyMeasure(const Scene& scene, double scale, IsLost isLost)
        : Measure(coarse(scene)), mScene(scene), mScale(scale), mIsLost(std::move(isLost)) {}
    void sample(int step, const std::vector<Motion>& motions) override {
        mEnd = energy(mScene, motions);
        if (step == 0)
            mStart = mHighest = mLowest = mEnd;
        mHighest = std::max(mHighest, mEnd);
        mLowest = std::min(mLowest, mEnd);
        mKinetic = kineticEnergy(mScene, motions);
        mLost = mIsLost
                    ? static_cast<double>(std::count_if(motions.begin(), motions.end(), mIsLost))
                    : 0;
    }
    void report(Results& results) const override {
        results.emplace_back("E_gain_J", mHighest - mStart);
        results.emplace_back("E_gain_rel", (mHighest - mStart) / mScale);
        results.emplace_back("E_end_change_J", mEnd - mStart);
        results.emplace_back("KE_end", mKinetic);
        results.emplace_back("KE_end_per_body",
                             mKinetic / static_cast<double>(mScene.bodies.size()));
        if (mIsLost)
            results.emplace_back("lost", mLost);
    }

protected:
    const Scene& mScene;
    double mScale;
    double mStart = 0, mHighest = 0, mLowest = 0, mEnd = 0;

private:
    IsLost mIsLost;
    double mKinetic = 0, mLost = 0;
};

class BounceMeasure : public EnergyMeasure {
public:
    BounceMeasure(const Scene& scene, double scale) : EnergyMeasure(scene, scale, nullptr) {}
    void report(Results& results) const override {
        results.emplace_back("E_end_change_rel", std::abs(mEnd - mStart) / mScale);
        results.emplace_back("E_max_rel", (mHighest - mStart) / mScale);
    }
};

class TumbleMeasure : public Measure {
public:
    explicit TumbleMeasure(const Scene& scene) : Measure(1), mScene(scene) {}
    void sample(int step, const std::vector<Motion>& motions) override {
        const double now = kineticEnergy(mScene, motions);
        const Vec3 L = angularMomentum(mScene.bodies[0], motions[0]);
        if (step == 0) {
            mStart = now;
            mMomentum = L;
        }
        mEnergy = std::max(mEnergy, std::abs(now - mStart) / mStart);
        mError = std::max(mError, norm(L - mMomentum) / norm(mMomentum));
    }
    void report(Results& results) const override {
        results.emplace_back("E_change_rel", mEnergy);
        results.emplace_back("L_err_rel", mError);
    }

private:
    const Scene& mScene;
    Vec3 mMomentum;
    double mStart = 0, mEnergy = 0, mError = 0;
};

/// A body that is thrown along the ground: where it should be at the end, and how fast.
class ThrownMeasure : public Measure {
public:
    ThrownMeasure(const Scene& scene, double distance, double speed)
        : Measure(1), mStart(scene.bodies[0].start), mDistance(distance), mSpeed(speed) {}
    void sample(int, const std::vector<Motion>& motions) override { mNow = motions[0]; }
    void report(Results& results) const override {
        const Vec3 d = mNow.p - mStart.p;
        const Vec3 along = mSpeed > 0 ? mNow.v : d;
        const Vec3 flat{along.x, along.y, 0};
        const double direction = std::atan2(norm(cross(mStart.v, flat)), dot(mStart.v, flat));
        results.emplace_back("dist_err_m", std::abs(std::hypot(d.x, d.y) - mDistance));
        results.emplace_back("dir_err_deg", direction * kToDegrees);
        if (mSpeed > 0)
            results.emplace_back("speed_err", std::abs(norm(mNow.v) - mSpeed));
        else
            results.emplace_back("v_end", norm(mNow.v));
    }

private:
    Motion mStart, mNow;
    double mDistance, mSpeed;
};

std::unique_ptr<Measure> rollingMeasure(const Scene& scene) {
    const double v = norm(scene.bodies[0].start.v), g = -scene.gravity.z, mu = scene.friction;
    const double sliding = 2 * v / (7 * mu * g), rolling = 5 * v / 7;
    const double time = scene.steps * scene.dt;
    return std::make_unique<ThrownMeasure>(
        scene, v * sliding - mu * g * sliding * sliding / 2 + rolling * (time - sliding), rolling);
}

std::unique_ptr<Measure> slideMeasure(const Scene& scene) {
    const Vec3& v = scene.bodies[0].start.v;
    return std::make_unique<ThrownMeasure>(scene,
                                           dot(v, v) / (2 * scene.friction * -scene.gravity.z), 0);
}

class PendulumMeasure : public EnergyMeasure {
public:
    explicit PendulumMeasure(const Scene& scene)
        : EnergyMeasure(scene,
                        -scene.bodies[0].mass * scene.gravity.z * norm(scene.bodies[0].start.p),
                        nullptr),
          mReference(pendulumReference(scene)) {}
    void sample(int step, const std::vector<Motion>& motions) override {
        EnergyMeasure::sample(step, motions);
        const double angle = angleAbout(motions[0].q, {0, 1, 0});
        const double error =
            std::abs(std::remainder(angle - mReference[static_cast<std::size_t>(step)], 2 * M_PI));
        mMax = std::max(mMax, error);
        mSquares += error * error;
        ++mCount;
    }
    void report(Results& results) const override {
        results.emplace_back("angle_max_rad", mMax);
        results.emplace_back("angle_rms_rad", std::sqrt(mSquares / mCount));
        results.emplace_back("E_end_change_rel", std::abs(mEnd - mStart) / mScale);
        results.emplace_back("E_span_rel", (mHighest - mLowest) / mScale);
        results.emplace_back("E_gain_rel", (mHighest - mStart) / mScale);
    }

private:
    std::vector<double> mReference;
    double mMax = 0, mSquares = 0;
    int mCount = 0;
};

/// A point of the scene against its reference, which has one place an interval from 0 on.
class PlaceMeasure : public Measure {
public:
    using Place = std::function<Vec3(const std::vector<Motion>&)>;
    PlaceMeasure(int interval, std::vector<Vec3> reference, Place place, int middle)
        : Measure(interval), mInterval(interval), mReference(std::move(reference)),
          mPlace(std::move(place)), mMiddle(middle) {}
    void sample(int step, const std::vector<Motion>& motions) override {
        const auto index = static_cast<std::size_t>(step / mInterval);
        if (step % mInterval != 0 || index >= mReference.size())
            return;
        const double error = norm(mPlace(motions) - mReference[index]);
        mMax = std::max(mMax, error);
        if (step == mMiddle)
            mMid = error;
    }
    void report(Results& results) const override {
        results.emplace_back("poserr_max", mMax);
        results.emplace_back("poserr_mid", mMid);
    }

private:
    int mInterval;
    std::vector<Vec3> mReference;
    Place mPlace;
    int mMiddle;
    double mMax = 0, mMid = 0;
};

/// The reference from a file of the folder, or computed and kept there.
std::vector<Vec3> cached(const std::string& folder, const std::string& name,
                         const std::function<std::vector<Vec3>()>& compute) {
    const std::string path = folder + "/" + name + ".ref";
    std::vector<Vec3> places;
    if (!folder.empty()) {
        std::ifstream in(path);
        for (Vec3 p; in >> p.x >> p.y >> p.z;)
            places.push_back(p);
    }
    if (!places.empty())
        return places;
    places = compute();
    if (std::FILE* file = folder.empty() ? nullptr : std::fopen(path.c_str(), "w")) {
        for (const Vec3& p : places)
            std::fprintf(file, "%.17g %.17g %.17g\n", p.x, p.y, p.z);
        std::fclose(file);
    }
    return places;
}

/// End mass beyond the cable's length.
class StretchMeasure : public Measure {
public:
    explicit StretchMeasure(const Scene& scene)
        : Measure(coarse(scene)), mLength(norm(scene.bodies.back().start.p)) {}
    void sample(int, const std::vector<Motion>& motions) override {
        mStretch = std::max(mStretch, norm(motions.back().p) - mLength);
    }
    void report(Results& results) const override { results.emplace_back("stretch_max", mStretch); }

private:
    double mLength, mStretch = 0;
};

void addCableMeasures(const Scene& scene, const std::string& cache,
                      std::vector<std::unique_ptr<Measure>>& measures) {
    const Cable cable = cableOf(scene.name);
    const auto compute = [&] { return cableReference(cable, -scene.gravity.z); };
    if (cable.links <= 1000)
        measures.push_back(std::make_unique<PlaceMeasure>(
            static_cast<int>(std::lround(cable.interval / scene.dt)),
            cached(cache, scene.name, compute),
            [](const std::vector<Motion>& motions) { return motions.back().p; },
            static_cast<int>(std::lround(2 / scene.dt))));
    measures.push_back(std::make_unique<StretchMeasure>(scene));
    const double length = cable.links * cable.length;
    const double swing = -scene.gravity.z * (cable.load + cable.links * cable.mass / 2) * length *
                         (1 - std::cos(cable.angle));
    measures.push_back(std::make_unique<EnergyMeasure>(scene, swing, nullptr));
}

std::vector<Vec3> netPlaces(double gravity) {
    std::vector<Vec3> places;
    for (const NetSample& sample : netReference(gravity))
        places.push_back(sample.node);
    return places;
}

void addNetMeasures(const Scene& scene, const std::string& cache,
                    std::vector<std::unique_ptr<Measure>>& measures) {
    constexpr int kNode = 2;
    const std::vector<net::Edge> edges = net::edges();
    const auto first = std::find_if(edges.begin(), edges.end(), [](const net::Edge& e) {
        return e.i == kNode && e.j == kNode;
    });
    const auto rod = static_cast<std::size_t>(first - edges.begin());
    const Vec3 local{0, 0, -net::kSpacing / 2}; // the rod begins at the node
    measures.push_back(std::make_unique<PlaceMeasure>(
        static_cast<int>(std::lround(0.25 / scene.dt)),
        cached(cache, scene.name, [&] { return netPlaces(-scene.gravity.z); }),
        [=](const std::vector<Motion>& motions) {
            return motions[rod].p + rotate(motions[rod].q, local);
        },
        static_cast<int>(std::lround(0.5 / scene.dt))));
}

class VehicleMeasure : public Measure {
public:
    explicit VehicleMeasure(const Scene& scene) : Measure(1), mTime(scene.steps * scene.dt) {
        const double radius = 0.35, wheel = 20 * radius * radius / 2;
        mSpeed = 2 * 150 / radius / (1280 + 4 * wheel / (radius * radius)) * mTime;
    }
    void sample(int, const std::vector<Motion>& motions) override {
        mNow = motions[0];
        mLateral = std::max(mLateral, std::abs(mNow.p.y));
    }
    void report(Results& results) const override {
        results.emplace_back("speed_err_rel", std::abs(mNow.v.x - mSpeed) / mSpeed);
        results.emplace_back("lateral_m", mLateral);
    }

private:
    Motion mNow;
    double mTime, mSpeed = 0, mLateral = 0;
};

class FourbarMeasure : public Measure {
public:
    explicit FourbarMeasure(const Scene& scene)
        : Measure(1), mStart(scene.bodies[0].start.q), mTruth(3 * scene.steps * scene.dt) {}
    void sample(int, const std::vector<Motion>& motions) override {
        for (const Motion& m : motions)
            mOut = std::max(mOut, std::abs(m.p.y));
        const double angle = angleAbout(motions[0].q * mStart.conjugate(), {0, 1, 0});
        mTurned += std::remainder(angle - mTurned, 2 * M_PI);
    }
    void report(Results& results) const override {
        results.emplace_back("out_of_plane_m", mOut);
        results.emplace_back("crank_err_rad", std::abs(mTurned - mTruth));
    }

private:
    Quat mStart;
    double mTruth, mTurned = 0, mOut = 0;
};

class GraspMeasure : public Measure {
public:
    explicit GraspMeasure(const Scene& scene)
        : Measure(1), mScene(scene), mFrom(step(1)), mMiddle(step(5)) {}
    void sample(int at, const std::vector<Motion>& motions) override {
        const Vec3 fingers = 0.5 * (motions[1].p + motions[2].p);
        mSlip = motions[0].p - fingers;
        mSlip.x = 0; // along the rails nothing slips
        if (at <= mFrom)
            mSlipFrom = mSlip;
        if (at <= mMiddle)
            mSlipMiddle = mSlip;
        mNow = motions[0];
    }
    void report(Results& results) const override {
        const double seconds = (mScene.steps - mMiddle) * mScene.dt;
        results.emplace_back("slip_1_to_10s_mm", kMillimetres * norm(mSlip - mSlipFrom));
        results.emplace_back("slip_rate_mm_s", kMillimetres * norm(mSlip - mSlipMiddle) / seconds);
        results.emplace_back("drop_mm", kMillimetres * (mScene.bodies[0].start.p.z - mNow.p.z));
        results.emplace_back("tilt_deg", angleOf(mNow.q) * kToDegrees);
    }

private:
    [[nodiscard]] int step(double seconds) const {
        return static_cast<int>(std::lround(seconds / mScene.dt));
    }

    const Scene& mScene;
    int mFrom, mMiddle;
    Vec3 mSlip, mSlipFrom, mSlipMiddle;
    Motion mNow;
};

class LoadMeasure : public Measure {
public:
    LoadMeasure() : Measure(1) {}
    void sample(int, const std::vector<Motion>& motions) override { mNow = motions.back().p; }
    void report(Results& results) const override {
        results.insert(results.end(), {{"box_x", mNow.x}, {"box_y", mNow.y}, {"box_z", mNow.z}});
    }

private:
    Vec3 mNow;
};

/// The potential energy over the ground.
double fallOf(const Scene& scene) {
    double sum = 0;
    for (const Body& body : scene.bodies)
        sum -= body.mass * scene.gravity.z * body.start.p.z;
    return sum;
}

bool isUnderGround(const Motion& m) {
    return m.p.z < 0;
}

/// Beside the planks or below where they may hang.
bool isOffBridge(const Motion& m) {
    constexpr double kHalfWidth = 1.5, kHalfBox = 0.6, kSag = 1;
    return std::abs(m.p.y) > kHalfWidth + kHalfBox ||
           m.p.z < bridge::node(bridge::kPlanks / 2).z - kSag;
}

} // namespace

void addSceneMeasures(const Scene& scene, const std::string& cache,
                      std::vector<std::unique_ptr<Measure>>& measures) {
    const std::string& name = scene.name;
    const auto add = [&](auto measure) { measures.push_back(std::move(measure)); };
    const auto is = [&](const char* stem) {
        return name.compare(0, std::string(stem).size(), stem) == 0;
    };
    if (name == "pyramid" || name == "tower" || name == "wall10k")
        add(std::make_unique<MovedMeasure>(scene));
    else if (name == "rolling")
        add(rollingMeasure(scene));
    else if (name == "slide")
        add(slideMeasure(scene));
    else if (name == "bounce")
        add(std::make_unique<BounceMeasure>(scene, -scene.gravity.z * 10 * 2 *
                                                       static_cast<double>(scene.bodies.size())));
    else if (name == "tumble")
        add(std::make_unique<TumbleMeasure>(scene));
    else if (name == "pendulum")
        add(std::make_unique<PendulumMeasure>(scene));
    else if (is("chain") || name == "crane")
        addCableMeasures(scene, cache, measures);
    else if (name == "net")
        addNetMeasures(scene, cache, measures);
    else if (name == "vehicle")
        add(std::make_unique<VehicleMeasure>(scene));
    else if (name == "fourbar")
        add(std::make_unique<FourbarMeasure>(scene));
    else if (name == "grasp")
        add(std::make_unique<GraspMeasure>(scene));
    if (name == "bridge") {
        std::vector<Motion> start;
        for (const Body& body : scene.bodies)
            start.push_back(body.start);
        add(std::make_unique<EnergyMeasure>(scene, kineticEnergy(scene, start), isOffBridge));
        add(std::make_unique<LoadMeasure>());
    }
    if (is("heap") || is("six") || is("scale") || is("pile") || is("ragdolls"))
        add(std::make_unique<EnergyMeasure>(scene, fallOf(scene), isUnderGround));
}

} // namespace bench
