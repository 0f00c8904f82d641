#pragma once
#include <Col/ColContact.h>
#include <Col/ColIntersectResult.h>
#include <Hy/HyBridge.h>
#include <Kit/KitThreadPool.h>

#include <algorithm>
#include <cstddef>
#include <memory>
#include <vector>

namespace Hy {

/// What the stepping thread is to do with a pair.
struct HyBridge::Result {
    enum Kind : int {
        kRespond,        ///< run the response of the event
        kGoodbyeDisabled ///< a disabled pair that touched: end its contacts
    };
    ColModelPair* pair = nullptr; ///< null: a model has gone meanwhile
    Kind kind = kRespond;
    eIntersectEventType event = kEventCount;
    ColIntersectResult result; ///< its contacts lie in the arena
};

/// Results and contacts of one unit of work. What was handed out stays in place while the arena
/// grows, and all its memory is kept for the next step.
struct HyBridge::Arena {
    std::vector<Result> results;
    std::vector<ColContact> buffer; ///< of the pair at hand
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

/// Intersects a run of pairs.
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
