#pragma once
#include "OverlapOBBs.h"

#include <Kit/KitTypes.h>
#include <Kit/lsTransform.h>
#include <Kit/lsVec3.h>

#include <cstdint>

/// Share by which boxes grow before edges are clipped against them: corners that coincide but for
/// rounding are then inside, whatever the pose.
constexpr KitReal kClipSlack = 4e-6;

/// Candidate points of contact, frame of shape 1, each with the index of the shape that bears it.
struct CandidateList {
    static constexpr int kRoom = 48;

    void add(const lsVec3& point, int surface) noexcept {
        if (count == kRoom)
            return;
        points[count] = point;
        surfaces[count++] = static_cast<std::int8_t>(surface);
    }

    // Not set beforehand: only the first `count` are read.
    union {
        lsVec3 points[kRoom];
    };
    std::int8_t surfaces[kRoom];
    int count = 0;

    CandidateList() noexcept {}
};

/// Clips the line centre + t half, t between the values that t0 and t1 have at the call, to a box
/// about the origin; false if nothing is left.
bool ClipSegmentToBox(const lsVec3& centre, const lsVec3& half, const lsVec3& radii, KitReal* t0,
                      KitReal* t1) noexcept;

/// Adds the ends of the edges of a box, clipped to another box about the origin.
/// @param edgeBox the box with the edges, in the frame of the other
/// @param vertexSurface index of points that are corners of the box with the edges; others get -1
void BoxEdgeBoxIntersect(CandidateList* list, const lsVec3& edgeRadii, const lsTransform& edgeBox,
                         const lsVec3& radii, int vertexSurface) noexcept;

/// All points where an edge of one box meets the other, frame of box 1.
/// @param t12 box 2 in the frame of box 1
void BoxBoxIntersect(CandidateList* list, const lsTransform& t12, const lsVec3& r1,
                     const lsVec3& r2) noexcept;

/// A corner of the part of a face that lies over another face.
struct FaceClipPoint {
    lsVec3 position;    ///< frame of the reference box, on the incident face
    KitReal separation; ///< height over the reference face, m
};

/// Clips the face of one box that looks most towards a face of another against that face's sides
/// (Sutherland and Hodgman, "Reentrant Polygon Clipping", 1974).
/// @param incident box that is clipped, in the frame of the reference box
/// @param axis,sign the reference face, which has the outward normal sign e_axis
/// @param out room for 8
/// @return count of points; -1 if the incident face is too steep to stand for its box
int ClipIncidentFace(FaceClipPoint* out, const lsVec3& referenceRadii, int axis, KitReal sign,
                     const lsVec3& incidentRadii, const lsTransform& incident) noexcept;
