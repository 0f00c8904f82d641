#include "kit/KitTestSupport.h"
#include "kit/MathRandom.h"
#include <Kit/KitEigen3.h>
#include <Kit/KitInertia.h>
#include <Eigen/Eigenvalues>
#include <algorithm>
#include <array>
#include <limits>
#include <string>
#include <vector>

namespace {
using RowMajor3 = Eigen::Matrix<double, 3, 3, Eigen::RowMajor>;

/// The six tetrahedra from an apex to the sides of a box of half extents e about a centre, turned by
/// a rotation; inside out if asked for.
KitSolidMoments boxMoments(const Eigen::Vector3d& e, const Eigen::Matrix3d& R,
                           const Eigen::Vector3d& centre, const Eigen::Vector3d& apex,
                           bool insideOut) {
    KitSolidMoments moments;
    KitVector3Copy(moments.origin, centre.data());
    for (int axis = 0; axis < 3; ++axis)
        for (const double side : {-1.0, 1.0}) {
            const int u = (axis + 1) % 3, v = (axis + 2) % 3;
            std::array<Eigen::Vector3d, 4> corner; // counterclockwise from outside
            for (std::size_t n = 0; n < 4; ++n) {
                Eigen::Vector3d p;
                p[axis] = side * e[axis];
                p[u] = (n == 0 || n == 3 ? -1 : 1) * side * e[u];
                p[v] = (n < 2 ? -1 : 1) * e[v];
                corner[n] = centre + R * p;
            }
            if (insideOut)
                std::swap(corner[1], corner[3]);
            TetraMassProp(&moments, apex.data(), corner[0].data(), corner[1].data(),
                          corner[2].data());
            TetraMassProp(&moments, apex.data(), corner[0].data(), corner[2].data(),
                          corner[3].data());
        }
    return moments;
}

TEST(KitInertiaTest, BoxFromItsSurface) {
    const WarningRecorder warnings;
    MathRandom random(31);
    for (const bool insideOut : {false, true}) {
        std::vector<std::string> expected;
        if (insideOut)
            expected = {"0: buildInertiaTensor: volume must be positive; it is negated.\n"};
        for (int n = 0; n < 50; ++n) {
            const Eigen::Vector3d e(random.real(0.1, 2), random.real(0.1, 2), random.real(0.1, 2));
            const Eigen::Matrix3d R = random.rotation().toRotationMatrix();
            const Eigen::Vector3d centre = random.vector(10), apex = centre + random.vector(3);
            RowMajor3 inertia;
            Eigen::Vector3d found;
            double volume = 0;
            ASSERT_TRUE(buildInertiaTensor(reinterpret_cast<KitReal(*)[3]>(inertia.data()),
                                           found.data(), &volume,
                                           boxMoments(e, R, centre, apex, insideOut)));
            const double mass = 8 * e.prod();
            const Eigen::Vector3d square = e.cwiseAbs2();
            const Eigen::Vector3d moments =
                mass / 3 * (Eigen::Vector3d::Constant(square.sum()) - square);
            EXPECT_NEAR(volume, mass, 1e-12 * mass + 1e-12);
            EXPECT_LT((found - centre).norm(), 1e-10);
            EXPECT_LT((inertia - R * moments.asDiagonal() * R.transpose()).norm(), 1e-10);
            EXPECT_EQ(warnings.take(), expected);
        }
    }
}

TEST(KitInertiaTest, NoVolumeIsNoSolid) {
    const WarningRecorder warnings;
    KitMatrix3 inertia;
    KitVector3 centre = {7, 7, 7};
    double volume = 7;
    KitSolidMoments moments;
    const KitVector3 a = {0, 0, 0}, b = {1, 0, 0}, c = {0, 1, 0};
    const KitVector3 bad = {0, 0, std::numeric_limits<double>::infinity()};
    TetraMassProp(&moments, a, b, c, c);
    EXPECT_FALSE(buildInertiaTensor(inertia, centre, &volume, moments));
    EXPECT_TRUE(warnings.take().empty());
    TetraMassProp(&moments, a, b, c, bad);
    EXPECT_EQ(warnings.take(),
              std::vector<std::string>{"0: TetraMassProp: points must be finite.\n"});
    EXPECT_FALSE(buildInertiaTensor(inertia, centre, &volume, moments));
    EXPECT_EQ(volume, 7);
    EXPECT_EQ(centre[0], 7);
}

TEST(KitEigen3Test, AgreesWithEigenOnAnySpectrum) {
    MathRandom random(32);
    for (int n = 0; n < 500; ++n) {
        Eigen::Vector3d values = random.vector(5);
        if (n % 3 == 1)
            values[1] = values[0]; // a plane of eigenvectors
        if (n % 3 == 2)
            values[2] *= 1e-8;
        const Eigen::Matrix3d Q = random.rotation().toRotationMatrix();
        RowMajor3 tensor = Q * values.asDiagonal() * Q.transpose(), axes;
        tensor = RowMajor3((tensor + tensor.transpose()) / 2);
        const RowMajor3 before = tensor;
        const int sweeps = jacobi3x3(reinterpret_cast<KitReal(*)[3]>(tensor.data()),
                                     reinterpret_cast<KitReal(*)[3]>(axes.data()), 10);
        EXPECT_LT(sweeps, 10) << "converges quadratically";
        EXPECT_LT((axes * tensor * axes.transpose() - before).norm(), 1e-13 * 5);
        EXPECT_LT((axes * axes.transpose() - RowMajor3::Identity()).norm(), 1e-14);
        EXPECT_NEAR(axes.determinant(), 1, 1e-14);
        Eigen::Vector3d found = tensor.diagonal();
        std::sort(found.data(), found.data() + 3);
        const Eigen::SelfAdjointEigenSolver<Eigen::Matrix3d> solver(before);
        EXPECT_LT((found - solver.eigenvalues()).norm(), 1e-13 * 5);
    }
}

TEST(KitEigen3Test, ScalesWithItsMatrix) {
    const KitMatrix3 tensor = {{3, 1, 0.5}, {1, 2, -1}, {0.5, -1, 4}};
    KitMatrix3 expected, axes;
    std::copy_n(&tensor[0][0], 9, &expected[0][0]);
    jacobi3x3(expected, axes, 10);
    for (const double scale : {0x1p-600, 0x1p600}) { // the squares are out of range
        KitMatrix3 scaled;
        for (int i = 0; i < 3; ++i)
            for (int j = 0; j < 3; ++j)
                scaled[i][j] = scale * tensor[i][j];
        EXPECT_LT(jacobi3x3(scaled, axes, 10), 10) << scale;
        for (int i = 0; i < 3; ++i)
            EXPECT_EQ(scaled[i][i], scale * expected[i][i]) << scale;
    }
}

} // namespace
