#pragma once
#include <Hy/HyEulerOrder.h>
#include <Hy/HyTypes.h>
#include <Kit/KitApi.h>

namespace Hy {
class HyTransform;

/// Three angles in rad and the order in which they turn (eEulerOrder or HyEulerAnglesOrder). After
/// Shoemake, "Euler Angle Conversion", Graphics Gems IV, 1994, with the rotation kept for row
/// vectors.
class HY_API HyEulerAngles {
public:
    HyReal x, y, z; ///< first, second and third angle, rad
    int w;          ///< order

    /// No rotation, in the default order.
    HyEulerAngles() noexcept : HyEulerAngles(0, 0, 0) {}
    /// Angles in the default order.
    HyEulerAngles(HyReal first, HyReal second, HyReal third) noexcept
        : HyEulerAngles(first, second, third, getDefaultEulerOrder()) {}
    HyEulerAngles(HyReal first, HyReal second, HyReal third, int order) noexcept
        : x(first), y(second), z(third), w(order) {}

    [[nodiscard]] HyReal getFirst() const noexcept { return x; }
    [[nodiscard]] HyReal getSecond() const noexcept { return y; }
    [[nodiscard]] HyReal getThird() const noexcept { return z; }
    [[nodiscard]] int getOrder() const noexcept { return w; }

    /// Writes the rotation; the translation stays.
    void toHyMatrix44(HyTransform& transform) const noexcept;
    /// Angles of a rotation in an order, which is kept. Where only the sum or difference of the outer
    /// angles is defined, one of them is 0: the third, or the first where the order exchanges them.
    void fromHyMatrix44(const HyTransform& transform, int order) noexcept;

    /// The angles of the same rotation in another order; unchanged if the orders are equal.
    [[nodiscard]] static HyEulerAngles getEulerAngles(const HyEulerAngles& angles, int from,
                                                      int to) noexcept;

    /// Order of angles for which none is given; 0 at first. Set it before threads begin.
    [[nodiscard]] static int getDefaultEulerOrder() noexcept;
    static void setDefaultEulerOrder(int order) noexcept;

private:
    static int defaultEulerOrder;
};
} // namespace Hy
