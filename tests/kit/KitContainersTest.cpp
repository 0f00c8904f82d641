#include <Kit/KitArray.h>
#include <Kit/KitAssoc.h>
#include <Kit/KitChunk.h>
#include <Kit/KitHash.h>
#include "KitTestSupport.h"
#include <gtest/gtest.h>
#include <algorithm>
#include <cstdint>
#include <limits>
#include <map>
#include <random>
#include <string>
#include <vector>

namespace {
TEST(KitChunkTest, AutomaticChunkOnlyGrows) {
    const CountingAllocator allocator;
    KitChunk chunk;
    KitChunkInit(&chunk);
    EXPECT_EQ(KitChunkGetMem(&chunk, 0), nullptr);
    void* block = KitChunkGetMem(&chunk, 100);
    EXPECT_NE(block, nullptr);
    EXPECT_EQ(KitChunkGetMem(&chunk, 10), block);
    EXPECT_EQ(KitChunkGetMem(&chunk, 100), block);
    EXPECT_EQ(allocator.calls, 1);
    EXPECT_EQ(KitChunkGetMaxUsed(&chunk), 100u);
    for (const std::size_t alignment : {0u, 1u, 24u, 64u, 4096u}) {
        KitChunkSetAuto(&chunk, 50, alignment);
        EXPECT_GE(chunk.memSizeAligned, 50u);
        void* grown = KitChunkGetMem(&chunk, 10000);
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(grown) % KitChunkGetAlignment(&chunk), 0u);
        EXPECT_EQ(allocator.live, 1);
    }
    KitChunkDestroy(&chunk);
    KitChunkDestroy(&chunk);
    EXPECT_EQ(allocator.live, 0);
}

TEST(KitChunkTest, UserChunkAsksForALargerBlock) {
    static std::byte small[64], large[256]; // NOLINT: the call-back carries no context
    static std::size_t wanted = 0;
    const CountingAllocator allocator;
    KitChunk chunk;
    KitChunkSetAuto(&chunk, 10, 16);
    KitChunkSetUser(&chunk, small, sizeof(small), 1);
    EXPECT_EQ(allocator.live, 0); // the automatic block is gone
    EXPECT_EQ(KitChunkGetMem(&chunk, 64), small);
    EXPECT_EQ(KitChunkGetMem(&chunk, 65), nullptr); // no call-back

    const KitChunkOverflowCB enlarge = [](KitChunk* c, void* base, std::size_t size,
                                          std::size_t n) {
        wanted = n;
        EXPECT_EQ(base, static_cast<void*>(size == sizeof(small) ? small : large));
        KitChunkSetUser(c, large, sizeof(large), 1);
    };
    KitChunkSetOverflowCB(&chunk, enlarge);
    EXPECT_EQ(KitChunkGetOverflowCB(&chunk), enlarge);
    EXPECT_EQ(KitChunkGetMem(&chunk, 200), large);
    EXPECT_EQ(wanted, 216u);
    EXPECT_EQ(KitChunkGetMem(&chunk, 257), nullptr); // still too small
    EXPECT_EQ(KitChunkGetMaxUsed(&chunk), 257u);
    KitChunkSetUser(&chunk, small + 1, 3, 16); // alignment leaves nothing
    EXPECT_EQ(chunk.memSizeAligned, 0u);
    KitChunkDestroy(&chunk);
}

TEST(KitChunkDeathTest, EndsTheProcessWithoutMemory) {
    const CountingAllocator allocator;
    KitChunk chunk;
    KitChunkSetAuto(&chunk, 84, 16);
    CountingAllocator::isFailing = true;
    EXPECT_EXIT((void)KitChunkGetMem(&chunk, 500), testing::ExitedWithCode(1),
                "\\{0\\}: KitChunkGetMem: Could not allocate memory to resize KitChunk: old size = "
                "100 new size = 500\n");
    EXPECT_EXIT(KitChunkSetAuto(&chunk, 5, 16), testing::ExitedWithCode(1),
                "\\{0\\}: KitChunkSetAuto: Could not allocate memory for KitChunk.\n");
    KitChunkDestroy(&chunk);
}

TEST(KitArrayTest, GrowsByDoublingOrByWhatIsNeeded) {
    const CountingAllocator allocator;
    KitArray array;
    ASSERT_TRUE(KitArrayInit_internal(&array, 0, sizeof(int)));
    const int capacities[] = {1, 2, 4, 4, 8};
    for (int i = 0; i < 5; ++i) {
        *static_cast<int*>(KitArrayGrow_internal(&array, 1)) = i;
        EXPECT_EQ(KitArrayGetCapacity_internal(&array), capacities[i]);
    }
    const void* first = KitArrayGrow_internal(&array, 20);
    EXPECT_EQ(first, static_cast<int*>(array.v) + 5);
    EXPECT_EQ(KitArrayGetCapacity_internal(&array), 25);
    for (int i = 0; i < 5; ++i)
        EXPECT_EQ(static_cast<int*>(array.v)[i], i);
    EXPECT_TRUE(KitArrayEnsureSize_internal(&array, 40));
    EXPECT_EQ(array.capacity, 40);
    EXPECT_TRUE(KitArrayEnsureSize_internal(&array, 3));
    EXPECT_EQ(array.capacity, 40);
    EXPECT_EQ(KitArrayGetSize_internal(&array), 3);

    const WarningRecorder warnings;
    CountingAllocator::isFailing = true;
    EXPECT_EQ(KitArrayGrow_internal(&array, 38), nullptr);
    EXPECT_FALSE(KitArrayEnsureSize_internal(&array, 41));
    EXPECT_EQ(KitArrayGrow_internal(&array, std::numeric_limits<int>::max()), nullptr);
    EXPECT_TRUE(warnings.take().empty());
    EXPECT_EQ(KitArrayGrow_internal(&array, -1), nullptr);
    EXPECT_FALSE(KitArrayEnsureSize_internal(&array, -1));
    EXPECT_EQ(warnings.take().size(), 2u);
    EXPECT_EQ(KitArrayGetSize_internal(&array), 3);
    EXPECT_EQ(KitArrayGetCapacity_internal(&array), 40);
    KitArrayClear_internal(&array);
    EXPECT_EQ(array.size, 0);
    KitArrayTerm_internal(&array);
    EXPECT_EQ(allocator.live, 0);
    EXPECT_FALSE(KitArrayInit_internal(&array, 4, 0));
}

int numbers[3] = {0, 1, 2}; // data of the hashes

TEST(KitHashTest, KeepsTheFirstDatumOfAKey) {
    KitHash* table = KitHashCreate(1);
    EXPECT_EQ(KitHashInsert("a", &numbers[0], table), &numbers[0]);
    EXPECT_EQ(KitHashInsert("a", &numbers[1], table), &numbers[0]);
    EXPECT_EQ(KitHashPopulation(table), 1);
    EXPECT_EQ(table->collisions, 0);
    EXPECT_EQ(KitHashInsert("c", &numbers[2], table), &numbers[2]); // passes a
    EXPECT_EQ(table->collisions, 1);
    EXPECT_EQ(KitHashInsert("b", &numbers[1], table), &numbers[1]); // passes a, stops at c
    EXPECT_EQ(table->collisions, 3);

    KitHashIterator i;
    KitHashInitIterator(&i, table);
    for (int round = 0; round < 2; ++round) { // it rewinds at the end
        EXPECT_EQ(KitHashGetDatum(&i), &numbers[0]);
        EXPECT_EQ(KitHashGetDatum(&i), &numbers[1]);
        EXPECT_EQ(KitHashGetDatum(&i), &numbers[2]);
        EXPECT_EQ(KitHashGetDatum(&i), nullptr);
    }
    EXPECT_EQ(KitHashDelete("b", table), &numbers[1]);
    EXPECT_EQ(KitHashDelete("b", table), nullptr);
    EXPECT_EQ(KitHashLookup("b", table), nullptr);
    EXPECT_EQ(KitHashLookup("c", table), &numbers[2]);
    KitHashDestroy(table);
}

// 33·97 + 98 = 3299; a byte of 0xff counts as -1: 33·(2^32 - 1) + 97 = 64 modulo 2^32.
TEST(KitHashTest, FoldsSignedBytesModulo32Bits) {
    KitHash* table = KitHashCreate(1000);
    EXPECT_EQ(table->hash(""), 0u);
    EXPECT_EQ(table->hash("ab"), 3299u);
    EXPECT_EQ(table->hash("\xff"
                          "a"),
              64u);
    EXPECT_EQ(table->hash("\xff"), 4294967295u);
    EXPECT_EQ(KitHashInsert("ab", &numbers[0], table), &numbers[0]);
    EXPECT_NE(table->table[299], nullptr);
    KitHashDestroy(table);
}

TEST(KitHashTest, RefusesBadSizesAndSurvivesMissingMemory) {
    const CountingAllocator allocator;
    for (const int size : {0, -1, 1 << 30, std::numeric_limits<int>::min()})
        EXPECT_EQ(KitHashCreate(size), nullptr) << size;
    KitHash* table = KitHashCreate(2);
    CountingAllocator::isFailing = true;
    EXPECT_EQ(KitHashInsert("a", &numbers[0], table), nullptr);
    EXPECT_EQ(KitHashCreate(2), nullptr);
    EXPECT_EQ(KitHashPopulation(table), 0);
    KitHashDestroy(table);
    KitHashDestroy(nullptr);
    EXPECT_EQ(allocator.live, 0);
}

// Beside std::map on random traffic, with keys and data that the table frees.
TEST(KitHashTest, AgreesWithAMap) {
    const unsigned seed = 7;
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    KitHash* table = KitHashCreate(13);
    KitHashSetKeyFreeFunc(table, [](const void* key) { delete[] static_cast<const char*>(key); });
    KitHashSetDatumFreeFunc(table, [](void* datum) { delete static_cast<int*>(datum); });
    std::map<std::string, int> map;
    for (int i = 0; i < 4000; ++i) {
        const std::string key = std::to_string(random() % 300);
        if (random() % 3 == 0) {
            EXPECT_EQ(KitHashDelete(key.c_str(), table) != nullptr, map.erase(key) == 1);
        } else if (map.try_emplace(key, i).second) {
            char* copy = new char[key.size() + 1];
            key.copy(copy, key.size());
            copy[key.size()] = 0;
            int* datum = new int(i);
            EXPECT_EQ(KitHashInsert(copy, datum, table), datum);
        } else {
            int other = -1;
            EXPECT_EQ(*static_cast<int*>(KitHashInsert(key.c_str(), &other, table)), map[key]);
        }
    }
    EXPECT_EQ(KitHashPopulation(table), static_cast<int>(map.size()));
    KitHashIterator i;
    KitHashInitIterator(&i, table);
    std::size_t walked = 0;
    while (KitHashGetDatum(&i))
        ++walked;
    EXPECT_EQ(walked, map.size());
    KitHashReset(table);
    EXPECT_EQ(KitHashPopulation(table), 0);
    EXPECT_EQ(KitHashGetDatum(&i), nullptr);
    KitHashDestroy(table);
}

TEST(KitAssocTest, FindsEveryPointerOfASortedArray) {
    const unsigned seed = 11;
    SCOPED_TRACE(seed);
    std::vector<char> targets(300);
    for (const int n : {0, 1, 2, 255}) {
        std::vector<KitAssoc> pairs;
        for (int i = 0; i < n; ++i)
            pairs.push_back({.p = &targets[static_cast<std::size_t>(i)], .idx = 1000 - i});
        std::shuffle(pairs.begin(), pairs.end(), std::mt19937(seed));
        KitAssocArray array = {.n = n, .v = pairs.data()};
        KitAssocArraySort(&array);
        for (int i = 0; i < 300; ++i)
            EXPECT_EQ(KitAssocArrayFind(&array, &targets[static_cast<std::size_t>(i)]),
                      i < n ? 1000 - i : -1);
        EXPECT_EQ(KitAssocArrayFind(&array, nullptr), -1);
    }
}
} // namespace
