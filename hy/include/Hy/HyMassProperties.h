#pragma once
#include <Hy/HyTransform.h>
#include <Hy/HyTypes.h>
#include <Hy/HyVector3.h>
#include <Kit/KitApi.h>
#include <Kit/KitTypes.h>

namespace Hy {
class HyPart;

/// Mass, centre of mass and inertia tensor of a body, with rules to add and subtract such values.
///
/// "Local" stands for the axes and origin of a reference frame, "absolute" for the world. The tensor
/// is about the centre of mass, in kg m². What is not finite is refused with a warning, and the old
/// value stays. A copy shares the reference frame.
class HY_API HyMassProperties {
public:
    /// No mass, in the world's frame.
    HyMassProperties() = default;
    /// @param reference not owned, must outlive this and all copies; null stands for the world
    explicit HyMassProperties(const HyTransform* reference);
    /// Takes the part's transform for its reference frame, which follows the part. Null stands for
    /// the world. The mass of the part is not looked at.
    explicit HyMassProperties(const HyPart* part);
    HyMassProperties(const HyMassProperties&) = default;
    HyMassProperties& operator=(const HyMassProperties&) = default;
    virtual ~HyMassProperties() = default;

    [[nodiscard]] bool getHasIdentityReferenceFrame() const;
    /// The reference frame as it is now, the identity if there is none.
    [[nodiscard]] const HyTransform& getReferenceFrame() const;

    /// Adds a body where it stands in the world. One of mass 0 changes nothing.
    HyMassProperties& operator+=(const HyMassProperties& other);
    /// Takes a body away where it stands in the world. No mass left: no inertia either, and the
    /// centre of mass returns to the origin. A negative rest is refused with a warning, as is this.
    HyMassProperties& operator-=(const HyMassProperties& other);
    /// Adds a body whose reference frame lies at `relativeTM` in this one's.
    void addMassProperties(const HyMassProperties& other, const HyTransform& relativeTM);
    /// Takes away a body whose reference frame lies at `relativeTM` in this one's.
    void subtractMassProperties(const HyMassProperties& other, const HyTransform& relativeTM);
    /// Takes mass, centre of mass and tensor of the other, and keeps its own reference frame.
    void copy(const HyMassProperties& other);

    void setInertiaTensorLocal(const HyReal tensor[3][3]);
    void getInertiaTensorLocal(HyReal out[3][3]) const;
    [[nodiscard]] const KitMatrix3& getInertiaTensorLocal() const;
    void getInertiaTensorAbsolute(HyReal out[3][3]) const;
    /// @param scale not negative
    void scaleInertiaTensor(HyReal scale);
    /// Principal moments on the diagonal, and the world frame at the centre of mass whose axes they
    /// belong to, right-handed. A diagonal tensor keeps the reference frame's axes and its order.
    void getOrthogonalInertiaTensor(HyReal out[3][3], HyTransform& transform) const;
    /// The same with the three moments in a vector.
    void getOrthogonalInertiaTensor(HyVector3& moments, HyTransform& transform) const;

    /// See the static form.
    bool makeValidInertiaTensor();
    /// Lifts principal moments that are below the ratio limit times the largest, then lowers to the
    /// larger of the other two each moment that is above their sum by more than rounding. Answers
    /// whether the tensor has changed. The limit lifts the spin inertia of slender rods too, those
    /// longer than 24 radii at its default.
    static bool makeValidInertiaTensor(HyReal tensor[3][3]);
    /// Least ratio of principal moments that makeValidInertiaTensor() leaves, 0.01 by default;
    /// ignored unless 0 < ratio < 1.
    static void setInertiaRatioLimit(HyReal ratio);

    void setCOMPositionLocal(const HyVector3& position);
    void getCOMPositionLocal(HyVector3& position) const;
    [[nodiscard]] HyVector3 getCOMPositionLocal() const;
    void setCOMPositionAbsolute(const HyVector3& position);
    void getCOMPositionAbsolute(HyVector3& position) const;
    [[nodiscard]] HyVector3 getCOMPositionAbsolute() const;
    /// Moves the centre of mass; the rotation has no effect on the tensor.
    void setCOMTransformLocal(const HyTransform& transform);
    [[nodiscard]] const HyTransform& getCOMTransformLocal() const;

    /// @param mass in kg, not negative
    void setMass(HyReal mass);
    [[nodiscard]] HyReal getMass() const;

private:
    void _combineInWorld(const HyMassProperties& other, bool subtract, const char* operation);
    void _combineInertiaTensors(const HyMassProperties& other, bool subtract,
                                const HyTransform* relativeTM, const char* operation);

    const HyTransform* mRefTM = nullptr; ///< null stands for the identity
    HyReal mMass = 0;                    ///< kg
    HyTransform mCOMLocalTM;             ///< in the reference frame
    KitMatrix3 mInertiaTensor = {};      ///< kg m², about the centre of mass, reference axes

    static HyReal sInertiaRatioLimit;
};

} // namespace Hy
