#include <Kit/KitHash.h>
#include <Kit/KitMemory.h>
#include <cstddef>
#include <cstring>
#include <new>

namespace {
constexpr int kMaxBuckets = (1 << 30) - 1;

unsigned int hashText(const void* key) {
    unsigned int h = 0;
    for (const char* c = static_cast<const char*>(key); *c; ++c)
        h = 33 * h + static_cast<unsigned int>(static_cast<signed char>(*c));
    return h;
}

int compareText(const void* key0, const void* key1) {
    return std::strcmp(static_cast<const char*>(key0), static_cast<const char*>(key1));
}

/// Where a key stands or would stand in its chain.
struct Place {
    KitHashBucket** link; ///< that leads to the first key not less
    bool isFound;
    int mismatches; ///< keys that compared unequal on the way
};

Place findPlace(const KitHash& table, const void* key) {
    Place place = {
        .link = &table.table[table.hash(key) % static_cast<unsigned int>(table.size)],
        .isFound = false,
        .mismatches = 0,
    };
    while (*place.link) {
        const int order = table.compare(key, (*place.link)->key);
        place.isFound = order == 0;
        if (place.isFound)
            break;
        ++place.mismatches;
        if (order < 0)
            break;
        place.link = &(*place.link)->next;
    }
    return place;
}

/// Unlinks a bucket, frees what it holds and answers its datum's pointer.
void* removeBucket(KitHash& table, KitHashBucket** link) {
    KitHashBucket* bucket = *link;
    *link = bucket->next;
    --table.population;
    void* datum = bucket->datum;
    if (table.freeDatum)
        table.freeDatum(datum);
    if (table.freeKey)
        table.freeKey(bucket->key);
    KitMemoryAPI_destroy(bucket);
    return datum;
}
} // namespace

KitHash* KitHashCreate(int size) {
    if (size <= 0 || size > kMaxBuckets)
        return nullptr;
    void* memory = KitMemoryAPI_create(sizeof(KitHash));
    void* chains =
        KitMemoryAPI_createZeroed(static_cast<std::size_t>(size) * sizeof(KitHashBucket*));
    if (!memory || !chains) {
        KitMemoryAPI_destroy(memory);
        KitMemoryAPI_destroy(chains);
        return nullptr;
    }
    return new (memory) KitHash{
        .size = size,
        .population = 0,
        .hash = hashText,
        .compare = compareText,
        .freeKey = nullptr,
        .freeDatum = nullptr,
        .table = static_cast<KitHashBucket**>(chains),
        .collisions = 0,
    };
}

void KitHashDestroy(KitHash* table) {
    if (!table)
        return;
    KitHashReset(table);
    KitMemoryAPI_destroy(table->table);
    KitMemoryAPI_destroy(table);
}

void KitHashReset(KitHash* table) {
    for (int i = 0; i < table->size; ++i)
        while (table->table[i])
            removeBucket(*table, &table->table[i]);
    table->collisions = 0;
}

void KitHashSetHashFunc(KitHash* table, KitHashFunc hash) {
    table->hash = hash ? hash : hashText;
}

void KitHashSetKeyCompareFunc(KitHash* table, KitHashKeyCompareFunc compare) {
    table->compare = compare ? compare : compareText;
}

void KitHashSetKeyFreeFunc(KitHash* table, KitHashKeyFreeFunc freeKey) {
    table->freeKey = freeKey;
}

void KitHashSetDatumFreeFunc(KitHash* table, KitHashDatumFreeFunc freeDatum) {
    table->freeDatum = freeDatum;
}

void* KitHashInsert(const void* key, void* datum, KitHash* table) {
    const Place place = findPlace(*table, key);
    table->collisions += place.mismatches;
    if (place.isFound)
        return (*place.link)->datum;
    void* memory = KitMemoryAPI_create(sizeof(KitHashBucket));
    if (!memory)
        return nullptr;
    *place.link = new (memory) KitHashBucket{.key = key, .datum = datum, .next = *place.link};
    ++table->population;
    return datum;
}

void* KitHashLookup(const void* key, const KitHash* table) {
    const Place place = findPlace(*table, key);
    return place.isFound ? (*place.link)->datum : nullptr;
}

void* KitHashDelete(const void* key, KitHash* table) {
    const Place place = findPlace(*table, key);
    return place.isFound ? removeBucket(*table, place.link) : nullptr;
}

int KitHashPopulation(const KitHash* table) {
    return table->population;
}

void KitHashInitIterator(KitHashIterator* i, KitHash* table) {
    *i = {.table = table, .bucket = nullptr, .index = 0};
}

void* KitHashGetDatum(KitHashIterator* i) {
    while (!i->bucket && i->index < i->table->size)
        i->bucket = i->table->table[i->index++];
    if (!i->bucket) {
        i->index = 0;
        return nullptr;
    }
    void* datum = i->bucket->datum;
    i->bucket = i->bucket->next;
    return datum;
}
