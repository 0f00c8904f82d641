#include "kit/MathRandom.h"
#include <Hy/HyEulerAngles.h>
#include <Hy/HyTransform.h>
#include <array>
#include <numbers>
#include <string>
#include <vector>

namespace {
using namespace Hy;
using std::numbers::pi;
constexpr double kRounding = 1e-13;

/// An order of rotation, told by its axes alone.
struct NamedOrder {
    int code;
    std::string axes; ///< of the product, from left to right
    bool clockwise;
};

std::vector<NamedOrder> allOrders() {
    const std::array<const char*, 24> axes = {
        "XYZ", "ZYX", "XYX", "XYX", "XZY", "YZX", "XZX", "XZX", "YZX", "XZY", "YZY", "YZY",
        "YXZ", "ZXY", "YXY", "YXY", "ZXY", "YXZ", "ZXZ", "ZXZ", "ZYX", "XYZ", "ZYZ", "ZYZ"};
    std::vector<NamedOrder> orders;
    for (const int clockwise : {0, 32})
        for (int n = 0; n < 24; ++n)
            orders.push_back({clockwise + n, axes[static_cast<std::size_t>(n)], clockwise != 0});
    return orders;
}

/// The product of elementary rotations of column-vector mathematics. An odd code has the same
/// product as the even one before it, with the first and third angle exchanged.
Eigen::Matrix3d product(const NamedOrder& order, std::array<double, 3> angles) {
    std::string axes = order.axes;
    if (order.code & 1) {
        std::swap(angles[0], angles[2]);
        std::swap(axes[0], axes[2]);
    }
    Eigen::Matrix3d R = Eigen::Matrix3d::Identity();
    for (std::size_t n = 0; n < 3; ++n)
        R *= Eigen::AngleAxisd(order.clockwise ? -angles[n] : angles[n],
                               Eigen::Vector3d::Unit(axes[n] - 'X'))
                 .toRotationMatrix();
    return R;
}

TEST(HyEulerAnglesTest, AllOrdersAreProductsOfElementaryRotations) {
    MathRandom random(51);
    for (const NamedOrder& order : allOrders())
        for (int n = 0; n < 20; ++n) {
            const double a = random.real(-3, 3), b = random.real(-3, 3), c = random.real(-3, 3);
            HyTransform tm(HyVector3(4, 5, 6));
            HyEulerAngles(a, b, c, order.code).toHyMatrix44(tm);
            EXPECT_LT((rotationOf(tm.m) - product(order, {a, b, c})).norm(), kRounding)
                << order.code << ' ' << order.axes;
            EXPECT_EQ(tm.t(), HyVector3(4, 5, 6));
        }
}

TEST(HyEulerAnglesTest, RoundTripKeepsAnglesOrAtLeastTheRotation) {
    MathRandom random(52);
    for (const NamedOrder& order : allOrders()) {
        const bool repeated = order.axes[0] == order.axes[2];
        for (int n = 0; n < 20; ++n) {
            // Middle angles of the principal range, by the sign that the sine comes out with.
            const double sign = order.clockwise == ((order.code & 4) != 0) ? -1 : 1;
            const double b = repeated ? sign * random.real(0.1, 3) : random.real(-1.5, 1.5);
            const double a = random.real(-3.1, 3.1), c = random.real(-3.1, 3.1);
            HyTransform tm;
            HyEulerAngles(a, b, c, order.code).toHyMatrix44(tm);
            HyEulerAngles back;
            back.fromHyMatrix44(tm, order.code);
            EXPECT_NEAR(back.getFirst(), a, 1e-11) << order.code;
            EXPECT_NEAR(back.getSecond(), b, 1e-11) << order.code;
            EXPECT_NEAR(back.getThird(), c, 1e-11) << order.code;
            EXPECT_EQ(back.w, order.code);
        }
        for (const double half : {1.0, -1.0}) { // singular: one outer angle is given up
            const double b = repeated ? (half > 0 ? 0 : pi) : half * pi / 2;
            HyTransform tm, again;
            HyEulerAngles(0.4, b, 0.3, order.code).toHyMatrix44(tm);
            HyEulerAngles back;
            back.fromHyMatrix44(tm, order.code);
            EXPECT_EQ(order.code & 1 ? back.getFirst() : back.getThird(), 0) << order.code;
            back.toHyMatrix44(again);
            EXPECT_LT((rotationOf(tm.m) - rotationOf(again.m)).norm(), 1e-11) << order.code;
        }
    }
}

TEST(HyEulerAnglesTest, ChangesOfOrderKeepTheRotation) {
    const int before = HyEulerAngles::getDefaultEulerOrder();
    EXPECT_EQ(before, 0);
    HyEulerAngles::setDefaultEulerOrder(kZXZ_CounterClockwise_Rotating);
    EXPECT_EQ(HyEulerAngles(1, 2, 3).w, 18);
    HyEulerAngles::setDefaultEulerOrder(before);

    const HyEulerAngles angles(0.5, -0.7, 4, kXYZ_CounterClockwise_Rotating); // 4 > pi
    EXPECT_EQ(HyEulerAngles::getEulerAngles(angles, 0, 0).z, 4);
    for (const NamedOrder& order : allOrders()) {
        const HyEulerAngles other = HyEulerAngles::getEulerAngles(angles, 0, order.code);
        HyTransform expected, found;
        angles.toHyMatrix44(expected);
        other.toHyMatrix44(found);
        EXPECT_EQ(other.w, order.code == 0 ? angles.w : order.code);
        EXPECT_LT((rotationOf(found.m) - rotationOf(expected.m)).norm(), kRounding) << order.code;
    }
}
} // namespace
