#include "Measures.h"

#include "Overlap.h"

#include "SceneMeasures.h"

#include <algorithm>
#include <array>
#include <cstdio>

namespace bench {
namespace {

constexpr double kFailedAt = 1e6; // m
constexpr double kToDegrees = 180 / M_PI;

/// Depth of overlap, at its deepest, in the late half, and at the end.
class PenetrationMeasure : public Measure {
public:
    explicit PenetrationMeasure(const Scene& scene)
        : Measure(scene.isLarge() ? (scene.pairs ? 20 : 10) : 1), mHalf(scene.steps / 2),
          mDeepest(scene) {}
    void sample(int step, const std::vector<Motion>& motions) override {
        mEnd = mDeepest(motions);
        mMax = std::max(mMax, mEnd);
        if (step > mHalf)
            mLate = std::max(mLate, mEnd);
    }
    void report(Results& results) const override {
        results.insert(results.end(), {{"pen_max", mMax}, {"pen_late", mLate}, {"pen_end", mEnd}});
    }

private:
    int mHalf;
    DeepestOverlap mDeepest;
    double mMax = 0, mLate = 0, mEnd = 0;
};

/// How far joints come apart, their axes turn apart, and limits are exceeded.
class JointMeasure : public Measure {
public:
    explicit JointMeasure(const Scene& scene)
        : Measure(scene.isLarge() ? 10 : 1), mScene(scene), mHalf(scene.steps / 2) {
        for (const Joint& joint : scene.joints)
            mFrames.push_back({frameIn(joint.a, joint), frameIn(joint.b, joint)});
    }
    void sample(int step, const std::vector<Motion>& motions) override {
        double drift = 0;
        for (std::size_t i = 0; i < mFrames.size(); ++i) {
            const Joint& joint = mScene.joints[i];
            const Frame a = placed(joint.a, mFrames[i][0], motions);
            const Frame b = placed(joint.b, mFrames[i][1], motions);
            drift = std::max(drift, gapOf(joint, a, b));
            noteAngles(joint, a, b);
        }
        mMax = std::max(mMax, drift);
        if (step > mHalf)
            mLate = std::max(mLate, drift);
    }
    void report(Results& results) const override {
        results.insert(results.end(), {{"drift_max", mMax}, {"drift_late", mLate}});
        if (mHasAxes)
            results.emplace_back("axis_deg", mAxis * kToDegrees);
        if (mHasLimits)
            results.emplace_back("limit_deg", mLimit * kToDegrees);
    }

private:
    /// Anchor and axis of a joint, and the turn of the body, as that body carries them.
    struct Frame {
        Vec3 anchor, axis;
        Quat q;
    };

    [[nodiscard]] Frame frameIn(int body, const Joint& joint) const {
        if (body == Joint::kWorld)
            return {joint.anchor, joint.axis, {}};
        const Motion& m = mScene.bodies[static_cast<std::size_t>(body)].start;
        return {unrotate(m.q, joint.anchor - m.p), unrotate(m.q, joint.axis), m.q.conjugate()};
    }
    static Frame placed(int body, const Frame& frame, const std::vector<Motion>& motions) {
        if (body == Joint::kWorld)
            return frame;
        const Motion& m = motions[static_cast<std::size_t>(body)];
        return {m.p + rotate(m.q, frame.anchor), rotate(m.q, frame.axis), m.q * frame.q};
    }
    static double gapOf(const Joint& joint, const Frame& a, const Frame& b) {
        Vec3 gap = b.anchor - a.anchor;
        if (joint.kind == JointKind::kSlider) {
            const Vec3& axis = joint.b == Joint::kWorld ? b.axis : a.axis;
            gap -= dot(gap, axis) * axis;
        }
        return norm(gap);
    }
    void noteAngles(const Joint& joint, const Frame& a, const Frame& b) {
        if (joint.kind == JointKind::kBall)
            return;
        mHasAxes = true;
        // Turns since the start, in world axes: that of b after that of a taken back.
        const Quat relative = b.q * a.q.conjugate();
        if (joint.kind == JointKind::kSlider)
            mAxis = std::max(mAxis, angleOf(relative));
        else
            mAxis = std::max(mAxis, std::atan2(norm(cross(a.axis, b.axis)), dot(a.axis, b.axis)));
        if (!joint.limited)
            return;
        mHasLimits = true;
        const double angle = angleAbout(relative, a.axis);
        mLimit = std::max({mLimit, angle - joint.upper, joint.lower - angle});
    }

    const Scene& mScene;
    int mHalf;
    std::vector<std::array<Frame, 2>> mFrames;
    double mMax = 0, mLate = 0, mAxis = 0, mLimit = 0;
    bool mHasAxes = false, mHasLimits = false;
};

struct Bound {
    const char* name;
    double limit;
};

/// What a result must stay below, if it is measured.
constexpr Bound kBounds[] = {
    {"failed", 0.5},      {"lost", 0.5},          {"drift_late", 1e-3},    {"E_gain_rel", 0.01},
    {"E_max_rel", 0.01},  {"E_change_rel", 0.01}, {"slip_rate_mm_s", 1},   {"moved_max", 0.05},
    {"poserr_max", 0.05}, {"dist_err_m", 0.05},   {"speed_err_rel", 0.01}, {"limit_deg", 2},
    {"missed", 0.5},      {"wrong", 0.5},         {"drop_mm", 50},
};
constexpr Bound kPenetration[] = {{"pen_end", 5e-3}, {"pen_late", 5e-3}};

/// Whether nothing falls in the late half of the scene.
bool rests(const Scene& scene) {
    const char* const names[] = {"pyramid", "tower",   "wall10k", "rolling",
                                 "slide",   "vehicle", "grasp",   "bridge"};
    return std::any_of(std::begin(names), std::end(names),
                       [&](const char* name) { return scene.name == name; });
}

void append(std::string& text, const std::string& name, double value) {
    char number[64];
    std::snprintf(number, sizeof number, "%s%s=%.3g", text.empty() ? "" : ",", name.c_str(), value);
    text += number;
}

} // namespace

std::vector<std::unique_ptr<Measure>> makeMeasures(const Scene& scene, const std::string& cache) {
    std::vector<std::unique_ptr<Measure>> measures;
    if (scene.ground || scene.pairs)
        measures.push_back(std::make_unique<PenetrationMeasure>(scene));
    if (!scene.joints.empty())
        measures.push_back(std::make_unique<JointMeasure>(scene));
    addSceneMeasures(scene, cache, measures);
    return measures;
}

std::string whatIsUnacceptable(const Scene& scene, const Results& results) {
    std::string missed;
    const auto check = [&](const Bound& bound) {
        for (const auto& [name, value] : results)
            if (name == bound.name && !(value < bound.limit))
                append(missed, name, value);
    };
    for (const Bound& bound : kBounds)
        check(bound);
    if (scene.name != "bounce") // ends anywhere in its flight
        check(kPenetration[rests(scene) ? 1 : 0]);
    return missed;
}

bool hasFailed(const std::vector<Motion>& motions) {
    return std::any_of(motions.begin(), motions.end(), [](const Motion& m) {
        return !std::isfinite(norm(m.p) + norm(m.v) + norm(m.w) + m.q.w) || norm(m.p) > kFailedAt;
    });
}

double kineticEnergy(const Scene& scene, const std::vector<Motion>& motions) {
    double sum = 0;
    for (std::size_t i = 0; i < motions.size(); ++i) {
        const Body& body = scene.bodies[i];
        const Vec3 I = body.shape.inertia(body.mass), w = unrotate(motions[i].q, motions[i].w);
        sum += body.mass * dot(motions[i].v, motions[i].v) / 2 +
               (I.x * w.x * w.x + I.y * w.y * w.y + I.z * w.z * w.z) / 2;
    }
    return sum;
}

double energy(const Scene& scene, const std::vector<Motion>& motions) {
    double sum = kineticEnergy(scene, motions);
    for (std::size_t i = 0; i < motions.size(); ++i)
        sum -= scene.bodies[i].mass * dot(scene.gravity, motions[i].p);
    return sum;
}

Vec3 angularMomentum(const Body& body, const Motion& motion) {
    const Vec3 I = body.shape.inertia(body.mass), w = unrotate(motion.q, motion.w);
    return rotate(motion.q, {I.x * w.x, I.y * w.y, I.z * w.z});
}

} // namespace bench
