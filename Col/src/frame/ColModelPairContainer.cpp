#include <Col/ColModelPairContainer.h>

#include <algorithm>
#include <cstddef>

namespace {

constexpr int kMinSize = 2; ///< one place below and one above the middle

} // namespace

void ColModelPairContainerInit(ColModelPairContainer* container, ColModelPair** array, int size) {
    *container = ColModelPairContainer{};
    container->array = array;
    container->size = size;
    container->helloEndStayingFirst = size / 2;
    ColModelPairContainerReset(container);
}

ColModelPairContainer* ColModelPairContainerCreate(int size) {
    const int room = std::max(size, kMinSize);
    auto* container = new ColModelPairContainer;
    ColModelPairContainerInit(container, new ColModelPair*[static_cast<std::size_t>(room)](), room);
    return container;
}

void ColModelPairContainerDestroy(ColModelPairContainer* container) {
    if (container != nullptr)
        delete[] container->array;
    delete container;
}

void ColModelPairContainerReset(ColModelPairContainer* container) {
    container->goodbyeFirst = container->goodbyeEnd = 0;
    container->helloFirst = container->stayingEnd = container->helloEndStayingFirst;
    container->frozenFirst = container->frozenEnd = container->size;
}

void ColModelPairContainerIteratorInit(ColModelPairContainerIterator* iterator,
                                       ColModelPairContainer* container) {
    iterator->container = container;
    iterator->unreadCurrentPairsLessThanIndex = container->stayingEnd;
}

int ColModelPairContainerGetGoodbyeCount(const ColModelPairContainer* c) {
    return c->goodbyeEnd - c->goodbyeFirst;
}

int ColModelPairContainerGetHelloCount(const ColModelPairContainer* c) {
    return c->helloEndStayingFirst - c->helloFirst;
}

int ColModelPairContainerGetStayingCount(const ColModelPairContainer* c) {
    return c->stayingEnd - c->helloEndStayingFirst;
}

int ColModelPairContainerGetFrozenCount(const ColModelPairContainer* c) {
    return c->frozenEnd - c->frozenFirst;
}

ColModelPair** ColModelPairContainerGetGoodbyeArray(ColModelPairContainer* c) {
    return c->array + c->goodbyeFirst;
}

ColModelPair** ColModelPairContainerGetHelloArray(ColModelPairContainer* c) {
    return c->array + c->helloFirst;
}

ColModelPair** ColModelPairContainerGetStayingArray(ColModelPairContainer* c) {
    return c->array + c->helloEndStayingFirst;
}

ColModelPair** ColModelPairContainerGetFrozenArray(ColModelPairContainer* c) {
    return c->array + c->frozenFirst;
}
