#include "DynChecks.h"

#include <Kit/KitMessage.h>
#include <Kit/KitVector.h>

bool DynCheckNumber(KitReal x, const char* function) {
    if (std::isfinite(x))
        return true;
    KitWarning(12, "%s: the number must be finite.\n", function);
    return false;
}

bool DynCheckVector(const KitVector3 v, const char* function) {
    if (KitVector3IsFinite(v))
        return true;
    KitWarning(12, "%s: the vector must be finite.\n", function);
    return false;
}

bool DynCheckTransform(const KitMatrix4 tm, const char* function) {
    if (KitVector3IsFinite(tm[0]) && KitVector3IsFinite(tm[1]) && KitVector3IsFinite(tm[2]) &&
        KitVector3IsFinite(tm[3]))
        return true;
    KitWarning(12, "%s: the transform must be finite.\n", function);
    return false;
}
