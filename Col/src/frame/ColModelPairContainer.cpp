#include <Col/ColMessage.h>
#include <Col/ColModelPairContainer.h>
#include <Kit/KitMemory.h>
#include <Kit/KitMessage.h>

#include <algorithm>
#include <cstddef>
#include <new>

namespace {
/// Both halves have room then.
constexpr int kMinSize = 2;

bool isContainer(const void* container, const char* caller) {
    if (!container)
        ColMistake(kColErrorNullPointer, caller);
    return container != nullptr;
}

/// Puts a pair at the upper end of a zone.
bool addAbove(ColModelPairContainer& c, int& end, int limit, ColModelPair* pair) {
    if (end >= limit)
        return false;
    c.array[end++] = pair;
    return true;
}

/// Puts a pair at the lower end of a zone.
bool addBelow(ColModelPairContainer& c, int& first, int limit, ColModelPair* pair) {
    if (first <= limit)
        return false;
    c.array[--first] = pair;
    return true;
}
} // namespace

ColModelPairContainer* ColModelPairContainerCreate(int size) {
    if (size < 0) {
        KitWarning(0, "ColModelPairContainerCreate: size must not be negative.\n");
        return nullptr;
    }
    size = std::max(size, kMinSize);
    void* memory = KitMemoryAPI_create(sizeof(ColModelPairContainer) +
                                       static_cast<std::size_t>(size) * sizeof(ColModelPair*));
    if (!memory)
        return nullptr;
    auto* container = new (memory) ColModelPairContainer;
    auto** array = reinterpret_cast<ColModelPair**>(container + 1);
    std::fill_n(array, size, nullptr);
    ColModelPairContainerInit(container, array, size);
    return container;
}

void ColModelPairContainerDestroy(ColModelPairContainer* container) {
    KitMemoryAPI_destroy(container);
}

void ColModelPairContainerInit(ColModelPairContainer* container, ColModelPair** array, int size) {
    if (!isContainer(container, "in ColModelPairContainerInit."))
        return;
    *container = {.array = array, .size = array ? std::max(size, 0) : 0};
    container->helloEndStayingFirst = container->size / 2;
    ColModelPairContainerReset(container);
}

void ColModelPairContainerReset(ColModelPairContainer* container) {
    if (!isContainer(container, "in ColModelPairContainerReset."))
        return;
    container->goodbyeFirst = container->goodbyeEnd = 0;
    container->helloFirst = container->stayingEnd = container->helloEndStayingFirst;
    container->frozenFirst = container->frozenEnd = container->size;
}

bool ColModelPairContainerAddGoodbye(ColModelPairContainer* container, ColModelPair* pair) {
    return isContainer(container, "in ColModelPairContainerAddGoodbye.") &&
           addAbove(*container, container->goodbyeEnd, container->helloFirst, pair);
}

bool ColModelPairContainerAddHello(ColModelPairContainer* container, ColModelPair* pair) {
    return isContainer(container, "in ColModelPairContainerAddHello.") &&
           addBelow(*container, container->helloFirst, container->goodbyeEnd, pair);
}

bool ColModelPairContainerAddStaying(ColModelPairContainer* container, ColModelPair* pair) {
    return isContainer(container, "in ColModelPairContainerAddStaying.") &&
           addAbove(*container, container->stayingEnd, container->frozenFirst, pair);
}

bool ColModelPairContainerAddFrozen(ColModelPairContainer* container, ColModelPair* pair) {
    return isContainer(container, "in ColModelPairContainerAddFrozen.") &&
           addBelow(*container, container->frozenFirst, container->stayingEnd, pair);
}

int ColModelPairContainerGetGoodbyeCount(const ColModelPairContainer* c) {
    return c ? c->goodbyeEnd - c->goodbyeFirst : 0;
}

int ColModelPairContainerGetHelloCount(const ColModelPairContainer* c) {
    return c ? c->helloEndStayingFirst - c->helloFirst : 0;
}

int ColModelPairContainerGetStayingCount(const ColModelPairContainer* c) {
    return c ? c->stayingEnd - c->helloEndStayingFirst : 0;
}

int ColModelPairContainerGetFrozenCount(const ColModelPairContainer* c) {
    return c ? c->frozenEnd - c->frozenFirst : 0;
}

ColModelPair** ColModelPairContainerGetGoodbyeArray(const ColModelPairContainer* c) {
    return c ? c->array + c->goodbyeFirst : nullptr;
}

ColModelPair** ColModelPairContainerGetHelloArray(const ColModelPairContainer* c) {
    return c ? c->array + c->helloFirst : nullptr;
}

ColModelPair** ColModelPairContainerGetStayingArray(const ColModelPairContainer* c) {
    return c ? c->array + c->helloEndStayingFirst : nullptr;
}

ColModelPair** ColModelPairContainerGetFrozenArray(const ColModelPairContainer* c) {
    return c ? c->array + c->frozenFirst : nullptr;
}

void ColModelPairContainerIteratorInit(ColModelPairContainerIterator* iterator,
                                       ColModelPairContainer* container) {
    if (!iterator || !container)
        ColMistake(kColErrorNullPointer, "in ColModelPairContainerIteratorInit.");
    else
        *iterator = {container, container->stayingEnd};
}
