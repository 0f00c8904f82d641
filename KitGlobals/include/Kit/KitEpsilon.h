#pragma once
#include <Kit/KitTypes.h>

/// Keeps a division by a length finite, and tells parallel unit vectors by their dot product.
constexpr KitReal kKitEpsilon = 1e-14;
