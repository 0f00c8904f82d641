#pragma once
#include <Hy/HyBase.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <type_traits>

namespace Hy {

/// Goes through a collection of objects in the order of creation while call-backs change it:
///
///     for (HySafeWalk walk(mParts); HyPart* part = walk.next();)
///         part->preStep();
///
/// An object that has left the collection is not visited, nor one that was created after the walk
/// began. An older one that joins meanwhile is visited if its place is still ahead. The walk holds
/// no object, only the serial of the last, so that any may be deleted once it has left the
/// collection; the collection itself must outlive the walk.
/// @tparam Collection a SortedVector of pointers to objects, in HyCreationOrder
template <class Collection>
class HySafeWalk {
public:
    explicit HySafeWalk(const Collection& collection)
        : mCollection(collection), mEnd(collection.empty() ? 0 : serialAt(collection.size() - 1)) {}

    /// The next object, null at the end.
    [[nodiscard]] auto next() {
        using Object = std::remove_cvref_t<decltype(mCollection[0])>;
        // Where nothing has changed in front of it, the last object still stands before mNext.
        const bool isUnmoved =
            mNext == 0 ? mLast == 0 : mNext <= mCollection.size() && serialAt(mNext - 1) == mLast;
        if (!isUnmoved)
            mNext = placeAfterLast();
        if (mNext >= mCollection.size() || serialAt(mNext) > mEnd)
            return Object(nullptr);
        mLast = serialAt(mNext);
        return mCollection[mNext++];
    }

private:
    [[nodiscard]] std::uint64_t serialAt(std::size_t i) const {
        return mCollection[i]->getSerial();
    }

    [[nodiscard]] std::size_t placeAfterLast() const {
        const auto place = std::upper_bound(mCollection.begin(), mCollection.end(), mLast,
                                            [](std::uint64_t serial, const HyBase* object) {
                                                return serial < object->getSerial();
                                            });
        return static_cast<std::size_t>(place - mCollection.begin());
    }

    const Collection& mCollection;
    const std::uint64_t mEnd; ///< serial of the youngest object when the walk began
    std::uint64_t mLast = 0;  ///< serial of the object visited last
    std::size_t mNext = 0;    ///< its place, plus one, if nothing has moved
};

} // namespace Hy
