#include <Col/ColIntersect.h>
#include <Col/ColMessage.h>
#include <Col/ColModelFunctions.h>
#include <Col/ColuRequestTable.h>
#include <Kit/KitMemory.h>
#include <Kit/KitMessage.h>

#include <algorithm>
#include <cstddef>
#include <memory>
#include <new>

ColuRequestTable* gColuRequestTable = nullptr;

namespace {
/// Largest number of ids: half its square of pointers still fits in an int.
constexpr int kMaxSize = 32768;

std::size_t entryCount(int size) {
    return static_cast<std::size_t>(size) * (static_cast<std::size_t>(size) + 1) / 2;
}

std::size_t entryIndex(int id1, int id2, int size) {
    const auto lo = static_cast<std::size_t>(std::min(id1, id2));
    const auto hi = static_cast<std::size_t>(std::max(id1, id2));
    return lo * static_cast<std::size_t>(size) + hi - lo * (lo + 1) / 2;
}

bool hasEntry(int id1, int id2) {
    const int size = ColuRequestTableGetSize();
    return id1 >= 0 && id2 >= 0 && id1 < size && id2 < size;
}

/// Puts a chunk of requests in front, or answers null with no change.
ColRequest* addChunk(ColuRequestTable& table, std::size_t count, const ColRequest& value) {
    using Chunk = ColuRequestTable::Chunk;
    static_assert(sizeof(Chunk) % alignof(ColRequest) == 0);
    void* memory = KitMemoryAPI_create(sizeof(Chunk) + count * sizeof(ColRequest));
    if (!memory)
        return nullptr;
    auto* requests = reinterpret_cast<ColRequest*>(static_cast<std::byte*>(memory) + sizeof(Chunk));
    std::uninitialized_fill_n(requests, count, value);
    table.chunks = new (memory) Chunk{table.chunks, requests};
    return requests;
}

/// Gives the ids up to newsize their entries, those of old ids where they were.
bool grow(ColuRequestTable& table, int newsize, const ColRequest& value) {
    auto** places =
        static_cast<ColRequest**>(KitMemoryAPI_create(entryCount(newsize) * sizeof(ColRequest*)));
    if (!places)
        return false;
    ColRequest* fresh = addChunk(table, entryCount(newsize) - entryCount(table.size), value);
    if (!fresh) {
        KitMemoryAPI_destroy(places);
        return false;
    }
    for (int lo = 0; lo < newsize; ++lo)
        for (int hi = lo; hi < newsize; ++hi)
            places[entryIndex(lo, hi, newsize)] =
                hi < table.size ? table.ididToElement[entryIndex(lo, hi, table.size)] : fresh++;
    KitMemoryAPI_destroy(table.ididToElement);
    table.ididToElement = places;
    table.size = table.idCount = newsize;
    return true;
}

void setRequestOfPair(ColModelPair* pair, void* /*data*/) {
    pair->request =
        ColuRequestTableGetRequestPtr(pair->model1->mRequestID, pair->model2->mRequestID);
}
} // namespace

ColuRequestTable* ColuRequestTableInit(int size, const ColRequest* defaultValue) {
    if (size <= 0 || size > kMaxSize || !defaultValue) {
        KitWarning(0,
                   "ColuRequestTableInit: size must lie in 1 to %d, defaultValue must not be "
                   "null.\n",
                   kMaxSize);
        return nullptr;
    }
    const ColRequest value = *defaultValue; // may be an entry of the table that ends
    ColuRequestTableTerm();
    void* memory = KitMemoryAPI_create(sizeof(ColuRequestTable));
    if (!memory)
        return nullptr;
    gColuRequestTable = new (memory) ColuRequestTable;
    if (!grow(*gColuRequestTable, size, value))
        ColuRequestTableTerm();
    return gColuRequestTable;
}

void ColuRequestTableTerm() {
    if (!gColuRequestTable)
        return;
    ColuRequestTableDisable();
    while (ColuRequestTable::Chunk* chunk = gColuRequestTable->chunks) {
        gColuRequestTable->chunks = chunk->next;
        KitMemoryAPI_destroy(chunk);
    }
    KitMemoryAPI_destroy(gColuRequestTable->ididToElement);
    KitMemoryAPI_destroy(gColuRequestTable);
    gColuRequestTable = nullptr;
}

int ColuRequestTableResize(int newsize, const ColRequest* defaultValue) {
    if (!gColuRequestTable || newsize > kMaxSize || !defaultValue) {
        KitWarning(0,
                   "ColuRequestTableResize: the table must exist, newsize must be at most %d, "
                   "defaultValue must not be null.\n",
                   kMaxSize);
        return 0;
    }
    return newsize <= gColuRequestTable->size || grow(*gColuRequestTable, newsize, *defaultValue);
}

ColuRequestTable* ColuRequestTableGet() {
    return gColuRequestTable;
}

int ColuRequestTableGetSize() {
    return gColuRequestTable ? gColuRequestTable->size : 0;
}

ColRequest* ColuRequestTableGetRequestPtr(int id1, int id2) {
    return hasEntry(id1, id2)
               ? gColuRequestTable->ididToElement[entryIndex(id1, id2, gColuRequestTable->size)]
               : ColGetDefaultRequestPtr();
}

void ColuRequestTableSetRequest(int id1, int id2, const ColRequest* inRequest) {
    if (hasEntry(id1, id2) && inRequest)
        *ColuRequestTableGetRequestPtr(id1, id2) = *inRequest;
    else
        KitWarning(0, "ColuRequestTableSetRequest: ids must be of the table, inRequest must not be "
                      "null.\n");
}

void ColuRequestTableGetRequest(const ColModelPair* pair, ColRequest* outRequest) {
    if (!pair || !pair->model1 || !pair->model2)
        ColMistake(pair ? kColErrorPairModels : kColErrorPair, " in ColuRequestTableGetRequest.");
    else if (!outRequest)
        ColMistake(kColErrorNullPointer, "in ColuRequestTableGetRequest.");
    else
        *outRequest =
            *ColuRequestTableGetRequestPtr(pair->model1->mRequestID, pair->model2->mRequestID);
}

void ColuRequestTableEnable() {
    if (gColuRequestTable)
        ColSetHelloCallback(setRequestOfPair, gColuRequestTable);
    else
        KitWarning(0, "ColuRequestTableEnable: the table must exist.\n");
}

void ColuRequestTableDisable() {
    if (ColGetHelloCallback() == setRequestOfPair)
        ColSetHelloCallback(nullptr, nullptr);
}
