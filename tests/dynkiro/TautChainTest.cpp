#include "SolverFixture.h"

#include <cmath>

namespace {

constexpr double kStep = 1.0 / 60, kGravity = 9.81, kLink = 0.1; // s, m/s^2, m
constexpr int kLinks = 10;

// A load on a chain of links of 1 kg and 0.1 m, hung from the world's origin by ball joints, tilted.
class TautChain {
public:
    TautChain(double loadMass, double tilt) {
        DynsConstraintFramesSetThreaded(frames, 0);
        for (int i = 0; i <= kLinks; ++i) {
            const bool isLoad = i == kLinks;
            const double across = isLoad ? 0.4 * loadMass * kLink * kLink : kLink * kLink / 12;
            DynsBody body = makeBody();
            setBodyInertia(body, isLoad ? loadMass : 1, {across, across, isLoad ? across : 5e-5});
            body.qrot[0] = std::cos(tilt / 2);
            body.qrot[2] = std::sin(tilt / 2);
            const double depth = isLoad ? kLinks * kLink + kLoadArm : (i + 0.5) * kLink;
            body.tm[3][0] = -depth * std::sin(tilt);
            body.tm[3][2] = -depth * std::cos(tilt);
            body.localIndex = i;
            body.localPartition = 0;
            bodies.push_back(body);
        }
        for (DynsBody& body : bodies)
            pointers.push_back(&body);
        body_update_rotation(pointers.data(), count());
    }
    ~TautChain() { DynsConstraintFramesDestroy(frames); }
    TautChain(const TautChain&) = delete;
    TautChain& operator=(const TautChain&) = delete;

    /// One step; answers the widest gap of a joint before it, m.
    double step(bool geometricStiffness) {
        const int n = count(), rows = 3 * n, zero = 0;
        DynsConstraintFramesResizeIfNeeded(frames, 0, 1, &n, &n, &rows, pointers.data(), &zero,
                                           &zero, 0);
        DynsConstraints& c = *DynsConstraintFramesGetFrame(frames, 0);
        DynsParameters& p = *DynsConstraintFramesGetKiroParameters(frames, 0);
        p.stepsize = kStep;
        p.geometric_stiffness = geometricStiffness;
        DynsConstraintsReset(&c, rows, n, n);
        double gap = 0;
        for (int joint = 0; joint < n; ++joint)
            gap = std::max(gap, addBallJoint(c, joint));
        for (DynsBody& body : bodies) {
            body.force[2] = -kGravity / body.invmass;
            for (KitReal* load : {body.torque, body.cf, body.ct})
                std::fill_n(load, 4, 0.0);
        }
        DynsStep(frames, 1);
        for (int joint = 0; joint < n && geometricStiffness; ++joint)
            returnJointForce(c, joint);
        for (DynsBody& body : bodies)
            body_integrate(&body, kStep);
        return gap;
    }
    [[nodiscard]] double loadX() const { return bodies.back().tm[3][0]; }

private:
    static constexpr double kLoadArm = 0.1; // m

    [[nodiscard]] int count() const { return static_cast<int>(bodies.size()); }
    // From the centre of mass of body i to its upper or lower joint.
    [[nodiscard]] Eigen::Vector3d arm(int i, bool upper) const {
        const DynsBody& body = bodies[static_cast<std::size_t>(i)];
        const double length = i == kLinks ? kLoadArm : kLink / 2;
        return (upper ? length : -length) * Eigen::Map<const Eigen::Vector3d>(body.tm[2]);
    }
    [[nodiscard]] Eigen::Vector3d joint(int i, bool upper) const {
        return Eigen::Map<const Eigen::Vector3d>(bodies[static_cast<std::size_t>(i)].tm[3]) +
               arm(i, upper);
    }

    // Body i hangs by its upper joint at the lower one of the body above, or at the origin.
    double addBallJoint(DynsConstraints& c, int i) {
        const Eigen::Vector3d above = i > 0 ? joint(i - 1, false) : Eigen::Vector3d::Zero();
        const Eigen::Vector3d error = joint(i, true) - above;
        MatrixX J = MatrixX::Zero(3, 12);
        for (int slot = 0; slot < 2; ++slot) {
            const Eigen::Vector3d r =
                slot == 0 ? (i > 0 ? arm(i - 1, false) : above) : arm(i, true);
            for (int k = 0; k < 3; ++k) {
                const Eigen::Vector3d axis = Eigen::Vector3d::Unit(k);
                const double sign = slot == 0 ? -1 : 1;
                J.block<1, 3>(k, 6 * slot) = sign * axis.transpose();
                J.block<1, 3>(k, 6 * slot + 3) = sign * r.cross(axis).transpose();
            }
        }
        std::vector<RowValues> values(3);
        for (int k = 0; k < 3; ++k)
            values[static_cast<std::size_t>(k)] = {.phi = error[k], .epsilon = 1e-8, .gamma = 0.2};
        DynsBody* upper = i > 0 ? pointers[static_cast<std::size_t>(i) - 1] : nullptr;
        pushRows(c, {upper, pointers[static_cast<std::size_t>(i)]}, J, values);
        return error.norm();
    }
    void returnJointForce(const DynsConstraints& c, int i) {
        const Eigen::Vector3d force = Eigen::Map<const Eigen::Vector3d>(c.lambda + 3 * i);
        const Eigen::Vector3d back = -force;
        DynsBodyAddGeometricStiffness(pointers[static_cast<std::size_t>(i)], force.data(),
                                      arm(i, true).data());
        if (i > 0)
            DynsBodyAddGeometricStiffness(pointers[static_cast<std::size_t>(i) - 1], back.data(),
                                          arm(i - 1, false).data());
    }

    DynsConstraintFrames* frames = DynsConstraintFramesCreate(&KitMemoryAPI);
    std::vector<DynsBody> bodies;
    std::vector<DynsBody*> pointers;
};

} // namespace

// Under 1000 kg, h^2 T l / I is 330 for a link: beyond 4 the rows alone diverge, since they take the
// joint forces as fixed while the links turn under them.
TEST(TautChainTest, DivergesWithoutGeometricStiffness) {
    TautChain chain(1000, 1e-4);
    double gap = 0;
    for (int i = 0; i < 1200 && gap < 0.1; ++i)
        gap = chain.step(false);
    EXPECT_GT(gap, 0.1);
}

// With it the chain holds, and swings on: the stiffness is no damper.
TEST(TautChainTest, HoldsAndSwingsWithGeometricStiffness) {
    struct Case {
        double mass, tilt, widestGap, keptAmplitude;
    };
    for (const Case& test : {Case{1000, 1e-4, 1e-5, 0.99}, Case{1000, 0.3, 1e-3, 0.95},
                             Case{100000, 0.3, 1e-3, 0.95}}) {
        TautChain chain(test.mass, test.tilt);
        double widest = 0, early = 0, late = 0;
        for (int i = 0; i < 3600; ++i) {
            const double gap = chain.step(true);
            const double swing = std::abs(chain.loadX());
            ASSERT_LT(swing, 2) << test.mass << " kg, step " << i;
            if (i >= 120)
                widest = std::max(widest, gap);
            if (i < 240)
                early = std::max(early, swing);
            if (i >= 3360)
                late = std::max(late, swing);
        }
        EXPECT_LT(widest, test.widestGap) << test.mass << " kg at " << test.tilt;
        EXPECT_GT(late, test.keptAmplitude * early) << test.mass << " kg at " << test.tilt;
        EXPECT_LT(late, 1.05 * early);
    }
}
