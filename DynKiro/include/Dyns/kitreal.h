#pragma once
#include <Kit/KitApi.h>
#include <Kit/KitTypes.h>

// Vectors of n reals with a stride each: element i of x stands at x[i * incx]. n of 0 or less does
// nothing. Entries are independent, but for the norm, whose sum runs in their order.

/// y = x
HY_API void kitreal_copy(int n, const KitReal* x, int incx, KitReal* y, int incy);
/// x = a x
HY_API void kitreal_scal(int n, KitReal a, KitReal* x, int inc);
/// y += a x
HY_API void kitreal_axpy(int n, KitReal a, const KitReal* x, int incx, KitReal* y, int incy);
/// y -= x, both with stride 1
HY_API void kitreal_axpy_m1_1_1(int n, const KitReal* x, KitReal* y);
/// z = alpha x y + beta z, entry by entry. z may be x or y.
HY_API void kitreal_had(int n, KitReal alpha, const KitReal* x, int incx, const KitReal* y,
                        int incy, KitReal beta, KitReal* z, int incz);
/// Euclidean norm, without overflow or underflow of the squares.
[[nodiscard]] HY_API KitReal kitreal_nrm2(int n, const KitReal* x, int inc);
