#include <Dyn/DynInertia.h>
#include <Kit/KitMessage.h>

#include <cmath>
#include <initializer_list>

namespace {

bool refuse(std::initializer_list<KitReal> numbers, const char* function) {
    for (const KitReal number : numbers) {
        if (!(number >= 0 && std::isfinite(number))) {
            KitWarning(12, "%s: mass and lengths must be finite and not negative.\n", function);
            return true;
        }
    }
    return false;
}

void setDiagonal(KitMatrix3 out, KitReal a, KitReal b, KitReal c) {
    const KitReal moments[3] = {a, b, c};
    for (int i = 0; i < 3; ++i) {
        for (int j = 0; j < 3; ++j)
            out[i][j] = i == j ? moments[i] : 0;
    }
}

} // namespace

void DynMakeInertiaTensorSphere(KitReal mass, KitReal radius, KitMatrix3 out) {
    if (refuse({mass, radius}, "DynMakeInertiaTensorSphere"))
        return;
    const KitReal moment = 0.4 * mass * radius * radius;
    setDiagonal(out, moment, moment, moment);
}

void DynMakeInertiaTensorBox(KitReal mass, KitReal x, KitReal y, KitReal z, KitMatrix3 out) {
    if (refuse({mass, x, y, z}, "DynMakeInertiaTensorBox"))
        return;
    const KitReal twelfth = mass / 12;
    setDiagonal(out, twelfth * (y * y + z * z), twelfth * (z * z + x * x),
                twelfth * (x * x + y * y));
}
