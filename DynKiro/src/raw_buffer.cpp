#include "raw_buffer.h"

#include <cstdint>
#include <new>

#if defined(__linux__)
#include <sys/mman.h>
#endif

namespace {

/// Asks for large pages: at the first touch of a block each small one would cost a fault. A refusal
/// is no harm.
void adviseLargePages([[maybe_unused]] void* block, [[maybe_unused]] std::size_t bytes) {
#if defined(__linux__)
    constexpr std::size_t kPage = std::size_t{1} << 21U;
    const std::size_t skipped = (kPage - reinterpret_cast<std::uintptr_t>(block) % kPage) % kPage;
    if (bytes >= skipped + kPage)
        static_cast<void>(madvise(static_cast<char*>(block) + skipped,
                                  (bytes - skipped) / kPage * kPage, MADV_HUGEPAGE));
#endif
}

} // namespace

void DynsRawBuffer::makeRoom(std::size_t entries) {
    if (entries <= mCapacity)
        return;
    KitMemoryAPI_destroyAligned(mData);
    mData = nullptr;
    mCapacity = 0;
    constexpr std::size_t kMost = static_cast<std::size_t>(-1) / 4 / sizeof(KitReal);
    const std::size_t wanted = entries + entries / 4;
    if (entries < kMost)
        mData = static_cast<KitReal*>(KitMemoryAPI_createAligned(wanted * sizeof(KitReal), 64));
    if (mData == nullptr)
        throw std::bad_alloc();
    mCapacity = wanted;
    adviseLargePages(mData, wanted * sizeof(KitReal));
}
