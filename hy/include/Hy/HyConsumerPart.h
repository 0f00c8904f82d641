#pragma once
#include <Hy/HyTypes.h>
#include <Kit/KitApi.h>

namespace Hy {
class HyVector3;

namespace ICD {

/// Receives the state of the parts of a universe from a HyProducerPart. A part goes by its number
/// (see HyMappingPartID).
class HY_API HyConsumerPart {
public:
    virtual ~HyConsumerPart() = default;
    virtual void partAdded(unsigned int id) = 0;
    virtual void partRemoved(unsigned int id) = 0;
    /// Once a part and step, at its end. World frame.
    /// @param position m
    /// @param orientation Euler angles in the default order, rad (see HyEulerAngles)
    /// @param linearVelocity m/s
    /// @param angularVelocity rad/s
    virtual void partUpdated(unsigned int id, const HyVector3& position,
                             const HyVector3& orientation, const HyVector3& linearVelocity,
                             const HyVector3& angularVelocity) = 0;
};

/// Writes what it receives to standard output.
class HY_API HyConsumerPartPrinter : public HyConsumerPart {
public:
    void partAdded(unsigned int id) override;
    void partRemoved(unsigned int id) override;
    void partUpdated(unsigned int id, const HyVector3& position, const HyVector3& orientation,
                     const HyVector3& linearVelocity, const HyVector3& angularVelocity) override;
};

} // namespace ICD
} // namespace Hy
