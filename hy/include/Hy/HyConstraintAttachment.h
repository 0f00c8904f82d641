#pragma once
#include <Hy/HyTransform.h>

namespace Hy {
class HyPart;

/// A frame on a part, by which a constraint holds the part. Its third axis is always primary x
/// secondary. Without a primary axis it is empty.
class HY_API HyConstraintAttachment {
public:
    /// In which frame axes and position are given.
    enum AttachmentType {
        kAttachmentRelativePart = 0,    ///< the part's
        kAttachmentRelativePartCOM = 1, ///< the part's axes, from its centre of mass
        kAttachmentAbsolute = 2,        ///< the world
        kAttachmentSlave = 3            ///< the part's
    };

    HyConstraintAttachment() = default;
    HyConstraintAttachment(const HyConstraintAttachment&) = default;
    HyConstraintAttachment& operator=(const HyConstraintAttachment&) = default;
    virtual ~HyConstraintAttachment() = default;

    [[nodiscard]] bool isEmpty() const { return mPrimaryAxis.squareNorm() == 0; }
    [[nodiscard]] bool isValid() const { return !isEmpty(); }
    /// Empty again, without part.
    void reset();
    void copy(const HyConstraintAttachment& other) { *this = other; }

    /// The frame as it is stored. An empty attachment gives the identity.
    void getRelativeTransform(HyTransform& out) const;
    /// Takes axes and position, and makes the axes orthonormal; the primary one stays.
    void setRelativeTransform(const HyTransform& tm);
    /// The frame in the world; the identity for an empty attachment.
    void getTransform(HyTransform& out) const;
    void setTransform(const HyTransform& world);
    /// Makes the axes orthonormal; the primary one keeps its direction.
    void fixAxes();

    HyVector3 mPrimaryAxis, mSecondaryAxis;
    HyVector3 mPosition;
    HyPart* mPart = nullptr; ///< not owned
    AttachmentType mType = kAttachmentRelativePart;

private:
    [[nodiscard]] HyTransform baseFrame() const;
};

} // namespace Hy
