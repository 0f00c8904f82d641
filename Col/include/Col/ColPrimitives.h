#pragma once
#include <Kit/KitApi.h>

/// Registers the types of primitives.
HY_API void ColPrimitivesRegisterTypes();
/// Registers the contact generators of pairs of primitives; after their types.
HY_API void ColPrimitivesRegisterInteractions();
