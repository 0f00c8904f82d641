#pragma once
#include <Kit/KitApi.h>
#include <Kit/KitMatrix4.h>
#include <Kit/KitTypes.h>
#include <Kit/lsVec3.h>

/// Four numbers: a row of a transform.
struct HY_API __attribute__((may_alias)) lsVec4 {
    lsReal v[4];
    constexpr lsReal& operator[](int i) noexcept { return v[i]; }
    constexpr const lsReal& operator[](int i) const noexcept { return v[i]; }
};
using lsTransformRow = lsVec4;

/// A rigid transform for row vectors, laid out as a KitMatrix4: rows 0 to 2 are the images of its
/// own axes in the reference frame, row 3 is its origin. Operands may be the transform itself.
struct HY_API __attribute__((may_alias)) lsTransform {
    lsTransformRow row[4];

    /// The identity.
    constexpr lsTransform() noexcept
        : row{{{1, 0, 0, 0}}, {{0, 1, 0, 0}}, {{0, 0, 1, 0}}, {{0, 0, 0, 1}}} {}
    /// Copies a matrix.
    explicit lsTransform(const KitMatrix4 m) noexcept { KitMatrix4Copy(matrix(), m); }

    /// Views a matrix as a transform, without a copy.
    static lsTransform& cast(KitMatrix4 m) noexcept { return *reinterpret_cast<lsTransform*>(m); }
    static const lsTransform& constCast(const KitMatrix4 m) noexcept {
        return *reinterpret_cast<const lsTransform*>(m);
    }
    /// The transform as a KitMatrix4.
    [[nodiscard]] KitReal (*matrix() noexcept)[4] { return &row[0].v; }
    [[nodiscard]] const KitReal (*matrix() const noexcept)[4] { return &row[0].v; }

    /// Image of own axis i, 0 to 2: a view on its row.
    [[nodiscard]] lsVec3& axis(int i) noexcept { return lsVec3::cast(row[i].v); }
    [[nodiscard]] const lsVec3& axis(int i) const noexcept { return lsVec3::constCast(row[i].v); }
    /// Origin, a view on row 3.
    [[nodiscard]] lsVec3& t() noexcept { return lsVec3::cast(row[3].v); }
    [[nodiscard]] const lsVec3& t() const noexcept { return lsVec3::constCast(row[3].v); }
    void setIdentity() noexcept { *this = lsTransform(); }
    /// Restores the fourth column, which the rest never reads.
    void resetUnused() noexcept {
        row[0][3] = row[1][3] = row[2][3] = 0;
        row[3][3] = 1;
    }
    /// Whether the axes are of unit length, perpendicular and right-handed within the tolerance.
    [[nodiscard]] bool isOrthonormal(lsReal tolerance) const noexcept {
        const auto near = [tolerance](lsReal a, lsReal b) { return std::abs(a - b) <= tolerance; };
        for (int i = 0; i < 3; ++i)
            if (!near(axis(i).square_norm(), 1) || !near(axis(i).dot(axis((i + 1) % 3)), 0))
                return false;
        return axis(0).cross(axis(1)).dot(axis(2)) > 0;
    }

    [[nodiscard]] lsVec3 transformWithoutTranslate(const lsVec3& d) const noexcept {
        lsVec3 r;
        KitMatrix4TMRotate(r.v, d.v, matrix());
        return r;
    }
    [[nodiscard]] lsVec3 transform(const lsVec3& p) const noexcept {
        return transformWithoutTranslate(p) + t();
    }
    [[nodiscard]] lsVec3 inverseTransformWithoutTranslate(const lsVec3& d) const noexcept {
        lsVec3 r;
        KitMatrix4TMInverseRotate(r.v, d.v, matrix());
        return r;
    }
    [[nodiscard]] lsVec3 inverseTransform(const lsVec3& p) const noexcept {
        return inverseTransformWithoutTranslate(p - t());
    }
    /// A point given in this frame, in the reference frame.
    [[nodiscard]] lsVec3 thisFrameToRefFrame(const lsVec3& p) const noexcept {
        return transform(p);
    }
    /// A point given in the reference frame, in this frame.
    [[nodiscard]] lsVec3 refFrameToThisFrame(const lsVec3& p) const noexcept {
        return inverseTransform(p);
    }

    /// this := a b.
    void thisIsFirstThenSecond(const lsTransform& a, const lsTransform& b) noexcept {
        KitMatrix4TMCompound(matrix(), a.matrix(), b.matrix());
    }
    /// this := a b^-1.
    void thisIsFirstThenInverseSecond(const lsTransform& a, const lsTransform& b) noexcept {
        KitMatrix4TMCompoundInverseSecond(matrix(), a.matrix(), b.matrix());
    }
    /// this := a^-1 b.
    void thisIsInverseFirstThenSecond(const lsTransform& a, const lsTransform& b) noexcept {
        KitMatrix4TMCompoundInverseFirst(matrix(), a.matrix(), b.matrix());
    }
    /// Takes coordinates in the first frame to coordinates in the second, both frames given in one
    /// reference frame: a b^-1.
    void thisIsFirstToSecond(const lsTransform& a, const lsTransform& b) noexcept {
        thisIsFirstThenInverseSecond(a, b);
    }
    /// this := this o^-1.
    void thisIsThisThenInverseThat(const lsTransform& o) noexcept {
        thisIsFirstThenInverseSecond(*this, o);
    }
    /// this := o^-1.
    void thisIsInverseThat(const lsTransform& o) noexcept {
        *this = o;
        KitMatrix4TMInvert(matrix());
    }
    [[nodiscard]] static lsTransform inverseOf(const lsTransform& o) noexcept {
        lsTransform r;
        r.thisIsInverseThat(o);
        return r;
    }
};

static_assert(sizeof(lsTransform) == sizeof(KitMatrix4) &&
              alignof(lsTransform) == alignof(KitReal));
