#include <Hy/HyTriListMemProvider.h>

#include <Col/ColTriangleList.h>
#include <Hy/HyMessage.h>

namespace Hy {

HyTriListMemProvider* HyTriListMemProvider::instance() {
    static HyTriListMemProvider provider;
    return &provider;
}

HyTriListMemProvider::HyTriListMemProvider()
    : mDefaultTriList(createTriList(kDefaultTriangleMaxCount)) {}

HyTriListMemProvider::~HyTriListMemProvider() {
    for (const auto& [client, lists] : mTriListArrays)
        for (ColTriangleList* list : lists)
            destroyTriList(list);
    destroyTriList(mDefaultTriList);
}

void HyTriListMemProvider::registerClient(const void* client, int listCount, int maxTriangles) {
    if (!client || listCount < 1 || maxTriangles < 0) {
        HyWarning(0, "HyTriListMemProvider::registerClient: a client, at least one list and a room "
                     "that is not negative are needed.\n");
        return;
    }
    const auto [place, isNew] = mTriListArrays.try_emplace(client);
    for (int i = 0; isNew && i < listCount; ++i)
        place->second.push_back(createTriList(maxTriangles));
}

void HyTriListMemProvider::unregisterClient(const void* client) {
    const auto found = mTriListArrays.find(client);
    if (found == mTriListArrays.end())
        return;
    for (ColTriangleList* list : found->second)
        destroyTriList(list);
    mTriListArrays.erase(found);
}

ColTriangleList* HyTriListMemProvider::getTriList(const void* client, int index) const {
    const auto found = mTriListArrays.find(client);
    if (found == mTriListArrays.end()) {
        HyFatalError(0, "HyTriListMemProvider::getTriList client not registered.\n");
        return nullptr;
    }
    const auto& lists = found->second;
    if (index < 0 || static_cast<std::size_t>(index) >= lists.size()) {
        HyFatalError(0, "HyTriListMemProvider::getTriList: the index must be below the number of "
                        "lists.\n");
        return nullptr;
    }
    return lists[static_cast<std::size_t>(index)];
}

int HyTriListMemProvider::getTriListCount(const void* client) const {
    const auto found = mTriListArrays.find(client);
    return found == mTriListArrays.end() ? 0 : static_cast<int>(found->second.size());
}

ColTriangleList* HyTriListMemProvider::createTriList(int maxTriangles) {
    return ColTriangleListCreate(maxTriangles);
}

void HyTriListMemProvider::destroyTriList(ColTriangleList* list) {
    ColTriangleListDestroy(list);
}

} // namespace Hy
