#include <Hy/HyDynamicsContact.h>

#include <Dyn/DynBody.h>
#include <Dyn/DynContact.h>
#include <Hy/HyMessage.h>
#include <Hy/HyPart.h>

#include <cmath>

namespace Hy {

namespace {

HyPart* partOf(const DynBody* body) {
    return body ? body->mPart : nullptr;
}

DynBody* bodyOf(const HyPart* part) {
    return part ? part->getDynBody() : nullptr;
}

HyVector3 velocityAt(const DynBody* body, const KitVector3 point) {
    HyVector3 v;
    if (body)
        DynBodyGetVelocityAtPoint(body, point, v.v);
    return v;
}

} // namespace

bool HyDynamicsContact::sForceContactMatching = false;
HyReal HyDynamicsContact::sSlidingVelocityThresholdScale = 0.1;

// The class has no data and no virtual operation: its address is all that is used of it.

HyDynamicsContact* HyDynamicsContact::fromDynContact(DynContact* record) {
    return reinterpret_cast<HyDynamicsContact*>(record);
}

DynContact* HyDynamicsContact::getDynContact() {
    return reinterpret_cast<DynContact*>(this);
}

const DynContact* HyDynamicsContact::getDynContact() const {
    return reinterpret_cast<const DynContact*>(this);
}

bool HyDynamicsContact::isOfClassType(int id) const {
    return isOfExactClassType(id);
}

bool HyDynamicsContact::isOfExactClassType(int id) const {
    return id == getStaticClassType();
}

// Parts.

void HyDynamicsContact::getPartPair(HyPart*& part1, HyPart*& part2) const {
    part1 = partOf(getDynContact()->body[0]);
    part2 = partOf(getDynContact()->body[1]);
}

void HyDynamicsContact::setPartPair(HyPart* part1, HyPart* part2) {
    if (enableContact(false))
        return;
    DynContactSetBodies(getDynContact(), bodyOf(part1), bodyOf(part2));
    enableContact(true);
}

void HyDynamicsContact::getOriginalPartPair(HyPart*& part1, HyPart*& part2) const {
    part1 = partOf(getDynContact()->originalBodies[0]);
    part2 = partOf(getDynContact()->originalBodies[1]);
}

// Geometry.

void HyDynamicsContact::getPosition(HyVector3& position) const {
    DynContactGetPosition(getDynContact(), position.v);
}

void HyDynamicsContact::setPosition(const HyVector3& position) {
    DynContactSetPosition(getDynContact(), position.v);
}

void HyDynamicsContact::getNormal(HyVector3& normal) const {
    DynContactGetNormal(getDynContact(), normal.v);
}

void HyDynamicsContact::setNormal(const HyVector3& normal) {
    DynContactSetNormal(getDynContact(), normal.v);
}

HyReal HyDynamicsContact::getPenetration() const {
    return DynContactGetPenetration(getDynContact());
}

void HyDynamicsContact::setPenetration(HyReal penetration) {
    DynContactSetPenetration(getDynContact(), penetration);
}

HyReal HyDynamicsContact::getSurface() const {
    return DynContactGetSurface(getDynContact());
}

void HyDynamicsContact::setSurface(HyReal surface) {
    DynContactSetSurface(getDynContact(), surface);
}

// Friction axes.

void HyDynamicsContact::setDirection(const HyVector3& direction) {
    DynContactSetDirection(getDynContact(), direction.v);
}

void HyDynamicsContact::getDirection(HyVector3& direction) const {
    DynContactGetDirection(getDynContact(), direction.v);
}

void HyDynamicsContact::getSecondaryDirection(HyVector3& direction) const {
    const DynContact* contact = getDynContact();
    direction =
        HyVector3::constCast(contact->normal).cross(HyVector3::constCast(contact->direction));
    if (direction.dot(direction) > 0)
        direction.normalize();
}

void HyDynamicsContact::applyFrictionDirectionSubscriber() {
    DynContact* contact = getDynContact();
    for (int slot = 0; slot < 2; ++slot)
        if (DynBody* body = contact->body[slot]; body && body->frictionDirectionCB) {
            body->frictionDirectionCB(contact, body, body->frictionDirectionCBData);
            return;
        }
}

// Results of the last step.

void HyDynamicsContact::getForce(int i, HyVector3& force) const {
    DynConstraintGetForce(getDynContact(), i, force.v);
}

void HyDynamicsContact::getTorque(int i, HyVector3& torque) const {
    DynConstraintGetTorque(getDynContact(), i, torque.v);
}

// Life.

bool HyDynamicsContact::enableContact(bool enable) {
    DynContact* contact = getDynContact();
    if (enable)
        DynConstraintEnable(contact);
    else
        DynConstraintDisable(contact);
    return isEnabled();
}

bool HyDynamicsContact::isEnabled() const {
    return DynConstraintIsEnabled(getDynContact());
}

void HyDynamicsContact::setWeakContact(bool weak) {
    DynContactSetWeakContact(getDynContact(), weak ? kDynWeakOneFrame : kDynWeakNever);
}

bool HyDynamicsContact::getWeakContact() const {
    return DynContactGetWeakContact(getDynContact()) != kDynWeakNever;
}

void HyDynamicsContact::setGroupIndex(int group) {
    DynContactSetGroupIndex(getDynContact(), group);
}

int HyDynamicsContact::getGroupIndex() const {
    return DynContactGetGroupIndex(getDynContact());
}

// Material.

DyncContactMaterial& HyDynamicsContact::getContactMaterial() {
    return getDynContact()->params;
}

const DyncContactMaterial& HyDynamicsContact::getContactMaterial() const {
    return getDynContact()->params;
}

const char* HyDynamicsContact::getContactMaterialName() const {
    return getDynContact()->contactMaterialName;
}

// Slip.

bool HyDynamicsContact::getMatched() const {
    return (getDynContact()->flags & kDynContactMatched) != 0;
}

bool HyDynamicsContact::getIsSliding() const {
    const HyVector3 slip = getSlidingVelocity();
    const HyReal threshold = getSlidingVelocityThreshold();
    return slip.dot(slip) > threshold * threshold;
}

HyVector3 HyDynamicsContact::getSlidingVelocity() const {
    const DynContact* contact = getDynContact();
    const HyVector3& n = HyVector3::constCast(contact->normal);
    const HyVector3 slip =
        velocityAt(contact->body[0], contact->cpos) - velocityAt(contact->body[1], contact->cpos);
    return slip - n * slip.dot(n);
}

void HyDynamicsContact::getSlidingVelocity(HyReal& primary, HyReal& secondary) const {
    const HyVector3 slip = getSlidingVelocity();
    HyVector3 direction;
    getPrimaryDirection(direction);
    primary = slip.dot(direction) - getContactMaterial().slide[0];
    getSecondaryDirection(direction);
    secondary = slip.dot(direction) - getContactMaterial().slide[1];
}

bool HyDynamicsContact::getIntegratedDisplacement(HyReal& displacement1,
                                                  HyReal& displacement2) const {
    const DynContact* contact = getDynContact();
    const bool sticks =
        contact->params.mIntegratedSlipDisplacementActivated && getMatched() && !getIsSliding();
    displacement1 = sticks ? contact->slip_displacement[0] : 0;
    displacement2 = sticks ? contact->slip_displacement[1] : 0;
    return sticks;
}

void HyDynamicsContact::setSlidingVelocityThreshold(HyReal threshold) {
    if (!(threshold >= 0) || !std::isfinite(threshold)) {
        HyWarning(0, "HyDynamicsContact::setSlidingVelocityThreshold: the threshold must be finite "
                     "and not negative.\n");
        return;
    }
    getDynContact()->slidingVelocityThreshold = threshold;
}

HyReal HyDynamicsContact::getSlidingVelocityThreshold() const {
    return getDynContact()->slidingVelocityThreshold;
}

void HyDynamicsContact::resetSlidingVelocityThreshold() {
    DynContact* contact = getDynContact();
    contact->slidingVelocityThreshold = DynContactComputeSlidingVelocityThreshold(
        contact->body[0], contact->body[1], sSlidingVelocityThresholdScale);
}

// Kinematic response.

void HyDynamicsContact::setForcePartKinematicResponse(HyPart* part) {
    DynConstraintSetBodySeenAsKinematic(getDynContact(), bodyOf(part));
}

HyPart* HyDynamicsContact::getForcePartKinematicResponse() const {
    return partOf(getDynContact()->bclH.bodySeenAsKinematic);
}

// Of all contacts.

void HyDynamicsContact::setForceContactMatching(bool force) {
    sForceContactMatching = force;
}

bool HyDynamicsContact::getForceContactMatching() {
    return sForceContactMatching;
}

void HyDynamicsContact::setSlidingVelocityThresholdScale(HyReal scale) {
    if (scale > 0 && std::isfinite(scale))
        sSlidingVelocityThresholdScale = scale;
}

HyReal HyDynamicsContact::getSlidingVelocityThresholdScale() {
    return sSlidingVelocityThresholdScale;
}

} // namespace Hy
