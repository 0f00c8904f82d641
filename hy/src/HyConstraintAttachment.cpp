#include <Hy/HyConstraintAttachment.h>

#include <Hy/HyPart.h>

namespace Hy {

void HyConstraintAttachment::reset() {
    mPrimaryAxis = mSecondaryAxis = mPosition = HyVector3();
    mPart = nullptr;
}

void HyConstraintAttachment::getRelativeTransform(HyTransform& out) const {
    out.setIdentity();
    if (isEmpty())
        return;
    out.axis(0) = mPrimaryAxis;
    out.axis(1) = mSecondaryAxis;
    out.axis(2) = mPrimaryAxis.cross(mSecondaryAxis);
    out.t() = mPosition;
}

void HyConstraintAttachment::setRelativeTransform(const HyTransform& tm) {
    mPrimaryAxis = tm.axis(0);
    mSecondaryAxis = tm.axis(1);
    mPosition = tm.t();
    fixAxes();
}

void HyConstraintAttachment::getTransform(HyTransform& out) const {
    getRelativeTransform(out);
    if (!isEmpty())
        out.postCompound(baseFrame());
}

void HyConstraintAttachment::setTransform(const HyTransform& world) {
    HyTransform relative;
    relative.compoundFirstThenInverseSecond(world, baseFrame());
    setRelativeTransform(relative);
}

void HyConstraintAttachment::fixAxes() {
    if (isEmpty())
        return;
    HyTransform frame;
    getRelativeTransform(frame);
    frame.makeOrthonormal(0);
    mPrimaryAxis = frame.axis(0);
    mSecondaryAxis = frame.axis(1);
}

HyTransform HyConstraintAttachment::baseFrame() const {
    if (!mPart || mType == kAttachmentAbsolute)
        return HyTransform();
    HyTransform frame = mPart->getTransform();
    if (mType == kAttachmentRelativePartCOM)
        frame.t() = mPart->getCOMPosition();
    return frame;
}

} // namespace Hy
