#pragma once
#include <Kit/KitApi.h>

/// Widest set of vector instructions that kernels may use; each has all those before it.
enum class KitVectorSet : int {
    kPortable, ///< what every machine of the build has
    kAvx2,     ///< AVX2 and FMA: 4 reals a register
    kAvx512    ///< AVX-512F: 8 reals a register
};

/// What the processor has, asked once a process; safe at any time, also while statics are made.
[[nodiscard]] HY_API KitVectorSet KitProcessorGetVectorSet() noexcept;
