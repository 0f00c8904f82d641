#include "kit/MathRandom.h"
#include <Kit/KitMatrix3.h>
#include <Kit/KitMatrix4.h>
#include <Kit/KitMatrixPrint.h>
#include <Eigen/LU>
#include <cstdlib>
#include <limits>
#include <numbers>
#include <string>

namespace {
using std::numbers::pi;
constexpr double kRounding = 1e-13;
using RowMajor3 = Eigen::Matrix<double, 3, 3, Eigen::RowMajor>;

Eigen::Matrix3d toEigen(const KitMatrix3 m) {
    return Eigen::Map<const RowMajor3>(m[0]);
}

void randomMatrix(KitMatrix3 m, MathRandom& random) {
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j)
            m[i][j] = random.real(-2, 2);
}

TEST(KitMatrix3Test, InversesAgreeWithEigen) {
    MathRandom random(21);
    for (int n = 0; n < 200; ++n) {
        KitMatrix3 a, inverse;
        randomMatrix(a, random);
        const Eigen::Matrix3d expected = toEigen(a).inverse();
        const double tolerance = kRounding * expected.norm() * expected.norm();
        ASSERT_TRUE(KitMatrix3Invert(inverse, a));
        EXPECT_LT((toEigen(inverse) - expected).norm(), tolerance);
        KitReal rows[3][4];
        ASSERT_TRUE(KitMatrix3InvertTo3x4(a, rows[0], rows[1], rows[2]));
        EXPECT_EQ(rows[2][1], inverse[2][1]);

        EXPECT_FALSE(KitMatrix3SymmetricInvert(a)) << "not symmetric";
        for (int i = 0; i < 3; ++i)
            for (int j = 0; j < i; ++j)
                a[i][j] = a[j][i];
        const Eigen::Matrix3d symmetric = toEigen(a);
        ASSERT_TRUE(KitMatrix3SymmetricInvert(a));
        EXPECT_LT((symmetric * toEigen(a) - Eigen::Matrix3d::Identity()).norm(),
                  kRounding * symmetric.norm() * toEigen(a).norm());
        EXPECT_EQ(toEigen(a), toEigen(a).transpose());
        ASSERT_TRUE(KitMatrix3Invert(a, a)) << "in place";
        EXPECT_LT((toEigen(a) - symmetric).norm(), 1e-8);
    }
}

TEST(KitMatrix3Test, SingularMatricesStay) {
    KitMatrix3 singular = {{1, 2, 3}, {2, 4, 6}, {3, 6, 9}};
    KitMatrix3 nan = {{1, 0, 0}, {0, std::numeric_limits<double>::quiet_NaN(), 0}, {0, 0, 1}};
    const Eigen::Matrix3d before = toEigen(singular);
    EXPECT_FALSE(KitMatrix3SymmetricInvert(singular));
    EXPECT_FALSE(KitMatrix3Invert(singular, singular));
    EXPECT_FALSE(KitMatrix3Invert(nan, nan));
    EXPECT_EQ(toEigen(singular), before);
    EXPECT_EQ(nan[0][0], 1);
}

TEST(KitMatrix3Test, FactorsReproduceThePermutedMatrix) {
    MathRandom random(22);
    for (int n = 0; n < 200; ++n) {
        KitMatrix3 a, L, U;
        randomMatrix(a, random);
        if (n % 4 == 0)
            a[0][0] = 0; // wants a swap
        int swapped[3];
        KitVector3 scale;
        ASSERT_TRUE(KitMatrix3LUDecompose(L, U, a, swapped, scale));
        Eigen::Matrix3d permuted = toEigen(a);
        for (int k = 0; k < 3; ++k)
            permuted.row(k).swap(permuted.row(swapped[k]));
        EXPECT_LT((toEigen(L) * toEigen(U) - permuted).norm(), kRounding * 10);
        EXPECT_EQ(toEigen(L).diagonal(), Eigen::Vector3d::Ones());
        EXPECT_TRUE(toEigen(L).isLowerTriangular(0) && toEigen(U).isUpperTriangular(0));
        for (int i = 0; i < 3; ++i)
            EXPECT_DOUBLE_EQ(scale[i] * toEigen(a).row(i).cwiseAbs().maxCoeff(), 1);
    }
    const KitMatrix3 zero = {};
    KitMatrix3 L, U;
    int swapped[3];
    KitVector3 scale;
    EXPECT_FALSE(KitMatrix3LUDecompose(L, U, zero, swapped, scale));
}

// The simple angles, as images of axes: clockwise about x and z, counterclockwise about y.
TEST(KitMatrix3Test, EulerAnglesAreProductsOfElementaryRotations) {
    MathRandom random(23);
    for (int n = 0; n < 300; ++n) {
        const double x = random.real(-pi, pi), y = random.real(-1.5, 1.5), z = random.real(-pi, pi);
        KitMatrix3 m, X, Y, Z;
        KitMatrix3FromEulerAngles(m, x, y, z);
        KitMatrix3MakeRotationX(X, x);
        KitMatrix3MakeRotationY(Y, y);
        KitMatrix3MakeRotationZ(Z, z);
        EXPECT_LT((toEigen(m) - toEigen(X) * toEigen(Y) * toEigen(Z)).norm(), kRounding);
        const auto turn = [](double angle, int axis) {
            return Eigen::AngleAxisd(angle, Eigen::Vector3d::Unit(axis)).toRotationMatrix();
        };
        EXPECT_LT((toEigen(m).transpose() - turn(-z, 2) * turn(y, 1) * turn(-x, 0)).norm(),
                  kRounding);
        KitVector3 euler;
        KitMatrix3GetEulerAngles(m, euler);
        EXPECT_NEAR(euler[0], x, 1e-11);
        EXPECT_NEAR(euler[1], y, 1e-11);
        EXPECT_NEAR(euler[2], z, 1e-11);
    }
    for (const double y : {pi / 2, -pi / 2}) {
        KitMatrix4 tm, again;
        KitMatrix4SetIdentity(tm);
        KitMatrix4SetIdentity(again);
        KitMatrix4TMSetRotationFromEulerAngles(tm, 0.4, y, 0.3);
        KitVector3 euler;
        KitMatrix4TMGetEulerAngles(tm, euler);
        EXPECT_EQ(euler[0], 0);
        KitMatrix4TMSetRotationFromEulerAngles(again, euler[0], euler[1], euler[2]);
        EXPECT_LT((rotationOf(tm) - rotationOf(again)).norm(), 1e-7);
    }
    KitVector3 euler;
    const KitMatrix3 beyond = {{0, 0, -1 - 1e-12}, {0, 1, 0}, {1, 0, 0}}; // sine above 1
    KitMatrix3GetEulerAngles(beyond, euler);
    EXPECT_DOUBLE_EQ(euler[1], pi / 2);
}

TEST(KitMatrix3Test, ToleranceIsRelativeToTheElement) {
    struct Case {
        double element, reference, tolerance;
        bool near;
    };
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const Case cases[] = {{2, 1, 0.51, true},         // |1 - 2| / 2, not / 1
                          {1, 2, 0.51, false},        // |2 - 1| / 1
                          {0.009, 0.001, 0.01, true}, // both small
                          {0.009, 0.02, 0.01, false}, {0.02, 0.009, 0.01, false},
                          {nan, 1, 0.1, false},       {1, nan, 0.1, false}};
    for (const Case& c : cases)
        EXPECT_EQ(KitRealIsNear(c.element, c.reference, c.tolerance), c.near)
            << c.element << " and " << c.reference;
}

TEST(KitMatrix4Test, IsTMSeesEveryFault) {
    struct Case {
        const char* name;
        int i, j;
        double change;
        bool valid;
    };
    const Case cases[] = {
        {"untouched", 0, 0, 0, true},
        {"far away", 3, 0, 1e6, true},
        {"rounding", 1, 1, 1e-9, true},
        {"stretched", 0, 0, 1e-3, false},
        {"sheared", 0, 1, 1e-3, false},
        {"mirrored", 2, 2, -2, false},
        {"fourth column", 1, 3, 1e-3, false},
        {"last element", 3, 3, 1e-3, false},
        {"not a number", 2, 1, std::numeric_limits<double>::quiet_NaN(), false},
    };
    for (const Case& c : cases) {
        KitMatrix4 tm;
        KitMatrix4SetIdentity(tm);
        tm[c.i][c.j] += c.change;
        EXPECT_EQ(KitMatrix4IsTM(tm, 1e-7) != 0, c.valid) << c.name;
        const bool moved = c.i == 3 && c.j == 0;
        EXPECT_EQ(KitMatrix4IsIdentity(tm, 1e-7) != 0, c.valid && !moved) << c.name;
    }
}

// A column-vector matrix of B C (B first) is that of C times that of B.
TEST(KitMatrix4Test, CompoundsAgreeWithEigenAndMayAlias) {
    using Compound = void (*)(KitReal(*)[4], const KitReal(*)[4], const KitReal(*)[4]) noexcept;
    struct Case {
        const char* name;
        Compound compound;
        bool invertFirst, invertSecond;
    };
    const Case cases[] = {{"plain", KitMatrix4TMCompound, false, false},
                          {"inverse second", KitMatrix4TMCompoundInverseSecond, false, true},
                          {"inverse first", KitMatrix4TMCompoundInverseFirst, true, false}};
    MathRandom random(24);
    for (int n = 0; n < 100; ++n)
        for (const Case& c : cases) {
            KitMatrix4 a, b, r;
            storeTransform(a, random.rotation().toRotationMatrix(), random.vector(3));
            storeTransform(b, random.rotation().toRotationMatrix(), random.vector(3));
            const Eigen::Matrix4d A = columnForm(a), B = columnForm(b);
            const Eigen::Matrix4d first = c.invertFirst ? Eigen::Matrix4d(A.inverse()) : A;
            const Eigen::Matrix4d second = c.invertSecond ? Eigen::Matrix4d(B.inverse()) : B;
            c.compound(r, a, b);
            EXPECT_LT((columnForm(r) - second * first).norm(), kRounding) << c.name;
            KitMatrix4 alias;
            KitMatrix4Copy(alias, a);
            c.compound(alias, alias, b);
            EXPECT_EQ(columnForm(alias), columnForm(r)) << c.name;
            c.compound(b, a, b);
            EXPECT_EQ(columnForm(b), columnForm(r)) << c.name;
        }
}

TEST(KitMatrix4Test, UpdateMovesTheGivenPointByItsVelocityAlone) {
    MathRandom random(26);
    for (int n = 0; n < 200; ++n) {
        KitMatrix4 tm, moved;
        storeTransform(tm, random.rotation().toRotationMatrix(), random.vector(3));
        const Eigen::Vector3d v = random.vector(3), a = random.vector(3), w = random.vector(9);
        const Eigen::Vector3d point = random.vector(1);
        const double h = random.real(0.001, 0.3);
        KitMatrix4TMUpdateFromVelocitiesAndLinearAccelAroundCOM(
            moved, 1e-4, h, v.data(), a.data(), w.data(), point.data(), tm, nullptr);
        const Eigen::Vector4d local = point.homogeneous();
        const Eigen::Vector3d way = ((columnForm(moved) - columnForm(tm)) * local).head<3>();
        EXPECT_LT((way - h * v - 0.5 * h * h * a).norm(), kRounding);
        const Eigen::AngleAxisd turn(w.norm() * h, w.normalized());
        EXPECT_LT((rotationOf(moved) - turn.toRotationMatrix() * rotationOf(tm)).norm(), kRounding);

        const Eigen::Vector3d still(0, 0, 0);
        KitMatrix4 about, plain; // a point at the origin: the two forms agree
        KitMatrix4TMUpdateFromVelocitiesAroundCOM(about, 0, h, v.data(), w.data(), still.data(), tm,
                                                  nullptr);
        KitVector4 q;
        KitQuaternionFromTM(q, tm);
        KitMatrix4TMUpdateFromVelocities(plain, 0, h, v.data(), w.data(), tm, q);
        EXPECT_EQ(columnForm(about), columnForm(plain));
        KitMatrix4TMUpdateFromVelocities(tm, 0, h, v.data(), w.data(), tm, nullptr);
        EXPECT_EQ(columnForm(tm), columnForm(plain)) << "in place";
    }
}

// With acceleration along the velocity the turn is exact; its rates are in the frame's own axes.
TEST(KitMatrix4Test, UpdateWithAccelerationsTurnsAboutOwnAxes) {
    MathRandom random(27);
    for (int n = 0; n < 200; ++n) {
        KitMatrix4 tm, moved;
        storeTransform(tm, random.rotation().toRotationMatrix(), random.vector(3));
        const Eigen::Vector3d v = random.vector(3), a = random.vector(3), axis = random.direction();
        const Eigen::Vector3d w = 2 * axis, alpha = 3 * axis;
        const double h = random.real(0.01, 0.5), rate = 2 + 3 * h;
        KitMatrix4TMUpdateFromVelocitiesAndAcceler(moved, 1e-4, h, v.data(), a.data(), w.data(),
                                                   alpha.data(), tm);
        const Eigen::AngleAxisd turn(rate * h, axis);
        EXPECT_LT((rotationOf(moved) - rotationOf(tm) * turn.toRotationMatrix()).norm(), kRounding);
        const Eigen::Vector3d way = (columnForm(moved) - columnForm(tm)).col(3).head<3>();
        EXPECT_LT((way - h * v - 0.5 * h * h * a).norm(), kRounding);

        KitMatrix4TMUpdateFromVelocitiesAndAcceler(moved, h * 2, h, v.data(), a.data(), w.data(),
                                                   alpha.data(), tm);
        EXPECT_EQ(rotationOf(moved), rotationOf(tm)) << "a step below epsilon";
    }
}

TEST(KitMatrixPrintTest, ZerosStandOut) {
    const double A[] = {1, 0, 2.5, -4, 0, 1e-9}; // 2 rows, 3 columns, by column
    struct Case {
        const char *format, *expected;
    };
    const Case cases[] = {{"%6.2f", "  1.00   2.50      0\n     0  -4.00   0.00\n"},
                          {"%g", "1 2.5 0\n0 -4 1e-09\n"},
                          {"%s", ""},
                          {"%g %g", ""},
                          {"%*g", ""},
                          {"%%", ""},
                          {"%.2", ""}};
    for (const Case& c : cases) {
        char* text = nullptr;
        std::size_t size = 0;
        std::FILE* file = open_memstream(&text, &size);
        KitMatrixFPrint(file, A, 2, 3, c.format);
        std::fclose(file);
        EXPECT_EQ(std::string(text, size), c.expected) << c.format;
        std::free(text);
    }
}
} // namespace
