#pragma once
#include <Hy/HyArray.h>
#include <Hy/HyTypes.h>
#include <Kit/KitApi.h>

namespace Hy {

/// A function of one variable by its points, with straight lines between them.
class HY_API HyTable1D {
public:
    HyTable1D() = default;
    HyTable1D(const HyTable1D&) = default;
    HyTable1D& operator=(const HyTable1D&) = default;
    virtual ~HyTable1D() = default;

    /// Removes all points.
    virtual void clear();
    /// Takes n points; 0 removes all. Values that are not finite, arguments that descend, null, or n
    /// below 0: a warning, the old points stay, and the answer is false.
    /// @param xs,ys copied; xs ascend, of equal ones the last begins the next line
    virtual bool set(int n, const HyReal* xs, const HyReal* ys);

    [[nodiscard]] int size() const { return static_cast<int>(x.size()); }
    [[nodiscard]] const HyArray<HyReal>& getX() const { return x; }
    [[nodiscard]] const HyArray<HyReal>& getY() const { return y; }
    /// The function; before the first point its value there, and so behind the last. Without points:
    /// a warning, and 0.
    [[nodiscard]] HyReal interpolate(HyReal at) const;

private:
    HyArray<HyReal> x, y;
};

} // namespace Hy
