#pragma once
#include <Kit/KitApi.h>
#include <Kit/KitTypes.h>
#include <Kit/lsTransform.h>
#include <Kit/lsVec3.h>

/// Cosine that marks an edge without a neighbour.
constexpr KitReal kCxNoMate = -2;

/// A triangle of a surface as contact generators see it. It is solid below: its normal points out of
/// what it bounds, and its vertices turn to the left about it.
///
/// The neighbour across edge i has the normal cos n + sin (u x n), u the edge's unit direction: a
/// positive sine is a ridge, a negative one a valley. Generators use it to leave out contacts of
/// edges that the surface hides, so that a body slides over a flat mesh as over a plane.
struct CxTriangleNE {
    lsVec3 mVertex[3]; ///< m
    lsVec3 mNormal;    ///< unit
    lsVec3 mEdge[3];   ///< mEdge[i] goes from vertex i to the next
    int mIndex = 0;    ///< of the owner; contacts name it as their element
    KitReal mMateNormalCos[3] = {kCxNoMate, kCxNoMate, kCxNoMate}; ///< kCxNoMate: no neighbour
    KitReal mMateNormalSin[3] = {0, 0, 0};
};

/// Sets vertices, edges, normal and index, with no neighbours.
/// @return false, with a normal of zeros, for a triangle without area or with a vertex that is not
/// finite; generators skip such a triangle
HY_API bool CxTriangleNESet(CxTriangleNE* triangle, const lsVec3& a, const lsVec3& b,
                            const lsVec3& c, int index);
/// Sets the angle to the neighbour across an edge from its unit normal.
/// @param edge 0 to 2, from vertex `edge` to the next
HY_API void CxTriangleNESetMate(CxTriangleNE* triangle, int edge, const lsVec3& mateNormal);
/// A triangle in the frame that the transform leads to.
[[nodiscard]] HY_API CxTriangleNE TransformCxTriangle(const CxTriangleNE& triangle,
                                                      const lsTransform& tm);
