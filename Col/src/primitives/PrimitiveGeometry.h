#pragma once
#include <Col/ColGeometry.h>
#include <Kit/KitMessage.h>
#include <Kit/KitTypes.h>
#include <Kit/lsTransform.h>
#include <Kit/lsVec3.h>

#include <cmath>

/// Skin of the solids that have a hole of the same shape, m.
constexpr KitReal kColDefaultSkin = 1e-5;

inline const lsTransform& ColTransformOrIdentity(const lsTransform* tm) noexcept {
    static constexpr lsTransform kIdentity;
    return tm != nullptr ? *tm : kIdentity;
}

/// A length that a shape can have: finite and positive.
inline bool ColIsLength(KitReal length) noexcept {
    return length > 0 && std::isfinite(length);
}

/// Stores a world box of the first `axes` axes where the caller wants it.
inline void ColStoreBounds(const lsVec3& lower, const lsVec3& upper, int axes, lsVec3* minCorner,
                           lsVec3* maxCorner, KitReal* boundsOut) noexcept {
    for (int i = 0; i < axes; ++i) {
        if (minCorner != nullptr)
            (*minCorner)[i] = lower[i];
        if (maxCorner != nullptr)
            (*maxCorner)[i] = upper[i];
        if (boundsOut != nullptr) {
            boundsOut[2 * i] = lower[i];
            boundsOut[2 * i + 1] = upper[i];
        }
    }
}

/// World box of a shape that is symmetric about its origin: extent(i) is half its width along world
/// axis i, m.
template <int kAxes, class Extent>
void ColStoreSymmetricBounds(const lsTransform& tm, Extent&& extent, lsVec3* minCorner,
                             lsVec3* maxCorner, KitReal* boundsOut) noexcept {
    lsVec3 half;
    for (int i = 0; i < kAxes; ++i)
        half[i] = extent(i);
    ColStoreBounds(tm.t() - half, tm.t() + half, kAxes, minCorner, maxCorner, boundsOut);
}

/// Sine of an angle from its cosine, a component of a unit vector.
inline KitReal ColSineOf(KitReal cosine) noexcept {
    return std::sqrt(std::fmax(1 - cosine * cosine, 0.0));
}

/// Unit vector of the x-y part of d, the x axis for a d along z.
inline lsVec3 ColRadialDirection(const lsVec3& d) noexcept {
    lsVec3 radial(d[0], d[1], 0);
    return radial.normalize() > 0 ? radial : lsVec3(1, 0, 0);
}

/// Mass properties of a body of revolution about z.
inline void ColStoreRevolvedMass(ColMassProperties* out, KitReal mass, KitReal centreZ,
                                 KitReal inertiaX, KitReal inertiaZ) noexcept {
    *out = ColMassProperties{};
    out->mass = mass;
    out->centre = lsVec3(0, 0, centreZ);
    out->inertia[0][0] = out->inertia[1][1] = inertiaX;
    out->inertia[2][2] = inertiaZ;
}
