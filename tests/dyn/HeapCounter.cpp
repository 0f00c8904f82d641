#include "HeapCounter.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<long> sCalls{0};

} // namespace

long heapCalls() {
    return sCalls;
}

void* operator new(std::size_t size) {
    ++sCalls;
    if (void* memory = std::malloc(size ? size : 1))
        return memory;
    throw std::bad_alloc();
}

void operator delete(void* memory) noexcept {
    std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}
