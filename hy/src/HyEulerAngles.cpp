#include <Hy/HyEulerAngles.h>
#include <Hy/HyTransform.h>
#include <array>
#include <cmath>
#include <utility>

namespace Hy {

int HyEulerAngles::defaultEulerOrder = 0;

namespace {
/// The middle angle counts as singular where its sine or cosine is not above 2^-19.
constexpr HyReal kSingular = 1.0 / 524288;

/// An order taken apart. Every code decodes to valid axes.
struct Order {
    int i, j, k; ///< inner axis and the two that follow it
    bool exchanged, repeated, odd, clockwise;

    explicit Order(int code)
        : exchanged(code & 1), repeated(code & 2), odd(code & 4), clockwise(code & 32) {
        constexpr int kInner[4] = {0, 1, 2, 0}, kNext[4] = {1, 2, 0, 1};
        i = kInner[(code >> 3) & 3];
        j = kNext[i + (odd ? 1 : 0)];
        k = kNext[i + (odd ? 0 : 1)];
    }
    [[nodiscard]] HyReal sign() const { return clockwise == odd ? -1 : 1; }
};
} // namespace

void HyEulerAngles::toHyMatrix44(HyTransform& transform) const noexcept {
    const Order order(w);
    HyReal a = order.sign() * x, b = order.sign() * y, c = order.sign() * z;
    if (order.exchanged)
        std::swap(a, c);

    const HyReal ca = std::cos(a), sa = std::sin(a), cb = std::cos(b), sb = std::sin(b);
    const HyReal cosC = std::cos(c), sinC = std::sin(c);
    const HyReal cc = ca * cosC, cs = ca * sinC, sc = sa * cosC, ss = sa * sinC;
    const auto [i, j, k] = std::array{order.i, order.j, order.k};
    auto& m = transform.m;
    if (order.repeated) {
        m[i][i] = cb;
        m[i][j] = sb * sa;
        m[i][k] = sb * ca;
        m[j][i] = sb * sinC;
        m[j][j] = -cb * ss + cc;
        m[j][k] = -cb * cs - sc;
        m[k][i] = -sb * cosC;
        m[k][j] = cb * sc + cs;
        m[k][k] = cb * cc - ss;
    } else {
        m[i][i] = cb * cosC;
        m[i][j] = sb * sc - cs;
        m[i][k] = sb * cc + ss;
        m[j][i] = cb * sinC;
        m[j][j] = sb * ss + cc;
        m[j][k] = sb * cs - sc;
        m[k][i] = -sb;
        m[k][j] = cb * sa;
        m[k][k] = cb * ca;
    }
}

void HyEulerAngles::fromHyMatrix44(const HyTransform& transform, int code) noexcept {
    const Order order(code);
    const auto [i, j, k] = std::array{order.i, order.j, order.k};
    const auto& m = transform.m;
    const HyReal middle = order.repeated ? std::hypot(m[i][j], m[i][k])  // its sine
                                         : std::hypot(m[i][i], m[j][i]); // its cosine
    HyReal a, c = 0;
    if (!(middle > kSingular)) {
        a = std::atan2(-m[j][k], m[j][j]);
    } else if (order.repeated) {
        a = std::atan2(m[i][j], m[i][k]);
        c = std::atan2(m[j][i], -m[k][i]);
    } else {
        a = std::atan2(m[k][j], m[k][k]);
        c = std::atan2(m[j][i], m[i][i]);
    }
    const HyReal b = order.repeated ? std::atan2(middle, m[i][i]) : std::atan2(-m[k][i], middle);

    if (order.exchanged)
        std::swap(a, c);
    x = order.sign() * a;
    y = order.sign() * b;
    z = order.sign() * c;
    w = code;
}

HyEulerAngles HyEulerAngles::getEulerAngles(const HyEulerAngles& angles, int from,
                                            int to) noexcept {
    if (from == to)
        return angles;
    HyTransform rotation;
    HyEulerAngles(angles.x, angles.y, angles.z, from).toHyMatrix44(rotation);
    HyEulerAngles result;
    result.fromHyMatrix44(rotation, to);
    return result;
}

int HyEulerAngles::getDefaultEulerOrder() noexcept {
    return defaultEulerOrder;
}

void HyEulerAngles::setDefaultEulerOrder(int order) noexcept {
    defaultEulerOrder = order;
}
} // namespace Hy
