#pragma once
#include <Kit/KitMatrix4.h>
#include <Kit/KitQuaternion.h>
#include <Eigen/Geometry>
#include <gtest/gtest.h>
#include <random>

/// Repeatable random values of geometry. Its seed is named in the trace of a failure.
class MathRandom {
public:
    explicit MathRandom(unsigned seed)
        : trace(__FILE__, __LINE__, testing::Message() << "seed " << seed), engine(seed) {}

    double real(double low, double high) {
        return std::uniform_real_distribution<double>(low, high)(engine);
    }
    Eigen::Vector3d vector(double size) {
        return {real(-size, size), real(-size, size), real(-size, size)};
    }
    Eigen::Vector3d direction() {
        std::normal_distribution<double> normal;
        return Eigen::Vector3d(normal(engine), normal(engine), normal(engine)).normalized();
    }
    /// Uniform over all orientations.
    Eigen::Quaterniond rotation() {
        std::normal_distribution<double> normal;
        const double w = normal(engine), x = normal(engine), y = normal(engine), z = normal(engine);
        return Eigen::Quaterniond(w, x, y, z).normalized();
    }

private:
    testing::ScopedTrace trace;
    std::mt19937 engine;
};

/// The stored form of a rotation R for column vectors and a translation.
inline void storeTransform(KitMatrix4 tm, const Eigen::Matrix3d& R, const Eigen::Vector3d& t) {
    KitMatrix4SetIdentity(tm);
    for (int i = 0; i < 3; ++i) {
        for (int j = 0; j < 3; ++j)
            tm[i][j] = R(j, i);
        tm[3][i] = t[i];
    }
}

/// The matrix that maps column vectors (x, y, z, 1).
inline Eigen::Matrix4d columnForm(const KitMatrix4 tm) {
    Eigen::Matrix4d T;
    for (int i = 0; i < 4; ++i)
        for (int j = 0; j < 4; ++j)
            T(i, j) = tm[j][i];
    return T;
}

inline Eigen::Matrix3d rotationOf(const KitMatrix4 tm) {
    return columnForm(tm).topLeftCorner<3, 3>();
}

inline Eigen::Quaterniond toEigen(const KitVector4 q) {
    return Eigen::Quaterniond(q[0], q[1], q[2], q[3]);
}
