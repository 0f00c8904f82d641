#pragma once
#include <Dyn/DynWorld.h>
#include <Kit/KitThreadPool.h>

#include <array>

/// Packs or unpacks up to 32 partitions.
class ProcessPartitionWorkUnit : public KitThreadPool::WorkUnit {
public:
    static constexpr int kMaxCount = 32;
    using Function = void (*)(DynWorldThreadData*);

    void reset(Function function) {
        fn = function;
        count = 0;
    }
    void add(DynWorldThreadData* partition) { data[static_cast<std::size_t>(count++)] = partition; }
    [[nodiscard]] bool isFull() const { return count == kMaxCount; }
    /// Calls fn on each partition in order and forgets them.
    void process() override;

private:
    std::array<DynWorldThreadData*, kMaxCount> data{};
    Function fn = nullptr;
    int count = 0;
};
