#pragma once
#include <Kit/KitTypes.h>
#include <Kit/KitApi.h>

/// Growable array of plain records, moved by copying their bytes.
struct KitArray {
    void* v = nullptr;
    int size = 0;        ///< elements
    int capacity = 0;    ///< elements
    int elementSize = 0; ///< bytes
};

/// Makes an empty array with room for `size` elements, at least 1. False, and an unusable array,
/// without memory or with elements of no size. Overwrites the record.
HY_API KitBool KitArrayInit_internal(KitArray* array, int size, int elementSize);
/// Appends growsize elements, not initialised, and answers the first; doubles the capacity, or more
/// where that does not do. Null, and no change, without memory or for a negative growsize.
[[nodiscard]] HY_API void* KitArrayGrow_internal(KitArray* array, int growsize);
/// Makes the size desiredSize, and the capacity too where it was less. False, and no change, without
/// memory or for a negative size.
HY_API KitBool KitArrayEnsureSize_internal(KitArray* array, int desiredSize);
[[nodiscard]] HY_API int KitArrayGetSize_internal(const KitArray* array);
[[nodiscard]] HY_API int KitArrayGetCapacity_internal(const KitArray* array);
/// Makes the size 0 and keeps the memory.
HY_API void KitArrayClear_internal(KitArray* array);
/// Frees the memory.
HY_API void KitArrayTerm_internal(KitArray* array);
