#pragma once
#include <Hy/HyClassIds.h>
#include <Hy/HyVector3.h>

#include <Dync/DyncContactMaterial.h>

struct DynContact;

namespace Hy {
class HyContactProperties;
class HyPart;

/// One point in which two parts, or a part and the world, press on each other and rub.
///
/// A view that lies over the record of the contact, has no data of its own and is never made or
/// deleted: it is valid while its record is, so within the notification that hands it out. A contact
/// made by HyUniverse::createUserDynamicsContact() lasts until it is deleted.
///
/// Vectors are in world axes. The normal points towards part 1. What is not finite is refused with a
/// warning, and nothing changes.
class HY_API HyDynamicsContact {
public:
    HyDynamicsContact() = delete;
    HyDynamicsContact(const HyDynamicsContact&) = delete;
    HyDynamicsContact& operator=(const HyDynamicsContact&) = delete;
    ~HyDynamicsContact() = delete;

    /// The view of a record; null for null.
    [[nodiscard]] static HyDynamicsContact* fromDynContact(DynContact* record);
    /// The record, which is the view's own.
    [[nodiscard]] DynContact* getDynContact();
    [[nodiscard]] const DynContact* getDynContact() const;

    [[nodiscard]] static constexpr int getStaticClassType() { return kHyDynamicsContactClassId; }
    [[nodiscard]] bool isOfClassType(int id) const;
    [[nodiscard]] bool isOfExactClassType(int id) const;

    // Parts.

    /// Null stands for the world.
    void getPartPair(HyPart*& part1, HyPart*& part2) const;
    /// Enables the contact, too. In the middle of a step: a warning, nothing changes.
    void setPartPair(HyPart* part1, HyPart* part2);
    /// The parts before merging.
    void getOriginalPartPair(HyPart*& part1, HyPart*& part2) const;

    // Geometry.

    void getPosition(HyVector3& position) const;
    void setPosition(const HyVector3& position);
    void getNormal(HyVector3& normal) const;
    /// Is made a unit vector. Zero: a warning, no change.
    void setNormal(const HyVector3& normal);
    /// In m, positive when the surfaces overlap.
    [[nodiscard]] HyReal getPenetration() const;
    void setPenetration(HyReal penetration);
    /// Share of the area of contact, by which a compliant contact is stiffer; above 0 for one.
    [[nodiscard]] HyReal getSurface() const;
    void setSurface(HyReal surface);

    // Friction axes. The primary one is the direction's part in the plane of contact.

    /// Zero: a warning, no change.
    void setDirection(const HyVector3& direction);
    void setPrimaryDirection(const HyVector3& direction) { setDirection(direction); }
    void getDirection(HyVector3& direction) const;
    void getPrimaryDirection(HyVector3& direction) const { getDirection(direction); }
    /// Normal x primary direction as a unit vector, or zero where they are parallel.
    void getSecondaryDirection(HyVector3& direction) const;
    /// Lets the subscriber of part 1, or else that of part 2, choose the direction.
    void applyFrictionDirectionSubscriber();

    // Results of the last step.

    /// Force, N, and torque, N m, on part i (0 or 1) at its centre of mass.
    void getForce(int i, HyVector3& force) const;
    void getTorque(int i, HyVector3& torque) const;

    // Life.

    /// Whether the contact is enabled now. In the middle of a step: a warning, no change.
    bool enableContact(bool enable);
    [[nodiscard]] bool isEnabled() const;
    /// A weak contact may be given up where a solver group ends.
    void setWeakContact(bool weak);
    [[nodiscard]] bool getWeakContact() const;
    /// Contacts of about one normal have one index; -1 for none.
    void setGroupIndex(int group);
    [[nodiscard]] int getGroupIndex() const;

    // Material.

    /// The contact's own copy, which its rows read.
    [[nodiscard]] DyncContactMaterial& getContactMaterial();
    [[nodiscard]] const DyncContactMaterial& getContactMaterial() const;
    /// Name of the material that was copied; may be null. Not owned.
    [[nodiscard]] const char* getContactMaterialName() const;

    /// The copy in its older form. Not owned: stays until the process ends, while its numbers go with
    /// the contact.
    [[nodiscard]] HyContactProperties* getContactProperties();

    // Slip.

    /// Whether the contact continues one of the last step.
    [[nodiscard]] bool getMatched() const;
    /// Whether the slip is faster than the threshold.
    [[nodiscard]] bool getIsSliding() const;
    /// Velocity of part 1 less that of part 2 at the contact, in its plane, m/s.
    [[nodiscard]] HyVector3 getSlidingVelocity() const;
    /// The same along the primary and secondary direction, less the slide of the material.
    void getSlidingVelocity(HyReal& primary, HyReal& secondary) const;
    /// Slip since the contact began to stick, m. False, and zeros, unless it sticks, is matched and
    /// its material integrates slip.
    bool getIntegratedDisplacement(HyReal& displacement1, HyReal& displacement2) const;
    /// m/s; negative: a warning, no change.
    void setSlidingVelocityThreshold(HyReal threshold);
    [[nodiscard]] HyReal getSlidingVelocityThreshold() const;
    /// To the root of the larger auto-sleep speed of the parts, times the scale below.
    void resetSlidingVelocityThreshold();

    // Kinematic response.

    /// Lets one of its parts act in this contact as if nothing could move it; null ends that.
    void setForcePartKinematicResponse(HyPart* part);
    [[nodiscard]] HyPart* getForcePartKinematicResponse() const;

    // Of all contacts.

    /// Matches the contacts of a pair to those of the last step, whatever their materials; off at
    /// first.
    static void setForceContactMatching(bool force);
    [[nodiscard]] static bool getForceContactMatching();
    /// Of the sliding threshold, 0.1 at first; ignored unless above 0.
    static void setSlidingVelocityThresholdScale(HyReal scale);
    [[nodiscard]] static HyReal getSlidingVelocityThresholdScale();

private:
    static bool sForceContactMatching;
    static HyReal sSlidingVelocityThresholdScale;
};

} // namespace Hy
