#pragma once
#include <Col/ColContact.h>
#include <Col/ColIntersectResult.h>
#include <Col/ColModelPairContainer.h>
#include <Kit/KitApi.h>

/// ColHello() for each hello pair, upward.
HY_API void ColHelloEach(ColModelPairContainer* container);
/// ColGoodbye() for each goodbye pair, upward.
HY_API void ColGoodbyeEach(ColModelPairContainer* container);

/// ColIntersect() for staying and then hello pairs, each zone downward, while contacts and results
/// are left. Results point into the array of contacts.
///
/// A pair waits for the next call if the contacts left are fewer than its request may hand back; one
/// that would not fit even into an empty array gets what there is.
/// @param pairsIter where to go on; left at the first pair unread
/// @return 1 if it stopped for want of room, 0 at the end of the walk
HY_API int ColIntersectEach(ColModelPairContainer* pairs, ColModelPairContainerIterator* pairsIter,
                            ColIntersectResult* resultArray, int resultArraySize, int* resultCount,
                            ColContact* contactArray, int contactArraySize, int* contactCount);
