#include <Hy/HyTable1D.h>

#include <Hy/HyMessage.h>

#include <algorithm>
#include <cmath>

namespace Hy {
namespace {

bool isFunction(int n, const HyReal* xs, const HyReal* ys) {
    if (n < 0 || (n > 0 && (!xs || !ys)))
        return false;
    const auto isNumber = [](HyReal value) { return std::isfinite(value); };
    return std::all_of(xs, xs + n, isNumber) && std::all_of(ys, ys + n, isNumber) &&
           std::is_sorted(xs, xs + n);
}

} // namespace

void HyTable1D::clear() {
    x.clear();
    y.clear();
}

bool HyTable1D::set(int n, const HyReal* xs, const HyReal* ys) {
    if (!isFunction(n, xs, ys)) {
        HyWarning(0, "HyTable1D::set: the points must be finite and x must ascend.\n");
        return false;
    }
    HyArray<HyReal> newX, newY; // the arguments may point into this table
    newX.insert(newX.begin(), xs, xs + n);
    newY.insert(newY.begin(), ys, ys + n);
    x.swap(newX);
    y.swap(newY);
    return true;
}

HyReal HyTable1D::interpolate(HyReal at) const {
    if (x.empty()) {
        HyWarning(0, "HyTable1D::interpolate: the table must not be empty.\n");
        return 0;
    }
    const std::size_t next =
        static_cast<std::size_t>(std::upper_bound(x.begin(), x.end(), at) - x.begin());
    if (next == 0)
        return y.front();
    if (next == x.size())
        return y.back();
    const HyReal part = (at - x[next - 1]) / (x[next] - x[next - 1]);
    return y[next - 1] + part * (y[next] - y[next - 1]);
}

} // namespace Hy
