#pragma once
#include <Hy/HyTypes.h>

#include <Dync/DyncContactMaterial.h>

namespace Hy {

// Checked writes into the numbers of a material, with the operation that warns. Each answers whether
// it wrote; an axis out of range is left silently.

/// Which numbers a value may have.
enum class HyMaterialRange { kNotNegative, kFinite };

[[nodiscard]] bool HyIsMaterialNumber(HyReal value, HyMaterialRange range, const char* operation);
bool HySetMaterialNumber(HyReal& number, HyReal value, const char* operation);
bool HySetMaterialCompliance(DyncContactMaterial& values, HyReal compliance, HyReal damping,
                             const char* operation);
bool HySetMaterialAxis(HyReal (&numbers)[DyncContactMaterial::kFrictionAxisCount], int axis,
                       HyReal value, HyMaterialRange range, const char* operation);
bool HySetMaterialModel(DyncContactMaterial& values, int axis, int model, const char* operation);

} // namespace Hy
