#pragma once
#include <cstddef>
#include <cstdint>
#include <vector>

/// Pointers by the ids of two models: open addressing, linear probing, at most half full.
template <class Value>
class CxPairTable {
public:
    [[nodiscard]] static std::uint64_t Key(int low, int high) noexcept {
        return static_cast<std::uint64_t>(static_cast<std::uint32_t>(low)) << 32 |
               static_cast<std::uint32_t>(high);
    }
    [[nodiscard]] std::size_t GetCount() const noexcept { return mCount; }
    [[nodiscard]] std::size_t GetRoom() const noexcept { return mSlots.size() / 2; }
    /// Makes room for a number of pairs.
    void Reserve(std::size_t count) {
        std::size_t size = 16;
        while (size < 2 * count)
            size *= 2;
        if (size > mSlots.size())
            rehash(size);
    }
    /// Null if there is none.
    [[nodiscard]] Value* Find(int low, int high) const noexcept {
        const std::uint64_t key = Key(low, high);
        for (std::size_t i = home(key); mSlots[i].value != nullptr; i = next(i))
            if (mSlots[i].key == key)
                return mSlots[i].value;
        return nullptr;
    }
    /// Adds a pair that is not there yet.
    void Add(int low, int high, Value* value) {
        Reserve(mCount + 1);
        place(Key(low, high), value);
        ++mCount;
    }
    /// Takes out a pair that is there; those behind it move up, so that no mark stays.
    void Erase(int low, int high) noexcept {
        const std::uint64_t key = Key(low, high);
        std::size_t hole = home(key);
        while (mSlots[hole].key != key || mSlots[hole].value == nullptr)
            hole = next(hole);
        for (std::size_t i = next(hole); mSlots[i].value != nullptr; i = next(i)) {
            const std::size_t want = home(mSlots[i].key);
            const bool reachable = hole <= i ? want <= hole || want > i : want <= hole && want > i;
            if (reachable) {
                mSlots[hole] = mSlots[i];
                hole = i;
            }
        }
        mSlots[hole].value = nullptr;
        --mCount;
    }

private:
    struct Slot {
        std::uint64_t key = 0;
        Value* value = nullptr;
    };

    // Murmur3's finaliser: neighbouring ids spread over the table.
    [[nodiscard]] std::size_t home(std::uint64_t key) const noexcept {
        key = (key ^ key >> 33) * 0xff51afd7ed558ccdULL;
        key = (key ^ key >> 33) * 0xc4ceb9fe1a85ec53ULL;
        return static_cast<std::size_t>(key ^ key >> 33) & (mSlots.size() - 1);
    }
    [[nodiscard]] std::size_t next(std::size_t i) const noexcept {
        return (i + 1) & (mSlots.size() - 1);
    }
    void place(std::uint64_t key, Value* value) noexcept {
        std::size_t i = home(key);
        while (mSlots[i].value != nullptr)
            i = next(i);
        mSlots[i] = {key, value};
    }
    void rehash(std::size_t size) {
        std::vector<Slot> old(size);
        old.swap(mSlots);
        for (const Slot& slot : old)
            if (slot.value != nullptr)
                place(slot.key, slot.value);
    }

    std::vector<Slot> mSlots{std::vector<Slot>(16)}; ///< a power of two
    std::size_t mCount = 0;
};
