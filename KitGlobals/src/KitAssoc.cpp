#include <Kit/KitAssoc.h>
#include <algorithm>
#include <functional>
#include <span>
#include <utility>

namespace {
std::span<KitAssoc> pairsOf(const KitAssocArray& a) {
    return {a.v, static_cast<std::size_t>(a.v ? std::max(a.n, 0) : 0)};
}
} // namespace

void KitAssocArraySort(KitAssocArray* a) {
    const auto pairs = pairsOf(*a);
    std::sort(pairs.begin(), pairs.end(), [](const KitAssoc& x, const KitAssoc& y) {
        return x.p != y.p ? std::less<>()(x.p, y.p) : x.idx < y.idx;
    });
}

int KitAssocArrayFind(const KitAssocArray* a, const void* key) {
    const auto pairs = pairsOf(*a);
    const auto found =
        std::lower_bound(pairs.begin(), pairs.end(), key,
                         [](const KitAssoc& x, const void* k) { return std::less<>()(x.p, k); });
    return found != pairs.end() && found->p == key ? found->idx : -1;
}
