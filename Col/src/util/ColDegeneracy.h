#pragma once
#include <Col/ColContact.h>
#include <Col/ColSimplify.h>

/// Squared distance, m^2, and twice an area, m^2, at load; single precision, as saved scenes have it.
constexpr KitReal kInitialDegeneracy = 1e-4F;

/// Whether two contacts are one: near each other across the unit normal, and alike in their own.
[[nodiscard]] inline bool Degenerate(const ColContact& c1, const ColContact& c2,
                                     const lsVec3& normal) noexcept {
    lsVec3 d = c1.position - c2.position;
    d.substractMultiple(d.dot(normal), normal);
    return d.square_norm() < gDegeneracyMinDistance2 &&
           c1.normal.dot(c2.normal) > gDegeneracyMinCosAngle;
}

/// Two unit vectors u, v that make a right-handed frame with the unit normal.
inline void ColPlaneBasis(const lsVec3& normal, lsVec3* u, lsVec3* v) noexcept {
    const int i = normal.iLargest();
    lsVec3 other;
    other[(i + 1) % 3] = 1;
    *u = other.cross(normal);
    u->normalize();
    *v = normal.cross(*u);
}

/// Leaves one entry of each set of duplicates, all pairs in order, and answers how many are left. The
/// last entry fills the gap and is tested anew.
template <class Entry, class Same, class LaterWins>
int ColRemoveDuplicates(Entry* entries, int count, Same same, LaterWins laterWins) noexcept {
    for (int i = 0; i < count; ++i)
        for (int j = i + 1; j < count;) {
            if (!same(entries[i], entries[j])) {
                ++j;
                continue;
            }
            if (laterWins(entries[i], entries[j]))
                entries[i] = entries[j];
            entries[j] = entries[--count];
        }
    return count;
}

/// Leaves one contact of each set of duplicates, and answers how many are left. Where both lie on
/// one surface the deeper stays, else the later unless it lies on none; the last contact fills the
/// gap. All pairs, in order.
/// @param normal unit
int ColRemoveDuplicatesByPairs(ColContact* contacts, int count, const lsVec3& normal);
/// The same answer from a hash of cells of the width of the threshold, for many contacts.
int ColRemoveDuplicatesByCells(ColContact* contacts, int count, const lsVec3& normal);
