#pragma once
#include "EngineFixture.h"

#include <cmath>
#include <numbers>
#include <random>

/// Parts with inertia, and joints that are enabled at once. Nothing sleeps.
class JointScene : public EngineFixture {
protected:
    void SetUp() override {
        EngineFixture::SetUp();
        universe->setAutoSleep(false);
    }

    /// A part of equal moments about its axes.
    Hy::HyPart& addBall(Hy::HyReal mass, Hy::HyReal moment, const Hy::HyVector3& position) {
        Hy::HyPart& part = addPart(mass);
        const Hy::HyReal inertia[3][3] = {{moment, 0, 0}, {0, moment, 0}, {0, 0, moment}};
        part.setMassAndInertia(mass, inertia);
        part.setPosition(position);
        return part;
    }
    template <class Joint, class... Arguments>
    Joint& add(Arguments&&... arguments) {
        auto* joint = new Joint(std::forward<Arguments>(arguments)...);
        universe->addConstraint(joint);
        joint->enable(true);
        return *joint;
    }
    void stepFor(Hy::HyReal seconds) {
        step(static_cast<int>(std::lround(seconds / frame->getTimeStep())));
    }
    [[nodiscard]] static Hy::HyReal gapOf(const Hy::HyConstraint& joint) {
        return joint.getPartAttachmentPosition(0).distance(joint.getPartAttachmentPosition(1));
    }
    /// Axis 0, 1 or 2 of an attachment in the world.
    [[nodiscard]] static Hy::HyVector3 axisOf(const Hy::HyConstraint& joint, int part, int axis) {
        Hy::HyVector3 x, y;
        joint.getPartAttachmentAxes(part, x, y);
        return axis == 0 ? x : axis == 1 ? y : x.cross(y);
    }

    static constexpr Hy::HyReal kGravity = 9.80665; ///< m/s²
    static constexpr Hy::HyReal kPi = std::numbers::pi;
};
