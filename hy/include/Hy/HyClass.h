#pragma once
#include <Hy/HyClassIds.h>

#include <Kit/KitApi.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <span>

namespace Hy {

/// Puts a class's own identity before the identities of its bases.
template <std::size_t... N>
constexpr auto HyJoinClassIds(int own, const std::array<int, N>&... bases) {
    std::array<int, 1 + (N + ... + 0)> joined{own};
    auto end = joined.begin() + 1;
    ((end = std::copy(bases.begin(), bases.end(), end)), ...);
    return joined;
}

/// Stands between a class and its bases and gives it its identity, independent of the platform's
/// run-time types:
///
///     class HyPart : public HyClass<kHyPartClassId, HyBaseUserData> {
///     public:
///         const char* getClassName() const override { return "HyPart"; }
///
/// It takes over the constructors of the first base; further bases are default-constructed. In the
/// class's own constructors it is called HyClass.
/// @tparam Id identity of the class, from HyClassIds.h
/// @tparam Base,Others bases of the class; each roots in HyBase or HyRefCount
template <int Id, class Base, class... Others>
class HY_API HyClass : public Base, public Others... {
public:
    using Base::Base;

    /// Own identity, then those of the bases, in the order of declaration.
    static constexpr auto kIDVector = HyJoinClassIds(Id, Base::kIDVector, Others::kIDVector...);

    /// Identity of the class.
    [[nodiscard]] static constexpr int getStaticClassType() { return Id; }
    /// Identities of the class and of all that it derives from, its own first.
    [[nodiscard]] static constexpr std::span<const int> getIDVector() { return kIDVector; }

    [[nodiscard]] bool isOfClassType(int id) const override {
        return std::find(kIDVector.begin(), kIDVector.end(), id) != kIDVector.end();
    }
    [[nodiscard]] bool isOfExactClassType(int id) const override { return id == Id; }
};

} // namespace Hy
