#pragma once
#include <Col/ColScratch.h>
#include <Col/ColTriangleList.h>

#include "../math/triutils.h"
#include "IxPair.h"

#include <algorithm>
#include <cstddef>
#include <span>

/// Contacts that a pair with a list may hold before they are reduced for the first time.
constexpr int kIxTriangleListBufferSize = 400;

/// A list of the calling thread, for callers that bring none: filled and read within one call.
[[nodiscard]] ColTriangleList* IxThreadTriangleList();

/// The triangles of a pair's list, model2, that may touch its solid, model1.
struct IxNearTriangles {
    /// Asks the generators of the list for what lies near the solid.
    /// @param userList takes the triangles; null takes one of the calling thread
    IxNearTriangles(ColModelPair* pair, const IxPairFrame& frame, ColTriangleList* userList);
    /// What lies within a box in the frame of the list.
    IxNearTriangles(ColModelPair* pair, const IxPairFrame& frame, const lsVec3& lowCorner,
                    const lsVec3& highCorner, ColTriangleList* userList);

    [[nodiscard]] bool isNear(const CxTriangleNE& triangle) const noexcept {
        return !QuickDisjointAABBTri(triangle, low, high) && triangle.mNormal.square_norm() > 0;
    }

    std::span<const CxTriangleNE> triangles; ///< frame of the list
    lsVec3 low, high;                        ///< box of the solid, frame of the list
    lsTransform listInSolid;                 ///< frame of the list in that of the solid

private:
    void gather(ColModelPair* pair, ColTriangleList* userList);
};

/// Buffer of contacts on the way; those of one triangle always fit.
class IxTriangleContactBuffer {
public:
    IxTriangleContactBuffer(ColModelPair* pair, const ColIntersectResult& result,
                            const lsTransform& solid, int size) noexcept;
    [[nodiscard]] TriangleContacts* out() noexcept { return &mOut; }
    /// Reduces what there is so that another triangle's contacts fit.
    void makeRoom() noexcept;
    /// Reduces all into the result; the answer is whether one remains.
    int simplifyInto(ColIntersectResult* result) noexcept;

private:
    /// Memory of a contact, not set beforehand.
    union RawContact {
        RawContact() noexcept {}
        ColContact contact;
    };
    ColScratchScope mScratch;
    ColIntersectResult mWork;
    TriangleContacts mOut;
};

/// Contacts of a solid and a list.
/// @param kernel kernel(out, triangle, eps), the triangle in the frame of the solid
template <class Kernel>
int IxTriangleListIntersect(ColModelPair* pair, ColIntersectResult* result, Kernel&& kernel,
                            int bufferSize = kIxTriangleListBufferSize) {
    const IxPairFrame frame(*pair);
    const IxNearTriangles near(pair, frame, result->userTriangleList);
    if (IxMaxContacts(*pair, *result) == 0) {
        for (const CxTriangleNE& triangle : near.triangles)
            if (near.isNear(triangle) &&
                kernel(nullptr, TransformCxTriangle(triangle, near.listInSolid), frame.eps) != 0)
                return IxTouchOnly(result);
        return IxNoContact(result);
    }
    IxTriangleContactBuffer buffer(pair, *result, frame.tm1, bufferSize);
    for (const CxTriangleNE& triangle : near.triangles) {
        if (!near.isNear(triangle))
            continue;
        buffer.makeRoom();
        kernel(buffer.out(), TransformCxTriangle(triangle, near.listInSolid), frame.eps);
    }
    return buffer.simplifyInto(result);
}
