#pragma once
#include <Col/ColInteractions.h>
#include <Col/ColIntersectResult.h>
#include <Col/ColModelPair.h>
#include <Kit/KitApi.h>
#include <Kit/KitTypes.h>
#include <Kit/lsVec3.h>

struct ColRequest;

// The life of a pair and what may be asked of it. The order of a pair's models is settled by its
// hello, and all results are stated in it. A pair without models, geometries or transforms, or a
// missing result, is refused with the message of the fault: no contacts, no touch, answer 0.

using ColHelloCallbackFn = void (*)(ColModelPair* pair, void* data);

/// Called by each ColHello(), before the functions are bound: it may set the pair's request. Null
/// removes it.
HY_API void ColSetHelloCallback(ColHelloCallbackFn fn, void* data);
[[nodiscard]] HY_API ColHelloCallbackFn ColGetHelloCallback();
[[nodiscard]] HY_API void* ColGetHelloCallbackData();

/// Binds the functions that serve the pair and puts its models in the order that they expect.
HY_API void ColHello(ColModelPair* pair);
/// The same with a request and without the callback. @param request null for the default, not owned
HY_API void ColHelloWithRequest(ColModelPair* pair, ColRequest* request);
/// Ends what the hello began; the generator's memory dies here.
HY_API void ColGoodbye(ColModelPair* pair);

/// Whether the boxes of the two models overlap or touch.
[[nodiscard]] HY_API bool ColNearby(ColModelPair* pair);

/// Contacts of the pair at the present transforms. Contacts name the pair's models, those of a
/// composite its children.
/// @return 1, or 0 if no function serves the pair
HY_API int ColIntersect(ColModelPair* pair, ColIntersectResult* result);
/// ColIntersect() with both models moved by their velocities about their centres of mass; the
/// models themselves stay. Sets safeTime to the time.
/// @param time s
HY_API int ColIntersectAt(ColModelPair* pair, ColIntersectResult* result, KitReal time);
/// Contacts at the first touch within the motion of `time` seconds. A pair without a path function,
/// or with no fast model, is intersected at the present transforms.
/// @return as ColIntersect()
HY_API int ColPathIntersect(ColModelPair* pair, ColIntersectResult* result, KitReal time);

/// A time, s, up to which the two models cannot touch, at most maxTime.
/// @return 1 if a function serves the pair; without one the time is maxTime
HY_API int ColSafeTime(ColModelPair* pair, KitReal maxTime, ColSafeTimeResult* result);
/// Distance of the two models, points in the pair's order; without a function the bounds of
/// ColApproximateDistance().
HY_API int ColDistance(ColModelPair* pair, ColDistanceResult* result);
/// Bounds of the distance. Without a function both are the largest number, and the answer is 0.
/// @param request null for the default
HY_API int ColApproximateDistance(ColModelPair* pair, const ColDistanceRequest* request,
                                  ColDistanceResult* result);
HY_API void ColDistanceRequestInit(ColDistanceRequest* request);
