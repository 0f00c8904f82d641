#include "JointScene.h"

using namespace Hy;

namespace {

/// Two shafts in bearings that meet at the origin under an angle; the first one is driven.
class TransmissionTest : public JointScene {
protected:
    template <class Join>
    void build(HyReal bend, Join join) {
        universe->setGravity(0, 0, 0);
        outAxis = HyVector3(std::cos(bend), std::sin(bend), 0);
        in = &addBall(1, 0.2, HyVector3(-1, 0, 0));
        out = &addBall(1, 0.2, outAxis);
        bearing = &add<HyHinge>(in, nullptr, HyVector3(-1, 0, 0), HyVector3(1, 0, 0));
        add<HyHinge>(out, nullptr, outAxis, outAxis);
        join();
        bearing->setMotorParameters(0, kSpeed, 1e4, 0);
        bearing->setControl(0, HyConstraint::kControlMotorized);
        step(30);
    }

    static constexpr HyReal kSpeed = 2;
    HyVector3 outAxis;
    HyPart *in = nullptr, *out = nullptr;
    HyHinge* bearing = nullptr;
};

} // namespace

// w2/w1 = cos b/(1 - sin²b cos²t), t the angle of the driving fork from the plane of the shafts.
TEST_F(TransmissionTest, UniversalJointTurnsUnevenly) {
    constexpr HyReal kBend = 0.6;
    frame->setTimeStep(1.0 / 600);
    build(kBend, [this] {
        add<HyUniversal>(out, in, HyVector3(), outAxis.cross(HyVector3(0, 0, 1)),
                         HyVector3(0, 0, 1));
    });
    // Fork of the driving shaft: along z at the start, square to the plane of the shafts.
    HyReal least = 10, greatest = 0;
    for (int i = 0; i < 2000; ++i) {
        const HyReal t = bearing->getCoordinateCurrentPosition(0) + kPi / 2;
        const HyReal ratio = out->getAngularVelocity().dot(outAxis) / in->getAngularVelocity()[0];
        const HyReal sine = std::sin(kBend) * std::cos(t);
        EXPECT_NEAR(ratio, std::cos(kBend) / (1 - sine * sine), 0.02) << t;
        least = std::min(least, ratio);
        greatest = std::max(greatest, ratio);
        frame->step();
    }
    EXPECT_NEAR(least, std::cos(kBend), 0.005);
    EXPECT_NEAR(greatest, 1 / std::cos(kBend), 0.01);
}

TEST_F(TransmissionTest, HomokineticJointTurnsEvenly) {
    constexpr HyReal kBend = 0.6;
    frame->setTimeStep(1.0 / 600);
    build(kBend, [this] {
        auto& joint = add<HyHomokinetic>();
        const HyVector3 square(0, 0, 1);
        joint.setPartAndAttachment(0, out, HyVector3(), outAxis, &square);
        const HyVector3 inAxis(1, 0, 0);
        joint.setPartAndAttachment(1, in, HyVector3(), inAxis, &square);
    });
    for (int i = 0; i < 2000; ++i) {
        EXPECT_NEAR(out->getAngularVelocity().dot(outAxis) / in->getAngularVelocity()[0], 1, 2e-3);
        frame->step();
    }
}
