#pragma once
#include <Kit/KitApi.h>

struct ColModelPair;

/// Pairs of one step in one array, by what became of them. Goodbye pairs grow upward from 0 and
/// staying pairs from the middle; hello pairs grow downward from the middle and frozen pairs from
/// the end. Hello and staying pairs are neighbours, so that one loop walks both.
struct ColModelPairContainer {
    ColModelPair** array = nullptr; ///< pairs are not owned
    int size = 0;
    int goodbyeFirst = 0, goodbyeEnd = 0;
    int helloFirst = 0;
    int helloEndStayingFirst = 0; ///< the middle, for good
    int stayingEnd = 0;
    int frozenFirst = 0, frozenEnd = 0;
};

/// Walks hello and staying pairs downward.
struct ColModelPairContainerIterator {
    ColModelPairContainer* container = nullptr;
    int unreadCurrentPairsLessThanIndex = 0;
};

/// A container that owns its array of at least 2 places; null without memory or for a negative size.
[[nodiscard]] HY_API ColModelPairContainer* ColModelPairContainerCreate(int size);
HY_API void ColModelPairContainerDestroy(ColModelPairContainer* container);
/// Makes a container of a caller's array.
HY_API void ColModelPairContainerInit(ColModelPairContainer* container, ColModelPair** array,
                                      int size);
/// Takes all pairs out.
HY_API void ColModelPairContainerReset(ColModelPairContainer* container);

/// Each adds a pair to its zone, and answers false where the zone meets its neighbour.
HY_API bool ColModelPairContainerAddGoodbye(ColModelPairContainer* container, ColModelPair* pair);
HY_API bool ColModelPairContainerAddHello(ColModelPairContainer* container, ColModelPair* pair);
HY_API bool ColModelPairContainerAddStaying(ColModelPairContainer* container, ColModelPair* pair);
HY_API bool ColModelPairContainerAddFrozen(ColModelPairContainer* container, ColModelPair* pair);

[[nodiscard]] HY_API int ColModelPairContainerGetGoodbyeCount(const ColModelPairContainer* c);
[[nodiscard]] HY_API int ColModelPairContainerGetHelloCount(const ColModelPairContainer* c);
[[nodiscard]] HY_API int ColModelPairContainerGetStayingCount(const ColModelPairContainer* c);
[[nodiscard]] HY_API int ColModelPairContainerGetFrozenCount(const ColModelPairContainer* c);
/// First pair of the zone.
[[nodiscard]] HY_API ColModelPair**
ColModelPairContainerGetGoodbyeArray(const ColModelPairContainer* c);
[[nodiscard]] HY_API ColModelPair**
ColModelPairContainerGetHelloArray(const ColModelPairContainer* c);
[[nodiscard]] HY_API ColModelPair**
ColModelPairContainerGetStayingArray(const ColModelPairContainer* c);
[[nodiscard]] HY_API ColModelPair**
ColModelPairContainerGetFrozenArray(const ColModelPairContainer* c);

/// Starts behind the last staying pair.
HY_API void ColModelPairContainerIteratorInit(ColModelPairContainerIterator* iterator,
                                              ColModelPairContainer* container);
