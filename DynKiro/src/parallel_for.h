#pragma once
#include <Kit/KitThreadPool.h>

#include <cstddef>
#include <type_traits>
#include <vector>

/// Runs a function for several indices side by side. Keeps its units, so that a loop in steady state
/// allocates nothing.
class DynsParallelFor {
public:
    /// Calls body(i) for i below count and returns when all calls have; in turn on the calling thread
    /// without a pool. The calls must not depend on each other.
    template <typename Body>
    void run(KitThreadPool* pool, int count, Body&& body) {
        if (pool == nullptr || count < 2) {
            for (int i = 0; i < count; ++i)
                body(i);
            return;
        }
        const auto units = static_cast<std::size_t>(count);
        if (mUnits.size() < units)
            mUnits.resize(units);
        for (std::size_t i = 0; i < units; ++i) {
            mUnits[i].body = &body;
            mUnits[i].call = [](void* context, int index) {
                (*static_cast<std::remove_reference_t<Body>*>(context))(index);
            };
            mUnits[i].index = static_cast<int>(i);
        }
        KitThreadPoolExecute(pool, mUnits.data(), units);
    }

private:
    struct Unit final : KitThreadPool::WorkUnit {
        void process() override { call(body, index); }

        void (*call)(void* body, int index) = nullptr;
        void* body = nullptr;
        int index = 0;
    };

    std::vector<Unit> mUnits;
};
