#pragma once
#include <Kit/KitTypes.h>
#include <Kit/lsTransform.h>
#include <Kit/lsVec3.h>

/// Axis of greatest separation of two convex shapes, in the frame of shape 1.
struct OverlapAxis {
    KitReal separation = -kKitInfinity; ///< m, negative if the shapes overlap
    lsVec3 normal;                      ///< unit, from shape 2 to shape 1
    KitReal plane1 = 0; ///< height along the normal of the lowest point of shape 1, m
    KitReal plane2 = 0; ///< height of the highest point of shape 2, m
    int dims = 0;       ///< as of a contact
    int code = 0;       ///< feature that gave the axis, by the test's own numbers
};

/// Codes of box tests: a face of box 1 is kOverlapFace1 + axis, a face of box 2 is 4 axis + 3, and a
/// pair of edges is 4 (axis of box 1) + axis of box 2.
constexpr int kOverlapFace1 = 12;
[[nodiscard]] constexpr bool OverlapIsFaceOf1(int code) noexcept {
    return code >= kOverlapFace1;
}
[[nodiscard]] constexpr bool OverlapIsFaceOf2(int code) noexcept {
    return code < kOverlapFace1 && (code & 3) == 3;
}

/// Separating-axis test of two boxes (Gottschalk, Lin and Manocha, "OBBTree", 1996): the faces of
/// box 1, those of box 2, the crossed edges; of equal separations the first stays.
/// @param t12 box 2 in the frame of box 1
/// @return false once an axis separates the boxes by more than eps, or sqrt(10) eps for edges; `out`
/// then holds the code of one that does and the separation along it alone
bool overlapOBBs(OverlapAxis* out, KitReal eps, const lsVec3& r1, const lsVec3& r2,
                 const lsTransform& t12) noexcept;

/// Whether the axis of a code separates the boxes; if it does, overlapOBBs() answers false.
bool OverlapAxisSeparates(int code, KitReal eps, const lsVec3& r1, const lsVec3& r2,
                          const lsTransform& t12) noexcept;
