#include "index_set_hash.h"

namespace {

struct HashState {
    std::uint32_t a = 0x9E3779B9U, b = 0x9E3779B9U, c = 0;

    void mix() noexcept {
        a -= b, a -= c, a ^= c >> 13;
        b -= c, b -= a, b ^= a << 8;
        c -= a, c -= b, c ^= b >> 13;
        a -= b, a -= c, a ^= c >> 12;
        b -= c, b -= a, b ^= a << 16;
        c -= a, c -= b, c ^= b >> 5;
        a -= b, a -= c, a ^= c >> 3;
        b -= c, b -= a, b ^= a << 10;
        c -= a, c -= b, c ^= b >> 15;
    }
};

} // namespace

std::uint32_t DynsIndexSetHash(std::span<const int> indexSet) noexcept {
    // A stage takes twelve bytes, which are three entries: no entry is ever split.
    HashState s;
    std::size_t i = 0;
    for (; i + 3 <= indexSet.size(); i += 3) {
        s.a += static_cast<std::uint32_t>(indexSet[i]);
        s.b += static_cast<std::uint32_t>(indexSet[i + 1]);
        s.c += static_cast<std::uint32_t>(indexSet[i + 2]);
        s.mix();
    }
    s.c += static_cast<std::uint32_t>(indexSet.size_bytes());
    if (i < indexSet.size())
        s.a += static_cast<std::uint32_t>(indexSet[i]);
    if (i + 1 < indexSet.size())
        s.b += static_cast<std::uint32_t>(indexSet[i + 1]);
    s.mix();
    return s.c;
}
