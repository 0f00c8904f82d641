#include "HyMaterialValues.h"

#include <Hy/HyMessage.h>

#include <cmath>

namespace Hy {
namespace {

bool isAxis(int axis) {
    return axis == DyncContactMaterial::kFrictionAxisLinear ||
           (axis >= 0 && axis < DyncContactMaterial::kFrictionAxisCount);
}

} // namespace

bool HyIsMaterialNumber(HyReal value, HyMaterialRange range, const char* operation) {
    const bool mayBeNegative = range == HyMaterialRange::kFinite;
    if (std::isfinite(value) && (mayBeNegative || value >= 0))
        return true;
    HyWarning(0, "%s: the value must be finite%s.\n", operation,
              mayBeNegative ? "" : " and not negative");
    return false;
}

bool HySetMaterialNumber(HyReal& number, HyReal value, const char* operation) {
    if (!HyIsMaterialNumber(value, HyMaterialRange::kNotNegative, operation))
        return false;
    number = value;
    return true;
}

bool HySetMaterialCompliance(DyncContactMaterial& values, HyReal compliance, HyReal damping,
                             const char* operation) {
    if (!HyIsMaterialNumber(compliance, HyMaterialRange::kNotNegative, operation) ||
        !HyIsMaterialNumber(damping, HyMaterialRange::kNotNegative, operation))
        return false;
    DyncContactMaterialSetCompliance(&values, compliance, damping);
    return true;
}

bool HySetMaterialAxis(HyReal (&numbers)[DyncContactMaterial::kFrictionAxisCount], int axis,
                       HyReal value, HyMaterialRange range, const char* operation) {
    if (!isAxis(axis) || !HyIsMaterialNumber(value, range, operation))
        return false;
    DyncContactMaterialSet(numbers, axis, value);
    return true;
}

bool HySetMaterialModel(DyncContactMaterial& values, int axis, int model, const char* operation) {
    if (!isAxis(axis))
        return false;
    if (model < 0 || model > DyncContactMaterial::kFrictionModelNone) {
        HyWarning(0, "%s: the model must be one of FrictionModel.\n", operation);
        return false;
    }
    DyncContactMaterialSet(values.model, axis,
                           static_cast<DyncContactMaterial::FrictionModel>(model));
    return true;
}

} // namespace Hy
