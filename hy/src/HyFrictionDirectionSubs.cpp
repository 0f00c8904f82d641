#include <Hy/HyConstraintFrictionDirectionSub.h>
#include <Hy/HyFrictionDirectionToAxisSub.h>

#include <Hy/HyDynamicsContact.h>
#include <Hy/HyDynamicsContactInput.h>
#include <Hy/HyMessage.h>
#include <Hy/HyPart.h>

#include <cmath>

namespace Hy {

namespace {

using Type = FrictionDirectionSubscriber::eFrictionDirectionType;

/// Least squared sine, or cosine in the plane, of the angle between axis and normal.
constexpr HyReal kMinDirection2 = 0.01;

/// Aims one contact by an axis in world axes.
void aim(HyDynamicsContact& contact, const HyVector3& axis, Type type) {
    HyVector3 n;
    contact.getNormal(n);
    HyVector3 d =
        type == Type::kFrictionDirectionPerpendicular ? n.cross(axis) : axis - n * axis.dot(n);
    const HyReal squared = d.dot(d);
    if (!(squared > kMinDirection2))
        return;
    contact.setDirection(d / std::sqrt(squared));
}

void aim(HyDynamicsContactInput* contacts, const HyVector3& axis, Type type) {
    if (!contacts)
        return;
    for (auto it = contacts->dynamicsContactBegin(); *it; ++it)
        aim(**it, axis, type);
}

} // namespace

HyFrictionDirectionToAxisSub::HyFrictionDirectionToAxisSub(const HyVector3& direction) {
    HyFrictionDirectionToAxisSub::setReferenceDirection(direction);
}

void HyFrictionDirectionToAxisSub::notify(HyPart* part, HyDynamicsContactInput* contacts) {
    if (part)
        aim(contacts, part->getTransform().rotate(mRefDir), getFrictionDirectionType());
}

void HyFrictionDirectionToAxisSub::notify(HyPart* part, HyDynamicsContact* contact) {
    if (part && contact)
        aim(*contact, part->getTransform().rotate(mRefDir), getFrictionDirectionType());
}

void HyFrictionDirectionToAxisSub::setReferenceDirection(const HyVector3& direction) {
    const HyReal squared = direction.dot(direction);
    if (!std::isfinite(squared)) {
        HyWarning(0, "HyFrictionDirectionToAxisSub::setReferenceDirection: the direction must be "
                     "finite.\n");
        return;
    }
    mRefDir = squared > 0 ? direction / std::sqrt(squared) : direction;
}

HyConstraintFrictionDirectionSub::HyConstraintFrictionDirectionSub(HyConstraint* constraint,
                                                                   int bodyID, int axisID,
                                                                   eFrictionDirectionType type)
    : mConstraint(constraint), mBodyID(bodyID), mAxisID(axisID), mDirectionType(type) {}

bool HyConstraintFrictionDirectionSub::findAxis(const HyPart* part, HyVector3& axis) const {
    const HyConstraint* constraint = mConstraint.get();
    if (!part || !constraint || constraint->getPart(mBodyID) != part) {
        HyWarning(0, "HyConstraintFrictionDirectionSub::notify: invalid argument\n");
        return false;
    }
    HyVector3 primary, secondary;
    constraint->getPartAttachmentAxes(mBodyID, primary, secondary);
    axis = mAxisID == 0 ? primary : secondary;
    return true;
}

void HyConstraintFrictionDirectionSub::notify(HyPart* part, HyDynamicsContactInput* contacts) {
    HyVector3 axis;
    if (findAxis(part, axis))
        aim(contacts, axis, mDirectionType);
}

void HyConstraintFrictionDirectionSub::notify(HyPart* part, HyDynamicsContact* contact) {
    HyVector3 axis;
    if (findAxis(part, axis) && contact)
        aim(*contact, axis, mDirectionType);
}

void HyConstraintFrictionDirectionSub::setReferenceDirection(const HyVector3&) {}

HyVector3 HyConstraintFrictionDirectionSub::getReferenceDirection() const {
    HyVector3 primary, secondary;
    if (const HyConstraint* constraint = mConstraint.get();
        constraint && mBodyID >= 0 && mBodyID < constraint->getMaxPartCount())
        constraint->getPartAttachmentAxesRel(mBodyID, primary, secondary);
    return mAxisID == 0 ? primary : secondary;
}

} // namespace Hy
