#pragma once
#include <Kit/KitApi.h>
#include <Kit/KitTypes.h>

/// Softness of a row over one step of h seconds. A spring of stiffness k and damping d, taken
/// implicitly, adds epsilon to the row's diagonal and removes the part gamma of its error:
///   gamma = h k / (h k + d),  epsilon = 1 / (h (d + h k)).
/// (Lacoursiere, "Regularized, stabilized, variational methods for multibodies", 2007.)
struct DyncSoftness {
    KitReal epsilon;
    KitReal gamma;
    bool acts; ///< false without stiffness and damping: the row must bear no force
};

/// From a compliance 1/k: 0 is rigid, DBL_MAX no spring at all. Damping DBL_MAX leaves no softness
/// and removes nothing of the error.
[[nodiscard]] HY_API DyncSoftness DyncSoftnessFromCompliance(KitReal compliance, KitReal damping,
                                                             KitReal h);

/// The same as plain numbers, from a stiffness (DBL_MAX: rigid).
HY_API void DynConvertStiffnessDampingToEpsilonGamma(KitReal stiffness, KitReal damping,
                                                     KitReal* epsilon, KitReal* gamma, KitReal h);
/// From a compliance, without a special meaning of a damping of DBL_MAX.
HY_API void DynConvertSoftnessDampingToEpsilonGamma(KitReal softness, KitReal damping,
                                                    KitReal* epsilon, KitReal* gamma, KitReal h);
