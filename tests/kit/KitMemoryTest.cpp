#include <Kit/KitMemory.h>
#include <Kit/KitMemoryPool.h>
#include "KitTestSupport.h"
#include <gtest/gtest.h>
#include <algorithm>
#include <csignal>
#include <cstdint>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

namespace {
constexpr std::size_t kHuge = std::numeric_limits<std::size_t>::max();

std::size_t misalignment(const void* p, std::size_t alignment) {
    return reinterpret_cast<std::uintptr_t>(p) % alignment;
}

TEST(KitMemoryTest, AlignsBlocksAndWarnsOfOddAlignments) {
    const WarningRecorder warnings;
    for (const std::size_t alignment : {0u, 1u, 3u, 4u, 6u, 12u, 16u, 64u, 4096u})
        for (const std::size_t size : {0u, 1u, 100u}) {
            void* block = MallocCreateAligned(size, alignment);
            ASSERT_NE(block, nullptr);
            EXPECT_EQ(misalignment(block, std::max<std::size_t>(alignment, 4)), 0u) << alignment;
            std::memset(block, 0xff, size);
            MallocDestroyAligned(block);
            const bool isOdd = alignment == 0 || alignment % 4 != 0;
            EXPECT_EQ(warnings.take(),
                      (isOdd ? std::vector<std::string>{"0: MallocCreateAligned: Alignment must be "
                                                        "a multiple of sizeof(unsigned int).\n"}
                             : std::vector<std::string>{}))
                << alignment;
        }
    EXPECT_EQ(MallocCreateAligned(kHuge - 8, 16), nullptr);
    EXPECT_EQ(MallocCreateAligned(16, kHuge - 3), nullptr);
    MallocDestroyAligned(nullptr);
}

TEST(StdMemoryAllocatorDeathTest, EndsTheProcessWithoutMemory) {
    const auto failing = [](auto request) {
        const CountingAllocator allocator;
        CountingAllocator::isFailing = true;
        StdMemoryAllocator memory;
        (void)request(memory);
    };
    EXPECT_EXIT(failing([](auto& m) { return m.create(16, "buf"); }), testing::ExitedWithCode(1),
                "\\{20\\}: StdMemoryAllocator::creaate::cannot allocate memory for buffer named "
                "buf\n");
    EXPECT_EXIT(failing([](auto& m) { return m.create_aligned(16, 64, "buf"); }),
                testing::ExitedWithCode(1), "StdMemoryAllocator::creaate_aligned::cannot");
    EXPECT_EXIT(failing([](auto& m) { return m.create_aligned_zeroed(16, 64, "buf"); }),
                testing::ExitedWithCode(1), "StdMemoryAllocator::creaate_aligned_zeroed::cannot");
    EXPECT_EXIT( // nothing may run on with the missing block
        {
            KitSetFatalErrorHandler([](int, const char*, va_list) {});
            failing([](auto& m) { return m.create(16, "buf"); });
        },
        testing::KilledBySignal(SIGABRT), "");
}

/// A pool over 1024 bytes, with a count of heap calls.
class KitMemoryPoolTest : public testing::Test {
protected:
    void SetUp() override { pool.init(buffer, sizeof(buffer)); }

    CountingAllocator allocator;
    alignas(64) std::byte buffer[1024];
    KitMemoryPool pool;
};

TEST_F(KitMemoryPoolTest, BumpsStrictlyBelowTheEnd) {
    EXPECT_EQ(pool.create(0, "a"), buffer);
    EXPECT_EQ(pool.create(32, "a"), buffer);
    EXPECT_EQ(pool.create(976, "a"), buffer + 32);
    EXPECT_EQ(allocator.calls, 0);
    void* overflow = pool.create(16, "a"); // would end at the end
    EXPECT_NE(overflow, nullptr);
    EXPECT_EQ(misalignment(overflow, 16), 0u);
    EXPECT_EQ(allocator.live, 2); // the block and the list of blocks
    EXPECT_EQ(pool.extra_bytes_needed(), 32u);
    EXPECT_EQ(pool.extra_bytes_needed(), 0u);
    EXPECT_EQ(pool.create(0, "a"), buffer + 1008); // create() does not enter heap mode
}

TEST_F(KitMemoryPoolTest, AlignedOverflowSendsAllToTheHeapUntilCleanup) {
    auto* block = static_cast<std::byte*>(pool.create_aligned(100, 64, "a"));
    EXPECT_EQ(misalignment(block, 64), 0u);
    EXPECT_TRUE(block >= buffer && block + 100 <= buffer + 176); // 100 + 64 + 4, rounded up
    EXPECT_EQ(pool.create(0, "a"), buffer + 176);
    EXPECT_EQ(pool.create_aligned(0, 64, "a"), nullptr);
    EXPECT_EQ(allocator.calls, 0);

    EXPECT_NE(pool.create_aligned(2000, 64, "a"), nullptr);
    auto* small = static_cast<std::byte*>(pool.create_aligned(16, 16, "a"));
    EXPECT_FALSE(small >= buffer && small < buffer + sizeof(buffer));
    auto* plain = static_cast<std::byte*>(pool.create(16, "a"));
    EXPECT_FALSE(plain >= buffer && plain < buffer + sizeof(buffer));
    EXPECT_EQ(pool.extra_bytes_needed(), 2064u + 32 + 32);

    pool.cleanup();
    EXPECT_EQ(allocator.live, 1); // the list of blocks
    EXPECT_EQ(pool.create(16, "a"), buffer);
}

TEST_F(KitMemoryPoolTest, MarksRewindTheTop) {
    pool.pop();
    (void)pool.create(64, "a");
    std::byte* top = buffer + 64;
    for (int i = 0; i < 25; ++i) { // past two doublings of the stack of marks
        pool.push();
        EXPECT_EQ(pool.create(16, "a"), top + 16 * i);
    }
    for (int i = 24; i > 0; --i) {
        pool.pop();
        EXPECT_EQ(pool.create(0, "a"), top + 16 * i);
    }
    pool.cleanup(); // one mark is left: the oldest
    EXPECT_EQ(pool.create(0, "a"), top);
    pool.cleanup(); // none is left
    EXPECT_EQ(pool.create(0, "a"), buffer);
}

TEST_F(KitMemoryPoolTest, ZeroesAndSurvivesFailureAndBadInput) {
    std::memset(buffer, 0xff, sizeof(buffer));
    const auto* zeroed = static_cast<char*>(pool.create_aligned_zeroed(40, 32, "a"));
    EXPECT_EQ(std::string(zeroed, 40), std::string(40, '\0'));
    EXPECT_NE(pool.create_aligned(8, 0, "a"), nullptr);
    EXPECT_EQ(pool.create_aligned(kHuge - 20, 16, "a"), nullptr);
    EXPECT_EQ(pool.create_aligned(16, kHuge - 20, "a"), nullptr);
    EXPECT_EQ(pool.create(kHuge - 15, "a"), nullptr);
    allocator.isFailing = true;
    EXPECT_EQ(pool.create_aligned(5000, 16, "a"), nullptr);
    allocator.isFailing = false;
    pool.init(nullptr, 100);
    EXPECT_NE(pool.create(16, "a"), nullptr);
    pool.init(buffer + 3, 40); // one block of 16 fits strictly in what alignment leaves
    EXPECT_EQ(pool.create(16, "a"), buffer + 16);
}

TEST(KitMemoryPoolDeathTest, RefusesSizesThatAreNoMultipleOf16) {
    KitMemoryPool pool;
    EXPECT_EXIT((void)pool.create(40, "buf"), testing::ExitedWithCode(1),
                "HyFatalError\\{3\\}: PoolAlloc: allocating buf of size 40. Size must be a "
                "multiple of 16 bytes \\(remainder = 8\\).\n");
}

TEST_F(KitMemoryPoolTest, DestructorFreesAll) {
    {
        KitMemoryPool other;
        other.push();
        for (int i = 0; i < 30; ++i)
            EXPECT_NE(other.create(16, "a"), nullptr);
    }
    EXPECT_EQ(allocator.live, 0);
}
} // namespace
