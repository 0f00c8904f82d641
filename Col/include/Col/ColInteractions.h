#pragma once
#include <Col/ColModelPair.h>
#include <Kit/KitApi.h>
#include <Kit/KitTypes.h>
#include <Kit/lsVec3.h>

struct ColGeometry;

struct ColDistanceRequest {
    KitReal min = 0;
    KitReal max = 1.7976931348623157e308;
    KitReal relativeError = 0;
};

struct ColDistanceResult {
    ColModelPair* pair = nullptr;
    KitReal distanceLB = 0; ///< lower bound, m
    KitReal distanceUB = 0; ///< upper bound, m
    lsVec3 point1, point2;  ///< closest points, world
    int element1 = 0, element2 = 0;
};

struct ColSafeTimeResult {
    ColModelPair* pair = nullptr;
    KitReal time = 0; ///< s
};

using ColDistanceFn = int (*)(ColModelPair* pair, ColDistanceResult* result);
using ColApproximateDistanceFn = int (*)(ColModelPair* pair, const ColDistanceRequest* request,
                                         ColDistanceResult* result);

/// The functions that serve a pair of geometry types; any may be null.
struct ColInteractions {
    ColHelloFn helloFn = nullptr;
    ColGoodbyeFn goodbyeFn = nullptr;
    ColIntersectFn intersectFn = nullptr;
    ColPathIntersectFn pathIntersectFn = nullptr;
    ColSafeTimeFn safetimeFn = nullptr;
    ColDistanceFn distanceFn = nullptr;
    ColApproximateDistanceFn approxDistanceFn = nullptr;
};

/// Chooses the functions by the pair itself.
using ColBrokerFn = const ColInteractions* (*)(ColModelPair* pair);

/// Entry of the table of interactions.
struct ColInteractionTableElement {
    KitBool swap = 0; ///< the functions expect the models the other way round
    ColInteractions interactions;
    ColBrokerFn brokerFn = nullptr;
};

/// Sets the functions of two types, for both orders: the generators see the models in the order
/// (geoType1, geoType2). Error 35 for a type that is not registered; the entry stays.
HY_API void ColInteractionTableSetElement(int geoType1, int geoType2,
                                          const ColInteractions& interactions,
                                          ColBrokerFn brokerFn);
[[nodiscard]] HY_API ColInteractionTableElement* ColInteractionTableGetElementPtr(int geoType1,
                                                                                  int geoType2);
HY_API void ColInteractionTableRegisterDistanceFn(int geoType1, int geoType2, ColDistanceFn fn);
HY_API void ColInteractionTableRegisterApproximateDistanceFn(int geoType1, int geoType2,
                                                             ColApproximateDistanceFn fn);
/// Functions of a pair; swap tells whether its models must change places. Models of one type are
/// ordered by bounding sphere, the smaller first and ties by creation, composites never.
[[nodiscard]] HY_API const ColInteractions* ColInteractionTableGetInteractions(ColModelPair* pair,
                                                                               bool* swap);
