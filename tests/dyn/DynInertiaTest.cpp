#include <Dyn/DynInertia.h>
#include "kit/KitTestSupport.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <vector>

namespace {

// The solids cut into small cubes, each a point mass at its middle.
template <class Inside>
void sumCubes(int cubes, KitReal half, Inside inside, KitReal mass, KitReal moments[3]) {
    KitReal count = 0, sums[3] = {0, 0, 0};
    const auto middle = [&](int i) { return half * ((2.0 * i + 1) / cubes - 1); };
    for (int i = 0; i < cubes; ++i) {
        for (int j = 0; j < cubes; ++j) {
            for (int k = 0; k < cubes; ++k) {
                const KitReal x = middle(i), y = middle(j), z = middle(k);
                if (!inside(x, y, z))
                    continue;
                count += 1;
                sums[0] += y * y + z * z;
                sums[1] += z * z + x * x;
                sums[2] += x * x + y * y;
            }
        }
    }
    for (int i = 0; i < 3; ++i)
        moments[i] = mass * sums[i] / count;
}

void expectMoments(const KitMatrix3 tensor, const KitReal moments[3], KitReal relative) {
    for (int i = 0; i < 3; ++i) {
        for (int j = 0; j < 3; ++j) {
            const KitReal expected = i == j ? moments[i] : 0;
            EXPECT_NEAR(tensor[i][j], expected, relative * expected) << i << j;
        }
    }
}

TEST(DynInertiaTest, SolidsHaveTheMomentsOfTheirPieces) {
    KitReal moments[3];
    KitMatrix3 tensor;
    sumCubes(
        80, 2, [](KitReal x, KitReal y, KitReal z) { return x * x + y * y + z * z < 4; }, 3,
        moments);
    DynMakeInertiaTensorSphere(3, 2, tensor);
    expectMoments(tensor, moments, 3e-3);

    sumCubes(
        80, 2, [](KitReal x, KitReal y, KitReal) { return std::abs(x) < 0.5 && std::abs(y) < 1; },
        5, moments);
    DynMakeInertiaTensorBox(5, 1, 2, 4, tensor);
    expectMoments(tensor, moments, 3e-3);
}

TEST(DynInertiaTest, RefusesNegativeAndUnboundedNumbers) {
    const WarningRecorder warnings;
    KitMatrix3 tensor = {{7, 7, 7}, {7, 7, 7}, {7, 7, 7}};
    DynMakeInertiaTensorSphere(-1, 1, tensor);
    DynMakeInertiaTensorSphere(1, std::numeric_limits<KitReal>::quiet_NaN(), tensor);
    DynMakeInertiaTensorBox(1, 1, 1, std::numeric_limits<KitReal>::infinity(), tensor);
    DynMakeInertiaTensorBox(1, -1, 1, 1, tensor);
    const std::string sphere = "12: DynMakeInertiaTensorSphere",
                      box = "12: DynMakeInertiaTensorBox";
    const std::string demand = ": mass and lengths must be finite and not negative.\n";
    EXPECT_EQ(warnings.take(), (std::vector<std::string>{sphere + demand, sphere + demand,
                                                         box + demand, box + demand}));
    EXPECT_EQ(tensor[1][2], 7);
    EXPECT_EQ(tensor[0][0], 7);
}

} // namespace
