#pragma once
#include <Col/ColContact.h>
#include <Col/ColIntersectResult.h>
#include <Col/ColModel.h>
#include <Col/ColTriangleList.h>
#include <Dyn/DynBody.h>
#include <Hy/HyBridge.h>
#include <Hy/HyTriListMemProvider.h>
#include <Kit/KitMessageQueue.h>
#include <Kit/KitThreadPool.h>

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <memory>
#include <vector>

namespace Hy {

/// Body that carries a model: the root of its merged parts; null without a part.
inline const DynBody* HyBridgeRootOf(const ColModel* model) {
    return model->mBody ? model->mBody->rootParent : nullptr;
}

/// What the stepping thread is to do with a pair.
struct HyBridge::Result {
    enum Kind : int {
        kRespond,    ///< run the response of the event
        kEndContacts ///< the pair goes on without contacts: disabled, or merged into another
    };
    ColModelPair* pair = nullptr; ///< null: a model has gone meanwhile
    int place = 0;                ///< of the pair in the container
    Kind kind = kRespond;
    eIntersectEventType event = kEventCount;
    ColIntersectResult result; ///< its contacts lie in the arena
};

/// What the pairs of two bodies have given so far in batch mode.
struct HyBridge::Merged {
    Result into;                      ///< no pair: nothing
    std::vector<ColContact> contacts; ///< those of `into`

    void begin(const Result& first);
    /// @param capacity contacts above which they are simplified first
    void append(const Result& last, int capacity);
};

/// Results and contacts of one unit of work. What was handed out stays in place while the arena
/// grows, and all its memory is kept for the next step.
struct HyBridge::Arena {
    std::vector<Result> results;
    std::vector<ColContact> buffer;          ///< of the pair at hand
    Merged merged;                           ///< in batch mode
    ColTriangleList* triangleList = nullptr; ///< lent to the unit while it runs
    KitMessageQueue messages;                ///< of generators, which may run on a worker
    HyReal safeTime = 0;
    int overrun = 0; ///< pairs whose buffer had to grow

    void clear() {
        results.clear();
        mBlock = mUsed = 0;
    }
    /// A place for contacts, valid until clear().
    ColContact* store(const ColContact* contacts, int count) {
        const auto wanted = static_cast<std::size_t>(count);
        while (mBlock < mBlocks.size() && mUsed + wanted > mBlocks[mBlock].size) {
            ++mBlock;
            mUsed = 0;
        }
        if (mBlock == mBlocks.size()) {
            const std::size_t size = std::max(wanted, kBlockContacts);
            mBlocks.push_back({std::make_unique<ColContact[]>(size), size});
        }
        ColContact* place = mBlocks[mBlock].contacts.get() + mUsed;
        std::copy_n(contacts, wanted, place);
        mUsed += wanted;
        return place;
    }

private:
    static constexpr std::size_t kBlockContacts = 512;
    struct Block {
        std::unique_ptr<ColContact[]> contacts;
        std::size_t size;
    };
    std::vector<Block> mBlocks;
    std::size_t mBlock = 0, mUsed = 0;
};

/// Lists for the triangles of generators, one for each thread that intersects; units borrow them.
class HyBridge::TriangleLists {
public:
    explicit TriangleLists(const HyBridge* client) : mClient(client) { reserve(1, false); }
    TriangleLists(const TriangleLists&) = delete;
    TriangleLists& operator=(const TriangleLists&) = delete;
    ~TriangleLists() { HyTriListMemProvider::instance()->unregisterClient(mClient); }

    /// Before units run: lists for so many threads at once.
    /// @param isThreaded whether the lists are to bear the number of their thread
    void reserve(int threads, bool isThreaded) {
        HyTriListMemProvider& provider = *HyTriListMemProvider::instance();
        if (threads > static_cast<int>(mLists.size())) {
            provider.unregisterClient(mClient);
            provider.registerClient(mClient, threads,
                                    HyTriListMemProvider::kDefaultTriangleMaxCount);
            mLists.resize(static_cast<std::size_t>(threads));
            for (int i = 0; i < threads; ++i)
                mLists[static_cast<std::size_t>(i)] = provider.getTriList(mClient, i);
            mIsLent = std::make_unique<std::atomic<bool>[]>(mLists.size());
        }
        for (std::size_t i = 0; i < mLists.size(); ++i)
            mLists[i]->cacheIndex = isThreaded ? static_cast<int>(i) : -1;
    }

    /// A list for the lifetime of the loan; any thread.
    class Loan {
    public:
        explicit Loan(TriangleLists& lists) : mFrom(lists) {
            while (mIndex < lists.mLists.size() && lists.mIsLent[mIndex].exchange(true))
                ++mIndex;
        }
        Loan(const Loan&) = delete;
        Loan& operator=(const Loan&) = delete;
        ~Loan() {
            if (mIndex < mFrom.mLists.size())
                mFrom.mIsLent[mIndex].store(false);
        }
        /// Null if more threads borrow than lists were reserved.
        [[nodiscard]] ColTriangleList* list() const {
            return mIndex < mFrom.mLists.size() ? mFrom.mLists[mIndex] : nullptr;
        }

    private:
        TriangleLists& mFrom;
        std::size_t mIndex = 0;
    };

private:
    const HyBridge* mClient;
    std::vector<ColTriangleList*> mLists; ///< the provider's
    std::unique_ptr<std::atomic<bool>[]> mIsLent;
};

/// Intersects a run of pairs, by their places in the order of intersection.
class HyBridge::WorkUnit final : public KitThreadPool::WorkUnit {
public:
    void set(const HyBridge* bridge, std::size_t first, std::size_t end, HyReal time,
             Arena* arena) {
        mBridge = bridge;
        mFirst = first;
        mEnd = end;
        mTime = time;
        mArena = arena;
    }
    void process() override { mBridge->collide(mFirst, mEnd, mTime, *mArena); }

private:
    const HyBridge* mBridge = nullptr;
    std::size_t mFirst = 0, mEnd = 0;
    HyReal mTime = 0;
    Arena* mArena = nullptr;
};

} // namespace Hy
