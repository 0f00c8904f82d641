#include "EngineFixture.h"

#include <Kit/KitMemory.h>

#include <atomic>
#include <cstdlib>
#include <new>

// A step in steady state makes no heap call: neither through the table of memory functions nor by
// operator new. Both are counted here, in every thread.

namespace {

std::atomic<long> heapCalls{0};
KitMemoryAPIStruct original;

void* countedCreate(std::size_t size) {
    ++heapCalls;
    return original.create(size);
}
void* countedCreateZeroed(std::size_t size) {
    ++heapCalls;
    return original.createZeroed(size);
}
void* countedCreateAligned(std::size_t size, std::size_t alignment) {
    ++heapCalls;
    return original.createAligned(size, alignment);
}
void* countedResize(void* block, std::size_t size) {
    ++heapCalls;
    return original.resize(block, size);
}

} // namespace

void* operator new(std::size_t size) {
    ++heapCalls;
    if (void* block = std::malloc(size))
        return block;
    throw std::bad_alloc();
}
void* operator new(std::size_t size, std::align_val_t alignment) {
    ++heapCalls;
    const auto align = static_cast<std::size_t>(alignment);
    if (void* block = std::aligned_alloc(align, (size + align - 1) / align * align))
        return block;
    throw std::bad_alloc();
}
void operator delete(void* block) noexcept {
    std::free(block);
}
void operator delete(void* block, std::size_t) noexcept {
    std::free(block);
}
void operator delete(void* block, std::align_val_t) noexcept {
    std::free(block);
}
void operator delete(void* block, std::size_t, std::align_val_t) noexcept {
    std::free(block);
}

namespace {

class SteadyStateTest : public EngineFixture {
protected:
    void SetUp() override {
        original = KitMemoryAPI;
        KitMemoryAPI.create = countedCreate;
        KitMemoryAPI.createZeroed = countedCreateZeroed;
        KitMemoryAPI.createAligned = countedCreateAligned;
        KitMemoryAPI.resize = countedResize;
        EngineFixture::SetUp();
    }
    void TearDown() override {
        EngineFixture::TearDown();
        KitMemoryAPI = original;
    }
};

} // namespace

TEST_F(SteadyStateTest, AStepMakesNoHeapCall) {
    for (const int threads : {1, 2}) {
        start(threads);
        std::vector<Hy::HyPart*> parts;
        for (int i = 0; i < 200; ++i)
            parts.push_back(&addPart(1 + i));
        for (int i = 0; i < 20; ++i) {
            parts[0]->addForce(Hy::HyVector3(1, 0, 0));
            frame->step();
        }
        const long before = heapCalls;
        ASSERT_GT(before, 0) << "the counters count";
        for (int i = 0; i < 20; ++i) {
            parts[0]->addForce(Hy::HyVector3(1, 0, 0));
            frame->step();
        }
        EXPECT_EQ(heapCalls - before, 0) << threads << " threads";
    }
}
