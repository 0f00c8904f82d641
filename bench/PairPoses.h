#pragma once
#include <Kit/lsTransform.h>

#include <array>
#include <cmath>

constexpr int kPoses = 64;

/// A gap of a pair of shapes above each other.
struct PairGap {
    const char* name;
    KitReal separation; ///< m
};
constexpr PairGap kPairGaps[] = {{"apart", 0.1}, {"touching", -0.001}, {"deep", -0.2}};

/// Poses over another shape, each turned a little more about the upright.
/// @param height of the origin, m
/// @param isRound whether the shapes touch where their centres are above each other; others shift
inline std::array<lsTransform, kPoses> PairPoses(KitReal height, bool isRound) {
    const KitReal shift = isRound ? 0 : 0.004; // m a pose
    std::array<lsTransform, kPoses> poses;
    for (int i = 0; i < kPoses; ++i) {
        lsTransform& tm = poses[static_cast<std::size_t>(i)];
        tm.row[0][0] = tm.row[1][1] = std::cos(0.1 * i);
        tm.row[0][1] = std::sin(0.1 * i);
        tm.row[1][0] = -tm.row[0][1];
        tm.t() = lsVec3(shift * i, 10 * shift, height);
    }
    return poses;
}
