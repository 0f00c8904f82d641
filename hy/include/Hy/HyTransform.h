#pragma once
#include <Hy/HyQuaternion.h>
#include <Hy/HySmallReal.h>
#include <Hy/HyTypes.h>
#include <Hy/HyVector3.h>
#include <Kit/KitApi.h>
#include <Kit/KitMatrix4.h>

namespace Hy {

/// A rigid transform for row vectors, laid out as a KitMatrix4. Rows 0 to 2 are the images of the
/// local axes in the parent frame, row 3 is the translation in m, column 3 is (0, 0, 0, 1).
/// Products read from left to right in order of application; inverses are those of a rigid body.
class HY_API __attribute__((may_alias)) HyTransform {
public:
    HyReal m[4][4];

    static const HyTransform kIdentity;

    /// The identity.
    constexpr HyTransform() noexcept : m{{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}} {}
    /// Copies sixteen numbers.
    explicit HyTransform(const KitMatrix4 matrix) noexcept { KitMatrix4Copy(m, matrix); }
    /// Translation alone.
    explicit HyTransform(const HyVector3& translation) noexcept : HyTransform() {
        t() = translation;
    }
    /// See setRotation().
    explicit HyTransform(const HyQuaternion& rotation,
                         const HyVector3& translation = HyVector3()) noexcept
        : HyTransform(translation) {
        setRotation(rotation);
    }

    /// Views a matrix as a transform, without a copy.
    static HyTransform& cast(KitMatrix4 matrix) noexcept {
        return *reinterpret_cast<HyTransform*>(matrix);
    }
    static const HyTransform& constCast(const KitMatrix4 matrix) noexcept {
        return *reinterpret_cast<const HyTransform*>(matrix);
    }

    /// A row of four numbers.
    HyReal* operator[](int row) noexcept { return m[row]; }
    const HyReal* operator[](int row) const noexcept { return m[row]; }
    /// Image of local axis i, a view on its row.
    [[nodiscard]] HyVector3& axis(int i) noexcept { return HyVector3::cast(m[i]); }
    [[nodiscard]] const HyVector3& axis(int i) const noexcept { return HyVector3::constCast(m[i]); }
    /// Translation, a view on row 3.
    [[nodiscard]] HyVector3& t() noexcept { return HyVector3::cast(m[3]); }
    [[nodiscard]] const HyVector3& t() const noexcept { return HyVector3::constCast(m[3]); }
    void setIdentity() noexcept { *this = HyTransform(); }
    /// Writes the rotation of a quaternion of any length; the translation stays.
    void setRotation(const HyQuaternion& q) noexcept {
        KitMatrix4TMSetRotationFromQuaternion(m, q.mQuat);
    }
    /// Exact comparison of all elements.
    friend HY_API bool operator==(const HyTransform& a, const HyTransform& b) noexcept;

    /// The image of a local point in the parent frame.
    [[nodiscard]] HyVector3 transform(const HyVector3& p) const noexcept { return rotate(p) + t(); }
    /// The image of a local vector in the parent frame.
    [[nodiscard]] HyVector3 rotate(const HyVector3& d) const noexcept {
        HyVector3 r;
        KitMatrix4TMRotate(r.v, d.v, m);
        return r;
    }
    /// A point of the parent frame in local coordinates.
    [[nodiscard]] HyVector3 inverseTransform(const HyVector3& p) const noexcept {
        return inverseRotate(p - t());
    }
    /// A vector of the parent frame in local axes.
    [[nodiscard]] HyVector3 inverseRotate(const HyVector3& d) const noexcept {
        HyVector3 r;
        KitMatrix4TMInverseRotate(r.v, d.v, m);
        return r;
    }

    // Products; any operand may be this transform.

    /// this := this o.
    void postCompound(const HyTransform& o) noexcept { compound(*this, o); }
    /// this := o this.
    void preCompound(const HyTransform& o) noexcept { compound(o, *this); }
    /// this := this o^-1.
    void postCompoundWithInverse(const HyTransform& o) noexcept {
        compoundFirstThenInverseSecond(*this, o);
    }
    /// this := o^-1 this.
    void preCompoundWithInverse(const HyTransform& o) noexcept {
        compoundInverseFirstThenSecond(o, *this);
    }
    /// this := a b.
    void compound(const HyTransform& a, const HyTransform& b) noexcept {
        KitMatrix4TMCompound(m, a.m, b.m);
    }
    /// this := a b^-1.
    void compoundFirstThenInverseSecond(const HyTransform& a, const HyTransform& b) noexcept {
        KitMatrix4TMCompoundInverseSecond(m, a.m, b.m);
    }
    /// this := a^-1 b.
    void compoundInverseFirstThenSecond(const HyTransform& a, const HyTransform& b) noexcept {
        KitMatrix4TMCompoundInverseFirst(m, a.m, b.m);
    }
    /// a b: applies a first.
    friend HyTransform operator*(const HyTransform& a, const HyTransform& b) noexcept {
        HyTransform r;
        r.compound(a, b);
        return r;
    }
    /// this := this^-1.
    void invert() noexcept { KitMatrix4TMInvert(m); }
    [[nodiscard]] HyTransform inverse() const noexcept {
        HyTransform r = *this;
        r.invert();
        return r;
    }

    /// Makes the rotation orthonormal and right-handed. Row `reference` (0 to 2) keeps its
    /// direction; of the others, the next keeps its plane with it, or, where those two are parallel,
    /// the one after does. Zero rows are passed over; a zero rotation becomes the identity, and an
    /// index out of range changes nothing.
    void makeOrthonormal(int reference = 0) noexcept;
    /// Makes v the direction of row 0 and rebuilds rows 1 and 2 from it alone.
    /// @return false, with no change, if v or row 1 is not longer than the tolerance, or if 1 minus
    ///         the cosine between them (of either sign) is below it
    bool makeRotation(const HyVector3& v,
                      HyReal tolerance = HY_SMALL_REAL<double>::epsilon) noexcept;
    /// The shortest rotation that takes unit vector v1 to unit vector v2, with no translation.
    void makeFromRotatedVector(const HyVector3& v1, const HyVector3& v2) noexcept;
    /// A frame at `from` that looks at `to` along its own -z axis, its y axis towards `up`. Where
    /// these leave the view or the upward direction open, any will do.
    [[nodiscard]] static HyTransform createLookAt(const HyVector3& from, const HyVector3& to,
                                                  const HyVector3& up) noexcept;
    /// Turns by the angle |w| h about w, in axes of the parent frame; the translation stays.
    void rotateSelf(const HyVector3& w, HyReal h) noexcept;

    /// Rotation between those of a (t = 0) and b (t = 1), see KitQuaternionSlerp(); the translation
    /// of this transform stays.
    void interpolateRotation(const HyTransform& a, const HyTransform& b, HyReal t) noexcept;
    /// The same, and the translation on the straight line between those of a and b.
    void interpolate(const HyTransform& a, const HyTransform& b, HyReal t) noexcept;

    /// Mean velocity of the origin that leads from a to b in h seconds, m/s.
    static void computeLinearVelocity(const HyTransform& a, const HyTransform& b, HyReal h,
                                      HyVector3& velocity) noexcept;
    /// Angular velocity, to first order, that leads from a to b in h seconds, rad/s, parent axes.
    static void computeAngularVelocity(const HyTransform& a, const HyTransform& b, HyReal h,
                                       HyVector3& velocity) noexcept;

    /// Whether this is a rigid transform: KitMatrix4IsTM() at 1e-7.
    [[nodiscard]] bool isValid() const noexcept;
    /// Whether no element of rotation and translation is further than the tolerance from the
    /// identity's.
    [[nodiscard]] bool isIdentity(HyReal tolerance = HY_SMALL_REAL<double>::epsilon) const noexcept;
    /// Whether no element is infinite or not a number.
    [[nodiscard]] bool isFinite() const noexcept;
};

static_assert(sizeof(HyTransform) == sizeof(KitMatrix4) &&
              alignof(HyTransform) == alignof(KitReal));
} // namespace Hy
