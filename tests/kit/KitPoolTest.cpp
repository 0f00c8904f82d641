#include <Kit/KitPool.h>
#include "KitTestSupport.h"
#include <gtest/gtest.h>
#include <algorithm>
#include <cstdint>
#include <cstring>
#include <limits>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace {
constexpr int kMaxInt = std::numeric_limits<int>::max();

int countBlocks(const KitPool& pool) {
    int n = 0;
    for (const KitPoolBlock* block = pool.currBlock; block; block = block->next)
        ++n;
    return n;
}

TEST(KitPoolTest, DoublesFromTheNewestBlockAndKeepsOnlyThatOnReset) {
    const CountingAllocator allocator;
    KitPool pool;
    KitPoolInit(&pool, 1, 24, 16);
    const int capacities[] = {1, 2, 2, 4, 4, 4, 4, 8};
    void* element = nullptr;
    for (const int capacity : capacities) {
        element = KitPoolGetStruct(&pool);
        EXPECT_NE(element, nullptr);
        EXPECT_EQ(pool.currElementCount, capacity);
    }
    EXPECT_EQ(countBlocks(pool), 4);
    EXPECT_EQ(KitPoolGetUsed(&pool), 8);

    KitPoolPutStruct(&pool, element); // what was returned is forgotten by the reset
    KitPoolReset(&pool);
    EXPECT_EQ(countBlocks(pool), 1);
    EXPECT_EQ(KitPoolGetUsed(&pool), 0);
    const int calls = allocator.calls;
    std::byte* first = static_cast<std::byte*>(KitPoolGetStruct(&pool));
    EXPECT_EQ(first, pool.currBlock->start);
    for (int i = 1; i < 8; ++i)
        EXPECT_EQ(KitPoolGetStruct(&pool), first + 32 * i);
    EXPECT_EQ(allocator.calls, calls);

    KitPoolTerm(&pool);
    EXPECT_EQ(allocator.live, 0);
    EXPECT_EQ(KitPoolGetStruct(&pool), nullptr);
    KitPoolTerm(&pool);
}

TEST(KitPoolTest, GrowsByTruncatedProductPlusIncrement) {
    struct Case {
        int count, increment;
        float multiplier;
        int next; ///< 0: the pool cannot grow
    };
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const Case cases[] = {{3, 0, 1.5f, 5},    {5, 0, 1.5f, 8},  {4, 7, 0, 7},   {4, 1, 1, 5},
                          {4, 0, 0.1f, 0},    {4, -9, 2, 0},    {4, 0, nan, 0}, {4, 0, 1e30f, 0},
                          {4, kMaxInt, 0, 0}, {2, 0, -1e30f, 0}};
    for (const Case& c : cases) {
        KitPool pool;
        KitPoolInitResizable(&pool, c.count, 8, c.increment, c.multiplier, 0);
        for (int i = 0; i < c.count; ++i)
            EXPECT_NE(KitPoolGetStruct(&pool), nullptr);
        EXPECT_EQ(KitPoolGetStruct(&pool) != nullptr, c.next > 0) << c.next;
        EXPECT_EQ(pool.currElementCount, c.next > 0 ? c.next : c.count);
        EXPECT_EQ(KitPoolGetUsed(&pool), c.count + (c.next > 0 ? 1 : 0));
        KitPoolTerm(&pool);
    }
}

TEST(KitPoolTest, StrideHoldsALinkAndFollowsAlignment) {
    struct Case {
        int structSize, alignment, stride;
    };
    for (const Case& c : {Case{1, 0, 8},
                          {0, 0, 8},
                          {12, 4, 12},
                          {12, 0, 12},
                          {20, 16, 32},
                          {64, 64, 64},
                          {65, 64, 128}}) {
        KitPool pool;
        KitPoolInit(&pool, 3, c.structSize, c.alignment);
        EXPECT_EQ(pool.elementSize, c.stride);
        EXPECT_EQ(KitPoolGetStructSize(&pool), c.structSize);
        for (int i = 0; i < 20; ++i) {
            void* element = KitPoolGetStruct(&pool);
            const auto address = reinterpret_cast<std::uintptr_t>(element);
            EXPECT_EQ(address % static_cast<unsigned>(std::max(c.alignment, 1)), 0u);
            std::memset(element, 0xff, static_cast<std::size_t>(c.stride));
        }
        KitPoolTerm(&pool);
    }
}

TEST(KitPoolTest, WarnsOfBadArguments) {
    const WarningRecorder warnings;
    using Texts = std::vector<std::string>;
    const Texts failed = {"0: Failed resizing pool unnamed\n"};
    KitPool pool;
    KitPoolInit(&pool, 2, 8, 6);
    EXPECT_EQ(warnings.take(), (Texts{"0: KitPoolInit(unnamed): Alignment must be a multiple of "
                                      "sizeof(unsigned int).\n"}));
    KitPoolPutStruct(&pool, nullptr);
    void* element = KitPoolGetStruct(&pool);
    KitPoolPutStruct(&pool, element);
    KitPoolSetPoolName(&pool, "mine");
    KitPoolPutStruct(&pool, element);
    EXPECT_EQ(warnings.take(), (Texts{"0: KitPoolPutStruct(mine): the element must be in use.\n"}));
    KitPoolTerm(&pool);

    struct Case {
        int count, structSize;
    };
    for (const Case& c : {Case{0, 8}, {-1, 8}, {4, -1}, {4, kMaxInt}, {kMaxInt, 1 << 30}}) {
        const CountingAllocator allocator;
        CountingAllocator::isFailing = c.count == kMaxInt; // 2^61 bytes: the sanitizer would stop
        KitPoolInitResizable(&pool, c.count, c.structSize, 5, 2, 16);
        EXPECT_EQ(warnings.take(), failed) << c.count;
        EXPECT_EQ(pool.currBlock, nullptr);
        EXPECT_EQ(KitPoolGetStruct(&pool), nullptr);
        KitPoolReset(&pool);
        KitPoolTerm(&pool);
    }
}

TEST(KitPoolTest, FailedGrowthLeavesThePoolAsItWas) {
    const CountingAllocator allocator;
    KitPool pool;
    KitPoolInit(&pool, 2, 8, 0);
    void* a = KitPoolGetStruct(&pool);
    void* b = KitPoolGetStruct(&pool);
    CountingAllocator::isFailing = true;
    EXPECT_EQ(KitPoolGetStruct(&pool), nullptr);
    EXPECT_EQ(KitPoolGetUsed(&pool), 2);
    KitPoolPutStruct(&pool, a);
    KitPoolPutStruct(&pool, b);
    EXPECT_EQ(KitPoolGetStruct(&pool), b); // last in, first out
    EXPECT_EQ(KitPoolGetStruct(&pool), a);
    KitPoolTerm(&pool);
}

// Random traffic: live elements never overlap, and keep their contents.
TEST(KitPoolTest, KeepsElementsApart) {
    const unsigned seed = 20240611;
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    KitPool pool;
    KitPoolInit(&pool, 3, 12, 4);
    std::vector<std::pair<void*, unsigned>> live;
    for (unsigned i = 0; i < 5000; ++i) {
        if (live.empty() || random() % 5 < 3) {
            void* element = KitPoolGetStruct(&pool);
            ASSERT_NE(element, nullptr);
            const unsigned stamp[3] = {i, i, i};
            std::memcpy(element, stamp, sizeof(stamp));
            live.emplace_back(element, i);
        } else {
            std::swap(live[random() % live.size()], live.back());
            KitPoolPutStruct(&pool, live.back().first);
            live.pop_back();
        }
    }
    EXPECT_EQ(KitPoolGetUsed(&pool), static_cast<int>(live.size()));
    for (const auto& [element, i] : live) {
        const unsigned stamp[3] = {i, i, i};
        EXPECT_EQ(std::memcmp(element, stamp, sizeof(stamp)), 0);
    }
    KitPoolTerm(&pool);
}
} // namespace
