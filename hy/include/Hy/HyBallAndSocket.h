#pragma once
#include <Hy/HyConstraint.h>
#include <Hy/HyLinearAxisReference.h>

#include <Dync/DynBaseConstraint.h>

namespace Hy {

/// Holds a point of one part on a point of another; they turn freely against each other.
class HY_API HyBallAndSocket : public HyClass<kHyBallAndSocketClassId, HyConstraint>,
                               public HyLinearAxisReference {
public:
    /// The friction about all three axes as one: what is set here is set in each.
    class HY_API AngularFriction : public HyConstraintFriction {
    public:
        void setEnabled(bool enabled) override;
        [[nodiscard]] bool getEnabled() const override { return mCoord0->getEnabled(); }
        void setMaxForce(HyReal force) override;
        /// The largest of the three.
        [[nodiscard]] HyReal getMaxForce() const override;
        void setLoss(HyReal loss) override;
        [[nodiscard]] HyReal getLoss() const override { return mCoord0->getLoss(); }
        void setCoefficient(HyReal coefficient) override;
        [[nodiscard]] HyReal getCoefficient() const override { return mCoord0->getCoefficient(); }
        void setStaticFrictionScale(HyReal scale) override;
        [[nodiscard]] HyReal getStaticFrictionScale() const override {
            return mCoord0->getStaticFrictionScale();
        }
        void setProportional(bool proportional) override;
        [[nodiscard]] bool getProportional() const override { return mCoord0->getProportional(); }
        void setPartReferenceIndex(int part) override;
        [[nodiscard]] int getPartReferenceIndex() const override {
            return mCoord0->getPartReferenceIndex();
        }

    private:
        friend class HyBallAndSocket;
        explicit AngularFriction(const HyBallAndSocket& joint);
        template <typename T>
        void setEach(void (HyConstraintFriction::*set)(T), T value);

        DyncFriction mValues; ///< as they were set last
        HyConstraintFriction *mCoord0, *mCoord1, *mCoord2;
    };

    /// Without parts, attachments at the world's origin.
    HyBallAndSocket();
    /// @param position in the world
    /// @param axis in the world, primary axis of both attachments; null leaves them as they are
    HyBallAndSocket(HyPart* part1, HyPart* part2, const HyVector3& position,
                    const HyVector3* axis = nullptr);
    [[nodiscard]] const char* getClassName() const override { return "HyBallAndSocket"; }

    /// One world position for both attachments.
    void setAttachmentPosition(const HyVector3& position) { setBothPositions(position); }
    /// One world direction for the primary axes of both attachments.
    void setAxis(const HyVector3& axis) { setBothAxes(axis, nullptr); }
    /// Owned by the joint.
    [[nodiscard]] AngularFriction& getAngularFriction() { return mFriction; }

private:
    void init();

    AngularFriction mFriction;
};

} // namespace Hy
