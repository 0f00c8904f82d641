#pragma once
#include <Hy/HyArray.h>

#include <algorithm>
#include <cstddef>

namespace Hy {

/// Those who want to be called, in the order of adding and each once. They may come and go while
/// they are called: who has left is skipped, who comes meanwhile is not called in this round.
/// @tparam T class of the listeners, which are not owned
template <typename T>
class HyCallbackList {
public:
    /// Appends; answers false for null and for one that is there already.
    bool add(T* listener) {
        if (!listener || contains(listener))
            return false;
        mEntries.push_back(listener);
        ++mCount;
        return true;
    }

    /// Answers whether it was there.
    bool remove(T* listener) {
        if (!listener || !contains(listener))
            return false;
        --mCount;
        if (mRounds > 0)
            *std::find(mEntries.begin(), mEntries.end(), listener) = nullptr;
        else
            mEntries.eraseOnce(listener);
        return true;
    }

    [[nodiscard]] bool contains(const T* listener) const {
        return std::find(mEntries.begin(), mEntries.end(), listener) != mEntries.end();
    }
    [[nodiscard]] std::size_t size() const { return mCount; }
    [[nodiscard]] bool empty() const { return mCount == 0; }

    /// The listener at a place, null beyond the end.
    [[nodiscard]] T* at(std::size_t place) const {
        for (T* listener : mEntries)
            if (listener && place-- == 0)
                return listener;
        return nullptr;
    }

    /// Calls call(listener) for each.
    template <typename Call>
    void forEach(Call call) {
        ++mRounds;
        for (std::size_t i = 0, end = mEntries.size(); i < end; ++i)
            if (T* listener = mEntries[i])
                call(*listener);
        if (--mRounds == 0 && mEntries.size() != mCount)
            mEntries.eraseAll(nullptr);
    }

private:
    HyArray<T*> mEntries; ///< null stands for one that left during a round
    std::size_t mCount = 0;
    int mRounds = 0; ///< rounds that run, one inside the other
};

} // namespace Hy
