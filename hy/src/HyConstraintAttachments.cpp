#include <Hy/HyConstraint.h>

#include <Dyn/DynConstraint.h>
#include <Hy/HyMessage.h>
#include <Hy/HyPart.h>

// Attachments of a constraint. The record keeps them in the centre-of-mass frames of its bodies.

namespace Hy {
namespace {

HyVector3 axisOf(const DynBaseConstraint* record, int i, int axis) {
    HyVector3 v;
    DynConstraintBodyGetAxis(record, i, axis, v.v);
    return v;
}

HyVector3 axisRelOf(const DynBaseConstraint* record, int i, int axis) {
    HyVector3 v;
    DynConstraintBodyGetAxisRel(record, i, axis, v.v);
    return v;
}

} // namespace

void HyConstraint::setPartAttachmentPosition(int i, const HyReal position[3]) {
    if (!isPartIndex(i))
        return;
    DynConstraintBodySetPosition(mConstraint, i, position);
    wakePartsIf(mEnabledInternal);
}

void HyConstraint::setPartAttachmentPosition(int i, HyReal x, HyReal y, HyReal z) {
    setPartAttachmentPosition(i, HyVector3(x, y, z).v);
}

void HyConstraint::getPartAttachmentPosition(int i, HyReal position[3]) const {
    KitVector3Zero(position);
    if (isPartIndex(i))
        DynConstraintBodyGetPosition(mConstraint, i, position);
}

HyVector3 HyConstraint::getPartAttachmentPosition(int i) const {
    HyVector3 position;
    getPartAttachmentPosition(i, position.v);
    return position;
}

void HyConstraint::setPartAttachmentAxis(int i, const HyVector3& primary) {
    if (!isPartIndex(i))
        return;
    DynConstraintBodySetAxes(mConstraint, i, primary.v, nullptr);
    wakePartsIf(mEnabledInternal);
}

void HyConstraint::setPartAttachmentAxes(int i, const HyVector3& primary,
                                         const HyVector3& secondary) {
    if (!isPartIndex(i))
        return;
    DynConstraintBodySetAxes(mConstraint, i, primary.v, secondary.v);
    wakePartsIf(mEnabledInternal);
}

void HyConstraint::getPartAttachmentAxes(int i, HyVector3& primary, HyVector3& secondary) const {
    primary = secondary = HyVector3();
    if (!isPartIndex(i))
        return;
    primary = axisOf(mConstraint, i, 0);
    secondary = axisOf(mConstraint, i, 1);
}

void HyConstraint::setPartAttachmentAxesRel(int i, const HyVector3& primary,
                                            const HyVector3& secondary) {
    if (!isPartIndex(i))
        return;
    DynConstraintBodySetAxesRel(mConstraint, i, primary.v, secondary.v);
    wakePartsIf(mEnabledInternal);
}

void HyConstraint::setPartAttachmentAxisRel(int i, const HyVector3& primary) {
    if (!isPartIndex(i))
        return;
    DynConstraintBodySetAxesRel(mConstraint, i, primary.v, nullptr);
    wakePartsIf(mEnabledInternal);
}

void HyConstraint::setPartAndAttachment(int i, HyPart* part, const HyVector3& position,
                                        const HyVector3& primary, const HyVector3* secondary) {
    if (!isPartIndex(i))
        return;
    setPart(i, part);
    setPartAttachmentPosition(i, position);
    if (secondary)
        setPartAttachmentAxes(i, primary, *secondary);
    else
        setPartAttachmentAxis(i, primary);
}

void HyConstraint::setPartAndAttachmentRel(int i, HyPart* part, const HyVector3& position,
                                           const HyVector3& primary, const HyVector3* secondary) {
    if (!isPartIndex(i))
        return;
    setPart(i, part);
    setPartAttachmentPositionRel(i, position);
    if (secondary)
        setPartAttachmentAxesRel(i, primary, *secondary);
    else
        setPartAttachmentAxisRel(i, primary);
}

void HyConstraint::setPartAttachmentPositionRel(int i, const HyVector3& position) {
    if (!isPartIndex(i))
        return;
    DynConstraintBodySetPositionRel(mConstraint, i, position.v);
    wakePartsIf(mEnabledInternal);
}

HyVector3 HyConstraint::getPartAttachmentPositionRel(int i) const {
    HyVector3 position;
    if (isPartIndex(i))
        DynConstraintBodyGetPositionRel(mConstraint, i, position.v);
    return position;
}

void HyConstraint::setPartAttachmentPositionCOMRel(int i, const HyVector3& offset) {
    if (!isPartIndex(i))
        return;
    DynConstraintBodySetPositionCOMRel(mConstraint, i, offset.v);
    wakePartsIf(mEnabledInternal);
}

HyVector3 HyConstraint::getPartAttachmentPositionCOMRel(int i) const {
    return isPartIndex(i) ? HyVector3(mConstraint->bclH.ref[i][3]) : HyVector3();
}

HyVector3 HyConstraint::getPartAttachmentAxis(int i) const {
    return isPartIndex(i) ? axisOf(mConstraint, i, 0) : HyVector3();
}

HyVector3 HyConstraint::getPartAttachmentAxisRel(int i) const {
    return isPartIndex(i) ? axisRelOf(mConstraint, i, 0) : HyVector3();
}

void HyConstraint::getPartAttachmentAxesRel(int i, HyVector3& primary, HyVector3& secondary) const {
    primary = secondary = HyVector3();
    if (!isPartIndex(i))
        return;
    primary = axisRelOf(mConstraint, i, 0);
    secondary = axisRelOf(mConstraint, i, 1);
}

void HyConstraint::setBothPositions(const HyVector3& position) {
    DynConstraintSetPosition(mConstraint, position.v);
    wakePartsIf(mEnabledInternal);
}

void HyConstraint::setBothAxes(const HyVector3& primary, const HyVector3* secondary) {
    DynConstraintSetAxes(mConstraint, primary.v, secondary ? secondary->v : nullptr);
    wakePartsIf(mEnabledInternal);
}

// Copies of attachments.

void HyConstraint::setAttachment(int i, const HyConstraintAttachment& attachment) {
    if (!isPartIndex(i))
        return;
    if (attachment.isEmpty()) {
        HyWarning(0, "HyConstraint::setAttachment: the attachment must not be empty.\n");
        return;
    }
    mAttachmentListRef[static_cast<std::size_t>(i)] = attachment;
    HyTransform frame;
    attachment.getTransform(frame);
    setPartAndAttachment(i, attachment.mPart, frame.t(), frame.axis(0), &frame.axis(1));
}

void HyConstraint::getAttachment(int i, HyConstraintAttachment& attachment) const {
    if (isPartIndex(i))
        attachment = mAttachmentListRef[static_cast<std::size_t>(i)];
}

void HyConstraint::resetAttachment(int i) {
    if (isPartIndex(i))
        mAttachmentListRef[static_cast<std::size_t>(i)].reset();
}

void HyConstraint::updateAttachmentFromPart(int i) {
    if (!isPartIndex(i))
        return;
    HyConstraintAttachment& attachment = mAttachmentListRef[static_cast<std::size_t>(i)];
    attachment.mPart = getPart(i);
    HyTransform frame;
    getPartAttachmentAxes(i, frame.axis(0), frame.axis(1));
    frame.axis(2) = frame.axis(0).cross(frame.axis(1));
    frame.t() = getPartAttachmentPosition(i);
    attachment.setTransform(frame);
}

} // namespace Hy
