#pragma once
#include <Kit/KitTypes.h>

// Checks of what callers hand in.

/// Whether a number is finite; if not, warns in the name of the function.
[[nodiscard]] bool DynCheckNumber(KitReal x, const char* function);
/// The same for three numbers.
[[nodiscard]] bool DynCheckVector(const KitVector3 v, const char* function);
/// The same for the axes and the position of a transform.
[[nodiscard]] bool DynCheckTransform(const KitMatrix4 tm, const char* function);
