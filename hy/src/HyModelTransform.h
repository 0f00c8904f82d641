#pragma once
#include <Hy/HyTransform.h>
#include <Kit/lsTransform.h>

namespace Hy {

/// A transform as the collision layer sees it: the same numbers.
inline lsTransform* HyModelTransform(HyTransform& tm) {
    return &lsTransform::cast(tm.m);
}
inline const lsTransform* HyModelTransform(const HyTransform& tm) {
    return &lsTransform::constCast(tm.m);
}

} // namespace Hy
