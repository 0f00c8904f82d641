#pragma once
#include <Kit/KitApi.h>

struct ColModelPair;

/// An array of pairs in zones. Goodbye pairs grow upwards from 0 and hello pairs downwards from the
/// middle, staying pairs upwards from the middle, so that hello and staying are neighbours, and frozen
/// pairs downwards from the end.
struct ColModelPairContainer {
    ColModelPair** array = nullptr;
    int size = 0;
    int goodbyeFirst = 0, goodbyeEnd = 0;
    int helloFirst = 0;
    int helloEndStayingFirst = 0; ///< the middle, which never moves
    int stayingEnd = 0;
    int frozenFirst = 0, frozenEnd = 0;
};

/// Where a walk over the staying and hello pairs stands, see ColIntersectEach().
struct ColModelPairContainerIterator {
    ColModelPairContainer* container = nullptr;
    int unreadCurrentPairsLessThanIndex = 0;
};

/// Lays empty zones over an array of a caller's, of at least 2 entries.
HY_API void ColModelPairContainerInit(ColModelPairContainer* container, ColModelPair** array,
                                      int size);
/// A container with an array of its own; a size below 2 counts as 2. Owned by the caller.
[[nodiscard]] HY_API ColModelPairContainer* ColModelPairContainerCreate(int size);
/// Destroys a container made by ColModelPairContainerCreate(). Null: nothing.
HY_API void ColModelPairContainerDestroy(ColModelPairContainer* container);
/// Empties the zones.
HY_API void ColModelPairContainerReset(ColModelPairContainer* container);
HY_API void ColModelPairContainerIteratorInit(ColModelPairContainerIterator* iterator,
                                              ColModelPairContainer* container);

[[nodiscard]] HY_API int ColModelPairContainerGetGoodbyeCount(const ColModelPairContainer* c);
[[nodiscard]] HY_API int ColModelPairContainerGetHelloCount(const ColModelPairContainer* c);
[[nodiscard]] HY_API int ColModelPairContainerGetStayingCount(const ColModelPairContainer* c);
[[nodiscard]] HY_API int ColModelPairContainerGetFrozenCount(const ColModelPairContainer* c);
[[nodiscard]] HY_API ColModelPair** ColModelPairContainerGetGoodbyeArray(ColModelPairContainer* c);
[[nodiscard]] HY_API ColModelPair** ColModelPairContainerGetHelloArray(ColModelPairContainer* c);
[[nodiscard]] HY_API ColModelPair** ColModelPairContainerGetStayingArray(ColModelPairContainer* c);
[[nodiscard]] HY_API ColModelPair** ColModelPairContainerGetFrozenArray(ColModelPairContainer* c);
