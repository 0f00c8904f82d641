#pragma once
#include <Hy/HyConstraint.h>

namespace Hy {

/// Keeps two points within a distance, as a rope does: it pulls and never pushes. A taut rope has one
/// equation, a slack one none. Its tension, in N, is -getConstraintEquationForce(0).
class HY_API HyDistanceJoint : public HyClass<kHyDistanceJointClassId, HyConstraint> {
public:
    /// Without parts, attachments at the world's origin.
    HyDistanceJoint();
    /// Ties the origins of two parts.
    /// @param distance length in m, see setDistance()
    HyDistanceJoint(HyPart* part1, HyPart* part2, HyReal distance);
    [[nodiscard]] const char* getClassName() const override { return "HyDistanceJoint"; }

    /// Length of the rope in m. Negative or not finite: a warning, and the old length stays.
    void setDistance(HyReal distance);
    [[nodiscard]] HyReal getDistance() const;

protected:
    [[nodiscard]] HyConstraintState* createStateImpl() override;
    void restoreStateImpl(const HyConstraintState& state) override;

private:
    void init();
};

} // namespace Hy
