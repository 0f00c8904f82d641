#pragma once
#include <Hy/HyConstraint.h>
#include <Hy/HyLinearAxisReference.h>

namespace Hy {

/// Two crossed axes, one in each part: a Cardan joint. Its coordinates are the angles about the primary
/// axis of part 0's attachment and about the secondary axis of part 1's.
class HY_API HyUniversal : public HyClass<kHyUniversalClassId, HyConstraint>,
                           public HyLinearAxisReference {
public:
    enum CoordinateEnum { kAngular0Coordinate = 0, kAngular1Coordinate = 1 };

    /// Without parts, attachments at the world's origin.
    HyUniversal();
    /// @param axis1,axis2 in the world, at a right angle; of part1 and part2
    HyUniversal(HyPart* part1, HyPart* part2, const HyVector3& position, const HyVector3& axis1,
                const HyVector3& axis2);
    [[nodiscard]] const char* getClassName() const override { return "HyUniversal"; }

    /// One world position for both attachments.
    void setAttachmentPosition(const HyVector3& position) { setBothPositions(position); }
    /// Primary and secondary axis of both attachments in the world.
    void setAttachmentAxes(const HyVector3& axis1, const HyVector3& axis2) {
        setBothAxes(axis1, &axis2);
    }

private:
    void init();
};

} // namespace Hy
