#pragma once
#include <Hy/HyBase.h>
#include <Hy/SortedVector.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace Hy {
template <class Object>
class HySafeWalk;

/// Objects in the order of creation, not owned, which come and go while HySafeWalk goes through them.
template <class Object>
class HyWalkedObjects : public SortedVector<Object*, HyCreationOrder> {
public:
    HyWalkedObjects() = default;
    HyWalkedObjects(const HyWalkedObjects&) = delete;
    HyWalkedObjects& operator=(const HyWalkedObjects&) = delete;

    /// False, and no change, if the object is here already.
    bool insert(Object* object) {
        if (!SortedVector<Object*, HyCreationOrder>::insert(object))
            return false;
        for (HySafeWalk<Object>* walk = mWalks; walk; walk = walk->mOuter)
            walk->noteJoined(object->getSerial());
        return true;
    }

private:
    friend class HySafeWalk<Object>;
    mutable HySafeWalk<Object>* mWalks = nullptr; ///< under way, the one that began last first
};

/// Goes through objects in the order of creation while call-backs change what is there:
///
///     for (HySafeWalk walk(mParts); HyPart* part = walk.next();)
///         part->preStep();
///
/// An object that has left is not visited, nor one that has joined since the walk began. The walk
/// holds no object, only serials, so that any may be deleted once it has left; the collection itself
/// must outlive the walk. Walks may be nested. One allocates only when an older object joins.
template <class Object>
class HySafeWalk {
public:
    explicit HySafeWalk(const HyWalkedObjects<Object>& objects)
        : mObjects(objects), mEnd(objects.empty() ? 0 : serialAt(objects.size() - 1)),
          mOuter(objects.mWalks) {
        objects.mWalks = this;
    }
    HySafeWalk(const HySafeWalk&) = delete;
    HySafeWalk& operator=(const HySafeWalk&) = delete;
    ~HySafeWalk() { mObjects.mWalks = mOuter; }

    /// The next object, null at the end.
    [[nodiscard]] Object* next() {
        // Where nothing has changed in front of it, the last object still stands before mNext.
        const bool isUnmoved =
            mNext == 0 ? mLast == 0 : mNext <= mObjects.size() && serialAt(mNext - 1) == mLast;
        if (!isUnmoved)
            mNext = placeAfterLast();
        while (mNext < mObjects.size() && hasJoined(serialAt(mNext)))
            ++mNext;
        if (mNext >= mObjects.size() || serialAt(mNext) > mEnd)
            return nullptr;
        mLast = serialAt(mNext);
        return mObjects[mNext++];
    }

private:
    friend class HyWalkedObjects<Object>;

    void noteJoined(std::uint64_t serial) {
        if (serial > mLast && serial <= mEnd)
            mJoined.push_back(serial);
    }
    [[nodiscard]] bool hasJoined(std::uint64_t serial) const {
        return std::find(mJoined.begin(), mJoined.end(), serial) != mJoined.end();
    }
    [[nodiscard]] std::uint64_t serialAt(std::size_t i) const { return mObjects[i]->getSerial(); }

    [[nodiscard]] std::size_t placeAfterLast() const {
        const auto place = std::upper_bound(mObjects.begin(), mObjects.end(), mLast,
                                            [](std::uint64_t serial, const HyBase* object) {
                                                return serial < object->getSerial();
                                            });
        return static_cast<std::size_t>(place - mObjects.begin());
    }

    const HyWalkedObjects<Object>& mObjects;
    const std::uint64_t mEnd; ///< serial of the youngest object when the walk began
    HySafeWalk* const mOuter; ///< walk through the same objects, under way around this one
    std::uint64_t mLast = 0;  ///< serial of the object visited last
    std::size_t mNext = 0;    ///< its place, plus one, if nothing has moved
    std::vector<std::uint64_t> mJoined; ///< serials up to mEnd that have joined ahead
};

} // namespace Hy
