#pragma once
#include <Col/ColContact.h>
#include <Col/ColIntersectResult.h>
#include <Kit/KitApi.h>
#include <Kit/KitTypes.h>
#include <Kit/lsVec3.h>

struct ColRequest;

/// Not 0: each group keeps its deepest contact.
extern HY_API int gColContactSimplifyDeepestFirst;
/// Squared distance across the normal, m^2, below which two contacts are one; see
/// ColSetContactDegeneracyThreshold().
extern HY_API KitReal gDegeneracyMinDistance2;
/// Twice the area, m^2, above which three contacts span a triangle.
extern HY_API KitReal gColContactSimplifyGroupEpsilon;
extern HY_API KitReal gDegeneracyMinCosAngle;

/// A contact of zeros with no surface named.
HY_API void ColContactInit(ColContact* contact);
/// Turns a contact to the view from the other model.
HY_API void ColContactInvert(ColContact* contact);
/// 0 for 1, 1 for 0, anything else gives -1.
[[nodiscard]] constexpr std::int16_t ColSwitchSurfaceIndex(std::int16_t index) noexcept {
    return index == 0 ? std::int16_t{1} : index == 1 ? std::int16_t{0} : kColSurfaceNone;
}
/// Point of the contact on the surface of model1 (side 0) or model2 (side 1).
HY_API void ColContactGetPosition(const ColContact* contact, int side, lsVec3* outPosition);

/// Distance, m, and cosine of normals within which two contacts are one.
HY_API void ColSetContactDegeneracyThreshold(KitReal minDistance, KitReal minCosAngle);
HY_API void ColGetContactDegeneracyThreshold(KitReal* outDistance, KitReal* outCos);

/// Reduces contacts to those that the result's pair asks for: groups by normal, no duplicates, and in
/// each group a convex outline with the deepest point. Contacts that are not finite are dropped.
/// @param contacts reordered in place; may not be those of the result
/// @param normal representative normal, in and out
/// @param result takes contacts and groups; has a pair, anything else is fatal
/// @return the contacts written to result->contacts: at most contactMaxCount of the request for each
/// group, and at most contactMaxCount of the result
HY_API int ColContactSimplify(lsVec3* normal, ColContact* contacts, int count,
                              ColIntersectResult* result);
/// The same for contacts of about one normal. From 9 contacts asked for no outline is made.
/// @param outSurface null, or takes the area of the outline, m^2
HY_API int ColContactSimplifyGroup(const lsVec3& normal, ColContact* contacts, int count,
                                   ColContact* outContacts, int maxContacts,
                                   const ColRequest& request, KitReal* outSurface);
/// ColContactSimplify(), then stores normal and count in the result.
HY_API void ColContactSimplifyBufferToResult(lsVec3* normal, ColContact* contacts, int count,
                                             ColIntersectResult* result, const char* callerName);
/// Simplifies a result in place.
HY_API void ColContactSimplifyResult(ColIntersectResult* result);
/// The same for contacts of convex shapes whose crossings of an edge with a face (surfaceIndex -1)
/// share the depth that the outline lost.
HY_API void ColSimplifyConvexContacts(ColContact* contacts, int count, ColIntersectResult* result,
                                      KitReal separation);
