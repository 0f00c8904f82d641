#include <Kit/KitArray.h>
#include <Kit/KitMemory.h>
#include <Kit/KitMessage.h>
#include <algorithm>
#include <cstddef>
#include <limits>

namespace {
constexpr int kBadArgument = 3; ///< message code

bool setCapacity(KitArray& array, int capacity) {
    std::size_t bytes = 0;
    if (array.elementSize <= 0 ||
        __builtin_mul_overflow(static_cast<std::size_t>(capacity),
                               static_cast<std::size_t>(array.elementSize), &bytes))
        return false;
    void* grown = KitMemoryAPI_resize(array.v, bytes);
    if (!grown)
        return false;
    array.v = grown;
    array.capacity = capacity;
    return true;
}
} // namespace

KitBool KitArrayInit_internal(KitArray* array, int size, int elementSize) {
    *array = {};
    array->elementSize = elementSize;
    return setCapacity(*array, std::max(size, 1));
}

void* KitArrayGrow_internal(KitArray* array, int growsize) {
    constexpr int kMost = std::numeric_limits<int>::max();
    if (growsize < 0) {
        KitWarning(kBadArgument, "KitArrayGrow_internal: growsize must not be negative.\n");
        return nullptr;
    }
    if (growsize > kMost - array->size)
        return nullptr;
    const int needed = array->size + growsize;
    const int doubled = array->capacity > kMost / 2 ? kMost : 2 * array->capacity;
    if (needed > array->capacity && !setCapacity(*array, std::max(doubled, needed)))
        return nullptr;
    auto* first = static_cast<std::byte*>(array->v) +
                  static_cast<std::ptrdiff_t>(array->size) * array->elementSize;
    array->size = needed;
    return first;
}

KitBool KitArrayEnsureSize_internal(KitArray* array, int desiredSize) {
    if (desiredSize < 0) {
        KitWarning(kBadArgument, "KitArrayEnsureSize_internal: the size must not be negative.\n");
        return 0;
    }
    if (desiredSize > array->capacity && !setCapacity(*array, desiredSize))
        return 0;
    array->size = desiredSize;
    return 1;
}

int KitArrayGetSize_internal(const KitArray* array) {
    return array->size;
}

int KitArrayGetCapacity_internal(const KitArray* array) {
    return array->capacity;
}

void KitArrayClear_internal(KitArray* array) {
    array->size = 0;
}

void KitArrayTerm_internal(KitArray* array) {
    KitMemoryAPI_destroy(array->v);
    *array = {};
}
