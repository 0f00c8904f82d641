#pragma once
#include <Hy/HyTypes.h>

#include <map>
#include <vector>

struct ColTriangleList;

namespace Hy {

/// Lists of triangles for those who intersect: generators fill the list of a query, never the shared
/// geometry, so that queries on several threads do not meet. One of the process.
class HY_API HyTriListMemProvider {
public:
    /// Room of a list that asks for none; a list grows as generators fill it.
    static constexpr int kDefaultTriangleMaxCount = 128;

    static HyTriListMemProvider* instance();
    HyTriListMemProvider(const HyTriListMemProvider&) = delete;
    HyTriListMemProvider& operator=(const HyTriListMemProvider&) = delete;

    /// Makes the lists of a client, one for each of its threads; nothing for a client that has some.
    /// A null client, or a count below 1: a warning, and nothing happens.
    /// @param client stands for itself alone, never read
    void registerClient(const void* client, int listCount, int maxTriangles);
    /// Destroys the lists of a client; nothing for one that is not registered.
    void unregisterClient(const void* client);
    /// A list of a client, owned by the provider. A client that is not registered, or an index out of
    /// its range, is fatal.
    [[nodiscard]] ColTriangleList* getTriList(const void* client, int index) const;
    /// Number of lists of a client, 0 for one that is not registered.
    [[nodiscard]] int getTriListCount(const void* client) const;
    /// For queries of the stepping thread.
    [[nodiscard]] ColTriangleList* getDefaultTriList() const { return mDefaultTriList; }

    /// A list of the caller's own, for destroyTriList(). Without a room that ColTriangleListCreate()
    /// grants: its warning, and null.
    [[nodiscard]] static ColTriangleList* createTriList(int maxTriangles);
    /// Null is allowed.
    static void destroyTriList(ColTriangleList* list);

private:
    HyTriListMemProvider();
    ~HyTriListMemProvider();

    ColTriangleList* mDefaultTriList;
    std::map<const void*, std::vector<ColTriangleList*>>
        mTriListArrays; ///< looked up, never walked
};

} // namespace Hy
