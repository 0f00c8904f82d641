#pragma once
#include <Kit/KitApi.h>

/// A pointer and the integer that it stands for.
struct KitAssoc {
    const void* p; ///< key; never followed
    int idx;
};

/// A view of pairs that somebody else owns.
struct KitAssocArray {
    int n;
    KitAssoc* v;
};

/// Sorts by address, equal ones by integer. Addresses serve look-up only: no result may depend on
/// the order. Allocates nothing.
HY_API void KitAssocArraySort(KitAssocArray* a);
/// The integer of a key in a sorted array, -1 if absent.
[[nodiscard]] HY_API int KitAssocArrayFind(const KitAssocArray* a, const void* key);
