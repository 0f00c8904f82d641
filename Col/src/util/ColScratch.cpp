#include <Col/ColScratch.h>
#include <Kit/KitMemory.h>
#include <Kit/KitMessage.h>

#include <algorithm>
#include <array>
#include <cstdlib>

namespace {
constexpr std::size_t kAlignment = 64;
constexpr std::size_t kFirstBlock = std::size_t{1} << 16; ///< bytes
constexpr std::size_t kMaxBlocks = 40;                    ///< each at least doubles the last
constexpr std::size_t kLargest = std::size_t{1} << 56;    ///< bytes; more is a broken count

struct Block {
    std::byte* data = nullptr;
    std::size_t size = 0;
};

/// Blocks of one thread: those before `block` are full, `used` bytes of that one are taken.
struct Stack {
    std::array<Block, kMaxBlocks> blocks;
    std::size_t count = 0;
    std::size_t block = 0;
    std::size_t used = 0;

    Stack() = default;
    Stack(const Stack&) = delete;
    Stack& operator=(const Stack&) = delete;
    ~Stack() {
        for (std::size_t i = 0; i < count; ++i)
            KitMemoryAPI_destroyAligned(blocks[i].data);
    }

    bool fits(std::size_t bytes) const {
        return block < count && bytes <= blocks[block].size - used;
    }
    void addBlock(std::size_t bytes) {
        const std::size_t doubled = count > 0 ? 2 * blocks[count - 1].size : kFirstBlock;
        const std::size_t size = std::max(doubled, bytes);
        void* data = count < kMaxBlocks ? KitMemoryAPI_createAligned(size, kAlignment) : nullptr;
        if (!data) {
            KitFatalError(20, "ColScratch: out of memory.\n");
            std::abort(); // a handler that returns must not let the block be used
        }
        blocks[count++] = {static_cast<std::byte*>(data), size};
    }
};

Stack& stack() {
    thread_local Stack theStack;
    return theStack;
}
} // namespace

ColScratchScope::ColScratchScope() noexcept : mBlock(stack().block), mUsed(stack().used) {}

ColScratchScope::~ColScratchScope() {
    stack().block = mBlock;
    stack().used = mUsed;
}

void* ColScratchScope::takeBytes(std::size_t count, std::size_t size) {
    std::size_t bytes = 0;
    if (__builtin_mul_overflow(count, size, &bytes) || bytes > kLargest) {
        KitFatalError(20, "ColScratch: out of memory.\n");
        std::abort();
    }
    bytes = (bytes + kAlignment - 1) / kAlignment * kAlignment;
    Stack& s = stack();
    while (!s.fits(bytes)) {
        if (s.block + 1 < s.count) {
            ++s.block;
        } else {
            s.addBlock(bytes);
            s.block = s.count - 1;
        }
        s.used = 0;
    }
    std::byte* taken = s.blocks[s.block].data + s.used;
    s.used += bytes;
    return taken;
}
