#pragma once
#include <Kit/KitApi.h>

struct KitHashBucket {
    const void* key; ///< kept, not copied
    void* datum;
    KitHashBucket* next; ///< greater by the comparison
};

using KitHashFunc = unsigned int (*)(const void* key);
/// Negative, zero or positive, as strcmp() does.
using KitHashKeyCompareFunc = int (*)(const void* key0, const void* key1);
using KitHashKeyFreeFunc = void (*)(const void* key);
using KitHashDatumFreeFunc = void (*)(void* datum);

/// Chained hash of a fixed number of buckets; each chain ascends by `compare`. Keys are
/// zero-terminated texts unless other functions are set while the table is empty.
struct KitHash {
    int size; ///< number of buckets
    int population;
    KitHashFunc hash; ///< the bucket is its value modulo `size`
    KitHashKeyCompareFunc compare;
    KitHashKeyFreeFunc freeKey;     ///< null for none
    KitHashDatumFreeFunc freeDatum; ///< null for none
    KitHashBucket** table;
    int collisions; ///< comparisons that did not match while inserting
};

struct KitHashIterator {
    KitHash* table;
    KitHashBucket* bucket; ///< next in its chain, null to look from index on
    int index;             ///< next chain
};

/// Null for a size that is not in [1, 2^30), and without memory. The caller destroys it.
[[nodiscard]] HY_API KitHash* KitHashCreate(int size);
/// Frees keys and data by the free functions, and the table. Null is ignored.
HY_API void KitHashDestroy(KitHash* table);
/// Frees keys and data by the free functions and empties the table.
HY_API void KitHashReset(KitHash* table);

/// Null installs the default, text.
HY_API void KitHashSetHashFunc(KitHash* table, KitHashFunc hash);
HY_API void KitHashSetKeyCompareFunc(KitHash* table, KitHashKeyCompareFunc compare);
HY_API void KitHashSetKeyFreeFunc(KitHash* table, KitHashKeyFreeFunc freeKey);
HY_API void KitHashSetDatumFreeFunc(KitHash* table, KitHashDatumFreeFunc freeDatum);

/// The stored datum: the new one, or the old one of a key already present, which stays. Null
/// without memory.
HY_API void* KitHashInsert(const void* key, void* datum, KitHash* table);
/// Null if absent.
[[nodiscard]] HY_API void* KitHashLookup(const void* key, const KitHash* table);
/// Frees key and datum by the free functions. The removed datum's pointer, or null if absent.
HY_API void* KitHashDelete(const void* key, KitHash* table);
[[nodiscard]] HY_API int KitHashPopulation(const KitHash* table);

/// Starts at the first datum in the order of table and chain. The table must not change meanwhile.
HY_API void KitHashInitIterator(KitHashIterator* i, KitHash* table);
/// The next datum; null at the end, from where the iterator starts again.
[[nodiscard]] HY_API void* KitHashGetDatum(KitHashIterator* i);
