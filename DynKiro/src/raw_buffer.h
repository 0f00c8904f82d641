#pragma once
#include <Kit/KitMemory.h>
#include <Kit/KitTypes.h>

#include <cstddef>

/// Numbers on cache lines that nobody sets before their owner does: a large buffer costs only the pages
/// that are used, and those once. Keeps its capacity.
class DynsRawBuffer {
public:
    DynsRawBuffer() = default;
    ~DynsRawBuffer() { KitMemoryAPI_destroyAligned(mData); }
    DynsRawBuffer(const DynsRawBuffer&) = delete;
    DynsRawBuffer& operator=(const DynsRawBuffer&) = delete;

    /// Room for so many; what was there is lost where it had to grow.
    void makeRoom(std::size_t entries);
    [[nodiscard]] KitReal* data() { return mData; }

private:
    KitReal* mData = nullptr;
    std::size_t mCapacity = 0;
};
