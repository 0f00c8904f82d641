#include <Kit/KitInertia.h>
#include <Kit/KitMessage.h>
#include <Kit/KitVector.h>
#include <cmath>

void TetraMassProp(KitSolidMoments* moments, const KitVector3 a, const KitVector3 b,
                   const KitVector3 c, const KitVector3 d) {
    const KitReal* const corners[4] = {a, b, c, d};
    KitVector3 p[4], sum = {0, 0, 0};
    for (int i = 0; i < 4; ++i) {
        KitVector3Subtract(p[i], corners[i], moments->origin);
        KitVector3Add(sum, sum, p[i]);
    }
    if (!KitVector3IsFinite(sum)) {
        KitWarning(0, "TetraMassProp: points must be finite.\n");
        return;
    }
    KitVector3 ab, ac, ad, normal;
    KitVector3Subtract(ab, p[1], p[0]);
    KitVector3Subtract(ac, p[2], p[0]);
    KitVector3Subtract(ad, p[3], p[0]);
    KitVector3Cross(normal, ac, ad);
    const KitReal volume = KitVector3Dot(ab, normal) / 6;

    moments->volume += volume;
    KitVector3AddScaled(moments->first, moments->first, volume / 4, sum);
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j) {
            KitReal square = sum[i] * sum[j];
            for (const KitVector3& corner : p)
                square += corner[i] * corner[j];
            moments->second[i][j] += volume / 20 * square;
        }
}

bool buildInertiaTensor(KitMatrix3 inertia, KitVector3 centre, KitReal* volume,
                        const KitSolidMoments& moments) {
    if (moments.volume == 0 || !std::isfinite(moments.volume))
        return false;
    if (moments.volume < 0)
        KitWarning(0, "buildInertiaTensor: volume must be positive; it is negated.\n");
    const KitReal sign = moments.volume < 0 ? -1 : 1;
    *volume = sign * moments.volume;

    KitVector3 arm; // from the origin of the moments to the centre of mass
    KitVector3Scale(arm, moments.first, 1 / moments.volume);
    KitMatrix3 C;
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j)
            C[i][j] = sign * moments.second[i][j] - *volume * arm[i] * arm[j];
    const KitReal trace = C[0][0] + C[1][1] + C[2][2];
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j)
            inertia[i][j] = (i == j ? trace : 0) - C[i][j];
    KitVector3Add(centre, moments.origin, arm);
    return true;
}
