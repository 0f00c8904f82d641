#pragma once
#include <Hy/HyMessage.h>
#include <Hy/HyTypes.h>

#include <cmath>

namespace Hy {

/// Whether a length can be the size of a shape; if not, warns in the name of the operation.
inline bool HyIsSize(HyReal length, const char* operation) {
    if (length > 0 && std::isfinite(length))
        return true;
    HyWarning(0, "%s: a size must be finite and larger than 0.\n", operation);
    return false;
}
/// The length, or 1 after the warning.
inline HyReal HySizeOr1(HyReal length, const char* operation) {
    return HyIsSize(length, operation) ? length : 1;
}

} // namespace Hy
