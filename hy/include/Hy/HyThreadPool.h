#pragma once
#include <Kit/KitSemaphore.h>
#include <Kit/KitThreadPool.h>

#include <cstddef>
#include <vector>

namespace Hy {

using HySemaphore = KitSemaphore;
/// The frame's workers; the low layers use the same pool.
using HyThreadPool = KitThreadPool;

/// Runs all units of a vector on the pool and returns when they have run, see KitThreadPoolExecute().
template <class Unit>
void HyThreadPoolExecute(HyThreadPool* pool, std::vector<Unit>& units) {
    KitThreadPoolExecute(pool, units);
}

/// The same for `count` units of an array.
template <class Unit>
void HyThreadPoolExecute(HyThreadPool* pool, Unit* units, std::size_t count) {
    KitThreadPoolExecute(pool, units, count);
}

} // namespace Hy
