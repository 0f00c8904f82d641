#include <Dync/DyncSoftness.h>

namespace {

DyncSoftness fromStiffness(KitReal k, KitReal d, KitReal h) {
    if (k == 0 && d == 0)
        return {0, 0, false};
    if (!(h * k <= kKitInfinity)) // as of a compliance below 1/DBL_MAX
        return {0, 1, true};
    return {1 / (h * (d + h * k)), h * k / (h * k + d), true};
}

KitReal inverse(KitReal compliance) {
    return compliance == kKitInfinity ? 0 : 1 / compliance;
}

} // namespace

DyncSoftness DyncSoftnessFromCompliance(KitReal compliance, KitReal damping, KitReal h) {
    if (damping == kKitInfinity)
        return {0, 0, true};
    if (compliance == 0)
        return {0, 1, true};
    return fromStiffness(inverse(compliance), damping, h);
}

void DynConvertStiffnessDampingToEpsilonGamma(KitReal stiffness, KitReal damping, KitReal* epsilon,
                                              KitReal* gamma, KitReal h) {
    DyncSoftness softness{0, 1, true};
    if (damping == kKitInfinity)
        softness.gamma = 0;
    else if (stiffness != kKitInfinity)
        softness = fromStiffness(stiffness, damping, h);
    *epsilon = softness.epsilon;
    *gamma = softness.gamma;
}

void DynConvertSoftnessDampingToEpsilonGamma(KitReal softness, KitReal damping, KitReal* epsilon,
                                             KitReal* gamma, KitReal h) {
    const DyncSoftness result =
        softness == 0 ? DyncSoftness{0, 1, true} : fromStiffness(inverse(softness), damping, h);
    *epsilon = result.epsilon;
    *gamma = result.gamma;
}
