#include <Dyns/kitreal.h>

#include <cmath>
#include <cstddef>

namespace {

// Place of entry i; signed, so that a negative stride walks backwards.
std::ptrdiff_t at(int i, int stride) {
    return static_cast<std::ptrdiff_t>(i) * stride;
}

} // namespace

void kitreal_copy(int n, const KitReal* x, int incx, KitReal* y, int incy) {
    for (int i = 0; i < n; ++i)
        y[at(i, incy)] = x[at(i, incx)];
}

void kitreal_scal(int n, KitReal a, KitReal* x, int inc) {
    for (int i = 0; i < n; ++i)
        x[at(i, inc)] *= a;
}

void kitreal_axpy(int n, KitReal a, const KitReal* x, int incx, KitReal* y, int incy) {
    for (int i = 0; i < n; ++i)
        y[at(i, incy)] += a * x[at(i, incx)];
}

void kitreal_axpy_m1_1_1(int n, const KitReal* x, KitReal* y) {
    for (int i = 0; i < n; ++i)
        y[i] -= x[i];
}

void kitreal_had(int n, KitReal alpha, const KitReal* x, int incx, const KitReal* y, int incy,
                 KitReal beta, KitReal* z, int incz) {
    for (int i = 0; i < n; ++i) {
        KitReal& entry = z[at(i, incz)];
        entry = alpha * (x[at(i, incx)] * y[at(i, incy)]) + beta * entry;
    }
}

KitReal kitreal_nrm2(int n, const KitReal* x, int inc) {
    KitReal sum = 0;
    for (int i = 0; i < n; ++i)
        sum += x[at(i, inc)] * x[at(i, inc)];
    if (sum > 1e-280 && sum < 1e280) // no square has left the range of normal numbers
        return std::sqrt(sum);

    KitReal largest = 0;
    for (int i = 0; i < n; ++i) {
        const KitReal size = std::abs(x[at(i, inc)]);
        if (!(size <= largest)) // takes a NaN and keeps it
            largest = size;
    }
    if (!(largest > 0) || !std::isfinite(largest))
        return largest;
    KitReal scaled = 0;
    for (int i = 0; i < n; ++i) {
        const KitReal entry = x[at(i, inc)] / largest;
        scaled += entry * entry;
    }
    return largest * std::sqrt(scaled);
}
