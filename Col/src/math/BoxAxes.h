#pragma once
#include "OverlapOBBs.h"

#include <Kit/KitTypes.h>
#include <Kit/lsTransform.h>
#include <Kit/lsVec3.h>

#include <span>

/// The axis of a test of two boxes, by its code, and the separation along it in m.
struct BoxAxis {
    KitReal separation = -kKitInfinity;
    int code = 0;
};

/// Finds the axis of greatest separation, or one that separates the boxes by more than eps, or
/// sqrt(10) eps for edges: then the answer is false. Also false, with the separation as it was made,
/// where nothing compares because the transform is not finite.
/// @param t12 box 2 in the frame of box 1
using BoxAxesKernel = bool (*)(BoxAxis* out, KitReal eps, const lsVec3& r1, const lsVec3& r2,
                               const lsTransform& t12) noexcept;

/// The kernels that this processor can run, fastest first. All give the same bits: none fuses
/// multiply and add, and each lane sums in the order of the others.
[[nodiscard]] std::span<const BoxAxesKernel> BoxAxesKernels() noexcept;

/// Squared sine below which two edges count as parallel, and their cross product as noise.
constexpr KitReal kBoxParallelSquareSine = 4e-5;

bool BoxAxesPortable(BoxAxis* out, KitReal eps, const lsVec3& r1, const lsVec3& r2,
                     const lsTransform& t12) noexcept;
#if defined(__x86_64__)
bool BoxAxesAvx2(BoxAxis* out, KitReal eps, const lsVec3& r1, const lsVec3& r2,
                 const lsTransform& t12) noexcept;
#endif
