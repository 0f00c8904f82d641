#pragma once
#include <Kit/KitApi.h>
#include <Kit/KitTypes.h>

#include <cstdint>

/// What is asked of the contact generation of a pair.
struct ColRequest {
    std::uint32_t contactMaxCount = 4; ///< most contacts that the pair may hand back
    int faceNormalsFirst = 0;          ///< prefer contacts of faces
    KitReal collinearThreshold = 0.1;
    /// Share of a model's size that a fast model may penetrate in one sub-step.
    KitReal maxPenetrationFactor = 0.1;
    int groupMaxCount = 4;              ///< most groups of contacts of about one normal
    KitReal groupTolerance = 0.5;       ///< cosine above which two normals belong to one group
    int computeGroupContactSurface = 0; ///< fill the area of each group
    int groupNormalMethod = 0;          ///< 0 first contact's, 1 mean, 3 mean weighted by depth
    /// Distance under which contacts of two steps are one contact, m.
    KitReal contactMatchingEpsilon = 0.001;
    int twoContactsSimplifyMethod = 0;
};

/// Sets the defaults above.
HY_API void ColRequestInit(ColRequest* request);
/// The request of pairs that have no other; never null.
[[nodiscard]] HY_API ColRequest* ColGetDefaultRequestPtr();
/// Replaces the default request; null restores the built-in one. Not owned.
HY_API void ColSetDefaultRequestPtr(ColRequest* request);
